// AVX2 row kernels of RGB to 8-bit YCbCr, sixteen pixels a step: the exact
// millionths kernels of FromRGBInt (the plain rows' bytes) and the 14-bit
// kernels of FromRGBInt_avx2.
//
// Samples come in as 16-bit words, two to a 32-bit lane: (B, G) of a pixel in
// one vector and (R, bias) in another, so one pmaddwd pair gives a pixel's sum.
//
// The millionths sums are exact in 32 bits (at most 255 x 2,068,000 in
// magnitude for every row of the table). A truncating division of a
// non-negative x < 2^30 by 1,000,000 is floor((x >> 6) / 15625): x >> 6 is below
// 2^24, so exact as a float, and multiplying it by the float just above 1/15625
// and truncating gives the integer quotient for every x >> 6 below 6,859,374
// (the product never reaches the next integer and never falls below the true
// one). The largest the table's sums reach, with their biases, is 6,291,171
// (row 9's luma); every RGB value of every row is checked against the plain
// rows in the tests. The engine's rounding steps
// become biases added before the division: Y + 499,999 (+1 when the remainder
// exceeds 500,000); Cb the quotient toward zero of s + 549,999 (s >= 0) or
// s - 749,999 (s < 0); Cr of s +- 499,999.
#include <immintrin.h>

#include <bit>
#include <initializer_list>

#include "fromrgb/from_rgb.h"
#include "fromrgb/rgb_words_avx2.h"
#include "platform/memory.h"

namespace cycbcr::fromrgb {
namespace {

using namespace avx2;

constexpr float kPer15625 = std::bit_cast<float>(0x388637BEu);  // just above 1/15625
static_assert(double{kPer15625} > 1.0 / 15625 &&
              double{std::bit_cast<float>(0x388637BDu)} < 1.0 / 15625);

// The even pixels of sixteen (two Words of eight), as eight lanes: pairs 0, 1,
// 4, 5 in the low lane and 2, 3, 6, 7 in the high one.
CYCBCR_INLINE Words evens(const Words& a, const Words& b) {
    auto pick = [](__m256i x, __m256i y) {
        return _mm256_castps_si256(
            _mm256_shuffle_ps(_mm256_castsi256_ps(x), _mm256_castsi256_ps(y), 0x88));
    };
    return {pick(a.bg, b.bg), pick(a.r, b.r)};
}

// The Y, Cb and Cr of sixteen pixels, laid out for the stores: per lane, bytes
// 0-7 the Y of the lane's pixels (low lane 0-3 and 8-11, high lane 4-7 and
// 12-15), bytes 8-11 the Cb and 12-15 the Cr of the lane's pairs (low lane
// pairs 0, 1, 4, 5, high lane 2, 3, 6, 7).
CYCBCR_INLINE __m256i combine(__m256i yWords, __m256i cbcrBytes) {
    return _mm256_unpacklo_epi64(_mm256_packus_epi16(yWords, yWords), cbcrBytes);
}

// ---- Stores ----

template <Format Shape>
CYCBCR_INLINE void store_packed(uint8_t* first, __m256i c) {
    // Per lane four pairs of 4 bytes in the byte order of Shape.
    constexpr int8_t Y = 0, B = 8, R = 12;
    static constexpr int8_t kUyvy[16] = {B,     Y,     R,     Y + 1, B + 1, Y + 2, R + 1, Y + 3,
                                         B + 2, Y + 4, R + 2, Y + 5, B + 3, Y + 6, R + 3, Y + 7};
    static constexpr int8_t kYuy2[16] = {Y,     B,     Y + 1, R,     Y + 2, B + 1, Y + 3, R + 1,
                                         Y + 4, B + 2, Y + 5, R + 2, Y + 6, B + 3, Y + 7, R + 3};
    static constexpr int8_t kYvyu[16] = {Y,     R,     Y + 1, B,     Y + 2, R + 1, Y + 3, B + 1,
                                         Y + 4, R + 2, Y + 5, B + 2, Y + 6, R + 3, Y + 7, B + 3};
    const int8_t(&m)[16] = Shape == Format::UYVY ? kUyvy : Shape == Format::YUY2 ? kYuy2 : kYvyu;
    const __m256i v = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(c, lanes(m)), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(first), v);
}

// Dwords of `combine` in store order: per lane Y, Y, Cb, Cr quarters become
// the sixteen Y in order (low lane) and Cb, Cb, Cr, Cr (high lane).
CYCBCR_INLINE __m256i store_order(__m256i c) {
    return _mm256_permutevar8x32_epi32(c, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}
CYCBCR_INLINE void store_planar(uint8_t* y, uint8_t* cb, uint8_t* cr, __m256i c) {
    // High lane: pairs 0, 1, 4, 5 then 2, 3, 6, 7 of Cb and of Cr, put in order.
    const __m256i m = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 1,
                                       4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15);
    const __m256i v = _mm256_shuffle_epi8(store_order(c), m);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(v));
    if (cb != nullptr) {
        const __m128i cs = _mm256_extracti128_si256(v, 1);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cb), cs);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cr), _mm_unpackhi_epi64(cs, cs));
    }
}
// Only the Y of sixteen pixels (4:2:0 rows without chroma).
CYCBCR_INLINE void store_luma(uint8_t* y, __m256i yWords) {
    const __m256i v = store_order(_mm256_packus_epi16(yWords, yWords));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(v));
}

// ---- The exact millionths kernels ----

// Two forms of the arithmetic. Every row: a weight c as h * 32768 + l with
// 0 <= l < 32768, so that both halves fit the signed 16-bit multipliers of
// pmaddwd, and the divisions as above. Rows whose nine weights are whole
// thousands (BT.601, the three-digit BT.709 rows, rows 8 and 9): the weights in
// thousands fit pmaddwd whole, the sums are a thousandth of the engine's, and
// with the biases in thousands (floored) each quotient is that of the full sum
// over 1000 (|sum| < 2^19, so one float step with the float just above 1/1000
// truncates exactly).
constexpr float kPer1000 = std::bit_cast<float>(0x3A83126Fu);  // just above 1/1000
static_assert(double{kPer1000} > 1.0 / 1000 &&
              double{std::bit_cast<float>(0x3A83126Eu)} < 1.0 / 1000);

// The quotient toward zero of a biased sum by 1,000,000 (or of a sum in
// thousands by 1000). The shift by 6 of a negative sum rounds toward zero when
// 63 was added with the bias.
template <bool Thousands>
CYCBCR_INLINE __m256i quotient(__m256i x) {
    if constexpr (Thousands)
        return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(x), _mm256_set1_ps(kPer1000)));
    const __m256 f = _mm256_cvtepi32_ps(_mm256_srai_epi32(x, 6));
    return _mm256_cvttps_epi32(_mm256_mul_ps(f, _mm256_set1_ps(kPer15625)));
}
// A chroma sum divided as the engine does, before the 128: the quotient toward
// zero of s + up (s >= 0) or s - down (s < 0), which is the truncated quotient
// stepped away from zero past the thresholds.
template <bool Thousands>
CYCBCR_INLINE __m256i chroma_quotient(__m256i s, __m256i up, __m256i negExtra) {
    const __m256i neg = _mm256_srai_epi32(s, 31);
    return quotient<Thousands>(
        _mm256_add_epi32(_mm256_add_epi32(s, up), _mm256_and_si256(neg, negExtra)));
}

struct ExactConsts {
    Weights y, cb, cr;
    __m256i yBias, yOffset;  // Y offset as 16-bit words
    // Biases of the chroma sums: `up` for every sum, plus `negExtra` for the
    // negative ones (-down - up, and 63 for the shift).
    __m256i cbUp, cbNeg, crUp, crNeg, c128;
};
template <bool Thousands>
ExactConsts exact_consts(const FromRgbRow& k, bool planar) {
    // Biases in millionths, or floored to thousands.
    auto b = [](int32_t v) { return Thousands ? (v >= 0 ? v / 1000 : -((-v + 999) / 1000)) : v; };
    const int32_t shift = Thousands ? 0 : 63;
    const int32_t y = b(499999);
    // Whole thousands go in as thousands, whole.
    auto w = [](int32_t r, int32_t g, int32_t b) {
        if constexpr (Thousands) return weights<false>(r / 1000, g / 1000, b / 1000);
        return weights<true>(r, g, b);
    };
    return {w(k.rToY, k.gToY, k.bToY), w(k.rToCb, k.gToCb, k.bToCb), w(k.rToCr, k.gToCr, k.bToCr),
            // The planar layout's odd pixel has no rounding step.
            planar ? _mm256_set_epi32(0, y, 0, y, 0, y, 0, y) : _mm256_set1_epi32(y),
            _mm256_set1_epi16(static_cast<int16_t>(k.yOffset)), _mm256_set1_epi32(b(549999)),
            _mm256_set1_epi32(-b(749999) - b(549999) + shift), _mm256_set1_epi32(b(499999)),
            _mm256_set1_epi32(-b(499999) - b(499999) + shift), _mm256_set1_epi16(128)};
}

template <bool Planar, uint32_t Bytes, Format Shape, bool Thousands>
void exact_row_avx2(const RowArgs& a, const FromRgbRow& k, PixelLayout l, ExactRow tail) {
    const ExactConsts c = exact_consts<Thousands>(k, Planar);
    const Unpack m = unpack_masks(l);
    // Three-byte loads reach four bytes past their eighth pixel: keep a pair in
    // hand so they stay inside the row's pairs.
    constexpr uint32_t spare = Bytes == 3 ? 1 : 0;
    const bool chroma = a.cb != nullptr;
    uint32_t p = 0;
    const uint8_t* s = a.src;
    for (; p + 8 + spare <= a.pairs; p += 8, s += 16 * Bytes) {
        prefetch(s, kAhead);
        const Words w0 = words8(load8<Bytes>(s), m);
        const Words w1 = words8(load8<Bytes>(s + 8 * Bytes), m);
        auto luma = [&](const Words& w) {
            return quotient<Thousands>(_mm256_add_epi32(weighted_sum<!Thousands>(w, c.y), c.yBias));
        };
        // Quotients below 2^15: the signed pack keeps them.
        const __m256i yw = _mm256_adds_epu16(_mm256_packs_epi32(luma(w0), luma(w1)), c.yOffset);
        if constexpr (Planar) {
            if (!chroma) {
                store_luma(a.y + 2 * size_t{p}, yw);
                continue;
            }
        }
        const Words e = evens(w0, w1);
        const __m256i cbq =
            chroma_quotient<Thousands>(weighted_sum<!Thousands>(e, c.cb), c.cbUp, c.cbNeg);
        const __m256i crq =
            chroma_quotient<Thousands>(weighted_sum<!Thousands>(e, c.cr), c.crUp, c.crNeg);
        const __m256i cw = _mm256_add_epi16(_mm256_packs_epi32(cbq, crq), c.c128);
        const __m256i all = combine(yw, _mm256_packus_epi16(cw, cw));
        if constexpr (Planar)
            store_planar(a.y + 2 * size_t{p}, a.cb + p, a.cr + p, all);
        else
            store_packed<Shape>(Shape == Format::UYVY ? a.cb + 4 * size_t{p} : a.y + 4 * size_t{p},
                                all);
    }
    if (p == a.pairs) return;
    const size_t step = Planar ? 1 : 4;
    tail({s, a.y + (Planar ? 2 : 4) * size_t{p}, chroma ? a.cb + step * p : nullptr,
          chroma ? a.cr + step * p : nullptr, a.pairs - p},
         k, l);
}

// ---- The 14-bit kernels ----

struct Q14Consts {
    __m256i yBG, yR, cbBG, cbR, crBG, crR;  // (R, 8192) pairs carry the rounding
    __m256i yOffset, c128;
};
Q14Consts q14_consts(const Q14Set& k) {
    return {pair16(k.y[2], k.y[1]),
            pair16(k.y[0], 8192),
            pair16(k.cb[2], k.cb[1]),
            pair16(k.cb[0], 8192),
            pair16(k.cr[2], k.cr[1]),
            pair16(k.cr[0], 8192),
            _mm256_set1_epi16(static_cast<int16_t>(k.yOffset)),
            _mm256_set1_epi16(128)};
}
CYCBCR_INLINE __m256i q14_sum(const Words& w, __m256i bg, __m256i r) {
    return _mm256_srai_epi32(
        _mm256_add_epi32(_mm256_madd_epi16(w.bg, bg), _mm256_madd_epi16(w.r, r)), 14);
}

template <bool Planar, Format Shape>
void q14_groups_avx2(const RowArgs& a, const Q14Set& k, PixelLayout l, uint32_t groups) {
    const Q14Consts c = q14_consts(k);
    const Unpack m = unpack_masks(l);
    // The (R, 0) words take a 1 beside R, the multiplier of the rounding 8192.
    const __m256i one = _mm256_set1_epi32(0x10000);
    static constexpr int8_t kEven[16] = {0, 2, 4, 6, 8, 10, 12, 14, -1, -1, -1, -1, -1, -1, -1, -1};
    const __m256i even = lanes(kEven);
    const uint8_t* s = a.src;
    uint32_t g = 0;
    for (; g + 2 <= groups; g += 2, s += 64) {
        prefetch(s, kAhead);
        Words w0 = words8(load8<4>(s), m), w1 = words8(load8<4>(s + 32), m);
        w0.r = _mm256_or_si256(w0.r, one);
        w1.r = _mm256_or_si256(w1.r, one);
        auto channel = [&](__m256i bg, __m256i r) {
            return _mm256_packs_epi32(q14_sum(w0, bg, r), q14_sum(w1, bg, r));
        };
        const __m256i yw = _mm256_add_epi16(channel(c.yBG, c.yR), c.yOffset);
        const __m256i cbw = _mm256_add_epi16(channel(c.cbBG, c.cbR), c.c128);
        const __m256i crw = _mm256_add_epi16(channel(c.crBG, c.crR), c.c128);
        // Saturated per pixel, then the pair's rounded-up average.
        const __m256i cbcr = _mm256_packus_epi16(cbw, crw);
        const __m256i avg = _mm256_avg_epu8(cbcr, _mm256_srli_epi16(cbcr, 8));
        const __m256i all = combine(yw, _mm256_shuffle_epi8(avg, even));
        const size_t p = 4 * size_t{g};
        if constexpr (Planar)
            store_planar(a.y + 2 * p, a.cb + p, a.cr + p, all);
        else
            store_packed<Shape>(Shape == Format::UYVY ? a.cb + 4 * p : a.y + 4 * p, all);
    }
    if (g < groups) {
        // The last single group: the plain rule, identical bytes.
        const size_t p = 4 * size_t{g};
        const size_t step = Planar ? 1 : 4;
        q14_groups_plain({s, a.y + (Planar ? 2 : 4) * p, a.cb + step * p, a.cr + step * p, 4}, k, l,
                         1, Planar);
    }
}

template <bool Planar, bool Thousands>
ExactVectorRow exact_by_shape(PixelLayout l, Format shape) {
    if (l.bytes == 4) {
        switch (shape) {
            case Format::UYVY:
                return exact_row_avx2<Planar, 4, Format::UYVY, Thousands>;
            case Format::YUY2:
                return exact_row_avx2<Planar, 4, Format::YUY2, Thousands>;
            default:
                return exact_row_avx2<Planar, 4, Format::YVYU, Thousands>;
        }
    }
    switch (shape) {
        case Format::UYVY:
            return exact_row_avx2<Planar, 3, Format::UYVY, Thousands>;
        case Format::YUY2:
            return exact_row_avx2<Planar, 3, Format::YUY2, Thousands>;
        default:
            return exact_row_avx2<Planar, 3, Format::YVYU, Thousands>;
    }
}

bool whole_thousands(const FromRgbRow& k) {
    for (int32_t c : {k.rToY, k.gToY, k.bToY, k.rToCb, k.gToCb, k.bToCb, k.rToCr, k.gToCr, k.bToCr})
        if (c % 1000 != 0) return false;
    return true;
}

}  // namespace

ExactVectorRow avx2_exact_row(bool planar, PixelLayout l, Format packedShape, const FromRgbRow& k) {
    if (l.bytes != 3 && l.bytes != 4) return nullptr;
    const bool thousands = whole_thousands(k);
    if (planar)
        return thousands ? exact_by_shape<true, true>(l, Format::UYVY)
                         : exact_by_shape<true, false>(l, Format::UYVY);
    if (packedShape != Format::UYVY && packedShape != Format::YUY2 && packedShape != Format::YVYU)
        return nullptr;
    return thousands ? exact_by_shape<false, true>(l, packedShape)
                     : exact_by_shape<false, false>(l, packedShape);
}

Q14Groups avx2_q14_groups(bool planar, Format packedShape) {
    if (planar) return q14_groups_avx2<true, Format::UYVY>;
    switch (packedShape) {
        case Format::UYVY:
            return q14_groups_avx2<false, Format::UYVY>;
        case Format::YUY2:
            return q14_groups_avx2<false, Format::YUY2>;
        case Format::YVYU:
            return q14_groups_avx2<false, Format::YVYU>;
        default:
            return nullptr;
    }
}

}  // namespace cycbcr::fromrgb
