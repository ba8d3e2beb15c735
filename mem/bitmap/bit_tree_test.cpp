// A tree of bits against an ordered set of the standard library.
#include "mem/bitmap/bit_tree.h"
#include "mem/random_words.h"
#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace ribkit::mem {
namespace {

TEST(bit_tree, levels_grow_with_the_capacity) {
    EXPECT_EQ(tree_shape(1).levels, 1U);
    EXPECT_EQ(tree_shape(tree_word_bits).levels, 1U);
    EXPECT_EQ(tree_shape(tree_word_bits + 1).levels, 2U);
    EXPECT_EQ(tree_shape(tree_word_bits * tree_word_bits).words, tree_word_bits + 1);
    EXPECT_EQ(tree_shape(0xffffffff).levels, tree_shape::most_levels);
}

void expect_ordered_set(uint32_t capacity, uint32_t steps) {
    const tree_shape shape(capacity);
    std::vector<tree_word> words(shape.words);
    std::set<uint32_t> model;
    ribkit::mem::random_words random(capacity);
    for (uint32_t step = 0; step < steps; step++) {
        const uint32_t number = random() % capacity;
        const bool held = model.count(number) != 0;
        ASSERT_EQ(tree_holds(words.data(), number), held);
        if (held) {
            tree_erase(words.data(), shape, number);
            model.erase(number);
        } else if (step / 1000 % 2 == 0 || random() % 8 == 0) {
            tree_insert(words.data(), shape, number);
            model.insert(number);
        }
        ASSERT_EQ(tree_empty(words.data(), shape), model.empty());
        if (!model.empty()) {
            ASSERT_EQ(tree_lowest(words.data(), shape), *model.begin());
        }
    }
}

TEST(bit_tree, is_an_ordered_set) {
    for (const uint32_t capacity : {1U, 2U, 31U, 32U, 33U, 64U, 65U, 1000U, 4096U, 4097U, 300000U}) {
        ASSERT_NO_FATAL_FAILURE(expect_ordered_set(capacity, 20000)) << capacity;
    }
}

} // namespace
} // namespace ribkit::mem
