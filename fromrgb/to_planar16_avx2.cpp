// AVX2 rows of the 16-bit-word converters into 10-bit 4:4:4 and 12-bit 4:2:2
// planes: sixteen 4-word pixels a step, the same integer arithmetic as the
// plain rows (32-bit products and sums, quotients by 40,000 toward zero).
#include <immintrin.h>

#include "fromrgb/to_planar16.h"

namespace cycbcr::fromrgb {
namespace {

// |s| / 40,000 for |s| < 2^31: (|s| >> 6) / 625, the latter as the product
// with ceil(2^41 / 625) shifted down by 41, exact for every value below 2^26
// (the product's excess, 73 per unit, stays under 2^41). The sign of s is put
// back, so the quotient goes toward zero.
inline __m256i div40000(__m256i s) {
    const __m256i m = _mm256_set1_epi32(static_cast<int32_t>(3518437209u));
    const __m256i a = _mm256_srli_epi32(_mm256_abs_epi32(s), 6);
    const __m256i even = _mm256_srli_epi64(_mm256_mul_epu32(a, m), 41);
    const __m256i odd = _mm256_srli_epi64(_mm256_mul_epu32(_mm256_srli_epi64(a, 32), m), 9);
    return _mm256_sign_epi32(_mm256_blend_epi32(even, odd, 0xAA), s);
}

struct Weights {
    __m256i y[3], cb[3], cr[3];
    __m256i offset, centre, limit;
    __m128i shift[3];  // word index x 16 + 6 of R, G, B
};

inline __m256i dot(const __m256i (&w)[3], __m256i r, __m256i g, __m256i b) {
    return _mm256_add_epi32(
        _mm256_add_epi32(_mm256_mullo_epi32(w[0], r), _mm256_mullo_epi32(w[1], g)),
        _mm256_mullo_epi32(w[2], b));
}

// One channel of pixels 0-3 (lo) and 4-7 (hi) as 10-bit values in 32-bit
// lanes, pixel order.
inline __m256i channel(__m256i lo, __m256i hi, __m128i shift) {
    const __m256i mask = _mm256_set1_epi64x(0x3FF);
    const __m256i a = _mm256_and_si256(_mm256_srl_epi64(lo, shift), mask);
    const __m256i b = _mm256_and_si256(_mm256_srl_epi64(hi, shift), mask);
    // Lanes p0 p4 p1 p5 | p2 p6 p3 p7, put back in order.
    const __m256i mixed = _mm256_or_si256(a, _mm256_slli_epi64(b, 32));
    return _mm256_permutevar8x32_epi32(mixed, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
}

struct Eight {
    __m256i y, cb, cr;
};
inline Eight eight(const uint8_t* p, const Weights& k) {
    const __m256i lo = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i hi = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32));
    const __m256i r = channel(lo, hi, k.shift[0]), g = channel(lo, hi, k.shift[1]),
                  b = channel(lo, hi, k.shift[2]);
    const __m256i zero = _mm256_setzero_si256();
    const __m256i y =
        _mm256_min_epi32(_mm256_add_epi32(div40000(dot(k.y, r, g, b)), k.offset), k.limit);
    auto c = [&](const __m256i(&w)[3]) {
        const __m256i v = _mm256_add_epi32(div40000(dot(w, r, g, b)), k.centre);
        return _mm256_min_epi32(_mm256_max_epi32(v, zero), k.limit);
    };
    return {y, c(k.cb), c(k.cr)};
}

// Eight 32-bit lanes (each at most 65535) as eight 16-bit samples.
inline __m128i narrow(__m256i v) {
    return _mm_packus_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
}

Weights weights(const WordRowArgs& a, int32_t centre, int32_t limit) {
    Weights k;
    for (int i = 0; i < 3; ++i) {
        k.y[i] = _mm256_set1_epi32(a.k->y[i]);
        k.cb[i] = _mm256_set1_epi32(a.k->cb[i]);
        k.cr[i] = _mm256_set1_epi32(a.k->cr[i]);
    }
    k.offset = _mm256_set1_epi32(a.k->yOffset);
    k.centre = _mm256_set1_epi32(centre);
    k.limit = _mm256_set1_epi32(limit);
    k.shift[0] = _mm_cvtsi32_si128(static_cast<int>(16 * a.l.r + 6));
    k.shift[1] = _mm_cvtsi32_si128(static_cast<int>(16 * a.l.g + 6));
    k.shift[2] = _mm_cvtsi32_si128(static_cast<int>(16 * a.l.b + 6));
    return k;
}

inline void store(uint16_t* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

// The pixels a row's vector steps take: whole steps that leave the row's last
// pixel to the plain row, since a step ending there would read that pixel's
// unused word (the last 2 bytes of the row for layouts 0 and 2), which the
// plain row never touches.
uint32_t vector_pixels(uint32_t width, uint32_t step) {
    return width == 0 ? 0 : (width - 1) / step * step;
}

// 4-word pixels only (every channel within its own pixel); 3-word pixels stay
// on the plain row.
uint32_t p12_422_row(const WordRowArgs& a) {
    if (a.l.words != 4) return 0;
    const Weights k = weights(a, 2048, 4095);
    const uint32_t n = vector_pixels(a.width, 16);
    for (uint32_t x = 0; x < n; x += 16) {
        const uint8_t* p = a.src + size_t{x} * 8;
        // The source 4 KiB ahead (a hint: past the row's end it faults nothing).
        _mm_prefetch(reinterpret_cast<const char*>(p) + 4096, _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(p) + 4096 + 64, _MM_HINT_T0);
        const Eight e0 = eight(p, k), e1 = eight(p + 64, k);
        store(a.out.y + x, narrow(e0.y));
        store(a.out.y + x + 8, narrow(e1.y));
        // Pair sums: lanes 01 23 | 01' 23' of each half, then in pixel order.
        auto pairs = [](__m256i c0, __m256i c1) {
            const __m256i s = _mm256_srli_epi32(_mm256_hadd_epi32(c0, c1), 1);
            return narrow(_mm256_permute4x64_epi64(s, 0xD8));
        };
        store(a.out.cb + x / 2, pairs(e0.cb, e1.cb));
        store(a.out.cr + x / 2, pairs(e0.cr, e1.cr));
    }
    return n;
}

uint32_t p10_444_row(const WordRowArgs& a) {
    if (a.l.words != 4) return 0;
    const Weights k = weights(a, 512, 1023);
    const uint32_t n = vector_pixels(a.width, 8);
    for (uint32_t x = 0; x < n; x += 8) {
        _mm_prefetch(reinterpret_cast<const char*>(a.src + size_t{x} * 8) + 4096, _MM_HINT_T0);
        const Eight e = eight(a.src + size_t{x} * 8, k);
        store(a.out.y + x, narrow(e.y));
        store(a.out.cb + x, narrow(e.cb));
        store(a.out.cr + x, narrow(e.cr));
    }
    return n;
}

}  // namespace

WordRow avx2_p12_422_row() {
    return p12_422_row;
}
WordRow avx2_p10_444_row() {
    return p10_444_row;
}

}  // namespace cycbcr::fromrgb
