// The built-in test frame: eight vertical bars of 75% colour (white, yellow,
// cyan, green, magenta, red, blue, black), BT.601 studio-range YCbCr, 8-bit
// or, for v210, 10-bit.
#pragma once

#include <cstdint>
#include <span>

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

}  // namespace cycbcr_tool
