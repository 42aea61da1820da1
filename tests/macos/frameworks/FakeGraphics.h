#pragma once

#import <AppKit/AppKit.h>

#include <string>

/// Fonts, colours and images, for the rest of AppKit.
namespace audrel::fakemac {

/// Without more digits than it needs.
std::string number(double value);

/// As the journal calls them.
std::string nameOf(NSFont* font);
std::string nameOf(NSImage* image);

}  // namespace audrel::fakemac
