// FFmpeg's v210 codec as a peer: the encoder packs yuv422p10 into v210 and the
// decoder unpacks v210 into yuv422p10, on one thread, through the send/receive
// API as an application calls it. Before timing, each is checked against ours on
// the same picture, so both sides are known to do the same packing.
#include "ffmpeg_v210.h"

#include <cycbcr.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <tuple>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/cpu.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/pixfmt.h>
}

namespace cycbcr_bench {
namespace {

constexpr AVPixelFormat kPlanar10 = AV_PIX_FMT_YUV422P10LE;
// Small enough that packing it costs next to nothing: what remains of a call is
// the codec API's own work. Four rows, not two: the decoder splits the frame
// into height / 4 slices and decodes nothing at all below four rows.
constexpr FrameSize kTinyFrame{48, 4};

// yuv422p10 without row padding: two bytes a sample; a Y per pixel, a Cb and a
// Cr per pair.
size_t planar10_bytes(const FrameSize& size) {
    return 4 * size.pixels();
}

std::string av_error(int code) {
    char buf[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, buf, sizeof buf);
    return buf;
}

uint16_t* plane_row(const AVFrame* frame, int plane, unsigned int row) {
    return reinterpret_cast<uint16_t*>(frame->data[plane] +
                                       static_cast<ptrdiff_t>(row) * frame->linesize[plane]);
}

// One open codec with the frame and packet it works on; opened and checked on
// first use and kept for the whole run.
struct Session {
    AVCodecContext* ctx = nullptr;
    AVFrame* frame = nullptr;    // the encoder's input, the decoder's output
    AVPacket* packet = nullptr;  // the encoder's output, the decoder's input
    std::string error;           // why it cannot be timed
    ~Session() {
        avcodec_free_context(&ctx);
        av_frame_free(&frame);
        av_packet_free(&packet);
    }
};

std::string open_codec(Session& s, bool encoder, const FrameSize& size) {
    const AVCodec* codec =
        encoder ? avcodec_find_encoder(AV_CODEC_ID_V210) : avcodec_find_decoder(AV_CODEC_ID_V210);
    if (codec == nullptr) return encoder ? "no v210 encoder in libavcodec" : "no v210 decoder";
    s.ctx = avcodec_alloc_context3(codec);
    s.frame = av_frame_alloc();
    s.packet = av_packet_alloc();
    if (s.ctx == nullptr || s.frame == nullptr || s.packet == nullptr) return "out of memory";
    s.ctx->width = static_cast<int>(size.width);
    s.ctx->height = static_cast<int>(size.height);
    s.ctx->thread_count = 1;
    if (encoder) {
        s.ctx->pix_fmt = kPlanar10;
        s.ctx->time_base = AVRational{1, 25};
    }
    const int rc = avcodec_open2(s.ctx, codec, nullptr);
    return rc < 0 ? "avcodec_open2: " + av_error(rc) : std::string();
}

// Encoder input: the UYVY picture of the shared source, each byte kept within
// 1..254 so that its 10-bit form (v << 2) lies inside the encoder's clipping
// range 4..1019. Ours packs the same bytes, and the two v210 frames must agree.
std::string prepare_encoder(Session& s, const FrameSize& size) {
    Buffers& b = frame_buffers(size);
    uint8_t* uyvy = b.scratch;
    for (size_t i = 0; i < frame_bytes(Format::UYVY, size); ++i)
        uyvy[i] = static_cast<uint8_t>(std::clamp(int{b.src[i]}, 1, 254));

    s.frame->format = kPlanar10;
    s.frame->width = static_cast<int>(size.width);
    s.frame->height = static_cast<int>(size.height);
    int rc = av_frame_get_buffer(s.frame, 0);  // reference-counted: sending it copies nothing
    if (rc < 0) return "av_frame_get_buffer: " + av_error(rc);
    for (unsigned int r = 0; r < size.height; ++r) {
        const uint8_t* p = uyvy + size_t{r} * 2 * size.width;
        uint16_t *y = plane_row(s.frame, 0, r), *cb = plane_row(s.frame, 1, r),
                 *cr = plane_row(s.frame, 2, r);
        for (unsigned int k = 0; k < size.width / 2; ++k) {
            cb[k] = static_cast<uint16_t>(p[4 * k] << 2);
            y[2 * k] = static_cast<uint16_t>(p[4 * k + 1] << 2);
            cr[k] = static_cast<uint16_t>(p[4 * k + 2] << 2);
            y[2 * k + 1] = static_cast<uint16_t>(p[4 * k + 3] << 2);
        }
    }

    const Shape pack = natural_shape(Format::UYVY, Format::V210, size);
    const size_t v210 = pack.dst_bytes;
    cycbcr_set_cpu(0);
    pair_converter(Format::UYVY, Format::V210)(b.dst, uyvy, size.width, size.height, pack.dst_pitch,
                                               pack.src_pitch);
    rc = avcodec_send_frame(s.ctx, s.frame);
    if (rc >= 0) rc = avcodec_receive_packet(s.ctx, s.packet);
    if (rc < 0) return "encoding: " + av_error(rc);
    std::string verdict;
    if (static_cast<size_t>(s.packet->size) != v210)
        verdict = "encoder packet of " + std::to_string(s.packet->size) + " bytes, not " +
                  std::to_string(v210);
    else if (std::memcmp(s.packet->data, b.dst, v210) != 0)
        verdict = "encoder's v210 differs from ours: not the same work";
    av_packet_unref(s.packet);
    return verdict;
}

// Decoder input: the shared source read as v210, the frame ours unpacks. Ours
// rounds to 8 bits, min(255, (v + 2) >> 2); the decoder's 10-bit samples must
// round to the same bytes.
std::string prepare_decoder(Session& s, const FrameSize& size) {
    Buffers& b = frame_buffers(size);
    const Shape unpack = natural_shape(Format::V210, Format::UYVY, size);
    const size_t v210 = frame_bytes(Format::V210, size);
    int rc = av_new_packet(s.packet, static_cast<int>(v210));
    if (rc < 0) return "av_new_packet: " + av_error(rc);
    std::memcpy(s.packet->data, b.src, v210);

    cycbcr_set_cpu(0);
    pair_converter(Format::V210, Format::UYVY)(b.dst, b.src, size.width, size.height,
                                               unpack.dst_pitch, unpack.src_pitch);
    rc = avcodec_send_packet(s.ctx, s.packet);
    if (rc >= 0) rc = avcodec_receive_frame(s.ctx, s.frame);
    if (rc < 0) return "decoding: " + av_error(rc);
    std::string verdict;
    if (s.frame->format != kPlanar10) verdict = "decoder output is not yuv422p10";
    auto round8 = [](uint16_t v) { return static_cast<uint8_t>(std::min(255, (v + 2) >> 2)); };
    for (unsigned int r = 0; r < size.height && verdict.empty(); ++r) {
        const uint8_t* p = b.dst + size_t{r} * unpack.dst_pitch;
        const uint16_t *y = plane_row(s.frame, 0, r), *cb = plane_row(s.frame, 1, r),
                       *cr = plane_row(s.frame, 2, r);
        for (unsigned int k = 0; k < size.width / 2; ++k) {
            if (p[4 * k] != round8(cb[k]) || p[4 * k + 1] != round8(y[2 * k]) ||
                p[4 * k + 2] != round8(cr[k]) || p[4 * k + 3] != round8(y[2 * k + 1])) {
                verdict = "decoder's samples differ from ours in row " + std::to_string(r) +
                          ": not the same work";
                break;
            }
        }
    }
    av_frame_unref(s.frame);
    return verdict;  // the packet stays: every timed call sends it again
}

Session& session(bool encoder, const FrameSize& size) {
    static std::map<std::tuple<bool, unsigned, unsigned>, std::unique_ptr<Session>> sessions;
    auto& slot = sessions[{encoder, size.width, size.height}];
    if (!slot) {
        av_log_set_level(AV_LOG_ERROR);
        slot = std::make_unique<Session>();
        slot->error = open_codec(*slot, encoder, size);
        if (slot->error.empty())
            slot->error = encoder ? prepare_encoder(*slot, size) : prepare_decoder(*slot, size);
    }
    return *slot;
}

// Rates per CPU second, as for every other benchmark; bytes are the codec's
// input plus its output.
void time_encode(benchmark::State& state, Session& s, size_t moved) {
    for (auto _ : state) {
        int rc = avcodec_send_frame(s.ctx, s.frame);
        if (rc >= 0) rc = avcodec_receive_packet(s.ctx, s.packet);
        if (rc < 0) {
            state.SkipWithError(("encoding: " + av_error(rc)).c_str());
            break;
        }
        av_packet_unref(s.packet);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(moved));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

void time_decode(benchmark::State& state, Session& s, size_t moved) {
    for (auto _ : state) {
        int rc = avcodec_send_packet(s.ctx, s.packet);
        if (rc >= 0) rc = avcodec_receive_frame(s.ctx, s.frame);
        if (rc < 0) {
            state.SkipWithError(("decoding: " + av_error(rc)).c_str());
            break;
        }
        av_frame_unref(s.frame);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(moved));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

void register_codec(const std::string& name, bool encoder, const FrameSize& size,
                    benchmark::TimeUnit unit) {
    const size_t moved = planar10_bytes(size) + frame_bytes(Format::V210, size);
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Session& s = session(encoder, size);
        if (!s.error.empty()) {
            state.SkipWithError(s.error.c_str());
            return;
        }
        if (encoder)
            time_encode(state, s, moved);
        else
            time_decode(state, s, moved);
    })->Unit(unit);
}

// The allocation behind the encoder's packet (av_new_packet goes through the
// same av_buffer_realloc as the default get_encode_buffer), alone.
void register_packet_alloc(const std::string& name, size_t bytes) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        AVPacket* packet = av_packet_alloc();
        for (auto _ : state) {
            if (av_new_packet(packet, static_cast<int>(bytes)) < 0) {
                state.SkipWithError("av_new_packet failed");
                break;
            }
            benchmark::DoNotOptimize(packet->data);
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
        state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    })->Unit(benchmark::kMicrosecond);
}

// A yuv422p10 frame of the size, alone. The decoder itself takes its frames
// from a buffer pool, so this is what a call would cost without the pool.
void register_frame_alloc(const std::string& name, const FrameSize& size) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        AVFrame* frame = av_frame_alloc();
        for (auto _ : state) {
            frame->format = kPlanar10;
            frame->width = static_cast<int>(size.width);
            frame->height = static_cast<int>(size.height);
            if (av_frame_get_buffer(frame, 0) < 0) {
                state.SkipWithError("av_frame_get_buffer failed");
                break;
            }
            benchmark::DoNotOptimize(frame->data[0]);
            av_frame_unref(frame);
        }
        av_frame_free(&frame);
        state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    })->Unit(benchmark::kMicrosecond);
}

// Seconds per frame or call from a median rate; 0 when it did not run.
double seconds(double per_second) {
    return per_second == 0 ? 0 : 1 / per_second;
}

std::string fixed(double v, const char* format) {
    if (v == 0) return "-";
    char buf[32];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

std::string share(double part, double whole) {
    return part == 0 || whole == 0 ? "-" : fixed(100 * part / whole, "%.2f%%");
}

}  // namespace

FfmpegV210 register_ffmpeg_v210(const FrameSize& size) {
    FfmpegV210 names;
    names.encode = "ffmpeg:v210enc/" + size.label();
    names.decode = "ffmpeg:v210dec/" + size.label();
    names.encode_alloc = "ffmpeg:v210enc/alloc/" + size.label();
    names.decode_alloc = "ffmpeg:v210dec/alloc/" + size.label();
    register_codec(names.encode, true, size, benchmark::kMillisecond);
    register_codec(names.decode, false, size, benchmark::kMillisecond);
    register_packet_alloc(names.encode_alloc, frame_bytes(Format::V210, size));
    register_frame_alloc(names.decode_alloc, size);
    return names;
}

void add_ffmpeg_v210_note(const std::vector<FfmpegV210>& ffmpeg,
                          const std::vector<std::string>& ours_pack,
                          const std::vector<std::string>& ours_unpack) {
    const std::string encode_call = "ffmpeg:v210enc/call/" + kTinyFrame.label();
    const std::string decode_call = "ffmpeg:v210dec/call/" + kTinyFrame.label();
    register_codec(encode_call, true, kTinyFrame, benchmark::kMicrosecond);
    register_codec(decode_call, false, kTinyFrame, benchmark::kMicrosecond);

    add_summary_note([=](std::FILE* out, const Medians& m) {
        // Nothing when a filter left out every timed frame of either side.
        bool timed = false;
        for (size_t i = 0; i < ffmpeg.size(); ++i)
            for (const std::string* name :
                 {&ours_pack[i], &ours_unpack[i], &ffmpeg[i].encode, &ffmpeg[i].decode})
                timed = timed || m.items_per_second(*name) != 0;
        if (!timed) return;
        const unsigned version = avcodec_version();
        std::fprintf(out,
                     "\nFFmpeg v210, libavcodec %u.%u.%u (AVX2 code %s), one thread, send/receive "
                     "API; median time per frame.\n"
                     "  ours: level 5, UYVY <-> v210; its GB/s count the UYVY frame (2 bytes a "
                     "pixel) plus the v210 frame.\n"
                     "  FFmpeg: yuv422p10 <-> v210; its GB/s count the yuv422p10 frame (4 bytes a "
                     "pixel) plus the v210 frame.\n"
                     "  FFmpeg/ours: ratio of the times per frame, above 1 when ours is faster.\n"
                     "  API call: the same send, receive and unref on a %s frame, time per call.\n"
                     "  alloc: the buffer a call gets for a frame of the size, timed alone; "
                     "encoder: av_new_packet +\n"
                     "  av_packet_unref; decoder: av_frame_get_buffer + av_frame_unref, an upper "
                     "bound (its frames come from a pool).\n",
                     version >> 16, (version >> 8) & 0xFF, version & 0xFF,
                     (av_get_cpu_flags() & AV_CPU_FLAG_AVX2) != 0 ? "enabled" : "NOT enabled",
                     kTinyFrame.label().c_str());
        std::fprintf(out, "%-10s %-7s %9s %10s %12s  %12s %8s  %10s %8s\n", "size", "codec",
                     "ours ms", "FFmpeg ms", "FFmpeg/ours", "API call us", "share", "alloc us",
                     "share");
        const double encode_call_s = seconds(m.items_per_second(encode_call));
        const double decode_call_s = seconds(m.items_per_second(decode_call));
        for (size_t i = 0; i < ffmpeg.size(); ++i) {
            struct Line {
                const char* codec;
                const std::string& ours;
                const std::string& theirs;
                const std::string& alloc;
                double call_s;
            };
            const Line lines[] = {
                {"encode", ours_pack[i], ffmpeg[i].encode, ffmpeg[i].encode_alloc, encode_call_s},
                {"decode", ours_unpack[i], ffmpeg[i].decode, ffmpeg[i].decode_alloc, decode_call_s},
            };
            for (const Line& l : lines) {
                const double ours_s = seconds(m.items_per_second(l.ours));
                const double theirs_s = seconds(m.items_per_second(l.theirs));
                if (ours_s == 0 && theirs_s == 0) continue;
                const double alloc_s = seconds(m.items_per_second(l.alloc));
                std::fprintf(
                    out, "%-10s %-7s %9s %10s %12s  %12s %8s  %10s %8s\n",
                    kFrameSizes[i].label().c_str(), l.codec, fixed(1e3 * ours_s, "%.3f").c_str(),
                    fixed(1e3 * theirs_s, "%.3f").c_str(),
                    ours_s == 0 ? "-" : fixed(theirs_s / ours_s, "%.2f").c_str(),
                    fixed(1e6 * l.call_s, "%.2f").c_str(), share(l.call_s, theirs_s).c_str(),
                    fixed(1e6 * alloc_s, "%.2f").c_str(), share(alloc_s, theirs_s).c_str());
            }
        }
    });
}

}  // namespace cycbcr_bench
