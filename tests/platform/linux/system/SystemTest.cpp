#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>

#include "platform/linux/system/Clock.h"
#include "platform/linux/system/UUIDFactory.h"

namespace audrel::linuxos {
namespace {

TEST(UUIDFactory, makesRandomUppercaseUuids) {
  UUIDFactory factory;
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const auto uuid = factory.uuidString();
    EXPECT_THAT(uuid, testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}"
                                            "-[0-9A-F]{12}"));
    seen.insert(uuid);
  }
  EXPECT_EQ(seen.size(), 100U);
}

TEST(Clock, tellsTheSystemsTime) {
  Clock clock;
  const auto before = std::chrono::system_clock::now();
  const auto told = clock.now();
  const auto after = std::chrono::system_clock::now();
  EXPECT_LE(before, told);
  EXPECT_LE(told, after);
}

}  // namespace
}  // namespace audrel::linuxos
