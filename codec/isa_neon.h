// Lanes of 64-bit ARM, whose every processor has NEON: a table lookup is the shuffle, and clears where an index is out
// of its table. 32 bytes are two registers.
#pragma once

#include "codec/isa_shuffles.h"

#include <arm_neon.h>

namespace ribkit::codec {

template <> struct lane<16> {
    using vector = uint8x16_t;
    [[gnu::always_inline]] static vector load(const uint8_t *at) { return vld1q_u8(at); }
    [[gnu::always_inline]] static void store(uint8_t *at, vector v) { vst1q_u8(at, v); }
    [[gnu::always_inline]] static vector shuffle(vector v, vector indices) { return vqtbl1q_u8(v, indices); }
    [[gnu::always_inline]] static vector and_(vector a, vector b) { return vandq_u8(a, b); }
    [[gnu::always_inline]] static vector or_(vector a, vector b) { return vorrq_u8(a, b); }
};

/// The lower half of a lane<16>.
template <> struct lane<8> : lane<16> {
    [[gnu::always_inline]] static vector load(const uint8_t *at) { return vcombine_u8(vld1_u8(at), vdup_n_u8(0)); }
    [[gnu::always_inline]] static void store(uint8_t *at, vector v) { vst1_u8(at, vget_low_u8(v)); }
};

template <> struct lane<32> {
    using half = lane<16>;
    using vector = uint8x16x2_t;
    [[gnu::always_inline]] static vector load(const uint8_t *at) { return {{half::load(at), half::load(at + 16)}}; }
    [[gnu::always_inline]] static void store(uint8_t *at, vector v) {
        half::store(at, v.val[0]);
        half::store(at + 16, v.val[1]);
    }
    [[gnu::always_inline]] static vector shuffle(vector v, vector indices) {
        return {{half::shuffle(v.val[0], indices.val[0]), half::shuffle(v.val[1], indices.val[1])}};
    }
    [[gnu::always_inline]] static vector and_(vector a, vector b) {
        return {{half::and_(a.val[0], b.val[0]), half::and_(a.val[1], b.val[1])}};
    }
    [[gnu::always_inline]] static vector or_(vector a, vector b) {
        return {{half::or_(a.val[0], b.val[0]), half::or_(a.val[1], b.val[1])}};
    }
};

struct neon : byte_shuffles<neon> {
    static constexpr bool compares_words = false;
};

} // namespace ribkit::codec
