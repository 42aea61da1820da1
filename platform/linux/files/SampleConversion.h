#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/AVFAudio.h"

namespace audrel::linuxos {

/// Converts runs of frames from one processing format to the two forms that the files take. The
/// format is looked at once, when the converter is made.
///
/// The buffers given must be of that format, have as many channels as asked for, and hold the
/// frames asked for; `holdsFrames` checks that.
class SampleConverter {
 public:
  /// `format` is not `otherFormat`.
  SampleConverter(AV::AudioCommonFormat format, bool interleaved, std::size_t channels);

  /// Whether `buffers` has this layout and data for `frames` frames.
  bool holdsFrames(const CA::AudioBufferList& buffers, std::size_t frames) const;

  /// Writes `frames` frames, from frame `first` of `buffers` on, to `out`, channels interleaved.
  /// Floats become the nearest of their 32,768-fold, halves to even, clipped to the 16-bit range;
  /// what is no number becomes 0. So samples that came from 16-bit integers come out unchanged.
  void toInt16(const CA::AudioBufferList& buffers, std::size_t first, std::size_t frames,
               std::int16_t* out) const;

  /// Writes `frames` frames, from frame `first` of `buffers` on, to `planes[channel] + offset`.
  /// Full scale is 1. Values beyond ±16 are clipped to that, and what is no number becomes 0: an
  /// encoder refuses infinite values and would lose the frame.
  void toPlanarFloat(const CA::AudioBufferList& buffers, std::size_t first, std::size_t frames,
                     std::span<float* const> planes, std::size_t offset) const;

 private:
  using ToInt16 = void (*)(const std::byte*, std::size_t stride, std::size_t frames,
                           std::int16_t* out, std::size_t outStride);
  using ToFloat = void (*)(const std::byte*, std::size_t stride, std::size_t frames, float* out);

  /// The first sample of `channel` in frame `frame`.
  const std::byte* sampleAt(const CA::AudioBufferList& buffers, std::size_t channel,
                            std::size_t frame) const;

  bool interleaved_;
  std::size_t channels_;
  std::size_t sampleSize_;
  ToInt16 toInt16_ = nullptr;
  ToFloat toFloat_ = nullptr;
};

}  // namespace audrel::linuxos
