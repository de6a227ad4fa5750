#include "platform/imaging.h"

#include <cstddef>
#include <initializer_list>

#include "platform/packed_rows.h"

namespace cycbcr::ipp {
namespace {

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

IppStatus packed_to_planes(PackedOrder order, const Ipp8u* src, int srcStep, Ipp8u* dst[3],
                           int dstStep[3], IppiSize roi) {
    const void* const ptrs[] = {src, dst[0], dst[1], dst[2]};
    if (IppStatus s = check(ptrs, roi, 2, 1, {srcStep, dstStep[0], dstStep[1], dstStep[2]}))
        return s;
    const size_t pairs = static_cast<size_t>(roi.width) / 2;
    for (int r = 0; r < roi.height; ++r)
        split_packed_row(order, src + static_cast<ptrdiff_t>(r) * srcStep,
                         dst[0] + static_cast<ptrdiff_t>(r) * dstStep[0],
                         dst[1] + static_cast<ptrdiff_t>(r) * dstStep[1],
                         dst[2] + static_cast<ptrdiff_t>(r) * dstStep[2], pairs, true);
    return ippStsNoErr;
}

}  // namespace

IppStatus ippiCbYCr422ToYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst[3],
                                          int dstStep[3], IppiSize roiSize) {
    return packed_to_planes(PackedOrder::UYVY, pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst[3], int dstStep[3],
                                IppiSize roiSize) {
    return packed_to_planes(PackedOrder::YUY2, pSrc, srcStep, pDst, dstStep, roiSize);
}

IppStatus ippiYCbCr422ToCbYCr422_8u_P3C2R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                          int dstStep, IppiSize roiSize) {
    const void* const ptrs[] = {pSrc[0], pSrc[1], pSrc[2], pDst};
    if (IppStatus s = check(ptrs, roiSize, 2, 1, {srcStep[0], srcStep[1], srcStep[2], dstStep}))
        return s;
    const size_t pairs = static_cast<size_t>(roiSize.width) / 2;
    for (int r = 0; r < roiSize.height; ++r)
        merge_packed_row(PackedOrder::UYVY, pDst + static_cast<ptrdiff_t>(r) * dstStep,
                         pSrc[0] + static_cast<ptrdiff_t>(r) * srcStep[0],
                         pSrc[1] + static_cast<ptrdiff_t>(r) * srcStep[1],
                         pSrc[2] + static_cast<ptrdiff_t>(r) * srcStep[2], pairs);
    return ippStsNoErr;
}

IppStatus ippiYCrCb420ToCbYCr422_8u_P3C2R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                          int dstStep, IppiSize roiSize) {
    const void* const ptrs[] = {pSrc[0], pSrc[1], pSrc[2], pDst};
    if (IppStatus s = check(ptrs, roiSize, 2, 2, {srcStep[0], srcStep[1], srcStep[2], dstStep}))
        return s;
    const int width = roiSize.width & ~1;
    const int height = roiSize.height & ~1;
    const size_t pairs = static_cast<size_t>(width) / 2;
    for (int r = 0; r < height; ++r) {
        const ptrdiff_t c = static_cast<ptrdiff_t>(r / 2);
        merge_packed_row(PackedOrder::UYVY, pDst + static_cast<ptrdiff_t>(r) * dstStep,
                         pSrc[0] + static_cast<ptrdiff_t>(r) * srcStep[0], pSrc[2] + c * srcStep[2],
                         pSrc[1] + c * srcStep[1], pairs);
    }
    return width == roiSize.width && height == roiSize.height ? ippStsNoErr : ippStsDoubleSize;
}

}  // namespace cycbcr::ipp
