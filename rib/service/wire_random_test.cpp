// The RIB's service beside the naive model: random updates of all three tables as bytes, put together here number by
// number, plainly and in envelopes. Answers are compared after each, and at the end every notification.
#include "rib/naive/naive_state.h"
#include "rib/naive/random_requests.h"
#include "rib/service/rib_service.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"
#include "testing/literal_updates.h"

#include <array>
#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

using testing::append_word;
using testing::word_at;

constexpr const char *url = "local:wire_random";
constexpr size_t versions_room = 240, sources_room = 16, labels_room = 2;
constexpr uint32_t rounds = RIBKIT_EMULATED ? 300 : 3000;
constexpr uint32_t listening_client = 1000; ///< sends no updates

using message = std::vector<uint8_t>;

void append(message &bytes, const words &numbers) {
    for (const uint32_t number : numbers) {
        append_word(bytes, number);
    }
}

void append_padded(message &bytes, words numbers, size_t room) {
    numbers.resize(room);
    append(bytes, numbers);
}

uint32_t size_of(const words &list) { return static_cast<uint32_t>(list.size()); }

void append_unicast(message &bytes, const naive_record &one) {
    append(bytes, {one.key[1], one.key[2]});
    for (const uint32_t carried : one.carried) {
        bytes.push_back(static_cast<uint8_t>(carried));
    }
    append(bytes, {one.action, one.metric, one.flag, one.interfaces});
    append(bytes, one.ways);
}

void append_multicast(message &bytes, const naive_record &one) {
    append(bytes, {one.key[1], one.key[2], one.action, one.interfaces});
    append(bytes, one.ways);
}

void append_label(message &bytes, const naive_record &one) {
    const words &k = one.key;
    append(bytes, {k[1], k[0], k[3], k[4], one.action, k[5], size_of(one.carried), one.interfaces, k[6], k[7]});
    append_padded(bytes, one.carried, sources_room);
    append(bytes, one.ways);
}

message bytes_of(const naive_request &asked) {
    message bytes;
    append(bytes, {asked.uuid, asked.vsan, asked.oper});
    if (asked.table == naive_unicast) {
        append_word(bytes, size_of(asked.versions));
    }
    append_word(bytes, static_cast<uint32_t>(asked.records.size()));
    if (asked.table == naive_unicast) {
        append_padded(bytes, asked.versions, versions_room);
    }
    for (const naive_record &one : asked.records) {
        asked.table == naive_label       ? append_label(bytes, one)
        : asked.table == naive_multicast ? append_multicast(bytes, one)
                                         : append_unicast(bytes, one);
    }
    return bytes;
}

/// Whether a message has room for it.
bool can_travel(const naive_request &asked) {
    const bool fits = std::all_of(asked.records.begin(), asked.records.end(), [&](const naive_record &one) {
        return asked.table != naive_label || (one.carried.size() <= sources_room && one.key[5] <= labels_room);
    });
    return fits && asked.versions.size() <= versions_room;
}

// A notification as the model has what it tells, without the cause.

/// So many numbers from a place on, which moves.
words taken(const message &bytes, size_t &at, size_t count) {
    words numbers;
    for (; count > 0; count--, at += 4) {
        numbers.push_back(word_at(bytes, at));
    }
    return numbers;
}

void append_list(words &to, const words &list) {
    to.push_back(size_of(list));
    to.insert(to.end(), list.begin(), list.end());
}

words unicast_note(const message &bytes, size_t &at, const words &head) {
    const words key = taken(bytes, at, 2);
    const words carried(bytes.begin() + static_cast<ptrdiff_t>(at), bytes.begin() + static_cast<ptrdiff_t>(at + 8));
    at += 8;
    const words rest = taken(bytes, at, 4);
    words all{head[2], rest[0], naive_unicast, head[1], key[0], key[1], head[0], rest[1], rest[2]};
    append_list(all, carried);
    append_list(all, taken(bytes, at, size_t{2} * rest[3]));
    return all;
}

words multicast_note(const message &bytes, size_t &at, const words &head) {
    const words fixed = taken(bytes, at, 4);
    words all{head[2], fixed[2], naive_multicast, head[1], fixed[0], fixed[1], head[0]};
    append_list(all, {});
    append_list(all, taken(bytes, at, fixed[3]));
    return all;
}

words label_note(const message &bytes, size_t &at, const words &head) {
    const words fixed = taken(bytes, at, 8);
    const words match = taken(bytes, at, labels_room);
    words sources = taken(bytes, at, sources_room);
    sources.resize(fixed[6]);
    words ways;
    for (uint32_t left = fixed[7]; left > 0; left--) {
        const words way = taken(bytes, at, 2 + (word_at(bytes, at) >> 16 & 0xff));
        ways.insert(ways.end(), way.begin(), way.end());
    }
    const uint32_t source = fixed[0] == RIB_ROUTE_SRC_LABEL ? sources.at(0) : 0;
    words all{head[2],  fixed[4], naive_label, fixed[1], fixed[0], source,
              fixed[2], fixed[3], fixed[5],    match[0], match[1], head[0]};
    append_list(all, sources);
    append_list(all, ways);
    return all;
}

/// Adds what a notification tells.
void append_told(std::vector<words> &told, uint32_t opcode, const message &bytes) {
    const bool is_unicast = opcode == RIBKIT_OPCODE_FCURT_NOTE;
    size_t at = is_unicast ? 980 : 16;
    const words head{word_at(bytes, 0), word_at(bytes, 4), word_at(bytes, 8)};
    for (uint32_t left = word_at(bytes, is_unicast ? 16 : 12); left > 0; left--) {
        told.push_back(is_unicast                           ? unicast_note(bytes, at, head)
                       : opcode == RIBKIT_OPCODE_FCMRT_NOTE ? multicast_note(bytes, at, head)
                                                            : label_note(bytes, at, head));
    }
    EXPECT_EQ(at, bytes.size());
}

/// A client of everything, and a listener.
class peer {
  public:
    peer() : handle_(url) { EXPECT_EQ(qip_listen(handle_.number(), &ribkit_listeners_address, 1U << 20), 0); }

    words ask(uint32_t opcode, message request, bool in_envelope) {
        rib_wrap_msg asked{RIB_CLIENT_TEST, 0, opcode, {}, request.data(), static_cast<uint32_t>(request.size())};
        rib_wrap_msg answer{};
        const auto wrapper = in_envelope ? rib_wrap_cmi_req_rsp : rib_wrap_qip_req_rsp;
        EXPECT_EQ(wrapper(handle_.number(), &asked, &answer), RIB_OK);
        const message bytes(answer.payload, answer.payload + answer.payload_size);
        rib_wrap_qip_drop(RIB_CLIENT_TEST, handle_.number(), &answer.ref);
        size_t at = 0;
        return bytes.size() == 20 ? taken(bytes, at, 5) : words{};
    }

    void set_distance(uint32_t client, uint32_t distance) {
        message request;
        append(request, {client, distance});
        request.resize(88);
        request[8] = 'x';
        EXPECT_EQ(ask(RIBKIT_OPCODE_REGISTER, request, false).at(0), RIB_OK);
    }

    /// What was told until now.
    std::vector<words> take_told() {
        std::vector<words> told;
        const qip_recv_opts at_once{{QIP_RECV_INCOMING, 1}};
        for (qip_ref ref{}; qip_recv(handle_.number(), &ref, &at_once) == 0; qip_drop(handle_.number(), &ref)) {
            const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&ref));
            append_told(told, qip_opcode_get(&ref), {bytes, bytes + qip_payload_size(&ref)});
        }
        return told;
    }

  private:
    bus::service_handle handle_;
};

/// What listeners are told of it: routes that have changed as an update of theirs, those of a replay as such.
std::vector<words> for_listeners(const std::vector<words> &told) {
    constexpr uint32_t restored = 1, replayed = 2;
    std::vector<words> all;
    for (const words &one : told) {
        if (one.size() > 2 && one[0] != restored) {
            all.emplace_back(one.begin() + 1, one.end());
            all.back()[0] = one[0] == replayed ? RIB_OPER_REPLAY : RIB_OPER_UPDATE;
        }
    }
    return all;
}

uint32_t opcode_of(size_t table) {
    return table == naive_label       ? RIBKIT_OPCODE_FCLRT_UPDATE
           : table == naive_multicast ? RIBKIT_OPCODE_FCMRT_UPDATE
                                      : RIBKIT_OPCODE_FCURT_UPDATE;
}

TEST(wire_random, the_service_answers_and_tells_what_the_model_does) {
    const std::map<uint32_t, uint32_t> quotas{{RIB_CLIENT_MCAST, 6}, {500, 9}};
    rib_service service(url, {.spaces = {4, 4096, 65536}, .policy = {quotas, {}}, .complaints_to = -1});
    naive_state expected(4, 4096 / position_block, 65536, quotas);
    peer client;
    asker asking(1);
    client.set_distance(listening_client, 0);
    for (uint32_t i = 0; i < rounds && !HasFailure(); i++) {
        const naive_request asked = asking.request();
        if (asking.once_in(40)) {
            const uint32_t uuid = asking.one_of(asker::clients);
            client.set_distance(uuid, i % 3);
            expected.set_distance(uuid, i % 3, 0);
        } else if (can_travel(asked)) {
            words answer = expected.update(asked);
            if (asked.oper == RIB_OPER_VERIFY && answer[0] == RIB_OK) { // there are no modules
                answer[0] = RIB_MISSING_DEVICE;
            }
            EXPECT_EQ(client.ask(opcode_of(asked.table), bytes_of(asked), asked.in_envelope), answer) << i;
        }
    }
    service.stop();
    const auto told = client.take_told();
    const auto changed = for_listeners(expected.take_told());
    const auto [a, b] = std::mismatch(told.begin(), told.end(), changed.begin(), changed.end());
    EXPECT_GT(told.size(), rounds / 4);
    EXPECT_EQ(told.size(), changed.size());
    EXPECT_TRUE(a == told.end() || b == changed.end()) << ::testing::PrintToString(*a) << "\n"
                                                       << ::testing::PrintToString(*b);
}

} // namespace
} // namespace ribkit::rib
