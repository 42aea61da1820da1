#include "platform/linux/files/OpenFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/files/Descriptor.h"

namespace audrel::linuxos {
namespace {

class PosixOpenFile final : public OpenFile {
 public:
  PosixOpenFile(std::filesystem::path path, Descriptor file)
      : OpenFile(std::move(path)), file_(std::move(file)) {}

  ssize_t pread(std::byte* data, std::size_t size, off_t offset) noexcept override {
    return ::pread(file_.get(), data, size, offset);
  }
  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return ::pwrite(file_.get(), data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return ::ftruncate(file_.get(), size); }
  int sync() noexcept override { return ::fdatasync(file_.get()); }
  int stat(struct stat* status) noexcept override { return ::fstat(file_.get(), status); }
  int lock() noexcept override { return ::flock(file_.get(), LOCK_EX | LOCK_NB); }

 private:
  Descriptor file_;
};

}  // namespace

std::unique_ptr<OpenFile> openExisting(const std::filesystem::path& path, int* code) {
  // Without O_NONBLOCK opening a pipe, or a device, could wait.
  Descriptor file = opened([&] {
    return ::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  });
  if (file.get() < 0) {
    *code = errno;
    return nullptr;
  }
  return std::make_unique<PosixOpenFile>(path, std::move(file));
}

}  // namespace audrel::linuxos
