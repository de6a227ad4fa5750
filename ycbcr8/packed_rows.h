// Row kernels between packed 4:2:2 pixel pairs and separate Y, Cb and Cr rows,
// for each packed shape. The plain kernels (SSE2, baseline x86-64) serve the
// engines, their plain forms and the imaging-library equivalents; the AVX2
// kernels the AVX2 forms and the engines at level 5.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/formats.h"

namespace cycbcr {

// Splits `pairs` pixel pairs of a packed row whose Y, Cb and Cr samples start at
// sy, scb and scr (each recurring every four bytes, the second Y two bytes after
// the first) into 2 * pairs Y bytes and, when `chroma`, pairs Cb and Cr bytes.
// Overlapping chroma rows end as pair-by-pair writing would leave them.
using SplitRow = void (*)(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                          uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma);
// Writes `pairs` pixel pairs (Y0 at dy, Y1 at dy + 2, Cb at dcb, Cr at dcr, the
// next pair four bytes on) from 2 * pairs Y bytes and pairs Cb and Cr bytes.
using MergeRow = void (*)(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y,
                          const uint8_t* cb, const uint8_t* cr, size_t pairs);

// Calls body.template operator()<S>() with the shape as a constant: UYVY, YUY2
// or YVYU, and Unknown for any other placement of the three samples.
template <class Body>
CYCBCR_INLINE auto with_shape(Format shape, Body&& body) {
    switch (shape) {
        case Format::UYVY:
            return body.template operator()<Format::UYVY>();
        case Format::YUY2:
            return body.template operator()<Format::YUY2>();
        case Format::YVYU:
            return body.template operator()<Format::YVYU>();
        default:
            return body.template operator()<Format::Unknown>();
    }
}

namespace plain {
// Kernels for a shape: UYVY, YUY2 and YVYU pairs, or Unknown for any other
// placement of the three samples (a byte at a time).
template <Format Shape>
void split_row(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y, uint8_t* cb,
               uint8_t* cr, size_t pairs, bool chroma);
template <Format Shape>
void merge_row(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
               const uint8_t* cr, size_t pairs);
SplitRow split_kernel(Format shape);
MergeRow merge_kernel(Format shape);
}  // namespace plain

namespace avx2 {
// With `pairwise`, luma and chroma are written together 16 pairs at a time, for
// frames where a row's luma may land on its chroma; otherwise luma first, then
// chroma, which is cheaper.
SplitRow split_kernel(Format shape, bool pairwise);
MergeRow merge_kernel(Format shape);
}  // namespace avx2

}  // namespace cycbcr
