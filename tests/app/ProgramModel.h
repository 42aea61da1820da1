#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace audrel {

/// The program once more, as plainly as it can be told: what a user's steps make of the menu, the
/// status item, the files and the settings. Shares no code with the program, and knows what the
/// system answers by the fields that the test keeps equal to the fakes'.
class ProgramModel {
 public:
  // The system.
  bool isPermitted = true;
  bool requestGrants = false;
  std::int64_t now = 0;                ///< seconds since the clock's epoch
  std::vector<std::string> playing;    ///< names, sorted
  std::optional<std::size_t> failsAt;  ///< an index of `startFailures`
  std::set<std::string> files;         ///< that exist
  std::map<std::string, std::string> settings;

  // What the program shows and has.
  std::string menu;  ///< as `fakes::outlineOf` tells of the real one
  std::string statusTitle;
  std::string statusImage = "idle";  ///< "idle", "red" or "orange"
  bool isRecording = false;
  std::size_t tapsLeftBehind = 0;
  std::vector<std::string> alerts;  ///< in the order in which they came up
  std::vector<std::string> revealed;
  std::optional<std::string> file;  ///< of this run

  void launch();
  void open();
  void tick();

  /// The user chooses the item with that title, from whichever menu.
  void choose(const std::string& title);
  void terminate();

  /// What a start asks of the system, in its order: the words of the alert when that fails.
  static const std::vector<std::string>& startFailures();

 private:
  void start();
  void stop();
  void rebuild();
  void show();
  std::optional<std::string> lastFile() const;
  std::string newFile() const;

  std::optional<std::string> selected_;  ///< a name; nothing for everything
  std::vector<std::string> listed_;
  std::int64_t startedAt_ = 0;
  bool isWarned_ = false;
};

}  // namespace audrel
