#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "platform/AVFAudio.h"
#include "platform/Foundation.h"

namespace audrel::cli {

/// The largest magnitude among the buffer's samples, 1 being full scale. Nothing when they are no
/// 32-bit floats, the only samples that taps deliver. Samples that are no numbers don't count.
std::optional<float> peakOf(AV::PCMBuffer& buffer);

/// A peak in decibels relative to full scale; nothing for silence, which has none.
std::optional<double> decibels(float peak);

/// "-12.3 dBFS", or "silence".
std::string describePeak(float peak);

/// What has been handed to a file so far.
struct RecordedAudio {
  std::uint64_t frames = 0;  ///< those of failed writes included
  double sampleRate = 0;     ///< frames per second; 0 before the first
  /// The largest magnitude of a sample, 1 being full scale; nothing when no sample was measured.
  std::optional<float> peak;
  std::uint64_t failedWrites = 0;
  std::uint64_t failedFrames = 0;  ///< that failed writes were handed
  std::string firstFailure;        ///< why, for the user; empty when there is none

  /// Something was recorded, and every sample of it is zero.
  bool isDigitalSilence() const { return frames > 0 && peak == 0.0F; }

  /// How long that many frames are.
  double secondsOf(std::uint64_t some) const {
    return sampleRate > 0 ? static_cast<double>(some) / sampleRate : 0;
  }
};

/// Counts what a file receives: on the writer queue it is fed, on the main thread it is read.
class RecordingMeter {
 public:
  /// `peak` of these frames; nothing when they cannot be measured.
  void add(std::uint32_t frames, double sampleRate, std::optional<float> peak);

  /// The frames that were added last could not be written.
  void addFailure(const NS::Error& error);

  RecordedAudio total() const;

  /// Whether a write failed within the last second of audio.
  bool isFailing() const;

  /// Whether samples were louder than full scale, which a file cuts off.
  bool hasClipped() const;

  /// Why writing fails, once each time that the reason is another one.
  std::optional<std::string> takeNewFailure();

  /// The peak of what came since this was last asked; nothing when nothing did.
  std::optional<float> takeRecentPeak();

 private:
  mutable std::mutex mutex_;
  RecordedAudio total_;
  std::uint64_t lastFrames_ = 0;       ///< how many were added last
  std::uint64_t framesAtFailure_ = 0;  ///< of the total, when a write failed last
  std::string lastFailure_;
  std::optional<std::string> newFailure_;
  std::optional<float> recentPeak_;
};

}  // namespace audrel::cli
