#include "platform/linux/pipewire/Playback.h"

#include <gtest/gtest.h>

#include <string>

namespace audrel::linuxos {
namespace {

/// A graph in which each node has one output port and one input port.
struct PlaybackTest : testing::Test {
  static constexpr std::uint32_t speakers = 1;
  Graph graph;

  PlaybackTest() { addNode(speakers, "Audio/Sink"); }

  static std::uint32_t outputOf(std::uint32_t node) { return 1000 + node; }
  static std::uint32_t inputOf(std::uint32_t node) { return 2000 + node; }

  GraphNode& addNode(std::uint32_t id, const std::string& mediaClass) {
    for (const std::uint32_t port : {outputOf(id), inputOf(id)}) {
      graph.ports[port].nodeId = id;
      graph.ports[port].isInput = port == inputOf(id);
    }
    GraphNode& node = graph.nodes[id];
    node.serial = id;
    node.mediaClass = mediaClass;
    return node;
  }

  void addStream(std::uint32_t id) { addNode(id, "Stream/Output/Audio"); }
  void addClient(std::uint32_t id) { addNode(id, "").properties["client.api"] = "jack"; }

  /// The two ends of one.
  void addLoopback(std::uint32_t input, std::uint32_t output,
                   const std::string& inputClass = "Stream/Input/Audio") {
    addNode(input, inputClass).properties["node.link-group"] = "loopback-1";
    addNode(output, "Stream/Output/Audio").properties["node.link-group"] = "loopback-1";
  }

  void link(std::uint32_t from, std::uint32_t to) {
    graph.links[100 * from + to] = {.outputNodeId = from,
                                    .outputPortId = outputOf(from),
                                    .inputNodeId = to,
                                    .inputPortId = inputOf(to)};
  }

  bool counts(std::uint32_t node) const { return countsForEverything(graph, node); }
};

TEST_F(PlaybackTest, isOfStreamsAndOfJackClientsWithOutputs) {
  addStream(2);
  addClient(3);
  addNode(4, "");
  EXPECT_TRUE(isPlayback(graph, 2));
  EXPECT_TRUE(isPlayback(graph, 3));
  EXPECT_FALSE(isPlayback(graph, 4)) << "which is another program without a media class";
  EXPECT_FALSE(isPlayback(graph, speakers));
  EXPECT_FALSE(isPlayback(graph, 5)) << "which is not there";
  graph.ports.erase(outputOf(3));
  EXPECT_FALSE(isPlayback(graph, 3));
}

struct LoopbackTest : PlaybackTest {
  LoopbackTest() {
    addLoopback(2, 3);
    addNode(4, "Audio/Source");
    addStream(5);
  }
};

TEST_F(LoopbackTest, anOrdinaryStreamCountsWhereverItGoes) {
  EXPECT_TRUE(counts(5));
}

TEST_F(LoopbackTest, oneFedByTheMonitorOfASinkIsACopy) {
  link(speakers, 2);
  EXPECT_FALSE(counts(3));
}

TEST_F(LoopbackTest, oneFedByAStreamIsACopy) {
  link(5, 2);
  EXPECT_FALSE(counts(3));
}

TEST_F(LoopbackTest, oneFedByALineInIsASourceOfItsOwn) {
  link(4, 2);
  EXPECT_TRUE(counts(3));
}

TEST_F(LoopbackTest, theFarEndOfAVirtualSinkIsACopy) {
  graph.nodes[2].mediaClass = "Audio/Sink";
  EXPECT_FALSE(counts(3));
}

TEST_F(LoopbackTest, oneFedByAJackClientIsACopyWhereThatCounts) {
  addClient(6);
  link(6, 2);
  EXPECT_TRUE(counts(3)) << "the client is heard through it alone";
  link(6, speakers);
  EXPECT_FALSE(counts(3));
}

TEST_F(LoopbackTest, ofACircleWithAJackClientTheStreamCounts) {
  addClient(6);
  link(6, 2);
  link(3, 6);
  link(6, speakers);
  EXPECT_TRUE(counts(3));
  EXPECT_FALSE(counts(6));
}

TEST_F(PlaybackTest, aJackClientCountsWhileItIsLinkedToASink) {
  addClient(2);
  EXPECT_FALSE(counts(2));
  addNode(3, "Audio/Source");
  link(2, 3);
  EXPECT_FALSE(counts(2));
  link(2, speakers);
  EXPECT_TRUE(counts(2));
  graph.links.clear();
  EXPECT_FALSE(counts(2));
}

TEST_F(PlaybackTest, aLinkThatIsKnownBeforeItsPortsOrNodesCountsWhenTheyAre) {
  addClient(2);
  link(2, speakers);
  for (const std::uint32_t port : {outputOf(2), inputOf(speakers)}) {
    const auto known = graph.ports.extract(port);
    EXPECT_FALSE(counts(2)) << port;
    graph.ports[port] = known.mapped();
    EXPECT_TRUE(counts(2)) << port;
  }
  const auto sink = graph.nodes.extract(speakers);
  EXPECT_FALSE(counts(2));
  graph.nodes[speakers] = sink.mapped();
  EXPECT_TRUE(counts(2));
}

TEST_F(PlaybackTest, aJackClientWhoseDetailsHaveNotComeDoesNotCount) {
  addNode(2, "");
  link(2, speakers);
  EXPECT_FALSE(counts(2));
}

TEST_F(PlaybackTest, aJackClientThatASourceFeedsCounts) {
  addClient(2);
  addNode(3, "Audio/Source");
  link(3, 2);
  link(2, speakers);
  EXPECT_TRUE(counts(2));
}

TEST_F(PlaybackTest, aJackClientThatAMonitorFeedsStaysOut) {
  addClient(2);
  link(2, speakers);
  link(speakers, 2);
  EXPECT_FALSE(counts(2));
}

TEST_F(PlaybackTest, aJackClientThatAStreamFeedsStaysOutHoweverManyAreBetween) {
  addStream(2);
  addClient(3);
  addNode(4, "");
  addClient(5);
  link(2, 3);
  link(3, 4);
  link(4, 5);
  link(5, speakers);
  EXPECT_FALSE(counts(5));
  graph.links.erase(100 * 3 + 4);
  EXPECT_TRUE(counts(5));
}

TEST_F(PlaybackTest, ofAChainOfJackClientsThatAreAllHeardTheFirstCounts) {
  for (const std::uint32_t client : {2U, 3U, 4U}) {
    addClient(client);
    link(client, speakers);
  }
  link(4, 3);
  link(3, 2);
  EXPECT_TRUE(counts(4));
  EXPECT_FALSE(counts(3));
  EXPECT_FALSE(counts(2));
}

TEST_F(PlaybackTest, aJackClientIsHeardThroughTheNextWhereItIsLinkedToThatAlone) {
  addClient(2);
  addClient(3);
  link(2, 3);
  link(3, speakers);
  EXPECT_FALSE(counts(2));
  EXPECT_TRUE(counts(3));
}

TEST_F(PlaybackTest, ofACircleOfJackClientsTheOldestThatIsHeardCounts) {
  for (const std::uint32_t client : {2U, 3U, 4U}) {
    addClient(client);
  }
  link(2, 3);
  link(3, 4);
  link(4, 2);
  link(3, speakers);
  link(4, speakers);
  EXPECT_FALSE(counts(2));
  EXPECT_TRUE(counts(3));
  EXPECT_FALSE(counts(4));
  graph.nodes[3].serial = 9;
  EXPECT_FALSE(counts(3));
  EXPECT_TRUE(counts(4));
  addStream(5);
  link(5, 2);
  EXPECT_FALSE(counts(4)) << "all of them are fed now";
}

TEST_F(PlaybackTest, aJackClientThatFeedsItselfCounts) {
  addClient(2);
  link(2, 2);
  link(2, speakers);
  EXPECT_TRUE(counts(2));
}

TEST_F(PlaybackTest, aLinkThatCarriesNoAudioFeedsNobody) {
  addClient(2);
  addClient(3);
  link(2, speakers);
  link(3, speakers);
  graph.links[900] = {.outputNodeId = 2, .outputPortId = 77, .inputNodeId = 3, .inputPortId = 78};
  EXPECT_TRUE(counts(3)) << "MIDI, say, whose ports are not known";
}

}  // namespace
}  // namespace audrel::linuxos
