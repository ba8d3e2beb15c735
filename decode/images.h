// Saved images as layouts. The lists of blocks that follow an image of a buddy allocator, sixteen free ones and sixteen
// used ones, are more than a layout can say.
#pragma once

#include "codec/layout.h"
#include "rib_mem.h"

namespace ribkit::decode {

inline constexpr codec::layout image_word{"word", 4, {codec::word(0, "word")}};

inline constexpr codec::layout bud_image{
    "bud_image",
    BUD_IMAGE_FIXED_SIZE,
    {codec::word(0, "total"), codec::word(4, "free_space"), codec::word(8, "carve_mark"),
     codec::list(12, "n_free", BUD_SIZES, image_word, 4), codec::list(76, "n_used", BUD_SIZES, image_word, 4)}};

inline constexpr codec::layout cont_segment{
    "cont_segment", 12, {codec::word(0, "size"), codec::word(4, "first"), codec::word(8, "free")}};
inline constexpr codec::layout cont_image{"cont_image",
                                          12,
                                          {codec::word(0, "total"), codec::word(4, "block_size"),
                                           codec::word(8, "n_segment", codec::meaning::count),
                                           codec::list(12, "segment", codec::in::word(8), cont_segment, 12)}};

} // namespace ribkit::decode
