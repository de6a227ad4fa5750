// Shared helpers of the converter tests: seeded random frames, byte comparison,
// and running a conversion between guard pages.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <ostream>
#include <vector>

namespace cycbcr_test {

// Every converter's argument list: dst, src, width, height, dstPitch, srcPitch.
using Converter = unsigned int (*)(uint8_t*, const uint8_t*, unsigned int, unsigned int,
                                   unsigned int, unsigned int);
// A conversion with everything but its two buffers bound.
using Call = std::function<unsigned int(uint8_t* dst, const uint8_t* src)>;

struct Geometry {
    uint32_t width, height, dstPitch, srcPitch;
};
std::ostream& operator<<(std::ostream& os, const Geometry& g);

// The level value that means "no level chosen yet".
inline constexpr uint32_t kLevelMarker = 0xFFFFFFFEu;

constexpr uint32_t fourcc(const char* s) {
    return uint32_t(uint8_t(s[0])) | uint32_t(uint8_t(s[1])) << 8 | uint32_t(uint8_t(s[2])) << 16 |
           uint32_t(uint8_t(s[3])) << 24;
}

std::vector<uint8_t> random_bytes(size_t n, uint32_t seed);

// Compares two frames, naming the first differing byte.
::testing::AssertionResult same_bytes(const std::vector<uint8_t>& got,
                                      const std::vector<uint8_t>& want);

struct Outcome {
    std::vector<uint8_t> dst;  // the whole destination frame after the call
    unsigned int result;
};

// Runs call with the first srcBytes of src and the first dstBytes of dstInit in
// guarded buffers ending exactly there. The returned frame holds dstInit's bytes
// past dstBytes. Also checks the slack canaries and that src was left alone.
Outcome run_guarded(const Call& call, const std::vector<uint8_t>& src, size_t srcBytes,
                    const std::vector<uint8_t>& dstInit, size_t dstBytes);
Outcome run_guarded(Converter fn, const Geometry& g, const std::vector<uint8_t>& src,
                    size_t srcBytes, const std::vector<uint8_t>& dstInit, size_t dstBytes);
// The same with dst == src: the frame is converted in place.
Outcome run_in_place(Converter fn, const Geometry& g, const std::vector<uint8_t>& frame);

// The processor reports AVX2 (bit 23 of the feature bits the library uses).
bool have_avx2();

}  // namespace cycbcr_test

#define CYCBCR_REQUIRE_AVX2() \
    if (!::cycbcr_test::have_avx2()) GTEST_SKIP() << "processor without AVX2"
