// The packed 4:2:2 <-> planar I420, YV12, P422 converters (rows as in
// frame/export.h). Each has an AVX2 form of its own.
#pragma once

// clang-format off
#define CYCBCR_PACKED_PLANAR_PAIRS(X)                                     \
    X(cycbcr_yuy2_to_i420, cycbcr_yuy2_to_i420_avx2, YUY2, I420, BODY)    \
    X(cycbcr_yuy2_to_yv12, cycbcr_yuy2_to_yv12_avx2, YUY2, YV12, BODY)    \
    X(cycbcr_yuy2_to_p422, cycbcr_yuy2_to_p422_avx2, YUY2, P422, BODY)    \
    X(cycbcr_yvyu_to_i420, cycbcr_yvyu_to_i420_avx2, YVYU, I420, BODY)    \
    X(cycbcr_yvyu_to_yv12, cycbcr_yvyu_to_yv12_avx2, YVYU, YV12, BODY)    \
    X(cycbcr_yvyu_to_p422, cycbcr_yvyu_to_p422_avx2, YVYU, P422, BODY)    \
    X(cycbcr_uyvy_to_i420, cycbcr_uyvy_to_i420_avx2, UYVY, I420, BODY)    \
    X(cycbcr_uyvy_to_yv12, cycbcr_uyvy_to_yv12_avx2, UYVY, YV12, BODY)    \
    X(cycbcr_uyvy_to_p422, cycbcr_uyvy_to_p422_avx2, UYVY, P422, BODY)    \
    X(cycbcr_cyuv_to_i420, cycbcr_cyuv_to_i420_avx2, CYUV, I420, BODY)    \
    X(cycbcr_cyuv_to_yv12, cycbcr_cyuv_to_yv12_avx2, CYUV, YV12, BODY)    \
    X(cycbcr_cyuv_to_p422, cycbcr_cyuv_to_p422_avx2, CYUV, P422, BODY)    \
    X(cycbcr_i420_to_yuy2, cycbcr_i420_to_yuy2_avx2, I420, YUY2, BODY)    \
    X(cycbcr_i420_to_yvyu, cycbcr_i420_to_yvyu_avx2, I420, YVYU, BODY)    \
    X(cycbcr_i420_to_uyvy, cycbcr_i420_to_uyvy_avx2, I420, UYVY, BODY)    \
    X(cycbcr_i420_to_cyuv, cycbcr_i420_to_cyuv_avx2, I420, CYUV, BODY)    \
    X(cycbcr_yv12_to_yuy2, cycbcr_yv12_to_yuy2_avx2, YV12, YUY2, BODY)    \
    X(cycbcr_yv12_to_yvyu, cycbcr_yv12_to_yvyu_avx2, YV12, YVYU, BODY)    \
    X(cycbcr_yv12_to_uyvy, cycbcr_yv12_to_uyvy_avx2, YV12, UYVY, BODY)    \
    X(cycbcr_yv12_to_cyuv, cycbcr_yv12_to_cyuv_avx2, YV12, CYUV, BODY)    \
    X(cycbcr_p422_to_yuy2, cycbcr_p422_to_yuy2_avx2, P422, YUY2, BODY)    \
    X(cycbcr_p422_to_yvyu, cycbcr_p422_to_yvyu_avx2, P422, YVYU, BODY)    \
    X(cycbcr_p422_to_uyvy, cycbcr_p422_to_uyvy_avx2, P422, UYVY, BODY)    \
    X(cycbcr_p422_to_cyuv, cycbcr_p422_to_cyuv_avx2, P422, CYUV, BODY)

// The AVX2 forms (packed_planar_avx2.cpp).
#define CYCBCR_PACKED_PLANAR_AVX2_FORMS(X)                   \
    X(cycbcr_yuy2_to_i420_avx2, nullptr, YUY2, I420, BODY)   \
    X(cycbcr_yuy2_to_yv12_avx2, nullptr, YUY2, YV12, BODY)   \
    X(cycbcr_yuy2_to_p422_avx2, nullptr, YUY2, P422, BODY)   \
    X(cycbcr_yvyu_to_i420_avx2, nullptr, YVYU, I420, BODY)   \
    X(cycbcr_yvyu_to_yv12_avx2, nullptr, YVYU, YV12, BODY)   \
    X(cycbcr_yvyu_to_p422_avx2, nullptr, YVYU, P422, BODY)   \
    X(cycbcr_uyvy_to_i420_avx2, nullptr, UYVY, I420, BODY)   \
    X(cycbcr_uyvy_to_yv12_avx2, nullptr, UYVY, YV12, BODY)   \
    X(cycbcr_uyvy_to_p422_avx2, nullptr, UYVY, P422, BODY)   \
    X(cycbcr_cyuv_to_i420_avx2, nullptr, CYUV, I420, BODY)   \
    X(cycbcr_cyuv_to_yv12_avx2, nullptr, CYUV, YV12, BODY)   \
    X(cycbcr_cyuv_to_p422_avx2, nullptr, CYUV, P422, BODY)   \
    X(cycbcr_i420_to_yuy2_avx2, nullptr, I420, YUY2, BODY)   \
    X(cycbcr_i420_to_yvyu_avx2, nullptr, I420, YVYU, BODY)   \
    X(cycbcr_i420_to_uyvy_avx2, nullptr, I420, UYVY, BODY)   \
    X(cycbcr_i420_to_cyuv_avx2, nullptr, I420, CYUV, BODY)   \
    X(cycbcr_yv12_to_yuy2_avx2, nullptr, YV12, YUY2, BODY)   \
    X(cycbcr_yv12_to_yvyu_avx2, nullptr, YV12, YVYU, BODY)   \
    X(cycbcr_yv12_to_uyvy_avx2, nullptr, YV12, UYVY, BODY)   \
    X(cycbcr_yv12_to_cyuv_avx2, nullptr, YV12, CYUV, BODY)   \
    X(cycbcr_p422_to_yuy2_avx2, nullptr, P422, YUY2, BODY)   \
    X(cycbcr_p422_to_yvyu_avx2, nullptr, P422, YVYU, BODY)   \
    X(cycbcr_p422_to_uyvy_avx2, nullptr, P422, UYVY, BODY)   \
    X(cycbcr_p422_to_cyuv_avx2, nullptr, P422, CYUV, BODY)
// clang-format on
