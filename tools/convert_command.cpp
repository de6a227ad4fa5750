// cycbcr convert: raw frame files (or the built-in colour bars) from one format
// to another, YCbCr or RGB.
#include <cycbcr.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "colour_bars.h"
#include "command_options.h"
#include "commands.h"
#include "conversions.h"
#include "deep_conversions.h"
#include "deep_formats.h"
#include "deep_rgb.h"
#include "formats.h"
#include "frame_io.h"
#include "frame_pipeline.h"
#include "from_rgb_conversions.h"
#include "pitched_frames.h"
#include "rgb_conversions.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

class Fnv1a64 {
  public:
    void add(std::span<const uint8_t> bytes) {
        for (const uint8_t b : bytes) hash_ = (hash_ ^ b) * 0x100000001B3ull;
    }
    uint64_t value() const { return hash_; }

  private:
    uint64_t hash_ = 0xCBF29CE484222325ull;
};

// A "frame n/N, R MB/s" line on stderr (n alone when the input's length is
// not known; R the source bytes read per second) once a conversion has run for
// a second, redrawn at most four times a second and cleared by finish(). Only
// when stderr is a terminal: in a log or a pipe the carriage returns would
// pile up as clutter.
class Progress {
  public:
    Progress(uint64_t total, uint64_t frame_bytes)
        : total_(total), frame_bytes_(frame_bytes), enabled_(isatty(STDERR_FILENO) == 1) {}
    ~Progress() { finish(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void frame_done(uint64_t done) {
        if (!enabled_) return;
        const auto now = std::chrono::steady_clock::now();
        if (now - start_ < std::chrono::seconds(1)) return;
        if (shown_ && now - last_ < std::chrono::milliseconds(250)) return;
        last_ = now;
        shown_ = true;
        const double seconds = std::chrono::duration<double>(now - start_).count();
        const double rate =
            static_cast<double>(done) * static_cast<double>(frame_bytes_) / seconds / 1e6;
        if (total_ != 0) {
            std::fprintf(stderr, "\rcycbcr: frame %llu/%llu, %.1f MB/s\033[K",
                         static_cast<unsigned long long>(done),
                         static_cast<unsigned long long>(total_), rate);
        } else {
            std::fprintf(stderr, "\rcycbcr: frame %llu, %.1f MB/s\033[K",
                         static_cast<unsigned long long>(done), rate);
        }
        std::fflush(stderr);
    }

    void finish() {
        if (shown_) std::fputs("\r\033[K", stderr);
        shown_ = false;
    }

  private:
    uint64_t total_;
    uint64_t frame_bytes_;
    bool enabled_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last_ = start_;
};

// The converter of a request: from RGB when --from names an RGB depth (or the
// RGB code 0), to RGB when --to does, else between YCbCr formats. Throws for
// options that do not fit the pair.
struct Conversion {
    std::unique_ptr<Converter> converter;
    FrameLayout src_layout;
    uint64_t dst_frame_bytes = 0;
    // The planes of the two file frames, for --src-pitch and --dst-pitch.
    std::vector<FilePlane> src_planes, dst_planes;
    std::string dst_text;
    // Writes the built-in frame in the source format; the coded formats'
    // writer when empty.
    std::function<void(std::span<uint8_t>)> bars;
};

// --threads: 1 to 256; the number of processors without it.
unsigned int thread_option(const Options& options) {
    const std::optional<std::string> text = options.value("--threads");
    if (!text) return std::max(1u, std::thread::hardware_concurrency());
    const uint64_t n = parse_count(*text, "--threads", 1);
    if (n > 256) throw ToolError("bad --threads '" + *text + "': expected 1 to 256");
    return static_cast<unsigned int>(n);
}

std::vector<FilePlane> endpoint_planes(const Endpoint& e, uint32_t width, uint32_t height) {
    return e.deep ? deep_file_planes(*e.deep, width, height)
                  : coded_file_planes(e.code->format, width, height);
}

// A request naming a format by name (deep_formats.h) on either side (other
// than NV12 to the packed RGB depths, which the library converts directly),
// or an RGB destination only the high-bit-depth colour converters write.
Conversion make_deep_conversion(const Options& options, const std::string& from_text,
                                const std::string& to_text, uint32_t width, uint32_t height) {
    Conversion c;
    const std::string via = options.value("--converter").value_or("");
    Endpoint from;
    from.deep = parse_deep(from_text);
    if (!from.deep) {
        if (const std::optional<RgbDepth> depth = resolve_rgb(from_text)) {
            // RGB to a named planar format.
            const std::optional<DeepFormat> to = parse_deep(to_text);
            const FromRgbMember* member = to ? find_from_rgb_member(*depth, *to, via) : nullptr;
            if (member == nullptr) {
                throw ToolError(std::string("convert: ") +
                                (via.empty() ? "the library has no converter"
                                             : "converter " + via + " does not convert") +
                                " from " + rgb_depth_name(*depth) + " to " + to_text +
                                " (see cycbcr formats)");
            }
            const QBYCBCRMatrix matrix = matrix_option(options, true);
            const QBYCBCRRgbType type = rgb_source_type_option(options, *depth, "convert");
            c.converter = std::make_unique<RgbToDeepConverter>(*member, *depth, *to, width, height,
                                                               matrix, type);
            c.src_layout = rgb_layout(*depth, width, height);
            c.dst_frame_bytes = deep_layout(*to, width, height).frame_bytes;
            c.src_planes = rgb_file_planes(*depth, width, height);
            c.dst_planes = deep_file_planes(*to, width, height);
            c.dst_text = deep_name(*to);
            const RgbDepth d = *depth;
            c.bars = [d, type, width, height](std::span<uint8_t> frame) {
                write_rgb_colour_bars(d, type, width, height, frame);
            };
            return c;
        }
        from.code = &resolve_code(from_text, false);
    }
    c.src_layout = from.layout(width, height);
    c.src_planes = endpoint_planes(from, width, height);
    if (from.deep) {
        const DeepFormat f = *from.deep;
        c.bars = [f, width, height](std::span<uint8_t> frame) {
            write_deep_colour_bars(f, width, height, frame);
        };
    }
    const RgbTarget target{resolve_rgb(to_text), parse_rgb_extra(to_text)};
    if (target.depth || target.extra) {
        const QBYCBCRMatrix matrix = matrix_option(options);
        const QBYCBCRRgbType type = rgb_type_option(options);
        c.dst_frame_bytes = target.layout(width, height).frame_bytes;
        c.dst_planes = target.depth ? rgb_file_planes(*target.depth, width, height)
                                    : rgb_extra_file_planes(*target.extra, width, height);
        c.dst_text = target.text();
        if (const ToRgbMember* member = find_to_rgb_member(from, target, via)) {
            c.converter = std::make_unique<DeepToRgbConverter>(*member, from, target, width, height,
                                                               matrix, type);
            return c;
        }
        if (!via.empty()) {
            throw ToolError("convert: converter " + via + " does not convert " + from.text() +
                            " to " + target.text() + " (see cycbcr formats)");
        }
        if (!from.deep || !target.depth || !rgb_writable(*target.depth)) {
            throw ToolError("convert: the library has no converter from " + from.text() + " to " +
                            target.text() + " (see cycbcr formats)");
        }
        // The other named formats to the 8-bit depths: by way of v210 or UYVY.
        c.converter = std::make_unique<DeepRgbConverter>(*from.deep, *target.depth, width, height,
                                                         matrix, type);
        return c;
    }
    for (const char* rgb_only : {"--matrix", "--rgb-type", "--bottom-up", "--converter"}) {
        if (options.has(rgb_only)) {
            throw ToolError(std::string("convert: ") + rgb_only +
                            " applies to RGB sources and destinations only");
        }
    }
    Endpoint to;
    to.deep = parse_deep(to_text);
    if (!to.deep) to.code = &resolve_code(to_text, true);
    c.converter = std::make_unique<DeepConverter>(from, to, width, height);
    c.dst_frame_bytes = to.layout(width, height).frame_bytes;
    c.dst_planes = endpoint_planes(to, width, height);
    c.dst_text = to.text();
    return c;
}

// Whether a request goes by make_deep_conversion().
bool names_deep(const Options& options, const std::string& from_text, const std::string& to_text) {
    const std::optional<DeepFormat> from = parse_deep(from_text);
    if (options.has("--converter") || parse_rgb_extra(to_text)) return true;
    if (from == DeepFormat::Nv12 && resolve_rgb(to_text)) return false;
    return from || parse_deep(to_text);
}

Conversion make_from_rgb_conversion(const Options& options, RgbDepth depth, uint32_t width,
                                    uint32_t height) {
    Conversion c;
    const std::string to_text = *options.value("--to");
    if (resolve_rgb(to_text)) {
        throw ToolError("converting RGB to RGB is not supported (see cycbcr formats)");
    }
    const FormatCode& to = resolve_code(to_text, true);
    const QBYCBCRMatrix matrix = matrix_option(options, true);
    const QBYCBCRRgbType type = rgb_source_type_option(options, depth, "convert");
    c.converter = std::make_unique<FromRgbConverter>(depth, to, width, height, matrix, type);
    c.src_layout = rgb_layout(depth, width, height);
    c.dst_frame_bytes = frame_layout(to.format, width, height).frame_bytes;
    c.src_planes = rgb_file_planes(depth, width, height);
    c.dst_planes = coded_file_planes(to.format, width, height);
    c.dst_text = code_text(to.value);
    return c;
}

Conversion make_conversion(const Options& options, const FormatCode& from, uint32_t width,
                           uint32_t height) {
    Conversion c;
    const std::string to_text = *options.value("--to");
    if (const std::optional<RgbDepth> depth = resolve_rgb(to_text)) {
        if (from.format == Format::RGB32) {
            throw ToolError("converting RGB to RGB is not supported (see cycbcr formats)");
        }
        const QBYCBCRMatrix matrix = matrix_option(options);
        const QBYCBCRRgbType type = rgb_type_option(options);
        c.src_layout = source_layout(from.format, width, height);
        c.dst_frame_bytes = rgb_layout(*depth, width, height).frame_bytes;
        c.src_planes = coded_file_planes(from.format, width, height);
        c.dst_planes = rgb_file_planes(*depth, width, height);
        c.converter = std::make_unique<RgbConverter>(from, *depth, width, height, matrix, type);
        c.dst_text = rgb_depth_name(*depth);
        return c;
    }
    for (const char* rgb_only : {"--matrix", "--rgb-type", "--bottom-up"}) {
        if (options.has(rgb_only)) {
            throw ToolError(std::string("convert: ") + rgb_only +
                            " applies to RGB sources and destinations only");
        }
    }
    const FormatCode& to = resolve_code(to_text, true);
    if (!library_converts(from.value, to.value)) {
        throw ToolError(std::string("converting ") + format_name(from.format) + " to " +
                        format_name(to.format) +
                        " is not supported by this build of the library (see cycbcr formats)");
    }
    c.src_layout = frame_layout(from.format, width, height);
    c.dst_frame_bytes = frame_layout(to.format, width, height).frame_bytes;
    c.src_planes = coded_file_planes(from.format, width, height);
    c.dst_planes = coded_file_planes(to.format, width, height);
    c.converter = std::make_unique<FrameConverter>(from, to, width, height);
    c.dst_text = code_text(to.value);
    return c;
}

}  // namespace

int run_convert(Args args) {
    const Options options(
        "convert", args,
        {"--from", "--to", "--size", "--in", "--out", "--level", "--matrix", "--rgb-type",
         "--converter", "--frames", "--skip", "--src-pitch", "--dst-pitch", "--threads"},
        {"--bottom-up"});
    options.require("--from");
    options.require("--to");
    const FrameSelection selection = frame_selection(options, "convert");
    const uint64_t max_frames = selection.max_frames, skip = selection.skip;
    const unsigned int threads = thread_option(options);
    const std::string from_text = *options.value("--from");
    const std::string to_text = *options.value("--to");
    const bool deep = names_deep(options, from_text, to_text);
    // An RGB source: a depth, or the code 0 (rgb32).
    const std::optional<RgbDepth> rgb = resolve_rgb(deep ? std::string() : from_text);
    if (rgb && !rgb_convertible_source(*rgb)) {
        throw ToolError(
            std::string("convert: ") + rgb_depth_name(*rgb) +
            " is not a source convert reads (rgb24, rgb32, rgb48, rgb64, rgb32f, rgb10)");
    }
    const FormatCode* from = rgb || deep ? nullptr : &resolve_source(from_text);

    uint32_t width = 1920;
    uint32_t height = 1080;
    if (const std::optional<std::string> size = options.value("--size")) {
        parse_size(*size, width, height);
    }
    // Every worker's converter is made the same way as the first.
    const auto make = [&] {
        return deep  ? make_deep_conversion(options, from_text, to_text, width, height)
               : rgb ? make_from_rgb_conversion(options, *rgb, width, height)
                     : make_conversion(options, *from, width, height);
    };
    Conversion conversion = make();
    Converter& converter = *conversion.converter;
    std::string from_name;
    if (const std::optional<DeepFormat> named = parse_deep(from_text)) {
        from_name = deep_name(*named);
    } else if (const std::optional<RgbDepth> depth = resolve_rgb(from_text)) {
        from_name = rgb_depth_name(*depth);
    } else {
        from_name = code_text(resolve_code(from_text, false).value);
    }
    const std::string size_text = std::to_string(width) + "x" + std::to_string(height);
    const std::span<uint8_t> src_frame = converter.source();

    const PitchedFrame src_file(
        conversion.src_planes,
        options.has("--src-pitch") ? parse_pitch(*options.value("--src-pitch"), "--src-pitch") : 0,
        "convert: --src-pitch");
    const PitchedFrame dst_file(
        conversion.dst_planes,
        options.has("--dst-pitch") ? parse_pitch(*options.value("--dst-pitch"), "--dst-pitch") : 0,
        "convert: --dst-pitch");
    if (src_file.tight_bytes() != conversion.src_layout.frame_bytes ||
        src_file.tight_bytes() != src_frame.size() ||
        dst_file.tight_bytes() != conversion.dst_frame_bytes) {
        throw ToolError("convert: the command lays out the planes of " + from_name + " or " +
                        conversion.dst_text + " inconsistently (a fault in the command)");
    }

    std::optional<FrameReader> reader;
    if (const std::optional<std::string> in = options.value("--in")) {
        reader.emplace(*in, src_file.file_bytes(), size_text + " " + from_name);
        reader->skip(skip);
    } else if (conversion.bars) {
        conversion.bars(src_frame);
    } else if (rgb) {
        write_rgb_colour_bars(*rgb, rgb_type_option(options), width, height, src_frame);
    } else {
        const FormatCode& code = from != nullptr ? *from : resolve_code(from_text, false);
        write_colour_bars(code.format, width, height, conversion.src_layout, src_frame);
    }
    // The level is settled before the first frame: some converters called
    // without the dispatcher leave the choice to a later call, and every
    // frame must take the same paths.
    if (const std::optional<std::string> level = options.value("--level")) {
        cycbcr_set_cpu(parse_level(*level));
    } else {
        cycbcr_get_cpu(1);
    }

    // Opened last, so that every argument and input error comes before any
    // file is created.
    std::optional<AtomicOutput> output;
    if (const std::optional<std::string> out = options.value("--out")) {
        output.emplace(*out, reader ? &*reader : nullptr);
    }

    Fnv1a64 checksum;
    uint64_t frames = 0;
    uint64_t total = reader ? reader->known_frames() : 1;
    if (max_frames != 0 && (total == 0 || max_frames < total)) total = max_frames;
    Progress progress(total, src_file.file_bytes());
    const auto sink = [&](std::span<const uint8_t> frame) {
        if (output) {
            output->write(frame);
        } else {
            checksum.add(frame);
        }
    };
    if (reader) {
        FrameLoop loop;
        loop.reader = &*reader;
        loop.source = &src_file;
        loop.destination = &dst_file;
        loop.max_frames = max_frames;
        loop.threads = threads;
        loop.converter = &converter;
        loop.make_converter = [&] { return make().converter; };
        loop.sink = sink;
        loop.frame_done = [&](uint64_t done) { progress.frame_done(done); };
        frames = run_frame_loop(loop);
    } else {
        // The one built-in frame.
        const std::span<const uint8_t> dst_frame = converter.convert();
        if (dst_file.padded()) {
            std::vector<uint8_t> padded(dst_file.file_bytes());
            dst_file.pack(dst_frame.data(), padded.data());
            sink(padded);
        } else {
            sink(dst_frame);
        }
        frames = 1;
    }
    progress.finish();

    if (output) {
        output->commit();
    } else {
        std::printf("%s -> %s %s: frames=%llu bytes=%llu fnv1a64=%016llx\n", from_name.c_str(),
                    conversion.dst_text.c_str(), size_text.c_str(),
                    static_cast<unsigned long long>(frames),
                    static_cast<unsigned long long>(frames * dst_file.file_bytes()),
                    static_cast<unsigned long long>(checksum.value()));
    }
    return 0;
}

}  // namespace cycbcr_tool
