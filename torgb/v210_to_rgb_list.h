// The v210 to RGB converters, with the converter argument list followed by
// matrix and rgbType (rows as in frame/export.h). Only the 32-bit one has a
// FourCC pair at the dispatcher; the other depths are reached by name. The
// 32-bit converter's level-5 form is the engine's AVX2 form
// cycbcr_v210ToRGBInt_avx2, which takes the engine's arguments, so its row
// names no converter-shaped form.
#pragma once

// clang-format off
#define CYCBCR_V210_TO_RGB_CONVERTERS(X)                                      \
    X(cycbcr_012v_to_rgb555, nullptr, V210, RGB555, BODY)                     \
    X(cycbcr_012v_to_rgb565, nullptr, V210, RGB565, BODY)                     \
    X(cycbcr_012v_to_rgb24, cycbcr_012v_to_rgb24_avx2, V210, RGB24, BODY)     \
    X(cycbcr_012v_to_rgb32, nullptr, V210, RGB32, BODY)

// The AVX2 form of the 24-bit converter: the engine's rule, vector kernels.
#define CYCBCR_V210_TO_RGB_AVX2_FORMS(X)                                      \
    X(cycbcr_012v_to_rgb24_avx2, nullptr, V210, RGB24, BODY)
// clang-format on
