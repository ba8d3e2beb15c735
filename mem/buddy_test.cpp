#include "mem/buddy_twin.h"
#include "mem/random_words.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

#include <unistd.h>

using namespace ribkit::testing;

namespace {

constexpr uint32_t none = 0xdeadbeef;

uint32_t alloc(struct bud *bud, uint32_t size) {
    uint32_t index = 77;
    EXPECT_EQ(bud_alloc(bud, size, &index), RIB_OK);
    return index;
}

// An image from its lists: {size, index} each, in the order given.
words image_of(uint32_t total, uint32_t free_space, uint32_t carve_mark, const std::vector<twin_buddies::block> &free,
               const std::vector<twin_buddies::block> &used) {
    words image{total, free_space, carve_mark};
    words indices;
    for (const auto &blocks : {free, used}) {
        for (uint32_t size = 1; size <= 16; size++) {
            const size_t before = indices.size();
            for (const auto &block : blocks) {
                if (block.size == size) {
                    indices.push_back(block.index);
                }
            }
            image.push_back(static_cast<uint32_t>(indices.size() - before));
        }
    }
    image.insert(image.end(), indices.begin(), indices.end());
    return image;
}

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
        const std::string units = std::to_string(total);
        EXPECT_EQ(printed_by([&] { bud_create_from_table(bud, table.data()); }),
                  "Start bud_create_from_table () \ntab_size = " + units +
                      " \nlast used index = -1 \nfree index after shifting to chunk boundary = 0 \nfree size = " +
                      units + " \n");
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

TEST(buddy, a_failing_free_of_a_chunk_still_releases_the_top) {
    twin_buddies twins(64);
    twins.restore(image_of(64, 16, 48, {{16, 16}, {16, 32}}, {{16, 0}}));
    EXPECT_EQ(bud_free(twins.product(), 16, 16), RIB_FAILED);
    EXPECT_EQ(saved_by(twins.product()), image_of(64, 48, 16, {}, {{16, 0}}));
}

struct walk_options {
    uint32_t total;
    uint32_t fill_percent; ///< of the units, about which the walk swings
    uint32_t nonsense;     ///< per mille
    uint32_t steps;
    uint32_t every;
};

void random_step(twin_buddies &twins, ribkit::random_words &random, const walk_options &options, uint32_t &used) {
    const uint32_t size = random() % 16 + 1;
    if (random() % 1000 < options.nonsense) {
        twins.free(size, random() % (twins.product()->carve_mark + 2));
    } else if (twins.live().empty() || (random() % 100 < 50) == (used < options.total / 100 * options.fill_percent)) {
        const size_t before = twins.live().size();
        twins.alloc(size);
        used += twins.live().size() > before ? size : 0;
    } else {
        const uint32_t choice = random();
        used -= std::min(used, twins.live()[choice % twins.live().size()].size);
        twins.free_any(choice);
    }
}

void random_walk(twin_buddies &twins, const walk_options &options) {
    ribkit::random_words random(options.total + options.nonsense);
    uint32_t used = 0;
    for (uint32_t step = 0; step < options.steps; step++) {
        ASSERT_NO_FATAL_FAILURE(random_step(twins, random, options, used)) << step;
        if (step % options.every == 0) {
            ASSERT_NO_FATAL_FAILURE(twins.expect_same()) << step;
        }
        if (step % (options.every * 100) == options.every * 50) {
            ASSERT_NO_FATAL_FAILURE(twins.expect_same_displays()) << step;
        }
    }
}

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
words random_image(ribkit::random_words &random) {
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
    ribkit::random_words random(43);
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
words damaged(ribkit::random_words &random, words image) {
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
    ribkit::random_words random(44);
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
    ribkit::random_words random(45);
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
TEST(buddy, no_memory_for_a_larger_image) {
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
        const failing_allocation failure(1, failing_allocation::how::onwards);
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

TEST(buddy, no_memory_for_a_table) {
    words table(64, none);
    table[3] = 1;
    struct bud *bud = bud_create(64);
    uint32_t result = 0;
    printed_by([&] {
        const failing_allocation failure(1, failing_allocation::how::onwards);
        result = bud_create_from_table(bud, table.data());
    });
    EXPECT_EQ(result, RIB_OUT_OF_MEMORY);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {}, {}));
    printed_by([&] { result = bud_create_from_table(bud, table.data()); });
    EXPECT_EQ(result, RIB_OK);
    EXPECT_EQ(saved_by(bud), image_of(64, 48, 16, {{3, 0}, {12, 4}}, {{1, 3}}));
    bud_destroy(bud);
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
