#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "tests/engine/EngineTest.h"

namespace audrel {
namespace {

using testing::IsEmpty;
using Call = fakes::FakeHardware::Call;

const NS::Error noSuchFolder{NS::POSIXErrorDomain, 2, "The folder doesn't exist."};

enum class Left { nothing, tap, tapAndItsDescription };

struct Failure {
  const char* name;
  std::function<void(fakes::World&)> cause;
  RecorderError error;
  const char* logged;  ///< as an error; "" for no such line
  Left left;
};

void PrintTo(const Failure& failure, std::ostream* stream) {
  *stream << failure.name;
}

std::function<void(fakes::World&)> failing(Call call, CA::OSStatus status) {
  return [=](fakes::World& world) { world.hardware.fail(call, status); };
}

std::function<void(fakes::World&)> yieldingNothing(Call call) {
  return [=](fakes::World& world) { world.hardware.yieldNothing(call); };
}

const Failure failures[] = {
    {"tapStatus", failing(Call::createProcessTap, -50), RecorderError::tapCreationFailed(-50),
     "AudioHardwareCreateProcessTap failed: -50", Left::nothing},
    {"tapIdIs0", yieldingNothing(Call::createProcessTap), RecorderError::tapCreationFailed(0),
     "AudioHardwareCreateProcessTap failed: 0", Left::nothing},
    {"tapUID", failing(Call::tapUID, 560947818), RecorderError::tapCreationFailed(560947818),
     "Reading tap UID failed: 560947818", Left::tap},
    {"tapFormat", failing(Call::tapFormat, -2147483647),
     RecorderError::streamFormatUnavailable(-2147483647), "Reading tap format failed: -2147483647",
     Left::tap},
    {"noFormatOfTheDescription", [](fakes::World& world) { world.audio.makesNoFormat = true; },
     RecorderError::streamFormatUnavailable(-1), "", Left::tapAndItsDescription},
    {"defaultOutputDeviceStatus", failing(Call::defaultOutputDevice, 7),
     RecorderError::aggregateDeviceFailed(7), "", Left::tapAndItsDescription},
    {"noDefaultOutputDevice", yieldingNothing(Call::defaultOutputDevice),
     RecorderError::aggregateDeviceFailed(0), "", Left::tapAndItsDescription},
    {"deviceUID", failing(Call::deviceUID, 8), RecorderError::aggregateDeviceFailed(8), "",
     Left::tapAndItsDescription},
    {"aggregateDeviceStatus", failing(Call::createAggregateDevice, 9),
     RecorderError::aggregateDeviceFailed(9), "AudioHardwareCreateAggregateDevice failed: 9",
     Left::tapAndItsDescription},
    {"aggregateDeviceIdIs0", yieldingNothing(Call::createAggregateDevice),
     RecorderError::aggregateDeviceFailed(0), "AudioHardwareCreateAggregateDevice failed: 0",
     Left::tapAndItsDescription},
    {"file", [](fakes::World& world) { world.audio.openError = noSuchFolder; },
     RecorderError::fileOpenFailed(noSuchFolder),
     "AVAudioFile open failed: The folder doesn't exist.", Left::nothing},
    {"ioProcStatus", failing(Call::createIOProcID, 10), RecorderError::ioProcInstallFailed(10),
     "AudioDeviceCreateIOProcID failed: 10", Left::nothing},
    {"noIOProcId", yieldingNothing(Call::createIOProcID), RecorderError::ioProcInstallFailed(0),
     "AudioDeviceCreateIOProcID failed: 0", Left::nothing},
    {"deviceStart", failing(Call::deviceStart, -11), RecorderError::ioProcInstallFailed(-11),
     "AudioDeviceStart failed: -11", Left::nothing},
};

class StartFailure : public EngineTest, public testing::WithParamInterface<Failure> {
 protected:
  std::string loggedErrors() const {
    std::string all;
    for (const std::string& line : world.journal.lines(error(""))) {
      all += line.substr(error("").size());
    }
    return all;
  }
};

TEST_P(StartFailure, throwsLogsAndLeavesBehindExactlyThis) {
  GetParam().cause(world);
  EXPECT_EQ(start(radio()), GetParam().error);
  EXPECT_EQ(loggedErrors(), GetParam().logged);

  const bool tapIsLeft = GetParam().left != Left::nothing;
  EXPECT_EQ(world.hardware.taps().size(), tapIsLeft ? 1U : 0U);
  EXPECT_EQ(Inspector::tapID(*engine), tapIsLeft ? 101U : 0U);
  EXPECT_EQ(Inspector::tapStreamDescription(*engine).has_value(),
            GetParam().left == Left::tapAndItsDescription);
  EXPECT_THAT(world.hardware.aggregateDevices(), IsEmpty());
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(world.hardware.installedIOProcs(), 0U);
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_FALSE(Inspector::hasAudioFile(*engine));
  EXPECT_EQ(Inspector::writerFormat(*engine), nullptr);
  EXPECT_FALSE(engine->isRecording());
  EXPECT_EQ(engine->startDate(), std::nullopt);
  EXPECT_EQ(engine->source(), radio());
}

INSTANTIATE_TEST_SUITE_P(Engine, StartFailure, testing::ValuesIn(failures),
                         [](const auto& test) { return test.param.name; });

using Engine = EngineTest;

TEST_F(Engine, keepsTheStatusOfAFailureWhenTearingDownFailsToo) {
  world.hardware.fail(Call::deviceStart, -11);
  world.hardware.fail(Call::deviceStop, 1);
  world.hardware.fail(Call::destroyIOProcID, 2);
  world.hardware.fail(Call::destroyAggregateDevice, 3);
  world.hardware.fail(Call::destroyProcessTap, 4);
  EXPECT_EQ(start(), RecorderError::ioProcInstallFailed(-11));
  EXPECT_FALSE(Inspector::hasIOProc(*engine));
  EXPECT_EQ(Inspector::aggregateDeviceID(*engine), 0U);
  EXPECT_EQ(Inspector::tapID(*engine), 0U);
}

}  // namespace
}  // namespace audrel
