// Hashes what every exported function of a libcycbcr build writes and returns
// over a fixed set of frames, so that a change meant to keep every byte can be
// checked by comparing two builds' lines.
//
//     nm -D --defined-only libcycbcr.so | awk '{print $3}' | output_hashes libcycbcr.so
//
// The functions are found by name (dlopen and dlsym) and called with argument
// shapes chosen from their names, so the program serves any build: a name whose
// shape it does not know is reported, never skipped silently. For every call
// the whole destination buffer (set to a fixed pattern before the call) and the
// result are folded into the function's hash, at the levels unset, 0, 4 and 5;
// widths 1 to 50, 1276, 1280 and 1920; heights 0 to 5 and 1080; natural,
// padded and zero pitches; and, for the converters, in place. With --trace NAME
// it prints one line per call of that function instead.
//
// The converters to RGB (and the UYVY-with-alpha ones) are called with their
// matrix and rgbType: matrix 0 and RGB type 0 over all of the above, every
// matrix 0 to 8 with every RGB layout, bottom-up or not, over short frames of a
// few widths, at levels 1 and 6 as well (the image-library routes depend on the
// level). The engines behind them get every source layout and depth they take.
// The queries (buffer sizes, pitch rule, pair lookups) are hashed over every
// format code and every name read, and the reductions over every scale they
// tell apart with both chroma flags.
#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using Conv = unsigned (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned);
using Engine11 = unsigned (*)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*,
                              uint8_t*, unsigned, unsigned, unsigned, unsigned, unsigned);
using ToV210 = unsigned (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, unsigned,
                            unsigned, unsigned, unsigned, unsigned, unsigned);
using FromV210 = unsigned (*)(void*, void*, void*, const uint8_t*, unsigned, unsigned, unsigned,
                              unsigned, unsigned, unsigned);
using Planes8 = unsigned (*)(void*, void*, void*, const uint8_t*, unsigned, unsigned, unsigned,
                             unsigned);
using PlanarCopy = unsigned (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, const uint8_t*,
                                const uint8_t*, unsigned, unsigned, unsigned, unsigned);
using Planar422 = unsigned (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, const uint8_t*,
                               const uint8_t*, unsigned, unsigned, unsigned, unsigned, unsigned,
                               unsigned);
using Kernel = void (*)(const uint8_t*, void*, void*, void*, unsigned);
using Invert = void (*)(uint8_t*, unsigned, unsigned);
using RowBytes = unsigned (*)(unsigned);
using Transcode = unsigned (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                               uint32_t, uint32_t, unsigned, unsigned);
using ToRgb = unsigned (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                           uint32_t, uint32_t);
using ToRgbAlpha = unsigned (*)(uint8_t*, const uint8_t*, const uint8_t*, unsigned, unsigned,
                                unsigned, unsigned, uint32_t, uint32_t);
using RgbEngine = unsigned (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, unsigned,
                               unsigned, unsigned, unsigned, uint32_t, uint32_t, int32_t, unsigned,
                               unsigned, unsigned);
using FixPitch = unsigned (*)(unsigned, unsigned, unsigned);
using BufferSizes = unsigned (*)(unsigned, unsigned, unsigned, unsigned, unsigned, unsigned,
                                 uint64_t*, uint64_t*);
using NamedBufferSizes = unsigned (*)(const char*, unsigned, unsigned, unsigned, unsigned, uint32_t,
                                      uint32_t, uint64_t*, uint64_t*);
using PairLookup = void* (*)(unsigned, unsigned);
using Scale = unsigned (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned, unsigned,
                           unsigned, unsigned, unsigned, unsigned);

uint32_t* g_level = nullptr;
RowBytes g_row_bytes = nullptr;

// A 64-bit hash of a byte range, eight bytes a step.
uint64_t hash_bytes(const uint8_t* p, size_t n, uint64_t h) {
    const uint64_t k = 0x9E3779B97F4A7C15ull;
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t w;
        std::memcpy(&w, p + i, 8);
        h = (h ^ w) * k;
        h ^= h >> 29;
    }
    for (; i < n; ++i) h = ((h ^ p[i]) * k) ^ (h >> 31);
    return h;
}

const std::vector<uint8_t>& pool(int which) {
    static std::vector<uint8_t> pools[2];
    if (pools[which].empty()) {
        std::mt19937_64 rng(which == 0 ? 20261125 : 77);
        pools[which].resize(size_t{48} << 20);
        for (size_t i = 0; i < pools[which].size(); i += 8) {
            const uint64_t v = rng();
            std::memcpy(&pools[which][i], &v, 8);
        }
    }
    return pools[which];
}

// The source (random) and destination (another random fill) of one call, each
// 64-byte aligned, with the whole destination hashed afterwards.
struct Buffers {
    std::vector<uint8_t> srcStore, dstStore;
    uint8_t *src, *dst;
    size_t bytes;
    explicit Buffers(size_t n) : srcStore(n + 64), dstStore(n + 64), bytes(n) {
        src = align(srcStore.data());
        dst = align(dstStore.data());
        std::memcpy(src, pool(0).data(), n);
        std::memcpy(dst, pool(1).data(), n);
    }
    static uint8_t* align(uint8_t* p) {
        return reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(p) + 63) & ~uintptr_t{63});
    }
};

// Frames by how their rows are laid out; the RGB kinds by bytes a pixel.
enum class Kind { Packed, Planar, V210, Rgb16, Rgb24, Rgb32, Rgb48, Rgb64 };
struct FormatName {
    const char* name;
    Kind kind;
};
constexpr FormatName kFormats[] = {
    {"uyvy", Kind::Packed}, {"yuy2", Kind::Packed}, {"yvyu", Kind::Packed}, {"cyuv", Kind::Packed},
    {"i420", Kind::Planar}, {"yv12", Kind::Planar}, {"p422", Kind::Planar}, {"012v", Kind::V210}};

unsigned natural(Kind k, unsigned w) {
    switch (k) {
        case Kind::Packed:
            return 2 * w;
        case Kind::Planar:
            return w;
        case Kind::V210:
            return g_row_bytes(w);
        case Kind::Rgb16:
            return 2 * w;
        case Kind::Rgb24:
            return 3 * w;
        case Kind::Rgb32:
            return 4 * w;
        case Kind::Rgb48:
            return 6 * w;
        case Kind::Rgb64:
            return 8 * w;
    }
    return 0;
}
unsigned padded(Kind k, unsigned w) {
    return natural(k, w) + (k == Kind::V210 ? 64 : 36);
}

struct Geometry {
    unsigned w, h, dp, sp;
};

std::vector<unsigned> widths() {
    std::vector<unsigned> out;
    for (unsigned w = 1; w <= 50; ++w) out.push_back(w);
    out.insert(out.end(), {1276, 1280, 1920});
    return out;
}
constexpr unsigned kHeights[] = {0, 1, 2, 3, 4, 5, 1080};
const std::vector<uint32_t> kLevels = {0xFFFFFFFEu, 0, 4, 5};
// The RGB routes also differ at levels 1 and 6.
const std::vector<uint32_t> kRgbLevels = {0xFFFFFFFEu, 0, 1, 4, 5, 6};

// Pitch variants: natural, padded, one of each, zero. Tall frames only the first two.
std::vector<Geometry> geometries(Kind dst, Kind src) {
    std::vector<Geometry> out;
    for (unsigned w : widths())
        for (unsigned h : kHeights) {
            const unsigned dn = natural(dst, w), sn = natural(src, w);
            const unsigned dpd = padded(dst, w), spd = padded(src, w);
            out.push_back({w, h, dn, sn});
            out.push_back({w, h, dpd, spd});
            if (h == 1080) continue;
            out.push_back({w, h, dn, spd});
            out.push_back({w, h, dpd, sn});
            out.push_back({w, h, 0, 0});
        }
    return out;
}

// Short frames for the sweeps over matrices and layouts: widths around the
// vector steps and one wide row, heights 0 to 3 and 5, the same pitch variants.
std::vector<Geometry> short_geometries(Kind dst, Kind src) {
    std::vector<Geometry> out;
    for (unsigned w : {1u, 2u, 3u, 5u, 8u, 15u, 16u, 17u, 31u, 32u, 33u, 48u, 50u, 1276u})
        for (unsigned h : {0u, 1u, 2u, 3u, 5u}) {
            const unsigned dn = natural(dst, w), sn = natural(src, w);
            const unsigned dpd = padded(dst, w), spd = padded(src, w);
            out.push_back({w, h, dn, sn});
            out.push_back({w, h, dpd, spd});
            out.push_back({w, h, dn, spd});
            out.push_back({w, h, dpd, sn});
            out.push_back({w, h, 0, 0});
        }
    return out;
}

size_t round_up(size_t v, size_t m) {
    return (v + m - 1) / m * m;
}

// Room for anything a call of this geometry may touch: three planes of rows of
// the larger pitch or of 16-bit samples of the width rounded up to 48, and a
// spare row.
size_t buffer_bytes(const Geometry& g) {
    const size_t row = std::max<size_t>({g.dp, g.sp, 4 * round_up(g.w, 48) + 128});
    return 2 * row * (g.h + 2) + 8192;
}

struct Tally {
    uint64_t hash = 0x1234567;
    uint64_t calls = 0;
};

std::string g_trace;

void fold(Tally& t, const std::string& name, const Geometry& g, uint32_t level,
          const std::string& variant, const Buffers& b, unsigned result) {
    const uint64_t h = hash_bytes(b.dst, b.bytes, result * 0x100000001B3ull + 1);
    t.hash = (t.hash ^ h) * 0x100000001B3ull + t.calls;
    ++t.calls;
    if (name == g_trace)
        std::printf("%s level %d w %u h %u dp %u sp %u %s -> %u %016llx\n", name.c_str(),
                    static_cast<int>(level), g.w, g.h, g.dp, g.sp, variant.c_str(), result,
                    static_cast<unsigned long long>(h));
}

// Runs body(buffers, geometry, variant) at every level and geometry, folding each.
template <class Body>
void sweep_over(Tally& t, const std::string& name, const std::vector<Geometry>& shapes,
                const std::vector<uint32_t>& levels, Body&& body, bool tallToo = true) {
    for (const Geometry& g : shapes) {
        if (!tallToo && g.h == 1080) continue;
        for (uint32_t level : levels) {
            Buffers b(buffer_bytes(g));
            *g_level = level;
            std::string variant;
            const unsigned r = body(b, g, variant);
            fold(t, name, g, level, variant, b, r);
        }
    }
}
template <class Body>
void sweep(Tally& t, const std::string& name, Kind dst, Kind src, Body&& body,
           bool tallToo = true) {
    sweep_over(t, name, geometries(dst, src), kLevels, body, tallToo);
}

bool parse_pair(const std::string& name, const FormatName*& from, const FormatName*& to,
                std::string& suffix) {
    if (name.rfind("cycbcr_", 0) != 0) return false;
    const std::string rest = name.substr(7);
    for (const auto& f : kFormats)
        for (const auto& d : kFormats) {
            const std::string stem = std::string(f.name) + "_to_" + d.name;
            if (rest.rfind(stem, 0) != 0) continue;
            const std::string tail = rest.substr(stem.size());
            if (tail.empty() || tail == "_avx2" || tail == "_opt") {
                from = &f;
                to = &d;
                suffix = tail;
                return true;
            }
        }
    return false;
}

// Plane positions in a frame at `base`: I420, YV12 or P422 by pitch * height.
struct Planes {
    uint8_t *y, *cb, *cr;
};
Planes planes(int layout, uint8_t* base, unsigned pitch, unsigned h) {
    const uint32_t d = pitch * h;
    uint8_t* first = base + d;
    if (layout == 0) return {base, first, first + (d >> 2)};
    if (layout == 1) return {base, first + (d >> 2), first};
    return {base, first, first + (d >> 1)};
}
// Packed sample pointers: YUY2, YVYU, UYVY and a shape no fast kernel knows.
struct Packed {
    uint8_t *y, *cb, *cr;
};
Packed packed(int shape, uint8_t* p) {
    switch (shape) {
        case 0:
            return {p, p + 1, p + 3};
        case 1:
            return {p, p + 3, p + 1};
        case 2:
            return {p + 1, p, p + 2};
        default:
            return {p + 1, p + 2, p};
    }
}

uint32_t code(const char* s) {
    return uint32_t(uint8_t(s[0])) | uint32_t(uint8_t(s[1])) << 8 | uint32_t(uint8_t(s[2])) << 16 |
           uint32_t(uint8_t(s[3])) << 24;
}

// ------------------------------------------------------------------------
// YCbCr to RGB: the converters with matrix and rgbType, the UYVY-with-alpha
// converters and the engines.

constexpr uint32_t kMatrices[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
// B, G, R, A; A, B, G, R; R, G, B, A; A, R, G, B; a stray layout (R, G, B, A);
// bottom-up B, G, R, A and R, G, B, A.
constexpr uint32_t kRgbTypes[] = {0, 1, 2, 3, 4, 0x8000, 0x8002};

struct RgbName {
    const char* name;
    Kind kind;
};
constexpr RgbName kRgbSources[] = {
    {"uyvy", Kind::Packed}, {"yuy2", Kind::Packed}, {"yvyu", Kind::Packed}, {"cyuv", Kind::Packed},
    {"i420", Kind::Planar}, {"yv12", Kind::Planar}, {"p422", Kind::Planar}, {"nv12", Kind::Planar}};
constexpr RgbName kRgbDepths[] = {{"rgb555", Kind::Rgb16},
                                  {"rgb565", Kind::Rgb16},
                                  {"rgb24", Kind::Rgb24},
                                  {"rgb32", Kind::Rgb32}};

// cycbcr_<source>_to_<rgb>, or its _avx2 form.
bool parse_rgb(const std::string& name, Kind& dst, Kind& src) {
    for (const auto& f : kRgbSources)
        for (const auto& d : kRgbDepths) {
            const std::string stem = std::string("cycbcr_") + f.name + "_to_" + d.name;
            if (name == stem || name == stem + "_avx2") {
                dst = d.kind;
                src = f.kind;
                return true;
            }
        }
    return false;
}

// call(buffers, geometry, matrix, rgbType) over every geometry with matrix 0 and
// RGB type 0, then over the short frames with every matrix and RGB type.
template <class Call>
void rgb_sweeps(Tally& t, const std::string& name, Kind dst, Kind src, Call&& call) {
    sweep_over(t, name, geometries(dst, src), kRgbLevels,
               [&](Buffers& b, const Geometry& g, std::string& v) {
                   v = "matrix 0 type 0";
                   return call(b, g, 0u, 0u);
               });
    const std::vector<Geometry> shapes = short_geometries(dst, src);
    for (uint32_t m : kMatrices)
        for (uint32_t type : kRgbTypes) {
            if (m == 0 && type == 0) continue;
            sweep_over(t, name, shapes, kRgbLevels,
                       [&](Buffers& b, const Geometry& g, std::string& v) {
                           v = "matrix " + std::to_string(m) + " type " + std::to_string(type);
                           return call(b, g, m, type);
                       });
        }
}

// The engines' destinations by depth: 8-bit channels (15 and 16 bits a pixel
// in 2 bytes), or 16-bit channels (24 and 48: three words, 32 and 64: four).
Kind engine_dst(bool wide, unsigned depth) {
    if (wide) return depth == 24 || depth == 48 ? Kind::Rgb48 : Kind::Rgb64;
    if (depth == 15 || depth == 16) return Kind::Rgb16;
    return depth == 24 ? Kind::Rgb24 : Kind::Rgb32;
}

// matrix, rgbType pairs the engines are swept with on short frames.
constexpr uint32_t kEngineCombos[][2] = {{0, 0}, {1, 0x8000}, {2, 2}, {5, 3}, {8, 0x8001}};

bool run_rgb_function(void* sym, const std::string& name, Tally& t) {
    Kind dk, sk;
    if (parse_rgb(name, dk, sk)) {
        auto fn = reinterpret_cast<ToRgb>(sym);
        rgb_sweeps(t, name, dk, sk, [&](Buffers& b, const Geometry& g, uint32_t m, uint32_t type) {
            return fn(b.dst, b.src, g.w, g.h, g.dp, g.sp, m, type);
        });
        return true;
    }
    if (name == "cycbcr_uyvy_to_rgb32_Alpha" || name == "cycbcr_uyvy_to_rgb32_alpha_avx2") {
        auto fn = reinterpret_cast<ToRgbAlpha>(sym);
        // The alpha plane (width * height + 1 bytes) in the second half of the
        // source buffer, past anything the packed frame reaches.
        rgb_sweeps(t, name, Kind::Rgb32, Kind::Packed,
                   [&](Buffers& b, const Geometry& g, uint32_t m, uint32_t type) {
                       const uint8_t* alpha = b.src + b.bytes / 2;
                       return fn(b.dst, b.src, alpha, g.w, g.h, g.dp, g.sp, m, type);
                   });
        return true;
    }
    const bool semi = name == "cycbcrBi_ToRGBInt";
    const bool wide = name == "cycbcr_ToRGBInt16";
    if (semi || wide || name == "cycbcr_ToRGB" || name == "cycbcr_ToRGBInt" ||
        name == "cycbcr_ToRGBInt_avx2" || name == "cycbcr_ToRGBFloat") {
        auto fn = reinterpret_cast<RgbEngine>(sym);
        // Sources: the four packed shapes and the three planar layouts, as the
        // entry points hand them over (planes by pitch * height, chroma pitch
        // srcPitch / 2); the two-plane engine a Y plane and Cb, Cr pairs.
        const int sources = semi ? 1 : 7;
        const std::vector<unsigned> depths = wide ? std::vector<unsigned>{16, 24, 32, 48, 64}
                                                  : std::vector<unsigned>{8, 15, 16, 24, 32};
        for (int source = 0; source < sources; ++source)
            for (unsigned depth : depths) {
                const bool packedSource = !semi && source < 4;
                const Kind sk = packedSource ? Kind::Packed : Kind::Planar;
                const Kind dk = engine_dst(wide, depth);
                const int32_t is422 = packedSource || source == 6 ? 1 : 0;
                auto body = [&](Buffers& b, const Geometry& g, uint32_t m, uint32_t type) {
                    const uint8_t *y, *cb, *cr;
                    if (semi) {
                        y = b.src;
                        cb = b.src + size_t{g.sp} * g.h;
                        cr = cb + 1;
                    } else if (packedSource) {
                        const Packed p = packed(source, b.src);
                        y = p.y, cb = p.cb, cr = p.cr;
                    } else {
                        const Planes p = planes(source - 4, b.src, g.sp, g.h);
                        y = p.y, cb = p.cb, cr = p.cr;
                    }
                    return fn(b.dst, y, cb, cr, g.w, g.h, g.dp, g.sp, m, type, is422,
                              packedSource ? 0u : 1u, depth, g.sp / 2);
                };
                const std::string layout =
                    "source " + std::to_string(source) + " depth " + std::to_string(depth);
                // Tall frames at the widest depth only.
                if (depth == depths.back())
                    sweep_over(t, name, geometries(dk, sk), kRgbLevels,
                               [&](Buffers& b, const Geometry& g, std::string& v) {
                                   v = layout + " matrix 0 type 0";
                                   return body(b, g, 0, 0);
                               });
                for (const auto& [m, type] : kEngineCombos)
                    sweep_over(t, name, short_geometries(dk, sk), kRgbLevels,
                               [&](Buffers& b, const Geometry& g, std::string& v) {
                                   v = layout + " matrix " + std::to_string(m) + " type " +
                                       std::to_string(type);
                                   return body(b, g, m, type);
                               });
            }
        return true;
    }
    return false;
}

// ------------------------------------------------------------------------
// The queries: pure functions of their arguments, hashed value by value.

std::vector<std::string> g_names;  // every name read, for the query by name

void mix(Tally& t, uint64_t v) {
    t.hash = (t.hash ^ v) * 0x100000001B3ull;
    ++t.calls;
}
void mix(Tally& t, const std::string& s) {
    mix(t, hash_bytes(reinterpret_cast<const uint8_t*>(s.data()), s.size(), 0x51ED));
}

// Every accepted code, aliases and "422P" included, RGB (0) and one unknown.
std::vector<uint32_t> query_codes() {
    std::vector<uint32_t> out = {0, 0x12345678u};
    for (const char* s : {"UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422", "422P", "v210",
                          "012v", "2vuy", "IYUV", "NV12", "UYNV", "YUNV"})
        out.push_back(code(s));
    return out;
}
std::vector<unsigned> query_pitches(unsigned w) {
    return {0, w, 2 * w, 3 * w, 4 * w, 2 * w + 36, g_row_bytes(w)};
}

// The exported name a returned function has in this build, or "null".
std::string symbol_of(void* fn) {
    if (fn == nullptr) return "null";
    Dl_info info{};
    if (dladdr(fn, &info) == 0 || info.dli_sname == nullptr) return "unnamed";
    return info.dli_sname;
}

bool run_query(void* sym, const std::string& name, Tally& t) {
    const std::vector<uint32_t> codes = query_codes();
    const unsigned widths[] = {1, 2, 3, 5, 17, 48, 50, 1276, 1920};
    const unsigned heights[] = {0, 1, 2, 3, 1080};
    if (name == "cycbcr_fix_pitch") {
        auto fn = reinterpret_cast<FixPitch>(sym);
        for (uint32_t c : codes)
            for (unsigned w : widths)
                for (unsigned p : query_pitches(w)) mix(t, fn(c, w, p));
        return true;
    }
    if (name == "cycbcr_buffer_sizes") {
        auto fn = reinterpret_cast<BufferSizes>(sym);
        for (uint32_t d : codes)
            for (uint32_t s : codes)
                for (unsigned w : widths)
                    for (unsigned h : heights)
                        for (unsigned dp : query_pitches(w))
                            for (unsigned sp : query_pitches(w)) {
                                uint64_t db = 1, sb = 1;
                                mix(t, fn(d, s, w, h, dp, sp, &db, &sb));
                                mix(t, db);
                                mix(t, sb);
                            }
        return true;
    }
    if (name == "cycbcr_converter_buffer_sizes") {
        auto fn = reinterpret_cast<NamedBufferSizes>(sym);
        std::vector<std::string> names = g_names;
        names.push_back("cycbcr_no_such_converter");
        for (const std::string& n : names)
            for (unsigned w : widths)
                for (unsigned h : heights)
                    for (unsigned dp : query_pitches(w))
                        for (unsigned sp : query_pitches(w))
                            for (const auto& [m, type] : kEngineCombos) {
                                uint64_t db = 1, sb = 1;
                                mix(t, fn(n.c_str(), w, h, dp, sp, m, type, &db, &sb));
                                mix(t, db);
                                mix(t, sb);
                            }
        return true;
    }
    if (name == "cycbcr_pair_converter" || name == "cycbcr_rgb_pair_converter") {
        auto fn = reinterpret_cast<PairLookup>(sym);
        for (uint32_t d : codes)
            for (uint32_t s : codes) mix(t, symbol_of(fn(d, s)));
        return true;
    }
    return false;
}

bool run_function(void* lib, const std::string& name, Tally& t) {
    void* sym = dlsym(lib, name.c_str());
    if (sym == nullptr) return false;
    const FormatName *from = nullptr, *to = nullptr;
    std::string suffix;
    if (parse_pair(name, from, to, suffix) || name == "cycbcr_interleaved_copy") {
        const Kind dk = to ? to->kind : Kind::Packed, sk = from ? from->kind : Kind::Packed;
        auto fn = reinterpret_cast<Conv>(sym);
        sweep(t, name, dk, sk, [&](Buffers& b, const Geometry& g, std::string&) {
            return fn(b.dst, b.src, g.w, g.h, g.dp, g.sp);
        });
        // In place: the source copied into the destination buffer first.
        sweep(
            t, name, dk, sk,
            [&](Buffers& b, const Geometry& g, std::string& v) {
                v = "in-place";
                std::memcpy(b.dst, b.src, b.bytes);
                return fn(b.dst, b.dst, g.w, g.h, g.dp, g.sp);
            },
            false);
        return true;
    }
    if (name == "cycbcr_toplanar" || name == "cycbcr_toplanar_sse2" ||
        name == "cycbcr_toplanar_fieldinvert") {
        auto fn = reinterpret_cast<Engine11>(sym);
        for (int shape = 0; shape < 4; ++shape)
            for (int layout = 0; layout < 3; ++layout)
                for (unsigned mode = 0; mode < 2; ++mode)
                    sweep(t, name, Kind::Planar, Kind::Packed,
                          [&](Buffers& b, const Geometry& g, std::string& v) {
                              v = "shape " + std::to_string(shape) + " layout " +
                                  std::to_string(layout) + " mode " + std::to_string(mode);
                              const Packed s = packed(shape, b.src);
                              const Planes d = planes(layout, b.dst, g.dp, g.h);
                              return fn(s.y, s.cb, s.cr, d.y, d.cb, d.cr, g.w, g.h, g.dp, g.sp,
                                        mode);
                          });
        return true;
    }
    if (name == "cycbcr_fromplanar" || name == "cycbcr_fromplanar_fieldinvert") {
        auto fn = reinterpret_cast<Engine11>(sym);
        for (int shape = 0; shape < 4; ++shape)
            for (int layout = 0; layout < 3; ++layout)
                for (int byPitch = 0; byPitch < 2; ++byPitch)
                    for (unsigned mode = 0; mode < 3; ++mode)
                        sweep(t, name, Kind::Packed, Kind::Planar,
                              [&](Buffers& b, const Geometry& g, std::string& v) {
                                  v = "shape " + std::to_string(shape) + " layout " +
                                      std::to_string(layout) + " bypitch " +
                                      std::to_string(byPitch) + " mode " + std::to_string(mode);
                                  const Planes s = planes(layout, b.src, byPitch ? g.sp : g.w, g.h);
                                  const Packed d = packed(shape, b.dst);
                                  return fn(s.y, s.cb, s.cr, d.y, d.cb, d.cr, g.w, g.h, g.dp, g.sp,
                                            mode);
                              });
        return true;
    }
    if (name == "Tov210") {
        auto fn = reinterpret_cast<ToV210>(sym);
        for (int shape = 0; shape < 4; ++shape)
            sweep(t, name, Kind::V210, Kind::Packed,
                  [&](Buffers& b, const Geometry& g, std::string& v) {
                      v = "shape " + std::to_string(shape);
                      const Packed s = packed(shape, b.src);
                      return fn(b.dst, s.y, s.cb, s.cr, g.w, g.h, g.dp, g.sp, 1, 0);
                  });
        for (int layout = 0; layout < 3; ++layout)
            sweep(t, name, Kind::V210, Kind::Planar,
                  [&](Buffers& b, const Geometry& g, std::string& v) {
                      v = "layout " + std::to_string(layout);
                      const Planes s = planes(layout, b.src, g.sp, g.h);
                      return fn(b.dst, s.y, s.cb, s.cr, g.w, g.h, g.dp, g.sp, layout == 2, 1);
                  });
        return true;
    }
    if (name == "Fromv210" || name == "Fromv210_16") {
        auto fn = reinterpret_cast<FromV210>(sym);
        const unsigned bps = name == "Fromv210" ? 1 : 2;
        for (int shape = 0; shape < 4; ++shape)
            sweep(t, name, Kind::Packed, Kind::V210,
                  [&](Buffers& b, const Geometry& g, std::string& v) {
                      v = "shape " + std::to_string(shape);
                      const Packed d = packed(shape, b.dst);
                      const size_t k = bps;  // 16-bit samples at byte offsets scaled
                      return fn(b.dst + (d.y - b.dst) * k, b.dst + (d.cb - b.dst) * k,
                                b.dst + (d.cr - b.dst) * k, b.src, g.w, g.h, g.dp * bps, g.sp, 1,
                                0);
                  });
        for (int layout = 0; layout < 3; ++layout)
            sweep(t, name, Kind::Planar, Kind::V210,
                  [&](Buffers& b, const Geometry& g, std::string& v) {
                      v = "layout " + std::to_string(layout);
                      const Planes d = planes(layout, b.dst, g.dp * bps, g.h);
                      return fn(d.y, d.cb, d.cr, b.src, g.w, g.h, g.dp * bps, g.sp, layout == 2, 1);
                  });
        return true;
    }
    if (name == "cycbcr_012v_to_planar422" || name == "cycbcr_012v_to_planar422_avx2" ||
        name == "cycbcr_v210to_planar_avx2" || name == "cycbcr_012v_to_planar422_16" ||
        name == "cycbcr_012v_to_planar422_16_avx2" || name == "cycbcr_v210to_planar16_avx2") {
        auto fn = reinterpret_cast<Planes8>(sym);
        const unsigned bps = name.find("16") != std::string::npos ? 2 : 1;
        sweep(t, name, Kind::Planar, Kind::V210, [&](Buffers& b, const Geometry& g, std::string&) {
            const Planes d = planes(2, b.dst, g.dp * bps, g.h);
            return fn(d.y, d.cb, d.cr, b.src, g.w, g.h, g.dp * bps, g.sp);
        });
        return true;
    }
    if (name == "cycbcr_planar_copy") {
        auto fn = reinterpret_cast<PlanarCopy>(sym);
        for (int dl = 0; dl < 2; ++dl)
            for (int sl = 0; sl < 2; ++sl)
                sweep(t, name, Kind::Planar, Kind::Planar,
                      [&](Buffers& b, const Geometry& g, std::string& v) {
                          v = "layouts " + std::to_string(dl) + std::to_string(sl);
                          const Planes d = planes(dl, b.dst, g.dp, g.h);
                          const Planes s = planes(sl, b.src, g.sp, g.h);
                          return fn(d.y, d.cb, d.cr, s.y, s.cb, s.cr, g.w, g.h, g.dp, g.sp);
                      });
        return true;
    }
    if (name == "cycbcr_planar_422_420" || name == "cycbcr_planar_422_420_avx2") {
        auto fn = reinterpret_cast<Planar422>(sym);
        for (unsigned d422 = 0; d422 < 2; ++d422)
            for (unsigned s422 = 0; s422 < 2; ++s422)
                sweep(t, name, Kind::Planar, Kind::Planar,
                      [&](Buffers& b, const Geometry& g, std::string& v) {
                          v = "flags " + std::to_string(d422) + std::to_string(s422);
                          const Planes d = planes(d422 ? 2 : 0, b.dst, g.dp, g.h);
                          const Planes s = planes(s422 ? 2 : 1, b.src, g.sp, g.h);
                          return fn(d.y, d.cb, d.cr, s.y, s.cb, s.cr, g.w, g.h, g.dp, g.sp, d422,
                                    s422);
                      });
        return true;
    }
    if (name.rfind("qb_v210_planar", 0) == 0) {
        auto fn = reinterpret_cast<Kernel>(sym);
        const bool aligned = name.find("_aligned") != std::string::npos;
        sweep(t, name, Kind::Planar, Kind::V210, [&](Buffers& b, const Geometry& g, std::string&) {
            (void)aligned;  // the buffers are 64-byte aligned either way
            const size_t n = 2 * round_up(g.w, 6) + 64;
            fn(b.src, b.dst, b.dst + 2 * n, b.dst + 3 * n, g.w);
            return 0u;
        });
        return true;
    }
    if (name == "cycbcr_invert") {
        auto fn = reinterpret_cast<Invert>(sym);
        sweep(t, name, Kind::Packed, Kind::Packed,
              [&](Buffers& b, const Geometry& g, std::string&) {
                  fn(b.dst, g.dp, g.h);
                  return 0u;
              });
        return true;
    }
    if (name == "v210_row_bytes") {
        auto fn = reinterpret_cast<RowBytes>(sym);
        for (unsigned w = 0; w < 5000; ++w) {
            t.hash = (t.hash ^ fn(w)) * 0x100000001B3ull;
            ++t.calls;
        }
        return true;
    }
    if (name.find("_scale_planar") != std::string::npos) {
        // The reductions: every scale they tell apart (the low 16 bits count),
        // both chroma flags; the planes at fixed places, rows packed.
        auto fn = reinterpret_cast<Scale>(sym);
        const Kind src = name.find("012v") != std::string::npos ? Kind::V210 : Kind::Packed;
        for (unsigned scale : {0u, 100u, 150u, 200u, 300u, 400u, 500u, 0x10000u + 200u})
            for (unsigned is422 = 0; is422 < 2; ++is422)
                sweep(
                    t, name, Kind::Planar, src,
                    [&](Buffers& b, const Geometry& g, std::string& v) {
                        v = "scale " + std::to_string(scale) + " is422 " + std::to_string(is422);
                        const size_t row =
                            std::max<size_t>({g.dp, g.sp, 4 * round_up(g.w, 48) + 128});
                        uint8_t* cb = b.dst + row * (g.h + 1);
                        uint8_t* cr = cb + row / 2 * (g.h + 1);
                        return fn(b.dst, cb, cr, b.src, g.w, g.h, g.dp, g.sp, scale, is422);
                    },
                    scale == 150 || scale == 200 || scale == 400);
        return true;
    }
    if (name == "cycbcr_transcode") {
        auto fn = reinterpret_cast<Transcode>(sym);
        const char* codes[] = {"UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422",
                               "422P", "v210", "012v", "2vuy", "IYUV", "NV12"};
        for (const char* s : codes)
            for (const char* d : codes)
                sweep(
                    t, name, Kind::V210, Kind::V210,
                    [&](Buffers& b, const Geometry& g, std::string& v) {
                        v = std::string(s) + " to " + d;
                        return fn(b.dst, b.src, g.w, g.h, g.dp, g.sp, 0, 0, code(d), code(s));
                    },
                    false);
        return true;
    }
    return run_rgb_function(sym, name, t) || run_query(sym, name, t);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: output_hashes LIBRARY [--trace NAME] < names\n");
        return 2;
    }
    if (argc == 4 && std::string(argv[2]) == "--trace") g_trace = argv[3];
    void* lib = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (lib == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    g_level = static_cast<uint32_t*>(dlsym(lib, "gdwProcType"));
    g_row_bytes = reinterpret_cast<RowBytes>(dlsym(lib, "v210_row_bytes"));
    if (g_level == nullptr || g_row_bytes == nullptr) {
        std::fprintf(stderr, "not a libcycbcr build\n");
        return 2;
    }
    const std::map<std::string, int> ignored = {
        {"gdwProcType", 0},      {"cycbcr_set_cpu", 0},       {"cycbcr_get_cpu", 0},
        {"cycbcr_cpu_flags", 0}, {"cycbcr_can_transcode", 0}, {"_Z9_fixPitchjjRj", 0},
        {"cycbcr_version", 0},   {"cycbcr_version_number", 0}};
    std::string word;
    while (std::cin >> word) g_names.push_back(word);
    int unknown = 0;
    for (const std::string& name : g_names) {
        if (ignored.count(name)) continue;
        if (!g_trace.empty() && name != g_trace) continue;
        Tally t;
        if (!run_function(lib, name, t)) {
            std::printf("%-40s UNKNOWN SHAPE\n", name.c_str());
            ++unknown;
            continue;
        }
        if (g_trace.empty())
            std::printf("%-40s %8llu %016llx\n", name.c_str(),
                        static_cast<unsigned long long>(t.calls),
                        static_cast<unsigned long long>(t.hash));
        std::fflush(stdout);
    }
    return unknown == 0 ? 0 : 1;
}
