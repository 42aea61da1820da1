#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "model/RecordingFormat.h"

namespace audrel::cli {

/// What the command line asks for.
struct Options {
  enum class Task { record, list, repair, help, version };
  enum class Output { text, json };
  enum class Progress { shown, quiet };
  enum class Server { system, demo };
  enum class Locks { needed, ifOffered };

  Task task = Task::record;
  Server server = Server::system;
  Output output = Output::text;
  Progress progress = Progress::shown;
  std::optional<std::string> app;  ///< as typed; nothing: all system audio
  RecordingFormat format = RecordingFormat::m4a;
  /// At most one of both; without a file the name is the program's own.
  std::optional<std::filesystem::path> file;  ///< with an ending
  std::optional<std::filesystem::path> folder;
  std::optional<std::chrono::microseconds> duration;

  std::vector<std::filesystem::path> repaired;  ///< at least one for that task, none for others
  Locks locks = Locks::needed;                  ///< of the files to repair
};

/// What is wrong with the command line, naming the word, and what to type instead. One or two
/// sentences; may hold what the user typed, control characters and all.
struct UsageError {
  std::string text;
};

/// `arguments` as `main` gets them, the program's name first; their order may change. Looks up
/// whether the output is a folder. The C library's parser keeps global state, so one thread at a
/// time.
std::variant<Options, UsageError> parseOptions(std::span<char*> arguments);

/// Fits a screen of 24 lines of 80 characters.
extern const char* const helpText;

}  // namespace audrel::cli
