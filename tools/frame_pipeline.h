// The frame loop of 'cycbcr convert': frames read, converted and written in
// input order, on one thread or on several workers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "conversions.h"
#include "frame_io.h"
#include "pitched_frames.h"

namespace cycbcr_tool {

struct FrameLoop {
    // Where frames come from, and their layout in the input.
    FrameReader* reader = nullptr;
    const PitchedFrame* source = nullptr;
    // The layout the converted frames are written in.
    const PitchedFrame* destination = nullptr;
    // At most this many frames (0: all the input holds).
    uint64_t max_frames = 0;
    // The number of threads converting frames (1: the calling thread alone).
    unsigned int threads = 1;
    // The first converter, and a factory for more of the same kind (one per
    // frame in flight: a converter owns its buffers).
    Converter* converter = nullptr;
    std::function<std::unique_ptr<Converter>()> make_converter;
    // Takes each converted frame, in input order, as it is to be written.
    std::function<void(std::span<const uint8_t>)> sink;
    // Told the number of frames taken by the sink after each one.
    std::function<void(uint64_t)> frame_done;
};

// Runs the loop to the end of the input (or max_frames) and returns the
// number of frames converted. With more than one thread, the calling thread
// reads, `threads` workers convert one frame each at a time, and one more
// thread hands the frames to the sink strictly in input order. Frames in
// flight lie in a ring of threads + 1 slots (one being read or written while
// every worker converts one), each slot with its own converter, so memory
// stays bounded whatever the input's length. The first error (reading,
// converting or writing) stops every thread and is thrown here.
uint64_t run_frame_loop(const FrameLoop& loop);

}  // namespace cycbcr_tool
