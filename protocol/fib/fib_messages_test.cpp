// Updates and answers of modules against the same ones put together byte after byte, and back.
#include "protocol/fib/fib_messages.h"

#include "fib_codec.h"
#include "protocol/fib/fib_checks.h"
#include "rib_codes.h"
#include "testing/literal_updates.h"

#include <gtest/gtest.h>

namespace ribkit::protocol {
namespace {

bytes words(std::initializer_list<uint32_t> numbers) {
    bytes all;
    for (const uint32_t number : numbers) {
        testing::append_word(all, number);
    }
    return all;
}

void append(bytes &all, const bytes &more) { all.insert(all.end(), more.begin(), more.end()); }

/// Zeroes up to a size.
bytes filled(bytes some, size_t size) {
    some.resize(size);
    return some;
}

const model::route way_over_two{500, RIB_FLAG_DIRECT, {{7, 2}, {8, 3}}, {1, 2, 3, 4, 5, 6, 7, 8}};
// Taken off: 1; pushed at interface 8: two labels.
const model::label_route pushing{{}, {0x01022000, 8, 0x11000, 0x22100}};

TEST(fib_messages, a_unicast_update_is_the_bytes_that_its_format_says) {
    bytes room(1000, 0xee);
    unicast_fib_update update(room, {FIB_OPER_UPDATE, 20, 77});
    EXPECT_TRUE(add_path(update, {0x0a0b00, 0xffff00}, way_over_two, pushing));
    EXPECT_TRUE(add_key(update, {0x0affff, 0xffffff}));
    EXPECT_FALSE(add_key(update, {0x0b0000, 0xff0000})) << "no room";
    room.resize(update.size());
    bytes expected = words({1, 20, 2, 77});
    append(expected, filled(words({4, 0x000a0b00, 0xffff00, 0x01020304, 500, 1, 2, 0x00000040, 7, 0, 0, 0, 0x01022060,
                                   8, 0x11000, 0x22100}),
                            348));
    append(expected, filled(words({7, 0x0affff, 0xffffff}), 348));
    EXPECT_EQ(room, expected);
    EXPECT_EQ(check_unicast_fib_update(room, nullptr), RIB_OK);
}

TEST(fib_messages, a_multicast_update_is_the_bytes_that_its_format_says) {
    bytes room(16 + 32 + 19, 0xee);
    multicast_fib_update update(room, {FIB_OPER_MERGE, 20, 78});
    const uint32_t members[] = {5, 6, 7};
    EXPECT_TRUE(add_path(update, {0, 0}, std::span<const uint32_t>(members)));
    EXPECT_FALSE(add_key(update, {1, 1})) << "no room";
    room.resize(update.size());
    EXPECT_EQ(room, words({0x20, 20, 1, 78, 0, 0, 0, 0, 3, 5, 6, 7}));
    EXPECT_EQ(check_multicast_fib_update(room, nullptr), RIB_OK);
}

TEST(fib_messages, a_label_update_is_the_bytes_that_its_format_says) {
    bytes room(1000, 0xee);
    label_fib_update update(room, {FIB_OPER_UPDATE, 20, 79});
    EXPECT_TRUE(add_path(update, {20, RIB_ROUTE_LABEL, 0, {0, 0}, 2, {0x1000, 0x2100}}, pushing));
    EXPECT_TRUE(add_key(update, {20, RIB_ROUTE_SRC_LABEL, 9, {0, 0}, 0, {}}));
    room.resize(update.size());
    bytes expected = words({1, 20, 2, 79});
    append(expected,
           filled(words({0x40000, 0, 0, 0, 0, 0, 2, 1, 0x1000, 0x2100, 0x01022000, 8, 0x11000, 0x22100}), 360));
    append(expected, filled(words({0x10000, 9}), 360));
    EXPECT_EQ(room, expected);
    EXPECT_EQ(check_label_fib_update(room, nullptr), RIB_OK);
}

TEST(fib_messages, a_path_is_what_the_converters_make_of_it) {
    bytes room(1000);
    unicast_fib_update update(room, {FIB_OPER_UPDATE, 20, 77});
    const model::fib_unicast what{.carried = {1, 0xf0, 3, 4}, .metric = 5, .flag = 1};
    for (const model::destination to : {model::destination{0xfffffc, 0xffffff}, {0x0a0000, 0xff0000}}) {
        add_path(update, to, what);
    }
    for (uint32_t i = 0; i < update.paths(); i++) {
        uint8_t *sent = room.data() + 16 + size_t{i} * 348;
        bytes host(348);
        bytes again(348);
        fib_ntoh_fcu_path(sent, host.data());
        way_words ways;
        uint32_t kind = 0;
        std::memcpy(&kind, host.data(), sizeof(kind));
        EXPECT_EQ(path_of(codec::view<wire::fcu_path>(sent), ways).what.kind, kind);
        fib_hton_fcu_path(host.data(), again.data());
        EXPECT_EQ(bytes(sent, sent + 348), again);
    }
}

TEST(fib_messages, a_unicast_path_comes_back) {
    bytes room(1000);
    unicast_fib_update update(room, {FIB_OPER_UPDATE, 20, 77});
    add_path(update, {0x0a0b00, 0xffff00}, way_over_two, pushing);
    const codec::view<wire::fib_update> head(room.data());
    EXPECT_EQ(head_of(head), (model::fib_head{FIB_OPER_UPDATE, 20, 77}));
    EXPECT_EQ(paths_of(head), 1U);
    way_words ways;
    const auto [to, what] = path_of(codec::view<wire::fcu_path>(room.data() + head.size()), ways);
    EXPECT_EQ(to, (model::destination{0x0a0b00, 0xffff00}));
    EXPECT_EQ(what.kind, 0x02000000U);
    EXPECT_EQ(what.carried, (std::array<uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_EQ(what.metric, 500U);
    EXPECT_EQ(what.flag, RIB_FLAG_DIRECT);
    const std::vector<uint32_t> expected{0x40, 7, 0x01022060, 8, 0x11000, 0x22100};
    EXPECT_EQ(std::vector(what.ways.begin(), what.ways.end()), expected);
    EXPECT_EQ(model::domain_of_ctrl(expected[2]), 3U);
    unicast_fib_update second(room, {FIB_OPER_UPDATE, 20, 77});
    bytes before(room.begin() + 16, room.begin() + 364);
    add_path(second, to, what);
    EXPECT_EQ(bytes(room.begin() + 16, room.begin() + 364), before) << "what a module has is what it was sent";
}

TEST(fib_messages, keys_of_other_tables_come_back) {
    bytes room(1000);
    multicast_fib_update groups(room, {FIB_OPER_UPDATE, 20, 77});
    const uint32_t members[] = {5, 6};
    add_path(groups, {0xff0001, 0xff00ff}, std::span<const uint32_t>(members));
    std::vector<uint32_t> found;
    const auto group = path_of(codec::view<wire::fcm_path>(room.data() + 16), found);
    EXPECT_EQ(group.to, (model::destination{0xff0001, 0xff00ff}));
    EXPECT_EQ(found, (std::vector<uint32_t>{5, 6}));
    const model::label_key keys[] = {{20, RIB_ROUTE_SRC_LABEL, 9, {0, 0}, 1, {0x1000}},
                                     {20, RIB_ROUTE_LABEL, 0, {0, 0}, 1, {0x1000}},
                                     {20, RIB_ROUTE_LABEL, 0, {0, 0}, 2, {0x1000, 0x2000}},
                                     {20, RIB_ROUTE_FC_LABEL, 0, {0xa0000, 0xff0000}, 0, {}}};
    for (const model::label_key &key : keys) {
        label_fib_update labels(room, {FIB_OPER_UPDATE, 20, 77});
        add_path(labels, key, pushing);
        way_words ways;
        const auto back = path_of(codec::view<wire::fcl_path>(room.data() + 16), 20, ways);
        EXPECT_EQ(back.key, key);
        EXPECT_TRUE(std::equal(back.what.ways.begin(), back.what.ways.end(), pushing.hops.begin(), pushing.hops.end()));
    }
}

TEST(fib_messages, of_more_ways_than_a_path_has_the_first_are_sent) {
    bytes room(1000);
    unicast_fib_update update(room, {FIB_OPER_UPDATE, 20, 77});
    model::route wide{1, 0, {}};
    model::label_route ways;
    for (uint32_t i = 1; i <= 20; i++) {
        wide.hops.push_back({i, i});
        ways.hops.insert(ways.hops.end(), {0x10000, i, 0x1000 * i});
    }
    ASSERT_TRUE(add_path(update, {0xa0000, 0xff0000}, wide, ways));
    way_words words_of_ways;
    const auto path = path_of(codec::view<wire::fcu_path>(room.data() + 16), words_of_ways);
    EXPECT_EQ(model::count_label_hops(path.what.ways), 16U);
    EXPECT_EQ(check_unicast_fib_update(std::span(room).first(update.size()), nullptr), RIB_OK);
}

TEST(fib_messages, ways_of_more_than_three_labels_fit_no_path) {
    EXPECT_TRUE(fits_path(pushing));
    EXPECT_TRUE(fits_path(model::label_route{{}, {0x30000, 8, 1, 2, 3}}));
    EXPECT_FALSE(fits_path(model::label_route{{}, {0, 8, 0x40000, 8, 1, 2, 3, 4}}));
}

TEST(fib_messages, an_answer_is_its_response_behind_the_keys_without_effect) {
    const model::fib_answer said{RIB_HW_FULL, FIB_OPER_UPDATE, 20, 3, 77};
    const bytes response = words({RIB_HW_FULL, 1, 20, 3, 77});
    EXPECT_EQ(fib_answer(said, {}), response);
    const std::vector<model::fib_fault<model::route_key>> routes{{FIB_VERF_NOT_IN_HW, {20, {0xa0000, 0xff0000}}}};
    bytes expected = words({RIB_HW_FULL, 1, 20, 77, 1, 0x200, 20, 0xa0000, 0xff0000});
    append(expected, response);
    EXPECT_EQ(fib_answer(said, routes), expected);
    EXPECT_EQ(faults_of(codec::view<wire::fcu_rsp_path>(expected.data())), routes);
    EXPECT_EQ(check_unicast_fib_answer(expected, nullptr), RIB_OK);
    EXPECT_EQ(answer_of(codec::view<wire::fib_rsp>(expected.data() + 36)), said);
    expected = words({RIB_HW_FULL, 1, 20, 77, 1, 0x200, 20, 0xa0000});
    append(expected, response);
    EXPECT_EQ(fib_multicast_answer(said, routes), expected);
    EXPECT_EQ(check_multicast_fib_answer(expected, nullptr), RIB_OK);
}

TEST(fib_messages, a_label_answer_names_labels) {
    const model::fib_answer said{RIB_HW_FULL, FIB_OPER_UPDATE, 20, 3, 77};
    const std::vector<model::fib_fault<model::label_key>> faults{
        {FIB_VERF_BAD_IN_FIB, {20, RIB_ROUTE_SRC_LABEL, 9, {0, 0}, 1, {0x1000}}},
        {FIB_VERF_NOT_IN_HW, {20, RIB_ROUTE_FC_LABEL, 0, {0xa0000, 0xff0000}, 2, {0x1000, 0x2000}}}};
    bytes expected = words({RIB_HW_FULL, 1, 20,    77, 2,       0x80,    20,       0x10000, 9,      0,     1,
                            0x1000,      0, 0x200, 20, 0x80000, 0xa0000, 0xff0000, 2,       0x1000, 0x2000});
    append(expected, words({RIB_HW_FULL, 1, 20, 3, 77}));
    EXPECT_EQ(fib_label_answer(said, faults), expected);
    EXPECT_EQ(faults_of(codec::view<wire::fcl_rsp_path>(expected.data())), faults);
    EXPECT_EQ(check_label_fib_answer(expected, nullptr), RIB_OK);
}

/// Every shorter message, and a longer one, is refused.
void expect_exact(whole_check *check, bytes message) {
    ASSERT_EQ(check(message, nullptr), RIB_OK);
    for (size_t size = 0; size < message.size(); size++) {
        rib_check_report why{};
        const bytes cut(message.begin(), message.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_EQ(check(cut, &why), RIB_BAD_PARAMETERS) << size;
        EXPECT_LE(why.allowed, size);
    }
    message.push_back(0);
    EXPECT_EQ(check(message, nullptr), RIB_EXCESS_DATA);
}

TEST(fib_messages, cut_anywhere_are_refused) {
    bytes room(1000);
    unicast_fib_update routes(room, {FIB_OPER_UPDATE, 20, 77});
    add_path(routes, {0x0a0b00, 0xffff00}, way_over_two, pushing);
    add_key(routes, {0x0b0000, 0xff0000});
    expect_exact(check_unicast_fib_update, {room.begin(), room.begin() + routes.size()});
    multicast_fib_update groups(room, {FIB_OPER_UPDATE, 20, 77});
    const uint32_t members[] = {5, 6};
    add_path(groups, {0xff0001, 0xff00ff}, std::span<const uint32_t>(members));
    add_path(groups, {0xff0002, 0xff00ff}, std::span<const uint32_t>(members));
    expect_exact(check_multicast_fib_update, {room.begin(), room.begin() + groups.size()});
    label_fib_update labels(room, {FIB_OPER_UPDATE, 20, 77});
    add_path(labels, {20, RIB_ROUTE_LABEL, 0, {0, 0}, 1, {0x1000}}, pushing);
    expect_exact(check_label_fib_update, {room.begin(), room.begin() + labels.size()});
}

TEST(fib_messages, with_counts_too_large_are_refused_where_they_stand) {
    bytes room(16 + 2 * 348);
    unicast_fib_update update(room, {FIB_OPER_UPDATE, 20, 77});
    add_key(update, {0x0a0000, 0xff0000});
    add_path(update, {0x0b0000, 0xff0000}, way_over_two);
    room[16 + 348 + 27] = 17;
    rib_check_report why{};
    EXPECT_EQ(check_unicast_fib_update(room, &why), RIB_BAD_PARAMETERS);
    EXPECT_EQ(why.offset, 16U + 348 + 24);
    EXPECT_EQ(why.found, 17U);
    room[16 + 348 + 27] = 2;
    room[11] = 3; // a path that is not there
    EXPECT_EQ(check_unicast_fib_update(room, &why), RIB_BAD_PARAMETERS);
    EXPECT_EQ(why.allowed, room.size());
    room[8] = 0xff;
    EXPECT_EQ(check_unicast_fib_update(room, nullptr), RIB_BAD_PARAMETERS);
}

} // namespace
} // namespace ribkit::protocol
