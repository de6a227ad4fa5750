// cycbcr cpu: the processor feature bits the library goes by and the levels it
// derives from them.
#include <cycbcr.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "commands.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

struct FeatureBit {
    int bit;
    const char* meaning;
    unsigned int level;
};

constexpr FeatureBit kFeatureBits[] = {
    {5, "SSE2", 2},
    {7, "SSSE3", 6},
    {13, "SSE4.1", 3},
    {14, "SSE4.2", 4},
    {23, "AVX2 usable (OS saves YMM state)", 5},
};

const char* level_meaning(unsigned int level) {
    switch (level) {
        case 0:
        case 1:
        case 2:
        case 3:
            return "plain paths";
        case 4:
            return "plain paths and the built-in image-library paths";
        case 5:
            return "AVX2 forms and the built-in image-library paths";
        case 6:
            return "plain paths and the built-in image-library paths, no AVX2";
        default:
            return "not a level";
    }
}

}  // namespace

int run_cpu(Args args) {
    if (!args.empty()) throw ToolError("cpu: takes no arguments");

    const uint32_t flags = cycbcr_cpu_flags();
    const char* override_text = std::getenv("CYCBCR_CPU_FLAGS");
    const bool overridden = override_text != nullptr && *override_text != '\0';

    std::printf("feature bits: 0x%08X (%s)\n", flags,
                overridden ? "CYCBCR_CPU_FLAGS is set; ignored if not hexadecimal"
                           : "detected; CYCBCR_CPU_FLAGS not set");
    uint32_t described = 0;
    for (const FeatureBit& f : kFeatureBits) {
        const uint32_t mask = 1u << f.bit;
        described |= mask;
        std::printf("  bit %-2d (0x%06X) %-32s %-7s -> level %u\n", f.bit, mask, f.meaning,
                    (flags & mask) ? "set" : "not set", f.level);
    }
    if (flags & ~described) {
        std::printf("  other bits set: 0x%08X (not used by the library)\n", flags & ~described);
    }

    const unsigned int best = cycbcr_get_cpu(0);
    const unsigned int chosen = cycbcr_get_cpu(1);
    std::printf("best supported level: %u (%s)\n", best, level_meaning(best));
    std::printf("chosen level:         %u (%s)\n", chosen, level_meaning(chosen));
    if (overridden) {
        std::printf(
            "CYCBCR_CPU_FLAGS=%s replaces the detected bits (bit 23 only where the "
            "processor has AVX2).\n",
            override_text);
    } else {
        std::printf(
            "Set CYCBCR_CPU_FLAGS (hexadecimal, e.g. CYCBCR_CPU_FLAGS=0x20 for SSE2 "
            "only) to replace the detected bits; bit 23 is kept only where the processor "
            "has AVX2.\n");
    }
    return 0;
}

}  // namespace cycbcr_tool
