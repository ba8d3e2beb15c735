// What is written is what is read, and stands where clients of other makes look for it.
#include "protocol/queries.h"
#include "protocol/uses.h"

#include "protocol/query_kinds.h"
#include "rib_check.h"

#include <gtest/gtest.h>
#include <vector>

namespace ribkit::protocol {
namespace {

template <size_t N> std::vector<uint32_t> words_of(const std::array<uint8_t, N> &bytes) {
    std::vector<uint32_t> words;
    for (size_t at = 0; at < N; at += 4) {
        words.push_back(uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 |
                        bytes[at + 3]);
    }
    return words;
}

using words = std::vector<uint32_t>;

TEST(queries, of_unicast_routes_have_the_owner_beside_the_vsan) {
    const unicast_query query{12, 0x100, 7, {4095, {0x010203, 0xffffff}}, RIBKIT_LAST_CLIENT};
    const auto bytes = encode(query);
    EXPECT_EQ(words_of(bytes), (words{12, 0x100, 7, 0xffffffff, 0x010203, 0xffffff}));
    EXPECT_EQ(rib_check_fcurt_query(bytes.data(), bytes.size(), nullptr), RIB_OK);
    EXPECT_EQ(read(codec::view<wire::fcurt_query>(bytes.data())), query);
    EXPECT_EQ(words_of(encode(unicast_query{1, 2, 3, {4, {5, 6}}})), (words{1, 2, 3, 4, 5, 6}));
}

TEST(queries, of_multicast_routes) {
    const multicast_query query{14, 0x2, 100, {20, {0x010203, 0xffffff}}};
    const auto bytes = encode(query);
    EXPECT_EQ(words_of(bytes), (words{14, 20, 0x2, 0x010203, 0xffffff, 100}));
    EXPECT_EQ(read(codec::view<wire::fcmrt_query>(bytes.data())), query);
}

TEST(queries, of_label_routes_have_what_the_type_of_the_first_has) {
    const label_query by_source{13, 0x11, 9, {5, 1, 0x01000001, {0, 0}, 1, {0x5140, 0}}};
    EXPECT_EQ(words_of(encode(by_source)), (words{13, 0x11, 5, 1, 0x01000001, 0, 1, 0x5140, 0, 9}));
    const label_query by_fcid{13, 0x1f, 9, {5, 4, 0, {0x020000, 0xff0000}, 2, {1, 2}}};
    EXPECT_EQ(words_of(encode(by_fcid)), (words{13, 0x1f, 5, 4, 0x020000, 0xff0000, 2, 1, 2, 9}));
    for (const label_query &query : {by_source, by_fcid, label_query{13, 0x1f, 1, {5}}}) {
        const auto bytes = encode(query);
        EXPECT_EQ(rib_check_fclrt_query(bytes.data(), bytes.size(), nullptr), RIB_OK);
        EXPECT_EQ(read(codec::view<wire::fclrt_query>(bytes.data())), query);
    }
}

TEST(queries, of_one_kind_of_label_routes_need_no_cursor) {
    for (const auto &[type, route] : {std::pair(0x41U, 1U), {0x42, 2}, {0x44, 2}, {0x48, 4}, {0x1f, 0}}) {
        const auto bytes = encode(label_query{13, type, 1, {5}});
        EXPECT_EQ(read(codec::view<wire::fclrt_query>(bytes.data())).from.type, route) << type;
    }
}

TEST(queries, go_on_behind_the_last_place) {
    const model::route_key key{1, {0x010000, 0xff0000}};
    EXPECT_EQ(place_after({key, 12}), (unicast_place{key, 13}));
    EXPECT_EQ(place_after({key, RIBKIT_LAST_CLIENT}), (unicast_place{{1, {0x010000, 0xff0001}}, 0}));
    const std::vector<std::pair<model::label_key, model::label_key>> steps{
        {{5, 2, 0, {0, 0}, 0, {}}, {5, 2, 0, {0, 0}, 1, {0, 0}}},
        {{5, 2, 0, {0, 0}, 1, {7, 0}}, {5, 2, 0, {0, 0}, 1, {8, 0}}},
        {{5, 2, 0, {0, 0}, 1, {UINT32_MAX, 0}}, {5, 2, 0, {0, 0}, 2, {0, 0}}},
        {{5, 2, 0, {0, 0}, 2, {7, UINT32_MAX}}, {5, 2, 0, {0, 0}, 2, {8, 0}}},
        {{5, 2, 0, {0, 0}, 2, {UINT32_MAX, UINT32_MAX}}, {5, 3, 0, {0, 0}, 0, {}}},
        {{5, 1, 9, {0, 0}, 2, {UINT32_MAX, UINT32_MAX}}, {5, 1, 10, {0, 0}, 0, {}}},
        {{5, 1, UINT32_MAX, {0, 0}, 2, {UINT32_MAX, UINT32_MAX}}, {5, 2, 0, {0, 0}, 0, {}}},
        {{5, 4, 0, {1, UINT32_MAX}, 2, {UINT32_MAX, UINT32_MAX}}, {5, 4, 0, {2, 0}, 0, {}}},
        {{5, 4, 0, {UINT32_MAX, UINT32_MAX}, 2, {UINT32_MAX, UINT32_MAX}}, {6}}};
    for (const auto &[last, next] : steps) {
        EXPECT_EQ(key_after(last), next) << last.type << ' ' << last.match_count;
        EXPECT_TRUE(last < next);
        const auto bytes = encode(label_query{13, 0x1f, 1, next});
        EXPECT_EQ(read(codec::view<wire::fclrt_query>(bytes.data())).from, next);
    }
}

template <const codec::layout &L> void expect_list_query(const words &wanted) {
    const list_query query{12, 0x10, 3, is_same(L, wire::reg_query) ? 0U : 5U};
    const auto bytes = encode<L>(query);
    EXPECT_EQ(words_of(bytes), wanted) << L.name;
    EXPECT_EQ(read_list_query(codec::view<L>(bytes.data())), query) << L.name;
}

TEST(queries, of_lists_begin_at_an_entry) {
    expect_list_query<wire::db_query>({12, 0x10, 5, 3});
    expect_list_query<wire::dm_query>({12, 0x10, 5, 3});
    expect_list_query<wire::vsan_query>({12, 0x10, 5, 3});
    expect_list_query<wire::sys_query>({12, 0x10, 5, 3});
    expect_list_query<wire::reg_query>({12, 0x10, 3});
}

TEST(queries, of_other_things) {
    const auto internal = encode(internal_query{12, 1, 2});
    EXPECT_EQ(words_of(internal), (words{12, 1, 2, 0}));
    EXPECT_EQ(read(codec::view<wire::in_query>(internal.data())), (internal_query{12, 1, 2}));
    const auto node = encode(node_query{12, 3, 4});
    EXPECT_EQ(words_of(node), (words{12, 0x03040000}));
    EXPECT_EQ(read(codec::view<wire::node_query>(node.data())), (node_query{12, 3, 4}));
    const auto test = encode_test({64, 2});
    EXPECT_EQ(read(codec::view<wire::test_query>(test.data())), (simple_request{64, 2}));
    const auto verify = encode_verify({12, 0x400});
    EXPECT_EQ(words_of(verify), (words{12, 0, 0x400}));
    EXPECT_EQ(read(codec::view<wire::verify>(verify.data())), (simple_request{12, 0x400}));
    const auto found = encode(verify_query{12, 1, 0x400, 9});
    EXPECT_EQ(read(codec::view<wire::verf_query>(found.data())), (verify_query{12, 1, 0x400, 9}));
    const auto log = encode(log_query{10, 2, 99});
    EXPECT_EQ(words_of(log), (words{10, 2, 99}));
    EXPECT_EQ(read(codec::view<wire::sync_query>(log.data())), (log_query{10, 2, 99}));
}

TEST(queries, of_flows_have_the_frame_s_header) {
    const flow_query query{12, {20, 0x010203, 0x040506, 0x0708}};
    const auto bytes = encode(query);
    EXPECT_EQ(words_of(bytes), (words{12, 0x01020304, 0x05060708, 20, 0}));
    EXPECT_EQ(read(codec::view<wire::fcu_lb_query>(bytes.data())), query);
}

TEST(queries, a_registration_has_a_name_that_ends) {
    const model::registration said{12, 110, "fspf"};
    const auto bytes = encode(said);
    EXPECT_EQ(read(codec::view<wire::registration>(bytes.data())), said);
    const auto longest = encode(model::registration{12, 110, std::string(100, 'x')});
    EXPECT_EQ(rib_check_register(longest.data(), longest.size(), nullptr), RIB_OK);
    EXPECT_EQ(read(codec::view<wire::registration>(longest.data())).name, std::string(79, 'x'));
}

TEST(query_kinds, refuse_what_they_do_not_answer) {
    EXPECT_EQ(refusal_of(find_kind(unicast_kinds, 0x1), false), RIB_OK);
    EXPECT_EQ(refusal_of(find_kind(unicast_kinds, 0x3), false), RIB_NOT_SUPPORTED);
    EXPECT_EQ(refusal_of(find_kind(unicast_kinds, 0x40), true), RIB_NO_DATABASE);
    EXPECT_EQ(refusal_of(find_kind(unicast_kinds, 0x10000), false), RIB_NOT_SUPPORTED);
    EXPECT_EQ(refusal_of(find_kind(unicast_kinds, 0x4000), false), RIB_BAD_PARAMETERS);
    EXPECT_EQ(refusal_of(find_kind(unicast_kinds, 0x4000), true), RIB_OK);
    EXPECT_NE(find_label_kind(0x11), nullptr);
    EXPECT_NE(find_label_kind(0x48), nullptr);
    EXPECT_EQ(find_label_kind(0x4f), nullptr);
    EXPECT_EQ(find_label_kind(0x13), nullptr);
    EXPECT_EQ(find_label_kind(0x1), nullptr);
}

} // namespace
} // namespace ribkit::protocol
