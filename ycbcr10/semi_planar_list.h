// The semi-planar converters (rows as in frame/export.h). NV12 and NV10 have no
// FourCC at the dispatcher: these are reached by name only, so they stand in
// the converter rows but not in the dispatcher's pairs.
#pragma once

// clang-format off
#define CYCBCR_SEMI_PLANAR_CONVERTERS(X)                                          \
    X(cycbcr_NV12_to_v210_pitched, cycbcr_NV12_to_v210_avx2, NV12, V210, BODY)    \
    X(cycbcr_NV10_to_v210_pitched, cycbcr_NV10_to_v210_avx2, NV10, V210, BODY)    \
    X(cycbcr_NV12_to_uyvy_pitched, cycbcr_NV12_to_uyvy_avx2, NV12, UYVY, BODY)

// Their AVX2 forms (semi_planar_avx2.cpp).
#define CYCBCR_SEMI_PLANAR_AVX2_FORMS(X)                                          \
    X(cycbcr_NV12_to_v210_avx2, nullptr, NV12, V210, BODY)                        \
    X(cycbcr_NV10_to_v210_avx2, nullptr, NV10, V210, BODY)                        \
    X(cycbcr_NV12_to_uyvy_avx2, nullptr, NV12, UYVY, BODY)

// The producers of NV12p16 from three 16-bit planes, which take the plane
// pointers first: X(name, avx2 form, source format, left shift of a sample).
#define CYCBCR_NV12P16_PRODUCERS(X)                                                  \
    X(cycbcr_yuv420p10_to_NV12p16, cycbcr_420p10_to_NV12p16_avx2, YUV420P10, 6)      \
    X(cycbcr_yuv420p12_to_NV12p16, cycbcr_420p12_to_NV12p16_avx2, YUV420P12, 4)      \
    X(cycbcr_yuv420p16_to_NV12p16, cycbcr_420p16_to_NV12p16_avx2, YUV420P16, 0)
// clang-format on
