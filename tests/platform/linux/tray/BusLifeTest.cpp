#include "tests/platform/linux/tray/TrayTest.h"
#include "tests/support/MainLoop.h"

namespace audrel::traytest {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* noBus =
    "error: No session bus, so no status item for now (recording goes on; trying again): ";

TEST_F(TrayTest, theItemComesBackAfterTheBusWasRestarted) {
  program->setTitle(" 00:42");
  bus.crash();
  ASSERT_TRUE(support::runLoopUntil([this] { return !program->logged().empty(); }));
  EXPECT_THAT(program->logged(), ElementsAre(std::string(noBus) + "the connection was closed"));
  program->toggle();
  program->setTitle(" 00:43");
  bus.restart();
  Panel next(bus.address());
  next.startWatcher();
  ASSERT_TRUE(next.findItem());
  EXPECT_EQ(next.itemProperty("XAyatanaLabel"), "' 00:43'");
  EXPECT_THAT(next.menuText(), HasSubstr("'Stop'"));
  EXPECT_EQ(next.callMenu("AboutToShow", "(0,)").value, "(true,)");
  EXPECT_THAT(program->takeJournal(), Contains("menu will open"));
}

class BusLife : public testing::Test {
 protected:
  PrivateBus bus;
  fakes::ScopedVariable address{"DBUS_SESSION_BUS_ADDRESS", bus.address().c_str()};
};

TEST_F(BusLife, aWatcherThatComesLateIsFound) {
  const auto program = TrayProgram::start();
  Panel panel(bus.address());
  panel.runFor(100ms);
  EXPECT_THAT(panel.registrations(), IsEmpty());
  panel.startWatcher();
  EXPECT_TRUE(panel.findItem());
}

TEST_F(BusLife, aWatcherThatIsNotReadyIsAskedAgain) {
  Panel panel(bus.address());
  panel.startWatcher(true, 1);
  const auto program = TrayProgram::start();
  EXPECT_TRUE(panel.findItem());
}

TEST_F(BusLife, aBusThatComesLateIsFound) {
  bus.crash();
  const auto program = TrayProgram::start();
  ASSERT_TRUE(support::runLoopUntil([&] { return !program->logged().empty(); }));
  bus.restart();
  Panel panel(bus.address());
  panel.startWatcher();
  EXPECT_TRUE(panel.findItem());
}

TEST_F(BusLife, withoutAnyBusTheProgramSaysSoOnce) {
  const fakes::ScopedVariable noAddress("DBUS_SESSION_BUS_ADDRESS", "");
  const fakes::ScopedVariable noRuntimeFolder("XDG_RUNTIME_DIR", "/nonexistent");
  const auto program = TrayProgram::start();
  support::runLoopFor(900ms);  // two more attempts
  program->toggle();
  EXPECT_THAT(program->logged(),
              ElementsAre(std::string(noBus) + "neither DBUS_SESSION_BUS_ADDRESS nor a bus in "
                                               "XDG_RUNTIME_DIR names one"));
}

}  // namespace
}  // namespace audrel::traytest
