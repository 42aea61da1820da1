#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>

#include "tests/platform/linux/tray/TrayTest.h"

namespace audrel::traytest {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST_F(TrayTest, theItemIsRegisteredAgainWhenTheWatcherRestarts) {
  panel.stopWatcher();
  panel.startWatcher();
  ASSERT_TRUE(panel.runUntil([this] { return panel.registrations().size() == 2; }));
  EXPECT_EQ(panel.registrations()[1], panel.registrations()[0]);
}

TEST_F(TrayTest, theItemComesBackAfterTheBusWasRestarted) {
  ASSERT_TRUE(program.command("title  00:42"));
  bus.crash();
  ASSERT_TRUE(program.waitFor(
      "log error: No session bus, so no status item for now (recording goes on; trying again): "
      "the connection was closed"));
  // Without a bus the program goes on, with timers and all.
  ASSERT_TRUE(program.command("tick"));
  ASSERT_TRUE(program.waitFor("tick"));
  ASSERT_TRUE(program.command("toggle"));
  ASSERT_TRUE(program.command("title  00:43"));
  bus.restart();
  ASSERT_TRUE(bus.isRunning());
  Panel next(bus.address());
  next.startWatcher();
  ASSERT_TRUE(next.findItem());
  EXPECT_EQ(next.itemProperty("XAyatanaLabel"), "' 00:43'");
  EXPECT_THAT(next.menuText(), HasSubstr("'Stop'"));
  EXPECT_EQ(next.callMenu("AboutToShow", "(0,)").value, "(true,)");
  ASSERT_TRUE(program.settle());
  EXPECT_THAT(program.takeJournal(), Contains("menu will open"));
}

TEST(BusLife, aWatcherThatComesLateIsFound) {
  const PrivateBus bus;
  ASSERT_TRUE(bus.isRunning());
  TrayProgram program(bus.address());
  ASSERT_TRUE(program.waitFor("launched"));
  ASSERT_TRUE(program.settle());
  Panel panel(bus.address());
  panel.runFor(100ms);
  EXPECT_THAT(panel.registrations(), IsEmpty());
  panel.startWatcher();
  EXPECT_TRUE(panel.findItem());
}

TEST(BusLife, aWatcherThatIsNotReadyIsAskedAgain) {
  const PrivateBus bus;
  ASSERT_TRUE(bus.isRunning());
  Panel panel(bus.address());
  panel.startWatcher(true, 1);
  TrayProgram program(bus.address());
  EXPECT_TRUE(panel.findItem());
}

TEST(BusLife, aBusThatComesLateIsFound) {
  PrivateBus bus;
  bus.crash();
  TrayProgram program(bus.address());
  ASSERT_TRUE(program.waitFor("launched"));
  ASSERT_TRUE(program.command("tick"));
  ASSERT_TRUE(program.waitFor("tick"));
  bus.restart();
  ASSERT_TRUE(bus.isRunning());
  Panel panel(bus.address());
  panel.startWatcher();
  EXPECT_TRUE(panel.findItem());
}

TEST(BusLife, withoutAnyBusTheProgramRunsAndSaysSoOnce) {
  TrayProgram program("");
  ASSERT_TRUE(program.waitFor("launched"));
  ASSERT_TRUE(program.waitFor(
      "log error: No session bus, so no status item for now (recording goes on; trying again): "
      "neither DBUS_SESSION_BUS_ADDRESS nor a bus in XDG_RUNTIME_DIR names one"));
  program.takeJournal();
  std::this_thread::sleep_for(900ms);  // two more attempts
  ASSERT_TRUE(program.command("toggle"));
  EXPECT_THAT(program.takeJournal(), IsEmpty());
  kill(program.process().pid(), SIGTERM);
  ASSERT_TRUE(program.waitFor("ended"));
  EXPECT_THAT(program.takeJournal(), Contains("will terminate"));
  EXPECT_EQ(program.process().waitForEnd(), 0);
}

}  // namespace
}  // namespace audrel::traytest
