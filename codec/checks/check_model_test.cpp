// Random messages, and golden ones with random damage: the check says what the model says.
#include "codec/message.h"
#include "codec/witness/golden.h"
#include "codec/witness/naive_check.h"
#include "codec/witness/random_messages.h"
#include "rib_codes.h"

#include <gtest/gtest.h>

namespace {

using namespace ribkit::witness;
using ribkit::codec::message;
using ribkit::codec::messages;
using byte_vector = std::vector<uint8_t>;

/// Under emulation (the 32-bit builds) everything is many times slower.
constexpr unsigned scale = RIBKIT_EMULATED ? 1 : 10;

::testing::AssertionResult agrees(const message &c, std::span<const uint8_t> message) {
    const auto size = static_cast<uint32_t>(message.size());
    rib_check_report report{nullptr, nullptr, 0, 0, 0, RIB_CHECK_COUNT};
    const uint32_t found = c.check(message.data(), size, &report);
    const uint32_t wanted = verdict(c.name, message);
    if (found != wanted || (report.message == nullptr) != (found == RIB_OK)) {
        char line[200] = "nothing reported";
        if (report.message != nullptr) {
            rib_check_report_str(&report, line, sizeof line);
        }
        return ::testing::AssertionFailure() << c.name << " of " << size << " bytes: 0x" << std::hex << found
                                             << " instead of 0x" << wanted << "; " << line;
    }
    return ::testing::AssertionSuccess();
}

std::string name_of(const ::testing::TestParamInfo<message> &info) { return std::string(info.param.name); }

class checks : public ::testing::TestWithParam<message> {
  protected:
    std::mt19937 random{17};
    size_t below(size_t limit) { return random() % limit; }

    /// A message of its own size where the bytes make one, at that size and around it.
    void agree_around(byte_vector bytes, unsigned &accepted) {
        const std::optional<size_t> size = message_size(GetParam().name, bytes);
        accepted += size ? 1 : 0;
        const size_t end = size.value_or(below(bytes.size() + 1));
        bytes.resize(std::max(bytes.size(), end + 8));
        for (const size_t n : {end, end + 1, end + 8, end - (end != 0 ? 1 : 0), below(end + 1)}) {
            ASSERT_TRUE(agrees(GetParam(), {bytes.data(), n}));
        }
    }
};

TEST_P(checks, agree_with_the_model_at_random) {
    unsigned accepted = 0;
    for (unsigned round = 0; round < 60 * scale; ++round) {
        ASSERT_NO_FATAL_FAILURE(agree_around(random_message(GetParam().name, order::big, random), accepted));
    }
    EXPECT_TRUE(accepted > 3 * scale || GetParam().name.ends_with("_update")); // whose records are noise here
}

TEST_P(checks, agree_with_the_model_on_damaged_golden_messages) {
    unsigned accepted = 0;
    for (const golden &vector : load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden")) {
        for (unsigned round = 0; vector.message == GetParam().name && round < 20 * scale; ++round) {
            byte_vector message = vector.source(direction::ntoh, order::big);
            for (size_t damage = 1 + below(3); damage != 0; --damage) {
                message[below(message.size())] = static_cast<uint8_t>(below(2) != 0 ? below(6) : random());
            }
            ASSERT_NO_FATAL_FAILURE(agree_around(message, accepted));
        }
    }
    EXPECT_GT(accepted, 0U);
}

INSTANTIATE_TEST_SUITE_P(exported, checks, ::testing::ValuesIn(messages().begin(), messages().end()), name_of);

/// Updates whose records are random messages with their own sizes: as they are, and with one damaged byte.
class updates : public ::testing::Test {
  protected:
    std::mt19937 random{19};

    byte_vector update_of(std::string_view header, size_t size, size_t count_at, std::string_view record) {
        byte_vector message(size);
        const uint32_t n = random() % 12;
        for (uint32_t i = 0; i < n; ++i) {
            byte_vector next = random_message(record, order::big, random);
            const std::optional<size_t> end = message_size(record, next);
            next.resize(end.value_or(next.size()));
            message.insert(message.end(), next.begin(), next.end());
        }
        store_word(order::big, message.data() + count_at, n);
        if (header == "rib_fcurt_update") {
            store_word(order::big, message.data() + 12, random() % 242);
        }
        return message;
    }

    void agree(std::string_view header, size_t size, size_t count_at, std::string_view record) {
        unsigned accepted = 0;
        for (unsigned round = 0; round < 30 * scale; ++round) {
            byte_vector message = update_of(header, size, count_at, record);
            accepted += verdict(header, message) == RIB_OK ? 1 : 0;
            ASSERT_TRUE(agrees(*ribkit::codec::find_message(header), message));
            message[size - 8 + random() % (message.size() - size + 8)] = static_cast<uint8_t>(random() % 5);
            ASSERT_TRUE(agrees(*ribkit::codec::find_message(header), message));
            message.resize(random() % (message.size() + 1));
            ASSERT_TRUE(agrees(*ribkit::codec::find_message(header), message));
        }
        EXPECT_GT(accepted, scale);
    }
};

TEST_F(updates, of_unicast_routes_agree_with_the_model) { agree("rib_fcurt_update", 980, 16, "rib_fcurt"); }
TEST_F(updates, of_multicast_routes_agree_with_the_model) { agree("rib_fcmrt_update", 16, 12, "rib_fcmrt"); }
TEST_F(updates, of_label_routes_agree_with_the_model) { agree("rib_fclrt_update", 16, 12, "rib_fclrt"); }

} // namespace
