#pragma once

#include <glib.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// The user defaults in a file of the form that desktop entries have:
///
///     [Defaults]
///     format="wav"
///     lastRecordingPath="/home/ann/Downloads/audio-SystemMix-2025-03-09-101500.wav"
///
/// One line a key, the text in double quotes, with the escapes of C; bytes that are no UTF-8 are
/// octal. What else is in the file stays: comments, other groups, keys of later versions. Quotes
/// may be left out by whoever edits it, which counts from the next read on.
///
/// A write replaces the file in one step, so that a crash leaves the old or the new one. The file
/// is for its user alone unless its permissions say otherwise, and a symbolic link stays one. What
/// cannot be written (a full disk) still reads back, and goes into the file with the next write
/// that succeeds. A file that is no such file is renamed to "...broken" and kept.
///
/// Keys are of letters, digits and hyphens; texts have no NUL. Main thread.
class UserDefaults final : public NS::UserDefaults {
 public:
  UserDefaults(std::filesystem::path file, std::shared_ptr<os::Logger> logger);

  std::optional<std::string> stringForKey(const std::string& key) override;
  void setString(const std::string& value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;

 private:
  using KeyFileHandle = std::unique_ptr<GKeyFile, Releaser<g_key_file_unref>>;

  void change(const std::string& key, std::optional<std::string> value);
  void save();
  KeyFileHandle load();
  bool setAside(const std::string& reason);
  void complain(const std::string& problem);

  const std::filesystem::path file_;
  std::shared_ptr<os::Logger> logger_;

  /// What the file lacks: new texts, and nothing for a key that was removed.
  std::map<std::string, std::optional<std::string>> unsaved_;

  /// Of the problem that lasts until a write succeeds.
  bool problemIsLogged_ = false;
};

/// "audrel/defaults.ini" in the user's configuration folder: XDG_CONFIG_HOME if that is an absolute
/// path, else ".config" in `home`.
std::filesystem::path userDefaultsFile(const std::filesystem::path& home);

}  // namespace audrel::linuxos
