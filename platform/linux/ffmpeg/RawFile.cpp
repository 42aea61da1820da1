#include "platform/linux/ffmpeg/RawFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace audrel::linuxos {
namespace {

class PosixFile final : public RawFile {
 public:
  explicit PosixFile(int descriptor) : descriptor_(descriptor) {}
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;
  ~PosixFile() override { closeOnce(); }

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return ::pwrite(descriptor_, data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return ::ftruncate(descriptor_, size); }
  int close() noexcept override { return closeOnce(); }

 private:
  int closeOnce() noexcept {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor < 0 ? 0 : ::close(descriptor);
  }

  int descriptor_;
};

}  // namespace

std::unique_ptr<RawFile> createExclusively(const std::filesystem::path& path, int* code) {
  constexpr mode_t readableAndWritable = 0666;
  int descriptor = -1;
  do {
    descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                        readableAndWritable);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) {
    *code = errno;
    return nullptr;
  }
  return std::make_unique<PosixFile>(descriptor);
}

}  // namespace audrel::linuxos
