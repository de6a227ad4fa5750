// The semi-planar converters: NV12 and NV10 into v210, NV12 into UYVY, and
// 10-, 12- and 16-bit three-plane 4:2:0 into NV12p16. Each is measured against a
// per-sample model of its rules, between guard pages at the model's reach, on
// both paths and through its AVX2 form directly, at every width residue of the
// vector steps; the worked numbers are checked by hand; the buffer-size answers
// are held to the models' reach; FFmpeg's v210 decoder reads the v210 output.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/byte_model.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"
#include "support/v210_model.h"

#ifdef CYCBCR_TEST_WITH_FFMPEG
#include "support/ffmpeg_v210.h"
#endif

using namespace cycbcr_test;

namespace {

uint32_t le16(const std::vector<uint8_t>& v, size_t at) {
    return v.at(at) | uint32_t{v.at(at + 1)} << 8;
}

// ---------------------------------------------------------------- models

// NV12 (bytes 1) or NV10 (bytes 2) into v210: luma row r and chroma row r / 2
// from planes P = max(bytes * width, srcPitch) apart, P * height after the
// start; ceil(width / 6) groups a row, samples << 2 or & 0x3FF.
ByteModel nv_to_v210_model(unsigned bytes, const Geometry& g, const std::vector<uint8_t>& src,
                           std::vector<uint8_t> init) {
    ByteModel m(std::move(init), src);
    const size_t p = std::max(bytes * g.width, g.srcPitch);
    const size_t dp = std::max(row_bytes(g.width), g.dstPitch);
    auto sample = [&](size_t at) -> uint32_t {
        if (bytes == 1) return uint32_t{m.s(at)} << 2;
        return (m.s(at) | uint32_t{m.s(at + 1)} << 8) & 0x3FF;
    };
    for (uint32_t r = 0; r < g.height; ++r) {
        const size_t luma = r * p, chroma = p * g.height + (r / 2) * p;
        for (uint32_t k = 0; k < ceil_div(g.width, 6); ++k) {
            uint32_t s[12];
            for (unsigned i = 0; i < 6; ++i) s[kY[i]] = sample(luma + bytes * (6 * k + i));
            for (unsigned j = 0; j < 3; ++j) {
                s[kCb[j]] = sample(chroma + bytes * (6 * k + 2 * j));
                s[kCr[j]] = sample(chroma + bytes * (6 * k + 2 * j + 1));
            }
            uint8_t group[16];
            put_group(group, s);
            for (unsigned b = 0; b < 16; ++b) m.d(r * dp + 16 * k + b) = group[b];
        }
    }
    m.result = g.height * row_bytes(g.width);
    return m;
}

// NV12 into UYVY: width / 2 pairs Cb Y0 Cr Y1 a row at max(2 * width, dstPitch).
ByteModel nv12_to_uyvy_model(const Geometry& g, const std::vector<uint8_t>& src,
                             std::vector<uint8_t> init) {
    ByteModel m(std::move(init), src);
    const size_t p = std::max(g.width, g.srcPitch), dp = std::max(2 * g.width, g.dstPitch);
    for (uint32_t r = 0; r < g.height; ++r) {
        const size_t luma = r * p, chroma = p * g.height + (r / 2) * p;
        for (uint32_t k = 0; k < g.width / 2; ++k) {
            const size_t out = r * dp + 4 * k;
            m.d(out) = m.s(chroma + 2 * k);
            m.d(out + 1) = m.s(luma + 2 * k);
            m.d(out + 2) = m.s(chroma + 2 * k + 1);
            m.d(out + 3) = m.s(luma + 2 * k + 1);
        }
    }
    m.result = static_cast<unsigned>(dp * g.height);
    return m;
}

// ---------------------------------------------------------------- paths

struct Path {
    const char* name;
    Converter fn;
    unsigned level;
    bool avx2;  // needs an AVX2 processor
};

std::vector<Path> paths(Converter plainName, Converter avx2Form) {
    std::vector<Path> out = {{"level 0", plainName, 0, false}, {"level 5", plainName, 5, true}};
    out.push_back({"AVX2 form", avx2Form, 5, true});
    return out;
}

// Widths 0..130 cover every residue of the vector steps (32 pixel pairs, 8 and 2
// v210 groups, 32 samples) and the rows too short for any vector; then frame
// widths.
std::vector<uint32_t> widths() {
    std::vector<uint32_t> w;
    for (uint32_t i = 0; i <= 130; ++i) w.push_back(i);
    for (uint32_t i : {191u, 719u, 1280u, 1281u, 1920u}) w.push_back(i);
    return w;
}

struct Converter2 {
    const char* name;
    unsigned bytes;  // source sample bytes
    bool uyvy;
    Converter plainName, avx2Form;
};
const Converter2 kConverters[] = {
    {"NV12_to_v210", 1, false, cycbcr_NV12_to_v210_pitched, cycbcr_NV12_to_v210_avx2},
    {"NV10_to_v210", 2, false, cycbcr_NV10_to_v210_pitched, cycbcr_NV10_to_v210_avx2},
    {"NV12_to_uyvy", 1, true, cycbcr_NV12_to_uyvy_pitched, cycbcr_NV12_to_uyvy_avx2},
};

ByteModel model_of(const Converter2& c, const Geometry& g, const std::vector<uint8_t>& src,
                   std::vector<uint8_t> init) {
    return c.uyvy ? nv12_to_uyvy_model(g, src, std::move(init))
                  : nv_to_v210_model(c.bytes, g, src, std::move(init));
}

// Each converter on each path, at natural, padded and too-small pitches and
// heights 0 to 5, against the model between guard pages at the model's reach.
// The model's reach is also what the buffer-size query answers by name.
TEST(SemiPlanar, MatchesModelWithinExactBoundsOnEveryPath) {
    uint32_t seed = 1;
    for (const Converter2& c : kConverters)
        for (const Path& path : paths(c.plainName, c.avx2Form)) {
            if (path.avx2 && !have_avx2()) continue;
            cycbcr_set_cpu(path.level);
            for (uint32_t w : widths())
                for (uint32_t h : {0u, 1u, 2u, 3u, 5u}) {
                    if (w > 200 && h > 2) continue;
                    const uint32_t natural = c.bytes * w;
                    const uint32_t out = c.uyvy ? 2 * w : row_bytes(w);
                    // Natural pitches; padded by odd amounts; too small (the
                    // width's own pitch is used).
                    const uint32_t pitches[][2] = {
                        {0, 0}, {out + 37, natural + 13}, {out / 2, natural / 2}};
                    for (const auto& pp : pitches) {
                        const Geometry g{w, h, pp[0], pp[1]};
                        const size_t srcMax = size_t{natural + 13} * (h + (h + 1) / 2) + 64;
                        const size_t dstMax = size_t{out + 37} * h + 64;
                        const auto src = random_bytes(srcMax, seed++);
                        const auto init = random_bytes(dstMax, seed++);
                        const ByteModel m = model_of(c, g, src, init);
                        ASSERT_TRUE(matches(m, path.fn, g))
                            << c.name << ", " << path.name << ", " << g;
                        uint64_t d = 0, s = 0;
                        for (const char* suffix : {"_pitched", "_avx2"}) {
                            const std::string name = std::string("cycbcr_") + c.name + suffix;
                            ASSERT_EQ(cycbcr_converter_buffer_sizes(name.c_str(), w, h, g.dstPitch,
                                                                    g.srcPitch, 0, 0, &d, &s),
                                      1u)
                                << name;
                            ASSERT_EQ(d, m.dstEnd) << name << " " << g;
                            ASSERT_EQ(s, m.srcEnd) << name << " " << g;
                        }
                    }
                }
        }
    cycbcr_set_cpu(5);
}

// Plain and AVX2 give the same bytes on larger random frames with padded
// pitches, at every residue of 64 pixels around frame widths.
TEST(SemiPlanar, PlainAndAvx2AgreeOnWideFrames) {
    CYCBCR_REQUIRE_AVX2();
    for (const Converter2& c : kConverters)
        for (uint32_t w = 1856; w < 1856 + 64; ++w) {
            const uint32_t h = 4;
            const Geometry g{w, h, (c.uyvy ? 2 * w : row_bytes(w)) + 96, c.bytes * w + 32};
            const auto src = random_bytes(size_t{g.srcPitch} * (h + h / 2), w);
            const std::vector<uint8_t> init(size_t{g.dstPitch} * h, 0xA5);
            cycbcr_set_cpu(0);
            const Outcome a = run_guarded(c.plainName, g, src, src.size(), init, init.size());
            cycbcr_set_cpu(5);
            const Outcome b = run_guarded(c.plainName, g, src, src.size(), init, init.size());
            const Outcome f = run_guarded(c.avx2Form, g, src, src.size(), init, init.size());
            ASSERT_EQ(a.result, b.result) << c.name << " " << g;
            ASSERT_EQ(a.result, f.result) << c.name << " " << g;
            ASSERT_TRUE(same_bytes(b.dst, a.dst)) << c.name << " " << g;
            ASSERT_TRUE(same_bytes(f.dst, a.dst)) << c.name << " " << g;
        }
    cycbcr_set_cpu(5);
}

// ---------------------------------------------------------------- worked numbers

// A pitch argument below the width reads rows a width apart: the second row's
// first Y is byte 12 of a 12-pixel frame, and the chroma plane starts at 24.
TEST(SemiPlanar, Nv12PitchBelowWidthUsesWidth) {
    std::vector<uint8_t> src(36);
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i + 1);
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        std::vector<uint8_t> v210(256, 0), uyvy(48, 0);
        EXPECT_EQ(cycbcr_NV12_to_v210_pitched(v210.data(), src.data(), 12, 2, 0, 5), 256u);
        // Row 1 (at 128), word 0: Cb0 = byte 24 (25), Y0 = byte 12 (13), Cr0 = byte 25 (26).
        EXPECT_EQ(le16(v210, 128) | le16(v210, 130) << 16,
                  uint32_t{25 << 2 | (13 << 2) << 10 | (26 << 2) << 20});
        EXPECT_EQ(cycbcr_NV12_to_uyvy_pitched(uyvy.data(), src.data(), 12, 2, 3, 7), 48u);
        // Row 1 at 24: Cb 25, Y 13, Cr 26, Y 14.
        EXPECT_EQ(uyvy[24], 25);
        EXPECT_EQ(uyvy[25], 13);
        EXPECT_EQ(uyvy[26], 26);
        EXPECT_EQ(uyvy[27], 14);
    }
}

// NV10 words with bits 10-15 set keep only bits 0-9: 0xFFFF becomes 1023, and
// 0xFC00 becomes 0.
TEST(SemiPlanar, Nv10IgnoresHighBits) {
    for (uint16_t word : {uint16_t{0xFFFF}, uint16_t{0xFC00}, uint16_t{0x8201}})
        for (unsigned level : {0u, 5u}) {
            cycbcr_set_cpu(level);
            // 48 pixels, 2 rows: one whole vector step of each path.
            std::vector<uint8_t> src(size_t{96} * 3);
            for (size_t i = 0; i < src.size(); i += 2) std::memcpy(&src[i], &word, 2);
            std::vector<uint8_t> v210(256);
            EXPECT_EQ(cycbcr_NV10_to_v210_pitched(v210.data(), src.data(), 48, 2, 0, 0), 256u);
            const uint32_t v = word & 0x3FFu, want = v | v << 10 | v << 20;
            for (size_t at = 0; at < v210.size(); at += 4)
                ASSERT_EQ(le16(v210, at) | le16(v210, at + 2) << 16, want)
                    << std::hex << word << " at " << std::dec << at << " level " << level;
        }
}

// A width of 0 writes nothing and returns 0; the v210 count is the natural row
// size times the height whatever the pitch (1280 pixels: 3456 bytes a row).
TEST(SemiPlanar, V210CountsAndZeroWidth) {
    std::vector<uint8_t> src(size_t{1280} * 3 * 2), dst(size_t{4000} * 2, 0x5A);
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        std::fill(dst.begin(), dst.end(), 0x5A);
        EXPECT_EQ(cycbcr_NV12_to_v210_pitched(dst.data(), src.data(), 0, 2, 100, 100), 0u);
        EXPECT_EQ(cycbcr_NV10_to_v210_pitched(dst.data(), src.data(), 0, 2, 100, 100), 0u);
        EXPECT_TRUE(std::all_of(dst.begin(), dst.end(), [](uint8_t b) { return b == 0x5A; }));
        EXPECT_EQ(cycbcr_NV12_to_v210_pitched(dst.data(), src.data(), 1280, 2, 4000, 0), 6912u);
        EXPECT_EQ(cycbcr_NV10_to_v210_pitched(dst.data(), src.data(), 1280, 1, 4000, 0), 3456u);
        // UYVY: the pitch used, 2 * width or dstPitch, times the height.
        EXPECT_EQ(cycbcr_NV12_to_uyvy_pitched(dst.data(), src.data(), 7, 3, 0, 0), 42u);
        EXPECT_EQ(cycbcr_NV12_to_uyvy_pitched(dst.data(), src.data(), 7, 3, 20, 0), 60u);
    }
}

// The level is chosen on entry when none is chosen yet.
TEST(SemiPlanar, EntriesChooseALevel) {
    std::vector<uint8_t> src(64), dst(256);
    gdwProcType = kLevelMarker;
    cycbcr_NV12_to_uyvy_pitched(dst.data(), src.data(), 4, 2, 0, 0);
    EXPECT_NE(gdwProcType, kLevelMarker);
    gdwProcType = kLevelMarker;
    cycbcr_yuv420p10_to_NV12p16(dst.data(), src.data(), src.data(), src.data(), 2, 2, 0, 4);
    EXPECT_NE(gdwProcType, kLevelMarker);
    cycbcr_set_cpu(5);
}

// ---------------------------------------------------------------- NV12p16

using Producer = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                  unsigned int, unsigned int, unsigned int, unsigned int);
struct ProducerCase {
    const char* name;
    unsigned shift;
    Producer plainName, avx2Form;
    const char* exported[2];  // both names, for the buffer-size query
};
const ProducerCase kProducers[] = {
    {"yuv420p10",
     6,
     cycbcr_yuv420p10_to_NV12p16,
     cycbcr_420p10_to_NV12p16_avx2,
     {"cycbcr_yuv420p10_to_NV12p16", "cycbcr_420p10_to_NV12p16_avx2"}},
    {"yuv420p12",
     4,
     cycbcr_yuv420p12_to_NV12p16,
     cycbcr_420p12_to_NV12p16_avx2,
     {"cycbcr_yuv420p12_to_NV12p16", "cycbcr_420p12_to_NV12p16_avx2"}},
    {"yuv420p16",
     0,
     cycbcr_yuv420p16_to_NV12p16,
     cycbcr_420p16_to_NV12p16_avx2,
     {"cycbcr_yuv420p16_to_NV12p16", "cycbcr_420p16_to_NV12p16_avx2"}},
};

struct Planes3 {
    std::vector<uint8_t> y, cb, cr;
};

// The model: Y rows of width samples and height / 2 chroma rows of width / 2
// pairs at D = max(2 * width, dstPitch), each word (v << shift) mod 2^16. Fills
// the reach of each pointer (dst, Y, Cb, Cr).
struct P16Model {
    std::vector<uint8_t> dst;
    uint64_t reach[4] = {};
    unsigned int result = 0;
};
P16Model nv12p16_model(unsigned shift, const Geometry& g, const Planes3& s,
                       std::vector<uint8_t> init) {
    P16Model m{std::move(init), {}, 0};
    const size_t dp = std::max(2 * g.width, g.dstPitch), sp = g.srcPitch, cp = g.srcPitch / 2;
    auto put = [&](size_t at, uint32_t v) {
        v = (v << shift) & 0xFFFF;
        m.dst.at(at) = static_cast<uint8_t>(v);
        m.dst.at(at + 1) = static_cast<uint8_t>(v >> 8);
        m.reach[0] = std::max<uint64_t>(m.reach[0], at + 2);
    };
    auto get = [&](int plane, const std::vector<uint8_t>& v, size_t at) {
        m.reach[plane] = std::max<uint64_t>(m.reach[plane], at + 2);
        return le16(v, at);
    };
    for (uint32_t r = 0; r < g.height; ++r)
        for (uint32_t x = 0; x < g.width; ++x) put(r * dp + 2 * x, get(1, s.y, r * sp + 2 * x));
    for (uint32_t k = 0; k < g.height / 2; ++k)
        for (uint32_t j = 0; j < g.width / 2; ++j) {
            const size_t out = dp * g.height + k * dp + 4 * j;
            put(out, get(2, s.cb, k * cp + 2 * j));
            put(out + 2, get(3, s.cr, k * cp + 2 * j));
        }
    m.result = static_cast<unsigned>(dp * (g.height + g.height / 2));
    return m;
}

// Runs a producer with each plane and the destination in guarded buffers of
// exactly `bytes`; returns the destination and the count.
Outcome run_producer(Producer fn, const Geometry& g, const Planes3& s,
                     const std::vector<uint8_t>& init, const uint64_t bytes[4]) {
    GuardedBuffer d(bytes[0]), y(bytes[1]), cb(bytes[2]), cr(bytes[3]);
    auto fill = [](GuardedBuffer& b, const std::vector<uint8_t>& v) {
        if (b.size()) std::memcpy(b.data(), v.data(), b.size());
    };
    fill(d, init);
    fill(y, s.y);
    fill(cb, s.cb);
    fill(cr, s.cr);
    Outcome out{init, fn(d.data(), y.data(), cb.data(), cr.data(), g.width, g.height, g.dstPitch,
                         g.srcPitch)};
    std::copy_n(d.data(), bytes[0], out.dst.begin());
    EXPECT_TRUE(d.slack_intact() && y.slack_intact() && cb.slack_intact() && cr.slack_intact());
    EXPECT_TRUE(std::equal(y.data(), y.data() + bytes[1], s.y.begin())) << "source changed";
    return out;
}

TEST(Nv12p16, MatchesModelWithinExactBoundsOnEveryPath) {
    uint32_t seed = 7;
    for (const ProducerCase& pc : kProducers)
        for (int path = 0; path < 3; ++path) {
            if (path > 0 && !have_avx2()) continue;
            cycbcr_set_cpu(path == 0 ? 0 : 5);
            const Producer fn = path == 2 ? pc.avx2Form : pc.plainName;
            for (uint32_t w : widths())
                for (uint32_t h : {0u, 1u, 2u, 3u, 5u}) {
                    if (w > 200 && h > 2) continue;
                    // Natural and padded pitches, and a too-small destination pitch.
                    const uint32_t pitches[][2] = {{0, 2 * w}, {2 * w + 6, 2 * w + 10}, {w, 4 * w}};
                    for (const auto& pp : pitches) {
                        const Geometry g{w, h, pp[0], pp[1]};
                        const size_t plane = size_t{pp[1]} * (h + 1) + 64;
                        const Planes3 s{random_bytes(plane, seed), random_bytes(plane, seed + 1),
                                        random_bytes(plane, seed + 2)};
                        seed += 3;
                        const auto init =
                            random_bytes(size_t{4 * w + 6} * (h + h / 2) + 64, seed++);
                        const P16Model m = nv12p16_model(pc.shift, g, s, init);
                        const Outcome got = run_producer(fn, g, s, init, m.reach);
                        ASSERT_EQ(got.result, m.result) << pc.name << " path " << path << " " << g;
                        ASSERT_TRUE(same_bytes(got.dst, m.dst))
                            << pc.name << " path " << path << " " << g;
                        uint64_t answered[4];
                        const unsigned pitchArgs[] = {g.dstPitch, g.srcPitch};
                        ASSERT_EQ(cycbcr_converter_pointer_sizes(pc.exported[path == 2], w, h,
                                                                 pitchArgs, 2, answered),
                                  1u);
                        for (int i = 0; i < 4; ++i)
                            ASSERT_EQ(answered[i], m.reach[i])
                                << pc.name << " pointer " << i << " " << g;
                    }
                }
        }
    cycbcr_set_cpu(5);
}

// p10 1023 becomes 0xFFC0, p12 4095 0xFFF0, p16 samples stay; bits above a
// sample's depth fall out of the word (p10 0xFFFF also gives 0xFFC0).
TEST(Nv12p16, WorkedSamples) {
    struct {
        Producer plainName, avx2Form;
        uint16_t in, out;
    } const cases[] = {
        {cycbcr_yuv420p10_to_NV12p16, cycbcr_420p10_to_NV12p16_avx2, 1023, 0xFFC0},
        {cycbcr_yuv420p10_to_NV12p16, cycbcr_420p10_to_NV12p16_avx2, 0xFFFF, 0xFFC0},
        {cycbcr_yuv420p10_to_NV12p16, cycbcr_420p10_to_NV12p16_avx2, 512, 0x8000},
        {cycbcr_yuv420p12_to_NV12p16, cycbcr_420p12_to_NV12p16_avx2, 4095, 0xFFF0},
        {cycbcr_yuv420p12_to_NV12p16, cycbcr_420p12_to_NV12p16_avx2, 0x1801, 0x8010},
        {cycbcr_yuv420p16_to_NV12p16, cycbcr_420p16_to_NV12p16_avx2, 0xABCD, 0xABCD},
    };
    for (const auto& c : cases)
        for (int path = 0; path < 3; ++path) {
            if (path > 0 && !have_avx2()) continue;
            cycbcr_set_cpu(path == 0 ? 0 : 5);
            // 64 x 2: whole vector steps of the AVX2 rows, one chroma row.
            std::vector<uint16_t> plane(64 * 2, c.in), out(64 * 3, 0x1111);
            const auto* p = reinterpret_cast<const uint8_t*>(plane.data());
            const Producer fn = path == 2 ? c.avx2Form : c.plainName;
            EXPECT_EQ(fn(reinterpret_cast<uint8_t*>(out.data()), p, p, p, 64, 2, 0, 128), 384u);
            for (size_t i = 0; i < out.size(); ++i)
                ASSERT_EQ(out[i], c.out) << std::hex << c.in << " at " << std::dec << i;
        }
    cycbcr_set_cpu(5);
}

// Chroma pairs interleave Cb before Cr of the same position, source chroma
// rows one to one; an odd height's last row has no chroma row.
TEST(Nv12p16, ChromaRowsAndOrder) {
    // 4 x 3: Y 0..11, Cb 100 + 10k + j, Cr 200 + 10k + j; chroma pitch 4 bytes.
    uint16_t y[12], cb[4], cr[4];
    for (uint16_t i = 0; i < 12; ++i) y[i] = i;
    for (uint16_t k = 0; k < 2; ++k)
        for (uint16_t j = 0; j < 2; ++j)
            cb[2 * k + j] = 100 + 10 * k + j, cr[2 * k + j] = 200 + 10 * k + j;
    std::vector<uint16_t> out(20, 0x7777);
    auto* d = reinterpret_cast<uint8_t*>(out.data());
    EXPECT_EQ(cycbcr_yuv420p16_to_NV12p16(d, reinterpret_cast<uint8_t*>(y),
                                          reinterpret_cast<uint8_t*>(cb),
                                          reinterpret_cast<uint8_t*>(cr), 4, 3, 0, 8),
              32u);  // pitch 8 x (3 + 1)
    const std::vector<uint16_t> want = {0,  1,  2,   3,   4,   5,   6,      7,      8,      9,
                                        10, 11, 100, 200, 101, 201, 0x7777, 0x7777, 0x7777, 0x7777};
    EXPECT_EQ(out, want);
}

// ---------------------------------------------------------------- FFmpeg

#ifdef CYCBCR_TEST_WITH_FFMPEG
// FFmpeg's decoder reads our v210 as the NV12 or NV10 samples widened to 10
// bits, each chroma row serving two picture rows.
TEST(SemiPlanarFfmpeg, DecoderReadsOurV210) {
    const uint32_t shapes[][2] = {{48, 4}, {96, 6}, {1280, 4}, {42, 5}};
    for (const auto& sh : shapes)
        for (unsigned bytes : {1u, 2u})
            for (unsigned level : {0u, 5u}) {
                cycbcr_set_cpu(level);
                const uint32_t w = sh[0], h = sh[1], p = bytes * w;
                auto src = random_bytes(size_t{p} * (h + (h + 1) / 2) + 16, w + h + bytes);
                auto sample = [&](size_t at) -> uint16_t {
                    if (bytes == 1) return static_cast<uint16_t>(src[at] << 2);
                    return static_cast<uint16_t>(le16(src, at) & 0x3FF);
                };
                std::vector<uint8_t> v210(size_t{row_bytes(w)} * h);
                (bytes == 1 ? cycbcr_NV12_to_v210_pitched : cycbcr_NV10_to_v210_pitched)(
                    v210.data(), src.data(), w, h, 0, 0);
                const Frame422 got = ffmpeg_v210_decode(v210, w, h);
                ASSERT_EQ(got.y.size(), size_t{w} * h) << "FFmpeg refused width " << w;
                for (uint32_t r = 0; r < h; ++r) {
                    const size_t chroma = size_t{p} * h + (r / 2) * p;
                    for (uint32_t x = 0; x < w; ++x)
                        ASSERT_EQ(got.Y(r, x), sample(size_t{r} * p + bytes * x))
                            << "bytes " << bytes << " w " << w << " row " << r << " x " << x;
                    for (uint32_t k = 0; k < w / 2; ++k) {
                        ASSERT_EQ(got.Cb(r, k), sample(chroma + bytes * 2 * k)) << r << " " << k;
                        ASSERT_EQ(got.Cr(r, k), sample(chroma + bytes * (2 * k + 1)))
                            << r << " " << k;
                    }
                }
            }
    cycbcr_set_cpu(5);
}
#endif

}  // namespace
