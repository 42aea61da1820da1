#include <gmock/gmock.h>

#include <chrono>
#include <cstddef>

#include "tests/platform/linux/tray/TrayTest.h"
#include "tests/platform/linux/tray/harness/DesktopSessionManager.h"

namespace audrel::traytest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LogoutTest : public TrayTest,
                   public testing::WithParamInterface<DesktopSessionManager::Desktop> {
 protected:
  void SetUp() override {
    TrayTest::SetUp();
    ASSERT_TRUE(waitForCalls(1));
    ASSERT_THAT(manager.calls(), ElementsAre("RegisterClient('io.github.audrel.Audrel', '')"));
  }

  bool waitForCalls(std::size_t count) {
    return panel.runUntil([this, count] { return manager.calls().size() >= count; });
  }

  DesktopSessionManager manager{bus.address(), GetParam()};
};

TEST_P(LogoutTest, isNeverRefused) {
  manager.tell(DesktopSessionManager::clientPath, "QueryEndSession");
  ASSERT_TRUE(waitForCalls(2));
  EXPECT_EQ(manager.calls().back(), "EndSessionResponse(true, '')");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
}

TEST_P(LogoutTest, endsTheProgramThroughItsDelegate) {
  manager.tell(DesktopSessionManager::clientPath, "EndSession");
  panel.runFor(std::chrono::milliseconds(50));
  ASSERT_TRUE(program.waitFor("ended"));
  EXPECT_THAT(program.takeJournal(), ElementsAre("will terminate", "ended"));
  EXPECT_EQ(program.process().waitForEnd(), 0);
}

TEST_P(LogoutTest, whenToldToStopTheProgramStops) {
  manager.tell(DesktopSessionManager::clientPath, "Stop");
  panel.runFor(std::chrono::milliseconds(50));
  ASSERT_TRUE(program.waitFor("ended"));
  EXPECT_THAT(program.takeJournal(), ElementsAre("will terminate", "ended"));
  EXPECT_EQ(program.process().waitForEnd(), 0);
}

TEST_P(LogoutTest, whatOtherClientsAreToldIsTheirs) {
  manager.tell("/test/AnotherClient", "EndSession");
  manager.tell(DesktopSessionManager::clientPath, "QueryEndSession");
  ASSERT_TRUE(waitForCalls(2));  // the bus keeps their order
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Desktops, LogoutTest,
                         testing::Values(DesktopSessionManager::Desktop::gnome,
                                         DesktopSessionManager::Desktop::xfce));

}  // namespace
}  // namespace audrel::traytest
