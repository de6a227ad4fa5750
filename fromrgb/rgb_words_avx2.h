// What the AVX2 row kernels from RGB share (include only from *_avx2.cpp files):
// RGB pixels as 16-bit (B, G) and (R, 0) word pairs, two to a 32-bit lane, and
// weighted sums of them with pmaddwd.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "fromrgb/from_rgb.h"

namespace cycbcr::fromrgb::avx2 {

// Source lines are asked for this far ahead: without it a frame read from
// beyond the cache runs at half speed or worse whenever its rows begin on a
// cache line.
inline constexpr size_t kAhead = 4096;

// Two 16-bit values in every 32-bit lane, `lo` in the low half.
CYCBCR_INLINE __m256i pair16(int32_t lo, int32_t hi) {
    return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(hi) << 16) |
                                                  (static_cast<uint32_t>(lo) & 0xFFFFu)));
}

// The same 16-byte pattern in both lanes.
CYCBCR_INLINE __m256i lanes(const int8_t (&m)[16]) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m)));
}

// Per lane, four pixels to (B, G) and (R, 0) word pairs: the pshufb masks of a
// layout of 3- or 4-byte pixels, lane-relative (a lane holds pixels 4k..4k+3
// from its first byte).
struct Unpack {
    __m256i bg, r;
};
inline Unpack unpack_masks(PixelLayout l) {
    int8_t bg[16], r[16];
    for (int j = 0; j < 4; ++j) {
        const int at = j * static_cast<int>(l.bytes);
        bg[4 * j] = static_cast<int8_t>(at + static_cast<int>(l.b));
        bg[4 * j + 1] = -1;
        bg[4 * j + 2] = static_cast<int8_t>(at + static_cast<int>(l.g));
        bg[4 * j + 3] = -1;
        r[4 * j] = static_cast<int8_t>(at + static_cast<int>(l.r));
        r[4 * j + 1] = -1;
        r[4 * j + 2] = -1;
        r[4 * j + 3] = -1;
    }
    return {lanes(bg), lanes(r)};
}

// Eight pixels from p: pixels 0-3 in the low lane, 4-7 in the high one. Three
// byte pixels read four bytes past the eighth pixel.
template <uint32_t Bytes>
CYCBCR_INLINE __m256i load8(const uint8_t* p) {
    if constexpr (Bytes == 4)
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    else
        return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(p + 12),
                                   reinterpret_cast<const __m128i*>(p));
}

struct Words {
    __m256i bg, r;  // (B, G) and (R, 0) per pixel
};
CYCBCR_INLINE Words words8(__m256i v, const Unpack& m) {
    return {_mm256_shuffle_epi8(v, m.bg), _mm256_shuffle_epi8(v, m.r)};
}

// Weights of R, G and B as pmaddwd multipliers. Wide weights (beyond 16 bits)
// go in two halves, c = h x 32768 + l with 0 <= l < 32768; narrow ones whole
// in the low pair.
struct Weights {
    __m256i bgHi, rHi, bgLo, rLo;
};
template <bool Wide>
Weights weights(int32_t r, int32_t g, int32_t b) {
    if constexpr (!Wide) {
        const __m256i none = _mm256_setzero_si256();
        return {none, none, pair16(b, g), pair16(r, 0)};
    }
    auto hi = [](int32_t c) { return c >> 15; };
    auto lo = [](int32_t c) { return c & 32767; };
    return {pair16(hi(b), hi(g)), pair16(hi(r), 0), pair16(lo(b), lo(g)), pair16(lo(r), 0)};
}
// Each pixel's weighted sum, exact in 32 bits.
template <bool Wide>
CYCBCR_INLINE __m256i weighted_sum(const Words& w, const Weights& s) {
    const __m256i lo =
        _mm256_add_epi32(_mm256_madd_epi16(w.bg, s.bgLo), _mm256_madd_epi16(w.r, s.rLo));
    if constexpr (!Wide) return lo;
    const __m256i hi =
        _mm256_add_epi32(_mm256_madd_epi16(w.bg, s.bgHi), _mm256_madd_epi16(w.r, s.rHi));
    return _mm256_add_epi32(_mm256_slli_epi32(hi, 15), lo);
}

}  // namespace cycbcr::fromrgb::avx2
