#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "platform/linux/files/BlockFile.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// Tells the user when a recording cannot be saved, once a cause, when it is saved again, and in
/// the end what is missing. Of one file, one thread at a time.
class SavingNotices {
 public:
  /// `memory` is for how many seconds what cannot be written is kept.
  SavingNotices(std::filesystem::path path, double memory, NoticeTaker tell);

  /// How writing a block went. Where there is no memory for a notice there is none.
  void blockEnded(const std::optional<BlockFile::Failure>& failure) noexcept;

  /// The file is closed; `missing` is how many seconds of the recording it lacks, or has as
  /// silence.
  void fileEnded(double missing) noexcept;

 private:
  void tell(const BlockFile::Failure& failure) const;
  void tell(std::string summary, std::string body, bool isLoss) const;

  std::filesystem::path path_;
  double memory_;
  NoticeTaker tell_;
  std::optional<BlockFile::Failure> told_;  ///< the failure that the user knows of
  int lastCode_ = 0;                        ///< of the last failure, an `errno` value
};

}  // namespace audrel::linuxos
