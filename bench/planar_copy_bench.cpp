// Planar to planar copies among I420, YV12 and P422: the converter of every such
// pair of formats in the library's list, at the plain level and at level 5,
// against memcpy of the same bytes.
#include <cycbcr.h>

#include "bench_support.h"

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "planar copies";

bool planar_copy_pair(Format from, Format to) {
    return cycbcr::is_planar8(from) && cycbcr::is_planar8(to);
}

}  // namespace

void register_planar_copy_benchmarks() {
    set_family_heading(kFamily,
                       "Planar copies (I420 / YV12 / P422): the source frame plus the destination "
                       "frame per call (P422 -> 4:2:0: the whole P422\nframe, though it skips the "
                       "odd chroma rows); level 5 target >= 90% of memcpy, AVX2 form or not");
    const std::vector<Listed> listed = listed_for_family(planar_copy_pair);
    for (const FrameSize& size : kFrameSizes) {
        for (const Listed& c : listed) {
            SummaryRow row = register_listed(kFamily, c, size);
            // None has an AVX2 form of its own, but a copy with a P422 side goes
            // through the 4:2:2 <-> 4:2:0 engine, which takes one at level 5.
            row.level5_form = c.level5_form || cycbcr::full_height_chroma(c.from) ||
                              cycbcr::full_height_chroma(c.to);
            row.judge_without_form = true;
            row.memcpy_target = 0.90;
            add_summary_row(std::move(row));
        }
    }
}

}  // namespace cycbcr_bench
