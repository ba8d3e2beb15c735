// The routes of small fabrics whose paths can be seen by eye.
#include "lab/fspf.h"

#include "base/text.h"
#include "lab/files/fabric_file.h"
#include "rib_codes.h"
#include "ribkit_platform.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

/// a - b - d and a - c - d, all at the same cost, and VSAN 2 on the way over b only. The links of a are written in the
/// order fc1/2, fc1/1, so that b is reached over the higher interface.
const std::string square = R"(
local = "a"
vsan = [{id = 1}, {id = 2}]
switch = [{name = "d", domain = 4}, {name = "a", domain = 1}, {name = "b", domain = 2}, {name = "c", domain = 3}]
link = [
    {ends = ["b fc1/1", "a fc1/2"]},
    {ends = ["a fc1/1", "c fc1/1"], vsans = [1]},
    {ends = ["b fc1/2", "d fc1/1"]},
    {ends = ["c fc1/2", "d fc1/2"], vsans = [1]},
)";

uint32_t if_index(const char *name) {
    uint32_t value = 0;
    EXPECT_EQ(if_index_parse(name, &value), 0) << name;
    return value;
}

model::destination domain(uint32_t number) { return {number << 16, RIB_MASK_DOMAIN}; }

constexpr uint32_t direct = RIB_FLAG_DIRECT | RIB_FLAG_ACTIVE;

TEST(fspf, equal_paths_are_hops_in_the_order_of_their_interfaces) {
    const model::route_table table = fspf_routes(parse_fabric(square + "]", "square"), 1);
    EXPECT_EQ(table.size(), 3U);
    EXPECT_EQ(table.at(domain(2)), (model::route{500, direct, {{if_index("fc1/2"), 2}}}));
    EXPECT_EQ(table.at(domain(3)), (model::route{500, direct, {{if_index("fc1/1"), 3}}}));
    EXPECT_EQ(table.at(domain(4)),
              (model::route{1000, RIB_FLAG_ACTIVE, {{if_index("fc1/1"), 3}, {if_index("fc1/2"), 2}}}));
}

TEST(fspf, a_vsan_uses_the_links_that_carry_it) {
    const model::route_table table = fspf_routes(parse_fabric(square + "]", "square"), 2);
    EXPECT_EQ(table.size(), 2U);
    EXPECT_EQ(table.at(domain(4)), (model::route{1000, RIB_FLAG_ACTIVE, {{if_index("fc1/2"), 2}}}));
}

TEST(fspf, a_link_that_is_down_is_not_used_until_it_is_up) {
    fabric f = parse_fabric(square + R"(]
event = [
    {at = "1s", link = "a fc1/2", state = "down"}, {at = "2s", link = "b fc1/1", state = "up", cost = 10}])",
                            "square");
    EXPECT_EQ(fspf_routes(f, 2).size(), 2U);
    f.apply(f.events()[0]);
    EXPECT_TRUE(fspf_routes(f, 2).empty());
    EXPECT_EQ(fspf_routes(f, 1).at(domain(2)), (model::route{1500, RIB_FLAG_ACTIVE, {{if_index("fc1/1"), 3}}}));
    f.apply(f.events()[1]);
    EXPECT_EQ(fspf_routes(f, 2).at(domain(2)), (model::route{10, direct, {{if_index("fc1/2"), 2}}}));
}

TEST(fspf, a_neighbour_can_be_nearer_by_another_way) {
    const model::route_table table =
        fspf_routes(parse_fabric(square + R"({ends = ["a fc1/3", "d fc1/3"], cost = 9}])", "square"), 2);
    EXPECT_EQ(table.at(domain(4)), (model::route{9, direct, {{if_index("fc1/3"), 4}}}));
    EXPECT_EQ(table.at(domain(2)), (model::route{500, direct, {{if_index("fc1/2"), 2}}}));
}

TEST(fspf, a_direct_way_that_is_one_of_equals_makes_the_route_direct) {
    const model::route_table table =
        fspf_routes(parse_fabric(square + R"({ends = ["a fc1/3", "d fc1/3"], cost = 1000}])", "square"), 2);
    EXPECT_EQ(table.at(domain(4)), (model::route{1000, direct, {{if_index("fc1/2"), 2}, {if_index("fc1/3"), 4}}}));
}

TEST(fspf, of_more_than_sixteen_ways_the_lowest_interfaces_are_kept) {
    std::string text = "local = \"a\"\nvsan = [{id = 1}]\nswitch = [{name = \"a\", domain = 1}, "
                       "{name = \"b\", domain = 2}]\nlink = [\n";
    for (int port = 20; port > 0; port--) {
        text += base::joined("{ends = [\"a fc1/", port, "\", \"b fc1/", port, "\"]},\n");
    }
    const model::route_table table = fspf_routes(parse_fabric(text + "]", "parallel"), 1);
    const auto &hops = table.at(domain(2)).hops;
    ASSERT_EQ(hops.size(), 16U);
    EXPECT_EQ(hops.front().if_index, if_index("fc1/1"));
    EXPECT_EQ(hops.back().if_index, if_index("fc1/16"));
}

} // namespace
} // namespace ribkit::lab
