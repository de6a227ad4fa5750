// AVX2 form of the 4:2:2 <-> 4:2:0 planar engine: the shared frame walk with
// the AVX2 row copy.
#include "frame/export.h"
#include "ycbcr8/planar_copy.h"

extern "C" {

CYCBCR_API unsigned int cycbcr_planar_422_420_avx2(uint8_t* dY, uint8_t* dA, uint8_t* dB,
                                                   const uint8_t* sY, const uint8_t* sA,
                                                   const uint8_t* sB, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, unsigned int dst422,
                                                   unsigned int src422) {
    return cycbcr::planar_422_420_frame(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch,
                                        dst422 != 0, src422 != 0,
                                        cycbcr::avx2::copy_row(cycbcr::Store::Cached));
}

}  // extern "C"
