// The set of slots is a tree of bits; the table of granules is hashed by a multiplication.
#include "mem/pool/pool.h"

#include <cstdlib>

namespace ribkit::mem {

namespace {

static_assert(sizeof(tree_word) == sizeof(void *) && sizeof(pool_bucket) == 2 * sizeof(void *));

constexpr uintptr_t spread = static_cast<uintptr_t>(UINT64_C(0x9e3779b97f4a7c15) >> (64 - tree_word_bits));

uintptr_t address(const void *at) { return reinterpret_cast<uintptr_t>(at); }

pool_bucket &bucket(const pool_index &index, uintptr_t granule) {
    return index.buckets[granule * spread >> index.bucket_shift];
}

pool_bucket &bucket_of(const pool_index &index, const pool_chunk *chunk) {
    return bucket(index, address(chunk->data) >> index.granule_shift);
}

void file(pool_index &index, pool_chunk *chunk) {
    pool_bucket &taking = bucket_of(index, chunk);
    chunk->same_bucket = taking.first;
    taking = {chunk->data, chunk};
}

void unfile(pool_index &index, const pool_chunk *chunk) {
    pool_bucket &giving = bucket_of(index, chunk);
    pool_chunk **link = &giving.first;
    while (*link != chunk) {
        link = &(*link)->same_bucket;
    }
    *link = chunk->same_bucket;
    giving.data = giving.first != nullptr ? giving.first->data : nullptr;
}

void set_capacity(pool_index &index, uint32_t capacity) {
    index.capacity = capacity;
    index.shape = tree_shape(capacity);
    index.bucket_shift = tree_word_bits - static_cast<uint32_t>(std::countr_zero(2 * capacity));
}

void use_first_arrays(pool_index &index) {
    set_capacity(index, pool_index::first_capacity);
    index.slots = index.first_slots;
    index.buckets = index.first_buckets;
    index.room = index.first_room;
    index.block = nullptr;
}

void add_slot(pool_index &index, pool_chunk *chunk) {
    chunk->slot = index.next_slot++;
    index.slots[chunk->slot] = chunk;
}

// Numbers the chunks anew, without the gaps that removed ones left. None of them has room, or no chunk would be made.
void close_gaps(struct pool &pool) {
    pool.index.next_slot = 0;
    for (pool_chunk *chunk = pool.first; chunk != nullptr; chunk = chunk->next) {
        add_slot(pool.index, chunk);
    }
}

void file_all(struct pool &pool) {
    for (pool_chunk *chunk = pool.first; chunk != nullptr; chunk = chunk->next) {
        file(pool.index, chunk);
    }
}

// To twice as many slots, where there is memory; who calls it numbers the chunks anew.
void grow(struct pool &pool) {
    pool_index &index = pool.index;
    const size_t capacity = size_t{2} * index.capacity;
    void *block = std::calloc(5 * capacity + tree_shape(static_cast<uint32_t>(capacity)).words, sizeof(void *));
    if (block == nullptr) {
        return;
    }
    std::free(index.block);
    set_capacity(index, static_cast<uint32_t>(capacity));
    index.block = block;
    index.buckets = static_cast<pool_bucket *>(block);
    index.slots = reinterpret_cast<pool_chunk **>(index.buckets + 2 * capacity);
    index.room = reinterpret_cast<tree_word *>(index.slots + capacity);
    file_all(pool);
}

bool holds(const struct pool &pool, const uint8_t *data, const void *item) {
    return address(item) - address(data) < pool.area;
}

pool_chunk *holder_in(const struct pool &pool, uintptr_t granule, const void *item) {
    const pool_bucket &asked = bucket(pool.index, granule);
    pool_chunk *chunk = asked.first;
    if (chunk == nullptr || holds(pool, asked.data, item)) {
        return chunk;
    }
    do {
        chunk = chunk->same_bucket;
    } while (chunk != nullptr && !holds(pool, chunk->data, item));
    return chunk;
}

} // namespace

void index_start(struct pool &pool) {
    use_first_arrays(pool.index);
    while (pool.index.granule_shift < tree_word_bits - 1 && pool.area >> pool.index.granule_shift != 0) {
        pool.index.granule_shift++;
    }
}

void index_end(struct pool &pool) { std::free(pool.index.block); }

// Where less than half of the slots are gaps, there will be more slots; where memory fails, a gap at all is enough.
bool index_reserve(struct pool &pool) {
    const pool_index &index = pool.index;
    if (index.next_slot < index.capacity) {
        return true;
    }
    if (index.chunks > index.capacity / 2) {
        grow(pool);
    }
    close_gaps(pool);
    return index.next_slot < index.capacity;
}

void index_add(struct pool &pool, pool_chunk *chunk) {
    pool_index &index = pool.index;
    add_slot(index, chunk);
    if (chunk->used < pool.chunk_size) {
        tree_insert(index.room, index.shape, chunk->slot);
    }
    file(index, chunk);
    index.chunks++;
}

void index_remove(struct pool &pool, pool_chunk *chunk) {
    pool_index &index = pool.index;
    tree_erase(index.room, index.shape, chunk->slot);
    unfile(index, chunk);
    index.chunks--;
}

pool_chunk *index_roomy(const struct pool &pool) {
    const pool_index &index = pool.index;
    return tree_empty(index.room, index.shape) ? nullptr : index.slots[tree_lowest(index.room, index.shape)];
}

pool_chunk *index_holder(const struct pool &pool, const void *item) {
    const uintptr_t granule = address(item) >> pool.index.granule_shift;
    pool_chunk *chunk = holder_in(pool, granule, item);
    return chunk != nullptr ? chunk : holder_in(pool, granule - 1, item);
}

} // namespace ribkit::mem
