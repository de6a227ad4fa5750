// The frames the cycbcr command writes, read by FFmpeg: every pair of the
// eight YCbCr formats, at widths of whole and part pixel groups, at level 0 and
// at the best level. Inputs are written and outputs read by FFmpeg alone (its
// v210 codec, and the pixel-format descriptors of libavutil for the 8-bit
// formats), so a sheared row, a damaged plane or exchanged chroma shows as
// samples that differ from the picture.
//
// Usage: standard_frames_test PATH_TO_CYCBCR [gtest arguments]
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <ostream>
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
}

namespace {

using namespace cycbcr_tool_test;

constexpr uint32_t kWidths[] = {2, 6, 720, 1276, 1280, 1920, 3840};
constexpr uint32_t kHeight = 8;
constexpr int kFrames = 2;

// ---------------------------------------------------------------------------
// The picture: 10-bit 4:2:2 samples, all multiples of 4 from 64 to 940, so
// that every 10-to-8-bit rule the library has gives v >> 2 and 8 bits go back
// to the same 10-bit value. Luma differs from pixel to pixel and row to row,
// so a row shifted or taken from elsewhere shows; chroma varies across the row
// and is constant over blocks of four rows, where every way of subsampling it
// to 4:2:0 and back gives the same samples.

uint16_t studio(uint32_t n) {
    return static_cast<uint16_t>(4 * (16 + n % 220));
}

// The picture's planes, as the v210 oracle takes them: chroma w / 2 wide, h high.
using Picture = cycbcr_test::Frame422;

Picture make_picture(uint32_t w, uint32_t h, int frame) {
    Picture p{w, h, {}, {}, {}};
    for (uint32_t r = 0; r < h; ++r) {
        for (uint32_t x = 0; x < w; ++x) p.y.push_back(studio(7 * x + 29 * r + 3 * frame));
        const uint32_t block = r / 4;
        for (uint32_t k = 0; k < w / 2; ++k) {
            p.cb.push_back(studio(5 * k + 37 * block + frame));
            p.cr.push_back(studio(11 * k + 13 * block + 110 + frame));
        }
    }
    return p;
}

// ---------------------------------------------------------------------------
// The formats and FFmpeg's reading of each.

// The chroma row of a frame's plane row: 4:2:0 rows stand for two picture
// rows, which the picture gives the same chroma.
uint32_t picture_row_of_chroma(const Format& f, uint32_t row) {
    return f.kind == Kind::Planar420 ? 2 * row : row;
}

// One frame of the picture in the format, written by FFmpeg.
std::vector<uint8_t> write_frame(const Format& f, const Picture& p) {
    if (f.kind == Kind::V210) return cycbcr_test::ffmpeg_v210_encode(p);
    // av_write_image_line2 merges bits into the bytes it writes: start from 0.
    std::vector<uint8_t> out(frame_bytes(f, p.w, p.h), 0);
    ImageView v = image_view(f, out.data(), p.w, p.h);
    const uint32_t chroma_rows = f.kind == Kind::Planar420 ? p.h / 2 : p.h;
    std::vector<uint16_t> line(p.w);
    for (uint32_t r = 0; r < p.h; ++r) {
        for (uint32_t x = 0; x < p.w; ++x) line[x] = p.Y(r, x) >> 2;
        av_write_image_line2(line.data(), v.data, v.linesize, v.desc, 0, static_cast<int>(r), 0,
                             static_cast<int>(p.w), 2);
    }
    for (uint32_t r = 0; r < chroma_rows; ++r) {
        const uint32_t pr = picture_row_of_chroma(f, r);
        for (int c = 1; c <= 2; ++c) {
            for (uint32_t k = 0; k < p.w / 2; ++k)
                line[k] = (c == 1 ? p.Cb(pr, k) : p.Cr(pr, k)) >> 2;
            av_write_image_line2(line.data(), v.data, v.linesize, v.desc, 0, static_cast<int>(r), c,
                                 static_cast<int>(p.w / 2), 2);
        }
    }
    return out;
}

// A frame as FFmpeg reads it: samples at the frame's own depth (8 or 10 bits)
// and chroma at its own subsampling (4:2:0 rows h / 2). Empty planes when
// FFmpeg refuses the data.
struct Decoded {
    std::vector<std::vector<uint16_t>> rows[3];  // Y, Cb, Cr
};

Decoded read_frame(const Format& f, const uint8_t* data, size_t bytes, uint32_t w, uint32_t h) {
    Decoded d;
    if (f.kind == Kind::V210) {
        const Picture read = cycbcr_test::ffmpeg_v210_decode({data, data + bytes}, w, h);
        if (read.y.empty()) return d;
        for (uint32_t r = 0; r < h; ++r) {
            d.rows[0].emplace_back(&read.y[size_t{r} * w], &read.y[size_t{r} * w] + w);
            d.rows[1].emplace_back(&read.cb[size_t{r} * (w / 2)],
                                   &read.cb[size_t{r} * (w / 2)] + w / 2);
            d.rows[2].emplace_back(&read.cr[size_t{r} * (w / 2)],
                                   &read.cr[size_t{r} * (w / 2)] + w / 2);
        }
        return d;
    }
    std::vector<uint8_t> copy(data, data + bytes);
    ImageView v = image_view(f, copy.data(), w, h);
    const uint32_t chroma_rows = f.kind == Kind::Planar420 ? h / 2 : h;
    for (int c = 0; c < 3; ++c) {
        const uint32_t n = c == 0 ? w : w / 2;
        for (uint32_t r = 0; r < (c == 0 ? h : chroma_rows); ++r) {
            std::vector<uint16_t> row(n);
            av_read_image_line2(row.data(), const_cast<const uint8_t**>(v.data), v.linesize, v.desc,
                                0, static_cast<int>(r), c, static_cast<int>(n), 0, 2);
            d.rows[c].push_back(std::move(row));
        }
    }
    return d;
}

// Every sample of the decoded frame against the picture; "" when all agree,
// else the count of differing samples and the first of them.
std::string compare(const Format& f, const Decoded& d, const Picture& p) {
    const int shift = f.kind == Kind::V210 ? 0 : 2;
    const char* names[3] = {"Y", "Cb", "Cr"};
    uint64_t wrong = 0;
    std::string first;
    for (int c = 0; c < 3; ++c) {
        const uint32_t rows = c == 0 || f.kind != Kind::Planar420 ? p.h : p.h / 2;
        if (d.rows[c].size() != rows) return "FFmpeg could not read the frame";
        for (uint32_t r = 0; r < rows; ++r) {
            const std::vector<uint16_t>& got = d.rows[c][r];
            for (uint32_t i = 0; i < got.size(); ++i) {
                const uint32_t pr = c == 0 ? r : picture_row_of_chroma(f, r);
                const uint16_t want = (c == 0   ? p.Y(pr, i)
                                       : c == 1 ? p.Cb(pr, i)
                                                : p.Cr(pr, i)) >>
                                      shift;
                if (got[i] == want) continue;
                if (wrong++ == 0) {
                    first = std::string(names[c]) + " row " + std::to_string(r) + " sample " +
                            std::to_string(i) + ": " + std::to_string(got[i]) + " instead of " +
                            std::to_string(want);
                }
            }
        }
    }
    return wrong == 0 ? "" : std::to_string(wrong) + " samples differ, first " + first;
}

// ---------------------------------------------------------------------------
// Files and the command.

// The input file of kFrames frames of the picture in a format at a width,
// written once and shared by every pair.
std::filesystem::path input_file(const Format& f, uint32_t w) {
    static std::map<std::pair<std::string, uint32_t>, std::filesystem::path> files;
    const auto key = std::make_pair(std::string(f.name), w);
    if (auto it = files.find(key); it != files.end()) return it->second;
    std::vector<uint8_t> bytes;
    for (int n = 0; n < kFrames; ++n) {
        const std::vector<uint8_t> frame = write_frame(f, make_picture(w, kHeight, n));
        if (frame.size() != frame_bytes(f, w, kHeight)) return {};
        bytes.insert(bytes.end(), frame.begin(), frame.end());
    }
    const std::filesystem::path path =
        g_dir / (std::string(f.name) + "-" + std::to_string(w) + ".in");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    files[key] = path;
    return path;
}

struct Pair {
    const Format* from;
    const Format* to;
};

std::vector<Pair> all_pairs() {
    std::vector<Pair> pairs;
    for (const Format& from : kFormats) {
        for (const Format& to : kFormats) pairs.push_back({&from, &to});
    }
    return pairs;
}

void PrintTo(const Pair& pair, std::ostream* os) {
    *os << pair.from->name << " to " << pair.to->name;
}

std::string pair_name(const testing::TestParamInfo<Pair>& info) {
    return std::string(info.param.from->name) + "_to_" + info.param.to->name;
}

// Converts the picture's file of the pair's source format at a width with the
// command, at a level ("" for the one the command chooses by itself, the best),
// and checks every sample of every frame FFmpeg reads from the output.
void check_conversion(const Pair& pair, uint32_t w, const std::string& level) {
    const Format& from = *pair.from;
    const Format& to = *pair.to;
    const std::string size = std::to_string(w) + "x" + std::to_string(kHeight);
    SCOPED_TRACE(std::string(from.name) + " to " + to.name + " " + size + " level " +
                 (level.empty() ? "best" : level));
    const std::filesystem::path in = input_file(from, w);
    ASSERT_FALSE(in.empty()) << "FFmpeg did not write the input frames";
    const std::filesystem::path out = g_dir / "out.raw";
    std::vector<std::string> args = {"convert",   "--from", from.name,   "--to",
                                     to.name,     "--size", size,        "--in",
                                     in.string(), "--out",  out.string()};
    if (!level.empty()) args.insert(args.end(), {"--level", level});
    ASSERT_EQ(run_tool(args), "");
    const std::vector<uint8_t> output = read_file(out);
    const size_t frame = frame_bytes(to, w, kHeight);
    ASSERT_EQ(output.size(), kFrames * frame);
    for (int n = 0; n < kFrames; ++n) {
        const Decoded d = read_frame(to, output.data() + n * frame, frame, w, kHeight);
        EXPECT_EQ(compare(to, d, make_picture(w, kHeight, n)), "") << "frame " << n;
    }
}

// The widths of common pictures and of part pixel groups (1276 and 1280 end
// in part v210 groups and part 12-pixel steps), at level 0 (the plain paths),
// 4 and 6 (with the built-in image-library paths) and the best level.
class StandardFrames : public testing::TestWithParam<Pair> {};

TEST_P(StandardFrames, HoldThePicture) {
    for (const uint32_t w : kWidths) {
        for (const char* level : {"0", "4", "6", ""}) check_conversion(GetParam(), w, level);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPair, StandardFrames, testing::ValuesIn(all_pairs()), pair_name);

// Every even width up to two 48-pixel blocks: each way a row can end inside
// the converters' pixel groups and wide steps, at level 0 and the best level.
class EveryRowEnd : public testing::TestWithParam<Pair> {};

TEST_P(EveryRowEnd, HoldsThePicture) {
    for (uint32_t w = 2; w <= 96; w += 2) {
        for (const char* level : {"0", ""}) check_conversion(GetParam(), w, level);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPair, EveryRowEnd, testing::ValuesIn(all_pairs()), pair_name);

}  // namespace

int main(int argc, char** argv) {
    return tool_test_main(argc, argv, "cycbcr-frames");
}
