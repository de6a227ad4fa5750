// The RGB to 8-bit YCbCr converters, with the converter argument list followed
// by matrix and rgbType and a 64-bit result (rows as in frame/export.h).
#pragma once

// The converters the dispatcher calls for RGB (code 0) sources: 32-bit pixels.
// clang-format off
#define CYCBCR_FROM_RGB_PAIRS(X)                                           \
    X(cycbcr_RGB32_to_uyvy, cycbcr_RGB32_to_uyvy_avx2, RGB32, UYVY, BODY)  \
    X(cycbcr_RGB32_to_yuy2, nullptr, RGB32, YUY2, BODY)                    \
    X(cycbcr_RGB32_to_yvyu, nullptr, RGB32, YVYU, BODY)                    \
    X(cycbcr_RGB32_to_cyuv, nullptr, RGB32, CYUV, BODY)                    \
    X(cycbcr_RGB32_to_i420, nullptr, RGB32, I420, BODY)                    \
    X(cycbcr_RGB32_to_yv12, nullptr, RGB32, YV12, BODY)                    \
    X(cycbcr_RGB32_to_p422, nullptr, RGB32, P422, BODY)

// Every converter of the family with that argument list (cycbcr_RGB64_to_uyvy
// takes a ninth argument and stands apart).
#define CYCBCR_FROM_RGB_CONVERTERS(X)                                      \
    CYCBCR_FROM_RGB_PAIRS(X)                                               \
    X(cycbcr_RGB24_to_uyvy, nullptr, RGB24, UYVY, BODY)                    \
    X(cycbcr_RGB24_to_yuy2, nullptr, RGB24, YUY2, BODY)                    \
    X(cycbcr_RGB24_to_yvyu, nullptr, RGB24, YVYU, BODY)                    \
    X(cycbcr_RGB24_to_cyuv, nullptr, RGB24, CYUV, BODY)                    \
    X(cycbcr_RGB24_to_i420, nullptr, RGB24, I420, BODY)                    \
    X(cycbcr_RGB24_to_yv12, nullptr, RGB24, YV12, BODY)                    \
    X(cycbcr_RGB24_to_p422, nullptr, RGB24, P422, BODY)                    \
    X(cycbcr_RGB64_to_p422, nullptr, RGB64, P422, BODY)

// The AVX2 form of BGRA to UYVY.
#define CYCBCR_FROM_RGB_AVX2_FORMS(X)                         \
    X(cycbcr_RGB32_to_uyvy_avx2, nullptr, RGB32, UYVY, BODY)
// clang-format on
