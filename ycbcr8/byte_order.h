// Row kernels and the frame walk of the packed 4:2:2 byte-order family.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cycbcr::detail {

// Calls row(dstRow, srcRow) for each of `height` rows. With `reverse`, destination
// row i receives source row height - 1 - i.
// Instantiated with a lambda of the calling file, so each file has its own copy.
template <class RowFn>
[[gnu::always_inline]] inline void walk_rows(uint8_t* dst, const uint8_t* src, uint32_t height,
                                             uint32_t dstPitch, uint32_t srcPitch, bool reverse,
                                             RowFn&& row) {
    if (height == 0) return;
    const uint8_t* s = src;
    ptrdiff_t step = srcPitch;
    if (reverse) {
        s = src + static_cast<size_t>(height - 1) * srcPitch;
        step = -step;
    }
    for (uint32_t i = 0; i < height; ++i, dst += dstPitch, s += step) row(dst, s);
}

// Exchanges bytes 1 and 3 of each of `pairs` 4-byte pixel pairs (YUY2 <-> YVYU).
// dst may equal src.
void chroma_exchange_row(uint8_t* dst, const uint8_t* src, size_t pairs);

// Frames whose destination is at least this large are written with streaming
// stores: they cannot stay in the cache anyway, and skipping the read for
// ownership of every destination line is worth a third of the memory traffic.
inline constexpr size_t kStreamBytes = size_t{8} << 20;

// AVX2 kernels (byte_order_avx2.cpp), giving the plain kernels' bytes. With
// `stream`, whole 32-byte blocks go out with streaming stores; the frame loop
// decides (stream_frame) and fences once at the end.
bool stream_frame(const uint8_t* dst, uint32_t dstPitch, uint32_t height);
// Swaps the bytes of each 16-bit word in the first n & ~1 bytes; dst may equal src.
void word_swap_row_avx2(uint8_t* dst, const uint8_t* src, size_t n, bool stream);
void chroma_exchange_row_avx2(uint8_t* dst, const uint8_t* src, size_t pairs, bool stream);
// Rotates the four bytes of each pixel pair: output byte j is input byte
// (j + by) % 4 (UYVY to YVYU is 1, YVYU to UYVY is 3). dst may equal src.
void rotate_pairs_row_avx2(uint8_t* dst, const uint8_t* src, size_t pairs, int by, bool stream);
// Plain copy of n bytes in 32-byte blocks; the ranges must not overlap.
void copy_row_avx2(uint8_t* dst, const uint8_t* src, size_t n, bool stream);

}  // namespace cycbcr::detail
