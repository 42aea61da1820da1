#include "platform/macos/Menu.h"

#include "platform/macos/ProgramCall.h"

using audrel::macos::callProgram;

@implementation AudrelMenuItemContent

- (void)perform:(SEL)action sender:(NSMenuItem*)sender {
  const char* name = sel_getName(action);
  callProgram(name, [=] {
    // The view keeps the item, whatever the program does with the menu meanwhile.
    const auto item = std::make_shared<audrel::macos::MenuItem>(sender);
    if (const auto target = self->_target.lock()) {
      target->perform(NS::Selector(name), item);
    }
  });
}

- (void)toggleRecording:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)selectAllSystemAudio:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)selectProcess:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)refreshProcessList:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)selectFormatM4A:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)selectFormatWAV:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)revealLastRecording:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)checkForUpdates:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)showAbout:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

- (void)quit:(NSMenuItem*)sender {
  [self perform:_cmd sender:sender];
}

@end

@implementation AudrelMenu

- (void)menuWillOpen:(NSMenu*)menu {
  callProgram("menuWillOpen:", [self] {
    const auto view = std::make_shared<audrel::macos::Menu>(self);
    if (const auto delegate = self->_programDelegate.lock()) {
      delegate->menuWillOpen(view);
    }
  });
}

@end

namespace audrel::macos {

AudrelMenuItemContent* MenuItem::content() {
  AudrelMenuItemContent* content = item_.representedObject;
  if (content == nil) {
    content = [[AudrelMenuItemContent alloc] init];
    item_.representedObject = content;
  }
  return content;
}

void MenuItem::setTarget(const std::weak_ptr<NS::Target>& target) {
  @autoreleasepool {
    content()->_target = target;
    item_.target = content();
  }
}

void MenuItem::setEnabled(bool isEnabled) {
  @autoreleasepool {
    item_.enabled = isEnabled;
  }
}

void MenuItem::setState(NS::ControlState state) {
  static_assert(NSControlStateValueOff == static_cast<NSInteger>(NS::ControlState::off));
  static_assert(NSControlStateValueOn == static_cast<NSInteger>(NS::ControlState::on));
  @autoreleasepool {
    item_.state = static_cast<NSControlStateValue>(state);
  }
}

void MenuItem::setSubmenu(std::shared_ptr<NS::Menu> submenu) {
  @autoreleasepool {
    item_.submenu = submenu ? static_cast<Menu&>(*submenu).systemMenu() : nil;
  }
}

void MenuItem::setRepresentedObject(std::any object) {
  @autoreleasepool {
    content()->_representedObject = std::move(object);
  }
}

const std::any& MenuItem::representedObject() const {
  static const std::any none;
  @autoreleasepool {
    AudrelMenuItemContent* content = item_.representedObject;
    return content == nil ? none : content->_representedObject;
  }
}

void Menu::setAutoenablesItems(bool autoenables) {
  @autoreleasepool {
    menu_.autoenablesItems = autoenables;
  }
}

void Menu::addItem(std::shared_ptr<NS::MenuItem> item) {
  @autoreleasepool {
    [menu_ addItem:static_cast<MenuItem&>(*item).systemItem()];
  }
}

void Menu::setDelegate(const std::weak_ptr<NS::MenuDelegate>& delegate) {
  @autoreleasepool {
    menu_->_programDelegate = delegate;
    menu_.delegate = menu_;
  }
}

}  // namespace audrel::macos
