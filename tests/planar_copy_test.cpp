// Planar to planar: the nine wrappers against a byte model of their plane tables
// and row rules between guard pages, at the plain and AVX2 levels; worked frames;
// and the 4:2:2 <-> 4:2:0 engine's two forms against each other.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/byte_model.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

using namespace cycbcr_test;

namespace {

// Where a chroma plane starts, with D = pitch * height (32-bit): D, D + D/4, D + D/2.
enum class At { D, DQuarter, DHalf };
size_t at(At where, uint32_t pitch, uint32_t height) {
    const uint32_t d = pitch * height;
    return where == At::D ? d : where == At::DQuarter ? size_t{d} + (d >> 2) : size_t{d} + (d >> 1);
}

struct PlanarWrapper {
    const char* name;
    Converter fn;
    At dstA, dstB, srcA, srcB;
    int dst422, src422;  // -1: the 4:2:0 copy
};
// clang-format off
const PlanarWrapper kWrappers[] = {
    {"i420_to_i420", cycbcr_i420_to_i420, At::DQuarter, At::D, At::DQuarter, At::D, -1, -1},
    {"i420_to_yv12", cycbcr_i420_to_yv12, At::D, At::DQuarter, At::DQuarter, At::D, -1, -1},
    {"yv12_to_i420", cycbcr_yv12_to_i420, At::DQuarter, At::D, At::D, At::DQuarter, -1, -1},
    {"yv12_to_yv12", cycbcr_yv12_to_yv12, At::D, At::DQuarter, At::D, At::DQuarter, -1, -1},
    {"i420_to_p422", cycbcr_i420_to_p422, At::D, At::DHalf, At::DQuarter, At::D, 1, 0},
    {"yv12_to_p422", cycbcr_yv12_to_p422, At::D, At::DHalf, At::D, At::DQuarter, 1, 0},
    {"p422_to_i420", cycbcr_p422_to_i420, At::DQuarter, At::D, At::D, At::DHalf, 0, 1},
    {"p422_to_yv12", cycbcr_p422_to_yv12, At::D, At::DQuarter, At::D, At::DHalf, 0, 1},
    {"p422_to_p422", cycbcr_p422_to_p422, At::D, At::DHalf, At::D, At::DHalf, 1, 1},
};
// clang-format on

// The engines' rules; returns the count.
uint32_t model(ByteModel& m, const PlanarWrapper& w, const Geometry& g) {
    const uint32_t h = g.height, dp = g.dstPitch, sp = g.srcPitch, luma = dp * h;
    const size_t dA = at(w.dstA, dp, h), dB = at(w.dstB, dp, h);
    const size_t sA = at(w.srcA, sp, h), sB = at(w.srcB, sp, h);
    if (w.dst422 < 0) {
        if (dp == sp) {
            m.copy(0, 0, luma);
            m.copy(dA, sA, luma / 4);
            m.copy(dB, sB, luma / 4);
        } else {
            const size_t n = std::min(dp, sp);
            for (size_t r = 0; r < h; ++r) m.copy(r * dp, r * sp, n);
            for (const auto& [d, s] : {std::pair{dA, sA}, std::pair{dB, sB}})
                for (size_t r = 0; r < h / 2; ++r) m.copy(d + r * dp / 2, s + r * sp / 2, n / 2);
        }
        return luma + luma / 2;
    }
    if (w.dst422 && w.src422) {
        m.copy(0, 0, luma);
        m.copy(dA, sA, luma / 2);
        m.copy(dB, sB, luma / 2);
        return 2 * luma;
    }
    for (size_t r = 0; r < h; ++r) {
        m.copy(r * dp, r * sp, g.width);
        if (!w.dst422 && r % 2 == 1) continue;  // odd 4:2:2 chroma rows are dropped
        const size_t to = (w.dst422 ? r : r / 2) * (dp / 2),
                     from = (w.dst422 ? r / 2 : r) * (sp / 2);
        m.copy(dA + to, sA + from, g.width / 2);
        m.copy(dB + to, sB + from, g.width / 2);
    }
    return 2 * luma;
}

void PrintTo(const PlanarWrapper& w, std::ostream* os) {
    *os << w.name;
}

class PlanarWrapperTest : public ::testing::TestWithParam<PlanarWrapper> {};

// Widths around the 16- and 32-byte steps and past the AVX2 form's whole-row
// copies; pitches equal, equal and odd, and unequal either way.
TEST_P(PlanarWrapperTest, MatchesModelWithinExactBounds) {
    const PlanarWrapper& w = GetParam();
    uint32_t seed = 1;
    for (uint32_t width : {0u, 1u, 2u, 3u, 15u, 16u, 17u, 31u, 32u, 33u, 65u, 100u, 300u, 515u})
        for (uint32_t h : {0u, 1u, 2u, 3u, 5u, 6u})
            for (const auto& [dp, sp] : {std::pair{width, width},
                                         {width + 3, width + 3},
                                         {width + 16, width},
                                         {width, width + 5},
                                         {width + 1, width + 40}}) {
                const Geometry g{width, h, dp, sp};
                const size_t bound = 3 * size_t{h + 1} * (dp + sp + 8);
                const auto src = random_bytes(bound, seed++), init = random_bytes(bound, seed++);
                ByteModel m{init, src};
                const uint32_t want = model(m, w, g);
                for (uint32_t level : {0u, 5u}) {
                    gdwProcType = level;
                    const Outcome got = run_guarded(w.fn, g, src, m.srcEnd, init, m.dstEnd);
                    ASSERT_EQ(got.result, want) << "level " << level << ", " << g;
                    ASSERT_TRUE(same_bytes(got.dst, m.dst)) << "level " << level << ", " << g;
                }
            }
}

INSTANTIATE_TEST_SUITE_P(All, PlanarWrapperTest, ::testing::ValuesIn(kWrappers),
                         [](const auto& info) { return std::string(info.param.name); });

// I420 copies between pitches 720 and 768: 720 bytes a Y row and 360 a chroma row
// (chroma rows half a pitch apart), the wider side's padding untouched.
TEST(PlanarCopy, RowsOfTheNarrowerPitch) {
    const uint32_t h = 4;
    for (const auto& [dp, sp] : {std::pair{720u, 768u}, {768u, 720u}}) {
        const auto src = random_bytes(size_t{sp} * h * 3 / 2, dp);
        std::vector<uint8_t> dst(size_t{dp} * h * 3 / 2, 0xEE);
        EXPECT_EQ(cycbcr_i420_to_i420(dst.data(), src.data(), 720, h, dp, sp), dp * h * 3 / 2);
        for (size_t r = 0; r < 2 * h; ++r) {  // h Y rows, then h / 2 rows of each chroma plane
            const bool y = r < h;
            const size_t d = y ? r * dp : dp * h + (r - h) * dp / 2, n = y ? 720 : 360;
            const size_t s = y ? r * sp : sp * h + (r - h) * sp / 2;
            EXPECT_TRUE(std::equal(dst.begin() + d, dst.begin() + d + n, src.begin() + s)) << r;
            if (dp > sp) {
                EXPECT_EQ(dst[d + n], 0xEE) << "row " << r;
            }
        }
    }
}

// P422 to P422 copies three blocks sized by dstPitch, wherever srcPitch puts the planes.
TEST(PlanarCopy, P422ToP422CopiesBlocksSizedByDstPitch) {
    const uint32_t h = 3, dp = 10, sp = 16;
    const auto src = random_bytes(size_t{sp} * h * 2 + 8, 3);
    for (uint32_t level : {0u, 5u}) {
        gdwProcType = level;
        std::vector<uint8_t> dst(dp * h * 2, 0xEE);
        EXPECT_EQ(cycbcr_p422_to_p422(dst.data(), src.data(), 4, h, dp, sp), 2 * dp * h);
        EXPECT_TRUE(std::equal(dst.begin(), dst.begin() + 30, src.begin()));
        EXPECT_TRUE(std::equal(dst.begin() + 30, dst.begin() + 45, src.begin() + 48));
        EXPECT_TRUE(std::equal(dst.begin() + 45, dst.begin() + 60, src.begin() + 72));
    }
}

// I420 to P422, height 4: chroma rows 0 and 1 from row 0, 2 and 3 from row 1, and
// the P422 Cb plane holds the I420 Cr samples. P422 to I420, height 5: chroma
// rows 0, 1, 2 from rows 0, 2, 4, again exchanged.
TEST(PlanarCopy, ChromaRowsRepeatedOrDroppedAndExchanged) {
    for (uint32_t level : {0u, 5u}) {
        gdwProcType = level;
        // I420, width 4, pitch 4: Y 0..15, Cb rows 0xB0, 0xB1 at 16, Cr rows 0xC0, 0xC1 at 20.
        std::vector<uint8_t> i420(24), p422(32);
        for (size_t i = 0; i < 16; ++i) i420[i] = uint8_t(i);
        for (size_t c = 0; c < 2; ++c)
            for (size_t k = 0; k < 2; ++k)
                i420[16 + 2 * c + k] = uint8_t(0xB0 + c), i420[20 + 2 * c + k] = uint8_t(0xC0 + c);
        EXPECT_EQ(cycbcr_i420_to_p422(p422.data(), i420.data(), 4, 4, 4, 4), 32u);
        const std::vector<uint8_t> wantP422 = {0,    1,    2,    3,    4,    5,    6,    7,
                                               8,    9,    10,   11,   12,   13,   14,   15,
                                               0xC0, 0xC0, 0xC0, 0xC0, 0xC1, 0xC1, 0xC1, 0xC1,
                                               0xB0, 0xB0, 0xB0, 0xB0, 0xB1, 0xB1, 0xB1, 0xB1};
        EXPECT_EQ(p422, wantP422) << "level " << level;

        // P422, width 4, pitch 8, height 5: Cb rows 0xB0 + r at 40, Cr rows 0xC0 + r at 60.
        std::vector<uint8_t> src(80), out(60, 0xEE);
        for (size_t r = 0; r < 5; ++r)
            for (size_t k = 0; k < 4; ++k)
                src[40 + 4 * r + k] = uint8_t(0xB0 + r), src[60 + 4 * r + k] = uint8_t(0xC0 + r);
        EXPECT_EQ(cycbcr_p422_to_i420(out.data(), src.data(), 4, 5, 8, 8), 80u);
        // Destination Cb plane at 40 (from the P422 Cr), Cr plane at 50 (from the P422 Cb).
        for (size_t r = 0; r < 3; ++r)
            for (size_t k = 0; k < 2; ++k) {
                EXPECT_EQ(out[40 + 4 * r + k], 0xC0 + 2 * r) << "level " << level << " row " << r;
                EXPECT_EQ(out[50 + 4 * r + k], 0xB0 + 2 * r) << "level " << level << " row " << r;
            }
    }
}

TEST(PlanarCopy, CountsAndLevelChoice) {
    std::vector<uint8_t> src(64), dst(64);
    gdwProcType = 0;
    EXPECT_EQ(cycbcr_i420_to_yv12(dst.data(), src.data(), 4, 3, 5, 5), 22u);  // 15 + 15 / 2
    EXPECT_EQ(cycbcr_yv12_to_p422(dst.data(), src.data(), 4, 3, 5, 5), 30u);
    EXPECT_EQ(cycbcr_p422_to_yv12(dst.data(), src.data(), 4, 3, 5, 6), 30u);
    const uint32_t chosen = cycbcr_set_cpu(5);
    gdwProcType = kLevelMarker;
    cycbcr_yv12_to_i420(dst.data(), src.data(), 4, 2, 4, 4);
    EXPECT_EQ(gdwProcType, chosen) << "the wrappers choose a level first";
}

}  // namespace
