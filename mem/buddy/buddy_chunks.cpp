// A chunk of 16 units is two masks of them; for each size a set of chunks with such a block tells the lowest at once.
#include "mem/buddy/buddy_chunks.h"

#include "mem/buddy/buddy_lists.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace ribkit::mem {

namespace {

constexpr uint32_t first_capacity = 16;

uint16_t bit(uint32_t unit) { return static_cast<uint16_t>(1U << unit); }

tree_word *set_of(const bud_chunks &chunks, uint32_t size) {
    return chunks.sets + static_cast<size_t>(size - 1) * chunks.shape.words;
}

// The unit of the chunk's lowest free block of a size; chunk_units where there is none.
uint32_t lowest_free(bud_chunk chunk, uint32_t size) {
    const uint32_t ends = chunk.starts | 1U << chunk_units;
    uint32_t free = free_starts(chunk) & ends >> size; // of that size, or cut into smaller ones that end there
    while (free != 0 && block_size(chunk, lowest_unit(free)) != size) {
        free &= free - 1;
    }
    return lowest_unit(free | 1U << chunk_units);
}

void add_free(struct bud &bud, uint32_t number, uint32_t size) {
    count_block(bud, free_block, size, 1);
    tree_insert(set_of(bud.chunks, size), bud.chunks.shape, number);
}

// The block has gone from its chunk; another of its size may be there.
void drop_free(struct bud &bud, uint32_t number, uint32_t size) {
    count_block(bud, free_block, size, ~0U);
    if (lowest_free(bud.chunks.chunk[number], size) == chunk_units) {
        tree_erase(set_of(bud.chunks, size), bud.chunks.shape, number);
    }
}

// The size of the free block that ends at this unit, where a block starts; 0 where there is none.
uint32_t free_before(bud_chunk chunk, uint32_t unit) {
    const uint32_t below = chunk.starts & (bit(unit) - 1U);
    const uint32_t start = 31 - static_cast<uint32_t>(std::countl_zero(below | 1)); // in front of unit 0 are 0 units
    return is_free(chunk, start) ? unit - start : 0;
}

// The size of the free block that starts at this unit, which may be beyond the chunk; 0 where there is none.
uint32_t free_from(bud_chunk chunk, uint32_t unit) { return is_free(chunk, unit) ? block_size(chunk, unit) : 0; }

void copy_chunks(bud_chunks &to, const bud_chunks &from, uint32_t count) {
    for (uint32_t number = 0; number < count; number++) {
        const bud_chunk chunk = to.chunk[number] = from.chunk[number];
        for (uint32_t free = free_starts(chunk); free != 0; free &= free - 1) {
            tree_insert(set_of(to, block_size(chunk, lowest_unit(free))), to.shape, number);
        }
    }
}

} // namespace

bud_chunks obtain_chunks(uint32_t capacity) {
    capacity = std::max(capacity, 1U);
    bud_chunks chunks{tree_shape(capacity), capacity, nullptr, nullptr};
    const size_t set_words = size_t{bud_sizes} * chunks.shape.words;
    void *block = std::calloc(1, set_words * sizeof(tree_word) + size_t{capacity} * sizeof(bud_chunk));
    if (block != nullptr) {
        chunks.sets = static_cast<tree_word *>(block);
        chunks.chunk = reinterpret_cast<bud_chunk *>(chunks.sets + set_words);
    }
    return chunks;
}

void give_back(bud_chunks &chunks) {
    std::free(chunks.sets);
    chunks.sets = nullptr;
}

bool enter_block(bud_chunks &chunks, block_kind kind, uint32_t size, uint32_t index) {
    const uint32_t number = index / chunk_units;
    bud_chunk &chunk = chunks.chunk[number];
    const uint16_t start = bit(index % chunk_units);
    if ((chunk.starts & start) != 0) {
        return false;
    }
    chunk.starts |= start;
    if (kind == used_block) {
        chunk.used |= start;
    } else {
        tree_insert(set_of(chunks, size), chunks.shape, number);
    }
    return true;
}

void close_last_chunk(bud_chunks &chunks, uint32_t carve_mark) {
    if (carve_mark % chunk_units != 0) {
        enter_block(chunks, used_block, chunk_units - carve_mark % chunk_units, carve_mark);
    }
}

bool adopt_chunks(struct bud &bud, bud_chunks &chunks, const uint32_t count[block_kinds][bud_sizes]) {
    if (!reserve_nodes(bud.lists, uint64_t{chunks.capacity} * chunk_units)) {
        give_back(chunks);
        return false;
    }
    give_back(bud.chunks);
    clear_lists(bud.lists);
    bud.chunks = chunks;
    bud.walked = false;
    std::memcpy(bud.count, count, sizeof bud.count);
    for (uint32_t size = 1; size <= bud_sizes; size++) {
        count_block(bud, free_block, size, 0);
    }
    return true;
}

bool reserve_chunk(struct bud &bud) {
    const uint32_t carved = bud.carve_mark / chunk_units;
    if (carved < bud.chunks.capacity) {
        return true;
    }
    const uint32_t most = chunks_below(bud.total);
    const uint32_t wanted = std::min(most, std::max(first_capacity, 2 * carved));
    if (!reserve_nodes(bud.lists, uint64_t{wanted} * chunk_units)) {
        return false;
    }
    bud_chunks larger = obtain_chunks(wanted);
    if (larger.sets == nullptr) {
        return false;
    }
    copy_chunks(larger, bud.chunks, carved);
    give_back(bud.chunks);
    bud.chunks = larger;
    return true;
}

// Takes the lowest block of the smallest size that fits; `larger` is that size less the size wanted.
uint32_t take_from_chunks(struct bud &bud, uint32_t size, uint32_t larger) {
    const uint32_t number = tree_lowest(set_of(bud.chunks, size + larger), bud.chunks.shape);
    bud_chunk &chunk = bud.chunks.chunk[number];
    const uint32_t unit = lowest_free(chunk, size + larger);
    chunk.used |= bit(unit);
    if (larger != 0) {
        chunk.starts |= bit(unit + size);
        add_free(bud, number, larger);
    }
    drop_free(bud, number, size + larger);
    count_block(bud, used_block, size, 1);
    return number * chunk_units + unit;
}

void carve_chunk(struct bud &bud, uint32_t size) {
    const uint32_t number = bud.carve_mark / chunk_units;
    bud.chunks.chunk[number] = {static_cast<uint16_t>(1U | 1U << size), 1}; // the rest is beyond where there is none
    count_block(bud, used_block, size, 1);
    if (size != chunk_units) {
        add_free(bud, number, chunk_units - size);
    }
}

freeing judge_free(const struct bud &bud, uint32_t size, uint32_t index) {
    const bud_chunk chunk = bud.chunks.chunk[index / chunk_units];
    const uint32_t unit = index % chunk_units;
    if (block_starts(chunk, unit) && !is_free(chunk, unit) && block_size(chunk, unit) == size) {
        return freeing::sound;
    }
    const uint32_t left = block_starts(chunk, unit) ? free_before(chunk, unit) : 0;
    const bool fits = left != 0 && left <= chunk_units - size;
    return fits || free_from(chunk, unit + size) != 0 ? freeing::unsound : freeing::nothing;
}

void free_in_chunks(struct bud &bud, uint32_t size, uint32_t index) {
    const uint32_t number = index / chunk_units;
    const uint32_t unit = index % chunk_units;
    bud_chunk &chunk = bud.chunks.chunk[number];
    const uint32_t left = free_before(chunk, unit);
    const uint32_t right = free_from(chunk, unit + size);
    chunk.used &= static_cast<uint16_t>(~bit(unit));
    if (right != 0) {
        chunk.starts &= static_cast<uint16_t>(~bit(unit + size));
        drop_free(bud, number, right);
    }
    if (left != 0) {
        chunk.starts &= static_cast<uint16_t>(~bit(unit));
        drop_free(bud, number, left);
    }
    count_block(bud, used_block, size, ~0U);
    add_free(bud, number, left + size + right);
    if (left + size + right == chunk_units) {
        release_top_chunks(bud);
    }
}

void release_top_chunks(struct bud &bud) {
    while (bud.free_space != bud.total && bud.carve_mark != 0 && bud.carve_mark % chunk_units == 0) {
        const uint32_t top = bud.carve_mark / chunk_units - 1;
        const bud_chunk chunk = bud.chunks.chunk[top];
        if (chunk.starts != 1 || chunk.used != 0) {
            return;
        }
        bud.chunks.chunk[top] = {};
        drop_free(bud, top, chunk_units);
        bud.free_space += chunk_units;
        bud.carve_mark -= chunk_units;
    }
}

} // namespace ribkit::mem
