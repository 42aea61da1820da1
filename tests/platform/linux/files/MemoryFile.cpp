#include "tests/platform/linux/files/MemoryFile.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <span>
#include <string>
#include <utility>

namespace audrel::linuxos::test {
namespace {

using Kind = MemoryFile::Call::Kind;

void apply(Contents& contents, const MemoryFile::Call& call, std::size_t size) {
  if (call.kind == Kind::truncate) {
    contents.resize(call.offset);
  } else if (call.kind == Kind::write) {
    contents.resize(std::max<std::size_t>(contents.size(), call.offset + size));
    std::ranges::copy(std::span(call.bytes).first(size),
                      contents.begin() + static_cast<std::ptrdiff_t>(call.offset));
  }
}

}  // namespace

ssize_t MemoryFile::pread(std::byte* data, std::size_t size, off_t offset) noexcept {
  if (isDisturbed()) {
    return -1;
  }
  if (readCode != 0) {
    errno = readCode;
    return -1;
  }
  const std::size_t begin = std::min(static_cast<std::size_t>(offset), contents_.size());
  const auto bytes = std::span(contents_).subspan(begin);
  const std::size_t count = std::min(accepted(size), bytes.size());
  std::ranges::copy(bytes.first(count), data);
  return static_cast<ssize_t>(count);
}

ssize_t MemoryFile::pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept {
  if (isDisturbed()) {
    return -1;
  }
  if (const int code = fails ? fails(++changes) : 0; code != 0) {
    errno = code;
    return -1;
  }
  const std::span bytes(data, accepted(size));
  journal_.push_back(
      {Kind::write, static_cast<std::uint64_t>(offset), {bytes.begin(), bytes.end()}});
  apply(contents_, journal_.back(), bytes.size());
  return static_cast<ssize_t>(bytes.size());
}

int MemoryFile::ftruncate(off_t size) noexcept {
  journal_.push_back({Kind::truncate, static_cast<std::uint64_t>(size)});
  apply(contents_, journal_.back(), 0);
  return 0;
}

int MemoryFile::sync() noexcept {
  if (isDisturbed()) {
    return -1;
  }
  if (const int code = fails ? fails(++changes) : 0; code != 0) {
    errno = code;
    return -1;
  }
  journal_.push_back({Kind::sync});
  return 0;
}

int MemoryFile::stat(struct stat* status) noexcept {
  status->st_mode = mode;
  status->st_size = static_cast<off_t>(contents_.size());
  return 0;
}

int MemoryFile::lock() noexcept {
  errno = lockCode;
  return lockCode == 0 ? 0 : -1;
}

std::vector<std::string> MemoryFile::story() const {
  std::vector<std::string> story;
  for (const auto& [kind, offset, bytes] : journal_) {
    story.push_back(kind == Kind::sync       ? "sync"
                    : kind == Kind::truncate ? "truncate to " + std::to_string(offset)
                                             : "write " + std::to_string(bytes.size()) + " at " +
                                                   std::to_string(offset));
  }
  return story;
}

bool MemoryFile::isDisturbed() {
  if (!isInterrupted) {
    return false;
  }
  wasInterrupted_ = !wasInterrupted_;
  errno = EINTR;
  return wasInterrupted_;
}

std::size_t MemoryFile::accepted(std::size_t size) const {
  return longestCall == 0 ? size : std::min(size, longestCall);
}

Contents replayed(Contents contents, const std::vector<MemoryFile::Call>& journal,
                  std::size_t calls, std::size_t part) {
  for (std::size_t i = 0; i < calls; ++i) {
    apply(contents, journal.at(i), journal.at(i).bytes.size());
  }
  if (part > 0) {
    apply(contents, journal.at(calls), part);
  }
  return contents;
}

Contents contentsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

void save(const Contents& contents, const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(contents.data()),
             static_cast<std::streamsize>(contents.size()));
}

}  // namespace audrel::linuxos::test
