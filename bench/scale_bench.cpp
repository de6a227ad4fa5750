// Reduced-size planar frames: the reductions by 1.5 of UYVY and v210 and the
// v210 reductions by 2, 3 and 4, at the plain level and at level 5, against memcpy
// of the same bytes and libyuv's box filter, each in two shapes:
//
//   - 4:2:0 output (the default) against ScalePlane on the three planes of an
//     I420 frame of the same size to the same output size. libyuv reads a
//     quarter less chroma than the 4:2:2 source holds, so this is the harder
//     comparison.
//   - 4:2:2 output (the flag set) against I422Scale on the I422 planes of the
//     same frame to the same output size: the source's own planes.
//
// Both are frame for frame: libyuv filters every source row, we sample some.
// A call counts the source rows it reads (each at its natural size: every even
// row for 1.5, every k-th row for a step k) plus the three planes it writes.
// memcpy copies those same source rows, from the same frame, to packed rows:
// a copy of as many bytes from the start of the buffer would stay in the
// caches at 1920x1080 for the larger steps, where the rows read, spread over
// the whole frame, cannot.
#include <cycbcr.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

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
    uint32_t width, height;      // the output's
    size_t y, chroma;            // plane bytes written
    std::vector<uint32_t> read;  // the distinct source rows read, in order
    bool is422;                  // chroma on every output row
};
Output output_of(const ScaleRow& r, const FrameSize& size, bool is422) {
    Output o{};
    o.is422 = is422;
    if (r.scale == 150) {
        o.width = 2 * size.width / 3;
        o.height = 2 * size.height / 3;
        for (uint32_t j = 0; j < o.height; ++j) {
            const uint32_t row = (3 * j >> 1) & ~1u;
            if (o.read.empty() || o.read.back() != row) o.read.push_back(row);
        }
    } else {
        const uint32_t k = r.scale / 100;
        o.width = (size.width + k - 1) / k;
        o.height = (size.height + k - 1) / k;
        for (uint32_t j = 0; j < o.height; ++j) o.read.push_back(k * j);
    }
    const size_t row = (o.width + 3) / 4 * 4;
    o.y = row * o.height;
    o.chroma = row / 2 * (is422 ? o.height : (o.height + 1) / 2);
    return o;
}

FrameCall ours(const ScaleRow& r, const FrameSize& size, const Output& o) {
    return [=](uint8_t* dst, const uint8_t* src) {
        r.fn(dst, dst + o.y, dst + o.y + o.chroma, src, size.width, size.height, 0, 0, r.scale,
             o.is422 ? 1 : 0);
    };
}

// The source rows the call reads copied to packed rows.
FrameCall copy_rows(const Output& o, size_t srcRow) {
    return [read = o.read, srcRow](uint8_t* dst, const uint8_t* src) {
        for (size_t k = 0; k < read.size(); ++k)
            std::memcpy(dst + k * srcRow, src + read[k] * srcRow, srcRow);
    };
}

#ifdef CYCBCR_BENCH_LIBYUV
// 4:2:0 output: the planes of an I420 frame of the source size, each scaled to
// the output's.
FrameCall libyuv_box_420(const FrameSize& size, const Output& o) {
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
// 4:2:2 output: the I422 planes of the source frame scaled to the output's.
FrameCall libyuv_box_422(const FrameSize& size, const Output& o) {
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    const int ow = static_cast<int>(o.width), oh = static_cast<int>(o.height);
    return [=](uint8_t* dst, const uint8_t* src) {
        const uint8_t* cb = src + size_t(w) * h;
        const uint8_t* cr = cb + size_t(w / 2) * h;
        uint8_t* dcb = dst + size_t(ow) * oh;
        uint8_t* dcr = dcb + size_t(ow / 2) * oh;
        libyuv::I422Scale(src, w, cb, w / 2, cr, w / 2, w, h, dst, ow, dcb, ow / 2, dcr, ow / 2, ow,
                          oh, libyuv::kFilterBox);
    };
}
#endif

}  // namespace

void register_scale_benchmarks() {
    set_family_heading(kFamily,
                       "scale: source rows read plus planes written per call; memcpy copies the "
                       "rows read; libyuv box-filters an I420 frame (4:2:0 rows) or the frame's "
                       "I422 planes (4:2:2 rows), compared frame for frame");
    const ScaleRow rows[] = {
        {"uyvy_scale_planar_1_5", cycbcr_uyvy_scale_planar_1_5, false, 150, "uyvy_scale_1_5"},
        {"012v_scale_planar_1_5", cycbcr_012v_scale_planar_1_5, true, 150, "012v_scale_1_5"},
        {"012v_scale_planar", cycbcr_012v_scale_planar, true, 200, "012v_scale_200"},
        {"012v_scale_planar", cycbcr_012v_scale_planar, true, 300, "012v_scale_300"},
        {"012v_scale_planar", cycbcr_012v_scale_planar, true, 400, "012v_scale_400"},
    };
    for (const FrameSize& size : kFrameSizes)
        for (const bool is422 : {false, true})
            for (const ScaleRow& r : rows) {
                const Output o = output_of(r, size, is422);
                const size_t srcRow = r.v210 ? cycbcr::v210_row_size(size.width) : 2 * size.width;
                const size_t readBytes = o.read.size() * srcRow;
                const size_t moved = readBytes + o.y + 2 * o.chroma;
                // What the call is answered to touch must fit the shared buffers.
                const unsigned int args[] = {0, 0, r.scale, is422 ? 1u : 0u};
                uint64_t reach[4] = {};
                const std::string name = std::string("cycbcr_") + r.name;
                if (cycbcr_converter_pointer_sizes(name.c_str(), size.width, size.height, args, 4,
                                                   reach) != 1 ||
                    o.y + 2 * o.chroma > buffer_room(size) || reach[3] > buffer_room(size) ||
                    readBytes > buffer_room(size)) {
                    std::fprintf(stderr, "cycbcr_bench: %s reaches past the shared buffers\n",
                                 name.c_str());
                    std::exit(1);
                }
                SummaryRow row;
                row.family = kFamily;
                row.size = size.label();
                row.converter = std::string(r.label) + (is422 ? "/422" : "/420");
                row.level5_form = true;  // AVX2 row kernels (or unpacking) inside
                row.memcpy_target = 0.6;
                row.peer_target = 1.0;
                // The 4:2:0 and 4:2:2 rows read the same source rows.
                row.memcpy = std::string("memcpy_rows/") + r.label + "/" + size.label();
                if (!is422)
                    register_call(row.memcpy, copy_rows(o, srcRow), size, 2 * readBytes, -1, false);
                const std::string base = row.converter + "/" + size.label();
                row.plain = base + "/plain";
                row.level5 = base + "/level5";
                register_call(row.plain, ours(r, size, o), size, moved, 0, false);
                register_call(row.level5, ours(r, size, o), size, moved, 5, true);
#ifdef CYCBCR_BENCH_LIBYUV
                row.peer_label = is422 ? "libyuv:I422Scale(box)" : "libyuv:ScalePlane(box,I420)";
                row.peer = row.peer_label + "/" + row.converter + "/" + size.label();
                row.peer_per_frame = true;
                register_call(row.peer, is422 ? libyuv_box_422(size, o) : libyuv_box_420(size, o),
                              size, moved, -1, false);
#endif
                add_summary_row(std::move(row));
            }
}

}  // namespace cycbcr_bench
