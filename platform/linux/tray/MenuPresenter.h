#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/tray/Application.h"
#include "platform/linux/tray/MenuOpening.h"
#include "platform/linux/tray/MenuTree.h"

namespace audrel::linuxos {

/// The status item's menu as panels show it and answer it.
///
/// The menu is read when it is set, and again once it has been told that it opens. The actions of
/// clicks run from the main loop, never from `click`; actions may do anything, replacing the menu
/// and dropping this object included. While an alert is up, only items with the action `quit:` are
/// enabled and honoured, and the menu is not told that it opens. Main thread.
class MenuPresenter : public std::enable_shared_from_this<MenuPresenter> {
 public:
  /// `application` must outlive this object.
  static std::shared_ptr<MenuPresenter> make(const Application& application);

  /// Null for none.
  void setMenu(std::shared_ptr<Menu> menu);

  /// `observer` is called after every change of `tree`.
  void setObserver(std::function<void()> observer);

  /// `observer` is called whenever a panel reports that it shows the menu, before the menu is told.
  /// Panels that only announce it, which some do long before, are not reported.
  void setOpenedObserver(std::function<void(const MenuTree&)> observer);

  const MenuTree& tree() const { return tree_; }

  /// One more with every change of `tree`.
  std::uint32_t revision() const { return revision_; }

  /// The items with submenus, once for each tree: nothing when they were taken already.
  std::vector<std::int32_t> takeSubmenus();

  /// The item of this tree or of the one before it, which a panel may still show. Null for others.
  const MenuNode* known(std::int32_t id) const;

  /// A panel is about to show the menu, or has. The first notice of an opening tells the menu's
  /// delegate, which may replace it. Whether the panel has to read the menu again.
  bool opens(const std::string& panel, MenuOpening::Notice notice);

  /// An item was chosen. What it means is judged when its turn has come (`MenuTree::stillOffers`):
  /// a second click on "Start" that comes when the menu says "Stop" does nothing. A click on the
  /// same item that still waits gives way to this one, and beyond sixteen that wait it is lost:
  /// nobody clicks that fast. False for an item that is not known.
  bool click(std::int32_t id);

  /// Performs the action of the first item that has it, at once: for callers in the main loop.
  /// Nothing when there is none, or it is disabled.
  void choose(const NS::Selector& action);

  /// The same for an item of this menu or of an earlier one; nothing when the menu does not offer
  /// that any more.
  void choose(const std::shared_ptr<MenuItem>& item) { perform(item); }

  /// Reads the menu again: what is honoured has changed.
  void refresh() { readMenu(); }

 private:
  explicit MenuPresenter(const Application& application);

  bool isHonoured(const MenuItem& item) const;
  void readMenu();
  void performNextClick();
  void perform(const std::shared_ptr<MenuItem>& item);

  const Application& application_;
  std::function<void()> observer_;
  std::function<void(const MenuTree&)> openedObserver_;
  std::shared_ptr<Menu> menu_;
  MenuTree tree_;
  MenuTree previousTree_;
  std::int32_t nextId_ = MenuTree::rootId + 1;
  std::uint32_t revision_ = 1;
  std::uint32_t submenusTakenAt_ = 0;  ///< a revision
  MenuOpening opening_;
  std::deque<std::shared_ptr<MenuItem>> clicked_;
  LoopSource clicks_;
};

}  // namespace audrel::linuxos
