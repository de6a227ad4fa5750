// cycbcr compare: two raw files of frames, sample by sample: PSNR per plane
// and overall, and the largest sample difference, frame by frame.
#include <cycbcr.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "command_options.h"
#include "commands.h"
#include "conversions.h"
#include "deep_conversions.h"
#include "deep_formats.h"
#include "deep_rgb.h"
#include "formats.h"
#include "frame_io.h"
#include "from_rgb_conversions.h"
#include "rgb_conversions.h"
#include "rgb_layouts.h"
#include "tool_error.h"

namespace cycbcr_tool {
namespace {

const std::initializer_list<std::string_view> kValueOptions = {
    "--size", "--format", "--format-b", "--max-diff", "--matrix", "--rgb-type", "--level"};

// A file's format as compare reads it: one of code, deep, rgb and planes set.
struct FileFormat {
    std::string text;                  // the canonical name, for messages
    const FormatCode* code = nullptr;  // a coded YCbCr format
    std::optional<DeepFormat> deep;    // a named YCbCr format, NV12 included
    std::optional<RgbDepth> rgb;       // packed RGB pixels
    std::optional<RgbExtra> planes;    // three RGB planes: rgbp8 or rgbp16

    bool is_rgb() const { return rgb || planes; }
    Endpoint endpoint() const {
        Endpoint e;
        e.deep = deep;
        e.code = code;
        return e;
    }
};

FileFormat parse_format(const std::string& text) {
    FileFormat f;
    if (const std::optional<DeepFormat> deep = parse_deep(text)) {
        f.deep = deep;
        f.text = deep_name(*deep);
    } else if (const std::optional<RgbDepth> rgb = resolve_rgb(text)) {
        if (*rgb == RgbDepth::Rgb32F) {
            throw ToolError(
                "compare: rgb32f pixels are floats; compare reads integer samples only");
        }
        f.rgb = rgb;
        f.text = rgb_depth_name(*rgb);
    } else if (const std::optional<RgbExtra> extra = parse_rgb_extra(text)) {
        if (*extra != RgbExtra::Planes8 && *extra != RgbExtra::Planes16) {
            throw ToolError(std::string("compare: ") + rgb_extra_name(*extra) +
                            " frames are not compared (of the RGB planes, rgbp8 and rgbp16 are)");
        }
        f.planes = extra;
        f.text = rgb_extra_name(*extra);
    } else {
        f.code = &resolve_code(text, false);
        f.text = format_name(f.code->format);
    }
    return f;
}

// The bytes of one frame in a file.
uint64_t file_frame_bytes(const FileFormat& f, uint32_t width, uint32_t height) {
    if (f.code) return source_layout(f.code->format, width, height).frame_bytes;
    if (f.deep) return deep_layout(*f.deep, width, height).frame_bytes;
    if (f.rgb) return rgb_layout(*f.rgb, width, height).frame_bytes;
    return rgb_extra_layout(*f.planes, width, height).frame_bytes;
}

// One plane of samples as compare sees it: Y, Cb, Cr or R, G, B, its size
// and the significant bits of a sample (which give the PSNR's peak).
struct PlaneShape {
    const char* name = "";
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bits = 0;

    bool operator==(const PlaneShape& other) const {
        return std::string_view(name) == other.name && width == other.width &&
               height == other.height && bits == other.bits;
    }
};

uint32_t half_up(uint32_t n) {
    return n / 2 + n % 2;
}

std::vector<PlaneShape> plane_shapes(const FileFormat& f, uint32_t width, uint32_t height) {
    if (f.is_rgb()) {
        uint32_t red = 8, green = 8, blue = 8;
        if (f.planes) {
            red = green = blue = *f.planes == RgbExtra::Planes8 ? 8 : 16;
        } else {
            switch (*f.rgb) {
                case RgbDepth::Rgb555:
                    red = green = blue = 5;
                    break;
                case RgbDepth::Rgb565:
                    red = blue = 5;
                    green = 6;
                    break;
                case RgbDepth::Rgb48:
                case RgbDepth::Rgb64:
                    red = green = blue = 16;
                    break;
                case RgbDepth::Rgb10:
                    red = green = blue = 10;
                    break;
                default:
                    break;
            }
        }
        return {{"R", width, height, red}, {"G", width, height, green}, {"B", width, height, blue}};
    }
    uint32_t chroma_width = half_up(width);
    uint32_t chroma_height = height;
    uint32_t bits = 8;
    if (f.deep) {
        if (deep_chroma_x(*f.deep) == 1) chroma_width = width;
        if (deep_chroma_y(*f.deep) == 2) chroma_height = half_up(height);
        bits = deep_bits(*f.deep);
    } else if (f.code->format == Format::I420 || f.code->format == Format::YV12) {
        chroma_height = half_up(height);
    } else if (f.code->format == Format::V210) {
        bits = 10;
    }
    return {{"Y", width, height, bits},
            {"Cb", chroma_width, chroma_height, bits},
            {"Cr", chroma_width, chroma_height, bits}};
}

// The samples of a frame, a vector per plane, rows top first, each sample a
// whole byte or 16-bit word of the file (stray bits above a 10- or 12-bit
// sample in its word are part of it), a v210 10-bit field, or an RGB channel
// field.
using Planes = std::vector<std::vector<uint16_t>>;

uint32_t load_le16(const uint8_t* p) {
    return p[0] | uint32_t{p[1]} << 8;
}

uint32_t load_le32(const uint8_t* p) {
    return p[0] | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

// Packed 8-bit 4:2:2: each 4-byte pair holds Y0, Cb, Y1, Cr at these offsets.
struct PairOrder {
    int y0, cb, y1, cr;
};

void unpack_packed(Format format, uint32_t width, uint32_t height, const uint8_t* frame,
                   Planes& out) {
    const PairOrder order = format == Format::YUY2   ? PairOrder{0, 1, 2, 3}
                            : format == Format::YVYU ? PairOrder{0, 3, 2, 1}
                                                     : PairOrder{1, 0, 3, 2};
    const uint32_t pairs = half_up(width);
    for (uint32_t r = 0; r < height; ++r) {
        // cyuv frames hold the bottom row first.
        const uint32_t stored = format == Format::CYUV ? height - 1 - r : r;
        const uint8_t* row = frame + uint64_t{stored} * pairs * 4;
        uint16_t* y = out[0].data() + size_t{r} * width;
        uint16_t* cb = out[1].data() + size_t{r} * pairs;
        uint16_t* cr = out[2].data() + size_t{r} * pairs;
        for (uint32_t p = 0; p < pairs; ++p) {
            const uint8_t* pair = row + 4 * size_t{p};
            y[2 * p] = pair[order.y0];
            if (2 * p + 1 < width) y[2 * p + 1] = pair[order.y1];
            cb[p] = pair[order.cb];
            cr[p] = pair[order.cr];
        }
    }
}

// v210: three 10-bit fields a word (bits 30 and 31 belong to no sample), in
// address order Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3 ...
void unpack_v210(uint32_t width, uint32_t height, const uint8_t* frame, Planes& out) {
    const uint32_t pitch = v210_row_bytes(width);
    const uint32_t pairs = half_up(width);
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* row = frame + uint64_t{r} * pitch;
        const auto sample = [row](uint32_t i) {
            return static_cast<uint16_t>(load_le32(row + 4 * size_t{i / 3}) >> (10 * (i % 3)) &
                                         0x3FF);
        };
        uint16_t* y = out[0].data() + size_t{r} * width;
        uint16_t* cb = out[1].data() + size_t{r} * pairs;
        uint16_t* cr = out[2].data() + size_t{r} * pairs;
        for (uint32_t p = 0; p < pairs; ++p) {
            cb[p] = sample(4 * p);
            y[2 * p] = sample(4 * p + 1);
            cr[p] = sample(4 * p + 2);
            if (2 * p + 1 < width) y[2 * p + 1] = sample(4 * p + 3);
        }
    }
}

// Planes of bytes or little-endian words, rows tightly packed; chroma_order
// gives, for each plane of the file, which of out's planes it fills.
void unpack_planar(std::span<const DeepPlane> file_planes, std::span<const int> chroma_order,
                   const uint8_t* frame, Planes& out) {
    for (size_t p = 0; p < file_planes.size(); ++p) {
        const DeepPlane& plane = file_planes[p];
        const uint8_t* src = frame + plane.offset;
        const uint64_t n = uint64_t{plane.samples} * plane.rows;
        if (chroma_order[p] < 0) {
            // Interleaved Cb, Cr pairs.
            for (uint64_t i = 0; i < n; ++i) {
                const uint32_t v = plane.sample_bytes == 2 ? load_le16(src + 2 * i) : src[i];
                out[1 + i % 2][i / 2] = static_cast<uint16_t>(v);
            }
            continue;
        }
        std::vector<uint16_t>& dst = out[static_cast<size_t>(chroma_order[p])];
        for (uint64_t i = 0; i < n; ++i) {
            dst[i] =
                static_cast<uint16_t>(plane.sample_bytes == 2 ? load_le16(src + 2 * i) : src[i]);
        }
    }
}

// Packed RGB pixels: the channels in the layout's order (the first one in the
// lowest bytes, or the top bits of a 16- or 32-bit word), alpha skipped.
void unpack_rgb(RgbDepth depth, QBYCBCRRgbType type, uint32_t width, uint32_t height,
                const uint8_t* frame, Planes& out) {
    const uint32_t layout = type & ~uint32_t{QBYCBCR_RGB_BOTTOM_UP};
    const bool blue_first = layout == QBYCBCR_RGB_BGRA || layout == QBYCBCR_RGB_ABGR;
    const bool alpha_first = layout == QBYCBCR_RGB_ABGR || layout == QBYCBCR_RGB_ARGB;
    const uint32_t pixel_bytes = rgb_pixel_bytes(depth);
    for (uint32_t r = 0; r < height; ++r) {
        const uint32_t stored = is_bottom_up(type) ? height - 1 - r : r;
        const uint8_t* row = frame + uint64_t{stored} * width * pixel_bytes;
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t* px = row + size_t{x} * pixel_bytes;
            uint32_t first = 0, green = 0, last = 0;
            switch (depth) {
                case RgbDepth::Rgb555: {
                    const uint32_t w = load_le16(px);
                    first = w >> 10 & 31;
                    green = w >> 5 & 31;
                    last = w & 31;
                    break;
                }
                case RgbDepth::Rgb565: {
                    const uint32_t w = load_le16(px);
                    first = w >> 11 & 31;
                    green = w >> 5 & 63;
                    last = w & 31;
                    break;
                }
                case RgbDepth::Rgb24:
                case RgbDepth::Rgb32: {
                    const uint8_t* c = px + (depth == RgbDepth::Rgb32 && alpha_first ? 1 : 0);
                    first = c[0];
                    green = c[1];
                    last = c[2];
                    break;
                }
                case RgbDepth::Rgb48:
                case RgbDepth::Rgb64: {
                    const uint8_t* c = px + (depth == RgbDepth::Rgb64 && alpha_first ? 2 : 0);
                    first = load_le16(c);
                    green = load_le16(c + 2);
                    last = load_le16(c + 4);
                    break;
                }
                case RgbDepth::Rgb10: {
                    const uint32_t w = load_le32(px);
                    first = w >> 22 & 0x3FF;
                    green = w >> 12 & 0x3FF;
                    last = w >> 2 & 0x3FF;
                    break;
                }
                case RgbDepth::Rgb32F:
                    break;  // refused by parse_format()
            }
            const size_t i = size_t{r} * width + x;
            out[0][i] = static_cast<uint16_t>(blue_first ? last : first);
            out[1][i] = static_cast<uint16_t>(green);
            out[2][i] = static_cast<uint16_t>(blue_first ? first : last);
        }
    }
}

// Three planes R, G, B of bytes or little-endian words, the bottom-up flag
// honoured.
void unpack_rgb_planes(RgbExtra extra, QBYCBCRRgbType type, uint32_t width, uint32_t height,
                       const uint8_t* frame, Planes& out) {
    const uint32_t sample_bytes = extra == RgbExtra::Planes8 ? 1 : 2;
    const uint64_t plane_bytes = uint64_t{width} * sample_bytes * height;
    for (uint32_t c = 0; c < 3; ++c) {
        for (uint32_t r = 0; r < height; ++r) {
            const uint32_t stored = is_bottom_up(type) ? height - 1 - r : r;
            const uint8_t* row = frame + c * plane_bytes + uint64_t{stored} * width * sample_bytes;
            uint16_t* dst = out[c].data() + size_t{r} * width;
            for (uint32_t x = 0; x < width; ++x) {
                dst[x] = static_cast<uint16_t>(sample_bytes == 2 ? load_le16(row + 2 * size_t{x})
                                                                 : row[x]);
            }
        }
    }
}

void unpack(const FileFormat& f, QBYCBCRRgbType type, uint32_t width, uint32_t height,
            std::span<const uint8_t> frame, Planes& out) {
    if (f.rgb) return unpack_rgb(*f.rgb, type, width, height, frame.data(), out);
    if (f.planes) return unpack_rgb_planes(*f.planes, type, width, height, frame.data(), out);
    if (f.deep) {
        const std::vector<DeepPlane> planes = deep_planes(*f.deep, width, height);
        static constexpr int kPlanar[] = {0, 1, 2};
        static constexpr int kSemiPlanar[] = {0, -1};
        const std::span<const int> order = deep_semi_planar(*f.deep)
                                               ? std::span<const int>(kSemiPlanar)
                                               : std::span<const int>(kPlanar);
        return unpack_planar(planes, order, frame.data(), out);
    }
    const Format format = f.code->format;
    if (format == Format::V210) return unpack_v210(width, height, frame.data(), out);
    if (format == Format::I420 || format == Format::YV12 || format == Format::P422) {
        std::vector<DeepPlane> planes;
        for (const PlaneRows& rows : source_planes(format, width, height)) {
            planes.push_back({rows.offset, rows.row_bytes, rows.rows, 1});
        }
        static constexpr int kCbFirst[] = {0, 1, 2};
        static constexpr int kCrFirst[] = {0, 2, 1};
        const std::span<const int> order = format == Format::YV12 ? std::span<const int>(kCrFirst)
                                                                  : std::span<const int>(kCbFirst);
        return unpack_planar(planes, order, frame.data(), out);
    }
    unpack_packed(format, width, height, frame.data(), out);
}

// The library converter from one file format to the other, chosen as
// 'cycbcr convert --from FROM --to TO' chooses it. Throws ToolError when
// there is none (or none at this size).
std::unique_ptr<Converter> make_converter(const FileFormat& from, const FileFormat& to,
                                          uint32_t width, uint32_t height, const Options& options,
                                          QBYCBCRRgbType type) {
    const auto none = [&] {
        return ToolError("the library has no converter from " + from.text + " to " + to.text +
                         " (see cycbcr formats)");
    };
    if (from.is_rgb() && to.is_rgb()) throw none();
    if (from.rgb) {
        if (!rgb_convertible_source(*from.rgb)) throw none();
        const QBYCBCRMatrix matrix = matrix_option(options, true);
        if (to.deep) {
            const FromRgbMember* member = find_from_rgb_member(*from.rgb, *to.deep, "");
            if (member == nullptr) throw none();
            return std::make_unique<RgbToDeepConverter>(*member, *from.rgb, *to.deep, width, height,
                                                        matrix, type);
        }
        return std::make_unique<FromRgbConverter>(*from.rgb, *to.code, width, height, matrix, type);
    }
    if (from.planes) throw none();
    const Endpoint source = from.endpoint();
    if (to.is_rgb()) {
        const QBYCBCRMatrix matrix = matrix_option(options);
        const bool coded = from.code != nullptr || from.deep == DeepFormat::Nv12;
        if (coded && to.rgb && rgb_writable(*to.rgb)) {
            return std::make_unique<RgbConverter>(from.code ? *from.code : nv12_code(), *to.rgb,
                                                  width, height, matrix, type);
        }
        const RgbTarget target{to.rgb, to.planes};
        if (const ToRgbMember* member = find_to_rgb_member(source, target, "")) {
            return std::make_unique<DeepToRgbConverter>(*member, source, target, width, height,
                                                        matrix, type);
        }
        if (from.deep && to.rgb && rgb_writable(*to.rgb)) {
            return std::make_unique<DeepRgbConverter>(*from.deep, *to.rgb, width, height, matrix,
                                                      type);
        }
        throw none();
    }
    if (from.deep || to.deep) {
        return std::make_unique<DeepConverter>(source, to.endpoint(), width, height);
    }
    return std::make_unique<FrameConverter>(*from.code, *to.code, width, height);
}

uint64_t parse_max_diff(const std::string& text) {
    uint64_t value = 0;
    const char* last = text.data() + text.size();
    const auto [end, ec] = std::from_chars(text.data(), last, value, 10);
    if (ec != std::errc() || end != last) {
        throw ToolError("compare: bad --max-diff '" + text + "': expected a number, 0 or more");
    }
    return value;
}

// Squared errors over the peak squared, summed, and the samples they cover:
// the mean of the first over the second is the error the PSNR is taken of.
struct Error {
    double weighted = 0.0;
    double samples = 0.0;

    double psnr() const {
        return weighted == 0.0 ? INFINITY : -10.0 * std::log10(weighted / samples);
    }
};

std::string psnr_text(double psnr) {
    if (std::isinf(psnr)) return "inf";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", psnr);
    return text;
}

}  // namespace

int run_compare(Args args) {
    for (const std::string_view arg : args) {
        if (arg == "--help" || arg == "-h") {
            std::fputs(usage_text().c_str(), stdout);
            return 0;
        }
    }
    // The two files are the arguments that are no option or option value.
    std::vector<std::string_view> option_args;
    std::vector<std::string> files;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string_view arg = args[i];
        if (!arg.starts_with("--")) {
            files.emplace_back(arg);
            continue;
        }
        option_args.push_back(arg);
        const bool takes_value =
            std::find(kValueOptions.begin(), kValueOptions.end(), arg) != kValueOptions.end();
        if (takes_value && i + 1 < args.size()) option_args.push_back(args[++i]);
    }
    const Options options("compare", option_args, kValueOptions, {"--bottom-up"});
    if (files.size() != 2) {
        throw ToolError("compare: expected two files, A and B, not " +
                        std::to_string(files.size()) + " (see cycbcr --help)");
    }
    options.require("--format", "(the format of A, and of B unless --format-b is given)");
    options.require("--size", "(raw frames carry no size)");
    uint32_t width = 0;
    uint32_t height = 0;
    parse_size(*options.value("--size"), width, height);
    const FileFormat format_a = parse_format(*options.value("--format"));
    const FileFormat format_b =
        parse_format(options.value("--format-b").value_or(*options.value("--format")));
    const uint64_t max_diff = parse_max_diff(options.value("--max-diff").value_or("0"));

    // The RGB options describe RGB files, and the matrix the one conversion
    // between RGB and YCbCr.
    if (!format_a.is_rgb() && !format_b.is_rgb() &&
        (options.has("--rgb-type") || options.has("--bottom-up"))) {
        throw ToolError("compare: --rgb-type and --bottom-up describe RGB files only");
    }
    if (options.has("--matrix") && format_a.is_rgb() == format_b.is_rgb()) {
        throw ToolError(
            "compare: --matrix applies only between an RGB file and a YCbCr one, to the "
            "conversion");
    }
    const QBYCBCRRgbType type = format_a.rgb == RgbDepth::Rgb48 || format_b.rgb == RgbDepth::Rgb48
                                    ? rgb_source_type_option(options, RgbDepth::Rgb48, "compare")
                                    : rgb_type_option(options);

    // Files of the same planes (the same names, sizes and depths) are compared
    // as they are, whatever their layout; otherwise B is converted to A's
    // format, or, where the library has no converter that way, A to B's.
    std::unique_ptr<Converter> converter;
    bool convert_b = true;
    if (plane_shapes(format_a, width, height) != plane_shapes(format_b, width, height)) {
        try {
            converter = make_converter(format_b, format_a, width, height, options, type);
        } catch (const ToolError& b_to_a) {
            try {
                converter = make_converter(format_a, format_b, width, height, options, type);
                convert_b = false;
            } catch (const ToolError&) {
                throw ToolError("compare: " + format_a.text + " and " + format_b.text +
                                " cannot be brought to one format: " + b_to_a.what());
            }
        }
    }
    const FileFormat& common = convert_b ? format_a : format_b;
    const FileFormat& converted = convert_b ? format_b : format_a;
    const std::vector<PlaneShape> shapes = plane_shapes(common, width, height);
    const uint64_t bytes_a = file_frame_bytes(format_a, width, height);
    const uint64_t bytes_b = file_frame_bytes(format_b, width, height);
    const std::string size_text = std::to_string(width) + "x" + std::to_string(height);
    if (converter) {
        if (converter->source().size() != (convert_b ? bytes_b : bytes_a)) {
            throw ToolError("compare: a " + size_text + " " + converted.text +
                            " frame is not converted as the file lays it out");
        }
    }

    FrameReader reader_a(files[0], bytes_a, size_text + " " + format_a.text);
    FrameReader reader_b(files[1], bytes_b, size_text + " " + format_b.text);
    if (reader_a.known_frames() != 0 && reader_b.known_frames() != 0 &&
        reader_a.known_frames() != reader_b.known_frames()) {
        throw ToolError("compare: '" + files[0] + "' holds " +
                        std::to_string(reader_a.known_frames()) + " frames and '" + files[1] +
                        "' " + std::to_string(reader_b.known_frames()) +
                        ": the files must hold as many frames");
    }
    if (const std::optional<std::string> level = options.value("--level")) {
        cycbcr_set_cpu(parse_level(*level));
    } else {
        cycbcr_get_cpu(1);
    }

    std::vector<uint8_t> frame_a(converter && !convert_b ? 0 : bytes_a);
    std::vector<uint8_t> frame_b(converter && convert_b ? 0 : bytes_b);
    const std::span<uint8_t> read_a = frame_a.empty() ? converter->source() : frame_a;
    const std::span<uint8_t> read_b = frame_b.empty() ? converter->source() : frame_b;
    const uint64_t common_bytes = file_frame_bytes(common, width, height);
    Planes planes_a(shapes.size()), planes_b(shapes.size());
    for (size_t p = 0; p < shapes.size(); ++p) {
        planes_a[p].resize(size_t{shapes[p].width} * shapes[p].height);
        planes_b[p].resize(planes_a[p].size());
    }

    std::vector<Error> sequence(shapes.size());
    Error sequence_all;
    double min_psnr = INFINITY;
    uint64_t largest = 0;
    uint64_t frames = 0;
    for (;; ++frames) {
        const bool more_a = reader_a.read(read_a);
        const bool more_b = reader_b.read(read_b);
        if (more_a != more_b) {
            throw ToolError("compare: '" + files[more_a ? 1 : 0] + "' has no frame " +
                            std::to_string(frames) + " (frames count from 0), '" +
                            files[more_a ? 0 : 1] + "' has: the files must hold as many frames");
        }
        if (!more_a) break;
        std::span<const uint8_t> common_a = frame_a;
        std::span<const uint8_t> common_b = frame_b;
        if (converter) {
            const std::span<const uint8_t> out = converter->convert();
            if (out.size() != common_bytes) {
                throw ToolError("compare: the conversion from " + converted.text + " to " +
                                common.text + " gave a frame of " + std::to_string(out.size()) +
                                " bytes, not " + std::to_string(common_bytes));
            }
            (convert_b ? common_b : common_a) = out;
        }
        unpack(converter ? common : format_a, type, width, height, common_a, planes_a);
        unpack(converter ? common : format_b, type, width, height, common_b, planes_b);

        std::string line = "frame " + std::to_string(frames) + ":";
        Error all;
        uint64_t frame_largest = 0;
        for (size_t p = 0; p < shapes.size(); ++p) {
            uint64_t squares = 0;
            uint32_t plane_largest = 0;
            const std::vector<uint16_t>& a = planes_a[p];
            const std::vector<uint16_t>& b = planes_b[p];
            for (size_t i = 0; i < a.size(); ++i) {
                const uint32_t d = a[i] > b[i] ? a[i] - b[i] : b[i] - a[i];
                squares += uint64_t{d} * d;
                plane_largest = std::max(plane_largest, d);
            }
            const double peak = static_cast<double>((1u << shapes[p].bits) - 1);
            const Error error{static_cast<double>(squares) / (peak * peak),
                              static_cast<double>(a.size())};
            line += std::string(" ") + shapes[p].name + "=" + psnr_text(error.psnr());
            all.weighted += error.weighted;
            all.samples += error.samples;
            sequence[p].weighted += error.weighted;
            sequence[p].samples += error.samples;
            frame_largest = std::max<uint64_t>(frame_largest, plane_largest);
        }
        sequence_all.weighted += all.weighted;
        sequence_all.samples += all.samples;
        min_psnr = std::min(min_psnr, all.psnr());
        largest = std::max(largest, frame_largest);
        line += " overall=" + psnr_text(all.psnr()) + " max-diff=" + std::to_string(frame_largest);
        std::puts(line.c_str());
    }

    std::string summary = format_a.text + " vs " + format_b.text + " " + size_text;
    if (converter) summary += " (" + converted.text + " converted to " + common.text + ")";
    summary += ": frames=" + std::to_string(frames);
    for (size_t p = 0; p < shapes.size(); ++p) {
        summary += std::string(" ") + shapes[p].name + "=" + psnr_text(sequence[p].psnr());
    }
    summary += " mean=" + psnr_text(sequence_all.psnr()) + " min=" + psnr_text(min_psnr) +
               " max-diff=" + std::to_string(largest);
    std::puts(summary.c_str());
    return largest > max_diff ? 1 : 0;
}

}  // namespace cycbcr_tool
