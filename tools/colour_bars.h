// The built-in test frame: eight vertical bars of 75% colour (white, yellow,
// cyan, green, magenta, red, blue, black), BT.601 studio-range YCbCr, 8-bit
// or, for v210, 10-bit; or for RGB sources the same bars in RGB.
#pragma once

#include <cstdint>
#include <span>

#include <cycbcr.h>

#include "formats.h"

namespace cycbcr_tool {

struct YCbCr {
    uint8_t y, cb, cr;
};

struct YCbCr10 {
    uint16_t y, cb, cr;
};

// The colour of bar 0 to 7, 8-bit and 10-bit.
YCbCr bar_colour(int bar);
YCbCr10 bar_colour10(int bar);

// Writes the bars as one frame of the given format into frame, which holds
// layout.frame_bytes bytes: frame_layout()'s or, at odd sizes,
// source_layout()'s. Throws ToolError for a format it cannot write.
void write_colour_bars(Format format, uint32_t width, uint32_t height, const FrameLayout& layout,
                       std::span<uint8_t> frame);

// Writes the bars as one RGB frame of the depth and layout (the bottom-up
// flag honoured) into frame, rows tightly packed (rgb_layout()): 191 (75% of
// 255) in the lit channels and 0 in the others, alpha 255; 16-bit words 191 *
// 257, floats 191 / 255, so every depth reads back as the 8-bit bars.
void write_rgb_colour_bars(RgbDepth depth, QBYCBCRRgbType type, uint32_t width, uint32_t height,
                           std::span<uint8_t> frame);

}  // namespace cycbcr_tool
