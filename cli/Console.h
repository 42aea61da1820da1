#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/Options.h"

namespace audrel::cli {

/// Standard output and standard error: results go to the first, all else to the second. What they
/// do not take is lost and ends nothing, since a recording must go on beside a closed terminal; a
/// result that is lost is told on standard error.
///
/// On a terminal that can do so (the environment's TERM is not "dumb"), standard error can carry a
/// status line, which is overwritten in place; other texts first clear it. One thread at a time.
class Console {
 public:
  /// `progress`: whether the start and end of a recording are told, and the status line drawn.
  Console(int output, int errorOutput, Options::Progress progress);

  /// One line of result, without its line feed.
  void result(std::string_view line);

  /// One line of progress; nothing when quiet.
  void progress(std::string_view line);

  /// One line that must be read, after the program's name.
  void complain(std::string_view line);

  /// Several lines that belong to the complaint before, each ended by a line feed.
  void complainFurther(std::string_view lines);

  /// Results as they are.
  void print(std::string_view text);

  /// Whether standard output did not take all of the results.
  bool hasLostResults() const { return hasLostResults_; }

  /// How many characters wide the window is that shows standard output, or standard error; nothing
  /// when none does, or it does not tell.
  std::optional<int> outputWidth() const;
  std::optional<int> errorWidth() const;

  /// Whether somebody is told on a terminal.
  bool isTerminal() const { return isTerminal_; }

  bool showsStatus() const { return showsStatus_; }

  /// Overwrites the status line. Does nothing where none is shown.
  void status(std::string_view line);

  /// How many characters a status line may have: one less than the window is wide, since a full
  /// line wraps on some terminals.
  int statusWidth() const;

 private:
  void clearStatus();
  std::string clearing() const;

  const int output_;
  const int errorOutput_;
  const Options::Progress progress_;
  const bool isTerminal_;
  const bool showsStatus_;
  std::size_t statusSize_ = 0;  ///< of the status line that is shown; 0: none is
  bool hasLostResults_ = false;
};

}  // namespace audrel::cli
