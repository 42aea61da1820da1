#pragma once

#include "platform/Foundation.h"

/// The interfaces of Foundation, each on the class of its name.
namespace audrel::macos {

class Clock final : public NS::Clock {
 public:
  NS::Date now() override { return std::chrono::system_clock::now(); }
};

class FileManager final : public NS::FileManager {
 public:
  std::optional<std::filesystem::path> downloadsDirectory() override;
  std::filesystem::path homeDirectoryForCurrentUser() override;
  bool fileExists(const std::filesystem::path& path) override;

  /// As `fileExists`: what is at a name is one question to the framework.
  bool nameIsTaken(const std::filesystem::path& path) override;
};

class UUIDFactory final : public NS::UUIDFactory {
 public:
  std::string uuidString() override;
};

class Collation final : public NS::Collation {
 public:
  NS::ComparisonResult localizedCaseInsensitiveCompare(std::string_view left,
                                                       std::string_view right) override;
};

class URLParser final : public NS::URLParser {
 public:
  std::optional<NS::URL> urlWithString(const std::string& text) override;
};

class UserDefaults final : public NS::UserDefaults {
 public:
  std::optional<std::string> stringForKey(const std::string& key) override;
  void setString(const std::string& value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;
};

class RunLoop final : public NS::RunLoop {
 public:
  /// In the loop's default mode: the timer does not fire while an alert is up or a menu open.
  std::shared_ptr<NS::Timer> scheduleRepeatingTimer(double interval,
                                                    std::function<void()> block) override;
};

}  // namespace audrel::macos
