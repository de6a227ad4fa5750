// Processor feature bits behind the processor levels.
#pragma once

#include <cstdint>

namespace cycbcr {

// Bit positions of CPUFeatureFlags(). Each bit selects one processor level.
inline constexpr uint32_t kCpuSse2 = 1u << 5;    // level 2
inline constexpr uint32_t kCpuSsse3 = 1u << 7;   // level 6
inline constexpr uint32_t kCpuSse41 = 1u << 13;  // level 3
inline constexpr uint32_t kCpuSse42 = 1u << 14;  // level 4
inline constexpr uint32_t kCpuAvx2 = 1u << 23;   // level 5: AVX2 and OS-saved YMM state

// The bits detected from cpuid, or the CYCBCR_CPU_FLAGS override (hexadecimal,
// read once) with bit 23 kept only where the processor really has AVX2.
// Cheap enough to call on every conversion.
uint32_t CPUFeatureFlags();

// The bits cpuid reports, ignoring any override.
uint32_t detected_cpu_features();

// Applies an override value to the detected bits (exposed for tests).
uint32_t apply_cpu_override(uint32_t detected, uint32_t requested);

}  // namespace cycbcr
