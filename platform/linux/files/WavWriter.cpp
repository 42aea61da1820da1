#include "platform/linux/files/WavWriter.h"

#include <algorithm>
#include <utility>

namespace audrel::linuxos {

WavWriter::WavWriter(BlockFile file, const WavFormat& format)
    : file_(std::move(file)), format_(format) {}

int WavWriter::start() {
  headerCounts_ = safeCounts_ = makeHeader();
  return file_.begin(header_.bytes());
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

int WavWriter::finish(std::span<const std::byte> samples) {
  if (!samples.empty()) {
    static_cast<void>(file_.append(samples));  // should it wait now, then settling tells why
  }
  const auto settling = file_.settle();
  const int counting = finishHeader();
  if (file_.hasFlushFailed() && headerCounts_ == file_.safeEnd()) {
    headerCounts_ = safeCounts_;  // no flush has covered the newer one
  }
  const int closing = file_.close();
  if (settling) {
    return settling->code;
  }
  return counting != 0 ? counting : closing;
}

std::uint64_t WavWriter::countedFrames() const {
  return (headerCounts_ - wavHeaderSize(format_)) / format_.bytesPerFrame();
}

/// Written even if it is the same: a flush that failed since may have cost it.
int WavWriter::finishHeader() {
  const std::uint64_t end = makeHeader();
  const int code = file_.overwriteSafely(0, header_.bytes());
  if (code == 0) {
    headerCounts_ = end;
  }
  return code;
}

int WavWriter::updateHeader() {
  const std::uint64_t end = makeHeader();
  if (headerCounts_ == end) {
    return 0;
  }
  const int code = file_.overwrite(0, header_.bytes());
  if (code == 0) {
    safeCounts_ = std::exchange(headerCounts_, end);
  }
  return code;
}

std::uint64_t WavWriter::makeHeader() {
  const std::uint64_t size = wavHeaderSize(format_);
  const std::uint64_t end = std::max(file_.safeEnd(), size);
  header_.clear();
  writeWavHeader(header_, format_, end - size);
  return end;
}

}  // namespace audrel::linuxos
