#include "platform/linux/files/RunningRecording.h"

#include <new>
#include <utility>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {

/// Passes every call on.
class RunningRecording::NotedFile final : public RawFile {
 public:
  NotedFile(RunningRecording& recording, std::unique_ptr<RawFile> file)
      : recording_(recording), file_(std::move(file)) {}

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return file_->pwrite(data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return file_->ftruncate(size); }
  int sync() noexcept override {
    recording_.note(*file_);
    return file_->sync();
  }
  int syncFolder() noexcept override {
    recording_.note(*file_);
    return file_->syncFolder();
  }
  bool isLocked() const noexcept override { return file_->isLocked(); }
  std::optional<FileIdentity> identity() const noexcept override { return file_->identity(); }
  void remove() noexcept override { file_->remove(); }
  std::chrono::milliseconds patience() const noexcept override { return file_->patience(); }
  int close() noexcept override { return file_->close(); }

 private:
  RunningRecording& recording_;
  std::unique_ptr<RawFile> file_;
};

RunningRecording::RunningRecording(const EntryFolder& folder, std::filesystem::path path,
                                   std::shared_ptr<os::Logger> logger)
    : folder_(folder), path_(std::move(path)), logger_(std::move(logger)) {}

std::unique_ptr<RawFile> RunningRecording::noted(std::unique_ptr<RawFile> file) {
  return std::make_unique<NotedFile>(*this, std::move(file));
}

void RunningRecording::ended() noexcept {
  if (entry_) {
    folder_.remove(*entry_);
    entry_.reset();
  }
}

void RunningRecording::note(const RawFile& file) noexcept {
  if (std::exchange(isNoted_, true)) {
    return;
  }
  try {
    const auto identity = file.identity();
    std::string problem = "its disk offers no locks";
    if (identity && file.isLocked()) {
      entry_ = folder_.add(path_, *identity, &problem);
    }
    if (!entry_) {
      complain(problem);
    }
  } catch (const std::bad_alloc&) {
    logger_->error("A recording could not be noted: there is no memory left.");
  }
}

void RunningRecording::complain(const std::string& reason) {
  logger_->error(quotedName(path_) + " is not noted in \"" + folder_.path().string() +
                 "\": " + reason + ". Should it be cut off, it is not finished by itself.");
}

}  // namespace audrel::linuxos
