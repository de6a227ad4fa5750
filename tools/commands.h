// The subcommands of the cycbcr command. Each returns the exit status on
// success and throws ToolError on failure.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace cycbcr_tool {

using Args = std::span<const std::string_view>;

// The whole usage, and one subcommand's part of it (nullopt for a name that
// is not one of these subcommands).
std::string usage_text();
std::optional<std::string> command_usage_text(std::string_view command);

// The whole command line after the program name: prints the usage, the
// version or a subcommand's output, reports any error on stderr, and returns
// the exit status (0 on success, 2 on any error).
int run_command_line(Args args);

int run_compare(Args args);
int run_convert(Args args);
int run_cpu(Args args);
int run_formats(Args args);
int run_preview(Args args);
int run_scale(Args args);

}  // namespace cycbcr_tool
