// The conversions the command can run, by pair of canonical formats.
#pragma once

#include <cstdint>

#include "formats.h"

namespace cycbcr_tool {

// A frame converter in the library's argument order: destination first, then
// width and height in pixels and rows, then the pitches in bytes.
using FrameConverter = unsigned int (*)(uint8_t* dst, const uint8_t* src, unsigned int width,
                                        unsigned int height, unsigned int dstPitch,
                                        unsigned int srcPitch);

struct Conversion {
    Format from;
    Format to;
    FrameConverter convert;
};

// The conversion of a pair, or nullptr when the command has none for it.
const Conversion* find_conversion(Format from, Format to);

// Converts one whole frame between buffers laid out as frame_layout() says;
// throws ToolError if the library reports a byte count other than the frame's.
void convert_frame(const Conversion& conversion, uint8_t* dst, const uint8_t* src, uint32_t width,
                   uint32_t height, const FrameLayout& dst_layout, const FrameLayout& src_layout);

}  // namespace cycbcr_tool
