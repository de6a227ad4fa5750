// cycbcr_transcode and cycbcr_can_transcode: every code of a pair reaches the
// converter of its canonical pair with the normalised pitches, and every pair
// without one answers 0 without touching the destination.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/converters.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

using namespace cycbcr_test;

namespace {

enum Fmt { V210, I420, YV12, P422, YUY2, UYVY, YVYU, CYUV, RGB, kFormats };
const char* const kNames[kFormats] = {"v210", "I420", "YV12", "P422", "YUY2",
                                      "UYVY", "YVYU", "cyuv", "RGB"};

// Every accepted code with its format. "422P" is not among them.
const std::pair<uint32_t, Fmt> kCodes[] = {
    {fourcc("v210"), V210}, {fourcc("012v"), V210}, {fourcc("I420"), I420}, {fourcc("IYUV"), I420},
    {fourcc("YV12"), YV12}, {fourcc("P422"), P422}, {fourcc("YUY2"), YUY2}, {fourcc("YUNV"), YUY2},
    {fourcc("UYVY"), UYVY}, {fourcc("UYNV"), UYVY}, {fourcc("AJYU"), UYVY}, {fourcc("yuv2"), UYVY},
    {fourcc("yuV2"), UYVY}, {fourcc("2vuy"), UYVY}, {fourcc("2Vuy"), UYVY}, {0x8800001E, UYVY},
    {0x8810001E, UYVY},     {fourcc("YVYU"), YVYU}, {fourcc("cyuv"), CYUV}, {0, RGB}};
const uint32_t k422P = fourcc("422P");
// The sources: every accepted code and "422P".
const auto kSources = [] {
    std::vector<std::pair<uint32_t, Fmt>> all(std::begin(kCodes), std::end(kCodes));
    all.push_back({k422P, P422});
    return all;
}();
const uint32_t kUnknown[] = {fourcc("NV12"), fourcc("uyvy"), fourcc("Yuy2"), fourcc("V210"),
                             fourcc("YUV2"), fourcc("yUv2"), fourcc("2vUy"), 0x8800001F,
                             0x8820001E,     0xFFFFFFFF};

uint32_t canonical(Fmt f) {
    for (const auto& [code, fmt] : kCodes)
        if (fmt == f) return code;
    return 0;
}

// Every converter of the pair table, declared weak: a converter the library
// does not define (yet) is null here, and the dispatcher must refuse its pair.
// Linked from the static library, a weak reference alone pulls in no object:
// a converter shows up here once the dispatcher refers to it, or when it
// shares an object with one it refers to (and then must be routed too).
// Rows and columns in the order of Fmt.
// clang-format off
#define CONVERTER_ARGS uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned
#define RGB_ARGS CONVERTER_ARGS, QBYCBCRMatrix, QBYCBCRRgbType
#define ALL_FORMATS(X) X(012v) X(i420) X(yv12) X(p422) X(yuy2) X(uyvy) X(yvyu) X(cyuv)
#define ROW(X, a) X(a, 012v) X(a, i420) X(a, yv12) X(a, p422) \
                  X(a, yuy2) X(a, uyvy) X(a, yvyu) X(a, cyuv)
#define WEAK(f) extern "C" __attribute__((weak)) unsigned f
#define DECLARE(a, b) WEAK(cycbcr_##a##_to_##b)(CONVERTER_ARGS);
#define DECLARE_ROW(a) ROW(DECLARE, a) WEAK(cycbcr_##a##_to_rgb32)(RGB_ARGS); \
    extern "C" __attribute__((weak)) uint64_t cycbcr_RGB32_to_##a(RGB_ARGS);
#define PAIR(a, b) cycbcr_##a##_to_##b,
#define PAIR_ROW(a) ROW(PAIR, a)
#define TO_RGB(a) cycbcr_##a##_to_rgb32,
#define FROM_RGB(a) cycbcr_RGB32_to_##a,
ALL_FORMATS(DECLARE_ROW)
using RgbConverter = unsigned (*)(RGB_ARGS);
using FromRgbConverter = uint64_t (*)(RGB_ARGS);  // a 64-bit count
const Converter kPairs[RGB * RGB] = {ALL_FORMATS(PAIR_ROW)};
const RgbConverter kToRgb[RGB] = {ALL_FORMATS(TO_RGB)};
const FromRgbConverter kFromRgb[RGB] = {ALL_FORMATS(FROM_RGB)};
// clang-format on

constexpr QBYCBCRMatrix kMatrix = 3;
constexpr QBYCBCRRgbType kRgbType = 0x8002;

constexpr size_t kFrameBytes = 4096;  // room for every geometry used below

unsigned transcode(uint8_t* dst, const uint8_t* src, const Geometry& g, uint32_t to,
                   uint32_t from) {
    return cycbcr_transcode(dst, src, g.width, g.height, g.dstPitch, g.srcPitch, kMatrix, kRgbType,
                            to, from);
}

// Expects the call to answer 0 and leave every byte of a guarded destination.
void expect_refused(uint32_t to, uint32_t from, const Geometry& g) {
    const auto src = random_bytes(kFrameBytes, 1), init = random_bytes(kFrameBytes, 2);
    GuardedBuffer dst(kFrameBytes);
    std::copy(init.begin(), init.end(), dst.data());
    EXPECT_EQ(transcode(dst.data(), src.data(), g, to, from), 0u)
        << std::hex << from << " to " << to;
    EXPECT_TRUE(std::equal(init.begin(), init.end(), dst.data()) && dst.slack_intact())
        << "wrote for " << std::hex << from << " to " << to;
}

// The converter of a pair, called directly with the pitches normalised by the
// pitch rule (whose own test is fix_pitch_test) under the codes given; -1 when
// the library has none.
int64_t call_direct(Fmt from, Fmt to, uint8_t* dst, const uint8_t* src, const Geometry& g,
                    uint32_t fromCode, uint32_t toCode) {
    unsigned int dp = g.dstPitch, sp = g.srcPitch;
    _fixPitch(toCode, g.width, dp);
    _fixPitch(fromCode, g.width, sp);
    if (from != RGB && to != RGB) {
        const Converter fn = kPairs[from * RGB + to];
        return fn ? int64_t{fn(dst, src, g.width, g.height, dp, sp)} : -1;
    }
    if (from == RGB) {
        // The dispatcher returns the count in 32 bits.
        const FromRgbConverter fn = kFromRgb[to];
        return fn ? int64_t{static_cast<unsigned>(
                        fn(dst, src, g.width, g.height, dp, sp, kMatrix, kRgbType))}
                  : -1;
    }
    const RgbConverter fn = kToRgb[from];
    return fn ? int64_t{fn(dst, src, g.width, g.height, dp, sp, kMatrix, kRgbType)} : -1;
}

// Whatever code stands for each side, the dispatcher gives exactly what the
// pair's converter gives; pairs without a converter are refused. "422P" as a
// source is P422 with its pitch as given (200 for width 37 would become 37).
TEST(Transcode, EveryPairReachesItsConverterOrIsRefused) {
    const Geometry shapes[] = {{36, 3, 0, 0}, {36, 3, 50, 100}, {36, 3, 112, 90}, {37, 2, 96, 200}};
    const auto src = random_bytes(kFrameBytes, 1), init = random_bytes(kFrameBytes, 2);
    for (int from = 0; from < kFormats; ++from)
        for (int to = 0; to < kFormats; ++to) {
            const std::string pair = std::string(kNames[from]) + " to " + kNames[to];
            std::vector<uint8_t> probe(init);
            if ((from == RGB && to == RGB) ||
                call_direct(Fmt(from), Fmt(to), probe.data(), src.data(), shapes[0],
                            canonical(Fmt(from)), canonical(Fmt(to))) < 0) {
                expect_refused(canonical(Fmt(to)), canonical(Fmt(from)), shapes[0]);
                continue;
            }
            for (unsigned level : {0u, 5u}) {
                cycbcr_set_cpu(level);
                for (const auto& [fromCode, ff] : kSources)
                    for (const auto& [toCode, tf] : kCodes) {
                        if (ff != from || tf != to) continue;
                        for (const Geometry& g : shapes) {
                            auto viaCodes = init, direct = init;
                            const unsigned got =
                                transcode(viaCodes.data(), src.data(), g, toCode, fromCode);
                            const int64_t want = call_direct(Fmt(from), Fmt(to), direct.data(),
                                                             src.data(), g, fromCode, toCode);
                            ASSERT_EQ(got, want)
                                << pair << std::hex << ", codes " << fromCode << ", " << toCode;
                            ASSERT_TRUE(same_bytes(viaCodes, direct)) << pair << ", " << g;
                        }
                    }
            }
        }
}

// Unknown codes on either side and "422P" as a destination are refused without
// a write. The query answers 1 exactly for two accepted codes: also for RGB with
// RGB, which the dispatcher refuses, and 0 for "422P", which it takes as a source.
TEST(Transcode, RefusedCodesAndTheQuery) {
    std::vector<std::pair<uint32_t, bool>> codes;  // code, accepted
    for (const auto& [code, fmt] : kCodes) codes.push_back({code, true});
    codes.push_back({k422P, false});
    for (uint32_t c : kUnknown) codes.push_back({c, false});
    for (const auto& [a, okA] : codes)
        for (const auto& [b, okB] : codes) {
            EXPECT_EQ(cycbcr_can_transcode(a, b), okA && okB ? 1u : 0u)
                << std::hex << a << ", " << b;
            if (!okA || (!okB && b != k422P)) expect_refused(a, b, {36, 3, 0, 0});
        }
}

// Worked pitches at width 720, as the converter receives them: UYVY 0 becomes
// 1440; v210 0 stays 0 (which the AVX2 unpacker reads as every row at the first),
// 1000 and 1930 become 1920, 2048 stays; I420 1440 becomes 720.
TEST(Transcode, ConvertersReceiveNormalisedPitches) {
    const struct {
        const char *from, *to;
        Converter fn;
        uint32_t dp, sp, wantDp, wantSp;
    } cases[] = {
        {"UYVY", "v210", cycbcr_uyvy_to_012v, 0, 0, 0, 1440},
        {"UYVY", "v210", cycbcr_uyvy_to_012v, 1000, 0, 1920, 1440},
        {"UYVY", "v210", cycbcr_uyvy_to_012v, 1930, 0, 1920, 1440},
        {"UYVY", "v210", cycbcr_uyvy_to_012v, 2048, 0, 2048, 1440},
        {"I420", "v210", cycbcr_i420_to_012v, 1440, 1440, 1920, 720},
        {"012v", "2vuy", cycbcr_012v_to_uyvy, 0, 0, 1440, 0},
    };
    const auto src = random_bytes(8 * 1440, 5);
    for (unsigned level : {0u, 5u})
        for (const auto& c : cases) {
            cycbcr_set_cpu(level);
            std::vector<uint8_t> a(4 * 2048), b(a.size());
            EXPECT_EQ(cycbcr_transcode(a.data(), src.data(), 720, 2, c.dp, c.sp, 0, 0, fourcc(c.to),
                                       fourcc(c.from)),
                      c.fn(b.data(), src.data(), 720, 2, c.wantDp, c.wantSp));
            EXPECT_TRUE(same_bytes(a, b)) << c.from << " to " << c.to << " pitches " << c.dp << ", "
                                          << c.sp << ", level " << level;
        }
}

// The first call chooses the level before it looks at the codes, so the
// converter already runs at the chosen level.
TEST(Transcode, FirstCallChoosesTheLevel) {
    const uint32_t chosen = cycbcr_set_cpu(5);
    uint8_t buf[64] = {};
    gdwProcType = kLevelMarker;
    EXPECT_EQ(transcode(buf, buf + 32, {2, 1, 4, 4}, fourcc("NV12"), fourcc("UYVY")), 0u);
    EXPECT_EQ(gdwProcType, chosen) << "refused pair";

    // A v210 sample of 1022 comes out as 0 only on the AVX2 path.
    uint8_t v210[128] = {}, out[12] = {};
    for (size_t i = 0; i < 16; i += 4) {
        const uint32_t word = 1022 | 1022 << 10 | 1022 << 20;
        std::memcpy(v210 + i, &word, 4);
    }
    gdwProcType = kLevelMarker;
    EXPECT_EQ(transcode(out, v210, {6, 1, 12, 128}, fourcc("UYVY"), fourcc("v210")), 12u);
    EXPECT_EQ(gdwProcType, chosen);
    EXPECT_EQ(out[0], chosen == 5 && have_avx2() ? 0 : 255);
}

// Pairs with RGB (code 0) on one side: every YCbCr source, v210 included,
// reaches its 32-bit converter ("422P" as P422), with matrix and rgbType passed
// on; RGB reaches the converter of every destination but RGB and "422P".
TEST(TranscodeRgb, SourcesReachTheirRgb32Converters) {
    const RgbConverter want[RGB] = {
        cycbcr_012v_to_rgb32, cycbcr_i420_to_rgb32, cycbcr_yv12_to_rgb32, cycbcr_p422_to_rgb32,
        cycbcr_yuy2_to_rgb32, cycbcr_uyvy_to_rgb32, cycbcr_yvyu_to_rgb32, cycbcr_cyuv_to_rgb32};
    for (int f = 0; f < RGB; ++f) EXPECT_EQ(kToRgb[f], want[f]) << kNames[f];
    for (const auto& [code, fmt] : kSources) {
        const RgbConverter fn = fmt == RGB ? nullptr : want[fmt];
        EXPECT_EQ(cycbcr_rgb_pair_converter(0, code), fn) << std::hex << code;
        EXPECT_EQ(cycbcr_rgb_pair_converter(code, 0), nullptr) << std::hex << code;
        EXPECT_EQ(cycbcr_pair_converter(0, code), nullptr) << std::hex << code;
        EXPECT_EQ(cycbcr_pair_converter(code, 0), nullptr) << std::hex << code;
        if (fn == nullptr) expect_refused(0, code, {36, 3, 0, 0});
        // From RGB: the RGB32 converter of every 8-bit format and of v210; RGB
        // and "422P" (never a destination) refused.
        const bool none = fmt == RGB || code == k422P;
        const FromRgbConverter back = none ? nullptr : kFromRgb[fmt];
        EXPECT_NE(none, back != nullptr) << std::hex << code;
        EXPECT_EQ(cycbcr_from_rgb_pair_converter(code), back) << std::hex << code;
        if (back == nullptr) expect_refused(code, 0, {36, 3, 0, 0});
    }
    EXPECT_EQ(cycbcr_rgb_pair_converter(0, 0), nullptr);
    EXPECT_EQ(cycbcr_rgb_pair_converter(k422P, fourcc("UYVY")), nullptr);
    for (uint32_t c : kUnknown) EXPECT_EQ(cycbcr_rgb_pair_converter(0, c), nullptr);

    // Matrix and type reach the converter: the same bytes as a direct call for
    // each, and the values change the bytes.
    const auto src = random_bytes(kFrameBytes, 3);
    for (unsigned level : {0u, 4u}) {
        cycbcr_set_cpu(level);
        for (const char* from : {"YUY2", "I420", "422P", "v210"}) {
            const RgbConverter fn = cycbcr_rgb_pair_converter(0, fourcc(from));
            std::vector<std::vector<uint8_t>> seen;
            for (QBYCBCRMatrix m : {0u, 1u, 2u, 3u, 6u, 7u})
                for (QBYCBCRRgbType t : {0u, 1u, 2u, 3u, 0x8000u, 0x8003u}) {
                    std::vector<uint8_t> a(kFrameBytes, 1), b(a);
                    const unsigned got = cycbcr_transcode(a.data(), src.data(), 20, 4, 96, 40, m, t,
                                                          0, fourcc(from));
                    // (the converter is handed the pitch rule's source pitch)
                    const unsigned sp = cycbcr_fix_pitch(fourcc(from), 20, 40);
                    EXPECT_EQ(got, fn(b.data(), src.data(), 20, 4, 96, sp, m, t));
                    EXPECT_TRUE(same_bytes(a, b)) << from << " matrix " << m << " type " << t;
                    // (I420 with type 0 takes BT.601 for every matrix but 2 to 5.)
                    const bool bt601 = std::string(from) == "I420" && t == 0 && m != 2 && m != 3;
                    if (bt601 && m != 0) continue;
                    EXPECT_TRUE(std::find(seen.begin(), seen.end(), a) == seen.end())
                        << from << " matrix " << m << " type " << t << " as another's bytes";
                    seen.push_back(a);
                }
        }
    }
}

// UYVY to RGB at width 720 with both pitches 0: the converter is handed source
// pitch 1440 (the pitch rule) and destination pitch 0 (RGB pitches are kept).
TEST(TranscodeRgb, UyvyPitchesAsTheConverterReceivesThem) {
    const uint32_t w = 720, h = 4;
    const auto src = random_bytes(size_t{1500} * h, 4);  // room for rows 1500 apart
    auto direct = [&](uint32_t dp, uint32_t sp, QBYCBCRMatrix m, unsigned* res) {
        std::vector<uint8_t> d(size_t{w * 4 + 64} * h, 1);
        *res = cycbcr_uyvy_to_rgb32(d.data(), src.data(), w, h, dp, sp, m, 0);
        return d;
    };
    auto viaCodes = [&](uint32_t dp, QBYCBCRMatrix m, unsigned* res) {
        std::vector<uint8_t> d(size_t{w * 4 + 64} * h, 1);
        *res = cycbcr_transcode(d.data(), src.data(), w, h, dp, 0, m, 0, 0, fourcc("UYVY"));
        return d;
    };
    unsigned a = 0, b = 0;
    // Level 0, the engine: w * h * 4 whatever the pitches; all rows written over
    // the first, as with a destination pitch of 0.
    cycbcr_set_cpu(0);
    const auto engine = viaCodes(0, 0, &a);
    EXPECT_EQ(a, w * h * 4);
    EXPECT_EQ(engine, direct(0, 1440, 0, &b));
    EXPECT_NE(engine, direct(w * 4, 1440, 0, &b));
    // Level 4 with matrix 1, the image-library route, reads source rows a
    // pitch apart: the bytes show the pitch of 1440.
    cycbcr_set_cpu(4);
    const uint32_t dp = w * 4 + 64;
    const auto library = viaCodes(dp, 1, &a);
    EXPECT_EQ(library, direct(dp, 1440, 1, &b));
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, h * dp);
    EXPECT_NE(library, direct(dp, 1500, 1, &b));
}

// "422P" is accepted as a source of RGB: P422's converter, its pitch unchanged.
TEST(TranscodeRgb, P422SourceCodeToRgb) {
    const auto src = random_bytes(kFrameBytes, 5);
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        std::vector<uint8_t> a(kFrameBytes, 2), b(a);
        const unsigned got =
            cycbcr_transcode(a.data(), src.data(), 37, 3, 160, 200, 2, 3, 0, k422P);
        EXPECT_EQ(got, 37u * 3 * 4);
        EXPECT_EQ(got, cycbcr_p422_to_rgb32(b.data(), src.data(), 37, 3, 160, 200, 2, 3));
        EXPECT_TRUE(same_bytes(a, b));
        EXPECT_NE(a, std::vector<uint8_t>(kFrameBytes, 2));
    }
}

// The converter lists the library is built from: every pair of the eight YCbCr
// formats once, each named cycbcr_<from>_to_<to> by the formats' short names;
// every other form named after its pair with _avx2 or _opt; and each AVX2
// hand-over a listed AVX2 form between the same two formats (in either order:
// the operations shared by both directions have one form).
TEST(ConverterLists, NamesFormatsAndForms) {
    using cycbcr::info;
    std::set<std::pair<Format, Format>> pairs;
    for (const Listed& l : listed_converters()) {
        // Formats without a FourCC are reached by name only, not through these pairs.
        if (info(l.from).fourcc == cycbcr::kNoFourCC || info(l.to).fourcc == cycbcr::kNoFourCC)
            continue;
        const std::string stem =
            std::string("cycbcr_") + info(l.from).name + "_to_" + info(l.to).name;
        if (l.pair) {
            EXPECT_EQ(l.name, stem);
            EXPECT_TRUE(pairs.insert({l.from, l.to}).second) << l.name << " listed twice";
        } else {
            EXPECT_TRUE(l.name == stem + "_avx2" || l.name == stem + "_opt") << l.name;
        }
        if (l.avx2 == nullptr) continue;
        bool found = false;
        for (const Listed& f : listed_converters())
            found |= f.fn == l.avx2 && f.avx2_form() &&
                     ((f.from == l.from && f.to == l.to) || (f.from == l.to && f.to == l.from));
        EXPECT_TRUE(found) << l.name << " hands over to an unlisted form";
    }
    EXPECT_EQ(pairs.size(), 64u);
}

}  // namespace
