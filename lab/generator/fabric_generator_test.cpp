// Generated fabrics are read back by the reader of fabric files.
#include "lab/generator/fabric_generator.h"

#include "base/text.h"
#include "lab/files/fabric_file.h"
#include "lab/spf.h"

#include <gtest/gtest.h>
#include <map>

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

/// Whether something of every kind happens: routes of a kind that come, go and change.
struct happenings {
    bool added = false, withdrawn = false, changed = false;

    void note(const fabric_event &event) {
        added |= event.up == true;
        withdrawn |= event.up == false;
        changed |= event.cost || event.joins || event.leaves || event.to;
    }
};

TEST(fabric_generator, whatever_there_is_comes_goes_and_changes) {
    const std::string text = generate_fabric({.switches = 6,
                                              .vsans = 2,
                                              .shape = fabric_shape::mesh,
                                              .events = 200,
                                              .groups = 4,
                                              .labels = 4,
                                              .statics = 4});
    const fabric f = parse_fabric(text, "generated");
    EXPECT_EQ(f.events().size(), 400U);
    std::map<event_subject, happenings> kinds;
    for (const fabric_event &event : f.events()) {
        kinds[event.subject].note(event);
    }
    for (const auto subject : {event_subject::static_route, event_subject::group, event_subject::label}) {
        EXPECT_TRUE(kinds[subject].added && kinds[subject].withdrawn && kinds[subject].changed);
    }
    EXPECT_TRUE(kinds[event_subject::link].added && kinds[event_subject::link].withdrawn);
    EXPECT_TRUE(kinds[event_subject::distance].changed);
    EXPECT_FALSE(f.declared.statics()[2].up);
    EXPECT_TRUE(f.declared.statics()[1].up);
}

TEST(fabric_generator, where_nothing_happens_everything_is_there) {
    const std::string text = generate_fabric({.switches = 6, .vsans = 2, .groups = 4, .labels = 4, .statics = 4});
    EXPECT_EQ(text.find("state"), std::string::npos);
}

TEST(fabric_generator, modules_are_numbered_from_1) {
    const std::string text = generate_fabric({.switches = 3, .vsans = 1, .modules = 3});
    EXPECT_EQ(text.substr(0, text.find('\n')),
              "# ribkit fabric --switches 3 --vsans 1 --shape core-edge --seed 1 --modules 3");
    const fabric f = parse_fabric(text, "generated");
    ASSERT_EQ(f.modules.size(), 3U);
    EXPECT_EQ(f.modules[2].number, 3U);
}

TEST(fabric_generator, the_text_says_how_it_was_made) {
    const std::string text = generate_fabric({5, 1, fabric_shape::mesh, 9, 2});
    EXPECT_EQ(text.substr(0, text.find('\n')),
              "# ribkit fabric --switches 5 --vsans 1 --shape mesh --seed 9 --events 2");
}

} // namespace
} // namespace ribkit::lab
