// cycbcr: converts raw video frames between pixel formats with libcycbcr, and
// reports what the library makes of this processor.
#include <cstdio>
#include <exception>
#include <new>
#include <string_view>
#include <vector>

#include "commands.h"
#include "formats.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// Known codes grouped by format, aliases after the canonical name, so the list
// stays in step with the code table.
std::string code_list() {
    std::string text;
    const char* current = nullptr;
    for (const FormatCode& code : all_codes()) {
        const char* name = format_name(code.format);
        if (name != current) {
            text.append(current ? "\n    " : "    ").append(name).append(":");
            current = name;
        }
        text.append(" ").append(code_text(code.value));
        if (code.source_only) text.append(" (source only)");
    }
    return text;
}

}  // namespace

std::string usage_text() {
    return "usage:\n"
           "  cycbcr convert --from CODE --to CODE [--size WxH] [--in FILE] [--out FILE]\n"
           "                 [--level N]\n"
           "  cycbcr cpu\n"
           "  cycbcr --help | --version\n"
           "\n"
           "convert  Converts a raw file of frames back to back, all of one size and format.\n"
           "         --size is required with --in. Without --in the source is one built-in\n"
           "         frame of 75% colour bars (BT.601 studio range) made in the source format,\n"
           "         1920x1080 unless --size says otherwise. Without --out a summary is printed\n"
           "         (frames, bytes, FNV-1a 64 checksum of the output) instead of writing.\n"
           "         The output file appears only once complete. --level N sets the processor\n"
           "         level (0 to 6, see 'cycbcr cpu') before converting.\n"
           "cpu      Prints the processor feature bits and levels the library goes by.\n"
           "\n"
           "A CODE is four characters (case matters: yuv2 and yuV2 differ), a hexadecimal\n"
           "number with 0x, or a decimal number (0 is RGB). Known codes:\n" +
           code_list() +
           "\n\n"
           "Conversions available in this version: among UYVY, YUY2, YVYU and cyuv (packed\n"
           "4:2:2, 2 bytes per pixel, even widths). YVYU <-> UYVY and YVYU <-> cyuv swap the\n"
           "bytes of each 16-bit word as YUY2 <-> UYVY does, so Cb and Cr trade places.\n"
           "\n"
           "Exit status: 0 on success, 2 on any error.\n";
}

}  // namespace cycbcr_tool

int main(int argc, char** argv) {
    using namespace cycbcr_tool;
    const std::vector<std::string_view> args(argv + 1, argv + argc);
    try {
        if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
            std::fputs(usage_text().c_str(), stdout);
            return 0;
        }
        if (args[0] == "--version") {
            std::puts("cycbcr " CYCBCR_TOOL_VERSION);
            return 0;
        }
        const Args rest = Args(args).subspan(1);
        if (args[0] == "convert") return run_convert(rest);
        if (args[0] == "cpu") return run_cpu(rest);
        throw ToolError("unknown command '" + std::string(args[0]) + "' (see cycbcr --help)");
    } catch (const ToolError& e) {
        std::fprintf(stderr, "cycbcr: %s\n", e.what());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "cycbcr: out of memory\n");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "cycbcr: %s\n", e.what());
    }
    return 2;
}
