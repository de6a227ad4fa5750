// FFmpeg's v210 codec as an independent writer and reader of the format, for
// tests that use it as an oracle. Only for targets linked with libavcodec.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
}

namespace cycbcr_test {

// A 4:2:2 picture in tightly packed planes; chroma planes are width / 2 wide.
struct Frame422 {
    uint32_t w, h;
    std::vector<uint16_t> y, cb, cr;
    uint16_t Y(uint32_t r, uint32_t x) const { return y.at(size_t{r} * w + x); }
    uint16_t Cb(uint32_t r, uint32_t k) const { return cb.at(size_t{r} * (w / 2) + k); }
    uint16_t Cr(uint32_t r, uint32_t k) const { return cr.at(size_t{r} * (w / 2) + k); }
};

inline Frame422 random_frame422(uint32_t w, uint32_t h, uint32_t lo, uint32_t hi, uint32_t seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<uint32_t> d(lo, hi);
    Frame422 f{w, h, std::vector<uint16_t>(size_t{w} * h), std::vector<uint16_t>(size_t{w / 2} * h),
               std::vector<uint16_t>(size_t{w / 2} * h)};
    for (auto* plane : {&f.y, &f.cb, &f.cr})
        for (auto& v : *plane) v = static_cast<uint16_t>(d(rng));
    return f;
}

namespace ffmpeg_detail {
struct Deleter {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
    void operator()(AVFrame* f) const { av_frame_free(&f); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
template <class T>
using Av = std::unique_ptr<T, Deleter>;

inline Av<AVCodecContext> open_v210(bool encoder, uint32_t w, uint32_t h) {
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
}  // namespace ffmpeg_detail

// FFmpeg's v210 packet for a picture of 10-bit samples (rows padded to 48
// pixels, 128 bytes); empty when the encoder is missing or refuses.
inline std::vector<uint8_t> ffmpeg_v210_encode(const Frame422& f) {
    using namespace ffmpeg_detail;
    auto ctx = open_v210(true, f.w, f.h);
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

// FFmpeg's reading of a v210 frame; planes left empty when it refuses the data.
// Its decoder works in slices of four rows: give it at least four.
inline Frame422 ffmpeg_v210_decode(const std::vector<uint8_t>& v210, uint32_t w, uint32_t h) {
    using namespace ffmpeg_detail;
    Frame422 out{w, h, {}, {}, {}};
    auto ctx = open_v210(false, w, h);
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

}  // namespace cycbcr_test
