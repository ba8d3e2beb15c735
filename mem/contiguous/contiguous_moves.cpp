// Moving the boundaries between segments. Where a neighbour has too few free blocks it takes them from its own
// neighbour first, and so on; the chain is followed without recursion, so that a long one needs no stack: out to the
// first segment that has enough, then back, the number of blocks growing by what each segment on the way has itself.
#include "mem/contiguous/contiguous.h"

#include "rib_codes.h"
#include <algorithm>
#include <cstdio>

namespace ribkit::mem {

namespace {

uint32_t free_blocks(const struct cont &cont, uint32_t number) {
    const segment &counted = cont.segment[number];
    return cont.block_size != 0 ? (counted.first + counted.size - counted.free) / cont.block_size : 0;
}

void print_move(const struct cont &cont, const char *format, uint32_t number, uint32_t blocks) {
    if (!cont.quiet) {
        std::printf(format, static_cast<int>(number), static_cast<int>(blocks));
    }
}

void print_refusal(const struct cont &cont, const char *format, uint32_t result, uint32_t number) {
    if (!cont.quiet) {
        std::printf(format, result, static_cast<int>(number));
    }
}

void print_end(const struct cont &cont, const char *format, uint32_t number, uint32_t blocks) {
    if (!cont.quiet) {
        cont_show(&cont);
    }
    print_move(cont, format, number, blocks);
}

// The segment in front loses its top blocks, then the mask is told, then the objects on top go to the new bottom.
uint32_t take_from_below(struct cont &cont, uint32_t number, uint32_t blocks) {
    segment &grown = cont.segment[number];
    const uint32_t positions = blocks * cont.block_size;
    cont.segment[number - 1].size -= positions;
    const uint32_t result = cont.mask_func != nullptr ? cont.mask_func(number, grown.first - positions, positions) : 0;
    if (result != 0) {
        print_refusal(cont, "cont_mv_up() error %x in mask_func for seg %d \n", result, number);
        return result;
    }
    const uint32_t moved = std::min(positions, grown.free - grown.first);
    if (moved > 0 && cont.move_func != nullptr) {
        cont.move_func(grown.first - positions, grown.free - moved, moved);
    }
    grown.size += positions;
    grown.first -= positions;
    grown.free -= positions;
    print_end(cont, "End of cont_mv_up() seg %d n_block %d \n", number, blocks);
    return RIB_OK;
}

// The objects at the bottom of the segment behind go on top of its others, then the mask is told.
uint32_t take_from_above(struct cont &cont, uint32_t number, uint32_t blocks) {
    segment &grown = cont.segment[number];
    segment &shrunk = cont.segment[number + 1];
    const uint32_t positions = blocks * cont.block_size;
    const uint32_t used = shrunk.free - shrunk.first;
    const uint32_t moved = std::min(positions, used);
    if (moved > 0 && cont.move_func != nullptr) {
        cont.move_func(used > positions ? shrunk.free : shrunk.first + positions, shrunk.first, moved);
    }
    const uint32_t result = cont.mask_func != nullptr ? cont.mask_func(number, shrunk.first, positions) : 0;
    if (result != 0) {
        print_refusal(cont, "cont_mv_down() error %x in mask_func for seg %d \n", result, number);
        return result;
    }
    shrunk.size -= positions;
    shrunk.first += positions;
    shrunk.free += positions;
    grown.size += positions;
    print_end(cont, "End of cont_mv_down() seg %d n_block %d \n", number, blocks);
    return RIB_OK;
}

} // namespace

// A boundary behind the last segment has nobody to take the blocks: it does not move.
uint32_t cont_mv_up(struct cont &cont, uint32_t number, uint32_t blocks) {
    uint32_t at = number;
    uint32_t wanted = blocks;
    for (;; at--) {
        print_move(cont, "Start of cont_mv_up() seg %d n_block %d \n", at, wanted);
        if (at == 0) {
            print_move(cont, "Error! cont_mv_up %d n_block called for segment %d\n", wanted, at);
            return RIB_FAILED;
        }
        if (at >= segment_count(cont)) {
            return RIB_FAILED;
        }
        const uint32_t there = free_blocks(cont, at - 1);
        if (wanted <= there) {
            break;
        }
        wanted -= there;
    }
    for (;; at++) {
        const uint32_t own = free_blocks(cont, at);
        const uint32_t result = take_from_below(cont, at, wanted);
        if (result != RIB_OK || at == number) {
            return result;
        }
        wanted += own;
    }
}

uint32_t cont_mv_down(struct cont &cont, uint32_t number, uint32_t blocks) {
    uint32_t at = number;
    uint32_t wanted = blocks;
    for (;; at++) {
        print_move(cont, "Start of cont_mv_down() seg %d n_block %d \n", at, wanted);
        if (at == segment_count(cont) - 1) {
            print_move(cont, "Error! cont_mv_down %d n_block called for segment %d\n", wanted, at);
            return RIB_FAILED;
        }
        const uint32_t there = free_blocks(cont, at + 1);
        if (wanted <= there) {
            break;
        }
        wanted -= there;
    }
    for (;; at--) {
        const uint32_t own = free_blocks(cont, at);
        const uint32_t result = take_from_above(cont, at, wanted);
        if (result != RIB_OK || at == number) {
            return result;
        }
        wanted += own;
    }
}

} // namespace ribkit::mem
