// A pool's chunks: a list in the order of their making, as it is shown, and an index beside it.
#pragma once

#include "mem/pool/pool_index.h"
#include <cstdint>

namespace ribkit::mem {

struct pool_chunk {
    uint32_t used; ///< items in use
    uint32_t slot; ///< ascending along the list
    uint8_t *data;
    uint8_t *bitmap; ///< items in use
    pool_chunk *next;
    pool_chunk *previous;
    pool_chunk *same_bucket; ///< the next chunk filed with this one
    uint32_t full_below;     ///< no item below this one is free
};

} // namespace ribkit::mem

struct pool {
    uint32_t chunk_size;  ///< items in a chunk
    uint32_t data_size;   ///< bytes of an item
    uint32_t bitmap_size; ///< bytes of a chunk's bitmap
    ribkit::mem::pool_chunk *first;
    ribkit::mem::pool_chunk *last;
    uint32_t in_use; ///< items of all chunks
    size_t area;     ///< bytes of a chunk's items
    ribkit::mem::pool_index index;
};
