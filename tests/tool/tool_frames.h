// What the tests of the cycbcr command share: the YCbCr formats it reads with
// FFmpeg's name for the same bytes, frames as FFmpeg addresses them, files, and
// running the command.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libavutil/pixdesc.h>
}

namespace cycbcr_tool_test {

// The command under test and a scratch directory, set by tool_test_main.
inline std::string g_tool;
inline std::filesystem::path g_dir;

enum class Kind { Packed, Planar420, Planar422, V210 };

struct Format {
    const char* name;  // the command's code
    Kind kind;
    AVPixelFormat pix;           // FFmpeg's format of the same bytes (not v210)
    bool chroma_planes_swapped;  // YV12: YUV420P with Cr before Cb
    bool bottom_up;              // cyuv: UYVY422 with the last row first
};

inline const Format kFormats[] = {
    {"UYVY", Kind::Packed, AV_PIX_FMT_UYVY422, false, false},
    {"YUY2", Kind::Packed, AV_PIX_FMT_YUYV422, false, false},
    {"YVYU", Kind::Packed, AV_PIX_FMT_YVYU422, false, false},
    {"cyuv", Kind::Packed, AV_PIX_FMT_UYVY422, false, true},
    {"I420", Kind::Planar420, AV_PIX_FMT_YUV420P, false, false},
    {"YV12", Kind::Planar420, AV_PIX_FMT_YUV420P, true, false},
    {"P422", Kind::Planar422, AV_PIX_FMT_YUV422P, false, false},
    {"v210", Kind::V210, AV_PIX_FMT_NONE, false, false},
};

inline size_t v210_row_bytes(uint32_t w) {
    return size_t{(w + 47) / 48 * 128};
}

// One tightly packed frame, as raw files and FFmpeg lay it out.
inline size_t frame_bytes(const Format& f, uint32_t w, uint32_t h) {
    if (f.kind == Kind::V210) return v210_row_bytes(w) * h;
    return static_cast<size_t>(
        av_image_get_buffer_size(f.pix, static_cast<int>(w), static_cast<int>(h), 1));
}

// An 8-bit frame as FFmpeg addresses it: its planes tightly packed.
struct ImageView {
    uint8_t* data[4] = {};
    int linesize[4] = {};
    const AVPixFmtDescriptor* desc = nullptr;
};

inline ImageView image_view(const Format& f, uint8_t* frame, uint32_t w, uint32_t h) {
    ImageView v;
    v.desc = av_pix_fmt_desc_get(f.pix);
    av_image_fill_arrays(v.data, v.linesize, frame, f.pix, static_cast<int>(w), static_cast<int>(h),
                         1);
    if (f.chroma_planes_swapped) {
        std::swap(v.data[1], v.data[2]);
        std::swap(v.linesize[1], v.linesize[2]);
    }
    if (f.bottom_up) {
        // cyuv is UYVY stored bottom-up: read as UYVY422 from the last stored
        // row upward.
        v.data[0] += static_cast<ptrdiff_t>(h - 1) * v.linesize[0];
        v.linesize[0] = -v.linesize[0];
    }
    return v;
}

inline std::vector<uint8_t> read_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void write_file(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

// Runs the command; "" on success, else its status and what it said.
inline std::string run_tool(const std::vector<std::string>& args) {
    const std::string err = (g_dir / "stderr.txt").string();
    std::vector<char*> argv = {g_tool.data()};
    std::vector<std::string> owned(args);
    for (std::string& a : owned) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = 0;
    int status = -1;
    const int spawned = posix_spawn(&pid, g_tool.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) return std::string("cannot run ") + g_tool;
    if (waitpid(pid, &status, 0) != pid) return std::string("lost ") + g_tool;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return "";
    const std::vector<uint8_t> said = read_file(err);
    std::string text = "status ";
    text += std::to_string(status);
    text += ": ";
    text.append(said.begin(), said.end());
    return text;
}

// main() of a command test: the command's path first, then gtest's arguments;
// scratch files live in a directory named after `name`, removed at the end.
inline int tool_test_main(int argc, char** argv, const char* name) {
    testing::InitGoogleTest(&argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s PATH_TO_CYCBCR [gtest arguments]\n", argv[0]);
        return 2;
    }
    g_tool = std::filesystem::absolute(argv[1]).string();
    av_log_set_level(AV_LOG_QUIET);
    std::string pattern =
        (std::filesystem::temp_directory_path() / (std::string(name) + "-XXXXXX")).string();
    const char* dir = mkdtemp(pattern.data());
    if (dir == nullptr) {
        std::perror("mkdtemp");
        return 2;
    }
    g_dir = dir;
    const int result = RUN_ALL_TESTS();
    std::filesystem::remove_all(g_dir);
    return result;
}

}  // namespace cycbcr_tool_test
