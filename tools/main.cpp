// cycbcr: converts raw video frames between pixel formats with libcycbcr,
// previews them as PNG pictures, and reports what the library makes of this
// processor.
#include <string_view>
#include <vector>

#include "commands.h"

int main(int argc, char** argv) {
    const std::vector<std::string_view> args(argv + 1, argv + argc);
    return cycbcr_tool::run_command_line(args);
}
