// RGB pixels as every colour family writes them: the layout number and the
// bottom-up flag of QBYCBCRRgbType, and one pixel writer by depth and channel
// order. Bottom-up rows belong to the row walk, never to the writer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cycbcr.h"
#include "frame/inline.h"

namespace cycbcr::colour {

// Channel orders by layout number: 0, 1, 3, and 2 with every other value.
enum class RgbOrder : uint8_t { BGRA, ABGR, RGBA, ARGB };

struct RgbLayout {
    RgbOrder order;
    bool bottom_up;
};
inline constexpr uint32_t kBottomUp = QBYCBCR_RGB_BOTTOM_UP;

// The layout number is the whole value with bit 15 cleared, so stray high bits
// make it "other": R, G, B order.
CYCBCR_INLINE constexpr RgbLayout rgb_layout(QBYCBCRRgbType type) {
    const uint32_t n = type & ~kBottomUp;
    const RgbOrder o = n == 0   ? RgbOrder::BGRA
                       : n == 1 ? RgbOrder::ABGR
                       : n == 3 ? RgbOrder::ARGB
                                : RgbOrder::RGBA;
    return {o, (type & kBottomUp) != 0};
}

// Pixel depths: 15- and 16-bit words, 3- and 4-byte pixels, and 3- and 4-word
// pixels of 16-bit channels.
enum class RgbDepth : uint8_t { Rgb555, Rgb565, Rgb24, Rgb32, Rgb48, Rgb64 };

CYCBCR_INLINE constexpr size_t pixel_bytes(RgbDepth d) {
    switch (d) {
        case RgbDepth::Rgb555:
        case RgbDepth::Rgb565:
            return 2;
        case RgbDepth::Rgb24:
            return 3;
        case RgbDepth::Rgb32:
            return 4;
        case RgbDepth::Rgb48:
            return 6;
        case RgbDepth::Rgb64:
            return 8;
    }
    return 0;
}
CYCBCR_INLINE constexpr bool has_alpha(RgbDepth d) {
    return d == RgbDepth::Rgb32 || d == RgbDepth::Rgb64;
}
CYCBCR_INLINE constexpr bool wide_channels(RgbDepth d) {
    return d == RgbDepth::Rgb48 || d == RgbDepth::Rgb64;
}
// Whether the colour channels run B, G, R in address order (and from the most
// significant field down in 15- and 16-bit words).
CYCBCR_INLINE constexpr bool blue_first(RgbOrder o) {
    return o == RgbOrder::BGRA || o == RgbOrder::ABGR;
}
CYCBCR_INLINE constexpr bool alpha_first(RgbOrder o) {
    return o == RgbOrder::ABGR || o == RgbOrder::ARGB;
}

// One pixel's channels, clamped to the depth's range already (0..255, or
// 0..65535 for 16-bit channels).
struct Rgb {
    uint32_t r, g, b;
};

// Writes one pixel at p. 15- and 16-bit words keep the top bits of each channel
// (5, or 6 for the 16-bit word's green), never rounded, and are stored little-
// endian; 16-bit channels are little-endian words.
template <RgbDepth D, RgbOrder O>
CYCBCR_INLINE void put_pixel(uint8_t* p, Rgb c, uint32_t alpha) {
    const uint32_t first = blue_first(O) ? c.b : c.r;
    const uint32_t last = blue_first(O) ? c.r : c.b;
    if constexpr (D == RgbDepth::Rgb555 || D == RgbDepth::Rgb565) {
        const uint16_t w =
            D == RgbDepth::Rgb555
                ? static_cast<uint16_t>((first >> 3) << 10 | (c.g >> 3) << 5 | last >> 3)
                : static_cast<uint16_t>((first >> 3) << 11 | (c.g >> 2) << 5 | last >> 3);
        std::memcpy(p, &w, 2);
    } else if constexpr (wide_channels(D)) {
        uint16_t w[4];
        size_t i = 0;
        if (has_alpha(D) && alpha_first(O)) w[i++] = static_cast<uint16_t>(alpha);
        w[i++] = static_cast<uint16_t>(first);
        w[i++] = static_cast<uint16_t>(c.g);
        w[i++] = static_cast<uint16_t>(last);
        if (has_alpha(D) && !alpha_first(O)) w[i++] = static_cast<uint16_t>(alpha);
        std::memcpy(p, w, 2 * i);
    } else {
        size_t i = 0;
        if (has_alpha(D) && alpha_first(O)) p[i++] = static_cast<uint8_t>(alpha);
        p[i++] = static_cast<uint8_t>(first);
        p[i++] = static_cast<uint8_t>(c.g);
        p[i++] = static_cast<uint8_t>(last);
        if (has_alpha(D) && !alpha_first(O)) p[i++] = static_cast<uint8_t>(alpha);
    }
}

// Calls fn.template operator()<O>() with the order as a template argument, so a
// row kernel is chosen once per frame.
template <class Fn>
CYCBCR_INLINE decltype(auto) with_order(RgbOrder o, Fn&& fn) {
    switch (o) {
        case RgbOrder::BGRA:
            return fn.template operator()<RgbOrder::BGRA>();
        case RgbOrder::ABGR:
            return fn.template operator()<RgbOrder::ABGR>();
        case RgbOrder::ARGB:
            return fn.template operator()<RgbOrder::ARGB>();
        case RgbOrder::RGBA:
            break;
    }
    return fn.template operator()<RgbOrder::RGBA>();
}

}  // namespace cycbcr::colour
