// Packed 4:2:2 to and from planar I420, YV12 and P422: the two engines, their
// field-inverting variants and the plain wrappers.
#include "ycbcr8/packed_planar.h"

#include "frame/export.h"
#include "frame/proc_level.h"
#include "platform/imaging.h"
#include "platform/packed_rows.h"
#include "ycbcr8/packed_planar_wrappers.h"

namespace cycbcr::detail {
namespace {

// The byte order of a packed row given by its three sample pointers, when it is
// one of the three the fast kernels know.
bool order_of(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, PackedOrder& order,
              const uint8_t*& base) {
    if (cb == y + 1 && cr == y + 3) {
        order = PackedOrder::YUY2;
        base = y;
    } else if (cb == y - 1 && cr == y + 1) {
        order = PackedOrder::UYVY;
        base = cb;
    } else if (cb == y + 3 && cr == y + 1) {
        order = PackedOrder::YVYU;
        base = y;
    } else {
        return false;
    }
    return true;
}

}  // namespace

void split_row(const uint8_t* sy, const uint8_t* scb, const uint8_t* scr, uint8_t* y, uint8_t* cb,
               uint8_t* cr, size_t pairs, bool chroma) {
    PackedOrder order;
    const uint8_t* base;
    if (order_of(sy, scb, scr, order, base)) {
        split_packed_row(order, base, y, cb, cr, pairs, chroma);
        return;
    }
    for (size_t k = 0; k < pairs; ++k) {
        y[2 * k] = sy[4 * k];
        y[2 * k + 1] = sy[4 * k + 2];
        if (chroma) {
            cb[k] = scb[4 * k];
            cr[k] = scr[4 * k];
        }
    }
}

void merge_row(uint8_t* dy, uint8_t* dcb, uint8_t* dcr, const uint8_t* y, const uint8_t* cb,
               const uint8_t* cr, size_t pairs) {
    PackedOrder order;
    const uint8_t* base;
    if (order_of(dy, dcb, dcr, order, base)) {
        merge_packed_row(order, const_cast<uint8_t*>(base), y, cb, cr, pairs);
        return;
    }
    for (size_t k = 0; k < pairs; ++k) {
        dy[4 * k] = y[2 * k];
        dcb[4 * k] = cb[k];
        dy[4 * k + 2] = y[2 * k + 1];
        dcr[4 * k] = cr[k];
    }
}

void toplanar_frame(const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr, uint8_t* dstY,
                    uint8_t* dstCb, uint8_t* dstCr, uint32_t width, uint32_t height,
                    uint32_t dstPitch, uint32_t srcPitch, uint32_t mode, SplitRow row) {
    const size_t pairs = width / 2;  // an odd last pixel is dropped
    // At exactly 2 * width the rows run on from the last whole pair, which for an
    // odd width falls 2 bytes short of the pitch per row. Kept as callers know it.
    const size_t step = srcPitch == 2 * width ? pairs * 4 : srcPitch;
    const size_t chromaPitch = dstPitch / 2;
    for (uint32_t i = 0; i < height; ++i) {
        const size_t in = i * step;
        // 4:2:0 keeps the chroma of rows 0, 3, 4, 7, ...: top field in even chroma
        // rows, bottom field in odd ones, never averaged.
        const bool chroma = mode != 0 || i % 4 == 0 || i % 4 == 3;
        const size_t c = (mode != 0 ? i : i / 2) * chromaPitch;
        row(srcY + in, srcCb + in, srcCr + in, dstY + static_cast<size_t>(i) * dstPitch, dstCb + c,
            dstCr + c, pairs, chroma);
    }
}

void fromplanar_frame(const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
                      uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr, uint32_t width,
                      uint32_t height, uint32_t dstPitch, uint32_t srcPitch, uint32_t mode,
                      MergeRow row) {
    // Pairs are written while 2 * pair < width: an odd width ends in a whole
    // pair whose second Y is the next source byte.
    const size_t pairs = (width + 1) / 2;
    const size_t yStep = width == srcPitch ? 2 * pairs : srcPitch;
    for (uint32_t i = 0; i < height; ++i) {
        // 4:2:0 repeats each chroma row within its field: rows 0 and 2 take
        // chroma row 0, rows 1 and 3 chroma row 1, rows 4 and 6 row 2, ...
        // 4:2:2 reads the chroma planes as one run of pairs per row.
        const size_t c = mode == 0 ? (2 * (i / 4) + i % 2) * size_t{srcPitch / 2} : i * pairs;
        const size_t out = static_cast<size_t>(i) * dstPitch;
        row(dstY + out, dstCb + out, dstCr + out, srcY + i * yStep, srcCb + c, srcCr + c, pairs);
    }
}

Planes planes_of(Planar format, uint8_t* base, uint32_t pitch, uint32_t height) {
    const uint32_t d = pitch * height;  // 32-bit, as every plane position
    uint8_t* first = base + d;
    switch (format) {
        case Planar::I420:
            return {base, first, first + (d >> 2)};
        case Planar::YV12:
            return {base, first + (d >> 2), first};
        case Planar::P422:
            return {base, first, first + (d >> 1)};
    }
    return {base, first, first};
}

PackedPtrs packed_ptrs(Packed format, uint8_t* p) {
    switch (format) {
        case Packed::YUY2:
            return {p, p + 1, p + 3};
        case Packed::YVYU:
            return {p, p + 3, p + 1};
        case Packed::UYVY:
        case Packed::CYUV:
            return {p + 1, p, p + 2};
    }
    return {p, p + 1, p + 3};
}

void invert_planes(Planar format, uint8_t* dst, uint32_t dstPitch, uint32_t height) {
    const Planes p = planes_of(format, dst, dstPitch, height);
    const uint32_t chromaRows = format == Planar::P422 ? height : height / 2;
    cycbcr_invert(p.y, dstPitch, height);
    cycbcr_invert(p.cb, dstPitch / 2, chromaRows);
    cycbcr_invert(p.cr, dstPitch / 2, chromaRows);
}

uint32_t toplanar_result(uint32_t dstPitch, uint32_t height) {
    const uint32_t luma = dstPitch * height;
    return luma + ((luma / 2) & ~1u);
}

}  // namespace cycbcr::detail

using namespace cycbcr::detail;
namespace ipp = cycbcr::ipp;

namespace {

// The imaging-library path of the two P422 wrappers; false when it reports a
// failure and the engine must run instead.
bool packed_to_p422_imaging(Packed format, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Planes p = planes_of(Planar::P422, dst, dstPitch, height);
    ipp::Ipp8u* planes[3] = {p.y, p.cb, p.cr};
    int steps[3] = {static_cast<int>(dstPitch), static_cast<int>(dstPitch / 2),
                    static_cast<int>(dstPitch / 2)};
    const ipp::IppiSize roi{static_cast<int>(width), static_cast<int>(height)};
    const ipp::IppStatus status =
        format == Packed::UYVY
            ? ipp::ippiCbYCr422ToYCbCr422_8u_C2P3R(src, static_cast<int>(srcPitch), planes, steps,
                                                   roi)
            : ipp::ippiYCbCr422_8u_C2P3R(src, static_cast<int>(srcPitch), planes, steps, roi);
    return status == ipp::ippStsNoErr;
}

}  // namespace

namespace cycbcr::detail {

unsigned int packed_to_planar(Packed from, Planar to, Converter avx2, uint8_t* dst,
                              const uint8_t* src, uint32_t width, uint32_t height,
                              uint32_t dstPitch, uint32_t srcPitch) {
    ensure_level();
    if (avx2_path()) return avx2(dst, src, width, height, dstPitch, srcPitch);
    if (to == Planar::P422 && (from == Packed::UYVY || from == Packed::YUY2) && imaging_path() &&
        packed_to_p422_imaging(from, dst, src, width, height, dstPitch, srcPitch))
        return dstPitch * height;
    const Planes p = planes_of(to, dst, dstPitch, height);
    const PackedPtrs s = packed_ptrs(from, const_cast<uint8_t*>(src));
    const uint32_t r = cycbcr_toplanar(s.y, s.cb, s.cr, p.y, p.cb, p.cr, width, height, dstPitch,
                                       srcPitch, to == Planar::P422 ? 1 : 0);
    if (from == Packed::CYUV) invert_planes(to, dst, dstPitch, height);
    return r;
}

unsigned int planar_to_packed(Planar from, Packed to, Converter avx2, uint8_t* dst,
                              const uint8_t* src, uint32_t width, uint32_t height,
                              uint32_t dstPitch, uint32_t srcPitch) {
    ensure_level();
    if (avx2_path()) return avx2(dst, src, width, height, dstPitch, srcPitch);
    // Planar sources of packed output are placed by width, whatever the pitch.
    const Planes p = planes_of(from, const_cast<uint8_t*>(src), width, height);
    const PackedPtrs d = packed_ptrs(to, dst);
    const uint32_t r = cycbcr_fromplanar(p.y, p.cb, p.cr, d.y, d.cb, d.cr, width, height, dstPitch,
                                         srcPitch, from == Planar::P422 ? 1 : 0);
    if (to == Packed::CYUV) cycbcr_invert(dst, dstPitch, height);
    return r;
}

}  // namespace cycbcr::detail

extern "C" {

CYCBCR_API unsigned int cycbcr_toplanar(const uint8_t* srcY, const uint8_t* srcCb,
                                        const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                        uint8_t* dstCr, unsigned int width, unsigned int height,
                                        unsigned int dstPitch, unsigned int srcPitch,
                                        unsigned int mode) {
    cycbcr::ensure_level();
    if (cycbcr::avx2_path() && srcCb == srcY - 1 && srcCr == srcY + 1) {
        const uint32_t d = dstPitch * height;
        uint8_t* packed = const_cast<uint8_t*>(srcCb);
        if (mode != 0) {
            if (dstCb == dstY + d && dstCr == dstCb + (d >> 1))
                return cycbcr_uyvy_to_p422_avx2(dstY, packed, width, height, dstPitch, srcPitch);
        } else if (dstCb == dstY + d && dstCr == dstCb + (d >> 2)) {
            return cycbcr_uyvy_to_i420_avx2(dstY, packed, width, height, dstPitch, srcPitch);
        } else if (dstCr == dstY + d && dstCb == dstCr + (d >> 2)) {
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
    cycbcr::ensure_level();
    toplanar_frame(srcY, srcCb, srcCr, dstY, dstCb, dstCr, width, height, dstPitch, srcPitch, mode,
                   split_row);
    return toplanar_result(dstPitch, height);
}

CYCBCR_API unsigned int cycbcr_fromplanar(const uint8_t* srcY, const uint8_t* srcCb,
                                          const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                          uint8_t* dstCr, unsigned int width, unsigned int height,
                                          unsigned int dstPitch, unsigned int srcPitch,
                                          unsigned int mode) {
    cycbcr::ensure_level();
    const bool uyvy = dstCb == dstY - 1 && dstCr == dstY + 1;
    if (uyvy && cycbcr::avx2_path()) {
        const uint8_t* y = srcY;
        if (mode == 1) {
            const uint32_t s = height * srcPitch;
            if (srcCb == y + s && srcCr == srcCb + (s >> 1))
                return cycbcr_p422_to_uyvy_avx2(dstCb, y, width, height, dstPitch, srcPitch);
        } else if (mode == 0) {
            const uint32_t s = width * height;
            if (srcCb == y + s && srcCr == srcCb + (s >> 2))
                return cycbcr_i420_to_uyvy_avx2(dstCb, y, width, height, dstPitch, srcPitch);
            if (srcCr == y + s && srcCb == srcCr + (s >> 2))
                return cycbcr_yv12_to_uyvy_avx2(dstCb, y, width, height, dstPitch, srcPitch);
        }
    }
    if (uyvy) {
        // UYVY output goes to the imaging library at every level; its status is
        // not looked at.
        const int step = static_cast<int>(srcPitch);
        int steps[3] = {step, static_cast<int>(srcPitch / 2), static_cast<int>(srcPitch / 2)};
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
    fromplanar_frame(srcY, srcCb, srcCr, dstY, dstCb, dstCr, width, height, dstPitch, srcPitch,
                     mode, merge_row);
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
    const size_t yStep = width == srcPitch ? 2 * pairs : srcPitch;
    // Chroma pointers run on from row to row; mode 0 moves them back to chroma
    // row (i - 1) / 2 on odd source rows and steps them every second pair, so
    // one chroma sample serves four pixels.
    const uint8_t* cb = srcCb;
    const uint8_t* cr = srcCr;
    const size_t chromaStep = mode == 2 ? 2 : 1;
    for (uint32_t i = 0; i < height; ++i) {
        const uint32_t outRow = i ^ 1u;  // the two fields change places
        uint8_t* d = dstY + static_cast<size_t>(outRow) * dstPitch;
        uint8_t* dcb = dstCb + static_cast<size_t>(outRow) * dstPitch;
        uint8_t* dcr = dstCr + static_cast<size_t>(outRow) * dstPitch;
        const uint8_t* y = srcY + i * yStep;
        if (mode == 0 && (i & 1) != 0) {
            const size_t c = static_cast<size_t>((i - 1) / 2) * (srcPitch / 2);
            cb = srcCb + c;
            cr = srcCr + c;
        }
        for (size_t k = 0; k < pairs; ++k) {
            d[4 * k] = y[2 * k];
            dcb[4 * k] = *cb;
            d[4 * k + 2] = y[2 * k + 1];
            dcr[4 * k] = *cr;
            if (mode != 0 || (k & 1) != 0) {
                cb += chromaStep;
                cr += chromaStep;
            }
        }
    }
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_toplanar_fieldinvert(const uint8_t* srcY, const uint8_t* srcCb,
                                                    const uint8_t* srcCr, uint8_t* dstY,
                                                    uint8_t* dstCb, uint8_t* dstCr,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch,
                                                    unsigned int mode) {
    cycbcr::ensure_level();
    const uint32_t r = toplanar_result(dstPitch, height);
    const size_t pairs = width / 2;
    const size_t step = srcPitch == 2 * width ? pairs * 4 : srcPitch;
    for (uint32_t i = 0; i < height; ++i) {
        const size_t in = i * step;
        const size_t c = static_cast<size_t>(i / 2) * (dstPitch / 2);
        // Chroma of each pair goes to its pair's place in chroma row i / 2; 4:2:0
        // takes it from the even source rows.
        split_row(srcY + in, srcCb + in, srcCr + in, dstY + static_cast<size_t>(i ^ 1u) * dstPitch,
                  dstCb + c, dstCr + c, pairs, mode != 0 || (i & 1) == 0);
    }
    return r;
}

// The wrappers: plane and pair positions, then the engine (or the AVX2 form).
#define CYCBCR_TO_PLANAR(name, from, to)                                                        \
    CYCBCR_API unsigned int name(CYCBCR_CONVERTER_ARGS) {                                       \
        return packed_to_planar(Packed::from, Planar::to, name##_avx2, dst, src, width, height, \
                                dstPitch, srcPitch);                                            \
    }
#define CYCBCR_FROM_PLANAR(name, from, to)                                                      \
    CYCBCR_API unsigned int name(CYCBCR_CONVERTER_ARGS) {                                       \
        return planar_to_packed(Planar::from, Packed::to, name##_avx2, dst, src, width, height, \
                                dstPitch, srcPitch);                                            \
    }
CYCBCR_PACKED_PLANAR_CONVERTERS(CYCBCR_TO_PLANAR, CYCBCR_FROM_PLANAR)

}  // extern "C"
