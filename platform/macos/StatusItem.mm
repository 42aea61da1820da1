#include "platform/macos/StatusItem.h"

#include "platform/macos/Graphics.h"
#include "platform/macos/Menu.h"
#include "platform/macos/Text.h"

namespace audrel::macos {

void StatusBarButton::setFont(std::shared_ptr<NS::Font> font) {
  @autoreleasepool {
    button_.font = font ? static_cast<Font&>(*font).systemFont() : nil;
  }
}

void StatusBarButton::setImagePosition(NS::CellImagePosition position) {
  static_assert(NSImageLeft == static_cast<NSUInteger>(NS::CellImagePosition::imageLeft));
  @autoreleasepool {
    button_.imagePosition = static_cast<NSCellImagePosition>(position);
  }
}

void StatusBarButton::setImage(std::shared_ptr<NS::Image> image) {
  @autoreleasepool {
    button_.image = image ? static_cast<Image&>(*image).systemImage() : nil;
  }
}

void StatusBarButton::setTitle(const std::string& title) {
  @autoreleasepool {
    button_.title = nsString(title);
  }
}

StatusItem::StatusItem(NSStatusItem* item) : item_(item) {
  @autoreleasepool {
    if (NSStatusBarButton* button = item_.button; button != nil) {
      button_.emplace(button);
    }
  }
}

StatusItem::~StatusItem() {
  @autoreleasepool {
    [NSStatusBar.systemStatusBar removeStatusItem:item_];
  }
}

NS::StatusBarButton* StatusItem::button() {
  return button_ ? &*button_ : nullptr;
}

void StatusItem::setMenu(std::shared_ptr<NS::Menu> menu) {
  @autoreleasepool {
    item_.menu = menu ? static_cast<Menu&>(*menu).systemMenu() : nil;
  }
}

}  // namespace audrel::macos
