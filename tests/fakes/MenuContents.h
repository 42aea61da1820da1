#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "model/RecordingSource.h"
#include "platform/AppKit.h"

namespace audrel::fakes {

struct ItemContents;

/// A whole menu as a value, for comparison with what it should be.
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

  bool operator==(const ItemContents&) const;
};

bool operator==(const MenuContents& left, const MenuContents& right);

/// One item a line, submenus indented, nothing left out. Objects show as present or absent only.
std::string shown(const MenuContents& menu, const std::string& indent = "");

/// One line; a submenu shows as such.
std::string shown(const ItemContents& item);

void PrintTo(const MenuContents& menu, std::ostream* stream);

}  // namespace audrel::fakes
