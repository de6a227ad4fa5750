// The dispatcher's pitch rule, one group of format codes at a time.
#include <gtest/gtest.h>

#include <cstdint>

#include "cycbcr.h"

namespace {

constexpr uint32_t fourcc(const char* s) {
    return uint32_t(uint8_t(s[0])) | uint32_t(uint8_t(s[1])) << 8 | uint32_t(uint8_t(s[2])) << 16 |
           uint32_t(uint8_t(s[3])) << 24;
}

struct Case {
    uint32_t width, pitch, want;
};

void expect_rule(uint32_t code, std::initializer_list<Case> cases) {
    for (const Case& c : cases) {
        unsigned int pitch = c.pitch;
        _fixPitch(code, c.width, pitch);
        EXPECT_EQ(pitch, c.want) << "code 0x" << std::hex << code << std::dec << " width "
                                 << c.width << " pitch " << c.pitch;
    }
}

const uint32_t kPacked[] = {fourcc("UYVY"), fourcc("UYNV"), fourcc("AJYU"), fourcc("yuv2"),
                            fourcc("yuV2"), fourcc("2vuy"), fourcc("2Vuy"), 0x8800001Eu,
                            0x8810001Eu,    fourcc("YUY2"), fourcc("YUNV"), fourcc("YVYU"),
                            fourcc("cyuv")};

// A packed pitch below two bytes a pixel is raised to it; a larger one is kept.
TEST(FixPitch, PackedCodesRaiseTooSmallPitch) {
    for (uint32_t code : kPacked)
        expect_rule(code, {{720, 0, 1440},
                           {720, 1000, 1440},
                           {720, 1439, 1440},
                           {720, 1440, 1440},
                           {720, 1600, 1600},
                           {1, 0, 2},
                           {0, 0, 0},
                           {0, 5, 5}});
}

// A planar pitch above the width rounded up to 128 falls back to the width;
// anything else, too small or zero included, passes unchanged.
TEST(FixPitch, PlanarCodesReplaceOnlyTooLargePitch) {
    for (const char* name : {"I420", "IYUV", "YV12", "P422"})
        expect_rule(fourcc(name), {{720, 0, 0},
                                   {720, 700, 700},
                                   {720, 720, 720},
                                   {720, 736, 736},
                                   {720, 768, 768},
                                   {720, 769, 720},
                                   {720, 1440, 720},
                                   {1, 128, 128},
                                   {1, 129, 1},
                                   {128, 128, 128},
                                   {128, 129, 128},
                                   {0, 1, 0}});
}

// v210: 0 stays; a pitch that is not a multiple of 16, or is below
// (width / 6) * 16 with the division truncating, becomes that minimum.
TEST(FixPitch, V210CodesUseTruncatingMinimum) {
    for (uint32_t code : {fourcc("v210"), fourcc("012v")})
        expect_rule(code, {{720, 0, 0},
                           {720, 1000, 1920},
                           {720, 1024, 1920},
                           {720, 1920, 1920},
                           {720, 1930, 1920},
                           {720, 1936, 1936},
                           {720, 2048, 2048},
                           {1280, 16, 3408},
                           {1280, 3392, 3408},
                           {1280, 3400, 3408},
                           {1280, 3408, 3408},
                           {1280, 3424, 3424},
                           {5, 16, 16},
                           {5, 8, 0}});
}

// "422P" is a source-only spelling the rule does not know; RGB and unknown codes,
// other capitalisations of known names among them, pass through.
TEST(FixPitch, OtherCodesUnchanged) {
    for (uint32_t code : {fourcc("422P"), 0u, fourcc("NV12"), fourcc("YUV2"), fourcc("Yuv2"),
                          fourcc("YUv2"), fourcc("uyvy"), fourcc("yuy2"), fourcc("V210"),
                          fourcc("i420"), fourcc("CYUV"), 0x8800001Fu})
        expect_rule(code, {{720, 0, 0}, {720, 1, 1}, {720, 700, 700}, {720, 5000, 5000}});
}

}  // namespace
