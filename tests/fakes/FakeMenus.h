#pragma once

#include <any>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AppKit.h"
#include "tests/fakes/Journal.h"
#include "tests/fakes/MenuContents.h"

namespace audrel::fakes {

/// Refers to its target weakly, as the real one does. Changes before it is in a menu show in the
/// line of that; later ones have a line each.
class FakeMenuItem final : public NS::MenuItem {
 public:
  FakeMenuItem(Journal& journal, std::string title, std::optional<NS::Selector> action,
               std::string keyEquivalent);

  static std::shared_ptr<FakeMenuItem> separator(Journal& journal);

  void setTarget(const std::weak_ptr<NS::Target>& target) override;
  void setEnabled(bool isEnabled) override;
  void setState(NS::ControlState state) override;
  void setSubmenu(std::shared_ptr<NS::Menu> submenu) override;
  void setRepresentedObject(std::any object) override;
  const std::any& representedObject() const override { return representedObject_; }

  ItemContents contents() const;
  const std::shared_ptr<NS::Menu>& submenu() const { return submenu_; }
  void isInAMenuNow() { isInAMenu_ = true; }

  /// The user chooses `item`, which the caller keeps alive. Throws when nobody could: when it
  /// is disabled, has no action, or its target is gone.
  static void choose(const std::shared_ptr<FakeMenuItem>& item);

 private:
  void changed(const char* what);

  Journal& journal_;
  std::string title_;
  std::optional<NS::Selector> action_;
  std::string keyEquivalent_;
  bool isSeparator_ = false;
  bool isEnabled_ = true;
  NS::ControlState state_ = NS::ControlState::off;
  bool isInAMenu_ = false;
  std::weak_ptr<NS::Target> target_;
  std::shared_ptr<NS::Menu> submenu_;
  std::any representedObject_;
};

/// Refers to its delegate weakly.
class FakeMenu final : public NS::Menu {
 public:
  FakeMenu(Journal& journal, int number) : journal_(journal), number_(number) {}

  void setAutoenablesItems(bool autoenables) override;
  void addItem(std::shared_ptr<NS::MenuItem> item) override;
  void setDelegate(const std::weak_ptr<NS::MenuDelegate>& delegate) override;

  /// "menu 3", in the order in which menus were made.
  std::string name() const { return "menu " + std::to_string(number_); }
  MenuContents contents() const;
  std::shared_ptr<NS::MenuDelegate> delegate() const { return delegate_.lock(); }

  /// The first item with that title, in this menu or a submenu. Throws when there is none.
  std::shared_ptr<FakeMenuItem> item(const std::string& title) const;

 private:
  std::shared_ptr<FakeMenuItem> find(const std::string& title) const;

  Journal& journal_;
  int number_;
  bool autoenablesItems_ = true;
  std::weak_ptr<NS::MenuDelegate> delegate_;
  std::vector<std::shared_ptr<FakeMenuItem>> items_;
};

}  // namespace audrel::fakes
