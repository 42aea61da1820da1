#include "platform/linux/session/Notifier.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>
#include <vector>

#include "tests/platform/linux/session/harness/SessionTest.h"

namespace audrel::linuxos {
namespace {

using sessiontest::TestService;
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

  /// Has one shown that offers to stop and to wait, and drops its call.
  void show(TestService& service, const char* summary = "a") {
    notifier.notify({.summary = summary, .body = "", .tag = "same", .actions = stopAndWait()});
    nextNotification(service);
    ASSERT_TRUE(settle());
  }

  Notification::Actions stopAndWait() {
    return {{.key = "stop", .label = "Stop It", .perform = [this] { done.emplace_back("stop"); }},
            {.key = "wait", .label = "Wait", .perform = [this] { done.emplace_back("wait"); }}};
  }

  std::vector<std::string> done;  ///< by actions
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

TEST_F(NotifierTest, sendsOneThatSaysTheSameAndOffersOtherActions) {
  auto service = notifications("['actions']");
  Notification::Actions others = stopAndWait();
  others.front() = {.key = "go", .label = "Go", .perform = {}};
  notifier.notify({.summary = "a", .body = "", .tag = "same", .actions = others});
  notifier.notify({.summary = "a", .body = "", .tag = "same", .actions = stopAndWait()});
  EXPECT_THAT(nextNotification(service), HasSubstr("'a', '', ['go', "));
  EXPECT_THAT(nextNotification(service), HasSubstr("'a', '', ['stop', "));
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

TEST_F(NotifierTest, offersActionsToADesktopThatShowsThem) {
  auto service = notifications("['actions']");
  notifier.notify({.summary = "a", .body = "", .tag = "same", .actions = stopAndWait()});
  EXPECT_EQ(nextNotification(service),
            "Notify ('Audrel', 0, 'io.github.audrel.Audrel', 'a', '', "
            "['stop', 'Stop It', 'wait', 'Wait'], "
            "{'urgency': <byte 0x01>, 'desktop-entry': <'io.github.audrel.Audrel'>}, -1)");
}

TEST_F(NotifierTest, offersNoActionsToADesktopThatShowsNone) {
  auto service = notifications("['body']");
  notifier.notify({.summary = "a", .body = "", .tag = "same", .actions = stopAndWait()});
  EXPECT_THAT(nextNotification(service), HasSubstr("'a', '', [], {"));
}

TEST_F(NotifierTest, makesTextsOfActionsOfBytesThatAreNone) {
  auto service = notifications("['actions']");
  notifier.notify({.summary = "a",
                   .body = "",
                   .tag = "same",
                   .actions = {{.key = "b", .label = "caf\xE9", .perform = {}}}});
  EXPECT_THAT(nextNotification(service), HasSubstr("['b', 'caf\xEF\xBF\xBD']"));
}

TEST_F(NotifierTest, doesWhatTheUserChooses) {
  auto service = notifications("['actions']");
  show(service);
  choose(service, 1, "wait");
  choose(service, 1, "stop");
  EXPECT_THAT(done, ElementsAre("wait", "stop"));
}

TEST_F(NotifierTest, doesNothingForWhatItDoesNotOffer) {
  auto service = notifications("['actions']");
  show(service);
  choose(service, 1, "default");
  choose(service, 2, "stop");  // another program's
  choose(service, 0, "stop");
  emit(service, "ActionInvoked", g_variant_new("(su)", "stop", 1U));
  emit(service, "NotificationClosed", g_variant_new("(s)", "1"));
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(NotifierTest, doesNothingForAnotherProgramThanTheDesktop) {
  auto service = notifications("['actions']");
  show(service);
  TestService other(privateBus.address(), "org.example.Other", {}, {});
  emit(other, "ActionInvoked", g_variant_new("(us)", 1U, "stop"));
  support::runLoopFor(std::chrono::milliseconds(100));
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(NotifierTest, doesWhatTheNewestOfATagOffersAlone) {
  auto service = notifications("['actions']");
  show(service);
  notifier.notify({.summary = "b", .body = "", .tag = "same"});
  ASSERT_TRUE(settle());
  for (const std::uint32_t number : {1U, 2U}) {
    choose(service, number, "stop");
  }
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(NotifierTest, mayPutAnotherInThePlaceOfTheOneThatIsChosen) {
  auto service = notifications("['actions']");
  notifier.notify({.summary = "a",
                   .body = "",
                   .tag = "same",
                   .actions = {{.key = "next", .label = "Next", .perform = [this] {
                                  notifier.notify({.summary = "b", .body = "", .tag = "same"});
                                  notifier.withdraw("same");
                                  notifier.notify({.summary = "c", .body = "", .tag = "same"});
                                }}}});
  nextNotification(service);
  ASSERT_TRUE(settle());
  choose(service, 1, "next");
  ASSERT_TRUE(settle());
  const auto calls = service.furtherCalls();
  ASSERT_FALSE(calls.empty());
  EXPECT_THAT(calls.back(), HasSubstr("'c'"));
}

TEST_F(NotifierTest, replacesAndOffersNoneThatTheUserHasClosed) {
  auto service = notifications("['actions']");
  show(service);
  emit(service, "NotificationClosed", g_variant_new("(uu)", 1U, 2U));
  choose(service, 1, "stop");
  EXPECT_THAT(done, IsEmpty());
  notifier.notify({.summary = "b", .body = "", .tag = "same"});
  EXPECT_THAT(nextNotification(service), StartsWith("Notify ('Audrel', 0,"));
}

TEST_F(NotifierTest, replacesNoneOfADesktopThatHasGone) {
  {
    auto service = notifications("['actions']");
    show(service);
  }
  auto service = notifications("['actions']");
  emit(service, "NotificationClosed", g_variant_new("(uu)", 9U, 2U));  // what was before is heard
  notifier.withdraw("same");
  notifier.notify({.summary = "b", .body = "", .tag = "same"});
  EXPECT_THAT(nextNotification(service), StartsWith("Notify ('Audrel', 0,"));
}

TEST_F(NotifierTest, replacesNoneOfABusThatHasGone) {
  bool isLost = false;
  const SessionBus::Listener listener(bus, [](GDBusConnection*) {}, [&] { isLost = true; });
  {
    auto service = notifications("['actions']");
    show(service);
    privateBus.crash();
    ASSERT_TRUE(runLoopUntil([&] { return isLost; }));
  }
  privateBus.restart();
  auto service = notifications("['actions']");
  notifier.withdraw("same");
  notifier.notify({.summary = "b", .body = "", .tag = "same", .actions = stopAndWait()});
  EXPECT_THAT(nextNotification(service), StartsWith("Notify ('Audrel', 0,"));
  ASSERT_TRUE(settle());
  choose(service, 1, "stop");
  EXPECT_THAT(done, ElementsAre("stop")) << "the new bus is listened to";
}

TEST_F(NotifierTest, takesAwayTheOneOfATag) {
  auto service = notifications("['actions']");
  show(service);
  notifier.withdraw("other");
  notifier.withdraw("same");
  notifier.withdraw("same");
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
  choose(service, 1, "stop");
  EXPECT_THAT(done, IsEmpty());
}

TEST_F(NotifierTest, takesAwayTheOneThatIsOnItsWayAndTheNext) {
  auto service = notifications();
  for (const char* summary : {"a", "b"}) {
    notifier.notify({.summary = summary, .body = "", .tag = "same"});
  }
  notifier.withdraw("same");
  EXPECT_THAT(nextNotification(service), HasSubstr("'a'"));
  EXPECT_THAT(service.furtherCalls(), ElementsAre("CloseNotification (1,)"));
}

TEST_F(NotifierTest, showsOneThatComesAgainWhileItIsTakenAway) {
  auto service = notifications();
  notifier.notify({.summary = "a", .body = "", .tag = "same"});
  notifier.withdraw("same");
  notifier.notify({.summary = "a", .body = "", .tag = "same"});
  EXPECT_THAT(nextNotification(service), HasSubstr("'a'"));
  EXPECT_THAT(service.furtherCalls(), IsEmpty());
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
  bool hasGoneOn = false;
  LoopSource program([&] { hasGoneOn = true; });
  program.callSoon();
  local.reset();
  EXPECT_FALSE(hasGoneOn) << "half of it is gone by then";
  for (int i = 0; i < many; ++i) {
    ASSERT_EQ(service.nextCall(), "CloseNotification (1,)") << i;
  }
}

TEST_F(NotifierTest, holdsNoEndUpForABusThatHangs) {
  auto local = std::make_unique<SessionBus>();
  bool isConnected = false;
  local->withConnection([&](GDBusConnection*, const std::string&) { isConnected = true; });
  ASSERT_TRUE(runLoopUntil([&] { return isConnected; }));
  privateBus.hang();
  int answers = 0;
  const std::string longerThanASocketHolds(8'000'000, 'x');
  local->call({"org.nobody", "/", "org.nobody", "Nothing"},
              g_variant_new("(s)", longerThanASocketHolds.c_str()),
              [&](const SessionBus::Answer&) { ++answers; });
  local.reset();
  support::drainLoop();
  EXPECT_EQ(answers, 0);
}

TEST_F(NotifierTest, hearsNothingOnceItHasGone) {
  auto service = notifications("['actions']");
  auto local = std::make_unique<Notifier>(bus, log);
  local->notify({.summary = "a", .body = "", .tag = "same", .actions = stopAndWait()});
  nextNotification(service);
  ASSERT_TRUE(runLoopUntil([&] { return !local->isBusy(); }));
  local.reset();
  choose(service, 1, "stop");
  emit(service, "NotificationClosed", g_variant_new("(uu)", 1U, 2U));
  EXPECT_THAT(done, IsEmpty());
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
