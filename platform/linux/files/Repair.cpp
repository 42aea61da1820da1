#include "platform/linux/files/Repair.h"

#include <cerrno>
#include <new>
#include <string>
#include <system_error>

#include "platform/linux/files/CheckedFile.h"
#include "platform/linux/files/FileErrors.h"
#include "platform/linux/files/M4aRepair.h"
#include "platform/linux/files/WavRepair.h"

namespace audrel::linuxos {
namespace {

using Outcome = Repair::Outcome;

Repair unreadable(const std::filesystem::path& path, int code) {
  return {.outcome = Outcome::unreadable, .seconds = 0, .problem = repairProblem(path, code)};
}

}  // namespace

Repair repair(const std::filesystem::path& path, LockRule rule) {
  int code = 0;
  const auto file = openExisting(path, &code);
  return file ? repair(*file, rule) : unreadable(path, code);
}

Repair repair(OpenFile& file, LockRule rule) {
  struct stat status{};
  if (file.stat(&status) != 0) {
    return unreadable(file.path(), errno);
  }
  if (!S_ISREG(status.st_mode)) {
    return unreadable(file.path(), EISDIR);
  }
  if (file.lock() == 0) {
    return repair(file);
  }
  if (errno == EWOULDBLOCK) {
    return {.outcome = Outcome::inUse};
  }
  if (rule == LockRule::needed) {
    return {.outcome = Outcome::inUse,
            .seconds = 0,
            .problem = "The disk that holds " + quotedName(file.path()) +
                       " offers no locks, so nobody can tell whether a program records to it."};
  }
  return repair(file);
}

Repair repair(OpenFile& file) {
  try {
    CheckedFile checked(file);
    auto done = repairM4a(checked);
    if (!done) {
      done = repairWav(checked);
    }
    return done.value_or(Repair{.outcome = Outcome::notOurs});
  } catch (const std::system_error& error) {
    return unreadable(file.path(), error.code().value());
  } catch (const std::bad_alloc&) {
    return unreadable(file.path(), ENOMEM);
  }
}

}  // namespace audrel::linuxos
