#include "platform/linux/session/SuspendInhibitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/session/harness/MuteBus.h"
#include "tests/platform/linux/session/harness/TestService.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"
#include "tests/support/KeptLog.h"
#include "tests/support/Waiting.h"

namespace audrel::linuxos {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* inhibitCall = "Inhibit ('sleep', 'Audrel', 'Recording audio', 'block')";

class SuspendInhibitorTest : public testing::Test {
 protected:
  /// Ends the block once the answer to `hold` is known to have been logged.
  void releaseOnceLogged() {
    EXPECT_TRUE(support::waitFor([this] { return !log->lines().empty(); }));
    inhibitor->release();
  }

  void expectTold(const std::string& reason) {
    inhibitor->hold();
    releaseOnceLogged();
    EXPECT_THAT(log->lines(), ElementsAre("The machine may suspend while it records: " + reason));
  }

  sessiontest::TestService loginManager(const std::string& answer = "fd") const {
    return {systemBus.address(),
            "org.freedesktop.login1",
            {"/org/freedesktop/login1"},
            {{"Inhibit", answer}}};
  }

  traytest::PrivateBus systemBus;
  fakes::ScopedVariable address{"DBUS_SYSTEM_BUS_ADDRESS", systemBus.address().c_str()};
  std::shared_ptr<support::KeptLogger> log = std::make_shared<support::KeptLogger>();
  std::unique_ptr<SuspendInhibitor> inhibitor = std::make_unique<SuspendInhibitor>(log);
};

TEST_F(SuspendInhibitorTest, releasesWhenItGoes) {
  auto login = loginManager();
  inhibitor->hold();
  EXPECT_EQ(login.nextCall(), inhibitCall);
  inhibitor.reset();
  EXPECT_EQ(login.nextCall(), "released");
}

TEST_F(SuspendInhibitorTest, holdsOneBlockForEachRecording) {
  auto login = loginManager();
  for (int recording = 0; recording < 2; ++recording) {
    inhibitor->hold();
    inhibitor->hold();
    EXPECT_EQ(login.nextCall(), inhibitCall);
    inhibitor->release();
    inhibitor->release();
    EXPECT_EQ(login.nextCall(), "released");
  }
  EXPECT_THAT(login.furtherCalls(), IsEmpty());
  EXPECT_THAT(log->lines(), IsEmpty());
}

TEST_F(SuspendInhibitorTest, saysOnceThatThereIsNoLoginManager) {
  inhibitor->hold();
  releaseOnceLogged();
  inhibitor->hold();
  inhibitor.reset();
  EXPECT_THAT(log->lines(), ElementsAre(StartsWith("The machine may suspend while it records: ")));
}

TEST_F(SuspendInhibitorTest, saysThatThereIsNoSystemBus) {
  systemBus.crash();
  expectTold("No such file or directory");
}

TEST_F(SuspendInhibitorTest, saysWhyTheLoginManagerRefuses) {
  const auto login = loginManager("!org.freedesktop.DBus.Error.AccessDenied");
  expectTold("refused by the test");
}

TEST_F(SuspendInhibitorTest, givesUpWhenTheLoginManagerHangs) {
  const auto login = loginManager("-");
  expectTold("Connection timed out");
}

TEST_F(SuspendInhibitorTest, givesUpWhenTheBusHangs) {
  const sessiontest::MuteBus bus;
  const fakes::ScopedVariable mute{"DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str()};
  expectTold("Connection timed out");
}

TEST_F(SuspendInhibitorTest, delaysNoStopWhileTheBusHangs) {
  const sessiontest::MuteBus bus;
  const fakes::ScopedVariable mute{"DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str()};
  for (int recording = 0; recording < 20; ++recording) {
    inhibitor->hold();
    inhibitor->release();
  }
  inhibitor.reset();
  EXPECT_THAT(log->lines(), IsEmpty()) << "whoever had waited would have given up";
}

TEST_F(SuspendInhibitorTest, keepsNoBlockThatIsGivenAfterTheRelease) {
  auto login = loginManager();
  for (int recording = 0; recording < 20; ++recording) {
    inhibitor->hold();
    std::this_thread::sleep_for(std::chrono::milliseconds(recording));
    inhibitor->release();
  }
  inhibitor.reset();
  int blocks = 0;
  int released = 0;
  while (const auto call = login.nextCall(std::chrono::seconds(1))) {
    ++(call == "released" ? released : blocks);
  }
  EXPECT_GT(blocks, 0);
  EXPECT_EQ(released, blocks);
}

}  // namespace
}  // namespace audrel::linuxos
