// RGB to 8-bit YCbCr. Each engine (the scalar one, the 14-bit AVX2 one, the
// float converter, the alpha extractor, the image-library path of 32-bit RGB
// to UYVY) is measured against its own rule written out in
// support/from_rgb_model.h, on worked numbers and on random frames of every
// source depth, layout and output shape; every exported wrapper through its
// pointer placement, at levels 0, 4 and 5 and with no level chosen; every
// wrapper between guard pages at the bytes cycbcr_converter_buffer_sizes
// answers; and the dispatcher from code 0.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <limits>
#include <vector>

#include "cycbcr.h"
#include "support/frames.h"
#include "support/from_rgb_model.h"
#include "support/guarded_buffer.h"

namespace {

using namespace cycbcr_test;

using Engine = uint64_t (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                            unsigned int, unsigned int, unsigned int, QBYCBCRMatrix, QBYCBCRRgbType,
                            int, int, unsigned int, unsigned int);

uint64_t run(Engine fn, const EngineCall& c) {
    return fn(c.y, c.cb, c.cr, c.src, c.w, c.h, c.dp, c.sp, c.m, c.t, c.is422, c.planar, c.bpp,
              c.cp);
}

std::vector<uint32_t> levels_to_test() {
    std::vector<uint32_t> l = {0};
    if (have_avx2()) l.push_back(5);
    return l;
}

const QBYCBCRRgbType kTypes[] = {0, 1, 2, 3, 7, 0x10002, 0x8000, 0x8001, 0x8003, 0x8007};
const uint32_t kDepths[] = {24, 32, 48, 64, 16};

std::string describe(const EngineCall& c) {
    std::ostringstream os;
    os << "width " << c.w << " height " << c.h << " dstPitch " << c.dp << " srcPitch " << c.sp
       << " matrix " << c.m << " type 0x" << std::hex << c.t << std::dec << " is422 " << c.is422
       << " planar " << c.planar << " bpp " << c.bpp << " chromaPitch " << c.cp << " level "
       << gdwProcType;
    return os.str();
}

// Random source bytes, an eighth of them pushed to 0 or 255 so that black,
// white and saturated pixels (the clamps) turn up.
std::vector<uint8_t> rgb_source(size_t n, uint32_t seed) {
    std::vector<uint8_t> b = random_bytes(n, seed);
    for (auto& v : b)
        if (v < 16 || v >= 240) v = v < 16 ? 0 : 255;
    return b;
}

// An engine destination in one buffer: packed rows with Y at +1, Cb at 0 and
// Cr at +2, or three planes apart, rows exactly as long as written or padded.
enum class Shape { Packed, Planar422, Planar420 };
struct DstLayout {
    size_t size, y, cb, cr;
    uint32_t dp, cp;
    int is422, planar;
};
DstLayout dst_layout(Shape s, uint32_t w, uint32_t h, bool padded) {
    if (s == Shape::Packed) {
        const uint32_t dp = 2 * w + (padded ? 6 : 0);
        return {size_t{h} * dp + 4, 1, 0, 2, dp, 0, 1, 0};
    }
    const uint32_t dp = w + (padded ? 5 : 0), cp = (w + 1) / 2 + (padded ? 3 : 0);
    const size_t rows = s == Shape::Planar422 ? h : (h + 1) / 2;
    const size_t cb = size_t{h} * dp + 8, cr = cb + rows * cp + 8;
    return {cr + rows * cp + 8, 0, cb, cr, dp, cp, s == Shape::Planar422, 1};
}
EngineCall bind(const DstLayout& l, uint8_t* d, const uint8_t* src, uint32_t w, uint32_t h,
                uint32_t sp, QBYCBCRMatrix m, QBYCBCRRgbType t, uint32_t bpp) {
    return {d + l.y, d + l.cb, d + l.cr, src, w, h, l.dp, sp, m, t, l.is422, l.planar, bpp, l.cp};
}
uint32_t source_pitch(uint32_t w, uint32_t bpp, bool padded) {
    return w * rgb_pixel_bytes(bpp) + (padded ? 10 : 0);
}

// One engine call against a model on a random frame of this shape.
void check_engine(Engine fn, uint64_t (*model)(const EngineCall&), Shape s, uint32_t w, uint32_t h,
                  bool padded, QBYCBCRMatrix m, QBYCBCRRgbType t, uint32_t bpp, uint32_t seed) {
    const DstLayout l = dst_layout(s, w, h, padded);
    const uint32_t sp = source_pitch(w, bpp, padded);
    const auto src = rgb_source(size_t{h} * sp + 16, seed);
    std::vector<uint8_t> want = random_bytes(l.size, seed + 1), got = want;
    const EngineCall cw = bind(l, want.data(), src.data(), w, h, sp, m, t, bpp);
    const uint64_t expected = model(cw);
    ASSERT_EQ(run(fn, bind(l, got.data(), src.data(), w, h, sp, m, t, bpp)), expected)
        << describe(cw);
    ASSERT_TRUE(same_bytes(got, want)) << describe(cw);
}

// ---------------------------------------------------------------------------
// Worked numbers
// ---------------------------------------------------------------------------

// B, G, R, A pixels.
std::vector<uint8_t> bgra(std::initializer_list<std::array<uint8_t, 3>> rgb) {
    std::vector<uint8_t> out;
    for (const auto& p : rgb) out.insert(out.end(), {p[2], p[1], p[0], 0x5A});
    return out;
}
const std::array<uint8_t, 3> kRed = {255, 0, 0}, kWhite = {255, 255, 255}, kBlack = {0, 0, 0},
                             kGreen = {0, 255, 0}, kBlue = {0, 0, 255};

// Packed UYVY through an engine from 32-bit B, G, R, A pixels, one row.
std::vector<uint8_t> uyvy_row(Engine fn, const std::vector<uint8_t>& src, uint32_t w,
                              QBYCBCRMatrix m, uint64_t* result = nullptr) {
    std::vector<uint8_t> d(2 * w + 2, 0xEE);
    const uint64_t r =
        fn(d.data() + 1, d.data(), d.data() + 2, src.data(), w, 1, 2 * w, 4 * w, m, 0, 1, 0, 32, w);
    if (result) *result = r;
    return d;
}

// Red gives 82, 90, 240 (chroma of the even pixel alone); width 5 writes two
// pairs and leaves the fifth pixel's two bytes; width 1 writes nothing.
TEST(FromRgbWorked, WidthsOneAndFive) {
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        uint64_t res = 0;
        const auto five =
            uyvy_row(FromRGBInt, bgra({kRed, kWhite, kWhite, kWhite, kRed}), 5, 0, &res);
        EXPECT_EQ(res, 10u);
        EXPECT_EQ(five, (std::vector<uint8_t>{90, 82, 240, 235, 128, 235, 128, 235, 0xEE, 0xEE,
                                              0xEE, 0xEE}))
            << "level " << level;
        const auto one = uyvy_row(FromRGBInt, bgra({kRed}), 1, 0, &res);
        EXPECT_EQ(res, 2u);
        EXPECT_EQ(one, std::vector<uint8_t>(4, 0xEE));
    }
}

// 4:2:0 planar, four rows: chroma rows from frame rows 0 and 3; the odd
// pixel's luma truncated (red 65.535 -> 81 against 82, green 144 against 145).
TEST(FromRgbWorked, Planar420ChromaRowsAndOddLuma) {
    const auto src = bgra({kRed, kRed, kGreen, kGreen, kWhite, kWhite, kBlue, kBlue});
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        std::vector<uint8_t> y(8, 0xEE), cb(2, 0xEE), cr(2, 0xEE);
        EXPECT_EQ(
            FromRGBInt(y.data(), cb.data(), cr.data(), src.data(), 2, 4, 2, 8, 0, 0, 0, 1, 32, 1),
            12u);
        EXPECT_EQ(y, (std::vector<uint8_t>{82, 81, 145, 144, 235, 235, 41, 40}));
        EXPECT_EQ(cb, (std::vector<uint8_t>{90, 240}));
        EXPECT_EQ(cr, (std::vector<uint8_t>{240, 110}));
    }
}

// Matrix 0 and unknown values: the default row; 10 its own row in the scalar
// and float converters, the default 14-bit set in the AVX2 engine; white under
// 0 and 2 is 235/128/128, under 8 the luma 343 + 16 is limited to 255.
TEST(FromRgbWorked, MatrixRows) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const auto rw = bgra({kRed, kWhite}), ww = bgra({kWhite, kWhite});
    for (QBYCBCRMatrix m : {0u, 11u, 0xFFFFFFFFu})
        EXPECT_EQ(uyvy_row(FromRGBInt, rw, 2, m),
                  (std::vector<uint8_t>{90, 82, 240, 235, 0xEE, 0xEE}));
    EXPECT_EQ(uyvy_row(FromRGBInt, rw, 2, 10),
              (std::vector<uint8_t>{77, 76, 255, 255, 0xEE, 0xEE}));
    for (QBYCBCRMatrix m : {0u, 2u})
        EXPECT_EQ(uyvy_row(FromRGBInt, ww, 2, m),
                  (std::vector<uint8_t>{128, 235, 128, 235, 0xEE, 0xEE}));
    EXPECT_EQ(uyvy_row(FromRGBInt, ww, 2, 8),
              (std::vector<uint8_t>{126, 255, 128, 255, 0xEE, 0xEE}));

    // Float: the pair's chroma is the rounded-up average of both pixels.
    const float fp[8] = {0, 0, 1, 0, 1, 1, 1, 0};  // red, white as B, G, R, A
    uint8_t fd[4] = {};
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(fd, fp, 2, 1, 4, 32, 10, 0), 4u);
    EXPECT_EQ(std::vector<uint8_t>(fd, fd + 4), (std::vector<uint8_t>{103, 76, 192, 255}));
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(fd, fp, 2, 1, 4, 32, 0, 0), 4u);
    EXPECT_EQ(std::vector<uint8_t>(fd, fd + 4), (std::vector<uint8_t>{109, 82, 184, 235}));

    if (!have_avx2()) GTEST_SKIP() << "processor without AVX2 for the 14-bit engine";
    // A group of eight reds: matrix 10 as matrix 0; matrix 1 its own row.
    const auto reds = bgra({kRed, kRed, kRed, kRed, kRed, kRed, kRed, kRed});
    for (QBYCBCRMatrix m : {0u, 10u}) {
        const auto d = uyvy_row(FromRGBInt_avx2, reds, 8, m);
        for (int k = 0; k < 4; ++k)
            EXPECT_EQ(std::vector<uint8_t>(d.begin() + 4 * k, d.begin() + 4 * k + 4),
                      (std::vector<uint8_t>{90, 82, 240, 82}))
                << "matrix " << m;
    }
    EXPECT_EQ(uyvy_row(FromRGBInt_avx2, reds, 8, 1)[1], 76);
    // A lone pair is a remainder: millionths from 4211 etc., truncated.
    EXPECT_EQ(uyvy_row(FromRGBInt_avx2, bgra({kRed, kRed}), 2, 0),
              (std::vector<uint8_t>{91, 81, 239, 81, 0xEE, 0xEE}));
}

// Words 0x12FF, 0x3400, 0x56AB (R, G, B) are read as 0x12, 0x34, 0x56.
TEST(FromRgbWorked, SixteenBitChannelsByTheirHighByte) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const uint8_t px[8] = {0xFF, 0x12, 0x00, 0x34, 0xAB, 0x56, 0xFF, 0xFF};
    for (uint32_t bpp : {48u, 64u}) {
        std::vector<uint8_t> src;
        for (int i = 0; i < 2; ++i) src.insert(src.end(), px, px + bpp / 8);
        std::vector<uint8_t> d(4, 0);
        FromRGBInt(d.data() + 1, d.data(), d.data() + 2, src.data(), 2, 1, 4, bpp / 4, 0, 2, 1, 0,
                   bpp, 2);
        EXPECT_EQ(d, (std::vector<uint8_t>{148, 55, 111, 55})) << bpp;
    }
}

// The unequal thresholds: Cb +1 above 450000, -1 below -250000; Cr +-500000;
// luma +1 above 500000 (and none for the planar odd pixel).
TEST(FromRgbWorked, RoundingThresholds) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    struct Probe {
        uint8_t r, g, b;
        int channel;  // byte of the UYVY pair: 0 Cb, 1 Y, 2 Cr
        uint8_t want;
    };
    const Probe probes[] = {{0, 98, 62, 0, 126},    // Cb sum -1,300,000
                            {132, 161, 0, 2, 127},  // Cr sum -1,300,000
                            {8, 0, 6, 0, 129},     {183, 0, 65, 0, 130},  {0, 128, 82, 0, 127},
                            {136, 0, 43, 0, 126},  {169, 0, 58, 0, 128},  {150, 0, 50, 0, 128},
                            {0, 25, 16, 0, 127},   {124, 152, 0, 2, 127}, {32, 0, 219, 2, 126},
                            {28, 0, 152, 2, 129},  {39, 0, 220, 2, 130},  {0, 5, 10, 1, 19},
                            {1, 5, 38, 1, 23}};
    std::vector<uint8_t> src;
    for (const Probe& p : probes)
        for (int i = 0; i < 2; ++i) src.insert(src.end(), {p.r, p.g, p.b, 0});
    const uint32_t w = 2 * std::size(probes);
    std::vector<uint8_t> d(2 * w);
    FromRGBInt(d.data() + 1, d.data(), d.data() + 2, src.data(), w, 1, 2 * w, 4 * w, 0, 2, 1, 0, 32,
               w);
    for (size_t i = 0; i < std::size(probes); ++i)
        EXPECT_EQ(d[4 * i + probes[i].channel], probes[i].want) << "probe " << i;
    uint8_t y[2], cb[1], cr[1];
    FromRGBInt(y, cb, cr, src.data() + 8 * (std::size(probes) - 1), 2, 1, 2, 8, 0, 2, 1, 1, 32, 1);
    EXPECT_EQ(y[0], 23);
    EXPECT_EQ(y[1], 22);
}

// The engines' result: w * h * 2 for 4:2:2, else w * h + ((w * h / 2) & ~1),
// also when nothing is written.
TEST(FromRgbWorked, EngineResults) {
    struct R {
        uint32_t w, h;
        int is422;
        uint64_t want;
    };
    const R cases[] = {{1, 7, 0, 9},  {1, 7, 1, 14}, {5, 0, 0, 0},  {1, 1, 0, 1},
                       {1, 3, 0, 3},  {1, 5, 0, 7},  {5, 3, 0, 21}, {3, 3, 0, 13},
                       {7, 3, 1, 42}, {4, 0, 1, 0},  {0, 9, 1, 0}};
    std::vector<std::pair<const char*, Engine>> engines = {{"FromRGBInt", FromRGBInt},
                                                           {"FromRGB", FromRGB}};
    if (have_avx2())
        engines.insert(engines.end(),
                       {{"FromRGB_avx2", FromRGB_avx2}, {"FromRGBInt_avx2", FromRGBInt_avx2}});
    const auto src = random_bytes(4096, 3);
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (const auto& [name, fn] : engines)
            for (const R& c : cases)
                for (int planar : {0, 1}) {
                    std::vector<uint8_t> d(4096, 0xEE);
                    const uint64_t got = fn(d.data(), d.data() + 1024, d.data() + 2048, src.data(),
                                            c.w, c.h, 16, 32, 0, 0, c.is422, planar, 32, 8);
                    EXPECT_EQ(got, c.want) << name << " width " << c.w << " height " << c.h
                                           << " is422 " << c.is422 << " planar " << planar;
                    if (c.w < 2 || c.h == 0) {
                        EXPECT_EQ(d, std::vector<uint8_t>(4096, 0xEE)) << name << ": wrote";
                    }
                }
    }
}

// ---------------------------------------------------------------------------
// The engines on random frames
// ---------------------------------------------------------------------------

struct EngineCase {
    const char* name;
    Engine fn;
    uint32_t level;
    bool avx2Rule;  // the 14-bit rule for 32-bit 4:2:2 calls
};
void PrintTo(const EngineCase& e, std::ostream* os) {
    *os << e.name;
}
const EngineCase kEngineCases[] = {
    {"FromRGBInt_level0", FromRGBInt, 0, false},
    {"FromRGBInt_level5", FromRGBInt, 5, false},
    {"FromRGB_level0", FromRGB, 0, false},
    {"FromRGB_level5", FromRGB, 5, true},
    {"FromRGB_avx2", FromRGB_avx2, 5, true},
    {"FromRGBInt_avx2_level0", FromRGBInt_avx2, 0, true},
    {"FromRGBInt_avx2_level5", FromRGBInt_avx2, 5, true},
};

class FromRgbEngineModel : public ::testing::TestWithParam<EngineCase> {};

// Every source depth (16 reads as 24-bit) and layout (7 and 0x10002 as
// "other", with and without the bottom-up flag), packed, planar 4:2:2 and
// 4:2:0, odd widths, padded pitches, every matrix in turn.
TEST_P(FromRgbEngineModel, RandomFrames) {
    const EngineCase& e = GetParam();
    if (e.level == 5 || e.avx2Rule) CYCBCR_REQUIRE_AVX2();
    ASSERT_EQ(cycbcr_set_cpu(e.level), e.level);
    uint32_t seed = 10;
    for (uint32_t bpp : kDepths)
        for (Shape s : {Shape::Packed, Shape::Planar422, Shape::Planar420})
            for (uint32_t w : {1u, 2u, 3u, 5u, 8u, 9u, 15u, 16u, 17u, 31u})
                for (uint32_t h : {0u, 1u, 2u, 3u, 5u})
                    for (bool padded : {false, true})
                        for (QBYCBCRRgbType t : kTypes) {
                            seed += 2;
                            for (uint32_t j = 0; j < 3; ++j)
                                ASSERT_NO_FATAL_FAILURE(
                                    check_engine(e.fn, e.avx2Rule ? model_avx2 : model_scalar, s, w,
                                                 h, padded, (seed / 2 + 5 * j) % 12, t, bpp, seed));
                        }
}

INSTANTIATE_TEST_SUITE_P(All, FromRgbEngineModel, ::testing::ValuesIn(kEngineCases),
                         [](const auto& info) { return std::string(info.param.name); });

// A NULL Cb pointer: no chroma at all, Cr's bytes untouched too.
TEST(FromRgbEngine, NullCbWritesNoChroma) {
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (uint32_t w : {2u, 7u, 16u, 33u})
            for (uint32_t bpp : kDepths) {
                const DstLayout l = dst_layout(Shape::Packed, w, 3, true);
                const uint32_t sp = source_pitch(w, bpp, true);
                const auto src = random_bytes(3 * sp + 16, w + bpp);
                std::vector<uint8_t> want = random_bytes(l.size, w), got = want;
                EngineCall c = bind(l, want.data(), src.data(), w, 3, sp, 2, 0x8000, bpp);
                c.cb = nullptr;
                model_scalar(c);
                c.y = got.data() + 1, c.cr = got.data() + 2;
                run(FromRGBInt, c);
                ASSERT_TRUE(same_bytes(got, want)) << describe(c);
            }
    }
}

// FromRGBInt's own vector kernels at level 5 must not change a byte.
TEST(FromRgbEngine, IntegerEngineSameBytesAtLevelsZeroAndFive) {
    CYCBCR_REQUIRE_AVX2();
    std::vector<uint32_t> widths;
    for (uint32_t w = 0; w <= 70; ++w) widths.push_back(w);
    widths.insert(widths.end(), {127, 130, 257, 1000});
    uint32_t seed = 900;
    for (uint32_t bpp : kDepths)
        for (Shape s : {Shape::Packed, Shape::Planar422, Shape::Planar420})
            for (uint32_t w : widths)
                for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 7u, 0x8002u}) {
                    const uint32_t h = 1 + seed % 5;
                    const bool padded = seed % 3 == 0;
                    const DstLayout l = dst_layout(s, w, h, padded);
                    const uint32_t sp = source_pitch(w, bpp, padded);
                    const auto src = random_bytes(size_t{h} * sp + 16, ++seed);
                    const QBYCBCRMatrix m = seed % 12;
                    std::vector<uint8_t> a = random_bytes(l.size, ++seed), b = a;
                    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
                    const EngineCall ca = bind(l, a.data(), src.data(), w, h, sp, m, t, bpp);
                    const uint64_t ra = run(FromRGBInt, ca);
                    ASSERT_EQ(cycbcr_set_cpu(5), 5u);
                    const uint64_t rb =
                        run(FromRGBInt, bind(l, b.data(), src.data(), w, h, sp, m, t, bpp));
                    ASSERT_EQ(ra, rb) << describe(ca);
                    ASSERT_TRUE(same_bytes(b, a)) << describe(ca);
                }
}

// Every RGB value of every row of the table through the planar 4:2:2 rows (the
// luma of both pixels of a pair, the chroma of the even one; each value once at
// an even and once at an odd position): the vector rows divide the sums in
// floating point and must give the plain rows' bytes for every sum the table
// can reach.
TEST(FromRgbEngine, EveryRgbValueSameBytesAtLevelsZeroAndFive) {
    CYCBCR_REQUIRE_AVX2();
    constexpr uint32_t kW = 4096, kH = 4096;
    std::vector<uint8_t> src(size_t{kW} * kH * 4 + 4);
    for (uint32_t i = 0; i < kW * kH; ++i) {
        src[4 * size_t{i}] = static_cast<uint8_t>(i);
        src[4 * size_t{i} + 1] = static_cast<uint8_t>(i >> 8);
        src[4 * size_t{i} + 2] = static_cast<uint8_t>(i >> 16);
    }
    const size_t plane = size_t{kW} * kH;
    std::vector<uint8_t> a(2 * plane), b(2 * plane);
    for (QBYCBCRMatrix m = 0; m <= 10; ++m)
        for (uint32_t shift : {0u, 1u}) {
            const uint8_t* s = src.data() + 4 * shift;
            auto convert = [&](std::vector<uint8_t>& d) {
                FromRGBInt(d.data(), d.data() + plane, d.data() + plane + plane / 2, s, kW - 2, kH,
                           kW, kW * 4, m, 0, 1, 1, 32, kW / 2);
            };
            ASSERT_EQ(cycbcr_set_cpu(0), 0u);
            convert(a);
            ASSERT_EQ(cycbcr_set_cpu(5), 5u);
            convert(b);
            ASSERT_TRUE(a == b) << "matrix " << m << ", values shifted by " << shift;
        }
}

// The 14-bit engine at every width residue of 16 (and so of 8), every matrix;
// the calls it hands on (other depths, 4:2:0) give FromRGBInt's bytes.
TEST(FromRgbAvx2, EveryWidthResidueAndHandOver) {
    CYCBCR_REQUIRE_AVX2();
    uint32_t seed = 4000;
    for (uint32_t level : {0u, 5u}) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (uint32_t w = 1; w <= 48; ++w)
            for (QBYCBCRMatrix m = 0; m <= 11; ++m)
                for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 7u, 0x8000u, 0x8003u}) {
                    seed += 2;
                    const Shape s = seed % 4 == 0 ? Shape::Planar422 : Shape::Packed;
                    ASSERT_NO_FATAL_FAILURE(check_engine(FromRGBInt_avx2, model_avx2, s, w,
                                                         1 + seed % 3, seed % 3 == 1, m, t, 32,
                                                         seed));
                }
        for (uint32_t bpp : {24u, 32u, 48u, 64u, 16u})
            for (Shape s : {Shape::Packed, Shape::Planar422, Shape::Planar420}) {
                if (bpp == 32 && s != Shape::Planar420) continue;
                for (uint32_t w : {2u, 9u, 16u, 33u}) {
                    const DstLayout l = dst_layout(s, w, 4, true);
                    const uint32_t sp = source_pitch(w, bpp, true);
                    const auto src = random_bytes(4 * size_t{sp} + 16, ++seed);
                    std::vector<uint8_t> a = random_bytes(l.size, ++seed), b = a;
                    const EngineCall ca = bind(l, a.data(), src.data(), w, 4, sp, 1, 0x8002, bpp);
                    const uint64_t ra = run(FromRGBInt_avx2, ca);
                    ASSERT_EQ(ra, run(FromRGBInt,
                                      bind(l, b.data(), src.data(), w, 4, sp, 1, 0x8002, bpp)));
                    ASSERT_TRUE(same_bytes(a, b)) << describe(ca);
                }
            }
    }
}

// ---------------------------------------------------------------------------
// The wrappers
// ---------------------------------------------------------------------------

enum class Out { Uyvy, Yuy2, Yvyu, Cyuv, I420, Yv12, P422 };
struct Wrapper {
    const char* label;
    const char* name;  // the exported name
    cycbcr_from_rgb_converter fn;
    uint32_t bpp;         // as the engine reads the source
    uint32_t pitchBytes;  // bytes a pixel in the natural source pitch
    Out out;
    bool imaging;  // may take the image-library path
};
void PrintTo(const Wrapper& w, std::ostream* os) {
    *os << w.label;
}

#define RGB64_UYVY(bits)                                                              \
    [](uint8_t* d, const uint8_t* s, unsigned int w, unsigned int h, unsigned int dp, \
       unsigned int sp, QBYCBCRMatrix m, QBYCBCRRgbType t) -> uint64_t {              \
        return cycbcr_RGB64_to_uyvy(d, s, w, h, dp, sp, m, t, bits);                  \
    }
#define W(label, fn, bpp, bytes, out, imaging) \
    { #label, "cycbcr_" #fn, cycbcr_##fn, bpp, bytes, Out::out, imaging }
// clang-format off
const Wrapper kWrappers[] = {
    W(RGB24_to_uyvy, RGB24_to_uyvy, 24, 3, Uyvy, false),
    W(RGB24_to_yuy2, RGB24_to_yuy2, 24, 3, Yuy2, false),
    W(RGB24_to_yvyu, RGB24_to_yvyu, 24, 3, Yvyu, false),
    W(RGB24_to_cyuv, RGB24_to_cyuv, 24, 3, Cyuv, false),
    W(RGB24_to_i420, RGB24_to_i420, 24, 3, I420, false),
    W(RGB24_to_yv12, RGB24_to_yv12, 24, 3, Yv12, false),
    W(RGB24_to_p422, RGB24_to_p422, 24, 3, P422, false),
    W(RGB32_to_uyvy, RGB32_to_uyvy, 32, 4, Uyvy, true),
    W(RGB32_to_uyvy_avx2, RGB32_to_uyvy_avx2, 32, 4, Uyvy, false),
    W(RGB32_to_yuy2, RGB32_to_yuy2, 32, 4, Yuy2, false),
    W(RGB32_to_yvyu, RGB32_to_yvyu, 32, 4, Yvyu, false),
    W(RGB32_to_cyuv, RGB32_to_cyuv, 32, 4, Cyuv, true),
    W(RGB32_to_i420, RGB32_to_i420, 32, 4, I420, false),
    W(RGB32_to_yv12, RGB32_to_yv12, 32, 4, Yv12, false),
    W(RGB32_to_p422, RGB32_to_p422, 32, 4, P422, false),
    {"RGB64_to_uyvy_48", "cycbcr_RGB64_to_uyvy", RGB64_UYVY(48), 48, 6, Out::Uyvy, false},
    {"RGB64_to_uyvy_64", "cycbcr_RGB64_to_uyvy", RGB64_UYVY(64), 64, 8, Out::Uyvy, false},
    // Bits per pixel from (srcPitch / width) * 8: 48, 64, and 56 read as 24-bit.
    W(RGB64_to_p422_48, RGB64_to_p422, 48, 6, P422, false),
    W(RGB64_to_p422_64, RGB64_to_p422, 64, 8, P422, false),
    W(RGB64_to_p422_56, RGB64_to_p422, 56, 7, P422, false),
};
// clang-format on
#undef W
#undef RGB64_UYVY

bool takes_imaging_path(const Wrapper& wr, bool avx2Level, QBYCBCRMatrix m, QBYCBCRRgbType t) {
    const uint32_t n = layout_number(t);
    return wr.imaging && !avx2Level && (m == 0 || m == 5) && (n == 0 || n == 2);
}

// The wrapper's rule on the model's copies of the buffers: pointer placement,
// chroma pitch dstPitch / 2, FromRGB by level (or the image-library path),
// cyuv turned over whole pitches afterwards.
uint64_t model_wrapper(const Wrapper& wr, bool avx2Level, uint8_t* d, uint8_t* s, uint32_t w,
                       uint32_t h, uint32_t dp, uint32_t sp, QBYCBCRMatrix m, QBYCBCRRgbType t) {
    uint64_t res = 0;
    if (takes_imaging_path(wr, avx2Level, m, t)) {
        res = model_imaging_uyvy(d, s, w, h, dp, sp, m, t);
    } else {
        const uint64_t p = uint64_t{dp} * h;
        EngineCall c{d, d, d, s, w, h, dp, sp, m, t, 1, 0, wr.bpp, dp / 2};
        switch (wr.out) {
            case Out::Uyvy:
            case Out::Cyuv:
                c.y = d + 1, c.cr = d + 2;
                break;
            case Out::Yuy2:
                c.cb = d + 1, c.cr = d + 3;
                break;
            case Out::Yvyu:
                c.cb = d + 3, c.cr = d + 1;
                break;
            case Out::I420:
                c.cb = d + p, c.cr = d + p + p / 4, c.planar = 1, c.is422 = 0;
                break;
            case Out::Yv12:
                c.cb = d + p + p / 4, c.cr = d + p, c.planar = 1, c.is422 = 0;
                break;
            case Out::P422:
                c.cb = d + p, c.cr = d + p + p / 2, c.planar = 1;
                break;
        }
        res = avx2Level ? model_avx2(c) : model_scalar(c);
    }
    if (wr.out == Out::Cyuv) flip_rows(d, dp, h);
    return res;
}

// 4:2:0 planes that overlap (heights 1 and 5 and the like): the bytes then
// depend on the order of the stores, which is not part of the rule.
bool planes_overlap(const Wrapper& wr, uint32_t w, uint32_t h, uint32_t dp) {
    if (wr.out != Out::I420 && wr.out != Out::Yv12) return false;
    uint32_t last = 0;
    for (uint32_t r = 0; r < h; ++r)
        if (r % 4 == 0 || r % 4 == 3) last = r / 2;
    return uint64_t{last} * (dp / 2) + w / 2 > uint64_t{dp} * h / 4;
}

uint32_t natural_dst_pitch(const Wrapper& wr, uint32_t w) {
    return wr.out == Out::I420 || wr.out == Out::Yv12 || wr.out == Out::P422 ? w : 2 * w;
}
size_t dst_bound(uint32_t h, uint32_t dp) {
    return 3 * size_t{h + 1} * (dp + 8) + 64;
}

// One wrapper call against the model: result, destination, and the source
// (changed only by the image-library path's swap).
void check_wrapper(const Wrapper& wr, uint32_t level, uint32_t w, uint32_t h, uint32_t dp,
                   uint32_t sp, QBYCBCRMatrix m, QBYCBCRRgbType t, uint32_t seed) {
    const bool avx2Level = level == 5 && have_avx2();
    const size_t size = dst_bound(h, dp);
    std::vector<uint8_t> src = rgb_source(size_t{h} * sp + 16, seed), modelSrc = src;
    std::vector<uint8_t> want = random_bytes(size, seed + 1), got = want;
    const uint64_t expected =
        model_wrapper(wr, avx2Level, want.data(), modelSrc.data(), w, h, dp, sp, m, t);
    std::ostringstream os;
    os << wr.label << " width " << w << " height " << h << " dstPitch " << dp << " srcPitch " << sp
       << " matrix " << m << " type 0x" << std::hex << t << std::dec << " level " << gdwProcType;
    ASSERT_EQ(wr.fn(got.data(), src.data(), w, h, dp, sp, m, t), expected) << os.str();
    if (!planes_overlap(wr, w, h, dp)) {
        ASSERT_TRUE(same_bytes(got, want)) << os.str();
    }
    ASSERT_TRUE(same_bytes(src, modelSrc)) << os.str() << ": the source";
}

class FromRgbWrappers : public ::testing::TestWithParam<Wrapper> {};

TEST_P(FromRgbWrappers, FollowTheRule) {
    const Wrapper& wr = GetParam();
    uint32_t seed = 7;
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (uint32_t w : {1u, 2u, 3u, 6u, 7u, 16u, 17u, 33u})
            for (uint32_t h : {1u, 2u, 3u, 4u, 5u, 6u})
                for (bool padded : {false, true})
                    for (QBYCBCRRgbType t : {0u, 2u, 3u, 7u, 0x8000u, 0x8002u}) {
                        const uint32_t dp = natural_dst_pitch(wr, w) + (padded ? 6 : 0);
                        const uint32_t sp = w * wr.pitchBytes + (padded ? w - 1 : 0);
                        for (QBYCBCRMatrix m : {0u, 5u, (seed += 2) % 12})
                            ASSERT_NO_FATAL_FAILURE(
                                check_wrapper(wr, level, w, h, dp, sp, m, t, seed));
                    }
    }
}

INSTANTIATE_TEST_SUITE_P(All, FromRgbWrappers, ::testing::ValuesIn(kWrappers),
                         [](const auto& info) { return std::string(info.param.label); });

// With no level chosen every wrapper chooses one first (5 on an AVX2
// processor) and converts at it; cycbcr_RGB32_to_uyvy chooses one after its
// level-5 test, so that first call takes the image-library path;
// cycbcr_RGB32_to_planar leaves the level alone (FromRGBInt runs).
TEST(FromRgbLevels, ChosenWhenUnset) {
    for (const Wrapper& wr : kWrappers)
        for (QBYCBCRMatrix m : {0u, 1u}) {
            // cyuv may choose the level itself before its UYVY conversion runs.
            if (wr.out == Out::Cyuv && wr.imaging && m == 0) continue;
            gdwProcType = kLevelMarker;
            const uint32_t w = 17, h = 3, dp = natural_dst_pitch(wr, w), sp = w * wr.pitchBytes;
            std::vector<uint8_t> src = random_bytes(h * sp, m + 1), modelSrc = src;
            std::vector<uint8_t> want(dst_bound(h, dp), 0x33), got = want;
            const uint64_t res = wr.fn(got.data(), src.data(), w, h, dp, sp, m, 0);
            ASSERT_NE(gdwProcType, kLevelMarker) << wr.label;
            const bool avx2After = gdwProcType == 5 && have_avx2();
            const bool firstCallImaging = wr.imaging && m == 0;
            EXPECT_EQ(res, model_wrapper(wr, avx2After && !firstCallImaging, want.data(),
                                         modelSrc.data(), w, h, dp, sp, m, 0))
                << wr.label;
            EXPECT_TRUE(same_bytes(got, want)) << wr.label << " matrix " << m;
        }
    // cycbcr_RGB32_to_planar: FromRGBInt with no level chosen (and the level
    // left unchosen), FromRGB's AVX2 route at level 5.
    for (uint32_t level : {kLevelMarker, 5u})
        for (int is422 : {0, 1}) {
            if (level == 5 && !have_avx2()) continue;
            gdwProcType = level;
            const uint32_t w = 16, h = 4;
            const auto src = rgb_source(w * h * 4, 77);
            std::vector<uint8_t> want(3 * w * h, 0x44), got = want;
            auto at = [&](uint8_t* d) {
                return EngineCall{d,     d + w * h, d + 2 * w * h, src.data(), w, h,  w,
                                  4 * w, 1,         0x8003,        is422,      1, 32, w / 2};
            };
            const uint64_t expected = (level == 5 ? model_avx2 : model_scalar)(at(want.data()));
            const EngineCall c = at(got.data());
            EXPECT_EQ(cycbcr_RGB32_to_planar(c.y, c.cb, c.cr, c.src, w, h, w, w / 2, is422, 4 * w,
                                             1, 0x8003),
                      expected);
            EXPECT_TRUE(same_bytes(got, want)) << "RGB32_to_planar, is422 " << is422;
            EXPECT_EQ(gdwProcType, level);
        }
}

// cycbcr_RGB32_to_uyvy (and cyuv through it) at the levels the wrapper test
// does not visit: the image-library path for matrices 0 and 5 with layouts 0
// and 2, FromRGBInt otherwise.
TEST(FromRgbUyvyPath, EveryOtherLevel) {
    uint32_t seed = 300;
    for (uint32_t level : {1u, 2u, 3u, 4u, 6u}) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (const Wrapper& wr : kWrappers) {
            if (!wr.imaging) continue;
            for (uint32_t w : {1u, 2u, 5u, 8u, 17u})
                for (uint32_t h : {1u, 2u, 3u})
                    for (QBYCBCRMatrix m : {0u, 5u, 1u, 10u})
                        for (QBYCBCRRgbType t : {0u, 2u, 1u, 3u, 7u, 0x8000u, 0x8002u, 0x8001u})
                            ASSERT_NO_FATAL_FAILURE(check_wrapper(wr, level, w, h, 2 * w + 12,
                                                                  4 * w + 4, m, t, ++seed));
        }
    }
}

// Worked: white and black under the studio BT.709 set clamp to 254 and 1;
// layout 2 leaves R and B exchanged in the caller's buffer; the bottom-up flag
// turns the written rows over, padding included; the result is width * pitch.
TEST(FromRgbUyvyPath, WorkedImagingNumbers) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    std::vector<uint8_t> src = {255, 255, 255, 9,  0,   0,   0,   9,  // white, black
                                10,  20,  30,  40, 255, 255, 255, 9};
    std::vector<uint8_t> dst(24, 0xEE);
    EXPECT_EQ(cycbcr_RGB32_to_uyvy(dst.data(), src.data(), 2, 2, 12, 8, 5, 0x8002), 24u);
    EXPECT_EQ(src, (std::vector<uint8_t>{255, 255, 255, 9, 0, 0, 0, 9, 30, 20, 10, 40, 255, 255,
                                         255, 9}));
    EXPECT_EQ(
        std::vector<uint8_t>(dst.begin() + 12, dst.end()),
        (std::vector<uint8_t>{128, 254, 128, 1, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
    std::vector<uint8_t> plain(8, 0);
    EXPECT_EQ(cycbcr_RGB32_to_uyvy(plain.data(), src.data(), 2, 1, 4, 16, 0, 0), 8u);
    EXPECT_EQ(plain, (std::vector<uint8_t>{128, 235, 128, 16, 0, 0, 0, 0}));
    // Width 6, pitch 16: width * pitch, not height * pitch.
    const auto big = random_bytes(6 * 4 * 3, 1);
    std::vector<uint8_t> d(48);
    EXPECT_EQ(cycbcr_RGB32_to_uyvy(d.data(), big.data(), 6, 3, 16, 24, 0, 0), 96u);
    if (!have_avx2()) return;
    // Level 5: the AVX2 form's bytes and result.
    ASSERT_EQ(cycbcr_set_cpu(5), 5u);
    std::vector<uint8_t> a(48, 1), b(48, 1);
    EXPECT_EQ(cycbcr_RGB32_to_uyvy(a.data(), big.data(), 6, 3, 16, 24, 0, 0), 36u);
    cycbcr_RGB32_to_uyvy_avx2(b.data(), big.data(), 6, 3, 16, 24, 0, 0);
    EXPECT_EQ(a, b);
}

// ---------------------------------------------------------------------------
// Float and alpha
// ---------------------------------------------------------------------------

// The float and alpha converters are run between guard pages after the bytes
// their rule touches, or after the answered bytes where
// cycbcr_converter_buffer_sizes knows the name (the answer then covering the
// rule's bytes).
void answered_at_least(const char* name, uint32_t w, uint32_t h, uint32_t dp, uint32_t sp,
                       QBYCBCRMatrix m, QBYCBCRRgbType t, uint64_t& dBytes, uint64_t& sBytes) {
    uint64_t d = 0, s = 0;
    if (!cycbcr_converter_buffer_sizes(name, w, h, dp, sp, m, t, &d, &s)) return;
    EXPECT_GE(d, dBytes) << name << " width " << w << " height " << h;
    EXPECT_GE(s, sBytes) << name << " width " << w << " height " << h;
    dBytes = std::max(d, dBytes);
    sBytes = std::max(s, sBytes);
}

// A NaN channel reads as 0, like values below 0 (the command hands any file's
// floats over, so every bit pattern must be defined).
TEST(FromRgbFloat, NotANumberReadsAsZero) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    // Grey under matrix 1: Y is the channel, chroma 128.
    const float v[] = {nan, -nan, 0.5f, nan};
    const uint8_t want[] = {0, 0, 128, 0};
    std::vector<float> src;
    for (float x : v) src.insert(src.end(), {x, x, x, 0.0f});
    std::vector<uint8_t> d(8, 0xEE);
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(d.data(), src.data(), 4, 1, 8, 64, 1, 0), 8u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(d[2 * i + 1], want[i]) << i;
    for (int k = 0; k < 2; ++k) {
        EXPECT_EQ(d[4 * k], 128);
        EXPECT_EQ(d[4 * k + 2], 128);
    }
}

TEST(FromRgbFloat, EarlyReturnsAndTheScaleOf256) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    // Grey under matrix 1 has unit luma gain and no chroma: Y is the channel.
    const float v[] = {0.5f, 1.0f, -0.1f, 2.0f, 0.999f, 0.25f};
    const uint8_t want[] = {128, 255, 0, 255, 255, 64};
    std::vector<float> src;
    for (float x : v) src.insert(src.end(), {x, x, x, 0.0f});
    std::vector<uint8_t> d(12, 0xEE);
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(d.data(), src.data(), 6, 1, 12, 96, 1, 0), 12u);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(d[2 * i + 1], want[i]) << v[i];
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(d[4 * k], 128);
        EXPECT_EQ(d[4 * k + 2], 128);
    }
    std::vector<uint8_t> e(12, 0xEE);
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(nullptr, src.data(), 6, 1, 12, 96, 1, 0), 0u);
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(e.data(), nullptr, 6, 1, 12, 96, 1, 0), 0u);
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(e.data(), src.data(), 1, 1, 12, 96, 1, 0), 0u);
    EXPECT_EQ(cycbcr_RGB32F_to_uyvy(e.data(), src.data(), 6, 0, 12, 96, 1, 0), 0u);
    EXPECT_EQ(e, std::vector<uint8_t>(12, 0xEE));
}

// Random floats (with exact 0, 1 and out-of-range values), every layout
// (values above 3 read R, G, B from floats 0, 1, 2), bottom-up, pitches that
// are not a multiple of 4, every matrix; between guard pages at the answered
// sizes.
TEST(FromRgbFloat, RandomFramesAgainstTheRule) {
    uint32_t seed = 50;
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (uint32_t w : {2u, 3u, 8u, 17u})
            for (uint32_t h : {1u, 3u})
                for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 4u, 7u, 0x8000u, 0x8001u, 0x8007u})
                    for (uint32_t pad : {0u, 6u}) {
                        const QBYCBCRMatrix m = (seed += 3) % 12;
                        const uint32_t dp = 2 * w + pad, sp = 16 * w + pad;
                        const size_t floats = size_t{h} * (sp / 4) + 4;
                        const auto bits = random_bytes(floats, seed);
                        std::vector<float> f(floats);
                        for (size_t i = 0; i < floats; ++i)
                            f[i] = bits[i] % 16 == 0   ? 1.0f
                                   : bits[i] % 16 == 1 ? 0.0f
                                                       : (bits[i] - 20) / 220.0f;
                        std::vector<uint8_t> raw(floats * 4);
                        std::memcpy(raw.data(), f.data(), raw.size());
                        const uint32_t n = layout_number(t);
                        uint64_t dBytes = size_t{h - 1} * dp + 4 * (w / 2);
                        uint64_t sBytes = 4 * ((h - 1) * (sp / 4) + 4 * (w / 2 * 2 - 1) +
                                               (n == 1 || n == 3 ? 4 : 3));
                        answered_at_least("cycbcr_RGB32F_to_uyvy", w, h, dp, sp, m, t, dBytes,
                                          sBytes);
                        const auto init = random_bytes(dst_bound(h, dp), seed);
                        std::vector<uint8_t> lo = init, hi = init;
                        const uint64_t res =
                            model_float(lo.data(), hi.data(), raw.data(), w, h, dp, sp, m, t);
                        ASSERT_LE(sBytes, raw.size());
                        GuardedBuffer gd(dBytes), gs(sBytes);
                        std::memcpy(gd.data(), init.data(), dBytes);
                        std::memcpy(gs.data(), raw.data(), sBytes);
                        ASSERT_EQ(cycbcr_RGB32F_to_uyvy(gd.data(), gs.data(), w, h, dp, sp, m, t),
                                  res);
                        ASSERT_TRUE(gd.slack_intact() && gs.slack_intact());
                        for (size_t i = 0; i < dBytes; ++i)
                            ASSERT_TRUE(gd.data()[i] >= lo[i] && gd.data()[i] <= hi[i])
                                << "byte " << i << " is " << int{gd.data()[i]} << ", expected "
                                << int{lo[i]} << ".." << int{hi[i]} << "; width " << w << " height "
                                << h << " type 0x" << std::hex << t << std::dec << " matrix " << m;
                    }
    }
}

TEST(FromRgbAlpha, MappingTightRowsAndBottomUp) {
    const uint8_t a[] = {0, 255, 128, 1, 254, 17};
    const uint8_t mapped[] = {16, 235, 125, 16, 234, 30};
    std::vector<uint8_t> src;
    for (uint8_t x : a) src.insert(src.end(), {1, 2, 3, x});
    for (uint8_t opt : {0, 1, 2, 3}) {
        std::vector<uint8_t> d(6, 0xEE);
        EXPECT_EQ(cycbcr_RGB32_to_uyvy_Alpha(d.data(), src.data(), 6, 1, 999, 24, opt, 0), 6u);
        for (int i = 0; i < 6; ++i) EXPECT_EQ(d[i], opt & 1 ? mapped[i] : a[i]) << int{opt};
    }
    // Two rows of three, read bottom-up, written width bytes apart.
    std::vector<uint8_t> d(8, 0xEE);
    EXPECT_EQ(cycbcr_RGB32_to_uyvy_Alpha(d.data(), src.data(), 3, 2, 64, 12, 0, 0x8000), 6u);
    EXPECT_EQ(d, (std::vector<uint8_t>{1, 254, 17, 0, 255, 128, 0xEE, 0xEE}));
    EXPECT_EQ(cycbcr_RGB32_to_uyvy_Alpha(d.data(), src.data(), 3, 0, 64, 12, 1, 0), 0u);

    uint32_t seed = 600;
    for (uint32_t w : {1u, 2u, 7u, 33u})
        for (uint32_t h : {1u, 2u, 5u})
            for (QBYCBCRRgbType t : {0u, 3u, 0x8000u})
                for (uint8_t opt : {0, 1}) {
                    const uint32_t sp = 4 * w + 8 * (seed % 2);
                    const auto s = random_bytes(size_t{h} * sp, ++seed);
                    uint64_t dBytes = size_t{w} * h, sBytes = size_t{h - 1} * sp + 4 * w;
                    answered_at_least("cycbcr_RGB32_to_uyvy_Alpha", w, h, 5, sp, 0, t, dBytes,
                                      sBytes);
                    ASSERT_LE(sBytes, s.size());
                    std::vector<uint8_t> want(dBytes);
                    const uint64_t res = model_alpha(want.data(), s.data(), w, h, sp, opt, t);
                    GuardedBuffer gd(dBytes), gs(sBytes);
                    std::memcpy(gs.data(), s.data(), sBytes);
                    ASSERT_EQ(cycbcr_RGB32_to_uyvy_Alpha(gd.data(), gs.data(), w, h, 5, sp, opt, t),
                              res);
                    ASSERT_TRUE(gd.slack_intact() && gs.slack_intact());
                    ASSERT_TRUE(
                        same_bytes(std::vector<uint8_t>(gd.data(), gd.data() + dBytes), want));
                }
}

// ---------------------------------------------------------------------------
// Buffer sizes
// ---------------------------------------------------------------------------

// The bytes the model writes: against two complementary fills every written
// byte differs from one of them (rows turned over included).
uint64_t model_dst_extent(const Wrapper& wr, bool avx2Level, uint32_t w, uint32_t h, uint32_t dp,
                          uint32_t sp, QBYCBCRMatrix m, QBYCBCRRgbType t) {
    const auto fill = random_bytes(dst_bound(h, dp), w * 31 + h);
    const auto src = random_bytes(size_t{h} * sp + 16, w + h);
    uint64_t end = 0;
    for (bool inverse : {false, true}) {
        std::vector<uint8_t> d = fill, s = src;
        if (inverse)
            for (auto& b : d) b = static_cast<uint8_t>(~b);
        const std::vector<uint8_t> before = d;
        model_wrapper(wr, avx2Level, d.data(), s.data(), w, h, dp, sp, m, t);
        for (size_t i = d.size(); i > end; --i)
            if (d[i - 1] != before[i - 1]) {
                end = i;
                break;
            }
    }
    return end;
}
// The bytes the rule reads (the swap of the image-library path included).
uint64_t model_src_extent(const Wrapper& wr, bool avx2Level, uint32_t w, uint32_t h, uint32_t sp,
                          QBYCBCRMatrix m, QBYCBCRRgbType t) {
    if (h == 0) return 0;
    if (takes_imaging_path(wr, avx2Level, m, t))
        return layout_number(t) == 2 && w ? size_t{h - 1} * sp + 4 * w - 1
                                          : (w < 2 ? 0 : size_t{h - 1} * sp + 8 * (w / 2) - 1);
    return w < 2 ? 0 : size_t{h - 1} * sp + rgb_row_reach(w, wr.bpp, t);
}

class FromRgbWrapperSizes : public ::testing::TestWithParam<Wrapper> {};

// Each wrapper between guard pages placed right after the answered bytes, at
// levels 0, 4 and 5, odd and even widths, natural and padded pitches,
// bottom-up: nothing touched past them, the model's bytes within them, and the
// answer the model's written extent exactly (at least it, for the wrappers
// whose path depends on the level or on a bit count the name does not carry).
TEST_P(FromRgbWrapperSizes, GuardPagesAtTheAnsweredBytes) {
    const Wrapper& wr = GetParam();
    std::vector<uint32_t> levels = {0, 4};
    if (have_avx2()) levels.push_back(5);
    uint32_t seed = 1234;
    for (uint32_t w : {1u, 2u, 3u, 5u, 8u, 9u, 16u, 17u})
        for (uint32_t h : {1u, 2u, 3u, 4u})
            for (bool padded : {false, true})
                for (QBYCBCRMatrix m : {0u, 5u, 1u})
                    for (QBYCBCRRgbType t : {0u, 2u, 0x8000u, 0x8002u}) {
                        const uint32_t dp = natural_dst_pitch(wr, w) + (padded ? 10 : 0);
                        const uint32_t sp = w * wr.pitchBytes + (padded ? w - 1 : 0);
                        uint64_t d = 0, s = 0;
                        ASSERT_EQ(
                            cycbcr_converter_buffer_sizes(wr.name, w, h, dp, sp, m, t, &d, &s), 1u);
                        const uint64_t d0 = model_dst_extent(wr, false, w, h, dp, sp, m, t);
                        const uint64_t d5 = model_dst_extent(wr, true, w, h, dp, sp, m, t);
                        const uint64_t s0 = model_src_extent(wr, false, w, h, sp, m, t);
                        const uint64_t s5 = model_src_extent(wr, true, w, h, sp, m, t);
                        std::ostringstream os;
                        os << wr.label << " width " << w << " height " << h << " dstPitch " << dp
                           << " srcPitch " << sp << " matrix " << m << " type 0x" << std::hex << t;
                        // The AVX2 form and RGB64_to_uyvy answer for every path of their
                        // name (the pair's, every bit count).
                        const bool exact = !wr.imaging &&
                                           std::string(wr.name) != "cycbcr_RGB64_to_uyvy" &&
                                           !std::string(wr.name).ends_with("_avx2");
                        if (exact) {
                            ASSERT_EQ(d0, d5) << os.str();
                            EXPECT_EQ(d, d0) << os.str() << ": destination bytes";
                        }
                        ASSERT_GE(d, std::max(d0, d5)) << os.str() << ": destination bytes";
                        ASSERT_GE(s, std::max(s0, s5)) << os.str() << ": source bytes";
                        const size_t bound = std::max<size_t>(dst_bound(h, dp), d);
                        for (uint32_t level : levels) {
                            ASSERT_EQ(cycbcr_set_cpu(level), level);
                            const bool avx2Level = level == 5 && have_avx2();
                            std::vector<uint8_t> src =
                                random_bytes(std::max<size_t>(s, size_t{h} * sp) + 16, ++seed);
                            const std::vector<uint8_t> init = random_bytes(bound, ++seed);
                            std::vector<uint8_t> want = init, modelSrc = src;
                            const uint64_t expected = model_wrapper(
                                wr, avx2Level, want.data(), modelSrc.data(), w, h, dp, sp, m, t);
                            GuardedBuffer gd(d), gs(s);
                            if (d) std::memcpy(gd.data(), init.data(), d);
                            if (s) std::memcpy(gs.data(), src.data(), s);
                            ASSERT_EQ(wr.fn(gd.data(), gs.data(), w, h, dp, sp, m, t), expected)
                                << os.str() << " level " << level;
                            ASSERT_TRUE(gd.slack_intact() && gs.slack_intact())
                                << os.str() << ": written before the buffer";
                            if (!planes_overlap(wr, w, h, dp)) {
                                ASSERT_TRUE(same_bytes(
                                    std::vector<uint8_t>(gd.data(), gd.data() + d),
                                    std::vector<uint8_t>(want.begin(), want.begin() + d)))
                                    << os.str() << " level " << level;
                            }
                            ASSERT_TRUE(same_bytes(
                                std::vector<uint8_t>(gs.data(), gs.data() + s),
                                std::vector<uint8_t>(modelSrc.begin(), modelSrc.begin() + s)))
                                << os.str() << " level " << level << ": the source";
                        }
                    }
}

INSTANTIATE_TEST_SUITE_P(All, FromRgbWrapperSizes, ::testing::ValuesIn(kWrappers),
                         [](const auto& info) { return std::string(info.param.label); });

// ---------------------------------------------------------------------------
// The dispatcher
// ---------------------------------------------------------------------------

// Code 0 to every 8-bit YCbCr code is that code's cycbcr_RGB32_to_ converter
// with the normalised destination pitch; to v210 only if this build has it.
TEST(FromRgbDispatch, CodeZeroReachesTheRgb32Converters) {
    const std::pair<uint32_t, cycbcr_from_rgb_converter> codes[] = {
        {fourcc("UYVY"), cycbcr_RGB32_to_uyvy}, {fourcc("UYNV"), cycbcr_RGB32_to_uyvy},
        {fourcc("AJYU"), cycbcr_RGB32_to_uyvy}, {fourcc("yuv2"), cycbcr_RGB32_to_uyvy},
        {fourcc("yuV2"), cycbcr_RGB32_to_uyvy}, {fourcc("2vuy"), cycbcr_RGB32_to_uyvy},
        {fourcc("2Vuy"), cycbcr_RGB32_to_uyvy}, {0x8800001Eu, cycbcr_RGB32_to_uyvy},
        {0x8810001Eu, cycbcr_RGB32_to_uyvy},    {fourcc("YUY2"), cycbcr_RGB32_to_yuy2},
        {fourcc("YUNV"), cycbcr_RGB32_to_yuy2}, {fourcc("YVYU"), cycbcr_RGB32_to_yvyu},
        {fourcc("cyuv"), cycbcr_RGB32_to_cyuv}, {fourcc("I420"), cycbcr_RGB32_to_i420},
        {fourcc("IYUV"), cycbcr_RGB32_to_i420}, {fourcc("YV12"), cycbcr_RGB32_to_yv12},
        {fourcc("P422"), cycbcr_RGB32_to_p422}};
    const uint32_t w = 10, h = 4, sp = 44;
    const auto frame = random_bytes(h * sp, 5);
    for (uint32_t level : levels_to_test())
        for (const auto& [code, fn] : codes)
            for (uint32_t dp : {0u, 2 * w, 300u})
                for (QBYCBCRMatrix m : {0u, 1u})
                    for (QBYCBCRRgbType t : {0u, 2u, 0x8000u}) {
                        ASSERT_EQ(cycbcr_set_cpu(level), level);
                        const uint32_t fixed = cycbcr_fix_pitch(code, w, dp);
                        std::vector<uint8_t> sa = frame, sb = frame;
                        std::vector<uint8_t> a(dst_bound(h, std::max(fixed, 2 * w)), 0x11), b = a;
                        const unsigned got =
                            cycbcr_transcode(a.data(), sa.data(), w, h, dp, sp, m, t, code, 0);
                        const auto want =
                            static_cast<unsigned>(fn(b.data(), sb.data(), w, h, fixed, sp, m, t));
                        EXPECT_EQ(got, want) << std::hex << code;
                        EXPECT_TRUE(same_bytes(a, b)) << std::hex << code << " level " << level;
                        EXPECT_TRUE(same_bytes(sa, sb)) << std::hex << code << ": the source";
                    }
    for (uint32_t code : {fourcc("v210"), fourcc("012v"), fourcc("422P")}) {
        if (cycbcr_from_rgb_pair_converter(code) != nullptr) continue;
        std::vector<uint8_t> d(4096, 0x11);
        auto s = frame;
        EXPECT_EQ(cycbcr_transcode(d.data(), s.data(), w, h, 0, sp, 0, 0, code, 0), 0u);
        EXPECT_EQ(d, std::vector<uint8_t>(4096, 0x11));
    }
}

}  // namespace
