#pragma once

#include <cstdint>

namespace audrel::linuxos {

/// A short tune of plucked notes, over and over: what the demo plays.
class Melody {
 public:
  /// `rate` in frames per second.
  explicit Melody(double rate) : rate_(rate) {}

  /// The next `frames` frames, interleaved stereo, within ±0.5.
  void render(float* stereo, std::uint32_t frames);

 private:
  double rate_;
  std::uint64_t position_ = 0;  ///< in frames
};

}  // namespace audrel::linuxos
