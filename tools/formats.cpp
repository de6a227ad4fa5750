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

// Frames the converters take pitches and return byte counts in 32 bits, so a
// frame must stay below 4 GiB; the dimension cap keeps the arithmetic simple.
constexpr uint32_t kMaxDimension = 32768;

bool parse_decimal(std::string_view text, uint32_t& value) {
    if (text.empty()) return false;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, 10);
    return ec == std::errc() && end == text.data() + text.size();
}

FrameLayout packed422_layout(Format format, uint32_t width, uint32_t height) {
    // The pixel pair is the smallest unit of these formats: an odd width has no
    // complete last pair, and some converters leave such a pixel unwritten.
    if (width % 2 != 0) {
        throw ToolError(std::string(format_name(format)) + " frames need an even width, not " +
                        std::to_string(width));
    }
    const uint32_t pitch = 2 * width;
    return {pitch, uint64_t{pitch} * height};
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
            return "RGB32";
    }
    return "?";
}

FrameLayout frame_layout(Format format, uint32_t width, uint32_t height) {
    switch (format) {
        case Format::UYVY:
        case Format::YUY2:
        case Format::YVYU:
        case Format::CYUV:
            return packed422_layout(format, width, height);
        case Format::I420:
        case Format::YV12:
        case Format::P422:
        case Format::V210:
        case Format::RGB32:
            break;
    }
    throw ToolError(std::string("frames of ") + format_name(format) +
                    " are not supported by this version of the command");
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
