#include "tests/app/ProgramModel.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <ctime>

namespace audrel {
namespace {

/// The first that makes a file, which then stays.
constexpr std::size_t firstAfterTheFile = 6;

/// Those before this one leave their tap behind, but for the first, which made none.
constexpr std::size_t openingTheFile = 5;

std::string timeShown(std::int64_t seconds) {
  std::array<char, 64> text{};
  if (seconds < 3600) {
    std::snprintf(text.data(), text.size(), " %02" PRId64 ":%02" PRId64, seconds % 3600 / 60,
                  seconds % 60);
  } else {
    std::snprintf(text.data(), text.size(), " %" PRId64 ":%02" PRId64 ":%02" PRId64, seconds / 3600,
                  seconds % 3600 / 60, seconds % 60);
  }
  return text.data();
}

}  // namespace

const std::vector<std::string>& ProgramModel::startFailures() {
  static const std::vector<std::string> words = {
      "Could not create the audio tap (OSStatus -100). Try restarting Audrel.",
      "Could not create the audio tap (OSStatus -101). Try restarting Audrel.",
      "Could not read the tap's stream format (OSStatus -102).",
      "Could not create the aggregate capture device (OSStatus -103).",
      "Could not create the aggregate capture device (OSStatus -104).",
      "Could not create the output file: The disk is full.",
      "Could not install the audio callback (OSStatus -106).",
      "Could not install the audio callback (OSStatus -107).",
  };
  return words;
}

void ProgramModel::launch() {
  isPermitted = isPermitted || requestGrants;
  selected_.reset();
  listed_.clear();
  file.reset();
  isWarned_ = false;
  show();
  rebuild();
}

void ProgramModel::open() {
  listed_ = playing;
  rebuild();
}

void ProgramModel::choose(const std::string& title) {
  if (title == "Start Recording" || title == "Stop Recording") {
    isRecording ? stop() : start();
  } else if (title == "All System Audio") {
    selected_.reset();
    settings.erase("sourceName");
    settings.erase("sourceBundleID");
    rebuild();
  } else if (title == "Refresh List") {
    open();
  } else if (title.starts_with("M4A") || title.starts_with("WAV")) {
    settings["format"] = title.starts_with("M4A") ? "m4a" : "wav";
    rebuild();
  } else if (title.starts_with("Reveal")) {
    if (const auto last = lastFile()) {
      revealed.push_back(*last);
    }
  } else if (title.starts_with("About")) {
    alerts.emplace_back("Audrel 1.0.0");
  } else if (title == "Check for Updates…") {
    // The updater's business.
  } else {
    selected_ = title;
    settings["sourceName"] = title;
    settings["sourceBundleID"] = "org." + title;
    rebuild();
  }
}

void ProgramModel::start() {
  isPermitted = isPermitted || requestGrants;
  if (!isPermitted) {
    alerts.emplace_back("Permission needed");
    return;
  }
  const std::string made = newFile();
  if (failsAt) {
    const bool leavesATap = *failsAt > 0 && *failsAt < openingTheFile;
    tapsLeftBehind += leavesATap ? 1 : 0;
    if (*failsAt >= firstAfterTheFile) {
      files.insert(made);
    }
    alerts.push_back("Recording failed: " + startFailures()[*failsAt]);
    return;
  }
  files.insert(made);
  file = made;
  settings["lastRecordingPath"] = made;
  isRecording = true;
  startedAt_ = now;
  isWarned_ = false;
  show();
  rebuild();
}

void ProgramModel::stop() {
  isRecording = false;
  show();
  rebuild();
}

void ProgramModel::terminate() {
  isRecording = false;
}

void ProgramModel::tick() {
  if (isRecording) {
    show();
    isWarned_ = isWarned_ || now - startedAt_ >= 3600;
  }
}

void ProgramModel::show() {
  statusTitle = isRecording ? timeShown(now - startedAt_) : "";
  const char* colour = isWarned_ ? "orange" : "red";
  statusImage = isRecording ? colour : "idle";
}

std::optional<std::string> ProgramModel::lastFile() const {
  if (file) {
    return file;
  }
  const auto stored = settings.find("lastRecordingPath");
  const bool isThere = stored != settings.end() && files.contains(stored->second);
  return isThere ? std::optional(stored->second) : std::nullopt;
}

void ProgramModel::rebuild() {
  const std::string reveal = lastFile() ? "\n" : " (off)\n";
  if (isRecording) {
    menu = "Recording from: " + selected_.value_or("All System Audio") +
           " (off)\n-\nStop Recording\n-\nReveal Recording in Finder" + reveal + "-\nQuit Audrel\n";
    return;
  }
  menu = "Start Recording\n-\nRecord from\n> All System Audio";
  menu += std::string(selected_ ? "" : " *") + "\n> -\n";
  for (const std::string& name : listed_) {
    menu += "> " + name + (selected_ == name ? " *\n" : "\n");
  }
  if (listed_.empty()) {
    menu += "> No audible apps (off)\n";
  }
  const auto format = settings.find("format");
  const bool isWav = format != settings.end() && format->second == "wav";
  menu += "> -\n> Refresh List\nFormat\n> M4A (AAC 256 kbps)";
  menu += std::string(isWav ? "" : " *") + "\n> WAV (48 kHz / 16-bit)" + (isWav ? " *" : "");
  menu += "\n-\nReveal Last Recording in Finder" + reveal +
          "-\nAbout Audrel…\nCheck for Updates…\nQuit Audrel\n";
}

std::string ProgramModel::newFile() const {
  constexpr std::time_t epoch = 1794812940;  // 2026-11-16 07:09:00 UTC
  const std::time_t time = epoch + now;
  std::tm fields{};
  gmtime_r(&time, &fields);
  std::array<char, 64> timestamp{};
  std::strftime(timestamp.data(), timestamp.size(), "%Y-%m-%d-%H%M%S", &fields);
  const auto format = settings.find("format");
  const std::string extension = format == settings.end() ? ".m4a" : "." + format->second;
  const std::string base =
      "/home/listener/Downloads/audio-" + selected_.value_or("SystemMix") + "-" + timestamp.data();
  std::string path = base + extension;
  for (int number = 2; files.contains(path); ++number) {
    path = base + "-" + std::to_string(number) + extension;
  }
  return path;
}

}  // namespace audrel
