// The way of a route change: computed, compared with what the RIB has, laid out, converted, traced, sent, answered.
#include "tools/fspf_client.h"

#include "rib_check.h"
#include "rib_codec.h"
#include "rib_codes.h"
#include "rib_text.h"
#include "rib_trace.h"
#include "rib_wrap.h"
#include "tools/fspf.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace ribkit {

namespace {

using steady = std::chrono::steady_clock;

std::string result_text(uint32_t result) {
    std::array<char, 64> text{};
    rib_rtn_to_str(result, text.data());
    return text.data();
}

void report(const fcurt_response &response) {
    std::fprintf(stderr, "ribkit: the RIB's answer for vsan %u is \"%s\": %u routes accepted\n", response.vsan,
                 result_text(response.result).c_str(), response.accepted);
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

fspf_client::fspf_client(const std::string &url, client_options options) : handle_(url), options_(std::move(options)) {}

client_traffic fspf_client::converge(const fabric &f) {
    traffic_ = {};
    const auto start = steady::now();
    vsan_changes changes = changes_for(f);
    const auto computed = steady::now();
    for (auto &[vsan, list] : changes) {
        send(vsan, std::move(list));
    }
    traffic_.computing = computed - start;
    traffic_.exchanging = steady::now() - computed;
    return traffic_;
}

fspf_client::vsan_changes fspf_client::changes_for(const fabric &f) {
    vsan_changes changes;
    to_send_ = 0;
    for (const fabric_vsan &vsan : f.vsans()) {
        options_.progress("VSANs computed", changes.size(), f.vsans().size());
        changes[vsan.id] = changes_between(accepted_[vsan.id], fspf_routes(f, vsan.id));
        to_send_ += changes[vsan.id].size();
    }
    return changes;
}

void fspf_client::send(uint32_t vsan, std::vector<route_change> changes) {
    const fcurt_update update{RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE_RSP, std::move(changes)};
    std::span<const route_change> left = update.changes;
    for (auto &[bytes, size] : encode(update, options_.message_limit)) {
        if (options_.trace) {
            trace(bytes);
        }
        const fcurt_response response = exchange(bytes);
        for (const route_change &change : left.first(size)) {
            count(vsan, change);
            if (response.result == RIB_OK) {
                apply_change(accepted_[vsan], change);
            }
        }
        if (response.result != RIB_OK && response.accepted > 0) {
            find_accepted(vsan, left.first(size));
        }
        traffic_.refused += size - response.accepted;
        left = left.subspan(size);
        options_.progress("routes sent", traffic_.sent(), to_send_);
    }
}

// The answer counts what took effect without naming it. What is deleted is gone in any case; the others are sent again,
// one by one: those that the RIB has are replaced by themselves.
void fspf_client::find_accepted(uint32_t vsan, std::span<const route_change> changes) {
    for (const route_change &change : changes) {
        fcurt_update single{RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE_RSP, {change}};
        const bool gone = change.action == RIB_ACTION_DELETE;
        if (gone || ask(encode(single, options_.message_limit).front().bytes).result == RIB_OK) {
            apply_change(accepted_[vsan], change);
        }
    }
}

fcurt_response fspf_client::exchange(std::span<uint8_t> update) {
    const fcurt_response response = ask(update);
    if (response.result != RIB_OK) {
        report(response);
    }
    return response;
}

fcurt_response fspf_client::ask(std::span<uint8_t> update) {
    rib_wrap_msg request{};
    rib_wrap_msg answer{};
    request.uuid = RIB_CLIENT_FSPF;
    request.opcode = fcurt_update_opcode;
    request.payload = update.data();
    request.payload_size = static_cast<uint32_t>(update.size());
    const uint32_t result = rib_wrap_qip_req_rsp(handle_.number(), &request, &answer);
    if (result != RIB_OK) {
        throw std::runtime_error("no answer from the RIB: " + result_text(result));
    }
    traffic_.messages++;
    traffic_.bytes_sent += update.size();
    traffic_.bytes_received += answer.payload_size;
    fcurt_response response{RIB_MISSING_RESPONSE, 0, 0, 0, 0};
    if (rib_check_fcurt_rsp(answer.payload, answer.payload_size, nullptr) == RIB_OK) {
        response =
            decode_fcurt_response(std::span<const uint8_t, fcurt_response_size>(answer.payload, fcurt_response_size));
    }
    rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle_.number(), &answer.ref);
    return response;
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
    const uint8_t *record = message + fcurt_update_header_size;
    for (uint32_t left = rib_ntoh_fcurt_update_get_n_route(message); left > 0; left--) {
        rib_printf_fcurt(message, record);
        record += fcurt_record_size(rib_ntoh_fcurt_get_n_hop(record));
    }
}

} // namespace ribkit
