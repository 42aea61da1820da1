#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <utility>

#include "platform/Diagnostics.h"
#include "platform/Identity.h"
#include "platform/NativePlatform.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/demo/MelodyPlayer.h"
#include "platform/linux/demo/PrivateServer.h"
#include "platform/linux/files/AudioFramework.h"
#include "platform/linux/files/EntryFolder.h"
#include "platform/linux/files/Healer.h"
#include "platform/linux/files/Healing.h"
#include "platform/linux/files/Repair.h"
#include "platform/linux/pipewire/CaptureAccess.h"
#include "platform/linux/pipewire/CaptureHardware.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/MonotonicTime.h"
#include "platform/linux/session/SuspendInhibitor.h"
#include "platform/linux/system/Clock.h"
#include "platform/linux/system/Collation.h"
#include "platform/linux/system/Dispatch.h"
#include "platform/linux/system/FileManager.h"
#include "platform/linux/system/Log.h"
#include "platform/linux/system/StandardDescriptors.h"
#include "platform/linux/system/StateFolder.h"
#include "platform/linux/system/UUIDFactory.h"

namespace audrel::linuxos {

namespace {

/// What the user is to learn of a running recording, until somebody asks. Any thread.
class WaitingNotices {
 public:
  void take(const Notice& notice) {
    const std::lock_guard lock(mutex_);
    texts_.push_back(notice.body);
  }

  std::optional<std::string> next() {
    const std::lock_guard lock(mutex_);
    if (texts_.empty()) {
      return std::nullopt;
    }
    auto text = std::move(texts_.front());
    texts_.pop_front();
    return text;
  }

 private:
  std::mutex mutex_;
  std::deque<std::string> texts_;
};

/// What capturing and writing can tell.
class WholeDiagnostics final : public capture::Diagnostics {
 public:
  WholeDiagnostics(CaptureHardware& hardware, const AudioFramework& audioFramework,
                   WaitingNotices& notices)
      : hardware_(hardware), audioFramework_(audioFramework), notices_(notices) {}

  std::optional<std::string> diagnosis() override { return hardware_.diagnosis(); }
  std::uint64_t lostFrames() override { return hardware_.lostFrames(); }
  std::optional<capture::Playback> playback(CA::AudioObjectID process) override {
    return hardware_.playback(process);
  }
  bool hasQuit(CA::AudioObjectID process) override { return hardware_.hasQuit(process); }
  std::optional<std::string> nextNotice() override { return notices_.next(); }
  std::optional<capture::FileLoss> fileLoss() override { return audioFramework_.loss(); }
  void setSlowSavingObserver(const std::function<void(const std::string&)>& tell) override {
    tellOfSlowSaving_ = tell;
  }

  /// On the thread that may tell.
  void tellOfSlowSaving() const {
    if (tellOfSlowSaving_) {
      tellOfSlowSaving_(slowSavingNotice().body);
    }
  }

 private:
  CaptureHardware& hardware_;
  const AudioFramework& audioFramework_;
  WaitingNotices& notices_;
  std::function<void(const std::string&)> tellOfSlowSaving_;
};

class RecordingRepair final : public capture::FileRepair {
 public:
  Repair repair(const std::filesystem::path& path, LockRule rule) override {
    return linuxos::repair(path, rule);
  }
};

class LinuxPlatform final : public NativePlatform {
 public:
  LinuxPlatform() {
    hardware_.setRunObserver([this](std::size_t running) {
      running > 0 ? inhibitor_.hold() : inhibitor_.release();
      if (running > 0) {
        healing_.begin();
      }
      if (desktop_) {
        desktop_->recordingChanged();
      }
    });
    const NoticeTaker taker = [this](const Notice& notice) { notices_.take(notice); };
    hardware_.setNoticeTaker(taker);
    healing_.setNoticeTaker(taker);
    audioFramework_.setEntryFolder(&entries_);
  }

  Platform interfaces() override {
    return {.audioHardware = hardware_,
            .audioFramework = audioFramework_,
            .captureAccess = captureAccess_,
            .clock = clock_,
            .collation = collation_,
            .fileManager = fileManager_,
            .runningApplications = hardware_,
            .uuids = uuids_,
            .dispatch = dispatch_,
            .log = log_,
            .diagnostics = diagnostics_};
  }

  void keepOffStandardError(std::set<std::string, std::less<>> categories) override {
    log_.keepOffStandardError(std::move(categories));
  }

  capture::FileRepair* fileRepair() override { return &fileRepair_; }

  std::optional<Desktop> desktop() override {
    if (!desktop_) {
      desktop_.emplace(hardware_, audioFramework_, healing_, fileManager_, log_);
      if (!desktop_->claimSession()) {
        return std::nullopt;
      }
    }
    return desktop_->interfaces();
  }

  std::optional<std::string> startDemo() override {
    healing_.end();  // who tries the program out is to see no more than the trial
    std::string failure;
    demoServer_ = PrivateServer::start(&failure);
    if (!demoServer_) {
      return failure;
    }
    demoPlayer_ = MelodyPlayer::start(demoServer_->socketPath());
    connection_.useServer(demoServer_->socketPath());
    if (!demoPlayer_ || !isAnswered()) {
      return "The demo's audio server started, but does not play: the machine may be overloaded; "
             "try again.";
    }
    demoServer_->removeFolder();
    return std::nullopt;
  }

 private:
  /// Recordings are all that a queue is waited for.
  void tellOfSlowSaving(const std::stop_token& stop) {
    if (desktop_) {
      desktop_->tellOfSlowSaving(stop);
    } else {
      diagnostics_.tellOfSlowSaving();
    }
  }

  bool isAnswered() {
    const LoopLock lock(connection_.loop());
    return connection_.ensureConnected() && connection_.roundTrip();
  }

  // Errors alone: on a terminal, progress is the command line's to show.
  Log log_{os::LogLevel::error};
  Clock clock_;
  UUIDFactory uuids_;
  Collation collation_{userCollationLocale()};
  FileManager fileManager_;
  Dispatch dispatch_{[this](const std::stop_token& stop) { tellOfSlowSaving(stop); }};
  const EntryFolder entries_{stateFolder(fileManager_.homeDirectoryForCurrentUser())};
  RecordingRepair fileRepair_;
  AudioFramework audioFramework_{log_};
  SuspendInhibitor inhibitor_{log_.makeLogger(identity::bundleIdentifier, "power")};
  WaitingNotices notices_;
  Healing healing_{Healer(entries_, log_.makeLogger(identity::bundleIdentifier, "file")),
                   log_.makeLogger(identity::bundleIdentifier, "file")};
  std::unique_ptr<PrivateServer> demoServer_;
  Connection connection_;
  MonotonicTime captureTime_;
  CaptureAccess captureAccess_{connection_, log_};
  CaptureHardware hardware_{connection_, captureTime_, log_, uuids_};
  WholeDiagnostics diagnostics_{hardware_, audioFramework_, notices_};
  std::unique_ptr<MelodyPlayer> demoPlayer_;
  std::optional<LinuxDesktop> desktop_;
};

}  // namespace

}  // namespace audrel::linuxos

std::vector<std::string> NativePlatform::typedArguments(
    std::vector<std::string> arguments, std::span<const std::string_view> /*known*/) {
  return arguments;
}

std::unique_ptr<NativePlatform> NativePlatform::make() {
  audrel::linuxos::openStandardDescriptors();
  return std::make_unique<audrel::linuxos::LinuxPlatform>();
}
