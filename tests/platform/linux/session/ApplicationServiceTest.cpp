#include "platform/linux/session/ApplicationService.h"

#include <gmock/gmock.h>

#include "tests/platform/linux/session/harness/SessionTest.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using Claim = ApplicationService::Claim;
using sessiontest::TestService;
using support::runLoopUntil;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* name = "io.github.audrel.Audrel";
constexpr const char* path = "/io/github/audrel/Audrel";

class Program final : public ApplicationCommands {
 public:
  std::vector<std::string> calls;

  void startRecording() override { calls.emplace_back("start"); }
  void stopRecording() override { calls.emplace_back("stop"); }
  void toggleRecording() override { calls.emplace_back("toggle"); }
  void quit() override { calls.emplace_back("quit"); }
  void activate() override { calls.emplace_back("activate"); }
};

/// A second start of the program, with a bus connection of its own.
struct SecondStart {
  explicit SecondStart(const std::shared_ptr<os::Logger>& log)
      : notifier(bus, log), service(application, bus, notifier, log) {}

  Application application;
  SessionBus bus;
  Notifier notifier;
  ApplicationService service;
};

class ApplicationServiceTest : public sessiontest::SessionTest {
 protected:
  /// What a call of the desktop's is answered: "" or an error.
  std::string call(const char* member, GVariant* arguments) {
    return callTo({name, path, "org.freedesktop.Application", member}, arguments);
  }

  std::string callTo(const SessionBus::Method& method, GVariant* arguments) {
    std::optional<std::string> failure;
    desktop.call(method, arguments,
                 [&](const SessionBus::Answer& answer) { failure = answer.failure; });
    runLoopUntil([&] { return failure.has_value(); });
    return failure.value_or("no answer");
  }

  std::string callAction(const char* action) {
    return call("ActivateAction", g_variant_new("(sava{sv})", action, nullptr, nullptr));
  }

  std::string activate() { return call("Activate", g_variant_new("(a{sv})", nullptr)); }

  std::string ownerOfName() {
    return callTo(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner"},
        g_variant_new("(s)", name));
  }

  /// Lets waiting events happen.
  static void settle() {
    runLoopUntil([] { return false; }, 50ms);
  }

  SessionBus desktop;
  Application application;
  ApplicationService service{application, bus, notifier, log};
  std::shared_ptr<Program> program = std::make_shared<Program>();
};

/// Of the first start.
class FirstStart : public ApplicationServiceTest {
 protected:
  void SetUp() override { ASSERT_EQ(service.claim(), Claim::first); }
};

TEST_F(ApplicationServiceTest, theFirstStartHasTheName) {
  EXPECT_NE(ownerOfName(), "");
  EXPECT_EQ(service.claim(), Claim::first);
  EXPECT_EQ(ownerOfName(), "");
}

TEST_F(ApplicationServiceTest, aSecondStartSaysSoItselfWhenTheFirstFails) {
  auto desktopsNotifications = notifications();
  const TestService broken(privateBus.address(), name, {path}, {});
  EXPECT_EQ(service.claim(), Claim::runsAlready);
  EXPECT_FALSE(notifier.isBusy()) << "it was told before the process may end";
  EXPECT_THAT(nextNotification(desktopsNotifications), HasSubstr("'Audrel is already running'"));
}

TEST_F(ApplicationServiceTest, aSecondStartSaysSoItselfWhenTheFirstHangs) {
  const TestService hanging(privateBus.address(), name, {path}, {{"Activate", "-"}});
  EXPECT_EQ(service.claim(), Claim::runsAlready);
  EXPECT_THAT(log->lines(), ElementsAre(HasSubstr("error: Audrel is already running: ")));
}

TEST_F(ApplicationServiceTest, withoutABusEveryStartIsTheFirst) {
  const fakes::ScopedVariable noAddress("DBUS_SESSION_BUS_ADDRESS", "");
  const fakes::ScopedVariable noRuntimeFolder("XDG_RUNTIME_DIR", "/nonexistent");
  EXPECT_EQ(service.claim(), Claim::first);
}

TEST_F(ApplicationServiceTest, withABusThatIsGoneEveryStartIsTheFirst) {
  privateBus.crash();
  EXPECT_EQ(service.claim(), Claim::first);
}

TEST_F(FirstStart, anUnknownActionIsRefused) {
  service.setCommands(program);
  EXPECT_EQ(callAction("explode"), "There is no such action");
  settle();
  EXPECT_THAT(program->calls, IsEmpty());
}

TEST_F(FirstStart, actionsBeforeTheLaunchWaitForIt) {
  EXPECT_EQ(callAction("start-recording"), "");
  settle();
  service.setCommands(program);
  EXPECT_THAT(program->calls, IsEmpty()) << "not from here";
  settle();
  EXPECT_THAT(program->calls, ElementsAre("start"));
}

TEST_F(FirstStart, actionsAreAnsweredBeforeTheyArePerformed) {
  service.setCommands(program);
  EXPECT_TRUE(service.activateAction("start-recording"));
  EXPECT_THAT(program->calls, IsEmpty());
}

TEST_F(FirstStart, onlyQuitIsHonouredWhileAnAlertIsUpAndTheRestBringsItToTheFront) {
  auto desktopsNotifications = notifications();
  int toTheFront = 0;
  service.setCommands(program);
  {
    const ModalSession alert(application, [&toTheFront] { ++toTheFront; });
    for (const char* action : {"start-recording", "stop-recording", "toggle-recording", "quit"}) {
      EXPECT_EQ(callAction(action), "");
    }
    settle();
    EXPECT_EQ(toTheFront, 3);
    EXPECT_EQ(activate(), "");
    EXPECT_EQ(toTheFront, 4);
  }
  settle();
  EXPECT_THAT(program->calls, ElementsAre("quit"));
  EXPECT_THAT(desktopsNotifications.furtherCalls(), IsEmpty());
}

/// Its start waits in an alert until the program quits.
struct AskingProgram final : ApplicationCommands {
  explicit AskingProgram(Application& owner) : application(owner) {}
  void startRecording() override {
    calls.emplace_back("start");
    LoopSource tooLate([this] { application.terminate(); });
    tooLate.callAfter(10s);
    ModalSession session(application);
    if (whileAsking) {
      whileAsking();
    }
    isAnswered = session.wait();
  }
  void stopRecording() override { calls.emplace_back("stop"); }
  void toggleRecording() override { calls.emplace_back("toggle"); }
  void quit() override {
    calls.emplace_back("quit");
    application.terminate();
  }
  void activate() override {}

  Application& application;
  std::function<void()> whileAsking;
  std::vector<std::string> calls;
  bool isAnswered = false;
};

TEST_F(FirstStart, aCommandThatWaitsInAnAlertDelaysNoQuit) {
  const auto asking = std::make_shared<AskingProgram>(application);
  asking->whileAsking = [this] { service.activateAction("quit"); };
  service.setCommands(asking);
  EXPECT_EQ(callAction("start-recording"), "");
  EXPECT_TRUE(runLoopUntil([this] { return application.isTerminating(); }));
  EXPECT_THAT(asking->calls, ElementsAre("start", "quit"));
  EXPECT_FALSE(asking->isAnswered);
}

TEST_F(FirstStart, aCommandThatWaitsInAnAlertDelaysNoQuitThatCameWithIt) {
  const auto asking = std::make_shared<AskingProgram>(application);
  for (const char* action : {"start-recording", "stop-recording", "quit"}) {
    EXPECT_TRUE(service.activateAction(action));
  }
  service.setCommands(asking);
  EXPECT_TRUE(runLoopUntil([this] { return application.isTerminating(); }));
  EXPECT_THAT(asking->calls, ElementsAre("start", "quit"));
  EXPECT_FALSE(asking->isAnswered);
}

TEST_F(FirstStart, commandsOfAProgramThatHasGoneAreDropped) {
  service.setCommands(program);
  program.reset();
  EXPECT_EQ(callAction("quit"), "");
  settle();
}

TEST_F(FirstStart, activationsShowOneNotificationHoweverManyCome) {
  auto desktopsNotifications = notifications();
  for (int i = 0; i < 100; ++i) {
    service.activate();
  }
  EXPECT_THAT(nextNotification(desktopsNotifications),
              StartsWith("Notify ('Audrel', 0, 'io.github.audrel.Audrel', 'Audrel is already"));
  ASSERT_TRUE(runLoopUntil([this] { return !notifier.isBusy(); }));
  EXPECT_THAT(desktopsNotifications.furtherCalls(), IsEmpty());
  EXPECT_EQ(activate(), "");
  EXPECT_THAT(nextNotification(desktopsNotifications),
              StartsWith("Notify ('Audrel', 1, 'io.github.audrel.Audrel', 'Audrel is already"))
      << "the same takes the place of the former";
}

TEST_F(FirstStart, anActivationIsAnsweredByTheProgramThatRuns) {
  auto desktopsNotifications = notifications();
  service.setCommands(program);
  EXPECT_EQ(activate(), "");
  EXPECT_THAT(program->calls, ElementsAre("activate"));
  EXPECT_THAT(desktopsNotifications.furtherCalls(), IsEmpty());
  program.reset();
  EXPECT_EQ(activate(), "");
  EXPECT_THAT(nextNotification(desktopsNotifications), HasSubstr("'Audrel is already running'"));
}

TEST_F(ApplicationServiceTest, theActivationThatStartedItIsNoSecondStart) {
  const fakes::ScopedVariable startedByBus("DBUS_STARTER_ADDRESS", privateBus.address().c_str());
  auto desktopsNotifications = notifications();
  SecondStart started(log);
  ASSERT_EQ(started.service.claim(), Claim::first);
  EXPECT_EQ(activate(), "");
  EXPECT_THAT(desktopsNotifications.furtherCalls(), IsEmpty());
  EXPECT_EQ(activate(), "");
  EXPECT_THAT(nextNotification(desktopsNotifications), HasSubstr("'Audrel is already running'"));
}

TEST_F(FirstStart, theNameIsThereAgainAfterTheBusWasRestarted) {
  service.setCommands(program);
  privateBus.crash();
  settle();
  privateBus.restart();
  ASSERT_TRUE(runLoopUntil([this] { return ownerOfName().empty(); }));
  EXPECT_EQ(callAction("stop-recording"), "");
  settle();
  EXPECT_THAT(program->calls, ElementsAre("stop"));
}

TEST_F(FirstStart, aRecordingGoesOnWhenAnotherStartedWhileTheBusWasAway) {
  privateBus.crash();
  settle();
  privateBus.restart();
  const TestService other(privateBus.address(), name, {path}, {});
  EXPECT_TRUE(runLoopUntil([this] { return !log->lines().empty(); }));
  EXPECT_THAT(log->lines(),
              ElementsAre("Another Audrel was started while the session bus was away"));
}

}  // namespace
}  // namespace audrel::linuxos
