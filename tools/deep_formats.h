// The formats the command knows by name rather than by code: planar YCbCr with
// 16-bit sample words at 10, 12 and 16 bits, and the semi-planar NV12, NV10
// and NV12p16. The library's dispatcher has no codes for them; the command
// converts them through the library's named converters (deep_conversions.h).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "formats.h"

namespace cycbcr_tool {

enum class DeepFormat {
    Yuv420p10,
    Yuv420p12,
    Yuv420p16,
    Yuv422p10,
    Yuv422p12,
    Yuv422p16,
    Yuv444p10,
    Yuv444p12,
    Nv12,
    Nv10,
    Nv12p16,
};

std::span<const DeepFormat> all_deep_formats();

// "yuv420p10", ..., "NV12", "NV10", "NV12p16".
const char* deep_name(DeepFormat format);
// One line on how a frame lies in a file.
const char* deep_description(DeepFormat format);
// The format named by text, in any case; nullopt for any other text.
std::optional<DeepFormat> parse_deep(std::string_view text);

// How a frame of the format lies in a file: planes back to back, each of
// `rows` rows of `samples` samples of `sample_bytes` bytes (little-endian
// words for 2), no padding. Planar formats: Y, Cb, Cr, the 4:2:0 and 4:2:2
// chroma planes ceil(width / 2) samples wide, the 4:2:0 ones ceil(height / 2)
// rows high. Semi-planar: Y, then ceil(height / 2) rows of ceil(width / 2)
// Cb, Cr pairs (samples counts both). 10- and 12-bit samples lie in the low
// bits of their words, 16-bit ones fill them.
struct DeepPlane {
    uint64_t offset = 0;
    uint32_t samples = 0;
    uint32_t rows = 0;
    uint32_t sample_bytes = 0;
    uint64_t row_bytes() const { return uint64_t{samples} * sample_bytes; }
};
std::vector<DeepPlane> deep_planes(DeepFormat format, uint32_t width, uint32_t height);
FrameLayout deep_layout(DeepFormat format, uint32_t width, uint32_t height);

// Significant bits of a sample (8, 10, 12 or 16).
uint32_t deep_bits(DeepFormat format);
bool deep_semi_planar(DeepFormat format);
// Horizontal and vertical chroma subsampling (1 or 2).
uint32_t deep_chroma_x(DeepFormat format);
uint32_t deep_chroma_y(DeepFormat format);

// The built-in frame: the 75% colour bars at the format's depth (the 10-bit
// bars shifted up to 12 and 16 bits, the 8-bit ones for NV12).
void write_deep_colour_bars(DeepFormat format, uint32_t width, uint32_t height,
                            std::span<uint8_t> frame);

}  // namespace cycbcr_tool
