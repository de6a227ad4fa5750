// Pieces every benchmark family shares: frame buffers, the timed loop, the
// processor level, and the rows of the summary printed after the run.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cycbcr_bench {

// The converter signature of the public header; peers and in-place operations
// are adapted to it so one timed loop serves them all.
using Converter = unsigned int (*)(uint8_t* dst, const uint8_t* src, unsigned int width,
                                   unsigned int height, unsigned int dstPitch,
                                   unsigned int srcPitch);

struct FrameSize {
    unsigned int width;
    unsigned int height;
    std::string label() const;
};
inline constexpr FrameSize kFrameSizes[] = {{1920, 1080}, {3840, 2160}};

// One source and one destination frame of a packed 4:2:2 size (pitch 2 * width),
// 64-byte aligned and filled with random bytes once. Every benchmark of that size
// works on the same two buffers, so all of them touch the same pages.
struct Frames {
    uint8_t* src;
    uint8_t* dst;
    unsigned int pitch;
    size_t bytes;  // one frame
};
Frames& packed_frames(const FrameSize& size);
// A third frame of the same size, for checking a result outside the timed loop.
uint8_t* packed_scratch(const FrameSize& size);

// Processor feature bit 23: AVX2 usable.
bool avx2_usable();

// Registers a benchmark that runs `fn` over the packed frames of `size` at the
// given processor level (or leaves the level alone when `level` is negative),
// reporting the bytes read plus the bytes written: two frames per call.
// With `needs_avx2`, the benchmark is skipped on processors without AVX2.
void register_packed(const std::string& name, Converter fn, const FrameSize& size, int level,
                     bool needs_avx2);

// Registers a peer library's function over the same frames. Before its first
// timed loop the peer's output is compared with `reference` (one of ours, run at
// level 0); a peer that does not give the same bytes is skipped, since it would
// not be doing the same work.
void register_packed_peer(const std::string& name, Converter fn, const FrameSize& size,
                          Converter reference);

// memcpy of one packed frame, per size: the same bytes read and written as a
// conversion, so its throughput is the bandwidth limit the others are held to.
void register_memcpy_benchmarks();
std::string memcpy_name(const FrameSize& size);

// One line of the summary: benchmark names (empty when absent) whose median
// throughputs are set against each other.
struct SummaryRow {
    std::string size;
    std::string converter;
    std::string plain;         // at level 0
    std::string level5;        // at level 5
    bool level5_form = false;  // level 5 runs an AVX2 form (else the plain code again)
    std::string memcpy;
    std::string peer;
    std::string peer_label;
};
void add_summary_row(SummaryRow row);
const std::vector<SummaryRow>& summary_rows();

// Per benchmark family; each registers its benchmarks and summary rows.
void register_byte_order_benchmarks();

}  // namespace cycbcr_bench
