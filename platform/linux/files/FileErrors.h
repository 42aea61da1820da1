#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/Foundation.h"
#include "platform/linux/files/BlockFile.h"

namespace audrel::linuxos {

/// Error values in `NS::POSIXErrorDomain` whose descriptions tell a person what happened to which
/// file and what to do about it. `code` is an `errno` value.

/// `path` could not be created.
NS::Error creationError(const std::filesystem::path& path, int code);

/// Audio could not be written to `path`.
NS::Error writeError(const std::filesystem::path& path, const BlockFile::Failure& failure);

/// A line for the log on how finishing `path` ended: why (`code` 0: memory had run out before), and
/// that `lostFrames` frames at `sampleRate` are missing at its end.
std::string finishingProblem(const std::filesystem::path& path, int code, std::uint64_t lostFrames,
                             std::uint32_t sampleRate);

/// Why the file at `path` could not be repaired, and what to do about it. `EISDIR`: it is no
/// regular file.
std::string repairProblem(const std::filesystem::path& path, int code);

/// A line for the log: the file system of `path` does not flush files.
std::string unofferedFlush(const std::filesystem::path& path, int code);

/// A reason of our own, which `sentence` tells: `EINVAL`, `ENOTSUP` and the like.
NS::Error plainError(int code, std::string sentence);

/// Its name, in quotes.
std::string quotedName(const std::filesystem::path& path);

/// What `code` means for the file at `path` once it is open, and what to do about it.
std::string reason(const std::filesystem::path& path, int code);

}  // namespace audrel::linuxos
