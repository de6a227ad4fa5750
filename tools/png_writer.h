// PNG files through libpng.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace cycbcr_tool {

// A whole PNG file of 8-bit R, G, B pixels, built in memory so that nothing is
// written before it is complete. rgb holds height rows of width * 3 bytes, top
// row first. Throws ToolError with libpng's message on failure.
std::vector<uint8_t> encode_png(uint32_t width, uint32_t height, std::span<const uint8_t> rgb);

}  // namespace cycbcr_tool
