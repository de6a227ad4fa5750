// Format codes and their grouping for the pitch rule and the dispatcher.
#pragma once

#include <cstdint>

#include "cycbcr.h"

namespace cycbcr {

// The canonical formats that every accepted code stands for.
enum class Format { Unknown, UYVY, YUY2, YVYU, CYUV, I420, YV12, P422, V210, RGB32 };

// Maps an accepted code (alias or canonical) to its format. "422P" maps to P422;
// the dispatcher refuses it as a destination on its own.
Format canonical_format(uint32_t fourcc);

// Packed 8-bit 4:2:2 codes of the pitch rule.
bool is_packed422_code(uint32_t fourcc);

}  // namespace cycbcr
