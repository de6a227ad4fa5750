// High-bit-depth planar YCbCr (16-bit sample words: 10 and 12 bits in the low
// bits, or all 16) into v210. One frame walk and one group kernel serve every
// converter; the plain and AVX2 forms differ only in the row kernel.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "frame/geometry.h"
#include "frame/inline.h"
#include "ycbcr10/v210.h"

// The argument list of every converter here.
#define CYCBCR_PLANAR16_ARGS                                                       \
    uint8_t *dst, const uint8_t *srcY, const uint8_t *srcCb, const uint8_t *srcCr, \
        unsigned int width, unsigned int height, unsigned int dstPitch, unsigned int srcPitch
#define CYCBCR_PLANAR16_CALL dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch

namespace cycbcr::planar16 {

using Converter = unsigned int (*)(CYCBCR_PLANAR16_ARGS);

// How a source word becomes a 10-bit sample (truncating, never rounding).
enum class Depth : uint8_t {
    P10,  // v & 0x3FF: bits 10-15 ignored
    P12,  // (v >> 2) & 0x3FF
    P16,  // v >> 6
};

// Where the chroma of a v210 pair comes from.
enum class Chroma : uint8_t {
    Half422,  // one Cb, Cr per pair, chroma rows srcPitch / 2 apart
    Full444,  // the even (left) pixel's Cb, Cr; rows srcPitch apart
    Half420,  // as Half422, row r taking chroma row r / 2
};

struct Layout {
    Depth depth;
    Chroma chroma;
    // Pixels converted per step: 6 (one group) or 12 (two).
    uint8_t step;
    // After a row whose width is not a multiple of 6: two more words, words 0 and
    // 1 of the group after the last one, built from the samples that follow the
    // row. Kept: callers of the 10- and 12-bit 4:2:2 converters have always had
    // them (they land in the row's padding, at the next row's start, which that
    // row then overwrites, or past the last row).
    bool extraWords;
};

CYCBCR_INLINE constexpr uint32_t row_groups(const Layout& l, uint32_t width) {
    return l.step == 12 ? (width + 11) / 12 * 2 : pack_groups(width);
}
CYCBCR_INLINE constexpr bool writes_extra(const Layout& l, uint32_t width) {
    return l.extraWords && width % 6 != 0;
}
// The destination pitch used: at least the natural v210 row.
CYCBCR_INLINE constexpr uint32_t v210_pitch(uint32_t width, uint32_t dstPitch) {
    return std::max(v210_row_size(width), dstPitch);
}
CYCBCR_INLINE constexpr uint32_t chroma_plane_pitch(const Layout& l, uint32_t srcPitch) {
    return l.chroma == Chroma::Full444 ? srcPitch : srcPitch / 2;
}
CYCBCR_INLINE constexpr uint32_t chroma_row_of(const Layout& l, uint32_t r) {
    return l.chroma == Chroma::Half420 ? r / 2 : r;
}

template <Depth D>
CYCBCR_INLINE uint32_t sample(const uint8_t* plane, size_t i) {
    uint16_t v;
    std::memcpy(&v, plane + 2 * i, 2);
    if constexpr (D == Depth::P10) return v & 0x3FFu;
    if constexpr (D == Depth::P12) return (v >> 2) & 0x3FFu;
    return static_cast<uint32_t>(v >> 6);
}

// Sample index of the Cb or Cr of pair k (0..2) of group g.
template <Chroma C>
CYCBCR_INLINE size_t chroma_index(size_t g, unsigned k) {
    return C == Chroma::Full444 ? 6 * g + 2 * k : 3 * g + k;
}

// Words 0 .. words - 1 of group g of a row (4 for a whole group, 2 for the
// extra words), at out.
template <Depth D, Chroma C>
CYCBCR_INLINE void pack_group(uint8_t* out, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                              size_t g, unsigned words = 4) {
    auto Y = [&](unsigned i) { return sample<D>(y, 6 * g + i); };
    auto B = [&](unsigned k) { return sample<D>(cb, chroma_index<C>(g, k)); };
    auto R = [&](unsigned k) { return sample<D>(cr, chroma_index<C>(g, k)); };
    store_le32(out, v210_word(B(0), Y(0), R(0)));
    store_le32(out + 4, v210_word(Y(1), B(1), Y(2)));
    if (words < 4) return;
    store_le32(out + 8, v210_word(R(1), Y(3), B(2)));
    store_le32(out + 12, v210_word(Y(4), R(2), Y(5)));
}

// Groups first .. groups - 1 of a row.
template <Depth D, Chroma C>
CYCBCR_INLINE void pack_groups_plain(uint8_t* d, const uint8_t* y, const uint8_t* cb,
                                     const uint8_t* cr, size_t first, size_t groups) {
    for (size_t g = first; g < groups; ++g) pack_group<D, C>(d + 16 * g, y, cb, cr, g);
}

// The frame walk of every form: rows top to bottom, luma row r srcPitch * r into
// the Y plane, its chroma row at the layout's pitch, v210 rows at the larger of
// the natural row and dstPitch. `row(d, y, cb, cr, groups)` packs one row's
// groups; the extra words follow it. Returns height * the pitch used.
template <Layout L, class Row>
CYCBCR_INLINE unsigned int walk_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                      const uint8_t* cr, uint32_t width, uint32_t height,
                                      uint32_t dstPitch, uint32_t srcPitch, Row&& row) {
    const uint32_t dp = v210_pitch(width, dstPitch);
    const size_t cp = chroma_plane_pitch(L, srcPitch);
    const uint32_t groups = row_groups(L, width);
    const bool extra = writes_extra(L, width);
    for (uint32_t r = 0; r < height; ++r) {
        uint8_t* d = dst + size_t{r} * dp;
        const uint8_t* ly = y + size_t{r} * srcPitch;
        const size_t c = chroma_row_of(L, r);
        const uint8_t *lb = cb + c * cp, *lr = cr + c * cp;
        row(d, ly, lb, lr, groups);
        if (extra) pack_group<L.depth, L.chroma>(d + 16 * size_t{groups}, ly, lb, lr, groups, 2);
    }
    return height * dp;
}

// The converters, by layout, as constants for the templates.
inline constexpr Layout k422p10{Depth::P10, Chroma::Half422, 6, true};
inline constexpr Layout k422p12{Depth::P12, Chroma::Half422, 6, true};
inline constexpr Layout k422p16{Depth::P16, Chroma::Half422, 6, false};
inline constexpr Layout k444p10{Depth::P10, Chroma::Full444, 6, false};
inline constexpr Layout k444p12{Depth::P12, Chroma::Full444, 6, false};
inline constexpr Layout k420p10{Depth::P10, Chroma::Half420, 6, false};
inline constexpr Layout k420p16{Depth::P16, Chroma::Half420, 12, false};

}  // namespace cycbcr::planar16
