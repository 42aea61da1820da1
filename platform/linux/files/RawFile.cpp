#include "platform/linux/files/RawFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/linux/files/Descriptor.h"

namespace audrel::linuxos {
namespace {

/// The folder that a file is created in. Who may not read a folder may still create in it.
struct Folder {
  Descriptor descriptor;
  bool isReadable = true;
};

class PosixFile final : public RawFile {
 public:
  PosixFile(Descriptor file, Folder folder, std::string name)
      : file_(std::move(file)),
        folder_(std::move(folder)),
        name_(std::move(name)),
        isLocked_(::flock(file_.get(), LOCK_EX | LOCK_NB) == 0) {}

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return ::pwrite(file_.get(), data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return ::ftruncate(file_.get(), size); }
  int sync() noexcept override { return ::fdatasync(file_.get()); }

  int syncFolder() noexcept override {
    // Only what is open for reading or writing can be flushed: else the whole file system is.
    return folder_.isReadable ? ::fsync(folder_.descriptor.get()) : ::syncfs(file_.get());
  }

  bool isLocked() const noexcept override { return isLocked_; }

  std::optional<FileIdentity> identity() const noexcept override {
    const auto status = statusOf(file_.get());
    return status ? std::optional(status->identity) : std::nullopt;
  }

  void remove() noexcept override {
    struct stat own{};
    struct stat named{};
    if (fstat(file_.get(), &own) == 0 &&
        fstatat(folder_.descriptor.get(), name_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
        own.st_dev == named.st_dev && own.st_ino == named.st_ino) {
      unlinkat(folder_.descriptor.get(), name_.c_str(), 0);
    }
  }

  int close() noexcept override { return file_.close(); }

 private:
  Descriptor file_;
  Folder folder_;
  std::string name_;
  bool isLocked_;
};

Folder openFolder(const std::filesystem::path& path) {
  const auto open = [&](int access) {
    return opened([&] { return ::open(path.c_str(), access | O_DIRECTORY | O_CLOEXEC); });
  };
  Descriptor readable = open(O_RDONLY);
  if (readable.get() >= 0 || errno != EACCES) {
    return {.descriptor = std::move(readable)};
  }
  return {.descriptor = open(O_PATH), .isReadable = false};
}

}  // namespace

std::unique_ptr<RawFile> createExclusively(const std::filesystem::path& path, int* code) {
  constexpr mode_t forItsUserAlone = 0600;
  const auto parent = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
  Folder folder = openFolder(parent);
  if (folder.descriptor.get() < 0) {
    *code = errno;
    return nullptr;
  }
  const std::string name = path.filename();
  Descriptor file = opened([&] {
    return ::openat(folder.descriptor.get(), name.c_str(),
                    O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, forItsUserAlone);
  });
  if (file.get() < 0) {
    *code = errno;
    return nullptr;
  }
  return std::make_unique<PosixFile>(std::move(file), std::move(folder), name);
}

}  // namespace audrel::linuxos
