// The 8-bit YCbCr to RGB converters, with the converter argument list followed
// by matrix and rgbType (rows as in frame/export.h). Only the 32-bit ones have a
// FourCC pair at the dispatcher; NV12 and the other depths are reached by name.
#pragma once

// clang-format off
#define CYCBCR_TO_RGB_CONVERTERS(X)                                          \
    X(cycbcr_uyvy_to_rgb555, nullptr, UYVY, RGB555, BODY)                    \
    X(cycbcr_uyvy_to_rgb565, nullptr, UYVY, RGB565, BODY)                    \
    X(cycbcr_uyvy_to_rgb24, cycbcr_uyvy_to_rgb24_avx2, UYVY, RGB24, BODY)    \
    X(cycbcr_uyvy_to_rgb32, cycbcr_uyvy_to_rgb32_avx2, UYVY, RGB32, BODY)    \
    X(cycbcr_yuy2_to_rgb555, nullptr, YUY2, RGB555, BODY)                    \
    X(cycbcr_yuy2_to_rgb565, nullptr, YUY2, RGB565, BODY)                    \
    X(cycbcr_yuy2_to_rgb24, nullptr, YUY2, RGB24, BODY)                      \
    X(cycbcr_yuy2_to_rgb32, nullptr, YUY2, RGB32, BODY)                      \
    X(cycbcr_yvyu_to_rgb555, nullptr, YVYU, RGB555, BODY)                    \
    X(cycbcr_yvyu_to_rgb565, nullptr, YVYU, RGB565, BODY)                    \
    X(cycbcr_yvyu_to_rgb24, nullptr, YVYU, RGB24, BODY)                      \
    X(cycbcr_yvyu_to_rgb32, nullptr, YVYU, RGB32, BODY)                      \
    X(cycbcr_cyuv_to_rgb555, nullptr, CYUV, RGB555, BODY)                    \
    X(cycbcr_cyuv_to_rgb565, nullptr, CYUV, RGB565, BODY)                    \
    X(cycbcr_cyuv_to_rgb24, nullptr, CYUV, RGB24, BODY)                      \
    X(cycbcr_cyuv_to_rgb32, nullptr, CYUV, RGB32, BODY)                      \
    X(cycbcr_i420_to_rgb555, nullptr, I420, RGB555, BODY)                    \
    X(cycbcr_i420_to_rgb565, nullptr, I420, RGB565, BODY)                    \
    X(cycbcr_i420_to_rgb24, nullptr, I420, RGB24, BODY)                      \
    X(cycbcr_i420_to_rgb32, nullptr, I420, RGB32, BODY)                      \
    X(cycbcr_yv12_to_rgb555, nullptr, YV12, RGB555, BODY)                    \
    X(cycbcr_yv12_to_rgb565, nullptr, YV12, RGB565, BODY)                    \
    X(cycbcr_yv12_to_rgb24, nullptr, YV12, RGB24, BODY)                      \
    X(cycbcr_yv12_to_rgb32, nullptr, YV12, RGB32, BODY)                      \
    X(cycbcr_p422_to_rgb555, nullptr, P422, RGB555, BODY)                    \
    X(cycbcr_p422_to_rgb565, nullptr, P422, RGB565, BODY)                    \
    X(cycbcr_p422_to_rgb24, nullptr, P422, RGB24, BODY)                      \
    X(cycbcr_p422_to_rgb32, nullptr, P422, RGB32, BODY)                      \
    X(cycbcr_nv12_to_rgb32, nullptr, NV12, RGB32, BODY)

// The AVX2 forms of the UYVY converters: the engine's rule, vector kernels.
#define CYCBCR_TO_RGB_AVX2_FORMS(X)                          \
    X(cycbcr_uyvy_to_rgb24_avx2, nullptr, UYVY, RGB24, BODY) \
    X(cycbcr_uyvy_to_rgb32_avx2, nullptr, UYVY, RGB32, BODY)
// clang-format on
