// Reduced-size planar frames from UYVY and v210: worked numbers, each reduction
// against a per-sample model on random frames between guard pages at the sizes
// the buffer query answers, both processor levels, and the scale-100 hand-offs.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

namespace {

using cycbcr_test::GuardedBuffer;
using cycbcr_test::have_avx2;
using cycbcr_test::random_bytes;
using ScaleFn = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                 unsigned int, unsigned int, unsigned int, unsigned int,
                                 unsigned int);

// A source frame and how the model reads it.
struct Source {
    std::vector<uint8_t> bytes;
    uint32_t pitch;  // the row distance the converter uses
    bool v210;

    uint32_t word(uint32_t row, uint32_t index) const {
        const size_t at = size_t{row} * pitch + 4 * size_t{index};
        return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
               uint32_t(bytes[at + 3]) << 24;
    }
    // v210 group of six pixels in four words: (word, bit) of each sample.
    uint32_t field(uint32_t row, uint32_t group, const uint32_t (&at)[2]) const {
        return (word(row, 4 * group + at[0]) >> at[1]) & 0x3FF;
    }
    uint32_t y(uint32_t row, uint32_t pixel) const {
        static constexpr uint32_t kAt[6][2] = {{0, 10}, {1, 0}, {1, 20}, {2, 10}, {3, 0}, {3, 20}};
        if (!v210) return bytes[size_t{row} * pitch + 2 * size_t{pixel} + 1];
        return field(row, pixel / 6, kAt[pixel % 6]);
    }
    uint32_t cb(uint32_t row, uint32_t pair) const {
        static constexpr uint32_t kAt[3][2] = {{0, 0}, {1, 10}, {2, 20}};
        if (!v210) return bytes[size_t{row} * pitch + 4 * size_t{pair}];
        return field(row, pair / 3, kAt[pair % 3]);
    }
    uint32_t cr(uint32_t row, uint32_t pair) const {
        static constexpr uint32_t kAt[3][2] = {{0, 20}, {2, 0}, {3, 10}};
        if (!v210) return bytes[size_t{row} * pitch + 4 * size_t{pair} + 2];
        return field(row, pair / 3, kAt[pair % 3]);
    }
    // Two samples averaged into 8 bits, and one sample in 8 bits.
    uint8_t mean(uint32_t a, uint32_t b) const {
        return uint8_t(v210 ? (a + b) >> 3 : (a + b) / 2);
    }
    uint8_t one(uint32_t a) const { return uint8_t(v210 ? a / 4 : a); }
};

uint32_t v210_row(uint32_t w) {
    return (w + 47) / 48 * 128;
}

Source random_source(bool v210, uint32_t w, uint32_t h, uint32_t srcPitch, uint32_t seed) {
    Source s;
    s.v210 = v210;
    s.pitch = std::max(v210 ? v210_row(w) : 2 * w, srcPitch);
    s.bytes = random_bytes(size_t{s.pitch} * (h + 1) + 256, seed);
    return s;
}

struct Planes {
    std::vector<uint8_t> y, cb, cr;
    unsigned int result = 0;
};

// Reduction by 1.5: W = 2w/3 by H = 2h/3, rows of four luma per six pixels in
// whole runs, source rows 0, 0, 2, 4, 6, 6, 8, ... (2 * floor(3j / 4)).
Planes model_1_5(const Source& s, uint32_t w, uint32_t h, bool full) {
    const uint32_t W = 2 * w / 3, H = 2 * h / 3;
    Planes m;
    m.result = W * H + W * H / 2;
    if (h < 2) return m;
    const uint32_t row = (W + 3) / 4 * 4;
    const uint32_t chromaRows = full ? H : (H + 1) / 2;
    m.y.resize(size_t{row} * H);
    m.cb.resize(size_t{row / 2} * chromaRows);
    m.cr.resize(m.cb.size());
    for (uint32_t j = 0; j < H; ++j) {
        const uint32_t r = 2 * (3 * j / 4);
        for (uint32_t x = 0; x < row; ++x) {
            const uint32_t p = x / 4 * 6;
            uint8_t v = 0;
            switch (x % 4) {
                case 0:
                    v = s.mean(s.y(r, p), s.y(r, p + 1));
                    break;
                case 1:
                    v = s.one(s.y(r, p + 2));
                    break;
                case 2:
                    v = s.mean(s.y(r, p + 3), s.y(r, p + 4));
                    break;
                case 3:
                    v = s.one(s.y(r, p + 5));
                    break;
            }
            m.y[size_t{j} * row + x] = v;
        }
        if (!full && j % 2 != 0) continue;
        const uint32_t cj = full ? j : j / 2;
        for (uint32_t c = 0; c < row / 2; ++c) {
            const uint32_t pair = c / 2 * 3 + (c % 2) * 2;  // pixels 0 and 4 of each six
            m.cb[size_t{cj} * (row / 2) + c] = s.one(s.cb(r, pair));
            m.cr[size_t{cj} * (row / 2) + c] = s.one(s.cr(r, pair));
        }
    }
    return m;
}

// The general v210 reduction by step k.
uint32_t step_of(uint32_t scale) {
    const uint32_t s = scale & 0xFFFF;
    return s == 200 ? 2 : s == 300 ? 3 : s == 400 ? 4 : 1;
}
Planes model_step(const Source& s, uint32_t w, uint32_t h, uint32_t scale, bool full) {
    Planes m;
    if (h == 0) return m;
    const uint32_t k = step_of(scale);
    const uint32_t W = (w + k - 1) / k, H = (h + k - 1) / k, row = (W + 3) / 4 * 4;
    const uint32_t n = row * H;
    m.result = full ? 2 * n : n + n / 2;
    const uint32_t chromaRows = full ? H : (H + 1) / 2;
    m.y.resize(size_t{row} * H);
    m.cb.resize(size_t{row / 2} * chromaRows);
    m.cr.resize(m.cb.size());
    for (uint32_t j = 0; j < H; ++j) {
        const uint32_t r = k * j;
        const bool chroma = full || j % 2 == 0;
        for (uint32_t i = 0; i < row; ++i) {
            const uint32_t p = k * i, even = p - p % 2;
            m.y[size_t{j} * row + i] =
                chroma ? s.mean(s.y(r, even), s.y(r, even + 1)) : s.one(s.y(r, p));
        }
        if (!chroma) continue;
        const uint32_t cj = full ? j : j / 2;
        for (uint32_t c = 0; c < row / 2; ++c) {
            m.cb[size_t{cj} * (row / 2) + c] = s.one(s.cb(r, k * c));
            m.cr[size_t{cj} * (row / 2) + c] = s.one(s.cr(r, k * c));
        }
    }
    return m;
}

struct Call {
    uint32_t w, h, dstPitch, srcPitch, scale, is422;
};

// Runs fn with each buffer guarded right after the bytes the query answers for
// it; the planes start filled with 0xCD.
Planes run(ScaleFn fn, const char* name, const Source& s, const Call& c) {
    const unsigned int args[4] = {c.dstPitch, c.srcPitch, c.scale, c.is422};
    uint64_t bytes[6] = {};
    EXPECT_EQ(cycbcr_converter_all_pointer_sizes(name, c.w, c.h, args, 4, bytes, 6), 1u) << name;
    EXPECT_EQ(bytes[4] + bytes[5], 0u);
    GuardedBuffer y(bytes[0]), cb(bytes[1]), cr(bytes[2]), src(bytes[3]);
    EXPECT_LE(bytes[3], s.bytes.size());
    std::memcpy(src.data(), s.bytes.data(), bytes[3]);
    for (GuardedBuffer* b : {&y, &cb, &cr}) std::memset(b->data(), 0xCD, b->size());
    Planes out;
    out.result = fn(y.data(), cb.data(), cr.data(), src.data(), c.w, c.h, c.dstPitch, c.srcPitch,
                    c.scale, c.is422);
    out.y.assign(y.data(), y.data() + y.size());
    out.cb.assign(cb.data(), cb.data() + cb.size());
    out.cr.assign(cr.data(), cr.data() + cr.size());
    EXPECT_TRUE(y.slack_intact() && cb.slack_intact() && cr.slack_intact());
    EXPECT_EQ(0, std::memcmp(src.data(), s.bytes.data(), bytes[3])) << "source changed";
    return out;
}

::testing::AssertionResult same(const Planes& got, const Planes& want) {
    if (got.result != want.result)
        return ::testing::AssertionFailure() << "result " << got.result << " != " << want.result;
    const std::vector<uint8_t>* g[3] = {&got.y, &got.cb, &got.cr};
    const std::vector<uint8_t>* e[3] = {&want.y, &want.cb, &want.cr};
    for (int p = 0; p < 3; ++p) {
        if (g[p]->size() != e[p]->size())
            return ::testing::AssertionFailure()
                   << "plane " << p << ": " << g[p]->size() << " bytes answered, " << e[p]->size()
                   << " written";
        for (size_t i = 0; i < e[p]->size(); ++i)
            if ((*g[p])[i] != (*e[p])[i])
                return ::testing::AssertionFailure()
                       << "plane " << p << " byte " << i << ": " << int((*g[p])[i])
                       << " != " << int((*e[p])[i]);
    }
    return ::testing::AssertionSuccess();
}

// Every residue of 6 and 12, and widths long enough for several vector steps.
std::vector<uint32_t> widths() {
    std::vector<uint32_t> v;
    for (uint32_t w = 0; w <= 25; ++w) v.push_back(w);
    for (uint32_t w = 48; w < 60; ++w) v.push_back(w);
    for (uint32_t w = 192; w < 204; ++w) v.push_back(w);
    v.push_back(1920);
    return v;
}

std::vector<int> levels() {
    return have_avx2() ? std::vector<int>{0, 5} : std::vector<int>{0};
}

struct Entry {
    ScaleFn fn;
    const char* name;
    bool v210;
    uint32_t scale;  // what the call passes
};

TEST(Reduce1_5, MatchesModelAtEveryWidthResidueAndLevel) {
    const Entry entries[] = {
        {cycbcr_uyvy_scale_planar_1_5, "cycbcr_uyvy_scale_planar_1_5", false, 0},
        {cycbcr_012v_scale_planar_1_5, "cycbcr_012v_scale_planar_1_5", true, 7},
        {cycbcr_uyvy_scale_planar, "cycbcr_uyvy_scale_planar", false, 150},
        {cycbcr_012v_scale_planar, "cycbcr_012v_scale_planar", true, 0x30096},  // low 16 bits
    };
    uint32_t seed = 1;
    for (int level : levels()) {
        cycbcr_set_cpu(level);
        for (const Entry& e : entries)
            for (uint32_t w : widths())
                for (uint32_t h : {0u, 1u, 2u, 3u, 5u, 6u, 7u, 9u}) {
                    if (w == 1920 && h > 3) continue;
                    // The natural pitch (0), one below it and a padded one.
                    const uint32_t natural = e.v210 ? v210_row(w) : 2 * w;
                    for (uint32_t sp : {0u, 1u, natural + (e.v210 ? 48u : 6u)})
                        for (uint32_t full : {0u, 1u}) {
                            const Source s = random_source(e.v210, w, h, sp, ++seed);
                            const Call c{w, h, 999, sp, e.scale, full};
                            EXPECT_TRUE(
                                same(run(e.fn, e.name, s, c), model_1_5(s, w, h, full != 0)))
                                << e.name << " level " << level << " " << w << "x" << h
                                << " srcPitch " << sp << " is422 " << full;
                        }
                }
    }
    cycbcr_set_cpu(5);
}

TEST(ReduceByStep, MatchesModelForEveryStep) {
    uint32_t seed = 1000;
    for (int level : levels()) {
        cycbcr_set_cpu(level);
        for (uint32_t scale : {200u, 300u, 400u, 250u, 0u, 0x100C8u /* 200 */})
            for (uint32_t w : widths())
                for (uint32_t h : {0u, 1u, 3u, 4u, 5u, 7u, 9u}) {
                    if (w == 1920 && h > 3) continue;
                    for (uint32_t full : {0u, 1u}) {
                        // Odd widths at a padded pitch.
                        const uint32_t sp = w % 2 ? v210_row(w) + 64 : 0;
                        const Source s = random_source(true, w, h, sp, ++seed);
                        const Call c{w, h, 12, sp, scale, full};
                        EXPECT_TRUE(
                            same(run(cycbcr_012v_scale_planar, "cycbcr_012v_scale_planar", s, c),
                                 model_step(s, w, h, scale, full != 0)))
                            << "scale " << scale << " level " << level << " " << w << "x" << h
                            << " is422 " << full;
                    }
                }
    }
    cycbcr_set_cpu(5);
}

TEST(ReduceByStep, GroupCountsOfTheStepsOf400And200) {
    // A 24-pixel v210 row: luma p * 40, Cb of pair m 100 + 8m, Cr 600 + 8m.
    std::vector<uint8_t> src(128 * 8, 0);
    auto put = [&](uint32_t row, uint32_t word, uint32_t shift, uint32_t v) {
        uint8_t* p = &src[row * 128 + 4 * word];
        uint32_t x;
        std::memcpy(&x, p, 4);
        x |= v << shift;
        std::memcpy(p, &x, 4);
    };
    const uint32_t yAt[6][2] = {{0, 10}, {1, 0}, {1, 20}, {2, 10}, {3, 0}, {3, 20}};
    const uint32_t cbAt[3][2] = {{0, 0}, {1, 10}, {2, 20}}, crAt[3][2] = {{0, 20}, {2, 0}, {3, 10}};
    for (uint32_t r = 0; r < 8; ++r)
        for (uint32_t g = 0; g < 4; ++g) {
            for (uint32_t i = 0; i < 6; ++i) put(r, 4 * g + yAt[i][0], yAt[i][1], (6 * g + i) * 40);
            for (uint32_t i = 0; i < 3; ++i) {
                put(r, 4 * g + cbAt[i][0], cbAt[i][1], 100 + 8 * (3 * g + i));
                put(r, 4 * g + crAt[i][0], crAt[i][1], 600 + 8 * (3 * g + i));
            }
        }
    cycbcr_set_cpu(0);
    // Scale 400, 4:2:0, 24 x 8: two output rows of six luma (8 bytes each), one
    // chroma row of three (4 bytes). Row 0 carries chroma: luma (160i + 160i +
    // 40) >> 3 = 40i + 5; chroma of pairs 0, 4, 8: (100 + 32c) >> 2, (600 + 32c)
    // >> 2. Row 1 (source row 4) is luma only: 160i >> 2 = 40i.
    uint8_t y[16], cb[4], cr[4];
    EXPECT_EQ(cycbcr_012v_scale_planar(y, cb, cr, src.data(), 24, 8, 0, 128, 400, 0), 16u + 8u);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(y[i], 40 * i + 5) << i;
        EXPECT_EQ(y[8 + i], 40 * i) << i;
    }
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(cb[c], (100 + 32 * c) >> 2);
        EXPECT_EQ(cr[c], (600 + 32 * c) >> 2);
    }
    // Scale 200, 4:2:0, 24 x 4: luma-only row 1 (source row 2) holds pixels 0, 2,
    // 4, ...: 80i >> 2 = 20i, three per six source pixels.
    uint8_t y2[24], cb2[6], cr2[6];
    EXPECT_EQ(cycbcr_012v_scale_planar(y2, cb2, cr2, src.data(), 24, 4, 0, 128, 200, 0), 24u + 12u);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(y2[12 + i], 20 * i) << i;
    cycbcr_set_cpu(5);
}

TEST(Reduce1_5, WorkedNumbers) {
    // 6 x 3 UYVY: W = 4, H = 2, both rows from source row 0; 4 * 2 + 4 = 12.
    const uint8_t row0[12] = {10, 20, 30, 41, 50, 60, 70, 81, 90, 100, 110, 120};
    std::vector<uint8_t> src(36, 0xEE);
    std::memcpy(src.data(), row0, 12);
    uint8_t y[8], cb[4], cr[4];
    EXPECT_EQ(cycbcr_uyvy_scale_planar_1_5(y, cb, cr, src.data(), 6, 3, 0, 12, 150, 1), 12u);
    const uint8_t wantY[4] = {30, 60, 90, 120};  // (20 + 41) >> 1, 60, (81 + 100) >> 1, 120
    for (int r = 0; r < 2; ++r) {
        EXPECT_EQ(0, std::memcmp(y + 4 * r, wantY, 4)) << r;
        EXPECT_EQ(cb[2 * r], 10);
        EXPECT_EQ(cb[2 * r + 1], 90);
        EXPECT_EQ(cr[2 * r], 30);
        EXPECT_EQ(cr[2 * r + 1], 110);
    }

    // Height 1 returns (2 * width / 3) * 0 and writes nothing; nor does scale
    // 200 of UYVY, which returns 0.
    uint8_t untouched[8];
    std::memset(untouched, 0x5A, 8);
    std::memcpy(y, untouched, 8);
    EXPECT_EQ(cycbcr_uyvy_scale_planar_1_5(y, cb, cr, src.data(), 6, 1, 0, 12, 150, 0), 0u);
    EXPECT_EQ(cycbcr_012v_scale_planar_1_5(y, cb, cr, src.data(), 6, 1, 0, 128, 150, 0), 0u);
    EXPECT_EQ(cycbcr_uyvy_scale_planar(y, cb, cr, src.data(), 6, 3, 0, 12, 200, 1), 0u);
    EXPECT_EQ(cycbcr_uyvy_scale_planar(y, cb, cr, src.data(), 6, 3, 0, 12, 0x10000, 1), 0u);
    EXPECT_EQ(0, std::memcmp(y, untouched, 8));

    // A v210 group with Y0 = 1023 and Y1 = 1021: (1023 + 1021) >> 3 = 255; Y0 = 7
    // and Y1 = 1 give 1 (not the 0 that averaging 8-bit samples would).
    for (auto [a, b, want] : {std::array<uint32_t, 3>{1023, 1021, 255}, {7, 1, 1}}) {
        std::vector<uint8_t> g(128 * 3, 0);
        const uint32_t w0 = a << 10, w1 = b;
        std::memcpy(&g[0], &w0, 4);
        std::memcpy(&g[4], &w1, 4);
        uint8_t oy[8] = {}, ocb[4], ocr[4];
        EXPECT_EQ(cycbcr_012v_scale_planar_1_5(oy, ocb, ocr, g.data(), 6, 3, 0, 0, 150, 1), 12u);
        EXPECT_EQ(oy[0], want);
        EXPECT_EQ(oy[4], want);
    }
}

TEST(Reduce1_5, ChromaRowsOfA420FrameComeFromEvenOutputRows) {
    // Height 6 gives H = 4: source rows 0, 0, 2, 4; with the flag 0 the chroma
    // rows come from output rows 0 and 2, that is source rows 0 and 2.
    std::vector<uint8_t> src(6 * 12);
    for (uint32_t r = 0; r < 6; ++r)
        for (uint32_t i = 0; i < 12; ++i) src[r * 12 + i] = uint8_t(r * 16 + i);
    for (int level : levels()) {
        cycbcr_set_cpu(level);
        uint8_t y[16], cb[4], cr[4];
        EXPECT_EQ(cycbcr_uyvy_scale_planar(y, cb, cr, src.data(), 6, 6, 0, 12, 150, 0), 16u + 8u);
        EXPECT_EQ(cb[0], 0);   // row 0, U0
        EXPECT_EQ(cb[1], 8);   // row 0, U4
        EXPECT_EQ(cb[2], 32);  // row 2, U0
        EXPECT_EQ(cr[3], 32 + 10);
        EXPECT_EQ(y[4 * 3 + 1], 4 * 16 + 5);  // output row 3 from source row 4
    }
    cycbcr_set_cpu(5);
}

TEST(Scale100, HandsTheFrameToThePlainUnpacking) {
    // UYVY at a padded pitch into planes of their own: every source pixel, Y rows
    // dstPitch apart, chroma rows dstPitch / 2 apart; 4:2:0 keeps rows 0 and 3.
    const uint32_t w = 8, h = 4, sp = 20, dp = 16;
    const std::vector<uint8_t> src = random_bytes(sp * h, 77);
    for (uint32_t full : {0u, 1u}) {
        std::vector<uint8_t> y(dp * h, 0), cb(dp / 2 * h, 0), cr(dp / 2 * h, 0);
        EXPECT_EQ(cycbcr_uyvy_scale_planar(y.data(), cb.data(), cr.data(), src.data(), w, h, dp, sp,
                                           100, full),
                  dp * h + dp * h / 2);
        for (uint32_t r = 0; r < h; ++r)
            for (uint32_t x = 0; x < w; ++x) EXPECT_EQ(y[r * dp + x], src[r * sp + 2 * x + 1]);
        const uint32_t rows[2][4] = {{0, 3}, {0, 1, 2, 3}};
        for (uint32_t k = 0; k < (full ? 4u : 2u); ++k)
            for (uint32_t p = 0; p < w / 2; ++p) {
                EXPECT_EQ(cb[k * dp / 2 + p], src[rows[full][k] * sp + 4 * p]);
                EXPECT_EQ(cr[k * dp / 2 + p], src[rows[full][k] * sp + 4 * p + 2]);
            }
    }
    // v210: truncated samples, Y rows dstPitch apart; 4:2:0 keeps the odd row's
    // chroma; the count is width * height * 3 / 2 either way.
    Source s = random_source(true, 12, 2, 0, 78);
    for (uint32_t full : {0u, 1u}) {
        std::vector<uint8_t> y(32 * 2, 0), cb(16 * 2, 0), cr(16 * 2, 0);
        EXPECT_EQ(cycbcr_012v_scale_planar(y.data(), cb.data(), cr.data(), s.bytes.data(), 12, 2,
                                           32, 0, 100, full),
                  36u);
        for (uint32_t r = 0; r < 2; ++r)
            for (uint32_t x = 0; x < 12; ++x) EXPECT_EQ(y[r * 32 + x], s.y(r, x) >> 2);
        for (uint32_t p = 0; p < 6; ++p) {
            EXPECT_EQ(cb[p], s.cb(full ? 0 : 1, p) >> 2);
            EXPECT_EQ(cr[p], s.cr(full ? 0 : 1, p) >> 2);
        }
    }
}

TEST(Scale100, BufferSizesFollowTheUnpacking) {
    // Fromv210 writes the width rounded up to 12 in each row: width 13, height
    // 3, pitch 32 reach 2 * 32 + 24 (Y) and 2 * 16 + 12 (chroma); it reads three
    // natural rows of 128 bytes up to 64 bytes into the last.
    const unsigned int args[4] = {32, 0, 100, 1};
    uint64_t b[6] = {};
    ASSERT_EQ(cycbcr_converter_all_pointer_sizes("cycbcr_012v_scale_planar", 13, 3, args, 4, b, 6),
              1u);
    EXPECT_EQ(b[0], 88u);
    EXPECT_EQ(b[1], 44u);
    EXPECT_EQ(b[2], 44u);
    EXPECT_EQ(b[3], 2 * 128u + 64u);
    // UYVY at another scale touches nothing.
    const unsigned int other[4] = {32, 0, 300, 1};
    ASSERT_EQ(cycbcr_converter_all_pointer_sizes("cycbcr_uyvy_scale_planar", 13, 3, other, 4, b, 6),
              1u);
    EXPECT_EQ(b[0] + b[1] + b[2] + b[3], 0u);
}

}  // namespace

namespace {

// Scale 100 within the answered sizes, with the planes in one buffer where the
// planar formats put them (so UYVY frames reach the unpacking's AVX2 forms at
// level 5) and in buffers of their own; level 5 gives level 0's bytes.
TEST(Scale100, StaysWithinTheAnsweredSizesOnEveryPath) {
    const Entry entries[] = {
        {cycbcr_uyvy_scale_planar, "cycbcr_uyvy_scale_planar", false, 100},
        {cycbcr_012v_scale_planar, "cycbcr_012v_scale_planar", true, 0x20064},
    };
    uint32_t seed = 5000;
    for (const Entry& e : entries)
        for (uint32_t w : {1u, 2u, 7u, 12u, 13u, 46u, 64u, 198u})
            for (uint32_t h : {1u, 2u, 3u, 5u, 8u})
                for (uint32_t full : {0u, 1u}) {
                    const uint32_t dp = (w + 11) / 12 * 12 + 4;
                    const uint32_t sp = e.v210 ? 0 : 2 * w + 4;
                    const Source s = random_source(e.v210, w, h, sp, ++seed);
                    const unsigned int args[4] = {dp, sp, e.scale, full};
                    uint64_t b[6] = {};
                    ASSERT_EQ(cycbcr_converter_all_pointer_sizes(e.name, w, h, args, 4, b, 6), 1u);
                    // The planes as P422 (4:2:2) or I420 place them.
                    const uint64_t cbAt = uint64_t{dp} * h;
                    const uint64_t crAt = cbAt + (full ? cbAt / 2 : cbAt / 4);
                    const uint64_t total = std::max({b[0], cbAt + b[1], crAt + b[2]});
                    std::vector<uint8_t> got[2];
                    for (int level : levels()) {
                        cycbcr_set_cpu(level);
                        GuardedBuffer d(total), src(b[3]);
                        std::memset(d.data(), 0xCD, total);
                        std::memcpy(src.data(), s.bytes.data(), b[3]);
                        e.fn(d.data(), d.data() + cbAt, d.data() + crAt, src.data(), w, h, dp, sp,
                             e.scale, full);
                        EXPECT_TRUE(d.slack_intact());
                        got[level == 5].assign(d.data(), d.data() + total);
                        // Separate planes, each guarded at its own answer.
                        (void)run(e.fn, e.name, s, {w, h, dp, sp, e.scale, full});
                    }
                    if (have_avx2()) {
                        EXPECT_EQ(got[0], got[1]) << e.name << " " << w << "x" << h << " " << full;
                    }
                }
    cycbcr_set_cpu(5);
}

}  // namespace
