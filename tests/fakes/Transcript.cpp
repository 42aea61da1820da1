#include "tests/fakes/Transcript.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

namespace audrel::fakes {
namespace {

bool isToUpdate() {
  const char* update = std::getenv("AUDREL_UPDATE_TRANSCRIPTS");
  return update != nullptr && std::string_view(update) == "1";
}

/// The first line in which two texts differ, with its number.
std::string firstDifference(const std::string& kept, const std::string& happened) {
  std::istringstream keptLines(kept);
  std::istringstream happenedLines(happened);
  std::string keptLine;
  std::string happenedLine;
  for (int number = 1;; ++number) {
    const bool more = static_cast<bool>(std::getline(keptLines, keptLine));
    const bool happenedMore = static_cast<bool>(std::getline(happenedLines, happenedLine));
    if (!more) {
      keptLine = "(end)";
    }
    if (!happenedMore) {
      happenedLine = "(end)";
    }
    if (more != happenedMore || keptLine != happenedLine || !more) {
      return "line " + std::to_string(number) + "\n  kept:     " + keptLine +
             "\n  happened: " + happenedLine;
    }
  }
}

}  // namespace

std::optional<std::string> differenceFromTranscript(const std::string& name,
                                                    const std::string& text) {
  const auto path =
      std::filesystem::path(AUDREL_SOURCE_DIR) / "docs" / "transcripts" / (name + ".txt");
  if (isToUpdate()) {
    std::ofstream stream(path, std::ios::binary);
    stream << text;
    stream.close();
    return stream ? std::nullopt : std::optional("cannot write " + path.string());
  }
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    return "there is no docs/transcripts/" + name +
           ".txt; AUDREL_UPDATE_TRANSCRIPTS=1 in the environment of the tests writes it";
  }
  const std::string kept{std::istreambuf_iterator<char>(stream), {}};
  if (kept == text) {
    return std::nullopt;
  }
  return "docs/transcripts/" + name + ".txt differs in " + firstDifference(kept, text);
}

}  // namespace audrel::fakes
