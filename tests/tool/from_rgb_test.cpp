// The YCbCr frames the cycbcr command writes from RGB sources (rgb24, rgb32,
// rgb48, rgb64, rgb32f; rgb10 to v210 only), in every 8-bit YCbCr format and
// v210, layout and bottom-up order, held to two references:
//   - the library's own converter for the route the command documents,
//     called here on the same frames at the same processor level: the bytes
//     must be the same (rgb24 through cycbcr_RGB24_to_*, rgb32 through
//     cycbcr_transcode, rgb48/rgb64 through cycbcr_RGB64_to_uyvy or _to_p422,
//     rgb32f through cycbcr_RGB32F_to_uyvy); the formats reached from UYVY
//     must be the command's own conversion of its UYVY frame; v210 frames
//     must be those of cycbcr_RGB24_to_012v, cycbcr_RGB32_to_012v,
//     cycbcr_RGB64_to_012v, cycbcr_RGB10_to_012v, or for rgb32f
//     cycbcr_RGB32F_to_uyvy and cycbcr_uyvy_to_012v;
//   - the conversion written out from the published luma weights, for frames
//     of 2x2 blocks of one colour (so that no chroma siting or averaging rule
//     matters), the output read back by FFmpeg: within 2 of each sample; for
//     v210, blocks of 12x2 pixels (chroma compared where the chroma filter's
//     four pixels lie in one block) within 3 of each 10-bit sample (more for
//     the 10-bit, 16-bit and float sources, by their scale).
//
// Usage: from_rgb_test PATH_TO_CYCBCR [gtest arguments]
#include <cycbcr.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/ffmpeg_v210.h"
#include "tool_frames.h"

namespace {

using namespace cycbcr_tool_test;

constexpr int kFrames = 2;

struct Depth {
    const char* name;
    uint32_t bytes;         // per pixel
    bool packed10 = false;  // rgb10: one 32-bit word of 10-bit channels
};

const Depth kDepths[] = {{"rgb24", 3}, {"rgb32", 4}, {"rgb48", 6}, {"rgb64", 8}, {"rgb32f", 16}};
// The sources of v210: those above and rgb10.
const Depth kV210Depths[] = {{"rgb24", 3}, {"rgb32", 4},   {"rgb48", 6},
                             {"rgb64", 8}, {"rgb32f", 16}, {"rgb10", 4, true}};

// The 8-bit YCbCr formats (every format of tool_frames.h but v210).
std::vector<const Format*> eight_bit_formats() {
    std::vector<const Format*> out;
    for (const Format& f : kFormats) {
        if (f.kind != Kind::V210) out.push_back(&f);
    }
    return out;
}

uint32_t fourcc(const char* name) {
    return CYCBCR_FOURCC(name[0], name[1], name[2], name[3]);
}

bool is_420(const Format& f) {
    return f.kind == Kind::Planar420;
}

// ---------------------------------------------------------------------------
// RGB frames: each pixel's R, G, B as the file holds them (8-bit, 16-bit or
// float), and the 0..255 value each stands for.

struct Pixel {
    double r, g, b;   // 0..255
    uint32_t raw[4];  // R, G, B, A as stored (floats by their bits)
};

// Random pixels, in blocks of block_w x 2 pixels of one colour when block_w
// is above 1.
std::vector<Pixel> random_pixels(const Depth& d, uint32_t w, uint32_t h, std::mt19937& rng,
                                 uint32_t block_w) {
    std::vector<Pixel> out(size_t{w} * h);
    std::uniform_real_distribution<float> unit(-0.05f, 1.05f);
    for (uint32_t y = 0; y < h; ++y) {
        for (uint32_t x = 0; x < w; ++x) {
            Pixel& p = out[size_t{y} * w + x];
            if (block_w > 1 && (x % block_w != 0 || y % 2 != 0)) {
                p = out[size_t{y - y % 2} * w + (x - x % block_w)];
                continue;
            }
            double* value[3] = {&p.r, &p.g, &p.b};
            for (int c = 0; c < 4; ++c) {
                if (std::string(d.name) == "rgb32f") {
                    const float f = unit(rng);
                    std::memcpy(&p.raw[c], &f, 4);
                    if (c < 3) *value[c] = std::clamp(static_cast<double>(f), 0.0, 1.0) * 255.0;
                } else if (d.packed10) {
                    p.raw[c] = rng() & 0x3FF;
                    if (c < 3) *value[c] = p.raw[c] * 255.0 / 1023.0;
                } else if (d.bytes >= 6) {
                    p.raw[c] = rng() & 0xFFFF;
                    if (c < 3) *value[c] = p.raw[c] / 257.0;
                } else {
                    p.raw[c] = rng() & 0xFF;
                    if (c < 3) *value[c] = p.raw[c];
                }
            }
        }
    }
    return out;
}

// The frame as the command reads it: layout 0 B G R A, 1 A B G R, 2 R G B A,
// 3 A R G B (24 and 48 bits: B G R for 0 and 1, R G B for 2 and 3; rgb10: R
// in bits 22-31 and B in 2-11 for 2 and 3, the other way round for 0 and 1,
// G in 12-21, the unused bits 0-1 random), plus 0x8000 for the last picture
// row first.
std::vector<uint8_t> lay_out(const Depth& d, const std::vector<Pixel>& pixels, uint32_t w,
                             uint32_t h, uint32_t type) {
    const uint32_t layout = type & 0x7FFF;
    if (d.packed10) {
        std::vector<uint8_t> out;
        for (uint32_t row = 0; row < h; ++row) {
            const uint32_t from = (type & 0x8000) != 0 ? h - 1 - row : row;
            for (uint32_t x = 0; x < w; ++x) {
                const Pixel& p = pixels[size_t{from} * w + x];
                const uint32_t top = layout >= 2 ? p.raw[0] : p.raw[2];
                const uint32_t low = layout >= 2 ? p.raw[2] : p.raw[0];
                const uint32_t word = top << 22 | p.raw[1] << 12 | low << 2 | (p.raw[3] & 3);
                for (int b = 0; b < 4; ++b) out.push_back(static_cast<uint8_t>(word >> 8 * b));
            }
        }
        return out;
    }
    const bool three = d.bytes == 3 || d.bytes == 6;
    const int word = d.bytes == 3 || d.bytes == 4 ? 1 : d.bytes == 16 ? 4 : 2;
    std::vector<int> order;  // channel per slot: 0 R, 1 G, 2 B, 3 A
    if (three) {
        order = layout >= 2 ? std::vector<int>{0, 1, 2} : std::vector<int>{2, 1, 0};
    } else {
        const std::vector<int> orders[4] = {{2, 1, 0, 3}, {3, 2, 1, 0}, {0, 1, 2, 3}, {3, 0, 1, 2}};
        order = orders[layout];
    }
    std::vector<uint8_t> out;
    for (uint32_t row = 0; row < h; ++row) {
        const uint32_t from = (type & 0x8000) != 0 ? h - 1 - row : row;
        for (uint32_t x = 0; x < w; ++x) {
            const Pixel& p = pixels[size_t{from} * w + x];
            for (const int c : order) {
                for (int b = 0; b < word; ++b)
                    out.push_back(static_cast<uint8_t>(p.raw[c] >> 8 * b));
            }
        }
    }
    return out;
}

// ---------------------------------------------------------------------------
// The standards' conversion, and FFmpeg's reading of the command's output.

struct Samples {
    std::vector<double> y, cb, cr;  // per pixel
};

// Full-range RGB (matrices 0, 2) or RGB kept in 16..235 (1, 3) to studio-range
// YCbCr with the BT.601 or BT.709 luma weights.
Samples model(const std::vector<Pixel>& pixels, int matrix) {
    const double kr = matrix < 2 ? 0.299 : 0.2126;
    const double kb = matrix < 2 ? 0.114 : 0.0722;
    const bool studio = matrix % 2 == 1;
    Samples s;
    for (const Pixel& p : pixels) {
        const double l = kr * p.r + (1 - kr - kb) * p.g + kb * p.b;
        const double scale = studio ? 224.0 / 219.0 : 224.0 / 255.0;
        s.y.push_back(std::clamp(studio ? l : 16.0 + l * 219.0 / 255.0, 0.0, 255.0));
        s.cb.push_back(std::clamp(128.0 + scale * (p.b - l) / (2 * (1 - kb)), 0.0, 255.0));
        s.cr.push_back(std::clamp(128.0 + scale * (p.r - l) / (2 * (1 - kr)), 0.0, 255.0));
    }
    return s;
}

Samples read_ycbcr(const Format& f, std::vector<uint8_t> frame, uint32_t w, uint32_t h) {
    ImageView v = image_view(f, frame.data(), w, h);
    Samples s;
    std::vector<uint16_t> row(w);
    for (uint32_t r = 0; r < h; ++r) {
        for (int c = 0; c < 3; ++c) {
            const uint32_t n = c == 0 ? w : w / 2;
            const uint32_t line = c != 0 && is_420(f) ? r / 2 : r;
            av_read_image_line2(row.data(), const_cast<const uint8_t**>(v.data), v.linesize, v.desc,
                                0, static_cast<int>(line), c, static_cast<int>(n), 0, 2);
            std::vector<double>& out = c == 0 ? s.y : c == 1 ? s.cb : s.cr;
            for (uint32_t x = 0; x < w; ++x) out.push_back(row[c == 0 ? x : x / 2]);
        }
    }
    return s;
}

std::string within(const Samples& got, const Samples& want, double tolerance, uint32_t w) {
    size_t wrong = 0;
    std::string first;
    const std::vector<double>* g[3] = {&got.y, &got.cb, &got.cr};
    const std::vector<double>* e[3] = {&want.y, &want.cb, &want.cr};
    for (int c = 0; c < 3; ++c) {
        if (g[c]->size() != e[c]->size()) return "sizes differ";
        for (size_t i = 0; i < g[c]->size(); ++i) {
            if (std::fabs((*g[c])[i] - (*e[c])[i]) <= tolerance) continue;
            if (wrong++ == 0) {
                const char* sample[3] = {"Y", "Cb", "Cr"};
                first = std::string(sample[c]) + " at row " + std::to_string(i / w) + " pixel " +
                        std::to_string(i % w) + ": " + std::to_string((*g[c])[i]) + " for " +
                        std::to_string((*e[c])[i]);
            }
        }
    }
    return wrong == 0 ? "" : std::to_string(wrong) + " samples off, first " + first;
}

// ---------------------------------------------------------------------------
// The command, and the library's converters called here.

std::string size_text(uint32_t w, uint32_t h) {
    return std::to_string(w) + "x" + std::to_string(h);
}

std::vector<uint8_t> run_convert(const std::string& from, const std::string& to, uint32_t w,
                                 uint32_t h, const std::vector<uint8_t>& input,
                                 const std::vector<std::string>& options) {
    const std::filesystem::path in = g_dir / "in.raw";
    const std::filesystem::path out = g_dir / "out.raw";
    write_file(in, input);
    std::filesystem::remove(out);
    std::vector<std::string> args = {"convert",   "--from",        from,   "--to",      to,
                                     "--size",    size_text(w, h), "--in", in.string(), "--out",
                                     out.string()};
    args.insert(args.end(), options.begin(), options.end());
    const std::string said = run_tool(args);
    if (!said.empty()) {
        ADD_FAILURE() << said;
        return {};
    }
    return read_file(out);
}

// The library's conversion of one frame by the command's documented route
// (formats reached from UYVY excepted); empty for those.
std::vector<uint8_t> library_frame(const Depth& d, const Format& f, const uint8_t* frame,
                                   uint32_t w, uint32_t h, uint32_t matrix, uint32_t type) {
    const std::string depth = d.name;
    const std::string name = f.name;
    const bool packed = f.kind == Kind::Packed;
    const uint32_t dst_pitch = packed ? 2 * w : w;
    const uint32_t src_pitch = w * d.bytes;
    const size_t out_bytes = frame_bytes(f, w, h);
    // Generous room past both frames: what lies there is not compared.
    std::vector<uint8_t> src(frame, frame + size_t{src_pitch} * h);
    src.resize(src.size() + 4096);
    std::vector<uint8_t> dst(out_bytes + 4096);
    if (depth == "rgb24") {
        using Fn = cycbcr_from_rgb_converter;
        const Fn fns[] = {cycbcr_RGB24_to_uyvy, cycbcr_RGB24_to_yuy2, cycbcr_RGB24_to_yvyu,
                          cycbcr_RGB24_to_cyuv, cycbcr_RGB24_to_i420, cycbcr_RGB24_to_yv12,
                          cycbcr_RGB24_to_p422};
        const char* names[] = {"UYVY", "YUY2", "YVYU", "cyuv", "I420", "YV12", "P422"};
        for (size_t i = 0; i < 7; ++i) {
            if (name == names[i])
                fns[i](dst.data(), src.data(), w, h, dst_pitch, src_pitch, matrix, type);
        }
    } else if (depth == "rgb32") {
        EXPECT_NE(cycbcr_transcode(dst.data(), src.data(), w, h, dst_pitch, src_pitch, matrix, type,
                                   fourcc(f.name), 0),
                  0u);
    } else if (name == "UYVY" && depth == "rgb32f") {
        cycbcr_RGB32F_to_uyvy(dst.data(), src.data(), w, h, dst_pitch, src_pitch, matrix, type);
    } else if (name == "UYVY") {
        cycbcr_RGB64_to_uyvy(dst.data(), src.data(), w, h, dst_pitch, src_pitch, matrix, type,
                             d.bytes * 8);
    } else if (name == "P422" && depth != "rgb32f") {
        cycbcr_RGB64_to_p422(dst.data(), src.data(), w, h, dst_pitch, src_pitch, matrix, type);
    } else {
        return {};
    }
    dst.resize(out_bytes);
    return dst;
}

struct Size {
    uint32_t w, h;
};

// An even width that is no multiple of 8 (the AVX2 engine's tail), and the
// smallest frame.
const Size kSizes[] = {{34, 6}, {2, 2}};

class FromRgb : public testing::TestWithParam<const Depth*> {};

TEST_P(FromRgb, MatchesTheLibraryAndTheStandards) {
    const Depth& d = *GetParam();
    const bool has_alpha_slot = d.bytes != 3 && d.bytes != 6;
    // Layouts (alpha-first ones where the pixel has alpha), bottom-up too,
    // with matrices by number and name.
    struct Variant {
        uint32_t type;
        uint32_t matrix;
        std::vector<std::string> options;
    };
    std::vector<Variant> variants = {
        {0, 0, {}},
        {2, 5, {"--rgb-type", "rgba", "--matrix", "709-precise-studio"}},
        {0x8002, 9, {"--rgb-type", "rgba", "--bottom-up", "--matrix", "extra-9"}},
        {0x8000, 10, {"--rgb-type", "0x8000", "--matrix", "10"}},
    };
    if (has_alpha_slot) {
        variants.push_back({1, 2, {"--rgb-type", "abgr", "--matrix", "709"}});
        variants.push_back({0x8003, 0, {"--rgb-type", "argb,bottom-up"}});
    }
    // The chosen level, the plain engine and one with the image-library
    // paths.
    const unsigned int chosen = cycbcr_get_cpu(1);
    std::mt19937 rng(7 + d.bytes);
    for (const Size s : kSizes) {
        std::vector<std::vector<Pixel>> frames;
        for (int n = 0; n < kFrames; ++n) frames.push_back(random_pixels(d, s.w, s.h, rng, 1));
        for (const unsigned int level : {chosen, 0u, 1u}) {
            cycbcr_set_cpu(level);
            for (const Variant& v : variants) {
                std::vector<uint8_t> input;
                for (const auto& px : frames) {
                    const std::vector<uint8_t> one = lay_out(d, px, s.w, s.h, v.type);
                    input.insert(input.end(), one.begin(), one.end());
                }
                std::vector<std::string> options = v.options;
                options.insert(options.end(), {"--level", std::to_string(level)});
                const std::vector<uint8_t> uyvy =
                    run_convert(d.name, "UYVY", s.w, s.h, input, options);
                for (const Format* f : eight_bit_formats()) {
                    SCOPED_TRACE(std::string(d.name) + " to " + f->name + " " +
                                 size_text(s.w, s.h) + " level " + std::to_string(level) +
                                 " type " + std::to_string(v.type) + " matrix " +
                                 std::to_string(v.matrix));
                    const std::vector<uint8_t> got =
                        f->name == std::string("UYVY")
                            ? uyvy
                            : run_convert(d.name, f->name, s.w, s.h, input, options);
                    const size_t one = frame_bytes(*f, s.w, s.h);
                    ASSERT_EQ(got.size(), kFrames * one);
                    std::vector<uint8_t> want;
                    const size_t src_frame = input.size() / kFrames;
                    for (int n = 0; n < kFrames; ++n) {
                        const std::vector<uint8_t> lib = library_frame(
                            d, *f, input.data() + n * src_frame, s.w, s.h, v.matrix, v.type);
                        want.insert(want.end(), lib.begin(), lib.end());
                    }
                    if (want.empty()) {
                        // Reached from UYVY: the command's UYVY frames,
                        // converted by the command.
                        want = run_convert("UYVY", f->name, s.w, s.h, uyvy,
                                           {"--level", std::to_string(level)});
                    }
                    EXPECT_EQ(got, want);
                }
            }
        }
        cycbcr_set_cpu(chosen);

        // 2x2 blocks of one colour against the standards, at the chosen level.
        for (const int matrix : {0, 1, 2, 3}) {
            for (const uint32_t type : {0u, 0x8002u, has_alpha_slot ? 3u : 2u}) {
                const std::vector<Pixel> px = random_pixels(d, s.w, s.h, rng, 2);
                const std::vector<uint8_t> input = lay_out(d, px, s.w, s.h, type);
                const Samples want = model(px, matrix);
                for (const Format* f : eight_bit_formats()) {
                    SCOPED_TRACE(std::string(d.name) + " to " + f->name + " " +
                                 size_text(s.w, s.h) + " type " + std::to_string(type) +
                                 " matrix " + std::to_string(matrix));
                    const std::vector<uint8_t> got = run_convert(
                        d.name, f->name, s.w, s.h, input,
                        {"--matrix", std::to_string(matrix), "--rgb-type", std::to_string(type)});
                    ASSERT_EQ(got.size(), frame_bytes(*f, s.w, s.h));
                    EXPECT_EQ(within(read_ycbcr(*f, got, s.w, s.h), want, 2.0, s.w), "");
                }
            }
        }
    }
}

// The library's v210 frame of one RGB frame by the command's documented
// route, rows v210_row_bytes(w) apart, all the library leaves unwritten 0.
std::vector<uint8_t> library_v210(const Depth& d, const uint8_t* frame, uint32_t w, uint32_t h,
                                  uint32_t matrix, uint32_t type) {
    const std::string depth = d.name;
    const uint32_t pitch = static_cast<uint32_t>(cycbcr_tool_test::v210_row_bytes(w));
    const uint32_t src_pitch = w * d.bytes;
    std::vector<uint8_t> src(frame, frame + size_t{src_pitch} * h);
    src.resize(src.size() + 4096);
    std::vector<uint8_t> dst(size_t{pitch} * h + 4096);
    if (depth == "rgb24") {
        cycbcr_RGB24_to_012v(dst.data(), src.data(), w, h, pitch, src_pitch, matrix, type);
    } else if (depth == "rgb32") {
        cycbcr_RGB32_to_012v(dst.data(), src.data(), w, h, pitch, src_pitch, matrix, type);
    } else if (depth == "rgb10") {
        cycbcr_RGB10_to_012v(dst.data(), src.data(), w, h, pitch, src_pitch, matrix, type);
    } else if (depth == "rgb32f") {
        // UYVY rows with room for whole groups of six pixels, the room 0.
        const uint32_t uyvy_pitch = (w + 47) / 48 * 96;
        std::vector<uint8_t> uyvy(size_t{uyvy_pitch} * h + 4096);
        cycbcr_RGB32F_to_uyvy(uyvy.data(), src.data(), w, h, uyvy_pitch, src_pitch, matrix, type);
        cycbcr_uyvy_to_012v(dst.data(), uyvy.data(), w, h, pitch, uyvy_pitch);
    } else {
        cycbcr_RGB64_to_012v(dst.data(), src.data(), w, h, pitch, src_pitch, matrix, type,
                             d.bytes * 8);
    }
    dst.resize(size_t{pitch} * h);
    return dst;
}

class ToV210 : public testing::TestWithParam<const Depth*> {};

TEST_P(ToV210, MatchesTheLibraryAndTheStandards) {
    const Depth& d = *GetParam();
    const bool has_alpha_slot = d.bytes != 3 && d.bytes != 6;
    struct Variant {
        uint32_t type;
        uint32_t matrix;
        std::vector<std::string> options;
    };
    std::vector<Variant> variants = {
        {0, 0, {}},
        {2, 3, {"--rgb-type", "rgba", "--matrix", "709-studio"}},
        {0x8002, 8, {"--rgb-type", "rgba", "--bottom-up", "--matrix", "extra-8"}},
        {0x8000, 10, {"--rgb-type", "0x8000", "--matrix", "10"}},
    };
    if (has_alpha_slot) {
        variants.push_back({1, 6, {"--rgb-type", "abgr", "--matrix", "2020"}});
        variants.push_back({0x8003, 1, {"--rgb-type", "argb,bottom-up", "--matrix", "1"}});
    }
    // Whole groups past a 48-pixel block, a last pixel pair, the smallest.
    const Size sizes[] = {{50, 3}, {36, 2}, {2, 1}};
    const unsigned int chosen = cycbcr_get_cpu(1);
    std::mt19937 rng(11 + d.bytes);
    for (const Size s : sizes) {
        std::vector<std::vector<Pixel>> frames;
        for (int n = 0; n < kFrames; ++n) frames.push_back(random_pixels(d, s.w, s.h, rng, 1));
        for (const unsigned int level : {chosen, 0u}) {
            cycbcr_set_cpu(level);
            for (const Variant& v : variants) {
                SCOPED_TRACE(std::string(d.name) + " to v210 " + size_text(s.w, s.h) + " level " +
                             std::to_string(level) + " type " + std::to_string(v.type) +
                             " matrix " + std::to_string(v.matrix));
                std::vector<uint8_t> input, want;
                for (const auto& px : frames) {
                    const std::vector<uint8_t> one = lay_out(d, px, s.w, s.h, v.type);
                    input.insert(input.end(), one.begin(), one.end());
                    const std::vector<uint8_t> lib =
                        library_v210(d, one.data(), s.w, s.h, v.matrix, v.type);
                    want.insert(want.end(), lib.begin(), lib.end());
                }
                std::vector<std::string> options = v.options;
                options.insert(options.end(), {"--level", std::to_string(level)});
                EXPECT_EQ(run_convert(d.name, "v210", s.w, s.h, input, options), want);
                // The format's other code: the same converters.
                if (v.type == 0) {
                    EXPECT_EQ(run_convert(d.name, "012v", s.w, s.h, input, options), want);
                }
            }
        }
    }
    cycbcr_set_cpu(chosen);

    // Blocks of 12x2 pixels against the standards at 10 bits (four times the
    // 8-bit values; RGB as a fraction of 255, 1023 or 65535), read back by
    // FFmpeg's v210 decoder (four rows at least). The chroma of pair k is
    // filtered over pixels 2k - 1 to 2k + 2: compared where those lie in one
    // block. The engines truncate the weighted sums and the filter's sixths
    // and weigh with the forward table's rounded coefficients: within 3. The
    // 10-bit engine weighs 0..1023 with the 8-bit weights (the top 0.3% high,
    // under 3 more at 1023), the 16-bit one words / 64 (0.4% high, up to 4
    // more); rgb32f goes through 8-bit UYVY (within 2 at 8 bits).
    const uint32_t w = 48, h = 4;
    const double tolerance = d.bytes == 16 ? 8.0 : d.packed10 ? 4.0 : d.bytes >= 6 ? 6.0 : 3.0;
    for (const int matrix : {0, 1, 2, 3}) {
        for (const uint32_t type : {0u, 0x8002u, has_alpha_slot ? 3u : 2u}) {
            SCOPED_TRACE(std::string(d.name) + " to v210 matrix " + std::to_string(matrix) +
                         " type " + std::to_string(type));
            const std::vector<Pixel> px = random_pixels(d, w, h, rng, 12);
            const Samples want = model(px, matrix);
            const std::vector<uint8_t> got = run_convert(
                d.name, "v210", w, h, lay_out(d, px, w, h, type),
                {"--matrix", std::to_string(matrix), "--rgb-type", std::to_string(type)});
            const cycbcr_test::Frame422 f = cycbcr_test::ffmpeg_v210_decode(got, w, h);
            ASSERT_EQ(f.y.size(), size_t{w} * h);
            int wrong = 0;
            std::string first;
            const auto check = [&](const char* what, uint32_t r, uint32_t x, double g, double e) {
                if (std::fabs(g - 4.0 * e) <= tolerance) return;
                if (wrong++ == 0) {
                    first = std::string(what) + " at row " + std::to_string(r) + " pixel " +
                            std::to_string(x) + ": " + std::to_string(g) + " for " +
                            std::to_string(4.0 * e);
                }
            };
            for (uint32_t r = 0; r < h; ++r) {
                for (uint32_t x = 0; x < w; ++x) {
                    const size_t i = size_t{r} * w + x;
                    check("Y", r, x, f.Y(r, x), want.y[i]);
                    if (x % 2 != 0 || x == 0 || (x - 1) / 12 != (x + 2) / 12) continue;
                    check("Cb", r, x, f.Cb(r, x / 2), want.cb[i]);
                    check("Cr", r, x, f.Cr(r, x / 2), want.cr[i]);
                }
            }
            EXPECT_EQ(wrong, 0) << first;
        }
    }
}

std::string depth_name(const testing::TestParamInfo<const Depth*>& info) {
    return info.param->name;
}

std::vector<const Depth*> all_depths() {
    std::vector<const Depth*> out;
    for (const Depth& d : kDepths) out.push_back(&d);
    return out;
}

INSTANTIATE_TEST_SUITE_P(EveryDepth, FromRgb, testing::ValuesIn(all_depths()), depth_name);

std::vector<const Depth*> v210_depths() {
    std::vector<const Depth*> out;
    for (const Depth& d : kV210Depths) out.push_back(&d);
    return out;
}

INSTANTIATE_TEST_SUITE_P(EveryDepth, ToV210, testing::ValuesIn(v210_depths()), depth_name);

}  // namespace

int main(int argc, char** argv) {
    return cycbcr_tool_test::tool_test_main(argc, argv, "cycbcr-from-rgb");
}
