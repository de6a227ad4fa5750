// Planar to planar: the nine wrappers against a byte model of their plane
// placement and row rules between guard pages, at the plain and AVX2 levels, and
// a worked frame of the chroma row and plane rules.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/byte_model.h"
#include "support/converters.h"
#include "support/frames.h"

using namespace cycbcr_test;

namespace {

// Every planar to planar converter of the library's list.
struct PlanarWrapper {
    std::string name;
    Converter fn;
    Fmt dst, src;
};
std::vector<PlanarWrapper> wrappers() {
    std::vector<PlanarWrapper> out;
    for (const Listed& l : listed_where([](const Listed& l) {
             return cycbcr::is_planar8(l.from) && cycbcr::is_planar8(l.to);
         }))
        out.push_back({l.name, l.fn, l.to, l.from});
    return out;
}

// The engines fill the first chroma plane from the first. The wrappers name Cr
// first for 4:2:0 and Cb first for P422, so between the two Cb and Cr trade places.
std::pair<size_t, size_t> engine_planes(Fmt f, uint32_t pitch, uint32_t height) {
    const Layout L = layout_of(f, pitch, height);
    return L.full ? std::pair{L.cb, L.cr} : std::pair{L.cr, L.cb};
}

// The engines' rules. 4:2:0 copies: whole planes with equal pitches, else rows of
// the narrower pitch. P422 to P422: whole planes sized by dstPitch. Otherwise rows
// of width, 4:2:0 chroma rows repeated for two rows or odd 4:2:2 rows dropped.
ByteModel model(const PlanarWrapper& w, const Geometry& g, const std::vector<uint8_t>& src,
                const std::vector<uint8_t>& init) {
    ByteModel m{init, src};
    const uint32_t h = g.height, dp = g.dstPitch, sp = g.srcPitch, luma = dp * h;
    const auto [dA, dB] = engine_planes(w.dst, dp, h);
    const auto [sA, sB] = engine_planes(w.src, sp, h);
    const bool dst422 = w.dst == Fmt::P422, src422 = w.src == Fmt::P422;
    m.result = 2 * luma;
    if (!dst422 && !src422) {
        m.result = luma + luma / 2;
        if (dp == sp) {
            m.copy(0, 0, luma);
            m.copy(dA, sA, luma / 4);
            m.copy(dB, sB, luma / 4);
            return m;
        }
        const size_t n = std::min(dp, sp);
        for (size_t r = 0; r < h; ++r) m.copy(r * dp, r * sp, n);
        for (const auto& [d, s] : {std::pair{dA, sA}, std::pair{dB, sB}})
            for (size_t r = 0; r < h / 2; ++r) m.copy(d + r * dp / 2, s + r * sp / 2, n / 2);
    } else if (dst422 && src422) {
        m.copy(0, 0, luma);
        m.copy(dA, sA, luma / 2);
        m.copy(dB, sB, luma / 2);
    } else {
        for (size_t r = 0; r < h; ++r) {
            m.copy(r * dp, r * sp, g.width);
            if (!dst422 && r % 2 == 1) continue;  // odd 4:2:2 chroma rows are dropped
            const size_t to = (dst422 ? r : r / 2) * (dp / 2),
                         from = (dst422 ? r / 2 : r) * (sp / 2);
            m.copy(dA + to, sA + from, g.width / 2);
            m.copy(dB + to, sB + from, g.width / 2);
        }
    }
    return m;
}

void PrintTo(const PlanarWrapper& w, std::ostream* os) {
    *os << w.name;
}

class PlanarWrapperTest : public ::testing::TestWithParam<PlanarWrapper> {};

// Widths around the 16- and 32-byte steps and past the AVX2 form's whole-row
// copies; pitches equal, equal and odd, and unequal either way, among them I420
// rows of 720 pixels between pitches 720 and 768 (720 bytes a Y row, 360 a
// chroma row).
TEST_P(PlanarWrapperTest, MatchesModelWithinExactBounds) {
    const PlanarWrapper& w = GetParam();
    std::vector<Geometry> shapes = {{720, 4, 720, 768}, {720, 4, 768, 720}};
    for (uint32_t width : {0u, 1u, 2u, 3u, 15u, 16u, 17u, 31u, 32u, 33u, 65u, 100u, 300u, 515u})
        for (uint32_t h : {0u, 1u, 2u, 3u, 5u, 6u})
            for (const auto& [dp, sp] : {std::pair{width, width},
                                         {width + 3, width + 3},
                                         {width + 16, width},
                                         {width, width + 5},
                                         {width + 1, width + 40}})
                shapes.push_back({width, h, dp, sp});
    uint32_t seed = 1;
    for (const Geometry& g : shapes) {
        const size_t bound = 3 * size_t{g.height + 1} * (g.dstPitch + g.srcPitch + 8);
        const auto src = random_bytes(bound, seed++);
        const ByteModel m = model(w, g, src, random_bytes(bound, seed++));
        for (uint32_t level : {0u, 5u}) {
            gdwProcType = level;
            ASSERT_TRUE(matches(m, w.fn, g)) << "level " << level << ", " << g;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, PlanarWrapperTest, ::testing::ValuesIn(wrappers()),
                         [](const auto& info) { return short_name(info.param.name); });

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

TEST(PlanarCopy, WrappersChooseALevelFirst) {
    std::vector<uint8_t> src(64), dst(64);
    const uint32_t chosen = cycbcr_set_cpu(5);
    gdwProcType = kLevelMarker;
    cycbcr_yv12_to_i420(dst.data(), src.data(), 4, 2, 4, 4);
    EXPECT_EQ(gdwProcType, chosen);
}

}  // namespace
