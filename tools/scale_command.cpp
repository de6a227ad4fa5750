// cycbcr scale: reduced-size 8-bit planar frames from v210 or UYVY files,
// through the library's scaling converters.
#include <cycbcr.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "colour_bars.h"
#include "command_options.h"
#include "commands.h"
#include "formats.h"
#include "frame_io.h"
#include "pitched_frames.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

using ScaleFn = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*, unsigned int,
                                 unsigned int, unsigned int, unsigned int, unsigned int,
                                 unsigned int);

uint32_t round_up(uint32_t n, uint32_t m) {
    return (n + m - 1) / m * m;
}

// Where a scaling call leaves its picture: W x H luma samples in rows
// y_pitch apart, chroma_rows rows of ceil(W / 2) samples chroma_pitch apart.
struct Placement {
    uint32_t width = 0, height = 0;
    uint32_t y_pitch = 0, chroma_pitch = 0, chroma_rows = 0;
};

Placement placement(uint32_t scale, bool is422, uint32_t width, uint32_t height,
                    uint32_t dst_pitch) {
    Placement p;
    if (scale == 100) {
        // The unscaled converters: rows dst_pitch apart, chroma rows half that.
        p.width = width;
        p.height = height;
        p.y_pitch = dst_pitch;
        p.chroma_pitch = dst_pitch / 2;
    } else if (scale == 150) {
        // Rows packed one after another: 4 * ceil(W / 4) bytes of luma, half of
        // that of each chroma.
        p.width = 2 * width / 3;
        p.height = 2 * height / 3;
        p.y_pitch = 4 * ((p.width + 3) / 4);
        p.chroma_pitch = p.y_pitch / 2;
    } else {
        // Every step-th pixel of every step-th row, rows packed as above.
        const uint32_t step = scale == 200 ? 2 : scale == 300 ? 3 : scale == 400 ? 4 : 1;
        p.width = (width + step - 1) / step;
        p.height = (height + step - 1) / step;
        p.y_pitch = 4 * ((p.width + 3) / 4);
        p.chroma_pitch = p.y_pitch / 2;
    }
    p.chroma_rows = is422 ? p.height : (p.height + 1) / 2;
    return p;
}

unsigned int parse_scale(const std::string& text) {
    for (const unsigned int s : {100u, 150u, 200u, 300u, 400u}) {
        if (text == std::to_string(s)) return s;
    }
    throw ToolError("bad scale '" + text + "': expected 100, 150, 200, 300 or 400");
}

}  // namespace

int run_scale(Args args) {
    const Options options("scale", args,
                          {"--from", "--size", "--in", "--out", "--scale", "--level", "--frames",
                           "--skip", "--src-pitch", "--dst-pitch"},
                          {"--422"});
    options.require("--from");
    options.require("--scale");
    const FrameSelection selection = frame_selection(options, "scale");
    const uint64_t max_frames = selection.max_frames, skip = selection.skip;
    const FormatCode& from = resolve_code(*options.value("--from"), false);
    if (from.format != Format::V210 && from.format != Format::UYVY) {
        throw ToolError("scale: the source is v210 or UYVY, not " + code_text(from.value));
    }
    const unsigned int scale = parse_scale(*options.value("--scale"));
    const bool uyvy = from.format == Format::UYVY;
    if (uyvy && scale != 100 && scale != 150) {
        throw ToolError(
            "scale: the library reduces UYVY by 150 only (and copies it at 100); "
            "use a v210 source for scale " +
            std::to_string(scale));
    }
    const bool is422 = options.has("--422");
    if (uyvy && scale == 100 && !is422 && options.has("--size")) {
        uint32_t w = 0, h = 0;
        parse_size(*options.value("--size"), w, h);
        if (h % 4 == 3) {
            // The unpacking keeps the two fields' chroma (rows 0, 3, 4, 7, ...):
            // such a frame's last chroma row has no source row.
            throw ToolError(
                "scale: UYVY at 100 to 4:2:0 leaves the last chroma row unwritten "
                "at a height of 4n + 3 (" +
                std::to_string(h) + "); use --422");
        }
    }
    uint32_t width = 1920;
    uint32_t height = 1080;
    if (const std::optional<std::string> size = options.value("--size")) {
        parse_size(*size, width, height);
    }
    const FrameLayout src_layout = frame_layout(from.format, width, height);
    const char* name = uyvy ? "cycbcr_uyvy_scale_planar" : "cycbcr_012v_scale_planar";
    const ScaleFn fn = uyvy ? cycbcr_uyvy_scale_planar : cycbcr_012v_scale_planar;

    // Luma rows with room for whole 12-pixel steps; chroma rows half of them.
    const uint32_t dst_pitch = round_up(std::max(width, 1u), 64);
    const Placement out = placement(scale, is422, width, height, dst_pitch);
    if (out.width == 0 || out.height == 0) {
        throw ToolError("scale: " + std::to_string(width) + "x" + std::to_string(height) +
                        " at scale " + std::to_string(scale) + " leaves no picture");
    }
    const unsigned int call_args[4] = {dst_pitch, src_layout.pitch, scale, is422 ? 1u : 0u};
    uint64_t reach[4] = {};
    if (cycbcr_converter_all_pointer_sizes(name, width, height, call_args, 4, reach, 4) == 0) {
        throw ToolError(std::string("the library gives no buffer sizes for ") + name);
    }
    const uint32_t chroma_width = (out.width + 1) / 2;
    std::vector<uint8_t> y(std::max<uint64_t>(reach[0], uint64_t{out.y_pitch} * out.height));
    std::vector<uint8_t> cb(
        std::max<uint64_t>(reach[1], uint64_t{out.chroma_pitch} * out.chroma_rows));
    std::vector<uint8_t> cr(cb.size());
    const uint64_t frame_bytes = src_layout.frame_bytes;
    std::vector<uint8_t> src(std::max<uint64_t>(reach[3], frame_bytes));

    // The output: I420 or (with --422) P422 planes of the reduced size, chroma
    // planes ceil(W / 2) wide, as the command's planar files are.
    const uint64_t y_bytes = uint64_t{out.width} * out.height;
    const uint64_t c_bytes = uint64_t{chroma_width} * out.chroma_rows;
    std::vector<uint8_t> result(y_bytes + 2 * c_bytes);

    // Padded rows in the input and the output files, by the rule of pitched_frames.h.
    const PitchedFrame src_file(
        coded_file_planes(from.format, width, height),
        options.has("--src-pitch") ? parse_pitch(*options.value("--src-pitch"), "--src-pitch") : 0,
        "scale: --src-pitch");
    const PitchedFrame dst_file(
        coded_file_planes(is422 ? Format::P422 : Format::I420, out.width, out.height),
        options.has("--dst-pitch") ? parse_pitch(*options.value("--dst-pitch"), "--dst-pitch") : 0,
        "scale: --dst-pitch");
    if (src_file.tight_bytes() != frame_bytes || dst_file.tight_bytes() != result.size()) {
        throw ToolError(
            "scale: the command lays out the planes inconsistently (a fault in the "
            "command)");
    }
    std::vector<uint8_t> file_in(src_file.padded() ? src_file.file_bytes() : 0);
    std::vector<uint8_t> file_out(dst_file.padded() ? dst_file.file_bytes() : 0);

    std::optional<FrameReader> reader;
    const std::string size_text = std::to_string(width) + "x" + std::to_string(height);
    if (const std::optional<std::string> in = options.value("--in")) {
        reader.emplace(*in, src_file.file_bytes(), size_text + " " + format_name(from.format));
        reader->skip(skip);
    } else {
        write_colour_bars(from.format, width, height, src_layout,
                          std::span<uint8_t>(src.data(), frame_bytes));
    }
    if (const std::optional<std::string> level = options.value("--level")) {
        cycbcr_set_cpu(parse_level(*level));
    } else {
        cycbcr_get_cpu(1);
    }
    std::optional<AtomicOutput> output;
    if (const std::optional<std::string> path = options.value("--out")) {
        output.emplace(*path, reader ? &*reader : nullptr);
    }

    uint64_t frames = 0;
    const auto next = [&] {
        if (!reader) return frames == 0;
        if (max_frames != 0 && frames == max_frames) return false;
        if (!src_file.padded()) return reader->read(std::span<uint8_t>(src.data(), frame_bytes));
        if (!reader->read(file_in)) return false;
        src_file.unpack(file_in.data(), src.data());
        return true;
    };
    while (next()) {
        // Past the frame, copies of its last row, for any row read after it.
        for (uint64_t at = frame_bytes; height > 0 && at < src.size(); at += src_layout.pitch) {
            const uint64_t n = std::min<uint64_t>(src_layout.pitch, src.size() - at);
            std::memcpy(src.data() + at, src.data() + frame_bytes - src_layout.pitch, n);
        }
        if (fn(y.data(), cb.data(), cr.data(), src.data(), width, height, dst_pitch,
               src_layout.pitch, scale, is422 ? 1 : 0) == 0) {
            throw ToolError("the library converted nothing at scale " + std::to_string(scale));
        }
        for (uint32_t r = 0; r < out.height; ++r) {
            std::memcpy(result.data() + uint64_t{r} * out.width,
                        y.data() + uint64_t{r} * out.y_pitch, out.width);
        }
        for (uint32_t r = 0; r < out.chroma_rows; ++r) {
            std::memcpy(result.data() + y_bytes + uint64_t{r} * chroma_width,
                        cb.data() + uint64_t{r} * out.chroma_pitch, chroma_width);
            std::memcpy(result.data() + y_bytes + c_bytes + uint64_t{r} * chroma_width,
                        cr.data() + uint64_t{r} * out.chroma_pitch, chroma_width);
        }
        if (output && dst_file.padded()) {
            dst_file.pack(result.data(), file_out.data());
            output->write(file_out);
        } else if (output) {
            output->write(result);
        }
        ++frames;
    }
    if (output) {
        output->commit();
    }
    std::fprintf(output ? stderr : stdout, "%s %s -> %ux%u %s: frames=%llu\n",
                 format_name(from.format), size_text.c_str(), out.width, out.height,
                 is422 ? "P422" : "I420", static_cast<unsigned long long>(frames));
    return 0;
}

}  // namespace cycbcr_tool
