// High-bit-depth YCbCr (10-, 12- and 16-bit samples in little-endian 16-bit
// words) to packed RGB: the arithmetic rules of the family, the row kernels and
// what the plain engine and its AVX2 rows share.
#pragma once

#include <cstdint>

#include "frame/buffer_sizes.h"
#include "frame/inline.h"
#include "torgb/colour_tables.h"
#include "torgb/rgb_pixels.h"

namespace cycbcr::colour {

// How a member brings its samples and sums to its output. Samples are masked
// (or shifted) first, so bits above the sample width never reach the sums;
// each channel sum is divided by `div` truncating toward zero and clamped to
// 0..max.
enum class HbdFamily : uint8_t { A, B, C };
struct HbdRule {
    HbdFamily family;
    uint32_t mask;   // kept bits of each sample word
    uint32_t shift;  // then shifted right by this much
    int32_t mid;     // chroma midpoint
    int32_t div;     // divisor of each channel sum
    int32_t max;     // 255 or 65535
};
// 10-bit planes, family A on the 8-bit scale: the 8-bit offset taken from the
// raw 10-bit luma, / 40000.
inline constexpr HbdRule kRule10A{HbdFamily::A, 0x3FF, 0, 512, 40000, 255};
// 10-bit planes, family C, / 160 (16 bits a channel, and the packed 10-bit word).
inline constexpr HbdRule kRule10C{HbdFamily::C, 0x3FF, 0, 512, 160, 65535};
// 12-bit planes, family C gains with the 12-bit offsets, / 640.
inline constexpr HbdRule kRule12C{HbdFamily::C, 0xFFF, 0, 2048, 640, 65535};
// 16-bit planes, each sample >> 8, then family A as 8-bit samples, / 10000.
inline constexpr HbdRule kRule16A{HbdFamily::A, 0xFFFF, 8, 128, 10000, 255};
// One 10-bit planar frame, family B, / 10000.
inline constexpr HbdRule kRule10B{HbdFamily::B, 0x3FF, 0, 512, 10000, 255};

// The coefficient row a rule takes for a matrix (12-bit input: family C with
// the offset 256 where 10-bit input has 64).
ToRgbRow<int32_t> hbd_row(const HbdRule& r, QBYCBCRMatrix matrix);

// One row of pixel pairs from planes of 16-bit samples (pointers as bytes: a
// pitch may be odd). Planar rows: Y at 2p and 2p + 1, Cb and Cr at p; packed
// rows: Y at 4p and 4p + 2, Cb and Cr at 4p (in samples).
struct HbdRowArgs {
    uint8_t* dst;
    const uint8_t* y;
    const uint8_t* cb;
    const uint8_t* cr;
    uint32_t pairs;
};

// Output forms: the RGB depths of rgb_pixels.h, and the packed 10-bit word.
enum class HbdOut : uint8_t { Rgb555, Rgb565, Rgb24, Rgb32, Rgb48, Rgb64, Word10 };
// Bytes of one output pixel.
CYCBCR_INLINE constexpr size_t out_bytes(HbdOut o) {
    switch (o) {
        case HbdOut::Rgb555:
        case HbdOut::Rgb565:
            return 2;
        case HbdOut::Rgb24:
            return 3;
        case HbdOut::Rgb48:
            return 6;
        case HbdOut::Rgb64:
            return 8;
        default:
            return 4;
    }
}

using HbdPlainRow = void (*)(const HbdRowArgs& a, const ToRgbRow<int32_t>& k);
using HbdVectorRow = void (*)(const HbdRowArgs& a, const ToRgbRow<int32_t>& k, HbdPlainRow tail);

// The AVX2 row of a planar rule and output, or null where there is none (the
// plain rows serve those); the kernels need a processor with AVX2.
// `stream` rows write whole 32-byte blocks with streaming stores and need rows
// 32-byte aligned (platform/memory.h store_for).
HbdVectorRow hbd_avx2_row(const HbdRule& r, HbdOut out, RgbOrder o, bool stream);

// The AVX2 rows divide in floats. A rule whose clamp range 0 .. div * (max + 1)
// - 1 lies within 2^24 multiplies the sum as it stands by hbd_reciprocal(div);
// a wider one first shifts the sum right by the power of two in div (a floor of
// a floor is the floor of the whole quotient) and multiplies by the
// reciprocal of the odd rest. hbd_reciprocal(n) is the smallest float not below
// 1 / n. For every sum of the range the truncated product is the integer
// quotient: the tests check each one.
CYCBCR_INLINE constexpr uint32_t hbd_vector_shift(const HbdRule& r) {
    if (static_cast<int64_t>(r.div) * (r.max + 1) <= (int64_t{1} << 24)) return 0;
    uint32_t k = 0;
    for (int32_t d = r.div; d % 2 == 0; d /= 2) ++k;
    return k;
}
float hbd_reciprocal(int32_t n);

// Converters with separate plane pointers of this family (frame/buffer_sizes.h).
bool hbd_to_rgb_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

}  // namespace cycbcr::colour
