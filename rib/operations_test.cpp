// Every operation of an update, on each table that has it.
#include "rib/state.h"

#include "base/text.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/rib_requests.h"

#include <gtest/gtest.h>

namespace ribkit::rib {
namespace {

using lines = std::vector<std::string>;
using testing::label_records;
using testing::multicast_records;
using testing::unicast_records;

constexpr uint32_t mine = RIB_CLIENT_FSPF;
constexpr uint32_t other = RIB_CLIENT_TEST;

constexpr model::destination domain(uint32_t number) { return {number << 16, RIB_MASK_DOMAIN}; }

/// Records that say the same in each table.
template <class Records> Records records(uint32_t action, std::vector<uint32_t> numbers) {
    Records all;
    for (const uint32_t number : numbers) {
        if constexpr (std::is_same_v<Records, label_records>) {
            model::label_key key{.vsan = 1, .type = RIB_ROUTE_FC_LABEL, .to = domain(number)};
            all.push_back({action, key, {{}, {0x00010000, 0x01010001, 0x5140}}});
        } else if constexpr (std::is_same_v<Records, multicast_records>) {
            all.push_back({action, domain(number), {{0x01010001}}});
        } else {
            all.push_back({action, domain(number), {number, 0, {{0x01010001, 2}}}});
        }
    }
    return all;
}

template <class Records> struct kind_of;
template <> struct kind_of<unicast_records> { using type = unicast; };
template <> struct kind_of<multicast_records> { using type = multicast; };
template <> struct kind_of<label_records> { using type = label; };

template <class Records> class operations : public ::testing::Test {
  protected:
    using kind = typename kind_of<Records>::type;

    update_answer take(uint32_t uuid, uint32_t oper, uint32_t action = 0, std::vector<uint32_t> numbers = {}) {
        return testing::send(rib, {uuid, 1, oper}, records<Records>(action, std::move(numbers)));
    }
    /// Numbers of the destinations that a client has routes to.
    std::vector<uint32_t> held(uint32_t uuid) {
        std::vector<uint32_t> numbers;
        for (const auto &[key, first] : rib.template routes<kind>().all()) {
            if (rib.template routes<kind>().find(key, uuid) != nullptr) {
                numbers.push_back(kind::destination_of(key).fcid >> 16);
            }
        }
        return numbers;
    }

    testing::told_lines told;
    state rib{{}, &told};
};

using each_table = ::testing::Types<unicast_records, multicast_records, label_records>;
TYPED_TEST_SUITE(operations, each_table);

using numbers = std::vector<uint32_t>;

TYPED_TEST(operations, update_and_remove_answer_and_do_the_same_with_response_and_without) {
    for (const uint32_t shift : {0U, 4U}) {
        EXPECT_EQ(this->take(mine, RIB_OPER_UPDATE << shift, RIB_ACTION_ADD, {2, 3, 4}),
                  (update_answer{RIB_OK, RIB_OPER_UPDATE << shift, 1, 3, 3}));
        EXPECT_EQ(this->take(mine, RIB_OPER_REMOVE << shift, 0, {3, 9}),
                  (update_answer{RIB_NO_ENTRY, RIB_OPER_REMOVE << shift, 1, 1, 2}));
        EXPECT_EQ(this->held(mine), (numbers{2, 4}));
        EXPECT_EQ(this->take(mine, RIB_OPER_REMOVE_ALL << shift),
                  (update_answer{RIB_OK, RIB_OPER_REMOVE_ALL << shift, 1, 2, 0}));
    }
}

TYPED_TEST(operations, remove_is_for_ones_own_routes) {
    this->take(other, RIB_OPER_UPDATE, RIB_ACTION_ADD, {2, 3});
    EXPECT_EQ(this->take(mine, RIB_OPER_REMOVE, 0, {2}).result, RIB_OBJECT_OWNED);
    EXPECT_EQ(this->take(mine, RIB_OPER_REMOVE_ALL), (update_answer{RIB_OK, RIB_OPER_REMOVE_ALL, 1, 0, 2}));
    EXPECT_EQ(this->held(other), (numbers{2, 3}));
}

TYPED_TEST(operations, remove_all_is_told_route_by_route_in_order) {
    this->take(mine, RIB_OPER_UPDATE, RIB_ACTION_ADD, {4, 2, 3});
    this->told.take();
    this->take(mine, RIB_OPER_REMOVE_ALL);
    const auto said = this->told.take();
    ASSERT_EQ(said.size(), 3U);
    for (uint32_t i = 0; i < 3; i++) {
        EXPECT_NE(said[i].find(base::joined(' ', i + 2, "0000/ff0000")), std::string::npos) << said[i];
        EXPECT_NE(said[i].find(" oper 4 "), std::string::npos) << said[i];
    }
}

TYPED_TEST(operations, a_merge_leaves_what_it_names) {
    this->take(mine, RIB_OPER_UPDATE, RIB_ACTION_ADD, {2, 3, 4});
    EXPECT_EQ(this->take(mine, RIB_OPER_MERGE, RIB_ACTION_ADD, {3, 5}),
              (update_answer{RIB_OK, RIB_OPER_MERGE, 1, 2, 4}));
    EXPECT_EQ(this->take(mine, RIB_OPER_MERGE_RSP, RIB_ACTION_ADD, {6}).accepted, 1U);
    EXPECT_EQ(this->held(mine), (numbers{2, 3, 4, 5, 6})) << "until it ends";
    EXPECT_EQ(this->take(mine, RIB_OPER_MERGE), (update_answer{RIB_OK, RIB_OPER_MERGE, 1, 2, 3}));
    EXPECT_EQ(this->held(mine), (numbers{3, 5, 6}));
    EXPECT_EQ(this->take(mine, RIB_OPER_MERGE_RSP).accepted, 3U) << "of the next merge nothing was named";
    EXPECT_TRUE(this->rib.vsans().empty());
}

TYPED_TEST(operations, a_merge_is_of_its_sender_and_its_vsan) {
    this->take(mine, RIB_OPER_UPDATE, RIB_ACTION_ADD, {2});
    this->take(other, RIB_OPER_UPDATE, RIB_ACTION_ADD, {3});
    auto elsewhere = records<TypeParam>(RIB_ACTION_ADD, {2});
    if constexpr (std::is_same_v<TypeParam, label_records>) {
        elsewhere[0].key.vsan = 2;
    }
    testing::send(this->rib, {mine, 2, RIB_OPER_UPDATE}, elsewhere);
    EXPECT_EQ(this->take(mine, RIB_OPER_MERGE).accepted, 1U);
    EXPECT_EQ(this->held(mine), (numbers{2})) << "in the other VSAN";
    EXPECT_EQ(this->held(other), (numbers{3}));
}

TYPED_TEST(operations, a_merge_only_adds) {
    this->take(mine, RIB_OPER_UPDATE, RIB_ACTION_ADD, {2});
    EXPECT_EQ(this->take(mine, RIB_OPER_MERGE, RIB_ACTION_DELETE, {2}).result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(this->held(mine), (numbers{2}));
}

TYPED_TEST(operations, what_is_restored_is_told_as_such) {
    EXPECT_EQ(this->take(mine, RIB_OPER_RESTORE, RIB_ACTION_ADD, {2}).accepted, 1U);
    const auto said = this->told.take();
    ASSERT_EQ(said.size(), 1U);
    EXPECT_TRUE(said[0].starts_with("restored ")) << said[0];
}

TYPED_TEST(operations, a_replay_tells_the_senders_routes_and_changes_nothing) {
    this->take(mine, RIB_OPER_UPDATE, RIB_ACTION_ADD, {3, 2});
    this->take(other, RIB_OPER_UPDATE, RIB_ACTION_ADD, {4});
    this->told.take();
    EXPECT_EQ(this->take(mine, RIB_OPER_REPLAY), (update_answer{RIB_OK, RIB_OPER_REPLAY, 1, 2, 3}));
    const auto said = this->told.take();
    ASSERT_EQ(said.size(), 2U);
    EXPECT_TRUE(said[0].starts_with("replayed ") && said[0].find(" 20000/") != std::string::npos) << said[0];
    EXPECT_TRUE(said[1].starts_with("replayed ") && said[1].find(" 30000/") != std::string::npos) << said[1];
}

TYPED_TEST(operations, vsans_are_suspended_and_resumed_by_their_manager) {
    this->take(mine, RIB_OPER_UPDATE, RIB_ACTION_ADD, {2});
    this->told.take();
    EXPECT_EQ(this->take(mine, RIB_OPER_SUSPEND).result, RIB_OBJECT_OWNED);
    for (int twice = 0; twice < 2; twice++) {
        EXPECT_EQ(this->take(RIB_CLIENT_VSAN_MANAGER, RIB_OPER_SUSPEND).result, RIB_OK);
    }
    EXPECT_TRUE(this->rib.suspended().contains(1));
    EXPECT_EQ(this->held(mine), (numbers{2})) << "the RIB keeps its routes";
    EXPECT_EQ(this->take(RIB_CLIENT_VSAN_MANAGER, RIB_OPER_RESUME).result, RIB_OK);
    EXPECT_EQ(this->told.take(), (lines{"vsan 1 suspended", "vsan 1 resumed"}));
    EXPECT_TRUE(this->rib.suspended().empty());
}

TYPED_TEST(operations, verify_is_told_to_those_who_know_the_modules) {
    EXPECT_EQ(this->take(mine, RIB_OPER_VERIFY).result, RIB_OK);
    EXPECT_EQ(this->told.take(), (lines{"vsan 1 compared"}));
}

TYPED_TEST(operations, those_that_are_of_all_routes_name_none) {
    for (const uint32_t oper : {RIB_OPER_REMOVE_ALL, RIB_OPER_SUSPEND, RIB_OPER_RESUME, RIB_OPER_REPLAY,
                                RIB_OPER_VERIFY, RIB_OPER_REMOVE_ALL_RSP}) {
        EXPECT_EQ(this->take(RIB_CLIENT_VSAN_MANAGER, oper, RIB_ACTION_ADD, {2}).result, RIB_BAD_PARAMETERS) << oper;
    }
    EXPECT_TRUE(this->told.take().empty());
}

TYPED_TEST(operations, when_a_route_of_a_vsan_changed_last_is_known) {
    testing::send(this->rib, {mine, 1, RIB_OPER_UPDATE, {}, false, 70}, records<TypeParam>(RIB_ACTION_ADD, {2, 3}));
    EXPECT_EQ(this->rib.vsans().at(1).changed, 70U);
    testing::send(this->rib, {mine, 1, RIB_OPER_REPLAY, {}, false, 80}, TypeParam());
    EXPECT_EQ(this->rib.vsans().at(1).changed, 70U);
    testing::send(this->rib, {mine, 1, RIB_OPER_REMOVE, {}, false, 90}, records<TypeParam>(RIB_ACTION_ADD, {2}));
    EXPECT_EQ(this->rib.vsans().at(1).changed, 90U);
}

/// Every allocation fails once: an operation has happened whole or not at all, record by record.
TYPED_TEST(operations, what_memory_fails_for_has_not_happened) {
    const auto first = records<TypeParam>(RIB_ACTION_ADD, {2, 3});
    auto wider = first;
    if constexpr (std::is_same_v<TypeParam, unicast_records>) {
        wider[0].what.hops.push_back({0x01020001, 3});
    } else if constexpr (std::is_same_v<TypeParam, multicast_records>) {
        wider[0].what.members.resize(40, 0x01020001);
    } else {
        wider[0].what.hops.insert(wider[0].what.hops.end(), {0, 0x01020001});
    }
    bool happened = true;
    uint32_t refused = 0;
    for (size_t n = 1; happened; n++) {
        state here;
        uint32_t taken = 0;
        happened = false;
        for (const auto &what : {first, wider}) {
            const testing::failing_allocation failing(n);
            const auto answer = testing::send(here, {mine, 1, RIB_OPER_MERGE}, what);
            happened |= failing.happened();
            EXPECT_EQ(answer.result == RIB_OK, answer.accepted == 2U) << n;
            EXPECT_TRUE(answer.result == RIB_OK || answer.result == RIB_OUT_OF_MEMORY) << n;
            refused += 2 - answer.accepted;
            taken = std::max(taken, answer.accepted);
            EXPECT_EQ(here.memory().routes, answer.held);
        }
        EXPECT_GE(here.memory().routes, taken);
        const uint32_t held = here.memory().routes;
        EXPECT_EQ(testing::send(here, {mine, 1, RIB_OPER_REMOVE_ALL}, TypeParam()).accepted, held);
        EXPECT_EQ(here.memory().path_units + here.memory().positions + here.behind().ports.count(), 0U);
        EXPECT_TRUE(here.vsans().empty());
        EXPECT_TRUE(here.clients().all().empty());
    }
    EXPECT_GE(refused, 4U);
}

class versions : public ::testing::Test {
  protected:
    update_answer take(uint32_t uuid, uint32_t oper, std::vector<uint32_t> list = {}, uint32_t vsan = 1) {
        return testing::send(rib, {uuid, vsan, oper, list}, unicast_records());
    }
    state rib;
};

TEST_F(versions, a_list_takes_the_place_of_the_one_before_until_it_is_deleted) {
    EXPECT_EQ(take(mine, RIB_OPER_ADD_VERSION, {1, 2, 3}), (update_answer{RIB_OK, RIB_OPER_ADD_VERSION, 1, 3, 0}));
    take(mine, RIB_OPER_ADD_VERSION, {9}, 2);
    take(other, RIB_OPER_ADD_VERSION, {8});
    EXPECT_EQ(take(mine, RIB_OPER_ADD_VERSION, {4, 5}).accepted, 2U);
    EXPECT_EQ(rib.versions().all().at({mine, 1}), (numbers{4, 5}));
    EXPECT_EQ(rib.versions().all().at({mine, 2}), (numbers{9}));
    EXPECT_EQ(rib.versions().all().at({other, 1}), (numbers{8}));
    EXPECT_EQ(take(mine, RIB_OPER_DELETE_VERSION), (update_answer{RIB_OK, RIB_OPER_DELETE_VERSION, 1, 2, 0}));
    EXPECT_EQ(take(mine, RIB_OPER_DELETE_VERSION).result, RIB_NO_ENTRY);
    EXPECT_EQ(rib.versions().all().size(), 2U);
}

TEST_F(versions, there_are_so_many_lists_and_no_more) {
    for (uint32_t i = 0; i < version_lists::most; i++) {
        ASSERT_EQ(take(1000 + i, RIB_OPER_ADD_VERSION, {i}).result, RIB_OK);
    }
    EXPECT_EQ(take(mine, RIB_OPER_ADD_VERSION, {1}).result, RIB_HW_FULL);
    EXPECT_EQ(take(1000, RIB_OPER_ADD_VERSION, {2}).result, RIB_OK) << "a list that is there may change";
    EXPECT_EQ(take(mine, RIB_OPER_ADD_VERSION, std::vector<uint32_t>(241)).result, RIB_BAD_PARAMETERS);
}

TEST_F(versions, other_tables_have_none) {
    for (const uint32_t oper : {RIB_OPER_ADD_VERSION, RIB_OPER_DELETE_VERSION}) {
        EXPECT_EQ(testing::send(rib, {mine, 1, oper}, multicast_records()).result, RIB_NOT_SUPPORTED);
        EXPECT_EQ(testing::send(rib, {mine, 1, oper}, label_records()).result, RIB_NOT_SUPPORTED);
    }
}

TEST_F(versions, a_list_for_which_memory_fails_is_as_it_was) {
    take(mine, RIB_OPER_ADD_VERSION, {1});
    const std::vector<uint32_t> list{7};
    {
        const testing::failing_allocation failing(1);
        EXPECT_EQ(testing::send(rib, {mine, 1, RIB_OPER_ADD_VERSION, list}, unicast_records()).result,
                  RIB_OUT_OF_MEMORY);
    }
    EXPECT_EQ(rib.versions().all().at({mine, 1}), (numbers{1}));
}

} // namespace
} // namespace ribkit::rib
