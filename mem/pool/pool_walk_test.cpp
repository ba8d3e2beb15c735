// A pool and its model on long random walks, growing and shrinking, with frees of what is none of its own.
#include "mem/pool/pool_twin.h"
#include "mem/random_words.h"
#include <algorithm>
#include <gtest/gtest.h>

using namespace ribkit::mem;

namespace {

void random_step(twin_pools &pools, random_words &random, std::vector<uint8_t *> &gone, bool growing) {
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
void random_walk(twin_pools &pools, uint32_t most, uint32_t steps, uint32_t every) {
    random_words random(most);
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

// Whatever allocation fails, an item is handed out and the two agree, or none is and nothing has changed.
TEST(pool, any_failing_allocation_leaves_the_pool_as_it_was) {
    for (size_t nth = 1; nth <= 5; nth++) {
        twin_pools pools(1, 8);
        random_words random(static_cast<uint32_t>(nth));
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
