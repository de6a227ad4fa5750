// A byte-level model of what a conversion does to its destination, and the
// layouts of the 8-bit formats. Writes go through d() and reads through s();
// both record how far into each buffer the conversion may reach, so that the
// real run can be placed between guard pages ending exactly there.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "frame/formats.h"
#include "support/frames.h"

namespace cycbcr_test {

struct ByteModel {
    std::vector<uint8_t> init, dst;  // the destination before and after
    const std::vector<uint8_t>& src;
    size_t dstEnd = 0, srcEnd = 0;
    unsigned int result = 0;

    ByteModel(std::vector<uint8_t> start, const std::vector<uint8_t>& source)
        : init(std::move(start)), dst(init), src(source) {}
    uint8_t& d(size_t i) {
        dstEnd = std::max(dstEnd, i + 1);
        return dst.at(i);
    }
    uint8_t s(size_t i) {
        srcEnd = std::max(srcEnd, i + 1);
        return src.at(i);
    }
    void copy(size_t to, size_t from, size_t n) {
        for (size_t k = 0; k < n; ++k) d(to + k) = s(from + k);
    }
    // Exchanges row i with row rows - 1 - i, pitch bytes each (cycbcr_invert).
    void flip(size_t at, size_t pitch, size_t rows) {
        for (size_t i = 0; i < rows / 2; ++i)
            for (size_t k = 0; k < pitch; ++k)
                std::swap(d(at + i * pitch + k), d(at + (rows - 1 - i) * pitch + k));
    }
};

// Runs the conversion between guard pages at the model's bounds, the destination
// starting as the model's, and expects the model's count and bytes.
inline ::testing::AssertionResult matches(const ByteModel& m, const Call& call) {
    const Outcome got = run_guarded(call, m.src, m.srcEnd, m.init, m.dstEnd);
    if (got.result != m.result)
        return ::testing::AssertionFailure()
               << "result " << got.result << ", expected " << m.result;
    return same_bytes(got.dst, m.dst);
}
inline ::testing::AssertionResult matches(const ByteModel& m, Converter fn, const Geometry& g) {
    return matches(m, [&](uint8_t* d, const uint8_t* s) {
        return fn(d, s, g.width, g.height, g.dstPitch, g.srcPitch);
    });
}

// Where a frame keeps its first Y, Cb and Cr sample. Packed: the bytes of the
// first pixel pair (Y1 two bytes after Y0, each sample recurring every four).
// Planar: planes placed by pitch * height as a 32-bit product, the quarter and
// half by shifts.
using Fmt = cycbcr::Format;  // the library's format names; the layouts below are the tests' own
struct Layout {
    size_t y, cb, cr;
    bool planar, full;  // full: 4:2:2 chroma
};
inline Layout layout_of(Fmt f, uint32_t pitch, uint32_t height) {
    const uint32_t p = pitch * height;
    switch (f) {
        case Fmt::YUY2:
            return {0, 1, 3, false, true};
        case Fmt::YVYU:
            return {0, 3, 1, false, true};
        case Fmt::UYVY:
        case Fmt::CYUV:
            return {1, 0, 2, false, true};
        case Fmt::I420:
            return {0, p, size_t{p} + (p >> 2), true, false};
        case Fmt::YV12:
            return {0, size_t{p} + (p >> 2), p, true, false};
        case Fmt::P422:
            return {0, p, size_t{p} + (p >> 1), true, true};
        default:
            return {};
    }
}

}  // namespace cycbcr_test
