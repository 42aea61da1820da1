#include "platform/linux/pipewire/LinkPlan.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
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

  /// Of a client of JACK.
  void addClient(std::uint32_t node, std::uint32_t firstPort, std::uint32_t count) {
    graph.nodes[node].properties["client.api"] = "jack";
    for (std::uint32_t index = 0; index < count; ++index) {
      graph.ports[firstPort + index] = {
          .nodeId = node, .isInput = false, .isMonitor = false, .channel = {}, .index = index};
    }
  }

  void addSink(std::uint32_t node, std::uint32_t firstPort,
               const std::vector<std::string>& channels) {
    graph.nodes[node].mediaClass = "Audio/Sink";
    addPorts(node, firstPort, channels, true);
  }

  void link(std::uint32_t outputPort, std::uint32_t inputPort) {
    graph.links[10'000 + static_cast<std::uint32_t>(graph.links.size())] = {
        .outputNodeId = graph.ports.at(outputPort).nodeId,
        .outputPortId = outputPort,
        .inputNodeId = graph.ports.at(inputPort).nodeId,
        .inputPortId = inputPort};
  }

  std::set<PortPair> plan(TappedPorts tapped = TappedPorts::all) const {
    return planLinks(graph, tapNode, [&](std::uint32_t node) {
      return graph.nodes.at(node).mediaClass == "Audio/Sink" ? TappedPorts::none : tapped;
    });
  }
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
  EXPECT_TRUE(plan(TappedPorts::none).empty());
}

TEST_F(LinkPlanTest, theSinksPortsSayWhereThoseOfAJackClientGo) {
  addClient(1, 10, 3);
  addSink(2, 20, {"FL", "FR"});
  link(10, 21);
  link(11, 20);
  link(12, 20);
  link(12, 21);
  const std::set<PortPair> expected = {{10, 1001}, {11, 1000}, {12, 1000}, {12, 1001}};
  EXPECT_EQ(plan(TappedPorts::heard), expected);
  EXPECT_EQ(plan(TappedPorts::all), expected);
}

TEST_F(LinkPlanTest, aPortOfAJackClientThatIsLinkedToTwoSinksIsTakenOnce) {
  addClient(1, 10, 1);
  addSink(2, 20, {"FL", "FR"});
  addSink(3, 30, {"FL", "FR"});
  link(10, 20);
  link(10, 30);
  EXPECT_EQ(plan(TappedPorts::heard), (std::set<PortPair>{{10, 1000}}));
}

TEST_F(LinkPlanTest, whatAJackClientPlaysToASurroundSinkKeepsItsChannels) {
  addClient(1, 10, 2);
  addSink(2, 20, {"FL", "FR", "FC", "LFE"});
  link(10, 22);
  link(11, 23);
  EXPECT_EQ(plan(TappedPorts::heard), (std::set<PortPair>{{10, 1002}, {11, 1003}}));
}

TEST_F(LinkPlanTest, aMonoSinkSendsAJackClientToBoth) {
  addClient(1, 10, 2);
  addSink(2, 20, {"MONO"});
  link(11, 20);
  EXPECT_EQ(plan(TappedPorts::heard), (std::set<PortPair>{{11, 1000}, {11, 1001}}));
}

TEST_F(LinkPlanTest, portsOfAJackClientThatLeadToNoSinkGoLeftAndRightByTurnsWhenAllAreTapped) {
  addClient(1, 10, 4);
  addSink(2, 20, {"FL", "FR"});
  link(10, 21);
  EXPECT_EQ(plan(TappedPorts::heard), (std::set<PortPair>{{10, 1001}}));
  EXPECT_EQ(plan(TappedPorts::all),
            (std::set<PortPair>{{10, 1001}, {11, 1001}, {12, 1000}, {13, 1001}}));
}

TEST_F(LinkPlanTest, theTurnsAreTheClientsOwnOrderAndNotThatOfIds) {
  addClient(1, 10, 2);
  std::swap(graph.ports[10].index, graph.ports[11].index);
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1001}, {11, 1000}}));
}

TEST_F(LinkPlanTest, theOnlyPortOfAJackClientGoesToBoth) {
  addClient(1, 10, 1);
  EXPECT_EQ(plan(), (std::set<PortPair>{{10, 1000}, {10, 1001}}));
}

TEST_F(LinkPlanTest, aChannelThatTheTapHasNotIsTakenByTurns) {
  addClient(1, 10, 2);
  addSink(2, 20, {"AUX0", "AUX1", "AUX2", "AUX3"});
  link(10, 22);
  link(11, 23);
  EXPECT_EQ(plan(TappedPorts::heard), (std::set<PortPair>{{10, 1000}, {11, 1001}}));
}

}  // namespace
}  // namespace audrel::linuxos
