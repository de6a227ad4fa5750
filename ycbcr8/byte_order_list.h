// The packed 4:2:2 byte-order converters (rows as in frame/export.h).
//
// Operations that are their own inverse are one body under both direction
// names. cycbcr_yuy2_to_uyvy never takes an AVX2 form; cycbcr_cyuv_to_uyvy_avx2
// is exported for callers and taken by no converter.
#pragma once

// clang-format off
#define CYCBCR_BYTE_ORDER_PAIRS(X)                                                      \
    X(cycbcr_yuy2_to_yuy2, nullptr, YUY2, YUY2, BODY)                                   \
    X(cycbcr_yvyu_to_yvyu, nullptr, YVYU, YVYU, ALIAS, cycbcr_yuy2_to_yuy2)             \
    X(cycbcr_uyvy_to_uyvy, nullptr, UYVY, UYVY, ALIAS, cycbcr_yuy2_to_yuy2)             \
    X(cycbcr_cyuv_to_cyuv, nullptr, CYUV, CYUV, ALIAS, cycbcr_yuy2_to_yuy2)             \
    X(cycbcr_yuy2_to_uyvy, nullptr, YUY2, UYVY, BODY)                                   \
    X(cycbcr_uyvy_to_yuy2, cycbcr_yuy2_to_uyvy_avx2, UYVY, YUY2, BODY)                  \
    X(cycbcr_yuy2_to_yvyu, cycbcr_yuy2_to_yvyu_avx2, YUY2, YVYU, BODY)                  \
    X(cycbcr_yvyu_to_yuy2, cycbcr_yuy2_to_yvyu_avx2, YVYU, YUY2, ALIAS, cycbcr_yuy2_to_yvyu) \
    X(cycbcr_yvyu_to_uyvy, cycbcr_yvyu_to_uyvy_avx2, YVYU, UYVY, BODY)                  \
    X(cycbcr_uyvy_to_yvyu, cycbcr_yvyu_to_uyvy_avx2, UYVY, YVYU, ALIAS, cycbcr_yvyu_to_uyvy) \
    X(cycbcr_uyvy_to_cyuv, nullptr, UYVY, CYUV, BODY)                                   \
    X(cycbcr_cyuv_to_uyvy, nullptr, CYUV, UYVY, ALIAS, cycbcr_uyvy_to_cyuv)             \
    X(cycbcr_yuy2_to_cyuv, cycbcr_yuy2_to_cyuv_avx2, YUY2, CYUV, BODY)                  \
    X(cycbcr_cyuv_to_yuy2, cycbcr_yuy2_to_cyuv_avx2, CYUV, YUY2, ALIAS, cycbcr_yuy2_to_cyuv) \
    X(cycbcr_yvyu_to_cyuv, cycbcr_yvyu_to_cyuv_avx2, YVYU, CYUV, BODY)                  \
    X(cycbcr_cyuv_to_yvyu, cycbcr_yvyu_to_cyuv_avx2, CYUV, YVYU, ALIAS, cycbcr_yvyu_to_cyuv)

// The AVX2 forms (byte_order_avx2.cpp).
#define CYCBCR_BYTE_ORDER_AVX2_FORMS(X)                                                 \
    X(cycbcr_yuy2_to_uyvy_avx2, nullptr, YUY2, UYVY, BODY)                              \
    X(cycbcr_yvyu_to_uyvy_avx2, nullptr, YVYU, UYVY, ALIAS, cycbcr_yuy2_to_uyvy_avx2)   \
    X(cycbcr_uyvy_to_yvyu_avx2, nullptr, UYVY, YVYU, ALIAS, cycbcr_yuy2_to_uyvy_avx2)   \
    X(cycbcr_yuy2_to_yvyu_avx2, nullptr, YUY2, YVYU, BODY)                              \
    X(cycbcr_yvyu_to_yuy2_avx2, nullptr, YVYU, YUY2, ALIAS, cycbcr_yuy2_to_yvyu_avx2)   \
    X(cycbcr_cyuv_to_uyvy_avx2, nullptr, CYUV, UYVY, BODY)                              \
    X(cycbcr_yuy2_to_cyuv_avx2, nullptr, YUY2, CYUV, BODY)                              \
    X(cycbcr_cyuv_to_yuy2_avx2, nullptr, CYUV, YUY2, ALIAS, cycbcr_yuy2_to_cyuv_avx2)   \
    X(cycbcr_yvyu_to_cyuv_avx2, nullptr, YVYU, CYUV, ALIAS, cycbcr_yuy2_to_cyuv_avx2)   \
    X(cycbcr_cyuv_to_yvyu_avx2, nullptr, CYUV, YVYU, ALIAS, cycbcr_yuy2_to_cyuv_avx2)
// clang-format on
