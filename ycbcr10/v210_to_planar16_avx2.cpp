// AVX2 forms of v210 into 16-bit planes. Four groups (24 pixels) a step: each
// word's three samples are split into 16-bit slots once, then Y, Cb and Cr are
// gathered by byte shuffles within each lane. The groups are loaded two apart
// (0 and 2, 1 and 3), so that a lane holds the chroma of two neighbouring
// groups and each chroma plane takes 24 contiguous bytes a step.
#include <immintrin.h>

#include <algorithm>

#include "cycbcr.h"
#include "frame/geometry.h"
#include "platform/memory.h"
#include "ycbcr10/planar16.h"
#include "ycbcr10/v210.h"

namespace cycbcr::avx2 {
namespace {

// The source line this far ahead is asked for once a step: frames that come
// from DRAM otherwise run at a fraction of the speed the cache allows.
constexpr size_t kSourceAhead = 4096;

// A v210 load as 16-bit slots: `a` holds each word's first and third sample,
// `b` its second (and a zero). Per group (one lane):
//   a: Cb0 Cr0 Y1 Y2 Cr1 Cb2 Y4 Y5      b: Y0 - Cb1 - Y3 - Cr2 -
struct Slots {
    __m256i a, b;
};
inline Slots slots(__m256i w) {
    const __m256i low = _mm256_set1_epi32(0x3FF);
    const __m256i third = _mm256_and_si256(_mm256_srli_epi32(w, 4), _mm256_set1_epi32(0x03FF0000));
    return {_mm256_or_si256(_mm256_and_si256(w, low), third),
            _mm256_and_si256(_mm256_srli_epi32(w, 10), low)};
}
inline Slots average(Slots x, Slots y) {
    return {_mm256_srli_epi16(_mm256_add_epi16(x.a, y.a), 1),
            _mm256_srli_epi16(_mm256_add_epi16(x.b, y.b), 1)};
}
// Two 16-byte groups into the low and high lane.
inline __m256i two_groups(const uint8_t* lo, const uint8_t* hi) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lo))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(hi)), 1);
}
inline __m256i gather(Slots s, __m256i fromA, __m256i fromB) {
    return _mm256_or_si256(_mm256_shuffle_epi8(s.a, fromA), _mm256_shuffle_epi8(s.b, fromB));
}
inline __m256i lane_mask(char b0, char b1, char b2, char b3, char b4, char b5, char b6, char b7,
                         char b8, char b9, char b10, char b11, char b12, char b13, char b14,
                         char b15) {
    return _mm256_broadcastsi128_si256(
        _mm_setr_epi8(b0, b1, b2, b3, b4, b5, b6, b7, b8, b9, b10, b11, b12, b13, b14, b15));
}

template <unsigned Shift>
inline __m256i widen(__m256i v) {
    if constexpr (Shift == 0) return v;
    return _mm256_slli_epi16(v, Shift);
}

// Six samples a group, 12 bytes at 0..11 of each lane; p holds groups 0 and 2,
// q groups 1 and 3. Each store takes 16 bytes and the next one covers the 4
// past its group; with Exact the last one stops at the fourth group's end.
template <bool Exact>
inline void store_six(uint8_t* d, __m256i p, __m256i q) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(p));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 12), _mm256_castsi256_si128(q));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24), _mm256_extracti128_si256(p, 1));
    const __m128i last = _mm256_extracti128_si256(q, 1);
    if constexpr (Exact) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 36), last);
        const int top = _mm_cvtsi128_si32(_mm_srli_si128(last, 8));
        std::memcpy(d + 44, &top, 4);
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 36), last);
    }
}

// Twelve samples in the low 24 bytes, stored exactly.
inline void store_twelve(uint8_t* d, __m256i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(v));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d + 16), _mm256_extracti128_si256(v, 1));
}

template <unsigned Shift, PlaneChroma Chroma, bool Average, bool SecondY>
struct Kernel {
    // Groups g .. g + 3 of the step.
    template <bool Exact>
    static void step(const V210Step& s, size_t g) {
        const uint8_t* s0 = s.s0 + g * kV210GroupBytes;
        prefetch(s0, kSourceAhead);
        const Slots p0 = slots(two_groups(s0, s0 + 32));
        const Slots q0 = slots(two_groups(s0 + 16, s0 + 48));
        Slots p1{}, q1{};
        if constexpr (Average || SecondY) {
            const uint8_t* s1 = s.s1 + g * kV210GroupBytes;
            prefetch(s1, kSourceAhead);
            p1 = slots(two_groups(s1, s1 + 32));
            q1 = slots(two_groups(s1 + 16, s1 + 48));
        }
        const __m256i yA = lane_mask(-1, -1, 4, 5, 6, 7, -1, -1, 12, 13, 14, 15, -1, -1, -1, -1);
        const __m256i yB = lane_mask(0, 1, -1, -1, -1, -1, 8, 9, -1, -1, -1, -1, -1, -1, -1, -1);
        store_six<Exact>(s.y0 + 12 * g, widen<Shift>(gather(p0, yA, yB)),
                         widen<Shift>(gather(q0, yA, yB)));
        if constexpr (SecondY)
            store_six<Exact>(s.y1 + 12 * g, widen<Shift>(gather(p1, yA, yB)),
                             widen<Shift>(gather(q1, yA, yB)));
        Slots pc = p0, qc = q0;
        if constexpr (Average) {
            pc = average(p0, p1);
            qc = average(q0, q1);
        }
        if constexpr (Chroma == PlaneChroma::Half) {
            // Per group Cb0 Cb1 Cb2 at slots 0..2 and Cr0 Cr1 Cr2 at 4..6; the two
            // groups of a lane joined, closed up, and the lanes' 12 bytes joined.
            const __m256i cA = lane_mask(0, 1, -1, -1, 10, 11, -1, -1, 2, 3, 8, 9, -1, -1, -1, -1);
            const __m256i cB =
                lane_mask(-1, -1, 4, 5, -1, -1, -1, -1, -1, -1, -1, -1, 12, 13, -1, -1);
            const __m256i cp = gather(pc, cA, cB), cq = gather(qc, cA, cB);
            const __m256i close = lane_mask(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
            const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
            auto plane = [&](__m256i two) {
                return widen<Shift>(
                    _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(two, close), join));
            };
            store_twelve(s.cb + 6 * g, plane(_mm256_unpacklo_epi64(cp, cq)));
            store_twelve(s.cr + 6 * g, plane(_mm256_unpackhi_epi64(cp, cq)));
        } else {
            // Each pair's chroma on both of its pixels: six a group, like Y.
            const __m256i bA =
                lane_mask(0, 1, 0, 1, -1, -1, -1, -1, 10, 11, 10, 11, -1, -1, -1, -1);
            const __m256i bB =
                lane_mask(-1, -1, -1, -1, 4, 5, 4, 5, -1, -1, -1, -1, -1, -1, -1, -1);
            const __m256i rA = lane_mask(2, 3, 2, 3, 8, 9, 8, 9, -1, -1, -1, -1, -1, -1, -1, -1);
            const __m256i rB =
                lane_mask(-1, -1, -1, -1, -1, -1, -1, -1, 12, 13, 12, 13, -1, -1, -1, -1);
            store_six<Exact>(s.cb + 12 * g, widen<Shift>(gather(pc, bA, bB)),
                             widen<Shift>(gather(qc, bA, bB)));
            store_six<Exact>(s.cr + 12 * g, widen<Shift>(gather(pc, rA, rB)),
                             widen<Shift>(gather(qc, rA, rB)));
        }
    }

    static void row(const V210Step& s, uint32_t groups) {
        size_t g = 0;
        // Every step but the row's last leaves its overhang to the next group.
        for (; g + 4 < groups; g += 4) step<false>(s, g);
        if (g + 4 == groups) {
            step<true>(s, g);
            g += 4;
        }
        plain::v210_to_planes16_row(s, static_cast<uint32_t>(g), groups, Shift, Chroma);
    }
};

}  // namespace

void v210_to_planes16_row(const V210Step& s, uint32_t first, uint32_t groups, unsigned shift,
                          PlaneChroma chroma) {
    if (first == 0 && s.cb != nullptr) {
        const bool avg = s.s1 != nullptr, twoY = s.y1 != nullptr;
        if (chroma == PlaneChroma::Half && !avg && shift == 0)
            return Kernel<0, PlaneChroma::Half, false, false>::row(s, groups);
        if (chroma == PlaneChroma::Half && !avg && shift == 6)
            return Kernel<6, PlaneChroma::Half, false, false>::row(s, groups);
        if (chroma == PlaneChroma::Half && avg && shift == 0)
            return twoY ? Kernel<0, PlaneChroma::Half, true, true>::row(s, groups)
                        : Kernel<0, PlaneChroma::Half, true, false>::row(s, groups);
        if (chroma == PlaneChroma::Doubled && !avg && shift == 0)
            return Kernel<0, PlaneChroma::Doubled, false, false>::row(s, groups);
    }
    plain::v210_to_planes16_row(s, first, groups, shift, chroma);
}

}  // namespace cycbcr::avx2

using namespace cycbcr;

extern "C" {

CYCBCR_API unsigned int cycbcr_012v_to_yuv422p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return v210_to_planar422_16(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch, 0,
                                avx2::v210_to_planes16_row);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuv422p16_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return v210_to_planar422_16(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch, 6,
                                avx2::v210_to_planes16_row);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuv444p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return v210_to_planar444_10(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch,
                                PlaneChroma::Doubled, avx2::v210_to_planes16_row);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuv420p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int yPitch,
                                                      unsigned int chromaPitch,
                                                      unsigned int srcPitch) {
    const unsigned int count = width * height * 3;
    if (width == 0 || height == 0) return count;
    v210_to_planes16_frame({dstY, dstCb, dstCr, src, width, height, yPitch, chromaPitch,
                            std::max(v210_row_size(width), srcPitch)},
                           0, PlaneChroma::Half, true, avx2::v210_to_planes16_row);
    return count;
}

}  // extern "C"
