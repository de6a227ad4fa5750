// Conversions through the library's FourCC dispatcher, and which pairs it
// converts.
#pragma once

#include <cstdint>

#include "formats.h"

namespace cycbcr_tool {

// Whether the library converts frames from one code to the other, asked of the
// library itself by a trial conversion (see conversions.cpp).
bool library_converts(uint32_t from_code, uint32_t to_code);

// Converts one whole frame with cycbcr_transcode, the codes passed as the user
// gave them and the pitches of the two layouts. Throws ToolError when the
// library converts nothing.
void convert_frame(uint32_t from_code, uint32_t to_code, uint8_t* dst, const uint8_t* src,
                   uint32_t width, uint32_t height, const FrameLayout& dst_layout,
                   const FrameLayout& src_layout);

}  // namespace cycbcr_tool
