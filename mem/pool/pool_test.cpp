// Pools on cases small enough to be followed by hand: items, chunks, what is refused, displays.
#include "mem/pool/pool_twin.h"
#include "rib_codes.h"
#include "rib_mem.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <vector>

using namespace ribkit::mem;
using namespace ribkit::testing;

namespace {

TEST(pool, first_items_of_two_chunks) {
    struct pool *pool = pool_create(10, 24);
    auto *first = static_cast<uint8_t *>(pool_alloc(pool));
    EXPECT_TRUE(zeros(first, 240));
    for (size_t i = 1; i < 10; i++) {
        EXPECT_EQ(pool_alloc(pool), first + i * 24);
    }
    auto *other = static_cast<uint8_t *>(pool_alloc(pool));
    EXPECT_TRUE(other + 240 <= first || other >= first + 240);
    const std::string head = "\nChunk size 10, data size 24, bitmap size 2.\nChunk\t\t# Used\t\tUsed "
                             "BitMap\n-----\t\t------\t\t-----------\n";
    char lines[100];
    std::snprintf(lines, sizeof lines, "%08xh\t10        \tff 03 \n%08xh\t1         \t01 00 \n",
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(first)),
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(other)));
    EXPECT_EQ(printed_by([&] { pool_show(pool); }), head + lines);
    EXPECT_EQ(counted(pool), 11U);
    EXPECT_EQ(pool_destroy(pool), RIB_OK);
}

TEST(pool, long_bitmaps_wrap_in_the_display) {
    for (const uint32_t items : {128U, 129U, 264U}) {
        struct pool *pool = pool_create(items, 1);
        pool_alloc(pool);
        const std::string shown = printed_by([&] { pool_show(pool); });
        std::string bitmap = "\t01 ";
        for (uint32_t i = 1; i < (items + 7) / 8; i++) {
            bitmap += i % 16 == 0 ? "\n\t\t\t\t00 " : "00 ";
        }
        EXPECT_EQ(shown.substr(shown.size() - bitmap.size() - 1), bitmap + "\n");
        pool_destroy(pool);
    }
}

TEST(pool, nothing_to_work_on) {
    uint32_t result = 0;
    void *item = &result;
    EXPECT_EQ(traced(printed_by([&] { item = pool_alloc(nullptr); })), "pool_alloc() null desc!\n");
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(nullptr, &result); })),
              formatted("pool_free() null desc (nil) data %p!\n", &result));
    EXPECT_EQ(result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(traced(printed_by([&] { result = pool_destroy(nullptr); })), "pool_destroy() null desc!\n");
    EXPECT_EQ(result, RIB_BAD_PARAMETERS);
    uint32_t count = 77;
    EXPECT_EQ(traced(printed_by([&] { result = pool_count(nullptr, &count); })), "pool_count() null desc!\n");
    EXPECT_EQ(result, RIB_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(traced(printed_by([] { pool_show(nullptr); })), "pool_show() null desc!\n");
}

TEST(pool, empty) {
    struct pool *pool = pool_create(10, 24);
    uint32_t result = 0;
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, nullptr); })),
              formatted("pool_free() null desc %p data (nil)!\n", pool));
    EXPECT_EQ(result, RIB_BAD_PARAMETERS);
    EXPECT_EQ(printed_by([&] { pool_show(pool); }), "Empty list in memory pool!\n");
    EXPECT_EQ(counted(pool), 0U);
    EXPECT_EQ(pool_free(pool, &result), RIB_FAILED);
    EXPECT_EQ(pool_destroy(pool), RIB_OK);
}

TEST(pool, an_empty_chunk_goes_at_once) {
    struct pool *pool = pool_create(2, 8);
    void *item = pool_alloc(pool);
    EXPECT_EQ(pool_free(pool, item), RIB_OK);
    EXPECT_EQ(printed_by([&] { pool_show(pool); }), "Empty list in memory pool!\n");
    EXPECT_EQ(pool_free(pool, item), RIB_FAILED);
    EXPECT_NE(pool_alloc(pool), nullptr);
    EXPECT_EQ(counted(pool), 1U);
    EXPECT_EQ(pool_destroy(pool), RIB_OK);
}

TEST(pool, a_freed_item_is_cleared_and_handed_out_first) {
    struct pool *pool = pool_create(4, 24);
    std::vector<uint8_t *> items(12);
    for (uint8_t *&item : items) {
        item = static_cast<uint8_t *>(pool_alloc(pool));
        std::fill_n(item, 24, uint8_t{0xff});
    }
    for (const size_t i : {9U, 6U, 5U, 2U}) {
        EXPECT_EQ(pool_free(pool, items[i]), RIB_OK);
        EXPECT_TRUE(zeros(items[i], 24));
        EXPECT_EQ(items[i][-1], 0xff);
    }
    for (const size_t i : {2U, 5U, 6U, 9U}) {
        EXPECT_EQ(pool_alloc(pool), items[i]);
    }
    pool_destroy(pool);
}

TEST(pool, chunks_that_come_and_go_take_no_room_in_the_index) {
    struct pool *pool = pool_create(1, 8);
    const uint32_t capacity = pool->index.capacity;
    for (uint32_t live = 0; live < capacity / 2; live++) {
        pool_alloc(pool);
    }
    for (uint32_t i = 0; i < 10 * capacity; i++) {
        EXPECT_EQ(pool_free(pool, pool_alloc(pool)), RIB_OK);
    }
    EXPECT_EQ(pool->index.capacity, capacity);
    EXPECT_EQ(counted(pool), capacity / 2);
    pool_destroy(pool);
}

TEST(pool, double_free_is_only_traced) {
    struct pool *pool = pool_create(4, 24);
    auto *item = static_cast<uint8_t *>(pool_alloc(pool));
    auto *other = static_cast<uint8_t *>(pool_alloc(pool));
    EXPECT_EQ(pool_free(pool, item), RIB_OK);
    item[3] = 9;
    uint32_t result = 77;
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, item); })),
              formatted("pool_free_data() %p already freed!\n", item));
    EXPECT_EQ(result, RIB_OK);
    EXPECT_EQ(item[3], 9);
    EXPECT_EQ(counted(pool), 1U);
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, other + 24); })),
              formatted("pool_free_data() %p already freed!\n", other + 24));
    pool_destroy(pool);
}

TEST(pool, foreign_and_unaligned_pointers) {
    struct pool *pool = pool_create(4, 24);
    auto *item = static_cast<uint8_t *>(pool_alloc(pool));
    uint8_t *end = item + size_t{4} * 24;
    uint32_t result = 77;
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, item + 1); })),
              formatted("pool_free_data() %p not aligned!\n", item + 1));
    EXPECT_EQ(result, RIB_FAILED);
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, end - 1); })),
              formatted("pool_free_data() %p not aligned!\n", end - 1));
    EXPECT_EQ(printed_by([&] { result = pool_free(pool, end); }), "");
    EXPECT_EQ(result, RIB_FAILED);
    EXPECT_EQ(pool_free(pool, item - 1), RIB_FAILED);
    EXPECT_EQ(pool_free(pool, &result), RIB_FAILED);
    EXPECT_EQ(pool_free(pool, reinterpret_cast<void *>(UINTPTR_MAX)), RIB_FAILED);
    EXPECT_EQ(pool_free(pool, reinterpret_cast<void *>(uintptr_t{1})), RIB_FAILED);
    EXPECT_EQ(counted(pool), 1U);
    pool_destroy(pool);
}

TEST(pool, items_of_no_bytes_are_all_one_and_never_found) {
    struct pool *pool = pool_create(3, 0);
    void *item = pool_alloc(pool);
    EXPECT_NE(item, nullptr);
    EXPECT_EQ(pool_alloc(pool), item);
    EXPECT_EQ(counted(pool), 2U);
    EXPECT_EQ(pool_free(pool, item), RIB_FAILED);
    pool_destroy(pool);
}

TEST(pool, chunks_of_no_items_pile_up) {
    struct pool *pool = pool_create(0, 8);
    for (int i = 0; i < 100; i++) {
        EXPECT_EQ(pool_alloc(pool), nullptr);
    }
    EXPECT_EQ(counted(pool), 0U);
    const std::string shown = printed_by([&] { pool_show(pool); });
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 4 + 100);
    pool_destroy(pool);
}

TEST(pool, items_that_no_memory_holds) {
    for (const uint32_t most : {UINT32_C(0x80000000), UINT32_MAX}) {
        struct pool *pool = pool_create(most, most);
        uint8_t foreign = 0;
        EXPECT_EQ(pool_free(pool, &foreign), RIB_FAILED);
        EXPECT_EQ(pool_destroy(pool), RIB_OK);
    }
}

TEST(pool, no_memory_for_the_descriptor) {
    const struct pool *pool = nullptr;
    const std::string printed = printed_by([&] {
        const failing_allocation failure(1);
        pool = pool_create(10, 24);
    });
    EXPECT_EQ(traced(printed), "pool_create() no memory for desc!\n");
    EXPECT_EQ(pool, nullptr);
}

void expect_failed_chunk(struct pool *pool, size_t nth, const char *text, size_t kept) {
    const void *item = pool;
    const size_t before = blocks_kept();
    const std::string printed = printed_by([&] {
        const failing_allocation failure(nth);
        item = pool_alloc(pool);
    });
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(traced(printed), text);
    EXPECT_EQ(blocks_kept() - before, kept);
}

TEST(pool, no_memory_for_a_chunk_leaves_the_pieces_and_the_pool) {
    struct pool *pool = pool_create(1, 24);
    for (uint32_t live = 0; live < 3; live++) {
        expect_failed_chunk(pool, 1, "pool_new_chunk() no memory for new!\n", 0);
        expect_failed_chunk(pool, 2, "pool_new_chunk() no memory for new->bmap!\n", 1);
        expect_failed_chunk(pool, 3, "pool_new_chunk() no memory for new->chunk!\n", 2);
        EXPECT_EQ(counted(pool), live);
        EXPECT_NE(pool_alloc(pool), nullptr);
    }
    pool_destroy(pool);
}

TEST(pool, gives_back_all_memory) {
    const size_t before = blocks_kept();
    const failing_allocation none_fails(SIZE_MAX);
    struct pool *pool = pool_create(1, 24);
    std::vector<void *> items(100);
    std::generate(items.begin(), items.end(), [&] { return pool_alloc(pool); });
    for (size_t i = 0; i < items.size(); i += 2) {
        EXPECT_EQ(pool_free(pool, items[i]), RIB_OK);
    }
    pool_destroy(pool);
    EXPECT_EQ(blocks_kept(), before);
}

} // namespace
