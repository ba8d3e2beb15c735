// Finds a pool's chunk without a walk: the earliest with room, and the one that holds an address. Chunks take slots
// that ascend along the list; a set of slots tells where room is. Addresses are cut into granules at least as large as
// a chunk's items, and a chunk is filed under the granule in which its items start: an address lies in a chunk of its
// own granule or of the one before.
#pragma once

#include "mem/bitmap/bit_tree.h"
#include <cstddef>
#include <cstdint>

struct pool;

namespace ribkit::mem {

struct pool_chunk;

/// Chunks filed together; the first one's items are noted beside it, so that most chunks need no look to be passed by.
struct pool_bucket {
    const uint8_t *data;
    pool_chunk *first;
};

struct pool_index {
    static constexpr uint32_t first_capacity = 16;

    tree_shape shape;
    uint32_t capacity;
    uint32_t chunks;
    uint32_t next_slot;
    uint32_t granule_shift;
    uint32_t bucket_shift;
    pool_chunk **slots;
    pool_bucket *buckets; ///< twice the capacity
    tree_word *room;      ///< slots whose chunk has room
    void *block;          ///< what holds the three once they have outgrown those below

    pool_chunk *first_slots[first_capacity];
    pool_bucket first_buckets[2 * first_capacity];
    tree_word first_room[1];
};

void index_start(struct pool &pool);
void index_end(struct pool &pool);

/// Makes sure of a slot for one more chunk, where none has room. False when memory fails.
bool index_reserve(struct pool &pool);
/// Takes in a fresh chunk, the last of the list.
void index_add(struct pool &pool, pool_chunk *chunk);
void index_remove(struct pool &pool, pool_chunk *chunk);

/// The earliest chunk with room, or null.
pool_chunk *index_roomy(const struct pool &pool);
/// The chunk whose items hold this address, or null.
pool_chunk *index_holder(const struct pool &pool, const void *item);

} // namespace ribkit::mem
