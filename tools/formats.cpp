#include "formats.h"

#include <cycbcr.h>

#include <array>
#include <charconv>
#include <cstdio>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

constexpr std::array kCodes = {
    FormatCode{CYCBCR_FOURCC_UYVY, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_UYNV, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_AJYU, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_yuv2, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_yuV2, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_2vuy, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_2Vuy, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_UYVY_ALT1, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_UYVY_ALT2, Format::UYVY, false},
    FormatCode{CYCBCR_FOURCC_YUY2, Format::YUY2, false},
    FormatCode{CYCBCR_FOURCC_YUNV, Format::YUY2, false},
    FormatCode{CYCBCR_FOURCC_YVYU, Format::YVYU, false},
    FormatCode{CYCBCR_FOURCC_cyuv, Format::CYUV, false},
    FormatCode{CYCBCR_FOURCC_I420, Format::I420, false},
    FormatCode{CYCBCR_FOURCC_IYUV, Format::I420, false},
    FormatCode{CYCBCR_FOURCC_YV12, Format::YV12, false},
    FormatCode{CYCBCR_FOURCC_P422, Format::P422, false},
    FormatCode{CYCBCR_FOURCC_422P, Format::P422, true},
    FormatCode{CYCBCR_FOURCC_v210, Format::V210, false},
    FormatCode{CYCBCR_FOURCC_012v, Format::V210, false},
    FormatCode{CYCBCR_FOURCC_RGB32, Format::RGB32, false},
};

constexpr FormatCode kNv12 = {CYCBCR_FOURCC('N', 'V', '1', '2'), Format::NV12, true};

// Frames the converters take pitches and return byte counts in 32 bits, so a
// frame must stay below 4 GiB; the dimension cap keeps the arithmetic simple.
constexpr uint32_t kMaxDimension = 32768;

bool parse_decimal(std::string_view text, uint32_t& value) {
    if (text.empty()) return false;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, 10);
    return ec == std::errc() && end == text.data() + text.size();
}

void require_even(Format format, const char* what, uint32_t value) {
    if (value % 2 != 0) {
        throw ToolError(std::string(format_name(format)) + " frames need an even " + what +
                        ", not " + std::to_string(value));
    }
}

}  // namespace

std::span<const FormatCode> all_codes() {
    return kCodes;
}

const FormatCode* find_code(uint32_t value) {
    for (const FormatCode& code : kCodes) {
        if (code.value == value) return &code;
    }
    return nullptr;
}

const FormatCode& nv12_code() {
    return kNv12;
}

bool names_nv12(std::string_view text) {
    constexpr std::string_view kName = "nv12";
    if (text.size() != kName.size()) return false;
    for (size_t i = 0; i < kName.size(); ++i) {
        const char c = text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
        if (c != kName[i]) return false;
    }
    return true;
}

std::optional<uint32_t> parse_code(std::string_view text) {
    uint32_t value = 0;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        const char* first = text.data() + 2;
        const char* last = text.data() + text.size();
        const auto [end, ec] = std::from_chars(first, last, value, 16);
        if (ec != std::errc() || end != last) return std::nullopt;
        return value;
    }
    // Digits only read as a number; no code of the table is all digits.
    if (parse_decimal(text, value)) return value;
    if (text.size() == 4) return CYCBCR_FOURCC(text[0], text[1], text[2], text[3]);
    return std::nullopt;
}

std::string code_text(uint32_t value) {
    if (value == CYCBCR_FOURCC_RGB32) return "0";
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const char c = static_cast<char>((value >> shift) & 0xFF);
        if (c < 0x21 || c > 0x7E) {
            char hex[16];
            std::snprintf(hex, sizeof hex, "0x%08X", value);
            return hex;
        }
        text += c;
    }
    return text;
}

const char* format_description(Format format) {
    switch (format) {
        case Format::UYVY:
            return "packed 4:2:2, 8-bit, bytes Cb Y0 Cr Y1, top row first";
        case Format::YUY2:
            return "packed 4:2:2, 8-bit, bytes Y0 Cb Y1 Cr, top row first";
        case Format::YVYU:
            return "packed 4:2:2, 8-bit, bytes Y0 Cr Y1 Cb, top row first";
        case Format::CYUV:
            return "packed 4:2:2, 8-bit, bytes Cb Y0 Cr Y1, bottom row first";
        case Format::I420:
            return "planar 4:2:0, 8-bit, planes Y, Cb, Cr";
        case Format::YV12:
            return "planar 4:2:0, 8-bit, planes Y, Cr, Cb";
        case Format::P422:
            return "planar 4:2:2, 8-bit, planes Y, Cb, Cr";
        case Format::V210:
            return "packed 4:2:2, 10-bit, 6 pixels in 16 bytes, rows of 48-pixel blocks";
        case Format::RGB32:
            return "RGB, 4 bytes per pixel in the order --rgb-type gives";
        case Format::NV12:
            return "semi-planar 4:2:0, 8-bit, a Y plane, then one plane of Cb, Cr pairs";
    }
    return "?";
}

uint32_t natural_pitch(Format format, uint32_t width) {
    switch (format) {
        case Format::UYVY:
        case Format::YUY2:
        case Format::YVYU:
        case Format::CYUV:
            return 2 * width;
        case Format::V210:
            return v210_row_bytes(width);
        case Format::I420:
        case Format::YV12:
        case Format::P422:
        case Format::NV12:
            return width;
        case Format::RGB32:
            return 4 * width;
    }
    return 0;
}

const char* format_name(Format format) {
    switch (format) {
        case Format::UYVY:
            return "UYVY";
        case Format::YUY2:
            return "YUY2";
        case Format::YVYU:
            return "YVYU";
        case Format::CYUV:
            return "cyuv";
        case Format::I420:
            return "I420";
        case Format::YV12:
            return "YV12";
        case Format::P422:
            return "P422";
        case Format::V210:
            return "v210";
        case Format::RGB32:
            return "rgb32";
        case Format::NV12:
            return "NV12";
    }
    return "?";
}

bool command_lays_out(Format format) {
    switch (format) {
        case Format::UYVY:
        case Format::YUY2:
        case Format::YVYU:
        case Format::CYUV:
        case Format::V210:
        case Format::I420:
        case Format::YV12:
        case Format::P422:
            return true;
        case Format::RGB32:
        case Format::NV12:
            return false;
    }
    return false;
}

std::vector<PlaneRows> frame_planes(Format format, uint32_t width, uint32_t height,
                                    uint32_t pitch) {
    switch (format) {
        case Format::I420:
        case Format::YV12:
        case Format::P422: {
            const uint32_t chroma_rows = format == Format::P422 ? height : height / 2;
            const uint32_t chroma_pitch = pitch / 2;
            const uint64_t luma = uint64_t{pitch} * height;
            const uint64_t chroma = uint64_t{chroma_pitch} * chroma_rows;
            return {{0, pitch, width, height},
                    {luma, chroma_pitch, width / 2, chroma_rows},
                    {luma + chroma, chroma_pitch, width / 2, chroma_rows}};
        }
        case Format::NV12: {
            // Chroma row n of the call lies at (n / 2) * width bytes for an
            // even width, whatever the pitch: rows pitch apart at the natural
            // pitch.
            const uint64_t luma = uint64_t{pitch} * height;
            return {{0, pitch, width, height}, {luma, pitch, width, height / 2}};
        }
        case Format::V210:
            return {{0, pitch, v210_row_bytes(width), height}};
        default:
            return {{0, pitch, natural_pitch(format, width), height}};
    }
}

uint64_t frame_extent(std::span<const PlaneRows> planes) {
    const PlaneRows& last = planes.back();
    return last.offset + uint64_t{last.pitch} * last.rows;
}

FrameLayout frame_layout(Format format, uint32_t width, uint32_t height) {
    if (!command_lays_out(format)) {
        throw ToolError(std::string("frames of ") + format_name(format) +
                        " are not supported by this version of the command");
    }
    switch (format) {
        case Format::V210:
            // Any width: rows are whole 128-byte blocks of eight groups.
            break;
        case Format::I420:
        case Format::YV12:
            // The planes lie back to back with rows of width and width / 2
            // bytes, where the library puts them at a pitch of the width: the
            // tightly packed frame only when every chroma sample covers whole
            // pixels.
            require_even(format, "width", width);
            require_even(format, "height", height);
            break;
        default:
            // Packed rows are whole Cb Y Cr Y pixel pairs: an odd width would
            // end every row in half a pair, a pixel with one chroma sample and
            // no partner, which the byte-order converters leave unwritten.
            // P422 planes are tightly packed for even widths only, as 4:2:0
            // ones are.
            require_even(format, "width", width);
            break;
    }
    const uint32_t pitch = natural_pitch(format, width);
    return {pitch, frame_extent(frame_planes(format, width, height, pitch))};
}

std::vector<PlaneRows> source_planes(Format format, uint32_t width, uint32_t height) {
    switch (format) {
        case Format::UYVY:
        case Format::YUY2:
        case Format::YVYU:
        case Format::CYUV: {
            const uint32_t pitch = (width / 2 + width % 2) * 4;
            return {{0, pitch, pitch, height}};
        }
        case Format::V210:
            return frame_planes(format, width, height, natural_pitch(format, width));
        case Format::I420:
        case Format::YV12:
        case Format::P422: {
            const uint32_t chroma_width = width / 2 + width % 2;
            const uint32_t chroma_rows = format == Format::P422 ? height : height / 2 + height % 2;
            const uint64_t luma = uint64_t{width} * height;
            const uint64_t chroma = uint64_t{chroma_width} * chroma_rows;
            return {{0, width, width, height},
                    {luma, chroma_width, chroma_width, chroma_rows},
                    {luma + chroma, chroma_width, chroma_width, chroma_rows}};
        }
        case Format::NV12: {
            const uint32_t pair_bytes = 2 * (width / 2 + width % 2);
            return {{0, width, width, height},
                    {uint64_t{width} * height, pair_bytes, pair_bytes, height / 2 + height % 2}};
        }
        case Format::RGB32:
            break;
    }
    throw ToolError(std::string("frames of ") + format_name(format) + " are not YCbCr frames");
}

FrameLayout source_layout(Format format, uint32_t width, uint32_t height) {
    const std::vector<PlaneRows> planes = source_planes(format, width, height);
    return {planes.front().pitch, frame_extent(planes)};
}

const char* rgb_depth_name(RgbDepth depth) {
    switch (depth) {
        case RgbDepth::Rgb555:
            return "rgb555";
        case RgbDepth::Rgb565:
            return "rgb565";
        case RgbDepth::Rgb24:
            return "rgb24";
        case RgbDepth::Rgb32:
            return "rgb32";
        case RgbDepth::Rgb48:
            return "rgb48";
        case RgbDepth::Rgb64:
            return "rgb64";
        case RgbDepth::Rgb32F:
            return "rgb32f";
        case RgbDepth::Rgb10:
            return "rgb10";
    }
    return "?";
}

uint32_t rgb_pixel_bytes(RgbDepth depth) {
    switch (depth) {
        case RgbDepth::Rgb555:
        case RgbDepth::Rgb565:
            return 2;
        case RgbDepth::Rgb24:
            return 3;
        case RgbDepth::Rgb32:
        case RgbDepth::Rgb10:
            return 4;
        case RgbDepth::Rgb48:
            return 6;
        case RgbDepth::Rgb64:
            return 8;
        case RgbDepth::Rgb32F:
            return 16;
    }
    return 0;
}

std::span<const RgbDepth> all_rgb_depths() {
    static constexpr RgbDepth kDepths[] = {RgbDepth::Rgb555, RgbDepth::Rgb565, RgbDepth::Rgb24,
                                           RgbDepth::Rgb32};
    return kDepths;
}

bool rgb_writable(RgbDepth depth) {
    return depth == RgbDepth::Rgb555 || depth == RgbDepth::Rgb565 || depth == RgbDepth::Rgb24 ||
           depth == RgbDepth::Rgb32;
}

bool rgb_convertible_source(RgbDepth depth) {
    return depth != RgbDepth::Rgb555 && depth != RgbDepth::Rgb565;
}

std::optional<RgbDepth> parse_rgb_depth(std::string_view text) {
    static constexpr RgbDepth kEvery[] = {RgbDepth::Rgb555, RgbDepth::Rgb565, RgbDepth::Rgb24,
                                          RgbDepth::Rgb32,  RgbDepth::Rgb48,  RgbDepth::Rgb64,
                                          RgbDepth::Rgb32F, RgbDepth::Rgb10};
    for (const RgbDepth depth : kEvery) {
        const std::string_view name = rgb_depth_name(depth);
        if (name.size() != text.size()) continue;
        bool same = true;
        for (size_t i = 0; i < name.size(); ++i) {
            const char c =
                text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
            same = same && c == name[i];
        }
        if (same) return depth;
    }
    return std::nullopt;
}

FrameLayout rgb_layout(RgbDepth depth, uint32_t width, uint32_t height) {
    const uint32_t pitch = width * rgb_pixel_bytes(depth);
    return {pitch, uint64_t{pitch} * height};
}

void parse_size(std::string_view text, uint32_t& width, uint32_t& height) {
    const size_t x = text.find('x');
    uint32_t w = 0;
    uint32_t h = 0;
    if (x == std::string_view::npos || !parse_decimal(text.substr(0, x), w) ||
        !parse_decimal(text.substr(x + 1), h)) {
        throw ToolError("bad size '" + std::string(text) +
                        "': expected WIDTHxHEIGHT, e.g. 1920x1080");
    }
    if (w == 0 || h == 0) {
        throw ToolError("bad size '" + std::string(text) +
                        "': width and height must be at least 1");
    }
    if (w > kMaxDimension || h > kMaxDimension) {
        throw ToolError("bad size '" + std::string(text) + "': width and height are limited to " +
                        std::to_string(kMaxDimension));
    }
    width = w;
    height = h;
}

}  // namespace cycbcr_tool
