// Reading the processor level on the converters' hot paths.
#pragma once

#include <cstdint>

#include "cycbcr.h"
#include "platform/cpu_features.h"

namespace cycbcr {

inline constexpr uint32_t kLevelUnset = 0xFFFFFFFEu;

// The level is a plain global that any thread may write; these accessors keep
// each read and write a single untorn access.
[[gnu::always_inline]] inline uint32_t load_level() {
    return __atomic_load_n(&gdwProcType, __ATOMIC_RELAXED);
}
[[gnu::always_inline]] inline void store_level(uint32_t level) {
    __atomic_store_n(&gdwProcType, level, __ATOMIC_RELAXED);
}

// Chooses the best supported level when none has been chosen yet.
[[gnu::always_inline]] inline void ensure_level() {
    if (load_level() == kLevelUnset) cycbcr_set_cpu(5);
}

// True when a converter with an AVX2 form must take it: level 5, and bit 23
// reported at the time of this call.
[[gnu::always_inline]] inline bool avx2_path() {
    return load_level() == 5 && (CPUFeatureFlags() & kCpuAvx2) != 0;
}

// True when a converter with an image-library path may take it: the level read
// as an unsigned number is above 3.
[[gnu::always_inline]] inline bool imaging_path() {
    return load_level() > 3u;
}

}  // namespace cycbcr
