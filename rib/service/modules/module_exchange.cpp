// Each module has its tokens: those of updates in flight, and those of updates that were given up.
#include "rib/service/modules/module_exchange.h"

#include "bus/history.h"
#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "rib/vsans.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace ribkit::rib {

namespace {

/// As if a module had said that it came too late: it is sent again.
verdict lost() { return {.what = verdict::fate::answered, .result = RIB_INDEX_USED}; }

module_condition condition_of(model::fib_state state) {
    switch (state) {
    case model::fib_state::upgrading:
        return module_condition::upgrading;
    case model::fib_state::offline:
    case model::fib_state::exited:
        return module_condition::gone;
    default:
        return module_condition::serving;
    }
}

} // namespace

module_exchange::~module_exchange() {
    for (auto &[number, one] : contacts_) {
        rib_token_release(&one.owed);
    }
}

module_exchange::contact &module_exchange::enter(const model::module_node &told) {
    const auto found = contacts_.find(told.number);
    if (found != contacts_.end()) {
        return found->second;
    }
    contact made{.address = protocol::module_address(told.number), .instance = told.instance};
    made.in_flight.reserve(most_in_flight);
    if (rib_token_alloc(&made.owed, most_owed) != RIB_OK) {
        throw std::bad_alloc();
    }
    try {
        followed_.enter(told.number, told.sequence);
        return contacts_.emplace(told.number, std::move(made)).first->second;
    } catch (...) {
        rib_token_release(&made.owed);
        throw;
    }
}

/// A record that was late on its way may say that a module cannot be sent anything which has come back since. A module
/// is offline before it is anything else, and the number of the last message that it took never falls. What another
/// state says is taken as it comes: the next record puts it right.
bool module_exchange::is_over(const model::module_node &told) const {
    const auto found = contacts_.find(told.number);
    if (found == contacts_.end() || condition_of(told.state) == module_condition::serving) {
        return false;
    }
    const model::module_node &known = rib_.nodes.at(told.number);
    return told.instance == found->second.instance
               ? (told.state == model::fib_state::offline && known.state != model::fib_state::offline) ||
                     model::is_later(known.sequence, told.sequence)
               : told.instance == found->second.former;
}

void module_exchange::hear(const model::module_node &told, bool holds) {
    if (is_over(told)) {
        bus::note_in_history("rib: module ", told.number, " says late that it was not ready");
        return;
    }
    const bool is_new = !contacts_.contains(told.number);
    rib_.nodes[told.number] = told;
    contact &from = enter(told);
    module_feed &feed = followed_.all().at(told.number);
    if (is_new || from.instance != told.instance) {
        bus::note_in_history("rib: module ", told.number, is_new ? " is there" : " has started again");
        forget_tokens(from);
        from.in_flight.clear();
        from.unsent.reset();
        feed.restart(told.sequence);
        for (const auto &[vsan, known] : vsans_from(rib_.routes, rib_.described, 0, SIZE_MAX)) {
            feed.tell_vsan(vsan);
        }
    }
    feed.set_held(holds && ((is_new && told.entries != 0) || feed.is_held()));
    from.former = from.instance != told.instance ? from.instance : from.former;
    from.instance = told.instance;
    from.rests_until = 0;
    feed.set_condition(condition_of(told.state));
}

/// An answer that is awaited no more is thrown away when it comes.
void module_exchange::forget(uint32_t token) const {
    qip_recv_opts at_once{{QIP_RECV_BY_TOKEN}};
    at_once.word[3] = token;
    at_once.word[4] = 1;
    qip_ref late{};
    if (qip_recv(handle_, &late, &at_once) == 0) {
        qip_drop(handle_, &late);
    }
}

void module_exchange::forget_tokens(contact &of) const {
    uint32_t token = 0;
    while (rib_token_pop(&of.owed, &token) != 0) {
        forget(token);
    }
}

/// A module that answers in time again does not owe what was lost before.
void module_exchange::forget_given_up(contact &of) const {
    if (of.owed.count == of.in_flight.size()) {
        return;
    }
    const std::vector<uint32_t> tokens(of.owed.tokens, of.owed.tokens + of.owed.count);
    for (const uint32_t token : tokens) {
        if (std::none_of(of.in_flight.begin(), of.in_flight.end(),
                         [&](const sent &one) { return one.token == token; })) {
            rib_token_remove(&of.owed, token);
            forget(token);
        }
    }
}

bool module_exchange::can_send_to(const contact &to, const module_feed &feed) const {
    return to.in_flight.size() < most_in_flight && to.owed.count < most_owed &&
           (to.rests_until == 0 || to.rests_until <= qip_now()) && (to.unsent || feed.has_work() || feed.has_vsans());
}

bool module_exchange::can_send() const {
    return std::any_of(contacts_.begin(), contacts_.end(),
                       [&](const auto &one) { return can_send_to(one.second, followed_.all().at(one.first)); });
}

void module_exchange::send_some() {
    for (auto &[number, to] : contacts_) {
        module_feed &feed = followed_.all().at(number);
        if (!can_send_to(to, feed)) {
            continue;
        }
        to.rests_until = 0;
        if (to.unsent) {
            const ready again = std::move(*std::exchange(to.unsent, std::nullopt));
            send(to, feed, again.about, again.opcode, again.message);
        } else if (feed.has_vsans()) {
            send_vsans(to, feed);
        } else if (const auto sequence = feed.write(writer_)) {
            sent about;
            about.sequence = *sequence;
            about.table = writer_.table();
            about.is_question = writer_.is_question();
            send(to, feed, std::move(about), writer_.opcode(), writer_.message());
        }
    }
}

void module_exchange::send_vsans(contact &to, module_feed &feed) {
    constexpr size_t most = (RIBKIT_ANSWER_LIMIT - wire::vsan_update.size) / wire::vsan.size;
    std::vector<std::pair<uint32_t, model::vsan_attributes>> told;
    sent about;
    about.vsans = feed.vsans(most);
    for (const uint32_t vsan : about.vsans) {
        told.emplace_back(vsan, attributes_of(rib_.routes, rib_.described, vsan));
    }
    about.sequence = feed.take_vsans(about.vsans);
    const auto message = protocol::vsan_update(about.sequence, told);
    send(to, feed, std::move(about), RIBKIT_OPCODE_FIB_VSAN_UPDATE, message);
}

// What finds no room is kept as it is; where there is no memory for that, it is as if it had been lost.
void module_exchange::send(contact &to, module_feed &feed, sent about, uint32_t opcode,
                           std::span<const uint8_t> message) {
    constexpr uint64_t rest = 10'000; // microseconds
    const qip_send_opts at_once{{1}};
    qip_ref ref{};
    if (qip_send(handle_, &to.address, opcode, message.data(), static_cast<uint32_t>(message.size()), &ref, nullptr,
                 &at_once) == 0) {
        about.token = qip_rr_token_get(&ref);
        about.due = qip_now() + patience;
        qip_drop(handle_, &ref);
        rib_token_add(&to.owed, about.token);
        to.in_flight.push_back(std::move(about));
    } else if (errno == EAGAIN || errno == ENOMEM || errno == ENOBUFS) {
        to.rests_until = qip_now() + rest;
        try {
            to.unsent.emplace(ready{about, opcode, {message.begin(), message.end()}});
        } catch (const std::bad_alloc &) {
            settle(feed, about, lost());
        }
    } else {
        settle(feed, about, lost());
        lose(to, feed);
    }
}

/// Nobody is there.
void module_exchange::lose(contact &to, module_feed &feed) {
    bus::note_in_history("rib: module ", to.address.sap, " is not there");
    feed.set_condition(module_condition::gone);
    for (const sent &one : std::exchange(to.in_flight, {})) {
        settle(feed, one, lost());
    }
    if (to.unsent) {
        settle(feed, std::exchange(to.unsent, std::nullopt)->about, lost());
    }
    forget_tokens(to);
}

void module_exchange::settle(module_feed &feed, const sent &about, const verdict &said) {
    if (about.vsans.empty()) {
        feed.settle(about.sequence, said);
    } else if (said.what != verdict::fate::answered || said.result != RIB_OK) {
        for (const uint32_t vsan : about.vsans) {
            feed.tell_vsan(vsan);
        }
        if (said.what == verdict::fate::damaged) {
            feed.count_damaged();
        }
    }
}

bool module_exchange::take_answer(uint32_t token, std::span<const uint8_t> payload) {
    for (auto &[number, from] : contacts_) {
        if (rib_token_match(&from.owed, token) < 0) {
            continue;
        }
        module_feed &feed = followed_.all().at(number);
        const auto found = std::find_if(from.in_flight.begin(), from.in_flight.end(),
                                        [&](const sent &one) { return one.token == token; });
        const bool is_late = found == from.in_flight.end();
        const verdict said = is_late              ? verdict{}
                             : found->is_question ? findings_of(found->table, payload)
                                                  : verdict_of(found->table, found->sequence, payload);
        rib_token_remove(&from.owed, token);
        if (feed.condition() == module_condition::silent) {
            feed.set_condition(module_condition::serving);
        }
        if (is_late) {
            bus::note_in_history("rib: module ", number, " has answered too late");
            return true;
        }
        const sent about = std::move(*found);
        from.in_flight.erase(found);
        forget_given_up(from);
        if (said.what == verdict::fate::damaged) {
            bus::note_in_history("rib: module ", number, "'s answer is damaged, ", payload.size(), " bytes");
        }
        settle(feed, about, said);
        if (said.result == RIB_LC_UPGRADING) { // until it says otherwise
            feed.set_condition(module_condition::upgrading);
        }
        return true;
    }
    return false;
}

void module_exchange::look_for_lost() {
    for (auto &[number, from] : contacts_) {
        const std::vector<uint32_t> tokens(from.owed.tokens, from.owed.tokens + from.owed.count);
        for (const uint32_t token : tokens) {
            qip_recv_opts at_once{{QIP_RECV_BY_TOKEN, 1}};
            at_once.word[3] = token;
            qip_ref answer{};
            if (qip_recv(handle_, &answer, &at_once) == 0) {
                const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&answer));
                take_answer(token, {payload, qip_payload_size(&answer)});
                qip_drop(handle_, &answer);
            } else if (errno == EINVAL) {
                lose_token(from, followed_.all().at(number), token);
            }
        }
    }
}

void module_exchange::lose_token(contact &of, module_feed &feed, uint32_t token) {
    rib_token_remove(&of.owed, token);
    const auto found =
        std::find_if(of.in_flight.begin(), of.in_flight.end(), [&](const sent &one) { return one.token == token; });
    if (found != of.in_flight.end()) {
        const sent about = std::move(*found);
        of.in_flight.erase(found);
        settle(feed, about, lost());
    }
}

void module_exchange::give_up_late(uint64_t now) {
    for (auto &[number, from] : contacts_) {
        module_feed &feed = followed_.all().at(number);
        while (!from.in_flight.empty() && from.in_flight.front().due <= now) {
            const sent about = std::move(from.in_flight.front());
            from.in_flight.erase(from.in_flight.begin());
            settle(feed, about, {.what = verdict::fate::given_up});
            if (feed.condition() == module_condition::serving) {
                bus::note_in_history("rib: module ", number, " does not answer");
                feed.set_condition(module_condition::silent);
            }
        }
    }
}

bool module_exchange::awaits() const {
    return std::any_of(contacts_.begin(), contacts_.end(), [](const auto &one) { return one.second.owed.count != 0; });
}

std::optional<uint64_t> module_exchange::next_due() const {
    std::optional<uint64_t> first;
    const auto meet = [&](uint64_t due) { first = first ? std::min(*first, due) : due; };
    for (const auto &[number, to] : contacts_) {
        if (!to.in_flight.empty()) {
            meet(to.in_flight.front().due);
        }
        if (to.rests_until != 0) {
            meet(to.rests_until);
        }
    }
    return first;
}

} // namespace ribkit::rib
