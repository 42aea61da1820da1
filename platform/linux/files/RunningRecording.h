#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/linux/files/EntryFolder.h"
#include "platform/linux/files/RawFile.h"

namespace audrel::linuxos {

/// The entry of one recording: there from before its file is first flushed until that file is
/// closed in its final form, so that what is cut off in between is found and finished. A recording
/// whose entry cannot be written goes on without; the log tells why. One thread at a time.
class RunningRecording {
 public:
  /// `folder` must outlive this and the file. `path` is that of the file.
  RunningRecording(const EntryFolder& folder, std::filesystem::path path,
                   std::shared_ptr<os::Logger> logger);

  /// The file to write to, which is `file` and writes the entry before the first flush. This must
  /// outlive it.
  std::unique_ptr<RawFile> noted(std::unique_ptr<RawFile> file);

  /// The file is closed, and lacks nothing that could be finished.
  void ended() noexcept;

 private:
  class NotedFile;

  void note(const RawFile& file) noexcept;
  void complain(const std::string& reason);

  const EntryFolder& folder_;
  std::filesystem::path path_;
  std::shared_ptr<os::Logger> logger_;
  bool isNoted_ = false;  ///< or cannot be
  std::optional<std::string> entry_;
};

}  // namespace audrel::linuxos
