// What is known is a copy of the tables, kept by the notifications. Where some may be missing, the tables are read, and
// the difference is told as if it had been heard. Notifications that wait while the tables are read may be of before or
// of after that: the last one of a route tells what it is.
#include "clients/change_reader.h"

#include "base/text.h"
#include "bus/history.h"
#include "clients/question.h"
#include "clients/registration.h"
#include "clients/route_update.h"
#include "protocol/queries.h"
#include "protocol/route_changes.h"
#include "rib_check.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::clients {

namespace {

constexpr std::chrono::milliseconds between_looks{500};
constexpr uint32_t usual_distance = 200;

template <class Table> struct message_of;
template <> struct message_of<unicast_table> {
    using view = codec::view<wire::fcurt_update>;
    using changes = protocol::unicast_changes;
    static constexpr auto check = rib_check_fcurt_update;
};
template <> struct message_of<multicast_table> {
    using view = codec::view<wire::fcmrt_update>;
    using changes = protocol::multicast_changes;
    static constexpr auto check = rib_check_fcmrt_update;
};
template <> struct message_of<label_table> {
    using view = codec::view<wire::fclrt_update>;
    using changes = protocol::label_changes;
    static constexpr auto check = rib_check_fclrt_update;
};

constexpr bool deletes(uint32_t action) {
    constexpr uint32_t all = RIB_ACTION_DELETE | RIB_ACTION_DELETE_GROUP | RIB_ACTION_DELETE_LABEL |
                             RIB_ACTION_DELETE_FC_LABEL | RIB_ACTION_DELETE_UCAST_LABEL |
                             RIB_ACTION_DELETE_LABEL_TUNNEL;
    return (action & all) != 0;
}

template <class Change> model::route_key key_in(uint32_t vsan, const Change &one) { return {vsan, one.to}; }
model::label_key key_in(uint32_t /*vsan*/, const model::label_change &one) {
    model::label_key key = one.key;
    key.source = key.type == RIB_ROUTE_SRC_LABEL ? key.source : 0;
    return key;
}

} // namespace

change_reader::change_reader(bus::rib_link &link, uint32_t uuid, change_listener listener)
    : link_(link), uuid_(uuid), listener_(std::move(listener)) {
    link_.hear_notes([this](uint32_t opcode, std::span<const uint8_t> message) { hear(opcode, message); });
}

// A RIB that answers has told of its start before: that is no news to whoever reads only now.
void change_reader::start() {
    said_.reset();
    say_alive();
    link_.heard_of_start();
    read_again();
}

void change_reader::follow() {
    for (;;) {
        listen(between_looks);
        link_.renew_patience();
        try {
            if (!said_ || bus::run_now() - *said_ >= registration::interval) {
                say_alive();
            }
            if (misses_) {
                read_again();
            }
        } catch (const bus::no_answer &why) {
            miss(why.what());
            said_.reset();
            link_.pause();
        }
    }
}

void change_reader::listen(std::chrono::milliseconds limit) {
    if (link_.heard_of_start(limit)) {
        miss("the RIB has started anew, or could not be reached for a while");
        said_.reset();
    }
}

// The RIB tells changes as long as it knows of somebody who listens. Whoever is late by a whole turn may have been
// forgotten meanwhile, and is told nothing of that.
void change_reader::say_alive() {
    const auto now = bus::run_now();
    auto said = protocol::encode(model::registration{uuid_, usual_distance, "monitor"});
    const auto answer = ask_for_result(link_, RIBKIT_OPCODE_REGISTER, said);
    if (answer.result != RIB_OK) {
        throw refused_question(answer.result);
    }
    if (said_ && bus::run_now() - *said_ >= 2 * registration::interval) {
        miss("it was not registered all the time");
    }
    said_ = now;
}

// What was not known before is no news.
void change_reader::read_again() {
    held_tables before{read<unicast_table>(), read<multicast_table>(), read<label_table>()};
    misses_ = false;
    std::swap(before, held_);
    reads_ = true;
    listen({});
    reads_ = false;
    if (std::exchange(knows_, true)) {
        tell_differences<unicast_table>(before);
        tell_differences<multicast_table>(before);
        tell_differences<label_table>(before);
    }
    const auto &[unicast, multicast, label] = held_;
    listener_.read({unicast.size(), multicast.size(), label.size()});
}

template <class Table> change_reader::held_table<Table> change_reader::read() const {
    held_table<Table> now;
    read_table<Table>(link_, {uuid_}, [&](uint32_t owner, const auto &key, const auto &what) {
        now.emplace_hint(now.end(), std::pair(key, owner), copied(what));
    });
    return now;
}

template <class Table> void change_reader::tell_differences(const held_tables &before) const {
    const auto &then = std::get<held_table<Table>>(before);
    const auto &now = std::get<held_table<Table>>(held_);
    const auto tell = [&](uint32_t action, const auto &route) {
        const auto &[key, owner] = route.first;
        listener_.changed(Table::note, update_with(owner, action, key, typename Table::values(route.second)));
    };
    for (const auto &route : then) {
        if (now.find(route.first) == now.end()) {
            tell(RIB_ACTION_DELETE, route);
        }
    }
    for (const auto &route : now) {
        const auto known = then.find(route.first);
        if (known == then.end() || !(known->second == route.second)) {
            tell(RIB_ACTION_ADD, route);
        }
    }
}

void change_reader::miss(const std::string &why) {
    if (!std::exchange(misses_, true)) {
        listener_.missed(why);
    }
}

void change_reader::hear(uint32_t opcode, std::span<const uint8_t> message) {
    switch (opcode) {
    case unicast_table::note:
        return take<unicast_table>(message);
    case multicast_table::note:
        return take<multicast_table>(message);
    case label_table::note:
        return take<label_table>(message);
    default:
        return;
    }
}

template <class Table> void change_reader::take(std::span<const uint8_t> message) {
    if (message_of<Table>::check(message.data(), static_cast<uint32_t>(message.size()), nullptr) != RIB_OK) {
        bus::note_in_history("client: notification of ", message.size(), " bytes with opcode ", Table::note,
                             " dropped: it is damaged");
        return miss(base::joined("a notification of ", Table::name, " routes came damaged"));
    }
    const typename message_of<Table>::view update(message.data());
    if (update.template get<"n_route">() == 0) {
        return miss("the RIB had more to tell than it could keep");
    }
    if (misses_) { // the tables will tell
        return;
    }
    const std::vector<bool> news = keep<Table>(update);
    if (reads_) {
        return;
    }
    if (std::find(news.begin(), news.end(), false) == news.end()) {
        return listener_.changed(Table::note, message);
    }
    auto is_news = news.begin();
    for (const auto &one : typename message_of<Table>::changes(update)) {
        if (*is_news++) {
            const uint32_t owner = update.template get<"uuid">();
            const auto key = key_in(update.template get<"vsan">(), one);
            listener_.changed(Table::note, update_with(owner, one.action, key, one.what));
        }
    }
}

/// @return of each change whether it was one
template <class Table, class View> std::vector<bool> change_reader::keep(View update) {
    auto &held = std::get<held_table<Table>>(held_);
    std::vector<bool> news;
    for (const auto &one : typename message_of<Table>::changes(update)) {
        const std::pair at(key_in(update.template get<"vsan">(), one), update.template get<"uuid">());
        if (deletes(one.action)) {
            news.push_back(held.erase(at) > 0);
        } else {
            auto now = copied(one.what);
            const auto known = held.find(at);
            news.push_back(known == held.end() || !(known->second == now));
            held.insert_or_assign(at, std::move(now));
        }
    }
    return news;
}

} // namespace ribkit::clients
