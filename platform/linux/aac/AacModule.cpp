#include "platform/linux/aac/AacModule.h"

#include <dlfcn.h>

#include <atomic>
#include <string_view>

#include "platform/linux/system/ProgramFolder.h"

namespace audrel::linuxos {

namespace {

constexpr const char* fileName = "audrel-aac.so";

/// What the dynamic linker says of a library that the module needs: "libavcodec.so.59: cannot open
/// shared object file: ...". Empty when it says something else.
std::string_view missingLibrary(std::string_view message, const std::filesystem::path& file) {
  const std::string_view name = message.substr(0, message.find(": cannot open shared object"));
  return name.size() == message.size() || name == file.native() ? "" : name;
}

/// Debian's name of the package with "libavcodec.so.59".
std::string packageOf(std::string_view library) {
  constexpr std::string_view middle = ".so.";
  const auto at = library.find(middle);
  return at == std::string_view::npos
             ? std::string(library)
             : std::string(library.substr(0, at)) + std::string(library.substr(at + middle.size()));
}

std::string loadingProblem(std::string_view message, const std::filesystem::path& file) {
  const std::string_view library = missingLibrary(message, file);
  if (library.empty()) {
    return "The AAC encoder could not be loaded (" + std::string(message) +
           "). Install Audrel again, or record WAV.";
  }
  return "M4A needs " + std::string(library) + ", which is not installed. Install its package (" +
         packageOf(library) + " on Debian), or record WAV.";
}

}  // namespace

const AudrelAacFunctions* aacFunctionsOf(const std::filesystem::path& file, std::string* problem) {
  if (file.empty()) {
    *problem = std::string("A part of Audrel, ") + fileName +
               ", was not found. Install Audrel again, or record WAV.";
    return nullptr;
  }
  // The module itself is linked to bind at once, so a call of its own that FFmpeg lacks shows here.
  // What its ninety libraries call among themselves can wait until it is called, most of it
  // forever.
  void* module = dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (module == nullptr) {
    const char* message = dlerror();  // NOLINT(concurrency-mt-unsafe): each thread has its own
    *problem = loadingProblem(message, file);
    return nullptr;
  }
  const auto entry = reinterpret_cast<AudrelAacEntry>(dlsym(module, audrelAacEntryName));
  const AudrelAacFunctions* functions = entry == nullptr ? nullptr : entry();
  if (functions == nullptr || functions->interfaceNumber != audrelAacInterface) {
    *problem = "Audrel was updated while it ran: quit it and start it again";
    return nullptr;
  }
  return functions;
}

const AudrelAacFunctions* aacFunctions(std::string* problem) {
  static std::atomic<const AudrelAacFunctions*> loaded = nullptr;
  const AudrelAacFunctions* functions = loaded;
  if (functions == nullptr) {
    functions = aacFunctionsOf(partOfProgram(fileName, AUDREL_MODULES_FROM_PROGRAM), problem);
    if (functions != nullptr) {
      loaded = functions;
    }
  }
  return functions;
}

}  // namespace audrel::linuxos
