// expected: no visible @interface for 'NSMenu' declares the selector 'addItems:'
#import <AppKit/AppKit.h>

int main() {
  [[[NSMenu alloc] initWithTitle:@""] addItems:nil];
}
