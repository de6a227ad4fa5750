// AVX2 forms of the conversions into v210 from YUY2, YVYU, cyuv, I420, YV12 and
// P422. Packed rows are brought to UYVY order in a row held in the cache and
// packed four groups a turn; 8-bit planes are packed into v210 groups directly,
// two groups a step, without a row in between.
#include <immintrin.h>

#include <algorithm>

#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "platform/store_avx2.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_list.h"
#include "ycbcr8/byte_order.h"

namespace cycbcr::avx2 {
namespace {

// Temporary rows: a 4K row of samples fits the stack.
using SampleRow = TempRow<16384>;

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
// three pairs and the last ones the four-load forms. The pairs go out as the
// frame's Store says; the caller fences.
template <bool Two, Store S>
void planar_rows_to_v210(uint8_t* d0, uint8_t* d1, const uint8_t* y0, const uint8_t* y1,
                         const uint8_t* cb, const uint8_t* cr, uint32_t groups, size_t ahead) {
    uint32_t g = 0;
    auto store_high = [](uint8_t* d, __m256i v) { store16<S>(d, _mm256_extracti128_si256(v, 1)); };
    auto store = [](uint8_t* d, __m256i v) { store32<S>(d, v); };
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

using PlanarRows = void (*)(uint8_t*, uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                            const uint8_t*, uint32_t, size_t);

// 8-bit planes into v210 rows at dstPitch (at least v210_row_bytes(width)): luma
// row r at y + r * lumaPitch, chroma row r (full) or r / 2 at chromaPitch. Rows
// that share a chroma row are done together.
void planes_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                    uint32_t width, uint32_t height, uint32_t dstPitch, uint32_t lumaPitch,
                    uint32_t chromaPitch, bool full) {
    const uint32_t dp = std::max(v210_row_size(width), dstPitch);
    const uint32_t groups = pack_groups(width);
    // A frame too large to stay in the cache between calls goes out with
    // streaming stores when its rows are 16-byte aligned, and has its source
    // lines requested far ahead of use; a smaller one near (a far request then
    // only crowds out lines still to be used).
    const Store store = store_for(dst, dp, height);
    const size_t ahead = static_cast<size_t>(dp) * height >= kStreamBytes ? 16384 : 4096;
    const PlanarRows one =
        with_store(store, []<Store S>() -> PlanarRows { return planar_rows_to_v210<false, S>; });
    const PlanarRows two =
        with_store(store, []<Store S>() -> PlanarRows { return planar_rows_to_v210<true, S>; });
    const Rows d = rows_down(dst, dp), ly = rows_down(y, lumaPitch);
    const Rows lb = rows_down(cb, chromaPitch), lr = rows_down(cr, chromaPitch);
    const ChromaRows rule = full ? ChromaRows::Own : ChromaRows::Shared;
    walk_sharing_chroma(all_rows(height), rule, [&](uint32_t r, uint32_t n) {
        const uint32_t c = chroma_row(rule, r).row;
        if (n == 1)
            one(d.at(r), nullptr, ly.at(r), nullptr, lb.at(c), lr.at(c), groups, ahead);
        else
            two(d.at(r), d.at(r + 1), ly.at(r), ly.at(r + 1), lb.at(c), lr.at(c), groups, ahead);
    });
    finish_stores(store);
}

// 8-bit rows in UYVY order into v210: the row builder fills `t` with the
// ceil(width / 6) groups of row r, or hands back the source row itself.
template <class RowBuilder>
unsigned int pack_rows(uint8_t* dst, uint32_t width, uint32_t height, uint32_t dstPitch,
                       RowBuilder&& build) {
    const uint32_t rowBytes = v210_row_size(width);
    const Rows d = rows_down(dst, std::max(rowBytes, dstPitch));
    const uint32_t groups = pack_groups(width);
    SampleRow row(size_t{12} * groups + 32);
    walk(all_rows(height),
         [&](uint32_t r) { uyvy_groups_to_v210(d.at(r), build(r, row.data(), groups), groups); });
    return height * rowBytes;
}

// Packed 8-bit into v210 with the scalar packer's row rule: rows at r * srcPitch,
// or running on by whole groups when srcPitch == 2 * width.
unsigned int packed_to_v210(Format from, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Rows s =
        rows_down(src, run_on_step(srcPitch, 2 * width, size_t{12} * pack_groups(width)));
    // cyuv rows are UYVY already; the others are brought to UYVY order first.
    const ByteRow reorder =
        from == Format::YVYU ? rotate_pairs_row(3) : word_swap_row(Store::Cached);
    const unsigned int n =
        pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
            if (from == Format::CYUV) return s.at<const uint8_t>(r);
            reorder(t, s.at(r), size_t{12} * groups);
            return const_cast<const uint8_t*>(t);
        });
    if (from == Format::CYUV) cycbcr_invert(dst, dstPitch, height);
    return n;
}

// Planar 8-bit into v210 with the scalar packer's rule: planes found by srcPitch,
// rows read as tightly packed (luma width, chroma width / 2 bytes apart).
unsigned int planar_to_v210(Format from, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Planes p = planar_planes(from, const_cast<uint8_t*>(src), srcPitch, height);
    planes_to_v210(dst, p.y, p.cb, p.cr, width, height, dstPitch, width, width / 2,
                   full_height_chroma(from));
    return height * v210_row_size(width);
}

}  // namespace

unsigned int pack_v210_u8_rows_avx2(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                    const uint8_t* cr, uint32_t width, uint32_t height,
                                    uint32_t dstPitch, uint32_t lumaPitch, uint32_t chromaPitch,
                                    uint32_t chromaStep) {
    if (chromaStep == 1) {
        planes_to_v210(dst, y, cb, cr, width, height, dstPitch, lumaPitch, chromaPitch, false);
        return height * v210_row_size(width);
    }
    (void)cr;  // one plane of Cb, Cr pairs
    const Rows ly = rows_down(y, lumaPitch), lc = rows_down(cb, chromaPitch);
    return pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
        const uint32_t c = chroma_row(ChromaRows::Shared, r).row;
        merge_interleaved_row(t, ly.at(r), lc.at(c), size_t{3} * groups);
        return const_cast<const uint8_t*>(t);
    });
}

namespace {

// The AVX2 forms by their pair of formats.
template <Format From, Format To, auto>
unsigned int pack(CYCBCR_CONVERTER_ARGS) {
    if constexpr (is_packed422(From)) {
        return packed_to_v210(From, CYCBCR_CONVERTER_CALL);
    } else if constexpr (From == Format::I420) {
        // Rows by pitch here, unlike the scalar packer's tightly packed planes.
        const Planes p = planar_planes(From, const_cast<uint8_t*>(src), srcPitch, height);
        return pack_v210_u8_rows_avx2(dst, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch,
                                      chroma_pitch(srcPitch), 1);
    } else {
        return planar_to_v210(From, CYCBCR_CONVERTER_CALL);
    }
}

}  // namespace
}  // namespace cycbcr::avx2

extern "C" {

#define CYCBCR_ENTRY cycbcr::avx2::pack
CYCBCR_V210_PACK_AVX2_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"
