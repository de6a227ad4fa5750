// The v210 packing: row size, sample rules, the UYVY packers and unpackers
// against a reference model that builds the expected frame one byte at a time,
// run between guard pages placed right after the last byte each may touch, and
// the row helpers. (Tov210 and Fromv210 are measured through the entries that
// call them.) Random v210 sources carry random bits 30 and 31, which the models
// drop.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "cycbcr.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"
#include "support/v210_model.h"
#include "ycbcr10/v210.h"

using namespace cycbcr_test;

namespace {

enum class Rule { Saturate, Wrap, Truncate };
uint8_t to8(Rule rule, uint32_t v) {
    if (rule == Rule::Truncate) return static_cast<uint8_t>(v >> 2);
    if (rule == Rule::Saturate && v > 1020) return 255;
    return static_cast<uint8_t>((v + 2) >> 2);
}

bool avx2_level() {
    return gdwProcType == 5 && have_avx2();
}

// ---------------------------------------------------------------- models

// UYVY to v210: rows bottom first, whole groups left to right, each read in
// full before it is written. rd and wr address the source and the destination.
template <class Rd, class Wr>
void pack_uyvy(const Geometry& g, Rd rd, Wr wr) {
    const uint32_t n = g.width * 16 / 6;
    const uint32_t dp = g.dstPitch >= n ? g.dstPitch : round_up(n, 64);
    const uint32_t sp = std::max(2 * g.width, g.srcPitch);
    for (uint32_t r = g.height; r-- > 0;)
        for (uint32_t k = 0; k < ceil_div(g.width, 6); ++k) {
            uint32_t s[12];
            for (unsigned j = 0; j < 12; ++j) s[j] = uint32_t{rd(size_t{r} * sp + 12 * k + j)} << 2;
            uint8_t out[16];
            put_group(out, s);
            for (unsigned b = 0; b < 16; ++b) wr(size_t{r} * dp + 16 * k + b, out[b]);
        }
}
ByteModel pack_model(const Geometry& g, const std::vector<uint8_t>& src,
                     std::vector<uint8_t> init) {
    ByteModel e(std::move(init), src);
    pack_uyvy(
        g, [&](size_t i) { return e.s(i); }, [&](size_t i, uint8_t v) { e.d(i) = v; });
    e.result = g.dstPitch * g.height;
    return e;
}

// v210 to UYVY. _opt: ceil(width / 2) pairs a row from rows of at least
// row_bytes, or from one stream of pairs when srcPitch is 0. _avx2: whole
// groups at the pitches as passed.
ByteModel unpack_model(bool avx2, const Geometry& g, const std::vector<uint8_t>& src,
                       std::vector<uint8_t> init) {
    ByteModel e(std::move(init), src);
    const size_t rowOut = avx2 ? 12 * ceil_div(g.width, 6) : 4 * ceil_div(g.width, 2);
    const size_t sp = avx2 ? g.srcPitch : std::max(row_bytes(g.width), g.srcPitch);
    const bool stream = !avx2 && g.srcPitch == 0;
    for (uint32_t r = 0; r < g.height; ++r)
        for (size_t j = 0; j < rowOut; ++j) {
            const size_t at = stream ? r * rowOut + j : j, row = stream ? 0 : r * sp;
            const uint32_t v = read_group(e, row + at / 12 * 16)[at % 12];
            e.d(size_t{r} * g.dstPitch + j) = to8(avx2 ? Rule::Wrap : Rule::Saturate, v);
        }
    e.result = g.height * g.dstPitch;
    return e;
}

// ---------------------------------------------------------------- sample rules

TEST(V210Layout, RowBytes) {
    const uint32_t cases[][2] = {{1920, 5120}, {1280, 3456}, {720, 1920}, {6, 128},  {0, 0},
                                 {1, 128},     {47, 128},    {48, 128},   {49, 256}, {96, 256}};
    for (const auto& c : cases) EXPECT_EQ(v210_row_bytes(c[0]), c[1]) << "width " << c[0];
}

// Each path keeps its own 10-to-8-bit rule; the 16-bit unpacker shifts by 6 and
// the packers widen 8 bits by 2.
TEST(V210Samples, DepthRulesPerPath) {
    struct {
        uint32_t v;
        uint8_t opt, avx2, trunc;
    } const cases[] = {{1021, 255, 255, 255}, {1022, 255, 0, 255},  {1023, 255, 0, 255},
                       {513, 128, 128, 128},  {514, 129, 129, 128}, {1020, 255, 255, 255},
                       {2, 1, 1, 0},          {0, 0, 0, 0}};
    for (const auto& c : cases) {
        std::vector<uint8_t> src(128);
        const uint32_t same[12] = {c.v, c.v, c.v, c.v, c.v, c.v, c.v, c.v, c.v, c.v, c.v, c.v};
        for (size_t at = 0; at < src.size(); at += 16) put_group(&src[at], same);
        std::vector<std::pair<std::vector<uint8_t>, uint8_t>> runs;  // output, expected byte
        auto uyvy = [&](Converter fn, uint8_t want) {
            std::vector<uint8_t> out(12);
            fn(out.data(), src.data(), 6, 1, 12, 128);
            runs.push_back({out, want});
        };
        uyvy(cycbcr_012v_to_uyvy_opt, c.opt);
        if (have_avx2()) uyvy(cycbcr_012v_to_uyvy_avx2, c.avx2);
        std::vector<uint8_t> yuy2(24);
        Fromv210(&yuy2[0], &yuy2[1], &yuy2[3], src.data(), 6, 1, 24, 0, 1, 0);
        runs.push_back({yuy2, c.trunc});
        for (size_t i = 0; i < runs.size(); ++i)
            for (uint8_t b : runs[i].first)
                ASSERT_EQ(b, runs[i].second) << "run " << i << " sample " << c.v;
        uint16_t wide[24];
        Fromv210_16(wide, wide + 1, wide + 3, src.data(), 6, 1, 48, 0, 1, 0);
        for (uint16_t s : wide) ASSERT_EQ(s, c.v << 6) << "Fromv210_16, sample " << c.v;
    }
    // 255, 16 and 128 become 1020, 64 and 512, through the vector kernel too.
    std::vector<uint8_t> uyvy(48), v210(64);
    for (size_t i = 0; i < uyvy.size(); ++i) uyvy[i] = i % 3 == 0 ? 255 : i % 3 == 1 ? 16 : 128;
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        cycbcr_uyvy_to_012v(v210.data(), uyvy.data(), 24, 1, 64, 48);
        for (size_t at = 0; at < 64; at += 4)
            ASSERT_EQ(v210[at] | v210[at + 1] << 8 | v210[at + 2] << 16 | v210[at + 3] << 24,
                      1020 | 64 << 10 | 512 << 20)
                << "level " << gdwProcType << " byte " << at;
    }
}

// ---------------------------------------------------------------- UYVY and v210

// Every residue of the four-group (24-pixel) step, rows short enough for the
// group-at-a-time path, odd widths and frame widths. With dstPitch 0 the packer's
// pitch is width * 16 / 6 rounded up to 64: 64 for 6 pixels (not the 128 of a
// natural v210 row), 3456 for 1280.
std::vector<uint32_t> widths() {
    std::vector<uint32_t> w;
    for (uint32_t i = 0; i <= 30; ++i) w.push_back(i);
    for (uint32_t i : {35u, 47u, 48u, 49u, 71u, 72u, 73u, 95u, 96u, 97u, 719u, 720u, 1280u, 1281u})
        w.push_back(i);
    return w;
}

struct Engine {
    const char* name;
    Converter fn;
    unsigned level;
    bool avx2Only;
};
const Engine kPackers[] = {{"_opt", cycbcr_uyvy_to_012v_opt, 0, false},
                           {"_opt", cycbcr_uyvy_to_012v_opt, 5, false},
                           {"_avx2", cycbcr_uyvy_to_012v_avx2, 5, true},
                           {"uyvy_to_012v", cycbcr_uyvy_to_012v, 0, false},
                           {"uyvy_to_012v", cycbcr_uyvy_to_012v, 5, false}};

TEST(UyvyToV210, MatchesModelWithinExactBounds) {
    uint32_t seed = 100;
    for (const Engine& en : kPackers) {
        if (en.avx2Only && !have_avx2()) continue;
        cycbcr_set_cpu(en.level);
        for (uint32_t w : widths())
            for (uint32_t h : {0u, 1u, 3u}) {
                const uint32_t n = w * 16 / 6, groups = ceil_div(w, 6);
                // Natural pitches, too-small ones, padded ones.
                const uint32_t pitches[][2] = {
                    {0, 0}, {n ? n - 1 : 0, 1}, {16 * groups + 24, 2 * w + 10}};
                for (const auto& p : pitches) {
                    const Geometry g{w, h, p[0], p[1]};
                    const auto src = random_bytes(h * (2 * w + 10) + 16, seed++);
                    const auto init = random_bytes(h * (16 * groups + 64 + n), seed++);
                    ASSERT_TRUE(matches(pack_model(g, src, init), en.fn, g))
                        << en.name << ", level " << gdwProcType << ", " << g;
                }
            }
    }
}

// Source and destination in one buffer, or destination rows overlapping each
// other: the frame is worked bottom row first, each group read before it is
// written, and every path agrees.
TEST(UyvyToV210, OverlapsFollowBottomUpOrder) {
    struct {
        Geometry g;
        size_t dOff, sOff;
    } const cases[] = {{{30, 3, 80, 60}, 0, 0},      {{48, 4, 128, 96}, 0, 128},
                       {{100, 3, 272, 200}, 40, 0},  {{10, 3, 32, 20}, 0, 8},
                       {{97, 5, 288, 194}, 0, 500},  {{720, 2, 1920, 1440}, 0, 960},
                       {{14, 3, 40, 28}, 0, 200},    {{50, 3, 136, 100}, 0, 600},
                       {{100, 2, 270, 200}, 0, 1000}};  // the last three: rows overlap rows
    for (const Engine& en : kPackers) {
        if (en.avx2Only && !have_avx2()) continue;
        cycbcr_set_cpu(en.level);
        for (const auto& c : cases) {
            const Geometry& g = c.g;
            const uint32_t groups = ceil_div(g.width, 6);
            const size_t size = std::max(c.dOff + (g.height - 1) * g.dstPitch + 16 * groups,
                                         c.sOff + (g.height - 1) * g.srcPitch + 12 * groups);
            const auto frame = random_bytes(size, g.width);
            auto want = frame;
            pack_uyvy(
                g, [&](size_t i) { return want.at(c.sOff + i); },
                [&](size_t i, uint8_t v) { want.at(c.dOff + i) = v; });
            GuardedBuffer buf(size);
            std::copy(frame.begin(), frame.end(), buf.data());
            EXPECT_EQ(en.fn(buf.data() + c.dOff, buf.data() + c.sOff, g.width, g.height, g.dstPitch,
                            g.srcPitch),
                      g.dstPitch * g.height);
            EXPECT_TRUE(buf.slack_intact());
            EXPECT_TRUE(same_bytes(std::vector<uint8_t>(buf.data(), buf.data() + size), want))
                << en.name << ", level " << gdwProcType << ", " << g;
        }
    }
}

TEST(V210ToUyvy, MatchesModelWithinExactBounds) {
    const Engine engines[] = {{"_opt", cycbcr_012v_to_uyvy_opt, 0, false},
                              {"_avx2", cycbcr_012v_to_uyvy_avx2, 5, true},
                              {"012v_to_uyvy", cycbcr_012v_to_uyvy, 0, false},
                              {"012v_to_uyvy", cycbcr_012v_to_uyvy, 5, false}};
    uint32_t seed = 200;
    for (const Engine& en : engines) {
        if (en.avx2Only && !have_avx2()) continue;
        cycbcr_set_cpu(en.level);
        const bool avx2 = en.avx2Only || (en.fn == cycbcr_012v_to_uyvy && avx2_level());
        for (uint32_t w : widths())
            for (uint32_t h : {0u, 1u, 3u}) {
                const uint32_t g6 = ceil_div(w, 6), pairs = 4 * ceil_div(w, 2), rb = row_bytes(w);
                // _opt: stream, short and padded source pitches; _avx2: as passed.
                const uint32_t pitches[2][3][2] = {
                    {{pairs, 0}, {pairs + 3, 1}, {pairs, rb + 32}},
                    {{12 * g6, 16 * g6}, {12 * g6 + 5, 16 * g6 + 48}, {12 * g6, 0}}};
                for (const auto& p : pitches[avx2]) {
                    const Geometry g{w, h, p[0], p[1]};
                    const auto src = random_bytes(h * (rb + 64 + g.srcPitch) + 64, seed++);
                    const auto init = random_bytes(h * (g.dstPitch + 16) + 16, seed++);
                    ASSERT_TRUE(matches(unpack_model(avx2, g, src, init), en.fn, g))
                        << en.name << ", level " << gdwProcType << ", " << g;
                }
            }
    }
}

// ---------------------------------------------------------------- row helpers

TEST(V210RowHelpers, TailMixedMatchesModel) {
    CYCBCR_REQUIRE_AVX2();
    const auto words0 = random_bytes(64, 1), words1 = random_bytes(64, 2);
    for (int mode = 0; mode < 3; ++mode)  // no chroma, row0's chroma, averaged
        for (uint32_t start = 0; start <= 24; start += 2)
            for (uint32_t end = 0; end <= 24; ++end) {
                ByteModel r0({}, words0), r1({}, words1);
                std::vector<uint16_t> wantY(end, 0xEFEF), wantC(round_up(end, 2), 0xEFEF);
                for (uint32_t i = start; i < end; ++i) {
                    const auto s0 = read_group(r0, i / 6 * 16), s1 = read_group(r1, i / 6 * 16);
                    wantY[i] = static_cast<uint16_t>(s0[kY[i % 6]] << 6);
                    for (unsigned c = 0; mode != 0 && i % 2 == 0 && c < 2; ++c) {
                        // Not (c ? kCr : kCb)[j]: GCC 12 with UBSan at -O2 misreads it.
                        const unsigned at = c ? kCr[i % 6 / 2] : kCb[i % 6 / 2];
                        const uint32_t a = s0[at] << 6, b = s1[at] << 6;
                        wantC[i + c] = static_cast<uint16_t>(mode == 2 ? (a + b) >> 1 : a);
                    }
                }
                const uint32_t used = start < end ? ceil_div(end, 6) * 16 : 0;
                GuardedBuffer row0(used), row1(used), y(2 * end), c(2 * wantC.size());
                std::copy_n(words0.begin(), used, row0.data());
                std::copy_n(words1.begin(), used, row1.data());
                std::fill_n(y.data(), y.size(), 0xEF);
                std::fill_n(c.data(), c.size(), 0xEF);
                auto* dy = reinterpret_cast<unsigned short*>(y.data());
                auto* dc = reinterpret_cast<unsigned short*>(c.data());
                v210_tail_mixed_avx2(
                    dy, mode ? dc : nullptr, reinterpret_cast<unsigned*>(row0.data()),
                    reinterpret_cast<unsigned*>(row1.data()), start, end, mode == 2);
                ASSERT_TRUE(std::equal(wantY.begin(), wantY.end(), dy) &&
                            std::equal(wantC.begin(), wantC.end(), dc))
                    << "mode " << mode << " pixels " << start << ".." << end;
            }
}

// Sixteen pixels a step clamp, the pixels after them keep the low eight bits;
// for samples within the depth (10 bits shifted by 2, 16 by 8) both agree.
TEST(V210RowHelpers, StoreUyvyFrom16BitRow) {
    CYCBCR_REQUIRE_AVX2();
    const std::pair<uint32_t, uint32_t> shifts[] = {{2, 1024}, {8, 65536}, {2, 65536}};
    uint32_t seed = 500;
    for (uint32_t w = 0; w <= 49; ++w)
        for (const auto& [shift, limit] : shifts) {
            const uint32_t pairs = w / 2, body = w >= 16 ? w / 16 * 16 : 0;
            GuardedBuffer d(4 * pairs), gy(4 * pairs), gcb(2 * pairs), gcr(2 * pairs);
            auto fill = [&](GuardedBuffer& b) {
                const auto raw = random_bytes(b.size(), seed++);
                auto* v = reinterpret_cast<uint16_t*>(b.data());
                for (size_t i = 0; i < b.size() / 2; ++i)
                    v[i] = (raw[2 * i] | raw[2 * i + 1] << 8) % limit;
                return v;
            };
            const uint16_t *y = fill(gy), *cb = fill(gcb), *cr = fill(gcr);
            auto byte = [&](uint16_t v, uint32_t x) {
                const uint32_t s = v >> shift;
                return static_cast<uint8_t>(x < body ? std::min(s, 255u) : s & 255);
            };
            std::vector<uint8_t> want;
            for (uint32_t x = 0; x < 2 * pairs; x += 2)
                want.insert(want.end(), {byte(cb[x / 2], x), byte(y[x], x), byte(cr[x / 2], x),
                                         byte(y[x + 1], x + 1)});
            store_uyvy_from_16bit_row(d.data(), y, cb, cr, w, shift);
            ASSERT_TRUE(same_bytes(std::vector<uint8_t>(d.data(), d.data() + d.size()), want))
                << "width " << w << " shift " << shift << " limit " << limit;
        }
}

}  // namespace
