// Building blocks of the v210 reference models: an expected frame that records
// how far into each buffer a converter may reach, v210 groups read sample by
// sample, and a guarded run for converters with any argument list.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "support/frames.h"
#include "support/guarded_buffer.h"

namespace cycbcr_test {

// The expected destination, built from the source one access at a time. Every
// access goes through d() and s(): dstEnd and srcEnd are then the exact bounds
// a run may touch, where the guard pages of the real run are placed.
struct Expected {
    std::vector<uint8_t> dst;
    const std::vector<uint8_t>& src;
    size_t dstEnd = 0, srcEnd = 0;
    unsigned int result = 0;

    Expected(std::vector<uint8_t> init, const std::vector<uint8_t>& source)
        : dst(std::move(init)), src(source) {}
    uint8_t& d(size_t i) {
        dstEnd = std::max(dstEnd, i + 1);
        return dst.at(i);
    }
    uint8_t s(size_t i) {
        srcEnd = std::max(srcEnd, i + 1);
        return src.at(i);
    }
    void d16(size_t i, uint16_t v) {  // a little-endian 16-bit sample at byte i
        d(i) = static_cast<uint8_t>(v);
        d(i + 1) = static_cast<uint8_t>(v >> 8);
    }
    // The twelve samples of the v210 group at byte `at`, in address order
    // (Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3 Cb2 Y4 Cr2 Y5); bits 30 and 31 dropped.
    std::array<uint32_t, 12> group(size_t at) {
        std::array<uint32_t, 12> out{};
        for (unsigned w = 0; w < 4; ++w) {
            uint32_t word = 0;
            for (unsigned b = 0; b < 4; ++b) word |= uint32_t{s(at + 4 * w + b)} << (8 * b);
            for (unsigned k = 0; k < 3; ++k) out[3 * w + k] = (word >> (10 * k)) & 0x3FF;
        }
        return out;
    }
};

// Sample k of a group in address order: Y of pixel i is 2i + 1, Cb and Cr of
// pair j are 4j and 4j + 2.
constexpr unsigned kY[6] = {1, 3, 5, 7, 9, 11};
constexpr unsigned kCb[3] = {0, 4, 8};
constexpr unsigned kCr[3] = {2, 6, 10};

// Twelve 10-bit samples in address order packed into one 16-byte group.
inline void put_group(uint8_t* out, const uint32_t s[12]) {
    for (unsigned w = 0; w < 4; ++w) {
        const uint32_t word = s[3 * w] | s[3 * w + 1] << 10 | s[3 * w + 2] << 20;
        std::memcpy(out + 4 * w, &word, 4);
    }
}

inline uint32_t ceil_div(uint32_t a, uint32_t b) {
    return (a + b - 1) / b;
}
inline uint32_t round_up(uint32_t a, uint32_t m) {
    return ceil_div(a, m) * m;
}

// Runs call(dst, src) with the first srcBytes of src and the first dstBytes of
// dstInit in guarded buffers ending exactly there, as run_guarded does.
template <class Call>
Outcome run_guarded_call(Call&& call, const std::vector<uint8_t>& src, size_t srcBytes,
                         const std::vector<uint8_t>& dstInit, size_t dstBytes) {
    GuardedBuffer s(srcBytes), d(dstBytes);
    std::copy_n(src.begin(), srcBytes, s.data());
    std::copy_n(dstInit.begin(), dstBytes, d.data());
    Outcome run{dstInit, call(d.data(), static_cast<const uint8_t*>(s.data()))};
    std::copy_n(d.data(), dstBytes, run.dst.begin());
    EXPECT_TRUE(s.slack_intact() && d.slack_intact()) << "write before the buffer";
    EXPECT_TRUE(std::equal(s.data(), s.data() + srcBytes, src.begin())) << "source changed";
    return run;
}

// Runs call(dst, src) between guard pages at the model's bounds, the
// destination starting as init, and compares result and bytes with the model.
template <class Call>
::testing::AssertionResult matches(const Expected& want, const std::vector<uint8_t>& init,
                                   Call&& call) {
    const Outcome got = run_guarded_call(call, want.src, want.srcEnd, init, want.dstEnd);
    if (got.result != want.result)
        return ::testing::AssertionFailure()
               << "result " << got.result << ", expected " << want.result;
    return same_bytes(got.dst, want.dst);
}

}  // namespace cycbcr_test
