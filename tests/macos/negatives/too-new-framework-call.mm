// expected: 'close' is only available on macOS 15.0 or newer
#import <AVFAudio/AVFAudio.h>

int main() {
  AVAudioFile* file = nil;
  [file close];
}
