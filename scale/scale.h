// Reduced-size 8-bit planar frames from v210 and UYVY: the row kernels of the
// reductions, shared by the plain and AVX2 forms, and the family's buffer sizes.
//
// Output planes are packed with no padding: a Y row of an output W samples wide
// takes 4 * ceil(W / 4) bytes, a chroma row half that; chroma rows follow on
// every output row (4:2:2) or on even output rows only (4:2:0).
#pragma once

#include <cstdint>

#include "frame/buffer_sizes.h"

namespace cycbcr::scale {

// One output row of the reduction by 1.5: `groups` groups of six source pixels
// (12 UYVY bytes or one 16-byte v210 group each) into four luma samples and,
// when cb is given, two Cb and two Cr samples.
using ReduceRow = void (*)(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                           uint32_t groups);

// One output row of the general v210 reduction by `step`: `count` luma samples
// (output sample i sits on source pixel step * i) and, when cb is given,
// count / 2 Cb and Cr samples.
using StepRow = void (*)(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                         uint32_t count);

namespace plain {
void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups);
void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups);
void v210_step_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                   uint32_t count);
}  // namespace plain

namespace avx2 {
// The same bytes as the plain kernels; the tails are finished by them.
void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups);
void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups);
}  // namespace avx2

// The bytes reached from each pointer (Y, Cb, Cr, source) of the scaling
// converters; c.arg(0..3) are dstPitch, srcPitch, scale, is422.
bool scale_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

}  // namespace cycbcr::scale
