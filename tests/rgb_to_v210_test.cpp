// RGB to v210: the weight tables digit for digit, hand-worked rows of the
// filtered and unfiltered engines and of the alpha key, every engine and
// converter against the model of tests/support on random frames (every depth,
// channel order and the bottom-up flag) between guard pages, level 0 against
// level 5 at every width residue of the vector step, the buffer-size query,
// and FFmpeg's v210 decoder as an independent reader of the words.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "fromrgb/to_v210.h"
#include "support/frames.h"
#include "support/to_v210_model.h"
#ifdef CYCBCR_TEST_WITH_FFMPEG
#include "support/ffmpeg_v210.h"
#endif

namespace {

using namespace cycbcr_test;

const QBYCBCRMatrix kMatrices[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 1000};
const QBYCBCRRgbType kTypes[] = {0, 1, 2, 3, 7, 0x8000, 0x8001, 0x8002, 0x8003};

void expect_row(const char* what, const cycbcr::fromrgb::V210Row& got, const V210Weights& want,
                QBYCBCRMatrix m) {
    EXPECT_EQ(got.yOffset, want.off) << what << " matrix " << m;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(got.y[i], want.y[i]) << what << " matrix " << m << " Y weight " << i;
        EXPECT_EQ(got.cb[i], want.cb[i]) << what << " matrix " << m << " Cb weight " << i;
        EXPECT_EQ(got.cr[i], want.cr[i]) << what << " matrix " << m << " Cr weight " << i;
    }
}

// The tables of the engines against the rows written out in the model, for
// every matrix value a caller can pass (10 and unknown values: the default).
TEST(V210Weights, EveryRowDigitForDigit) {
    using namespace cycbcr::fromrgb;
    for (QBYCBCRMatrix m : kMatrices) {
        expect_row("8-bit", kV210Rgb8[m], v210_rgb8_weights(m), m);
        expect_row("unfiltered", kV210Rgb8NoFilter[m], v210_rgb8_weights(m, true), m);
        expect_row("16-bit", kV210Rgb16[m], v210_rgb16_weights(m), m);
        expect_row("10-bit", kV210Rgb10[m], v210_rgb10_weights(m), m);
    }
    // The default rows' blue weights of Cr, one unit short of 0.071 x scale.
    EXPECT_EQ(kV210Rgb8[0].cr[2], -2839);
    EXPECT_EQ(kV210Rgb16[10].cr[2], -709);
    EXPECT_EQ(kV210Rgb10[0].cr[2], -71000);
    EXPECT_EQ(kV210Rgb8NoFilter[2].yOffset, 16);
    EXPECT_EQ(kV210Rgb10[2].yOffset, 64);
    EXPECT_EQ(kV210Rgb10[10].y[0], 257000);  // matrix 10: the default row here
}

// ---- Hand-worked rows (matrix 2) ----

// 24-bit B G R pixels.
struct Px {
    uint8_t b, g, r;
};
constexpr Px kBlue{255, 0, 0}, kBlack{0, 0, 0}, kRed{0, 0, 255}, kWhite{255, 255, 255};

std::vector<uint8_t> row24(const std::vector<Px>& px) {
    std::vector<uint8_t> v;
    for (const Px& p : px) v.insert(v.end(), {p.b, p.g, p.r});
    return v;
}
uint32_t word(uint32_t a, uint32_t b, uint32_t c) {
    return a | b << 10 | c << 20;
}
std::vector<uint8_t> words(const std::vector<uint32_t>& w, size_t total) {
    std::vector<uint8_t> v(total, 0xEE);
    std::memcpy(v.data(), w.data(), 4 * w.size());
    return v;
}

using Engine = uint64_t (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                            QBYCBCRMatrix, QBYCBCRRgbType, unsigned);

// One row through an engine at a level, dst and src guarded to the bytes the
// rules let it touch.
std::vector<uint8_t> one_row(Engine fn, unsigned level, const std::vector<Px>& px, size_t written,
                             size_t pixelsRead, uint64_t* result = nullptr) {
    cycbcr_set_cpu(level);
    const auto src = row24(px);
    const std::vector<uint8_t> init(written, 0xEE);
    uint64_t res = 0;
    const Outcome o = run_guarded(
        [&](uint8_t* d, const uint8_t* s) {
            res = fn(d, s, static_cast<unsigned>(px.size()), 1, 256, 4096, 2, 0, 24);
            return 0u;
        },
        src, 3 * pixelsRead, init, written);
    if (result) *result = res;
    return o.dst;
}

// Blue, black x 4, red, blue, red (then white, black): per pixel Y 127, 64,
// 250; Cb 959, 512, 409; Cr 472, 512, 959 (Cr of blue: -408000 / 10000 = -40
// toward zero).
const std::vector<Px> kRow = {kBlue, kBlack, kBlack, kBlack, kBlack,
                              kRed,  kBlue,  kRed,   kWhite, kBlack};

// Group 0: Cb0 = (512 + 2*959 + 2*512 + 512) / 6 = 661, Cr0 = 2992 / 6 = 498;
// pair 1 (pixels 2, 3 between 1 and 4) all black: 512, 512; the last pair
// repeats pixel 5: Cb2 = (512 + 1024 + 818 + 409) / 6 = 460, Cr2 = 4413 / 6 =
// 735. Partial pair 6, 7 over 5 with pixel 5 on the left: Cb (409 + 1918 +
// 818) / 5 = 629, Cr (959 + 944 + 1918) / 5 = 764.
const std::vector<uint32_t> kGroup0 = {word(661, 127, 498), word(64, 512, 64), word(512, 64, 460),
                                       word(64, 735, 250)};

TEST(V210Filtered, WorkedRowsAtWidths6To10) {
    for (unsigned level : {0u, 5u})
        for (Engine fn : {v210FromRGB, v210FromRGB_avx2}) {
            uint64_t res = 1;
            EXPECT_EQ(one_row(fn, level, {kRow.begin(), kRow.begin() + 6}, 16, 6, &res),
                      words(kGroup0, 16));
            EXPECT_EQ(res, 256u);
            std::vector<uint32_t> w8 = kGroup0;
            w8.insert(w8.end(), {word(629, 127, 764), 250});
            for (size_t w : {8, 9, 10}) {
                // Pixels 8 and 9 are neither read nor written.
                EXPECT_EQ(one_row(fn, level, {kRow.begin(), kRow.begin() + w}, 24, 8),
                          words(w8, 24))
                    << "width " << w << " level " << level;
            }
            // Below a group: the pair alone, 512 on its left; a lone pixel nothing.
            const std::vector<uint32_t> w2 = {
                word((512 + 2 * 959 + 2 * 512) / 5, 127, (512 + 2 * 472 + 2 * 512) / 5), 64};
            EXPECT_EQ(one_row(fn, level, {kBlue, kBlack, kRed}, 8, 2), words(w2, 8));
        }
    // The pixel after the last whole group is not the right neighbour: with
    // pixel 6 red the words of group 0 stay the same.
    std::vector<Px> alt(kRow.begin(), kRow.begin() + 8);
    alt[6] = kRed;
    auto want = words(kGroup0, 24);
    const uint32_t tail[2] = {word(409, 250, 959), 250};
    std::memcpy(want.data() + 16, tail, 8);
    EXPECT_EQ(one_row(v210FromRGB, 0, alt, 24, 8), want);
}

// Unfiltered, luma offset 16: Y 79, 16, 202 (white 892); chroma of pixels 0,
// 2, 4 of a group. Width 8: the second group stops after its second word (Y7
// alone); 9: after its third (pixel 8 white); 10: the same with pixel 9.
TEST(V210Unfiltered, WorkedRowsAtWidths6To10) {
    const std::vector<uint32_t> g0 = {word(959, 79, 472), word(16, 512, 16), word(512, 16, 512),
                                      word(16, 512, 202)};
    for (unsigned level : {0u, 5u}) {
        EXPECT_EQ(one_row(v210FromRGBNoFilter, level, {kRow.begin(), kRow.begin() + 6}, 16, 6),
                  words(g0, 16));
        auto w = g0;
        w.insert(w.end(), {word(959, 79, 472), word(202, 0, 0)});
        EXPECT_EQ(one_row(v210FromRGBNoFilter, level, {kRow.begin(), kRow.begin() + 8}, 24, 8),
                  words(w, 24));
        w.back() = word(202, 512, 892);
        w.push_back(word(512, 0, 0));
        EXPECT_EQ(one_row(v210FromRGBNoFilter, level, {kRow.begin(), kRow.begin() + 9}, 28, 9),
                  words(w, 28));
        w.back() = word(512, 16, 0);
        EXPECT_EQ(one_row(v210FromRGBNoFilter, level, kRow, 28, 10), words(w, 28));
    }
}

// Black with matrix 2: Y 64 and neutral chroma filtered; Y 16 unfiltered.
TEST(V210Engines, BlackWithMatrix2) {
    const std::vector<Px> black(6, kBlack);
    const std::vector<uint32_t> f = {word(512, 64, 512), word(64, 512, 64), word(512, 64, 512),
                                     word(64, 512, 64)};
    const std::vector<uint32_t> u = {word(512, 16, 512), word(16, 512, 16), word(512, 16, 512),
                                     word(16, 512, 16)};
    for (unsigned level : {0u, 5u}) {
        EXPECT_EQ(one_row(v210FromRGB, level, black, 16, 6), words(f, 16));
        EXPECT_EQ(one_row(v210FromRGBNoFilter, level, black, 16, 6), words(u, 16));
    }
}

// Width 4, two rows: alphas 0, 255, 128, 1 then 10, 20, 30, 40. Row 1 starts
// at byte 16 / 3 = 5, over row 0's second word.
TEST(V210Alpha, WorkedRowsOverlap) {
    std::vector<uint8_t> src(32, 0x5A);
    const uint8_t a[8] = {0, 255, 128, 1, 10, 20, 30, 40};
    for (int i = 0; i < 8; ++i) src[4 * i + 3] = a[i];
    for (bool studio : {false, true}) {
        // Studio: A * 876 / 255 + 64, so 0 -> 64, 255 -> 940, 128 -> 503, 1 -> 67,
        // 10 -> 98, 20 -> 132, 30 -> 167, 40 -> 201.
        auto f = [&](uint32_t v) { return studio ? v * 876 / 255 + 64 : v * 4; };
        std::vector<uint8_t> want(13, 0xEE);
        const uint32_t r0[2] = {word(f(0), f(255), f(128)), word(f(1), 0, 0)};
        const uint32_t r1[2] = {word(f(10), f(20), f(30)), word(f(40), 0, 0)};
        std::memcpy(want.data(), r0, 8);
        std::memcpy(want.data() + 5, r1, 8);
        if (studio) {
            EXPECT_EQ(r0[0], word(64, 940, 503));
        }
        uint64_t res = 0;
        const Outcome o = run_guarded(
            [&](uint8_t* d, const uint8_t* s) {
                res = cycbcr_RGB32_to_012v_Alpha(d, s, 4, 2, 9999, 16, studio ? 1 : 0, 0);
                return 0u;
            },
            src, 32, std::vector<uint8_t>(13, 0xEE), 13);
        EXPECT_EQ(o.dst, want) << "studio " << studio;
        EXPECT_EQ(res, 10u);
        // Bottom-up: row 1 of the source first.
        std::vector<uint8_t> up(13, 0xEE);
        model_v210_alpha(up.data(), src.data(), 4, 2, 16, studio, 0x8000);
        std::vector<uint8_t> got(13, 0xEE);
        cycbcr_RGB32_to_012v_Alpha(got.data(), src.data(), 4, 2, 0, 16, studio ? 1 : 0, 0x8000);
        EXPECT_EQ(got, up);
        EXPECT_NE(got, want);
    }
}

// ---- Random frames against the model ----

struct Shape {
    uint32_t w, h, dp, sp;
};

// The bytes the rules let a filtered conversion touch.
size_t filtered_dst_bytes(const Shape& s) {
    return size_t{s.h - 1} * s.dp + s.w / 6 * 16 + (s.w % 6 >= 2 ? 8 : 0);
}
size_t filtered_src_bytes(const Shape& s, size_t pixelBytes, size_t rowMask) {
    const size_t n = s.w / 6 * 6 + (s.w % 6 >= 2 ? 2 : 0);
    return ((size_t{s.h - 1} * s.sp) & ~rowMask) + n * pixelBytes;
}

struct Case {
    std::string name;
    V210Source source;
    bool filtered;
    std::function<uint64_t(uint8_t*, const uint8_t*, const Shape&, QBYCBCRMatrix, QBYCBCRRgbType)>
        call;
};

std::vector<Case> cases() {
    std::vector<Case> c;
    auto engine = [](Engine fn, unsigned bpp) {
        return [fn, bpp](uint8_t* d, const uint8_t* s, const Shape& g, QBYCBCRMatrix m,
                         QBYCBCRRgbType t) { return fn(d, s, g.w, g.h, g.dp, g.sp, m, t, bpp); };
    };
    auto wrapper = [](cycbcr_from_rgb_converter fn) {
        return [fn](uint8_t* d, const uint8_t* s, const Shape& g, QBYCBCRMatrix m,
                    QBYCBCRRgbType t) { return fn(d, s, g.w, g.h, g.dp, g.sp, m, t); };
    };
    for (unsigned bpp : {24u, 32u}) {
        const V210Source src{V210Input::Rgb8, bpp, 0};
        const std::string b = std::to_string(bpp);
        c.push_back({"v210FromRGB " + b, src, true, engine(v210FromRGB, bpp)});
        c.push_back({"v210FromRGB_avx2 " + b, src, true, engine(v210FromRGB_avx2, bpp)});
        c.push_back({"v210FromRGBNoFilter " + b, src, false, engine(v210FromRGBNoFilter, bpp)});
    }
    c.push_back({"RGB24", {V210Input::Rgb8, 24, 0}, true, wrapper(cycbcr_RGB24_to_012v)});
    c.push_back({"RGB32", {V210Input::Rgb8, 32, 0}, true, wrapper(cycbcr_RGB32_to_012v)});
    for (unsigned bpp : {48u, 64u})
        c.push_back({"RGB64 " + std::to_string(bpp),
                     {V210Input::Rgb16, bpp, 0},
                     true,
                     [bpp](uint8_t* d, const uint8_t* s, const Shape& g, QBYCBCRMatrix m,
                           QBYCBCRRgbType t) {
                         return cycbcr_RGB64_to_012v(d, s, g.w, g.h, g.dp, g.sp, m, t, bpp);
                     }});
    c.push_back({"RGB10", {V210Input::Rgb10, 32, 0}, true, wrapper(cycbcr_RGB10_to_012v)});
    return c;
}

size_t row_mask(const V210Source& s) {
    return s.input == V210Input::Rgb16 ? 1 : s.input == V210Input::Rgb10 ? 3 : 0;
}

// Runs a case between guard pages and compares with the model.
void check_case(const Case& c, const Shape& g, QBYCBCRMatrix m, QBYCBCRRgbType t, uint32_t seed,
                const std::vector<uint8_t>* src = nullptr) {
    V210Source s = c.source;
    s.type = t;
    const size_t pb = v210_pixel_bytes(s);
    const size_t dstBytes = c.filtered ? filtered_dst_bytes(g)
                                       : size_t{g.h - 1} * g.dp + (g.w + 5) / 6 * 16 -
                                             ((g.w - 1) % 6 < 2   ? 8
                                              : (g.w - 1) % 6 < 4 ? 4
                                                                  : 0);
    const size_t srcBytes =
        c.filtered ? filtered_src_bytes(g, pb, row_mask(s)) : size_t{g.h - 1} * g.sp + g.w * pb;
    const auto frame = src ? *src : random_bytes(srcBytes, seed);
    const auto init = random_bytes(dstBytes, seed + 1);
    auto want = init;
    if (c.filtered)
        model_v210_filtered(want.data(), frame.data(), g.w, g.h, g.dp, g.sp, m, s);
    else
        model_v210_unfiltered(want.data(), frame.data(), g.w, g.h, g.dp, g.sp, m, s);
    uint64_t res = 0;
    const Outcome o = run_guarded(
        [&](uint8_t* d, const uint8_t* sp) {
            res = c.call(d, sp, g, m, t);
            return 0u;
        },
        frame, srcBytes, init, dstBytes);
    EXPECT_TRUE(same_bytes(o.dst, want))
        << c.name << " matrix " << m << " type " << std::hex << t << std::dec << " width " << g.w;
    EXPECT_EQ(res, uint64_t{g.h} * g.dp) << c.name;
}

TEST(V210Model, EveryConverterEveryOrderAndMatrix) {
    uint32_t seed = 100;
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (const Case& c : cases())
            for (QBYCBCRRgbType t : kTypes)
                for (QBYCBCRMatrix m : kMatrices) {
                    const uint32_t w = 20 + seed % 29;  // 20 .. 48, every residue of 6
                    const size_t pb = v210_pixel_bytes({c.source.input, c.source.bpp, t});
                    check_case(c, {w, 3, uint32_t(w / 6 * 16 + 40), uint32_t(w * pb + 13)}, m, t,
                               ++seed);
                }
    }
}

// Level 5 against level 0 at every width residue of the 16-pixel step and of
// the group, with padded pitches; both against the model.
TEST(V210Levels, Level5MatchesLevel0AtEveryWidth) {
    for (unsigned bpp : {24u, 32u})
        for (QBYCBCRMatrix m : {0u, 2u, 5u, 8u, 9u})
            for (QBYCBCRRgbType t : {0u, 3u, 0x8002u})
                for (uint32_t w = 48; w < 96 + 2; ++w) {
                    const Shape g{w, 2, w * 3 + 64, w * (bpp / 8) + 36};
                    const size_t srcBytes = size_t{g.h} * g.sp;
                    const auto frame = random_bytes(srcBytes, w * 7 + m);
                    std::vector<uint8_t> out[2];
                    for (unsigned i = 0; i < 2; ++i) {
                        cycbcr_set_cpu(i == 0 ? 0 : 5);
                        out[i].assign(size_t{g.h} * g.dp, 0x33);
                        (bpp == 24 ? cycbcr_RGB24_to_012v : cycbcr_RGB32_to_012v)(
                            out[i].data(), frame.data(), w, g.h, g.dp, g.sp, m, t);
                    }
                    ASSERT_TRUE(same_bytes(out[1], out[0]))
                        << "bpp " << bpp << " matrix " << m << " type " << t << " width " << w;
                    auto want = std::vector<uint8_t>(size_t{g.h} * g.dp, 0x33);
                    model_v210_filtered(want.data(), frame.data(), w, g.h, g.dp, g.sp, m,
                                        {V210Input::Rgb8, bpp, t});
                    ASSERT_TRUE(same_bytes(out[0], want)) << "width " << w;
                }
}

// Every 8-bit colour once (a 4096 x 4096 frame): level 5 gives level 0's bytes
// for every matrix, so the luma of every colour is the same exactly, and the
// chroma through the filter.
TEST(V210Levels, EveryColourEveryMatrix) {
    CYCBCR_REQUIRE_AVX2();
    const uint32_t w = 4096, h = 4096, dp = w / 6 * 16 + 8;
    std::vector<uint8_t> src(size_t{w} * h * 4);
    for (uint32_t i = 0; i < w * h; ++i) {
        src[4 * size_t{i}] = uint8_t(i);
        src[4 * size_t{i} + 1] = uint8_t(i >> 8);
        src[4 * size_t{i} + 2] = uint8_t(i >> 16);
    }
    for (QBYCBCRMatrix m = 0; m <= 9; ++m) {
        std::vector<uint8_t> out[2];
        for (unsigned i = 0; i < 2; ++i) {
            cycbcr_set_cpu(i == 0 ? 0 : 5);
            out[i].assign(size_t{h} * dp, 0);
            v210FromRGB(out[i].data(), src.data(), w, h, dp, w * 4, m, 0, 32);
        }
        ASSERT_TRUE(same_bytes(out[1], out[0])) << "matrix " << m;
    }
}

// v210FromRGB_avx2 hands other pixel sizes to the plain rows (3-byte pixels)
// and returns, at level 5 too.
TEST(V210Engines, OtherBitCountsReadThreeBytePixelsAndReturn) {
    const Shape g{20, 2, 64, 80};
    const auto frame = random_bytes(160, 9);
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (Engine fn : {v210FromRGB, v210FromRGB_avx2})
            for (unsigned bpp : {0u, 16u, 48u, 64u}) {
                std::vector<uint8_t> a(128, 1), b(128, 1);
                EXPECT_EQ(fn(a.data(), frame.data(), g.w, g.h, g.dp, g.sp, 3, 2, bpp), 128u);
                fn(b.data(), frame.data(), g.w, g.h, g.dp, g.sp, 3, 2, 24);
                EXPECT_EQ(a, b) << "bpp " << bpp;
            }
        std::vector<uint8_t> none(16, 7);
        EXPECT_EQ(v210FromRGB(none.data(), frame.data(), 20, 0, 64, 80, 0, 0, 32), 0u);
        EXPECT_EQ(none, std::vector<uint8_t>(16, 7));
    }
}

// The query by name and by pair answers the bytes the rules let each
// converter touch.
TEST(V210Sizes, BufferSizesByNameAndPair) {
    const Shape g{40, 5, 200, 170};
    uint64_t d = 0, s = 0;
    ASSERT_EQ(
        cycbcr_converter_buffer_sizes("cycbcr_RGB32_to_012v", g.w, g.h, g.dp, g.sp, 0, 0, &d, &s),
        1u);
    EXPECT_EQ(d, filtered_dst_bytes(g));
    EXPECT_EQ(s, filtered_src_bytes(g, 4, 0));
    ASSERT_EQ(
        cycbcr_converter_buffer_sizes("cycbcr_RGB24_to_012v", g.w, g.h, g.dp, g.sp, 0, 0, &d, &s),
        1u);
    EXPECT_EQ(s, filtered_src_bytes(g, 3, 0));
    ASSERT_EQ(
        cycbcr_converter_buffer_sizes("cycbcr_RGB64_to_012v", g.w, g.h, g.dp, 341, 0, 0, &d, &s),
        1u);
    EXPECT_EQ(s, filtered_src_bytes({g.w, g.h, g.dp, 341}, 8, 1));
    ASSERT_EQ(
        cycbcr_converter_buffer_sizes("cycbcr_RGB10_to_012v", g.w, g.h, g.dp, g.sp, 0, 0, &d, &s),
        1u);
    EXPECT_EQ(s, filtered_src_bytes(g, 4, 3));
    ASSERT_EQ(
        cycbcr_converter_buffer_sizes("cycbcr_RGB32_to_012v_Alpha", 4, 2, 0, 16, 0, 0, &d, &s), 1u);
    EXPECT_EQ(d, 13u);
    EXPECT_EQ(s, 32u);
    ASSERT_EQ(cycbcr_buffer_sizes(fourcc("v210"), 0, g.w, g.h, g.dp, g.sp, &d, &s), 1u);
    EXPECT_EQ(d, filtered_dst_bytes(g));
    EXPECT_EQ(s, filtered_src_bytes(g, 4, 0));
}

#ifdef CYCBCR_TEST_WITH_FFMPEG
// FFmpeg's decoder reads our words as the model's samples: Y of every pixel,
// filtered Cb and Cr of every pair.
TEST(V210Ffmpeg, DecoderReadsTheModelsSamples) {
    const uint32_t w = 96, h = 4, dp = (w + 47) / 48 * 128;
    for (unsigned level : {0u, 5u})
        for (QBYCBCRMatrix m : {0u, 2u, 9u}) {
            cycbcr_set_cpu(level);
            const auto src = random_bytes(size_t{w} * h * 4, 40 + m);
            std::vector<uint8_t> out(size_t{dp} * h, 0);
            cycbcr_RGB32_to_012v(out.data(), src.data(), w, h, dp, w * 4, m, 0x8000);
            const Frame422 f = ffmpeg_v210_decode(out, w, h);
            ASSERT_EQ(f.y.size(), size_t{w} * h) << "FFmpeg refused the frame";
            for (uint32_t r = 0; r < h; ++r) {
                const V210RowSamples want = v210_filtered_row(
                    src.data() + size_t{h - 1 - r} * w * 4, w, {V210Input::Rgb8, 32, 0x8000}, m);
                for (uint32_t x = 0; x < w; ++x) ASSERT_EQ(f.Y(r, x), want.y[x]) << r << "," << x;
                for (uint32_t k = 0; k < w / 2; ++k) {
                    ASSERT_EQ(f.Cb(r, k), want.cb[k]) << r << "," << k;
                    ASSERT_EQ(f.Cr(r, k), want.cr[k]) << r << "," << k;
                }
            }
        }
}
#endif

}  // namespace
