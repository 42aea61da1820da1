#pragma once

#include <string>

namespace audrel::cli {

/// A pseudo terminal, both ends of it. Line feeds come out as they go in.
class TerminalPair {
 public:
  explicit TerminalPair(unsigned short columns);
  TerminalPair(const TerminalPair&) = delete;
  TerminalPair& operator=(const TerminalPair&) = delete;
  ~TerminalPair();

  /// For the program.
  int terminal() const { return terminal_; }

  /// The program's window changes.
  void setColumns(unsigned short columns) const;

  /// What the program wrote since this was last asked, without waiting for more.
  std::string takeText() const;

  /// What closing the window does.
  void hangUp();

 private:
  int master_;
  int terminal_;
};

}  // namespace audrel::cli
