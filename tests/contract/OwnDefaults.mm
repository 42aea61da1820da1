#include "tests/contract/OwnDefaults.h"

#import <Foundation/Foundation.h>

namespace audrel::contract {

// Defaults of a program that has no bundle go by its name.
void removeOwnDefaults() {
  @autoreleasepool {
    NSString* name = NSProcessInfo.processInfo.processName;
    [NSUserDefaults.standardUserDefaults removePersistentDomainForName:name];
  }
}

}  // namespace audrel::contract
