// The image-library functions some converter paths hand frames to, implemented
// here with the library's published argument lists, byte orders and status
// codes. Internal: a program that also links the real library must not see them.
#pragma once

#include <cstdint>

namespace cycbcr::ipp {

using IppStatus = int;
using Ipp8u = uint8_t;
struct IppiSize {
    int width;
    int height;
};

inline constexpr IppStatus ippStsNoErr = 0;
inline constexpr IppStatus ippStsSizeErr = -6;
inline constexpr IppStatus ippStsNullPtrErr = -8;
inline constexpr IppStatus ippStsStepErr = -14;
inline constexpr IppStatus ippStsChannelOrderErr = -60;
inline constexpr IppStatus ippStsDoubleSize = 35;  // a warning: odd size, even part done

// UYVY to planes Y, Cb, Cr (4:2:2). width >= 2, height >= 1; an odd last column
// is left untouched.
IppStatus ippiCbYCr422ToYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst[3],
                                          int dstStep[3], IppiSize roiSize);
// YUY2 to planes Y, Cb, Cr (4:2:2).
IppStatus ippiYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst[3], int dstStep[3],
                                IppiSize roiSize);
// Planes Y, Cb, Cr (4:2:2) to UYVY.
IppStatus ippiYCbCr422ToCbYCr422_8u_P3C2R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                          int dstStep, IppiSize roiSize);
// Planes Y, Cr, Cb (4:2:0) to UYVY, output row y using chroma row y / 2.
// width >= 2, height >= 2; odd sizes convert the even part and return
// ippStsDoubleSize.
IppStatus ippiYCrCb420ToCbYCr422_8u_P3C2R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                          int dstStep, IppiSize roiSize);

}  // namespace cycbcr::ipp
