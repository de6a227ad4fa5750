// AVX2 form of the 4:2:2 <-> 4:2:0 planar engine: whole rows through
// CopyMemoryFast, 32-byte copies within the row kernel for short rows.
#include <immintrin.h>

#include "frame/export.h"
#include "platform/memory.h"
#include "ycbcr8/planar_copy.h"

namespace {

void copy_row_avx2(uint8_t* dst, const uint8_t* src, size_t n) {
    if (n >= 256) {
        cycbcr::CopyMemoryFast(dst, src, n);
        return;
    }
    size_t k = 0;
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
