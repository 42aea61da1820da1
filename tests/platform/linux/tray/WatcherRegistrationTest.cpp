#include "platform/linux/tray/WatcherRegistration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "tests/platform/linux/tray/harness/Panel.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"
#include "tests/support/KeptLog.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Of the registration, with a panel that answers in a fraction of it.
constexpr std::chrono::milliseconds patience = 500ms;

class WatcherRegistrationTest : public testing::Test {
 protected:
  void startRegistration() {
    registration.emplace(
        connection.get(), logger, [this](bool isThere) { told.push_back(isThere); }, patience);
  }

  traytest::PrivateBus bus;
  traytest::Panel panel{bus.address()};
  ConnectionHandle connection{traytest::connectTo(bus.address())};
  std::vector<bool> told;  ///< whether a panel is there
  std::shared_ptr<support::KeptLogger> logger = std::make_shared<support::KeptLogger>();
  std::optional<WatcherRegistration> registration;
};

TEST_F(WatcherRegistrationTest, tellsOnceOfADesktopWithoutAWatcher) {
  startRegistration();
  panel.runFor(3 * patience);
  EXPECT_THAT(logger->lines(), ElementsAre(HasSubstr("No panel of this desktop")));
  EXPECT_THAT(told, ElementsAre(false));
}

TEST_F(WatcherRegistrationTest, tellsOfAWatcherWithoutAPanel) {
  panel.startWatcher(false);
  startRegistration();
  panel.runFor(2 * patience);
  EXPECT_THAT(panel.registrations(), testing::SizeIs(1));
  EXPECT_THAT(logger->lines(), ElementsAre(HasSubstr("No panel of this desktop")));
  EXPECT_THAT(told, ElementsAre(false));
}

TEST_F(WatcherRegistrationTest, tellsNothingWhereThereIsAPanel) {
  panel.startWatcher();
  startRegistration();
  panel.runFor(2 * patience);
  EXPECT_THAT(logger->lines(), IsEmpty());
  EXPECT_THAT(told, ElementsAre(true));
}

TEST_F(WatcherRegistrationTest, waitsForAPanelThatComesLater) {
  panel.startWatcher(false);
  startRegistration();
  ASSERT_TRUE(panel.runUntil([this] { return !panel.registrations().empty(); }));
  panel.addHost();
  panel.runFor(2 * patience);
  EXPECT_THAT(logger->lines(), IsEmpty());
  EXPECT_THAT(told, ElementsAre(true));
}

TEST_F(WatcherRegistrationTest, tellsOfAPanelThatComesTooLateToBeWaitedFor) {
  startRegistration();
  panel.runFor(2 * patience);
  panel.startWatcher();
  EXPECT_TRUE(panel.runUntil([this] { return told.size() == 2; }));
  EXPECT_THAT(told, ElementsAre(false, true));
}

TEST_F(WatcherRegistrationTest, waitsForAPanelThatHasGoneToComeBack) {
  panel.startWatcher();
  startRegistration();
  ASSERT_TRUE(panel.runUntil([this] { return told.size() == 1; }));
  panel.stopWatcher();
  panel.startWatcher();
  ASSERT_TRUE(panel.runUntil([this] { return told.size() == 2; }));
  EXPECT_THAT(told, ElementsAre(true, true));
  panel.stopWatcher();
  EXPECT_TRUE(panel.runUntil([this] { return told.size() == 3; }));
  EXPECT_THAT(told, ElementsAre(true, true, false));
}

TEST_F(WatcherRegistrationTest, givesADesktopThatStartsSomeSeconds) {
  registration.emplace(connection.get(), logger, [this](bool isThere) { told.push_back(isThere); });
  panel.runFor(3s);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(WatcherRegistrationTest, mayGoWhileAnAnswerIsOnItsWay) {
  panel.startWatcher();
  startRegistration();
  ASSERT_TRUE(panel.runUntil([this] { return !panel.registrations().empty(); }));
  registration.reset();
  panel.runFor(2 * patience);
  EXPECT_THAT(logger->lines(), IsEmpty());
}

}  // namespace
}  // namespace audrel::linuxos
