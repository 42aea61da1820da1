#pragma once

#import <AppKit/AppKit.h>

#include <string>

/// What the user sees of AppKit's objects, and does with them.
namespace audrel::fakemac {

std::string titleOf(NSMenuItem* item);

/// The item of that title, also one in a submenu; nil when there is none.
NSMenuItem* itemNamed(NSMenu* menu, const std::string& title);

/// The user opens the status item's menu: the menu that was there is what stays open.
NSMenu* openMenu();

/// The user chooses an item: its action goes to its target, within a pool as an event has one.
void choose(NSMenuItem* item);

/// In the menu bar; nil when none was made.
NSStatusItem* statusItem();

}  // namespace audrel::fakemac
