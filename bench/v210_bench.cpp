// v210: the UYVY packer and unpacker, and the conversions between v210 and
// YUY2, I420 and P422, at the plain level and at level 5, against memcpy of the
// same bytes and FFmpeg's v210 encoder and decoder.
#include <cycbcr.h>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_FFMPEG
#include "ffmpeg_v210.h"
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "v210";

// The conversions between v210 and the other 8-bit formats: the 8-bit side's
// frame size and pitch, and whether v210 is the source.
struct EightBit {
    const char* name;
    Converter fn;
    size_t (*frame_bytes)(const FrameSize&);
    unsigned int pitch_per_pixel;  // 8-bit pitch = this * width
    bool from_v210;
};
const EightBit kEightBit[] = {
    {"012v_to_yuy2", cycbcr_012v_to_yuy2, packed_frame_bytes, 2, true},
    {"012v_to_i420", cycbcr_012v_to_i420, i420_frame_bytes, 1, true},
    {"012v_to_p422", cycbcr_012v_to_p422, p422_frame_bytes, 1, true},
    {"yuy2_to_012v", cycbcr_yuy2_to_012v, packed_frame_bytes, 2, false},
    {"i420_to_012v", cycbcr_i420_to_012v, i420_frame_bytes, 1, false},
    {"p422_to_012v", cycbcr_p422_to_012v, p422_frame_bytes, 1, false},
};

SummaryRow v210_row(const FrameSize& size, const char* converter, const std::string& memcpy) {
    SummaryRow row;
    row.family = kFamily;
    row.size = size.label();
    row.converter = converter;
    row.level5_form = true;
    row.memcpy = memcpy;
    row.memcpy_target = 0.60;
    row.peer_target = 1.00;
    row.peer_per_frame = true;
    const std::string base = std::string(converter) + "/" + size.label();
    row.plain = base + "/plain";
    row.level5 = base + "/level5";
    return row;
}

}  // namespace

void register_v210_benchmarks() {
    set_family_heading(kFamily,
                       "v210 <-> 8-bit: the 8-bit frame plus the v210 frame per call; level 5 "
                       "target >= 60% of memcpy and >= FFmpeg's codec frame for frame (FFmpeg "
                       "moves 16-bit planes, so its peer column is its frame rate in our bytes "
                       "per frame)");
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

        for (const EightBit& e : kEightBit) {
            const size_t eight = e.frame_bytes(size);
            const unsigned int pitch = e.pitch_per_pixel * size.width;
            const Shape shape = e.from_v210 ? Shape{pitch, v210_pitch, eight, eight + v210}
                                            : Shape{v210_pitch, pitch, v210, eight + v210};
            SummaryRow row = v210_row(size, e.name, memcpy_benchmark(size, (eight + v210) / 2));
            register_converter(row.plain, e.fn, size, shape, 0, false);
            register_converter(row.level5, e.fn, size, shape, 5, true);
#ifdef CYCBCR_BENCH_FFMPEG
            row.peer = e.from_v210 ? names.decode : names.encode;
            row.peer_label = e.from_v210 ? "ffmpeg:v210dec" : "ffmpeg:v210enc";
#endif
            add_summary_row(std::move(row));
        }
    }
#ifdef CYCBCR_BENCH_FFMPEG
    add_ffmpeg_v210_note(ffmpeg, ours_pack, ours_unpack);
#endif
}

}  // namespace cycbcr_bench
