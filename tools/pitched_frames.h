// Frames whose rows are padded: --src-pitch and --dst-pitch. The converters
// read and write tightly packed frames; a padded file frame is copied onto one
// (reading) or made from one (writing) row by row.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "deep_formats.h"
#include "deep_rgb.h"
#include "formats.h"

namespace cycbcr_tool {

// One plane of a tightly packed frame: `rows` rows of `row_bytes` bytes. A
// row is made of whole units of `unit` bytes (a 16-bit sample, a Cb, Cr pair
// of an interleaved chroma plane; 1 for 8-bit planes and packed pixels), and
// the plane holds one unit for every `divisor` units of the first plane
// (2 for the chroma planes of 4:2:0 and 4:2:2, else 1).
struct FilePlane {
    uint32_t row_bytes = 0;
    uint32_t rows = 0;
    uint32_t unit = 1;
    uint32_t divisor = 1;
};

// The planes of a file frame of each kind of format the command reads or
// writes, in file order; the sum of their rows is the tight frame's size.
// For coded YCbCr formats (NV12 included) the layout source_layout() gives.
std::vector<FilePlane> coded_file_planes(Format format, uint32_t width, uint32_t height);
std::vector<FilePlane> deep_file_planes(DeepFormat format, uint32_t width, uint32_t height);
std::vector<FilePlane> rgb_file_planes(RgbDepth depth, uint32_t width, uint32_t height);
std::vector<FilePlane> rgb_extra_file_planes(RgbExtra extra, uint32_t width, uint32_t height);

// A frame's planes at a pitch given for the first plane. Every other plane
// takes the same pitch in its own units, divided by its divisor and rounded
// up to a whole unit:
//   plane pitch = unit * ceil(pitch / (first plane's unit * divisor)).
// So the chroma planes of 8-bit 4:2:0 and 4:2:2 lie ceil(pitch / 2) bytes
// apart, those of 16-bit ones ceil(pitch / 4) words, an interleaved chroma
// plane at the pitch rounded up to whole Cb, Cr pairs, 4:4:4 and RGB planes
// at the pitch itself. Each plane takes rows * its pitch bytes (the last row's
// padding included) and the planes lie back to back. Pitch 0 means tightly
// packed: the planes as they are.
class PitchedFrame {
  public:
    // Throws ToolError, naming `option`, for a pitch smaller than the first
    // plane's rows or not a whole number of its units.
    PitchedFrame(std::vector<FilePlane> planes, uint32_t pitch, const std::string& option);

    bool padded() const { return pitch_ != 0; }
    uint64_t tight_bytes() const { return tight_bytes_; }
    // The bytes of one frame in the file.
    uint64_t file_bytes() const { return file_bytes_; }
    // The pitch of each plane in the file.
    const std::vector<uint32_t>& pitches() const { return pitches_; }

    // The rows of a file frame copied onto the tight frame.
    void unpack(const uint8_t* file, uint8_t* tight) const;
    // The tight frame's rows copied into a file frame, the padding set to zero.
    void pack(const uint8_t* tight, uint8_t* file) const;

  private:
    std::vector<FilePlane> planes_;
    std::vector<uint32_t> pitches_;
    uint32_t pitch_ = 0;
    uint64_t tight_bytes_ = 0;
    uint64_t file_bytes_ = 0;
};

// Reads a pitch option's text: a decimal number of bytes, at least 1.
uint32_t parse_pitch(const std::string& text, const std::string& option);

}  // namespace cycbcr_tool
