#include "deep_formats.h"

#include <array>
#include <cctype>
#include <cstring>

#include "colour_bars.h"

namespace cycbcr_tool {
namespace {

constexpr std::array<DeepFormat, 11> kAll = {
    DeepFormat::Yuv420p10, DeepFormat::Yuv420p12, DeepFormat::Yuv420p16, DeepFormat::Yuv422p10,
    DeepFormat::Yuv422p12, DeepFormat::Yuv422p16, DeepFormat::Yuv444p10, DeepFormat::Yuv444p12,
    DeepFormat::Nv12,      DeepFormat::Nv10,      DeepFormat::Nv12p16,
};

bool same_text(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

uint32_t half_up(uint32_t n) {
    return n / 2 + n % 2;
}

void put_sample(uint8_t* p, uint32_t bytes, uint32_t v) {
    p[0] = static_cast<uint8_t>(v);
    if (bytes == 2) p[1] = static_cast<uint8_t>(v >> 8);
}

// Which bar pixel x of a row of the width lies in.
int bar_of(uint32_t x, uint32_t width) {
    return static_cast<int>(uint64_t{x} * 8 / width);
}

}  // namespace

std::span<const DeepFormat> all_deep_formats() {
    return kAll;
}

const char* deep_name(DeepFormat format) {
    switch (format) {
        case DeepFormat::Yuv420p10:
            return "yuv420p10";
        case DeepFormat::Yuv420p12:
            return "yuv420p12";
        case DeepFormat::Yuv420p16:
            return "yuv420p16";
        case DeepFormat::Yuv422p10:
            return "yuv422p10";
        case DeepFormat::Yuv422p12:
            return "yuv422p12";
        case DeepFormat::Yuv422p16:
            return "yuv422p16";
        case DeepFormat::Yuv444p10:
            return "yuv444p10";
        case DeepFormat::Yuv444p12:
            return "yuv444p12";
        case DeepFormat::Nv12:
            return "NV12";
        case DeepFormat::Nv10:
            return "NV10";
        case DeepFormat::Nv12p16:
            return "NV12p16";
    }
    return "?";
}

const char* deep_description(DeepFormat format) {
    switch (format) {
        case DeepFormat::Yuv420p10:
        case DeepFormat::Yuv420p12:
        case DeepFormat::Yuv420p16:
            return "planar 4:2:0, 16-bit little-endian words, planes Y, Cb, Cr";
        case DeepFormat::Yuv422p10:
        case DeepFormat::Yuv422p12:
        case DeepFormat::Yuv422p16:
            return "planar 4:2:2, 16-bit little-endian words, planes Y, Cb, Cr";
        case DeepFormat::Yuv444p10:
        case DeepFormat::Yuv444p12:
            return "planar 4:4:4, 16-bit little-endian words, planes Y, Cb, Cr";
        case DeepFormat::Nv12:
            return "semi-planar 4:2:0, 8-bit, a Y plane, then one plane of Cb, Cr pairs";
        case DeepFormat::Nv10:
            return "semi-planar 4:2:0, 10 bits in the low bits of 16-bit little-endian words";
        case DeepFormat::Nv12p16:
            return "semi-planar 4:2:0, 16-bit little-endian words";
    }
    return "?";
}

std::optional<DeepFormat> parse_deep(std::string_view text) {
    for (const DeepFormat f : kAll) {
        if (same_text(text, deep_name(f))) return f;
    }
    return std::nullopt;
}

uint32_t deep_bits(DeepFormat format) {
    switch (format) {
        case DeepFormat::Yuv420p10:
        case DeepFormat::Yuv422p10:
        case DeepFormat::Yuv444p10:
        case DeepFormat::Nv10:
            return 10;
        case DeepFormat::Yuv420p12:
        case DeepFormat::Yuv422p12:
        case DeepFormat::Yuv444p12:
            return 12;
        case DeepFormat::Nv12:
            return 8;
        default:
            return 16;
    }
}

bool deep_semi_planar(DeepFormat format) {
    return format == DeepFormat::Nv12 || format == DeepFormat::Nv10 ||
           format == DeepFormat::Nv12p16;
}

uint32_t deep_chroma_x(DeepFormat format) {
    return format == DeepFormat::Yuv444p10 || format == DeepFormat::Yuv444p12 ? 1 : 2;
}

uint32_t deep_chroma_y(DeepFormat format) {
    switch (format) {
        case DeepFormat::Yuv422p10:
        case DeepFormat::Yuv422p12:
        case DeepFormat::Yuv422p16:
        case DeepFormat::Yuv444p10:
        case DeepFormat::Yuv444p12:
            return 1;
        default:
            return 2;
    }
}

std::vector<DeepPlane> deep_planes(DeepFormat format, uint32_t width, uint32_t height) {
    const uint32_t bytes = format == DeepFormat::Nv12 ? 1 : 2;
    const uint32_t cw = deep_chroma_x(format) == 2 ? half_up(width) : width;
    const uint32_t ch = deep_chroma_y(format) == 2 ? half_up(height) : height;
    std::vector<DeepPlane> planes;
    planes.push_back({0, width, height, bytes});
    uint64_t offset = uint64_t{width} * height * bytes;
    if (deep_semi_planar(format)) {
        planes.push_back({offset, 2 * cw, ch, bytes});
    } else {
        planes.push_back({offset, cw, ch, bytes});
        planes.push_back({offset + uint64_t{cw} * ch * bytes, cw, ch, bytes});
    }
    return planes;
}

FrameLayout deep_layout(DeepFormat format, uint32_t width, uint32_t height) {
    const std::vector<DeepPlane> planes = deep_planes(format, width, height);
    const DeepPlane& last = planes.back();
    return {static_cast<uint32_t>(planes.front().row_bytes()),
            last.offset + last.row_bytes() * last.rows};
}

void write_deep_colour_bars(DeepFormat format, uint32_t width, uint32_t height,
                            std::span<uint8_t> frame) {
    const std::vector<DeepPlane> planes = deep_planes(format, width, height);
    const uint32_t bits = deep_bits(format);
    // The 10-bit bars at 10 bits and above, the 8-bit ones for NV12.
    auto sample = [&](int bar, int component) -> uint32_t {
        if (bits == 8) {
            const YCbCr c = bar_colour(bar);
            return component == 0 ? c.y : component == 1 ? c.cb : c.cr;
        }
        const YCbCr10 c = bar_colour10(bar);
        const uint32_t v = component == 0 ? c.y : component == 1 ? c.cb : c.cr;
        return v << (bits - 10);
    };
    const uint32_t cx = deep_chroma_x(format);
    for (size_t p = 0; p < planes.size(); ++p) {
        const DeepPlane& plane = planes[p];
        std::vector<uint8_t> row(plane.row_bytes());
        for (uint32_t i = 0; i < plane.samples; ++i) {
            uint32_t v;
            if (p == 0) {
                v = sample(bar_of(i, width), 0);
            } else if (deep_semi_planar(format)) {
                v = sample(bar_of(2 * (i / 2), width), 1 + static_cast<int>(i % 2));
            } else {
                v = sample(bar_of(i * cx, width), static_cast<int>(p));
            }
            put_sample(row.data() + uint64_t{i} * plane.sample_bytes, plane.sample_bytes, v);
        }
        for (uint32_t r = 0; r < plane.rows; ++r) {
            std::memcpy(frame.data() + plane.offset + r * plane.row_bytes(), row.data(),
                        row.size());
        }
    }
}

}  // namespace cycbcr_tool
