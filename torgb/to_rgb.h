// 8-bit YCbCr to RGB: the engine's source shapes, row kernels and frame walk,
// shared by the plain engine, its AVX2 row kernels and the entry points.
#pragma once

#include <cstdint>

#include "frame/buffer_sizes.h"
#include "frame/formats.h"
#include "frame/inline.h"
#include "torgb/colour_tables.h"
#include "torgb/rgb_pixels.h"

namespace cycbcr::colour {

// How the engine steps through its three sample pointers, per pixel pair.
enum class Source : uint8_t {
    Packed,      // 4:2:2 pairs of four bytes: Y at 0 and 2, Cb and Cr every 4 bytes
    Planar,      // Y, Cb, Cr planes
    SemiPlanar,  // a Y plane and one plane of interleaved Cb, Cr pairs
};

// One row of pixel pairs. alpha, when the kernel takes an alpha plane, gives
// each pixel's alpha byte; otherwise it is ignored and alpha is the maximum.
struct RowArgs {
    uint8_t* dst;
    const uint8_t* y;
    const uint8_t* cb;
    const uint8_t* cr;
    const uint8_t* alpha;
    uint32_t pairs;
};
// A plain row kernel, and a vector one, which converts what it can and hands
// the rest of the row, pointers advanced, to `tail`: the plain kernel of the
// same rule.
using PlainRow = void (*)(const RowArgs& a, const ToRgbRow<int32_t>& k);
using VectorRow = void (*)(const RowArgs& a, const ToRgbRow<int32_t>& k, PlainRow tail);

// Family A for one pixel pair: the chroma products once, then each luma.
struct ChromaA {
    int64_t r, g, b;
};
CYCBCR_INLINE ChromaA chroma_a(const ToRgbRow<int32_t>& k, uint32_t cb, uint32_t cr) {
    const int64_t u = static_cast<int64_t>(cb) - 128, v = static_cast<int64_t>(cr) - 128;
    return {k.crToR * v, -(k.crToG * v) - k.cbToG * u, k.cbToB * u};
}
// Truncates toward zero (C division), then clamps: no rounding constant.
CYCBCR_INLINE uint32_t a_channel(int64_t sum) {
    const int64_t q = sum / 10000;
    return q < 0 ? 0u : q > 255 ? 255u : static_cast<uint32_t>(q);
}
CYCBCR_INLINE Rgb pixel_a(const ToRgbRow<int32_t>& k, uint32_t y, const ChromaA& c) {
    const int64_t l = (static_cast<int64_t>(y) - k.yOffset) * k.yGain;
    return {a_channel(l + c.r), a_channel(l + c.g), a_channel(l + c.b)};
}

// Family D: 16 bits a channel. R and B carry 5000 twice of rounding bias, G
// none; the studio matrices take the luma as Y - 16 whatever their offset and
// lift the result by 4096, so studio black is 4096.
struct FamilyD {
    const ToRgbRow<int64_t>& k;
    bool studio;
    struct Chroma {
        int64_t r, g, b;
    };
    CYCBCR_INLINE Chroma chroma(uint32_t cb, uint32_t cr) const {
        const int64_t u = static_cast<int64_t>(cb) - 128, v = static_cast<int64_t>(cr) - 128;
        return {k.crToR * v + 5000, -(k.crToG * v) - k.cbToG * u, k.cbToB * u + 5000};
    }
    CYCBCR_INLINE uint32_t channel(int64_t sum) const {
        const int64_t q = sum / 10000 + (studio ? 4096 : 0);
        return q < 0 ? 0u : q > 65535 ? 65535u : static_cast<uint32_t>(q);
    }
    CYCBCR_INLINE Rgb pixel(uint32_t y, const Chroma& c) const {
        const int64_t l = (static_cast<int64_t>(y) - (studio ? 16 : k.yOffset)) * k.yGain + 5000;
        return {channel(l + c.r), channel(l - 5000 + c.g), channel(l + c.b)};
    }
};

// The depth of a depth argument in bits; false for the depths nothing is
// written for.
CYCBCR_INLINE constexpr bool depth_of_bits(uint32_t bits, RgbDepth* d) {
    switch (bits) {
        case 15:
            *d = RgbDepth::Rgb555;
            return true;
        case 16:
            *d = RgbDepth::Rgb565;
            return true;
        case 24:
            *d = RgbDepth::Rgb24;
            return true;
        case 32:
            *d = RgbDepth::Rgb32;
            return true;
    }
    return false;
}

// The plain family-A kernel of a row rule, and its AVX2 kernel (null where the
// AVX2 file has none; the AVX2 kernels need a processor with AVX2). `stream`
// kernels write with streaming stores and need rows 32-byte aligned. `packed`
// is the byte order the packed sample pointers describe (frame/geometry.h
// packed_shape), or Unknown; `pairedChroma` says interleaved chroma has Cr
// right after Cb.
PlainRow plain_row_a(Source s, RgbDepth d, RgbOrder o, bool alphaPlane);
VectorRow avx2_row_a(Source s, Format packed, bool pairedChroma, RgbDepth d, RgbOrder o,
                     bool alphaPlane, bool stream);

// The engine's arguments, as cycbcr_ToRGBInt takes them.
struct EngineArgs {
    uint8_t* dst;
    const uint8_t* y;
    const uint8_t* cb;
    const uint8_t* cr;
    uint32_t width, height, dstPitch, srcPitch;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType rgbType;
    int32_t is422;
    uint32_t planar;
    uint32_t depth;
    uint32_t chromaPitch;
};

// Bytes touched by the converters of this family (frame/buffer_sizes.h), for a
// call with this matrix and RGB type on whichever path any level takes; the
// pair query asks for the widest over every matrix and type.
Extent to_rgb_extent(Format from, Format to, const Call& c, QBYCBCRMatrix matrix,
                     QBYCBCRRgbType rgbType);

}  // namespace cycbcr::colour
