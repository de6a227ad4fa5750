// YCbCr to three RGB planes. The rule of each member is written out here on
// its own (coefficients, midpoints, divisors, clamps, the 8-bit engine's sample
// addressing and pixel pairs) and every member is measured against it on
// random frames, with every pointer in a guarded buffer of exactly the size the
// per-pointer query answers (Cb and Cr: the sizes the header gives), so a byte
// touched past the answer crashes the test and bytes that must stay are
// checked. Then hand-worked pixels, the selector's image-library route against
// a model of its 16-bit fixed-point rule, and the AVX2 rows against the plain
// ones at every width residue and over every Y, Cb, Cr triple.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "platform/imaging.h"
#include "support/colour_rows.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

using namespace cycbcr_test;

namespace {

using Engine = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, const uint8_t*,
                                const uint8_t*, unsigned int, unsigned int, unsigned int,
                                unsigned int, QBYCBCRMatrix, QBYCBCRRgbType, int32_t, unsigned int,
                                unsigned int);

// ------------------------------------------------------------------ the rule

enum class Rule { A8, A10, C10To16, C10To10, C12, D, Float };

struct Member {
    const char* name;
    Engine fn;
    Rule rule;
    uint32_t sampleBytes;  // 1, or 2 for 10- and 12-bit samples
    uint32_t valueBytes;   // 1, 2 or 4 (float)
    uint32_t sampleMax;
};
std::ostream& operator<<(std::ostream& os, const Member& m) {
    return os << m.name;
}

const Member kMembers[] = {
    {"cycbcr_ToRGBPlanarInt", cycbcr_ToRGBPlanarInt, Rule::A8, 1, 1, 255},
    {"cycbcr_ToRGBPlanarInt_avx2", cycbcr_ToRGBPlanarInt_avx2, Rule::A8, 1, 1, 255},
    {"cycbcr_ToRGBPlanarInt16", cycbcr_ToRGBPlanarInt16, Rule::D, 1, 2, 255},
    {"cycbcr_ToRGBPlanarInt16_avx2", cycbcr_ToRGBPlanarInt16_avx2, Rule::D, 1, 2, 255},
    {"cycbcr_ToRGBPlanarFloat", cycbcr_ToRGBPlanarFloat, Rule::Float, 1, 4, 255},
    {"cycbcr_10ToRGBPlanarInt", cycbcr_10ToRGBPlanarInt, Rule::A10, 2, 1, 1023},
    {"cycbcr_10ToRGBPlanarInt10", cycbcr_10ToRGBPlanarInt10, Rule::C10To10, 2, 2, 1023},
    {"cycbcr_10ToRGBPlanarInt16", cycbcr_10ToRGBPlanarInt16, Rule::C10To16, 2, 2, 1023},
    {"cycbcr_12ToRGBPlanar", cycbcr_12ToRGBPlanar, Rule::C12, 2, 2, 4095},
    {"cycbcr_12ToRGBPlanarInt16", cycbcr_12ToRGBPlanarInt16, Rule::C12, 2, 2, 4095},
};

bool is_avx2_form(const Member& m) {
    return std::string(m.name).ends_with("_avx2");
}

// The x 10240 set of the 10- and 12-bit members (12-bit: offset 256 for 64).
Gains family_c(QBYCBCRMatrix m, bool twelve) {
    Gains g;
    switch (m) {
        case 1:
            g = {0, 10240, 14039, 7147, 3440, 17735};
            break;
        case 2:
        case 4:
            g = {64, 11919, 18360, 5468, 2181, 21657};
            break;
        case 3:
        case 5:
            g = {0, 10240, 15769, 4700, 1873, 18595};
            break;
        case 6:
            g = {64, 11919, 17189, 6660, 1918, 21931};
            break;
        case 7:
            g = {0, 10240, 15100, 5851, 1685, 19265};
            break;
        default:
            g = {64, 11919, 16343, 8325, 4014, 20654};
            break;
    }
    if (twelve && g.off == 64) g.off = 256;
    return g;
}

double clamp_to(double v, double top) {
    return v < 0 ? 0 : v > top ? top : v;
}

// One pixel's three values by a member's rule, in doubles (integers exactly).
std::array<double, 3> rule_pixel(Rule r, QBYCBCRMatrix m, int64_t y, int64_t cb, int64_t cr) {
    auto integer = [&](const Gains& k, int64_t mid, int64_t div, double top) {
        const int64_t u = cb - mid, v = cr - mid, l = (y - k.off) * k.gain;
        // C++ division truncates toward zero.
        return std::array<double, 3>{
            clamp_to(static_cast<double>((l + k.crR * v) / div), top),
            clamp_to(static_cast<double>((l - k.crG * v - k.cbG * u) / div), top),
            clamp_to(static_cast<double>((l + k.cbB * u) / div), top)};
    };
    switch (r) {
        case Rule::A8:
            return integer(family_a(m), 128, 10000, 255);
        case Rule::A10:
            return integer(family_a(m), 512, 40000, 255);
        case Rule::C10To16:
            return integer(family_c(m, false), 512, 160, 65535);
        case Rule::C10To10:
            return integer(family_c(m, false), 512, 10240, 1023);
        case Rule::C12:
            return integer(family_c(m, true), 2048, 640, 65535);
        case Rule::D: {
            const Gains k = family_d(m);
            const bool studio = m >= 1 && m <= 7 && m % 2 == 1;
            const int64_t l = (y - (studio ? 16 : k.off)) * k.gain, u = cb - 128, v = cr - 128;
            const int64_t lift = studio ? 4096 : 0;
            return {
                clamp_to(static_cast<double>((l + 5000 + k.crR * v + 5000) / 10000 + lift), 65535),
                clamp_to(static_cast<double>((l - k.crG * v - k.cbG * u) / 10000 + lift), 65535),
                clamp_to(static_cast<double>((l + 5000 + k.cbB * u + 5000) / 10000 + lift), 65535)};
        }
        case Rule::Float: {
            const Gains k = master_micro(m);
            const double l = static_cast<double>((y - k.off) * k.gain);
            const double u = static_cast<double>(cb - 128), v = static_cast<double>(cr - 128);
            return {clamp_to((l + k.crR * v) / 1e6, 255),
                    clamp_to((l - k.crG * v - k.cbG * u) / 1e6, 255),
                    clamp_to((l + k.cbB * u) / 1e6, 255)};
        }
    }
    return {};
}

// ------------------------------------------------------------------ frames

// A call's shape. Packed sources are one UYVY-ordered buffer (Cb, Y0, Cr, Y1
// samples); planar sources three planes.
struct Shape {
    uint32_t width, height, dstPitch;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType rgbType;
    int32_t is422;
    uint32_t planar;
};
std::ostream& operator<<(std::ostream& os, const Shape& s) {
    return os << s.width << "x" << s.height << " dstPitch " << s.dstPitch << " matrix " << s.matrix
              << " rgbType " << s.rgbType << " is422 " << s.is422 << " planar " << s.planar;
}

uint64_t pairs_of(uint32_t w) {
    return (w + 1) / 2;
}

// The six buffers of a call: R, G, B planes, then Y, Cb, Cr planes (planar) or
// the packed frame in slot 3 (slots 4 and 5 empty).
using Buffers = std::array<std::vector<uint8_t>, 6>;

// Sizes: the planes and Y from the query; Cb and Cr as the header gives them.
std::array<uint64_t, 6> sizes_of(const char* name, const Member& m, const Shape& s) {
    const unsigned int args[7] = {s.dstPitch,        0,        s.matrix, s.rgbType,
                                  uint32_t(s.is422), s.planar, 0};
    std::array<uint64_t, 4> answered{};
    EXPECT_EQ(cycbcr_converter_pointer_sizes(name, s.width, s.height, args, 7, answered.data()), 1u)
        << name;
    std::array<uint64_t, 6> sizes{answered[0], answered[1], answered[2], answered[3], 0, 0};
    std::array<uint64_t, 6> all{};
    EXPECT_EQ(cycbcr_converter_all_pointer_sizes(name, s.width, s.height, args, 7, all.data(), 6),
              1u);
    EXPECT_TRUE(std::equal(answered.begin(), answered.end(), all.begin())) << name;
    if (s.width == 0 || s.height == 0) return sizes;
    const uint64_t w = s.width, h = s.height, pairs = pairs_of(s.width);
    if (s.planar == 0) {
        // Cb and Cr through their pointers: sample 4p of the last pair.
        EXPECT_EQ(all[4], (4 * pairs * h - 3) * m.sampleBytes) << name;
        sizes[3] += m.sampleBytes;  // the frame starts one sample before Y
    } else {
        const uint64_t last = s.is422 != 0 ? (h - 1) * w / 2 : ((h - 1) / 2) * w / 2;
        sizes[4] = sizes[5] = (last + pairs) * m.sampleBytes;
        EXPECT_EQ(all[4], sizes[4]) << name;
        EXPECT_EQ(all[5], sizes[5]) << name;
    }
    return sizes;
}

uint32_t sample(const std::vector<uint8_t>& b, uint64_t i, uint32_t bytes) {
    return bytes == 1 ? b.at(i) : b.at(2 * i) | uint32_t{b.at(2 * i + 1)} << 8;
}

// Random samples within the member's depth (the plane bytes random too).
Buffers random_buffers(const Member& m, const std::array<uint64_t, 6>& sizes, uint32_t seed) {
    Buffers b;
    std::mt19937 rng(seed);
    for (size_t i = 0; i < 6; ++i) {
        b[i].resize(sizes[i]);
        if (i < 3 || m.sampleBytes == 1) {
            for (auto& x : b[i]) x = static_cast<uint8_t>(rng());
        } else {
            for (size_t k = 0; k + 1 < b[i].size(); k += 2) {
                const uint32_t v = rng() % (m.sampleMax + 1);
                b[i][k] = static_cast<uint8_t>(v);
                b[i][k + 1] = static_cast<uint8_t>(v >> 8);
            }
        }
    }
    return b;
}

void put_value(std::vector<uint8_t>& plane, uint64_t at, double v, uint32_t bytes) {
    if (bytes == 4) {
        const float f = static_cast<float>(v);
        std::memcpy(&plane.at(at), &f, 4);
        return;
    }
    const auto u = static_cast<uint32_t>(v);
    for (uint32_t k = 0; k < bytes; ++k) plane.at(at + k) = static_cast<uint8_t>(u >> (8 * k));
}

// The planes after the call, from the buffers before it.
Buffers model_frame(const Member& m, const Shape& s, const Buffers& in) {
    Buffers out = in;
    const uint64_t w = s.width, pairs = pairs_of(s.width);
    const uint32_t sb = m.sampleBytes;
    for (uint64_t n = 0; n < s.height; ++n) {
        const uint64_t row = (s.rgbType & 0x8000) != 0 ? s.height - 1 - n : n;
        for (uint64_t p = 0; p < pairs; ++p) {
            uint32_t y0, y1, cb, cr;
            if (s.planar == 0) {
                const uint64_t at = (n * pairs + p) * 4;
                cb = sample(in[3], at, sb);
                y0 = sample(in[3], at + 1, sb);
                cr = sample(in[3], at + 2, sb);
                y1 = sample(in[3], at + 3, sb);
            } else {
                const uint64_t c = (s.is422 != 0 ? n * w / 2 : (n / 2) * w / 2) + p;
                y0 = sample(in[3], n * w + 2 * p, sb);
                y1 = sample(in[3], n * w + 2 * p + 1, sb);
                cb = sample(in[4], c, sb);
                cr = sample(in[5], c, sb);
            }
            const uint32_t ys[2] = {y0, y1};
            for (int i = 0; i < 2; ++i) {
                const auto v = rule_pixel(m.rule, s.matrix, ys[i], cb, cr);
                const uint64_t at = row * s.dstPitch + (2 * p + i) * m.valueBytes;
                for (int k = 0; k < 3; ++k) put_value(out[k], at, v[k], m.valueBytes);
            }
        }
    }
    return out;
}

struct Outcome {
    Buffers after;
    unsigned int result;
};

// Runs fn with each buffer guarded at exactly its size.
Outcome run_guarded6(Engine fn, const Member& m, const Shape& s, const Buffers& in) {
    std::array<std::unique_ptr<GuardedBuffer>, 6> g;
    std::array<uint8_t*, 6> p{};
    for (size_t i = 0; i < 6; ++i) {
        g[i] = std::make_unique<GuardedBuffer>(in[i].size());
        if (!in[i].empty()) std::memcpy(g[i]->data(), in[i].data(), in[i].size());
        p[i] = g[i]->data();
    }
    const uint8_t *y = p[3], *cb = p[4], *cr = p[5];
    if (s.planar == 0) {
        cb = p[3];
        y = p[3] + m.sampleBytes;
        cr = p[3] + 2 * m.sampleBytes;
    }
    Outcome o{{},
              fn(p[0], p[1], p[2], y, cb, cr, s.width, s.height, s.dstPitch, 7 * s.width, s.matrix,
                 s.rgbType, s.is422, s.planar, 3 * s.width)};
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_TRUE(g[i]->slack_intact()) << "written before buffer " << i;
        o.after[i].assign(g[i]->data(), g[i]->data() + in[i].size());
    }
    return o;
}

// Floats within a millionth of the model's (its sums group the terms in
// their own order); every other value byte for byte.
::testing::AssertionResult same_planes(const Member& m, const Buffers& got, const Buffers& want) {
    for (size_t i = 0; i < 6; ++i) {
        if (got[i].size() != want[i].size()) return ::testing::AssertionFailure() << "size " << i;
        if (m.valueBytes == 4 && i < 3) {
            for (size_t k = 0; k + 4 <= got[i].size(); k += 4) {
                float a, b;
                std::memcpy(&a, &got[i][k], 4);
                std::memcpy(&b, &want[i][k], 4);
                if (!(std::fabs(a - b) <= 1e-3f) && std::memcmp(&a, &b, 4) != 0)
                    return ::testing::AssertionFailure()
                           << "plane " << i << " byte " << k << ": " << a << " != " << b;
            }
            continue;
        }
        const ::testing::AssertionResult r = same_bytes(got[i], want[i]);
        if (!r) return ::testing::AssertionFailure() << "buffer " << i << ": " << r.message();
    }
    return ::testing::AssertionSuccess();
}

unsigned int expected_result(const Member& m, const Shape& s) {
    return s.width * s.height * 3 * m.valueBytes;
}

void check_member(const Member& m, const Shape& s, uint32_t seed) {
    const auto sizes = sizes_of(m.name, m, s);
    const Buffers in = random_buffers(m, sizes, seed);
    const Outcome o = run_guarded6(m.fn, m, s, in);
    EXPECT_EQ(o.result, expected_result(m, s)) << m << " " << s;
    EXPECT_TRUE(same_planes(m, o.after, model_frame(m, s, in))) << m << " " << s;
}

class PlanarMember : public ::testing::TestWithParam<Member> {};

// Every member at both levels over source layouts, matrices (8 and up take
// the default row), orders and the bottom-up flag, odd widths and heights,
// padded and tight pitches.
TEST_P(PlanarMember, MatchesTheRuleOnRandomFrames) {
    const Member& m = GetParam();
    if (is_avx2_form(m)) CYCBCR_REQUIRE_AVX2();
    struct Layout {
        int32_t is422;
        uint32_t planar;
    };
    const Layout layouts[] = {{1, 1}, {0, 1}, {1, 0}};
    const uint32_t sizes[][2] = {{1, 1}, {2, 3}, {7, 5}, {33, 4}, {64, 2}, {95, 3}};
    uint32_t seed = 1;
    for (uint32_t level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (const Layout& l : layouts)
            for (const auto& wh : sizes)
                for (QBYCBCRMatrix matrix : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 9u})
                    for (QBYCBCRRgbType type : {0u, 0x8000u, 3u}) {
                        const uint32_t rowBytes =
                            static_cast<uint32_t>(pairs_of(wh[0]) * 2 * m.valueBytes);
                        const uint32_t pitch = rowBytes + (matrix % 3) * 5;
                        check_member(m, {wh[0], wh[1], pitch, matrix, type, l.is422, l.planar},
                                     seed++);
                    }
    }
}

// Height 0 writes nothing and still counts; width 0 writes nothing.
TEST_P(PlanarMember, EmptyFrames) {
    const Member& m = GetParam();
    if (is_avx2_form(m)) CYCBCR_REQUIRE_AVX2();
    cycbcr_set_cpu(5);
    check_member(m, {6, 0, 64, 0, 0, 1, 1}, 3);
    check_member(m, {0, 4, 64, 0, 0, 1, 1}, 4);
}

INSTANTIATE_TEST_SUITE_P(Members, PlanarMember, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// ------------------------------------------------------------------ worked pixels

// One planar 4:2:2 pair through a member at level 0; the values of its first
// pixel (and of the second, with its own luma).
struct Pixel2 {
    std::array<double, 3> first, second;
};
Pixel2 pair_through(Engine fn, uint32_t sampleBytes, uint32_t valueBytes, QBYCBCRMatrix matrix,
                    uint32_t y0, uint32_t y1, uint32_t cb, uint32_t cr) {
    cycbcr_set_cpu(0);
    std::vector<uint8_t> y(2 * sampleBytes), u(sampleBytes), v(sampleBytes);
    auto put = [&](std::vector<uint8_t>& b, size_t i, uint32_t s) {
        for (uint32_t k = 0; k < sampleBytes; ++k) b[i * sampleBytes + k] = uint8_t(s >> (8 * k));
    };
    put(y, 0, y0);
    put(y, 1, y1);
    put(u, 0, cb);
    put(v, 0, cr);
    std::array<std::vector<uint8_t>, 3> planes;
    for (auto& p : planes) p.assign(2 * valueBytes, 0xEE);
    EXPECT_EQ(fn(planes[0].data(), planes[1].data(), planes[2].data(), y.data(), u.data(), v.data(),
                 2, 1, 2 * valueBytes, 2 * sampleBytes, matrix, 0, 1, 1, sampleBytes),
              6 * valueBytes);
    Pixel2 out;
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < 2; ++i) {
            double d;
            if (valueBytes == 4) {
                float f;
                std::memcpy(&f, &planes[k][4 * i], 4);
                d = f;
            } else {
                uint32_t x = 0;
                for (uint32_t b = 0; b < valueBytes; ++b)
                    x |= planes[k][i * valueBytes + b] << (8 * b);
                d = x;
            }
            (i == 0 ? out.first : out.second)[k] = d;
        }
    return out;
}

using V3 = std::array<double, 3>;

TEST(PlanarWorked, EightBit) {
    // Matrix 0, neutral chroma: Y 16 gives black, Y 235 gives 219 * 11640 /
    // 10000 = 254.916, truncated to 254.
    Pixel2 p = pair_through(cycbcr_ToRGBPlanarInt, 1, 1, 0, 16, 235, 128, 128);
    EXPECT_EQ(p.first, (V3{0, 0, 0}));
    EXPECT_EQ(p.second, (V3{254, 254, 254}));
    // Y 100, Cb 50, Cr 200: L = 84 * 11640 = 977760; R = (977760 + 15960 * 72)
    // / 10000 = 212; G = (977760 - 8129 * 72 + 3920 * 78) / 10000 = 69; B =
    // (977760 - 20170 * 78) / 10000 = -59, clamped to 0.
    p = pair_through(cycbcr_ToRGBPlanarInt, 1, 1, 0, 100, 100, 50, 200);
    EXPECT_EQ(p.first, (V3{212, 69, 0}));
    // 16-bit planes, matrix 1, Y 16, neutral: studio black is 4096, with R and B
    // one above from their rounding bias.
    p = pair_through(cycbcr_ToRGBPlanarInt16, 1, 2, 1, 16, 16, 128, 128);
    EXPECT_EQ(p.first, (V3{4097, 4096, 4097}));
    // Float planes keep the fraction: 219 * 1.164.
    p = pair_through(cycbcr_ToRGBPlanarFloat, 1, 4, 0, 235, 16, 128, 128);
    for (double v : p.first) EXPECT_NEAR(v, 254.916, 1e-4);
    EXPECT_EQ(p.second, (V3{0, 0, 0}));
}

TEST(PlanarWorked, TenBit) {
    // 8-bit planes from 10-bit samples: the 8-bit offset 16 on raw 10-bit luma,
    // / 40000. Black 64: 48 * 11640 / 40000 = 13; white 940: 268, clamped.
    Pixel2 p = pair_through(cycbcr_10ToRGBPlanarInt, 2, 1, 0, 64, 940, 512, 512);
    EXPECT_EQ(p.first, (V3{13, 13, 13}));
    EXPECT_EQ(p.second, (V3{255, 255, 255}));
    // 16-bit planes, matrix 2: white (940 - 64) * 11919 / 160 = 65256.
    p = pair_through(cycbcr_10ToRGBPlanarInt16, 2, 2, 2, 940, 64, 512, 512);
    EXPECT_EQ(p.first, (V3{65256, 65256, 65256}));
    EXPECT_EQ(p.second, (V3{0, 0, 0}));
    // 10-bit values, matrix 1: Y passes through; Cb 1023 drives B over 1023.
    p = pair_through(cycbcr_10ToRGBPlanarInt10, 2, 2, 1, 940, 500, 512, 512);
    EXPECT_EQ(p.first, (V3{940, 940, 940}));
    EXPECT_EQ(p.second, (V3{500, 500, 500}));
    p = pair_through(cycbcr_10ToRGBPlanarInt10, 2, 2, 1, 940, 940, 1023, 512);
    EXPECT_EQ(p.first[2], 1023);
}

TEST(PlanarWorked, TwelveBit) {
    // Matrix 0: offset 256; white 3760 gives 3504 * 11919 / 640 = 65256.
    for (Engine fn : {cycbcr_12ToRGBPlanar, cycbcr_12ToRGBPlanarInt16}) {
        Pixel2 p = pair_through(fn, 2, 2, 0, 3760, 256, 2048, 2048);
        EXPECT_EQ(p.first, (V3{65256, 65256, 65256}));
        EXPECT_EQ(p.second, (V3{0, 0, 0}));
        // Matrix 1, Y 2048, Cb 1024, Cr 3072: L = 2048 * 10240 = 20971520;
        // R = (L + 14039 * 1024) / 640 = 55230; G = (L - 7147 * 1024 + 3440 *
        // 1024) / 640 = 26836; B = (L - 17735 * 1024) / 640 = 4392.
        p = pair_through(fn, 2, 2, 1, 2048, 2048, 1024, 3072);
        EXPECT_EQ(p.first, (V3{55230, 26836, 4392}));
    }
}

// ------------------------------------------------------------------ the selector

// The image-library route's rule: studio BT.709, coefficients round(c * 65536),
// (sum + 32768) >> 16, clamped; Y passes through.
std::array<uint8_t, 3> hdtv_rgb(int32_t y, int32_t cb, int32_t cr) {
    auto q16 = [](double c) { return static_cast<int64_t>(std::llround(c * 65536)); };
    const int64_t u = cb - 128, v = cr - 128, l = int64_t{y} << 16;
    auto fix = [](int64_t s) {
        const int64_t r = (s + 32768) >> 16;
        return static_cast<uint8_t>(r < 0 ? 0 : r > 255 ? 255 : r);
    };
    return {fix(l + q16(1.540) * v), fix(l - q16(0.459) * v - q16(0.183) * u),
            fix(l + q16(1.816) * u)};
}

unsigned int call_selector(std::array<uint8_t*, 3> planes, const uint8_t* uyvy, uint32_t w,
                           uint32_t h, uint32_t dstPitch, uint32_t srcPitch, QBYCBCRMatrix m,
                           QBYCBCRRgbType t) {
    return cycbcr_ToRGBPlanar(planes[0], planes[1], planes[2], uyvy + 1, uyvy, uyvy + 2, w, h,
                              dstPitch, srcPitch, m, t, 1, 0, srcPitch / 2);
}

TEST(PlanarSelector, WorkedPixels) {
    // Cb 60, Y 100, Cr 200, Y 235 under matrix 5: R = 100 + 1.54 * 72 = 210.88
    // -> 211; G = 100 - 0.459 * 72 + 0.183 * 68 = 79.4 -> 79; B = 100 - 1.816 *
    // 68 < 0 -> 0. Second pixel: 255, 214, 112.
    const uint8_t uyvy[4] = {60, 100, 200, 235};
    for (QBYCBCRMatrix m : {1u, 5u}) {
        uint8_t r[2], g[2], b[2];
        EXPECT_EQ(call_selector({r, g, b}, uyvy, 2, 1, 2, 4, m, 0), 2u);
        EXPECT_EQ(r[0], 211);
        EXPECT_EQ(g[0], 79);
        EXPECT_EQ(b[0], 0);
        EXPECT_EQ(r[1], 255);
        EXPECT_EQ(g[1], 214);
        EXPECT_EQ(b[1], 112);
    }
}

// Matrices 1 and 5 on random UYVY frames at both levels: every plane row from
// the model, the last odd column 0, padding untouched, rgbType ignored; the
// result height * dstPitch. Buffers at the query's answers.
TEST(PlanarSelector, ImagingRouteMatchesItsRule) {
    uint32_t seed = 50;
    for (uint32_t level : {0u, 5u})
        for (QBYCBCRMatrix m : {1u, 5u})
            for (QBYCBCRRgbType t : {0u, 0x8000u, 2u})
                for (const auto& wh : {std::array<uint32_t, 2>{8, 3}, {7, 4}, {1, 2}, {66, 5}}) {
                    cycbcr_set_cpu(level);
                    const uint32_t w = wh[0], h = wh[1];
                    const uint32_t dstPitch = w + 3, srcPitch = (w / 2) * 4 + 8;
                    const unsigned int args[7] = {dstPitch, srcPitch, m, t, 1, 0, srcPitch / 2};
                    std::array<uint64_t, 4> sz{};
                    ASSERT_EQ(cycbcr_converter_pointer_sizes("cycbcr_ToRGBPlanar", w, h, args, 7,
                                                             sz.data()),
                              1u);
                    std::array<std::unique_ptr<GuardedBuffer>, 4> g;
                    std::array<std::vector<uint8_t>, 4> init;
                    for (size_t i = 0; i < 4; ++i) {
                        init[i] = random_bytes(sz[i], seed++);
                        g[i] = std::make_unique<GuardedBuffer>(sz[i]);
                        if (sz[i]) std::memcpy(g[i]->data(), init[i].data(), sz[i]);
                    }
                    // The frame is read from the Cb pointer: the buffer starts there.
                    const uint8_t* frame = g[3]->data();
                    const unsigned int result = cycbcr_ToRGBPlanar(
                        g[0]->data(), g[1]->data(), g[2]->data(), frame + 1, frame, frame + 2, w, h,
                        dstPitch, srcPitch, m, t, 1, 0, srcPitch / 2);
                    EXPECT_EQ(result, h * dstPitch);
                    for (uint32_t r = 0; r < h; ++r)
                        for (uint32_t x = 0; x < dstPitch && r * dstPitch + x < sz[0]; ++x) {
                            std::array<uint8_t, 3> want;
                            if (x >= w)
                                for (int k = 0; k < 3; ++k) want[k] = init[k][r * dstPitch + x];
                            else if (x / 2 * 2 + 1 >= w)
                                want = {0, 0, 0};
                            else {
                                const uint8_t* q = &init[3][r * srcPitch + x / 2 * 4];
                                want = hdtv_rgb(q[1 + 2 * (x % 2)], q[0], q[2]);
                            }
                            for (int k = 0; k < 3; ++k)
                                ASSERT_EQ(g[k]->data()[r * dstPitch + x], want[k])
                                    << "plane " << k << " row " << r << " x " << x << " " << w
                                    << "x" << h << " matrix " << m << " level " << level;
                        }
                    for (size_t i = 0; i < 4; ++i) EXPECT_TRUE(g[i]->slack_intact());
                }
}

// The scratch frame's size check: width * height * 3 - 1 above 0x7FFFFFFE (or a
// size of 0) returns 0 and touches nothing.
TEST(PlanarSelector, RefusedScratchReturnsZero) {
    uint8_t planes[3][4] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
    const uint8_t frame[8] = {};
    for (const auto& wh : {std::array<uint32_t, 2>{40000, 20000}, {0, 5}, {4, 0}, {65536, 65536}}) {
        EXPECT_EQ(call_selector({planes[0], planes[1], planes[2]}, frame, wh[0], wh[1], 4, 8, 5, 0),
                  0u);
        const unsigned int args[7] = {4, 8, 5, 0, 1, 0, 4};
        std::array<uint64_t, 4> sz{1, 1, 1, 1};
        EXPECT_EQ(
            cycbcr_converter_pointer_sizes("cycbcr_ToRGBPlanar", wh[0], wh[1], args, 7, sz.data()),
            1u);
        EXPECT_EQ(sz, (std::array<uint64_t, 4>{0, 0, 0, 0}));
    }
    EXPECT_EQ(planes[0][0], 1);
    EXPECT_EQ(planes[2][3], 12);
}

// Every other call goes on to the engine: packed with other matrices, planar
// with matrices 1 and 5.
TEST(PlanarSelector, OtherCallsTakeTheEngine) {
    const Member& a8 = kMembers[0];
    for (uint32_t level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (QBYCBCRMatrix m : {0u, 2u, 3u, 7u})
            check_member({"cycbcr_ToRGBPlanar", cycbcr_ToRGBPlanar, Rule::A8, 1, 1, 255},
                         {9, 3, 12, m, 0, 1, 0}, 70 + m);
        for (QBYCBCRMatrix m : {1u, 5u}) {
            check_member({"cycbcr_ToRGBPlanar", cycbcr_ToRGBPlanar, Rule::A8, 1, 1, 255},
                         {9, 3, 12, m, 0x8000, 1, 1}, 80 + m);
            check_member({"cycbcr_ToRGBPlanar", cycbcr_ToRGBPlanar, Rule::A8, 1, 1, 255},
                         {9, 3, 12, m, 0, 0, 1}, 90 + m);
        }
    }
    (void)a8;
}

// The two imaging-library helpers of the route on their own: the split of
// 3-byte pixels into planes with its argument checks, and the scratch block.
TEST(PlanarSelector, ImagingCopyAndScratch) {
    using namespace cycbcr::ipp;
    const Ipp8u src[2][9] = {{1, 2, 3, 4, 5, 6, 70, 80, 90}, {7, 8, 9, 10, 11, 12, 71, 81, 91}};
    Ipp8u planes[3][6];
    std::memset(planes, 0xEE, sizeof planes);
    Ipp8u* dst[3] = {planes[0], planes[1], planes[2]};
    // Two pixels of two rows, rows 9 bytes apart in the source and 3 in the planes.
    EXPECT_EQ(ippiCopy_8u_C3P3R(&src[0][0], 9, dst, 3, {2, 2}), ippStsNoErr);
    const Ipp8u want[3][6] = {
        {1, 4, 0xEE, 7, 10, 0xEE}, {2, 5, 0xEE, 8, 11, 0xEE}, {3, 6, 0xEE, 9, 12, 0xEE}};
    EXPECT_EQ(std::memcmp(planes, want, sizeof planes), 0);
    Ipp8u* none[3] = {planes[0], nullptr, planes[2]};
    EXPECT_EQ(ippiCopy_8u_C3P3R(&src[0][0], 9, none, 3, {2, 2}), ippStsNullPtrErr);
    EXPECT_EQ(ippiCopy_8u_C3P3R(&src[0][0], 9, dst, 3, {0, 2}), ippStsSizeErr);
    EXPECT_EQ(ippiCopy_8u_C3P3R(&src[0][0], 9, dst, 0, {2, 2}), ippStsStepErr);
    EXPECT_EQ(std::memcmp(planes, want, sizeof planes), 0);

    EXPECT_EQ(ippMalloc(0), nullptr);
    EXPECT_EQ(ippMalloc(-5), nullptr);
    auto* block = static_cast<uint8_t*>(ippMalloc(1000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 64, 0u);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(block[i], 0) << i;
    ippFree(block);
    ippFree(nullptr);
}

// ------------------------------------------------------------------ AVX2 rows

// Level 5 (and the AVX2 forms) against level 0 at every width residue of the
// vector steps (and past two steps), padded pitches, all three layouts; the
// 10- and 12-bit members also with whole random 16-bit words, whose sums reach
// past 32 bits.
TEST(PlanarAvx2, SameBytesAsPlainAtEveryWidth) {
    CYCBCR_REQUIRE_AVX2();
    struct Pair {
        const Member& plain;
        Engine level5;
    };
    const Pair pairs[] = {
        {kMembers[0], cycbcr_ToRGBPlanarInt_avx2},   {kMembers[0], cycbcr_ToRGBPlanarInt},
        {kMembers[2], cycbcr_ToRGBPlanarInt16_avx2}, {kMembers[4], cycbcr_ToRGBPlanarFloat},
        {kMembers[5], cycbcr_10ToRGBPlanarInt},      {kMembers[6], cycbcr_10ToRGBPlanarInt10},
        {kMembers[7], cycbcr_10ToRGBPlanarInt16},    {kMembers[8], cycbcr_12ToRGBPlanar},
    };
    uint32_t seed = 200;
    for (const Pair& pr : pairs)
        for (bool wholeWords : {false, true}) {
            if (wholeWords && pr.plain.sampleBytes == 1) continue;
            Member m = pr.plain;
            if (wholeWords) m.sampleMax = 65535;
            for (uint32_t w = 1; w <= 100; ++w)
                for (int layout = 0; layout < 3; ++layout) {
                    const int32_t is422 = layout != 1;
                    const uint32_t planar = layout != 2;
                    const Shape s{w,
                                  3,
                                  static_cast<uint32_t>(pairs_of(w) * 2 * m.valueBytes + 7),
                                  w % 8,
                                  w % 3 == 0 ? 0x8000u : 0u,
                                  is422,
                                  planar};
                    const auto sizes = sizes_of(m.name, m, s);
                    const Buffers in = random_buffers(m, sizes, seed++);
                    cycbcr_set_cpu(0);
                    const Outcome plain = run_guarded6(m.fn, m, s, in);
                    cycbcr_set_cpu(5);
                    const Outcome vec = run_guarded6(pr.level5, m, s, in);
                    EXPECT_EQ(vec.result, plain.result);
                    for (size_t i = 0; i < 3; ++i)
                        ASSERT_TRUE(same_bytes(vec.after[i], plain.after[i]))
                            << m << " plane " << i << " " << s << " whole words " << wholeWords;
                }
        }
}

// Every Y, Cb, Cr triple through the AVX2 rows against the rule: one row per
// chroma pair, Y running 0..255 twice per row; matrices 0, 1 and 6. A frame
// over the streaming threshold with 32-byte aligned planes goes through
// streaming stores.
TEST(PlanarAvx2, EveryTripleMatchesTheRule) {
    CYCBCR_REQUIRE_AVX2();
    const uint32_t w = 512, rows = 65536 / 8;  // eight bands of chroma rows
    const uint32_t pitch8 = w, pitch16 = 2 * w;
    auto alloc = [](size_t n) {
        return std::unique_ptr<uint8_t, decltype(&std::free)>(
            static_cast<uint8_t*>(std::aligned_alloc(32, (n + 31) / 32 * 32)), &std::free);
    };
    std::vector<uint8_t> y(size_t{w} * rows), cb(size_t{w / 2} * rows), cr(size_t{w / 2} * rows);
    for (QBYCBCRMatrix m : {0u, 1u, 6u})
        for (uint32_t band = 0; band < 8; ++band) {
            for (uint32_t r = 0; r < rows; ++r) {
                const uint32_t chroma = band * rows + r;
                for (uint32_t x = 0; x < w; ++x) y[size_t{r} * w + x] = static_cast<uint8_t>(x);
                for (uint32_t p = 0; p < w / 2; ++p) {
                    cb[size_t{r} * w / 2 + p] = static_cast<uint8_t>(chroma >> 8);
                    cr[size_t{r} * w / 2 + p] = static_cast<uint8_t>(chroma);
                }
            }
            auto p8 = {alloc(size_t{pitch8} * rows), alloc(size_t{pitch8} * rows),
                       alloc(size_t{pitch8} * rows)};
            std::vector<uint8_t*> d8;
            for (auto& p : p8) d8.push_back(p.get());
            ASSERT_EQ(cycbcr_ToRGBPlanarInt_avx2(d8[0], d8[1], d8[2], y.data(), cb.data(),
                                                 cr.data(), w, rows, pitch8, w, m, 0, 1, 1, w / 2),
                      w * rows * 3);
            auto p16 = {alloc(size_t{pitch16} * rows), alloc(size_t{pitch16} * rows),
                        alloc(size_t{pitch16} * rows)};
            std::vector<uint8_t*> d16;
            for (auto& p : p16) d16.push_back(p.get());
            ASSERT_EQ(
                cycbcr_ToRGBPlanarInt16_avx2(d16[0], d16[1], d16[2], y.data(), cb.data(), cr.data(),
                                             w, rows, pitch16, w, m, 0, 1, 1, w / 2),
                w * rows * 6);
            for (uint32_t r = 0; r < rows; ++r) {
                const uint32_t chroma = band * rows + r;
                for (uint32_t x = 0; x < 256; ++x) {
                    const auto a = rule_pixel(Rule::A8, m, x, chroma >> 8, chroma & 255);
                    const auto d = rule_pixel(Rule::D, m, x, chroma >> 8, chroma & 255);
                    for (int k = 0; k < 3; ++k) {
                        const size_t at8 = size_t{r} * pitch8 + x,
                                     at16 = size_t{r} * pitch16 + 2 * x;
                        const uint32_t v16 = d16[k][at16] | uint32_t{d16[k][at16 + 1]} << 8;
                        if (d8[k][at8] != a[k] || v16 != d[k])
                            FAIL()
                                << "matrix " << m << " Y " << x << " Cb " << (chroma >> 8) << " Cr "
                                << (chroma & 255) << " channel " << k << ": " << int{d8[k][at8]}
                                << "/" << v16 << ", expected " << a[k] << "/" << d[k];
                    }
                }
            }
        }
}

}  // namespace
