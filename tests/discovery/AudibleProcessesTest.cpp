#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "discovery/ProcessDiscovery.h"
#include "tests/fakes/World.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AudibleProcesses : public testing::Test {
 protected:
  std::vector<RecordingSource> audibleProcesses() {
    return ProcessDiscovery::audibleProcesses(world.platform());
  }

  fakes::World world;
};

TEST_F(AudibleProcesses, areSourcesWithObjectIdNameAndBundleIdentifierSortedByName) {
  world.hardware.processObjects = {
      {70, 700, "org.example.radio"}, {71, 710, ""}, {72, 720, "org.example.band"}};
  world.runningApplications.applications = {{700, {"Radio"}}, {710, {"game"}}};
  EXPECT_THAT(audibleProcesses(),
              ElementsAre(RecordingSource::process(71, "game", std::nullopt),
                          RecordingSource::process(72, "org.example.band", "org.example.band"),
                          RecordingSource::process(70, "Radio", "org.example.radio")));
}

TEST_F(AudibleProcesses, areNoneWithoutProcessObjectsAndWhenTheListCannotBeRead) {
  EXPECT_THAT(audibleProcesses(), IsEmpty());
  world.hardware.processObjects = {{70, 700, "org.example.radio"}};
  world.hardware.fail(fakes::FakeHardware::Call::processObjectList, -1);
  EXPECT_THAT(audibleProcesses(), IsEmpty());
}

}  // namespace
}  // namespace audrel
