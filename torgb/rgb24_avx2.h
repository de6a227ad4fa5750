// Sixteen 3-byte RGB pixels from three channels of 16-bit lanes, shared by the
// AVX2 rows of the 8-bit and high-bit-depth engines. For *_avx2.cpp files only.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "frame/inline.h"

namespace cycbcr::colour::avx2_rgb24 {

// first, g, last: the channels in address order, 16-bit lanes holding 0..255 in
// the order of the packs that made them (per 128-bit lane, the evens and odds of
// eight pixels). Per lane, eight pixels of three bytes: 16 bytes, then 8. Rows of
// 3-byte pixels are not 16-byte aligned at every block, so the stores are plain.
CYCBCR_INLINE void store16(uint8_t* d, __m256i first, __m256i g, __m256i last) {
    auto lanes = [](const int8_t(&m)[16]) {
        return _mm256_setr_epi8(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10],
                                m[11], m[12], m[13], m[14], m[15], m[0], m[1], m[2], m[3], m[4],
                                m[5], m[6], m[7], m[8], m[9], m[10], m[11], m[12], m[13], m[14],
                                m[15]);
    };
    static constexpr int8_t kHead01[16] = {0, 8, -1, 4, 12, -1, 1, 9, -1, 5, 13, -1, 2, 10, -1, 6};
    static constexpr int8_t kHead2[16] = {-1, -1, 0,  -1, -1, 4,  -1, -1,
                                          1,  -1, -1, 5,  -1, -1, 2,  -1};
    static constexpr int8_t kTail01[16] = {14, -1, 3,  11, -1, 7,  15, -1,
                                           -1, -1, -1, -1, -1, -1, -1, -1};
    static constexpr int8_t kTail2[16] = {-1, 6,  -1, -1, 3,  -1, -1, 7,
                                          -1, -1, -1, -1, -1, -1, -1, -1};
    const __m256i p01 = _mm256_packus_epi16(first, g);
    const __m256i p2 = _mm256_packus_epi16(last, last);
    const __m256i head = _mm256_or_si256(_mm256_shuffle_epi8(p01, lanes(kHead01)),
                                         _mm256_shuffle_epi8(p2, lanes(kHead2)));
    const __m256i tail = _mm256_or_si256(_mm256_shuffle_epi8(p01, lanes(kTail01)),
                                         _mm256_shuffle_epi8(p2, lanes(kTail2)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(head));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 16), _mm256_castsi256_si128(tail));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24), _mm256_extracti128_si256(head, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 40), _mm256_extracti128_si256(tail, 1));
}

}  // namespace cycbcr::colour::avx2_rgb24
