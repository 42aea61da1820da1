#include "platform/linux/files/RawFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace audrel::linuxos {
namespace {

/// Closed once, and with it.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { close(); }

  int get() const { return descriptor_; }
  int close() noexcept {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 ? 0 : ::close(descriptor);
  }

 private:
  int descriptor_;
};

class PosixFile final : public RawFile {
 public:
  PosixFile(Descriptor file, Descriptor folder, std::string name)
      : file_(std::move(file)), folder_(std::move(folder)), name_(std::move(name)) {}

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return ::pwrite(file_.get(), data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return ::ftruncate(file_.get(), size); }

  void remove() noexcept override {
    struct stat own{};
    struct stat named{};
    if (fstat(file_.get(), &own) == 0 &&
        fstatat(folder_.get(), name_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
        own.st_dev == named.st_dev && own.st_ino == named.st_ino) {
      unlinkat(folder_.get(), name_.c_str(), 0);
    }
  }

  int close() noexcept override { return file_.close(); }

 private:
  Descriptor file_;
  Descriptor folder_;
  std::string name_;
};

template <typename Open>
Descriptor opened(Open open) {
  int descriptor = -1;
  do {
    descriptor = open();
  } while (descriptor < 0 && errno == EINTR);
  return Descriptor(descriptor);
}

}  // namespace

std::unique_ptr<RawFile> createExclusively(const std::filesystem::path& path, int* code) {
  constexpr mode_t forItsUserAlone = 0600;
  const auto parent = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
  Descriptor folder =
      opened([&] { return ::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); });
  if (folder.get() < 0) {
    *code = errno;
    return nullptr;
  }
  const std::string name = path.filename();
  Descriptor file = opened([&] {
    return ::openat(folder.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                    forItsUserAlone);
  });
  if (file.get() < 0) {
    *code = errno;
    return nullptr;
  }
  return std::make_unique<PosixFile>(std::move(file), std::move(folder), name);
}

}  // namespace audrel::linuxos
