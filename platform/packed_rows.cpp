#include "platform/packed_rows.h"

#include <emmintrin.h>

namespace cycbcr {
namespace {

constexpr int y0_of(PackedOrder o) {
    return o == PackedOrder::UYVY ? 1 : 0;
}
constexpr int cb_of(PackedOrder o) {
    return o == PackedOrder::UYVY ? 0 : (o == PackedOrder::YUY2 ? 1 : 3);
}
constexpr int cr_of(PackedOrder o) {
    return o == PackedOrder::UYVY ? 2 : (o == PackedOrder::YUY2 ? 3 : 1);
}

inline __m128i load16(const uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void store16(uint8_t* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}
inline void store8(uint8_t* p, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
}

template <PackedOrder O>
void split(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma) {
    const __m128i lo = _mm_set1_epi16(0x00FF);
    size_t k = 0;
    for (; k + 8 <= pairs; k += 8) {
        const __m128i a = load16(src + 4 * k);
        const __m128i b = load16(src + 4 * k + 16);
        // Y sits in the odd bytes of UYVY and the even bytes of the others.
        const bool yHigh = O == PackedOrder::UYVY;
        const __m128i ya = yHigh ? _mm_srli_epi16(a, 8) : _mm_and_si128(a, lo);
        const __m128i yb = yHigh ? _mm_srli_epi16(b, 8) : _mm_and_si128(b, lo);
        store16(y + 2 * k, _mm_packus_epi16(ya, yb));
        if (!chroma) continue;
        const __m128i ca = yHigh ? _mm_and_si128(a, lo) : _mm_srli_epi16(a, 8);
        const __m128i cb16 = yHigh ? _mm_and_si128(b, lo) : _mm_srli_epi16(b, 8);
        const __m128i c = _mm_packus_epi16(ca, cb16);  // first, second chroma of each pair
        const __m128i first = _mm_packus_epi16(_mm_and_si128(c, lo), _mm_setzero_si128());
        const __m128i second = _mm_packus_epi16(_mm_srli_epi16(c, 8), _mm_setzero_si128());
        const bool crFirst = O == PackedOrder::YVYU;
        // When the planes overlap (a one-row 4:2:0 frame) the later pair must win,
        // as it does pair by pair: so the plane higher in memory is written first.
        if (cr > cb) {
            store8(cr + k, crFirst ? first : second);
            store8(cb + k, crFirst ? second : first);
        } else {
            store8(cb + k, crFirst ? second : first);
            store8(cr + k, crFirst ? first : second);
        }
    }
    for (; k < pairs; ++k) {
        const uint8_t* p = src + 4 * k;
        y[2 * k] = p[y0_of(O)];
        y[2 * k + 1] = p[y0_of(O) + 2];
        if (chroma) {
            cb[k] = p[cb_of(O)];
            cr[k] = p[cr_of(O)];
        }
    }
}

template <PackedOrder O>
void merge(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr, size_t pairs) {
    size_t k = 0;
    for (; k + 8 <= pairs; k += 8) {
        const __m128i vy = load16(y + 2 * k);
        const __m128i vcb = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb + k));
        const __m128i vcr = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr + k));
        const __m128i c =
            O == PackedOrder::YVYU ? _mm_unpacklo_epi8(vcr, vcb) : _mm_unpacklo_epi8(vcb, vcr);
        if (O == PackedOrder::UYVY) {
            store16(dst + 4 * k, _mm_unpacklo_epi8(c, vy));
            store16(dst + 4 * k + 16, _mm_unpackhi_epi8(c, vy));
        } else {
            store16(dst + 4 * k, _mm_unpacklo_epi8(vy, c));
            store16(dst + 4 * k + 16, _mm_unpackhi_epi8(vy, c));
        }
    }
    for (; k < pairs; ++k) {
        uint8_t* p = dst + 4 * k;
        p[y0_of(O)] = y[2 * k];
        p[y0_of(O) + 2] = y[2 * k + 1];
        p[cb_of(O)] = cb[k];
        p[cr_of(O)] = cr[k];
    }
}

}  // namespace

void split_packed_row(PackedOrder order, const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr,
                      size_t pairs, bool chroma) {
    switch (order) {
        case PackedOrder::YUY2:
            return split<PackedOrder::YUY2>(src, y, cb, cr, pairs, chroma);
        case PackedOrder::UYVY:
            return split<PackedOrder::UYVY>(src, y, cb, cr, pairs, chroma);
        case PackedOrder::YVYU:
            return split<PackedOrder::YVYU>(src, y, cb, cr, pairs, chroma);
    }
}

void merge_packed_row(PackedOrder order, uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                      const uint8_t* cr, size_t pairs) {
    switch (order) {
        case PackedOrder::YUY2:
            return merge<PackedOrder::YUY2>(dst, y, cb, cr, pairs);
        case PackedOrder::UYVY:
            return merge<PackedOrder::UYVY>(dst, y, cb, cr, pairs);
        case PackedOrder::YVYU:
            return merge<PackedOrder::YVYU>(dst, y, cb, cr, pairs);
    }
}

}  // namespace cycbcr
