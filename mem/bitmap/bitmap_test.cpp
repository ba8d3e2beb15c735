// Bitmaps at their borders: how positions are numbered, what is refused, what is traced and printed.
#include "mem/bitmap/naive_bitmap.h"
#include "mem/random_words.h"
#include "rib_codes.h"
#include "rib_mem.h"
#include "testing/capture.h"
#include "testing/guarded.h"
#include <algorithm>
#include <array>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using ribkit::mem::random_words;
using ribkit::testing::guarded;
using ribkit::testing::printed_by;

namespace {

using bytes = std::vector<uint8_t>;

// A timed trace line without its "HH:MM:SS ".
std::string traced(const std::string &line) { return line.substr(9); }

TEST(bitmap, numbers_positions_from_the_least_significant_bit) {
    std::array<uint8_t, 3> map{};
    EXPECT_EQ(bmap_set(map.data(), 2, 0), RIB_OK);
    EXPECT_EQ(bmap_set(map.data(), 2, 7), RIB_OK);
    EXPECT_EQ(bmap_set(map.data(), 2, 8), RIB_OK);
    EXPECT_EQ(bmap_set(map.data(), 2, 8), RIB_OK);
    EXPECT_EQ(map, (std::array<uint8_t, 3>{0x81, 0x01, 0x00}));
    EXPECT_EQ(bmap_is_set(map.data(), 2, 7), 1U);
    EXPECT_EQ(bmap_is_clr(map.data(), 2, 7), 0U);
    EXPECT_EQ(bmap_is_set(map.data(), 2, 6), 0U);
    EXPECT_EQ(bmap_is_clr(map.data(), 2, 6), 1U);
    EXPECT_EQ(bmap_clr(map.data(), 2, 7), RIB_OK);
    EXPECT_EQ(bmap_clr(map.data(), 2, 7), RIB_OK);
    EXPECT_EQ(map, (std::array<uint8_t, 3>{0x01, 0x01, 0x00}));
}

TEST(bitmap, single_bit_operations_reach_the_byte_past_the_length) {
    std::array<uint8_t, 6> map{};
    EXPECT_EQ(bmap_set(map.data(), 4, 39), RIB_OK);
    EXPECT_EQ(map[4], 0x80);
    EXPECT_EQ(bmap_is_set(map.data(), 4, 39), 1U);
    EXPECT_EQ(bmap_is_clr(map.data(), 4, 39), 0U);
    EXPECT_EQ(bmap_clr(map.data(), 4, 39), RIB_OK);
    EXPECT_EQ(map[4], 0x00);
    EXPECT_EQ(bmap_set(map.data(), 0, 3), RIB_OK);
    EXPECT_EQ(map[0], 0x08);
}

TEST(bitmap, single_bit_operations_refuse_and_trace_beyond_it) {
    std::array<uint8_t, 6> map{0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    const auto before = map;
    uint32_t result = 0;
    EXPECT_EQ(traced(printed_by([&] { result = bmap_set(map.data(), 4, 40); })), "bmap_set() bad pos 40!\n");
    EXPECT_EQ(result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(traced(printed_by([&] { result = bmap_clr(map.data(), 4, 40); })), "bmap_clr() bad pos 40!\n");
    EXPECT_EQ(result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(traced(printed_by([&] { result = bmap_is_set(map.data(), 4, 0xffffffff); })),
              "bmap_is_set() bad pos 4294967295!\n");
    EXPECT_EQ(result, 0U);
    EXPECT_EQ(traced(printed_by([&] { result = bmap_is_clr(map.data(), 4, 40); })), "bmap_is_clr() bad pos 40!\n");
    EXPECT_EQ(result, 1U);
    EXPECT_EQ(map, before);
}

TEST(bitmap, searches_find_the_lowest) {
    std::array<uint8_t, 2> map{0xff, 0x20};
    uint32_t position = 77;
    EXPECT_EQ(bmap_next_set(map.data(), 2, 13, &position), RIB_OK);
    EXPECT_EQ(position, 13U);
    EXPECT_EQ(bmap_next_set(map.data(), 2, 14, &position), RIB_FAILED);
    EXPECT_EQ(position, 0U);
    map = {0xff, 0x01};
    EXPECT_EQ(bmap_next_clr(map.data(), 2, 0, &position), RIB_OK);
    EXPECT_EQ(position, 9U);
    EXPECT_EQ(map[1], 0x03);
}

TEST(bitmap, searches_stop_before_the_length) {
    std::array<uint8_t, 3> map{0x00, 0x00, 0x01};
    uint32_t position = 77;
    EXPECT_EQ(bmap_next_set(map.data(), 2, 0, &position), RIB_FAILED);
    position = 77;
    EXPECT_EQ(bmap_next_set(map.data(), 2, 16, &position), RIB_FAILED);
    EXPECT_EQ(position, 0U);
    position = 77;
    EXPECT_EQ(bmap_next_clr(map.data(), 2, 16, &position), RIB_FAILED);
    EXPECT_EQ(position, 0U);
    EXPECT_EQ(bmap_next_clr(map.data(), 2, 0xffffffff, &position), RIB_FAILED);
    EXPECT_EQ(map, (std::array<uint8_t, 3>{0x00, 0x00, 0x01}));
}

TEST(bitmap, empty_maps) {
    uint32_t position = 77;
    uint8_t byte = 0xa5;
    EXPECT_EQ(bmap_next_set(&byte, 0, 0, &position), RIB_FAILED);
    EXPECT_EQ(position, 0U);
    EXPECT_EQ(bmap_count(&byte, 0), 0U);
    EXPECT_EQ(bmap_is_same(&byte, &byte, 0), 1U);
    EXPECT_EQ(bmap_init(&byte, 0), RIB_OK);
    EXPECT_EQ(byte, 0xa5);
    EXPECT_EQ(printed_by([&] { bmap_show(&byte, 0, "none"); }), "none           \t\n");
}

TEST(bitmap, shows_sixteen_bytes_a_line) {
    bytes map(33, 0xab);
    map[16] = 0x01;
    std::string line;
    for (int i = 0; i < 16; i++) {
        line += "ab ";
    }
    const std::string second = "01 " + line.substr(3);
    EXPECT_EQ(printed_by([&] { bmap_show(map.data(), 16, "ports"); }), "ports          \t" + line + "\n");
    EXPECT_EQ(printed_by([&] { bmap_show(map.data(), 17, "exactly fifteen"); }),
              "exactly fifteen\t" + line + "\n\t\t01 \n");
    EXPECT_EQ(printed_by([&] { bmap_show(map.data(), 33, "a label of too many letters"); }),
              "a label of too \t" + line + "\n\t\t" + second + "\n\t\tab \n");
}

// Mostly one value with a few bits flipped, so that long stretches, and ends of stretches, occur at every alignment.
bytes stretches(random_words &random, size_t size) {
    bytes map(size, random() % 2 != 0 ? 0xff : 0x00);
    for (uint32_t flips = random() % 4; size != 0 && flips > 0; flips--) {
        map[random() % size] ^= static_cast<uint8_t>(1U << random() % 8);
    }
    return map;
}

bytes noise(random_words &random, size_t size) {
    bytes map(size);
    std::generate(map.begin(), map.end(), [&] { return static_cast<uint8_t>(random()); });
    return map;
}

void expect_same_searches(random_words &random, const bytes &content) {
    const auto length = static_cast<uint32_t>(content.size());
    const uint32_t start = random() % (length * 8 + 9);
    const guarded map(content, random() % 2 != 0 ? guarded::edge::after : guarded::edge::before);
    uint32_t expected = 0;
    uint32_t position = 77;
    bool found = ribkit::mem::naive::next(content.data(), length, start, true, &expected);
    ASSERT_EQ(bmap_next_set(map.data(), length, start, &position), found ? RIB_OK : RIB_FAILED);
    ASSERT_EQ(position, expected);
    found = ribkit::mem::naive::next(content.data(), length, start, false, &expected);
    ASSERT_EQ(bmap_next_clr(map.data(), length, start, &position), found ? RIB_OK : RIB_FAILED);
    ASSERT_EQ(position, expected);
    bytes claimed = content;
    if (found) {
        claimed[expected / 8] |= static_cast<uint8_t>(1U << expected % 8);
    }
    ASSERT_TRUE(std::equal(claimed.begin(), claimed.end(), map.data()));
    ASSERT_EQ(bmap_count(map.data(), length), ribkit::mem::naive::count(claimed.data(), length));
}

TEST(bitmap, searches_and_counts_as_the_byte_loops_do) {
    random_words random(41);
    for (uint32_t step = 0; step < RIBKIT_RANDOM_STEPS / 20; step++) {
        const size_t size = step % 50 == 0 ? random() % 700 : random() % 100;
        ASSERT_NO_FATAL_FAILURE(
            expect_same_searches(random, step % 3 == 0 ? noise(random, size) : stretches(random, size)))
            << "step " << step;
    }
}

TEST(bitmap, counts_full_maps) {
    for (uint32_t length = 0; length < 600; length++) {
        const guarded map(bytes(length, 0xff));
        ASSERT_EQ(bmap_count(map.data(), length), length * 8);
    }
}

using combine = uint32_t (*)(const uint8_t *, const uint8_t *, uint32_t, uint8_t *);

void expect_combined(combine function, const bytes &a, const bytes &b, const bytes &expected) {
    const auto length = static_cast<uint32_t>(a.size());
    const guarded out(a.size());
    const guarded left(a);
    const guarded right(b, guarded::edge::before);
    ASSERT_EQ(function(left.data(), right.data(), length, out.data()), RIB_OK);
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), out.data()));
    bytes in_place = a;
    function(in_place.data(), b.data(), length, in_place.data());
    ASSERT_EQ(in_place, expected);
    in_place = b;
    function(a.data(), in_place.data(), length, in_place.data());
    ASSERT_EQ(in_place, expected);
}

TEST(bitmap, combines_byte_by_byte) {
    random_words random(42);
    for (size_t size = 0; size < 200; size++) {
        const bytes a = noise(random, size);
        const bytes b = noise(random, size);
        bytes either(size);
        bytes gained(size);
        bytes lost(size);
        for (size_t i = 0; i < size; i++) {
            either[i] = static_cast<uint8_t>(a[i] | b[i]);
            gained[i] = static_cast<uint8_t>(b[i] & ~a[i]);
            lost[i] = static_cast<uint8_t>(a[i] & ~b[i]);
        }
        ASSERT_NO_FATAL_FAILURE(expect_combined(bmap_or, a, b, either));
        ASSERT_NO_FATAL_FAILURE(expect_combined(bmap_to_set, a, b, gained));
        ASSERT_NO_FATAL_FAILURE(expect_combined(bmap_to_clr, a, b, lost));
    }
}

TEST(bitmap, same_means_every_byte) {
    for (uint32_t size = 1; size < 100; size++) {
        const bytes a(size, 0x11);
        EXPECT_EQ(bmap_is_same(a.data(), bytes(a).data(), size), 1U);
        for (uint32_t i = 0; i < size; i++) {
            bytes b = a;
            b[i] ^= 0x80;
            EXPECT_EQ(bmap_is_same(a.data(), b.data(), size), 0U);
            EXPECT_EQ(bmap_is_same(a.data(), b.data(), i), 1U);
        }
    }
}

TEST(bitmap, init_clears_the_length_only) {
    bytes map(9, 0xff);
    EXPECT_EQ(bmap_init(map.data(), 8), RIB_OK);
    EXPECT_EQ(map, (bytes{0, 0, 0, 0, 0, 0, 0, 0, 0xff}));
}

} // namespace
