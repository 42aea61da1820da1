#include "tests/contract/RecordedFiles.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
#include <stdexcept>

namespace audrel::contract {
namespace {

using Bytes = std::span<const unsigned char>;

[[noreturn]] void refuse(const std::string& why) {
  throw std::runtime_error(why);
}

std::vector<unsigned char> contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    refuse("There is no " + path.string());
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

Bytes part(Bytes bytes, std::uint64_t offset, std::uint64_t size) {
  if (offset > bytes.size() || size > bytes.size() - offset) {
    refuse(std::to_string(size) + " bytes at " + std::to_string(offset) + " of only " +
           std::to_string(bytes.size()));
  }
  return bytes.subspan(offset, size);
}

std::uint64_t bigEndian(Bytes bytes, std::uint64_t offset, std::uint64_t size) {
  std::uint64_t number = 0;
  for (const unsigned char byte : part(bytes, offset, size)) {
    number = number << 8U | byte;
  }
  return number;
}

std::uint32_t littleEndian(Bytes bytes, std::uint64_t offset, std::uint64_t size) {
  std::uint32_t number = 0;
  for (std::uint64_t i = size; i > 0; --i) {
    number = number << 8U | part(bytes, offset + i - 1, 1).front();
  }
  return number;
}

std::string name(Bytes bytes, std::uint64_t offset) {
  const Bytes letters = part(bytes, offset, 4);
  return {letters.begin(), letters.end()};
}

/// Calls `take` for each box of `bytes`, with its type and content.
void forEachBox(Bytes bytes, const std::function<void(const std::string&, Bytes)>& take) {
  for (std::uint64_t at = 0; at < bytes.size();) {
    std::uint64_t header = 8;
    std::uint64_t size = bigEndian(bytes, at, 4);
    if (size == 1) {  // stands in 64 bits behind the type
      header = 16;
      size = bigEndian(bytes, at + 8, 8);
    }
    if (size < header) {
      refuse("A box of " + std::to_string(size) + " bytes");
    }
    take(name(bytes, at + 4), part(bytes, at + header, size - header));
    at += size;
  }
}

double secondsOf(Bytes movieHeader) {
  const bool isLong = part(movieHeader, 0, 1).front() == 1;
  const std::uint64_t timescale = bigEndian(movieHeader, isLong ? 20 : 12, 4);
  const std::uint64_t duration = bigEndian(movieHeader, isLong ? 24 : 16, isLong ? 8 : 4);
  if (timescale == 0) {
    refuse("A movie without a time scale");
  }
  return static_cast<double>(duration) / static_cast<double>(timescale);
}

}  // namespace

WavFile readWav(const std::filesystem::path& path) {
  const std::vector<unsigned char> content = contentOf(path);
  const Bytes bytes = content;
  if (name(bytes, 0) != "RIFF" || name(bytes, 8) != "WAVE") {
    refuse("No WAV file");
  }
  if (littleEndian(bytes, 4, 4) != bytes.size() - 8) {
    refuse("A file of " + std::to_string(bytes.size()) + " bytes whose header says " +
           std::to_string(littleEndian(bytes, 4, 4)));
  }
  WavFile wav;
  std::optional<Bytes> data;
  for (std::uint64_t at = 12; at < bytes.size();) {
    const std::uint32_t size = littleEndian(bytes, at + 4, 4);
    const Bytes chunk = part(bytes, at + 8, size);
    if (name(bytes, at) == "fmt ") {
      constexpr std::uint32_t integerSamples = 1;
      if (littleEndian(chunk, 0, 2) != integerSamples || littleEndian(chunk, 14, 2) != 16) {
        refuse("No PCM of 16 bits");
      }
      wav.channels = static_cast<std::uint16_t>(littleEndian(chunk, 2, 2));
      wav.sampleRate = littleEndian(chunk, 4, 4);
    } else if (name(bytes, at) == "data") {
      data = chunk;
    }
    at += 8 + std::uint64_t{size} + size % 2;
  }
  if (wav.channels == 0 || !data) {
    refuse("A WAV file without a format or without data");
  }
  for (std::uint64_t at = 0; at < data->size(); at += 2) {
    wav.samples.push_back(static_cast<std::int16_t>(littleEndian(*data, at, 2)));
  }
  return wav;
}

M4aFile readM4a(const std::filesystem::path& path) {
  const std::vector<unsigned char> content = contentOf(path);
  if (name(content, 4) != "ftyp") {
    refuse("No MPEG-4 file");
  }
  M4aFile file;
  bool hasTrack = false;
  bool hasHeader = false;
  forEachBox(content, [&](const std::string& type, Bytes box) {
    if (type == "mdat") {
      file.bytesOfPackets += box.size();
    } else if (type == "moov") {
      forEachBox(box, [&](const std::string& inner, Bytes innerBox) {
        hasTrack = hasTrack || inner == "trak";
        if (inner == "mvhd") {
          hasHeader = true;
          file.seconds = secondsOf(innerBox);
        }
      });
    }
  });
  if (!hasHeader || !hasTrack) {
    refuse("An MPEG-4 file without a movie");
  }
  return file;
}

}  // namespace audrel::contract
