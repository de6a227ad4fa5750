// Packed 4:2:2 <-> planar I420, YV12, P422: every wrapper and AVX2 form against a
// byte model of the row rules, between guard pages; which path each level takes
// and what each path returns; small frames whose rows carry their own numbers;
// the field-exchanging engines; and libyuv wherever its rules and ours coincide.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/byte_model.h"
#include "support/converters.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

#ifdef CYCBCR_HAVE_LIBYUV
#include <libyuv.h>
#endif

using namespace cycbcr_test;

namespace {

uint32_t engine_count(uint32_t dstPitch, uint32_t height) {
    const uint32_t luma = dstPitch * height;
    return luma + ((luma / 2) & ~1u);
}

// Packed to planar: width / 2 pairs a row, an odd last pixel dropped. The engine
// (runOn) continues each row from the previous row's last pair when srcPitch is
// exactly 2 * width; the imaging library starts every row at i * srcPitch. 4:2:0
// chroma comes from source rows 0, 3, 4, 7, ... into chroma row i / 2.
void to_planar(ByteModel& m, Fmt pk, Fmt pl, const Geometry& g, bool runOn) {
    const Layout o = layout_of(pk, 0, 0), p = layout_of(pl, g.dstPitch, g.height);
    const bool p422 = pl == Fmt::P422;
    const size_t pairs = g.width / 2, cp = g.dstPitch / 2;
    const size_t step = runOn && g.srcPitch == 2 * g.width ? 4 * pairs : g.srcPitch;
    for (size_t i = 0; i < g.height; ++i) {
        const size_t c = (p422 ? i : i / 2) * cp;
        const bool chroma = p422 || i % 4 == 0 || i % 4 == 3;
        for (size_t k = 0; k < pairs; ++k) {
            const size_t in = i * step + 4 * k, y = p.y + i * g.dstPitch + 2 * k;
            m.s(in + 3);  // the whole pair belongs to the frame
            m.d(y) = m.s(in + o.y);
            m.d(y + 1) = m.s(in + o.y + 2);
            if (!chroma) continue;
            m.d(p.cb + c + k) = m.s(in + o.cb);
            m.d(p.cr + c + k) = m.s(in + o.cr);
        }
    }
    if (pk != Fmt::CYUV) return;
    m.flip(p.y, g.dstPitch, g.height);
    m.flip(p.cb, cp, p422 ? g.height : g.height / 2);
    m.flip(p.cr, cp, p422 ? g.height : g.height / 2);
}

// Planar (placed by width * height) to packed. The engine writes ceil(width / 2)
// pairs, runs the Y rows on when width == srcPitch, takes 4:2:0 chroma row
// 2 * (i / 4) + i % 2 and runs P422 chroma on by the pairs of a row. The imaging
// library writes width / 2 pairs of the even rows (4:2:2: all rows), chroma row
// i / 2 (4:2:2: i) at srcPitch / 2, and nothing when it refuses the frame.
void from_planar(ByteModel& m, Fmt pl, Fmt pk, const Geometry& g, bool imaging) {
    const Layout o = layout_of(pk, 0, 0), p = layout_of(pl, g.width, g.height);
    const bool p422 = pl == Fmt::P422;
    const size_t cp = g.srcPitch / 2;
    size_t rows = g.height, pairs = (g.width + 1) / 2;
    size_t ystep = g.width == g.srcPitch ? 2 * pairs : g.srcPitch;
    if (imaging) {
        const bool ok = g.width >= 2 && g.height >= (p422 ? 1u : 2u) && cp > 0 && g.dstPitch > 0;
        rows = !ok ? 0 : p422 ? g.height : g.height & ~1u;
        pairs = g.width / 2;
        ystep = g.srcPitch;
    }
    for (size_t i = 0; i < rows; ++i) {
        const size_t c = imaging ? (p422 ? i : i / 2) * cp
                         : p422  ? i * pairs
                                 : (2 * (i / 4) + i % 2) * cp;
        for (size_t k = 0; k < pairs; ++k) {
            const size_t out = i * g.dstPitch + 4 * k, y = i * ystep + 2 * k;
            m.d(out + o.y) = m.s(y);
            m.d(out + o.cb) = m.s(p.cb + c + k);
            m.d(out + o.y + 2) = m.s(y + 1);
            m.d(out + o.cr) = m.s(p.cr + c + k);
        }
    }
    if (pk == Fmt::CYUV) m.flip(0, g.dstPitch, g.height);
}

enum class Path { Engine, Imaging, Avx2 };

// Every packed <-> planar converter of the library's list, with its AVX2 form.
struct Wrapper {
    Listed c;
    Fmt pk, pl;
    bool toPlanar;
};
std::vector<Wrapper> wrappers() {
    std::vector<Wrapper> out;
    for (const Listed& l : listed_where([](const Listed& l) {
             return l.pair && cycbcr::is_packed422(l.from) != cycbcr::is_packed422(l.to) &&
                    l.from != Fmt::V210 && l.to != Fmt::V210 &&
                    l.from != Fmt::NV12;  // semi_planar_test
         })) {
        const bool toPlanar = cycbcr::is_packed422(l.from);
        out.push_back({l, toPlanar ? l.from : l.to, toPlanar ? l.to : l.from, toPlanar});
    }
    return out;
}

Path path_at(const Wrapper& w, uint32_t level, const Geometry& g) {
    if (level == 5 && have_avx2()) return Path::Avx2;
    // UYVY output goes to the imaging library at every other level.
    if (!w.toPlanar) return w.pk == Fmt::UYVY || w.pk == Fmt::CYUV ? Path::Imaging : Path::Engine;
    // The UYVY and YUY2 to P422 wrappers try it above level 3 and fall back to the
    // engine when it refuses the frame.
    const bool tries = w.pl == Fmt::P422 && (w.pk == Fmt::UYVY || w.pk == Fmt::YUY2) && level > 3;
    const bool accepted = g.width >= 2 && g.height >= 1 && g.srcPitch > 0 && g.dstPitch / 2 > 0;
    return tries && accepted ? Path::Imaging : Path::Engine;
}

ByteModel expected(const Wrapper& w, Path path, const Geometry& g, const std::vector<uint8_t>& src,
                   const std::vector<uint8_t>& init) {
    ByteModel m{init, src};
    m.result = g.dstPitch * g.height;
    if (!w.toPlanar) {
        from_planar(m, w.pl, w.pk, g, path == Path::Imaging);
    } else {
        to_planar(m, w.pk, w.pl, g, path != Path::Imaging);
        if (path == Path::Engine) m.result = engine_count(g.dstPitch, g.height);
        if (path == Path::Avx2) m.result = (g.height * g.dstPitch * 3) / 2;
    }
    return m;
}

// Widths at every residue of the 16-pair step of the AVX2 forms and past it, odd
// ones among them; heights 0, 1, odd, and one whole 4:2:0 field cycle; pitches
// tight (the run-on cases), odd and padded.
std::vector<Geometry> geometries(bool toPlanar) {
    std::vector<Geometry> out;
    std::vector<uint32_t> widths;
    for (uint32_t w = 0; w <= 34; ++w) widths.push_back(w);
    for (uint32_t w : {63u, 64u, 65u, 95u, 97u, 130u, 131u}) widths.push_back(w);
    for (uint32_t w : widths) {
        const uint32_t q = 4 * ((w + 1) / 2);  // bytes of a packed row written from planes
        const uint32_t pitches[3][2] = {{w, 2 * w}, {w + 3, 2 * w + 6}, {w + 32, 2 * w + 1}};
        const uint32_t back[3][2] = {{q, w}, {q + 6, w + 5}, {2 * w + 33, w + 32}};
        for (uint32_t h :
             w <= 34 ? std::vector<uint32_t>{0, 1, 2, 3, 5, 8} : std::vector<uint32_t>{4, 7})
            for (const auto& p : toPlanar ? pitches : back) out.push_back({w, h, p[0], p[1]});
    }
    return out;
}

void PrintTo(const Wrapper& w, std::ostream* os) {
    *os << w.c.name;
}

class PackedPlanarWrapper : public ::testing::TestWithParam<Wrapper> {};

// Levels 0, 3, 4, 5 and 6 through the wrapper, then the _avx2 name called
// directly. (The UYVY and YUY2 to P422 wrappers try the imaging library from level
// 4 on and fall back to the engine where it refuses the frame, width 1 among them;
// YVYU to P422 never tries it.)
TEST_P(PackedPlanarWrapper, MatchesModelOnEachPathWithinExactBounds) {
    const Wrapper& w = GetParam();
    uint32_t seed = 1;
    for (const Geometry& g : geometries(w.toPlanar)) {
        const size_t bound = 3 * (g.height + 2) * (g.srcPitch + g.dstPitch + g.width + 8);
        const auto src = random_bytes(bound, seed++);
        const auto init = random_bytes(bound, seed++);
        for (uint32_t run = 0; run < 6; ++run) {
            const bool direct = run == 5;
            if (direct && !have_avx2()) break;
            gdwProcType = std::array<uint32_t, 6>{0, 3, 4, 5, 6, 0}[run];
            const Path path = direct ? Path::Avx2 : path_at(w, gdwProcType, g);
            ASSERT_TRUE(matches(expected(w, path, g, src, init), direct ? w.c.avx2 : w.c.fn, g))
                << (direct ? "_avx2 " : "level ") << gdwProcType << ", " << g;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, PackedPlanarWrapper, ::testing::ValuesIn(wrappers()),
                         [](const auto& info) { return short_name(info.param.c.name); });

// One pair a row, Cb = row, Cr = 0x80 + row. UYVY to I420, height 8: chroma rows
// 0 to 3 come from source rows 0, 3, 4, 7 on every path, and the same picture
// stored bottom-up as cyuv gives the same planes. Back from I420, rows 0 and 2
// take chroma row 0, rows 1 and 3 row 1, rows 4 and 6 row 2, rows 5 and 7 row 3;
// UYVY output below level 5 goes to the imaging library: row y, chroma row y / 2.
TEST(PackedPlanarRows, FourTwoZeroChromaRowsByField) {
    const uint32_t w = 2, h = 8;
    std::vector<uint8_t> uyvy, cyuv(4 * h);
    for (uint32_t i = 0; i < h; ++i) uyvy.insert(uyvy.end(), {uint8_t(i), 1, uint8_t(0x80 + i), 2});
    for (uint32_t i = 0; i < h; ++i) std::copy_n(&uyvy[4 * i], 4, &cyuv[4 * (h - 1 - i)]);
    const std::vector<uint8_t> chroma = {0, 3, 4, 7, 0x80, 0x83, 0x84, 0x87};
    const uint8_t field[] = {0, 1, 0, 1, 2, 3, 2, 3}, pairsOfRows[] = {0, 0, 1, 1, 2, 2, 3, 3};
    std::vector<uint8_t> i420(16, 0x40);
    i420.insert(i420.end(), {0x10, 0x11, 0x12, 0x13, 0x90, 0x91, 0x92, 0x93});
    for (uint32_t level : {0u, 5u}) {
        gdwProcType = level;
        for (const Converter fn : {cycbcr_uyvy_to_i420, cycbcr_cyuv_to_i420}) {
            const auto& src = fn == cycbcr_uyvy_to_i420 ? uyvy : cyuv;
            std::vector<uint8_t> out(24);
            fn(out.data(), src.data(), w, h, w, 2 * w);
            EXPECT_EQ(std::vector<uint8_t>(out.begin() + 16, out.end()), chroma) << level;
        }
        std::vector<uint8_t> yuy2(4 * h), out(4 * h);
        EXPECT_EQ(cycbcr_i420_to_yuy2(yuy2.data(), i420.data(), w, h, 2 * w, w), 4 * h);
        EXPECT_EQ(cycbcr_i420_to_uyvy(out.data(), i420.data(), w, h, 2 * w, w), 4 * h);
        const uint8_t* uyvyRows = level == 5 && have_avx2() ? field : pairsOfRows;
        for (uint32_t i = 0; i < h; ++i) {
            EXPECT_TRUE(yuy2[4 * i + 1] == 0x10 + field[i] && yuy2[4 * i + 3] == 0x90 + field[i])
                << "level " << level << " row " << i;
            EXPECT_TRUE(out[4 * i] == 0x10 + uyvyRows[i] && out[4 * i + 2] == 0x90 + uyvyRows[i])
                << "level " << level << " row " << i;
        }
    }
}

// Rows that run on: YUY2 width 5 at srcPitch 10 reads its second row from byte 8
// (12 at srcPitch 12).
TEST(PackedPlanarRows, PitchContinuation) {
    std::vector<uint8_t> src(64);
    for (size_t i = 0; i < src.size(); ++i) src[i] = uint8_t(i);
    for (uint32_t level : {0u, 5u}) {
        gdwProcType = level;
        for (const auto& [sp, from] : {std::pair{10u, 8u}, std::pair{12u, 12u}}) {
            std::vector<uint8_t> out(24, 0xEE);
            cycbcr_yuy2_to_i420(out.data(), src.data(), 5, 2, 6, sp);
            EXPECT_EQ((std::vector<uint8_t>(out.begin() + 6, out.begin() + 11)),
                      (std::vector<uint8_t>{uint8_t(from), uint8_t(from + 2), uint8_t(from + 4),
                                            uint8_t(from + 6), 0xEE}))
                << "level " << level << " srcPitch " << sp;
        }
    }
}

// cycbcr_toplanar hands UYVY-shaped frames whose planes lie where a destination's
// planes lie to the AVX2 forms at level 5, seen in the count: with dstPitch *
// height = 15 the engine returns 21, the AVX2 forms 22.
TEST(PackedPlanarPaths, ToplanarHandOffAtLevel5) {
    CYCBCR_REQUIRE_AVX2();
    const auto src = random_bytes(24, 5);
    std::vector<uint8_t> dst(48);
    const uint8_t* p = src.data();
    auto call = [&](auto fn, size_t y, size_t cb, size_t cr, size_t dcb, size_t dcr,
                    uint32_t mode) {
        return fn(p + y, p + cb, p + cr, dst.data(), dst.data() + dcb, dst.data() + dcr, 4, 3, 5, 8,
                  mode);
    };
    gdwProcType = 5;
    EXPECT_EQ(call(cycbcr_toplanar, 1, 0, 2, 15, 18, 0), 22u) << "I420 planes";
    EXPECT_EQ(call(cycbcr_toplanar, 1, 0, 2, 18, 15, 0), 22u) << "YV12 planes";
    EXPECT_EQ(call(cycbcr_toplanar, 1, 0, 2, 15, 22, 1), 22u) << "P422 planes";
    EXPECT_EQ(call(cycbcr_toplanar, 1, 0, 2, 16, 19, 0), 21u) << "planes elsewhere";
    EXPECT_EQ(call(cycbcr_toplanar, 0, 1, 3, 15, 18, 0), 21u) << "YUY2 shape";
    EXPECT_EQ(call(cycbcr_toplanar_sse2, 1, 0, 2, 15, 18, 0), 21u) << "never hands off";
    gdwProcType = 0;
    EXPECT_EQ(call(cycbcr_toplanar, 1, 0, 2, 15, 18, 0), 21u);
}

// The engines choose a processor level first when none is chosen yet.
TEST(PackedPlanarPaths, EnginesChooseALevelFirst) {
    const uint32_t chosen = cycbcr_set_cpu(5);
    std::vector<uint8_t> a(64), b(64);
    const uint8_t* s = a.data();
    uint8_t* d = b.data();
    for (const auto fn :
         {cycbcr_toplanar, cycbcr_toplanar_sse2, cycbcr_fromplanar, cycbcr_toplanar_fieldinvert}) {
        gdwProcType = kLevelMarker;
        fn(s + 1, s, s + 2, d, d + 8, d + 10, 4, 2, 4, 8, 0);
        EXPECT_EQ(gdwProcType, chosen);
    }
}

// cycbcr_fromplanar with UYVY output: at level 5 contiguous I420 (or YV12) planes
// go to the AVX2 form (field rows 0, 1, 0, 1), anything else to the imaging
// library (rows 0, 0, 1, 1). P422 at srcPitch placement, odd width: the AVX2
// form writes a last whole pair, the library leaves the odd pixel alone.
TEST(PackedPlanarPaths, FromplanarUyvyGoesToAvx2OrTheImagingLibrary) {
    static const uint8_t kField[] = {0, 1, 0, 1}, kRowPairs[] = {0, 0, 1, 1};
    std::vector<uint8_t> planes(16);
    for (size_t i = 0; i < planes.size(); ++i) planes[i] = uint8_t(0x40 + i);
    const uint8_t* y = planes.data();
    for (uint32_t level : {0u, 5u}) {
        gdwProcType = level;
        const bool avx2 = level == 5 && have_avx2();
        const struct {
            size_t cb, cr;
            bool contiguous;
        } cases[] = {{8, 10, true}, {10, 8, true}, {9, 11, false}};
        for (const auto& c : cases) {
            std::vector<uint8_t> out(16);
            cycbcr_fromplanar(y, y + c.cb, y + c.cr, out.data() + 1, out.data(), out.data() + 2, 2,
                              4, 4, 2, 0);
            const uint8_t* rows = avx2 && c.contiguous ? kField : kRowPairs;
            for (size_t i = 0; i < 4; ++i) {
                EXPECT_EQ(out[4 * i], y[c.cb + rows[i]]) << "level " << level << " row " << i;
                EXPECT_EQ(out[4 * i + 2], y[c.cr + rows[i]]) << "level " << level << " row " << i;
            }
        }
        std::vector<uint8_t> out(16, 0xEE);
        EXPECT_EQ(cycbcr_fromplanar(y, y + 6, y + 9, out.data() + 1, out.data(), out.data() + 2, 3,
                                    2, 8, 3, 1),
                  16u);
        EXPECT_EQ(out[4] != 0xEE, avx2) << "level " << level;
    }
}

// The field-exchanging engines: source row 2k goes to row 2k + 1 and back, so an
// odd height writes one row past the frame. Planar to packed runs its chroma on
// from row to row (mode 2: every other chroma byte; mode 0: back to chroma row
// (i - 1) / 2 on odd rows, one sample per two pairs); packed to planar writes
// each pair's chroma to chroma row i / 2 (mode 0: even source rows only).
void fromplanar_fieldinvert_model(ByteModel& m, Layout s, Layout o, const Geometry& g,
                                  uint32_t mode) {
    mode &= 0xF;
    const size_t pairs = (g.width + 1) / 2, step = mode == 2 ? 2 : 1;
    const size_t ystep = g.width == g.srcPitch ? 2 * pairs : g.srcPitch;
    size_t c = 0;
    for (size_t i = 0; i < g.height; ++i) {
        if (mode == 0 && i % 2 == 1) c = (i - 1) / 2 * (g.srcPitch / 2);
        for (size_t k = 0; k < pairs; ++k) {
            const size_t out = (i ^ 1) * g.dstPitch + 4 * k, y = s.y + i * ystep + 2 * k;
            m.d(out + o.y) = m.s(y);
            m.d(out + o.cb) = m.s(s.cb + c);
            m.d(out + o.y + 2) = m.s(y + 1);
            m.d(out + o.cr) = m.s(s.cr + c);
            if (mode != 0 || k % 2 == 1) c += step;
        }
    }
}

void toplanar_fieldinvert_model(ByteModel& m, Layout o, Layout p, const Geometry& g,
                                uint32_t mode) {
    const size_t pairs = g.width / 2;
    const size_t step = g.srcPitch == 2 * g.width ? 4 * pairs : g.srcPitch;
    for (size_t i = 0; i < g.height; ++i)
        for (size_t k = 0; k < pairs; ++k) {
            const size_t in = i * step + 4 * k, y = p.y + (i ^ 1) * g.dstPitch + 2 * k;
            const size_t c = i / 2 * (g.dstPitch / 2) + k;
            m.s(in + 3);
            m.d(y) = m.s(in + o.y);
            m.d(y + 1) = m.s(in + o.y + 2);
            if (mode != 0 || i % 2 == 0) {
                m.d(p.cb + c) = m.s(in + o.cb);
                m.d(p.cr + c) = m.s(in + o.cr);
            }
        }
}

TEST(FieldInvert, BothEnginesMatchModelWithinExactBounds) {
    uint32_t seed = 40;
    for (uint32_t w : {0u, 1u, 2u, 3u, 5u, 8u, 33u, 40u})
        for (uint32_t h : {0u, 1u, 2u, 3u, 5u})
            for (uint32_t pad : {0u, 6u})
                for (Fmt pk : {Fmt::YUY2, Fmt::UYVY})
                    for (uint32_t mode : {0u, 1u, 2u, 0x10u, 0x21u})
                        for (bool toPacked : {true, false}) {
                            // Planes at 0, area and 2 * area; the guard page after the packed side.
                            const size_t area = size_t{h + 2} * (3 * w + pad + 8);
                            const Layout o = layout_of(pk, 0, 0), p{0, area, 2 * area, true, false};
                            const auto src = random_bytes(3 * area, seed++);
                            const Geometry g = toPacked ? Geometry{w, h, 2 * w + 2 + pad, w + pad}
                                                        : Geometry{w, h, w + pad, 2 * w + pad};
                            ByteModel m{random_bytes(3 * area, seed++), src};
                            if (toPacked) {
                                fromplanar_fieldinvert_model(m, p, o, g, mode);
                                m.result = h * g.dstPitch;
                                m.srcEnd = std::max(m.srcEnd, p.cr);
                            } else {
                                toplanar_fieldinvert_model(m, o, p, g, mode);
                                m.result = engine_count(g.dstPitch, h);
                                m.dstEnd = std::max(m.dstEnd, p.cr);
                            }
                            const Layout from = toPacked ? p : o, to = toPacked ? o : p;
                            const auto fn = toPacked ? cycbcr_fromplanar_fieldinvert
                                                     : cycbcr_toplanar_fieldinvert;
                            EXPECT_TRUE(matches(m,
                                                [&](uint8_t* d, const uint8_t* s) {
                                                    return fn(s + from.y, s + from.cb, s + from.cr,
                                                              d + to.y, d + to.cb, d + to.cr, w, h,
                                                              g.dstPitch, g.srcPitch, mode);
                                                }))
                                << (toPacked ? "to packed" : "to planar") << " mode " << mode
                                << ", " << g;
                        }
}

#ifdef CYCBCR_HAVE_LIBYUV
// libyuv moves whole pairs between packed 4:2:2 and I422 and repeats each chroma
// row for two rows in I420 to UYVY: for even sizes our rules say the same, with
// P422 chroma rows of width / 2 on the engine's side and srcPitch / 2 on the
// imaging library's.
TEST(PackedPlanarLibyuv, AgreesWhereTheRulesCoincide) {
    uint32_t seed = 90;
    for (uint32_t level : {0u, 4u, 5u})
        for (uint32_t w : {2u, 6u, 32u, 34u, 64u, 130u, 720u})
            for (uint32_t h : {1u, 2u, 6u})
                for (uint32_t pad : {0u, 6u}) {
                    gdwProcType = level;
                    const bool avx2 = level == 5 && have_avx2();
                    const uint32_t sp = 2 * w + pad, dp = w + pad, d = dp * h;
                    const auto packed = random_bytes(size_t{sp} * h, seed++);
                    using ToI422 = int (*)(const uint8_t*, int, uint8_t*, int, uint8_t*, int,
                                           uint8_t*, int, int, int);
                    for (const auto& [ours, lib] :
                         {std::pair<Converter, ToI422>{cycbcr_uyvy_to_p422, libyuv::UYVYToI422},
                          {cycbcr_yuy2_to_p422, libyuv::YUY2ToI422}}) {
                        std::vector<uint8_t> a(2 * size_t{d}), b(a.size());
                        ours(a.data(), packed.data(), w, h, dp, sp);
                        lib(packed.data(), sp, b.data(), dp, b.data() + d, dp / 2,
                            b.data() + d + d / 2, dp / 2, w, h);
                        EXPECT_TRUE(same_bytes(a, b)) << "level " << level << " width " << w;
                    }
                    const uint32_t psp = w + pad, area = w * h;
                    const auto planar = random_bytes(3 * size_t{psp} * h, seed++);
                    const uint8_t* y = planar.data();
                    using FromI4xx = int (*)(const uint8_t*, int, const uint8_t*, int,
                                             const uint8_t*, int, uint8_t*, int, int, int);
                    const struct {
                        Converter ours;
                        FromI4xx lib;
                        size_t u, v;
                        int stride;
                        bool run;
                    } cases[] = {
                        {cycbcr_p422_to_yuy2, libyuv::I422ToYUY2, area, area + area / 2, int(w / 2),
                         true},
                        {cycbcr_p422_to_uyvy, libyuv::I422ToUYVY, area, area + area / 2,
                         int(avx2 ? w / 2 : psp / 2), true},
                        {cycbcr_i420_to_uyvy, libyuv::I420ToUYVY, area, area + area / 4,
                         int(psp / 2), !avx2 && h % 2 == 0},
                        {cycbcr_yv12_to_uyvy, libyuv::I420ToUYVY, area + area / 4, area,
                         int(psp / 2), !avx2 && h % 2 == 0},
                    };
                    for (const auto& c : cases) {
                        if (!c.run) continue;
                        std::vector<uint8_t> a(size_t{sp} * h), b(a.size());
                        c.ours(a.data(), y, w, h, sp, psp);
                        c.lib(y, psp, y + c.u, c.stride, y + c.v, c.stride, b.data(), sp, w, h);
                        EXPECT_TRUE(same_bytes(a, b)) << "level " << level << " width " << w
                                                      << " height " << h << " pad " << pad;
                    }
                }
}
#endif

}  // namespace
