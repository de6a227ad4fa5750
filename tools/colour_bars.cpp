#include "colour_bars.h"

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

constexpr int round_positive(double v) {
    return static_cast<int>(v + 0.5);
}

// BT.601 luma weights, studio range: Y in 16..235, Cb and Cr in 16..240.
constexpr YCbCr studio_601(double r, double g, double b) {
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    return {static_cast<uint8_t>(round_positive(16.0 + 219.0 * y)),
            static_cast<uint8_t>(round_positive(128.0 + 224.0 * (b - y) / 1.772)),
            static_cast<uint8_t>(round_positive(128.0 + 224.0 * (r - y) / 1.402))};
}

constexpr double kBar = 0.75;
constexpr std::array<YCbCr, 8> kBars = {
    studio_601(kBar, kBar, kBar), studio_601(kBar, kBar, 0),  // white, yellow
    studio_601(0, kBar, kBar),    studio_601(0, kBar, 0),     // cyan, green
    studio_601(kBar, 0, kBar),    studio_601(kBar, 0, 0),     // magenta, red
    studio_601(0, 0, kBar),       studio_601(0, 0, 0),        // blue, black
};

// Byte positions of Y0, Cb, Y1 and Cr inside one 4-byte pair.
struct PairOrder {
    int y0, cb, y1, cr;
};

void write_packed422(PairOrder order, bool bottom_up, uint32_t width, uint32_t height,
                     const FrameLayout& layout, std::span<uint8_t> frame) {
    // Every picture line is the same, so build one row and copy it.
    std::vector<uint8_t> row(layout.pitch);
    for (uint32_t x = 0; x + 1 < width; x += 2) {
        // Chroma is sited with the even pixel of the pair.
        const YCbCr left = bar_colour(static_cast<int>(uint64_t{x} * 8 / width));
        const YCbCr right = bar_colour(static_cast<int>(uint64_t{x + 1} * 8 / width));
        uint8_t* pair = row.data() + uint64_t{x} * 2;
        pair[order.y0] = left.y;
        pair[order.cb] = left.cb;
        pair[order.y1] = right.y;
        pair[order.cr] = left.cr;
    }
    for (uint32_t line = 0; line < height; ++line) {
        const uint32_t stored = bottom_up ? height - 1 - line : line;
        std::memcpy(frame.data() + uint64_t{stored} * layout.pitch, row.data(), layout.pitch);
    }
}

}  // namespace

YCbCr bar_colour(int bar) {
    return kBars.at(static_cast<size_t>(bar));
}

void write_colour_bars(Format format, uint32_t width, uint32_t height, const FrameLayout& layout,
                       std::span<uint8_t> frame) {
    switch (format) {
        case Format::UYVY:
            return write_packed422({1, 0, 3, 2}, false, width, height, layout, frame);
        case Format::YUY2:
            return write_packed422({0, 1, 2, 3}, false, width, height, layout, frame);
        case Format::YVYU:
            return write_packed422({0, 3, 2, 1}, false, width, height, layout, frame);
        case Format::CYUV:
            return write_packed422({1, 0, 3, 2}, true, width, height, layout, frame);
        default:
            break;
    }
    throw ToolError(std::string("no built-in test frame for ") + format_name(format) +
                    " yet; use --in");
}

}  // namespace cycbcr_tool
