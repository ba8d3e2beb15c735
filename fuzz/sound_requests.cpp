// Requests about few routes of each table, written by their names.
#include "fuzz/sound_requests.h"

#include "codec/view.h"
#include "protocol/queries.h"
#include "protocol/table_messages.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <array>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace ribkit::fuzz {

namespace {

constexpr uint32_t client = RIB_CLIENT_FSPF;
constexpr uint32_t vsan = 1;
constexpr size_t room = 4096;
constexpr model::destination there{0x020000, RIB_MASK_DOMAIN};

template <const codec::layout &L> byte_vector update(auto add) {
    byte_vector bytes(room);
    const codec::writer<L> message(bytes);
    message.template set<"uuid">(client).template set<"vsan">(vsan).template set<"oper">(RIB_OPER_UPDATE_RSP);
    add(message);
    bytes.resize(message.size());
    return bytes;
}

void add_updates(std::vector<sound_request> &all) {
    constexpr std::array<model::next_hop, 2> hops{{{0x01010001, 2}, {0x01010002, 2}}};
    constexpr std::array<uint32_t, 2> members{0x01010001, 0x01010002};
    constexpr std::array<uint32_t, 1> sources{0x01010003};
    constexpr std::array<uint32_t, 3> ways{0x00010000, 0x01010001, 0x5000};
    all.push_back({RIBKIT_OPCODE_FCURT_UPDATE, update<wire::fcurt_update>([&](const auto &message) {
                       protocol::add_route(message, RIB_ACTION_ADD, there, {500, RIB_FLAG_DIRECT, hops});
                       protocol::add_route(message, RIB_ACTION_ADD, {0x030000, RIB_MASK_DOMAIN}, {500, 0, {}});
                   })});
    constexpr std::array<uint32_t, 2> versions{7, 8};
    all.push_back({RIBKIT_OPCODE_FCURT_UPDATE, protocol::update_of_versions(client, vsan, versions)});
    all.push_back({RIBKIT_OPCODE_FCMRT_UPDATE, update<wire::fcmrt_update>([&](const auto &message) {
                       protocol::add_route(message, RIB_ACTION_ADD, there, std::span<const uint32_t>(members));
                   })});
    all.push_back({RIBKIT_OPCODE_FCLRT_UPDATE, update<wire::fclrt_update>([&](const auto &message) {
                       const model::label_key key{vsan, RIB_ROUTE_SRC_LABEL, sources[0], {0, 0}, 1, {0x1000, 0}};
                       protocol::add_route(message, RIB_ACTION_ADD_LABEL, key, {sources, ways});
                   })});
}

template <class Bytes> void add(std::vector<sound_request> &all, uint32_t opcode, const Bytes &bytes) {
    all.push_back({opcode, {bytes.begin(), bytes.end()}});
}

void add_table_queries(std::vector<sound_request> &all) {
    constexpr uint32_t many = 1000;
    for (const uint32_t type : {0x1U, 0x2U, 0x4U, 0x8U, 0x100U, 0x200U, 0x800U, 0x100000U, 0x200000U}) {
        add(all, RIBKIT_OPCODE_FCURT_QUERY, encode(protocol::unicast_query{client, type, many, {vsan, there}}));
    }
    for (const uint32_t type : {0x1U, 0x2U, 0x4U, 0x100U}) {
        add(all, RIBKIT_OPCODE_FCMRT_QUERY, encode(protocol::multicast_query{client, type, many, {vsan, there}}));
    }
    for (const uint32_t type : {0x1fU, 0x2fU, 0x11U, 0x100fU}) {
        add(all, RIBKIT_OPCODE_FCLRT_QUERY, encode(protocol::label_query{client, type, many, {.vsan = vsan}}));
    }
}

void add_state_queries(std::vector<sound_request> &all) {
    constexpr uint32_t query = 0x1;
    const protocol::list_query list{client, query, 100, 0};
    add(all, RIBKIT_OPCODE_DB_QUERY, protocol::encode<wire::db_query>(list));
    add(all, RIBKIT_OPCODE_DM_QUERY, protocol::encode<wire::dm_query>(list));
    add(all, RIBKIT_OPCODE_SYS_QUERY, protocol::encode<wire::sys_query>(list));
    add(all, RIBKIT_OPCODE_REG_QUERY, protocol::encode<wire::reg_query>(list));
    add(all, RIBKIT_OPCODE_VSAN_QUERY, protocol::encode<wire::vsan_query>(list));
    for (const uint32_t structure : {1U, 2U, 3U}) {
        add(all, RIBKIT_OPCODE_IN_QUERY, encode(protocol::internal_query{client, query, structure}));
    }
    add(all, RIBKIT_OPCODE_NODE_QUERY, encode(protocol::node_query{client, 0, 0}));
    for (const uint32_t log : {0U, 1U, 2U}) {
        for (const uint32_t sequence : {0U, 1U, 1000U}) {
            add(all, RIBKIT_OPCODE_SYNC_QUERY, encode(protocol::log_query{client, log, sequence}));
        }
    }
    const model::flow flow{vsan, 0x010101, there.fcid | 0x0101, 1};
    add(all, RIBKIT_OPCODE_FCU_LB_QUERY, encode(protocol::flow_query{client, flow}));
    add(all, RIBKIT_OPCODE_TEST_QUERY, encode_test(protocol::simple_request{client, 1}));
    add(all, RIBKIT_OPCODE_VERIFY, encode_verify(protocol::simple_request{client, 0x400}));
    add(all, RIBKIT_OPCODE_VERF_QUERY, encode(protocol::verify_query{client, query, 0x400, 100}));
}

} // namespace

std::vector<sound_request> sound_requests() {
    std::vector<sound_request> all;
    add(all, RIBKIT_OPCODE_REGISTER, protocol::encode(model::registration{client, 100, "fspf"}));
    add_updates(all);
    add_table_queries(all);
    add_state_queries(all);
    return all;
}

// A list of versions may be as long; it begins with a client's identity, which is less than any result code.
bool is_refusal(const byte_vector &answer) {
    return answer.size() == wire::route_rsp.size &&
           codec::view<wire::route_rsp>(answer.data()).get<"word_0">() > RIBKIT_LAST_CLIENT;
}

const codec::message *kind_of(const byte_vector &answer, const char *names) {
    std::istringstream words(names);
    for (std::string name; words >> name;) {
        const codec::message *kind = codec::find_message(name);
        const bool is_one = kind->check(answer.data(), static_cast<uint32_t>(answer.size()), nullptr) == RIB_OK;
        const bool logged = name.starts_with("rib_sync_fc"); // records stand one behind the other
        if (is_one || (logged && !answer.empty() && answer.size() % kind->wire->size == 0)) {
            return kind;
        }
    }
    return nullptr;
}

requester::requester(const std::string &url) {
    if (qip_open(url.c_str(), &handle_) != 0) {
        throw std::system_error(errno, std::generic_category(), url);
    }
}

requester::~requester() { qip_close(handle_); }

byte_vector requester::ask(uint32_t opcode, byte_vector request, bool in_envelope) {
    rib_wrap_msg asked{client, 0, opcode, {}, request.data(), static_cast<uint32_t>(request.size())};
    rib_wrap_msg answer{};
    const uint32_t result = (in_envelope ? rib_wrap_cmi_req_rsp : rib_wrap_qip_req_rsp)(handle_, &asked, &answer);
    if (result != RIB_OK) {
        throw std::runtime_error("no answer");
    }
    byte_vector bytes(answer.payload, answer.payload + answer.payload_size);
    rib_wrap_qip_drop(client, handle_, &answer.ref);
    return bytes;
}

} // namespace ribkit::fuzz
