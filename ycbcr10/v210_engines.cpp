// The scalar v210 engines: Tov210 packs 8-bit packed or planar frames into
// v210, Fromv210 and Fromv210_16 unpack v210 into 8- or 16-bit frames.
#include <algorithm>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "ycbcr10/v210.h"

namespace cycbcr {
namespace {

// Where the unpackers put their samples: packed output steps Y by 2 samples and
// chroma by 4, all rows at dstPitch; planar output has chroma rows dstPitch / 2
// apart, 4:2:0 taking the last write (16-bit 4:2:0 chroma rows start on an even
// byte).
template <class Sample>
struct Placement {
    Sample* y;
    Sample* cb;
    Sample* cr;
    uint32_t dstPitch;
    bool fullHeightChroma;
    bool planar;

    static Sample* at(Sample* base, size_t byteOffset) {
        return reinterpret_cast<Sample*>(reinterpret_cast<uint8_t*>(base) + byteOffset);
    }
    void row(uint32_t r, Sample*& ry, Sample*& rcb, Sample*& rcr) const {
        const size_t luma = static_cast<size_t>(r) * dstPitch;
        size_t chroma = luma;
        if (planar) {
            const ChromaRows rule = fullHeightChroma ? ChromaRows::Own : ChromaRows::LastWriteWins;
            chroma = static_cast<size_t>(chroma_row(rule, r).row) * chroma_pitch(dstPitch);
            if (sizeof(Sample) == 2 && !fullHeightChroma) chroma &= ~size_t{1};
        }
        ry = at(y, luma);
        rcb = at(cb, chroma);
        rcr = at(cr, chroma);
    }
};

template <class Sample>
void store_sample(Sample* p, uint32_t v10) {
    if constexpr (sizeof(Sample) == 1) {
        *p = truncate_10to8(v10);
    } else {
        const uint16_t v = static_cast<uint16_t>(v10 << 6);
        std::memcpy(p, &v, 2);  // chroma rows may start on an odd byte
    }
}

// Twelve pixels (two groups) per step, so up to 11 pixels past the width are
// written in every row and plane. Rows run top to bottom, which makes the odd
// row's chroma the one that stays in 4:2:0 output.
template <class Sample>
void unpack_v210_frame(const Placement<Sample>& out, const uint8_t* src, uint32_t width,
                       uint32_t height, uint32_t srcPitch) {
    const Rows s = rows_down(src, std::max(v210_row_size(width), srcPitch));
    const uint32_t groups = unpack_groups(width);
    const unsigned ystep = out.planar ? 1 : 2;
    const unsigned cstep = out.planar ? 1 : 4;
    walk(all_rows(height), [&](uint32_t r) {
        Sample *y, *cb, *cr;
        out.row(r, y, cb, cr);
        const uint8_t* g = s.at(r);
        for (uint32_t k = 0; k < groups; ++k, g += kV210GroupBytes) {
            uint32_t v[12];
            for (unsigned w = 0; w < 4; ++w) {
                const uint32_t word = load_le32(g + 4 * w);
                v[3 * w] = word & 0x3FF;
                v[3 * w + 1] = (word >> 10) & 0x3FF;
                v[3 * w + 2] = (word >> 20) & 0x3FF;
            }
            for (unsigned i = 0; i < 6; ++i, y += ystep) store_sample(y, v[kGroupY[i]]);
            for (unsigned i = 0; i < 3; ++i, cb += cstep, cr += cstep) {
                store_sample(cb, v[kGroupCb[i]]);
                store_sample(cr, v[kGroupCr[i]]);
            }
        }
    });
}

}  // namespace
}  // namespace cycbcr

using namespace cycbcr;

extern "C" {

CYCBCR_API unsigned int v210_row_bytes(unsigned int width) {
    return v210_row_size(width);
}

CYCBCR_API unsigned int Tov210(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                               unsigned int width, unsigned int height, unsigned int dstPitch,
                               unsigned int srcPitch, unsigned int fullHeightChroma,
                               unsigned int planar) {
    entry(OnEntry::ChooseLevel);
    const uint32_t rowBytes = v210_row_size(width);
    const Rows d = rows_down(dst, std::max(rowBytes, dstPitch));
    const uint32_t groups = pack_groups(width);
    // Planar input is read as tightly packed planes: srcPitch is not used for it.
    // Packed rows restart at row * srcPitch, except that at a pitch of exactly
    // 2 * width they run on from the last whole group; callers rely on this.
    const size_t step = run_on_step(srcPitch, 2 * width, size_t{12} * groups);
    const ChromaRows rule = fullHeightChroma ? ChromaRows::Own : ChromaRows::Shared;
    const Rows sy = rows_down(y, planar ? width : step);
    const Rows scb = rows_down(cb, planar ? width / 2 : step);
    const Rows scr = rows_down(cr, planar ? width / 2 : step);
    const unsigned ys = planar ? 1 : 2;
    const unsigned cs = planar ? 1 : 4;
    walk(all_rows(height), [&](uint32_t r) {
        const uint32_t c = planar ? chroma_row(rule, r).row : r;
        const uint8_t *py = sy.at(r), *pcb = scb.at(c), *pcr = scr.at(c);
        uint8_t* out = d.at(r);
        for (uint32_t g = 0; g < groups; ++g, out += kV210GroupBytes) {
            uint8_t s[12];
            for (unsigned i = 0; i < 6; ++i, py += ys) s[kGroupY[i]] = *py;
            for (unsigned i = 0; i < 3; ++i, pcb += cs, pcr += cs) {
                s[kGroupCb[i]] = *pcb;
                s[kGroupCr[i]] = *pcr;
            }
            pack_group_u8(out, s);
        }
    });
    return height * rowBytes;
}

CYCBCR_API unsigned int Fromv210(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                 unsigned int width, unsigned int height, unsigned int dstPitch,
                                 unsigned int srcPitch, unsigned int fullHeightChroma,
                                 unsigned int planar) {
    entry(OnEntry::ChooseLevel);
    unpack_v210_frame(Placement<uint8_t>{y, cb, cr, dstPitch, fullHeightChroma != 0, planar != 0},
                      src, width, height, srcPitch);
    const uint32_t pixels = width * height;
    return planar ? pixels + pixels / 2 : pixels * 2;
}

CYCBCR_API unsigned int Fromv210_16(void* y, void* cb, void* cr, const uint8_t* src,
                                    unsigned int width, unsigned int height, unsigned int dstPitch,
                                    unsigned int srcPitch, unsigned int fullHeightChroma,
                                    unsigned int planar) {
    entry(OnEntry::ChooseLevel);
    unpack_v210_frame(Placement<uint16_t>{static_cast<uint16_t*>(y), static_cast<uint16_t*>(cb),
                                          static_cast<uint16_t*>(cr), dstPitch,
                                          fullHeightChroma != 0, planar != 0},
                      src, width, height, srcPitch);
    const uint32_t pixels = width * height;
    if (!planar) return pixels * 2;  // kept: the 8-bit packed figure
    return fullHeightChroma ? pixels * 4 : pixels * 3;
}

}  // extern "C"
