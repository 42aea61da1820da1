#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/linux/files/BlockFile.h"
#include "platform/linux/system/Notice.h"

namespace audrel::linuxos {

/// What the user is told while saving takes long.
Notice slowSavingNotice();

/// Tells the user when a recording cannot be saved, once a cause, when it is saved again, and in
/// the end that it is saved or what is missing. Of one file, one thread at a time.
class SavingNotices {
 public:
  /// `memory` is for how many seconds what cannot be written is kept.
  SavingNotices(std::filesystem::path path, double memory, NoticeTaker tell);

  /// How writing a block went. Where there is no memory for a notice there is none.
  void blockEnded(const std::optional<BlockFile::Failure>& failure) noexcept;

  /// The file of a recording of `length` seconds is closed; of them `missing` are not in it, or as
  /// silence. `problem` is a sentence on what else went wrong; may be empty. Nothing is told of a
  /// recording that never began.
  void fileEnded(double length, double missing, const std::string& problem) noexcept;

 private:
  void tell(const BlockFile::Failure& failure) const;
  void tellOfMissing(double seconds, const std::string& problem) const;
  void tellThatSaved(double length, const std::string& problem) const;
  void tell(const Notice& notice) const;

  std::filesystem::path path_;
  double memory_;
  NoticeTaker tell_;
  std::optional<BlockFile::Failure> told_;  ///< the failure that the user knows of
  int lastCode_ = 0;                        ///< of the last failure, an `errno` value
};

}  // namespace audrel::linuxos
