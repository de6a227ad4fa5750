#include "pitched_frames.h"

#include <charconv>
#include <cstring>

#include "tool_error.h"

namespace cycbcr_tool {

std::vector<FilePlane> coded_file_planes(Format format, uint32_t width, uint32_t height) {
    if (format == Format::RGB32) return rgb_file_planes(RgbDepth::Rgb32, width, height);
    std::vector<FilePlane> planes;
    for (const PlaneRows& p : source_planes(format, width, height)) {
        planes.push_back({p.row_bytes, p.rows, 1, 1});
    }
    if (planes.size() > 1) {
        // Chroma: half the luma samples a row; NV12's in Cb, Cr pairs.
        const uint32_t unit = format == Format::NV12 ? 2 : 1;
        for (size_t i = 1; i < planes.size(); ++i) {
            planes[i].unit = unit;
            planes[i].divisor = 2;
        }
    }
    return planes;
}

std::vector<FilePlane> deep_file_planes(DeepFormat format, uint32_t width, uint32_t height) {
    std::vector<FilePlane> planes;
    const bool semi = deep_semi_planar(format);
    for (const DeepPlane& p : deep_planes(format, width, height)) {
        const bool chroma = !planes.empty();
        FilePlane plane;
        plane.row_bytes = static_cast<uint32_t>(p.row_bytes());
        plane.rows = p.rows;
        plane.unit = p.sample_bytes * (chroma && semi ? 2 : 1);
        plane.divisor = chroma ? deep_chroma_x(format) : 1;
        planes.push_back(plane);
    }
    return planes;
}

std::vector<FilePlane> rgb_file_planes(RgbDepth depth, uint32_t width, uint32_t height) {
    return {{rgb_layout(depth, width, height).pitch, height, 1, 1}};
}

std::vector<FilePlane> rgb_extra_file_planes(RgbExtra extra, uint32_t width, uint32_t height) {
    const uint32_t row = rgb_extra_layout(extra, width, height).pitch;
    if (extra == RgbExtra::Word10) return {{row, height, 1, 1}};
    // Three planes R, G, B of whole samples.
    const uint32_t sample = row / width;
    const FilePlane plane{row, height, sample, 1};
    return {plane, plane, plane};
}

PitchedFrame::PitchedFrame(std::vector<FilePlane> planes, uint32_t pitch, const std::string& option)
    : planes_(std::move(planes)), pitch_(pitch) {
    for (const FilePlane& p : planes_) tight_bytes_ += uint64_t{p.row_bytes} * p.rows;
    const FilePlane& first = planes_.front();
    if (pitch != 0) {
        if (pitch < first.row_bytes) {
            throw ToolError(option + " " + std::to_string(pitch) + " is less than the " +
                            std::to_string(first.row_bytes) + "-byte rows of the frame");
        }
        if (pitch % first.unit != 0) {
            throw ToolError(option + " " + std::to_string(pitch) + " is not a whole number of " +
                            std::to_string(first.unit) + "-byte samples");
        }
    }
    for (const FilePlane& p : planes_) {
        uint32_t plane_pitch = p.row_bytes;
        if (pitch != 0) {
            const uint64_t step = uint64_t{first.unit} * p.divisor;
            plane_pitch = static_cast<uint32_t>(p.unit * ((pitch + step - 1) / step));
            // The rule gives every plane room for its rows whenever the first
            // plane has room; checked all the same.
            if (plane_pitch < p.row_bytes) {
                throw ToolError(option + " " + std::to_string(pitch) +
                                " leaves a plane's rows no room");
            }
        }
        pitches_.push_back(plane_pitch);
        file_bytes_ += uint64_t{plane_pitch} * p.rows;
    }
}

void PitchedFrame::unpack(const uint8_t* file, uint8_t* tight) const {
    for (size_t i = 0; i < planes_.size(); ++i) {
        const FilePlane& p = planes_[i];
        for (uint32_t r = 0; r < p.rows; ++r) {
            std::memcpy(tight, file, p.row_bytes);
            tight += p.row_bytes;
            file += pitches_[i];
        }
    }
}

void PitchedFrame::pack(const uint8_t* tight, uint8_t* file) const {
    for (size_t i = 0; i < planes_.size(); ++i) {
        const FilePlane& p = planes_[i];
        for (uint32_t r = 0; r < p.rows; ++r) {
            std::memcpy(file, tight, p.row_bytes);
            std::memset(file + p.row_bytes, 0, pitches_[i] - p.row_bytes);
            tight += p.row_bytes;
            file += pitches_[i];
        }
    }
}

uint32_t parse_pitch(const std::string& text, const std::string& option) {
    uint32_t value = 0;
    const char* last = text.data() + text.size();
    const auto [end, ec] = std::from_chars(text.data(), last, value, 10);
    if (text.empty() || text[0] == '+' || ec != std::errc() || end != last || value == 0) {
        throw ToolError("bad " + option + " '" + text + "': expected a number of bytes, 1 or more");
    }
    return value;
}

}  // namespace cycbcr_tool
