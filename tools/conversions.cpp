#include "conversions.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// The format's own code: the first the code table lists for it.
uint32_t own_code(Format format) {
    for (const FormatCode& code : all_codes()) {
        if (code.format == format) return code.value;
    }
    return 0;
}

Format format_of(uint32_t code) {
    return find_code(code)->format;
}

// One library call of a route: the converter of the pair (dst_code, src_code),
// given the frame the call before wrote (the source frame first). A code may
// name a format other than the frame's own, but only one whose frames lie in
// memory exactly alike (I420 and YV12).
struct Call {
    uint32_t dst_code;
    uint32_t src_code;
};

// The library calls that take a frame of `from` to the standard frame of `to`.
// Most pairs are one call of the pair's own converter. A few converters of the
// library exchange Cb and Cr on purpose, as callers of the library rely on;
// their pairs go around them, through converters that keep each sample where
// the formats put it:
//
//   YVYU <-> UYVY and YVYU <-> cyuv: these converters swap the bytes of each
//     16-bit word, as YUY2 <-> UYVY does, which turns Y0 Cr Y1 Cb into
//     Cr Y0 Cb Y1. Through YUY2 instead: YVYU <-> YUY2 exchanges the two
//     chroma bytes of each pair, and YUY2 <-> UYVY or cyuv swaps words, each
//     right on its own.
//   I420 or YV12 <-> P422: the planar engine fills the destination's first
//     chroma plane from the source's first, and the 4:2:0 converters hand it
//     their Cr plane first while the P422 ones hand their Cb plane first, so
//     I420's Cr lands in P422's Cb plane. The converter of the other 4:2:0
//     format takes a frame's planes the other way round: given an I420 frame,
//     cycbcr_yv12_to_p422 takes the first chroma plane for Cr and hands it
//     over first, and that plane is I420's Cb, which goes to P422's Cb. So an
//     I420 frame goes through the YV12 converters and a YV12 frame through
//     the I420 ones, both ways.
std::vector<Call> route(const FormatCode& from, const FormatCode& to) {
    const Format f = from.format;
    const Format t = to.format;
    const auto word_swapped = [](Format format) {
        return format == Format::UYVY || format == Format::CYUV;
    };
    if ((f == Format::YVYU && word_swapped(t)) || (word_swapped(f) && t == Format::YVYU)) {
        const uint32_t yuy2 = own_code(Format::YUY2);
        return {{yuy2, from.value}, {to.value, yuy2}};
    }
    const auto other_420 = [](Format format) {
        return own_code(format == Format::I420 ? Format::YV12 : Format::I420);
    };
    const auto is_420 = [](Format format) {
        return format == Format::I420 || format == Format::YV12;
    };
    if (is_420(f) && t == Format::P422) return {{to.value, other_420(f)}};
    if (f == Format::P422 && is_420(t)) return {{other_420(t), from.value}};
    return {{to.value, from.value}};
}

// Rows padded to the first multiple of 48 pixels past the width: whole groups
// of six pixels (v210 packing) and of twelve (v210 unpacking), so a padded row
// has room for all a converter reads or writes for it (the constructor below
// checks that with the library), and a pitch that is never the natural one,
// which some converters take for rows that run on from one to the next. v210
// rows are whole 48-pixel blocks already.
uint32_t padded_pitch(Format format, uint32_t width) {
    const uint32_t pixels = (width / 48 + 1) * 48;
    switch (format) {
        case Format::I420:
        case Format::YV12:
        case Format::P422:
            return pixels;
        case Format::V210:
            return natural_pitch(format, width);
        default:
            return 2 * pixels;
    }
}

bool is_packed_8bit(Format format) {
    return format == Format::UYVY || format == Format::YUY2 || format == Format::YVYU ||
           format == Format::CYUV;
}

bool is_planar(Format format) {
    return format == Format::I420 || format == Format::YV12 || format == Format::P422;
}

struct Reach {
    uint64_t dst = 0;
    uint64_t src = 0;
};

// How far into each buffer the pair's converter reaches with these pitches.
Reach reach(uint32_t dst_code, uint32_t src_code, uint32_t width, uint32_t height,
            uint32_t dst_pitch, uint32_t src_pitch) {
    Reach r;
    if (!cycbcr_buffer_sizes(dst_code, src_code, width, height, dst_pitch, src_pitch, &r.dst,
                             &r.src)) {
        throw ToolError("the library gives no buffer sizes for " + code_text(src_code) + " to " +
                        code_text(dst_code));
    }
    return r;
}

// Copies each plane's rows; a destination plane with more rows than the
// source's gets the source's last row again in each one past it.
void copy_planes(uint8_t* dst, std::span<const PlaneRows> dst_planes, const uint8_t* src,
                 std::span<const PlaneRows> src_planes) {
    for (size_t p = 0; p < dst_planes.size(); ++p) {
        const PlaneRows& d = dst_planes[p];
        const PlaneRows& s = src_planes[p];
        for (uint32_t row = 0; row < d.rows && s.rows != 0; ++row) {
            std::memcpy(dst + d.offset + uint64_t{row} * d.pitch,
                        src + s.offset + uint64_t{std::min(row, s.rows - 1)} * s.pitch,
                        d.row_bytes);
        }
    }
}

// The converters from 4:2:0 planes to the packed formats that take chroma
// field by field (frame row r from chroma row 2 * (r / 4) + r % 2: YUY2 and
// YVYU at every level, UYVY and cyuv through their AVX2 forms) give the last
// row of a frame 4n + 2 rows high chroma row 2n + 1, which the frame does not
// have. Such calls are made on a frame two rows higher, whose added rows repeat
// its last ones, so that row takes the frame's last chroma row.
uint32_t call_height(Format src, Format dst, uint32_t height) {
    const bool field_chroma =
        (src == Format::I420 || src == Format::YV12) &&
        (dst == Format::UYVY || dst == Format::YUY2 || dst == Format::YVYU || dst == Format::CYUV);
    return field_chroma && height % 4 == 2 ? height + 2 : height;
}

std::vector<uint8_t> zeroed_buffer(uint64_t bytes) {
    if (bytes > SIZE_MAX) throw ToolError("frame too large for this machine");
    return std::vector<uint8_t>(static_cast<size_t>(bytes));
}

}  // namespace

bool library_converts(uint32_t from_code, uint32_t to_code) {
    return cycbcr_pair_converter(to_code, from_code) != nullptr;
}

bool command_converts(uint32_t from_code, uint32_t to_code) {
    const FormatCode* from = find_code(from_code);
    const FormatCode* to = find_code(to_code);
    if (from == nullptr || to == nullptr || to->source_only) return false;
    if (!command_lays_out(from->format) || !command_lays_out(to->format)) return false;
    if (!library_converts(from_code, to_code)) return false;
    for (const Call& call : route(*from, *to)) {
        if (!library_converts(call.src_code, call.dst_code)) return false;
    }
    return true;
}

bool library_converts_to_rgb32(uint32_t from_code) {
    return cycbcr_rgb_pair_converter(CYCBCR_FOURCC_RGB32, from_code) != nullptr;
}

bool command_converts_to_rgb(uint32_t from_code) {
    const FormatCode* from = find_code(from_code);
    return from != nullptr && from->format != Format::RGB32 && command_lays_out(from->format);
}

FrameConverter::FrameConverter(const FormatCode& from, const FormatCode& to, uint32_t width,
                               uint32_t height)
    : width_(width), height_(height) {
    source_bytes_ = frame_layout(from.format, width, height).frame_bytes;
    result_bytes_ = frame_layout(to.format, width, height).frame_bytes;
    if (!command_converts(from.value, to.value)) {
        throw ToolError(std::string("converting ") + format_name(from.format) + " to " +
                        format_name(to.format) +
                        " needs a converter this build of the library does not have");
    }

    const std::vector<Call> calls = route(from, to);
    // The least each file frame's buffer holds: the frame itself, and as much
    // as the calls that take it at its natural pitch read or write.
    std::vector<uint64_t> least_bytes;
    least_bytes.push_back(source_bytes_);
    for (const Call& call : calls) {
        Step step;
        step.dst_code = call.dst_code;
        step.src_code = call.src_code;
        step.converter = cycbcr_pair_converter(call.dst_code, call.src_code);
        const Format dst = format_of(call.dst_code);
        const Format src = format_of(call.src_code);
        const uint32_t dst_natural = natural_pitch(dst, width);
        const uint32_t src_natural = natural_pitch(src, width);
        step.dst_natural = frame_planes(dst, width, height, dst_natural);
        step.src_natural = frame_planes(src, width, height, src_natural);
        const uint64_t dst_frame = frame_extent(step.dst_natural);
        const uint64_t src_frame = frame_extent(step.src_natural);

        // A call at the natural pitches that stays inside both frames gives
        // the standard frame. One that reaches past them works in whole
        // groups past the width: its rows either spill into the next row or
        // past the frame, or (packed sources at exactly 2 * width) start where
        // the previous row's last group ended, shearing the picture. Those
        // calls are made on padded rows instead, where every row has room for
        // its groups. Planar sources stay as they are: the converters reading
        // them place the planes by the width or read rows tightly packed
        // whatever the pitch, and what they read past the frame only feeds
        // pixels past the width. v210 rows already hold whole groups.
        const uint32_t dst_fixed = cycbcr_fix_pitch(call.dst_code, width, dst_natural);
        const uint32_t src_fixed = cycbcr_fix_pitch(call.src_code, width, src_natural);
        const uint32_t rows = call_height(src, dst, height);
        step.height = rows;
        // A taller call works on copies of both frames; the planar source
        // keeps its natural pitch.
        const bool taller = rows != height;
        const Reach direct = reach(call.dst_code, call.src_code, width, rows, dst_fixed, src_fixed);
        step.padded_src = taller || (direct.src > src_frame && is_packed_8bit(src));
        step.padded_dst =
            taller || (direct.dst > dst_frame && (is_packed_8bit(dst) || is_planar(dst)));
        step.src_pitch = step.padded_src && !taller ? padded_pitch(src, width) : src_natural;
        step.dst_pitch = step.padded_dst ? padded_pitch(dst, width) : dst_natural;
        // The dispatcher would pass other pitches than the natural ones: call
        // the converter itself then.
        step.dispatched = !step.padded_src && !step.padded_dst && dst_fixed == dst_natural &&
                          src_fixed == src_natural;
        const Reach used = step.dispatched ? direct
                                           : reach(call.dst_code, call.src_code, width, rows,
                                                   step.dst_pitch, step.src_pitch);

        // Padded rows in a working buffer of their own, which must hold all the
        // call reaches.
        const auto pad = [&](Format format, uint32_t code, uint32_t pitch, uint64_t reached,
                             const char* verb, std::vector<PlaneRows>& planes,
                             std::vector<uint8_t>& work) {
            planes = frame_planes(format, width, rows, pitch);
            const uint64_t padded = std::max(frame_extent(planes), taller ? reached : 0);
            if (reached > padded) {
                throw ToolError(std::string("the library ") + verb + " " + code_text(code) +
                                " rows further than padded rows of width " + std::to_string(width) +
                                " hold");
            }
            work = zeroed_buffer(padded);
        };
        if (step.padded_src)
            pad(src, call.src_code, step.src_pitch, used.src, "reads", step.src_padded,
                step.src_work);
        else
            least_bytes.back() = std::max(least_bytes.back(), used.src);
        const uint64_t dst_bytes = std::max(dst_frame, step.padded_dst ? 0 : used.dst);
        if (step.padded_dst)
            pad(dst, call.dst_code, step.dst_pitch, used.dst, "writes", step.dst_padded,
                step.dst_work);
        least_bytes.push_back(dst_bytes);
        steps_.push_back(std::move(step));
    }
    for (const uint64_t bytes : least_bytes) frames_.push_back(zeroed_buffer(bytes));
}

std::span<uint8_t> FrameConverter::source() {
    return {frames_.front().data(), static_cast<size_t>(source_bytes_)};
}

std::span<const uint8_t> FrameConverter::convert() {
    for (size_t i = 0; i < steps_.size(); ++i) {
        Step& step = steps_[i];
        const uint8_t* src = frames_[i].data();
        uint8_t* dst = frames_[i + 1].data();
        if (step.padded_src) {
            copy_planes(step.src_work.data(), step.src_padded, src, step.src_natural);
            src = step.src_work.data();
        }
        uint8_t* out = step.padded_dst ? step.dst_work.data() : dst;
        if (step.dispatched) {
            // The byte count means different things for different converters
            // (the pitch as passed times the height, the v210 row size times
            // the height, pixels times two ...), so only a count of 0, the
            // dispatcher's refusal, is taken as a failure.
            if (cycbcr_transcode(out, src, width_, height_, step.dst_pitch, step.src_pitch, 0, 0,
                                 step.dst_code, step.src_code) == 0) {
                throw ToolError("the library converted nothing from " + code_text(step.src_code) +
                                " to " + code_text(step.dst_code));
            }
        } else {
            step.converter(out, src, width_, step.height, step.dst_pitch, step.src_pitch);
        }
        if (step.padded_dst) {
            // A taller cyuv frame is turned over whole: its added rows come first.
            const uint64_t skip = format_of(step.dst_code) == Format::CYUV
                                      ? uint64_t{step.height - height_} * step.dst_pitch
                                      : 0;
            copy_planes(dst, step.dst_natural, out + skip, step.dst_padded);
        }
    }
    return {frames_.back().data(), static_cast<size_t>(result_bytes_)};
}

}  // namespace cycbcr_tool
