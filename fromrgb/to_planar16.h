// RGB to planar YCbCr in 16-bit containers: 10-bit 4:4:4, 12-bit 4:2:2, and
// 4:2:2 planes of 16-bit or 10-bit values. The weight rows of each converter,
// the source word reader, and what the plain rows share with their AVX2 rows.
//
// Every converter walks the frame row by row and pixel by pixel; the sums are
// integer (or double for the float variant), so the plain rows fix the bytes
// and the AVX2 rows only reproduce them.
#pragma once

#include <cstdint>

#include "cycbcr.h"
#include "frame/buffer_sizes.h"
#include "fromrgb/from_rgb.h"
#include "fromrgb/to_v210.h"

namespace cycbcr::fromrgb {

// clang-format off

// 16-bit RGB brought to 10 bits (word >> 6) into 12-bit YCbCr: the forward
// table x 160,000, truncated toward zero, sums divided by 40,000. Luma offset
// 256 where the forward table has 16 (and in the default row), else 0. Two
// weights are one unit short of the product, matrix 5's G weight of Y (114431)
// and the default Cr weight of B (-11359): the library's own values, kept.
inline constexpr V210Table kP12Rgb16 = {{
    {0,   {47841, 93920,  18237}, {-27612, -54213,  81826},  {81826, -68520, -13305}},
    {256, {29280, 98240,  9920},  {-16160, -54080,  70240},  {70240, -63840, -6400}},
    {0,   {34080, 114400, 11520}, {-18720, -63040,  81760},  {81760, -74240, -7520}},
    {256, {29130, 97988,  9892},  {-16054, -54013,  70068},  {70068, -63642, -6425}},
    {0,   {34016, 114431, 11552}, {-18331, -61668,  80000},  {80000, -72664, -7335}},
    {256, {36097, 93164,  8148},  {-19625, -50649,  70273},  {70273, -64622, -5651}},
    {0,   {42032, 108480, 9488},  {-22340, -57659,  80000},  {80000, -73566, -6433}},
    {256, {35520, 100960, 79360}, {-43200, -122880, 164800}, {75040, -69760, -5440}},
    {0,   {41440, 118080, 92800}, {-49280, -140480, 189760}, {85920, -79680, -6240}},
}, {256, {41120, 80640, 15680}, {-23680, -46560, 70240}, {70240, -58880, -11359}}};

// clang-format on

// Where R, G and B lie in a pixel of 16-bit words (word indices) and how many
// words a pixel has: 4 for 32 or 64 bits per pixel, 3 for any other count, the
// channel order that of the 8-bit engine's 48/64-bit sources (so a 3-word pixel
// of order 1 or 3 takes one channel from the next pixel's first word).
struct WordLayout {
    uint32_t words;
    uint32_t r, g, b;
    constexpr uint32_t reach() const {  // words read from a pixel's start
        const uint32_t m = r > g ? r : g;
        return (m > b ? m : b) + 1;
    }
};
CYCBCR_INLINE constexpr WordLayout word_layout(uint32_t bitsPerPixel, QBYCBCRRgbType rgbType) {
    const PixelLayout l = pixel_layout(bitsPerPixel == 32 || bitsPerPixel == 64 ? 64 : 48, rgbType);
    // pixel_layout gives the high byte of each word: byte 2 * word + 1.
    return {l.bytes / 2, l.r / 2, l.g / 2, l.b / 2};
}

// Rows of per-pixel samples a row kernel fills: pixel i's Y at y[i], and for
// 4:4:4 its Cb, Cr at cb[i], cr[i]; for 4:2:2 the pair's sample at [i / 2].
struct PlaneRow {
    uint16_t* y;
    uint16_t* cb;
    uint16_t* cr;
};

// AVX2 rows of the 16-bit-word converters (exactly the plain samples): convert
// the first pixels of a row of `width` and return how many (a multiple of 8,
// pairs whole), leaving the rest to the plain row. They read no word the plain
// row does not read. nullptr where there is none.
//   Sample: per pixel (word >> 6) . weights / 40,000 toward zero, Y + offset at
//   most `limit`, Cb, Cr + `centre` clamped to 0..limit.
struct WordRowArgs {
    const uint8_t* src;
    uint32_t width;
    const V210Row* k;
    WordLayout l;
    PlaneRow out;
};
using WordRow = uint32_t (*)(const WordRowArgs& a);
// 12-bit 4:2:2 (centre 2048, limit 4095, the pair's chroma the truncating
// average) and 10-bit 4:4:4 (centre 512, limit 1023).
WordRow avx2_p12_422_row();
WordRow avx2_p10_444_row();

// The bytes reached from each pointer (Y, Cb, Cr, source) of the converters
// of this family, by name, for every level.
bool to_planar16_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

}  // namespace cycbcr::fromrgb
