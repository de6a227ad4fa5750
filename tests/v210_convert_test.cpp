// v210 to and from YUY2, YVYU, UYVY, cyuv, I420, YV12, P422 and separate planes.
// Every entry, at the plain and the AVX2 level, its _avx2 twin, the kernels
// behind the twins and the 16-bit engine are run between guard pages placed at
// the exact bounds of a model of the engine call the entry stands for, and must
// give the model's bytes and byte count. Then the worked rules (4:2:0 chroma,
// truncation against the rounding UYVY converter), the row packer with
// interleaved chroma, the SSSE3 row kernels, and FFmpeg's v210 codec where its
// rules meet ours.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/converters.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"
#include "support/v210_model.h"
#include "ycbcr10/v210.h"
#ifdef CYCBCR_TEST_WITH_FFMPEG
#include "support/ffmpeg_v210.h"
#endif

using namespace cycbcr_test;
using cycbcr::avx2::pack_v210_u8_rows_avx2;
using cycbcr::avx2::v210_to_planar420_8_avx2;

namespace {

// pack_v210_u8_rows_avx2 as described: luma row r at y + r * lumaPitch, chroma
// row r / 2 at cb and cr + (r / 2) * chromaPitch, `step` bytes per sample.
void pack_rows(V210Model& e, const Geometry& g, size_t y, size_t cb, size_t cr, uint32_t lumaPitch,
               uint32_t chromaPitch, unsigned step) {
    const uint32_t dp = std::max(row_bytes(g.width), g.dstPitch);
    for (e.row = 0; e.row < g.height; ++e.row) {
        const size_t c = size_t{e.row / 2} * chromaPitch;
        size_t ly = y + size_t{e.row} * lumaPitch, lcb = cb + c, lcr = cr + c;
        pack_row_model(e, size_t{e.row} * dp, g.width, ly, lcb, lcr, 1, step);
    }
    e.result = g.height * row_bytes(g.width);
}

// ---------------------------------------------------------------- the entries

struct Path {
    const char* name;
    Converter fn;  // a twin or a kernel behind it: run only where AVX2 is
};
struct Entry {
    std::string name;
    Converter plain;
    Fmt fmt;
    bool toV210;
    unsigned bps;
    bool twinRowsByPitch;  // the AVX2 form reads planar rows by srcPitch
    std::vector<Path> avx2;
};

// Three-plane entries, given the plane positions of format F in one buffer.
#define ON_PLANES(F, call)                                                               \
    [](uint8_t* d, const uint8_t* s, unsigned w, unsigned h, unsigned dp, unsigned sp) { \
        const Layout L = layout_of(Fmt::F, dp, h);                                       \
        return call;                                                                     \
    }
#define PLANAR422(fn) ON_PLANES(P422, fn(d + L.y, d + L.cb, d + L.cr, s, w, h, dp, sp))
#define FROMV210_16(F) \
    ON_PLANES(F, Fromv210_16(d + L.y, d + L.cb, d + L.cr, s, w, h, dp, sp, L.full, L.planar))
#define PLANAR420_KERNEL(swap)                                                           \
    [](uint8_t* d, const uint8_t* s, unsigned w, unsigned h, unsigned dp, unsigned sp) { \
        return v210_to_planar420_8_avx2(d, s, w, h, dp, sp, swap);                       \
    }

// Every converter of the library's list between v210 and an 8-bit format other
// than UYVY (whose pair has its own test), with its AVX2 twin; the 4:2:0 kernel
// behind two of the twins; and the three-plane entries and the 16-bit engine's
// outputs, which take plane pointers rather than one frame.
const std::vector<Entry>& entries() {
    static const std::vector<Entry> list = [] {
        std::vector<Entry> out;
        for (const Listed& l : listed_where([](const Listed& l) {
                 return l.pair && (l.from == Fmt::V210) != (l.to == Fmt::V210) &&
                        l.from != Fmt::UYVY && l.to != Fmt::UYVY && l.from != Fmt::NV12 &&
                        l.from != Fmt::NV10;  // semi_planar_test
             })) {
            const bool toV210 = l.to == Fmt::V210;
            Entry e{l.name,
                    l.fn,
                    toV210 ? l.from : l.to,
                    toV210,
                    1,
                    l.from == Fmt::I420,
                    {{"twin", l.avx2}}};
            if (l.to == Fmt::I420) e.avx2.push_back({"planar420 kernel", PLANAR420_KERNEL(false)});
            if (l.to == Fmt::YV12) e.avx2.push_back({"planar420 kernel", PLANAR420_KERNEL(true)});
            out.push_back(e);
        }
        // clang-format off
        out.push_back({"012v_to_planar422", PLANAR422(cycbcr_012v_to_planar422), Fmt::P422, false,
                       1, false, {{"twin", PLANAR422(cycbcr_012v_to_planar422_avx2)},
                                  {"v210to_planar", PLANAR422(cycbcr_v210to_planar_avx2)}}});
        out.push_back({"012v_to_planar422_16", PLANAR422(cycbcr_012v_to_planar422_16), Fmt::P422,
                       false, 2, false,
                       {{"twin", PLANAR422(cycbcr_012v_to_planar422_16_avx2)},
                        {"v210to_planar16", PLANAR422(cycbcr_v210to_planar16_avx2)}}});
        // clang-format on
        out.push_back({"Fromv210_16_packed", FROMV210_16(YUY2), Fmt::YUY2, false, 2, false, {}});
        out.push_back({"Fromv210_16_420", FROMV210_16(I420), Fmt::I420, false, 2, false, {}});
        return out;
    }();
    return list;
}

// Widths that are odd, not multiples of 6, 12 or 48, and multiples of them.
const uint32_t kWidths[] = {0, 1, 2, 5, 6, 7, 11, 12, 13, 18, 23, 25, 47, 48, 53, 97, 1281};

// {dstPitch, srcPitch} pairs: natural, padded and tight ones. Tight pitches put
// each row's (and the last row's) overrun on the next row or plane.
std::vector<std::pair<uint32_t, uint32_t>> pitches(const Entry& en, uint32_t w) {
    const uint32_t R = round_up(w, 12), rb = row_bytes(w);
    const bool planar = layout_of(en.fmt, 0, 0).planar;
    std::vector<uint32_t> d, s;
    if (!en.toV210) {
        s = {0, rb + 20};
        // 16-bit samples take byte pitches: 2 * width and 4 * R + 2 put the chroma rows
        // of an odd width, and an odd height's Cr plane, on odd bytes.
        d = en.bps == 2 ? std::vector<uint32_t>{2 * w, 2 * R + 4, 4 * R + 2}
            : planar    ? std::vector<uint32_t>{w, R + 1, 2 * R + 2}
                        : std::vector<uint32_t>{2 * R, 2 * w, 2 * R + 6};
    } else {
        d = {0, 1, rb + 16};
        s = planar ? std::vector<uint32_t>{w, w + 3, 2 * w + 8}
                   : std::vector<uint32_t>{2 * w, 2 * w + 6, 0};
    }
    std::vector<std::pair<uint32_t, uint32_t>> out;
    for (uint32_t dp : d)
        for (uint32_t sp : s) out.push_back({dp, sp});
    return out;
}

void check_entry(const Entry& en, const Geometry& g, uint32_t seed) {
    const uint32_t w = g.width, h = g.height, groups = ceil_div(w, 6);
    const size_t srcSize =
        en.toV210 ? size_t{3} * h * std::max(g.srcPitch, 2 * w) + size_t{h + 1} * 16 * groups + 64
                  : size_t{h + 1} * std::max(row_bytes(w), g.srcPitch) + 64;
    const size_t dstSize = en.toV210 ? size_t{h} * std::max(row_bytes(w), g.dstPitch) + 64
                                     : size_t{3} * h * g.dstPitch + 4 * round_up(w, 12) * 2 + 64;
    const auto src = random_bytes(srcSize, seed), init = random_bytes(dstSize, ~seed);
    const Layout L = layout_of(en.fmt, en.toV210 ? g.srcPitch : g.dstPitch, h);
    V210Model want(init, src), rows(init, src);
    if (en.toV210) {
        tov210_model(want, g, L);
        if (en.twinRowsByPitch) pack_rows(rows, g, L.y, L.cb, L.cr, g.srcPitch, g.srcPitch / 2, 1);
    } else {
        fromv210_model(want, en.bps, g, L);
    }
    if (en.fmt == Fmt::CYUV) want.flip(0, g.dstPitch, h);

    struct Run {
        std::string name;
        Converter fn;
        unsigned level;
        bool needsAvx2;
    };
    std::vector<Run> runs = {{"plain", en.plain, 0, false}, {"plain", en.plain, 5, false}};
    for (const Path& p : en.avx2) runs.push_back({p.name, p.fn, 5, true});
    std::optional<Outcome> reference;  // the plain path at level 0
    for (const Run& run : runs) {
        if (run.needsAvx2 && !have_avx2()) continue;
        cycbcr_set_cpu(run.level);
        const bool onAvx2 = run.needsAvx2 || (gdwProcType == 5 && have_avx2());
        const V210Model& m = en.twinRowsByPitch && onAvx2 ? rows : want;
        const Outcome got = run_guarded(run.fn, g, src, m.srcEnd, init, m.dstEnd);
        const std::string what =
            en.name + " " + run.name + " at level " + std::to_string(gdwProcType) + ", ";
        ASSERT_EQ(got.result, m.result) << what << g;
        if (!reference) reference = got;
        auto settled = got.dst;
        for (size_t i = 0; i < settled.size(); ++i)
            if (m.unsettled[i]) settled[i] = m.dst[i];
        ASSERT_TRUE(same_bytes(settled, m.dst)) << what << g;
        if (m.orderDependent) {
            ASSERT_TRUE(same_bytes(got.dst, reference->dst)) << what << g;
        }
    }
}

class V210Entry : public ::testing::TestWithParam<size_t> {};

TEST_P(V210Entry, EveryPathMatchesTheEngineCallWithinExactBounds) {
    const Entry& en = entries()[GetParam()];
    uint32_t seed = 1000 * static_cast<uint32_t>(GetParam());
    for (uint32_t w : kWidths)
        for (uint32_t h : {0u, 1u, 2u, 3u, 5u})
            for (const auto& [dp, sp] : pitches(en, w)) {
                check_entry(en, {w, h, dp, sp}, seed++);
                if (HasFatalFailure()) return;
            }
}

INSTANTIATE_TEST_SUITE_P(All, V210Entry, ::testing::Range(size_t{0}, entries().size()),
                         [](const ::testing::TestParamInfo<size_t>& info) {
                             return short_name(entries()[info.param].name);
                         });

// ---------------------------------------------------------------- worked rules

// Rows 2k and 2k + 1 write chroma row k and the odd row's write stays (an odd
// height's last row keeps its own), on every path.
TEST(V210Entries, FourTwoZeroKeepsOddRowChroma) {
    const uint32_t w = 12, h = 5, rb = 128;
    std::vector<uint8_t> v210(h * rb);
    for (uint32_t r = 0; r < h; ++r) {  // chroma with 2 or 3 in the low bits: truncated
        const uint32_t cb = 203 + 100 * r, cr = 902 - 100 * r;
        const uint32_t s[12] = {cb, 40 + r, cr, 41, cb, 42, cr, 43, cb, 44, cr, 45};
        put_group(&v210[r * rb], s), put_group(&v210[r * rb + 16], s);
    }
    const Converter to420[] = {cycbcr_012v_to_i420, cycbcr_012v_to_yv12, cycbcr_012v_to_i420_avx2,
                               cycbcr_012v_to_yv12_avx2};
    for (unsigned level : {0u, 5u})
        for (int i = 0; i < 4; ++i) {
            if (i >= 2 && !have_avx2()) continue;
            cycbcr_set_cpu(level);
            // A pitch of 2 * width keeps the last Cb row (odd height) off the Cr plane.
            const uint32_t dp = 2 * w;
            std::vector<uint8_t> out(dp * h * 2, 0xEE);
            EXPECT_EQ(to420[i](out.data(), v210.data(), w, h, dp, 0), w * h * 3 / 2);
            const uint8_t* cb = &out[dp * h + (i % 2 ? dp * h / 4 : 0)];
            const uint8_t* cr = &out[dp * h + (i % 2 ? 0 : dp * h / 4)];
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t r = std::min(2 * k + 1, h - 1);
                for (uint32_t x = 0; x < w / 2; ++x)
                    ASSERT_TRUE(cb[k * dp / 2 + x] == (203 + 100 * r) >> 2 &&
                                cr[k * dp / 2 + x] == (902 - 100 * r) >> 2)
                        << "path " << i << " level " << level << " chroma row " << k;
            }
        }
}

// Destinations of 8 MiB and more go out with streaming stores, whole or in
// halves, and the rows of a 4:2:0 frame are packed two at a time: a frame that
// large (odd height, so the last row is packed alone; a width whose last pair is
// short) gives the engine's bytes from a 32-byte aligned destination, a 16-byte
// aligned one, and one that takes the cached path.
TEST(V210Entries, LargeFramesPackLikeTheEngine) {
    CYCBCR_REQUIRE_AVX2();
    const uint32_t w = 1916, h = 1643, rb = v210_row_bytes(w);
    ASSERT_GE(size_t{rb} * h, size_t{8} << 20);
    // Whole groups are read: the last chroma row runs 2 bytes past the frame.
    const auto planar = random_bytes(size_t{w} * h * 2 + 64, 91);
    struct Case {
        Converter twin;
        bool full;
    };
    for (const Case& c :
         {Case{cycbcr_i420_to_012v_avx2, false}, Case{cycbcr_p422_to_012v_avx2, true}})
        for (size_t offset : {0, 16, 8}) {
            std::vector<uint8_t> want(size_t{rb} * h + 64), got(want.size() + 64);
            const uint8_t* y = planar.data();
            const uint8_t* cb = y + size_t{w} * h;
            const uint8_t* cr = cb + (c.full ? size_t{w} * h / 2 : size_t{w} * h / 4);
            ASSERT_EQ(Tov210(want.data(), y, cb, cr, w, h, rb, w, c.full ? 1 : 0, 1), h * rb);
            // The first 32-byte aligned byte of `got`, plus the offset.
            uint8_t* dst =
                got.data() + offset + (32 - reinterpret_cast<uintptr_t>(got.data()) % 32) % 32;
            ASSERT_EQ(c.twin(dst, planar.data(), w, h, rb, w), h * rb);
            ASSERT_TRUE(std::equal(want.begin(), want.begin() + size_t{rb} * h, dst))
                << (c.full ? "p422" : "i420") << " offset " << offset;
        }
}

// cyuv holds Fromv210's truncated samples in UYVY order, flipped; the UYVY
// converter rounds, so the two differ by one exactly where a sample up to 1020
// has 2 or 3 in its low bits.
TEST(V210Entries, CyuvIsTruncatedUyvyFlipped) {
    const uint32_t w = 48, h = 3, rb = 128;
    auto samples = random_bytes(2 * w * h * 2, 7);
    std::vector<uint8_t> v210(h * rb);
    std::vector<uint32_t> value(2 * w * h);  // in UYVY byte order, row by row
    for (size_t i = 0; i < value.size(); ++i)
        value[i] = i < 4 ? 1020 + uint32_t(i) : (samples[2 * i] | samples[2 * i + 1] << 8) & 0x3FF;
    for (uint32_t r = 0; r < h; ++r)
        for (uint32_t k = 0; k < w / 6; ++k)
            put_group(&v210[r * rb + 16 * k], &value[2 * w * r + 12 * k]);
    cycbcr_set_cpu(0);
    std::vector<uint8_t> uyvy(2 * w * h);
    cycbcr_012v_to_uyvy(uyvy.data(), v210.data(), w, h, 2 * w, rb);
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        std::vector<uint8_t> cyuv(2 * w * h);
        EXPECT_EQ(cycbcr_012v_to_cyuv(cyuv.data(), v210.data(), w, h, 2 * w, rb), 2 * w * h);
        for (uint32_t r = 0; r < h; ++r)
            for (uint32_t j = 0; j < 2 * w; ++j) {
                const uint32_t v = value[2 * w * r + j];
                const uint32_t rounds = v <= 1020 && (v & 3) >= 2;
                ASSERT_TRUE(cyuv[2 * w * (h - 1 - r) + j] == v >> 2 &&
                            uyvy[2 * w * r + j] == (v >> 2) + rounds)
                    << "level " << level << " sample " << v;
            }
    }
}

// The row packer on its own: separate pitches for luma and chroma, and an
// interleaved CbCr plane (step 2, Cr one byte after Cb) as NV12 has.
TEST(V210PackRows, SeparateAndInterleavedChroma) {
    CYCBCR_REQUIRE_AVX2();
    uint32_t seed = 77;
    for (unsigned step : {1u, 2u})
        for (uint32_t w : {1u, 6u, 7u, 13u, 47u, 49u, 97u})
            for (uint32_t h : {0u, 1u, 2u, 5u})
                for (uint32_t dp : {0u, row_bytes(w) + 48}) {
                    const uint32_t lp = w + 5, cp = step * (w / 2) + 9;
                    const Geometry g{w, h, dp, lp};
                    const size_t cb = size_t{h} * lp + 3, cr = step == 2 ? cb + 1 : cb + h * cp;
                    const auto src = random_bytes(cr + h * cp + 32 * w + 64, seed++);
                    V210Model want(random_bytes(h * std::max(dp, row_bytes(w)) + 16, seed++), src);
                    pack_rows(want, g, 0, cb, cr, lp, cp, step);
                    ASSERT_TRUE(matches(want,
                                        [&](uint8_t* d, const uint8_t* s) {
                                            return pack_v210_u8_rows_avx2(d, s, s + cb, s + cr, w,
                                                                          h, dp, lp, cp, step);
                                        }))
                        << "step " << step << ", " << g;
                }
}

// ---------------------------------------------------------------- SSSE3 row kernels

// Each is the scalar planar 4:2:2 unpacking of one row, cut to whole groups:
// ceil(pixels / 6) groups read, as many groups of Y, Cb and Cr written.
TEST(V210Ssse3, RowKernelsAreTheScalarPlanarUnpacking) {
    if (!__builtin_cpu_supports("ssse3")) GTEST_SKIP() << "processor without SSSE3";
    std::vector<uint32_t> counts;
    for (uint32_t n = 0; n <= 50; ++n) counts.push_back(n);
    counts.insert(counts.end(), {720, 1921});
    for (uint32_t px : counts) {
        const uint32_t groups = ceil_div(px, 6), R = round_up(px, 12);
        const auto row = random_bytes(row_bytes(px) + 16, px);
        std::vector<uint8_t> y8(R + 1), c8(R + 2);
        std::vector<uint16_t> y16(R + 1), c16(R + 2);
        Fromv210(y8.data(), c8.data(), c8.data() + R / 2 + 1, row.data(), px, 1, R, 0, 1, 1);
        Fromv210_16(y16.data(), c16.data(), c16.data() + R / 2 + 1, row.data(), px, 1, 2 * R, 0, 1,
                    1);
        // Offset 0: 16-byte aligned, the last group right before the guard page.
        // Otherwise the source starts `off` bytes earlier, off alignment.
        for (unsigned off : {0u, 1u, 4u, 9u})
            for (int kernel = 0; kernel < 4; ++kernel) {
                const bool aligned = kernel % 2 == 0, wide = kernel >= 2;
                if (aligned && off != 0) continue;
                GuardedBuffer src(16 * groups + off);
                std::copy_n(row.begin(), 16 * groups, src.data());
                ASSERT_EQ(reinterpret_cast<uintptr_t>(src.data()) % 16 != 0, off != 0);
                const size_t bps = wide ? 2 : 1;
                GuardedBuffer y(6 * groups * bps), cb(3 * groups * bps), cr(3 * groups * bps);
                using K8 = void (*)(const uint8_t*, uint8_t*, uint8_t*, uint8_t*, unsigned);
                using K16 = void (*)(const uint8_t*, uint16_t*, uint16_t*, uint16_t*, unsigned);
                const K8 k8[] = {qb_v210_planar_unpack_aligned_ssse3,
                                 qb_v210_planar_unpack_unaligned_ssse3};
                const K16 k16[] = {qb_v210_planar16_unpack_aligned_ssse3,
                                   qb_v210_planar16_unpack_unaligned_ssse3};
                if (wide)
                    k16[!aligned](src.data(), reinterpret_cast<uint16_t*>(y.data()),
                                  reinterpret_cast<uint16_t*>(cb.data()),
                                  reinterpret_cast<uint16_t*>(cr.data()), px);
                else
                    k8[!aligned](src.data(), y.data(), cb.data(), cr.data(), px);
                const auto* wy = wide ? reinterpret_cast<const uint8_t*>(y16.data()) : y8.data();
                const auto* wc = wide ? reinterpret_cast<const uint8_t*>(c16.data()) : c8.data();
                const size_t crAt = (R / 2 + 1) * bps;
                ASSERT_TRUE(std::equal(y.data(), y.data() + y.size(), wy) &&
                            std::equal(cb.data(), cb.data() + cb.size(), wc) &&
                            std::equal(cr.data(), cr.data() + cr.size(), wc + crAt) &&
                            y.slack_intact() && cb.slack_intact() && cr.slack_intact())
                    << "kernel " << kernel << " pixels " << px << " offset " << off;
            }
    }
}

// ---------------------------------------------------------------- FFmpeg as the oracle

#ifdef CYCBCR_TEST_WITH_FFMPEG

// The 4:2:2 picture an 8-bit frame of format f holds (samples as they are):
// packed rows `pitch` apart, cyuv bottom row first; planes placed by `pitch`
// with rows lumaStep and chromaStep bytes apart, 4:2:0 chroma row r / 2 for row r.
Frame422 picture_of(Fmt f, const std::vector<uint8_t>& buf, uint32_t w, uint32_t h, uint32_t pitch,
                    uint32_t lumaStep, uint32_t chromaStep) {
    const Layout L = layout_of(f, pitch, h);
    Frame422 out{w, h, {}, {}, {}};
    for (uint32_t r = 0; r < h; ++r) {
        const size_t row =
            L.planar ? size_t{r} * lumaStep : size_t{f == Fmt::CYUV ? h - 1 - r : r} * pitch;
        const size_t c = L.planar ? size_t{L.full ? r : r / 2} * chromaStep : row;
        for (uint32_t x = 0; x < w; ++x)
            out.y.push_back(buf.at(L.y + row + (L.planar ? x : 2 * x)));
        for (uint32_t k = 0; k < w / 2; ++k) {
            out.cb.push_back(buf.at(L.cb + c + (L.planar ? k : 4 * k)));
            out.cr.push_back(buf.at(L.cr + c + (L.planar ? k : 4 * k)));
        }
    }
    return out;
}

struct Shape {
    uint32_t w, h;
};
// FFmpeg decodes in slices of four rows: four rows at least. 40 ends inside a
// group (as FFmpeg's rows may), 36 and 42 are multiples of 6 but not of 48.
const Shape kShapes[] = {{48, 4}, {36, 5}, {42, 6}, {40, 4}, {720, 4}, {1920, 4}};
const std::pair<Fmt, Converter> kPackers[] = {
    {Fmt::YUY2, cycbcr_yuy2_to_012v}, {Fmt::YVYU, cycbcr_yvyu_to_012v},
    {Fmt::UYVY, cycbcr_uyvy_to_012v}, {Fmt::CYUV, cycbcr_cyuv_to_012v},
    {Fmt::I420, cycbcr_i420_to_012v}, {Fmt::YV12, cycbcr_yv12_to_012v},
    {Fmt::P422, cycbcr_p422_to_012v}};
const std::pair<Fmt, Converter> kUnpackers[] = {
    {Fmt::YUY2, cycbcr_012v_to_yuy2}, {Fmt::YVYU, cycbcr_012v_to_yvyu},
    {Fmt::UYVY, cycbcr_012v_to_uyvy}, {Fmt::CYUV, cycbcr_012v_to_cyuv},
    {Fmt::I420, cycbcr_012v_to_i420}, {Fmt::YV12, cycbcr_012v_to_yv12},
    {Fmt::P422, cycbcr_012v_to_p422}};

// FFmpeg decodes what the packers write as the source's samples << 2.
TEST(V210Ffmpeg, FfmpegReadsWhatThePackersWrite) {
    for (const Shape s : kShapes)
        for (const auto& [fmt, fn] : kPackers) {
            const bool planar = layout_of(fmt, 0, 0).planar;
            // Packed rows run on at 2 * width when the width ends inside a group: pad those.
            const uint32_t sp = planar ? s.w : s.w % 6 ? 2 * s.w + 8 : 2 * s.w;
            const auto src = random_bytes(size_t{3} * s.h * sp + 64, s.w + int(fmt));
            const Frame422 want = picture_of(fmt, src, s.w, s.h, sp, planar ? s.w : sp, s.w / 2);
            for (unsigned level : {0u, 5u}) {
                cycbcr_set_cpu(level);
                std::vector<uint8_t> v210(size_t{row_bytes(s.w)} * s.h);
                fn(v210.data(), src.data(), s.w, s.h, row_bytes(s.w), sp);
                const Frame422 got = ffmpeg_v210_decode(v210, s.w, s.h);
                ASSERT_EQ(got.y.size(), want.y.size()) << "FFmpeg refused width " << s.w;
                for (auto plane : {&Frame422::y, &Frame422::cb, &Frame422::cr})
                    for (size_t i = 0; i < (want.*plane).size(); ++i)
                        ASSERT_EQ((got.*plane)[i], (want.*plane)[i] << 2)
                            << "format " << int(fmt) << " level " << level << " width " << s.w
                            << " at " << i;
            }
        }
}

// FFmpeg's frames come out truncated (v >> 2; UYVY rounded, (v + 2) >> 2), 4:2:0
// chroma from each odd row, and as v << 6 in 16-bit planes.
TEST(V210Ffmpeg, UnpackersReadFfmpegFrames) {
    for (const Shape s : kShapes) {
        // The encoder keeps samples to 4..1019; staying inside keeps its clipping out.
        const Frame422 f = random_frame422(s.w, s.h, 4, 1019, s.w);
        const std::vector<uint8_t> v210 = ffmpeg_v210_encode(f);
        const uint32_t R = round_up(s.w, 12);
        ASSERT_EQ(v210.size(), size_t{row_bytes(s.w)} * s.h);
        for (unsigned level : {0u, 5u}) {
            cycbcr_set_cpu(level);
            for (const auto& [fmt, fn] : kUnpackers) {
                // A pitch of 2 * R keeps an odd height's last Cb row off the Cr plane.
                const bool full = fmt != Fmt::I420 && fmt != Fmt::YV12;
                const uint32_t dp = 2 * R, add = fmt == Fmt::UYVY ? 2 : 0;
                std::vector<uint8_t> out(size_t{2} * s.h * dp + 2 * R);
                fn(out.data(), v210.data(), s.w, s.h, dp, row_bytes(s.w));
                const Frame422 got = picture_of(fmt, out, s.w, s.h, dp, dp, dp / 2);
                for (uint32_t r = 0; r < s.h; ++r) {
                    const uint32_t cr = full ? r : std::min(r | 1, s.h - 1);
                    for (uint32_t x = 0; x < s.w; ++x)
                        ASSERT_EQ(got.Y(r, x), (f.Y(r, x) + add) >> 2)
                            << "format " << int(fmt) << " row " << r;
                    for (uint32_t k = 0; k < s.w / 2; ++k)
                        ASSERT_TRUE(got.Cb(r, k) == (f.Cb(cr, k) + add) >> 2 &&
                                    got.Cr(r, k) == (f.Cr(cr, k) + add) >> 2)
                            << "format " << int(fmt) << " level " << level << " row " << r;
                }
            }
            const uint32_t dp = 2 * R;  // 16-bit planes
            std::vector<uint16_t> out(size_t{s.h} * dp);
            uint16_t *y = out.data(), *cb = y + s.h * R, *cr = cb + s.h * R / 2;
            EXPECT_EQ(cycbcr_012v_to_planar422_16(y, cb, cr, v210.data(), s.w, s.h, dp, 0),
                      s.w * s.h * 4);
            for (uint32_t r = 0; r < s.h; ++r) {
                for (uint32_t x = 0; x < s.w; ++x) ASSERT_EQ(y[r * R + x], f.Y(r, x) << 6);
                for (uint32_t k = 0; k < s.w / 2; ++k)
                    ASSERT_TRUE(cb[r * R / 2 + k] == f.Cb(r, k) << 6 &&
                                cr[r * R / 2 + k] == f.Cr(r, k) << 6)
                        << "level " << level << " row " << r;
            }
        }
    }
}

#endif  // CYCBCR_TEST_WITH_FFMPEG

}  // namespace
