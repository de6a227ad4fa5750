// The RGB frames and PNG previews the cycbcr command writes, against pictures
// FFmpeg reads from the same input files: every YCbCr format the command reads,
// at odd and even widths and heights, every matrix, depth and RGB layout, at
// several processor levels.
//
// The inputs are random samples (two frames a file). FFmpeg reads them (its
// pixel-format descriptors for the 8-bit formats, its v210 decoder for v210)
// into Y, Cb, Cr per pixel: each pixel pair takes its pair's chroma, and 4:2:0
// rows 2k and 2k + 1 take chroma row k. v210 keeps its 10-bit samples, and its
// odd pixels take the mean (a + b) >> 1 of the pairs on either side, the last
// pixel of a row its own pair, as the library's converters from v210 are
// documented to and the command calls them. Two references are made from
// those samples:
//   - libswscale's conversion to 24-bit RGB, for the full-range matrices
//     (BT.601, BT.709, BT.2020), within 3 per channel: it rounds where the
//     library truncates;
//   - the conversion written out from the published luma weights (Kr, Kb) and
//     the studio ranges (Y 16..235, chroma 16..240), in double precision, for
//     every matrix, within 2 per channel.
// Every other depth and layout is then checked byte for byte against the
// 24-bit R, G, B output of the same conversion, reordered, packed into 15- or
// 16-bit words (top bits of each channel) or turned bottom-up; and the PNG
// files of 'cycbcr preview' are read back with libpng. v210 frames are also
// held byte for byte to the library's converters from v210, called here.
//
// Usage: rgb_frames_test PATH_TO_CYCBCR [gtest arguments]
#include <cycbcr.h>
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/ffmpeg_v210.h"
#include "tool_frames.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace {

using namespace cycbcr_tool_test;

constexpr int kFrames = 2;

// ---------------------------------------------------------------------------
// The formats, and FFmpeg's reading of each.

struct Size {
    uint32_t w, h;
};

// Odd and even widths and heights (48: v210 rows of whole groups that run on
// into the next row); FFmpeg's v210 decoder works in slices of four rows, so
// v210 takes no size below that.
const Size kSizes[] = {{1, 1},  {3, 2},  {1, 5},  {2, 4},  {3, 5},   {17, 4},
                       {17, 5}, {48, 4}, {64, 4}, {64, 5}, {721, 5}, {721, 6}};

bool applies(const Format& f, Size s) {
    return f.kind != Kind::V210 || s.h >= 4;
}

size_t frame_bytes(const Format& f, Size s) {
    return cycbcr_tool_test::frame_bytes(f, s.w, s.h);
}

// One frame as samples of `bits` bits (8, or 10 for v210) for every pixel.
struct Picture {
    uint32_t w = 0, h = 0;
    int bits = 8;
    std::vector<uint16_t> y, cb, cr;
};

// FFmpeg's reading of one frame of the format; an empty picture when FFmpeg
// refuses it.
Picture read_frame(const Format& f, const uint8_t* data, Size s) {
    const uint32_t chroma_w = (s.w + 1) / 2;
    Picture p{s.w, s.h, 8, {}, {}, {}};
    // Chroma samples per chroma row, and which chroma row a picture row takes.
    std::vector<std::vector<uint16_t>> chroma[2];
    std::vector<std::vector<uint16_t>> luma;
    if (f.kind == Kind::V210) {
        using namespace cycbcr_test::ffmpeg_detail;
        auto ctx = open_v210(false, s.w, s.h);
        Av<AVFrame> frame(av_frame_alloc());
        Av<AVPacket> pkt(av_packet_alloc());
        const size_t bytes = frame_bytes(f, s);
        if (!ctx || av_new_packet(pkt.get(), static_cast<int>(bytes)) != 0) return {};
        std::memcpy(pkt->data, data, bytes);
        if (avcodec_send_packet(ctx.get(), pkt.get()) != 0 ||
            avcodec_receive_frame(ctx.get(), frame.get()) != 0 ||
            frame->format != AV_PIX_FMT_YUV422P10)
            return {};
        for (uint32_t r = 0; r < s.h; ++r) {
            for (int c = 0; c < 3; ++c) {
                const auto* row =
                    reinterpret_cast<const uint16_t*>(frame->data[c] + r * frame->linesize[c]);
                auto& rows = c == 0 ? luma : chroma[c - 1];
                rows.emplace_back(row, row + (c == 0 ? s.w : chroma_w));
            }
        }
        p.bits = 10;
    } else {
        std::vector<uint8_t> copy(data, data + frame_bytes(f, s));
        ImageView v = image_view(f, copy.data(), s.w, s.h);
        const uint32_t chroma_rows = f.kind == Kind::Planar420 ? (s.h + 1) / 2 : s.h;
        for (int c = 0; c < 3; ++c) {
            const uint32_t n = c == 0 ? s.w : chroma_w;
            for (uint32_t r = 0; r < (c == 0 ? s.h : chroma_rows); ++r) {
                std::vector<uint16_t> row(n);
                av_read_image_line2(row.data(), const_cast<const uint8_t**>(v.data), v.linesize,
                                    v.desc, 0, static_cast<int>(r), c, static_cast<int>(n), 0, 2);
                (c == 0 ? luma : chroma[c - 1]).push_back(std::move(row));
            }
        }
    }
    for (uint32_t r = 0; r < s.h; ++r) {
        const uint32_t cr_row = f.kind == Kind::Planar420 ? r / 2 : r;
        for (uint32_t x = 0; x < s.w; ++x) {
            p.y.push_back(luma[r][x]);
            for (int c = 0; c < 2; ++c) {
                const std::vector<uint16_t>& row = chroma[c][cr_row];
                const bool between = f.kind == Kind::V210 && x % 2 == 1 && x + 1 < s.w;
                const uint16_t v = between
                                       ? static_cast<uint16_t>((row[x / 2] + row[x / 2 + 1]) >> 1)
                                       : row[x / 2];
                (c == 0 ? p.cb : p.cr).push_back(v);
            }
        }
    }
    return p;
}

// Random frames of the format: any bytes are samples of the 8-bit formats;
// v210 gets random 10-bit samples, three to a word with the top two bits 0.
std::vector<uint8_t> random_frames(const Format& f, Size s, uint32_t seed) {
    std::mt19937 rng(seed);
    const size_t bytes = frame_bytes(f, s);
    std::vector<uint8_t> out;
    for (int n = 0; n < kFrames; ++n) {
        if (f.kind != Kind::V210) {
            for (size_t i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(rng()));
            continue;
        }
        for (size_t i = 0; i < bytes; i += 4) {
            const uint32_t word = rng() & 0x3FFFFFFF;
            for (int b = 0; b < 4; ++b) out.push_back(static_cast<uint8_t>(word >> (8 * b)));
        }
    }
    return out;
}

// ---------------------------------------------------------------------------
// References: R, G, B bytes, rows top first.

// The luma weights of each matrix (0 to 7) and whether RGB stays in the
// studio range (the odd matrices).
struct Weights {
    double kr, kb;
    bool studio;
};

Weights weights(int matrix) {
    const bool studio = matrix % 2 == 1;
    switch (matrix / 2) {
        case 0:
            return {0.299, 0.114, studio};
        case 1:
        case 2:
            return {0.2126, 0.0722, studio};
        default:
            return {0.2627, 0.0593, studio};
    }
}

// The BT.2020 studio-range matrix of the library applies the full-scale
// chroma weights of BT.2020 (2 (1 - Kr) and so on, not scaled by 219 / 224 as
// its other studio-range matrices are): the command passes that on, so the
// reference follows it for matrix 7.
bool full_scale_chroma(int matrix) {
    return matrix == 7;
}

// Studio-range YCbCr to RGB as the standards write it, in double precision:
// full range R = 255/219 (Y - 16) + 255/224 * 2 (1 - Kr) (Cr - 128), ...;
// studio range R = Y + 219/224 * 2 (1 - Kr) (Cr - 128), ...
std::vector<double> model_rgb(const Picture& p, int matrix) {
    const Weights k = weights(matrix);
    const double kg = 1.0 - k.kr - k.kb;
    const double chroma_scale = full_scale_chroma(matrix) ? 1.0
                                : k.studio                ? 219.0 / 224.0
                                                          : 255.0 / 224.0;
    // 10-bit samples are the 8-bit ones times 4.
    const double unit = p.bits == 10 ? 4.0 : 1.0;
    std::vector<double> out;
    for (size_t i = 0; i < p.y.size(); ++i) {
        const double y = p.y[i] / unit;
        const double l = k.studio ? y : (y - 16.0) * 255.0 / 219.0;
        const double u = (p.cb[i] / unit - 128.0) * chroma_scale;
        const double v = (p.cr[i] / unit - 128.0) * chroma_scale;
        const double rgb[3] = {l + 2 * (1 - k.kr) * v,
                               l - 2 * (1 - k.kb) * k.kb / kg * u - 2 * (1 - k.kr) * k.kr / kg * v,
                               l + 2 * (1 - k.kb) * u};
        for (const double c : rgb) out.push_back(std::clamp(c, 0.0, 255.0));
    }
    return out;
}

// The pixels whose exact conversion stays inside the RGB range, with a margin:
// libswscale does not always saturate the others (a blue far above 255 can
// come out as 0), so it is a reference for these only.
std::vector<bool> in_range(const std::vector<double>& exact) {
    std::vector<bool> inside;
    for (size_t i = 0; i < exact.size(); i += 3) {
        bool ok = true;
        for (size_t c = 0; c < 3; ++c) ok = ok && exact[i + c] >= 4.0 && exact[i + c] <= 251.0;
        inside.push_back(ok);
    }
    return inside;
}

// libswscale's conversion of the samples (as 4:4:4, so that it does no chroma
// filtering of its own) to full-range RGB24. Empty for the studio-range
// matrices, which it does not write.
std::vector<uint8_t> swscale_rgb(const Picture& p, int matrix) {
    if (matrix % 2 == 1) return {};
    const int cs = matrix < 2 ? SWS_CS_ITU601 : matrix < 6 ? SWS_CS_ITU709 : SWS_CS_BT2020;
    const int w = static_cast<int>(p.w), h = static_cast<int>(p.h);
    const bool ten = p.bits == 10;
    SwsContext* ctx = sws_getContext(
        w, h, ten ? AV_PIX_FMT_YUV444P10LE : AV_PIX_FMT_YUV444P, w, h, AV_PIX_FMT_RGB24,
        SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr);
    if (ctx == nullptr) return {};
    int* inv_table = nullptr;
    int* table = nullptr;
    int src_range = 0, dst_range = 0, brightness = 0, contrast = 0, saturation = 0;
    sws_getColorspaceDetails(ctx, &inv_table, &src_range, &table, &dst_range, &brightness,
                             &contrast, &saturation);
    sws_setColorspaceDetails(ctx, sws_getCoefficients(cs), 0, table, 1, brightness, contrast,
                             saturation);
    // 8-bit planes of bytes, 10-bit ones of native (little-endian) words.
    std::vector<uint8_t> planes[3];
    const std::vector<uint16_t>* samples[3] = {&p.y, &p.cb, &p.cr};
    const uint8_t* src[3] = {};
    for (int c = 0; c < 3; ++c) {
        if (ten) {
            src[c] = reinterpret_cast<const uint8_t*>(samples[c]->data());
        } else {
            planes[c].assign(samples[c]->begin(), samples[c]->end());
            src[c] = planes[c].data();
        }
    }
    const int src_stride[3] = {ten ? 2 * w : w, ten ? 2 * w : w, ten ? 2 * w : w};
    std::vector<uint8_t> out(size_t{p.w} * p.h * 3);
    uint8_t* dst[1] = {out.data()};
    const int dst_stride[1] = {3 * w};
    const int rows = sws_scale(ctx, src, src_stride, 0, h, dst, dst_stride);
    sws_freeContext(ctx);
    if (rows != h) return {};
    return out;
}

// "" when every channel is within tolerance of the reference, else the count
// and the first channel that is not. With `only`, just the pixels it marks.
template <class T>
std::string within(const std::vector<uint8_t>& got, const std::vector<T>& want, double tolerance,
                   uint32_t w, const std::vector<bool>* only = nullptr) {
    if (got.size() != want.size()) {
        return std::to_string(got.size()) + " bytes instead of " + std::to_string(want.size());
    }
    size_t wrong = 0;
    std::string first;
    for (size_t i = 0; i < got.size(); ++i) {
        if (only != nullptr && !(*only)[i / 3]) continue;
        const double d = std::fabs(static_cast<double>(got[i]) - static_cast<double>(want[i]));
        if (d <= tolerance) continue;
        if (wrong++ == 0) {
            const size_t pixel = i / 3;
            first = "row " + std::to_string(pixel / w) + " pixel " + std::to_string(pixel % w) +
                    " channel " + "RGB"[i % 3] + ": " + std::to_string(got[i]) + " for " +
                    std::to_string(static_cast<double>(want[i]));
        }
    }
    return wrong == 0 ? "" : std::to_string(wrong) + " channels off, first " + first;
}

// ---------------------------------------------------------------------------
// The layouts, made from R, G, B bytes as the command documents them.

enum class Depth { Rgb555, Rgb565, Rgb24, Rgb32 };

const char* depth_name(Depth d) {
    switch (d) {
        case Depth::Rgb555:
            return "rgb555";
        case Depth::Rgb565:
            return "rgb565";
        case Depth::Rgb24:
            return "rgb24";
        case Depth::Rgb32:
            return "rgb32";
    }
    return "?";
}

size_t pixel_bytes(Depth d) {
    return d == Depth::Rgb24 ? 3 : d == Depth::Rgb32 ? 4 : 2;
}

// One frame of R, G, B rows (top first) in a depth and layout: 0 bgra, 1 abgr,
// 2 rgba, 3 argb, plus 0x8000 for the last row first.
std::vector<uint8_t> lay_out(const uint8_t* rgb, Size s, Depth d, uint32_t type) {
    const uint32_t layout = type & 0x7FFF;
    const bool blue_first = layout == 0 || layout == 1;
    const bool alpha_first = layout == 1 || layout == 3;
    std::vector<uint8_t> out;
    for (uint32_t row = 0; row < s.h; ++row) {
        const uint32_t from = (type & 0x8000) != 0 ? s.h - 1 - row : row;
        for (uint32_t x = 0; x < s.w; ++x) {
            const uint8_t* px = rgb + (size_t{from} * s.w + x) * 3;
            const uint8_t first = blue_first ? px[2] : px[0];
            const uint8_t last = blue_first ? px[0] : px[2];
            switch (d) {
                case Depth::Rgb555:
                case Depth::Rgb565: {
                    const uint32_t word = d == Depth::Rgb555
                                              ? (first >> 3) << 10 | (px[1] >> 3) << 5 | last >> 3
                                              : (first >> 3) << 11 | (px[1] >> 2) << 5 | last >> 3;
                    out.push_back(static_cast<uint8_t>(word));
                    out.push_back(static_cast<uint8_t>(word >> 8));
                    break;
                }
                case Depth::Rgb24:
                    out.insert(out.end(), {first, px[1], last});
                    break;
                case Depth::Rgb32:
                    if (alpha_first) out.push_back(255);
                    out.insert(out.end(), {first, px[1], last});
                    if (!alpha_first) out.push_back(255);
                    break;
            }
        }
    }
    return out;
}

// The R, G, B bytes a preview shows of a frame in a depth and layout: 5- and
// 6-bit channels widened by repeating their top bits.
std::vector<uint8_t> shown(const uint8_t* rgb, Size s, Depth d) {
    std::vector<uint8_t> out(rgb, rgb + size_t{s.w} * s.h * 3);
    if (d == Depth::Rgb24 || d == Depth::Rgb32) return out;
    for (size_t i = 0; i < out.size(); ++i) {
        const int bits = d == Depth::Rgb565 && i % 3 == 1 ? 6 : 5;
        const uint32_t v = out[i] >> (8 - bits);
        out[i] = static_cast<uint8_t>(v << (8 - bits) | v >> (2 * bits - 8));
    }
    return out;
}

// ---------------------------------------------------------------------------
// Files and the command.

std::string size_text(Size s) {
    return std::to_string(s.w) + "x" + std::to_string(s.h);
}

// The command's conversion of the input file; empty with a test failure when
// it fails.
std::vector<uint8_t> convert(const Format& f, Size s, const std::filesystem::path& in, Depth d,
                             const std::vector<std::string>& options) {
    const std::filesystem::path out = g_dir / "out.rgb";
    std::vector<std::string> args = {"convert",     "--from", f.name,       "--to",
                                     depth_name(d), "--size", size_text(s), "--in",
                                     in.string(),   "--out",  out.string()};
    args.insert(args.end(), options.begin(), options.end());
    std::string said = run_tool(args);
    if (!said.empty()) {
        ADD_FAILURE() << said;
        return {};
    }
    std::vector<uint8_t> bytes = read_file(out);
    EXPECT_EQ(bytes.size(), kFrames * size_t{s.w} * s.h * pixel_bytes(d));
    return bytes;
}

// A PNG file as libpng reads it: R, G, B rows, or empty when it is not an
// 8-bit RGB PNG of the size.
std::vector<uint8_t> read_png(const std::filesystem::path& path, Size s) {
    const std::vector<uint8_t> file = read_file(path);
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return {};
    const bool rgb8 = image.format == PNG_FORMAT_RGB && image.width == s.w && image.height == s.h;
    std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(image));
    if (!rgb8 || !png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) {
        png_image_free(&image);
        return {};
    }
    return pixels;
}

// ---------------------------------------------------------------------------

class RgbFrames : public testing::TestWithParam<const Format*> {};

TEST_P(RgbFrames, MatchFfmpegAndEveryLayout) {
    const Format& f = *GetParam();
    uint32_t seed = 1;
    size_t swscale_pixels = 0;
    for (const Size s : kSizes) {
        ++seed;
        if (!applies(f, s)) continue;
        SCOPED_TRACE(std::string(f.name) + " " + size_text(s));
        const std::vector<uint8_t> input = random_frames(f, s, seed);
        const std::filesystem::path in = g_dir / (std::string(f.name) + ".in");
        write_file(in, input);
        const size_t frame = frame_bytes(f, s);
        std::vector<Picture> pictures;
        for (int n = 0; n < kFrames; ++n) {
            pictures.push_back(read_frame(f, input.data() + n * frame, s));
            ASSERT_EQ(pictures.back().y.size(), size_t{s.w} * s.h) << "FFmpeg read no frame";
        }
        const size_t rgb_frame = size_t{s.w} * s.h * 3;

        // R, G, B bytes for every matrix, at the level the command chooses.
        std::vector<std::vector<uint8_t>> base(8);
        for (int m = 0; m < 8; ++m) {
            SCOPED_TRACE("matrix " + std::to_string(m));
            base[m] = convert(f, s, in, Depth::Rgb24,
                              {"--matrix", std::to_string(m), "--rgb-type", "rgba"});
            if (base[m].size() != kFrames * rgb_frame) return;
            for (int n = 0; n < kFrames; ++n) {
                const std::vector<uint8_t> got(base[m].begin() + n * rgb_frame,
                                               base[m].begin() + (n + 1) * rgb_frame);
                const std::vector<double> exact = model_rgb(pictures[n], m);
                EXPECT_EQ(within(got, exact, 2.0, s.w), "")
                    << "frame " << n << " against the standards";
                const std::vector<uint8_t> sws = swscale_rgb(pictures[n], m);
                if (m % 2 == 0) {
                    ASSERT_FALSE(sws.empty()) << "libswscale converted nothing";
                    const std::vector<bool> inside = in_range(exact);
                    EXPECT_EQ(within(got, sws, 3.0, s.w, &inside), "")
                        << "frame " << n << " against libswscale";
                    swscale_pixels +=
                        static_cast<size_t>(std::count(inside.begin(), inside.end(), true));
                }
            }
        }
        // Matrix names reach the same conversions as their numbers.
        EXPECT_EQ(convert(f, s, in, Depth::Rgb24, {"--matrix", "709-studio", "--rgb-type", "2"}),
                  base[3]);
        EXPECT_EQ(convert(f, s, in, Depth::Rgb24, {"--matrix", "2020", "--rgb-type", "RGBA"}),
                  base[6]);

        // Every depth and layout from the same conversion, as the option
        // spellings give them.
        struct Variant {
            Depth depth;
            uint32_t type;
            std::vector<std::string> options;
            int matrix;
        };
        const std::vector<Variant> variants = {
            {Depth::Rgb24, 0, {}, 0},
            {Depth::Rgb24, 0x8000, {"--bottom-up"}, 0},
            {Depth::Rgb24, 0x8002, {"--rgb-type", "rgba,bottom-up", "--matrix", "709-precise"}, 4},
            {Depth::Rgb32, 0, {}, 0},
            {Depth::Rgb32, 1, {"--rgb-type", "abgr"}, 0},
            {Depth::Rgb32, 2, {"--rgb-type", "2", "--matrix", "2020"}, 6},
            {Depth::Rgb32, 3, {"--rgb-type", "argb", "--matrix", "1"}, 1},
            {Depth::Rgb32, 0x8000, {"--rgb-type", "0x8000"}, 0},
            {Depth::Rgb32, 0x8003, {"--rgb-type", "argb", "--bottom-up", "--matrix", "3"}, 3},
            {Depth::Rgb555, 0, {}, 0},
            {Depth::Rgb555, 2, {"--rgb-type", "rgba", "--matrix", "709"}, 2},
            {Depth::Rgb555, 0x8001, {"--rgb-type", "abgr,bottom-up"}, 0},
            {Depth::Rgb565, 0, {"--matrix", "7"}, 7},
            {Depth::Rgb565, 3, {"--rgb-type", "3"}, 0},
            {Depth::Rgb565, 0x8002, {"--rgb-type", "0x8002", "--matrix", "5"}, 5},
        };
        for (const Variant& v : variants) {
            std::string what = std::string(depth_name(v.depth)) + " type " + std::to_string(v.type);
            for (const std::string& o : v.options) what += " " + o;
            SCOPED_TRACE(what);
            std::vector<uint8_t> want;
            for (int n = 0; n < kFrames; ++n) {
                const std::vector<uint8_t> one =
                    lay_out(base[v.matrix].data() + n * rgb_frame, s, v.depth, v.type);
                want.insert(want.end(), one.begin(), one.end());
            }
            EXPECT_EQ(convert(f, s, in, v.depth, v.options), want);
        }

        // The levels with the library's other routes (image-library paths at 1
        // to 4 and 6, the plain engine at 0) give the same pictures.
        for (const char* level : {"0", "1", "4", "6"}) {
            SCOPED_TRACE(std::string("level ") + level);
            EXPECT_EQ(convert(f, s, in, Depth::Rgb24, {"--rgb-type", "rgba", "--level", level}),
                      base[0]);
            for (const int m : {0, 3, 6}) {
                for (const uint32_t type : {0u, 3u}) {
                    std::vector<uint8_t> want;
                    for (int n = 0; n < kFrames; ++n) {
                        const std::vector<uint8_t> one =
                            lay_out(base[m].data() + n * rgb_frame, s, Depth::Rgb32, type);
                        want.insert(want.end(), one.begin(), one.end());
                    }
                    EXPECT_EQ(convert(f, s, in, Depth::Rgb32,
                                      {"--matrix", std::to_string(m), "--rgb-type",
                                       std::to_string(type), "--level", level}),
                              want)
                        << "matrix " << m << " type " << type;
                }
            }
            std::vector<uint8_t> want;
            for (int n = 0; n < kFrames; ++n) {
                const std::vector<uint8_t> one =
                    lay_out(base[0].data() + n * rgb_frame, s, Depth::Rgb24, 0);
                want.insert(want.end(), one.begin(), one.end());
            }
            EXPECT_EQ(convert(f, s, in, Depth::Rgb24, {"--level", level}), want);
        }

        // The preview of the second frame is its R, G, B picture; so is the
        // preview of an RGB file the command wrote, in the layout given.
        const std::filesystem::path png = g_dir / "preview.png";
        ASSERT_EQ(run_tool({"preview", "--from", f.name, "--size", size_text(s), "--in",
                            in.string(), "--frame", "1", "--matrix", "709", "--out", png.string()}),
                  "");
        const std::vector<uint8_t> frame1(base[2].begin() + rgb_frame, base[2].end());
        EXPECT_EQ(read_png(png, s), frame1) << "preview of " << f.name;
        for (const Depth d : {Depth::Rgb555, Depth::Rgb565, Depth::Rgb24, Depth::Rgb32}) {
            for (const char* type : {"bgra", "argb,bottom-up"}) {
                SCOPED_TRACE(std::string("preview of ") + depth_name(d) + " " + type);
                const std::vector<uint8_t> rgb =
                    convert(f, s, in, d, {"--matrix", "709", "--rgb-type", type});
                const std::filesystem::path rgb_file = g_dir / "frames.rgb";
                write_file(rgb_file, rgb);
                ASSERT_EQ(run_tool({"preview", "--from", depth_name(d), "--rgb-type", type,
                                    "--size", size_text(s), "--in", rgb_file.string(), "--frame",
                                    "1", "--out", png.string()}),
                          "");
                EXPECT_EQ(read_png(png, s), shown(frame1.data(), s, d));
            }
        }
    }
    // Random samples leave the RGB range often; enough stay inside it for
    // libswscale to have checked every format.
    EXPECT_GT(swscale_pixels, 500u);
}

// v210 to every depth is the picture of the library's converter of the depth
// (cycbcr_012v_to_rgb555/565/24/32) called here on the same frames at the
// same level, rows at the natural v210 pitch; rows of whole groups are given
// 16 more bytes whose first word holds their last pair (Cb4, Cr4), which the
// converter reads for the row's last pixel: the rule the command documents.
TEST(V210ToRgb, IsTheLibrarysConverter) {
    const Format& f = kFormats[std::size(kFormats) - 1];
    ASSERT_EQ(f.kind, Kind::V210);
    const struct {
        Depth depth;
        cycbcr_rgb_converter convert;
    } depths[] = {{Depth::Rgb555, cycbcr_012v_to_rgb555},
                  {Depth::Rgb565, cycbcr_012v_to_rgb565},
                  {Depth::Rgb24, cycbcr_012v_to_rgb24},
                  {Depth::Rgb32, cycbcr_012v_to_rgb32}};
    const unsigned int chosen = cycbcr_get_cpu(1);
    for (const Size s : {Size{6, 2}, Size{17, 3}, Size{48, 2}, Size{64, 1}, Size{1, 1}}) {
        const std::vector<uint8_t> input = random_frames(f, s, 99 + s.w);
        const std::filesystem::path in = g_dir / "v210.in";
        write_file(in, input);
        const size_t frame = frame_bytes(f, s);
        const uint32_t file_pitch = static_cast<uint32_t>(frame / s.h);
        const uint32_t groups = s.w / 6;
        const uint32_t pitch = file_pitch + (s.w % 6 == 0 ? 16 : 0);
        for (const unsigned int level : {chosen, 0u}) {
            for (const auto& d : depths) {
                for (const auto& [type, matrix] : {std::pair{0u, 0u}, {0x8003u, 5u}, {2u, 7u}}) {
                    SCOPED_TRACE(std::string(depth_name(d.depth)) + " " + size_text(s) + " level " +
                                 std::to_string(level) + " type " + std::to_string(type) +
                                 " matrix " + std::to_string(matrix));
                    cycbcr_set_cpu(level);
                    const size_t out_bytes = size_t{s.w} * s.h * pixel_bytes(d.depth);
                    std::vector<uint8_t> want;
                    for (int n = 0; n < kFrames; ++n) {
                        std::vector<uint8_t> src(size_t{pitch} * s.h + 64);
                        for (uint32_t r = 0; r < s.h; ++r) {
                            const uint8_t* row = input.data() + n * frame + size_t{r} * file_pitch;
                            uint8_t* to = src.data() + size_t{r} * pitch;
                            std::memcpy(to, row, file_pitch);
                            if (s.w % 6 != 0) continue;
                            uint32_t w2 = 0, w3 = 0;
                            std::memcpy(&w2, to + 16 * groups - 8, 4);
                            std::memcpy(&w3, to + 16 * groups - 4, 4);
                            const uint32_t word = (w2 >> 20 & 0x3FF) | (w3 >> 10 & 0x3FF) << 20;
                            std::memcpy(to + 16 * groups, &word, 4);
                        }
                        std::vector<uint8_t> dst(out_bytes + 64);
                        d.convert(dst.data(), src.data(), s.w, s.h,
                                  static_cast<uint32_t>(out_bytes / s.h), pitch, matrix, type);
                        want.insert(want.end(), dst.begin(), dst.begin() + out_bytes);
                    }
                    EXPECT_EQ(convert(f, s, in, d.depth,
                                      {"--matrix", std::to_string(matrix), "--rgb-type",
                                       std::to_string(type), "--level", std::to_string(level)}),
                              want);
                }
            }
        }
    }
    cycbcr_set_cpu(chosen);
}

std::string format_name(const testing::TestParamInfo<const Format*>& info) {
    return info.param->name;
}

std::vector<const Format*> all_formats() {
    std::vector<const Format*> formats;
    for (const Format& f : kFormats) formats.push_back(&f);
    return formats;
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RgbFrames, testing::ValuesIn(all_formats()), format_name);

}  // namespace

int main(int argc, char** argv) {
    return tool_test_main(argc, argv, "cycbcr-rgb");
}
