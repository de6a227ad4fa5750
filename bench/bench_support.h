// Pieces every benchmark family shares: frame buffers, the timed loop, the
// processor level, and the rows of the summary printed after the run.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/converters.h"
#include "frame/formats.h"

namespace cycbcr_bench {

// A 64-byte aligned block of random bytes, rounded up to whole 4 KiB pages so
// that kernels reading a little past a frame stay inside it. With oddMask, the
// odd bytes are masked: the high bytes of 16-bit samples, keeping them within
// a depth.
struct FreeDeleter {
    void operator()(uint8_t* p) const;
};
using Block = std::unique_ptr<uint8_t, FreeDeleter>;
Block random_block(size_t bytes, uint64_t seed, uint8_t oddMask = 0xFF);

// The converter signature of the public header; peers and in-place operations
// are adapted to it so one timed loop serves them all.
using Converter = unsigned int (*)(uint8_t* dst, const uint8_t* src, unsigned int width,
                                   unsigned int height, unsigned int dstPitch,
                                   unsigned int srcPitch);

struct FrameSize {
    unsigned int width;
    unsigned int height;
    std::string label() const;
    size_t pixels() const { return size_t{width} * height; }
};
inline constexpr FrameSize kFrameSizes[] = {{1920, 1080}, {3840, 2160}};

using cycbcr::Format;

// Bytes of one frame of `f` at its natural pitch: packed 4:2:2 2 bytes a pixel,
// I420, YV12 and NV12 1.5, P422 2, v210 a row of cycbcr::v210_row_size(width)
// bytes a line, RGB its pixel bytes (2, 3 or 4).
size_t frame_bytes(Format f, const FrameSize& size);

// One source, one destination and one scratch buffer per frame size, large
// enough for the largest frame of that size among the listed formats plus
// kBufferSlack bytes, 64-byte aligned and filled with random bytes once. Every
// benchmark of that size works on the same buffers, so all of them touch the
// same pages. The slack is for converters that reach past a natural frame (the
// v210 unpackers write each row out to a whole 12 pixels); register_listed
// holds every listed converter to it.
inline constexpr size_t kBufferSlack = 4096;
struct Buffers {
    uint8_t* src;
    uint8_t* dst;
    uint8_t* scratch;  // for checking a result outside the timed loop
    size_t bytes;      // usable bytes of each, slack excluded
};
Buffers& frame_buffers(const FrameSize& size);
// What a call may touch of each shared buffer of `size`: the largest frame plus
// the slack (a count only; nothing is allocated).
size_t buffer_room(const FrameSize& size);

// How a converter is called on the shared buffers: its two pitches, the size of
// the destination frame, and the bytes it reads plus the bytes it writes in one
// call (what its throughput is counted in).
struct Shape {
    unsigned int dst_pitch;
    unsigned int src_pitch;
    size_t dst_bytes;
    size_t moved;
};
// A conversion between frames at their natural pitches: the source frame plus
// the destination frame moved, counted whole (a converter that skips rows, as
// P422 to I420 skips the odd chroma rows, is still credited with them).
Shape natural_shape(Format from, Format to, const FrameSize& size);

// Processor feature bit 23: AVX2 usable.
bool avx2_usable();

// One call over the shared buffers, whatever the argument list behind it: the
// RGB converters add matrix and rgbType, peers take their planes one by one.
using FrameCall = std::function<void(uint8_t* dst, const uint8_t* src)>;
// A check run once, before the first timed loop of a benchmark: empty when the
// benchmark may run, else why it is skipped.
using Verdict = std::function<std::string()>;

// Registers a benchmark that times `call` over the buffers of `size`, crediting
// `moved` bytes a call, at the given processor level (or leaving the level alone
// when `level` is negative). With `needs_avx2` it is skipped on processors
// without AVX2; with `check`, when the check says so. register_converter and
// register_peer below are this with the converter argument list.
benchmark::internal::Benchmark* register_call(const std::string& name, FrameCall call,
                                              const FrameSize& size, size_t moved, int level,
                                              bool needs_avx2, Verdict check = {});

// Registers a benchmark that runs `fn` over the buffers of `size` at the given
// processor level (or leaves the level alone when `level` is negative). With
// `needs_avx2`, the benchmark is skipped on processors without AVX2.
void register_converter(const std::string& name, Converter fn, const FrameSize& size,
                        const Shape& shape, int level, bool needs_avx2);

// Which destination bytes a peer must give exactly as ours: `count` bytes
// `step` apart from byte `first` (count 0: the whole destination frame).
struct Check {
    size_t first = 0;
    size_t step = 1;
    size_t count = 0;
    const char* what = "output";  // named in the message when they differ
};

// Registers a peer library's function over the same buffers. Before its first
// timed loop the bytes named by `check` are compared with those of `reference`
// (one of ours, run at level 0); a peer that does not give the same bytes is
// skipped, since it would not be doing the same work. No reference: no check.
void register_peer(const std::string& name, Converter fn, const FrameSize& size, const Shape& shape,
                   Converter reference, const Check& check = {});

// memcpy of `bytes` bytes from the source buffer to the destination buffer:
// as many bytes read and written as a conversion that moves 2 * `bytes`, so its
// throughput is the bandwidth limit that conversion is held to. Registered once
// per size and byte count; returns the benchmark name.
std::string memcpy_benchmark(const FrameSize& size, size_t bytes);

// Throughput as the reporter saw it: medians of the repetitions, 0 when the
// benchmark did not run or was skipped.
class Medians {
  public:
    virtual ~Medians() = default;
    virtual double bytes_per_second(const std::string& name) const = 0;
    virtual double items_per_second(const std::string& name) const = 0;  // frames or calls
    virtual double spread(const std::string& name) const = 0;            // cv of the bytes/s, 0..1
};

// One line of the summary: benchmark names (empty when absent) whose median
// throughputs are set against each other. Rows are printed in the order they
// were added, under the heading of their family.
struct SummaryRow {
    std::string family;
    std::string size;
    std::string converter;
    std::string plain;         // at level 0
    std::string level5;        // at level 5
    bool level5_form = false;  // level 5 runs an AVX2 form (else the plain code again)
    std::string memcpy;
    std::string peer;
    std::string peer_label;
    // What level 5 has to reach: these shares of memcpy and of the peer (0: no
    // target). With `judge_without_form`, also when level 5 runs the plain code.
    double memcpy_target = 0;
    double peer_target = 0;
    double plain_target = 0;  // level 5 over the plain level
    bool judge_without_form = false;
    // Compare with the peer frame for frame rather than byte for byte (the peer
    // moves a different number of bytes per frame); its column then shows the
    // peer's frame rate in this row's bytes per frame.
    bool peer_per_frame = false;
};
void add_summary_row(SummaryRow row);
const std::vector<SummaryRow>& summary_rows();

// A converter of the library's list (frame/converters.h) as a family times it.
struct Listed {
    std::string name;  // without the cycbcr_ prefix, as the summary shows it
    Converter fn;
    Format from, to;
    bool plain;        // timed at level 0 too; else an AVX2 form, timed at level 5 only
    bool level5_form;  // level 5 runs an AVX2 form: the one handed over to, or itself
};

// What a family times, in the order of the list: the converter of every pair of
// formats `in_family` accepts (each function once: second names of a function
// are left out), and every AVX2 form between such formats that no pair's
// converter hands over to. Plain forms (_opt) are what their pair's converter
// runs below level 5 and are not timed apart.
std::vector<Listed> listed_for_family(bool (*in_family)(Format from, Format to));

// Listed converters that no family took, or that more than one took: a new
// pair of formats that no family's test accepts shows up here rather than as a
// quietly missing row.
std::vector<std::string> unclaimed_converters();

// The listed converter of a pair of formats (for peers and their checks); exits
// when the list has none.
Converter pair_converter(Format from, Format to);

// Registers `c` at its natural shape: "<name>/<size>/plain" at level 0 (when it
// is timed plain) and "<name>/<size>/level5" at level 5, the latter skipped
// without AVX2. Returns a summary row of `family` with those names, the memcpy of
// half the bytes moved and level5_form filled in; targets and peer are the
// family's to set. First the bytes the converter's pair touches at these pitches
// (cycbcr_buffer_sizes) are held against the shared buffers: the program exits
// rather than time a converter that would reach past them.
SummaryRow register_listed(const char* family, const Listed& c, const FrameSize& size);

// A family's heading in the summary (its targets and what its bytes count).
void set_family_heading(const std::string& family, const std::string& heading);
std::string family_heading(const std::string& family);

// Extra text printed after the summary table, given the medians of the run.
using SummaryNote = std::function<void(std::FILE* out, const Medians& medians)>;
void add_summary_note(SummaryNote note);
const std::vector<SummaryNote>& summary_notes();

// A converter's name as the summary shows it (without the cycbcr_ prefix).
std::string short_name(std::string_view name);
// Exits unless the shared buffers of `size` hold what the converter `name`
// reads and writes in these calls (cycbcr_converter_buffer_sizes).
void check_named_reach(const char* name, const FrameSize& size, const Shape& shape,
                       QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType);

// Per benchmark family; each registers its benchmarks, summary rows and notes.
void register_byte_order_benchmarks();
void register_v210_benchmarks();
void register_packed_planar_benchmarks();
void register_planar_copy_benchmarks();
void register_to_rgb_benchmarks();
void register_v210_to_rgb_benchmarks();
void register_from_rgb_benchmarks();
void register_semi_planar_benchmarks();
void register_planar16_v210_benchmarks();
void register_hbd_planar_benchmarks();
void register_rgb_to_planar16_benchmarks();
void register_hbd_to_rgb_benchmarks();
void register_to_rgb_planar_benchmarks();
void register_scale_benchmarks();

}  // namespace cycbcr_bench
