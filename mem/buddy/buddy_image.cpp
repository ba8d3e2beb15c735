// Saving a buddy descriptor into an image, and restoring it.
#include "mem/buddy/buddy_chunks.h"
#include "mem/buddy/buddy_lists.h"
#include "mem/image.h"
#include "rib_codes.h"
#include <algorithm>
#include <cstdlib>

using namespace ribkit::mem;

namespace {

constexpr uint32_t header_words = 3;
constexpr uint32_t fixed_words = header_words + block_kinds * bud_sizes;

struct cursors {
    uint32_t word[block_kinds][bud_sizes];
};

// Where each list starts in the image.
cursors list_starts(const uint32_t count[block_kinds][bud_sizes]) {
    cursors at;
    uint32_t next = fixed_words;
    for (uint32_t kind = 0; kind < block_kinds; kind++) {
        for (uint32_t size = 0; size < bud_sizes; size++) {
            at.word[kind][size] = next;
            next += count[kind][size];
        }
    }
    return at;
}

constexpr uint32_t group_chunks = 4; // as many as a 64-bit word has units for
constexpr uint32_t group_units = group_chunks * chunk_units;

struct group {
    uint64_t starts = 0;
    uint64_t used = 0;

    group(const bud_chunk *chunk, uint32_t count) {
        for (uint32_t i = 0; i < count; i++) {
            starts |= uint64_t{chunk[i].starts} << i * chunk_units;
            used |= uint64_t{chunk[i].used} << i * chunk_units;
        }
    }
};

// Each block ends where the next one starts; the last one with the group or the carved area.
void save_chunks(const struct bud &bud, uint8_t *image, cursors at) {
    const uint32_t chunks = chunks_below(bud.carve_mark);
    for (uint32_t number = 0; number < chunks; number += group_chunks) { // unlike units, chunks stay below 32 bits
        const uint32_t base = number * chunk_units;
        const uint32_t end = std::min(group_units, bud.carve_mark - base);
        const group blocks(bud.chunks.chunk + number, chunks_below(end));
        uint64_t later = blocks.starts;
        for (uint32_t unit = 0; unit < end;) {
            later &= later - 1;
            const uint32_t next = std::min(end, static_cast<uint32_t>(std::countr_zero(later)));
            store_word(image, at.word[blocks.used >> unit & 1][next - unit - 1]++, base + unit);
            unit = next;
        }
    }
}

void save_lists(const struct bud &bud, uint8_t *image, cursors at) {
    for (uint32_t kind = 0; kind < block_kinds; kind++) {
        for (uint32_t size = 0; size < bud_sizes; size++) {
            uint32_t node = bud.lists.head[kind][size];
            for (; node != no_node; node = bud.lists.node[node].next) {
                store_word(image, at.word[kind][size]++, bud.lists.node[node].index);
            }
        }
    }
}

// What an image starts with, word by word.
struct image_head {
    uint32_t total;
    uint32_t free_space;
    uint32_t carve_mark;
    uint32_t count[block_kinds][bud_sizes];
};
static_assert(fixed_words * word_bytes == BUD_IMAGE_FIXED_SIZE && sizeof(image_head) == BUD_IMAGE_FIXED_SIZE);

// Whether chunks can hold the image's blocks, as far as its head tells: all carved units once, and no carving from
// within a chunk.
bool may_be_chunks(const image_head &head) {
    uint64_t units = 0;
    for (uint32_t size = 1; size <= bud_sizes; size++) {
        units += (uint64_t{head.count[free_block][size - 1]} + head.count[used_block][size - 1]) * size;
    }
    const bool carves = head.carve_mark <= head.total && head.total - head.carve_mark >= chunk_units;
    return units == head.carve_mark && (head.carve_mark % chunk_units == 0 || !carves);
}

// One list: ascending, and starting in the carved area.
bool enter_list(bud_chunks &chunks, const uint8_t *indices, uint32_t count, block_kind kind, uint32_t size,
                uint32_t carve_mark) {
    uint64_t least = 0;
    for (uint32_t i = 0; i < count; i++) {
        const uint32_t index = load_word(indices, i);
        if (index < least || index >= carve_mark || !enter_block(chunks, kind, size, index)) {
            return false;
        }
        least = uint64_t{index} + size;
    }
    return true;
}

// Once all starts are entered: whether each block ends where the next one starts.
bool sizes_hold(const bud_chunks &chunks, const uint8_t *indices, uint32_t count, uint32_t size) {
    for (uint32_t i = 0; i < count; i++) {
        const uint32_t index = load_word(indices, i);
        if (block_size(chunks.chunk[index / chunk_units], index % chunk_units) != size) {
            return false;
        }
    }
    return true;
}

template <typename Each> bool every_list(const uint8_t *image, const image_head &head, Each each) {
    const uint8_t *indices = image + sizeof head;
    for (uint32_t list = 0; list < block_kinds * bud_sizes; list++) {
        const block_kind kind = list < bud_sizes ? free_block : used_block;
        const uint32_t count = head.count[kind][list % bud_sizes];
        if (!each(indices, count, kind, list % bud_sizes + 1)) {
            return false;
        }
        indices += static_cast<size_t>(count) * word_bytes;
    }
    return true;
}

bool fill_chunks(bud_chunks &chunks, const uint8_t *image, const image_head &head) {
    const auto enter = [&](const uint8_t *indices, uint32_t count, block_kind kind, uint32_t size) {
        return enter_list(chunks, indices, count, kind, size, head.carve_mark);
    };
    const auto check = [&](const uint8_t *indices, uint32_t count, block_kind, uint32_t size) {
        return sizes_hold(chunks, indices, count, size);
    };
    if (!every_list(image, head, enter)) {
        return false;
    }
    close_last_chunk(chunks, head.carve_mark);
    return every_list(image, head, check);
}

bool restore_chunks(struct bud &bud, const uint8_t *image, const image_head &head) {
    if (!may_be_chunks(head)) {
        return false;
    }
    bud_chunks chunks = obtain_chunks(chunks_below(head.carve_mark));
    if (chunks.sets == nullptr) {
        return false;
    }
    if (!fill_chunks(chunks, image, head)) {
        give_back(chunks);
        return false;
    }
    return adopt_chunks(bud, chunks, head.count);
}

uint32_t restore_lists(struct bud &bud, const uint8_t *image, const image_head &head) {
    uint32_t result = RIB_OK;
    every_list(image, head, [&](const uint8_t *indices, uint32_t count, block_kind kind, uint32_t size) {
        empty_list(bud, kind, size);
        uint32_t last = no_node;
        for (uint32_t i = 0; i < count && result == RIB_OK; i++) {
            result = bud_list_append(bud, kind, size, load_word(indices, i), last);
        }
        return result == RIB_OK;
    });
    return result;
}

} // namespace

uint32_t bud_serialize(const struct bud *bud, uint8_t **buffer, uint32_t *length) {
    *buffer = nullptr;
    if (bud == nullptr) {
        return RIB_FAILED;
    }
    const cursors at = list_starts(bud->count);
    *length = (at.word[used_block][bud_sizes - 1] + bud->count[used_block][bud_sizes - 1]) * word_bytes;
    auto *image = static_cast<uint8_t *>(std::malloc(*length));
    if (image == nullptr) {
        return RIB_OUT_OF_MEMORY;
    }
    image_head head{bud->total, bud->free_space, bud->carve_mark, {}};
    std::memcpy(head.count, bud->count, sizeof head.count);
    std::memcpy(image, &head, sizeof head);
    bud->walked ? save_lists(*bud, image, at) : save_chunks(*bud, image, at);
    *buffer = image;
    return RIB_OK;
}

uint32_t bud_deserialize(struct bud *bud, const uint8_t *buffer) {
    if (bud == nullptr || buffer == nullptr) {
        return RIB_FAILED;
    }
    image_head head;
    std::memcpy(&head, buffer, sizeof head);
    const bool restored = restore_chunks(*bud, buffer, head);
    if (!restored) {
        walk_from_now_on(*bud); // as it was: what cannot be restored keeps what it held
    }
    bud->total = head.total;
    bud->free_space = head.free_space;
    bud->carve_mark = head.carve_mark;
    return restored ? RIB_OK : restore_lists(*bud, buffer, head);
}
