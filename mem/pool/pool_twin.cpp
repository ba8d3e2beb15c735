// Calls made to both, and the comparison behind each; also a recount of what is really in the descriptor.
#include "mem/pool/pool_twin.h"

#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>

using namespace ribkit::testing;

namespace ribkit::mem {

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

void expect_sound(const struct pool &pool) {
    uint32_t chunks = 0;
    uint32_t in_use = 0;
    const pool_chunk *previous = nullptr;
    for (const pool_chunk *chunk = pool.first; chunk != nullptr; previous = chunk, chunk = chunk->next, chunks++) {
        ASSERT_EQ(chunk->previous, previous);
        ASSERT_TRUE(previous == nullptr || previous->slot < chunk->slot);
        ASSERT_LT(chunk->slot, pool.index.next_slot);
        ASSERT_EQ(pool.index.slots[chunk->slot], chunk);
        ASSERT_EQ(chunk->used, naive::count(chunk->bitmap, pool.bitmap_size));
        ASSERT_GT(chunk->used, 0U);
        ASSERT_EQ(tree_holds(pool.index.room, chunk->slot), chunk->used < pool.chunk_size);
        uint32_t lowest = 0;
        ASSERT_TRUE(!naive::next(chunk->bitmap, pool.bitmap_size, 0, false, &lowest) || lowest >= chunk->full_below);
        ASSERT_EQ(index_holder(pool, chunk->data), chunk);
        ASSERT_EQ(index_holder(pool, chunk->data + pool.area - 1), chunk);
        in_use += chunk->used;
    }
    ASSERT_EQ(pool.last, previous);
    ASSERT_EQ(pool.index.chunks, chunks);
    ASSERT_EQ(pool.in_use, in_use);
    ASSERT_LE(pool.index.next_slot, pool.index.capacity);
}

void twin_pools::alloc() { accept(static_cast<uint8_t *>(pool_alloc(pool_))); }

void twin_pools::alloc_failing(size_t nth) {
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

void twin_pools::accept(uint8_t *item) {
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

void twin_pools::free(uint8_t *item) {
    const auto found = std::find(live_.begin(), live_.end(), item);
    const bool inside = holder(item) != nullptr;
    uint32_t result = 77;
    std::string printed;
    const auto call = [&] { result = pool_free(pool_, item); };
    found != live_.end() ? call() : static_cast<void>(printed = printed_by(call));
    const naive::pool::freed expected = model_.free(item);
    ASSERT_EQ(expected == naive::pool::freed::yes, found != live_.end());
    ASSERT_EQ(result, expected == naive::pool::freed::misplaced ? RIB_FAILED : RIB_OK);
    if (found != live_.end()) {
        live_.erase(found);
    } else {
        ASSERT_EQ(traced(printed), !inside ? ""
                                   : expected == naive::pool::freed::already
                                       ? formatted("pool_free_data() %p already freed!\n", item)
                                       : formatted("pool_free_data() %p not aligned!\n", item));
    }
}

void twin_pools::free_any(uint32_t choice) {
    std::swap(live_[choice % live_.size()], live_.back());
    uint8_t *item = live_.back();
    live_.pop_back();
    ASSERT_EQ(pool_free(pool_, item), RIB_OK);
    ASSERT_EQ(model_.free(item), naive::pool::freed::yes);
}

void twin_pools::expect_same() const {
    ASSERT_EQ(counted(pool_), model_.count());
    ASSERT_EQ(counted(pool_), live_.size());
    ASSERT_EQ(printed_by([&] { pool_show(pool_); }), display());
    ASSERT_NO_FATAL_FAILURE(expect_sound(*pool_));
}

const naive::chunk *twin_pools::holder(const uint8_t *item) const {
    const naive::chunk *chunk = model_.first;
    while (chunk != nullptr && reinterpret_cast<uintptr_t>(item) - reinterpret_cast<uintptr_t>(chunk->data) >=
                                   static_cast<size_t>(model_.chunk_size) * model_.data_size) {
        chunk = chunk->next;
    }
    return chunk;
}

std::string twin_pools::display() const {
    if (model_.first == nullptr) {
        return "Empty list in memory pool!\n";
    }
    std::string text = "\nChunk size " + std::to_string(model_.chunk_size) + ", data size " +
                       std::to_string(model_.data_size) + ", bitmap size " + std::to_string(model_.bitmap_size) +
                       ".\nChunk\t\t# Used\t\tUsed BitMap\n-----\t\t------\t\t-----------\n";
    char part[40];
    for (const naive::chunk *chunk = model_.first; chunk != nullptr; chunk = chunk->next) {
        const auto base = static_cast<unsigned>(reinterpret_cast<uintptr_t>(chunk->data));
        std::snprintf(part, sizeof part, "%08xh\t%-10u\t", base, chunk->used);
        text += part;
        for (uint32_t i = 0; i < model_.bitmap_size; i++) {
            std::snprintf(part, sizeof part, "%s%02x ", i != 0 && i % 16 == 0 ? "\n\t\t\t\t" : "", chunk->bitmap[i]);
            text += part;
        }
        text += "\n";
    }
    return text;
}

} // namespace ribkit::mem
