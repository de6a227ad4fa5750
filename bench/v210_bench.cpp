// v210: the UYVY packer and unpacker at the plain level and at level 5, against
// memcpy of the same bytes and FFmpeg's v210 encoder and decoder.
#include <cycbcr.h>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_FFMPEG
#include "ffmpeg_v210.h"
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "v210";

SummaryRow v210_row(const FrameSize& size, const char* converter, const std::string& memcpy) {
    SummaryRow row;
    row.family = kFamily;
    row.size = size.label();
    row.converter = converter;
    row.level5_form = true;
    row.memcpy = memcpy;
    row.memcpy_target = 0.60;
    row.peer_target = 1.00;
    const std::string base = std::string(converter) + "/" + size.label();
    row.plain = base + "/plain";
    row.level5 = base + "/level5";
    return row;
}

}  // namespace

void register_v210_benchmarks() {
    set_family_heading(kFamily,
                       "v210 <-> UYVY: the UYVY frame plus the v210 frame per call; level 5 "
                       "target >= 60% of memcpy and >= FFmpeg's codec (GB/s)");
#ifdef CYCBCR_BENCH_FFMPEG
    std::vector<FfmpegV210> ffmpeg;
    std::vector<std::string> ours_pack, ours_unpack;
#endif
    for (const FrameSize& size : kFrameSizes) {
        const size_t uyvy = packed_frame_bytes(size), v210 = v210_frame_bytes(size);
        const unsigned int v210_pitch = v210_row_bytes(size.width);
        const Shape pack{v210_pitch, 2 * size.width, v210, uyvy + v210};
        const Shape unpack{2 * size.width, v210_pitch, uyvy, uyvy + v210};
        const std::string memcpy = memcpy_benchmark(size, (uyvy + v210) / 2);

        SummaryRow to_v210 = v210_row(size, "uyvy_to_012v", memcpy);
        SummaryRow from_v210 = v210_row(size, "012v_to_uyvy", memcpy);
        register_converter(to_v210.plain, cycbcr_uyvy_to_012v, size, pack, 0, false);
        register_converter(to_v210.level5, cycbcr_uyvy_to_012v, size, pack, 5, true);
        register_converter(from_v210.plain, cycbcr_012v_to_uyvy, size, unpack, 0, false);
        register_converter(from_v210.level5, cycbcr_012v_to_uyvy, size, unpack, 5, true);
#ifdef CYCBCR_BENCH_FFMPEG
        const FfmpegV210 names = register_ffmpeg_v210(size);
        to_v210.peer = names.encode;
        to_v210.peer_label = "ffmpeg:v210enc";
        from_v210.peer = names.decode;
        from_v210.peer_label = "ffmpeg:v210dec";
        ffmpeg.push_back(names);
        ours_pack.push_back(to_v210.level5);
        ours_unpack.push_back(from_v210.level5);
#endif
        add_summary_row(std::move(to_v210));
        add_summary_row(std::move(from_v210));
    }
#ifdef CYCBCR_BENCH_FFMPEG
    add_ffmpeg_v210_note(ffmpeg, ours_pack, ours_unpack);
#endif
}

}  // namespace cycbcr_bench
