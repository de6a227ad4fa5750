// RGB to 8-bit YCbCr: what the engines share with their row kernels. The frame
// walk (rows, bottom-up sources, chroma rows) lives in from_rgb.cpp; a row
// kernel converts the pixel pairs of one row.
#pragma once

#include <cstdint>

#include "cycbcr.h"
#include "frame/buffer_sizes.h"
#include "frame/formats.h"
#include "torgb/colour_tables.h"

namespace cycbcr::fromrgb {

using colour::FromRgbRow;

// Where a source pixel's R, G and B bytes lie, and the pixel's size. 16-bit
// channels are read by their high byte alone.
struct PixelLayout {
    uint32_t bytes;
    uint32_t r, g, b;
};
CYCBCR_INLINE constexpr PixelLayout pixel_layout(uint32_t bitsPerPixel, QBYCBCRRgbType rgbType) {
    const uint32_t order = rgbType & ~0x8000u;
    if (bitsPerPixel == 32) {
        switch (order) {
            case 1:
                return {4, 3, 2, 1};
            case 2:
                return {4, 0, 1, 2};
            case 3:
                return {4, 1, 2, 3};
            default:
                return {4, 2, 1, 0};
        }
    }
    if (bitsPerPixel == 48 || bitsPerPixel == 64) {
        // Words 3, 2, 1 for order 1 even in a 3-word pixel: its R is the next
        // pixel's first word. Kept as callers know it.
        const uint32_t n = bitsPerPixel / 8;
        auto hi = [](uint32_t word) { return 2 * word + 1; };
        switch (order) {
            case 1:
                return {n, hi(3), hi(2), hi(1)};
            case 2:
                return {n, hi(0), hi(1), hi(2)};
            case 3:
                return {n, hi(1), hi(2), hi(3)};
            default:
                return {n, hi(2), hi(1), hi(0)};
        }
    }
    return order == 2 || order == 3 ? PixelLayout{3, 0, 1, 2} : PixelLayout{3, 2, 1, 0};
}

// One row: `pairs` pixel pairs from `src`. Packed rows put Y every 2 bytes and
// Cb, Cr every 4; planar rows put Y every byte and Cb, Cr every byte. A null
// `cb` writes no chroma.
struct RowArgs {
    const uint8_t* src;
    uint8_t* y;
    uint8_t* cb;
    uint8_t* cr;
    uint32_t pairs;
};

// The 14-bit set of the vector engine: weights of R, G, B in each of Y, Cb, Cr
// in units of 1/16384, and the Y offset.
struct Q14Set {
    int32_t yOffset;
    int32_t y[3], cb[3], cr[3];
};
Q14Set q14_set(QBYCBCRMatrix matrix);

// Exact row kernels of the millionths engine (the same bytes as the plain
// rows), for 3- and 4-byte pixels; nullptr for other layouts. They convert
// what fits their step and leave the rest of the row to `tail`.
using ExactRow = void (*)(const RowArgs& a, const FromRgbRow& k, PixelLayout l);
using ExactVectorRow = void (*)(const RowArgs& a, const FromRgbRow& k, PixelLayout l,
                                ExactRow tail);
ExactVectorRow avx2_exact_row(bool planar, PixelLayout l, Format packedShape, const FromRgbRow& k);

// The 14-bit engine's groups of eight pixels, `groups` of them from the start
// of a row of 32-bit pixels, with chroma. The plain form takes any pointers;
// the AVX2 forms need a UYVY, YUY2 or YVYU pointer shape when packed.
void q14_groups_plain(const RowArgs& a, const Q14Set& k, PixelLayout l, uint32_t groups,
                      bool planar);
using Q14Groups = void (*)(const RowArgs& a, const Q14Set& k, PixelLayout l, uint32_t groups);
Q14Groups avx2_q14_groups(bool planar, Format packedShape);

// What a converter of the family reads and writes, for the buffer-size query:
// from RGB24, RGB32 or RGB64 (bits per pixel by the pitch, or `bitsPerPixel`
// when not 0) to an 8-bit YCbCr format, every route.
// `engineOnly` leaves out the image-library route (the AVX2 form never takes it).
Extent from_rgb_extent(Format from, Format to, const Call& c, QBYCBCRMatrix matrix,
                       QBYCBCRRgbType rgbType, uint32_t bitsPerPixel = 0, bool engineOnly = false);

// The same for the family's converters outside the list: the float converter
// and the alpha extractor (`known` says whether `name` is one of them).
Extent other_extent(const char* name, const Call& c, QBYCBCRRgbType rgbType, bool* known);

}  // namespace cycbcr::fromrgb
