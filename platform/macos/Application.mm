#include "platform/macos/Application.h"

#import <AppKit/AppKit.h>

#include "platform/macos/ProgramCall.h"

/// What AppKit sees of the program's delegate.
@interface AudrelApplicationDelegate : NSObject <NSApplicationDelegate> {
 @public
  std::weak_ptr<NS::ApplicationDelegate> _delegate;
}
@end

@implementation AudrelApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  audrel::macos::callProgram("applicationDidFinishLaunching:", [self] {
    if (const auto delegate = self->_delegate.lock()) {
      delegate->applicationDidFinishLaunching();
    }
  });
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  audrel::macos::callProgram("applicationWillTerminate:", [self] {
    if (const auto delegate = self->_delegate.lock()) {
      delegate->applicationWillTerminate();
    }
  });
}

@end

namespace audrel::macos {

struct Application::Delegate {
  AudrelApplicationDelegate* object;
};

Application::Application() = default;
Application::~Application() = default;

void Application::setActivationPolicy(NS::ActivationPolicy policy) {
  static_assert(NSApplicationActivationPolicyRegular ==
                static_cast<NSInteger>(NS::ActivationPolicy::regular));
  static_assert(NSApplicationActivationPolicyAccessory ==
                static_cast<NSInteger>(NS::ActivationPolicy::accessory));
  static_assert(NSApplicationActivationPolicyProhibited ==
                static_cast<NSInteger>(NS::ActivationPolicy::prohibited));
  @autoreleasepool {
    [NSApplication.sharedApplication
        setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
  }
}

void Application::setDelegate(const std::weak_ptr<NS::ApplicationDelegate>& delegate) {
  @autoreleasepool {
    AudrelApplicationDelegate* object = [[AudrelApplicationDelegate alloc] init];
    object->_delegate = delegate;
    NSApplication.sharedApplication.delegate = object;
    delegate_ = std::make_unique<Delegate>(object);
  }
}

void Application::run() {
  @autoreleasepool {
    [NSApplication.sharedApplication run];
  }
}

void Application::terminate() {
  @autoreleasepool {
    [NSApplication.sharedApplication terminate:nil];
  }
}

}  // namespace audrel::macos
