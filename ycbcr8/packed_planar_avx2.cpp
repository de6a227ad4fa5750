// AVX2 forms of the packed <-> planar wrappers: the engines' frame walks with
// 16-pair row kernels.
#include <immintrin.h>

#include "frame/export.h"
#include "ycbcr8/packed_planar_wrappers.h"

namespace cycbcr::detail {
namespace {

// Byte offsets of Y0, Cb and Cr in a pair, found from the row's sample pointers;
// false for layouts the vector kernels do not know.
bool offsets_of(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, int& oy, int& ocb,
                int& ocr) {
    if (cb == y + 1 && cr == y + 3) {
        oy = 0, ocb = 1, ocr = 3;
    } else if (cb == y - 1 && cr == y + 1) {
        oy = 1, ocb = 0, ocr = 2;
    } else if (cb == y + 3 && cr == y + 1) {
        oy = 0, ocb = 3, ocr = 1;
    } else {
        return false;
    }
    return true;
}

__m256i lane_mask(const int8_t (&m)[16]) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m));
    return _mm256_broadcastsi128_si256(v);
}

}  // namespace

namespace {

// Splits 16 pairs a turn writing luma and chroma together; used where a row's
// luma and chroma overlap, so that the bytes end as the pair-by-pair order leaves
// them.
void split_row_pairwise(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                        uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma) {
    int oy, ocb, ocr;
    if (!offsets_of(sy, scb, scr, oy, ocb, ocr))
        return split_row(sy, scb, scr, y, cb, cr, pairs, chroma);
    const uint8_t* src = sy - oy;
    // Each lane gathers its four pairs as Y0..Y7, Cb0..Cb3, Cr0..Cr3.
    int8_t m[16];
    for (int k = 0; k < 4; ++k) {
        m[2 * k] = static_cast<int8_t>(4 * k + oy);
        m[2 * k + 1] = static_cast<int8_t>(4 * k + oy + 2);
        m[8 + k] = static_cast<int8_t>(4 * k + ocb);
        m[12 + k] = static_cast<int8_t>(4 * k + ocr);
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
    split_row(sy + in, scb + in, scr + in, y + 2 * k, cb + k, cr + k, pairs - k, chroma);
}

}  // namespace

// Two passes over the row, luma then chroma, each a few cheap operations per 16
// pairs: fewer instructions than gathering all three at once, and one output
// stream at a time, which large frames write faster.
void split_row_avx2(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                    uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma) {
    int oy, ocb, ocr;
    const auto y0 = reinterpret_cast<uintptr_t>(y);
    const auto lo = reinterpret_cast<uintptr_t>(cb < cr ? cb : cr);
    const auto hi = reinterpret_cast<uintptr_t>(cb < cr ? cr : cb);
    if (!offsets_of(sy, scb, scr, oy, ocb, ocr) || (y0 < hi + pairs && lo < y0 + 2 * pairs))
        return split_row_pairwise(sy, scb, scr, y, cb, cr, pairs, chroma);
    const uint8_t* src = sy - oy;
    const bool yHigh = oy == 1;  // UYVY keeps luma in the odd bytes
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
        uint8_t* first = ocb < ocr ? cb : cr;
        uint8_t* second = ocb < ocr ? cr : cb;
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
    split_row(sy + in, scb + in, scr + in, y + 2 * whole, cb + whole, cr + whole, pairs - whole,
              chroma);
}

void merge_row_avx2(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
                    const uint8_t* cr, size_t pairs) {
    int oy, ocb, ocr;
    if (!offsets_of(dy, dcb, dcr, oy, ocb, ocr)) return merge_row(dy, dcb, dcr, y, cb, cr, pairs);
    uint8_t* dst = dy - oy;
    const bool crFirst = ocr < ocb && oy == 0;  // YVYU
    size_t k = 0;
    for (; k + 16 <= pairs; k += 16) {
        const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cb + k));
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cr + k));
        const __m128i lo = crFirst ? _mm_unpacklo_epi8(v, u) : _mm_unpacklo_epi8(u, v);
        const __m128i hi = crFirst ? _mm_unpackhi_epi8(v, u) : _mm_unpackhi_epi8(u, v);
        const __m256i c = _mm256_set_m128i(hi, lo);
        const __m256i l = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(y + 2 * k));
        const __m256i p = oy == 1 ? _mm256_unpacklo_epi8(c, l) : _mm256_unpacklo_epi8(l, c);
        const __m256i q = oy == 1 ? _mm256_unpackhi_epi8(c, l) : _mm256_unpackhi_epi8(l, c);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * k),
                            _mm256_permute2x128_si256(p, q, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * k + 32),
                            _mm256_permute2x128_si256(p, q, 0x31));
    }
    const size_t out = 4 * k;
    merge_row(dy + out, dcb + out, dcr + out, y + 2 * k, cb + k, cr + k, pairs - k);
}

}  // namespace cycbcr::detail

using namespace cycbcr::detail;

namespace {

unsigned int to_planar_avx2(Packed from, Planar to, uint8_t* dst, const uint8_t* src,
                            uint32_t width, uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Planes p = planes_of(to, dst, dstPitch, height);
    const PackedPtrs s = packed_ptrs(from, const_cast<uint8_t*>(src));
    toplanar_frame(s.y, s.cb, s.cr, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch,
                   to == Planar::P422 ? 1 : 0, split_row_avx2);
    if (from == Packed::CYUV) invert_planes(to, dst, dstPitch, height);
    // This path's own count, which differs from the engine's when
    // dstPitch * height is odd.
    return (height * dstPitch * 3) / 2;
}

unsigned int from_planar_avx2(Planar from, Packed to, uint8_t* dst, const uint8_t* src,
                              uint32_t width, uint32_t height, uint32_t dstPitch,
                              uint32_t srcPitch) {
    const Planes p = planes_of(from, const_cast<uint8_t*>(src), width, height);
    const PackedPtrs d = packed_ptrs(to, dst);
    fromplanar_frame(p.y, p.cb, p.cr, d.y, d.cb, d.cr, width, height, dstPitch, srcPitch,
                     from == Planar::P422 ? 1 : 0, merge_row_avx2);
    if (to == Packed::CYUV) cycbcr_invert(dst, dstPitch, height);
    return dstPitch * height;
}

}  // namespace

extern "C" {

#define CYCBCR_TO_PLANAR_AVX2(name, from, to)                                              \
    CYCBCR_API unsigned int name##_avx2(CYCBCR_CONVERTER_ARGS) {                           \
        return to_planar_avx2(Packed::from, Planar::to, dst, src, width, height, dstPitch, \
                              srcPitch);                                                   \
    }
#define CYCBCR_FROM_PLANAR_AVX2(name, from, to)                                              \
    CYCBCR_API unsigned int name##_avx2(CYCBCR_CONVERTER_ARGS) {                             \
        return from_planar_avx2(Planar::from, Packed::to, dst, src, width, height, dstPitch, \
                                srcPitch);                                                   \
    }
CYCBCR_PACKED_PLANAR_CONVERTERS(CYCBCR_TO_PLANAR_AVX2, CYCBCR_FROM_PLANAR_AVX2)

}  // extern "C"
