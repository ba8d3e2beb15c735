// A buddy descriptor. As long as the listed blocks are what a sequence of sensible calls leaves (every carved unit in
// exactly one block, no block across a chunk's boundary, every list ascending) no list is kept: a chunk's blocks are
// two bit masks, and for each size a set holds the chunks with a free block of it, so that nothing is ever walked. What
// else can be restored from an image, or made by freeing what was never allocated, is kept as the lists themselves, and
// walked. The lists' nodes have their room at all times, so that the one form turns into the other without memory.
#pragma once

#include "mem/bitmap/bit_tree.h"
#include "rib_mem.h"
#include <cstdint>

namespace ribkit::mem {

inline constexpr uint32_t bud_sizes = BUD_SIZES;
inline constexpr uint32_t chunk_units = BUD_SIZES;
inline constexpr uint32_t no_node = 0xffffffff;

enum block_kind : uint8_t { free_block, used_block };
inline constexpr uint32_t block_kinds = 2;

/// One chunk's blocks. Where the carved area ends inside a chunk, a used block that is in no list takes the rest.
struct bud_chunk {
    uint16_t starts; ///< bit u: a block starts at unit u
    uint16_t used;   ///< bit u: and it is used
};

/// The chunks and the sets over them, in one piece of memory.
struct bud_chunks {
    tree_shape shape;
    uint32_t capacity; ///< chunks
    bud_chunk *chunk;
    tree_word *sets; ///< by size - 1: chunks with a free block of that size; shape.words each
};

struct bud_node {
    uint32_t index;
    uint32_t next;
};

struct bud_lists {
    bud_node *node;
    uint32_t capacity;
    uint32_t fresh;  ///< nodes from here on were never used
    uint32_t unused; ///< the first node given back
    uint32_t head[block_kinds][bud_sizes];
};

} // namespace ribkit::mem

struct bud {
    uint32_t total;
    uint32_t free_space;
    uint32_t carve_mark;
    uint32_t count[ribkit::mem::block_kinds][BUD_SIZES];
    uint32_t free_sizes; ///< bit size - 1: there is a free block of that size
    bool walked;         ///< the lists are kept; else the chunks
    ribkit::mem::bud_chunks chunks;
    ribkit::mem::bud_lists lists;
};

namespace ribkit::mem {

inline void count_block(struct bud &bud, block_kind kind, uint32_t size, uint32_t more) {
    const uint32_t count = bud.count[kind][size - 1] += more;
    if (kind == free_block) {
        const uint32_t bit = 1U << (size - 1);
        bud.free_sizes = count != 0 ? bud.free_sizes | bit : bud.free_sizes & ~bit;
    }
}

inline bool lists_nothing(const struct bud &bud) {
    uint32_t blocks = 0;
    for (uint32_t size = 0; size < bud_sizes; size++) {
        blocks |= bud.count[free_block][size] | bud.count[used_block][size];
    }
    return blocks == 0;
}

} // namespace ribkit::mem
