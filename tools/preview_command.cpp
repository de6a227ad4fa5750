// cycbcr preview: one frame of a raw file (or the built-in colour bars) as a
// PNG picture, for a person to look at.
#include <cycbcr.h>

#include <charconv>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "colour_bars.h"
#include "command_options.h"
#include "commands.h"
#include "deep_conversions.h"
#include "deep_formats.h"
#include "deep_rgb.h"
#include "formats.h"
#include "frame_io.h"
#include "pitched_frames.h"
#include "png_writer.h"
#include "rgb_conversions.h"
#include "rgb_layouts.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

uint64_t parse_frame_index(const std::string& text) {
    uint64_t value = 0;
    const char* last = text.data() + text.size();
    const auto [end, ec] = std::from_chars(text.data(), last, value, 10);
    if (text.empty() || ec != std::errc() || end != last) {
        throw ToolError("bad frame number '" + text +
                        "': expected 0 or more (frames count from 0)");
    }
    return value;
}

// Reads frames up to frame `index` into frame; throws when the input ends
// before it.
void read_frame(FrameReader& reader, uint64_t index, std::span<uint8_t> frame) {
    if (reader.known_frames() != 0 && index >= reader.known_frames()) {
        throw ToolError(reader.name() + " holds " + std::to_string(reader.known_frames()) +
                        " frames: there is no frame " + std::to_string(index) +
                        " (frames count from 0)");
    }
    for (uint64_t n = 0; n <= index; ++n) {
        if (!reader.read(frame)) {
            throw ToolError(reader.name() + " ends after " + std::to_string(n) +
                            " frames: there is no frame " + std::to_string(index) +
                            " (frames count from 0)");
        }
    }
}

}  // namespace

int run_preview(Args args) {
    const Options options("preview", args,
                          {"--from", "--size", "--in", "--out", "--frame", "--matrix", "--rgb-type",
                           "--level", "--src-pitch"},
                          {"--bottom-up"});
    options.require("--from");
    options.require("--out", "(the PNG file to write)");
    const std::optional<std::string> in = options.value("--in");
    if (in) options.require("--size", "with --in");

    const std::string from_text = *options.value("--from");
    // NV12 goes to RGB through the library's own converter; the other named
    // formats by way of v210 or UYVY.
    const std::optional<DeepFormat> named = parse_deep(from_text);
    const bool deep = named && *named != DeepFormat::Nv12;
    const DeepFormat deep_format = deep ? *named : DeepFormat::Nv12;
    // RGB planes and packed 10-bit words, as the high-bit-depth converters
    // write them, are read from files only.
    const std::optional<RgbExtra> extra = parse_rgb_extra(from_text);
    if (extra && !in) {
        throw ToolError(std::string("preview: ") + rgb_extra_name(*extra) +
                        " frames are read from --in only");
    }
    const std::optional<RgbDepth> rgb = resolve_rgb(deep ? std::string() : from_text);
    const FormatCode* from = rgb || deep || extra ? nullptr : &resolve_source(from_text);
    if (rgb && options.has("--matrix")) {
        throw ToolError("preview: --matrix applies to YCbCr sources only");
    }
    if (!rgb && !extra && (options.has("--rgb-type") || options.has("--bottom-up"))) {
        throw ToolError("preview: --rgb-type and --bottom-up describe RGB sources only");
    }

    uint32_t width = 1920;
    uint32_t height = 1080;
    if (const std::optional<std::string> size = options.value("--size")) {
        parse_size(*size, width, height);
    }
    uint64_t index = 0;
    if (const std::optional<std::string> frame = options.value("--frame")) {
        index = parse_frame_index(*frame);
    }
    if (!in && options.has("--src-pitch")) {
        throw ToolError("preview: --src-pitch applies to frames read with --in");
    }
    if (!in && index != 0) {
        throw ToolError(
            "preview: without --in there is one frame, the built-in colour bars "
            "(frame 0)");
    }

    // YCbCr goes through the library to R, G, B bytes top-down, exactly the
    // rows of an 8-bit RGB PNG; RGB frames are read as they are, 16-bit and
    // float channels reduced to 8 bits (rgb_row_to_rgb24()).
    std::unique_ptr<Converter> converter;
    std::vector<uint8_t> rgb_frame;
    std::span<uint8_t> frame;
    FrameLayout layout;
    std::vector<FilePlane> planes;
    std::string frame_text = std::to_string(width) + "x" + std::to_string(height) + " ";
    if (extra) {
        planes = rgb_extra_file_planes(*extra, width, height);
        layout = rgb_extra_layout(*extra, width, height);
        rgb_frame.resize(layout.frame_bytes);
        frame = rgb_frame;
        frame_text += rgb_extra_name(*extra);
    } else if (rgb) {
        planes = rgb_file_planes(*rgb, width, height);
        layout = rgb_layout(*rgb, width, height);
        rgb_frame.resize(layout.frame_bytes);
        frame = rgb_frame;
        frame_text += rgb_depth_name(*rgb);
    } else if (deep) {
        planes = deep_file_planes(deep_format, width, height);
        layout = deep_layout(deep_format, width, height);
        converter = std::make_unique<DeepRgbConverter>(deep_format, RgbDepth::Rgb24, width, height,
                                                       matrix_option(options), QBYCBCR_RGB_RGBA);
        frame = converter->source();
        frame_text += deep_name(deep_format);
    } else {
        planes = coded_file_planes(from->format, width, height);
        layout = source_layout(from->format, width, height);
        converter = std::make_unique<RgbConverter>(*from, RgbDepth::Rgb24, width, height,
                                                   matrix_option(options), QBYCBCR_RGB_RGBA);
        frame = converter->source();
        frame_text += format_name(from->format);
    }
    const QBYCBCRRgbType type = rgb     ? rgb_source_type_option(options, *rgb, "preview")
                                : extra ? rgb_type_option(options)
                                        : QBYCBCRRgbType{QBYCBCR_RGB_RGBA};

    const PitchedFrame file(
        planes,
        options.has("--src-pitch") ? parse_pitch(*options.value("--src-pitch"), "--src-pitch") : 0,
        "preview: --src-pitch");
    if (file.tight_bytes() != layout.frame_bytes || frame.size() != layout.frame_bytes) {
        throw ToolError("preview: the command lays out the planes of " + frame_text +
                        " inconsistently (a fault in the command)");
    }
    std::optional<FrameReader> reader;
    if (in) {
        reader.emplace(*in, file.file_bytes(), frame_text);
        if (file.padded()) {
            std::vector<uint8_t> padded(file.file_bytes());
            read_frame(*reader, index, padded);
            file.unpack(padded.data(), frame.data());
        } else {
            read_frame(*reader, index, frame);
        }
    } else if (rgb) {
        write_rgb_colour_bars(*rgb, type, width, height, frame);
    } else if (deep) {
        write_deep_colour_bars(deep_format, width, height, frame);
    } else {
        write_colour_bars(from->format, width, height, layout, frame);
    }
    if (const std::optional<std::string> level = options.value("--level")) {
        cycbcr_set_cpu(parse_level(*level));
    } else {
        cycbcr_get_cpu(1);
    }

    std::vector<uint8_t> picture(size_t{width} * 3 * height);
    if (converter) {
        const std::span<const uint8_t> converted = converter->convert();
        picture.assign(converted.begin(), converted.end());
    } else if (extra) {
        picture = rgb_extra_to_rgb24(*extra, type, frame, width, height);
    } else {
        for (uint32_t row = 0; row < height; ++row) {
            const uint32_t stored = is_bottom_up(type) ? height - 1 - row : row;
            rgb_row_to_rgb24(*rgb, type, frame.data() + uint64_t{stored} * layout.pitch,
                             picture.data() + size_t{row} * width * 3, width);
        }
    }
    const std::vector<uint8_t> png = encode_png(width, height, picture);

    // Created only now, whole: no argument, input or libpng error leaves a file.
    AtomicOutput output(*options.value("--out"), reader ? &*reader : nullptr);
    output.write(png);
    output.commit();
    return 0;
}

}  // namespace cycbcr_tool
