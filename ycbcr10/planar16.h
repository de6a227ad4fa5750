// Three-plane YCbCr in 16-bit sample words: v210 into such planes, 16-bit
// planar 4:2:2 and 4:2:0 into UYVY, and UYVY into 4:4:4. The row kernels that
// the plain and AVX2 forms share a frame walk over; each AVX2 kernel gives the
// plain kernel's bytes and finishes its row with it.
//
// Plane rows may start on any byte: samples are read and written through
// memcpy on the plain side and with unaligned loads and stores on the AVX2 side.
#pragma once

#include <cstdint>
#include <cstring>

#include "frame/buffer_sizes.h"
#include "frame/inline.h"

namespace cycbcr {

CYCBCR_INLINE uint16_t load_u16(const uint8_t* p, size_t i) {
    uint16_t v;
    std::memcpy(&v, p + 2 * i, 2);
    return v;
}
CYCBCR_INLINE void store_u16(uint8_t* p, size_t i, uint32_t v) {
    const auto s = static_cast<uint16_t>(v);
    std::memcpy(p + 2 * i, &s, 2);
}

// Where a v210 row's chroma goes in its planes.
enum class PlaneChroma : uint8_t {
    // 4:2:2 and 4:2:0: one Cb and one Cr per pixel pair, 3 a group.
    Half,
    // 4:4:4, the plain path: the pair's chroma at the even position only; the
    // odd positions keep what the buffer held.
    EvenOnly,
    // 4:4:4, the AVX2 path: the pair's chroma at both of its positions.
    Doubled,
};

// One step of a v210 frame: row s0 into Y row y0 and, when cb is given, into
// chroma rows cb and cr. When s1 is given the chroma is the average (a + b) >> 1
// of s0's and s1's, and s1's Y goes to y1 when that is given too (4:2:0 row
// pairs).
struct V210Step {
    const uint8_t* s0;
    const uint8_t* s1;
    uint8_t* y0;
    uint8_t* y1;
    uint8_t* cb;
    uint8_t* cr;
};
// Groups first .. groups - 1 of a step, samples (v << shift).
using V210PlanesRow = void (*)(const V210Step& s, uint32_t first, uint32_t groups, unsigned shift,
                               PlaneChroma chroma);

// One row of 16-bit 4:2:2 samples (pixels first .. width - 1, first even) into
// UYVY bytes.
using Planar16UyvyRow = void (*)(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                 const uint8_t* cr, uint32_t first, uint32_t width);
// One UYVY row (pixels first .. width - 1, first even) into 4:4:4 p10 rows.
using Uyvy444Row = void (*)(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                            uint32_t first, uint32_t width);

namespace plain {
void v210_to_planes16_row(const V210Step& s, uint32_t first, uint32_t groups, unsigned shift,
                          PlaneChroma chroma);
// p10 to UYVY: each byte (v >> 2) & 0xFF; an odd width ends with the last
// pixel's Cb and Y bytes, so a row is exactly 2 * width bytes.
void p10_to_uyvy_row(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                     uint32_t first, uint32_t width);
// 8-bit UYVY to p10 (v << 2), each pair's Cb and Cr on both of its pixels; an
// odd width's last pixel reads the Cb, Y and Cr bytes of its pair.
void uyvy_to_444_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t first,
                     uint32_t width);
}  // namespace plain

namespace avx2 {
void v210_to_planes16_row(const V210Step& s, uint32_t first, uint32_t groups, unsigned shift,
                          PlaneChroma chroma);
void p10_to_uyvy_row(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                     uint32_t first, uint32_t width);
void uyvy_to_444_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t first,
                     uint32_t width);
}  // namespace avx2

// A v210 frame into three planes: Y rows yPitch apart, chroma rows cPitch
// apart, v210 rows srcPitch apart (each as the caller of the walk decides).
// With `pairs` (4:2:0) rows 2k and 2k + 1 make chroma row k; for an odd height
// the last row is averaged with the v210 row that follows it.
struct V210Frame {
    uint8_t* y;
    uint8_t* cb;
    uint8_t* cr;
    const uint8_t* src;
    uint32_t width, height;
    size_t yPitch, cPitch, srcPitch;
};
void v210_to_planes16_frame(const V210Frame& f, unsigned shift, PlaneChroma chroma, bool pairs,
                            V210PlanesRow row);
// The 4:2:2 (samples v << shift) and 4:4:4 p10 converters: v210 rows at the
// larger of the natural row and srcPitch, Y rows dstPitch apart, chroma rows
// half that (4:2:2) or the same (4:4:4). Return width * height * 4 (4:2:2) or
// * 6 (4:4:4), the bytes of their planes.
unsigned int v210_to_planar422_16(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                  uint32_t width, uint32_t height, uint32_t dstPitch,
                                  uint32_t srcPitch, unsigned shift, V210PlanesRow row);
unsigned int v210_to_planar444_10(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                  uint32_t width, uint32_t height, uint32_t dstPitch,
                                  uint32_t srcPitch, PlaneChroma chroma, V210PlanesRow row);

// The rows of 4:2:2 p10 into UYVY: destination rows at the larger of 2 * width
// and dstPitch, chroma rows srcPitch / 2 apart. Returns that pitch * height.
unsigned int p10_to_uyvy_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                               uint32_t width, uint32_t height, uint32_t dstPitch,
                               uint32_t srcPitch, Planar16UyvyRow row);
// UYVY rows at the larger of 2 * width and srcPitch into 4:4:4 p10 planes, all
// three dstPitch apart. Returns width * height * 6.
unsigned int uyvy_to_444_frame(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                               uint32_t width, uint32_t height, uint32_t dstPitch,
                               uint32_t srcPitch, Uyvy444Row row);
// 4:2:0 rows into UYVY with each chroma row on two rows (row r takes chroma row
// r / 2), destination rows dstPitch apart as passed, each row through
// `store(dst, y, cb, cr, width, shift)`. Odd heights go row 0 alone, then
// pairs, which gives the same rows. Returns dstPitch * height.
using UyvyStore = void (*)(unsigned char* dst, const unsigned short* y, const unsigned short* cb,
                           const unsigned short* cr, unsigned int width, unsigned int shift);
unsigned int p420_to_uyvy_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                const uint8_t* cr, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, unsigned shift,
                                UyvyStore store);
namespace plain {
// The bytes of store_uyvy_from_16bit_row without vector code: pixels below
// width rounded down to 16 (when width >= 16) clamp v >> shift to 0..255, the
// rest keep its low eight bits; width / 2 pairs.
void store_uyvy_from_16bit_row(unsigned char* dst, const unsigned short* y,
                               const unsigned short* cb, const unsigned short* cr,
                               unsigned int width, unsigned int shift);
}  // namespace plain

// The buffer-size answers of the family, by converter name.
bool planar16_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

}  // namespace cycbcr
