// AVX2 twins of the v210 <-> 8-bit entries. Packed rows go through v210 groups
// to samples in UYVY order (or back) and a byte order change in the row while it
// is in the cache; 8-bit planes are split from, or packed into, v210 groups
// directly, four or two groups a turn.
#include <immintrin.h>

#include <type_traits>

#include "frame/export.h"
#include "platform/memory.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_convert.h"
#include "ycbcr8/byte_order.h"
#include "ycbcr8/packed_planar.h"
#include "ycbcr8/packed_planar_wrappers.h"

namespace cycbcr::detail {
namespace {

uint32_t max_u32(uint32_t a, uint32_t b) {
    return a > b ? a : b;
}
// Groups the unpackers write per row: the width rounded up to 12 pixels.
uint32_t unpack_groups(uint32_t width) {
    return (width + 11) / 12 * 2;
}

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

// UYVY-ordered bytes from Y and interleaved CbCr (Cr one byte after Cb).
void merge_interleaved_row(uint8_t* d, const uint8_t* y, const uint8_t* c, size_t pairs) {
    size_t k = 0;
    for (; k + 8 <= pairs; k += 8) {
        const __m128i vy = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 2 * k));
        const __m128i vc = _mm_loadu_si128(reinterpret_cast<const __m128i*>(c + 2 * k));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * k), _mm_unpacklo_epi8(vc, vy));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * k + 16), _mm_unpackhi_epi8(vc, vy));
    }
    for (; k < pairs; ++k) {
        d[4 * k] = c[2 * k];
        d[4 * k + 1] = y[2 * k];
        d[4 * k + 2] = c[2 * k + 1];
        d[4 * k + 3] = y[2 * k + 1];
    }
}

// Asks for the cache line `ahead` bytes past `p`. The address is only a hint: it
// may lie past the frame (prefetches do not fault), so it is formed as a number.
void prefetch(const void* p, size_t ahead) {
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<uintptr_t>(p) + ahead),
                 _MM_HINT_T0);
}

// True when some row's luma and chroma writes (width rounded up to 12 samples of
// `sample` bytes, chroma half that) land on each other: the scalar kernel's
// group-by-group order then decides the bytes, so it does the frame.
bool rows_overlap(const void* y, const void* cb, const void* cr, uint32_t width, uint32_t height,
                  uint32_t dstPitch, bool full, size_t sample) {
    const size_t luma = size_t{(width + 11) / 12 * 12} * sample;
    const size_t chroma = luma / 2;
    auto meet = [](uintptr_t a, size_t an, uintptr_t b, size_t bn) {
        return a < b + bn && b < a + an;
    };
    const auto y0 = reinterpret_cast<uintptr_t>(y);
    const auto b0 = reinterpret_cast<uintptr_t>(cb);
    const auto r0 = reinterpret_cast<uintptr_t>(cr);
    for (uint32_t r = 0; r < height; ++r) {
        const uintptr_t ly = y0 + uintptr_t{r} * dstPitch;
        const uintptr_t c = uintptr_t{full ? r : r / 2} * (dstPitch / 2);
        if (meet(ly, luma, b0 + c, chroma) || meet(ly, luma, r0 + c, chroma) ||
            meet(b0 + c, chroma, r0 + c, chroma))
            return true;
    }
    return false;
}

// v210 to 8-bit packed rows: UYVY order straight into the destination row, or
// through a row in the cache and one shuffle into the destination.
unsigned int v210_to_packed(Packed to, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const uint32_t sp = max_u32(v210_row_bytes(width), srcPitch);
    const uint32_t groups = unpack_groups(width);
    const size_t bytes = size_t{12} * groups;
    SampleRow row(bytes + 32);
    uint8_t* t = row.data();
    for (uint32_t r = 0; r < height; ++r) {
        uint8_t* d = dst + static_cast<size_t>(r) * dstPitch;
        const uint8_t* s = src + static_cast<size_t>(r) * sp;
        if (to == Packed::UYVY || to == Packed::CYUV) {
            v210_groups_to_u8_avx2(d, s, groups, false);
            continue;
        }
        v210_groups_to_u8_avx2(t, s, groups, false);
        if (to == Packed::YUY2)
            word_swap_row_avx2(d, t, bytes, false);
        else
            rotate_pairs_row_avx2(d, t, bytes / 4, 1, false);  // to YVYU
    }
    if (to == Packed::CYUV) cycbcr_invert(dst, dstPitch, height);
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

// v210 to 8-bit planes; chroma row r (4:2:2) or r / 2 (4:2:0) at dstPitch / 2.
void v210_to_planes8(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t width,
                     uint32_t height, uint32_t dstPitch, uint32_t srcPitch, bool full) {
    if (rows_overlap(y, cb, cr, width, height, dstPitch, full, 1)) {
        Fromv210(y, cb, cr, src, width, height, dstPitch, srcPitch, full ? 1 : 0, 1);
        return;
    }
    const uint32_t sp = max_u32(v210_row_bytes(width), srcPitch);
    const size_t groups = unpack_groups(width);
    for (uint32_t r = 0; r < height; ++r) {
        const size_t c = static_cast<size_t>(full ? r : r / 2) * (dstPitch / 2);
        // 4:2:0: the odd row's chroma is the one that remains, so an even row
        // writes its chroma only when it is the last row.
        const bool chroma = full || (r & 1) != 0 || r + 1 == height;
        v210_row_to_planes8(src + static_cast<size_t>(r) * sp,
                            y + static_cast<size_t>(r) * dstPitch, cb + c, cr + c, groups, chroma);
    }
}

// Two groups of 8-bit planar samples into v210 (32 bytes), one lane per group,
// with no shuffle spent on gathering them: Y, Cb and Cr are loaded so that in
// each lane every dword holds one plane's samples, and two dword blends make the
// lane. Then the UYVY packer's arithmetic: each word's a << 2 | b << 12 through
// one multiply-add of 16-bit halves, and c placed at bit 16 and shifted by 6.
// `ab` and `c` pick each word's samples (UYVY order: Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3
// Cb2 Y4 Cr2 Y5) from where the loads left them.
inline __m256i pack_planar_lanes(__m256i m, __m256i ab, __m256i c) {
    const __m256i weights = _mm256_set1_epi32(4 | (4096 << 16));
    return _mm256_or_si256(_mm256_madd_epi16(_mm256_shuffle_epi8(m, ab), weights),
                           _mm256_slli_epi32(_mm256_shuffle_epi8(m, c), 6));
}

inline __m256i bytes16_both_lanes(const uint8_t* p) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

inline __m256i dword_all_lanes(const uint8_t* p) {
    int32_t v;
    std::memcpy(&v, p, 4);
    return _mm256_set1_epi32(v);
}

// The pair at y[0..11], cb[0..5], cr[0..5], reading y[0..15] and cb[0..6],
// cr[0..6]. Both lanes hold y[0..15] (group 0's Y in dwords 0-1, group 1's in
// 1-2); cb[0..3] and cr[0..3] go to dwords 2 and 3 of the low lane, cb[3..6] and
// cr[3..6] to dwords 0 and 3 of the high one.
inline __m256i planar_pair_to_v210(const uint8_t* y, const uint8_t* cb, const uint8_t* cr) {
    constexpr auto dword = dword_all_lanes;
    __m256i m = bytes16_both_lanes(y);
    m = _mm256_blend_epi32(m, dword(cb), 0x04);
    m = _mm256_blend_epi32(m, dword(cb + 3), 0x10);
    m = _mm256_blend_epi32(m, dword(cr), 0x08);
    m = _mm256_blend_epi32(m, dword(cr + 3), 0x80);
    return pack_planar_lanes(
        m,
        _mm256_setr_epi8(8, -1, 0, -1, 1, -1, 9, -1, 13, -1, 3, -1, 4, -1, 14, -1,  //
                         0, -1, 6, -1, 7, -1, 1, -1, 13, -1, 9, -1, 10, -1, 14, -1),
        _mm256_setr_epi8(-1, -1, 12, -1, -1, -1, 2, -1, -1, -1, 10, -1, -1, -1, 5, -1,  //
                         -1, -1, 12, -1, -1, -1, 8, -1, -1, -1, 2, -1, -1, -1, 11, -1));
}

// The same pair with every read ending inside it, for the last pair of a row:
// y[-4..11] in both lanes (group 0's Y in dwords 1-2, group 1's in 2-3), cb[0..3]
// and cr[0..3] in dwords 0 and 3 of the low lane, cb[2..5] and cr[2..5] in dwords
// 0 and 1 of the high one.
inline __m256i planar_pair_at_end(const uint8_t* y, const uint8_t* cb, const uint8_t* cr) {
    constexpr auto dword = dword_all_lanes;
    __m256i m = bytes16_both_lanes(y - 4);
    m = _mm256_blend_epi32(m, dword(cb), 0x01);
    m = _mm256_blend_epi32(m, dword(cb + 2), 0x10);
    m = _mm256_blend_epi32(m, dword(cr), 0x08);
    m = _mm256_blend_epi32(m, dword(cr + 2), 0x20);
    return pack_planar_lanes(
        m,
        _mm256_setr_epi8(0, -1, 4, -1, 5, -1, 1, -1, 13, -1, 7, -1, 8, -1, 14, -1,  //
                         1, -1, 10, -1, 11, -1, 2, -1, 6, -1, 13, -1, 14, -1, 7, -1),
        _mm256_setr_epi8(-1, -1, 12, -1, -1, -1, 6, -1, -1, -1, 2, -1, -1, -1, 9, -1,  //
                         -1, -1, 5, -1, -1, -1, 12, -1, -1, -1, 3, -1, -1, -1, 15, -1));
}

// The same pair with three loads and two blends, for pairs with 13 chroma bytes
// before them and after them. inner_chroma() takes cb[-9..6] in both lanes
// (cb[0..2] in dword 2 of the low lane, cb[3..5] in dword 3 of the high one) and
// cr[-13..18] across the lanes (cr[0..2] in dword 3 of the low lane, cr[3..5] in
// dword 0 of the high one); planar_pair_inner() adds y[0..15] in both lanes
// (group 0's Y in dwords 0-1, group 1's in 1-2). Two rows that share a chroma
// row share the first step.
inline __m256i inner_chroma(const uint8_t* cb, const uint8_t* cr) {
    return _mm256_blend_epi32(bytes16_both_lanes(cb - 9),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cr - 13)), 0x18);
}
inline __m256i planar_pair_inner(const uint8_t* y, __m256i chroma) {
    return pack_planar_lanes(
        _mm256_blend_epi32(bytes16_both_lanes(y), chroma, 0x9C),
        _mm256_setr_epi8(9, -1, 0, -1, 1, -1, 10, -1, 14, -1, 3, -1, 4, -1, 15, -1,  //
                         12, -1, 6, -1, 7, -1, 13, -1, 1, -1, 9, -1, 10, -1, 2, -1),
        _mm256_setr_epi8(-1, -1, 13, -1, -1, -1, 2, -1, -1, -1, 11, -1, -1, -1, 5, -1,  //
                         -1, -1, 0, -1, -1, -1, 8, -1, -1, -1, 14, -1, -1, -1, 11, -1));
}

// A row of one or two groups: the samples copied out, packed as a whole pair, and
// only the row's own words copied back.
void planar_groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                           uint32_t groups) {
    alignas(32) uint8_t ly[16] = {}, lcb[8] = {}, lcr[8] = {}, out[32];
    std::memcpy(ly, y, 6 * groups);
    std::memcpy(lcb, cb, 3 * groups);
    std::memcpy(lcr, cr, 3 * groups);
    _mm256_store_si256(reinterpret_cast<__m256i*>(out), planar_pair_to_v210(ly, lcb, lcr));
    std::memcpy(dst, out, 16 * groups);
}

// One row of `groups` groups from 8-bit planes into v210, or two rows (Two) with
// the same chroma row, reading nothing outside the rows' 6 * groups Y and
// 3 * groups Cb and Cr bytes: the inner pairs take the cheaper loads, the first
// three pairs and the last ones the four-load forms. Unless Out is Cached the
// pairs go out with streaming stores, whole (Stream32: rows 32-byte aligned) or
// in halves (Stream16: rows 16-byte aligned); the caller fences.
enum class Out { Cached, Stream32, Stream16 };
template <bool Two, Out Store>
void planar_rows_to_v210(uint8_t* d0, uint8_t* d1, const uint8_t* y0, const uint8_t* y1,
                         const uint8_t* cb, const uint8_t* cr, uint32_t groups, size_t ahead) {
    uint32_t g = 0;
    auto store_high = [](uint8_t* d, __m256i v) {
        if constexpr (Store == Out::Cached)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_extracti128_si256(v, 1));
        else
            _mm_stream_si128(reinterpret_cast<__m128i*>(d), _mm256_extracti128_si256(v, 1));
    };
    auto store = [&](uint8_t* d, __m256i v) {
        if constexpr (Store == Out::Stream32) {
            _mm256_stream_si256(reinterpret_cast<__m256i*>(d), v);
        } else if constexpr (Store == Out::Stream16) {
            _mm_stream_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(v));
            store_high(d + 16, v);
        } else {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), v);
        }
    };
    auto edge = [&] {
        store(d0 + 16 * g, planar_pair_to_v210(y0 + 6 * g, cb + 3 * g, cr + 3 * g));
        if constexpr (Two)
            store(d1 + 16 * g, planar_pair_to_v210(y1 + 6 * g, cb + 3 * g, cr + 3 * g));
        g += 2;
    };
    auto inner = [&] {
        const __m256i c = inner_chroma(cb + 3 * g, cr + 3 * g);
        store(d0 + 16 * g, planar_pair_inner(y0 + 6 * g, c));
        if constexpr (Two) store(d1 + 16 * g, planar_pair_inner(y1 + 6 * g, c));
        g += 2;
    };
    while (g < 6 && groups - g >= 4) edge();
    // Four pairs a turn (48 Y and 24 chroma bytes of each row), moving pointers
    // rather than indexing, with the Y lines `ahead` bytes on and the chroma
    // lines half that requested.
    if (groups - g >= 13) {
        const size_t turns = (groups - g - 5) / 8;
        const uint8_t *ly0 = y0 + 6 * g, *ly1 = Two ? y1 + 6 * g : nullptr;
        const uint8_t *lb = cb + 3 * g, *lr = cr + 3 * g;
        uint8_t *ld0 = d0 + 16 * g, *ld1 = Two ? d1 + 16 * g : nullptr;
        for (size_t t = 0; t < turns; ++t) {
            prefetch(ly0, ahead);
            if constexpr (Two) prefetch(ly1, ahead);
            prefetch(lb, ahead / 2);
            prefetch(lr, ahead / 2);
            for (int k = 0; k < 4; ++k) {
                const __m256i c = inner_chroma(lb + 6 * k, lr + 6 * k);
                store(ld0 + 32 * k, planar_pair_inner(ly0 + 12 * k, c));
                if constexpr (Two) store(ld1 + 32 * k, planar_pair_inner(ly1 + 12 * k, c));
            }
            ly0 += 48;
            lb += 24;
            lr += 24;
            ld0 += 128;
            if constexpr (Two) {
                ly1 += 48;
                ld1 += 128;
            }
        }
        g += static_cast<uint32_t>(8 * turns);
    }
    while (groups - g >= 7) inner();
    while (groups - g >= 4) edge();
    if (groups - g == 3) edge();
    if (g == 0) {  // rows of one or two groups
        planar_groups_to_v210(d0, y0, cb, cr, groups);
        if constexpr (Two) planar_groups_to_v210(d1, y1, cb, cr, groups);
        return;
    }
    // The last pair's reads end with the row. A single last group is packed with
    // the group before it, and only its own half is stored.
    if (groups - g == 2) {
        store(d0 + 16 * g, planar_pair_at_end(y0 + 6 * g, cb + 3 * g, cr + 3 * g));
        if constexpr (Two)
            store(d1 + 16 * g, planar_pair_at_end(y1 + 6 * g, cb + 3 * g, cr + 3 * g));
    } else if (groups - g == 1) {
        const uint32_t p = g - 1;
        store_high(d0 + 16 * g, planar_pair_at_end(y0 + 6 * p, cb + 3 * p, cr + 3 * p));
        if constexpr (Two)
            store_high(d1 + 16 * g, planar_pair_at_end(y1 + 6 * p, cb + 3 * p, cr + 3 * p));
    }
}

// 8-bit planes into v210 rows at dstPitch (at least v210_row_bytes(width)): luma
// row r at y + r * lumaPitch, chroma row r (full) or r / 2 at chromaPitch. Rows
// that share a chroma row are done together.
void planes_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                    uint32_t width, uint32_t height, uint32_t dstPitch, uint32_t lumaPitch,
                    uint32_t chromaPitch, bool full) {
    const uint32_t dp = max_u32(v210_row_bytes(width), dstPitch);
    const uint32_t groups = (width + 5) / 6;
    // A frame too large to stay in the cache between calls goes out with
    // streaming stores when its rows are 16-byte aligned, and has its source
    // lines requested far ahead of use; a smaller one near (a far request then
    // only crowds out lines still to be used).
    const bool large = static_cast<size_t>(dp) * height >= kStreamBytes;
    const size_t ahead = large ? 16384 : 4096;
    const uintptr_t align = reinterpret_cast<uintptr_t>(dst) | dp;
    const Out out = !large || (align & 15) != 0 ? Out::Cached
                    : (align & 31) != 0         ? Out::Stream16
                                                : Out::Stream32;
    using Rows = void (*)(uint8_t*, uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                          const uint8_t*, uint32_t, size_t);
    auto rows = [out](auto two) -> Rows {
        constexpr bool kTwo = decltype(two)::value;
        switch (out) {
            case Out::Stream32:
                return planar_rows_to_v210<kTwo, Out::Stream32>;
            case Out::Stream16:
                return planar_rows_to_v210<kTwo, Out::Stream16>;
            default:
                return planar_rows_to_v210<kTwo, Out::Cached>;
        }
    };
    const Rows one = rows(std::false_type{});
    const Rows two = rows(std::true_type{});
    for (uint32_t r = 0; r < height;) {
        const size_t c = static_cast<size_t>(full ? r : r / 2) * chromaPitch;
        uint8_t* d = dst + static_cast<size_t>(r) * dp;
        const uint8_t* ly = y + static_cast<size_t>(r) * lumaPitch;
        if (full || r + 1 == height) {
            one(d, nullptr, ly, nullptr, cb + c, cr + c, groups, ahead);
            r += 1;
        } else {
            two(d, d + dp, ly, ly + lumaPitch, cb + c, cr + c, groups, ahead);
            r += 2;
        }
    }
    if (out != Out::Cached) _mm_sfence();
}

// 8-bit rows in UYVY order into v210: the row builder fills `t` with the
// ceil(width / 6) groups of row r.
template <class RowBuilder>
unsigned int pack_rows(uint8_t* dst, uint32_t width, uint32_t height, uint32_t dstPitch,
                       RowBuilder&& build) {
    const uint32_t rowBytes = v210_row_bytes(width);
    const uint32_t dp = max_u32(rowBytes, dstPitch);
    const uint32_t groups = (width + 5) / 6;
    SampleRow row(size_t{12} * groups + 32);
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* t = build(r, row.data(), groups);
        uyvy_groups_to_v210_avx2(dst + static_cast<size_t>(r) * dp, t, groups);
    }
    return height * rowBytes;
}

// Packed 8-bit into v210 with the scalar packer's row rule: rows at r * srcPitch,
// or running on by whole groups when srcPitch == 2 * width.
unsigned int packed_to_v210(Packed from, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const size_t step = srcPitch == 2 * width ? size_t{12} * ((width + 5) / 6) : srcPitch;
    const unsigned int n =
        pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
            const uint8_t* s = src + r * step;
            const size_t bytes = size_t{12} * groups;
            if (from == Packed::CYUV) return s;
            if (from == Packed::YVYU)
                rotate_pairs_row_avx2(t, s, bytes / 4, 3, false);
            else
                word_swap_row_avx2(t, s, bytes, false);
            return const_cast<const uint8_t*>(t);
        });
    if (from == Packed::CYUV) cycbcr_invert(dst, dstPitch, height);
    return n;
}

// Planar 8-bit into v210 with the scalar packer's rule: planes found by srcPitch,
// rows read as tightly packed (luma width, chroma width / 2 bytes apart).
unsigned int planar_to_v210(Planar from, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Planes p = planes_of(from, const_cast<uint8_t*>(src), srcPitch, height);
    planes_to_v210(dst, p.y, p.cb, p.cr, width, height, dstPitch, width, width / 2,
                   from == Planar::P422);
    return height * v210_row_bytes(width);
}

}  // namespace

unsigned int v210_to_planar420_8_avx2(uint8_t* dst, const uint8_t* src, uint32_t width,
                                      uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                                      bool swapCbCr) {
    const Planes p = planes_of(swapCbCr ? Planar::YV12 : Planar::I420, dst, dstPitch, height);
    v210_to_planes8(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch, false);
    return width * height * 3 / 2;
}

unsigned int pack_v210_u8_rows_avx2(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                    const uint8_t* cr, uint32_t width, uint32_t height,
                                    uint32_t dstPitch, uint32_t lumaPitch, uint32_t chromaPitch,
                                    uint32_t chromaStep) {
    if (chromaStep == 1) {
        planes_to_v210(dst, y, cb, cr, width, height, dstPitch, lumaPitch, chromaPitch, false);
        return height * v210_row_bytes(width);
    }
    return pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
        const uint8_t* ly = y + static_cast<size_t>(r) * lumaPitch;
        const size_t c = static_cast<size_t>(r / 2) * chromaPitch;
        const size_t pairs = size_t{3} * groups;
        merge_interleaved_row(t, ly, cb + c, pairs);
        return const_cast<const uint8_t*>(t);
    });
}

}  // namespace cycbcr::detail

using namespace cycbcr::detail;

extern "C" {

CYCBCR_API unsigned int cycbcr_v210to_planar_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                  const uint8_t* src, unsigned int width,
                                                  unsigned int height, unsigned int dstPitch,
                                                  unsigned int srcPitch) {
    v210_to_planes8(y, cb, cr, src, width, height, dstPitch, srcPitch, true);
    const uint32_t pixels = width * height;
    return pixels + pixels / 2;  // the 4:2:0 figure, as the scalar kernel gives
}

CYCBCR_API unsigned int cycbcr_v210to_planar16_avx2(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch) {
    if (rows_overlap(y, cb, cr, width, height, dstPitch, true, 2))
        return Fromv210_16(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
    const uint32_t sp = max_u32(v210_row_bytes(width), srcPitch);
    const uint32_t groups = unpack_groups(width);
    SampleRow row(size_t{24} * groups + 32);
    auto* t = reinterpret_cast<uint16_t*>(row.data());
    auto at = [](void* base, size_t bytes) {
        return reinterpret_cast<uint16_t*>(static_cast<uint8_t*>(base) + bytes);
    };
    for (uint32_t r = 0; r < height; ++r) {
        v210_groups_to_u16_avx2(t, src + static_cast<size_t>(r) * sp, groups);
        const size_t c = static_cast<size_t>(r) * (dstPitch / 2);
        split16_row(t, at(y, static_cast<size_t>(r) * dstPitch), at(cb, c), at(cr, c),
                    size_t{3} * groups);
    }
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

CYCBCR_API unsigned int cycbcr_012v_to_yuy2_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_packed(Packed::YUY2, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_012v_to_yvyu_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_packed(Packed::YVYU, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_012v_to_cyuv_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_packed(Packed::CYUV, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_012v_to_i420_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_planar420_8_avx2(dst, src, width, height, dstPitch, srcPitch, false);
}
CYCBCR_API unsigned int cycbcr_012v_to_yv12_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_planar420_8_avx2(dst, src, width, height, dstPitch, srcPitch, true);
}
CYCBCR_API unsigned int cycbcr_012v_to_p422_avx2(CYCBCR_CONVERTER_ARGS) {
    const Planes p = planes_of(Planar::P422, dst, dstPitch, height);
    return cycbcr_v210to_planar_avx2(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_yuy2_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return packed_to_v210(Packed::YUY2, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_yvyu_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return packed_to_v210(Packed::YVYU, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_cyuv_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return packed_to_v210(Packed::CYUV, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_i420_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    // Rows by pitch here, unlike the scalar packer's tightly packed planes.
    const Planes p = planes_of(Planar::I420, const_cast<uint8_t*>(src), srcPitch, height);
    return pack_v210_u8_rows_avx2(dst, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch,
                                  srcPitch / 2, 1);
}
CYCBCR_API unsigned int cycbcr_yv12_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return planar_to_v210(Planar::YV12, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_p422_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return planar_to_v210(Planar::P422, dst, src, width, height, dstPitch, srcPitch);
}

}  // extern "C"
