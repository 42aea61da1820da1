#include "tests/macos/loader/Image.h"

#include <sys/mman.h>

#include <bit>
#include <fstream>
#include <iterator>
#include <stdexcept>

/// Of the leak sanitizer, where it is there: what the program's globals hold is not lost.
extern "C" __attribute__((weak)) void __lsan_register_root_region(const void* begin,
                                                                  std::size_t size);

namespace audrel::macho {
namespace {

std::vector<std::byte> read(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (bytes.empty()) {
    throw std::runtime_error("cannot read " + path.string());
  }
  const auto* begin = reinterpret_cast<const std::byte*>(bytes.data());
  return {begin, begin + bytes.size()};
}

std::uint32_t bigEndian(std::uint32_t value) {
  return __builtin_bswap32(value);
}

/// The part for x86-64 of a universal file; the file when it is for x86-64 alone.
Bytes sliceForThisProcessor(const Bytes& file) {
  if (bigEndian(file.at<std::uint32_t>(0)) != fatMagic) {
    return file;
  }
  const std::uint32_t count = bigEndian(file.at<std::uint32_t>(4));
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto slice = file.at<FatArchitecture>(8 + i * sizeof(FatArchitecture));
    if (bigEndian(slice.cpuType) == cpuTypeX86_64) {
      return file.part(bigEndian(slice.offset), bigEndian(slice.size));
    }
  }
  throw std::runtime_error("no part of the file is for x86-64");
}

template <std::size_t size>
std::string name(const char (&characters)[size]) {
  return {characters, strnlen(characters, size)};
}

constexpr std::size_t pageSize = 4096;

std::size_t toPages(std::size_t size) {
  return (size + pageSize - 1) / pageSize * pageSize;
}

}  // namespace

Image::Image(const std::filesystem::path& file, const Resolve& resolve)
    : file_(read(file)), bytes_(sliceForThisProcessor(Bytes(file_))) {
  readCommands();
  map();
  bind(resolve);
  protect();
}

int Image::run(const std::vector<std::string>& arguments) const {
  std::vector<std::string> texts = arguments;
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  const auto main = reinterpret_cast<int (*)(int, char**)>(at(entry_));
  return main(static_cast<int>(texts.size()), pointers.data());
}

std::span<std::byte> Image::section(const std::string& sectionName) const {
  for (const Section& section : sections_) {
    if (name(section.name) == sectionName) {
      return {at(section.address - preferred_), section.size};
    }
  }
  return {};
}

void Image::readCommands() {
  const auto header = bytes_.at<Header>(0);
  if (header.magic != magic64 || header.cpuType != cpuTypeX86_64) {
    throw std::runtime_error("no Mach-O file for x86-64");
  }
  std::size_t offset = sizeof(Header);
  for (std::uint32_t i = 0; i < header.commands; ++i) {
    const auto command = bytes_.at<Command>(offset);
    if (command.kind == segmentCommand) {
      readSegment(offset);
    } else if (command.kind == symbolTableCommand) {
      readExports(bytes_.at<SymbolTable>(offset));
    } else if (command.kind == mainCommand) {
      entry_ = bytes_.at<EntryPoint>(offset).offset;
    } else if (command.kind == chainedFixupsCommand) {
      const auto data = bytes_.at<LinkEditData>(offset);
      fixups_ = bytes_.part(data.offset, data.size);
    }
    offset += command.size;
  }
  if (segments_.empty() || entry_ == 0 || fixups_.span().empty()) {
    throw std::runtime_error("no program with chained fixups");
  }
  preferred_ = segments_.front().address;
}

void Image::readSegment(std::size_t offset) {
  const auto segment = bytes_.at<Segment>(offset);
  if (segment.protection == 0) {
    return;  // the page at address 0
  }
  segments_.push_back(segment);
  for (std::uint32_t i = 0; i < segment.sections; ++i) {
    const auto section = bytes_.at<Section>(offset + sizeof(Segment) + i * sizeof(Section));
    const std::uint32_t type = section.flags & sectionType;
    if (type == initialisers || type == initialiserOffsets || type == threadLocals) {
      throw std::runtime_error("the loader does not know what to do with " + name(section.name));
    }
    sections_.push_back(section);
  }
}

void Image::readExports(const SymbolTable& table) {
  for (std::uint32_t i = 0; i < table.count; ++i) {
    const auto symbol = bytes_.at<Symbol>(table.symbols + i * sizeof(Symbol));
    const bool isExport = (symbol.type & isDebugging) == 0 && (symbol.type & isExternal) != 0 &&
                          (symbol.type & isInSection) == isInSection;
    if (isExport) {
      exports_[bytes_.text(table.strings + symbol.name)] = symbol.value;
    }
  }
}

void Image::map() {
  const Segment& last = segments_.back();
  const std::size_t size = toPages(last.address + last.size - preferred_);
  void* room = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (room == MAP_FAILED) {
    throw std::runtime_error("no room for the program");
  }
  begin_ = static_cast<std::byte*>(room);
  if (__lsan_register_root_region != nullptr) {
    __lsan_register_root_region(room, size);
  }
  for (const Segment& segment : segments_) {
    const Bytes content = bytes_.part(segment.fileOffset, segment.fileSize);
    std::memcpy(at(segment.address - preferred_), content.span().data(), segment.fileSize);
  }
}

/// A program's own definition of what libraries define too comes first.
void* Image::addressOf(const std::string& symbol, const Resolve& resolve) const {
  if (const auto own = exports_.find(symbol); own != exports_.end()) {
    return at(own->second - preferred_);
  }
  return symbol.starts_with('_') ? resolve(symbol.substr(1)) : nullptr;
}

void Image::bind(const Resolve& resolve) {
  const auto header = fixups_.at<FixupsHeader>(0);
  const auto imports = importAddresses(header, resolve);
  const auto segments = fixups_.at<std::uint32_t>(header.starts);
  for (std::uint32_t i = 0; i < segments; ++i) {
    const std::size_t place = header.starts + sizeof(std::uint32_t) * (i + 1);
    const auto starts = fixups_.at<std::uint32_t>(place);
    if (starts != 0) {
      const std::size_t at = header.starts + starts;
      fixSegment(fixups_.part(at, fixups_.at<std::uint32_t>(at)), imports);
    }
  }
}

std::vector<std::uint64_t> Image::importAddresses(const FixupsHeader& header,
                                                  const Resolve& resolve) const {
  if (header.importFormat != plainImports || header.stringFormat != 0) {
    throw std::runtime_error("imports of an unknown format");
  }
  std::vector<std::uint64_t> addresses;
  std::string unknown;
  for (std::uint32_t i = 0; i < header.importCount; ++i) {
    const auto import = fixups_.at<std::uint32_t>(header.imports + sizeof(std::uint32_t) * i);
    const std::string symbol = fixups_.text(header.strings + (import >> 9));
    void* address = addressOf(symbol, resolve);
    if (address == nullptr) {
      unknown += " " + symbol;
    }
    addresses.push_back(std::bit_cast<std::uint64_t>(address));
  }
  if (!unknown.empty()) {
    throw std::runtime_error("nothing is known by the names" + unknown);
  }
  return addresses;
}

void Image::fixSegment(const Bytes& starts, std::span<const std::uint64_t> imports) {
  const auto segment = starts.at<SegmentFixups>(0);
  if (segment.pointerFormat != pointersAreAddresses &&
      segment.pointerFormat != pointersAreOffsets) {
    throw std::runtime_error("fixups of an unknown format");
  }
  for (std::uint32_t page = 0; page < segment.pages; ++page) {
    const std::size_t place = offsetOfFirstFixups + sizeof(std::uint16_t) * page;
    const auto first = starts.at<std::uint16_t>(place);
    if (first != noFixup) {
      fixChain(at(segment.segmentOffset + page * segment.pageSize + first), segment.pointerFormat,
               imports);
    }
  }
}

/// Each pointer holds how many times four bytes further the next one is.
void Image::fixChain(std::byte* first, std::uint16_t format,
                     std::span<const std::uint64_t> imports) {
  std::byte* place = first;
  std::uint64_t next = 0;
  do {
    std::uint64_t fixup = 0;
    std::memcpy(&fixup, place, sizeof fixup);
    next = fixup >> 51 & 0xFFF;
    std::uint64_t pointer = 0;
    if (fixup >> 63 != 0) {
      const std::uint64_t addend = fixup >> 24 & 0xFF;
      pointer = imports[fixup & 0xFFFFFF] + addend;
    } else {
      const std::uint64_t target = fixup & 0xFFFFFFFFF;
      const std::uint64_t highest = fixup >> 36 & 0xFF;
      const std::uint64_t offset = format == pointersAreOffsets ? target : target - preferred_;
      pointer = std::bit_cast<std::uint64_t>(at(offset)) | highest << 56;
    }
    std::memcpy(place, &pointer, sizeof pointer);
    place += 4 * next;
  } while (next != 0);
}

void Image::protect() {
  for (const Segment& segment : segments_) {
    int protection = PROT_READ;
    if ((segment.protection & mayBeExecuted) != 0) {
      protection |= PROT_EXEC;
    } else if ((segment.flags & isReadOnly) == 0) {
      protection |= PROT_WRITE;
    }
    if (mprotect(at(segment.address - preferred_), toPages(segment.size), protection) != 0) {
      throw std::runtime_error("cannot protect " + name(segment.name));
    }
  }
}

}  // namespace audrel::macho
