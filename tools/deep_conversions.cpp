#include "deep_conversions.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <string>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// A format of a route: named, or a coded one.
struct Node {
    int deep = -1;  // a DeepFormat, or -1
    Format format = Format::UYVY;

    static Node of(DeepFormat f) { return {static_cast<int>(f), Format::UYVY}; }
    static Node of(Format f) { return {-1, f}; }
    bool operator==(const Node& o) const {
        return deep == o.deep && (deep >= 0 || format == o.format);
    }
    bool operator<(const Node& o) const {
        return deep != o.deep ? deep < o.deep : (deep < 0 && format < o.format);
    }
};

using PlanarToPackedFn = unsigned int (*)(uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*,
                                          unsigned int, unsigned int, unsigned int, unsigned int);
using PackedToPlanarFn = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*,
                                          unsigned int, unsigned int, unsigned int, unsigned int);
using PackedToPlanar420Fn = unsigned int (*)(uint8_t*, uint8_t*, uint8_t*, const uint8_t*,
                                             unsigned int, unsigned int, unsigned int, unsigned int,
                                             unsigned int);

enum class Kind {
    PlanarToPacked,     // three 16-bit planes into v210, UYVY or NV12p16
    PackedToPlanar,     // v210 or UYVY into three 16-bit planes
    PackedToPlanar420,  // v210 into 4:2:0, with its own pitch arguments
    SemiToPacked,       // NV12 or NV10 into v210 or UYVY
    Shift,              // NV12p16 to NV10: the command's own, v >> 6
};

struct Edge {
    Node from, to;
    const char* name;
    Kind kind;
    PlanarToPackedFn planar_to_packed = nullptr;
    PackedToPlanarFn packed_to_planar = nullptr;
    PackedToPlanar420Fn packed_to_planar420 = nullptr;
    cycbcr_converter semi = nullptr;
};

Edge planar_to_packed(DeepFormat from, Node to, const char* name, PlanarToPackedFn fn) {
    return {Node::of(from), to, name, Kind::PlanarToPacked, fn};
}
Edge packed_to_planar(Format from, DeepFormat to, const char* name, PackedToPlanarFn fn) {
    return {Node::of(from), Node::of(to), name, Kind::PackedToPlanar, nullptr, fn};
}

// Every library converter of the named formats, v210 first wherever there is
// a choice (it keeps 10 bits).
const std::vector<Edge>& edges() {
    using D = DeepFormat;
    const Node v210 = Node::of(Format::V210);
    const Node uyvy = Node::of(Format::UYVY);
    const Node nv12p16 = Node::of(D::Nv12p16);
    static const std::vector<Edge> all = {
        planar_to_packed(D::Yuv422p10, v210, "cycbcr_yuv422p10_to_012v", cycbcr_yuv422p10_to_012v),
        planar_to_packed(D::Yuv422p12, v210, "cycbcr_yuv422p12_to_012v", cycbcr_yuv422p12_to_012v),
        planar_to_packed(D::Yuv422p16, v210, "cycbcr_yuv422p16_to_012v", cycbcr_yuv422p16_to_012v),
        planar_to_packed(D::Yuv444p10, v210, "cycbcr_yuv444p10_to_012v", cycbcr_yuv444p10_to_012v),
        planar_to_packed(D::Yuv444p12, v210, "cycbcr_yuv444p12_to_012v", cycbcr_yuv444p12_to_012v),
        planar_to_packed(D::Yuv420p10, v210, "cycbcr_yuv420p10_to_012v", cycbcr_yuv420p10_to_012v),
        planar_to_packed(D::Yuv420p16, v210, "cycbcr_yuv420p16_to_012v", cycbcr_yuv420p16_to_012v),
        {Node::of(D::Nv12), v210, "cycbcr_NV12_to_v210_pitched", Kind::SemiToPacked, nullptr,
         nullptr, nullptr, cycbcr_NV12_to_v210_pitched},
        {Node::of(D::Nv10), v210, "cycbcr_NV10_to_v210_pitched", Kind::SemiToPacked, nullptr,
         nullptr, nullptr, cycbcr_NV10_to_v210_pitched},
        planar_to_packed(D::Yuv422p10, uyvy, "cycbcr_yuv422p10_to_uyvy", cycbcr_yuv422p10_to_uyvy),
        planar_to_packed(D::Yuv420p10, uyvy, "cycbcr_yuv420p10_to_uyvy", cycbcr_yuv420p10_to_uyvy),
        planar_to_packed(D::Yuv420p16, uyvy, "cycbcr_yuv420p16_to_uyvy", cycbcr_yuv420p16_to_uyvy),
        {Node::of(D::Nv12), uyvy, "cycbcr_NV12_to_uyvy_pitched", Kind::SemiToPacked, nullptr,
         nullptr, nullptr, cycbcr_NV12_to_uyvy_pitched},
        planar_to_packed(D::Yuv420p10, nv12p16, "cycbcr_yuv420p10_to_NV12p16",
                         cycbcr_yuv420p10_to_NV12p16),
        planar_to_packed(D::Yuv420p12, nv12p16, "cycbcr_yuv420p12_to_NV12p16",
                         cycbcr_yuv420p12_to_NV12p16),
        planar_to_packed(D::Yuv420p16, nv12p16, "cycbcr_yuv420p16_to_NV12p16",
                         cycbcr_yuv420p16_to_NV12p16),
        packed_to_planar(Format::V210, D::Yuv422p10, "cycbcr_012v_to_yuv422p10",
                         cycbcr_012v_to_yuv422p10),
        packed_to_planar(Format::V210, D::Yuv422p16, "cycbcr_012v_to_yuv422p16",
                         cycbcr_012v_to_yuv422p16),
        packed_to_planar(Format::V210, D::Yuv444p10, "cycbcr_012v_to_yuv444p10",
                         cycbcr_012v_to_yuv444p10),
        {v210, Node::of(D::Yuv420p10), "cycbcr_012v_to_yuv420p10", Kind::PackedToPlanar420, nullptr,
         nullptr, cycbcr_012v_to_yuv420p10},
        packed_to_planar(Format::UYVY, D::Yuv444p10, "cycbcr_uyvy_to_yuv444p10",
                         cycbcr_uyvy_to_yuv444p10),
        // The library has no reader of NV12p16: the command brings it down to
        // NV10 itself, which keeps every 10-bit sample.
        {nv12p16, Node::of(D::Nv10), "the command's NV12p16 to NV10 (v >> 6)", Kind::Shift},
    };
    return all;
}

std::string node_text(const Node& n) {
    return n.deep >= 0 ? deep_name(static_cast<DeepFormat>(n.deep)) : format_name(n.format);
}

// The own code of a coded format.
const FormatCode& code_of(Format format) {
    for (const FormatCode& code : all_codes()) {
        if (code.format == format) return code;
    }
    throw ToolError(std::string("no code for ") + format_name(format));
}

Node node_of(const Endpoint& e) {
    return e.deep ? Node::of(*e.deep) : Node::of(e.code->format);
}

// One step of a route: a library edge, or the dispatcher between coded
// formats (edge null).
struct Hop {
    Node from, to;
    const Edge* edge = nullptr;
};

// The shortest route, earlier edges first among equals. Coded formats meet
// only through the dispatcher's converters, and only the two ends and the
// v210 and UYVY hubs take part.
std::vector<Hop> find_route(const Endpoint& from, const Endpoint& to) {
    const Node start = node_of(from), goal = node_of(to);
    std::vector<Node> coded = {Node::of(Format::V210), Node::of(Format::UYVY)};
    for (const Endpoint* e : {&from, &to}) {
        if (!e->deep && std::find(coded.begin(), coded.end(), node_of(*e)) == coded.end()) {
            coded.push_back(node_of(*e));
        }
    }
    std::map<Node, Hop> came;
    std::deque<Node> queue = {start};
    came[start] = {start, start, nullptr};
    while (!queue.empty()) {
        const Node at = queue.front();
        queue.pop_front();
        if (at == goal) break;
        std::vector<Hop> next;
        for (const Edge& e : edges()) {
            if (e.from == at) next.push_back({at, e.to, &e});
        }
        if (at.deep < 0) {
            for (const Node& c : coded) {
                if (!(c == at) &&
                    command_converts(code_of(at.format).value, code_of(c.format).value)) {
                    next.push_back({at, c, nullptr});
                }
            }
        }
        for (const Hop& h : next) {
            if (came.count(h.to) == 0) {
                came[h.to] = h;
                queue.push_back(h.to);
            }
        }
    }
    if (came.count(goal) == 0 || start == goal) return {};
    std::vector<Hop> hops;
    for (Node n = goal; !(n == start); n = came[n].from) hops.push_back(came[n]);
    std::reverse(hops.begin(), hops.end());
    return hops;
}

uint32_t round_up(uint32_t n, uint32_t m) {
    return (n + m - 1) / m * m;
}

std::vector<uint8_t> buffer(uint64_t bytes) {
    if (bytes > SIZE_MAX / 2) throw ToolError("frame too large for this machine");
    return std::vector<uint8_t>(static_cast<size_t>(bytes));
}

// A plane of a working buffer: rows `pitch` bytes apart from `offset`, room
// for `samples` samples a row (the picture's and the padding's).
struct WorkPlane {
    uint64_t offset = 0;
    uint32_t pitch = 0;
    uint32_t samples = 0;
};

// Copies a file plane into a working plane, each row padded out to the
// working width with its last sample (its last Cb, Cr pair for semi-planar
// chroma, `unit` samples), so that the pixel groups that run past the width
// repeat the picture's edge.
void pad_in(uint8_t* work, const WorkPlane& w, const uint8_t* file, const DeepPlane& f,
            uint32_t unit, uint32_t call_rows) {
    const uint32_t sb = f.sample_bytes;
    for (uint32_t r = 0; r < f.rows; ++r) {
        uint8_t* out = work + w.offset + uint64_t{r} * w.pitch;
        const uint8_t* in = file + f.offset + r * f.row_bytes();
        std::memcpy(out, in, f.row_bytes());
        if (f.samples < unit) continue;
        const uint8_t* edge = in + (f.samples - unit) * sb;
        for (uint32_t s = f.samples; s + unit <= w.samples; s += unit) {
            std::memcpy(out + uint64_t{s} * sb, edge, uint64_t{unit} * sb);
        }
    }
    // Rows the call converts past the picture repeat its last row.
    for (uint32_t r = f.rows; r < call_rows && f.rows > 0; ++r) {
        std::memcpy(work + w.offset + uint64_t{r} * w.pitch,
                    work + w.offset + uint64_t{f.rows - 1} * w.pitch, uint64_t{w.samples} * sb);
    }
}

void crop_out(uint8_t* file, const DeepPlane& f, const uint8_t* work, const WorkPlane& w) {
    for (uint32_t r = 0; r < f.rows; ++r) {
        std::memcpy(file + f.offset + r * f.row_bytes(), work + w.offset + uint64_t{r} * w.pitch,
                    f.row_bytes());
    }
}

uint64_t plane_end(const WorkPlane& w, uint32_t rows, uint32_t sample_bytes) {
    return rows == 0 ? 0
                     : w.offset + uint64_t{rows - 1} * w.pitch + uint64_t{w.samples} * sample_bytes;
}

// A coded frame (v210 or UYVY) as a call reads or writes it.
struct CodedFrame {
    Format format;
    uint32_t file_pitch = 0;
    uint32_t call_pitch = 0;
    uint32_t rows = 0;
    uint64_t file_bytes = 0;
};

CodedFrame coded_frame(Format format, uint32_t width, uint32_t height, bool destination) {
    const FrameLayout file = frame_layout(format, width, height);
    CodedFrame c{format, file.pitch, file.pitch, height, file.frame_bytes};
    if (destination && format == Format::V210) {
        // Room in every row for whole groups and the two words some packers
        // write after the last one, so no row's store lands in the next row
        // and the last row's stay within the working buffer.
        c.call_pitch = round_up(std::max(v210_row_bytes(width), (width + 5) / 6 * 16 + 8), 16);
    } else if (destination) {
        c.call_pitch = round_up(4 * (width / 2 + width % 2), 16);
    }
    return c;
}

// The working planes of a named format's frame at its call pitch: Y rows
// `pitch` bytes apart, chroma rows apart by the pitch the library places them
// at (half of it for 4:2:0 and 4:2:2, all of it for 4:4:4 and the
// semi-planar chroma, which starts pitch * height in).
std::vector<WorkPlane> work_planes(DeepFormat format, uint32_t pitch, uint32_t padded_width,
                                   uint32_t height) {
    if (deep_semi_planar(format)) {
        return {{0, pitch, padded_width}, {uint64_t{pitch} * height, pitch, padded_width}};
    }
    const uint32_t cx = deep_chroma_x(format);
    const uint32_t cpitch = cx == 2 ? pitch / 2 : pitch;
    return {
        {0, pitch, padded_width}, {0, cpitch, padded_width / cx}, {0, cpitch, padded_width / cx}};
}

// A library call of a named converter on working buffers.
class EdgeLeg : public DeepLeg {
  public:
    EdgeLeg(const Edge& edge, uint32_t width, uint32_t height)
        : edge_(edge), width_(width), height_(height), call_width_(width), call_height_(height) {
        if (edge.to.deep == static_cast<int>(DeepFormat::Nv12p16)) {
            // The library gives NV12p16 width / 2 pairs a row and height / 2
            // chroma rows: an odd size is converted one column and row larger,
            // the source's last column and row repeated, and cut back.
            call_width_ += width % 2;
            call_height_ += height % 2;
        }
        // Rows padded to a multiple of twelve pixels cover every group a
        // converter reads or writes for them.
        padded_ = round_up(std::max(call_width_, 1u), 12);
        switch (edge.kind) {
            case Kind::PlanarToPacked:
                set_deep_source(static_cast<DeepFormat>(edge.from.deep));
                if (edge.to.deep >= 0) {
                    set_deep_destination(static_cast<DeepFormat>(edge.to.deep));
                } else {
                    coded_ = coded_frame(edge.to.format, width, height, true);
                }
                break;
            case Kind::SemiToPacked:
                set_deep_source(static_cast<DeepFormat>(edge.from.deep));
                coded_ = coded_frame(edge.to.format, width, height, true);
                break;
            case Kind::PackedToPlanar:
            case Kind::PackedToPlanar420:
                coded_ = coded_frame(edge.from.format, width, height, false);
                set_deep_destination(static_cast<DeepFormat>(edge.to.deep));
                break;
            case Kind::Shift:
                break;
        }
        size_buffers();
    }

    void run(const uint8_t* in, uint8_t* out) override {
        switch (edge_.kind) {
            case Kind::PlanarToPacked:
            case Kind::SemiToPacked:
                fill_deep(in);
                call();
                if (edge_.to.deep >= 0) {
                    empty_deep(out);
                } else {
                    empty_coded(out);
                }
                break;
            case Kind::PackedToPlanar:
            case Kind::PackedToPlanar420:
                fill_coded(in);
                call();
                empty_deep(out);
                break;
            case Kind::Shift:
                shift(in, out);
                break;
        }
    }

  private:
    void set_deep_source(DeepFormat f) {
        src_deep_ = f;
        const uint32_t sb = f == DeepFormat::Nv12 ? 1 : 2;
        // At least the pitch the library takes for a padded row: NV12 and
        // NV10 use the width (times two for NV10) when the pitch is smaller.
        src_pitch_ = round_up(padded_ * sb, 64);
        src_work_ = work_planes(f, src_pitch_, padded_, call_height_);
    }
    void set_deep_destination(DeepFormat f) {
        dst_deep_ = f;
        if (edge_.kind == Kind::PackedToPlanar420) {
            // Its plain path writes rows of whole groups back to back whatever
            // the pitches; its AVX2 form takes the pitches. Give it those.
            const uint32_t groups = (width_ + 5) / 6;
            dst_pitch_ = groups * 12;
            dst_work_ = {{0, dst_pitch_, groups * 6},
                         {0, groups * 6, groups * 3},
                         {0, groups * 6, groups * 3}};
            return;
        }
        dst_pitch_ = round_up(padded_ * 2, 64);
        dst_work_ = work_planes(f, dst_pitch_, padded_, call_height_);
    }

    // Asks the library how far the call reaches from each pointer, and sizes
    // the working buffers to hold that and the planes the command copies.
    void size_buffers() {
        if (edge_.kind == Kind::Shift) return;
        uint64_t reach[4] = {0, 0, 0, 0};
        if (edge_.kind == Kind::SemiToPacked) {
            if (cycbcr_converter_buffer_sizes(edge_.name, call_width_, call_height_,
                                              coded_.call_pitch, src_pitch_, 0, 0, &reach[0],
                                              &reach[1]) == 0) {
                throw ToolError(std::string("the library gives no buffer sizes for ") + edge_.name);
            }
        } else {
            unsigned int pitches[3] = {0, 0, 0};
            unsigned int count = 2;
            if (edge_.kind == Kind::PlanarToPacked) {
                pitches[0] = edge_.to.deep >= 0 ? dst_pitch_ : coded_.call_pitch;
                pitches[1] = src_pitch_;
            } else if (edge_.kind == Kind::PackedToPlanar) {
                pitches[0] = dst_pitch_;
                pitches[1] = coded_.call_pitch;
            } else {
                pitches[0] = dst_work_[0].pitch;
                pitches[1] = dst_work_[1].pitch;
                pitches[2] = coded_.call_pitch;
                count = 3;
            }
            if (cycbcr_converter_pointer_sizes(edge_.name, call_width_, call_height_, pitches,
                                               count, reach) == 0) {
                throw ToolError(std::string("the library gives no buffer sizes for ") + edge_.name);
            }
        }
        // Pointer order: destination planes or frame first, as the converter
        // takes them.
        size_t next = 0;
        auto planes_buffers = [&](DeepFormat f, const std::vector<WorkPlane>& work,
                                  std::vector<std::vector<uint8_t>>& out) {
            const uint32_t sb = f == DeepFormat::Nv12 ? 1 : 2;
            const std::vector<DeepPlane> file = deep_planes(f, call_width_, call_height_);
            if (deep_semi_planar(f)) {
                uint64_t bytes = reach[next++];
                for (size_t p = 0; p < file.size(); ++p) {
                    bytes = std::max(bytes, plane_end(work[p], file[p].rows, sb));
                }
                out.push_back(buffer(bytes));
                return;
            }
            for (size_t p = 0; p < file.size(); ++p) {
                out.push_back(
                    buffer(std::max(reach[next++], plane_end(work[p], file[p].rows, sb))));
            }
        };
        auto coded_buffer = [&]() {
            coded_buf_ = buffer(
                std::max(reach[next++], uint64_t{coded_.call_pitch} * std::max(height_, 1u)));
        };
        if (edge_.kind == Kind::PackedToPlanar || edge_.kind == Kind::PackedToPlanar420) {
            planes_buffers(*dst_deep_, dst_work_, dst_bufs_);
            coded_buffer();
        } else {
            if (edge_.to.deep >= 0) {
                planes_buffers(*dst_deep_, dst_work_, dst_bufs_);
            } else {
                coded_buffer();
            }
            planes_buffers(*src_deep_, src_work_, src_bufs_);
        }
    }

    // A planar buffer per plane, or one semi-planar buffer for both.
    uint8_t* plane_base(std::vector<std::vector<uint8_t>>& bufs, size_t p) {
        return bufs.size() == 1 ? bufs[0].data() : bufs[p].data();
    }

    void fill_deep(const uint8_t* in) {
        const std::vector<DeepPlane> file = deep_planes(*src_deep_, width_, height_);
        const std::vector<DeepPlane> call = deep_planes(*src_deep_, call_width_, call_height_);
        for (size_t p = 0; p < file.size(); ++p) {
            const uint32_t unit = deep_semi_planar(*src_deep_) && p == 1 ? 2 : 1;
            pad_in(plane_base(src_bufs_, p), src_work_[p], in, file[p], unit, call[p].rows);
        }
    }

    void empty_deep(uint8_t* out) {
        const std::vector<DeepPlane> file = deep_planes(*dst_deep_, width_, height_);
        for (size_t p = 0; p < file.size(); ++p) {
            crop_out(out, file[p], plane_base(dst_bufs_, p), dst_work_[p]);
        }
        if (*dst_deep_ == DeepFormat::Yuv444p10 && edge_.from.format == Format::V210) {
            // From 4:2:2 the converter fills the chroma of even pixels only;
            // each odd pixel takes its pair's.
            for (size_t p = 1; p < 3; ++p) {
                for (uint32_t r = 0; r < file[p].rows; ++r) {
                    uint8_t* row = out + file[p].offset + r * file[p].row_bytes();
                    for (uint32_t x = 1; x < file[p].samples; x += 2) {
                        std::memcpy(row + 2 * x, row + 2 * (x - 1), 2);
                    }
                }
            }
        }
    }

    void fill_coded(const uint8_t* in) {
        // The rows, then copies of the last row for whatever the converter
        // reads past the frame (the 4:2:0 converter's row after an odd last
        // row).
        const uint64_t frame = uint64_t{coded_.file_pitch} * height_;
        std::memcpy(coded_buf_.data(), in, frame);
        for (uint64_t at = frame; height_ > 0 && at < coded_buf_.size(); at += coded_.file_pitch) {
            const uint64_t n = std::min<uint64_t>(coded_.file_pitch, coded_buf_.size() - at);
            std::memcpy(coded_buf_.data() + at, in + frame - coded_.file_pitch, n);
        }
    }

    void empty_coded(uint8_t* out) {
        for (uint32_t r = 0; r < height_; ++r) {
            std::memcpy(out + uint64_t{r} * coded_.file_pitch,
                        coded_buf_.data() + uint64_t{r} * coded_.call_pitch, coded_.file_pitch);
        }
    }

    void call() {
        switch (edge_.kind) {
            case Kind::PlanarToPacked: {
                uint8_t* dst = edge_.to.deep >= 0 ? dst_bufs_[0].data() : coded_buf_.data();
                const uint32_t dp = edge_.to.deep >= 0 ? dst_pitch_ : coded_.call_pitch;
                edge_.planar_to_packed(dst, src_bufs_[0].data(), src_bufs_[1].data(),
                                       src_bufs_[2].data(), call_width_, call_height_, dp,
                                       src_pitch_);
                break;
            }
            case Kind::SemiToPacked:
                edge_.semi(coded_buf_.data(), src_bufs_[0].data(), width_, height_,
                           coded_.call_pitch, src_pitch_);
                break;
            case Kind::PackedToPlanar:
                edge_.packed_to_planar(dst_bufs_[0].data(), dst_bufs_[1].data(),
                                       dst_bufs_[2].data(), coded_buf_.data(), width_, height_,
                                       dst_pitch_, coded_.call_pitch);
                break;
            case Kind::PackedToPlanar420:
                edge_.packed_to_planar420(dst_bufs_[0].data(), dst_bufs_[1].data(),
                                          dst_bufs_[2].data(), coded_buf_.data(), width_, height_,
                                          dst_work_[0].pitch, dst_work_[1].pitch,
                                          coded_.call_pitch);
                break;
            case Kind::Shift:
                break;
        }
    }

    void shift(const uint8_t* in, uint8_t* out) const {
        const uint64_t words = deep_layout(DeepFormat::Nv12p16, width_, height_).frame_bytes / 2;
        for (uint64_t i = 0; i < words; ++i) {
            const uint32_t v = (in[2 * i] | (in[2 * i + 1] << 8)) >> 6;
            out[2 * i] = static_cast<uint8_t>(v);
            out[2 * i + 1] = static_cast<uint8_t>(v >> 8);
        }
    }

    const Edge& edge_;
    uint32_t width_, height_, call_width_, call_height_, padded_ = 0;
    std::optional<DeepFormat> src_deep_, dst_deep_;
    uint32_t src_pitch_ = 0, dst_pitch_ = 0;
    std::vector<WorkPlane> src_work_, dst_work_;
    std::vector<std::vector<uint8_t>> src_bufs_, dst_bufs_;
    CodedFrame coded_{};
    std::vector<uint8_t> coded_buf_;
};

// A step between coded formats, through the command's frame converter.
class CodedLeg : public DeepLeg {
  public:
    CodedLeg(Format from, Format to, uint32_t width, uint32_t height)
        : converter_(code_of(from), code_of(to), width, height) {}
    void run(const uint8_t* in, uint8_t* out) override {
        const std::span<uint8_t> src = converter_.source();
        std::memcpy(src.data(), in, src.size());
        const std::span<const uint8_t> dst = converter_.convert();
        std::memcpy(out, dst.data(), dst.size());
    }

  private:
    FrameConverter converter_;
};

uint64_t node_frame_bytes(const Node& n, uint32_t width, uint32_t height) {
    return n.deep >= 0 ? deep_layout(static_cast<DeepFormat>(n.deep), width, height).frame_bytes
                       : frame_layout(n.format, width, height).frame_bytes;
}

}  // namespace

std::string Endpoint::text() const {
    return deep ? deep_name(*deep) : code_text(code->value);
}

FrameLayout Endpoint::layout(uint32_t width, uint32_t height) const {
    return deep ? deep_layout(*deep, width, height) : frame_layout(code->format, width, height);
}

bool deep_route_exists(const Endpoint& from, const Endpoint& to) {
    return !find_route(from, to).empty();
}

std::vector<std::string> deep_direct_destinations(DeepFormat format) {
    std::vector<std::string> out;
    for (const Edge& e : edges()) {
        if (e.from == Node::of(format) && e.kind != Kind::Shift) out.push_back(node_text(e.to));
    }
    return out;
}

std::vector<std::string> deep_direct_sources(DeepFormat format) {
    std::vector<std::string> out;
    for (const Edge& e : edges()) {
        if (e.to == Node::of(format) && e.kind != Kind::Shift) out.push_back(node_text(e.from));
    }
    return out;
}

DeepConverter::DeepConverter(const Endpoint& from, const Endpoint& to, uint32_t width,
                             uint32_t height) {
    const std::vector<Hop> hops = find_route(from, to);
    if (hops.empty()) {
        throw ToolError("converting " + from.text() + " to " + to.text() +
                        " is not supported: the library has no converters between them (see "
                        "cycbcr formats)");
    }
    route_text_ = node_text(hops.front().from);
    frames_.push_back(buffer(node_frame_bytes(hops.front().from, width, height)));
    for (const Hop& h : hops) {
        if (h.edge != nullptr) {
            legs_.push_back(std::make_unique<EdgeLeg>(*h.edge, width, height));
        } else {
            legs_.push_back(std::make_unique<CodedLeg>(h.from.format, h.to.format, width, height));
        }
        frames_.push_back(buffer(node_frame_bytes(h.to, width, height)));
        route_text_ += " -> " + node_text(h.to);
    }
}

DeepConverter::~DeepConverter() = default;

std::span<uint8_t> DeepConverter::source() {
    return frames_.front();
}

std::span<const uint8_t> DeepConverter::convert() {
    for (size_t i = 0; i < legs_.size(); ++i)
        legs_[i]->run(frames_[i].data(), frames_[i + 1].data());
    return frames_.back();
}

DeepRgbConverter::DeepRgbConverter(DeepFormat from, RgbDepth depth, uint32_t width, uint32_t height,
                                   QBYCBCRMatrix matrix, QBYCBCRRgbType rgb_type) {
    const Endpoint source{from, nullptr};
    for (const Format hub : {Format::V210, Format::UYVY}) {
        const Endpoint target{std::nullopt, &code_of(hub)};
        if (!deep_route_exists(source, target)) continue;
        // UYVY frames hold whole pixel pairs: odd widths go by v210 only.
        if (hub == Format::UYVY && width % 2 != 0) continue;
        to_hub_ = std::make_unique<DeepConverter>(source, target, width, height);
        to_rgb_ =
            std::make_unique<RgbConverter>(code_of(hub), depth, width, height, matrix, rgb_type);
        return;
    }
    throw ToolError(std::string("converting ") + deep_name(from) +
                    " to RGB is not supported at this size (see cycbcr formats)");
}

DeepRgbConverter::~DeepRgbConverter() = default;

std::span<uint8_t> DeepRgbConverter::source() {
    return to_hub_->source();
}

std::span<const uint8_t> DeepRgbConverter::convert() {
    const std::span<const uint8_t> hub = to_hub_->convert();
    const std::span<uint8_t> src = to_rgb_->source();
    std::memcpy(src.data(), hub.data(), std::min(hub.size(), src.size()));
    return to_rgb_->convert();
}

}  // namespace cycbcr_tool
