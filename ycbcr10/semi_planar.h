// Semi-planar 4:2:0 frames: a Y plane followed by one plane of interleaved Cb,
// Cr pairs, with 8-bit (NV12), 10-bit in 16-bit words (NV10) or 16-bit
// (NV12p16) samples. NV12 and NV10 are read into v210 and UYVY; NV12p16 is
// written from three 16-bit planes.
//
// Geometry, shared by the plain and AVX2 forms:
//   - NV12 source: pitch P = max(width, srcPitch), chroma plane at P * height,
//     chroma rows P apart; NV10 the same with P = max(2 * width, srcPitch).
//     Output row r takes luma row r and chroma row r / 2 (no filter).
//   - Into v210: ceil(width / 6) whole groups a row, so the last group is built
//     from the samples after the row's last pixel; rows at
//     max(v210_row_bytes(width), dstPitch). Returns height * v210_row_bytes.
//   - Into UYVY: width / 2 pixel pairs a row at max(2 * width, dstPitch); an odd
//     last pixel has no pair and is not written (as in the library's other
//     16-bit planar to UYVY rows), so nothing lands past 2 * width. Returns the
//     pitch used times the height.
//   - NV12p16 from three planes of 16-bit words (Y rows srcPitch apart, chroma
//     rows srcPitch / 2 apart): Y rows of width samples and height / 2 chroma
//     rows of width / 2 Cb, Cr pairs, both at D = max(2 * width, dstPitch),
//     the chroma plane at D * height. An odd height's last row has no chroma
//     row of its own (source chroma row height / 2 is not read), and an odd
//     width's last pixel no chroma pair, so nothing is written past
//     D * (height + height / 2), the count returned. Samples are shifted left
//     by 6, 4 or 0 and kept to 16 bits: bits of a 10- or 12-bit sample above its
//     depth fall out of the word, the same as masking them first.
//
// The AVX2 forms write exactly the plain bytes, read exactly the plain bytes,
// and finish each row's tail (less than one vector step) with the plain kernel.
#pragma once

#include <algorithm>
#include <cstdint>

#include "frame/buffer_sizes.h"
#include "frame/geometry.h"
#include "frame/inline.h"

namespace cycbcr::semi_planar {

// Pitches: an NV12 or NV10 source (`sampleBytes` 1 or 2), and the UYVY and
// NV12p16 destinations.
CYCBCR_INLINE constexpr uint32_t source_pitch(uint32_t width, uint32_t pitch,
                                              uint32_t sampleBytes) {
    return std::max(sampleBytes * width, pitch);
}
CYCBCR_INLINE constexpr uint32_t wide_pitch(uint32_t width, uint32_t pitch) {
    return std::max(2 * width, pitch);
}

// Row kernels. Two-plane rows: `n` groups (into v210) or pixel pairs (into
// UYVY) from a luma row y and a row of interleaved chroma c.
using TwoPlaneRow = void (*)(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t n);
// `n` 16-bit samples, each shifted left by `shift` (kept to 16 bits).
using WidenRow = void (*)(uint8_t* dst, const uint8_t* src, uint32_t n, unsigned shift);
// `n` Cb, Cr pairs of 16-bit samples from two planes, shifted as WidenRow.
using InterleaveRow = void (*)(uint8_t* dst, const uint8_t* cb, const uint8_t* cr, uint32_t n,
                               unsigned shift);

namespace plain {
void nv12_groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t groups);
void nv10_groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t groups);
void nv12_pairs_to_uyvy(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t pairs);
void widen_row(uint8_t* dst, const uint8_t* src, uint32_t n, unsigned shift);
void interleave_row(uint8_t* dst, const uint8_t* cb, const uint8_t* cr, uint32_t n, unsigned shift);
}  // namespace plain

// The frame walks of both forms, with the rules above.
unsigned int nv_to_v210_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                              uint32_t dstPitch, uint32_t srcPitch, uint32_t sampleBytes,
                              TwoPlaneRow row);
unsigned int nv12_to_uyvy_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, TwoPlaneRow row);
unsigned int planar_to_nv12p16_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                     const uint8_t* cr, uint32_t width, uint32_t height,
                                     uint32_t dstPitch, uint32_t srcPitch, unsigned shift,
                                     WidenRow luma, InterleaveRow chroma);

}  // namespace cycbcr::semi_planar

namespace cycbcr {
// The bytes the NV12 and NV10 converters touch (both forms, every level).
Extent semi_planar_extent(Format from, Format to, const Call& c);
// The NV12p16 producers by name (AVX2 forms included): bytes reached from dst,
// srcY, srcCb and srcCr, for pitches (dstPitch, srcPitch).
bool semi_planar_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);
}  // namespace cycbcr
