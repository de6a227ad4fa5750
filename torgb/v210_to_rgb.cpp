// v210 to RGB: the engine (family B), its 16-bit, float and planar siblings,
// the alpha-key converter and the entry points. Every form shares one group
// decoder (v210_to_rgb.h), one frame walk and one row kernel per depth and
// order; the AVX2 row kernels give the same bytes.
#include "torgb/v210_to_rgb.h"

#include <cstring>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/row_walk.h"
#include "platform/cpu_features.h"
#include "platform/memory.h"
#include "torgb/v210_to_rgb_list.h"

namespace cycbcr::colour::v210rgb {
namespace {

template <RgbDepth D, RgbOrder O, Arith A, bool Key>
void row_packed(const uint8_t* src, uint32_t width, const RowOut& o, const Coeffs& c) {
    constexpr size_t bytes = pixel_bytes(D);
    row_samples(src, width, [&](uint32_t x, Sample s) {
        const Rgb p = A == Arith::B ? pixel_b(c.k, s) : pixel_c(c.k, s);
        const uint32_t alpha = Key ? key_alpha(o.key, x) : 255;
        put_pixel<D, O>(o.dst + x * bytes, p, alpha);
    });
}

// Planes may start at any byte and have odd pitches: samples are stored a
// byte at a time, as little-endian words.
CYCBCR_INLINE void put_sample(uint16_t* plane, uint32_t x, uint32_t v) {
    const uint16_t w = static_cast<uint16_t>(v);
    std::memcpy(plane + x, &w, 2);
}

template <Arith A>
void row_planar(const uint8_t* src, uint32_t width, const RowOut& o, const Coeffs& c) {
    row_samples(src, width, [&](uint32_t x, Sample s) {
        const Rgb p = A == Arith::C ? pixel_c(c.k, s) : pixel_f(c.f, s);
        put_sample(o.plane[0], x, p.r);
        put_sample(o.plane[1], x, p.g);
        put_sample(o.plane[2], x, p.b);
    });
}

// Family E in double precision: each sum truncated toward zero, clamped (out
// of range values clamp before the conversion, which would overflow).
CYCBCR_INLINE uint32_t e_channel(double v) {
    return v <= 0.0 ? 0u : v >= 255.0 ? 255u : static_cast<uint32_t>(v);
}
template <RgbDepth D, RgbOrder O>
void row_float(const uint8_t* src, uint32_t width, uint8_t* dst, const ToRgbRow<double>& k) {
    constexpr size_t bytes = pixel_bytes(D);
    row_samples(src, width, [&](uint32_t x, Sample s) {
        const double l = (s.y - k.yOffset) * k.yGain, u = s.cb - 512.0, v = s.cr - 512.0;
        const Rgb p{e_channel(l + k.crToR * v), e_channel(l - k.crToG * v - k.cbToG * u),
                    e_channel(l + k.cbToB * u)};
        put_pixel<D, O>(dst + x * bytes, p, 255);
    });
}

template <RgbDepth D, Arith A, bool Key>
PlainRow packed_by_order(RgbOrder o) {
    return with_order(o, [&]<RgbOrder O>() -> PlainRow { return row_packed<D, O, A, Key>; });
}
// The plain kernel of a depth: family B for 8-bit channels, C for 16-bit ones.
PlainRow plain_packed(RgbDepth d, RgbOrder o, bool key) {
    switch (d) {
        case RgbDepth::Rgb555:
            return packed_by_order<RgbDepth::Rgb555, Arith::B, false>(o);
        case RgbDepth::Rgb565:
            return packed_by_order<RgbDepth::Rgb565, Arith::B, false>(o);
        case RgbDepth::Rgb24:
            return packed_by_order<RgbDepth::Rgb24, Arith::B, false>(o);
        case RgbDepth::Rgb32:
            return key ? packed_by_order<RgbDepth::Rgb32, Arith::B, true>(o)
                       : packed_by_order<RgbDepth::Rgb32, Arith::B, false>(o);
        case RgbDepth::Rgb48:
            return packed_by_order<RgbDepth::Rgb48, Arith::C, false>(o);
        case RgbDepth::Rgb64:
            break;
    }
    return packed_by_order<RgbDepth::Rgb64, Arith::C, false>(o);
}

// One call's frame.
struct Frame {
    uint8_t* dst;
    const uint8_t* src;
    uint32_t width, height, dstPitch, srcPitch;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType rgbType;
};

// The frame walk: source rows srcPitch apart; destination rows dstPitch apart,
// from the last row upwards with the bottom-up flag. Planar output has three
// planes of `height` rows, plane k at dst + k * dstPitch * height.
template <class Row>
void walk_frame(const Frame& f, bool planar, const uint8_t* key, Row&& row) {
    const bool up = rgb_layout(f.rgbType).bottom_up;
    auto rows_of = [&](uint8_t* base) {
        return up ? rows_up(base, f.dstPitch, f.height) : rows_down(base, f.dstPitch);
    };
    const size_t planeBytes = size_t{f.dstPitch} * f.height;
    const Rows out[3] = {rows_of(f.dst), rows_of(f.dst + (planar ? planeBytes : 0)),
                         rows_of(f.dst + (planar ? 2 * planeBytes : 0))};
    walk(all_rows(f.height), [&](uint32_t n) {
        RowOut o{out[0].at(n), {}, nullptr};
        if (planar)
            for (int k = 0; k < 3; ++k) o.plane[k] = out[k].at<uint16_t>(n);
        if (key) o.key = key + size_t{n} * f.width * 4 / 3;
        row(f.src + size_t{n} * f.srcPitch, o);
    });
}

// Runs a plain kernel, or a vector one finishing with it.
void run(const Frame& f, bool planar, const uint8_t* key, PlainRow plain, VectorRow vector,
         const Coeffs& c) {
    if (vector)
        walk_frame(f, planar, key,
                   [&](const uint8_t* s, const RowOut& o) { vector(s, f.width, o, c, plain); });
    else
        walk_frame(f, planar, key,
                   [&](const uint8_t* s, const RowOut& o) { plain(s, f.width, o, c); });
}

CYCBCR_INLINE Coeffs coeffs_b(QBYCBCRMatrix m) {
    return {kFamilyB[m], family_f_of(m), m};
}
CYCBCR_INLINE Coeffs coeffs_c(QBYCBCRMatrix m) {
    return {kFamilyC[m], family_f_of(m), m};
}

// Family B into 15-, 16-, 24- or 32-bit pixels; `key` gives 32-bit pixels
// their alpha (plain kernels only).
uint32_t engine_b(const Frame& f, uint32_t depth, bool avx2, const uint8_t* key) {
    const uint32_t bytes = depth == 15 || depth == 16 ? 2 : depth == 24 ? 3 : 4;
    const uint32_t result = f.width * f.height * bytes;
    const RgbDepth d = depth == 15   ? RgbDepth::Rgb555
                       : depth == 16 ? RgbDepth::Rgb565
                       : depth == 24 ? RgbDepth::Rgb24
                                     : RgbDepth::Rgb32;
    if (f.height == 0 || (depth != 15 && depth != 16 && depth != 24 && depth != 32)) return result;
    const RgbOrder o = rgb_layout(f.rgbType).order;
    // Frames too large for the caches go out with streaming stores.
    const bool stream = avx2 && key == nullptr && d == RgbDepth::Rgb32 &&
                        store_for(f.dst, f.dstPitch, f.height) == Store::Stream32;
    const VectorRow vector =
        avx2 && key == nullptr ? avx2_row(Arith::B, d, o, false, stream) : nullptr;
    run(f, false, key, plain_packed(d, o, key != nullptr), vector, coeffs_b(f.matrix));
    if (stream) finish_stores(Store::Stream32);
    return result;
}

// Family C into three or four 16-bit words a pixel.
uint32_t engine_c(const Frame& f, uint32_t depth, bool avx2) {
    const bool three = depth == 24 || depth == 48;
    const uint32_t result = f.width * f.height * (three ? 6 : 8);
    if (f.height == 0 || (!three && depth != 32 && depth != 64)) return result;
    const RgbDepth d = three ? RgbDepth::Rgb48 : RgbDepth::Rgb64;
    const RgbOrder o = rgb_layout(f.rgbType).order;
    run(f, false, nullptr, plain_packed(d, o, false),
        avx2 ? avx2_row(Arith::C, d, o, false) : nullptr, coeffs_c(f.matrix));
    return result;
}

// Three 16-bit planes, family C or F.
uint32_t engine_planar(const Frame& f, Arith a, bool avx2) {
    const uint32_t result = f.width * f.height * 6;
    if (f.height == 0) return result;
    const PlainRow plain = a == Arith::C ? row_planar<Arith::C> : row_planar<Arith::F>;
    run(f, true, nullptr, plain,
        avx2 ? avx2_row(a, RgbDepth::Rgb48, RgbOrder::RGBA, true) : nullptr, coeffs_c(f.matrix));
    return result;
}

uint32_t engine_float(const Frame& f, uint32_t depth) {
    const uint32_t bytes = depth == 15 || depth == 16 ? 2 : depth == 24 ? 3 : 4;
    const uint32_t result = f.width * f.height * bytes;
    if (f.height == 0 || (depth != 15 && depth != 16 && depth != 24 && depth != 32)) return result;
    const ToRgbRow<double>& k = kFamilyE[f.matrix];
    with_order(rgb_layout(f.rgbType).order, [&]<RgbOrder O>() {
        walk_frame(f, false, nullptr, [&](const uint8_t* s, const RowOut& o) {
            switch (depth) {
                case 15:
                    return row_float<RgbDepth::Rgb555, O>(s, f.width, o.dst, k);
                case 16:
                    return row_float<RgbDepth::Rgb565, O>(s, f.width, o.dst, k);
                case 24:
                    return row_float<RgbDepth::Rgb24, O>(s, f.width, o.dst, k);
                default:
                    return row_float<RgbDepth::Rgb32, O>(s, f.width, o.dst, k);
            }
        });
    });
    return result;
}

}  // namespace
}  // namespace cycbcr::colour::v210rgb

using namespace cycbcr;
using namespace cycbcr::colour::v210rgb;

#define CYCBCR_V210_ENGINE_ARGS                                                \
    uint8_t *dst, const uint8_t *src, unsigned int width, unsigned int height, \
        unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,    \
        QBYCBCRRgbType rgbType, unsigned int depth
#define CYCBCR_V210_ENGINE_CALL dst, src, width, height, dstPitch, srcPitch, matrix, rgbType, depth
#define CYCBCR_V210_FRAME                                            \
    Frame {                                                          \
        dst, src, width, height, dstPitch, srcPitch, matrix, rgbType \
    }

extern "C" {

CYCBCR_API unsigned int cycbcr_v210ToRGB(CYCBCR_V210_ENGINE_ARGS) {
    entry(OnEntry::ChooseLevel);
    return cycbcr_v210ToRGBInt(CYCBCR_V210_ENGINE_CALL);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBInt(CYCBCR_V210_ENGINE_ARGS) {
    const Paths paths = entry(OnEntry::ReadLevel);
    if (paths.avx2 && depth == 32) return cycbcr_v210ToRGBInt_avx2(CYCBCR_V210_ENGINE_CALL);
    return engine_b(CYCBCR_V210_FRAME, depth, paths.avx2, nullptr);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBInt_avx2(CYCBCR_V210_ENGINE_ARGS) {
    return engine_b(CYCBCR_V210_FRAME, depth, true, nullptr);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBInt16(CYCBCR_V210_ENGINE_ARGS) {
    return engine_c(CYCBCR_V210_FRAME, depth, entry(OnEntry::ReadLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBInt16_avx2(CYCBCR_V210_ENGINE_ARGS) {
    return engine_c(CYCBCR_V210_FRAME, depth, true);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBFloat(CYCBCR_V210_ENGINE_ARGS) {
    return engine_float(CYCBCR_V210_FRAME, depth);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBPlanarC16(CYCBCR_V210_ENGINE_ARGS) {
    (void)depth;
    return engine_planar(CYCBCR_V210_FRAME, Arith::C, entry(OnEntry::ReadLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_v210ToRGBPlanarSSE16(CYCBCR_V210_ENGINE_ARGS) {
    (void)depth;
    return engine_planar(CYCBCR_V210_FRAME, Arith::F, (CPUFeatureFlags() & kCpuAvx2) != 0);
}

CYCBCR_API unsigned int cycbcr_012v_to_rgb32_Alpha(uint8_t* dst, const uint8_t* src,
                                                   const uint8_t* alpha, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                   QBYCBCRRgbType rgbType) {
    entry(OnEntry::ChooseLevel);
    return engine_b(Frame{dst, src, width, height, dstPitch, srcPitch, matrix, rgbType}, 32, false,
                    alpha);
}

}  // extern "C"

namespace cycbcr::colour {

CYCBCR_INLINE constexpr uint32_t v210_depth_bits(Format to) {
    return to == Format::RGB555 ? 15 : to == Format::RGB565 ? 16 : to == Format::RGB24 ? 24 : 32;
}

// The entry points of the list: a level is chosen when none is; at level 5 on
// an AVX2 processor 24-bit output goes to its AVX2 form and 32-bit output to the
// engine's AVX2 form.
template <Format From, Format To, auto Form>
unsigned int v210_to_rgb(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                         unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,
                         QBYCBCRRgbType rgbType) {
    const Paths paths = entry(OnEntry::ChooseLevel);
    if constexpr (To == Format::RGB24) {
        if (paths.avx2) return Form(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
    }
    if constexpr (To == Format::RGB32) {
        if (paths.avx2)
            return cycbcr_v210ToRGBInt_avx2(dst, src, width, height, dstPitch, srcPitch, matrix,
                                            rgbType, 32);
    }
    return cycbcr_v210ToRGB(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType,
                            v210_depth_bits(To));
}

template <Format From, Format To, auto>
unsigned int v210_to_rgb_avx2(uint8_t* dst, const uint8_t* src, unsigned int width,
                              unsigned int height, unsigned int dstPitch, unsigned int srcPitch,
                              QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType) {
    return v210rgb::engine_b({dst, src, width, height, dstPitch, srcPitch, matrix, rgbType},
                             v210_depth_bits(To), true, nullptr);
}

// Reads: every row's whole groups, the word after the last whole group (the
// read-ahead of pixel 5, whatever it holds) or the words of the partial group,
// rows srcPitch apart. Writes: width whole pixels a row, rows dstPitch apart.
Extent v210_to_rgb_extent(Format to, const Call& c) {
    const uint64_t w = c.width, h = c.height;
    if (w == 0 || h == 0) return {};
    const uint64_t bytes = pixel_bytes(to == Format::RGB555   ? RgbDepth::Rgb555
                                       : to == Format::RGB565 ? RgbDepth::Rgb565
                                       : to == Format::RGB24  ? RgbDepth::Rgb24
                                                              : RgbDepth::Rgb32);
    const uint64_t groups = w / 6, rest = w % 6;
    const uint64_t rowRead =
        groups * 16 + (rest != 0 ? 4 * v210rgb::group_words(static_cast<uint32_t>(rest)) : 4);
    return {rows_end(0, h, c.srcPitch, rowRead), rows_end(0, h, c.dstPitch, w * bytes)};
}

}  // namespace cycbcr::colour

extern "C" {
#define CYCBCR_ENTRY cycbcr::colour::v210_to_rgb_avx2
CYCBCR_V210_TO_RGB_AVX2_FORMS(CYCBCR_DEFINE_RGB)
#undef CYCBCR_ENTRY
#define CYCBCR_ENTRY cycbcr::colour::v210_to_rgb
CYCBCR_V210_TO_RGB_CONVERTERS(CYCBCR_DEFINE_RGB)
#undef CYCBCR_ENTRY
}  // extern "C"
