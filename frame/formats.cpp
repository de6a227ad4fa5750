// Format codes: which format each accepted FourCC stands for, and the pitch rule
// of the dispatcher.
#include "frame/formats.h"

#include "frame/geometry.h"

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

Format destination_format(uint32_t fourcc) {
    return fourcc == CYCBCR_FOURCC_422P ? Format::Unknown : canonical_format(fourcc);
}

}  // namespace cycbcr

void _fixPitch(unsigned int fourcc, unsigned int width, unsigned int& pitch) {  // NOLINT
    pitch = cycbcr_fix_pitch(fourcc, width, pitch);
}

extern "C" CYCBCR_API unsigned int cycbcr_fix_pitch(unsigned int fourcc, unsigned int width,
                                                    unsigned int pitch) {
    using cycbcr::Arrangement;
    const cycbcr::Format f = cycbcr::canonical_format(fourcc);
    switch (cycbcr::info(f).arrangement) {
        case Arrangement::Packed422:
            return pitch < 2 * width ? 2 * width : pitch;
        case Arrangement::Planar: {
            // "422P" keeps its pitch. Kept as existing callers know it: a too-large
            // pitch falls back to the width, while a too-small one (0 included)
            // passes through unchanged.
            if (fourcc == CYCBCR_FOURCC_422P) return pitch;
            const unsigned int rounded = (width + 127u) & ~127u;
            return pitch > rounded ? width : pitch;
        }
        case Arrangement::V210: {
            if (pitch == 0) return 0;  // the v210 converters derive their own row size
            // Truncating on purpose: the minimum leaves out an incomplete last group.
            const unsigned int minimum = (width / 6) * 16;
            return pitch % 16 != 0 || pitch < minimum ? minimum : pitch;
        }
        default:
            return pitch;
    }
}
