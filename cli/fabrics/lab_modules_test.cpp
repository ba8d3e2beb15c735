// The lab with modules: what becomes of them, what their RIB's clients are told, what is displayed.
#include "testing/golden.h"
#include "testing/run_command.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace ribkit::cli {
namespace {

constexpr const char *small = "examples/fabrics/small.toml";

/// The sample fabric, and more.
class fabric_with {
  public:
    explicit fabric_with(const std::string &more) : file_(testing::file_content(small) + more) {}

    [[nodiscard]] testing::outcome run(const std::string &options, const std::string &redirection = " 2>&1") const {
        return testing::run_command("lab " + options + " " + file_.path() + redirection);
    }

  private:
    testing::input_file file_;
};

std::string event(const std::string &what) { return "[[event]]\nat = \"9s\"\n" + what + "\n"; }

/// What is said from 9 seconds on, before the summary.
std::string since_nine(const std::string &output) {
    const size_t at = output.find("at 9s");
    return output.substr(at, output.find("\nSummary") - at);
}

TEST(lab_modules, one_that_leaves_has_nothing_and_returns_empty) {
    const fabric_with gone(event("module = \"left\"\nstate = \"down\""));
    const auto without = gone.run("--tables none");
    EXPECT_EQ(without.exit_code, 0);
    EXPECT_EQ(since_nine(without.output), "at 9s: module 1 (left) goes down\n  no route changed\n");
    EXPECT_NE(without.output.find("  hardware  module 1 (left) has 0 of 19 routes; it is gone\n"
                                  "            module 2 (right) has 19 of 19 routes\n"),
              std::string::npos)
        << without.output;
    const fabric_with back(event("module = 1\nstate = \"down\"") + event("module = 1\nstate = \"up\""));
    EXPECT_EQ(since_nine(back.run("--tables none").output),
              "at 9s: module 1 (left) goes down\nat 9s: module 1 (left) comes up\n"
              "  module 1 (left) has 19 entries\n  no route changed\n");
}

TEST(lab_modules, the_client_hears_of_one_that_is_full) {
    const fabric_with full(event("module = \"right\"\nstate = \"restarting\"\nroom = { unicast = 16 }") +
                           event("static = \"over-core-2\"\nstate = \"down\"") +
                           "[[static]]\nname = \"one-more\"\nfcid = 0x040000\nvia = \"edge-1 fc1/2\"\n"
                           "state = \"down\"\n" +
                           event("static = \"one-more\"\nstate = \"up\""));
    const auto run = full.run("--tables none");
    EXPECT_NE(run.output.find("ribkit: the RIB's answer for vsan 1 is \"hw tcam/ssram full\""), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("at 9s: module 2 (right) starts again, with room for 16 unicast entries\n"
                              "  module 2 (right) has 19 entries\n"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("  hardware  module 1 (left) has 20 of 20 routes\n"
                              "            module 2 (right) has 19 of 20 routes\n"),
              std::string::npos)
        << run.output;
}

TEST(lab_modules, the_client_hears_of_one_that_is_upgrading_and_it_catches_up) {
    const std::string link = "link = \"edge-1 fc1/2\"\nstate = ";
    const fabric_with upgrade(event("module = \"left\"\nstate = \"upgrading\"") + event(link + "\"down\"") +
                              "[[event]]\nat = \"10s\"\nmodule = \"left\"\nstate = \"up\"\n");
    const auto run = upgrade.run("--tables none --role fspf");
    EXPECT_NE(run.output.find("ribkit: the RIB's answer for vsan 1 is \"lc upgrading\""), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("at 10s: module 1 (left) comes up\n  module 1 (left) has 8 entries\n"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("  hardware  module 1 (left) has 8 of 8 routes\n"), std::string::npos) << run.output;
}

TEST(lab_modules, the_same_tables_are_displayed_once) {
    const auto count = [](const std::string &text, const std::string &what) {
        size_t found = 0;
        for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
            found++;
        }
        return found;
    };
    const std::string same = testing::run_command(std::string("lab ") + small).output;
    EXPECT_EQ(count(same, "\nrib  "), 19U);
    EXPECT_NE(same.find("\nThe tables of module 2 (right): the same as of module 1\n"), std::string::npos);
    EXPECT_EQ(count(testing::run_command(std::string("lab --tables 20 ") + small).output, "\nrib  "), 9U);
    EXPECT_EQ(count(testing::run_command(std::string("lab --tables none ") + small).output, "The tables of"), 0U);
    const fabric_with other(event("module = 2\nstate = \"restarting\"\nroom = { unicast = 0 }"));
    const std::string apart = other.run("", " 2>/dev/null").output;
    EXPECT_EQ(count(apart, "\nrib  "), 19U + 3U);
    EXPECT_NE(apart.find("\nThe tables of module 2 (right)\n\nService "), std::string::npos);
}

TEST(lab_modules, json_tells_what_happens_to_whatever_is_declared) {
    const fabric_with all(event("static = \"over-core-2\"\nstate = \"down\"") +
                          event("group = \"video\"\nleave = \"edge-2 fc1/10\"\njoin = \"edge-2 fc1/12\"") +
                          event("label = \"copies\"\nto = \"edge-2 fc1/9\"") +
                          event("client = \"fspf\"\ndistance = 90"));
    const auto json = nlohmann::json::parse(all.run("--json", " 2>/dev/null").output);
    EXPECT_EQ(json["steps"].back()["events"],
              nlohmann::json({{{"static", "over-core-2"}, {"state", "down"}},
                              {{"group", "video"}, {"leave", "edge-2 fc1/10"}, {"join", "edge-2 fc1/12"}},
                              {{"label", "copies"}, {"to", "edge-2 fc1/9"}},
                              {{"client", 12}, {"distance", 90}}}));
}

TEST(lab_modules, json_tells_what_became_of_them_and_what_they_have) {
    const fabric_with full(event("module = 2\nstate = \"restarting\"\nroom = { unicast = 6 }") +
                           event("module = 1\nstate = \"down\""));
    const auto json = nlohmann::json::parse(full.run("--json", " 2>/dev/null").output);
    const auto &last = json["steps"].back();
    EXPECT_EQ(last["events"][0], nlohmann::json({{"module", 2}, {"state", "restarting"}, {"room", {{"unicast", 6}}}}));
    EXPECT_EQ(last["events"][1], nlohmann::json({{"module", 1}, {"state", "down"}}));
    ASSERT_EQ(last["modules"].size(), 2U);
    EXPECT_EQ(last["modules"][0]["unicast"], 6);
    EXPECT_EQ(last["modules"][1]["state"], "exited");
    ASSERT_EQ(json["modules"].size(), 2U);
    const auto &left = json["modules"][0];
    EXPECT_EQ(left["name"], "left");
    EXPECT_EQ(left["routes_right"], 0);
    const auto &right = json["modules"][1];
    EXPECT_EQ(right["state"], "active");
    EXPECT_EQ(right["unicast"], 6);
    EXPECT_EQ(right["multicast"], 2);
    EXPECT_EQ(right["label"], 1);
    EXPECT_EQ(right["routes_right"], 9);
    EXPECT_EQ(right["routes_wanted"], 19);
    EXPECT_EQ(right["entries_extra"], 0);
}

} // namespace
} // namespace ribkit::cli
