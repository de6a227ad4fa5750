// One row of 16-bit 4:2:2 planar samples into UYVY bytes, for the AVX2 forms of
// the high-bit-depth converters.
#include <immintrin.h>

#include "ycbcr10/v210.h"

void store_uyvy_from_16bit_row(unsigned char* dst, const unsigned short* y,
                               const unsigned short* cb, const unsigned short* cr,
                               unsigned int width, unsigned int shift) {
    unsigned int x = 0;
    if (width >= 16) {
        const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
        const __m128i top = _mm_set1_epi16(255);
        auto load = [&](const unsigned short* p) {
            const __m128i v =
                _mm_srl_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), count);
            return _mm_min_epu16(v, top);
        };
        // store_uyvy_16: sixteen pixels, 32 bytes.
        for (; x + 16 <= width; x += 16) {
            const __m128i y8 = _mm_packus_epi16(load(y + x), load(y + x + 8));
            const __m128i u = load(cb + x / 2);
            const __m128i v = load(cr + x / 2);
            const __m128i c8 = _mm_packus_epi16(_mm_unpacklo_epi16(u, v), _mm_unpackhi_epi16(u, v));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * x), _mm_unpacklo_epi8(c8, y8));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * x + 16),
                             _mm_unpackhi_epi8(c8, y8));
        }
    }
    // Plane rows may start on an odd byte: samples are read through memcpy.
    auto low8 = [shift](const unsigned short* p) {
        unsigned short v;
        std::memcpy(&v, p, 2);
        return static_cast<unsigned char>(shift >= 16 ? 0 : (v >> shift));
    };
    for (; x + 2 <= width; x += 2) {
        dst[2 * x] = low8(cb + x / 2);
        dst[2 * x + 1] = low8(y + x);
        dst[2 * x + 2] = low8(cr + x / 2);
        dst[2 * x + 3] = low8(y + x + 1);
    }
}
