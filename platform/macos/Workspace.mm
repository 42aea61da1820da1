#include "platform/macos/Workspace.h"

#import <AppKit/AppKit.h>

#include "platform/macos/Text.h"

namespace audrel::macos {

bool Workspace::openURL(const NS::URL& url) {
  @autoreleasepool {
    NSURL* systemURL = [NSURL URLWithString:nsString(url.absoluteString)];
    return systemURL != nil && [NSWorkspace.sharedWorkspace openURL:systemURL];
  }
}

void Workspace::activateFileViewerSelecting(const std::vector<std::filesystem::path>& files) {
  @autoreleasepool {
    NSMutableArray<NSURL*>* urls = [NSMutableArray array];
    for (const std::filesystem::path& file : files) {
      [urls addObject:fileURL(file)];
    }
    [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:urls];
  }
}

std::optional<NS::RunningApplication> RunningApplications::runningApplication(
    pid_t processIdentifier) {
  @autoreleasepool {
    NSRunningApplication* application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:processIdentifier];
    if (application == nil) {
      return std::nullopt;
    }
    NSString* name = application.localizedName;
    return NS::RunningApplication{name == nil ? std::nullopt : std::optional(utf8(name))};
  }
}

}  // namespace audrel::macos
