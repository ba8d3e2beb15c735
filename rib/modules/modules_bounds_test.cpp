// What following modules takes, however many routes there are: so many changes are remembered one by one, and what goes
// beyond comes with its VSAN's merge. RIBKIT_ALL=1 tries the routes of a whole switch.
#include "rib/hardware/path_space.h"
#include "rib/modules/modules.h"
#include "rib/modules/refused_keys.h"
#include "rib/modules/waiting.h"
#include "rib/naive/played_module.h"
#include "testing/rib_requests.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <map>

namespace ribkit::rib {
namespace {

constexpr uint32_t in_each = 239; // routes of a VSAN

/// Bytes in use, as the allocator counts them; a sanitizer's counts none.
size_t bytes_now() {
    const auto all = mallinfo2();
    return all.uordblks + all.hblkhd;
}

/// Routes of so many VSANs, and one module that may be told of them.
class followed_routes {
  public:
    explicit followed_routes(uint32_t vsans)
        : vsans_(vsans), routes_({.spaces = {vsans, 256 * vsans, 256 * vsans * unit_block}}, &follower_) {}

    void start_module() {
        follower_.enter(1, 0);
        bring();
    }

    /// All routes become other ones. Nobody waits for that.
    void change_all(uint32_t cost) {
        testing::unicast_records records;
        for (uint32_t domain = 1; domain <= in_each; domain++) {
            records.push_back({RIB_ACTION_ADD, {domain << 16, RIB_MASK_DOMAIN}, {cost, 0, {{0x01010001, domain}}}});
        }
        for (uint32_t vsan = 1; vsan <= vsans_; vsan++) {
            EXPECT_EQ(testing::send(routes_, {RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE}, records).accepted, in_each);
        }
    }

    /// Tells the module all that it has to be told.
    /// @return how many paths came by each operation; of those without paths, how many messages
    std::map<uint32_t, size_t> bring() {
        std::map<uint32_t, size_t> came;
        module_feed &feed = follower_.all().at(1);
        size_t idle = 0; // a table that has nothing to say when its turn comes leaves it to the others
        while (feed.has_work() && idle < tables) {
            played_sink sink(100);
            if (!feed.write(sink)) {
                idle++;
                continue;
            }
            idle = 0;
            came[sink.now.head.oper] += std::max<size_t>(sink.now.paths.size(), 1);
            for (const auto &[where, what] : sink.now.paths) {
                module_[where] = what;
            }
            feed.settle(sink.now.head.sequence, {.accepted = static_cast<uint32_t>(sink.now.paths.size())});
        }
        EXPECT_TRUE(feed.is_done());
        return came;
    }

    /// Whether the module has just what there is.
    [[nodiscard]] bool has_all(uint32_t cost) const {
        return module_.size() == size_t{vsans_} * in_each &&
               std::all_of(module_.begin(), module_.end(), [cost](const auto &one) {
                   return std::find(one.second.begin(), one.second.end(), cost) != one.second.end();
               });
    }

  private:
    uint32_t vsans_;
    modules follower_{routes_};
    state routes_;
    std::map<any_key, words> module_; ///< which takes all, and is never told to remove anything
};

/// Bytes that the RIB takes for its routes, changed twice with a module that is told nothing, or without one.
size_t bytes_with(uint32_t vsans, bool is_followed) {
    const size_t before = bytes_now();
    followed_routes all(vsans);
    if (is_followed) {
        all.start_module();
    }
    all.change_all(1);
    all.change_all(2);
    return bytes_now() - before;
}

uint32_t many_vsans() { return std::getenv("RIBKIT_ALL") == nullptr ? 300 : 4094; }

TEST(modules_bounds, what_is_beyond_those_that_are_remembered_comes_with_its_vsan) {
    const uint32_t vsans = many_vsans();
    followed_routes all(vsans);
    all.start_module();
    for (const uint32_t cost : {1000U, 2000U}) {
        all.change_all(cost);
        const auto came = all.bring();
        const auto merged = vsans - static_cast<uint32_t>(most_remembered / in_each); // the first of them in part
        EXPECT_EQ(came.at(FIB_OPER_UPDATE), most_remembered);
        EXPECT_EQ(came.at(FIB_OPER_BEGIN_MERGE), merged);
        EXPECT_EQ(came.at(FIB_OPER_MERGE), size_t{merged} * in_each);
        EXPECT_EQ(came.at(FIB_OPER_END_MERGE), merged);
        EXPECT_EQ(came.size(), 4U);
        EXPECT_TRUE(all.has_all(cost));
    }
}

TEST(modules_bounds, a_change_that_waits_takes_so_much_and_no_more_than_so_many_do) {
    constexpr size_t most_each = 80;
    for (const uint32_t vsans : {42U, RIBKIT_EMULATED ? 43U : 274U, RIBKIT_EMULATED ? 44U : many_vsans()}) {
        const size_t owed = std::min<size_t>(size_t{vsans} * in_each, most_remembered);
        const size_t alone = bytes_with(vsans, false);
        const size_t followed = bytes_with(vsans, true);
        EXPECT_LE(followed, alone + owed * most_each + 65536)
            << vsans << " vsans: " << (followed - alone) / owed << " bytes each";
        RecordProperty("bytes_each_of_" + std::to_string(vsans), std::to_string((followed - alone) / owed));
    }
}

TEST(modules_bounds, what_was_told_takes_nothing_more_however_often) {
    followed_routes all(42);
    all.start_module();
    size_t before = 0;
    for (uint32_t round = 1; round <= 6; round++) {
        all.change_all(1000 + round);
        all.bring();
        before = round == 2 ? bytes_now() : before;
    }
    EXPECT_LE(bytes_now(), before + 4096);
    EXPECT_TRUE(all.has_all(1006));
}

TEST(refused_keys, beyond_those_that_are_remembered_a_whole_vsan_is_tried_again) {
    refused_keys<unicast> refused;
    constexpr model::route_key more{9, {1, 0}};
    for (uint32_t i = 0; i < most_remembered; i++) {
        refused.add({7, {i, 0}}, i % 2 == 0 ? RIB_HW_FULL : RIB_VSAN_TCAM_FULL);
    }
    refused.add(more, RIB_HW_FULL);
    std::vector<model::route_key> again;
    const auto take_some = [&](uint32_t vsan, size_t count) {
        again.clear();
        return refused.take_some(vsan, count, [&](const auto &key) { again.push_back(key); });
    };
    EXPECT_TRUE(take_some(7, 1).none());
    EXPECT_EQ(again, (std::vector<model::route_key>{{7, {0, 0}}}));
    EXPECT_TRUE(take_some(8, 1).none());
    EXPECT_EQ(again, (std::vector<model::route_key>{{7, {2, 0}}})) << "the first that any room helps";
    EXPECT_EQ(take_some(9, most_remembered), vsan_set().set(9)) << "there was room for more than are remembered";
    EXPECT_EQ(again.size(), most_remembered / 2 - 2);
    EXPECT_TRUE(take_some(9, 1).none());
    EXPECT_TRUE(again.empty());
}

TEST(refused_keys, room_of_no_vsan_helps_every_one) {
    refused_keys<multicast> refused;
    std::vector<model::multicast_key> again;
    const auto take_some = [&](uint32_t vsan, size_t count) {
        again.clear();
        EXPECT_TRUE(refused.take_some(vsan, count, [&](const auto &key) { again.push_back(key); }).none());
        return again.size();
    };
    for (const uint32_t vsan : {1U, 2U, 3U}) {
        refused.add({vsan, {0xff0001, 0}}, RIB_VSAN_TCAM_FULL);
    }
    EXPECT_EQ(take_some(2, 2), 1U) << "what is left over is not the others' VSAN's";
    EXPECT_EQ(take_some(4, 1), 0U);
    EXPECT_EQ(take_some(0, 1), 1U);
    EXPECT_EQ(again, (std::vector<model::multicast_key>{{1, {0xff0001, 0}}}));
    EXPECT_EQ(take_some(0, 9), 1U);
}

TEST(waiting, a_comparison_keeps_no_more_than_so_many_differences) {
    waiting requests;
    const waiting::id request = requests.open();
    requests.owe(request);
    requests.compare(request);
    const auto find = [&](uint32_t number) {
        return requests.find(request, {table_id::unicast, {.vsan = number}}, FIB_VERF_NOT_IN_RIB);
    };
    for (uint32_t i = 0; i < waiting::most_found; i++) {
        ASSERT_TRUE(find(i));
    }
    EXPECT_FALSE(find(waiting::most_found));
    requests.seal(request, {});
    requests.settle(request, RIB_OK);
    const auto done = requests.take_done();
    ASSERT_TRUE(done && done->found);
    EXPECT_EQ(done->found->keys.size(), waiting::most_found);
    EXPECT_EQ(done->answer.result, RIB_FAILED);
}

TEST(waiting, of_a_request_that_is_over_nothing_is_kept) {
    waiting requests;
    const waiting::id request = requests.open();
    requests.owe(request);
    requests.compare(request);
    requests.seal(request, {});
    requests.give_up(request);
    const any_key route{table_id::unicast, {.vsan = 7}};
    EXPECT_FALSE(requests.find(request, route, FIB_VERF_NOT_IN_RIB));
    requests.count_named(request, 5);
    requests.tell(request, RIB_HW_FULL);
    requests.settle(request, route, RIB_HW_FULL);
    requests.give_up(request);
    const auto done = requests.take_done();
    ASSERT_TRUE(done && done->found);
    EXPECT_EQ(*done->found, (waiting::findings{{}, 0, false}));
    EXPECT_EQ(done->answer.result, RIB_TIMEOUT);
    EXPECT_FALSE(requests.take_done());
    EXPECT_EQ(requests.size(), 0U);
}

} // namespace
} // namespace ribkit::rib
