// 8-bit YCbCr to RGB. The engine's rule is written out here on its own (the
// coefficients, the truncating division, the sample addressing, the pixel
// layouts) and every converter, every engine entry and the float and 16-bit
// siblings are measured against it; the AVX2 row kernels against the plain ones
// (every Y, Cb, Cr triple once, cached and streamed stores); the image-library
// routes on their own terms and against libyuv where it is installed; and every
// converter between guard pages at the bytes cycbcr_converter_buffer_sizes
// answers.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "frame/converters.h"
#include "frame/formats.h"
#include "support/colour_rows.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

#ifdef CYCBCR_TEST_WITH_LIBYUV
#include <libyuv.h>
#endif

namespace {

using cycbcr::Format;
using namespace cycbcr_test;

// ---------------------------------------------------------------------------
// The rule
// ---------------------------------------------------------------------------

// The 8-bit engines' gains, x 10000.
Gains gains(QBYCBCRMatrix m) {
    return family_a(m);
}

struct Rgb {
    uint32_t r, g, b;
    bool operator==(const Rgb&) const = default;
};

uint32_t clamp_to(int64_t v, int64_t top) {
    return static_cast<uint32_t>(v < 0 ? 0 : v > top ? top : v);
}

// C++ division truncates toward zero, as the rule does.
Rgb rule_pixel(const Gains& k, uint32_t y, uint32_t cb, uint32_t cr) {
    const int64_t u = int64_t{cb} - 128, v = int64_t{cr} - 128;
    const int64_t l = (int64_t{y} - k.off) * k.gain;
    return {clamp_to((l + k.crR * v) / 10000, 255),
            clamp_to((l - k.crG * v - k.cbG * u) / 10000, 255),
            clamp_to((l + k.cbB * u) / 10000, 255)};
}

// Bytes a pixel of a depth, 0 for the depths nothing is written for.
uint32_t pixel_bytes(uint32_t depth) {
    switch (depth) {
        case 15:
        case 16:
            return 2;
        case 24:
            return 3;
        case 32:
            return 4;
        default:
            return 0;
    }
}
// What the engines return per pixel for a depth.
uint32_t result_bytes(uint32_t depth) {
    return depth == 15 || depth == 16 ? 2 : depth == 24 ? 3 : 4;
}

bool bottom_up(QBYCBCRRgbType t) {
    return (t & 0x8000u) != 0;
}

// One pixel in a layout: the layout number is the type without bit 15.
void put(uint8_t* p, uint32_t depth, QBYCBCRRgbType t, Rgb c, uint32_t alpha) {
    const uint32_t n = t & ~0x8000u;
    const bool bgr = n == 0 || n == 1;
    const uint32_t hi = bgr ? c.b : c.r, lo = bgr ? c.r : c.b;
    uint32_t word = 0;
    switch (depth) {
        case 15:
            word = (hi >> 3) << 10 | (c.g >> 3) << 5 | lo >> 3;
            p[0] = static_cast<uint8_t>(word);
            p[1] = static_cast<uint8_t>(word >> 8);
            return;
        case 16:
            word = (hi >> 3) << 11 | (c.g >> 2) << 5 | lo >> 3;
            p[0] = static_cast<uint8_t>(word);
            p[1] = static_cast<uint8_t>(word >> 8);
            return;
        case 24:
            p[0] = static_cast<uint8_t>(hi);
            p[1] = static_cast<uint8_t>(c.g);
            p[2] = static_cast<uint8_t>(lo);
            return;
        case 32: {
            std::array<uint32_t, 4> v;
            if (n == 0)
                v = {c.b, c.g, c.r, alpha};
            else if (n == 1)
                v = {alpha, c.b, c.g, c.r};
            else if (n == 3)
                v = {alpha, c.r, c.g, c.b};
            else
                v = {c.r, c.g, c.b, alpha};
            for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v[i]);
            return;
        }
        default:
            return;
    }
}

// Where the engine finds the samples of output row n, pixel j.
enum class Shape { Packed, Planar, SemiPlanar };
struct Samples {
    const uint8_t *y, *cb, *cr;
    Shape shape;
    bool full;  // 4:2:2 chroma rows (planar shapes)
    uint32_t width;
};
struct Ycc {
    uint32_t y, cb, cr;
};
size_t pairs_of(uint32_t width) {
    return width / 2 + width % 2;
}
size_t chroma_row(const Samples& s, uint32_t n) {
    return s.full ? size_t{n} * s.width / 2 : size_t{n / 2} * s.width / 2;
}
Ycc sample(const Samples& s, uint32_t n, uint32_t j) {
    const size_t k = j / 2;
    if (s.shape == Shape::Packed) {
        const size_t row = size_t{n} * pairs_of(s.width) * 4;
        return {s.y[row + 4 * k + 2 * (j % 2)], s.cb[row + 4 * k], s.cr[row + 4 * k]};
    }
    const size_t c = chroma_row(s, n);
    const size_t at = s.shape == Shape::SemiPlanar ? 2 * c + 2 * k : c + k;
    return {s.y[size_t{n} * s.width + j], s.cb[at], s.cr[at]};
}

// How many bytes past each pointer the rule reads (every row nonempty).
struct Reach {
    size_t y, cb, cr;
};
Reach reach(Shape shape, bool full, uint32_t w, uint32_t h) {
    if (h == 0 || w == 0) return {0, 0, 0};
    const size_t pairs = pairs_of(w);
    if (shape == Shape::Packed) return {h * pairs * 4 - 1, h * pairs * 4 - 3, h * pairs * 4 - 3};
    const Samples s{nullptr, nullptr, nullptr, shape, full, w};
    const size_t c = chroma_row(s, h - 1);
    const size_t luma = size_t{h - 1} * w + 2 * pairs;
    if (shape == Shape::SemiPlanar) return {luma, 2 * c + 2 * pairs - 1, 2 * c + 2 * pairs - 1};
    return {luma, c + pairs, c + pairs};
}

// The rule's pixels of a frame, 2 * pairs per output row in source row order.
std::vector<Rgb> rule_frame(const Samples& s, uint32_t h, QBYCBCRMatrix m) {
    const Gains k = gains(m);
    const uint32_t row = static_cast<uint32_t>(2 * pairs_of(s.width));
    std::vector<Rgb> out(size_t{row} * h);
    for (uint32_t n = 0; n < h; ++n)
        for (uint32_t j = 0; j < row; ++j) {
            const Ycc c = sample(s, n, j);
            out[size_t{n} * row + j] = rule_pixel(k, c.y, c.cb, c.cr);
        }
    return out;
}

// Writes the rule's pixels into dst: output row n at row n (bottom-up: height -
// 1 - n), dstPitch apart; alpha from a plane of width bytes a row when given.
void place(std::vector<uint8_t>& dst, const std::vector<Rgb>& px, uint32_t w, uint32_t h,
           uint32_t dstPitch, uint32_t depth, QBYCBCRRgbType t, const uint8_t* alpha = nullptr) {
    const uint32_t bpp = pixel_bytes(depth);
    if (bpp == 0) return;
    const uint32_t row = static_cast<uint32_t>(2 * pairs_of(w));
    for (uint32_t n = 0; n < h; ++n) {
        const size_t at = size_t{bottom_up(t) ? h - 1 - n : n} * dstPitch;
        for (uint32_t j = 0; j < row; ++j) {
            const size_t p = at + size_t{j} * bpp;
            if (p + bpp > dst.size()) {
                ADD_FAILURE() << "model writes past its buffer";
                return;
            }
            put(&dst[p], depth, t, px[size_t{n} * row + j],
                alpha ? alpha[size_t{n} * w + j] : 255u);
        }
    }
}

// Row i exchanged with row h - 1 - i, pitch bytes each.
void flip(std::vector<uint8_t>& dst, uint32_t pitch, uint32_t h) {
    for (uint32_t i = 0; i < h / 2; ++i)
        std::swap_ranges(dst.begin() + size_t{i} * pitch, dst.begin() + size_t{i + 1} * pitch,
                         dst.begin() + size_t{h - 1 - i} * pitch);
}

// ---------------------------------------------------------------------------
// The converters' sources
// ---------------------------------------------------------------------------

struct SourceAt {
    size_t y, cb, cr;
    Shape shape;
    bool full;
};
// Sample pointers of a frame in one buffer; planar planes at P = srcPitch *
// height, a 32-bit product.
SourceAt source_at(Format f, uint32_t srcPitch, uint32_t h) {
    const uint32_t p = srcPitch * h;
    switch (f) {
        case Format::UYVY:
        case Format::CYUV:
            return {1, 0, 2, Shape::Packed, true};
        case Format::YUY2:
            return {0, 1, 3, Shape::Packed, true};
        case Format::YVYU:
            return {0, 3, 1, Shape::Packed, true};
        case Format::I420:
            return {0, p, size_t{p} + p / 4, Shape::Planar, false};
        case Format::YV12:
            return {0, size_t{p} + p / 4, p, Shape::Planar, false};
        case Format::P422:
            return {0, p, size_t{p} + p / 2, Shape::Planar, true};
        case Format::NV12:
            return {0, p, size_t{p} + 1, Shape::SemiPlanar, false};
        default:
            ADD_FAILURE() << "no source rule for this format";
            return {};
    }
}
Samples samples_of(const uint8_t* src, const SourceAt& at, uint32_t w) {
    return {src + at.y, src + at.cb, src + at.cr, at.shape, at.full, w};
}
// The bytes of a source buffer the rule reads.
size_t source_bytes(Format f, uint32_t w, uint32_t h, uint32_t srcPitch) {
    if (w == 0 || h == 0) return 0;
    const SourceAt at = source_at(f, srcPitch, h);
    const Reach r = reach(at.shape, at.full, w, h);
    return std::max({at.y + r.y, at.cb + r.cb, at.cr + r.cr});
}
// The destination bytes the engine writes, and for cyuv the rows it turns over.
size_t engine_dst_bytes(Format from, uint32_t w, uint32_t h, uint32_t dstPitch, uint32_t bpp) {
    if (w == 0 || h == 0) return 0;
    const size_t rows = size_t{h - 1} * dstPitch + 2 * pairs_of(w) * bpp;
    return from == Format::CYUV && h >= 2 ? std::max(rows, size_t{h} * dstPitch) : rows;
}

uint32_t depth_of(Format to) {
    switch (to) {
        case Format::RGB555:
            return 15;
        case Format::RGB565:
            return 16;
        case Format::RGB24:
            return 24;
        default:
            return 32;
    }
}

struct Row {
    std::string name;
    cycbcr_rgb_converter fn;
    Format from, to;
    bool avx2Form;
};
void PrintTo(const Row& r, std::ostream* os) {
    *os << r.name;
}
std::vector<Row> rows() {
    std::vector<Row> out;
    for (const cycbcr::RgbConverterRow& r : cycbcr::kRgbConverterRows)
        if (r.from != Format::V210)  // v210 sources: v210_to_rgb_test
            out.push_back({r.name, r.fn, r.from, r.to, std::string(r.name).ends_with("_avx2")});
    return out;
}
std::string row_name(const ::testing::TestParamInfo<Row>& info) {
    return info.param.name.substr(7);  // without "cycbcr_"
}

// Whether a call takes one of the routes that do not run the engine.
bool image_library_route(const Row& r, uint32_t level, QBYCBCRMatrix m, QBYCBCRRgbType t) {
    if (r.avx2Form) return false;
    const bool planar420 = r.from == Format::I420 || r.from == Format::YV12;
    if (planar420 && r.to == Format::RGB32 && t == 0) return true;
    if (r.fn == cycbcr_uyvy_to_rgb24 && level < 5) return true;
    if (r.fn == cycbcr_uyvy_to_rgb32 && ((level >= 1 && level <= 4) || level == 6) && (m & 1) &&
        !(level == 1 && (t & ~0x8000u) != 0))
        return true;
    return false;
}
// Whether every call of the converter, at every level, runs the engine.
bool engine_only(const Row& r) {
    if (r.avx2Form) return true;
    const bool planar420 = r.from == Format::I420 || r.from == Format::YV12;
    return !(planar420 && r.to == Format::RGB32) && r.fn != cycbcr_uyvy_to_rgb24 &&
           r.fn != cycbcr_uyvy_to_rgb32;
}

const QBYCBCRMatrix kMatrices[] = {0, 1, 2, 3, 4, 5, 6, 7, 9};
const QBYCBCRRgbType kTypes[] = {0, 1, 2, 3, 7, 0x8000, 0x8003};

std::vector<uint32_t> levels_to_test() {
    std::vector<uint32_t> l = {0};
    if (have_avx2()) l.push_back(5);
    return l;
}

// Random samples, the whole byte range or the studio range 16..240.
std::vector<uint8_t> samples_bytes(size_t n, uint32_t seed, bool studio) {
    std::vector<uint8_t> b = random_bytes(n, seed);
    if (studio)
        for (auto& v : b) v = static_cast<uint8_t>(16 + v % 225);
    return b;
}

// A guarded buffer handing out its last n bytes, the page after them
// inaccessible; the bytes just before are a canary checked afterwards.
class GuardedTail {
  public:
    explicit GuardedTail(size_t capacity) : buf_(capacity + kLead) {}
    uint8_t* load(const uint8_t* bytes, size_t n) {
        uint8_t* p = end() - n;
        std::memset(p - kLead, kCanary, kLead);
        if (n) std::memcpy(p, bytes, n);
        return p;
    }
    uint8_t* load(const std::vector<uint8_t>& v) { return load(v.data(), v.size()); }
    bool lead_intact(size_t n) {
        const uint8_t* p = end() - n - kLead;
        return std::all_of(p, p + kLead, [](uint8_t b) { return b == kCanary; });
    }
    std::vector<uint8_t> tail(size_t n) { return {end() - n, end()}; }
    size_t capacity() const { return buf_.size() - kLead; }

  private:
    uint8_t* end() { return buf_.data() + buf_.size(); }
    static constexpr size_t kLead = 64;
    static constexpr uint8_t kCanary = 0xC3;
    GuardedBuffer buf_;
};

struct Case {
    uint32_t w, h, dp, sp;
    QBYCBCRMatrix m;
    QBYCBCRRgbType t;
    uint32_t level;
};
std::ostream& operator<<(std::ostream& os, const Case& c) {
    return os << "width " << c.w << " height " << c.h << " dstPitch " << c.dp << " srcPitch "
              << c.sp << " matrix " << c.m << " type 0x" << std::hex << c.t << std::dec << " level "
              << c.level;
}

// ---------------------------------------------------------------------------
// Worked numbers
// ---------------------------------------------------------------------------

TEST(WorkedNumbers, BlackAndWhiteFromYuy2) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const uint8_t src[8] = {16, 128, 235, 128, 235, 128, 16, 128};
    uint8_t dst[16] = {};
    EXPECT_EQ(cycbcr_yuy2_to_rgb32(dst, src, 2, 1, 8, 4, 0, 0), 8u);
    const uint8_t one[8] = {0, 0, 0, 255, 254, 254, 254, 255};
    EXPECT_EQ(std::memcmp(dst, one, 8), 0);

    // Bottom-up: the first source row lands in the second destination row.
    std::memset(dst, 7, sizeof dst);
    EXPECT_EQ(cycbcr_yuy2_to_rgb32(dst, src, 2, 2, 8, 4, 0, 0x8000), 16u);
    const uint8_t two[16] = {254, 254, 254, 255, 0, 0, 0, 255, 0, 0, 0, 255, 254, 254, 254, 255};
    EXPECT_EQ(std::memcmp(dst, two, 16), 0);

    // Matrix 1 keeps studio levels: 16 stays 16, 235 stays 235.
    EXPECT_EQ(cycbcr_yuy2_to_rgb32(dst, src, 2, 1, 8, 4, 1, 0), 8u);
    const uint8_t studio[8] = {16, 16, 16, 255, 235, 235, 235, 255};
    EXPECT_EQ(std::memcmp(dst, studio, 8), 0);
}

// Width 3: two pairs, four pixels, a row; the next row's samples start where
// the second pair ended.
TEST(WorkedNumbers, OddWidthWritesWholePairsAndRowsRunOn) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const uint8_t src[16] = {16, 128, 235, 128, 100, 128, 200, 128,
                             50, 128, 60,  128, 70,  128, 80,  128};
    uint8_t dst[40];
    std::memset(dst, 9, sizeof dst);
    EXPECT_EQ(cycbcr_yuy2_to_rgb32(dst, src, 3, 2, 20, 6, 1, 0), 3u * 2 * 4);
    const uint8_t want[40] = {16,  16,  16, 255, 235, 235, 235, 255, 100, 100, 100, 255, 200, 200,
                              200, 255, 9,  9,   9,   9,   50,  50,  50,  255, 60,  60,  60,  255,
                              70,  70,  70, 255, 80,  80,  80,  255, 9,   9,   9,   9};
    EXPECT_EQ(std::memcmp(dst, want, 40), 0);
}

// 4 and 5 give 2's and 3's bytes; 8, 9, 10 and other unknown values 0's.
TEST(WorkedNumbers, MatrixAliases) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const auto src = random_bytes(64 * 3 * 2, 11);
    auto run = [&](QBYCBCRMatrix m) {
        std::vector<uint8_t> d(64 * 4 * 3);
        cycbcr_yuy2_to_rgb32(d.data(), src.data(), 64, 3, 256, 128, m, 0);
        return d;
    };
    EXPECT_EQ(run(4), run(2));
    EXPECT_EQ(run(5), run(3));
    for (QBYCBCRMatrix m : {8u, 9u, 10u, 1000u}) EXPECT_EQ(run(m), run(0)) << m;
    EXPECT_NE(run(2), run(0));
    EXPECT_NE(run(6), run(7));
}

// cyuv is UYVY's engine result turned upside down, whole pitches.
TEST(WorkedNumbers, CyuvIsTheUyvyResultUpsideDown) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const uint32_t w = 10, h = 3, dp = 40, sp = 20;
    const auto src = random_bytes(sp * h, 12);
    std::vector<uint8_t> a(dp * h, 1), b(dp * h, 1);
    EXPECT_EQ(cycbcr_cyuv_to_rgb24(a.data(), src.data(), w, h, dp, sp, 0, 2), w * h * 3);
    cycbcr_ToRGBInt(b.data(), src.data() + 1, src.data(), src.data() + 2, w, h, dp, sp, 0, 2, 1, 0,
                    24, sp / 2);
    flip(b, dp, h);
    EXPECT_TRUE(same_bytes(a, b));
}

// 16 bits a channel: studio black under matrix 1 is 4096, R and B one more from
// their rounding bias.
TEST(WorkedNumbers, SixteenBitStudioBlack) {
    const uint8_t y[2] = {16, 16}, cb[1] = {128}, cr[1] = {128};
    uint8_t dst[16] = {};
    EXPECT_EQ(cycbcr_ToRGBInt16(dst, y, cb, cr, 2, 1, 16, 2, 1, 2, 1, 1, 64, 1), 16u);
    const uint16_t want[8] = {4097, 4096, 4097, 65535, 4097, 4096, 4097, 65535};
    uint16_t got[8];
    std::memcpy(got, dst, 16);
    EXPECT_TRUE(std::equal(got, got + 8, want));
}

// ---------------------------------------------------------------------------
// Every converter against the rule
// ---------------------------------------------------------------------------

class RgbConverterRule : public ::testing::TestWithParam<Row> {};

// Random frames of widths 1 to 40, 127 and 130, heights 0 to 5, rows exactly as
// long as the engine writes or padded; every matrix and layout at level 0 (and
// level 5 with its vector kernels).
TEST_P(RgbConverterRule, EveryPixelFollowsTheRule) {
    const Row& r = GetParam();
    if (r.avx2Form) CYCBCR_REQUIRE_AVX2();
    const uint32_t depth = depth_of(r.to), bpp = pixel_bytes(depth);
    const bool packed = source_at(r.from, 0, 1).shape == Shape::Packed;
    std::vector<uint32_t> widths;
    for (uint32_t w = 1; w <= 40; ++w) widths.push_back(w);
    widths.insert(widths.end(), {127, 130});
    uint32_t seed = 100;
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (uint32_t w : widths)
            for (uint32_t h : {0u, 1u, 2u, 3u, 5u})
                for (uint32_t padded : {0u, 1u}) {
                    const uint32_t rowBytes = static_cast<uint32_t>(2 * pairs_of(w) * bpp);
                    const uint32_t dp = rowBytes + (padded ? (w % 2 ? 13 : 64) : 0);
                    const uint32_t sp = packed ? 2 * w + 36 * padded : w + 7 * padded;
                    const auto src =
                        samples_bytes(source_bytes(r.from, w, h, sp) + 16, ++seed, padded != 0);
                    const auto init = random_bytes(
                        std::max(engine_dst_bytes(r.from, w, h, dp, bpp), size_t{h} * dp) + 16,
                        ++seed);
                    const Samples s = samples_of(src.data(), source_at(r.from, sp, h), w);
                    for (QBYCBCRMatrix m : kMatrices) {
                        const std::vector<Rgb> px = rule_frame(s, h, m);
                        for (QBYCBCRRgbType t : kTypes) {
                            if (image_library_route(r, level, m, t)) continue;
                            std::vector<uint8_t> want = init, got = init;
                            place(want, px, w, h, dp, depth, t);
                            if (r.from == Format::CYUV) flip(want, dp, h);
                            const unsigned res = r.fn(got.data(), src.data(), w, h, dp, sp, m, t);
                            const Case c{w, h, dp, sp, m, t, level};
                            ASSERT_EQ(res, w * h * bpp) << r.name << ", " << c;
                            ASSERT_TRUE(same_bytes(got, want)) << r.name << ", " << c;
                        }
                    }
                }
    }
}

INSTANTIATE_TEST_SUITE_P(All, RgbConverterRule, ::testing::ValuesIn(rows()), row_name);

// ---------------------------------------------------------------------------
// The engines called directly
// ---------------------------------------------------------------------------

using Engine = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                unsigned int, unsigned int, unsigned int, unsigned int,
                                QBYCBCRMatrix, QBYCBCRRgbType, int32_t, unsigned int, unsigned int,
                                unsigned int);
struct EngineCase {
    std::string name;
    Engine fn;
    Shape shape;
    bool full;
    bool needsAvx2;
};
void PrintTo(const EngineCase& e, std::ostream* os) {
    *os << e.name;
}
const EngineCase kEngines[] = {
    {"ToRGBInt_packed", cycbcr_ToRGBInt, Shape::Packed, true, false},
    {"ToRGBInt_planar422", cycbcr_ToRGBInt, Shape::Planar, true, false},
    {"ToRGBInt_planar420", cycbcr_ToRGBInt, Shape::Planar, false, false},
    {"ToRGB_packed", cycbcr_ToRGB, Shape::Packed, true, false},
    {"ToRGB_planar422", cycbcr_ToRGB, Shape::Planar, true, false},
    {"ToRGB_planar420", cycbcr_ToRGB, Shape::Planar, false, false},
    {"ToRGBInt_avx2_packed", cycbcr_ToRGBInt_avx2, Shape::Packed, true, true},
    {"ToRGBInt_avx2_planar422", cycbcr_ToRGBInt_avx2, Shape::Planar, true, true},
    {"ToRGBInt_avx2_planar420", cycbcr_ToRGBInt_avx2, Shape::Planar, false, true},
    {"Bi_420", cycbcrBi_ToRGBInt, Shape::SemiPlanar, false, false},
    {"Bi_422", cycbcrBi_ToRGBInt, Shape::SemiPlanar, true, false},
};

class EngineRule : public ::testing::TestWithParam<EngineCase> {};

// Three separate sample buffers of exactly the bytes the rule reads (so that
// each pointer is followed on its own); every depth, valid or not; the pitches
// the engine must ignore given odd values; flags given values other than 1.
TEST_P(EngineRule, EveryDepthFollowsTheRule) {
    const EngineCase& e = GetParam();
    if (e.needsAvx2) CYCBCR_REQUIRE_AVX2();
    std::vector<uint32_t> widths;
    for (uint32_t w = 1; w <= 17; ++w) widths.push_back(w);
    widths.insert(widths.end(), {31, 32, 33, 64, 127});
    uint32_t seed = 500;
    for (uint32_t level : levels_to_test()) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (uint32_t w : widths)
            for (uint32_t h : {0u, 1u, 2u, 3u}) {
                const Reach rr = reach(e.shape, e.full, w, h);
                const auto y =
                    samples_bytes(rr.y + (e.shape == Shape::Packed ? 2 : 0), ++seed, false);
                // Packed rows: Cb and Cr every four bytes from their own pointer.
                const auto cbBuf = random_bytes(rr.cb + 1, ++seed);
                const auto crBuf = random_bytes(rr.cr + 1, ++seed);
                const uint8_t* cb = cbBuf.data();
                const uint8_t* cr = crBuf.data();
                if (e.shape == Shape::SemiPlanar) cr = cbBuf.data() + 1;  // one interleaved plane
                const Samples s{y.data(), cb, cr, e.shape, e.full, w};
                const int32_t is422 = e.full ? 1 + 4 * int32_t(w % 2) : 0;
                const uint32_t planar = e.shape == Shape::Packed ? 0 : 1 + w % 3;
                const uint32_t dp = static_cast<uint32_t>(2 * pairs_of(w) * 4 + 8);
                const auto init = random_bytes(size_t{dp} * h + 8, ++seed);
                for (QBYCBCRMatrix m : {0u, 1u, 2u, 3u, 6u, 7u, 9u}) {
                    const std::vector<Rgb> px = rule_frame(s, h, m);
                    for (uint32_t depth : {15u, 16u, 24u, 32u, 0u, 8u, 48u})
                        for (QBYCBCRRgbType t : kTypes) {
                            const bool selectorRoute = e.fn == cycbcr_ToRGB && !e.full &&
                                                       e.shape == Shape::Planar && depth == 32 &&
                                                       t == 0;
                            if (selectorRoute) continue;
                            std::vector<uint8_t> want = init, got = init;
                            place(want, px, w, h, dp, depth, t);
                            const unsigned res = e.fn(got.data(), y.data(), cb, cr, w, h, dp,
                                                      3 * w + 5, m, t, is422, planar, depth, 77);
                            const Case c{w, h, dp, 3 * w + 5, m, t, level};
                            ASSERT_EQ(res, w * h * result_bytes(depth))
                                << e.name << ", depth " << depth << ", " << c;
                            ASSERT_TRUE(same_bytes(got, want))
                                << e.name << ", depth " << depth << ", " << c;
                        }
                }
            }
    }
}

INSTANTIATE_TEST_SUITE_P(All, EngineRule, ::testing::ValuesIn(kEngines),
                         [](const auto& info) { return info.param.name; });

// ---------------------------------------------------------------------------
// The float and 16-bit siblings
// ---------------------------------------------------------------------------

// A channel computed in double precision and truncated: the exact value's
// truncation, or, where the exact value is a whole number, one below it (the
// double sum may land a hair under it).
struct Choice {
    uint32_t v;
    bool alt;
};
Choice float_channel(int64_t micro) {
    const int64_t q = micro / 1000000;
    if (q <= 0) return {0, false};
    if (q > 255) return {255, false};
    return {static_cast<uint32_t>(q), micro % 1000000 == 0};
}

// The frames the float and 16-bit engines are checked on: packed, planar 4:2:2
// and 4:2:0 sources of random samples at a few widths and heights. Calls
// fn(samples, w, h, row, seed) with row the pixels written per row.
template <class Fn>
void for_each_sibling_frame(uint32_t seed, Fn&& fn) {
    const Shape shapes[] = {Shape::Packed, Shape::Planar, Shape::Planar};
    for (int si = 0; si < 3; ++si) {
        const Shape shape = shapes[si];
        const bool full = si != 2;
        for (uint32_t w : {1u, 2u, 3u, 7u, 16u, 33u})
            for (uint32_t h : {1u, 2u, 3u}) {
                const Reach rr = reach(shape, full, w, h);
                const auto y = random_bytes(rr.y + 2, ++seed);
                const auto cb = random_bytes(rr.cb + 1, ++seed);
                const auto cr = random_bytes(rr.cr + 1, ++seed);
                const Samples s{y.data(), cb.data(), cr.data(), shape, full, w};
                fn(s, w, h, static_cast<uint32_t>(2 * pairs_of(w)), seed);
                if (::testing::Test::HasFatalFailure()) return;
            }
    }
}

TEST(FloatEngine, FollowsTheMasterSetInDoublePrecision) {
    for_each_sibling_frame(
        900, [](const Samples& s, uint32_t w, uint32_t h, uint32_t row, uint32_t seed) {
            const bool full = s.full;
            const Shape shape = s.shape;
            for (QBYCBCRMatrix m : kMatrices)
                for (uint32_t depth : {15u, 16u, 24u, 32u, 8u})
                    for (QBYCBCRRgbType t : kTypes) {
                        const uint32_t bpp = pixel_bytes(depth);
                        const uint32_t dp = row * 4 + 4;
                        const auto init = random_bytes(size_t{dp} * h, seed + depth);
                        std::vector<uint8_t> got = init;
                        const unsigned res = cycbcr_ToRGBFloat(
                            got.data(), s.y, s.cb, s.cr, w, h, dp, 0, m, t, full ? 1 : 0,
                            shape == Shape::Planar ? 1 : 0, depth, 0);
                        const Case c{w, h, dp, 0, m, t, 0};
                        ASSERT_EQ(res, w * h * result_bytes(depth)) << c;
                        if (bpp == 0) {
                            ASSERT_EQ(got, init) << "depth " << depth << ", " << c;
                            continue;
                        }
                        const Gains k = master_micro(m);
                        for (uint32_t n = 0; n < h; ++n)
                            for (uint32_t j = 0; j < row; ++j) {
                                const Ycc v = sample(s, n, j);
                                const int64_t u = int64_t{v.cb} - 128, r = int64_t{v.cr} - 128;
                                const int64_t l = (int64_t{v.y} - k.off) * k.gain;
                                const Choice ch[3] = {float_channel(l + k.crR * r),
                                                      float_channel(l - k.crG * r - k.cbG * u),
                                                      float_channel(l + k.cbB * u)};
                                const size_t at =
                                    size_t{bottom_up(t) ? h - 1 - n : n} * dp + size_t{j} * bpp;
                                bool ok = false;
                                for (int alt = 0; alt < 8 && !ok; ++alt) {
                                    uint32_t c3[3];
                                    bool valid = true;
                                    for (int i = 0; i < 3; ++i) {
                                        const bool down = (alt >> i) & 1;
                                        valid = valid && (!down || ch[i].alt);
                                        c3[i] = ch[i].v - (down ? 1 : 0);
                                    }
                                    if (!valid) continue;
                                    uint8_t p[4];
                                    put(p, depth, t, {c3[0], c3[1], c3[2]}, 255);
                                    ok = std::equal(p, p + bpp, got.begin() + at);
                                }
                                ASSERT_TRUE(ok)
                                    << "row " << n << " pixel " << j << ", Y " << v.y << " Cb "
                                    << v.cb << " Cr " << v.cr << ", depth " << depth << ", " << c;
                            }
                    }
        });
}

// Family D: R and B carry 5000 twice of rounding bias, G none; the studio
// matrices take Y - 16 and add 4096 after the division.
Rgb rule_pixel16(QBYCBCRMatrix m, uint32_t y, uint32_t cb, uint32_t cr) {
    const Gains k = family_d(m);
    const bool studio = m <= 7 && m % 2 == 1;
    const int64_t u = int64_t{cb} - 128, v = int64_t{cr} - 128;
    const int64_t l = (int64_t{y} - (studio ? 16 : k.off)) * k.gain;
    const int64_t lift = studio ? 4096 : 0;
    return {clamp_to((l + 5000 + k.crR * v + 5000) / 10000 + lift, 65535),
            clamp_to((l - k.crG * v - k.cbG * u) / 10000 + lift, 65535),
            clamp_to((l + 5000 + k.cbB * u + 5000) / 10000 + lift, 65535)};
}
void put16(uint8_t* p, uint32_t depth, QBYCBCRRgbType t, Rgb c) {
    const uint32_t n = t & ~0x8000u;
    std::vector<uint32_t> words;
    const bool bgr = n == 0 || n == 1;
    if (depth == 24 || depth == 48)
        words = bgr ? std::vector<uint32_t>{c.b, c.g, c.r} : std::vector<uint32_t>{c.r, c.g, c.b};
    else if (n == 0)
        words = {c.b, c.g, c.r, 65535};
    else if (n == 1)
        words = {65535, c.b, c.g, c.r};
    else if (n == 3)
        words = {65535, c.r, c.g, c.b};
    else
        words = {c.r, c.g, c.b, 65535};
    for (size_t i = 0; i < words.size(); ++i) {
        p[2 * i] = static_cast<uint8_t>(words[i]);
        p[2 * i + 1] = static_cast<uint8_t>(words[i] >> 8);
    }
}

TEST(SixteenBitEngine, FollowsFamilyD) {
    for_each_sibling_frame(
        1900, [](const Samples& s, uint32_t w, uint32_t h, uint32_t row, uint32_t seed) {
            const bool full = s.full;
            const Shape shape = s.shape;
            for (QBYCBCRMatrix m : kMatrices)
                for (uint32_t depth : {24u, 48u, 32u, 64u, 16u})
                    for (QBYCBCRRgbType t : kTypes) {
                        const bool three = depth == 24 || depth == 48;
                        const bool writes = three || depth == 32 || depth == 64;
                        const uint32_t bpp = three ? 6 : 8;
                        const uint32_t dp = row * 8 + 6;
                        const auto init = random_bytes(size_t{dp} * h, seed + depth);
                        std::vector<uint8_t> got = init, want = init;
                        const unsigned res = cycbcr_ToRGBInt16(
                            got.data(), s.y, s.cb, s.cr, w, h, dp, 0, m, t, full ? 1 : 0,
                            shape == Shape::Planar ? 1 : 0, depth, 0);
                        const Case c{w, h, dp, 0, m, t, 0};
                        if (writes) {
                            ASSERT_EQ(res, w * h * bpp) << "depth " << depth << ", " << c;
                            for (uint32_t n = 0; n < h; ++n)
                                for (uint32_t j = 0; j < row; ++j) {
                                    const Ycc v = sample(s, n, j);
                                    put16(&want[size_t{bottom_up(t) ? h - 1 - n : n} * dp +
                                                size_t{j} * bpp],
                                          depth, t, rule_pixel16(m, v.y, v.cb, v.cr));
                                }
                        }
                        ASSERT_TRUE(same_bytes(got, want)) << "depth " << depth << ", " << c;
                    }
        });
}

// ---------------------------------------------------------------------------
// Plain against AVX2
// ---------------------------------------------------------------------------

// Vyuy: Cr, Y0, Cb, Y1, an arrangement no format names (the engine follows
// any three pointers).
enum class DiffSource { Uyvy, Yuy2, Yvyu, Vyuy, Planar422, Planar420, Nv12 };
struct DiffCase {
    const char* name;
    DiffSource source;
};
void PrintTo(const DiffCase& d, std::ostream* os) {
    *os << d.name;
}
const DiffCase kDiffCases[] = {
    {"uyvy", DiffSource::Uyvy},           {"yuy2", DiffSource::Yuy2},
    {"yvyu", DiffSource::Yvyu},           {"vyuy", DiffSource::Vyuy},
    {"planar422", DiffSource::Planar422}, {"planar420", DiffSource::Planar420},
    {"nv12", DiffSource::Nv12},
};

class AgainstAvx2 : public ::testing::TestWithParam<DiffCase> {};

// Widths 1 to 70 (every residue of the kernels' sixteen pixels, odd widths with
// their extra pixel), each buffer exactly the bytes the rule touches with an
// inaccessible page after it: the plain engine at level 0 is the reference.
TEST_P(AgainstAvx2, SameBytesAsThePlainEngine) {
    CYCBCR_REQUIRE_AVX2();
    const DiffSource src = GetParam().source;
    const bool packed = src == DiffSource::Uyvy || src == DiffSource::Yuy2 ||
                        src == DiffSource::Yvyu || src == DiffSource::Vyuy;
    const Shape shape = packed                    ? Shape::Packed
                        : src == DiffSource::Nv12 ? Shape::SemiPlanar
                                                  : Shape::Planar;
    const bool full = packed || src == DiffSource::Planar422;
    GuardedTail yBuf(1 << 12), cbBuf(1 << 12), crBuf(1 << 12), dstBuf(1 << 14), alphaBuf(1 << 12);
    uint32_t seed = 3000;
    for (uint32_t w = 1; w <= 70; ++w)
        for (uint32_t h : {1u, 2u, 3u}) {
            const Reach rr = reach(shape, full, w, h);
            const size_t pairs = pairs_of(w);
            const uint8_t *y, *cb, *cr;
            if (packed) {
                // One frame of exactly h * pairs * 4 bytes in the format's order.
                const uint8_t* f = yBuf.load(random_bytes(h * pairs * 4, ++seed));
                const size_t at[4][3] = {{1, 0, 2}, {0, 1, 3}, {0, 3, 1}, {1, 2, 0}};
                const size_t* o = at[static_cast<int>(src)];
                y = f + o[0];
                cb = f + o[1];
                cr = f + o[2];
            } else if (shape == Shape::SemiPlanar) {
                y = yBuf.load(random_bytes(rr.y, ++seed));
                cb = cbBuf.load(random_bytes(rr.cb + 1, ++seed));
                cr = cb + 1;
            } else {
                y = yBuf.load(random_bytes(rr.y, ++seed));
                cb = cbBuf.load(random_bytes(rr.cb, ++seed));
                cr = crBuf.load(random_bytes(rr.cr, ++seed));
            }
            const size_t alphaBytes = size_t{h - 1} * w + 2 * pairs;
            const auto alphaPlane = random_bytes(alphaBytes, ++seed);
            const uint8_t* alpha = alphaBuf.load(alphaPlane);
            for (uint32_t depth : {15u, 16u, 24u, 32u}) {
                const uint32_t bpp = pixel_bytes(depth);
                const uint32_t rowBytes = static_cast<uint32_t>(2 * pairs * bpp);
                for (uint32_t dp : {rowBytes, rowBytes + 20}) {
                    const size_t dstBytes = size_t{h - 1} * dp + rowBytes;
                    const auto init = random_bytes(dstBytes, ++seed);
                    for (QBYCBCRMatrix m : {0u, 1u, 2u, 3u, 6u, 7u, 9u})
                        for (QBYCBCRRgbType t : kTypes) {
                            const Case c{w, h, dp, 0, m, t, 0};
                            const int32_t is422 = full ? 1 : 0;
                            const uint32_t planar = packed ? 0 : 1;
                            Engine plain =
                                shape == Shape::SemiPlanar ? cycbcrBi_ToRGBInt : cycbcr_ToRGBInt;
                            auto run = [&](auto&& call) {
                                uint8_t* d = dstBuf.load(init);
                                const unsigned res = call(d);
                                EXPECT_TRUE(dstBuf.lead_intact(dstBytes)) << c;
                                return std::make_pair(res, dstBuf.tail(dstBytes));
                            };
                            auto engine = [&](Engine fn) {
                                return [&, fn](uint8_t* d) {
                                    return fn(d, y, cb, cr, w, h, dp, 0, m, t, is422, planar, depth,
                                              0);
                                };
                            };
                            ASSERT_EQ(cycbcr_set_cpu(0), 0u);
                            const auto ref = run(engine(plain));
                            ASSERT_EQ(ref.first, w * h * bpp) << c;
                            std::vector<
                                std::pair<const char*, std::pair<unsigned, std::vector<uint8_t>>>>
                                others;
                            if (shape != Shape::SemiPlanar)
                                others.push_back(
                                    {"ToRGBInt_avx2", run(engine(cycbcr_ToRGBInt_avx2))});
                            ASSERT_EQ(cycbcr_set_cpu(5), 5u);
                            others.push_back({"level 5", run(engine(plain))});
                            if (src == DiffSource::Uyvy && depth == 24)
                                others.push_back({"uyvy_to_rgb24_avx2", run([&](uint8_t* d) {
                                                      return cycbcr_uyvy_to_rgb24_avx2(
                                                          d, cb, w, h, dp, 2 * w, m, t);
                                                  })});
                            if (src == DiffSource::Uyvy && depth == 32)
                                others.push_back({"uyvy_to_rgb32_avx2", run([&](uint8_t* d) {
                                                      return cycbcr_uyvy_to_rgb32_avx2(
                                                          d, cb, w, h, dp, 2 * w, m, t);
                                                  })});
                            for (const auto& [what, got] : others) {
                                ASSERT_EQ(got.first, ref.first) << what << ", " << c;
                                ASSERT_TRUE(same_bytes(got.second, ref.second))
                                    << what << ", " << c;
                            }
                            if (src != DiffSource::Uyvy || depth != 32) continue;
                            // With an alpha plane: the rule at level 0, and its AVX2 forms.
                            std::vector<uint8_t> want = init;
                            const Samples s{y, cb, cr, Shape::Packed, true, w};
                            place(want, rule_frame(s, h, m), w, h, dp, 32, t, alphaPlane.data());
                            auto withAlpha = [&](auto fn) {
                                return run([&](uint8_t* d) {
                                    return fn(d, cb, alpha, w, h, dp, 2 * w, m, t);
                                });
                            };
                            ASSERT_EQ(cycbcr_set_cpu(0), 0u);
                            const auto a0 = withAlpha(cycbcr_uyvy_to_rgb32_Alpha);
                            ASSERT_EQ(a0.first, w * h * 4) << c;
                            ASSERT_TRUE(same_bytes(a0.second, want)) << "alpha, level 0, " << c;
                            const auto ax = withAlpha(cycbcr_uyvy_to_rgb32_alpha_avx2);
                            ASSERT_EQ(ax.first, w * h * 4) << c;
                            ASSERT_TRUE(same_bytes(ax.second, want)) << "alpha_avx2, " << c;
                            ASSERT_EQ(cycbcr_set_cpu(5), 5u);
                            const auto a5 = withAlpha(cycbcr_uyvy_to_rgb32_Alpha);
                            ASSERT_TRUE(same_bytes(a5.second, want)) << "alpha, level 5, " << c;
                        }
                }
            }
        }
}

INSTANTIATE_TEST_SUITE_P(All, AgainstAvx2, ::testing::ValuesIn(kDiffCases),
                         [](const auto& info) { return std::string(info.param.name); });

// A zeroed buffer whose data starts `offset` bytes past a 32-byte boundary.
class Aligned {
  public:
    Aligned(size_t n, size_t offset) : raw_(n + 64) {
        const auto base = reinterpret_cast<uintptr_t>(raw_.data());
        p_ = raw_.data() + ((32 - base % 32) % 32) + offset;
    }
    uint8_t* data() { return p_; }

  private:
    std::vector<uint8_t> raw_;
    uint8_t* p_;
};

// Every (Y, Cb, Cr) triple under every distinct matrix row, as a 4096-wide
// planar 4:2:2 frame with Y varying fastest (each run of 256 pixels shares one
// chroma pair), 512 rows (8 MiB of output) at a time: the vector division is
// exact everywhere, and the plain engine follows the rule on every triple. The
// bands alternate between a 32-byte aligned destination, which frames this
// large are streamed to, and one that is not.
TEST(AgainstAvx2Exhaustive, EveryTripleEveryMatrix) {
    CYCBCR_REQUIRE_AVX2();
    constexpr uint32_t w = 4096, band = 512;
    constexpr size_t frame = size_t{w} * band * 4;
    std::vector<uint8_t> y(size_t{w} * band), cb(size_t{w / 2} * band), cr(cb.size());
    for (size_t i = 0; i < y.size(); ++i) y[i] = static_cast<uint8_t>(i);
    std::vector<uint8_t> plain(frame);
    Aligned streamed(frame, 0), cached(frame, 16);
    for (QBYCBCRMatrix m : {0u, 1u, 2u, 3u, 6u, 7u}) {
        const Gains k = gains(m);
        for (uint32_t first = 0; first < 65536 / 16; first += band) {
            // Row r holds chroma pairs (r * 16 .. r * 16 + 15): Cb the low byte.
            for (uint32_t r = 0; r < band; ++r)
                for (uint32_t k2 = 0; k2 < w / 2; ++k2) {
                    const uint32_t combo = (first + r) * 16 + k2 / 128;
                    cb[size_t{r} * (w / 2) + k2] = static_cast<uint8_t>(combo);
                    cr[size_t{r} * (w / 2) + k2] = static_cast<uint8_t>(combo >> 8);
                }
            uint8_t* vec = (first / band) % 2 == 0 ? streamed.data() : cached.data();
            ASSERT_EQ(cycbcr_set_cpu(0), 0u);
            cycbcr_ToRGBInt(plain.data(), y.data(), cb.data(), cr.data(), w, band, w * 4, w, m, 0,
                            1, 1, 32, w / 2);
            cycbcr_ToRGBInt_avx2(vec, y.data(), cb.data(), cr.data(), w, band, w * 4, w, m, 0, 1, 1,
                                 32, w / 2);
            const auto at = std::mismatch(plain.begin(), plain.end(), vec).first;
            if (at != plain.end()) {
                const size_t byte = static_cast<size_t>(at - plain.begin()), px = byte / 4;
                const size_t r = px / w, x = px % w;
                ADD_FAILURE() << "matrix " << m << ", band at row " << first << ": Y " << int{y[px]}
                              << " Cb " << int{cb[r * (w / 2) + x / 2]} << " Cr "
                              << int{cr[r * (w / 2) + x / 2]} << ", byte " << byte % 4 << ": plain "
                              << int{*at} << ", AVX2 " << int{vec[byte]};
                return;
            }
            for (size_t px = 0; px < size_t{w} * band; ++px) {
                const size_t r = px / w, c = r * (w / 2) + (px % w) / 2;
                const Rgb want = rule_pixel(k, y[px], cb[c], cr[c]);
                const uint8_t* p = &plain[4 * px];
                if (p[0] != want.b || p[1] != want.g || p[2] != want.r || p[3] != 255) {
                    ADD_FAILURE() << "matrix " << m << ": Y " << int{y[px]} << " Cb " << int{cb[c]}
                                  << " Cr " << int{cr[c]} << " gives " << int{p[2]} << ","
                                  << int{p[1]} << "," << int{p[0]} << ", rule " << want.r << ","
                                  << want.g << "," << want.b;
                    return;
                }
            }
        }
    }
}

// Frames spanning 8 MiB and more at a 32-byte aligned destination and pitch go
// out with streaming stores: each source shape and depth (layouts and matrices
// in turn, bottom-up among them), rows far apart, an odd width so that each row
// ends in the plain tail.
TEST(AgainstAvx2Exhaustive, LargeFramesStreamed) {
    CYCBCR_REQUIRE_AVX2();
    const uint32_t w = 1027, h = 17;
    const uint32_t dp = static_cast<uint32_t>(((size_t{8} << 20) / h + 32) / 32 * 32);
    const size_t pairs = pairs_of(w);
    int turn = 0;
    for (DiffSource src : {DiffSource::Uyvy, DiffSource::Yuy2, DiffSource::Vyuy,
                           DiffSource::Planar422, DiffSource::Planar420, DiffSource::Nv12})
        for (uint32_t depth : {15u, 16u, 24u, 32u}) {
            const QBYCBCRRgbType t = kTypes[turn % 7];
            const QBYCBCRMatrix m = kMatrices[turn % 9];
            ++turn;
            const bool packed =
                src == DiffSource::Uyvy || src == DiffSource::Yuy2 || src == DiffSource::Vyuy;
            const Shape shape = packed                    ? Shape::Packed
                                : src == DiffSource::Nv12 ? Shape::SemiPlanar
                                                          : Shape::Planar;
            const bool full = packed || src == DiffSource::Planar422;
            const Reach rr = reach(shape, full, w, h);
            const auto ybuf = random_bytes(rr.y + 2, 40 + turn);
            const auto cbuf = random_bytes(rr.cb + 1, 60 + turn);
            const auto rbuf = random_bytes(rr.cr + 1, 80 + turn);
            const uint8_t *yp = ybuf.data(), *cbp = cbuf.data(), *crp = rbuf.data();
            if (packed) {
                const size_t at[3][3] = {{1, 0, 2}, {0, 1, 3}, {1, 2, 0}};
                const size_t* o = at[src == DiffSource::Uyvy ? 0 : src == DiffSource::Yuy2 ? 1 : 2];
                yp = ybuf.data() + o[0];
                cbp = ybuf.data() + o[1];
                crp = ybuf.data() + o[2];
            }
            if (shape == Shape::SemiPlanar) crp = cbp + 1;
            const size_t rowBytes = 2 * pairs * pixel_bytes(depth);
            const size_t bytes = size_t{dp} * (h - 1) + rowBytes;
            std::vector<uint8_t> plain(bytes, 3);
            Aligned vec(bytes, 0);
            std::memset(vec.data(), 3, bytes);
            const Engine fn = shape == Shape::SemiPlanar ? cycbcrBi_ToRGBInt : cycbcr_ToRGBInt;
            const int32_t is422 = full ? 1 : 0;
            const uint32_t planar = packed ? 0 : 1;
            ASSERT_EQ(cycbcr_set_cpu(0), 0u);
            fn(plain.data(), yp, cbp, crp, w, h, dp, 0, m, t, is422, planar, depth, 0);
            ASSERT_EQ(cycbcr_set_cpu(5), 5u);
            fn(vec.data(), yp, cbp, crp, w, h, dp, 0, m, t, is422, planar, depth, 0);
            for (uint32_t row = 0; row < h; ++row) {
                const size_t at = size_t{row} * dp;
                const size_t n = std::min(bytes - at, rowBytes + 64);
                const auto diff =
                    std::mismatch(plain.begin() + at, plain.begin() + at + n, vec.data() + at);
                ASSERT_TRUE(diff.first == plain.begin() + at + n)
                    << "depth " << depth << " matrix " << m << " type 0x" << std::hex << t
                    << std::dec << " source " << static_cast<int>(src) << ": row " << row
                    << " byte " << (diff.first - plain.begin() - at) << " (width " << w
                    << ", height " << h << ", dstPitch " << dp << ")";
            }
        }
}

// ---------------------------------------------------------------------------
// The image-library routes
// ---------------------------------------------------------------------------

// A channel within `tol` of the expected one.
bool near(uint32_t got, uint32_t want, uint32_t tol) {
    return (got > want ? got - want : want - got) <= tol;
}

// The image library's 4:2:0 addressing: luma rows srcPitch apart, chroma rows
// srcPitch / 2 apart, one chroma row for two luma rows.
Rgb library_420_pixel(const uint8_t* src, uint32_t x, uint32_t n, uint32_t sp, size_t cbAt,
                      size_t crAt, const Gains& k) {
    const size_t c = size_t{n / 2} * (sp / 2) + x / 2;
    return rule_pixel(k, src[size_t{n} * sp + x], src[cbAt + c], src[crAt + c]);
}

// (a) i420 and yv12 to 32 bits with type 0: returns height * dstPitch; matrices
// 2 and 4 BT.709 in rows width * 4 apart whatever the pitch, 3 and 5 studio
// BT.709, every other matrix BT.601; each within 2 of the rule's matrix of that
// kind (the image library rounds where the rule truncates), and the BT.601 ones
// also within 2 of libyuv's I420ToARGB. (libyuv's BT.709 reader is no reference
// here: its blue gain saturates early on strong blues.)
TEST(ImageLibraryRoutes, Planar420ToRgb32WithTypeZero) {
    const uint32_t w = 64, h = 6, sp = 96, dp = w * 4 + 32;
    const uint32_t p = sp * h;
    const auto src = random_bytes(p + p / 2, 41);
    std::vector<uint32_t> levels = {0, 4};
    if (have_avx2()) levels.push_back(5);
    for (uint32_t level : levels) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (bool yv12 : {false, true}) {
            const auto fn = yv12 ? cycbcr_yv12_to_rgb32 : cycbcr_i420_to_rgb32;
            const size_t cbAt = yv12 ? p + p / 4 : p, crAt = yv12 ? p : p + p / 4;
            for (QBYCBCRMatrix m : kMatrices) {
                std::vector<uint8_t> dst(size_t{dp} * h, 0x5A);
                EXPECT_EQ(fn(dst.data(), src.data(), w, h, dp, sp, m, 0), h * dp);
                const bool widened = m == 2 || m == 4, hdtv = m == 3 || m == 5;
                const uint32_t stride = widened ? w * 4 : dp;
                const Gains k = gains(widened ? 2 : hdtv ? 3 : 0);
                std::vector<std::pair<const char*, std::vector<uint8_t>>> refs;
                std::vector<uint8_t> rule(size_t{stride} * h, 0);
                for (uint32_t n = 0; n < h; ++n)
                    for (uint32_t x = 0; x < w; ++x)
                        put(&rule[size_t{n} * stride + 4 * x], 32, 0,
                            library_420_pixel(src.data(), x, n, sp, cbAt, crAt, k), 255);
                refs.push_back({"rule", rule});
#ifdef CYCBCR_TEST_WITH_LIBYUV
                if (!widened && !hdtv) {
                    std::vector<uint8_t> yuv(size_t{stride} * h, 0);
                    libyuv::I420ToARGB(src.data(), static_cast<int>(sp), src.data() + cbAt,
                                       static_cast<int>(sp / 2), src.data() + crAt,
                                       static_cast<int>(sp / 2), yuv.data(),
                                       static_cast<int>(stride), static_cast<int>(w),
                                       static_cast<int>(h));
                    refs.push_back({"libyuv", yuv});
                }
#endif
                for (const auto& [what, ref] : refs)
                    for (uint32_t n = 0; n < h; ++n)
                        for (uint32_t x = 0; x < 4 * w; ++x) {
                            const size_t at = size_t{n} * stride + x;
                            ASSERT_TRUE(near(dst[at], ref[at], x % 4 == 3 ? 0 : 2))
                                << (yv12 ? "yv12" : "i420") << " matrix " << m << " level " << level
                                << ": row " << n << " byte " << x << " is " << int{dst[at]} << ", "
                                << what << " " << int{ref[at]};
                        }
            }
        }
    }
}

// (a) with odd sizes: the last column and the last row stay unwritten.
TEST(ImageLibraryRoutes, Planar420OddSizesLeaveTheLastColumnAndRow) {
    ASSERT_EQ(cycbcr_set_cpu(0), 0u);
    const uint32_t w = 63, h = 5, sp = 64, dp = 4 * w + 4;
    const auto src = random_bytes(sp * h * 2, 42);
    for (QBYCBCRMatrix m : {0u, 1u, 3u}) {
        std::vector<uint8_t> dst(size_t{dp} * h, 0x5A);
        EXPECT_EQ(cycbcr_i420_to_rgb32(dst.data(), src.data(), w, h, dp, sp, m, 0), h * dp);
        for (uint32_t n = 0; n < h; ++n)
            for (uint32_t x = 0; x < w; ++x) {
                const bool last = n == h - 1 || x == w - 1;
                const uint8_t* px = &dst[size_t{n} * dp + 4 * x];
                if (last)
                    EXPECT_TRUE(px[0] == 0x5A && px[1] == 0x5A && px[2] == 0x5A && px[3] == 0x5A)
                        << "matrix " << m << " row " << n << " pixel " << x;
                else
                    EXPECT_EQ(px[3], 255) << "matrix " << m << " row " << n << " pixel " << x;
            }
    }
}

// (b) uyvy to 24 bits below level 5: returns height * dstPitch whatever the RGB
// type, which changes nothing; rows srcPitch and dstPitch apart; matrices 4 to
// 7 studio BT.709 in R, G, B order; the others BT.601 reading each pixel pair's
// bytes as Y0 Cr Y1 Cb.
TEST(ImageLibraryRoutes, UyvyToRgb24BelowLevelFive) {
    const uint32_t w = 64, h = 4, sp = 2 * w + 20, dp = 3 * w + 10;
    const auto src = random_bytes(sp * h, 43);
    for (uint32_t level = 0; level <= 4; ++level) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (QBYCBCRMatrix m : kMatrices) {
            std::vector<uint8_t> first;
            for (QBYCBCRRgbType t : {0u, 1u, 0x8003u}) {
                std::vector<uint8_t> dst(size_t{dp} * h, 0x5A);
                EXPECT_EQ(cycbcr_uyvy_to_rgb24(dst.data(), src.data(), w, h, dp, sp, m, t), h * dp)
                    << "matrix " << m << " type " << t << " level " << level;
                if (first.empty()) {
                    first = dst;
                } else {
                    EXPECT_EQ(dst, first) << "type " << t << " changed the bytes, matrix " << m;
                }
            }
            const bool hdtv = (m & 4) != 0;
            for (uint32_t n = 0; n < h; ++n)
                for (uint32_t x = 0; x < w; ++x) {
                    const uint8_t* q = &src[size_t{n} * sp + 4 * (x / 2)];
                    const Rgb want = hdtv ? rule_pixel(gains(3), q[1 + 2 * (x % 2)], q[0], q[2])
                                          : rule_pixel(gains(0), q[2 * (x % 2)], q[3], q[1]);
                    const uint8_t* got = &first[size_t{n} * dp + 3 * x];
                    ASSERT_TRUE(near(got[0], want.r, 2) && near(got[1], want.g, 2) &&
                                near(got[2], want.b, 2))
                        << "matrix " << m << " level " << level << " row " << n << " pixel " << x
                        << ": " << int{got[0]} << "," << int{got[1]} << "," << int{got[2]}
                        << ", expected about R,G,B " << want.r << "," << want.g << "," << want.b;
                }
        }
    }
}

// (c) uyvy to 32 bits at levels 1 to 4 and 6 with an odd matrix: alpha 0,
// returns height * dstPitch, bottom-up ignored, R, G, B, A for type 2 and
// B, G, R, A otherwise; at level 1 only types 0 and 0x8000 take it.
TEST(ImageLibraryRoutes, UyvyToRgb32StudioMatrices) {
    const uint32_t w = 32, h = 3, sp = 2 * w + 12, dp = 4 * w + 20;
    auto src = random_bytes(sp * h, 44);
    // Pair 0 of every row is a strong red: Y 82, Cb 90, Cr 240.
    for (uint32_t n = 0; n < h; ++n) {
        uint8_t* q = &src[size_t{n} * sp];
        q[0] = 90, q[1] = 82, q[2] = 240, q[3] = 82;
    }
    for (uint32_t level : {1u, 2u, 3u, 4u, 6u}) {
        ASSERT_EQ(cycbcr_set_cpu(level), level);
        for (QBYCBCRMatrix m : {1u, 3u, 5u, 7u}) {
            auto run = [&](QBYCBCRRgbType t, unsigned* res) {
                std::vector<uint8_t> dst(size_t{dp} * h, 0x5A);
                *res = cycbcr_uyvy_to_rgb32(dst.data(), src.data(), w, h, dp, sp, m, t);
                return dst;
            };
            const std::string c = "matrix " + std::to_string(m) + " level " + std::to_string(level);
            unsigned res = 0;
            const auto bgra = run(0, &res);
            EXPECT_EQ(res, h * dp) << c;
            for (uint32_t n = 0; n < h; ++n) {
                for (uint32_t x = 0; x < w; ++x)
                    ASSERT_EQ(bgra[size_t{n} * dp + 4 * x + 3], 0) << c << " row " << n;
                const uint8_t* red = &bgra[size_t{n} * dp];
                EXPECT_GT(red[2], red[0] + 100) << c << ": red pixel not in B, G, R order";
            }
            EXPECT_EQ(run(0x8000, &res), bgra) << c << ": bottom-up flag not ignored";
            EXPECT_EQ(res, h * dp) << c;
            if (level == 1) {
                // Type 2 takes the engine at level 1.
                const auto e = run(2, &res);
                EXPECT_EQ(res, w * h * 4) << c;
                std::vector<uint8_t> want(size_t{dp} * h, 0x5A);
                const Samples s{src.data() + 1, src.data(), src.data() + 2, Shape::Packed, true, w};
                place(want, rule_frame(s, h, m), w, h, dp, 32, 2);
                EXPECT_TRUE(same_bytes(e, want)) << c;
                continue;
            }
            auto rgba = run(2, &res);
            EXPECT_EQ(res, h * dp) << c;
            for (uint32_t n = 0; n < h; ++n)
                for (uint32_t x = 0; x < w; ++x)
                    std::swap(rgba[n * dp + 4 * x], rgba[n * dp + 4 * x + 2]);
            EXPECT_EQ(rgba, bgra) << c << ": type 2 is not the B, G, R, A bytes in R, G, B order";
            EXPECT_EQ(run(3, &res), bgra) << c << ": type 3 is not B, G, R, A";
        }
        // Even matrices keep the engine.
        for (QBYCBCRMatrix m : {0u, 2u, 6u}) {
            std::vector<uint8_t> dst(size_t{dp} * h, 0x5A), want = dst;
            EXPECT_EQ(cycbcr_uyvy_to_rgb32(dst.data(), src.data(), w, h, dp, sp, m, 0), w * h * 4);
            const Samples s{src.data() + 1, src.data(), src.data() + 2, Shape::Packed, true, w};
            place(want, rule_frame(s, h, m), w, h, dp, 32, 0);
            EXPECT_TRUE(same_bytes(dst, want)) << "matrix " << m << " level " << level;
        }
    }
}

// ---------------------------------------------------------------------------
// Buffer sizes
// ---------------------------------------------------------------------------

class RgbBufferSizes : public ::testing::TestWithParam<Row> {};

// Every converter at levels 0, 4 and 5 between guard pages placed at the
// answered sizes, widths 1 to 40, heights 1 to 3, natural, padded and zero
// pitches. Converters that run the engine at every level must be answered
// exactly the rule's bytes; for every converter some run writes the last
// answered destination byte (two complementary fills, rows of distinct fills so
// that a turned-over row shows).
TEST_P(RgbBufferSizes, WithinAndUpToTheAnsweredBytes) {
    const Row& r = GetParam();
    if (r.avx2Form) CYCBCR_REQUIRE_AVX2();
    const uint32_t depth = depth_of(r.to), bpp = pixel_bytes(depth);
    const bool packed = source_at(r.from, 0, 1).shape == Shape::Packed;
    std::vector<uint32_t> levels = {0, 4};
    if (have_avx2()) levels.push_back(5);
    GuardedTail dstBuf(1 << 14), srcBuf(1 << 14);
    uint32_t seed = 7000;
    for (uint32_t w = 1; w <= 40; ++w)
        for (uint32_t h = 1; h <= 3; ++h) {
            const uint32_t natural = w * bpp, srcNatural = packed ? 2 * w : w;
            const uint32_t rowBytes = static_cast<uint32_t>(2 * pairs_of(w) * bpp);
            const std::pair<uint32_t, uint32_t> pitches[] = {{natural, srcNatural},
                                                             {rowBytes + 36, srcNatural + 36},
                                                             {natural, 0},
                                                             {0, srcNatural}};
            for (const auto& [dp, sp] : pitches)
                for (QBYCBCRMatrix m : {0u, 1u, 2u, 5u, 6u})
                    for (QBYCBCRRgbType t : {0u, 2u, 0x8000u}) {
                        const Case c{w, h, dp, sp, m, t, 0};
                        uint64_t d = 0, s = 0;
                        ASSERT_EQ(cycbcr_converter_buffer_sizes(r.name.c_str(), w, h, dp, sp, m, t,
                                                                &d, &s),
                                  1u);
                        ASSERT_LE(d, dstBuf.capacity());
                        ASSERT_LE(s, srcBuf.capacity());
                        const size_t ruleDst = engine_dst_bytes(r.from, w, h, dp, bpp);
                        const size_t ruleSrc = source_bytes(r.from, w, h, sp);
                        // Exactly the rule's bytes where every level runs the engine
                        // for this call; at least them where another route may reach
                        // further (or where an AVX2 form answers for its pair).
                        const bool planar420Zero =
                            (r.from == Format::I420 || r.from == Format::YV12) &&
                            r.to == Format::RGB32 && t == 0 && !r.avx2Form;
                        const bool engineEverywhere =
                            !r.avx2Form &&
                            (engine_only(r) || (r.fn == cycbcr_uyvy_to_rgb32 && m % 2 == 0) ||
                             (r.from != Format::UYVY && !planar420Zero));
                        if (engineEverywhere) {
                            EXPECT_EQ(d, ruleDst) << r.name << ", " << c;
                            EXPECT_EQ(s, ruleSrc) << r.name << ", " << c;
                        } else if (!planar420Zero) {
                            EXPECT_GE(d, ruleDst) << r.name << ", " << c;
                            EXPECT_GE(s, ruleSrc) << r.name << ", " << c;
                        }
                        const auto source = random_bytes(s, ++seed);
                        std::vector<uint8_t> fill(d);
                        for (size_t i = 0; i < d; ++i)
                            fill[i] =
                                static_cast<uint8_t>(0x21 * (dp ? i / dp % 5 + 1 : 1) + i % 3);
                        bool lastWritten = d == 0;
                        for (uint32_t level : levels) {
                            ASSERT_EQ(cycbcr_set_cpu(level), level);
                            for (bool inverse : {false, true}) {
                                std::vector<uint8_t> f = fill;
                                if (inverse)
                                    for (auto& b : f) b = static_cast<uint8_t>(~b);
                                const uint8_t* sp8 = srcBuf.load(source);
                                uint8_t* dp8 = dstBuf.load(f);
                                r.fn(dp8, sp8, w, h, dp, sp, m, t);
                                ASSERT_TRUE(dstBuf.lead_intact(d) && srcBuf.lead_intact(s))
                                    << r.name << ", " << c << ": written before the buffer";
                                ASSERT_EQ(srcBuf.tail(s), source) << r.name << ", " << c;
                                if (d) lastWritten = lastWritten || dstBuf.tail(1)[0] != f[d - 1];
                            }
                        }
                        // The AVX2 forms and UYVY's image-library routes without
                        // AVX2 answer for paths they do not take.
                        if (r.avx2Form || (!have_avx2() && r.from == Format::UYVY)) continue;
                        EXPECT_TRUE(lastWritten) << r.name << ", " << c << ": the last of " << d
                                                 << " answered bytes is never written";
                    }
        }
}

INSTANTIATE_TEST_SUITE_P(All, RgbBufferSizes, ::testing::ValuesIn(rows()), row_name);

}  // namespace
