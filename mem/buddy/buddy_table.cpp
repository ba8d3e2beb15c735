// Rebuilding a buddy descriptor from a table of its units.
#include "mem/buddy/buddy_chunks.h"
#include "mem/buddy/buddy_lists.h"
#include "rib_codes.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace ribkit::mem;

namespace {

// The units from `index` on that belong together: equal entries, inside a chunk and the carved area.
uint32_t run_length(const uint32_t *table, uint32_t index, uint32_t carve_mark) {
    const uint32_t end = std::min(carve_mark - index, chunk_units - index % chunk_units);
    uint32_t length = 1;
    while (length < end && table[index + length] == table[index]) {
        length++;
    }
    return length;
}

template <typename Add> uint32_t each_run(const uint32_t *table, uint32_t carve_mark, Add add) {
    for (uint32_t index = 0; index < carve_mark;) {
        const uint32_t length = run_length(table, index, carve_mark);
        const uint32_t result = add(table[index] == BUD_FREE_UNIT ? free_block : used_block, length, index);
        if (result != RIB_OK) {
            return result;
        }
        index += length;
    }
    return RIB_OK;
}

bool build_chunks(struct bud &bud, const uint32_t *table) {
    if (!lists_nothing(bud)) {
        return false;
    }
    bud_chunks chunks = obtain_chunks(chunks_below(bud.carve_mark));
    if (chunks.sets == nullptr) {
        return false;
    }
    uint32_t count[block_kinds][bud_sizes] = {};
    each_run(table, bud.carve_mark, [&](block_kind kind, uint32_t length, uint32_t index) {
        enter_block(chunks, kind, length, index);
        count[kind][length - 1]++;
        return RIB_OK;
    });
    close_last_chunk(chunks, bud.carve_mark);
    return adopt_chunks(bud, chunks, count);
}

uint32_t build_lists(struct bud &bud, const uint32_t *table) {
    return each_run(table, bud.carve_mark, [&](block_kind kind, uint32_t length, uint32_t index) {
        return bud_list_add(bud, kind, length, index);
    });
}

uint32_t free_index_after(uint32_t last_used) { return (last_used / chunk_units + 1) * chunk_units; }

// Sets the carve mark behind the last used unit.
void find_carve_mark(struct bud &bud, const uint32_t *table) {
    uint32_t units = bud.total;
    while (units > 0 && table[units - 1] == BUD_FREE_UNIT) {
        units--;
    }
    std::printf("last used index = %d \n", static_cast<int>(units) - 1);
    const uint32_t free_index = units == 0 ? 0 : free_index_after(units - 1);
    std::printf("free index after shifting to chunk boundary = %d \n", static_cast<int>(free_index));
    bud.carve_mark = std::min(free_index, bud.total);
    bud.free_space = bud.total - bud.carve_mark;
    std::printf("free size = %d \n", static_cast<int>(bud.free_space));
}

} // namespace

uint32_t bud_create_from_table(struct bud *bud, const uint32_t *table) {
    std::puts("Start bud_create_from_table () ");
    std::printf("tab_size = %d \n", static_cast<int>(bud->total));
    walk_from_now_on(*bud);
    find_carve_mark(*bud, table);
    return build_chunks(*bud, table) ? RIB_OK : build_lists(*bud, table);
}
