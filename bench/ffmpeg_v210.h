// FFmpeg's v210 encoder and decoder as the peers of the UYVY <-> v210 pair,
// built only when libavcodec and libavutil are found.
#pragma once

#include <string>
#include <vector>

#include "bench_support.h"

namespace cycbcr_bench {

// Benchmark names of FFmpeg's work on one frame size.
struct FfmpegV210 {
    std::string encode;        // yuv422p10 -> v210 through avcodec_send_frame / receive_packet
    std::string decode;        // v210 -> yuv422p10 through avcodec_send_packet / receive_frame
    std::string encode_alloc;  // the packet the encoder allocates per call, alone
    std::string decode_alloc;  // a yuv422p10 frame of the same size, alone
};

// Registers FFmpeg's benchmarks for `size` and returns their names.
FfmpegV210 register_ffmpeg_v210(const FrameSize& size);

// Registers the per-call cost benchmarks (the same calls on a 48x4 frame) and a
// summary note that sets FFmpeg's time per frame against ours and splits it into
// codec-API overhead and packing. `ours_pack` and `ours_unpack` name our level 5
// benchmarks per size, in the order of kFrameSizes.
void add_ffmpeg_v210_note(const std::vector<FfmpegV210>& ffmpeg,
                          const std::vector<std::string>& ours_pack,
                          const std::vector<std::string>& ours_unpack);

}  // namespace cycbcr_bench
