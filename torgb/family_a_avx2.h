// The family-A arithmetic of the 8-bit YCbCr to RGB engine as AVX2 steps of
// sixteen pixels, shared by the row kernels of packed and planar RGB output.
// For *_avx2.cpp files only.
//
// The sums are exact in 32 bits (|sum| < 2^23 for every row of the table), and
// the engine's truncating division by 10000 is a float multiply by the float just
// above 1/10000 followed by a truncating conversion: for |sum| < 2^24 the product
// never reaches the next integer and never falls below the true quotient, so the
// truncated quotient is the integer one (tested over every sum the table can
// give). Saturating packs then do the engine's clamp.
#pragma once

#include <immintrin.h>

#include <bit>

#include "torgb/to_rgb.h"

namespace cycbcr::colour::avx2_a {

// The float just above 1/10000.
inline constexpr float kTenThousandth = std::bit_cast<float>(0x38D1B718u);

struct Consts {
    __m256i yOffset;  // 16-bit lanes
    __m256i yGainEven, yGainOdd;
    __m256i toR, toG, toB;  // per pair (Cr', Cb') 16-bit lanes to 32-bit sums
};
CYCBCR_INLINE Consts consts_of(const ToRgbRow<int32_t>& k) {
    auto pair16 = [](int32_t lo, int32_t hi) {
        return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(hi) << 16) |
                                                      (static_cast<uint32_t>(lo) & 0xFFFFu)));
    };
    return {_mm256_set1_epi16(static_cast<int16_t>(k.yOffset)),
            pair16(k.yGain, 0),
            pair16(0, k.yGain),
            pair16(k.crToR, 0),
            pair16(-k.crToG, -k.cbToG),
            pair16(0, k.cbToB)};
}

// Eight pairs of samples: luma as sixteen 16-bit lanes in pixel order, chroma
// as eight 32-bit lanes, Cr in the low half and Cb in the high.
struct Block {
    __m256i y;
    __m256i crcb;
};

// How a block's samples are fetched: through the three pointers, or, for the
// packed byte orders the engine's pointers usually describe, with one load of
// eight whole pixel pairs from the pair's first byte, or, for Cb, Cr pairs in
// one plane (Cr right after Cb), with one load of eight pairs.
enum class Fetch : uint8_t { Pointers, Uyvy, Yuy2, Yvyu, CbCrPairs };

template <Source S, Fetch F>
CYCBCR_INLINE Block load_block(const uint8_t* y, const uint8_t* cb, const uint8_t* cr) {
    const __m256i bias = _mm256_set1_epi16(128);
    if constexpr (F == Fetch::CbCrPairs) {
        const __m256i ly =
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y)));
        const __m128i swap = _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
        const __m128i crcb =
            _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cb)), swap);
        return {ly, _mm256_sub_epi16(_mm256_cvtepu8_epi16(crcb), bias)};
    } else if constexpr (F != Fetch::Pointers) {
        // Cr to the low half of each pair's 32-bit lane, Cb to the high half.
        constexpr int8_t b = F == Fetch::Uyvy ? 0 : 1, r = F == Fetch::Uyvy ? 2 : 3;
        constexpr int8_t cbAt = F == Fetch::Yvyu ? r : b, crAt = F == Fetch::Yvyu ? b : r;
        const __m256i m = _mm256_setr_epi8(crAt, -1, cbAt, -1, crAt + 4, -1, cbAt + 4, -1, crAt + 8,
                                           -1, cbAt + 8, -1, crAt + 12, -1, cbAt + 12, -1, crAt, -1,
                                           cbAt, -1, crAt + 4, -1, cbAt + 4, -1, crAt + 8, -1,
                                           cbAt + 8, -1, crAt + 12, -1, cbAt + 12, -1);
        const uint8_t* base = F == Fetch::Uyvy ? y - 1 : y;
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(base));
        const __m256i ly = F == Fetch::Uyvy ? _mm256_srli_epi16(v, 8)
                                            : _mm256_and_si256(v, _mm256_set1_epi16(0xFF));
        return {ly, _mm256_sub_epi16(_mm256_shuffle_epi8(v, m), bias)};
    } else if constexpr (S == Source::Packed) {
        // Y at every other byte; Cb and Cr at every fourth.
        const __m256i byte16 = _mm256_set1_epi16(0xFF);
        const __m256i byte32 = _mm256_set1_epi32(0xFF);
        const __m256i ly =
            _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(y)), byte16);
        const __m256i lcb =
            _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(cb)), byte32);
        const __m256i lcr =
            _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(cr)), byte32);
        return {ly, _mm256_sub_epi16(_mm256_or_si256(lcr, _mm256_slli_epi32(lcb, 16)), bias)};
    } else if constexpr (S == Source::Planar) {
        const __m256i ly =
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y)));
        const __m128i crcb =
            _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr)),
                              _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb)));
        return {ly, _mm256_sub_epi16(_mm256_cvtepu8_epi16(crcb), bias)};
    } else {
        const __m256i ly =
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y)));
        const __m256i word32 = _mm256_set1_epi32(0xFFFF);
        const __m256i lcb = _mm256_and_si256(
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cb))), word32);
        const __m256i lcr = _mm256_and_si256(
            _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cr))), word32);
        return {ly, _mm256_sub_epi16(_mm256_or_si256(lcr, _mm256_slli_epi32(lcb, 16)), bias)};
    }
}

CYCBCR_INLINE __m256i quotient(__m256i sum) {
    return _mm256_cvttps_epi32(
        _mm256_mul_ps(_mm256_cvtepi32_ps(sum), _mm256_set1_ps(kTenThousandth)));
}

// One channel of sixteen pixels as 16-bit lanes, in the order the packs leave
// them: in each 128-bit lane the four even pixels, then the four odd ones. Not
// yet clamped to 0..255.
struct Channels {
    __m256i r, g, b;
};
CYCBCR_INLINE Channels compute(const Block& blk, const Consts& k) {
    const __m256i y = _mm256_sub_epi16(blk.y, k.yOffset);
    const __m256i le = _mm256_madd_epi16(y, k.yGainEven);
    const __m256i lo = _mm256_madd_epi16(y, k.yGainOdd);
    const __m256i tr = _mm256_madd_epi16(blk.crcb, k.toR);
    const __m256i tg = _mm256_madd_epi16(blk.crcb, k.toG);
    const __m256i tb = _mm256_madd_epi16(blk.crcb, k.toB);
    auto channel = [&](__m256i t) {
        return _mm256_packs_epi32(quotient(_mm256_add_epi32(le, t)),
                                  quotient(_mm256_add_epi32(lo, t)));
    };
    return {channel(tr), channel(tg), channel(tb)};
}

}  // namespace cycbcr::colour::avx2_a
