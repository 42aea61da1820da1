#include "platform/linux/files/WavRepair.h"

#include "platform/linux/files/WavHeader.h"

namespace audrel::linuxos {

std::optional<capture::Repair> repairWav(CheckedFile& file) {
  const auto header = readWavHeader(file.read(0, longestWavHeader));
  if (!header) {
    return std::nullopt;
  }
  const auto& [format, counted] = *header;
  const std::uint64_t there = file.size() - wavHeaderSize(format);
  const std::uint64_t frames = there / format.bytesPerFrame();
  const std::uint64_t whole = frames * format.bytesPerFrame();
  capture::Repair repair = {.outcome = capture::Repair::Outcome::whole,
                            .seconds = static_cast<double>(frames) / format.sampleRate,
                            .problem = {}};
  if (counted != whole) {
    ByteWriter out;
    writeWavHeader(out, format, whole);
    file.sync();
    file.writeDurably(0, out.bytes());
    repair.outcome = capture::Repair::Outcome::repaired;
  }
  return repair;
}

}  // namespace audrel::linuxos
