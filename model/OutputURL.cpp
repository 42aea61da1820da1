#include "model/OutputURL.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include "model/FilenameFormatter.h"

namespace audrel {
namespace {

std::filesystem::path outputFolder(NS::FileManager& fileManager) {
  if (const auto downloads = fileManager.downloadsDirectory()) {
    return *downloads;
  }
  return fileManager.homeDirectoryForCurrentUser() / "Downloads";
}

std::string sourcePart(const RecordingSource& source) {
  const RecordingSource::Process* process = source.asProcess();
  if (process == nullptr) {
    return "SystemMix";
  }
  std::string name = FilenameFormatter::sanitize(process->name);
  return name.empty() ? "Unknown" : name;
}

}  // namespace

std::filesystem::path makeOutputURL(NS::FileManager& fileManager, const RecordingSource& source,
                                    RecordingFormat format, NS::Date date,
                                    const std::optional<std::filesystem::path>& folder) {
  const std::string base =
      "audio-" + sourcePart(source) + "-" + FilenameFormatter::timestampString(date);
  const std::string extension = "." + std::string(format.rawValue());

  const std::filesystem::path parent = folder ? *folder : outputFolder(fileManager);
  const auto named = [&](const std::string& suffix) {
    return parent / (base + suffix + extension);
  };

  std::filesystem::path candidate = named("");
  for (std::int64_t counter = 2; fileManager.nameIsTaken(candidate); ++counter) {
    candidate = named("-" + std::to_string(counter));
    if (counter == std::numeric_limits<std::int64_t>::max()) {
      std::abort();
    }
  }
  return candidate;
}

}  // namespace audrel
