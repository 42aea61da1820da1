#include "tests/fakes/InputCycle.h"

#include <algorithm>
#include <memory>
#include <new>

namespace audrel::fakes {

InputCycle::InputCycle(std::initializer_list<std::uint32_t> byteSizes, std::uint8_t seed) {
  std::vector<CA::AudioBuffer> buffers;
  for (const std::uint32_t byteSize : byteSizes) {
    auto& bytes = data_.emplace_back(byteSize);
    std::generate(bytes.begin(), bytes.end(), [&seed] { return std::byte{seed++}; });
  }
  for (auto& bytes : data_) {
    buffers.push_back({1, static_cast<std::uint32_t>(bytes.size()), bytes.data()});
  }
  list_ = makeBufferList(storage_, buffers);
}

void InputCycle::removeData(std::size_t index) {
  CA::AudioBuffer* const buffers = list_->mBuffers;
  buffers[index].mData = nullptr;
}

void InputCycle::claimSize(std::size_t index, std::uint32_t byteSize) {
  CA::AudioBuffer* const buffers = list_->mBuffers;
  buffers[index].mDataByteSize = byteSize;
}

CA::AudioBufferList* makeBufferList(std::vector<std::max_align_t>& storage,
                                    const std::vector<CA::AudioBuffer>& buffers) {
  const std::size_t size = sizeof(CA::AudioBufferList) + buffers.size() * sizeof(CA::AudioBuffer);
  storage.resize(size / sizeof(std::max_align_t) + 1);
  auto* const list = new (storage.data()) CA::AudioBufferList;
  list->mNumberBuffers = static_cast<std::uint32_t>(buffers.size());
  CA::AudioBuffer* const first = list->mBuffers;
  std::uninitialized_copy(buffers.begin(), buffers.end(), first);
  return list;
}

}  // namespace audrel::fakes
