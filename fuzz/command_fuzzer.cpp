// Fuzzing target of the cycbcr command's argument and file handling. An input
// is an argument vector, one argument a line, then an empty line and the
// content of the input file:
//
//     convert
//     --from
//     UYVY
//     ...
//     --in
//     @IN
//     --out
//     @OUT
//
//     <the input file's bytes>
//
// @IN names the input file and @OUT a file in the output directory, both in a
// private temporary directory; any other '/' in an argument becomes '_', so
// every other path is a name in the command's working directory, which lies in
// the same temporary directory (give libFuzzer an absolute -artifact_prefix:
// a crash inside the command leaves that directory current). Standard input reads the input file;
// standard output goes to /dev/null. After each run the harness checks that the command returned 0
// or 2, closed every file it opened, left the input file as it was (unless --out named it) and
// created no file other than the one --out names; LeakSanitizer checks memory, and libFuzzer
// reports any exit() or abort().
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"

namespace {

int g_home = -1;  // the fuzzer's own working directory

[[noreturn]] void fail(const std::string& what) {
    if (g_home >= 0 && fchdir(g_home) != 0) std::perror("command fuzzer");
    std::fprintf(stderr, "command fuzzer: %s\n", what.c_str());
    std::fflush(stderr);
    __builtin_trap();
}

constexpr size_t kMaxArgs = 32;
constexpr size_t kMaxArgLength = 256;

std::string g_root;    // the private temporary directory
std::string g_input;   // root/in/frame
std::string g_outDir;  // root/out
std::string g_work;    // root/work, the working directory

void write_file(const std::string& path, const uint8_t* data, size_t size) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) fail("cannot write " + path);
    size_t done = 0;
    while (done < size) {
        const ssize_t n = write(fd, data + done, size - done);
        if (n <= 0) fail("cannot write " + path);
        done += static_cast<size_t>(n);
    }
    close(fd);
}

std::string read_file(const std::string& path) {
    std::string bytes;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return "<missing>";
    char buf[65536];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0) bytes.append(buf, static_cast<size_t>(n));
    close(fd);
    return bytes;
}

// Every path below dir (directories with a trailing '/').
void list_tree(const std::string& dir, std::set<std::string>& out) {
    DIR* d = opendir(dir.c_str());
    if (!d) return;
    while (const dirent* e = readdir(d)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        const std::string path = dir + "/" + name;
        struct stat st {};
        if (lstat(path.c_str(), &st) != 0) continue;
        if (S_ISDIR(st.st_mode)) {
            out.insert(path + "/");
            list_tree(path, out);
        } else {
            out.insert(path);
        }
    }
    closedir(d);
}

// Removes everything below dir; the directory itself stays.
void clear_tree(const std::string& dir) {
    std::set<std::string> paths;
    list_tree(dir, paths);
    for (auto it = paths.rbegin(); it != paths.rend(); ++it) {
        std::string p = *it;
        if (p.back() == '/') {
            p.pop_back();
            chmod(p.c_str(), 0755);
            rmdir(p.c_str());
        } else {
            unlink(p.c_str());
        }
    }
}

int open_descriptors() {
    int count = 0;
    DIR* d = opendir("/proc/self/fd");
    if (!d) return -1;
    while (const dirent* e = readdir(d))
        if (e->d_name[0] != '.') ++count;
    closedir(d);
    return count;
}

void make_dir(const std::string& path) {
    if (mkdir(path.c_str(), 0700) != 0) fail("cannot create " + path);
}

// An argument as the command gets it: the placeholders expanded, any other
// path kept inside the working directory.
std::string expand(std::string arg) {
    for (;;) {
        size_t at = arg.find("@IN");
        if (at != std::string::npos) {
            arg.replace(at, 3, "\x01");
            continue;
        }
        at = arg.find("@OUT");
        if (at != std::string::npos) {
            arg.replace(at, 4, "\x02");
            continue;
        }
        break;
    }
    for (char& ch : arg)
        if (ch == '/') ch = '_';
    std::string out;
    for (char ch : arg) {
        if (ch == '\x01')
            out += g_input;
        else if (ch == '\x02')
            out += g_outDir + "/result";
        else
            out += ch;
    }
    return out;
}

// The file an output option names, as a path below the root; empty for none.
// "-" (standard output) also allows a file of that name, for a command that
// takes it as a name.
std::string output_path(const std::string& value) {
    if (value.empty()) return {};
    if (value[0] == '/') return value;
    return g_work + "/" + value;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    char templ[] = "/tmp/cycbcr_fuzz_command.XXXXXX";
    if (!mkdtemp(templ)) fail("cannot create a temporary directory");
    g_root = templ;
    g_input = g_root + "/in/frame";
    g_outDir = g_root + "/out";
    g_work = g_root + "/work";
    make_dir(g_root + "/in");
    make_dir(g_outDir);
    make_dir(g_work);
    g_home = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (g_home < 0) fail("cannot open the working directory");
    // The command's output to stdout goes nowhere.
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (null < 0 || dup2(null, 1) < 0) fail("cannot silence standard output");
    close(null);
    std::atexit([] {
        clear_tree(g_root);
        rmdir(g_root.c_str());
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Arguments up to the first empty line, then the file.
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    size_t end = text.find("\n\n");
    const std::string_view head = end == std::string_view::npos ? text : text.substr(0, end);
    const std::string_view body =
        end == std::string_view::npos ? std::string_view{} : text.substr(end + 2);
    std::vector<std::string> args;
    for (size_t pos = 0; pos <= head.size() && args.size() < kMaxArgs;) {
        size_t nl = head.find('\n', pos);
        if (nl == std::string_view::npos) nl = head.size();
        std::string arg(head.substr(pos, std::min(nl - pos, kMaxArgLength)));
        if (arg.find('\0') == std::string::npos) args.push_back(expand(arg));
        pos = nl + 1;
    }
    if (head.empty()) args.clear();

    // What the command may write: the files its --out options name.
    std::set<std::string> allowed;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--out" && i + 1 < args.size()) allowed.insert(output_path(args[i + 1]));
        if (a.starts_with("--out=")) allowed.insert(output_path(a.substr(6)));
    }
    allowed.erase(std::string{});

    write_file(g_input, reinterpret_cast<const uint8_t*>(body.data()), body.size());
    const int in = open(g_input.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0 || dup2(in, 0) < 0) fail("cannot attach standard input");
    close(in);
    std::set<std::string> before;
    list_tree(g_root, before);
    const int descriptors = open_descriptors();

    // The command runs in its own working directory; libFuzzer's relative
    // paths stay with the fuzzer's.
    if (chdir(g_work.c_str()) != 0) fail("cannot enter " + g_work);
    std::vector<std::string_view> views(args.begin(), args.end());
    const int status = cycbcr_tool::run_command_line(views);
    std::fflush(stdout);
    if (fchdir(g_home) != 0) fail("cannot return to the fuzzer's directory");

    if (status != 0 && status != 2) fail("exit status " + std::to_string(status));
    if (open_descriptors() != descriptors)
        fail("the open file descriptors changed (one left open, or one of the harness closed)");
    std::set<std::string> after;
    list_tree(g_root, after);
    for (const std::string& p : after)
        if (!before.count(p) && !allowed.count(p)) fail("wrote outside its --out: " + p);
    if (!allowed.count(g_input) && read_file(g_input) != std::string_view(body.data(), body.size()))
        fail("changed its input file");

    clear_tree(g_outDir);
    clear_tree(g_work);
    return 0;
}
