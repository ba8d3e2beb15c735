// Routes that are kept up to date are those computed anew, and shortest paths are computed only where they can change.
#include "lab/fabric_routes.h"

#include "base/input_error.h"
#include "lab/files/fabric_file.h"
#include "lab/fspf.h"
#include "lab/generator/fabric_generator.h"

#include <gtest/gtest.h>
#include <random>

namespace ribkit::lab {
namespace {

const fabric_routes::progress silent = [](size_t, size_t) {};

/// a - b - c in a ring of equal costs, and c - d; VSANs 1 and 2 are the same, VSAN 3 goes over a - b and b - c only.
const std::string ring = R"(
local = "a"
vsan = [{id = 1}, {id = 2}, {id = 3}]
switch = [{name = "a", domain = 1}, {name = "b", domain = 2}, {name = "c", domain = 3}, {name = "d", domain = 4}]
link = [
    {ends = ["a fc1/1", "b fc1/1"]},
    {ends = ["a fc1/2", "c fc1/2"], vsans = [1, 2]},
    {ends = ["b fc1/3", "c fc1/3"]},
    {ends = ["c fc1/4", "d fc1/4"], vsans = [1, 2]},
])";

constexpr size_t a_b = 0, a_c = 1, b_c = 2, c_d = 3;

fabric_event event(size_t link, std::optional<bool> up, std::optional<uint32_t> cost = {}) {
    return {{}, link, up, cost};
}

class in_a_ring : public ::testing::Test {
  protected:
    in_a_ring() { routes.follow(f, silent); }

    /// How many computations the events cost, all at one moment.
    size_t cost_of(const std::vector<fabric_event> &events) {
        const size_t before = routes.computations();
        for (const fabric_event &one : events) {
            f.apply(one);
        }
        routes.follow(f, silent);
        for (const fabric_vsan &vsan : f.vsans()) {
            EXPECT_EQ(*routes.of(vsan.id), fspf_routes(f, vsan.id)) << "VSAN " << vsan.id;
        }
        return routes.computations() - before;
    }

    fabric f = parse_fabric(ring, "ring");
    fabric_routes routes;
};

TEST_F(in_a_ring, vsans_of_the_same_links_share_their_routes) {
    EXPECT_EQ(routes.computations(), 2U);
    EXPECT_EQ(routes.of(1), routes.of(2));
    EXPECT_NE(routes.of(1), routes.of(3));
}

TEST_F(in_a_ring, only_an_event_on_a_shortest_path_is_computed) {
    EXPECT_EQ(cost_of({}), 0U);
    EXPECT_EQ(cost_of({event(c_d, {}, 7)}), 1U); // VSAN 3 does not go there
    EXPECT_EQ(cost_of({event(a_c, {}, 502)}), 1U);
    EXPECT_EQ(cost_of({event(b_c, {}, 600)}), 1U); // in VSAN 3, the way to c; in the others it is no way
    EXPECT_EQ(cost_of({event(a_b, {}, 500)}), 0U); // as it was
    EXPECT_EQ(cost_of({event(a_b, false), event(a_b, true)}), 0U);
    EXPECT_EQ(cost_of({event(b_c, false)}), 1U);
    EXPECT_EQ(cost_of({event(b_c, {}, 1)}), 0U); // while it is down
    EXPECT_EQ(cost_of({event(b_c, true)}), 2U);
    EXPECT_EQ(cost_of({event(a_c, false)}), 0U); // since the way over b is nearer
    EXPECT_EQ(cost_of({event(a_c, true, 1000)}), 0U);
    EXPECT_EQ(cost_of({event(a_c, {}, 501)}), 1U); // as near as that
}

TEST_F(in_a_ring, a_table_that_stays_the_same_stays_the_same_object) {
    const model::shared_routes before = routes.of(3);
    EXPECT_EQ(cost_of({event(a_b, false)}), 2U);
    EXPECT_NE(routes.of(3), before);
    const model::shared_routes cut_off = routes.of(3);
    EXPECT_EQ(cost_of({event(b_c, false)}), 1U); // of two switches that VSAN 3 does not reach
    EXPECT_EQ(routes.of(3), cut_off);
}

TEST_F(in_a_ring, domains_without_a_path_are_told_once) {
    using lost = std::vector<unreachable_domains>;
    EXPECT_EQ(routes.lost(), (lost{{3, {4}}}));
    cost_of({event(c_d, false)});
    EXPECT_EQ(routes.lost(), (lost{{1, {4}}, {2, {4}}}));
    cost_of({event(a_b, false)});
    EXPECT_EQ(routes.lost(), (lost{{3, {2, 3}}}));
    cost_of({event(a_b, true)});
    EXPECT_EQ(routes.lost(), lost{});
    cost_of({event(a_b, false), event(a_c, false)});
    EXPECT_EQ(routes.lost(), (lost{{1, {2, 3}}, {2, {2, 3}}, {3, {2, 3}}}));
}

std::string drawn(std::mt19937 &random) {
    const auto shape = static_cast<fabric_shape>(random() % 3);
    const auto switches = 3 + static_cast<uint32_t>(random() % 8);
    return generate_fabric({switches, 1, shape, static_cast<uint32_t>(random()), 0});
}

/// Each link of the generated text carries some VSANs of four, or all.
std::string with_vsans(std::string text, std::mt19937 &random) {
    const std::string link = "[[link]]\n";
    for (size_t at = text.find(link); at != std::string::npos; at = text.find(link, at + 1)) {
        const std::string sets[] = {"[]", "[1, 2]", "[2, 3, 4]", "[4]"};
        text.insert(at + link.size(), "vsans = " + sets[random() % 4] + "\n");
    }
    const std::string vsan = "[[vsan]]\nid = 1\n";
    return text.replace(text.find(vsan), vsan.size(), vsan + "[[vsan]]\nid = 2\n[[vsan]]\nid = 3\n[[vsan]]\nid = 4\n");
}

void disturb(fabric &f, std::mt19937 &random) {
    for (size_t left = 1 + random() % 3; left > 0; left--) {
        const bool costs = random() % 3 == 0;
        f.apply(event(random() % f.links().size(), costs ? std::nullopt : std::optional(random() % 2 == 0),
                      costs ? std::optional<uint32_t>(100 * (1 + random() % 8)) : std::nullopt));
    }
}

TEST(fabric_routes, are_those_computed_anew_whatever_happens) {
    std::mt19937 random(20);
    size_t computed = 0;
    size_t most = 0;
    for (int round = 0; round < 1000; round++) {
        fabric f = parse_fabric(with_vsans(drawn(random), random), "drawn");
        fabric_routes routes;
        for (int moment = 0; moment < 12; moment++) {
            routes.follow(f, silent);
            for (const fabric_vsan &vsan : f.vsans()) {
                ASSERT_EQ(*routes.of(vsan.id), fspf_routes(f, vsan.id)) << "round " << round << ", moment " << moment;
            }
            most += f.vsans().size();
            disturb(f, random);
        }
        computed += routes.computations();
    }
    EXPECT_LT(computed, most * 2 / 3); // or nothing was saved
}

} // namespace
} // namespace ribkit::lab
