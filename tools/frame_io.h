// Raw frame files: frames of one fixed size back to back, nothing else.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>

namespace cycbcr_tool {

// Reads frames of frame_bytes each from a file, or from standard input when
// the path is "-". A regular file is checked up front to hold a whole,
// non-zero number of frames; other inputs (pipes, devices) are read frame by
// frame, their length unknown, and checked as they are read. Errors are
// thrown as ToolError naming the input.
class FrameReader {
  public:
    // frame_text describes one frame for messages, e.g. "1920x1080 UYVY".
    FrameReader(const std::string& path, uint64_t frame_bytes, const std::string& frame_text);
    ~FrameReader();
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    // The number of frames of a regular file (from the current offset of
    // standard input), 0 when not known in advance.
    uint64_t known_frames() const { return known_frames_; }

    // Passes over the first `count` frames: a seek in a regular file, frames
    // read and dropped from anything else. Throws when the input holds no
    // frame after them. Call before the first read().
    void skip(uint64_t count);

    // Fills frame with the next frame; false at the end of the input.
    bool read(std::span<uint8_t> frame);

    // "input 'PATH'", or "standard input", for messages.
    const std::string& name() const { return name_; }

    // The file's device and inode, to tell it from the output.
    dev_t device() const { return device_; }
    ino_t inode() const { return inode_; }

  private:
    std::string name_;
    std::string frame_text_;
    int fd_ = -1;
    bool own_fd_ = false;
    bool regular_ = false;
    uint64_t frame_bytes_ = 0;
    uint64_t known_frames_ = 0;
    uint64_t frames_read_ = 0;
    uint64_t skipped_ = 0;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

// An output file that appears only when complete. Bytes go to a temporary file
// in the destination's directory, which commit() renames over the destination;
// until then the temporary file is removed on any exit: destruction (an error
// unwinding), or SIGINT, SIGTERM and SIGHUP. An existing destination that is
// not a regular file (a FIFO, /dev/null) is written directly instead, and so
// is standard output, for the path "-" (what was written before an error
// stays written there).
//
// Refused before anything is created or written: a destination that is the
// input itself (the same device and inode, through any name or link), an
// existing file with no write permission (for this user, or with no write bit
// at all, so that a read-only file is kept even from the superuser), a
// directory, and standard output on a terminal (binary frames would only
// garble it).
class AtomicOutput {
  public:
    // input: the file the frames come from, if any.
    explicit AtomicOutput(const std::string& path, const FrameReader* input = nullptr);
    ~AtomicOutput();
    AtomicOutput(const AtomicOutput&) = delete;
    AtomicOutput& operator=(const AtomicOutput&) = delete;

    void write(std::span<const uint8_t> bytes);
    void commit();

  private:
    void discard() noexcept;

    std::string path_;
    std::string name_;
    std::string temp_path_;
    int fd_ = -1;
    bool own_fd_ = true;
};

}  // namespace cycbcr_tool
