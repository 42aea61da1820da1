#include "tests/platform/linux/files/FakeDisk.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <span>
#include <utility>

namespace audrel::linuxos::test {
namespace {

void put(std::vector<std::byte>& contents, std::uint64_t offset, std::span<const std::byte> bytes) {
  contents.resize(std::max<std::size_t>(contents.size(), offset + bytes.size()));
  std::ranges::copy(bytes, contents.begin() + static_cast<std::ptrdiff_t>(offset));
}

void write(const std::vector<std::byte>& contents, const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(contents.data()),
             static_cast<std::streamsize>(contents.size()));
}

}  // namespace

class FakeFile final : public RawFile {
 public:
  explicit FakeFile(std::shared_ptr<FakeDisk> disk) : disk_(std::move(disk)) {}
  FakeFile(const FakeFile&) = delete;
  FakeFile& operator=(const FakeFile&) = delete;
  ~FakeFile() override { closeOnce(); }

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    const auto at = static_cast<std::uint64_t>(offset);
    const std::size_t number = ++disk_->writes;
    const auto outcome = disk_->plan ? disk_->plan(number, size) : std::nullopt;
    if (outcome && outcome->code != 0) {
      errno = outcome->code;
      return -1;
    }
    const std::span bytes(data, outcome ? outcome->accepted : size);
    put(disk_->contents, at, bytes);
    note({FakeDisk::Call::Kind::write, at, {bytes.begin(), bytes.end()}, disk_->delivered});
    return static_cast<ssize_t>(bytes.size());
  }

  int ftruncate(off_t size) noexcept override {
    if (disk_->truncateCode != 0) {
      errno = disk_->truncateCode;
      return -1;
    }
    disk_->contents.resize(static_cast<std::size_t>(size));
    note({FakeDisk::Call::Kind::truncate, static_cast<std::uint64_t>(size), {}, disk_->delivered});
    return 0;
  }

  int sync() noexcept override {
    const int code = flushCode(FakeDisk::Call::Kind::sync);
    if (code == 0) {
      disk_->safe = disk_->contents;
    } else if (code == EIO || code == ENOSPC) {
      const std::size_t size = disk_->contents.size();
      disk_->contents = disk_->safe;
      disk_->contents.resize(size);
    }
    errno = code;
    return code == 0 ? 0 : -1;
  }

  int syncFolder() noexcept override {
    errno = flushCode(FakeDisk::Call::Kind::syncFolder);
    return errno == 0 ? 0 : -1;
  }

  bool isLocked() const noexcept override { return true; }
  std::optional<FileIdentity> identity() const noexcept override { return disk_->identity; }
  void remove() noexcept override { disk_->isRemoved = true; }
  int close() noexcept override { return closeOnce(); }

 private:
  void note(const FakeDisk::Call& call) {
    disk_->journal.push_back(call);
    disk_->allCalls.push_back(call);
  }

  int flushCode(FakeDisk::Call::Kind kind) noexcept {
    const std::size_t number = ++disk_->flushes;
    const int code = disk_->flushPlan ? disk_->flushPlan(number) : 0;
    disk_->allCalls.push_back({kind, 0, {}, disk_->delivered, code});
    return code;
  }

  int closeOnce() noexcept {
    if (std::exchange(closed_, true)) {
      return 0;
    }
    disk_->allCalls.push_back({FakeDisk::Call::Kind::close, 0, {}, disk_->delivered});
    ++disk_->closes;
    errno = disk_->closeCode;
    return disk_->closeCode == 0 ? 0 : -1;
  }

  std::shared_ptr<FakeDisk> disk_;
  bool closed_ = false;
};

std::unique_ptr<RawFile> FakeDisk::open() {
  return std::make_unique<FakeFile>(shared_from_this());
}

RawFileCreator FakeDisk::creator() {
  return [disk = shared_from_this()](const std::filesystem::path&, int*) { return disk->open(); };
}

void FakeDisk::replay(std::size_t calls, std::size_t part,
                      const std::filesystem::path& path) const {
  std::vector<std::byte> file;
  const auto apply = [&file](const Call& call, std::size_t size) {
    if (call.kind == Call::Kind::truncate) {
      file.resize(call.offset);
    } else {
      put(file, call.offset, std::span(call.bytes).first(size));
    }
  };
  for (std::size_t i = 0; i < calls; ++i) {
    apply(journal.at(i), journal.at(i).bytes.size());
  }
  if (part > 0) {
    apply(journal.at(calls), part);
  }
  write(file, path);
}

void FakeDisk::save(const std::filesystem::path& path) const {
  write(contents, path);
}

namespace plans {

using Outcome = FakeDisk::Outcome;

FakeDisk::Plan failOnce(std::size_t number, int code) {
  return [=](std::size_t n, auto /*size*/) {
    return n == number ? std::optional(Outcome{0, code}) : std::nullopt;
  };
}

FakeDisk::Plan failPartWay(std::size_t number, int code) {
  return [=](std::size_t n, std::size_t size) -> std::optional<Outcome> {
    if (n == number && size >= 4) {
      return Outcome{size / 4, 0};
    }
    return n == number + 1 ? std::optional(Outcome{0, code}) : std::nullopt;
  };
}

FakeDisk::Plan failFrom(std::size_t number, int code) {
  return [=](std::size_t n, auto /*size*/) {
    return n >= number ? std::optional(Outcome{0, code}) : std::nullopt;
  };
}

FakeDisk::Plan interruptedAndShort(std::size_t most) {
  return [=](std::size_t n, std::size_t size) {
    return n % 2 == 1 ? Outcome{0, EINTR} : Outcome{std::min(size, most), 0};
  };
}

}  // namespace plans

}  // namespace audrel::linuxos::test
