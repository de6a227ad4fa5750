#include "ycbcr8/packed_rows.h"

#include <emmintrin.h>

namespace cycbcr::plain {
namespace {

inline __m128i load16(const uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void store16(uint8_t* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}
inline void store8(uint8_t* p, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
}

}  // namespace

template <Format Shape>
void split_row(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y, uint8_t* cb,
               uint8_t* cr, size_t pairs, bool chroma) {
    size_t k = 0;
    if constexpr (Shape != Format::Unknown) {
        constexpr PairOffsets o = info(Shape).pair;
        const uint8_t* src = sy - o.y0;
        const __m128i lo = _mm_set1_epi16(0x00FF);
        // Y sits in the odd bytes of UYVY and the even bytes of the others.
        constexpr bool yHigh = o.y0 == 1;
        constexpr bool crFirst = o.cr < o.cb;
        for (; k + 8 <= pairs; k += 8) {
            const __m128i a = load16(src + 4 * k);
            const __m128i b = load16(src + 4 * k + 16);
            const __m128i ya = yHigh ? _mm_srli_epi16(a, 8) : _mm_and_si128(a, lo);
            const __m128i yb = yHigh ? _mm_srli_epi16(b, 8) : _mm_and_si128(b, lo);
            store16(y + 2 * k, _mm_packus_epi16(ya, yb));
            if (!chroma) continue;
            const __m128i ca = yHigh ? _mm_and_si128(a, lo) : _mm_srli_epi16(a, 8);
            const __m128i cb16 = yHigh ? _mm_and_si128(b, lo) : _mm_srli_epi16(b, 8);
            const __m128i c = _mm_packus_epi16(ca, cb16);  // first, second chroma of each pair
            const __m128i first = _mm_packus_epi16(_mm_and_si128(c, lo), _mm_setzero_si128());
            const __m128i second = _mm_packus_epi16(_mm_srli_epi16(c, 8), _mm_setzero_si128());
            // When the planes overlap (a one-row 4:2:0 frame) the later pair must
            // win, as it does pair by pair: the plane higher in memory goes first.
            if (cr > cb) {
                store8(cr + k, crFirst ? first : second);
                store8(cb + k, crFirst ? second : first);
            } else {
                store8(cb + k, crFirst ? second : first);
                store8(cr + k, crFirst ? first : second);
            }
        }
    }
    for (; k < pairs; ++k) {
        y[2 * k] = sy[4 * k];
        y[2 * k + 1] = sy[4 * k + 2];
        if (chroma) {
            cb[k] = scb[4 * k];
            cr[k] = scr[4 * k];
        }
    }
}

template <Format Shape>
void merge_row(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
               const uint8_t* cr, size_t pairs) {
    size_t k = 0;
    if constexpr (Shape != Format::Unknown) {
        constexpr PairOffsets o = info(Shape).pair;
        uint8_t* dst = dy - o.y0;
        for (; k + 8 <= pairs; k += 8) {
            const __m128i vy = load16(y + 2 * k);
            const __m128i vcb = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb + k));
            const __m128i vcr = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr + k));
            const __m128i c =
                o.cr < o.cb ? _mm_unpacklo_epi8(vcr, vcb) : _mm_unpacklo_epi8(vcb, vcr);
            if (o.y0 == 1) {
                store16(dst + 4 * k, _mm_unpacklo_epi8(c, vy));
                store16(dst + 4 * k + 16, _mm_unpackhi_epi8(c, vy));
            } else {
                store16(dst + 4 * k, _mm_unpacklo_epi8(vy, c));
                store16(dst + 4 * k + 16, _mm_unpackhi_epi8(vy, c));
            }
        }
    }
    // Byte by byte in the order callers writing in place have always seen: both
    // luma bytes first for the known shapes, the samples in row order otherwise.
    for (; k < pairs; ++k) {
        dy[4 * k] = y[2 * k];
        if constexpr (Shape != Format::Unknown) {
            dy[4 * k + 2] = y[2 * k + 1];
            dcb[4 * k] = cb[k];
        } else {
            dcb[4 * k] = cb[k];
            dy[4 * k + 2] = y[2 * k + 1];
        }
        dcr[4 * k] = cr[k];
    }
}

#define CYCBCR_SHAPES(X) X(Format::UYVY) X(Format::YUY2) X(Format::YVYU) X(Format::Unknown)
#define CYCBCR_INSTANTIATE(shape)                                                                \
    template void split_row<shape>(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,     \
                                   uint8_t*, uint8_t*, size_t, bool);                            \
    template void merge_row<shape>(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, const uint8_t*, \
                                   const uint8_t*, size_t);
CYCBCR_SHAPES(CYCBCR_INSTANTIATE)
#undef CYCBCR_INSTANTIATE
#undef CYCBCR_SHAPES

SplitRow split_kernel(Format shape) {
    return with_shape(shape, []<Format S>() -> SplitRow { return split_row<S>; });
}

MergeRow merge_kernel(Format shape) {
    return with_shape(shape, []<Format S>() -> MergeRow { return merge_row<S>; });
}

}  // namespace cycbcr::plain
