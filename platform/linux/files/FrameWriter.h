#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/AVFAudio.h"
#include "platform/linux/files/SampleConversion.h"

namespace audrel::linuxos {

/// Turns frames into the contents of a file. One thread at a time.
class FrameWriter {
 public:
  virtual ~FrameWriter() = default;

  /// Appends `frames` frames of `buffers`, which hold them in the format of `converter`. After an
  /// error the next frames can still be appended.
  virtual std::optional<NS::Error> append(const SampleConverter& converter,
                                          const CA::AudioBufferList& buffers,
                                          std::size_t frames) = 0;

  struct Ending {
    std::optional<std::string> problem;  ///< a line for the log
    std::uint64_t missing = 0;           ///< frames that the file lacks, or has as silence
    std::uint64_t silenced = 0;          ///< of them, those that it has as silence
    std::string why = {};                ///< why finishing failed, for the user
  };

  /// Writes what is left and closes the file; nothing may follow.
  virtual Ending finish() = 0;
};

}  // namespace audrel::linuxos
