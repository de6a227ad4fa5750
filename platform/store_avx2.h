// Vector stores by the frame's Store policy, for the AVX2 row kernels. Include
// only from *_avx2.cpp files.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "platform/memory.h"

namespace cycbcr::avx2 {

CYCBCR_INLINE __m256i load32(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
CYCBCR_INLINE __m128i load16(const uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// 32 bytes at p; streamed whole (Stream32: p 32-byte aligned) or in halves
// (Stream16: p 16-byte aligned).
template <Store S>
CYCBCR_INLINE void store32(uint8_t* p, __m256i v) {
    if constexpr (S == Store::Stream32) {
        _mm256_stream_si256(reinterpret_cast<__m256i*>(p), v);
    } else if constexpr (S == Store::Stream16) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(v));
        _mm_stream_si128(reinterpret_cast<__m128i*>(p + 16), _mm256_extracti128_si256(v, 1));
    } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
    }
}
// 16 bytes at p; streamed unless Cached (p 16-byte aligned).
template <Store S>
CYCBCR_INLINE void store16(uint8_t* p, __m128i v) {
    if constexpr (S == Store::Cached)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    else
        _mm_stream_si128(reinterpret_cast<__m128i*>(p), v);
}

// Calls body.template operator()<S>() with the frame's Store as a constant, so
// that a row kernel is chosen once per frame.
template <class Body>
CYCBCR_INLINE auto with_store(Store s, Body&& body) {
    switch (s) {
        case Store::Stream32:
            return body.template operator()<Store::Stream32>();
        case Store::Stream16:
            return body.template operator()<Store::Stream16>();
        default:
            return body.template operator()<Store::Cached>();
    }
}

}  // namespace cycbcr::avx2
