// AVX2 rows of YCbCr to three RGB planes, giving the plain rows' bytes:
// family A into 8-bit planes, thirty-two pixels a step, with the packed-output
// engine's arithmetic (torgb/family_a_avx2.h); family D into 16-bit planes,
// sixteen pixels a step.
//
// Family D's sums are exact in 32 bits: |sum| < 1.5 * 10^9 for every row of
// the table and every 8-bit sample. Its truncating division by 10000 is a
// double division and a truncating conversion: the correctly rounded quotient
// of an integer below 2^31 by 10000 lies at least 10^-4 from the next integer,
// far above a double's spacing there, so truncating it gives the integer
// quotient.
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
    const __m256d d = _mm256_set1_pd(10000.0);
    const __m128i lo =
        _mm256_cvttpd_epi32(_mm256_div_pd(_mm256_cvtepi32_pd(_mm256_castsi256_si128(sum)), d));
    const __m128i hi =
        _mm256_cvttpd_epi32(_mm256_div_pd(_mm256_cvtepi32_pd(_mm256_extracti128_si256(sum, 1)), d));
    return _mm256_set_m128i(hi, lo);
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

}  // namespace

VectorRowA avx2_row_a(Source s, bool stream) {
    if (s == Source::Packed)
        return stream ? row_a_avx2<Source::Packed, true> : row_a_avx2<Source::Packed, false>;
    return stream ? row_a_avx2<Source::Planar, true> : row_a_avx2<Source::Planar, false>;
}

VectorRowD avx2_row_d(Source s) {
    return s == Source::Packed ? row_d_avx2<Source::Packed> : row_d_avx2<Source::Planar>;
}

}  // namespace cycbcr::colour::planes
