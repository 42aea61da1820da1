#include "platform/linux/system/ForeignFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace audrel::linuxos {

namespace {

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (isOpen()) {
      close(descriptor_);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

FileText failed(int code) {
  return {.text = std::nullopt,
          .isAbsent = code == ENOENT,
          .failure = std::generic_category().message(code)};
}

FileText refused(std::string reason) {
  return {.text = std::nullopt, .isAbsent = false, .failure = std::move(reason)};
}

/// One byte more than `limit` is asked for, since a file may grow while it is read.
FileText textOf(const Descriptor& file, std::size_t limit) {
  struct stat status{};
  if (fstat(file.get(), &status) < 0) {
    return failed(errno);
  }
  if (!S_ISREG(status.st_mode)) {
    return refused("it is no regular file");
  }
  std::string text(limit + 1, '\0');
  std::size_t size = 0;
  while (size < text.size()) {
    const ssize_t count = read(file.get(), text.data() + size, text.size() - size);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return failed(errno);
    }
    if (count == 0) {
      text.resize(size);
      text.shrink_to_fit();
      return {.text = std::move(text), .isAbsent = false, .failure = {}};
    }
    size += static_cast<std::size_t>(count);
  }
  return refused("it is larger than " + std::to_string(limit) + " bytes");
}

/// Without O_NONBLOCK, to open a pipe waits for whoever writes to it.
constexpr int readingFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

}  // namespace

FileText readForeignFile(const std::filesystem::path& path, std::size_t limit) {
  const Descriptor file(open(path.c_str(), readingFlags));
  return file.isOpen() ? textOf(file, limit) : failed(errno);
}

FileText readForeignFileIn(const std::filesystem::path& folder, const char* name,
                           std::size_t limit) {
  const Descriptor place(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!place.isOpen()) {
    return failed(errno);
  }
  const Descriptor file(openat(place.get(), name, readingFlags | O_NOFOLLOW));
  return file.isOpen() ? textOf(file, limit) : failed(errno);
}

}  // namespace audrel::linuxos
