// The RGB to v210 converters with the converter argument list followed by
// matrix and rgbType and a 64-bit result (rows as in frame/export.h).
#pragma once

// clang-format off
// The converter the dispatcher calls for RGB (code 0) to v210: 32-bit pixels.
#define CYCBCR_TO_V210_PAIRS(X)                               \
    X(cycbcr_RGB32_to_012v, nullptr, RGB32, V210, BODY)

// Every converter of the family with that argument list (cycbcr_RGB64_to_012v
// takes a ninth argument and stands apart, as do the 10-bit RGB converter and
// the alpha key, whose sources have no format of their own here).
#define CYCBCR_TO_V210_CONVERTERS(X)                          \
    CYCBCR_TO_V210_PAIRS(X)                                   \
    X(cycbcr_RGB24_to_012v, nullptr, RGB24, V210, BODY)
// clang-format on
