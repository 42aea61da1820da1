#include "platform/macos/Application.h"

#import <AppKit/AppKit.h>
#import <dispatch/dispatch.h>

#include <csignal>
#include <vector>

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
  explicit Delegate(AudrelApplicationDelegate* kept) : object(kept) {}

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

namespace {

void terminateApplication(void* /*context*/) noexcept {
  @autoreleasepool {
    [NSApplication.sharedApplication terminate:nil];
  }
}

/// As long as they live, the signals that ask a process to end end the application, on its main
/// thread, with its delegate told: by themselves they would take a running recording with them.
std::vector<dispatch_source_t> signalSources() {
  std::vector<dispatch_source_t> sources;
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    std::signal(number, SIG_IGN);
    dispatch_source_t source = dispatch_source_create(
        DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(number), 0, dispatch_get_main_queue());
    dispatch_source_set_event_handler_f(source, terminateApplication);
    dispatch_activate(source);
    sources.push_back(source);
  }
  return sources;
}

}  // namespace

void Application::run() {
  @autoreleasepool {
    const std::vector<dispatch_source_t> sources = signalSources();
    [NSApplication.sharedApplication run];
  }
}

void Application::terminate() {
  @autoreleasepool {
    [NSApplication.sharedApplication terminate:nil];
  }
}

}  // namespace audrel::macos
