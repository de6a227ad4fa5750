// Row kernels of the packed 4:2:2 byte-order family, also used by the v210
// conversions to change byte order in a row held in the cache.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/memory.h"

namespace cycbcr {

// A kernel that rewrites the first n bytes of a row (n a multiple of 4 for the
// pair kernels); dst may equal src.
using ByteRow = void (*)(uint8_t* dst, const uint8_t* src, size_t n);

namespace plain {
// Exchanges bytes 1 and 3 of each 4-byte pixel pair (YUY2 <-> YVYU).
void chroma_exchange_row(uint8_t* dst, const uint8_t* src, size_t n);
}  // namespace plain

namespace avx2 {
// The byte swap of each 16-bit word of the first n & ~1 bytes.
ByteRow word_swap_row(Store store);
// Bytes 1 and 3 of each pair exchanged.
ByteRow chroma_exchange_row(Store store);
// The four bytes of each pair rotated: output byte j is input byte (j + by) % 4
// (UYVY to YVYU is 1, YVYU to UYVY is 3). Cached stores.
ByteRow rotate_pairs_row(int by);
}  // namespace avx2

}  // namespace cycbcr
