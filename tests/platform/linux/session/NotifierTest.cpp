#include "platform/linux/session/Notifier.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>
#include <vector>

#include "tests/platform/linux/session/harness/SessionTest.h"

namespace audrel::linuxos {
namespace {

using support::runLoopUntil;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class NotifierTest : public sessiontest::SessionTest {
 protected:
  bool settle() {
    return runLoopUntil([this] { return !notifier.isBusy(); });
  }
};

TEST_F(NotifierTest, sendsPlainTextToADesktopThatKnowsNoMarkup) {
  auto service = notifications("['body', 'actions']");
  notifier.notify({.summary = "a < b", .body = "\"c\" & d"});
  EXPECT_EQ(nextNotification(service),
            "Notify ('Audrel', 0, 'io.github.audrel.Audrel', 'a < b', '\"c\" & d', [], "
            "{'urgency': <byte 0x01>, 'desktop-entry': <'io.github.audrel.Audrel'>}, -1)");
  EXPECT_TRUE(settle());
  EXPECT_THAT(log->lines(), IsEmpty());
}

TEST_F(NotifierTest, escapesTheBodyForADesktopThatReadsMarkup) {
  auto service = notifications("['body', 'body-markup']");
  notifier.notify(
      {.summary = "a < b", .body = "<b>c</b> & d", .urgency = Notification::Urgency::critical});
  EXPECT_EQ(nextNotification(service),
            "Notify ('Audrel', 0, 'io.github.audrel.Audrel', 'a < b', "
            "'&lt;b&gt;c&lt;/b&gt; &amp; d', [], "
            "{'urgency': <byte 0x02>, 'desktop-entry': <'io.github.audrel.Audrel'>}, -1)");
}

TEST_F(NotifierTest, makesTextsOfBytesThatAreNone) {
  auto service = notifications();
  notifier.notify({.summary = "caf\xE9", .body = "\xFF"});
  EXPECT_THAT(nextNotification(service), HasSubstr("'caf\xEF\xBF\xBD', '\xEF\xBF\xBD'"));
}

TEST_F(NotifierTest, putsANotificationInThePlaceOfTheFormerOfItsTag) {
  auto service = notifications();
  for (const char* replaced : {"Notify ('Audrel', 0,", "Notify ('Audrel', 1,"}) {
    notifier.notify({.summary = "a", .body = "", .tag = "same"});
    EXPECT_THAT(nextNotification(service), StartsWith(replaced));
    ASSERT_TRUE(settle());
  }
  for (const char* tag : {"other", "", ""}) {
    notifier.notify({.summary = "a", .body = "", .tag = tag});
    EXPECT_THAT(nextNotification(service), StartsWith("Notify ('Audrel', 0,"));
    ASSERT_TRUE(settle());
  }
}

TEST_F(NotifierTest, leavesOutWhatIsOnItsWayAlready) {
  auto service = notifications();
  for (const char* summary : {"a", "b", "a"}) {
    notifier.notify({.summary = summary, .body = "", .tag = "same"});
  }
  EXPECT_THAT(nextNotification(service), HasSubstr("'a'"));
  ASSERT_TRUE(settle());
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
}

TEST_F(NotifierTest, sendsTheNewestOfATagAfterTheOneThatIsOnItsWay) {
  auto service = notifications();
  for (const char* summary : {"a", "b", "c"}) {
    notifier.notify({.summary = summary, .body = "", .tag = "same"});
  }
  EXPECT_THAT(nextNotification(service), HasSubstr("0, 'io.github.audrel.Audrel', 'a'"));
  EXPECT_THAT(nextNotification(service), HasSubstr("1, 'io.github.audrel.Audrel', 'c'"));
  ASSERT_TRUE(settle());
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
}

TEST_F(NotifierTest, triesAgainToShowWhatCouldNotBeShown) {
  for (int i = 0; i < 2; ++i) {
    notifier.notify({.summary = "a", .body = "", .tag = "same"});
    ASSERT_TRUE(settle());
  }
  EXPECT_EQ(log->lines().size(), 2U);
}

TEST_F(NotifierTest, logsTheTextWhereNobodyShowsNotifications) {
  notifier.notify({.summary = "Recording failed", .body = "No space."});
  EXPECT_TRUE(notifier.isBusy());
  ASSERT_TRUE(settle());
  EXPECT_THAT(log->lines(), ElementsAre(StartsWith("error: Recording failed: No space. (no "
                                                   "notification could be shown: ")));
}

TEST_F(NotifierTest, logsTheTextThatTheDesktopRefuses) {
  const sessiontest::TestService service(
      privateBus.address(), "org.freedesktop.Notifications", {"/org/freedesktop/Notifications"},
      {{"GetCapabilities", "(@as [],)"}, {"Notify", "!org.freedesktop.DBus.Error.LimitsExceeded"}});
  notifier.notify({.summary = "Title", .body = "Text"});
  ASSERT_TRUE(settle());
  EXPECT_THAT(log->lines(),
              ElementsAre("error: Title: Text (no notification could be shown: refused "
                          "by the test)"));
}

TEST_F(NotifierTest, logsTheTextAtOnceWhereThereIsNoBus) {
  const fakes::ScopedVariable noAddress("DBUS_SESSION_BUS_ADDRESS", "");
  const fakes::ScopedVariable noRuntimeFolder("XDG_RUNTIME_DIR", "/nonexistent");
  notifier.notify({.summary = "Title", .body = "Text"});
  EXPECT_THAT(
      log->lines(),
      ElementsAre("error: Title: Text (no notification could be shown: no session bus: neither "
                  "DBUS_SESSION_BUS_ADDRESS nor a bus in XDG_RUNTIME_DIR names one)"));
}

TEST_F(NotifierTest, logsTheTextWhereTheBusHasCrashed) {
  privateBus.crash();
  notifier.notify({.summary = "Title", .body = "Text"});
  ASSERT_TRUE(settle());
  EXPECT_EQ(log->lines().size(), 1U);
}

TEST_F(NotifierTest, isHandedNoConnectionThatIsClosedByThen) {
  int losses = 0;
  std::vector<bool> handedOver;
  const SessionBus::Listener listener(bus, [](GDBusConnection*) {}, [&] { ++losses; });
  bus.withConnection([&](GDBusConnection* connection, const std::string&) {
    handedOver.push_back(connection != nullptr);
  });
  // The connection is made on a thread of the library's meanwhile, and told of by the main loop.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  privateBus.crash();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  ASSERT_TRUE(runLoopUntil([&] { return !handedOver.empty(); }));
  EXPECT_THAT(handedOver, ElementsAre(false));
  EXPECT_LE(losses, 1);
}

TEST_F(NotifierTest, isNotLostWhenTheProgramEndsRightAfterIt) {
  auto service = notifications();
  auto local = std::make_unique<SessionBus>();
  bool isConnected = false;
  local->withConnection([&](GDBusConnection*, const std::string&) { isConnected = true; });
  ASSERT_TRUE(runLoopUntil([&] { return isConnected; }));
  constexpr int many = 100;
  for (int i = 0; i < many; ++i) {
    local->call({"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                 "org.freedesktop.Notifications", "CloseNotification"},
                g_variant_new("(u)", 1U), [](const SessionBus::Answer&) {});
  }
  local.reset();
  for (int i = 0; i < many; ++i) {
    ASSERT_EQ(service.nextCall(), "CloseNotification (1,)") << i;
  }
}

TEST_F(NotifierTest, callsNobodyBackOnceTheBusObjectHasGone) {
  auto local = std::make_unique<SessionBus>();
  int answers = 0;
  const auto count = [&answers](const SessionBus::Answer&) { ++answers; };
  constexpr SessionBus::Method unknown{"org.nobody", "/", "org.nobody", "Nothing"};
  local->call(unknown, nullptr, count);
  local.reset();
  auto second = std::make_unique<SessionBus>();
  second->call(unknown, nullptr, count);
  ASSERT_TRUE(runLoopUntil([&] { return answers == 1; }));
  second->call(unknown, nullptr, count);
  second.reset();
  EXPECT_FALSE(runLoopUntil([&] { return answers > 1; }, std::chrono::milliseconds(100)));
}

}  // namespace
}  // namespace audrel::linuxos
