#include "platform/linux/pipewire/ProcessTable.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/pipewire/ProcFiles.h"
#include "platform/linux/pipewire/ShownName.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos {
namespace {

/// A child that waits to be ended.
class Child {
 public:
  Child() : pid_(fork()) {
    if (pid_ == 0) {
      pause();
      _exit(0);
    }
  }
  ~Child() { end(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void end() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
      pid_ = -1;
    }
  }
  pid_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

struct ProcessTableTest : testing::Test {
  Graph graph;
  ProcessTable table;

  void addStream(std::uint32_t id, pid_t pid, Properties properties = {}) {
    const std::uint32_t clientId = 1000 + id;
    graph.clients[clientId] = {.serial = clientId,
                               .properties = {{"pipewire.sec.pid", std::to_string(pid)}},
                               .isDetailed = true};
    GraphNode node;
    node.serial = id;
    node.clientId = clientId;
    node.mediaClass = "Stream/Output/Audio";
    node.properties = std::move(properties);
    node.isDetailed = true;
    graph.nodes[id] = std::move(node);
  }
};

TEST_F(ProcessTableTest, severalStreamsOfOneProcessAreOneObject) {
  addStream(1, getpid());
  addStream(2, getpid());
  EXPECT_EQ(table.playing(graph).size(), 1U);
}

TEST_F(ProcessTableTest, processesAreInTheOrderOfTheirOldestStream) {
  const Child child;
  addStream(5, getpid());
  addStream(3, child.pid());
  const auto playing = table.playing(graph);
  ASSERT_EQ(playing.size(), 2U);
  EXPECT_EQ(playing[0]->owner.pid, child.pid());
  EXPECT_EQ(playing[1]->owner.pid, getpid());
}

TEST_F(ProcessTableTest, anObjectStaysTheSameWhileItsProcessLives) {
  addStream(1, getpid());
  const auto id = table.playing(graph).front()->id;
  graph.nodes.clear();
  EXPECT_TRUE(table.playing(graph).empty());
  addStream(9, getpid());
  EXPECT_EQ(table.playing(graph).front()->id, id);
}

TEST_F(ProcessTableTest, anotherRunOfTheProgramGivesALivingProcessTheSameObject) {
  addStream(1, getpid());
  ProcessTable another;
  EXPECT_EQ(table.playing(graph).front()->id, another.playing(graph).front()->id);
}

TEST_F(ProcessTableTest, idsNeverRepeatAndStayOutOfTheReservedRange) {
  std::set<CA::AudioObjectID> ids;
  for (std::uint32_t i = 1; i <= 2000; ++i) {
    graph.nodes.clear();
    graph.clients.clear();
    addStream(i, 0);  // Of no process, so that each connection is an owner of its own.
    const auto playing = table.playing(graph);
    ASSERT_EQ(playing.size(), 1U);
    EXPECT_GE(playing.front()->id, ProcessTable::reservedIDs);
    EXPECT_TRUE(ids.insert(playing.front()->id).second);
  }
}

TEST_F(ProcessTableTest, aProcessWithoutStreamsIsAliveUntilItEnds) {
  Child child;
  addStream(1, child.pid());
  const auto* process = table.playing(graph).front();
  graph.nodes.clear();
  EXPECT_TRUE(table.isAlive(*process, graph));
  child.end();
  EXPECT_FALSE(table.isAlive(*process, graph));
}

TEST_F(ProcessTableTest, anOwnerKnownByItsConnectionIsAliveWhileItHasStreams) {
  addStream(1, 0);
  const auto* process = table.playing(graph).front();
  EXPECT_TRUE(table.isAlive(*process, graph));
  graph.nodes.clear();
  EXPECT_FALSE(table.isAlive(*process, graph));
}

TEST_F(ProcessTableTest, whatIsKnownOfManyThatAreGoneIsForgottenExceptOfThoseThatAreNeeded) {
  const Child running;
  addStream(5001, running.pid());
  const auto idOfRunning = table.playing(graph).front()->id;
  graph.nodes.clear();
  std::vector<CA::AudioObjectID> ids;
  for (std::uint32_t i = 1; i <= 1000; ++i) {
    graph.nodes.clear();
    graph.clients.clear();
    addStream(i, 0);  // Of no process, so that each connection is an owner of its own.
    ids.push_back(table.playing(graph).front()->id);
    table.forgetGone(graph, [&](auto id) { return id == ids.front(); });
    ASSERT_LE(table.size(), 100U);
  }
  EXPECT_NE(table.find(ids.front()), nullptr) << "it is needed";
  EXPECT_NE(table.find(idOfRunning), nullptr) << "it may play again";
  EXPECT_NE(table.find(ids.back()), nullptr) << "it plays";
  EXPECT_EQ(table.find(ids[1]), nullptr);
}

TEST_F(ProcessTableTest, aConnectionThatHasClosedItsStreamsIsNotForgotten) {
  addStream(1, 0);
  const auto id = table.playing(graph).front()->id;
  graph.nodes.clear();
  for (std::uint32_t i = 2; i <= 300; ++i) {
    addStream(i, 0);
    table.playing(graph);
    graph.nodes.clear();
    graph.clients.erase(1000 + i);
    table.forgetGone(graph, [](auto) { return false; });
  }
  EXPECT_NE(table.find(id), nullptr);
}

TEST_F(ProcessTableTest, namesAreFitToBeShownWhereverTheyComeFrom) {
  addStream(1, getpid(),
            {{"application.name", "a\x1b[31m\u202ec\xff\nd"}, {"application.id", "\x07"}});
  const auto* process = table.playing(graph).front();
  EXPECT_EQ(process->name, "a\\x1b[31m\\u202ec\\xff\\x0ad");
  EXPECT_EQ(process->bundleID, "\\x07");
  addStream(2, 0, {{"application.name", std::string(200'000, 'x')}});
  graph.nodes.erase(1);
  EXPECT_EQ(table.playing(graph).front()->name, std::string(256, 'x'));
}

TEST_F(ProcessTableTest, aLongDeclarationMakesNoLongKey) {
  addStream(1, 0, {{"application.process.machine-id", std::string(200'000, 'x')}});
  EXPECT_LT(table.playing(graph).front()->owner.key.size(), 2000U);
}

TEST(ShownName, isCutByCharactersAndNotByBytes) {
  std::string notes;
  for (int i = 0; i < 300; ++i) {
    notes += "🎵";
  }
  EXPECT_EQ(shownName(notes), notes.substr(0, 256 * std::string("🎵").size()));
  EXPECT_EQ(shownName("Télé 音楽"), "Télé 音楽");
  EXPECT_EQ(shownName(""), "");
}

TEST_F(ProcessTableTest, streamsWhoseDetailsHaveNotArrivedWait) {
  addStream(1, getpid());
  graph.nodes[1].isDetailed = false;
  EXPECT_TRUE(table.playing(graph).empty());
  graph.nodes[1].isDetailed = true;
  graph.clients[1001].isDetailed = false;
  EXPECT_TRUE(table.playing(graph).empty());
}

TEST_F(ProcessTableTest, anUnknownApplicationIsWhatItCallsItself) {
  addStream(1, getpid(), {{"application.name", "My Player"}});
  const auto* process = table.playing(graph).front();
  EXPECT_EQ(process->name, "My Player");
  EXPECT_EQ(process->bundleID, "");
  EXPECT_EQ(table.findPid(getpid()), process);
  EXPECT_EQ(table.find(process->id), process);
  EXPECT_EQ(table.find(1), nullptr);
}

TEST_F(ProcessTableTest, aDeclaredIdentifierIsTheBundleIdentifier) {
  addStream(1, getpid(), {{"application.id", "org.example.NoSuchEntry"}});
  EXPECT_EQ(table.playing(graph).front()->bundleID, "org.example.NoSuchEntry");
}

TEST_F(ProcessTableTest, aDesktopEntryGivesNameAndIdentifierByTheDeclaredIdentifier) {
  addStream(1, getpid(), {{"application.id", "org.example.Tuner"}, {"application.name", "tuner"}});
  const auto* process = table.playing(graph).front();
  EXPECT_EQ(process->name, "Tuner, in English");
  EXPECT_EQ(process->bundleID, "org.example.Tuner");
}

TEST_F(ProcessTableTest, aDesktopEntryIsFoundByTheProgramThatItStartsBeforeADeclaredIdentifier) {
  addStream(1, getpid(), {{"application.name", "tests"}, {"application.id", "org.example.Bank"}});
  const auto* process = table.playing(graph).front();
  EXPECT_EQ(process->name, "tests");
  const std::filesystem::path entries = std::getenv("XDG_DATA_HOME");
  std::ofstream(entries / "applications/org.example.Tests.desktop")
      << "[Desktop Entry]\nType=Application\nName=The Tests\nExec=" << proc::executable(getpid())
      << " %U\n";
  ProcessTable fresh;
  // The library watches its folders and reads them again some time after a change.
  for (int tries = 0; tries < 50 && fresh.playing(graph).front()->name == "tests"; ++tries) {
    usleep(100'000);
    fresh = ProcessTable();
  }
  EXPECT_EQ(fresh.playing(graph).front()->name, "The Tests");
  EXPECT_EQ(fresh.playing(graph).front()->bundleID, "org.example.Tests");
  graph.nodes[1].properties["application.id"] = "org.example.Tuner";
  fresh = ProcessTable();
  EXPECT_EQ(fresh.playing(graph).front()->name, "The Tests") << "not what it says of itself";
  EXPECT_EQ(fresh.playing(graph).front()->bundleID, "org.example.Tests");
}

/// Desktop entries of the tests' own, in place before anything looks for one.
class OwnDesktopEntries : public testing::Environment {
 public:
  void SetUp() override {
    folder_.emplace();
    std::filesystem::create_directories(*folder_ / "applications");
    std::ofstream(*folder_ / "applications/org.example.Tuner.desktop")
        << "[Desktop Entry]\nType=Application\nName=Tuner, in English\nExec=true\n";
    setenv("XDG_DATA_HOME", folder_->path().c_str(), 1);
    setenv("LC_ALL", "C", 1);
  }
  void TearDown() override { folder_.reset(); }

 private:
  std::optional<support::TemporaryFolder> folder_;
};

[[maybe_unused]] const auto* const registered =
    testing::AddGlobalTestEnvironment(new OwnDesktopEntries);

}  // namespace
}  // namespace audrel::linuxos
