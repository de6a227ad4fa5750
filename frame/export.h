// Export helpers shared by the converter families, and the shape of their
// converter lists.
#pragma once

#include <cstdint>

#include "cycbcr.h"

// The argument list every dispatcher-called converter shares, and its names.
#define CYCBCR_CONVERTER_ARGS                                                  \
    uint8_t *dst, const uint8_t *src, unsigned int width, unsigned int height, \
        unsigned int dstPitch, unsigned int srcPitch
#define CYCBCR_CONVERTER_CALL dst, src, width, height, dstPitch, srcPitch

// Exports `name` as a second name of the converter `target` (one body, two
// symbols), for operations that are their own inverse. Must sit in the
// translation unit that defines `target`.
#define CYCBCR_CONVERTER_ALIAS(name, target)                                                      \
    extern "C" CYCBCR_API unsigned int name(uint8_t*, const uint8_t*, unsigned int, unsigned int, \
                                            unsigned int, unsigned int)                           \
        __attribute__((alias(#target)));

// Converter lists. Each family keeps one list of its converters with the
// converter argument list, as rows
//     X(name, avx2, from, to, BODY)
//     X(name, avx2, from, to, ALIAS, target)
// name: the exported function, spelled in full; avx2: the AVX2 form it hands
// over to at level 5, or nullptr; from, to: Format enumerators; BODY: it has
// code of its own; ALIAS: it is a second name of `target`. The family's files
// define their functions from it, and the dispatcher, the buffer-size query,
// the tests and the benchmarks read the same rows (frame/converters.h).
//
// A file defines its rows by naming its family's entry template, which takes
// <Format from, Format to, form>, and expanding its list with CYCBCR_DEFINE:
//     #define CYCBCR_ENTRY cycbcr::byte_order
//     CYCBCR_BYTE_ORDER_PAIRS(CYCBCR_DEFINE)
//     #undef CYCBCR_ENTRY
// Each BODY row becomes an exported function returning its entry's result,
// each ALIAS row a second name of its target.
#define CYCBCR_DEFINE(name, form, from, to, kind, ...) \
    CYCBCR_DEFINE_##kind(name, form, from, to, __VA_ARGS__)
#define CYCBCR_DEFINE_BODY(name, form, from, to, ...)                        \
    CYCBCR_API unsigned int name(CYCBCR_CONVERTER_ARGS) {                    \
        return CYCBCR_ENTRY<cycbcr::Format::from, cycbcr::Format::to, form>( \
            CYCBCR_CONVERTER_CALL);                                          \
    }
#define CYCBCR_DEFINE_ALIAS(name, form, from, to, target) CYCBCR_CONVERTER_ALIAS(name, target)

// The same for the converters between YCbCr and RGB, whose argument list adds
// the colour matrix and the RGB layout:
//     #define CYCBCR_ENTRY cycbcr::colour::to_rgb
//     CYCBCR_TO_RGB_CONVERTERS(CYCBCR_DEFINE_RGB)
#define CYCBCR_RGB_CONVERTER_ARGS \
    CYCBCR_CONVERTER_ARGS, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType
#define CYCBCR_RGB_CONVERTER_CALL CYCBCR_CONVERTER_CALL, matrix, rgbType
#define CYCBCR_DEFINE_RGB(name, form, from, to, kind, ...)                   \
    CYCBCR_API unsigned int name(CYCBCR_RGB_CONVERTER_ARGS) {                \
        return CYCBCR_ENTRY<cycbcr::Format::from, cycbcr::Format::to, form>( \
            CYCBCR_RGB_CONVERTER_CALL);                                      \
    }

// The converters from RGB return the 64-bit count of their engine:
//     #define CYCBCR_ENTRY cycbcr::fromrgb::from_rgb
//     CYCBCR_FROM_RGB_CONVERTERS(CYCBCR_DEFINE_FROM_RGB)
#define CYCBCR_DEFINE_FROM_RGB(name, form, from, to, kind, ...)              \
    CYCBCR_API uint64_t name(CYCBCR_RGB_CONVERTER_ARGS) {                    \
        return CYCBCR_ENTRY<cycbcr::Format::from, cycbcr::Format::to, form>( \
            CYCBCR_RGB_CONVERTER_CALL);                                      \
    }
