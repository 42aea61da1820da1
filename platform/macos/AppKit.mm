#include "platform/macos/AppKit.h"

#import <AppKit/AppKit.h>

#include "platform/macos/Alert.h"
#include "platform/macos/Graphics.h"
#include "platform/macos/Menu.h"
#include "platform/macos/StatusItem.h"
#include "platform/macos/Text.h"

namespace audrel::macos {

std::shared_ptr<NS::StatusItem> AppKit::makeStatusItem(double length) {
  @autoreleasepool {
    return std::make_shared<StatusItem>([NSStatusBar.systemStatusBar statusItemWithLength:length]);
  }
}

std::shared_ptr<NS::Menu> AppKit::makeMenu() {
  @autoreleasepool {
    return std::make_shared<Menu>([[AudrelMenu alloc] initWithTitle:@""]);
  }
}

std::shared_ptr<NS::MenuItem> AppKit::makeMenuItem(const std::string& title,
                                                   const std::optional<NS::Selector>& action,
                                                   const std::string& keyEquivalent) {
  @autoreleasepool {
    const SEL selector = action ? sel_registerName(action->name().c_str()) : nullptr;
    return std::make_shared<MenuItem>([[NSMenuItem alloc] initWithTitle:nsString(title)
                                                                 action:selector
                                                          keyEquivalent:nsString(keyEquivalent)]);
  }
}

std::shared_ptr<NS::MenuItem> AppKit::makeSeparatorItem() {
  @autoreleasepool {
    return std::make_shared<MenuItem>([NSMenuItem separatorItem]);
  }
}

std::shared_ptr<NS::Image> AppKit::makeSystemSymbol(const std::string& name) {
  @autoreleasepool {
    NSImage* image = [NSImage imageWithSystemSymbolName:nsString(name)
                               accessibilityDescription:nil];
    return image == nil ? nullptr : std::make_shared<Image>(image);
  }
}

std::shared_ptr<NS::Image> AppKit::makeImage(NS::Size size) {
  @autoreleasepool {
    return std::make_shared<Image>([[NSImage alloc] initWithSize:NSSize{size.width, size.height}]);
  }
}

std::shared_ptr<NS::Color> AppKit::systemRedColor() {
  @autoreleasepool {
    return std::make_shared<Color>(NSColor.systemRedColor);
  }
}

std::shared_ptr<NS::Color> AppKit::systemOrangeColor() {
  @autoreleasepool {
    return std::make_shared<Color>(NSColor.systemOrangeColor);
  }
}

void AppKit::fillRect(const NS::Rect& rect, NS::CompositingOperation operation) {
  static_assert(NSCompositingOperationSourceAtop ==
                static_cast<NSUInteger>(NS::CompositingOperation::sourceAtop));
  @autoreleasepool {
    NSRectFillUsingOperation(systemRect(rect), static_cast<NSCompositingOperation>(operation));
  }
}

std::shared_ptr<NS::Font> AppKit::monospacedDigitSystemFont(double size, double weight) {
  @autoreleasepool {
    return std::make_shared<Font>([NSFont monospacedDigitSystemFontOfSize:size weight:weight]);
  }
}

std::unique_ptr<NS::Alert> AppKit::makeAlert() {
  @autoreleasepool {
    return std::make_unique<Alert>([[NSAlert alloc] init]);
  }
}

}  // namespace audrel::macos
