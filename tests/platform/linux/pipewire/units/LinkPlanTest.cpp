#include "platform/linux/pipewire/LinkPlan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace audrel::linuxos {
namespace {

constexpr std::uint32_t tapNode = 100;
const std::vector<std::string> tapChannelNames = {"FL", "FR", "FC", "LFE", "RL", "RR", "SL", "SR"};

struct LinkPlanTest : testing::Test {
  Graph graph;

  LinkPlanTest() {
    graph.nodes[tapNode].mediaClass = "Audrel/Tap";
    addPorts(tapNode, 1000, tapChannelNames, true);
  }

  void addPorts(std::uint32_t node, std::uint32_t firstPort,
                const std::vector<std::string>& channels, bool isInput) {
    for (const std::string& channel : channels) {
      graph.ports[firstPort++] = {
          .nodeId = node, .isInput = isInput, .isMonitor = false, .channel = channel};
    }
  }

  void addStream(std::uint32_t node, std::uint32_t firstPort, std::uint32_t ownChannels,
                 const std::vector<std::string>& ports) {
    graph.nodes[node].mediaClass = "Stream/Output/Audio";
    graph.nodes[node].channels = ownChannels;
    addPorts(node, firstPort, ports, false);
  }

  std::set<PortPair> plan() const { return planLinks(graph, tapNode, isPlaybackStream); }
};

TEST_F(LinkPlanTest, stereoGoesToTheFrontPair) {
  addStream(1, 10, 2, {"FL", "FR"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, aMonoPortGoesToBoth) {
  addStream(1, 10, 1, {"MONO"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {10, 1001}}));
}

TEST_F(LinkPlanTest, monoThatWasUpmixedToAPairGoesToThePair) {
  addStream(1, 10, 1, {"FL", "FR"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, theUpmixedPortsOfAStereoStreamAreLeftOut) {
  addStream(1, 10, 2, {"FL", "FR", "FC", "LFE", "RL", "RR"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, aSurroundStreamKeepsItsChannels) {
  addStream(1, 10, 6, {"FL", "FR", "FC", "LFE", "SL", "SR"});
  EXPECT_EQ(plan(), (std::set<PortPair>{
                        {10, 1000}, {11, 1001}, {12, 1002}, {13, 1003}, {14, 1006}, {15, 1007}}));
}

TEST_F(LinkPlanTest, unpositionedChannelsGoLeftAndRight) {
  addStream(1, 10, 2, {"AUX0", "AUX1"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, severalStreamsMeetInTheSamePorts) {
  addStream(1, 10, 2, {"FL", "FR"});
  addStream(2, 20, 2, {"FL", "FR"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}, {20, 1000}, {21, 1001}}));
}

TEST_F(LinkPlanTest, inputAndMonitorPortsOfAStreamAreLeftOut) {
  addStream(1, 10, 2, {"FL", "FR"});
  graph.ports[12] = {.nodeId = 1, .isInput = false, .isMonitor = true, .channel = "FL"};
  addPorts(1, 13, {"FL"}, true);
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, theMonitorPortsOfTheTapAreNotLinkedTo) {
  graph.ports[900] = {.nodeId = tapNode, .isInput = true, .isMonitor = true, .channel = "FL"};
  addStream(1, 10, 2, {"FL", "FR"});
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, whatIsNotTappedIsNotLinked) {
  addStream(1, 10, 2, {"FL", "FR"});
  EXPECT_TRUE(planLinks(graph, tapNode, [](const GraphNode&) { return false; }).empty());
}

}  // namespace
}  // namespace audrel::linuxos
