// What convert and preview share: their option parsing, and the reading of
// format codes, RGB destinations, matrices, layouts and levels.
#pragma once

#include <cycbcr.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "commands.h"
#include "formats.h"

namespace cycbcr_tool {

// A subcommand's options: "--name value" or "--name=value" for the options
// that take a value, "--name" alone for flags; each at most once. Throws
// ToolError, naming the subcommand, for anything else.
class Options {
  public:
    Options(std::string_view command, Args args, std::initializer_list<std::string_view> values,
            std::initializer_list<std::string_view> flags = {});

    std::optional<std::string> value(std::string_view name) const;
    bool has(std::string_view name) const;

    // Throws "COMMAND: NAME is required" (with the reason, if any) when the
    // option was not given.
    void require(std::string_view name, std::string_view reason = {}) const;

  private:
    std::string command_;
    std::map<std::string, std::string, std::less<>> values_;
    std::set<std::string, std::less<>> flags_;
};

// A format code as typed; throws ToolError for text that is no code or an
// unknown one, and for a source-only code as a destination.
const FormatCode& resolve_code(const std::string& text, bool destination);

// A source as typed: a code as resolve_code() reads it, or the name NV12.
const FormatCode& resolve_source(const std::string& text);

// An RGB destination or source: rgb555, rgb565, rgb24, rgb32, rgb48, rgb64,
// rgb32f (any case), or a code of the RGB format (0: rgb32). nullopt for any
// other text.
std::optional<RgbDepth> resolve_rgb(const std::string& text);

// A count option (--frames, --skip): a decimal number of at least `least`
// (0 or 1); throws ToolError naming the option.
uint64_t parse_count(const std::string& text, const char* option, uint64_t least);

// --frames (0: all) and --skip of a command that reads frames with --in, which
// --size must then accompany; throws ToolError, naming the command, for either
// without --in.
struct FrameSelection {
    uint64_t max_frames = 0;
    uint64_t skip = 0;
};
FrameSelection frame_selection(const Options& options, std::string_view command);

// --level: 0 to 6.
unsigned int parse_level(const std::string& text);

// The RGB layout of --rgb-type (default 0) and --bottom-up together.
QBYCBCRRgbType rgb_type_option(const Options& options);

// The layout of an RGB source of the depth: rgb_type_option(), with abgr and
// argb refused for rgb48, whose pixels have no alpha (the error names the
// command).
QBYCBCRRgbType rgb_source_type_option(const Options& options, RgbDepth depth,
                                      std::string_view command);

// --matrix, 0 without it; from_rgb for conversions from RGB (matrices 0 to 10).
QBYCBCRMatrix matrix_option(const Options& options, bool from_rgb = false);

}  // namespace cycbcr_tool
