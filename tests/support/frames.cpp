#include "support/frames.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "cycbcr.h"
#include "support/guarded_buffer.h"

namespace cycbcr_test {

std::ostream& operator<<(std::ostream& os, const Geometry& g) {
    return os << "width " << g.width << " height " << g.height << " dstPitch " << g.dstPitch
              << " srcPitch " << g.srcPitch;
}

std::vector<uint8_t> random_bytes(size_t n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> out(n);
    for (auto& b : out) b = static_cast<uint8_t>(rng());
    return out;
}

::testing::AssertionResult same_bytes(const std::vector<uint8_t>& got,
                                      const std::vector<uint8_t>& want) {
    if (got.size() != want.size())
        return ::testing::AssertionFailure() << "size " << got.size() << " != " << want.size();
    const auto at = std::mismatch(got.begin(), got.end(), want.begin());
    if (at.first == got.end()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "byte " << (at.first - got.begin()) << " is "
                                         << int{*at.first} << ", expected " << int{*at.second};
}

namespace {
void fill(GuardedBuffer& buf, const std::vector<uint8_t>& from) {
    if (buf.size() != 0) std::memcpy(buf.data(), from.data(), buf.size());
}
}  // namespace

Outcome run_guarded(const Call& call, const std::vector<uint8_t>& src, size_t srcBytes,
                    const std::vector<uint8_t>& dstInit, size_t dstBytes) {
    GuardedBuffer s(srcBytes), d(dstBytes);
    fill(s, src);
    fill(d, dstInit);
    Outcome run{dstInit, call(d.data(), s.data())};
    std::copy_n(d.data(), dstBytes, run.dst.begin());
    EXPECT_TRUE(s.slack_intact() && d.slack_intact()) << "write before the buffer";
    EXPECT_TRUE(std::equal(s.data(), s.data() + srcBytes, src.begin())) << "source changed";
    return run;
}

Outcome run_guarded(Converter fn, const Geometry& g, const std::vector<uint8_t>& src,
                    size_t srcBytes, const std::vector<uint8_t>& dstInit, size_t dstBytes) {
    return run_guarded(
        [&](uint8_t* d, const uint8_t* s) {
            return fn(d, s, g.width, g.height, g.dstPitch, g.srcPitch);
        },
        src, srcBytes, dstInit, dstBytes);
}

Outcome run_in_place(Converter fn, const Geometry& g, const std::vector<uint8_t>& frame) {
    GuardedBuffer b(frame.size());
    fill(b, frame);
    Outcome run{frame, fn(b.data(), b.data(), g.width, g.height, g.dstPitch, g.srcPitch)};
    std::copy_n(b.data(), frame.size(), run.dst.begin());
    EXPECT_TRUE(b.slack_intact()) << "write before the buffer, " << g;
    return run;
}

bool have_avx2() {
    return (cycbcr_cpu_flags() & 0x800000u) != 0;
}

}  // namespace cycbcr_test
