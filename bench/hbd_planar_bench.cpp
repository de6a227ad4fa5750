// High-bit-depth planar: v210 into 16-bit planes (4:2:2 p10 and p16, 4:2:0 p10,
// 4:4:4 p10), 16-bit 4:2:2 and 4:2:0 planes into UYVY, and UYVY into 4:4:4 p10,
// at the plain level and at level 5, against memcpy of the same bytes, FFmpeg's
// v210 decoder (v210 -> yuv422p10) and libswscale (yuv422p10le -> uyvy422).
//
// These converters take separate plane pointers, so the family keeps its own
// frames (16-bit planes need more room than the shared buffers hold) and its own
// memcpy over them. Every benchmark here is timed by the wall clock: 4:2:2 p10
// to UYVY runs 4K frames on eight threads, and a CPU-time rate would count only
// the calling thread's share.
#include <cycbcr.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_SWS
extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "hbd planar";

// One frame size's buffers, made on first use: a v210 frame, three planes of 16-
// bit samples wide enough for 4:4:4 and a UYVY frame.
struct Frames {
    Block v210, y, cb, cr, uyvy;
};
Frames& frames(const FrameSize& size) {
    static std::map<unsigned, Frames> all;
    Frames& f = all[size.width];
    if (!f.v210) {
        const size_t px = size.pixels();
        f.v210 = random_block(frame_bytes(Format::V210, size) + 4096, 1);
        f.y = random_block(2 * px + 4096, 2);
        f.cb = random_block(2 * px + 4096, 3);
        f.cr = random_block(2 * px + 4096, 4);
        f.uyvy = random_block(2 * px + 4096, 5);
    }
    return f;
}

// Registers "<name>/<size>/plain" and "/level5" and returns their summary row.
SummaryRow ours(const std::string& name, const FrameSize& size, size_t moved,
                std::function<void(Frames&)> run) {
    SummaryRow row;
    row.family = kFamily;
    row.size = size.label();
    row.converter = name;
    row.level5_form = true;
    row.plain = "hbd:" + name + "/" + row.size + "/plain";
    row.level5 = "hbd:" + name + "/" + row.size + "/level5";
    FrameCall call = [=](uint8_t*, const uint8_t*) { run(frames(size)); };
    register_call(row.plain, call, size, moved, 0, false)->UseRealTime();
    register_call(row.level5, call, size, moved, 5, true)->UseRealTime();
    row.memcpy = memcpy_benchmark(size, moved / 2);
    row.memcpy_target = 0.5;
    return row;
}

#ifdef CYCBCR_BENCH_SWS
// libswscale's yuv422p10le -> uyvy422, one thread, point sampling (the least
// work it offers), on the same planes.
std::string register_sws_uyvy(const FrameSize& size, size_t moved) {
    const std::string name = "sws:yuv422p10le->uyvy422/" + size.label();
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    static std::map<unsigned, SwsContext*> contexts;
    FrameCall call = [=](uint8_t*, const uint8_t*) {
        SwsContext*& c = contexts[size.width];
        if (c == nullptr)
            c = sws_getContext(w, h, AV_PIX_FMT_YUV422P10LE, w, h, AV_PIX_FMT_UYVY422, SWS_POINT,
                               nullptr, nullptr, nullptr);
        Frames& f = frames(size);
        const uint8_t* in[3] = {f.y.get(), f.cb.get(), f.cr.get()};
        const int inStride[3] = {2 * w, w, w};
        uint8_t* out[1] = {f.uyvy.get()};
        const int outStride[1] = {2 * w};
        sws_scale(c, in, inStride, 0, h, out, outStride);
    };
    Verdict check = [=] {
        SwsContext* c = sws_getContext(w, h, AV_PIX_FMT_YUV422P10LE, w, h, AV_PIX_FMT_UYVY422,
                                       SWS_POINT, nullptr, nullptr, nullptr);
        sws_freeContext(c);
        return c == nullptr ? std::string("libswscale refuses yuv422p10le -> uyvy422")
                            : std::string();
    };
    register_call(name, call, size, moved, -1, false, check)->UseRealTime();
    return name;
}
#endif

}  // namespace

void register_hbd_planar_benchmarks() {
    set_family_heading(kFamily,
                       "v210 <-> 16-bit planes and 16-bit planes <-> UYVY: source plus "
                       "destination bytes per call, wall clock; targets: v210 -> yuv422p10 "
                       ">= 1.5x FFmpeg's decoder, yuv422p10 -> UYVY >= 5x libswscale, "
                       ">= 50% of memcpy");
    for (const FrameSize& size : kFrameSizes) {
        const unsigned w = size.width, h = size.height;
        const size_t px = size.pixels(), v210 = frame_bytes(Format::V210, size);
        auto p16 = [](Block& b) { return b.get(); };

        SummaryRow r = ours("012v_to_yuv422p10", size, v210 + 4 * px, [=](Frames& f) {
            cycbcr_012v_to_yuv422p10(p16(f.y), p16(f.cb), p16(f.cr), f.v210.get(), w, h, 2 * w, 0);
        });
#ifdef CYCBCR_BENCH_FFMPEG
        // Registered by the v210 family; it moves the same bytes per frame.
        r.peer = "ffmpeg:v210dec/" + size.label();
        r.peer_label = "ffmpeg:v210dec";
        r.peer_target = 1.5;
#endif
        add_summary_row(r);
        add_summary_row(ours("012v_to_yuv422p16", size, v210 + 4 * px, [=](Frames& f) {
            cycbcr_012v_to_yuv422p16(p16(f.y), p16(f.cb), p16(f.cr), f.v210.get(), w, h, 2 * w, 0);
        }));
        add_summary_row(ours("012v_to_yuv420p10", size, v210 + 3 * px, [=](Frames& f) {
            cycbcr_012v_to_yuv420p10(p16(f.y), p16(f.cb), p16(f.cr), f.v210.get(), w, h, 2 * w, w,
                                     0);
        }));
        add_summary_row(ours("012v_to_yuv444p10", size, v210 + 6 * px, [=](Frames& f) {
            cycbcr_012v_to_yuv444p10(p16(f.y), p16(f.cb), p16(f.cr), f.v210.get(), w, h, 2 * w, 0);
        }));

        SummaryRow u = ours("yuv422p10_to_uyvy", size, 6 * px, [=](Frames& f) {
            cycbcr_yuv422p10_to_uyvy(f.uyvy.get(), f.y.get(), f.cb.get(), f.cr.get(), w, h, 2 * w,
                                     2 * w);
        });
#ifdef CYCBCR_BENCH_SWS
        u.peer = register_sws_uyvy(size, 6 * px);
        u.peer_label = "sws:yuv422p10le->uyvy422";
        u.peer_target = 5.0;
#endif
        add_summary_row(u);
        add_summary_row(ours("yuv420p10_to_uyvy", size, 5 * px, [=](Frames& f) {
            cycbcr_yuv420p10_to_uyvy(f.uyvy.get(), f.y.get(), f.cb.get(), f.cr.get(), w, h, 2 * w,
                                     2 * w);
        }));
        add_summary_row(ours("yuv420p16_to_uyvy", size, 5 * px, [=](Frames& f) {
            cycbcr_yuv420p16_to_uyvy(f.uyvy.get(), f.y.get(), f.cb.get(), f.cr.get(), w, h, 2 * w,
                                     2 * w);
        }));
        add_summary_row(ours("uyvy_to_yuv444p10", size, 8 * px, [=](Frames& f) {
            cycbcr_uyvy_to_yuv444p10(f.y.get(), f.cb.get(), f.cr.get(), f.uyvy.get(), w, h, 2 * w,
                                     2 * w);
        }));
    }
}

}  // namespace cycbcr_bench
