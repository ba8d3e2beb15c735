// The way of a route change: computed, compared with what the RIB has, laid out, converted, traced, sent, answered.
#include "tools/fspf_client.h"

#include "rib_check.h"
#include "rib_codec.h"
#include "rib_codes.h"
#include "rib_trace.h"
#include "tools/fspf.h"
#include "tools/pauses.h"
#include "tools/route_reader.h"
#include "tools/run_clock.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace ribkit {

namespace {

void report(const fcurt_response &response) {
    std::fprintf(stderr, "ribkit: the RIB's answer for vsan %u is \"%s\": %u routes accepted\n", response.vsan,
                 result_text(response.result).c_str(), response.accepted);
}

// What this client sends is sound, so that a message of which nothing could be used did not arrive as it was sent.
bool is_damage_report(const fcurt_response &response) {
    return response.accepted == 0 && (response.result == RIB_BAD_PARAMETERS || response.result == RIB_EXCESS_DATA);
}

} // namespace

client_traffic &client_traffic::operator+=(const client_traffic &more) {
    added += more.added;
    deleted += more.deleted;
    changed += more.changed;
    refused += more.refused;
    messages += more.messages;
    bytes_sent += more.bytes_sent;
    bytes_received += more.bytes_received;
    computing += more.computing;
    exchanging += more.exchanging;
    return *this;
}

fspf_client::fspf_client(const std::string &url, client_options options)
    : link_(url, RIB_CLIENT_FSPF, options.link), options_(std::move(options)) {}

void fspf_client::start_over(const fabric &f) {
    for (const fabric_vsan &vsan : f.vsans()) {
        unsure_.insert(vsan.id);
    }
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

client_traffic fspf_client::converge(const fabric &f) {
    traffic_ = {};
    to_send_ = 0;
    const auto start = run_now();
    vsan_routes wanted;
    for (const fabric_vsan &vsan : f.vsans()) {
        options_.progress("VSANs computed", wanted.size(), f.vsans().size());
        wanted.emplace(vsan.id, fspf_routes(f, vsan.id));
    }
    const auto computed = run_now();
    rib_started({});
    bring_all(wanted);
    traffic_.computing = computed - start;
    traffic_.exchanging = run_now() - computed;
    const link_traffic carried = link_.take_traffic();
    traffic_.messages = carried.messages;
    traffic_.bytes_sent = carried.bytes_sent;
    traffic_.bytes_received = carried.bytes_received;
    return traffic_;
}

// A RIB that starts while this goes on has lost what it was sent before: all VSANs have their turn again.
void fspf_client::bring_all(const vsan_routes &wanted) {
    pauses trying(options_.link.patience);
    for (auto next = wanted.begin(); next != wanted.end();) {
        try {
            bring(next->first, next->second);
            trying = pauses(options_.link.patience);
            ++next;
        } catch (const no_answer &why) {
            unsure_.insert(next->first);
            std::fprintf(stderr, "ribkit: %s; asking again\n", why.what());
            if (!link_.await(trying)) {
                throw;
            }
        }
        next = rib_started({}) ? wanted.begin() : next;
    }
}

// Where somebody else has changed this client's routes meanwhile, what to send is found anew.
void fspf_client::bring(uint32_t vsan, const route_table &wanted) {
    constexpr int most_rounds = 8;
    for (int round = 1; round <= most_rounds; round++) {
        if (unsure_.contains(vsan)) {
            read(vsan);
        }
        const auto changes = changes_between(accepted_[vsan], wanted);
        to_send_ += changes.size();
        send(vsan, changes, round == most_rounds);
        if (!unsure_.contains(vsan)) {
            return;
        }
    }
}

void fspf_client::read(uint32_t vsan) {
    unsure_.insert(vsan);
    route_table &mine = accepted_[vsan];
    mine.clear();
    for (const auto &[key, held] : read_routes(link_, {RIB_CLIENT_FSPF, vsan, options_.trace})) {
        if (held.uuid == RIB_CLIENT_FSPF) {
            mine.emplace_hint(mine.end(), key.to, held.what);
        }
    }
    unsure_.erase(vsan);
}

void fspf_client::send(uint32_t vsan, const std::vector<route_change> &changes, bool last_round) {
    const uint32_t oper = options_.link.envelopes ? RIB_OPER_UPDATE_CMI : RIB_OPER_UPDATE_RSP;
    std::span<const route_change> left = changes;
    for (auto &[bytes, size] : encode(fcurt_update{RIB_CLIENT_FSPF, vsan, oper, changes}, options_.message_limit)) {
        if (options_.trace) {
            trace(bytes);
        }
        const fcurt_response response = exchange(bytes);
        if (is_damage_report(response)) {
            throw no_answer(result_text(response.result));
        }
        for (const route_change &change : left.first(size)) {
            count(vsan, change);
            if (response.result == RIB_OK) {
                apply_change(accepted_[vsan], change);
            }
        }
        if (response.result == RIB_NO_ENTRY && !last_round) {
            unsure_.insert(vsan);
            return;
        }
        if (response.result != RIB_OK) {
            find_refused(response, vsan, left.first(size));
        }
        left = left.subspan(size);
        options_.progress("routes sent", traffic_.sent(), to_send_);
    }
}

// The answer counts what took effect without naming it, so the RIB is asked what it has.
void fspf_client::find_refused(const fcurt_response &response, uint32_t vsan, std::span<const route_change> changes) {
    read(vsan);
    const auto refused = std::count_if(changes.begin(), changes.end(), [&](const route_change &change) {
        return !has_effect(accepted_[vsan], change);
    });
    traffic_.refused += static_cast<size_t>(refused);
    report(response);
}

fcurt_response fspf_client::exchange(std::span<uint8_t> update) {
    const auto answer = link_.ask(RIBKIT_OPCODE_FCURT_UPDATE, update);
    if (rib_check_fcurt_rsp(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) != RIB_OK) {
        throw no_answer(result_text(RIB_MISSING_RESPONSE));
    }
    return decode_fcurt_response(std::span<const uint8_t, RIBKIT_FCURT_RSP_SIZE>(answer.data(), RIBKIT_FCURT_RSP_SIZE));
}

void fspf_client::count(uint32_t vsan, const route_change &change) {
    if (change.action == RIB_ACTION_DELETE) {
        traffic_.deleted++;
    } else if (change.action == RIB_ACTION_ADD && !accepted_[vsan].contains(change.to)) {
        traffic_.added++;
    } else {
        traffic_.changed++;
    }
}

void fspf_client::trace(std::span<const uint8_t> update) {
    const uint8_t *message = update.data();
    rib_printf_fcurt_update(rib_sizeof_fcurt_update(message), message);
    const uint8_t *record = message + RIBKIT_FCURT_UPDATE_SIZE;
    for (uint32_t left = rib_ntoh_fcurt_update_get_n_route(message); left > 0; left--) {
        rib_printf_fcurt(message, record);
        record += fcurt_record_size(rib_ntoh_fcurt_get_n_hop(record));
    }
}

} // namespace ribkit
