#include "platform/linux/pipewire/StreamOwner.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/linux/pipewire/ProcFiles.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Waiting.h"

namespace audrel::linuxos {
namespace {

const std::string ownPid = std::to_string(getpid());
const std::string ownBinary = std::filesystem::path(proc::executable(getpid())).filename();

GraphClient nativeClient() {
  GraphClient client;
  client.serial = 5;
  client.properties = {{"pipewire.sec.pid", ownPid}};
  return client;
}

/// Of the server for PulseAudio clients.
GraphClient pulseClient(const std::string& pid, const std::string& binary) {
  GraphClient client;
  client.serial = 6;
  client.properties = {{"pipewire.sec.pid", "1"},
                       {"application.process.id", pid},
                       {"application.process.binary", binary}};
  return client;
}

TEST(StreamOwner, ofANativeClientIsTheProcessThatTheKernelNames) {
  const GraphClient client = nativeClient();
  GraphNode node;
  node.properties["application.process.id"] = "1";
  const StreamOwner owner = ownerOf(node, &client, Broker::none);
  EXPECT_EQ(owner.pid, getpid());
  EXPECT_TRUE(owner.isPidVerified);
  EXPECT_EQ(owner.key, keyOfProcess(getpid()));
}

TEST(StreamOwner, ofANativeClientIsNobodyElseWhateverItAndItsStreamsDeclare) {
  const Properties forged = {{"client.api", "pipewire-pulse"},
                             {"application.process.id", std::to_string(getppid())},
                             {"application.process.binary", proc::commandName(getppid())},
                             {"pipewire.access", "flatpak"},
                             {"pipewire.access.portal.app_id", "org.example.Bank"}};
  GraphClient client = nativeClient();
  client.properties.insert(forged.begin(), forged.end());
  GraphNode node;
  node.properties = forged;
  const StreamOwner owner = ownerOf(node, &client, Broker::none);
  EXPECT_EQ(owner.key, keyOfProcess(getpid()));
  EXPECT_EQ(owner.portalApplication, "");
}

TEST(StreamOwner, ofAPulseClientIsTheProcessThatItDeclaresWhenThatRunsTheProgram) {
  const GraphClient client = pulseClient(ownPid, ownBinary);
  const StreamOwner owner = ownerOf({}, &client, Broker::pulseServer);
  EXPECT_EQ(owner.pid, getpid());
  EXPECT_TRUE(owner.isPidVerified);
}

TEST(StreamOwner, ofAPulseClientIsItsConnectionWhenThePidBelongsToAnotherProgram) {
  const GraphClient client = pulseClient(ownPid, "another-program");
  const StreamOwner owner = ownerOf({}, &client, Broker::pulseServer);
  EXPECT_FALSE(owner.isPidVerified);
  EXPECT_EQ(owner.pid, getpid()) << "as declared";
  EXPECT_NE(owner.key, keyOfProcess(getpid()));
}

TEST(StreamOwner, ofAPulseClientOfAnotherMachineIsItsConnection) {
  GraphClient client = pulseClient(ownPid, ownBinary);
  client.properties["application.process.machine-id"] = "0123456789abcdef0123456789abcdef";
  EXPECT_FALSE(ownerOf({}, &client, Broker::pulseServer).isPidVerified);
}

TEST(StreamOwner, ofAPulseClientThatDeclaresNothingIsItsConnectionAndNotTheServer) {
  GraphClient client;
  client.properties = {{"pipewire.sec.pid", ownPid}};
  const StreamOwner owner = ownerOf({}, &client, Broker::pulseServer);
  EXPECT_FALSE(owner.isPidVerified);
  EXPECT_EQ(owner.pid, getpid());
}

TEST(StreamOwner, ofASandboxedPulseClientIsItsConnectionWhateverPidItDeclares) {
  GraphClient client = pulseClient(ownPid, ownBinary);
  client.properties["pipewire.access.portal.app_id"] = "org.example.Player";
  const StreamOwner owner = ownerOf({}, &client, Broker::pulseServer);
  EXPECT_FALSE(owner.isPidVerified) << "the pid is one of the sandbox's";
  EXPECT_EQ(owner.portalApplication, "org.example.Player");
}

TEST(StreamOwner, ofAStreamIsNotWhomTheStreamItselfNamesAsThePortalsApplication) {
  const GraphClient client = nativeClient();
  GraphNode node;
  node.properties["pipewire.access.portal.app_id"] = "org.example.Bank";
  EXPECT_EQ(ownerOf(node, &client, Broker::sandboxPortal).portalApplication, "");
}

TEST(StreamOwner, ofAPortalConnectionIsTheConnectionAndNotThePortal) {
  GraphClient client = nativeClient();
  client.properties["pipewire.access.portal.app_id"] = "org.example.Player";
  GraphClient other = client;
  other.serial = 7;
  const StreamOwner owner = ownerOf({}, &client, Broker::sandboxPortal);
  EXPECT_FALSE(owner.isPidVerified);
  EXPECT_EQ(owner.portalApplication, "org.example.Player");
  EXPECT_NE(owner.key, ownerOf({}, &other, Broker::sandboxPortal).key);
}

TEST(StreamOwner, whoseProcessHasGoneIsItsConnection) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  GraphClient client = nativeClient();
  client.properties["pipewire.sec.pid"] = std::to_string(child);
  EXPECT_FALSE(ownerOf({}, &client, Broker::none).isPidVerified);
  EXPECT_FALSE(keyOfProcess(child));
}

TEST(StreamOwner, withoutAClientIsTheStreamItself) {
  GraphNode node;
  node.serial = 11;
  GraphNode other;
  other.serial = 12;
  EXPECT_NE(ownerOf(node, nullptr, Broker::none).key, ownerOf(other, nullptr, Broker::none).key);
}

GraphClient clientOfProcess(pid_t pid) {
  GraphClient client;
  client.properties = {{"pipewire.sec.pid", std::to_string(pid)}};
  return client;
}

TEST(Broker, isTheInstalledAudioServer) {
  const support::TemporaryFolder folder;
  std::ofstream(folder / "idle.conf") << "context.properties = {}\n";
  const auto server =
      support::ChildProcess::start({.arguments = {"pipewire-pulse", "-c", "idle.conf"},
                                    .environment = {{"PIPEWIRE_CONFIG_DIR", folder.path().string()},
                                                    {"XDG_RUNTIME_DIR", folder.path().string()}}});
  ASSERT_NE(server, nullptr);
  const GraphClient client = clientOfProcess(server->pid());
  EXPECT_TRUE(support::waitFor([&] { return brokerOf(&client) == Broker::pulseServer; }));
}

TEST(Broker, isNoProgramThatAUserGaveTheNameOfOne) {
  const support::TemporaryFolder folder;
  for (const char* name : {"pipewire", "pipewire-pulse", "xdg-desktop-portal"}) {
    const auto program = folder / name;
    std::filesystem::copy_file("/bin/sleep", program);
    // The copy is a user's, also when the tests run as root.
    constexpr uid_t nobody = 65534;
    ASSERT_TRUE(geteuid() != 0 || chown(program.c_str(), nobody, nobody) == 0);
    const auto impostor =
        support::ChildProcess::start({.arguments = {program.string(), "60"}, .environment = {}});
    ASSERT_NE(impostor, nullptr);
    ASSERT_TRUE(support::waitFor([&] { return proc::executable(impostor->pid()) == program; }));
    const GraphClient client = clientOfProcess(impostor->pid());
    EXPECT_EQ(brokerOf(&client), Broker::none) << name;
  }
}

TEST(Broker, isNobodyWithoutAProcess) {
  EXPECT_EQ(brokerOf(nullptr), Broker::none);
  const GraphClient client = clientOfProcess(getpid());
  EXPECT_EQ(brokerOf(&client), Broker::none);
}

TEST(OwnName, isTheStreamsWordBeforeItsClients) {
  GraphClient client = nativeClient();
  client.properties["application.name"] = "client";
  GraphNode node;
  node.name = "node";
  EXPECT_EQ(ownName(node, nullptr), "node");
  EXPECT_EQ(ownName(node, &client), "client");
  node.properties["application.name"] = "stream";
  EXPECT_EQ(ownName(node, &client), "stream");
}

TEST(OwnName, ofAClientOfTheAlsaPluginIsItsPrograms) {
  GraphClient client = nativeClient();
  client.properties["client.api"] = "alsa";
  client.properties["application.name"] = "PipeWire ALSA [aplay]";
  EXPECT_EQ(ownName({}, &client), "PipeWire ALSA [aplay]");
  client.properties["application.process.binary"] = "aplay";
  EXPECT_EQ(ownName({}, &client), "aplay");
}

}  // namespace
}  // namespace audrel::linuxos
