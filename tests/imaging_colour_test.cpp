// The imaging-library YCbCr to RGB converters and channel swaps: every colour
// function against a per-pixel model of its arithmetic on random frames of many
// small and odd sizes with padded steps, each plane and the destination between
// guard pages ending at the last byte the call may touch, at the plain level and
// at the AVX2 level; hand-worked values; status codes, their order and untouched
// buffers on every refusal; the channel swaps. Then B, G, R, A to UYVY in
// the same ways: a model, hand-worked pairs and the refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "platform/imaging.h"
#include "platform/imaging_internal.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

using namespace cycbcr::ipp;
using cycbcr_test::GuardedBuffer;
using cycbcr_test::same_bytes;
using Bytes = std::vector<uint8_t>;

namespace {

// ---- the model ----

// A matrix as its decimal coefficients; black is what luma loses first.
struct Matrix3 {
    double y;
    int black;
    double rCr, gCr, gCb, bCb;
};
const Matrix3 kBt601{1.164, 16, 1.596, -0.813, -0.392, 2.017};
const Matrix3 kCsc709{1.164, 16, 1.793, -0.534, -0.213, 2.115};
const Matrix3 kHdtv709{1.0, 0, 1.540, -0.459, -0.183, 1.816};

int64_t q16(double c) {
    return std::lround(c * 65536.0);  // halves away from zero
}

// R, G, B of one pixel.
std::array<uint8_t, 3> model_rgb(const Matrix3& m, int y, int cb, int cr) {
    const int64_t l = q16(m.y) * (y - m.black), u = cb - 128, v = cr - 128;
    auto channel = [](int64_t sum) {
        return static_cast<uint8_t>(std::clamp<int64_t>((sum + 32768) >> 16, 0, 255));
    };
    return {channel(l + q16(m.rCr) * v), channel(l + q16(m.gCr) * v + q16(m.gCb) * u),
            channel(l + q16(m.bCb) * u)};
}

// ---- the functions under one calling convention ----

enum class Source { Uyvy, Yvyu, Planar420 };
enum class Layout { Bgra, Bgr, Rgb };

size_t pixel_bytes(Layout l) {
    return l == Layout::Bgra ? 4 : 3;
}

using Call = IppStatus (*)(const Ipp8u* src[3], int steps[3], Ipp8u* dst, int dstStep, IppiSize roi,
                           Ipp8u alpha);

struct Function {
    const char* name;
    Source source;
    Layout layout;
    const Matrix3* matrix;
    Call call;
};

// clang-format off
const Function kFunctions[] = {
    {"CbYCr422ToBGR_8u_C2C4R", Source::Uyvy, Layout::Bgra, &kBt601,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u a) {
         return ippiCbYCr422ToBGR_8u_C2C4R(s[0], st[0], d, ds, r, a); }},
    {"CbYCr422ToBGR_709HDTV_8u_C2C4R", Source::Uyvy, Layout::Bgra, &kHdtv709,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u a) {
         return ippiCbYCr422ToBGR_709HDTV_8u_C2C4R(s[0], st[0], d, ds, r, a); }},
    {"CbYCr422ToBGR_709HDTV_8u_C2C3R", Source::Uyvy, Layout::Bgr, &kHdtv709,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u) {
         return ippiCbYCr422ToBGR_709HDTV_8u_C2C3R(s[0], st[0], d, ds, r); }},
    {"YCrCb422ToRGB_8u_C2C3R", Source::Yvyu, Layout::Rgb, &kBt601,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u) {
         return ippiYCrCb422ToRGB_8u_C2C3R(s[0], st[0], d, ds, r); }},
    {"YCbCr420ToBGR_8u_P3C4R", Source::Planar420, Layout::Bgra, &kBt601,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u a) {
         return ippiYCbCr420ToBGR_8u_P3C4R(s, st, d, ds, r, a); }},
    {"YCbCr420ToBGR_709HDTV_8u_P3C4R", Source::Planar420, Layout::Bgra, &kHdtv709,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u a) {
         return ippiYCbCr420ToBGR_709HDTV_8u_P3C4R(s, st, d, ds, r, a); }},
    {"YCbCr420ToBGR_709CSC_8u_P3C3R", Source::Planar420, Layout::Bgr, &kCsc709,
     [](const Ipp8u* s[3], int st[3], Ipp8u* d, int ds, IppiSize r, Ipp8u) {
         return ippiYCbCr420ToBGR_709CSC_8u_P3C3R(s, st, d, ds, r); }},
};
// clang-format on

bool planar(const Function& fn) {
    return fn.source == Source::Planar420;
}

// ---- frames ----

// A call's buffers: the source planes (one for packed sources) and the
// destination, each with its step and the bytes the call may reach, which is
// where its guard page starts.
struct Frame {
    int width = 0, height = 0;
    int steps[3] = {0, 0, 0}, dstStep = 0;
    size_t reach[3] = {0, 0, 0}, dstReach = 0;
    Bytes planes[3], dst;
    Ipp8u alpha = 0;
    int planeCount = 1;
};

// Bytes from the start of a plane to the end of what `rows` rows of `used`
// bytes each reach (nothing for no rows).
size_t reach_of(int rows, int step, size_t used) {
    return rows <= 0 || used == 0 ? 0 : static_cast<size_t>(rows - 1) * step + used;
}

Frame random_frame(const Function& fn, int width, int height, uint32_t seed) {
    std::mt19937 rng(seed);
    auto pad = [&] { return static_cast<int>(rng() % 9); };
    Frame f;
    f.width = width;
    f.height = height;
    const int pairs = width / 2;
    const size_t n = pixel_bytes(fn.layout);
    if (planar(fn)) {
        f.planeCount = 3;
        const int rows = height & ~1, chromaRows = height / 2;
        f.steps[0] = width + pad();
        f.steps[1] = (width + 1) / 2 + pad();
        f.steps[2] = (width + 1) / 2 + pad();
        f.reach[0] = reach_of(rows, f.steps[0], 2 * pairs);
        f.reach[1] = reach_of(chromaRows, f.steps[1], pairs);
        f.reach[2] = reach_of(chromaRows, f.steps[2], pairs);
        f.dstStep = static_cast<int>(width * n) + pad();
        f.dstReach = reach_of(rows, f.dstStep, 2 * pairs * n);
        for (int p = 0; p < 3; ++p)
            f.planes[p] = cycbcr_test::random_bytes(
                static_cast<size_t>(f.steps[p]) * (p == 0 ? height : (height + 1) / 2), rng());
    } else {
        f.steps[0] = 2 * width + pad();
        f.reach[0] = reach_of(height, f.steps[0], 4 * pairs);
        f.dstStep = static_cast<int>(width * n) + pad();
        f.dstReach = reach_of(height, f.dstStep, 2 * pairs * n);
        f.planes[0] = cycbcr_test::random_bytes(static_cast<size_t>(f.steps[0]) * height, rng());
    }
    f.dst = cycbcr_test::random_bytes(static_cast<size_t>(f.dstStep) * height, rng());
    f.alpha = static_cast<Ipp8u>(rng());
    return f;
}

// The destination the model expects, and the status.
IppStatus model(const Function& fn, const Frame& f, Bytes& out) {
    out = f.dst;
    const size_t n = pixel_bytes(fn.layout);
    const int rows = planar(fn) ? f.height & ~1 : f.height, pairs = f.width / 2;
    for (int r = 0; r < rows; ++r) {
        for (int x = 0; x < 2 * pairs; ++x) {
            int y, cb, cr;
            if (planar(fn)) {
                y = f.planes[0][static_cast<size_t>(r) * f.steps[0] + x];
                cb = f.planes[1][static_cast<size_t>(r / 2) * f.steps[1] + x / 2];
                cr = f.planes[2][static_cast<size_t>(r / 2) * f.steps[2] + x / 2];
            } else {
                const uint8_t* pair = &f.planes[0][static_cast<size_t>(r) * f.steps[0] + x / 2 * 4];
                if (fn.source == Source::Uyvy)  // Cb Y0 Cr Y1
                    y = pair[1 + 2 * (x % 2)], cb = pair[0], cr = pair[2];
                else  // Y0 Cr Y1 Cb
                    y = pair[2 * (x % 2)], cr = pair[1], cb = pair[3];
            }
            const auto [red, green, blue] = model_rgb(*fn.matrix, y, cb, cr);
            uint8_t* d = &out[static_cast<size_t>(r) * f.dstStep + x * n];
            if (fn.layout == Layout::Rgb) {
                d[0] = red, d[1] = green, d[2] = blue;
            } else {
                d[0] = blue, d[1] = green, d[2] = red;
                if (fn.layout == Layout::Bgra) d[3] = f.alpha;
            }
        }
    }
    const bool odd = (f.width | f.height) & 1;
    return planar(fn) && odd ? ippStsDoubleSize : ippStsNoErr;
}

// Runs fn on f with every plane and the destination in a buffer whose guard
// page begins right after the bytes the call may reach (a read or write past
// them faults); checks the canaries before them and that the sources stayed.
IppStatus run_guarded(const Function& fn, const Frame& f, Bytes& out) {
    std::unique_ptr<GuardedBuffer> planes[3];
    const Ipp8u* src[3] = {nullptr, nullptr, nullptr};
    int steps[3] = {f.steps[0], f.steps[1], f.steps[2]};
    for (int p = 0; p < f.planeCount; ++p) {
        planes[p] = std::make_unique<GuardedBuffer>(f.reach[p]);
        std::copy_n(f.planes[p].begin(), f.reach[p], planes[p]->data());
        src[p] = planes[p]->data();
    }
    if (!planar(fn)) src[1] = src[2] = src[0];
    GuardedBuffer dst(f.dstReach);
    std::copy_n(f.dst.begin(), f.dstReach, dst.data());
    const IppStatus status =
        fn.call(src, steps, dst.data(), f.dstStep, {f.width, f.height}, f.alpha);
    out = f.dst;
    std::copy_n(dst.data(), f.dstReach, out.begin());
    EXPECT_TRUE(dst.slack_intact()) << fn.name << ": write before the destination";
    for (int p = 0; p < f.planeCount; ++p) {
        EXPECT_TRUE(planes[p]->slack_intact());
        EXPECT_TRUE(
            std::equal(f.planes[p].begin(), f.planes[p].begin() + f.reach[p], planes[p]->data()))
            << fn.name << ": source plane " << p << " changed";
    }
    return status;
}

void expect_model(const Function& fn, int width, int height, uint32_t seed) {
    const Frame f = random_frame(fn, width, height, seed);
    Bytes want, got;
    const IppStatus wantStatus = model(fn, f, want);
    const IppStatus status = run_guarded(fn, f, got);
    EXPECT_EQ(status, wantStatus) << fn.name << " " << width << "x" << height;
    EXPECT_TRUE(same_bytes(got, want))
        << fn.name << " " << width << "x" << height << " steps " << f.steps[0] << "," << f.steps[1]
        << "," << f.steps[2] << " dst " << f.dstStep;
}

// Every small width (odd ones too), heights 1 to 5, and widths around the AVX2
// kernels' steps (16 and 32 pixels) and the 4:2:0 kernels' 512-pixel blocks.
void expect_model_everywhere(unsigned level) {
    ASSERT_EQ(cycbcr_set_cpu(level), level);
    uint32_t seed = 1000 * level;
    std::vector<int> widths;
    for (int w = 2; w <= 70; ++w) widths.push_back(w);
    const int wide[] = {95,  96,  97,  127, 128, 129, 255, 256, 257,  271,  272,  287,  288, 289,
                        511, 512, 513, 527, 528, 543, 544, 545, 1023, 1024, 1025, 1040, 1921};
    widths.insert(widths.end(), std::begin(wide), std::end(wide));
    for (const Function& fn : kFunctions)
        for (int w : widths)
            for (int h = planar(fn) ? 2 : 1; h <= (w > 70 ? 3 : 5); ++h)
                expect_model(fn, w, h, ++seed);
}

TEST(ImagingColour, MatchesModelPlain) {
    expect_model_everywhere(0);
}

TEST(ImagingColour, MatchesModelAvx2) {
    CYCBCR_REQUIRE_AVX2();
    expect_model_everywhere(5);
}

// The AVX2 level has a vector kernel for every exported combination (otherwise
// the level-5 comparison above would only see the plain code again).
TEST(ImagingColour, EveryFunctionHasAnAvx2Kernel) {
    using cycbcr::Format;
    using M = cycbcr::ipp::Matrix;
    using P = cycbcr::ipp::Pixel;
    EXPECT_NE(cycbcr::avx2::imaging_packed_kernel(M::Bt601, Format::UYVY, P::BGRA), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_packed_kernel(M::Bt709Hdtv, Format::UYVY, P::BGRA), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_packed_kernel(M::Bt709Hdtv, Format::UYVY, P::BGR), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_packed_kernel(M::Bt601, Format::YVYU, P::RGB), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_planar_kernel(M::Bt601, P::BGRA), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_planar_kernel(M::Bt709Hdtv, P::BGRA), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_planar_kernel(M::Bt709Csc, P::BGR), nullptr);
}

// Every (Cb, Cr) pair, twice over, with varied luma: 512 x 1024 pixels, the
// AVX2 level against the plain one (whose bytes the model tests pin down).
TEST(ImagingColour, Avx2AgreesOverEveryChromaPair) {
    CYCBCR_REQUIRE_AVX2();
    const int w = 512, h = 1024;
    Bytes y(static_cast<size_t>(w) * h), cb(w / 2 * h / 2), cr(w / 2 * h / 2);
    for (size_t i = 0; i < y.size(); ++i) y[i] = static_cast<uint8_t>(i * 7 + i / w);
    for (size_t i = 0; i < cb.size(); ++i)
        cb[i] = static_cast<uint8_t>(i), cr[i] = static_cast<uint8_t>(i >> 8);
    Bytes uyvy(static_cast<size_t>(w) * 2 * h);
    for (size_t i = 0; i < uyvy.size() / 4; ++i) {
        uyvy[4 * i] = static_cast<uint8_t>(i >> 8);  // Cb (Cr for YVYU)
        uyvy[4 * i + 1] = static_cast<uint8_t>(i * 2 + i / 128);
        uyvy[4 * i + 2] = static_cast<uint8_t>(i);
        uyvy[4 * i + 3] = static_cast<uint8_t>(i * 2 + 1 + i / 128);
    }
    for (const Function& fn : kFunctions) {
        const Ipp8u* src[3] = {planar(fn) ? y.data() : uyvy.data(), cb.data(), cr.data()};
        int steps[3] = {planar(fn) ? w : 2 * w, w / 2, w / 2};
        const int dstStep = static_cast<int>(w * pixel_bytes(fn.layout));
        Bytes plain(static_cast<size_t>(dstStep) * h), fast(plain.size(), 1);
        cycbcr_set_cpu(0);
        ASSERT_EQ(fn.call(src, steps, plain.data(), dstStep, {w, h}, 9), ippStsNoErr);
        cycbcr_set_cpu(5);
        ASSERT_EQ(fn.call(src, steps, fast.data(), dstStep, {w, h}, 9), ippStsNoErr);
        EXPECT_TRUE(same_bytes(fast, plain)) << fn.name;
    }
}

// ---- worked values ----

// One pixel pair (or a 2 x 2 block) of a given Y, Cb, Cr through each function,
// checked against values worked out by hand from the coefficients.
struct Worked {
    const char* function;
    int y, cb, cr;
    std::array<int, 3> bgr;
};
// BT.601, Y 81, Cb 90, Cr 240: Y' 65, Cb' -38, Cr' 112;
//   R = (76284 * 65 + 104595 * 112 + 32768) >> 16 = 16705868 >> 16 = 254,
//   G = (4958460 - 53281 * 112 + 25690 * 38 + 32768) >> 16 = -24 >> 16 -> 0,
//   B = (4958460 - 132186 * 38 + 32768) >> 16 = -31840 >> 16 -> 0.
// BT.601 Y 128 neutral: (112 * 76284 + 32768) >> 16 = 8576576 >> 16 = 130.
// 709CSC, Y 16, Cb 240, Cr 128: B = (138609 * 112 + 32768) >> 16 = 237,
//   G = (-13959 * 112 + 32768) >> 16 = -24 -> 0, R = 32768 >> 16 = 0.
// 709HDTV, Y 100, Cb 128, Cr 228: R = (6553600 + 100925 * 100 + 32768) >> 16
//   = 254, G = (6553600 - 30081 * 100 + 32768) >> 16 = 54, B = 100.
const Worked kWorked[] = {
    {"CbYCr422ToBGR_8u_C2C4R", 16, 128, 128, {0, 0, 0}},
    {"CbYCr422ToBGR_8u_C2C4R", 235, 128, 128, {255, 255, 255}},
    {"CbYCr422ToBGR_8u_C2C4R", 128, 128, 128, {130, 130, 130}},
    {"CbYCr422ToBGR_8u_C2C4R", 81, 90, 240, {0, 0, 254}},
    {"YCbCr420ToBGR_8u_P3C4R", 16, 128, 128, {0, 0, 0}},
    {"YCbCr420ToBGR_8u_P3C4R", 235, 128, 128, {255, 255, 255}},
    {"YCbCr420ToBGR_8u_P3C4R", 81, 90, 240, {0, 0, 254}},
    {"YCrCb422ToRGB_8u_C2C3R", 81, 90, 240, {0, 0, 254}},
    {"YCbCr420ToBGR_709CSC_8u_P3C3R", 235, 128, 128, {255, 255, 255}},
    {"YCbCr420ToBGR_709CSC_8u_P3C3R", 16, 240, 128, {237, 0, 0}},
    {"CbYCr422ToBGR_709HDTV_8u_C2C4R", 100, 128, 128, {100, 100, 100}},
    {"CbYCr422ToBGR_709HDTV_8u_C2C4R", 0, 128, 128, {0, 0, 0}},
    {"CbYCr422ToBGR_709HDTV_8u_C2C4R", 255, 128, 128, {255, 255, 255}},
    {"CbYCr422ToBGR_709HDTV_8u_C2C3R", 100, 128, 228, {100, 54, 254}},
    {"YCbCr420ToBGR_709HDTV_8u_P3C4R", 100, 128, 228, {100, 54, 254}},
    {"YCbCr420ToBGR_709HDTV_8u_P3C4R", 16, 128, 128, {16, 16, 16}},
};

const Function& function_named(const std::string& name) {
    for (const Function& fn : kFunctions)
        if (name == fn.name) return fn;
    throw std::invalid_argument(name);
}

void expect_worked(unsigned level) {
    cycbcr_set_cpu(level);
    // 34 pixels a row: the AVX2 kernels' vector part and their plain tail.
    const int w = 34, h = 2;
    for (const Worked& k : kWorked) {
        const Function& fn = function_named(k.function);
        Bytes y(w * h, static_cast<uint8_t>(k.y)), cb(w / 2, static_cast<uint8_t>(k.cb)),
            cr(w / 2, static_cast<uint8_t>(k.cr)), packed(2 * w * h);
        for (size_t i = 0; i < packed.size(); i += 4) {
            const bool uyvy = fn.source == Source::Uyvy;
            packed[i + (uyvy ? 1 : 0)] = packed[i + (uyvy ? 3 : 2)] = static_cast<uint8_t>(k.y);
            packed[i + (uyvy ? 0 : 3)] = static_cast<uint8_t>(k.cb);
            packed[i + (uyvy ? 2 : 1)] = static_cast<uint8_t>(k.cr);
        }
        const Ipp8u* src[3] = {planar(fn) ? y.data() : packed.data(), cb.data(), cr.data()};
        int steps[3] = {planar(fn) ? w : 2 * w, w / 2, w / 2};
        const size_t n = pixel_bytes(fn.layout);
        Bytes out(w * h * n, 0xEE);
        ASSERT_EQ(fn.call(src, steps, out.data(), static_cast<int>(w * n), {w, h}, 0x5A),
                  ippStsNoErr)
            << fn.name;
        for (size_t px = 0; px < static_cast<size_t>(w * h); ++px) {
            const uint8_t* d = &out[px * n];
            const std::array<int, 3> bgr = fn.layout == Layout::Rgb
                                               ? std::array<int, 3>{d[2], d[1], d[0]}
                                               : std::array<int, 3>{d[0], d[1], d[2]};
            ASSERT_EQ(bgr, k.bgr) << fn.name << " Y " << k.y << " Cb " << k.cb << " Cr " << k.cr
                                  << " pixel " << px;
            if (fn.layout == Layout::Bgra) {
                ASSERT_EQ(d[3], 0x5A) << fn.name;
            }
        }
    }
}

TEST(ImagingColour, WorkedValuesPlain) {
    expect_worked(0);
}

TEST(ImagingColour, WorkedValuesAvx2) {
    CYCBCR_REQUIRE_AVX2();
    expect_worked(5);
}

// ---- refusals ----

// Null pointers first (any plane, the destination, the plane and step arrays),
// then the size, then the steps; nothing is written on any refusal.
TEST(ImagingColour, RefusalsInOrderAndWithoutWriting) {
    cycbcr_set_cpu(0);
    for (const Function& fn : kFunctions) {
        const Bytes source = cycbcr_test::random_bytes(256, 3);
        const Bytes start = cycbcr_test::random_bytes(256, 4);
        auto expect_refused = [&](IppStatus want, const std::string& what, auto&& change) {
            Bytes s = source, d = start;
            const Ipp8u* planes[3] = {s.data(), s.data() + 64, s.data() + 128};
            int steps[3] = {planar(fn) ? 8 : 16, 4, 4};
            Ipp8u* dst = d.data();
            int dstStep = 32;
            IppiSize roi{8, 4};
            const Ipp8u** planesArg = planes;
            int* stepsArg = steps;
            change(planes, steps, dst, dstStep, roi, planesArg, stepsArg);
            IppStatus got;
            if (planar(fn)) {
                got = fn.call(planesArg, stepsArg, dst, dstStep, roi, 1);
            } else {
                got = fn.call(planes, steps, dst, dstStep, roi, 1);
            }
            EXPECT_EQ(got, want) << fn.name << ": " << what;
            EXPECT_TRUE(same_bytes(d, start)) << fn.name << ": " << what;
            EXPECT_TRUE(same_bytes(s, source)) << fn.name << ": " << what;
        };
        using P = const Ipp8u**;
        const int planeCount = planar(fn) ? 3 : 1;
        const int minHeight = planar(fn) ? 2 : 1;
        for (int p = 0; p < planeCount; ++p)
            expect_refused(ippStsNullPtrErr, "null plane " + std::to_string(p),
                           [&](P planes, int* steps, Ipp8u*, int&, IppiSize& roi, P&, int*&) {
                               planes[p] = nullptr;
                               roi = {0, 0};  // a bad size and step too: the pointer wins
                               steps[p] = 0;
                           });
        expect_refused(ippStsNullPtrErr, "null destination",
                       [&](P, int*, Ipp8u*& dst, int& dstStep, IppiSize& roi, P&, int*&) {
                           dst = nullptr;
                           dstStep = -1;
                           roi = {1, 0};
                       });
        if (planar(fn)) {
            expect_refused(ippStsNullPtrErr, "null plane array",
                           [&](P, int*, Ipp8u*, int&, IppiSize&, P& arg, int*&) { arg = nullptr; });
            expect_refused(ippStsNullPtrErr, "null step array",
                           [&](P, int*, Ipp8u*, int&, IppiSize&, P&, int*& arg) { arg = nullptr; });
        }
        const IppiSize tooSmall[] = {{1, 4}, {0, 4}, {-2, 4}, {8, minHeight - 1}, {8, -1}, {1, 1}};
        for (const IppiSize bad : tooSmall)
            expect_refused(ippStsSizeErr,
                           "size " + std::to_string(bad.width) + "x" + std::to_string(bad.height),
                           [&](P, int* steps, Ipp8u*, int& dstStep, IppiSize& roi, P&, int*&) {
                               roi = bad;
                               steps[0] = 0;  // a bad step too: the size wins
                               dstStep = 0;
                           });
        for (int slot = 0; slot <= planeCount; ++slot)
            for (int bad : {0, -32})
                expect_refused(ippStsStepErr,
                               "step " + std::to_string(slot) + " = " + std::to_string(bad),
                               [&](P, int* steps, Ipp8u*, int& dstStep, IppiSize&, P&, int*&) {
                                   (slot == planeCount ? dstStep : steps[slot]) = bad;
                               });
    }
}

// The smallest sizes convert: one pair (one row packed, two rows 4:2:0).
TEST(ImagingColour, SmallestSizes) {
    cycbcr_set_cpu(0);
    for (const Function& fn : kFunctions) expect_model(fn, 2, planar(fn) ? 2 : 1, 77);
}

// 4:2:0 sizes with an odd width or height: the even part is converted, the last
// column or row is left as it was, and the warning comes back.
TEST(ImagingColour, OddPlanarSizesWarnAndLeaveTheEdge) {
    cycbcr_set_cpu(0);
    const Ipp8u y[9] = {235, 235, 9, 235, 235, 9, 9, 9, 9}, cb[4] = {128, 1, 1, 1},
                cr[4] = {128, 1, 1, 1};
    const Ipp8u* src[3] = {y, cb, cr};
    int steps[3] = {3, 2, 2};
    const Ipp8u e = 0xEE;
    for (const IppiSize roi : {IppiSize{3, 3}, IppiSize{3, 2}, IppiSize{2, 3}}) {
        std::array<Ipp8u, 36> out;
        out.fill(e);
        EXPECT_EQ(ippiYCbCr420ToBGR_8u_P3C4R(src, steps, out.data(), 12, roi, 7), ippStsDoubleSize);
        const Ipp8u w = 255;
        EXPECT_EQ(out, (std::array<Ipp8u, 36>{w, w, w, 7, w, w, w, 7, e, e, e, e,  //
                                              w, w, w, 7, w, w, w, 7, e, e, e, e,  //
                                              e, e, e, e, e, e, e, e, e, e, e, e}))
            << roi.width << "x" << roi.height;
    }
}

// ---- B, G, R, A to UYVY ----

// A matrix as its decimal weights, in the pixel's byte order B, G, R.
struct Forward {
    double y[3], cb[3], cr[3];
    int yOffset, low, high;
};
const Forward kToBt601{
    {0.098, 0.504, 0.257}, {0.439, -0.291, -0.148}, {-0.071, -0.368, 0.439}, 16, 0, 255};
const Forward kToHdtv709{
    {0.072, 0.715, 0.213}, {0.511, -0.394, -0.117}, {-0.047, -0.464, 0.511}, 0, 1, 254};

using ToUyvyCall = IppStatus (*)(const Ipp8u*, int, Ipp8u*, int, IppiSize);
struct ToUyvy {
    const char* name;
    const Forward* matrix;
    ToUyvyCall call;
};
const ToUyvy kToUyvy[] = {
    {"BGRToCbYCr422_8u_AC4C2R", &kToBt601, ippiBGRToCbYCr422_8u_AC4C2R},
    {"BGRToCbYCr422_709HDTV_8u_AC4C2R", &kToHdtv709, ippiBGRToCbYCr422_709HDTV_8u_AC4C2R},
};

// One pixel's unrounded Q16 sum, offset included.
int64_t forward_sum(const double (&w)[3], const uint8_t* px, int offset) {
    return q16(w[0]) * px[0] + q16(w[1]) * px[1] + q16(w[2]) * px[2] + (int64_t{offset} << 16);
}

// The UYVY frame the rules give: the pairs of each row written, anything else
// (an odd last column, step padding) left as `dst` had it.
Bytes model_uyvy(const Forward& m, const Bytes& src, int srcStep, Bytes dst, int dstStep,
                 IppiSize roi) {
    auto clamp = [&](int64_t v) {
        return static_cast<uint8_t>(std::clamp<int64_t>(v, m.low, m.high));
    };
    for (int r = 0; r < roi.height; ++r)
        for (int i = 0; i < roi.width / 2; ++i) {
            const uint8_t* p0 = &src[static_cast<size_t>(r) * srcStep + 8 * i];
            const uint8_t* p1 = p0 + 4;
            uint8_t* d = &dst[static_cast<size_t>(r) * dstStep + 4 * i];
            d[0] = clamp((forward_sum(m.cb, p0, 128) + forward_sum(m.cb, p1, 128) + 65536) >> 17);
            d[1] = clamp((forward_sum(m.y, p0, m.yOffset) + 32768) >> 16);
            d[2] = clamp((forward_sum(m.cr, p0, 128) + forward_sum(m.cr, p1, 128) + 65536) >> 17);
            d[3] = clamp((forward_sum(m.y, p1, m.yOffset) + 32768) >> 16);
        }
    return dst;
}

// Random frames with padded steps, the source and destination each ending at
// the last byte the call may reach (an odd last column lies beyond it in the
// bottom row). Half the frames take their bytes from 0, 1, 254, 255 and one
// random value, to reach the clamps. Each frame runs twice, the second time
// with every alpha byte changed, and must give the model's bytes both times.
void expect_uyvy_model(const ToUyvy& fn, int width, int height, uint32_t seed) {
    std::mt19937 rng(seed);
    const int srcStep = 4 * width + static_cast<int>(rng() % 9);
    const int dstStep = 2 * width + static_cast<int>(rng() % 9);
    Bytes src = cycbcr_test::random_bytes(static_cast<size_t>(srcStep) * height, rng());
    if (seed % 2) {
        const uint8_t pick[] = {0, 1, 254, 255, static_cast<uint8_t>(rng())};
        for (uint8_t& b : src) b = pick[rng() % 5];
    }
    const Bytes start = cycbcr_test::random_bytes(static_cast<size_t>(dstStep) * height, rng());
    const IppiSize roi{width, height};
    const Bytes want = model_uyvy(*fn.matrix, src, srcStep, start, dstStep, roi);
    const size_t pairs = static_cast<size_t>(width / 2);
    const size_t srcReach = static_cast<size_t>(height - 1) * srcStep + 8 * pairs;
    const size_t dstReach = static_cast<size_t>(height - 1) * dstStep + 4 * pairs;
    for (int pass = 0; pass < 2; ++pass) {
        if (pass == 1)
            for (int r = 0; r < height; ++r)
                for (int x = 0; x < width; ++x) {
                    uint8_t& a = src[static_cast<size_t>(r) * srcStep + 4 * x + 3];
                    a = static_cast<uint8_t>(~a + x);
                }
        GuardedBuffer s(srcReach), d(dstReach);
        std::copy_n(src.begin(), srcReach, s.data());
        std::copy_n(start.begin(), dstReach, d.data());
        EXPECT_EQ(fn.call(s.data(), srcStep, d.data(), dstStep, roi), ippStsNoErr);
        Bytes got = start;
        std::copy_n(d.data(), dstReach, got.begin());
        EXPECT_TRUE(same_bytes(got, want)) << fn.name << " " << width << "x" << height << " pass "
                                           << pass << " steps " << srcStep << ", " << dstStep;
        EXPECT_TRUE(d.slack_intact() && s.slack_intact()) << fn.name;
        EXPECT_TRUE(std::equal(src.begin(), src.begin() + srcReach, s.data())) << fn.name;
    }
}

// Small widths, odd ones too, and widths around the vector kernels' 16 pixels.
void expect_uyvy_model_everywhere(unsigned level) {
    ASSERT_EQ(cycbcr_set_cpu(level), level);
    uint32_t seed = 7000 + 1000 * level;
    std::vector<int> widths;
    for (int w = 2; w <= 40; ++w) widths.push_back(w);
    for (int w : {47, 48, 49, 63, 64, 65, 66, 127, 128, 129, 1920, 1921}) widths.push_back(w);
    for (const ToUyvy& fn : kToUyvy)
        for (int w : widths)
            for (int h = 1; h <= 3; ++h) expect_uyvy_model(fn, w, h, ++seed);
}

TEST(ImagingToUyvy, MatchesModelPlain) {
    expect_uyvy_model_everywhere(0);
}

TEST(ImagingToUyvy, MatchesModelAvx2) {
    CYCBCR_REQUIRE_AVX2();
    EXPECT_NE(cycbcr::avx2::imaging_uyvy_from_bgra_kernel(cycbcr::ipp::Matrix::Bt601), nullptr);
    EXPECT_NE(cycbcr::avx2::imaging_uyvy_from_bgra_kernel(cycbcr::ipp::Matrix::Bt709Hdtv), nullptr);
    expect_uyvy_model_everywhere(5);
}

// 2^23 pixels of well-spread colours (an odd multiplier's top 24 bits), both
// levels against the model: enough pairs to meet the sums that round on an exact
// half, where an error of one in a Q16 sum shows.
TEST(ImagingToUyvy, ManyColours) {
    const int w = 4096, h = 2048;
    Bytes src(static_cast<size_t>(w) * h * 4);
    for (uint32_t n = 0; n < static_cast<uint32_t>(w) * h; ++n) {
        const uint32_t colour = (n * 0x9E3779B1u) >> 8;
        src[4 * n] = static_cast<uint8_t>(colour),
                src[4 * n + 1] = static_cast<uint8_t>(colour >> 8);
        src[4 * n + 2] = static_cast<uint8_t>(colour >> 16),
                    src[4 * n + 3] = static_cast<uint8_t>(n);
    }
    for (const ToUyvy& fn : kToUyvy) {
        const Bytes want =
            model_uyvy(*fn.matrix, src, 4 * w, Bytes(2 * src.size() / 4), 2 * w, {w, h});
        for (unsigned level : {0u, 5u}) {
            if (level == 5 && !cycbcr_test::have_avx2()) continue;
            cycbcr_set_cpu(level);
            Bytes got(want.size());
            ASSERT_EQ(fn.call(src.data(), 4 * w, got.data(), 2 * w, {w, h}), ippStsNoErr);
            EXPECT_TRUE(same_bytes(got, want)) << fn.name << " level " << level;
        }
    }
}

// A pixel pair, as B, G, R, through a function to its Cb, Y0, Cr, Y1, worked
// out by hand.
struct WorkedPair {
    const ToUyvy* fn;
    std::array<uint8_t, 3> p0, p1;
    std::array<uint8_t, 4> uyvy;
};
// 709HDTV white: Y (13959 + 46858 + 4719) * 255 = 255 << 16 -> 255, clamped to
//   254; chroma weights sum to 0, so Cb = Cr = (2 * (128 << 16) + 65536) >> 17 =
//   128. Black: Y 0 -> 1.
// 709HDTV blue: Y (4719 * 255 + 32768) >> 16 = 18; one pixel's Cb sum is
//   33489 * 255 + (128 << 16) = 16928303, the pair's (2 * 16928303 + 65536) >> 17
//   = 258 -> 254; Cr sum -3080 * 255 + 8388608 = 7603208, pair 116.
// 709HDTV yellow: Cb sum (-7668 - 25821) * 255 + 8388608 = -151087, pair
//   (-302174 + 65536) >> 17 = -2 -> 1; Y ((46858 + 13959) * 255 + 32768) >> 16 =
//   237; Cr sum (33489 - 30409) * 255 + 8388608 = 9174008, pair 140.
// BT.601 blue: Y (6423 * 255 + (16 << 16) + 32768) >> 16 = 41; Cb sum
//   28770 * 255 + 8388608 = 15724958, pair 240; Cr sum -4653 * 255 + 8388608 =
//   7202093, pair 110.
// BT.601 black then B 11: Cb sums 8388608 and 8705078, pair
//   (17093686 + 65536) >> 17 = 130, where rounding each pixel first (128 and 133)
//   would give 131 with halves up, as would averaging B first (6); Y 16 and
//   (70653 + 1048576 + 32768) >> 16 = 17; Cr (8388608 + 8337425 + 65536) >> 17 =
//   128.
// BT.601 G 2 then black: Cb sums 8350466 and 8388608, pair 128, where pixel
//   rounding (127 and 128) would give 127 with halves down; Y (66060 + 1081344)
//   >> 16 = 17 and 16; Cr sum 8340374, pair 128.
// Exact halves, which round up. 709HDTV B 76, R 255 then black: Cb sums
//   33489 * 76 - 7668 * 255 + 8388608 = 8978432 and 8388608, pair
//   (17367040 + 65536) >> 17 = 133 exactly; Y (4719 * 76 + 13959 * 255 + 32768)
//   >> 16 = 60 and 0 -> 1; Cr (-3080 * 76 + 33489 * 255 + 16777216 + 65536) >>
//   17 = 191.
// BT.601 G 62, R 36 then G 9, R 169: Y (33030 * 62 + 16843 * 36 + (16 << 16) +
//   32768) >> 16 = 3735552 >> 16 = 57 exactly, and 4225081 >> 16 = 64; Cb
//   (-19071 * 71 - 9699 * 205 + 16777216 + 65536) >> 17 = 13500416 >> 17 = 103
//   exactly; Cr (-24117 * 71 + 28770 * 205 + 16842752) >> 17 = 160.
const WorkedPair kWorkedPairs[] = {
    {&kToUyvy[1], {255, 255, 255}, {255, 255, 255}, {128, 254, 128, 254}},
    {&kToUyvy[1], {0, 0, 0}, {0, 0, 0}, {128, 1, 128, 1}},
    {&kToUyvy[1], {255, 0, 0}, {255, 0, 0}, {254, 18, 116, 18}},
    {&kToUyvy[1], {0, 255, 255}, {0, 255, 255}, {1, 237, 140, 237}},
    {&kToUyvy[0], {255, 0, 0}, {255, 0, 0}, {240, 41, 110, 41}},
    {&kToUyvy[0], {0, 0, 0}, {11, 0, 0}, {130, 16, 128, 17}},
    {&kToUyvy[0], {0, 2, 0}, {0, 0, 0}, {128, 17, 128, 16}},
    {&kToUyvy[1], {76, 0, 255}, {0, 0, 0}, {133, 60, 191, 1}},
    {&kToUyvy[0], {0, 62, 36}, {0, 9, 169}, {103, 57, 160, 64}},
};

// Each pair repeated along a row of 35 pixels (the AVX2 kernel's vectors and
// its plain tail), the source ending at pixel 34 so that reading the odd last
// column faults, and that column's destination bytes left alone.
void expect_worked_pairs(unsigned level) {
    cycbcr_set_cpu(level);
    const int w = 35;
    for (const WorkedPair& k : kWorkedPairs) {
        GuardedBuffer src(4 * (w - 1));
        for (int x = 0; x < w - 1; ++x) {
            const auto& p = x % 2 ? k.p1 : k.p0;
            std::copy(p.begin(), p.end(), src.data() + 4 * x);
            src.data()[4 * x + 3] = static_cast<uint8_t>(x * 37);
        }
        Bytes out(2 * w, 0xEE);
        ASSERT_EQ(k.fn->call(src.data(), 4 * w, out.data(), 2 * w, {w, 1}), ippStsNoErr);
        for (int i = 0; i < w / 2; ++i)
            ASSERT_TRUE(std::equal(k.uyvy.begin(), k.uyvy.end(), &out[4 * i]))
                << k.fn->name << " pair " << i << ": " << int{out[4 * i]} << " "
                << int{out[4 * i + 1]} << " " << int{out[4 * i + 2]} << " " << int{out[4 * i + 3]};
        EXPECT_EQ(out[2 * w - 2], 0xEE);
        EXPECT_EQ(out[2 * w - 1], 0xEE);
    }
}

TEST(ImagingToUyvy, WorkedPairsPlain) {
    expect_worked_pairs(0);
}

TEST(ImagingToUyvy, WorkedPairsAvx2) {
    CYCBCR_REQUIRE_AVX2();
    expect_worked_pairs(5);
}

// Pointers, then size, then steps; nothing written on any refusal.
TEST(ImagingToUyvy, RefusalsInOrderAndWithoutWriting) {
    cycbcr_set_cpu(0);
    const Bytes src = cycbcr_test::random_bytes(64, 5), start = cycbcr_test::random_bytes(32, 6);
    struct Case {
        IppStatus want;
        bool nullSrc, nullDst;
        IppiSize roi;
        int srcStep, dstStep;
    };
    const Case cases[] = {
        {ippStsNullPtrErr, true, false, {0, 0}, 0, 0},  // the pointer comes first
        {ippStsNullPtrErr, false, true, {1, 1}, -8, 0},
        {ippStsSizeErr, false, false, {1, 2}, 0, 0},  // then the size
        {ippStsSizeErr, false, false, {0, 2}, 16, 8},
        {ippStsSizeErr, false, false, {4, 0}, 0, 8},
        {ippStsSizeErr, false, false, {4, -1}, 16, 8},
        {ippStsStepErr, false, false, {4, 2}, 0, 8},
        {ippStsStepErr, false, false, {4, 2}, 16, 0},
        {ippStsStepErr, false, false, {4, 2}, -16, 8},
        {ippStsStepErr, false, false, {4, 2}, 16, -8},
    };
    for (const ToUyvy& fn : kToUyvy)
        for (const Case& c : cases) {
            Bytes s = src, d = start;
            EXPECT_EQ(fn.call(c.nullSrc ? nullptr : s.data(), c.srcStep,
                              c.nullDst ? nullptr : d.data(), c.dstStep, c.roi),
                      c.want)
                << fn.name << " " << c.roi.width << "x" << c.roi.height << " steps " << c.srcStep
                << ", " << c.dstStep;
            EXPECT_TRUE(same_bytes(d, start)) << fn.name;
            EXPECT_TRUE(same_bytes(s, src)) << fn.name;
        }
}

// ---- channel swaps ----

template <int N>
IppStatus swap(Ipp8u* buf, int step, IppiSize roi, const int* order) {
    if constexpr (N == 3)
        return ippiSwapChannels_8u_C3IR(buf, step, roi, order);
    else
        return ippiSwapChannels_8u_C4IR(buf, step, roi, order);
}

TEST(ImagingColour, SwapChannelsByHand) {
    {
        Bytes px = {1, 2, 3, 4, 5, 6, 99};
        const int order[3] = {2, 1, 0};
        EXPECT_EQ(ippiSwapChannels_8u_C3IR(px.data(), 7, {2, 1}, order), ippStsNoErr);
        EXPECT_EQ(px, (Bytes{3, 2, 1, 6, 5, 4, 99}));
    }
    {
        // A rotation: every channel of a pixel is read before any is written.
        Bytes px = {1, 2, 3, 4, 5, 6};
        const int order[3] = {1, 2, 0};
        EXPECT_EQ(ippiSwapChannels_8u_C3IR(px.data(), 6, {2, 1}, order), ippStsNoErr);
        EXPECT_EQ(px, (Bytes{2, 3, 1, 5, 6, 4}));
    }
    {
        Bytes px = {10, 20, 30, 40, 50, 60, 70, 80, 1, 2};
        const int order[4] = {2, 1, 0, 3};
        EXPECT_EQ(ippiSwapChannels_8u_C4IR(px.data(), 10, {2, 1}, order), ippStsNoErr);
        EXPECT_EQ(px, (Bytes{30, 20, 10, 40, 70, 60, 50, 80, 1, 2}));
    }
    {
        Bytes px = {10, 20, 30, 40};
        const int order[4] = {3, 0, 1, 2};
        EXPECT_EQ(ippiSwapChannels_8u_C4IR(px.data(), 4, {1, 1}, order), ippStsNoErr);
        EXPECT_EQ(px, (Bytes{40, 10, 20, 30}));
    }
    {
        Bytes px = {10, 20, 30, 40, 50, 60};
        const int identity[3] = {0, 1, 2};
        EXPECT_EQ(ippiSwapChannels_8u_C3IR(px.data(), 6, {2, 1}, identity), ippStsNoErr);
        EXPECT_EQ(px, (Bytes{10, 20, 30, 40, 50, 60}));
    }
    {
        // Repeated channels are allowed.
        Bytes px = {10, 20, 30, 40};
        const int order[4] = {0, 0, 3, 3};
        EXPECT_EQ(ippiSwapChannels_8u_C4IR(px.data(), 4, {1, 1}, order), ippStsNoErr);
        EXPECT_EQ(px, (Bytes{10, 10, 40, 40}));
    }
}

// Every order over random frames with padded steps: each pixel rebuilt from a
// copy of the frame taken before the call; padding untouched.
template <int N>
void expect_swaps_match_model() {
    std::mt19937 rng(N);
    int order[N];
    for (int code = 0; code < (N == 3 ? 27 : 256); ++code) {
        for (int i = 0, c = code; i < N; ++i, c /= N) order[i] = c % N;
        const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 4);
        const int step = w * N + static_cast<int>(rng() % 5);
        const Bytes before = cycbcr_test::random_bytes(static_cast<size_t>(step) * h, rng());
        Bytes want = before;
        for (int r = 0; r < h; ++r)
            for (int x = 0; x < w; ++x)
                for (int i = 0; i < N; ++i)
                    want[r * step + x * N + i] = before[r * step + x * N + order[i]];
        GuardedBuffer buf(before.size() - (step - w * N));  // ends at the last pixel
        std::copy_n(before.begin(), buf.size(), buf.data());
        EXPECT_EQ(swap<N>(buf.data(), step, {w, h}, order), ippStsNoErr);
        Bytes got = before;
        std::copy_n(buf.data(), buf.size(), got.begin());
        EXPECT_TRUE(same_bytes(got, want)) << N << " channels, order code " << code;
        EXPECT_TRUE(buf.slack_intact());
    }
}

TEST(ImagingColour, SwapChannelsMatchModel) {
    expect_swaps_match_model<3>();
    expect_swaps_match_model<4>();
}

// Null pointers, then size, then step, then the order; nothing written.
template <int N>
void expect_swap_refusals() {
    const Bytes start = cycbcr_test::random_bytes(64, N);
    auto expect_refused = [&](IppStatus want, const char* what, bool nullBuf, IppiSize roi,
                              int step, std::array<int, N> order, bool nullOrder) {
        Bytes b = start;
        EXPECT_EQ(
            swap<N>(nullBuf ? nullptr : b.data(), step, roi, nullOrder ? nullptr : order.data()),
            want)
            << N << " channels: " << what;
        EXPECT_TRUE(same_bytes(b, start)) << N << " channels: " << what;
    };
    std::array<int, N> good, high, negative;
    for (int i = 0; i < N; ++i) good[i] = high[i] = negative[i] = N - 1 - i;
    high[1] = N;
    negative[N - 1] = -1;
    expect_refused(ippStsNullPtrErr, "null buffer", true, {0, 0}, 0, high, false);
    expect_refused(ippStsNullPtrErr, "null order", false, {0, 0}, 0, good, true);
    expect_refused(ippStsSizeErr, "zero width", false, {0, 2}, 0, high, false);
    expect_refused(ippStsSizeErr, "zero height", false, {2, 0}, -4, high, false);
    expect_refused(ippStsSizeErr, "negative width", false, {-1, 2}, 16, good, false);
    expect_refused(ippStsStepErr, "zero step", false, {2, 2}, 0, high, false);
    expect_refused(ippStsStepErr, "negative step", false, {2, 2}, -16, negative, false);
    expect_refused(ippStsChannelOrderErr, "order entry too high", false, {2, 2}, 16, high, false);
    expect_refused(ippStsChannelOrderErr, "negative order entry", false, {2, 2}, 16, negative,
                   false);
}

TEST(ImagingColour, SwapChannelsRefusals) {
    expect_swap_refusals<3>();
    expect_swap_refusals<4>();
}

}  // namespace
