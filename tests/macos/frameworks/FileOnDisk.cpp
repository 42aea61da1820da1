#include "tests/macos/frameworks/FileOnDisk.h"

#include <cmath>
#include <utility>

namespace audrel::fakemac {

std::unique_ptr<FileOnDisk> FileOnDisk::create(const std::string& path, bool isWav,
                                               std::uint32_t rate, std::uint16_t channels) {
  std::ofstream file(path, std::ios::binary);
  return file ? std::unique_ptr<FileOnDisk>(new FileOnDisk(std::move(file), isWav, rate, channels))
              : nullptr;
}

FileOnDisk::FileOnDisk(std::ofstream file, bool isWav, std::uint32_t rate, std::uint16_t channels)
    : file_(std::move(file)), isWav_(isWav), rate_(rate), channels_(channels) {
  if (isWav_) {
    writeWavHeader();
  } else {
    big(16);
    file_ << "ftypM4A ";
    big(0);
    big(0);
    file_ << "mdat";
  }
}

FileOnDisk::~FileOnDisk() {
  if (isWav_) {
    file_.seekp(0);
    writeWavHeader();
  } else {
    completeM4a();
  }
}

void FileOnDisk::append(const float* samples, std::uint32_t frames) {
  for (std::uint32_t i = 0; i < frames * channels_; ++i) {
    if (isWav_) {
      little(static_cast<std::uint32_t>(std::lround(samples[i] * 32768.0F)), 2);
    } else if (i % 1024 == 0) {
      file_.put('\0');
    }
  }
  frames_ += frames;
}

void FileOnDisk::writeWavHeader() {
  const std::uint32_t data = frames_ * channels_ * 2;
  file_ << "RIFF";
  little(data == 0 ? 0 : data + 36, 4);
  file_ << "WAVEfmt ";
  little(16, 4);
  little(1, 2);
  little(channels_, 2);
  little(rate_, 4);
  little(rate_ * channels_ * 2, 4);
  little(std::uint32_t{channels_} * 2, 2);
  little(16, 2);
  file_ << "data";
  little(data, 4);
}

void FileOnDisk::completeM4a() {
  const auto end = static_cast<std::uint32_t>(file_.tellp());
  file_.seekp(16);
  big(end - 16);
  file_.seekp(end);
  big(8 + 8 + 100 + 8);
  file_ << "moov";
  big(8 + 100);
  file_ << "mvhd";
  for (const std::uint32_t field : {0U, 0U, 0U, rate_, frames_}) {
    big(field);
  }
  file_ << std::string(80, '\0');
  big(8);
  file_ << "trak";
}

void FileOnDisk::little(std::uint32_t number, int size) {
  for (int i = 0; i < size; ++i) {
    file_.put(static_cast<char>(number >> (8 * i) & 0xFFU));
  }
}

void FileOnDisk::big(std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    file_.put(static_cast<char>(number >> shift & 0xFFU));
  }
}

}  // namespace audrel::fakemac
