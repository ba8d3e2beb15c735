// A RIB with routes of all three tables, for the tests of what an operator asks and changes.
#pragma once

#include "testing/background_command.h"
#include "testing/golden.h"

#include <string>

namespace ribkit::testing {

/// What runs over a bus of its own, in a directory.
class running_rib : public ::testing::Test {
  protected:
    /// Whoever asks from now on has not to wait, and says nothing of waiting.
    running_rib() {
        EXPECT_TRUE(in_time([this] { return rib.so_far().find("the RIB answers at ") != std::string::npos; }));
    }

    /// `ribkit NAME --bus URL ARGUMENTS`
    [[nodiscard]] std::string command(const std::string &name, const std::string &arguments = "") const {
        return name + " --bus " + url + " " + arguments;
    }
    /// Both outputs.
    [[nodiscard]] outcome run(const std::string &name, const std::string &arguments = "") const {
        return run_command(command(name, arguments) + " 2>&1");
    }
    void expect_run(const std::string &name, const std::string &arguments, const std::string &output,
                    int exit_code = 0) const {
        const outcome ended = run(name, arguments);
        EXPECT_EQ(ended.output, output) << name << ' ' << arguments;
        EXPECT_EQ(ended.exit_code, exit_code) << name << ' ' << arguments;
    }
    /// One route at least in each table.
    void add_routes() const {
        for (const char *route : {"--vsan 1 0x650000/0xff0000 --via fc1/1 --domain 101 --cost 500",
                                  "--vsan 1 0x660000/0xff0000 --via fc1/1 --via fc1/2 --cost 750 --volatile",
                                  "--vsan 20 0x650000/0xff0000 --via 'port-channel 3' --direct",
                                  "--vsan 1 --mcast 0xff1234 --via fc1/1 --via fc1/3", "--vsan 1 --mcast 0 --via fc1/2",
                                  "--vsan 1 --label 0x700000/0xff0000 --match 0x64100 --via fc1/2+0x65000+0x66100",
                                  "--vsan 20 --label --source fc1/7 --match 0x10100 --match 0x20100 --via fc1/8"}) {
            EXPECT_EQ(run("route add", route).exit_code, 0) << route;
        }
    }

    temporary_directory home;
    std::string url = "unix:" + home.file("bus");
    background rib{command("rib")};
};

} // namespace ribkit::testing
