#include "platform/macos/Text.h"

namespace audrel::macos {

NSString* nsString(std::string_view text) {
  NSString* string = [[NSString alloc] initWithBytes:text.data()
                                              length:text.size()
                                            encoding:NSUTF8StringEncoding];
  if (string == nil) {
    string = [[NSString alloc] initWithBytes:text.data()
                                      length:text.size()
                                    encoding:NSISOLatin1StringEncoding];
  }
  return string;
}

std::string utf8(NSString* text) {
  const char* bytes = text.UTF8String;
  return bytes == nullptr ? std::string() : std::string(bytes);
}

NSURL* fileURL(const std::filesystem::path& path) {
  return [NSURL fileURLWithFileSystemRepresentation:path.c_str() isDirectory:NO relativeToURL:nil];
}

std::filesystem::path filePath(NSURL* fileURL) {
  return fileURL.fileSystemRepresentation;
}

}  // namespace audrel::macos
