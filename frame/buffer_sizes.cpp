// cycbcr_buffer_sizes: the bytes the converter of a pair reads and writes, from
// the family that owns the pair.
#include "frame/buffer_sizes.h"

#include "frame/converters.h"
#include "frame/export.h"
#include "fromrgb/from_rgb.h"
#include "fromrgb/to_planar16.h"
#include "fromrgb/to_v210.h"
#include "scale/scale.h"
#include "torgb/hbd_to_rgb.h"
#include "torgb/to_rgb.h"
#include "torgb/to_rgb_planar.h"
#include "torgb/v210_to_rgb.h"
#include "ycbcr10/semi_planar.h"
#include "ycbcr10/planar16.h"

#include <cstring>
#include <initializer_list>

namespace cycbcr {
namespace {

// The family that answers for each pair, from the families' lists.
constexpr FormatPairs<ExtentOf> make_extents() {
    FormatPairs<ExtentOf> t;
#define CYCBCR_BYTE_ORDER_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = byte_order_extent;
#define CYCBCR_PACKED_PLANAR_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = packed_planar_extent;
#define CYCBCR_PLANAR_COPY_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = planar_copy_extent;
#define CYCBCR_V210_ROW(name, form, from, to, ...) t(Format::from, Format::to) = v210_extent;
#define CYCBCR_TO_RGB_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = to_rgb_pair_extent;
#define CYCBCR_FROM_RGB_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = from_rgb_pair_extent;
    CYCBCR_BYTE_ORDER_PAIRS(CYCBCR_BYTE_ORDER_ROW)
    CYCBCR_PACKED_PLANAR_PAIRS(CYCBCR_PACKED_PLANAR_ROW)
    CYCBCR_PLANAR_COPY_PAIRS(CYCBCR_PLANAR_COPY_ROW)
    CYCBCR_V210_PAIRS(CYCBCR_V210_ROW)
    CYCBCR_TO_RGB_CONVERTERS(CYCBCR_TO_RGB_ROW)
#define CYCBCR_V210_TO_RGB_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = v210_to_rgb_pair_extent;
    CYCBCR_V210_TO_RGB_CONVERTERS(CYCBCR_V210_TO_RGB_ROW)
#undef CYCBCR_V210_TO_RGB_ROW
    CYCBCR_FROM_RGB_PAIRS(CYCBCR_FROM_RGB_ROW)
#define CYCBCR_TO_V210_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = to_v210_pair_extent;
    CYCBCR_TO_V210_PAIRS(CYCBCR_TO_V210_ROW)
#undef CYCBCR_TO_V210_ROW
#define CYCBCR_SEMI_PLANAR_ROW(name, form, from, to, ...) \
    t(Format::from, Format::to) = semi_planar_extent;
    CYCBCR_SEMI_PLANAR_CONVERTERS(CYCBCR_SEMI_PLANAR_ROW)
#undef CYCBCR_SEMI_PLANAR_ROW
#undef CYCBCR_FROM_RGB_ROW
#undef CYCBCR_BYTE_ORDER_ROW
#undef CYCBCR_PACKED_PLANAR_ROW
#undef CYCBCR_PLANAR_COPY_ROW
#undef CYCBCR_V210_ROW
#undef CYCBCR_TO_RGB_ROW
    return t;
}
constexpr FormatPairs<ExtentOf> kExtents = make_extents();

// The families that answer for converters with separate plane pointers.
constexpr PointerExtentOf kPointerFamilies[] = {
    // clang-format off
    v210_planes_pointer_extent,
    semi_planar_pointer_extent,
    planar16_v210_pointer_extent,
    planar16_pointer_extent,
    fromrgb::to_planar16_pointer_extent,
    colour::hbd_to_rgb_pointer_extent,
    colour::planes::to_rgb_planar_pointer_extent,
    scale::scale_pointer_extent,
    // clang-format on
};

}  // namespace

Extent to_v210_pair_extent(Format from, Format, const Call& c) {
    Extent e;
    for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 0x8000u, 0x8002u})
        e = widest(e, fromrgb::to_v210_extent(from, c, t));
    return e;
}

Extent to_rgb_pair_extent(Format from, Format to, const Call& c) {
    Extent e;
    for (QBYCBCRMatrix m = 0; m <= 7; ++m)
        for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 0x8000u})
            e = widest(e, colour::to_rgb_extent(from, to, c, m, t));
    return e;
}

Extent v210_to_rgb_pair_extent(Format, Format to, const Call& c) {
    return colour::v210_to_rgb_extent(to, c);
}

Extent from_rgb_pair_extent(Format from, Format to, const Call& c) {
    Extent e;
    for (QBYCBCRMatrix m = 0; m <= 10; ++m)
        for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 0x8000u, 0x8002u})
            e = widest(e, fromrgb::from_rgb_extent(from, to, c, m, t));
    return e;
}

}  // namespace cycbcr

extern "C" CYCBCR_API unsigned int cycbcr_buffer_sizes(unsigned int dstFourCC,
                                                       unsigned int srcFourCC, unsigned int width,
                                                       unsigned int height, unsigned int dstPitch,
                                                       unsigned int srcPitch, uint64_t* dstBytes,
                                                       uint64_t* srcBytes) {
    using cycbcr::Format;
    const Format from = cycbcr::canonical_format(srcFourCC);
    const Format to = cycbcr::destination_format(dstFourCC);
    const cycbcr::ExtentOf fn = cycbcr::kExtents(from, to);
    const cycbcr::Extent e =
        fn ? fn(from, to, {width, height, dstPitch, srcPitch}) : cycbcr::Extent{};
    if (dstBytes) *dstBytes = e.dst;
    if (srcBytes) *srcBytes = e.src;
    return fn ? 1u : 0u;
}

extern "C" CYCBCR_API unsigned int cycbcr_converter_buffer_sizes(
    const char* name, unsigned int width, unsigned int height, unsigned int dstPitch,
    unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, uint64_t* dstBytes,
    uint64_t* srcBytes) {
    using namespace cycbcr;
    const Call c{width, height, dstPitch, srcPitch};
    Extent e;
    bool known = false;
    if (name != nullptr) {
        for (const ConverterRow& r : kConverterRows)
            if (!known && std::strcmp(r.name, name) == 0) {
                e = kExtents(r.from, r.to)(r.from, r.to, c);
                known = true;
            }
        for (const RgbConverterRow& r : kRgbConverterRows)
            if (!known && std::strcmp(r.name, name) == 0) {
                e = r.from == Format::V210
                        ? colour::v210_to_rgb_extent(r.to, c)
                        : colour::to_rgb_extent(r.from, r.to, c, matrix, rgbType);
                known = true;
            }
        for (const FromRgbConverterRow& r : kFromRgbConverterRows)
            if (!known && std::strcmp(r.name, name) == 0) {
                e = r.to == Format::V210
                        ? fromrgb::to_v210_extent(r.from, c, rgbType)
                        : fromrgb::from_rgb_extent(r.from, r.to, c, matrix, rgbType, 0, !r.pair);
                known = true;
            }
        if (!known) {
            const Extent other = fromrgb::other_extent(name, c, rgbType, &known);
            if (known) e = other;
        }
        if (!known) {
            const Extent other = fromrgb::to_v210_other_extent(name, c, &known);
            if (known) e = other;
        }
        // The converters to RGB with an alpha plane: their frames as the 32-bit
        // converter's (the plane is a third buffer, sized in the header).
        if (!known && std::strcmp(name, "cycbcr_012v_to_rgb32_Alpha") == 0) {
            e = colour::v210_to_rgb_extent(Format::RGB32, c);
            known = true;
        }
        if (!known && (std::strcmp(name, "cycbcr_uyvy_to_rgb32_Alpha") == 0 ||
                       std::strcmp(name, "cycbcr_uyvy_to_rgb32_alpha_avx2") == 0)) {
            e = colour::to_rgb_extent(Format::UYVY, Format::RGB32, c, matrix, rgbType);
            known = true;
        }
        // The plain copy under its own name: the v210 copy is this function with
        // the same arguments.
        if (!known && std::strcmp(name, "cycbcr_interleaved_copy") == 0) {
            e = kExtents(Format::V210, Format::V210)(Format::V210, Format::V210, c);
            known = true;
        }
        if (!known && std::strcmp(name, "cycbcr_RGB64_to_uyvy") == 0) {
            // 48 or 64 bits a pixel by its ninth argument: the wider of both.
            e = widest(
                fromrgb::from_rgb_extent(Format::RGB64, Format::UYVY, c, matrix, rgbType, 48),
                fromrgb::from_rgb_extent(Format::RGB64, Format::UYVY, c, matrix, rgbType, 64));
            known = true;
        }
    }
    if (dstBytes) *dstBytes = e.dst;
    if (srcBytes) *srcBytes = e.src;
    return known ? 1u : 0u;
}

extern "C" CYCBCR_API unsigned int cycbcr_converter_all_pointer_sizes(
    const char* name, unsigned int width, unsigned int height, const unsigned int* pitches,
    unsigned int pitchCount, uint64_t* bytes, unsigned int bytesCount) {
    using namespace cycbcr;
    PlaneCall c{width, height, {0, 0, 0}};
    for (unsigned int i = 0; pitches != nullptr && i < pitchCount && i < 8; ++i)
        (i < 3 ? c.pitch[i] : c.more[i - 3]) = pitches[i];
    PointerExtents e{};
    bool known = false;
    if (name != nullptr)
        for (PointerExtentOf family : kPointerFamilies)
            if (!known) {
                e = {};
                known = family(name, c, e);
            }
    if (!known) e = {};
    if (bytes != nullptr)
        for (size_t i = 0; i < e.size() && i < bytesCount; ++i) bytes[i] = e[i];
    return known ? 1u : 0u;
}

extern "C" CYCBCR_API unsigned int cycbcr_converter_pointer_sizes(
    const char* name, unsigned int width, unsigned int height, const unsigned int* pitches,
    unsigned int pitchCount, uint64_t* bytes) {
    return cycbcr_converter_all_pointer_sizes(name, width, height, pitches, pitchCount, bytes, 4);
}
