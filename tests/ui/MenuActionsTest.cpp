#include "ui/MenuActions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/FakeMenus.h"
#include "ui/MenuBuilder.h"

namespace audrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Action = MenuBuilder::Action;

/// Notes what is called, and with which sender.
class Commands final : public MenuActions {
 public:
  std::vector<std::string> called;
  Sender sender;

  void toggleRecording(const Sender& by) override { note("toggleRecording", by); }
  void selectAllSystemAudio(const Sender& by) override { note("selectAllSystemAudio", by); }
  void selectProcess(const Sender& by) override { note("selectProcess", by); }
  void refreshProcessList(const Sender& by) override { note("refreshProcessList", by); }
  void selectFormatM4A(const Sender& by) override { note("selectFormatM4A", by); }
  void selectFormatWAV(const Sender& by) override { note("selectFormatWAV", by); }
  void revealLastRecording(const Sender& by) override { note("revealLastRecording", by); }
  void checkForUpdates(const Sender& by) override { note("checkForUpdates", by); }
  void showAbout(const Sender& by) override { note("showAbout", by); }
  void quit(const Sender& by) override { note("quit", by); }

 private:
  void note(const char* name, const Sender& by) {
    called.emplace_back(name);
    sender = by;
  }
};

struct Row {
  std::string name;
  const NS::Selector& (*selector)();
};

class EveryCommand : public testing::TestWithParam<Row> {};

TEST_P(EveryCommand, hasOneSelectorOfItsNameAndAColon) {
  EXPECT_EQ(GetParam().selector().name(), GetParam().name + ":");
  EXPECT_EQ(&GetParam().selector(), &GetParam().selector());
}

TEST_P(EveryCommand, isPerformedByItsSelectorAloneWithTheSender) {
  fakes::Journal journal;
  const auto sender = std::make_shared<fakes::FakeMenuItem>(journal, "", std::nullopt, "");
  Commands commands;
  commands.perform(NS::Selector(GetParam().name + ":"), sender);
  EXPECT_THAT(commands.called, ElementsAre(GetParam().name));
  EXPECT_EQ(commands.sender, sender);
}

INSTANTIATE_TEST_SUITE_P(MenuActions, EveryCommand,
                         testing::Values(Row{"toggleRecording", Action::toggleRecording},
                                         Row{"selectAllSystemAudio", Action::selectAllSystemAudio},
                                         Row{"selectProcess", Action::selectProcess},
                                         Row{"refreshProcessList", Action::refreshProcessList},
                                         Row{"selectFormatM4A", Action::selectFormatM4A},
                                         Row{"selectFormatWAV", Action::selectFormatWAV},
                                         Row{"revealLastRecording", Action::revealLastRecording},
                                         Row{"checkForUpdates", Action::checkForUpdates},
                                         Row{"showAbout", Action::showAbout},
                                         Row{"quit", Action::quit}),
                         [](const auto& test) { return test.param.name; });

TEST(MenuActions, ignoreAnUnknownSelector) {
  Commands commands;
  for (const char* name : {"", ":", "quit", "Quit:", "quit::", "startRecording:"}) {
    commands.perform(NS::Selector(name), nullptr);
  }
  EXPECT_THAT(commands.called, IsEmpty());
}

}  // namespace
}  // namespace audrel
