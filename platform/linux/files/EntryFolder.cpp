#include "platform/linux/files/EntryFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/system/ForeignFile.h"

namespace audrel::linuxos {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view prefix = "recording-";
constexpr std::string_view unfinishedPrefix = ".recording-";

std::string message(int code) {
  return std::generic_category().message(code);
}

/// 0 or an `errno` value. A file system that has no flushes can do no more.
int flush(const Descriptor& file) {
  if (fsync(file.get()) == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP) {
    return 0;
  }
  return errno;
}

int flushFolder(const fs::path& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return opened.get() < 0 ? errno : flush(opened);
}

/// Makes the folder, and those that it is in, for their user alone; 0 or an `errno` value.
int makeFolder(const fs::path& folder) {
  constexpr mode_t forItsUserAlone = 0700;
  const fs::path parent = folder.parent_path();
  int code = mkdir(folder.c_str(), forItsUserAlone) == 0 ? 0 : errno;
  if (code == ENOENT && parent != folder) {
    code = makeFolder(parent);
    if (code == 0) {
      code = mkdir(folder.c_str(), forItsUserAlone) == 0 ? 0 : errno;
    }
  }
  if (code == EEXIST) {
    return 0;
  }
  return code != 0 ? code : flushFolder(parent);
}

int writeAll(const Descriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file.get(), text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return written == 0 ? EIO : errno;
    }
  }
  return 0;
}

/// Writes a file under a name that nobody takes for an entry, and gives it its own when it is
/// whole. 0 or an `errno` value.
int writeEntry(const fs::path& folder, std::string_view text, std::string* name) {
  std::string unfinished = folder / (std::string(unfinishedPrefix) + "XXXXXX");
  Descriptor file(mkostemp(unfinished.data(), O_CLOEXEC));
  if (file.get() < 0) {
    return errno;
  }
  *name = fs::path(unfinished).filename().native().substr(1);
  int code = writeAll(file, text);
  if (code == 0) {
    code = flush(file);
  }
  if (code == 0 && rename(unfinished.c_str(), (folder / *name).c_str()) != 0) {
    code = errno;
  }
  if (code != 0) {
    unlink(unfinished.c_str());
    return code;
  }
  code = flushFolder(folder);
  if (code != 0) {
    unlink((folder / *name).c_str());
  }
  return code;
}

}  // namespace

EntryFolder::EntryFolder(fs::path folder, MachineReader machine)
    : folder_(std::move(folder)), machine_(std::move(machine)) {}

std::optional<std::string> EntryFolder::add(const fs::path& file, const FileIdentity& identity,
                                            std::string* problem) const {
  const auto machine = machine_();
  if (!machine) {
    *problem = "this computer has no id in /etc/machine-id";
    return std::nullopt;
  }
  std::error_code error;
  const fs::path folder = fs::canonical(file.has_parent_path() ? file.parent_path() : ".", error);
  if (error) {
    *problem = error.message();
    return std::nullopt;
  }
  const RecordingEntry entry{
      .file = folder / file.filename(), .identity = identity, .machine = *machine};
  if (!canHaveEntry(entry.file)) {
    *problem = "its path has control characters";
    return std::nullopt;
  }
  std::string name;
  int code = makeFolder(folder_);
  if (code == 0) {
    code = writeEntry(folder_, textOf(entry), &name);
  }
  if (code != 0) {
    *problem = message(code);
    return std::nullopt;
  }
  return name;
}

void EntryFolder::remove(const std::string& name) const noexcept {
  const Descriptor folder(open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  unlinkat(folder.get(), name.c_str(), 0);
}

std::vector<EntryFolder::Found> EntryFolder::entries() const {
  constexpr std::size_t most = 1000;
  std::vector<Found> all;
  std::error_code error;
  for (fs::directory_iterator file(folder_, error), end; !error && file != end && all.size() < most;
       file.increment(error)) {
    const std::string name = file->path().filename();
    if (name.starts_with(prefix) || name.starts_with(unfinishedPrefix)) {
      if (auto found = read(name)) {
        all.push_back(std::move(*found));
      }
    }
  }
  std::ranges::sort(all, {}, &Found::name);
  return all;
}

/// Nothing when another process has taken it away meanwhile.
std::optional<EntryFolder::Found> EntryFolder::read(const std::string& name) const {
  const auto status = statusOf(folder_ / name);
  if (!status) {
    return std::nullopt;
  }
  Found found{.name = name, .state = Found::State::entry, .since = status->written, .entry = {}};
  if (status->owner != geteuid()) {
    found.state = Found::State::foreign;
  } else if (name.starts_with(unfinishedPrefix)) {
    found.state = Found::State::unfinished;
  } else if (!status->isRegular || status->size > longestEntry) {
    found.state = Found::State::broken;
  } else if (const FileText file = readForeignFileIn(folder_, name.c_str(), longestEntry);
             !file.text) {
    found.state = Found::State::unreadable;
  } else if (found.entry = entryIn(*file.text); !found.entry) {
    found.state = Found::State::broken;
  }
  return found;
}

}  // namespace audrel::linuxos
