#include "bench_support.h"

#include <cycbcr.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

namespace cycbcr_bench {
namespace {

constexpr uint32_t kAvx2Bit = 0x800000u;

struct FreeDeleter {
    void operator()(uint8_t* p) const { std::free(p); }
};
using Buffer = std::unique_ptr<uint8_t, FreeDeleter>;

Buffer aligned_buffer(size_t bytes) {
    const size_t rounded = (bytes + 63) / 64 * 64;
    auto* p = static_cast<uint8_t*>(std::aligned_alloc(64, rounded));
    if (p == nullptr) std::abort();
    return Buffer(p);
}

// splitmix64: fast enough to fill a 4K frame in a few milliseconds, and every
// byte depends on the seed, so no converter meets a frame of repeated values.
void fill_random(uint8_t* p, size_t bytes, uint64_t seed) {
    uint64_t state = seed;
    for (size_t i = 0; i < bytes; i += 8) {
        uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        z ^= z >> 31;
        std::memcpy(p + i, &z, bytes - i < 8 ? bytes - i : 8);
    }
}

struct BufferSet {
    Buffer src, dst, scratch;
    Buffers view{};
};

BufferSet& buffer_set(const FrameSize& size) {
    static std::map<std::pair<unsigned, unsigned>, BufferSet> sets;
    BufferSet& set = sets[{size.width, size.height}];
    if (!set.src) {
        const size_t bytes = v210_frame_bytes(size);  // the largest layout
        set.src = aligned_buffer(bytes + kBufferSlack);
        set.dst = aligned_buffer(bytes + kBufferSlack);
        set.scratch = aligned_buffer(bytes + kBufferSlack);
        fill_random(set.src.get(), bytes + kBufferSlack, 0x5EED0000u + size.width);
        fill_random(set.dst.get(), bytes + kBufferSlack,
                    0xD5700000u + size.width);  // in-place flips read it
        std::memset(set.scratch.get(), 0, bytes + kBufferSlack);
        set.view = {set.src.get(), set.dst.get(), set.scratch.get(), bytes};
    }
    return set;
}

// Outside the timed loop: the bytes named by `check` as `reference` gives them,
// with every destination byte written (the destination starts as the complement
// of the expected frame).
std::string compare_with_reference(Converter peer, Converter reference, const FrameSize& size,
                                   const Shape& shape, const Check& check) {
    Buffers& b = frame_buffers(size);
    uint8_t* expected = b.scratch;
    cycbcr_set_cpu(0);
    reference(b.dst, b.src, size.width, size.height, shape.dst_pitch, shape.src_pitch);
    std::memcpy(expected, b.dst, shape.dst_bytes);
    for (size_t i = 0; i < shape.dst_bytes; ++i) b.dst[i] = static_cast<uint8_t>(~expected[i]);
    peer(b.dst, b.src, size.width, size.height, shape.dst_pitch, shape.src_pitch);
    const size_t count = check.count != 0 ? check.count : shape.dst_bytes;
    for (size_t k = 0, i = check.first; k < count; ++k, i += check.step) {
        if (b.dst[i] != expected[i])
            return std::string("peer ") + check.what + " differs from ours at byte " +
                   std::to_string(i) + ": not the same work";
    }
    return {};
}

// Rates are per CPU second of this thread (the library's default): the loop
// never blocks, so on a quiet machine that is the wall time, and on a shared one
// it leaves out the time other processes held the core.
void time_calls(benchmark::State& state, Converter fn, const FrameSize& size, const Shape& shape) {
    Buffers& b = frame_buffers(size);
    for (auto _ : state) {
        fn(b.dst, b.src, size.width, size.height, shape.dst_pitch, shape.src_pitch);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(shape.moved));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

std::vector<SummaryRow>& rows() {
    static std::vector<SummaryRow> all;
    return all;
}

std::map<std::string, std::string>& headings() {
    static std::map<std::string, std::string> all;
    return all;
}

std::vector<SummaryNote>& notes() {
    static std::vector<SummaryNote> all;
    return all;
}

}  // namespace

std::string FrameSize::label() const {
    return std::to_string(width) + "x" + std::to_string(height);
}

size_t packed_frame_bytes(const FrameSize& size) {
    return 2 * size.pixels();
}

size_t i420_frame_bytes(const FrameSize& size) {
    return size.pixels() * 3 / 2;
}

size_t p422_frame_bytes(const FrameSize& size) {
    return 2 * size.pixels();
}

size_t v210_frame_bytes(const FrameSize& size) {
    return size_t{v210_row_bytes(size.width)} * size.height;
}

Buffers& frame_buffers(const FrameSize& size) {
    return buffer_set(size).view;
}

Shape packed_shape(const FrameSize& size) {
    const size_t frame = packed_frame_bytes(size);
    return {2 * size.width, 2 * size.width, frame, 2 * frame};
}

bool avx2_usable() {
    return (cycbcr_cpu_flags() & kAvx2Bit) != 0;
}

void register_converter(const std::string& name, Converter fn, const FrameSize& size,
                        const Shape& shape, int level, bool needs_avx2) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        if (needs_avx2 && !avx2_usable()) {
            state.SkipWithError("processor lacks AVX2 (feature bit 23)");
            return;
        }
        if (level >= 0 &&
            cycbcr_set_cpu(static_cast<unsigned>(level)) != static_cast<unsigned>(level)) {
            state.SkipWithError("processor level not available");
            return;
        }
        time_calls(state, fn, size, shape);
    })->Unit(benchmark::kMillisecond);
}

void register_peer(const std::string& name, Converter fn, const FrameSize& size, const Shape& shape,
                   Converter reference, const Check& check) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        // Checked once per process; repetitions reuse the verdict.
        static std::map<std::string, std::string> verdicts;
        auto it = verdicts.find(name);
        if (it == verdicts.end()) {
            std::string verdict;
            if (reference != nullptr)
                verdict = compare_with_reference(fn, reference, size, shape, check);
            it = verdicts.emplace(name, std::move(verdict)).first;
        }
        if (!it->second.empty()) {
            state.SkipWithError(it->second.c_str());
            return;
        }
        time_calls(state, fn, size, shape);
    })->Unit(benchmark::kMillisecond);
}

std::string memcpy_benchmark(const FrameSize& size, size_t bytes) {
    static std::map<std::pair<std::string, size_t>, std::string> registered;
    const auto key = std::make_pair(size.label(), bytes);
    auto it = registered.find(key);
    if (it != registered.end()) return it->second;

    const std::string name = "memcpy/" + size.label() + "/" + std::to_string(bytes) + "B";
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Buffers& b = frame_buffers(size);
        for (auto _ : state) {
            std::memcpy(b.dst, b.src, bytes);
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                                static_cast<int64_t>(2 * bytes));
        state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    })->Unit(benchmark::kMillisecond);
    registered.emplace(key, name);
    return name;
}

void add_summary_row(SummaryRow row) {
    rows().push_back(std::move(row));
}

const std::vector<SummaryRow>& summary_rows() {
    return rows();
}

void set_family_heading(const std::string& family, const std::string& heading) {
    headings()[family] = heading;
}

std::string family_heading(const std::string& family) {
    auto it = headings().find(family);
    return it == headings().end() ? family : it->second;
}

void add_summary_note(SummaryNote note) {
    notes().push_back(std::move(note));
}

const std::vector<SummaryNote>& summary_notes() {
    return notes();
}

}  // namespace cycbcr_bench
