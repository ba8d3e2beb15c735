// Generated fabrics are read back by the reader of fabric files.
#include "lab/fabric_generator.h"

#include "base/text.h"
#include "lab/files/fabric_file.h"
#include "lab/spf.h"

#include <gtest/gtest.h>

namespace ribkit::lab {
namespace {

constexpr fabric_shape shapes[] = {fabric_shape::core_edge, fabric_shape::ring, fabric_shape::mesh};

std::vector<spf_path> paths_of(const fabric &f) {
    std::vector<spf_link> links;
    for (const fabric_link &link : f.links()) {
        links.push_back({{link.ends[0].owner, link.ends[1].owner}, link.cost});
    }
    return shortest_paths(f.switches().size(), links, f.local_index());
}

TEST(fabric_generator, every_shape_and_size_is_a_connected_fabric) {
    for (const fabric_shape shape : shapes) {
        for (const uint32_t switches : {2U, 3U, 4U, 5U, 64U, 65U, 239U}) {
            SCOPED_TRACE(base::joined(shape_name(shape), ' ', switches));
            const fabric f = parse_fabric(generate_fabric({switches, 2, shape, 7, 3}), "generated");
            EXPECT_EQ(f.switches().size(), switches);
            EXPECT_EQ(f.vsans().size(), 2U);
            EXPECT_EQ(f.events().size(), 6U);
            for (const spf_path &path : paths_of(f)) {
                EXPECT_NE(path.cost, unreachable);
            }
        }
    }
}

TEST(fabric_generator, the_core_and_edge_shape_offers_two_paths_to_all_but_its_own_cores) {
    const fabric f = parse_fabric(generate_fabric({239, 1, fabric_shape::core_edge, 1, 0}), "generated");
    size_t two = 0;
    for (const spf_path &path : paths_of(f)) {
        two += path.first.size() == 2 ? 1 : 0;
    }
    EXPECT_EQ(two, 239U - 3U);
}

TEST(fabric_generator, the_same_plan_gives_the_same_text_and_another_seed_another) {
    for (const fabric_shape shape : shapes) {
        const fabric_plan plan{20, 2, shape, 5, 2};
        fabric_plan other = plan;
        other.seed = 6;
        EXPECT_EQ(generate_fabric(plan), generate_fabric(plan));
        EXPECT_NE(generate_fabric(plan), generate_fabric(other));
    }
}

TEST(fabric_generator, the_text_says_how_it_was_made) {
    const std::string text = generate_fabric({5, 1, fabric_shape::mesh, 9, 2});
    EXPECT_EQ(text.substr(0, text.find('\n')),
              "# ribkit fabric --switches 5 --vsans 1 --shape mesh --seed 9 --events 2");
}

} // namespace
} // namespace ribkit::lab
