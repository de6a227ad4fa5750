#include "bench_support.h"

#include <cycbcr.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>

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

struct PackedSet {
    Buffer src, dst, scratch;
    Frames frames{};
};

PackedSet& packed_set(const FrameSize& size) {
    static std::map<std::pair<unsigned, unsigned>, PackedSet> sets;
    PackedSet& set = sets[{size.width, size.height}];
    if (!set.src) {
        const unsigned int pitch = 2 * size.width;
        const size_t bytes = static_cast<size_t>(pitch) * size.height;
        set.src = aligned_buffer(bytes);
        set.dst = aligned_buffer(bytes);
        fill_random(set.src.get(), bytes, 0x5EED0000u + size.width);
        fill_random(set.dst.get(), bytes, 0xD5700000u + size.width);  // in-place flips read it
        set.frames = {set.src.get(), set.dst.get(), pitch, bytes};
    }
    return set;
}

// Outside the timed loop: the same bytes as `reference`, with every destination
// byte written (the destination starts as the complement of the expected frame).
std::string compare_with_reference(Converter peer, Converter reference, const FrameSize& size) {
    Frames& f = packed_frames(size);
    uint8_t* expected = packed_scratch(size);
    cycbcr_set_cpu(0);
    reference(f.dst, f.src, size.width, size.height, f.pitch, f.pitch);
    std::memcpy(expected, f.dst, f.bytes);
    for (size_t i = 0; i < f.bytes; ++i) f.dst[i] = static_cast<uint8_t>(~expected[i]);
    peer(f.dst, f.src, size.width, size.height, f.pitch, f.pitch);
    for (size_t i = 0; i < f.bytes; ++i) {
        if (f.dst[i] != expected[i])
            return "peer output differs from ours at byte " + std::to_string(i) +
                   ": not the same work";
    }
    return {};
}

// Rates are per CPU second of this thread (the library's default): the loop
// never blocks, so on a quiet machine that is the wall time, and on a shared one
// it leaves out the time other processes held the core.
void time_packed(benchmark::State& state, Converter fn, const FrameSize& size) {
    Frames& f = packed_frames(size);
    for (auto _ : state) {
        fn(f.dst, f.src, size.width, size.height, f.pitch, f.pitch);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(2 * f.bytes));
}

std::vector<SummaryRow>& rows() {
    static std::vector<SummaryRow> all;
    return all;
}

}  // namespace

std::string FrameSize::label() const {
    return std::to_string(width) + "x" + std::to_string(height);
}

Frames& packed_frames(const FrameSize& size) {
    return packed_set(size).frames;
}

uint8_t* packed_scratch(const FrameSize& size) {
    PackedSet& set = packed_set(size);
    if (!set.scratch) set.scratch = aligned_buffer(set.frames.bytes);
    return set.scratch.get();
}

bool avx2_usable() {
    return (cycbcr_cpu_flags() & kAvx2Bit) != 0;
}

void register_packed(const std::string& name, Converter fn, const FrameSize& size, int level,
                     bool needs_avx2) {
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
        time_packed(state, fn, size);
    })->Unit(benchmark::kMillisecond);
}

void register_packed_peer(const std::string& name, Converter fn, const FrameSize& size,
                          Converter reference) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        // Checked once per process; repetitions reuse the verdict.
        static std::map<std::string, std::string> verdicts;
        auto it = verdicts.find(name);
        if (it == verdicts.end())
            it = verdicts.emplace(name, compare_with_reference(fn, reference, size)).first;
        if (!it->second.empty()) {
            state.SkipWithError(it->second.c_str());
            return;
        }
        time_packed(state, fn, size);
    })->Unit(benchmark::kMillisecond);
}

std::string memcpy_name(const FrameSize& size) {
    return "memcpy/" + size.label();
}

void register_memcpy_benchmarks() {
    for (const FrameSize& size : kFrameSizes) {
        register_packed(
            memcpy_name(size),
            [](uint8_t* dst, const uint8_t* src, unsigned int, unsigned int height,
               unsigned int dstPitch, unsigned int) -> unsigned int {
                std::memcpy(dst, src, static_cast<size_t>(dstPitch) * height);
                return height * dstPitch;
            },
            size, -1, false);
    }
}

void add_summary_row(SummaryRow row) {
    rows().push_back(std::move(row));
}

const std::vector<SummaryRow>& summary_rows() {
    return rows();
}

}  // namespace cycbcr_bench
