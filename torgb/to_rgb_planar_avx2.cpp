// AVX2 rows of YCbCr to three RGB planes, giving the plain rows' bytes:
// family A into 8-bit planes, thirty-two pixels a step, with the packed-output
// engine's arithmetic (torgb/family_a_avx2.h); family D into 16-bit planes,
// sixteen pixels a step; 10- and 12-bit samples, sixteen pixels a step, in
// double precision.
//
// Family D's sums are exact in 32 bits: |sum| < 1.5 * 10^9 for every row of
// the table and every 8-bit sample. Its division by 10000, truncating toward
// zero, is a double product S * (1 / 10000) within 10^-11 of S / 10000, moved
// 10^-6 away from zero and truncated: an exact quotient is lifted clear of the
// truncation, and a fraction (a multiple of 10^-4) never reaches the next
// integer. The sign matters here: the studio lift follows the division.
//
// From 16-bit sample words every product and sum is an integer below 2^53, so
// exact in double precision; each sum S (|S| < 2^32) becomes S * (1 / D) +
// 10^-6 truncated: the product is within 10^-8 of S / D, whose fraction is a
// multiple of 1 / D >= 2.5 * 10^-5, so the nudge lifts an exact quotient clear
// of the truncation and never reaches the next integer. Negative sums clamp to
// 0 either way.
#include <immintrin.h>

#include <cstring>

#include "platform/memory.h"
#include "torgb/family_a_avx2.h"
#include "torgb/to_rgb_planar.h"

namespace cycbcr::colour::planes {
namespace {

using namespace avx2_a;

// Two blocks' channel (each sixteen 16-bit lanes, evens then odds per 128-bit
// lane) as thirty-two bytes in pixel order, clamped to 0..255 by the pack.
CYCBCR_INLINE __m256i plane_bytes(__m256i first, __m256i second) {
    const __m256i order = _mm256_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15, 0,
                                           4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15);
    const __m256i v = _mm256_shuffle_epi8(_mm256_packus_epi16(first, second), order);
    return _mm256_permute4x64_epi64(v, _MM_SHUFFLE(3, 1, 2, 0));
}

template <bool Stream>
CYCBCR_INLINE void put32(void* d, __m256i v) {
    if constexpr (Stream)
        _mm256_stream_si256(static_cast<__m256i*>(d), v);
    else
        _mm256_storeu_si256(static_cast<__m256i*>(d), v);
}

template <Source S, bool Stream>
void row_a_avx2(const RowArgs& a, const ToRgbRow<int32_t>& k, PlainRowA tail) {
    constexpr uint32_t lumaStep = S == Source::Packed ? 4 : 2;
    constexpr uint32_t chromaStep = S == Source::Packed ? 4 : 1;
    // Packed loads through the three pointers reach two bytes into the next
    // pair: one pair stays back for the plain tail.
    constexpr uint32_t spare = S == Source::Packed ? 1 : 0;
    const Consts c = consts_of(k);
    auto* r = static_cast<uint8_t*>(a.out[0]);
    auto* g = static_cast<uint8_t*>(a.out[1]);
    auto* b = static_cast<uint8_t*>(a.out[2]);
    auto *y = static_cast<const uint8_t*>(a.y), *cb = static_cast<const uint8_t*>(a.cb),
         *cr = static_cast<const uint8_t*>(a.cr);
    uint32_t p = 0;
    for (; p + 16 + spare <= a.pairs; p += 16) {
        prefetch(y, 4096);
        if constexpr (S == Source::Planar) {
            prefetch(cb, 2048);
            prefetch(cr, 2048);
        }
        const Channels c0 = compute(load_block<S, Fetch::Pointers>(y, cb, cr), c);
        const Channels c1 = compute(load_block<S, Fetch::Pointers>(
                                        y + 8 * lumaStep, cb + 8 * chromaStep, cr + 8 * chromaStep),
                                    c);
        put32<Stream>(r, plane_bytes(c0.r, c1.r));
        put32<Stream>(g, plane_bytes(c0.g, c1.g));
        put32<Stream>(b, plane_bytes(c0.b, c1.b));
        r += 32;
        g += 32;
        b += 32;
        y += 16 * lumaStep;
        cb += 16 * chromaStep;
        cr += 16 * chromaStep;
    }
    if (p < a.pairs) tail({{r, g, b}, y, cb, cr, a.pairs - p}, k);
}

// Family D, eight pixels: 32-bit lanes in pixel order.
struct ConstsD {
    __m256i yOffset, yGain, crToR, crToG, cbToG, cbToB, lift;
};
CYCBCR_INLINE ConstsD consts_d(const ToRgbRow<int64_t>& k, bool studio) {
    auto s = [](int64_t v) { return _mm256_set1_epi32(static_cast<int32_t>(v)); };
    return {s(studio ? 16 : k.yOffset), s(k.yGain), s(k.crToR), s(k.crToG), s(k.cbToG), s(k.cbToB),
            s(studio ? 4096 : 0)};
}

// sum / 10000 truncated toward zero, for |sum| < 2^31.
CYCBCR_INLINE __m256i tenth_thousandth(__m256i sum) {
    const __m256d scale = _mm256_set1_pd(1.0 / 10000), nudge = _mm256_set1_pd(1e-6);
    const __m256d sign = _mm256_set1_pd(-0.0);
    auto q = [&](__m128i s) {
        const __m256d d = _mm256_cvtepi32_pd(s);
        const __m256d away = _mm256_or_pd(_mm256_and_pd(d, sign), nudge);
        return _mm256_cvttpd_epi32(_mm256_add_pd(_mm256_mul_pd(d, scale), away));
    };
    return _mm256_set_m128i(q(_mm256_extracti128_si256(sum, 1)), q(_mm256_castsi256_si128(sum)));
}

struct ChannelsD {
    __m256i r, g, b;
};
// Eight pixels from eight luma bytes and four chroma pairs; each channel lifted
// but not yet clamped.
CYCBCR_INLINE ChannelsD compute_d(__m128i y8, __m128i cb4, __m128i cr4, const ConstsD& k) {
    const __m256i bias = _mm256_set1_epi32(128), half = _mm256_set1_epi32(5000);
    const __m256i yv = _mm256_cvtepu8_epi32(y8);
    const __m256i u = _mm256_sub_epi32(_mm256_cvtepu8_epi32(_mm_unpacklo_epi8(cb4, cb4)), bias);
    const __m256i v = _mm256_sub_epi32(_mm256_cvtepu8_epi32(_mm_unpacklo_epi8(cr4, cr4)), bias);
    const __m256i l = _mm256_mullo_epi32(_mm256_sub_epi32(yv, k.yOffset), k.yGain);
    const __m256i lr = _mm256_add_epi32(l, _mm256_add_epi32(half, half));
    const __m256i r = _mm256_add_epi32(lr, _mm256_mullo_epi32(k.crToR, v));
    const __m256i b = _mm256_add_epi32(lr, _mm256_mullo_epi32(k.cbToB, u));
    const __m256i g = _mm256_sub_epi32(_mm256_sub_epi32(l, _mm256_mullo_epi32(k.crToG, v)),
                                       _mm256_mullo_epi32(k.cbToG, u));
    return {_mm256_add_epi32(tenth_thousandth(r), k.lift),
            _mm256_add_epi32(tenth_thousandth(g), k.lift),
            _mm256_add_epi32(tenth_thousandth(b), k.lift)};
}

// Sixteen pixels of one channel (two sets of eight 32-bit lanes) as 16-bit
// words in pixel order, clamped to 0..65535 by the pack.
CYCBCR_INLINE __m256i plane_words(__m256i first, __m256i second) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), _MM_SHUFFLE(3, 1, 2, 0));
}

template <Source S>
CYCBCR_INLINE void load_d(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, __m128i* y8,
                          __m128i* cb4, __m128i* cr4) {
    if constexpr (S == Source::Planar) {
        *y8 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(y));
        int32_t u, v;
        std::memcpy(&u, cb, 4);
        std::memcpy(&v, cr, 4);
        *cb4 = _mm_cvtsi32_si128(u);
        *cr4 = _mm_cvtsi32_si128(v);
    } else {
        // Four pairs of four bytes: Y at 0 and 2, chroma at 0 from its pointer.
        const __m128i lumaBytes =
            _mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, -1, -1, -1, -1, -1, -1, -1, -1);
        const __m128i chromaBytes =
            _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
        *y8 = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y)), lumaBytes);
        *cb4 = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cb)), chromaBytes);
        *cr4 = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(cr)), chromaBytes);
    }
}

template <Source S>
void row_d_avx2(const RowArgs& a, const ToRgbRow<int64_t>& k, bool studio, PlainRowD tail) {
    constexpr uint32_t lumaStep = S == Source::Packed ? 4 : 2;
    constexpr uint32_t chromaStep = S == Source::Packed ? 4 : 1;
    constexpr uint32_t spare = S == Source::Packed ? 1 : 0;
    const ConstsD c = consts_d(k, studio);
    auto* r = static_cast<uint8_t*>(a.out[0]);
    auto* g = static_cast<uint8_t*>(a.out[1]);
    auto* b = static_cast<uint8_t*>(a.out[2]);
    auto *y = static_cast<const uint8_t*>(a.y), *cb = static_cast<const uint8_t*>(a.cb),
         *cr = static_cast<const uint8_t*>(a.cr);
    uint32_t p = 0;
    for (; p + 8 + spare <= a.pairs; p += 8) {
        __m128i y0, cb0, cr0, y1, cb1, cr1;
        load_d<S>(y, cb, cr, &y0, &cb0, &cr0);
        load_d<S>(y + 4 * lumaStep, cb + 4 * chromaStep, cr + 4 * chromaStep, &y1, &cb1, &cr1);
        const ChannelsD d0 = compute_d(y0, cb0, cr0, c), d1 = compute_d(y1, cb1, cr1, c);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(r), plane_words(d0.r, d1.r));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(g), plane_words(d0.g, d1.g));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(b), plane_words(d0.b, d1.b));
        r += 32;
        g += 32;
        b += 32;
        y += 8 * lumaStep;
        cb += 8 * chromaStep;
        cr += 8 * chromaStep;
    }
    if (p < a.pairs) tail({{r, g, b}, y, cb, cr, a.pairs - p}, k, studio);
}

// Eight pixels of 16-bit samples: the three channels' quotients as 32-bit
// lanes in pixel order, not yet clamped.
struct ConstsW {
    __m256d yOffset, yGain, crToR, crToG, cbToG, cbToB, mid, scale, nudge;
};
CYCBCR_INLINE ConstsW consts_w(const ToRgbRow<int32_t>& k, const WideRule& r) {
    auto s = [](double v) { return _mm256_set1_pd(v); };
    return {s(k.yOffset), s(k.yGain), s(k.crToR),     s(k.crToG), s(k.cbToG),
            s(k.cbToB),   s(r.mid),   s(1.0 / r.div), s(1e-6)};
}

template <Source S>
CYCBCR_INLINE void load_w(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, __m256i* ys,
                          __m256i* cbs, __m256i* crs) {
    if constexpr (S == Source::Planar) {
        *ys = _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y)));
        const __m128i u = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb));
        const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr));
        *cbs = _mm256_cvtepu16_epi32(_mm_unpacklo_epi16(u, u));
        *crs = _mm256_cvtepu16_epi32(_mm_unpacklo_epi16(v, v));
    } else {
        // Four pairs of four words: each 32-bit lane's low word is Y0 or Y1 in
        // pixel order from the Y pointer; from a chroma pointer the even lanes
        // hold the pair's sample, copied to the odd ones.
        const __m256i low = _mm256_set1_epi32(0xFFFF);
        auto at = [](const uint8_t* p) {
            return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        };
        *ys = _mm256_and_si256(at(y), low);
        *cbs = _mm256_shuffle_epi32(_mm256_and_si256(at(cb), low), _MM_SHUFFLE(2, 2, 0, 0));
        *crs = _mm256_shuffle_epi32(_mm256_and_si256(at(cr), low), _MM_SHUFFLE(2, 2, 0, 0));
    }
}

struct QuadW {
    __m128i r, g, b;
};
CYCBCR_INLINE QuadW quad_w(__m128i y, __m128i cb, __m128i cr, const ConstsW& k) {
    const __m256d l = _mm256_mul_pd(_mm256_sub_pd(_mm256_cvtepi32_pd(y), k.yOffset), k.yGain);
    const __m256d u = _mm256_sub_pd(_mm256_cvtepi32_pd(cb), k.mid);
    const __m256d v = _mm256_sub_pd(_mm256_cvtepi32_pd(cr), k.mid);
    auto q = [&](__m256d sum) {
        return _mm256_cvttpd_epi32(_mm256_add_pd(_mm256_mul_pd(sum, k.scale), k.nudge));
    };
    return {
        q(_mm256_add_pd(l, _mm256_mul_pd(k.crToR, v))),
        q(_mm256_sub_pd(_mm256_sub_pd(l, _mm256_mul_pd(k.crToG, v)), _mm256_mul_pd(k.cbToG, u))),
        q(_mm256_add_pd(l, _mm256_mul_pd(k.cbToB, u)))};
}
CYCBCR_INLINE ChannelsD eight_w(__m256i y, __m256i cb, __m256i cr, const ConstsW& k) {
    const QuadW lo = quad_w(_mm256_castsi256_si128(y), _mm256_castsi256_si128(cb),
                            _mm256_castsi256_si128(cr), k);
    const QuadW hi = quad_w(_mm256_extracti128_si256(y, 1), _mm256_extracti128_si256(cb, 1),
                            _mm256_extracti128_si256(cr, 1), k);
    return {_mm256_set_m128i(hi.r, lo.r), _mm256_set_m128i(hi.g, lo.g),
            _mm256_set_m128i(hi.b, lo.b)};
}

// Sixteen values of one channel clamped to 0..Max, stored as words or bytes.
template <uint32_t Max>
CYCBCR_INLINE void store_w(uint8_t* d, __m256i first, __m256i second) {
    __m256i w = plane_words(first, second);
    if constexpr (Max < 65535) w = _mm256_min_epu16(w, _mm256_set1_epi16(static_cast<short>(Max)));
    if constexpr (Max == 255) {
        const __m256i b =
            _mm256_permute4x64_epi64(_mm256_packus_epi16(w, w), _MM_SHUFFLE(3, 1, 2, 0));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(b));
    } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), w);
    }
}

template <Source S, Wide W>
void row_wide_avx2(const RowArgs& a, const ToRgbRow<int32_t>& k, PlainRowW tail) {
    constexpr WideRule rule = wide_rule(W);
    constexpr size_t out = rule.max == 255 ? 16 : 32;  // bytes of sixteen values
    // In bytes: four pairs of samples, and their step to the next four.
    constexpr size_t lumaStep = S == Source::Packed ? 32 : 16;
    constexpr size_t chromaStep = S == Source::Packed ? 32 : 8;
    // Packed loads through the chroma pointers reach two words into the next
    // pair: one pair stays back for the plain tail.
    constexpr uint32_t spare = S == Source::Packed ? 1 : 0;
    const ConstsW c = consts_w(k, rule);
    auto* r = static_cast<uint8_t*>(a.out[0]);
    auto* g = static_cast<uint8_t*>(a.out[1]);
    auto* b = static_cast<uint8_t*>(a.out[2]);
    auto *y = static_cast<const uint8_t*>(a.y), *cb = static_cast<const uint8_t*>(a.cb),
         *cr = static_cast<const uint8_t*>(a.cr);
    uint32_t p = 0;
    for (; p + 8 + spare <= a.pairs; p += 8) {
        __m256i y0, cb0, cr0, y1, cb1, cr1;
        load_w<S>(y, cb, cr, &y0, &cb0, &cr0);
        load_w<S>(y + lumaStep, cb + chromaStep, cr + chromaStep, &y1, &cb1, &cr1);
        const ChannelsD d0 = eight_w(y0, cb0, cr0, c), d1 = eight_w(y1, cb1, cr1, c);
        store_w<rule.max>(r, d0.r, d1.r);
        store_w<rule.max>(g, d0.g, d1.g);
        store_w<rule.max>(b, d0.b, d1.b);
        r += out;
        g += out;
        b += out;
        y += 2 * lumaStep;
        cb += 2 * chromaStep;
        cr += 2 * chromaStep;
    }
    if (p < a.pairs) tail({{r, g, b}, y, cb, cr, a.pairs - p}, k);
}

template <Source S>
VectorRowW wide_of(Wide w) {
    switch (w) {
        case Wide::TenTo8:
            return row_wide_avx2<S, Wide::TenTo8>;
        case Wide::TenTo10:
            return row_wide_avx2<S, Wide::TenTo10>;
        case Wide::TenTo16:
            return row_wide_avx2<S, Wide::TenTo16>;
        case Wide::TwelveTo16:
            break;
    }
    return row_wide_avx2<S, Wide::TwelveTo16>;
}

// Float planes: the plain rule's double operations in its order (chroma terms
// of the pair, then luma plus each), clamped to 0..255 and rounded to float.
struct ConstsF {
    __m256d yOffset, yGain, crToR, crToG, cbToG, cbToB, mid, zero, top;
};
CYCBCR_INLINE ConstsF consts_f(const ToRgbRow<double>& k) {
    auto s = [](double v) { return _mm256_set1_pd(v); };
    return {s(k.yOffset), s(k.yGain), s(k.crToR), s(k.crToG), s(k.cbToG),
            s(k.cbToB),   s(128.0),   s(0.0),     s(255.0)};
}

// Eight pixels' 8-bit samples as 32-bit lanes in pixel order, chroma copied to
// both pixels of its pair.
template <Source S>
CYCBCR_INLINE void load_f(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, __m256i* ys,
                          __m256i* cbs, __m256i* crs) {
    if constexpr (S == Source::Planar) {
        *ys = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(y)));
        int32_t u, v;
        std::memcpy(&u, cb, 4);
        std::memcpy(&v, cr, 4);
        const __m128i cu = _mm_cvtsi32_si128(u), cv = _mm_cvtsi32_si128(v);
        *cbs = _mm256_cvtepu8_epi32(_mm_unpacklo_epi8(cu, cu));
        *crs = _mm256_cvtepu8_epi32(_mm_unpacklo_epi8(cv, cv));
    } else {
        // Four pairs of four bytes: Y at 0 and 2 from the Y pointer, chroma at
        // 0 from its own.
        auto at = [](const uint8_t* p) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        };
        const __m128i chroma =
            _mm_setr_epi8(0, 0, 4, 4, 8, 8, 12, 12, -1, -1, -1, -1, -1, -1, -1, -1);
        *ys = _mm256_cvtepu16_epi32(_mm_and_si128(at(y), _mm_set1_epi16(0xFF)));
        *cbs = _mm256_cvtepu8_epi32(_mm_shuffle_epi8(at(cb), chroma));
        *crs = _mm256_cvtepu8_epi32(_mm_shuffle_epi8(at(cr), chroma));
    }
}

struct QuadF {
    __m128 r, g, b;
};
CYCBCR_INLINE QuadF quad_f(__m128i y, __m128i cb, __m128i cr, const ConstsF& k) {
    const __m256d u = _mm256_sub_pd(_mm256_cvtepi32_pd(cb), k.mid);
    const __m256d v = _mm256_sub_pd(_mm256_cvtepi32_pd(cr), k.mid);
    const __m256d tr = _mm256_mul_pd(k.crToR, v);
    const __m256d tg = _mm256_sub_pd(_mm256_xor_pd(_mm256_mul_pd(k.crToG, v), _mm256_set1_pd(-0.0)),
                                     _mm256_mul_pd(k.cbToG, u));
    const __m256d tb = _mm256_mul_pd(k.cbToB, u);
    const __m256d l = _mm256_mul_pd(_mm256_sub_pd(_mm256_cvtepi32_pd(y), k.yOffset), k.yGain);
    auto clamp = [&](__m256d x) {
        return _mm256_cvtpd_ps(_mm256_min_pd(_mm256_max_pd(x, k.zero), k.top));
    };
    return {clamp(_mm256_add_pd(l, tr)), clamp(_mm256_add_pd(l, tg)), clamp(_mm256_add_pd(l, tb))};
}

template <Source S>
void row_float_avx2(const RowArgs& a, const ToRgbRow<double>& k, PlainRowF tail) {
    constexpr size_t lumaStep = S == Source::Packed ? 16 : 8;  // four pairs
    constexpr size_t chromaStep = S == Source::Packed ? 16 : 4;
    constexpr uint32_t spare = S == Source::Packed ? 1 : 0;
    const ConstsF c = consts_f(k);
    auto* r = static_cast<uint8_t*>(a.out[0]);
    auto* g = static_cast<uint8_t*>(a.out[1]);
    auto* b = static_cast<uint8_t*>(a.out[2]);
    auto *y = static_cast<const uint8_t*>(a.y), *cb = static_cast<const uint8_t*>(a.cb),
         *cr = static_cast<const uint8_t*>(a.cr);
    uint32_t p = 0;
    for (; p + 4 + spare <= a.pairs; p += 4) {
        __m256i ys, cbs, crs;
        load_f<S>(y, cb, cr, &ys, &cbs, &crs);
        const QuadF lo = quad_f(_mm256_castsi256_si128(ys), _mm256_castsi256_si128(cbs),
                                _mm256_castsi256_si128(crs), c);
        const QuadF hi = quad_f(_mm256_extracti128_si256(ys, 1), _mm256_extracti128_si256(cbs, 1),
                                _mm256_extracti128_si256(crs, 1), c);
        _mm256_storeu_ps(reinterpret_cast<float*>(r), _mm256_set_m128(hi.r, lo.r));
        _mm256_storeu_ps(reinterpret_cast<float*>(g), _mm256_set_m128(hi.g, lo.g));
        _mm256_storeu_ps(reinterpret_cast<float*>(b), _mm256_set_m128(hi.b, lo.b));
        r += 32;
        g += 32;
        b += 32;
        y += lumaStep;
        cb += chromaStep;
        cr += chromaStep;
    }
    if (p < a.pairs) tail({{r, g, b}, y, cb, cr, a.pairs - p}, k);
}

}  // namespace

VectorRowF avx2_row_float(Source s) {
    return s == Source::Packed ? row_float_avx2<Source::Packed> : row_float_avx2<Source::Planar>;
}

VectorRowW avx2_row_wide(Source s, Wide w) {
    return s == Source::Packed ? wide_of<Source::Packed>(w) : wide_of<Source::Planar>(w);
}

VectorRowA avx2_row_a(Source s, bool stream) {
    if (s == Source::Packed)
        return stream ? row_a_avx2<Source::Packed, true> : row_a_avx2<Source::Packed, false>;
    return stream ? row_a_avx2<Source::Planar, true> : row_a_avx2<Source::Planar, false>;
}

VectorRowD avx2_row_d(Source s) {
    return s == Source::Packed ? row_d_avx2<Source::Packed> : row_d_avx2<Source::Planar>;
}

}  // namespace cycbcr::colour::planes
