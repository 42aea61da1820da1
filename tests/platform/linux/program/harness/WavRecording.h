#pragma once

#include <cstdint>

#include "tests/platform/linux/program/harness/Session.h"

namespace audrel::programtest {

constexpr std::uint64_t second = 48'000;  // frames

/// A session in which stamped noise is recorded as WAV, for three seconds of the graph already.
class WavRecording : public Session {
 protected:
  using Session::Session;

  void SetUp() override;

  /// Starts the program, and the recording.
  void startRecorded();

  /// Frames of the noise.
  std::uint64_t played() { return player.report("music").playedFrames; }

  /// That the file is the noise without a break, up to that frame of it.
  void expectRecordedUntil(std::uint64_t frame) const;

  /// That the program goes on and stops as ever.
  void expectStopsWhole();
};

}  // namespace audrel::programtest
