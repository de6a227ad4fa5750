// BGRA -> yuv422p10le (libswscale, one thread, point sampling: the least work
// it offers; its fast bilinear mode timed the same here) -> v210 (FFmpeg's
// encoder, send/receive as an application calls it).
// Neither step is our arithmetic (swscale filters and rounds its own way), so
// nothing is compared: the chain is the work a caller of those libraries does
// for the same frame.
#include "sws_v210_chain.h"

#include <map>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace cycbcr_bench {
namespace {

struct Chain {
    SwsContext* sws = nullptr;
    AVCodecContext* ctx = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    std::string error;
    ~Chain() {
        sws_freeContext(sws);
        avcodec_free_context(&ctx);
        av_frame_free(&frame);
        av_packet_free(&packet);
    }
};

Chain& chain(const FrameSize& size) {
    static std::map<unsigned, std::unique_ptr<Chain>> chains;
    auto& c = chains[size.width];
    if (c) return *c;
    c = std::make_unique<Chain>();
    av_log_set_level(AV_LOG_QUIET);
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    c->sws = sws_getContext(w, h, AV_PIX_FMT_BGRA, w, h, AV_PIX_FMT_YUV422P10LE, SWS_POINT, nullptr,
                            nullptr, nullptr);
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_V210);
    if (c->sws == nullptr || codec == nullptr) {
        c->error = "no swscale context or v210 encoder";
        return *c;
    }
    c->ctx = avcodec_alloc_context3(codec);
    c->frame = av_frame_alloc();
    c->packet = av_packet_alloc();
    c->ctx->width = w;
    c->ctx->height = h;
    c->ctx->pix_fmt = AV_PIX_FMT_YUV422P10LE;
    c->ctx->time_base = AVRational{1, 25};
    c->ctx->thread_count = 1;
    c->frame->format = AV_PIX_FMT_YUV422P10LE;
    c->frame->width = w;
    c->frame->height = h;
    if (avcodec_open2(c->ctx, codec, nullptr) < 0 || av_frame_get_buffer(c->frame, 0) < 0)
        c->error = "encoder or frame refused";
    return *c;
}

}  // namespace

std::string register_sws_v210_chain(const FrameSize& size, size_t moved) {
    const std::string name = "sws+v210enc/" + size.label();
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    FrameCall call = [=](uint8_t*, const uint8_t* src) {
        Chain& c = chain(size);
        const uint8_t* in[1] = {src};
        const int stride[1] = {4 * w};
        sws_scale(c.sws, in, stride, 0, h, c.frame->data, c.frame->linesize);
        if (avcodec_send_frame(c.ctx, c.frame) >= 0 && avcodec_receive_packet(c.ctx, c.packet) >= 0)
            av_packet_unref(c.packet);
    };
    Verdict check = [=] { return chain(size).error; };
    register_call(name, call, size, moved, -1, false, check)->MinTime(0.05);
    return name;
}

}  // namespace cycbcr_bench
