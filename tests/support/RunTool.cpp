#include "tests/support/RunTool.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::support {

namespace {

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& arguments) {
  const TemporaryFolder folder;
  std::vector<std::string> command = {
      "sh", "-c", R"(exec "$@" </dev/null >"$0/output" 2>"$0/errors")", folder.path().string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  const auto child = ChildProcess::start({.arguments = command, .environment = {}});
  const int exitCode = child ? child->waitForEnd() : -1;
  return {exitCode, contentsOf(folder / "output"), contentsOf(folder / "errors")};
}

}  // namespace audrel::support
