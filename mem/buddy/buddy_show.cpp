// What a buddy descriptor prints.
#include "mem/buddy/buddy_chunks.h"
#include <cstdio>

using namespace ribkit::mem;

namespace {

constexpr uint32_t indices_a_line = 16;

class index_printer {
  public:
    void operator()(uint32_t index) {
        std::printf("%d ", static_cast<int>(index));
        if (++printed_ % indices_a_line == 0) {
            std::printf("\n");
        }
    }

  private:
    uint32_t printed_ = 0;
};

void show_chunks(const struct bud &bud, block_kind kind, uint32_t size) {
    index_printer print;
    for (uint32_t number = 0; number < chunks_below(bud.carve_mark); number++) {
        const bud_chunk chunk = bud.chunks.chunk[number];
        for (uint32_t starts = listed_starts(bud, number); starts != 0; starts &= starts - 1) {
            const uint32_t unit = lowest_unit(starts);
            if (is_free(chunk, unit) == (kind == free_block) && block_size(chunk, unit) == size) {
                print(number * chunk_units + unit);
            }
        }
    }
}

void show_list(const struct bud &bud, block_kind kind, uint32_t size) {
    index_printer print;
    uint32_t node = bud.lists.head[kind][size - 1];
    for (; node != no_node; node = bud.lists.node[node].next) {
        print(bud.lists.node[node].index);
    }
}

// A size that no block has is not refused: it has no indices.
void show_indices(const struct bud &bud, block_kind kind, uint32_t size) {
    std::printf("\nIndices of block with size %d\n", static_cast<int>(size));
    if (size >= 1 && size <= bud_sizes) {
        bud.walked ? show_list(bud, kind, size) : show_chunks(bud, kind, size);
    }
    std::printf("\n");
}

} // namespace

void bud_show(const struct bud *bud) {
    if (bud == nullptr) {
        std::puts("Bad buddy descriptor!");
        return;
    }
    std::puts("\nFragment Information\tFree\t\tUsed");
    std::puts("--------------------\t----\t\t----");
    std::printf("Global Space (bytes)\t%d\t\t%d\n", static_cast<int>(bud->free_space),
                static_cast<int>(bud->total - bud->free_space));
    uint32_t units[block_kinds] = {};
    for (uint32_t size = 1; size <= bud_sizes; size++) {
        const uint32_t free = bud->count[free_block][size - 1];
        const uint32_t used = bud->count[used_block][size - 1];
        std::printf("Block Size %d\t\t%d\t\t%d\n", static_cast<int>(size), static_cast<int>(free),
                    static_cast<int>(used));
        units[free_block] += free * size;
        units[used_block] += used * size;
    }
    std::printf("Total in blocks (bytes)\t%d\t\t%d\n", static_cast<int>(units[free_block]),
                static_cast<int>(units[used_block]));
}

void bud_show_used(const struct bud *bud) {
    int size = 0;
    std::printf("Block Size> ");
    if (std::scanf("%d", &size) != 1) {
        size = 0;
    }
    if (bud == nullptr) {
        std::puts("\nbud_show_used() bad descriptor!");
        return;
    }
    show_indices(*bud, used_block, static_cast<uint32_t>(size));
}

void bud_show_free(const struct bud *bud, uint32_t size) {
    if (bud == nullptr) {
        std::puts("\nbud_show_free() bad descriptor!");
        return;
    }
    show_indices(*bud, free_block, size);
}
