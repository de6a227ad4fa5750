// YCbCr frames to RGB through the library's converters to RGB.
#pragma once

#include <cycbcr.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "conversions.h"
#include "formats.h"

namespace cycbcr_tool {

// Converts frames of any YCbCr format the command reads (NV12 included), at
// any size source_layout() lays out, to RGB of one depth, matrix and layout: rows of
// width * rgb_pixel_bytes(depth) bytes, tightly packed, the last picture row
// first when the layout has the bottom-up flag. How each library call is made
// is settled once, in the constructor (see rgb_conversions.cpp).
class RgbConverter : public Converter {
  public:
    // Throws ToolError for a source that is not YCbCr, or a frame too large.
    RgbConverter(const FormatCode& from, RgbDepth depth, uint32_t width, uint32_t height,
                 QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type);
    ~RgbConverter() override;

    // The source frame, source_layout(from).frame_bytes long.
    std::span<uint8_t> source() override;

    // The RGB frame, rgb_layout(depth).frame_bytes long.
    std::span<const uint8_t> convert() override;

  private:
    uint32_t width_;
    uint32_t height_;
    // The size the library converts: the width (and for 4:2:0 the height)
    // rounded up to even.
    uint32_t call_width_;
    uint32_t call_height_;
    // The depth asked for, and the one the library writes (rgb32 for NV12,
    // repacked to the depth asked for).
    RgbDepth depth_;
    RgbDepth call_depth_;
    uint32_t pixel_bytes_;
    QBYCBCRMatrix matrix_;
    // The layout asked for, and the one the library is given.
    QBYCBCRRgbType rgb_type_;
    QBYCBCRRgbType call_type_;
    cycbcr_rgb_converter converter_ = nullptr;
    uint32_t src_pitch_ = 0;
    uint32_t dst_pitch_ = 0;

    // A library conversion to another YCbCr format first (UYVY to 24 and 32
    // bits: see rgb_conversions.cpp), converting the source frame.
    std::unique_ptr<FrameConverter> before_;
    // An odd-sized planar source, read as the file lays it out and copied onto
    // the planes the library reads at the even size.
    bool relaid_ = false;
    std::vector<PlaneRows> file_planes_, call_planes_;
    std::vector<uint8_t> file_frame_;
    // v210 rows of whole groups, read as the file lays them out and copied
    // onto rows 16 bytes wider, the word after the last group set (see
    // rgb_conversions.cpp).
    bool read_ahead_ = false;
    uint32_t file_pitch_ = 0;
    uint64_t source_bytes_ = 0;

    // What the RGB converter reads and writes, as long as the library says
    // the call reaches.
    std::vector<uint8_t> call_src_;
    std::vector<uint8_t> call_dst_;
    std::vector<uint8_t> result_;
};

}  // namespace cycbcr_tool
