// Tells the stories of the engine, which stands on the executed adapters here: the journal is the
// frameworks' own.

#include <chrono>
#include <functional>
#include <map>
#include <optional>

#include "tests/engine/EngineStories.h"
#include "tests/macos/execution/MacTest.h"
#include "tests/macos/execution/SteppedPlatform.h"

namespace audrel::macos {
namespace {

using story::Fault;
using Cause = std::function<void(fakemac::Mac&)>;

Cause callFails(const std::string& call, CA::OSStatus status) {
  return [=](fakemac::Mac& mac) { mac.failing[call] = status; };
}

Cause callGivesNothing(const std::string& call) {
  return [=](fakemac::Mac& mac) { mac.withoutResult.insert(call); };
}

Cause propertyFails(std::uint32_t selector) {
  return [=](fakemac::Mac& mac) { mac.failingProperties[selector] = story::badObject; };
}

const std::map<Fault, Cause>& causes() {
  static const std::map<Fault, Cause> all = {
      {Fault::noPermission, [](auto& mac) { mac.mayCapture = false; }},
      {Fault::tapFails, callFails("AudioHardwareCreateProcessTap", story::parameterError)},
      {Fault::tapYieldsNothing, callGivesNothing("AudioHardwareCreateProcessTap")},
      {Fault::tapUIDFails, propertyFails('tuid')},
      {Fault::tapFormatFails, propertyFails('tfmt')},
      {Fault::tapFormatIsNone, [](auto& mac) { mac.tapFormatID = 0; }},
      {Fault::outputDeviceFails, propertyFails('dOut')},
      {Fault::outputDeviceYieldsNothing, [](auto& mac) { mac.defaultOutput = 0; }},
      {Fault::outputDeviceUIDFails, propertyFails('uid ')},
      {Fault::aggregateDeviceFails,
       callFails("AudioHardwareCreateAggregateDevice", story::illegalOperation)},
      {Fault::aggregateDeviceYieldsNothing, callGivesNothing("AudioHardwareCreateAggregateDevice")},
      {Fault::fileFails,
       [](auto& mac) { mac.openFails = {"NSPOSIXErrorDomain", 2, story::folderIsMissing}; }},
      {Fault::ioProcFails, callFails("AudioDeviceCreateIOProcID", story::illegalOperation)},
      {Fault::ioProcYieldsNothing, callGivesNothing("AudioDeviceCreateIOProcID")},
      {Fault::deviceStartFails, callFails("AudioDeviceStart", story::illegalOperation)},
      {Fault::writesFail,
       [](auto& mac) { mac.writeFails = {"NSPOSIXErrorDomain", 28, story::diskIsFull}; }},
      {Fault::noMemory, [](auto& mac) { mac.hasMemoryForBuffers = false; }},
  };
  return all;
}

class MacStage final : public story::Stage {
 public:
  explicit MacStage(fakemac::Mac& mac) : mac_(mac) {}

  Platform platform() override { return platform_.interfaces(); }

  void set(std::optional<Fault> fault) override {
    mac_.failing.clear();
    mac_.failingProperties.clear();
    mac_.withoutResult.clear();
    mac_.openFails.reset();
    mac_.writeFails.reset();
    mac_.hasMemoryForBuffers = true;
    mac_.mayCapture = true;
    mac_.defaultOutput = 51;
    mac_.tapFormatID = 'lpcm';
    if (fault) {
      causes().at (*fault)(mac_);
    }
  }

  void deliver(std::uint32_t frames) override {
    constexpr std::size_t bytesPerFrame = 8;
    fakemac::deliver({std::vector<std::byte>(frames * bytesPerFrame)});
  }
  void runQueue() override { fakemac::runQueues(); }
  void letPass(std::chrono::milliseconds time) override { clock_.date += time; }
  std::vector<std::string> takeJournal() override { return mac_.takeJournal(); }

  story::Inventory inventory() const override {
    const auto open = std::count_if(mac_.files.begin(), mac_.files.end(),
                                    [](const auto& file) { return file.isOpen; });
    return {fakemac::taps(), fakemac::aggregateDevices(), fakemac::installedIOProcs(),
            static_cast<std::size_t>(open)};
  }

 private:
  fakemac::Mac& mac_;
  SteppedClock clock_;
  SteppedPlatform platform_{clock_};
};

class EngineTranscriptTest : public MacTest, public testing::WithParamInterface<story::Story> {
 protected:
  EngineTranscriptTest() { mac().holdsQueues = true; }
};

TEST_P(EngineTranscriptTest, isTheOneInTheTree) {
  MacStage stage(mac());
  const auto difference = story::differenceFromTranscript(GetParam(), stage, "macos-");
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

INSTANTIATE_TEST_SUITE_P(Mac, EngineTranscriptTest, testing::ValuesIn(story::all()),
                         [](const auto& test) {
                           std::string name = test.param.name;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace audrel::macos
