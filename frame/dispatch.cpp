// cycbcr_transcode: FourCC pair to converter.
#include "frame/converters.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "frame/formats.h"

namespace cycbcr {
namespace {

// The converter of each pair of formats, from the families' lists.
constexpr FormatPairs<cycbcr_converter> make_pairs() {
    FormatPairs<cycbcr_converter> t;
#define CYCBCR_PAIR_ROW(name, form, from, to, ...) t(Format::from, Format::to) = name;
    CYCBCR_PAIR_CONVERTERS(CYCBCR_PAIR_ROW)
#undef CYCBCR_PAIR_ROW
    return t;
}
constexpr FormatPairs<cycbcr_converter> kPairs = make_pairs();

// The same for pairs with RGB on one side, whose converters take matrix and
// rgbType; only the 32-bit RGB converters have a code (0).
constexpr FormatPairs<cycbcr_rgb_converter> make_rgb_pairs() {
    FormatPairs<cycbcr_rgb_converter> t;
#define CYCBCR_PAIR_ROW(name, form, from, to, ...) t(Format::from, Format::to) = name;
    CYCBCR_TO_RGB_CONVERTERS(CYCBCR_PAIR_ROW)
    CYCBCR_V210_TO_RGB_CONVERTERS(CYCBCR_PAIR_ROW)
#undef CYCBCR_PAIR_ROW
    return t;
}
constexpr FormatPairs<cycbcr_rgb_converter> kRgbPairs = make_rgb_pairs();

// RGB sources: the 32-bit converters, which return 64 bits.
constexpr FormatPairs<cycbcr_from_rgb_converter> make_from_rgb_pairs() {
    FormatPairs<cycbcr_from_rgb_converter> t;
#define CYCBCR_PAIR_ROW(name, form, from, to, ...) t(Format::from, Format::to) = name;
    CYCBCR_FROM_RGB_PAIRS(CYCBCR_PAIR_ROW)
    CYCBCR_TO_V210_PAIRS(CYCBCR_PAIR_ROW)
#undef CYCBCR_PAIR_ROW
    return t;
}
constexpr FormatPairs<cycbcr_from_rgb_converter> kFromRgbPairs = make_from_rgb_pairs();

}  // namespace

cycbcr_converter pair_converter(Format from, Format to) {
    return kPairs(from, to);
}

}  // namespace cycbcr

using cycbcr::Format;

extern "C" {

CYCBCR_API unsigned int cycbcr_transcode(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int dstFourCC,
                                         unsigned int srcFourCC) {
    cycbcr::entry(cycbcr::OnEntry::ChooseLevel);
    srcPitch = cycbcr_fix_pitch(srcFourCC, width, srcPitch);
    dstPitch = cycbcr_fix_pitch(dstFourCC, width, dstPitch);
    const Format from = cycbcr::canonical_format(srcFourCC);
    const Format to = cycbcr::destination_format(dstFourCC);
    if (from == Format::Unknown || to == Format::Unknown) return 0;
    // matrix and rgbType reach only the converters to and from RGB; RGB to RGB
    // has none: 0. The count of an RGB source's converter is returned in 32
    // bits.
    if (from == Format::RGB32 && to != Format::RGB32) {
        const cycbcr_from_rgb_converter g = cycbcr::kFromRgbPairs(from, to);
        return g ? static_cast<unsigned int>(
                       g(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType))
                 : 0;
    }
    if (from == Format::RGB32 || to == Format::RGB32) {
        const cycbcr_rgb_converter g = cycbcr::kRgbPairs(from, to);
        return g ? g(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType) : 0;
    }
    const cycbcr_converter f = cycbcr::pair_converter(from, to);
    return f ? f(dst, src, width, height, dstPitch, srcPitch) : 0;
}

CYCBCR_API cycbcr_converter cycbcr_pair_converter(unsigned int dstFourCC, unsigned int srcFourCC) {
    return cycbcr::pair_converter(cycbcr::canonical_format(srcFourCC),
                                  cycbcr::destination_format(dstFourCC));
}

CYCBCR_API cycbcr_rgb_converter cycbcr_rgb_pair_converter(unsigned int dstFourCC,
                                                          unsigned int srcFourCC) {
    return cycbcr::kRgbPairs(cycbcr::canonical_format(srcFourCC),
                             cycbcr::destination_format(dstFourCC));
}

CYCBCR_API cycbcr_from_rgb_converter cycbcr_from_rgb_pair_converter(unsigned int dstFourCC) {
    return cycbcr::kFromRgbPairs(Format::RGB32, cycbcr::destination_format(dstFourCC));
}

CYCBCR_API unsigned int cycbcr_can_transcode(unsigned int fourccA, unsigned int fourccB) {
    // Answers for the accepted codes, not for what is built yet, and never for
    // "422P"; RGB with RGB counts as supported here although cycbcr_transcode
    // refuses it. Both kept as callers know them.
    auto accepted = [](uint32_t c) {
        return c != CYCBCR_FOURCC_422P && cycbcr::canonical_format(c) != Format::Unknown;
    };
    return accepted(fourccA) && accepted(fourccB) ? 1u : 0u;
}

}  // extern "C"
