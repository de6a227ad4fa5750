// The cycbcr command line: its usage text and the choice of subcommand.
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <cycbcr.h>

#include "commands.h"
#include "formats.h"
#include "rgb_layouts.h"
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

// The command's version is the header's it was built with; a shared library
// of another version found at run time is named beside it.
void print_version() {
    const char* library = cycbcr_version();
    if (std::strcmp(library, CYCBCR_VERSION_STRING) == 0) {
        std::puts("cycbcr " CYCBCR_VERSION_STRING);
    } else {
        std::printf("cycbcr " CYCBCR_VERSION_STRING " (library %s)\n", library);
    }
}

// One subcommand's part of the usage: its synopsis lines, its description
// (indented under its name), and whether the notes on frame files apply.
struct UsagePiece {
    std::string_view name;
    std::string synopsis;
    std::string description;
    bool frame_notes = false;
};

std::vector<UsagePiece> usage_pieces() {
    std::vector<UsagePiece> pieces;
    pieces.push_back(
        {"convert",
         "  cycbcr convert --from CODE|NAME|RGB --to CODE|NAME|RGB [--size WxH]\n"
         "                 [--in FILE|-] [--out FILE|-] [--frames N] [--skip N]\n"
         "                 [--src-pitch BYTES] [--dst-pitch BYTES] [--threads N]\n"
         "                 [--matrix M] [--rgb-type T] [--bottom-up] [--level N]\n"
         "                 [--converter NAME]\n",
         "convert  Converts a raw file of frames back to back, all of one size and format,\n"
         "         with the library's converters (see below). --size is required with\n"
         "         --in. Without --in the source is one built-in frame of 75% colour\n"
         "         bars (BT.601 studio range) made in the source format, 1920x1080\n"
         "         unless --size says otherwise. Without --out a summary is printed\n"
         "         (frames, bytes, FNV-1a 64 checksum of the output) instead of\n"
         "         writing. The output file appears only once complete. --level N sets\n"
         "         the processor level (0 to 6, see 'cycbcr cpu') before converting.\n"
         "         When stderr is a terminal, a conversion that runs longer than a\n"
         "         second shows the frames done and the megabytes of source read a second\n"
         "         there (nothing in logs or pipes).\n"
         "         --threads N converts a file's frames on N threads at once (default: the\n"
         "         number of processors), one frame per thread, each thread with its own\n"
         "         converters, the frames written strictly in input order and a few\n"
         "         frames per thread in memory at most; the bytes written are the same\n"
         "         at every count. --skip N passes over the first N frames of --in,\n"
         "         --frames N converts at most N frames after them; --src-pitch and\n"
         "         --dst-pitch give padded rows (see 'Files, pipes and padded rows'\n"
         "         below; with --dst-pitch, the summary counts the padded bytes).\n"
         "         RGB destinations: --to rgb555, rgb565, rgb24 or rgb32 (or the code 0),\n"
         "         from any YCbCr format, with --matrix (default 601) and --rgb-type\n"
         "         (default bgra); these options apply to RGB sources and destinations only.\n"
         "         NAMEs are the formats without codes (in any case): yuv420p10,\n"
         "         yuv420p12, yuv420p16, yuv422p10, yuv422p12, yuv422p16, yuv444p10,\n"
         "         yuv444p12, NV12, NV10, NV12p16. They convert through the library's\n"
         "         converters between them and v210, UYVY or NV12p16 (see 'cycbcr\n"
         "         formats'), by the shortest route, v210 first: yuv422p12 to I420 is\n"
         "         yuv422p12 -> v210 -> I420. Converters that work in whole pixel\n"
         "         groups get rows padded with the row's last sample in working\n"
         "         buffers; from v210 to yuv444p10, odd pixels take their pair's\n"
         "         chroma. NV12 to RGB goes through the library's own converter.\n"
         "         The library's high-bit-depth colour converters are called directly:\n"
         "         yuv420p10/yuv422p10 to rgb555..rgb32 (cycbcr_10ToRGBInt), rgb48 and\n"
         "         rgb64 (cycbcr_10ToRGBInt16), rgb10p (cycbcr_10ToRGBInt10), rgbp8\n"
         "         (cycbcr_10ToRGBPlanarInt) and rgbp16 (cycbcr_10ToRGBPlanarInt16);\n"
         "         yuv420p12/yuv422p12 to rgb48, rgb64 (cycbcr_12ToRGB) and rgbp16\n"
         "         (cycbcr_12ToRGBPlanar); yuv420p16/yuv422p16 to rgb555..rgb32\n"
         "         (cycbcr_16ToRGB8); I420, YV12 and P422 to rgbp8 (cycbcr_ToRGBPlanar),\n"
         "         rgbp16 (cycbcr_ToRGBPlanarInt16) and rgbpf (cycbcr_ToRGBPlanarFloat);\n"
         "         rgb24/rgb32 to yuv444p10, rgb48/rgb64 to yuv444p10, yuv422p12 and\n"
         "         yuv422p16, rgb10 to yuv422p16 (10 bits in the top bits) and yuv422p10.\n"
         "         --converter NAME picks another converter of the same pair\n"
         "         (cycbcr_12ToRGBInt16, cycbcr_10ToRGBPlanarInt10, cycbcr_ToRGBPlanarInt,\n"
         "         ..., cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS). rgbp8,\n"
         "         rgbp16, rgbpf: three planes R, G, B of 8-bit, 16-bit little-endian or\n"
         "         float samples (0 to 255); rgb10p: the library's packed 10-bit word per\n"
         "         pixel.\n"
         "         RGB sources: --from rgb24, rgb32 (or the code 0), rgb48, rgb64 or\n"
         "         rgb32f, --to UYVY, YUY2, YVYU, cyuv, I420, YV12, P422 or v210 (012v),\n"
         "         and --from rgb10 --to v210 (012v), with --matrix (default 601; 8 to\n"
         "         10 also, for RGB sources only) and --rgb-type/--bottom-up for the\n"
         "         source's layout. The library converts whole pixel pairs only, so\n"
         "         widths must be even (heights too for I420 and YV12); to v210 it\n"
         "         writes whole groups of 6 pixels and of a last partial group its\n"
         "         first pixel pair only, so widths must be a multiple of 6 or 2 more\n"
         "         (rgb32f: any even width). Other sizes are refused, nothing is\n"
         "         written. Routes: rgb32 through cycbcr_transcode (source code 0),\n"
         "         rgb24 through cycbcr_RGB24_to_*, rgb48 and rgb64 through\n"
         "         cycbcr_RGB64_to_uyvy (or _to_p422 for P422; the library reads the\n"
         "         high byte of each word), rgb32f through cycbcr_RGB32F_to_uyvy; UYVY\n"
         "         goes on to the other formats through the library's UYVY converters.\n"
         "         To v210: rgb24, rgb48/rgb64 (whole 16-bit words) and rgb10 through\n"
         "         cycbcr_RGB24_to_012v, cycbcr_RGB64_to_012v and cycbcr_RGB10_to_012v\n"
         "         (10-bit samples, chroma filtered across neighbouring pixels), rgb32\n"
         "         through cycbcr_transcode, rgb32f through UYVY. The built-in bars\n"
         "         are made in the RGB source's depth and layout.\n",
         true});
    pieces.push_back(
        {"preview",
         "  cycbcr preview --from CODE|NAME|RGB --out FILE.png|- [--size WxH]\n"
         "                 [--in FILE|-] [--frame N] [--src-pitch BYTES] [--matrix M]\n"
         "                 [--rgb-type T] [--bottom-up] [--level N]\n",
         "preview  Writes one frame (--frame N, counted from 0; default 0) as an 8-bit RGB\n"
         "         PNG file for a person to look at. The source is any format convert\n"
         "         reads, or an RGB frame: --from rgb555, rgb565, rgb24, rgb32, rgb48,\n"
         "         rgb64, rgb32f or rgb10 with the --rgb-type (and --bottom-up) it was\n"
         "         written with. 16-bit channels show their high byte, 10-bit ones\n"
         "         their top 8 bits; float channels are\n"
         "         clamped to 0.0..1.0, times 255, rounded. YCbCr goes through the\n"
         "         library's converter to rgb24 with --matrix (default 601). Without\n"
         "         --in: the built-in colour bars (for RGB sources in the depth and\n"
         "         layout given). The PNG file appears only once complete; on any\n"
         "         error none is written. --out - writes the PNG to standard output\n"
         "         (refused on a terminal), --in - reads standard input, and\n"
         "         --src-pitch reads padded rows (see below).\n",
         true});
    pieces.push_back(
        {"scale",
         "  cycbcr scale --from v210|UYVY --scale 100|150|200|300|400 [--422]\n"
         "               [--size WxH] [--in FILE|-] [--out FILE|-] [--frames N]\n"
         "               [--skip N] [--src-pitch BYTES] [--dst-pitch BYTES] [--level N]\n",
         "scale    Reduced-size 8-bit planar frames from v210 or UYVY through the\n"
         "         library's scaling converters: --scale 150 makes every 3 pixels and\n"
         "         rows 2, 200/300/400 keep every 2nd/3rd/4th row (v210 only), 100\n"
         "         unpacks at full size. Output: I420 planes (P422 with --422) of the\n"
         "         reduced size, which it prints (on stderr with --out); 'cycbcr\n"
         "         preview --from I420|P422 --size WxH' shows them. UYVY is reduced at\n"
         "         150 only. --in -, --out -, --frames, --skip, --src-pitch and\n"
         "         --dst-pitch as for convert (the output's chroma planes take the\n"
         "         8-bit 4:2:0 and 4:2:2 rule below).\n",
         true});
    pieces.push_back(
        {"compare",
         "  cycbcr compare A B --format CODE|NAME|RGB --size WxH\n"
         "                 [--format-b CODE|NAME|RGB] [--max-diff N] [--matrix M]\n"
         "                 [--rgb-type T] [--bottom-up] [--level N]\n",
         "compare  Compares two raw files of frames, A of --format and B of --format-b\n"
         "         (default: the same), both of --size, sample by sample. It prints a line\n"
         "         per frame, the PSNR of each plane (Y, Cb, Cr or R, G, B) and overall,\n"
         "         and the largest absolute sample difference:\n"
         "           frame 0: Y=48.13 Cb=inf Cr=inf overall=51.14 max-diff=1\n"
         "         then a summary: the formats, frames=N, each plane's PSNR and the\n"
         "         overall one (mean=) of all frames' errors taken together, the lowest\n"
         "         frame's overall PSNR (min=) and the largest difference (max-diff=).\n"
         "         PSNR is 10 log10(peak^2 / mean squared difference), the peak being\n"
         "         2^bits - 1 for the plane's samples (255, 1023, 4095, 65535; 31 and 63\n"
         "         for rgb555 and rgb565 channels); overall weighs each plane's squared\n"
         "         differences by its own peak and counts every sample of every plane.\n"
         "         Identical planes (and frames) print inf. Samples are compared as the\n"
         "         files hold them: bytes, whole 16-bit words (bits above a 10- or 12-bit\n"
         "         sample count), v210's 10-bit fields, RGB channels (alpha and unused\n"
         "         bits not compared), cyuv and bottom-up rows in picture order. Files\n"
         "         whose planes agree in name, size and depth are compared as they are\n"
         "         (v210 with yuv422p10, UYVY with YUY2 or P422, I420 with YV12 or NV12,\n"
         "         rgb24 with rgb32 or rgbp8). Otherwise B is converted to A's format as\n"
         "         'cycbcr convert' converts it (--matrix and --rgb-type as there), or\n"
         "         where the library has no converter that way, A to B's; the summary\n"
         "         names the conversion. A is thus the reference: a UYVY file A against\n"
         "         an I420 file B compares UYVY frames, B's as the library's I420 to UYVY\n"
         "         converter writes them. rgb32f, rgbpf and rgb10p are not compared.\n"
         "         Exit status 0 when no sample differs by more than --max-diff N\n"
         "         (default 0), 1 when one does, 2 on any error: unknown formats, missing\n"
         "         files, files that are not whole frames or hold different numbers of\n"
         "         frames (from a pipe, found when one ends first), formats no converter\n"
         "         brings together.\n"});
    pieces.push_back({"formats", "  cycbcr formats\n",
                      "formats  Lists the format codes and the pairs this build converts.\n"});
    pieces.push_back(
        {"cpu", "  cycbcr cpu\n",
         "cpu      Prints the processor feature bits and levels the library goes by.\n"});
    return pieces;
}

// Standard input and output, frame selection, padded rows and the outputs
// refused, for convert, preview and scale.
std::string files_and_pipes_text() {
    return "Files, pipes and padded rows (convert, preview and scale). --in - reads\n"
           "standard input, --out - writes standard output. Frames from a pipe are read\n"
           "one by one as they come (their number is not known in advance); a partial\n"
           "last frame is an error that names the input. Binary output is not written\n"
           "to a terminal: --out - with standard output on a terminal is refused.\n"
           "--skip N (convert, scale) passes over the first N frames (a seek in a file,\n"
           "frames read and dropped from a pipe); a --skip that leaves no frame is an\n"
           "error. --frames N takes at most N frames after them. --src-pitch BYTES and\n"
           "--dst-pitch BYTES (convert, scale) give the distance from one row to the\n"
           "next in the input and the output file,\n"
           "for rows padded at their ends: at least a row's bytes (smaller pitches are\n"
           "refused), the padding written as zero bytes. BYTES is the pitch of the first\n"
           "plane (Y, or the only one); every other plane takes the same pitch in its own\n"
           "samples, divided by its subsampling and rounded up to a whole sample:\n"
           "  I420, YV12, P422 (8-bit 4:2:0, 4:2:2): Cb and Cr rows ceil(BYTES / 2) apart;\n"
           "  yuv420pNN, yuv422pNN (16-bit words): BYTES even, Cb and Cr rows\n"
           "    2 * ceil(BYTES / 4) apart; yuv444pNN: every plane at BYTES;\n"
           "  NV12: Cb, Cr rows BYTES rounded up to even apart; NV10, NV12p16: BYTES even,\n"
           "    Cb, Cr rows BYTES rounded up to a multiple of 4 apart;\n"
           "  RGB planes (rgbp8, rgbp16, rgbpf): every plane at BYTES, a whole number of\n"
           "    samples; packed formats (UYVY, v210, RGB pixels): their one plane.\n"
           "Each plane takes its rows times its pitch, the padding after its last row\n"
           "included, and the planes follow one another. The output is refused, before\n"
           "anything is written, when it is the input itself (the same file by any name\n"
           "or link) or an existing file without write permission (one with no write\n"
           "bit set is kept even from the superuser).\n";
}

// How frames lie in files, the codes, matrices and layouts, and which pairs
// convert and how.
std::string frame_notes() {
    return "Frames in files have their rows tightly packed (unless --src-pitch or\n"
           "--dst-pitch say otherwise, see below). UYVY, YUY2, YVYU and cyuv:\n"
           "2 bytes per pixel, even widths only (a row is whole 4-byte pixel pairs; an\n"
           "odd width would end each row in half a pair, which the byte-order converters\n"
           "leave unwritten). I420 and YV12: a Y plane, then chroma planes of\n"
           "width/2 x height/2 (YV12: Cr first), even widths and heights. P422: chroma\n"
           "planes of width/2 x height, even widths. v210: any width, rows of\n"
           "ceil(width / 48) * 128 bytes. RGB: width * 2 (rgb555, rgb565), 3 (rgb24), 4\n"
           "(rgb32, rgb10), 6 (rgb48), 8 (rgb64) or 16 (rgb32f, native little-endian\n"
           "floats) bytes per row; any size (as sources of convert, the widths above).\n"
           "Converted to RGB or previewed, YCbCr frames may also have odd sizes, laid\n"
           "out as is usual for raw files: packed rows of whole pairs, ceil(width / 2) *\n"
           "4 bytes (the last pair's second pixel is not shown), chroma planes of\n"
           "ceil(width / 2) x ceil(height / 2) (4:2:0) or ceil(width / 2) x height (P422).\n"
           "NV12: a Y plane, then one plane of interleaved Cb, Cr pairs, ceil(width / 2)\n"
           "pairs (2 * ceil(width / 2) bytes) a row and ceil(height / 2) rows; NV10 and\n"
           "NV12p16 the same in 16-bit little-endian words (NV10: 10 bits in the low\n"
           "bits). yuv4xxpNN: planes Y, Cb, Cr of 16-bit little-endian words (10 and 12\n"
           "bits in the low bits), chroma planes ceil(width / 2) wide for 4:2:0 and\n"
           "4:2:2, ceil(height / 2) high for 4:2:0. Named formats take any size, except\n"
           "where a route passes through UYVY (even widths).\n"
           "\n"
           "A CODE is four characters (case matters: yuv2 and yuV2 differ), a hexadecimal\n"
           "number with 0x, or a decimal number (0 is RGB). Known codes:\n" +
           code_list() +
           "\n\n"
           "Colour matrices (--matrix, by number or name), for YCbCr in the studio range\n"
           "(8 to 10 for RGB sources only):\n" +
           matrix_help() +
           "RGB layouts (--rgb-type, by name or number, e.g. rgba,bottom-up or 0x8002):\n" +
           rgb_type_help() +
           "\n"
           "Which pairs convert: see 'cycbcr formats'. The files written hold standard\n"
           "frames of the destination format at every width. Pairs whose library\n"
           "converter exchanges Cb and Cr (YVYU <-> UYVY, YVYU <-> cyuv, I420 or YV12\n"
           "<-> P422) go through other converters of the library: via YUY2, or the\n"
           "converter of the other 4:2:0 format. Where a converter works in whole\n"
           "pixel groups past the end of a row (to and from v210), the rows it reads\n"
           "or writes are padded to 48 pixels in working buffers and copied in or out.\n"
           "v210 -> UYVY rounds each 10-bit sample to 8 bits, saturating at 255,\n"
           "except at level 5 (AVX2), where 1022 and 1023 wrap to 0.\n"
           "RGB is written by the library's 8-bit engine (each channel truncated, not\n"
           "rounded; each pixel pair takes its pair's chroma, 4:2:0 chroma row k serves\n"
           "rows 2k and 2k + 1) at every level: converters are called on whole pixel\n"
           "pairs (and 4:2:0 row pairs) in working buffers and width pixels of each row\n"
           "copied out; UYVY to rgb24 and rgb32 goes through YUY2, whose converters keep the\n"
           "layout and matrix asked for at every level; I420 and YV12 to bgra rgb32 are\n"
           "converted bottom-up and turned over, off the library's BT.601/BT.709-only\n"
           "rounding path; NV12 goes through the library's converter to rgb32, and to\n"
           "the other depths is that frame repacked as the engine packs them (the same\n"
           "bytes). v210 goes through the library's converters from v210, at any width:\n"
           "10-bit samples, odd pixels taking the mean of the pairs on either side; the\n"
           "last pixel of a row of whole 6-pixel groups would take the word after the\n"
           "groups for its right-hand pair, so the command gives that word the row's\n"
           "last pair (the pixel takes its own pair, as at every other width).\n"
           "\n" +
           files_and_pipes_text();
}

const char* const kExitStatus =
    "Exit status: 0 on success, 2 on any error (compare: 1 when the files differ).\n";

}  // namespace

std::string usage_text() {
    std::string text = "usage:\n";
    const std::vector<UsagePiece> pieces = usage_pieces();
    for (const UsagePiece& piece : pieces) text += piece.synopsis;
    text += "  cycbcr --help | --version\n  cycbcr COMMAND --help\n\n";
    for (const UsagePiece& piece : pieces) text += piece.description;
    return text.append("\n").append(frame_notes()).append("\n").append(kExitStatus);
}

std::optional<std::string> command_usage_text(std::string_view command) {
    for (const UsagePiece& piece : usage_pieces()) {
        if (piece.name != command) continue;
        std::string text = "usage:\n";
        text.append(piece.synopsis).append("\n").append(piece.description);
        if (piece.frame_notes) text.append("\n").append(frame_notes());
        return text.append("\n").append(kExitStatus);
    }
    return std::nullopt;
}

int run_command_line(Args args) {
    try {
        if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
            std::fputs(usage_text().c_str(), stdout);
            return 0;
        }
        if (args[0] == "--version") {
            print_version();
            return 0;
        }
        const Args rest = args.subspan(1);
        // COMMAND --help (or -h) anywhere among a subcommand's arguments:
        // its own usage.
        for (const std::string_view arg : rest) {
            if (arg != "--help" && arg != "-h") continue;
            if (const std::optional<std::string> text = command_usage_text(args[0])) {
                std::fputs(text->c_str(), stdout);
                return 0;
            }
        }
        if (args[0] == "compare") return run_compare(rest);
        if (args[0] == "convert") return run_convert(rest);
        if (args[0] == "cpu") return run_cpu(rest);
        if (args[0] == "formats") return run_formats(rest);
        if (args[0] == "preview") return run_preview(rest);
        if (args[0] == "scale") return run_scale(rest);
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

}  // namespace cycbcr_tool
