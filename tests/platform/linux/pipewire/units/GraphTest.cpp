#include "platform/linux/pipewire/Graph.h"

#include <gtest/gtest.h>

namespace audrel::linuxos {
namespace {

GraphNode node(std::uint64_t serial, std::string mediaClass, std::string name,
               std::int32_t priority = 0) {
  GraphNode made;
  made.serial = serial;
  made.mediaClass = std::move(mediaClass);
  made.name = std::move(name);
  made.sessionPriority = priority;
  return made;
}

TEST(DefaultSink, isNoneWithoutASink) {
  Graph graph;
  graph.nodes[1] = node(1, "Audio/Source", "microphone");
  EXPECT_EQ(defaultSink(graph), nullptr);
}

TEST(DefaultSink, isTheConfiguredOne) {
  Graph graph;
  graph.nodes[1] = node(1, "Audio/Sink", "a", 1000);
  graph.nodes[2] = node(2, "Audio/Sink", "b", 1);
  graph.configuredDefaultSink = "b";
  EXPECT_EQ(defaultSink(graph)->name, "b");
}

TEST(DefaultSink, isTheOneOfHighestPriorityWhenTheConfiguredOneIsGone) {
  Graph graph;
  graph.nodes[1] = node(1, "Audio/Sink", "a", 10);
  graph.nodes[2] = node(2, "Audio/Sink", "b", 20);
  graph.configuredDefaultSink = "unplugged";
  EXPECT_EQ(defaultSink(graph)->name, "b");
}

TEST(DefaultSink, isTheOldestOfEqualPriority) {
  Graph graph;
  graph.nodes[1] = node(9, "Audio/Sink", "new");
  graph.nodes[2] = node(3, "Audio/Sink", "old");
  EXPECT_EQ(defaultSink(graph)->name, "old");
}

struct LoopbackTest : testing::Test {
  Graph graph;

  LoopbackTest() {
    graph.nodes[1] = node(1, "Stream/Output/Audio", "loopback output");
    graph.nodes[2] = node(2, "Stream/Input/Audio", "loopback input");
    graph.nodes[1].properties["node.link-group"] = "loopback-1";
    graph.nodes[2].properties["node.link-group"] = "loopback-1";
    graph.nodes[3] = node(3, "Audio/Sink", "speakers");
    graph.nodes[4] = node(4, "Audio/Source", "line in");
    graph.nodes[5] = node(5, "Stream/Output/Audio", "player");
  }

  bool loopbackIsCopy() const { return isCopyOfOtherStreams(graph, graph.nodes.at(1)); }
};

TEST_F(LoopbackTest, anOrdinaryStreamIsNoCopy) {
  EXPECT_FALSE(isCopyOfOtherStreams(graph, graph.nodes.at(5)));
}

TEST_F(LoopbackTest, oneFedByTheMonitorOfASinkIsACopy) {
  graph.links[10] = {.outputNodeId = 3, .inputNodeId = 2};
  EXPECT_TRUE(loopbackIsCopy());
}

TEST_F(LoopbackTest, oneFedByAStreamIsACopy) {
  graph.links[10] = {.outputNodeId = 5, .inputNodeId = 2};
  EXPECT_TRUE(loopbackIsCopy());
}

TEST_F(LoopbackTest, oneFedByALineInIsASourceOfItsOwn) {
  graph.links[10] = {.outputNodeId = 4, .inputNodeId = 2};
  EXPECT_FALSE(loopbackIsCopy());
}

TEST_F(LoopbackTest, theFarEndOfAVirtualSinkIsACopy) {
  graph.nodes[2].mediaClass = "Audio/Sink";
  EXPECT_TRUE(loopbackIsCopy());
}

}  // namespace
}  // namespace audrel::linuxos
