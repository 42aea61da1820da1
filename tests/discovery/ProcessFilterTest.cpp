#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/discovery/ProcessDiscoveryInspector.h"
#include "tests/fakes/FakeSystem.h"

namespace audrel {
namespace {

using Raw = ProcessDiscovery::RawProcessInfo;
using testing::ElementsAre;
using testing::IsEmpty;

class ProcessFilter : public testing::Test {
 protected:
  std::vector<Raw> filter(std::vector<Raw> processes) {
    return ProcessDiscoveryInspector::filter(collation, std::move(processes));
  }

  fakes::FakeCollation collation;
};

TEST_F(ProcessFilter, noProcessesGiveNoProcesses) {
  EXPECT_THAT(filter({}), IsEmpty());
}

TEST_F(ProcessFilter, aProcessWithoutANameIsDropped) {
  const Raw named{71, 710, std::nullopt, "Radio"};
  EXPECT_THAT(filter({{70, 700, "org.example", ""}, named}), ElementsAre(named));
}

TEST_F(ProcessFilter, aDroppedProcessTakesNoBundleIdentifier) {
  const Raw named{71, 710, "org.example", "Radio"};
  EXPECT_THAT(filter({{70, 700, "org.example", ""}, named}), ElementsAre(named));
}

TEST_F(ProcessFilter, nothingButAnEmptyNameExcludesAProcess) {
  const std::vector<Raw> all = {{1, 1, "com.apple.a", "Audrel"},
                                {2, 2, "io.github.audrel.Audrel", "Audrel"},
                                {3, 3, std::nullopt, "Audrel"},
                                {4, 4, "com.apple.b.helper", "Audrel"}};
  EXPECT_EQ(filter(all), all);
}

TEST_F(ProcessFilter, ofProcessesWithOneBundleIdentifierTheFirstInSystemOrderStays) {
  const Raw first{70, 700, "org.example", "Zither"};
  EXPECT_THAT(filter({first, {71, 710, "org.example", "Alphorn"}, {72, 720, "org.example", "Z"}}),
              ElementsAre(first));
}

TEST_F(ProcessFilter, bundleIdentifiersAreComparedCaseSensitively) {
  const Raw lower{70, 700, "org.example", "Radio"};
  const Raw upper{71, 710, "org.Example", "Radio"};
  EXPECT_THAT(filter({lower, upper}), ElementsAre(lower, upper));
}

TEST_F(ProcessFilter, processesWithoutABundleIdentifierAllStayInSystemOrder) {
  const Raw first{71, 710, std::nullopt, "Radio"};
  const Raw second{70, 700, std::nullopt, "Radio"};
  EXPECT_THAT(filter({first, second}), ElementsAre(first, second));
}

TEST_F(ProcessFilter, namesAreSortedWhateverTheirCaseAndATieKeepsItsOrder) {
  const Raw beta{1, 1, std::nullopt, "beta"};
  const Raw upperAlpha{2, 2, std::nullopt, "Alpha"};
  const Raw lowerAlpha{3, 3, std::nullopt, "alpha"};
  EXPECT_THAT(filter({beta, upperAlpha, lowerAlpha}), ElementsAre(upperAlpha, lowerAlpha, beta));
  EXPECT_THAT(filter({beta, lowerAlpha, upperAlpha}), ElementsAre(lowerAlpha, upperAlpha, beta));
}

TEST_F(ProcessFilter, theSortIsStableForManyEqualNames) {
  std::vector<Raw> processes;
  for (CA::AudioObjectID id = 1; id <= 500; ++id) {
    processes.push_back({id, 1, std::nullopt, id % 2 == 0 ? "Music" : "music"});
  }
  EXPECT_EQ(filter(processes), processes);
}

TEST_F(ProcessFilter, theOrderIsTheCollationsOwn) {
  collation.compare = [](std::string_view left, std::string_view right) {
    if (left.size() == right.size()) {
      return NS::ComparisonResult::orderedSame;
    }
    return left.size() > right.size() ? NS::ComparisonResult::orderedAscending
                                      : NS::ComparisonResult::orderedDescending;
  };
  const Raw one{1, 1, std::nullopt, "a"};
  const Raw two{2, 2, std::nullopt, "bb"};
  const Raw alsoTwo{3, 3, std::nullopt, "aa"};
  EXPECT_THAT(filter({one, two, alsoTwo}), ElementsAre(two, alsoTwo, one));
}

}  // namespace
}  // namespace audrel
