#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "model/RecordingSource.h"
#include "platform/AppKit.h"

namespace audrel::fakes {

struct ItemContents;

/// A whole menu as a value.
struct MenuContents {
  bool autoenablesItems = true;
  const NS::MenuDelegate* delegate = nullptr;
  std::vector<ItemContents> items;
};

/// A menu item as a value. As AppKit makes one, but for the title.
struct ItemContents {
  std::string title;
  bool isSeparator = false;
  std::optional<std::string> action;
  const NS::Target* target = nullptr;
  std::string keyEquivalent;
  bool isEnabled = true;
  bool isOn = false;
  std::optional<RecordingSource> representedObject;
  std::optional<MenuContents> submenu;
};

/// Those of submenus behind the item that they belong to.
void forEachItem(const MenuContents& menu, const std::function<void(const ItemContents&)>& take);

/// The titles of the items that have a checkmark.
std::vector<std::string> markedIn(const MenuContents& menu);

/// The titles of the items by which an application is chosen.
std::vector<std::string> applicationsIn(const MenuContents& menu);

/// One item a line, submenus indented, nothing left out. Objects show as present or absent only.
std::string shown(const MenuContents& menu, const std::string& indent = "");

/// One line; a submenu shows as such.
std::string shown(const ItemContents& item);

/// The menu as a user sees it: one item a line, what is in a submenu behind ">", a "*" for a
/// checkmark.
std::string outlineOf(const MenuContents& menu, const std::string& prefix = "");

}  // namespace audrel::fakes
