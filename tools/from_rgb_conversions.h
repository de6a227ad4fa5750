// RGB frames to 8-bit YCbCr through the library's converters from RGB.
#pragma once

#include <cycbcr.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "conversions.h"
#include "formats.h"

namespace cycbcr_tool {

// Whether 'cycbcr convert' converts RGB to the code: an 8-bit YCbCr format
// (UYVY, YUY2, YVYU, cyuv, I420, YV12, P422) or v210 the library's dispatcher
// has a converter from RGB to.
bool command_converts_from_rgb(uint32_t to_code);

// Whether the depth converts to the format: every source depth to v210, all
// but rgb10 (which the library converts to v210 only) to the 8-bit formats.
bool rgb_depth_converts_to(RgbDepth depth, Format to);

// Converts RGB frames of one depth (rgb24, rgb32, rgb48, rgb64, rgb32f,
// rgb10), rows tightly packed, in one layout, to the standard frame of an
// 8-bit YCbCr format or v210 with one matrix. The library's converters to the
// 8-bit formats convert whole pixel pairs only, so the width must be even
// (and the height too for I420 and YV12); those to v210 write whole groups of
// six pixels and, of a last partial group, its first pair only, so the width
// must leave 0 or 2 pixels after its whole groups (rgb32f, which goes through
// UYVY, any even width). The routes (see from_rgb_conversions.cpp) are
// settled in the constructor.
class FromRgbConverter : public Converter {
  public:
    // Throws ToolError for a depth or destination it does not convert, a
    // width the converters would not write whole (or an odd height to 4:2:0),
    // or a frame too large.
    FromRgbConverter(RgbDepth depth, const FormatCode& to, uint32_t width, uint32_t height,
                     QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type);
    ~FromRgbConverter() override;

    // The RGB frame, rgb_layout(depth).frame_bytes long.
    std::span<uint8_t> source() override;

    // The YCbCr frame, frame_layout(to).frame_bytes long.
    std::span<const uint8_t> convert() override;

  private:
    enum class Route {
        Transcode,
        Rgb24,
        Rgb64Uyvy,
        Rgb64P422,
        FloatUyvy,
        Rgb24V210,
        Rgb64V210,
        Rgb10V210
    };

    RgbDepth depth_;
    uint32_t to_code_;
    uint32_t width_;
    uint32_t height_;
    QBYCBCRMatrix matrix_;
    QBYCBCRRgbType rgb_type_;
    Route route_ = Route::Transcode;
    cycbcr_from_rgb_converter rgb24_ = nullptr;
    uint32_t src_pitch_ = 0;
    uint32_t dst_pitch_ = 0;
    uint64_t source_bytes_ = 0;
    uint64_t result_bytes_ = 0;
    // The RGB frame and what the library call writes, each as long as the
    // library says the call reaches.
    std::vector<uint8_t> src_;
    std::vector<uint8_t> dst_;
    // UYVY to the destination, when the library's call writes UYVY for
    // another destination.
    std::unique_ptr<FrameConverter> after_;
};

}  // namespace cycbcr_tool
