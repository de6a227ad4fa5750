// AVX2 forms of 16-bit planar into UYVY and of UYVY into 4:4:4 p10. Each row
// kernel finishes its row with the plain kernel.
#include <immintrin.h>

#include "cycbcr.h"
#include "platform/memory.h"
#include "ycbcr10/planar16.h"
#include "ycbcr10/v210.h"

namespace cycbcr::avx2 {
namespace {

constexpr size_t kSourceAhead = 4096;

inline __m256i load(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
inline void store(uint8_t* p, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

}  // namespace

void p10_to_uyvy_row(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                     uint32_t first, uint32_t width) {
    const __m256i low = _mm256_set1_epi16(0xFF);
    // (v >> 2) & 0xFF: the masked words pack to bytes without saturating.
    auto bytes = [&](const uint8_t* p) {
        return _mm256_and_si256(_mm256_srli_epi16(load(p), 2), low);
    };
    uint32_t x = first;
    for (; x + 32 <= width; x += 32) {
        prefetch(y + 2 * size_t{x}, kSourceAhead);
        prefetch(y + 2 * size_t{x} + 32, kSourceAhead);
        prefetch(cb + x, kSourceAhead);
        prefetch(cr + x, kSourceAhead);
        // Y 0-7 16-23 | 8-15 24-31, reordered to 0-15 | 16-31.
        const __m256i y8 = _mm256_permute4x64_epi64(
            _mm256_packus_epi16(bytes(y + 2 * size_t{x}), bytes(y + 2 * size_t{x} + 32)), 0xD8);
        const __m256i u = bytes(cb + x), v = bytes(cr + x);
        // Cb Cr of pairs 0-7 | 8-15.
        const __m256i c8 =
            _mm256_packus_epi16(_mm256_unpacklo_epi16(u, v), _mm256_unpackhi_epi16(u, v));
        const __m256i lo = _mm256_unpacklo_epi8(c8, y8);  // pixels 0-7 | 16-23
        const __m256i hi = _mm256_unpackhi_epi8(c8, y8);  // pixels 8-15 | 24-31
        store(dst + 2 * size_t{x}, _mm256_permute2x128_si256(lo, hi, 0x20));
        store(dst + 2 * size_t{x} + 32, _mm256_permute2x128_si256(lo, hi, 0x31));
    }
    plain::p10_to_uyvy_row(dst, y, cb, cr, x, width);
}

void uyvy_to_444_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t first,
                     uint32_t width) {
    const __m256i toY = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, -1, 3, -1, 5, -1, 7, -1, 9, -1, 11, -1, 13, -1, 15, -1));
    const __m256i toCb = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, -1, 0, -1, 4, -1, 4, -1, 8, -1, 8, -1, 12, -1, 12, -1));
    const __m256i toCr = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, -1, 2, -1, 6, -1, 6, -1, 10, -1, 10, -1, 14, -1, 14, -1));
    uint32_t x = first;
    for (; x + 16 <= width; x += 16) {
        const uint8_t* s = src + 2 * size_t{x};
        prefetch(s, kSourceAhead);
        const __m256i w = load(s);
        store(y + 2 * size_t{x}, _mm256_slli_epi16(_mm256_shuffle_epi8(w, toY), 2));
        store(cb + 2 * size_t{x}, _mm256_slli_epi16(_mm256_shuffle_epi8(w, toCb), 2));
        store(cr + 2 * size_t{x}, _mm256_slli_epi16(_mm256_shuffle_epi8(w, toCr), 2));
    }
    plain::uyvy_to_444_row(y, cb, cr, src, x, width);
}

}  // namespace cycbcr::avx2

using namespace cycbcr;

extern "C" {

CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return p10_to_uyvy_frame(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch,
                             avx2::p10_to_uyvy_row);
}

CYCBCR_API unsigned int cycbcr_yuv420p10_to_uyvy_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return p420_to_uyvy_frame(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch, 2,
                              store_uyvy_from_16bit_row);
}

CYCBCR_API unsigned int cycbcr_yuv420p16_to_uyvy_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return p420_to_uyvy_frame(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch, 8,
                              store_uyvy_from_16bit_row);
}

CYCBCR_API unsigned int cycbcr_uyvy_to_yuv444p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return uyvy_to_444_frame(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch,
                             avx2::uyvy_to_444_row);
}

}  // extern "C"
