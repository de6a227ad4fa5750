// What the imaging-library functions share among themselves: the argument checks
// and the colour row kernels, plain and AVX2. Internal to platform/.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "frame/formats.h"
#include "frame/inline.h"
#include "frame/row_walk.h"
#include "platform/imaging.h"

namespace cycbcr::ipp {

// Checks in the library's order: pointers, then size, then steps.
template <size_t N>
IppStatus check(const void* const (&ptrs)[N], IppiSize roi, int minW, int minH,
                std::initializer_list<int> steps) {
    for (const void* p : ptrs)
        if (p == nullptr) return ippStsNullPtrErr;
    if (roi.width < minW || roi.height < minH) return ippStsSizeErr;
    for (int s : steps)
        if (s <= 0) return ippStsStepErr;
    return ippStsNoErr;
}

// Rows `step` bytes apart, as the library's steps are given.
CYCBCR_INLINE Rows rows_of(const void* p, int step) {
    return rows_down(p, static_cast<size_t>(step));
}

// ---- YCbCr to RGB ----

enum class Matrix : uint8_t { Bt601, Bt709Csc, Bt709Hdtv };
// Output pixels: B, G, R, alpha; B, G, R; or R, G, B.
enum class Pixel : uint8_t { BGRA, BGR, RGB };

CYCBCR_INLINE constexpr size_t pixel_bytes(Pixel p) {
    return p == Pixel::BGRA ? 4 : 3;
}

// A coefficient given in thousandths as a Q16 integer, rounded half away from
// zero, so that every path (and every compiler) agrees to the bit.
consteval int32_t q16(int32_t thousandths) {
    return (thousandths * 65536 + (thousandths < 0 ? -500 : 500)) / 1000;
}

// channel = (y * (Y - black) + cb * (Cb - 128) + cr * (Cr - 128) + 32768) >> 16,
// clamped to 0..255, with the coefficients below.
struct Coefficients {
    int32_t y;
    int32_t black;  // the luma the matrix subtracts before scaling
    int32_t rCr, gCr, gCb, bCb;
};

consteval Coefficients coefficients(Matrix m) {
    switch (m) {
        case Matrix::Bt601:
            return {q16(1164), 16, q16(1596), q16(-813), q16(-392), q16(2017)};
        case Matrix::Bt709Csc:
            return {q16(1164), 16, q16(1793), q16(-534), q16(-213), q16(2115)};
        case Matrix::Bt709Hdtv:
            // Studio RGB out: luma passes through unscaled.
            return {65536, 0, q16(1540), q16(-459), q16(-183), q16(1816)};
    }
    return {};
}

// `pairs` pixel pairs of one packed 4:2:2 row (UYVY or YVYU) to RGB pixels.
using PackedColourRow = void (*)(const Ipp8u* src, Ipp8u* dst, size_t pairs, Ipp8u alpha);
// Two output rows sharing one 4:2:0 chroma row: 2 * pairs pixels each.
using PlanarColourRows = void (*)(const Ipp8u* y0, const Ipp8u* y1, const Ipp8u* cb,
                                  const Ipp8u* cr, Ipp8u* d0, Ipp8u* d1, size_t pairs, Ipp8u alpha);

}  // namespace cycbcr::ipp

// The row kernels sit beside the library's other plain and AVX2 kernels.
namespace cycbcr::plain {
// Instantiated in imaging_colour.cpp for the combinations the library exports;
// the AVX2 kernels finish their rows with these.
template <ipp::Matrix M, Format Shape, ipp::Pixel P>
void imaging_packed_row(const uint8_t* src, uint8_t* dst, size_t pairs, uint8_t alpha);
template <ipp::Matrix M, ipp::Pixel P>
void imaging_planar_rows(const uint8_t* y0, const uint8_t* y1, const uint8_t* cb, const uint8_t* cr,
                         uint8_t* d0, uint8_t* d1, size_t pairs, uint8_t alpha);
}  // namespace cycbcr::plain

namespace cycbcr::avx2 {
// The AVX2 kernel of a combination, giving the plain kernel's bytes; nullptr
// where there is none.
ipp::PackedColourRow imaging_packed_kernel(ipp::Matrix m, Format shape, ipp::Pixel p);
ipp::PlanarColourRows imaging_planar_kernel(ipp::Matrix m, ipp::Pixel p);
}  // namespace cycbcr::avx2
