#include "platform/macos/Foundation.h"

#import <Foundation/Foundation.h>

#include "platform/macos/ProgramCall.h"
#include "platform/macos/Text.h"

namespace audrel::macos {

std::optional<std::filesystem::path> FileManager::downloadsDirectory() {
  @autoreleasepool {
    NSURL* url = [NSFileManager.defaultManager URLsForDirectory:NSDownloadsDirectory
                                                      inDomains:NSUserDomainMask]
                     .firstObject;
    return url == nil ? std::nullopt : std::optional(filePath(url));
  }
}

std::filesystem::path FileManager::homeDirectoryForCurrentUser() {
  @autoreleasepool {
    return filePath(NSFileManager.defaultManager.homeDirectoryForCurrentUser);
  }
}

bool FileManager::fileExists(const std::filesystem::path& path) {
  @autoreleasepool {
    NSFileManager* manager = NSFileManager.defaultManager;
    NSString* text = [manager stringWithFileSystemRepresentation:path.c_str()
                                                          length:path.native().size()];
    // Of bytes that are no UTF-8 the framework makes no text, and takes none.
    return text != nil && [manager fileExistsAtPath:text];
  }
}

bool FileManager::nameIsTaken(const std::filesystem::path& path) {
  return fileExists(path);
}

std::string UUIDFactory::uuidString() {
  @autoreleasepool {
    return utf8([NSUUID UUID].UUIDString);
  }
}

NS::ComparisonResult Collation::localizedCaseInsensitiveCompare(std::string_view left,
                                                                std::string_view right) {
  static_assert(NSOrderedAscending ==
                static_cast<NSInteger>(NS::ComparisonResult::orderedAscending));
  static_assert(NSOrderedSame == static_cast<NSInteger>(NS::ComparisonResult::orderedSame));
  static_assert(NSOrderedDescending ==
                static_cast<NSInteger>(NS::ComparisonResult::orderedDescending));
  @autoreleasepool {
    return static_cast<NS::ComparisonResult>(
        [nsString(left) localizedCaseInsensitiveCompare:nsString(right)]);
  }
}

std::optional<NS::URL> URLParser::urlWithString(const std::string& text) {
  @autoreleasepool {
    NSURL* url = [NSURL URLWithString:nsString(text)];
    return url == nil ? std::nullopt : std::optional(NS::URL{utf8(url.absoluteString)});
  }
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) {
  @autoreleasepool {
    NSString* text = [NSUserDefaults.standardUserDefaults stringForKey:nsString(key)];
    return text == nil ? std::nullopt : std::optional(utf8(text));
  }
}

void UserDefaults::setString(const std::string& value, const std::string& key) {
  @autoreleasepool {
    [NSUserDefaults.standardUserDefaults setObject:nsString(value) forKey:nsString(key)];
  }
}

void UserDefaults::removeObjectForKey(const std::string& key) {
  @autoreleasepool {
    [NSUserDefaults.standardUserDefaults removeObjectForKey:nsString(key)];
  }
}

namespace {

class Timer final : public NS::Timer {
 public:
  explicit Timer(NSTimer* timer) : timer_(timer) {}

  void invalidate() override {
    @autoreleasepool {
      [timer_ invalidate];
    }
  }

 private:
  NSTimer* timer_;
};

}  // namespace

std::shared_ptr<NS::Timer> RunLoop::scheduleRepeatingTimer(double interval,
                                                           std::function<void()> block) {
  const auto shared = std::make_shared<std::function<void()>>(std::move(block));
  @autoreleasepool {
    return std::make_shared<Timer>([NSTimer
        scheduledTimerWithTimeInterval:interval
                               repeats:YES
                                 block:^(NSTimer*) {
                                   // It may invalidate its timer, which then lets go of it.
                                   const auto held = shared;
                                   callProgram("A timer's block", [&held] { (*held)(); });
                                 }]);
  }
}

}  // namespace audrel::macos
