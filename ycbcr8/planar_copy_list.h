// The planar to planar converters among I420, YV12 and P422 (rows as in
// frame/export.h). None has an AVX2 form of its own; the 4:2:2 <-> 4:2:0 engine
// they call has one.
#pragma once

// clang-format off
#define CYCBCR_PLANAR_COPY_PAIRS(X)                       \
    X(cycbcr_i420_to_i420, nullptr, I420, I420, BODY)     \
    X(cycbcr_i420_to_yv12, nullptr, I420, YV12, BODY)     \
    X(cycbcr_yv12_to_i420, nullptr, YV12, I420, BODY)     \
    X(cycbcr_yv12_to_yv12, nullptr, YV12, YV12, BODY)     \
    X(cycbcr_i420_to_p422, nullptr, I420, P422, BODY)     \
    X(cycbcr_yv12_to_p422, nullptr, YV12, P422, BODY)     \
    X(cycbcr_p422_to_i420, nullptr, P422, I420, BODY)     \
    X(cycbcr_p422_to_yv12, nullptr, P422, YV12, BODY)     \
    X(cycbcr_p422_to_p422, nullptr, P422, P422, BODY)

#define CYCBCR_PLANAR_COPY_AVX2_FORMS(X)
// clang-format on
