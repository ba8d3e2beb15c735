// Calls made to both, and the comparison behind each; also a count of what is really in the descriptor.
#include "mem/buddy/buddy_twin.h"

#include "mem/buddy/buddy_chunks.h"
#include "rib_codes.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>

using namespace ribkit::testing;

namespace ribkit::mem {

words saved_by(const struct bud *bud) {
    uint8_t *buffer = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(bud_serialize(bud, &buffer, &length), RIB_OK);
    words image(length / 4);
    std::memcpy(image.data(), buffer, length);
    std::free(buffer);
    return image;
}

words saved_by(const naive::buddy &model) {
    words image(model.image_words());
    model.save(image.data());
    return image;
}

namespace {

// Counts what is really there.
void recount(const struct bud &bud, uint32_t (&count)[block_kinds][bud_sizes]) {
    if (bud.walked) {
        for (uint32_t list = 0; list < block_kinds * bud_sizes; list++) {
            uint32_t node = bud.lists.head[list / bud_sizes][list % bud_sizes];
            for (; node != no_node; node = bud.lists.node[node].next) {
                ASSERT_LT(node, bud.lists.fresh);
                count[list / bud_sizes][list % bud_sizes]++;
            }
        }
        return;
    }
    for (uint32_t number = 0; number < chunks_below(bud.carve_mark); number++) {
        const bud_chunk chunk = bud.chunks.chunk[number];
        ASSERT_EQ(chunk.starts & 1, 1);
        ASSERT_EQ(chunk.used & ~chunk.starts, 0);
        for (uint32_t starts = listed_starts(bud, number); starts != 0; starts &= starts - 1) {
            const uint32_t unit = lowest_unit(starts);
            count[is_free(chunk, unit) ? free_block : used_block][block_size(chunk, unit) - 1]++;
        }
    }
}

void expect_sets(const struct bud &bud) {
    for (uint32_t number = 0; number < bud.chunks.capacity; number++) {
        const bud_chunk chunk = bud.chunks.chunk[number];
        uint32_t sizes = 0;
        for (uint32_t unit = 0; unit < chunk_units; unit++) {
            if (is_free(chunk, unit)) {
                sizes |= 1U << block_size(chunk, unit);
            }
        }
        ASSERT_TRUE(sizes == 0 || number < chunks_below(bud.carve_mark));
        for (uint32_t size = 1; size <= bud_sizes; size++) {
            const tree_word *set = bud.chunks.sets + static_cast<size_t>(size - 1) * bud.chunks.shape.words;
            ASSERT_EQ(tree_holds(set, number), (sizes >> size & 1) != 0);
        }
    }
}

} // namespace

void expect_sound(const struct bud &bud) {
    uint32_t count[block_kinds][bud_sizes] = {};
    ASSERT_NO_FATAL_FAILURE(recount(bud, count));
    ASSERT_EQ(std::memcmp(count, bud.count, sizeof count), 0);
    for (uint32_t size = 0; size < bud_sizes; size++) {
        ASSERT_EQ(bud.free_sizes >> size & 1, count[free_block][size] != 0 ? 1U : 0U);
    }
    if (!bud.walked) {
        ASSERT_LE(chunks_below(bud.carve_mark), bud.chunks.capacity);
        ASSERT_LE(uint64_t{bud.carve_mark}, bud.lists.capacity);
        ASSERT_NO_FATAL_FAILURE(expect_sets(bud));
    }
}

twin_buddies::twin_buddies(uint32_t total) : model_(total), bud_(bud_create(total)) {}
twin_buddies::~twin_buddies() { bud_destroy(bud_); }

void twin_buddies::alloc(uint32_t size, size_t failing) {
    uint32_t expected = 77;
    uint32_t index = 77;
    const uint32_t result = model_.alloc(size, &expected);
    std::optional<failing_allocation> failure;
    if (failing != 0) {
        failure.emplace(failing, failing_allocation::how::onwards);
    }
    const uint32_t answered = bud_alloc(bud_, size, &index);
    failure.reset();
    ASSERT_EQ(answered, result);
    ASSERT_EQ(index, expected);
    if (result == 0) {
        live_.push_back({size, index});
    }
}

void twin_buddies::free(uint32_t size, uint32_t index) {
    ASSERT_EQ(bud_free(bud_, size, index), model_.free(size, index));
}

void twin_buddies::free_any(uint32_t choice) {
    std::swap(live_[choice % live_.size()], live_.back());
    const block freed = live_.back();
    live_.pop_back();
    free(freed.size, freed.index);
}

void twin_buddies::restore(const words &image) {
    model_.restore(image.data());
    std::vector<uint8_t> odd(image.size() * 4 + 1);
    std::memcpy(odd.data() + 1, image.data(), image.size() * 4);
    ASSERT_EQ(bud_deserialize(bud_, odd.data() + 1), RIB_OK);
    live_.clear();
    const uint32_t *index = image.data() + 35;
    for (uint32_t list = 0; list < 32; list++) {
        for (uint32_t i = 0; i < image[3 + list]; i++, index++) {
            if (list >= 16) {
                live_.push_back({list - 15, *index});
            }
        }
    }
}

void twin_buddies::table(const words &table) {
    model_.from_table(table.data());
    printed_by([&] { ASSERT_EQ(bud_create_from_table(bud_, table.data()), RIB_OK); });
}

void twin_buddies::expect_same() const {
    ASSERT_NO_FATAL_FAILURE(expect_sound(*bud_));
    const words expected = saved_by(model_);
    ASSERT_EQ(saved_by(bud_), expected);
    words counts(32);
    ASSERT_EQ(bud_free_count(bud_, counts.data()), RIB_OK);
    ASSERT_EQ(bud_used_count(bud_, counts.data() + 16), RIB_OK);
    ASSERT_TRUE(std::equal(counts.begin(), counts.end(), expected.begin() + 3));
}

void twin_buddies::expect_same_displays() const {
    for (uint32_t size = 1; size <= 16; size++) {
        std::string expected = "\nIndices of block with size " + std::to_string(size) + "\n";
        uint32_t printed = 0;
        for (const naive::buddy::node *n = model_.free_lists[size]; n != nullptr; n = n->next) {
            expected += std::to_string(static_cast<int32_t>(n->index)) + (++printed % 16 == 0 ? " \n" : " ");
        }
        ASSERT_EQ(printed_by([&] { bud_show_free(bud_, size); }), expected + "\n");
    }
    std::string expected = "\nFragment Information\tFree\t\tUsed\n--------------------\t----\t\t----\n";
    const auto line = [](const std::string &head, uint32_t free, uint32_t used) {
        return head + std::to_string(static_cast<int32_t>(free)) + "\t\t" + std::to_string(static_cast<int32_t>(used)) +
               "\n";
    };
    expected += line("Global Space (bytes)\t", model_.free_space, model_.total - model_.free_space);
    uint32_t free_units = 0;
    uint32_t used_units = 0;
    for (uint32_t size = 1; size <= 16; size++) {
        const uint32_t free = naive::buddy::count(model_.free_lists[size]);
        const uint32_t used = naive::buddy::count(model_.used_lists[size]);
        expected += line("Block Size " + std::to_string(size) + "\t\t", free, used);
        free_units += free * size;
        used_units += used * size;
    }
    expected += line("Total in blocks (bytes)\t", free_units, used_units);
    ASSERT_EQ(printed_by([&] { bud_show(bud_); }), expected);
}

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

uint32_t alloc(struct bud *bud, uint32_t size) {
    uint32_t index = 77;
    EXPECT_EQ(bud_alloc(bud, size, &index), RIB_OK);
    return index;
}

void random_step(twin_buddies &twins, random_words &random, const walk_options &options, uint32_t &used) {
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
    random_words random(options.total + options.nonsense);
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

} // namespace ribkit::mem
