#pragma once

#import <Foundation/Foundation.h>

#include <string>

/// Fires the timers that are scheduled, as the run loop would.
void fireTimers();
std::size_t scheduledTimers();

namespace audrel::fakemac {

/// A property list as text: keys sorted, each value with its type.
std::string described(id object);

std::string text(NSString* string);

}  // namespace audrel::fakemac
