// Lanes of x86-64 with AVX2. Compiled with -mavx2, in one translation unit.
#pragma once

#include "codec/isa_shuffles.h"

#include <immintrin.h>

namespace ribkit::codec {

template <> struct lane<16> {
    using vector = __m128i;
    [[gnu::always_inline]] static vector load(const uint8_t *at) {
        return _mm_loadu_si128(reinterpret_cast<const vector *>(at));
    }
    [[gnu::always_inline]] static void store(uint8_t *at, vector v) {
        _mm_storeu_si128(reinterpret_cast<vector *>(at), v);
    }
    [[gnu::always_inline]] static vector shuffle(vector v, vector indices) { return _mm_shuffle_epi8(v, indices); }
    [[gnu::always_inline]] static vector and_(vector a, vector b) { return _mm_and_si128(a, b); }
    [[gnu::always_inline]] static vector or_(vector a, vector b) { return _mm_or_si128(a, b); }
};

/// The lower half of a lane<16>.
template <> struct lane<8> : lane<16> {
    [[gnu::always_inline]] static vector load(const uint8_t *at) {
        return _mm_loadl_epi64(reinterpret_cast<const vector *>(at));
    }
    [[gnu::always_inline]] static void store(uint8_t *at, vector v) {
        _mm_storel_epi64(reinterpret_cast<vector *>(at), v);
    }
};

template <> struct lane<32> {
    using vector = __m256i;
    [[gnu::always_inline]] static vector load(const uint8_t *at) {
        return _mm256_loadu_si256(reinterpret_cast<const vector *>(at));
    }
    [[gnu::always_inline]] static void store(uint8_t *at, vector v) {
        _mm256_storeu_si256(reinterpret_cast<vector *>(at), v);
    }
    [[gnu::always_inline]] static vector shuffle(vector v, vector indices) { return _mm256_shuffle_epi8(v, indices); }
    [[gnu::always_inline]] static vector and_(vector a, vector b) { return _mm256_and_si256(a, b); }
    [[gnu::always_inline]] static vector or_(vector a, vector b) { return _mm256_or_si256(a, b); }

    // As eight signed words.
    [[gnu::always_inline]] static vector every_word(int32_t word) { return _mm256_set1_epi32(word); }
    [[gnu::always_inline]] static vector pick_words(vector v, vector which) {
        return _mm256_permutevar8x32_epi32(v, which);
    }
    [[gnu::always_inline]] static vector words_above(vector a, vector b) { return _mm256_cmpgt_epi32(a, b); }
    [[gnu::always_inline]] static vector larger_words(vector a, vector b) { return _mm256_max_epi32(a, b); }
    [[gnu::always_inline]] static bool any_word(vector v) { return _mm256_testz_si256(v, v) == 0; }
};

struct avx2 : byte_shuffles<avx2> {
    static constexpr bool compares_words = true;
};

} // namespace ribkit::codec
