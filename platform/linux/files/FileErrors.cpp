#include "platform/linux/files/FileErrors.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/linux/system/FileManager.h"

namespace audrel::linuxos {
namespace {

std::string quoted(const std::filesystem::path& path) {
  return '"' + path.string() + '"';
}

std::string folderOf(const std::filesystem::path& path) {
  std::error_code unknown;
  const auto absolute = std::filesystem::absolute(path, unknown);
  return quoted((unknown ? path : absolute).parent_path());
}

/// What to do where nothing can be made in the folder of `path`.
std::string useAnother(const std::filesystem::path& path) {
  if (path.parent_path() == FileManager().downloadsDirectory()) {
    return "use another one for downloads (\"xdg-user-dirs-update --set DOWNLOAD /the/folder\").";
  }
  return "choose another folder.";
}

std::string whyNotCreated(const std::filesystem::path& path, int code) {
  const std::string folder = folderOf(path);
  switch (code) {
    case EEXIST:
      return quotedName(path) + " already exists in " + folder +
             ", and a recording never overwrites anything. Choose another name, or move the "
             "existing file away.";
    case ENOENT:
      return "The folder " + folder + " does not exist. Create it, or " + useAnother(path);
    case ENOTDIR:
      return folder + " is not a folder. Move it away, or " + useAnother(path);
    case EACCES:
    case EPERM:
      return "You have no permission to create files in " + folder +
             ". Change its permissions, or " + useAnother(path);
    case ENAMETOOLONG:
      return "The name " + quotedName(path) + " is too long. Choose a shorter one.";
    case ELOOP:
      return "The links in the path of " + folder + " lead in a circle. Choose another folder.";
    case EMFILE:
    case ENFILE:
      return quotedName(path) +
             " could not be created, because too many files are open. Close some programs and try "
             "again.";
    default:
      return reason(path, code);
  }
}

}  // namespace

std::string quotedName(const std::filesystem::path& path) {
  return quoted(path.filename());
}

std::string reason(const std::filesystem::path& path, int code) {
  const std::string folder = folderOf(path);
  switch (code) {
    case ENOSPC:
      return "There is no space left on the disk that holds " + folder + ". Free some space.";
    case EDQUOT:
      return "Your quota on the disk that holds " + folder + " is used up. Free some space.";
    case EFBIG:
      return quotedName(path) +
             " has reached the largest size that a file may have here. Raise the limit (\"ulimit "
             "-f\"), or record to another disk.";
    case EROFS:
      return "The disk that holds " + folder + " can only be read. Choose another folder.";
    case EIO:
    case ENXIO:
    case ENODEV:
      return "The disk that holds " + folder +
             " reports a fault. Check that it is connected and healthy.";
    default:
      return quotedName(path) + " in " + folder + " could not be written (" +
             std::generic_category().message(code) + "). Try another folder.";
  }
}

NS::Error creationError(const std::filesystem::path& path, int code) {
  return plainError(code, whyNotCreated(path, code));
}

NS::Error writeError(const std::filesystem::path& path, const BlockFile::Failure& failure) {
  const char* consequence = failure.dropped
                                ? " Audio is being lost: in the recording it will be silence."
                                : " Until then the recording is kept in memory.";
  return plainError(failure.code, reason(path, failure.code) + consequence);
}

std::string finishingProblem(const std::filesystem::path& path, int code, std::uint64_t lostFrames,
                             std::uint32_t sampleRate) {
  std::string line = "Finishing " + quoted(path) + " failed.";
  if (code != 0) {
    line += ' ' + reason(path, code);
  }
  if (lostFrames > 0) {
    const std::uint64_t milliseconds = (lostFrames * 1000 + sampleRate - 1) / sampleRate;
    line += " The last " + std::to_string(milliseconds) + " ms of the recording are missing.";
  }
  return line;
}

std::string repairProblem(const std::filesystem::path& path, int code) {
  const std::string name = quotedName(path);
  const std::string folder = folderOf(path);
  switch (code) {
    case ENOENT:
    case ENOTDIR:
      return "There is no file " + name + " in " + folder + ". Check its name.";
    case EISDIR:
      return name + " is not a file. Give the names of recordings.";
    case ELOOP:
      return name + " is a link. Give the name of the file that it leads to.";
    case EACCES:
    case EPERM:
      return "You have no permission to change " + name + " in " + folder +
             ". Change its permissions.";
    case EROFS:
      return "The disk that holds " + folder +
             " can only be read. Copy the file to another one, and repair the copy.";
    case EFBIG:
      return name +
             " needs to grow beyond the largest size that a file may have here. Copy it to "
             "another disk, and repair the copy.";
    case ENOMEM:
      return "There is not enough memory to repair " + name + ". Close some programs.";
    case ENOSPC:
    case EDQUOT:
    case EIO:
    case ENXIO:
    case ENODEV:
      return reason(path, code);
    default:
      return name + " in " + folder + " could not be read or changed (" +
             std::generic_category().message(code) +
             "). Copy it to another disk, and repair the "
             "copy.";
  }
}

std::string unofferedFlush(const std::filesystem::path& path, int code) {
  return "The file system of " + folderOf(path) + " does not flush files (" +
         std::generic_category().message(code) + "): a power failure may cost more of " +
         quotedName(path) + " than its last seconds.";
}

NS::Error plainError(int code, std::string sentence) {
  return {NS::POSIXErrorDomain, code, std::move(sentence)};
}

}  // namespace audrel::linuxos
