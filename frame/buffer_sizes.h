// The bytes a converter touches, family by family: the rows of the public
// buffer-size query. Each family answers next to the walk it describes, for
// every path its converters may take at any level; the AVX2 and plain forms of
// a pair touch no more than the pair's converter.
#pragma once

#include <array>
#include <cstdint>

#include "frame/formats.h"
#include "frame/row_walk.h"

namespace cycbcr {

// A call's numbers, as the converter receives them.
struct Call {
    uint32_t width, height, dstPitch, srcPitch;
};

// Bytes from the start of each buffer up to the end of the last byte touched.
struct Extent {
    uint64_t src = 0;
    uint64_t dst = 0;
};
inline Extent widest(Extent a, Extent b) {
    return {a.src > b.src ? a.src : b.src, a.dst > b.dst ? a.dst : b.dst};
}
inline uint64_t widest(uint64_t a, uint64_t b) {
    return a > b ? a : b;
}

// The end of `rows` rows of `bytes` bytes each, `step` apart from `start`; 0 when
// nothing is touched.
inline uint64_t rows_end(uint64_t start, uint64_t rows, uint64_t step, uint64_t bytes) {
    return rows == 0 || bytes == 0 ? 0 : start + (rows - 1) * step + bytes;
}
// The end of a frame turned over by cycbcr_invert: all its rows, whole pitches.
inline uint64_t inverted_end(uint64_t start, uint64_t rows, uint64_t pitch) {
    return rows < 2 ? 0 : start + rows * pitch;
}

// Converters with separate plane pointers: the call's numbers (its unsigned
// arguments after the height, in argument order: the pitches first, then
// matrix, RGB type, flags, depth, ... where it has them), and the bytes reached
// from each pointer argument in argument order (0 for a pointer not touched).
struct PlaneCall {
    uint32_t width, height;
    uint32_t pitch[3];   // arguments 0-2
    uint32_t more[5]{};  // arguments 3-7
    uint32_t arg(unsigned i) const { return i < 3 ? pitch[i] : i < 8 ? more[i - 3] : 0; }
};
using PointerExtents = std::array<uint64_t, 6>;
// A family's answers by converter name: true, with the extents, for a name it
// owns.
using PointerExtentOf = bool (*)(const char* name, const PlaneCall& c, PointerExtents& out);
// v210 into three 8- or 16-bit 4:2:2 planes (cycbcr_012v_to_planar422 and the
// like).
bool v210_planes_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);
// High-bit-depth planar into v210 (ycbcr10/planar16_to_v210.cpp).
bool planar16_v210_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

using ExtentOf = Extent (*)(Format from, Format to, const Call& c);
Extent byte_order_extent(Format from, Format to, const Call& c);
Extent packed_planar_extent(Format from, Format to, const Call& c);
Extent planar_copy_extent(Format from, Format to, const Call& c);
Extent v210_extent(Format from, Format to, const Call& c);
// YCbCr to RGB (torgb/to_rgb.h has the form with matrix and RGB type): the
// widest over every matrix and type.
Extent to_rgb_pair_extent(Format from, Format to, const Call& c);
// v210 to RGB (torgb/v210_to_rgb.h): the same for every matrix and type.
Extent v210_to_rgb_pair_extent(Format from, Format to, const Call& c);
// RGB to 8-bit YCbCr (fromrgb/from_rgb.h): the widest over every matrix and type.
Extent from_rgb_pair_extent(Format from, Format to, const Call& c);
// RGB to v210 (fromrgb/to_v210.h): the widest over every RGB type.
Extent to_v210_pair_extent(Format from, Format to, const Call& c);

}  // namespace cycbcr
