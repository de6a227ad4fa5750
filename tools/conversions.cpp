#include "conversions.h"

#include <cycbcr.h>

#include <array>
#include <string>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// One row per pair; every alias has already been mapped to its canonical
// format, so "YUNV" to "2vuy" runs the YUY2 to UYVY converter.
constexpr std::array kConversions = {
    Conversion{Format::UYVY, Format::UYVY, cycbcr_uyvy_to_uyvy},
    Conversion{Format::UYVY, Format::YUY2, cycbcr_uyvy_to_yuy2},
    Conversion{Format::UYVY, Format::YVYU, cycbcr_uyvy_to_yvyu},
    Conversion{Format::UYVY, Format::CYUV, cycbcr_uyvy_to_cyuv},
    Conversion{Format::YUY2, Format::UYVY, cycbcr_yuy2_to_uyvy},
    Conversion{Format::YUY2, Format::YUY2, cycbcr_yuy2_to_yuy2},
    Conversion{Format::YUY2, Format::YVYU, cycbcr_yuy2_to_yvyu},
    Conversion{Format::YUY2, Format::CYUV, cycbcr_yuy2_to_cyuv},
    Conversion{Format::YVYU, Format::UYVY, cycbcr_yvyu_to_uyvy},
    Conversion{Format::YVYU, Format::YUY2, cycbcr_yvyu_to_yuy2},
    Conversion{Format::YVYU, Format::YVYU, cycbcr_yvyu_to_yvyu},
    Conversion{Format::YVYU, Format::CYUV, cycbcr_yvyu_to_cyuv},
    Conversion{Format::CYUV, Format::UYVY, cycbcr_cyuv_to_uyvy},
    Conversion{Format::CYUV, Format::YUY2, cycbcr_cyuv_to_yuy2},
    Conversion{Format::CYUV, Format::YVYU, cycbcr_cyuv_to_yvyu},
    Conversion{Format::CYUV, Format::CYUV, cycbcr_cyuv_to_cyuv},
};

}  // namespace

const Conversion* find_conversion(Format from, Format to) {
    for (const Conversion& conversion : kConversions) {
        if (conversion.from == from && conversion.to == to) return &conversion;
    }
    return nullptr;
}

void convert_frame(const Conversion& conversion, uint8_t* dst, const uint8_t* src, uint32_t width,
                   uint32_t height, const FrameLayout& dst_layout, const FrameLayout& src_layout) {
    const unsigned int count =
        conversion.convert(dst, src, width, height, dst_layout.pitch, src_layout.pitch);
    // Every converter of the table reports height * dstPitch, which for a tight
    // layout is the whole destination frame.
    if (count != dst_layout.frame_bytes) {
        throw ToolError(std::string("the library reported ") + std::to_string(count) +
                        " bytes for a " + std::to_string(dst_layout.frame_bytes) + "-byte " +
                        format_name(conversion.to) + " frame");
    }
}

}  // namespace cycbcr_tool
