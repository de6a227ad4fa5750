// 8-bit YCbCr to RGB: the engine (one frame walk, a row kernel per source shape,
// depth and channel order), its float and 16-bit siblings, the selector with its
// image-library route, and the entry points.
#include "torgb/to_rgb.h"

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "platform/imaging.h"
#include "platform/memory.h"
#include "torgb/to_rgb_list.h"

namespace cycbcr::colour {
namespace {

// Per pixel pair: where the second Y lies after the first, and how far each
// pointer moves to the next pair.
struct Steps {
    uint32_t luma, second, chroma;
};
CYCBCR_INLINE constexpr Steps steps_of(Source s) {
    switch (s) {
        case Source::Packed:
            return {4, 2, 4};
        case Source::Planar:
            return {2, 1, 1};
        case Source::SemiPlanar:
            return {2, 1, 2};
    }
    return {};
}

// One row of pairs under any arithmetic: `px` gives the chroma terms of a pair
// and the channels of each pixel, `alpha` the alpha of pixels without a plane.
template <Source S, RgbDepth D, RgbOrder O, bool AlphaPlane, class Px>
CYCBCR_INLINE void convert_row(const RowArgs& a, const Px& px, uint32_t alpha) {
    constexpr Steps st = steps_of(S);
    constexpr size_t bytes = pixel_bytes(D);
    uint8_t* d = a.dst;
    for (uint32_t p = 0; p < a.pairs; ++p, d += 2 * bytes) {
        const uint8_t* y = a.y + size_t{p} * st.luma;
        const auto c = px.chroma(a.cb[size_t{p} * st.chroma], a.cr[size_t{p} * st.chroma]);
        const uint32_t a0 = AlphaPlane ? a.alpha[2 * size_t{p}] : alpha;
        const uint32_t a1 = AlphaPlane ? a.alpha[2 * size_t{p} + 1] : alpha;
        put_pixel<D, O>(d, px.pixel(y[0], c), a0);
        put_pixel<D, O>(d + bytes, px.pixel(y[st.second], c), a1);
    }
}

struct FamilyA {
    const ToRgbRow<int32_t>& k;
    CYCBCR_INLINE ChromaA chroma(uint32_t cb, uint32_t cr) const { return chroma_a(k, cb, cr); }
    CYCBCR_INLINE Rgb pixel(uint32_t y, const ChromaA& c) const { return pixel_a(k, y, c); }
};

template <Source S, RgbDepth D, RgbOrder O, bool AlphaPlane>
void row_a(const RowArgs& a, const ToRgbRow<int32_t>& k) {
    convert_row<S, D, O, AlphaPlane>(a, FamilyA{k}, 255);
}

template <Source S, RgbDepth D>
PlainRow plain_by_order(RgbOrder o, bool alpha) {
    return with_order(o, [&]<RgbOrder O>() -> PlainRow {
        return alpha ? row_a<S, D, O, true> : row_a<S, D, O, false>;
    });
}
template <Source S>
PlainRow plain_by_depth(RgbDepth d, RgbOrder o, bool alpha) {
    switch (d) {
        case RgbDepth::Rgb555:
            return plain_by_order<S, RgbDepth::Rgb555>(o, alpha);
        case RgbDepth::Rgb565:
            return plain_by_order<S, RgbDepth::Rgb565>(o, alpha);
        case RgbDepth::Rgb24:
            return plain_by_order<S, RgbDepth::Rgb24>(o, alpha);
        default:
            break;
    }
    return plain_by_order<S, RgbDepth::Rgb32>(o, alpha);
}

// The engine's frame walk: output rows down (or up with the bottom-up flag) at
// the destination pitch; source rows by the engine's own addressing, which
// never reads the pitches (packed rows run on; planar rows are width samples).
template <class Row>
void walk_frame(const EngineArgs& e, Source s, const uint8_t* alpha, Row&& row) {
    const uint32_t pairs = e.width / 2 + e.width % 2;
    const Rows out = rgb_layout(e.rgbType).bottom_up ? rows_up(e.dst, e.dstPitch, e.height)
                                                     : rows_down(e.dst, e.dstPitch);
    walk(all_rows(e.height), [&](uint32_t n) {
        RowArgs a{out.at(n), e.y, e.cb, e.cr, nullptr, pairs};
        if (s == Source::Packed) {
            const size_t run = size_t{n} * pairs * 4;
            a.y += run;
            a.cb += run;
            a.cr += run;
        } else {
            a.y += size_t{n} * e.width;
            const size_t c = e.is422 != 0 ? size_t{n} * e.width / 2 : size_t{n / 2} * e.width / 2;
            // Interleaved chroma: the same count of samples, in Cb, Cr pairs.
            const size_t at = s == Source::SemiPlanar ? 2 * c : c;
            a.cb += at;
            a.cr += at;
        }
        if (alpha) a.alpha = alpha + size_t{n} * e.width;
        row(a);
    });
}

CYCBCR_INLINE uint32_t engine_result(const EngineArgs& e, uint32_t bytesPerPixel) {
    return e.width * e.height * bytesPerPixel;
}
CYCBCR_INLINE uint32_t bytes_of_depth(uint32_t depth) {
    return depth == 15 || depth == 16 ? 2 : depth == 24 ? 3 : 4;
}

}  // namespace

PlainRow plain_row_a(Source s, RgbDepth d, RgbOrder o, bool alphaPlane) {
    switch (s) {
        case Source::Packed:
            return plain_by_depth<Source::Packed>(d, o, alphaPlane);
        case Source::Planar:
            return plain_by_depth<Source::Planar>(d, o, alphaPlane);
        case Source::SemiPlanar:
            break;
    }
    return plain_by_depth<Source::SemiPlanar>(d, o, alphaPlane);
}

// Family A over a frame, with AVX2 row kernels when `avx2` (the bytes are the
// same either way).
uint32_t engine_a(const EngineArgs& e, Source s, const uint8_t* alpha, bool avx2) {
    const uint32_t result = engine_result(e, bytes_of_depth(e.depth));
    RgbDepth d;
    if (e.height == 0 || !depth_of_bits(e.depth, &d)) return result;
    const RgbOrder o = rgb_layout(e.rgbType).order;
    const bool plane = alpha != nullptr;
    const bool stream = avx2 && store_for(e.dst, e.dstPitch, e.height) == Store::Stream32;
    const Format shape = s == Source::Packed ? packed_shape(e.y, e.cb, e.cr) : Format::Unknown;
    const PlainRow plain = plain_row_a(s, d, o, plane);
    const bool paired = s == Source::SemiPlanar && e.cr == e.cb + 1;
    const VectorRow vector = avx2 ? avx2_row_a(s, shape, paired, d, o, plane, stream) : nullptr;
    const ToRgbRow<int32_t>& row = kFamilyA[e.matrix];
    if (vector)
        walk_frame(e, s, alpha, [&](const RowArgs& a) { vector(a, row, plain); });
    else
        walk_frame(e, s, alpha, [&](const RowArgs& a) { plain(a, row); });
    if (stream) finish_stores(Store::Stream32);
    return result;
}

namespace {

CYCBCR_INLINE Source source_of(const EngineArgs& e) {
    return e.planar != 0 ? Source::Planar : Source::Packed;
}

// The master set in double precision: each channel truncated toward zero, then
// clamped, as the integer engine does with its scaled set.
struct MasterSet {
    const ToRgbRow<double>& k;
    struct Chroma {
        double r, g, b;
    };
    CYCBCR_INLINE Chroma chroma(uint32_t cb, uint32_t cr) const {
        const double u = static_cast<double>(cb) - 128.0, v = static_cast<double>(cr) - 128.0;
        return {k.crToR * v, -(k.crToG * v) - k.cbToG * u, k.cbToB * u};
    }
    CYCBCR_INLINE static uint32_t channel(double v) {
        // Out-of-range values clamp before the conversion, which would overflow.
        return v <= 0.0 ? 0u : v >= 255.0 ? 255u : static_cast<uint32_t>(v);
    }
    CYCBCR_INLINE Rgb pixel(uint32_t y, const Chroma& c) const {
        const double l = (static_cast<double>(y) - k.yOffset) * k.yGain;
        return {channel(l + c.r), channel(l + c.g), channel(l + c.b)};
    }
};

// Runs `px` over the frame with the plain row of the call's layout.
template <RgbDepth D, class Px>
void run_plain(const EngineArgs& e, Source s, const Px& px, uint32_t alpha) {
    with_order(rgb_layout(e.rgbType).order, [&]<RgbOrder O>() {
        walk_frame(e, s, nullptr, [&](const RowArgs& a) {
            if (s == Source::Packed)
                convert_row<Source::Packed, D, O, false>(a, px, alpha);
            else
                convert_row<Source::Planar, D, O, false>(a, px, alpha);
        });
    });
}

}  // namespace
}  // namespace cycbcr::colour

using namespace cycbcr;
using namespace cycbcr::colour;

namespace {

// The selector's image-library route: planar 4:2:0 to B, G, R, 255.
uint32_t ipp_420_to_bgra(const EngineArgs& e) {
    using namespace cycbcr::ipp;
    const Ipp8u* planes[3] = {e.y, e.cb, e.cr};
    int steps[3] = {static_cast<int>(e.srcPitch), static_cast<int>(e.srcPitch / 2),
                    static_cast<int>(e.srcPitch / 2)};
    const IppiSize roi{static_cast<int>(e.width), static_cast<int>(e.height)};
    switch (e.matrix) {
        case QBYCBCR_MATRIX_709:
        case QBYCBCR_MATRIX_709_PRECISE: {
            // Written as 3-byte pixels in rows width * 3 apart, then widened in
            // place from the last pixel back, so every pixel is read before its
            // bytes are overwritten; the widened rows are width * 4 apart
            // whatever the destination pitch.
            ippiYCbCr420ToBGR_709CSC_8u_P3C3R(planes, steps, e.dst, static_cast<int>(e.width * 3),
                                              roi);
            for (size_t i = size_t{e.width} * e.height; i-- > 0;) {
                const uint8_t b = e.dst[3 * i], g = e.dst[3 * i + 1], r = e.dst[3 * i + 2];
                e.dst[4 * i] = b;
                e.dst[4 * i + 1] = g;
                e.dst[4 * i + 2] = r;
                e.dst[4 * i + 3] = 255;
            }
            break;
        }
        case QBYCBCR_MATRIX_709_STUDIO:
        case QBYCBCR_MATRIX_709_PRECISE_STUDIO:
            ippiYCbCr420ToBGR_709HDTV_8u_P3C4R(planes, steps, e.dst, static_cast<int>(e.dstPitch),
                                               roi, 255);
            break;
        default:
            ippiYCbCr420ToBGR_8u_P3C4R(planes, steps, e.dst, static_cast<int>(e.dstPitch), roi,
                                       255);
            break;
    }
    return e.height * e.dstPitch;
}

}  // namespace

#define CYCBCR_ENGINE_ARGS                                                                       \
    uint8_t *dst, const uint8_t *y, const uint8_t *cb, const uint8_t *cr, unsigned int width,    \
        unsigned int height, unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix, \
        QBYCBCRRgbType rgbType, int32_t is422, unsigned int planar, unsigned int depth,          \
        unsigned int chromaPitch
#define CYCBCR_ENGINE_CALL                                                                    \
    dst, y, cb, cr, width, height, dstPitch, srcPitch, matrix, rgbType, is422, planar, depth, \
        chromaPitch
#define CYCBCR_ENGINE_STRUCT                                                                      \
    EngineArgs {                                                                                  \
        dst, y, cb, cr, width, height, dstPitch, srcPitch, matrix, rgbType, is422, planar, depth, \
            chromaPitch                                                                           \
    }

extern "C" {

CYCBCR_API unsigned int cycbcr_ToRGB(CYCBCR_ENGINE_ARGS) {
    if (is422 == 0 && planar != 0 && depth == 32 && rgbType == 0)
        return ipp_420_to_bgra(CYCBCR_ENGINE_STRUCT);
    return cycbcr_ToRGBInt(CYCBCR_ENGINE_CALL);
}

CYCBCR_API unsigned int cycbcr_ToRGBInt(CYCBCR_ENGINE_ARGS) {
    const Paths paths = entry(OnEntry::ReadLevel);
    if (paths.avx2 && depth == 32 && is422 != 0 && planar != 0)
        return cycbcr_ToRGBInt_avx2(CYCBCR_ENGINE_CALL);
    const EngineArgs e = CYCBCR_ENGINE_STRUCT;
    return engine_a(e, source_of(e), nullptr, paths.avx2);
}

CYCBCR_API unsigned int cycbcr_ToRGBInt_avx2(CYCBCR_ENGINE_ARGS) {
    const EngineArgs e = CYCBCR_ENGINE_STRUCT;
    return engine_a(e, source_of(e), nullptr, true);
}

CYCBCR_API unsigned int cycbcrBi_ToRGBInt(CYCBCR_ENGINE_ARGS) {
    return engine_a(CYCBCR_ENGINE_STRUCT, Source::SemiPlanar, nullptr,
                    entry(OnEntry::ReadLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_ToRGBFloat(CYCBCR_ENGINE_ARGS) {
    const EngineArgs e = CYCBCR_ENGINE_STRUCT;
    const uint32_t result = engine_result(e, bytes_of_depth(depth));
    RgbDepth d;
    if (height == 0 || !depth_of_bits(depth, &d)) return result;
    const MasterSet px{kMaster[matrix]};
    switch (d) {
        case RgbDepth::Rgb555:
            run_plain<RgbDepth::Rgb555>(e, source_of(e), px, 255);
            break;
        case RgbDepth::Rgb565:
            run_plain<RgbDepth::Rgb565>(e, source_of(e), px, 255);
            break;
        case RgbDepth::Rgb24:
            run_plain<RgbDepth::Rgb24>(e, source_of(e), px, 255);
            break;
        default:
            run_plain<RgbDepth::Rgb32>(e, source_of(e), px, 255);
            break;
    }
    return result;
}

CYCBCR_API unsigned int cycbcr_ToRGBInt16(CYCBCR_ENGINE_ARGS) {
    const EngineArgs e = CYCBCR_ENGINE_STRUCT;
    const bool three = depth == 24 || depth == 48;
    const uint32_t result = engine_result(e, three ? 6 : 8);
    if (height == 0 || (!three && depth != 32 && depth != 64)) return result;
    const FamilyD px{kFamilyD[matrix], matrix <= 7 && matrix % 2 == 1};
    if (three)
        run_plain<RgbDepth::Rgb48>(e, source_of(e), px, 65535);
    else
        run_plain<RgbDepth::Rgb64>(e, source_of(e), px, 65535);
    return result;
}

}  // extern "C"

namespace cycbcr::colour {

CYCBCR_INLINE constexpr uint32_t depth_bits(Format to) {
    switch (to) {
        case Format::RGB555:
            return 15;
        case Format::RGB565:
            return 16;
        case Format::RGB24:
            return 24;
        default:
            return 32;
    }
}

// The engine's arguments for a frame of format From in one buffer.
template <Format From>
EngineArgs engine_args(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix matrix,
                       QBYCBCRRgbType rgbType, uint32_t depth) {
    auto* s = const_cast<uint8_t*>(src);
    Planes p;
    if constexpr (is_packed422(From)) {
        p = packed_samples(From, s);
    } else if constexpr (From == Format::NV12) {
        const uint32_t luma = srcPitch * height;
        p = {s, s + luma, s + luma + 1};
    } else {
        p = planar_planes(From, s, srcPitch, height);
    }
    return {dst,
            p.y,
            p.cb,
            p.cr,
            width,
            height,
            dstPitch,
            srcPitch,
            matrix,
            rgbType,
            full_height_chroma(From) ? 1 : 0,
            is_packed422(From) ? 0u : 1u,
            depth,
            srcPitch / 2};
}

CYCBCR_INLINE uint32_t call_engine(unsigned int (*fn)(CYCBCR_ENGINE_ARGS), const EngineArgs& e) {
    return fn(e.dst, e.y, e.cb, e.cr, e.width, e.height, e.dstPitch, e.srcPitch, e.matrix,
              e.rgbType, e.is422, e.planar, e.depth, e.chromaPitch);
}

// UYVY to 3-byte pixels below level 5: the image library, whatever the RGB type.
// Matrices with bit 2 set (the BT.2020 ones among them) take studio BT.709 and
// then R, G, B order; the others take BT.601 reading the UYVY bytes as
// Y0 Cr Y1 Cb. Both kept: callers' pictures were tuned on them.
uint32_t ipp_uyvy_to_rgb24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                           uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix matrix) {
    using namespace cycbcr::ipp;
    const IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
    const int ss = static_cast<int>(srcPitch), ds = static_cast<int>(dstPitch);
    if (matrix & 4) {
        static constexpr int kToRgb[3] = {2, 1, 0};
        ippiCbYCr422ToBGR_709HDTV_8u_C2C3R(src, ss, dst, ds, roi);
        ippiSwapChannels_8u_C3IR(dst, ds, roi, kToRgb);
    } else {
        ippiYCrCb422ToRGB_8u_C2C3R(src, ss, dst, ds, roi);
    }
    return height * dstPitch;
}

// UYVY to 4-byte pixels through the image library: studio matrices only, alpha
// 0, no bottom-up rows.
bool takes_ipp_rgb32(uint32_t level, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType) {
    const bool level_ok = (level >= 1 && level <= 4) || level == 6;
    const bool layout_ok = !(level == 1 && (rgbType & ~kBottomUp) != 0);
    return level_ok && layout_ok && (matrix & 1) != 0;
}
uint32_t ipp_uyvy_to_rgb32(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                           uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix matrix,
                           QBYCBCRRgbType rgbType) {
    using namespace cycbcr::ipp;
    const IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
    const int ss = static_cast<int>(srcPitch), ds = static_cast<int>(dstPitch);
    if (matrix & 4)
        ippiCbYCr422ToBGR_709HDTV_8u_C2C4R(src, ss, dst, ds, roi, 0);
    else
        ippiCbYCr422ToBGR_8u_C2C4R(src, ss, dst, ds, roi, 0);
    if (rgbType == QBYCBCR_RGB_RGBA) {
        static constexpr int kToRgba[4] = {2, 1, 0, 3};
        ippiSwapChannels_8u_C4IR(dst, ds, roi, kToRgba);
    }
    return height * dstPitch;
}

// The entry points of the list. Every one chooses a level when none is chosen;
// the UYVY ones and planar 4:2:2 to 32 bits have routes of their own.
template <Format From, Format To, auto Form>
unsigned int to_rgb(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                    unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,
                    QBYCBCRRgbType rgbType) {
    constexpr bool uyvy24 = From == Format::UYVY && To == Format::RGB24;
    constexpr bool uyvy32 = From == Format::UYVY && To == Format::RGB32;
    if constexpr (uyvy32) {
        // The AVX2 form is tried before a level is chosen, so the first call of
        // a process takes the engine (the same bytes).
        if (entry(OnEntry::ReadLevel).avx2)
            return Form(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
        entry(OnEntry::ChooseLevel);
        if (takes_ipp_rgb32(load_level(), matrix, rgbType))
            return ipp_uyvy_to_rgb32(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
    } else {
        const Paths paths = entry(OnEntry::ChooseLevel);
        if constexpr (uyvy24) {
            if (paths.avx2)
                return Form(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
            return ipp_uyvy_to_rgb24(dst, src, width, height, dstPitch, srcPitch, matrix);
        }
        if constexpr (From == Format::P422 && To == Format::RGB32) {
            if (paths.avx2)
                return call_engine(cycbcr_ToRGBInt_avx2,
                                   engine_args<From>(dst, src, width, height, dstPitch, srcPitch,
                                                     matrix, rgbType, 32));
        }
    }
    const EngineArgs e = engine_args<From>(dst, src, width, height, dstPitch, srcPitch, matrix,
                                           rgbType, depth_bits(To));
    if constexpr (From == Format::NV12) return call_engine(cycbcrBi_ToRGBInt, e);
    if constexpr (info(From).bottom_up) {
        // Converting and then turning the frame over moves each converted row r
        // to row height - 1 - r, padding included. Rows without padding get
        // the same bytes in one pass by writing them in the other direction.
        const size_t row = (size_t{width} / 2 + width % 2) * 2 * ((depth_bits(To) + 1) / 8);
        if (dstPitch == row) {
            EngineArgs flipped = e;
            flipped.rgbType ^= kBottomUp;
            return call_engine(cycbcr_ToRGB, flipped);
        }
    }
    const uint32_t result = call_engine(cycbcr_ToRGB, e);
    if constexpr (info(From).bottom_up) cycbcr_invert(dst, dstPitch, height);
    return result;
}

// The AVX2 forms: the engine's rule on UYVY, vector kernels throughout.
template <Format From, Format To, auto>
unsigned int to_rgb_avx2(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                         unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,
                         QBYCBCRRgbType rgbType) {
    return call_engine(cycbcr_ToRGBInt_avx2,
                       engine_args<From>(dst, src, width, height, dstPitch, srcPitch, matrix,
                                         rgbType, depth_bits(To)));
}

}  // namespace cycbcr::colour

extern "C" {

#define CYCBCR_ENTRY cycbcr::colour::to_rgb_avx2
CYCBCR_TO_RGB_AVX2_FORMS(CYCBCR_DEFINE_RGB)
#undef CYCBCR_ENTRY
#define CYCBCR_ENTRY cycbcr::colour::to_rgb
CYCBCR_TO_RGB_CONVERTERS(CYCBCR_DEFINE_RGB)
#undef CYCBCR_ENTRY

CYCBCR_API unsigned int cycbcr_uyvy_to_rgb32_alpha_avx2(uint8_t* dst, const uint8_t* src,
                                                        const uint8_t* alpha, unsigned int width,
                                                        unsigned int height, unsigned int dstPitch,
                                                        unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                        QBYCBCRRgbType rgbType) {
    return engine_a(
        engine_args<Format::UYVY>(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType, 32),
        Source::Packed, alpha, true);
}

CYCBCR_API unsigned int cycbcr_uyvy_to_rgb32_Alpha(uint8_t* dst, const uint8_t* src,
                                                   const uint8_t* alpha, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                   QBYCBCRRgbType rgbType) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_uyvy_to_rgb32_alpha_avx2(dst, src, alpha, width, height, dstPitch, srcPitch,
                                               matrix, rgbType);
    return engine_a(
        engine_args<Format::UYVY>(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType, 32),
        Source::Packed, alpha, false);
}

}  // extern "C"

namespace cycbcr::colour {

// What each route reads and writes (frame/buffer_sizes.h).
Extent to_rgb_extent(Format from, Format to, const Call& c, QBYCBCRMatrix matrix,
                     QBYCBCRRgbType rgbType) {
    const uint64_t w = c.width, h = c.height;
    const uint64_t pairs = w / 2 + w % 2;
    const uint64_t bytes = pixel_bytes(to == Format::RGB555   ? RgbDepth::Rgb555
                                       : to == Format::RGB565 ? RgbDepth::Rgb565
                                       : to == Format::RGB24  ? RgbDepth::Rgb24
                                                              : RgbDepth::Rgb32);
    // With nothing to convert a bottom-up source's frame is still turned over.
    if (w == 0 || h == 0) return {0, info(from).bottom_up ? inverted_end(0, h, c.dstPitch) : 0};
    Extent engine, ipp;
    // The engine and every vector form of it.
    engine.dst = rows_end(0, h, c.dstPitch, 2 * pairs * bytes);
    if (is_packed422(from)) {
        engine.src = 4 * pairs * h;
    } else {
        const uint32_t luma = c.srcPitch * c.height;
        const bool semi = from == Format::NV12;
        const PlaneOffsets o = semi ? PlaneOffsets{luma, uint64_t{luma} + 1}
                                    : planar_offsets(from, c.srcPitch, c.height);
        const uint64_t last = full_height_chroma(from) ? (h - 1) * w / 2 : ((h - 1) / 2) * w / 2;
        const uint64_t chroma = semi ? 2 * last + 2 * pairs - 1 : last + pairs;
        engine.src = widest((h - 1) * w + 2 * pairs, widest(o.cb, o.cr) + chroma);
    }
    if (info(from).bottom_up) engine.dst = widest(engine.dst, inverted_end(0, h, c.dstPitch));

    const bool planar420 = (from == Format::I420 || from == Format::YV12);
    if (planar420 && to == Format::RGB32 && rgbType == 0) {
        // Only the image-library route, at every level.
        const uint64_t ew = w & ~uint64_t{1}, eh = h & ~uint64_t{1};
        if (w >= 2 && h >= 2) {
            const PlaneOffsets o = planar_offsets(from, c.srcPitch, c.height);
            const uint64_t cp = c.srcPitch / 2;
            ipp.src = widest(rows_end(0, eh, c.srcPitch, ew),
                             widest(o.cb, o.cr) + rows_end(0, eh / 2, cp, ew / 2));
            if (c.srcPitch < 2) ipp.src = 0;  // a step of 0 is refused
        }
        // The BT.709 route writes rows width * 3 apart and then widens the whole
        // frame, whatever the library wrote; the others write at the pitch.
        const bool widened = matrix == 2 || matrix == 4;
        if (!widened && c.dstPitch == 0) return {};
        ipp.dst = widened ? w * 4 * h : ipp.src ? rows_end(0, eh, c.dstPitch, ew * 4) : 0;
        return ipp;
    }
    if (from == Format::UYVY && (to == Format::RGB24 || to == Format::RGB32)) {
        // Below level 5 the image library: whole pairs, rows at the pitches; the
        // 3-byte route's channel swap covers the whole width.
        if (c.srcPitch > 0 && c.dstPitch > 0 && w >= 2) {
            ipp.src = rows_end(0, h, c.srcPitch, (w / 2) * 4);
            const bool swapped = to == Format::RGB24 && (matrix & 4) != 0;
            ipp.dst = rows_end(0, h, c.dstPitch, swapped ? w * 3 : (w / 2) * 2 * bytes);
        }
        if (to == Format::RGB32 && (matrix & 1) == 0) ipp = {};
    }
    return widest(engine, ipp);
}

}  // namespace cycbcr::colour
