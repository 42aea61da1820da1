#include "platform/linux/pipewire/StreamOwner.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/pipewire/ProcFiles.h"

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

GraphClient pulseClient(const std::string& pid, const std::string& binary) {
  GraphClient client;
  client.serial = 6;
  client.properties = {{"pipewire.sec.pid", "1"},
                       {"client.api", "pipewire-pulse"},
                       {"application.process.id", pid},
                       {"application.process.binary", binary}};
  return client;
}

TEST(StreamOwner, ofANativeClientIsTheProcessThatTheKernelNames) {
  const GraphClient client = nativeClient();
  GraphNode node;
  node.properties["application.process.id"] = "1";
  const StreamOwner owner = ownerOf(node, &client);
  EXPECT_EQ(owner.pid, getpid());
  EXPECT_TRUE(owner.isPidVerified);
  EXPECT_EQ(owner.key, keyOfProcess(getpid()));
}

TEST(StreamOwner, ofAPulseClientIsTheProcessThatItDeclaresWhenThatRunsTheProgram) {
  const GraphClient client = pulseClient(ownPid, ownBinary);
  const StreamOwner owner = ownerOf({}, &client);
  EXPECT_EQ(owner.pid, getpid());
  EXPECT_TRUE(owner.isPidVerified);
}

TEST(StreamOwner, ofAPulseClientIsItsConnectionWhenThePidBelongsToAnotherProgram) {
  const GraphClient client = pulseClient(ownPid, "another-program");
  const StreamOwner owner = ownerOf({}, &client);
  EXPECT_FALSE(owner.isPidVerified);
  EXPECT_EQ(owner.pid, getpid()) << "as declared";
  EXPECT_NE(owner.key, keyOfProcess(getpid()));
}

TEST(StreamOwner, ofAPulseClientOfAnotherMachineIsItsConnection) {
  GraphClient client = pulseClient(ownPid, ownBinary);
  client.properties["application.process.machine-id"] = "0123456789abcdef0123456789abcdef";
  EXPECT_FALSE(ownerOf({}, &client).isPidVerified);
}

TEST(StreamOwner, ofAPortalConnectionIsTheConnectionAndNotThePortal) {
  GraphClient client = nativeClient();
  client.properties["pipewire.access.portal.app_id"] = "org.example.Player";
  GraphClient other = client;
  other.serial = 7;
  const StreamOwner owner = ownerOf({}, &client);
  EXPECT_FALSE(owner.isPidVerified);
  EXPECT_EQ(owner.portalApplication, "org.example.Player");
  EXPECT_NE(owner.key, ownerOf({}, &other).key);
}

TEST(StreamOwner, whoseProcessHasGoneIsItsConnection) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  GraphClient client = nativeClient();
  client.properties["pipewire.sec.pid"] = std::to_string(child);
  EXPECT_FALSE(ownerOf({}, &client).isPidVerified);
  EXPECT_FALSE(keyOfProcess(child));
}

TEST(StreamOwner, withoutAClientIsTheStreamItself) {
  GraphNode node;
  node.serial = 11;
  GraphNode other;
  other.serial = 12;
  EXPECT_NE(ownerOf(node, nullptr).key, ownerOf(other, nullptr).key);
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

}  // namespace
}  // namespace audrel::linuxos
