#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/tray/Menu.h"

namespace audrel::linuxos {

/// A menu item as a panel knows it.
struct MenuNode {
  std::int32_t id = 0;
  std::shared_ptr<MenuItem> item;  ///< null for the root
  bool isEnabled = true;
  std::vector<MenuNode> children;
};

/// A menu with its submenus at one moment, and the ids under which panels know the items. Ids are
/// never used again by a later tree (short of two billion items), so that a click that
/// comes late is told from one on the menu of now.
class MenuTree {
 public:
  static constexpr std::int32_t rootId = 0;

  /// Of no menu: the root alone.
  MenuTree() = default;

  /// `nextId` is moved on behind the ids that are given out. An item is enabled when it says so
  /// itself and `isHonoured`.
  MenuTree(const Menu& menu, std::int32_t& nextId,
           const std::function<bool(const MenuItem&)>& isHonoured);

  const MenuNode& root() const { return root_; }

  /// Null when no item of this tree has that id.
  const MenuNode* find(std::int32_t id) const;

  /// Whether choosing `item`, maybe an item of an earlier tree, still means what its title said:
  /// it is here, or one with its action and title is, and enabled; or nothing here has its action.
  /// When its action is here under other titles alone ("Stop" where it was "Start"), it does not.
  bool stillOffers(const MenuItem& item) const;

  /// Calls `visit` with every node, parents first.
  void forEach(const std::function<void(const MenuNode&)>& visit) const;

 private:
  MenuNode root_;
};

}  // namespace audrel::linuxos
