// v210 into 16-bit planes (4:2:2 p10 and p16, 4:2:0 p10, 4:4:4 p10), 16-bit
// planar 4:2:2 and 4:2:0 into UYVY (with the eight-band path of wide 4:2:2
// frames), and UYVY into 4:4:4 p10.
//
// Every call runs with each pointer in a guarded buffer of exactly the size the
// library's per-pointer buffer-size query answers, so a byte touched past the
// answer crashes the test; the buffers start with random bytes, and the whole
// of each buffer after the call must equal a per-sample model of the conversion
// applied to the same starting bytes (so bytes that must not be written are
// checked too). Then the worked numbers, the AVX2 forms against the plain ones
// at every width residue, the band thresholds and counts, and FFmpeg's v210
// decoder as an independent reader.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
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

using Buffers = std::array<std::vector<uint8_t>, 4>;
using Call = std::function<unsigned int(std::array<uint8_t*, 4>& p)>;

struct Shape {
    uint32_t width, height;
    std::vector<unsigned int> pitches;  // in argument order
};
std::ostream& operator<<(std::ostream& os, const Shape& s) {
    os << s.width << "x" << s.height << " pitches";
    for (unsigned int p : s.pitches) os << " " << p;
    return os;
}

std::array<uint64_t, 4> sizes_of(const char* name, const Shape& s) {
    std::array<uint64_t, 4> bytes{};
    EXPECT_EQ(
        cycbcr_converter_pointer_sizes(name, s.width, s.height, s.pitches.data(),
                                       static_cast<unsigned int>(s.pitches.size()), bytes.data()),
        1u)
        << name;
    return bytes;
}

Buffers random_buffers(const std::array<uint64_t, 4>& sizes, uint32_t seed) {
    Buffers b;
    for (size_t i = 0; i < 4; ++i) b[i] = random_bytes(sizes[i], seed + static_cast<uint32_t>(i));
    return b;
}

struct Outcome {
    Buffers after;
    unsigned int result;
};

// The call with each pointer in a guarded buffer holding `init`.
Outcome run_guarded4(const Call& call, const Buffers& init) {
    std::array<std::unique_ptr<GuardedBuffer>, 4> g;
    std::array<uint8_t*, 4> p{};
    for (size_t i = 0; i < 4; ++i) {
        g[i] = std::make_unique<GuardedBuffer>(init[i].size());
        if (!init[i].empty()) std::memcpy(g[i]->data(), init[i].data(), init[i].size());
        p[i] = g[i]->data();
    }
    Outcome o{{}, call(p)};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(g[i]->slack_intact()) << "written before buffer " << i;
        o.after[i].assign(g[i]->data(), g[i]->data() + init[i].size());
    }
    return o;
}

// ------------------------------------------------------------------ the model

// The v210 group: word and field of each sample.
struct Slot {
    int word, field;
};
constexpr Slot kY[6] = {{0, 1}, {1, 0}, {1, 2}, {2, 1}, {3, 0}, {3, 2}};
constexpr Slot kCb[3] = {{0, 0}, {1, 1}, {2, 2}};
constexpr Slot kCr[3] = {{0, 2}, {2, 0}, {3, 1}};

uint32_t field(const std::vector<uint8_t>& b, size_t row, uint32_t group, Slot s) {
    const size_t at = row + 16 * size_t{group} + 4 * size_t(s.word);
    const uint32_t w =
        b.at(at) | b.at(at + 1) << 8 | b.at(at + 2) << 16 | uint32_t{b.at(at + 3)} << 24;
    return (w >> (10 * s.field)) & 0x3FF;
}
uint32_t y_of(const std::vector<uint8_t>& b, size_t row, uint32_t x) {
    return field(b, row, x / 6, kY[x % 6]);
}
uint32_t cb_of(const std::vector<uint8_t>& b, size_t row, uint32_t pair) {
    return field(b, row, pair / 3, kCb[pair % 3]);
}
uint32_t cr_of(const std::vector<uint8_t>& b, size_t row, uint32_t pair) {
    return field(b, row, pair / 3, kCr[pair % 3]);
}
void put16(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    b.at(at) = static_cast<uint8_t>(v);
    b.at(at + 1) = static_cast<uint8_t>(v >> 8);
}
uint32_t get16(const std::vector<uint8_t>& b, size_t at) {
    return b.at(at) | uint32_t{b.at(at + 1)} << 8;
}
uint32_t natural_v210(uint32_t w) {
    return (w + 47) / 48 * 128;
}
uint32_t whole_groups(uint32_t w) {
    return (w + 5) / 6 * 6;
}

enum class Odd { Kept, Doubled };  // 4:4:4: the odd chroma positions

// v210 into planes. Y rows yPitch apart, chroma cPitch apart, source rows
// srcPitch apart; pixels up to the width rounded to whole groups. `half`: 4:2:2
// chroma (one sample per pair); else 4:4:4 at the even pixels (and the odd by
// `odd`). `pairs`: 4:2:0, chroma row k from rows 2k and 2k + 1 averaged.
void model_v210(Buffers& b, const Shape& s, size_t yPitch, size_t cPitch, size_t srcPitch,
                unsigned shift, bool half, Odd odd, bool pairs) {
    const uint32_t n = whole_groups(s.width);
    for (uint32_t r = 0; r < s.height; ++r) {
        const size_t row = r * srcPitch;
        for (uint32_t x = 0; x < n; ++x)
            put16(b[0], r * yPitch + 2 * x, y_of(b[3], row, x) << shift);
        if (pairs && r % 2 != 0) continue;
        const size_t crow = (pairs ? r / 2 : r) * cPitch;
        for (uint32_t k = 0; k < n / 2; ++k) {
            uint32_t cb = cb_of(b[3], row, k), cr = cr_of(b[3], row, k);
            if (pairs) {
                cb = (cb + cb_of(b[3], row + srcPitch, k)) / 2;
                cr = (cr + cr_of(b[3], row + srcPitch, k)) / 2;
            }
            for (uint32_t at : half               ? std::vector<uint32_t>{k}
                               : odd == Odd::Kept ? std::vector<uint32_t>{2 * k}
                                                  : std::vector<uint32_t>{2 * k, 2 * k + 1}) {
                put16(b[1], crow + 2 * at, cb << shift);
                put16(b[2], crow + 2 * at, cr << shift);
            }
        }
    }
}

// 16-bit 4:2:2 rows into UYVY bytes: pixel x gives Cb (even x) or Cr (odd x) of
// its pair and its Y, each through `byte(value, x)`; `last` pixels a row.
void model_uyvy(Buffers& b, uint32_t rows, uint32_t last, size_t dstPitch, size_t srcPitch,
                const std::function<uint32_t(uint32_t)>& chromaRow,
                const std::function<uint8_t(uint32_t, uint32_t)>& byte) {
    for (uint32_t r = 0; r < rows; ++r) {
        const size_t c = chromaRow(r) * (srcPitch / 2);
        for (uint32_t x = 0; x < last; ++x) {
            const uint32_t chroma = get16(x % 2 == 0 ? b[2] : b[3], c + 2 * size_t{x / 2});
            b[0].at(r * dstPitch + 2 * size_t{x}) = byte(chroma, x);
            b[0].at(r * dstPitch + 2 * size_t{x} + 1) = byte(get16(b[1], r * srcPitch + 2 * x), x);
        }
    }
}

// ------------------------------------------------------------- the converters

using V210Planar = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                    unsigned int, unsigned int, unsigned int);
using V210Planar420 = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                       unsigned int, unsigned int, unsigned int, unsigned int);
using PlanarUyvy = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                    unsigned int, unsigned int, unsigned int, unsigned int);

Call call_of(V210Planar fn, const Shape& s) {
    return [=](std::array<uint8_t*, 4>& p) {
        return fn(p[0], p[1], p[2], p[3], s.width, s.height, s.pitches[0], s.pitches[1]);
    };
}
Call call_of(V210Planar420 fn, const Shape& s) {
    return [=](std::array<uint8_t*, 4>& p) {
        return fn(p[0], p[1], p[2], p[3], s.width, s.height, s.pitches[0], s.pitches[1],
                  s.pitches[2]);
    };
}
Call call_of(PlanarUyvy fn, const Shape& s) {
    return [=](std::array<uint8_t*, 4>& p) {
        return fn(p[0], p[1], p[2], p[3], s.width, s.height, s.pitches[0], s.pitches[1]);
    };
}

::testing::AssertionResult same(const Buffers& got, const Buffers& want) {
    for (size_t i = 0; i < 4; ++i) {
        const auto r = same_bytes(got[i], want[i]);
        if (!r) return ::testing::AssertionFailure() << "buffer " << i << ": " << r.message();
    }
    return ::testing::AssertionSuccess();
}

// The runs of each converter: the entry at level 0, and where the processor has
// AVX2 the entry at level 5 and the _avx2 form called directly (kTwin), each
// with buffers of the sizes answered for the name called.
constexpr int kTwin = -2;
std::vector<int> levels() {
    return have_avx2() ? std::vector<int>{0, 5, kTwin} : std::vector<int>{0};
}
// The levels alone, for the tests that call the entries by hand.
std::vector<int> entry_levels() {
    return have_avx2() ? std::vector<int>{0, 5} : std::vector<int>{0};
}
bool avx2_run(int level) {
    return level != 0;
}

// Runs `name` (or `twin`, its _avx2 form, for kTwin) and checks all four
// buffers and the count against the model.
template <class Fn>
void expect_model(const char* name, Fn fn, Fn twin, int level, const Shape& s, uint32_t seed,
                  const std::function<void(Buffers&)>& model, unsigned int count) {
    const std::string called = level == kTwin ? std::string(name) + "_avx2" : std::string(name);
    SCOPED_TRACE(called + " level " + std::to_string(level));
    SCOPED_TRACE(::testing::PrintToString(s));
    const Buffers init = random_buffers(sizes_of(called.c_str(), s), seed);
    Buffers want = init;
    model(want);
    if (level >= 0) cycbcr_set_cpu(static_cast<unsigned int>(level));
    const Outcome o = run_guarded4(call_of(level == kTwin ? twin : fn, s), init);
    EXPECT_TRUE(same(o.after, want));
    EXPECT_EQ(o.result, count);
}

const std::vector<Shape> kV210Shapes = {
    {1, 1, {0, 0}},    {5, 3, {40, 0}},     {6, 2, {12, 128}},   {7, 4, {30, 300}},
    {23, 5, {64, 0}},  {24, 3, {48, 128}},  {47, 2, {130, 256}}, {48, 1, {0, 0}},
    {50, 7, {110, 0}}, {97, 3, {210, 512}}, {130, 2, {262, 0}},  {0, 3, {16, 0}},
    {12, 0, {24, 0}},  {30, 3, {61, 0}},
};

// ------------------------------------------------------------ v210 to planes

TEST(V210ToPlanar, Planar422AgainstModel) {
    for (int level : levels())
        for (const Shape& s : kV210Shapes)
            for (unsigned shift : {0u, 6u}) {
                V210Planar fn = shift == 0 ? cycbcr_012v_to_yuv422p10 : cycbcr_012v_to_yuv422p16;
                V210Planar twin =
                    shift == 0 ? cycbcr_012v_to_yuv422p10_avx2 : cycbcr_012v_to_yuv422p16_avx2;
                const char* name =
                    shift == 0 ? "cycbcr_012v_to_yuv422p10" : "cycbcr_012v_to_yuv422p16";
                const uint32_t sp = std::max(natural_v210(s.width), s.pitches[1]);
                auto model = [&](Buffers& b) {
                    model_v210(b, s, s.pitches[0], s.pitches[0] / 2, sp, shift, true, Odd::Kept,
                               false);
                };
                expect_model(name, fn, twin, level, s, 11 + s.width, model, s.width * s.height * 4);
            }
}

TEST(V210ToPlanar, Planar444AgainstModel) {
    // The plain path leaves the odd chroma positions alone; the AVX2 form gives
    // them the pair's chroma.
    for (int level : levels())
        for (const Shape& s : kV210Shapes) {
            const uint32_t sp = std::max(natural_v210(s.width), s.pitches[1]);
            const Odd odd = avx2_run(level) ? Odd::Doubled : Odd::Kept;
            auto model = [&](Buffers& b) {
                model_v210(b, s, s.pitches[0], s.pitches[0], sp, 0, false, odd, false);
            };
            expect_model("cycbcr_012v_to_yuv444p10", cycbcr_012v_to_yuv444p10,
                         cycbcr_012v_to_yuv444p10_avx2, level, s, 23, model,
                         s.width * s.height * 6);
        }
}

TEST(V210ToPlanar, Planar420AgainstModel) {
    // Pitches: Y, chroma, v210. The plain path packs its planes and takes the
    // v210 pitch as passed (0 reads row 0 for every row); the AVX2 form uses the
    // plane pitches and at least the natural v210 row.
    const std::vector<Shape> shapes = {
        {1, 1, {0, 0, 0}},       {6, 2, {12, 6, 128}},   {7, 3, {40, 20, 0}},
        {13, 5, {30, 16, 160}},  {24, 4, {48, 24, 128}}, {29, 1, {60, 31, 200}},
        {48, 7, {100, 60, 128}}, {50, 6, {112, 57, 0}},  {101, 9, {220, 110, 384}},
        {0, 4, {16, 8, 0}},      {18, 0, {36, 18, 128}}, {36, 3, {72, 36, 96}},
    };
    for (int level : levels())
        for (const Shape& s : shapes) {
            const uint32_t n = whole_groups(s.width);
            auto model = [&](Buffers& b) {
                if (s.width == 0 || s.height == 0) return;
                if (avx2_run(level))
                    model_v210(b, s, s.pitches[0], s.pitches[1],
                               std::max(natural_v210(s.width), s.pitches[2]), 0, true, Odd::Kept,
                               true);
                else
                    model_v210(b, s, 2 * n, n, s.pitches[2], 0, true, Odd::Kept, true);
            };
            expect_model("cycbcr_012v_to_yuv420p10", cycbcr_012v_to_yuv420p10,
                         cycbcr_012v_to_yuv420p10_avx2, level, s, 31, model,
                         s.width * s.height * 3);
        }
}

// The worked numbers, on both paths.
std::vector<uint8_t> v210_of_words(const std::vector<uint32_t>& words) {
    std::vector<uint8_t> b;
    for (uint32_t w : words)
        for (int k = 0; k < 4; ++k) b.push_back(static_cast<uint8_t>(w >> (8 * k)));
    return b;
}

TEST(V210ToPlanar, WhiteIsFFC0InP16And1023InP10) {
    // 48 pixels (a whole vector step and more) of 1023, bits 30-31 set as well.
    const std::vector<uint8_t> src = v210_of_words(std::vector<uint32_t>(32, 0xFFFFFFFFu));
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        for (unsigned shift : {0u, 6u}) {
            std::vector<uint16_t> y(48, 0), cb(24, 0), cr(24, 0);
            auto fn = shift == 0 ? cycbcr_012v_to_yuv422p10 : cycbcr_012v_to_yuv422p16;
            fn(reinterpret_cast<uint8_t*>(y.data()), reinterpret_cast<uint8_t*>(cb.data()),
               reinterpret_cast<uint8_t*>(cr.data()), src.data(), 48, 1, 96, 128);
            const uint16_t want = shift == 0 ? 1023 : 0xFFC0;
            for (uint16_t v : y) EXPECT_EQ(v, want) << "level " << level;
            for (uint16_t v : cb) EXPECT_EQ(v, want) << "level " << level;
            for (uint16_t v : cr) EXPECT_EQ(v, want) << "level " << level;
        }
    }
}

TEST(V210ToPlanar, ChromaOfARowPairIsTheFlooredMean) {
    // Row 0 carries chroma 100, row 1 chroma 101 (and other Y): 4:2:0 gives 100.
    auto row = [](uint32_t c, uint32_t y) {
        std::vector<uint32_t> w;
        for (int g = 0; g < 8; ++g) {
            w.push_back(c | y << 10 | c << 20);
            w.push_back(y | c << 10 | y << 20);
            w.push_back(c | y << 10 | c << 20);
            w.push_back(y | c << 10 | y << 20);
        }
        return v210_of_words(w);
    };
    std::vector<uint8_t> src = row(100, 64);
    const std::vector<uint8_t> second = row(101, 940);
    src.insert(src.end(), second.begin(), second.end());
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        std::vector<uint16_t> y(96, 0), cb(24, 0), cr(24, 0);
        EXPECT_EQ(cycbcr_012v_to_yuv420p10(
                      reinterpret_cast<uint8_t*>(y.data()), reinterpret_cast<uint8_t*>(cb.data()),
                      reinterpret_cast<uint8_t*>(cr.data()), src.data(), 48, 2, 96, 48, 128),
                  48u * 2 * 3);
        for (uint16_t v : cb) EXPECT_EQ(v, 100) << "level " << level;
        for (uint16_t v : cr) EXPECT_EQ(v, 100) << "level " << level;
        EXPECT_EQ(y[0], 64);
        EXPECT_EQ(y[48], 940);
    }
}

// The position of a sample among the twelve of its group, in address order.
uint32_t index(Slot s) {
    return static_cast<uint32_t>(3 * s.word + s.field);
}

TEST(V210ToPlanar, OddHeightAveragesWithTheRowAfterTheFrame) {
    // One row of chroma 200 and, after it in memory, a row of chroma 301: the
    // one chroma row is 250 on both paths; the second row's Y is not written.
    auto row = [](uint32_t c) {
        std::vector<uint32_t> w;
        for (int g = 0; g < 4; ++g)
            for (uint32_t y : {10u, 20u}) {
                w.push_back(c | y << 10 | c << 20);
                w.push_back(y | c << 10 | y << 20);
            }
        std::vector<uint8_t> b = v210_of_words(w);
        b.resize(128);  // the natural row of 24 pixels
        return b;
    };
    std::vector<uint8_t> src = row(200);
    const std::vector<uint8_t> after = row(301);
    src.insert(src.end(), after.begin(), after.end());
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        std::vector<uint16_t> y(48, 0x5555), cb(12, 0), cr(12, 0);
        EXPECT_EQ(cycbcr_012v_to_yuv420p10(
                      reinterpret_cast<uint8_t*>(y.data()), reinterpret_cast<uint8_t*>(cb.data()),
                      reinterpret_cast<uint8_t*>(cr.data()), src.data(), 24, 1, 48, 24, 128),
                  24u * 3);
        for (uint16_t v : cb) EXPECT_EQ(v, 250) << "level " << level;
        for (uint16_t v : cr) EXPECT_EQ(v, 250) << "level " << level;
        for (size_t x = 24; x < 48; ++x) EXPECT_EQ(y[x], 0x5555) << "level " << level;
    }
}

TEST(V210ToPlanar, EntriesChooseALevelAndInternalDoesNot) {
    std::vector<uint8_t> planes(4096, 0), src(4096, 0);
    uint8_t* p = planes.data();
    auto fresh = [] { gdwProcType = kLevelMarker; };
    const std::vector<std::function<void()>> entries = {
        [&] { cycbcr_012v_to_yuv422p10(p, p + 1024, p + 2048, src.data(), 6, 1, 12, 0); },
        [&] { cycbcr_012v_to_yuv422p16(p, p + 1024, p + 2048, src.data(), 6, 1, 12, 0); },
        [&] { cycbcr_012v_to_yuv444p10(p, p + 1024, p + 2048, src.data(), 6, 1, 12, 0); },
        [&] { cycbcr_012v_to_yuv420p10(p, p + 1024, p + 2048, src.data(), 6, 2, 12, 6, 0); },
        [&] { cycbcr_yuv422p10_to_uyvy(p, src.data(), src.data(), src.data(), 6, 1, 12, 12); },
        [&] { cycbcr_yuv420p10_to_uyvy(p, src.data(), src.data(), src.data(), 6, 1, 12, 12); },
        [&] { cycbcr_yuv420p16_to_uyvy(p, src.data(), src.data(), src.data(), 6, 1, 12, 12); },
        [&] { cycbcr_uyvy_to_yuv444p10(p, p + 1024, p + 2048, src.data(), 6, 1, 12, 12); },
    };
    for (size_t i = 0; i < entries.size(); ++i) {
        fresh();
        entries[i]();
        EXPECT_NE(gdwProcType, kLevelMarker) << "entry " << i;
    }
    fresh();
    cycbcr_yuv422p10_to_uyvy_internal(p, src.data(), src.data(), src.data(), 6, 1, 12, 12);
    EXPECT_EQ(gdwProcType, kLevelMarker);
    cycbcr_set_cpu(0);
}

TEST(V210ToPlanar, Planar444PlainLeavesOddChromaPositions) {
    std::vector<uint32_t> words;
    for (int g = 0; g < 4; ++g)
        for (uint32_t w : {0u | 1u << 10 | 2u << 20, 3u | 4u << 10 | 5u << 20,
                           6u | 7u << 10 | 8u << 20, 9u | 10u << 10 | 11u << 20})
            words.push_back(w + (g * (1u | 1u << 10 | 1u << 20)) * 16);
    const std::vector<uint8_t> src = v210_of_words(words);
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        std::vector<uint16_t> y(24, 0xFFFF), cb(24, 0xFFFF), cr(24, 0xFFFF);
        cycbcr_012v_to_yuv444p10(reinterpret_cast<uint8_t*>(y.data()),
                                 reinterpret_cast<uint8_t*>(cb.data()),
                                 reinterpret_cast<uint8_t*>(cr.data()), src.data(), 24, 1, 48, 0);
        for (uint32_t x = 0; x < 24; ++x) {
            const uint32_t g = x / 6, base = 16 * g, k = (x % 6) / 2;
            const uint32_t wantCb = base + index(kCb[k]);
            const uint32_t wantCr = base + index(kCr[k]);
            EXPECT_EQ(y[x], base + index(kY[x % 6]));
            if (x % 2 == 0 || level == 5) {
                EXPECT_EQ(cb[x], wantCb) << "pixel " << x << " level " << level;
                EXPECT_EQ(cr[x], wantCr) << "pixel " << x << " level " << level;
            } else {
                EXPECT_EQ(cb[x], 0xFFFF) << "pixel " << x;
                EXPECT_EQ(cr[x], 0xFFFF) << "pixel " << x;
            }
        }
    }
}

// Plain against AVX2 at every width residue of the 24-pixel step (and of the
// 4-group exact end), padded pitches, the same random source and planes. The
// 4:4:4 forms agree in Y and the even chroma positions; the odd ones are the
// AVX2 form's own (checked against the model above).
TEST(V210ToPlanar, Avx2MatchesPlainAtEveryWidth) {
    CYCBCR_REQUIRE_AVX2();
    cycbcr_set_cpu(0);
    for (uint32_t w = 1; w <= 100; ++w)
        for (uint32_t h : {1u, 2u, 3u}) {
            const uint32_t dp = 2 * whole_groups(w) + 2 * (w % 5) + 2, sp = natural_v210(w) + 16;
            struct Pair {
                const char* name;
                V210Planar plain, avx2;
                bool full;
            };
            for (const Pair& p : {Pair{"cycbcr_012v_to_yuv422p10", cycbcr_012v_to_yuv422p10,
                                       cycbcr_012v_to_yuv422p10_avx2, false},
                                  Pair{"cycbcr_012v_to_yuv422p16", cycbcr_012v_to_yuv422p16,
                                       cycbcr_012v_to_yuv422p16_avx2, false},
                                  Pair{"cycbcr_012v_to_yuv444p10", cycbcr_012v_to_yuv444p10,
                                       cycbcr_012v_to_yuv444p10_avx2, true}}) {
                const Shape s{w, h, {dp, sp}};
                SCOPED_TRACE(std::string(p.name) + " " + ::testing::PrintToString(s));
                const Buffers init = random_buffers(sizes_of(p.name, s), w * 7 + h);
                const Outcome a = run_guarded4(call_of(p.plain, s), init);
                const Outcome b = run_guarded4(call_of(p.avx2, s), init);
                EXPECT_EQ(a.result, b.result);
                EXPECT_TRUE(same_bytes(a.after[0], b.after[0]));
                for (size_t plane : {1u, 2u}) {
                    if (!p.full) {
                        EXPECT_TRUE(same_bytes(a.after[plane], b.after[plane]));
                        continue;
                    }
                    for (uint32_t r = 0; r < h; ++r)
                        for (uint32_t x = 0; x < whole_groups(w); x += 2)
                            ASSERT_EQ(get16(a.after[plane], r * dp + 2 * x),
                                      get16(b.after[plane], r * dp + 2 * x))
                                << "plane " << plane << " row " << r << " pixel " << x;
                }
            }
            // 4:2:0 with packed planes and a v210 pitch the AVX2 form keeps: the
            // two paths then place every row alike.
            const uint32_t n = whole_groups(w);
            const Shape s{w, h, {2 * n, n, natural_v210(w)}};
            SCOPED_TRACE("4:2:0 " + ::testing::PrintToString(s));
            const Buffers init = random_buffers(sizes_of("cycbcr_012v_to_yuv420p10", s), w + 3 * h);
            const Outcome a = run_guarded4(call_of(cycbcr_012v_to_yuv420p10, s), init);
            const Outcome b = run_guarded4(call_of(cycbcr_012v_to_yuv420p10_avx2, s), init);
            EXPECT_EQ(a.result, b.result);
            EXPECT_TRUE(same(a.after, b.after));
        }
}

#ifdef CYCBCR_TEST_WITH_FFMPEG
TEST(V210ToPlanar, ReadsV210AsFfmpegDoes) {
    for (int level : entry_levels())
        for (uint32_t w : {48u, 96u, 1280u, 720u, 1920u}) {
            const uint32_t h = 6, pitch = natural_v210(w);
            std::vector<uint8_t> src = random_bytes(size_t{pitch} * h, w);
            const Frame422 ref = ffmpeg_v210_decode(src, w, h);
            ASSERT_FALSE(ref.y.empty()) << "FFmpeg refused the frame";
            // Rows of whole groups: the last row runs up to 5 samples past the width.
            std::vector<uint16_t> y(size_t{w} * h + 6), cb(size_t{w / 2} * h + 3),
                cr(size_t{w / 2} * h + 3);
            cycbcr_set_cpu(static_cast<unsigned int>(level));
            cycbcr_012v_to_yuv422p10(
                reinterpret_cast<uint8_t*>(y.data()), reinterpret_cast<uint8_t*>(cb.data()),
                reinterpret_cast<uint8_t*>(cr.data()), src.data(), w, h, 2 * w, pitch);
            y.resize(ref.y.size());
            cb.resize(ref.cb.size());
            cr.resize(ref.cr.size());
            EXPECT_EQ(y, ref.y) << "width " << w << " level " << level;
            EXPECT_EQ(cb, ref.cb) << "width " << w << " level " << level;
            EXPECT_EQ(cr, ref.cr) << "width " << w << " level " << level;
        }
}
#endif

// ----------------------------------------------------------- planar to UYVY

uint8_t truncated(uint32_t v, uint32_t) {
    return static_cast<uint8_t>((v >> 2) & 0xFF);
}

void model_p10_uyvy(Buffers& b, const Shape& s) {
    const uint32_t dp = s.pitches[0], sp = s.pitches[1];
    model_uyvy(
        b, s.height, s.width, std::max(2 * s.width, dp), sp, [](uint32_t r) { return r; },
        truncated);
}

const std::vector<Shape> kUyvyShapes = {
    {1, 1, {0, 2}},       {2, 3, {4, 4}},   {3, 2, {10, 8}},     {31, 3, {62, 64}},
    {32, 2, {70, 66}},    {33, 5, {0, 70}}, {64, 1, {128, 128}}, {65, 4, {140, 134}},
    {100, 3, {200, 202}}, {0, 2, {8, 8}},   {16, 0, {32, 32}},   {47, 7, {94, 96}},
};

TEST(PlanarToUyvy, Planar422p10AgainstModel) {
    for (int level : levels())
        for (const Shape& s : kUyvyShapes) {
            const uint32_t count = std::max(2 * s.width, s.pitches[0]) * s.height;
            auto model = [&](Buffers& b) { model_p10_uyvy(b, s); };
            expect_model("cycbcr_yuv422p10_to_uyvy", cycbcr_yuv422p10_to_uyvy,
                         cycbcr_yuv422p10_to_uyvy_avx2, level, s, 41, model, count);
            // _internal at each level: the AVX2 row kernel inside at level 5.
            if (level != kTwin)
                expect_model("cycbcr_yuv422p10_to_uyvy_internal", cycbcr_yuv422p10_to_uyvy_internal,
                             cycbcr_yuv422p10_to_uyvy_internal, level, s, 43, model, count);
        }
}

// The 4:2:0 converters: whole pairs, chroma row r / 2, saturating below the
// width rounded down to 16 and keeping the low byte after it.
void model_p420_uyvy(Buffers& b, const Shape& s, unsigned shift) {
    const uint32_t clamped = s.width >= 16 ? s.width / 16 * 16 : 0;
    model_uyvy(
        b, s.height, s.width / 2 * 2, s.pitches[0], s.pitches[1], [](uint32_t r) { return r / 2; },
        [&](uint32_t v, uint32_t x) {
            const uint32_t t = v >> shift;
            return static_cast<uint8_t>(x < clamped ? std::min<uint32_t>(t, 255) : t);
        });
}

TEST(PlanarToUyvy, Planar420AgainstModel) {
    const std::vector<Shape> shapes = {
        {2, 1, {4, 4}},      {3, 3, {8, 6}},     {16, 2, {32, 32}}, {17, 5, {40, 36}},
        {33, 4, {66, 66}},   {48, 7, {100, 98}}, {1, 2, {4, 2}},    {0, 2, {0, 0}},
        {63, 1, {130, 128}}, {20, 0, {40, 40}},
    };
    for (int level : levels())
        for (const Shape& s : shapes)
            for (unsigned shift : {2u, 8u}) {
                const char* name =
                    shift == 2 ? "cycbcr_yuv420p10_to_uyvy" : "cycbcr_yuv420p16_to_uyvy";
                PlanarUyvy fn = shift == 2 ? cycbcr_yuv420p10_to_uyvy : cycbcr_yuv420p16_to_uyvy;
                PlanarUyvy twin =
                    shift == 2 ? cycbcr_yuv420p10_to_uyvy_avx2 : cycbcr_yuv420p16_to_uyvy_avx2;
                auto model = [&](Buffers& b) { model_p420_uyvy(b, s, shift); };
                expect_model(name, fn, twin, level, s, 53, model, s.pitches[0] * s.height);
            }
}

TEST(PlanarToUyvy, WorkedNumbers) {
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        // 4:2:2 p10, 64 pixels: Y alternates 1023 and 514, Cb 0x404 (bits 10+
        // ignored: 1), Cr 0xFFFF.
        std::vector<uint16_t> y(64), cb(32, 0x404), cr(32, 0xFFFF);
        for (size_t i = 0; i < y.size(); ++i) y[i] = i % 2 == 0 ? 1023 : 514;
        std::vector<uint8_t> dst(128, 0);
        EXPECT_EQ(cycbcr_yuv422p10_to_uyvy(dst.data(), reinterpret_cast<uint8_t*>(y.data()),
                                           reinterpret_cast<uint8_t*>(cb.data()),
                                           reinterpret_cast<uint8_t*>(cr.data()), 64, 1, 0, 128),
                  128u);
        for (size_t k = 0; k < 32; ++k) {
            EXPECT_EQ(dst[4 * k], 1) << "level " << level;
            EXPECT_EQ(dst[4 * k + 1], 255) << "level " << level;
            EXPECT_EQ(dst[4 * k + 2], 255) << "level " << level;
            EXPECT_EQ(dst[4 * k + 3], 128) << "level " << level;
        }
        // 4:2:0 p16: 0xFFFF -> 255, 0x8000 -> 128, 0x01FF -> 1; p10 1023 -> 255.
        std::vector<uint16_t> y16(32, 0xFFFF), cb16(16, 0x8000), cr16(16, 0x01FF);
        std::vector<uint8_t> out(64, 0);
        EXPECT_EQ(cycbcr_yuv420p16_to_uyvy(out.data(), reinterpret_cast<uint8_t*>(y16.data()),
                                           reinterpret_cast<uint8_t*>(cb16.data()),
                                           reinterpret_cast<uint8_t*>(cr16.data()), 32, 1, 64, 64),
                  64u);
        for (size_t k = 0; k < 16; ++k) {
            EXPECT_EQ(out[4 * k], 128);
            EXPECT_EQ(out[4 * k + 1], 255);
            EXPECT_EQ(out[4 * k + 2], 1);
        }
        std::vector<uint16_t> y10(32, 1023);
        cycbcr_yuv420p10_to_uyvy(out.data(), reinterpret_cast<uint8_t*>(y10.data()),
                                 reinterpret_cast<uint8_t*>(y10.data()),
                                 reinterpret_cast<uint8_t*>(y10.data()), 32, 1, 64, 64);
        for (uint8_t v : out) EXPECT_EQ(v, 255);
    }
}

// Plain against AVX2 at every width residue of the 32-pixel (4:2:2) and 16-pixel
// (4:2:0) steps, with padded pitches and samples over their depth.
TEST(PlanarToUyvy, Avx2MatchesPlainAtEveryWidth) {
    CYCBCR_REQUIRE_AVX2();
    cycbcr_set_cpu(0);
    struct Pair {
        const char* name;
        PlanarUyvy plain, avx2;
    };
    for (uint32_t w = 1; w <= 99; ++w)
        for (uint32_t h : {1u, 2u, 3u})
            for (const Pair& p :
                 {Pair{"cycbcr_yuv422p10_to_uyvy", cycbcr_yuv422p10_to_uyvy_internal,
                       cycbcr_yuv422p10_to_uyvy_avx2},
                  Pair{"cycbcr_yuv420p10_to_uyvy", cycbcr_yuv420p10_to_uyvy,
                       cycbcr_yuv420p10_to_uyvy_avx2},
                  Pair{"cycbcr_yuv420p16_to_uyvy", cycbcr_yuv420p16_to_uyvy,
                       cycbcr_yuv420p16_to_uyvy_avx2}}) {
                const Shape s{w, h, {2 * w + 2 * (w % 3) + 2, 2 * w + 4 * (w % 4) + 4}};
                SCOPED_TRACE(std::string(p.name) + " " + ::testing::PrintToString(s));
                const Buffers init = random_buffers(sizes_of(p.name, s), w * 5 + h);
                const Outcome a = run_guarded4(call_of(p.plain, s), init);
                const Outcome b = run_guarded4(call_of(p.avx2, s), init);
                EXPECT_EQ(a.result, b.result);
                EXPECT_TRUE(same(a.after, b.after));
            }
}

// ------------------------------------------------------------------ the bands

unsigned int uyvy_count(uint32_t width, uint32_t height, uint32_t dstPitch) {
    const Shape s{width, height, {dstPitch, 2 * width}};
    const Buffers init = random_buffers(sizes_of("cycbcr_yuv422p10_to_uyvy", s), 5);
    return run_guarded4(call_of(cycbcr_yuv422p10_to_uyvy, s), init).result;
}

TEST(PlanarToUyvyBands, ThresholdSeenInTheCount) {
    // One thread: the larger of 2 * width and dstPitch, times height; bands:
    // height * dstPitch as passed. A dstPitch of 1 tells them apart.
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        EXPECT_EQ(uyvy_count(2048, 9, 1), 4096u * 9) << "level " << level;
        EXPECT_EQ(uyvy_count(2049, 9, 1), 9u) << "level " << level;
        EXPECT_EQ(uyvy_count(2049, 9, 0), 0u) << "level " << level;
        EXPECT_EQ(uyvy_count(2049, 3, 4200), 3u * 4200) << "level " << level;
    }
}

TEST(PlanarToUyvyBands, WideFramesAgainstModel) {
    // Heights below 8 leave all rows to band 7; 19 gives bands of 2 and a last
    // one of 5.
    for (int level : levels())
        for (uint32_t h : {1u, 5u, 7u, 8u, 19u})
            for (uint32_t w : {2049u, 2113u}) {
                const Shape s{w, h, {2 * w + 6, 2 * w + 10}};
                auto model = [&](Buffers& b) { model_p10_uyvy(b, s); };
                // The _avx2 form (kTwin) takes any width on one thread; with
                // dstPitch above 2 * width its count is the same.
                expect_model("cycbcr_yuv422p10_to_uyvy", cycbcr_yuv422p10_to_uyvy,
                             cycbcr_yuv422p10_to_uyvy_avx2, level, s, 61 + h, model,
                             s.pitches[0] * h);
            }
}

TEST(PlanarToUyvyBands, WorkerConvertsItsBandAndReportsIt) {
    const uint32_t w = 40, rows = 3;
    const Shape s{w, rows, {2 * w, 2 * w}};
    Buffers init = random_buffers(sizes_of("cycbcr_yuv422p10_to_uyvy_internal", s), 71);
    Buffers want = init;
    model_p10_uyvy(want, s);
    volatile int32_t pending = 2;
    band_job job{init[0].data(), init[1].data(), init[2].data(), init[3].data(), w,
                 rows,           2 * w,          2 * w,          &pending,       nullptr};
    cycbcr_set_cpu(0);
    EXPECT_EQ(cycbcr_yuv422p10_to_uyvy_worker(&job), 2 * w * rows);
    EXPECT_EQ(pending, 1);
    EXPECT_TRUE(same(init, want));
}

// ------------------------------------------------------- UYVY to 4:4:4 p10

TEST(UyvyTo444, AgainstModel) {
    for (int level : levels())
        for (const Shape& s : kUyvyShapes) {
            const uint32_t dp = std::max(2 * s.width, s.pitches[0]), sp = s.pitches[1];
            const Shape t{s.width, s.height, {dp, sp}};
            auto model = [&](Buffers& b) {
                const size_t srcPitch = std::max(2 * s.width, sp);
                for (uint32_t r = 0; r < s.height; ++r)
                    for (uint32_t x = 0; x < s.width; ++x) {
                        const size_t pair = r * srcPitch + 4 * size_t{x / 2};
                        put16(b[0], r * size_t{dp} + 2 * x,
                              b[3].at(r * srcPitch + 2 * size_t{x} + 1) * 4u);
                        put16(b[1], r * size_t{dp} + 2 * x, b[3].at(pair) * 4u);
                        put16(b[2], r * size_t{dp} + 2 * x, b[3].at(pair + 2) * 4u);
                    }
            };
            expect_model("cycbcr_uyvy_to_yuv444p10", cycbcr_uyvy_to_yuv444p10,
                         cycbcr_uyvy_to_yuv444p10_avx2, level, t, 81, model,
                         s.width * s.height * 6);
        }
}

TEST(UyvyTo444, WorkedNumbersAndEveryWidth) {
    const uint8_t pixelPair[4] = {16, 255, 128, 0};  // Cb Y0 Cr Y1
    for (int level : entry_levels()) {
        cycbcr_set_cpu(static_cast<unsigned int>(level));
        std::vector<uint8_t> src;
        for (int i = 0; i < 20; ++i) src.insert(src.end(), pixelPair, pixelPair + 4);
        std::vector<uint16_t> y(40), cb(40), cr(40);
        cycbcr_uyvy_to_yuv444p10(reinterpret_cast<uint8_t*>(y.data()),
                                 reinterpret_cast<uint8_t*>(cb.data()),
                                 reinterpret_cast<uint8_t*>(cr.data()), src.data(), 40, 1, 80, 80);
        for (size_t x = 0; x < 40; ++x) {
            EXPECT_EQ(y[x], x % 2 == 0 ? 1020 : 0);
            EXPECT_EQ(cb[x], 64);
            EXPECT_EQ(cr[x], 512);
        }
    }
    if (!have_avx2()) return;
    cycbcr_set_cpu(0);
    for (uint32_t w = 1; w <= 40; ++w)
        for (uint32_t h : {1u, 3u}) {
            const Shape s{w, h, {2 * w + 6, 2 * w + 2 * (w % 3)}};
            SCOPED_TRACE(::testing::PrintToString(s));
            const Buffers init = random_buffers(sizes_of("cycbcr_uyvy_to_yuv444p10", s), w);
            const Outcome a = run_guarded4(call_of(cycbcr_uyvy_to_yuv444p10, s), init);
            const Outcome b = run_guarded4(call_of(cycbcr_uyvy_to_yuv444p10_avx2, s), init);
            EXPECT_EQ(a.result, b.result);
            EXPECT_TRUE(same(a.after, b.after));
        }
}

// -------------------------------------------------------- buffer-size answers

TEST(HbdPlanarSizes, EveryNameAnswered) {
    const unsigned int pitches[3] = {100, 50, 128};
    uint64_t bytes[4];
    for (const char* name :
         {"cycbcr_012v_to_yuv422p10", "cycbcr_012v_to_yuv422p10_avx2", "cycbcr_012v_to_yuv422p16",
          "cycbcr_012v_to_yuv422p16_avx2", "cycbcr_012v_to_yuv444p10",
          "cycbcr_012v_to_yuv444p10_avx2", "cycbcr_012v_to_yuv420p10",
          "cycbcr_012v_to_yuv420p10_avx2", "cycbcr_yuv422p10_to_uyvy",
          "cycbcr_yuv422p10_to_uyvy_avx2", "cycbcr_yuv422p10_to_uyvy_internal",
          "cycbcr_yuv420p10_to_uyvy", "cycbcr_yuv420p10_to_uyvy_avx2", "cycbcr_yuv420p16_to_uyvy",
          "cycbcr_yuv420p16_to_uyvy_avx2", "cycbcr_uyvy_to_yuv444p10",
          "cycbcr_uyvy_to_yuv444p10_avx2"})
        EXPECT_EQ(cycbcr_converter_pointer_sizes(name, 30, 5, pitches, 3, bytes), 1u) << name;
    EXPECT_EQ(cycbcr_converter_pointer_sizes("cycbcr_012v_to_yuv422p12", 30, 5, pitches, 3, bytes),
              0u);
    // Hand-worked: 4:2:0 plain at 30x5 with a v210 pitch of 128: five packed Y
    // rows of 30 samples, three chroma rows of 15, six v210 rows read (the last
    // row's partner), the sixth to the end of its five groups.
    const unsigned int packed[3] = {0, 0, 128};
    EXPECT_EQ(cycbcr_converter_pointer_sizes("cycbcr_012v_to_yuv420p10", 30, 5, packed, 3, bytes),
              1u);
    EXPECT_EQ(bytes[0], 300u);
    EXPECT_EQ(bytes[1], 90u);
    EXPECT_EQ(bytes[2], 90u);
    EXPECT_EQ(bytes[3], 5u * 128 + 80);
}

}  // namespace
