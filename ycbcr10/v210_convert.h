// v210 to and from the 8-bit formats other than UYVY: frame walks shared by the
// plain entries' AVX2 twins, and the internal AVX2 kernels named by the entries.
#pragma once

#include <cstdint>

namespace cycbcr::detail {

// v210 into 8-bit 4:2:0 planes placed at dstPitch (I420 order, or YV12's with
// swapCbCr): truncated samples, 12 pixels per step, the odd row's chroma
// remaining. Returns width * height * 3 / 2.
unsigned int v210_to_planar420_8_avx2(uint8_t* dst, const uint8_t* src, uint32_t width,
                                      uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                                      bool swapCbCr);

// 8-bit 4:2:0 rows into v210: luma row r at y + r * lumaPitch, chroma row r / 2 at
// cb/cr + (r / 2) * chromaPitch with `chromaStep` bytes between samples (1 for
// separate planes, 2 for an interleaved CbCr plane, Cr one byte after Cb).
// Destination pitch: the larger of v210_row_bytes(width) and dstPitch. Returns
// height * v210_row_bytes(width).
unsigned int pack_v210_u8_rows_avx2(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                    const uint8_t* cr, uint32_t width, uint32_t height,
                                    uint32_t dstPitch, uint32_t lumaPitch, uint32_t chromaPitch,
                                    uint32_t chromaStep);

}  // namespace cycbcr::detail
