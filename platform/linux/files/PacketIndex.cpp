#include "platform/linux/files/PacketIndex.h"

namespace audrel::linuxos {

void PacketIndex::add(std::uint64_t offset, std::span<const std::uint16_t> sizes) {
  runs_.push_back({offset, 0});
  for (const std::uint16_t size : sizes) {
    sizes_.push_back(size);
    ++runs_.back().packets;
    bytes_ += size;
  }
}

void PacketIndex::forgetFrom(std::uint64_t fileEnd) {
  while (!runs_.empty() && runs_.back().offset >= fileEnd) {
    if (runs_.back().packets == 0) {
      runs_.pop_back();
    } else {
      limit(sizes_.size() - runs_.back().packets);
    }
  }
}

void PacketIndex::limit(std::uint64_t packets) {
  while (sizes_.size() > packets) {
    bytes_ -= sizes_.back();
    sizes_.pop_back();
    if (--runs_.back().packets == 0) {
      runs_.pop_back();
    }
  }
}

}  // namespace audrel::linuxos
