// AVX2 forms of the semi-planar converters. NV12 into v210 goes through the
// 8-bit planar packer with a chroma step of 2; NV10 into v210 packs two groups a
// step from 16-bit rows; NV12 into UYVY and the NV12p16 producers are byte and
// word interleaves. Each row's tail, less than one step, is the plain kernel's.
#include <immintrin.h>

#include "frame/export.h"
#include "platform/store_avx2.h"
#include "ycbcr10/semi_planar.h"
#include "ycbcr10/semi_planar_list.h"
#include "ycbcr10/v210.h"

namespace cycbcr::semi_planar::avx2 {
namespace {

using cycbcr::avx2::load16;
using cycbcr::avx2::load32;
using cycbcr::avx2::store32;
using cycbcr::avx2::with_store;

// Source lines are requested this far ahead of use.
constexpr size_t kAhead = 4096;

// Two v210 groups from 16-bit rows: lane 0 holds the first group's six Y (and
// six chroma) words in words 0-5, lane 1 the second group's in words 2-7, so that
// every load ends with the pair's 24 bytes. The words are picked into place per
// lane: each v210 word's first and second samples as the 16-bit halves of a
// dword (a + b * 1024 through one multiply-add), its third in the upper half,
// shifted on by 4 to bit 20.
inline __m256i nv10_pair_to_v210(const uint8_t* y, const uint8_t* c) {
    const __m256i mask = _mm256_set1_epi16(0x3FF);
    const __m256i vy = _mm256_and_si256(
        _mm256_inserti128_si256(_mm256_castsi128_si256(load16(y)), load16(y + 8), 1), mask);
    const __m256i vc = _mm256_and_si256(
        _mm256_inserti128_si256(_mm256_castsi128_si256(load16(c)), load16(c + 8), 1), mask);
    // Words Cb0 Y0 | Y1 Cb1 | Cr1 Y3 | Y4 Cr2 for the multiply-add (chroma words
    // counted in the interleaved row: Cb0 Cr0 Cb1 Cr1 Cb2 Cr2 = C0..C5).
    const __m256i abY =
        _mm256_setr_epi8(-1, -1, 0, 1, 2, 3, -1, -1, -1, -1, 6, 7, 8, 9, -1, -1,  //
                         -1, -1, 4, 5, 6, 7, -1, -1, -1, -1, 10, 11, 12, 13, -1, -1);
    const __m256i abC =
        _mm256_setr_epi8(0, 1, -1, -1, -1, -1, 4, 5, 6, 7, -1, -1, -1, -1, 10, 11,  //
                         4, 5, -1, -1, -1, -1, 8, 9, 10, 11, -1, -1, -1, -1, 14, 15);
    // Third samples Cr0, Y2, Cb2, Y5 in the upper halves.
    const __m256i cY =
        _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, 4, 5, -1, -1, -1, -1, -1, -1, 10, 11,  //
                         -1, -1, -1, -1, -1, -1, 8, 9, -1, -1, -1, -1, -1, -1, 14, 15);
    const __m256i cC =
        _mm256_setr_epi8(-1, -1, 2, 3, -1, -1, -1, -1, -1, -1, 8, 9, -1, -1, -1, -1,  //
                         -1, -1, 6, 7, -1, -1, -1, -1, -1, -1, 12, 13, -1, -1, -1, -1);
    const __m256i ab = _mm256_or_si256(_mm256_shuffle_epi8(vy, abY), _mm256_shuffle_epi8(vc, abC));
    const __m256i third = _mm256_or_si256(_mm256_shuffle_epi8(vy, cY), _mm256_shuffle_epi8(vc, cC));
    return _mm256_or_si256(_mm256_madd_epi16(ab, _mm256_set1_epi32(1 | 1024 << 16)),
                           _mm256_slli_epi32(third, 4));
}

template <Store S>
void nv10_groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t groups) {
    uint32_t g = 0;
    for (; g + 8 <= groups; g += 8) {
        prefetch(y + 12 * g, kAhead);
        prefetch(y + 12 * g, kAhead + 64);
        prefetch(c + 12 * g, kAhead);
        prefetch(c + 12 * g, kAhead + 64);
        for (uint32_t k = g; k < g + 8; k += 2)
            store32<S>(dst + 16 * k, nv10_pair_to_v210(y + 12 * k, c + 12 * k));
    }
    for (; g + 2 <= groups; g += 2)
        store32<S>(dst + 16 * g, nv10_pair_to_v210(y + 12 * g, c + 12 * g));
    plain::nv10_groups_to_v210(dst + 16 * g, y + 12 * g, c + 12 * g, groups - g);
}

// Sixteen pixel pairs: the qwords of Y and chroma reordered so that the
// in-lane byte interleave yields pairs 0-15 in order.
template <Store S>
void nv12_pairs_to_uyvy(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t pairs) {
    uint32_t k = 0;
    auto step = [&] {
        const __m256i vy = _mm256_permute4x64_epi64(load32(y + 2 * k), 0xD8);
        const __m256i vc = _mm256_permute4x64_epi64(load32(c + 2 * k), 0xD8);
        store32<S>(dst + 4 * k, _mm256_unpacklo_epi8(vc, vy));
        store32<S>(dst + 4 * k + 32, _mm256_unpackhi_epi8(vc, vy));
        k += 16;
    };
    while (k + 32 <= pairs) {
        prefetch(y + 2 * k, kAhead);
        prefetch(c + 2 * k, kAhead);
        step();
        step();
    }
    if (k + 16 <= pairs) step();
    plain::nv12_pairs_to_uyvy(dst + 4 * k, y + 2 * k, c + 2 * k, pairs - k);
}

CYCBCR_INLINE __m256i shifted(const uint8_t* p, __m128i shift) {
    return _mm256_sll_epi16(load32(p), shift);
}

template <Store S>
void widen_row(uint8_t* dst, const uint8_t* src, uint32_t n, unsigned shift) {
    const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
    uint32_t i = 0;
    for (; i + 32 <= n; i += 32) {
        prefetch(src + 2 * i, kAhead);
        store32<S>(dst + 2 * i, shifted(src + 2 * i, count));
        store32<S>(dst + 2 * i + 32, shifted(src + 2 * i + 32, count));
    }
    if (i + 16 <= n) {
        store32<S>(dst + 2 * i, shifted(src + 2 * i, count));
        i += 16;
    }
    plain::widen_row(dst + 2 * i, src + 2 * i, n - i, shift);
}

// Sixteen Cb, Cr pairs a step, interleaved as the UYVY rows are, in words.
template <Store S>
void interleave_row(uint8_t* dst, const uint8_t* cb, const uint8_t* cr, uint32_t n,
                    unsigned shift) {
    const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
    uint32_t k = 0;
    for (; k + 16 <= n; k += 16) {
        prefetch(cb + 2 * k, kAhead);
        prefetch(cr + 2 * k, kAhead);
        const __m256i b = _mm256_permute4x64_epi64(shifted(cb + 2 * k, count), 0xD8);
        const __m256i r = _mm256_permute4x64_epi64(shifted(cr + 2 * k, count), 0xD8);
        store32<S>(dst + 4 * k, _mm256_unpacklo_epi16(b, r));
        store32<S>(dst + 4 * k + 32, _mm256_unpackhi_epi16(b, r));
    }
    plain::interleave_row(dst + 4 * k, cb + 2 * k, cr + 2 * k, n - k, shift);
}

// The AVX2 forms by their pair of formats. A frame too large for the cache goes
// out with streaming stores where its rows allow.
template <Format From, Format To, auto>
unsigned int form(CYCBCR_CONVERTER_ARGS) {
    if constexpr (From == Format::NV12 && To == Format::V210) {
        const uint32_t p = source_pitch(width, srcPitch, 1);
        const uint8_t* chroma = src + size_t{p} * height;
        return cycbcr::avx2::pack_v210_u8_rows_avx2(dst, src, chroma, chroma + 1, width, height,
                                                    dstPitch, p, p, 2);
    } else if constexpr (To == Format::V210) {
        const Store s = store_for(dst, std::max(v210_row_size(width), dstPitch), height);
        const TwoPlaneRow row =
            with_store(s, []<Store S>() -> TwoPlaneRow { return nv10_groups_to_v210<S>; });
        const unsigned int n = nv_to_v210_frame(CYCBCR_CONVERTER_CALL, 2, row);
        finish_stores(s);
        return n;
    } else {
        const Store s = store_for(dst, wide_pitch(width, dstPitch), height);
        const TwoPlaneRow row =
            with_store(s, []<Store S>() -> TwoPlaneRow { return nv12_pairs_to_uyvy<S>; });
        const unsigned int n = nv12_to_uyvy_frame(CYCBCR_CONVERTER_CALL, row);
        finish_stores(s);
        return n;
    }
}

unsigned int to_nv12p16(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                        uint32_t width, uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                        unsigned shift) {
    const uint32_t dp = wide_pitch(width, dstPitch);
    const Store s = store_for(dst, dp, height + height / 2);
    const WidenRow luma = with_store(s, []<Store S>() -> WidenRow { return widen_row<S>; });
    const InterleaveRow chroma =
        with_store(s, []<Store S>() -> InterleaveRow { return interleave_row<S>; });
    const unsigned int n = planar_to_nv12p16_frame(dst, y, cb, cr, width, height, dstPitch,
                                                   srcPitch, shift, luma, chroma);
    finish_stores(s);
    return n;
}

}  // namespace
}  // namespace cycbcr::semi_planar::avx2

extern "C" {

#define CYCBCR_ENTRY cycbcr::semi_planar::avx2::form
CYCBCR_SEMI_PLANAR_AVX2_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

#define CYCBCR_NV12P16_FORM(name, form, from, shift)                                            \
    CYCBCR_API unsigned int form(uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb,       \
                                 const uint8_t* srcCr, unsigned int width, unsigned int height, \
                                 unsigned int dstPitch, unsigned int srcPitch) {                \
        return cycbcr::semi_planar::avx2::to_nv12p16(dst, srcY, srcCb, srcCr, width, height,    \
                                                     dstPitch, srcPitch, shift);                \
    }
CYCBCR_NV12P16_PRODUCERS(CYCBCR_NV12P16_FORM)
#undef CYCBCR_NV12P16_FORM

}  // extern "C"
