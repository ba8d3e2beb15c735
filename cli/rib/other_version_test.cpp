// RIBs of another version: no command sends them anything, and each says which message is in the way.
#include "testing/background_command.h"
#include "testing/other_rib.h"

#include <gtest/gtest.h>
#include <string>

namespace ribkit::cli {
namespace {

class other_version : public ::testing::Test {
  protected:
    [[nodiscard]] testing::outcome run(const std::string &command) const {
        return testing::run_command(command + " --bus " + url + " 2>&1");
    }
    [[nodiscard]] std::string refusal(const std::string &message) const {
        return "ribkit: the RIB at " + url + " has another format of " + message +
               ": it is of another version, and nothing is sent to it\n";
    }
    void expect_refusal(const std::string &command, const std::string &message) const {
        const testing::outcome ended = run(command);
        EXPECT_EQ(ended.output, refusal(message)) << command;
        EXPECT_EQ(ended.exit_code, 1) << command;
    }

    const testing::temporary_directory home;
    const std::string url = "unix:" + home.file("bus");
};

// A client has said whose routes it will bring before it looks for a RIB.
TEST_F(other_version, is_told_nothing_by_clients_and_operators) {
    const testing::other_rib rib(url, testing::formats_but("rib_fcurt_update"));
    for (const char *command :
         {"client --vsan 1 examples/fabrics/small.toml", "status", "routes", "monitor", "show fcu",
          "route add --vsan 1 0x650000/0xff0000 --via fc1/1", "route del --vsan 1 0x650000/0xff0000"}) {
        const testing::outcome ended = run(command);
        EXPECT_TRUE(ended.output.ends_with(refusal("rib_fcurt_update"))) << command << ": " << ended.output;
        EXPECT_EQ(ended.exit_code, 1) << command;
    }
    EXPECT_EQ(rib.told(), 0U);
}

TEST_F(other_version, ends_a_module) {
    const testing::other_rib rib(url, testing::formats_but("fib_fcu_path"));
    const testing::outcome ended = run("module left --number 1");
    EXPECT_EQ(ended.output, "module 1, left, answers at " + url + "\n" + refusal("fib_fcu_path"));
    EXPECT_EQ(ended.exit_code, 1);
    EXPECT_EQ(rib.told(), 0U);
}

TEST_F(other_version, ends_a_module_that_was_there_before_it) {
    testing::background module("module left --number 1 --bus " + url);
    ASSERT_TRUE(testing::in_time([&] { return module.so_far().find("answers at") != std::string::npos; }));
    const testing::other_rib rib(url, testing::formats_but("fib_fcu_path"));
    const testing::outcome ended = module.ended();
    EXPECT_NE(ended.output.find(refusal("fib_fcu_path")), std::string::npos) << ended.output;
    EXPECT_EQ(ended.exit_code, 1);
}

TEST_F(other_version, says_nothing_of_what_a_module_has) {
    const testing::other_rib rib(url, testing::formats_but("fib_fcu_path"));
    expect_refusal("show fcu --module 1", "fib_fcu_path");
    EXPECT_EQ(rib.told(), 0U);
}

TEST_F(other_version, is_no_matter_to_modules_where_only_clients_would_see_it) {
    const testing::other_rib rib(url, testing::formats_but("rib_fcurt_update"));
    testing::background module("module left --number 1 --bus " + url);
    EXPECT_TRUE(testing::in_time([&] { return rib.told() > 0; })) << module.so_far();
    const testing::outcome ended = module.stopped(SIGTERM);
    EXPECT_NE(ended.output.find("left had 0 unicast"), std::string::npos) << ended.output;
    EXPECT_EQ(ended.exit_code, 0);
}

} // namespace
} // namespace ribkit::cli
