// Format codes as the command accepts them, and how a frame of each format lies
// in a raw file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cycbcr_tool {

// The canonical formats every accepted code stands for.
enum class Format { UYVY, YUY2, YVYU, CYUV, I420, YV12, P422, V210, RGB32, NV12 };

struct FormatCode {
    uint32_t value;
    Format format;
    bool source_only;  // "422P" is refused as a destination
};

// Every code the library knows, aliases included, in the order usage lists them.
std::span<const FormatCode> all_codes();

// The accepted code with this value, or nullptr. Values are compared whole, so
// "yuv2" and "yuV2" are two codes and "YUV2" is none.
const FormatCode* find_code(uint32_t value);

// NV12 (a Y plane, then one plane of Cb, Cr pairs) has no code the library's
// dispatcher takes: the command knows it by name, "NV12" in any case, as a
// source for RGB destinations and previews only. Its FormatCode is not in
// all_codes() and find_code() never returns it; its value, the four
// characters, is for messages and summaries only.
const FormatCode& nv12_code();
bool names_nv12(std::string_view text);

// Reads a code as typed: a hexadecimal number with a 0x prefix ("0x8800001E"),
// a decimal number ("0"), or four characters taken as a FourCC ("UYVY").
// nullopt when the text is none of these.
std::optional<uint32_t> parse_code(std::string_view text);

// "UYVY" for a printable FourCC, "0" for RGB, "0x8800001E" otherwise.
std::string code_text(uint32_t value);

const char* format_name(Format format);

// One line on how a frame of the format lies in memory, for listings.
const char* format_description(Format format);

// The row distance of a tightly packed frame of the given width: 2 * width for
// packed 8-bit 4:2:2, v210_row_bytes(width) for v210, the width (the Y plane)
// for planar formats, 4 * width for 32-bit RGB. Never 0 for a width above 0.
uint32_t natural_pitch(Format format, uint32_t width);

// A frame as the command reads and writes it: rows at natural_pitch(), so a
// file holds frames of exactly frame_bytes back to back.
struct FrameLayout {
    uint32_t pitch = 0;
    uint64_t frame_bytes = 0;
};

// The layout of a width x height frame; throws ToolError when the format cannot
// hold a frame of that size, or when the command does not lay it out yet.
FrameLayout frame_layout(Format format, uint32_t width, uint32_t height);

// One plane of a frame (packed formats have one): rows of row_bytes, pitch
// bytes apart, the first at offset.
struct PlaneRows {
    uint64_t offset = 0;
    uint32_t pitch = 0;
    uint32_t row_bytes = 0;
    uint32_t rows = 0;
};

// The planes of a frame of a laid-out format whose rows lie pitch bytes apart,
// where a converter writing it at that pitch puts them: planar chroma planes
// from pitch * height on, chroma rows pitch / 2 apart, the second chroma plane
// right after the first; NV12's Cb, Cr pairs from pitch * height on, rows
// pitch apart. At natural_pitch() this is the file frame (at even sizes).
std::vector<PlaneRows> frame_planes(Format format, uint32_t width, uint32_t height, uint32_t pitch);

// The bytes from the start of the first plane to the end of the last row slot
// of the last one.
uint64_t frame_extent(std::span<const PlaneRows> planes);

// Whether frame_layout() knows the format at all (for any size it accepts):
// every format that converts to another YCbCr format (not NV12).
bool command_lays_out(Format format);

// The layout of a YCbCr frame of any size, as conversions to RGB and previews
// read it. At even sizes it is frame_layout()'s. At odd ones the frame is laid
// out as the usual raw-file convention has it: packed 4:2:2 rows hold whole
// pixel pairs (ceil(width / 2) * 4 bytes, the last pair's second pixel lying
// past the picture), planar chroma planes hold ceil(width / 2) samples a row
// and ceil(height / 2) rows for 4:2:0 (all rows for P422), the planes back to
// back after a Y plane of width x height; NV12's one chroma plane holds
// ceil(width / 2) Cb, Cr pairs a row and ceil(height / 2) rows. v210 takes
// every width as it is.
// Throws ToolError for the RGB format.
FrameLayout source_layout(Format format, uint32_t width, uint32_t height);

// The planes of a frame laid out by source_layout(), in memory order.
std::vector<PlaneRows> source_planes(Format format, uint32_t width, uint32_t height);

// The RGB pixel sizes the command knows. It writes the first four (and
// previews read them); rgb24, rgb32 and the last four are the sources it
// converts to YCbCr: rgb48 and rgb64 pixels are three or four little-endian
// 16-bit words, rgb32f pixels four native (little-endian) 32-bit floats,
// rgb10 pixels one little-endian 32-bit word of three 10-bit channels (G in
// bits 12-21; R in bits 22-31 and B in bits 2-11 for the rgba and argb
// layouts, the other way round for bgra and abgr; bits 0-1 unused).
// Frames have their rows tightly packed: width * rgb_pixel_bytes() bytes each.
enum class RgbDepth { Rgb555, Rgb565, Rgb24, Rgb32, Rgb48, Rgb64, Rgb32F, Rgb10 };

// "rgb555", "rgb565", "rgb24", "rgb32", "rgb48", "rgb64", "rgb32f", "rgb10".
const char* rgb_depth_name(RgbDepth depth);
uint32_t rgb_pixel_bytes(RgbDepth depth);

// The depths the command writes: rgb555, rgb565, rgb24, rgb32.
std::span<const RgbDepth> all_rgb_depths();

// Whether the command writes the depth (else it only reads it).
bool rgb_writable(RgbDepth depth);

// Whether 'cycbcr convert' reads the depth as a source: rgb24, rgb32, rgb48,
// rgb64, rgb32f, rgb10.
bool rgb_convertible_source(RgbDepth depth);

// The depth named by text, compared without regard to case ("rgb24", "RGB24");
// nullopt for any other text.
std::optional<RgbDepth> parse_rgb_depth(std::string_view text);

// The size of an RGB frame, rows tightly packed.
FrameLayout rgb_layout(RgbDepth depth, uint32_t width, uint32_t height);

// Parses "WxH" (both decimal, no signs or spaces); throws ToolError.
void parse_size(std::string_view text, uint32_t& width, uint32_t& height);

}  // namespace cycbcr_tool
