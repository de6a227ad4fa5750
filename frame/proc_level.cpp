#include "frame/entry.h"

extern "C" {
CYCBCR_API uint32_t gdwProcType = cycbcr::kLevelUnset;
}

namespace cycbcr {
namespace {

bool has(uint32_t bit) {
    return (CPUFeatureFlags() & bit) != 0;
}

// The fallback chain of an explicit request. Level 6 skips 4 and 3, and the
// bottom of the chain is 1, unlike the automatic choice below; both kept as
// callers have always seen them.
uint32_t resolve_request(uint32_t level) {
    switch (level) {
        case 0:
            return 0;
        case 1:
            return 1;
        case 5:
            if (has(kCpuAvx2)) return 5;
            [[fallthrough]];
        case 4:
            if (has(kCpuSse42)) return 4;
            [[fallthrough]];
        case 3:
            if (has(kCpuSse41)) return 3;
            return has(kCpuSse2) ? 2 : 1;
        case 6:
            if (has(kCpuSsse3)) return 6;
            [[fallthrough]];
        case 2:
        default:
            return has(kCpuSse2) ? 2 : 1;
    }
}

// The automatic choice: 5, 4, 3, 6, 2, else 0.
uint32_t best_level() {
    if (has(kCpuAvx2)) return 5;
    if (has(kCpuSse42)) return 4;
    if (has(kCpuSse41)) return 3;
    if (has(kCpuSsse3)) return 6;
    if (has(kCpuSse2)) return 2;
    return 0;
}

}  // namespace
}  // namespace cycbcr

extern "C" {

CYCBCR_API uint32_t cycbcr_cpu_flags(void) {
    return cycbcr::CPUFeatureFlags();
}

CYCBCR_API unsigned int cycbcr_set_cpu(unsigned int level) {
    const uint32_t stored = level > 6 ? cycbcr_get_cpu(0) : cycbcr::resolve_request(level);
    cycbcr::store_level(stored);
    return stored;
}

CYCBCR_API unsigned int cycbcr_get_cpu(int current) {
    cycbcr::entry(cycbcr::OnEntry::ChooseLevel);
    if (current != 0) return cycbcr::load_level();
    return cycbcr::best_level();
}

}  // extern "C"
