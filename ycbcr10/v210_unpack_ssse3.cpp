// Exported SSSE3 row kernels: one v210 row into 8-bit (truncated, v >> 2) or
// 16-bit (v << 6) planes, the bytes of the scalar planar unpacking.
#include <tmmintrin.h>

#include <cstring>

#include "frame/export.h"
#include "ycbcr10/v210.h"

namespace {

template <bool Aligned>
__m128i load_group(const uint8_t* p) {
    if constexpr (Aligned) return _mm_load_si128(reinterpret_cast<const __m128i*>(p));
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Sample k of a group sits, after the per-word shifts below, at byte
// 4 * (k / 3) + k % 3 (8-bit) or in the 16-bit half given by the masks (16-bit).
template <bool Aligned>
void unpack8(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, unsigned int pixels) {
    const __m128i byte = _mm_set1_epi32(0xFF);
    // Y: samples 1 3 5 7 9 11; Cb: 0 4 8; Cr: 2 6 10.
    const __m128i pick = _mm_setr_epi8(1, 4, 6, 9, 12, 14, 0, 5, 10, 2, 8, 13, -1, -1, -1, -1);
    for (unsigned int g = 0; g < (pixels + 5) / 6; ++g, src += 16, y += 6, cb += 3, cr += 3) {
        const __m128i w = load_group<Aligned>(src);
        const __m128i b0 = _mm_and_si128(_mm_srli_epi32(w, 2), byte);
        const __m128i b1 = _mm_slli_epi32(_mm_and_si128(_mm_srli_epi32(w, 12), byte), 8);
        const __m128i b2 = _mm_slli_epi32(_mm_and_si128(_mm_srli_epi32(w, 22), byte), 16);
        alignas(16) uint8_t out[16];
        _mm_store_si128(reinterpret_cast<__m128i*>(out),
                        _mm_shuffle_epi8(_mm_or_si128(_mm_or_si128(b0, b1), b2), pick));
        std::memcpy(y, out, 6);
        std::memcpy(cb, out + 6, 3);
        std::memcpy(cr, out + 9, 3);
    }
}

template <bool Aligned>
void unpack16(const uint8_t* src, uint16_t* y, uint16_t* cb, uint16_t* cr, unsigned int pixels) {
    const __m128i keep = _mm_set1_epi32(0xFFC0);
    // P holds v0 << 6 in the low and v1 << 6 in the high half of each word's lane,
    // Q holds v2 << 6 in the low half.
    const __m128i yFromP =
        _mm_setr_epi8(2, 3, 4, 5, -1, -1, 10, 11, 12, 13, -1, -1, -1, -1, -1, -1);
    const __m128i yFromQ =
        _mm_setr_epi8(-1, -1, -1, -1, 4, 5, -1, -1, -1, -1, 12, 13, -1, -1, -1, -1);
    const __m128i cFromP = _mm_setr_epi8(0, 1, 6, 7, -1, -1, -1, -1, 8, 9, 14, 15, -1, -1, -1, -1);
    const __m128i cFromQ =
        _mm_setr_epi8(-1, -1, -1, -1, 8, 9, 0, 1, -1, -1, -1, -1, -1, -1, -1, -1);
    for (unsigned int g = 0; g < (pixels + 5) / 6; ++g, src += 16, y += 6, cb += 3, cr += 3) {
        const __m128i w = load_group<Aligned>(src);
        const __m128i p =
            _mm_or_si128(_mm_and_si128(_mm_slli_epi32(w, 6), keep),
                         _mm_slli_epi32(_mm_and_si128(_mm_srli_epi32(w, 4), keep), 16));
        const __m128i q = _mm_and_si128(_mm_srli_epi32(w, 14), keep);
        alignas(16) uint8_t ys[16], cs[16];
        _mm_store_si128(reinterpret_cast<__m128i*>(ys),
                        _mm_or_si128(_mm_shuffle_epi8(p, yFromP), _mm_shuffle_epi8(q, yFromQ)));
        _mm_store_si128(reinterpret_cast<__m128i*>(cs),
                        _mm_or_si128(_mm_shuffle_epi8(p, cFromP), _mm_shuffle_epi8(q, cFromQ)));
        std::memcpy(y, ys, 12);
        std::memcpy(cb, cs, 6);
        std::memcpy(cr, cs + 6, 6);
    }
}

}  // namespace

extern "C" {

CYCBCR_API void qb_v210_planar_unpack_aligned_ssse3(const uint8_t* src, uint8_t* y, uint8_t* cb,
                                                    uint8_t* cr, unsigned int pixels) {
    unpack8<true>(src, y, cb, cr, pixels);
}
CYCBCR_API void qb_v210_planar_unpack_unaligned_ssse3(const uint8_t* src, uint8_t* y, uint8_t* cb,
                                                      uint8_t* cr, unsigned int pixels) {
    unpack8<false>(src, y, cb, cr, pixels);
}
CYCBCR_API void qb_v210_planar16_unpack_aligned_ssse3(const uint8_t* src, uint16_t* y, uint16_t* cb,
                                                      uint16_t* cr, unsigned int pixels) {
    unpack16<true>(src, y, cb, cr, pixels);
}
CYCBCR_API void qb_v210_planar16_unpack_unaligned_ssse3(const uint8_t* src, uint16_t* y,
                                                        uint16_t* cb, uint16_t* cr,
                                                        unsigned int pixels) {
    unpack16<false>(src, y, cb, cr, pixels);
}

}  // extern "C"
