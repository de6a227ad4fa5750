// AVX2 row kernels of the imaging library's YCbCr to RGB converters, giving the
// plain kernels' bytes exactly; each row's last few pairs go to the plain code.
//
// The Q16 sum y * Y + chroma terms does not fit 16-bit lanes, but almost all of
// it is per chroma pair. With y = 65536 + f and V a pair's 32-bit share of a
// channel (rounding, black level and the -128s folded in),
//     channel = (65536 * Y + f * Y + V) >> 16.
// Split f * Y = 65536 * a + b and V = 65536 * c + d with b and d signed 16-bit
// numbers (a and c the rounded high halves): then b + d lies in -65536..65534,
// so channel = Y + a + c - (d < -b). The pair shares c and d are worked out
// once in 32-bit lanes (madd) and spread to one 16-bit lane a pixel; each
// pixel then costs two 16-bit multiplies shared by its three channels and three
// 16-bit operations a channel. For the HDTV matrix f is 0 and a channel is
// Y + (V >> 16).
#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/imaging_internal.h"
#include "platform/store_avx2.h"

namespace cycbcr::avx2 {

using ipp::Coefficients;
using ipp::Ipp8u;
using ipp::Matrix;
using ipp::PackedColourRow;
using ipp::PackedFromRgbRow;
using ipp::Pixel;
using ipp::PlanarColourRows;

namespace {

using V = __m256i;

// ---- constants ----

// Channels in the order B, G, R.
constexpr int32_t cb_coefficient(Matrix m, int channel) {
    const Coefficients k = coefficients(m);
    return channel == 0 ? k.bCb : channel == 1 ? k.gCb : 0;
}
constexpr int32_t cr_coefficient(Matrix m, int channel) {
    const Coefficients k = coefficients(m);
    return channel == 1 ? k.gCr : channel == 2 ? k.rCr : 0;
}
// What a pair adds before its chroma terms: rounding, the black level taken
// from the luma term, and -128 on each chroma sample.
constexpr int32_t pair_bias(Matrix m, int channel) {
    const Coefficients k = coefficients(m);
    return 32768 - k.black * k.y - 128 * (cb_coefficient(m, channel) + cr_coefficient(m, channel));
}
// The luma coefficient's part above 65536.
constexpr int32_t luma_fraction(Matrix m) {
    return coefficients(m).y - 65536;
}
static_assert(luma_fraction(Matrix::Bt601) > 0 && luma_fraction(Matrix::Bt601) < 32768);
static_assert(luma_fraction(Matrix::Bt709Csc) > 0 && luma_fraction(Matrix::Bt709Csc) < 32768);
static_assert(luma_fraction(Matrix::Bt709Hdtv) == 0);

// A pair's share of a channel, from a 32-bit lane L = low + 65536 * high
// holding the pair's two chroma samples: with the coefficients written as
//     kHigh = 65536 * t + bHigh,  kLow = t + 65536 * u + bLow
// (bLow and bHigh signed 16-bit numbers), kLow * low + kHigh * high
//     = madd(L, (bLow, bHigh)) + t * L + u * (L << 16)   (mod 2^32).
// For every matrix t and u are small, so their terms are a shift and an add.
struct Plan {
    int32_t madd;  // bLow, bHigh as 16-bit halves
    int32_t t, u;
    int32_t bias;
};
constexpr int32_t rounded_high(int32_t k) {
    return (k + 32768) >> 16;
}
constexpr Plan plan(Matrix m, bool cbLow, int channel) {
    const int32_t kCb = cb_coefficient(m, channel), kCr = cr_coefficient(m, channel);
    const int32_t kLow = cbLow ? kCb : kCr, kHigh = cbLow ? kCr : kCb;
    const int32_t t = rounded_high(kHigh), u = rounded_high(kLow - t);
    const int32_t bHigh = kHigh - 65536 * t, bLow = kLow - t - 65536 * u;
    return {static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint16_t>(bLow)) |
                                 static_cast<uint32_t>(static_cast<uint16_t>(bHigh)) << 16),
            t, u, pair_bias(m, channel)};
}

// k * x for the small k a plan holds.
template <int32_t K>
CYCBCR_INLINE V plus_times(V sum, V x) {
    static_assert(K >= -2 && K <= 2);
    if constexpr (K == 1) return _mm256_add_epi32(sum, x);
    if constexpr (K == -1) return _mm256_sub_epi32(sum, x);
    if constexpr (K == 2) return _mm256_add_epi32(sum, _mm256_slli_epi32(x, 1));
    if constexpr (K == -2) return _mm256_sub_epi32(sum, _mm256_slli_epi32(x, 1));
    return sum;
}

// ---- per pair ----

// A pair's share of each channel for 16 pixels, one 16-bit lane a pixel: c the
// rounded top half of the 32-bit share, d the bottom half (signed). The HDTV
// matrix needs only the top half, not rounded.
template <Matrix M, bool Fraction = luma_fraction(M) != 0>
struct Shares {
    V c[3], d[3];
};
template <Matrix M>
struct Shares<M, false> {
    V c[3];
};

// The 32-bit share of channel C for eight pairs, each 32-bit lane holding the
// pair's two chroma samples as 16-bit numbers (Cb low, unless CbLow is false).
template <Matrix M, bool CbLow, int C>
CYCBCR_INLINE V pair_share(V pairs) {
    constexpr Plan p = plan(M, CbLow, C);
    V v = _mm256_add_epi32(_mm256_madd_epi16(pairs, _mm256_set1_epi32(p.madd)),
                           _mm256_set1_epi32(p.bias));
    v = plus_times<p.t>(v, pairs);
    if constexpr (p.u == 1 || p.u == -1) v = plus_times<p.u>(v, _mm256_slli_epi32(pairs, 16));
    if constexpr (p.u == 2 || p.u == -2) v = plus_times<p.u / 2>(v, _mm256_slli_epi32(pairs, 17));
    return v;
}

// Eight pairs (four in each 128-bit half) to the shares of their 16 pixels, in
// the same order: pair i of a half gives pixels 2i and 2i + 1 of that half.
template <Matrix M, bool CbLow>
CYCBCR_INLINE Shares<M> shares(V pairs) {
    const V top = _mm256_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15,  //
                                   2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15);
    const V bottom = _mm256_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13,  //
                                      0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13);
    Shares<M> s;
    auto one = [&](V v, int c) {
        if constexpr (luma_fraction(M) != 0) {
            s.c[c] = _mm256_shuffle_epi8(_mm256_add_epi32(v, _mm256_set1_epi32(32768)), top);
            s.d[c] = _mm256_shuffle_epi8(v, bottom);
        } else {
            s.c[c] = _mm256_shuffle_epi8(v, top);
        }
    };
    one(pair_share<M, CbLow, 0>(pairs), 0);
    one(pair_share<M, CbLow, 1>(pairs), 1);
    one(pair_share<M, CbLow, 2>(pairs), 2);
    return s;
}

// ---- per pixel ----

// B, G and R of 16 pixels as signed 16-bit numbers (clamped when packed).
template <Matrix M>
CYCBCR_INLINE void channels(V y, const Shares<M>& s, V out[3]) {
    constexpr int32_t f = luma_fraction(M);
    if constexpr (f == 0) {
        for (int c = 0; c < 3; ++c) out[c] = _mm256_add_epi16(y, s.c[c]);
    } else {
        static_assert(f % 2 == 0);
        // Y + a, a = (f * Y + 32768) >> 16; and -b, b = f * Y - 65536 * a.
        const V whole = _mm256_add_epi16(
            y, _mm256_mulhrs_epi16(y, _mm256_set1_epi16(static_cast<short>(f / 2))));
        const V minusB = _mm256_mullo_epi16(y, _mm256_set1_epi16(static_cast<short>(-f)));
        for (int c = 0; c < 3; ++c)
            out[c] = _mm256_add_epi16(_mm256_add_epi16(whole, s.c[c]),
                                      _mm256_cmpgt_epi16(minusB, s.d[c]));
    }
}

// ---- stores ----

// 16 pixels whose 16-bit lanes hold, in each half, pixels 0-3 and 8-11 (low
// half) and 4-7 and 12-15 (high half): 64 bytes of B, G, R, alpha.
CYCBCR_INLINE void store_bgra(Ipp8u* d, const V c[3], V alpha) {
    const V br = _mm256_packus_epi16(c[0], c[2]), ga = _mm256_packus_epi16(c[1], alpha);
    const V bg = _mm256_unpacklo_epi8(br, ga), ra = _mm256_unpackhi_epi8(br, ga);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_unpacklo_epi16(bg, ra));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), _mm256_unpackhi_epi16(bg, ra));
}

// Byte t of output block k (of three 16-byte blocks) takes channel j of pixel
// (16k + t) / 3 when that is the channel it holds.
constexpr char rgb24_index(int k, int j, int t) {
    const int p = 16 * k + t;
    return p % 3 == j ? static_cast<char>(p / 3) : static_cast<char>(0x80);
}
template <int K, int J>
CYCBCR_INLINE V rgb24_mask() {
    return [&]<size_t... T>(std::index_sequence<T...>) {
        return _mm256_setr_epi8(rgb24_index(K, J, T % 16)...);
    }
    (std::make_index_sequence<32>{});
}
template <int K>
CYCBCR_INLINE V rgb24_block(V first, V second, V third) {
    return _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(first, rgb24_mask<K, 0>()),
                                           _mm256_shuffle_epi8(second, rgb24_mask<K, 1>())),
                           _mm256_shuffle_epi8(third, rgb24_mask<K, 2>()));
}

// 32 pixels as two sets of channels: a holds pixels 0-7 and 16-23, b pixels
// 8-15 and 24-31. 96 bytes of B, G, R (or R, G, B).
template <Pixel P>
CYCBCR_INLINE void store_rgb24(Ipp8u* d, const V a[3], const V b[3]) {
    const V blue = _mm256_packus_epi16(a[0], b[0]), green = _mm256_packus_epi16(a[1], b[1]),
            red = _mm256_packus_epi16(a[2], b[2]);
    const V first = P == Pixel::RGB ? red : blue, third = P == Pixel::RGB ? blue : red;
    const V o0 = rgb24_block<0>(first, green, third), o1 = rgb24_block<1>(first, green, third),
            o2 = rgb24_block<2>(first, green, third);
    auto put = [](Ipp8u* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); };
    put(d, _mm256_castsi256_si128(o0));
    put(d + 16, _mm256_castsi256_si128(o1));
    put(d + 32, _mm256_castsi256_si128(o2));
    put(d + 48, _mm256_extracti128_si256(o0, 1));
    put(d + 64, _mm256_extracti128_si256(o1, 1));
    put(d + 80, _mm256_extracti128_si256(o2, 1));
}

// ---- packed 4:2:2 ----

// A vector of packed pairs to its luma (a 16-bit lane a pixel) and chroma (a
// 32-bit lane a pair).
template <Format Shape>
CYCBCR_INLINE void unpack_pairs(V v, V& y, V& chroma) {
    const V low = _mm256_set1_epi16(0x00FF);
    if constexpr (Shape == Format::UYVY) {
        y = _mm256_srli_epi16(v, 8);
        chroma = _mm256_and_si256(v, low);  // Cb, Cr
    } else {
        static_assert(Shape == Format::YVYU);
        y = _mm256_and_si256(v, low);
        chroma = _mm256_srli_epi16(v, 8);  // Cr, Cb
    }
}

template <Matrix M, Format Shape>
void packed_bgra(const Ipp8u* src, Ipp8u* dst, size_t pairs, Ipp8u alpha) {
    const V a = _mm256_set1_epi16(alpha);
    size_t i = 0;
    for (; i + 8 <= pairs; i += 8) {
        // Pixels 0-3, 8-11 | 4-7, 12-15, the order store_bgra wants.
        const V v = _mm256_permute4x64_epi64(load32(src + 4 * i), 0xD8);
        V y, chroma, c[3];
        unpack_pairs<Shape>(v, y, chroma);
        channels<M>(y, shares<M, Shape == Format::UYVY>(chroma), c);
        store_bgra(dst + 8 * i, c, a);
    }
    plain::imaging_packed_row<M, Shape, Pixel::BGRA>(src + 4 * i, dst + 8 * i, pairs - i, alpha);
}

template <Matrix M, Format Shape, Pixel P>
void packed_rgb24(const Ipp8u* src, Ipp8u* dst, size_t pairs, Ipp8u alpha) {
    size_t i = 0;
    for (; i + 16 <= pairs; i += 16) {
        const Ipp8u* s = src + 4 * i;
        // Pixels 0-7 | 16-23 and 8-15 | 24-31, the orders store_rgb24 wants.
        const V va = _mm256_inserti128_si256(_mm256_castsi128_si256(load16(s)), load16(s + 32), 1);
        const V vb =
            _mm256_inserti128_si256(_mm256_castsi128_si256(load16(s + 16)), load16(s + 48), 1);
        V ya, ca, yb, cb, a[3], b[3];
        unpack_pairs<Shape>(va, ya, ca);
        unpack_pairs<Shape>(vb, yb, cb);
        channels<M>(ya, shares<M, Shape == Format::UYVY>(ca), a);
        channels<M>(yb, shares<M, Shape == Format::UYVY>(cb), b);
        store_rgb24<P>(dst + 6 * i, a, b);
    }
    plain::imaging_packed_row<M, Shape, P>(src + 4 * i, dst + 6 * i, pairs - i, alpha);
}

// ---- planar 4:2:0, two rows at a time ----

// Two rows sharing their chroma, in blocks: row 0 of a block works out the
// chroma shares and keeps them, row 1 takes them from there. (The two rows
// written in turns of one vector store noticeably slower than in runs.) Calls
// share(j, kept) for row 0 only, then row(r, j, kept) for pairs j, j + Step, ...
// of each block; returns the pairs done, a multiple of Step.
template <size_t Step, class Kept, class Share, class Row>
CYCBCR_INLINE size_t in_blocks(size_t pairs, Share&& share, Row&& row) {
    constexpr size_t kBlock = 256;  // pairs
    static_assert(kBlock % Step == 0);
    Kept kept[kBlock / Step];
    const size_t whole = pairs / Step * Step;
    for (size_t i = 0; i < whole; i += kBlock) {
        Kept* const end = kept + std::min(kBlock, whole - i) / Step;
        size_t j = i;
        for (Kept* k = kept; k != end; ++k, j += Step) {
            share(j, *k);
            row(0, j, *k);
        }
        j = i;
        for (Kept* k = kept; k != end; ++k, j += Step) row(1, j, *k);
    }
    return whole;
}

template <Matrix M>
void planar_bgra(const Ipp8u* y0, const Ipp8u* y1, const Ipp8u* cb, const Ipp8u* cr, Ipp8u* d0,
                 Ipp8u* d1, size_t pairs, Ipp8u alpha) {
    const V a = _mm256_set1_epi16(alpha);
    // Luma of pixels 0-3, 8-11 | 4-7, 12-15 from 16 bytes in both halves, and
    // the chroma pairs 0, 1, 4, 5 | 2, 3, 6, 7 from Cb 0-7, Cr 0-7 in both.
    const V lumaOrder =
        _mm256_setr_epi8(0, -1, 1, -1, 2, -1, 3, -1, 8, -1, 9, -1, 10, -1, 11, -1, 4, -1, 5, -1, 6,
                         -1, 7, -1, 12, -1, 13, -1, 14, -1, 15, -1);
    const V pairOrder =
        _mm256_setr_epi8(0, -1, 8, -1, 1, -1, 9, -1, 4, -1, 12, -1, 5, -1, 13, -1, 2, -1, 10, -1, 3,
                         -1, 11, -1, 6, -1, 14, -1, 7, -1, 15, -1);
    auto eight = [](const Ipp8u* p) {
        return _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
    };
    const size_t done = in_blocks<8, Shares<M>>(
        pairs,
        [&](size_t j, Shares<M>& s) {
            const V both = _mm256_blend_epi32(eight(cb + j), eight(cr + j), 0xCC);
            s = shares<M, true>(_mm256_shuffle_epi8(both, pairOrder));
        },
        [&](int r, size_t j, const Shares<M>& s) {
            const V y = _mm256_broadcastsi128_si256(load16((r == 0 ? y0 : y1) + 2 * j));
            V c[3];
            channels<M>(_mm256_shuffle_epi8(y, lumaOrder), s, c);
            store_bgra((r == 0 ? d0 : d1) + 8 * j, c, a);
        });
    plain::imaging_planar_rows<M, Pixel::BGRA>(y0 + 2 * done, y1 + 2 * done, cb + done, cr + done,
                                               d0 + 8 * done, d1 + 8 * done, pairs - done, alpha);
}

template <Matrix M, Pixel P>
void planar_rgb24(const Ipp8u* y0, const Ipp8u* y1, const Ipp8u* cb, const Ipp8u* cr, Ipp8u* d0,
                  Ipp8u* d1, size_t pairs, Ipp8u alpha) {
    // From Cb 0-7, Cr 0-7 | Cb 8-15, Cr 8-15: pairs 0-3 | 8-11 and 4-7 | 12-15,
    // matching the luma of pixels 0-7 | 16-23 and 8-15 | 24-31.
    const V firstPairs = _mm256_setr_epi8(0, -1, 8, -1, 1, -1, 9, -1, 2, -1, 10, -1, 3, -1, 11, -1,
                                          0, -1, 8, -1, 1, -1, 9, -1, 2, -1, 10, -1, 3, -1, 11, -1);
    const V lastPairs =
        _mm256_setr_epi8(4, -1, 12, -1, 5, -1, 13, -1, 6, -1, 14, -1, 7, -1, 15, -1, 4, -1, 12, -1,
                         5, -1, 13, -1, 6, -1, 14, -1, 7, -1, 15, -1);
    const V zero = _mm256_setzero_si256();
    struct Both {
        Shares<M> first, last;
    };
    const size_t done = in_blocks<16, Both>(
        pairs,
        [&](size_t j, Both& s) {
            const V both = _mm256_permute4x64_epi64(
                _mm256_inserti128_si256(_mm256_castsi128_si256(load16(cb + j)), load16(cr + j), 1),
                0xD8);
            s.first = shares<M, true>(_mm256_shuffle_epi8(both, firstPairs));
            s.last = shares<M, true>(_mm256_shuffle_epi8(both, lastPairs));
        },
        [&](int r, size_t j, const Both& s) {
            const V y = load32((r == 0 ? y0 : y1) + 2 * j);
            V a[3], b[3];
            channels<M>(_mm256_unpacklo_epi8(y, zero), s.first, a);
            channels<M>(_mm256_unpackhi_epi8(y, zero), s.last, b);
            store_rgb24<P>((r == 0 ? d0 : d1) + 6 * j, a, b);
        });
    plain::imaging_planar_rows<M, P>(y0 + 2 * done, y1 + 2 * done, cb + done, cr + done,
                                     d0 + 6 * done, d1 + 6 * done, pairs - done, alpha);
}

// ---- B, G, R, A to UYVY ----
//
// Eight pixels to a vector, a 32-bit lane a pixel: x & 0x00FF00FF holds the
// words (B, R) and x >> 8 (16-bit lanes) the words (G, A), which madd weighs
// into the exact Q16 luma sums. For chroma each lane first adds its pair
// neighbour (the lanes swapped within 64 bits), so both lanes of a pair hold
// (B0 + B1, R0 + R1) and (G0 + G1, A0 + A1); one madd then leaves Cb's pair
// sum in the even lane and Cr's in the odd one, which is the UYVY order.
// Alpha only ever meets a weight of 0 or is shifted out.

// madd with weights up to 98303, each wide weight's 65536 * s added back (the
// low word shifted, or the high word masked, into the top half of its lane).
template <ipp::WordWeights W>
CYCBCR_INLINE V exact_madd(V words) {
    static_assert(W.valid());
    constexpr auto wide = [](int i) { return W.wide(i); };  // the weight doesn't fit madd
    constexpr int32_t even = W.operand(0), odd = W.operand(1);
    V sum = _mm256_madd_epi16(words, _mm256_setr_epi32(even, odd, even, odd, even, odd, even, odd));
    constexpr bool fixEven = wide(0) || wide(1), fixOdd = wide(2) || wide(3);
    if constexpr (fixEven || fixOdd) {
        static_assert(!(wide(0) && wide(1)) && !(wide(2) && wide(3)));
        // Each lane's 65536 * s: the low word shifted up, or the high word kept.
        V fix;
        if constexpr (!wide(1) && !wide(3))
            fix = _mm256_slli_epi32(words, 16);
        else if constexpr (!wide(0) && !wide(2))
            fix = words;
        else
            fix = _mm256_blend_epi32(_mm256_slli_epi32(words, 16), words, wide(3) ? 0xAA : 0x55);
        if constexpr (!(wide(0) && wide(2))) {
            constexpr int32_t e = fixEven ? -65536 : 0, o = fixOdd ? -65536 : 0;
            fix = _mm256_and_si256(fix, _mm256_setr_epi32(e, o, e, o, e, o, e, o));
        }
        sum = _mm256_add_epi32(sum, fix);
    }
    return sum;
}

// Eight pixels' luma, and their four pairs' Cb, Cr, each rounded and shifted
// down but not yet clamped: 32-bit lanes in pixel order.
template <Matrix M>
CYCBCR_INLINE void uyvy_samples(V x, V& luma, V& chroma) {
    constexpr ipp::ForwardCoefficients k = ipp::forward_coefficients(M);
    const V br = _mm256_and_si256(x, _mm256_set1_epi32(0x00FF00FF));
    const V ga = _mm256_srli_epi16(x, 8);
    // Luma's weight of G does not fit madd but is even: half of it weighs 2G.
    static_assert(k.y.g % 2 == 0 && k.y.g / 2 <= 32767);
    const V y = _mm256_add_epi32(
        exact_madd<ipp::WordWeights{{k.y.b, k.y.r, k.y.b, k.y.r}}>(br),
        exact_madd<ipp::WordWeights{{k.y.g / 2, 0, k.y.g / 2, 0}}>(_mm256_add_epi16(ga, ga)));
    luma = _mm256_srai_epi32(_mm256_add_epi32(y, _mm256_set1_epi32((k.yOffset << 16) + 32768)), 16);
    const V pairBr = _mm256_add_epi32(br, _mm256_shuffle_epi32(br, 0xB1));
    const V pairGa = _mm256_add_epi32(ga, _mm256_shuffle_epi32(ga, 0xB1));
    const V c =
        _mm256_add_epi32(exact_madd<ipp::WordWeights{{k.cb.b, k.cb.r, k.cr.b, k.cr.r}}>(pairBr),
                         exact_madd<ipp::WordWeights{{k.cb.g, 0, k.cr.g, 0}}>(pairGa));
    // Two pixels' offsets of 128 << 16, and the rounding of the pair.
    chroma = _mm256_srai_epi32(_mm256_add_epi32(c, _mm256_set1_epi32((256 << 16) + 65536)), 17);
}

template <Matrix M>
void uyvy_from_bgra(const Ipp8u* src, Ipp8u* dst, size_t pairs) {
    constexpr ipp::ForwardCoefficients k = ipp::forward_coefficients(M);
    // From chroma 0-3, luma 0-3, chroma 8-11, luma 8-11 (and 4-7, 12-15 in the
    // high half) to chroma, luma interleaved.
    const V interleave = _mm256_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15,  //
                                          0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
    size_t i = 0;
    for (; i + 8 <= pairs; i += 8) {
        V y0, c0, y1, c1;
        uyvy_samples<M>(load32(src + 8 * i), y0, c0);
        uyvy_samples<M>(load32(src + 8 * i + 32), y1, c1);
        V out = _mm256_packus_epi16(_mm256_packs_epi32(c0, y0), _mm256_packs_epi32(c1, y1));
        out = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(out, interleave), 0xD8);
        if constexpr (k.low > 0)
            out = _mm256_max_epu8(out, _mm256_set1_epi8(static_cast<char>(k.low)));
        if constexpr (k.high < 255)
            out = _mm256_min_epu8(out, _mm256_set1_epi8(static_cast<char>(k.high)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * i), out);
    }
    plain::imaging_uyvy_from_bgra_row<M>(src + 8 * i, dst + 4 * i, pairs - i);
}

}  // namespace

PackedFromRgbRow imaging_uyvy_from_bgra_kernel(Matrix m) {
    if (m == Matrix::Bt601) return uyvy_from_bgra<Matrix::Bt601>;
    if (m == Matrix::Bt709Hdtv) return uyvy_from_bgra<Matrix::Bt709Hdtv>;
    return nullptr;
}

// The combinations the library exports (the plain file instantiates the same).
PackedColourRow imaging_packed_kernel(Matrix m, Format shape, Pixel p) {
    if (shape == Format::UYVY && p == Pixel::BGRA) {
        if (m == Matrix::Bt601) return packed_bgra<Matrix::Bt601, Format::UYVY>;
        if (m == Matrix::Bt709Hdtv) return packed_bgra<Matrix::Bt709Hdtv, Format::UYVY>;
    }
    if (shape == Format::UYVY && p == Pixel::BGR && m == Matrix::Bt709Hdtv)
        return packed_rgb24<Matrix::Bt709Hdtv, Format::UYVY, Pixel::BGR>;
    if (shape == Format::YVYU && p == Pixel::RGB && m == Matrix::Bt601)
        return packed_rgb24<Matrix::Bt601, Format::YVYU, Pixel::RGB>;
    return nullptr;
}

PlanarColourRows imaging_planar_kernel(Matrix m, Pixel p) {
    if (p == Pixel::BGRA) {
        if (m == Matrix::Bt601) return planar_bgra<Matrix::Bt601>;
        if (m == Matrix::Bt709Hdtv) return planar_bgra<Matrix::Bt709Hdtv>;
    }
    if (p == Pixel::BGR && m == Matrix::Bt709Csc) return planar_rgb24<Matrix::Bt709Csc, Pixel::BGR>;
    return nullptr;
}

}  // namespace cycbcr::avx2
