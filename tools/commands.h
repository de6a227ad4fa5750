// The subcommands of the cycbcr command. Each returns the exit status on
// success and throws ToolError on failure.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace cycbcr_tool {

using Args = std::span<const std::string_view>;

std::string usage_text();
int run_convert(Args args);
int run_cpu(Args args);
int run_formats(Args args);
int run_preview(Args args);
int run_scale(Args args);

}  // namespace cycbcr_tool
