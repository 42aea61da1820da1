#include "tests/macos/frameworks/FakeAppKit.h"

#include <cstdio>
#include <cstdlib>

#include "tests/macos/frameworks/FakeFoundation.h"
#include "tests/macos/frameworks/FakeMac.h"

using audrel::fakemac::mac;
using audrel::fakemac::text;

extern "C" void objc_msgSend();

const NSFontWeight NSFontWeightRegular = 0;

static std::string number(double value) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%g", value);
  return digits;
}

@implementation NSResponder
@end

@implementation NSView
@end

@implementation NSControl
@end

@implementation NSButton
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
}

- (instancetype)initWithTitle:(NSString*)title {
  self.autoenablesItems = YES;
  return self;
}

- (void)addItem:(NSMenuItem*)item {
  _items.push_back(item);
}

@end

@implementation NSMenuItem {
 @public
  std::string _title;
  std::string _key;
}

+ (NSMenuItem*)separatorItem {
  return [[self alloc] initWithTitle:@"---" action:nullptr keyEquivalent:@""];
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

@implementation NSColor {
 @public
  std::string _name;
}

/// What `set` made current.
static std::string currentColor;

+ (NSColor*)systemRedColor {
  NSColor* color = [[NSColor alloc] init];
  color->_name = "red";
  return color;
}

+ (NSColor*)systemOrangeColor {
  NSColor* color = [[NSColor alloc] init];
  color->_name = "orange";
  return color;
}

- (void)set {
  currentColor = _name;
}

@end

@implementation NSFont {
 @public
  std::string _name;
}

+ (NSFont*)monospacedDigitSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  NSFont* font = [[NSFont alloc] init];
  font->_name = "monospaced digits, " + number(size) + " pt, weight " + number(weight);
  return font;
}

@end

@implementation NSImageSymbolConfiguration {
 @public
  std::string _name;
}

+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight {
  NSImageSymbolConfiguration* configuration = [[NSImageSymbolConfiguration alloc] init];
  configuration->_name = number(pointSize) + " pt, weight " + number(weight);
  return configuration;
}

@end

static NSImage* focused;

@implementation NSImage {
 @public
  std::string _content;
  NSSize _size;
  BOOL _isTemplate;
}
@dynamic size;

+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description {
  if (!mac().symbols.contains(text(name))) {
    return nil;
  }
  NSImage* image = [[NSImage alloc] initWithSize:NSSize{17, 15}];
  image->_content = text(name);
  return image;
}

- (instancetype)initWithSize:(NSSize)size {
  _size = size;
  return self;
}

- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration {
  NSImage* image = [[NSImage alloc] initWithSize:_size];
  image->_content = _content + " at " + configuration->_name;
  return image;
}

- (NSSize)size {
  return _size;
}

- (void)setSize:(NSSize)size {
  _size = size;
}

- (BOOL)isTemplate {
  return _isTemplate;
}

- (void)setTemplate:(BOOL)isTemplate {
  _isTemplate = isTemplate;
}

- (void)lockFocus {
  focused = self;
}

- (void)unlockFocus {
  focused = nil;
}

- (void)drawInRect:(NSRect)rect {
  focused->_content +=
      _content + " in " + number(rect.size.width) + " x " + number(rect.size.height);
}

@end

void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation) {
  focused->_content += ", filled " + currentColor + " with operation " + std::to_string(operation) +
                       " in " + number(rect.size.width) + " x " + number(rect.size.height);
}

@implementation NSAlert {
  audrel::fakemac::Alert _shown;
}

- (NSButton*)addButtonWithTitle:(NSString*)title {
  _shown.buttons.push_back(text(title));
  return [[NSButton alloc] init];
}

- (NSModalResponse)runModal {
  _shown.message = text(self.messageText);
  _shown.text = text(self.informativeText);
  _shown.style = self.alertStyle;
  mac().alerts.push_back(_shown);
  mac().note("NSAlert.runModal: " + _shown.message);
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
  return mac().opensURLs;
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
  const auto found = mac().applications.find(pid);
  if (found == mac().applications.end()) {
    return nil;
  }
  NSRunningApplication* application = [[NSRunningApplication alloc] init];
  application->_name = found->second;
  return application;
}

- (NSString*)localizedName {
  return _name.empty() ? nil
                       : [[NSString alloc] initWithBytes:_name.data()
                                                  length:_name.size()
                                                encoding:NSUTF8StringEncoding];
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

- (void)run {
  mac().note("NSApplication.run");
  NSNotification* notification = [[NSNotification alloc] init];
  [self.delegate applicationDidFinishLaunching:notification];
  if (mac().whileRunning) {
    mac().whileRunning();
  }
}

/// As the real one, it ends the process. What happened goes to standard error.
- (void)terminate:(id)sender {
  mac().note("NSApplication.terminate:");
  [self.delegate applicationWillTerminate:[[NSNotification alloc] init]];
  for (const std::string& line : mac().takeJournal()) {
    std::fprintf(stderr, "%s\n", line.c_str());
  }
  std::_Exit(0);
}

@end

namespace audrel::fakemac {

std::vector<NSMenuItem*> itemsOf(NSMenu* menu) {
  return menu->_items;
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

static std::string shown(NSMenu* menu, const std::string& indent) {
  std::string all;
  for (NSMenuItem* item : menu->_items) {
    all += indent + item->_title;
    all += item->_key.empty() ? "" : ", key " + item->_key;
    all += item.action == nullptr ? "" : std::string(", ") + sel_getName(item.action);
    all += item.target == nil ? "" : ", target";
    all += item.isEnabled ? "" : ", disabled";
    all += item.state == NSControlStateValueOn ? ", on" : "";
    all += "\n";
    if (item.submenu != nil) {
      all += shown(item.submenu, indent + "  ");
    }
  }
  return all;
}

std::string shown(NSMenu* menu) {
  return shown(menu, "");
}

NSMenu* openMenu() {
  @autoreleasepool {
    NSMenu* menu = statusItem().menu;
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
    reinterpret_cast<void (*)(id, SEL, id)> (&objc_msgSend)(target, item.action, item);
  }
}

NSStatusItem* statusItem() {
  return itemInMenuBar;
}

std::string shownInMenuBar() {
  NSStatusBarButton* button = statusItem().button;
  NSImage* image = button.image;
  return (image == nil ? "no image" : image->_content + (image.isTemplate ? ", template" : "")) +
         ", title " + fakemac::described(button.title) + ", image position " +
         std::to_string(button.imagePosition) + ", " +
         (button.font == nil ? "no font" : button.font->_name);
}

void resetAppKit() {
  focused = nil;
  currentColor.clear();
}

}  // namespace audrel::fakemac
