#include "bench_support.h"

#include <cycbcr.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "frame/geometry.h"

namespace cycbcr_bench {
namespace {

constexpr uint32_t kAvx2Bit = 0x800000u;

using Buffer = Block;

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

// The largest natural frame of any format a listed converter reads or writes,
// the RGB converters' included.
size_t largest_frame(const FrameSize& size) {
    size_t bytes = 0;
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows)
        bytes = std::max({bytes, frame_bytes(r.from, size), frame_bytes(r.to, size)});
    for (const cycbcr::RgbConverterRow& r : cycbcr::kRgbConverterRows)
        bytes = std::max({bytes, frame_bytes(r.from, size), frame_bytes(r.to, size)});
    for (const cycbcr::FromRgbConverterRow& r : cycbcr::kFromRgbConverterRows)
        bytes = std::max({bytes, frame_bytes(r.from, size), frame_bytes(r.to, size)});
    return bytes;
}

BufferSet& buffer_set(const FrameSize& size) {
    static std::map<std::pair<unsigned, unsigned>, BufferSet> sets;
    BufferSet& set = sets[{size.width, size.height}];
    if (!set.src) {
        const size_t bytes = largest_frame(size);
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
void time_calls(benchmark::State& state, const FrameCall& call, const FrameSize& size,
                size_t moved) {
    Buffers& b = frame_buffers(size);
    for (auto _ : state) {
        call(b.dst, b.src);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(moved));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

FrameCall call_of(Converter fn, const FrameSize& size, const Shape& shape) {
    return [=](uint8_t* dst, const uint8_t* src) {
        fn(dst, src, size.width, size.height, shape.dst_pitch, shape.src_pitch);
    };
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

// The code the public buffer-size query names a format by.
uint32_t fourcc_of(Format f) {
    return cycbcr::info(f).fourcc;
}

// Whether some pair's converter takes `form` at level 5. A second name of a
// function has the function's address, so a pair that hands over under the
// other name counts too.
bool handed_over_to(const cycbcr::ConverterRow& form) {
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows)
        if (r.pair && r.avx2 == form.fn) return true;
    return false;
}

// The rows the benchmarks time (see listed_for_family).
bool timed(const cycbcr::ConverterRow& r) {
    if (r.alias) return false;
    if (r.pair) return true;
    return std::string_view(r.name).ends_with("_avx2") && !handed_over_to(r);
}

// Which family tests took each timed row.
using FamilyTest = bool (*)(Format, Format);
std::map<std::string, std::set<FamilyTest>>& claims() {
    static std::map<std::string, std::set<FamilyTest>> all;
    return all;
}

// Exits unless the shared buffers hold the bytes a converter was answered to
// read and write (`known` false: it had no answer).
void hold_reach(const std::string& name, const FrameSize& size, bool known, uint64_t dst,
                uint64_t src) {
    const uint64_t room = largest_frame(size) + kBufferSlack;
    if (known && dst <= room && src <= room) return;
    if (!known)
        std::fprintf(stderr, "cycbcr_bench: no buffer sizes for %s\n", name.c_str());
    else
        std::fprintf(stderr,
                     "cycbcr_bench: %s at %s reads %llu and writes %llu bytes; the shared "
                     "buffers hold %llu\n",
                     name.c_str(), size.label().c_str(), static_cast<unsigned long long>(src),
                     static_cast<unsigned long long>(dst), static_cast<unsigned long long>(room));
    std::exit(1);
}

// The same for the converter of a pair (and so any form of it) at these pitches.
void check_reach(const Listed& c, const FrameSize& size, const Shape& shape) {
    uint64_t dst = 0, src = 0;
    const bool known =
        cycbcr_buffer_sizes(fourcc_of(c.to), fourcc_of(c.from), size.width, size.height,
                            shape.dst_pitch, shape.src_pitch, &dst, &src) != 0;
    hold_reach(c.name, size, known, dst, src);
}

}  // namespace

std::string short_name(std::string_view name) {
    constexpr std::string_view prefix = "cycbcr_";
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
    return std::string(name);
}

void check_named_reach(const char* name, const FrameSize& size, const Shape& shape,
                       QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType) {
    uint64_t dst = 0, src = 0;
    const bool known =
        cycbcr_converter_buffer_sizes(name, size.width, size.height, shape.dst_pitch,
                                      shape.src_pitch, matrix, rgbType, &dst, &src) != 0;
    hold_reach(name, size, known, dst, src);
}

std::string FrameSize::label() const {
    return std::to_string(width) + "x" + std::to_string(height);
}

size_t frame_bytes(Format f, const FrameSize& size) {
    const cycbcr::FormatInfo& in = cycbcr::info(f);
    const size_t pitch = cycbcr::natural_pitch(f, size.width);
    const size_t first_plane = pitch * size.height;
    if (cycbcr::is_packed422(f) || in.arrangement == cycbcr::Arrangement::V210) return first_plane;
    if (cycbcr::is_planar8(f))
        return first_plane + 2 * (pitch >> in.chroma_x) * cycbcr::chroma_rows(f, size.height);
    // NV12, NV10, NV12p16: the Y plane, then rows of Cb, Cr pairs as long as a
    // luma row.
    if (in.arrangement == cycbcr::Arrangement::SemiPlanar)
        return first_plane + pitch * cycbcr::chroma_rows(f, size.height);
    if (in.arrangement == cycbcr::Arrangement::Rgb) return first_plane;
    std::fprintf(stderr, "cycbcr_bench: no frame size for format %s\n", in.name);
    std::exit(1);
}

Buffers& frame_buffers(const FrameSize& size) {
    return buffer_set(size).view;
}

Shape natural_shape(Format from, Format to, const FrameSize& size) {
    const size_t src = frame_bytes(from, size), dst = frame_bytes(to, size);
    return {cycbcr::natural_pitch(to, size.width), cycbcr::natural_pitch(from, size.width), dst,
            src + dst};
}

bool avx2_usable() {
    return (cycbcr_cpu_flags() & kAvx2Bit) != 0;
}

benchmark::internal::Benchmark* register_call(const std::string& name, FrameCall call,
                                              const FrameSize& size, size_t moved, int level,
                                              bool needs_avx2, Verdict check) {
    return benchmark::RegisterBenchmark(
               name.c_str(),
               [=](benchmark::State& state) {
                   if (needs_avx2 && !avx2_usable()) {
                       state.SkipWithError("processor lacks AVX2 (feature bit 23)");
                       return;
                   }
                   if (check) {
                       // Checked once per process; repetitions reuse the verdict.
                       static std::map<std::string, std::string> verdicts;
                       auto it = verdicts.find(name);
                       if (it == verdicts.end()) it = verdicts.emplace(name, check()).first;
                       if (!it->second.empty()) {
                           state.SkipWithError(it->second.c_str());
                           return;
                       }
                   }
                   if (level >= 0 && cycbcr_set_cpu(static_cast<unsigned>(level)) !=
                                         static_cast<unsigned>(level)) {
                       state.SkipWithError("processor level not available");
                       return;
                   }
                   time_calls(state, call, size, moved);
               })
        ->Unit(benchmark::kMillisecond);
}

void register_converter(const std::string& name, Converter fn, const FrameSize& size,
                        const Shape& shape, int level, bool needs_avx2) {
    register_call(name, call_of(fn, size, shape), size, shape.moved, level, needs_avx2);
}

void register_peer(const std::string& name, Converter fn, const FrameSize& size, const Shape& shape,
                   Converter reference, const Check& check) {
    Verdict verdict;
    if (reference != nullptr)
        verdict = [=] { return compare_with_reference(fn, reference, size, shape, check); };
    register_call(name, call_of(fn, size, shape), size, shape.moved, -1, false, verdict);
}

size_t buffer_room(const FrameSize& size) {
    return largest_frame(size) + kBufferSlack;
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

std::vector<Listed> listed_for_family(bool (*in_family)(Format from, Format to)) {
    std::vector<Listed> out;
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows) {
        if (!timed(r) || !in_family(r.from, r.to)) continue;
        claims()[r.name].insert(in_family);
        // An AVX2 form is its own level 5 code; a pair's converter has one when
        // it names the form it hands over to.
        const bool level5_form = !r.pair || r.avx2 != nullptr;
        out.push_back({short_name(r.name), r.fn, r.from, r.to, r.pair, level5_form});
    }
    return out;
}

std::vector<std::string> unclaimed_converters() {
    std::vector<std::string> out;
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows) {
        if (!timed(r)) continue;
        auto it = claims().find(r.name);
        const size_t families = it == claims().end() ? 0 : it->second.size();
        if (families != 1)
            out.push_back(std::string(r.name) + " is in " + std::to_string(families) +
                          " families, not one");
    }
    return out;
}

Converter pair_converter(Format from, Format to) {
    for (const cycbcr::ConverterRow& r : cycbcr::kConverterRows)
        if (r.pair && r.from == from && r.to == to) return r.fn;
    std::fprintf(stderr, "cycbcr_bench: no listed converter from %s to %s\n",
                 cycbcr::info(from).name, cycbcr::info(to).name);
    std::exit(1);
}

SummaryRow register_listed(const char* family, const Listed& c, const FrameSize& size) {
    const Shape shape = natural_shape(c.from, c.to, size);
    check_reach(c, size, shape);
    SummaryRow row;
    row.family = family;
    row.size = size.label();
    row.converter = c.name;
    row.level5_form = c.level5_form;
    row.memcpy = memcpy_benchmark(size, shape.moved / 2);
    const std::string base = c.name + "/" + size.label();
    if (c.plain) {
        row.plain = base + "/plain";
        register_converter(row.plain, c.fn, size, shape, 0, false);
    }
    row.level5 = base + "/level5";
    register_converter(row.level5, c.fn, size, shape, 5, true);
    return row;
}

void FreeDeleter::operator()(uint8_t* p) const {
    std::free(p);
}

Block random_block(size_t bytes, uint64_t seed, uint8_t oddMask) {
    const size_t rounded = (bytes + 4095) / 4096 * 4096;
    Block b = aligned_buffer(rounded);
    fill_random(b.get(), rounded, seed);
    if (oddMask != 0xFF)
        for (size_t i = 1; i < rounded; i += 2) b.get()[i] &= oddMask;
    return b;
}

}  // namespace cycbcr_bench
