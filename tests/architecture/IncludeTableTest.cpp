#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>

#include "tests/architecture/IncludeRules.h"
#include "tests/architecture/SourceTree.h"

namespace audrel::architecture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(IncludeTable, isKeptByEverySourceInTheTree) {
  std::map<std::string, int> files;
  for (const Source& source : sourcesInTheTree()) {
    EXPECT_THAT(violations(source), IsEmpty());
    ++files[source.path.substr(0, source.path.find('/'))];
  }
  // The rooms were found at all.
  for (const char* room : {"model", "engine", "discovery", "cli", "platform", "tests"}) {
    EXPECT_GE(files[room], 2) << room;
  }
}

struct Case {
  const char* path;
  const char* line;
  const char* objection;
};

void PrintTo(const Case& made, std::ostream* stream) {
  *stream << made.path << " " << made.line;
}

class Violation : public testing::TestWithParam<Case> {};

TEST_P(Violation, isReportedWithItsLine) {
  const auto& [path, line, objection] = GetParam();
  EXPECT_THAT(violations({path, std::string("#pragma once\n\n") + line + "\n"}),
              ElementsAre(std::string(path) + ":3: " + objection));
}

constexpr Case forbidden[] = {
    {"model/A.h", "#include \"engine/B.h\"", "model may not include engine/B.h"},
    {"model/A.h", "#include \"platform/linux/x/B.h\"",
     "model may not include platform/linux/x/B.h"},
    {"engine/A.cpp", "#include \"discovery/B.h\"", "engine may not include discovery/B.h"},
    {"engine/A.cpp", "  #  include   \"ui/B.h\"  // why", "engine may not include ui/B.h"},
    {"engine/A.cpp", "#include \"tests/fakes/B.h\"", "engine may not include tests/fakes/B.h"},
    {"engine/A.cpp", "#include \"B.h\"", "engine may not include B.h"},
    {"engine/A.cpp", "#include \"../platform/CoreAudio.h\"",
     "engine may not include ../platform/CoreAudio.h"},
    {"discovery/A.cpp", "#include \"engine/B.h\"", "discovery may not include engine/B.h"},
    {"ui/A.cpp", "#include \"app/B.h\"", "ui may not include app/B.h"},
    {"ui/A.cpp", "#include \"engine/B.h\"", "ui may not include engine/B.h"},
    {"app/A.cpp", "#include \"cli/B.h\"", "app may not include cli/B.h"},
    {"app/main.cpp", "#include \"platform/macos/B.h\"", "app may not include platform/macos/B.h"},
    {"cli/main.cpp", "#include \"platform/linux/x/B.h\"",
     "cli may not include platform/linux/x/B.h"},
    {"cli/A.cpp", "#include \"platform/NativePlatform.h\"",
     "only a main.cpp may include platform/NativePlatform.h"},
    {"engine/main.cpp", "#include \"platform/NativePlatform.h\"",
     "only a main.cpp may include platform/NativePlatform.h"},
    {"platform/A.h", "#include \"model/B.h\"", "platform/*.h may not include model/B.h"},
    {"platform/A.h", "#include \"platform/linux/B.h\"",
     "platform/*.h may not include platform/linux/B.h"},
    {"platform/linux/x/A.cpp", "#include \"engine/B.h\"",
     "platform/linux may not include engine/B.h"},
    {"platform/linux/x/A.cpp", "#include \"platform/macos/B.h\"",
     "platform/linux may not include platform/macos/B.h"},
    {"platform/macos/A.mm", "#import \"model/B.h\"", "platform/macos may not include model/B.h"},
    {"attic/A.cpp", "#include \"model/B.h\"", "is in no known room"},
    {"model/A.cpp", "#include <pipewire/pipewire.h>",
     "model lives on the standard library alone, but includes <pipewire/pipewire.h>"},
    {"engine/A.cpp", "#include <unistd.h>",
     "engine lives on the standard library alone, but includes <unistd.h>"},
    {"ui/A.cpp", "#ifdef __APPLE__", "ui is portable, but asks for __APPLE__"},
    {"engine/A.cpp", "#if defined(__linux__) && 1", "engine is portable, but asks for __linux__"},
    {"cli/A.cpp", "#  elif !defined(TARGET_OS_MAC)", "cli is portable, but asks for TARGET_OS_MAC"},
    {"app/A.h", "#ifndef _WIN32", "app is portable, but asks for _WIN32"},
};

INSTANTIATE_TEST_SUITE_P(MadeUp, Violation, testing::ValuesIn(forbidden));

class Allowed : public testing::TestWithParam<Case> {};

TEST_P(Allowed, isNotReported) {
  EXPECT_THAT(violations({GetParam().path, GetParam().line}), IsEmpty());
}

constexpr Case allowed[] = {
    {"model/A.cpp", "#include \"model/A.h\"", ""},
    {"model/A.cpp", "#include \"platform/Foundation.h\"", ""},
    {"model/A.cpp", "#include <filesystem>", ""},
    {"engine/A.cpp", "#include \"model/B.h\"", ""},
    {"discovery/A.cpp", "#include <sys/types.h>", ""},
    {"ui/A.cpp", "#include \"model/B.h\"", ""},
    {"app/A.cpp", "#include \"discovery/B.h\"", ""},
    {"app/main.cpp", "#include \"platform/NativePlatform.h\"", ""},
    {"cli/main.cpp", "#include \"platform/NativePlatform.h\"", ""},
    {"cli/A.cpp", "#include <unistd.h>", ""},
    {"platform/A.h", "#include \"platform/B.h\"", ""},
    {"platform/linux/x/A.cpp", "#include \"platform/linux/y/B.h\"", ""},
    {"platform/linux/x/A.cpp", "#include \"platform/NativePlatform.h\"", ""},
    {"platform/linux/x/A.cpp", "#ifdef __linux__", ""},
    {"tests/engine/A.cpp", "#include \"platform/linux/x/B.h\"", ""},
    {"bench/A.cpp", "#include \"engine/B.h\"", ""},
    {"engine/A.cpp", "// #include \"ui/B.h\"", ""},
};

INSTANTIATE_TEST_SUITE_P(MadeUp, Allowed, testing::ValuesIn(allowed));

}  // namespace
}  // namespace audrel::architecture
