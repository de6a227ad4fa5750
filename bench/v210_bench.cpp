// v210: the converter of every pair of formats in the library's list with v210
// on one side (the UYVY packer and unpacker, and the conversions between v210
// and the other packed and planar 8-bit formats), at the plain level and at
// level 5, against memcpy of the same bytes and FFmpeg's v210 encoder (into
// v210) or decoder (out of it).
#include <cycbcr.h>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_FFMPEG
#include "ffmpeg_v210.h"
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "v210";

bool v210_pair(Format from, Format to) {
    // Semi-planar sources have their own family.
    if (cycbcr::info(from).arrangement == cycbcr::Arrangement::SemiPlanar) return false;
    return (from == Format::V210) != (to == Format::V210);
}

}  // namespace

void register_v210_benchmarks() {
    set_family_heading(kFamily,
                       "v210 <-> 8-bit: the 8-bit frame plus the v210 frame per call; level 5 "
                       "target >= 60% of memcpy and >= FFmpeg's codec frame for frame (FFmpeg "
                       "moves 16-bit planes, so its peer column is its frame rate in our bytes "
                       "per frame)");
    const std::vector<Listed> listed = listed_for_family(v210_pair);
#ifdef CYCBCR_BENCH_FFMPEG
    std::vector<FfmpegV210> ffmpeg;
    std::vector<std::string> ours_pack, ours_unpack;
#endif
    for (const FrameSize& size : kFrameSizes) {
#ifdef CYCBCR_BENCH_FFMPEG
        const FfmpegV210 names = register_ffmpeg_v210(size);
        ffmpeg.push_back(names);
#endif
        for (const Listed& c : listed) {
            SummaryRow row = register_listed(kFamily, c, size);
            row.memcpy_target = 0.60;
            row.peer_target = 1.00;
            row.peer_per_frame = true;
#ifdef CYCBCR_BENCH_FFMPEG
            const bool from_v210 = c.from == Format::V210;
            row.peer = from_v210 ? names.decode : names.encode;
            row.peer_label = from_v210 ? "ffmpeg:v210dec" : "ffmpeg:v210enc";
            // FFmpeg's time per frame is set against the UYVY pair's in a note.
            const Format eight_bit = from_v210 ? c.to : c.from;
            if (eight_bit == Format::UYVY && c.plain)
                (from_v210 ? ours_unpack : ours_pack).push_back(row.level5);
#endif
            add_summary_row(std::move(row));
        }
    }
#ifdef CYCBCR_BENCH_FFMPEG
    add_ffmpeg_v210_note(ffmpeg, ours_pack, ours_unpack);
#endif
}

}  // namespace cycbcr_bench
