// RGB to planar YCbCr in 16-bit containers: the six converters, their plain
// rows, and their buffer sizes.
#include "fromrgb/to_planar16.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "frame/entry.h"
#include "frame/export.h"
#include "torgb/rgb_pixels.h"
#include "ycbcr10/v210.h"

namespace cycbcr::fromrgb {

using colour::kBottomUp;

namespace {

// Source row r: from the top, or from the bottom with the bottom-up flag; the
// row offset rounded down by `alignMask` (16-bit words: to even, RGB10 words:
// to a multiple of 4), as the v210 converters read the same sources.
CYCBCR_INLINE const uint8_t* source_row(const void* src, uint32_t r, uint32_t height,
                                        uint32_t srcPitch, QBYCBCRRgbType rgbType,
                                        size_t alignMask) {
    const size_t row = (rgbType & kBottomUp) != 0 ? size_t{height - 1 - r} : r;
    return static_cast<const uint8_t*>(src) + ((row * srcPitch) & ~alignMask);
}
CYCBCR_INLINE uint8_t* plane_row(void* plane, uint32_t r, uint32_t pitch) {
    return static_cast<uint8_t*>(plane) + size_t{r} * pitch;
}
CYCBCR_INLINE void put16(uint8_t* row, size_t i, uint32_t v) {
    const auto s = static_cast<uint16_t>(v);
    std::memcpy(row + 2 * i, &s, 2);
}
CYCBCR_INLINE int32_t word_at(const uint8_t* pixel, uint32_t word) {
    uint16_t v;
    std::memcpy(&v, pixel + 2 * size_t{word}, 2);
    return v;
}

CYCBCR_INLINE int32_t dot(const int32_t (&w)[3], int32_t r, int32_t g, int32_t b) {
    return w[0] * r + w[1] * g + w[2] * b;
}
CYCBCR_INLINE int64_t dot64(const int32_t (&w)[3], int64_t r, int64_t g, int64_t b) {
    return w[0] * r + w[1] * g + w[2] * b;
}
// Y + offset at most `limit` (the luma sums are never negative); chroma +
// centre clamped to 0..limit.
CYCBCR_INLINE uint32_t luma(int32_t q, int32_t offset, int32_t limit) {
    const int32_t y = q + offset;
    return static_cast<uint32_t>(y > limit ? limit : y);
}
CYCBCR_INLINE uint32_t chroma(int32_t q, int32_t centre, int32_t limit) {
    const int32_t c = q + centre;
    return static_cast<uint32_t>(c < 0 ? 0 : c > limit ? limit : c);
}
// The quotient toward zero, one step away from zero when the remainder passes
// `up` (sums >= 0) or falls below -`down` (negative sums). The remainder takes
// the sign of the sum, so neither test needs the sign (up, down >= 0), and
// both stay free of branches.
CYCBCR_INLINE int32_t rounded(int64_t s, int64_t divisor, int64_t up, int64_t down) {
    const int64_t q = s / divisor, m = s - q * divisor;
    return static_cast<int32_t>(q + static_cast<int64_t>(m > up) - static_cast<int64_t>(m < -down));
}

struct Sample {
    uint32_t y, cb, cr;
};

// ---- 10-bit 4:4:4 and 12-bit 4:2:2 ----

// 8-bit channels, weights x 40,000, sums over 10,000.
struct Rgb8Sample {
    const V210Row& k;
    PixelLayout l;
    CYCBCR_INLINE Sample operator()(const uint8_t* p) const {
        const int32_t r = p[l.r], g = p[l.g], b = p[l.b];
        return {luma(dot(k.y, r, g, b) / 10000, k.yOffset, 1023),
                chroma(dot(k.cb, r, g, b) / 10000, 512, 1023),
                chroma(dot(k.cr, r, g, b) / 10000, 512, 1023)};
    }
};
// 16-bit words brought to 10 bits, sums over 40,000: weights x 40,000 give
// 10-bit samples, weights x 160,000 12-bit ones.
template <int32_t Centre, int32_t Limit>
struct Word10Sample {
    const V210Row& k;
    WordLayout l;
    CYCBCR_INLINE Sample operator()(const uint8_t* p) const {
        const int32_t r = word_at(p, l.r) >> 6, g = word_at(p, l.g) >> 6, b = word_at(p, l.b) >> 6;
        return {luma(dot(k.y, r, g, b) / 40000, k.yOffset, Limit),
                chroma(dot(k.cb, r, g, b) / 40000, Centre, Limit),
                chroma(dot(k.cr, r, g, b) / 40000, Centre, Limit)};
    }
};

// Every pixel of the row, each with its own chroma, from pixel `from` on.
template <class Px>
CYCBCR_INLINE void row_444(const uint8_t* src, uint32_t from, uint32_t width, uint32_t pixelBytes,
                           const Px& px, uint8_t* y, uint8_t* cb, uint8_t* cr) {
    for (uint32_t x = from; x < width; ++x) {
        const Sample s = px(src + size_t{x} * pixelBytes);
        put16(y, x, s.y);
        put16(cb, x, s.cb);
        put16(cr, x, s.cr);
    }
}
// Pairs from pixel `from` (even) on: the even pixel's chroma, then the
// truncating average with the odd one; an odd width's last pixel keeps its own.
template <class Px>
CYCBCR_INLINE void row_422_average(const uint8_t* src, uint32_t from, uint32_t width,
                                   uint32_t pixelBytes, const Px& px, uint8_t* y, uint8_t* cb,
                                   uint8_t* cr) {
    uint32_t x = from;
    for (; x + 1 < width; x += 2) {
        const Sample a = px(src + size_t{x} * pixelBytes);
        const Sample b = px(src + size_t{x + 1} * pixelBytes);
        put16(y, x, a.y);
        put16(y, x + 1, b.y);
        put16(cb, x / 2, (a.cb + b.cb) >> 1);
        put16(cr, x / 2, (a.cr + b.cr) >> 1);
    }
    if (x < width) {
        const Sample a = px(src + size_t{x} * pixelBytes);
        put16(y, x, a.y);
        put16(cb, x / 2, a.cb);
        put16(cr, x / 2, a.cr);
    }
}

// ---- 4:2:2 in six-pixel blocks (16-bit and RGB10 sources) ----

// The pixels a block row converts: its whole blocks, then the first two pixels
// of a partial block of two or more.
CYCBCR_INLINE uint32_t block_pixels(uint32_t width) {
    return width / 6 * 6 + (width % 6 >= 2 ? 2 : 0);
}

// Whole blocks: each pair's chroma the truncating average of its two
// per-pixel values. Then a partial block of two or more: its first pair alone,
// chroma (C(-1) + 2 C(0) + 2 C(1)) / 5 with C(-1) the last pixel of the
// previous block, or `neutral` at the row start. Samples stored << `shift`.
template <class Px>
CYCBCR_INLINE void row_blocks(const uint8_t* src, uint32_t width, uint32_t pixelBytes, const Px& px,
                              uint32_t neutral, unsigned shift, uint8_t* y, uint8_t* cb,
                              uint8_t* cr) {
    const uint32_t whole = width / 6 * 6;
    uint32_t leftCb = neutral, leftCr = neutral;
    for (uint32_t x = 0; x < whole; x += 2) {
        const Sample a = px(src + size_t{x} * pixelBytes);
        const Sample b = px(src + size_t{x + 1} * pixelBytes);
        put16(y, x, a.y << shift);
        put16(y, x + 1, b.y << shift);
        put16(cb, x / 2, ((a.cb + b.cb) >> 1) << shift);
        put16(cr, x / 2, ((a.cr + b.cr) >> 1) << shift);
        leftCb = b.cb;
        leftCr = b.cr;
    }
    if (width - whole >= 2) {
        const Sample a = px(src + size_t{whole} * pixelBytes);
        const Sample b = px(src + size_t{whole + 1} * pixelBytes);
        put16(y, whole, a.y << shift);
        put16(y, whole + 1, b.y << shift);
        put16(cb, whole / 2, ((leftCb + 2 * a.cb + 2 * b.cb) / 5) << shift);
        put16(cr, whole / 2, ((leftCr + 2 * a.cr + 2 * b.cr) / 5) << shift);
    }
}

// Whole 16-bit words, weights x 10,000, sums over 10,000 rounded.
struct Word16Sample {
    const V210Row& k;
    WordLayout l;
    CYCBCR_INLINE Sample operator()(const uint8_t* p) const {
        const int64_t r = word_at(p, l.r), g = word_at(p, l.g), b = word_at(p, l.b);
        constexpr int64_t d = 10000;
        return {luma(rounded(dot64(k.y, r, g, b), d, 5000, d), k.yOffset, 65535),
                chroma(rounded(dot64(k.cb, r, g, b), d, 4500, 2500), 32768, 65535),
                chroma(rounded(dot64(k.cr, r, g, b), d, 5000, 5000), 32768, 65535)};
    }
};
// RGB10 words (G in bits 12-21, R and B at bits 2 and 22 by the order),
// millionths with the rounding of the 8-bit engine.
struct Rgb10Sample {
    const V210Row& k;
    bool rLow;  // R in bits 2-11, B in bits 22-31
    CYCBCR_INLINE Sample operator()(const uint8_t* p) const {
        const uint32_t w = load_le32(p);
        const int64_t lo = (w >> 2) & 0x3FF, g = (w >> 12) & 0x3FF, hi = w >> 22;
        const int64_t r = rLow ? lo : hi, b = rLow ? hi : lo;
        constexpr int64_t d = 1000000;
        return {luma(rounded(dot64(k.y, r, g, b), d, 500000, d), k.yOffset, 1023),
                chroma(rounded(dot64(k.cb, r, g, b), d, 450000, 250000), 512, 1023),
                chroma(rounded(dot64(k.cr, r, g, b), d, 500000, 500000), 512, 1023)};
    }
};

// ---- The float variant ----

// The forward table as single floats (rows 1 to 9; the default row for every
// other value), luma offset 64 where the table has 16.
struct FloatRow {
    int32_t offset;
    float y[3], cb[3], cr[3];
};
FloatRow float_row(QBYCBCRMatrix matrix) {
    const colour::FromRgbRow& k =
        matrix >= 1 && matrix <= 9 ? colour::FromRGBCoeffs[matrix] : colour::FromRGBCoeffs[0];
    auto f = [](int32_t m) { return static_cast<float>(static_cast<double>(m) / 1e6); };
    return {k.yOffset == 0 ? 0 : 64,
            {f(k.rToY), f(k.gToY), f(k.bToY)},
            {f(k.rToCb), f(k.gToCb), f(k.bToCb)},
            {f(k.rToCr), f(k.gToCr), f(k.bToCr)}};
}
CYCBCR_INLINE double fdot(const float (&w)[3], double r, double g, double b) {
    return static_cast<double>(w[0]) * r + static_cast<double>(w[1]) * g +
           static_cast<double>(w[2]) * b;
}
CYCBCR_INLINE uint32_t float_luma(double l, int32_t offset) {
    const int32_t v = l < 0.0 ? 0 : l > 1.0 ? 1023 : static_cast<int32_t>(l * 1023.0 + 0.5);
    return static_cast<uint32_t>(v + offset);
}
// Scaled by 1023 about 512, 0 below -0.5 and 1024 above 0.5.
CYCBCR_INLINE uint32_t float_chroma(double k) {
    if (k < -0.5) return 0;
    if (k > 0.5) return 1024;
    const int32_t q =
        k > 0.0 ? static_cast<int32_t>(k * 1023.0 + 0.5) : static_cast<int32_t>(k * 1023.0 - 0.5);
    return static_cast<uint32_t>(q + 512);
}

// The frame: rows of the source by the bottom-up flag, planes top-down.
template <class RowFn>
CYCBCR_INLINE void each_row(uint32_t height, RowFn&& fn) {
    for (uint32_t r = 0; r < height; ++r) fn(r);
}

// The AVX2 row of a 16-bit-word converter, when the level asks for it.
WordRow word_row(WordRow (*avx2)()) {
    return entry(OnEntry::ReadLevel).avx2 ? avx2() : nullptr;
}

// The frame of the two 16-bit-word converters with AVX2 rows: each row's vector
// part (at level 5) first, the rest through the plain `tail` row. Returns the
// family's count, height * (chromaPitch + 2 * yPitch).
template <class Px, class Tail>
unsigned int word_frame(const Px& px, WordRow (*avx2Row)(), Tail&& tail, void* y, void* cb,
                        void* cr, const void* src, uint32_t width, uint32_t height, uint32_t yPitch,
                        uint32_t chromaPitch, uint32_t srcPitch, QBYCBCRRgbType rgbType) {
    const WordRow avx2 = word_row(avx2Row);
    const uint32_t pixelBytes = 2 * px.l.words;
    each_row(height, [&](uint32_t r) {
        const uint8_t* s = source_row(src, r, height, srcPitch, rgbType, 1);
        uint8_t *dy = plane_row(y, r, yPitch), *dcb = plane_row(cb, r, chromaPitch),
                *dcr = plane_row(cr, r, chromaPitch);
        const uint32_t done =
            avx2 ? avx2({s,
                         width,
                         &px.k,
                         px.l,
                         {reinterpret_cast<uint16_t*>(dy), reinterpret_cast<uint16_t*>(dcb),
                          reinterpret_cast<uint16_t*>(dcr)}})
                 : 0;
        tail(s, done, width, pixelBytes, px, dy, dcb, dcr);
    });
    return static_cast<unsigned int>(uint64_t{height} * (chromaPitch + 2 * uint64_t{yPitch}));
}

}  // namespace
}  // namespace cycbcr::fromrgb

using namespace cycbcr;
using namespace cycbcr::fromrgb;

extern "C" {

CYCBCR_API unsigned int cycbcr_RGB32_to_yuv444p10(void* y, void* cb, void* cr, const void* src,
                                                  unsigned int width, unsigned int height,
                                                  unsigned int yPitch, unsigned int chromaPitch,
                                                  unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                  QBYCBCRRgbType rgbType,
                                                  unsigned int bitsPerPixel) {
    entry(OnEntry::ChooseLevel);
    const Rgb8Sample px{kV210Rgb8[matrix], pixel_layout(bitsPerPixel == 32 ? 32 : 24, rgbType)};
    each_row(height, [&](uint32_t r) {
        row_444(source_row(src, r, height, srcPitch, rgbType, 0), 0, width, px.l.bytes, px,
                plane_row(y, r, yPitch), plane_row(cb, r, chromaPitch),
                plane_row(cr, r, chromaPitch));
    });
    return static_cast<unsigned int>(uint64_t{height} * (chromaPitch + 2 * uint64_t{yPitch}));
}

CYCBCR_API unsigned int cycbcr_RGB64_to_yuv444p10(void* y, void* cb, void* cr, const void* src,
                                                  unsigned int width, unsigned int height,
                                                  unsigned int yPitch, unsigned int chromaPitch,
                                                  unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                  QBYCBCRRgbType rgbType,
                                                  unsigned int bitsPerPixel) {
    const Word10Sample<512, 1023> px{kV210Rgb8[matrix], word_layout(bitsPerPixel, rgbType)};
    return word_frame(
        px, avx2_p10_444_row, [](auto&&... a) { row_444(a...); }, y, cb, cr, src, width, height,
        yPitch, chromaPitch, srcPitch, rgbType);
}

CYCBCR_API unsigned int cycbcr_RGB64_to_yuv422p12(void* y, void* cb, void* cr, const void* src,
                                                  unsigned int width, unsigned int height,
                                                  unsigned int yPitch, unsigned int chromaPitch,
                                                  unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                  QBYCBCRRgbType rgbType,
                                                  unsigned int bitsPerPixel) {
    const Word10Sample<2048, 4095> px{kP12Rgb16[matrix], word_layout(bitsPerPixel, rgbType)};
    return word_frame(
        px, avx2_p12_422_row, [](auto&&... a) { row_422_average(a...); }, y, cb, cr, src, width,
        height, yPitch, chromaPitch, srcPitch, rgbType);
}

CYCBCR_API unsigned int cycbcr_RGB64_to_YCbCrPlanar16(void* y, void* cb, void* cr, const void* src,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int yPitch, unsigned int srcPitch,
                                                      QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
                                                      unsigned int bitsPerPixel) {
    const Word16Sample px{kV210Rgb16[matrix], word_layout(bitsPerPixel, rgbType)};
    const uint32_t pixelBytes = 2 * px.l.words, chromaPitch = yPitch / 2;
    each_row(height, [&](uint32_t r) {
        row_blocks(source_row(src, r, height, srcPitch, rgbType, 1), width, pixelBytes, px, 32768,
                   0, plane_row(y, r, yPitch), plane_row(cb, r, chromaPitch),
                   plane_row(cr, r, chromaPitch));
    });
    return static_cast<unsigned int>(uint64_t{height} * yPitch);
}

CYCBCR_API unsigned int cycbcr_RGB10_to_YCbCrPlanar16(void* y, void* cb, void* cr, const void* src,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int yPitch, unsigned int srcPitch,
                                                      QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
                                                      unsigned int outputDepth) {
    const uint32_t order = rgbType & ~kBottomUp;
    const Rgb10Sample px{kV210Rgb10[matrix], order != 2 && order != 3};
    const unsigned shift = outputDepth == 10 ? 6 : 0;
    const uint32_t chromaPitch = yPitch / 2;
    each_row(height, [&](uint32_t r) {
        row_blocks(source_row(src, r, height, srcPitch, rgbType, 3), width, 4, px, 512, shift,
                   plane_row(y, r, yPitch), plane_row(cb, r, chromaPitch),
                   plane_row(cr, r, chromaPitch));
    });
    return static_cast<unsigned int>(uint64_t{height} * yPitch);
}

CYCBCR_API unsigned int cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS(
    void* y, void* cb, void* cr, const void* src, unsigned int width, unsigned int height,
    unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
    unsigned int bitsPerPixel) {
    const FloatRow k = float_row(matrix);
    const WordLayout l = word_layout(bitsPerPixel, rgbType);
    each_row(height, [&](uint32_t r) {
        const uint8_t* s = source_row(src, r, height, srcPitch, rgbType, 1);
        uint8_t *dy = plane_row(y, r, dstPitch), *dcb = plane_row(cb, r, dstPitch),
                *dcr = plane_row(cr, r, dstPitch);
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t* p = s + size_t{x} * 2 * l.words;
            const double R = word_at(p, l.r) / 65535.0, G = word_at(p, l.g) / 65535.0,
                         B = word_at(p, l.b) / 65535.0;
            put16(dy, x, float_luma(fdot(k.y, R, G, B), k.offset));
            put16(dcb, x, float_chroma(fdot(k.cb, R, G, B)));
            put16(dcr, x, float_chroma(fdot(k.cr, R, G, B)));
        }
    });
    return static_cast<unsigned int>(uint64_t{height} * dstPitch);
}

}  // extern "C"

// ---- Buffer sizes ----

namespace cycbcr::fromrgb {
namespace {

// The end of the source rows read: every row 0 .. h - 1 (top-down or
// bottom-up, the same rows), `n` pixels of `pixelBytes` from each, the last
// one reaching `reach` bytes from its start; row offsets rounded down by
// `alignMask`.
uint64_t source_end(uint64_t n, uint64_t h, uint32_t srcPitch, uint64_t pixelBytes, uint64_t reach,
                    uint64_t alignMask) {
    if (n == 0 || h == 0) return 0;
    return (((h - 1) * srcPitch) & ~alignMask) + (n - 1) * pixelBytes + reach;
}

}  // namespace

bool to_planar16_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    const std::string_view n(name);
    const uint64_t w = c.width, h = c.height;
    out = {};
    // The layouts a call may take by its RGB type and bits per pixel: the widest
    // reach over every order of the call's pixel size.
    auto word_reach = [&](uint32_t bitsPerPixel, QBYCBCRRgbType rgbType) {
        return uint64_t{2} * word_layout(bitsPerPixel, rgbType).reach();
    };
    if (n == "cycbcr_RGB32_to_yuv444p10") {
        // Y pitch, chroma pitch, source pitch, matrix, RGB type, bits per pixel.
        const PixelLayout l = pixel_layout(c.arg(5) == 32 ? 32 : 24, c.arg(4));
        const uint64_t reach = std::max({l.r, l.g, l.b}) + 1;
        out[0] = rows_end(0, h, c.arg(0), 2 * w);
        out[1] = out[2] = rows_end(0, h, c.arg(1), 2 * w);
        out[3] = source_end(w, h, c.arg(2), l.bytes, reach, 0);
        return true;
    }
    const bool p444 = n == "cycbcr_RGB64_to_yuv444p10", p12 = n == "cycbcr_RGB64_to_yuv422p12";
    if (p444 || p12) {
        const WordLayout l = word_layout(c.arg(5), c.arg(4));
        out[0] = rows_end(0, h, c.arg(0), 2 * w);
        out[1] = out[2] = rows_end(0, h, c.arg(1), p444 ? 2 * w : 2 * ((w + 1) / 2));
        out[3] = source_end(w, h, c.arg(2), 2 * l.words, word_reach(c.arg(5), c.arg(4)), 1);
        return true;
    }
    if (n == "cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS") {
        // Pitch shared by the planes, source pitch, matrix, RGB type, bits per pixel.
        const WordLayout l = word_layout(c.arg(4), c.arg(3));
        out[0] = out[1] = out[2] = rows_end(0, h, c.arg(0), 2 * w);
        out[3] = source_end(w, h, c.arg(1), 2 * l.words, word_reach(c.arg(4), c.arg(3)), 1);
        return true;
    }
    const bool p16 = n == "cycbcr_RGB64_to_YCbCrPlanar16",
               rgb10 = n == "cycbcr_RGB10_to_YCbCrPlanar16";
    if (p16 || rgb10) {
        // Y pitch (chroma planes half of it), source pitch, matrix, RGB type,
        // bits per pixel or output depth.
        const uint64_t px = block_pixels(c.width);
        out[0] = rows_end(0, h, c.arg(0), 2 * px);
        out[1] = out[2] = rows_end(0, h, c.arg(0) / 2, px);
        if (p16) {
            const WordLayout l = word_layout(c.arg(4), c.arg(3));
            out[3] = source_end(px, h, c.arg(1), 2 * l.words, word_reach(c.arg(4), c.arg(3)), 1);
        } else {
            out[3] = source_end(px, h, c.arg(1), 4, 4, 3);
        }
        return true;
    }
    return false;
}

}  // namespace cycbcr::fromrgb
