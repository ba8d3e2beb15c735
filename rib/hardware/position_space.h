// Where routes stand in the hardware: one space of positions, of which every VSAN with routes has a segment. Positions
// move when one in the middle of a segment is given back, and when a full segment takes a block of a neighbour's.
#pragma once

#include "rib/effects.h"
#include "rib/hardware/rib_spaces.h"
#include "rib_mem.h"

#include <cstdint>
#include <vector>

namespace ribkit::rib {

inline constexpr uint32_t no_position = 0xdeadbeef;

/// What stands in a position.
struct placed {
    uint32_t vsan;
    model::destination to;
    uint32_t position; ///< or no_position
};

class position_space {
  public:
    /// Throws std::bad_alloc.
    /// @param shows_segments whether the allocator prints its table for every boundary that moves
    /// @param out null, or told what moves
    position_space(const rib_spaces &spaces, bool shows_segments, effects *out);
    position_space(const position_space &) = delete;
    position_space &operator=(const position_space &) = delete;
    ~position_space() { cont_destroy(segments_); }

    /// Obtains a segment for a VSAN. @return 0; RIB_VSAN_TCAM_FULL where there are more VSANs than segments
    uint32_t take_segment(uint32_t &segment);
    void give_back_segment(uint32_t segment);

    /// Stores the position in what stands there, which must stay where it is. @return what cont_alloc returns
    uint32_t take(uint32_t segment, placed &what);
    /// What stood there may be given back afterwards. @return what cont_free returns
    uint32_t give_back(uint32_t segment, placed &what);
    /// Another one stands there from now on.
    void hand_over(placed &from, placed &to);

    /// The segment that owns a position.
    [[nodiscard]] uint32_t owner(uint32_t position) const { return owners_[position / position_block]; }
    /// Null where there is none.
    [[nodiscard]] const placed *at(uint32_t position) const { return standing_[position]; }
    [[nodiscard]] uint32_t used(uint32_t segment) const;
    void show() const { cont_show(segments_); }

  private:
    static uint32_t move(uint32_t destination, uint32_t source, uint32_t count);
    static uint32_t own(uint32_t segment, uint32_t first, uint32_t count);
    void move_one(uint32_t destination, uint32_t source);
    void own_blocks(uint32_t segment, uint32_t first, uint32_t count);

    uint32_t vsans_;
    effects *out_;
    std::vector<uint8_t> taken_;     ///< bitmap of the segments that a VSAN has
    std::vector<uint32_t> owners_;   ///< segments by block of positions
    std::vector<placed *> standing_; ///< by position
    std::vector<bool> full_;         ///< segments that could not grow since a position was last given back
    bool any_full_ = false;
    struct cont *segments_;
};

} // namespace ribkit::rib
