// High-bit-depth YCbCr to packed RGB: worked pixels, every member against a
// per-pixel model written from the family's rules on random frames (every
// channel order, depth, layout and bottom-up), the plain rows against level 5
// at every width residue of the sixteen-pixel step with padded pitches, the
// exactness of the vector division, and every call between guard pages of
// exactly the sizes the library answers.
#include <cycbcr.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/frames.h"
#include "support/guarded_buffer.h"
#include "torgb/hbd_to_rgb.h"

namespace {

using cycbcr_test::GuardedBuffer;

using Engine = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                unsigned int, unsigned int, unsigned int, unsigned int,
                                QBYCBCRMatrix, QBYCBCRRgbType, int32_t, unsigned int, unsigned int,
                                unsigned int);

// ---------------------------------------------------------------------------
// The model.

struct Gains {
    int64_t off, gain, crR, crG, cbG, cbB;
};
// Rows for matrices 0 .. 7 (0 is also every unknown value).
constexpr Gains kA[8] = {
    {16, 11640, 15960, 8129, 3920, 20170}, {0, 10000, 13710, 6979, 3360, 17320},
    {16, 11640, 17930, 5340, 2130, 21150}, {0, 10000, 15400, 4590, 1830, 18160},
    {16, 11640, 17930, 5340, 2130, 21150}, {0, 10000, 15400, 4590, 1830, 18160},
    {16, 11640, 16786, 6504, 1873, 21417}, {0, 10000, 14746, 5714, 1646, 18814},
};
constexpr Gains kB[8] = {
    {64, 2910, 3990, 2032, 980, 5042}, {0, 2500, 3427, 1744, 840, 4330},
    {64, 2910, 4482, 1335, 532, 5287}, {0, 2500, 3850, 1147, 457, 4540},
    {64, 2910, 4482, 1335, 532, 5287}, {0, 2500, 3850, 1147, 457, 4540},
    {64, 2910, 4196, 1626, 468, 5354}, {0, 2500, 3686, 1428, 411, 4703},
};
constexpr Gains kC[8] = {
    {64, 11919, 16343, 8325, 4014, 20654}, {0, 10240, 14039, 7147, 3440, 17735},
    {64, 11919, 18360, 5468, 2181, 21657}, {0, 10240, 15769, 4700, 1873, 18595},
    {64, 11919, 18360, 5468, 2181, 21657}, {0, 10240, 15769, 4700, 1873, 18595},
    {64, 11919, 17189, 6660, 1918, 21931}, {0, 10240, 15100, 5851, 1685, 19265},
};

enum class Kind { Int, Int16, Int10, Twelve, TwelveInt16, Sixteen8, Planar10 };
struct Member {
    const char* name;
    Kind kind;
    Engine fn;  // null for planar10ToRGBInt
};
const Member kMembers[] = {
    {"cycbcr_10ToRGBInt", Kind::Int, cycbcr_10ToRGBInt},
    {"cycbcr_10ToRGBInt16", Kind::Int16, cycbcr_10ToRGBInt16},
    {"cycbcr_10ToRGBInt10", Kind::Int10, cycbcr_10ToRGBInt10},
    {"cycbcr_12ToRGB", Kind::Twelve, cycbcr_12ToRGB},
    {"cycbcr_12ToRGBInt16", Kind::TwelveInt16, cycbcr_12ToRGBInt16},
    {"cycbcr_16ToRGB8", Kind::Sixteen8, cycbcr_16ToRGB8},
    {"planar10ToRGBInt", Kind::Planar10, nullptr},
};
bool wide(Kind k) {
    return k == Kind::Int16 || k == Kind::Twelve || k == Kind::TwelveInt16;
}

// One pixel's channels from its three sample words.
struct Channels {
    uint32_t r, g, b;
};
Channels model_pixel(Kind kind, QBYCBCRMatrix m, uint16_t ys, uint16_t cbs, uint16_t crs) {
    const int row = m <= 7 ? static_cast<int>(m) : 0;
    Gains k;
    int64_t y, cb, cr, mid, div, top;
    switch (kind) {
        case Kind::Int:
            k = kA[row], mid = 512, div = 40000, top = 255;
            y = ys & 1023, cb = cbs & 1023, cr = crs & 1023;
            break;
        case Kind::Sixteen8:
            k = kA[row], mid = 128, div = 10000, top = 255;
            y = ys >> 8, cb = cbs >> 8, cr = crs >> 8;
            break;
        case Kind::Planar10:
            k = kB[row], mid = 512, div = 10000, top = 255;
            y = ys & 1023, cb = cbs & 1023, cr = crs & 1023;
            break;
        case Kind::Twelve:
        case Kind::TwelveInt16:
            k = kC[row], mid = 2048, div = 640, top = 65535;
            k.off = k.off == 64 ? 256 : 0;
            y = ys & 4095, cb = cbs & 4095, cr = crs & 4095;
            break;
        default:
            k = kC[row], mid = 512, div = 160, top = 65535;
            y = ys & 1023, cb = cbs & 1023, cr = crs & 1023;
            break;
    }
    const int64_t l = (y - k.off) * k.gain, u = cb - mid, v = cr - mid;
    auto ch = [&](int64_t s) {
        const int64_t q = s / div;  // C++ division truncates toward zero
        return static_cast<uint32_t>(q < 0 ? 0 : q > top ? top : q);
    };
    return {ch(l + k.crR * v), ch(l - k.crG * v - k.cbG * u), ch(l + k.cbB * u)};
}

// Bytes of one pixel: 0 when the depth writes nothing.
size_t pixel_size(Kind kind, uint32_t depth) {
    if (kind == Kind::Int10) return 4;
    if (wide(kind)) return depth == 24 || depth == 48 ? 6 : depth == 32 || depth == 64 ? 8 : 0;
    return depth == 15 || depth == 16 ? 2 : depth == 24 ? 3 : depth == 32 ? 4 : 0;
}
uint32_t result_of(Kind kind, uint32_t w, uint32_t h, uint32_t depth) {
    const size_t s = pixel_size(kind, depth);
    return w * h * static_cast<uint32_t>(s ? s : wide(kind) ? 8 : 4);
}

void put16(uint8_t* p, uint32_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}
void write_pixel(uint8_t* p, Kind kind, uint32_t depth, QBYCBCRRgbType type, Channels c) {
    const uint32_t layout = type & ~0x8000u;
    const bool bgr = layout == 0 || layout == 1, alphaFirst = layout == 1 || layout == 3;
    const uint32_t a = bgr ? c.b : c.r, z = bgr ? c.r : c.b;
    if (kind == Kind::Int10) {
        const uint32_t w = ((c.r & ~3u) << 14) | (c.r & 3u) | ((c.b << 28) & 0x30000000u) |
                           (c.b >> 2) | ((c.g * 4) & 12u) | ((c.g >> 2) << 8);
        for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(w >> (8 * i));
        return;
    }
    const size_t size = pixel_size(kind, depth);
    if (size == 2) {
        const uint32_t w = depth == 15 ? (a >> 3) << 10 | (c.g >> 3) << 5 | z >> 3
                                       : (a >> 3) << 11 | (c.g >> 2) << 5 | z >> 3;
        put16(p, w);
        return;
    }
    std::vector<uint32_t> order{a, c.g, z};
    const uint32_t opaque = wide(kind) ? 65535 : 255;
    if (size == 4 || size == 8) {
        if (alphaFirst)
            order.insert(order.begin(), opaque);
        else
            order.push_back(opaque);
    }
    for (size_t i = 0; i < order.size(); ++i) {
        if (wide(kind))
            put16(p + 2 * i, order[i]);
        else
            p[i] = static_cast<uint8_t>(order[i]);
    }
}

uint16_t word_at(const std::vector<uint8_t>& v, size_t byte) {
    return static_cast<uint16_t>(v.at(byte) | v.at(byte + 1) << 8);
}

// A call: geometry, layout and the buffers the library says it touches.
struct Case {
    const Member* member = nullptr;
    uint32_t width = 0, height = 0, dstPitch = 0, srcPitch = 0, chromaPitch = 0;
    QBYCBCRMatrix matrix = 0;
    QBYCBCRRgbType type = 0;
    int32_t is422 = 0;
    uint32_t planar = 0, depth = 0;
};
std::string describe(const Case& c) {
    return std::string(c.member->name) + " w" + std::to_string(c.width) + " h" +
           std::to_string(c.height) + " dp" + std::to_string(c.dstPitch) + " sp" +
           std::to_string(c.srcPitch) + " cp" + std::to_string(c.chromaPitch) + " m" +
           std::to_string(c.matrix) + " t" + std::to_string(c.type) +
           " 422:" + std::to_string(c.is422) + " planar:" + std::to_string(c.planar) + " d" +
           std::to_string(c.depth);
}

std::vector<uint64_t> sizes_of(const Case& c) {
    std::vector<unsigned int> args;
    if (c.member->kind == Kind::Planar10)
        args = {c.dstPitch, c.srcPitch, c.matrix, c.type, c.depth};
    else
        args = {c.dstPitch, c.srcPitch, c.matrix,     c.type, static_cast<unsigned>(c.is422),
                c.planar,   c.depth,    c.chromaPitch};
    std::vector<uint64_t> b(4, 0);
    EXPECT_EQ(1u, cycbcr_converter_pointer_sizes(c.member->name, c.width, c.height, args.data(),
                                                 static_cast<unsigned>(args.size()), b.data()));
    return b;
}

// Random sample words: 10- or 12-bit values, a quarter of them with stray high
// bits (which the members ignore), for the 16-bit member any word.
std::vector<uint8_t> random_samples(size_t bytes, Kind kind, std::mt19937& rng) {
    std::vector<uint8_t> v(bytes);
    const uint32_t bits = kind == Kind::Sixteen8                              ? 16
                          : kind == Kind::Twelve || kind == Kind::TwelveInt16 ? 12
                                                                              : 10;
    for (size_t i = 0; i + 1 < bytes; i += 2) {
        uint32_t s = rng() & ((1u << bits) - 1);
        if (bits < 16 && rng() % 4 == 0) s |= (rng() << bits) & 0xFFFF;
        put16(&v[i], s);
    }
    if (bytes % 2) v.back() = static_cast<uint8_t>(rng());
    return v;
}

// The expected destination: `init` with the model's pixels written over it.
std::vector<uint8_t> model_frame(const Case& c, const std::vector<uint8_t>& init,
                                 const std::vector<uint8_t>& y, const std::vector<uint8_t>& cb,
                                 const std::vector<uint8_t>& cr, size_t cbAt, size_t crAt) {
    std::vector<uint8_t> out = init;
    const Kind kind = c.member->kind;
    const size_t px = pixel_size(kind, c.depth);
    if (px == 0 || c.height == 0) return out;
    const uint32_t pairs = (c.width + 1) / 2;
    const bool up = (c.type & 0x8000u) != 0;
    for (uint32_t n = 0; n < c.height; ++n) {
        const size_t drow = size_t{up ? c.height - 1 - n : n} * c.dstPitch;
        for (uint32_t x = 0; x < 2 * pairs; ++x) {
            const uint32_t p = x / 2;
            uint16_t ys, cbs, crs;
            // Rows one after another, whatever the pitches: packed rows of four
            // samples a pair, planar luma rows of width samples, chroma row n at
            // (n * width) / 2 samples (4:2:2) or ((n / 2) * width) / 2 (4:2:0).
            if (c.planar == 0) {
                const size_t row = size_t{n} * pairs * 8;
                ys = word_at(y, row + 2 * (4 * p + 2 * (x % 2)));
                cbs = word_at(cb, cbAt + row + 8 * p);
                crs = word_at(cr, crAt + row + 8 * p);
            } else {
                const size_t crow =
                    (c.is422 ? size_t{n} * c.width / 2 : size_t{n / 2} * c.width / 2) * 2;
                ys = word_at(y, size_t{n} * c.width * 2 + 2 * x);
                cbs = word_at(cb, cbAt + crow + 2 * p);
                crs = word_at(cr, crAt + crow + 2 * p);
            }
            EXPECT_LE(drow + (x + 1) * px, out.size()) << describe(c);
            if (drow + (x + 1) * px > out.size()) return out;
            write_pixel(&out[drow + x * px], kind, c.depth, c.type,
                        model_pixel(kind, c.matrix, ys, cbs, crs));
        }
    }
    return out;
}

// Runs the case between guard pages of the answered sizes and compares with the
// model. Returns the destination.
std::vector<uint8_t> run_case(const Case& c, uint32_t seed) {
    std::mt19937 rng(seed);
    const Kind kind = c.member->kind;
    const std::vector<uint64_t> s = sizes_of(c);
    GuardedBuffer dst(s[0]);
    std::vector<uint8_t> init(s[0]);
    for (auto& b : init) b = static_cast<uint8_t>(rng());
    if (!init.empty()) std::memcpy(dst.data(), init.data(), init.size());
    unsigned int got;
    std::vector<uint8_t> want;
    if (kind == Kind::Planar10) {
        const std::vector<uint8_t> frame = random_samples(s[1], kind, rng);
        GuardedBuffer src(s[1]);
        if (!frame.empty()) std::memcpy(src.data(), frame.data(), frame.size());
        got = planar10ToRGBInt(dst.data(), src.data(), c.width, c.height, c.dstPitch, c.srcPitch,
                               c.matrix, c.type, c.depth);
        // Written from the frame's layout: Y, then Cb after srcPitch * height
        // bytes and Cr after half as many more; chroma rows half a pitch.
        const size_t p = static_cast<uint32_t>(c.srcPitch * c.height);
        Case as = c;
        as.planar = 1;
        as.is422 = 1;
        as.chromaPitch = c.srcPitch / 2;
        want = model_frame(as, init, frame, frame, frame, p, p + p / 2);
        EXPECT_TRUE(src.slack_intact());
    } else {
        const std::vector<uint8_t> y = random_samples(s[1], kind, rng);
        const std::vector<uint8_t> cb = random_samples(s[2], kind, rng);
        const std::vector<uint8_t> cr = random_samples(s[3], kind, rng);
        GuardedBuffer by(s[1]), bcb(s[2]), bcr(s[3]);
        if (!y.empty()) std::memcpy(by.data(), y.data(), y.size());
        if (!cb.empty()) std::memcpy(bcb.data(), cb.data(), cb.size());
        if (!cr.empty()) std::memcpy(bcr.data(), cr.data(), cr.size());
        got = c.member->fn(dst.data(), by.data(), bcb.data(), bcr.data(), c.width, c.height,
                           c.dstPitch, c.srcPitch, c.matrix, c.type, c.is422, c.planar, c.depth,
                           c.chromaPitch);
        want = model_frame(c, init, y, cb, cr, 0, 0);
    }
    EXPECT_EQ(result_of(kind, c.width, c.height, c.depth), got) << describe(c);
    EXPECT_TRUE(dst.slack_intact()) << describe(c);
    std::vector<uint8_t> out(dst.data(), dst.data() + s[0]);
    EXPECT_TRUE(cycbcr_test::same_bytes(out, want)) << describe(c);
    return out;
}

std::vector<uint32_t> depths_of(Kind k) {
    if (k == Kind::Int10) return {32, 10, 0};
    if (wide(k)) return {24, 32, 48, 64, 16};
    return {15, 16, 24, 32, 48};
}
const QBYCBCRRgbType kTypes[] = {0, 1, 2, 3, 7, 0x8000, 0x8001, 0x8002, 0x8003};

class LevelTest : public ::testing::TestWithParam<uint32_t> {
  protected:
    void SetUp() override {
        if (GetParam() == 5) CYCBCR_REQUIRE_AVX2();
        ASSERT_EQ(GetParam(), cycbcr_set_cpu(GetParam()));
    }
};

// Every member, depth, channel order and layout against the model, on frames of
// random geometry: odd widths, padded pitches, one to five rows.
TEST_P(LevelTest, EveryMemberAgainstTheModel) {
    std::mt19937 rng(1234 + GetParam());
    for (const Member& m : kMembers)
        for (uint32_t depth : depths_of(m.kind))
            for (QBYCBCRRgbType type : kTypes)
                for (int layout = 0; layout < 3; ++layout) {
                    if (m.kind == Kind::Planar10 && layout > 0) continue;
                    Case c;
                    c.member = &m;
                    c.width = 1 + rng() % 40;
                    c.height = 1 + rng() % 5;
                    const uint32_t px = static_cast<uint32_t>(pixel_size(m.kind, depth));
                    c.dstPitch = (c.width + 1) / 2 * 2 * (px ? px : 4) + rng() % 3 * 7;
                    c.planar = layout == 2 ? 0 : 1;
                    c.is422 = layout == 0 ? 1 : 0;
                    c.srcPitch = (c.planar ? 4 : 8) * ((c.width + 1) / 2) + rng() % 3 * 5;
                    c.chromaPitch = 2 * ((c.width + 1) / 2) + rng() % 3 * 3;
                    c.matrix = rng() % 11;
                    c.type = type;
                    c.depth = depth;
                    run_case(c, rng());
                    if (HasFailure()) return;
                }
}

// At level 5 the planar rows run sixteen pixels a step and hand the rest to the
// plain rows: every width residue, both chroma layouts, padded odd pitches,
// every output form with a vector row and every matrix, the same bytes as
// level 0 and as the model.
TEST_P(LevelTest, EveryWidthResidue) {
    std::mt19937 rng(77 + GetParam());
    struct Form {
        size_t member;
        uint32_t depth;
    };
    const Form forms[] = {{0, 32}, {1, 48}, {1, 64}, {2, 32}, {3, 48}, {4, 64}, {5, 32},
                          {6, 32}, {0, 24}, {5, 15}, {0, 16}, {6, 24}, {6, 15}};
    for (const Form& f : forms)
        for (uint32_t w = 1; w <= 50; ++w) {
            const Member& m = kMembers[f.member];
            Case c;
            c.member = &m;
            c.width = w;
            c.height = 3;
            const uint32_t pairs = (w + 1) / 2;
            c.dstPitch = 2 * pairs * static_cast<uint32_t>(pixel_size(m.kind, f.depth)) + 13;
            c.srcPitch = 4 * pairs + 6 + 1;  // odd: rows start on odd bytes
            c.chromaPitch = 2 * pairs + 3;
            c.planar = 1;
            c.is422 = static_cast<int32_t>(w % 2);
            c.matrix = w % 9;
            c.type = kTypes[w % 9];
            c.depth = f.depth;
            const uint32_t seed = rng();
            const std::vector<uint8_t> here = run_case(c, seed);
            ASSERT_EQ(0u, cycbcr_set_cpu(0));
            const std::vector<uint8_t> plain = run_case(c, seed);
            ASSERT_EQ(GetParam(), cycbcr_set_cpu(GetParam()));
            EXPECT_TRUE(cycbcr_test::same_bytes(here, plain)) << describe(c);
            if (HasFailure()) return;
        }
}

// The extremes of every sample through every vectorised form: sums far below 0
// and far above the clamp, at both levels.
TEST_P(LevelTest, ExtremeSamples) {
    const uint16_t values[] = {0, 1, 15, 16, 64, 512, 940, 1023, 2048, 4095, 0xFC00, 0xFFFF};
    for (const Member& m : kMembers) {
        if (m.kind == Kind::Planar10) continue;
        for (uint32_t depth : {32u, 64u}) {
            const uint32_t w = 2 * 12 * 12 * 12 / 2;  // every (Y, Cb, Cr) triple once
            std::vector<uint8_t> y(4 * w), cb(2 * w), cr(2 * w);
            for (uint32_t i = 0; i < w; ++i) {
                put16(&y[4 * i], values[i % 12]);
                put16(&y[4 * i + 2], values[(i + 5) % 12]);
                put16(&cb[2 * i], values[(i / 12) % 12]);
                put16(&cr[2 * i], values[(i / 144) % 12]);
            }
            const size_t px = pixel_size(m.kind, depth);
            if (px == 0) continue;
            std::vector<uint8_t> got(2 * w * px);
            for (QBYCBCRMatrix mx : {0u, 1u, 6u, 7u}) {
                m.fn(got.data(), y.data(), cb.data(), cr.data(), 2 * w, 1,
                     static_cast<unsigned>(got.size()), 4 * w, mx, 0, 1, 1, depth, 2 * w);
                std::vector<uint8_t> want(got.size());
                for (uint32_t x = 0; x < 2 * w; ++x)
                    write_pixel(&want[x * px], m.kind, depth, 0,
                                model_pixel(m.kind, mx, word_at(y, 2 * x), word_at(cb, 2 * (x / 2)),
                                            word_at(cr, 2 * (x / 2))));
                EXPECT_TRUE(cycbcr_test::same_bytes(got, want)) << m.name << " m" << mx;
            }
        }
    }
}

// Destinations of 8 MiB and more go out with streaming stores at level 5 when
// their rows are 32-byte aligned: the same bytes as the model, bottom-up too.
TEST_P(LevelTest, LargeFrames) {
    struct Form {
        size_t member;
        uint32_t depth;
        QBYCBCRRgbType type;
    };
    for (const Form f : {Form{0, 32, 0}, Form{1, 64, 0x8003}, Form{2, 32, 0}, Form{3, 64, 1}}) {
        Case c;
        c.member = &kMembers[f.member];
        c.width = 1024;
        c.height = f.depth == 64 ? 1024 : 2048;
        c.dstPitch = c.width * f.depth / 8;
        c.srcPitch = 2 * c.width;
        c.chromaPitch = c.width;
        c.planar = 1;
        c.is422 = 0;
        c.matrix = 2;
        c.type = f.type;
        c.depth = f.depth;
        run_case(c, 99);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, LevelTest, ::testing::Values(0u, 5u),
                         [](const auto& info) { return "Level" + std::to_string(info.param); });

// ---------------------------------------------------------------------------
// Worked numbers.

class Worked : public ::testing::Test {
  protected:
    void SetUp() override { cycbcr_set_cpu(0); }
};

// 10-bit black through the 10-bit member with its 8-bit offset: (64 - 16) *
// 11640 / 40000 = 13.97, truncated to 13; 10-bit white 940 gives 924 * 11640 /
// 40000 = 268, clamped to 255.
TEST_F(Worked, TenBitBlackIsThirteen) {
    const uint16_t y[2] = {64, 940}, cb[1] = {512}, cr[1] = {512};
    uint8_t out[8] = {};
    EXPECT_EQ(
        8u, cycbcr_10ToRGBInt(out, reinterpret_cast<const uint8_t*>(y),
                              reinterpret_cast<const uint8_t*>(cb),
                              reinterpret_cast<const uint8_t*>(cr), 2, 1, 8, 4, 0, 0, 1, 1, 32, 2));
    const uint8_t want[8] = {13, 13, 13, 255, 255, 255, 255, 255};
    EXPECT_EQ(0, std::memcmp(out, want, 8));
}

// Matrix 0, Y 700, Cb 400, Cr 600: L = 636 * 11919 = 7580484; R = (7580484 +
// 16343 * 88) / 160 = 9018668 / 160 = 56366; G = (7580484 - 8325 * 88 + 4014 *
// 112) / 160 = 7297452 / 160 = 45609; B = (7580484 - 20654 * 112) / 160 =
// 5267236 / 160 = 32920. Word: 0x370B0000 (R's top bits) | 2 | 0 (B << 28 has
// no bits in 0x30000000) | 0x2026 (B >> 2) | 4 ((G * 4) & 12) | 0x2C8A00 =
// 0x372FAA26.
TEST_F(Worked, PackedTenBitWord) {
    const uint16_t y[2] = {700, 700}, cb[1] = {400}, cr[1] = {600};
    uint32_t out[2] = {};
    for (QBYCBCRRgbType type : {0u, 2u, 3u}) {
        EXPECT_EQ(8u, cycbcr_10ToRGBInt10(
                          reinterpret_cast<uint8_t*>(out), reinterpret_cast<const uint8_t*>(y),
                          reinterpret_cast<const uint8_t*>(cb),
                          reinterpret_cast<const uint8_t*>(cr), 2, 1, 8, 4, 0, type, 1, 1, 32, 2));
        EXPECT_EQ(0x372FAA26u, out[0]);
        EXPECT_EQ(0x372FAA26u, out[1]);
    }
}

// Matrix 2, 12-bit Y 2000, Cb 1500, Cr 2600: L = (2000 - 256) * 11919 =
// 20786736; R = (20786736 + 18360 * 552) / 640 = 30921456 / 640 = 48314;
// G = (20786736 - 5468 * 552 + 2181 * 548) / 640 = 18963588 / 640 = 29630;
// B = (20786736 - 21657 * 548) / 640 = 8918700 / 640 = 13935. Type 0 at 64 bits:
// B, G, R, 65535; type 2 at 48 bits: R, G, B.
TEST_F(Worked, TwelveBitPixel) {
    const uint16_t y[2] = {2000, 2000}, cb[1] = {1500}, cr[1] = {2600};
    uint16_t out[8] = {};
    EXPECT_EQ(16u,
              cycbcr_12ToRGB(reinterpret_cast<uint8_t*>(out), reinterpret_cast<const uint8_t*>(y),
                             reinterpret_cast<const uint8_t*>(cb),
                             reinterpret_cast<const uint8_t*>(cr), 2, 1, 16, 4, 2, 0, 1, 1, 64, 2));
    const uint16_t want64[8] = {13935, 29630, 48314, 65535, 13935, 29630, 48314, 65535};
    EXPECT_EQ(0, std::memcmp(out, want64, 16));
    EXPECT_EQ(12u, cycbcr_12ToRGBInt16(
                       reinterpret_cast<uint8_t*>(out), reinterpret_cast<const uint8_t*>(y),
                       reinterpret_cast<const uint8_t*>(cb), reinterpret_cast<const uint8_t*>(cr),
                       2, 1, 12, 4, 2, 2, 1, 1, 48, 2));
    const uint16_t want48[6] = {48314, 29630, 13935, 48314, 29630, 13935};
    EXPECT_EQ(0, std::memcmp(out, want48, 12));
}

// 16-bit samples lose their low byte first: 0x10FF is 16, so black; 0xEBxx is
// 235, so (219 * 11640) / 10000 = 254.
TEST_F(Worked, SixteenBitSamplesShiftedFirst) {
    const uint16_t y[2] = {0x10FF, 0xEB80}, cb[1] = {0x80FF}, cr[1] = {0x8001};
    uint8_t out[6] = {};
    EXPECT_EQ(6u,
              cycbcr_16ToRGB8(out, reinterpret_cast<const uint8_t*>(y),
                              reinterpret_cast<const uint8_t*>(cb),
                              reinterpret_cast<const uint8_t*>(cr), 2, 1, 6, 4, 0, 2, 1, 1, 24, 2));
    const uint8_t want[6] = {0, 0, 0, 254, 254, 254};
    EXPECT_EQ(0, std::memcmp(out, want, 6));
}

// One 4:2:2 frame, 2 x 2, pitch 4: Y at 0, Cb at 8, Cr at 12, one chroma word a
// row. Row 0 grey 502 with (512, 512): (438 * 2910) / 10000 = 127; row 1 Y 64
// with Cb 1023: B = 511 * 5042 / 10000 = 257 -> 255, G = -(980 * 511) / 10000
// -> 0, R = 0 (matrix 0).
TEST_F(Worked, PlanarFramePlanes) {
    const uint16_t frame[8] = {502, 502, 64, 64, 512, 1023, 512, 512};
    uint8_t out[16] = {};
    EXPECT_EQ(16u,
              planar10ToRGBInt(out, reinterpret_cast<const uint8_t*>(frame), 2, 2, 8, 4, 0, 0, 32));
    const uint8_t want[16] = {127, 127, 127, 255, 127, 127, 127, 255,
                              255, 0,   0,   255, 255, 0,   0,   255};
    EXPECT_EQ(0, std::memcmp(out, want, 16));
}

// Results are counted whatever is written: depths that write nothing, height 0.
TEST_F(Worked, Results) {
    uint8_t none[1] = {0xAB};
    const uint8_t* p = none;
    EXPECT_EQ(6u * 0 * 4, cycbcr_10ToRGBInt(none, p, p, p, 6, 0, 0, 0, 0, 0, 1, 1, 32, 0));
    EXPECT_EQ(6u * 5 * 4, cycbcr_10ToRGBInt(none, p, p, p, 6, 5, 0, 0, 0, 0, 1, 1, 8, 0));
    EXPECT_EQ(6u * 5 * 8, cycbcr_10ToRGBInt16(none, p, p, p, 6, 5, 0, 0, 0, 0, 1, 1, 40, 0));
    EXPECT_EQ(6u * 5 * 4, cycbcr_16ToRGB8(none, p, p, p, 6, 5, 0, 0, 0, 0, 1, 1, 0, 0));
    EXPECT_EQ(0u, cycbcr_12ToRGB(none, p, p, p, 6, 0, 0, 0, 0, 0, 1, 1, 48, 0));
    EXPECT_EQ(0u, cycbcr_10ToRGBInt10(none, p, p, p, 7, 0, 0, 0, 0, 0, 1, 1, 32, 0));
    EXPECT_EQ(6u * 5 * 4, planar10ToRGBInt(none, p, 6, 5, 0, 0, 0, 0, 17));
    EXPECT_EQ(0xAB, none[0]);
}

// ---------------------------------------------------------------------------
// The vector rows' division: every sum that can reach it, for every divisor.
TEST(VectorDivision, ExactForEverySumBeforeTheClamp) {
    using namespace cycbcr::colour;
    for (const HbdRule& r : {kRule10A, kRule10C, kRule12C, kRule16A, kRule10B}) {
        const uint32_t k = hbd_vector_shift(r);
        const float c = hbd_reciprocal(r.div >> k);
        const int32_t top = r.div * (r.max + 1) - 1;
        int64_t bad = 0;
        for (int32_t s = 0; s <= top; ++s)
            if (static_cast<int32_t>(static_cast<float>(s >> k) * c) != s / r.div) ++bad;
        EXPECT_EQ(0, bad) << "divisor " << r.div;
        // Past the range the rows rely on monotonic steps only: the first sum
        // past it already gives max + 1, the first below 0 at most 0.
        auto q = [&](int32_t s) { return static_cast<int32_t>(static_cast<float>(s >> k) * c); };
        EXPECT_EQ(r.max + 1, q(top + 1)) << "divisor " << r.div;
        EXPECT_GE(0, q(-1)) << "divisor " << r.div;
    }
}

// ---------------------------------------------------------------------------
// The buffer-size query knows every member and nothing else of this family.
TEST(BufferSizes, EveryMemberAnswered) {
    const unsigned int args[8] = {64, 32, 0, 0, 1, 1, 32, 16};
    uint64_t b[4];
    const unsigned int frameArgs[5] = {64, 32, 0, 0, 32};
    for (const Member& m : kMembers) {
        const bool frame = m.kind == Kind::Planar10;
        EXPECT_EQ(1u, cycbcr_converter_pointer_sizes(m.name, 8, 2, frame ? frameArgs : args,
                                                     frame ? 5 : 8, b))
            << m.name;
        EXPECT_GT(b[0], 0u) << m.name;
    }
    EXPECT_EQ(0u, cycbcr_converter_pointer_sizes("cycbcr_10ToRGBInt_avx2", 8, 2, args, 8, b));
    // Planar 4:2:2, 8 x 2, 32-bit: dst 64 + 32; rows read one after another
    // whatever the pitches: Y 16 + 16, Cb and Cr (4 + 4) samples.
    EXPECT_EQ(1u, cycbcr_converter_pointer_sizes("cycbcr_10ToRGBInt", 8, 2, args, 8, b));
    EXPECT_EQ(96u, b[0]);
    EXPECT_EQ(32u, b[1]);
    EXPECT_EQ(16u, b[2]);
    EXPECT_EQ(16u, b[3]);
}

}  // namespace
