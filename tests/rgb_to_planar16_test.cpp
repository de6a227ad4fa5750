// RGB to planar YCbCr in 16-bit containers: the x 160,000 weights digit for
// digit, hand-worked samples of every converter, every converter against a
// per-pixel model written here on random frames (every channel order, the
// bottom-up flag, every pixel size, every matrix) between guard pages sized
// by the per-pointer buffer-size query, level 0 against level 5 at every
// width residue of the vector step (16) and of the six-pixel block, and the
// level choice on entry.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "fromrgb/to_planar16.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"
#include "support/to_v210_model.h"

namespace {

using namespace cycbcr_test;

// ---- The model ----

// 12-bit weights (x 160,000): index 0 the default row, 1 to 9 the matrices.
V210Weights p12_weights(QBYCBCRMatrix m) {
    // clang-format off
    static const V210Weights rows[10] = {
        {256, {41120, 80640, 15680}, {-23680, -46560, 70240}, {70240, -58880, -11359}},
        {0, {47841, 93920, 18237}, {-27612, -54213, 81826}, {81826, -68520, -13305}},
        {256, {29280, 98240, 9920}, {-16160, -54080, 70240}, {70240, -63840, -6400}},
        {0, {34080, 114400, 11520}, {-18720, -63040, 81760}, {81760, -74240, -7520}},
        {256, {29130, 97988, 9892}, {-16054, -54013, 70068}, {70068, -63642, -6425}},
        {0, {34016, 114431, 11552}, {-18331, -61668, 80000}, {80000, -72664, -7335}},
        {256, {36097, 93164, 8148}, {-19625, -50649, 70273}, {70273, -64622, -5651}},
        {0, {42032, 108480, 9488}, {-22340, -57659, 80000}, {80000, -73566, -6433}},
        {256, {35520, 100960, 79360}, {-43200, -122880, 164800}, {75040, -69760, -5440}},
        {0, {41440, 118080, 92800}, {-49280, -140480, 189760}, {85920, -79680, -6240}}};
    // clang-format on
    return rows[m >= 1 && m <= 9 ? m : 0];
}

enum class Conv { P10From8, P10From16, P12, Planar16, Rgb10, Float };
const Conv kConvs[] = {Conv::P10From8, Conv::P10From16, Conv::P12,
                       Conv::Planar16, Conv::Rgb10,     Conv::Float};
const char* name_of(Conv c) {
    switch (c) {
        case Conv::P10From8:
            return "cycbcr_RGB32_to_yuv444p10";
        case Conv::P10From16:
            return "cycbcr_RGB64_to_yuv444p10";
        case Conv::P12:
            return "cycbcr_RGB64_to_yuv422p12";
        case Conv::Planar16:
            return "cycbcr_RGB64_to_YCbCrPlanar16";
        case Conv::Rgb10:
            return "cycbcr_RGB10_to_YCbCrPlanar16";
        case Conv::Float:
            return "cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS";
    }
    return "";
}

struct Case {
    Conv conv;
    uint32_t w, h;
    uint32_t yPitch, chromaPitch, srcPitch;  // chromaPitch: 4:4:4 and 12-bit only
    QBYCBCRMatrix m;
    QBYCBCRRgbType t;
    uint32_t bpp;  // or the RGB10 output depth
};

struct Rgb {
    int64_t r, g, b;
};

// Channel positions by the order value (bit 15 removed): bytes of an 8-bit
// pixel or words of a 16-bit pixel.
std::array<uint32_t, 3> channels(uint32_t order, bool threeBytes) {
    if (threeBytes)
        return order == 2 || order == 3 ? std::array<uint32_t, 3>{0, 1, 2}
                                        : std::array<uint32_t, 3>{2, 1, 0};
    switch (order) {
        case 1:
            return {3, 2, 1};
        case 2:
            return {0, 1, 2};
        case 3:
            return {1, 2, 3};
        default:
            return {2, 1, 0};
    }
}

uint32_t u16at(const std::vector<uint8_t>& v, size_t at) {
    return v.at(at) | v.at(at + 1) << 8;
}
void put(std::vector<uint8_t>& v, size_t at, int64_t x) {
    v.at(at) = static_cast<uint8_t>(x);
    v.at(at + 1) = static_cast<uint8_t>(x >> 8);
}

// The source pixel x of row r.
Rgb source_pixel(const Case& c, const std::vector<uint8_t>& src, uint32_t r, uint32_t x) {
    const uint32_t order = c.t & 0x7FFFu;
    const size_t row = (c.t & 0x8000u) ? c.h - 1 - r : r;
    size_t off = row * c.srcPitch;
    switch (c.conv) {
        case Conv::P10From8: {
            const bool three = c.bpp != 32;
            const auto ch = channels(order, three);
            const size_t p = off + size_t{x} * (three ? 3 : 4);
            return {src.at(p + ch[0]), src.at(p + ch[1]), src.at(p + ch[2])};
        }
        case Conv::Rgb10: {
            off -= off % 4;
            const size_t p = off + 4 * size_t{x};
            const uint32_t word = src.at(p) | src.at(p + 1) << 8 | src.at(p + 2) << 16 |
                                  uint32_t{src.at(p + 3)} << 24;
            const int64_t low = (word >> 2) & 1023, g = (word >> 12) & 1023, high = word >> 22;
            return order == 2 || order == 3 ? Rgb{high, g, low} : Rgb{low, g, high};
        }
        default: {
            off -= off % 2;
            const size_t words = c.bpp == 32 || c.bpp == 64 ? 4 : 3;
            const auto ch = channels(order, false);
            const size_t p = off + 2 * words * x;
            return {u16at(src, p + 2 * ch[0]), u16at(src, p + 2 * ch[1]),
                    u16at(src, p + 2 * ch[2])};
        }
    }
}

int64_t lim(int64_t v, int64_t lo, int64_t hi) {
    return v < lo ? lo : v > hi ? hi : v;
}

struct Ycc {
    int64_t y, cb, cr;
};

// One pixel by the converter's per-pixel rule.
Ycc per_pixel(const Case& c, Rgb p) {
    switch (c.conv) {
        case Conv::P10From8:
        case Conv::P10From16:
        case Conv::P12: {
            const bool twelve = c.conv == Conv::P12;
            const V210Weights k = twelve ? p12_weights(c.m) : v210_rgb8_weights(c.m);
            if (c.conv != Conv::P10From8) p = {p.r >> 6, p.g >> 6, p.b >> 6};
            const int64_t d = c.conv == Conv::P10From8 ? 10000 : 40000;
            const int64_t top = twelve ? 4095 : 1023, mid = twelve ? 2048 : 512;
            return {std::min<int64_t>(sum3(k.y, p.r, p.g, p.b) / d + k.off, top),
                    lim(sum3(k.cb, p.r, p.g, p.b) / d + mid, 0, top),
                    lim(sum3(k.cr, p.r, p.g, p.b) / d + mid, 0, top)};
        }
        case Conv::Planar16: {
            const V210Weights k = v210_rgb16_weights(c.m);
            return {std::min<int64_t>(round_div(sum3(k.y, p.r, p.g, p.b), 10000, 5000, 0) + k.off,
                                      65535),
                    lim(round_div(sum3(k.cb, p.r, p.g, p.b), 10000, 4500, 2500) + 32768, 0, 65535),
                    lim(round_div(sum3(k.cr, p.r, p.g, p.b), 10000, 5000, 5000) + 32768, 0, 65535)};
        }
        case Conv::Rgb10: {
            const V210Weights k = v210_rgb10_weights(c.m);
            const int64_t d = 1000000;
            return {
                std::min<int64_t>(round_div(sum3(k.y, p.r, p.g, p.b), d, 500000, 0) + k.off, 1023),
                lim(round_div(sum3(k.cb, p.r, p.g, p.b), d, 450000, 250000) + 512, 0, 1023),
                lim(round_div(sum3(k.cr, p.r, p.g, p.b), d, 500000, 500000) + 512, 0, 1023)};
        }
        case Conv::Float: {
            const Forward f = forward_row(c.m >= 1 && c.m <= 9 ? c.m : 0);
            auto single = [](int64_t micro) {
                return static_cast<double>(static_cast<float>(micro) / 1.0e6f);
            };
            const double R = p.r / 65535.0, G = p.g / 65535.0, B = p.b / 65535.0;
            auto sum = [&](const std::array<int64_t, 3>& k) {
                return single(k[0]) * R + single(k[1]) * G + single(k[2]) * B;
            };
            const double L = sum(f.y);
            const int64_t y = L < 0 ? 0 : L > 1.0 ? 1023 : static_cast<int64_t>(L * 1023 + 0.5);
            auto chroma = [](double K) -> int64_t {
                if (K < -0.5) return 0;
                if (K > 0.5) return 1024;
                return static_cast<int64_t>(K > 0 ? K * 1023 + 0.5 : K * 1023 - 0.5) + 512;
            };
            return {y + (f.off == 16 ? 64 : 0), chroma(sum(f.cb)), chroma(sum(f.cr))};
        }
    }
    return {};
}

struct Planes {
    std::vector<uint8_t> y, cb, cr;
};

// The frame as the converter's rules write it, into copies of `init`.
Planes model(const Case& c, const std::vector<uint8_t>& src, const Planes& init) {
    Planes o = init;
    for (uint32_t r = 0; r < c.h; ++r) {
        std::vector<Ycc> px(c.w);
        auto pixel = [&](uint32_t x) -> const Ycc& {
            // Only pixels a rule reads are converted (a 3-word pixel of order 1
            // or 3 reads the next pixel's first word, so reading more would
            // go past the row).
            px[x] = per_pixel(c, source_pixel(c, src, r, x));
            return px[x];
        };
        switch (c.conv) {
            case Conv::P10From8:
            case Conv::P10From16:
            case Conv::Float: {
                const uint32_t cp = c.conv == Conv::Float ? c.yPitch : c.chromaPitch;
                for (uint32_t x = 0; x < c.w; ++x) {
                    const Ycc v = pixel(x);
                    put(o.y, size_t{r} * c.yPitch + 2 * x, v.y);
                    put(o.cb, size_t{r} * cp + 2 * x, v.cb);
                    put(o.cr, size_t{r} * cp + 2 * x, v.cr);
                }
                break;
            }
            case Conv::P12:
                for (uint32_t x = 0; x < c.w; ++x) {
                    const Ycc v = pixel(x);
                    put(o.y, size_t{r} * c.yPitch + 2 * x, v.y);
                    const size_t at = size_t{r} * c.chromaPitch + 2 * (x / 2);
                    // The even pixel stores its own; the odd one the average.
                    put(o.cb, at, x % 2 == 0 ? v.cb : (px[x - 1].cb + v.cb) >> 1);
                    put(o.cr, at, x % 2 == 0 ? v.cr : (px[x - 1].cr + v.cr) >> 1);
                }
                break;
            case Conv::Planar16:
            case Conv::Rgb10: {
                const int shift = c.conv == Conv::Rgb10 && c.bpp == 10 ? 6 : 0;
                const int64_t neutral = c.conv == Conv::Rgb10 ? 512 : 32768;
                const uint32_t cp = c.yPitch / 2, blocks = c.w / 6;
                for (uint32_t x = 0; x < 6 * blocks; x += 2) {
                    const Ycc a = pixel(x), b = pixel(x + 1);
                    put(o.y, size_t{r} * c.yPitch + 2 * x, a.y << shift);
                    put(o.y, size_t{r} * c.yPitch + 2 * x + 2, b.y << shift);
                    put(o.cb, size_t{r} * cp + x, ((a.cb + b.cb) >> 1) << shift);
                    put(o.cr, size_t{r} * cp + x, ((a.cr + b.cr) >> 1) << shift);
                }
                if (c.w % 6 >= 2) {
                    const uint32_t x = 6 * blocks;
                    const Ycc a = pixel(x), b = pixel(x + 1);
                    const int64_t lcb = x == 0 ? neutral : px[x - 1].cb;
                    const int64_t lcr = x == 0 ? neutral : px[x - 1].cr;
                    put(o.y, size_t{r} * c.yPitch + 2 * x, a.y << shift);
                    put(o.y, size_t{r} * c.yPitch + 2 * x + 2, b.y << shift);
                    put(o.cb, size_t{r} * cp + x, ((lcb + 2 * a.cb + 2 * b.cb) / 5) << shift);
                    put(o.cr, size_t{r} * cp + x, ((lcr + 2 * a.cr + 2 * b.cr) / 5) << shift);
                }
                break;
            }
        }
    }
    return o;
}

// ---- Running a converter ----

unsigned int call(const Case& c, void* y, void* cb, void* cr, const void* s) {
    switch (c.conv) {
        case Conv::P10From8:
            return cycbcr_RGB32_to_yuv444p10(y, cb, cr, s, c.w, c.h, c.yPitch, c.chromaPitch,
                                             c.srcPitch, c.m, c.t, c.bpp);
        case Conv::P10From16:
            return cycbcr_RGB64_to_yuv444p10(y, cb, cr, s, c.w, c.h, c.yPitch, c.chromaPitch,
                                             c.srcPitch, c.m, c.t, c.bpp);
        case Conv::P12:
            return cycbcr_RGB64_to_yuv422p12(y, cb, cr, s, c.w, c.h, c.yPitch, c.chromaPitch,
                                             c.srcPitch, c.m, c.t, c.bpp);
        case Conv::Planar16:
            return cycbcr_RGB64_to_YCbCrPlanar16(y, cb, cr, s, c.w, c.h, c.yPitch, c.srcPitch, c.m,
                                                 c.t, c.bpp);
        case Conv::Rgb10:
            return cycbcr_RGB10_to_YCbCrPlanar16(y, cb, cr, s, c.w, c.h, c.yPitch, c.srcPitch, c.m,
                                                 c.t, c.bpp);
        case Conv::Float:
            return cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS(
                y, cb, cr, s, c.w, c.h, c.yPitch, c.srcPitch, c.m, c.t, c.bpp);
    }
    return 0;
}

// The unsigned arguments after the height, in order.
std::vector<unsigned> args_of(const Case& c) {
    switch (c.conv) {
        case Conv::P10From8:
        case Conv::P10From16:
        case Conv::P12:
            return {c.yPitch, c.chromaPitch, c.srcPitch, c.m, c.t, c.bpp};
        default:
            return {c.yPitch, c.srcPitch, c.m, c.t, c.bpp};
    }
}
std::array<uint64_t, 4> sizes(const Case& c) {
    std::array<uint64_t, 4> b{};
    const std::vector<unsigned> a = args_of(c);
    EXPECT_EQ(cycbcr_converter_pointer_sizes(name_of(c.conv), c.w, c.h, a.data(),
                                             static_cast<unsigned>(a.size()), b.data()),
              1u);
    return b;
}

std::string describe(const Case& c) {
    return std::string(name_of(c.conv)) + " w " + std::to_string(c.w) + " h " +
           std::to_string(c.h) + " m " + std::to_string(c.m) + " type " + std::to_string(c.t) +
           " bpp " + std::to_string(c.bpp) + " pitches " + std::to_string(c.yPitch) + "/" +
           std::to_string(c.chromaPitch) + "/" + std::to_string(c.srcPitch);
}

struct Result {
    Planes planes;
    unsigned int value;
};

// The converter at `level` on buffers of exactly the answered sizes between
// guard pages; the planes start as `init` (which is at least that large).
Result run(const Case& c, unsigned level, const std::vector<uint8_t>& src, const Planes& init) {
    const std::array<uint64_t, 4> n = sizes(c);
    GuardedBuffer y(n[0]), cb(n[1]), cr(n[2]), s(n[3]);
    std::memcpy(s.data(), src.data(), n[3]);
    std::memcpy(y.data(), init.y.data(), n[0]);
    std::memcpy(cb.data(), init.cb.data(), n[1]);
    std::memcpy(cr.data(), init.cr.data(), n[2]);
    cycbcr_set_cpu(level);
    Result r{init, call(c, y.data(), cb.data(), cr.data(), s.data())};
    std::memcpy(r.planes.y.data(), y.data(), n[0]);
    std::memcpy(r.planes.cb.data(), cb.data(), n[1]);
    std::memcpy(r.planes.cr.data(), cr.data(), n[2]);
    EXPECT_TRUE(y.slack_intact() && cb.slack_intact() && cr.slack_intact() && s.slack_intact())
        << describe(c);
    EXPECT_EQ(std::memcmp(s.data(), src.data(), n[3]), 0) << "source changed: " << describe(c);
    return r;
}

uint64_t expected_result(const Case& c) {
    switch (c.conv) {
        case Conv::P10From8:
        case Conv::P10From16:
        case Conv::P12:
            return uint64_t{c.h} * (c.chromaPitch + 2 * uint64_t{c.yPitch});
        default:
            return uint64_t{c.h} * c.yPitch;
    }
}

// A frame's geometry with `pad` bytes past each row's natural size.
Case shaped(Conv conv, uint32_t w, uint32_t h, QBYCBCRMatrix m, QBYCBCRRgbType t, uint32_t bpp,
            uint32_t pad) {
    Case c{conv, w, h, 0, 0, 0, m, t, bpp};
    // Source: 3 or 4 bytes, 3 or 4 words, or one RGB10 word a pixel, plus a
    // word of room for 3-word pixels that read into the next pixel.
    const uint32_t px = conv == Conv::P10From8   ? (bpp == 32 ? 4 : 3)
                        : conv == Conv::Rgb10    ? 4
                        : bpp == 32 || bpp == 64 ? 8
                                                 : 6;
    c.srcPitch = w * px + 2 + pad;
    c.yPitch = 2 * w + 2 * pad;
    c.chromaPitch = (conv == Conv::P12 ? 2 * ((w + 1) / 2) : 2 * w) + pad;
    return c;
}

// Random planes and source, model against both levels.
void check_case(const Case& c, uint32_t seed) {
    SCOPED_TRACE(describe(c));
    const std::array<uint64_t, 4> n = sizes(c);
    const size_t room = 64;
    std::vector<uint8_t> src = random_bytes(n[3] + room, seed);
    Planes init{random_bytes(n[0] + room, seed + 1), random_bytes(n[1] + room, seed + 2),
                random_bytes(n[2] + room, seed + 3)};
    const Planes want = model(c, src, init);
    // Nothing the model writes lies past the answered sizes.
    for (size_t i = n[0]; i < init.y.size(); ++i) ASSERT_EQ(want.y[i], init.y[i]) << "Y " << i;
    for (size_t i = n[1]; i < init.cb.size(); ++i) ASSERT_EQ(want.cb[i], init.cb[i]) << "Cb " << i;
    for (size_t i = n[2]; i < init.cr.size(); ++i) ASSERT_EQ(want.cr[i], init.cr[i]) << "Cr " << i;
    for (unsigned level : {0u, 5u}) {
        const Result got = run(c, level, src, init);
        EXPECT_EQ(got.value, static_cast<unsigned int>(expected_result(c))) << "level " << level;
        EXPECT_TRUE(same_bytes(got.planes.y, want.y)) << "Y, level " << level;
        EXPECT_TRUE(same_bytes(got.planes.cb, want.cb)) << "Cb, level " << level;
        EXPECT_TRUE(same_bytes(got.planes.cr, want.cr)) << "Cr, level " << level;
    }
}

std::vector<uint32_t> depths_of(Conv c) {
    switch (c) {
        case Conv::P10From8:
            return {32, 24, 0};
        case Conv::Rgb10:
            return {10, 16, 0};
        default:
            return {64, 48, 32, 16};
    }
}

const QBYCBCRMatrix kMatrices[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 1000};
const QBYCBCRRgbType kTypes[] = {0, 1, 2, 3, 7, 0x8000, 0x8001, 0x8002, 0x8003};

// ---- Tables ----

TEST(P12Weights, EveryRowDigitForDigit) {
    using cycbcr::fromrgb::kP12Rgb16;
    for (QBYCBCRMatrix m : kMatrices) {
        const V210Weights want = p12_weights(m);
        const cycbcr::fromrgb::V210Row& got = kP12Rgb16[m];
        EXPECT_EQ(got.yOffset, want.off) << m;
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(got.y[i], want.y[i]) << "matrix " << m << " Y weight " << i;
            EXPECT_EQ(got.cb[i], want.cb[i]) << "matrix " << m << " Cb weight " << i;
            EXPECT_EQ(got.cr[i], want.cr[i]) << "matrix " << m << " Cr weight " << i;
        }
    }
}

// Each weight is the forward millionth x 0.16 truncated toward zero, or one
// unit short of it (matrix 5's G weight of Y and the default Cr weight of B).
TEST(P12Weights, FollowTheForwardTable) {
    int shortOnes = 0;
    for (QBYCBCRMatrix m = 0; m <= 9; ++m) {
        const V210Weights w = p12_weights(m);
        const Forward f = forward_row(m);
        EXPECT_EQ(w.off, f.off == 16 ? 256 : 0) << m;
        for (int i = 0; i < 3; ++i)
            for (auto [got, micro] : {std::pair{w.y[i], f.y[i]}, std::pair{w.cb[i], f.cb[i]},
                                      std::pair{w.cr[i], f.cr[i]}}) {
                const int64_t exact = micro * 16 / 100;  // toward zero
                EXPECT_TRUE(got == exact || got == exact - (exact > 0 ? 1 : -1))
                    << "matrix " << m << ": " << got << " against " << exact;
                shortOnes += got != exact;
            }
    }
    EXPECT_EQ(shortOnes, 2);
}

// ---- Hand-worked numbers ----

TEST(P16Worked, ResultOfTheFourFourFourConverter) {
    // 10 x (1024 + 2 x 2048), also with nothing to convert.
    EXPECT_EQ(cycbcr_RGB32_to_yuv444p10(nullptr, nullptr, nullptr, nullptr, 0, 10, 2048, 1024, 4096,
                                        0, 0, 32),
              51200u);
    EXPECT_EQ(cycbcr_RGB64_to_yuv422p12(nullptr, nullptr, nullptr, nullptr, 0, 10, 2048, 1024, 4096,
                                        0, 0, 64),
              51200u);
    EXPECT_EQ(cycbcr_RGB64_to_YCbCrPlanar16(nullptr, nullptr, nullptr, nullptr, 0, 10, 2048, 4096,
                                            0, 0, 64),
              20480u);
}

TEST(P16Worked, WhiteThroughTwelveBitMatrix2) {
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        // 20 white pixels (every word 0xFFFF): the vector step and the tail.
        const std::vector<uint16_t> src(4 * 20, 0xFFFF);
        std::vector<uint16_t> y(20), cb(10), cr(10);
        cycbcr_RGB64_to_yuv422p12(y.data(), cb.data(), cr.data(), src.data(), 20, 1, 40, 20, 160, 2,
                                  0, 64);
        // 1023 x 137,440 / 40,000 = 3515 (truncated) + 256; the chroma weights of
        // matrix 2 sum to 0.
        EXPECT_EQ(y, std::vector<uint16_t>(20, 3771)) << level;
        EXPECT_EQ(cb, std::vector<uint16_t>(10, 2048)) << level;
        EXPECT_EQ(cr, std::vector<uint16_t>(10, 2048)) << level;
    }
}

TEST(P16Worked, FloatVariantWhiteAndBlue) {
    // White: L = 0.859, 878.757 + 0.5 -> 879, + 64. Blue: L = 0.098 -> 100 + 64;
    // Cb K = 0.439 -> 449 + 512; Cr K = -0.071, -72.633 - 0.5 -> -73 + 512.
    const uint16_t src[8] = {0xFFFF, 0xFFFF, 0xFFFF, 0, 0xFFFF, 0, 0, 0};  // B G R A
    uint16_t y[2], cb[2], cr[2];
    cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS(y, cb, cr, src, 2, 1, 4, 16, 0, 0, 64);
    EXPECT_EQ(y[0], 943);
    EXPECT_EQ(cb[0], 512);
    EXPECT_EQ(cr[0], 512);
    EXPECT_EQ(y[1], 164);
    EXPECT_EQ(cb[1], 961);
    EXPECT_EQ(cr[1], 439);
}

// 16-bit words R, G, B in the R G B A order (layout 2).
std::vector<uint16_t> rgb64(const std::vector<std::array<uint16_t, 3>>& px) {
    std::vector<uint16_t> v;
    for (const auto& p : px) v.insert(v.end(), {p[0], p[1], p[2], 0});
    return v;
}

// Matrix 2, whole words: red Y 119,929,050 / 10,000 -> 11993 (remainder 9050)
// + 64 = 12057, Cb -66,190,350 -> -6619 (remainder -350) + 32768 = 26149, Cr
// 287,698,650 -> 28770 + 32768 = 61538; white Y 562,945,650 -> 56295 + 64 =
// 56359, Cb = Cr = 32768 (weights summing to 0); black Y 64.
TEST(P16Worked, SixteenBitBlocksAndTheFivesRule) {
    constexpr uint16_t F = 0xFFFF, E = 0xEEEE;
    const std::array<uint16_t, 3> red{F, 0, 0}, white{F, F, F}, black{0, 0, 0};
    const std::vector<std::array<uint16_t, 3>> row = {red,   white, black, white, red, red,
                                                      white, red,   black, white, red};
    for (unsigned level : {0u, 5u})
        for (uint32_t w : {2u, 6u, 7u, 8u, 9u, 10u, 11u}) {
            cycbcr_set_cpu(level);
            const std::vector<uint16_t> src = rgb64({row.begin(), row.begin() + (w == 2 ? 2 : w)});
            std::vector<uint16_t> y(12, E), cb(6, E), cr(6, E);
            EXPECT_EQ(cycbcr_RGB64_to_YCbCrPlanar16(y.data(), cb.data(), cr.data(), src.data(), w,
                                                    1, 24, 8 * w, 2, 2, 64),
                      24u);
            std::vector<uint16_t> wy(12, E), wcb(6, E), wcr(6, E);
            if (w == 2) {
                // No whole block: (32768 + 2 x 26149 + 2 x 32768) / 5, (32768 + 2 x
                // 61538 + 2 x 32768) / 5.
                wy[0] = 12057, wy[1] = 56359, wcb[0] = 30120, wcr[0] = 44276;
            } else {
                const uint16_t ys[8] = {12057, 56359, 64, 56359, 12057, 12057, 56359, 12057};
                for (int i = 0; i < 6; ++i) wy[i] = ys[i];
                // Pairs (red, white), (black, white), (red, red).
                wcb[0] = 29458, wcr[0] = 47153;
                wcb[1] = wcr[1] = 32768;
                wcb[2] = 26149, wcr[2] = 61538;
                if (w >= 8) {
                    // (white, red) after red: (26149 + 2 x 32768 + 2 x 26149) / 5.
                    wy[6] = ys[6], wy[7] = ys[7];
                    wcb[3] = 28796, wcr[3] = 50030;
                }
            }
            EXPECT_EQ(y, wy) << "width " << w;
            EXPECT_EQ(cb, wcb) << "width " << w;
            EXPECT_EQ(cr, wcr) << "width " << w;
        }
}

// White RGB10 (all fields 1023), default row: 1023 x 859,000 = 878,757,000 ->
// 879 (remainder past 500,000) + 64 = 943; chroma weights sum to 0 -> 512.
TEST(P16Worked, Rgb10WhiteShiftedOrPlain) {
    const uint32_t white = 0x3FFu << 22 | 0x3FFu << 12 | 0x3FFu << 2;
    const uint32_t src[6] = {white, white, white, white, white, white};
    for (auto [depth, shift] : {std::pair{10u, 6}, std::pair{16u, 0}, std::pair{0u, 0}}) {
        uint16_t y[6], cb[3], cr[3];
        EXPECT_EQ(cycbcr_RGB10_to_YCbCrPlanar16(y, cb, cr, src, 6, 1, 12, 24, 0, 0, depth), 12u);
        for (uint16_t v : y) EXPECT_EQ(v, 943 << shift) << depth;
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(cb[i], 512 << shift) << depth;
            EXPECT_EQ(cr[i], 512 << shift) << depth;
        }
    }
}

// ---- Against the model ----

TEST(P16Model, EveryConverterOrderDepthAndMatrix) {
    uint32_t seed = 1;
    for (Conv conv : kConvs)
        for (uint32_t bpp : depths_of(conv))
            for (QBYCBCRRgbType t : kTypes)
                for (QBYCBCRMatrix m : kMatrices) {
                    if (m > 3 && m < 11 && t != 0 && t != 0x8003) continue;  // every matrix once
                    check_case(shaped(conv, 37, 3, m, t, bpp, 6), seed++);
                }
}

// Every width residue of the vector step (16) and of the block (6), at both
// levels, on pitches with odd padding.
TEST(P16Model, EveryWidthResidueAtBothLevels) {
    uint32_t seed = 1000;
    for (Conv conv : kConvs)
        for (uint32_t bpp : depths_of(conv))
            for (uint32_t w = 1; w <= 50; ++w)
                check_case(shaped(conv, w, 2, w % 11, w % 2 ? 0x8002u : 1u, bpp, 1 + w % 5),
                           seed++);
}

// Rows that end on a whole vector step, in layouts whose last word a pixel
// does not use (0 and 2): the step must not read that word of the row's last
// pixel, which lies past the answered source bytes (guard page) on the last row.
TEST(P16Model, RowsEndingOnAWholeStepReadNoFurther) {
    uint32_t seed = 3000;
    for (Conv conv : kConvs)
        for (uint32_t bpp : depths_of(conv))
            for (uint32_t w : {8u, 16u, 32u, 48u})
                for (QBYCBCRRgbType t : {0u, 2u})
                    check_case(shaped(conv, w, 2, 1, t, bpp, 0), seed++);
}

// Extreme words (0, just below and at a 10-bit step, 0xFFFF) in every
// combination, every matrix, both levels: clamps and signs of the quotients.
TEST(P16Model, ExtremeWordsEveryMatrix) {
    const uint16_t vals[] = {0, 0x3F, 0x40, 0x8000, 0xFFBF, 0xFFC0, 0xFFFF};
    std::vector<uint16_t> px;
    for (uint16_t r : vals)
        for (uint16_t g : vals)
            for (uint16_t b : vals) px.insert(px.end(), {b, g, r, 0});
    const uint32_t w = static_cast<uint32_t>(px.size() / 4);
    for (Conv conv : {Conv::P10From16, Conv::P12, Conv::Planar16, Conv::Float})
        for (QBYCBCRMatrix m = 0; m <= 11; ++m) {
            Case c = shaped(conv, w, 1, m, 0, 64, 0);
            SCOPED_TRACE(describe(c));
            std::vector<uint8_t> src(sizes(c)[3]);
            std::memcpy(src.data(), px.data(), std::min(src.size(), 2 * px.size()));
            const std::array<uint64_t, 4> n = sizes(c);
            Planes init{std::vector<uint8_t>(n[0], 0x5A), std::vector<uint8_t>(n[1], 0x5A),
                        std::vector<uint8_t>(n[2], 0x5A)};
            const Planes want = model(c, src, init);
            for (unsigned level : {0u, 5u}) {
                const Result got = run(c, level, src, init);
                EXPECT_TRUE(same_bytes(got.planes.y, want.y)) << level;
                EXPECT_TRUE(same_bytes(got.planes.cb, want.cb)) << level;
                EXPECT_TRUE(same_bytes(got.planes.cr, want.cr)) << level;
            }
        }
}

// ---- Level and sizes ----

// The 8-bit 4:4:4 converter chooses a level when none is chosen; the others
// only read it.
TEST(P16Level, OnlyTheEightBitConverterChooses) {
    const uint8_t src[8] = {};
    uint16_t y, cb, cr;
    for (Conv conv : kConvs) {
        if (conv == Conv::P10From8) continue;
        gdwProcType = kLevelMarker;
        const Case c{conv, 1, 1, 2, 2, 4, 0, 0, 64};
        call(c, &y, &cb, &cr, src);
        EXPECT_EQ(gdwProcType, kLevelMarker) << name_of(conv);
    }
    gdwProcType = kLevelMarker;
    cycbcr_RGB32_to_yuv444p10(&y, &cb, &cr, src, 1, 1, 2, 2, 4, 0, 0, 32);
    EXPECT_NE(gdwProcType, kLevelMarker);
    EXPECT_EQ(gdwProcType, cycbcr_set_cpu(5));
}

// Hand-worked answers of the size query.
TEST(P16Sizes, AnswersByArguments) {
    uint64_t b[4];
    // 10 x 3 4-byte pixels, pitches 64 / 48 / 100: rows 0..2.
    const unsigned a444[] = {64, 48, 100, 0, 0, 32};
    ASSERT_EQ(cycbcr_converter_pointer_sizes("cycbcr_RGB32_to_yuv444p10", 10, 3, a444, 6, b), 1u);
    EXPECT_EQ(b[0], 2 * 64 + 20u);
    EXPECT_EQ(b[1], 2 * 48 + 20u);
    EXPECT_EQ(b[2], 2 * 48 + 20u);
    EXPECT_EQ(b[3], 200 + 9 * 4 + 3u);  // B G R A: the alpha byte of the last pixel unread
    // 3-word pixels of order 1 read one word into the next pixel; odd pitch rows
    // start at even offsets.
    const unsigned a12[] = {40, 20, 61, 0, 1, 48};
    ASSERT_EQ(cycbcr_converter_pointer_sizes("cycbcr_RGB64_to_yuv422p12", 9, 2, a12, 6, b), 1u);
    EXPECT_EQ(b[0], 40 + 18u);
    EXPECT_EQ(b[1], 20 + 10u);
    EXPECT_EQ(b[3], 60 + 8 * 6 + 8u);
    // Blocks: width 11 converts 8 pixels, chroma at half the Y pitch.
    const unsigned a16[] = {30, 80, 0, 0x8000, 64};
    ASSERT_EQ(cycbcr_converter_pointer_sizes("cycbcr_RGB64_to_YCbCrPlanar16", 11, 2, a16, 5, b),
              1u);
    EXPECT_EQ(b[0], 30 + 16u);
    EXPECT_EQ(b[1], 15 + 8u);
    EXPECT_EQ(b[3], 80 + 7 * 8 + 6u);  // B G R A: the alpha word unread
    const unsigned a10[] = {30, 81, 0, 0, 10};
    ASSERT_EQ(cycbcr_converter_pointer_sizes("cycbcr_RGB10_to_YCbCrPlanar16", 7, 2, a10, 5, b), 1u);
    EXPECT_EQ(b[0], 30 + 12u);
    EXPECT_EQ(b[3], 80 + 6 * 4u);
    ASSERT_EQ(cycbcr_converter_pointer_sizes("cycbcr_RGB10_to_YCbCrPlanar16", 1, 2, a10, 5, b), 1u);
    EXPECT_EQ(b[0] + b[1] + b[2] + b[3], 0u);  // a lone pixel is neither read nor written
}

}  // namespace
