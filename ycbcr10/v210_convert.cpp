// v210 to and from YUY2, YVYU, cyuv, I420, YV12, P422 and separate 4:2:2 planes:
// thin entries over Fromv210, Fromv210_16 and Tov210.
#include "frame/export.h"
#include "frame/proc_level.h"
#include "ycbcr8/packed_planar.h"

using cycbcr::detail::Planar;
using cycbcr::detail::planes_of;

namespace {

unsigned int from_v210_planar(Planar format, uint8_t* dst, const uint8_t* src, uint32_t width,
                              uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const auto p = planes_of(format, dst, dstPitch, height);
    return Fromv210(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch,
                    format == Planar::P422 ? 1 : 0, 1);
}

unsigned int to_v210_planar(Planar format, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    // Planes are found by srcPitch, then read as tightly packed rows of width.
    const auto p = planes_of(format, const_cast<uint8_t*>(src), srcPitch, height);
    return Tov210(dst, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch,
                  format == Planar::P422 ? 1 : 0, 1);
}

}  // namespace

extern "C" {

#define CYCBCR_V210_ENTRY(name, body)                                                             \
    CYCBCR_API unsigned int name(CYCBCR_CONVERTER_ARGS) {                                         \
        if (cycbcr::avx2_path()) return name##_avx2(dst, src, width, height, dstPitch, srcPitch); \
        body                                                                                      \
    }

CYCBCR_V210_ENTRY(cycbcr_012v_to_yuy2, {
    return Fromv210(dst, dst + 1, dst + 3, src, width, height, dstPitch, srcPitch, 1, 0);
})
CYCBCR_V210_ENTRY(cycbcr_012v_to_yvyu, {
    return Fromv210(dst, dst + 3, dst + 1, src, width, height, dstPitch, srcPitch, 1, 0);
})
CYCBCR_V210_ENTRY(cycbcr_012v_to_cyuv, {
    const unsigned int n =
        Fromv210(dst + 1, dst, dst + 2, src, width, height, dstPitch, srcPitch, 1, 0);
    cycbcr_invert(dst, dstPitch, height);
    return n;
})
CYCBCR_V210_ENTRY(cycbcr_012v_to_i420, {
    return from_v210_planar(Planar::I420, dst, src, width, height, dstPitch, srcPitch);
})
CYCBCR_V210_ENTRY(cycbcr_012v_to_yv12, {
    return from_v210_planar(Planar::YV12, dst, src, width, height, dstPitch, srcPitch);
})
CYCBCR_V210_ENTRY(cycbcr_012v_to_p422, {
    return from_v210_planar(Planar::P422, dst, src, width, height, dstPitch, srcPitch);
})
CYCBCR_V210_ENTRY(cycbcr_yuy2_to_012v, {
    return Tov210(dst, src, src + 1, src + 3, width, height, dstPitch, srcPitch, 1, 0);
})
CYCBCR_V210_ENTRY(cycbcr_yvyu_to_012v, {
    return Tov210(dst, src, src + 3, src + 1, width, height, dstPitch, srcPitch, 1, 0);
})
CYCBCR_V210_ENTRY(cycbcr_cyuv_to_012v, {
    const unsigned int n =
        Tov210(dst, src + 1, src, src + 2, width, height, dstPitch, srcPitch, 1, 0);
    cycbcr_invert(dst, dstPitch, height);  // the pitch as passed, 0 included
    return n;
})
CYCBCR_V210_ENTRY(cycbcr_i420_to_012v, {
    return to_v210_planar(Planar::I420, dst, src, width, height, dstPitch, srcPitch);
})
CYCBCR_V210_ENTRY(cycbcr_yv12_to_012v, {
    return to_v210_planar(Planar::YV12, dst, src, width, height, dstPitch, srcPitch);
})
CYCBCR_V210_ENTRY(cycbcr_p422_to_012v, {
    return to_v210_planar(Planar::P422, dst, src, width, height, dstPitch, srcPitch);
})

CYCBCR_API unsigned int cycbcr_012v_to_planar422(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch) {
    if (cycbcr::avx2_path())
        return cycbcr_012v_to_planar422_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
    return Fromv210(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
}

CYCBCR_API unsigned int cycbcr_012v_to_planar422_16(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch) {
    if (cycbcr::avx2_path())
        return cycbcr_012v_to_planar422_16_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
    return Fromv210_16(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
}

}  // extern "C"
