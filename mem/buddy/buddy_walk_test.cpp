// The buddy allocator and its model on long random walks, sensible and nonsensical.
#include "mem/buddy/buddy_twin.h"
#include "mem/random_words.h"
#include "rib_codes.h"
#include <algorithm>
#include <gtest/gtest.h>

using namespace ribkit::mem;

namespace {

TEST(buddy, answers_as_the_walked_lists_do) {
    for (const uint32_t total : {16U, 40U, 100U, 1000U}) {
        twin_buddies twins(total);
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {total, 65, 0, RIBKIT_RANDOM_STEPS / 8, total / 16 + 1})) << total;
        ASSERT_FALSE(twins.product()->walked);
    }
    for (const uint32_t fill : {30U, 65U, 95U}) {
        twin_buddies twins(16384);
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {16384, fill, 0, RIBKIT_RANDOM_STEPS / 5, 2000})) << fill;
    }
}

TEST(buddy, answers_as_the_walked_lists_do_whatever_is_freed) {
    for (const uint32_t total : {16U, 40U, 100U, 1000U}) {
        for (const uint32_t nonsense : {1U, 50U, 500U}) {
            twin_buddies twins(total);
            ASSERT_NO_FATAL_FAILURE(random_walk(twins, {total, 65, nonsense, RIBKIT_RANDOM_STEPS / 50, 7})) << total;
        }
    }
}

// Sound or not: blocks out of order, twice, across chunks, beyond the space; marks that fit nothing.
words random_image(random_words &random) {
    const uint32_t total = random() % 100;
    std::vector<twin_buddies::block> blocks[2];
    for (auto &list : blocks) {
        for (uint32_t count = random() % 12; count > 0; count--) {
            list.push_back({random() % 16 + 1, random() % 8 != 0 ? random() % 80 : random()});
        }
    }
    return image_of(total, random() % 100, random() % 2 != 0 ? random() % 6 * 16 : random() % 100, blocks[0],
                    blocks[1]);
}

TEST(buddy, any_image_is_restored_as_it_stands) {
    random_words random(43);
    for (uint32_t round = 0; round < RIBKIT_RANDOM_STEPS / 200; round++) {
        twin_buddies twins(64);
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {64, 65, 0, round % 40, 50}));
        ASSERT_NO_FATAL_FAILURE(twins.restore(random_image(random)));
        for (uint32_t step = 0; step < 20; step++) {
            ASSERT_NO_FATAL_FAILURE(twins.expect_same()) << round;
            uint32_t used = 0;
            ASSERT_NO_FATAL_FAILURE(random_step(twins, random, {64, random() % 100, 300, 0, 0}, used)) << round;
        }
    }
}

// A sound image in which a few words are changed or exchanged.
words damaged(random_words &random, words image) {
    for (uint32_t changes = random() % 3; image.size() > 36 && changes > 0; changes--) {
        uint32_t &word = image[35 + random() % (image.size() - 35)];
        if (random() % 2 != 0) {
            std::swap(word, image[35 + random() % (image.size() - 35)]);
        } else {
            word = random() % 8 != 0 ? word ^ 1U << random() % 7 : random();
        }
    }
    image[random() % 3] += random() % 4 == 0 ? random() % 33 : 0;
    return image;
}

TEST(buddy, images_survive_the_journey_and_damage) {
    random_words random(44);
    uint32_t regular = 0;
    for (uint32_t round = 0; round < RIBKIT_RANDOM_STEPS / 500; round++) {
        twin_buddies source(200);
        ASSERT_NO_FATAL_FAILURE(random_walk(source, {200, 65, 0, random() % 200, 1000}));
        twin_buddies twins(300);
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {300, 65, 0, random() % 50, 1000}));
        const words image = saved_by(source.product());
        const words sent = round % 4 == 0 ? image : damaged(random, image);
        ASSERT_NO_FATAL_FAILURE(twins.restore(sent)) << round;
        ASSERT_TRUE(sent != image || !twins.product()->walked);
        regular += twins.product()->walked ? 0 : 1;
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {200, 65, 20, 60, 10})) << round;
    }
    EXPECT_GT(regular, RIBKIT_RANDOM_STEPS / 2000U);
}

TEST(buddy, any_table_is_taken_as_it_stands) {
    random_words random(45);
    for (uint32_t round = 0; round < RIBKIT_RANDOM_STEPS / 500; round++) {
        const uint32_t total = random() % 150;
        words table(total + 1);
        std::generate(table.begin(), table.end(), [&] { return random() % 3 == 0 ? random() % 2 : none; });
        std::fill(table.begin() + random() % (total + 1), table.end(), none);
        twin_buddies twins(total);
        if (round % 8 == 0) { // lists that are not empty keep what they hold
            ASSERT_NO_FATAL_FAILURE(random_walk(twins, {total, 65, 0, 20, 100}));
        }
        ASSERT_NO_FATAL_FAILURE(twins.table(table));
        ASSERT_TRUE(round % 8 == 0 || !twins.product()->walked);
        ASSERT_NO_FATAL_FAILURE(random_walk(twins, {total, 65, 50, 60, 10})) << round;
    }
}

// Every sequence of calls on the smallest space that has two chunks, some of which make no sense.
void all_sequences(const std::vector<uint32_t> &calls, uint32_t left) {
    twin_buddies twins(32);
    for (const uint32_t call : calls) {
        if (call < 4) {
            twins.alloc(call * 5 + 1);
        } else {
            twins.free((call - 4) % 4 * 5 + 1, (call - 4) / 4);
        }
    }
    ASSERT_NO_FATAL_FAILURE(twins.expect_same());
    const uint32_t choices = left == 0 ? 0 : 4 + std::min(twins.model().carve_mark, 32U) * 4;
    for (uint32_t call = 0; call < choices; call++) {
        std::vector<uint32_t> longer = calls;
        longer.push_back(call);
        ASSERT_NO_FATAL_FAILURE(all_sequences(longer, left - 1));
    }
}

TEST(buddy, every_short_sequence) { ASSERT_NO_FATAL_FAILURE(all_sequences({}, RIBKIT_RANDOM_STEPS < 1000000 ? 3 : 4)); }

} // namespace
