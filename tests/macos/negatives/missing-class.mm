// expected: undefined symbol: OBJC_CLASS_$_NSWindow
#import <AppKit/AppKit.h>

@interface NSWindow : NSResponder
@end

int main() {
  return [[NSWindow alloc] init] == nil;
}
