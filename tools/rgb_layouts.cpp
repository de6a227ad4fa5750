#include "rgb_layouts.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

struct MatrixName {
    QBYCBCRMatrix value;
    const char* name;
    const char* description;
};

// The library's families of 8-bit coefficients take 709 and 709-precise (and
// their studio forms) alike; they differ only in its 16-bit output. Its
// BT.2020 studio-range matrix applies BT.2020's chroma weights unscaled, where
// the other studio-range ones scale them by 219 / 224 (about 2% stronger
// colour, up to 4 levels at the most saturated chroma).
constexpr std::array<MatrixName, 11> kMatrices = {{
    {QBYCBCR_MATRIX_601, "601", "BT.601, full-range RGB (the default)"},
    {QBYCBCR_MATRIX_601_STUDIO, "601-studio", "BT.601, RGB kept in the studio range 16..235"},
    {QBYCBCR_MATRIX_709, "709", "BT.709, full-range RGB"},
    {QBYCBCR_MATRIX_709_STUDIO, "709-studio", "BT.709, studio-range RGB"},
    {QBYCBCR_MATRIX_709_PRECISE, "709-precise", "BT.709, full-range RGB (as 709 at 8 bits)"},
    {QBYCBCR_MATRIX_709_PRECISE_STUDIO, "709-precise-studio",
     "BT.709, studio-range RGB (as 709-studio at 8 bits)"},
    {QBYCBCR_MATRIX_2020, "2020", "BT.2020, full-range RGB"},
    {QBYCBCR_MATRIX_2020_STUDIO, "2020-studio", "BT.2020, studio-range RGB (chroma 2% stronger)"},
    // Rows the library has for RGB sources only.
    {QBYCBCR_MATRIX_EXTRA_8, "extra-8", "the library's further row 8 (RGB sources only)"},
    {QBYCBCR_MATRIX_EXTRA_9, "extra-9", "the library's further row 9 (RGB sources only)"},
    {QBYCBCR_MATRIX_EXTRA_10, "extra-10", "the library's further row 10 (RGB sources only)"},
}};

// The matrices of the YCbCr to RGB direction: 0 to 7.
constexpr size_t kToRgbMatrices = 8;

struct LayoutName {
    QBYCBCRRgbType value;
    const char* name;
};

constexpr std::array<LayoutName, 4> kLayouts = {{
    {QBYCBCR_RGB_BGRA, "bgra"},
    {QBYCBCR_RGB_ABGR, "abgr"},
    {QBYCBCR_RGB_RGBA, "rgba"},
    {QBYCBCR_RGB_ARGB, "argb"},
}};

constexpr std::string_view kBottomUpWord = "bottom-up";

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same_text(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

// A whole decimal number, or 0x and hexadecimal digits.
bool parse_number(std::string_view text, uint32_t& value) {
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
        base = 16;
    }
    if (text.empty()) return false;
    const char* last = text.data() + text.size();
    const auto [end, ec] = std::from_chars(text.data(), last, value, base);
    return ec == std::errc() && end == last;
}

// The channel order of a layout number 0 to 3, as the library writes it:
// blue first for 0 and 1 (and from the most significant field down in 15- and
// 16-bit words), alpha first for 1 and 3.
bool blue_first(QBYCBCRRgbType type) {
    const uint32_t layout = type & ~uint32_t{QBYCBCR_RGB_BOTTOM_UP};
    return layout == QBYCBCR_RGB_BGRA || layout == QBYCBCR_RGB_ABGR;
}

bool alpha_first(QBYCBCRRgbType type) {
    const uint32_t layout = type & ~uint32_t{QBYCBCR_RGB_BOTTOM_UP};
    return layout == QBYCBCR_RGB_ABGR || layout == QBYCBCR_RGB_ARGB;
}

uint8_t widen5(uint32_t v) {
    return static_cast<uint8_t>(v << 3 | v >> 2);
}

uint8_t widen6(uint32_t v) {
    return static_cast<uint8_t>(v << 2 | v >> 4);
}

// 8 bits to 10 by repeating the top bits (255 -> 1023, 191 -> 766), which
// give back the 8-bit value when the 10-bit one is cut to its top 8.
uint32_t widen10(uint32_t v) {
    return v << 2 | v >> 6;
}

uint32_t load_le32(const uint8_t* p) {
    return p[0] | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

// A native float, clamped to 0..1 (NaN as 0) and scaled to 0..255, rounded.
uint8_t float_to_8bit(const uint8_t* bytes) {
    float v = 0;
    std::memcpy(&v, bytes, sizeof v);
    const float clamped = v > 0.0f ? (v < 1.0f ? v : 1.0f) : 0.0f;
    return static_cast<uint8_t>(std::lround(clamped * 255.0f));
}

}  // namespace

QBYCBCRMatrix parse_matrix(std::string_view text, bool from_rgb) {
    const size_t known = from_rgb ? kMatrices.size() : kToRgbMatrices;
    for (size_t i = 0; i < known; ++i) {
        if (same_text(text, kMatrices[i].name)) return kMatrices[i].value;
    }
    // Numbers are decimal, without a leading 0; no name is a number.
    uint32_t value = 0;
    if (!text.empty() && text.size() <= 2 && (text.size() == 1 || text[0] != '0') &&
        parse_number(text, value) && value < known) {
        return value;
    }
    if (!from_rgb) {
        const std::string name(text);
        for (size_t i = kToRgbMatrices; i < kMatrices.size(); ++i) {
            if (same_text(text, kMatrices[i].name) || name == std::to_string(i)) {
                throw ToolError("matrix '" + name +
                                "' exists for RGB sources only: YCbCr sources take 0 to 7");
            }
        }
    }
    throw ToolError("bad matrix '" + std::string(text) + "': expected " +
                    (from_rgb ? "0 to 10" : "0 to 7") +
                    " or a name (601, 601-studio, 709, 709-studio, 709-precise, "
                    "709-precise-studio, 2020, 2020-studio" +
                    (from_rgb ? ", extra-8, extra-9, extra-10)" : ")"));
}

const char* matrix_name(QBYCBCRMatrix matrix) {
    return matrix < kMatrices.size() ? kMatrices[matrix].name : "?";
}

std::string matrix_help() {
    std::string text;
    for (const MatrixName& m : kMatrices) {
        std::string name = std::to_string(m.value) + " " + m.name;
        name.resize(23, ' ');
        text.append("    ").append(name).append(m.description).append("\n");
    }
    return text;
}

QBYCBCRRgbType parse_rgb_type(std::string_view text) {
    const auto bad = [&](const std::string& why) {
        return ToolError("bad RGB type '" + std::string(text) + "': " + why);
    };
    std::string_view layout = text;
    bool bottom_up = false;
    if (const size_t comma = text.find(','); comma != std::string_view::npos) {
        if (!same_text(text.substr(comma + 1), kBottomUpWord)) {
            throw bad("the only modifier is ',bottom-up'");
        }
        layout = text.substr(0, comma);
        bottom_up = true;
    }
    QBYCBCRRgbType type = 0;
    bool known = false;
    for (const LayoutName& l : kLayouts) {
        if (same_text(layout, l.name)) {
            type = l.value;
            known = true;
        }
    }
    if (!known) {
        uint32_t value = 0;
        if (!parse_number(layout, value)) {
            throw bad("expected bgra, abgr, rgba, argb or a number, with ',bottom-up' if wanted");
        }
        if ((value & ~uint32_t{QBYCBCR_RGB_BOTTOM_UP}) > QBYCBCR_RGB_ARGB) {
            throw bad("layout numbers are 0 to 3, with 0x8000 added for bottom-up rows");
        }
        type = value;
    }
    return bottom_up ? type | QBYCBCR_RGB_BOTTOM_UP : type;
}

std::string rgb_type_text(QBYCBCRRgbType type) {
    const uint32_t layout = type & ~uint32_t{QBYCBCR_RGB_BOTTOM_UP};
    std::string text = layout < kLayouts.size() ? kLayouts[layout].name : "?";
    if (is_bottom_up(type)) text.append(",").append(kBottomUpWord);
    return text;
}

std::string rgb_type_help() {
    return "    bgra  0  rgb32 bytes B G R A; rgb24 B G R; rgb555/565 blue in the top bits\n"
           "    abgr  1  rgb32 bytes A B G R; rgb24 B G R; rgb555/565 blue in the top bits\n"
           "    rgba  2  rgb32 bytes R G B A; rgb24 R G B; rgb555/565 red in the top bits\n"
           "    argb  3  rgb32 bytes A R G B; rgb24 R G B; rgb555/565 red in the top bits\n"
           "    LAYOUT,bottom-up (or the number + 0x8000, e.g. 0x8002, or --bottom-up):\n"
           "             the last picture row first.\n"
           "  rgb555 and rgb565 pixels are little-endian 16-bit words of 5, 5, 5 bits (the\n"
           "  top bit 0) or 5, 6, 5 bits, each channel's top bits kept. Alpha is 255.\n"
           "  Sources only: rgb48 (R, G, B little-endian 16-bit words, B G R for bgra,\n"
           "  R G B for rgba; abgr and argb are refused, rgb48 has no alpha), rgb64 (four\n"
           "  16-bit words in the rgb32 order), rgb32f (four native 32-bit floats in\n"
           "  the rgb32 order, 0.0 to 1.0) and rgb10 (one little-endian 32-bit word of\n"
           "  10-bit channels: G in bits 12-21, R in bits 22-31 and B in bits 2-11 for\n"
           "  rgba and argb, B in 22-31 and R in 2-11 for bgra and abgr; bits 0-1 unused).\n";
}

void rgb_row_to_rgb24(RgbDepth depth, QBYCBCRRgbType type, const uint8_t* src, uint8_t* dst,
                      uint32_t width) {
    const bool blue = blue_first(type);
    const bool alpha = alpha_first(type);
    for (uint32_t x = 0; x < width; ++x, dst += 3) {
        uint8_t first = 0, green = 0, last = 0;  // in the layout's order
        switch (depth) {
            case RgbDepth::Rgb555:
            case RgbDepth::Rgb565: {
                const uint32_t word = src[2 * x] | uint32_t{src[2 * x + 1]} << 8;
                if (depth == RgbDepth::Rgb555) {
                    first = widen5(word >> 10 & 31);
                    green = widen5(word >> 5 & 31);
                } else {
                    first = widen5(word >> 11 & 31);
                    green = widen6(word >> 5 & 63);
                }
                last = widen5(word & 31);
                break;
            }
            case RgbDepth::Rgb24:
                first = src[3 * x];
                green = src[3 * x + 1];
                last = src[3 * x + 2];
                break;
            case RgbDepth::Rgb32: {
                const uint8_t* p = src + 4 * size_t{x} + (alpha ? 1 : 0);
                first = p[0];
                green = p[1];
                last = p[2];
                break;
            }
            case RgbDepth::Rgb48:
            case RgbDepth::Rgb64: {
                // The high byte of each little-endian word.
                const bool four = depth == RgbDepth::Rgb64;
                const uint8_t* p = src + (four ? 8 : 6) * size_t{x} + (four && alpha ? 2 : 0);
                first = p[1];
                green = p[3];
                last = p[5];
                break;
            }
            case RgbDepth::Rgb32F: {
                const uint8_t* p = src + 16 * size_t{x} + (alpha ? 4 : 0);
                first = float_to_8bit(p);
                green = float_to_8bit(p + 4);
                last = float_to_8bit(p + 8);
                break;
            }
            case RgbDepth::Rgb10: {
                // The top 8 of each 10-bit field, from the top field down.
                const uint32_t word = load_le32(src + 4 * size_t{x});
                first = static_cast<uint8_t>(word >> 24);
                green = static_cast<uint8_t>(word >> 14);
                last = static_cast<uint8_t>(word >> 4);
                break;
            }
        }
        dst[0] = blue ? last : first;
        dst[1] = green;
        dst[2] = blue ? first : last;
    }
}

void rgba_row_to_rgb(RgbDepth depth, QBYCBCRRgbType type, const uint8_t* src, uint8_t* dst,
                     uint32_t width) {
    const bool blue = blue_first(type);
    const bool alpha = alpha_first(type);
    for (uint32_t x = 0; x < width; ++x, src += 4) {
        // The channels in the layout's order.
        const uint32_t first = blue ? src[2] : src[0];
        const uint32_t green = src[1];
        const uint32_t last = blue ? src[0] : src[2];
        switch (depth) {
            case RgbDepth::Rgb555:
            case RgbDepth::Rgb565: {
                const uint32_t word = depth == RgbDepth::Rgb555
                                          ? (first >> 3) << 10 | (green >> 3) << 5 | last >> 3
                                          : (first >> 3) << 11 | (green >> 2) << 5 | last >> 3;
                dst[0] = static_cast<uint8_t>(word);
                dst[1] = static_cast<uint8_t>(word >> 8);
                dst += 2;
                break;
            }
            case RgbDepth::Rgb24:
                dst[0] = static_cast<uint8_t>(first);
                dst[1] = static_cast<uint8_t>(green);
                dst[2] = static_cast<uint8_t>(last);
                dst += 3;
                break;
            case RgbDepth::Rgb32: {
                uint8_t* p = dst + (alpha ? 1 : 0);
                p[0] = static_cast<uint8_t>(first);
                p[1] = static_cast<uint8_t>(green);
                p[2] = static_cast<uint8_t>(last);
                dst[alpha ? 0 : 3] = src[3];
                dst += 4;
                break;
            }
            case RgbDepth::Rgb48:
            case RgbDepth::Rgb64: {
                // v * 257: the 16-bit value whose high and low bytes are v.
                const bool four = depth == RgbDepth::Rgb64;
                uint8_t* p = dst + (four && alpha ? 2 : 0);
                for (const uint32_t v : {first, green, last}) {
                    p[0] = p[1] = static_cast<uint8_t>(v);
                    p += 2;
                }
                if (four) dst[alpha ? 0 : 6] = dst[alpha ? 1 : 7] = src[3];
                dst += four ? 8 : 6;
                break;
            }
            case RgbDepth::Rgb32F: {
                float* p = reinterpret_cast<float*>(dst);
                const float a = static_cast<float>(src[3]) / 255.0f;
                const float c[3] = {static_cast<float>(first) / 255.0f,
                                    static_cast<float>(green) / 255.0f,
                                    static_cast<float>(last) / 255.0f};
                const float pixel[4] = {alpha ? a : c[0], alpha ? c[0] : c[1], alpha ? c[1] : c[2],
                                        alpha ? c[2] : a};
                std::memcpy(p, pixel, sizeof pixel);
                dst += 16;
                break;
            }
            case RgbDepth::Rgb10: {
                const uint32_t word =
                    widen10(first) << 22 | widen10(green) << 12 | widen10(last) << 2;
                for (int b = 0; b < 4; ++b) dst[b] = static_cast<uint8_t>(word >> (8 * b));
                dst += 4;
                break;
            }
        }
    }
}

}  // namespace cycbcr_tool
