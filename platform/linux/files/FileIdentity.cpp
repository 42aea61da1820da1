#include "platform/linux/files/FileIdentity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace audrel::linuxos {
namespace {

std::chrono::nanoseconds sinceEpoch(const struct statx_timestamp& time) {
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::optional<FileStatus> statusAt(int folder, const char* name, int flags) noexcept {
  struct statx status{};
  if (statx(folder, name, flags, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
    return std::nullopt;
  }
  const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
  return FileStatus{.identity = {.device = makedev(status.stx_dev_major, status.stx_dev_minor),
                                 .inode = status.stx_ino,
                                 .born = hasBirth ? sinceEpoch(status.stx_btime).count() : 0},
                    .isRegular = S_ISREG(status.stx_mode),
                    .owner = status.stx_uid,
                    .size = status.stx_size,
                    .written = std::chrono::system_clock::time_point(sinceEpoch(status.stx_mtime))};
}

}  // namespace

std::optional<FileStatus> statusOf(int descriptor) noexcept {
  return statusAt(descriptor, "", AT_EMPTY_PATH);
}

std::optional<FileStatus> statusOf(const std::filesystem::path& path) noexcept {
  return statusAt(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW);
}

}  // namespace audrel::linuxos
