#include "frame_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    : path_(path), frame_text_(frame_text) {
    fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) throw ToolError(system_error("cannot open input", path));
    struct stat st {};
    if (fstat(fd_, &st) != 0) {
        const std::string message = system_error("cannot examine input", path);
        close(fd_);
        throw ToolError(message);
    }
    std::string problem;
    if (S_ISDIR(st.st_mode)) {
        problem = "input '" + path + "' is a directory";
    } else if (S_ISREG(st.st_mode)) {
        const auto size = static_cast<uint64_t>(st.st_size);
        if (size == 0) {
            problem = "input '" + path + "' is empty";
        } else if (size % frame_bytes != 0) {
            problem = "input '" + path + "' holds " + std::to_string(size) +
                      " bytes, not a whole number of " + std::to_string(frame_bytes) +
                      "-byte frames (" + frame_text + ")";
        }
        known_frames_ = size / frame_bytes;
    }
    if (!problem.empty()) {
        close(fd_);
        throw ToolError(problem);
    }
}

FrameReader::~FrameReader() {
    if (fd_ >= 0) close(fd_);
}

bool FrameReader::read(std::span<uint8_t> frame) {
    size_t filled = 0;
    while (filled < frame.size()) {
        const ssize_t n = ::read(fd_, frame.data() + filled, frame.size() - filled);
        if (n < 0) {
            if (errno == EINTR) continue;
            throw ToolError(system_error("cannot read input", path_));
        }
        if (n == 0) break;
        filled += static_cast<size_t>(n);
    }
    if (filled == frame.size()) {
        ++frames_read_;
        return true;
    }
    if (filled == 0 && frames_read_ > 0) return false;
    if (filled == 0) throw ToolError("input '" + path_ + "' is empty");
    throw ToolError("input '" + path_ + "' ends " + std::to_string(filled) + " bytes into frame " +
                    std::to_string(frames_read_ + 1) + ": not a whole number of " +
                    std::to_string(frame.size()) + "-byte frames (" + frame_text_ + ")");
}

AtomicOutput::AtomicOutput(const std::string& path) : path_(path) {
    struct stat st {};
    if (stat(path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) throw ToolError("output '" + path + "' is a directory");
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
            throw ToolError(system_error("cannot write output", path_));
        }
        done += static_cast<size_t>(n);
    }
}

void AtomicOutput::commit() {
    const int fd = fd_;
    fd_ = -1;
    if (close(fd) != 0) throw ToolError(system_error("cannot write output", path_));
    if (temp_path_.empty()) return;  // written in place
    if (rename(temp_path_.c_str(), path_.c_str()) != 0) {
        throw ToolError(system_error("cannot create output", path_));
    }
    g_pending = 0;
    temp_path_.clear();
}

void AtomicOutput::discard() noexcept {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
    if (!temp_path_.empty()) unlink(temp_path_.c_str());
    g_pending = 0;
    temp_path_.clear();
}

}  // namespace cycbcr_tool
