// The row walk of the 4:2:0 <-> 4:2:2 planar conversions, shared by the plain
// engine and its AVX2 form.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cycbcr::detail {

using CopyRow = void (*)(uint8_t* dst, const uint8_t* src, size_t n);

// Steps 3 to 5 of the 4:2:2 <-> 4:2:0 engine (at least one flag set): P422 to
// P422 as whole planes sized by dstPitch; otherwise width bytes of Y per row and
// width / 2 of chroma, repeating (4:2:0 to 4:2:2) or dropping (4:2:2 to 4:2:0)
// whole chroma rows. Returns 2 * dstPitch * height.
unsigned int planar_422_420_rows(uint8_t* dY, uint8_t* dA, uint8_t* dB, const uint8_t* sY,
                                 const uint8_t* sA, const uint8_t* sB, uint32_t width,
                                 uint32_t height, uint32_t dstPitch, uint32_t srcPitch, bool dst422,
                                 CopyRow copy);

}  // namespace cycbcr::detail
