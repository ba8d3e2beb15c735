// The way of a route change: computed, compared with what the RIB has, written, traced, sent, answered.
#include "clients/route_client.h"

#include "bus/patience.h"
#include "clients/question.h"
#include "protocol/queries.h"
#include "protocol/table_messages.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_trace.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace ribkit::clients {

namespace {

constexpr std::chrono::seconds between_registrations{10};

/// What is different between the tables: how updates are printed, and how their answers are checked.
template <class Table> struct update_of;
template <> struct update_of<unicast_table> {
    static constexpr auto check_answer = rib_check_fcurt_rsp;
    static constexpr auto print = rib_printf_fcurt_update;
    static constexpr auto print_route = rib_printf_fcurt;
};
template <> struct update_of<multicast_table> {
    static constexpr auto check_answer = rib_check_fcmrt_rsp;
    static constexpr auto print = rib_printf_fcmrt_update;
    static constexpr auto print_route = rib_printf_fcmrt;
};
template <> struct update_of<label_table> {
    static constexpr auto check_answer = rib_check_fclrt_rsp;
    static constexpr auto print = rib_printf_fclrt_update;
    static constexpr auto print_route = rib_printf_fclrt;
};

void report(uint32_t vsan, const protocol::fcurt_response &response) {
    std::fprintf(stderr, "ribkit: the RIB's answer for vsan %u is \"%s\": %u routes accepted\n", vsan,
                 bus::result_text(response.result).c_str(), response.accepted);
}

/// Whether somebody has deleted what was to be changed; of another client there may be a route still.
constexpr bool is_missing(uint32_t result) { return result == RIB_NO_ENTRY || result == RIB_OBJECT_OWNED; }

template <class Routes> const Routes &table_of(const std::shared_ptr<const Routes> &routes) {
    static const Routes empty;
    return routes == nullptr ? empty : *routes;
}

template <class Routes, class Changes> std::shared_ptr<const Routes> changed(Routes table, const Changes &changes) {
    for (const auto &change : changes) {
        model::apply_change(table, change);
    }
    return std::make_shared<const Routes>(std::move(table));
}

// Which of several clients' routes is active is the RIB's business: what is read is taken for as it was sent.
model::route as_sent(const model::route_values &what) {
    model::route sent = copied(what);
    sent.flag |= RIB_FLAG_ACTIVE;
    return sent;
}
template <class Values> auto as_sent(const Values &what) { return copied(what); }

} // namespace

template <class Table>
route_client<Table>::route_client(const std::string &url, uint32_t uuid, client_options options)
    : link_(url, uuid, options.link), uuid_(uuid), options_(std::move(options)) {}

template <class Table> void route_client<Table>::start_over(takeover how) {
    accepted_.clear();
    open_.clear();
    unsure_.clear();
    takes_over_ = how;
}

template <class Table> void route_client<Table>::set_distance(std::optional<uint32_t> distance) {
    if (options_.distance != distance) {
        options_.distance = distance;
        said_.reset();
    }
}

template <class Table> bool route_client<Table>::rib_started(std::chrono::milliseconds limit) {
    bool started = false;
    for (auto left = limit;;) {
        const auto part =
            options_.name.empty() ? left : std::min<std::chrono::milliseconds>(left, between_registrations);
        started = link_.heard_of_start(part);
        left -= part;
        if (started || left.count() <= 0) {
            break;
        }
        stay_registered();
    }
    if (started) {
        suppose_start();
    }
    return started;
}

template <class Table> void route_client<Table>::suppose_start() {
    said_.reset();
    for (const auto &[vsan, routes] : accepted_) {
        unsure_.insert(vsan);
    }
}

template <class Table> bool route_client<Table>::registers_now() const {
    return !options_.name.empty() && (!said_ || bus::run_now() - *said_ >= between_registrations);
}

template <class Table> void route_client<Table>::say_alive() {
    auto said = protocol::encode(
        model::registration{uuid_, options_.distance.value_or(model::default_distance(uuid_)), options_.name});
    const auto answer = ask_for_result(link_, RIBKIT_OPCODE_REGISTER, said);
    if (answer.result != RIB_OK) {
        std::fprintf(stderr, "ribkit: the RIB does not register client %u: %s\n", uuid_,
                     bus::result_text(answer.result).c_str());
    }
    said_ = bus::run_now();
}

template <class Table> void route_client<Table>::keep_registered() {
    if (registers_now()) {
        patiently(link_, [this] { say_alive(); });
    }
}

// A RIB that is gone hears it when it is there again.
template <class Table> void route_client<Table>::stay_registered() {
    if (!registers_now()) {
        return;
    }
    try {
        say_alive();
    } catch (const bus::no_answer &) {
        said_ = bus::run_now();
    }
    link_.renew_patience();
}

template <class Table> client_traffic route_client<Table>::converge(const wanted_tables<Table> &wanted) {
    traffic_ = {};
    to_send_ = 0;
    const auto start = bus::run_now();
    const auto finish = [&] {
        const bus::link_traffic carried = link_.take_traffic();
        traffic_.messages = carried.messages;
        traffic_.bytes_sent = carried.bytes_sent;
        traffic_.bytes_received = carried.bytes_received;
        traffic_.exchanging = bus::run_now() - start;
    };
    try {
        rib_started({});
        bring_all(wanted);
        link_.renew_patience(); // for what happens next
    } catch (...) {
        finish();
        throw;
    }
    finish();
    return traffic_;
}

// A RIB that starts while this goes on has lost what it was sent before: all VSANs have their turn again.
template <class Table> void route_client<Table>::bring_all(const wanted_tables<Table> &wanted) {
    for (auto next = wanted.begin(); next != wanted.end();) {
        const auto &[vsan, routes] = *next;
        keep_registered();
        try {
            ++next;
            if (!bring(vsan, routes)) {
                continue;
            }
            link_.renew_patience();
        } catch (const bus::no_answer &why) {
            unsure_.insert(vsan);
            if (!link_.await_after(why)) {
                throw;
            }
            --next;
        }
        next = rib_started({}) ? wanted.begin() : next;
    }
}

/// Where somebody else has changed this client's routes meanwhile, what to send is found anew. @return whether the RIB
/// was asked anything
template <class Table> bool route_client<Table>::bring(uint32_t vsan, const shared_table<Table> &wanted) {
    constexpr int most_rounds = 8;
    bool asked = false;
    if (takes_over_ && !accepted_.contains(vsan)) {
        asked = true;
        if (*takes_over_ == takeover::reads) {
            unsure_.insert(vsan);
        } else {
            merge(vsan, wanted);
        }
    }
    for (int round = 1; round <= most_rounds; round++) {
        if (unsure_.contains(vsan)) {
            read(vsan);
            asked = true;
        }
        const auto &changes = changes_to(vsan, wanted);
        if (changes.empty()) {
            accepted_[vsan] = wanted; // the same, and shared
        } else {
            asked = true;
            to_send_ += changes.size();
            send(vsan, changes, round == most_rounds);
        }
        if (!unsure_.contains(vsan)) {
            return asked;
        }
    }
    return asked;
}

template <class Table>
const std::vector<typename route_client<Table>::change> &
route_client<Table>::changes_to(uint32_t vsan, const shared_table<Table> &wanted) {
    const shared_table<Table> &before = accepted_[vsan];
    if (difference_.after != wanted || difference_.before != before) {
        difference_ = {before, wanted, model::changes_between(table_of(before), *wanted)};
    }
    return difference_.changes;
}

template <class Table> void route_client<Table>::read(uint32_t vsan) {
    unsure_.insert(vsan);
    own_table<Table> mine;
    try {
        read_table<Table>(link_, {.uuid = uuid_, .vsan = vsan, .trace = options_.trace},
                          [&](uint32_t owner, const auto &key, const auto &what) {
                              if (owner == uuid_) {
                                  mine.emplace_hint(mine.end(), Table::in_vsan(key), as_sent(what));
                              }
                          });
    } catch (const refused_question &why) {
        throw bus::no_answer(why.what());
    }
    settle(vsan, mine);
    accepted_[vsan] = std::make_shared<const own_table<Table>>(std::move(mine));
    unsure_.erase(vsan);
}

template <class Table> void route_client<Table>::settle(uint32_t vsan, const own_table<Table> &after) {
    if (auto open = open_.extract(vsan)) {
        auto &[changes, made] = open.mapped();
        traffic_.count(table_of(accepted_[vsan]), effective(std::move(changes), after, made));
    }
}

// The answer counts what took effect without naming it, so the RIB is asked what it has. From then on the table is this
// VSAN's own.
template <class Table> void route_client<Table>::send(uint32_t vsan, std::span<const change> changes, bool last_round) {
    const uint32_t oper = options_.link.envelopes ? RIB_OPER_UPDATE_CMI : RIB_OPER_UPDATE_RSP;
    shared_table<Table> &accepted = accepted_[vsan];
    const shared_table<Table> before = accepted;
    for (auto left = changes; !left.empty();) {
        const message_part message = write(vsan, left, oper);
        const auto part = message.changes;
        left = left.subspan(part.size());
        const protocol::fcurt_response response = change_routes(vsan, message);
        if (response.result == RIB_OK) {
            traffic_.count(table_of(accepted), part);
            if (accepted != before) {
                accepted = changed(*accepted, part);
            }
        } else {
            open_[vsan] = {{part.begin(), part.end()}, response.accepted};
            if (is_missing(response.result) && !last_round) {
                unsure_.insert(vsan);
                return;
            }
            read(vsan);
            note_refused(vsan, response, part);
        }
        options_.progress("routes sent", traffic_.sent(), to_send_);
    }
    if (accepted == before) {
        accepted = difference_.after;
    }
}

template <class Table>
protocol::fcurt_response route_client<Table>::change_routes(uint32_t vsan, message_part message) {
    try {
        return deliver(message);
    } catch (const bus::no_answer &) {
        const auto [bytes, changes] = message;
        open_[vsan] = {{changes.begin(), changes.end()}, changes.size()};
        throw;
    }
}

// Whoever merged before may have ended before the merge did: what it named is marked still. So what the RIB has is
// believed only where the count says that it has nothing else.
template <class Table> void route_client<Table>::merge(uint32_t vsan, const shared_table<Table> &wanted) {
    const auto all = model::changes_between({}, *wanted);
    size_t named = 0;
    for (auto left = std::span(all); !left.empty();) {
        const message_part message = write(vsan, left, RIB_OPER_MERGE_RSP);
        left = left.subspan(message.changes.size());
        named += deliver(message).accepted;
    }
    const protocol::fcurt_response end = deliver(write(vsan, {}, RIB_OPER_MERGE_RSP));
    traffic_.merged += named;
    traffic_.deleted += end.accepted;
    unsure_.erase(vsan);
    if (end.result == RIB_OK && named == all.size() && end.held == named) {
        accepted_[vsan] = wanted;
    } else {
        unsure_.insert(vsan);
    }
}

/// The next message: as many of the changes as may be in one, whatever the first needs.
template <class Table>
typename route_client<Table>::message_part route_client<Table>::write(uint32_t vsan, std::span<const change> changes,
                                                                      uint32_t oper) {
    const size_t first = changes.empty() ? 0 : protocol::record_size(changes[0].what);
    room_.resize(std::max(options_.message_limit, Table::message.size + first));
    const codec::writer<Table::message> update(room_);
    update.template set<"uuid">(uuid_).template set<"vsan">(vsan).template set<"oper">(oper);
    const size_t added = protocol::add_routes(update, changes);
    return {std::span(room_).first(update.size()), changes.first(added)};
}

template <class Table> protocol::fcurt_response route_client<Table>::deliver(message_part message) {
    if (options_.trace) {
        trace(message.bytes);
    }
    const protocol::fcurt_response response = exchange(message.bytes);
    link_.take_result(Table::update, response.accepted == 0 ? response.result : RIB_OK);
    return response;
}

// Of the VSAN that was asked about: a refusal that comes before the update was read names none.
template <class Table>
void route_client<Table>::note_refused(uint32_t vsan, const protocol::fcurt_response &response,
                                       std::span<const change> changes) {
    const own_table<Table> &held = *accepted_[vsan];
    traffic_.refused += static_cast<size_t>(std::count_if(
        changes.begin(), changes.end(), [&](const change &one) { return !model::has_effect(held, one); }));
    report(vsan, response);
}

template <class Table> protocol::fcurt_response route_client<Table>::exchange(std::span<uint8_t> update) {
    const auto answer = link_.ask(Table::update, update);
    if (update_of<Table>::check_answer(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) != RIB_OK) {
        bus::rib_link::drop_answer(Table::update, answer.size(), bus::result_text(RIB_MISSING_RESPONSE));
    }
    return protocol::decode_fcurt_response(std::span(answer).template first<wire::route_rsp.size>());
}

template <class Table> void route_client<Table>::trace(std::span<const uint8_t> update) {
    const codec::view<Table::message> message(update.data());
    update_of<Table>::print(message.size(), message.data());
    for (const auto record : message.template list<"route">()) {
        update_of<Table>::print_route(message.data(), record.data());
    }
}

template class route_client<unicast_table>;
template class route_client<multicast_table>;
template class route_client<label_table>;

} // namespace ribkit::clients
