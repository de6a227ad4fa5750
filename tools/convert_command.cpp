// cycbcr convert: raw frame files (or the built-in colour bars) from one format
// to another.
#include <cycbcr.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "colour_bars.h"
#include "commands.h"
#include "conversions.h"
#include "formats.h"
#include "frame_io.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

struct ConvertOptions {
    std::optional<std::string> from, to, size, in, out, level;
};

// Accepts "--name value" and "--name=value"; each option at most once.
ConvertOptions parse_options(Args args) {
    ConvertOptions options;
    const struct {
        std::string_view name;
        std::optional<std::string> ConvertOptions::*field;
    } known[] = {
        {"--from", &ConvertOptions::from}, {"--to", &ConvertOptions::to},
        {"--size", &ConvertOptions::size}, {"--in", &ConvertOptions::in},
        {"--out", &ConvertOptions::out},   {"--level", &ConvertOptions::level},
    };
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string_view arg = args[i];
        const size_t eq = arg.find('=');
        const std::string_view name = arg.substr(0, eq);
        std::optional<std::string> ConvertOptions::*field = nullptr;
        for (const auto& k : known) {
            if (k.name == name) field = k.field;
        }
        if (field == nullptr) {
            throw ToolError("convert: unknown argument '" + std::string(arg) +
                            "' (see cycbcr --help)");
        }
        std::string value;
        if (eq != std::string_view::npos) {
            value = arg.substr(eq + 1);
        } else if (i + 1 < args.size()) {
            value = args[++i];
        } else {
            throw ToolError("convert: " + std::string(name) + " needs a value");
        }
        if (options.*field) throw ToolError("convert: " + std::string(name) + " given twice");
        if (value.empty()) throw ToolError("convert: " + std::string(name) + " needs a value");
        options.*field = value;
    }
    if (!options.from) throw ToolError("convert: --from is required (see cycbcr --help)");
    if (!options.to) throw ToolError("convert: --to is required (see cycbcr --help)");
    if (options.in && !options.size) throw ToolError("convert: --size is required with --in");
    return options;
}

const FormatCode& resolve_code(const std::string& text, bool destination) {
    const std::optional<uint32_t> value = parse_code(text);
    if (!value) {
        throw ToolError("bad format code '" + text +
                        "': expected four characters, 0x and hexadecimal digits, or a number");
    }
    const FormatCode* code = find_code(*value);
    if (code == nullptr) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%08X", *value);
        throw ToolError("unknown format code '" + text + "' (" + hex + ")");
    }
    if (destination && code->source_only) {
        throw ToolError("format code '" + text + "' can only be a source; use " +
                        format_name(code->format) + " as the destination");
    }
    return *code;
}

unsigned int parse_level(const std::string& text) {
    if (text.size() == 1 && text[0] >= '0' && text[0] <= '6') {
        return static_cast<unsigned int>(text[0] - '0');
    }
    throw ToolError("bad level '" + text + "': expected 0 to 6");
}

class Fnv1a64 {
  public:
    void add(std::span<const uint8_t> bytes) {
        for (const uint8_t b : bytes) hash_ = (hash_ ^ b) * 0x100000001B3ull;
    }
    uint64_t value() const { return hash_; }

  private:
    uint64_t hash_ = 0xCBF29CE484222325ull;
};

// A "frame n/N" line on stderr (n alone when the input's length is not known)
// once a conversion has run for a second, redrawn at most four times a second
// and cleared by finish(). Only when stderr is a terminal: in a log or a pipe
// the carriage returns would pile up as clutter.
class Progress {
  public:
    explicit Progress(uint64_t total) : total_(total), enabled_(isatty(STDERR_FILENO) == 1) {}
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
        if (total_ != 0) {
            std::fprintf(stderr, "\rcycbcr: frame %llu/%llu", static_cast<unsigned long long>(done),
                         static_cast<unsigned long long>(total_));
        } else {
            std::fprintf(stderr, "\rcycbcr: frame %llu", static_cast<unsigned long long>(done));
        }
        std::fflush(stderr);
    }

    void finish() {
        if (shown_) std::fputs("\r\033[K", stderr);
        shown_ = false;
    }

  private:
    uint64_t total_;
    bool enabled_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point last_ = start_;
};

}  // namespace

int run_convert(Args args) {
    const ConvertOptions options = parse_options(args);
    const FormatCode& from = resolve_code(*options.from, false);
    const FormatCode& to = resolve_code(*options.to, true);
    if (!library_converts(from.value, to.value)) {
        throw ToolError(std::string("converting ") + format_name(from.format) + " to " +
                        format_name(to.format) +
                        " is not supported by this build of the library (see cycbcr formats)");
    }

    uint32_t width = 1920;
    uint32_t height = 1080;
    if (options.size) parse_size(*options.size, width, height);
    const FrameLayout src_layout = frame_layout(from.format, width, height);
    const FrameLayout dst_layout = frame_layout(to.format, width, height);
    FrameConverter converter(from, to, width, height);
    const std::string size_text = std::to_string(width) + "x" + std::to_string(height);
    const std::span<uint8_t> src_frame = converter.source();

    std::optional<FrameReader> reader;
    if (options.in) {
        reader.emplace(*options.in, src_layout.frame_bytes,
                       size_text + " " + format_name(from.format));
    } else {
        write_colour_bars(from.format, width, height, src_layout, src_frame);
    }
    // The level is settled before the first frame: some converters called
    // without the dispatcher leave the choice to a later call, and every
    // frame must take the same paths.
    if (options.level) {
        cycbcr_set_cpu(parse_level(*options.level));
    } else {
        cycbcr_get_cpu(1);
    }

    // Opened last, so that every argument and input error comes before any
    // file is created.
    std::optional<AtomicOutput> output;
    if (options.out) output.emplace(*options.out);

    Fnv1a64 checksum;
    uint64_t frames = 0;
    Progress progress(reader ? reader->known_frames() : 1);
    while (reader ? reader->read(src_frame) : frames == 0) {
        const std::span<const uint8_t> dst_frame = converter.convert();
        if (output) {
            output->write(dst_frame);
        } else {
            checksum.add(dst_frame);
        }
        progress.frame_done(++frames);
    }
    progress.finish();

    if (output) {
        output->commit();
    } else {
        std::printf("%s -> %s %s: frames=%llu bytes=%llu fnv1a64=%016llx\n",
                    code_text(from.value).c_str(), code_text(to.value).c_str(), size_text.c_str(),
                    static_cast<unsigned long long>(frames),
                    static_cast<unsigned long long>(frames * dst_layout.frame_bytes),
                    static_cast<unsigned long long>(checksum.value()));
    }
    return 0;
}

}  // namespace cycbcr_tool
