// High-bit-depth YCbCr to packed RGB: one plain row kernel per rule, output form
// and source shape, one frame walk, and the exported engines.
#include "torgb/hbd_to_rgb.h"

#include <cmath>
#include <cstring>
#include <string_view>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/row_walk.h"
#include "platform/memory.h"

namespace cycbcr::colour {

ToRgbRow<int32_t> hbd_row(const HbdRule& r, QBYCBCRMatrix matrix) {
    if (r.family == HbdFamily::A) return kFamilyA[matrix];
    if (r.family == HbdFamily::B) return kFamilyB[matrix];
    ToRgbRow<int32_t> k = kFamilyC[matrix];
    if (r.mid == kRule12C.mid && k.yOffset != 0) k.yOffset = kFamilyC12YOffset;
    return k;
}

float hbd_reciprocal(int32_t n) {
    const double exact = 1.0 / n;
    const float c = static_cast<float>(exact);
    return static_cast<double>(c) < exact ? std::nextafter(c, 1.0f) : c;
}

namespace {

CYCBCR_INLINE uint32_t sample(const uint8_t* p, size_t i) {
    uint16_t v;
    std::memcpy(&v, p + 2 * i, 2);
    return v;
}

// The rule's arithmetic for one pixel pair: chroma products once, then each luma.
template <HbdRule R>
struct Pixels {
    const ToRgbRow<int32_t>& k;
    struct Chroma {
        int64_t r, g, b;
    };
    CYCBCR_INLINE static int64_t in(uint32_t v) {
        return static_cast<int64_t>((v & R.mask) >> R.shift);
    }
    CYCBCR_INLINE Chroma chroma(uint32_t cb, uint32_t cr) const {
        const int64_t u = in(cb)-R.mid, v = in(cr)-R.mid;
        return {k.crToR * v, -(k.crToG * v) - k.cbToG * u, k.cbToB * u};
    }
    CYCBCR_INLINE static uint32_t channel(int64_t sum) {
        const int64_t q = sum / R.div;
        return q < 0 ? 0u : q > R.max ? static_cast<uint32_t>(R.max) : static_cast<uint32_t>(q);
    }
    CYCBCR_INLINE Rgb pixel(uint32_t y, const Chroma& c) const {
        const int64_t l = (in(y)-k.yOffset) * k.yGain;
        return {channel(l + c.r), channel(l + c.g), channel(l + c.b)};
    }
};

// The packed 10-bit word: R's top bits at 16 and up with its two low bits at
// 0, B's two low bits at 28 and the rest from bit 0, G's low bits at 2 and the
// rest from bit 8, overlapping as they fall (kept as callers read it).
CYCBCR_INLINE uint32_t word10(const Rgb& c) {
    return ((c.r & ~3u) << 14) | (c.r & 3u) | ((c.b << 28) & 0x30000000u) | (c.b >> 2) |
           ((c.g * 4) & 12u) | ((c.g >> 2) << 8);
}

template <HbdOut Out, RgbOrder O>
CYCBCR_INLINE void put(uint8_t* d, const Rgb& c) {
    if constexpr (Out == HbdOut::Word10) {
        const uint32_t w = word10(c);
        std::memcpy(d, &w, 4);
    } else if constexpr (Out == HbdOut::Rgb48 || Out == HbdOut::Rgb64) {
        put_pixel<Out == HbdOut::Rgb48 ? RgbDepth::Rgb48 : RgbDepth::Rgb64, O>(d, c, 65535);
    } else {
        constexpr RgbDepth D = Out == HbdOut::Rgb555   ? RgbDepth::Rgb555
                               : Out == HbdOut::Rgb565 ? RgbDepth::Rgb565
                               : Out == HbdOut::Rgb24  ? RgbDepth::Rgb24
                                                       : RgbDepth::Rgb32;
        put_pixel<D, O>(d, c, 255);
    }
}

template <HbdRule R, HbdOut Out, RgbOrder O, bool Packed>
void plain_row(const HbdRowArgs& a, const ToRgbRow<int32_t>& k) {
    constexpr size_t bytes = out_bytes(Out);
    const Pixels<R> px{k};
    uint8_t* d = a.dst;
    for (uint32_t p = 0; p < a.pairs; ++p, d += 2 * bytes) {
        const size_t luma = Packed ? 4 * size_t{p} : 2 * size_t{p};
        const size_t chroma = Packed ? 4 * size_t{p} : p;
        const auto c = px.chroma(sample(a.cb, chroma), sample(a.cr, chroma));
        put<Out, O>(d, px.pixel(sample(a.y, luma), c));
        put<Out, O>(d + bytes, px.pixel(sample(a.y, luma + (Packed ? 2 : 1)), c));
    }
}

template <HbdRule R, HbdOut Out>
HbdPlainRow plain_by_order(RgbOrder o, bool packed) {
    return with_order(o, [&]<RgbOrder O>() -> HbdPlainRow {
        return packed ? plain_row<R, Out, O, true> : plain_row<R, Out, O, false>;
    });
}
template <HbdRule R>
HbdPlainRow plain_by_out(HbdOut out, RgbOrder o, bool packed) {
    switch (out) {
        case HbdOut::Rgb555:
            return plain_by_order<R, HbdOut::Rgb555>(o, packed);
        case HbdOut::Rgb565:
            return plain_by_order<R, HbdOut::Rgb565>(o, packed);
        case HbdOut::Rgb24:
            return plain_by_order<R, HbdOut::Rgb24>(o, packed);
        case HbdOut::Rgb32:
            return plain_by_order<R, HbdOut::Rgb32>(o, packed);
        case HbdOut::Rgb48:
            return plain_by_order<R, HbdOut::Rgb48>(o, packed);
        case HbdOut::Rgb64:
            return plain_by_order<R, HbdOut::Rgb64>(o, packed);
        case HbdOut::Word10:
            break;
    }
    // The word's fields are fixed: no channel order.
    return plain_by_order<R, HbdOut::Word10>(RgbOrder::BGRA, packed);
}

// The engines' arguments, as they take them.
struct HbdArgs {
    uint8_t* dst;
    const uint8_t* y;
    const uint8_t* cb;
    const uint8_t* cr;
    uint32_t width, height, dstPitch, srcPitch;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType rgbType;
    int32_t is422;
    uint32_t planar;
    uint32_t chromaPitch;
};

// Output rows down at dstPitch (up with the bottom-up flag). Source rows are
// read one after another, as the 8-bit engine reads them: planar luma rows of
// exactly width samples, chroma row n at (n * width) / 2 samples for 4:2:2 and
// ((n / 2) * width) / 2 for 4:2:0; packed rows of four samples a pair, each
// where the previous row's last pair ended. The pitches only place planes.
template <HbdRule R>
void run(const HbdArgs& e, HbdOut out, bool avx2) {
    const RgbLayout layout = rgb_layout(e.rgbType);
    const bool packed = e.planar == 0;
    const HbdPlainRow plain = plain_by_out<R>(out, layout.order, packed);
    const bool stream =
        avx2 && !packed && store_for(e.dst, e.dstPitch, e.height) == Store::Stream32;
    const HbdVectorRow vector =
        avx2 && !packed ? hbd_avx2_row(R, out, layout.order, stream) : nullptr;
    const ToRgbRow<int32_t> k = hbd_row(R, e.matrix);
    const Rows rows =
        layout.bottom_up ? rows_up(e.dst, e.dstPitch, e.height) : rows_down(e.dst, e.dstPitch);
    const uint32_t pairs = e.width / 2 + e.width % 2;
    walk(all_rows(e.height), [&](uint32_t n) {
        const size_t luma = packed ? size_t{n} * pairs * 8 : size_t{n} * e.width * 2;
        const size_t chroma =
            packed ? luma
                   : (e.is422 != 0 ? size_t{n} * e.width / 2 : size_t{n / 2} * e.width / 2) * 2;
        const HbdRowArgs a{rows.at(n), e.y + luma, e.cb + chroma, e.cr + chroma, pairs};
        if (vector)
            vector(a, k, plain);
        else
            plain(a, k);
    });
    if (stream) finish_stores(Store::Stream32);
}

// 8-bit members: depths 15, 16, 24 and 32; none other writes.
CYCBCR_INLINE bool out8(uint32_t depth, HbdOut* o) {
    switch (depth) {
        case 15:
            *o = HbdOut::Rgb555;
            return true;
        case 16:
            *o = HbdOut::Rgb565;
            return true;
        case 24:
            *o = HbdOut::Rgb24;
            return true;
        case 32:
            *o = HbdOut::Rgb32;
            return true;
    }
    return false;
}
CYCBCR_INLINE uint32_t bytes8(uint32_t depth) {
    return depth == 15 || depth == 16 ? 2 : depth == 24 ? 3 : 4;
}
// 16-bit-a-channel members: 24 or 48 three words, 32 or 64 four.
CYCBCR_INLINE bool out16(uint32_t depth, HbdOut* o) {
    if (depth == 24 || depth == 48) {
        *o = HbdOut::Rgb48;
        return true;
    }
    if (depth == 32 || depth == 64) {
        *o = HbdOut::Rgb64;
        return true;
    }
    return false;
}
CYCBCR_INLINE uint32_t bytes16(uint32_t depth) {
    return depth == 24 || depth == 48 ? 6 : 8;
}

template <HbdRule R>
uint32_t engine8(const HbdArgs& e, uint32_t depth) {
    const uint32_t result = e.width * e.height * bytes8(depth);
    HbdOut o;
    if (e.height != 0 && out8(depth, &o)) run<R>(e, o, entry(OnEntry::ReadLevel).avx2);
    return result;
}
template <HbdRule R>
uint32_t engine16(const HbdArgs& e, uint32_t depth) {
    const uint32_t result = e.width * e.height * bytes16(depth);
    HbdOut o;
    if (e.height != 0 && out16(depth, &o)) run<R>(e, o, entry(OnEntry::ReadLevel).avx2);
    return result;
}

// Which rule and output bytes each exported member has.
enum class Member : uint8_t { Int, Int16, Int10, Twelve, Sixteen8, Planar10 };
struct MemberName {
    const char* name;
    Member m;
};
constexpr MemberName kMembers[] = {
    {"cycbcr_10ToRGBInt", Member::Int},      {"cycbcr_10ToRGBInt16", Member::Int16},
    {"cycbcr_10ToRGBInt10", Member::Int10},  {"cycbcr_12ToRGB", Member::Twelve},
    {"cycbcr_12ToRGBInt16", Member::Twelve}, {"cycbcr_16ToRGB8", Member::Sixteen8},
    {"planar10ToRGBInt", Member::Planar10},
};

}  // namespace

bool hbd_to_rgb_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    const std::string_view n(name);
    const MemberName* found = nullptr;
    for (const MemberName& m : kMembers)
        if (n == m.name) found = &m;
    if (found == nullptr) return false;
    out = {};
    const uint64_t w = c.width, h = c.height, pairs = w / 2 + w % 2;
    if (w == 0 || h == 0) return true;
    const uint32_t dstPitch = c.arg(0), srcPitch = c.arg(1);
    if (found->m == Member::Planar10) {
        const uint32_t depth = c.arg(4);
        HbdOut o;
        if (!out8(depth, &o)) return true;
        out[0] = rows_end(0, h, dstPitch, 2 * pairs * bytes8(depth));
        // Y, then Cb at P and Cr at P + P / 2 (P = srcPitch * height in 32 bits),
        // each plane's rows read one after another as the engine reads them.
        const uint32_t p = srcPitch * c.height;
        const uint64_t crAt = uint64_t{p} + (p >> 1);
        const uint64_t chroma = 2 * (((h - 1) * w) / 2 + pairs);
        out[1] = widest(rows_end(0, h, 2 * w, 4 * pairs), widest(p + chroma, crAt + chroma));
        return true;
    }
    const uint32_t is422 = c.arg(4), planar = c.arg(5), depth = c.arg(6);
    uint64_t bytes;
    HbdOut o;
    switch (found->m) {
        case Member::Int:
        case Member::Sixteen8:
            if (!out8(depth, &o)) return true;
            bytes = bytes8(depth);
            break;
        case Member::Int10:
            bytes = 4;
            break;
        default:
            if (!out16(depth, &o)) return true;
            bytes = bytes16(depth);
            break;
    }
    out[0] = rows_end(0, h, dstPitch, 2 * pairs * bytes);
    if (planar == 0) {
        // Rows of 4 * pairs samples one after another; Y at 4p and 4p + 2, Cb and
        // Cr at 4p: up to sample 4 * pairs - 2 or - 4 of the last row.
        out[1] = rows_end(0, h, 8 * pairs, 2 * (4 * pairs - 1));
        out[2] = out[3] = rows_end(0, h, 8 * pairs, 2 * (4 * pairs - 3));
    } else {
        out[1] = rows_end(0, h, 2 * w, 4 * pairs);
        const uint64_t last = is422 != 0 ? ((h - 1) * w) / 2 : (((h - 1) / 2) * w) / 2;
        out[2] = out[3] = 2 * (last + pairs);
    }
    return true;
}

}  // namespace cycbcr::colour

using namespace cycbcr;
using namespace cycbcr::colour;

#define CYCBCR_HBD_ENGINE_ARGS                                                                   \
    uint8_t *dst, const uint8_t *y, const uint8_t *cb, const uint8_t *cr, unsigned int width,    \
        unsigned int height, unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix, \
        QBYCBCRRgbType rgbType, int32_t is422, unsigned int planar, unsigned int depth,          \
        unsigned int chromaPitch
#define CYCBCR_HBD_STRUCT                                                                  \
    HbdArgs {                                                                              \
        dst, y, cb, cr, width, height, dstPitch, srcPitch, matrix, rgbType, is422, planar, \
            chromaPitch                                                                    \
    }

extern "C" {

CYCBCR_API unsigned int cycbcr_10ToRGBInt(CYCBCR_HBD_ENGINE_ARGS) {
    return engine8<kRule10A>(CYCBCR_HBD_STRUCT, depth);
}

CYCBCR_API unsigned int cycbcr_16ToRGB8(CYCBCR_HBD_ENGINE_ARGS) {
    return engine8<kRule16A>(CYCBCR_HBD_STRUCT, depth);
}

CYCBCR_API unsigned int cycbcr_10ToRGBInt16(CYCBCR_HBD_ENGINE_ARGS) {
    return engine16<kRule10C>(CYCBCR_HBD_STRUCT, depth);
}

CYCBCR_API unsigned int cycbcr_12ToRGB(CYCBCR_HBD_ENGINE_ARGS) {
    return engine16<kRule12C>(CYCBCR_HBD_STRUCT, depth);
}

// The same rule as cycbcr_12ToRGB: / 640 is what takes 12-bit sums on the
// x 10240 scale to 16 bits a channel.
CYCBCR_API unsigned int cycbcr_12ToRGBInt16(CYCBCR_HBD_ENGINE_ARGS) {
    return engine16<kRule12C>(CYCBCR_HBD_STRUCT, depth);
}

CYCBCR_API unsigned int cycbcr_10ToRGBInt10(CYCBCR_HBD_ENGINE_ARGS) {
    (void)depth;  // one 32-bit word a pixel whatever the depth
    const HbdArgs e = CYCBCR_HBD_STRUCT;
    const uint32_t result = width * height * 4;
    if (height != 0) run<kRule10C>(e, HbdOut::Word10, entry(OnEntry::ReadLevel).avx2);
    return result;
}

CYCBCR_API unsigned int planar10ToRGBInt(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int depth) {
    // 4:2:2 planes back to back, as planar frames are read for RGB: Cb after
    // srcPitch * height bytes, Cr half that further, chroma rows half a pitch.
    const uint32_t p = srcPitch * height;
    const HbdArgs e{
        dst,     src, src + p, src + p + (p >> 1), width, height, dstPitch, srcPitch, matrix,
        rgbType, 1,   1,       srcPitch / 2};
    return engine8<kRule10B>(e, depth);
}

}  // extern "C"
