// v210 into three planes of 16-bit sample words: 4:2:2 p10 and p16, 4:2:0 p10
// (row pairs averaged) and 4:4:4 p10 (chroma at the even pixels). The plain
// forms and the frame walk they share with the AVX2 forms.
#include <algorithm>

#include "cycbcr.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "ycbcr10/planar16.h"
#include "ycbcr10/v210.h"

namespace cycbcr {

namespace plain {

void v210_to_planes16_row(const V210Step& s, uint32_t first, uint32_t groups, unsigned shift,
                          PlaneChroma chroma) {
    for (uint32_t g = first; g < groups; ++g) {
        const uint8_t* a = s.s0 + size_t{g} * kV210GroupBytes;
        const uint8_t* b = s.s1 != nullptr ? s.s1 + size_t{g} * kV210GroupBytes : nullptr;
        for (unsigned p = 0; p < 6; ++p) {
            store_u16(s.y0, 6 * size_t{g} + p, v210_sample(a, kGroupY[p]) << shift);
            if (s.y1 != nullptr)
                store_u16(s.y1, 6 * size_t{g} + p, v210_sample(b, kGroupY[p]) << shift);
        }
        if (s.cb == nullptr) continue;
        for (unsigned k = 0; k < 3; ++k) {
            uint32_t cb = v210_sample(a, kGroupCb[k]);
            uint32_t cr = v210_sample(a, kGroupCr[k]);
            if (b != nullptr) {
                cb = (cb + v210_sample(b, kGroupCb[k])) >> 1;
                cr = (cr + v210_sample(b, kGroupCr[k])) >> 1;
            }
            cb <<= shift;
            cr <<= shift;
            if (chroma == PlaneChroma::Half) {
                store_u16(s.cb, 3 * size_t{g} + k, cb);
                store_u16(s.cr, 3 * size_t{g} + k, cr);
                continue;
            }
            const size_t even = 6 * size_t{g} + 2 * k;
            store_u16(s.cb, even, cb);
            store_u16(s.cr, even, cr);
            if (chroma == PlaneChroma::Doubled) {
                store_u16(s.cb, even + 1, cb);
                store_u16(s.cr, even + 1, cr);
            }
        }
    }
}

}  // namespace plain

void v210_to_planes16_frame(const V210Frame& f, unsigned shift, PlaneChroma chroma, bool pairs,
                            V210PlanesRow row) {
    const Rows s = rows_down(f.src, f.srcPitch);
    const Rows y = rows_down(f.y, f.yPitch);
    const Rows cb = rows_down(f.cb, f.cPitch), cr = rows_down(f.cr, f.cPitch);
    const uint32_t groups = pack_groups(f.width);
    if (!pairs) {
        walk(all_rows(f.height), [&](uint32_t r) {
            row({s.at(r), nullptr, y.at(r), nullptr, cb.at(r), cr.at(r)}, 0, groups, shift, chroma);
        });
        return;
    }
    // Rows 2k and 2k + 1 together; an odd height's last row takes the v210 row
    // after it as its partner and has no second Y row. Y rows that overlap are
    // written one after the other, so that each row lands over the one before.
    const bool apart = f.yPitch >= 12 * size_t{groups};
    for (uint32_t r = 0; r < f.height; r += 2) {
        const uint32_t k = r / 2;
        uint8_t* y1 = r + 1 < f.height ? y.at(r + 1) : nullptr;
        row({s.at(r), s.at(r + 1), y.at(r), apart ? y1 : nullptr, cb.at(k), cr.at(k)}, 0, groups,
            shift, chroma);
        if (!apart && y1 != nullptr)
            row({s.at(r + 1), nullptr, y1, nullptr, nullptr, nullptr}, 0, groups, shift, chroma);
    }
}

namespace {

// The 4:2:2 and 4:4:4 converters: the v210 rows at the larger of the natural
// row and srcPitch, Y rows dstPitch apart, chroma rows half that (4:2:2) or the
// same (4:4:4).
unsigned int v210_to_planar(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                            uint32_t width, uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                            unsigned shift, PlaneChroma chroma, V210PlanesRow row) {
    const bool full = chroma != PlaneChroma::Half;
    const V210Frame f{y,
                      cb,
                      cr,
                      src,
                      width,
                      height,
                      dstPitch,
                      full ? dstPitch : chroma_pitch(dstPitch),
                      std::max(v210_row_size(width), srcPitch)};
    v210_to_planes16_frame(f, shift, chroma, false, row);
    return width * height * (full ? 6 : 4);
}

}  // namespace

unsigned int v210_to_planar422_16(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                  uint32_t width, uint32_t height, uint32_t dstPitch,
                                  uint32_t srcPitch, unsigned shift, V210PlanesRow row) {
    return v210_to_planar(y, cb, cr, src, width, height, dstPitch, srcPitch, shift,
                          PlaneChroma::Half, row);
}
unsigned int v210_to_planar444_10(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                  uint32_t width, uint32_t height, uint32_t dstPitch,
                                  uint32_t srcPitch, PlaneChroma chroma, V210PlanesRow row) {
    return v210_to_planar(y, cb, cr, src, width, height, dstPitch, srcPitch, 0, chroma, row);
}

}  // namespace cycbcr

using namespace cycbcr;

extern "C" {

CYCBCR_API unsigned int cycbcr_012v_to_yuv422p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_012v_to_yuv422p10_avx2(dstY, dstCb, dstCr, src, width, height, dstPitch,
                                             srcPitch);
    return v210_to_planar422_16(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch, 0,
                                plain::v210_to_planes16_row);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuv422p16(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_012v_to_yuv422p16_avx2(dstY, dstCb, dstCr, src, width, height, dstPitch,
                                             srcPitch);
    return v210_to_planar422_16(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch, 6,
                                plain::v210_to_planes16_row);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuv444p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_012v_to_yuv444p10_avx2(dstY, dstCb, dstCr, src, width, height, dstPitch,
                                             srcPitch);
    return v210_to_planar444_10(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch,
                                PlaneChroma::EvenOnly, plain::v210_to_planes16_row);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuv420p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int yPitch,
                                                 unsigned int chromaPitch, unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_012v_to_yuv420p10_avx2(dstY, dstCb, dstCr, src, width, height, yPitch,
                                             chromaPitch, srcPitch);
    const unsigned int count = width * height * 3;
    if (width == 0 || height == 0) return count;
    // The plain path keeps its planes packed whatever the pitches say: rows of
    // whole groups back to back, and the v210 rows exactly srcPitch apart.
    // Kept: callers of this path size their planes by it.
    const size_t groups = pack_groups(width);
    v210_to_planes16_frame(
        {dstY, dstCb, dstCr, src, width, height, 12 * groups, 6 * groups, srcPitch}, 0,
        PlaneChroma::Half, true, plain::v210_to_planes16_row);
    return count;
}

}  // extern "C"
