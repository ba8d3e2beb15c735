// The buddy allocator on cases small enough to be followed by hand, down to the saved image.
#include "mem/buddy/buddy_twin.h"
#include "rib_codes.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>

#include <unistd.h>

using namespace ribkit::mem;
using namespace ribkit::testing;

namespace {

TEST(buddy, takes_the_lowest_block_of_the_smallest_size_that_fits) {
    struct bud *bud = bud_create(64);
    EXPECT_EQ(saved_by(bud), image_of(64, 64, 0, {}, {}));
    EXPECT_EQ(saved_by(bud).size() * 4, 140U);
    EXPECT_EQ(alloc(bud, 3), 0U);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {{13, 3}}, {{3, 0}}));
    EXPECT_EQ(alloc(bud, 3), 3U);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {{10, 6}}, {{3, 0}, {3, 3}}));
    EXPECT_EQ(bud_free(bud, 3, 0), RIB_OK);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {{3, 0}, {10, 6}}, {{3, 3}}));
    EXPECT_EQ(bud_free(bud, 3, 3), RIB_OK);
    EXPECT_EQ(saved_by(bud), image_of(64, 64, 0, {}, {}));
    EXPECT_EQ(bud_destroy(bud), RIB_OK);
}

TEST(buddy, refuses_nonsense_before_it_touches_anything) {
    struct bud *bud = bud_create(64);
    uint32_t index = 77;
    EXPECT_EQ(bud_alloc(nullptr, 1, &index), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_alloc(bud, 0, &index), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_alloc(bud, 17, &index), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_alloc(bud, 1, nullptr), RIB_BAD_PARAMETERS);
    EXPECT_EQ(index, 77U);
    EXPECT_EQ(bud_free(bud, 1, 0), RIB_BAD_PARAMETERS);
    alloc(bud, 4);
    EXPECT_EQ(bud_free(nullptr, 4, 0), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_free(bud, 0, 0), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_free(bud, 17, 0), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_free(bud, 4, 16), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_free(bud, 4, 0xffffffff), RIB_BAD_PARAMETERS);
    EXPECT_EQ(bud_destroy(bud), RIB_OK);
    EXPECT_EQ(bud_destroy(nullptr), RIB_BAD_PARAMETERS);
}

TEST(buddy, null_descriptors_of_the_images_and_counts) {
    uint32_t counts[16];
    uint32_t result = 0;
    uint8_t byte = 0;
    uint8_t *buffer = &byte;
    uint32_t length = 77;
    EXPECT_EQ(printed_by([&] { result = bud_used_count(nullptr, counts); }).substr(9),
              "bud_used_count(): Bad buddy descriptor!\n");
    EXPECT_EQ(result, RIB_FAILED);
    EXPECT_EQ(printed_by([&] { result = bud_free_count(nullptr, counts); }).substr(9),
              "bud_free_count(): Bad buddy descriptor!\n");
    EXPECT_EQ(result, RIB_FAILED);
    EXPECT_EQ(bud_serialize(nullptr, &buffer, &length), RIB_FAILED);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(length, 77U);
    EXPECT_EQ(bud_deserialize(nullptr, &byte), RIB_FAILED);
    struct bud *bud = bud_create(16);
    EXPECT_EQ(bud_deserialize(bud, nullptr), RIB_FAILED);
    bud_destroy(bud);
    EXPECT_EQ(printed_by([] { bud_show(nullptr); }), "Bad buddy descriptor!\n");
    EXPECT_EQ(printed_by([] { bud_show_free(nullptr, 3); }), "\nbud_show_free() bad descriptor!\n");
}

TEST(buddy, a_space_without_a_whole_chunk_is_full) {
    struct bud *bud = bud_create(56);
    for (uint32_t chunk = 0; chunk < 3; chunk++) {
        EXPECT_EQ(alloc(bud, 16), chunk * 16);
    }
    uint32_t index = 77;
    EXPECT_EQ(bud_alloc(bud, 1, &index), RIB_HW_FULL);
    EXPECT_EQ(index, none);
    EXPECT_EQ(bud_free(bud, 16, 16), RIB_OK);
    EXPECT_EQ(alloc(bud, 9), 16U);
    bud_destroy(bud);
}

TEST(buddy, a_carve_mark_beyond_the_space_is_a_bug) {
    twin_buddies twins(64);
    twins.restore(image_of(64, 0, 80, {{16, 0}, {16, 16}}, {{16, 32}, {16, 48}, {16, 64}}));
    twins.alloc(16);
    twins.alloc(16);
    uint32_t index = 77;
    EXPECT_EQ(bud_alloc(twins.product(), 16, &index), RIB_SW_BUG);
    EXPECT_EQ(index, none);
    twins.expect_same();
}

TEST(buddy, a_mark_inside_a_chunk_is_carved_from_as_it_stands) {
    twin_buddies twins(64);
    twins.restore(image_of(64, 44, 20, {}, {{4, 16}, {16, 0}}));
    for (const uint32_t size : {16U, 3U, 13U, 1U}) {
        twins.alloc(size);
        twins.expect_same();
    }
    twins.free(16, 20);
    twins.expect_same();
}

TEST(buddy, the_largest_space_costs_nothing) {
    struct bud *bud = bud_create(0xffffffff);
    ASSERT_NE(bud, nullptr);
    EXPECT_EQ(alloc(bud, 16), 0U);
    EXPECT_NE(printed_by([&] { bud_show(bud); }).find("Global Space (bytes)\t-17\t\t16\n"), std::string::npos);
    bud_destroy(bud);
}

TEST(buddy, shows_sixteen_indices_a_line) {
    struct bud *bud = bud_create(1024);
    for (uint32_t i = 0; i < 33; i++) {
        alloc(bud, 9);
    }
    std::string lines = "\nIndices of block with size 7\n";
    for (uint32_t i = 0; i < 33; i++) {
        lines += std::to_string(i * 16 + 9) + (i % 16 == 15 ? " \n" : " ");
    }
    EXPECT_EQ(printed_by([&] { bud_show_free(bud, 7); }), lines + "\n");
    EXPECT_EQ(printed_by([&] { bud_show_free(bud, 0); }), "\nIndices of block with size 0\n\n");
    EXPECT_EQ(printed_by([&] { bud_show_free(bud, 17); }), "\nIndices of block with size 17\n\n");
    bud_destroy(bud);
}

// What bud_show_used prints when this is typed.
std::string shown_used(const struct bud *bud, const std::string &typed) {
    const int saved = dup(STDIN_FILENO);
    std::FILE *input = std::tmpfile();
    std::fputs(typed.c_str(), input);
    std::rewind(input);
    EXPECT_EQ(dup2(fileno(input), STDIN_FILENO), STDIN_FILENO);
    std::clearerr(stdin);
    std::string printed = printed_by([&] { bud_show_used(bud); });
    while (std::getchar() != EOF) {
    }
    std::clearerr(stdin);
    dup2(saved, STDIN_FILENO);
    close(saved);
    std::fclose(input);
    return printed;
}

TEST(buddy, asks_which_used_blocks_to_show) {
    struct bud *bud = bud_create(1024);
    std::string lines = "Block Size> \nIndices of block with size 4\n";
    for (uint32_t i = 0; i < 17; i++) {
        lines += std::to_string(alloc(bud, 4)) + (i % 16 == 15 ? " \n" : " ");
    }
    EXPECT_EQ(shown_used(bud, "4\n"), lines + "\n");
    EXPECT_EQ(shown_used(bud, "  5 and more"), "Block Size> \nIndices of block with size 5\n\n");
    EXPECT_EQ(shown_used(bud, "-1\n"), "Block Size> \nIndices of block with size -1\n\n");
    EXPECT_EQ(shown_used(bud, ""), "Block Size> \nIndices of block with size 0\n\n");
    EXPECT_EQ(shown_used(nullptr, "4\n"), "Block Size> \nbud_show_used() bad descriptor!\n");
    EXPECT_EQ(bud_free(bud, 5, 0), RIB_FAILED);
    EXPECT_EQ(bud_free(bud, 4, 2), RIB_FAILED);
    bud_destroy(bud);
}

TEST(buddy, a_table_tells_its_blocks) {
    words table(40, none);
    std::fill_n(table.begin(), 3, 7U);
    struct bud *bud = bud_create(40);
    uint32_t result = 77;
    EXPECT_EQ(printed_by([&] { result = bud_create_from_table(bud, table.data()); }),
              "Start bud_create_from_table () \ntab_size = 40 \nlast used index = 2 \n"
              "free index after shifting to chunk boundary = 16 \nfree size = 24 \n");
    EXPECT_EQ(result, RIB_OK);
    EXPECT_EQ(saved_by(bud), image_of(40, 24, 16, {{13, 3}}, {{3, 0}}));
    bud_destroy(bud);
}

TEST(buddy, a_free_table_carves_nothing) {
    const words table(40, none);
    for (const uint32_t total : {40U, 0U}) {
        struct bud *bud = bud_create(total);
        std::string expected = "Start bud_create_from_table () \ntab_size = ";
        expected += std::to_string(total);
        expected += " \nlast used index = -1 \nfree index after shifting to chunk boundary = 0 \nfree size = ";
        expected += std::to_string(total);
        expected += " \n";
        EXPECT_EQ(printed_by([&] { bud_create_from_table(bud, table.data()); }), expected);
        EXPECT_EQ(saved_by(bud), image_of(total, total, 0, {}, {}));
        bud_destroy(bud);
    }
}

TEST(buddy, a_table_that_ends_inside_a_chunk) {
    words table(40, none);
    table[39] = 1;
    table[33] = 1;
    twin_buddies twins(40);
    twins.table(table);
    EXPECT_EQ(saved_by(twins.product()),
              image_of(40, 0, 40, {{1, 32}, {5, 34}, {16, 0}, {16, 16}}, {{1, 33}, {1, 39}}));
    EXPECT_FALSE(twins.product()->walked);
    for (const uint32_t size : {5U, 16U, 16U, 1U, 1U}) {
        twins.alloc(size);
        twins.expect_same();
    }
    for (const uint32_t index : {39U, 33U, 32U}) {
        twins.free(1, index);
        twins.expect_same();
    }
    twins.free(5, 34);
    twins.free(16, 16);
    twins.expect_same();
    EXPECT_EQ(saved_by(twins.product()), image_of(40, 0, 40, {{8, 32}, {16, 16}}, {{16, 0}}));
}

TEST(buddy, freeing_what_was_never_allocated_changes_its_free_neighbours) {
    twin_buddies twins(64);
    for (const uint32_t size : {4U, 4U, 4U}) {
        twins.alloc(size);
    }
    twins.free(4, 4);
    twins.free(2, 9); // no block, no free neighbour: nothing
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 48, 16, {{4, 4}, {4, 12}}, {{4, 0}, {4, 8}}));
    EXPECT_FALSE(twins.product()->walked);
    twins.free(2, 8); // half of a block, behind a free one: that one swallows it
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 48, 16, {{6, 4}, {4, 12}}, {{4, 0}, {4, 8}}));
    twins.free(2, 10); // between the two: both go, for one that starts with the first
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 48, 16, {{12, 4}}, {{4, 0}, {4, 8}}));
    twins.expect_same();
    EXPECT_TRUE(twins.product()->walked);
    twins.free(1, 3); // in front of a free one: that one goes
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 48, 16, {}, {{4, 0}, {4, 8}}));
    twins.expect_same();
}

TEST(buddy, freeing_what_has_no_neighbour_that_fits_needs_no_lists) {
    twin_buddies twins(64);
    twins.alloc(12);
    twins.alloc(4);
    twins.free(12, 0);
    twins.free(8, 12); // the free block in front fits, but not into the chunk with so large a one
    twins.free(1, 2);  // inside a free block
    twins.expect_same();
    EXPECT_FALSE(twins.product()->walked);
}

TEST(buddy, a_failing_free_of_a_chunk_still_releases_the_top) {
    twin_buddies twins(64);
    twins.restore(image_of(64, 16, 48, {{16, 16}, {16, 32}}, {{16, 0}}));
    EXPECT_EQ(bud_free(twins.product(), 16, 16), RIB_FAILED);
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 48, 16, {}, {{16, 0}}));
}

TEST(buddy, a_failing_free_of_less_releases_nothing) {
    twin_buddies twins(64);
    twins.restore(image_of(64, 16, 48, {{16, 16}, {16, 32}}, {{16, 0}}));
    EXPECT_EQ(bud_free(twins.product(), 3, 5), RIB_FAILED);
    twins.expect_same();
    EXPECT_FALSE(twins.product()->walked);
}

TEST(buddy, nothing_is_released_where_all_space_counts_as_free) {
    twin_buddies twins(64);
    twins.restore(image_of(64, 64, 32, {}, {{16, 0}, {16, 16}}));
    EXPECT_FALSE(twins.product()->walked);
    twins.free(16, 16);
    twins.expect_same();
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 64, 32, {{16, 16}}, {{16, 0}}));
}

} // namespace
