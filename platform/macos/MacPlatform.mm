#include <algorithm>

#include "platform/NativePlatform.h"
#include "platform/macos/AppKit.h"
#include "platform/macos/AudioFramework.h"
#include "platform/macos/AudioHardware.h"
#include "platform/macos/CaptureAccess.h"
#include "platform/macos/Diagnostics.h"
#include "platform/macos/Dispatch.h"
#include "platform/macos/Foundation.h"
#include "platform/macos/Log.h"
#include "platform/macos/Updater.h"

namespace audrel::macos {
namespace {

class MacPlatform final : public NativePlatform {
 public:
  Platform interfaces() override {
    return {.audioHardware = audioHardware_,
            .audioFramework = audioFramework_,
            .captureAccess = captureAccess_,
            .clock = clock_,
            .collation = collation_,
            .fileManager = fileManager_,
            .runningApplications = runningApplications_,
            .uuids = uuids_,
            .dispatch = dispatch_,
            .log = log_,
            .diagnostics = diagnostics_};
  }

  void keepOffStandardError(std::set<std::string, std::less<>> /*categories*/) override {}

  // The system starts an application once, and shows the one that runs when it is asked again.
  std::optional<Desktop> desktop() override {
    return Desktop{.appKit = appKit_,
                   .runLoop = runLoop_,
                   .urlParser = urlParser_,
                   .userDefaults = userDefaults_,
                   .updateFramework = updateFramework_};
  }

  std::optional<std::string> startDemo() override {
    return "There is no demo on macOS: play something, and record that.";
  }

 private:
  AudioHardware audioHardware_;
  AudioFramework audioFramework_;
  CaptureAccess captureAccess_;
  Clock clock_;
  Collation collation_;
  FileManager fileManager_;
  RunningApplications runningApplications_;
  UUIDFactory uuids_;
  Dispatch dispatch_;
  Log log_;
  Diagnostics diagnostics_;
  AppKit appKit_;
  RunLoop runLoop_;
  URLParser urlParser_;
  UserDefaults userDefaults_;
  UpdateFramework updateFramework_;
};

}  // namespace
}  // namespace audrel::macos

// The system may give a downloaded copy an argument at its first launch ("-psn_0_12345"), and tools
// and people give user defaults ("-NSDoubleLocalizedStrings YES").
std::vector<std::string> NativePlatform::typedArguments(std::vector<std::string> arguments,
                                                        std::span<const std::string_view> known) {
  std::erase_if(arguments, [known](const std::string& argument) {
    return std::find(known.begin(), known.end(), argument) == known.end();
  });
  return arguments;
}

std::unique_ptr<NativePlatform> NativePlatform::make() {
  return std::make_unique<audrel::macos::MacPlatform>();
}
