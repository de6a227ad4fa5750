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

// Colour, YCbCr to RGB: studio-range YCbCr in; coefficients c as the integers
// round(c * 65536), each result (sum + 32768) >> 16, clamped to 0..255. BT.601
// (the plain names) and 709CSC give full-range RGB from Y - 16; 709HDTV keeps
// studio RGB (Y passes through). Packed 4:2:2 sources need width >= 2 and height
// >= 1 and leave an odd last column untouched; 4:2:0 sources need width >= 2 and
// height >= 2, convert the even part and return ippStsDoubleSize for odd sizes.
// No chroma interpolation: a pair (4:2:2) or a 2x2 block (4:2:0) shares one
// chroma sample. C4 outputs write B, G, R, then aval.
IppStatus ippiCbYCr422ToBGR_8u_C2C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u aval);
IppStatus ippiCbYCr422ToBGR_709HDTV_8u_C2C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                                             int dstStep, IppiSize roiSize, Ipp8u aval);
IppStatus ippiCbYCr422ToBGR_709HDTV_8u_C2C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                                             int dstStep, IppiSize roiSize);
// YVYU (Y0 Cr Y1 Cb) to R, G, B; BT.601.
IppStatus ippiYCrCb422ToRGB_8u_C2C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize);
// Planes Y, Cb, Cr (4:2:0): output row y uses chroma row y / 2.
IppStatus ippiYCbCr420ToBGR_8u_P3C4R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize, Ipp8u aval);
IppStatus ippiYCbCr420ToBGR_709HDTV_8u_P3C4R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                             int dstStep, IppiSize roiSize, Ipp8u aval);
IppStatus ippiYCbCr420ToBGR_709CSC_8u_P3C3R(const Ipp8u* pSrc[3], int srcStep[3], Ipp8u* pDst,
                                            int dstStep, IppiSize roiSize);

// Colour, RGB to YCbCr: B, G, R, A pixels (alpha ignored) to UYVY. Each
// result is the sum of round(c * 65536) * channel plus its offset << 16; luma
// rounds it, (sum + 32768) >> 16, and the chroma of a pair rounds the two
// pixels' sums together, (sum0 + sum1 + 65536) >> 17. BT.601 gives studio-range
// YCbCr clamped to 0..255; 709HDTV takes studio RGB (no luma offset) and clamps
// every sample to 1..254. width >= 2, height >= 1; an odd last column is
// neither read nor written.
IppStatus ippiBGRToCbYCr422_8u_AC4C2R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                      IppiSize roiSize);
IppStatus ippiBGRToCbYCr422_709HDTV_8u_AC4C2R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                                              int dstStep, IppiSize roiSize);

// In place: new channel i = old channel order[i], every channel of a pixel read
// before any is written; an order entry outside the channels gives
// ippStsChannelOrderErr.
IppStatus ippiSwapChannels_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   const int dstOrder[3]);
IppStatus ippiSwapChannels_8u_C4IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   const int dstOrder[4]);

// Byte k of each 3-byte pixel to plane k; one step shared by the three planes.
// width >= 1, height >= 1.
IppStatus ippiCopy_8u_C3P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3], int dstStep,
                            IppiSize roiSize);

// A 64-byte aligned block of `length` bytes, zero-filled (so rows a function
// leaves untouched read back as 0), or null for a length <= 0 or on failure.
void* ippMalloc(int length);
// Frees an ippMalloc block; null does nothing.
void ippFree(void* ptr);

}  // namespace cycbcr::ipp
