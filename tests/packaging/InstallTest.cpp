#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "platform/Identity.h"
#include "tests/packaging/InstalledTree.h"

namespace audrel::packaging {
namespace {

using testing::ElementsAre;
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
           "share/bash-completion/completions/audrel-record",
           "share/dbus-1/services/io.github.audrel.Audrel.service",
           "share/fish/vendor_completions.d/audrel-record.fish",
           "share/icons/hicolor/scalable/apps/io.github.audrel.Audrel.svg",
           "share/icons/hicolor/scalable/status/io.github.audrel.Audrel-idle-symbolic.svg",
           "share/icons/hicolor/scalable/status/io.github.audrel.Audrel-recording.svg",
           "share/icons/hicolor/scalable/status/io.github.audrel.Audrel-warning.svg",
           "share/icons/hicolor/symbolic/apps/io.github.audrel.Audrel-symbolic.svg",
           "share/man/man1/audrel-record.1",
           "share/man/man1/audrel.1",
           "share/metainfo/io.github.audrel.Audrel.metainfo.xml",
           "share/zsh/site-functions/_audrel-record",
       }) {
    expected.push_back(std::string(AUDREL_INSTALL_PREFIX "/") + file);
  }
  for (const char* size : {"16", "22", "24", "32", "48", "64", "128", "256"}) {
    expected.push_back(std::string(AUDREL_INSTALL_PREFIX "/share/icons/hicolor/") + size + "x" +
                       size + "/apps/io.github.audrel.Audrel.png");
  }
  EXPECT_THAT(tree.files(), UnorderedElementsAreArray(expected));
}

TEST_F(InstallTest, theProgramsCanBeRun) {
  for (const char* program : {"bin/audrel", "bin/audrel-record", "libexec/audrel/audrel-alert"}) {
    EXPECT_EQ(access((tree.prefix() / program).c_str(), X_OK), 0) << program;
  }
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

}  // namespace
}  // namespace audrel::packaging
