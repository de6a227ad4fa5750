// Colour matrices and RGB pixel layouts as the command names them, and the
// reading of RGB pixels back into 8-bit R, G, B for previews.
#pragma once

#include <cycbcr.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "formats.h"

namespace cycbcr_tool {

// A matrix by name ("601", "709-studio", ...) or number (0 to 7, the
// QBYCBCR_MATRIX_* values; with from_rgb, for conversions from RGB, also 8 to
// 10, "extra-8" to "extra-10", rows the library has in that direction only);
// throws ToolError for anything else.
QBYCBCRMatrix parse_matrix(std::string_view text, bool from_rgb = false);

// The name of matrix 0 to 10.
const char* matrix_name(QBYCBCRMatrix matrix);

// The lines --help lists the matrices in, one per matrix.
std::string matrix_help();

// An RGB layout: "bgra", "abgr", "rgba" or "argb" (any case), or a number
// (decimal or 0x hexadecimal) of 0 to 3, either with the bottom-up flag 0x8000
// added, or followed by ",bottom-up". Throws ToolError for anything else.
QBYCBCRRgbType parse_rgb_type(std::string_view text);

// "rgba", "bgra,bottom-up", ...
std::string rgb_type_text(QBYCBCRRgbType type);

inline bool is_bottom_up(QBYCBCRRgbType type) {
    return (type & QBYCBCR_RGB_BOTTOM_UP) != 0;
}

// The lines --help describes the layouts in.
std::string rgb_type_help();

// One row of `width` pixels of the depth and layout, as 8-bit R, G, B bytes
// (the row order, bottom-up or not, is the caller's). 5- and 6-bit channels
// are widened by repeating their top bits (31 -> 255, 16 -> 132); 16-bit
// words give their high byte and 10-bit fields their top 8 bits; floats are
// clamped to 0..1 (NaN as 0), times 255, rounded; alpha is dropped. rgb48
// takes the rgb24 orders.
void rgb_row_to_rgb24(RgbDepth depth, QBYCBCRRgbType type, const uint8_t* src, uint8_t* dst,
                      uint32_t width);

// One row of `width` pixels of 8-bit R, G, B, A bytes (rgb32 in the rgba
// layout) in the depth and layout: 15- and 16-bit words keep each channel's
// top bits, 3-byte pixels drop alpha, 4-byte ones keep it (the row order is
// the caller's). This is how the library's engine packs the 8-bit channels it
// computes into each depth, so a 32-bit frame of the engine repacked here is
// the engine's frame of the other depth, byte for byte. The source-only
// depths take each 8-bit value v as the 16-bit word v * 257 (rgb48 drops
// alpha as rgb24 does), the float v / 255 or the 10-bit value v * 4 + v / 64
// (rgb10 drops alpha, its bits 0-1 are 0).
void rgba_row_to_rgb(RgbDepth depth, QBYCBCRRgbType type, const uint8_t* src, uint8_t* dst,
                     uint32_t width);

}  // namespace cycbcr_tool
