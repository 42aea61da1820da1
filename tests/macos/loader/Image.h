#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "tests/macos/loader/Bytes.h"
#include "tests/macos/loader/MachO.h"

namespace audrel::macho {

/// A program for macOS on x86-64, as it lies in this Linux process: mapped where there was room,
/// its pointers set right and its imports bound, its constants and its code protected. Both systems
/// call functions alike, so it can run where everything that it imports is there.
///
/// It does not know static initialisers and thread-local variables: a program with such is refused.
/// It stays for as long as the process, as a program does.
class Image {
 public:
  /// The address of what the program knows by a name as C has it, without the underscore that
  /// macOS puts in front; null when there is no such thing.
  using Resolve = std::function<void*(const std::string& name)>;

  /// Of a universal file the part for x86-64. Throws std::runtime_error, which names what is wrong
  /// with the file or each import that `resolve` does not know.
  Image(const std::filesystem::path& file, const Resolve& resolve);

  /// The program's main.
  int run(const std::vector<std::string>& arguments) const;

  /// Empty when there is none of that name.
  std::span<std::byte> section(const std::string& name) const;

  std::byte* at(std::uint64_t offset) const { return begin_ + offset; }

 private:
  void readCommands();
  void readSegment(std::size_t offset);
  void readExports(const SymbolTable& table);
  void map();
  void* addressOf(const std::string& symbol, const Resolve& resolve) const;
  void bind(const Resolve& resolve);
  std::vector<std::uint64_t> importAddresses(const FixupsHeader& header,
                                             const Resolve& resolve) const;
  void fixSegment(const Bytes& starts, std::span<const std::uint64_t> imports);
  void fixChain(std::byte* first, std::uint16_t format, std::span<const std::uint64_t> imports);
  void protect();

  std::vector<std::byte> file_;
  Bytes bytes_;
  std::vector<Segment> segments_;
  std::vector<Section> sections_;
  std::map<std::string, std::uint64_t> exports_;  ///< with their addresses in the file
  Bytes fixups_;
  std::uint64_t entry_ = 0;
  std::uint64_t preferred_ = 0;  ///< address that the linker took for the begin
  std::byte* begin_ = nullptr;
};

}  // namespace audrel::macho
