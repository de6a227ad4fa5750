// The v210 layout against an independent codec: FFmpeg's v210 encoder writes
// frames that our unpackers must read back sample for sample, and its decoder
// must read what our packers write.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

#include "cycbcr.h"
#include "support/frames.h"

using namespace cycbcr_test;

namespace {

// A 4:2:2 frame of tightly packed planes; chroma planes are width / 2 wide.
struct Frame422 {
    uint32_t w, h;
    std::vector<uint16_t> y, cb, cr;
    uint16_t Y(uint32_t r, uint32_t x) const { return y[size_t{r} * w + x]; }
    uint16_t Cb(uint32_t r, uint32_t k) const { return cb[size_t{r} * (w / 2) + k]; }
    uint16_t Cr(uint32_t r, uint32_t k) const { return cr[size_t{r} * (w / 2) + k]; }
};

Frame422 random_frame(uint32_t w, uint32_t h, uint32_t lo, uint32_t hi, uint32_t seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<uint32_t> d(lo, hi);
    Frame422 f{w, h, std::vector<uint16_t>(size_t{w} * h), std::vector<uint16_t>(size_t{w / 2} * h),
               std::vector<uint16_t>(size_t{w / 2} * h)};
    for (auto* plane : {&f.y, &f.cb, &f.cr})
        for (auto& v : *plane) v = static_cast<uint16_t>(d(rng));
    return f;
}

struct CodecDeleter {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
    void operator()(AVFrame* f) const { av_frame_free(&f); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
template <class T>
using Av = std::unique_ptr<T, CodecDeleter>;

Av<AVCodecContext> open_codec(bool encoder, uint32_t w, uint32_t h) {
    av_log_set_level(AV_LOG_QUIET);
    const AVCodec* codec =
        encoder ? avcodec_find_encoder(AV_CODEC_ID_V210) : avcodec_find_decoder(AV_CODEC_ID_V210);
    if (codec == nullptr) return nullptr;
    Av<AVCodecContext> ctx(avcodec_alloc_context3(codec));
    ctx->width = static_cast<int>(w);
    ctx->height = static_cast<int>(h);
    ctx->pix_fmt = AV_PIX_FMT_YUV422P10;
    ctx->time_base = {1, 25};
    ctx->thread_count = 1;
    return avcodec_open2(ctx.get(), codec, nullptr) == 0 ? std::move(ctx) : nullptr;
}

// FFmpeg's v210 packet for a frame of 10-bit samples.
std::vector<uint8_t> ffmpeg_encode(const Frame422& f) {
    auto ctx = open_codec(true, f.w, f.h);
    Av<AVFrame> frame(av_frame_alloc());
    Av<AVPacket> pkt(av_packet_alloc());
    frame->format = AV_PIX_FMT_YUV422P10;
    frame->width = static_cast<int>(f.w);
    frame->height = static_cast<int>(f.h);
    if (!ctx || av_frame_get_buffer(frame.get(), 0) != 0) return {};
    for (uint32_t r = 0; r < f.h; ++r) {
        std::memcpy(frame->data[0] + r * frame->linesize[0], &f.y[size_t{r} * f.w], 2 * f.w);
        std::memcpy(frame->data[1] + r * frame->linesize[1], &f.cb[size_t{r} * (f.w / 2)], f.w);
        std::memcpy(frame->data[2] + r * frame->linesize[2], &f.cr[size_t{r} * (f.w / 2)], f.w);
    }
    if (avcodec_send_frame(ctx.get(), frame.get()) != 0 ||
        avcodec_receive_packet(ctx.get(), pkt.get()) != 0)
        return {};
    return {pkt->data, pkt->data + pkt->size};
}

// FFmpeg's reading of a v210 frame; empty when it refuses the data.
Frame422 ffmpeg_decode(const std::vector<uint8_t>& v210, uint32_t w, uint32_t h) {
    Frame422 out{w, h, {}, {}, {}};
    auto ctx = open_codec(false, w, h);
    Av<AVFrame> frame(av_frame_alloc());
    Av<AVPacket> pkt(av_packet_alloc());
    if (!ctx || av_new_packet(pkt.get(), static_cast<int>(v210.size())) != 0) return out;
    std::memcpy(pkt->data, v210.data(), v210.size());
    if (avcodec_send_packet(ctx.get(), pkt.get()) != 0 ||
        avcodec_receive_frame(ctx.get(), frame.get()) != 0 || frame->format != AV_PIX_FMT_YUV422P10)
        return out;
    for (uint32_t r = 0; r < h; ++r)
        for (int p = 0; p < 3; ++p) {
            auto& plane = p == 0 ? out.y : p == 1 ? out.cb : out.cr;
            const uint32_t n = p == 0 ? w : w / 2;
            const auto* row =
                reinterpret_cast<const uint16_t*>(frame->data[p] + r * frame->linesize[p]);
            plane.insert(plane.end(), row, row + n);
        }
    return out;
}

uint32_t v210_stride(uint32_t w) {  // rows padded to 48 pixels, 128 bytes
    return (w + 47) / 48 * 128;
}

struct Shape {
    uint32_t w, h;
};
// Multiples of 48, multiples of 6 that are not (36, 42), and one that is not
// a multiple of 6 either (FFmpeg ends its rows inside a group). At least four
// rows: FFmpeg's decoder works in slices of four rows and returns a blank
// frame for fewer.
const Shape kShapes[] = {{48, 4}, {96, 4}, {720, 4}, {1920, 4}, {36, 5}, {42, 6}, {40, 4}};

// ---------------------------------------------------------------- FFmpeg writes

TEST(V210Ffmpeg, OurUnpackersReadFfmpegFrames) {
    for (const Shape s : kShapes) {
        // The encoder keeps 10-bit samples to 4..1019; staying inside keeps
        // its clipping out of the comparison.
        const Frame422 f = random_frame(s.w, s.h, 4, 1019, s.w);
        const std::vector<uint8_t> v210 = ffmpeg_encode(f);
        const uint32_t stride = v210_stride(s.w);
        ASSERT_EQ(v210.size(), size_t{stride} * s.h) << "width " << s.w;

        for (unsigned level : {0u, 5u}) {
            cycbcr_set_cpu(level);
            // Room for the AVX2 path's whole last group in every row.
            const uint32_t pitch = 2 * s.w + 8;
            std::vector<uint8_t> uyvy(size_t{pitch} * s.h);
            cycbcr_012v_to_uyvy(uyvy.data(), v210.data(), s.w, s.h, pitch, stride);
            auto to8 = [](uint16_t v) { return (v + 2) >> 2; };
            for (uint32_t r = 0; r < s.h; ++r)
                for (uint32_t k = 0; k < s.w / 2; ++k) {
                    const uint8_t* p = &uyvy[size_t{r} * pitch + 4 * k];
                    ASSERT_TRUE(p[0] == to8(f.Cb(r, k)) && p[1] == to8(f.Y(r, 2 * k)) &&
                                p[2] == to8(f.Cr(r, k)) && p[3] == to8(f.Y(r, 2 * k + 1)))
                        << "level " << gdwProcType << " width " << s.w << " row " << r << " pair "
                        << k;
                }
        }

        const uint32_t dp = 2 * ((s.w + 11) / 12 * 12);  // 16-bit rows reach width rounded up to 12
        std::vector<uint16_t> planes(size_t{dp} * s.h);
        uint16_t* y = planes.data();
        Fromv210_16(y, y + s.h * dp / 2, y + s.h * dp / 2 + s.h * dp / 4, v210.data(), s.w, s.h, dp,
                    stride, 1, 1);
        for (uint32_t r = 0; r < s.h; ++r) {
            for (uint32_t x = 0; x < s.w; ++x)
                ASSERT_EQ(y[r * dp / 2 + x], f.Y(r, x) << 6) << "width " << s.w << " row " << r;
            for (uint32_t k = 0; k < s.w / 2; ++k) {
                ASSERT_EQ(y[s.h * dp / 2 + r * dp / 4 + k], f.Cb(r, k) << 6) << "row " << r;
                ASSERT_EQ(y[s.h * dp / 2 + s.h * dp / 4 + r * dp / 4 + k], f.Cr(r, k) << 6)
                    << "row " << r;
            }
        }
    }
}

// ---------------------------------------------------------------- FFmpeg reads

// What FFmpeg decodes must be the 8-bit source << 2; 4:2:0 chroma row r / 2
// serves luma row r.
void expect_decodes_to(const std::vector<uint8_t>& v210, const Frame422& src8, bool chroma420,
                       const char* what) {
    const Frame422 got = ffmpeg_decode(v210, src8.w, src8.h);
    ASSERT_EQ(got.y.size(), src8.y.size()) << what << ": FFmpeg refused width " << src8.w;
    for (uint32_t r = 0; r < src8.h; ++r) {
        for (uint32_t x = 0; x < src8.w; ++x)
            ASSERT_EQ(got.Y(r, x), src8.Y(r, x) << 2)
                << what << " width " << src8.w << " row " << r << " pixel " << x;
        const uint32_t cr = chroma420 ? r / 2 : r;
        for (uint32_t k = 0; k < src8.w / 2; ++k) {
            ASSERT_EQ(got.Cb(r, k), src8.Cb(cr, k) << 2)
                << what << " width " << src8.w << " row " << r;
            ASSERT_EQ(got.Cr(r, k), src8.Cr(cr, k) << 2)
                << what << " width " << src8.w << " row " << r;
        }
    }
}

TEST(V210Ffmpeg, FfmpegReadsOurPackers) {
    for (const Shape s : kShapes) {
        if (s.w % 6 != 0) continue;  // our packers write whole groups only
        const uint32_t stride = v210_stride(s.w);
        const Frame422 f = random_frame(s.w, s.h, 0, 255, s.w + 1);
        std::vector<uint8_t> uyvy, yuy2;
        for (uint32_t r = 0; r < s.h; ++r)
            for (uint32_t k = 0; k < s.w / 2; ++k) {
                const uint8_t y0 = f.Y(r, 2 * k), y1 = f.Y(r, 2 * k + 1), u = f.Cb(r, k),
                              v = f.Cr(r, k);
                uyvy.insert(uyvy.end(), {u, y0, v, y1});
                yuy2.insert(yuy2.end(), {y0, u, y1, v});
            }
        for (unsigned level : {0u, 5u}) {
            cycbcr_set_cpu(level);
            std::vector<uint8_t> v210(size_t{stride} * s.h);
            cycbcr_uyvy_to_012v(v210.data(), uyvy.data(), s.w, s.h, stride, 2 * s.w);
            expect_decodes_to(v210, f, false,
                              level ? "uyvy_to_012v level 5" : "uyvy_to_012v level 0");
        }
        std::vector<uint8_t> v210(size_t{stride} * s.h);
        Tov210(v210.data(), yuy2.data(), yuy2.data() + 1, yuy2.data() + 3, s.w, s.h, 0, 2 * s.w, 1,
               0);
        expect_decodes_to(v210, f, false, "Tov210 from YUY2");

        std::vector<uint8_t> planar(f.y.begin(), f.y.end());
        planar.insert(planar.end(), f.cb.begin(), f.cb.end());
        planar.insert(planar.end(), f.cr.begin(), f.cr.end());
        const uint8_t* p = planar.data();
        const size_t luma = size_t{s.w} * s.h, chroma = luma / 2;
        Tov210(v210.data(), p, p + luma, p + luma + chroma, s.w, s.h, 0, 0, 1, 1);
        expect_decodes_to(v210, f, false, "Tov210 from planar 4:2:2");
        // The same planes read as 4:2:0: chroma rows 0 .. h / 2 serve two luma rows each.
        Tov210(v210.data(), p, p + luma, p + luma + chroma, s.w, s.h, 0, 0, 0, 1);
        expect_decodes_to(v210, f, true, "Tov210 from planar 4:2:0");
    }
}

}  // namespace
