// AVX2 form of the 4:2:2 <-> 4:2:0 planar engine: the shared frame walk with
// 32-byte row copies. Rows stay in our own loop rather than the C library's
// copy, whose per-call choice of method costs on rows of a few kilobytes.
#include <immintrin.h>

#include "frame/export.h"
#include "platform/memory.h"
#include "ycbcr8/planar_copy.h"

namespace {

void copy_row_avx2(uint8_t* dst, const uint8_t* src, size_t n) {
    size_t k = 0;
    for (; k + 128 <= n; k += 128) {
        const auto* s = reinterpret_cast<const __m256i*>(src + k);
        auto* d = reinterpret_cast<__m256i*>(dst + k);
        const __m256i a = _mm256_loadu_si256(s);
        const __m256i b = _mm256_loadu_si256(s + 1);
        const __m256i c = _mm256_loadu_si256(s + 2);
        const __m256i e = _mm256_loadu_si256(s + 3);
        _mm256_storeu_si256(d, a);
        _mm256_storeu_si256(d + 1, b);
        _mm256_storeu_si256(d + 2, c);
        _mm256_storeu_si256(d + 3, e);
    }
    for (; k + 32 <= n; k += 32)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + k),
                            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + k)));
    for (; k < n; ++k) dst[k] = src[k];
}

}  // namespace

extern "C" {

CYCBCR_API unsigned int cycbcr_planar_422_420_avx2(uint8_t* dY, uint8_t* dA, uint8_t* dB,
                                                   const uint8_t* sY, const uint8_t* sA,
                                                   const uint8_t* sB, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, unsigned int dst422,
                                                   unsigned int src422) {
    return cycbcr::detail::planar_422_420_frame(dY, dA, dB, sY, sA, sB, width, height, dstPitch,
                                                srcPitch, dst422 != 0, src422 != 0, copy_row_avx2);
}

}  // extern "C"
