#pragma once

#import <Foundation/Foundation.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace audrel::macos {

/// The text as the frameworks have it. Bytes that are no UTF-8 are read as Latin-1, so that a text
/// is never lost whole.
NSString* nsString(std::string_view text);

/// UTF-8; empty for nil, and for a text that has none (half of a surrogate pair).
std::string utf8(NSString* text);

NSURL* fileURL(const std::filesystem::path& path);
std::filesystem::path filePath(NSURL* fileURL);

}  // namespace audrel::macos
