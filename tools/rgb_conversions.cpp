#include "rgb_conversions.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "rgb_layouts.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// The library's converter to RGB for each 8-bit source and depth, with the
// name cycbcr_converter_buffer_sizes() knows it by.
struct RgbEntry {
    Format from;
    RgbDepth depth;
    const char* name;
    cycbcr_rgb_converter convert;
};

#define CYCBCR_TOOL_RGB(format, lower, depth, suffix)                     \
    RgbEntry {                                                            \
        Format::format, RgbDepth::depth, "cycbcr_" #lower "_to_" #suffix, \
            cycbcr_##lower##_to_##suffix                                  \
    }
#define CYCBCR_TOOL_RGB_DEPTHS(format, lower)           \
    CYCBCR_TOOL_RGB(format, lower, Rgb555, rgb555),     \
        CYCBCR_TOOL_RGB(format, lower, Rgb565, rgb565), \
        CYCBCR_TOOL_RGB(format, lower, Rgb24, rgb24), CYCBCR_TOOL_RGB(format, lower, Rgb32, rgb32)

const RgbEntry kRgbConverters[] = {
    CYCBCR_TOOL_RGB_DEPTHS(UYVY, uyvy),        CYCBCR_TOOL_RGB_DEPTHS(YUY2, yuy2),
    CYCBCR_TOOL_RGB_DEPTHS(YVYU, yvyu),        CYCBCR_TOOL_RGB_DEPTHS(CYUV, cyuv),
    CYCBCR_TOOL_RGB_DEPTHS(I420, i420),        CYCBCR_TOOL_RGB_DEPTHS(YV12, yv12),
    CYCBCR_TOOL_RGB_DEPTHS(P422, p422),        CYCBCR_TOOL_RGB_DEPTHS(V210, 012v),
    CYCBCR_TOOL_RGB(NV12, nv12, Rgb32, rgb32),
};

#undef CYCBCR_TOOL_RGB_DEPTHS
#undef CYCBCR_TOOL_RGB

const RgbEntry& rgb_entry(Format from, RgbDepth depth) {
    for (const RgbEntry& e : kRgbConverters) {
        if (e.from == from && e.depth == depth) return e;
    }
    throw ToolError(std::string("the library has no converter from ") + format_name(from) + " to " +
                    rgb_depth_name(depth));
}

uint32_t load_le32(const uint8_t* p) {
    return p[0] | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

bool is_420(Format format) {
    return format == Format::I420 || format == Format::YV12;
}

bool is_planar(Format format) {
    return is_420(format) || format == Format::P422 || format == Format::NV12;
}

std::vector<uint8_t> zeroed(uint64_t bytes) {
    if (bytes > SIZE_MAX) throw ToolError("frame too large for this machine");
    return std::vector<uint8_t>(static_cast<size_t>(bytes));
}

// The YCbCr format the library's converter to RGB is given for a source. The
// converters of the other formats give the engine's picture for every matrix
// and layout at every level, but not those of UYVY to 3- and 4-byte pixels:
// below level 5 uyvy_to_rgb24 goes to an image-library path that ignores the
// RGB layout and, for most matrices, reads the pairs with Cb and Cr exchanged,
// and uyvy_to_rgb32 at levels 1 to 4 and 6 with a studio matrix to one that
// ignores the bottom-up flag and ABGR and ARGB and writes alpha 0. So UYVY
// goes through YUY2 for those depths at every level (the library's word swap,
// then its YUY2 converter, which has neither route), and every level writes
// the same picture. v210 goes to the library's own converters from v210,
// which read the 10-bit samples (see RgbConverter).
//
// NV12 has a converter to 32 bits only, the engine's at every level and for
// every layout. The other depths are its 32-bit frame repacked by
// rgba_row_to_rgb(), which packs the 8-bit channels as the engine does for
// those depths: the same bytes as the engine's converters to them would write.
Format call_format(Format from, RgbDepth depth) {
    if (from == Format::UYVY && (depth == RgbDepth::Rgb24 || depth == RgbDepth::Rgb32)) {
        return Format::YUY2;
    }
    return from;
}

const FormatCode& own_code(Format format) {
    for (const FormatCode& code : all_codes()) {
        if (code.format == format) return code;
    }
    throw ToolError(std::string("no code for ") + format_name(format));
}

}  // namespace

// Every call is made at an even width, and for 4:2:0 an even height, whatever
// the picture's size:
//   - the library converts whole pixel pairs, so an odd width writes one pixel
//     past the width in every row; its rows go to a working buffer with room
//     for the whole pairs, and exactly width pixels of each are copied out.
//   - an odd-width packed frame already holds whole pairs: it is the frame of
//     the even width, the last pair's second pixel past the picture.
//   - planar sources are read with luma rows of exactly the width given and
//     chroma rows placed by width / 2, and the planes placed by the pitch
//     times the height: a frame of odd size is copied onto planes of the even
//     size first (the extra column and row repeat the last ones and are never
//     copied out).
// The destination rows lie dst_pitch_ apart, and the working buffers are as
// long as cycbcr_converter_buffer_sizes() says the call reaches.
//
// I420 and YV12 to 32 bits with the layout exactly 0 (B, G, R, A top-down) go
// to an image-library path that knows BT.601 and BT.709 only (a BT.2020 or
// studio-range request comes out as BT.601 full range), rounds unlike every
// other route, and leaves the last column and row unwritten at odd sizes. The
// call asks for the same layout bottom-up instead, which the engine writes,
// and the rows are copied out in the other order.
//
// v210 is converted at exactly the width: the converters from v210 write
// width whole pixels a row, a partial last group included, and read no
// further than the words of its pixels. A row of whole groups is different:
// its last pixel (odd, pixel 5 of its group) takes the average of its own
// pair's chroma and the first pair of the word after the group, read
// whatever it holds, which in a file is the next row's first pair (a width
// that is a multiple of 48) or the row's padding. So at widths that are a
// multiple of 6 the rows are copied into a working buffer 16 bytes wider,
// and that word is given the row's last pair (Cb4 and Cr4 of the last
// group): the last pixel takes its own pair, as an odd last pixel of a
// partial group does.
//
// NV12 is read like the planar formats: luma rows of exactly the width,
// chroma row n of the call at (n / 2) * call_width_ bytes into its plane. A
// frame of odd size is copied onto the planes of the even size; its chroma
// rows already hold whole Cb, Cr pairs (2 * ceil(width / 2) bytes), only the
// luma rows and the last rows of both planes are extended.
RgbConverter::RgbConverter(const FormatCode& from, RgbDepth depth, uint32_t width, uint32_t height,
                           QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type)
    : width_(width),
      height_(height),
      call_width_(from.format == Format::V210 ? width : width + width % 2),
      call_height_(is_420(from.format) || from.format == Format::NV12 ? height + height % 2
                                                                      : height),
      depth_(depth),
      call_depth_(from.format == Format::NV12 ? RgbDepth::Rgb32 : depth),
      pixel_bytes_(rgb_pixel_bytes(depth)),
      matrix_(matrix),
      rgb_type_(rgb_type),
      call_type_(rgb_type) {
    const Format source = from.format;
    if (source == Format::RGB32) throw ToolError("converting RGB to RGB is not supported");
    source_bytes_ = source_layout(source, width, height).frame_bytes;
    // The converters count the bytes of a frame in 32 bits.
    const uint32_t call_pixel_bytes = rgb_pixel_bytes(call_depth_);
    const uint64_t call_frame = uint64_t{call_width_} * call_pixel_bytes * call_height_;
    if (call_frame > UINT32_MAX) {
        throw ToolError("a " + std::to_string(width) + "x" + std::to_string(height) + " " +
                        rgb_depth_name(depth) + " frame is larger than the library converts");
    }

    const Format format = call_format(source, depth);
    if (format != source) {
        before_ = std::make_unique<FrameConverter>(from, own_code(format), call_width_, height);
        if (before_->source().size() != source_bytes_) {
            throw ToolError(std::string("the ") + format_name(source) + " frame of " +
                            std::to_string(width) + " pixels is not laid out as at " +
                            std::to_string(call_width_));
        }
    }
    if (is_420(format) && depth == RgbDepth::Rgb32 && rgb_type == QBYCBCR_RGB_BGRA) {
        call_type_ = QBYCBCR_RGB_BGRA | QBYCBCR_RGB_BOTTOM_UP;
    }
    // Repacked from R, G, B, A rows in the picture's order (top-down); the
    // bottom-up flag is applied when the rows are copied out.
    if (call_depth_ != depth) call_type_ = QBYCBCR_RGB_RGBA;

    const RgbEntry& entry = rgb_entry(format, call_depth_);
    converter_ = entry.convert;
    src_pitch_ = natural_pitch(format, call_width_);
    read_ahead_ = format == Format::V210 && width % 6 == 0;
    if (read_ahead_) src_pitch_ += 16;
    dst_pitch_ = call_width_ * call_pixel_bytes;
    uint64_t dst_bytes = 0;
    uint64_t src_bytes = 0;
    if (!cycbcr_converter_buffer_sizes(entry.name, call_width_, call_height_, dst_pitch_,
                                       src_pitch_, matrix, call_type_, &dst_bytes, &src_bytes)) {
        throw ToolError(std::string("the library gives no buffer sizes for ") + entry.name);
    }
    call_planes_ = frame_planes(format, call_width_, call_height_, src_pitch_);
    call_src_ = zeroed(std::max(frame_extent(call_planes_), src_bytes));
    call_dst_ = zeroed(std::max(call_frame, dst_bytes));
    result_ = zeroed(rgb_layout(depth, width, height).frame_bytes);

    relaid_ = !before_ && is_planar(source) && (call_width_ != width || call_height_ != height);
    if (read_ahead_) {
        file_pitch_ = natural_pitch(Format::V210, width);
        file_frame_ = zeroed(source_bytes_);
    }
    if (relaid_) {
        file_planes_ = source_planes(source, width, height);
        file_frame_ = zeroed(source_bytes_);
    }
}

RgbConverter::~RgbConverter() = default;

std::span<uint8_t> RgbConverter::source() {
    if (before_) return before_->source();
    if (relaid_ || read_ahead_) return {file_frame_.data(), file_frame_.size()};
    return {call_src_.data(), static_cast<size_t>(source_bytes_)};
}

std::span<const uint8_t> RgbConverter::convert() {
    const uint8_t* src = call_src_.data();
    if (before_) {
        const std::span<const uint8_t> frame = before_->convert();
        if (frame.size() >= call_src_.size()) {
            src = frame.data();
        } else {
            std::memcpy(call_src_.data(), frame.data(), frame.size());
        }
    } else if (read_ahead_) {
        // Whole groups, then the word after them: Cb of bits 0-9 and Cr of
        // bits 20-29 from the last group's Cb4 (word 2, bits 20-29) and Cr4
        // (word 3, bits 10-19).
        const size_t groups = width_ / 6;
        for (uint32_t row = 0; row < height_; ++row) {
            const uint8_t* in = file_frame_.data() + uint64_t{row} * file_pitch_;
            uint8_t* out = call_src_.data() + uint64_t{row} * src_pitch_;
            std::memcpy(out, in, groups * 16);
            const uint8_t* last = out + (groups - 1) * 16;
            const uint32_t cb = load_le32(last + 8) >> 20 & 0x3FF;
            const uint32_t cr = load_le32(last + 12) >> 10 & 0x3FF;
            const uint32_t word = cb | cr << 20;
            for (int b = 0; b < 4; ++b) out[groups * 16 + b] = static_cast<uint8_t>(word >> 8 * b);
        }
    } else if (relaid_) {
        // Plane by plane, row by row; the extra row repeats the last row and
        // the extra column the last sample.
        for (size_t p = 0; p < call_planes_.size(); ++p) {
            const PlaneRows& from = file_planes_[p];
            const PlaneRows& to = call_planes_[p];
            for (uint32_t row = 0; row < to.rows; ++row) {
                const uint8_t* in = file_frame_.data() + from.offset +
                                    uint64_t{std::min(row, from.rows - 1)} * from.pitch;
                uint8_t* out = call_src_.data() + to.offset + uint64_t{row} * to.pitch;
                std::memcpy(out, in, from.row_bytes);
                std::memset(out + from.row_bytes, in[from.row_bytes - 1],
                            to.row_bytes - from.row_bytes);
            }
        }
    }
    // The count returned is the frame's size in the depth (the engine's
    // result); the engine has no refusal to report.
    converter_(call_dst_.data(), src, call_width_, call_height_, dst_pitch_, src_pitch_, matrix_,
               call_type_);

    // Picture row r lies in row r of the call's result, or call_height_ - 1 - r
    // when the call was made bottom-up; it goes to row r of the result, or
    // height_ - 1 - r when bottom-up rows were asked for.
    const bool asked_up = is_bottom_up(rgb_type_);
    const bool made_up = is_bottom_up(call_type_);
    const size_t row_bytes = size_t{width_} * pixel_bytes_;
    for (uint32_t row = 0; row < height_; ++row) {
        const uint32_t picture_row = asked_up ? height_ - 1 - row : row;
        const uint32_t made_row = made_up ? call_height_ - 1 - picture_row : picture_row;
        const uint8_t* made = call_dst_.data() + uint64_t{made_row} * dst_pitch_;
        uint8_t* out = result_.data() + size_t{row} * row_bytes;
        if (call_depth_ != depth_) {
            rgba_row_to_rgb(depth_, rgb_type_, made, out, width_);
        } else {
            std::memcpy(out, made, row_bytes);
        }
    }
    return {result_.data(), result_.size()};
}

}  // namespace cycbcr_tool
