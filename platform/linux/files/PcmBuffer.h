#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/AVFAudio.h"

namespace audrel::linuxos {

/// A buffer whose object, work item, buffer list and samples are one allocation, so that on the
/// IO thread nothing after that allocation can fail.
class PcmBuffer final : public AV::PCMBuffer {
 public:
  /// Null when there is no format, the sizes overflow, or there is no memory. The samples are
  /// zero and aligned to 16 bytes: one buffer of all channels when `format` is interleaved, else
  /// one per channel. `frameLength()` is 0 at first.
  static std::unique_ptr<PcmBuffer> make(const std::shared_ptr<const AV::AudioFormat>& format,
                                         std::uint32_t frameCapacity) noexcept;

  const AV::AudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return frameCapacity_; }
  std::uint32_t frameLength() const override { return frameLength_; }

  /// More than `frameCapacity()` counts as that.
  void setFrameLength(std::uint32_t frames) override;

  CA::AudioBufferList* mutableAudioBufferList() override { return list_; }

  /// Gives back the whole allocation, which is larger than the object.
  static void operator delete(void* memory) noexcept;

 private:
  struct Layout;

  PcmBuffer(const std::shared_ptr<const AV::AudioFormat>& format, std::uint32_t frameCapacity,
            const Layout& layout, std::byte* memory) noexcept;

  std::shared_ptr<const AV::AudioFormat> format_;
  std::uint32_t frameCapacity_;
  std::uint32_t frameLength_ = 0;
  CA::AudioBufferList* list_;
};

}  // namespace audrel::linuxos
