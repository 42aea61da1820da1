#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

#include "tests/macos/frameworks/FakeMac.h"

/// Fires the timers that are scheduled, as the run loop would.
void fireTimers();
std::size_t scheduledTimers();

namespace audrel::fakemac {

/// As the frameworks do for what they take for a mistake of their caller.
[[noreturn]] void raise(const std::string& name, const std::optional<std::string>& reason);

/// A property list as text: keys sorted, each value with its type.
std::string described(id object);

std::string text(NSString* string);

NSString* made(const std::string& text);
NSError* made(const Failure& failure);

}  // namespace audrel::fakemac
