#include "tests/macos/loader/Unwinding.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>

// Of the compiler's support library.
extern "C" {
void __register_frame(void* descriptions);
void __deregister_frame(void* descriptions);
}

namespace audrel::macho {
namespace {

struct Function {
  std::uint32_t begin = 0;  ///< from the image's begin
  std::uint32_t end = 0;
  std::uint32_t encoding = 0;
  std::uint32_t exceptionTable = 0;  ///< 0: none
};

/// The compact unwind information of an image, function by function.
class CompactTable {
 public:
  explicit CompactTable(const Bytes& bytes) : bytes_(bytes), header_(bytes.at<UnwindHeader>(0)) {
    for (std::uint32_t i = 0; i + 1 < header_.indexCount; ++i) {
      readPage(index(i), index(i + 1));
    }
    if (!functions_.empty()) {
      functions_.back().end = index(header_.indexCount - 1).function;
    }
  }

  const std::vector<Function>& functions() const { return functions_; }

  /// From the image's begin, where the address of the routine stands.
  std::uint32_t personality(std::uint32_t encoding) const {
    const std::uint32_t number = (encoding & personalityMask) >> personalityShift;
    return number == 0
               ? 0
               : bytes_.at<std::uint32_t>(header_.personalities + 4 * std::size_t{number - 1});
  }

 private:
  UnwindIndex index(std::uint32_t number) const {
    return bytes_.at<UnwindIndex>(header_.index + number * sizeof(UnwindIndex));
  }

  void readPage(const UnwindIndex& index, const UnwindIndex& next) {
    std::unordered_map<std::uint32_t, std::uint32_t> exceptionTables;
    for (std::size_t at = index.exceptionTables; at < next.exceptionTables;
         at += sizeof(UnwindEntry)) {
      const auto entry = bytes_.at<UnwindEntry>(at);
      exceptionTables[entry.function] = entry.value;
    }
    const auto page = bytes_.at<UnwindPage>(index.page);
    for (std::uint32_t i = 0; i < page.entryCount; ++i) {
      Function function = readEntry(index, page, i);
      if ((function.encoding & hasExceptionTable) != 0) {
        function.exceptionTable = exceptionTables.at(function.begin);
      }
      if (!functions_.empty()) {
        functions_.back().end = function.begin;
      }
      functions_.push_back(function);
    }
  }

  Function readEntry(const UnwindIndex& index, const UnwindPage& page, std::uint32_t number) const {
    const std::size_t entries = index.page + page.entries;
    if (page.kind == regularPage) {
      const auto entry = bytes_.at<UnwindEntry>(entries + number * sizeof(UnwindEntry));
      return {.begin = entry.function, .encoding = entry.value};
    }
    if (page.kind != compressedPage) {
      throw std::runtime_error("an unwind table of an unknown format");
    }
    const auto entry = bytes_.at<std::uint32_t>(entries + number * sizeof(std::uint32_t));
    const std::uint32_t encoding = entry >> 24;
    const std::size_t at =
        encoding < header_.commonEncodingCount
            ? header_.commonEncodings + 4 * std::size_t{encoding}
            : index.page + page.encodings + 4 * std::size_t{encoding - header_.commonEncodingCount};
    return {.begin = index.function + (entry & 0xFFFFFF), .encoding = bytes_.at<std::uint32_t>(at)};
  }

  Bytes bytes_;
  UnwindHeader header_;
  std::vector<Function> functions_;
};

// DWARF's instructions, and its numbers of registers.
constexpr std::uint8_t defineFrame = 0x0C;
constexpr std::uint8_t registerIsAt = 0x80;
constexpr std::uint8_t framePointer = 6;
constexpr std::uint8_t returnAddress = 16;
constexpr std::uint8_t minusEight = 0x78;

/// What an encoding calls 1 to 5: rbx, r12, r13, r14, r15.
constexpr std::array<std::uint8_t, 6> savedRegisters = {0, 3, 12, 13, 14, 15};

/// Entries of an .eh_frame section, with absolute addresses.
class Descriptions {
 public:
  void addShared(std::uint64_t personality) {
    shared_ = bytes_.size();
    const std::size_t length = begin();
    put(std::uint32_t{0});
    put(std::uint8_t{1});
    putText(personality == 0 ? "zL" : "zPL");
    put(std::uint8_t{1});
    put(minusEight);
    put(returnAddress);
    const std::uint8_t absolute = 0;
    if (personality == 0) {
      put(std::uint8_t{1});
    } else {
      put(std::uint8_t{10});
      put(absolute);
      put(personality);
    }
    put(absolute);
    for (const std::uint8_t byte :
         {defineFrame, framePointer, std::uint8_t{16}, std::uint8_t{registerIsAt | framePointer},
          std::uint8_t{2}, std::uint8_t{registerIsAt | returnAddress}, std::uint8_t{1}}) {
      put(byte);
    }
    end(length);
  }

  void addFunction(std::uint64_t address, const Function& function, std::uint64_t exceptionTable) {
    const std::size_t length = begin();
    put(static_cast<std::uint32_t>(bytes_.size() - shared_));
    put(address);
    put(std::uint64_t{function.end - function.begin});
    put(std::uint8_t{8});
    put(exceptionTable);
    putSavedRegisters(function.encoding);
    end(length);
  }

  std::vector<std::byte> ended() && {
    put(std::uint32_t{0});
    return std::move(bytes_);
  }

 private:
  /// They lie upwards from 8 × offset below where the frame pointer points, which is 16 bytes below
  /// the frame's end.
  void putSavedRegisters(std::uint32_t encoding) {
    const auto offset = static_cast<std::uint8_t>(encoding >> 16);
    for (std::uint8_t i = 0; i < 5; ++i) {
      const std::uint32_t saved = encoding >> (3 * i) & 7;
      if (saved != 0) {
        put(static_cast<std::uint8_t>(registerIsAt | savedRegisters.at(saved)));
        put(static_cast<std::uint8_t>(2 + offset - i));
      }
    }
  }

  std::size_t begin() {
    put(std::uint32_t{0});
    return bytes_.size();
  }

  void end(std::size_t length) {
    while (bytes_.size() % 8 != 4) {
      put(std::uint8_t{0});
    }
    const auto size = static_cast<std::uint32_t>(bytes_.size() - length);
    std::memcpy(bytes_.data() + length - sizeof size, &size, sizeof size);
  }

  void putText(const std::string& text) {
    for (const char character : text) {
      put(character);
    }
    put('\0');
  }

  template <typename T>
  void put(T value) {
    const auto* begin = reinterpret_cast<const std::byte*>(&value);
    bytes_.insert(bytes_.end(), begin, begin + sizeof value);
  }

  std::vector<std::byte> bytes_;
  std::size_t shared_ = 0;
};

std::uint64_t address(const Image& image, std::uint32_t offset) {
  return std::bit_cast<std::uint64_t>(image.at(offset));
}

std::uint64_t pointerAt(const Image& image, std::uint32_t offset) {
  std::uint64_t pointer = 0;
  std::memcpy(&pointer, image.at(offset), sizeof pointer);
  return pointer;
}

std::vector<std::byte> describe(const Image& image) {
  const CompactTable table{Bytes(image.section("__unwind_info"))};
  Descriptions descriptions;
  std::optional<std::uint32_t> shared;
  for (const Function& function : table.functions()) {
    if ((function.encoding & frameMode) != framePointerMode) {
      continue;
    }
    const std::uint32_t personality = table.personality(function.encoding);
    if (personality != shared) {
      descriptions.addShared(personality == 0 ? 0 : pointerAt(image, personality));
      shared = personality;
    }
    const bool hasTable = function.exceptionTable != 0;
    descriptions.addFunction(address(image, function.begin), function,
                             hasTable ? address(image, function.exceptionTable) : 0);
  }
  return std::move(descriptions).ended();
}

}  // namespace

Unwinding::Unwinding(const Image& image) : descriptions_(describe(image)) {
  __register_frame(descriptions_.data());
}

Unwinding::~Unwinding() {
  __deregister_frame(descriptions_.data());
}

}  // namespace audrel::macho
