#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// The part of the Core Audio hardware layer that the program talks to: value types with the
/// layout of the system's own, and one operation per framework call, with the framework's own
/// name, argument order and result.
namespace CA {

/// Names an object of the hardware layer (a tap, a device, a process). 0 names none.
using AudioObjectID = std::uint32_t;

/// The result of a call: 0 for success, else mostly a four-character code.
using OSStatus = std::int32_t;

/// Packs a four-character constant, first character in the highest byte.
constexpr std::uint32_t fourCharCode(const char (&code)[5]) {
  std::uint32_t packed = 0;
  for (int i = 0; i < 4; ++i) {
    packed = packed << 8U | static_cast<std::uint8_t>(code[i]);
  }
  return packed;
}

inline constexpr OSStatus kAudioHardwareNoError = 0;
inline constexpr auto kAudioHardwareNotRunningError = static_cast<OSStatus>(fourCharCode("stop"));
inline constexpr auto kAudioHardwareUnspecifiedError = static_cast<OSStatus>(fourCharCode("what"));
inline constexpr auto kAudioHardwareUnknownPropertyError =
    static_cast<OSStatus>(fourCharCode("who?"));
inline constexpr auto kAudioHardwareBadPropertySizeError =
    static_cast<OSStatus>(fourCharCode("!siz"));
inline constexpr auto kAudioHardwareIllegalOperationError =
    static_cast<OSStatus>(fourCharCode("nope"));
inline constexpr auto kAudioHardwareBadObjectError = static_cast<OSStatus>(fourCharCode("!obj"));
inline constexpr auto kAudioHardwareBadDeviceError = static_cast<OSStatus>(fourCharCode("!dev"));

inline constexpr AudioObjectID kAudioObjectUnknown = 0;
inline constexpr AudioObjectID kAudioObjectSystemObject = 1;

struct AudioObjectPropertyAddress {
  std::uint32_t mSelector = 0;
  std::uint32_t mScope = 0;
  std::uint32_t mElement = 0;

  bool operator==(const AudioObjectPropertyAddress&) const = default;
};

inline constexpr std::uint32_t kAudioObjectPropertyScopeGlobal = fourCharCode("glob");
inline constexpr std::uint32_t kAudioObjectPropertyElementMain = 0;
inline constexpr std::uint32_t kAudioHardwarePropertyProcessObjectList = fourCharCode("prs#");
inline constexpr std::uint32_t kAudioHardwarePropertyDefaultOutputDevice = fourCharCode("dOut");
inline constexpr std::uint32_t kAudioDevicePropertyDeviceUID = fourCharCode("uid ");
inline constexpr std::uint32_t kAudioProcessPropertyPID = fourCharCode("ppid");
inline constexpr std::uint32_t kAudioProcessPropertyBundleID = fourCharCode("pbid");
inline constexpr std::uint32_t kAudioTapPropertyUID = fourCharCode("tuid");
inline constexpr std::uint32_t kAudioTapPropertyFormat = fourCharCode("tfmt");

inline constexpr std::uint32_t kAudioFormatLinearPCM = fourCharCode("lpcm");
inline constexpr std::uint32_t kAudioFormatMPEG4AAC = fourCharCode("aac ");
inline constexpr std::uint32_t kAudioFormatFlagIsFloat = 1U << 0U;
inline constexpr std::uint32_t kAudioFormatFlagIsSignedInteger = 1U << 2U;
inline constexpr std::uint32_t kAudioFormatFlagIsPacked = 1U << 3U;
inline constexpr std::uint32_t kAudioFormatFlagIsNonInterleaved = 1U << 5U;

/// How the samples of a stream lie in memory. 40 bytes.
struct AudioStreamBasicDescription {
  double mSampleRate = 0;  ///< frames per second
  std::uint32_t mFormatID = 0;
  std::uint32_t mFormatFlags = 0;
  std::uint32_t mBytesPerPacket = 0;
  std::uint32_t mFramesPerPacket = 0;
  std::uint32_t mBytesPerFrame = 0;  ///< of one buffer: one channel's when not interleaved
  std::uint32_t mChannelsPerFrame = 0;
  std::uint32_t mBitsPerChannel = 0;
  std::uint32_t mReserved = 0;

  bool operator==(const AudioStreamBasicDescription&) const = default;
};
static_assert(sizeof(AudioStreamBasicDescription) == 40);

/// One run of samples: all channels when interleaved, else one channel.
struct AudioBuffer {
  std::uint32_t mNumberChannels = 0;
  std::uint32_t mDataByteSize = 0;
  void* mData = nullptr;  ///< null: the buffer carries no data
};

/// A list of `mNumberBuffers` buffers; those after the first follow it in memory.
struct AudioBufferList {
  std::uint32_t mNumberBuffers = 0;
  AudioBuffer mBuffers[1];
};

struct SMPTETime {
  std::int16_t mSubframes = 0;
  std::int16_t mSubframeDivisor = 0;
  std::uint32_t mCounter = 0;
  std::uint32_t mType = 0;
  std::uint32_t mFlags = 0;
  std::int16_t mHours = 0;
  std::int16_t mMinutes = 0;
  std::int16_t mSeconds = 0;
  std::int16_t mFrames = 0;
};

struct AudioTimeStamp {
  double mSampleTime = 0;
  std::uint64_t mHostTime = 0;
  double mRateScalar = 0;
  std::uint64_t mWordClockTime = 0;
  SMPTETime mSMPTETime;
  std::uint32_t mFlags = 0;
  std::uint32_t mReserved = 0;
};
static_assert(sizeof(AudioTimeStamp) == 64);

/// What a device calls once a cycle, on its IO thread: it must not lock, wait, log or throw.
using AudioDeviceIOProc = OSStatus (*)(AudioObjectID device, const AudioTimeStamp* now,
                                       const AudioBufferList* inputData,
                                       const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                                       const AudioTimeStamp* outputTime, void* clientData);

/// Names an installed IO procedure; null names none. Owned by the hardware layer from
/// `AudioDeviceCreateIOProcID` to `AudioDeviceDestroyIOProcID`.
struct InstalledIOProc;
using AudioDeviceIOProcID = InstalledIOProc*;

enum class TapMuteBehavior : std::int64_t { unmuted = 0, muted = 1, mutedWhenTapped = 2 };

/// What a tap captures. Whatever is left unset stays as the system makes it.
struct TapDescription {
  enum class Kind {
    stereoGlobalTapButExcludeProcesses,  ///< everything, down to stereo, but `processes`
    stereoMixdownOfProcesses,            ///< `processes` alone, mixed down to stereo
  };

  Kind kind;
  std::vector<AudioObjectID> processes;
  std::optional<TapMuteBehavior> muteBehavior;
  std::optional<std::string> name;

  bool operator==(const TapDescription&) const = default;
};

inline constexpr const char* kAudioAggregateDeviceNameKey = "name";
inline constexpr const char* kAudioAggregateDeviceUIDKey = "uid";
inline constexpr const char* kAudioAggregateDeviceMainSubDeviceKey = "master";
inline constexpr const char* kAudioAggregateDeviceIsPrivateKey = "private";
inline constexpr const char* kAudioAggregateDeviceIsStackedKey = "stacked";
inline constexpr const char* kAudioAggregateDeviceTapAutoStartKey = "tapautostart";
inline constexpr const char* kAudioAggregateDeviceTapListKey = "taps";
inline constexpr const char* kAudioSubTapUIDKey = "uid";
inline constexpr const char* kAudioSubTapDriftCompensationKey = "drift";

/// A dictionary of the hardware layer: keys to texts, Booleans and lists of dictionaries.
struct Description {
  using Value = std::variant<std::string, bool, std::vector<Description>>;
  std::map<std::string, Value> entries;

  bool operator==(const Description&) const = default;
};

/// The hardware layer. Called on the main thread; an IO procedure runs on the device's IO thread.
///
/// What `AudioDeviceStart`'s caller wrote before it is visible to the IO procedure; a start that
/// fails has called none. When `AudioDeviceStop` and `AudioDeviceDestroyIOProcID` have returned,
/// the IO procedure is not running, will not run again, and all it wrote is visible.
class AudioHardware {
 public:
  virtual ~AudioHardware() = default;

  virtual OSStatus AudioHardwareCreateProcessTap(const TapDescription& description,
                                                 AudioObjectID* outTapID) = 0;
  virtual OSStatus AudioHardwareDestroyProcessTap(AudioObjectID tapID) = 0;

  virtual OSStatus AudioHardwareCreateAggregateDevice(const Description& description,
                                                      AudioObjectID* outDeviceID) = 0;
  virtual OSStatus AudioHardwareDestroyAggregateDevice(AudioObjectID deviceID) = 0;

  virtual OSStatus AudioDeviceCreateIOProcID(AudioObjectID device, AudioDeviceIOProc procedure,
                                             void* clientData,
                                             AudioDeviceIOProcID* outIOProcID) = 0;
  virtual OSStatus AudioDeviceDestroyIOProcID(AudioObjectID device,
                                              AudioDeviceIOProcID ioProcID) = 0;
  virtual OSStatus AudioDeviceStart(AudioObjectID device, AudioDeviceIOProcID ioProcID) = 0;
  virtual OSStatus AudioDeviceStop(AudioObjectID device, AudioDeviceIOProcID ioProcID) = 0;

  /// `outDataSize` in bytes.
  virtual OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object,
                                                  const AudioObjectPropertyAddress& address,
                                                  std::uint32_t qualifierDataSize,
                                                  const void* qualifierData,
                                                  std::uint32_t* outDataSize) = 0;

  /// Plain data: `ioDataSize` is the room in bytes at `outData`, then what was written there.
  virtual OSStatus AudioObjectGetPropertyData(AudioObjectID object,
                                              const AudioObjectPropertyAddress& address,
                                              std::uint32_t qualifierDataSize,
                                              const void* qualifierData, std::uint32_t* ioDataSize,
                                              void* outData) = 0;

  /// Texts, which the framework hands over as one reference: `ioDataSize` is that reference's
  /// size, 8; `outText` is UTF-8.
  virtual OSStatus AudioObjectGetPropertyData(AudioObjectID object,
                                              const AudioObjectPropertyAddress& address,
                                              std::uint32_t qualifierDataSize,
                                              const void* qualifierData, std::uint32_t* ioDataSize,
                                              std::string* outText) = 0;
};

}  // namespace CA
