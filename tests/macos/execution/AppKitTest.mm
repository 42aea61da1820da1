#include "platform/macos/AppKit.h"

#include <functional>
#include <stdexcept>

#include "platform/macos/Updater.h"
#include "tests/macos/execution/MacTest.h"
#include "ui/MenuBuilder.h"

namespace audrel::macos {
namespace {

class Target final : public NS::Target {
 public:
  void perform(const NS::Selector& selector, const std::shared_ptr<NS::MenuItem>& sender) override {
    performed.push_back(selector.name());
    if (whenPerformed) {
      whenPerformed(sender);
    }
  }

  std::vector<std::string> performed;
  std::function<void(const std::shared_ptr<NS::MenuItem>&)> whenPerformed;
};

class MenuDelegate final : public NS::MenuDelegate {
 public:
  void menuWillOpen(const std::shared_ptr<NS::Menu>& menu) override { whenOpening(menu); }

  std::function<void(const std::shared_ptr<NS::Menu>&)> whenOpening;
};

class AppKitTest : public MacTest {
 protected:
  std::shared_ptr<NS::MenuItem> item(const std::string& title,
                                     const std::string& action = "toggleRecording:") {
    auto made = appKit.makeMenuItem(title, NS::Selector(action), "");
    made->setTarget(target);
    return made;
  }

  /// In the menu bar, with that one item, kept by AppKit alone.
  void showMenuOf(const std::shared_ptr<NS::MenuItem>& item) {
    const auto menu = appKit.makeMenu();
    menu->addItem(item);
    statusItem->setMenu(menu);
  }

  static void choose(const std::string& title) {
    @autoreleasepool {
      fakemac::choose(fakemac::itemNamed(fakemac::statusItem().menu, title));
    }
  }

  AppKit appKit;
  std::shared_ptr<Target> target = std::make_shared<Target>();
  std::shared_ptr<NS::StatusItem> statusItem = appKit.makeStatusItem(-1);
};

TEST_F(AppKitTest, everyActionOfTheMenuReachesTheTargetByItsOwnSelector) {
  using Action = MenuBuilder::Action;
  const std::vector<NS::Selector> actions = {
      Action::toggleRecording(),     Action::selectAllSystemAudio(),
      Action::selectProcess(),       Action::refreshProcessList(),
      Action::selectFormatM4A(),     Action::selectFormatWAV(),
      Action::revealLastRecording(), Action::checkForUpdates(),
      Action::showAbout(),           Action::quit()};
  std::vector<std::string> names;
  for (const NS::Selector& action : actions) {
    EXPECT_TRUE(objcruntime::instancesRespondTo("AudrelMenuItemContent", action.name().c_str()));
    showMenuOf(item("command", action.name()));
    choose("command");
    names.push_back(action.name());
  }
  EXPECT_EQ(target->performed, names);
}

TEST_F(AppKitTest, anItemCarriesWhatItRepresentsToItsAction) {
  auto made = item("process", "selectProcess:");
  made->setRepresentedObject(std::string("a process"));
  showMenuOf(made);
  made.reset();
  std::string represented;
  target->whenPerformed = [&](const auto& sender) {
    represented = std::any_cast<std::string>(sender->representedObject());
  };
  choose("process");
  EXPECT_EQ(represented, "a process");
}

TEST_F(AppKitTest, anItemRepresentsNothingUntilItIsTold) {
  EXPECT_FALSE(appKit.makeSeparatorItem()->representedObject().has_value());
  EXPECT_FALSE(item("command")->representedObject().has_value());
}

TEST_F(AppKitTest, aTargetThatIsGoneIsNotCalledAndNotKept) {
  showMenuOf(item("command"));
  const std::weak_ptr<Target> weak = target;
  target.reset();
  EXPECT_TRUE(weak.expired());
  choose("command");
}

// AppKit refers to targets weakly: the item itself has to keep what its actions go to.
TEST_F(AppKitTest, whatReceivesTheActionsLivesAsLongAsItsItem) {
  @autoreleasepool {
    showMenuOf(item("command"));
  }
  @autoreleasepool {
    EXPECT_NE(fakemac::itemNamed(fakemac::statusItem().menu, "command").target, nil);
    EXPECT_EQ(objcruntime::liveObjectsOf("AudrelMenuItemContent"), 1U);
  }
  statusItem->setMenu(nullptr);
  EXPECT_EQ(objcruntime::liveObjectsOf("AudrelMenuItemContent"), 0U);
}

TEST_F(AppKitTest, theSenderLivesWhenItsActionTakesTheMenuAway) {
  showMenuOf(item("command"));
  bool isDone = false;
  target->whenPerformed = [&](const auto& sender) {
    statusItem->setMenu(nullptr);
    sender->setState(NS::ControlState::on);
    isDone = true;
  };
  choose("command");
  EXPECT_TRUE(isDone);
}

TEST_F(AppKitTest, aMenuThatWasReplacedWhileItOpensWorksOn) {
  const auto delegate = std::make_shared<MenuDelegate>();
  auto made = item("old");
  made->setRepresentedObject(1);
  auto menu = appKit.makeMenu();
  menu->addItem(made);
  menu->setDelegate(delegate);
  statusItem->setMenu(menu);
  menu.reset();
  made.reset();
  delegate->whenOpening = [&](const auto& opening) {
    showMenuOf(item("new"));
    opening->addItem(item("added"));
  };
  @autoreleasepool {
    NSMenu* open = fakemac::openMenu();
    EXPECT_NE(fakemac::itemNamed(open, "added"), nil);
    EXPECT_NE(fakemac::itemNamed(fakemac::statusItem().menu, "new"), nil);
    fakemac::choose(fakemac::itemNamed(open, "old"));
  }
  EXPECT_EQ(target->performed.size(), 1U);
}

TEST_F(AppKitTest, aMenuDelegateThatIsGoneIsNotCalled) {
  auto delegate = std::make_shared<MenuDelegate>();
  const auto menu = appKit.makeMenu();
  menu->setDelegate(delegate);
  statusItem->setMenu(menu);
  delegate.reset();
  @autoreleasepool {
    fakemac::openMenu();
  }
}

TEST_F(AppKitTest, anExceptionOfAnActionIsLoggedAndGoesNoFurther) {
  showMenuOf(item("command"));
  target->whenPerformed = [](const auto&) { throw std::runtime_error("a reason"); };
  choose("command");
  EXPECT_TRUE(contains(journal(),
                       "log io.github.audrel.Audrel [platform] error: toggleRecording: failed: "
                       "a reason"));
}

TEST_F(AppKitTest, aStatusItemMayHaveNoButtonAndLeavesTheMenuBarWithItsOwner) {
  statusItem.reset();
  EXPECT_TRUE(contains(journal(), "removeStatusItem:"));
  mac().hasStatusButton = false;
  EXPECT_EQ(appKit.makeStatusItem(-1)->button(), nullptr);
}

TEST_F(AppKitTest, anUnknownSymbolIsNoneAndAButtonMayHaveNone) {
  statusItem->button()->setImage(appKit.makeSystemSymbol("waveform.circle"));
  const auto unknown = appKit.makeSystemSymbol("no.such.symbol");
  EXPECT_EQ(unknown, nullptr);
  statusItem->button()->setImage(unknown);
  @autoreleasepool {
    EXPECT_EQ(fakemac::statusItem().button.image, nil);
  }
}

TEST_F(AppKitTest, anAlertShowsItsTextsAndButtonsAndGivesTheAnswer) {
  mac().answers = {1001};
  const auto alert = appKit.makeAlert();
  alert->setMessageText("Recording failed");
  alert->setInformativeText("Because of \u201Cthis\u201D.");
  alert->setAlertStyle(NS::AlertStyle::critical);
  alert->addButton("OK");
  alert->addButton("Cancel");
  EXPECT_EQ(alert->runModal(), NS::alertSecondButtonReturn);
  const auto& shown = mac().alerts.front();
  EXPECT_EQ(shown.message, "Recording failed");
  EXPECT_EQ(shown.text, "Because of \u201Cthis\u201D.");
  EXPECT_EQ(shown.style, 2U);
  EXPECT_EQ(shown.buttons, (Lines{"OK", "Cancel"}));
}

// The program has no Dock icon and may not be the active one.
TEST_F(AppKitTest, anAlertFloatsAboveTheWindowsOfOtherPrograms) {
  appKit.makeAlert()->runModal();
  EXPECT_EQ(mac().alerts.front().level, NSFloatingWindowLevel);
}

class Delegate final : public NS::ApplicationDelegate {
 public:
  void applicationDidFinishLaunching() override { throw std::runtime_error("a reason"); }
  void applicationWillTerminate() override {}
};

TEST_F(AppKitTest, anApplicationKeepsWhatItsFrameworkRefersToWeaklyAndSurvivesAnException) {
  auto delegate = std::make_shared<Delegate>();
  NS::Application& application = appKit.sharedApplication();
  application.setActivationPolicy(NS::ActivationPolicy::accessory);
  application.setDelegate(delegate);
  application.run();
  EXPECT_TRUE(contains(journal(), "log io.github.audrel.Audrel [platform] error: "
                                  "applicationDidFinishLaunching: failed: a reason"));
  const std::weak_ptr<Delegate> weak = delegate;
  delegate.reset();
  EXPECT_TRUE(weak.expired());
  application.run();
}

// Whoever can be asked whether to end can refuse it, or put it off.
TEST_F(AppKitTest, anApplicationsDelegateHearsOfLaunchAndEndAndIsAskedNothing) {
  const auto answers = [](const char* selector) {
    return objcruntime::instancesRespondTo("AudrelApplicationDelegate", selector);
  };
  EXPECT_TRUE(answers("applicationDidFinishLaunching:"));
  EXPECT_TRUE(answers("applicationWillTerminate:"));
  EXPECT_FALSE(answers("applicationShouldTerminate:"));
  EXPECT_FALSE(answers("applicationShouldTerminateAfterLastWindowClosed:"));
  EXPECT_FALSE(answers("applicationShouldHandleReopen:hasVisibleWindows:"));
}

TEST_F(AppKitTest, aBuildWithoutUpdaterSaysSoInTheLog) {
  journal();
  UpdateFramework().makeStandardUpdaterController(true)->checkForUpdates();
  EXPECT_EQ(journal(), (Lines{"os_log_create(\"io.github.audrel.Audrel\", \"platform\")",
                              "log io.github.audrel.Audrel [platform] info: This build was made "
                              "without an updater and cannot look for updates"}));
}

}  // namespace
}  // namespace audrel::macos
