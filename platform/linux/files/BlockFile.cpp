#include "platform/linux/files/BlockFile.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <utility>

namespace audrel::linuxos {
namespace {

/// A step of the end has no later one that would make up for it.
template <typename Step>
int twiceAtMost(Step step) {
  const int code = step();
  return code == 0 ? 0 : step();
}

}  // namespace

BlockFile::BlockFile(std::unique_ptr<RawFile> file, std::size_t memoryLimit, Observer observer)
    : file_(std::move(file)), memoryLimit_(memoryLimit), observer_(std::move(observer)) {}

int BlockFile::begin(std::span<const std::byte> block) {
  return keep(block) ? writeWaiting() : ENOMEM;
}

std::optional<BlockFile::Failure> BlockFile::append(std::span<const std::byte> block) {
  std::optional<Failure> failure;
  const bool isKept = block.size() + keptBytes_ <= memoryLimit_ && keep(block);
  if (const int code = isKept ? writeAndFlush() : appendSafely(block); code != 0) {
    failure = Failure{code, !isKept};
  } else if (const int naming = nameSafely(); naming != 0) {
    failure = Failure{naming, false};
  }
  if (observer_.blockEnded) {
    observer_.blockEnded(failure);
  }
  return failure;
}

int BlockFile::writeAndFlush() {
  if (const int code = writeWaiting(); code != 0) {
    return code;
  }
  std::chrono::milliseconds patience{0};
  if (!isFlushUnderWay()) {
    if (unflushed_.size() < blocksPerFlush_) {
      return 0;
    }
    if (!beginFlush()) {
      return account(flushNow(*file_, !isFolderSafe_));
    }
    patience = file_->patience();
  }
  const auto flushed = flusher_->take(patience);
  return flushed ? account(*flushed) : 0;
}

int BlockFile::overwrite(std::uint64_t offset, std::span<const std::byte> bytes) {
  std::size_t written = 0;
  return writeAt(offset, bytes, &written);
}

std::optional<BlockFile::Failure> BlockFile::settle() {
  waitForFlush();
  int writing = 0;
  int flushing = 0;
  twiceAtMost([&] {
    writing = writeWaiting();
    flushing = unflushed_.empty() ? 0 : flush();
    return writing != 0 ? writing : flushing;
  });
  waiting_.clear();
  keptBytes_ = 0;
  end_ = safe_.end;
  const int code = flushing != 0 ? flushing : writing;
  return code != 0 ? std::optional(Failure{code, fileEnd_ <= safe_.end}) : std::nullopt;
}

int BlockFile::appendSafely(std::span<const std::byte> block) {
  waitForFlush();
  const int code = twiceAtMost([&] {
    int attempt = writeWaiting();
    if (attempt == 0) {
      attempt = writeBlock(end_, block);
    }
    if (attempt == 0) {
      attempt = flush();
      if (attempt != 0) {
        cutOff(end_);
      }
    }
    return attempt;
  });
  if (code == 0) {
    end_ += block.size();
  }
  return code;
}

int BlockFile::overwriteSafely(std::uint64_t offset, std::span<const std::byte> bytes) {
  return twiceAtMost([&] {
    const int writing = overwrite(offset, bytes);
    const int flushing = flush();
    return writing != 0 ? writing : flushing;
  });
}

int BlockFile::close() {
  const int naming = twiceAtMost([this] { return flushFolder(); });
  const int closing = file_->close() == 0 ? 0 : errno;
  return naming != 0 ? naming : closing;
}

int BlockFile::writeWaiting() {
  while (!waiting_.empty()) {
    const Block& block = waiting_.front();
    if (const int code = writeBlock(block.offset, block.bytes); code != 0) {
      return code;
    }
    unflushed_.splice(unflushed_.end(), waiting_, waiting_.begin());
  }
  return 0;
}

int BlockFile::writeBlock(std::uint64_t offset, std::span<const std::byte> block) {
  std::size_t written = 0;
  const int code = writeAt(offset, block, &written);
  if (code == 0) {
    written_.skippedBytes += offset - written_.end;
    written_.end = offset + block.size();
  }
  // Within what is there already it was written again, and changed nothing.
  if (written > 0 && offset + written > fileEnd_) {
    fileEnd_ = offset + written;
    if (code != 0) {
      cutOff(offset);
    }
  }
  return code;
}

/// Should it fail, the next attempt overwrites the same bytes.
void BlockFile::cutOff(std::uint64_t offset) {
  if (file_->ftruncate(static_cast<off_t>(offset)) == 0) {
    fileEnd_ = offset;
  }
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

int BlockFile::flush() {
  cover();
  return account(flushNow(*file_, false));
}

/// Whether there is a thread for it; else it is covered and to be flushed by the caller.
bool BlockFile::beginFlush() {
  cover();
  try {
    if (!flusher_) {
      flusher_ = std::make_unique<FileFlusher>(*file_);
    }
  } catch (const std::exception&) {  // neither a thread nor memory for one: the writing waits
    return false;
  }
  flusher_->begin(!isFolderSafe_);
  return true;
}

/// What is written is what the flush that begins covers.
void BlockFile::cover() {
  covered_ = written_;
  coveredBlocks_ = unflushed_.size();
}

void BlockFile::waitForFlush() {
  if (isFlushUnderWay()) {
    static_cast<void>(account(flusher_->take()));  // what it failed to cover is written again
  }
}

int BlockFile::account(const FileFlusher::Result& flushed) {
  const int code = offered(flushed.file);
  if (flushed.folder) {
    naming_ = offered(*flushed.folder);
    isFolderSafe_ = *naming_ == 0;
  }
  hasFlushFailed_ = code != 0;
  if (code != 0) {
    waiting_.splice(waiting_.begin(), unflushed_);
    written_ = safe_;
    return code;
  }
  for (; coveredBlocks_ > 0; --coveredBlocks_) {
    keptBytes_ -= unflushed_.front().bytes.size();
    spare_.splice(spare_.end(), unflushed_, unflushed_.begin());
  }
  spare_.resize(std::min(spare_.size(), blocksPerFlush_));
  safe_ = covered_;
  return 0;
}

/// Once there is something in the file that its name is needed for.
int BlockFile::flushFolder() {
  if (isFolderSafe_ || safe_.end == 0 || isFlushUnderWay()) {
    return 0;
  }
  const int code = offered(resultOf(*file_, &RawFile::syncFolder));
  isFolderSafe_ = code == 0;
  return code;
}

int BlockFile::nameSafely() {
  const auto tried = std::exchange(naming_, std::nullopt);
  return tried ? *tried : flushFolder();
}

int BlockFile::offered(int code) {
  if (!isUnofferedFlush(code)) {
    return code;
  }
  if (!std::exchange(isUnofferedTold_, true) && observer_.cannotFlush) {
    observer_.cannotFlush(code);
  }
  return 0;
}

bool BlockFile::keep(std::span<const std::byte> block) {
  try {
    if (spare_.empty()) {
      spare_.emplace_back();
    }
    spare_.front().bytes.assign(block.begin(), block.end());
  } catch (const std::bad_alloc&) {
    return false;
  }
  spare_.front().offset = end_;
  waiting_.splice(waiting_.end(), spare_, spare_.begin());
  keptBytes_ += block.size();
  end_ += block.size();
  return true;
}

}  // namespace audrel::linuxos
