#include "tests/macos/loader/LoadedProgram.h"

#include <sys/mman.h>

#include <stdexcept>

namespace audrel::macho {
namespace {

void protect(std::span<std::byte> pages, int protection) {
  if (mprotect(pages.data(), pages.size(), protection) != 0) {
    throw std::runtime_error("cannot protect a program");
  }
}

}  // namespace

void LoadedProgram::prepare() const {
  protect(code.span(), PROT_READ | PROT_EXEC);
  protect(constants.span(), PROT_READ);
  objcruntime::registerMetadata(
      {.selectors = selectors.span(), .classes = classes.span(), .categories = {}});
}

int LoadedProgram::run(std::vector<std::string> arguments) const {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) {
    pointers.push_back(argument.data());
  }
  pointers.push_back(nullptr);
  return entry(static_cast<int>(arguments.size()), pointers.data());
}

}  // namespace audrel::macho
