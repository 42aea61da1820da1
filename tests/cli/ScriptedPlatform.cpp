// The operating system of the program `audrel-record-scripted`: fakes, and a device that plays
// faster than time goes. The environment variable AUDREL_SCRIPT says what goes wrong, in words.

#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/NativePlatform.h"
#include "tests/cli/PlayingHardware.h"
#include "tests/fakes/ThreadQueue.h"
#include "tests/fakes/World.h"

namespace audrel::cli {

namespace {

bool scriptSays(std::string_view word) {
  const char* const script = std::getenv("AUDREL_SCRIPT");
  return script != nullptr && std::string_view(script).find(word) != std::string_view::npos;
}

class StandardErrorLog final : public os::Log {
 public:
  std::shared_ptr<os::Logger> makeLogger(const std::string& /*subsystem*/,
                                         const std::string& category) override {
    return std::make_shared<CategoryLogger>(category);
  }

 private:
  class CategoryLogger final : public os::Logger {
   public:
    explicit CategoryLogger(std::string category) : category_(std::move(category)) {}

    void log(os::LogLevel /*level*/, std::string_view line) noexcept override {
      std::cerr << "[" << category_ << "] " << line << std::endl;
    }

   private:
    const std::string category_;
  };
};

class ScriptedPlatform final : public NativePlatform {
 public:
  ScriptedPlatform() {
    world_.hardware.processObjects = {
        {.id = 11, .pid = 1100, .bundleID = "org.example.Radio"},
        {.id = 12, .pid = 1200, .bundleID = ""},
        {.id = 13, .pid = 1300, .bundleID = ""},
    };
    world_.runningApplications.applications = {
        {1100, {"Web Radio"}}, {1200, {"Player"}}, {1300, {"Player"}}};
    world_.fileManager.downloads = "/scripted";
    if (scriptSays("nobody-plays")) {
      world_.hardware.processObjects.clear();
    }
    if (scriptSays("no-server")) {
      world_.hardware.processObjects.clear();
      world_.hardware.fail(fakes::FakeHardware::Call::createProcessTap, -7);
      world_.diagnostics.sentence = "The audio server is not running: start it.";
    }
    if (scriptSays("denied")) {
      world_.captureAccess.isGranted = false;
    }
    if (scriptSays("cannot-open")) {
      world_.audio.openError = NS::Error{"scripted", 17, "It exists\x1b already."};
    }
    if (scriptSays("cannot-write")) {
      world_.audio.writeError = NS::Error{"scripted", 28, "The disk is full."};
    }
    if (scriptSays("loses-frames")) {
      world_.diagnostics.lost = 480;
    }
  }

  Platform interfaces() override {
    return {.audioHardware = hardware_,
            .audioFramework = world_.audio,
            .captureAccess = world_.captureAccess,
            .clock = world_.clock,
            .collation = world_.collation,
            .fileManager = world_.fileManager,
            .runningApplications = world_.runningApplications,
            .uuids = world_.uuids,
            .dispatch = dispatch_,
            .log = logsOnStandardError() ? static_cast<os::Log&>(standardErrorLog_) : world_.log,
            .diagnostics = world_.diagnostics};
  }

  bool logsOnStandardError() const override { return scriptSays("no-journal"); }

  std::optional<Desktop> desktop() override { return std::nullopt; }

  std::optional<std::string> startDemo() override {
    if (scriptSays("no-demo")) {
      return "The demo's server is not installed: install it.";
    }
    return std::nullopt;
  }

 private:
  fakes::World world_;
  fakes::ThreadDispatch dispatch_;
  StandardErrorLog standardErrorLog_;
  PlayingHardware hardware_{world_.hardware, scriptSays("silence") ? 0.0F : 0.5F};
};

}  // namespace

}  // namespace audrel::cli

std::unique_ptr<NativePlatform> NativePlatform::make() {
  return std::make_unique<audrel::cli::ScriptedPlatform>();
}
