// Where the samples of a frame lie: plane positions and pitches of frames held
// in one buffer, the byte positions of packed 4:2:2 pixel pairs, v210 rows.
// Every family finds its planes and pairs here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/formats.h"

namespace cycbcr {

// The first Y, Cb and Cr sample of a frame: three planes, or three byte
// positions inside the first pixel pair of a packed frame.
struct Planes {
    uint8_t* y;
    uint8_t* cb;
    uint8_t* cr;
};

// Packed 4:2:2: the first Y, Cb and Cr byte of the frame at p (cyuv as UYVY).
// Each sample recurs every four bytes; the second Y is two bytes after the first.
CYCBCR_INLINE constexpr Planes packed_samples(Format f, uint8_t* p) {
    const PairOffsets o = info(f).pair;
    return {p + o.y0, p + o.cb, p + o.cr};
}

// The byte order whose pair puts Y0, Cb and Cr where these three pointers do
// (UYVY, YUY2 or YVYU), or Unknown. Engines handed sample pointers pick their
// row kernels by it, once per frame.
CYCBCR_INLINE Format packed_shape(const void* y, const void* cb, const void* cr) {
    const auto Y = reinterpret_cast<uintptr_t>(y);
    const auto B = reinterpret_cast<uintptr_t>(cb);
    const auto R = reinterpret_cast<uintptr_t>(cr);
    if (B == Y + 1 && R == Y + 3) return Format::YUY2;
    if (B == Y - 1 && R == Y + 1) return Format::UYVY;
    if (B == Y + 3 && R == Y + 1) return Format::YVYU;
    return Format::Unknown;
}

// Where the planes of a planar frame in one buffer begin. The chroma planes
// start at span * height bytes, the second a quarter (4:2:0) or half (4:2:2) of
// that after the first, in 32-bit arithmetic with shifts for the quarter and
// half. The span is the pitch, except for a planar source of a conversion to
// packed 4:2:2, where it is the width whatever the pitch.
struct PlaneOffsets {
    uint64_t cb, cr;  // the Y plane is at 0
};
CYCBCR_INLINE constexpr PlaneOffsets planar_offsets(Format f, uint32_t span, uint32_t height) {
    const uint32_t d = span * height;
    const uint32_t second = full_height_chroma(f) ? d >> 1 : d >> 2;
    if (info(f).cr_first) return {uint64_t{d} + second, d};
    return {d, uint64_t{d} + second};
}
CYCBCR_INLINE constexpr Planes planar_planes(Format f, uint8_t* base, uint32_t span,
                                             uint32_t height) {
    const PlaneOffsets o = planar_offsets(f, span, height);
    return {base, base + o.cb, base + o.cr};
}

// Rows of a chroma plane: pitch / 2 apart, height or height / 2 of them.
CYCBCR_INLINE constexpr uint32_t chroma_pitch(uint32_t pitch) {
    return pitch / 2;
}
CYCBCR_INLINE constexpr uint32_t chroma_rows(Format f, uint32_t height) {
    return height >> info(f).chroma_y;
}

// The natural size of one v210 row: ceil(width / 48) x 128 bytes, computed as
// width * 8 / 3 when the width is a multiple of 48.
CYCBCR_INLINE constexpr uint32_t v210_row_size(uint32_t width) {
    return width % 48 == 0 ? width * 8 / 3 : (width / 48 + 1) * 128;
}

// The pitch of a tightly packed frame: two bytes a pixel for packed 4:2:2, the
// v210 row, the width (the luma plane) for 8-bit planar formats.
CYCBCR_INLINE constexpr uint32_t natural_pitch(Format f, uint32_t width) {
    switch (info(f).arrangement) {
        case Arrangement::Packed422:
            return 2 * width;
        case Arrangement::V210:
            return v210_row_size(width);
        case Arrangement::Planar:
        case Arrangement::SemiPlanar:
            return width * info(f).sample_bytes;
        case Arrangement::Rgb:
            return width * info(f).sample_bytes;
        case Arrangement::None:
            break;
    }
    return 0;
}

}  // namespace cycbcr
