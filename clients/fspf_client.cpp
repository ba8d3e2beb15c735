// The way of a route change: computed, compared with what the RIB has, written, traced, sent, answered.
#include "clients/fspf_client.h"

#include "bus/patience.h"
#include "clients/route_reader.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "rib_trace.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <utility>

namespace ribkit::clients {

namespace {

void report(uint32_t vsan, const protocol::fcurt_response &response) {
    std::fprintf(stderr, "ribkit: the RIB's answer for vsan %u is \"%s\": %u routes accepted\n", vsan,
                 bus::result_text(response.result).c_str(), response.accepted);
}

/// Whether somebody has deleted what was to be changed; of another client there may be a route still.
constexpr bool is_missing(uint32_t result) { return result == RIB_NO_ENTRY || result == RIB_OBJECT_OWNED; }

const model::route_table &table_of(const model::shared_routes &routes) {
    static const model::route_table empty;
    return routes == nullptr ? empty : *routes;
}

model::shared_routes changed(model::route_table table, std::span<const model::route_change> changes) {
    for (const model::route_change &change : changes) {
        model::apply_change(table, change);
    }
    return std::make_shared<const model::route_table>(std::move(table));
}

} // namespace

fspf_client::fspf_client(const std::string &url, client_options options)
    : link_(url, RIB_CLIENT_FSPF, options.link), options_(std::move(options)) {}

void fspf_client::start_over() {
    accepted_.clear();
    open_.clear();
    reads_first_ = true;
}

bool fspf_client::rib_started(std::chrono::milliseconds limit) {
    const bool started = link_.heard_of_start(limit);
    if (started) {
        for (const auto &[vsan, routes] : accepted_) {
            unsure_.insert(vsan);
        }
    }
    return started;
}

client_traffic fspf_client::converge(const model::wanted_routes &wanted) {
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
void fspf_client::bring_all(const model::wanted_routes &wanted) {
    for (auto next = wanted.begin(); next != wanted.end();) {
        const auto &[vsan, routes] = *next;
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
bool fspf_client::bring(uint32_t vsan, const model::shared_routes &wanted) {
    constexpr int most_rounds = 8;
    bool asked = false;
    if (reads_first_ && !accepted_.contains(vsan)) {
        unsure_.insert(vsan);
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

const std::vector<model::route_change> &fspf_client::changes_to(uint32_t vsan, const model::shared_routes &wanted) {
    const model::shared_routes &before = accepted_[vsan];
    if (difference_.after != wanted || difference_.before != before) {
        difference_ = {before, wanted, model::changes_between(table_of(before), *wanted)};
    }
    return difference_.changes;
}

// Which of several clients' routes is active is the RIB's business: what is read is taken for as it was sent.
void fspf_client::read(uint32_t vsan) {
    unsure_.insert(vsan);
    model::route_table mine;
    for (const auto &[key, held] : read_routes(link_, {RIB_CLIENT_FSPF, vsan, options_.trace})) {
        if (held.uuid == RIB_CLIENT_FSPF) {
            mine.emplace_hint(mine.end(), key.to, held.what)->second.flag |= RIB_FLAG_ACTIVE;
        }
    }
    settle(vsan, mine);
    accepted_[vsan] = std::make_shared<const model::route_table>(std::move(mine));
    unsure_.erase(vsan);
}

void fspf_client::settle(uint32_t vsan, const model::route_table &after) {
    if (auto open = open_.extract(vsan)) {
        auto &[changes, made] = open.mapped();
        traffic_.count(table_of(accepted_[vsan]), effective(std::move(changes), after, made));
    }
}

// The answer counts what took effect without naming it, so the RIB is asked what it has. From then on the table is this
// VSAN's own.
void fspf_client::send(uint32_t vsan, std::span<const model::route_change> changes, bool last_round) {
    model::shared_routes &accepted = accepted_[vsan];
    const model::shared_routes before = accepted;
    for (auto left = changes; !left.empty();) {
        const auto [bytes, part] = write(vsan, left);
        left = left.subspan(part.size());
        const protocol::fcurt_response response = deliver(vsan, bytes, part);
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

/// The next message: as many of the changes as may be in one, whatever the first needs.
fspf_client::message_part fspf_client::write(uint32_t vsan, std::span<const model::route_change> changes) {
    const size_t first = wire::fcurt_update.size + protocol::fcurt_record_size(changes[0].what.hops.size());
    room_.resize(std::max(options_.message_limit, first));
    const protocol::update_writer update(room_);
    update.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(vsan);
    update.set<"oper">(options_.link.envelopes ? RIB_OPER_UPDATE_CMI : RIB_OPER_UPDATE_RSP);
    const size_t added = protocol::add_routes(update, changes);
    return {std::span(room_).first(update.size()), changes.first(added)};
}

protocol::fcurt_response fspf_client::deliver(uint32_t vsan, std::span<uint8_t> message,
                                              std::span<const model::route_change> changes) {
    if (options_.trace) {
        trace(message);
    }
    try {
        const protocol::fcurt_response response = exchange(message);
        link_.take_result(RIBKIT_OPCODE_FCURT_UPDATE, response.accepted == 0 ? response.result : RIB_OK);
        return response;
    } catch (const bus::no_answer &) {
        open_[vsan] = {{changes.begin(), changes.end()}, changes.size()};
        throw;
    }
}

// Of the VSAN that was asked about: a refusal that comes before the update was read names none.
void fspf_client::note_refused(uint32_t vsan, const protocol::fcurt_response &response,
                               std::span<const model::route_change> changes) {
    const model::route_table &held = *accepted_[vsan];
    traffic_.refused +=
        static_cast<size_t>(std::count_if(changes.begin(), changes.end(), [&](const model::route_change &change) {
            return !model::has_effect(held, change);
        }));
    report(vsan, response);
}

protocol::fcurt_response fspf_client::exchange(std::span<uint8_t> update) {
    const auto answer = link_.ask(RIBKIT_OPCODE_FCURT_UPDATE, update);
    if (rib_check_fcurt_rsp(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) != RIB_OK) {
        bus::rib_link::drop_answer(RIBKIT_OPCODE_FCURT_UPDATE, answer.size(), bus::result_text(RIB_MISSING_RESPONSE));
    }
    return protocol::decode_fcurt_response(std::span(answer).first<wire::route_rsp.size>());
}

void fspf_client::trace(std::span<const uint8_t> update) {
    const protocol::update_view message(update.data());
    rib_printf_fcurt_update(message.size(), message.data());
    for (const protocol::record_view record : message.list<"route">()) {
        rib_printf_fcurt(message.data(), record.data());
    }
}

} // namespace ribkit::clients
