// Shortest paths against an independent model: all distances by Floyd and Warshall, and a link of the root begins a
// shortest path exactly where its cost and the rest of the way add up.
#include "lab/spf.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace ribkit::lab {
namespace {

using table = std::vector<std::vector<uint64_t>>;
constexpr uint64_t far = uint64_t{1} << 40;

table all_distances(size_t nodes, const std::vector<spf_link> &links) {
    table distance(nodes, std::vector<uint64_t>(nodes, far));
    for (size_t i = 0; i < nodes; i++) {
        distance[i][i] = 0;
    }
    for (const auto &[ends, cost] : links) {
        distance[ends[0]][ends[1]] = std::min<uint64_t>(distance[ends[0]][ends[1]], cost);
        distance[ends[1]][ends[0]] = std::min<uint64_t>(distance[ends[1]][ends[0]], cost);
    }
    for (size_t k = 0; k < nodes; k++) {
        for (size_t i = 0; i < nodes; i++) {
            for (size_t j = 0; j < nodes; j++) {
                distance[i][j] = std::min(distance[i][j], distance[i][k] + distance[k][j]);
            }
        }
    }
    return distance;
}

spf_path model_path(const table &distance, const std::vector<spf_link> &links, size_t root, size_t to) {
    if (to == root) {
        return {0, {}};
    }
    if (distance[root][to] >= far) {
        return {};
    }
    spf_path path{static_cast<uint32_t>(distance[root][to]), {}};
    for (size_t i = 0; i < links.size(); i++) {
        const auto &[ends, cost] = links[i];
        const bool leaves_root = ends[0] == root || ends[1] == root;
        const size_t next = ends[0] == root ? ends[1] : ends[0];
        if (leaves_root && cost + distance[next][to] == distance[root][to] && path.first.size() < 16) {
            path.first.push_back(i);
        }
    }
    return path;
}

void expect_like_model(size_t nodes, const std::vector<spf_link> &links, size_t root) {
    const auto paths = shortest_paths(nodes, links, root);
    const table distance = all_distances(nodes, links);
    ASSERT_EQ(paths.size(), nodes);
    for (size_t to = 0; to < nodes; to++) {
        const spf_path expected = model_path(distance, links, root, to);
        EXPECT_EQ(paths[to].cost, expected.cost) << "to node " << to;
        EXPECT_EQ(paths[to].first, expected.first) << "to node " << to;
    }
}

TEST(spf, a_single_node_has_a_path_to_itself) {
    const auto paths = shortest_paths(1, {}, 0);
    EXPECT_EQ(paths.at(0).cost, 0U);
    EXPECT_TRUE(paths.at(0).first.empty());
}

TEST(spf, what_no_link_reaches_is_unreachable) {
    const std::vector<spf_link> links{{{0, 1}, 5}, {{2, 3}, 5}};
    const auto paths = shortest_paths(4, links, 0);
    EXPECT_EQ(paths[1].cost, 5U);
    EXPECT_EQ(paths[2].cost, unreachable);
    EXPECT_TRUE(paths[3].first.empty());
}

TEST(spf, equal_costs_are_kept_and_dearer_ones_are_not) {
    const std::vector<spf_link> links{{{0, 1}, 1}, {{0, 2}, 2}, {{1, 3}, 2}, {{2, 3}, 1}, {{0, 3}, 4}};
    const auto paths = shortest_paths(4, links, 0);
    EXPECT_EQ(paths[3].cost, 3U);
    EXPECT_EQ(paths[3].first, (std::vector<size_t>{0, 1}));
}

TEST(spf, parallel_links_are_ways_of_their_own) {
    const std::vector<spf_link> links{{{0, 1}, 7}, {{1, 0}, 7}, {{0, 1}, 8}};
    EXPECT_EQ(shortest_paths(2, links, 0)[1].first, (std::vector<size_t>{0, 1}));
}

TEST(spf, the_lowest_sixteen_first_links_are_kept) {
    std::vector<spf_link> links;
    for (size_t i = 0; i < 20; i++) {
        links.push_back({{0, 20 - i}, 1}); // the last link leads to the lowest node, which is settled first
        links.push_back({{20 - i, 21}, 1});
    }
    links.push_back({{21, 22}, 1});
    expect_like_model(23, links, 0);
    EXPECT_EQ(shortest_paths(23, links, 0)[22].first.size(), most_first_links);
}

TEST(spf, a_cheaper_path_found_later_forgets_the_first_links_of_the_dearer_one) {
    const std::vector<spf_link> links{{{0, 2}, 9}, {{0, 1}, 1}, {{1, 2}, 1}, {{2, 3}, 1}};
    expect_like_model(4, links, 0);
}

TEST(spf, random_graphs_agree_with_the_model) {
    std::mt19937 random(20);
    for (int round = 0; round < 400; round++) {
        const size_t nodes = 2 + random() % 24;
        const uint32_t dearest = 1 + random() % 6; // few different costs: many equal paths
        std::vector<spf_link> links(random() % (3 * nodes));
        for (spf_link &link : links) {
            const size_t from = random() % nodes;
            link = {{from, (from + 1 + random() % (nodes - 1)) % nodes}, 1 + static_cast<uint32_t>(random() % dearest)};
        }
        SCOPED_TRACE("round " + std::to_string(round));
        expect_like_model(nodes, links, random() % nodes);
    }
}

} // namespace
} // namespace ribkit::lab
