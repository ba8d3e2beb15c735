// Readers, sizes, steps, comparisons and maps of the exported interface, at their boundaries and against the model.
#include "codec/witness/naive.h"
#include "codec/witness/random_messages.h"
#include "testing/guarded.h"

#include "fib_codec.h"
#include "rib_codec.h"
#include "rib_codes.h"

#include <bit>
#include <gtest/gtest.h>

namespace {

using namespace ribkit::witness;

constexpr unsigned scale = RIBKIT_EMULATED ? 1 : 10;
constexpr order native = std::endian::native == std::endian::little ? order::little : order::big;

// --- Readers

struct accessor {
    const char *name;
    uint32_t (*get)(const void *);
    size_t offset;
};

constexpr accessor accessors[] = {
    {"fclrt_update uuid", rib_ntoh_fclrt_update_get_uuid, 0},
    {"fclrt_update vsan", rib_ntoh_fclrt_update_get_vsan, 4},
    {"fclrt_update oper", rib_ntoh_fclrt_update_get_oper, 8},
    {"fclrt_update n_route", rib_ntoh_fclrt_update_get_n_route, 12},
    {"fcurt_update uuid", rib_ntoh_fcurt_update_get_uuid, 0},
    {"fcurt_update vsan", rib_ntoh_fcurt_update_get_vsan, 4},
    {"fcurt_update oper", rib_ntoh_fcurt_update_get_oper, 8},
    {"fcurt_update n_version", rib_ntoh_fcurt_update_get_n_version, 12},
    {"fcurt_update n_route", rib_ntoh_fcurt_update_get_n_route, 16},
    {"fcurt mask", rib_ntoh_fcurt_get_mask, 4},
    {"fcurt action", rib_ntoh_fcurt_get_action, 16},
    {"fcurt metric", rib_ntoh_fcurt_get_metric, 20},
    {"fcurt flag", rib_ntoh_fcurt_get_flag, 24},
    {"fcurt n_hop", rib_ntoh_fcurt_get_n_hop, 28},
    {"fcurt_route intf", rib_ntoh_fcurt_route_get_intf, 0},
    {"fcurt_route domain", rib_ntoh_fcurt_route_get_domain, 4},
    {"fclrt type", rib_ntoh_fclrt_get_type, 0},
    {"fclrt vsan", rib_ntoh_fclrt_get_vsan, 4},
    {"fclrt action", rib_ntoh_fclrt_get_action, 16},
    {"fclrt n_match", rib_ntoh_fclrt_get_n_match, 20},
    {"fclrt n_src", rib_ntoh_fclrt_get_n_src, 24},
    {"fclrt n_intf", rib_ntoh_fclrt_get_n_intf, 28},
    {"fclrt src", rib_ntoh_fclrt_get_src, 40},
    {"fclrt_intf ctrl", rib_ntoh_fclrt_intf_get_ctrl, 0},
    {"fclrt_intf intf", rib_ntoh_fclrt_intf_get_intf, 4},
};

TEST(accessors, read_their_word_in_host_order_at_any_address) {
    std::mt19937 random(3);
    std::vector<uint8_t> bytes(64);
    for (uint8_t &byte : bytes) {
        byte = static_cast<uint8_t>(random());
    }
    for (const accessor &one : accessors) {
        for (size_t start = 0; start < 8; ++start) {
            EXPECT_EQ(one.get(bytes.data() + start), load_word(order::big, bytes.data() + start + one.offset))
                << one.name << " at " << start;
        }
    }
}

TEST(accessors, touch_only_their_word) {
    for (const accessor &one : accessors) {
        const ribkit::testing::guarded behind(one.offset + 4);
        EXPECT_EQ(one.get(behind.data()), 0xa5a5a5a5U) << one.name;
    }
}

TEST(accessors, destination_of_a_unicast_record_is_masked) {
    std::mt19937 random(4);
    for (int i = 0; i < 100; ++i) {
        const std::vector<uint8_t> record = random_message("rib_fcurt", order::big, random);
        EXPECT_EQ(rib_ntoh_fcurt_get_fcid(record.data()),
                  load_word(order::big, record.data()) & load_word(order::big, record.data() + 4));
    }
}

TEST(accessors, versions_of_a_unicast_update) {
    std::mt19937 random(5);
    for (unsigned i = 0; i < 30 * scale; ++i) {
        const std::vector<uint8_t> msg = random_message("rib_fcurt_update", order::big, random);
        const std::vector<uint32_t> expected = versions(msg);
        std::vector<uint32_t> found(expected.size() + 4, 0xa5a5a5a5);
        rib_ntoh_fcurt_update_get_version(msg.data() + 0, found.data());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), found.begin())) << expected.size();
        EXPECT_TRUE(std::all_of(found.end() - 4, found.end(), [](uint32_t word) { return word == 0xa5a5a5a5; }));
    }
}

// --- Sizes of whole updates

using sizer = uint32_t (*)(const void *);
using naive_sizer = uint32_t (*)(std::span<const uint8_t>);

struct update {
    const char *name;
    std::string_view record;
    size_t header, count_at;
    sizer size;
    naive_sizer model;
};

constexpr update updates[] = {
    {"fclrt", "rib_fclrt", 16, 12, rib_sizeof_fclrt_update, sizeof_fclrt_update},
    {"fcmrt", "rib_fcmrt", 16, 12, rib_sizeof_fcmrt_update, sizeof_fcmrt_update},
    {"fcurt", "rib_fcurt", 980, 16, rib_sizeof_fcurt_update, sizeof_fcurt_update},
};

/// A record whose lists stay inside their room, so that one record does not run into the next.
std::vector<uint8_t> bounded_record(std::string_view name, std::mt19937 &random) {
    std::vector<uint8_t> record = random_message(name, order::big, random);
    while (name == "rib_fclrt" &&
           (load_word(order::big, record.data() + 20) > 2 || load_word(order::big, record.data() + 24) > 16)) {
        record = random_message(name, order::big, random);
    }
    return record;
}

/// A whole update in network form: as long as its records say, and not a byte longer.
std::vector<uint8_t> whole_update(const update &kind, uint32_t n, std::mt19937 &random) {
    std::vector<uint8_t> msg(kind.header, 0x77);
    store_word(order::big, msg.data() + kind.count_at, n);
    for (uint32_t i = 0; i < n; ++i) {
        const std::vector<uint8_t> record = bounded_record(kind.record, random);
        std::vector<uint8_t> converted(record.size());
        const outcome done = convert(*find_pair(kind.record), direction::ntoh, native, record, converted);
        msg.insert(msg.end(), record.begin(), record.begin() + done.result);
    }
    return msg;
}

TEST(sizes, of_whole_updates_are_their_lengths_and_nothing_behind_is_read) {
    std::mt19937 random(6);
    for (const update &kind : updates) {
        for (unsigned i = 0; i < 10 * scale; ++i) {
            const std::vector<uint8_t> msg = whole_update(kind, i % 12, random);
            EXPECT_EQ(kind.model(msg), msg.size()) << kind.name;
            const ribkit::testing::guarded exact(msg);
            EXPECT_EQ(kind.size(exact.data()), msg.size()) << kind.name;
        }
    }
}

TEST(sizes, of_long_updates_with_records_of_all_sizes) {
    std::mt19937 random(7);
    for (const update &kind : updates) {
        const std::vector<uint8_t> msg = whole_update(kind, 1000, random);
        EXPECT_EQ(kind.size(msg.data()), msg.size()) << kind.name;
    }
}

TEST(sizes, of_records_are_what_sending_and_receiving_return_step_by_step) {
    std::mt19937 random(8);
    for (const update &kind : updates) {
        const std::vector<uint8_t> msg = whole_update(kind, 20, random);
        const ribkit::testing::guarded held(msg);
        size_t at = kind.header;
        for (int i = 0; i < 20; ++i) {
            uint8_t *record = held.data() + at;
            at += kind.header == 980           ? rib_ntoh_fcurt(record, record)
                  : kind.record == "rib_fclrt" ? rib_ntoh_fclrt(record, record)
                                               : rib_ntoh_fcmrt(record, record);
        }
        EXPECT_EQ(at, msg.size()) << kind.name;
    }
}

// --- Steps of queries

void expect_query_steps(uint32_t (*step)(void *, void *), size_t cursor, size_t label) {
    std::mt19937 random(9);
    constexpr uint32_t cursors[] = {0, 1, 3, 0x7fffffff, 0xffffffff, 0x01000000};
    constexpr uint32_t labels[] = {0x00005140, 0, 0xffffffff, 0xfffff000, 0x7fffffff, 0x12345678};
    for (const uint32_t position : cursors) {
        for (const uint32_t word : labels) {
            std::vector<uint8_t> cur = random_message("rib_verf_query", order::big, random);
            std::vector<uint8_t> next = random_message("rib_verf_query", order::big, random);
            store_word(order::big, cur.data() + cursor, position);
            store_word(order::big, cur.data() + label, word);
            std::vector<uint8_t> cur_model = cur;
            std::vector<uint8_t> next_model = next;
            next_query(cur_model.data(), next_model.data(), cursor, label);
            EXPECT_EQ(step(cur.data(), next.data()), 0U);
            EXPECT_EQ(cur, cur_model);
            EXPECT_EQ(next, next_model);
        }
    }
}

TEST(query_step, of_labels) { expect_query_steps(rib_next_fclrt_query, 12, 28); }
TEST(query_step, of_verification) { expect_query_steps(rib_next_verf_query, 24, 40); }

TEST(query_step, from_the_first_position_steps_the_label_and_from_others_does_not) {
    std::vector<uint8_t> cur(40);
    std::vector<uint8_t> next(40, 0xa5);
    store_word(order::big, cur.data() + 28, 0x00005140);
    rib_next_fclrt_query(cur.data(), next.data());
    EXPECT_EQ(load_word(order::big, next.data() + 12), 0U);
    EXPECT_EQ(load_word(order::big, next.data() + 28), 0x00006140U);
    EXPECT_EQ(load_word(order::big, cur.data() + 12), 1U);
    EXPECT_EQ(load_word(order::big, cur.data() + 28), 0x00005140U);
    store_word(order::big, cur.data() + 12, 3);
    rib_next_fclrt_query(cur.data(), next.data());
    EXPECT_EQ(load_word(order::big, next.data() + 12), 3U);
    EXPECT_EQ(load_word(order::big, next.data() + 28), 0x00006140U);
    EXPECT_EQ(load_word(order::big, cur.data() + 12), 4U);
}

// --- Steps of keys

/// Walks from every pair of edges, and at random, as long as the model says.
template <typename key_type, typename step_type, typename model_type>
void expect_steps(const std::vector<key_type> &starts, step_type step, model_type model, int steps) {
    for (const key_type &start : starts) {
        key_type found = start;
        key_type expected = start;
        for (int i = 0; i < steps; ++i) {
            ASSERT_EQ(step(found), model(expected));
            ASSERT_EQ(found, expected);
        }
    }
}

constexpr uint32_t vsans[] = {0, 1, 5, 4094, 4095, 4096, 0x7fffffff, 0x80000000, 0xffffffff};
constexpr uint32_t fcids[] = {0,        1,        0xffff,   0x010000, 0x123456, 0xeffffd, 0xeffffe,
                              0xefffff, 0xf00000, 0xfffaff, 0xfffb00, 0xfffb01, 0xfffbfd, 0xfffbfe,
                              0xfffbff, 0xfffc00, 0xfffffd, 0xfffffe, 0xffffff};
constexpr uint32_t masks[] = {0xff0000, 0xffff00, 0xffffff, 0, 1, 0xfeffff, 0xffffffff};

std::vector<fcm_key> fcm_starts() {
    std::vector<fcm_key> all;
    for (const uint32_t vsan : vsans) {
        for (const uint32_t fcid : fcids) {
            all.push_back({vsan, fcid});
        }
        for (const uint32_t fcid : {0x1000000U, 0x1fffffeU, 0xffffffffU}) {
            all.push_back({vsan, fcid});
        }
    }
    return all;
}

std::vector<fcu_key> fcu_starts() {
    std::vector<fcu_key> all;
    std::mt19937 random(10);
    for (const uint32_t vsan : vsans) {
        for (const uint32_t fcid : fcids) {
            for (const uint32_t mask : masks) {
                all.push_back({vsan, fcid, mask});
            }
        }
        for (int i = 0; i < 20; ++i) {
            all.push_back({vsan, static_cast<uint32_t>(random()) & 0xffffff, masks[random() % 3]});
        }
    }
    return all;
}

uint32_t rib_fcm_step(fcm_key &key) { return rib_next_fcm_tuple(&key.vsan, &key.fcid); }
uint32_t fib_fcm_step(fcm_key &key) { return fib_next_fcm_tuple(&key.fcid, &key.vsan); }
uint32_t fcu_step(fcu_key &key) { return rib_next_fcu_tuple(&key.vsan, &key.fcid, &key.mask); }
uint32_t fcroute_step(fcu_key &key) { return rib_next_fcroute_tuple(&key.vsan, &key.fcid, &key.mask); }

TEST(key_step, of_the_multicast_table) { expect_steps(fcm_starts(), rib_fcm_step, rib_next, 10); }
TEST(key_step, of_the_multicast_fib) { expect_steps(fcm_starts(), fib_fcm_step, fib_next, 10); }
TEST(key_step, of_the_unicast_table) { expect_steps(fcu_starts(), fcu_step, next_fcu, 10); }
TEST(key_step, of_the_route_table) { expect_steps(fcu_starts(), fcroute_step, next_fcroute, 30); }

TEST(key_step, of_the_multicast_fib_over_several_rounds_of_vsans) {
    expect_steps<fcm_key>({{0, 0xfffffd}, {0, 0x00ffff}}, fib_fcm_step, fib_next, 4096 * 3 + 10);
}

TEST(key_step, of_the_route_table_over_the_top_of_the_address_space) {
    expect_steps<fcu_key>({{4094, 0xeffff0, 0xff0000}, {1, 0xeffff0, 0xffff00}}, fcroute_step, next_fcroute, 1000);
}

template <typename key_type> void expect_step(uint32_t (*step)(key_type &), key_type key, uint32_t code, key_type to) {
    EXPECT_EQ(step(key), code);
    EXPECT_EQ(key, to);
}

TEST(key_step, multicast_table_at_its_ends) {
    expect_step<fcm_key>(rib_fcm_step, {5, 0xffffff}, 0, {6, 0x010000});
    expect_step<fcm_key>(rib_fcm_step, {4095, 0xffffff}, RIB_FAILED, {4095, 0xffffff});
    expect_step<fcm_key>(rib_fcm_step, {4095, 0xfffffe}, 0, {4095, 0xffffff});
}

TEST(key_step, multicast_fib_at_its_ends) {
    expect_step<fcm_key>(fib_fcm_step, {4095, 0x123456}, 0, {0, 0x123457});
    expect_step<fcm_key>(fib_fcm_step, {4095, 0xffffff}, RIB_FAILED, {0, 0xffffff});
    expect_step<fcm_key>(fib_fcm_step, {4094, 0xffffff}, 0, {4095, 0xffffff});
}

TEST(key_step, unicast_table_goes_through_three_masks) {
    expect_step<fcu_key>(fcu_step, {1, 0x010000, 0xff0000}, 0, {1, 0x010000, 0xffff00});
    expect_step<fcu_key>(fcu_step, {1, 0x010000, 0xffff00}, 0, {1, 0x010000, 0xffffff});
    expect_step<fcu_key>(fcu_step, {1, 0x010000, 0xffffff}, 0, {1, 0x010001, 0xff0000});
    expect_step<fcu_key>(fcu_step, {1, 0xeffffe, 0xffffff}, 0, {1, 0xefffff, 0xff0000});
    expect_step<fcu_key>(fcu_step, {1, 0xefffff, 0xffffff}, 0, {2, 0x010000, 0xff0000});
    expect_step<fcu_key>(fcu_step, {4095, 0xefffff, 0xffffff}, RIB_FAILED, {4095, 0xefffff, 0xff0000});
}

TEST(key_step, beyond_24_bits_of_address) {
    expect_steps<fcm_key>({{5, 0x1000000}, {4095, 0xffffffff}}, rib_fcm_step, rib_next, 3);
    expect_steps<fcm_key>({{4095, 0x1000000}, {4095, 0xffffffff}}, fib_fcm_step, fib_next, 3);
    expect_steps<fcu_key>({{5, 0x1000000, 0xffffff}, {4095, 0xffffffff, 0xff0000}}, fcu_step, next_fcu, 3);
    expect_steps<fcu_key>({{5, 0x1000000, 0xffffff}, {4095, 0xffffffff, 0xff0000}}, fcroute_step, next_fcroute, 3);
}

TEST(key_step, route_table_over_its_gaps) {
    expect_step<fcu_key>(fcroute_step, {1, 0xeffffe, 0xffffff}, 0, {1, 0xefffff, 0xff0000});
    expect_step<fcu_key>(fcroute_step, {1, 0xefffff, 0xff0000}, 0, {1, 0xfffb00, 0xffffff});
    expect_step<fcu_key>(fcroute_step, {1, 0xfffbfe, 0xffffff}, 0, {1, 0xfffbff, 0xffffff});
    expect_step<fcu_key>(fcroute_step, {1, 0xfffbff, 0xffffff}, 0, {1, 0xffffff, 0xffffff});
    expect_step<fcu_key>(fcroute_step, {1, 0xffffff, 0xffffff}, 0, {2, 0x010000, 0xff0000});
    expect_step<fcu_key>(fcroute_step, {4095, 0xffffff, 0xffffff}, RIB_FAILED, {4095, 0x010000, 0xff0000});
}

// --- Comparisons and maps

std::vector<uint32_t> interesting_words() {
    return {0, 1, 2, 4095, 0x00ffffff, 0x7fffffff, 0x80000000, 0x80000001, 0xffffffff, 0x01000000};
}

TEST(comparison, of_multicast_keys) {
    for (const uint32_t a : interesting_words()) {
        for (const uint32_t b : interesting_words()) {
            for (const uint32_t c : interesting_words()) {
                for (const uint32_t d : interesting_words()) {
                    ASSERT_EQ(rib_cmp_fcm_tuple(a, b, c, d), rib_compare({a, b}, {c, d}));
                    ASSERT_EQ(fib_cmp_fcm_tuple(b, a, d, c), fib_compare({a, b}, {c, d}));
                }
            }
        }
    }
}

TEST(comparison, of_unicast_keys) {
    std::mt19937 random(11);
    const std::vector<uint32_t> words = interesting_words();
    const auto any = [&] { return words[random() % words.size()]; };
    for (unsigned i = 0; i < 10000 * scale; ++i) {
        const fcu_key a{any(), any(), any()};
        const fcu_key b{random() % 2 ? a.vsan : any(), random() % 2 ? a.fcid : any(), random() % 4 ? any() : a.mask};
        ASSERT_EQ(rib_cmp_fcu_tuple(a.vsan, a.fcid, a.mask, b.vsan, b.fcid, b.mask), compare(a, b));
    }
}

TEST(comparison, takes_vsans_as_signed_and_fc_ids_as_unsigned) {
    EXPECT_EQ(rib_cmp_fcm_tuple(0x80000000, 0, 1, 0), -1);
    EXPECT_EQ(fib_cmp_fcm_tuple(0x80000000, 0, 1, 0), 1);
    EXPECT_EQ(rib_cmp_fcm_tuple(1, 0x80000000, 1, 1), 1);
    EXPECT_EQ(fib_cmp_fcm_tuple(1, 0x80000000, 1, 1), -1);
    EXPECT_EQ(rib_cmp_fcu_tuple(0x80000000, 0, 0, 1, 0, 0), -1);
    EXPECT_EQ(rib_cmp_fcu_tuple(1, 1, 0x80000000, 1, 1, 1), 1);
    EXPECT_EQ(rib_cmp_fcu_tuple(1, 2, 3, 1, 2, 3), 0);
}

TEST(comparison, of_rewrite_keys_at_every_word) {
    const std::vector<uint32_t> words = interesting_words();
    for (size_t offset = 0; offset < 44; offset += 4) {
        for (const uint32_t of_a : words) {
            for (const uint32_t of_b : words) {
                std::vector<uint8_t> a(44, 0x5a);
                std::vector<uint8_t> b(44, 0x5a);
                store_word(order::big, a.data() + offset, of_a);
                store_word(order::big, b.data() + offset, of_b);
                ASSERT_EQ(rib_vsan_rewrite_key_compare(a.data(), b.data()), compare_rewrite_keys(a.data(), b.data()))
                    << offset;
            }
        }
    }
}

TEST(comparison, of_rewrite_keys_at_random_and_at_odd_addresses) {
    std::mt19937 random(12);
    for (unsigned i = 0; i < 2000 * scale; ++i) {
        std::vector<uint8_t> a(45, 0x5a);
        std::vector<uint8_t> b(45, 0x5a);
        for (int changes = static_cast<int>(random() % 4); changes >= 0; --changes) {
            a[random() % 45] = static_cast<uint8_t>(random());
            b[random() % 45] = static_cast<uint8_t>(random());
        }
        const size_t start = random() % 2;
        ASSERT_EQ(rib_vsan_rewrite_key_compare(a.data() + start, b.data() + start),
                  compare_rewrite_keys(a.data() + start, b.data() + start));
    }
}

TEST(comparison, of_rewrite_keys_leaves_out_the_first_and_third_word_and_takes_the_fourth_as_signed) {
    std::vector<uint8_t> a(44, 0);
    std::vector<uint8_t> b(44, 0);
    store_word(order::big, a.data() + 0, 1);
    store_word(order::big, b.data() + 8, 1);
    store_word(order::big, a.data() + 36, 1);
    EXPECT_EQ(rib_vsan_rewrite_key_compare(a.data(), b.data()), 0);
    store_word(order::big, a.data() + 12, 0x80000000);
    EXPECT_EQ(rib_vsan_rewrite_key_compare(a.data(), b.data()), -1);
    store_word(order::big, a.data() + 4, 0x80000000);
    EXPECT_EQ(rib_vsan_rewrite_key_compare(a.data(), b.data()), 1);
}

TEST(operations, of_the_rib_map_to_those_of_the_fib) {
    for (uint32_t oper = 0; oper < 0x20002; ++oper) {
        ASSERT_EQ(rib_oper_to_fib(oper), oper_to_fib(oper)) << oper;
    }
    for (unsigned bit = 17; bit < 32; ++bit) {
        EXPECT_EQ(rib_oper_to_fib(1U << bit), 0U);
    }
    EXPECT_EQ(rib_oper_to_fib(RIB_OPER_MERGE), 32U);
    EXPECT_EQ(rib_oper_to_fib(RIB_OPER_MERGE_RSP), 0U);
}

} // namespace
