// Complaints, and output that waits, when nobody reads them, and after that.
#include "bus/complaints.h"

#include "base/patient_output.h"
#include "testing/alloc_failure.h"
#include "testing/pipe.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace ribkit::bus {
namespace {

using testing::filled_pipe;

/// The counts in lines of the form "ribkit: WHAT: N more".
uint64_t counted(const std::string &text, const std::string &what) {
    uint64_t sum = 0;
    const std::string start = "ribkit: " + what + ": ";
    for (size_t at = text.find(start); at != std::string::npos; at = text.find(start, at + 1)) {
        const std::string line = text.substr(at + start.size(), text.find('\n', at) - at - start.size());
        sum += line.ends_with(" more") ? std::strtoull(line.c_str(), nullptr, 10) : 0;
    }
    return sum;
}

TEST(complaints, are_said_at_once_and_then_counted) {
    const filled_pipe output(false);
    complaints all(output.way_in());
    all.add("the first kind", "its detail");
    EXPECT_EQ(output.read_some(), "ribkit: the first kind: its detail\n");
    all.add("the second\x1b kind", "");
    EXPECT_EQ(output.read_some(), "ribkit: the second\\x1b kind\n");
    for (int i = 0; i < 1000; i++) {
        all.add("the first kind", "another detail");
    }
    all.end();
    const std::string rest = output.read_all();
    EXPECT_EQ(counted(rest, "the first kind"), 1000U) << rest;
    EXPECT_EQ(rest.find("detail"), std::string::npos);
}

TEST(complaints, are_counted_while_they_go_on) {
    const filled_pipe output(false);
    complaints all(output.way_in());
    all.add("kind", "");
    all.add("kind", "");
    EXPECT_EQ(output.read_some(), "ribkit: kind\n");
    EXPECT_EQ(output.read_some(), "ribkit: kind: 1 more\n"); // waits for the second to pass
    all.end();
}

TEST(complaints, of_too_many_kinds_are_counted_together) {
    const filled_pipe output(false);
    complaints all(output.way_in(), false);
    for (int i = 0; i < 300; i++) {
        all.add("kind " + std::to_string(i), "");
    }
    all.end();
    const std::string text = output.read_all();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 257);
    EXPECT_NE(text.find("\nribkit: 44 more of other kinds\n"), std::string::npos);
}

TEST(complaints, wait_for_nobody) {
    const filled_pipe output; // that nobody reads until the end
    complaints all(output.way_in());
    for (int i = 0; i < 100000; i++) {
        all.add("kind " + std::to_string(i % 10), "");
    }
    all.end();
    EXPECT_EQ(output.read_all().find("kind"), std::string::npos);
}

TEST(complaints, are_said_later_where_the_output_is_ready_later) {
    const filled_pipe output;
    complaints all(output.way_in());
    all.add("kind", "detail");
    output.empty();
    all.add("another kind", "");
    all.end();
    const std::string text = output.read_all();
    EXPECT_NE(text.find("kind"), std::string::npos) << text;
}

TEST(complaints, behind_the_end_are_said_at_once_or_not_at_all) {
    const filled_pipe output(false);
    complaints all(output.way_in());
    all.end();
    all.add("kind", "detail");
    all.add("kind", "detail");
    all.end();
    EXPECT_EQ(output.read_all(), "ribkit: kind: detail\n");
}

TEST(complaints, for_which_there_is_no_memory_are_left_out) {
    const filled_pipe output(false);
    const std::string kind = "a kind whose text does not fit into a string's own room";
    const std::string other = "another " + kind;
    complaints all(output.way_in());
    all.add(kind, "");
    EXPECT_EQ(output.read_some(), "ribkit: " + kind + "\n");
    all.add(kind, "");
    {
        const testing::failing_allocation none(1, testing::failing_allocation::how::onwards);
        all.add(other, "");
        all.end();
    }
    EXPECT_EQ(output.read_all(), "");
}

TEST(complaints, outlive_their_reader) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    base::ignore_gone_readers(); // of this thread
    complaints all(ends[1]);
    all.add("kind", "");
    all.add("kind", "");
    all.end();
    close(ends[1]);
}

TEST(patient_output, passes_everything_on) {
    const filled_pipe output(false);
    std::fflush(stdout); // what the test framework has said belongs elsewhere
    const int before = dup(STDOUT_FILENO);
    dup2(output.way_in(), STDOUT_FILENO);
    {
        const base::patient_output patient(STDOUT_FILENO);
        std::printf("first\nsecond without an end");
    }
    dup2(before, STDOUT_FILENO);
    close(before);
    EXPECT_EQ(output.read_all(), "first\nsecond without an end");
}

// More than the pipe and the memory hold: whoever prints goes on, and the loss is told where it was.
TEST(patient_output, loses_whole_lines_that_nobody_reads) {
    constexpr int lines = 40000;
    const std::string text(90, 'x');
    const filled_pipe output(false);
    std::fflush(stdout); // what the test framework has said belongs elsewhere
    const int before = dup(STDOUT_FILENO);
    dup2(output.way_in(), STDOUT_FILENO);
    {
        const base::patient_output patient(STDOUT_FILENO);
        for (int i = 0; i < lines; i++) {
            std::printf("%05d %s\n", i, text.c_str());
        }
    }
    dup2(before, STDOUT_FILENO);
    close(before);
    const std::string got = output.read_all();
    ASSERT_GE(got.size(), 4096U);
    for (size_t at = 0; at + 97 <= got.size(); at += 97) {
        ASSERT_EQ(got.substr(at, 97), std::to_string(100000 + at / 97).substr(1) + ' ' + text + '\n');
    }
}

} // namespace
} // namespace ribkit::bus
