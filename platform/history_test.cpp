// The debug history: what is kept when it is full, and how events are printed.
#include "platform/service_fixture.h"
#include "testing/capture.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace ribkit::platform {

namespace {

using ribkit::testing::printed_by;

struct text_record {
    uint32_t subtype;
    char text[32];
};

void record(uint32_t subtype, const char *text) {
    text_record one{subtype, {}};
    std::strcpy(one.text, text);
    yelk_hist_event(0x730000, static_cast<uint32_t>(std::strlen(text)) + 5, &one);
}

/// The printed history without the events' ages.
std::string printed_history() {
    std::string text = printed_by(yelk_hist_print);
    std::string without;
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find('\n', start) + 1;
        without += text.substr(start, 7) + text.substr(start + 18, end - start - 18);
        start = end;
    }
    return without;
}

class history : public ::testing::Test {
  protected:
    void SetUp() override { yelk_hist_clear(); }
    void TearDown() override { yelk_hist_clear(); }
};

TEST_F(history, tells_events_in_order) {
    yelk_hist_qip_event(YELK_QIP_SENT, nullptr, 0, 0);
    record(100, "a line\n");
    yelk_hist_qip_event(YELK_QIP_RECEIVED, nullptr, 0, 0);
    yelk_hist_qip_event(9, nullptr, 0, 0);
    const uint32_t subtype = 7;
    yelk_hist_event(0x10, sizeof subtype, &subtype);
    EXPECT_EQ(printed_history(), "     1 sent\n"
                                 "     2 event 0x730000 subtype 100: a line\n"
                                 "     3 received\n"
                                 "     4 message event\n"
                                 "     5 event 0x10 subtype 7\n");
}

TEST_F(history, names_what_a_reference_holds) {
    uint32_t handle = 0;
    ASSERT_EQ(qip_open("local:history", &handle), 0);
    ASSERT_EQ(qip_listen(handle, &rib, 1), 0);
    qip_ref sent{};
    ASSERT_EQ(send_text(handle, "twelve bytes", &sent), 0);
    yelk_hist_qip_event(YELK_QIP_SENT, &sent, 0, 0);
    qip_drop(handle, &sent);
    yelk_hist_qip_event(YELK_QIP_SENT, &sent, 0, 0);
    qip_ref received{};
    ASSERT_EQ(qip_recv(handle, &received, nullptr), 0);
    yelk_hist_qip_event(YELK_QIP_RECEIVED, &received, 0, 0);
    qip_drop(handle, &received);
    qip_close(handle);
    EXPECT_EQ(printed_history(), "     1 sent token 1 size 12\n"
                                 "     2 sent\n"
                                 "     3 received token 1 size 12\n");
}

TEST_F(history, keeps_the_latest) {
    for (int count = 0; count < 1030; ++count) {
        record(1, std::to_string(count).c_str());
    }
    const std::string text = printed_history();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1024);
    EXPECT_EQ(text.substr(0, text.find('\n')), "     7 event 0x730000 subtype 1: 6");
    EXPECT_NE(text.find("  1030 event 0x730000 subtype 1: 1029\n"), std::string::npos);
}

TEST_F(history, subtypes_can_be_switched_off) {
    EXPECT_EQ(yelk_hist_event_subtype_check(0x730000, 100), 0);
    yelk_hist_subtype_set(0x730000, 100, 0);
    EXPECT_NE(yelk_hist_event_subtype_check(0x730000, 100), 0);
    EXPECT_EQ(yelk_hist_event_subtype_check(0x730000, 101), 0);
    record(100, "ignored");
    record(101, "kept");
    yelk_hist_subtype_set(0x730000, 100, 1);
    EXPECT_EQ(yelk_hist_event_subtype_check(0x730000, 100), 0);
    EXPECT_EQ(printed_history(), "     1 event 0x730000 subtype 101: kept\n");
}

TEST_F(history, is_told_by_many_threads) {
    std::vector<std::thread> telling;
    telling.reserve(4);
    for (int number = 0; number < 4; ++number) {
        telling.emplace_back([] {
            for (int count = 0; count < 200; ++count) {
                record(1, "one of many");
            }
        });
    }
    for (std::thread &one : telling) {
        one.join();
    }
    const std::string text = printed_history();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 800);
}

TEST(debug_output, up_to_a_level) {
    EXPECT_EQ(yelk_chk_int(1, 0, 0, 1), 0);
    EXPECT_EQ(yelk_chk_int(0, 0, 0, 1), 0);
    yelk_dbg_level_set(100);
    EXPECT_NE(yelk_chk_int(100, 0, 0, 1), 0);
    EXPECT_EQ(yelk_chk_int(101, 0, 0, 1), 0);
    EXPECT_EQ(yelk_chk_int(0, 0, 0, 1), 0);
    yelk_dbg_level_set(0);
    EXPECT_EQ(printed_by([] { yapout(1, yelk_dbg_modname, 0, "%s %#x\n", "text", 255U); }), "ribkit: text 0xff\n");
}

} // namespace

} // namespace ribkit::platform
