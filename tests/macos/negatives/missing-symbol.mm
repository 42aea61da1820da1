// expected: undefined symbol: AudioObjectSetPropertyData
#import <CoreAudio/CoreAudio.h>

CF_EXPORT OSStatus AudioObjectSetPropertyData(AudioObjectID object);

int main() {
  return AudioObjectSetPropertyData(1);
}
