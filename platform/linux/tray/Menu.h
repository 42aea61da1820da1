#pragma once

#include "platform/AppKit.h"

namespace audrel::linuxos {

class Menu;

class MenuItem final : public NS::MenuItem {
 public:
  enum class Kind { command, separator };

  MenuItem(Kind kind, std::string title, std::optional<NS::Selector> action);

  void setTarget(const std::weak_ptr<NS::Target>& target) override;
  void setEnabled(bool isEnabled) override;
  void setState(NS::ControlState state) override;

  /// `submenu` is one of this platform's menus.
  void setSubmenu(std::shared_ptr<NS::Menu> submenu) override;
  void setRepresentedObject(std::any object) override;
  const std::any& representedObject() const override { return representedObject_; }

  bool isSeparator() const { return kind_ == Kind::separator; }
  const std::string& title() const { return title_; }
  const std::optional<NS::Selector>& action() const { return action_; }

  /// Nothing as long as none was set: such an item has no place for a checkmark.
  std::optional<NS::ControlState> state() const { return state_; }
  const std::shared_ptr<Menu>& submenu() const { return submenu_; }

  /// What was set; with automatic enabling, whether choosing it has an effect.
  bool isEnabled(bool autoenables) const;

  /// Sends the action of `item` to its target, if it has both. The target lives on until it
  /// returns; the caller sees to it that this very pointer does.
  static void perform(const std::shared_ptr<MenuItem>& item);

 private:
  Kind kind_;
  std::string title_;
  std::optional<NS::Selector> action_;
  std::weak_ptr<NS::Target> target_;
  bool isEnabled_ = true;
  std::optional<NS::ControlState> state_;
  std::shared_ptr<Menu> submenu_;
  std::any representedObject_;
};

class Menu final : public NS::Menu {
 public:
  void setAutoenablesItems(bool autoenables) override;

  /// `item` is one of this platform's items.
  void addItem(std::shared_ptr<NS::MenuItem> item) override;
  void setDelegate(const std::weak_ptr<NS::MenuDelegate>& delegate) override;

  bool autoenablesItems() const { return autoenablesItems_; }
  const std::vector<std::shared_ptr<MenuItem>>& items() const { return items_; }
  std::shared_ptr<NS::MenuDelegate> delegate() const { return delegate_.lock(); }

 private:
  bool autoenablesItems_ = true;
  std::vector<std::shared_ptr<MenuItem>> items_;
  std::weak_ptr<NS::MenuDelegate> delegate_;
};

}  // namespace audrel::linuxos
