// The one kind of failure the command reports: a message for the user. main()
// prints it on one line and exits with status 2.
#pragma once

#include <stdexcept>
#include <string>

namespace cycbcr_tool {

class ToolError : public std::runtime_error {
  public:
    explicit ToolError(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace cycbcr_tool
