// The buddy allocator when memory fails: what is answered, and that nothing changes.
#include "mem/buddy/buddy_twin.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace ribkit::mem;
using namespace ribkit::testing;

namespace {

// Memory that fails from the nth allocation on. What the first chunk needs is obtained with it, and it is carved but
// not listed; later chunks have their room, or fall back to lists that have theirs.
TEST(buddy, no_memory) {
    const struct bud *none_made = nullptr;
    {
        const failing_allocation failure(1);
        none_made = bud_create(64);
    }
    EXPECT_EQ(none_made, nullptr);
    for (const size_t nth : {1U, 2U}) {
        struct bud *bud = bud_create(64);
        uint32_t index = 77;
        uint32_t result = 0;
        {
            const failing_allocation failure(nth, failing_allocation::how::onwards);
            result = bud_alloc(bud, 3, &index);
        }
        EXPECT_EQ(index, 0U);
        if (result != RIB_OK) {
            EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
            EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {}, {}));
        } else {
            EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {{13, 3}}, {{3, 0}}));
        }
        EXPECT_EQ(alloc(bud, 16), 16U);
        bud_destroy(bud);
    }
}

// A descriptor that cannot grow its chunks goes on with lists, for which it has room.
TEST(buddy, no_memory_in_the_middle_of_a_walk) {
    for (size_t nth = 1; nth <= 2; nth++) {
        twin_buddies twins(4096);
        for (uint32_t step = 0; step < 100; step++) {
            ASSERT_NO_FATAL_FAILURE(twins.alloc(step % 16 + 1, step < 5 || twins.product()->walked ? 0 : nth));
            ASSERT_NO_FATAL_FAILURE(twins.expect_same());
        }
        ASSERT_TRUE(twins.product()->walked);
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {4096, 90, 10, 5000, 500}));
    }
}

TEST(buddy, no_memory_for_images) {
    twin_buddies twins(300);
    ASSERT_NO_FATAL_FAILURE(random_walk(twins, {300, 65, 0, 200, 100}));
    const words before = saved_by(twins.product());
    uint8_t byte = 0;
    uint8_t *buffer = &byte;
    uint32_t length = 0;
    uint32_t result = 0;
    {
        const failing_allocation failure(1);
        result = bud_serialize(twins.product(), &buffer, &length);
    }
    EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(length, before.size() * 4);
    {
        const failing_allocation failure(1, failing_allocation::how::onwards);
        result = bud_deserialize(twins.product(), reinterpret_cast<const uint8_t *>(before.data()));
    }
    EXPECT_EQ(result, RIB_OK);
    EXPECT_TRUE(twins.product()->walked);
    twins.expect_same();
}

// Without room for the nodes, an image's lists up to the first that is not empty are gone; the rest is as it was.
void expect_no_memory_for_a_larger_image(size_t nth) {
    struct bud *bud = bud_create(64);
    alloc(bud, 4);
    alloc(bud, 9);
    std::vector<twin_buddies::block> many;
    for (uint32_t i = 0; i < 1000; i++) {
        many.push_back({4, i * 16});
    }
    const words image = image_of(20000, 3, 16000, {}, many);
    uint32_t result = 0;
    {
        const failing_allocation failure(nth, failing_allocation::how::onwards);
        result = bud_deserialize(bud, reinterpret_cast<const uint8_t *>(image.data()));
    }
    EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    const words after = saved_by(bud);
    EXPECT_TRUE(std::equal(after.begin(), after.begin() + 3, image.begin()));
    EXPECT_EQ(std::count(after.begin() + 3, after.begin() + 19, 0U), 16);
    EXPECT_EQ(after[3 + 16 + 8], 1U);
    EXPECT_EQ(after.back(), 4U);
    EXPECT_EQ(bud_deserialize(bud, reinterpret_cast<const uint8_t *>(image.data())), RIB_OK);
    EXPECT_EQ(saved_by(bud), image);
    bud_destroy(bud);
}

TEST(buddy, no_memory_for_a_larger_image) {
    expect_no_memory_for_a_larger_image(1);
    expect_no_memory_for_a_larger_image(2); // chunks are there, and given back
}

void expect_no_memory_for_a_table(size_t nth) {
    words table(64, none);
    table[3] = 1;
    struct bud *bud = bud_create(64);
    uint32_t result = 0;
    printed_by([&] {
        const failing_allocation failure(nth, failing_allocation::how::onwards);
        result = bud_create_from_table(bud, table.data());
    });
    EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {}, {}));
    printed_by([&] { result = bud_create_from_table(bud, table.data()); });
    EXPECT_EQ(result, RIB_OK);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {{3, 0}, {12, 4}}, {{1, 3}}));
    bud_destroy(bud);
}

TEST(buddy, no_memory_for_a_table) {
    expect_no_memory_for_a_table(1);
    expect_no_memory_for_a_table(2);
}

TEST(buddy, gives_back_all_memory) {
    const size_t before = blocks_kept();
    const failing_allocation none_fails(SIZE_MAX);
    struct bud *bud = bud_create(1024);
    for (uint32_t i = 0; i < 40; i++) {
        alloc(bud, 16);
    }
    uint8_t *image = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(bud_serialize(bud, &image, &length), RIB_OK);
    EXPECT_EQ(bud_deserialize(bud, image), RIB_OK);
    EXPECT_EQ(alloc(bud, 3), 640U);
    EXPECT_NE(bud_free(bud, 2, 641), RIB_OK); // within a block: from now on lists are walked
    EXPECT_TRUE(bud->walked);
    EXPECT_EQ(bud_deserialize(bud, image), RIB_OK);
    std::free(image);
    bud_destroy(bud);
    EXPECT_EQ(blocks_kept(), before);
}

// What is carved ends within the second chunk: that is no reason to walk lists from then on.
TEST(buddy, an_image_that_ends_within_a_chunk_is_restored_into_chunks) {
    const words image = image_of(24, 0, 24, {{6, 10}}, {{10, 0}, {8, 16}});
    struct bud *bud = bud_create(64);
    EXPECT_EQ(bud_deserialize(bud, reinterpret_cast<const uint8_t *>(image.data())), RIB_OK);
    EXPECT_FALSE(bud->walked);
    EXPECT_EQ(saved_by(bud), image);
    bud_destroy(bud);
}

} // namespace
