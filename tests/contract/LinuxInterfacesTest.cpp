#include <glib.h>

#include <chrono>
#include <optional>
#include <thread>

#include "platform/linux/files/AudioFramework.h"
#include "platform/linux/loop/RunLoop.h"
#include "platform/linux/pipewire/CaptureHardware.h"
#include "platform/linux/pipewire/Connection.h"
#include "platform/linux/pipewire/MonotonicTime.h"
#include "platform/linux/session/URLParser.h"
#include "platform/linux/session/UserDefaults.h"
#include "platform/linux/system/Clock.h"
#include "platform/linux/system/Collation.h"
#include "platform/linux/system/FileManager.h"
#include "platform/linux/system/Log.h"
#include "platform/linux/system/UUIDFactory.h"
#include "tests/contract/AudioBufferContract.h"
#include "tests/contract/AudioFileContract.h"
#include "tests/contract/AudioFormatContract.h"
#include "tests/contract/CollationContract.h"
#include "tests/contract/FileManagerContract.h"
#include "tests/contract/LogContract.h"
#include "tests/contract/SystemContract.h"
#include "tests/contract/TimerContract.h"
#include "tests/contract/UserDefaultsContract.h"
#include "tests/fakes/FakeSystem.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::contract {
namespace {

class LinuxInterfaces {
 public:
  AV::AudioFramework& audioFramework() { return audioFramework_; }
  NS::Clock& clock() { return clock_; }
  NS::Collation& collation() { return collation_; }
  NS::FileManager& fileManager() { return fileManager_; }
  os::Log& log() { return log_; }
  NS::RunLoop& runLoop() { return runLoop_; }
  NS::RunningApplications& runningApplications() { return hardware_; }
  NS::URLParser& urlParser() { return urlParser_; }
  NS::UUIDFactory& uuids() { return uuids_; }
  capture::Diagnostics& diagnostics() { return hardware_; }

  NS::UserDefaults& userDefaults() {
    if (!userDefaults_) {
      userDefaults_.emplace(folder_ / "defaults.ini",
                            journaled_.makeLogger("org.example", "settings"));
    }
    return *userDefaults_;
  }
  void forgetUserDefaults() { userDefaults_.reset(); }

  void letRunLoopRun() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    while (std::chrono::steady_clock::now() < end) {
      if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
      }
    }
  }

 private:
  support::TemporaryFolder folder_;
  // The Downloads folder is made when it is missing.
  fakes::ScopedVariable home_{"HOME", folder_.path().c_str()};
  fakes::ScopedVariable configuration_{"XDG_CONFIG_HOME", ""};
  fakes::Journal journal_;
  fakes::FakeLog journaled_{journal_};
  linuxos::AudioFramework audioFramework_{journaled_};
  linuxos::Clock clock_;
  linuxos::Collation collation_{"en_GB.UTF-8"};
  linuxos::FileManager fileManager_;
  linuxos::Log log_{os::LogLevel::error};
  linuxos::RunLoop runLoop_;
  linuxos::URLParser urlParser_;
  linuxos::UUIDFactory uuids_;
  linuxos::Connection connection_;
  linuxos::MonotonicTime captureTime_;
  linuxos::CaptureHardware hardware_{connection_, captureTime_, journaled_, uuids_};
  std::optional<linuxos::UserDefaults> userDefaults_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, AudioBufferContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, AudioFileContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, AudioFormatContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, CollationContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, FileManagerContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, LastingUserDefaultsContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, LogContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, RealSystemContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, SystemContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TimerContract, LinuxInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Linux, UserDefaultsContract, LinuxInterfaces);

}  // namespace
}  // namespace audrel::contract
