// RGB -> 8-bit YCbCr: every converter of the library's list (frame/converters.h,
// kFromRgbConverterRows) at the plain level and at level 5, with matrix 0 (BT.601)
// and RGB type 0 (B, G, R, A), against memcpy of the same bytes and libyuv.
//
// Level 5 sends BGRA to 4:2:2 to the 14-bit engine, everything else (4:2:0, 24-
// and 64-bit sources) to the exact millionths engine with its vector rows. Below
// level 5, BGRA to UYVY takes the image-library route; it is timed apart at level
// 4 (the plain level, 0, runs the same route with plain rows).
//
// libyuv's chroma is averaged over 2x2 (4:2:0) or 2x1 pixels and its luma
// rounded its own way, so its bytes are not ours: each peer is checked sample
// by sample against our result within kTolerance (a peer further off is
// skipped: it would not be doing the same work). The peers of the packed 24-bit
// and 64-bit rows, which libyuv does not convert, are set frame for frame
// against RGB24ToI420 / ARGBToUYVY.
#include <cycbcr.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "bench_support.h"
#include "frame/geometry.h"

#ifdef CYCBCR_BENCH_SWS
#include "sws_v210_chain.h"
#endif
#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/convert.h>
#include <libyuv/convert_from_argb.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "RGB -> YCbCr";
constexpr QBYCBCRMatrix kMatrix = QBYCBCR_MATRIX_601;
constexpr QBYCBCRRgbType kRgbType = QBYCBCR_RGB_BGRA;
constexpr double kMinTime = 0.05;
// libyuv averages chroma over its pixels where ours takes the even one: on
// random frames that is far apart, so peers are checked on a smooth frame.
constexpr int kTolerance = 3;

FrameCall call_of(cycbcr_from_rgb_converter fn, const FrameSize& size, const Shape& shape) {
    return [=](uint8_t* dst, const uint8_t* src) {
        fn(dst, src, size.width, size.height, shape.dst_pitch, shape.src_pitch, kMatrix, kRgbType);
    };
}

#ifdef CYCBCR_BENCH_LIBYUV
using ToPacked = int (*)(const uint8_t*, int, uint8_t*, int, int, int);
using ToPlanar = int (*)(const uint8_t*, int, uint8_t*, int, uint8_t*, int, uint8_t*, int, int,
                         int);

struct PeerDef {
    Format from, to;
    const char* function;
    ToPacked packed;
    ToPlanar planar;
};
const PeerDef kPeers[] = {
    {Format::RGB32, Format::UYVY, "ARGBToUYVY", libyuv::ARGBToUYVY, nullptr},
    {Format::RGB32, Format::YUY2, "ARGBToYUY2", libyuv::ARGBToYUY2, nullptr},
    {Format::RGB32, Format::P422, "ARGBToI422", nullptr, libyuv::ARGBToI422},
    {Format::RGB32, Format::I420, "ARGBToI420", nullptr, libyuv::ARGBToI420},
    {Format::RGB32, Format::YV12, "ARGBToI420", nullptr, libyuv::ARGBToI420},
    {Format::RGB24, Format::I420, "RGB24ToI420", nullptr, libyuv::RGB24ToI420},
    {Format::RGB24, Format::YV12, "RGB24ToI420", nullptr, libyuv::RGB24ToI420},
};

FrameCall peer_call(const PeerDef& p, const FrameSize& size) {
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    const int sp = static_cast<int>(cycbcr::natural_pitch(p.from, size.width));
    const int dp = static_cast<int>(cycbcr::natural_pitch(p.to, size.width));
    if (p.packed != nullptr) {
        const ToPacked fn = p.packed;
        return [=](uint8_t* dst, const uint8_t* src) { fn(src, sp, dst, dp, w, h); };
    }
    const ToPlanar fn = p.planar;
    const Format to = p.to;
    const unsigned height = size.height;
    return [=](uint8_t* dst, const uint8_t* src) {
        const cycbcr::Planes pl = cycbcr::planar_planes(to, dst, static_cast<uint32_t>(dp), height);
        fn(src, sp, pl.y, dp, pl.cb, dp / 2, pl.cr, dp / 2, w, h);
    };
}

// The source buffer as a smooth picture (gradients), so that chroma averaged
// over neighbours stays close to the even pixel's; restored after the check.
std::string compare_samples(const FrameCall& peer, cycbcr_from_rgb_converter ours,
                            const FrameSize& size, const Shape& shape, Format from) {
    Buffers& b = frame_buffers(size);
    const size_t bytes = frame_bytes(from, size);
    std::string saved(reinterpret_cast<const char*>(b.src), bytes);
    const size_t px = cycbcr::natural_pitch(from, 1);
    for (size_t i = 0; i < size.pixels(); ++i) {
        const size_t x = i % size.width, y = i / size.width;
        uint8_t* p = b.src + i * px;
        p[0] = static_cast<uint8_t>(x * 255 / size.width);
        p[1] = static_cast<uint8_t>(y * 255 / size.height);
        p[2] = static_cast<uint8_t>((x + y) * 127 / (size.width + size.height) + 64);
        if (px == 4) p[3] = 255;
    }
    cycbcr_set_cpu(avx2_usable() ? 5 : 0);
    ours(b.scratch, b.src, size.width, size.height, shape.dst_pitch, shape.src_pitch, kMatrix,
         kRgbType);
    std::memset(b.dst, 0, shape.dst_bytes);
    peer(b.dst, b.src);
    int largest = 0;
    for (size_t i = 0; i < shape.dst_bytes; ++i)
        largest = std::max(largest, std::abs(int{b.dst[i]} - int{b.scratch[i]}));
    std::memcpy(b.src, saved.data(), bytes);
    if (largest > kTolerance)
        return "a sample differs from ours by " + std::to_string(largest) + ": not the same work";
    return {};
}
#endif

// The peer of a row: libyuv's function of the same formats, else the 4:2:0
// one of the same source depth (frame for frame).
const char* kPerFramePeer = " /frame";

}  // namespace

void register_from_rgb_benchmarks() {
    set_family_heading(
        kFamily,
        "RGB -> YCbCr (matrix 0, RGB type 0 = B, G, R, A): the RGB frame plus the YCbCr frame "
        "per call. Targets at level 5: BGRA to UYVY\nand to P422 >= libyuv; BGRA to I420 and "
        "every 24-bit source >= 0.5 x libyuv (24-bit: RGB24ToI420 frame for frame); the\n"
        "image-library route of RGB32_to_uyvy, timed at level 4 (in the level 5 column of its "
        "row), >= libyuv. libyuv averages chroma,\nwe take the even pixel: checked within "
        "3 units on a smooth frame. BGRA to v210 >= 2 x libswscale (BGRA -> yuv422p10le) "
        "followed by FFmpeg's v210 encoder.");
    for (const FrameSize& size : kFrameSizes) {
        std::set<std::string> peers;
        for (const cycbcr::FromRgbConverterRow& r : cycbcr::kFromRgbConverterRows) {
            if (r.alias) continue;
            const Shape shape = natural_shape(r.from, r.to, size);
            check_named_reach(r.name, size, shape, kMatrix, kRgbType);
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = short_name(r.name);
            row.level5_form = true;
            row.memcpy = memcpy_benchmark(size, shape.moved / 2);
            const std::string base = row.converter + "/" + size.label();
            if (r.pair) {
                row.plain = base + "/plain";
                register_call(row.plain, call_of(r.fn, size, shape), size, shape.moved, 0, false)
                    ->MinTime(kMinTime);
            }
            row.level5 = base + "/level5";
            register_call(row.level5, call_of(r.fn, size, shape), size, shape.moved, 5, true)
                ->MinTime(kMinTime);
#ifdef CYCBCR_BENCH_LIBYUV
            const PeerDef* peer = nullptr;
            bool perFrame = false;
            for (const PeerDef& p : kPeers)
                if (p.from == r.from && p.to == r.to) peer = &p;
            if (peer == nullptr && r.pair && r.to != Format::V210) {
                // 24-bit rows against RGB24ToI420, 64-bit against ARGBToUYVY.
                const Format alt = r.from == Format::RGB24 ? Format::I420 : Format::UYVY;
                const Format altFrom = r.from == Format::RGB24 ? Format::RGB24 : Format::RGB32;
                for (const PeerDef& p : kPeers)
                    if (p.from == altFrom && p.to == alt) peer = &p;
                perFrame = peer != nullptr;
            }
            if (peer != nullptr) {
                const std::string label = std::string("libyuv:") + peer->function;
                row.peer = label + "/" + size.label();
                row.peer_label = perFrame ? label + kPerFramePeer : label;
                row.peer_per_frame = perFrame;
                if (peers.insert(row.peer).second) {
                    const FrameCall call = peer_call(*peer, size);
                    const Shape ps = natural_shape(peer->from, peer->to, size);
                    cycbcr_from_rgb_converter ours = nullptr;
                    for (const cycbcr::FromRgbConverterRow& o : cycbcr::kFromRgbConverterRows)
                        if (o.from == peer->from && o.to == peer->to && o.pair) ours = o.fn;
                    const Format from = peer->from;
                    Verdict check = [=] { return compare_samples(call, ours, size, ps, from); };
                    register_call(row.peer, call, size, ps.moved, -1, false, check)
                        ->MinTime(kMinTime);
                }
            }
            const bool to422 = r.to == Format::UYVY || r.to == Format::P422;
            if (r.pair && r.from == Format::RGB32 && to422 && !perFrame)
                row.peer_target = 1.00;
            else if (r.pair && r.to != Format::V210 &&
                     (r.from == Format::RGB24 || r.to == Format::I420))
                row.peer_target = 0.50;
#endif
#ifdef CYCBCR_BENCH_SWS
            // BGRA to v210 against libswscale's yuv422p10le and the v210 encoder.
            if (r.pair && r.from == Format::RGB32 && r.to == Format::V210) {
                row.peer = register_sws_v210_chain(size, shape.moved);
                row.peer_label = "sws+v210enc";
                row.peer_target = 2.00;
            }
#endif
            add_summary_row(std::move(row));
        }
        // The image-library route of BGRA to UYVY, at level 4.
        const Shape shape = natural_shape(Format::RGB32, Format::UYVY, size);
        SummaryRow row;
        row.family = kFamily;
        row.size = size.label();
        row.converter = "RGB32_to_uyvy@4";
        row.level5_form = true;
        row.memcpy = memcpy_benchmark(size, shape.moved / 2);
        row.level5 = "RGB32_to_uyvy/" + size.label() + "/level4";
        register_call(row.level5, call_of(cycbcr_RGB32_to_uyvy, size, shape), size, shape.moved, 4,
                      false)
            ->MinTime(kMinTime);
#ifdef CYCBCR_BENCH_LIBYUV
        row.peer = "libyuv:ARGBToUYVY/" + size.label();
        row.peer_label = "libyuv:ARGBToUYVY";
        row.peer_target = 1.00;
#endif
        add_summary_row(std::move(row));
    }
}

}  // namespace cycbcr_bench
