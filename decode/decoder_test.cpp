// What is shown of damaged messages: of bytes cut anywhere and changed anywhere, with nothing readable behind them.
#include "decode/decoder.h"

#include "testing/guarded.h"

#include <gtest/gtest.h>
#include <random>

namespace ribkit::decode {
namespace {

struct shown {
    std::string text;
    size_t taken;
    std::optional<refusal> refused;
};

shown show(const kind &what, std::span<const uint8_t> bytes, const kind *carried = nullptr, bool more = false) {
    const testing::guarded copy{bytes};
    shown result{};
    output out([&](std::string_view piece) { result.text += piece; });
    text_writer text(out, false);
    decoder messages(what, carried, &text, nullptr);
    result.taken = messages.take(copy.bytes(), more);
    result.refused = messages.refused();
    out.flush();
    return result;
}

size_t lines_of(const std::string &text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

} // namespace

TEST(decoder, shows_no_more_of_a_shorter_message) {
    for (const kind &what : kinds()) {
        const std::vector<uint8_t> whole = empty_message(what);
        const std::string all = show(what, whole).text;
        for (size_t size = whole.size(); size-- > 1;) {
            const shown cut = show(what, std::span(whole).first(size));
            ASSERT_TRUE(cut.refused) << what.name << ' ' << size;
            ASSERT_EQ(cut.text, all.substr(0, cut.text.size())) << what.name << ' ' << size;
            ASSERT_LE(cut.text.size(), all.size());
            ASSERT_EQ(cut.taken, 0U);
        }
        if (what.wire->begin()->kind == codec::row_kind::words) {
            EXPECT_EQ(lines_of(show(what, std::span(whole).first(3)).text), 1U) << what.name;
        }
    }
}

TEST(decoder, waits_where_more_may_come) {
    for (const kind &what : kinds()) {
        const std::vector<uint8_t> whole = empty_message(what);
        for (size_t size = 0; size < whole.size(); ++size) {
            const shown part = show(what, std::span(whole).first(size), nullptr, true);
            ASSERT_EQ(part.text, "") << what.name << ' ' << size;
            ASSERT_FALSE(part.refused);
        }
        EXPECT_EQ(show(what, whole, nullptr, true).taken, whole.size());
    }
}

TEST(decoder, touches_nothing_outside_of_damaged_bytes) {
    std::mt19937 random(5);
    size_t refused = 0;
    for (int i = 0; i < 5000; ++i) {
        const kind &what = kinds()[random() % kinds().size()];
        std::vector<uint8_t> bytes = empty_message(what);
        for (uint32_t changes = 1 + random() % 4; changes != 0; --changes) {
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random() % 2 == 0 ? random() : random() % 4);
        }
        bytes.resize(1 + random() % bytes.size());
        refused += show(what, bytes).refused ? 1 : 0;
        show(what, bytes, find_kind("rib_fclrt_update"));
    }
    EXPECT_GT(refused, 1000U);
}

TEST(decoder, tells_which_message_of_a_run_is_refused_and_where_it_begins) {
    const kind &what = *find_kind("fib_vsan");
    const std::vector<uint8_t> bytes(20);
    const shown run = show(what, bytes);
    ASSERT_TRUE(run.refused);
    EXPECT_EQ(run.taken, 16U);
    EXPECT_EQ(run.refused->number, 3U);
    EXPECT_EQ(run.refused->offset, 16U);
    EXPECT_EQ(run.refused->report.offset, 4U);
}

TEST(decoder, tells_of_what_an_envelope_carries_where_it_is_refused) {
    const kind &what = *find_kind("rib_cmi_answer");
    const kind &carried = *find_kind("rib_mcast_route");
    std::vector<uint8_t> bytes = empty_message(what);
    bytes.resize(bytes.size() + 20);
    bytes[7] = 20;
    const size_t head = bytes.size() - 20;
    bytes.back() = 1;
    const shown counted = show(what, bytes, &carried);
    ASSERT_TRUE(counted.refused);
    EXPECT_EQ(counted.refused->report.offset, head + 16);
    EXPECT_EQ(counted.refused->report.found, 1U) << "a count is no place";
    bytes.resize(head + 19);
    bytes[7] = 19;
    const shown cut = show(what, bytes, &carried);
    ASSERT_TRUE(cut.refused);
    EXPECT_EQ(cut.refused->report.allowed, head + 19) << report_text(cut.refused->report);
}

TEST(decoder, waits_no_longer_than_a_message_can_be) {
    std::vector<uint8_t> bytes(largest_message + 1);
    std::fill_n(bytes.begin(), 4, uint8_t{0xff}); // entries without end
    decoder messages(*find_kind("rib_dm_info"), nullptr, nullptr, nullptr);
    EXPECT_EQ(messages.take(std::span(bytes).first(largest_message), true), 0U);
    EXPECT_FALSE(messages.refused());
    EXPECT_EQ(messages.take(bytes, true), 0U);
    EXPECT_TRUE(messages.refused());
}

TEST(kinds, are_named_as_they_are_asked_for) {
    const auto whole = kind_names("rib_fcurt");
    EXPECT_EQ(std::count(whole.begin(), whole.end(), "rib_fcurt_update"), 1);
    const auto short_ones = kind_names("fcurt");
    EXPECT_EQ(std::count(short_ones.begin(), short_ones.end(), "fcurt_update"), 1);
    EXPECT_EQ(std::count(short_ones.begin(), short_ones.end(), "rib_fcurt_update"), 0);
}

TEST(decoder, counts_that_say_everything_end_with_the_bytes) {
    const std::vector<uint8_t> bytes(2000, 0xff);
    for (const kind &what : kinds()) {
        EXPECT_LT(lines_of(show(what, bytes).text), 4000U) << what.name;
    }
}

} // namespace ribkit::decode
