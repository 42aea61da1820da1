#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>

#include "platform/CoreAudio.h"

namespace audrel::fakes {

/// An input list as a device hands it to an IO procedure. Every buffer is an allocation of exactly
/// its size, so that the address sanitizer sees a byte read too far.
class InputCycle {
 public:
  /// Buffers of these sizes in bytes, filled with a pattern that starts at `seed`.
  explicit InputCycle(std::initializer_list<std::uint32_t> byteSizes, std::uint8_t seed = 0);

  const CA::AudioBufferList& list() const { return *list_; }

  /// The bytes of buffer `index`.
  const std::vector<std::byte>& bytes(std::size_t index) const { return data_[index]; }

  /// Lets buffer `index` carry no data, its size unchanged.
  void removeData(std::size_t index);

  /// Says that buffer `index` is `byteSize` long, its data unchanged.
  void claimSize(std::size_t index, std::uint32_t byteSize);

 private:
  std::vector<std::vector<std::byte>> data_;
  std::vector<std::max_align_t> storage_;
  CA::AudioBufferList* list_;
};

/// Lays out a list of `buffers` in `storage`, which holds the result.
CA::AudioBufferList* makeBufferList(std::vector<std::max_align_t>& storage,
                                    const std::vector<CA::AudioBuffer>& buffers);

}  // namespace audrel::fakes
