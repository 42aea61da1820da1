#include "tests/architecture/SourceTree.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace audrel::architecture {
namespace {

bool isSource(const std::filesystem::path& path) {
  static const std::set<std::string> extensions = {".h", ".hpp", ".cpp", ".cc", ".c", ".mm", ".m"};
  return extensions.contains(path.extension().string());
}

}  // namespace

std::vector<Source> sourcesInTheTree() {
  const std::filesystem::path root = AUDREL_SOURCE_DIR;
  std::vector<Source> sources;
  for (auto entry = std::filesystem::recursive_directory_iterator(root);
       entry != std::filesystem::recursive_directory_iterator(); ++entry) {
    const std::string name = entry->path().filename().string();
    if (entry.depth() == 0 && (name == "build" || name.starts_with("."))) {
      entry.disable_recursion_pending();
    } else if (entry->is_regular_file() && isSource(entry->path())) {
      std::ifstream stream(entry->path());
      sources.push_back({entry->path().lexically_relative(root).generic_string(),
                         {std::istreambuf_iterator<char>(stream), {}}});
    }
  }
  return sources;
}

}  // namespace audrel::architecture
