// The corners of the layouts, one named case each, written against the exported functions.
#include "codec/witness/naive.h"

#include "fib_codec.h"
#include "rib_codec.h"

#include <bit>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <numeric>

namespace {

using ribkit::witness::load_word;
using ribkit::witness::order;
using ribkit::witness::store_word;

constexpr order native = std::endian::native == std::endian::little ? order::little : order::big;
constexpr uint8_t untouched = 0xa5;

/// A buffer of `untouched` bytes with words of either form in it.
class buffer {
  public:
    explicit buffer(size_t size = 2048, uint8_t fill = untouched) : bytes_(size, fill) {}

    buffer &host(size_t at, std::initializer_list<uint32_t> words) { return put(native, at, words); }
    buffer &net(size_t at, std::initializer_list<uint32_t> words) { return put(order::big, at, words); }
    buffer &bytes(size_t at, std::initializer_list<uint8_t> values) {
        std::copy(values.begin(), values.end(), bytes_.begin() + static_cast<ptrdiff_t>(at));
        return *this;
    }
    buffer &fill(size_t at, size_t length, uint8_t value) {
        std::fill_n(bytes_.begin() + static_cast<ptrdiff_t>(at), length, value);
        return *this;
    }

    [[nodiscard]] uint32_t host(size_t at) const { return load_word(native, bytes_.data() + at); }
    [[nodiscard]] uint32_t net(size_t at) const { return load_word(order::big, bytes_.data() + at); }
    [[nodiscard]] uint8_t byte(size_t at) const { return bytes_.at(at); }
    /// All bytes from one offset up to another have this value.
    [[nodiscard]] bool all(size_t from, size_t to, uint8_t value) const {
        return std::all_of(bytes_.begin() + static_cast<ptrdiff_t>(from), bytes_.begin() + static_cast<ptrdiff_t>(to),
                           [value](uint8_t byte) { return byte == value; });
    }
    [[nodiscard]] bool same(const buffer &other, size_t from, size_t to) const {
        return std::equal(bytes_.begin() + static_cast<ptrdiff_t>(from), bytes_.begin() + static_cast<ptrdiff_t>(to),
                          other.bytes_.begin() + static_cast<ptrdiff_t>(from));
    }
    [[nodiscard]] bool untouched_from(size_t from) const { return all(from, bytes_.size(), untouched); }

    operator const void *() const { return bytes_.data(); }
    operator void *() { return bytes_.data(); }

  private:
    buffer &put(order form, size_t at, std::initializer_list<uint32_t> words) {
        for (const uint32_t word : words) {
            store_word(form, bytes_.data() + at, word);
            at += 4;
        }
        return *this;
    }

    std::vector<uint8_t> bytes_;
};

// --- Updates

buffer versions_of(uint32_t n) {
    buffer sent;
    sent.host(0, {12, 1, 1, n, 0}).fill(20, 960, 0x11);
    return sent;
}

TEST(unicast_update, without_versions_sends_240_zero_words) {
    buffer arrived;
    rib_hton_fcurt_update(versions_of(0), arrived);
    EXPECT_TRUE(arrived.all(20, 980, 0));
    EXPECT_TRUE(arrived.untouched_from(980));
}

TEST(unicast_update, with_239_versions_zeroes_exactly_the_last) {
    buffer arrived;
    rib_hton_fcurt_update(versions_of(239), arrived);
    EXPECT_TRUE(arrived.all(20, 976, 0x11));
    EXPECT_TRUE(arrived.all(976, 980, 0));
}

TEST(unicast_update, with_240_versions_zeroes_nothing) {
    buffer arrived;
    rib_hton_fcurt_update(versions_of(240), arrived);
    EXPECT_TRUE(arrived.all(20, 980, 0x11));
    EXPECT_TRUE(arrived.untouched_from(980));
}

TEST(unicast_update, received_zeroes_by_the_count_that_arrived) {
    for (const uint32_t n : {0U, 1U, 239U, 240U}) {
        buffer sent;
        buffer arrived;
        arrived.host(12, {7});
        sent.net(0, {12, 1, 1, n, 0}).fill(20, 960, 0x11);
        rib_ntoh_fcurt_update(sent, arrived);
        EXPECT_TRUE(arrived.all(20, 20 + 4 * n, 0x11)) << n;
        EXPECT_TRUE(arrived.all(20 + 4 * n, 980, 0)) << n;
        EXPECT_TRUE(arrived.untouched_from(980)) << n;
    }
}

TEST(unicast_update, in_place_is_what_a_second_buffer_gets) {
    buffer sent = versions_of(17);
    buffer arrived;
    rib_hton_fcurt_update(sent, arrived);
    rib_hton_fcurt_update(sent, sent);
    EXPECT_TRUE(sent.same(arrived, 0, 980));
}

TEST(update, sizes_of_empty_updates_are_their_headers) {
    const buffer empty(2048, 0);
    EXPECT_EQ(rib_sizeof_fcurt_update(empty), 980U);
    EXPECT_EQ(rib_sizeof_fclrt_update(empty), 16U);
    EXPECT_EQ(rib_sizeof_fcmrt_update(empty), 16U);
}

TEST(update, label_record_with_interfaces_of_0_and_3_labels_makes_148) {
    buffer msg;
    msg.net(12, {1}).net(16 + 28, {2}).net(120, {0x00000000, 7, 0x00030000, 8, 9, 9, 9});
    EXPECT_EQ(rib_sizeof_fclrt_update(msg), 148U);
}

TEST(update, multicast_records_of_0_and_2_interfaces_make_56) {
    buffer msg;
    msg.net(12, {2}).net(16 + 12, {0}).net(32 + 12, {2});
    EXPECT_EQ(rib_sizeof_fcmrt_update(msg), 56U);
}

TEST(update, unicast_records_of_0_and_3_hops_make_1068) {
    buffer msg;
    msg.net(16, {2}).net(980 + 28, {0}).net(1012 + 28, {3});
    EXPECT_EQ(rib_sizeof_fcurt_update(msg), 980U + 32 + 56);
}

TEST(update, number_of_versions_is_the_word_that_is_n_route_of_a_label_update) {
    buffer msg;
    msg.net(0, {1, 2, 3, 0x12345678, 5});
    EXPECT_EQ(rib_ntoh_fcurt_update_get_n_version(msg), 0x12345678U);
    EXPECT_EQ(rib_ntoh_fclrt_update_get_n_route(msg), 0x12345678U);
}

// --- Unicast records

TEST(unicast_record, without_hops_is_32_bytes) {
    buffer sent;
    buffer arrived;
    sent.host(28, {0});
    EXPECT_EQ(rib_hton_fcurt(sent, arrived), 32U);
    EXPECT_TRUE(arrived.untouched_from(32));
    EXPECT_EQ(rib_ntoh_fcurt(arrived, sent), 32U);
}

TEST(unicast_record, with_three_hops_is_56_bytes) {
    buffer sent;
    buffer arrived;
    sent.host(28, {3, 1, 2, 3, 4, 5, 6});
    EXPECT_EQ(rib_hton_fcurt(sent, arrived), 56U);
    EXPECT_EQ(arrived.net(52), 6U);
    EXPECT_TRUE(arrived.untouched_from(56));
    EXPECT_EQ(rib_ntoh_fcurt(arrived, sent), 56U);
}

TEST(unicast_record, destination_is_read_masked) {
    buffer record;
    record.bytes(0, {0x00, 0x12, 0x34, 0x56, 0x00, 0xff, 0xff, 0x00});
    EXPECT_EQ(rib_ntoh_fcurt_get_fcid(record), 0x00123400U);
}

TEST(unicast_record, twelve_bytes_go_unchanged_both_ways) {
    buffer sent;
    buffer wire;
    buffer back;
    sent.bytes(0, {0, 1, 2, 3}).bytes(8, {1, 2, 3, 4, 5, 6, 7, 8}).host(28, {0});
    rib_hton_fcurt(sent, wire);
    rib_ntoh_fcurt(wire, back);
    for (const buffer *form : {&wire, &back}) {
        EXPECT_TRUE(form->same(sent, 0, 4));
        EXPECT_TRUE(form->same(sent, 8, 16));
    }
}

TEST(unicast_record, in_place_gives_the_same_bytes_and_size) {
    buffer sent;
    buffer arrived;
    sent.host(28, {2, 1, 2, 3, 4});
    EXPECT_EQ(rib_hton_fcurt(sent, arrived), 48U);
    EXPECT_EQ(rib_hton_fcurt(sent, sent), 48U);
    EXPECT_TRUE(sent.same(arrived, 0, 48));
}

// --- Label records

buffer label_record(uint32_t n_match, uint32_t n_src, uint32_t n_intf) {
    buffer sent;
    sent.host(0, {4, 1}).bytes(8, {0, 1, 2, 3}).host(12, {0xffffff, 1, n_match, n_src, n_intf}).fill(32, 72, 0x11);
    return sent;
}

TEST(label_record, without_lists_is_104_bytes_with_two_zeroed_arrays) {
    buffer arrived;
    EXPECT_EQ(rib_hton_fclrt(label_record(0, 0, 0), arrived), 104U);
    EXPECT_TRUE(arrived.all(32, 104, 0));
    EXPECT_TRUE(arrived.untouched_from(104));
    EXPECT_EQ(rib_ntoh_fclrt(arrived, arrived), 104U);
}

TEST(label_record, zeroes_the_match_that_is_not_used) {
    buffer one;
    buffer two;
    rib_hton_fclrt(label_record(1, 16, 0), one);
    rib_hton_fclrt(label_record(2, 16, 0), two);
    EXPECT_TRUE(one.all(32, 36, 0x11));
    EXPECT_TRUE(one.all(36, 40, 0));
    EXPECT_TRUE(two.all(32, 40, 0x11));
}

TEST(label_record, zeroes_the_sources_that_are_not_used) {
    buffer fifteen;
    buffer sixteen;
    rib_hton_fclrt(label_record(2, 15, 0), fifteen);
    rib_hton_fclrt(label_record(2, 16, 0), sixteen);
    EXPECT_TRUE(fifteen.all(40, 100, 0x11));
    EXPECT_TRUE(fifteen.all(100, 104, 0));
    EXPECT_TRUE(sixteen.all(40, 104, 0x11));
}

TEST(label_record, of_two_interfaces_with_0_and_3_labels_is_132_bytes) {
    buffer sent = label_record(0, 0, 2);
    buffer arrived;
    sent.host(104, {0, 5, 0x00030000, 6, 7, 8, 9});
    EXPECT_EQ(rib_hton_fclrt(sent, arrived), 132U);
    EXPECT_EQ(arrived.net(128), 9U);
    EXPECT_TRUE(arrived.untouched_from(132));
    EXPECT_EQ(rib_ntoh_fclrt(arrived, sent), 132U);
}

TEST(label_record, keeps_the_bytes_of_the_fc_id) {
    buffer wire;
    buffer back;
    rib_hton_fclrt(label_record(0, 0, 0), wire);
    rib_ntoh_fclrt(wire, back);
    EXPECT_EQ(wire.net(8), 0x00010203U);
    EXPECT_EQ(back.net(8), 0x00010203U);
}

TEST(label_interface, takes_its_size_from_the_second_byte) {
    buffer sent;
    buffer arrived;
    sent.host(0, {0x00030000, 1, 2, 3, 4});
    EXPECT_EQ(rib_hton_fclrt_intf(sent, arrived), 20U);
    EXPECT_EQ(rib_ntoh_fclrt_intf(arrived, arrived), 20U);
    sent.host(0, {0});
    EXPECT_EQ(rib_hton_fclrt_intf(sent, sent), 8U);
    sent.net(0, {0xff00ffff});
    EXPECT_EQ(rib_ntoh_fclrt_intf(sent, sent), 8U);
}

// --- Multicast records

TEST(multicast_record, is_16_bytes_and_4_for_each_interface) {
    for (const uint32_t n : {0U, 1U, 5U}) {
        buffer sent;
        buffer arrived;
        sent.host(12, {n, 1, 2, 3, 4, 5});
        EXPECT_EQ(rib_hton_fcmrt(sent, arrived), 16 + 4 * n);
        EXPECT_TRUE(arrived.untouched_from(16 + 4 * size_t{n}));
        EXPECT_EQ(rib_ntoh_fcmrt(arrived, arrived), 16 + 4 * n);
    }
}

// --- Queries

TEST(label_query, zeroes_the_match_that_is_not_used) {
    for (const uint32_t n : {0U, 1U, 2U}) {
        buffer sent;
        buffer arrived;
        sent.host(24, {n}).fill(28, 8, 0x11);
        rib_hton_fclrt_query(sent, arrived);
        EXPECT_TRUE(arrived.all(28, 28 + 4 * n, 0x11)) << n;
        EXPECT_TRUE(arrived.all(28 + 4 * n, 36, 0)) << n;
        EXPECT_TRUE(arrived.untouched_from(40));
    }
}

// --- Synchronisation

TEST(unicast_route, of_one_hop_with_one_label_zeroes_two_labels) {
    buffer sent;
    buffer arrived;
    sent.host(32, {1, 0x00010000, 7}).bytes(44, {1, 2, 3, 4});
    rib_hton_ucast_route(sent, arrived);
    EXPECT_EQ(arrived.net(44), 0x01020304U);
    EXPECT_TRUE(arrived.all(48, 56, 0));
    EXPECT_TRUE(arrived.untouched_from(56));
}

TEST(unicast_route, hop_lies_on_the_labels_of_the_hop_before) {
    buffer sent;
    buffer arrived;
    sent.host(32, {2, 0x00030000, 7, 0x00000005, 9}).bytes(52, {1, 2, 3, 4});
    rib_hton_ucast_route(sent, arrived);
    EXPECT_EQ(arrived.net(44), 5U);
    EXPECT_EQ(arrived.net(48), 9U);
    EXPECT_TRUE(arrived.all(52, 64, 0));
    EXPECT_TRUE(arrived.untouched_from(64));
}

TEST(label_route, returns_its_size) {
    buffer sent;
    buffer arrived;
    sent.host(24, {0, 0});
    EXPECT_EQ(rib_hton_lbl_route(sent, arrived), 40U);
    EXPECT_EQ(rib_ntoh_lbl_route(arrived, arrived), 40U);
    sent.host(28, {1}).host(40, {0x00020000, 1, 2, 3});
    EXPECT_EQ(rib_hton_lbl_route(sent, arrived), 56U);
    EXPECT_EQ(rib_ntoh_lbl_route(arrived, arrived), 56U);
}

TEST(synchronisation_record, of_the_label_table_is_52_bytes) {
    const buffer sent(2048, 0x11);
    buffer arrived;
    rib_hton_sync_fcl(sent, arrived);
    EXPECT_TRUE(arrived.all(0, 52, 0x11));
    EXPECT_TRUE(arrived.untouched_from(52));
}

// --- Information

TEST(registrations, name_of_12_characters_becomes_7_and_73_zeroes) {
    buffer sent;
    sent.host(0, {1, 12, 110}).fill(12, 80, 0).bytes(12, {'f', 's', 'p', 'f', '-', 'p', 'r', 'o', 'c', 'e', 's', 's'});
    buffer apart;
    rib_hton_reg_info(sent, apart);
    rib_hton_reg_info(sent, sent);
    for (const buffer *arrived : {&apart, &sent}) {
        EXPECT_EQ(std::memcmp(static_cast<const char *>(static_cast<const void *>(*arrived)) + 12, "fspf-pr", 7), 0);
        EXPECT_TRUE(arrived->all(19, 92, 0));
    }
    EXPECT_TRUE(apart.untouched_from(92));
}

TEST(registrations, name_without_an_end_is_cut_at_7_as_well) {
    buffer sent;
    buffer arrived;
    sent.net(0, {1, 12, 110}).fill(12, 80, 'x');
    rib_ntoh_reg_info(sent, arrived);
    EXPECT_TRUE(arrived.all(12, 19, 'x'));
    EXPECT_TRUE(arrived.all(19, 92, 0));
}

TEST(registration_query, receives_nothing) {
    buffer arrived;
    rib_ntoh_reg_query(buffer(2048, 0x11), arrived);
    EXPECT_TRUE(arrived.untouched_from(0));
}

TEST(reachable_domains, receives_its_count_in_place_and_reads_no_source) {
    buffer arrived;
    arrived.net(0, {3, 0x01020304});
    rib_ntoh_dm_info(buffer(2048, 0x11), arrived);
    EXPECT_EQ(arrived.host(0), 3U);
    EXPECT_EQ(arrived.net(4), 0x01020304U);
    EXPECT_TRUE(arrived.untouched_from(8));
}

TEST(node_query, ends_in_two_zero_bytes) {
    buffer sent(2048, 0x11);
    buffer arrived;
    rib_hton_node_query(sent, arrived);
    EXPECT_TRUE(arrived.all(4, 6, 0x11));
    EXPECT_TRUE(arrived.all(6, 8, 0));
    rib_ntoh_node_query(sent, sent);
    EXPECT_TRUE(sent.all(6, 8, 0));
    EXPECT_TRUE(arrived.untouched_from(8));
}

TEST(internals, carry_what_their_kind_says) {
    const size_t sizes[] = {8, 32, 200, 8};
    for (uint32_t kind = 0; kind < 4; ++kind) {
        buffer sent(2048, 0x11);
        buffer arrived;
        sent.host(4, {kind});
        EXPECT_EQ(rib_hton_in_info(sent, arrived), kind);
        EXPECT_TRUE(arrived.all(8, sizes[kind], 0x11)) << kind;
        EXPECT_TRUE(arrived.untouched_from(sizes[kind])) << kind;
        EXPECT_EQ(rib_hton_in_info(sent, sent), kind);
    }
}

/// Which words of a verification report of two entries and this type are converted.
size_t verified(uint32_t type) {
    buffer sent(2048, 0x11);
    buffer arrived;
    sent.host(0, {2, type});
    rib_hton_verf_info(sent, arrived);
    size_t end = 16;
    while (arrived.all(end, end + 4, 0x11)) {
        end += 4;
    }
    EXPECT_TRUE(arrived.untouched_from(end));
    return end;
}

TEST(verification_report, chooses_its_keys_by_type) {
    EXPECT_EQ(verified(0x0004), 16U + 2 * 16);
    EXPECT_EQ(verified(0x0002), 16U + 2 * 12);
    EXPECT_EQ(verified(0x0010), 16U + 2 * 32);
    EXPECT_EQ(verified(0x0003), 16U + 2 * 32);
    EXPECT_EQ(verified(0x33330000), 16U + 2 * 16);
    for (unsigned bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(verified(1U << bit), 16U + 2 * (bit % 4 == 0 ? 32 : bit % 4 == 1 ? 12 : 16)) << bit;
    }
}

// --- FIB paths

struct kind_case {
    uint32_t fcid;
    uint8_t special;
    uint32_t mask;
    uint32_t sent, received;
};

constexpr kind_case kinds[] = {
    {0x00fffffc, 0x00, 0x00ffffff, 6, 0x08000000}, {0x00ffffff, 0x00, 0x00ffffff, 7, 0x02000000},
    {0x000a0bff, 0x00, 0x00ffff00, 4, 0x02000000}, {0x00fffffc, 0xf0, 0x00ffffff, 8, 0x08000000},
    {0x000a0b0c, 0xf0, 0x00ffffff, 8, 0x01000000}, {0x00ffffff, 0xf0, 0x00ffffff, 8, 0x01000000},
    {0x000affff, 0x00, 0x00ff0000, 7, 0x04000000}, {0x00fffff0, 0x0f, 0x00ff0000, 6, 0x08000000},
    {0x00ffffef, 0x00, 0x01ffff00, 4, 0x04000000}, {0xffffffff, 0x00, 0x00ffffff, 6, 0x08000000},
    {0xaa0a0000, 0x00, 0x00ff0000, 4, 0x04000000}, {0x000a00ff, 0xff, 0x00000000, 4, 0x04000000},
};

TEST(unicast_path, sends_the_kind_of_route_as_a_number) {
    for (const kind_case &one : kinds) {
        buffer path(2048, 0);
        path.host(0, {0x12345678}).net(4, {one.fcid}).host(8, {one.mask}).bytes(13, {one.special});
        fib_hton_fcu_path(path, path);
        EXPECT_EQ(path.net(0), one.sent) << std::hex << one.fcid;
    }
}

TEST(unicast_path, receives_the_kind_of_route_as_a_flag) {
    for (const kind_case &one : kinds) {
        buffer wire(2048, 0);
        buffer path;
        wire.net(0, {6}).net(4, {one.fcid, one.mask}).bytes(13, {one.special});
        fib_ntoh_fcu_path(wire, path);
        EXPECT_EQ(path.host(0), one.received) << std::hex << one.fcid;
        wire.net(0, {0});
        fib_ntoh_fcu_path(wire, path);
        EXPECT_EQ(path.host(0), 0U);
        wire.net(0, {0x12345600});
        fib_ntoh_fcu_path(wire, path);
        EXPECT_EQ(path.host(0), 0x12345600U);
    }
}

TEST(unicast_path, zeroes_the_slots_that_are_not_used) {
    for (const uint32_t n : {0U, 1U, 15U, 16U}) {
        buffer sent(2048, 0x03);
        buffer arrived;
        sent.host(24, {n});
        fib_hton_fcu_path(sent, arrived);
        EXPECT_TRUE(arrived.all(28, 28 + 20 * n, 0x03)) << n;
        EXPECT_TRUE(arrived.all(28 + 20 * n, 348, 0)) << n;
        EXPECT_TRUE(arrived.untouched_from(348)) << n;
    }
}

TEST(unicast_path, with_seventeen_paths_runs_past_its_slots) {
    buffer sent(2048, 0x03);
    buffer arrived;
    sent.host(24, {17});
    fib_hton_fcu_path(sent, arrived);
    EXPECT_TRUE(arrived.all(28, 368, 0x03));
    EXPECT_TRUE(arrived.untouched_from(368));
}

TEST(path_slot, zeroes_the_hops_that_are_not_used) {
    for (const uint32_t n : {0U, 1U, 2U, 3U}) {
        buffer sent(2048, 0x11);
        buffer arrived;
        sent.host(24, {0, 1}).host(40, {n << 16});
        fib_hton_fcl_path(sent, arrived);
        EXPECT_TRUE(arrived.all(48, 48 + 4 * n, 0x11)) << n;
        EXPECT_TRUE(arrived.all(48 + 4 * n, 60, 0)) << n;
    }
}

TEST(label_path, zeroes_the_label_that_is_not_used) {
    buffer sent(2048, 0x11);
    buffer arrived;
    sent.host(24, {1, 0});
    fib_hton_fcl_path(sent, arrived);
    EXPECT_TRUE(arrived.all(32, 36, 0x11));
    EXPECT_TRUE(arrived.all(36, 40, 0));
    EXPECT_TRUE(arrived.untouched_from(360));
}

TEST(multicast_path, without_members_is_20_bytes) {
    buffer sent(2048, 0x11);
    buffer arrived;
    sent.host(16, {0});
    fib_hton_fcm_path(sent, arrived);
    EXPECT_TRUE(arrived.all(0, 16, 0x11));
    EXPECT_TRUE(arrived.untouched_from(20));
}

// --- FIB answers, nodes, ports

TEST(verification_answer, without_entries_is_20_bytes) {
    for (auto *convert : {fib_hton_fcu_rsp_path, fib_hton_fcm_rsp_path, fib_hton_fcl_rsp_path}) {
        buffer sent(2048, 0x11);
        buffer arrived;
        sent.host(16, {0});
        convert(sent, arrived);
        EXPECT_TRUE(arrived.untouched_from(20));
    }
}

TEST(fib_synchronisation, keeps_two_bytes_of_the_destination) {
    buffer arrived(2048, 0xaa);
    fib_ntoh_sync(buffer(2048, 0x11), arrived);
    EXPECT_TRUE(arrived.all(0, 2, 0x11));
    EXPECT_TRUE(arrived.all(2, 4, 0xaa));
    EXPECT_TRUE(arrived.all(4, 16, 0x11));
    EXPECT_TRUE(arrived.all(16, 2048, 0xaa));
}

TEST(label_verification, converts_both_labels_whatever_their_count) {
    buffer sent(2048, 0x11);
    buffer arrived;
    sent.host(20, {0, 5, 6});
    fib_hton_verf_fcl(sent, arrived);
    EXPECT_EQ(arrived.net(24), 5U);
    EXPECT_EQ(arrived.net(28), 6U);
}

TEST(port, keeps_only_the_top_bit_of_its_flags) {
    for (auto *convert : {fib_hton_port, fib_ntoh_port}) {
        for (const uint8_t flags : {0xff, 0x80, 0x7f, 0x00}) {
            buffer sent(2048, 0x11);
            buffer arrived;
            sent.bytes(5, {flags});
            convert(sent, arrived);
            EXPECT_EQ(arrived.byte(5), flags & 0x80);
        }
    }
}

TEST(node, clears_its_fourth_byte) {
    for (auto *convert : {fib_hton_node, fib_ntoh_node, rib_hton_node_info, rib_ntoh_node_info}) {
        buffer sent(2048, 0x5a);
        buffer arrived;
        convert(sent, arrived);
        EXPECT_TRUE(arrived.all(0, 3, 0x5a));
        EXPECT_EQ(arrived.byte(3), 0);
        EXPECT_TRUE(arrived.all(4, 16, 0x5a));
    }
}

TEST(vsan_update, without_vsans_is_8_bytes) {
    buffer sent(2048, 0x11);
    buffer arrived;
    sent.host(4, {0});
    fib_hton_vsan_update(sent, arrived);
    EXPECT_TRUE(arrived.all(0, 4, 0x11));
    EXPECT_TRUE(arrived.untouched_from(8));
}

} // namespace
