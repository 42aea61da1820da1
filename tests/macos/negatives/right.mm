// Compiles and links: what the others do wrong, done right.
#import <AVFAudio/AVFAudio.h>
#import <AppKit/AppKit.h>

#include <functional>

int main(int count, char**) {
  std::function<int()> function;
  if (count > 5) {
    function = [] { return 1; };
  }
  NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
  menu.autoenablesItems = NO;
  AVAudioFile* file = nil;
  return function() + [file writeFromBuffer:[[AVAudioPCMBuffer alloc] init] error:nil];
}
