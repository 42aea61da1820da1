#include "platform/linux/files/PcmBuffer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <optional>

namespace audrel::linuxos {
namespace {

constexpr std::size_t sampleAlignment = 16;
static_assert(sampleAlignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

/// `size` rounded up to the samples' alignment; nothing on overflow.
std::optional<std::size_t> aligned(std::size_t size) {
  std::size_t sum = 0;
  if (__builtin_add_overflow(size, sampleAlignment - 1, &sum)) {
    return std::nullopt;
  }
  return sum & ~(sampleAlignment - 1);
}

}  // namespace

/// Where the parts lie, in bytes from the start of the allocation.
struct PcmBuffer::Layout {
  std::uint32_t bufferCount = 0;
  std::uint32_t channelsPerBuffer = 0;
  std::size_t list = 0;
  std::size_t samples = 0;
  std::size_t samplesPerBuffer = 0;
  std::size_t total = 0;

  static std::optional<Layout> of(const AV::AudioFormat& format, std::uint32_t frameCapacity) {
    Layout layout;
    layout.bufferCount = format.isInterleaved() ? 1 : format.channelCount();
    layout.channelsPerBuffer = format.isInterleaved() ? format.channelCount() : 1;

    std::uint32_t bytesPerBuffer = 0;  // has to fit mDataByteSize
    if (__builtin_mul_overflow(frameCapacity, format.streamDescription().mBytesPerFrame,
                               &bytesPerBuffer)) {
      return std::nullopt;
    }
    const auto samplesPerBuffer = aligned(bytesPerBuffer);
    const auto list = aligned(sizeof(PcmBuffer));
    std::size_t listSize = 0;
    std::size_t listEnd = 0;
    if (!samplesPerBuffer || !list ||
        __builtin_mul_overflow(sizeof(CA::AudioBuffer), layout.bufferCount, &listSize) ||
        __builtin_add_overflow(listSize, offsetof(CA::AudioBufferList, mBuffers), &listSize) ||
        __builtin_add_overflow(*list, listSize, &listEnd)) {
      return std::nullopt;
    }
    const auto samples = aligned(listEnd);
    std::size_t allSamples = 0;
    if (!samples || __builtin_mul_overflow(*samplesPerBuffer, layout.bufferCount, &allSamples) ||
        __builtin_add_overflow(*samples, allSamples, &layout.total)) {
      return std::nullopt;
    }
    layout.list = *list;
    layout.samples = *samples;
    layout.samplesPerBuffer = *samplesPerBuffer;
    return layout;
  }
};

std::unique_ptr<PcmBuffer> PcmBuffer::make(const std::shared_ptr<const AV::AudioFormat>& format,
                                           std::uint32_t frameCapacity) noexcept {
  if (!format) {
    return nullptr;
  }
  const auto layout = Layout::of(*format, frameCapacity);
  if (!layout || layout->total > std::numeric_limits<std::ptrdiff_t>::max()) {
    return nullptr;
  }
  void* memory = ::operator new(layout->total, std::nothrow);
  if (memory == nullptr) {
    return nullptr;
  }
  return std::unique_ptr<PcmBuffer>(
      ::new (memory) PcmBuffer(format, frameCapacity, *layout, static_cast<std::byte*>(memory)));
}

PcmBuffer::PcmBuffer(const std::shared_ptr<const AV::AudioFormat>& format,
                     std::uint32_t frameCapacity, const Layout& layout, std::byte* memory) noexcept
    : format_(format),
      frameCapacity_(frameCapacity),
      list_(::new(memory + layout.list) CA::AudioBufferList) {
  // What the IO procedure finds no data for stays silent.
  std::memset(memory + layout.samples, 0, layout.total - layout.samples);
  list_->mNumberBuffers = layout.bufferCount;
  for (std::uint32_t i = 0; i < layout.bufferCount; ++i) {
    ::new (&list_->mBuffers[i]) CA::AudioBuffer{
        layout.channelsPerBuffer, 0, memory + layout.samples + i * layout.samplesPerBuffer};
  }
}

void PcmBuffer::setFrameLength(std::uint32_t frames) {
  frameLength_ = std::min(frames, frameCapacity_);
  const std::uint32_t bytes = frameLength_ * format_->streamDescription().mBytesPerFrame;
  for (std::uint32_t i = 0; i < list_->mNumberBuffers; ++i) {
    list_->mBuffers[i].mDataByteSize = bytes;
  }
}

void PcmBuffer::operator delete(void* memory) noexcept {
  ::operator delete(memory);
}

}  // namespace audrel::linuxos
