// Lists of tokens: order, room, and what is refused.
#include "rib_codes.h"
#include "rib_wrap.h"
#include "testing/alloc_failure.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

struct token_list : rib_token {
    explicit token_list(uint32_t most) : rib_token{} { EXPECT_EQ(rib_token_alloc(this, most), RIB_OK); }
    token_list(const token_list &) = delete;
    token_list &operator=(const token_list &) = delete;
    ~token_list() { rib_token_release(this); }

    [[nodiscard]] std::vector<uint32_t> held() const { return {tokens, tokens + count}; }
};

TEST(tokens, last_takes_the_place_of_a_removed_one) {
    token_list list{3};
    for (const uint32_t token : {5, 7, 9}) {
        EXPECT_EQ(rib_token_add(&list, token), RIB_OK);
    }
    EXPECT_EQ(rib_token_add(&list, 11), RIB_BAD_PARAMETERS);
    EXPECT_EQ(rib_token_remove(&list, 5), RIB_OK);
    EXPECT_EQ(list.held(), (std::vector<uint32_t>{9, 7}));
    uint32_t token = 0;
    EXPECT_EQ(rib_token_pop(&list, &token), 1U);
    EXPECT_EQ(token, 7U);
}

TEST(tokens, repeated_ones_go_one_at_a_time) {
    token_list list{2};
    rib_token_add(&list, 4);
    rib_token_add(&list, 4);
    EXPECT_EQ(rib_token_remove(&list, 4), RIB_OK);
    EXPECT_EQ(list.held(), (std::vector<uint32_t>{4}));
}

TEST(tokens, empty_list) {
    token_list list{1};
    uint32_t token = 99;
    EXPECT_EQ(rib_token_match(&list, 0), -1);
    EXPECT_EQ(rib_token_remove(&list, 0), RIB_BAD_PARAMETERS);
    EXPECT_EQ(rib_token_pop(&list, &token), 0U);
    EXPECT_EQ(token, 99U);
}

TEST(tokens, no_capacity) {
    token_list list{0};
    EXPECT_NE(list.tokens, nullptr);
    EXPECT_EQ(rib_token_add(&list, 1), RIB_BAD_PARAMETERS);
}

TEST(tokens, release_twice) {
    rib_token list{};
    EXPECT_EQ(rib_token_alloc(&list, 3), RIB_OK);
    rib_token_add(&list, 1);
    rib_token_release(&list);
    EXPECT_EQ(list.tokens, nullptr);
    EXPECT_EQ(list.count + list.capacity, 0U);
    rib_token unallocated{nullptr, 5, 6};
    rib_token_release(&unallocated);
    EXPECT_EQ(unallocated.count, 5U);
    EXPECT_EQ(unallocated.capacity, 6U);
}

// A size that wraps in 32 bits is not mistaken for a small one: all of it is asked for, or nothing where no block can
// be so large.
TEST(tokens, capacities_beyond_32_bits_of_bytes) {
    for (const uint32_t capacity : {0x40000000U, 0x40000001U, 0x80000000U, 0xffffffffU}) {
        const uint64_t size = uint64_t{capacity} * 4;
        rib_token list{};
        const ribkit::testing::failing_allocation failing{1};
        EXPECT_EQ(rib_token_alloc(&list, capacity), RIB_OUT_OF_MEMORY);
        EXPECT_EQ(failing.happened(), size <= SIZE_MAX);
        EXPECT_EQ(failing.size_refused(), size <= SIZE_MAX ? size : 0);
    }
}

TEST(tokens, no_memory_leaves_the_counts) {
    rib_token list{nullptr, 5, 6};
    const ribkit::testing::failing_allocation failing{1};
    EXPECT_EQ(rib_token_alloc(&list, 3), RIB_OUT_OF_MEMORY);
    EXPECT_EQ(list.tokens, nullptr);
    EXPECT_EQ(list.count, 5U);
    EXPECT_EQ(list.capacity, 6U);
}

TEST(tokens, storage_is_freed_once) {
    const ribkit::testing::failing_allocation watching{1000};
    rib_token list{};
    EXPECT_EQ(rib_token_alloc(&list, 3), RIB_OK);
    EXPECT_EQ(ribkit::testing::blocks_kept(), 1U);
    rib_token_release(&list);
    rib_token_release(&list);
    EXPECT_EQ(ribkit::testing::blocks_kept(), 0U);
}

uint32_t in_model(const std::vector<uint32_t> &model, uint32_t token) {
    return static_cast<uint32_t>(std::find(model.begin(), model.end(), token) - model.begin());
}

bool remove_from(std::vector<uint32_t> &model, uint32_t token) {
    const uint32_t index = in_model(model, token);
    if (index == model.size()) {
        return false;
    }
    model[index] = model.back();
    model.pop_back();
    return true;
}

TEST(tokens, as_the_model) {
    constexpr uint32_t capacity = 12;
    std::mt19937 random{3};
    token_list list{capacity};
    std::vector<uint32_t> model;
    for (int step = 0; step < 20000; ++step) {
        const uint32_t token = random() % 10 + (random() % 2 != 0 ? 0xfffffff0 : 0);
        switch (random() % 4) {
        case 0:
        case 1: {
            const bool fits = model.size() < capacity;
            if (fits) {
                model.push_back(token);
            }
            ASSERT_EQ(rib_token_add(&list, token), fits ? RIB_OK : RIB_BAD_PARAMETERS);
            break;
        }
        case 2:
            ASSERT_EQ(rib_token_remove(&list, token), remove_from(model, token) ? RIB_OK : RIB_BAD_PARAMETERS);
            break;
        default: {
            uint32_t popped = 0;
            ASSERT_EQ(rib_token_pop(&list, &popped), model.empty() ? 0U : 1U);
            if (!model.empty()) {
                ASSERT_EQ(popped, model.back());
                model.pop_back();
            }
        }
        }
        const uint32_t index = in_model(model, token);
        ASSERT_EQ(rib_token_match(&list, token), index == model.size() ? -1 : static_cast<int32_t>(index));
        ASSERT_EQ(list.held(), model);
        ASSERT_EQ(list.capacity, capacity);
    }
}

} // namespace
