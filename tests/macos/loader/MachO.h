#pragma once

#include <cstdint>

/// What the loader reads of a Mach-O file for x86-64, after Apple's published <mach-o/loader.h>,
/// <mach-o/fat.h>, <mach-o/nlist.h>, <mach-o/fixup-chains.h> and
/// <mach-o/compact_unwind_encoding.h>.
namespace audrel::macho {

inline constexpr std::uint32_t fatMagic = 0xCAFEBABE;  ///< of a universal file; all big-endian
inline constexpr std::uint32_t magic64 = 0xFEEDFACF;
inline constexpr std::uint32_t cpuTypeX86_64 = 0x01000007;

struct FatArchitecture {
  std::uint32_t cpuType;
  std::uint32_t cpuSubtype;
  std::uint32_t offset;
  std::uint32_t size;
  std::uint32_t alignment;
};

struct Header {
  std::uint32_t magic;
  std::uint32_t cpuType;
  std::uint32_t cpuSubtype;
  std::uint32_t fileType;
  std::uint32_t commands;
  std::uint32_t sizeOfCommands;
  std::uint32_t flags;
  std::uint32_t reserved;
};

struct Command {
  std::uint32_t kind;
  std::uint32_t size;
};
inline constexpr std::uint32_t symbolTableCommand = 0x2;
inline constexpr std::uint32_t segmentCommand = 0x19;
inline constexpr std::uint32_t mainCommand = 0x80000028;
inline constexpr std::uint32_t chainedFixupsCommand = 0x80000034;

struct Segment {
  Command command;
  char name[16];
  std::uint64_t address;
  std::uint64_t size;
  std::uint64_t fileOffset;
  std::uint64_t fileSize;
  std::uint32_t maximalProtection;
  std::uint32_t protection;
  std::uint32_t sections;
  std::uint32_t flags;
};
inline constexpr std::uint32_t mayBeExecuted = 4;  ///< in `protection`
inline constexpr std::uint32_t isReadOnly = 0x10;  ///< in `flags`: after the fixups

struct Section {
  char name[16];
  char segment[16];
  std::uint64_t address;
  std::uint64_t size;
  std::uint32_t fileOffset;
  std::uint32_t alignment;
  std::uint32_t relocations[2];
  std::uint32_t flags;
  std::uint32_t reserved[3];
};
inline constexpr std::uint32_t sectionType = 0xFF;  ///< the bits of `flags` that say what it holds
inline constexpr std::uint32_t initialisers = 0x9;
inline constexpr std::uint32_t threadLocals = 0x13;
inline constexpr std::uint32_t initialiserOffsets = 0x16;

struct SymbolTable {
  Command command;
  std::uint32_t symbols;
  std::uint32_t count;
  std::uint32_t strings;
  std::uint32_t sizeOfStrings;
};

struct Symbol {
  std::uint32_t name;  ///< in the strings
  std::uint8_t type;
  std::uint8_t section;
  std::uint16_t description;
  std::uint64_t value;
};
inline constexpr std::uint8_t isDebugging = 0xE0;
inline constexpr std::uint8_t isInSection = 0x0E;
inline constexpr std::uint8_t isExternal = 0x01;

struct EntryPoint {
  Command command;
  std::uint64_t offset;
  std::uint64_t stackSize;
};

/// A command that says where in the file its data is.
struct LinkEditData {
  Command command;
  std::uint32_t offset;
  std::uint32_t size;
};

struct FixupsHeader {
  std::uint32_t version;
  std::uint32_t starts;
  std::uint32_t imports;
  std::uint32_t strings;
  std::uint32_t importCount;
  std::uint32_t importFormat;
  std::uint32_t stringFormat;
};
inline constexpr std::uint32_t plainImports = 1;  ///< 32 bits: library 8, weak 1, name 23

struct SegmentFixups {
  std::uint32_t size;
  std::uint16_t pageSize;
  std::uint16_t pointerFormat;
  std::uint64_t segmentOffset;  ///< from the image's begin
  std::uint32_t maximalPointer;
  std::uint16_t pages;  ///< so many 16-bit offsets of first fixups follow, from byte 22 on
};
inline constexpr std::uint32_t offsetOfFirstFixups = 22;
inline constexpr std::uint16_t noFixup = 0xFFFF;
inline constexpr std::uint16_t pointersAreAddresses = 2;
inline constexpr std::uint16_t pointersAreOffsets = 6;

struct UnwindHeader {
  std::uint32_t version;
  std::uint32_t commonEncodings;
  std::uint32_t commonEncodingCount;
  std::uint32_t personalities;
  std::uint32_t personalityCount;
  std::uint32_t index;
  std::uint32_t indexCount;
};

/// The last entry has no page; it ends the code.
struct UnwindIndex {
  std::uint32_t function;
  std::uint32_t page;
  std::uint32_t exceptionTables;
};

struct UnwindPage {
  std::uint32_t kind;
  std::uint16_t entries;
  std::uint16_t entryCount;
  std::uint16_t encodings;  ///< of compressed pages alone
  std::uint16_t encodingCount;
};
inline constexpr std::uint32_t regularPage = 2;
inline constexpr std::uint32_t compressedPage = 3;

/// A function's exception table; or, on a regular page, its encoding.
struct UnwindEntry {
  std::uint32_t function;
  std::uint32_t value;
};

inline constexpr std::uint32_t hasExceptionTable = 0x40000000;
inline constexpr std::uint32_t personalityMask = 0x30000000;  ///< counts from 1
inline constexpr int personalityShift = 28;
inline constexpr std::uint32_t frameMode = 0x0F000000;
inline constexpr std::uint32_t framePointerMode = 0x01000000;

}  // namespace audrel::macho
