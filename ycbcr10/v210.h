// The v210 word and group layout, and the group kernels every v210 converter
// builds on.
//
// A group is six pixels in four little-endian words of three 10-bit samples:
//   word 0: Cb0 Y0 Cr0   word 1: Y1 Cb1 Y2   word 2: Cr1 Y3 Cb2   word 3: Y4 Cr2 Y5
// Read in address order the twelve samples are exactly the UYVY byte order
// (Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3 Cb2 Y4 Cr2 Y5), which the UYVY pair relies on.
#pragma once

#include <cstdint>
#include <cstring>

#include "frame/inline.h"

namespace cycbcr {

constexpr uint32_t kV210GroupBytes = 16;

CYCBCR_INLINE uint32_t load_le32(const uint8_t* p) {
    uint32_t w;
    std::memcpy(&w, p, 4);
    return w;
}
CYCBCR_INLINE void store_le32(uint8_t* p, uint32_t w) {
    std::memcpy(p, &w, 4);
}

// Sample k (0..11, in address order) of a group.
CYCBCR_INLINE uint32_t v210_sample(const uint8_t* group, unsigned k) {
    return (load_le32(group + 4 * (k / 3)) >> (10 * (k % 3))) & 0x3FF;
}

// One word from three 10-bit samples; bits 30-31 written as 0.
CYCBCR_INLINE uint32_t v210_word(uint32_t a, uint32_t b, uint32_t c) {
    return a | (b << 10) | (c << 20);
}

// The group of twelve 8-bit samples s[0..11] (UYVY order), each widened by << 2.
CYCBCR_INLINE void pack_group_u8(uint8_t* out, const uint8_t s[12]) {
    for (unsigned w = 0; w < 4; ++w)
        store_le32(out + 4 * w, v210_word(s[3 * w] << 2, s[3 * w + 1] << 2, s[3 * w + 2] << 2));
}

// Positions of the Y, Cb and Cr samples of a group in address order.
constexpr uint8_t kGroupY[6] = {1, 3, 5, 7, 9, 11};
constexpr uint8_t kGroupCb[3] = {0, 4, 8};
constexpr uint8_t kGroupCr[3] = {2, 6, 10};

// The three 10-to-8-bit rules; each converter keeps its own.
CYCBCR_INLINE uint8_t round_saturate_10to8(uint32_t v) {
    return v > 1020 ? 255 : static_cast<uint8_t>((v + 2) >> 2);
}
CYCBCR_INLINE uint8_t round_wrap_10to8(uint32_t v) {
    return static_cast<uint8_t>((v + 2) >> 2);
}
CYCBCR_INLINE uint8_t truncate_10to8(uint32_t v) {
    return static_cast<uint8_t>(v >> 2);
}

// Groups of a row: whole six-pixel groups for the packers, the width rounded up
// to twelve pixels for the unpackers, which go two groups a step.
CYCBCR_INLINE constexpr uint32_t pack_groups(uint32_t width) {
    return (width + 5) / 6;
}
CYCBCR_INLINE constexpr uint32_t unpack_groups(uint32_t width) {
    return (width + 11) / 12 * 2;
}

// A group kernel: `groups` groups of one row from src to dst.
using GroupRow = void (*)(uint8_t* dst, const uint8_t* src, uint32_t groups);

namespace plain {
// UYVY (12 bytes a group) to v210 (16 bytes), each group read fully before it is
// written.
void uyvy_groups_to_v210(uint8_t* dst, const uint8_t* src, uint32_t groups);
}  // namespace plain

namespace avx2 {
void uyvy_groups_to_v210(uint8_t* dst, const uint8_t* src, uint32_t groups);
// v210 groups to their samples in address order (UYVY order) as bytes, rounded
// and wrapped (`round`) or truncated.
GroupRow v210_groups_to_u8(bool round);
// The same as 16-bit samples v << 6; stores up to 4 bytes past the last group,
// so callers give it a slack.
void v210_groups_to_u16(uint16_t* dst, const uint8_t* src, uint32_t groups);

// v210 into 8-bit planes with the bytes of Fromv210: luma rows dstPitch apart,
// chroma rows dstPitch / 2 apart, row r (`full`, 4:2:2) or r / 2 with the odd
// row's chroma remaining.
void v210_to_planes8(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t width,
                     uint32_t height, uint32_t dstPitch, uint32_t srcPitch, bool full);
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
}  // namespace avx2

// The frame walk shared by cycbcr_uyvy_to_012v_opt and its AVX2 form: pitch rule,
// bottom-to-top order of work, overlapping and short rows group by group.
unsigned int uyvy_to_v210_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, GroupRow rows);

}  // namespace cycbcr

// Row helpers of the AVX2 converters of the wider families.
//
// Finishes pixels start..end-1 of the v210 row row0 as 16-bit samples (v << 6):
// Y to dstY[i]; when dstC is given, Cb and Cr of pixel pair k to dstC[2k] and
// dstC[2k + 1], averaged with row1's as (a + b) >> 1 when `average` is set.
void v210_tail_mixed_avx2(unsigned short* dstY, unsigned short* dstC, unsigned int* row0,
                          unsigned int* row1, unsigned int start, unsigned int end, bool average);

// One row of 16-bit 4:2:2 planar samples into UYVY bytes, each byte the sample
// shifted right by `shift`. Sixteen pixels per step clamp to 0..255 (a shift of
// 16 or more gives 0); the remaining pixels keep the low eight bits. Writes
// width / 2 pixel pairs.
void store_uyvy_from_16bit_row(unsigned char* dst, const unsigned short* y,
                               const unsigned short* cb, const unsigned short* cr,
                               unsigned int width, unsigned int shift);
