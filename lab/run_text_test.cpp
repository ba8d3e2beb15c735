// Which lines say that domains are unreachable, and that there are not too many of them.
#include "lab/run_text.h"

#include "lab/files/fabric_file.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

TEST(run_text, few_unreachable_domains_are_named_and_many_are_counted) {
    const fabric f = parse_fabric(R"(
local = "a"
vsan = [{id = 1}, {id = 2}]
switch = [{name = "a", domain = 1}, {name = "b", domain = 20}, {name = "c", domain = 30}, {name = "d", domain = 40}]
)",
                                  "sample");
    const auto text = [&](const std::vector<unreachable_domains> &lost) { return unreachable_text(f, lost); };
    EXPECT_EQ(text({}), "");
    EXPECT_EQ(text({{2, {20}}}), "  domain 20 (b) is unreachable in VSAN 2");
    EXPECT_EQ(text({{1, {20}}, {2, {20, 40}}}), "  domain 20 (b) is unreachable in VSAN 1\n"
                                                "  domain 20 (b) is unreachable in VSAN 2\n"
                                                "  domain 40 (d) is unreachable in VSAN 2");
    EXPECT_EQ(text({{7, {20, 30, 40, 1}}}), "  4 domains are unreachable in VSAN 7");
    EXPECT_EQ(text({{1, {20}}, {2, {20}}, {3, {20}}, {4, {20}}}), "  domain 20 (b) is unreachable in 4 VSANs");
    EXPECT_EQ(text({{1, {20, 30}}, {2, {20, 30}}}), "  2 domains are unreachable in 2 VSANs");
    EXPECT_EQ(text({{1, {20, 30, 40}}, {2, {20, 30}}}), "  3 domains are unreachable in some of 2 VSANs");
}

TEST(run_text, a_link_that_comes_up_may_cost_something_else) {
    const fabric f = parse_fabric(R"(
local = "a"
vsan = [{id = 1}]
switch = [{name = "a", domain = 1}, {name = "b", domain = 20}]
link = [{ends = ["a fc1/1", "b fc1/1"]}]
)",
                                  "sample");
    EXPECT_EQ(event_text(f, {{}, 0, true, 7}), "a fc1/1 - b fc1/1 comes up and costs 7");
    EXPECT_EQ(event_text(f, {{}, 0, {}, 7}), "a fc1/1 - b fc1/1 costs 7");
    EXPECT_EQ(event_text(f, {{}, 0, false, {}}), "a fc1/1 - b fc1/1 goes down");
}

TEST(run_text, a_module_has_a_name_or_none_and_entries_are_counted) {
    const auto text = [](const std::string &name, uint32_t entries) {
        fabric_module module{3};
        module.name = name;
        return module_text(module, {.label = entries});
    };
    EXPECT_EQ(text("", 1), "module 3 has 1 entry");
    EXPECT_EQ(text("left", 2), "module 3 (left) has 2 entries");
}

TEST(run_text, a_summary_tells_what_was_merged_and_refused_and_of_the_rib_where_it_is_at_hand) {
    run_record run;
    run.total.added = 3;
    run.total.messages = 2;
    const std::string plain = summary_text(run, nullptr);
    EXPECT_EQ(plain.substr(0, plain.find(" sent and")), "Summary\n  routes    3 sent: 3 added, 0 deleted, 0 changed\n"
                                                        "  messages  2");
    EXPECT_EQ(plain.find("memory"), std::string::npos);
    EXPECT_NE(plain.find("\n  rate      0 routes a second"), std::string::npos) << "no time has passed";
    run.total.merged = 4;
    run.total.refused = 5;
    run.total.exchanging = std::chrono::seconds(2);
    const std::string more = summary_text(run, nullptr);
    EXPECT_EQ(more.substr(0, more.find(" sent and")),
              "Summary\n  routes    12 sent: 3 added, 0 deleted, 0 changed, 4 merged\n"
              "  refused   5 of the routes sent\n  messages  2");
    EXPECT_NE(more.find("\n  rate      6 routes a second"), std::string::npos);
}

} // namespace
} // namespace ribkit::lab
