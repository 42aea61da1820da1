#include "tests/macos/frameworks/FakeAppKit.h"

#include <cstdio>
#include <cstdlib>

#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeGraphics.h"
#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::mac;
using audrel::fakemac::number;
using audrel::fakemac::text;

extern "C" void objc_msgSend();

namespace audrel::fakemac {

/// As the journal calls it.
static std::string nameOf(NSMenu* menu);

/// An item with all that it has.
static std::string whole(NSMenuItem* item);

}  // namespace audrel::fakemac

@implementation NSResponder
@end

@implementation NSView
@end

@implementation NSControl

- (void)setFont:(NSFont*)font {
  _font = font;
  mac().note("button.font = " + audrel::fakemac::nameOf(font));
}

@end

@implementation NSButton

- (void)setTitle:(NSString*)title {
  _title = title;
  mac().note("button.title = " + audrel::fakemac::described(title));
}

- (void)setImage:(NSImage*)image {
  _image = image;
  mac().note("button.image = " + audrel::fakemac::nameOf(image));
}

- (void)setImagePosition:(NSCellImagePosition)position {
  _imagePosition = position;
  mac().note("button.imagePosition = " + std::to_string(position));
}

@end

@implementation NSStatusBarButton
@end

static __weak NSStatusItem* itemInMenuBar;

@implementation NSStatusItem {
 @public
  NSStatusBarButton* _made;
}
@dynamic button;

- (NSStatusBarButton*)button {
  return _made;
}

- (void)setMenu:(NSMenu*)menu {
  _menu = menu;
  mac().note("statusItem.menu = " + audrel::fakemac::nameOf(menu));
}

@end

@implementation NSStatusBar

+ (NSStatusBar*)systemStatusBar {
  return [[NSStatusBar alloc] init];
}

- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  mac().note("statusItemWithLength: " + number(length));
  NSStatusItem* item = [[NSStatusItem alloc] init];
  item->_made = mac().hasStatusButton ? [[NSStatusBarButton alloc] init] : nil;
  itemInMenuBar = item;
  return item;
}

- (void)removeStatusItem:(NSStatusItem*)item {
  mac().note("removeStatusItem:");
  if (itemInMenuBar == item) {
    itemInMenuBar = nil;
  }
}

@end

@implementation NSMenu {
 @public
  std::vector<NSMenuItem*> _items;
  std::string _name;
}

- (instancetype)initWithTitle:(NSString*)title {
  _autoenablesItems = YES;
  _name = "menu " + std::to_string(++mac().menus);
  mac().note("NSMenu.initWithTitle: " + audrel::fakemac::described(title) + " -> " + _name);
  return self;
}

- (void)setAutoenablesItems:(BOOL)autoenables {
  _autoenablesItems = autoenables;
  mac().note(_name + ".autoenablesItems = " + (autoenables ? "true" : "false"));
}

- (void)setDelegate:(id<NSMenuDelegate>)delegate {
  _delegate = delegate;
  mac().note(_name + ".delegate = " + (delegate == self ? "itself" : "another object"));
}

- (void)addItem:(NSMenuItem*)item {
  _items.push_back(item);
  mac().note(_name + ".addItem: " + audrel::fakemac::whole(item));
}

@end

@implementation NSMenuItem {
 @public
  std::string _title;
  std::string _key;
  BOOL _isSeparator;
}

+ (NSMenuItem*)separatorItem {
  NSMenuItem* item = [[self alloc] initWithTitle:@"---" action:nullptr keyEquivalent:@""];
  item->_isSeparator = YES;
  return item;
}

- (instancetype)initWithTitle:(NSString*)title
                       action:(SEL)action
                keyEquivalent:(NSString*)keyEquivalent {
  _title = text(title);
  _key = text(keyEquivalent);
  self.action = action;
  self.enabled = YES;
  return self;
}

@end

@implementation NSWindow

- (instancetype)init {
  _preventsApplicationTerminationWhenModal = YES;
  return self;
}

@end

static NSWindow* modalWindow;

@implementation NSAlert {
  audrel::fakemac::Alert _shown;
  NSWindow* _panel;
}

- (NSWindow*)window {
  if (_panel == nil) {
    _panel = [[NSWindow alloc] init];
  }
  return _panel;
}

- (NSButton*)addButtonWithTitle:(NSString*)title {
  _shown.buttons.push_back(text(title));
  return [[NSButton alloc] init];
}

- (NSModalResponse)runModal {
  _shown.message = text(self.messageText);
  _shown.text = text(self.informativeText);
  _shown.style = self.alertStyle;
  _shown.level = self.window.level;
  mac().alerts.push_back(_shown);
  mac().note("NSAlert.runModal: " + _shown.message);
  if (mac().whileModal) {
    NSWindow* const below = modalWindow;
    modalWindow = self.window;
    mac().whileModal();
    modalWindow = below;
  }
  if (mac().answers.empty()) {
    return NSAlertFirstButtonReturn;
  }
  const NSModalResponse answer = mac().answers.front();
  mac().answers.pop_front();
  return answer;
}

@end

@implementation NSWorkspace

+ (NSWorkspace*)sharedWorkspace {
  return [[NSWorkspace alloc] init];
}

- (BOOL)openURL:(NSURL*)url {
  mac().note("NSWorkspace.openURL: " + text(url.absoluteString));
  return YES;
}

- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)urls {
  std::string all;
  for (NSUInteger i = 0; i < urls.count; ++i) {
    all += std::string(" ") + urls[i].fileSystemRepresentation;
  }
  mac().note("NSWorkspace.activateFileViewerSelectingURLs:" + all);
}

@end

@implementation NSRunningApplication {
  std::string _name;
}

+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid {
  mac().note("NSRunningApplication(" + std::to_string(pid) + ")");
  const auto found = mac().applications.find(pid);
  if (found == mac().applications.end()) {
    return nil;
  }
  NSRunningApplication* application = [[NSRunningApplication alloc] init];
  application->_name = found->second;
  return application;
}

- (NSString*)localizedName {
  return _name.empty() ? nil : audrel::fakemac::made(_name);
}

@end

@implementation NSApplication

+ (NSApplication*)sharedApplication {
  static NSApplication* const application = [[NSApplication alloc] init];
  return application;
}

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  mac().note("NSApplication.setActivationPolicy: " + std::to_string(policy));
  return YES;
}

- (void)setDelegate:(id<NSApplicationDelegate>)delegate {
  _delegate = delegate;
  mac().note(std::string("NSApplication.delegate = ") + (delegate == nil ? "nil" : "an object"));
}

- (void)run {
  mac().note("NSApplication.run");
  NSNotification* notification = [[NSNotification alloc] init];
  [self.delegate applicationDidFinishLaunching:notification];
  if (mac().whileRunning) {
    mac().whileRunning();
  }
}

/// As the real one, it ends the process, and refuses to under a modal window that prevents it. What
/// is left in the journal goes to standard error.
- (void)terminate:(id)sender {
  if (modalWindow != nil && modalWindow.preventsApplicationTerminationWhenModal) {
    mac().note("NSApplication.terminate: refused, since a window is modal");
    return;
  }
  mac().note(std::string("NSApplication.terminate:") + (sender == nil ? "" : " with a sender"));
  [self.delegate applicationWillTerminate:[[NSNotification alloc] init]];
  if (mac().whenTerminated) {
    mac().whenTerminated();
  }
  for (const std::string& line : mac().takeJournal()) {
    std::fprintf(stderr, "%s\n", line.c_str());
  }
  std::_Exit(0);
}

@end

namespace audrel::fakemac {

static std::string nameOf(NSMenu* menu) {
  return menu == nil ? "nil" : menu->_name;
}

static std::string whole(NSMenuItem* item) {
  if (item->_isSeparator) {
    return "separator";
  }
  return "\"" + item->_title + "\", key \"" + item->_key + "\", " +
         (item.action == nullptr ? "no action" : sel_getName(item.action)) +
         (item.target == nil ? ", no target" : ", target") +
         (item.isEnabled ? ", enabled" : ", disabled") +
         (item.state == NSControlStateValueOn ? ", on" : ", off") +
         (item.submenu == nil ? "" : ", submenu " + nameOf(item.submenu));
}

std::string titleOf(NSMenuItem* item) {
  return item->_title;
}

NSMenuItem* itemNamed(NSMenu* menu, const std::string& title) {
  for (NSMenuItem* item : menu->_items) {
    if (item->_title == title) {
      return item;
    }
    if (NSMenuItem* inside = item.submenu == nil ? nil : itemNamed(item.submenu, title)) {
      return inside;
    }
  }
  return nil;
}

NSMenu* openMenu() {
  @autoreleasepool {
    NSMenu* menu = statusItem().menu;
    mac().note("the user opens " + nameOf(menu));
    [menu.delegate menuWillOpen:menu];
    return menu;
  }
}

void choose(NSMenuItem* item) {
  @autoreleasepool {
    if (!item.isEnabled) {
      mac().note("a disabled item was chosen");
      return;
    }
    id target = item.target;
    if (item.action == nullptr || target == nil) {
      mac().note("an item without target was chosen");
      return;
    }
    mac().note("the user chooses \"" + item->_title + "\"");
    reinterpret_cast<void (*)(id, SEL, id)>(&objc_msgSend)(target, item.action, item);
  }
}

NSStatusItem* statusItem() {
  return itemInMenuBar;
}

}  // namespace audrel::fakemac
