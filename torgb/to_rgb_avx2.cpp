// AVX2 row kernels of the 8-bit YCbCr to RGB engine: sixteen pixels a step, the
// same bytes as the plain kernels (the arithmetic: torgb/family_a_avx2.h).
#include <immintrin.h>

#include <cstring>

#include "platform/memory.h"
#include "torgb/family_a_avx2.h"
#include "torgb/rgb24_avx2.h"
#include "torgb/to_rgb.h"

namespace cycbcr::colour {
namespace {

using namespace avx2_a;

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

// Frames too large for the caches are written with streaming stores, which
// skip reading the destination lines first; rows then start 32-byte aligned.
template <bool Stream>
CYCBCR_INLINE void put32(uint8_t* d, __m256i v) {
    if constexpr (Stream)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(d), v);
    else
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), v);
}
template <bool Stream>
CYCBCR_INLINE void put16(uint8_t* d, __m128i v) {
    if constexpr (Stream)
        _mm_stream_si128(reinterpret_cast<__m128i*>(d), v);
    else
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), v);
}

template <RgbDepth D, RgbOrder O, bool Stream>
CYCBCR_INLINE void store_block(uint8_t* d, const Channels& c, __m256i alpha) {
    const __m256i first = blue_first(O) ? c.b : c.r;
    const __m256i last = blue_first(O) ? c.r : c.b;
    if constexpr (D == RgbDepth::Rgb32) {
        const Quads q =
            alpha_first(O) ? quads(alpha, first, c.g, last) : quads(first, c.g, last, alpha);
        // Halves stored as they lie: no lane-crossing shuffle.
        put16<Stream>(d, _mm256_castsi256_si128(q.lo));
        put16<Stream>(d + 16, _mm256_castsi256_si128(q.hi));
        put16<Stream>(d + 32, _mm256_extracti128_si256(q.lo, 1));
        put16<Stream>(d + 48, _mm256_extracti128_si256(q.hi, 1));
    } else if constexpr (D == RgbDepth::Rgb24) {
        avx2_rgb24::store16(d, first, c.g, last);
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
        put32<Stream>(d, pixel_order_words(w));
    }
}

template <Source S, Fetch F, RgbDepth D, RgbOrder O, bool AlphaPlane, bool Stream>
void row_a_avx2(const RowArgs& a, const ToRgbRow<int32_t>& k, PlainRow tail) {
    constexpr uint32_t lumaStep = S == Source::Packed ? 4 : 2;
    constexpr uint32_t chromaStep = S == Source::Packed ? 4 : S == Source::SemiPlanar ? 2 : 1;
    // Loads through separate packed or interleaved pointers reach a few bytes
    // into the next pair: keep one pair back for the plain tail so nothing past
    // the row's samples is read.
    constexpr uint32_t spare = S == Source::Planar || F != Fetch::Pointers ? 0 : 1;
    constexpr size_t outStep = 2 * pixel_bytes(D);
    const Consts c = consts_of(k);
    const __m256i opaque = _mm256_set1_epi16(255);
    uint8_t* dst = a.dst;
    const uint8_t *y = a.y, *cb = a.cb, *cr = a.cr, *alpha = a.alpha;
    const uint32_t pairs = a.pairs;
    uint32_t p = 0;
    for (; p + 8 + spare <= pairs; p += 8) {
        prefetch(y, 4096);
        if constexpr (S == Source::Planar) {
            prefetch(cb, 2048);
            prefetch(cr, 2048);
        }
        const Block blk = load_block<S, F>(y, cb, cr);
        store_block<D, O, Stream>(dst, compute(blk, c), AlphaPlane ? alpha_words(alpha) : opaque);
        dst += 8 * outStep;
        y += 8 * lumaStep;
        cb += 8 * chromaStep;
        cr += 8 * chromaStep;
        if constexpr (AlphaPlane) alpha += 16;
    }
    if (p == pairs) return;
    tail({dst, y, cb, cr, AlphaPlane ? alpha : nullptr, pairs - p}, k);
}

template <Source S, Fetch F, RgbDepth D>
VectorRow by_order(RgbOrder o, bool alpha, bool stream) {
    return with_order(o, [&]<RgbOrder O>() -> VectorRow {
        if (stream)
            return alpha ? row_a_avx2<S, F, D, O, true, true> : row_a_avx2<S, F, D, O, false, true>;
        return alpha ? row_a_avx2<S, F, D, O, true, false> : row_a_avx2<S, F, D, O, false, false>;
    });
}
template <Source S, Fetch F>
VectorRow by_depth(RgbDepth d, RgbOrder o, bool alpha, bool stream) {
    switch (d) {
        case RgbDepth::Rgb555:
            return by_order<S, F, RgbDepth::Rgb555>(o, alpha, stream);
        case RgbDepth::Rgb565:
            return by_order<S, F, RgbDepth::Rgb565>(o, alpha, stream);
        case RgbDepth::Rgb24:
            return by_order<S, F, RgbDepth::Rgb24>(o, alpha, stream);
        case RgbDepth::Rgb32:
            return by_order<S, F, RgbDepth::Rgb32>(o, alpha, stream);
        default:
            break;
    }
    return nullptr;
}

}  // namespace

VectorRow avx2_row_a(Source s, Format packed, bool pairedChroma, RgbDepth d, RgbOrder o,
                     bool alphaPlane, bool stream) {
    switch (s) {
        case Source::Packed:
            switch (packed) {
                case Format::UYVY:
                    return by_depth<Source::Packed, Fetch::Uyvy>(d, o, alphaPlane, stream);
                case Format::YUY2:
                    return by_depth<Source::Packed, Fetch::Yuy2>(d, o, alphaPlane, stream);
                case Format::YVYU:
                    return by_depth<Source::Packed, Fetch::Yvyu>(d, o, alphaPlane, stream);
                default:
                    return by_depth<Source::Packed, Fetch::Pointers>(d, o, alphaPlane, stream);
            }
        case Source::Planar:
            return by_depth<Source::Planar, Fetch::Pointers>(d, o, alphaPlane, stream);
        case Source::SemiPlanar:
            break;
    }
    if (pairedChroma)
        return by_depth<Source::SemiPlanar, Fetch::CbCrPairs>(d, o, alphaPlane, stream);
    return by_depth<Source::SemiPlanar, Fetch::Pointers>(d, o, alphaPlane, stream);
}

}  // namespace cycbcr::colour
