// AVX2 forms of the conversions out of v210 into YUY2, YVYU, cyuv, I420, YV12,
// P422 and separate 4:2:2 planes. Packed rows go through v210 groups to samples
// in UYVY order and, for the other byte orders, one shuffle of the row while it
// is in the cache; 8-bit planes are split from v210 groups directly, four or two
// groups a turn.
#include <immintrin.h>

#include <algorithm>

#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "platform/memory.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_list.h"
#include "ycbcr8/byte_order.h"

namespace cycbcr::avx2 {
namespace {

// Temporary rows: a 4K row of samples fits the stack.
using SampleRow = TempRow<16384>;

// Splits 16-bit samples in UYVY order into Y, Cb and Cr: 16 pixels a turn.
void split16_row(const uint16_t* s, uint16_t* y, uint16_t* cb, uint16_t* cr, size_t pairs) {
    const __m256i gather = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, 3, 6, 7, 10, 11, 14, 15, 0, 1, 8, 9, 4, 5, 12, 13));
    const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 6, 3, 7);
    size_t k = 0;
    for (; k + 8 <= pairs; k += 8) {
        const auto* p = reinterpret_cast<const __m256i*>(s + 4 * k);
        const __m256i a =
            _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(_mm256_loadu_si256(p), gather), order);
        const __m256i b = _mm256_permutevar8x32_epi32(
            _mm256_shuffle_epi8(_mm256_loadu_si256(p + 1), gather), order);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y + 2 * k),
                            _mm256_permute2x128_si256(a, b, 0x20));
        const __m128i ca = _mm256_extracti128_si256(a, 1);
        const __m128i cb2 = _mm256_extracti128_si256(b, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cb + k), _mm_unpacklo_epi64(ca, cb2));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cr + k), _mm_unpackhi_epi64(ca, cb2));
    }
    // Plane rows may start on an odd byte: the tail stores through memcpy.
    for (; k < pairs; ++k) {
        std::memcpy(cb + k, s + 4 * k, 2);
        std::memcpy(y + 2 * k, s + 4 * k + 1, 2);
        std::memcpy(cr + k, s + 4 * k + 2, 2);
        std::memcpy(y + 2 * k + 1, s + 4 * k + 3, 2);
    }
}

// True when some row's luma and chroma writes (width rounded up to 12 samples of
// `sample` bytes, chroma half that) land on each other: the scalar kernel's
// group-by-group order then decides the bytes, so it does the frame.
bool planes_meet(const void* y, const void* cb, const void* cr, uint32_t width, uint32_t height,
                 uint32_t dstPitch, bool full, size_t sample) {
    const size_t luma = size_t{(width + 11) / 12 * 12} * sample;
    const size_t chroma = luma / 2;
    const Rows ly = rows_down(y, dstPitch);
    const Rows lb = rows_down(cb, chroma_pitch(dstPitch)),
               lr = rows_down(cr, chroma_pitch(dstPitch));
    const ChromaRows rule = full ? ChromaRows::Own : ChromaRows::LastWriteWins;
    bool meet = false;
    walk(all_rows(height), [&](uint32_t r) {
        const uint32_t c = chroma_row(rule, r).row;
        meet = meet || ranges_overlap(ly.at(r), luma, lb.at(c), chroma) ||
               ranges_overlap(ly.at(r), luma, lr.at(c), chroma) ||
               ranges_overlap(lb.at(c), chroma, lr.at(c), chroma);
    });
    return meet;
}

// v210 to 8-bit packed rows: UYVY order straight into the destination row, or
// through a row in the cache and one shuffle into the destination.
unsigned int v210_to_packed(Format to, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Rows s = rows_down(src, std::max(v210_row_size(width), srcPitch));
    const Rows d = rows_down(dst, dstPitch);
    const uint32_t groups = unpack_groups(width);
    const size_t bytes = size_t{12} * groups;
    const GroupRow unpack = v210_groups_to_u8(false);
    SampleRow row(bytes + 32);
    uint8_t* t = row.data();
    if (to == Format::UYVY || to == Format::CYUV) {
        walk(all_rows(height), [&](uint32_t r) { unpack(d.at(r), s.at(r), groups); });
    } else {
        const ByteRow reorder =
            to == Format::YUY2 ? word_swap_row(Store::Cached) : rotate_pairs_row(1);  // to YVYU
        walk(all_rows(height), [&](uint32_t r) {
            unpack(t, s.at(r), groups);
            reorder(d.at(r), t, bytes);
        });
    }
    if (to == Format::CYUV) cycbcr_invert(dst, dstPitch, height);
    return width * height * 2;
}

// The truncated samples of a v210 load, each word's three in bytes 0, 1 and 2 of
// its dword: one multiply-high of the 16-bit halves gives bits 2..9 (v0) in byte
// 0 and bits 22..29 (v2) in byte 2, and a shift by 4 gives bits 12..19 (v1) in
// byte 1. In a lane holding one group, the Y samples then sit at bytes
// 1 4 6 9 12 14, Cb at 0 5 10 and Cr at 2 8 13.
inline __m256i truncated_samples(__m256i w) {
    const __m256i outer = _mm256_mulhi_epu16(w, _mm256_set1_epi32(0x04004000));
    return _mm256_blendv_epi8(outer, _mm256_srli_epi32(w, 4), _mm256_set1_epi32(0x0000FF00));
}

// Groups g and g + 2 of `src` in the low and high lane.
inline __m256i groups_apart(const uint8_t* src) {
    const __m256i lo =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src)));
    const __m256i hi =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 32)));
    return _mm256_blend_epi32(lo, hi, 0xF0);
}

// Four v210 groups (64 bytes) to 24 Y bytes at 0..23 of `y`, and the 12 Cb and
// 12 Cr bytes at 0..11 of the low and high lane of `c`. The groups are loaded two
// apart (0 and 2, 1 and 3) so that each lane's shuffles meet without crossing.
struct QuadSamples {
    __m256i y;
    __m256i c;
};
inline QuadSamples v210_quad_to_planes(const uint8_t* src, bool chroma) {
    const __m256i p = truncated_samples(groups_apart(src));       // groups 0 | 2
    const __m256i q = truncated_samples(groups_apart(src + 16));  // groups 1 | 3
    const __m256i yp = _mm256_setr_epi8(1, 4, 6, 9, 12, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                        1, 4, 6, 9, 12, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i yq = _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, 1, 4, 6, 9, 12, 14, -1, -1, -1, -1,
                                        -1, -1, -1, -1, -1, -1, 1, 4, 6, 9, 12, 14, -1, -1, -1, -1);
    // Lane k: Y of groups 2k and 2k + 1 at 0..11; the four lanes' dwords 0..2 joined.
    const __m256i ty = _mm256_or_si256(_mm256_shuffle_epi8(p, yp), _mm256_shuffle_epi8(q, yq));
    QuadSamples out;
    out.y = _mm256_permutevar8x32_epi32(ty, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    if (!chroma) return out;
    const __m256i cp = _mm256_setr_epi8(0, 5, 10, -1, -1, -1, -1, -1, 2, 8, 13, -1, -1, -1, -1, -1,
                                        0, 5, 10, -1, -1, -1, -1, -1, 2, 8, 13, -1, -1, -1, -1, -1);
    const __m256i cq = _mm256_setr_epi8(-1, -1, -1, 0, 5, 10, -1, -1, -1, -1, -1, 2, 8, 13, -1, -1,
                                        -1, -1, -1, 0, 5, 10, -1, -1, -1, -1, -1, 2, 8, 13, -1, -1);
    // Lane k: Cb of groups 2k, 2k + 1 at 0..5 and their Cr at 8..13; then the Cb
    // halves to the low lane, the Cr halves to the high one, and each closed up.
    const __m256i tc = _mm256_or_si256(_mm256_shuffle_epi8(p, cp), _mm256_shuffle_epi8(q, cq));
    const __m256i close =
        _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1,  //
                         0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
    out.c = _mm256_shuffle_epi8(_mm256_permute4x64_epi64(tc, 0xD8), close);
    return out;
}

// Two v210 groups (32 bytes) to 12 Y bytes at 0..11 of the low lane and 6 Cb and
// 6 Cr bytes at 0..5 and 8..13 of the high lane.
inline __m256i v210_pair_to_planes(const uint8_t* src) {
    const __m256i s = truncated_samples(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(src)));
    const __m256i stay =
        _mm256_setr_epi8(1, 4, 6, 9, 12, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                         -1,  //
                         -1, -1, -1, 0, 5, 10, -1, -1, -1, -1, -1, 2, 8, 13, -1, -1);
    const __m256i cross =
        _mm256_setr_epi8(0, 5, 10, -1, -1, -1, -1, -1, 2, 8, 13, -1, -1, -1, -1,
                         -1,  //
                         -1, -1, -1, -1, -1, -1, 1, 4, 6, 9, 12, 14, -1, -1, -1, -1);
    return _mm256_or_si256(_mm256_shuffle_epi8(s, stay),
                           _mm256_permute4x64_epi64(_mm256_shuffle_epi8(s, cross), 0x4E));
}

constexpr size_t kSourceAhead = 8192;

// One v210 row of `groups` groups (even) into 8-bit Y, Cb and Cr rows, or into
// the Y row alone. Four groups a turn store 32 Y and 16 Cb and Cr bytes, 8 and 4
// past their own, which the next turn rewrites; the last two or four groups go
// through a buffer so that nothing lands past the row.
void v210_row_to_planes8(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, size_t groups,
                         bool chroma) {
    for (; groups >= 6; groups -= 4, src += 64, y += 24, cb += 12, cr += 12) {
        // The hardware prefetcher alone leaves frames that come from DRAM at half
        // their speed here: ask for the source line 8 KiB ahead.
        prefetch(src, kSourceAhead);
        const QuadSamples t = v210_quad_to_planes(src, chroma);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y), t.y);
        if (!chroma) continue;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cb), _mm256_castsi256_si128(t.c));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cr), _mm256_extracti128_si256(t.c, 1));
    }
    alignas(32) uint8_t last[64];
    if (groups == 4) {
        const QuadSamples t = v210_quad_to_planes(src, chroma);
        _mm256_store_si256(reinterpret_cast<__m256i*>(last), t.y);
        _mm256_store_si256(reinterpret_cast<__m256i*>(last + 32), t.c);
        std::memcpy(y, last, 24);
        if (!chroma) return;
        std::memcpy(cb, last + 32, 12);
        std::memcpy(cr, last + 48, 12);
    } else if (groups == 2) {
        _mm256_store_si256(reinterpret_cast<__m256i*>(last), v210_pair_to_planes(src));
        std::memcpy(y, last, 12);
        if (!chroma) return;
        std::memcpy(cb, last + 16, 6);
        std::memcpy(cr, last + 24, 6);
    }
}

}  // namespace

void v210_to_planes8(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t width,
                     uint32_t height, uint32_t dstPitch, uint32_t srcPitch, bool full) {
    if (planes_meet(y, cb, cr, width, height, dstPitch, full, 1)) {
        Fromv210(y, cb, cr, src, width, height, dstPitch, srcPitch, full ? 1 : 0, 1);
        return;
    }
    const Rows s = rows_down(src, std::max(v210_row_size(width), srcPitch));
    const Rows ly = rows_down(y, dstPitch);
    const Rows lb = rows_down(cb, chroma_pitch(dstPitch)),
               lr = rows_down(cr, chroma_pitch(dstPitch));
    const ChromaRows rule = full ? ChromaRows::Own : ChromaRows::LastWriteWins;
    const size_t groups = unpack_groups(width);
    walk(all_rows(height), [&](uint32_t r) {
        const uint32_t c = chroma_row(rule, r).row;
        // 4:2:0: only the chroma write that remains is made.
        const bool chroma = full || chroma_write_remains(r, height);
        v210_row_to_planes8(s.at(r), ly.at(r), lb.at(c), lr.at(c), groups, chroma);
    });
}

unsigned int v210_to_planar420_8_avx2(uint8_t* dst, const uint8_t* src, uint32_t width,
                                      uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                                      bool swapCbCr) {
    const Planes p = planar_planes(swapCbCr ? Format::YV12 : Format::I420, dst, dstPitch, height);
    v210_to_planes8(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch, false);
    return width * height * 3 / 2;
}

namespace {

// The AVX2 forms by their pair of formats.
template <Format From, Format To, auto>
unsigned int unpack(CYCBCR_CONVERTER_ARGS) {
    if constexpr (is_packed422(To)) {
        return v210_to_packed(To, CYCBCR_CONVERTER_CALL);
    } else if constexpr (To == Format::P422) {
        const Planes p = planar_planes(To, dst, dstPitch, height);
        return cycbcr_v210to_planar_avx2(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch);
    } else {
        return v210_to_planar420_8_avx2(CYCBCR_CONVERTER_CALL, To == Format::YV12);
    }
}

}  // namespace
}  // namespace cycbcr::avx2

using namespace cycbcr;

void v210_tail_mixed_avx2(unsigned short* dstY, unsigned short* dstC, unsigned int* row0,
                          unsigned int* row1, unsigned int start, unsigned int end, bool average) {
    const auto* g0 = reinterpret_cast<const uint8_t*>(row0);
    const auto* g1 = reinterpret_cast<const uint8_t*>(row1);
    auto to16 = [](uint32_t v10) { return static_cast<uint16_t>(v10 << 6); };
    for (unsigned int i = start; i < end; ++i) {
        const size_t group = (i / 6) * kV210GroupBytes;
        const unsigned p = i % 6;
        dstY[i] = to16(v210_sample(g0 + group, kGroupY[p]));
        if (dstC == nullptr || (i & 1) != 0) continue;
        uint32_t cb = to16(v210_sample(g0 + group, kGroupCb[p / 2]));
        uint32_t cr = to16(v210_sample(g0 + group, kGroupCr[p / 2]));
        if (average) {
            cb = (cb + to16(v210_sample(g1 + group, kGroupCb[p / 2]))) >> 1;
            cr = (cr + to16(v210_sample(g1 + group, kGroupCr[p / 2]))) >> 1;
        }
        dstC[i] = static_cast<unsigned short>(cb);
        dstC[i + 1] = static_cast<unsigned short>(cr);
    }
}

extern "C" {

CYCBCR_API unsigned int cycbcr_v210to_planar_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                  const uint8_t* src, unsigned int width,
                                                  unsigned int height, unsigned int dstPitch,
                                                  unsigned int srcPitch) {
    avx2::v210_to_planes8(y, cb, cr, src, width, height, dstPitch, srcPitch, true);
    const uint32_t pixels = width * height;
    return pixels + pixels / 2;  // the 4:2:0 figure, as the scalar kernel gives
}

CYCBCR_API unsigned int cycbcr_v210to_planar16_avx2(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch) {
    if (avx2::planes_meet(y, cb, cr, width, height, dstPitch, true, 2))
        return Fromv210_16(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
    const Rows s = rows_down(src, std::max(v210_row_size(width), srcPitch));
    const Rows ly = rows_down(y, dstPitch);
    const Rows lb = rows_down(cb, chroma_pitch(dstPitch)),
               lr = rows_down(cr, chroma_pitch(dstPitch));
    const uint32_t groups = unpack_groups(width);
    avx2::SampleRow row(size_t{24} * groups + 32);
    auto* t = reinterpret_cast<uint16_t*>(row.data());
    walk(all_rows(height), [&](uint32_t r) {
        avx2::v210_groups_to_u16(t, s.at(r), groups);
        avx2::split16_row(t, ly.at<uint16_t>(r), lb.at<uint16_t>(r), lr.at<uint16_t>(r),
                          size_t{3} * groups);
    });
    return width * height * 4;
}

CYCBCR_API unsigned int cycbcr_012v_to_planar422_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return cycbcr_v210to_planar_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_012v_to_planar422_16_avx2(void* y, void* cb, void* cr,
                                                         const uint8_t* src, unsigned int width,
                                                         unsigned int height, unsigned int dstPitch,
                                                         unsigned int srcPitch) {
    return cycbcr_v210to_planar16_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
}

#define CYCBCR_ENTRY cycbcr::avx2::unpack
CYCBCR_V210_UNPACK_AVX2_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"
