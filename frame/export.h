// Export helpers shared by the converter families.
#pragma once

#include <cstdint>

#include "cycbcr.h"

// The argument list every dispatcher-called converter shares.
#define CYCBCR_CONVERTER_ARGS                                                  \
    uint8_t *dst, const uint8_t *src, unsigned int width, unsigned int height, \
        unsigned int dstPitch, unsigned int srcPitch

// Exports `name` as a second name of the converter `target` (one body, two
// symbols), for operations that are their own inverse. Must sit in the
// translation unit that defines `target`.
#define CYCBCR_CONVERTER_ALIAS(name, target)                                                      \
    extern "C" CYCBCR_API unsigned int name(uint8_t*, const uint8_t*, unsigned int, unsigned int, \
                                            unsigned int, unsigned int)                           \
        __attribute__((alias(#target)))
