#include "colour_bars.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "rgb_layouts.h"
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

// The same at 10 bits: Y in 64..940, Cb and Cr in 64..960.
constexpr YCbCr10 studio_601_10(double r, double g, double b) {
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    return {static_cast<uint16_t>(round_positive(64.0 + 876.0 * y)),
            static_cast<uint16_t>(round_positive(512.0 + 896.0 * (b - y) / 1.772)),
            static_cast<uint16_t>(round_positive(512.0 + 896.0 * (r - y) / 1.402))};
}

constexpr double kBar = 0.75;
constexpr std::array<YCbCr, 8> kBars = {
    studio_601(kBar, kBar, kBar), studio_601(kBar, kBar, 0),  // white, yellow
    studio_601(0, kBar, kBar),    studio_601(0, kBar, 0),     // cyan, green
    studio_601(kBar, 0, kBar),    studio_601(kBar, 0, 0),     // magenta, red
    studio_601(0, 0, kBar),       studio_601(0, 0, 0),        // blue, black
};
constexpr std::array<YCbCr10, 8> kBars10 = {
    studio_601_10(kBar, kBar, kBar), studio_601_10(kBar, kBar, 0), studio_601_10(0, kBar, kBar),
    studio_601_10(0, kBar, 0),       studio_601_10(kBar, 0, kBar), studio_601_10(kBar, 0, 0),
    studio_601_10(0, 0, kBar),       studio_601_10(0, 0, 0),
};

// The bar under pixel x of a row of the given width.
int bar_at(uint32_t x, uint32_t width) {
    return static_cast<int>(uint64_t{x} * 8 / width);
}

// Byte positions of Y0, Cb, Y1 and Cr inside one 4-byte pair.
struct PairOrder {
    int y0, cb, y1, cr;
};

void write_packed422(PairOrder order, bool bottom_up, uint32_t width, uint32_t height,
                     const FrameLayout& layout, std::span<uint8_t> frame) {
    // Every picture line is the same, so build one row and copy it.
    // At an odd width the last pair's second pixel lies past the picture; it
    // repeats the last pixel.
    std::vector<uint8_t> row(layout.pitch);
    for (uint32_t x = 0; x < width; x += 2) {
        // Chroma is sited with the even pixel of the pair.
        const YCbCr left = bar_colour(bar_at(x, width));
        const YCbCr right = x + 1 < width ? bar_colour(bar_at(x + 1, width)) : left;
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

// Planar: the Y plane, then the two chroma planes in the format's order, each
// chroma sample taking the colour of the even pixel of its pair. Odd sizes
// have a chroma sample for the last, unpaired pixel and row.
void write_planar(bool cr_first, bool full_height_chroma, uint32_t width, uint32_t height,
                  std::span<uint8_t> frame) {
    const uint32_t chroma_width = width / 2 + width % 2;
    const uint32_t chroma_height = full_height_chroma ? height : height / 2 + height % 2;
    std::vector<uint8_t> y_row(width), cb_row(chroma_width), cr_row(chroma_width);
    for (uint32_t x = 0; x < width; ++x) y_row[x] = bar_colour(bar_at(x, width)).y;
    for (uint32_t k = 0; k < chroma_width; ++k) {
        const YCbCr c = bar_colour(bar_at(2 * k, width));
        cb_row[k] = c.cb;
        cr_row[k] = c.cr;
    }
    uint8_t* out = frame.data();
    for (uint32_t line = 0; line < height; ++line, out += width) {
        std::memcpy(out, y_row.data(), width);
    }
    for (const std::vector<uint8_t>* plane :
         {cr_first ? &cr_row : &cb_row, cr_first ? &cb_row : &cr_row}) {
        for (uint32_t line = 0; line < chroma_height; ++line, out += chroma_width) {
            std::memcpy(out, plane->data(), chroma_width);
        }
    }
}

// NV12: the I420 bars, then their Cb and Cr planes interleaved into one plane
// of Cb, Cr pairs (the two frames are the same size).
void write_nv12(uint32_t width, uint32_t height, std::span<uint8_t> frame) {
    write_planar(false, false, width, height, frame);
    const size_t luma = size_t{width} * height;
    const size_t chroma = size_t{width / 2 + width % 2} * (height / 2 + height % 2);
    const std::vector<uint8_t> planes(frame.begin() + luma, frame.begin() + luma + 2 * chroma);
    for (size_t i = 0; i < chroma; ++i) {
        frame[luma + 2 * i] = planes[i];
        frame[luma + 2 * i + 1] = planes[chroma + i];
    }
}

// v210: each group of six pixels is twelve samples in the UYVY order
// (Cb0 Y0 Cr0 Y1 Cb1 Y2 ...), three to a little-endian word, bits 30-31 zero.
// Pixels past the width that complete the last group repeat the last pixel;
// the rest of the row, up to its 128-byte block, stays zero.
void write_v210(uint32_t width, uint32_t height, const FrameLayout& layout,
                std::span<uint8_t> frame) {
    std::vector<uint8_t> row(layout.pitch);
    const uint32_t groups = (width + 5) / 6;
    for (uint32_t g = 0; g < groups; ++g) {
        uint32_t samples[12];
        for (uint32_t i = 0; i < 6; ++i) {
            const uint32_t x = std::min(6 * g + i, width - 1);
            const YCbCr10 c = bar_colour10(bar_at(x, width));
            samples[2 * i + 1] = c.y;
            if (i % 2 == 0) {  // chroma sited with the even pixel of the pair
                samples[2 * i] = c.cb;
                samples[2 * i + 2] = c.cr;
            }
        }
        for (uint32_t w = 0; w < 4; ++w) {
            const uint32_t word =
                samples[3 * w] | (samples[3 * w + 1] << 10) | (samples[3 * w + 2] << 20);
            uint8_t* out = row.data() + 16 * g + 4 * w;
            for (int b = 0; b < 4; ++b) out[b] = static_cast<uint8_t>(word >> (8 * b));
        }
    }
    for (uint32_t line = 0; line < height; ++line) {
        std::memcpy(frame.data() + uint64_t{line} * layout.pitch, row.data(), layout.pitch);
    }
}

// Which of R, G, B bar 0 to 7 lights.
constexpr std::array<std::array<bool, 3>, 8> kLit = {{{true, true, true},
                                                      {true, true, false},
                                                      {false, true, true},
                                                      {false, true, false},
                                                      {true, false, true},
                                                      {true, false, false},
                                                      {false, false, true},
                                                      {false, false, false}}};

constexpr uint8_t kBar8 = 191;

}  // namespace

YCbCr bar_colour(int bar) {
    return kBars.at(static_cast<size_t>(bar));
}

YCbCr10 bar_colour10(int bar) {
    return kBars10.at(static_cast<size_t>(bar));
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
        case Format::V210:
            return write_v210(width, height, layout, frame);
        case Format::I420:
            return write_planar(false, false, width, height, frame);
        case Format::YV12:
            return write_planar(true, false, width, height, frame);
        case Format::P422:
            return write_planar(false, true, width, height, frame);
        case Format::NV12:
            return write_nv12(width, height, frame);
        default:
            break;
    }
    throw ToolError(std::string("no built-in test frame for ") + format_name(format) +
                    " yet; use --in");
}

void write_rgb_colour_bars(RgbDepth depth, QBYCBCRRgbType type, uint32_t width, uint32_t height,
                           std::span<uint8_t> frame) {
    std::vector<uint8_t> rgba(size_t{width} * 4);
    for (uint32_t x = 0; x < width; ++x) {
        const std::array<bool, 3>& lit = kLit[static_cast<size_t>(bar_at(x, width))];
        for (size_t c = 0; c < 3; ++c) rgba[4 * size_t{x} + c] = lit[c] ? kBar8 : 0;
        rgba[4 * size_t{x} + 3] = 255;
    }
    const size_t row_bytes = size_t{width} * rgb_pixel_bytes(depth);
    std::vector<uint8_t> row(row_bytes);
    rgba_row_to_rgb(depth, type, rgba.data(), row.data(), width);
    // The bars are vertical: every row, top-down or bottom-up, is this one.
    for (uint32_t line = 0; line < height; ++line) {
        std::memcpy(frame.data() + size_t{line} * row_bytes, row.data(), row_bytes);
    }
}

}  // namespace cycbcr_tool
