// AVX2 row kernels of the 8-bit YCbCr to RGB engine: sixteen pixels a step, the
// same bytes as the plain kernels.
//
// The sums are exact in 32 bits (|sum| < 2^23 for every row of the table), and
// the engine's truncating division by 10000 is a float multiply by the float just
// above 1/10000 followed by a truncating conversion: for |sum| < 2^24 the product
// never reaches the next integer and never falls below the true quotient, so the
// truncated quotient is the integer one (tested over every sum the table can
// give). Saturating packs then do the engine's clamp.
#include <immintrin.h>

#include <bit>
#include <cstring>

#include "torgb/to_rgb.h"

namespace cycbcr::colour {
namespace {

// The float just above 1/10000.
const float kTenThousandth = std::bit_cast<float>(0x38D1B718u);

struct Consts {
    __m256i yOffset;  // 16-bit lanes
    __m256i yGainEven, yGainOdd;
    __m256i toR, toG, toB;  // per pair (Cr', Cb') 16-bit lanes to 32-bit sums
};
Consts consts_of(const ToRgbRow<int32_t>& k) {
    auto pair16 = [](int32_t lo, int32_t hi) {
        return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(hi) << 16) |
                                                      (static_cast<uint32_t>(lo) & 0xFFFFu)));
    };
    return {_mm256_set1_epi16(static_cast<int16_t>(k.yOffset)),
            pair16(k.yGain, 0),
            pair16(0, k.yGain),
            pair16(k.crToR, 0),
            pair16(-k.crToG, -k.cbToG),
            pair16(0, k.cbToB)};
}

// Eight pairs of samples: luma as sixteen 16-bit lanes in pixel order, chroma
// as eight 32-bit lanes, Cr in the low half and Cb in the high.
struct Block {
    __m256i y;
    __m256i crcb;
};

template <Source S>
CYCBCR_INLINE Block load_block(const uint8_t* y, const uint8_t* cb, const uint8_t* cr) {
    __m256i ly, lcb, lcr;
    if constexpr (S == Source::Packed) {
        // Y at every other byte; Cb and Cr at every fourth.
        const __m256i byte16 = _mm256_set1_epi16(0xFF);
        const __m256i byte32 = _mm256_set1_epi32(0xFF);
        ly = _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(y)), byte16);
        lcb = _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(cb)), byte32);
        lcr = _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(cr)), byte32);
    } else {
        ly = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y)));
        if constexpr (S == Source::Planar) {
            lcb = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb)));
            lcr = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr)));
        } else {
            const __m256i word32 = _mm256_set1_epi32(0xFFFF);
            lcb = _mm256_and_si256(
                _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cb))),
                word32);
            lcr = _mm256_and_si256(
                _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cr))),
                word32);
        }
    }
    const __m256i crcb = _mm256_or_si256(lcr, _mm256_slli_epi32(lcb, 16));
    return {ly, _mm256_sub_epi16(crcb, _mm256_set1_epi16(128))};
}

CYCBCR_INLINE __m256i quotient(__m256i sum) {
    return _mm256_cvttps_epi32(
        _mm256_mul_ps(_mm256_cvtepi32_ps(sum), _mm256_set1_ps(kTenThousandth)));
}

// One channel of sixteen pixels as 16-bit lanes, in the order the packs leave
// them: in each 128-bit lane the four even pixels, then the four odd ones. Not
// yet clamped to 0..255.
struct Channels {
    __m256i r, g, b;
};
CYCBCR_INLINE Channels compute(const Block& blk, const Consts& k) {
    const __m256i y = _mm256_sub_epi16(blk.y, k.yOffset);
    const __m256i le = _mm256_madd_epi16(y, k.yGainEven);
    const __m256i lo = _mm256_madd_epi16(y, k.yGainOdd);
    const __m256i tr = _mm256_madd_epi16(blk.crcb, k.toR);
    const __m256i tg = _mm256_madd_epi16(blk.crcb, k.toG);
    const __m256i tb = _mm256_madd_epi16(blk.crcb, k.toB);
    auto channel = [&](__m256i t) {
        return _mm256_packs_epi32(quotient(_mm256_add_epi32(le, t)),
                                  quotient(_mm256_add_epi32(lo, t)));
    };
    return {channel(tr), channel(tg), channel(tb)};
}

// Per 128-bit lane, from (evens, odds) of two byte channels X (low 8 bytes) and
// Z (high 8 bytes) to X, Z pairs in pixel order.
CYCBCR_INLINE __m256i pixel_order_pairs(__m256i v) {
    const __m256i m = _mm256_setr_epi8(0, 8, 4, 12, 1, 9, 5, 13, 2, 10, 6, 14, 3, 11, 7, 15, 0, 8,
                                       4, 12, 1, 9, 5, 13, 2, 10, 6, 14, 3, 11, 7, 15);
    return _mm256_shuffle_epi8(v, m);
}
// 16-bit lanes from (evens, odds) to pixel order, per 128-bit lane.
CYCBCR_INLINE __m256i pixel_order_words(__m256i v) {
    const __m256i m = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0, 1,
                                       8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    return _mm256_shuffle_epi8(v, m);
}
// Alpha bytes of sixteen pixels, as 16-bit lanes in the channels' order.
CYCBCR_INLINE __m256i alpha_words(const uint8_t* a) {
    const __m256i w = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a)));
    const __m256i m = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15, 0, 1,
                                       4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    return _mm256_shuffle_epi8(w, m);
}

// Sixteen 4-byte pixels from channels c0..c3 in address order: lo holds pixels
// 0-3 and 8-11, hi 4-7 and 12-15.
struct Quads {
    __m256i lo, hi;
};
CYCBCR_INLINE Quads quads(__m256i c0, __m256i c1, __m256i c2, __m256i c3) {
    const __m256i p01 = pixel_order_pairs(_mm256_packus_epi16(c0, c1));
    const __m256i p23 = pixel_order_pairs(_mm256_packus_epi16(c2, c3));
    return {_mm256_unpacklo_epi16(p01, p23), _mm256_unpackhi_epi16(p01, p23)};
}

template <RgbDepth D, RgbOrder O>
CYCBCR_INLINE void store_block(uint8_t* d, const Channels& c, __m256i alpha) {
    const __m256i first = blue_first(O) ? c.b : c.r;
    const __m256i last = blue_first(O) ? c.r : c.b;
    if constexpr (D == RgbDepth::Rgb32) {
        const Quads q =
            alpha_first(O) ? quads(alpha, first, c.g, last) : quads(first, c.g, last, alpha);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d),
                            _mm256_permute2x128_si256(q.lo, q.hi, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32),
                            _mm256_permute2x128_si256(q.lo, q.hi, 0x31));
    } else if constexpr (D == RgbDepth::Rgb24) {
        const Quads q = quads(first, c.g, last, last);
        const __m256i drop =
            _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1, 2, 4, 5,
                             6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
        const __m256i lo = _mm256_shuffle_epi8(q.lo, drop), hi = _mm256_shuffle_epi8(q.hi, drop);
        const __m128i a = _mm256_castsi256_si128(lo), b = _mm256_castsi256_si128(hi);
        const __m128i cc = _mm256_extracti128_si256(lo, 1), dd = _mm256_extracti128_si256(hi, 1);
        auto* out = reinterpret_cast<__m128i*>(d);
        _mm_storeu_si128(out, _mm_or_si128(a, _mm_slli_si128(b, 12)));
        _mm_storeu_si128(out + 1, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(cc, 8)));
        _mm_storeu_si128(out + 2, _mm_or_si128(_mm_srli_si128(cc, 8), _mm_slli_si128(dd, 4)));
    } else {
        const __m256i zero = _mm256_setzero_si256(), top = _mm256_set1_epi16(255);
        auto clamp = [&](__m256i v) { return _mm256_min_epi16(_mm256_max_epi16(v, zero), top); };
        const __m256i f = clamp(first), g = clamp(c.g), l = clamp(last);
        __m256i w;
        if constexpr (D == RgbDepth::Rgb555) {
            w = _mm256_or_si256(
                _mm256_and_si256(_mm256_slli_epi16(f, 7), _mm256_set1_epi16(0x7C00)),
                _mm256_or_si256(
                    _mm256_and_si256(_mm256_slli_epi16(g, 2), _mm256_set1_epi16(0x03E0)),
                    _mm256_srli_epi16(l, 3)));
        } else {
            w = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(f, 8),
                                                 _mm256_set1_epi16(static_cast<short>(0xF800))),
                                _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(g, 3),
                                                                 _mm256_set1_epi16(0x07E0)),
                                                _mm256_srli_epi16(l, 3)));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), pixel_order_words(w));
    }
}

template <Source S, RgbDepth D, RgbOrder O, bool AlphaPlane>
void row_a_avx2(const RowArgs& a, const ToRgbRow<int32_t>& k, const RowKernel& tail) {
    constexpr uint32_t lumaStep = S == Source::Packed ? 4 : 2;
    constexpr uint32_t chromaStep = S == Source::Packed ? 4 : S == Source::SemiPlanar ? 2 : 1;
    // Packed and interleaved loads reach a few bytes into the next pair: keep
    // one pair back for the plain tail so nothing past the row's samples is read.
    constexpr uint32_t spare = S == Source::Planar ? 0 : 1;
    const Consts c = consts_of(k);
    const __m256i opaque = _mm256_set1_epi16(255);
    uint32_t p = 0;
    for (; p + 8 + spare <= a.pairs; p += 8) {
        const Block blk = load_block<S>(a.y + size_t{p} * lumaStep, a.cb + size_t{p} * chromaStep,
                                        a.cr + size_t{p} * chromaStep);
        const __m256i alpha = AlphaPlane ? alpha_words(a.alpha + 2 * size_t{p}) : opaque;
        store_block<D, O>(a.dst + 2 * size_t{p} * pixel_bytes(D), compute(blk, c), alpha);
    }
    if (p == a.pairs) return;
    const RowArgs rest{a.dst + 2 * size_t{p} * pixel_bytes(D),
                       a.y + size_t{p} * lumaStep,
                       a.cb + size_t{p} * chromaStep,
                       a.cr + size_t{p} * chromaStep,
                       AlphaPlane ? a.alpha + 2 * size_t{p} : nullptr,
                       a.pairs - p};
    tail.fn(rest, k, tail);
}

template <Source S, RgbDepth D, RgbOrder O, bool AlphaPlane>
const RowKernel kAvx2 = {row_a_avx2<S, D, O, AlphaPlane>, &plain_row_a(S, D, O, AlphaPlane)};

template <Source S, RgbDepth D>
const RowKernel* by_order(RgbOrder o, bool alpha) {
    return with_order(o, [&]<RgbOrder O>() -> const RowKernel* {
        return alpha ? &kAvx2<S, D, O, true> : &kAvx2<S, D, O, false>;
    });
}
template <Source S>
const RowKernel* by_depth(RgbDepth d, RgbOrder o, bool alpha) {
    switch (d) {
        case RgbDepth::Rgb555:
            return by_order<S, RgbDepth::Rgb555>(o, alpha);
        case RgbDepth::Rgb565:
            return by_order<S, RgbDepth::Rgb565>(o, alpha);
        case RgbDepth::Rgb24:
            return by_order<S, RgbDepth::Rgb24>(o, alpha);
        case RgbDepth::Rgb32:
            return by_order<S, RgbDepth::Rgb32>(o, alpha);
        default:
            break;
    }
    return nullptr;
}

}  // namespace

const RowKernel* avx2_row_a(Source s, RgbDepth d, RgbOrder o, bool alphaPlane) {
    switch (s) {
        case Source::Packed:
            return by_depth<Source::Packed>(d, o, alphaPlane);
        case Source::Planar:
            return by_depth<Source::Planar>(d, o, alphaPlane);
        case Source::SemiPlanar:
            break;
    }
    return by_depth<Source::SemiPlanar>(d, o, alphaPlane);
}

}  // namespace cycbcr::colour
