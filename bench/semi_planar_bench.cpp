// Semi-planar: NV12 and NV10 into v210, NV12 into UYVY (the converters of the
// library's list with an NV12 or NV10 source), and the NV12p16 producers from
// three 16-bit planes, at the plain level and at level 5, against memcpy of the
// same bytes and, for the 10- and 12-bit producers, libyuv's I010ToP010 and
// I012ToP012 (the same shift and interleave; timed only, since the shared random
// buffers hold samples with bits above their depth, which each library may treat
// its own way).
//
// Frames at their natural pitches. A call counts its source frame plus its
// destination frame: NV12 1.5 bytes a pixel, NV10 and NV12p16 3, UYVY 2, v210
// its rows; the producers read 3 bytes a pixel from their three planes.
#include <cycbcr.h>

#include "bench_support.h"
#include "frame/geometry.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/convert.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "semi-planar";

bool semi_planar_source(Format from, Format) {
    return from == Format::NV12 || from == Format::NV10;
}

using Producer = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                  unsigned int, unsigned int, unsigned int, unsigned int);

// Three planes back to back in the source buffer: Y rows 2 * width bytes apart,
// Cb and Cr rows width bytes apart.
struct PlanarCall {
    size_t cb, cr;  // plane offsets
    size_t bytes;   // the three planes
};
PlanarCall planar_call(const FrameSize& size) {
    const size_t luma = size_t{2} * size.width * size.height;
    const size_t chroma = size_t{size.width} * (size.height / 2);
    return {luma, luma + chroma, luma + 2 * chroma};
}

FrameCall producer_call(Producer fn, const FrameSize& size) {
    const PlanarCall p = planar_call(size);
    return [=](uint8_t* dst, const uint8_t* src) {
        fn(dst, src, src + p.cb, src + p.cr, size.width, size.height, 2 * size.width,
           2 * size.width);
    };
}

struct ProducerRow {
    const char* name;
    Producer fn;
    const char* peer;  // libyuv's function, or null
};

#ifdef CYCBCR_BENCH_LIBYUV
FrameCall libyuv_call(bool twelve, const FrameSize& size) {
    const PlanarCall p = planar_call(size);
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    return [=](uint8_t* dst, const uint8_t* src) {
        auto* y = reinterpret_cast<const uint16_t*>(src);
        auto* cb = reinterpret_cast<const uint16_t*>(src + p.cb);
        auto* cr = reinterpret_cast<const uint16_t*>(src + p.cr);
        auto* dy = reinterpret_cast<uint16_t*>(dst);
        auto* duv = dy + size_t{size.width} * size.height;
        (twelve ? libyuv::I012ToP012 : libyuv::I010ToP010)(y, w, cb, w / 2, cr, w / 2, dy, w, duv,
                                                           w, w, h);
    };
}
#endif

}  // namespace

void register_semi_planar_benchmarks() {
    set_family_heading(kFamily,
                       "semi-planar: source frame plus destination frame per call; level 5 "
                       "target >= 70% of memcpy (producers: >= 85%)");
    for (const FrameSize& size : kFrameSizes) {
        for (const Listed& c : listed_for_family(semi_planar_source)) {
            const Shape shape = natural_shape(c.from, c.to, size);
            check_named_reach(("cycbcr_" + c.name).c_str(), size, shape, 0, 0);
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = c.name;
            row.level5_form = c.level5_form;
            row.memcpy = memcpy_benchmark(size, shape.moved / 2);
            row.memcpy_target = 0.70;
            const std::string base = c.name + "/" + size.label();
            if (c.plain) {
                row.plain = base + "/plain";
                register_converter(row.plain, c.fn, size, shape, 0, false);
            }
            row.level5 = base + "/level5";
            register_converter(row.level5, c.fn, size, shape, 5, true);
            add_summary_row(std::move(row));
        }
        const ProducerRow producers[] = {
            {"yuv420p10_to_NV12p16", cycbcr_yuv420p10_to_NV12p16, "I010ToP010"},
            {"yuv420p12_to_NV12p16", cycbcr_yuv420p12_to_NV12p16, "I012ToP012"},
            {"yuv420p16_to_NV12p16", cycbcr_yuv420p16_to_NV12p16, nullptr},
        };
        const PlanarCall planes = planar_call(size);
        const size_t written = size_t{2} * size.width * (size.height + size.height / 2);
        // The shared buffers hold what each producer is answered to reach.
        for (const ProducerRow& p : producers) {
            const unsigned int pitches[] = {2 * size.width, 2 * size.width};
            uint64_t reach[4] = {};
            const std::string name = std::string("cycbcr_") + p.name;
            if (cycbcr_converter_pointer_sizes(name.c_str(), size.width, size.height, pitches, 2,
                                               reach) != 1 ||
                reach[0] > buffer_room(size) || planes.cr + reach[3] > buffer_room(size)) {
                std::fprintf(stderr, "cycbcr_bench: %s reaches past the shared buffers\n",
                             name.c_str());
                std::exit(1);
            }
        }
        for (const ProducerRow& p : producers) {
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = p.name;
            row.level5_form = true;
            row.memcpy = memcpy_benchmark(size, written);
            row.memcpy_target = 0.85;
            const std::string base = std::string(p.name) + "/" + size.label();
            row.plain = base + "/plain";
            row.level5 = base + "/level5";
            const FrameCall call = producer_call(p.fn, size);
            register_call(row.plain, call, size, planes.bytes + written, 0, false);
            register_call(row.level5, call, size, planes.bytes + written, 5, true);
#ifdef CYCBCR_BENCH_LIBYUV
            if (p.peer != nullptr) {
                row.peer_label = std::string("libyuv:") + p.peer;
                row.peer = row.peer_label + "/" + size.label();
                row.peer_target = 1.00;
                register_call(row.peer, libyuv_call(p.fn == cycbcr_yuv420p12_to_NV12p16, size),
                              size, planes.bytes + written, -1, false);
            }
#endif
            add_summary_row(std::move(row));
        }
    }
}

}  // namespace cycbcr_bench
