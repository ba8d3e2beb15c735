// The allocator of segments knows positions only. What stands there, and whose it is, is kept here and follows its
// calls.
#include "rib/hardware/position_space.h"

#include "rib_codes.h"

#include <algorithm>
#include <new>

namespace ribkit::rib {

namespace {

// The allocator's calls carry nothing of ours: they are for the space on which this thread is at work.
thread_local position_space *working = nullptr;

/// All positions, in blocks, as evenly as they can be.
std::vector<uint32_t> even_sizes(const rib_spaces &spaces) {
    const uint32_t blocks = spaces.positions / position_block;
    std::vector<uint32_t> sizes(spaces.vsans);
    for (uint32_t i = 0; i < spaces.vsans; i++) {
        sizes[i] = position_block * (blocks / spaces.vsans + (i < blocks % spaces.vsans ? 1 : 0));
    }
    return sizes;
}

} // namespace

position_space::position_space(const rib_spaces &spaces, bool shows_segments, effects *out)
    : vsans_(spaces.vsans), out_(out), taken_(spaces.vsans / 8 + 1), owners_(spaces.positions / position_block),
      standing_(spaces.positions), full_(spaces.vsans), segments_(nullptr) {
    const std::vector<uint32_t> sizes = even_sizes(spaces);
    const cont_config config{spaces.positions, position_block, spaces.vsans};
    segments_ = cont_create(&config, sizes.data(), move, own, 1);
    if (uint32_t none = 0; cont_count(segments_, spaces.vsans - 1, &none) != RIB_OK) { // or it has no segments
        cont_destroy(segments_);
        throw std::bad_alloc();
    }
    cont_quiet(segments_, shows_segments ? 0 : 1);
    uint32_t first = 0;
    for (uint32_t segment = 0; segment < spaces.vsans; segment++) {
        own_blocks(segment, first, sizes[segment]);
        first += sizes[segment];
    }
}

uint32_t position_space::take_segment(uint32_t &segment) {
    const auto last_byte = static_cast<uint32_t>(taken_.size() - 1);
    const auto length = static_cast<uint32_t>(taken_.size());
    bmap_next_clr(taken_.data(), length, 0, &segment); // the last byte has room for more than there are
    if (segment >= vsans_) {
        bmap_clr(taken_.data(), last_byte, segment);
        return RIB_VSAN_TCAM_FULL;
    }
    return RIB_OK;
}

void position_space::give_back_segment(uint32_t segment) {
    bmap_clr(taken_.data(), static_cast<uint32_t>(taken_.size() - 1), segment);
}

// A segment that cannot grow stays full until a position is free again: the allocator, which reports every attempt, is
// not asked in between.
uint32_t position_space::take(uint32_t segment, placed &what) {
    what.position = no_position;
    if (full_[segment]) {
        return RIB_HW_FULL;
    }
    working = this;
    uint32_t result = cont_alloc(segments_, segment, &what.position);
    working = nullptr;
    if (result == RIB_OK) {
        standing_[what.position] = &what;
    } else {
        full_[segment] = true;
        any_full_ = true;
        result = RIB_HW_FULL; // the allocator says no more than that it has failed
    }
    return result;
}

uint32_t position_space::give_back(uint32_t segment, placed &what) {
    standing_[what.position] = nullptr;
    working = this;
    const uint32_t result = cont_free(segments_, segment, what.position);
    working = nullptr;
    what.position = no_position;
    if (any_full_) {
        std::fill(full_.begin(), full_.end(), false);
        any_full_ = false;
    }
    return result;
}

void position_space::hand_over(placed &from, placed &to) {
    to.position = from.position;
    from.position = no_position;
    standing_[to.position] = &to;
}

uint32_t position_space::used(uint32_t segment) const {
    uint32_t count = 0;
    cont_count(segments_, segment, &count);
    return count;
}

uint32_t position_space::move(uint32_t destination, uint32_t source, uint32_t count) {
    for (uint32_t i = 0; i < count; i++) {
        working->move_one(destination + i, source + i);
    }
    return RIB_OK;
}

uint32_t position_space::own(uint32_t segment, uint32_t first, uint32_t count) {
    if (working->out_ != nullptr) {
        working->out_->owned(segment, first, count);
    }
    working->own_blocks(segment, first, count);
    return RIB_OK;
}

void position_space::move_one(uint32_t destination, uint32_t source) {
    placed *what = standing_[source];
    standing_[source] = nullptr;
    standing_[destination] = what;
    what->position = destination;
    if (out_ != nullptr) {
        out_->moved(what->vsan, what->to, source, destination);
    }
}

void position_space::own_blocks(uint32_t segment, uint32_t first, uint32_t count) {
    std::fill_n(owners_.begin() + first / position_block, count / position_block, segment);
}

} // namespace ribkit::rib
