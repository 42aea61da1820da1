#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/linux/files/OpenFile.h"

namespace audrel::linuxos::test {

using Contents = std::vector<std::byte>;

/// A file in memory that can be repaired: it remembers each call that changed it or made it
/// durable, and lets them fail on demand.
class MemoryFile final : public OpenFile {
 public:
  struct Call {
    enum class Kind { write, truncate, sync };
    Kind kind = Kind::write;
    std::uint64_t offset = 0;  ///< of a truncation: the new size
    Contents bytes = {};

    bool operator==(const Call&) const = default;
  };

  explicit MemoryFile(Contents contents)
      : OpenFile("/music/recording"), contents_(std::move(contents)) {}

  ssize_t pread(std::byte* data, std::size_t size, off_t offset) noexcept override;
  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override;
  int ftruncate(off_t size) noexcept override;
  int sync() noexcept override;
  int stat(struct stat* status) noexcept override;
  int lock() noexcept override;

  const Contents& contents() const { return contents_; }
  const std::vector<Call>& journal() const { return journal_; }

  /// What was done, in a word each: "write 40 at 1234", "truncate to 12", "sync".
  std::vector<std::string> story() const;

  /// Asked for each write and sync, numbered together from 1; what is not 0 is its error.
  std::function<int(std::size_t number)> fails;
  std::size_t changes = 0;      ///< how often it was asked
  int readCode = 0;             ///< the error of each read
  int lockCode = 0;             ///< that of locking
  mode_t mode = S_IFREG;        ///< what it is
  std::size_t longestCall = 0;  ///< no call reads or writes more; 0: as much as is asked for
  bool isInterrupted = false;   ///< every second call of each kind is interrupted

 private:
  bool isDisturbed();
  std::size_t accepted(std::size_t size) const;

  Contents contents_;
  std::vector<Call> journal_;
  bool wasInterrupted_ = false;
};

/// `contents` after the first `calls` calls, and `part` bytes of the next one.
Contents replayed(Contents contents, const std::vector<MemoryFile::Call>& journal,
                  std::size_t calls, std::size_t part);

Contents contentsOf(const std::filesystem::path& path);
void save(const Contents& contents, const std::filesystem::path& path);

}  // namespace audrel::linuxos::test
