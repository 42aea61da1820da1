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

/// What was drawn into it, and whether it is a template.
std::string shown(NSImage* image);

/// Forgets what is being drawn.
void resetGraphics();

}  // namespace audrel::fakemac
