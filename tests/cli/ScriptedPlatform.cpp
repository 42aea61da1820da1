// The operating system of the program `audrel-record-scripted`: fakes, and a device that plays
// faster than time goes. The environment variable AUDREL_SCRIPT says what goes wrong, in words.

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/FileRepair.h"
#include "platform/NativePlatform.h"
#include "tests/fakes/IOThread.h"
#include "tests/fakes/ThreadQueue.h"
#include "tests/fakes/World.h"

namespace audrel::cli {

namespace {

bool scriptSays(std::string_view word) {
  const char* const script = std::getenv("AUDREL_SCRIPT");
  return script != nullptr && std::string_view(script).find(word) != std::string_view::npos;
}

/// Stereo of one constant sample.
constexpr std::size_t framesInCycle = 512;
using Cycle = std::array<float, framesInCycle * 2>;

/// Does what the names of files say.
class ScriptedRepair final : public capture::FileRepair {
 public:
  capture::Repair repair(const std::filesystem::path& path, capture::LockRule rule) override {
    using Outcome = capture::Repair::Outcome;
    const std::string name = path.filename();
    if (name.starts_with("cut")) {
      return {Outcome::repaired, 83.25};
    }
    if (name.starts_with("interrupted")) {
      std::raise(SIGINT);
      return {Outcome::repaired, 1};
    }
    if (name.starts_with("whole")) {
      return {Outcome::whole, 2.5};
    }
    if (name.starts_with("recording")) {
      return {Outcome::inUse};
    }
    if (name.starts_with("unlockable") && rule == capture::LockRule::needed) {
      return {Outcome::inUse, 0, "The disk offers no locks."};
    }
    if (name.starts_with("unlockable")) {
      return {Outcome::repaired, 0.5};
    }
    if (name.starts_with("none")) {
      return {Outcome::unreadable, 0, "There is none\x1b."};
    }
    return {Outcome::notOurs};
  }
};

class ScriptedPlatform final : public NativePlatform {
 public:
  ScriptedPlatform() {
    cycle_.fill(scriptSays("silence") ? 0.0F : 0.5F);
    world_.hardware.processObjects = {
        {.id = 11, .pid = 1100, .bundleID = "org.example.Radio"},
        {.id = 12, .pid = 1200, .bundleID = ""},
        {.id = 13, .pid = 1300, .bundleID = ""},
    };
    world_.runningApplications.applications = {
        {1100, {"Web Radio"}}, {1200, {"Player"}}, {1300, {"Player"}}};
    world_.diagnostics.playbacks = {{12, {true, "音楽 \x1b[1m"}}, {13, {false, "Blue"}}};
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
    if (scriptSays("other-takes-name") || scriptSays("forbidden-once")) {
      world_.audio.openError =
          scriptSays("other-takes-name")
              ? NS::Error{NS::POSIXErrorDomain, EEXIST, "It exists already."}
              : NS::Error{NS::POSIXErrorDomain, EACCES, "The folder is closed."};
      world_.journal.whenAdded = [this](const std::string& line) {
        if (line.starts_with("AVAudioFile") && world_.audio.openError) {
          world_.audio.openError.reset();
          world_.fileManager.existing = {"/scripted/audio-SystemMix-2026-11-16-070900.m4a",
                                         "take.wav"};
        }
      };
    }
    if (scriptSays("cannot-write")) {
      world_.audio.writeError = NS::Error{"scripted", 28, "The disk is full."};
    }
    if (scriptSays("loses-the-end")) {
      world_.diagnostics.loss = {.missing = 24'000, .silenced = 12'000, .why = "The disk is full."};
    }
    if (scriptSays("clips")) {
      cycle_.fill(1.5F);
    }
    if (scriptSays("radio-quits")) {
      world_.diagnostics.gone = 11;
    }
    if (scriptSays("server-goes")) {
      world_.diagnostics.notices = {"The audio server is back.", "The audio server has gone.\x1b"};
    }
    if (scriptSays("loses-frames")) {
      world_.diagnostics.lost = 480;
    }
    if (scriptSays("no-journal")) {
      world_.journal.whenAdded = [this](const std::string& line) {
        const auto begin = line.find('[') + 1;
        if (line.starts_with("log ") &&
            !keptOff_.contains(line.substr(begin, line.find(']') - begin))) {
          std::cerr << line << std::endl;
        }
      };
    }
  }

  Platform interfaces() override { return world_.platformWith(dispatch_); }

  void keepOffStandardError(std::set<std::string, std::less<>> categories) override {
    keptOff_ = std::move(categories);
  }

  capture::FileRepair* fileRepair() override {
    return scriptSays("no-repair") ? nullptr : &fileRepair_;
  }

  std::optional<Desktop> desktop() override { return std::nullopt; }

  std::optional<std::string> startDemo() override {
    if (scriptSays("no-demo")) {
      return "The demo's server is not installed: install it.";
    }
    return std::nullopt;
  }

 private:
  /// Ten milliseconds of audio in one.
  void deliver() {
    world_.hardware.cycle({1, {{2, sizeof cycle_, cycle_.data()}}});
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  ScriptedRepair fileRepair_;
  std::set<std::string, std::less<>> keptOff_;
  fakes::World world_;
  fakes::ThreadDispatch dispatch_;
  Cycle cycle_{};
  fakes::IOThread ioThread_{world_.hardware, [this] { deliver(); }};
};

}  // namespace

}  // namespace audrel::cli

std::unique_ptr<NativePlatform> NativePlatform::make() {
  return std::make_unique<audrel::cli::ScriptedPlatform>();
}
