#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/files/BlockFile.h"
#include "platform/linux/files/Mp4Boxes.h"

namespace audrel::linuxos {

/// An M4A file that plays at each moment of its making, and after a power failure.
///
/// It begins as a fragmented file (ftyp, an empty `free`, a `moov` without packets) and grows by
/// fragments of at most half a second, each of which is one write; by threes they are flushed.
/// Finishing appends the complete index, a second `moov` hidden in a `free` box, and then turns the
/// first `free` box, in one write of 8 bytes, into an `mdat` box that reaches up to that index:
/// from then on it is a plain file. Each of these steps is safe before the next begins. Beyond 4
/// GiB the write has 16 bytes, for a box header with a size of 64 bits, and goes over the header of
/// the first `moov` too. So no step depends on the length of what was recorded.
class M4aWriter {
 public:
  /// Gives a packet that decodes to silence, or an empty one when it can't.
  using SilenceSource = std::function<std::vector<std::byte>()>;

  M4aWriter(BlockFile file, mp4::Track track, SilenceSource silence);

  /// Writes the beginning. 0 or an `errno` value.
  int start();

  /// Adds a packet of at most 65,535 bytes. In the place of packets that were dropped stand silent
  /// ones as soon as something follows them.
  std::optional<BlockFile::Failure> add(std::span<const std::byte> packet);

  struct Ending {
    int code = 0;                ///< 0 or the `errno` value of the first failure
    std::uint64_t frames = 0;    ///< of the recording that the file plays
    std::uint64_t silenced = 0;  ///< of them, those that were dropped
    bool indexed = false;        ///< whether it became a plain file
  };

  /// Writes what is left, makes it a plain file of `frames` frames after the padding, or as many
  /// as could be written, and closes it. Nothing may follow. When it fails the file is still
  /// playable, as after a kill.
  Ending finish(std::uint64_t frames);

 private:
  std::optional<BlockFile::Failure> writeFragment();
  std::optional<BlockFile::Failure> writeOwedSilence();

  /// `block` has room for the fragment's head, then its packets.
  std::optional<BlockFile::Failure> appendFragment(std::span<const std::uint16_t> sizes,
                                                   std::span<std::byte> block);

  std::uint64_t silencedFrames() const;
  int writeIndex(std::uint64_t frames);

  /// Makes everything up to `movie`, where the complete index begins, one box of data.
  int commit(std::uint64_t movie);

  BlockFile file_;
  mp4::Track track_;
  SilenceSource silence_;
  std::size_t packetsPerFragment_;
  std::size_t headRoom_;  // for a fragment's head, in front of its packets

  std::vector<std::byte> replaced_;   // what stands where finishing writes in place: 16 bytes
  std::vector<std::byte> fragment_;   // head room, then packets
  std::vector<std::uint16_t> sizes_;  // of the packets in fragment_
  ByteWriter head_;
  std::uint32_t sequence_ = 0;  // of the last fragment
  PacketIndex index_;
  std::uint64_t owedSilence_ = 0;  // packets that were dropped at the end

  /// Packets of silence that follow one another.
  struct Silence {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
  };
  std::vector<Silence> silences_;
};

}  // namespace audrel::linuxos
