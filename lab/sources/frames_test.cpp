// What the sources want, judged by frames that are followed from switch to switch: a member gets one once, and a tunnel
// ends where it should.
#include "lab/sources/naive_sources.h"
#include "lab/sources/wanted.h"

#include <gtest/gtest.h>
#include <set>

namespace ribkit::lab {
namespace {

/// The same fabric seen by another switch.
lab::fabric seen_by(const lab::fabric &f, size_t local) {
    lab::fabric other = f;
    other.set_local(f.switches()[local].name, 0);
    return other;
}

/// Where copies of a frame come out of the fabric; every switch sends a frame once at most, or it loops.
class frame_to_group {
  public:
    frame_to_group(const lab::fabric &f, const declared_group &group) : fabric_(f), group_(group) {
        for (size_t one = 0; one < f.switches().size(); one++) {
            tables_.push_back(group_routes(seen_by(f, one)));
        }
    }
    void enter(size_t at, uint32_t from_interface) {
        ASSERT_TRUE(passed_.insert(at).second) << "the frame came to a switch twice";
        const auto &table = *tables_[at].at(group_.vsan);
        const auto found = table.find({group_.fcid, RIB_MASK_PORT});
        bool is_wanted_here = from_interface == 0; // where a device has sent it
        for (const uint32_t out : found == table.end() ? std::vector<uint32_t>() : found->second.members) {
            const auto next = neighbour(fabric_, group_.vsan, at, out);
            if (out == from_interface) {
                continue;
            }
            is_wanted_here = true;
            if (next) {
                enter(*next, way_in(fabric_, group_.vsan, *next, at, out));
            } else {
                EXPECT_TRUE(out_.insert({at, out}).second);
            }
        }
        EXPECT_TRUE(is_wanted_here) << "it was sent where no member is";
    }
    [[nodiscard]] const std::set<place> &out() const { return out_; }

  private:
    const lab::fabric &fabric_;
    const declared_group &group_;
    std::vector<clients::wanted_tables<clients::multicast_table>> tables_;
    std::set<size_t> passed_;
    std::set<place> out_;
};

void expect_groups_served(const lab::fabric &f) {
    for (const declared_group &group : f.declared.groups()) {
        const auto distance = distances(f, group.vsan);
        for (size_t from = 0; from < f.switches().size(); from++) {
            std::set<place> members;
            for (const fabric_port &port : group.members) {
                if (group.up && distance[from][port.owner] < far) {
                    members.insert({port.owner, port.if_index});
                }
            }
            frame_to_group frame(f, group);
            frame.enter(from, 0);
            EXPECT_EQ(frame.out(), members);
        }
    }
}

/// Where a frame with such a label, or none, that comes in at an interface leaves the fabric, and what that cost.
struct labelled_way {
    std::optional<place> out;
    uint32_t cost = 0;
};

labelled_way follow_label(const lab::fabric &f, uint32_t vsan, size_t at, uint32_t from, uint32_t cost = 0,
                          uint32_t label = 0) {
    const auto wanted = label_routes(seen_by(f, at));
    for (const auto &[key, what] : *wanted.at(vsan)) {
        const bool matches = label == 0 ? key.source == from && key.match_count == 0 && key.type == RIB_ROUTE_SRC_LABEL
                                        : key.match_count == 1 && key.match[0] >> 12 == label;
        if (matches && cost < far) {
            const uint32_t out = what.hops[1];
            const auto next = neighbour(f, vsan, at, out);
            EXPECT_EQ(what.hops[0] >> 24, label == 0 ? 0U : 1U) << "labels taken off";
            if (!next) {
                EXPECT_EQ(what.hops.size(), 2U) << "it leaves with a label";
                return {place{at, out}, cost};
            }
            for (const fabric_link &link : f.links()) {
                if (way_in(f, vsan, *next, at, out) != 0 && works(link, vsan) &&
                    ((link.ends[0].owner == at && link.ends[0].if_index == out) ||
                     (link.ends[1].owner == at && link.ends[1].if_index == out))) {
                    return follow_label(f, vsan, *next, 0, cost + link.cost, what.hops.at(2) >> 12);
                }
            }
        }
    }
    return {};
}

void expect_tunnels_lead_there(const lab::fabric &f) {
    for (const declared_label &one : f.declared.labels()) {
        const auto &tunnel = std::get<label_tunnel>(one.what);
        const uint32_t shortest = distances(f, one.vsan)[tunnel.from.owner][tunnel.to.owner];
        const labelled_way way = follow_label(f, one.vsan, tunnel.from.owner, tunnel.from.if_index);
        ASSERT_EQ(way.out.has_value(), one.up && shortest < far);
        if (way.out) {
            EXPECT_EQ(*way.out, (place{tunnel.to.owner, tunnel.to.if_index}));
            EXPECT_EQ(way.cost, shortest);
        }
    }
}

TEST(sources, frames_reach_every_member_once_and_leave_every_tunnel_at_its_end) {
    std::mt19937 random(61);
    for (int round = 0; round < rounds(); round++) {
        SCOPED_TRACE(round);
        lab::fabric f = drawn_fabric(random);
        expect_groups_served(f);
        expect_tunnels_lead_there(f);
        for (const fabric_event &event : f.events()) {
            f.apply(event);
            expect_groups_served(f);
            expect_tunnels_lead_there(f);
        }
    }
}

} // namespace
} // namespace ribkit::lab
