#include "model/Preferences.h"

#include <utility>

namespace audrel {
namespace {

constexpr const char* formatKey = "format";
constexpr const char* sourceBundleIDKey = "sourceBundleID";
constexpr const char* sourceNameKey = "sourceName";
constexpr const char* lastRecordingPathKey = "lastRecordingPath";

}  // namespace

std::optional<std::filesystem::path> Preferences::lastRecordingURL() const {
  const auto text = defaults_.stringForKey(lastRecordingPathKey);
  if (!text) {
    return std::nullopt;
  }
  std::filesystem::path url = *text;
  return fileManager_.fileExists(url) ? std::optional(std::move(url)) : std::nullopt;
}

void Preferences::setLastRecordingURL(const std::optional<std::filesystem::path>& url) {
  store(url ? std::optional(url->string()) : std::nullopt, lastRecordingPathKey);
}

void Preferences::setLastSourceHint(const std::optional<SourceHint>& hint) {
  store(hint ? hint->bundleID : std::nullopt, sourceBundleIDKey);
  store(hint ? std::optional(hint->name) : std::nullopt, sourceNameKey);
}

RecordingFormat Preferences::format() const {
  const auto text = defaults_.stringForKey(formatKey);
  return RecordingFormat::fromRawValue(text.value_or("")).value_or(RecordingFormat::m4a);
}

void Preferences::setFormat(RecordingFormat format) {
  store(std::string(format.rawValue()), formatKey);
}

void Preferences::store(const std::optional<std::string>& text, const std::string& key) {
  if (text) {
    defaults_.setString(*text, key);
  } else {
    defaults_.removeObjectForKey(key);
  }
}

}  // namespace audrel
