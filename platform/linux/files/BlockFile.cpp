#include "platform/linux/files/BlockFile.h"

#include <cerrno>
#include <new>
#include <utility>

namespace audrel::linuxos {

BlockFile::BlockFile(std::unique_ptr<RawFile> file, std::size_t memoryLimit, Observer observer)
    : file_(std::move(file)), memoryLimit_(memoryLimit), observer_(std::move(observer)) {}

std::optional<BlockFile::Failure> BlockFile::append(std::span<const std::byte> block) {
  const auto failure = writeOrKeep(block);
  if (observer_) {
    observer_(failure);
  }
  return failure;
}

std::optional<BlockFile::Failure> BlockFile::writeOrKeep(std::span<const std::byte> block) {
  int code = flush();
  if (code == 0) {
    code = writeBlock(end_, block);
  }
  if (code == 0) {
    end_ += block.size();
    return std::nullopt;
  }
  return Failure{code, !keep(block)};
}

int BlockFile::appendOrRemove(std::span<const std::byte> block) {
  const int code = writeBlock(end_, block);
  if (code == 0) {
    end_ += block.size();
  }
  return code;
}

int BlockFile::overwrite(std::uint64_t offset, std::span<const std::byte> bytes) {
  std::size_t written = 0;
  return writeAt(offset, bytes, &written);
}

int BlockFile::flush() {
  while (!waiting_.empty()) {
    const Waiting& block = waiting_.front();
    if (const int code = writeBlock(block.offset, block.bytes); code != 0) {
      return code;
    }
    waitingBytes_ -= block.bytes.size();
    waiting_.pop_front();
  }
  return 0;
}

void BlockFile::forgetWaiting() {
  waiting_.clear();
  waitingBytes_ = 0;
  end_ = writtenEnd_;
}

int BlockFile::close() {
  return file_->close() == 0 ? 0 : errno;
}

int BlockFile::writeAt(std::uint64_t offset, std::span<const std::byte> bytes,
                       std::size_t* written) {
  while (*written < bytes.size()) {
    const auto rest = bytes.subspan(*written);
    const ssize_t result =
        file_->pwrite(rest.data(), rest.size(), static_cast<off_t>(offset + *written));
    if (result > 0) {
      *written += static_cast<std::size_t>(result);
    } else if (result == 0) {
      return EIO;  // no progress and no reason: repeating it could go on for ever
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int BlockFile::writeBlock(std::uint64_t offset, std::span<const std::byte> block) {
  std::size_t written = 0;
  const int code = writeAt(offset, block, &written);
  if (code == 0) {
    skippedBytes_ += offset - writtenEnd_;
    writtenEnd_ = offset + block.size();
  } else if (written > 0) {
    // Should this fail too, the next attempt overwrites the same bytes.
    static_cast<void>(file_->ftruncate(static_cast<off_t>(offset)));
  }
  return code;
}

bool BlockFile::keep(std::span<const std::byte> block) {
  if (block.size() > memoryLimit_ - waitingBytes_) {
    return false;
  }
  try {
    waiting_.push_back({end_, {block.begin(), block.end()}});
  } catch (const std::bad_alloc&) {
    return false;
  }
  waitingBytes_ += block.size();
  end_ += block.size();
  return true;
}

}  // namespace audrel::linuxos
