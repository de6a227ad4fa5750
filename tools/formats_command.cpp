// cycbcr formats: the accepted codes by format, and which pairs this build
// converts, as the library itself answers, RGB destinations included.
#include <cycbcr.h>

#include <cstdio>
#include <string>
#include <vector>

#include "commands.h"
#include "conversions.h"
#include "deep_conversions.h"
#include "deep_formats.h"
#include "deep_rgb.h"
#include "formats.h"
#include "from_rgb_conversions.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// The formats in the order of the code table, each with its own code (the
// first listed for it) and its aliases.
struct FormatCodes {
    Format format;
    std::vector<const FormatCode*> codes;
};

std::vector<FormatCodes> codes_by_format() {
    std::vector<FormatCodes> formats;
    for (const FormatCode& code : all_codes()) {
        if (formats.empty() || formats.back().format != code.format) {
            formats.push_back({code.format, {}});
        }
        formats.back().codes.push_back(&code);
    }
    return formats;
}

std::string code_with_note(const FormatCode& code) {
    return code_text(code.value) + (code.source_only ? " (source only)" : "");
}

}  // namespace

int run_formats(Args args) {
    if (!args.empty()) throw ToolError("formats: takes no arguments");
    const std::vector<FormatCodes> formats = codes_by_format();

    std::puts(
        "Format codes (case matters: yuv2 and yuV2 are two codes, YUV2 is none). Each\n"
        "format's first code is its own; its aliases convert exactly as it does.\n");
    for (const FormatCodes& f : formats) {
        std::printf("  %-6s %s\n", format_name(f.format), format_description(f.format));
        std::string line = "code " + code_with_note(*f.codes.front());
        for (size_t i = 1; i < f.codes.size(); ++i) {
            line += (i == 1 ? "; aliases " : " ") + code_with_note(*f.codes[i]);
        }
        std::printf("         %s\n", line.c_str());
    }
    std::puts(
        "\nNamed formats (no codes: given by name, in any case), with the library's\n"
        "converters to and from each; the command reaches every other format, RGB\n"
        "included, from them and to them by way of v210 or UYVY:\n");
    for (const DeepFormat f : all_deep_formats()) {
        std::printf("  %-10s %s\n", deep_name(f), deep_description(f));
        const auto join = [](const std::vector<std::string>& names) {
            std::string text;
            for (const std::string& n : names) text += (text.empty() ? "" : ", ") + n;
            return text.empty() ? std::string("none") : text;
        };
        std::printf("             to %s; from %s\n", join(deep_direct_destinations(f)).c_str(),
                    join(deep_direct_sources(f)).c_str());
    }
    std::puts(
        "  The library reads no NV12p16: the command brings it to NV10 (each word\n"
        "  shifted right by 6) and goes on from there.");
    std::puts("\nColour converters of the named formats, called directly ('cycbcr --help'):");
    for (const std::string& name : deep_rgb_member_names()) std::printf("  %s\n", name.c_str());

    std::puts(
        "\n  RGB destinations are named by depth: rgb555, rgb565, rgb24, rgb32 (code 0),\n"
        "  in the layout --rgb-type gives (see cycbcr --help). RGB sources: rgb24,\n"
        "  rgb32 (code 0), rgb48, rgb64, rgb32f, each to the formats of the rgb32 row,\n"
        "  and rgb10, to v210 only.");

    // YCbCr columns, then one per RGB depth; the RGB format's own column is
    // the rgb32 one.
    std::vector<const FormatCodes*> ycbcr;
    for (const FormatCodes& f : formats) {
        if (f.format != Format::RGB32) ycbcr.push_back(&f);
    }
    std::puts("\nConversions of this build (rows: source, columns: destination):\n");
    std::printf("  %-9s", "from\\to");
    for (const FormatCodes* to : ycbcr) std::printf(" %6s", format_name(to->format));
    for (const RgbDepth depth : all_rgb_depths()) std::printf(" %6s", rgb_depth_name(depth));
    std::putchar('\n');
    for (const FormatCodes& from : formats) {
        std::printf("  %-9s", format_name(from.format));
        const uint32_t from_code = from.codes.front()->value;
        for (const FormatCodes* to : ycbcr) {
            const char* cell = "-";
            const uint32_t to_code = to->codes.front()->value;
            if (from.format == Format::RGB32) {
                if (command_converts_from_rgb(to_code)) {
                    cell = "yes";
                } else if (cycbcr_from_rgb_pair_converter(to_code) != nullptr) {
                    cell = "lib";
                }
            } else if (library_converts(from_code, to_code)) {
                cell = command_converts(from_code, to_code) ? "yes" : "lib";
            }
            std::printf(" %6s", cell);
        }
        for (const RgbDepth depth : all_rgb_depths()) {
            const char* cell = "-";
            if (command_converts_to_rgb(from_code)) {
                cell = "yes";
            } else if (depth == RgbDepth::Rgb32 && library_converts_to_rgb32(from_code)) {
                cell = "lib";
            }
            std::printf(" %6s", cell);
        }
        std::putchar('\n');
    }
    // The named formats: by their routes to and from the coded ones; to RGB
    // through v210 or UYVY (NV12 through the library's converter to rgb32,
    // the other depths repacked from its frame).
    for (const DeepFormat f : all_deep_formats()) {
        std::printf("  %-9s", deep_name(f));
        for (const FormatCodes* to : ycbcr) {
            const Endpoint target{std::nullopt, to->codes.front()};
            const bool routed = deep_route_exists(Endpoint{f, nullptr}, target);
            std::printf(" %6s", routed ? "yes" : "-");
        }
        for (size_t i = 0; i < all_rgb_depths().size(); ++i) std::printf(" %6s", "yes");
        std::putchar('\n');
    }
    std::puts(
        "\n  yes  converted by 'cycbcr convert' through the library's converters (NV12\n"
        "       to rgb555, rgb565 and rgb24 repacked from its converter to rgb32)\n"
        "  lib  converted by the library; 'cycbcr convert' cannot read or write\n"
        "       one of the two formats yet, or lacks a converter of its route\n"
        "  -    not converted by this build of the library");
    return 0;
}

}  // namespace cycbcr_tool
