#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "model/RecordingFormat.h"
#include "platform/Foundation.h"

namespace audrel {

/// The one place where settings touch the user defaults. Nothing is cached and no default is
/// registered: every read and every write goes straight to the store.
class Preferences {
 public:
  /// A process that was chosen as source.
  struct SourceHint {
    std::optional<std::string> bundleID;
    std::string name;

    bool operator==(const SourceHint&) const = default;
  };

  /// Refers to both for life.
  Preferences(NS::UserDefaults& defaults, NS::FileManager& fileManager)
      : defaults_(defaults), fileManager_(fileManager) {}

  /// The recording that was started last. Nothing when its file is gone; the stored path stays.
  std::optional<std::filesystem::path> lastRecordingURL() const;
  void setLastRecordingURL(const std::optional<std::filesystem::path>& url);

  /// Write-only: every launch begins with all system audio.
  void setLastSourceHint(const std::optional<SourceHint>& hint);

  /// M4A unless the store has the exact raw value of another format.
  RecordingFormat format() const;
  void setFormat(RecordingFormat format);

 private:
  void store(const std::optional<std::string>& text, const std::string& key);

  NS::UserDefaults& defaults_;
  NS::FileManager& fileManager_;
};

}  // namespace audrel
