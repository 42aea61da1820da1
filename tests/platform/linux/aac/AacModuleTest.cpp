#include "platform/linux/aac/AacModule.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <link.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/KeptLog.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// The files that are loaded into this process.
std::vector<std::string> loadedFiles() {
  std::vector<std::string> files;
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* into) {
        static_cast<std::vector<std::string>*>(into)->emplace_back(info->dlpi_name);
        return 0;
      },
      &files);
  return files;
}

/// DT_FLAGS of a loaded file; 0 where there are none.
std::uint64_t dynamicFlags(const void* addressInIt) {
  Dl_info info;
  void* map = nullptr;
  dladdr1(addressInIt, &info, &map, RTLD_DL_LINKMAP);
  const auto* entry = static_cast<const link_map*>(map)->l_ld;
  while (entry->d_tag != DT_NULL && entry->d_tag != DT_FLAGS) {
    ++entry;
  }
  return entry->d_un.d_val;
}

/// Why the module in that file cannot be used.
std::string problemOf(const std::filesystem::path& file) {
  std::string problem;
  EXPECT_EQ(aacFunctionsOf(file, &problem), nullptr);
  return problem;
}

TEST(AacModule, isLoadedForTheFirstM4AAndStays) {
  const support::TemporaryFolder folder;
  support::KeptLog log;
  AudioFramework framework(log);
  const test::Audio audio = test::noise(1);
  test::openFile(framework, folder.path() / "a.wav", test::wavSettings(audio));
  EXPECT_THAT(loadedFiles(), Not(Contains(HasSubstr("libavcodec"))));
  test::openFile(framework, folder.path() / "a.m4a", test::m4aSettings(audio));
  EXPECT_THAT(loadedFiles(), Contains(HasSubstr("libavcodec")));

  std::string problem;
  const AudrelAacFunctions* functions = aacFunctions(&problem);
  ASSERT_NE(functions, nullptr) << problem;
  EXPECT_EQ(functions->interfaceNumber, audrelAacInterface);
  EXPECT_EQ(aacFunctions(&problem), functions);
}

TEST(AacModule, findsWhatItCallsWhenItIsLoadedAndNotWhenItCallsIt) {
  std::string problem;
  const AudrelAacFunctions* functions = aacFunctions(&problem);
  ASSERT_NE(functions, nullptr) << problem;
  EXPECT_NE(dynamicFlags(functions) & DF_BIND_NOW, 0U);
}

TEST(AacModule, isNotNeededByTheProgramsThemselves) {
  for (const char* program : {AUDREL, AUDREL_RECORD}) {
    const auto list = support::ChildProcess::start(
        {.arguments = {program}, .environment = {{"LD_TRACE_LOADED_OBJECTS", "1"}}});
    ASSERT_NE(list, nullptr);
    std::vector<std::string> libraries;
    while (const auto line = list->readLine(std::chrono::seconds(10))) {
      libraries.push_back(*line);
    }
    EXPECT_THAT(libraries, Contains(HasSubstr("libpipewire")));
    EXPECT_THAT(libraries, Not(Contains(HasSubstr("libav"))));
  }
}

TEST(AacModule, ofAnotherInterfaceAsksForARestart) {
  const std::string text = "Audrel was updated while it ran: quit it and start it again";
  EXPECT_EQ(problemOf(OTHER_INTERFACE), text);
  EXPECT_EQ(problemOf(WITHOUT_ENTRY), text);
}

TEST(AacModule, thatIsMissingIsNamed) {
  EXPECT_EQ(problemOf(""),
            "A part of Audrel, audrel-aac.so, was not found. Install Audrel again, or record WAV.");
}

TEST(AacModule, whoseLibraryIsMissingNamesItAndItsPackage) {
  EXPECT_EQ(problemOf(WITHOUT_LIBRARY),
            "M4A needs libaudrel-gone.so.7, which is not installed. Install its package "
            "(libaudrel-gone7 on Debian), or record WAV.");
}

TEST(AacModule, thatIsBrokenSaysWhatTheSystemSays) {
  const support::TemporaryFolder folder;
  const auto file = folder.path() / "audrel-aac.so";
  std::ofstream(file) << "no library";
  EXPECT_EQ(problemOf(file), "The AAC encoder could not be loaded (" + file.string() +
                                 ": file too short). Install Audrel again, or record WAV.");
}

}  // namespace
}  // namespace audrel::linuxos
