// AVX2 row kernels between packed 4:2:2 pixel pairs and Y, Cb, Cr rows, 16 pairs
// a step; the rest of a row goes to the plain kernel of the same shape.
#include <immintrin.h>

#include "ycbcr8/packed_rows.h"

namespace cycbcr::avx2 {
namespace {

__m256i lane_mask(const int8_t (&m)[16]) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m));
    return _mm256_broadcastsi128_si256(v);
}

// Luma and chroma written together 16 pairs a turn, for frames where a row's
// luma and chroma may overlap, so that the bytes end as the pair-by-pair order
// leaves them.
template <Format Shape>
void split_pairwise(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                    uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma) {
    constexpr PairOffsets o = info(Shape).pair;
    const uint8_t* src = sy - o.y0;
    // Each lane gathers its four pairs as Y0..Y7, Cb0..Cb3, Cr0..Cr3.
    int8_t m[16];
    for (int k = 0; k < 4; ++k) {
        m[2 * k] = static_cast<int8_t>(4 * k + o.y0);
        m[2 * k + 1] = static_cast<int8_t>(4 * k + o.y0 + 2);
        m[8 + k] = static_cast<int8_t>(4 * k + o.cb);
        m[12 + k] = static_cast<int8_t>(4 * k + o.cr);
    }
    const __m256i mask = lane_mask(m);
    const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 6, 3, 7);
    size_t k = 0;
    for (; k + 16 <= pairs; k += 16) {
        const __m256i a = _mm256_permutevar8x32_epi32(
            _mm256_shuffle_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 4 * k)),
                                mask),
            order);
        const __m256i b = _mm256_permutevar8x32_epi32(
            _mm256_shuffle_epi8(
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 4 * k + 32)), mask),
            order);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y + 2 * k),
                            _mm256_permute2x128_si256(a, b, 0x20));
        if (!chroma) continue;
        const __m128i ca = _mm256_extracti128_si256(a, 1);
        const __m128i cbv = _mm256_extracti128_si256(b, 1);
        // Higher plane first, so that overlapping planes end as pair by pair.
        const __m128i vcb = _mm_unpacklo_epi64(ca, cbv);
        const __m128i vcr = _mm_unpackhi_epi64(ca, cbv);
        uint8_t* first = cr > cb ? cr + k : cb + k;
        uint8_t* second = cr > cb ? cb + k : cr + k;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(first), cr > cb ? vcr : vcb);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(second), cr > cb ? vcb : vcr);
    }
    const size_t in = 4 * k;
    plain::split_row<Shape>(sy + in, scb + in, scr + in, y + 2 * k, cb + k, cr + k, pairs - k,
                            chroma);
}

// Two passes over the row, luma then chroma, each a few cheap operations per 16
// pairs: fewer instructions than gathering all three at once, and one output
// stream at a time, which large frames write faster.
template <Format Shape>
void split_two_pass(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                    uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma) {
    constexpr PairOffsets o = info(Shape).pair;
    const uint8_t* src = sy - o.y0;
    constexpr bool yHigh = o.y0 == 1;  // UYVY keeps luma in the odd bytes
    const __m256i low = _mm256_set1_epi16(0x00FF);
    const size_t whole = pairs & ~size_t{15};
    auto load = [src](size_t at) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + at));
    };
    for (size_t k = 0; k < whole; k += 16) {
        const __m256i a = load(4 * k), b = load(4 * k + 32);
        const __m256i ya = yHigh ? _mm256_srli_epi16(a, 8) : _mm256_and_si256(a, low);
        const __m256i yb = yHigh ? _mm256_srli_epi16(b, 8) : _mm256_and_si256(b, low);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y + 2 * k),
                            _mm256_permute4x64_epi64(_mm256_packus_epi16(ya, yb), 0xD8));
    }
    if (chroma) {
        // Cr comes first in the pair of YVYU.
        uint8_t* first = o.cb < o.cr ? cb : cr;
        uint8_t* second = o.cb < o.cr ? cr : cb;
        const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
        for (size_t k = 0; k < whole; k += 16) {
            const __m256i a = load(4 * k), b = load(4 * k + 32);
            const __m256i ca = yHigh ? _mm256_and_si256(a, low) : _mm256_srli_epi16(a, 8);
            const __m256i cb2 = yHigh ? _mm256_and_si256(b, low) : _mm256_srli_epi16(b, 8);
            const __m256i c = _mm256_packus_epi16(ca, cb2);
            const __m256i uv = _mm256_permutevar8x32_epi32(
                _mm256_packus_epi16(_mm256_and_si256(c, low), _mm256_srli_epi16(c, 8)), order);
            // Higher plane first, so that overlapping planes end as pair by pair.
            const __m128i f = _mm256_castsi256_si128(uv), g = _mm256_extracti128_si256(uv, 1);
            if (second > first) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(second + k), g);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(first + k), f);
            } else {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(first + k), f);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(second + k), g);
            }
        }
    }
    const size_t in = 4 * whole;
    plain::split_row<Shape>(sy + in, scb + in, scr + in, y + 2 * whole, cb + whole, cr + whole,
                            pairs - whole, chroma);
}

template <Format Shape>
void merge_row(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
               const uint8_t* cr, size_t pairs) {
    constexpr PairOffsets o = info(Shape).pair;
    uint8_t* dst = dy - o.y0;
    constexpr bool crFirst = o.cr < o.cb && o.y0 == 0;  // YVYU
    size_t k = 0;
    for (; k + 16 <= pairs; k += 16) {
        const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cb + k));
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cr + k));
        const __m128i lo = crFirst ? _mm_unpacklo_epi8(v, u) : _mm_unpacklo_epi8(u, v);
        const __m128i hi = crFirst ? _mm_unpackhi_epi8(v, u) : _mm_unpackhi_epi8(u, v);
        const __m256i c = _mm256_set_m128i(hi, lo);
        const __m256i l = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(y + 2 * k));
        const __m256i p = o.y0 == 1 ? _mm256_unpacklo_epi8(c, l) : _mm256_unpacklo_epi8(l, c);
        const __m256i q = o.y0 == 1 ? _mm256_unpackhi_epi8(c, l) : _mm256_unpackhi_epi8(l, c);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * k),
                            _mm256_permute2x128_si256(p, q, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * k + 32),
                            _mm256_permute2x128_si256(p, q, 0x31));
    }
    const size_t out = 4 * k;
    plain::merge_row<Shape>(dy + out, dcb + out, dcr + out, y + 2 * k, cb + k, cr + k, pairs - k);
}

}  // namespace

// Shapes the vector kernels do not know take the plain byte-by-byte kernel.
SplitRow split_kernel(Format shape, bool pairwise) {
    return with_shape(shape, [pairwise]<Format S>() -> SplitRow {
        if constexpr (S == Format::Unknown)
            return plain::split_row<S>;
        else
            return pairwise ? split_pairwise<S> : split_two_pass<S>;
    });
}

MergeRow merge_kernel(Format shape) {
    return with_shape(shape, []<Format S>() -> MergeRow {
        if constexpr (S == Format::Unknown)
            return plain::merge_row<S>;
        else
            return merge_row<S>;
    });
}

}  // namespace cycbcr::avx2
