// Every request that the RIB takes, damaged: cut behind each of its bytes, and with each of its words another number.
// Whatever comes is answered, with what the request's row has or with the response that says why not.
#include "codec/bytes.h"
#include "codec/size.h"
#include "fuzz/quiet.h"
#include "fuzz/sound_requests.h"
#include "protocol/fib/fib_records.h"
#include "protocol/requests.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace ribkit::fuzz {
namespace {

constexpr const char *bus = "local:damaged_requests";

bool is_right(const protocol::request_row &row, const byte_vector &answer) {
    return is_refusal(answer) || kind_of(answer, row.answer) != nullptr;
}

/// The result code of a refusal; RIB_OK where the answer is none.
uint32_t refusal_in(const byte_vector &answer) {
    return is_refusal(answer) ? codec::load32<std::endian::big>(answer.data()) : RIB_OK;
}

std::string shown(const protocol::request_row &row, size_t at) {
    std::ostringstream text;
    text << row.name << " at " << at;
    return text.str();
}

class damaged_requests : public ::testing::Test {
  protected:
    quiet silence{stderr};
    rib::rib_service service{bus};
    requester asking{bus};
    const std::vector<sound_request> requests = sound_requests();
};

TEST_F(damaged_requests, there_is_a_sound_one_of_every_kind) {
    std::set<uint32_t> tried{RIBKIT_OPCODE_PROBE, RIBKIT_OPCODE_CLAIM, RIBKIT_OPCODE_WIRE_DIGESTS};
    for (const auto &[opcode, bytes] : requests) {
        const auto *row = protocol::find_request(opcode);
        ASSERT_NE(row, nullptr);
        const byte_vector answer = asking.ask(opcode, bytes);
        EXPECT_TRUE(is_right(*row, answer)) << row->name;
        const bool is_about_modules = opcode == RIBKIT_OPCODE_NODE_QUERY || opcode == RIBKIT_OPCODE_VERIFY;
        EXPECT_EQ(is_refusal(answer), is_about_modules) << row->name; // there are none
        EXPECT_EQ(asking.ask(opcode, bytes, true).size(), answer.size()) << row->name;
        tried.insert(opcode);
    }
    for (const protocol::request_row &row : protocol::requests) {
        EXPECT_TRUE(row.to != protocol::destination_of::rib || tried.contains(row.opcode)) << row.name;
    }
}

TEST_F(damaged_requests, cut_behind_any_byte_are_refused) {
    for (const auto &[opcode, bytes] : requests) {
        for (size_t size = 0; size < bytes.size(); size++) {
            const byte_vector cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
            for (const bool in_envelope : {false, true}) {
                ASSERT_EQ(refusal_in(asking.ask(opcode, cut, in_envelope)), RIB_BAD_PARAMETERS)
                    << shown(*protocol::find_request(opcode), size);
            }
        }
    }
}

TEST_F(damaged_requests, with_bytes_behind_their_end_are_refused) {
    for (const auto &[opcode, bytes] : requests) {
        byte_vector longer = bytes;
        longer.push_back(0);
        EXPECT_EQ(refusal_in(asking.ask(opcode, longer)), RIB_EXCESS_DATA)
            << shown(*protocol::find_request(opcode), bytes.size());
    }
}

TEST_F(damaged_requests, with_any_word_another_number_are_answered) {
    for (const auto &[opcode, bytes] : requests) {
        const auto &row = *protocol::find_request(opcode);
        for (size_t at = 0; at + sizeof(uint32_t) <= bytes.size(); at += sizeof(uint32_t)) {
            for (const uint32_t number : {0U, 17U, 0xffffU, 0x7fffffffU, 0x80000000U, UINT32_MAX}) {
                byte_vector damaged = bytes;
                codec::store32<std::endian::big>(damaged.data() + at, number);
                const byte_vector answer = asking.ask(opcode, damaged);
                ASSERT_TRUE(is_right(row, answer)) << shown(row, at) << ": " << number << ", " << answer.size();
            }
        }
    }
}

/// Sets every count of a message to more than it has, one after the other, and of the first entry of each of its lists.
template <class Try>
void with_counts_too_large(const codec::layout &l, byte_vector &bytes, size_t at, const Try &attempt) {
    for (const codec::row &r : l) {
        if (!codec::is_list(r) || r.count.where == codec::count_in::constant) {
            continue;
        }
        const uint32_t count = codec::read_count<std::endian::big>(r.count, bytes.data() + at);
        uint8_t *word = bytes.data() + at + r.count.at;
        const uint32_t right = codec::load32<std::endian::big>(word);
        const bool in_byte = r.count.where == codec::count_in::second_byte;
        for (const uint32_t more : {0xff0000U, in_byte ? right | 0x800000 : UINT32_MAX, 0x00fe0000U}) {
            codec::store32<std::endian::big>(word, more);
            attempt(at + r.count.at);
        }
        codec::store32<std::endian::big>(word, right);
        if (count != 0) {
            with_counts_too_large(*r.entry, bytes, at + r.offset, attempt);
        }
    }
}

TEST_F(damaged_requests, with_any_count_too_large_are_refused) {
    size_t tried = 0;
    for (const auto &[opcode, bytes] : requests) {
        const auto &row = *protocol::find_request(opcode);
        const codec::message *kind = codec::find_message(row.message);
        if (kind == nullptr) {
            continue;
        }
        byte_vector damaged = bytes;
        with_counts_too_large(*kind->wire, damaged, 0, [&, opcode = opcode](size_t at) {
            EXPECT_EQ(refusal_in(asking.ask(opcode, damaged)), RIB_BAD_PARAMETERS) << shown(row, at);
            tried++;
        });
    }
    EXPECT_GE(tried, 3U * 14U);
}

TEST_F(damaged_requests, that_tell_of_a_module_are_answered) {
    model::module_node node{.address = 1, .state = model::fib_state::ready, .instance = 7};
    node.ports.resize(2);
    const byte_vector sound = protocol::module_message(node);
    for (size_t size = 0; size < sound.size(); size++) {
        const byte_vector cut(sound.begin(), sound.begin() + static_cast<ptrdiff_t>(size));
        ASSERT_EQ(refusal_in(asking.ask(RIBKIT_OPCODE_FIB_NODE, cut)), RIB_BAD_PARAMETERS) << size;
    }
    for (size_t at = 0; at + sizeof(uint32_t) <= sound.size(); at += sizeof(uint32_t)) {
        for (const uint32_t number : {0U, 17U, 0x7fffffffU, UINT32_MAX}) {
            byte_vector damaged = sound;
            codec::store32<std::endian::big>(damaged.data() + at, number);
            ASSERT_EQ(asking.ask(RIBKIT_OPCODE_FIB_NODE, damaged).size(), RIBKIT_FCURT_RSP_SIZE) << at << ' ' << number;
        }
    }
}

TEST_F(damaged_requests, of_a_claim_or_of_no_kind_are_refused) {
    for (uint32_t opcode = 0; opcode < 0x400; opcode++) {
        const auto *row = protocol::find_request(opcode);
        const bool is_claim = opcode == RIBKIT_OPCODE_CLAIM;
        if (opcode == RIB_CMI_OPCODE || (row != nullptr && row->message[0] != '\0')) {
            continue;
        }
        for (const size_t size : {size_t{0}, size_t{1}, size_t{RIBKIT_CLAIM_SIZE - 1}, size_t{RIBKIT_CLAIM_SIZE}}) {
            const byte_vector answer = asking.ask(opcode, byte_vector(size));
            const bool asks_formats = opcode == RIBKIT_OPCODE_WIRE_DIGESTS && size == 0;
            ASSERT_TRUE(asks_formats != is_refusal(answer) || (is_claim && answer.size() == RIBKIT_CLAIM_SIZE))
                << opcode;
        }
    }
}

} // namespace
} // namespace ribkit::fuzz
