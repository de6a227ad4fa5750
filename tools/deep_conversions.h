// Frames of the named formats (deep_formats.h) to and from the coded ones,
// through the library's named converters between them and v210 or UYVY, and
// its dispatcher for the rest of the way.
#pragma once

#include <cycbcr.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "conversions.h"
#include "deep_formats.h"
#include "formats.h"
#include "rgb_conversions.h"

namespace cycbcr_tool {

// A format as the command names it: by name (deep) or by code.
struct Endpoint {
    std::optional<DeepFormat> deep;
    const FormatCode* code = nullptr;

    std::string text() const;
    FrameLayout layout(uint32_t width, uint32_t height) const;
};

// One leg of a route: a file frame of one format in, a file frame of the next
// out.
class DeepLeg {
  public:
    virtual ~DeepLeg() = default;
    virtual void run(const uint8_t* in, uint8_t* out) = 0;
};

// Converts frames from one endpoint to another, one of them named, by the
// shortest route of library converters (v210 before UYVY where both go). The
// named converters are called on working buffers: rows padded to whole pixel
// groups with the row's last sample repeated, pitches the converters place
// their planes by, every buffer as long as the library's buffer-size query
// says the call reaches; the picture is then copied out to the file frame.
class DeepConverter : public Converter {
  public:
    // Throws ToolError when no route exists or a frame of this size cannot
    // be converted whole.
    DeepConverter(const Endpoint& from, const Endpoint& to, uint32_t width, uint32_t height);
    ~DeepConverter() override;

    std::span<uint8_t> source() override;
    std::span<const uint8_t> convert() override;

    // The route, for messages: "yuv422p10 -> v210 -> I420".
    const std::string& route_text() const { return route_text_; }

  private:
    std::vector<std::unique_ptr<DeepLeg>> legs_;
    std::vector<std::vector<uint8_t>> frames_;
    std::string route_text_;
};

// Whether a route exists between the two (sizes aside).
bool deep_route_exists(const Endpoint& from, const Endpoint& to);

// The formats the library converts the named one to, and from, directly
// ("v210", "UYVY", "NV12p16", ...), for listings.
std::vector<std::string> deep_direct_destinations(DeepFormat format);
std::vector<std::string> deep_direct_sources(DeepFormat format);

// A named format to RGB: to v210 (or UYVY) by the shortest route, then the
// library's converter to RGB.
class DeepRgbConverter : public Converter {
  public:
    DeepRgbConverter(DeepFormat from, RgbDepth depth, uint32_t width, uint32_t height,
                     QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type);
    ~DeepRgbConverter() override;

    std::span<uint8_t> source() override;
    std::span<const uint8_t> convert() override;

  private:
    std::unique_ptr<DeepConverter> to_hub_;
    std::unique_ptr<RgbConverter> to_rgb_;
};

}  // namespace cycbcr_tool
