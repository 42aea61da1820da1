#include <gmock/gmock.h>

#include "platform/linux/session/LogoutWatch.h"
#include "tests/platform/linux/session/harness/DesktopSessionManager.h"
#include "tests/platform/linux/session/harness/SessionTest.h"

namespace audrel::linuxos {
namespace {

using sessiontest::DesktopSessionManager;
using sessiontest::SessionManagerKind;
using testing::IsEmpty;

class LogoutTest : public sessiontest::SessionTest,
                   public NS::ApplicationDelegate,
                   public testing::WithParamInterface<SessionManagerKind> {
 public:
  void applicationDidFinishLaunching() override {}
  void applicationWillTerminate() override {
    EXPECT_THAT(manager.furtherCalls(), IsEmpty()) << "the session waits for the program's answer";
    isTold = true;
  }

 protected:
  void SetUp() override {
    application.setDelegate(delegate);
    ASSERT_EQ(manager.nextCall(), "RegisterClient ('io.github.audrel.Audrel', '')");
  }

  DesktopSessionManager manager{privateBus.address(), GetParam()};
  Application application;
  LogoutWatch watch{application, bus};
  const std::shared_ptr<NS::ApplicationDelegate> delegate{this, [](auto* /*test*/) {}};
  bool isTold = false;
};

TEST_P(LogoutTest, isNeverRefused) {
  manager.tell(DesktopSessionManager::clientPath, "QueryEndSession");
  EXPECT_EQ(manager.nextCall(), "EndSessionResponse (true, '')");
  EXPECT_FALSE(isTold);
}

TEST_P(LogoutTest, endsTheProgramThroughItsDelegateBeforeItIsAnswered) {
  manager.tell(DesktopSessionManager::clientPath, "EndSession");
  EXPECT_EQ(manager.nextCall(), "EndSessionResponse (true, '')");
  EXPECT_TRUE(isTold);
}

TEST_P(LogoutTest, whenToldToStopTheProgramStops) {
  manager.tell(DesktopSessionManager::clientPath, "Stop");
  EXPECT_TRUE(support::runLoopUntil([this] { return application.isTerminating(); }));
  EXPECT_TRUE(isTold);
}

TEST_P(LogoutTest, whatOtherClientsAreToldIsTheirs) {
  manager.tell("/test/AnotherClient", "EndSession");
  manager.tell(DesktopSessionManager::clientPath, "QueryEndSession");
  EXPECT_EQ(manager.nextCall(), "EndSessionResponse (true, '')");  // the bus keeps their order
  EXPECT_FALSE(isTold);
}

INSTANTIATE_TEST_SUITE_P(Desktops, LogoutTest,
                         testing::Values(sessiontest::gnomeSessionManager,
                                         sessiontest::xfceSessionManager),
                         [](const auto& desktop) {
                           return std::string(desktop.param.clientInterface).substr(4, 4);
                         });

}  // namespace
}  // namespace audrel::linuxos
