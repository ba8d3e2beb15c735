// The pool as one would write it from its description: a list of chunks, walked from its head. The tests' model and the
// benchmarks' peer; shares nothing with the library.
#pragma once

#include "mem/bitmap/naive_bitmap.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace ribkit::mem::naive {

struct chunk {
    uint32_t used;
    uint8_t *data;
    uint8_t *bitmap;
    chunk *next;
};

struct pool {
    uint32_t chunk_size;
    uint32_t data_size;
    uint32_t bitmap_size;
    bool owns; ///< false: the items are somebody else's, who tells each new chunk where they start
    chunk *first = nullptr;

    pool(uint32_t items, uint32_t size, bool own_items = true)
        : chunk_size(items), data_size(size), bitmap_size((items + 7) / 8), owns(own_items) {}
    pool(const pool &) = delete;
    pool &operator=(const pool &) = delete;
    ~pool() {
        while (first != nullptr) {
            release(&first);
        }
    }

    enum class freed : uint8_t { yes, already, misplaced };

    struct place {
        chunk *in;
        uint32_t item;
    };

    /// Full chunks for a start, without the walks that this many allocations would take; `each` is given the items.
    template <typename Each> void fill(uint32_t chunks, Each each) {
        chunk **link = &first;
        for (uint32_t made = 0; made < chunks; made++, link = &(*link)->next) {
            *link = new_chunk();
            (*link)->used = chunk_size;
            for (uint32_t item = 0; item < chunk_size; item++) {
                (*link)->bitmap[item / 8] |= static_cast<uint8_t>(1U << item % 8);
                each((*link)->data + static_cast<size_t>(item) * data_size);
            }
        }
    }

    uint8_t *alloc() {
        const place taken = take();
        return taken.in->data + static_cast<size_t>(taken.item) * data_size;
    }

    place take() {
        chunk **link = &first;
        while (*link != nullptr && (*link)->used == chunk_size) {
            link = &(*link)->next;
        }
        if (*link == nullptr) {
            *link = new_chunk();
        }
        uint32_t item = 0;
        next((*link)->bitmap, bitmap_size, 0, false, &item);
        (*link)->bitmap[item / 8] |= static_cast<uint8_t>(1U << item % 8);
        (*link)->used++;
        return {*link, item};
    }

    freed free(uint8_t *item) {
        for (chunk *c = first; c != nullptr; c = c->next) {
            const auto at = reinterpret_cast<uintptr_t>(item);
            const auto from = reinterpret_cast<uintptr_t>(c->data);
            if (at < from || at >= from + static_cast<size_t>(chunk_size) * data_size || (at - from) % data_size != 0) {
                continue;
            }
            const auto i = static_cast<uint32_t>((at - from) / data_size);
            const bool used = (c->bitmap[i / 8] >> i % 8 & 1) != 0;
            if (used) {
                c->bitmap[i / 8] &= static_cast<uint8_t>(~(1U << i % 8));
                c->used--;
                if (owns) {
                    std::memset(item, 0, data_size);
                }
            }
            release_one_empty();
            return used ? freed::yes : freed::already;
        }
        return freed::misplaced;
    }

    [[nodiscard]] uint32_t count() const {
        uint32_t sum = 0;
        for (const chunk *c = first; c != nullptr; c = c->next) {
            sum += c->used;
        }
        return sum;
    }

  private:
    [[nodiscard]] chunk *new_chunk() const {
        auto *made = static_cast<chunk *>(std::calloc(1, sizeof(chunk)));
        made->bitmap = static_cast<uint8_t *>(std::calloc(1, bitmap_size));
        made->data = owns ? static_cast<uint8_t *>(std::calloc(chunk_size, data_size)) : nullptr;
        return made;
    }

    void release(chunk **link) const {
        chunk *gone = *link;
        *link = gone->next;
        if (owns) {
            std::free(gone->data);
        }
        std::free(gone->bitmap);
        std::free(gone);
    }

    void release_one_empty() {
        for (chunk **link = &first; *link != nullptr; link = &(*link)->next) {
            if ((*link)->used == 0) {
                release(link);
                return;
            }
        }
    }
};

} // namespace ribkit::mem::naive
