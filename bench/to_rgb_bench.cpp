// YCbCr to RGB: every converter of the library's RGB list (frame/converters.h,
// kRgbConverterRows) at the plain level and at level 5, and its _avx2 forms at
// level 5, with matrix 0 (BT.601) and RGB type 0 (B, G, R, A), against memcpy of
// the same bytes and, where it has the conversion, libyuv.
//
// Frames are at their natural pitches: the source as its format packs it, the
// destination width * pixel bytes a row. A call counts its source frame plus
// its RGB frame.
//
// libyuv rounds its own way (BT.601 with fixed-point steps of its own), so its
// pixels are not our bytes. A peer is checked channel by channel against our
// result instead (at level 5, or at level 0 without AVX2): every B, G and R must
// be within kTolerance of ours, quantisation steps of 5- and 6-bit channels
// added; a peer that is further off is skipped, since it would not be doing
// the same work. The largest difference seen is printed after the summary.
//
// Peers: libyuv's function of the same source and depth where it has one; the
// packed sources to 24-bit RGB are set frame for frame against the 32-bit
// function of the same source (libyuv has no packed to 24-bit reader), cyuv
// against UYVYToARGB reading the frame bottom-up, and YVYU against YUY2ToARGB on
// the same frame (same work, Cb and Cr read the other way round, not checked).
// The packed sources to 15- and 16-bit RGB, and P422 to 15-bit, have none.
#include <cycbcr.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "bench_support.h"
#include "frame/geometry.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "YCbCr -> RGB";
constexpr QBYCBCRMatrix kMatrix = QBYCBCR_MATRIX_601;
constexpr QBYCBCRRgbType kRgbType = QBYCBCR_RGB_BGRA;

// CPU seconds of each repetition, half the suite's default: the plain engine
// takes some 80 ms over a 4K frame, and one such frame a repetition is enough.
// It holds whatever --benchmark_min_time says (the repetitions still follow
// --benchmark_repetitions).
constexpr double kMinTime = 0.05;

// The largest difference of a B, G or R channel from ours a peer may show
// (8-bit units, before the quantisation step of a narrow channel is added).
constexpr int kTolerance = 4;

FrameCall call_of(cycbcr_rgb_converter fn, const FrameSize& size, const Shape& shape) {
    return [=](uint8_t* dst, const uint8_t* src) {
        fn(dst, src, size.width, size.height, shape.dst_pitch, shape.src_pitch, kMatrix, kRgbType);
    };
}

// How a frame's pixels are laid out, ours at RGB type 0 and libyuv's.
enum class Pixels {
    Bgra,         // B, G, R, A bytes (ours at 32 bits; libyuv's ARGB)
    Bgr,          // B, G, R bytes (ours at 24 bits; libyuv's RGB24)
    BlueHigh565,  // little-endian words B:5 G:6 R:5 from the top (ours at 16 bits)
    BlueHigh555,  // x:1 B:5 G:5 R:5 (ours at 15 bits)
    RedHigh565,   // R:5 G:6 B:5 (libyuv's RGB565)
    RedHigh1555,  // A:1 R:5 G:5 B:5 (libyuv's ARGB1555)
};

Pixels our_pixels(Format to) {
    switch (to) {
        case Format::RGB555:
            return Pixels::BlueHigh555;
        case Format::RGB565:
            return Pixels::BlueHigh565;
        case Format::RGB24:
            return Pixels::Bgr;
        default:
            return Pixels::Bgra;
    }
}

struct Channels {
    int b, g, r;
};

// Pixel i of a frame, each channel widened to 8 bits (a 5-bit value v reads as
// v << 3, a 6-bit one as v << 2).
Channels channels(Pixels p, const uint8_t* frame, size_t i) {
    auto word = [&] { return static_cast<unsigned>(frame[2 * i] | frame[2 * i + 1] << 8); };
    auto field = [](unsigned w, int shift, int bits) {
        return static_cast<int>((w >> shift) & ((1u << bits) - 1)) << (8 - bits);
    };
    switch (p) {
        case Pixels::Bgra:
            return {frame[4 * i], frame[4 * i + 1], frame[4 * i + 2]};
        case Pixels::Bgr:
            return {frame[3 * i], frame[3 * i + 1], frame[3 * i + 2]};
        case Pixels::BlueHigh565: {
            const unsigned w = word();
            return {field(w, 11, 5), field(w, 5, 6), field(w, 0, 5)};
        }
        case Pixels::BlueHigh555: {
            const unsigned w = word();
            return {field(w, 10, 5), field(w, 5, 5), field(w, 0, 5)};
        }
        case Pixels::RedHigh565: {
            const unsigned w = word();
            return {field(w, 0, 5), field(w, 5, 6), field(w, 11, 5)};
        }
        case Pixels::RedHigh1555: {
            const unsigned w = word();
            return {field(w, 0, 5), field(w, 5, 5), field(w, 10, 5)};
        }
    }
    return {};
}

// The quantisation step of a frame's narrowest channel, in 8-bit units.
int step_of(Pixels p) {
    switch (p) {
        case Pixels::Bgra:
        case Pixels::Bgr:
            return 0;
        default:
            return 8;
    }
}

// The largest channel difference of each checked peer from ours, for the note.
std::map<std::string, int>& largest_differences() {
    static std::map<std::string, int> all;
    return all;
}

// Outside the timed loops: ours at the reference level into the scratch buffer,
// the peer into the destination buffer (set to the complement of ours first, so
// a pixel it leaves unwritten shows), then every pixel compared.
std::string compare_channels(const std::string& peer_name, const FrameCall& peer, Pixels peer_px,
                             cycbcr_rgb_converter ours, Format ours_to, const FrameSize& size,
                             const Shape& ours_shape, size_t peer_dst_bytes) {
    Buffers& b = frame_buffers(size);
    const unsigned level = avx2_usable() ? 5 : 0;
    cycbcr_set_cpu(level);
    ours(b.dst, b.src, size.width, size.height, ours_shape.dst_pitch, ours_shape.src_pitch, kMatrix,
         kRgbType);
    std::memcpy(b.scratch, b.dst, ours_shape.dst_bytes);
    for (size_t i = 0; i < peer_dst_bytes; ++i)
        b.dst[i] = static_cast<uint8_t>(~b.scratch[i % ours_shape.dst_bytes]);
    peer(b.dst, b.src);
    const Pixels ours_px = our_pixels(ours_to);
    const int allowed = kTolerance + std::max(step_of(peer_px), step_of(ours_px));
    int largest = 0;
    for (size_t i = 0; i < size.pixels(); ++i) {
        const Channels a = channels(ours_px, b.scratch, i), p = channels(peer_px, b.dst, i);
        const int d = std::max({std::abs(a.b - p.b), std::abs(a.g - p.g), std::abs(a.r - p.r)});
        largest = std::max(largest, d);
        if (d > allowed)
            return "peer pixel " + std::to_string(i) + " differs from ours (level " +
                   std::to_string(level) + ") by " + std::to_string(d) +
                   " in a channel, more than " + std::to_string(allowed) + ": not the same work";
    }
    largest_differences()[peer_name] = largest;
    return {};
}

#ifdef CYCBCR_BENCH_LIBYUV
using PackedToRgb = int (*)(const uint8_t*, int, uint8_t*, int, int, int);
using PlanarToRgb = int (*)(const uint8_t*, int, const uint8_t*, int, const uint8_t*, int, uint8_t*,
                            int, int, int);
using SemiPlanarToRgb = int (*)(const uint8_t*, int, const uint8_t*, int, uint8_t*, int, int, int);
#endif

// libyuv's function for a source format and an RGB depth.
struct PeerDef {
    Format from;
    Format writes;  // the depth it writes (its frames are counted at it)
    const char* function;
    const char* mark;  // after the name in the summary: how it stands in
    Pixels pixels;
    bool checked;
#ifdef CYCBCR_BENCH_LIBYUV
    PackedToRgb packed;
    PlanarToRgb planar;
    SemiPlanarToRgb semi;
    bool bottom_up;  // reads the source bottom-up (a negative height)
#endif
};

#ifdef CYCBCR_BENCH_LIBYUV
constexpr PeerDef packed_peer(Format from, const char* function, PackedToRgb fn,
                              const char* mark = "", bool checked = true, bool bottom_up = false) {
    return {from, Format::RGB32, function, mark,     Pixels::Bgra, checked,
            fn,   nullptr,       nullptr,  bottom_up};
}
constexpr PeerDef planar_peer(Format from, Format writes, const char* function, Pixels pixels,
                              PlanarToRgb fn) {
    return {from, writes, function, "", pixels, true, nullptr, fn, nullptr, false};
}

const PeerDef kPeers[] = {
    packed_peer(Format::UYVY, "UYVYToARGB", libyuv::UYVYToARGB),
    packed_peer(Format::YUY2, "YUY2ToARGB", libyuv::YUY2ToARGB),
    packed_peer(Format::YVYU, "YUY2ToARGB", libyuv::YUY2ToARGB, "*", false),
    packed_peer(Format::CYUV, "UYVYToARGB", libyuv::UYVYToARGB, " flip", true, true),
    planar_peer(Format::I420, Format::RGB32, "I420ToARGB", Pixels::Bgra, libyuv::I420ToARGB),
    planar_peer(Format::YV12, Format::RGB32, "I420ToARGB", Pixels::Bgra, libyuv::I420ToARGB),
    planar_peer(Format::P422, Format::RGB32, "I422ToARGB", Pixels::Bgra, libyuv::I422ToARGB),
    {Format::NV12, Format::RGB32, "NV12ToARGB", "", Pixels::Bgra, true, nullptr, nullptr,
     libyuv::NV12ToARGB, false},
    planar_peer(Format::I420, Format::RGB24, "I420ToRGB24", Pixels::Bgr, libyuv::I420ToRGB24),
    planar_peer(Format::YV12, Format::RGB24, "I420ToRGB24", Pixels::Bgr, libyuv::I420ToRGB24),
    planar_peer(Format::P422, Format::RGB24, "I422ToRGB24", Pixels::Bgr, libyuv::I422ToRGB24),
    planar_peer(Format::I420, Format::RGB565, "I420ToRGB565", Pixels::RedHigh565,
                libyuv::I420ToRGB565),
    planar_peer(Format::YV12, Format::RGB565, "I420ToRGB565", Pixels::RedHigh565,
                libyuv::I420ToRGB565),
    planar_peer(Format::P422, Format::RGB565, "I422ToRGB565", Pixels::RedHigh565,
                libyuv::I422ToRGB565),
    planar_peer(Format::I420, Format::RGB555, "I420ToARGB1555", Pixels::RedHigh1555,
                libyuv::I420ToARGB1555),
    planar_peer(Format::YV12, Format::RGB555, "I420ToARGB1555", Pixels::RedHigh1555,
                libyuv::I420ToARGB1555),
};

// The peer over the shared buffers: our source frame where ours reads it (the
// planes where the library puts them), its RGB frame at its natural pitch.
FrameCall peer_call(const PeerDef& p, const FrameSize& size) {
    const int w = static_cast<int>(size.width), h = static_cast<int>(size.height);
    const int sp = static_cast<int>(cycbcr::natural_pitch(p.from, size.width));
    const int dp = static_cast<int>(cycbcr::natural_pitch(p.writes, size.width));
    if (p.packed != nullptr) {
        const PackedToRgb fn = p.packed;
        const int rows = p.bottom_up ? -h : h;
        return [=](uint8_t* dst, const uint8_t* src) { fn(src, sp, dst, dp, w, rows); };
    }
    if (p.semi != nullptr) {
        const SemiPlanarToRgb fn = p.semi;
        const size_t chroma = size_t{size.width} * size.height;
        return
            [=](uint8_t* dst, const uint8_t* src) { fn(src, sp, src + chroma, sp, dst, dp, w, h); };
    }
    const PlanarToRgb fn = p.planar;
    const Format from = p.from;
    const unsigned height = size.height;
    return [=](uint8_t* dst, const uint8_t* src) {
        const cycbcr::Planes pl = cycbcr::planar_planes(from, const_cast<uint8_t*>(src),
                                                        static_cast<uint32_t>(sp), height);
        fn(pl.y, sp, pl.cb, sp / 2, pl.cr, sp / 2, dst, dp, w, h);
    };
}
#endif

// The peer of a row: libyuv's function of the same source and depth, else (for
// a packed source to 24 bits) the 32-bit one, compared frame for frame.
const PeerDef* peer_for(Format from, Format to, bool& per_frame) {
    per_frame = false;
#ifdef CYCBCR_BENCH_LIBYUV
    for (const PeerDef& p : kPeers)
        if (p.from == from && p.writes == to) return &p;
    if (cycbcr::is_packed422(from) && to == Format::RGB24) {
        for (const PeerDef& p : kPeers)
            if (p.from == from && p.writes == Format::RGB32) {
                per_frame = true;
                return &p;
            }
    }
#endif
    (void)from;
    (void)to;
    return nullptr;
}

// What level 5 has to reach: libyuv's speed where the fast paths serve the
// common cases, three times the plain level where the rules send a call to the
// engine.
void set_targets(const cycbcr::RgbConverterRow& r, SummaryRow& row) {
    if (!r.pair) return;
    const bool to32 = r.to == Format::RGB32, to24 = r.to == Format::RGB24;
    if ((to32 && (r.from == Format::UYVY || r.from == Format::P422 || r.from == Format::I420)) ||
        (to24 && r.from == Format::UYVY))
        row.peer_target = 1.00;
    else if ((to32 && (r.from == Format::YUY2 || r.from == Format::YVYU)) || to24)
        row.plain_target = 3.00;
}

}  // namespace

void register_to_rgb_benchmarks() {
    set_family_heading(
        kFamily,
        "YCbCr -> RGB (matrix 0, RGB type 0 = B, G, R, A): the source frame plus the RGB frame "
        "per call. Targets at level 5: UYVY, P422 and I420 to 32 bits and UYVY to 24 bits (frame "
        "for "
        "frame) >= libyuv;\nYUY2 and YVYU to 32 bits and the other 24-bit outputs >= 3 x their "
        "plain level.\nlibyuv rounds its own way: its B, G, R checked to within "
        "a few units of ours. \"/frame\": the 32-bit peer of the\nsame source, frame for frame; "
        "\"flip\": reads the source bottom-up; \"*\": YUY2 reader on the YVYU frame (not "
        "checked)");
    for (const FrameSize& size : kFrameSizes) {
        std::set<std::string> peers;
        for (const cycbcr::RgbConverterRow& r : cycbcr::kRgbConverterRows) {
            if (r.alias || r.from == cycbcr::Format::V210) continue;  // v210_to_rgb_bench
            const Shape shape = natural_shape(r.from, r.to, size);
            check_named_reach(r.name, size, shape, kMatrix, kRgbType);
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = short_name(r.name);
            // Level 5 runs AVX2 row kernels on every route (the engine's, and
            // the image-library routes').
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

            bool per_frame = false;
            if (const PeerDef* p = r.pair ? peer_for(r.from, r.to, per_frame) : nullptr) {
#ifdef CYCBCR_BENCH_LIBYUV
                const std::string label = std::string("libyuv:") + p->function + p->mark;
                std::string source = cycbcr::info(p->from).name;
                for (char& c : source) c = static_cast<char>(std::tolower(c));
                row.peer = label + "/" + source + "/" + size.label();
                row.peer_label = per_frame ? label + " /frame" : label;
                row.peer_per_frame = per_frame;
                if (peers.insert(row.peer).second) {
                    const FrameCall call = peer_call(*p, size);
                    const size_t written = frame_bytes(p->writes, size);
                    Verdict check;
                    if (p->checked)
                        check = [=, name = row.peer, pixels = p->pixels, ours = r.fn, to = r.to] {
                            return compare_channels(name, call, pixels, ours, to, size, shape,
                                                    written);
                        };
                    register_call(row.peer, call, size, frame_bytes(p->from, size) + written, -1,
                                  false, check)
                        ->MinTime(kMinTime);
                }
#else
                (void)p;
#endif
            }
            set_targets(r, row);
            add_summary_row(std::move(row));
        }
    }
    add_summary_note([](std::FILE* out, const Medians&) {
        if (largest_differences().empty()) return;
        std::fprintf(out,
                     "\nlibyuv's RGB against ours: the largest B, G or R difference over the "
                     "frame, in 8-bit units (15- and\n16-bit pixels widened: one step of a 5-bit "
                     "channel is 8)\n");
        // One line a peer and source, the sizes side by side.
        std::map<std::string, std::string> lines;
        for (const auto& [name, largest] : largest_differences()) {
            const size_t cut = name.rfind('/');
            std::string& line = lines[name.substr(0, cut)];
            line +=
                (line.empty() ? "" : ", ") + name.substr(cut + 1) + " " + std::to_string(largest);
        }
        for (const auto& [peer, sizes] : lines)
            std::fprintf(out, "  %-36s %s\n", peer.c_str(), sizes.c_str());
    });
}

}  // namespace cycbcr_bench
