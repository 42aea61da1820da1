#include "tests/platform/linux/files/SparseFile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace audrel::linuxos::test {
namespace {

constexpr std::size_t pieceSize = 4096;

class SparseFile final : public RawFile {
 public:
  explicit SparseFile(std::unique_ptr<RawFile> file) : file_(std::move(file)) {}

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    static constexpr std::array<std::byte, pieceSize> zeros{};
    for (std::size_t done = 0; done < size; done += pieceSize) {
      const std::size_t count = std::min(pieceSize, size - done);
      const off_t at = offset + static_cast<off_t>(done);
      if (std::memcmp(data + done, zeros.data(), count) != 0 &&
          file_->pwrite(data + done, count, at) != static_cast<ssize_t>(count)) {
        return -1;
      }
    }
    size_ = std::max(size_, offset + static_cast<off_t>(size));
    return file_->ftruncate(size_) == 0 ? static_cast<ssize_t>(size) : -1;
  }

  int ftruncate(off_t size) noexcept override {
    size_ = size;
    return file_->ftruncate(size);
  }

  void remove() noexcept override { file_->remove(); }
  int close() noexcept override { return file_->close(); }

 private:
  std::unique_ptr<RawFile> file_;
  off_t size_ = 0;
};

}  // namespace

std::unique_ptr<RawFile> createSparse(const std::filesystem::path& path) {
  int code = 0;
  auto file = createExclusively(path, &code);
  if (!file) {
    throw std::runtime_error("no sparse file");
  }
  return std::make_unique<SparseFile>(std::move(file));
}

}  // namespace audrel::linuxos::test
