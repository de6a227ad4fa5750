// The peer chain of RGB -> v210: libswscale turns BGRA into yuv422p10le, then
// FFmpeg's v210 encoder packs it. Built only when libswscale, libavcodec and
// libavutil are found.
#pragma once

#include <string>

#include "bench_support.h"

namespace cycbcr_bench {

// Registers the chain on the shared BGRA source of `size`, credited with
// `moved` bytes a frame (the bytes of our converter of the same frame, so that
// the two compare frame for frame), and returns its benchmark name.
std::string register_sws_v210_chain(const FrameSize& size, size_t moved);

}  // namespace cycbcr_bench
