// Messages that are cut, stretched, mutilated or of somebody else, sent to a RIB that has to go on.
#include "fuzz/attacks.h"

#include "bus/rib_link.h"
#include "bus/service_handle.h"
#include "codec/bytes.h"
#include "codec/witness/random_messages.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "wrap/cmi_envelope.h"

#include <algorithm>
#include <array>
#include <memory>

using namespace ribkit::codec;

namespace ribkit::fuzz {

namespace {

using byte_vector = std::vector<uint8_t>;

constexpr uint32_t own_vsan = 2;

byte_vector update() {
    constexpr std::array<model::next_hop, 2> hops{{{0x01010001, 2}, {0x01010002, 3}}};
    byte_vector bytes(wire::fcurt_update.size + 2 * protocol::fcurt_record_size(hops.size()));
    const protocol::update_writer message(bytes);
    message.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(own_vsan).set<"oper">(RIB_OPER_UPDATE_RSP);
    for (const uint32_t fcid : {0x630000U, 0x640000U}) {
        protocol::add_route(message, RIB_ACTION_ADD, {fcid, RIB_MASK_DOMAIN}, {500, 0, hops});
    }
    return bytes;
}

byte_vector query() {
    const auto bytes =
        protocol::encode(protocol::unicast_query{RIB_CLIENT_FSPF, RIBKIT_QUERY_VSAN_ALL, 1000, {own_vsan, {}}});
    return {bytes.begin(), bytes.end()};
}

byte_vector envelope(uint32_t opcode, const byte_vector &content) {
    byte_vector bytes(wrap::payload_at + content.size());
    const wrap::written_envelope head(bytes.data());
    const auto length = static_cast<uint32_t>(wrap::opcode_size + content.size());
    head.set<"type">(wrap::envelope_type::request).set<"length">(length).set<"opcode">(opcode);
    std::copy(content.begin(), content.end(), bytes.begin() + wrap::payload_at);
    return bytes;
}

struct request {
    uint32_t opcode;
    byte_vector bytes;
};

std::vector<request> requests() {
    return {{RIBKIT_OPCODE_FCURT_UPDATE, update()},
            {RIBKIT_OPCODE_FCURT_QUERY, query()},
            {RIB_CMI_OPCODE, envelope(RIBKIT_OPCODE_FCURT_QUERY, query())}};
}

void damage(byte_vector &bytes, std::mt19937 &random) {
    for (uint32_t left = random() % 4; left > 0 && !bytes.empty(); left--) {
        bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
    }
    if (random() % 4 == 0) {
        bytes.resize(random() % (bytes.size() + 1));
    } else if (random() % 8 == 0) {
        bytes.resize(bytes.size() + random() % 5000);
    }
}

/// Whatever an update that begins there says is its VSAN.
void keep_away(byte_vector &bytes, size_t update_at = 0) {
    if (bytes.size() >= update_at + wire::fcurt_update.at("vsan") + sizeof own_vsan) {
        const writable_view<wire::fcurt_update> update(bytes.data() + update_at);
        if (update.get<"vsan">() <= 1) {
            update.set<"vsan">(own_vsan);
        }
    }
}

} // namespace

// Half of the messages ask for an answer, as far as answers may still be outstanding.
void attacker::send(uint32_t handle, uint32_t opcode, const byte_vector &bytes) {
    const auto size = static_cast<uint32_t>(bytes.size());
    qip_ref sent{};
    if (random_() % 2 == 0 &&
        qip_send(handle, &ribkit_rib_address, opcode, bytes.data(), size, &sent, nullptr, nullptr) == 0) {
        qip_drop(handle, &sent);
    } else {
        qip_send(handle, &ribkit_rib_address, opcode, bytes.data(), size, nullptr, nullptr, nullptr);
    }
}

attacker::byte_vector attacker::anything() {
    constexpr std::array names{"rib_fcurt_update", "rib_fcurt_query", "rib_fcmrt_update", "rib_register",
                               "rib_verf_info"};
    const uint32_t choice = random_() % 4;
    byte_vector bytes;
    if (choice == 0) {
        bytes = witness::random_message(names[random_() % names.size()], witness::order::big, random_);
    } else if (choice == 1) {
        bytes.resize(random_() % 3000);
        for (uint8_t &byte : bytes) {
            byte = static_cast<uint8_t>(random_());
        }
    } else {
        const auto all = requests();
        bytes = all[random_() % all.size()].bytes;
        damage(bytes, random_);
    }
    keep_away(bytes);
    keep_away(bytes, wrap::payload_at);
    return bytes;
}

void attacker::send_anything(size_t messages) {
    constexpr std::array<uint32_t, 8> opcodes{RIBKIT_OPCODE_FCURT_UPDATE,
                                              RIBKIT_OPCODE_FCURT_QUERY,
                                              RIB_CMI_OPCODE,
                                              RIBKIT_OPCODE_STARTED,
                                              0,
                                              1,
                                              UINT32_MAX,
                                              0x10100};
    const ribkit::bus::service_handle handle(url_);
    for (; messages > 0; messages--) {
        send(handle.number(), opcodes[random_() % opcodes.size()], anything());
    }
}

void attacker::truncate() {
    const ribkit::bus::service_handle handle(url_);
    for (const auto &[opcode, bytes] : requests()) {
        for (size_t size = 0; size < bytes.size(); size++) {
            send(handle.number(), opcode, {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size)});
        }
    }
}

void attacker::announce_too_much() {
    const ribkit::bus::service_handle handle(url_);
    for (const uint32_t count : {3U, 16U, 17U, 0xffffU, 0x7fffffffU, 0x80000000U, 0xfffffff0U, UINT32_MAX}) {
        for (size_t at = 0; at + 4 <= update().size(); at += 4) {
            byte_vector bytes = update();
            store32<std::endian::big>(bytes.data() + at, count);
            keep_away(bytes);
            send(handle.number(), RIBKIT_OPCODE_FCURT_UPDATE, bytes);
        }
        byte_vector bytes = envelope(RIBKIT_OPCODE_FCURT_QUERY, query());
        wrap::written_envelope(bytes.data()).set<"length">(count);
        send(handle.number(), RIB_CMI_OPCODE, bytes);
    }
}

void attacker::flood(size_t messages) {
    const ribkit::bus::service_handle handle(url_);
    const byte_vector bytes = query();
    for (; messages > 0; messages--) {
        send(handle.number(), RIBKIT_OPCODE_FCURT_QUERY, bytes);
    }
}

void attacker::come_and_go(size_t times) {
    for (; times > 0; times--) {
        const ribkit::bus::service_handle handle(url_);
        send(handle.number(), RIBKIT_OPCODE_FCURT_UPDATE, update());
    }
}

void attacker::open_many(size_t handles) {
    std::vector<std::unique_ptr<ribkit::bus::service_handle>> all;
    for (; handles > 0; handles--) {
        all.push_back(std::make_unique<ribkit::bus::service_handle>(url_));
        send(all.back()->number(), RIBKIT_OPCODE_FCURT_QUERY, query());
    }
}

} // namespace ribkit::fuzz
