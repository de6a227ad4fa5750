// Every converter with the converter argument list, gathered from the families'
// lists (rows as in frame/export.h). The dispatcher, the buffer-size query, the
// tests and the benchmarks read these instead of naming converters themselves.
#pragma once

#include "fromrgb/from_rgb_list.h"
#include "fromrgb/to_v210_list.h"
#include "torgb/to_rgb_list.h"
#include "torgb/v210_to_rgb_list.h"
#include "ycbcr10/semi_planar_list.h"
#include "ycbcr10/v210_list.h"
#include "ycbcr8/byte_order_list.h"
#include "ycbcr8/packed_planar_list.h"
#include "ycbcr8/planar_copy_list.h"

// The converter of each pair of formats, as the dispatcher calls it.
#define CYCBCR_PAIR_CONVERTERS(X) \
    CYCBCR_BYTE_ORDER_PAIRS(X)    \
    CYCBCR_PACKED_PLANAR_PAIRS(X) \
    CYCBCR_PLANAR_COPY_PAIRS(X)   \
    CYCBCR_V210_PAIRS(X)

// The other forms of those converters: AVX2 forms (taken by a pair's converter
// at level 5, or exported for callers) and the plain forms of the UYVY <-> v210
// pair. Each converts its pair of formats as the pair's converter does.
#define CYCBCR_CONVERTER_FORMS(X)      \
    CYCBCR_BYTE_ORDER_AVX2_FORMS(X)    \
    CYCBCR_PACKED_PLANAR_AVX2_FORMS(X) \
    CYCBCR_PLANAR_COPY_AVX2_FORMS(X)   \
    CYCBCR_V210_PLAIN_FORMS(X)         \
    CYCBCR_V210_UYVY_AVX2_FORMS(X)     \
    CYCBCR_V210_UNPACK_AVX2_FORMS(X)   \
    CYCBCR_V210_PACK_AVX2_FORMS(X)

#include "cycbcr.h"
#include "frame/formats.h"

namespace cycbcr {

// The same rows as a table, for code that walks them at run time.
struct ConverterRow {
    const char* name;
    cycbcr_converter fn;
    cycbcr_converter avx2;  // the form taken at level 5, or null
    Format from, to;
    bool pair;   // the pair's own converter, else an _avx2 or _opt form of it
    bool alias;  // a second name of another row's function
};

#define CYCBCR_ROW_IS_BODY false
#define CYCBCR_ROW_IS_ALIAS true
#define CYCBCR_PAIR_ROW(name, form, from, to, kind, ...) \
    {#name, name, form, Format::from, Format::to, true, CYCBCR_ROW_IS_##kind},
#define CYCBCR_FORM_ROW(name, form, from, to, kind, ...) \
    {#name, name, form, Format::from, Format::to, false, CYCBCR_ROW_IS_##kind},
// The semi-planar converters follow as the converters of their pairs, which the
// dispatcher does not have (no FourCC): they are called by name.
constexpr ConverterRow kConverterRows[] = {
    CYCBCR_PAIR_CONVERTERS(CYCBCR_PAIR_ROW) CYCBCR_CONVERTER_FORMS(CYCBCR_FORM_ROW)
        CYCBCR_SEMI_PLANAR_CONVERTERS(CYCBCR_PAIR_ROW)
            CYCBCR_SEMI_PLANAR_AVX2_FORMS(CYCBCR_FORM_ROW)};

// The converters between YCbCr and RGB, which add matrix and rgbType.
struct RgbConverterRow {
    const char* name;
    cycbcr_rgb_converter fn;
    cycbcr_rgb_converter avx2;  // the form taken at level 5, or null
    Format from, to;
    bool pair;
    bool alias;
};
constexpr RgbConverterRow kRgbConverterRows[] = {
    CYCBCR_TO_RGB_CONVERTERS(CYCBCR_PAIR_ROW) CYCBCR_TO_RGB_AVX2_FORMS(CYCBCR_FORM_ROW)
        CYCBCR_V210_TO_RGB_CONVERTERS(CYCBCR_PAIR_ROW)
            CYCBCR_V210_TO_RGB_AVX2_FORMS(CYCBCR_FORM_ROW)};

// The converters from RGB, which add matrix and rgbType and return 64 bits.
struct FromRgbConverterRow {
    const char* name;
    cycbcr_from_rgb_converter fn;
    cycbcr_from_rgb_converter avx2;  // the form taken at level 5, or null
    Format from, to;
    bool pair;
    bool alias;
};
constexpr FromRgbConverterRow kFromRgbConverterRows[] = {
    CYCBCR_FROM_RGB_CONVERTERS(CYCBCR_PAIR_ROW) CYCBCR_FROM_RGB_AVX2_FORMS(CYCBCR_FORM_ROW)
        CYCBCR_TO_V210_CONVERTERS(CYCBCR_PAIR_ROW)};
#undef CYCBCR_PAIR_ROW
#undef CYCBCR_FORM_ROW
#undef CYCBCR_ROW_IS_BODY
#undef CYCBCR_ROW_IS_ALIAS

}  // namespace cycbcr
