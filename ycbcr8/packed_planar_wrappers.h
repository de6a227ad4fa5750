// The packed <-> planar wrappers, listed once for the plain and AVX2 files.
#pragma once

#include <cstdint>

#include "frame/export.h"
#include "ycbcr8/packed_planar.h"

namespace cycbcr::detail {

enum class Packed { YUY2, YVYU, UYVY, CYUV };
struct PackedPtrs {
    uint8_t* y;
    uint8_t* cb;
    uint8_t* cr;
};
// Where the first Y, Cb and Cr of a packed frame lie (cyuv as UYVY).
PackedPtrs packed_ptrs(Packed format, uint8_t* p);
// cyuv results are flipped plane by plane (4:2:0 chroma: height / 2 rows).
void invert_planes(Planar format, uint8_t* dst, uint32_t dstPitch, uint32_t height);
// dstPitch * height + (dstPitch * height / 2, lowest bit cleared).
uint32_t toplanar_result(uint32_t dstPitch, uint32_t height);

using Converter = unsigned int (*)(CYCBCR_CONVERTER_ARGS);
unsigned int packed_to_planar(Packed from, Planar to, Converter avx2, uint8_t* dst,
                              const uint8_t* src, uint32_t width, uint32_t height,
                              uint32_t dstPitch, uint32_t srcPitch);
unsigned int planar_to_packed(Planar from, Packed to, Converter avx2, uint8_t* dst,
                              const uint8_t* src, uint32_t width, uint32_t height,
                              uint32_t dstPitch, uint32_t srcPitch);

}  // namespace cycbcr::detail

// X(name, packed, planar) for every packed-to-planar wrapper and
// Y(name, planar, packed) for every planar-to-packed one.
#define CYCBCR_PACKED_PLANAR_CONVERTERS(X, Y) \
    X(cycbcr_yuy2_to_i420, YUY2, I420)        \
    X(cycbcr_yuy2_to_yv12, YUY2, YV12)        \
    X(cycbcr_yuy2_to_p422, YUY2, P422)        \
    X(cycbcr_yvyu_to_i420, YVYU, I420)        \
    X(cycbcr_yvyu_to_yv12, YVYU, YV12)        \
    X(cycbcr_yvyu_to_p422, YVYU, P422)        \
    X(cycbcr_uyvy_to_i420, UYVY, I420)        \
    X(cycbcr_uyvy_to_yv12, UYVY, YV12)        \
    X(cycbcr_uyvy_to_p422, UYVY, P422)        \
    X(cycbcr_cyuv_to_i420, CYUV, I420)        \
    X(cycbcr_cyuv_to_yv12, CYUV, YV12)        \
    X(cycbcr_cyuv_to_p422, CYUV, P422)        \
    Y(cycbcr_i420_to_yuy2, I420, YUY2)        \
    Y(cycbcr_i420_to_yvyu, I420, YVYU)        \
    Y(cycbcr_i420_to_uyvy, I420, UYVY)        \
    Y(cycbcr_i420_to_cyuv, I420, CYUV)        \
    Y(cycbcr_yv12_to_yuy2, YV12, YUY2)        \
    Y(cycbcr_yv12_to_yvyu, YV12, YVYU)        \
    Y(cycbcr_yv12_to_uyvy, YV12, UYVY)        \
    Y(cycbcr_yv12_to_cyuv, YV12, CYUV)        \
    Y(cycbcr_p422_to_yuy2, P422, YUY2)        \
    Y(cycbcr_p422_to_yvyu, P422, YVYU)        \
    Y(cycbcr_p422_to_uyvy, P422, UYVY)        \
    Y(cycbcr_p422_to_cyuv, P422, CYUV)
