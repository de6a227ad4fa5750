// cycbcr_buffer_sizes against what the converters do: for every converter of the
// lists, at every level, the source and destination end exactly where the
// answer says, with an inaccessible page right after each, so that a read or
// write past the answer crashes the test. The answer must also be tight: some
// level writes within the last group of the answered destination bytes (seen by
// running on two complementary destination fills) and reads within the last
// group of the answered source bytes (seen by the output changing when those
// bytes change).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "frame/converters.h"
#include "frame/geometry.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

using namespace cycbcr_test;
using cycbcr::Format;

namespace {

struct Entry {
    const char* name;
    Converter fn;
    Format from, to;
    bool pair;  // the pair's own converter (else one of its forms)
};

void PrintTo(const Entry& e, std::ostream* os) {
    *os << e.name;
}

std::vector<Entry> entries() {
    std::vector<Entry> out;
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows)
        out.push_back({r.name, r.fn, r.from, r.to, r.pair});
    return out;
}

uint32_t code_of(Format f) {
    return cycbcr::info(f).fourcc;
}

// A row's worth of slack: one v210 group. An exact answer ends where the last
// byte touched ends; reads of whole 32-bit words may end up to three bytes past
// the last byte that changes the output.
constexpr uint64_t kSlack = 16;

std::vector<Geometry> sweep(Format from, Format to) {
    std::vector<uint32_t> widths;
    for (uint32_t w = 1; w <= 48; ++w) widths.push_back(w);  // every residue of 2, 6, 12, 48
    widths.insert(widths.end(), {1276, 1280, 1920});
    std::vector<Geometry> out;
    for (uint32_t w : widths)
        for (uint32_t h : {0u, 1u, 2u, 3u}) {
            const uint32_t dn = cycbcr::natural_pitch(to, w), sn = cycbcr::natural_pitch(from, w);
            // Padded by an amount that is no multiple of 16 and by one that is.
            out.push_back({w, h, dn, sn});
            out.push_back({w, h, dn + 36, sn + 36});
            out.push_back({w, h, dn, sn + 64});
            out.push_back({w, h, dn + 64, sn});
            // The v210 converters derive their own pitch from 0.
            if (to == Format::V210) out.push_back({w, h, 0, sn});
            if (from == Format::V210) out.push_back({w, h, dn, 0});
        }
    return out;
}

class BufferSizes : public ::testing::TestWithParam<Entry> {};

TEST_P(BufferSizes, TouchesExactlyTheAnsweredBytes) {
    const Entry& e = GetParam();
    const bool avx2Form = std::string(e.name).ends_with("_avx2");
    if (avx2Form) CYCBCR_REQUIRE_AVX2();
    std::vector<uint32_t> levels = {0, 4};
    if (have_avx2()) levels.push_back(5);
    if (avx2Form) levels = {5};
    for (const Geometry& g : sweep(e.from, e.to)) {
        uint64_t dstBytes = 0, srcBytes = 0;
        // Formats without a FourCC are answered by the converter's name.
        const bool coded =
            code_of(e.from) != cycbcr::kNoFourCC && code_of(e.to) != cycbcr::kNoFourCC;
        ASSERT_EQ(coded ? cycbcr_buffer_sizes(code_of(e.to), code_of(e.from), g.width, g.height,
                                              g.dstPitch, g.srcPitch, &dstBytes, &srcBytes)
                        : cycbcr_converter_buffer_sizes(e.name, g.width, g.height, g.dstPitch,
                                                        g.srcPitch, 0, 0, &dstBytes, &srcBytes),
                  1u)
            << e.name;
        GuardedBuffer src(srcBytes), dst(dstBytes);
        const std::vector<uint8_t> source = random_bytes(srcBytes, g.width * 31 + g.height);
        std::vector<uint8_t> fill = random_bytes(dstBytes, g.width * 7 + g.height + 1);
        uint64_t written = 0;
        bool readsTail = false;
        auto run = [&](const std::vector<uint8_t>& s, const std::vector<uint8_t>& d) {
            if (!s.empty()) std::memcpy(src.data(), s.data(), s.size());
            if (!d.empty()) std::memcpy(dst.data(), d.data(), d.size());
            e.fn(dst.data(), src.data(), g.width, g.height, g.dstPitch, g.srcPitch);
            return std::vector<uint8_t>(dst.data(), dst.data() + dstBytes);
        };
        for (uint32_t level : levels) {
            cycbcr_set_cpu(level);
            // Two complementary fills: a byte the converter writes differs from
            // its fill in at least one of the two runs.
            std::vector<uint8_t> other(fill);
            for (auto& b : other) b = static_cast<uint8_t>(~b);
            const std::vector<uint8_t> a = run(source, fill), b = run(source, other);
            for (uint64_t i = dstBytes; i-- > written;)
                if (a[i] != fill[i] || b[i] != other[i]) {
                    written = i + 1;
                    break;
                }
            // The source's last bytes changed: does the output change?
            std::vector<uint8_t> changed(source);
            for (uint64_t i = srcBytes > kSlack ? srcBytes - kSlack : 0; i < srcBytes; ++i)
                changed[i] = static_cast<uint8_t>(changed[i] ^ 0x5A);
            readsTail = readsTail || run(changed, fill) != a;
        }
        ASSERT_TRUE(src.slack_intact() && dst.slack_intact()) << e.name << " " << g;
        if (!e.pair) continue;  // a form takes one of the pair's paths only
        EXPECT_LE(dstBytes, written + kSlack)
            << e.name << " " << g << ": answered " << dstBytes << ", wrote " << written;
        EXPECT_TRUE(srcBytes == 0 || readsTail)
            << e.name << " " << g << ": answered " << srcBytes
            << " source bytes, the last of which change nothing";
    }
    cycbcr_set_cpu(5);
}

INSTANTIATE_TEST_SUITE_P(All, BufferSizes, ::testing::ValuesIn(entries()),
                         [](const auto& info) { return std::string(info.param.name); });

// Through the dispatcher the pitches are first normalised; the answer for the
// normalised pitches bounds what cycbcr_transcode touches, with every alias.
TEST(BufferSizes, HoldForTheDispatcherWithItsPitchRule) {
    const uint32_t codes[] = {CYCBCR_FOURCC_UYVY, CYCBCR_FOURCC_2vuy, CYCBCR_FOURCC_YUNV,
                              CYCBCR_FOURCC_YVYU, CYCBCR_FOURCC_cyuv, CYCBCR_FOURCC_IYUV,
                              CYCBCR_FOURCC_YV12, CYCBCR_FOURCC_422P, CYCBCR_FOURCC_012v};
    for (uint32_t from : codes)
        for (uint32_t to : codes)
            for (uint32_t w : {7u, 1276u})
                for (uint32_t pitch : {0u, 5000u}) {
                    const uint32_t h = 3;
                    uint64_t d = 0, s = 0;
                    const uint32_t dp = cycbcr_fix_pitch(to, w, pitch);
                    const uint32_t sp = cycbcr_fix_pitch(from, w, pitch);
                    const unsigned known = cycbcr_buffer_sizes(to, from, w, h, dp, sp, &d, &s);
                    EXPECT_EQ(known, cycbcr_pair_converter(to, from) != nullptr ? 1u : 0u);
                    if (!known) continue;
                    GuardedBuffer src(s), dst(d);
                    std::fill_n(src.data(), s, 0x80);
                    cycbcr_transcode(dst.data(), src.data(), w, h, pitch, pitch, 0, 0, to, from);
                    EXPECT_TRUE(dst.slack_intact());
                }
}

// Pairs into RGB (code 0) answer for the widest of their converter's calls over
// every matrix and RGB type. Each of those calls, at every level, stays within
// the answer, directly and through the dispatcher with its pitch rule; and some
// call writes the last answered destination byte and reads the last answered
// source byte (its output changes with it).
TEST(BufferSizes, RgbPairsHoldForEveryMatrixAndType) {
    const uint32_t codes[] = {CYCBCR_FOURCC_UYVY, CYCBCR_FOURCC_YUY2, CYCBCR_FOURCC_YVYU,
                              CYCBCR_FOURCC_cyuv, CYCBCR_FOURCC_I420, CYCBCR_FOURCC_YV12,
                              CYCBCR_FOURCC_P422, CYCBCR_FOURCC_422P};
    const QBYCBCRRgbType types[] = {0, 1, 2, 3, 0x8000};
    std::vector<uint32_t> levels = {0, 4};
    if (have_avx2()) levels.push_back(5);
    std::vector<uint32_t> widths;
    for (uint32_t w = 1; w <= 13; ++w) widths.push_back(w);
    widths.insert(widths.end(), {40, 1276});
    for (uint32_t code : codes) {
        const cycbcr_rgb_converter fn = cycbcr_rgb_pair_converter(0, code);
        ASSERT_NE(fn, nullptr) << std::hex << code;
        const bool packed = code != CYCBCR_FOURCC_I420 && code != CYCBCR_FOURCC_YV12 &&
                            code != CYCBCR_FOURCC_P422 && code != CYCBCR_FOURCC_422P;
        for (uint32_t w : widths)
            for (uint32_t h = 0; h <= 3; ++h)
                for (uint32_t pad : {0u, 36u}) {
                    const Geometry g{w, h, 4 * w + pad, (packed ? 2 * w : w) + pad};
                    uint64_t d = 0, s = 0;
                    ASSERT_EQ(cycbcr_buffer_sizes(0, code, w, h, g.dstPitch, g.srcPitch, &d, &s),
                              1u);
                    GuardedBuffer src(s), dst(d);
                    const std::vector<uint8_t> source = random_bytes(s, w * 13 + h + pad);
                    std::vector<uint8_t> changed(source);
                    if (s) changed[s - 1] = static_cast<uint8_t>(changed[s - 1] ^ 0x5A);
                    // Rows of distinct fills, so that a frame turned over shows.
                    std::vector<uint8_t> fill(d);
                    for (size_t i = 0; i < d; ++i)
                        fill[i] = static_cast<uint8_t>(0x21 * (i / g.dstPitch % 5 + 1) + i % 3);
                    bool written = d == 0, readsLast = s == 0;
                    auto run = [&](const std::vector<uint8_t>& sb, const std::vector<uint8_t>& db,
                                   QBYCBCRMatrix m, QBYCBCRRgbType t) {
                        if (s) std::memcpy(src.data(), sb.data(), s);
                        if (d) std::memcpy(dst.data(), db.data(), d);
                        fn(dst.data(), src.data(), w, h, g.dstPitch, g.srcPitch, m, t);
                        return std::vector<uint8_t>(dst.data(), dst.data() + d);
                    };
                    for (uint32_t level : levels) {
                        cycbcr_set_cpu(level);
                        for (QBYCBCRMatrix m = 0; m <= 7; ++m)
                            for (QBYCBCRRgbType t : types) {
                                std::vector<uint8_t> other(fill);
                                for (auto& b : other) b = static_cast<uint8_t>(~b);
                                const auto a = run(source, fill, m, t);
                                const auto b = run(source, other, m, t);
                                if (d)
                                    written = written || a[d - 1] != fill[d - 1] ||
                                              b[d - 1] != other[d - 1];
                                if (!readsLast) readsLast = run(changed, fill, m, t) != a;
                            }
                    }
                    ASSERT_TRUE(src.slack_intact() && dst.slack_intact())
                        << std::hex << code << std::dec << " " << g;
                    EXPECT_TRUE(written)
                        << std::hex << code << std::dec << " " << g << ": the last of " << d
                        << " answered bytes is never written";
                    EXPECT_TRUE(readsLast)
                        << std::hex << code << std::dec << " " << g << ": the last of " << s
                        << " answered source bytes changes nothing";
                }
        // Through the dispatcher, at the pitches its rule passes on.
        for (uint32_t w : {7u, 1276u})
            for (uint32_t pitch : {0u, 5000u}) {
                const uint32_t h = 3;
                const uint32_t dp = cycbcr_fix_pitch(0, w, pitch);
                const uint32_t sp = cycbcr_fix_pitch(code, w, pitch);
                uint64_t d = 0, s = 0;
                ASSERT_EQ(cycbcr_buffer_sizes(0, code, w, h, dp, sp, &d, &s), 1u);
                GuardedBuffer src(s), dst(d);
                std::fill_n(src.data(), s, 0x80);
                for (uint32_t level : levels) {
                    cycbcr_set_cpu(level);
                    for (QBYCBCRMatrix m = 0; m <= 7; ++m)
                        for (QBYCBCRRgbType t : types)
                            cycbcr_transcode(dst.data(), src.data(), w, h, pitch, pitch, m, t, 0,
                                             code);
                }
                EXPECT_TRUE(dst.slack_intact() && src.slack_intact());
            }
    }
    cycbcr_set_cpu(5);
}

TEST(BufferSizes, UnknownPairsAnswerNothing) {
    uint64_t d = 1, s = 1;
    EXPECT_EQ(cycbcr_buffer_sizes(CYCBCR_FOURCC_422P, CYCBCR_FOURCC_UYVY, 8, 2, 16, 16, &d, &s),
              0u);
    EXPECT_EQ(d, 0u);
    EXPECT_EQ(s, 0u);
    EXPECT_EQ(cycbcr_buffer_sizes(0, 0, 8, 2, 32, 32, nullptr, nullptr), 0u);
    EXPECT_EQ(cycbcr_buffer_sizes(fourcc("NV12"), CYCBCR_FOURCC_UYVY, 8, 2, 8, 16, &d, &s), 0u);
}

// A worked case of each kind, figured from the formats' definitions.
// The converters to RGB with an alpha plane answer for their frames as their
// plain 32-bit converters do, and stay within those bytes.
TEST(BufferSizes, AlphaConvertersAnswerForTheirFrames) {
    const struct {
        const char* name;
        const char* plain;
    } pairs[] = {{"cycbcr_012v_to_rgb32_Alpha", "cycbcr_012v_to_rgb32"},
                 {"cycbcr_uyvy_to_rgb32_Alpha", "cycbcr_uyvy_to_rgb32"}};
    for (const auto& p : pairs)
        for (uint32_t w : {6u, 13u, 50u}) {
            uint64_t d = 0, s = 0, pd = 0, ps = 0;
            ASSERT_EQ(cycbcr_converter_buffer_sizes(p.name, w, 3, w * 4 + 8, 160, 0, 0, &d, &s), 1u)
                << p.name;
            ASSERT_EQ(cycbcr_converter_buffer_sizes(p.plain, w, 3, w * 4 + 8, 160, 0, 0, &pd, &ps),
                      1u);
            EXPECT_EQ(d, pd) << p.name << " " << w;
            EXPECT_EQ(s, ps) << p.name << " " << w;
            for (uint32_t level : {0u, 5u}) {
                cycbcr_set_cpu(level);
                GuardedBuffer dst(d), src(s);
                std::memset(src.data(), 0x80, s);
                const std::vector<uint8_t> alpha(size_t{w} * 3 * 2, 0xFF);
                if (std::strcmp(p.name, "cycbcr_012v_to_rgb32_Alpha") == 0)
                    cycbcr_012v_to_rgb32_Alpha(dst.data(), src.data(), alpha.data(), w, 3,
                                               w * 4 + 8, 160, 0, 0);
                else
                    cycbcr_uyvy_to_rgb32_Alpha(dst.data(), src.data(), alpha.data(), w, 3,
                                               w * 4 + 8, 160, 0, 0);
                EXPECT_TRUE(dst.slack_intact()) << p.name << " " << w;
            }
        }
}

// v210 into three separate 4:2:2 planes, 8- or 16-bit, answered pointer by
// pointer: each call between guard pages at exactly those sizes, at both
// levels, and the last answered byte of each plane is written.
TEST(BufferSizes, V210IntoThreePlanesHoldPointerByPointer) {
    using Planes = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                    unsigned int, unsigned int, unsigned int);
    struct Named {
        const char* name;
        Planes fn;
    };
    const Named named[] = {
        {"cycbcr_012v_to_planar422", cycbcr_012v_to_planar422},
        {"cycbcr_012v_to_planar422_16",
         [](uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, unsigned int w,
            unsigned int h, unsigned int dp,
            unsigned int sp) { return cycbcr_012v_to_planar422_16(y, cb, cr, src, w, h, dp, sp); }},
    };
    for (const unsigned int level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (const Named& n : named) {
            for (const unsigned int w : {1u, 7u, 12u, 13u, 50u}) {
                const unsigned int h = 3, wide = std::strstr(n.name, "16") != nullptr ? 2 : 1;
                const unsigned int pitches[2] = {((w + 11) / 12 * 12 + 4) * wide,
                                                 v210_row_bytes(w) + 16};
                uint64_t bytes[4] = {};
                ASSERT_EQ(cycbcr_converter_pointer_sizes(n.name, w, h, pitches, 2, bytes), 1u);
                // Y: whole 12-pixel steps in each row; chroma rows half the pitch
                // apart.
                const uint64_t yRow = (w + 11) / 12 * 12 * wide;
                EXPECT_EQ(bytes[0], 2 * uint64_t{pitches[0]} + yRow) << n.name << " " << w;
                EXPECT_EQ(bytes[1], 2 * uint64_t{pitches[0] / 2} + yRow / 2) << n.name;
                EXPECT_EQ(bytes[3], 2 * uint64_t{pitches[1]} + (w + 11) / 12 * 32) << n.name;
                GuardedBuffer y(bytes[0]), cb(bytes[1]), cr(bytes[2]), src(bytes[3]);
                std::memset(y.data(), 0xEE, bytes[0]);
                std::memset(cb.data(), 0xEE, bytes[1]);
                const std::vector<uint8_t> frame = random_bytes(bytes[3], w);
                std::memcpy(src.data(), frame.data(), bytes[3]);
                n.fn(y.data(), cb.data(), cr.data(), src.data(), w, h, pitches[0], pitches[1]);
                EXPECT_NE(y.data()[bytes[0] - 1], 0xEE) << n.name << " " << w;
                EXPECT_NE(cb.data()[bytes[1] - 1], 0xEE) << n.name << " " << w;
                EXPECT_TRUE(y.slack_intact() && cb.slack_intact() && cr.slack_intact());
            }
        }
    }
    uint64_t bytes[4] = {1, 1, 1, 1};
    const unsigned int pitches[2] = {64, 128};
    EXPECT_EQ(cycbcr_converter_pointer_sizes("cycbcr_no_such", 8, 2, pitches, 2, bytes), 0u);
    EXPECT_EQ(bytes[0] + bytes[1] + bytes[2] + bytes[3], 0u);
}

TEST(BufferSizes, WorkedExamples) {
    uint64_t d = 0, s = 0;
    // UYVY to YUY2, 720x576 at 1440: whole frames.
    cycbcr_buffer_sizes(CYCBCR_FOURCC_YUY2, CYCBCR_FOURCC_UYVY, 720, 576, 1440, 1440, &d, &s);
    EXPECT_EQ(d, 1440u * 576);
    EXPECT_EQ(s, 1440u * 576);
    // v210 to I420 at width 1276 and dstPitch 1276: the unpacker writes 1284 luma
    // and 642 chroma bytes a row; the last Cr row starts at
    // 1276 * 4 + 1276 * 4 / 4 + (4 / 2 - 1) * 638.
    cycbcr_buffer_sizes(CYCBCR_FOURCC_I420, CYCBCR_FOURCC_v210, 1276, 4, 1276, 3456, &d, &s);
    EXPECT_EQ(d, 1276u * 4 + 1276 + 638 + 642);
    EXPECT_EQ(s, 3456u * 3 + 16 * 214);
    // P422 to UYVY with a source pitch of 60 at width 20: below level 5 the
    // imaging path reads Cr row 2 at 30 bytes a row from 20 * 3 + 20 * 3 / 2
    // (the planes are placed by the width).
    cycbcr_buffer_sizes(CYCBCR_FOURCC_UYVY, CYCBCR_FOURCC_P422, 20, 3, 40, 60, &d, &s);
    EXPECT_EQ(s, 60u + 30 + 2 * 30 + 10);
    // YUY2 to v210 at width 8 and the natural pitch 16: rows run on by whole
    // groups of 12 bytes, 24 a row.
    cycbcr_buffer_sizes(CYCBCR_FOURCC_v210, CYCBCR_FOURCC_YUY2, 8, 3, 0, 16, &d, &s);
    EXPECT_EQ(s, 3u * 24);
    EXPECT_EQ(d, 2u * 128 + 32);
    // cyuv to RGB at width 0 converts nothing but still turns the frame over:
    // 9 rows of 14 bytes.
    ASSERT_EQ(cycbcr_converter_buffer_sizes("cycbcr_cyuv_to_rgb24", 0, 9, 14, 43, 0, 0, &d, &s),
              1u);
    EXPECT_EQ(d, 9u * 14);
    EXPECT_EQ(s, 0u);
    // The plain copy by its own name: min(dstPitch, srcPitch) bytes a row, so
    // 20 of each row at pitches 24 and 20; one block of 3 * 20 with equal pitches.
    ASSERT_EQ(cycbcr_converter_buffer_sizes("cycbcr_interleaved_copy", 10, 3, 24, 20, 0, 0, &d, &s),
              1u);
    EXPECT_EQ(d, 2u * 24 + 20);
    EXPECT_EQ(s, 2u * 20 + 20);
    cycbcr_converter_buffer_sizes("cycbcr_interleaved_copy", 10, 3, 20, 20, 0, 0, &d, &s);
    EXPECT_EQ(d, 3u * 20);
    EXPECT_EQ(s, 3u * 20);
}

}  // namespace
