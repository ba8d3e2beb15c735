// The form of a buddy descriptor in which nothing is walked; every operation answers as the lists would.
#pragma once

#include "mem/buddy/buddy.h"

namespace ribkit::mem {

/// The lowest of a set of units that is not empty.
inline uint32_t lowest_unit(uint32_t units) { return static_cast<uint32_t>(__builtin_ctz(units)); }

/// The size of the block that starts at this unit of the chunk.
inline uint32_t block_size(bud_chunk chunk, uint32_t unit) {
    return 1 + lowest_unit((chunk.starts | 1U << chunk_units) >> (unit + 1));
}

inline uint32_t free_starts(bud_chunk chunk) { return chunk.starts & ~static_cast<uint32_t>(chunk.used); }
inline bool block_starts(bud_chunk chunk, uint32_t unit) { return (chunk.starts >> unit & 1) != 0; }
inline bool is_free(bud_chunk chunk, uint32_t unit) { return (free_starts(chunk) >> unit & 1) != 0; }

inline uint32_t chunks_below(uint32_t carve_mark) {
    return carve_mark / chunk_units + (carve_mark % chunk_units != 0 ? 1 : 0);
}

/// The chunk's listed starts: without the block that only fills the last chunk.
inline uint32_t listed_starts(const struct bud &bud, uint32_t number) {
    const uint32_t units = bud.carve_mark - number * chunk_units;
    return units < chunk_units ? bud.chunks.chunk[number].starts & ((1U << units) - 1)
                               : bud.chunks.chunk[number].starts;
}

/// Chunks for a carved area, all empty; without sets when memory fails.
bud_chunks obtain_chunks(uint32_t capacity);
void give_back(bud_chunks &chunks);

/// Enters a block, in a chunk that is being filled. False where one starts there already.
bool enter_block(bud_chunks &chunks, block_kind kind, uint32_t size, uint32_t index);
/// Fills the last chunk, where the carved area ends inside it.
void close_last_chunk(bud_chunks &chunks, uint32_t carve_mark);
/// Takes filled chunks in the place of whatever the descriptor held. False when memory for the lists' nodes fails.
bool adopt_chunks(struct bud &bud, bud_chunks &chunks, const uint32_t count[block_kinds][bud_sizes]);

/// Room for one more chunk, and for its blocks' nodes. False when memory fails.
bool reserve_chunk(struct bud &bud);

uint32_t take_from_chunks(struct bud &bud, uint32_t size, uint32_t larger);
void carve_chunk(struct bud &bud, uint32_t size);
/// Whether freeing this block would find it, or else a neighbour to merge it with.
enum class freeing : uint8_t { sound, nothing, unsound };
freeing judge_free(const struct bud &bud, uint32_t size, uint32_t index);
void free_in_chunks(struct bud &bud, uint32_t size, uint32_t index);
void release_top_chunks(struct bud &bud);

} // namespace ribkit::mem
