// RGB to v210: the coefficient rows of each input depth, the per-pixel rules,
// and what the frame walk shares with its AVX2 row kernels.
//
// The filtered engines (8-bit, 16-bit and 10-bit input) work a row in three
// steps: per-pixel Y, Cb and Cr into 16-bit rows; the 1-2-2-1 chroma filter
// over the clamped per-pixel chroma, written with the luma as one row of
// samples in v210 order (Cb0 Y0 Cr0 Y1 Cb1 Y2 ...); and the groups of six
// pixels packed from it, four words each. The AVX2 kernels replace steps
// with the same results.
#pragma once

#include <cstdint>

#include "cycbcr.h"
#include "frame/buffer_sizes.h"
#include "frame/formats.h"
#include "fromrgb/from_rgb.h"
#include "torgb/colour_tables.h"

namespace cycbcr::fromrgb {

// A row of weights of R, G and B in Y, Cb and Cr (signed, at the table's
// scale) and the offset added to Y.
struct V210Row {
    int32_t yOffset;
    int32_t y[3], cb[3], cr[3];
};
// Rows for matrices 1 to 9; 10 and every other value take the default row.
struct V210Table {
    V210Row byMatrix[9];
    V210Row fallback;
    constexpr const V210Row& operator[](QBYCBCRMatrix m) const {
        return m >= 1 && m <= 9 ? byMatrix[m - 1] : fallback;
    }
};

// clang-format off

// 8-bit input, weights x 40,000 (truncated): sums divided by 10,000 give 10-bit
// samples. The default CrB -2839 is the library's own value (one unit short).
inline constexpr V210Table kV210Rgb8 = {{
    {0,  {11960, 23480, 4559},  {-6903,  -13553, 20456}, {20456, -17130, -3326}},
    {64, {7320,  24560, 2480},  {-4040,  -13520, 17560}, {17560, -15960, -1600}},
    {0,  {8520,  28600, 2880},  {-4680,  -15760, 20440}, {20440, -18560, -1880}},
    {64, {7282,  24497, 2473},  {-4013,  -13503, 17517}, {17517, -15910, -1606}},
    {0,  {8504,  28607, 2888},  {-4582,  -15417, 20000}, {20000, -18166, -1833}},
    {64, {9024,  23291, 2037},  {-4906,  -12662, 17568}, {17568, -16155, -1412}},
    {0,  {10508, 27120, 2372},  {-5585,  -14414, 20000}, {20000, -18391, -1608}},
    {64, {8880,  25240, 19840}, {-10800, -30720, 41200}, {18760, -17440, -1360}},
    {0,  {10360, 29520, 23200}, {-12320, -35120, 47440}, {21480, -19920, -1560}},
}, {64, {10280, 20160, 3920}, {-5920, -11640, 17560}, {17560, -14720, -2839}}};

// 16-bit input (whole words), weights x 10,000 (truncated): sums divided by
// 640,000. The default CrB -709 is the library's own value (one unit short).
inline constexpr V210Table kV210Rgb16 = {{
    {0,  {2990, 5870, 1139}, {-1725, -3388, 5114},  {5114, -4282, -831}},
    {64, {1830, 6140, 620},  {-1010, -3380, 4390},  {4390, -3990, -400}},
    {0,  {2130, 7150, 720},  {-1170, -3940, 5110},  {5110, -4640, -470}},
    {64, {1820, 6124, 618},  {-1003, -3375, 4379},  {4379, -3977, -401}},
    {0,  {2126, 7151, 722},  {-1145, -3854, 5000},  {5000, -4541, -458}},
    {64, {2256, 5822, 509},  {-1226, -3165, 4392},  {4392, -4038, -353}},
    {0,  {2627, 6780, 593},  {-1396, -3603, 5000},  {5000, -4597, -402}},
    {64, {2220, 6310, 4960}, {-2700, -7680, 10300}, {4690, -4360, -340}},
    {0,  {2590, 7380, 5800}, {-3080, -8780, 11860}, {5370, -4980, -390}},
}, {64, {2570, 5040, 980}, {-1480, -2910, 4390}, {4390, -3680, -709}}};

// clang-format on

// A table with every luma offset that is not 0 replaced by `offset`.
constexpr V210Table with_offset(V210Table t, int32_t offset) {
    for (V210Row& r : t.byMatrix)
        if (r.yOffset != 0) r.yOffset = offset;
    t.fallback.yOffset = offset;
    return t;
}
// The unfiltered engine: the 8-bit weights with an 8-bit luma offset (16),
// added to 10-bit luma as it stands.
inline constexpr V210Table kV210Rgb8NoFilter = with_offset(kV210Rgb8, 16);

// 10-bit input: the forward table in millionths (rows 1 to 9) with 10-bit luma
// offsets, and its default row.
constexpr V210Table millionths_rows() {
    V210Table t{};
    auto row = [](const colour::FromRgbRow& k) {
        return V210Row{k.yOffset == 0 ? 0 : 64,
                       {k.rToY, k.gToY, k.bToY},
                       {k.rToCb, k.gToCb, k.bToCb},
                       {k.rToCr, k.gToCr, k.bToCr}};
    };
    for (QBYCBCRMatrix m = 1; m <= 9; ++m) t.byMatrix[m - 1] = row(colour::FromRGBCoeffs[m]);
    t.fallback = row(colour::FromRGBCoeffs[0]);
    return t;
}
inline constexpr V210Table kV210Rgb10 = millionths_rows();

// The 8-bit per-pixel rule: quotients by 10,000 toward zero, no rounding; Y
// plus its offset, at most 1023; Cb and Cr plus 512, clamped to 0..1023.
CYCBCR_INLINE int32_t v210_dot(const int32_t (&w)[3], int32_t r, int32_t g, int32_t b) {
    return w[0] * r + w[1] * g + w[2] * b;
}
CYCBCR_INLINE uint16_t v210_luma(int32_t q, int32_t offset) {
    const int32_t y = q + offset;
    return static_cast<uint16_t>(y > 1023 ? 1023 : y);
}
CYCBCR_INLINE uint16_t v210_chroma(int32_t q) {
    const int32_t c = q + 512;
    return static_cast<uint16_t>(c < 0 ? 0 : c > 1023 ? 1023 : c);
}

// One row of per-pixel samples: y[0..width), and cb, cr with room for one
// sample before the first pixel (the filter's left neighbour) and padding past
// the last.
struct SampleRows {
    uint16_t* y;
    uint16_t* cb;  // cb[-1] is valid
    uint16_t* cr;
    uint16_t* packed;  // samples in v210 order for the whole groups
};

// The AVX2 kernels of the 8-bit engine (nullptr on a processor without AVX2 or
// for other pixel sizes):
// per-pixel samples of pixels [0, n) of a row of 3- or 4-byte pixels, returning
// how many it did (the rest is left to the caller);
using V210Pixels = uint32_t (*)(const uint8_t* src, uint32_t n, const V210Row& k, PixelLayout l,
                                const SampleRows& s);
V210Pixels avx2_v210_pixels(PixelLayout l);
// the filtered chroma of the first `groups` groups with the luma, into
// s.packed; and the groups packed from s.packed into dst.
void avx2_v210_filter(const SampleRows& s, uint32_t groups);
void avx2_v210_pack(uint8_t* dst, const uint16_t* packed, uint32_t groups);

// What the converters read and write, for the buffer-size query: RGB24 or
// RGB32 to v210 through the filtered engine.
Extent to_v210_extent(Format from, const Call& c, QBYCBCRRgbType rgbType);
// The converters of the family outside the list (cycbcr_RGB64_to_012v,
// cycbcr_RGB10_to_012v, cycbcr_RGB32_to_012v_Alpha); `known` says whether
// `name` is one of them.
Extent to_v210_other_extent(const char* name, const Call& c, bool* known);

}  // namespace cycbcr::fromrgb
