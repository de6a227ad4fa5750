// RGB to planar YCbCr in 16-bit containers: RGB64 into 12-bit 4:2:2 and 10-bit
// 4:4:4, RGB64 into 16-bit 4:2:2, RGB10 into 10-bit 4:2:2, RGB32 into 10-bit
// 4:4:4, at the plain level and at level 5, against memcpy of the same bytes and
// libswscale's rgba64le -> yuv422p12le (one thread, point sampling).
//
// These converters take separate plane pointers, so the family keeps its own
// frames (64-bit sources and 16-bit planes need more room than the shared
// buffers hold) and its own memcpy over them.
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

constexpr const char* kFamily = "rgb to planar16";

// One frame size's buffers, made on first use: a 64-bit RGB frame (also read
// as RGB32 and RGB10), three planes wide enough for 4:4:4.
struct Frames {
    Block rgb, y, cb, cr;
};
Frames& frames(const FrameSize& size) {
    static std::map<unsigned, Frames> all;
    Frames& f = all[size.width];
    if (!f.rgb) {
        const size_t px = size.pixels();
        f.rgb = random_block(8 * px + 4096, 11);
        f.y = random_block(2 * px + 4096, 12);
        f.cb = random_block(2 * px + 4096, 13);
        f.cr = random_block(2 * px + 4096, 14);
    }
    return f;
}

// Registers "<name>/<size>/plain" and "/level5" and returns their summary row.
SummaryRow ours(const std::string& name, const FrameSize& size, size_t moved, bool vector,
                std::function<void(Frames&)> run) {
    SummaryRow row;
    row.family = kFamily;
    row.size = size.label();
    row.converter = name;
    row.level5_form = vector;
    row.plain = "p16:" + name + "/" + row.size + "/plain";
    row.level5 = "p16:" + name + "/" + row.size + "/level5";
    FrameCall call = [=](uint8_t*, const uint8_t*) { run(frames(size)); };
    register_call(row.plain, call, size, moved, 0, false)->UseRealTime();
    register_call(row.level5, call, size, moved, 5, true)->UseRealTime();
    row.memcpy = memcpy_benchmark(size, moved / 2);
    return row;
}

#ifdef CYCBCR_BENCH_SWS
// libswscale's rgba64le -> yuv422p12le, one thread, point sampling (the least
// work it offers), on the same source and planes. Its arithmetic is its own, so
// nothing is compared.
std::string register_sws_p12(const FrameSize& size, size_t moved) {
    const std::string name = "sws:rgba64le->yuv422p12le/" + size.label();
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    static std::map<unsigned, SwsContext*> contexts;
    auto context = [=]() -> SwsContext*& {
        SwsContext*& c = contexts[size.width];
        if (c == nullptr)
            c = sws_getContext(w, h, AV_PIX_FMT_RGBA64LE, w, h, AV_PIX_FMT_YUV422P12LE, SWS_POINT,
                               nullptr, nullptr, nullptr);
        return c;
    };
    FrameCall call = [=](uint8_t*, const uint8_t*) {
        Frames& f = frames(size);
        const uint8_t* in[1] = {f.rgb.get()};
        const int inStride[1] = {8 * w};
        uint8_t* out[3] = {f.y.get(), f.cb.get(), f.cr.get()};
        const int outStride[3] = {2 * w, w, w};
        sws_scale(context(), in, inStride, 0, h, out, outStride);
    };
    Verdict check = [=] {
        return context() == nullptr ? std::string("libswscale refuses rgba64le -> yuv422p12le")
                                    : std::string();
    };
    register_call(name, call, size, moved, -1, false, check)->UseRealTime();
    return name;
}
#endif

}  // namespace

void register_rgb_to_planar16_benchmarks() {
    set_family_heading(kFamily,
                       "RGB -> planes of 16-bit samples: source plus destination bytes per "
                       "call, wall clock; target: RGB64 -> yuv422p12 within 2x of libswscale "
                       "(ours/peer >= 0.5)");
    for (const FrameSize& size : kFrameSizes) {
        const unsigned w = size.width, h = size.height;
        const size_t px = size.pixels();

        SummaryRow p12 = ours("RGB64_to_yuv422p12", size, 8 * px + 4 * px, true, [=](Frames& f) {
            cycbcr_RGB64_to_yuv422p12(f.y.get(), f.cb.get(), f.cr.get(), f.rgb.get(), w, h, 2 * w,
                                      w, 8 * w, 2, 2, 64);
        });
#ifdef CYCBCR_BENCH_SWS
        p12.peer = register_sws_p12(size, 8 * px + 4 * px);
        p12.peer_label = "sws:rgba64le->yuv422p12le";
        p12.peer_target = 0.5;
#endif
        add_summary_row(p12);
        add_summary_row(ours("RGB64_to_yuv444p10", size, 8 * px + 6 * px, true, [=](Frames& f) {
            cycbcr_RGB64_to_yuv444p10(f.y.get(), f.cb.get(), f.cr.get(), f.rgb.get(), w, h, 2 * w,
                                      2 * w, 8 * w, 2, 2, 64);
        }));
        add_summary_row(
            ours("RGB64_to_YCbCrPlanar16", size, 8 * px + 4 * px, false, [=](Frames& f) {
                cycbcr_RGB64_to_YCbCrPlanar16(f.y.get(), f.cb.get(), f.cr.get(), f.rgb.get(), w, h,
                                              2 * w, 8 * w, 2, 2, 64);
            }));
        add_summary_row(
            ours("RGB10_to_YCbCrPlanar16", size, 4 * px + 4 * px, false, [=](Frames& f) {
                cycbcr_RGB10_to_YCbCrPlanar16(f.y.get(), f.cb.get(), f.cr.get(), f.rgb.get(), w, h,
                                              2 * w, 4 * w, 2, 0, 10);
            }));
        add_summary_row(ours("RGB32_to_yuv444p10", size, 4 * px + 6 * px, false, [=](Frames& f) {
            cycbcr_RGB32_to_yuv444p10(f.y.get(), f.cb.get(), f.cr.get(), f.rgb.get(), w, h, 2 * w,
                                      2 * w, 4 * w, 2, 0, 32);
        }));
    }
}

}  // namespace cycbcr_bench
