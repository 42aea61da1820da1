#include "platform/linux/files/CheckedFile.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace audrel::linuxos {
namespace {

[[noreturn]] void fail(int code) {
  throw std::system_error(code, std::generic_category());
}

bool isNotOffered(int code) {
  return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP;
}

}  // namespace

CheckedFile::CheckedFile(OpenFile& file) : file_(file) {
  struct stat status{};
  if (file.stat(&status) != 0) {
    fail(errno);
  }
  size_ = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
}

std::vector<std::byte> CheckedFile::read(std::uint64_t offset, std::size_t size) const {
  const std::uint64_t rest = size_ - std::min(offset, size_);
  std::vector<std::byte> bytes(std::min<std::uint64_t>(size, rest));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t result =
        file_.pread(&bytes[done], bytes.size() - done, static_cast<off_t>(offset + done));
    if (result == 0) {
      break;
    }
    if (result > 0) {
      done += static_cast<std::size_t>(result);
    } else if (errno != EINTR) {
      fail(errno);
    }
  }
  bytes.resize(done);
  return bytes;
}

void CheckedFile::writeDurably(std::uint64_t offset, std::span<const std::byte> bytes) {
  const auto replaced = read(offset, bytes.size());
  const std::uint64_t oldSize = size_;
  size_ = std::max(size_, offset + bytes.size());
  try {
    write(offset, bytes);
    try {
      sync();
    } catch (const std::system_error&) {
      // The system has dropped what it could not write, and would not try it again.
      write(offset, bytes);
      sync();
    }
  } catch (const std::system_error&) {
    // Whether this succeeds or not, it is the first failure that is told.
    static_cast<void>(file_.pwrite(replaced.data(), replaced.size(), static_cast<off_t>(offset)));
    if (size_ > oldSize) {
      static_cast<void>(file_.ftruncate(static_cast<off_t>(oldSize)));
      size_ = oldSize;
    }
    throw;
  }
}

void CheckedFile::sync() {
  while (file_.sync() != 0) {
    if (isNotOffered(errno)) {
      return;
    }
    if (errno != EINTR) {
      fail(errno);
    }
  }
}

void CheckedFile::write(std::uint64_t offset, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t result = file_.pwrite(bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (result > 0) {
      offset += static_cast<std::uint64_t>(result);
      bytes = bytes.subspan(static_cast<std::size_t>(result));
    } else if (result == 0) {
      fail(EIO);  // no progress and no reason: repeating it could go on for ever
    } else if (errno != EINTR) {
      fail(errno);
    }
  }
}

}  // namespace audrel::linuxos
