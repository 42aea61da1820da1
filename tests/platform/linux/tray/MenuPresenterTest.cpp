#include "platform/linux/tray/MenuPresenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/MainLoop.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using support::drainLoop;
using testing::ElementsAre;
using testing::IsEmpty;

class Recorder final : public NS::Target, public NS::MenuDelegate {
 public:
  void perform(const NS::Selector& selector, const std::shared_ptr<NS::MenuItem>& sender) override {
    calls.push_back(selector.name());
    if (onPerform) {
      onPerform();
    }
    sender->setEnabled(false);  // still there
  }

  void menuWillOpen(const std::shared_ptr<NS::Menu>& menu) override {
    calls.emplace_back("will open");
    if (onOpen) {
      onOpen();
    }
    menu->setAutoenablesItems(false);  // still there
  }

  std::vector<std::string> calls;
  std::function<void()> onPerform;
  std::function<void()> onOpen;
};

class MenuPresenterTest : public testing::Test {
 protected:
  std::shared_ptr<MenuItem> item(const std::string& title, const std::string& action) {
    auto made = std::make_shared<MenuItem>(MenuItem::Kind::command, title, NS::Selector(action));
    made->setTarget(recorder);
    return made;
  }

  std::shared_ptr<Menu> menu(const std::vector<std::shared_ptr<MenuItem>>& items) {
    auto made = std::make_shared<Menu>();
    made->setAutoenablesItems(false);
    for (const auto& each : items) {
      made->addItem(each);
    }
    made->setDelegate(recorder);
    return made;
  }

  std::int32_t idOf(std::size_t index) { return presenter->tree().root().children.at(index).id; }

  bool opens() { return presenter->opens(":1.1", MenuOpening::Notice::aboutToShow); }

  std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
  Application application;
  std::shared_ptr<MenuPresenter> presenter = MenuPresenter::make(application);
};

TEST_F(MenuPresenterTest, actionsNeverRunInsideTheClick) {
  presenter->setMenu(menu({item("Start", "toggle:")}));
  EXPECT_TRUE(presenter->click(idOf(0)));
  EXPECT_THAT(recorder->calls, IsEmpty());
  drainLoop();
  EXPECT_THAT(recorder->calls, ElementsAre("toggle:"));
}

TEST_F(MenuPresenterTest, clicksKeepTheirOrder) {
  presenter->setMenu(menu({item("A", "a:"), item("B", "b:"), item("C", "c:")}));
  for (const std::size_t index : {2U, 0U, 1U}) {
    presenter->click(idOf(index));
  }
  drainLoop();
  EXPECT_THAT(recorder->calls, ElementsAre("c:", "a:", "b:"));
}

TEST_F(MenuPresenterTest, aClickThatWaitsGivesWayToAnEqualOne) {
  presenter->setMenu(menu({item("A", "a:"), item("B", "b:")}));
  for (const std::size_t index : {0U, 1U, 0U, 0U}) {
    EXPECT_TRUE(presenter->click(idOf(index)));
  }
  drainLoop();
  EXPECT_THAT(recorder->calls, ElementsAre("b:", "a:"));
}

TEST_F(MenuPresenterTest, ofAFloodOfClicksTheFirstSixteenArePerformed) {
  std::vector<std::shared_ptr<MenuItem>> items;
  for (int i = 0; i < 40; ++i) {
    items.push_back(item("A", "a" + std::to_string(i) + ":"));
  }
  presenter->setMenu(menu(items));
  for (std::size_t index = 0; index < items.size(); ++index) {
    EXPECT_TRUE(presenter->click(idOf(index)));
  }
  drainLoop();
  ASSERT_EQ(recorder->calls.size(), 16U);
  EXPECT_EQ(recorder->calls.back(), "a15:");
}

TEST_F(MenuPresenterTest, whatIsChosenForTheUserIsPerformedAtOnce) {
  auto disabled = item("Start", "disabled:");
  disabled->setEnabled(false);
  presenter->setMenu(menu({item("Start", "toggle:"), item("Stop", "toggle:"), disabled}));
  presenter->choose(NS::Selector("toggle:"));
  EXPECT_THAT(recorder->calls, ElementsAre("toggle:"));
  presenter->choose(NS::Selector("disabled:"));
  presenter->choose(NS::Selector("unknown:"));
  drainLoop();
  EXPECT_THAT(recorder->calls, ElementsAre("toggle:"));
}

TEST_F(MenuPresenterTest, duringAnAlertNothingIsChosenButQuit) {
  presenter->setMenu(menu({item("Start", "toggle:"), item("Quit", "quit:")}));
  const ModalSession session(application);
  presenter->choose(NS::Selector("toggle:"));
  presenter->choose(NS::Selector("quit:"));
  EXPECT_THAT(recorder->calls, ElementsAre("quit:"));
}

TEST_F(MenuPresenterTest, aChosenActionMayDropEverythingThatCalledIt) {
  presenter->setMenu(menu({item("Start", "toggle:")}));
  recorder->onPerform = [this] {
    presenter->setMenu(menu({}));
    presenter.reset();
  };
  presenter->choose(NS::Selector("toggle:"));
  EXPECT_THAT(recorder->calls, ElementsAre("toggle:"));
}

TEST_F(MenuPresenterTest, anActionMayDropEverythingThatCalledIt) {
  presenter->setMenu(menu({item("Start", "toggle:"), item("Other", "other:")}));
  recorder->onPerform = [this] { presenter.reset(); };
  presenter->click(idOf(0));
  presenter->click(idOf(1));
  drainLoop();
  EXPECT_THAT(recorder->calls, ElementsAre("toggle:"));
}

TEST_F(MenuPresenterTest, theDelegateMayDropEverythingThatCalledIt) {
  presenter->setMenu(menu({item("Start", "toggle:")}));
  recorder->onOpen = [this] {
    presenter->setMenu(menu({}));
    presenter.reset();
  };
  EXPECT_TRUE(opens());
  EXPECT_THAT(recorder->calls, ElementsAre("will open"));
}

TEST_F(MenuPresenterTest, aTargetThatHasGoneGetsNoAction) {
  presenter->setMenu(menu({item("Start", "toggle:")}));
  presenter->click(idOf(0));
  recorder.reset();
  drainLoop();
  EXPECT_FALSE(opens());
}

TEST_F(MenuPresenterTest, withAutomaticEnablingItemsAreEnabledThatDoSomething) {
  auto inert = std::make_shared<MenuItem>(MenuItem::Kind::command, "Inert", std::nullopt);
  auto holder = std::make_shared<MenuItem>(MenuItem::Kind::command, "Holder", std::nullopt);
  holder->setSubmenu(menu({}));
  auto useful = item("Useful", "use:");
  useful->setEnabled(false);
  const auto automatic = menu({inert, holder, useful});
  automatic->setAutoenablesItems(true);
  presenter->setMenu(automatic);
  std::vector<bool> enabled;
  for (const MenuNode& node : presenter->tree().root().children) {
    enabled.push_back(node.isEnabled);
  }
  EXPECT_THAT(enabled, ElementsAre(false, true, true));
}

TEST_F(MenuPresenterTest, aClickCountsOnlyWhileTheMenuMeansTheSame) {
  struct Case {
    std::shared_ptr<MenuItem> now;
    bool isPerformed;
  };
  auto disabled = item("Start", "toggle:");
  disabled->setEnabled(false);
  const std::vector<Case> cases = {
      {item("Start", "toggle:"), true},
      {item("Stop", "toggle:"), false},
      {disabled, false},
      {item("Something else", "else:"), true},
  };
  for (const Case& each : cases) {
    recorder->calls.clear();
    presenter->setMenu(menu({item("Start", "toggle:")}));
    const std::int32_t id = idOf(0);
    presenter->setMenu(menu({each.now}));
    EXPECT_TRUE(presenter->click(id));
    drainLoop();
    EXPECT_EQ(!recorder->calls.empty(), each.isPerformed) << each.now->title();
  }
}

TEST_F(MenuPresenterTest, ofTwoMenusAgoNothingIsKnown) {
  const std::weak_ptr<Menu> first = [this] {
    auto made = menu({item("Start", "toggle:")});
    presenter->setMenu(made);
    return made;
  }();
  const std::int32_t id = idOf(0);
  const std::weak_ptr<MenuItem> firstItem = first.lock()->items().front();
  presenter->setMenu(menu({item("Start", "toggle:")}));
  EXPECT_NE(presenter->known(id), nullptr);
  presenter->setMenu(menu({item("Start", "toggle:")}));
  EXPECT_EQ(presenter->known(id), nullptr);
  EXPECT_FALSE(presenter->click(id));
  EXPECT_TRUE(first.expired());
  EXPECT_TRUE(firstItem.expired());
}

TEST_F(MenuPresenterTest, duringAnAlertTheMenuOpensWithoutTheProgram) {
  presenter->setMenu(menu({item("Start", "toggle:"), item("Quit", "quit:")}));
  const ModalSession session(application);
  EXPECT_TRUE(opens());
  EXPECT_THAT(recorder->calls, IsEmpty());
  EXPECT_FALSE(presenter->tree().root().children[0].isEnabled);
  EXPECT_TRUE(presenter->tree().root().children[1].isEnabled);
}

TEST_F(MenuPresenterTest, aTerminatingApplicationHonoursNothing) {
  presenter->setMenu(menu({item("Quit", "quit:")}));
  presenter->click(idOf(0));
  application.terminate();
  presenter->click(idOf(0));
  drainLoop();
  EXPECT_THAT(recorder->calls, IsEmpty());
}

TEST_F(MenuPresenterTest, whoeverObservesOpeningsHearsOfThoseThatAreReported) {
  presenter->setMenu(menu({item("Start", "toggle:")}));
  std::vector<std::string> opened;
  presenter->setOpenedObserver(
      [&](const MenuTree& tree) { opened.push_back(tree.root().children.at(0).item->title()); });
  opens();
  EXPECT_THAT(opened, IsEmpty()) << "GNOME announces one when the item is new";
  presenter->opens(":1.1", MenuOpening::Notice::opened);
  EXPECT_THAT(opened, ElementsAre("Start"));
  EXPECT_THAT(recorder->calls, ElementsAre("will open"));
}

TEST(MenuTree, idsStartAgainAfterTheLargest) {
  Menu menu;
  for (int i = 0; i < 2; ++i) {
    menu.addItem(std::make_shared<MenuItem>(MenuItem::Kind::separator, "", std::nullopt));
  }
  std::int32_t nextId = std::numeric_limits<std::int32_t>::max();
  const MenuTree tree(menu, nextId, [](const MenuItem&) { return true; });
  EXPECT_EQ(tree.root().children[0].id, std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(tree.root().children[1].id, 1);
  EXPECT_EQ(nextId, 2);
}

using Notice = MenuOpening::Notice;

TEST(MenuOpening, everyNoticeOfOneKindIsAnOpening) {
  MenuOpening opening;
  for (const Notice notice : {Notice::aboutToShow, Notice::opened}) {
    EXPECT_TRUE(opening.begins(":1.1", notice, 10s));
    EXPECT_TRUE(opening.begins(":1.1", notice, 10s));
    opening = MenuOpening();
  }
}

TEST(MenuOpening, theOtherNoticeBelongsToTheSameOpeningForASecond) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_FALSE(opening.begins(":1.1", Notice::opened, 10s + 999ms));
  EXPECT_TRUE(opening.begins(":1.1", Notice::opened, 11s));
  EXPECT_FALSE(opening.begins(":1.1", Notice::aboutToShow, 11s));
  EXPECT_TRUE(opening.begins(":1.1", Notice::opened, 12s));
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 13s));
}

TEST(MenuOpening, panelsOpenForThemselves) {
  MenuOpening opening;
  EXPECT_TRUE(opening.begins(":1.1", Notice::aboutToShow, 10s));
  EXPECT_TRUE(opening.begins(":1.2", Notice::opened, 10s));
}

}  // namespace
}  // namespace audrel::linuxos
