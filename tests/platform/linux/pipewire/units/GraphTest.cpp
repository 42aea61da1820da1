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

}  // namespace
}  // namespace audrel::linuxos
