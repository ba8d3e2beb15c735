// Messages about few entries of each table, written by their names.
#include "fuzz/sound_fib_requests.h"

#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/queries.h"
#include "rib_codes.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <array>
#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace ribkit::fuzz {

namespace {

constexpr uint32_t client = RIB_CLIENT_OPERATOR;
constexpr uint32_t vsan = 1;
constexpr uint32_t many = 1000;
constexpr std::array<uint32_t, 3> pushing{0x00010000, 0x01010001, 0x5000};
constexpr model::destination there{0x020000, RIB_MASK_DOMAIN};
constexpr model::destination elsewhere{0x030000, RIB_MASK_DOMAIN};
constexpr model::label_key by_label{vsan, RIB_ROUTE_LABEL, 0, {0, 0}, 2, {0x1000, 0x2000}};
constexpr model::label_key by_source{vsan, RIB_ROUTE_SRC_LABEL, 0x01010003, {0, 0}, 0, {}};

class writing {
  public:
    template <class Bytes> void add(uint32_t opcode, const Bytes &bytes) {
        all.push_back({opcode, {bytes.begin(), bytes.end()}});
    }
    template <class Update, class Fill> void update(uint32_t opcode, uint32_t oper, const Fill &fill) {
        byte_vector room(4096);
        Update update(room, {oper, vsan, ++sequence});
        fill(update);
        room.resize(update.size());
        add(opcode, room);
    }
    /// Entries, of which the second finds no room, and comparisons.
    template <class Update, class Fill> void table(uint32_t opcode, const Fill &fill) {
        update<Update>(opcode, FIB_OPER_UPDATE, fill);
        update<Update>(opcode, FIB_OPER_BEGIN_VERIFY, [](Update & /*update*/) {});
        update<Update>(opcode, FIB_OPER_VERIFY, fill);
        update<Update>(opcode, FIB_OPER_END_VERIFY, [](Update & /*update*/) {});
    }

    std::vector<sound_request> all;
    uint32_t sequence = 0;
};

void add_tables(writing &to) {
    to.table<protocol::unicast_fib_update>(RIBKIT_OPCODE_FIB_FCU_UPDATE, [](auto &update) {
        add_path(update, there, model::fib_unicast{.metric = 500, .ways = pushing});
        add_path(update, elsewhere, model::fib_unicast{});
    });
    to.table<protocol::multicast_fib_update>(RIBKIT_OPCODE_FIB_FCM_UPDATE, [](auto &update) {
        add_path(update, there, std::span<const uint32_t>(pushing).first(2));
        add_path(update, elsewhere, model::fib_multicast{});
    });
    to.table<protocol::label_fib_update>(RIBKIT_OPCODE_FIB_FCL_UPDATE, [](auto &update) {
        add_path(update, by_label, model::fib_label{pushing});
        add_path(update, by_source, model::fib_label{});
    });
}

void add_rest(writing &to) {
    const std::pair<uint32_t, model::vsan_attributes> vsans[] = {{vsan, {}}};
    to.add(RIBKIT_OPCODE_FIB_VSAN_UPDATE, protocol::vsan_update(++to.sequence, vsans));
    const protocol::rewrite_path rewrite{{vsan, 0, there, {0, 0}}, {2, 0x0a0101, 0}};
    to.add(RIBKIT_OPCODE_FIB_REWRITE_UPDATE,
           protocol::rewrite_update({FIB_OPER_UPDATE, vsan, ++to.sequence}, std::span(&rewrite, 1)));
}

void add_queries(writing &to) {
    to.add(RIBKIT_OPCODE_FIB_FCU_QUERY, encode(protocol::unicast_query{client, 0x1, many, {0, {0, 0}}}));
    to.add(RIBKIT_OPCODE_FIB_FCM_QUERY, encode(protocol::multicast_query{client, 0x1, many, {0, {0, 0}}}));
    to.add(RIBKIT_OPCODE_FIB_FCL_QUERY, encode(protocol::label_query{client, 0x1f, many, {}}));
    to.add(RIBKIT_OPCODE_FIB_NODE_QUERY, encode(protocol::node_query{client, 0, 0}));
    to.add(RIBKIT_OPCODE_FIB_VSAN_QUERY, protocol::encode<wire::vsan_query>(protocol::list_query{client, 1, many, 0}));
    const model::flow flow{vsan, 0x010101, there.fcid | 0x0101, 1};
    to.add(RIBKIT_OPCODE_FIB_LB_QUERY, encode(protocol::flow_query{client, flow}));
    for (const uint32_t type : {0x100U, 0x200U, 0x400U}) {
        to.add(RIBKIT_OPCODE_FIB_VERF_QUERY, encode(protocol::verify_query{client, 1, type, many}));
    }
}

} // namespace

std::vector<sound_request> sound_fib_requests() {
    writing all;
    add_tables(all);
    add_rest(all);
    add_queries(all);
    return all.all;
}

std::string run_of(const byte_vector &answer, std::string_view names) {
    std::istringstream runs{std::string(names)};
    for (std::string run; runs >> run;) {
        const auto nothing = [](const codec::message & /*kind*/, std::span<const uint8_t> /*part*/) {};
        if (!answer.empty() && for_each_part(run, answer, nothing)) {
            return run;
        }
    }
    return "";
}

uint32_t module_refusal(const byte_vector &answer) {
    return answer.size() == wire::fib_rsp.size ? protocol::answer_of(codec::view<wire::fib_rsp>(answer.data())).result
                                               : RIB_OK;
}

module_requester::module_requester(const std::string &url, uint32_t number) : number_(number) {
    if (qip_open(url.c_str(), &handle_) != 0) {
        throw std::system_error(errno, std::generic_category(), url);
    }
}

module_requester::~module_requester() { qip_close(handle_); }

byte_vector module_requester::ask(uint32_t opcode, const byte_vector &request) {
    constexpr uint32_t generous = 20; // seconds
    const qip_addr address = protocol::module_address(number_);
    qip_ref ref{};
    if (qip_send(handle_, &address, opcode, request.data(), static_cast<uint32_t>(request.size()), &ref, nullptr,
                 nullptr) != 0) {
        throw std::runtime_error("not sent");
    }
    const qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, generous, qip_rr_token_get(&ref)}};
    qip_drop(handle_, &ref);
    qip_ref answer{};
    if (qip_recv(handle_, &answer, &opts) != 0) {
        throw std::runtime_error("no answer");
    }
    const auto *payload = static_cast<const uint8_t *>(qip_payload_get(&answer));
    byte_vector bytes(payload, payload + qip_payload_size(&answer));
    qip_drop(handle_, &answer);
    return bytes;
}

} // namespace ribkit::fuzz
