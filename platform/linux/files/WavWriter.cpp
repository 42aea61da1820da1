#include "platform/linux/files/WavWriter.h"

#include <utility>

namespace audrel::linuxos {

WavWriter::WavWriter(BlockFile file, const WavFormat& format)
    : file_(std::move(file)), format_(format) {}

int WavWriter::start() {
  makeHeader(0);
  const int code = file_.appendOrRemove(header_.bytes());
  headerCounts_ = file_.writtenEnd();
  return code;
}

std::optional<BlockFile::Failure> WavWriter::append(std::span<const std::byte> samples) {
  auto failure = file_.append(samples);
  if (failure && failure->dropped) {
    file_.skip(samples.size());
  }
  if (const int code = updateHeader(); code != 0 && !failure) {
    failure = BlockFile::Failure{code, false};
  }
  return failure;
}

int WavWriter::finish() {
  const int flushed = file_.flush();
  file_.forgetWaiting();
  const int counted = updateHeader();
  const int closed = file_.close();
  if (flushed != 0) {
    return flushed;
  }
  return counted != 0 ? counted : closed;
}

std::uint64_t WavWriter::countedFrames() const {
  return (headerCounts_ - wavHeaderSize(format_)) / format_.bytesPerFrame();
}

int WavWriter::updateHeader() {
  if (headerCounts_ == file_.writtenEnd()) {
    return 0;
  }
  makeHeader(file_.writtenEnd() - wavHeaderSize(format_));
  const int code = file_.overwrite(0, header_.bytes());
  if (code == 0) {
    headerCounts_ = file_.writtenEnd();
  }
  return code;
}

void WavWriter::makeHeader(std::uint64_t dataSize) {
  header_.clear();
  writeWavHeader(header_, format_, dataSize);
}

}  // namespace audrel::linuxos
