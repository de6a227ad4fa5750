// The frame walk of the 4:2:0 <-> 4:2:2 planar engine, shared by its plain and
// AVX2 forms, which differ only in the row copy.
#pragma once

#include <cstdint>

#include "platform/memory.h"

namespace cycbcr {

// The engine after its choice of path: neither side 4:2:2, the 4:2:0 copy; both,
// whole planes sized by dstPitch; otherwise the rows, repeating (4:2:0 to 4:2:2)
// or dropping (4:2:2 to 4:2:0) whole chroma rows.
unsigned int planar_422_420_frame(uint8_t* dY, uint8_t* dA, uint8_t* dB, const uint8_t* sY,
                                  const uint8_t* sA, const uint8_t* sB, uint32_t width,
                                  uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                                  bool dst422, bool src422, CopyRow copy);

}  // namespace cycbcr
