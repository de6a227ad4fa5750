// Reduced-size 8-bit planar frames from v210 and UYVY: the row kernels of the
// reductions, shared by the plain and AVX2 forms, and the family's buffer sizes.
//
// Output planes are packed with no padding: a Y row of an output W samples wide
// takes 4 * ceil(W / 4) bytes, a chroma row half that; chroma rows follow on
// every output row (4:2:2) or on even output rows only (4:2:0).
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/buffer_sizes.h"

namespace cycbcr::scale {

// One output row of the reduction by 1.5: `groups` groups of six source pixels
// (12 UYVY bytes or one 16-byte v210 group each) into four luma samples and,
// when cb is given, two Cb and two Cr samples. `ahead` is the distance to the
// next source row read (0 for none), for the AVX2 forms to ask for its lines.
using ReduceRow = void (*)(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                           uint32_t groups, size_t ahead);

// v210 groups unpacked to their twelve samples each in address order, as 16-bit
// v << 6; may store 4 bytes past the last group.
using SampleGroups = void (*)(uint16_t* dst, const uint8_t* src, uint32_t groups);

namespace plain {
void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t ahead);
void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t ahead);
// v210 groups to samples (the plain SampleGroups).
void v210_groups_to_samples(uint16_t* dst, const uint8_t* src, uint32_t groups);
// One output row of the v210 reduction by `step` (1 to 4): `count` luma samples
// (output sample i sits on source pixel step * i) and, when cb is given,
// count / 2 Cb and Cr samples; the groups are unpacked by `unpack` (the AVX2
// unpacker at level 5, the same samples). `ahead` is the AVX2 form's distance
// to the next source row read, unused here.
void v210_step_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                   uint32_t count, SampleGroups unpack, size_t ahead);
}  // namespace plain

// One output row of the general path: where its samples go and its source row.
struct StepRow {
    uint8_t* y;
    uint8_t* cb;  // null on rows without chroma
    uint8_t* cr;
    const uint8_t* src;
};

namespace avx2 {
// The same bytes as the plain kernels; the tails are finished by them. Each
// step asks for the same bytes of the next source row read, `ahead` on, and
// for the output lines it will write a few steps later.
void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t ahead);
void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t ahead);
// Steps 2 and 4 24 output pixels at a time, step 3 16 at a time; other steps
// and the row's last pixels through plain::v210_step_row. Each step asks for
// the same bytes `ahead` further on, in the next source row read: rows read
// some apart are a pattern the hardware prefetcher does not follow.
void v210_step_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                   uint32_t count, SampleGroups unpack, size_t ahead);
// Two output rows, the same bytes as two v210_step_row calls; at step 2 their
// turns alternate, so both source rows stream in at once.
void v210_step_rows(const StepRow& a, const StepRow& b, uint32_t step, uint32_t count,
                    SampleGroups unpack, size_t ahead);
}  // namespace avx2

// The bytes reached from each pointer (Y, Cb, Cr, source) of the scaling
// converters; c.arg(0..3) are dstPitch, srcPitch, scale, is422.
bool scale_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

}  // namespace cycbcr::scale
