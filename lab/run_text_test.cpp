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

} // namespace
} // namespace ribkit::lab
