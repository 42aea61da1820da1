#include "platform/linux/files/Healer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/linux/files/FileErrors.h"

namespace audrel::linuxos {
namespace {

/// How long an entry waits for what may be possible later.
constexpr auto patience = std::chrono::days(30);

std::string inQuotes(const std::filesystem::path& path) {
  return '"' + path.string() + '"';
}

/// A file whose calls fail from when they are to end: each of them may be the last one.
class EndingFile final : public OpenFile {
 public:
  EndingFile(OpenFile& file, const std::atomic<bool>& isToEnd)
      : OpenFile(file.path()), file_(file), isToEnd_(isToEnd) {}

  ssize_t pread(std::byte* data, std::size_t size, off_t offset) noexcept override {
    return isOver() ? -1 : file_.pread(data, size, offset);
  }
  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    return isOver() ? -1 : file_.pwrite(data, size, offset);
  }
  int ftruncate(off_t size) noexcept override { return isOver() ? -1 : file_.ftruncate(size); }
  int sync() noexcept override { return isOver() ? -1 : file_.sync(); }
  int stat(struct stat* status) noexcept override { return file_.stat(status); }
  int lock() noexcept override { return file_.lock(); }

 private:
  bool isOver() noexcept {
    errno = ECANCELED;
    return isToEnd_;
  }

  OpenFile& file_;
  const std::atomic<bool>& isToEnd_;
};

enum class Match : std::uint8_t {
  same,
  other,     ///< something else has that name now
  elsewhere  ///< its disk is not the one that is there
};

Match match(const RecordingEntry& entry, const FileIdentity& found, const Machine& machine) {
  const FileIdentity& noted = entry.identity;
  const bool isSameFile = found.inode == noted.inode && found.born == noted.born;
  if (found.device == noted.device) {
    return isSameFile ? Match::same : Match::other;
  }
  // A disk may have another number after a start of the computer, but a number alone says nothing.
  const bool mayHaveChanged = machine.boot != entry.machine.boot && noted.born != 0;
  return isSameFile && mayHaveChanged ? Match::same : Match::elsewhere;
}

}  // namespace

Healer::Healer(const EntryFolder& entries, std::shared_ptr<os::Logger> logger, HealerTools tools)
    : entries_(entries), logger_(std::move(logger)), tools_(std::move(tools)) {}

bool Healer::heal(const std::atomic<bool>& isToEnd) {
  const auto machine = entries_.machine();
  if (!machine) {
    return false;
  }
  machine_ = *machine;
  sawRestless_ = false;
  for (const EntryFolder::Found& found : entries_.entries()) {
    if (isToEnd) {
      return false;
    }
    dealWith(found, isToEnd);
  }
  return sawRestless_;
}

void Healer::dealWith(const EntryFolder::Found& found, const std::atomic<bool>& isToEnd) {
  const Fate fate = fateOf(found, isToEnd);
  const bool isOld = tools_.now() - found.since > patience;
  if (fate == Fate::done || (fate == Fate::tryLater && isOld)) {
    entries_.remove(found.name);
  }
}

Healer::Fate Healer::fateOf(const EntryFolder::Found& found, const std::atomic<bool>& isToEnd) {
  using State = EntryFolder::Found::State;
  switch (found.state) {
    case State::entry:
      return finish(*found.entry, isToEnd);
    case State::broken:
      logOnce(os::LogLevel::error, inQuotes(entries_.path() / found.name) +
                                       " says nothing of a recording, and is removed.");
      return Fate::done;
    case State::foreign:
      logOnce(os::LogLevel::info,
              inQuotes(entries_.path() / found.name) + " is another user's, and left alone.");
      return Fate::stays;
    case State::unfinished:
    case State::unreadable:
      break;
  }
  return Fate::tryLater;
}

Healer::Fate Healer::finish(const RecordingEntry& entry, const std::atomic<bool>& isToEnd) {
  // Nothing but a regular file may even be opened: a device could act on that.
  if (const auto fate = whyNotYet(entry)) {
    return *fate;
  }
  int code = 0;
  const auto file = tools_.open(entry.file, &code);
  if (!file) {
    return absent(entry, code);
  }
  if (file->lock() != 0) {
    if (errno == EWOULDBLOCK) {
      return Fate::stays;
    }
    logOnce(os::LogLevel::error, inQuotes(entry.file) +
                                     " may have been cut off, but its disk offers no locks, so "
                                     "nobody can tell whether somebody records to it. When nobody "
                                     "does, \"audrel-record --repair --force\" finishes it.");
    return Fate::tryLater;
  }
  // What is open now is what has that name, and stays so: it is looked at again.
  struct stat opened{};
  const auto named = tools_.status(entry.file);
  if (file->stat(&opened) != 0 || !named || named->identity.inode != opened.st_ino ||
      named->identity.device != opened.st_dev) {
    return Fate::tryLater;
  }
  if (const auto fate = whyNotYet(entry)) {
    return *fate;
  }
  return finish(*file, isToEnd);
}

/// Of the file that has the name now; nothing when it is to be finished.
std::optional<Healer::Fate> Healer::whyNotYet(const RecordingEntry& entry) {
  if (entry.machine.id != machine_.id) {
    return Fate::tryLater;
  }
  const auto status = tools_.status(entry.file);
  if (!status) {
    return absent(entry, errno);
  }
  switch (match(entry, status->identity, machine_)) {
    case Match::elsewhere:
      return Fate::tryLater;
    case Match::other:
      return Fate::done;
    case Match::same:
      break;
  }
  if (!status->isRegular || status->owner != geteuid()) {
    return Fate::done;
  }
  // A clock that was set back makes it look as if it were written later than now.
  if (tools_.now() - status->written < rest) {
    sawRestless_ = true;
    return Fate::stays;
  }
  return std::nullopt;
}

Healer::Fate Healer::finish(OpenFile& file, const std::atomic<bool>& isToEnd) {
  EndingFile ending(file, isToEnd);
  const Repair repair = tools_.repair(ending);
  switch (repair.outcome) {
    case Repair::Outcome::repaired:
      tell(file.path(), repair.seconds);
      return Fate::done;
    case Repair::Outcome::whole:
      return Fate::done;
    case Repair::Outcome::notOurs:
      logOnce(os::LogLevel::info, inQuotes(file.path()) +
                                      " was cut off, and left as it is: there is nothing in it "
                                      "that could be finished.");
      return Fate::done;
    case Repair::Outcome::inUse:
      return Fate::stays;
    case Repair::Outcome::unreadable:
      break;
  }
  if (isToEnd) {
    return Fate::stays;
  }
  logOnce(os::LogLevel::error,
          inQuotes(file.path()) + " was cut off, and could not be finished. " + repair.problem);
  return Fate::tryLater;
}

/// What it means that the file cannot be opened.
Healer::Fate Healer::absent(const RecordingEntry& entry, int code) {
  if (code == ENOENT) {
    const auto folder = tools_.status(entry.file.parent_path());
    // On another device: its disk is absent, and this is where it would be.
    return folder && folder->identity.device == entry.identity.device ? Fate::done : Fate::tryLater;
  }
  if (code != ENOTDIR) {
    logOnce(os::LogLevel::error, inQuotes(entry.file) +
                                     " may have been cut off, but cannot be opened (" +
                                     std::generic_category().message(code) + ").");
  }
  return Fate::tryLater;
}

void Healer::tell(const std::filesystem::path& file, double seconds) {
  const std::string length = clockText(seconds);
  logger_->info(inQuotes(file) + " was cut off, and is finished now: " + length + '.');
  if (tell_) {
    tell_({.matter = "recovered " + file.string(),
           .summary = "Recording recovered",
           .body = quotedName(file) + " in " + inQuotes(file.parent_path()) +
                   " was cut off, and is finished now: " + length + '.',
           .isLoss = true,
           .file = file});
  }
}

void Healer::logOnce(os::LogLevel level, const std::string& line) {
  if (logged_.insert(line).second) {
    logger_->log(level, line);
  }
}

}  // namespace audrel::linuxos
