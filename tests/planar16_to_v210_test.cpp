// High-bit-depth planar into v210: worked samples, every converter and path
// against a model that builds the expected frame sample by sample, run between
// guard pages at the sizes the buffer-size query answers; the AVX2 forms at
// every width residue of their twelve-pixel step; the row bands (thresholds,
// band rules, short frames, the count); FFmpeg's v210 encoder as an
// independent writer of the 4:2:2 10-bit layout.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

#ifdef CYCBCR_TEST_WITH_FFMPEG
#include "support/ffmpeg_v210.h"
#endif

using namespace cycbcr_test;

namespace {

using Fn = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, unsigned int,
                            unsigned int, unsigned int, unsigned int);

enum class Sub { S422, S444, S420 };

struct Kind {
    std::string name;
    Fn entry, avx2, internal;  // internal: null for the converters without bands
    unsigned depth;            // 10, 12 or 16
    Sub sub;
    unsigned step;    // pixels per step of the plain code
    bool extra;       // the two words after a row of width % 6 != 0
    uint32_t widest;  // banded above this width (0: never)
    bool eightEqual;  // bands of height / 8 rows only
};

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> k = {
        {"cycbcr_yuv422p10_to_012v", cycbcr_yuv422p10_to_012v, cycbcr_yuv422p10_to_012v_avx2,
         cycbcr_yuv422p10_to_012v_internal, 10, Sub::S422, 6, true, 2048, false},
        {"cycbcr_yuv422p12_to_012v", cycbcr_yuv422p12_to_012v, cycbcr_yuv422p12_to_012v_avx2,
         cycbcr_yuv422p12_to_012v_internal, 12, Sub::S422, 6, true, 1920, true},
        {"cycbcr_yuv422p16_to_012v", cycbcr_yuv422p16_to_012v, cycbcr_yuv422p16_to_012v_avx2,
         nullptr, 16, Sub::S422, 6, false, 0, false},
        {"cycbcr_yuv444p10_to_012v", cycbcr_yuv444p10_to_012v, cycbcr_yuv444p10_to_012v_avx2,
         nullptr, 10, Sub::S444, 6, false, 0, false},
        {"cycbcr_yuv444p12_to_012v", cycbcr_yuv444p12_to_012v, cycbcr_yuv444p12_to_012v_avx2,
         cycbcr_yuv444p12_to_012v_internal, 12, Sub::S444, 6, false, 2048, false},
        {"cycbcr_yuv420p10_to_012v", cycbcr_yuv420p10_to_012v, cycbcr_yuv420p10_to_012v_avx2,
         nullptr, 10, Sub::S420, 6, false, 0, false},
        {"cycbcr_yuv420p16_to_012v", cycbcr_yuv420p16_to_012v, cycbcr_yuv420p16_to_012v_avx2,
         nullptr, 16, Sub::S420, 12, false, 0, false},
    };
    return k;
}

struct Geo {
    uint32_t w, h, dp, sp;
};
std::ostream& operator<<(std::ostream& os, const Geo& g) {
    return os << g.w << "x" << g.h << " dstPitch " << g.dp << " srcPitch " << g.sp;
}

uint32_t div_up(uint32_t a, uint32_t b) {
    return (a + b - 1) / b;
}
uint32_t v210_row(uint32_t w) {
    return div_up(w, 48) * 128;
}

// The source planes; plane i of a call is what pointer argument i + 1 reaches.
struct Planes {
    std::array<std::vector<uint8_t>, 3> p;
};

Planes random_planes(uint32_t seed, size_t room) {
    Planes s;
    for (int i = 0; i < 3; ++i) s.p[i] = random_bytes(room, seed + 17 * i);
    return s;
}

// The model's result: the destination after the call, how far the call reaches
// into each buffer (dst, Y, Cb, Cr) and the count.
struct Expected {
    std::vector<uint8_t> dst;
    std::array<size_t, 4> reach{};
    unsigned int result = 0;
};

uint32_t to10(unsigned depth, uint32_t v) {
    if (depth == 10) return v % 1024;
    if (depth == 12) return (v / 4) % 1024;
    return v / 64;
}

// The converter on rows [first, first + rows) of the frame, as the rules say:
// rows are max(v210 row, dstPitch) apart; groups of six pixels (twelve for the
// 16-bit 4:2:0 converter) built from whatever samples follow the row; chroma
// per pair (4:4:4: its left pixel), chroma rows half the Y pitch apart (4:4:4:
// the whole pitch), 4:2:0 row r on chroma row r / 2; words 0 and 1 of one more
// group after the row where the converter keeps them.
void model_rows(const Kind& k, const Planes& s, const Geo& g, uint32_t first, uint32_t rows,
                Expected& e) {
    const size_t dp = std::max(v210_row(g.w), g.dp);
    const size_t groups = size_t{div_up(g.w, k.step)} * (k.step / 6);
    const size_t cpitch = k.sub == Sub::S444 ? g.sp : g.sp / 2;
    auto read = [&](int plane, size_t at) {
        e.reach[plane + 1] = std::max(e.reach[plane + 1], at + 2);
        return to10(k.depth, s.p[plane].at(at) | uint32_t{s.p[plane].at(at + 1)} << 8);
    };
    auto put = [&](size_t at, uint32_t a, uint32_t b, uint32_t c) {
        const uint32_t word = a + b * 1024 + c * 1024 * 1024;
        for (int i = 0; i < 4; ++i) e.dst.at(at + i) = static_cast<uint8_t>(word >> (8 * i));
        e.reach[0] = std::max(e.reach[0], at + 4);
    };
    for (uint32_t r = first; r < first + rows; ++r) {
        const size_t yRow = size_t{r} * g.sp;
        const size_t cRow = (k.sub == Sub::S420 ? r / 2 : r) * cpitch;
        const size_t nGroups = groups + (k.extra && g.w % 6 != 0 ? 1 : 0);
        for (size_t q = 0; q < nGroups; ++q) {
            auto Y = [&](unsigned i) { return read(0, yRow + 2 * (6 * q + i)); };
            auto C = [&](int plane, unsigned pair) {
                const size_t n = k.sub == Sub::S444 ? 6 * q + 2 * pair : 3 * q + pair;
                return read(plane, cRow + 2 * n);
            };
            const size_t at = r * dp + 16 * q;
            put(at, C(1, 0), Y(0), C(2, 0));
            put(at + 4, Y(1), C(1, 1), Y(2));
            if (q == groups) break;  // the extra words
            put(at + 8, C(2, 1), Y(3), C(1, 2));
            put(at + 12, Y(4), C(2, 2), Y(5));
        }
    }
}

Expected model(const Kind& k, const Planes& s, const Geo& g, const std::vector<uint8_t>& init,
               uint32_t rows) {
    Expected e;
    e.dst = init;
    model_rows(k, s, g, 0, rows, e);
    e.result = g.h * std::max(v210_row(g.w), g.dp);
    return e;
}

// A generous destination and source room for a geometry.
size_t dst_room(const Geo& g) {
    return size_t{std::max(v210_row(g.w), g.dp)} * (g.h + 1) + 64;
}
size_t src_room(const Geo& g) {
    return size_t{g.sp} * (g.h + 1) + 4 * size_t{g.w} + 64;
}

std::array<uint64_t, 4> query(const std::string& name, const Geo& g) {
    const unsigned int pitches[2] = {g.dp, g.sp};
    std::array<uint64_t, 4> b{};
    EXPECT_EQ(cycbcr_converter_pointer_sizes(name.c_str(), g.w, g.h, pitches, 2, b.data()), 1u)
        << name;
    return b;
}

struct Result {
    std::vector<uint8_t> dst;
    unsigned int result;
};

// Runs fn with each buffer in a guarded buffer ending exactly `bytes[i]` after its
// start, the destination starting as `init`.
Result run_guarded4(Fn fn, const Planes& s, const Geo& g, const std::vector<uint8_t>& init,
                    const std::array<uint64_t, 4>& bytes) {
    std::array<std::unique_ptr<GuardedBuffer>, 4> buf;
    for (int i = 0; i < 4; ++i) {
        buf[i] = std::make_unique<GuardedBuffer>(bytes[i]);
        const std::vector<uint8_t>& from = i == 0 ? init : s.p[i - 1];
        std::memcpy(buf[i]->data(), from.data(), std::min<size_t>(bytes[i], from.size()));
    }
    Result run;
    run.result =
        fn(buf[0]->data(), buf[1]->data(), buf[2]->data(), buf[3]->data(), g.w, g.h, g.dp, g.sp);
    run.dst = init;
    std::memcpy(run.dst.data(), buf[0]->data(), std::min<size_t>(bytes[0], init.size()));
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(buf[i]->slack_intact()) << "buffer " << i;
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ(0, std::memcmp(buf[i]->data(), s.p[i - 1].data(), bytes[i])) << "source written";
    return run;
}

::testing::AssertionResult same(const std::vector<uint8_t>& got, const std::vector<uint8_t>& want) {
    return same_bytes(got, want);
}

struct Level {
    unsigned value;
    Level(unsigned v) : value(v) { cycbcr_set_cpu(v); }
    ~Level() { cycbcr_set_cpu(5); }
};

// ------------------------------------------------------------ worked samples

// One group of constant samples: every word holds the same 10-bit value three
// times.
uint32_t constant_word(uint32_t v) {
    return v | v << 10 | v << 20;
}

TEST(Planar16V210, WorkedSamples) {
    struct Case {
        unsigned depth;
        uint16_t in;
        uint32_t out;
    };
    // p10 masks the high bits, p12 drops two low bits, p16 six.
    const Case cases[] = {{10, 0xFFFF, 1023}, {10, 0x8000, 0},   {10, 0x0201, 513},
                          {12, 4095, 1023},   {12, 0x8000, 0},   {12, 0x0804, 513},
                          {16, 65535, 1023},  {16, 0x8000, 512}, {16, 0x003F, 0}};
    for (const Kind& k : kinds())
        for (const Case& c : cases) {
            if (c.depth != k.depth) continue;
            for (unsigned level : {0u, 5u}) {
                Level l(level);
                std::vector<uint16_t> plane(64, c.in);
                std::vector<uint32_t> out(64, 0xDEADBEEF);
                const auto* p = reinterpret_cast<const uint8_t*>(plane.data());
                const unsigned int n =
                    k.entry(reinterpret_cast<uint8_t*>(out.data()), p, p, p, 12, 2, 128, 24);
                EXPECT_EQ(n, 256u) << k.name;
                for (int wd = 0; wd < 8; ++wd)
                    EXPECT_EQ(out[wd], constant_word(c.out)) << k.name << " in " << c.in;
                EXPECT_EQ(out[32], constant_word(c.out)) << k.name << " row 1";
                EXPECT_EQ(out[8], 0xDEADBEEFu) << k.name << " past the row";
            }
        }
}

// Distinct samples in one 4:2:2/4:4:4/4:2:0 group: Y 1..6, Cb 7.., Cr 20.. (p10)
// placed by hand into the group's words.
TEST(Planar16V210, GroupLayoutByHand) {
    std::vector<uint16_t> y = {1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0};
    std::vector<uint16_t> cb422 = {7, 8, 9, 0, 0, 0, 0, 0}, cr422 = {20, 21, 22, 0, 0, 0, 0, 0};
    // 4:4:4: only the even pixels' chroma may show.
    std::vector<uint16_t> cb444 = {7, 100, 8, 101, 9, 102, 0, 0, 0, 0, 0, 0};
    std::vector<uint16_t> cr444 = {20, 103, 21, 104, 22, 105, 0, 0, 0, 0, 0, 0};
    const uint32_t want[4] = {7 | 1 << 10 | 20u << 20, 2 | 8 << 10 | 3u << 20,
                              21 | 4 << 10 | 9u << 20, 5 | 22 << 10 | 6u << 20};
    auto bytes = [](const std::vector<uint16_t>& v) {
        return reinterpret_cast<const uint8_t*>(v.data());
    };
    for (unsigned level : {0u, 5u}) {
        Level l(level);
        for (Fn fn :
             {cycbcr_yuv422p10_to_012v, cycbcr_yuv420p10_to_012v, cycbcr_yuv444p10_to_012v}) {
            const bool full = fn == cycbcr_yuv444p10_to_012v;
            std::vector<uint32_t> out(32, 0);
            fn(reinterpret_cast<uint8_t*>(out.data()), bytes(y), bytes(full ? cb444 : cb422),
               bytes(full ? cr444 : cr422), 6, 1, 0, 0);
            for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], want[i]) << "word " << i;
        }
    }
}

// ------------------------------------------------------------ against the model

std::vector<Geo> geometries() {
    std::vector<Geo> g;
    // Widths 1..37 cover every residue of the six- and twelve-pixel steps and of
    // the AVX2 pairs; 47 fills its v210 row, so the extra words reach the next
    // row; 1920 + 5 and 720 are usual frames.
    for (uint32_t w = 1; w <= 37; ++w) g.push_back({w, 3, 0, 2 * w});
    for (uint32_t w : {41u, 47u, 48u, 53u, 96u, 131u, 720u, 1925u})
        for (uint32_t h : {1u, 2u, 5u}) {
            g.push_back({w, h, 0, 2 * w + (w % 2) * 2});
            g.push_back({w, h, v210_row(w) + 48, 2 * w + 132});  // padded both
        }
    g.push_back({47, 4, 128, 96});        // the pitch the groups fill exactly
    g.push_back({53, 3, 0, 2 * 53 + 3});  // odd source pitch: unaligned samples
    g.push_back({0, 3, 0, 64});
    g.push_back({13, 0, 0, 64});
    return g;
}

// Every name of a converter: the entry at levels 0 and 5, its AVX2 form and,
// with bands, its _internal form; each between guard pages at the query's
// answer, against the model, whose reach must equal that answer.
TEST(Planar16V210, EveryPathMatchesTheModelWithinTheAnsweredSizes) {
    uint32_t seed = 1;
    for (const Kind& k : kinds())
        for (const Geo& g : geometries()) {
            if (k.widest != 0 && g.w > k.widest) continue;  // bands: below
            const Planes s = random_planes(seed++, src_room(g));
            const std::vector<uint8_t> init = random_bytes(dst_room(g), seed++);
            const Expected e = model(k, s, g, init, g.h);
            struct Form {
                std::string name;
                Fn fn;
                unsigned level;
            };
            std::vector<Form> forms = {{k.name, k.entry, 0}, {k.name, k.entry, 5}};
            if (have_avx2() || k.avx2 == cycbcr_yuv420p16_to_012v_avx2)
                forms.push_back({k.name + "_avx2", k.avx2, 0});
            if (k.internal != nullptr) forms.push_back({k.name + "_internal", k.internal, 5});
            for (const Form& f : forms) {
                Level l(f.level);
                const auto bytes = query(f.name, g);
                for (int i = 0; i < 4; ++i)
                    ASSERT_EQ(bytes[i], e.reach[i]) << f.name << " " << g << " pointer " << i;
                const Result run = run_guarded4(f.fn, s, g, init, bytes);
                EXPECT_EQ(run.result, e.result) << f.name << " " << g;
                EXPECT_TRUE(same(run.dst, e.dst)) << f.name << " level " << f.level << " " << g;
            }
        }
}

// The AVX2 forms against the plain entry at every width residue of the vector
// step around small and 1080p widths, with odd padded pitches; whole buffers
// compared, extra words included.
TEST(Planar16V210, Avx2FormsGiveThePlainBytes) {
    CYCBCR_REQUIRE_AVX2();
    uint32_t seed = 900;
    for (const Kind& k : kinds())
        for (uint32_t base : {0u, 36u, 1908u})
            for (uint32_t w = base + 1; w <= base + 13; ++w) {
                const Geo g{w, 4, v210_row(w) + 36, 2 * w + 6};
                const Planes s = random_planes(seed++, src_room(g));
                const std::vector<uint8_t> init = random_bytes(dst_room(g), seed++);
                std::vector<uint8_t> plain = init, fast = init;
                const auto& p = s.p;
                unsigned int np, nf;
                {
                    Level l(0);
                    // Above the band threshold the plain entry converts in bands,
                    // the eight-equal rule fewer rows: _internal is its plain code.
                    const Fn fn = k.internal != nullptr ? k.internal : k.entry;
                    np = fn(plain.data(), p[0].data(), p[1].data(), p[2].data(), g.w, g.h, g.dp,
                            g.sp);
                }
                {
                    Level l(5);
                    nf = k.avx2(fast.data(), p[0].data(), p[1].data(), p[2].data(), g.w, g.h, g.dp,
                                g.sp);
                }
                EXPECT_EQ(np, nf) << k.name << " " << g;
                EXPECT_TRUE(same(fast, plain)) << k.name << " " << g;
            }
}

// ------------------------------------------------------------ processor level

TEST(Planar16V210, FourTwoZero16BitAvx2FormRunsAtLevelZeroAndRestores) {
    const Geo g{30, 4, 0, 64};
    const Planes s = random_planes(5, src_room(g));
    const std::vector<uint8_t> init = random_bytes(dst_room(g), 6);
    const Expected e = model(kinds()[6], s, g, init, g.h);
    for (uint32_t level : {kLevelMarker, 0u, 3u, 5u}) {
        if (level == kLevelMarker)
            gdwProcType = kLevelMarker;
        else
            cycbcr_set_cpu(level);
        const uint32_t before = gdwProcType;
        std::vector<uint8_t> out = init;
        const unsigned int n = cycbcr_yuv420p16_to_012v_avx2(
            out.data(), s.p[0].data(), s.p[1].data(), s.p[2].data(), g.w, g.h, g.dp, g.sp);
        EXPECT_EQ(gdwProcType, before) << "level not restored";
        EXPECT_EQ(n, e.result);
        EXPECT_TRUE(same(out, e.dst));
    }
    cycbcr_set_cpu(5);
}

TEST(Planar16V210, EntriesChooseALevelWhenNoneIsChosen) {
    const Geo g{12, 2, 0, 24};
    const Planes s = random_planes(7, src_room(g));
    std::vector<uint8_t> out(dst_room(g));
    gdwProcType = kLevelMarker;
    cycbcr_yuv422p16_to_012v(out.data(), s.p[0].data(), s.p[1].data(), s.p[2].data(), g.w, g.h,
                             g.dp, g.sp);
    EXPECT_NE(gdwProcType, kLevelMarker);
    cycbcr_set_cpu(5);
}

// ------------------------------------------------------------ row bands

const Kind& kind(const std::string& name) {
    for (const Kind& k : kinds())
        if (k.name == name) return k;
    throw std::runtime_error(name);
}

// A banded converter at the plain level: the destination is the model's for the
// rows the bands convert; the count is height * dstPitch as passed.
void expect_banded(const Kind& k, const Geo& g, uint32_t seed) {
    Level l(0);
    const Planes s = random_planes(seed, src_room(g));
    const std::vector<uint8_t> init = random_bytes(dst_room(g), seed + 1);
    const uint32_t converted = k.eightEqual ? g.h / 8 * 8 : g.h;
    Expected e = model(k, s, g, init, converted);
    const auto bytes = query(k.name, g);
    // The query answers for the AVX2 form too, which converts every row.
    const Expected all = model(k, s, g, init, g.h);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(bytes[i], all.reach[i]) << k.name << " " << g << " " << i;
    const Result run = run_guarded4(k.entry, s, g, init, bytes);
    EXPECT_EQ(run.result, g.h * g.dp) << k.name << " " << g;
    EXPECT_TRUE(same(run.dst, e.dst)) << k.name << " " << g;
    // At level 5 the same entry converts every row on the calling thread and
    // counts the pitch it used.
    if (!have_avx2()) return;
    cycbcr_set_cpu(5);
    const Result fast = run_guarded4(k.entry, s, g, init, bytes);
    EXPECT_EQ(fast.result, all.result) << k.name << " " << g << " level 5";
    EXPECT_TRUE(same(fast.dst, all.dst)) << k.name << " " << g << " level 5";
}

TEST(Planar16V210Bands, WideFramesConvertByTheirBandRule) {
    // 4096 x 1083: seven bands of 135 rows and one of 138 convert the whole frame;
    // the eight-equal rule leaves rows 1080-1082 as they were.
    for (const char* name : {"cycbcr_yuv422p10_to_012v", "cycbcr_yuv422p12_to_012v"})
        expect_banded(kind(name), {4096, 1083, v210_row(4096) + 64, 8192 + 64}, 11);
    expect_banded(kind("cycbcr_yuv444p12_to_012v"), {2050, 77, v210_row(2050) + 16, 4100 + 28}, 12);
    // Fewer than eight rows: bands 0-6 are empty; band 7 converts the whole frame
    // or, under the eight-equal rule, there is no band 7 work at all.
    for (const Kind& k : kinds())
        if (k.widest != 0)
            for (uint32_t h = 1; h < 8; ++h)
                expect_banded(k, {k.widest + 1 + h, h, v210_row(k.widest + 8) + 32, 4200}, 20 + h);
}

// Rows whose groups fill the pitch (width % 48 of 43 to 47 at the natural pitch):
// a band's last row reaches with its extra words into the next band's first
// row, yet the frame is the single-threaded one however the bands' timing falls.
TEST(Planar16V210Bands, RowsReachingIntoTheNextBandGiveTheSingleThreadBytes) {
    for (const char* name : {"cycbcr_yuv422p10_to_012v", "cycbcr_yuv422p12_to_012v"})
        for (uint32_t w : {2107u, 2111u})
            for (uint32_t h : {16u, 64u, 75u})
                for (uint32_t round = 0; round < 4; ++round)
                    expect_banded(kind(name), {w, h, v210_row(w), 2 * w + 32}, 40 + round);
}

// Just above and at the threshold, seen in the count with a destination pitch
// smaller than the v210 row: the bands return height * dstPitch as passed, the
// calling thread's conversion height * the pitch it used.
TEST(Planar16V210Bands, ThresholdsShowInTheCount) {
    Level l(0);
    for (const Kind& k : kinds()) {
        if (k.widest == 0) continue;
        for (uint32_t w : {k.widest, k.widest + 1})
            for (uint32_t dp : {0u, 64u}) {
                const Geo g{w, 16, dp, 2 * w + 64};
                const Planes s = random_planes(w, src_room(g));
                const auto bytes = query(k.name, g);
                std::vector<uint8_t> init(dst_room(g));
                const Result run = run_guarded4(k.entry, s, g, init, bytes);
                const unsigned int want = w > k.widest ? g.h * dp : g.h * v210_row(w);
                EXPECT_EQ(run.result, want) << k.name << " " << g;
            }
    }
}

// A worker run by hand: converts its band through _internal, drops the counter
// and reports with no event.
TEST(Planar16V210Bands, WorkerConvertsItsBandAndDropsTheCounter) {
    const Geo g{100, 6, 0, 256};
    const Kind& k = kind("cycbcr_yuv444p12_to_012v");
    const Planes s = random_planes(31, src_room(g));
    const std::vector<uint8_t> init = random_bytes(dst_room(g), 32);
    const Expected e = model(k, s, g, init, g.h);
    std::vector<uint8_t> out = init;
    volatile int32_t pending = 1;
    band_job job{out.data(),
                 const_cast<uint8_t*>(s.p[0].data()),
                 const_cast<uint8_t*>(s.p[1].data()),
                 const_cast<uint8_t*>(s.p[2].data()),
                 g.w,
                 g.h,
                 g.dp,
                 g.sp,
                 &pending,
                 nullptr};
    EXPECT_EQ(cycbcr_yuv444p12_to_012v_worker(&job), e.result);
    EXPECT_EQ(pending, 0);
    EXPECT_TRUE(same(out, e.dst));
}

// ------------------------------------------------------------ FFmpeg

#ifdef CYCBCR_TEST_WITH_FFMPEG
// FFmpeg writes the same v210 from the same 10-bit 4:2:2 picture (its encoder
// keeps samples within 4..1019, so the picture stays there); rows compared over
// their whole groups.
TEST(Planar16V210Ffmpeg, SameBytesAsFfmpegsEncoder) {
    for (uint32_t w : {48u, 96u, 720u, 1920u, 150u})
        for (unsigned level : {0u, 5u}) {
            Level l(level);
            const uint32_t h = 6;
            const Frame422 f = random_frame422(w, h, 4, 1019, w + level);
            const std::vector<uint8_t> ref = ffmpeg_v210_encode(f);
            if (ref.empty()) GTEST_SKIP() << "FFmpeg's v210 encoder unavailable";
            const uint32_t pitch = v210_row(w);
            ASSERT_EQ(ref.size(), size_t{pitch} * h);
            std::vector<uint8_t> out(ref.size(), 0);
            const auto* y = reinterpret_cast<const uint8_t*>(f.y.data());
            const auto* cb = reinterpret_cast<const uint8_t*>(f.cb.data());
            const auto* cr = reinterpret_cast<const uint8_t*>(f.cr.data());
            EXPECT_EQ(cycbcr_yuv422p10_to_012v(out.data(), y, cb, cr, w, h, 0, 2 * w), h * pitch);
            for (uint32_t r = 0; r < h; ++r)
                EXPECT_EQ(0, std::memcmp(&out[r * pitch], &ref[r * pitch], div_up(w, 6) * 16))
                    << "width " << w << " row " << r << " level " << level;
        }
}
#endif

}  // namespace
