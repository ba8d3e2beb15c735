// A contiguous allocator's descriptor, and the moves of its boundaries.
#pragma once

#include "rib_mem.h"
#include <cstdint>
#include <cstdlib>

namespace ribkit::mem {

struct segment {
    uint32_t size;
    uint32_t first; ///< the lowest position
    uint32_t free;  ///< the next position to hand out
};

} // namespace ribkit::mem

struct cont {
    uint32_t total;
    uint32_t block_size;
    uint32_t segments;
    ribkit::mem::segment *segment;
    cont_move_func move_func;
    cont_mask_func mask_func;
    uint32_t moves_allowed;
    uint32_t held; ///< records in the array; a refused image changes `segments` alone
    bool quiet;    ///< boundary moves are not printed
};

namespace ribkit::mem {

/// Where a block has no positions, 0 is the only multiple of it.
inline bool is_multiple(uint32_t positions, uint32_t block_size) {
    return block_size != 0 ? positions % block_size == 0 : positions == 0;
}

inline uint32_t segment_count(const struct cont &cont) { return cont.segments < cont.held ? cont.segments : cont.held; }

inline bool has_segment(const struct cont *cont, uint32_t number) {
    return cont != nullptr && number < segment_count(*cont);
}

/// Records for this many segments, all zero; null when memory fails, and only then.
inline segment *obtain_segments(uint32_t count) {
    return static_cast<segment *>(std::calloc(count != 0 ? count : 1, sizeof(segment)));
}

/// A segment grows downwards (up: into what was its predecessor's) or upwards by blocks of its neighbour's.
uint32_t cont_mv_up(struct cont &cont, uint32_t number, uint32_t blocks);
uint32_t cont_mv_down(struct cont &cont, uint32_t number, uint32_t blocks);

} // namespace ribkit::mem
