#include "platform/imaging.h"

#include <cstddef>
#include <cstring>

#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "platform/imaging_internal.h"
#include "platform/memory.h"
#include "ycbcr8/packed_rows.h"

namespace cycbcr::ipp {
namespace {

template <Format Order>
IppStatus packed_to_planes(const Ipp8u* src, int srcStep, Ipp8u* dst[3], int dstStep[3],
                           IppiSize roi) {
    const void* const ptrs[] = {src, dst[0], dst[1], dst[2]};
    if (IppStatus s = check(ptrs, roi, 2, 1, {srcStep, dstStep[0], dstStep[1], dstStep[2]}))
        return s;
    const size_t pairs = static_cast<size_t>(roi.width) / 2;
    const Planes p = packed_samples(Order, const_cast<Ipp8u*>(src));
    const Rows sy = rows_of(p.y, srcStep), scb = rows_of(p.cb, srcStep),
               scr = rows_of(p.cr, srcStep);
    const Rows y = rows_of(dst[0], dstStep[0]), cb = rows_of(dst[1], dstStep[1]),
               cr = rows_of(dst[2], dstStep[2]);
    walk(all_rows(static_cast<uint32_t>(roi.height)), [&](uint32_t r) {
        plain::split_row<Order>(sy.at(r), scb.at(r), scr.at(r), y.at(r), cb.at(r), cr.at(r), pairs,
                                true);
    });
    return ippStsNoErr;
}

// UYVY rows from planes Y, Cb, Cr: output row r takes chroma row chroma(r).
template <class ChromaRowOf>
void planes_to_uyvy(const Rows& y, const Rows& cb, const Rows& cr, Ipp8u* dst, int dstStep,
                    uint32_t rows, size_t pairs, ChromaRowOf chroma) {
    const Planes d = packed_samples(Format::UYVY, dst);
    const Rows dy = rows_of(d.y, dstStep), dcb = rows_of(d.cb, dstStep),
               dcr = rows_of(d.cr, dstStep);
    walk(all_rows(rows), [&](uint32_t r) {
        const uint32_t c = chroma(r);
        plain::merge_row<Format::UYVY>(dy.at(r), dcb.at(r), dcr.at(r), y.at(r), cb.at(c), cr.at(c),
                                       pairs);
    });
}

}  // namespace

IppStatus ippiCbYCr422ToYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst[3],
                                          int dstStep[3], IppiSize roiSize) {
    return packed_to_planes<Format::UYVY>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst[3], int dstStep[3],
                                IppiSize roiSize) {
    return packed_to_planes<Format::YUY2>(pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiYCbCr422ToCbYCr422_8u_P3C2R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                          int dstStep, IppiSize roiSize) {
    const void* const ptrs[] = {pSrc[0], pSrc[1], pSrc[2], pDst};
    if (IppStatus s = check(ptrs, roiSize, 2, 1, {srcStep[0], srcStep[1], srcStep[2], dstStep}))
        return s;
    planes_to_uyvy(rows_of(pSrc[0], srcStep[0]), rows_of(pSrc[1], srcStep[1]),
                   rows_of(pSrc[2], srcStep[2]), pDst, dstStep,
                   static_cast<uint32_t>(roiSize.height), static_cast<size_t>(roiSize.width) / 2,
                   [](uint32_t r) { return r; });
    return ippStsNoErr;
}

IppStatus ippiYCrCb420ToCbYCr422_8u_P3C2R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                          int dstStep, IppiSize roiSize) {
    const void* const ptrs[] = {pSrc[0], pSrc[1], pSrc[2], pDst};
    if (IppStatus s = check(ptrs, roiSize, 2, 2, {srcStep[0], srcStep[1], srcStep[2], dstStep}))
        return s;
    const int width = roiSize.width & ~1;
    const int height = roiSize.height & ~1;
    // Planes Y, Cr, Cb; output row r takes chroma row r / 2.
    planes_to_uyvy(rows_of(pSrc[0], srcStep[0]), rows_of(pSrc[2], srcStep[2]),
                   rows_of(pSrc[1], srcStep[1]), pDst, dstStep, static_cast<uint32_t>(height),
                   static_cast<size_t>(width) / 2,
                   [](uint32_t r) { return chroma_row(ChromaRows::Shared, r).row; });
    return width == roiSize.width && height == roiSize.height ? ippStsNoErr : ippStsDoubleSize;
}

IppStatus ippiCopy_8u_C3P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3], int dstStep,
                            IppiSize roiSize) {
    const void* const ptrs[] = {pSrc, pDst[0], pDst[1], pDst[2]};
    if (IppStatus s = check(ptrs, roiSize, 1, 1, {srcStep, dstStep})) return s;
    const Rows src = rows_of(pSrc, srcStep);
    const Rows dst[3] = {rows_of(pDst[0], dstStep), rows_of(pDst[1], dstStep),
                         rows_of(pDst[2], dstStep)};
    const auto width = static_cast<size_t>(roiSize.width);
    walk(all_rows(static_cast<uint32_t>(roiSize.height)), [&](uint32_t r) {
        const Ipp8u* s = src.at(r);
        Ipp8u *d0 = dst[0].at(r), *d1 = dst[1].at(r), *d2 = dst[2].at(r);
        for (size_t x = 0; x < width; ++x) {
            d0[x] = s[3 * x];
            d1[x] = s[3 * x + 1];
            d2[x] = s[3 * x + 2];
        }
    });
    return ippStsNoErr;
}

void* ippMalloc(int length) {
    if (length <= 0) return nullptr;
    void* block = QBAlloc(static_cast<size_t>(length));
    if (block != nullptr) std::memset(block, 0, static_cast<size_t>(length));
    return block;
}

void ippFree(void* ptr) {
    QBFree(ptr);
}

}  // namespace cycbcr::ipp
