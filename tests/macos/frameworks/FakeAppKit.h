#pragma once

#import <AppKit/AppKit.h>

#include <string>
#include <vector>

/// What the user sees of AppKit's objects, and does with them.
namespace audrel::fakemac {

/// The items of a menu, in order.
std::vector<NSMenuItem*> itemsOf(NSMenu* menu);

std::string titleOf(NSMenuItem* item);

/// The item of that title, also one in a submenu; nil when there is none.
NSMenuItem* itemNamed(NSMenu* menu, const std::string& title);

/// A menu, an item a line, submenus indented.
std::string shown(NSMenu* menu);

/// The user opens the status item's menu: the menu that was there is what stays open.
NSMenu* openMenu();

/// The user chooses an item: its action goes to its target, within a pool as an event has one.
void choose(NSMenuItem* item);

/// In the menu bar; nil when none was made.
NSStatusItem* statusItem();

/// What stands there: symbol, colour and title.
std::string shownInMenuBar();

/// Forgets what the menu bar holds.
void resetAppKit();

}  // namespace audrel::fakemac
