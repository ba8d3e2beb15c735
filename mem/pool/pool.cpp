// Zero-filled items of one size. The list of chunks is what the interface tells about; the index finds the chunk to
// take from and the chunk to give to.
#include "mem/pool/pool.h"

#include "rib_codes.h"
#include "rib_mem.h"
#include "rib_trace.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace ribkit::mem;

namespace {

constexpr uint32_t bytes_a_line = 16;

void append(struct pool &pool, pool_chunk *chunk) {
    chunk->previous = pool.last;
    (pool.last != nullptr ? pool.last->next : pool.first) = chunk;
    pool.last = chunk;
    index_add(pool, chunk);
}

void unlink(struct pool &pool, pool_chunk *chunk) {
    index_remove(pool, chunk);
    (chunk->previous != nullptr ? chunk->previous->next : pool.first) = chunk->next;
    (chunk->next != nullptr ? chunk->next->previous : pool.last) = chunk->previous;
}

void give_back(pool_chunk *chunk) {
    std::free(chunk->data);
    std::free(chunk->bitmap);
    std::free(chunk);
}

bool complete(const struct pool &pool, pool_chunk &made) {
    made.bitmap = static_cast<uint8_t *>(std::malloc(pool.bitmap_size));
    if (made.bitmap == nullptr) {
        rib_printf_time("pool_new_chunk() no memory for new->bmap!\n");
        return false;
    }
    bmap_init(made.bitmap, pool.bitmap_size);
    made.data = static_cast<uint8_t *>(std::calloc(pool.chunk_size, pool.data_size));
    if (made.data == nullptr) {
        rib_printf_time("pool_new_chunk() no memory for new->chunk!\n");
        return false;
    }
    return true;
}

pool_chunk *pool_new_chunk(struct pool &pool) {
    auto *made = index_reserve(pool) ? static_cast<pool_chunk *>(std::calloc(1, sizeof(pool_chunk))) : nullptr;
    if (made == nullptr) {
        rib_printf_time("pool_new_chunk() no memory for new!\n");
        return nullptr;
    }
    if (!complete(pool, *made)) {
        return nullptr; // NOLINT(clang-analyzer-unix.Malloc): what was obtained is not given back
    }
    append(pool, made);
    return made;
}

void *claim(struct pool &pool, pool_chunk *chunk) {
    uint32_t item = 0;
    if (bmap_next_clr(chunk->bitmap, pool.bitmap_size, chunk->full_below, &item) != RIB_OK) {
        return nullptr;
    }
    chunk->full_below = item + 1;
    pool.in_use++;
    if (++chunk->used == pool.chunk_size) {
        tree_erase(pool.index.room, pool.index.shape, chunk->slot);
    }
    return chunk->data + static_cast<size_t>(item) * pool.data_size;
}

void release(struct pool &pool, pool_chunk *chunk, uint32_t item) {
    pool.in_use--;
    if (chunk->used-- == pool.chunk_size) {
        tree_insert(pool.index.room, pool.index.shape, chunk->slot);
    }
    if (item < chunk->full_below) {
        chunk->full_below = item;
    }
}

void show_chunk(const struct pool &pool, const pool_chunk *chunk) {
    std::printf("%08xh\t%-10d\t", static_cast<unsigned>(reinterpret_cast<uintptr_t>(chunk->data)),
                static_cast<int>(chunk->used));
    for (uint32_t i = 0; i < pool.bitmap_size; i++) {
        std::printf("%02x ", chunk->bitmap[i]);
        if ((i + 1) % bytes_a_line == 0 && i + 1 < pool.bitmap_size) {
            std::printf("\n\t\t\t\t");
        }
    }
    std::printf("\n");
}

} // namespace

struct pool *pool_create(uint32_t chunk_size, uint32_t data_size) {
    auto *made = static_cast<struct pool *>(std::calloc(1, sizeof(struct pool)));
    if (made == nullptr) {
        rib_printf_time("pool_create() no memory for desc!\n");
        return nullptr;
    }
    made->chunk_size = chunk_size;
    made->data_size = data_size;
    made->bitmap_size = (chunk_size + 7) >> 3;
    made->area = static_cast<size_t>(chunk_size) * data_size;
    index_start(*made);
    return made;
}

void *pool_alloc(struct pool *pool) {
    if (pool == nullptr) {
        rib_printf_time("pool_alloc() null desc!\n");
        return nullptr;
    }
    pool_chunk *chunk = index_roomy(*pool);
    if (chunk == nullptr) {
        chunk = pool_new_chunk(*pool);
    }
    return chunk != nullptr ? claim(*pool, chunk) : nullptr;
}

uint32_t pool_free(struct pool *pool, void *item) {
    if (pool == nullptr || item == nullptr) {
        rib_printf_time("pool_free() null desc %p data %p!\n", static_cast<void *>(pool), item);
        return RIB_BAD_PARAMETERS;
    }
    pool_chunk *chunk = index_holder(*pool, item);
    if (chunk == nullptr) {
        return RIB_FAILED;
    }
    const auto offset = static_cast<size_t>(static_cast<uint8_t *>(item) - chunk->data);
    const auto number = static_cast<uint32_t>(offset / pool->data_size);
    if (offset % pool->data_size != 0) {
        rib_printf_time("pool_free_data() %p not aligned!\n", item);
        return RIB_FAILED;
    }
    if (bmap_is_clr(chunk->bitmap, pool->bitmap_size, number) != 0) {
        rib_printf_time("pool_free_data() %p already freed!\n", item);
        return RIB_OK;
    }
    bmap_clr(chunk->bitmap, pool->bitmap_size, number);
    std::memset(item, 0, pool->data_size);
    release(*pool, chunk, number);
    if (chunk->used == 0) {
        unlink(*pool, chunk);
        give_back(chunk);
    }
    return RIB_OK;
}

uint32_t pool_count(const struct pool *pool, uint32_t *count) {
    if (pool == nullptr) {
        rib_printf_time("pool_count() null desc!\n");
    }
    *count = pool != nullptr ? pool->in_use : 0;
    return RIB_OK;
}

uint32_t pool_destroy(struct pool *pool) {
    if (pool == nullptr) {
        rib_printf_time("pool_destroy() null desc!\n");
        return RIB_BAD_PARAMETERS;
    }
    for (pool_chunk *chunk = pool->first; chunk != nullptr;) {
        pool_chunk *next = chunk->next;
        give_back(chunk);
        chunk = next;
    }
    index_end(*pool);
    std::free(pool);
    return RIB_OK;
}

void pool_show(const struct pool *pool) {
    if (pool == nullptr) {
        rib_printf_time("pool_show() null desc!\n");
        return;
    }
    if (pool->first == nullptr) {
        std::puts("Empty list in memory pool!");
        return;
    }
    std::printf("\nChunk size %d, data size %d, bitmap size %d.\n", static_cast<int>(pool->chunk_size),
                static_cast<int>(pool->data_size), static_cast<int>(pool->bitmap_size));
    std::puts("Chunk\t\t# Used\t\tUsed BitMap");
    std::puts("-----\t\t------\t\t-----------");
    for (const pool_chunk *chunk = pool->first; chunk != nullptr; chunk = chunk->next) {
        show_chunk(*pool, chunk);
    }
}
