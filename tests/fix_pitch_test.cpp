// The dispatcher's pitch rule, one group of format codes at a time.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "cycbcr.h"
#include "support/frames.h"

using cycbcr_test::fourcc;

namespace {

struct Case {
    uint32_t width, pitch, want;
};

void expect_rule(const std::vector<uint32_t>& codes, const std::vector<Case>& cases) {
    for (uint32_t code : codes)
        for (const Case& c : cases) {
            unsigned int pitch = c.pitch;
            _fixPitch(code, c.width, pitch);
            EXPECT_EQ(pitch, c.want) << "code 0x" << std::hex << code << std::dec << " width "
                                     << c.width << " pitch " << c.pitch;
        }
}

// A packed pitch below two bytes a pixel is raised to it; a larger one is kept.
TEST(FixPitch, PackedCodesRaiseTooSmallPitch) {
    const std::vector<uint32_t> codes = {
        fourcc("UYVY"), fourcc("UYNV"), fourcc("AJYU"), fourcc("yuv2"), fourcc("yuV2"),
        fourcc("2vuy"), fourcc("2Vuy"), 0x8800001Eu,    0x8810001Eu,    fourcc("YUY2"),
        fourcc("YUNV"), fourcc("YVYU"), fourcc("cyuv")};
    const std::vector<Case> cases = {{720, 0, 1440},    {720, 1000, 1440}, {720, 1439, 1440},
                                     {720, 1440, 1440}, {720, 1600, 1600}, {1, 0, 2},
                                     {0, 0, 0},         {0, 5, 5}};
    expect_rule(codes, cases);
}

// A planar pitch above the width rounded up to 128 falls back to the width;
// anything else, too small or zero included, passes unchanged.
TEST(FixPitch, PlanarCodesReplaceOnlyTooLargePitch) {
    const std::vector<Case> cases = {{720, 0, 0},      {720, 700, 700}, {720, 720, 720},
                                     {720, 736, 736},  {720, 768, 768}, {720, 769, 720},
                                     {720, 1440, 720}, {1, 128, 128},   {1, 129, 1},
                                     {128, 128, 128},  {128, 129, 128}, {0, 1, 0}};
    expect_rule({fourcc("I420"), fourcc("IYUV"), fourcc("YV12"), fourcc("P422")}, cases);
}

// v210: 0 stays; a pitch that is not a multiple of 16, or is below
// (width / 6) * 16 with the division truncating, becomes that minimum.
TEST(FixPitch, V210CodesUseTruncatingMinimum) {
    const std::vector<Case> cases = {{720, 0, 0},        {720, 1000, 1920},  {720, 1024, 1920},
                                     {720, 1920, 1920},  {720, 1930, 1920},  {720, 1936, 1936},
                                     {720, 2048, 2048},  {1280, 16, 3408},   {1280, 3392, 3408},
                                     {1280, 3400, 3408}, {1280, 3408, 3408}, {1280, 3424, 3424},
                                     {5, 16, 16},        {5, 8, 0}};
    expect_rule({fourcc("v210"), fourcc("012v")}, cases);
}

// "422P" is a source-only spelling the rule does not know; RGB and unknown codes,
// other capitalisations of known names among them, pass through.
TEST(FixPitch, OtherCodesUnchanged) {
    expect_rule({fourcc("422P"), 0u, fourcc("NV12"), fourcc("YUV2"), fourcc("Yuv2"), fourcc("YUv2"),
                 fourcc("uyvy"), fourcc("yuy2"), fourcc("V210"), fourcc("i420"), fourcc("CYUV"),
                 0x8800001Fu},
                {{720, 0, 0}, {720, 1, 1}, {720, 700, 700}, {720, 5000, 5000}});
}

}  // namespace
