#include "platform/linux/desktop/SuspendInhibitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/session/harness/MemoryLogger.h"
#include "tests/platform/linux/session/harness/TestService.h"
#include "tests/platform/linux/tray/harness/PrivateBus.h"

namespace audrel::linuxos {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* inhibitCall = "Inhibit ('sleep', 'Audrel', 'Recording audio', 'block')";

/// Tells every thread whether anything was logged.
class Complaint final : public os::Logger {
 public:
  std::atomic<bool> isThere = false;

  void log(os::LogLevel /*level*/, std::string_view /*line*/) noexcept override { isThere = true; }
};

class SuspendInhibitorTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(systemBus.isRunning()); }

  sessiontest::TestService loginManager(const std::string& answer = "fd") const {
    return {systemBus.address(),
            "org.freedesktop.login1",
            "/org/freedesktop/login1",
            {{"Inhibit", answer}}};
  }

  traytest::PrivateBus systemBus;
  fakes::ScopedVariable address{"DBUS_SYSTEM_BUS_ADDRESS", systemBus.address().c_str()};
  std::shared_ptr<sessiontest::MemoryLogger> log = std::make_shared<sessiontest::MemoryLogger>();
  std::unique_ptr<SuspendInhibitor> inhibitor = std::make_unique<SuspendInhibitor>(log);
};

TEST_F(SuspendInhibitorTest, blocksSleepUntilItIsReleased) {
  auto login = loginManager();
  ASSERT_TRUE(login.isRunning());
  inhibitor->hold();
  EXPECT_EQ(login.nextCall(), inhibitCall);
  EXPECT_THAT(login.furtherCalls(), IsEmpty());
  inhibitor->release();
  EXPECT_EQ(login.nextCall(), "released");
  EXPECT_THAT(log->lines, IsEmpty());
}

TEST_F(SuspendInhibitorTest, releasesWhenItGoes) {
  auto login = loginManager();
  ASSERT_TRUE(login.isRunning());
  inhibitor->hold();
  inhibitor.reset();
  EXPECT_EQ(login.nextCall(), inhibitCall);
  EXPECT_EQ(login.nextCall(), "released");
}

TEST_F(SuspendInhibitorTest, holdsOneBlockForEachRecording) {
  auto login = loginManager();
  ASSERT_TRUE(login.isRunning());
  for (int recording = 0; recording < 2; ++recording) {
    inhibitor->hold();
    inhibitor->hold();
    EXPECT_EQ(login.nextCall(), inhibitCall);
    inhibitor->release();
    inhibitor->release();
    EXPECT_EQ(login.nextCall(), "released");
  }
  EXPECT_THAT(login.furtherCalls(), IsEmpty());
}

TEST_F(SuspendInhibitorTest, saysOnceThatThereIsNoLoginManager) {
  for (int recording = 0; recording < 2; ++recording) {
    inhibitor->hold();
    inhibitor->release();
  }
  EXPECT_THAT(log->lines, ElementsAre(StartsWith("The machine may suspend while it records: ")));
}

TEST_F(SuspendInhibitorTest, saysThatThereIsNoSystemBus) {
  systemBus.crash();
  inhibitor->hold();
  inhibitor->release();
  EXPECT_THAT(log->lines, ElementsAre("The machine may suspend while it records: No such file or "
                                      "directory"));
}

TEST_F(SuspendInhibitorTest, saysWhyTheLoginManagerRefuses) {
  const auto login = loginManager("!org.freedesktop.DBus.Error.AccessDenied");
  ASSERT_TRUE(login.isRunning());
  inhibitor->hold();
  inhibitor->release();
  EXPECT_THAT(log->lines,
              ElementsAre("The machine may suspend while it records: refused by the test"));
}

TEST_F(SuspendInhibitorTest, delaysNoStartAndGivesUpWhenTheLoginManagerHangs) {
  const auto login = loginManager("-");
  ASSERT_TRUE(login.isRunning());
  const auto complaint = std::make_shared<Complaint>();
  SuspendInhibitor patient(complaint);
  patient.hold();
  EXPECT_FALSE(complaint->isThere);  // whoever had waited would have given up
  patient.release();
  EXPECT_TRUE(complaint->isThere);
}

}  // namespace
}  // namespace audrel::linuxos
