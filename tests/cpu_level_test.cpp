// Processor level selection. Each CpuEnv* suite stands for one processor: ctest
// starts it in its own process with CYCBCR_CPU_FLAGS set (see CMakeLists.txt),
// so that the level is still unchosen when the suite begins.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "cycbcr.h"
#include "platform/cpu_features.h"

namespace {

constexpr uint32_t kMarker = 0xFFFFFFFEu;

// Decided by the compiler's own detection alone, independent of the library's.
bool real_avx2() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}

struct CpuCase {
    const char* env;  // the CYCBCR_CPU_FLAGS text the process was started with
    uint32_t flags;   // what the library must report for it
    unsigned set[7];  // cycbcr_set_cpu(0) .. cycbcr_set_cpu(6)
    unsigned best;    // cycbcr_get_cpu(0)
};

bool started_with(const char* env) {
    const char* v = std::getenv("CYCBCR_CPU_FLAGS");
    return v != nullptr && std::strcmp(v, env) == 0;
}

// yvyu_to_uyvy's AVX2 form also swaps the row padding; the plain form leaves it.
bool takes_avx2_form() {
    const uint8_t src[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    uint8_t dst[8] = {};
    cycbcr_yvyu_to_uyvy(dst, src, 2, 1, 8, 8);
    return dst[4] == 6;
}

// The first choice is cycbcr_set_cpu(5), made by cycbcr_get_cpu(1) or, with
// firstByConverter, by the first conversion.
void check_levels(const CpuCase& c, bool firstByConverter = false) {
    if (!started_with(c.env))
        GTEST_SKIP() << "run through ctest (CYCBCR_CPU_FLAGS=" << c.env << ")";
    ASSERT_EQ(gdwProcType, kMarker) << "a level was chosen before the first call";
    ASSERT_EQ(cycbcr_cpu_flags(), c.flags);
    ASSERT_EQ(gdwProcType, kMarker) << "reading the feature bits chose a level";
    if (firstByConverter) {
        uint8_t buf[4] = {};
        cycbcr_yuy2_to_yuy2(buf, buf, 2, 0, 4, 4);
    } else {
        EXPECT_EQ(cycbcr_get_cpu(1), c.set[5]);
    }
    EXPECT_EQ(gdwProcType, c.set[5]) << "first choice";

    for (unsigned level = 0; level <= 6; ++level) {
        EXPECT_EQ(cycbcr_set_cpu(level), c.set[level]) << "set_cpu(" << level << ")";
        EXPECT_EQ(gdwProcType, c.set[level]) << "set_cpu(" << level << ")";
    }
    for (unsigned level : {7u, 8u, 100u, kMarker, 0xFFFFFFFFu}) {
        EXPECT_EQ(cycbcr_set_cpu(level), c.best) << "set_cpu(" << level << ")";
        EXPECT_EQ(gdwProcType, c.best) << "set_cpu(" << level << ")";
    }

    // The query reports the processor's best level and leaves the setting alone.
    cycbcr_set_cpu(1);
    EXPECT_EQ(cycbcr_get_cpu(0), c.best);
    EXPECT_EQ(cycbcr_get_cpu(1), 1u);
    EXPECT_EQ(gdwProcType, 1u);
    // Either query makes the first choice when none stands.
    gdwProcType = kMarker;
    EXPECT_EQ(cycbcr_get_cpu(0), c.best);
    EXPECT_EQ(gdwProcType, c.set[5]);

    // Converters take their AVX2 forms at level 5 exactly when bit 23 stands,
    // also when level 5 is stored without it; never at level 6.
    gdwProcType = 5;
    EXPECT_EQ(takes_avx2_form(), (c.flags & 0x800000) != 0);
    cycbcr_set_cpu(6);
    EXPECT_FALSE(takes_avx2_form());
}

// Bit 5 (0x20) level 2, bit 13 (0x2000) level 3, bit 14 (0x4000) level 4,
// bit 23 (0x800000) level 5, bit 7 (0x80) level 6.
TEST(CpuEnvBit7, Levels) {
    check_levels({"0x80", 0x80, {0, 1, 1, 1, 1, 1, 6}, 6});
}
TEST(CpuEnvBits14And5, Levels) {
    check_levels({"4020", 0x4020, {0, 1, 2, 2, 4, 4, 2}, 4});
}
TEST(CpuEnvNone, Levels) {
    check_levels({"0", 0, {0, 1, 1, 1, 1, 1, 1}, 0});
}
TEST(CpuEnvBit14, Levels) {
    check_levels({"0x4000", 0x4000, {0, 1, 1, 1, 4, 4, 1}, 4});
}
TEST(CpuEnvBits13And7, Levels) {
    check_levels({"0x2080", 0x2080, {0, 1, 1, 3, 3, 3, 6}, 3});
}
TEST(CpuEnvBits7And5, Levels) {
    check_levels({"0xA0", 0xA0, {0, 1, 2, 2, 2, 2, 6}, 6});
}
TEST(CpuEnvAllBits, Levels) {
    // Bit 23 survives the override only on a processor that has AVX2.
    if (real_avx2())
        check_levels({"0x8060A0", 0x8060A0, {0, 1, 2, 3, 4, 5, 6}, 5}, true);
    else
        check_levels({"0x8060A0", 0x60A0, {0, 1, 2, 3, 4, 4, 6}, 4}, true);
}
TEST(CpuEnvUnparsable, Ignored) {
    if (!started_with("zz")) GTEST_SKIP();
    ASSERT_EQ(gdwProcType, kMarker);
    EXPECT_EQ(cycbcr_cpu_flags(), cycbcr::detected_cpu_features());
}

// The bits stand for the features the header names.
TEST(CpuDetection, MatchesCompilerBuiltins) {
    if (std::getenv("CYCBCR_CPU_FLAGS") != nullptr) GTEST_SKIP() << "override in force";
    const uint32_t flags = cycbcr_cpu_flags();
    EXPECT_EQ(flags, cycbcr::detected_cpu_features());
    EXPECT_EQ((flags & 0x20) != 0, bool(__builtin_cpu_supports("sse2")));
    EXPECT_EQ((flags & 0x80) != 0, bool(__builtin_cpu_supports("ssse3")));
    EXPECT_EQ((flags & 0x2000) != 0, bool(__builtin_cpu_supports("sse4.1")));
    EXPECT_EQ((flags & 0x4000) != 0, bool(__builtin_cpu_supports("sse4.2")));
    EXPECT_EQ((flags & 0x800000) != 0, real_avx2());
}

// An override may take any bit away and add any bit but AVX2.
TEST(CpuOverride, KeepsBit23OnlyWhereDetected) {
    const struct {
        uint32_t detected, requested, want;
    } cases[] = {
        {0x8060A0, 0x8060A0, 0x8060A0},
        {0x0060A0, 0x8060A0, 0x0060A0},
        {0x8060A0, 0x80, 0x80},
        {0x8060A0, 0, 0},
        {0, 0x60A0, 0x60A0},
        {0x800000, 0xFFFFFFFF, 0xFFFFFFFF},
        {0, 0xFFFFFFFF, 0xFF7FFFFF},
        {0xFFFFFFFF, 0x800000, 0x800000},
    };
    for (const auto& c : cases)
        EXPECT_EQ(cycbcr::apply_cpu_override(c.detected, c.requested), c.want)
            << std::hex << c.detected << " " << c.requested;
}

}  // namespace
