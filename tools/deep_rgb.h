// RGB to and from the named planar formats through the library's
// high-bit-depth colour converters: 10-, 12- and 16-bit planes to 8-bit,
// 16-bit-per-channel and packed 10-bit RGB and to three RGB planes, 8-bit
// planar to three RGB planes, and RGB to 10-, 12- and 16-bit planes.
#pragma once

#include <cycbcr.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "conversions.h"
#include "deep_conversions.h"
#include "deep_formats.h"
#include "formats.h"

namespace cycbcr_tool {

// The RGB frames these converters write besides the packed depths of
// formats.h: three planes R, G, B of width x height samples each, 8-bit
// ("rgbp8"), 16-bit little-endian words ("rgbp16") or 32-bit floats
// ("rgbpf", on the 8-bit scale, 0 to 255); and "rgb10p", one little-endian 32-bit word per pixel as
// the library's 10-bit converter packs it (R's top 8 bits in bits 16-23, G's in bits 8-15, B's in
// bits 0-7, the low bits of each folded in around them).
enum class RgbExtra { Planes8, Planes16, PlanesFloat, Word10 };
std::optional<RgbExtra> parse_rgb_extra(std::string_view text);
const char* rgb_extra_name(RgbExtra extra);
FrameLayout rgb_extra_layout(RgbExtra extra, uint32_t width, uint32_t height);
// The picture as 8-bit R, G, B rows, top row first (the bottom-up flag of
// `type` honoured), for previews.
std::vector<uint8_t> rgb_extra_to_rgb24(RgbExtra extra, QBYCBCRRgbType type,
                                        std::span<const uint8_t> frame, uint32_t width,
                                        uint32_t height);

// An RGB destination of a high-bit-depth converter: a packed depth or one of
// the above.
struct RgbTarget {
    std::optional<RgbDepth> depth;
    std::optional<RgbExtra> extra;
    std::string text() const;
    FrameLayout layout(uint32_t width, uint32_t height) const;
};

// The library converter from `from` to `target`: the one --converter names,
// else the first that fits. nullptr when none fits.
struct ToRgbMember;
const ToRgbMember* find_to_rgb_member(const Endpoint& from, const RgbTarget& target,
                                      const std::string& name);
// The same from RGB to a named format.
struct FromRgbMember;
const FromRgbMember* find_from_rgb_member(RgbDepth from, DeepFormat to, const std::string& name);
// Every converter name the two tables hold, for messages and listings.
std::vector<std::string> deep_rgb_member_names();

// A planar frame (named, or coded 8-bit planar) to RGB through one member.
class DeepToRgbConverter : public Converter {
  public:
    DeepToRgbConverter(const ToRgbMember& member, const Endpoint& from, const RgbTarget& target,
                       uint32_t width, uint32_t height, QBYCBCRMatrix matrix,
                       QBYCBCRRgbType rgb_type);
    ~DeepToRgbConverter() override;
    std::span<uint8_t> source() override;
    std::span<const uint8_t> convert() override;

  private:
    struct Work;
    std::unique_ptr<Work> work_;
};

// An RGB frame to a named planar format through one member.
class RgbToDeepConverter : public Converter {
  public:
    RgbToDeepConverter(const FromRgbMember& member, RgbDepth from, DeepFormat to, uint32_t width,
                       uint32_t height, QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type);
    ~RgbToDeepConverter() override;
    std::span<uint8_t> source() override;
    std::span<const uint8_t> convert() override;

  private:
    struct Work;
    std::unique_ptr<Work> work_;
};

}  // namespace cycbcr_tool
