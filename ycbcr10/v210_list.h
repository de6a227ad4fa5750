// The converters between v210 and the 8-bit formats (rows as in
// frame/export.h). Most exported names spell v210 "012v", its FourCC read
// backwards. The UYVY pair has plain forms of its own (_opt), the rest hand
// over to the scalar engines Tov210 and Fromv210 below level 5.
#pragma once

// clang-format off
#define CYCBCR_V210_PAIRS(X)                                              \
    X(cycbcr_uyvy_to_012v, cycbcr_uyvy_to_012v_avx2, UYVY, V210, BODY)    \
    X(cycbcr_012v_to_uyvy, cycbcr_012v_to_uyvy_avx2, V210, UYVY, BODY)    \
    X(cycbcr_012v_to_012v, nullptr, V210, V210, BODY)                     \
    X(cycbcr_012v_to_yuy2, cycbcr_012v_to_yuy2_avx2, V210, YUY2, BODY)    \
    X(cycbcr_012v_to_yvyu, cycbcr_012v_to_yvyu_avx2, V210, YVYU, BODY)    \
    X(cycbcr_012v_to_cyuv, cycbcr_012v_to_cyuv_avx2, V210, CYUV, BODY)    \
    X(cycbcr_012v_to_i420, cycbcr_012v_to_i420_avx2, V210, I420, BODY)    \
    X(cycbcr_012v_to_yv12, cycbcr_012v_to_yv12_avx2, V210, YV12, BODY)    \
    X(cycbcr_012v_to_p422, cycbcr_012v_to_p422_avx2, V210, P422, BODY)    \
    X(cycbcr_yuy2_to_012v, cycbcr_yuy2_to_012v_avx2, YUY2, V210, BODY)    \
    X(cycbcr_yvyu_to_012v, cycbcr_yvyu_to_012v_avx2, YVYU, V210, BODY)    \
    X(cycbcr_cyuv_to_012v, cycbcr_cyuv_to_012v_avx2, CYUV, V210, BODY)    \
    X(cycbcr_i420_to_012v, cycbcr_i420_to_012v_avx2, I420, V210, BODY)    \
    X(cycbcr_yv12_to_012v, cycbcr_yv12_to_012v_avx2, YV12, V210, BODY)    \
    X(cycbcr_p422_to_012v, cycbcr_p422_to_012v_avx2, P422, V210, BODY)

// The plain forms of the UYVY pair (v210_uyvy.cpp).
#define CYCBCR_V210_PLAIN_FORMS(X)                                        \
    X(cycbcr_uyvy_to_012v_opt, nullptr, UYVY, V210, BODY)                 \
    X(cycbcr_012v_to_uyvy_opt, nullptr, V210, UYVY, BODY)

// The AVX2 forms: of the UYVY pair (v210_uyvy_avx2.cpp), from v210
// (v210_unpack_avx2.cpp) and into v210 (v210_pack_avx2.cpp).
#define CYCBCR_V210_UYVY_AVX2_FORMS(X)                                    \
    X(cycbcr_uyvy_to_012v_avx2, nullptr, UYVY, V210, BODY)                \
    X(cycbcr_012v_to_uyvy_avx2, nullptr, V210, UYVY, BODY)
#define CYCBCR_V210_UNPACK_AVX2_FORMS(X)                                  \
    X(cycbcr_012v_to_yuy2_avx2, nullptr, V210, YUY2, BODY)                \
    X(cycbcr_012v_to_yvyu_avx2, nullptr, V210, YVYU, BODY)                \
    X(cycbcr_012v_to_cyuv_avx2, nullptr, V210, CYUV, BODY)                \
    X(cycbcr_012v_to_i420_avx2, nullptr, V210, I420, BODY)                \
    X(cycbcr_012v_to_yv12_avx2, nullptr, V210, YV12, BODY)                \
    X(cycbcr_012v_to_p422_avx2, nullptr, V210, P422, BODY)
#define CYCBCR_V210_PACK_AVX2_FORMS(X)                                    \
    X(cycbcr_yuy2_to_012v_avx2, nullptr, YUY2, V210, BODY)                \
    X(cycbcr_yvyu_to_012v_avx2, nullptr, YVYU, V210, BODY)                \
    X(cycbcr_cyuv_to_012v_avx2, nullptr, CYUV, V210, BODY)                \
    X(cycbcr_i420_to_012v_avx2, nullptr, I420, V210, BODY)                \
    X(cycbcr_yv12_to_012v_avx2, nullptr, YV12, V210, BODY)                \
    X(cycbcr_p422_to_012v_avx2, nullptr, P422, V210, BODY)
// clang-format on
