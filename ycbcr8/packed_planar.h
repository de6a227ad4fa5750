// Frame walks and row kernels of the packed <-> planar 8-bit family.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cycbcr::detail {

// Splits `pairs` pixel pairs of a packed row whose Y, Cb and Cr samples start at
// sy, scb, scr (each recurring every 4 bytes, the second Y 2 bytes after the
// first) into 2 * pairs Y bytes and, when `chroma`, pairs Cb and Cr bytes.
using SplitRow = void (*)(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                          uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma);
// Writes `pairs` pixel pairs (Y0 at dy, Y1 at dy + 2, Cb at dcb, Cr at dcr, the
// next pair 4 bytes on) from 2 * pairs Y bytes and pairs Cb and Cr bytes.
using MergeRow = void (*)(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y,
                          const uint8_t* cb, const uint8_t* cr, size_t pairs);

void split_row(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y, uint8_t* cb,
               uint8_t* cr, size_t pairs, bool chroma);
void merge_row(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
               const uint8_t* cr, size_t pairs);
void split_row_avx2(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y,
                    uint8_t* cb, uint8_t* cr, size_t pairs, bool chroma);
void merge_row_avx2(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
                    const uint8_t* cr, size_t pairs);

// Packed to planar, rows as the engine walks them: rows restart at i * srcPitch
// unless srcPitch == 2 * width, when they run on from the previous row's last
// pair; 4:2:0 (mode 0) takes chroma from source rows 0, 3, 4, 7, ... into chroma
// row i / 2; 4:2:2 from every row.
void toplanar_frame(const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr, uint8_t* dstY,
                    uint8_t* dstCb, uint8_t* dstCr, uint32_t width, uint32_t height,
                    uint32_t dstPitch, uint32_t srcPitch, uint32_t mode, SplitRow row);

// Planar to packed, the engine's row rules: ceil(width / 2) pairs per row; the Y
// row runs on from the previous one when width == srcPitch; 4:2:0 chroma row
// 2 * (i / 4) + i % 2 at srcPitch / 2 per row; 4:2:2 chroma runs on row to row.
void fromplanar_frame(const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
                      uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr, uint32_t width,
                      uint32_t height, uint32_t dstPitch, uint32_t srcPitch, uint32_t mode,
                      MergeRow row);

// Where the planes of a planar frame lie.
enum class Planar { I420, YV12, P422 };
struct Planes {
    uint8_t* y;
    uint8_t* cb;
    uint8_t* cr;
};
// As a destination, or as the source of a planar-to-planar conversion: by
// pitch * height. As the source of a conversion to packed, pass width for pitch.
Planes planes_of(Planar format, uint8_t* base, uint32_t pitch, uint32_t height);

}  // namespace cycbcr::detail
