// RGB to 8-bit YCbCr: the millionths engine and its 14-bit vector sibling (one
// frame walk, a row kernel per layout), the selector, the wrappers of the list,
// the image-library route of BGRA to UYVY, the float converter and the alpha
// extractor.
#include "fromrgb/from_rgb.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "fromrgb/from_rgb_list.h"
#include "platform/imaging.h"
#include "platform/memory.h"
#include "torgb/rgb_pixels.h"

namespace cycbcr::fromrgb {

using colour::kBottomUp;

namespace {

constexpr int64_t kMillion = 1000000;

CYCBCR_INLINE uint8_t to_byte(int64_t v) {
    return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

// ---- The millionths rule ----

struct Rgb {
    int64_t r, g, b;
};
CYCBCR_INLINE Rgb read_pixel(const uint8_t* p, PixelLayout l) {
    return {p[l.r], p[l.g], p[l.b]};
}

// Y: the quotient, one more when the remainder passes half, the offset, at most
// 255 (the sums of every row are never negative).
CYCBCR_INLINE uint8_t luma(const FromRgbRow& k, const Rgb& c, bool rounded) {
    const int64_t s = k.rToY * c.r + k.gToY * c.g + k.bToY * c.b;
    const int64_t y = s / kMillion + (rounded && s % kMillion > 500000 ? 1 : 0) + k.yOffset;
    return static_cast<uint8_t>(y > 255 ? 255 : y);
}
// Cb and Cr: the quotient toward zero, moved one step away from zero when the
// remainder passes `up` (sums >= 0) or `down` (negative sums), then 128 added.
CYCBCR_INLINE uint8_t chroma(int64_t s, int64_t up, int64_t down) {
    int64_t q = s / kMillion;
    const int64_t m = s % kMillion;
    if (s >= 0 && m > up) ++q;
    if (s < 0 && m < -down) --q;
    return to_byte(q + 128);
}
CYCBCR_INLINE uint8_t cb_of(const FromRgbRow& k, const Rgb& c) {
    return chroma(k.rToCb * c.r + k.gToCb * c.g + k.bToCb * c.b, 450000, 250000);
}
CYCBCR_INLINE uint8_t cr_of(const FromRgbRow& k, const Rgb& c) {
    return chroma(k.rToCr * c.r + k.gToCr * c.g + k.bToCr * c.b, 500000, 500000);
}

// Where pair p's samples go: packed rows put Y every 2 bytes and chroma every
// 4; planar rows Y every byte and chroma every byte.
template <bool Planar>
struct Put {
    static constexpr size_t kY = Planar ? 2 : 4, kSecond = Planar ? 1 : 2, kC = Planar ? 1 : 4;
};

template <bool Planar>
void exact_row(const RowArgs& a, const FromRgbRow& k, PixelLayout l) {
    using P = Put<Planar>;
    const uint8_t* s = a.src;
    for (uint32_t p = 0; p < a.pairs; ++p, s += 2 * l.bytes) {
        const Rgb c0 = read_pixel(s, l), c1 = read_pixel(s + l.bytes, l);
        a.y[P::kY * p] = luma(k, c0, true);
        // The planar layout truncates the odd pixel's Y.
        a.y[P::kY * p + P::kSecond] = luma(k, c1, !Planar);
        if (a.cb != nullptr) {
            a.cb[P::kC * p] = cb_of(k, c0);
            a.cr[P::kC * p] = cr_of(k, c0);
        }
    }
}

// ---- The 14-bit rule ----

// Table weights in 1/16384: positive weights and CbR rounded half up, the
// three negative weights of G and B in Cb and Cr as truncate(0.5 - |c| x 16384).
constexpr int32_t q14_of(int32_t millionths) {
    return static_cast<int32_t>(static_cast<double>(millionths) / 1e6 * 16384 + 0.5);
}
constexpr int32_t q14_negative(int32_t millionths) {
    const double c = static_cast<double>(millionths) / 1e6;
    return static_cast<int32_t>(0.5 - (c < 0 ? -c : c) * 16384);
}
constexpr Q14Set q14_from_row(const FromRgbRow& k) {
    return {static_cast<int32_t>(static_cast<double>(k.yOffset) + 0.5),
            {q14_of(k.rToY), q14_of(k.gToY), q14_of(k.bToY)},
            {q14_of(k.rToCb), q14_negative(k.gToCb), q14_of(k.bToCb)},
            {q14_of(k.rToCr), q14_negative(k.gToCr), q14_negative(k.bToCr)}};
}
// Matrices 1 to 9 from the table; every other value, 10 included, this set.
constexpr Q14Set kQ14Default = {16, {4211, 8258, 1606}, {-2424, -4767, 7193}, {7193, -6028, -1162}};
static_assert(q14_from_row(colour::FromRGBCoeffs[0]).y[1] == kQ14Default.y[1]);

CYCBCR_INLINE int32_t q14_channel(const int32_t (&w)[3], const Rgb& c) {
    return (w[0] * static_cast<int32_t>(c.r) + w[1] * static_cast<int32_t>(c.g) +
            w[2] * static_cast<int32_t>(c.b) + 8192) >>
           14;
}

// The pairs after the last whole group: the packed rule with the 14-bit set
// rescaled to millionths, quotients truncated, no rounding steps.
struct Rescaled {
    int64_t yOffset, y[3], cb[3], cr[3];
};
Rescaled rescaled(const Q14Set& k) {
    auto m = [](int32_t q) {
        return static_cast<int64_t>(static_cast<double>(q) * 1e6 * (1.0 / 16384));
    };
    return {k.yOffset,
            {m(k.y[0]), m(k.y[1]), m(k.y[2])},
            {m(k.cb[0]), m(k.cb[1]), m(k.cb[2])},
            {m(k.cr[0]), m(k.cr[1]), m(k.cr[2])}};
}
CYCBCR_INLINE int64_t rescaled_sum(const int64_t (&w)[3], const Rgb& c) {
    return (w[0] * c.r + w[1] * c.g + w[2] * c.b) / kMillion;
}
template <bool Planar>
void q14_remainder(const RowArgs& a, const Rescaled& k, PixelLayout l) {
    using P = Put<Planar>;
    const uint8_t* s = a.src;
    for (uint32_t p = 0; p < a.pairs; ++p, s += 2 * l.bytes) {
        const Rgb c0 = read_pixel(s, l), c1 = read_pixel(s + l.bytes, l);
        a.y[P::kY * p] = to_byte(rescaled_sum(k.y, c0) + k.yOffset);
        a.y[P::kY * p + P::kSecond] = to_byte(rescaled_sum(k.y, c1) + k.yOffset);
        if (a.cb != nullptr) {
            a.cb[P::kC * p] = to_byte(rescaled_sum(k.cb, c0) + 128);
            a.cr[P::kC * p] = to_byte(rescaled_sum(k.cr, c0) + 128);
        }
    }
}

template <bool Planar>
void q14_groups(const RowArgs& a, const Q14Set& k, PixelLayout l, uint32_t groups) {
    using P = Put<Planar>;
    const uint8_t* s = a.src;
    for (uint32_t p = 0; p < 4 * groups; ++p, s += 2 * l.bytes) {
        const Rgb c0 = read_pixel(s, l), c1 = read_pixel(s + l.bytes, l);
        a.y[P::kY * p] = to_byte(q14_channel(k.y, c0) + k.yOffset);
        a.y[P::kY * p + P::kSecond] = to_byte(q14_channel(k.y, c1) + k.yOffset);
        if (a.cb != nullptr) {
            const uint32_t b0 = to_byte(q14_channel(k.cb, c0) + 128);
            const uint32_t b1 = to_byte(q14_channel(k.cb, c1) + 128);
            const uint32_t r0 = to_byte(q14_channel(k.cr, c0) + 128);
            const uint32_t r1 = to_byte(q14_channel(k.cr, c1) + 128);
            a.cb[P::kC * p] = static_cast<uint8_t>((b0 + b1 + 1) >> 1);
            a.cr[P::kC * p] = static_cast<uint8_t>((r0 + r1 + 1) >> 1);
        }
    }
}

// ---- The frame ----

struct Job {
    uint8_t *y, *cb, *cr;
    const uint8_t* src;
    uint32_t width, height, dstPitch, srcPitch;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType rgbType;
    bool is422, planar;
    uint32_t bitsPerPixel, chromaPitch;
    bool dstUp = false;  // packed rows written from the last row up (cyuv in one pass)
};

uint64_t result_of(const Job& j) {
    const uint64_t n = uint64_t{j.width} * j.height;
    return j.is422 ? n * 2 : n + ((n / 2) & ~uint64_t{1});
}

// Source rows down, or up with the bottom-up flag; packed rows at the
// destination pitch; planar Y rows at the destination pitch and chroma rows at
// the chroma pitch, 4:2:0 chroma from rows 0, 3, 4, 7, 8, ... (one line of each
// field per pair of chroma lines). Chroma only with a Cb pointer.
template <class Row>
void walk_frame(const Job& j, Row&& row) {
    const Rows src = (j.rgbType & kBottomUp) != 0 ? rows_up(j.src, j.srcPitch, j.height)
                                                  : rows_down(j.src, j.srcPitch);

    const ChromaRows rule = j.planar && !j.is422 ? ChromaRows::FieldKept : ChromaRows::Own;
    const size_t cPitch = j.planar ? j.chromaPitch : j.dstPitch;
    for (uint32_t r = 0; r < j.height; ++r) {
        // Destination rows from the bottom when asked (packed layout only).
        const size_t d = j.dstUp ? size_t{j.height - 1 - r} : r;
        RowArgs a{src.at(r), j.y + d * j.dstPitch, nullptr, nullptr, j.width / 2};
        const ChromaRow c = chroma_row(rule, r);
        if (c.present && j.cb != nullptr) {
            const size_t at = j.planar ? c.row : d;
            a.cb = j.cb + at * cPitch;
            a.cr = j.cr + at * cPitch;
        }
        row(a);
    }
}

Format shape_of(const Job& j) {
    return j.planar ? Format::Unknown : packed_shape(j.y, j.cb, j.cr);
}

uint64_t exact_engine(const Job& j, bool avx2) {
    if (j.width < 2) return result_of(j);
    const FromRgbRow& k = colour::FromRGBCoeffs[j.matrix];
    const PixelLayout l = pixel_layout(j.bitsPerPixel, j.rgbType);
    const ExactRow plain = j.planar ? exact_row<true> : exact_row<false>;
    const bool vectorOk = avx2 && (j.planar || j.cb != nullptr);
    const ExactVectorRow vector = vectorOk ? avx2_exact_row(j.planar, l, shape_of(j), k) : nullptr;
    if (vector)
        walk_frame(j, [&](const RowArgs& a) { vector(a, k, l, plain); });
    else
        walk_frame(j, [&](const RowArgs& a) { plain(a, k, l); });
    return result_of(j);
}

RowArgs advanced(const RowArgs& a, uint32_t pairs, bool planar, PixelLayout l) {
    const size_t yStep = planar ? 2 : 4, cStep = planar ? 1 : 4;
    return {a.src + size_t{pairs} * 2 * l.bytes, a.y + yStep * pairs,
            a.cb ? a.cb + cStep * pairs : nullptr, a.cb ? a.cr + cStep * pairs : nullptr,
            a.pairs - pairs};
}

uint64_t q14_engine(const Job& j, bool avx2) {
    if (j.width < 2) return result_of(j);
    const Q14Set k = q14_set(j.matrix);
    const Rescaled rest = rescaled(k);
    const PixelLayout l = pixel_layout(32, j.rgbType);
    const uint32_t groups = j.width / 8;
    const Q14Groups vector =
        avx2 && j.cb != nullptr ? avx2_q14_groups(j.planar, shape_of(j)) : nullptr;
    walk_frame(j, [&](const RowArgs& a) {
        if (vector)
            vector(a, k, l, groups);
        else
            q14_groups_plain(a, k, l, groups, j.planar);
        const RowArgs b = advanced(a, 4 * groups, j.planar, l);
        if (j.planar)
            q14_remainder<true>(b, rest, l);
        else
            q14_remainder<false>(b, rest, l);
    });
    return result_of(j);
}

}  // namespace

Q14Set q14_set(QBYCBCRMatrix matrix) {
    if (matrix >= 1 && matrix <= 9) return q14_from_row(colour::FromRGBCoeffs[matrix]);
    return kQ14Default;
}

void q14_groups_plain(const RowArgs& a, const Q14Set& k, PixelLayout l, uint32_t groups,
                      bool planar) {
    if (planar)
        q14_groups<true>(a, k, l, groups);
    else
        q14_groups<false>(a, k, l, groups);
}

}  // namespace cycbcr::fromrgb

using namespace cycbcr;
using namespace cycbcr::fromrgb;

#define CYCBCR_FROM_RGB_ENGINE_ARGS                                                              \
    uint8_t *y, uint8_t *cb, uint8_t *cr, const uint8_t *src, unsigned int width,                \
        unsigned int height, unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix, \
        QBYCBCRRgbType rgbType, int is422, int planar, unsigned int bitsPerPixel,                \
        unsigned int chromaPitch
#define CYCBCR_FROM_RGB_ENGINE_CALL                                                    \
    y, cb, cr, src, width, height, dstPitch, srcPitch, matrix, rgbType, is422, planar, \
        bitsPerPixel, chromaPitch
#define CYCBCR_FROM_RGB_JOB                                                             \
    Job {                                                                               \
        y, cb, cr, src, width, height, dstPitch, srcPitch, matrix, rgbType, is422 != 0, \
            planar != 0, bitsPerPixel, chromaPitch                                      \
    }

extern "C" {

CYCBCR_API uint64_t FromRGB(CYCBCR_FROM_RGB_ENGINE_ARGS) {
    if (entry(OnEntry::ReadLevel).avx2) return FromRGB_avx2(CYCBCR_FROM_RGB_ENGINE_CALL);
    return FromRGBInt(CYCBCR_FROM_RGB_ENGINE_CALL);
}

CYCBCR_API uint64_t FromRGB_avx2(CYCBCR_FROM_RGB_ENGINE_ARGS) {
    return FromRGBInt_avx2(CYCBCR_FROM_RGB_ENGINE_CALL);
}

CYCBCR_API uint64_t FromRGBInt(CYCBCR_FROM_RGB_ENGINE_ARGS) {
    return exact_engine(CYCBCR_FROM_RGB_JOB, entry(OnEntry::ReadLevel).avx2);
}

CYCBCR_API uint64_t FromRGBInt_avx2(CYCBCR_FROM_RGB_ENGINE_ARGS) {
    if (is422 == 0 || bitsPerPixel != 32) return FromRGBInt(CYCBCR_FROM_RGB_ENGINE_CALL);
    // On a processor without AVX2 the same rule runs plain.
    return q14_engine(CYCBCR_FROM_RGB_JOB, (CPUFeatureFlags() & kCpuAvx2) != 0);
}

}  // extern "C"

namespace cycbcr::fromrgb {
namespace {

CYCBCR_INLINE constexpr uint32_t bits_of(Format f) {
    return f == Format::RGB24 ? 24 : f == Format::RGB48 ? 48 : f == Format::RGB64 ? 64 : 32;
}

// FromRGB on a destination of format To in one buffer.
uint64_t to_format(Format to, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                   uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix matrix,
                   QBYCBCRRgbType rgbType, uint32_t bits) {
    const bool planar = !is_packed422(to);
    const Planes p = planar ? planar_planes(to, dst, dstPitch, height)
                            : packed_samples(to == Format::CYUV ? Format::UYVY : to, dst);
    return FromRGB(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch, matrix, rgbType,
                   full_height_chroma(to) ? 1 : 0, planar ? 1 : 0, bits, dstPitch / 2);
}

// BGRA or RGBA to UYVY through the image library, for matrices 0 and 5.
uint64_t ipp_to_uyvy(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                     uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix matrix,
                     QBYCBCRRgbType rgbType) {
    using namespace cycbcr::ipp;
    if ((rgbType & ~kBottomUp) == 2) {
        // R and B swapped in the caller's buffer, and left so: callers know it.
        auto* s = const_cast<uint8_t*>(src);
        for (uint32_t r = 0; r < height; ++r) {
            uint8_t* row = s + size_t{r} * srcPitch;
            for (uint32_t x = 0; x < width; ++x) {
                const uint8_t t = row[4 * x];
                row[4 * x] = row[4 * x + 2];
                row[4 * x + 2] = t;
            }
        }
    }
    const IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
    const int ss = static_cast<int>(srcPitch), ds = static_cast<int>(dstPitch);
    if (matrix == QBYCBCR_MATRIX_709_PRECISE_STUDIO)
        ippiBGRToCbYCr422_709HDTV_8u_AC4C2R(src, ss, dst, ds, roi);
    else
        ippiBGRToCbYCr422_8u_AC4C2R(src, ss, dst, ds, roi);
    if ((rgbType & kBottomUp) != 0 && height >= 2) {
        // Turned over a row at a time through one temporary row.
        auto* tmp = static_cast<uint8_t*>(QBAlloc(dstPitch));
        if (tmp != nullptr) {
            for (uint32_t k = 0; k < height / 2; ++k) {
                uint8_t* top = dst + size_t{k} * dstPitch;
                uint8_t* bottom = dst + size_t{height - 1 - k} * dstPitch;
                CopyMemoryFast(tmp, top, dstPitch);
                CopyMemoryFast(top, bottom, dstPitch);
                CopyMemoryFast(bottom, tmp, dstPitch);
            }
            QBFree(tmp);
        }
    }
    return uint64_t{width} * dstPitch;
}

// The wrappers of the list. Each chooses a level when none is chosen; cyuv is
// the UYVY conversion turned over; BGRA to UYVY has routes of its own.
template <Format From, Format To, auto Form>
uint64_t from_rgb(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                  unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,
                  QBYCBCRRgbType rgbType) {
    if constexpr (From == Format::RGB32 && To == Format::UYVY && Form != nullptr) {
        // The AVX2 form is tried before a level is chosen.
        if (entry(OnEntry::ReadLevel).avx2)
            return Form(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
        entry(OnEntry::ChooseLevel);
        const uint32_t order = rgbType & ~kBottomUp;
        if ((matrix == 0 || matrix == 5) && (order == 0 || order == 2))
            return ipp_to_uyvy(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
    } else {
        entry(OnEntry::ChooseLevel);
    }
    if constexpr (To == Format::CYUV) {
        const auto uyvy = From == Format::RGB24 ? cycbcr_RGB24_to_uyvy : cycbcr_RGB32_to_uyvy;
        // Converting and then turning the frame over puts source row r in row
        // height - 1 - r. When the conversion writes every byte of every row
        // (an even width, rows of exactly 2 x width bytes), one pass does the
        // same: 24-bit pixels (the engine's only route) written from the last
        // row up, 32-bit ones (whichever route) read the other way.
        if (width % 2 == 0 && dstPitch == 2 * width) {
            if constexpr (From == Format::RGB24) {
                const Planes p = packed_samples(Format::UYVY, dst);
                Job j{p.y,      p.cb,   p.cr,    src,  width, height, dstPitch,
                      srcPitch, matrix, rgbType, true, false, 24,     dstPitch / 2};
                j.dstUp = true;
                return exact_engine(j, entry(OnEntry::ReadLevel).avx2);
            }
            return uyvy(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType ^ kBottomUp);
        }
        const uint64_t r = uyvy(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType);
        cycbcr_invert(dst, dstPitch, height);
        return r;
    }
    // 16 bits a channel: 48 or 64 bits a pixel by the pitch.
    const uint32_t bits =
        From == Format::RGB64 ? (width != 0 ? srcPitch / width * 8 : 0) : bits_of(From);
    return to_format(To, dst, src, width, height, dstPitch, srcPitch, matrix, rgbType, bits);
}

// The AVX2 form of BGRA to UYVY: FromRGB's route.
template <Format From, Format To, auto>
uint64_t from_rgb_form(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                       unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,
                       QBYCBCRRgbType rgbType) {
    entry(OnEntry::ChooseLevel);
    return to_format(To, dst, src, width, height, dstPitch, srcPitch, matrix, rgbType,
                     bits_of(From));
}

// Float channels to the 8-bit scale: 256 steps, 1.0 and above 255.
CYCBCR_INLINE float scaled(float v) {
    // A NaN is at no point of the scale: it reads as 0, as values below it do.
    if (!(v > 0.0f)) return 0.0f;
    if (v >= 1.0f) return 255.0f;
    return std::trunc(v * 256.0f);
}

struct FloatRow {
    float offset;
    float y[3], cb[3], cr[3];
};
FloatRow float_row(QBYCBCRMatrix matrix) {
    const FromRgbRow& k = colour::FromRGBCoeffs[matrix];
    auto f = [](int32_t m) { return static_cast<float>(static_cast<double>(m) / 1e6); };
    return {static_cast<float>(k.yOffset),
            {f(k.rToY), f(k.gToY), f(k.bToY)},
            {f(k.rToCb), f(k.gToCb), f(k.bToCb)},
            {f(k.rToCr), f(k.gToCr), f(k.bToCr)}};
}
CYCBCR_INLINE int32_t float_channel(const float (&w)[3], float r, float g, float b, float add) {
    const float v = w[0] * r + w[1] * g + w[2] * b + add + 0.5f;
    const float t = std::trunc(v);
    return t <= 0.0f ? 0 : t >= 255.0f ? 255 : static_cast<int32_t>(t);
}

}  // namespace
}  // namespace cycbcr::fromrgb

extern "C" {

#define CYCBCR_ENTRY cycbcr::fromrgb::from_rgb_form
CYCBCR_FROM_RGB_AVX2_FORMS(CYCBCR_DEFINE_FROM_RGB)
#undef CYCBCR_ENTRY
#define CYCBCR_ENTRY cycbcr::fromrgb::from_rgb
CYCBCR_FROM_RGB_CONVERTERS(CYCBCR_DEFINE_FROM_RGB)
#undef CYCBCR_ENTRY

CYCBCR_API uint64_t cycbcr_RGB64_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int bitsPerPixel) {
    entry(OnEntry::ChooseLevel);
    return to_format(Format::UYVY, dst, src, width, height, dstPitch, srcPitch, matrix, rgbType,
                     bitsPerPixel);
}

CYCBCR_API uint64_t cycbcr_RGB32_to_planar(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                           unsigned int width, unsigned int height,
                                           unsigned int yPitch, unsigned int chromaPitch, int is422,
                                           unsigned int srcPitch, QBYCBCRMatrix matrix,
                                           QBYCBCRRgbType rgbType) {
    return FromRGB(y, cb, cr, src, width, height, yPitch, srcPitch, matrix, rgbType, is422, 1, 32,
                   chromaPitch);
}

CYCBCR_API uint64_t cycbcr_RGB32F_to_uyvy(uint8_t* dst, const void* src, unsigned int width,
                                          unsigned int height, unsigned int dstPitch,
                                          unsigned int srcPitch, QBYCBCRMatrix matrix,
                                          QBYCBCRRgbType rgbType) {
    if (dst == nullptr || src == nullptr || width < 2 || height == 0) return 0;
    const FloatRow k = float_row(matrix);
    // Its own fallback for unknown orders: R, G, B from floats 0, 1, 2.
    uint32_t r = 0, g = 1, b = 2;
    switch (rgbType & ~kBottomUp) {
        case 0:
            r = 2, g = 1, b = 0;
            break;
        case 1:
            r = 3, g = 2, b = 1;
            break;
        case 3:
            r = 1, g = 2, b = 3;
            break;
        default:
            break;
    }
    const auto* f = static_cast<const float*>(src);
    const size_t floatsPerRow = srcPitch / 4;
    const bool up = (rgbType & kBottomUp) != 0;
    for (uint32_t row = 0; row < height; ++row) {
        const float* s = f + size_t{up ? height - 1 - row : row} * floatsPerRow;
        uint8_t* d = dst + size_t{row} * dstPitch;
        for (uint32_t p = 0; p < width / 2; ++p, s += 8, d += 4) {
            int32_t ys[2], cbs[2], crs[2];
            for (int i = 0; i < 2; ++i) {
                const float* px = s + 4 * i;
                const float R = scaled(px[r]), G = scaled(px[g]), B = scaled(px[b]);
                ys[i] = float_channel(k.y, R, G, B, k.offset);
                cbs[i] = float_channel(k.cb, R, G, B, 128.0f);
                crs[i] = float_channel(k.cr, R, G, B, 128.0f);
            }
            d[0] = static_cast<uint8_t>((cbs[0] + cbs[1] + 1) >> 1);
            d[1] = static_cast<uint8_t>(ys[0]);
            d[2] = static_cast<uint8_t>((crs[0] + crs[1] + 1) >> 1);
            d[3] = static_cast<uint8_t>(ys[1]);
        }
    }
    return uint64_t{height} * width * 2;
}

CYCBCR_API uint64_t cycbcr_RGB32_to_uyvy_Alpha(uint8_t* dst, const uint8_t* src, unsigned int width,
                                               unsigned int height, unsigned int,
                                               unsigned int srcPitch, uint8_t options,
                                               QBYCBCRRgbType rgbType) {
    const uint64_t result = uint64_t{height} * width;
    if (height == 0) return result;
    const Rows rows =
        (rgbType & kBottomUp) != 0 ? rows_up(src, srcPitch, height) : rows_down(src, srcPitch);
    const bool studio = (options & 1) != 0;
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* s = rows.at(r);
        uint8_t* d = dst + size_t{r} * width;  // tightly packed whatever the pitch
        for (uint32_t x = 0; x < width; ++x) {
            const uint32_t a = s[4 * size_t{x} + 3];
            d[x] = static_cast<uint8_t>(studio ? a * 219 / 255 + 16 : a);
        }
    }
    return result;
}

}  // extern "C"

namespace cycbcr::fromrgb {
namespace {

// The engine and its vector forms: whole pairs of every row, whole pixels read
// (a 3-word pixel of order 1 reaches into the next).
Extent engine_extent(Format to, const Call& c, PixelLayout l) {
    const uint64_t w = c.width, h = c.height, pairs = w / 2;
    if (pairs == 0 || h == 0) return {};
    Extent e;
    // Whole pixels (the vector rows load them whole), or further where a
    // channel lies past its pixel.
    const uint64_t reach = std::max({l.r, l.g, l.b}) + 1;
    e.src =
        rows_end(0, h, c.srcPitch, (2 * pairs - 1) * l.bytes + std::max<uint64_t>(reach, l.bytes));
    if (is_packed422(to)) {
        e.dst = rows_end(0, h, c.dstPitch, 4 * pairs);
    } else {
        const PlaneOffsets o = planar_offsets(to, c.dstPitch, c.height);
        // 4:2:0 chroma row r / 2 comes from rows 0, 3, 4, 7, ...: the last such
        // row below the height.
        uint64_t rows = h;
        if (!full_height_chroma(to)) {
            uint64_t last = h - 1;
            while (last % 4 == 1 || last % 4 == 2) --last;
            rows = last / 2 + 1;
        }
        const uint64_t chroma = rows_end(0, rows, c.dstPitch / 2, pairs);
        e.dst = widest(rows_end(0, h, c.dstPitch, 2 * pairs), widest(o.cb + chroma, o.cr + chroma));
    }
    return e;
}

// BGRA or RGBA to UYVY through the image library: whole pairs at the pitches,
// the channel swap over every pixel of the source, the flip over whole pitches.
Extent ipp_extent(const Call& c, QBYCBCRRgbType rgbType) {
    const uint64_t w = c.width, h = c.height;
    Extent e;
    if (w >= 2 && h >= 1 && c.srcPitch > 0 && c.dstPitch > 0) {
        e.src = rows_end(0, h, c.srcPitch, (w / 2) * 8);
        e.dst = rows_end(0, h, c.dstPitch, (w / 2) * 4);
    }
    if ((rgbType & ~kBottomUp) == 2) e.src = widest(e.src, rows_end(0, h, c.srcPitch, w * 4));
    if ((rgbType & kBottomUp) != 0) e.dst = widest(e.dst, inverted_end(0, h, c.dstPitch));
    return e;
}

}  // namespace

Extent from_rgb_extent(Format from, Format to, const Call& c, QBYCBCRMatrix matrix,
                       QBYCBCRRgbType rgbType, uint32_t bitsPerPixel, bool engineOnly) {
    const Format packed = to == Format::CYUV ? Format::UYVY : to;
    uint32_t bits = bitsPerPixel != 0 ? bitsPerPixel : bits_of(from);
    if (from == Format::RGB64 && bitsPerPixel == 0)
        bits = c.width != 0 ? c.srcPitch / c.width * 8 : 0;
    Extent e = engine_extent(packed, c, pixel_layout(bits, rgbType));
    const uint32_t order = rgbType & ~kBottomUp;
    if (!engineOnly && from == Format::RGB32 && packed == Format::UYVY &&
        (matrix == 0 || matrix == 5) && (order == 0 || order == 2))
        e = widest(e, ipp_extent(c, rgbType));
    if (to == Format::CYUV) e.dst = widest(e.dst, inverted_end(0, c.height, c.dstPitch));
    return e;
}

Extent other_extent(const char* name, const Call& c, QBYCBCRRgbType rgbType, bool* known) {
    const uint64_t w = c.width, h = c.height;
    *known = true;
    if (std::strcmp(name, "cycbcr_RGB32F_to_uyvy") == 0) {
        if (w < 2 || h == 0) return {};
        // Rows srcPitch / 4 floats apart; the channels by the order, or floats
        // 0 to 2 for unknown orders (float 3 read by orders 1 and 3).
        const uint32_t order = rgbType & ~kBottomUp;
        const uint64_t reach = order == 1 || order == 3 ? 16 : 12;
        const uint64_t pairs = w / 2;
        return {rows_end(0, h, c.srcPitch / 4 * 4, (2 * pairs - 1) * 16 + reach),
                rows_end(0, h, c.dstPitch, 4 * pairs)};
    }
    if (std::strcmp(name, "cycbcr_RGB32_to_uyvy_Alpha") == 0) {
        if (w == 0 || h == 0) return {};
        return {rows_end(0, h, c.srcPitch, 4 * w), w * h};
    }
    *known = false;
    return {};
}

}  // namespace cycbcr::fromrgb
