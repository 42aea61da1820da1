#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/discovery/ProcessDiscoveryInspector.h"
#include "tests/fakes/World.h"

namespace audrel {
namespace {

using Call = fakes::FakeHardware::Call;
using Raw = ProcessDiscovery::RawProcessInfo;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_default_constructible_v<ProcessDiscovery>, "a namespace has no instances");
static_assert(std::is_same_v<pid_t, decltype(Raw::pid)>);

const std::string sizeQuery =
    "AudioObjectGetPropertyDataSize(1, 'prs#'/'glob'/0, no qualifier, from 0) -> ";
const std::string discoveryLogger = "makeLogger(\"io.github.audrel.Audrel\", \"discovery\")";
const std::string logError = "log io.github.audrel.Audrel [discovery] error: ";

class RawProcesses : public testing::Test {
 protected:
  std::vector<Raw> rawProcesses() {
    return ProcessDiscoveryInspector::rawProcesses(world.platform());
  }
  void applicationIs(pid_t pid, std::optional<std::string> name) {
    world.runningApplications.applications[pid] = {std::move(name)};
  }

  fakes::World world;
};

TEST_F(RawProcesses, everyObjectIsAskedForItsPidThenItsBundleIdentifierThenItsApplication) {
  world.hardware.processObjects = {{70, 700, "org.example.radio"}, {71, 710, ""}};
  applicationIs(700, "Radio");
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{70, 700, "org.example.radio", "Radio"},
                                          Raw{71, 710, std::nullopt, ""}));
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre(
          sizeQuery + "status 0, 8 bytes",
          "AudioObjectGetPropertyData(1, 'prs#'/'glob'/0, no qualifier, size 8) -> status 0, "
          "objects 70, 71",
          "AudioObjectGetPropertyData(70, 'ppid'/'glob'/0, no qualifier, size 4) -> status 0, pid "
          "700",
          "AudioObjectGetPropertyData(70, 'pbid'/'glob'/0, no qualifier, size 8, text from \"\") "
          "-> status 0, \"org.example.radio\"",
          "runningApplication(700)",
          "AudioObjectGetPropertyData(71, 'ppid'/'glob'/0, no qualifier, size 4) -> status 0, pid "
          "710",
          "AudioObjectGetPropertyData(71, 'pbid'/'glob'/0, no qualifier, size 8, text from \"\") "
          "-> status 0, \"\"",
          "runningApplication(710)"));
}

TEST_F(RawProcesses, theOrderOfTheSystemsListIsKept) {
  world.hardware.processObjects = {{72, 3, "c"}, {70, 1, "a"}, {71, 2, "b"}};
  EXPECT_THAT(rawProcesses(),
              ElementsAre(Raw{72, 3, "c", "c"}, Raw{70, 1, "a", "a"}, Raw{71, 2, "b", "b"}));
}

TEST_F(RawProcesses, aSizeQueryThatFailsIsLoggedWithItsStatusAndYieldsAnEmptyList) {
  world.hardware.processObjects = {{70, 700, "x"}};
  world.hardware.fail(Call::processObjectListSize, -50);
  EXPECT_THAT(rawProcesses(), IsEmpty());
  EXPECT_THAT(world.journal.lines(),
              ElementsAre(sizeQuery + "status -50", discoveryLogger,
                          logError + "ProcessObjectList size query failed: -50"));
}

TEST_F(RawProcesses, anEmptyListIsLoggedAsAFailureWithStatus0) {
  EXPECT_THAT(rawProcesses(), IsEmpty());
  EXPECT_THAT(world.journal.lines(),
              ElementsAre(sizeQuery + "status 0, 0 bytes", discoveryLogger,
                          logError + "ProcessObjectList size query failed: 0"));
}

TEST_F(RawProcesses, aListQueryThatFailsIsLoggedWithItsStatusAndYieldsAnEmptyList) {
  world.hardware.processObjects = {{70, 700, "x"}};
  world.hardware.fail(Call::processObjectList, 560947818);
  EXPECT_THAT(rawProcesses(), IsEmpty());
  EXPECT_THAT(
      world.journal.lines(),
      ElementsAre(sizeQuery + "status 0, 4 bytes",
                  "AudioObjectGetPropertyData(1, 'prs#'/'glob'/0, no qualifier, size 4) -> status "
                  "560947818",
                  discoveryLogger, logError + "ProcessObjectList query failed: 560947818"));
}

TEST_F(RawProcesses, everyFailureIsLoggedByTheOneLoggerThatTheFirstMade) {
  rawProcesses();
  rawProcesses();
  EXPECT_EQ(world.journal.lines("log ").size(), 2U);
  EXPECT_THAT(world.journal.lines("makeLogger"), ElementsAre(discoveryLogger));
}

TEST_F(RawProcesses, aSizeBelowOneIdYieldsAnEmptyListWithoutALogLine) {
  world.hardware.processObjects = {{70, 700, "x"}};
  world.hardware.processObjectListSize = 3;
  EXPECT_THAT(rawProcesses(), IsEmpty());
  EXPECT_THAT(world.journal.lines("log "), IsEmpty());
  EXPECT_EQ(world.journal.lines().size(), 2U);
}

TEST_F(RawProcesses, ofASizeThatIsNoMultipleOfAnIdOnlyWholeIdsCount) {
  world.hardware.processObjects = {{70, 700, "x"}, {71, 710, "y"}};
  world.hardware.processObjectListSize = 7;
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{70, 700, "x", "x"}));
}

TEST_F(RawProcesses, aListThatTurnsOutShorterThanItsSizeLeavesObjects0WhichAreSkipped) {
  world.hardware.processObjects = {{70, 700, "x"}};
  world.hardware.processObjectListSize = 12;
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{70, 700, "x", "x"}));
  EXPECT_THAT(world.journal.lines("log "), IsEmpty());
}

TEST_F(RawProcesses, anObjectWhosePidQueryFailsIsLeftOutWithoutALogLine) {
  world.hardware.processObjects = {{70, 700, "x", -1}, {71, 710, "y"}};
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{71, 710, "y", "y"}));
  EXPECT_THAT(world.journal.lines("log "), IsEmpty());
}

TEST_F(RawProcesses, anObjectWhosePidQueryWritesNothingIsLeftOut) {
  world.hardware.processObjects = {{70, std::nullopt, "x"}, {71, 710, "y"}};
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{71, 710, "y", "y"}));
  EXPECT_THAT(
      world.journal.lines("AudioObjectGetPropertyData(70, 'ppid'"),
      ElementsAre("AudioObjectGetPropertyData(70, 'ppid'/'glob'/0, no qualifier, size 4) -> "
                  "status 0, nothing"));
}

TEST_F(RawProcesses, anObjectWithPid0OrANegativePidIsLeftOutAndAskedNothingElse) {
  world.hardware.processObjects = {{70, 0, "x"}, {71, -5, "y"}, {72, 1, "z"}};
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{72, 1, "z", "z"}));
  EXPECT_THAT(world.journal.lines("log "), IsEmpty());
  EXPECT_THAT(world.journal.lines("AudioObjectGetPropertyData(70, 'pbid'"), IsEmpty());
  EXPECT_THAT(world.journal.lines("runningApplication"), ElementsAre("runningApplication(1)"));
}

TEST_F(RawProcesses, aBundleIdentifierWhoseQueryFailsIsAbsentWhateverItLeftBehind) {
  world.hardware.processObjects = {{70, 700, "x", 0, -1}};
  applicationIs(700, "Radio");
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{70, 700, std::nullopt, "Radio"}));
  EXPECT_THAT(world.journal.lines("log "), IsEmpty());
}

TEST_F(RawProcesses, withoutABundleIdentifierAndAnApplicationTheNameIsEmpty) {
  world.hardware.processObjects = {{70, 700, "", 0, -1}, {71, 710, ""}};
  EXPECT_THAT(rawProcesses(),
              ElementsAre(Raw{70, 700, std::nullopt, ""}, Raw{71, 710, std::nullopt, ""}));
}

TEST_F(RawProcesses, anApplicationWithoutANameIsNamedByItsBundleIdentifier) {
  world.hardware.processObjects = {{70, 700, "org.example.radio"}};
  applicationIs(700, std::nullopt);
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{70, 700, "org.example.radio", "org.example.radio"}));
}

TEST_F(RawProcesses, anApplicationWithAnEmptyNameHasThatName) {
  world.hardware.processObjects = {{70, 700, "org.example.radio"}};
  applicationIs(700, "");
  EXPECT_THAT(rawProcesses(), ElementsAre(Raw{70, 700, "org.example.radio", ""}));
}

TEST(RawProcessInfo, isEqualWhenAllFourFieldsAre) {
  const Raw raw{70, 700, "x", "Radio"};
  EXPECT_EQ(raw, (Raw{70, 700, "x", "Radio"}));
  EXPECT_NE(raw, (Raw{71, 700, "x", "Radio"}));
  EXPECT_NE(raw, (Raw{70, 701, "x", "Radio"}));
  EXPECT_NE(raw, (Raw{70, 700, "y", "Radio"}));
  EXPECT_NE(raw, (Raw{70, 700, std::nullopt, "Radio"}));
  EXPECT_NE(raw, (Raw{70, 700, "x", "radio"}));
}

}  // namespace
}  // namespace audrel
