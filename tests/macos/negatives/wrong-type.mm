// expected: cannot initialize a parameter of type 'NSMenuItem * _Nonnull'
#import <AppKit/AppKit.h>

int main() {
  NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
  [menu addItem:menu];
}
