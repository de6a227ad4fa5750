// cycbcr_transcode: FourCC pair to converter.
#include "frame/export.h"
#include "frame/formats.h"
#include "frame/proc_level.h"

namespace {

using cycbcr::Format;
using Converter = unsigned int (*)(CYCBCR_CONVERTER_ARGS);
using RgbConverter = unsigned int (*)(CYCBCR_CONVERTER_ARGS, QBYCBCRMatrix, QBYCBCRRgbType);

// Rows and columns in this order: v210, I420, YV12, P422, YUY2, UYVY, YVYU, cyuv.
// An empty cell is a pair whose converter the library does not have yet; the
// dispatcher answers 0 for it as for an unknown pair.
constexpr int kYcbcrFormats = 8;
int index_of(Format f) {
    switch (f) {
        case Format::V210:
            return 0;
        case Format::I420:
            return 1;
        case Format::YV12:
            return 2;
        case Format::P422:
            return 3;
        case Format::YUY2:
            return 4;
        case Format::UYVY:
            return 5;
        case Format::YVYU:
            return 6;
        case Format::CYUV:
            return 7;
        default:
            return -1;
    }
}

// clang-format off
const Converter kPairs[kYcbcrFormats][kYcbcrFormats] = {
    /* v210 */ {cycbcr_012v_to_012v, cycbcr_012v_to_i420, cycbcr_012v_to_yv12, cycbcr_012v_to_p422,
                cycbcr_012v_to_yuy2, cycbcr_012v_to_uyvy, cycbcr_012v_to_yvyu, cycbcr_012v_to_cyuv},
    /* I420 */ {cycbcr_i420_to_012v, cycbcr_i420_to_i420, cycbcr_i420_to_yv12, cycbcr_i420_to_p422,
                cycbcr_i420_to_yuy2, cycbcr_i420_to_uyvy, cycbcr_i420_to_yvyu, cycbcr_i420_to_cyuv},
    /* YV12 */ {cycbcr_yv12_to_012v, cycbcr_yv12_to_i420, cycbcr_yv12_to_yv12, cycbcr_yv12_to_p422,
                cycbcr_yv12_to_yuy2, cycbcr_yv12_to_uyvy, cycbcr_yv12_to_yvyu, cycbcr_yv12_to_cyuv},
    /* P422 */ {cycbcr_p422_to_012v, cycbcr_p422_to_i420, cycbcr_p422_to_yv12, cycbcr_p422_to_p422,
                cycbcr_p422_to_yuy2, cycbcr_p422_to_uyvy, cycbcr_p422_to_yvyu, cycbcr_p422_to_cyuv},
    /* YUY2 */ {cycbcr_yuy2_to_012v, cycbcr_yuy2_to_i420, cycbcr_yuy2_to_yv12, cycbcr_yuy2_to_p422,
                cycbcr_yuy2_to_yuy2, cycbcr_yuy2_to_uyvy, cycbcr_yuy2_to_yvyu, cycbcr_yuy2_to_cyuv},
    /* UYVY */ {cycbcr_uyvy_to_012v, cycbcr_uyvy_to_i420, cycbcr_uyvy_to_yv12, cycbcr_uyvy_to_p422,
                cycbcr_uyvy_to_yuy2, cycbcr_uyvy_to_uyvy, cycbcr_uyvy_to_yvyu, cycbcr_uyvy_to_cyuv},
    /* YVYU */ {cycbcr_yvyu_to_012v, cycbcr_yvyu_to_i420, cycbcr_yvyu_to_yv12, cycbcr_yvyu_to_p422,
                cycbcr_yvyu_to_yuy2, cycbcr_yvyu_to_uyvy, cycbcr_yvyu_to_yvyu, cycbcr_yvyu_to_cyuv},
    /* cyuv */ {cycbcr_cyuv_to_012v, cycbcr_cyuv_to_i420, cycbcr_cyuv_to_yv12, cycbcr_cyuv_to_p422,
                cycbcr_cyuv_to_yuy2, cycbcr_cyuv_to_uyvy, cycbcr_cyuv_to_yvyu, cycbcr_cyuv_to_cyuv},
};
// YCbCr to RGB (matrix and layout passed on), and RGB to YCbCr, in the same order.
const RgbConverter kToRgb[kYcbcrFormats] = {};
const RgbConverter kFromRgb[kYcbcrFormats] = {};
// clang-format on

}  // namespace

extern "C" {

CYCBCR_API unsigned int cycbcr_transcode(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int dstFourCC,
                                         unsigned int srcFourCC) {
    cycbcr::ensure_level();
    _fixPitch(srcFourCC, width, srcPitch);
    _fixPitch(dstFourCC, width, dstPitch);
    const Format from = cycbcr::canonical_format(srcFourCC);
    // "422P" names a source layout only.
    const Format to =
        dstFourCC == CYCBCR_FOURCC_422P ? Format::Unknown : cycbcr::canonical_format(dstFourCC);
    if (from == Format::Unknown || to == Format::Unknown) return 0;
    if (from == Format::RGB32 && to == Format::RGB32) return 0;
    if (to == Format::RGB32) {
        const RgbConverter f = kToRgb[index_of(from)];
        return f ? f(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType) : 0;
    }
    if (from == Format::RGB32) {
        const RgbConverter f = kFromRgb[index_of(to)];
        return f ? f(dst, src, width, height, dstPitch, srcPitch, matrix, rgbType) : 0;
    }
    const Converter f = kPairs[index_of(from)][index_of(to)];
    return f ? f(dst, src, width, height, dstPitch, srcPitch) : 0;
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
