#pragma once

#import <AppKit/AppKit.h>

#include "platform/AppKit.h"

/// The commands of the menu, by their selectors.
@protocol AudrelMenuActions
- (void)toggleRecording:(NSMenuItem*)sender;
- (void)selectAllSystemAudio:(NSMenuItem*)sender;
- (void)selectProcess:(NSMenuItem*)sender;
- (void)refreshProcessList:(NSMenuItem*)sender;
- (void)selectFormatM4A:(NSMenuItem*)sender;
- (void)selectFormatWAV:(NSMenuItem*)sender;
- (void)revealLastRecording:(NSMenuItem*)sender;
- (void)checkForUpdates:(NSMenuItem*)sender;
- (void)showAbout:(NSMenuItem*)sender;
- (void)quit:(NSMenuItem*)sender;
@end

/// What the program gave to an item. The item owns it, as its represented object, and sends its
/// actions to it: AppKit itself refers to targets weakly.
@interface AudrelMenuItemContent : NSObject <AudrelMenuActions> {
 @public
  std::weak_ptr<NS::Target> _target;
  std::any _representedObject;
}
@end

/// A menu that is its own delegate, since AppKit refers to delegates weakly.
@interface AudrelMenu : NSMenu <NSMenuDelegate> {
 @public
  std::weak_ptr<NS::MenuDelegate> _programDelegate;
}
@end

namespace audrel::macos {

/// One of possibly several views of an item: all that there is to an item is in AppKit's.
class MenuItem final : public NS::MenuItem {
 public:
  explicit MenuItem(NSMenuItem* item) : item_(item) {}

  NSMenuItem* systemItem() const { return item_; }

  void setTarget(const std::weak_ptr<NS::Target>& target) override;
  void setEnabled(bool isEnabled) override;
  void setState(NS::ControlState state) override;
  void setSubmenu(std::shared_ptr<NS::Menu> submenu) override;
  void setRepresentedObject(std::any object) override;
  const std::any& representedObject() const override;

 private:
  AudrelMenuItemContent* content();

  NSMenuItem* item_;
};

/// One of possibly several views of a menu.
class Menu final : public NS::Menu {
 public:
  explicit Menu(AudrelMenu* menu) : menu_(menu) {}

  NSMenu* systemMenu() const { return menu_; }

  void setAutoenablesItems(bool autoenables) override;
  void addItem(std::shared_ptr<NS::MenuItem> item) override;
  void setDelegate(const std::weak_ptr<NS::MenuDelegate>& delegate) override;

 private:
  AudrelMenu* menu_;
};

}  // namespace audrel::macos
