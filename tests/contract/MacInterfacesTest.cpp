#include <CoreFoundation/CoreFoundation.h>

#include <optional>

#include "platform/macos/AudioFramework.h"
#include "platform/macos/Diagnostics.h"
#include "platform/macos/Foundation.h"
#include "platform/macos/Log.h"
#include "platform/macos/Workspace.h"
#include "tests/contract/AudioBufferContract.h"
#include "tests/contract/AudioFileContract.h"
#include "tests/contract/AudioFormatContract.h"
#include "tests/contract/CollationContract.h"
#include "tests/contract/FileManagerContract.h"
#include "tests/contract/LogContract.h"
#include "tests/contract/MacForTests.h"
#include "tests/contract/SystemContract.h"
#include "tests/contract/TimerContract.h"
#include "tests/contract/UserDefaultsContract.h"

namespace audrel::contract {
namespace {

class MacInterfaces {
 public:
  AV::AudioFramework& audioFramework() { return audioFramework_; }
  NS::Clock& clock() { return clock_; }
  NS::Collation& collation() { return collation_; }
  NS::FileManager& fileManager() { return fileManager_; }
  os::Log& log() { return log_; }
  NS::RunLoop& runLoop() { return runLoop_; }
  NS::RunningApplications& runningApplications() { return runningApplications_; }
  NS::URLParser& urlParser() { return urlParser_; }
  NS::UUIDFactory& uuids() { return uuids_; }
  capture::Diagnostics& diagnostics() { return diagnostics_; }

  NS::UserDefaults& userDefaults() { return *userDefaults_; }
  void forgetUserDefaults() { userDefaults_.emplace(); }

  void letRunLoopRun() { CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.02, false); }

 private:
  MacForTests mac_;
  macos::AudioFramework audioFramework_;
  macos::Clock clock_;
  macos::Collation collation_;
  macos::Diagnostics diagnostics_;
  macos::FileManager fileManager_;
  macos::Log log_;
  macos::RunLoop runLoop_;
  macos::RunningApplications runningApplications_;
  macos::URLParser urlParser_;
  macos::UUIDFactory uuids_;
  std::optional<macos::UserDefaults> userDefaults_{std::in_place};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Mac, AudioBufferContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, AudioFileContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, AudioFormatContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, CollationContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, FileManagerContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, LastingUserDefaultsContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, LogContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, RealSystemContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, SystemContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, TimerContract, MacInterfaces);
INSTANTIATE_TYPED_TEST_SUITE_P(Mac, UserDefaultsContract, MacInterfaces);

}  // namespace
}  // namespace audrel::contract
