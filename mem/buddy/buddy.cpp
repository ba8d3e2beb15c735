// Blocks of 1 to 16 units: taking them, giving them back, counting them.
#include "mem/buddy/buddy.h"

#include "mem/buddy/buddy_chunks.h"
#include "mem/buddy/buddy_lists.h"
#include "rib_codes.h"
#include "rib_trace.h"
#include <cstdlib>
#include <cstring>

using namespace ribkit::mem;

namespace {

uint32_t list_carved(struct bud &bud, uint32_t size, uint32_t index) {
    uint32_t result = bud_list_add(bud, used_block, size, index);
    if (size != chunk_units) {
        result |= bud_list_add(bud, free_block, chunk_units - size, index + size);
    }
    return result;
}

uint32_t carve(struct bud &bud, uint32_t size, uint32_t *index) {
    if (bud.carve_mark > bud.total) {
        return RIB_SW_BUG;
    }
    if (bud.total - bud.carve_mark < chunk_units) {
        return RIB_HW_FULL;
    }
    *index = bud.carve_mark;
    if (!bud.walked && reserve_chunk(bud)) {
        carve_chunk(bud, size);
    } else {
        walk_from_now_on(bud);
    }
    bud.carve_mark += chunk_units;
    bud.free_space -= chunk_units;
    return bud.walked ? list_carved(bud, size, *index) : RIB_OK;
}

bool good_size(uint32_t size) { return size >= 1 && size <= bud_sizes; }

} // namespace

struct bud *bud_create(uint32_t total_size) {
    auto *made = static_cast<struct bud *>(std::calloc(1, sizeof(struct bud)));
    if (made != nullptr) {
        made->total = total_size;
        made->free_space = total_size;
        clear_lists(made->lists);
    }
    return made;
}

uint32_t bud_alloc(struct bud *bud, uint32_t size, uint32_t *index) {
    if (bud == nullptr || !good_size(size) || index == nullptr) {
        return RIB_BAD_PARAMETERS;
    }
    *index = BUD_FREE_UNIT;
    const uint32_t fitting = bud->free_sizes >> (size - 1);
    if (fitting == 0) {
        return carve(*bud, size, index);
    }
    const auto larger = static_cast<uint32_t>(std::countr_zero(fitting));
    *index = bud->walked ? take_from_lists(*bud, size, larger) : take_from_chunks(*bud, size, larger);
    return RIB_OK;
}

uint32_t bud_free(struct bud *bud, uint32_t size, uint32_t index) {
    if (bud == nullptr || !good_size(size) || index >= bud->carve_mark) {
        return RIB_BAD_PARAMETERS;
    }
    const freeing judged = bud->walked ? freeing::unsound : judge_free(*bud, size, index);
    if (judged == freeing::sound) {
        free_in_chunks(*bud, size, index);
        return RIB_OK;
    }
    if (judged == freeing::unsound) {
        walk_from_now_on(*bud);
        return free_in_lists(*bud, size, index);
    }
    if (size == chunk_units) {
        release_top_chunks(*bud);
    }
    return RIB_FAILED;
}

uint32_t bud_destroy(struct bud *bud) {
    if (bud == nullptr) {
        return RIB_BAD_PARAMETERS;
    }
    give_back(bud->chunks);
    std::free(bud->lists.node);
    std::free(bud);
    return RIB_OK;
}

uint32_t bud_used_count(const struct bud *bud, uint32_t *counts) {
    if (bud == nullptr) {
        rib_printf_time("bud_used_count(): Bad buddy descriptor!\n");
        return RIB_FAILED;
    }
    std::memcpy(counts, bud->count[used_block], sizeof bud->count[used_block]);
    return RIB_OK;
}

uint32_t bud_free_count(const struct bud *bud, uint32_t *counts) {
    if (bud == nullptr) {
        rib_printf_time("bud_free_count(): Bad buddy descriptor!\n");
        return RIB_FAILED;
    }
    std::memcpy(counts, bud->count[free_block], sizeof bud->count[free_block]);
    return RIB_OK;
}
