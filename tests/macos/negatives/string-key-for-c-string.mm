// expected: string literal must be prefixed by '@'
#import <CoreAudio/CoreAudio.h>
#import <Foundation/Foundation.h>

int main() {
  NSString* key = kAudioAggregateDeviceNameKey;
  return key == nil;
}
