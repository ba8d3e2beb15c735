#include "mem/naive_pool.h"
#include "mem/pool.h"
#include "mem/random_words.h"
#include "rib_codes.h"
#include "rib_mem.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>

#include <string>
#include <vector>

using ribkit::pool_chunk;
using ribkit::testing::blocks_kept;
using ribkit::testing::failing_allocation;
using ribkit::testing::printed_by;

namespace {

std::string traced(const std::string &line) { return line.substr(std::min<size_t>(9, line.size())); }

std::string formatted(const char *format, const void *at) {
    char text[100];
    std::snprintf(text, sizeof text, format, at);
    return text;
}

uint32_t counted(const struct pool *pool) {
    uint32_t count = 77;
    EXPECT_EQ(pool_count(pool, &count), RIB_OK);
    return count;
}

bool zeros(const uint8_t *from, size_t size) {
    return std::all_of(from, from + size, [](uint8_t byte) { return byte == 0; });
}

// What must hold between a pool's list and its index at any time.
void expect_sound(const struct pool &pool) {
    uint32_t chunks = 0;
    uint32_t in_use = 0;
    const pool_chunk *previous = nullptr;
    for (const pool_chunk *chunk = pool.first; chunk != nullptr; previous = chunk, chunk = chunk->next, chunks++) {
        ASSERT_EQ(chunk->previous, previous);
        ASSERT_TRUE(previous == nullptr || previous->slot < chunk->slot);
        ASSERT_LT(chunk->slot, pool.index.next_slot);
        ASSERT_EQ(pool.index.slots[chunk->slot], chunk);
        ASSERT_EQ(chunk->used, ribkit::naive::count(chunk->bitmap, pool.bitmap_size));
        ASSERT_GT(chunk->used, 0U);
        ASSERT_EQ(ribkit::tree_holds(pool.index.room, chunk->slot), chunk->used < pool.chunk_size);
        uint32_t lowest = 0;
        ASSERT_TRUE(!ribkit::naive::next(chunk->bitmap, pool.bitmap_size, 0, false, &lowest) ||
                    lowest >= chunk->full_below);
        ASSERT_EQ(ribkit::index_holder(pool, chunk->data), chunk);
        ASSERT_EQ(ribkit::index_holder(pool, chunk->data + pool.area - 1), chunk);
        in_use += chunk->used;
    }
    ASSERT_EQ(pool.last, previous);
    ASSERT_EQ(pool.index.chunks, chunks);
    ASSERT_EQ(pool.in_use, in_use);
    ASSERT_LE(pool.index.next_slot, pool.index.capacity);
}

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
    uint32_t result = 77;
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, item + 1); })),
              formatted("pool_free_data() %p not aligned!\n", item + 1));
    EXPECT_EQ(result, RIB_FAILED);
    EXPECT_EQ(traced(printed_by([&] { result = pool_free(pool, item + 4 * 24 - 1); })),
              formatted("pool_free_data() %p not aligned!\n", item + 4 * 24 - 1));
    EXPECT_EQ(printed_by([&] { result = pool_free(pool, item + 4 * 24); }), "");
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

// The same calls on the pool and on its model, whose chunks stand where the pool's do.
class twin_pools {
  public:
    twin_pools(uint32_t chunk_size, uint32_t data_size)
        : model_(chunk_size, data_size, false), pool_(pool_create(chunk_size, data_size)) {}
    twin_pools(const twin_pools &) = delete;
    twin_pools &operator=(const twin_pools &) = delete;
    ~twin_pools() { pool_destroy(pool_); }

    void alloc() { accept(static_cast<uint8_t *>(pool_alloc(pool_))); }

    // The nth allocation fails, if there is one: no item, and nothing changed.
    void alloc_failing(size_t nth) {
        void *item = nullptr;
        bool failed = false;
        const std::string printed = printed_by([&] {
            const failing_allocation failure(nth);
            item = pool_alloc(pool_);
            failed = failure.happened();
        });
        ASSERT_EQ(item == nullptr, !printed.empty());
        ASSERT_TRUE(failed || item != nullptr);
        if (item != nullptr) {
            accept(static_cast<uint8_t *>(item));
        }
    }

    void accept(uint8_t *item) {
        ASSERT_NE(item, nullptr);
        ASSERT_TRUE(zeros(item, model_.data_size));
        const auto [chunk, number] = model_.take();
        if (chunk->data == nullptr) {
            ASSERT_EQ(holder(item), nullptr);
            chunk->data = item;
        }
        ASSERT_EQ(item, chunk->data + static_cast<size_t>(number) * model_.data_size);
        std::fill_n(item, model_.data_size, uint8_t{0x5a});
        live_.push_back(item);
    }

    // Of an item, of what once was one, or of an address near one.
    void free(uint8_t *item) {
        const bool inside = holder(item) != nullptr;
        const freed expected = model_.free(item);
        uint32_t result = 77;
        const auto call = [&] { result = pool_free(pool_, item); };
        if (expected == freed::yes) {
            call();
            live_.erase(std::find(live_.begin(), live_.end(), item));
        } else {
            ASSERT_EQ(traced(printed_by(call)), !inside ? ""
                                                : expected == freed::already
                                                    ? formatted("pool_free_data() %p already freed!\n", item)
                                                    : formatted("pool_free_data() %p not aligned!\n", item));
        }
        ASSERT_EQ(result, expected == freed::misplaced ? RIB_FAILED : RIB_OK);
    }

    void free_any(uint32_t choice) {
        std::swap(live_[choice % live_.size()], live_.back());
        uint8_t *item = live_.back();
        ASSERT_EQ(model_.free(item), freed::yes);
        live_.pop_back();
        ASSERT_EQ(pool_free(pool_, item), RIB_OK);
    }

    void expect_same() const {
        ASSERT_EQ(counted(pool_), model_.count());
        ASSERT_EQ(counted(pool_), live_.size());
        ASSERT_EQ(printed_by([&] { pool_show(pool_); }), display());
        ASSERT_NO_FATAL_FAILURE(expect_sound(*pool_));
    }

    [[nodiscard]] struct pool *product() const { return pool_; }
    [[nodiscard]] size_t live() const { return live_.size(); }
    [[nodiscard]] uint8_t *any(uint32_t choice) const { return live_[choice % live_.size()]; }

  private:
    using freed = ribkit::naive::pool::freed;

    [[nodiscard]] const ribkit::naive::chunk *holder(const uint8_t *item) const {
        const ribkit::naive::chunk *chunk = model_.first;
        while (chunk != nullptr && reinterpret_cast<uintptr_t>(item) - reinterpret_cast<uintptr_t>(chunk->data) >=
                                       static_cast<size_t>(model_.chunk_size) * model_.data_size) {
            chunk = chunk->next;
        }
        return chunk;
    }

    [[nodiscard]] std::string display() const {
        if (model_.first == nullptr) {
            return "Empty list in memory pool!\n";
        }
        std::string text = "\nChunk size " + std::to_string(model_.chunk_size) + ", data size " +
                           std::to_string(model_.data_size) + ", bitmap size " + std::to_string(model_.bitmap_size) +
                           ".\nChunk\t\t# Used\t\tUsed BitMap\n-----\t\t------\t\t-----------\n";
        char part[40];
        for (const ribkit::naive::chunk *chunk = model_.first; chunk != nullptr; chunk = chunk->next) {
            const auto base = static_cast<unsigned>(reinterpret_cast<uintptr_t>(chunk->data));
            std::snprintf(part, sizeof part, "%08xh\t%-10u\t", base, chunk->used);
            text += part;
            for (uint32_t i = 0; i < model_.bitmap_size; i++) {
                std::snprintf(part, sizeof part, "%s%02x ", i != 0 && i % 16 == 0 ? "\n\t\t\t\t" : "",
                              chunk->bitmap[i]);
                text += part;
            }
            text += "\n";
        }
        return text;
    }

    ribkit::naive::pool model_;
    struct pool *pool_;
    std::vector<uint8_t *> live_;
};

void random_step(twin_pools &pools, ribkit::random_words &random, std::vector<uint8_t *> &gone, bool growing) {
    const uint32_t dice = random() % 1000;
    if (pools.live() == 0 || (dice >= 20 && dice < (growing ? 700U : 350U))) {
        pools.alloc();
    } else if (dice < 10) {
        pools.free(pools.any(random()) + random() % 50);
    } else if (dice < 20 && !gone.empty()) {
        pools.free(gone[random() % gone.size()]);
    } else {
        gone.resize(std::min<size_t>(gone.size(), 20));
        gone.push_back(pools.any(random()));
        std::swap(gone[random() % gone.size()], gone.back());
        pools.free_any(random());
    }
}

// Grows towards `most` items, shrinks to none, and over again; now and then a call that makes no sense.
void random_walk(twin_pools &pools, size_t most, uint32_t steps, uint32_t every) {
    ribkit::random_words random(static_cast<uint32_t>(most));
    std::vector<uint8_t *> gone;
    bool growing = true;
    for (uint32_t step = 0; step < steps; step++) {
        growing = pools.live() == 0 || (growing && pools.live() < most);
        ASSERT_NO_FATAL_FAILURE(random_step(pools, random, gone, growing)) << step;
        if (step % every == 0) {
            ASSERT_NO_FATAL_FAILURE(pools.expect_same()) << step;
        }
    }
}

TEST(pool, small_ones_answer_as_the_walked_lists_do) {
    for (const uint32_t chunk_size : {1U, 2U, 3U, 7U, 8U, 9U, 33U, 64U, 65U}) {
        twin_pools pools(chunk_size, chunk_size % 2 != 0 ? 24 : 5);
        ASSERT_NO_FATAL_FAILURE(random_walk(pools, 40, RIBKIT_RANDOM_STEPS / 200, 1)) << chunk_size;
    }
}

TEST(pool, large_ones_answer_as_the_walked_lists_do) {
    for (const uint32_t chunk_size : {1U, 10U, 64U, 1000U}) {
        twin_pools pools(chunk_size, 24);
        const uint32_t chunks = 600;
        ASSERT_NO_FATAL_FAILURE(random_walk(pools, chunks * std::min(chunk_size, 30U), RIBKIT_RANDOM_STEPS / 4, 5000))
            << chunk_size;
    }
}

// Every sequence of a few allocations and frees, each free of any item that is live or was.
void all_sequences(const std::vector<int> &calls, uint32_t left) {
    if (left == 0) {
        twin_pools pools(2, 8);
        std::vector<uint8_t *> items;
        for (const int call : calls) {
            if (call < 0) {
                pools.alloc();
                items.push_back(pools.any(static_cast<uint32_t>(pools.live() - 1)));
            } else {
                pools.free(items[static_cast<size_t>(call)]);
            }
        }
        pools.expect_same();
        return;
    }
    const auto allocs = static_cast<int>(std::count(calls.begin(), calls.end(), -1));
    for (int call = -1; call < allocs; call++) {
        std::vector<int> longer = calls;
        longer.push_back(call);
        ASSERT_NO_FATAL_FAILURE(all_sequences(longer, left - 1));
    }
}

TEST(pool, every_short_sequence) { ASSERT_NO_FATAL_FAILURE(all_sequences({}, RIBKIT_RANDOM_STEPS < 1000000 ? 5 : 7)); }

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

// Whatever allocation fails, an item is handed out and the two agree, or none is and nothing has changed.
TEST(pool, any_failing_allocation_leaves_the_pool_as_it_was) {
    for (size_t nth = 1; nth <= 5; nth++) {
        twin_pools pools(1, 8);
        ribkit::random_words random(static_cast<uint32_t>(nth));
        for (uint32_t step = 0; step < 300; step++) {
            ASSERT_NO_FATAL_FAILURE(pools.alloc_failing(nth)) << step;
            ASSERT_NO_FATAL_FAILURE(pools.expect_same()) << step;
            ASSERT_NO_FATAL_FAILURE(pools.alloc());
            if (random() % 3 == 0) {
                ASSERT_NO_FATAL_FAILURE(pools.free_any(random()));
            }
        }
    }
}

} // namespace
