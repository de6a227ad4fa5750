#include "platform/cpu_features.h"

#include <cpuid.h>

#include <cstdlib>

namespace cycbcr {
namespace {

// XGETBV without requiring -mxsave on the compiler command line.
uint64_t read_xcr0() {
    uint32_t lo = 0;
    uint32_t hi = 0;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (static_cast<uint64_t>(hi) << 32) | lo;
}

uint32_t detect() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return 0;
    uint32_t flags = 0;
    if (edx & bit_SSE2) flags |= kCpuSse2;
    if (ecx & bit_SSSE3) flags |= kCpuSsse3;
    if (ecx & bit_SSE4_1) flags |= kCpuSse41;
    if (ecx & bit_SSE4_2) flags |= kCpuSse42;

    // AVX2 is usable only when the OS saves the YMM registers on context switch.
    const bool osxsave = (ecx & bit_OSXSAVE) != 0;
    const bool avx = (ecx & bit_AVX) != 0;
    if (osxsave && avx && (read_xcr0() & 0x6) == 0x6) {
        unsigned a7 = 0, b7 = 0, c7 = 0, d7 = 0;
        if (__get_cpuid_count(7, 0, &a7, &b7, &c7, &d7) && (b7 & bit_AVX2)) flags |= kCpuAvx2;
    }
    return flags;
}

uint32_t compute_flags() {
    const uint32_t detected = detect();
    const char* text = std::getenv("CYCBCR_CPU_FLAGS");
    if (text == nullptr || *text == '\0') return detected;
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 16);
    if (end == text || *end != '\0') return detected;  // unparsable: ignored
    return apply_cpu_override(detected, static_cast<uint32_t>(value));
}

}  // namespace

uint32_t apply_cpu_override(uint32_t detected, uint32_t requested) {
    // Users may restrict paths freely, but never enable AVX2 code on a processor
    // that cannot run it.
    return (requested & ~kCpuAvx2) | (requested & detected & kCpuAvx2);
}

uint32_t detected_cpu_features() {
    static const uint32_t flags = detect();
    return flags;
}

uint32_t CPUFeatureFlags() {
    static const uint32_t flags = compute_flags();
    return flags;
}

}  // namespace cycbcr
