// The imaging library's YCbCr to RGB converters, its RGB to UYVY converters and
// channel swaps. The plain row code here defines the bytes (RGB to UYVY runs
// an SSE2 form of it, which gives the same); the AVX2 kernels
// (imaging_colour_avx2.cpp) reproduce them and hand their row tails back to it.
#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "frame/entry.h"
#include "platform/imaging.h"
#include "platform/imaging_internal.h"

namespace cycbcr::plain {

using ipp::Coefficients;
using ipp::Ipp8u;
using ipp::Matrix;
using ipp::Pixel;

namespace {

CYCBCR_INLINE Ipp8u clamp8(int32_t v) {
    return static_cast<Ipp8u>(v < 0 ? 0 : v > 255 ? 255 : v);
}

// One chroma sample's share of each channel, rounding included.
struct ChromaTerms {
    int32_t b, g, r;
};

template <Matrix M>
CYCBCR_INLINE ChromaTerms chroma_terms(int32_t cb, int32_t cr) {
    constexpr Coefficients k = coefficients(M);
    const int32_t u = cb - 128, v = cr - 128;
    return {k.bCb * u + 32768, k.gCr * v + k.gCb * u + 32768, k.rCr * v + 32768};
}

template <Matrix M, Pixel P>
CYCBCR_INLINE void put_pixel(Ipp8u* d, int32_t y, const ChromaTerms& c, Ipp8u alpha) {
    constexpr Coefficients k = coefficients(M);
    const int32_t l = k.y * (y - k.black);
    const Ipp8u b = clamp8((l + c.b) >> 16), g = clamp8((l + c.g) >> 16),
                r = clamp8((l + c.r) >> 16);
    if constexpr (P == Pixel::RGB) {
        d[0] = r, d[1] = g, d[2] = b;
    } else {
        d[0] = b, d[1] = g, d[2] = r;
        if constexpr (P == Pixel::BGRA) d[3] = alpha;
    }
}

// Where a packed pair keeps its samples: UYVY is Cb Y0 Cr Y1, YVYU Y0 Cr Y1 Cb.
struct PairAt {
    int y0, y1, cb, cr;
};
template <Format Shape>
consteval PairAt pair_at() {
    static_assert(Shape == Format::UYVY || Shape == Format::YVYU);
    return Shape == Format::UYVY ? PairAt{1, 3, 0, 2} : PairAt{0, 2, 3, 1};
}

}  // namespace

template <Matrix M, Format Shape, Pixel P>
void imaging_packed_row(const Ipp8u* src, Ipp8u* dst, size_t pairs, Ipp8u alpha) {
    constexpr PairAt at = pair_at<Shape>();
    constexpr size_t n = pixel_bytes(P);
    for (size_t i = 0; i < pairs; ++i, src += 4, dst += 2 * n) {
        const ChromaTerms c = chroma_terms<M>(src[at.cb], src[at.cr]);
        put_pixel<M, P>(dst, src[at.y0], c, alpha);
        put_pixel<M, P>(dst + n, src[at.y1], c, alpha);
    }
}

template <Matrix M, Pixel P>
void imaging_planar_rows(const Ipp8u* y0, const Ipp8u* y1, const Ipp8u* cb, const Ipp8u* cr,
                         Ipp8u* d0, Ipp8u* d1, size_t pairs, Ipp8u alpha) {
    constexpr size_t n = pixel_bytes(P);
    for (size_t i = 0; i < pairs; ++i) {
        const ChromaTerms c = chroma_terms<M>(cb[i], cr[i]);
        put_pixel<M, P>(d0 + 2 * i * n, y0[2 * i], c, alpha);
        put_pixel<M, P>(d0 + (2 * i + 1) * n, y0[2 * i + 1], c, alpha);
        put_pixel<M, P>(d1 + 2 * i * n, y1[2 * i], c, alpha);
        put_pixel<M, P>(d1 + (2 * i + 1) * n, y1[2 * i + 1], c, alpha);
    }
}

namespace {

// One pixel's Q16 sum for a set of weights, with its offset (unrounded).
CYCBCR_INLINE int32_t weighted(const ipp::Weights& w, const Ipp8u* px, int32_t offset) {
    return w.b * px[0] + w.g * px[1] + w.r * px[2] + (offset << 16);
}

template <Matrix M>
CYCBCR_INLINE Ipp8u clamped(int32_t v) {
    constexpr ipp::ForwardCoefficients k = ipp::forward_coefficients(M);
    return static_cast<Ipp8u>(v < k.low ? k.low : v > k.high ? k.high : v);
}

// The rules, a pair at a time: these define the bytes.
template <Matrix M>
void uyvy_from_bgra_pairs(const Ipp8u* src, Ipp8u* dst, size_t pairs) {
    constexpr ipp::ForwardCoefficients k = ipp::forward_coefficients(M);
    for (size_t i = 0; i < pairs; ++i, src += 8, dst += 4) {
        const Ipp8u* p0 = src;
        const Ipp8u* p1 = src + 4;
        const int32_t cb = weighted(k.cb, p0, 128) + weighted(k.cb, p1, 128);
        const int32_t cr = weighted(k.cr, p0, 128) + weighted(k.cr, p1, 128);
        dst[0] = clamped<M>((cb + 65536) >> 17);
        dst[1] = clamped<M>((weighted(k.y, p0, k.yOffset) + 32768) >> 16);
        dst[2] = clamped<M>((cr + 65536) >> 17);
        dst[3] = clamped<M>((weighted(k.y, p1, k.yOffset) + 32768) >> 16);
    }
}

// The same sums in SSE2, four pixels a vector, worked as the AVX2 kernel works
// them (imaging_colour_avx2.cpp says how), so that the levels without AVX2
// convert at a vector's pace too; the last few pairs of a row take the code
// above.
using X = __m128i;

template <ipp::WordWeights W>
CYCBCR_INLINE X exact_madd(X words) {
    static_assert(W.valid());
    constexpr int32_t even = W.operand(0), odd = W.operand(1);
    X sum = _mm_madd_epi16(words, _mm_setr_epi32(even, odd, even, odd));
    if constexpr (W.wide(0) || W.wide(2)) {
        X low = _mm_slli_epi32(words, 16);
        if constexpr (!(W.wide(0) && W.wide(2))) {
            constexpr int32_t e = W.wide(0) ? -1 : 0, o = W.wide(2) ? -1 : 0;
            low = _mm_and_si128(low, _mm_setr_epi32(e, o, e, o));
        }
        sum = _mm_add_epi32(sum, low);
    }
    if constexpr (W.wide(1) || W.wide(3)) {
        constexpr int32_t e = W.wide(1) ? -65536 : 0, o = W.wide(3) ? -65536 : 0;
        sum = _mm_add_epi32(sum, _mm_and_si128(words, _mm_setr_epi32(e, o, e, o)));
    }
    return sum;
}

// Four pixels' luma and their two pairs' Cb, Cr (Cb, Cr, Cb, Cr), rounded and
// shifted down, not yet clamped.
template <Matrix M>
CYCBCR_INLINE void uyvy_samples(X x, X& luma, X& chroma) {
    constexpr ipp::ForwardCoefficients k = ipp::forward_coefficients(M);
    const X br = _mm_and_si128(x, _mm_set1_epi32(0x00FF00FF));
    const X ga = _mm_srli_epi16(x, 8);
    // Luma's weight of G does not fit madd but is even: half of it weighs 2G.
    static_assert(k.y.g % 2 == 0 && k.y.g / 2 <= 32767);
    const X y = _mm_add_epi32(
        exact_madd<ipp::WordWeights{{k.y.b, k.y.r, k.y.b, k.y.r}}>(br),
        exact_madd<ipp::WordWeights{{k.y.g / 2, 0, k.y.g / 2, 0}}>(_mm_add_epi16(ga, ga)));
    luma = _mm_srai_epi32(_mm_add_epi32(y, _mm_set1_epi32((k.yOffset << 16) + 32768)), 16);
    const X pairBr = _mm_add_epi32(br, _mm_shuffle_epi32(br, 0xB1));
    const X pairGa = _mm_add_epi32(ga, _mm_shuffle_epi32(ga, 0xB1));
    const X c =
        _mm_add_epi32(exact_madd<ipp::WordWeights{{k.cb.b, k.cb.r, k.cr.b, k.cr.r}}>(pairBr),
                      exact_madd<ipp::WordWeights{{k.cb.g, 0, k.cr.g, 0}}>(pairGa));
    chroma = _mm_srai_epi32(_mm_add_epi32(c, _mm_set1_epi32((256 << 16) + 65536)), 17);
}

}  // namespace

template <Matrix M>
void imaging_uyvy_from_bgra_row(const Ipp8u* src, Ipp8u* dst, size_t pairs) {
    constexpr ipp::ForwardCoefficients k = ipp::forward_coefficients(M);
    size_t i = 0;
    auto load = [&](size_t at) { return _mm_loadu_si128(reinterpret_cast<const X*>(src + at)); };
    auto clamp = [&](X v) {
        if constexpr (k.low > 0) v = _mm_max_epu8(v, _mm_set1_epi8(static_cast<char>(k.low)));
        if constexpr (k.high < 255) v = _mm_min_epu8(v, _mm_set1_epi8(static_cast<char>(k.high)));
        return v;
    };
    for (; i + 8 <= pairs; i += 8) {
        X y[4], c[4];
        for (int v = 0; v < 4; ++v) uyvy_samples<M>(load(8 * i + 16 * v), y[v], c[v]);
        // 16 chroma bytes (Cb, Cr of pairs 0-7) and 16 luma bytes, interleaved.
        const X chroma =
            clamp(_mm_packus_epi16(_mm_packs_epi32(c[0], c[1]), _mm_packs_epi32(c[2], c[3])));
        const X luma =
            clamp(_mm_packus_epi16(_mm_packs_epi32(y[0], y[1]), _mm_packs_epi32(y[2], y[3])));
        _mm_storeu_si128(reinterpret_cast<X*>(dst + 4 * i), _mm_unpacklo_epi8(chroma, luma));
        _mm_storeu_si128(reinterpret_cast<X*>(dst + 4 * i + 16), _mm_unpackhi_epi8(chroma, luma));
    }
    uyvy_from_bgra_pairs<M>(src + 8 * i, dst + 4 * i, pairs - i);
}

template void imaging_uyvy_from_bgra_row<Matrix::Bt601>(const Ipp8u*, Ipp8u*, size_t);
template void imaging_uyvy_from_bgra_row<Matrix::Bt709Hdtv>(const Ipp8u*, Ipp8u*, size_t);

// The combinations the library exports.
template void imaging_packed_row<Matrix::Bt601, Format::UYVY, Pixel::BGRA>(const Ipp8u*, Ipp8u*,
                                                                           size_t, Ipp8u);
template void imaging_packed_row<Matrix::Bt709Hdtv, Format::UYVY, Pixel::BGRA>(const Ipp8u*, Ipp8u*,
                                                                               size_t, Ipp8u);
template void imaging_packed_row<Matrix::Bt709Hdtv, Format::UYVY, Pixel::BGR>(const Ipp8u*, Ipp8u*,
                                                                              size_t, Ipp8u);
template void imaging_packed_row<Matrix::Bt601, Format::YVYU, Pixel::RGB>(const Ipp8u*, Ipp8u*,
                                                                          size_t, Ipp8u);
template void imaging_planar_rows<Matrix::Bt601, Pixel::BGRA>(const Ipp8u*, const Ipp8u*,
                                                              const Ipp8u*, const Ipp8u*, Ipp8u*,
                                                              Ipp8u*, size_t, Ipp8u);
template void imaging_planar_rows<Matrix::Bt709Hdtv, Pixel::BGRA>(const Ipp8u*, const Ipp8u*,
                                                                  const Ipp8u*, const Ipp8u*,
                                                                  Ipp8u*, Ipp8u*, size_t, Ipp8u);
template void imaging_planar_rows<Matrix::Bt709Csc, Pixel::BGR>(const Ipp8u*, const Ipp8u*,
                                                                const Ipp8u*, const Ipp8u*, Ipp8u*,
                                                                Ipp8u*, size_t, Ipp8u);

}  // namespace cycbcr::plain

namespace cycbcr::ipp {
namespace {

template <Matrix M, Pixel P>
IppStatus planar_to_rgb(const Ipp8u* const src[3], const int srcStep[3], Ipp8u* dst, int dstStep,
                        IppiSize roi, Ipp8u alpha) {
    if (src == nullptr || srcStep == nullptr) return ippStsNullPtrErr;
    const void* const ptrs[] = {src[0], src[1], src[2], dst};
    if (IppStatus s = check(ptrs, roi, 2, 2, {srcStep[0], srcStep[1], srcStep[2], dstStep}))
        return s;
    PlanarColourRows rows = plain::imaging_planar_rows<M, P>;
    if (imaging_avx2())
        if (PlanarColourRows fast = avx2::imaging_planar_kernel(M, P)) rows = fast;
    const uint32_t height = static_cast<uint32_t>(roi.height) & ~1u;
    const size_t pairs = static_cast<size_t>(roi.width) / 2;
    const Rows y = rows_of(src[0], srcStep[0]), cb = rows_of(src[1], srcStep[1]),
               cr = rows_of(src[2], srcStep[2]), d = rows_of(dst, dstStep);
    for (uint32_t r = 0; r < height; r += 2)
        rows(y.at(r), y.at(r + 1), cb.at(r / 2), cr.at(r / 2), d.at(r), d.at(r + 1), pairs, alpha);
    return (roi.width | roi.height) & 1 ? ippStsDoubleSize : ippStsNoErr;
}

template <Matrix M, Format Shape, Pixel P>
IppStatus packed_to_rgb(const Ipp8u* src, int srcStep, Ipp8u* dst, int dstStep, IppiSize roi,
                        Ipp8u alpha) {
    const void* const ptrs[] = {src, dst};
    if (IppStatus s = check(ptrs, roi, 2, 1, {srcStep, dstStep})) return s;
    PackedColourRow row = plain::imaging_packed_row<M, Shape, P>;
    if (imaging_avx2())
        if (PackedColourRow fast = avx2::imaging_packed_kernel(M, Shape, P)) row = fast;
    const size_t pairs = static_cast<size_t>(roi.width) / 2;
    const Rows s = rows_of(src, srcStep), d = rows_of(dst, dstStep);
    walk(all_rows(static_cast<uint32_t>(roi.height)),
         [&](uint32_t r) { row(s.at(r), d.at(r), pairs, alpha); });
    return ippStsNoErr;
}

template <Matrix M>
IppStatus bgra_to_uyvy(const Ipp8u* src, int srcStep, Ipp8u* dst, int dstStep, IppiSize roi) {
    const void* const ptrs[] = {src, dst};
    if (IppStatus s = check(ptrs, roi, 2, 1, {srcStep, dstStep})) return s;
    PackedFromRgbRow row = plain::imaging_uyvy_from_bgra_row<M>;
    if (imaging_avx2())
        if (PackedFromRgbRow fast = avx2::imaging_uyvy_from_bgra_kernel(M)) row = fast;
    const size_t pairs = static_cast<size_t>(roi.width) / 2;
    const Rows s = rows_of(src, srcStep), d = rows_of(dst, dstStep);
    walk(all_rows(static_cast<uint32_t>(roi.height)),
         [&](uint32_t r) { row(s.at(r), d.at(r), pairs); });
    return ippStsNoErr;
}

template <int N>
IppStatus swap_channels(Ipp8u* buf, int step, IppiSize roi, const int order[N]) {
    const void* const ptrs[] = {buf, order};
    if (IppStatus s = check(ptrs, roi, 1, 1, {step})) return s;
    int from[N];
    for (int i = 0; i < N; ++i) {
        if (order[i] < 0 || order[i] >= N) return ippStsChannelOrderErr;
        from[i] = order[i];
    }
    const Rows rows = rows_of(buf, step);
    const size_t width = static_cast<size_t>(roi.width);
    walk(all_rows(static_cast<uint32_t>(roi.height)), [&](uint32_t r) {
        Ipp8u* p = rows.at(r);
        for (size_t x = 0; x < width; ++x, p += N) {
            Ipp8u old[N];
            for (int i = 0; i < N; ++i) old[i] = p[i];
            for (int i = 0; i < N; ++i) p[i] = old[from[i]];
        }
    });
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiCbYCr422ToBGR_8u_C2C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u aval) {
    return packed_to_rgb<Matrix::Bt601, Format::UYVY, Pixel::BGRA>(pSrc, srcStep, pDst, dstStep,
                                                                   roiSize, aval);
}

IppStatus ippiCbYCr422ToBGR_709HDTV_8u_C2C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                                             int dstStep, IppiSize roiSize, Ipp8u aval) {
    return packed_to_rgb<Matrix::Bt709Hdtv, Format::UYVY, Pixel::BGRA>(pSrc, srcStep, pDst, dstStep,
                                                                       roiSize, aval);
}

IppStatus ippiCbYCr422ToBGR_709HDTV_8u_C2C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                                             int dstStep, IppiSize roiSize) {
    return packed_to_rgb<Matrix::Bt709Hdtv, Format::UYVY, Pixel::BGR>(pSrc, srcStep, pDst, dstStep,
                                                                      roiSize, 0);
}

IppStatus ippiYCrCb422ToRGB_8u_C2C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize) {
    return packed_to_rgb<Matrix::Bt601, Format::YVYU, Pixel::RGB>(pSrc, srcStep, pDst, dstStep,
                                                                  roiSize, 0);
}

IppStatus ippiYCbCr420ToBGR_8u_P3C4R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u aval) {
    return planar_to_rgb<Matrix::Bt601, Pixel::BGRA>(pSrc, srcStep, pDst, dstStep, roiSize, aval);
}

IppStatus ippiYCbCr420ToBGR_709HDTV_8u_P3C4R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                             int dstStep, IppiSize roiSize, Ipp8u aval) {
    return planar_to_rgb<Matrix::Bt709Hdtv, Pixel::BGRA>(pSrc, srcStep, pDst, dstStep, roiSize,
                                                         aval);
}

IppStatus ippiYCbCr420ToBGR_709CSC_8u_P3C3R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                            int dstStep, IppiSize roiSize) {
    return planar_to_rgb<Matrix::Bt709Csc, Pixel::BGR>(pSrc, srcStep, pDst, dstStep, roiSize, 0);
}

IppStatus ippiBGRToCbYCr422_8u_AC4C2R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                      IppiSize roiSize) {
    return bgra_to_uyvy<Matrix::Bt601>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiBGRToCbYCr422_709HDTV_8u_AC4C2R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                                              int dstStep, IppiSize roiSize) {
    return bgra_to_uyvy<Matrix::Bt709Hdtv>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiSwapChannels_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   const int dstOrder[3]) {
    return swap_channels<3>(pSrcDst, srcDstStep, roiSize, dstOrder);
}

IppStatus ippiSwapChannels_8u_C4IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   const int dstOrder[4]) {
    return swap_channels<4>(pSrcDst, srcDstStep, roiSize, dstOrder);
}

}  // namespace cycbcr::ipp
