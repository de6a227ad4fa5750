// Packed 4:2:2 to and from planar I420, YV12 and P422: the two engines, their
// field-inverting variants and the plain wrappers.
#include "ycbcr8/packed_planar.h"

#include <type_traits>

#include "frame/buffer_sizes.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "platform/imaging.h"
#include "platform/memory.h"
#include "ycbcr8/packed_planar_list.h"

namespace cycbcr {

namespace {

// The rows of a packed frame: the three samples of its pairs at the same step.
struct PackedRows {
    Rows y, cb, cr;
};
PackedRows packed_rows(const Planes& p, size_t step) {
    return {rows_down(p.y, step), rows_down(p.cb, step), rows_down(p.cr, step)};
}

}  // namespace

void toplanar_rows(const ToPlanarFrame& f, RowRun run, SplitRow row) {
    const size_t pairs = f.width / 2;
    const PackedRows s = packed_rows(f.src, run_on_step(f.srcPitch, 2 * f.width, 4 * pairs));
    const Rows y = rows_down(f.dst.y, f.dstPitch);
    const Rows cb = rows_down(f.dst.cb, chroma_pitch(f.dstPitch));
    const Rows cr = rows_down(f.dst.cr, chroma_pitch(f.dstPitch));
    walk(run, [&](uint32_t i) {
        const ChromaRow c = chroma_row(f.rule, i);
        row(s.y.at(i), s.cb.at(i), s.cr.at(i), y.at(i), cb.at(c.row), cr.at(c.row), pairs,
            c.present);
    });
}

bool toplanar_luma_meets_chroma(const ToPlanarFrame& f, RowRun run) {
    const size_t pairs = f.width / 2;
    const Rows y = rows_down(f.dst.y, f.dstPitch);
    const Rows cb = rows_down(f.dst.cb, chroma_pitch(f.dstPitch));
    const Rows cr = rows_down(f.dst.cr, chroma_pitch(f.dstPitch));
    bool meets = false;
    walk(run, [&](uint32_t i) {
        const uint32_t c = chroma_row(f.rule, i).row;
        const uint8_t* lo = cb.at(c) < cr.at(c) ? cb.at(c) : cr.at(c);
        const uint8_t* hi = cb.at(c) < cr.at(c) ? cr.at(c) : cb.at(c);
        meets |= ranges_overlap(y.at(i), 2 * pairs, lo, static_cast<size_t>(hi - lo) + pairs);
    });
    return meets;
}

void fromplanar_rows(const FromPlanarFrame& f, RowRun run, MergeRow row) {
    // Pairs are written while 2 * pair < width: an odd width ends in a whole
    // pair whose second Y is the next source byte.
    const size_t pairs = (f.width + 1) / 2;
    const Rows y = rows_down(f.src.y, run_on_step(f.srcPitch, f.width, 2 * pairs));
    // 4:2:2 chroma is not placed by a pitch at all: each row reads on from where
    // the previous row stopped.
    const size_t cstep = f.full ? pairs : chroma_pitch(f.srcPitch);
    const Rows cb = rows_down(f.src.cb, cstep), cr = rows_down(f.src.cr, cstep);
    const ChromaRows rule = f.full ? ChromaRows::Own : ChromaRows::FieldRepeated;
    const PackedRows d = packed_rows(f.dst, f.dstPitch);
    walk(run, [&](uint32_t i) {
        const uint32_t c = chroma_row(rule, i).row;
        row(d.y.at(i), d.cb.at(i), d.cr.at(i), y.at(i), cb.at(c), cr.at(c), pairs);
    });
}

void invert_planes(Format planar, uint8_t* dst, uint32_t dstPitch, uint32_t height) {
    const Planes p = planar_planes(planar, dst, dstPitch, height);
    const uint32_t rows = chroma_rows(planar, height);
    cycbcr_invert(p.y, dstPitch, height);
    cycbcr_invert(p.cb, chroma_pitch(dstPitch), rows);
    cycbcr_invert(p.cr, chroma_pitch(dstPitch), rows);
}

namespace {

// dstPitch * height + (dstPitch * height / 2, lowest bit cleared).
uint32_t toplanar_result(uint32_t dstPitch, uint32_t height) {
    const uint32_t luma = dstPitch * height;
    return luma + ((luma / 2) & ~1u);
}

// The imaging-library path of the UYVY and YUY2 to P422 wrappers; false when it
// reports a failure and the engine must run instead.
bool to_p422_imaging(Format from, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                     uint32_t dstPitch, uint32_t srcPitch) {
    namespace ipp = cycbcr::ipp;
    const Planes p = planar_planes(Format::P422, dst, dstPitch, height);
    ipp::Ipp8u* planes[3] = {p.y, p.cb, p.cr};
    const int cp = static_cast<int>(chroma_pitch(dstPitch));
    int steps[3] = {static_cast<int>(dstPitch), cp, cp};
    const ipp::IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
    const int step = static_cast<int>(srcPitch);
    const ipp::IppStatus status =
        from == Format::UYVY ? ipp::ippiCbYCr422ToYCbCr422_8u_C2P3R(src, step, planes, steps, roi)
                             : ipp::ippiYCbCr422_8u_C2P3R(src, step, planes, steps, roi);
    return status == ipp::ippStsNoErr;
}

template <Format From, Format To, auto Avx2>
unsigned int packed_planar(CYCBCR_CONVERTER_ARGS) {
    const Paths paths = entry(OnEntry::ChooseLevel);
    if (paths.avx2) return Avx2(CYCBCR_CONVERTER_CALL);
    if constexpr (is_packed422(From)) {
        if constexpr (To == Format::P422 && (From == Format::UYVY || From == Format::YUY2))
            if (paths.imaging && to_p422_imaging(From, dst, src, width, height, dstPitch, srcPitch))
                return dstPitch * height;
        const Planes p = planar_planes(To, dst, dstPitch, height);
        const Planes s = packed_samples(From, const_cast<uint8_t*>(src));
        const uint32_t r = cycbcr_toplanar(s.y, s.cb, s.cr, p.y, p.cb, p.cr, width, height,
                                           dstPitch, srcPitch, full_height_chroma(To) ? 1 : 0);
        if constexpr (From == Format::CYUV) invert_planes(To, dst, dstPitch, height);
        return r;
    } else {
        // Planar sources of packed output are placed by the width, whatever the pitch.
        const Planes p = planar_planes(From, const_cast<uint8_t*>(src), width, height);
        const Planes d = packed_samples(To, dst);
        const uint32_t r = cycbcr_fromplanar(p.y, p.cb, p.cr, d.y, d.cb, d.cr, width, height,
                                             dstPitch, srcPitch, full_height_chroma(From) ? 1 : 0);
        if constexpr (To == Format::CYUV) cycbcr_invert(dst, dstPitch, height);
        return r;
    }
}

bool same_planes(Format f, const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint32_t span,
                 uint32_t height) {
    const Planes p = planar_planes(f, const_cast<uint8_t*>(y), span, height);
    return p.cb == cb && p.cr == cr;
}

// The end of a chroma plane at `plane` bytes whose rows are `pitch` apart, the
// last one read or written `last` (when present), `bytes` bytes each.
uint64_t chroma_end(uint64_t plane, ChromaRow last, uint64_t pitch, uint64_t bytes) {
    if (!last.present || bytes == 0) return 0;
    return plane + last.row * pitch + bytes;
}

// The imaging library takes a call only when its size and steps suit it (as int).
bool imaging_takes(const Call& c, uint32_t minHeight, uint32_t packedStep, uint32_t planeStep) {
    return c.width >= 2 && c.height >= minHeight && static_cast<int>(packedStep) > 0 &&
           static_cast<int>(planeStep) > 0 && static_cast<int>(planeStep / 2) > 0;
}

Extent to_planar_extent(Format from, Format to, const Call& c) {
    const uint32_t h = c.height, dp = c.dstPitch, sp = c.srcPitch;
    const uint64_t pairs = c.width / 2;
    const PlaneOffsets p = planar_offsets(to, dp, h);
    const uint64_t cp = chroma_pitch(dp);
    // The engine and the AVX2 forms: rows running on at a pitch of 2 * width.
    const ChromaRows rule = full_height_chroma(to) ? ChromaRows::Own : ChromaRows::FieldKept;
    const ChromaRow last = last_chroma_row(rule, h);
    Extent e{rows_end(0, h, run_on_step(sp, 2 * c.width, 4 * pairs), 4 * pairs),
             widest(rows_end(0, h, dp, 2 * pairs),
                    widest(chroma_end(p.cb, last, cp, pairs), chroma_end(p.cr, last, cp, pairs)))};
    // The imaging library of the UYVY and YUY2 to P422 wrappers: rows a pitch apart.
    if (to == Format::P422 && (from == Format::UYVY || from == Format::YUY2) &&
        imaging_takes(c, 1, sp, dp))
        e.src = widest(e.src, rows_end(0, h, sp, 4 * pairs));
    if (from == Format::CYUV) {
        const uint32_t rows = chroma_rows(to, h);
        e.dst = widest(e.dst, widest(inverted_end(0, h, dp), widest(inverted_end(p.cb, rows, cp),
                                                                    inverted_end(p.cr, rows, cp))));
    }
    return e;
}

Extent from_planar_extent(Format from, Format to, const Call& c) {
    const uint32_t w = c.width, h = c.height, dp = c.dstPitch, sp = c.srcPitch;
    const PlaneOffsets p = planar_offsets(from, w, h);  // placed by the width
    const bool full = full_height_chroma(from);
    // The engine's walk and the AVX2 forms: ceil(width / 2) pairs.
    const uint64_t pairs = (w + 1) / 2;
    const uint64_t cstep = full ? pairs : chroma_pitch(sp);
    const ChromaRow last = last_chroma_row(full ? ChromaRows::Own : ChromaRows::FieldRepeated, h);
    Extent e{
        widest(rows_end(0, h, run_on_step(sp, w, 2 * pairs), 2 * pairs),
               widest(chroma_end(p.cb, last, cstep, pairs), chroma_end(p.cr, last, cstep, pairs))),
        rows_end(0, h, dp, 4 * pairs)};
    // UYVY output off the AVX2 path goes to the imaging library: width / 2 pairs,
    // chroma rows srcPitch / 2 apart, 4:2:0 of the even part only.
    if ((to == Format::UYVY || to == Format::CYUV) && imaging_takes(c, full ? 1 : 2, dp, sp)) {
        const uint64_t ipairs = w / 2;
        const uint32_t rows = full ? h : h & ~1u;
        const ChromaRow ilast = last_chroma_row(full ? ChromaRows::Own : ChromaRows::Shared, rows);
        const uint64_t icp = chroma_pitch(sp);
        e.src = widest(e.src, widest(rows_end(0, rows, sp, 2 * ipairs),
                                     widest(chroma_end(p.cb, ilast, icp, ipairs),
                                            chroma_end(p.cr, ilast, icp, ipairs))));
        e.dst = widest(e.dst, rows_end(0, rows, dp, 4 * ipairs));
    }
    if (to == Format::CYUV) e.dst = widest(e.dst, inverted_end(0, h, dp));
    return e;
}

}  // namespace

Extent packed_planar_extent(Format from, Format to, const Call& c) {
    return is_packed422(from) ? to_planar_extent(from, to, c) : from_planar_extent(from, to, c);
}

}  // namespace cycbcr

using namespace cycbcr;

extern "C" {

CYCBCR_API unsigned int cycbcr_toplanar(const uint8_t* srcY, const uint8_t* srcCb,
                                        const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                        uint8_t* dstCr, unsigned int width, unsigned int height,
                                        unsigned int dstPitch, unsigned int srcPitch,
                                        unsigned int mode) {
    // UYVY frames with their planes where the wrappers put them go to the AVX2
    // forms at level 5.
    if (entry(OnEntry::ChooseLevel).avx2 && packed_shape(srcY, srcCb, srcCr) == Format::UYVY) {
        uint8_t* packed = const_cast<uint8_t*>(srcCb);
        if (mode != 0) {
            if (same_planes(Format::P422, dstY, dstCb, dstCr, dstPitch, height))
                return cycbcr_uyvy_to_p422_avx2(dstY, packed, width, height, dstPitch, srcPitch);
        } else if (same_planes(Format::I420, dstY, dstCb, dstCr, dstPitch, height)) {
            return cycbcr_uyvy_to_i420_avx2(dstY, packed, width, height, dstPitch, srcPitch);
        } else if (same_planes(Format::YV12, dstY, dstCb, dstCr, dstPitch, height)) {
            return cycbcr_uyvy_to_yv12_avx2(dstY, packed, width, height, dstPitch, srcPitch);
        }
    }
    return cycbcr_toplanar_sse2(srcY, srcCb, srcCr, dstY, dstCb, dstCr, width, height, dstPitch,
                                srcPitch, mode);
}

CYCBCR_API unsigned int cycbcr_toplanar_sse2(const uint8_t* srcY, const uint8_t* srcCb,
                                             const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                             uint8_t* dstCr, unsigned int width,
                                             unsigned int height, unsigned int dstPitch,
                                             unsigned int srcPitch, unsigned int mode) {
    entry(OnEntry::ChooseLevel);
    const ToPlanarFrame f{
        {const_cast<uint8_t*>(srcY), const_cast<uint8_t*>(srcCb), const_cast<uint8_t*>(srcCr)},
        {dstY, dstCb, dstCr},
        width,
        dstPitch,
        srcPitch,
        mode != 0 ? ChromaRows::Own : ChromaRows::FieldKept};
    toplanar_rows(f, all_rows(height), plain::split_kernel(packed_shape(srcY, srcCb, srcCr)));
    return toplanar_result(dstPitch, height);
}

CYCBCR_API unsigned int cycbcr_fromplanar(const uint8_t* srcY, const uint8_t* srcCb,
                                          const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                          uint8_t* dstCr, unsigned int width, unsigned int height,
                                          unsigned int dstPitch, unsigned int srcPitch,
                                          unsigned int mode) {
    const Paths paths = entry(OnEntry::ChooseLevel);
    const Format shape = packed_shape(dstY, dstCb, dstCr);
    if (shape == Format::UYVY && paths.avx2) {
        // P422 planes placed by the pitch, I420 and YV12 planes by the width.
        if (mode == 1) {
            if (same_planes(Format::P422, srcY, srcCb, srcCr, srcPitch, height))
                return cycbcr_p422_to_uyvy_avx2(dstCb, srcY, width, height, dstPitch, srcPitch);
        } else if (mode == 0) {
            if (same_planes(Format::I420, srcY, srcCb, srcCr, width, height))
                return cycbcr_i420_to_uyvy_avx2(dstCb, srcY, width, height, dstPitch, srcPitch);
            if (same_planes(Format::YV12, srcY, srcCb, srcCr, width, height))
                return cycbcr_yv12_to_uyvy_avx2(dstCb, srcY, width, height, dstPitch, srcPitch);
        }
    }
    if (shape == Format::UYVY) {
        // UYVY output goes to the imaging library at every level; its status is
        // not looked at.
        namespace ipp = cycbcr::ipp;
        const int cp = static_cast<int>(chroma_pitch(srcPitch));
        int steps[3] = {static_cast<int>(srcPitch), cp, cp};
        const ipp::IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
        if (mode == 0) {
            const ipp::Ipp8u* planes[3] = {srcY, srcCr, srcCb};
            ipp::ippiYCrCb420ToCbYCr422_8u_P3C2R(planes, steps, dstCb, static_cast<int>(dstPitch),
                                                 roi);
        } else {
            const ipp::Ipp8u* planes[3] = {srcY, srcCb, srcCr};
            ipp::ippiYCbCr422ToCbYCr422_8u_P3C2R(planes, steps, dstCb, static_cast<int>(dstPitch),
                                                 roi);
        }
        return dstPitch * height;
    }
    const FromPlanarFrame f{
        {const_cast<uint8_t*>(srcY), const_cast<uint8_t*>(srcCb), const_cast<uint8_t*>(srcCr)},
        {dstY, dstCb, dstCr},
        width,
        dstPitch,
        srcPitch,
        mode != 0};
    fromplanar_rows(f, all_rows(height), plain::merge_kernel(shape));
    return dstPitch * height;
}

CYCBCR_API unsigned int cycbcr_fromplanar_fieldinvert(const uint8_t* srcY, const uint8_t* srcCb,
                                                      const uint8_t* srcCr, uint8_t* dstY,
                                                      uint8_t* dstCb, uint8_t* dstCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch,
                                                      unsigned int mode) {
    mode &= 0xF;
    if (height == 0) return 0;
    const size_t pairs = (width + 1) / 2;
    const Rows y = rows_down(srcY, run_on_step(srcPitch, width, 2 * pairs));
    const PackedRows out = packed_rows({dstY, dstCb, dstCr}, dstPitch);
    // Chroma pointers run on from row to row; mode 0 moves them back to chroma
    // row (i - 1) / 2 on odd source rows and steps them every second pair, so
    // one chroma sample serves four pixels.
    const uint8_t* cb = srcCb;
    const uint8_t* cr = srcCr;
    const size_t chromaStep = mode == 2 ? 2 : 1;
    walk(all_rows(height), [&](uint32_t i) {
        const uint32_t o = field_exchanged(i);  // the two fields change places
        uint8_t* d = out.y.at(o);
        uint8_t* dcb = out.cb.at(o);
        uint8_t* dcr = out.cr.at(o);
        const uint8_t* ys = y.at(i);
        if (mode == 0 && (i & 1) != 0) {
            const size_t c = static_cast<size_t>((i - 1) / 2) * chroma_pitch(srcPitch);
            cb = srcCb + c;
            cr = srcCr + c;
        }
        for (size_t k = 0; k < pairs; ++k) {
            d[4 * k] = ys[2 * k];
            dcb[4 * k] = *cb;
            d[4 * k + 2] = ys[2 * k + 1];
            dcr[4 * k] = *cr;
            if (mode != 0 || (k & 1) != 0) {
                cb += chromaStep;
                cr += chromaStep;
            }
        }
    });
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_toplanar_fieldinvert(const uint8_t* srcY, const uint8_t* srcCb,
                                                    const uint8_t* srcCr, uint8_t* dstY,
                                                    uint8_t* dstCb, uint8_t* dstCr,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch,
                                                    unsigned int mode) {
    entry(OnEntry::ChooseLevel);
    const uint32_t r = toplanar_result(dstPitch, height);
    const size_t pairs = width / 2;
    const PackedRows s = packed_rows(
        {const_cast<uint8_t*>(srcY), const_cast<uint8_t*>(srcCb), const_cast<uint8_t*>(srcCr)},
        run_on_step(srcPitch, 2 * width, 4 * pairs));
    const Rows y = rows_down(dstY, dstPitch);
    const Rows cb = rows_down(dstCb, chroma_pitch(dstPitch));
    const Rows cr = rows_down(dstCr, chroma_pitch(dstPitch));
    // Each pair's chroma goes to its pair's place in chroma row i / 2; 4:2:0 takes
    // it from the even source rows.
    const ChromaRows rule = mode != 0 ? ChromaRows::Shared : ChromaRows::EvenOnly;
    const SplitRow row = plain::split_kernel(packed_shape(srcY, srcCb, srcCr));
    walk(all_rows(height), [&](uint32_t i) {
        const ChromaRow c = chroma_row(rule, i);
        row(s.y.at(i), s.cb.at(i), s.cr.at(i), y.at(field_exchanged(i)), cb.at(c.row), cr.at(c.row),
            pairs, c.present);
    });
    return r;
}

// The wrappers: plane and pair positions, then the engine (or the AVX2 form).
#define CYCBCR_ENTRY cycbcr::packed_planar
CYCBCR_PACKED_PLANAR_PAIRS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"
