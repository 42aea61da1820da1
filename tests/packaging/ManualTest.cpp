#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>

#include "model/Preferences.h"
#include "platform/linux/session/UserDefaults.h"
#include "tests/fakes/FakeSystem.h"
#include "tests/packaging/InstalledTree.h"
#include "tests/support/KeptLog.h"
#include "tests/support/RunTool.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::packaging {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string manualOf(const std::string& program) {
  return contentsOf(InstalledTree::shared().prefix() / "share/man/man1" / (program + ".1"));
}

/// What stands below the heading, up to the next one.
std::string section(const std::string& manual, const std::string& heading) {
  const auto start = manual.find("\n.Sh " + heading + "\n");
  return start == std::string::npos
             ? ""
             : manual.substr(start, manual.find("\n.Sh ", start + 1) - start);
}

/// What `pattern` captures in `text`, each once.
std::set<std::string> captures(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::set<std::string> all;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    all.insert((*match)[1].str());
  }
  return all;
}

/// The options that have an entry of their own: "-l", "--list".
std::set<std::string> optionsOfManual(const std::string& program) {
  std::string entries;
  for (const std::string& entry : captures(manualOf(program), "\n\\.It (Fl .*)")) {
    entries += entry + "\n";
  }
  std::set<std::string> options;
  for (const std::string& option : captures(entries, "Fl (-?[A-Za-z]+)")) {
    options.insert("-" + option);
  }
  return options;
}

std::set<std::string> optionsOfHelp(const std::string& program) {
  const auto help =
      support::runTool({InstalledTree::shared().prefix() / "bin" / program, "--help"});
  return captures(help.output, "\\s(--?[A-Za-z]+)");
}

class Manual : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(InstalledTree::shared().isInstalled()); }
};

TEST_F(Manual, namesTheOptionsThatTheProgramNames) {
  for (const char* program : {"audrel", "audrel-record"}) {
    EXPECT_THAT(optionsOfHelp(program), Not(IsEmpty()));
    EXPECT_EQ(optionsOfManual(program), optionsOfHelp(program));
  }
}

TEST_F(Manual, ofEachProgramNamesTheOther) {
  EXPECT_THAT(section(manualOf("audrel"), "SEE ALSO"), HasSubstr("\n.Xr audrel-record 1"));
  EXPECT_THAT(section(manualOf("audrel-record"), "SEE ALSO"), HasSubstr("\n.Xr audrel 1"));
}

TEST_F(Manual, namesTheSettingsThatAreStored) {
  const support::TemporaryFolder folder;
  fakes::Journal journal;
  fakes::FakeFileManager fileManager(journal);
  linuxos::UserDefaults defaults(folder / "defaults.ini", std::make_shared<support::KeptLogger>());
  Preferences preferences(defaults, fileManager);
  preferences.setFormat(RecordingFormat::wav);
  preferences.setLastRecordingURL("/recording.wav");
  preferences.setLastSourceHint(Preferences::SourceHint{"org.example.Player", "Player"});

  const std::string files = section(manualOf("audrel"), "FILES");
  const std::string stored = contentsOf(folder / "defaults.ini");
  const auto keys = captures(stored, "\n(\\w+)=");
  EXPECT_EQ(keys.size(), 4U) << stored;
  for (const std::string& key : keys) {
    EXPECT_THAT(files, HasSubstr("\n.It Va " + key + "\n"));
  }
  EXPECT_THAT(files, HasSubstr("\n.Ql " + stored.substr(0, stored.find('\n'))));
}

TEST_F(Manual, namesTheValuesOfTheFormat) {
  const std::string files = section(manualOf("audrel"), "FILES");
  const auto start = files.find("\n.It Va format\n");
  ASSERT_NE(start, std::string::npos);
  const std::string entry = files.substr(start, files.find("\n.It", start + 1) - start);
  std::set<std::string> formats;
  for (const RecordingFormat format : RecordingFormat::allCases()) {
    formats.emplace(format.rawValue());
  }
  EXPECT_EQ(captures(entry, "\n\\.Ql (\\w+)"), formats);
}

}  // namespace
}  // namespace audrel::packaging
