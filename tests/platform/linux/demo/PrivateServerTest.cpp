#include "platform/linux/demo/PrivateServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/fakes/ScopedVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

using testing::StartsWith;

namespace fs = std::filesystem;

/// In a folder of its own, which the test stands in.
struct PrivateServerTest : testing::Test {
  support::TemporaryFolder folder;
  const fs::path before = fs::current_path();
  std::string failure;

  PrivateServerTest() { fs::current_path(folder.path()); }
  ~PrivateServerTest() override { fs::current_path(before); }
  PrivateServerTest(const PrivateServerTest&) = delete;
  PrivateServerTest& operator=(const PrivateServerTest&) = delete;
};

TEST_F(PrivateServerTest, leavesNothingInTheFolderThatOneStandsIn) {
  const auto server = PrivateServer::start(&failure);
  ASSERT_NE(server, nullptr) << failure;
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(PrivateServerTest, writesNothingWhereNoTemporaryFolderCanBeMade) {
  std::ofstream("pipewire.conf") << "mine";
  for (const char* place : {"/nowhere/at/all", "/proc"}) {
    const fakes::ScopedVariable variable("TMPDIR", place);
    EXPECT_EQ(PrivateServer::start(&failure), nullptr);
    EXPECT_THAT(failure, StartsWith("The demo could not write its configuration to a temporary "
                                    "folder: "));
  }
  std::string content;
  std::ifstream("pipewire.conf") >> content;
  EXPECT_EQ(content, "mine");
}

TEST_F(PrivateServerTest, saysThatTheServerEndedAtOnce) {
  const fs::path program = folder / "pipewire";
  std::ofstream(program) << "#!/bin/sh\nexit 1\n";
  fs::permissions(program, fs::perms::owner_all);
  const fakes::ScopedVariable path("PATH", (folder.path().string() + ":/usr/bin:/bin").c_str());
  EXPECT_EQ(PrivateServer::start(&failure), nullptr);
  EXPECT_EQ(failure,
            "The demo's audio server ended at once: run \"pipewire -v\" to see what it misses.");
}

}  // namespace
}  // namespace audrel::linuxos
