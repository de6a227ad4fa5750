// YCbCr to three RGB planes: one frame walk (the 8-bit engine's pixel pairs and
// source addressing, three destination planes), a row kernel per sample width
// and arithmetic, the engines, and the selector with its image-library route.
#include "torgb/to_rgb_planar.h"

#include <cstring>
#include <string_view>
#include <type_traits>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/row_walk.h"
#include "platform/imaging.h"
#include "platform/memory.h"

namespace cycbcr::colour::planes {
namespace {

// Samples and plane values go through memcpy: 16-bit and float planes may
// start at any byte.
template <class T>
CYCBCR_INLINE T load(const void* p, size_t i) {
    T v;
    std::memcpy(&v, static_cast<const uint8_t*>(p) + i * sizeof(T), sizeof(T));
    return v;
}
template <class T>
CYCBCR_INLINE void store(void* p, size_t i, T v) {
    std::memcpy(static_cast<uint8_t*>(p) + i * sizeof(T), &v, sizeof(T));
}

// Per pixel pair, in samples: where the second Y lies after the first, and how
// far each pointer moves to the next pair.
struct Steps {
    uint32_t luma, second, chroma;
};
CYCBCR_INLINE constexpr Steps steps_of(Source s) {
    return s == Source::Packed ? Steps{4, 2, 4} : Steps{2, 1, 1};
}

// One row of pairs: `px` gives a pair's chroma terms and each pixel's three
// plane values, already clamped.
template <class In, class Out, Source S, class Px>
CYCBCR_INLINE void convert_row(const RowArgs& a, const Px& px) {
    constexpr Steps st = steps_of(S);
    for (size_t p = 0; p < a.pairs; ++p) {
        const auto c = px.chroma(load<In>(a.cb, p * st.chroma), load<In>(a.cr, p * st.chroma));
        const auto v0 = px.pixel(load<In>(a.y, p * st.luma), c);
        const auto v1 = px.pixel(load<In>(a.y, p * st.luma + st.second), c);
        store<Out>(a.out[0], 2 * p, static_cast<Out>(v0.r));
        store<Out>(a.out[1], 2 * p, static_cast<Out>(v0.g));
        store<Out>(a.out[2], 2 * p, static_cast<Out>(v0.b));
        store<Out>(a.out[0], 2 * p + 1, static_cast<Out>(v1.r));
        store<Out>(a.out[1], 2 * p + 1, static_cast<Out>(v1.g));
        store<Out>(a.out[2], 2 * p + 1, static_cast<Out>(v1.b));
    }
}

// The integer families: the row's gains over the chroma midpoint Mid, each
// 64-bit sum divided by Div truncating toward zero, then clamped to 0..Max.
template <int32_t Mid, int64_t Div, uint32_t Max>
struct Scaled {
    ToRgbRow<int32_t> k;
    CYCBCR_INLINE ChromaA chroma(uint32_t cb, uint32_t cr) const {
        const int64_t u = static_cast<int64_t>(cb) - Mid, v = static_cast<int64_t>(cr) - Mid;
        return {k.crToR * v, -(k.crToG * v) - k.cbToG * u, k.cbToB * u};
    }
    CYCBCR_INLINE static uint32_t channel(int64_t sum) {
        const int64_t q = sum / Div;
        return q < 0 ? 0u : q > int64_t{Max} ? Max : static_cast<uint32_t>(q);
    }
    CYCBCR_INLINE Rgb pixel(uint32_t y, const ChromaA& c) const {
        const int64_t l = (static_cast<int64_t>(y) - k.yOffset) * k.yGain;
        return {channel(l + c.r), channel(l + c.g), channel(l + c.b)};
    }
};
using EightBitA = Scaled<128, 10000, 255>;  // 8-bit samples, 8-bit planes
template <Wide W>
using WidePx = Scaled<wide_rule(W).mid, wide_rule(W).div, wide_rule(W).max>;

// Family C with 12-bit samples: the gains of the 10-bit rows, luma offset 256
// where those say 64.
CYCBCR_INLINE ToRgbRow<int32_t> family_c12(QBYCBCRMatrix m) {
    ToRgbRow<int32_t> k = kFamilyC[m];
    if (k.yOffset != 0) k.yOffset = kFamilyC12YOffset;
    return k;
}

// The master set in double precision on the 8-bit scale, clamped to 0..255 and
// kept unrounded (float planes have room for the fraction).
struct MasterFloat {
    const ToRgbRow<double>& k;
    struct Chroma {
        double r, g, b;
    };
    struct Value {
        float r, g, b;
    };
    CYCBCR_INLINE Chroma chroma(uint32_t cb, uint32_t cr) const {
        const double u = static_cast<double>(cb) - 128.0, v = static_cast<double>(cr) - 128.0;
        return {k.crToR * v, -(k.crToG * v) - k.cbToG * u, k.cbToB * u};
    }
    CYCBCR_INLINE static float channel(double v) {
        return v <= 0.0 ? 0.0f : v >= 255.0 ? 255.0f : static_cast<float>(v);
    }
    CYCBCR_INLINE Value pixel(uint32_t y, const Chroma& c) const {
        const double l = (static_cast<double>(y) - k.yOffset) * k.yGain;
        return {channel(l + c.r), channel(l + c.g), channel(l + c.b)};
    }
};

// One call's frame.
struct Frame {
    void* out[3];
    const void* y;
    const void* cb;
    const void* cr;
    uint32_t width, height, dstPitch;
    QBYCBCRRgbType rgbType;
    int32_t is422;
    uint32_t planar;

    Source source() const { return planar != 0 ? Source::Planar : Source::Packed; }
};

// The frame walk. Output rows dstPitch apart in every plane (bottom-up flag:
// the first row last). Source rows by the 8-bit engine's own addressing, in
// samples of `sampleBytes` bytes: packed rows run on (4 samples a pair), planar
// luma rows are width samples, chroma row n starts at (n * width) / 2 (4:2:2)
// or ((n / 2) * width) / 2 (4:2:0) samples into its plane.
template <class Row>
void walk_frame(const Frame& f, size_t sampleBytes, Row&& row) {
    const uint32_t pairs = f.width / 2 + f.width % 2;
    const bool up = rgb_layout(f.rgbType).bottom_up;
    Rows out[3];
    for (int k = 0; k < 3; ++k)
        out[k] = up ? rows_up(f.out[k], f.dstPitch, f.height) : rows_down(f.out[k], f.dstPitch);
    walk(all_rows(f.height), [&](uint32_t n) {
        size_t luma, chroma;
        if (f.planar == 0) {
            luma = chroma = size_t{n} * pairs * 4;
        } else {
            luma = size_t{n} * f.width;
            chroma = f.is422 != 0 ? size_t{n} * f.width / 2 : size_t{n / 2} * f.width / 2;
        }
        const RowArgs a{{out[0].at(n), out[1].at(n), out[2].at(n)},
                        static_cast<const uint8_t*>(f.y) + luma * sampleBytes,
                        static_cast<const uint8_t*>(f.cb) + chroma * sampleBytes,
                        static_cast<const uint8_t*>(f.cr) + chroma * sampleBytes,
                        pairs};
        row(a);
    });
}

template <Source S>
void row_float(const RowArgs& a, const ToRgbRow<double>& k) {
    convert_row<uint8_t, float, S>(a, MasterFloat{k});
}

// Float planes from 8-bit samples, with the AVX2 rows when `avx2` (the same
// values: the same double operations in the same order).
uint32_t engine_float(const Frame& f, QBYCBCRMatrix matrix, bool avx2) {
    const uint32_t result = f.width * f.height * 12;
    if (f.height == 0) return result;
    const Source s = f.source();
    const PlainRowF plain =
        s == Source::Packed ? row_float<Source::Packed> : row_float<Source::Planar>;
    const VectorRowF vector = avx2 ? avx2_row_float(s) : nullptr;
    const ToRgbRow<double>& row = kMaster[matrix];
    if (vector)
        walk_frame(f, 1, [&](const RowArgs& a) { vector(a, row, plain); });
    else
        walk_frame(f, 1, [&](const RowArgs& a) { plain(a, row); });
    return result;
}

template <Source S>
void row_a(const RowArgs& a, const ToRgbRow<int32_t>& k) {
    convert_row<uint8_t, uint8_t, S>(a, EightBitA{k});
}
template <Source S>
void row_d(const RowArgs& a, const ToRgbRow<int64_t>& k, bool studio) {
    convert_row<uint8_t, uint16_t, S>(a, FamilyD{k, studio});
}

template <Source S, Wide W>
void row_wide(const RowArgs& a, const ToRgbRow<int32_t>& k) {
    using Out = std::conditional_t<wide_rule(W).max == 255, uint8_t, uint16_t>;
    convert_row<uint16_t, Out, S>(a, WidePx<W>{k});
}

// A member from 10- or 12-bit samples, with the AVX2 rows when `avx2` (the
// same values). `k` holds the member's luma offset.
template <Wide W>
uint32_t engine_wide(const Frame& f, const ToRgbRow<int32_t>& k, bool avx2) {
    constexpr uint32_t valueBytes = wide_rule(W).max == 255 ? 1 : 2;
    const uint32_t result = f.width * f.height * 3 * valueBytes;
    if (f.height == 0) return result;
    const Source s = f.source();
    const PlainRowW plain =
        s == Source::Packed ? row_wide<Source::Packed, W> : row_wide<Source::Planar, W>;
    const VectorRowW vector = avx2 ? avx2_row_wide(s, W) : nullptr;
    if (vector)
        walk_frame(f, 2, [&](const RowArgs& a) { vector(a, k, plain); });
    else
        walk_frame(f, 2, [&](const RowArgs& a) { plain(a, k); });
    return result;
}

// Family A from 8-bit samples, with the AVX2 rows when `avx2` (the same bytes).
uint32_t engine_a(const Frame& f, QBYCBCRMatrix matrix, bool avx2) {
    const uint32_t result = f.width * f.height * 3;
    if (f.height == 0) return result;
    const Source s = f.source();
    const PlainRowA plain = s == Source::Packed ? row_a<Source::Packed> : row_a<Source::Planar>;
    // The three planes count together against the size that pays for streaming.
    bool stream = avx2;
    for (int k = 0; k < 3 && stream; ++k)
        stream = store_for(f.out[k], f.dstPitch, f.height * 3) == Store::Stream32;
    const VectorRowA vector = avx2 ? avx2_row_a(s, stream) : nullptr;
    const ToRgbRow<int32_t>& row = kFamilyA[matrix];
    if (vector)
        walk_frame(f, 1, [&](const RowArgs& a) { vector(a, row, plain); });
    else
        walk_frame(f, 1, [&](const RowArgs& a) { plain(a, row); });
    if (stream) finish_stores(Store::Stream32);
    return result;
}

// Family D from 8-bit samples into 16-bit planes.
uint32_t engine_d(const Frame& f, QBYCBCRMatrix matrix, bool avx2) {
    const uint32_t result = f.width * f.height * 6;
    if (f.height == 0) return result;
    const Source s = f.source();
    const PlainRowD plain = s == Source::Packed ? row_d<Source::Packed> : row_d<Source::Planar>;
    const VectorRowD vector = avx2 ? avx2_row_d(s) : nullptr;
    const ToRgbRow<int64_t>& row = kFamilyD[matrix];
    const bool studio = matrix <= 7 && matrix % 2 == 1;
    if (vector)
        walk_frame(f, 1, [&](const RowArgs& a) { vector(a, row, studio, plain); });
    else
        walk_frame(f, 1, [&](const RowArgs& a) { plain(a, row, studio); });
    return result;
}

}  // namespace
}  // namespace cycbcr::colour::planes

using namespace cycbcr;
using namespace cycbcr::colour;
using namespace cycbcr::colour::planes;

#define CYCBCR_PLANAR_ENGINE_ARGS                                                           \
    uint8_t *dstR, uint8_t *dstG, uint8_t *dstB, const uint8_t *y, const uint8_t *cb,       \
        const uint8_t *cr, unsigned int width, unsigned int height, unsigned int dstPitch,  \
        unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, int32_t is422, \
        unsigned int planar, unsigned int chromaPitch
#define CYCBCR_PLANAR_ENGINE_CALL                                                           \
    dstR, dstG, dstB, y, cb, cr, width, height, dstPitch, srcPitch, matrix, rgbType, is422, \
        planar, chromaPitch
#define CYCBCR_PLANAR_FRAME                                                            \
    Frame {                                                                            \
        {dstR, dstG, dstB}, y, cb, cr, width, height, dstPitch, rgbType, is422, planar \
    }

namespace {

// The selector's image-library route: packed 4:2:2 through a scratch frame of
// 3-byte B, G, R pixels, split into the planes. Returns 0 when the scratch
// frame cannot be had.
uint32_t ipp_uyvy_to_planes(uint8_t* dstR, uint8_t* dstG, uint8_t* dstB, const uint8_t* cb,
                            uint32_t width, uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    using namespace cycbcr::ipp;
    const uint64_t size = uint64_t{width} * height * 3;
    // A size of 0 wraps below and is refused with the oversized ones.
    if (size - 1 > 0x7FFFFFFEu) return 0;
    auto* scratch = static_cast<Ipp8u*>(ippMalloc(static_cast<int>(size)));
    if (scratch == nullptr) return 0;
    const IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
    ippiCbYCr422ToBGR_709HDTV_8u_C2C3R(cb, static_cast<int>(srcPitch), scratch,
                                       static_cast<int>(width * 3), roi);
    Ipp8u* planes[3] = {dstB, dstG, dstR};
    ippiCopy_8u_C3P3R(scratch, static_cast<int>(width * 3), planes, static_cast<int>(dstPitch),
                      roi);
    ippFree(scratch);
    return height * dstPitch;
}

CYCBCR_INLINE bool ipp_route(QBYCBCRMatrix matrix, int32_t is422, unsigned int planar) {
    return is422 != 0 && planar == 0 &&
           (matrix == QBYCBCR_MATRIX_601_STUDIO || matrix == QBYCBCR_MATRIX_709_PRECISE_STUDIO);
}

}  // namespace

extern "C" {

CYCBCR_API unsigned int cycbcr_ToRGBPlanar(CYCBCR_PLANAR_ENGINE_ARGS) {
    entry(OnEntry::ChooseLevel);
    if (ipp_route(matrix, is422, planar))
        return ipp_uyvy_to_planes(dstR, dstG, dstB, cb, width, height, dstPitch, srcPitch);
    return cycbcr_ToRGBPlanarInt(CYCBCR_PLANAR_ENGINE_CALL);
}

CYCBCR_API unsigned int cycbcr_ToRGBPlanarInt(CYCBCR_PLANAR_ENGINE_ARGS) {
    const Paths paths = entry(OnEntry::ChooseLevel);
    if (paths.avx2 && is422 != 0 && planar != 0)
        return cycbcr_ToRGBPlanarInt_avx2(CYCBCR_PLANAR_ENGINE_CALL);
    return engine_a(CYCBCR_PLANAR_FRAME, matrix, paths.avx2);
}

CYCBCR_API unsigned int cycbcr_ToRGBPlanarInt_avx2(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_a(CYCBCR_PLANAR_FRAME, matrix, true);
}

CYCBCR_API unsigned int cycbcr_ToRGBPlanarInt16(CYCBCR_PLANAR_ENGINE_ARGS) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_ToRGBPlanarInt16_avx2(CYCBCR_PLANAR_ENGINE_CALL);
    return engine_d(CYCBCR_PLANAR_FRAME, matrix, false);
}

CYCBCR_API unsigned int cycbcr_ToRGBPlanarInt16_avx2(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_d(CYCBCR_PLANAR_FRAME, matrix, true);
}

CYCBCR_API unsigned int cycbcr_ToRGBPlanarFloat(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_float(CYCBCR_PLANAR_FRAME, matrix, entry(OnEntry::ChooseLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_10ToRGBPlanarInt(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_wide<Wide::TenTo8>(CYCBCR_PLANAR_FRAME, kFamilyA[matrix],
                                     entry(OnEntry::ChooseLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_10ToRGBPlanarInt10(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_wide<Wide::TenTo10>(CYCBCR_PLANAR_FRAME, kFamilyC[matrix],
                                      entry(OnEntry::ChooseLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_10ToRGBPlanarInt16(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_wide<Wide::TenTo16>(CYCBCR_PLANAR_FRAME, kFamilyC[matrix],
                                      entry(OnEntry::ChooseLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_12ToRGBPlanar(CYCBCR_PLANAR_ENGINE_ARGS) {
    (void)srcPitch;
    (void)chromaPitch;
    return engine_wide<Wide::TwelveTo16>(CYCBCR_PLANAR_FRAME, family_c12(matrix),
                                         entry(OnEntry::ChooseLevel).avx2);
}

CYCBCR_API unsigned int cycbcr_12ToRGBPlanarInt16(CYCBCR_PLANAR_ENGINE_ARGS) {
    return cycbcr_12ToRGBPlanar(CYCBCR_PLANAR_ENGINE_CALL);
}

}  // extern "C"

namespace cycbcr::colour::planes {

// Bytes reached from the R, G, B planes and the Y pointer (arguments after the
// height: dstPitch, srcPitch, matrix, rgbType, is422, planar, chromaPitch).
bool to_rgb_planar_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    struct Member {
        std::string_view name;
        uint32_t sampleBytes, valueBytes;
    };
    static constexpr Member kMembers[] = {
        {"cycbcr_ToRGBPlanar", 1, 1},           {"cycbcr_ToRGBPlanarInt", 1, 1},
        {"cycbcr_ToRGBPlanarInt_avx2", 1, 1},   {"cycbcr_ToRGBPlanarInt16", 1, 2},
        {"cycbcr_ToRGBPlanarInt16_avx2", 1, 2}, {"cycbcr_ToRGBPlanarFloat", 1, 4},
        {"cycbcr_10ToRGBPlanarInt", 2, 1},      {"cycbcr_10ToRGBPlanarInt10", 2, 2},
        {"cycbcr_10ToRGBPlanarInt16", 2, 2},    {"cycbcr_12ToRGBPlanar", 2, 2},
        {"cycbcr_12ToRGBPlanarInt16", 2, 2},
    };
    const Member* m = nullptr;
    for (const Member& k : kMembers)
        if (k.name == name) m = &k;
    if (m == nullptr) return false;
    out = {};
    const uint64_t w = c.width, h = c.height;
    const uint32_t dstPitch = c.arg(0), srcPitch = c.arg(1), matrix = c.arg(2);
    const uint32_t is422 = c.arg(4), planar = c.arg(5);
    if (m->name == "cycbcr_ToRGBPlanar" && ipp_route(matrix, static_cast<int32_t>(is422), planar)) {
        // The image-library route reads the packed frame from the Cb pointer
        // (answered in the Y slot) and writes width pixels a row; it touches
        // nothing when the scratch frame is refused or a step is 0.
        const uint64_t size = w * h * 3;
        if (size - 1 > 0x7FFFFFFEu) return true;
        if (dstPitch > 0)
            for (int k = 0; k < 3; ++k) out[k] = rows_end(0, h, dstPitch, w);
        if (srcPitch > 0 && w >= 2) out[3] = out[4] = rows_end(0, h, srcPitch, (w / 2) * 4);
        return true;
    }
    if (w == 0 || h == 0) return true;
    const uint64_t pairs = w / 2 + w % 2;
    for (int k = 0; k < 3; ++k) out[k] = rows_end(0, h, dstPitch, 2 * pairs * m->valueBytes);
    // Packed: rows run on, 4 samples a pair, the last Y two samples into its
    // pair's last four; planar: rows of width samples, the last row's pairs.
    const uint64_t samples = planar == 0 ? 4 * pairs * h - 1 : (h - 1) * w + 2 * pairs;
    out[3] = samples * m->sampleBytes;
    // Cb and Cr through their own pointers: packed, the last pair's sample 4p;
    // planar, the last chroma row's pairs.
    const uint64_t last = is422 != 0 ? (h - 1) * w / 2 : ((h - 1) / 2) * w / 2;
    out[4] = out[5] = (planar == 0 ? 4 * pairs * h - 3 : last + pairs) * m->sampleBytes;
    return true;
}

}  // namespace cycbcr::colour::planes
