#include "frame/formats.h"

namespace cycbcr {

Format canonical_format(uint32_t fourcc) {
    switch (fourcc) {
        case CYCBCR_FOURCC_v210:
        case CYCBCR_FOURCC_012v:
            return Format::V210;
        case CYCBCR_FOURCC_I420:
        case CYCBCR_FOURCC_IYUV:
            return Format::I420;
        case CYCBCR_FOURCC_YV12:
            return Format::YV12;
        case CYCBCR_FOURCC_P422:
        case CYCBCR_FOURCC_422P:
            return Format::P422;
        case CYCBCR_FOURCC_YUY2:
        case CYCBCR_FOURCC_YUNV:
            return Format::YUY2;
        case CYCBCR_FOURCC_UYVY:
        case CYCBCR_FOURCC_UYNV:
        case CYCBCR_FOURCC_AJYU:
        case CYCBCR_FOURCC_yuv2:
        case CYCBCR_FOURCC_yuV2:
        case CYCBCR_FOURCC_2vuy:
        case CYCBCR_FOURCC_2Vuy:
        case CYCBCR_FOURCC_UYVY_ALT1:
        case CYCBCR_FOURCC_UYVY_ALT2:
            return Format::UYVY;
        case CYCBCR_FOURCC_YVYU:
            return Format::YVYU;
        case CYCBCR_FOURCC_cyuv:
            return Format::CYUV;
        case CYCBCR_FOURCC_RGB32:
            return Format::RGB32;
        default:
            return Format::Unknown;
    }
}

bool is_packed422_code(uint32_t fourcc) {
    const Format f = canonical_format(fourcc);
    return f == Format::UYVY || f == Format::YUY2 || f == Format::YVYU || f == Format::CYUV;
}

}  // namespace cycbcr

void _fixPitch(unsigned int fourcc, unsigned int width, unsigned int& pitch) {  // NOLINT
    using cycbcr::Format;
    if (cycbcr::is_packed422_code(fourcc)) {
        if (pitch < 2 * width) pitch = 2 * width;
        return;
    }
    switch (fourcc) {
        case CYCBCR_FOURCC_I420:
        case CYCBCR_FOURCC_IYUV:
        case CYCBCR_FOURCC_YV12:
        case CYCBCR_FOURCC_P422: {
            // Kept as existing callers know it: a too-large pitch falls back to the
            // width, while a too-small one (0 included) passes through unchanged.
            const unsigned int rounded = (width + 127u) & ~127u;
            if (pitch > rounded) pitch = width;
            return;
        }
        case CYCBCR_FOURCC_v210:
        case CYCBCR_FOURCC_012v: {
            if (pitch == 0) return;  // the v210 converters derive their own row size
            // Truncating on purpose: the minimum leaves out an incomplete last group.
            const unsigned int minimum = (width / 6) * 16;
            if (pitch % 16 != 0 || pitch < minimum) pitch = minimum;
            return;
        }
        default:
            return;
    }
}
