#include "deep_rgb.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "deep_conversions.h"
#include "rgb_layouts.h"
#include "tool_error.h"

namespace cycbcr_tool {

// The library's high-bit-depth colour converters, by argument list.
using PackedFn = unsigned int (*)(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                  const uint8_t* cr, unsigned int width, unsigned int height,
                                  unsigned int dstPitch, unsigned int srcPitch,
                                  QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, int32_t is422,
                                  unsigned int planar, unsigned int depth,
                                  unsigned int chromaPitch);
using PlanesFn = unsigned int (*)(uint8_t* r, uint8_t* g, uint8_t* b, const uint8_t* y,
                                  const uint8_t* cb, const uint8_t* cr, unsigned int width,
                                  unsigned int height, unsigned int dstPitch, unsigned int srcPitch,
                                  QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, int32_t is422,
                                  unsigned int planar, unsigned int chromaPitch);
// (Y, Cb, Cr, source, width, height, Y pitch, chroma pitch, source pitch,
// matrix, type, bits) or, with `shared_pitch`, without the chroma pitch.
using FromRgbFn = unsigned int (*)(void* y, void* cb, void* cr, const void* src, unsigned int width,
                                   unsigned int height, unsigned int yPitch,
                                   unsigned int chromaPitch, unsigned int srcPitch,
                                   QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, unsigned int bits);
using FromRgbSharedFn = unsigned int (*)(void* y, void* cb, void* cr, const void* src,
                                         unsigned int width, unsigned int height,
                                         unsigned int pitch, unsigned int srcPitch,
                                         QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
                                         unsigned int bits);

namespace {

// Output depth arguments by target.
struct TargetDepth {
    RgbTarget target;
    unsigned int depth;
};

RgbTarget packed(RgbDepth d) {
    return {d, std::nullopt};
}
RgbTarget extra(RgbExtra e) {
    return {std::nullopt, e};
}

bool same_target(const RgbTarget& a, const RgbTarget& b) {
    return a.depth == b.depth && a.extra == b.extra;
}

}  // namespace

struct ToRgbMember {
    const char* name;
    std::vector<int> sources;  // DeepFormat values, or -1 - Format for coded 8-bit planar
    std::vector<TargetDepth> targets;
    PackedFn packed = nullptr;
    PlanesFn planes = nullptr;
    uint32_t sample_bytes;  // of the source planes
    uint32_t out_bytes;     // of one output sample (planes) or pixel (packed: 0, from depth)
};

struct FromRgbMember {
    const char* name;
    std::vector<RgbDepth> sources;
    DeepFormat to;
    FromRgbFn fn = nullptr;
    FromRgbSharedFn shared = nullptr;
    // The last argument: bits per pixel of the source, or the output depth
    // (10: samples stored << 6) for the RGB10 converter.
    int last_arg;  // -1: the source's bits per pixel
};

namespace {

using D = DeepFormat;

int coded(Format f) {
    return -1 - static_cast<int>(f);
}

const std::vector<ToRgbMember>& to_rgb_members() {
    const std::vector<int> p10 = {static_cast<int>(D::Yuv420p10), static_cast<int>(D::Yuv422p10)};
    const std::vector<int> p12 = {static_cast<int>(D::Yuv420p12), static_cast<int>(D::Yuv422p12)};
    const std::vector<int> p16 = {static_cast<int>(D::Yuv420p16), static_cast<int>(D::Yuv422p16)};
    const std::vector<int> p8 = {coded(Format::I420), coded(Format::YV12), coded(Format::P422)};
    const std::vector<TargetDepth> eight = {{packed(RgbDepth::Rgb555), 15},
                                            {packed(RgbDepth::Rgb565), 16},
                                            {packed(RgbDepth::Rgb24), 24},
                                            {packed(RgbDepth::Rgb32), 32}};
    const std::vector<TargetDepth> sixteen = {{packed(RgbDepth::Rgb48), 48},
                                              {packed(RgbDepth::Rgb64), 64}};
    static const std::vector<ToRgbMember> all = {
        {"cycbcr_10ToRGBInt", p10, eight, cycbcr_10ToRGBInt, nullptr, 2, 0},
        {"cycbcr_10ToRGBInt16", p10, sixteen, cycbcr_10ToRGBInt16, nullptr, 2, 0},
        {"cycbcr_10ToRGBInt10",
         p10,
         {{extra(RgbExtra::Word10), 32}},
         cycbcr_10ToRGBInt10,
         nullptr,
         2,
         0},
        {"cycbcr_12ToRGB", p12, sixteen, cycbcr_12ToRGB, nullptr, 2, 0},
        {"cycbcr_12ToRGBInt16", p12, sixteen, cycbcr_12ToRGBInt16, nullptr, 2, 0},
        {"cycbcr_16ToRGB8", p16, eight, cycbcr_16ToRGB8, nullptr, 2, 0},
        {"cycbcr_10ToRGBPlanarInt",
         p10,
         {{extra(RgbExtra::Planes8), 0}},
         nullptr,
         cycbcr_10ToRGBPlanarInt,
         2,
         1},
        {"cycbcr_10ToRGBPlanarInt16",
         p10,
         {{extra(RgbExtra::Planes16), 0}},
         nullptr,
         cycbcr_10ToRGBPlanarInt16,
         2,
         2},
        {"cycbcr_10ToRGBPlanarInt10",
         p10,
         {{extra(RgbExtra::Planes16), 0}},
         nullptr,
         cycbcr_10ToRGBPlanarInt10,
         2,
         2},
        {"cycbcr_12ToRGBPlanar",
         p12,
         {{extra(RgbExtra::Planes16), 0}},
         nullptr,
         cycbcr_12ToRGBPlanar,
         2,
         2},
        {"cycbcr_12ToRGBPlanarInt16",
         p12,
         {{extra(RgbExtra::Planes16), 0}},
         nullptr,
         cycbcr_12ToRGBPlanarInt16,
         2,
         2},
        {"cycbcr_ToRGBPlanar",
         p8,
         {{extra(RgbExtra::Planes8), 0}},
         nullptr,
         cycbcr_ToRGBPlanar,
         1,
         1},
        {"cycbcr_ToRGBPlanarInt",
         p8,
         {{extra(RgbExtra::Planes8), 0}},
         nullptr,
         cycbcr_ToRGBPlanarInt,
         1,
         1},
        {"cycbcr_ToRGBPlanarInt_avx2",
         p8,
         {{extra(RgbExtra::Planes8), 0}},
         nullptr,
         cycbcr_ToRGBPlanarInt_avx2,
         1,
         1},
        {"cycbcr_ToRGBPlanarInt16",
         p8,
         {{extra(RgbExtra::Planes16), 0}},
         nullptr,
         cycbcr_ToRGBPlanarInt16,
         1,
         2},
        {"cycbcr_ToRGBPlanarInt16_avx2",
         p8,
         {{extra(RgbExtra::Planes16), 0}},
         nullptr,
         cycbcr_ToRGBPlanarInt16_avx2,
         1,
         2},
        {"cycbcr_ToRGBPlanarFloat",
         p8,
         {{extra(RgbExtra::PlanesFloat), 0}},
         nullptr,
         cycbcr_ToRGBPlanarFloat,
         1,
         4},
    };
    return all;
}

const std::vector<FromRgbMember>& from_rgb_members() {
    using R = RgbDepth;
    static const std::vector<FromRgbMember> all = {
        {"cycbcr_RGB32_to_yuv444p10",
         {R::Rgb24, R::Rgb32},
         D::Yuv444p10,
         cycbcr_RGB32_to_yuv444p10,
         nullptr,
         -1},
        {"cycbcr_RGB64_to_yuv444p10",
         {R::Rgb48, R::Rgb64},
         D::Yuv444p10,
         cycbcr_RGB64_to_yuv444p10,
         nullptr,
         -1},
        {"cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS",
         {R::Rgb48, R::Rgb64},
         D::Yuv444p10,
         nullptr,
         cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS,
         -1},
        {"cycbcr_RGB64_to_yuv422p12",
         {R::Rgb48, R::Rgb64},
         D::Yuv422p12,
         cycbcr_RGB64_to_yuv422p12,
         nullptr,
         -1},
        {"cycbcr_RGB64_to_YCbCrPlanar16",
         {R::Rgb48, R::Rgb64},
         D::Yuv422p16,
         nullptr,
         cycbcr_RGB64_to_YCbCrPlanar16,
         -1},
        {"cycbcr_RGB10_to_YCbCrPlanar16",
         {R::Rgb10},
         D::Yuv422p16,
         nullptr,
         cycbcr_RGB10_to_YCbCrPlanar16,
         10},
        {"cycbcr_RGB10_to_YCbCrPlanar16",
         {R::Rgb10},
         D::Yuv422p10,
         nullptr,
         cycbcr_RGB10_to_YCbCrPlanar16,
         16},
    };
    return all;
}

uint32_t round_up(uint32_t n, uint32_t m) {
    return (n + m - 1) / m * m;
}

std::vector<uint8_t> buffer(uint64_t bytes) {
    if (bytes > SIZE_MAX / 2) throw ToolError("frame too large for this machine");
    return std::vector<uint8_t>(static_cast<size_t>(bytes));
}

uint32_t bits_of(RgbDepth d) {
    return rgb_pixel_bytes(d) * 8;
}

bool member_exists(const char* name) {
    // Members that need AVX2 are offered only where the library would take them.
    if (std::strstr(name, "_avx2") == nullptr) return true;
    return (cycbcr_cpu_flags() & 0x800000u) != 0;
}

// A plane as the command copies it: rows of `bytes` bytes.
struct Copy {
    uint64_t file_offset;
    uint32_t bytes;
    uint32_t rows;
};

// Copies rows between a file frame and a working plane `pitch` apart,
// repeating the last row (and the last `unit` bytes of each row) out to
// `call_rows` rows of `call_bytes` bytes when filling.
void fill_plane(uint8_t* work, uint32_t pitch, uint32_t call_bytes, uint32_t call_rows,
                const uint8_t* file, const Copy& c, uint32_t unit) {
    for (uint32_t r = 0; r < call_rows && c.rows > 0; ++r) {
        const uint8_t* in = file + c.file_offset + uint64_t{std::min(r, c.rows - 1)} * c.bytes;
        uint8_t* out = work + uint64_t{r} * pitch;
        std::memcpy(out, in, c.bytes);
        for (uint32_t at = c.bytes; at + unit <= call_bytes && c.bytes >= unit; at += unit) {
            std::memcpy(out + at, in + c.bytes - unit, unit);
        }
    }
}

void empty_plane(uint8_t* file, const Copy& c, const uint8_t* work, uint32_t pitch,
                 uint32_t first_row) {
    for (uint32_t r = 0; r < c.rows; ++r) {
        std::memcpy(file + c.file_offset + uint64_t{r} * c.bytes,
                    work + uint64_t{first_row + r} * pitch, c.bytes);
    }
}

}  // namespace

std::optional<RgbExtra> parse_rgb_extra(std::string_view text) {
    for (const RgbExtra e :
         {RgbExtra::Planes8, RgbExtra::Planes16, RgbExtra::PlanesFloat, RgbExtra::Word10}) {
        const std::string_view name = rgb_extra_name(e);
        if (text.size() == name.size() &&
            std::equal(text.begin(), text.end(), name.begin(), [](char a, char b) {
                return std::tolower(static_cast<unsigned char>(a)) == b;
            })) {
            return e;
        }
    }
    return std::nullopt;
}

const char* rgb_extra_name(RgbExtra extra) {
    switch (extra) {
        case RgbExtra::Planes8:
            return "rgbp8";
        case RgbExtra::Planes16:
            return "rgbp16";
        case RgbExtra::PlanesFloat:
            return "rgbpf";
        case RgbExtra::Word10:
            return "rgb10p";
    }
    return "?";
}

namespace {
uint32_t extra_sample_bytes(RgbExtra e) {
    return e == RgbExtra::Planes8 ? 1 : e == RgbExtra::Planes16 ? 2 : 4;
}
}  // namespace

FrameLayout rgb_extra_layout(RgbExtra extra, uint32_t width, uint32_t height) {
    const uint32_t pitch = width * extra_sample_bytes(extra);
    const uint64_t plane = uint64_t{pitch} * height;
    return {pitch, extra == RgbExtra::Word10 ? plane : 3 * plane};
}

std::vector<uint8_t> rgb_extra_to_rgb24(RgbExtra extra, QBYCBCRRgbType type,
                                        std::span<const uint8_t> frame, uint32_t width,
                                        uint32_t height) {
    std::vector<uint8_t> out(size_t{width} * height * 3);
    const FrameLayout l = rgb_extra_layout(extra, width, height);
    const uint64_t plane = uint64_t{l.pitch} * height;
    const bool bottom_up = is_bottom_up(type);
    for (uint32_t row = 0; row < height; ++row) {
        const uint32_t stored = bottom_up ? height - 1 - row : row;
        for (uint32_t x = 0; x < width; ++x) {
            uint8_t* px = out.data() + (size_t{row} * width + x) * 3;
            const uint64_t at = uint64_t{stored} * l.pitch;
            if (extra == RgbExtra::Word10) {
                const uint8_t* w = frame.data() + at + 4 * uint64_t{x};
                px[0] = w[2];
                px[1] = w[1];
                px[2] = w[0];
                continue;
            }
            for (int c = 0; c < 3; ++c) {
                const uint8_t* s = frame.data() + c * plane + at;
                switch (extra) {
                    case RgbExtra::Planes8:
                        px[c] = s[x];
                        break;
                    case RgbExtra::Planes16:
                        px[c] = s[2 * x + 1];
                        break;
                    default: {
                        float f;
                        std::memcpy(&f, s + 4 * uint64_t{x}, 4);
                        // Values on the 8-bit scale.
                        const float v = std::isnan(f) ? 0.0f : std::clamp(f, 0.0f, 255.0f);
                        px[c] = static_cast<uint8_t>(std::lround(v));
                    }
                }
            }
        }
    }
    return out;
}

std::string RgbTarget::text() const {
    return depth ? rgb_depth_name(*depth) : rgb_extra_name(*extra);
}

FrameLayout RgbTarget::layout(uint32_t width, uint32_t height) const {
    return depth ? rgb_layout(*depth, width, height) : rgb_extra_layout(*extra, width, height);
}

const ToRgbMember* find_to_rgb_member(const Endpoint& from, const RgbTarget& target,
                                      const std::string& name) {
    const int source = from.deep ? static_cast<int>(*from.deep) : coded(from.code->format);
    for (const ToRgbMember& m : to_rgb_members()) {
        if (!name.empty() && name != m.name) continue;
        if (!member_exists(m.name)) continue;
        if (std::find(m.sources.begin(), m.sources.end(), source) == m.sources.end()) continue;
        for (const TargetDepth& t : m.targets) {
            if (same_target(t.target, target)) return &m;
        }
    }
    return nullptr;
}

const FromRgbMember* find_from_rgb_member(RgbDepth from, DeepFormat to, const std::string& name) {
    for (const FromRgbMember& m : from_rgb_members()) {
        if (!name.empty() && name != m.name) continue;
        if (m.to != to) continue;
        if (std::find(m.sources.begin(), m.sources.end(), from) != m.sources.end()) return &m;
    }
    return nullptr;
}

std::vector<std::string> deep_rgb_member_names() {
    std::vector<std::string> names;
    for (const ToRgbMember& m : to_rgb_members()) names.push_back(m.name);
    for (const FromRgbMember& m : from_rgb_members()) {
        if (std::find(names.begin(), names.end(), m.name) == names.end()) names.push_back(m.name);
    }
    return names;
}

// ---------------------------------------------------------------------------
// Planar YCbCr to RGB.

struct DeepToRgbConverter::Work {
    const ToRgbMember* member;
    uint32_t width, height, call_width, call_height;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType type;
    bool is422;
    unsigned int depth = 0;
    uint32_t src_pitch = 0, chroma_pitch = 0, dst_pitch = 0, out_sample = 0;
    std::vector<Copy> src_copies, dst_copies;
    std::vector<uint32_t> src_call_rows;
    std::vector<std::vector<uint8_t>> src, dst;
    std::vector<uint8_t> file_src, file_dst;
    bool swap_chroma = false;  // YV12: Cr plane first in the file
};

DeepToRgbConverter::DeepToRgbConverter(const ToRgbMember& member, const Endpoint& from,
                                       const RgbTarget& target, uint32_t width, uint32_t height,
                                       QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type)
    : work_(std::make_unique<Work>()) {
    Work& w = *work_;
    w.member = &member;
    w.width = width;
    w.height = height;
    w.matrix = matrix;
    w.type = rgb_type;
    for (const TargetDepth& t : member.targets) {
        if (same_target(t.target, target)) w.depth = t.depth;
    }
    // The source planes as the file holds them.
    uint32_t cx_rows_420 = 0;
    if (from.deep) {
        w.is422 = deep_chroma_y(*from.deep) == 1;
        for (const DeepPlane& p : deep_planes(*from.deep, width, height)) {
            w.src_copies.push_back({p.offset, static_cast<uint32_t>(p.row_bytes()), p.rows});
        }
        w.file_src = buffer(deep_layout(*from.deep, width, height).frame_bytes);
        cx_rows_420 = w.is422 ? 0 : 1;
    } else {
        const Format f = from.code->format;
        w.is422 = f == Format::P422;
        w.swap_chroma = f == Format::YV12;
        const FrameLayout l = frame_layout(f, width, height);
        const std::vector<PlaneRows> planes = frame_planes(f, width, height, l.pitch);
        for (const PlaneRows& p : planes) w.src_copies.push_back({p.offset, p.row_bytes, p.rows});
        w.file_src = buffer(l.frame_bytes);
        cx_rows_420 = w.is422 ? 0 : 1;
    }
    if (w.swap_chroma) std::swap(w.src_copies[1], w.src_copies[2]);
    // The engines work in whole pixel pairs (and 4:2:0 row pairs): a frame of
    // odd size is converted one column (row) larger and cut back.
    w.call_width = width + width % 2;
    w.call_height = cx_rows_420 != 0 ? height + height % 2 : height;
    const uint32_t sb = member.sample_bytes;
    const uint32_t padded = round_up(std::max(w.call_width, 2u), 32);
    // Tight source rows: the planar-output engines read rows of exactly the
    // width one after another whatever the pitches say, and the others step
    // by the pitches; tight pitches make the two readings one.
    w.src_pitch = w.call_width * sb;
    w.chroma_pitch = w.call_width / 2 * sb;
    const uint32_t chroma_rows = w.is422 ? w.call_height : w.call_height / 2;
    w.src_call_rows = {w.call_height, chroma_rows, chroma_rows};

    // The destination.
    const FrameLayout out = target.layout(width, height);
    w.file_dst = buffer(out.frame_bytes);
    if (member.planes != nullptr) {
        w.out_sample = member.out_bytes;
        w.dst_pitch = round_up(padded * w.out_sample, 64);
        for (uint64_t p = 0; p < 3; ++p) {
            w.dst_copies.push_back({p * out.pitch * uint64_t{height}, out.pitch, height});
        }
    } else {
        w.dst_pitch = round_up(padded * (w.depth + 7) / 8, 64);
        w.dst_copies.push_back({0, out.pitch, height});
    }

    // How far the call reaches from each pointer.
    unsigned int args[8] = {w.dst_pitch,       w.src_pitch, matrix, rgb_type,
                            w.is422 ? 1u : 0u, 1u,          0u,     0u};
    unsigned int count = 7;
    if (member.planes != nullptr) {
        args[6] = w.chroma_pitch;
    } else {
        args[6] = w.depth;
        args[7] = w.chroma_pitch;
        count = 8;
    }
    uint64_t reach[4] = {};
    if (cycbcr_converter_pointer_sizes(member.name, w.call_width, w.call_height, args, count,
                                       reach) == 0) {
        throw ToolError(std::string("the library gives no buffer sizes for ") + member.name);
    }
    const uint64_t src_plane[3] = {
        uint64_t{w.src_pitch} * w.call_height,
        uint64_t{w.chroma_pitch} * chroma_rows,
        uint64_t{w.chroma_pitch} * chroma_rows,
    };
    const uint64_t dst_plane = uint64_t{w.dst_pitch} * w.call_height;
    if (member.planes != nullptr) {
        // R, G, B and Y answered; the chroma planes hold their rows.
        for (int p = 0; p < 3; ++p) w.dst.push_back(buffer(std::max(reach[p], dst_plane)));
        w.src.push_back(buffer(std::max(reach[3], src_plane[0])));
        for (int p = 1; p < 3; ++p) w.src.push_back(buffer(src_plane[p] + w.chroma_pitch));
    } else {
        w.dst.push_back(buffer(std::max(reach[0], dst_plane)));
        for (int p = 0; p < 3; ++p) w.src.push_back(buffer(std::max(reach[p + 1], src_plane[p])));
    }
}

DeepToRgbConverter::~DeepToRgbConverter() = default;

std::span<uint8_t> DeepToRgbConverter::source() {
    return work_->file_src;
}

std::span<const uint8_t> DeepToRgbConverter::convert() {
    Work& w = *work_;
    const uint32_t sb = w.member->sample_bytes;
    const uint32_t chroma_bytes = (w.call_width / 2) * sb;
    fill_plane(w.src[0].data(), w.src_pitch, w.call_width * sb, w.src_call_rows[0],
               w.file_src.data(), w.src_copies[0], sb);
    for (int p = 1; p < 3; ++p) {
        fill_plane(w.src[p].data(), w.chroma_pitch, chroma_bytes, w.src_call_rows[p],
                   w.file_src.data(), w.src_copies[p], sb);
    }
    const unsigned int is422 = w.is422 ? 1 : 0;
    if (w.member->planes != nullptr) {
        w.member->planes(w.dst[0].data(), w.dst[1].data(), w.dst[2].data(), w.src[0].data(),
                         w.src[1].data(), w.src[2].data(), w.call_width, w.call_height, w.dst_pitch,
                         w.src_pitch, w.matrix, w.type, is422, 1, w.chroma_pitch);
    } else {
        w.member->packed(w.dst[0].data(), w.src[0].data(), w.src[1].data(), w.src[2].data(),
                         w.call_width, w.call_height, w.dst_pitch, w.src_pitch, w.matrix, w.type,
                         is422, 1, w.depth, w.chroma_pitch);
    }
    // Bottom-up output puts the picture's first row last: the rows of a
    // frame converted one row taller start one row down.
    const uint32_t first = is_bottom_up(w.type) ? w.call_height - w.height : 0;
    for (size_t p = 0; p < w.dst_copies.size(); ++p) {
        empty_plane(w.file_dst.data(), w.dst_copies[p], w.dst[p].data(), w.dst_pitch, first);
    }
    return w.file_dst;
}

// ---------------------------------------------------------------------------
// RGB to planar YCbCr.

struct RgbToDeepConverter::Work {
    const FromRgbMember* member;
    RgbDepth from;
    DeepFormat to;
    uint32_t width, height, call_width;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType type;
    uint32_t src_pitch = 0, y_pitch = 0, chroma_pitch = 0;
    std::vector<uint8_t> file_src, file_dst, src;
    std::vector<std::vector<uint8_t>> dst;
    std::vector<DeepPlane> planes;
};

RgbToDeepConverter::RgbToDeepConverter(const FromRgbMember& member, RgbDepth from, DeepFormat to,
                                       uint32_t width, uint32_t height, QBYCBCRMatrix matrix,
                                       QBYCBCRRgbType rgb_type)
    : work_(std::make_unique<Work>()) {
    Work& w = *work_;
    w.member = &member;
    w.from = from;
    w.to = to;
    w.width = width;
    w.height = height;
    w.matrix = matrix;
    w.type = rgb_type;
    // 4:2:2 output pairs pixels: an odd width is converted one pixel wider
    // (the last repeated) and cut back.
    w.call_width = deep_chroma_x(to) == 2 ? width + width % 2 : width;
    if (std::strstr(member.name, "YCbCrPlanar16") != nullptr && w.call_width % 6 == 4) {
        // These convert six-pixel blocks and of a last partial block its first
        // pair only.
        throw ToolError(std::string("convert: ") + member.name +
                        " writes whole frames at widths that are a multiple of 6, or 1 or 2 "
                        "more (an odd width is converted one pixel wider), not " +
                        std::to_string(width));
    }
    const uint32_t pixel = rgb_pixel_bytes(from);
    w.src_pitch = round_up(round_up(std::max(w.call_width, 1u), 8) * pixel, 64);
    w.y_pitch = round_up(round_up(std::max(w.call_width, 1u), 16) * 2, 64);
    // The converters with one pitch argument put their chroma rows half of it
    // apart, except the float one, whose three planes share it.
    w.chroma_pitch = member.shared != nullptr && std::strstr(member.name, "float") == nullptr
                         ? w.y_pitch / 2
                         : w.y_pitch;
    w.file_src = buffer(rgb_layout(from, width, height).frame_bytes);
    w.file_dst = buffer(deep_layout(to, width, height).frame_bytes);
    w.planes = deep_planes(to, width, height);

    // The unsigned arguments after the height, in the converter's order.
    const unsigned int last =
        member.last_arg < 0 ? bits_of(from) : static_cast<unsigned int>(member.last_arg);
    const unsigned int separate[6] = {w.y_pitch, w.chroma_pitch, w.src_pitch,
                                      matrix,    rgb_type,       last};
    const unsigned int shared[5] = {w.y_pitch, w.src_pitch, matrix, rgb_type, last};
    uint64_t reach[4] = {};
    const bool known =
        member.fn != nullptr
            ? cycbcr_converter_pointer_sizes(member.name, w.call_width, height, separate, 6, reach)
            : cycbcr_converter_pointer_sizes(member.name, w.call_width, height, shared, 5, reach);
    if (!known) {
        throw ToolError(std::string("the library gives no buffer sizes for ") + member.name);
    }
    const uint64_t rows = std::max(height, 1u);
    w.dst.push_back(buffer(std::max(reach[0], uint64_t{w.y_pitch} * rows)));
    for (int p = 1; p < 3; ++p) {
        w.dst.push_back(buffer(std::max(reach[p], uint64_t{w.chroma_pitch} * rows)));
    }
    w.src = buffer(std::max(reach[3], uint64_t{w.src_pitch} * rows));
}

RgbToDeepConverter::~RgbToDeepConverter() = default;

std::span<uint8_t> RgbToDeepConverter::source() {
    return work_->file_src;
}

std::span<const uint8_t> RgbToDeepConverter::convert() {
    Work& w = *work_;
    const uint32_t pixel = rgb_pixel_bytes(w.from);
    const Copy rows{0, w.width * pixel, w.height};
    fill_plane(w.src.data(), w.src_pitch, w.call_width * pixel, w.height, w.file_src.data(), rows,
               pixel);
    const unsigned int last =
        w.member->last_arg < 0 ? bits_of(w.from) : static_cast<unsigned int>(w.member->last_arg);
    if (w.member->fn != nullptr) {
        w.member->fn(w.dst[0].data(), w.dst[1].data(), w.dst[2].data(), w.src.data(), w.call_width,
                     w.height, w.y_pitch, w.chroma_pitch, w.src_pitch, w.matrix, w.type, last);
    } else {
        w.member->shared(w.dst[0].data(), w.dst[1].data(), w.dst[2].data(), w.src.data(),
                         w.call_width, w.height, w.y_pitch, w.src_pitch, w.matrix, w.type, last);
    }
    for (size_t p = 0; p < w.planes.size(); ++p) {
        const DeepPlane& d = w.planes[p];
        const Copy c{d.offset, static_cast<uint32_t>(d.row_bytes()), d.rows};
        empty_plane(w.file_dst.data(), c, w.dst[p].data(), p == 0 ? w.y_pitch : w.chroma_pitch, 0);
    }
    return w.file_dst;
}

}  // namespace cycbcr_tool
