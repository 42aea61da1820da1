// expected: null passed to a callee that requires a non-null argument
#import <AppKit/AppKit.h>

int main() {
  return [[NSMenu alloc] initWithTitle:nil].autoenablesItems;
}
