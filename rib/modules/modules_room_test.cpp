// A full module is given what it had no room for as soon as there is room, also where nobody says that there is: the
// answer that would have said so is lost, or what was to have the room has left with its VSAN.
#include "rib/modules/modules.h"
#include "rib/naive/played_module.h"
#include "testing/rib_requests.h"

#include <gtest/gtest.h>
#include <set>

namespace ribkit::rib {
namespace {

/// A route is named by its VSAN and its domain.
using names = std::set<std::pair<uint32_t, uint32_t>>;

class full_module : public ::testing::Test {
  protected:
    full_module() {
        follower_.enter(1, 0);
        bring();
    }

    void change(uint32_t action, uint32_t vsan, uint32_t domain) {
        const testing::unicast_records records{
            {action, {domain << 16, RIB_MASK_DOMAIN}, {1, RIB_FLAG_ACTIVE, {{0x01010001, domain}}}}};
        EXPECT_EQ(testing::send(routes_, {RIB_CLIENT_FSPF, vsan, RIB_OPER_UPDATE}, records).result, RIB_OK);
    }
    void add(uint32_t vsan, uint32_t domain) { change(RIB_ACTION_ADD, vsan, domain); }
    void add_and_wait(uint32_t vsan, uint32_t domain) {
        follower_.begin();
        add(vsan, domain);
        follower_.end({});
    }
    void remove(uint32_t vsan, uint32_t domain) { change(RIB_ACTION_DELETE, vsan, domain); }
    void suspend(uint32_t vsan, uint32_t oper = RIB_OPER_SUSPEND) {
        const testing::unicast_records none;
        EXPECT_EQ(testing::send(routes_, {RIB_CLIENT_VSAN_MANAGER, vsan, oper}, none).result, RIB_OK);
    }

    /// The next update for the unicast table; what the others are told arrives.
    played_update next() {
        for (size_t tried = 0; tried < 100; tried++) {
            played_sink sink(10);
            if (!feed().write(sink)) {
                continue;
            }
            if (sink.now.head.table == table_id::unicast) {
                return sink.now;
            }
            arrive(sink.now);
        }
        ADD_FAILURE() << "no update";
        return {};
    }
    void arrive(const played_update &update) { feed().settle(update.head.sequence, module_.take(update)); }
    void arrive_some(size_t updates) {
        for (; updates > 0; updates--) {
            arrive(next());
        }
    }
    /// It has arrived, but its answer does not.
    void lose_answer(const played_update &update) {
        module_.take(update);
        feed().settle(update.head.sequence, {.what = verdict::fate::given_up});
    }
    /// All that is to be told arrives.
    void bring() {
        for (size_t left = 1000; left > 0 && !feed().is_done(); left--) {
            played_sink sink(10);
            if (feed().write(sink)) {
                arrive(sink.now);
            }
        }
        EXPECT_TRUE(feed().is_done());
    }
    /// With nothing, and another room.
    void start_again(size_t room) {
        module_ = played_module(room);
        feed().restart(0);
    }
    /// All room is taken, and there is a route more.
    void fill() {
        for (const auto &[vsan, domain] : names{{1, 1}, {2, 1}, {3, 1}}) {
            add(vsan, domain);
            bring();
        }
        EXPECT_EQ(held(), (names{{1, 1}, {2, 1}}));
    }

    [[nodiscard]] names held() const {
        names all;
        for (const auto &[where, what] : module_.all()) {
            all.emplace(where.second.vsan, where.second.to.fcid >> 16);
        }
        return all;
    }

  private:
    module_feed &feed() { return follower_.all().at(1); }

    modules follower_{routes_};
    state routes_{{.spaces = {8, 4096, 65536}}, &follower_};
    played_module module_{2};
};

TEST_F(full_module, has_room_when_a_vsan_has_left_though_its_answer_is_lost) {
    fill();
    suspend(1);
    lose_answer(next());
    bring();
    EXPECT_EQ(held(), (names{{2, 1}, {3, 1}}));
}

TEST_F(full_module, has_room_when_a_route_and_then_its_vsan_have_left_though_the_answer_is_lost) {
    fill();
    remove(1, 1);
    const played_update removal = next();
    suspend(1);
    lose_answer(removal);
    bring();
    EXPECT_EQ(held(), (names{{2, 1}, {3, 1}}));
}

TEST_F(full_module, leaves_room_to_others_where_the_next_one_has_left_with_its_vsan) {
    fill();
    add(4, 1);
    bring();
    remove(1, 1);
    arrive(next()); // the room is for the one of VSAN 3 now
    suspend(3);
    bring();
    EXPECT_EQ(held(), (names{{2, 1}, {4, 1}}));
}

TEST_F(full_module, leaves_no_room_to_what_failed_after_its_vsan_was_suspended) {
    fill();
    remove(3, 1);
    bring();
    add(3, 2);
    add(4, 1);
    const played_update failing = next();
    suspend(3);
    arrive(failing);
    bring();
    remove(1, 1);
    bring();
    EXPECT_EQ(held(), (names{{2, 1}, {4, 1}}));
}

TEST_F(full_module, is_not_given_again_what_a_merge_has_brought_in_place_of_what_is_missing) {
    start_again(3);
    for (const auto &[vsan, domain] : names{{1, 1}, {1, 2}, {2, 1}, {3, 1}, {5, 1}}) {
        add(vsan, domain);
    }
    arrive_some(3); // the merge has begun, and named two VSANs
    add_and_wait(4, 1);
    arrive_some(2); // which fails, and so does what the merge names next
    remove(1, 1);
    arrive_some(2); // the merge is faster than what is tried again
    EXPECT_EQ(held(), (names{{1, 2}, {2, 1}, {4, 1}}));
    bring();
    remove(1, 2);
    bring();
    remove(2, 1);
    bring();
    EXPECT_EQ(held(), (names{{3, 1}, {4, 1}, {5, 1}}));
}

} // namespace
} // namespace ribkit::rib
