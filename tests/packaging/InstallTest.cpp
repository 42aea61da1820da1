#include <glib.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "platform/Identity.h"
#include "tests/packaging/InstalledTree.h"
#include "tests/packaging/KeyFile.h"
#include "tests/support/RunTool.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::packaging {
namespace {

namespace fs = std::filesystem;

using support::runTool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

class InstallTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(tree.isInstalled()); }

  const InstalledTree& tree = InstalledTree::shared();
};

TEST_F(InstallTest, everythingIsWhereTheConventionsWantIt) {
  std::vector<std::string> expected;
  for (const char* file : {
           "bin/audrel",
           "bin/audrel-record",
           "libexec/audrel/audrel-alert",
           "share/applications/io.github.audrel.Audrel.desktop",
           "share/bash-completion/completions/audrel",
           "share/bash-completion/completions/audrel-record",
           "share/dbus-1/services/io.github.audrel.Audrel.service",
           "share/doc/Audrel/CHANGELOG.md",
           "share/doc/Audrel/LICENSE",
           "share/fish/vendor_completions.d/audrel-record.fish",
           "share/fish/vendor_completions.d/audrel.fish",
           "share/icons/hicolor/scalable/apps/io.github.audrel.Audrel.svg",
           "share/icons/hicolor/scalable/status/io.github.audrel.Audrel-idle-symbolic.svg",
           "share/icons/hicolor/scalable/status/io.github.audrel.Audrel-recording.svg",
           "share/icons/hicolor/scalable/status/io.github.audrel.Audrel-warning.svg",
           "share/icons/hicolor/symbolic/apps/io.github.audrel.Audrel-symbolic.svg",
           "share/man/man1/audrel-record.1",
           "share/man/man1/audrel.1",
           "share/metainfo/io.github.audrel.Audrel.metainfo.xml",
           "share/zsh/site-functions/_audrel",
           "share/zsh/site-functions/_audrel-record",
       }) {
    expected.push_back(std::string(AUDREL_INSTALL_PREFIX "/") + file);
  }
  for (const char* size : {"16", "22", "24", "32", "48", "64", "128", "256"}) {
    expected.push_back(std::string(AUDREL_INSTALL_PREFIX "/share/icons/hicolor/") + size + "x" +
                       size + "/apps/io.github.audrel.Audrel.png");
  }
  expected.emplace_back(AUDREL_INSTALL_LIBDIR "/audrel/audrel-aac.so");
  EXPECT_THAT(tree.files(), UnorderedElementsAreArray(expected));
}

TEST_F(InstallTest, theProgramsCanBeRun) {
  for (const char* program : {"bin/audrel", "bin/audrel-record", "libexec/audrel/audrel-alert"}) {
    EXPECT_EQ(access((tree.prefix() / program).c_str(), X_OK), 0) << program;
  }
}

std::vector<std::string> recordingTo(const fs::path& program, const fs::path& file) {
  return {program, "--demo", "--duration", "1", "--output", file};
}

TEST_F(InstallTest, theProgramRecordsWithTheModuleThatIsInstalledWithIt) {
  const support::TemporaryFolder folder;
  const fs::path file = folder.path() / "melody.m4a";
  EXPECT_EQ(runTool(recordingTo(tree.prefix() / "bin/audrel-record", file)).exitCode, 0);
  EXPECT_GT(fs::file_size(file), 10'000U);
}

TEST_F(InstallTest, aProgramWithoutItsModuleRecordsWAVAlone) {
  const support::TemporaryFolder folder;
  const fs::path program = folder.path() / "audrel-record";
  fs::copy_file(tree.prefix() / "bin/audrel-record", program);
  const auto failed = runTool(recordingTo(program, folder.path() / "melody.m4a"));
  EXPECT_NE(failed.exitCode, 0);
  EXPECT_THAT(failed.errors, HasSubstr("A part of Audrel, audrel-aac.so, was not found. Install "
                                       "Audrel again, or record WAV."));
  EXPECT_FALSE(fs::exists(folder.path() / "melody.m4a"));
  EXPECT_EQ(runTool(recordingTo(program, folder.path() / "melody.wav")).exitCode, 0);
}

/// The texts of the elements whose tag is `tag`, attributes included.
std::vector<std::string> elementsOf(const std::string& metainfo, const std::string& tag) {
  const std::regex element("<" + tag + ">([^<]*)<");
  std::vector<std::string> texts;
  for (std::sregex_iterator match(metainfo.begin(), metainfo.end(), element), end; match != end;
       ++match) {
    texts.push_back((*match)[1].str());
  }
  return texts;
}

TEST_F(InstallTest, theMetainfoNamesWhatIsInstalled) {
  std::ifstream stream(tree.prefix() / "share/metainfo/io.github.audrel.Audrel.metainfo.xml");
  const std::string metainfo{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_THAT(elementsOf(metainfo, "id"), ElementsAre(identity::bundleIdentifier));
  EXPECT_THAT(elementsOf(metainfo, "launchable type=\"desktop-id\""),
              ElementsAre(std::string(identity::bundleIdentifier) + ".desktop"));
  EXPECT_THAT(elementsOf(metainfo, "binary"), ElementsAre("audrel", "audrel-record"));
  EXPECT_THAT(elementsOf(metainfo, "dbus type=\"user\""), ElementsAre(identity::bundleIdentifier));
  EXPECT_NE(metainfo.find(std::string("<release version=\"") + identity::version + "\""),
            std::string::npos);
}

/// What is installed under another prefix than the build was configured for.
class OtherPrefix : public testing::Test {
 protected:
  void SetUp() override { install(prefix.path()); }

  /// As somebody in the folder `prefix` writes it.
  void install(const std::string& path) {
    ASSERT_EQ(runTool({AUDREL_CMAKE, "-E", "chdir", prefix.path(), AUDREL_CMAKE, "--install",
                       AUDREL_BINARY_DIR, "--prefix", path})
                  .exitCode,
              0);
  }

  /// What the session bus, which takes the line apart as a shell does, starts where that folder is
  /// the prefix.
  static std::vector<std::string> startedFrom(const fs::path& folder) {
    const KeyFile service(folder / "share/dbus-1/services/io.github.audrel.Audrel.service");
    gchar** words = nullptr;
    g_shell_parse_argv(service.text("D-BUS Service", "Exec").c_str(), nullptr, &words, nullptr);
    std::vector<std::string> command;
    for (gchar** word = words; word != nullptr && *word != nullptr; ++word) {
      command.emplace_back(*word);
    }
    g_strfreev(words);
    return command;
  }

  std::vector<fs::path> files() const {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(prefix.path())) {
      if (!entry.is_directory()) {
        files.push_back(entry.path());
      }
    }
    return files;
  }

  const support::TemporaryFolder prefix;
};

TEST_F(OtherPrefix, isThatOfTheProgramThatTheBusStarts) {
  EXPECT_THAT(startedFrom(prefix.path()), ElementsAre(prefix / "bin/audrel"));
}

TEST_F(OtherPrefix, mayBeWrittenFromTheFolderOfWhoInstalls) {
  install("below/it");
  EXPECT_THAT(startedFrom(prefix / "below/it"), ElementsAre(prefix / "below/it/bin/audrel"));
}

TEST_F(OtherPrefix, mayHaveSpaces) {
  install("my programs");
  EXPECT_THAT(startedFrom(prefix / "my programs"), ElementsAre(prefix / "my programs/bin/audrel"));
}

/// The line of the README that removes what was installed, for this build and without root.
std::string uninstallation() {
  std::ifstream readme("README.md");
  const std::regex command("sudo (xargs .*<)build/run(/install_manifest\\.txt).*");
  std::smatch match;
  for (std::string line; std::getline(readme, line);) {
    if (std::regex_match(line, match, command)) {
      return match[1].str() + AUDREL_BINARY_DIR + match[2].str();
    }
  }
  return "false";
}

TEST_F(OtherPrefix, keepsNoFileAfterTheCommandOfTheReadme) {
  ASSERT_FALSE(files().empty());
  EXPECT_EQ(runTool({"sh", "-c", uninstallation()}).exitCode, 0);
  EXPECT_THAT(files(), testing::IsEmpty());
}

}  // namespace
}  // namespace audrel::packaging
