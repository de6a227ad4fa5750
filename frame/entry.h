// The processor level as the converters read it, and the one decision every
// exported function makes on entry: whether to choose a level first, then which
// of its paths the level allows.
#pragma once

#include <cstdint>

#include "cycbcr.h"
#include "frame/inline.h"
#include "platform/cpu_features.h"

namespace cycbcr {

// gdwProcType before any level is chosen.
inline constexpr uint32_t kLevelUnset = 0xFFFFFFFEu;

// The level is a plain global that any thread may write; these keep each read
// and write a single untorn access.
CYCBCR_INLINE uint32_t load_level() {
    return __atomic_load_n(&gdwProcType, __ATOMIC_RELAXED);
}
CYCBCR_INLINE void store_level(uint32_t level) {
    __atomic_store_n(&gdwProcType, level, __ATOMIC_RELAXED);
}

// Most exports choose the best supported level when none is chosen yet; a few
// only read it, and while it is unset take their plain path.
enum class OnEntry : uint8_t { ChooseLevel, ReadLevel };

// The paths the level allows, read once per call.
struct Paths {
    // Level 5 with bit 23 of CPUFeatureFlags() at the time of the call: an export
    // with an AVX2 form takes it, and a plain engine may run its exact AVX2 row
    // kernels.
    bool avx2;
    // The level read as an unsigned number is above 3: an export with an
    // imaging-library path may take it.
    bool imaging;
};

// Whether an imaging-library equivalent runs its AVX2 row kernels (the same
// bytes as its plain ones): on an AVX2 processor at every level but 0, since
// the paths that call them are taken below level 5; level 0 keeps every path
// plain.
CYCBCR_INLINE bool imaging_avx2() {
    return load_level() != 0 && (CPUFeatureFlags() & kCpuAvx2) != 0;
}

CYCBCR_INLINE Paths entry(OnEntry on) {
    if (on == OnEntry::ChooseLevel && load_level() == kLevelUnset) cycbcr_set_cpu(5);
    const uint32_t level = load_level();
    return {level == 5 && (CPUFeatureFlags() & kCpuAvx2) != 0, level > 3u};
}

}  // namespace cycbcr
