// v210 to RGB: the 32-bit converter at level 0 and 5, the 16-bit and planar
// engines at level 0 and 5 and the Q13 planar form, with matrix 0 and RGB type 0
// (B, G, R, A). Peers, frame for frame: FFmpeg's v210 decoder chained with
// libyuv's I210ToARGB (the same work through a 10-bit planar frame), and libyuv's
// I422ToARGB on an 8-bit planar frame of the same size. A call counts its v210
// frame plus its RGB frame.
//
// Targets at level 5: v210 to 32 bits >= 2 x the FFmpeg + libyuv chain and
// >= I422ToARGB; the 16-bit and planar C engines >= 3 x their level 0; the Q13
// planar form >= the planar C engine at level 5.
#include <cycbcr.h>

#include <cstring>
#include <string>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/convert_argb.h>
#endif
#if defined(CYCBCR_BENCH_FFMPEG) && defined(CYCBCR_BENCH_LIBYUV)
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}
#define CYCBCR_BENCH_V210_CHAIN 1
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "v210 -> RGB";
constexpr double kMinTime = 0.05;

unsigned int v210_pitch(const FrameSize& size) {
    return static_cast<unsigned int>(frame_bytes(Format::V210, size) / size.height);
}

FrameCall engine_call(unsigned int (*fn)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned,
                                         unsigned, QBYCBCRMatrix, QBYCBCRRgbType, unsigned),
                      const FrameSize& size, unsigned int bytesPerPixel, unsigned int depth) {
    const unsigned int sp = v210_pitch(size), dp = size.width * bytesPerPixel;
    return [=](uint8_t* dst, const uint8_t* src) {
        fn(dst, src, size.width, size.height, dp, sp, 0, 0, depth);
    };
}

#ifdef CYCBCR_BENCH_V210_CHAIN
// FFmpeg's decoder on one thread, its packet the v210 frame of the shared
// source buffer, then libyuv from the decoded planes to B, G, R, A.
struct Chain {
    AVCodecContext* ctx = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    bool ok = false;
};
Chain& chain(const FrameSize& size, const uint8_t* src) {
    static Chain c[2];
    Chain& s = c[size.width > 1920 ? 1 : 0];
    if (s.ctx) return s;
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_V210);
    if (!codec) return s;
    s.ctx = avcodec_alloc_context3(codec);
    s.ctx->width = static_cast<int>(size.width);
    s.ctx->height = static_cast<int>(size.height);
    s.ctx->thread_count = 1;
    s.frame = av_frame_alloc();
    s.packet = av_packet_alloc();
    const size_t bytes = frame_bytes(Format::V210, size);
    s.ok = avcodec_open2(s.ctx, codec, nullptr) == 0 &&
           av_new_packet(s.packet, static_cast<int>(bytes)) == 0;
    if (s.ok) std::memcpy(s.packet->data, src, bytes);
    return s;
}
FrameCall chain_call(const FrameSize& size) {
    return [=](uint8_t* dst, const uint8_t* src) {
        Chain& s = chain(size, src);
        if (!s.ok) return;
        if (avcodec_send_packet(s.ctx, s.packet) < 0 || avcodec_receive_frame(s.ctx, s.frame) < 0)
            return;
        libyuv::I210ToARGB(
            reinterpret_cast<const uint16_t*>(s.frame->data[0]), s.frame->linesize[0] / 2,
            reinterpret_cast<const uint16_t*>(s.frame->data[1]), s.frame->linesize[1] / 2,
            reinterpret_cast<const uint16_t*>(s.frame->data[2]), s.frame->linesize[2] / 2, dst,
            static_cast<int>(size.width * 4), static_cast<int>(size.width),
            static_cast<int>(size.height));
        av_frame_unref(s.frame);
    };
}
#endif

}  // namespace

void register_v210_to_rgb_benchmarks() {
    set_family_heading(kFamily,
                       "v210 -> RGB (matrix 0, RGB type 0): the v210 frame plus the RGB frame per "
                       "call. Targets at level 5: 32-bit >= 2 x FFmpeg's v210 decoder + libyuv "
                       "I210ToARGB and >= libyuv I422ToARGB (8-bit source), frame for frame;\n"
                       "the 16-bit and planar C engines >= 3 x their level 0; the Q13 planar form "
                       ">= the planar C engine");
    for (const FrameSize& size : kFrameSizes) {
        const std::string label = size.label();
        const size_t v210 = frame_bytes(Format::V210, size), px = size.pixels();
        const bool wide = buffer_room(size) >= px * 8;
        const unsigned int wordBytes = wide ? 8 : 6;

        // v210 -> 32 bits, against both peers.
        {
            SummaryRow row;
            row.family = kFamily;
            row.size = label;
            row.converter = "012v_to_rgb32";
            row.level5_form = true;
            const FrameCall call = [=](uint8_t* dst, const uint8_t* src) {
                cycbcr_012v_to_rgb32(dst, src, size.width, size.height, size.width * 4,
                                     v210_pitch(size), 0, 0);
            };
            row.plain = "012v_to_rgb32/" + label + "/plain";
            row.level5 = "012v_to_rgb32/" + label + "/level5";
            register_call(row.plain, call, size, v210 + 4 * px, 0, false)->MinTime(kMinTime);
            register_call(row.level5, call, size, v210 + 4 * px, 5, true)->MinTime(kMinTime);
            row.memcpy = memcpy_benchmark(size, (v210 + 4 * px) / 2);
            row.peer_per_frame = true;
#ifdef CYCBCR_BENCH_V210_CHAIN
            row.peer = "ffmpeg+libyuv:v210dec+I210ToARGB/" + label;
            row.peer_label = "FFmpeg v210 + I210ToARGB";
            row.peer_target = 2.0;
            register_call(row.peer, chain_call(size), size, v210 + 4 * px, -1, false)
                ->MinTime(kMinTime);
#endif
            add_summary_row(row);
#ifdef CYCBCR_BENCH_LIBYUV
            SummaryRow i422 = row;
            i422.plain.clear();
            i422.peer = "libyuv:I422ToARGB/" + label;
            i422.peer_label = "libyuv I422ToARGB (8-bit)";
            i422.peer_target = 1.0;
            register_call(
                i422.peer,
                [=](uint8_t* dst, const uint8_t* src) {
                    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
                    libyuv::I422ToARGB(src, w, src + px, w / 2, src + px + px / 2, w / 2, dst,
                                       w * 4, w, h);
                },
                size, 2 * px + 4 * px, -1, false)
                ->MinTime(kMinTime);
            add_summary_row(i422);
#endif
        }

        // The 16-bit and planar engines against their level 0, and the Q13 form.
        struct Engine {
            const char* name;
            unsigned int (*fn)(uint8_t*, const uint8_t*, unsigned, unsigned, unsigned, unsigned,
                               QBYCBCRMatrix, QBYCBCRRgbType, unsigned);
            unsigned int bytes, depth;
        };
        const Engine engines[] = {
            {"v210ToRGBInt16", cycbcr_v210ToRGBInt16, wordBytes, wordBytes * 8},
            {"v210ToRGBPlanarC16", cycbcr_v210ToRGBPlanarC16, 2, 0},
        };
        std::string planarC5;
        for (const Engine& e : engines) {
            SummaryRow row;
            row.family = kFamily;
            row.size = label;
            row.converter = e.name;
            row.level5_form = true;
            const size_t out = px * (e.bytes == 2 ? 6 : e.bytes);
            const FrameCall call = engine_call(e.fn, size, e.bytes, e.depth);
            row.plain = std::string(e.name) + "/" + label + "/plain";
            row.level5 = std::string(e.name) + "/" + label + "/level5";
            register_call(row.plain, call, size, v210 + out, 0, false)->MinTime(kMinTime);
            register_call(row.level5, call, size, v210 + out, 5, true)->MinTime(kMinTime);
            row.memcpy = memcpy_benchmark(size, (v210 + out) / 2);
            row.plain_target = 3.0;
            add_summary_row(row);
            planarC5 = row.level5;
        }
        SummaryRow q13;
        q13.family = kFamily;
        q13.size = label;
        q13.converter = "v210ToRGBPlanarSSE16";
        q13.level5_form = true;
        q13.level5 = "v210ToRGBPlanarSSE16/" + label + "/level5";
        register_call(q13.level5, engine_call(cycbcr_v210ToRGBPlanarSSE16, size, 2, 0), size,
                      v210 + 6 * px, 5, true)
            ->MinTime(kMinTime);
        q13.memcpy = memcpy_benchmark(size, (v210 + 6 * px) / 2);
        q13.peer = planarC5;
        q13.peer_label = "v210ToRGBPlanarC16 level 5";
        q13.peer_target = 1.0;
        add_summary_row(q13);
    }
}

}  // namespace cycbcr_bench
