#include "platform/linux/files/FileFlusher.h"

#include <cerrno>

#include "platform/linux/system/AllSignalsBlocked.h"

namespace audrel::linuxos {

FileFlusher::FileFlusher(RawFile& file) : file_(file) {
  const AllSignalsBlocked signalsBelongToTheMainThread;
  thread_ = std::thread([this] { run(); });
}

FileFlusher::~FileFlusher() {
  {
    const std::lock_guard lock(mutex_);
    isToEnd_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void FileFlusher::begin(bool withFolder) {
  {
    const std::lock_guard lock(mutex_);
    state_ = State::asked;
    isFolderWanted_ = withFolder;
  }
  changed_.notify_all();
}

bool FileFlusher::isUnderWay() const {
  const std::lock_guard lock(mutex_);
  return state_ != State::idle;
}

std::optional<FileFlusher::Result> FileFlusher::take(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, patience, [this] { return state_ == State::done; })) {
    return std::nullopt;
  }
  return taken();
}

FileFlusher::Result FileFlusher::take() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return state_ == State::done; });
  return taken();
}

FileFlusher::Result FileFlusher::taken() {
  state_ = State::idle;
  return result_;
}

void FileFlusher::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return isToEnd_ || state_ == State::asked; });
    if (state_ != State::asked) {
      return;
    }
    const bool withFolder = isFolderWanted_;
    lock.unlock();
    const Result result = flushNow(file_, withFolder);
    lock.lock();
    result_ = result;
    state_ = State::done;
    changed_.notify_all();
  }
}

int resultOf(RawFile& file, int (RawFile::*flush)() noexcept) {
  int code = 0;
  do {
    code = (file.*flush)() == 0 ? 0 : errno;
  } while (code == EINTR);
  return code;
}

FileFlusher::Result flushNow(RawFile& file, bool withFolder) {
  FileFlusher::Result result{.file = resultOf(file, &RawFile::sync), .folder = std::nullopt};
  if (withFolder && (result.file == 0 || isUnofferedFlush(result.file))) {
    result.folder = resultOf(file, &RawFile::syncFolder);
  }
  return result;
}

bool isUnofferedFlush(int code) {
  return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP;
}

}  // namespace audrel::linuxos
