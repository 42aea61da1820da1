#include "platform/macos/Alert.h"

#include "platform/macos/Text.h"

namespace audrel::macos {

static_assert(NSAlertStyleWarning == static_cast<NSUInteger>(NS::AlertStyle::warning));
static_assert(NSAlertStyleInformational == static_cast<NSUInteger>(NS::AlertStyle::informational));
static_assert(NSAlertStyleCritical == static_cast<NSUInteger>(NS::AlertStyle::critical));
static_assert(NSAlertFirstButtonReturn == NS::alertFirstButtonReturn);
static_assert(NSAlertSecondButtonReturn == NS::alertSecondButtonReturn);

void Alert::setMessageText(const std::string& text) {
  @autoreleasepool {
    alert_.messageText = nsString(text);
  }
}

void Alert::setInformativeText(const std::string& text) {
  @autoreleasepool {
    alert_.informativeText = nsString(text);
  }
}

void Alert::setAlertStyle(NS::AlertStyle style) {
  @autoreleasepool {
    alert_.alertStyle = static_cast<NSAlertStyle>(style);
  }
}

void Alert::addButton(const std::string& title) {
  @autoreleasepool {
    [alert_ addButtonWithTitle:nsString(title)];
  }
}

NS::ModalResponse Alert::runModal() {
  @autoreleasepool {
    return [alert_ runModal];
  }
}

}  // namespace audrel::macos
