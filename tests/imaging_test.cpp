// The imaging-library equivalents of the packed <-> planar paths: status codes
// and their order, and untouched buffers on every refusal. (Their bytes, odd sizes
// included, are checked through the converter paths that call them.)
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/imaging.h"
#include "support/frames.h"

using namespace cycbcr::ipp;
using cycbcr_test::same_bytes;

namespace {

// One calling convention for the four: a packed frame and three planes (Y, then
// the chroma planes in the function's own order), each with its step.
struct Function {
    const char* name;
    int minHeight;
    IppStatus (*call)(Ipp8u* packed, int packedStep, Ipp8u* planes[3], int steps[3], IppiSize roi);
};
// clang-format off
const Function kFunctions[] = {
    {"CbYCr422ToYCbCr422_8u_C2P3R", 1,
     [](Ipp8u* p, int ps, Ipp8u* pl[3], int st[3], IppiSize r) { return ippiCbYCr422ToYCbCr422_8u_C2P3R(p, ps, pl, st, r); }},
    {"YCbCr422_8u_C2P3R", 1,
     [](Ipp8u* p, int ps, Ipp8u* pl[3], int st[3], IppiSize r) { return ippiYCbCr422_8u_C2P3R(p, ps, pl, st, r); }},
    {"YCbCr422ToCbYCr422_8u_P3C2R", 1,
     [](Ipp8u* p, int ps, Ipp8u* pl[3], int st[3], IppiSize r) {
         const Ipp8u* s[3] = {pl[0], pl[1], pl[2]};
         return ippiYCbCr422ToCbYCr422_8u_P3C2R(s, st, p, ps, r); }},
    {"YCrCb420ToCbYCr422_8u_P3C2R", 2,
     [](Ipp8u* p, int ps, Ipp8u* pl[3], int st[3], IppiSize r) {
         const Ipp8u* s[3] = {pl[0], pl[1], pl[2]};
         return ippiYCrCb420ToCbYCr422_8u_P3C2R(s, st, p, ps, r); }},
};
// clang-format on

using Bytes = std::vector<uint8_t>;

// Written out by hand: the second plane of the 4:2:0 source is Cr, the third Cb;
// a 3x3 frame converts its 2x2 part and leaves row 2 and column 2 alone.
TEST(Imaging, Planes420ToUyvyByHand) {
    const Ipp8u y[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9}, cr[2] = {0xC0, 0xC1}, cb[2] = {0xB0, 0xB1};
    const Ipp8u* src[3] = {y, cr, cb};
    int steps[3] = {3, 2, 2};
    std::array<uint8_t, 24> out;
    out.fill(0xEE);
    EXPECT_EQ(ippiYCrCb420ToCbYCr422_8u_P3C2R(src, steps, out.data(), 8, {3, 3}), ippStsDoubleSize);
    EXPECT_EQ(out, (std::array<uint8_t, 24>{0xB0, 1,    0xC0, 2,    0xEE, 0xEE, 0xEE, 0xEE,  //
                                            0xB0, 4,    0xC0, 5,    0xEE, 0xEE, 0xEE, 0xEE,  //
                                            0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
}

// Null pointers first, then sizes, then steps; nothing written on any refusal.
TEST(Imaging, RefusalsInOrderAndWithoutWriting) {
    for (const Function& fn : kFunctions) {
        const Bytes start = cycbcr_test::random_bytes(48, 7);  // packed 16 bytes, planes 8 + 8 + 8
        auto expect_refused = [&](IppStatus want, const char* what, auto&& change) {
            Bytes f = start;
            Ipp8u* packed = f.data();
            Ipp8u* planes[3] = {f.data() + 16, f.data() + 24, f.data() + 32};
            int steps[4] = {8, 4, 2, 2};
            IppiSize roi{4, 2};
            change(packed, planes, steps, roi);
            EXPECT_EQ(fn.call(packed, steps[0], planes, steps + 1, roi), want)
                << fn.name << ": " << what;
            EXPECT_TRUE(same_bytes(f, start)) << fn.name << ": " << what;
        };
        for (int slot = 0; slot < 4; ++slot) {
            expect_refused(ippStsNullPtrErr, "null pointer",
                           [&](Ipp8u*& p, Ipp8u** pl, int*, IppiSize& roi) {
                               (slot == 0 ? p : pl[slot - 1]) = nullptr;
                               roi = {0, 0};  // a bad size too: the pointer is reported
                           });
            for (int bad : {0, -8})
                expect_refused(ippStsStepErr, "step",
                               [&](Ipp8u*&, Ipp8u**, int* steps, IppiSize&) { steps[slot] = bad; });
        }
        const IppiSize tooSmall[] = {{1, 2}, {0, 2}, {-4, 2}, {4, fn.minHeight - 1}, {4, -1}};
        for (const IppiSize bad : tooSmall)
            expect_refused(ippStsSizeErr, "size", [&](Ipp8u*&, Ipp8u**, int* steps, IppiSize& roi) {
                roi = bad;
                steps[1] = 0;  // a bad step too: the size is reported
            });
    }
}

}  // namespace
