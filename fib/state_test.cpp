// What a module does with single updates, and how little an entry costs.
#include "fib/update.h"

#include "testing/alloc_failure.h"
#include "testing/random_routes.h"

#include <gtest/gtest.h>
#include <malloc.h>

namespace ribkit::fib {
namespace {

using unicast_paths = std::vector<std::pair<model::route_key, model::fib_unicast>>;

constexpr uint32_t vsan = 7;
constexpr uint32_t two_ways[] = {0x20, 0x01010001, 0x40, 0x01010002};
constexpr model::route_key domain(uint32_t number) { return {vsan, {number << 16, RIB_MASK_DOMAIN}}; }

/// Sends updates of one VSAN, each with the next number.
class sender {
  public:
    explicit sender(state &fib) : fib_(fib) {}

    table_answer<unicast> send(uint32_t oper, const unicast_paths &paths = {}, uint32_t to = vsan) {
        return take_update<unicast>(fib_, {oper, to, ++sequence_}, paths);
    }

  private:
    state &fib_;
    uint32_t sequence_ = 0;
};

class fib_state : public ::testing::Test {
  protected:
    state fib{{.unicast = 3, .multicast = 1, .label = 1, .rewrite = 1, .per_vsan = 0}};
    sender rib{fib};
};

TEST_F(fib_state, what_it_is_given_is_what_it_has) {
    EXPECT_EQ(rib.send(FIB_OPER_UPDATE, {{domain(1), {.metric = 5, .ways = two_ways}}}).said,
              (model::fib_answer{RIB_OK, FIB_OPER_UPDATE, vsan, 1, 1}));
    const auto &[key, held] = *fib.entries<unicast>().all().begin();
    EXPECT_EQ(key, domain(1));
    const auto what = table<unicast>::read(held);
    EXPECT_EQ(what.metric, 5U);
    EXPECT_TRUE(std::equal(what.ways.begin(), what.ways.end(), std::begin(two_ways), std::end(two_ways)));
}

TEST_F(fib_state, what_has_no_room_is_named_and_the_rest_is_there) {
    const auto answer = rib.send(FIB_OPER_UPDATE,
                                 {{domain(1), {}}, {domain(2), {}}, {domain(3), {}}, {domain(4), {}}, {domain(1), {}}});
    EXPECT_EQ(answer.said, (model::fib_answer{RIB_HW_FULL, FIB_OPER_UPDATE, vsan, 4, 1}));
    EXPECT_EQ(answer.faults, (std::vector<model::fib_fault<model::route_key>>{{FIB_VERF_NOT_IN_HW, domain(4)}}));
    rib.send(FIB_OPER_REMOVE, {{domain(2), {}}});
    EXPECT_EQ(rib.send(FIB_OPER_UPDATE, {{domain(4), {}}}).said.result, RIB_OK) << "there is room again";
}

TEST_F(fib_state, a_merge_leaves_what_it_named) {
    fib.reach();
    EXPECT_EQ(fib.now(), model::fib_state::ready);
    rib.send(FIB_OPER_UPDATE, {{domain(1), {}}, {domain(2), {}}});
    EXPECT_EQ(fib.now(), model::fib_state::active);
    rib.send(FIB_OPER_BEGIN_MERGE);
    EXPECT_EQ(fib.now(), model::fib_state::loading);
    rib.send(FIB_OPER_MERGE, {{domain(2), {}}});
    rib.send(FIB_OPER_UPDATE, {{domain(3), {}}});
    EXPECT_EQ(rib.send(FIB_OPER_END_MERGE).said, (model::fib_answer{RIB_OK, FIB_OPER_END_MERGE, vsan, 2, 5}))
        << "an update names nothing";
    EXPECT_EQ(fib.now(), model::fib_state::active);
    EXPECT_EQ(fib.entries<unicast>().count(), 1U);
    EXPECT_EQ(rib.send(FIB_OPER_END_MERGE).said.result, RIB_NO_ENTRY) << "none has begun";
}

TEST_F(fib_state, what_was_begun_by_a_rib_that_is_gone_is_given_up) {
    fib.reach();
    rib.send(FIB_OPER_UPDATE, {{domain(1), {}}});
    rib.send(FIB_OPER_BEGIN_MERGE, {}, 0);
    fib.lose();
    EXPECT_EQ(fib.now(), model::fib_state::isolated);
    EXPECT_EQ(rib.send(FIB_OPER_END_MERGE, {}, 0).said.result, RIB_NO_ENTRY);
    EXPECT_EQ(fib.entries<unicast>().count(), 1U);
    fib.reach();
    EXPECT_EQ(fib.now(), model::fib_state::active);
}

TEST_F(fib_state, what_comes_late_or_twice_changes_nothing) {
    take_update<unicast>(fib, {FIB_OPER_UPDATE, vsan, 9}, unicast_paths{{domain(1), {.metric = 2}}});
    for (const uint32_t late : {9U, 8U}) {
        const auto answer = take_update<unicast>(fib, {FIB_OPER_UPDATE, vsan, late}, unicast_paths{{domain(1), {}}});
        EXPECT_EQ(answer.said.result, RIB_INDEX_USED);
        EXPECT_EQ(answer.faults.size(), 1U);
    }
    EXPECT_EQ(table<unicast>::read(fib.entries<unicast>().all().begin()->second).metric, 2U);
    EXPECT_EQ(fib.sequence(), 9U);
}

TEST_F(fib_state, a_comparison_finds_what_differs_and_changes_nothing) {
    rib.send(FIB_OPER_UPDATE, {{domain(1), {}}, {domain(2), {}}, {domain(3), {}}});
    rib.send(FIB_OPER_BEGIN_VERIFY);
    const auto answer = rib.send(FIB_OPER_VERIFY, {{domain(1), {}}, {domain(2), {.metric = 1}}, {domain(4), {}}});
    EXPECT_EQ(answer.said.result, RIB_OK);
    EXPECT_EQ(answer.said.accepted, 1U);
    EXPECT_EQ(answer.faults, (std::vector<model::fib_fault<model::route_key>>{{FIB_VERF_BAD_IN_FIB, domain(2)},
                                                                              {FIB_VERF_NOT_IN_FIB, domain(4)}}));
    EXPECT_EQ(rib.send(FIB_OPER_END_VERIFY).faults,
              (std::vector<model::fib_fault<model::route_key>>{{FIB_VERF_NOT_IN_RIB, domain(3)}}));
    EXPECT_EQ(fib.differences<unicast>(), (std::map<model::route_key, uint32_t>{{domain(2), FIB_VERF_BAD_IN_FIB},
                                                                                {domain(3), FIB_VERF_NOT_IN_RIB},
                                                                                {domain(4), FIB_VERF_NOT_IN_FIB}}));
    EXPECT_EQ(fib.entries<unicast>().count(), 3U);
}

TEST_F(fib_state, a_flow_takes_a_way_of_the_longest_match) {
    rib.send(FIB_OPER_UPDATE, {{{vsan, {0x0a0000, RIB_MASK_DOMAIN}}, {.ways = two_ways}},
                               {{vsan, {0x0a0101, RIB_MASK_PORT}}, {.ways = std::span(two_ways).first(2)}}});
    EXPECT_EQ(fib.way_of({vsan, 1, 0x0a0101, 1})[1], 0x01010001U);
    std::set<uint32_t> ways;
    for (uint16_t exchange = 0; exchange < 64; exchange++) {
        ways.insert(fib.way_of({vsan, 1, 0x0a0102, exchange})[1]);
    }
    EXPECT_EQ(ways, (std::set<uint32_t>{0x01010001, 0x01010002}));
    EXPECT_TRUE(fib.way_of({vsan, 1, 0x0b0000, 1}).empty());
}

TEST_F(fib_state, vsans_have_what_was_said_of_them_last) {
    using model::flow_balance;
    using model::vsan_state;
    const std::pair<uint32_t, model::vsan_attributes> said[] = {
        {7, {vsan_state::suspended, flow_balance::source_and_destination, true, 0}}, {0, {{}, {}, false, 300}}};
    EXPECT_EQ(fib.take_vsans(1, said), RIB_OK);
    EXPECT_EQ(fib.vsan(7),
              (model::vsan_attributes{vsan_state::suspended, flow_balance::source_and_destination, true, 300}));
    EXPECT_EQ(fib.vsan(8).latency, 300U);
    const std::pair<uint32_t, model::vsan_attributes> unchanged[] = {{7, {vsan_state::no_change, {}, false, 5}}};
    EXPECT_EQ(fib.take_vsans(2, unchanged), RIB_OK);
    EXPECT_EQ(fib.vsan(7),
              (model::vsan_attributes{vsan_state::suspended, flow_balance::source_and_destination, false, 5}));
    EXPECT_EQ(fib.take_vsans(2, said), RIB_INDEX_USED);
    const std::pair<uint32_t, model::vsan_attributes> none[] = {{4096, {}}};
    EXPECT_EQ(fib.take_vsans(3, none), RIB_BAD_PARAMETERS);
}

TEST_F(fib_state, rewrites_are_added_and_removed) {
    const rewrite one{{vsan, 1, {0x0a0000, RIB_MASK_DOMAIN}, {0, 0}}, {8, 0x0b0001, 0}};
    const rewrite other{{vsan, 2, {0x0a0000, RIB_MASK_DOMAIN}, {0, 0}}, {8, 0x0b0001, 0}};
    const auto take = [&](uint32_t oper, uint32_t sequence, std::vector<rewrite> paths, uint32_t in = vsan) {
        const auto answer = fib.take_rewrites({oper, in, sequence}, paths);
        return std::pair(answer.result, answer.accepted);
    };
    EXPECT_EQ(take(FIB_OPER_UPDATE, 1, {one, other}), std::pair(RIB_HW_FULL, 1U));
    EXPECT_EQ(fib.all_rewrites().all().at(one.key), one.what);
    EXPECT_EQ(take(FIB_OPER_UPDATE, 2, {one}, 9), std::pair(RIB_BAD_PARAMETERS, 0U)) << "of another VSAN";
    EXPECT_EQ(take(FIB_OPER_MERGE, 3, {one}), std::pair(RIB_NOT_SUPPORTED, 0U));
    EXPECT_EQ(take(FIB_OPER_REMOVE, 4, {other}), std::pair(RIB_OK, 1U));
    EXPECT_EQ(take(FIB_OPER_REMOVE_ALL, 5, {}, 0), std::pair(RIB_OK, 1U));
    EXPECT_TRUE(fib.all_rewrites().all().empty());
}

// Whoever asked hears of it, and finds what was there before.
TEST_F(fib_state, what_there_is_no_memory_for_changes_nothing) {
    using testing::failing_allocation;
    constexpr uint32_t one_way[] = {0x20, 0x01010003};
    vsan_shares shares(0);
    table<unicast> entries(3, shares);
    EXPECT_EQ(entries.put(domain(1), {.ways = two_ways}, false), RIB_OK);
    const std::vector<rewrite> path{{{vsan, 1, {0x0a0000, RIB_MASK_DOMAIN}, {0, 0}}, {8, 0x0b0001, 0}}};
    const std::pair<uint32_t, model::vsan_attributes> vsans[] = {{7, {model::vsan_state::suspended, {}, true, 1}}};
    uint32_t results[4] = {};
    {
        const failing_allocation none{1, failing_allocation::how::onwards};
        results[0] = entries.put(domain(1), {.ways = one_way}, false);
        results[1] = entries.put(domain(2), {.ways = two_ways}, false);
        results[2] = fib.take_rewrites({FIB_OPER_UPDATE, vsan, 1}, path).result;
        results[3] = fib.take_vsans(2, vsans);
    }
    for (const uint32_t result : results) {
        EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    }
    EXPECT_EQ(entries.all().size(), 1U);
    EXPECT_EQ(table<unicast>::read(entries.all().begin()->second).ways.size(), std::size(two_ways));
    EXPECT_TRUE(fib.all_rewrites().all().empty());
    EXPECT_EQ(fib.vsan(7).latency, 0U);
    EXPECT_EQ(entries.put(domain(2), {.ways = two_ways}, false), RIB_OK);
}

constexpr rewrite into_8(uint32_t from, uint32_t if_index) {
    return {{from, if_index, {0x0a0000, RIB_MASK_DOMAIN}, {0, 0}}, {8, 0x0b0001, 0}};
}

TEST(fib_rewrites, lead_from_a_vsan_to_a_vsan) {
    rewrites few(1);
    for (const uint32_t none : {0U, RIB_LAST_VSAN + 1}) {
        rewrite to_none = into_8(vsan, 1);
        to_none.what.vsan = none;
        EXPECT_EQ(few.put(into_8(none, 1)), RIB_BAD_PARAMETERS);
        EXPECT_EQ(few.put(to_none), RIB_BAD_PARAMETERS);
    }
    EXPECT_TRUE(few.all().empty());
    rewrite last = into_8(RIB_LAST_VSAN, 1);
    EXPECT_EQ(few.put(last), RIB_OK);
    last.what.vsan = RIB_LAST_VSAN;
    EXPECT_EQ(few.put(last), RIB_OK) << "no more than before";
    EXPECT_EQ(few.put(into_8(vsan, 1)), RIB_HW_FULL);
    EXPECT_EQ(few.all(), (rewrites::entries{{last.key, last.what}}));
}

TEST(fib_rewrites, are_of_one_vsan_and_what_is_wrong_first_is_said) {
    state fib{{.unicast = 1, .multicast = 1, .label = 1, .rewrite = 2, .per_vsan = 0}};
    const auto take = [&](uint32_t oper, uint32_t in, uint32_t sequence, std::vector<rewrite> paths) {
        const auto answer = fib.take_rewrites({oper, in, sequence}, paths);
        return std::pair(answer.result, answer.accepted);
    };
    for (const uint32_t none : {0U, RIB_LAST_VSAN + 1}) {
        EXPECT_EQ(take(FIB_OPER_UPDATE, none, 1, {}), std::pair(RIB_BAD_PARAMETERS, 0U));
    }
    EXPECT_EQ(take(FIB_OPER_REMOVE_ALL, vsan, 1, {into_8(vsan, 1)}), std::pair(RIB_BAD_PARAMETERS, 0U));
    EXPECT_EQ(take(FIB_OPER_UPDATE, vsan, 1, {into_8(9, 1), into_8(vsan, 1), into_8(vsan, 2), into_8(vsan, 3)}),
              std::pair(RIB_BAD_PARAMETERS, 2U));
    EXPECT_EQ(take(FIB_OPER_REMOVE, vsan, 2, {into_8(vsan, 2)}), std::pair(RIB_OK, 1U));
    EXPECT_EQ(take(FIB_OPER_UPDATE, 9, 3, {into_8(9, 1)}), std::pair(RIB_OK, 1U));
    EXPECT_EQ(take(FIB_OPER_REMOVE_ALL, vsan, 4, {}), std::pair(RIB_OK, 1U));
    EXPECT_EQ(fib.all_rewrites().all(), (rewrites::entries{{into_8(9, 1).key, into_8(9, 1).what}}));
}

TEST(fib_kinds, ways_are_whole_and_push_no_more_labels_than_a_path_has_room_for) {
    using words = std::vector<uint32_t>;
    const auto is_sound = [](const words &ways) { return unicast::is_sound({}, {.ways = ways}); };
    const auto pushing = [](uint32_t labels) { return labels << 16; };
    EXPECT_TRUE(is_sound({}));
    EXPECT_TRUE(is_sound({0, 1}));
    EXPECT_FALSE(is_sound({0}));
    EXPECT_FALSE(is_sound({0, 1, 0}));
    EXPECT_TRUE(is_sound({pushing(2), 1, 5, 6}));
    EXPECT_FALSE(is_sound({pushing(2), 1, 5}));
    words ways{pushing(model::most_path_labels), 1};
    ways.resize(2 + model::most_path_labels);
    EXPECT_TRUE(is_sound(ways));
    ways[0] = pushing(model::most_path_labels + 1);
    ways.push_back(7);
    EXPECT_FALSE(is_sound(ways));
    EXPECT_TRUE(is_sound(words(size_t{2} * model::most_paths)));
    EXPECT_FALSE(is_sound(words(size_t{2} * (model::most_paths + 1))));
}

/// Bytes that the program has from the allocator; 0 where another one stands in.
size_t allocated() {
    const struct mallinfo2 now = mallinfo2();
    return now.uordblks + now.hblkhd;
}

TEST(fib_room, an_entry_costs_less_than_400_bytes_at_rest) {
    constexpr uint32_t entries = 50000;
    const size_t before = allocated();
    state fib;
    const uint32_t most_words = 16 * 2;
    std::vector<uint32_t> wide;
    while (wide.size() < most_words) {
        wide.insert(wide.end(), std::begin(two_ways), std::end(two_ways));
    }
    for (uint32_t i = 0; i < entries; i++) {
        const unicast_paths path{{{vsan, {i, RIB_MASK_PORT}}, {.ways = wide}}};
        ASSERT_EQ(take_update<unicast>(fib, {FIB_OPER_UPDATE, vsan, i + 1}, path).said.accepted, 1U);
    }
    const size_t held = allocated() - before;
    if (held == 0) {
        GTEST_SKIP() << "the allocator does not count";
    }
    EXPECT_GT(held, entries * wide.size() * sizeof(uint32_t));
    EXPECT_LT(held, entries * size_t{400}) << static_cast<double>(held) / entries << " bytes an entry of 16 ways";
    RecordProperty("bytes_an_entry", std::to_string(held / entries));
}

} // namespace
} // namespace ribkit::fib
