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
    // Under a modal window that prevents it AppKit refuses to end the application: a signal or a
    // logout would go unheard, and the kill that follows would cost a recording that runs.
    alert_.window.preventsApplicationTerminationWhenModal = NO;
    // The program may not be the active one, and to become that is for the system to grant.
    alert_.window.level = NSFloatingWindowLevel;
    return [alert_ runModal];
  }
}

}  // namespace audrel::macos
