// Frame conversions through the library, and which pairs it converts.
#pragma once

#include <cycbcr.h>

#include <cstdint>
#include <span>
#include <vector>

#include "formats.h"

namespace cycbcr_tool {

// Whether the library has a converter from one code to the other, as
// cycbcr_pair_converter answers.
bool library_converts(uint32_t from_code, uint32_t to_code);

// Whether 'cycbcr convert' converts the pair: the command lays out both
// formats, and the library has every converter of the pair's route.
bool command_converts(uint32_t from_code, uint32_t to_code);

// Whether the dispatcher converts the code to 32-bit RGB, as
// cycbcr_rgb_pair_converter answers.
bool library_converts_to_rgb32(uint32_t from_code);

// Whether 'cycbcr convert' converts the code to RGB (every depth): any YCbCr
// format it reads (see rgb_conversions.h).
bool command_converts_to_rgb(uint32_t from_code);

// Frames of one size and format in, frames of another out: a source frame to
// fill, then convert() for the result.
class Converter {
  public:
    virtual ~Converter() = default;

    // The source frame, to fill before each convert().
    virtual std::span<uint8_t> source() = 0;

    // Converts the frame in source() and returns the destination frame, valid
    // until the next call.
    virtual std::span<const uint8_t> convert() = 0;
};

// Converts frames of one size from one code to another into the standard frame
// of the destination format, through the library's own converters. How each
// library call is made is settled once, here: at the natural pitches through
// cycbcr_transcode where the converter keeps to the two frames, otherwise on
// padded rows in working buffers (see conversions.cpp). Every buffer a
// converter touches is as long as cycbcr_buffer_sizes says it needs.
class FrameConverter : public Converter {
  public:
    // Throws ToolError when the command cannot convert the pair, or a frame of
    // this size of either format.
    FrameConverter(const FormatCode& from, const FormatCode& to, uint32_t width, uint32_t height);

    // The source frame, frame_layout(from).frame_bytes long, to fill before
    // each convert().
    std::span<uint8_t> source() override;

    // Converts the frame in source() and returns the destination frame,
    // frame_layout(to).frame_bytes long, valid until the next call.
    std::span<const uint8_t> convert() override;

  private:
    // One library call: frames_[i] to frames_[i + 1], both file frames.
    struct Step {
        uint32_t dst_code = 0;
        uint32_t src_code = 0;
        cycbcr_converter converter = nullptr;
        // Rows as the converter is given them. A side at its natural pitch is
        // handed the file frame itself; a padded side works in a buffer of its
        // own, copied in before the call (source) or out after it
        // (destination).
        uint32_t dst_pitch = 0;
        uint32_t src_pitch = 0;
        // The rows the call converts: the frame's, or more (call_height()).
        uint32_t height = 0;
        bool padded_dst = false;
        bool padded_src = false;
        // Both sides at their natural pitches, which the dispatcher keeps:
        // the call goes through cycbcr_transcode.
        bool dispatched = false;
        std::vector<PlaneRows> dst_natural, dst_padded, src_natural, src_padded;
        std::vector<uint8_t> dst_work, src_work;
    };

    uint32_t width_;
    uint32_t height_;
    std::vector<Step> steps_;
    std::vector<std::vector<uint8_t>> frames_;
    uint64_t source_bytes_ = 0;
    uint64_t result_bytes_ = 0;
};

}  // namespace cycbcr_tool
