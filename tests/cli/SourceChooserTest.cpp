#include "cli/SourceChooser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/ProcessObjects.h"
#include "tests/fakes/World.h"

namespace audrel::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SourceChoice : public testing::Test {
 protected:
  void add(CA::AudioObjectID id, pid_t pid, const std::string& name, const std::string& bundleID) {
    world_.hardware.processObjects.push_back({.id = id, .pid = pid, .bundleID = bundleID});
    if (!name.empty()) {
      world_.runningApplications.applications[pid] = {name};
    }
  }

  /// The object id of the process that `who` means; 0 when that is an error.
  CA::AudioObjectID chosen(const std::string& who) {
    const auto choice = chooseProcess(world_.platform(), who);
    const auto* process = std::get_if<Recordable>(&choice);
    return process != nullptr ? process->process.id : CA::kAudioObjectUnknown;
  }

  NoSource refused(const std::string& who) {
    auto choice = chooseProcess(world_.platform(), who);
    const auto* refusal = std::get_if<NoSource>(&choice);
    return refusal != nullptr ? *refusal : NoSource{"it was chosen", {}};
  }

  static std::vector<CA::AudioObjectID> ids(const std::vector<Recordable>& processes) {
    std::vector<CA::AudioObjectID> all;
    for (const auto& process : processes) {
      all.push_back(process.process.id);
    }
    return all;
  }

  fakes::World world_;
};

TEST_F(SourceChoice, isByNameWhateverTheCase) {
  add(11, 1100, "Web Radio", "org.example.Radio");
  add(12, 1200, "Player", "");
  EXPECT_EQ(chosen("Web Radio"), 11U);
  EXPECT_EQ(chosen("web radio"), 11U);
  EXPECT_EQ(chosen("PLAYER"), 12U);
}

TEST_F(SourceChoice, isByBundleIdentifier) {
  add(11, 1100, "Web Radio", "org.example.Radio");
  EXPECT_EQ(chosen("org.example.Radio"), 11U);
  EXPECT_EQ(chosen("ORG.example.radio"), 11U);
}

TEST_F(SourceChoice, isByProcessOrObjectId) {
  add(11, 1100, "Player", "");
  add(12, 1200, "Player", "");
  EXPECT_EQ(chosen("1200"), 12U);
  EXPECT_EQ(chosen("#11"), 11U);
}

TEST_F(SourceChoice, carriesNameAndBundleIdentifier) {
  add(11, 1100, "Web Radio", "org.example.Radio");
  const auto choice = chooseProcess(world_.platform(), "#11");
  EXPECT_EQ(std::get<Recordable>(choice),
            (Recordable{{11, "Web Radio", "org.example.Radio"}, 1100}));
}

TEST_F(SourceChoice, takesASpellingThatIsExactOverOthers) {
  add(11, 1100, "music", "");
  add(12, 1200, "Music", "");
  EXPECT_EQ(chosen("Music"), 12U);
  EXPECT_EQ(chosen("music"), 11U);
  EXPECT_THAT(ids(refused("MUSIC").candidates), ElementsAre(11, 12));
}

TEST_F(SourceChoice, ofOneAmongSeveralListsThemAndShowsHow) {
  add(11, 1100, "Player", "");
  add(12, 1200, "Player", "");
  add(13, 1300, "Other", "");
  const auto refusal = refused("Player");
  EXPECT_EQ(refusal.complaint,
            "\"Player\" may be any of these; give the id of one, as in --app '#11':");
  EXPECT_THAT(ids(refusal.candidates), ElementsAre(11, 12));
}

TEST_F(SourceChoice, ofOneThatIsUnknownListsWhatThereIs) {
  add(11, 1100, "Web Radio", "org.example.Radio");
  for (const char* who : {"Nobody", "99", "#99", "#", "#11x", "11", "-1100"}) {
    const auto refusal = refused(who);
    EXPECT_THAT(refusal.complaint, HasSubstr(who));
    EXPECT_THAT(ids(refusal.candidates), ElementsAre(11)) << who;
  }
}

TEST_F(SourceChoice, saysWhatToDoWhenNothingPlays) {
  const auto refusal = refused("Player\x1b");
  EXPECT_THAT(refusal.complaint, HasSubstr("\"Player\\x1b\" is not playing"));
  EXPECT_THAT(refusal.complaint, HasSubstr("Start its playback first"));
  EXPECT_THAT(refusal.candidates, IsEmpty());
}

TEST_F(SourceChoice, byIdReachesProcessesThatAreNotListed) {
  add(11, 1100, "Browser", "org.example.Browser");
  add(12, 1200, "Browser", "org.example.Browser");  // the same identifier again
  add(13, 1300, "", "");                            // no name
  EXPECT_EQ(chosen("1200"), 12U);
  EXPECT_EQ(chosen("#13"), 13U);
  EXPECT_EQ(std::get<Recordable>(chooseProcess(world_.platform(), "#13")).process.name,
            "Process 1300");
  EXPECT_EQ(chosen("Browser"), 11U);
}

TEST_F(SourceChoice, takesAnApplicationWhoseNameIsANumber) {
  add(11, 1100, "1942", "");
  EXPECT_EQ(chosen("1942"), 11U);
}

TEST_F(SourceChoice, isByAPartOfTheNameWhenOnlyOneHasIt) {
  add(11, 1100, "Web Radio", "org.example.Radio");
  add(12, 1200, "Web Player", "");
  add(13, 1300, "Émission", "");
  EXPECT_EQ(chosen("radio"), 11U);
  EXPECT_EQ(chosen("b P"), 12U);
  EXPECT_EQ(chosen("mission"), 13U);
  EXPECT_THAT(ids(refused("web").candidates), ElementsAre(12, 11));
  EXPECT_EQ(refused("web").complaint,
            "\"web\" may be any of these; give the id of one, as in --app '#12':");
  EXPECT_THAT(refused("example").complaint, HasSubstr("is no application that can be recorded"));
}

TEST_F(SourceChoice, isByAWholeNameBeforeAPartOfOthers) {
  add(11, 1100, "Web Radio", "");
  add(12, 1200, "radio", "");
  EXPECT_EQ(chosen("RADIO"), 12U);
}

TEST_F(SourceChoice, listsWhatIsKnownOfEach) {
  add(11, 1100, "Web Radio", "org.example.Radio");
  add(4242, 7, "Zoé\nName", "");
  add(13, 1300, "Zoé", "");
  add(14, 1400, "Zoé", "");
  world_.diagnostics.playbacks = {
      {4242, {true, "Blue \x1b Green"}}, {13, {true, ""}}, {14, {false, "Blue"}}};
  EXPECT_EQ(tableOf(listedProcesses(world_.platform()), std::nullopt),
            "ID     PID   NAME         BUNDLE IDENTIFIER  PLAYS\n"
            "#11    1100  Web Radio    org.example.Radio  -\n"
            "#13    1300  Zoé          -                  playing\n"
            "#14    1400  Zoé          -                  idle\n"
            "#4242  7     Zoé\\x0aName  -                  Blue \\x1b Green\n");
  EXPECT_EQ(jsonOf(listedProcesses(world_.platform())),
            "[\n"
            R"(  {"id": 11, "pid": 1100, "name": "Web Radio", )"
            R"("bundleIdentifier": "org.example.Radio", "playing": null, "title": null},)"
            "\n"
            R"(  {"id": 13, "pid": 1300, "name": "Zoé", )"
            R"("bundleIdentifier": null, "playing": true, "title": null},)"
            "\n"
            R"(  {"id": 14, "pid": 1400, "name": "Zoé", )"
            R"("bundleIdentifier": null, "playing": false, "title": "Blue"},)"
            "\n"
            R"(  {"id": 4242, "pid": 7, "name": "Zoé\u000aName", )"
            R"("bundleIdentifier": null, "playing": true, "title": "Blue \u001b Green"})"
            "\n]");
}

TEST_F(SourceChoice, listsNoPidOfAProcessThatIsGone) {
  EXPECT_EQ(
      tableOf({{{11, "Init", std::nullopt}, 1}, {{12, "Gone", std::nullopt}, 0}}, std::nullopt),
      "ID   PID  NAME  BUNDLE IDENTIFIER  PLAYS\n"
      "#11  1    Init  -                  -\n"
      "#12  -    Gone  -                  -\n");
}

TEST_F(SourceChoice, cutsTheListToAWindow) {
  add(11, 1100, "Web Radio, the station for names", "org.example.Radio");
  const auto listed = listedProcesses(world_.platform());
  EXPECT_EQ(tableOf(listed, 44),
            "ID   PID   NAME          BUNDLE IDEN…  PLAYS\n"
            "#11  1100  Web Radio, …  org.example…  -\n");
  EXPECT_EQ(tableOf(listed, 1000), tableOf(listed, std::nullopt));
}

TEST_F(SourceChoice, listsNothingAsAnEmptyArray) {
  EXPECT_EQ(jsonOf(listedProcesses(world_.platform())), "[]");
}

TEST_F(SourceChoice, hasNoProcessesWhenTheyCannotBeListed) {
  add(11, 1100, "Player", "");
  world_.hardware.fail(fakes::FakeHardware::Call::processObjectList, -50);
  EXPECT_THAT(allProcesses(world_.platform()), IsEmpty());
  EXPECT_EQ(chosen("#11"), CA::kAudioObjectUnknown);
}

TEST_F(SourceChoice, leavesOutProcessesThatAreGone) {
  add(11, 1100, "Player", "");
  world_.hardware.processObjects[0].pidStatus = -50;
  EXPECT_THAT(allProcesses(world_.platform()), IsEmpty());
}

}  // namespace
}  // namespace audrel::cli
