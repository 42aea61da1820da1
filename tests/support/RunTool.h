#pragma once

#include <string>
#include <vector>

namespace audrel::support {

struct ToolResult {
  int exitCode = -1;
  std::string output;
  std::string errors;
};

/// Runs a program found in PATH with these arguments, without input, and waits for its end. On the
/// main thread.
ToolResult runTool(const std::vector<std::string>& arguments);

}  // namespace audrel::support
