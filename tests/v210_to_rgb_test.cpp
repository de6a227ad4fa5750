// v210 to RGB: hand-worked numbers, every engine against an independent model,
// the exact vector rows against the plain ones at every width residue, FFmpeg's
// v210 decoder as a check of the word layout, and guard pages after the bytes
// the buffer-size query answers for.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/frames.h"
#include "support/v210_rgb_model.h"
#ifdef CYCBCR_TEST_WITH_FFMPEG
#include "support/ffmpeg_v210.h"
#endif

using namespace cycbcr_test;
using v210rgb::Arith;

namespace {

using Engine = unsigned int (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                                QBYCBCRMatrix, QBYCBCRRgbType, unsigned);

uint32_t pack(uint32_t a, uint32_t b, uint32_t c) {
    return a | b << 10 | c << 20;
}
// One group's four words from six lumas and three chroma pairs.
void put_group(uint8_t* g, const int (&y)[6], const int (&cb)[3], const int (&cr)[3]) {
    const uint32_t w[4] = {pack(cb[0], y[0], cr[0]), pack(y[1], cb[1], y[2]),
                           pack(cr[1], y[3], cb[2]), pack(y[4], cr[2], y[5])};
    std::memcpy(g, w, 16);
}
// A random v210 frame: random words, so samples over 0..1023 and random top
// bits (which reading ignores).
std::vector<uint8_t> random_v210(size_t bytes, uint32_t seed) {
    return random_bytes(bytes, seed);
}

struct Form {
    const char* name;
    Engine fn;
    Arith arith;
    bool planar;
};
const Form kForms[] = {
    {"Int", cycbcr_v210ToRGBInt, Arith::B, false},
    {"v210ToRGB", cycbcr_v210ToRGB, Arith::B, false},
    {"Int16", cycbcr_v210ToRGBInt16, Arith::C, false},
    {"Float", cycbcr_v210ToRGBFloat, Arith::E, false},
    {"PlanarC16", cycbcr_v210ToRGBPlanarC16, Arith::C, true},
    {"PlanarSSE16", cycbcr_v210ToRGBPlanarSSE16, Arith::F, true},
};
const Form kAvx2Forms[] = {
    {"Int_avx2", cycbcr_v210ToRGBInt_avx2, Arith::B, false},
    {"Int16_avx2", cycbcr_v210ToRGBInt16_avx2, Arith::C, false},
};

std::vector<uint32_t> depths_of(const Form& f) {
    if (f.planar) return {48};
    return f.arith == Arith::C ? std::vector<uint32_t>{24, 48, 32, 64}
                               : std::vector<uint32_t>{15, 16, 24, 32};
}
// The pixel the form writes for a depth argument.
uint32_t pixel_bits(const Form& f, uint32_t depth) {
    if (f.arith == Arith::C && !f.planar) return depth == 24 || depth == 48 ? 48 : 64;
    return depth;
}
uint32_t bytes_of(uint32_t bits) {
    return bits == 15 ? 2 : (bits + 7) / 8;
}

// Runs the form on a frame and compares with the model; dst starts filled
// with 0xA5 so bytes outside the pixels must stay.
::testing::AssertionResult matches_model(const Form& f, const std::vector<uint8_t>& src,
                                         v210rgb::Call c, uint32_t depth) {
    const uint32_t bits = pixel_bits(f, depth);
    const size_t dstBytes = size_t{c.dstPitch} * c.height * (f.planar ? 3 : 1);
    std::vector<uint8_t> got(dstBytes, 0xA5), want(got);
    const unsigned res = f.fn(got.data(), src.data(), c.width, c.height, c.dstPitch, c.srcPitch,
                              c.matrix, c.type, depth);
    if (f.planar)
        v210rgb::model_planar(want, src.data(), c, f.arith);
    else
        v210rgb::model_packed(want, src.data(), c, f.arith, bits);
    const unsigned wantRes = c.width * c.height * (f.planar ? 6 : bytes_of(bits));
    if (res != wantRes)
        return ::testing::AssertionFailure() << "result " << res << " not " << wantRes;
    return same_bytes(got, want);
}

TEST(V210ToRgb, WorkedNumbers) {
    cycbcr_set_cpu(0);
    uint8_t src[2 * 128] = {};
    // Grey: Y 940 -> (876 * 2910) / 10000 = 254, Y 64 -> 0 (matrix 0).
    put_group(src, {940, 64, 940, 64, 940, 64}, {512, 512, 512}, {512, 512, 512});
    put_group(src + 16, {940, 940, 940, 940, 940, 940}, {512, 512, 512}, {512, 512, 512});
    uint8_t out[6 * 4] = {};
    EXPECT_EQ(cycbcr_012v_to_rgb32(out, src, 6, 1, 24, 128, 0, 0), 24u);
    for (int x = 0; x < 6; ++x)
        for (int c = 0; c < 3; ++c) EXPECT_EQ(out[4 * x + c], x % 2 ? 0 : 254) << x;
    EXPECT_EQ(out[3], 255);

    // Pairs (512, 512), (600, 600), (512, 512), Y 512: pixels 1 and 3 see
    // (556, 556): R (1303680 + 3990 * 44) / 10000 = 147, G (1303680 - 3012 *
    // 44) / 10000 = 117, B (1303680 + 5042 * 44) / 10000 = 152; pixel 2 sees
    // (600, 600): 165, 103, 174; pixel 0 grey 130. RGBA order.
    put_group(src, {512, 512, 512, 512, 512, 512}, {512, 600, 512}, {512, 600, 512});
    EXPECT_EQ(cycbcr_012v_to_rgb32(out, src, 6, 1, 24, 128, 0, QBYCBCR_RGB_RGBA), 24u);
    const int want[4][3] = {{130, 130, 130}, {147, 117, 152}, {165, 103, 174}, {147, 117, 152}};
    for (int x = 0; x < 4; ++x)
        for (int c = 0; c < 3; ++c) EXPECT_EQ(out[4 * x + c], want[x][c]) << x << " " << c;

    // Width 6, height 2, bottom-up: source row 0 lands in destination row 1.
    put_group(src, {940, 940, 940, 940, 940, 940}, {512, 512, 512}, {512, 512, 512});
    put_group(src + 128, {64, 64, 64, 64, 64, 64}, {512, 512, 512}, {512, 512, 512});
    uint8_t two[2][24];
    std::memset(two, 7, sizeof two);
    EXPECT_EQ(cycbcr_012v_to_rgb32(&two[0][0], src, 6, 2, 24, 128, 0, QBYCBCR_RGB_BOTTOM_UP), 48u);
    EXPECT_EQ(two[0][0], 0);
    EXPECT_EQ(two[1][0], 254);

    // 16 bits: studio white 940 with matrix 1 is 940 * 10240 / 160 = 60160 in
    // every plane; the four-word pixel's alpha word is 255.
    put_group(src, {940, 940, 940, 940, 940, 940}, {512, 512, 512}, {512, 512, 512});
    uint16_t planes[3][6] = {};
    EXPECT_EQ(
        cycbcr_v210ToRGBPlanarC16(reinterpret_cast<uint8_t*>(planes), src, 6, 1, 12, 128, 1, 0, 0),
        36u);
    for (auto& p : planes)
        for (uint16_t v : p) EXPECT_EQ(v, 60160);
    uint16_t wide[6][4] = {};
    EXPECT_EQ(cycbcr_v210ToRGBInt16(reinterpret_cast<uint8_t*>(wide), src, 6, 1, 48, 128, 1, 0, 64),
              48u);
    EXPECT_EQ(wide[0][0], 60160);
    EXPECT_EQ(wide[0][3], 255);

    // Depths other than 15, 16, 24, 32 write nothing and count 4 bytes a pixel.
    std::memset(out, 9, sizeof out);
    EXPECT_EQ(cycbcr_v210ToRGBInt(out, src, 6, 1, 24, 128, 0, 0, 8), 24u);
    EXPECT_EQ(cycbcr_v210ToRGBInt(out, src, 6, 0, 24, 128, 0, 0, 32), 0u);
    for (uint8_t b : out) EXPECT_EQ(b, 9);
}

// Every form, layout, depth and a spread of matrices against the model, on
// random frames (samples over the whole 10-bit range, so clamps are reached) at
// level 0 and at level 5.
TEST(V210ToRgb, EnginesMatchTheModel) {
    const uint32_t widths[] = {1, 2, 3, 4, 5, 6, 7, 11, 12, 13, 29, 30, 31, 53, 54, 60};
    const QBYCBCRRgbType types[] = {0, 1, 2, 3, 7, 0x8000, 0x8003, 0x8001};
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        uint32_t seed = 1;
        for (const Form& f : kForms)
            for (uint32_t w : widths)
                for (uint32_t depth : depths_of(f)) {
                    const uint32_t h = 3, sp = (w + 5) / 6 * 16 + 20;
                    const auto src = random_v210(size_t{sp} * h + 64, seed++);
                    const uint32_t dp = w * bytes_of(pixel_bits(f, depth)) + 6;
                    for (QBYCBCRMatrix m : {0u, 1u, 2u, 5u, 6u, 7u, 9u})
                        for (QBYCBCRRgbType t : types)
                            ASSERT_TRUE(matches_model(f, src, {w, h, dp, sp, m, t}, depth))
                                << f.name << " level " << level << " width " << w << " depth "
                                << depth << " matrix " << m << " type " << t;
                }
    }
}

// The planar forms' planes may start at any byte and have odd pitches (under
// UndefinedBehaviorSanitizer a 16-bit store to an odd address fails here).
TEST(V210ToRgb, PlanarFormsTakePlanesAtAnyByte) {
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (const Form& f : kForms) {
            if (!f.planar) continue;
            const uint32_t w = 13, h = 3, sp = 64, dp = 2 * w + 3;
            const auto src = random_v210(size_t{sp} * h + 64, 77);
            std::vector<uint8_t> got(size_t{dp} * h * 3 + 1, 0xA5), want(size_t{dp} * h * 3, 0xA5);
            f.fn(got.data() + 1, src.data(), w, h, dp, sp, 1, 0, 48);
            v210rgb::model_planar(want, src.data(), {w, h, dp, sp, 1, 0}, f.arith);
            EXPECT_TRUE(same_bytes(std::vector<uint8_t>(got.begin() + 1, got.end()), want))
                << f.name << " level " << level;
        }
    }
}

TEST(V210ToRgb, ConvertersAndAlphaMatchTheModel) {
    using Conv = unsigned int (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                                  QBYCBCRMatrix, QBYCBCRRgbType);
    const std::pair<Conv, uint32_t> convs[] = {{cycbcr_012v_to_rgb555, 15},
                                               {cycbcr_012v_to_rgb565, 16},
                                               {cycbcr_012v_to_rgb24, 24},
                                               {cycbcr_012v_to_rgb32, 32}};
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (uint32_t w : {5u, 48u, 103u}) {
            const uint32_t h = 4, sp = (w + 5) / 6 * 16 + 4;
            const auto src = random_v210(size_t{sp} * h, w);
            const auto key = random_bytes(size_t{w} * h * 4 / 3 + 8, w + 1);
            for (QBYCBCRRgbType t : {0u, 3u, 0x8002u}) {
                const v210rgb::Call c{w, h, w * 4 + 8, sp, 2, t};
                for (auto [fn, bits] : convs) {
                    std::vector<uint8_t> got(size_t{c.dstPitch} * h, 3), want(got);
                    EXPECT_EQ(fn(got.data(), src.data(), w, h, c.dstPitch, sp, 2, t),
                              w * h * bytes_of(bits));
                    v210rgb::model_packed(want, src.data(), c, Arith::B, bits);
                    EXPECT_TRUE(same_bytes(got, want)) << bits << " level " << level << " w " << w;
                }
                std::vector<uint8_t> got(size_t{c.dstPitch} * h, 3), want(got);
                EXPECT_EQ(cycbcr_012v_to_rgb32_Alpha(got.data(), src.data(), key.data(), w, h,
                                                     c.dstPitch, sp, 2, t),
                          w * h * 4);
                v210rgb::model_packed(want, src.data(), c, Arith::B, 32, key.data());
                EXPECT_TRUE(same_bytes(got, want)) << "alpha, w " << w;
            }
        }
    }
}

// The vector rows give the plain rows' bytes: level 0 against level 5 (and the
// _avx2 forms), every width residue of the 48-pixel step, padded pitches, all
// orders, matrices whose sums reach both clamps.
TEST(V210ToRgb, VectorRowsGiveThePlainBytes) {
    CYCBCR_REQUIRE_AVX2();
    struct Pair {
        const char* name;
        Engine plain, vector;
        std::vector<uint32_t> depths;
        bool planar;
    };
    const Pair pairs[] = {
        {"Int", cycbcr_v210ToRGBInt, cycbcr_v210ToRGBInt, {24, 32}, false},
        {"Int_avx2", cycbcr_v210ToRGBInt, cycbcr_v210ToRGBInt_avx2, {24, 32}, false},
        {"Int16", cycbcr_v210ToRGBInt16, cycbcr_v210ToRGBInt16, {24, 32}, false},
        {"Int16_avx2", cycbcr_v210ToRGBInt16, cycbcr_v210ToRGBInt16_avx2, {48, 64}, false},
        {"PlanarC16", cycbcr_v210ToRGBPlanarC16, cycbcr_v210ToRGBPlanarC16, {0}, true},
    };
    uint32_t seed = 100;
    for (const Pair& p : pairs)
        for (uint32_t w = 96; w < 96 + 48; ++w)
            for (uint32_t depth : p.depths)
                for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 0x8000u}) {
                    const uint32_t h = 2, sp = (w + 5) / 6 * 16 + 36;
                    const auto src = random_v210(size_t{sp} * h, seed++);
                    const QBYCBCRMatrix m = seed % 9;
                    const uint32_t dp = w * 8 + 12;
                    const size_t n = size_t{dp} * h * (p.planar ? 3 : 1);
                    std::vector<uint8_t> a(n, 0x5A), b(a);
                    cycbcr_set_cpu(0);
                    const unsigned ra = p.plain(a.data(), src.data(), w, h, dp, sp, m, t, depth);
                    cycbcr_set_cpu(5);
                    const unsigned rb = p.vector(b.data(), src.data(), w, h, dp, sp, m, t, depth);
                    EXPECT_EQ(ra, rb);
                    ASSERT_TRUE(same_bytes(b, a)) << p.name << " w " << w << " depth " << depth
                                                  << " type " << t << " matrix " << m;
                }
    // The extremes of every sample in every position, for every matrix: sums at
    // both ends of each family's range.
    const uint32_t w = 240, h = 4, sp = 640;
    std::vector<uint8_t> src(size_t{sp} * h + 16);
    std::mt19937 rng(7);
    const int ends[] = {0, 1, 63, 64, 511, 512, 513, 940, 960, 1022, 1023};
    for (size_t i = 0; i + 4 <= src.size(); i += 4) {
        const uint32_t v = pack(ends[rng() % 11], ends[rng() % 11], ends[rng() % 11]);
        std::memcpy(&src[i], &v, 4);
    }
    for (QBYCBCRMatrix m = 0; m <= 8; ++m)
        for (const Pair& p : pairs) {
            const uint32_t dp = w * 8;
            std::vector<uint8_t> a(size_t{dp} * h * 3, 1), b(a);
            cycbcr_set_cpu(0);
            p.plain(a.data(), src.data(), w, h, dp, sp, m, 0, p.depths[0]);
            cycbcr_set_cpu(5);
            p.vector(b.data(), src.data(), w, h, dp, sp, m, 0, p.depths[0]);
            ASSERT_TRUE(same_bytes(b, a)) << p.name << " matrix " << m;
        }
    // PlanarSSE16 runs its vector rows on this processor: the model says what
    // its rule gives, at every residue.
    cycbcr_set_cpu(0);
    for (uint32_t w2 = 96; w2 < 144; ++w2)
        for (QBYCBCRMatrix m : {0u, 3u, 7u, 12u}) {
            const uint32_t sp2 = (w2 + 5) / 6 * 16 + 4;
            const auto s2 = random_v210(size_t{sp2} * 2, w2 * 31 + m);
            ASSERT_TRUE(matches_model(kForms[5], s2, {w2, 2, w2 * 2 + 2, sp2, m, 0x8000}, 0))
                << "PlanarSSE16 w " << w2 << " matrix " << m;
        }
    for (const Form& f : kAvx2Forms)
        for (uint32_t depth : depths_of(f))
            ASSERT_TRUE(matches_model(f, src, {w, h, w * 8, sp, 2, 3}, depth)) << f.name;
}

// A frame too large for the caches goes out with streaming stores at level 5
// (32-byte aligned rows): the same bytes as level 0.
TEST(V210ToRgb, LargeFramesGiveThePlainBytes) {
    CYCBCR_REQUIRE_AVX2();
    const uint32_t w = 2042, h = 1030, dp = 8192, sp = 5504;
    const size_t n = size_t{dp} * h;
    const auto src = random_v210(size_t{sp} * h, 77);
    std::unique_ptr<uint8_t, decltype(&std::free)> a(
        static_cast<uint8_t*>(std::aligned_alloc(64, n)), &std::free),
        b(static_cast<uint8_t*>(std::aligned_alloc(64, n)), &std::free);
    std::memset(a.get(), 0x3C, n);
    std::memset(b.get(), 0x3C, n);
    cycbcr_set_cpu(0);
    cycbcr_012v_to_rgb32(a.get(), src.data(), w, h, dp, sp, 0, 0x8003);
    cycbcr_set_cpu(5);
    cycbcr_012v_to_rgb32(b.get(), src.data(), w, h, dp, sp, 0, 0x8003);
    EXPECT_EQ(std::memcmp(a.get(), b.get(), n), 0);
}

// Guard pages right after the bytes cycbcr_converter_buffer_sizes answers for,
// source (the read-ahead word included) and destination, at both levels.
TEST(V210ToRgb, StaysWithinTheAnsweredBytes) {
    const char* names[] = {"cycbcr_012v_to_rgb555", "cycbcr_012v_to_rgb565", "cycbcr_012v_to_rgb24",
                           "cycbcr_012v_to_rgb32", "cycbcr_012v_to_rgb24_avx2"};
    using Conv = unsigned int (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                                  QBYCBCRMatrix, QBYCBCRRgbType);
    const Conv fns[] = {cycbcr_012v_to_rgb555, cycbcr_012v_to_rgb565, cycbcr_012v_to_rgb24,
                        cycbcr_012v_to_rgb32, cycbcr_012v_to_rgb24_avx2};
    const uint32_t bits[] = {15, 16, 24, 32, 24};
    for (unsigned level : {0u, 5u})
        for (int i = 0; i < 5; ++i) {
            if (i == 4 && !have_avx2()) continue;
            for (uint32_t w : {1u, 5u, 6u, 7u, 12u, 119u, 120u, 125u, 144u}) {
                const uint32_t h = 3, sp = (w + 5) / 6 * 16 + (w % 6 == 0 ? 4 : 0);
                const uint32_t dp = w * bytes_of(bits[i]);
                uint64_t dBytes = 0, sBytes = 0;
                ASSERT_EQ(
                    cycbcr_converter_buffer_sizes(names[i], w, h, dp, sp, 0, 0, &dBytes, &sBytes),
                    1u);
                const uint32_t rest = w % 6, words[6] = {1, 1, 2, 3, 3, 4};
                EXPECT_EQ(sBytes, uint64_t{h - 1} * sp + w / 6 * 16 + 4 * words[rest]) << w;
                EXPECT_EQ(dBytes, uint64_t{h} * dp) << w;
                const auto src = random_v210(sBytes, w);
                std::vector<uint8_t> init(dBytes, 0x11);
                cycbcr_set_cpu(level);
                const Outcome o = run_guarded(
                    [&](uint8_t* d, const uint8_t* s) {
                        return fns[i](d, s, w, h, dp, sp, 6, 0x8000);
                    },
                    src, sBytes, init, dBytes);
                std::vector<uint8_t> want(init);
                v210rgb::model_packed(want, src.data(), {w, h, dp, sp, 6, 0x8000}, Arith::B,
                                      bits[i]);
                EXPECT_TRUE(same_bytes(o.dst, want))
                    << names[i] << " w " << w << " level " << level;
            }
        }
    // The engines' 16-bit and planar forms with exact-size buffers too.
    for (unsigned level : {0u, 5u})
        for (uint32_t w : {6u, 7u, 120u, 125u}) {
            cycbcr_set_cpu(level);
            const uint32_t h = 2, sp = (w + 5) / 6 * 16 + (w % 6 == 0 ? 4 : 0);
            const size_t sBytes = size_t{h - 1} * sp + (w + 5) / 6 * 16 + (w % 6 == 0 ? 4 : 0);
            const auto src = random_v210(sBytes, w + 9);
            for (const Form& f : {kForms[2], kForms[4], kForms[5]}) {
                const uint32_t dp = w * (f.planar ? 2 : 8);
                const size_t dBytes = size_t{dp} * h * (f.planar ? 3 : 1);
                std::vector<uint8_t> init(dBytes, 0x22), want(init);
                const Outcome o = run_guarded(
                    [&](uint8_t* d, const uint8_t* s) {
                        return f.fn(d, s, w, h, dp, sp, 1, 2, 64);
                    },
                    src, sBytes, init, dBytes);
                if (f.planar)
                    v210rgb::model_planar(want, src.data(), {w, h, dp, sp, 1, 2}, f.arith);
                else
                    v210rgb::model_packed(want, src.data(), {w, h, dp, sp, 1, 2}, f.arith, 64);
                EXPECT_TRUE(same_bytes(o.dst, want)) << f.name << " w " << w;
            }
        }
}

// The dispatcher's v210 to RGB pair and its buffer sizes.
TEST(V210ToRgb, DispatcherPair) {
    cycbcr_set_cpu(0);
    const uint32_t w = 50, h = 3;
    uint64_t d = 0, s = 0;
    ASSERT_EQ(cycbcr_buffer_sizes(0, fourcc("v210"), w, h, 200, 128, &d, &s), 1u);
    EXPECT_EQ(s, 2u * 128 + 8 * 16 + 8);
    EXPECT_EQ(d, 2u * 200 + 200);
    // The answered source bytes: the last row's partial group reaches past 3 rows.
    const auto src = random_v210(s, 3);
    std::vector<uint8_t> a(200 * h, 0), b(a);
    EXPECT_EQ(cycbcr_transcode(a.data(), src.data(), w, h, 200, 128, 6, 3, 0, fourcc("v210")),
              w * h * 4);
    cycbcr_012v_to_rgb32(b.data(), src.data(), w, h, 200, 128, 6, 3);
    EXPECT_TRUE(same_bytes(a, b));
}

#ifdef CYCBCR_TEST_WITH_FFMPEG
// FFmpeg writes the v210 words of a random 4:2:2 picture; the converter's
// pixels must follow from FFmpeg's samples by the rule (within one step for the
// double-precision arithmetic here), so the word layout is FFmpeg's.
TEST(V210ToRgb, FfmpegWordLayout) {
    const uint32_t w = 96, h = 4;
    const Frame422 f = random_frame422(w, h, 64, 940, 5);
    std::vector<uint8_t> v = ffmpeg_v210_encode(f);
    if (v.empty()) GTEST_SKIP() << "FFmpeg's v210 encoder missing";
    const uint32_t sp = static_cast<uint32_t>(v.size() / h);
    v.resize(v.size() + 4);  // the last row's read-ahead word
    const Frame422 back = ffmpeg_v210_decode(v, w, h);
    ASSERT_EQ(back.y, f.y);
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        std::vector<uint8_t> out(size_t{w} * 4 * h);
        cycbcr_012v_to_rgb32(out.data(), v.data(), w, h, w * 4, sp, 1, QBYCBCR_RGB_RGBA);
        for (uint32_t r = 0; r < h; ++r)
            for (uint32_t x = 0; x + 1 < w; ++x) {  // the last pixel reads past the row
                const uint32_t k = x / 2;
                const double cb = x % 2 ? (f.Cb(r, k) + f.Cb(r, k + 1)) / 2 : f.Cb(r, k);
                const double cr = x % 2 ? (f.Cr(r, k) + f.Cr(r, k + 1)) / 2 : f.Cr(r, k);
                const double y = f.Y(r, x) * 0.25, u = (cb - 512) * 0.25, vv = (cr - 512) * 0.25;
                const double want[3] = {y + 1.371 * vv, y - 0.698 * vv - 0.336 * u, y + 1.732 * u};
                for (int c = 0; c < 3; ++c) {
                    const double e = want[c] < 0 ? 0 : want[c] > 255 ? 255 : want[c];
                    EXPECT_NEAR(out[(size_t{r} * w + x) * 4 + c], e, 1.5)
                        << r << " " << x << " " << c;
                }
            }
    }
}
#endif

}  // namespace
