#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "platform/CoreGraphics.h"
#include "platform/Diagnostics.h"
#include "platform/Foundation.h"
#include "platform/Log.h"
#include "platform/Loggers.h"
#include "tests/fakes/Journal.h"

/// The small interfaces, each with what it answers as a field.
namespace audrel::fakes {

class FakeCaptureAccess final : public CG::CaptureAccess {
 public:
  explicit FakeCaptureAccess(Journal& journal) : journal_(journal) {}

  bool isGranted = true;
  /// What a request turns `isGranted` into.
  bool requestGrants = false;

  bool preflightScreenCaptureAccess() override;
  bool requestScreenCaptureAccess() override;

 private:
  Journal& journal_;
};

/// Stands still until it is moved.
class FakeClock final : public NS::Clock {
 public:
  explicit FakeClock(Journal& journal) : journal_(journal) {}

  /// 2026-11-16 07:09:00 UTC.
  static NS::Date epoch();

  NS::Date date = epoch();

  void advance(std::chrono::milliseconds step) { date += step; }

  NS::Date now() override;

 private:
  Journal& journal_;
};

/// Compares ASCII texts letter by letter, whatever the case, unless told otherwise.
class FakeCollation final : public NS::Collation {
 public:
  std::function<NS::ComparisonResult(std::string_view, std::string_view)> compare;

  NS::ComparisonResult localizedCaseInsensitiveCompare(std::string_view left,
                                                       std::string_view right) override;
};

class FakeFileManager final : public NS::FileManager {
 public:
  explicit FakeFileManager(Journal& journal) : journal_(journal) {}

  std::optional<std::filesystem::path> downloads = "/home/listener/Downloads";
  std::filesystem::path home = "/home/listener";
  std::set<std::filesystem::path> existing;
  /// Links that lead nowhere, which take a name as on Linux.
  std::set<std::filesystem::path> danglingLinks;

  std::optional<std::filesystem::path> downloadsDirectory() override;
  std::filesystem::path homeDirectoryForCurrentUser() override;
  bool fileExists(const std::filesystem::path& path) override;
  bool nameIsTaken(const std::filesystem::path& path) override;

 private:
  Journal& journal_;
};

class FakeRunningApplications final : public NS::RunningApplications {
 public:
  explicit FakeRunningApplications(Journal& journal) : journal_(journal) {}

  std::map<pid_t, NS::RunningApplication> applications;

  std::optional<NS::RunningApplication> runningApplication(pid_t processIdentifier) override;

 private:
  Journal& journal_;
};

/// Counts: "00000000-0000-4000-8000-000000000001" and so on.
class FakeUUIDs final : public NS::UUIDFactory {
 public:
  explicit FakeUUIDs(Journal& journal) : journal_(journal) {}

  std::string uuidString() override;

 private:
  Journal& journal_;
  int made_ = 0;
};

/// Journals every logger that it makes, and every line with its subsystem, category and level.
class FakeLog final : public os::Log {
 public:
  explicit FakeLog(Journal& journal) : journal_(journal) {}

  std::shared_ptr<os::Logger> makeLogger(const std::string& subsystem,
                                         const std::string& category) override;

 private:
  Journal& journal_;
  os::Loggers loggers_;
};

class FakeDiagnostics final : public capture::Diagnostics {
 public:
  std::optional<std::string> sentence;
  std::uint64_t lost = 0;
  std::map<CA::AudioObjectID, capture::Playback> playbacks;
  CA::AudioObjectID gone = CA::kAudioObjectUnknown;  ///< the process that has quit
  std::optional<capture::FileLoss> loss;
  std::vector<std::string> notices;  ///< the next one last

  std::optional<std::string> diagnosis() override { return sentence; }
  std::uint64_t lostFrames() override { return lost; }
  std::optional<capture::Playback> playback(CA::AudioObjectID process) override {
    const auto found = playbacks.find(process);
    return found == playbacks.end() ? std::nullopt : std::optional(found->second);
  }
  bool hasQuit(CA::AudioObjectID process) override { return process == gone; }
  std::optional<capture::FileLoss> fileLoss() override { return loss; }
  std::optional<std::string> nextNotice() override {
    if (notices.empty()) {
      return std::nullopt;
    }
    auto notice = notices.back();
    notices.pop_back();
    return notice;
  }
};

}  // namespace audrel::fakes
