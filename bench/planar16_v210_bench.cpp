// High-bit-depth planar into v210: every converter at the plain level and at
// level 5 on three planes of 16-bit samples laid out in the shared source
// buffer, beside memcpy and, for 10-bit 4:2:2, FFmpeg's v210 encoder (the same
// work: yuv422p10 planes into v210). The wide-frame path of the plain level is
// timed on its own: eight bands against the calling thread's _internal on the
// whole frame at 3840x2160, and the cost of starting the bands on a frame just
// above the threshold (2049x8). All by wall-clock time, so the bands' threads
// count.
#include <cycbcr.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench_support.h"

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "planar16 -> v210";

using Planar16 = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                  unsigned int, unsigned int, unsigned int, unsigned int);

struct Converter16 {
    const char* name;  // without the cycbcr_ prefix
    Planar16 entry, avx2;
    unsigned chromaShift;  // 0: 4:4:4, 1: 4:2:2 (half-width chroma)
    bool half420;          // 4:2:0: half the chroma rows
};

const Converter16 kConverters[] = {
    {"yuv422p10_to_012v", cycbcr_yuv422p10_to_012v, cycbcr_yuv422p10_to_012v_avx2, 1, false},
    {"yuv422p12_to_012v", cycbcr_yuv422p12_to_012v, cycbcr_yuv422p12_to_012v_avx2, 1, false},
    {"yuv422p16_to_012v", cycbcr_yuv422p16_to_012v, cycbcr_yuv422p16_to_012v_avx2, 1, false},
    {"yuv444p10_to_012v", cycbcr_yuv444p10_to_012v, cycbcr_yuv444p10_to_012v_avx2, 0, false},
    {"yuv444p12_to_012v", cycbcr_yuv444p12_to_012v, cycbcr_yuv444p12_to_012v_avx2, 0, false},
    {"yuv420p10_to_012v", cycbcr_yuv420p10_to_012v, cycbcr_yuv420p10_to_012v_avx2, 1, true},
    {"yuv420p16_to_012v", cycbcr_yuv420p16_to_012v, cycbcr_yuv420p16_to_012v_avx2, 1, true},
};

// The planes in the shared source buffer: Y, then Cb, then Cr, rows 2 * width
// bytes (chroma rows half that for 4:2:2 and 4:2:0, as the converters take them).
struct Shape16 {
    unsigned width, height, srcPitch, dstPitch;
    size_t cbAt, crAt;
    size_t moved;  // the three planes plus the v210 frame
};
Shape16 shape_of(const Converter16& c, const FrameSize& size) {
    Shape16 s{size.width, size.height, 2 * size.width, v210_row_bytes(size.width), 0, 0, 0};
    const size_t y = size_t{s.srcPitch} * s.height;
    const size_t chromaRows = c.half420 ? (s.height + 1) / 2 : s.height;
    const size_t chroma = size_t{s.srcPitch >> c.chromaShift} * chromaRows;
    s.cbAt = y;
    s.crAt = y + chroma;
    s.moved = y + 2 * chroma + size_t{s.dstPitch} * s.height;
    return s;
}

FrameCall call_of(Planar16 fn, const Shape16& s) {
    return [=](uint8_t* dst, const uint8_t* src) {
        fn(dst, src, src + s.cbAt, src + s.crAt, s.width, s.height, s.dstPitch, s.srcPitch);
    };
}

// Whether the shared buffers hold what the call reaches (the buffer-size query's
// answer for each pointer, from where the planes are placed).
bool fits(const char* name, const Shape16& s, const FrameSize& room) {
    const unsigned int pitches[2] = {s.dstPitch, s.srcPitch};
    uint64_t bytes[4] = {};
    if (cycbcr_converter_pointer_sizes(name, s.width, s.height, pitches, 2, bytes) == 0)
        return false;
    const uint64_t limit = buffer_room(room);
    return bytes[0] <= limit && bytes[1] <= limit && s.cbAt + bytes[2] <= limit &&
           s.crAt + bytes[3] <= limit;
}

// The calling thread's converter against the bands on one frame size: rows for
// the note.
struct BandTiming {
    std::string label, internal, banded;
};

}  // namespace

void register_planar16_v210_benchmarks() {
    set_family_heading(kFamily,
                       "three planes of 16-bit samples plus the v210 frame per call, wall-clock "
                       "time; level 5 target >= 1.5x FFmpeg's v210 encoder (yuv422p10, the "
                       "same bytes per frame) and >= 60% of memcpy");
    for (const FrameSize& size : kFrameSizes)
        for (const Converter16& c : kConverters) {
            const Shape16 s = shape_of(c, size);
            const std::string full = std::string("cycbcr_") + c.name;
            if (!fits(full.c_str(), s, size)) {
                std::fprintf(stderr, "%s: the shared buffers are too small\n", c.name);
                std::exit(1);
            }
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = c.name;
            row.plain = std::string(c.name) + "/" + size.label() + "/plain";
            row.level5 = std::string(c.name) + "/" + size.label() + "/level5";
            // The 16-bit 4:2:0 converter has no AVX2 code: level 5 runs it plain.
            row.level5_form = c.avx2 != cycbcr_yuv420p16_to_012v_avx2;
            register_call(row.plain, call_of(c.entry, s), size, s.moved, 0, false)->UseRealTime();
            register_call(row.level5, call_of(c.entry, s), size, s.moved, 5, true)->UseRealTime();
            row.memcpy = memcpy_benchmark(size, s.moved / 2);
            row.memcpy_target = 0.60;
#ifdef CYCBCR_BENCH_FFMPEG
            if (c.entry == cycbcr_yuv422p10_to_012v) {
                // Registered by the v210 family: yuv422p10 into v210 through the
                // codec API, counted in the same bytes as ours.
                row.peer = "ffmpeg:v210enc/" + size.label();
                row.peer_label = "ffmpeg:v210enc";
                row.peer_target = 1.5;
            }
#endif
            add_summary_row(std::move(row));
        }

    // Bands against the calling thread, at the plain level.
    std::vector<BandTiming> timings;
    const Converter16& c = kConverters[0];
    for (const FrameSize& size : {FrameSize{3840, 2160}, FrameSize{2049, 8}}) {
        const Shape16 s = shape_of(c, size);
        if (!fits("cycbcr_yuv422p10_to_012v", s, size)) std::exit(1);
        BandTiming t{size.label(), std::string(c.name) + "_internal/" + size.label() + "/plain",
                     std::string(c.name) + "/" + size.label() + "/bands"};
        register_call(t.internal, call_of(cycbcr_yuv422p10_to_012v_internal, s), size, s.moved, 0,
                      false)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
        register_call(t.banded, call_of(cycbcr_yuv422p10_to_012v, s), size, s.moved, 0, false)
            ->UseRealTime()
            ->Unit(benchmark::kMicrosecond);
        timings.push_back(t);
    }
    add_summary_note([timings](std::FILE* out, const Medians& m) {
        std::fprintf(out,
                     "\nyuv422p10_to_012v at the plain level, wall-clock median per frame: eight "
                     "bands (the entry) against _internal on the whole frame.\n");
        std::fprintf(out, "%-10s %14s %14s %10s\n", "size", "_internal us", "bands us", "speed-up");
        for (const BandTiming& t : timings) {
            const double one = m.items_per_second(t.internal), eight = m.items_per_second(t.banded);
            if (one == 0 || eight == 0) continue;
            std::fprintf(out, "%-10s %14.1f %14.1f %9.2fx\n", t.label.c_str(), 1e6 / one,
                         1e6 / eight, eight / one);
        }
    });
}

}  // namespace cycbcr_bench
