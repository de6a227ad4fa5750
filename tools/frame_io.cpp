#include "frame_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

std::string system_error(const std::string& what, const std::string& path) {
    return what + " '" + path + "': " + std::strerror(errno);
}

// The temporary file a signal handler must remove. Only one output is open at
// a time, so one slot is enough.
char g_pending_path[4096];
volatile std::sig_atomic_t g_pending = 0;

extern "C" void remove_pending_and_reraise(int sig) {
    if (g_pending) unlink(g_pending_path);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

void install_cleanup_handlers() {
    struct sigaction action {};
    action.sa_handler = remove_pending_and_reraise;
    sigemptyset(&action.sa_mask);
    for (int sig : {SIGINT, SIGTERM, SIGHUP}) sigaction(sig, &action, nullptr);
}

std::string directory_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return path.substr(0, slash);
}

std::string base_name_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

FrameReader::FrameReader(const std::string& path, uint64_t frame_bytes,
                         const std::string& frame_text)
    : name_(path == "-" ? "standard input" : "input '" + path + "'"),
      frame_text_(frame_text),
      frame_bytes_(frame_bytes) {
    if (path == "-") {
        fd_ = STDIN_FILENO;
    } else {
        fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0) throw ToolError(system_error("cannot open input", path));
        own_fd_ = true;
    }
    struct stat st {};
    std::string problem;
    if (fstat(fd_, &st) != 0) {
        problem = "cannot examine " + name_ + ": " + std::strerror(errno);
    } else if (S_ISDIR(st.st_mode)) {
        problem = name_ + " is a directory";
    } else if (S_ISREG(st.st_mode)) {
        regular_ = true;
        // Standard input may be a file opened at some offset: the frames are
        // what lies after it.
        const off_t at = lseek(fd_, 0, SEEK_CUR);
        const auto size = static_cast<uint64_t>(st.st_size);
        const uint64_t start = at > 0 ? static_cast<uint64_t>(at) : 0;
        const uint64_t left = size > start ? size - start : 0;
        if (left == 0) {
            problem = name_ + " is empty";
        } else if (left % frame_bytes != 0) {
            problem = name_ + " holds " + std::to_string(left) + " bytes, not a whole number of " +
                      std::to_string(frame_bytes) + "-byte frames (" + frame_text + ")";
        }
        known_frames_ = left / frame_bytes;
    }
    device_ = st.st_dev;
    inode_ = st.st_ino;
    if (!problem.empty()) {
        if (own_fd_) close(fd_);
        throw ToolError(problem);
    }
}

FrameReader::~FrameReader() {
    if (own_fd_) close(fd_);
}

void FrameReader::skip(uint64_t count) {
    if (count == 0) return;
    if (regular_) {
        if (count >= known_frames_) {
            throw ToolError(name_ + " holds " + std::to_string(known_frames_) + " frames: --skip " +
                            std::to_string(count) + " leaves none");
        }
        if (lseek(fd_, static_cast<off_t>(count * frame_bytes_), SEEK_CUR) < 0) {
            throw ToolError("cannot seek in " + name_ + ": " + std::strerror(errno));
        }
        known_frames_ -= count;
        skipped_ = count;
        frames_read_ = count;
        return;
    }
    // A pipe or a device: read and drop, a frame's worth at a time at most.
    std::vector<uint8_t> drop(std::min<uint64_t>(frame_bytes_, uint64_t{1} << 20));
    uint64_t left = count * frame_bytes_;
    uint64_t dropped = 0;
    while (left > 0) {
        const ssize_t n = ::read(fd_, drop.data(), std::min<uint64_t>(left, drop.size()));
        if (n < 0) {
            if (errno == EINTR) continue;
            throw ToolError("cannot read " + name_ + ": " + std::strerror(errno));
        }
        if (n == 0) {
            throw ToolError(name_ + " ends after " + std::to_string(dropped / frame_bytes_) +
                            " whole frames: --skip " + std::to_string(count) + " passes its end");
        }
        left -= static_cast<uint64_t>(n);
        dropped += static_cast<uint64_t>(n);
    }
    skipped_ = count;
    frames_read_ = count;
}

bool FrameReader::read(std::span<uint8_t> frame) {
    size_t filled = 0;
    while (filled < frame.size()) {
        const ssize_t n = ::read(fd_, frame.data() + filled, frame.size() - filled);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw ToolError("cannot read " + name_ + ": " + std::strerror(errno));
        }
        if (n == 0) break;
        filled += static_cast<size_t>(n);
    }
    if (filled == frame.size()) {
        ++frames_read_;
        return true;
    }
    if (filled == 0 && frames_read_ > skipped_) return false;
    if (filled == 0 && skipped_ > 0) {
        throw ToolError(name_ + " holds " + std::to_string(skipped_) + " frames: --skip " +
                        std::to_string(skipped_) + " leaves none");
    }
    if (filled == 0) throw ToolError(name_ + " is empty");
    throw ToolError(name_ + " ends " + std::to_string(filled) + " bytes into frame " +
                    std::to_string(frames_read_ + 1) + ": not a whole number of " +
                    std::to_string(frame.size()) + "-byte frames (" + frame_text_ + ")");
}

AtomicOutput::AtomicOutput(const std::string& path, const FrameReader* input)
    : path_(path), name_(path == "-" ? "standard output" : "output '" + path + "'") {
    struct stat st {};
    const bool exists = path == "-" ? fstat(STDOUT_FILENO, &st) == 0 : stat(path.c_str(), &st) == 0;
    if (exists && input != nullptr && st.st_dev == input->device() && st.st_ino == input->inode()) {
        throw ToolError(name_ + " is the same file as " + input->name() +
                        ": converting a file onto itself is refused");
    }
    if (path == "-") {
        if (isatty(STDOUT_FILENO) == 1) {
            throw ToolError(
                "standard output is a terminal: binary output is not written there "
                "(redirect it to a file or a pipe, or use --out FILE)");
        }
        fd_ = STDOUT_FILENO;
        own_fd_ = false;
        return;
    }
    if (exists) {
        if (S_ISDIR(st.st_mode)) throw ToolError(name_ + " is a directory");
        // Not writable by this user, or read-only for everyone: kept as it is
        // (a rename would replace it regardless of its permissions; the
        // superuser passes access() whatever the bits say).
        if (access(path.c_str(), W_OK) != 0 || (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
            throw ToolError(name_ + " is not writable: it is kept as it is");
        }
        if (!S_ISREG(st.st_mode)) {
            // A pipe or a device (/dev/null, a FIFO) is written as it is:
            // renaming a file over it would replace the node itself.
            fd_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
            if (fd_ < 0) throw ToolError(system_error("cannot open output", path));
            return;
        }
        // Through a symbolic link, replace the file it names, not the link.
        if (char* real = realpath(path.c_str(), nullptr)) {
            path_ = real;
            std::free(real);
        }
    }
    std::string name = directory_of(path_) + "/." + base_name_of(path_) + ".partial-XXXXXX";
    if (name.size() >= sizeof g_pending_path) throw ToolError("output path too long: " + path);

    install_cleanup_handlers();
    std::vector<char> buffer(name.begin(), name.end());
    buffer.push_back('\0');
    fd_ = mkstemp(buffer.data());
    if (fd_ < 0) throw ToolError(system_error("cannot create output", path));
    temp_path_ = buffer.data();
    std::memcpy(g_pending_path, buffer.data(), buffer.size());
    g_pending = 1;

    // mkstemp makes the file private; give it the mode a plain create would.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(fd_, 0666 & ~mask);
}

AtomicOutput::~AtomicOutput() {
    discard();
}

void AtomicOutput::write(std::span<const uint8_t> bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw ToolError("cannot write " + name_ + ": " + std::strerror(errno));
        }
        done += static_cast<size_t>(n);
    }
}

void AtomicOutput::commit() {
    const int fd = fd_;
    fd_ = -1;
    if (!own_fd_) return;  // standard output stays open
    if (close(fd) != 0) throw ToolError(system_error("cannot write output", path_));
    if (temp_path_.empty()) return;  // written in place
    if (rename(temp_path_.c_str(), path_.c_str()) != 0) {
        throw ToolError(system_error("cannot create output", path_));
    }
    g_pending = 0;
    temp_path_.clear();
}

void AtomicOutput::discard() noexcept {
    if (fd_ >= 0 && own_fd_) close(fd_);
    fd_ = -1;
    if (!temp_path_.empty()) unlink(temp_path_.c_str());
    g_pending = 0;
    temp_path_.clear();
}

}  // namespace cycbcr_tool
