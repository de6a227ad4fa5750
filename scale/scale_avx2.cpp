// AVX2 row kernels of the reduction by 1.5: eight groups of six source pixels a
// step into 32 luma, 16 Cb and 16 Cr bytes; the row's last groups go through
// the plain kernels, so every byte equals theirs.
#include <immintrin.h>

#include <cstring>

#include "scale/scale.h"

namespace cycbcr::scale::avx2 {
namespace {

constexpr size_t kGroupBytes = 16;

// Truncating byte average: the rounding average less the bit it rounded up.
inline __m256i average_down(__m256i a, __m256i b) {
    const __m256i up = _mm256_and_si256(_mm256_xor_si256(a, b), _mm256_set1_epi8(1));
    return _mm256_sub_epi8(_mm256_avg_epu8(a, b), up);
}

// Eight groups whose results are dwords g0..g7 of luma (four bytes each) and of
// chroma (Cb'0 Cb'1 Cr'0 Cr'1 each): stores 32 luma bytes and, when cb is
// given, 16 Cb and 16 Cr bytes.
inline void store_groups(uint8_t* y, uint8_t* cb, uint8_t* cr, __m256i luma, __m256i chroma) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(y), luma);
    if (cb == nullptr) return;
    // Per lane: the Cb pairs of its four groups, then their Cr pairs.
    const __m256i split = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15, 0,
                                           1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    const __m256i c = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(chroma, split), 0xD8);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cb), _mm256_castsi256_si128(c));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cr), _mm256_extracti128_si256(c, 1));
}

// Two UYVY groups, one a lane: the low eight bytes of each lane hold the group's
// four luma results and Cb'0 Cb'1 Cr'0 Cr'1.
inline __m256i uyvy_two_groups(const uint8_t* src) {
    const __m256i v = _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 12)), 1);
    const __m256i first =
        _mm256_setr_epi8(1, 5, 7, 11, 0, 8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1, 1, 5, 7, 11, 0,
                         8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i second =
        _mm256_setr_epi8(3, 5, 9, 11, 0, 8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1, 3, 5, 9, 11, 0,
                         8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1);
    return average_down(_mm256_shuffle_epi8(v, first), _mm256_shuffle_epi8(v, second));
}

// One v210 group a lane: the four luma results as dwords (Y'k = (a + b) >> 3,
// a single sample being taken twice) and the chroma as dwords Cb0 Cb2 Cr0 Cr2,
// each >> 2.
inline __m256i v210_luma(__m256i v) {
    const __m256i mask = _mm256_set1_epi32(0x3FF);
    const __m256i a = _mm256_and_si256(
        _mm256_srlv_epi32(v, _mm256_setr_epi32(10, 20, 10, 20, 10, 20, 10, 20)), mask);
    const __m256i w = _mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 3, 1, 1));
    const __m256i b =
        _mm256_and_si256(_mm256_srlv_epi32(w, _mm256_setr_epi32(0, 20, 0, 20, 0, 20, 0, 20)), mask);
    return _mm256_srli_epi32(_mm256_add_epi32(a, b), 3);
}
inline __m256i v210_chroma(__m256i v) {
    const __m256i w = _mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 0, 2, 0));
    const __m256i c = _mm256_srlv_epi32(w, _mm256_setr_epi32(0, 20, 20, 10, 0, 20, 20, 10));
    return _mm256_srli_epi32(_mm256_and_si256(c, _mm256_set1_epi32(0x3FF)), 2);
}
// Dwords of groups (0 1 | 2 3 | 4 5 | 6 7, a lane each) into bytes, groups in order.
inline __m256i pack_groups(__m256i g01, __m256i g23, __m256i g45, __m256i g67) {
    const __m256i p =
        _mm256_packus_epi16(_mm256_packus_epi32(g01, g23), _mm256_packus_epi32(g45, g67));
    return _mm256_permutevar8x32_epi32(p, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

// Steps of 2 and 4: per 24 output pixels, four vectors of luma results (three
// valid dwords a lane, outputs in lane order) and four of chroma results
// (dwords Cb Cb Cb Cr Cr Cr - -); stores 24 luma and, when cb is given, 12 Cb
// and 12 Cr bytes.
inline __m256i ordered_bytes(const __m256i (&v)[4]) {
    const __m256i p =
        _mm256_packus_epi16(_mm256_packus_epi32(v[0], v[1]), _mm256_packus_epi32(v[2], v[3]));
    return _mm256_permutevar8x32_epi32(p, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}
inline void store12(uint8_t* d, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d), v);
    const int last = _mm_cvtsi128_si32(_mm_srli_si128(v, 8));
    std::memcpy(d + 8, &last, 4);
}
inline void store_step24(uint8_t* y, uint8_t* cb, uint8_t* cr, const __m256i (&luma)[4],
                         const __m256i (&chroma)[4]) {
    const __m256i three = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,
                                           0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m256i l = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(ordered_bytes(luma), three),
                                                  _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(l));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(y + 16), _mm256_extracti128_si256(l, 1));
    if (cb == nullptr) return;
    // Eight bytes a chroma vector: Cb Cb Cb Cr Cr Cr - -; lane 0 holds vectors
    // 0 and 1, lane 1 vectors 2 and 3.
    const __m256i c = ordered_bytes(chroma);
    const __m256i toCb =
        _mm256_setr_epi8(0, 1, 2, 8, 9, 10, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                         -1, -1, 0, 1, 2, 8, 9, 10, -1, -1, -1, -1);
    const __m256i toCr =
        _mm256_setr_epi8(3, 4, 5, 11, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                         -1, -1, -1, 3, 4, 5, 11, 12, 13, -1, -1, -1, -1);
    const __m256i b = _mm256_shuffle_epi8(c, toCb), r = _mm256_shuffle_epi8(c, toCr);
    store12(cb, _mm_or_si128(_mm256_castsi256_si128(b), _mm256_extracti128_si256(b, 1)));
    store12(cr, _mm_or_si128(_mm256_castsi256_si128(r), _mm256_extracti128_si256(r, 1)));
}

// Samples picked from words: each dword the field at `shift` of the word it holds.
inline __m256i fields(__m256i words, __m256i shift) {
    return _mm256_and_si256(_mm256_srlv_epi32(words, shift), _mm256_set1_epi32(0x3FF));
}
// Luma results from the words of the first pixels (a) and of their pair
// partners (b): averages on chroma rows, a's own samples elsewhere.
inline __m256i luma_results(__m256i a, __m256i b, bool chroma) {
    return chroma ? _mm256_srli_epi32(_mm256_add_epi32(a, b), 3) : _mm256_srli_epi32(a, 2);
}

// Step 2: two groups (twelve pixels) a vector give output pixels 0, 1, 2 (pairs
// Y0 Y1, Y2 Y3, Y4 Y5) of each group and the chroma of pairs 0, 2 (first group)
// and 1 (second).
inline void step2_chunk(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src) {
    __m256i luma[4], chroma[4];
    for (int i = 0; i < 4; ++i) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 32 * i));
        const __m256i a = fields(_mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 3, 1, 0)),
                                 _mm256_setr_epi32(10, 20, 0, 0, 10, 20, 0, 0));
        const __m256i b = fields(_mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 3, 2, 1)),
                                 _mm256_setr_epi32(0, 10, 20, 0, 0, 10, 20, 0));
        luma[i] = luma_results(a, b, cb != nullptr);
        chroma[i] = _mm256_srli_epi32(
            fields(_mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 2, 5, 0, 3, 6, 0, 0)),
                   _mm256_setr_epi32(0, 20, 10, 20, 10, 0, 0, 0)),
            2);
    }
    store_step24(y, cb, cr, luma, chroma);
}

// Step 4: four groups (24 pixels, two vectors) give output pixels on source
// pixels 0, 4 (first group) and 8 (second) of each two groups, and the chroma
// of pairs 0, 4 and 8 (groups 0, 1, 2).
inline void step4_chunk(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src) {
    __m256i luma[4], chroma[4];
    for (int i = 0; i < 4; ++i) {
        const auto* s = reinterpret_cast<const __m256i*>(src + 64 * i);
        const __m256i v0 = _mm256_loadu_si256(s), v1 = _mm256_loadu_si256(s + 1);
        const __m256i pa = _mm256_setr_epi32(0, 3, 5, 0, 0, 3, 5, 0);
        const __m256i pb = _mm256_setr_epi32(1, 3, 6, 0, 1, 3, 6, 0);
        const __m256i wa = _mm256_blend_epi32(_mm256_permutevar8x32_epi32(v0, pa),
                                              _mm256_permutevar8x32_epi32(v1, pa), 0xF0);
        const __m256i wb = _mm256_blend_epi32(_mm256_permutevar8x32_epi32(v0, pb),
                                              _mm256_permutevar8x32_epi32(v1, pb), 0xF0);
        luma[i] =
            luma_results(fields(wa, _mm256_setr_epi32(10, 0, 20, 0, 10, 0, 20, 0)),
                         fields(wb, _mm256_setr_epi32(0, 20, 10, 0, 0, 20, 10, 0)), cb != nullptr);
        const __m256i wc = _mm256_blend_epi32(
            _mm256_permutevar8x32_epi32(v0, _mm256_setr_epi32(0, 5, 0, 0, 6, 0, 0, 0)),
            _mm256_permutevar8x32_epi32(v1, _mm256_setr_epi32(0, 0, 2, 0, 0, 3, 0, 0)), 0x24);
        chroma[i] = _mm256_srli_epi32(fields(wc, _mm256_setr_epi32(0, 10, 20, 20, 0, 10, 0, 0)), 2);
    }
    store_step24(y, cb, cr, luma, chroma);
}

}  // namespace

void v210_step_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                   uint32_t count, SampleGroups unpack) {
    uint32_t i = 0;
    // 24 output pixels a step, from 8 (step 2) or 16 (step 4) whole groups.
    if (step == 2 || step == 4)
        for (; i + 24 <= count; i += 24) {
            const uint8_t* s = src + kGroupBytes * size_t{step * i / 6};
            uint8_t* b = cb ? cb + i / 2 : nullptr;
            uint8_t* r = cr ? cr + i / 2 : nullptr;
            if (step == 2)
                step2_chunk(y + i, b, r, s);
            else
                step4_chunk(y + i, b, r, s);
        }
    plain::v210_step_row(y + i, cb ? cb + i / 2 : nullptr, cr ? cr + i / 2 : nullptr,
                         src + kGroupBytes * size_t{step * i / 6}, step, count - i, unpack);
}

void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups) {
    uint32_t g = 0;
    // Each group is loaded as 16 bytes: keep one more group after the step.
    for (; g + 9 <= groups; g += 8) {
        const uint8_t* s = src + 12 * size_t{g};
        const __m256i r02 = _mm256_unpacklo_epi64(uyvy_two_groups(s), uyvy_two_groups(s + 24));
        const __m256i r46 = _mm256_unpacklo_epi64(uyvy_two_groups(s + 48), uyvy_two_groups(s + 72));
        // r02 dwords: g0Y g0C g2Y g2C | g1Y g1C g3Y g3C; r46 likewise for 4..7.
        const __m256i order = _mm256_setr_epi32(0, 4, 2, 6, 1, 5, 3, 7);
        const __m256i a = _mm256_permutevar8x32_epi32(r02, order);
        const __m256i b = _mm256_permutevar8x32_epi32(r46, order);
        store_groups(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                     cr ? cr + 2 * size_t{g} : nullptr, _mm256_permute2x128_si256(a, b, 0x20),
                     _mm256_permute2x128_si256(a, b, 0x31));
    }
    plain::uyvy_row_1_5(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                        cr ? cr + 2 * size_t{g} : nullptr, src + 12 * size_t{g}, groups - g);
}

void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups) {
    uint32_t g = 0;
    for (; g + 8 <= groups; g += 8) {
        const auto* s = reinterpret_cast<const __m256i*>(src + 16 * size_t{g});
        const __m256i v0 = _mm256_loadu_si256(s), v1 = _mm256_loadu_si256(s + 1);
        const __m256i v2 = _mm256_loadu_si256(s + 2), v3 = _mm256_loadu_si256(s + 3);
        const __m256i luma =
            pack_groups(v210_luma(v0), v210_luma(v1), v210_luma(v2), v210_luma(v3));
        const __m256i chroma = cb == nullptr ? luma
                                             : pack_groups(v210_chroma(v0), v210_chroma(v1),
                                                           v210_chroma(v2), v210_chroma(v3));
        store_groups(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                     cr ? cr + 2 * size_t{g} : nullptr, luma, chroma);
    }
    plain::v210_row_1_5(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                        cr ? cr + 2 * size_t{g} : nullptr, src + 16 * size_t{g}, groups - g);
}

}  // namespace cycbcr::scale::avx2
