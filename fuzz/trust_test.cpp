// What a check accepts is opened between inaccessible pages: a byte outside the message is a fault. Golden messages,
// all their truncations, their counts at every edge, and random damage.
#include "codec/witness/naive_check.h"
#include "codec/witness/random_messages.h"
#include "fuzz/openers.h"
#include "fuzz/quiet.h"
#include "fuzz/seeds.h"
#include "testing/guarded.h"

#include <gtest/gtest.h>
#include <set>

namespace {

using namespace ribkit::fuzz;
using ribkit::testing::guarded;

/// Under emulation (the 32-bit builds) everything is many times slower.
constexpr size_t scale = RIBKIT_EMULATED ? 1 : 10;

/// @return whether the bytes were accepted; then they have been opened
bool tried(const opener &how, std::span<const uint8_t> bytes) {
    const auto size = static_cast<uint32_t>(bytes.size());
    bool accepted = false;
    for (const auto edge : {guarded::edge::after, guarded::edge::before}) {
        const guarded message(bytes, edge);
        rib_check_report report{};
        accepted = how.check(message.data(), size, &report) == 0;
        EXPECT_EQ(how.check(message.data(), size, nullptr) == 0, accepted) << how.name;
        if (accepted) {
            const guarded scratch(bytes, edge);
            open(how, {message.data(), scratch.data(), size});
            EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), message.data())) << how.name;
        }
    }
    return accepted;
}

class trust : public ::testing::Test {
  protected:
    std::mt19937 random{23};
    const std::vector<sample> all = samples();
    const quiet silence;

    size_t below(size_t limit) { return random() % limit; }
    static const opener &opener_of(const sample &s) { return openers()[s.opener]; }
};

TEST_F(trust, has_a_sample_of_everything_that_is_received) {
    std::set<size_t> sampled;
    for (const sample &s : all) {
        sampled.insert(s.opener);
    }
    EXPECT_EQ(sampled.size(), openers().size());
}

TEST_F(trust, golden_messages_and_all_their_truncations) {
    for (const sample &s : all) {
        EXPECT_TRUE(tried(opener_of(s), s.message)) << s.name;
        for (size_t size = 0; size < s.message.size(); size += 1 + size / (40 * scale)) {
            EXPECT_FALSE(tried(opener_of(s), {s.message.data(), size})) << s.name << ' ' << size;
        }
        byte_vector longer = s.message;
        longer.resize(longer.size() + 1);
        EXPECT_FALSE(tried(opener_of(s), longer)) << s.name;
    }
}

/// Every word of the message's beginning and some behind, whether it is a count or not.
TEST_F(trust, numbers_at_the_edges_of_what_they_may_be) {
    for (const sample &s : all) {
        for (size_t at = 0; at + 4 <= s.message.size() && at < 48 * scale; at += 4) {
            for (const uint32_t value : {0U, 1U, 2U, 3U, 4U, 16U, 17U, 240U, 241U, 0x00040000U, 0x00ff0000U,
                                         0x20000000U, 0x40000000U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
                byte_vector message = s.message;
                ribkit::witness::store_word(ribkit::witness::order::big, message.data() + at, value);
                tried(opener_of(s), message);
            }
        }
    }
}

TEST_F(trust, random_damage) {
    for (const sample &s : all) {
        for (size_t round = 0; round < 10 * scale; ++round) {
            byte_vector message = s.message;
            for (size_t damage = 1 + below(4); damage != 0; --damage) {
                message[below(std::min<size_t>(message.size(), below(2) != 0 ? 64 : SIZE_MAX))] =
                    static_cast<uint8_t>(below(2) != 0 ? below(6) : random());
            }
            // A damaged count asks for another size: try that one too, with whatever is there.
            const bool message_of_codec = ribkit::witness::find_pair(s.name) != nullptr;
            byte_vector room = message;
            room.resize(message.size() + 512, static_cast<uint8_t>(random()));
            const auto size = message_of_codec ? ribkit::witness::message_size(s.name, room) : std::nullopt;
            tried(opener_of(s), message);
            tried(opener_of(s), {room.data(), size.value_or(message.size())});
        }
    }
}

TEST_F(trust, random_messages) {
    unsigned accepted = 0;
    for (const opener &how : openers()) {
        for (unsigned round = 0; ribkit::witness::find_pair(how.name) != nullptr && round < 10 * scale; ++round) {
            byte_vector message = ribkit::witness::random_message(how.name, ribkit::witness::order::big, random);
            message.resize(ribkit::witness::message_size(how.name, message).value_or(message.size()));
            accepted += tried(how, message) ? 1 : 0;
        }
    }
    EXPECT_GT(accepted, 300 * scale);
}

} // namespace
