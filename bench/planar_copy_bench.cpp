// Planar to planar copies among I420, YV12 and P422, at the plain level and at
// level 5, against memcpy of the same bytes.
#include <cycbcr.h>

#include "bench_support.h"

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "planar copies";

struct ConverterDef {
    const char* name;
    Converter fn;
    bool level5_form;  // goes through the 4:2:2 engine, which has an AVX2 form
    // Bytes a pixel of the source and the destination frame, counted whole as in
    // every other family: P422 to I420 is credited with the odd chroma rows it
    // skips. Its memcpy then spans the same footprint, which matters for frames
    // of about the size of the last-level cache.
    double read;
    double written;
};

const ConverterDef kConverters[] = {
    {"i420_to_i420", cycbcr_i420_to_i420, false, 1.5, 1.5},
    {"i420_to_yv12", cycbcr_i420_to_yv12, false, 1.5, 1.5},
    {"i420_to_p422", cycbcr_i420_to_p422, true, 1.5, 2.0},
    {"p422_to_i420", cycbcr_p422_to_i420, true, 2.0, 1.5},
    {"p422_to_p422", cycbcr_p422_to_p422, true, 2.0, 2.0},
};

}  // namespace

void register_planar_copy_benchmarks() {
    set_family_heading(kFamily,
                       "Planar copies (I420 / YV12 / P422): the source frame plus the destination "
                       "frame per call (P422 -> I420: the whole P422\nframe, though it skips the "
                       "odd chroma rows); level 5 target >= 90% of memcpy, AVX2 form or not");
    for (const FrameSize& size : kFrameSizes) {
        for (const ConverterDef& c : kConverters) {
            const auto bytes = [&](double per_pixel) {
                return static_cast<size_t>(per_pixel * static_cast<double>(size.pixels()));
            };
            const Shape shape{size.width, size.width, bytes(c.written), bytes(c.read + c.written)};
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = c.name;
            row.level5_form = c.level5_form;
            row.judge_without_form = true;
            row.memcpy = memcpy_benchmark(size, shape.moved / 2);
            row.memcpy_target = 0.90;
            row.plain = std::string(c.name) + "/" + size.label() + "/plain";
            row.level5 = std::string(c.name) + "/" + size.label() + "/level5";
            register_converter(row.plain, c.fn, size, shape, 0, false);
            register_converter(row.level5, c.fn, size, shape, 5, true);
            add_summary_row(std::move(row));
        }
    }
}

}  // namespace cycbcr_bench
