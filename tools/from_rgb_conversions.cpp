#include "from_rgb_conversions.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// The library's converters from 24-bit RGB, with the names
// cycbcr_converter_buffer_sizes() knows them by.
struct Rgb24Entry {
    Format to;
    const char* name;
    cycbcr_from_rgb_converter convert;
};

#define CYCBCR_TOOL_FROM_RGB24(format, lower)                              \
    Rgb24Entry {                                                           \
        Format::format, "cycbcr_RGB24_to_" #lower, cycbcr_RGB24_to_##lower \
    }

const Rgb24Entry kRgb24Converters[] = {
    CYCBCR_TOOL_FROM_RGB24(UYVY, uyvy), CYCBCR_TOOL_FROM_RGB24(YUY2, yuy2),
    CYCBCR_TOOL_FROM_RGB24(YVYU, yvyu), CYCBCR_TOOL_FROM_RGB24(CYUV, cyuv),
    CYCBCR_TOOL_FROM_RGB24(I420, i420), CYCBCR_TOOL_FROM_RGB24(YV12, yv12),
    CYCBCR_TOOL_FROM_RGB24(P422, p422),
};

#undef CYCBCR_TOOL_FROM_RGB24

const Rgb24Entry* rgb24_entry(Format to) {
    for (const Rgb24Entry& e : kRgb24Converters) {
        if (e.to == to) return &e;
    }
    return nullptr;
}

bool is_8bit_ycbcr(Format format) {
    return rgb24_entry(format) != nullptr;
}

std::vector<uint8_t> zeroed(uint64_t bytes) {
    if (bytes > SIZE_MAX) throw ToolError("frame too large for this machine");
    return std::vector<uint8_t>(static_cast<size_t>(bytes));
}

const FormatCode& uyvy_code() {
    return *find_code(CYCBCR_FOURCC_UYVY);
}

}  // namespace

bool command_converts_from_rgb(uint32_t to_code) {
    const FormatCode* to = find_code(to_code);
    return to != nullptr && !to->source_only &&
           (is_8bit_ycbcr(to->format) || to->format == Format::V210) &&
           cycbcr_from_rgb_pair_converter(to_code) != nullptr;
}

bool rgb_depth_converts_to(RgbDepth depth, Format to) {
    if (!rgb_convertible_source(depth)) return false;
    if (to == Format::V210) return true;
    return depth != RgbDepth::Rgb10 && is_8bit_ycbcr(to);
}

// The routes, by depth:
//   rgb32: cycbcr_transcode with RGB (code 0) as the source, at the natural
//     pitches (which its pitch rule keeps);
//   rgb24: the library's cycbcr_RGB24_to_<destination>;
//   rgb48, rgb64: cycbcr_RGB64_to_uyvy with 48 or 64 bits per pixel, or
//     cycbcr_RGB64_to_p422 for P422 (which takes the bits from the pitch);
//   rgb32f: cycbcr_RGB32F_to_uyvy.
// Where the call writes UYVY for another destination, the UYVY frame goes on
// through the library's UYVY converters (FrameConverter, with its routes).
// Every call is at an even width (and for 4:2:0 an even height), with rows
// tightly packed: the library writes whole pixel pairs, chroma planes rows
// pitch / 2 apart placed by the pitch times the height, which at these sizes
// is exactly the file frame. The buffers are as long as the library says its
// calls reach; where it gives no size for a call, the frames themselves,
// which is as far as those converters go at even sizes.
//
// To v210: rgb32 through cycbcr_transcode (RGB to "v210"/"012v", which calls
// cycbcr_RGB32_to_012v), rgb24 through cycbcr_RGB24_to_012v, rgb48 and rgb64
// through cycbcr_RGB64_to_012v with 48 or 64 bits per pixel (the whole 16-bit
// words), rgb10 through cycbcr_RGB10_to_012v, rgb32f through its UYVY frame
// and the library's UYVY to v210 converter. The converters from RGB write
// each row at the pitch they are given, which is the file's v210 row
// (v210_row_bytes()), and no further than (width / 6) * 16 bytes, + 8 for a
// last pixel pair: of a partial group they write the first pair only. So the
// width must be a whole number of groups, or 2 pixels more; the rest of each
// row, past the last pixels, stays zero.
FromRgbConverter::FromRgbConverter(RgbDepth depth, const FormatCode& to, uint32_t width,
                                   uint32_t height, QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type)
    : depth_(depth),
      to_code_(to.value),
      width_(width),
      height_(height),
      matrix_(matrix),
      rgb_type_(rgb_type) {
    const std::string from_name = rgb_depth_name(depth);
    if (!rgb_convertible_source(depth)) {
        throw ToolError("convert: " + from_name +
                        " is not a source convert reads (rgb24, rgb32, rgb48, rgb64, rgb32f, "
                        "rgb10)");
    }
    const bool v210 = to.format == Format::V210;
    if ((!is_8bit_ycbcr(to.format) && !v210) || to.source_only) {
        throw ToolError("converting " + from_name + " to " + format_name(to.format) +
                        " is not supported: RGB converts to the 8-bit YCbCr formats UYVY, YUY2, "
                        "YVYU, cyuv, I420, YV12 and P422, and to v210");
    }
    if (!rgb_depth_converts_to(depth, to.format)) {
        throw ToolError("converting rgb10 to " + std::string(format_name(to.format)) +
                        " is not supported: the library converts 10-bit RGB to v210 only");
    }
    // The converters to v210 write whole groups of six pixels and, of a
    // partial group, its first pixel pair only: any other pixel past the
    // last whole group would be left unwritten, a damaged picture, so the
    // width is refused. rgb32f goes through UYVY (below).
    if (v210 && depth != RgbDepth::Rgb32F && width % 6 != 0 && width % 6 != 2) {
        throw ToolError("convert: " + from_name +
                        " to v210 is written in whole groups of 6 pixels and one last pixel "
                        "pair: the width must be a multiple of 6 or 2 more, not " +
                        std::to_string(width));
    }
    // The library converts whole pixel pairs: an odd last pixel would be
    // neither read nor written, a damaged picture, so it is refused.
    if (width % 2 != 0) {
        throw ToolError("convert: RGB frames convert in whole pixel pairs: " + from_name +
                        " needs an even width, not " + std::to_string(width));
    }
    if ((to.format == Format::I420 || to.format == Format::YV12) && height % 2 != 0) {
        throw ToolError(std::string("convert: ") + format_name(to.format) +
                        " frames need an even height, not " + std::to_string(height));
    }
    const FrameLayout src_layout = rgb_layout(depth, width, height);
    const FrameLayout dst_layout = frame_layout(to.format, width, height);
    if (src_layout.frame_bytes > UINT32_MAX) {
        throw ToolError("a " + std::to_string(width) + "x" + std::to_string(height) + " " +
                        from_name + " frame is larger than the library converts");
    }
    source_bytes_ = src_layout.frame_bytes;
    result_bytes_ = dst_layout.frame_bytes;
    src_pitch_ = src_layout.pitch;
    dst_pitch_ = dst_layout.pitch;

    const char* name = nullptr;  // the call's name for cycbcr_converter_buffer_sizes
    Format writes = to.format;   // what the call writes
    switch (depth) {
        case RgbDepth::Rgb32:
            route_ = Route::Transcode;
            if (cycbcr_from_rgb_pair_converter(to.value) == nullptr) {
                throw ToolError("converting rgb32 to " + std::string(format_name(to.format)) +
                                " is not supported by this build of the library");
            }
            if (cycbcr_fix_pitch(to.value, width, dst_pitch_) != dst_pitch_ ||
                cycbcr_fix_pitch(CYCBCR_FOURCC_RGB32, width, src_pitch_) != src_pitch_) {
                throw ToolError("the library's dispatcher would not keep the pitches of a " +
                                std::to_string(width) + "-pixel frame");
            }
            break;
        case RgbDepth::Rgb24:
            if (v210) {
                route_ = Route::Rgb24V210;
                name = "cycbcr_RGB24_to_012v";
            } else {
                const Rgb24Entry& e = *rgb24_entry(to.format);
                route_ = Route::Rgb24;
                rgb24_ = e.convert;
                name = e.name;
            }
            break;
        case RgbDepth::Rgb10:
            route_ = Route::Rgb10V210;
            name = "cycbcr_RGB10_to_012v";
            break;
        case RgbDepth::Rgb48:
        case RgbDepth::Rgb64:
            if (v210) {
                route_ = Route::Rgb64V210;
                name = "cycbcr_RGB64_to_012v";
            } else if (to.format == Format::P422) {
                route_ = Route::Rgb64P422;
                name = "cycbcr_RGB64_to_p422";
            } else {
                route_ = Route::Rgb64Uyvy;
                name = "cycbcr_RGB64_to_uyvy";
                writes = Format::UYVY;
            }
            break;
        default:
            route_ = Route::FloatUyvy;
            name = "cycbcr_RGB32F_to_uyvy";
            writes = Format::UYVY;
            break;
    }
    if (writes != to.format) {
        after_ = std::make_unique<FrameConverter>(uyvy_code(), to, width, height);
        dst_pitch_ = natural_pitch(Format::UYVY, width);
    }

    uint64_t dst_bytes = 0;
    uint64_t src_bytes = 0;
    if (route_ == Route::Transcode) {
        cycbcr_buffer_sizes(to.value, CYCBCR_FOURCC_RGB32, width, height, dst_pitch_, src_pitch_,
                            &dst_bytes, &src_bytes);
    } else {
        if (!cycbcr_converter_buffer_sizes(name, width, height, dst_pitch_, src_pitch_, matrix,
                                           rgb_type, &dst_bytes, &src_bytes) &&
            v210) {
            throw ToolError(std::string("the library gives no buffer sizes for ") + name);
        }
    }
    const uint64_t written = writes == to.format ? result_bytes_ : uint64_t{dst_pitch_} * height;
    src_ = zeroed(std::max(source_bytes_, src_bytes));
    dst_ = zeroed(std::max(written, dst_bytes));
}

FromRgbConverter::~FromRgbConverter() = default;

std::span<uint8_t> FromRgbConverter::source() {
    return {src_.data(), static_cast<size_t>(source_bytes_)};
}

std::span<const uint8_t> FromRgbConverter::convert() {
    uint8_t* dst = dst_.data();
    const uint8_t* src = src_.data();
    // The counts returned are the library's frame sizes; only the
    // dispatcher's 0, its refusal, is a failure.
    switch (route_) {
        case Route::Transcode:
            if (cycbcr_transcode(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                 rgb_type_, to_code_, CYCBCR_FOURCC_RGB32) == 0) {
                throw ToolError("the library converted nothing from rgb32 to " +
                                code_text(to_code_));
            }
            break;
        case Route::Rgb24:
            rgb24_(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_, rgb_type_);
            break;
        case Route::Rgb64Uyvy:
            cycbcr_RGB64_to_uyvy(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                 rgb_type_, depth_ == RgbDepth::Rgb48 ? 48 : 64);
            break;
        case Route::Rgb64P422:
            cycbcr_RGB64_to_p422(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                 rgb_type_);
            break;
        case Route::FloatUyvy:
            cycbcr_RGB32F_to_uyvy(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                  rgb_type_);
            break;
        case Route::Rgb24V210:
            cycbcr_RGB24_to_012v(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                 rgb_type_);
            break;
        case Route::Rgb64V210:
            cycbcr_RGB64_to_012v(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                 rgb_type_, depth_ == RgbDepth::Rgb48 ? 48 : 64);
            break;
        case Route::Rgb10V210:
            cycbcr_RGB10_to_012v(dst, src, width_, height_, dst_pitch_, src_pitch_, matrix_,
                                 rgb_type_);
            break;
    }
    if (after_) {
        const std::span<uint8_t> uyvy = after_->source();
        std::memcpy(uyvy.data(), dst, uyvy.size());
        return after_->convert();
    }
    return {dst_.data(), static_cast<size_t>(result_bytes_)};
}

}  // namespace cycbcr_tool
