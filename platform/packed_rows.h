// Row kernels between packed 4:2:2 pixel pairs and separate Y, Cb, Cr rows.
// Baseline x86-64 (SSE2); used by the plain converter paths and the
// imaging-library equivalents.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cycbcr {

// The three packed byte orders, by the place of Y0, Cb, Y1 and Cr in a pair.
enum class PackedOrder { YUY2, UYVY, YVYU };

// Splits `pairs` pixel pairs into 2 * pairs Y bytes and, when `chroma` is set,
// pairs Cb and Cr bytes.
void split_packed_row(PackedOrder order, const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr,
                      size_t pairs, bool chroma);

// Builds `pairs` pixel pairs from 2 * pairs Y bytes and pairs Cb and Cr bytes.
void merge_packed_row(PackedOrder order, uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                      const uint8_t* cr, size_t pairs);

}  // namespace cycbcr
