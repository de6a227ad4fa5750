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

constexpr Coefficients coefficients(Matrix m) {
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

// ---- RGB to YCbCr ----

// sample = (b * B + g * G + r * R + (offset << 16) + 32768) >> 16 for luma; a
// pair's chroma rounds the two pixels' sums together, (s0 + s1 + 65536) >> 17.
// Every sample is clamped to low..high.
struct Weights {
    int32_t b, g, r;
};
struct ForwardCoefficients {
    Weights y, cb, cr;
    int32_t yOffset;  // chroma is offset by 128
    int32_t low, high;
};

constexpr ForwardCoefficients forward_coefficients(Matrix m) {
    if (m == Matrix::Bt709Hdtv)
        // Studio RGB in: no luma offset, and the codes 0 and 255 kept free.
        return {{q16(72), q16(715), q16(213)},
                {q16(511), q16(-394), q16(-117)},
                {q16(-47), q16(-464), q16(511)},
                0,
                1,
                254};
    return {{q16(98), q16(504), q16(257)},
            {q16(439), q16(-291), q16(-148)},
            {q16(-71), q16(-368), q16(439)},
            16,
            0,
            255};
}

// Weights for the 16-bit words of a 64-bit group as madd takes them: the low
// and high words of its even 32-bit lane, then of its odd one. A weight above
// 32767 (up to 98303) is wide: madd takes it as k - 65536, and the kernels add
// the word's 65536 * s back.
struct WordWeights {
    int32_t k[4];

    constexpr bool wide(int i) const { return k[i] > 32767; }
    // The madd operand of the even (0) or odd (1) lane.
    constexpr int32_t operand(int lane) const {
        auto half = [&](int i) {
            return static_cast<uint32_t>(static_cast<uint16_t>(wide(i) ? k[i] - 65536 : k[i]));
        };
        return static_cast<int32_t>(half(2 * lane) | half(2 * lane + 1) << 16);
    }
    constexpr bool valid() const {
        for (int32_t w : k)
            if (w < -32768 || w > 98303) return false;
        return true;
    }
};

// `pairs` pixel pairs of B, G, R, A pixels to one UYVY row.
using PackedFromRgbRow = void (*)(const Ipp8u* src, Ipp8u* dst, size_t pairs);

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
// B, G, R, A pairs to UYVY, for Bt601 and Bt709Hdtv.
template <ipp::Matrix M>
void imaging_uyvy_from_bgra_row(const uint8_t* src, uint8_t* dst, size_t pairs);
}  // namespace cycbcr::plain

namespace cycbcr::avx2 {
// The AVX2 kernel of a combination, giving the plain kernel's bytes; nullptr
// where there is none.
ipp::PackedColourRow imaging_packed_kernel(ipp::Matrix m, Format shape, ipp::Pixel p);
ipp::PlanarColourRows imaging_planar_kernel(ipp::Matrix m, ipp::Pixel p);
ipp::PackedFromRgbRow imaging_uyvy_from_bgra_kernel(ipp::Matrix m);
}  // namespace cycbcr::avx2
