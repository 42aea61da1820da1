#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

/// What a platform can do for a recording that was cut off.
namespace capture {

/// What became of a file.
struct Repair {
  enum class Outcome : std::uint8_t {
    repaired,    ///< it was cut off and is whole now
    whole,       ///< it was whole already: nothing was written
    notOurs,     ///< no recording of this program, or changed since: nothing was written
    inUse,       ///< somebody records to it, or nobody can tell: nothing was written
    unreadable,  ///< it could not be opened, read or written; what played before plays still
  };

  Outcome outcome = Outcome::notOurs;
  double seconds = 0;        ///< of what plays, where it is repaired or whole
  std::string problem = {};  ///< a sentence or two, with the remedy, where it is `unreadable` or
                             ///< there are no locks; else empty

  bool operator==(const Repair&) const = default;
};

/// Whether a file may be touched where the file system has no locks, so that nobody can tell
/// whether somebody records to it.
enum class LockRule : std::uint8_t { needed, ifOffered };

class FileRepair {
 public:
  virtual ~FileRepair() = default;

  /// Makes the recording at `path` whole, in place. Returns once that is durable.
  virtual Repair repair(const std::filesystem::path& path, LockRule rule) = 0;
};

}  // namespace capture
