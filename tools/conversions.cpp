#include "conversions.h"

#include <cycbcr.h>

#include <string>
#include <vector>

#include "tool_error.h"

namespace cycbcr_tool {

// cycbcr_can_transcode cannot say which pairs convert: it answers for the
// codes the library knows, not for the converters this build has. So the
// dispatcher is asked by a trial. It returns 0, writing nothing, for a pair it
// has no converter for, and otherwise its converter's byte count. Some
// converters count with the pitch as the caller passed it, which is 0 for a
// pitch of 0, but none returns 0 for a frame of non-zero size and non-zero
// pitches. So a pair converts exactly when a trial frame with the natural,
// non-zero pitches of both formats gives a non-zero result. The trial frame is
// 48x2: a whole v210 row block, a whole number of every pixel group, and an
// even height for 4:2:0.
bool library_converts(uint32_t from_code, uint32_t to_code) {
    constexpr uint32_t kWidth = 48;
    constexpr uint32_t kHeight = 2;
    // Under 1 KiB is touched in any format at this size; the rest is spare.
    constexpr size_t kScratch = 16 * 1024;
    const FormatCode* from = find_code(from_code);
    const FormatCode* to = find_code(to_code);
    if (from == nullptr || to == nullptr) return false;
    std::vector<uint8_t> src(kScratch, 0x80);
    std::vector<uint8_t> dst(kScratch);
    return cycbcr_transcode(dst.data(), src.data(), kWidth, kHeight,
                            natural_pitch(to->format, kWidth), natural_pitch(from->format, kWidth),
                            0, 0, to_code, from_code) != 0;
}

void convert_frame(uint32_t from_code, uint32_t to_code, uint8_t* dst, const uint8_t* src,
                   uint32_t width, uint32_t height, const FrameLayout& dst_layout,
                   const FrameLayout& src_layout) {
    // The byte count means different things for different converters (the
    // pitch as passed times the height, the v210 row size times the height,
    // pixels times two ...), so only a count of 0, the dispatcher's refusal,
    // is taken as a failure.
    const unsigned int count = cycbcr_transcode(dst, src, width, height, dst_layout.pitch,
                                                src_layout.pitch, 0, 0, to_code, from_code);
    if (count == 0) {
        throw ToolError("the library converted nothing from " + code_text(from_code) + " to " +
                        code_text(to_code));
    }
}

}  // namespace cycbcr_tool
