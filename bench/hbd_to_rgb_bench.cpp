// High-bit-depth YCbCr to packed RGB at the plain level and at level 5, against
// memcpy of the same bytes and, where it has the conversion, libyuv: 10-bit
// 4:2:2 and 4:2:0 planes to 32-bit B, G, R, A (I210ToARGB, I010ToARGB).
//
// libyuv rounds and scales its own way (its 10-bit readers drop to 8 bits with
// their own BT.601 steps), so its pixels are not ours and are not compared: it
// stands for the same amount of work on the same frames. The engines take
// separate plane pointers, so the family keeps its own frames: planes of random
// 16-bit words (the 10- and 12-bit members read their low bits) at their natural
// pitches, and destinations at width * pixel bytes. A call counts its planes
// plus its RGB frame; timed by the wall clock.
#include <cycbcr.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/convert_argb.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "hbd -> RGB";

// One frame size's buffers, made on first use: 4:2:2 planes of 16-bit samples
// (also read as 4:2:0), one whole 4:2:2 frame and an RGB frame of up to 8 bytes a
// pixel.
struct Frames {
    Block y, cb, cr, frame, rgb;
};
Frames& frames(const FrameSize& size) {
    static std::map<unsigned, Frames> all;
    Frames& f = all[size.width];
    if (!f.y) {
        const size_t px = size.pixels();
        f.y = random_block(2 * px, 1);
        f.cb = random_block(px, 2);
        f.cr = random_block(px, 3);
        f.frame = random_block(4 * px, 4);
        f.rgb = random_block(8 * px, 5);
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
    row.plain = "hbdrgb:" + name + "/" + row.size + "/plain";
    row.level5 = "hbdrgb:" + name + "/" + row.size + "/level5";
    FrameCall call = [=](uint8_t*, const uint8_t*) { run(frames(size)); };
    register_call(row.plain, call, size, moved, 0, false)->UseRealTime();
    register_call(row.level5, call, size, moved, 5, true)->UseRealTime();
    row.memcpy = memcpy_benchmark(size, moved / 2);
    return row;
}

#ifdef CYCBCR_BENCH_LIBYUV
std::string register_libyuv(const std::string& fn, const FrameSize& size, size_t moved,
                            bool is422) {
    const std::string name = "libyuv:" + fn + "/" + size.label();
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    FrameCall call = [=](uint8_t*, const uint8_t*) {
        Frames& f = frames(size);
        const auto* y = reinterpret_cast<const uint16_t*>(f.y.get());
        const auto* u = reinterpret_cast<const uint16_t*>(f.cb.get());
        const auto* v = reinterpret_cast<const uint16_t*>(f.cr.get());
        if (is422)
            libyuv::I210ToARGB(y, w, u, w / 2, v, w / 2, f.rgb.get(), 4 * w, w, h);
        else
            libyuv::I010ToARGB(y, w, u, w / 2, v, w / 2, f.rgb.get(), 4 * w, w, h);
    };
    register_call(name, call, size, moved, -1, false)->UseRealTime();
    return name;
}
#endif

}  // namespace

void register_hbd_to_rgb_benchmarks() {
    set_family_heading(kFamily,
                       "16-bit sample planes -> packed RGB: planes plus RGB bytes per call, wall "
                       "clock; targets: 10-bit 4:2:2 -> BGRA >= libyuv I210ToARGB, 10-bit -> 16 "
                       "bits a channel at level 5 >= 3x plain");
    for (const FrameSize& size : kFrameSizes) {
        const unsigned w = size.width, h = size.height;
        const size_t px = size.pixels();
        // 4:2:2 planes: Y 2 bytes a pixel, Cb and Cr 1 each; 4:2:0 half the chroma.
        auto engine = [=](auto fn, unsigned depth, bool is422) {
            return [=](Frames& f) {
                fn(f.rgb.get(), f.y.get(), f.cb.get(), f.cr.get(), w, h, w * (depth / 8), 2 * w, 0,
                   0, is422 ? 1 : 0, 1, depth, w);
            };
        };
        SummaryRow a =
            ours("10ToRGBInt 422 BGRA", size, 4 * px + 4 * px, engine(cycbcr_10ToRGBInt, 32, true));
#ifdef CYCBCR_BENCH_LIBYUV
        a.peer = register_libyuv("I210ToARGB", size, 8 * px, true);
        a.peer_label = "libyuv:I210ToARGB";
        a.peer_target = 1.0;
#endif
        add_summary_row(a);
        SummaryRow b = ours("10ToRGBInt 420 BGRA", size, 3 * px + 4 * px,
                            engine(cycbcr_10ToRGBInt, 32, false));
#ifdef CYCBCR_BENCH_LIBYUV
        b.peer = register_libyuv("I010ToARGB", size, 7 * px, false);
        b.peer_label = "libyuv:I010ToARGB";
#endif
        add_summary_row(b);
        add_summary_row(ours("10ToRGBInt 422 RGB24", size, 4 * px + 3 * px,
                             engine(cycbcr_10ToRGBInt, 24, true)));
        SummaryRow c = ours("10ToRGBInt16 422 64-bit", size, 4 * px + 8 * px,
                            engine(cycbcr_10ToRGBInt16, 64, true));
        c.plain_target = 3.0;
        add_summary_row(c);
        SummaryRow d = ours("10ToRGBInt16 422 48-bit", size, 4 * px + 6 * px,
                            engine(cycbcr_10ToRGBInt16, 48, true));
        d.plain_target = 3.0;
        add_summary_row(d);
        add_summary_row(
            ours("10ToRGBInt10 422", size, 4 * px + 4 * px, engine(cycbcr_10ToRGBInt10, 32, true)));
        add_summary_row(
            ours("12ToRGB 422 64-bit", size, 4 * px + 8 * px, engine(cycbcr_12ToRGB, 64, true)));
        add_summary_row(
            ours("16ToRGB8 422 BGRA", size, 4 * px + 4 * px, engine(cycbcr_16ToRGB8, 32, true)));
        add_summary_row(ours("planar10ToRGBInt BGRA", size, 4 * px + 4 * px, [=](Frames& f) {
            planar10ToRGBInt(f.rgb.get(), f.frame.get(), w, h, 4 * w, 2 * w, 0, 0, 32);
        }));
    }
}

}  // namespace cycbcr_bench
