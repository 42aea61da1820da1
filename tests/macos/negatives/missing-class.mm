// expected: undefined symbol: OBJC_CLASS_$_NSNoSuchClass
#import <AppKit/AppKit.h>

@interface NSNoSuchClass : NSResponder
@end

int main() {
  return [[NSNoSuchClass alloc] init] == nil;
}
