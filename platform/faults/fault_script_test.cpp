// What a fault script says, and how its rules count.
#include "platform/faults/fault_script.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace ribkit::platform {

namespace {

std::string parsed(const std::string &text) {
    fault_script script;
    return script.parse(text);
}

TEST(fault_script_text, is_accepted) {
    EXPECT_EQ(parsed(""), "");
    EXPECT_EQ(parsed("# comment\n\n  seed 7  # and another\nclock virtual\n"), "");
    EXPECT_EQ(parsed("fail send 3 ETIMEDOUT\nfail recv every 2 5\nfail drop one-in 10 EBADF"), "");
    EXPECT_EQ(parsed("drop 1\ndelay every 3 250\nduplicate 2\nreorder one-in 4\ntruncate 5 0"), "");
}

TEST(fault_script_text, of_the_example_is_accepted) {
    std::ifstream stream{RIBKIT_SOURCE_DIR "/examples/faults/bad_day.faults"};
    const std::string text{std::istreambuf_iterator<char>{stream}, {}};
    EXPECT_NE(text, "");
    EXPECT_EQ(parsed(text), "");
}

TEST(fault_script_text, is_refused_with_its_line) {
    const std::pair<const char *, const char *> rows[] = {
        {"seed 1\nfly 3", "2: no such event: fly"},
        {"seed", "1: seed takes one number"},
        {"seed x", "1: seed takes one number"},
        {"clock real", "1: no such event: clock"},
        {"fail", "1: no such call: "},
        {"fail fly 1 EIO", "1: no such call: fly"},
        {"fail send EIO", "1: a count from 1 is missing"},
        {"fail send 1", "1: an errno is missing"},
        {"fail send 1 EFLY", "1: an errno is missing"},
        {"fail send 1 0", "1: an errno is missing"},
        {"drop", "1: a count from 1 is missing"},
        {"drop 0", "1: a count from 1 is missing"},
        {"drop -1", "1: a count from 1 is missing"},
        {"drop 4294967296", "1: a count from 1 is missing"},
        {"drop every", "1: a count from 1 is missing"},
        {"drop 1 2", "1: too many words"},
        {"\n\ndelay 1", "3: milliseconds is missing"},
        {"truncate one-in 2 x", "1: bytes is missing"},
    };
    for (const auto &[text, wrong] : rows) {
        EXPECT_EQ(parsed(text), wrong) << text;
    }
}

TEST(fault_script_text, counts) {
    fault_script script;
    ASSERT_EQ(script.parse("fail send 2 EIO\nfail send every 3 EAGAIN\nfail send 3 EPIPE\nfail recv 1 EBADF\ndrop "
                           "2\ntruncate every 2 9"),
              "");
    std::vector<int> failures(6);
    for (int &one : failures) {
        one = script.failure_of(service_call::send);
    }
    EXPECT_EQ(failures, (std::vector<int>{0, EIO, EAGAIN, 0, 0, EAGAIN}));
    EXPECT_EQ(script.failure_of(service_call::recv), EBADF);
    EXPECT_EQ(script.failure_of(service_call::recv), 0);
    EXPECT_FALSE(script.next_message().lost);
    const disturbance second = script.next_message();
    EXPECT_TRUE(second.lost);
    EXPECT_EQ(second.most_bytes, 9U);
    EXPECT_EQ(script.next_message().most_bytes, UINT32_MAX);
}

std::string losses(const std::string &seed) {
    fault_script script;
    EXPECT_EQ(script.parse("seed " + seed + "\ndrop one-in 4"), "");
    std::string text;
    for (int message = 0; message < 400; ++message) {
        text += script.next_message().lost ? 'x' : '.';
    }
    return text;
}

TEST(fault_script_text, one_seed_is_one_sequence) {
    const std::string text = losses("5");
    EXPECT_EQ(losses("5"), text);
    EXPECT_NE(losses("6"), text);
    const auto lost = std::count(text.begin(), text.end(), 'x');
    EXPECT_GT(lost, 60);
    EXPECT_LT(lost, 140);
}

} // namespace

} // namespace ribkit::platform
