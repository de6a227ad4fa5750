// Every converter family from eight threads at once, each thread on frames of
// its own, in a process whose processor level is still unchosen: the first
// calls race to choose it, and again at the start of each of ten rounds of
// calls, which the test begins with the level unchosen. Run as
// `concurrency_test <family>`, one family a process (the feature bits, and
// with them the processor case a family runs on, are read once per process,
// and only a fresh process's first calls also race the feature detection), or
// `concurrency_test level_hold` for the one converter that changes the level
// for the length of its call. Built with ThreadSanitizer this is the library's
// data-race check; without it, a check that concurrent results are the
// single-threaded ones.
//
// Each call converts a frame refilled from a fixed pattern (destination bytes
// included, so bytes a converter leaves alone are compared too) and records
// its return value and a digest of every buffer it was given. Once the threads
// have joined, the main thread converts each case on its own and every
// recorded call must match.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "cycbcr.h"
#include "frame/converters.h"
#include "frame/formats.h"

namespace {

using cycbcr::Format;

constexpr int kThreads = 8;
constexpr int kCallsPerThread = 1000;
// Rounds of calls, each starting with the level unchosen.
constexpr int kRounds = 10;
static_assert(kCallsPerThread % kRounds == 0);
constexpr uint32_t kLevelUnset = 0xFFFFFFFEu;
// Bytes past every buffer's queried size, filled and digested like the rest.
constexpr uint64_t kSlack = 64;

int g_failures = 0;

void fail(const std::string& what) {
    ++g_failures;
    if (g_failures <= 20) std::fprintf(stderr, "FAIL: %s\n", what.c_str());
}

bool have_avx2() {
    return (cycbcr_cpu_flags() & 0x800000u) != 0;
}

// One conversion with everything bound but its buffers, given in the
// converter's pointer-argument order.
struct Case {
    std::string name;  // converter and geometry, for messages
    std::vector<uint64_t> bytes;
    std::function<uint64_t(uint8_t* const* p)> call;
};

// Deterministic bytes for a buffer of a case.
void fill_pattern(std::vector<uint8_t>& v, uint32_t seed) {
    uint32_t x = seed * 2654435761u + 0x9E3779B9u;
    for (uint8_t& b : v) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        b = static_cast<uint8_t>(x >> 7);
    }
}

uint32_t name_seed(const std::string& s) {
    uint32_t h = 2166136261u;
    for (char c : s) h = (h ^ static_cast<uint8_t>(c)) * 16777619u;
    return h;
}

uint64_t digest(const std::vector<std::vector<uint8_t>>& bufs) {
    uint64_t h = 14695981039346656037ull;
    for (const std::vector<uint8_t>& b : bufs) {
        size_t i = 0;
        for (; i + 8 <= b.size(); i += 8) {
            uint64_t w;
            std::memcpy(&w, b.data() + i, 8);
            h = (h ^ w) * 1099511628211ull;
        }
        for (; i < b.size(); ++i) h = (h ^ b[i]) * 1099511628211ull;
        h = (h ^ b.size()) * 1099511628211ull;
    }
    return h;
}

// A case's buffers as one thread has them: the pattern every call starts from
// (each thread its own, so that threads sharing some scratch state would mix
// different pictures).
struct Frames {
    const Case* c;
    std::vector<std::vector<uint8_t>> pristine;
};

Frames make_frames(const Case& c, int thread) {
    Frames f{&c, {}};
    const uint32_t seed = name_seed(c.name) + 0x1000u * static_cast<uint32_t>(thread);
    for (size_t i = 0; i < c.bytes.size(); ++i) {
        f.pristine.emplace_back(c.bytes[i] + kSlack);
        fill_pattern(f.pristine.back(), seed + static_cast<uint32_t>(i));
    }
    return f;
}

struct Result {
    uint64_t value;
    uint64_t digest;
    bool operator==(const Result&) const = default;
};

Result run_once(const Frames& f, std::vector<std::vector<uint8_t>>& work) {
    std::vector<uint8_t*> p;
    for (size_t i = 0; i < f.pristine.size(); ++i) {
        std::copy(f.pristine[i].begin(), f.pristine[i].end(), work[i].begin());
        p.push_back(work[i].data());
    }
    const uint64_t value = f.c->call(p.data());
    return {value, digest(work)};
}

// ---------------------------------------------------------------------------
// Buffer sizes, from the library's query.

std::vector<uint64_t> two_sizes(const char* name, uint32_t w, uint32_t h, uint32_t dp, uint32_t sp,
                                uint32_t matrix = 0, uint32_t type = 0) {
    uint64_t d = 0, s = 0;
    if (cycbcr_converter_buffer_sizes(name, w, h, dp, sp, matrix, type, &d, &s) == 0)
        fail(std::string("the buffer-size query does not know ") + name);
    return {d, s};
}

std::vector<uint64_t> plane_sizes(const char* name, uint32_t w, uint32_t h,
                                  std::vector<unsigned int> args, size_t pointers) {
    uint64_t b[6] = {};
    if (cycbcr_converter_all_pointer_sizes(name, w, h, args.data(),
                                           static_cast<unsigned int>(args.size()), b, 6) == 0)
        fail(std::string("the pointer-size query does not know ") + name);
    return std::vector<uint64_t>(b, b + pointers);
}

std::string label(const char* name, uint32_t w, uint32_t h) {
    return std::string(name) + " " + std::to_string(w) + "x" + std::to_string(h);
}

// ---------------------------------------------------------------------------
// Frame geometry: a few small frames per converter, rows at the format's
// natural size or padded.

struct Geo {
    uint32_t w, h;
    uint32_t pad;  // bytes added to each natural pitch
};
constexpr Geo kGeos[] = {{64, 8, 0}, {198, 16, 32}};

uint32_t natural_pitch(Format f, uint32_t w) {
    const cycbcr::FormatInfo& i = cycbcr::info(f);
    switch (i.arrangement) {
        case cycbcr::Arrangement::V210:
            return v210_row_bytes(w);
        case cycbcr::Arrangement::Packed422:
            return 2 * w;
        default:
            return w * i.sample_bytes;
    }
}

template <class Pred>
void add_rows(std::vector<Case>& out, Pred pred) {
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows) {
        if (!pred(r)) continue;
        if (std::string_view(r.name).ends_with("_avx2") && !have_avx2()) continue;
        for (const Geo& g : kGeos) {
            const uint32_t dp = natural_pitch(r.to, g.w) + g.pad;
            const uint32_t sp = natural_pitch(r.from, g.w) + g.pad;
            const cycbcr_converter fn = r.fn;
            const uint32_t w = g.w, h = g.h;
            out.push_back(
                {label(r.name, w, h), two_sizes(r.name, w, h, dp, sp),
                 [=](uint8_t* const* p) { return uint64_t{fn(p[0], p[1], w, h, dp, sp)}; }});
        }
    }
}

// Matrix and RGB type per geometry, so each converter meets two of them.
constexpr uint32_t kMatrices[] = {QBYCBCR_MATRIX_709, QBYCBCR_MATRIX_601_STUDIO};
constexpr uint32_t kRgbTypes[] = {QBYCBCR_RGB_BGRA, QBYCBCR_RGB_RGBA | QBYCBCR_RGB_BOTTOM_UP};

template <class Rows, class Pred>
void add_rgb_rows(std::vector<Case>& out, const Rows& rows, Pred pred) {
    for (const auto& r : rows) {
        if (!pred(r)) continue;
        if (std::string_view(r.name).ends_with("_avx2") && !have_avx2()) continue;
        for (size_t k = 0; k < std::size(kGeos); ++k) {
            const Geo& g = kGeos[k];
            const uint32_t dp = natural_pitch(r.to, g.w) + g.pad;
            const uint32_t sp = natural_pitch(r.from, g.w) + g.pad;
            const uint32_t m = kMatrices[k], t = kRgbTypes[k], w = g.w, h = g.h;
            const auto fn = r.fn;
            out.push_back(
                {label(r.name, w, h), two_sizes(r.name, w, h, dp, sp, m, t),
                 [=](uint8_t* const* p) { return uint64_t{fn(p[0], p[1], w, h, dp, sp, m, t)}; }});
        }
    }
}

bool is_8bit_ycbcr(Format f) {
    const cycbcr::Arrangement a = cycbcr::info(f).arrangement;
    return a == cycbcr::Arrangement::Packed422 ||
           (a == cycbcr::Arrangement::Planar && cycbcr::info(f).bits == 8);
}

// ---------------------------------------------------------------------------
// Converters with separate plane pointers.

// (dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch)
using ToPacked = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                  unsigned int, unsigned int, unsigned int, unsigned int);
// (dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch)
using ToPlanes = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                  unsigned int, unsigned int, unsigned int);

struct Named4 {
    const char* name;
    ToPacked fn;
    bool avx2;
};

void add_to_packed(std::vector<Case>& out, const Named4& n, uint32_t w, uint32_t h, uint32_t dp,
                   uint32_t sp) {
    if (n.avx2 && !have_avx2()) return;
    const ToPacked fn = n.fn;
    out.push_back(
        {label(n.name, w, h), plane_sizes(n.name, w, h, {dp, sp}, 4),
         [=](uint8_t* const* p) { return uint64_t{fn(p[0], p[1], p[2], p[3], w, h, dp, sp)}; }});
}

void add_to_planes(std::vector<Case>& out, const char* name, ToPlanes fn, bool avx2, uint32_t w,
                   uint32_t h, uint32_t dp, uint32_t sp) {
    if (avx2 && !have_avx2()) return;
    out.push_back({label(name, w, h), plane_sizes(name, w, h, {dp, sp}, 4), [=](uint8_t* const* p) {
                       return uint64_t{fn(p[0], p[1], p[2], p[3], w, h, dp, sp)};
                   }});
}

// clang-format off
#define CYCBCR_N4(name, avx2) Named4{#name, name, avx2}
// clang-format on

// A band's body run on the calling thread, as a band of a caller's frame.
template <unsigned int (*Worker)(void*)>
void add_worker(std::vector<Case>& out, const char* internal, const char* name, uint32_t w,
                uint32_t h, uint32_t dp, uint32_t sp) {
    out.push_back(
        {label(name, w, h), plane_sizes(internal, w, h, {dp, sp}, 4), [=](uint8_t* const* p) {
             volatile int32_t pending = 1;
             band_job job{p[0], p[1], p[2], p[3], w, h, dp, sp, &pending, nullptr};
             const uint64_t n = Worker(&job);
             // The band dropped the one reference it held.
             return n | uint64_t{static_cast<uint32_t>(pending)} << 32;
         }});
}

// ---------------------------------------------------------------------------
// The families.

std::vector<Case> byte_order() {
    std::vector<Case> out;
    add_rows(out, [](const cycbcr::ConverterRow& r) {
        return cycbcr::is_packed422(r.from) && cycbcr::is_packed422(r.to);
    });
    // The bare copy and the in-place flip.
    for (const Geo& g : kGeos) {
        const uint32_t w = g.w, h = g.h, dp = 2 * w + g.pad, sp = 2 * w + 2 * g.pad;
        out.push_back({label("cycbcr_interleaved_copy", w, h),
                       // min(dp, sp) bytes a row: whole pitches hold it.
                       std::vector<uint64_t>{uint64_t{h} * dp, uint64_t{h} * sp},
                       [=](uint8_t* const* p) {
                           return uint64_t{cycbcr_interleaved_copy(p[0], p[1], w, h, dp, sp)};
                       }});
        out.push_back({label("cycbcr_invert", w, h), {uint64_t{h} * dp}, [=](uint8_t* const* p) {
                           cycbcr_invert(p[0], dp, h);
                           return uint64_t{0};
                       }});
    }
    return out;
}

std::vector<Case> packed_planar() {
    std::vector<Case> out;
    add_rows(out, [](const cycbcr::ConverterRow& r) {
        return cycbcr::is_packed422(r.from) != cycbcr::is_packed422(r.to) &&
               is_8bit_ycbcr(r.from) && is_8bit_ycbcr(r.to);
    });
    return out;
}

std::vector<Case> planar_planar() {
    std::vector<Case> out;
    add_rows(out, [](const cycbcr::ConverterRow& r) {
        return cycbcr::is_planar8(r.from) && cycbcr::is_planar8(r.to);
    });
    return out;
}

std::vector<Case> v210_8bit() {
    std::vector<Case> out;
    add_rows(out, [](const cycbcr::ConverterRow& r) {
        return r.from == Format::V210 || r.to == Format::V210;
    });
    // Semi-planar sources into v210 are in the semi-planar family.
    std::erase_if(out, [](const Case& c) { return c.name.starts_with("cycbcr_NV"); });
    return out;
}

std::vector<Case> v210_rgb() {
    std::vector<Case> out;
    add_rgb_rows(out, cycbcr::kRgbConverterRows,
                 [](const cycbcr::RgbConverterRow& r) { return r.from == Format::V210; });
    add_rgb_rows(out, cycbcr::kFromRgbConverterRows,
                 [](const cycbcr::FromRgbConverterRow& r) { return r.to == Format::V210; });
    // 10-bit RGB words, and 16-bit RGB at 48 and 64 bits a pixel.
    for (size_t k = 0; k < std::size(kGeos); ++k) {
        const Geo& g = kGeos[k];
        const uint32_t w = g.w, h = g.h, m = kMatrices[k], t = kRgbTypes[k];
        const uint32_t dp = v210_row_bytes(w) + g.pad;
        out.push_back({label("cycbcr_RGB10_to_012v", w, h),
                       two_sizes("cycbcr_RGB10_to_012v", w, h, dp, 4 * w + g.pad, m, t),
                       [=](uint8_t* const* p) {
                           return cycbcr_RGB10_to_012v(p[0], p[1], w, h, dp, 4 * w + g.pad, m, t);
                       }});
        // The 10-bit key plane out of 32-bit RGB, and v210 with its key into RGB.
        const uint8_t options = static_cast<uint8_t>(k);
        out.push_back(
            {label("cycbcr_RGB32_to_012v_Alpha", w, h),
             two_sizes("cycbcr_RGB32_to_012v_Alpha", w, h, 0, 4 * w, m, t), [=](uint8_t* const* p) {
                 return cycbcr_RGB32_to_012v_Alpha(p[0], p[1], w, h, 0, 4 * w, options, t);
             }});
        {
            const uint32_t rp = 4 * w + g.pad;
            std::vector<uint64_t> sizes =
                two_sizes("cycbcr_012v_to_rgb32_Alpha", w, h, rp, dp, m, t);
            sizes.push_back(uint64_t{h - 1} * w * 4 / 3 + uint64_t{(w + 2) / 3} * 4);
            out.push_back(
                {label("cycbcr_012v_to_rgb32_Alpha", w, h), sizes, [=](uint8_t* const* p) {
                     return uint64_t{
                         cycbcr_012v_to_rgb32_Alpha(p[0], p[1], p[2], w, h, rp, dp, m, t)};
                 }});
        }
        for (const uint32_t bpp : {48u, 64u}) {
            const uint32_t sp = w * bpp / 8 + g.pad;
            out.push_back({label("cycbcr_RGB64_to_012v", w, h) + " " + std::to_string(bpp),
                           two_sizes("cycbcr_RGB64_to_012v", w, h, dp, sp, m, t),
                           [=](uint8_t* const* p) {
                               return cycbcr_RGB64_to_012v(p[0], p[1], w, h, dp, sp, m, t, bpp);
                           }});
        }
    }
    return out;
}

std::vector<Case> ycbcr8_rgb() {
    std::vector<Case> out;
    add_rgb_rows(out, cycbcr::kRgbConverterRows,
                 [](const cycbcr::RgbConverterRow& r) { return r.from != Format::V210; });
    // UYVY with an alpha plane (one byte a pixel, rows width bytes apart).
    for (size_t k = 0; k < std::size(kGeos); ++k) {
        const Geo& g = kGeos[k];
        const uint32_t w = g.w, h = g.h, m = kMatrices[k], t = kRgbTypes[k];
        const uint32_t dp = 4 * w + g.pad, sp = 2 * w + g.pad;
        using Alpha = decltype(&cycbcr_uyvy_to_rgb32_Alpha);
        struct A {
            const char* name;
            Alpha fn;
        };
        for (const A& a : {A{"cycbcr_uyvy_to_rgb32_Alpha", cycbcr_uyvy_to_rgb32_Alpha},
                           A{"cycbcr_uyvy_to_rgb32_alpha_avx2", cycbcr_uyvy_to_rgb32_alpha_avx2}}) {
            if (a.fn == cycbcr_uyvy_to_rgb32_alpha_avx2 && !have_avx2()) continue;
            std::vector<uint64_t> sizes = two_sizes(a.name, w, h, dp, sp, m, t);
            sizes.push_back(uint64_t{w} * h + 1);
            const Alpha fn = a.fn;
            out.push_back({label(a.name, w, h), sizes, [=](uint8_t* const* p) {
                               return uint64_t{fn(p[0], p[1], p[2], w, h, dp, sp, m, t)};
                           }});
        }
    }
    // Three RGB planes from 8-bit planar 4:2:0 and packed 4:2:2 samples.
    for (const Geo& g : kGeos) {
        const uint32_t w = g.w, h = g.h, dp = w + g.pad;
        for (const uint32_t planar : {1u, 0u}) {
            const uint32_t sp = planar ? w : 2 * w;
            const std::vector<unsigned int> args{dp, sp, 2, 0, 0, planar, w / 2};
            auto add = [&](const char* name, auto fn, uint32_t scale) {
                const uint32_t dpv = dp * scale;
                std::vector<unsigned int> a = args;
                a[0] = dpv;
                out.push_back({label(name, w, h) + (planar ? " planar" : " packed"),
                               plane_sizes(name, w, h, a, 6), [=](uint8_t* const* p) {
                                   return uint64_t{fn(p[0], p[1], p[2], p[3], p[4], p[5], w, h, dpv,
                                                      sp, 2, 0, 0, planar, w / 2)};
                               }});
            };
            add("cycbcr_ToRGBPlanarInt", cycbcr_ToRGBPlanarInt, 1);
            add("cycbcr_ToRGBPlanarInt16", cycbcr_ToRGBPlanarInt16, 2);
            add("cycbcr_ToRGBPlanarFloat", cycbcr_ToRGBPlanarFloat, 4);
        }
    }
    return out;
}

std::vector<Case> rgb_ycbcr8() {
    std::vector<Case> out;
    add_rgb_rows(out, cycbcr::kFromRgbConverterRows,
                 [](const cycbcr::FromRgbConverterRow& r) { return r.to != Format::V210; });
    for (size_t k = 0; k < std::size(kGeos); ++k) {
        const Geo& g = kGeos[k];
        const uint32_t w = g.w, h = g.h, m = kMatrices[k], t = kRgbTypes[k];
        const uint32_t dp = 2 * w + g.pad;
        // 16-bit RGB at 48 and 64 bits a pixel, and the alpha plane of a UYVY frame.
        for (const uint32_t bpp : {48u, 64u}) {
            const uint32_t sp = w * bpp / 8 + g.pad;
            out.push_back({label("cycbcr_RGB64_to_uyvy", w, h) + " " + std::to_string(bpp),
                           two_sizes("cycbcr_RGB64_to_uyvy", w, h, dp, sp, m, t),
                           [=](uint8_t* const* p) {
                               return cycbcr_RGB64_to_uyvy(p[0], p[1], w, h, dp, sp, m, t, bpp);
                           }});
        }
        const uint8_t options = static_cast<uint8_t>(k);
        out.push_back(
            {label("cycbcr_RGB32_to_uyvy_Alpha", w, h),
             two_sizes("cycbcr_RGB32_to_uyvy_Alpha", w, h, w, 4 * w, m, t), [=](uint8_t* const* p) {
                 return cycbcr_RGB32_to_uyvy_Alpha(p[0], p[1], w, h, w, 4 * w, options, t);
             }});
    }
    for (const Geo& g : kGeos) {
        const uint32_t w = g.w, h = g.h;
        for (const int is422 : {0, 1}) {
            const uint32_t yp = w + g.pad, cp = w / 2 + g.pad, sp = 4 * w;
            const char* name = "cycbcr_RGB32_to_planar";
            out.push_back({label(name, w, h) + (is422 ? " 422" : " 420"),
                           // The query does not answer this name: whole pitches for
                           // every row of every plane hold it.
                           std::vector<uint64_t>{uint64_t{h} * yp, uint64_t{h} * cp,
                                                 uint64_t{h} * cp, uint64_t{h} * sp},
                           [=](uint8_t* const* p) {
                               return cycbcr_RGB32_to_planar(p[0], p[1], p[2], p[3], w, h, yp, cp,
                                                             is422, sp, 2, 0);
                           }});
        }
    }
    return out;
}

// High-bit-depth planar to and from v210 and UYVY, below the band thresholds.
// cycbcr_yuv420p16_to_012v and its _avx2 form are not here: at level 5 they
// set the process-wide level to 0 for the length of each call (level_hold).
std::vector<Case> hbd_planar() {
    const bool a = have_avx2();
    std::vector<Case> out;
    const Named4 toV210[] = {
        CYCBCR_N4(cycbcr_yuv422p10_to_012v, false),
        CYCBCR_N4(cycbcr_yuv422p12_to_012v, false),
        CYCBCR_N4(cycbcr_yuv422p16_to_012v, false),
        CYCBCR_N4(cycbcr_yuv444p10_to_012v, false),
        CYCBCR_N4(cycbcr_yuv444p12_to_012v, false),
        CYCBCR_N4(cycbcr_yuv420p10_to_012v, false),
        CYCBCR_N4(cycbcr_yuv422p10_to_012v_avx2, true),
        CYCBCR_N4(cycbcr_yuv422p12_to_012v_avx2, true),
        CYCBCR_N4(cycbcr_yuv422p16_to_012v_avx2, true),
        CYCBCR_N4(cycbcr_yuv444p10_to_012v_avx2, true),
        CYCBCR_N4(cycbcr_yuv444p12_to_012v_avx2, true),
        CYCBCR_N4(cycbcr_yuv420p10_to_012v_avx2, true),
        CYCBCR_N4(cycbcr_yuv422p10_to_012v_internal, false),
        CYCBCR_N4(cycbcr_yuv422p12_to_012v_internal, false),
        CYCBCR_N4(cycbcr_yuv444p12_to_012v_internal, false),
    };
    const Named4 toUyvy[] = {
        CYCBCR_N4(cycbcr_yuv422p10_to_uyvy, false),
        CYCBCR_N4(cycbcr_yuv420p10_to_uyvy, false),
        CYCBCR_N4(cycbcr_yuv420p16_to_uyvy, false),
        CYCBCR_N4(cycbcr_yuv422p10_to_uyvy_avx2, true),
        CYCBCR_N4(cycbcr_yuv420p10_to_uyvy_avx2, true),
        CYCBCR_N4(cycbcr_yuv420p16_to_uyvy_avx2, true),
        CYCBCR_N4(cycbcr_yuv422p10_to_uyvy_internal, false),
    };
    for (const Geo& g : kGeos) {
        const uint32_t sp = 2 * g.w + g.pad;
        for (const Named4& n : toV210)
            add_to_packed(out, n, g.w, g.h, v210_row_bytes(g.w) + g.pad, sp);
        for (const Named4& n : toUyvy) add_to_packed(out, n, g.w, g.h, 2 * g.w + g.pad, sp);
        const uint32_t vp = v210_row_bytes(g.w) + g.pad, dp = 2 * g.w + g.pad;
        add_to_planes(out, "cycbcr_012v_to_yuv422p10", cycbcr_012v_to_yuv422p10, false, g.w, g.h,
                      dp, vp);
        add_to_planes(out, "cycbcr_012v_to_yuv422p16", cycbcr_012v_to_yuv422p16, false, g.w, g.h,
                      dp, vp);
        add_to_planes(out, "cycbcr_012v_to_yuv444p10", cycbcr_012v_to_yuv444p10, false, g.w, g.h,
                      dp, vp);
        add_to_planes(out, "cycbcr_uyvy_to_yuv444p10", cycbcr_uyvy_to_yuv444p10, false, g.w, g.h,
                      dp, 2 * g.w + g.pad);
        if (a) {
            add_to_planes(out, "cycbcr_012v_to_yuv422p10_avx2", cycbcr_012v_to_yuv422p10_avx2, true,
                          g.w, g.h, dp, vp);
            add_to_planes(out, "cycbcr_012v_to_yuv422p16_avx2", cycbcr_012v_to_yuv422p16_avx2, true,
                          g.w, g.h, dp, vp);
            add_to_planes(out, "cycbcr_012v_to_yuv444p10_avx2", cycbcr_012v_to_yuv444p10_avx2, true,
                          g.w, g.h, dp, vp);
            add_to_planes(out, "cycbcr_uyvy_to_yuv444p10_avx2", cycbcr_uyvy_to_yuv444p10_avx2, true,
                          g.w, g.h, dp, 2 * g.w + g.pad);
        }
        // 4:2:0 out of v210 takes separate Y and chroma pitches.
        const uint32_t w = g.w, h = g.h, yp = dp, cp = g.w + g.pad;
        const auto add420 = [&](const char* name, auto fn) {
            out.push_back({label(name, w, h), plane_sizes(name, w, h, {yp, cp, vp}, 4),
                           [=](uint8_t* const* p) {
                               return uint64_t{fn(p[0], p[1], p[2], p[3], w, h, yp, cp, vp)};
                           }});
        };
        add420("cycbcr_012v_to_yuv420p10", cycbcr_012v_to_yuv420p10);
        if (a) add420("cycbcr_012v_to_yuv420p10_avx2", cycbcr_012v_to_yuv420p10_avx2);
    }
    return out;
}

std::vector<Case> semi_planar() {
    std::vector<Case> out;
    add_rows(out, [](const cycbcr::ConverterRow& r) {
        return cycbcr::info(r.from).arrangement == cycbcr::Arrangement::SemiPlanar;
    });
    const Named4 producers[] = {
        CYCBCR_N4(cycbcr_yuv420p10_to_NV12p16, false),
        CYCBCR_N4(cycbcr_yuv420p12_to_NV12p16, false),
        CYCBCR_N4(cycbcr_yuv420p16_to_NV12p16, false),
        CYCBCR_N4(cycbcr_420p10_to_NV12p16_avx2, true),
        CYCBCR_N4(cycbcr_420p12_to_NV12p16_avx2, true),
        CYCBCR_N4(cycbcr_420p16_to_NV12p16_avx2, true),
    };
    for (const Geo& g : kGeos)
        for (const Named4& n : producers)
            add_to_packed(out, n, g.w, g.h, 2 * g.w + g.pad, 2 * g.w + g.pad);
    return out;
}

// The banded converters above their thresholds, at a level below 5 (ctest runs
// this family on a processor case without AVX2), so that every entry starts
// its eight band threads; the same entries on narrow frames, and the bands'
// bodies run directly.
std::vector<Case> bands() {
    std::vector<Case> out;
    const Named4 banded[] = {
        CYCBCR_N4(cycbcr_yuv422p10_to_012v, false),
        CYCBCR_N4(cycbcr_yuv422p12_to_012v, false),
        CYCBCR_N4(cycbcr_yuv444p12_to_012v, false),
    };
    for (const uint32_t h : {8u, 13u}) {
        const uint32_t w = 2052, sp = 2 * w;
        for (const Named4& n : banded) add_to_packed(out, n, w, h, v210_row_bytes(w), sp);
        add_to_packed(out, CYCBCR_N4(cycbcr_yuv422p10_to_uyvy, false), w, h, 2 * w, sp);
    }
    for (const Named4& n : banded) add_to_packed(out, n, 96, 8, v210_row_bytes(96), 192);
    add_worker<cycbcr_yuv422p10_to_012v_worker>(out, "cycbcr_yuv422p10_to_012v_internal",
                                                "cycbcr_yuv422p10_to_012v_worker", 96, 3,
                                                v210_row_bytes(96), 192);
    add_worker<cycbcr_yuv422p12_to_012v_worker>(out, "cycbcr_yuv422p12_to_012v_internal",
                                                "cycbcr_yuv422p12_to_012v_worker", 96, 3,
                                                v210_row_bytes(96), 192);
    add_worker<cycbcr_yuv444p12_to_012v_worker>(out, "cycbcr_yuv444p12_to_012v_internal",
                                                "cycbcr_yuv444p12_to_012v_worker", 96, 3,
                                                v210_row_bytes(96), 192);
    add_worker<cycbcr_yuv422p10_to_uyvy_worker>(out, "cycbcr_yuv422p10_to_uyvy_internal",
                                                "cycbcr_yuv422p10_to_uyvy_worker", 96, 3, 192, 192);
    return out;
}

std::vector<Case> hbd_rgb() {
    std::vector<Case> out;
    using Engine =
        unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, unsigned int,
                         unsigned int, unsigned int, unsigned int, QBYCBCRMatrix, QBYCBCRRgbType,
                         int32_t, unsigned int, unsigned int, unsigned int);
    struct E {
        const char* name;
        Engine fn;
        uint32_t depth, pixel;
    };
    const E engines[] = {
        {"cycbcr_10ToRGBInt", cycbcr_10ToRGBInt, 32, 4},
        {"cycbcr_10ToRGBInt16", cycbcr_10ToRGBInt16, 64, 8},
        {"cycbcr_10ToRGBInt10", cycbcr_10ToRGBInt10, 32, 4},
        {"cycbcr_12ToRGB", cycbcr_12ToRGB, 48, 6},
        {"cycbcr_12ToRGBInt16", cycbcr_12ToRGBInt16, 64, 8},
        {"cycbcr_16ToRGB8", cycbcr_16ToRGB8, 24, 3},
    };
    for (size_t k = 0; k < std::size(kGeos); ++k) {
        const Geo& g = kGeos[k];
        const uint32_t w = g.w, h = g.h, m = kMatrices[k], t = kRgbTypes[k];
        for (const E& e : engines)
            for (const uint32_t planar : {1u, 0u})
                for (const int32_t is422 : {1, 0}) {
                    if (!planar && !is422) continue;
                    const uint32_t dp = w * e.pixel + g.pad, sp = 2 * w, cp = w;
                    const Engine fn = e.fn;
                    const uint32_t depth = e.depth;
                    out.push_back(
                        {label(e.name, w, h) + (planar ? (is422 ? " 422" : " 420") : " packed"),
                         plane_sizes(
                             e.name, w, h,
                             {dp, sp, m, t, static_cast<unsigned int>(is422), planar, depth, cp},
                             4),
                         [=](uint8_t* const* p) {
                             return uint64_t{fn(p[0], p[1], p[2], p[3], w, h, dp, sp, m, t, is422,
                                                planar, depth, cp)};
                         }});
                }
        const uint32_t dp = 4 * w + g.pad, sp = 2 * w;
        out.push_back({label("planar10ToRGBInt", w, h),
                       plane_sizes("planar10ToRGBInt", w, h, {dp, sp, m, t, 32}, 2),
                       [=](uint8_t* const* p) {
                           return uint64_t{planar10ToRGBInt(p[0], p[1], w, h, dp, sp, m, t, 32)};
                       }});
        // 10- and 12-bit planar into RGB planes.
        using PlanarEngine = decltype(&cycbcr_10ToRGBPlanarInt);
        struct P {
            const char* name;
            PlanarEngine fn;
            uint32_t value;  // bytes a value
        };
        for (const P& e : {P{"cycbcr_10ToRGBPlanarInt", cycbcr_10ToRGBPlanarInt, 1},
                           P{"cycbcr_10ToRGBPlanarInt16", cycbcr_10ToRGBPlanarInt16, 2},
                           P{"cycbcr_12ToRGBPlanarInt16", cycbcr_12ToRGBPlanarInt16, 2}}) {
            const uint32_t pdp = w * e.value + g.pad, psp = 2 * w;
            const PlanarEngine f = e.fn;
            out.push_back({label(e.name, w, h),
                           plane_sizes(e.name, w, h, {pdp, psp, m, t, 1, 1, w}, 6),
                           [=](uint8_t* const* p) {
                               return uint64_t{f(p[0], p[1], p[2], p[3], p[4], p[5], w, h, pdp, psp,
                                                 m, t, 1, 1, w)};
                           }});
        }
    }
    return out;
}

std::vector<Case> rgb_planar16() {
    std::vector<Case> out;
    using ToPlanar16 =
        unsigned int (*)(void*, void*, void*, const void*, unsigned int, unsigned int, unsigned int,
                         unsigned int, unsigned int, QBYCBCRMatrix, QBYCBCRRgbType, unsigned int);
    struct T {
        const char* name;
        ToPlanar16 fn;
        uint32_t bpp;
    };
    const T converters[] = {
        {"cycbcr_RGB32_to_yuv444p10", cycbcr_RGB32_to_yuv444p10, 32},
        {"cycbcr_RGB32_to_yuv444p10", cycbcr_RGB32_to_yuv444p10, 24},
        {"cycbcr_RGB64_to_yuv444p10", cycbcr_RGB64_to_yuv444p10, 64},
        {"cycbcr_RGB64_to_yuv422p12", cycbcr_RGB64_to_yuv422p12, 48},
    };
    for (size_t k = 0; k < std::size(kGeos); ++k) {
        const Geo& g = kGeos[k];
        const uint32_t w = g.w, h = g.h, m = kMatrices[k], t = kRgbTypes[k];
        for (const T& c : converters) {
            const uint32_t yp = 2 * w + g.pad, cp = 2 * w + g.pad, sp = w * c.bpp / 8 + g.pad;
            const uint32_t bpp = c.bpp;
            const ToPlanar16 fn = c.fn;
            out.push_back(
                {label(c.name, w, h) + " " + std::to_string(bpp),
                 plane_sizes(c.name, w, h, {yp, cp, sp, m, t, bpp}, 4), [=](uint8_t* const* p) {
                     return uint64_t{fn(p[0], p[1], p[2], p[3], w, h, yp, cp, sp, m, t, bpp)};
                 }});
        }
        const uint32_t yp = 2 * w + g.pad;
        out.push_back({label("cycbcr_RGB64_to_YCbCrPlanar16", w, h),
                       plane_sizes("cycbcr_RGB64_to_YCbCrPlanar16", w, h, {yp, 8 * w, m, t, 64}, 4),
                       [=](uint8_t* const* p) {
                           return uint64_t{cycbcr_RGB64_to_YCbCrPlanar16(p[0], p[1], p[2], p[3], w,
                                                                         h, yp, 8 * w, m, t, 64)};
                       }});
        out.push_back({label("cycbcr_RGB10_to_YCbCrPlanar16", w, h),
                       plane_sizes("cycbcr_RGB10_to_YCbCrPlanar16", w, h, {yp, 4 * w, m, t, 10}, 4),
                       [=](uint8_t* const* p) {
                           return uint64_t{cycbcr_RGB10_to_YCbCrPlanar16(p[0], p[1], p[2], p[3], w,
                                                                         h, yp, 4 * w, m, t, 10)};
                       }});
    }
    return out;
}

std::vector<Case> scaling() {
    std::vector<Case> out;
    using Scale =
        unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int, unsigned int,
                         unsigned int, unsigned int, unsigned int, unsigned int);
    struct S {
        const char* name;
        Scale fn;
        bool v210;
        uint32_t scale;
    };
    const S cases[] = {
        {"cycbcr_uyvy_scale_planar", cycbcr_uyvy_scale_planar, false, 100},
        {"cycbcr_uyvy_scale_planar", cycbcr_uyvy_scale_planar, false, 150},
        {"cycbcr_uyvy_scale_planar_1_5", cycbcr_uyvy_scale_planar_1_5, false, 150},
        {"cycbcr_012v_scale_planar", cycbcr_012v_scale_planar, true, 100},
        {"cycbcr_012v_scale_planar", cycbcr_012v_scale_planar, true, 200},
        {"cycbcr_012v_scale_planar", cycbcr_012v_scale_planar, true, 400},
        {"cycbcr_012v_scale_planar_1_5", cycbcr_012v_scale_planar_1_5, true, 150},
    };
    for (const Geo& g : kGeos)
        for (const S& s : cases)
            for (const uint32_t is422 : {0u, 1u}) {
                const uint32_t w = g.w, h = g.h, dp = w + g.pad;
                const uint32_t sp = (s.v210 ? v210_row_bytes(w) : 2 * w) + g.pad;
                const uint32_t scale = s.scale;
                const Scale fn = s.fn;
                out.push_back(
                    {label(s.name, w, h) + " " + std::to_string(scale) + (is422 ? " 422" : " 420"),
                     plane_sizes(s.name, w, h, {dp, sp, scale, is422}, 4), [=](uint8_t* const* p) {
                         return uint64_t{fn(p[0], p[1], p[2], p[3], w, h, dp, sp, scale, is422)};
                     }});
            }
    return out;
}

// The dispatcher between every pair of codes it converts, RGB included, with
// pitches it corrects and pitches it keeps.
std::vector<Case> dispatcher() {
    std::vector<Case> out;
    const uint32_t codes[] = {CYCBCR_FOURCC_UYVY, CYCBCR_FOURCC_YUY2, CYCBCR_FOURCC_YVYU,
                              CYCBCR_FOURCC_cyuv, CYCBCR_FOURCC_I420, CYCBCR_FOURCC_YV12,
                              CYCBCR_FOURCC_P422, CYCBCR_FOURCC_422P, CYCBCR_FOURCC_v210,
                              CYCBCR_FOURCC_RGB32};
    for (size_t k = 0; k < std::size(kGeos); ++k) {
        const Geo& g = kGeos[k];
        const uint32_t w = g.w, h = g.h, m = kMatrices[k], t = kRgbTypes[k];
        for (const uint32_t to : codes)
            for (const uint32_t from : codes) {
                // Pitches as passed: 0 for the first geometry (the dispatcher
                // corrects them), the natural pitch plus padding for the second.
                const auto pitch = [&](uint32_t code) -> uint32_t {
                    if (k == 0) return 0;
                    const Format f = cycbcr::canonical_format(code);
                    return (code == CYCBCR_FOURCC_RGB32 ? 4 * w : natural_pitch(f, w)) + g.pad;
                };
                const uint32_t dp = pitch(to), sp = pitch(from);
                uint64_t d = 0, s = 0;
                if (cycbcr_buffer_sizes(to, from, w, h, cycbcr_fix_pitch(to, w, dp),
                                        cycbcr_fix_pitch(from, w, sp), &d, &s) == 0)
                    continue;  // a pair the dispatcher refuses
                char name[64];
                std::snprintf(name, sizeof name, "cycbcr_transcode %08x<-%08x", to, from);
                out.push_back({label(name, w, h), {d, s}, [=](uint8_t* const* p) {
                                   return uint64_t{
                                       cycbcr_transcode(p[0], p[1], w, h, dp, sp, m, t, to, from)};
                               }});
            }
    }
    return out;
}

struct Family {
    const char* name;
    std::vector<Case> (*cases)();
    bool belowLevel5 = false;  // needs a level below 5 to take the paths it is for
};
const Family kFamilies[] = {
    {"byte_order", byte_order},
    {"packed_planar", packed_planar},
    {"planar_planar", planar_planar},
    {"v210_8bit", v210_8bit},
    {"v210_rgb", v210_rgb},
    {"ycbcr8_rgb", ycbcr8_rgb},
    {"rgb_ycbcr8", rgb_ycbcr8},
    {"hbd_planar", hbd_planar},
    {"semi_planar", semi_planar},
    {"bands", bands, true},
    {"hbd_rgb", hbd_rgb},
    {"rgb_planar16", rgb_planar16},
    {"scaling", scaling},
    {"dispatcher", dispatcher},
};

// ---------------------------------------------------------------------------

int race(const Family& family) {
    if (gdwProcType != kLevelUnset) {
        fail("the level was chosen before the race; run one family per process");
        return 1;
    }
    // Building the cases asks only the buffer-size queries and the feature bits,
    // neither of which chooses a level.
    const std::vector<Case> cases = family.cases();
    if (gdwProcType != kLevelUnset) fail("building the cases chose a level");
    if (cases.empty()) fail(std::string("no cases in ") + family.name);
    if (g_failures != 0) return 1;

    // frames[t][c]: thread t's frames of case c.
    std::vector<std::vector<Frames>> frames(kThreads);
    for (int t = 0; t < kThreads; ++t)
        for (const Case& c : cases) frames[t].push_back(make_frames(c, t));
    const size_t n = cases.size();

    struct Record {
        uint32_t index;
        bool chosenBefore;  // the level was chosen when the call began
        Result result;
    };
    std::vector<std::vector<Record>> records(kThreads);
    // The calls go in rounds. The last thread to reach a round's start line
    // returns the level to unchosen and opens the round; the others spin (not
    // sleep) at the line, so that those on a core leave it together and their
    // first calls of the round race to choose the level again.
    std::atomic<int> arrived{0};
    std::atomic<int> opened{0};
    const auto start_round = [&](int round) {
        if (arrived.fetch_add(1, std::memory_order_acq_rel) + 1 == kThreads * (round + 1)) {
            __atomic_store_n(&gdwProcType, kLevelUnset, __ATOMIC_RELAXED);
            opened.store(round + 1, std::memory_order_release);
        } else {
            while (opened.load(std::memory_order_acquire) <= round) std::this_thread::yield();
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            // Separate frames: each thread converts into and out of its own copies.
            std::vector<std::vector<std::vector<uint8_t>>> work;
            for (const Frames& f : frames[t]) work.push_back(f.pristine);
            std::vector<Record>& mine = records[t];
            mine.reserve(kCallsPerThread);
            // Even threads start on the same converter, odd ones spread out.
            const size_t offset = t % 2 == 0 ? 0 : (t * n) / kThreads;
            for (int i = 0; i < kCallsPerThread; ++i) {
                if (i % (kCallsPerThread / kRounds) == 0)
                    start_round(i / (kCallsPerThread / kRounds));
                const size_t c = (offset + static_cast<size_t>(i)) % n;
                const bool chosen = __atomic_load_n(&gdwProcType, __ATOMIC_RELAXED) != kLevelUnset;
                mine.push_back({static_cast<uint32_t>(c), chosen, run_once(frames[t][c], work[c])});
            }
        });
    for (std::thread& t : threads) t.join();

    const uint32_t chosen = gdwProcType;
    if (chosen == kLevelUnset) fail("no call chose a level");
    // The level the race left is the one a single first call chooses.
    if (cycbcr_set_cpu(5) != chosen)
        fail("the race left level " + std::to_string(chosen) + ", a first call chooses " +
             std::to_string(cycbcr_set_cpu(5)));
    cycbcr_set_cpu(chosen);
    if (family.belowLevel5 && chosen == 5)
        fail(std::string(family.name) +
             " ran at level 5, where its entries take their AVX2 forms: run it on a processor "
             "case without AVX2 (CYCBCR_CPU_FLAGS=0x6020)");

    // The single-threaded results, after the race: at the level chosen, and
    // with no level chosen. The two differ only for the few exports that read
    // the level without choosing one; a call of those that began before any
    // level was chosen may give either.
    std::vector<std::vector<Result>> expected(kThreads), unchosen(kThreads);
    for (int t = 0; t < kThreads; ++t)
        for (const Frames& f : frames[t]) {
            std::vector<std::vector<uint8_t>> work = f.pristine;
            expected[t].push_back(run_once(f, work));
            gdwProcType = kLevelUnset;
            unchosen[t].push_back(run_once(f, work));
            gdwProcType = chosen;
        }
    size_t calls = 0, early = 0, unchosenCalls = 0;
    std::vector<int> seen(n, 0);
    for (int t = 0; t < kThreads; ++t)
        for (size_t i = 0; i < records[t].size(); ++i) {
            const Record& r = records[t][i];
            ++calls;
            ++seen[r.index];
            if (!r.chosenBefore) ++unchosenCalls;
            const Result& want = expected[t][r.index];
            if (!r.chosenBefore && r.result == unchosen[t][r.index] && !(r.result == want)) {
                ++early;
                continue;
            }
            if (r.result.value != want.value)
                fail(cases[r.index].name + ": thread " + std::to_string(t) + " call " +
                     std::to_string(i) + " returned " + std::to_string(r.result.value) +
                     ", alone " + std::to_string(want.value));
            else if (r.result.digest != want.digest)
                fail(cases[r.index].name + ": thread " + std::to_string(t) + " call " +
                     std::to_string(i) + " left different bytes than the call alone");
        }
    if (calls != static_cast<size_t>(kThreads) * kCallsPerThread) fail("calls went missing");
    for (size_t c = 0; c < n; ++c)
        if (seen[c] == 0) fail(cases[c].name + " was never called");
    std::printf(
        "%s: %zu cases, %d threads x %d calls, level %u%s; %zu call(s) began with no "
        "level chosen, %zu of them took a path of the unchosen level\n",
        family.name, n, kThreads, kCallsPerThread, chosen,
        g_failures ? "" : ", every result the single-threaded one", unchosenCalls, early);
    return g_failures == 0 ? 0 : 1;
}

// cycbcr_yuv420p16_to_012v_avx2 sets the level to 0 for the length of its call
// and then puts back the level it found: another thread polling the level
// during a long call sees 0, and only 0 or the level set; after the call the
// level is the one set, unchosen included.
int level_hold() {
    const uint32_t w = 1920, h = 270, dp = v210_row_bytes(w), sp = 2 * w;
    const char* name = "cycbcr_yuv420p16_to_012v_avx2";
    const std::vector<uint64_t> sizes = plane_sizes(name, w, h, {dp, sp}, 4);
    std::vector<std::vector<uint8_t>> bufs;
    for (size_t i = 0; i < sizes.size(); ++i) {
        bufs.emplace_back(sizes[i] + kSlack);
        fill_pattern(bufs.back(), 7 + static_cast<uint32_t>(i));
    }
    const auto convert = [&] {
        return cycbcr_yuv420p16_to_012v_avx2(bufs[0].data(), bufs[1].data(), bufs[2].data(),
                                             bufs[3].data(), w, h, dp, sp);
    };
    if (g_failures != 0) return 1;

    // Unchosen before the call: still unchosen after it.
    if (gdwProcType != kLevelUnset) fail("the level was chosen before the first call");
    const unsigned int alone = convert();
    if (gdwProcType != kLevelUnset)
        fail("the call left level " + std::to_string(gdwProcType) + " where none was chosen");
    if (alone != h * dp) fail("the call returned " + std::to_string(alone));

    for (const unsigned int request : {5u, 3u, 1u}) {
        const uint32_t set = cycbcr_set_cpu(request);
        if (set == 0) continue;  // nothing to tell 0 from
        std::atomic<bool> done{false};
        std::atomic<bool> sawZero{false};
        std::set<unsigned int> seen;
        int calls = 0;
        std::thread watcher([&] {
            while (!done.load(std::memory_order_acquire)) {
                const unsigned int level = cycbcr_get_cpu(1);
                seen.insert(level);
                if (level == 0) sawZero.store(true, std::memory_order_release);
            }
        });
        // Calls until the watcher has seen the level at 0, a few hundred at most.
        while (!sawZero.load(std::memory_order_acquire) && calls < 400) {
            if (convert() != alone)
                fail("a call at level " + std::to_string(set) + " returned differently");
            ++calls;
        }
        done.store(true, std::memory_order_release);
        watcher.join();
        const std::string at = "level " + std::to_string(set) + ": ";
        if (!sawZero.load())
            fail(at + "no other thread saw level 0 in " + std::to_string(calls) + " calls");
        for (const unsigned int l : seen)
            if (l != 0 && l != set) fail(at + "another thread saw level " + std::to_string(l));
        if (gdwProcType != set) fail(at + "the calls left level " + std::to_string(gdwProcType));
        std::printf("level %u: level 0 seen from another thread within %d call(s), %u restored\n",
                    set, calls, gdwProcType);
    }
    return g_failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "level_hold") return level_hold();
    // --families NAME...: the names given must be exactly the program's families
    // (ctest registers one test per family from its own list).
    if (argc >= 2 && std::string_view(argv[1]) == "--families") {
        std::set<std::string> given(argv + 2, argv + argc), known;
        for (const Family& f : kFamilies) known.insert(f.name);
        if (given == known) return 0;
        for (const std::string& k : known)
            if (!given.contains(k))
                std::fprintf(stderr, "family %s is not registered\n", k.c_str());
        for (const std::string& g : given)
            if (!known.contains(g)) std::fprintf(stderr, "no family %s\n", g.c_str());
        return 1;
    }
    if (argc == 2)
        for (const Family& f : kFamilies)
            if (std::string_view(argv[1]) == f.name) return race(f);
    std::fprintf(stderr, "usage: %s FAMILY | level_hold | --families NAME...\nfamilies:", argv[0]);
    for (const Family& f : kFamilies) std::fprintf(stderr, " %s", f.name);
    std::fprintf(stderr, "\n");
    return 2;
}
