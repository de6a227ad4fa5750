// RGB to v210: the filtered engine of 8-bit RGB and its AVX2 form, the
// unfiltered engine, the 16-bit and 10-bit RGB converters, the alpha key and
// the wrappers of the list.
#include "fromrgb/to_v210.h"

#include <cstring>
#include <vector>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/row_walk.h"
#include "fromrgb/to_v210_list.h"
#include "torgb/rgb_pixels.h"
#include "ycbcr10/v210.h"

namespace cycbcr::fromrgb {

using colour::kBottomUp;

namespace {

// ---- Per-pixel samples of each input ----

// 8-bit RGB: weights x 40,000, quotients by 10,000 toward zero.
struct Rgb8Pixels {
    const V210Row& k;
    PixelLayout l;
    CYCBCR_INLINE void operator()(const uint8_t* p, uint16_t* y, uint16_t* cb, uint16_t* cr) const {
        const int32_t r = p[l.r], g = p[l.g], b = p[l.b];
        *y = v210_luma(v210_dot(k.y, r, g, b) / 10000, k.yOffset);
        *cb = v210_chroma(v210_dot(k.cb, r, g, b) / 10000);
        *cr = v210_chroma(v210_dot(k.cr, r, g, b) / 10000);
    }
};

// A quotient toward zero moved one step away from zero when the remainder
// passes `up` (sums >= 0) or falls below -`down` (negative sums).
CYCBCR_INLINE int32_t rounded(int64_t s, int64_t divisor, int64_t up, int64_t down) {
    int64_t q = s / divisor;
    const int64_t m = s % divisor;
    if (s >= 0 && m > up) ++q;
    if (s < 0 && m < -down) --q;
    return static_cast<int32_t>(q);
}
CYCBCR_INLINE int64_t dot64(const int32_t (&w)[3], int64_t r, int64_t g, int64_t b) {
    return w[0] * r + w[1] * g + w[2] * b;
}

// 16-bit RGB: whole little-endian words, weights x 10,000, sums over 640,000.
struct Rgb16Layout {
    uint32_t bytes, r, g, b;  // byte offsets of the words
};
Rgb16Layout rgb16_layout(uint32_t bitsPerPixel, QBYCBCRRgbType rgbType) {
    const uint32_t order = rgbType & ~kBottomUp;
    if (bitsPerPixel == 32 || bitsPerPixel == 64) {
        switch (order) {
            case 1:
                return {8, 6, 4, 2};
            case 2:
                return {8, 0, 2, 4};
            case 3:
                return {8, 2, 4, 6};
            default:
                return {8, 4, 2, 0};
        }
    }
    return order == 2 || order == 3 ? Rgb16Layout{6, 0, 2, 4} : Rgb16Layout{6, 4, 2, 0};
}
CYCBCR_INLINE int64_t word16(const uint8_t* p) {
    return p[0] | (p[1] << 8);
}
struct Rgb16Pixels {
    const V210Row& k;
    Rgb16Layout l;
    CYCBCR_INLINE void operator()(const uint8_t* p, uint16_t* y, uint16_t* cb, uint16_t* cr) const {
        const int64_t r = word16(p + l.r), g = word16(p + l.g), b = word16(p + l.b);
        constexpr int64_t d = 640000;
        *y = v210_luma(rounded(dot64(k.y, r, g, b), d, 320000, d), k.yOffset);
        *cb = v210_chroma(rounded(dot64(k.cb, r, g, b), d, 288000, 160000));
        *cr = v210_chroma(rounded(dot64(k.cr, r, g, b), d, 320000, 320000));
    }
};

// 10-bit RGB: one word a pixel, G in bits 12-21, R and B at bits 2 and 22 by
// the order; millionths with the rounding of the 8-bit YCbCr engine.
struct Rgb10Pixels {
    const V210Row& k;
    bool rLow;  // R in bits 2-11, B in bits 22-31
    CYCBCR_INLINE void operator()(const uint8_t* p, uint16_t* y, uint16_t* cb, uint16_t* cr) const {
        const uint32_t w = load_le32(p);
        const int64_t lo = (w >> 2) & 0x3FF, g = (w >> 12) & 0x3FF, hi = w >> 22;
        const int64_t r = rLow ? lo : hi, b = rLow ? hi : lo;
        constexpr int64_t d = 1000000;
        *y = v210_luma(rounded(dot64(k.y, r, g, b), d, 500000, d), k.yOffset);
        *cb = v210_chroma(rounded(dot64(k.cb, r, g, b), d, 450000, 250000));
        *cr = v210_chroma(rounded(dot64(k.cr, r, g, b), d, 500000, 500000));
    }
};

// ---- The filtered frame ----

// The pixels a filtered row converts: its whole groups, then the first two
// pixels of a partial group of two or more.
CYCBCR_INLINE uint32_t filtered_pixels(uint32_t width) {
    return width / 6 * 6 + (width % 6 >= 2 ? 2 : 0);
}

// The 1-2-2-1 filter of chroma pair k over the clamped per-pixel samples.
CYCBCR_INLINE uint16_t filtered(const uint16_t* c, uint32_t k) {
    const uint16_t* p = c + 2 * size_t{k};
    return static_cast<uint16_t>((p[-1] + 2 * p[0] + 2 * p[1] + p[2]) / 6);
}
void filter_plain(const SampleRows& s, uint32_t groups) {
    for (uint32_t k = 0; k < 3 * groups; ++k) {
        uint16_t* o = s.packed + 4 * size_t{k};
        o[0] = filtered(s.cb, k);
        o[1] = s.y[2 * k];
        o[2] = filtered(s.cr, k);
        o[3] = s.y[2 * k + 1];
    }
}
void pack_plain(uint8_t* dst, const uint16_t* p, uint32_t groups) {
    for (uint32_t g = 0; g < groups; ++g, p += 12, dst += 16)
        for (unsigned w = 0; w < 4; ++w)
            store_le32(dst + 4 * w, v210_word(p[3 * w], p[3 * w + 1], p[3 * w + 2]));
}

// Row buffers of a frame, with the left neighbour 512 before the chroma.
struct RowBuffers {
    std::vector<uint16_t> y, cb, cr, packed;
    explicit RowBuffers(uint32_t width)
        : y(size_t{width} + 32),
          cb(size_t{width} + 48),
          cr(size_t{width} + 48),
          packed(size_t{width / 6} * 12 + 64) {
        cb[0] = cr[0] = 512;
    }
    SampleRows rows() { return {y.data(), cb.data() + 1, cr.data() + 1, packed.data()}; }
};

struct Kernels {
    V210Pixels pixels = nullptr;  // AVX2 per-pixel samples, or none
    bool avx2 = false;            // AVX2 filter and pack
};

// Every row: per-pixel samples of the pixels it converts, the whole groups
// filtered (the last group's right neighbour is its own last pixel) and
// packed, then the partial group's two pixels with the 1-2-2 rule over 5.
// `rowAt(r)` is the source of row r; `pixel` converts one pixel.
template <class RowAt, class Pixel>
void filtered_frame(uint8_t* dst, uint32_t width, uint32_t height, uint32_t dstPitch,
                    uint32_t pixelBytes, RowAt&& rowAt, const Pixel& pixel, const Kernels& v,
                    const V210Row& k, PixelLayout l) {
    const uint32_t n = filtered_pixels(width), groups = width / 6;
    if (n == 0 || height == 0) return;
    RowBuffers b(width);
    const SampleRows s = b.rows();
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* src = rowAt(r);
        uint32_t i = v.pixels ? v.pixels(src, n, k, l, s) : 0;
        for (; i < n; ++i) pixel(src + size_t{i} * pixelBytes, s.y + i, s.cb + i, s.cr + i);
        uint8_t* d = dst + size_t{r} * dstPitch;
        if (groups > 0) {
            const uint32_t end = 6 * groups;
            const uint16_t keepCb = s.cb[end], keepCr = s.cr[end];
            s.cb[end] = s.cb[end - 1];
            s.cr[end] = s.cr[end - 1];
            if (v.avx2) {
                avx2_v210_filter(s, groups);
                avx2_v210_pack(d, s.packed, groups);
            } else {
                filter_plain(s, groups);
                pack_plain(d, s.packed, groups);
            }
            s.cb[end] = keepCb;
            s.cr[end] = keepCr;
        }
        if (n % 6 == 2) {
            const uint32_t at = n - 2;
            auto five = [&](const uint16_t* c) {
                const uint16_t* p = c + at;
                return (p[-1] + 2 * p[0] + 2 * p[1]) / 5u;
            };
            uint8_t* o = d + size_t{groups} * kV210GroupBytes;
            store_le32(o, v210_word(five(s.cb), s.y[at], five(s.cr)));
            store_le32(o + 4, s.y[at + 1]);
        }
    }
}

const uint8_t* row_of(const uint8_t* src, uint32_t r, uint32_t height, uint32_t srcPitch,
                      QBYCBCRRgbType rgbType, size_t alignMask) {
    const size_t row = (rgbType & kBottomUp) != 0 ? size_t{height - 1 - r} : r;
    return src + ((row * srcPitch) & ~alignMask);
}

// The 8-bit engine: 3-byte pixels for every count but 32.
uint64_t rgb8_engine(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                     uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix matrix,
                     QBYCBCRRgbType rgbType, uint32_t bitsPerPixel, bool avx2) {
    const V210Row& k = kV210Rgb8[matrix];
    const PixelLayout l = pixel_layout(bitsPerPixel == 32 ? 32 : 24, rgbType);
    Kernels v;
    if (avx2) v = {avx2_v210_pixels(l), true};
    filtered_frame(
        dst, width, height, dstPitch, l.bytes,
        [&](uint32_t r) { return row_of(src, r, height, srcPitch, rgbType, 0); }, Rgb8Pixels{k, l},
        v, k, l);
    return uint64_t{height} * dstPitch;
}

// The 16- and 10-bit converters: plain per-pixel samples; at level 5 on an
// AVX2 processor the filter and the packing run their AVX2 rows (same bytes).
Kernels vector_steps() {
    return {nullptr, entry(OnEntry::ReadLevel).avx2};
}

}  // namespace
}  // namespace cycbcr::fromrgb

using namespace cycbcr;
using namespace cycbcr::fromrgb;

#define CYCBCR_V210_ENGINE_ARGS                                                \
    uint8_t *dst, const uint8_t *src, unsigned int width, unsigned int height, \
        unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,    \
        QBYCBCRRgbType rgbType, unsigned int bitsPerPixel
#define CYCBCR_V210_ENGINE_CALL \
    dst, src, width, height, dstPitch, srcPitch, matrix, rgbType, bitsPerPixel

extern "C" {

CYCBCR_API uint64_t v210FromRGB(CYCBCR_V210_ENGINE_ARGS) {
    if (entry(OnEntry::ReadLevel).avx2) return v210FromRGB_avx2(CYCBCR_V210_ENGINE_CALL);
    return rgb8_engine(CYCBCR_V210_ENGINE_CALL, false);
}

CYCBCR_API uint64_t v210FromRGB_avx2(CYCBCR_V210_ENGINE_ARGS) {
    // Other pixel sizes go to the plain body itself: handing them back to
    // v210FromRGB would come straight back here at level 5.
    if (bitsPerPixel != 24 && bitsPerPixel != 32)
        return rgb8_engine(CYCBCR_V210_ENGINE_CALL, false);
    // On a processor without AVX2 the same bytes come from the plain rows.
    return rgb8_engine(CYCBCR_V210_ENGINE_CALL, (CPUFeatureFlags() & kCpuAvx2) != 0);
}

CYCBCR_API uint64_t v210FromRGBNoFilter(CYCBCR_V210_ENGINE_ARGS) {
    const uint64_t result = uint64_t{height} * dstPitch;
    const V210Row& k = kV210Rgb8NoFilter[matrix];
    const PixelLayout l = pixel_layout(bitsPerPixel == 32 ? 32 : 24, rgbType);
    const Rgb8Pixels pixel{k, l};
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* s = row_of(src, r, height, srcPitch, rgbType, 0);
        uint8_t* d = dst + size_t{r} * dstPitch;
        for (uint32_t start = 0; start < width; start += 6, d += kV210GroupBytes) {
            // Samples of the pixels that exist; the fields of the others 0.
            uint16_t y[6] = {}, cb[6] = {}, cr[6] = {};
            const uint32_t have = width - start < 6 ? width - start : 6;
            for (uint32_t i = 0; i < have; ++i)
                pixel(s + size_t{start + i} * l.bytes, y + i, cb + i, cr + i);
            store_le32(d, v210_word(cb[0], y[0], cr[0]));
            store_le32(d + 4, v210_word(y[1], cb[2], y[2]));
            if (have <= 2) break;
            store_le32(d + 8, v210_word(cr[2], y[3], cb[4]));
            if (have <= 4) break;
            store_le32(d + 12, v210_word(y[4], cr[4], y[5]));
        }
    }
    return result;
}

CYCBCR_API uint64_t cycbcr_RGB64_to_012v(CYCBCR_V210_ENGINE_ARGS) {
    entry(OnEntry::ChooseLevel);
    const V210Row& k = kV210Rgb16[matrix];
    const Rgb16Layout l = rgb16_layout(bitsPerPixel, rgbType);
    filtered_frame(
        dst, width, height, dstPitch, l.bytes,
        [&](uint32_t r) { return row_of(src, r, height, srcPitch, rgbType, 1); }, Rgb16Pixels{k, l},
        vector_steps(), k, PixelLayout{});
    return uint64_t{height} * dstPitch;
}

CYCBCR_API uint64_t cycbcr_RGB10_to_012v(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType) {
    entry(OnEntry::ChooseLevel);
    const V210Row& k = kV210Rgb10[matrix];
    const uint32_t order = rgbType & ~kBottomUp;
    filtered_frame(
        dst, width, height, dstPitch, 4,
        [&](uint32_t r) { return row_of(src, r, height, srcPitch, rgbType, 3); },
        Rgb10Pixels{k, order != 2 && order != 3}, vector_steps(), k, PixelLayout{});
    return uint64_t{height} * dstPitch;
}

CYCBCR_API uint64_t cycbcr_RGB32_to_012v_Alpha(uint8_t* dst, const uint8_t* src, unsigned int width,
                                               unsigned int height, unsigned int,
                                               unsigned int srcPitch, uint8_t options,
                                               QBYCBCRRgbType rgbType) {
    const bool studio = (options & 1) != 0;
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* s = row_of(src, r, height, srcPitch, rgbType, 0);
        // Rows at (r x width x 4) / 3 whatever the pitch.
        uint8_t* d = dst + uint64_t{r} * width * 4 / 3;
        for (uint32_t x = 0; x < width; x += 3, d += 4) {
            uint32_t f[3] = {};
            for (uint32_t i = 0; i < 3 && x + i < width; ++i) {
                const uint32_t a = s[4 * size_t{x + i} + 3];
                f[i] = studio ? a * 876 / 255 + 64 : a * 4;
            }
            store_le32(d, v210_word(f[0], f[1], f[2]));
        }
    }
    return uint64_t{height} * width * 4 / 3;
}

}  // extern "C"

namespace cycbcr::fromrgb {
namespace {

// The wrappers of the list: a level chosen when none is, then the 8-bit engine.
template <Format From, Format, auto>
uint64_t to_v210(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                 unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,
                 QBYCBCRRgbType rgbType) {
    entry(OnEntry::ChooseLevel);
    return v210FromRGB(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType,
                       From == Format::RGB24 ? 24 : 32);
}

// A filtered frame: `n` pixels of every row read, whole groups and the partial
// group's two words written.
Extent filtered_extent(const Call& c, uint64_t pixelBytes, uint64_t reach, uint64_t rowMask) {
    const uint64_t n = filtered_pixels(c.width), h = c.height;
    if (n == 0 || h == 0) return {};
    // The last row read: the top one, or row 0 of a bottom-up frame; both lie
    // at most (h - 1) x pitch in, the row offsets rounded down.
    const uint64_t last = ((h - 1) * c.srcPitch) & ~rowMask;
    const uint64_t written = c.width / 6 * 16 + (n % 6 == 2 ? 8 : 0);
    return {last + (n - 1) * pixelBytes + reach, rows_end(0, h, c.dstPitch, written)};
}

}  // namespace

Extent to_v210_extent(Format from, const Call& c, QBYCBCRRgbType rgbType) {
    const PixelLayout l = pixel_layout(from == Format::RGB24 ? 24 : 32, rgbType);
    return filtered_extent(c, l.bytes, l.bytes, 0);
}

Extent to_v210_other_extent(const char* name, const Call& c, bool* known) {
    *known = true;
    if (std::strcmp(name, "cycbcr_RGB64_to_012v") == 0) {
        // 48 or 64 bits a pixel by its ninth argument: the wider of both.
        return widest(filtered_extent(c, 6, 6, 1), filtered_extent(c, 8, 8, 1));
    }
    if (std::strcmp(name, "cycbcr_RGB10_to_012v") == 0) return filtered_extent(c, 4, 4, 3);
    if (std::strcmp(name, "cycbcr_RGB32_to_012v_Alpha") == 0) {
        const uint64_t w = c.width, h = c.height;
        if (w == 0 || h == 0) return {};
        return {rows_end(0, h, c.srcPitch, 4 * w), (h - 1) * w * 4 / 3 + (w + 2) / 3 * 4};
    }
    *known = false;
    return {};
}

}  // namespace cycbcr::fromrgb

extern "C" {
#define CYCBCR_ENTRY cycbcr::fromrgb::to_v210
CYCBCR_TO_V210_CONVERTERS(CYCBCR_DEFINE_FROM_RGB)
#undef CYCBCR_ENTRY
}  // extern "C"
