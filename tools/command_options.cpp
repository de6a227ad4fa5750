#include "command_options.h"

#include <charconv>
#include <cstdio>

#include "rgb_layouts.h"
#include "tool_error.h"

namespace cycbcr_tool {

Options::Options(std::string_view command, Args args,
                 std::initializer_list<std::string_view> values,
                 std::initializer_list<std::string_view> flags)
    : command_(command) {
    const auto fail = [&](const std::string& message) {
        return ToolError(command_ + ": " + message);
    };
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string_view arg = args[i];
        const size_t eq = arg.find('=');
        const std::string name(arg.substr(0, eq));
        bool takes_value = false;
        bool known = false;
        for (const std::string_view v : values) {
            if (v == name) known = takes_value = true;
        }
        for (const std::string_view f : flags) {
            if (f == name) known = true;
        }
        if (!known) throw fail("unknown argument '" + std::string(arg) + "' (see cycbcr --help)");
        if (values_.contains(name) || flags_.contains(name)) throw fail(name + " given twice");
        if (!takes_value) {
            if (eq != std::string_view::npos) throw fail(name + " takes no value");
            flags_.insert(name);
            continue;
        }
        std::string value;
        if (eq != std::string_view::npos) {
            value = arg.substr(eq + 1);
        } else if (i + 1 < args.size()) {
            value = args[++i];
        } else {
            throw fail(name + " needs a value");
        }
        if (value.empty()) throw fail(name + " needs a value");
        values_.emplace(name, std::move(value));
    }
}

std::optional<std::string> Options::value(std::string_view name) const {
    const auto it = values_.find(name);
    if (it == values_.end()) return std::nullopt;
    return it->second;
}

bool Options::has(std::string_view name) const {
    return values_.contains(name) || flags_.contains(name);
}

void Options::require(std::string_view name, std::string_view reason) const {
    if (has(name)) return;
    std::string message = command_ + ": " + std::string(name) + " is required";
    if (reason.empty()) {
        message += " (see cycbcr --help)";
    } else {
        message += ' ';
        message += reason;
    }
    throw ToolError(message);
}

const FormatCode& resolve_code(const std::string& text, bool destination) {
    const std::optional<uint32_t> value = parse_code(text);
    if (!value) {
        throw ToolError("bad format code '" + text +
                        "': expected four characters, 0x and hexadecimal digits, a number, "
                        "or rgb555, rgb565, rgb24, rgb32");
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

const FormatCode& resolve_source(const std::string& text) {
    return names_nv12(text) ? nv12_code() : resolve_code(text, false);
}

std::optional<RgbDepth> resolve_rgb(const std::string& text) {
    if (const std::optional<RgbDepth> depth = parse_rgb_depth(text)) return depth;
    const std::optional<uint32_t> value = parse_code(text);
    if (!value) return std::nullopt;
    const FormatCode* code = find_code(*value);
    if (code != nullptr && code->format == Format::RGB32) return RgbDepth::Rgb32;
    return std::nullopt;
}

uint64_t parse_count(const std::string& text, const char* option, uint64_t least) {
    uint64_t value = 0;
    const char* last = text.data() + text.size();
    const auto [end, ec] = std::from_chars(text.data(), last, value, 10);
    if (text.empty() || ec != std::errc() || end != last || value < least) {
        throw ToolError(std::string("bad ") + option + " '" + text + "': expected " +
                        std::to_string(least) + " or more");
    }
    return value;
}

FrameSelection frame_selection(const Options& options, std::string_view command) {
    if (options.has("--in")) options.require("--size", "with --in");
    for (const char* input_only : {"--frames", "--skip", "--src-pitch"}) {
        if (options.has(input_only) && !options.has("--in")) {
            throw ToolError(std::string(command) + ": " + input_only +
                            " applies to frames read with --in");
        }
    }
    FrameSelection s;
    if (options.has("--frames"))
        s.max_frames = parse_count(*options.value("--frames"), "--frames", 1);
    if (options.has("--skip")) s.skip = parse_count(*options.value("--skip"), "--skip", 0);
    return s;
}

unsigned int parse_level(const std::string& text) {
    if (text.size() == 1 && text[0] >= '0' && text[0] <= '6') {
        return static_cast<unsigned int>(text[0] - '0');
    }
    throw ToolError("bad level '" + text + "': expected 0 to 6");
}

QBYCBCRRgbType rgb_type_option(const Options& options) {
    QBYCBCRRgbType type = QBYCBCR_RGB_BGRA;
    if (const std::optional<std::string> text = options.value("--rgb-type")) {
        type = parse_rgb_type(*text);
    }
    if (options.has("--bottom-up")) type |= QBYCBCR_RGB_BOTTOM_UP;
    return type;
}

QBYCBCRRgbType rgb_source_type_option(const Options& options, RgbDepth depth,
                                      std::string_view command) {
    const QBYCBCRRgbType type = rgb_type_option(options);
    const uint32_t layout = type & ~uint32_t{QBYCBCR_RGB_BOTTOM_UP};
    if (depth == RgbDepth::Rgb48 && (layout == QBYCBCR_RGB_ABGR || layout == QBYCBCR_RGB_ARGB)) {
        throw ToolError(std::string(command) +
                        ": rgb48 pixels have no alpha: --rgb-type bgra or rgba (B G R or R G B)");
    }
    return type;
}

QBYCBCRMatrix matrix_option(const Options& options, bool from_rgb) {
    const std::optional<std::string> text = options.value("--matrix");
    return text ? parse_matrix(*text, from_rgb) : QBYCBCRMatrix{QBYCBCR_MATRIX_601};
}

}  // namespace cycbcr_tool
