#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

namespace audrel::linuxos {

/// Where the packets of a file lie: runs of packets that follow one another. Two bytes of memory a
/// packet, 8 MB a day.
class PacketIndex {
 public:
  struct Run {
    std::uint64_t offset = 0;   ///< of the first packet, from the start of the file
    std::uint32_t packets = 0;  ///< at least one

    bool operator==(const Run&) const = default;
  };

  /// Adds packets of these sizes in bytes; AAC needs 6144 bits a channel at most. Should memory run
  /// out, `forgetFrom(offset)` takes back what was added.
  void add(std::uint64_t offset, std::span<const std::uint16_t> sizes);

  /// Leaves out the runs that begin at `fileEnd` or later.
  void forgetFrom(std::uint64_t fileEnd);

  /// Leaves out the packets after the first `packets`.
  void limit(std::uint64_t packets);

  const std::deque<Run>& runs() const { return runs_; }
  const std::deque<std::uint16_t>& sizes() const { return sizes_; }
  std::uint64_t bytes() const { return bytes_; }

 private:
  std::deque<Run> runs_;
  std::deque<std::uint16_t> sizes_;
  std::uint64_t bytes_ = 0;  // of all packets
};

}  // namespace audrel::linuxos
