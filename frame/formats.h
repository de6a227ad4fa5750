// Every pixel layout the library reads or writes, and what each looks like in
// memory. The one format enumeration: converters, the dispatcher, the buffer-size
// query and the converter lists all name formats by it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cycbcr.h"
#include "frame/inline.h"

namespace cycbcr {

enum class Format : uint8_t {
    Unknown,
    // 8-bit packed 4:2:2, pixel pairs of four bytes (cyuv: UYVY stored bottom-up).
    UYVY,
    YUY2,
    YVYU,
    CYUV,
    // 8-bit planar, three planes back to back in one buffer (YV12: Cr before Cb).
    I420,
    YV12,
    P422,
    // 10-bit packed 4:2:2, six pixels in four 32-bit words.
    V210,
    // Three planes of 16-bit little-endian words, each plane its own pointer:
    // 10- and 12-bit samples in the low bits, 16-bit samples in all of them.
    YUV420P10,
    YUV420P12,
    YUV420P16,
    YUV422P10,
    YUV422P12,
    YUV422P16,
    YUV444P10,
    YUV444P12,
    // Semi-planar 4:2:0: a Y plane, then one plane of interleaved Cb, Cr pairs.
    NV12,     // 8-bit
    NV10,     // 10-bit samples in 16-bit words
    NV12P16,  // 16-bit samples
    // RGB, channel order and orientation set by QBYCBCRRgbType.
    RGB555,
    RGB565,
    RGB24,
    RGB32,
    RGB48,   // three 16-bit words a pixel
    RGB64,   // four 16-bit words a pixel
    RGB10,   // one 32-bit word a pixel, 10 bits a channel
    RGB32F,  // four 32-bit floats a pixel
    RGBPlanar,
};

inline constexpr size_t kFormatCount = static_cast<size_t>(Format::RGBPlanar) + 1;

// A value for each pair of formats, looked up by (from, to).
template <class T>
struct FormatPairs {
    T at[kFormatCount][kFormatCount] = {};
    constexpr T& operator()(Format from, Format to) {
        return at[static_cast<size_t>(from)][static_cast<size_t>(to)];
    }
    constexpr const T& operator()(Format from, Format to) const {
        return at[static_cast<size_t>(from)][static_cast<size_t>(to)];
    }
};

// How a format's samples are arranged.
enum class Arrangement : uint8_t { None, Packed422, Planar, SemiPlanar, V210, Rgb };

// Where Y0, Cb and Cr lie in the four bytes of a packed 4:2:2 pixel pair; Y1 is
// two bytes after Y0.
struct PairOffsets {
    uint8_t y0, cb, cr;
};

struct FormatInfo {
    Arrangement arrangement;
    uint8_t bits;          // significant bits of a sample (RGB: of a channel)
    uint8_t sample_bytes;  // bytes of a stored sample (packed formats: of a pixel)
    uint8_t chroma_x;      // log2 of the horizontal chroma subsampling
    uint8_t chroma_y;      // log2 of the vertical chroma subsampling
    bool cr_first;         // the Cr plane comes before the Cb plane (YV12)
    bool bottom_up;        // the first row in memory is the last picture line (cyuv)
    PairOffsets pair;      // packed 4:2:2 only
    const char* name;      // as the converter names spell it
    uint32_t fourcc;       // the canonical code, or kNoFourCC
};

// Formats the dispatcher has no code for are reached through named converters.
inline constexpr uint32_t kNoFourCC = 0xFFFFFFFFu;

// One row per format, in the order of the enumeration.
// clang-format off
constexpr FormatInfo kFormatInfo[] = {
    // arrangement, bits, bytes, cx, cy, cr_first, bottom_up, pair, name, fourcc
    {Arrangement::None,       0, 0, 0, 0, false, false, {},        "?", kNoFourCC},
    {Arrangement::Packed422,  8, 2, 1, 0, false, false, {1, 0, 2}, "uyvy", CYCBCR_FOURCC_UYVY},
    {Arrangement::Packed422,  8, 2, 1, 0, false, false, {0, 1, 3}, "yuy2", CYCBCR_FOURCC_YUY2},
    {Arrangement::Packed422,  8, 2, 1, 0, false, false, {0, 3, 1}, "yvyu", CYCBCR_FOURCC_YVYU},
    {Arrangement::Packed422,  8, 2, 1, 0, false, true,  {1, 0, 2}, "cyuv", CYCBCR_FOURCC_cyuv},
    {Arrangement::Planar,     8, 1, 1, 1, false, false, {},        "i420", CYCBCR_FOURCC_I420},
    {Arrangement::Planar,     8, 1, 1, 1, true,  false, {},        "yv12", CYCBCR_FOURCC_YV12},
    {Arrangement::Planar,     8, 1, 1, 0, false, false, {},        "p422", CYCBCR_FOURCC_P422},
    {Arrangement::V210,      10, 0, 1, 0, false, false, {},        "012v", CYCBCR_FOURCC_v210},
    {Arrangement::Planar,    10, 2, 1, 1, false, false, {},        "yuv420p10", kNoFourCC},
    {Arrangement::Planar,    12, 2, 1, 1, false, false, {},        "yuv420p12", kNoFourCC},
    {Arrangement::Planar,    16, 2, 1, 1, false, false, {},        "yuv420p16", kNoFourCC},
    {Arrangement::Planar,    10, 2, 1, 0, false, false, {},        "yuv422p10", kNoFourCC},
    {Arrangement::Planar,    12, 2, 1, 0, false, false, {},        "yuv422p12", kNoFourCC},
    {Arrangement::Planar,    16, 2, 1, 0, false, false, {},        "yuv422p16", kNoFourCC},
    {Arrangement::Planar,    10, 2, 0, 0, false, false, {},        "yuv444p10", kNoFourCC},
    {Arrangement::Planar,    12, 2, 0, 0, false, false, {},        "yuv444p12", kNoFourCC},
    {Arrangement::SemiPlanar, 8, 1, 1, 1, false, false, {},        "NV12", kNoFourCC},
    {Arrangement::SemiPlanar,10, 2, 1, 1, false, false, {},        "NV10", kNoFourCC},
    {Arrangement::SemiPlanar,16, 2, 1, 1, false, false, {},        "NV12p16", kNoFourCC},
    {Arrangement::Rgb,        5, 2, 0, 0, false, false, {},        "rgb555", kNoFourCC},
    {Arrangement::Rgb,        6, 2, 0, 0, false, false, {},        "rgb565", kNoFourCC},
    {Arrangement::Rgb,        8, 3, 0, 0, false, false, {},        "rgb24", kNoFourCC},
    {Arrangement::Rgb,        8, 4, 0, 0, false, false, {},        "rgb32", CYCBCR_FOURCC_RGB32},
    {Arrangement::Rgb,       16, 6, 0, 0, false, false, {},        "RGB48", kNoFourCC},
    {Arrangement::Rgb,       16, 8, 0, 0, false, false, {},        "RGB64", kNoFourCC},
    {Arrangement::Rgb,       10, 4, 0, 0, false, false, {},        "RGB10", kNoFourCC},
    {Arrangement::Rgb,       32, 16, 0, 0, false, false, {},       "RGB32F", kNoFourCC},
    {Arrangement::Rgb,        8, 1, 0, 0, false, false, {},        "RGBPlanar", kNoFourCC},
};
// clang-format on
static_assert(sizeof kFormatInfo / sizeof kFormatInfo[0] == kFormatCount, "one row per format");

CYCBCR_INLINE constexpr const FormatInfo& info(Format f) {
    return kFormatInfo[static_cast<size_t>(f)];
}

CYCBCR_INLINE constexpr bool is_packed422(Format f) {
    return info(f).arrangement == Arrangement::Packed422;
}
CYCBCR_INLINE constexpr bool is_planar8(Format f) {
    return info(f).arrangement == Arrangement::Planar && info(f).bits == 8;
}
// 4:2:2 chroma: one chroma row per luma row.
CYCBCR_INLINE constexpr bool full_height_chroma(Format f) {
    return info(f).chroma_y == 0;
}

// The format an accepted FourCC stands for (aliases included); Unknown for any
// other code. "422P" gives P422: the dispatcher refuses it as a destination on
// its own.
Format canonical_format(uint32_t fourcc);
// The same for a destination code: "422P" names a source layout only.
Format destination_format(uint32_t fourcc);

}  // namespace cycbcr
