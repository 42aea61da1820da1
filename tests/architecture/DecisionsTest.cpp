#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "tests/architecture/SourceTree.h"

namespace audrel::architecture {
namespace {

/// What `pattern` captures in `text`: a test's suite, then its name.
std::set<std::string> testsNamedIn(const std::string& text, const std::regex& pattern) {
  std::set<std::string> names;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    names.insert((*match)[1].str() + "." + (*match)[2].str());
  }
  return names;
}

std::set<std::string> testsInTheTree() {
  static const std::regex definition(R"(\bTEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\))");
  std::set<std::string> all;
  for (const Source& source : sourcesInTheTree()) {
    if (source.path.starts_with("tests/")) {
      all.merge(testsNamedIn(source.text, definition));
    }
  }
  return all;
}

TEST(Decisions, areEachHeldByATestThatExists) {
  std::ifstream stream(AUDREL_SOURCE_DIR "/docs/decisions.md");
  const std::string decisions{std::istreambuf_iterator<char>(stream), {}};
  static const std::regex mention(R"(`(\w+)\.(?!cpp`|h`|md`)(\w+)`)");
  const auto named = testsNamedIn(decisions, mention);
  EXPECT_GE(named.size(), 20U);
  const auto existing = testsInTheTree();
  for (const std::string& test : named) {
    EXPECT_TRUE(existing.contains(test)) << "docs/decisions.md names " << test;
  }
}

TEST(Decisions, eachRowNamesATest) {
  std::ifstream stream(AUDREL_SOURCE_DIR "/docs/decisions.md");
  static const std::regex row(R"(\|.*\|.*\|.*`\w+\.\w+`.*\|)");
  int rows = 0;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("| ") && !line.starts_with("| What ")) {
      EXPECT_TRUE(std::regex_match(line, row)) << line;
      ++rows;
    }
  }
  EXPECT_GE(rows, 20);
}

}  // namespace
}  // namespace audrel::architecture
