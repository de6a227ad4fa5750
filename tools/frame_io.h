// Raw frame files: frames of one fixed size back to back, nothing else.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace cycbcr_tool {

// Reads frames of frame_bytes each. A regular file is checked up front to hold a
// whole, non-zero number of frames; other inputs (pipes, devices) are checked
// as they are read. Errors are thrown as ToolError naming the file.
class FrameReader {
  public:
    // frame_text describes one frame for messages, e.g. "1920x1080 UYVY".
    FrameReader(const std::string& path, uint64_t frame_bytes, const std::string& frame_text);
    ~FrameReader();
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    // The number of frames of a regular file, 0 when not known in advance.
    uint64_t known_frames() const { return known_frames_; }

    // Fills frame with the next frame; false at the end of the input.
    bool read(std::span<uint8_t> frame);

  private:
    std::string path_;
    std::string frame_text_;
    int fd_ = -1;
    uint64_t known_frames_ = 0;
    uint64_t frames_read_ = 0;
};

// An output file that appears only when complete. Bytes go to a temporary file
// in the destination's directory, which commit() renames over the destination;
// until then the temporary file is removed on any exit: destruction (an error
// unwinding), or SIGINT, SIGTERM and SIGHUP. An existing destination that is
// not a regular file (a FIFO, /dev/null) is written directly instead.
class AtomicOutput {
  public:
    explicit AtomicOutput(const std::string& path);
    ~AtomicOutput();
    AtomicOutput(const AtomicOutput&) = delete;
    AtomicOutput& operator=(const AtomicOutput&) = delete;

    void write(std::span<const uint8_t> bytes);
    void commit();

  private:
    void discard() noexcept;

    std::string path_;
    std::string temp_path_;
    int fd_ = -1;
};

}  // namespace cycbcr_tool
