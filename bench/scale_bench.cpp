// Reduced-size planar frames: the reductions by 1.5 of UYVY and v210 and the
// v210 reductions by 2, 3 and 4, at the plain level and at level 5, against memcpy
// of the same bytes and libyuv's ScalePlane (box filter) on the three planes of
// an I420 frame of the same size to the same output size (frame for frame:
// libyuv filters every source row, we sample some).
//
// A call counts the source rows it reads (each at its natural size: every even
// row for 1.5, every k-th row for a step k) plus the three planes it writes,
// 4:2:0 output.
#include <cycbcr.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "bench_support.h"
#include "frame/geometry.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/scale.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "scale";

using ScaleFn = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                 unsigned int, unsigned int, unsigned int, unsigned int,
                                 unsigned int);

struct ScaleRow {
    const char* name;
    ScaleFn fn;
    bool v210;
    unsigned int scale;
    const char* label;  // as the summary shows it
};

struct Output {
    uint32_t width, height;  // the output's
    size_t y, chroma;        // plane bytes written
    size_t rows_read;        // distinct source rows
};
Output output_of(const ScaleRow& r, const FrameSize& size) {
    Output o{};
    if (r.scale == 150) {
        o.width = 2 * size.width / 3;
        o.height = 2 * size.height / 3;
        std::set<uint32_t> rows;
        for (uint32_t j = 0; j < o.height; ++j) rows.insert((3 * j >> 1) & ~1u);
        o.rows_read = rows.size();
    } else {
        const uint32_t k = r.scale / 100;
        o.width = (size.width + k - 1) / k;
        o.height = (size.height + k - 1) / k;
        o.rows_read = o.height;
    }
    const size_t row = (o.width + 3) / 4 * 4;
    o.y = row * o.height;
    o.chroma = row / 2 * ((o.height + 1) / 2);
    return o;
}

FrameCall ours(const ScaleRow& r, const FrameSize& size, const Output& o) {
    return [=](uint8_t* dst, const uint8_t* src) {
        r.fn(dst, dst + o.y, dst + o.y + o.chroma, src, size.width, size.height, 0, 0, r.scale, 0);
    };
}

#ifdef CYCBCR_BENCH_LIBYUV
// The planes of an I420 frame of the source size scaled to the output's.
FrameCall libyuv_box(const FrameSize& size, const Output& o) {
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    const int ow = static_cast<int>(o.width), oh = static_cast<int>(o.height);
    return [=](uint8_t* dst, const uint8_t* src) {
        const uint8_t* cb = src + size_t(w) * h;
        const uint8_t* cr = cb + size_t(w / 2) * (h / 2);
        libyuv::ScalePlane(src, w, w, h, dst, ow, ow, oh, libyuv::kFilterBox);
        uint8_t* dcb = dst + size_t(ow) * oh;
        uint8_t* dcr = dcb + size_t(ow / 2) * (oh / 2);
        libyuv::ScalePlane(cb, w / 2, w / 2, h / 2, dcb, ow / 2, ow / 2, oh / 2,
                           libyuv::kFilterBox);
        libyuv::ScalePlane(cr, w / 2, w / 2, h / 2, dcr, ow / 2, ow / 2, oh / 2,
                           libyuv::kFilterBox);
    };
}
#endif

}  // namespace

void register_scale_benchmarks() {
    set_family_heading(kFamily,
                       "scale: source rows read plus planes written per call (4:2:0 output); "
                       "libyuv box-filters an I420 frame, compared frame for frame");
    const ScaleRow rows[] = {
        {"uyvy_scale_planar_1_5", cycbcr_uyvy_scale_planar_1_5, false, 150, "uyvy_scale_1_5"},
        {"012v_scale_planar_1_5", cycbcr_012v_scale_planar_1_5, true, 150, "012v_scale_1_5"},
        {"012v_scale_planar", cycbcr_012v_scale_planar, true, 200, "012v_scale_200"},
        {"012v_scale_planar", cycbcr_012v_scale_planar, true, 300, "012v_scale_300"},
        {"012v_scale_planar", cycbcr_012v_scale_planar, true, 400, "012v_scale_400"},
    };
    for (const FrameSize& size : kFrameSizes)
        for (const ScaleRow& r : rows) {
            const Output o = output_of(r, size);
            const size_t srcRow = r.v210 ? cycbcr::v210_row_size(size.width) : 2 * size.width;
            const size_t moved = o.rows_read * srcRow + o.y + 2 * o.chroma;
            // What the call is answered to touch must fit the shared buffers.
            const unsigned int args[] = {0, 0, r.scale, 0};
            uint64_t reach[4] = {};
            const std::string name = std::string("cycbcr_") + r.name;
            if (cycbcr_converter_pointer_sizes(name.c_str(), size.width, size.height, args, 4,
                                               reach) != 1 ||
                o.y + 2 * o.chroma > buffer_room(size) || reach[3] > buffer_room(size)) {
                std::fprintf(stderr, "cycbcr_bench: %s reaches past the shared buffers\n",
                             name.c_str());
                std::exit(1);
            }
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = r.label;
            row.level5_form = true;  // AVX2 row kernels (or unpacking) inside
            row.memcpy = memcpy_benchmark(size, moved / 2);
            const std::string base = std::string(r.label) + "/" + size.label();
            row.plain = base + "/plain";
            row.level5 = base + "/level5";
            register_call(row.plain, ours(r, size, o), size, moved, 0, false);
            register_call(row.level5, ours(r, size, o), size, moved, 5, true);
#ifdef CYCBCR_BENCH_LIBYUV
            row.peer_label = "libyuv:ScalePlane(box)";
            row.peer = row.peer_label + "/" + std::string(r.label) + "/" + size.label();
            row.peer_per_frame = true;
            register_call(row.peer, libyuv_box(size, o), size, moved, -1, false);
#endif
            add_summary_row(std::move(row));
        }
}

}  // namespace cycbcr_bench
