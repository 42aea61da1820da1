#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace audrel::fakemac {

/// The least that is a WAV or an M4A file. As the system's, it is complete when it is closed and
/// not before; the M4A has a length, and nothing that could be played.
class FileOnDisk {
 public:
  /// Null, with the reason in `errno`.
  static std::unique_ptr<FileOnDisk> create(const std::string& path, bool isWav, std::uint32_t rate,
                                            std::uint16_t channels);
  ~FileOnDisk();
  FileOnDisk(const FileOnDisk&) = delete;
  FileOnDisk& operator=(const FileOnDisk&) = delete;

  /// Interleaved.
  void append(const float* samples, std::uint32_t frames);

 private:
  FileOnDisk(std::ofstream file, bool isWav, std::uint32_t rate, std::uint16_t channels);

  void writeWavHeader();
  void completeM4a();
  void little(std::uint32_t number, int size);
  void big(std::uint32_t number);

  std::ofstream file_;
  bool isWav_;
  std::uint32_t rate_;
  std::uint16_t channels_;
  std::uint32_t frames_ = 0;
};

}  // namespace audrel::fakemac
