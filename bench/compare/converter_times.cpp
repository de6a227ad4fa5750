// Times every converter of a pair of YCbCr formats in a libcycbcr build, and
// its exported forms, at
// level 5 on 1920x1080 and 3840x2160 frames at their natural pitches, so that
// two builds can be compared converter by converter, including the converters
// the benchmarks do not time. The converters to RGB (and their _avx2 forms) are
// timed too, with matrix 0 and RGB type 0 (B, G, R, A), destination rows of
// width * pixel bytes; other names (engines, queries, the alpha converters) are
// left alone. Prints "name size GB/s" (bytes of the source frame plus the
// destination frame per second, the median of the rounds).
//
//     converter_times libcycbcr.so [rounds] < names   (names from nm -D)
//
// Run it alternately on two builds (bench/compare/compare_times.sh does) so
// that both see the same state of the machine.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Conv = unsigned (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned);
using ToRgb = unsigned (*)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                           uint32_t, uint32_t);

struct Format {
    const char* name;
    int kind;  // 0 packed 4:2:2, 1 planar 4:2:0 (NV12 too), 2 planar 4:2:2, 3 v210,
               // 4, 5, 6 RGB of 2, 3, 4 bytes a pixel
};
constexpr Format kFormats[] = {{"uyvy", 0}, {"yuy2", 0}, {"yvyu", 0}, {"cyuv", 0},
                               {"i420", 1}, {"yv12", 1}, {"p422", 2}, {"012v", 3}};
constexpr Format kRgbSources[] = {{"uyvy", 0}, {"yuy2", 0}, {"yvyu", 0}, {"cyuv", 0},
                                  {"i420", 1}, {"yv12", 1}, {"p422", 2}, {"nv12", 1}};
constexpr Format kRgbFormats[] = {{"rgb555", 4}, {"rgb565", 4}, {"rgb24", 5}, {"rgb32", 6}};

unsigned pitch_of(int kind, unsigned w) {
    if (kind == 0) return 2 * w;
    if (kind == 3) return (w + 47) / 48 * 128;
    if (kind >= 4) return (kind - 2) * w;
    return w;
}
size_t frame_of(int kind, unsigned w, unsigned h) {
    const size_t p = pitch_of(kind, w);
    if (kind == 1) return p * h * 3 / 2;
    if (kind == 2) return p * h * 2;
    return p * h;
}

// A pair's converter, or one of its _avx2 and _opt forms; `rgb` for a converter
// to RGB (or its _avx2 form), which takes matrix and rgbType.
bool parse(const std::string& name, const Format*& from, const Format*& to, bool& rgb) {
    rgb = false;
    for (const auto& f : kFormats)
        for (const auto& t : kFormats)
            if (const std::string pair = std::string("cycbcr_") + f.name + "_to_" + t.name;
                name == pair || name == pair + "_avx2" || name == pair + "_opt") {
                from = &f;
                to = &t;
                return true;
            }
    for (const auto& f : kRgbSources)
        for (const auto& t : kRgbFormats)
            if (const std::string pair = std::string("cycbcr_") + f.name + "_to_" + t.name;
                name == pair || name == pair + "_avx2") {
                from = &f;
                to = &t;
                rgb = true;
                return true;
            }
    return false;
}

uint8_t* aligned(size_t bytes) {
    void* p = nullptr;
    if (posix_memalign(&p, 64, bytes + 4096) != 0) std::abort();
    std::memset(p, 0x5A, bytes + 4096);
    return static_cast<uint8_t*>(p);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: converter_times LIBRARY [rounds] < names\n");
        return 2;
    }
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
    void* lib = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (lib == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    auto* level = static_cast<uint32_t*>(dlsym(lib, "gdwProcType"));
    std::string name;
    std::vector<std::string> names;
    while (std::cin >> name) names.push_back(name);
    std::sort(names.begin(), names.end());
    for (unsigned w : {1920u, 3840u}) {
        const unsigned h = w == 1920 ? 1080 : 2160;
        // The largest frame of any format at this size, for both buffers.
        uint8_t* src = aligned(size_t{4} * w * h);
        uint8_t* dst = aligned(size_t{4} * w * h);
        for (const std::string& n : names) {
            const Format *from = nullptr, *to = nullptr;
            bool rgb = false;
            if (!parse(n, from, to, rgb)) continue;
            void* sym = dlsym(lib, n.c_str());
            if (sym == nullptr) continue;
            const unsigned dp = pitch_of(to->kind, w), sp = pitch_of(from->kind, w);
            const double bytes = double(frame_of(from->kind, w, h) + frame_of(to->kind, w, h));
            std::vector<double> rates;
            for (int r = 0; r < rounds; ++r) {
                *level = 5;
                const int calls = w == 1920 ? 20 : 5;
                const auto t0 = std::chrono::steady_clock::now();
                if (rgb)
                    for (int c = 0; c < calls; ++c)
                        reinterpret_cast<ToRgb>(sym)(dst, src, w, h, dp, sp, 0, 0);
                else
                    for (int c = 0; c < calls; ++c)
                        reinterpret_cast<Conv>(sym)(dst, src, w, h, dp, sp);
                const std::chrono::duration<double> dt = std::chrono::steady_clock::now() - t0;
                rates.push_back(bytes * calls / dt.count() / 1e9);
            }
            std::sort(rates.begin(), rates.end());
            std::printf("%s %ux%u %.2f\n", n.c_str(), w, h, rates[rates.size() / 2]);
            std::fflush(stdout);
        }
        std::free(src);
        std::free(dst);
    }
    return 0;
}
