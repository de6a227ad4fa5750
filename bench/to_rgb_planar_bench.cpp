// YCbCr to three RGB planes: the engines from 8-bit planar 4:2:2 (8-bit, 16-bit
// and float planes), from 10- and 12-bit planar 4:2:2, and the selector's
// image-library route (UYVY, matrix 5), at the plain level and at level 5,
// against memcpy of the same bytes and libyuv's I422ToARGB on the same 8-bit
// planes (frame for frame: it writes four bytes a pixel where the planes take
// three). Matrix 0, RGB type 0, natural pitches.
//
// These converters take separate plane pointers, so the family keeps its own
// frames and its own memcpy over them.
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

constexpr const char* kFamily = "planar RGB";

// One frame size's buffers: 8-bit planes (and a UYVY frame), 10-bit and 12-bit
// planes, three output planes wide enough for floats.
struct Frames {
    Block y, cb, cr, uyvy, y10, cb10, cr10, y12, cb12, cr12, r, g, b;
};
Frames& frames(const FrameSize& size) {
    static std::map<unsigned, Frames> all;
    Frames& f = all[size.width];
    if (!f.y) {
        const size_t px = size.pixels();
        f.y = random_block(px, 1);
        f.cb = random_block(px / 2, 2);
        f.cr = random_block(px / 2, 3);
        f.uyvy = random_block(2 * px, 4);
        f.y10 = random_block(2 * px, 5, 0x03);
        f.cb10 = random_block(px, 6, 0x03);
        f.cr10 = random_block(px, 7, 0x03);
        f.y12 = random_block(2 * px, 13, 0x0F);
        f.cb12 = random_block(px, 14, 0x0F);
        f.cr12 = random_block(px, 15, 0x0F);
        f.r = random_block(4 * px, 8);
        f.g = random_block(4 * px, 9);
        f.b = random_block(4 * px, 10);
    }
    return f;
}

using Engine = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, const uint8_t*,
                                const uint8_t*, unsigned int, unsigned int, unsigned int,
                                unsigned int, QBYCBCRMatrix, QBYCBCRRgbType, int32_t, unsigned int,
                                unsigned int);

// Registers "<name>/<size>/plain" and "/level5" over planar 4:2:2 of `bits`-bit
// samples (16-bit words above 8) into planes of `valueBytes` a value, and
// returns their summary row.
SummaryRow ours(const std::string& name, Engine fn, const FrameSize& size, unsigned bits,
                unsigned valueBytes) {
    const bool wide = bits > 8;
    const unsigned w = size.width, h = size.height;
    const size_t px = size.pixels();
    const size_t moved = (wide ? 4 : 2) * px + 3 * valueBytes * px;
    SummaryRow row;
    row.family = kFamily;
    row.size = size.label();
    row.converter = name;
    row.level5_form = true;
    row.plain = "prgb:" + name + "/" + row.size + "/plain";
    row.level5 = "prgb:" + name + "/" + row.size + "/level5";
    FrameCall call = [=](uint8_t*, const uint8_t*) {
        Frames& f = frames(size);
        const unsigned sb = wide ? 2 : 1;
        const uint8_t* y = bits == 8 ? f.y.get() : bits == 10 ? f.y10.get() : f.y12.get();
        const uint8_t* cb = bits == 8 ? f.cb.get() : bits == 10 ? f.cb10.get() : f.cb12.get();
        const uint8_t* cr = bits == 8 ? f.cr.get() : bits == 10 ? f.cr10.get() : f.cr12.get();
        fn(f.r.get(), f.g.get(), f.b.get(), y, cb, cr, w, h, valueBytes * w, sb * w, 0, 0, 1, 1,
           sb * w / 2);
    };
    register_call(row.plain, call, size, moved, 0, false);
    register_call(row.level5, call, size, moved, 5, true);
    row.memcpy = memcpy_benchmark(size, moved / 2);
    return row;
}

#ifdef CYCBCR_BENCH_LIBYUV
std::string register_libyuv(const FrameSize& size) {
    const std::string name = "prgb:libyuv:I422ToARGB/" + size.label();
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    FrameCall call = [=](uint8_t*, const uint8_t*) {
        Frames& f = frames(size);
        libyuv::I422ToARGB(f.y.get(), w, f.cb.get(), w / 2, f.cr.get(), w / 2, f.r.get(), 4 * w, w,
                           h);
    };
    register_call(name, call, size, 6 * size.pixels(), -1, false);
    return name;
}
#endif

}  // namespace

void register_to_rgb_planar_benchmarks() {
    set_family_heading(kFamily,
                       "YCbCr -> three RGB planes (planar 4:2:2 sources, matrix 0): source plus "
                       "destination bytes per call; target: ToRGBPlanarInt at level 5 >= "
                       "libyuv's I422ToARGB frame for frame");
    for (const FrameSize& size : kFrameSizes) {
        SummaryRow a = ours("ToRGBPlanarInt", cycbcr_ToRGBPlanarInt, size, 8, 1);
#ifdef CYCBCR_BENCH_LIBYUV
        a.peer = register_libyuv(size);
        a.peer_label = "libyuv:I422ToARGB /frame";
        a.peer_per_frame = true;
        a.peer_target = 1.0;
#endif
        add_summary_row(a);
        add_summary_row(ours("ToRGBPlanarInt16", cycbcr_ToRGBPlanarInt16, size, 8, 2));
        add_summary_row(ours("ToRGBPlanarFloat", cycbcr_ToRGBPlanarFloat, size, 8, 4));
        add_summary_row(ours("10ToRGBPlanarInt", cycbcr_10ToRGBPlanarInt, size, 10, 1));
        add_summary_row(ours("10ToRGBPlanarInt16", cycbcr_10ToRGBPlanarInt16, size, 10, 2));
        add_summary_row(ours("12ToRGBPlanar", cycbcr_12ToRGBPlanar, size, 12, 2));

        // The selector's image-library route: UYVY with matrix 5.
        const unsigned w = size.width, h = size.height;
        const size_t moved = 5 * size.pixels();
        SummaryRow s;
        s.family = kFamily;
        s.size = size.label();
        s.converter = "ToRGBPlanar uyvy m5";
        s.level5_form = false;
        s.plain = "prgb:ToRGBPlanar-uyvy-m5/" + s.size + "/plain";
        s.level5 = "prgb:ToRGBPlanar-uyvy-m5/" + s.size + "/level5";
        FrameCall call = [=](uint8_t*, const uint8_t*) {
            Frames& f = frames(size);
            const uint8_t* u = f.uyvy.get();
            cycbcr_ToRGBPlanar(f.r.get(), f.g.get(), f.b.get(), u + 1, u, u + 2, w, h, w, 2 * w, 5,
                               0, 1, 0, w);
        };
        register_call(s.plain, call, size, moved, 0, false);
        register_call(s.level5, call, size, moved, 5, true);
        s.memcpy = memcpy_benchmark(size, moved / 2);
        add_summary_row(s);
    }
}

}  // namespace cycbcr_bench
