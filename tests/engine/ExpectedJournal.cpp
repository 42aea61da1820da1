#include "tests/engine/ExpectedJournal.h"

#include <cstddef>

namespace audrel::expected {
namespace {

Lines wholeStart(const RecordingSource& source, RecordingFormat format) {
  const bool isWav = format == RecordingFormat::wav;
  const auto* process = source.asProcess();
  return {
      "CGPreflightScreenCaptureAccess() -> true",

      process == nullptr
          ? "AudioHardwareCreateProcessTap(stereoGlobalTapButExcludeProcesses [], muteBehavior 0, "
            "name \"Audrel Tap\") -> status 0, tap 101"
          : "AudioHardwareCreateProcessTap(stereoMixdownOfProcesses [" +
                std::to_string(process->id) +
                "], muteBehavior 0, name \"Audrel Tap\") -> status 0, tap 101",

      "AudioObjectGetPropertyData(101, 'tuid'/'glob'/0, no qualifier, size 8, text from \"\") -> "
      "status 0, \"fake-tap-101\"",

      "AudioObjectGetPropertyData(101, 'tfmt'/'glob'/0, no qualifier, size 40) -> "
      "status 0, 48000 Hz, 2 channels, 8 bytes a frame",

      "AVAudioFormat(streamDescription) -> format",

      info("Tap format — sampleRate=48000.000000, channels=2, interleaved=true, common=1"),

      "uuidString() -> \"00000000-0000-4000-8000-000000000001\"",

      "AudioObjectGetPropertyData(1, 'dOut'/'glob'/0, no qualifier, size 4) -> "
      "status 0, device 51",

      "AudioObjectGetPropertyData(51, 'uid '/'glob'/0, no qualifier, size 8, text from \"\") -> "
      "status 0, \"fake-output\"",

      "AudioHardwareCreateAggregateDevice({master: \"fake-output\", name: \"Audrel Tap\", "
      "private: true, stacked: false, tapautostart: true, taps: [{drift: true, uid: "
      "\"fake-tap-101\"}], uid: \"00000000-0000-4000-8000-000000000001\"}) -> "
      "status 0, device 201",

      isWav ? "AVAudioFile(forWriting \"/recordings/new.wav\", settings {AVFormatIDKey: u32 "
              "1819304813, AVLinearPCMBitDepthKey: integer 16, AVLinearPCMIsBigEndianKey: Boolean "
              "false, AVLinearPCMIsFloatKey: Boolean false, AVLinearPCMIsNonInterleaved: Boolean "
              "false, AVNumberOfChannelsKey: integer 2, AVSampleRateKey: double 48000}, "
              "commonFormat 1, interleaved true) -> file"
            : "AVAudioFile(forWriting \"/recordings/new.m4a\", settings "
              "{AVEncoderAudioQualityKey: integer 96, AVEncoderBitRateKey: integer 256000, "
              "AVFormatIDKey: u32 1633772320, AVNumberOfChannelsKey: integer 2, AVSampleRateKey: "
              "double 48000}, commonFormat 1, interleaved true) -> file",

      "AudioDeviceCreateIOProcID(201) -> status 0, ioProc 1",

      "AudioDeviceStart(201, ioProc 1) -> status 0",

      "now() -> 0 s",

      info(std::string("Recording started — source=") +
           (process == nullptr ? "All System Audio" : process->name) +
           (isWav ? " format=wav url=new.wav fileSettings=[\"AVFormatIDKey\": 1819304813, "
                    "\"AVLinearPCMBitDepthKey\": 16, \"AVLinearPCMIsBigEndianKey\": false, "
                    "\"AVLinearPCMIsFloatKey\": false, \"AVLinearPCMIsNonInterleaved\": false, "
                    "\"AVNumberOfChannelsKey\": 2, \"AVSampleRateKey\": 48000.0]"
                  : " format=m4a url=new.m4a fileSettings=[\"AVEncoderAudioQualityKey\": 96, "
                    "\"AVEncoderBitRateKey\": 256000, \"AVFormatIDKey\": 1633772320, "
                    "\"AVNumberOfChannelsKey\": 2, \"AVSampleRateKey\": 48000.0]")),
  };
}

}  // namespace

Lines startUpTo(Step last, const RecordingSource& source, RecordingFormat format) {
  Lines lines = wholeStart(source, format);
  lines.resize(static_cast<std::size_t>(last) + 1);
  return lines;
}

Lines startFailing(Step failing, const std::string& result, const Lines& afterwards) {
  Lines lines = startUpTo(failing);
  std::string& line = lines.back();
  line = line.substr(0, line.find(" -> ")) + " -> " + result;
  return lines + afterwards;
}

std::string info(const std::string& line) {
  return "log io.github.audrel.Audrel [engine] info: " + line;
}

std::string error(const std::string& line) {
  return "log io.github.audrel.Audrel [engine] error: " + line;
}

Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace audrel::expected
