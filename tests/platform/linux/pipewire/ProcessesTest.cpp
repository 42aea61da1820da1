// Who plays, as process objects.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/AudioObjectProperties.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/Segments.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::pwtest {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

constexpr auto badObject = CA::kAudioHardwareBadObjectError;
constexpr auto notRunning = CA::kAudioHardwareNotRunningError;

CA::OSStatus defaultDevice(Recorder& recorder, CA::AudioObjectID* device) {
  return CA::readProperty(recorder.hardware(), CA::kAudioObjectSystemObject,
                          CA::kAudioHardwarePropertyDefaultOutputDevice, device);
}

std::string deviceUID(Recorder& recorder, CA::AudioObjectID device) {
  std::string uid;
  EXPECT_EQ(CA::readProperty(recorder.hardware(), device, CA::kAudioDevicePropertyDeviceUID, &uid),
            0);
  return uid;
}

std::string nameOf(Recorder& recorder, pid_t pid) {
  const auto application = recorder.captureHardware().runningApplication(pid);
  return application ? application->localizedName.value_or("") : "";
}

class Processes : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(server.isRunning()); }

  TestServer server;
  Recorder recorder{server};
};

TEST_F(Processes, eachThatPlaysIsListedOnceInTheOrderInWhichTheyStarted) {
  EXPECT_THAT(recorder.processes(), IsEmpty());
  Player silent(server.socketPath());
  Player first(server.socketPath());
  Player second(server.socketPath());
  ASSERT_TRUE(silent.isReady());
  ASSERT_TRUE(second.open("call", 1));
  const auto idOfSecond = recorder.waitForProcess(second.pid());
  ASSERT_TRUE(first.open("music", 2));
  ASSERT_TRUE(first.open("chime", 3));
  const auto idOfFirst = recorder.waitForProcess(first.pid());

  EXPECT_THAT(recorder.processes(), ElementsAre(idOfSecond, idOfFirst));
  EXPECT_EQ(recorder.pidOf(idOfFirst), first.pid());
  EXPECT_EQ(recorder.pidOf(idOfSecond), second.pid());
}

TEST_F(Processes, oneThatPausesIsListedAndOneThatClosesItsStreamsIsNot) {
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  const auto process = recorder.waitForProcess(player.pid());
  ASSERT_TRUE(player.pause("music"));
  EXPECT_THAT(recorder.processes(), ElementsAre(process));
  ASSERT_TRUE(player.close("music"));
  EXPECT_TRUE(waitFor([&] { return recorder.processes().empty(); }));
  ASSERT_TRUE(player.open("music", 1));
  EXPECT_EQ(recorder.waitForProcess(player.pid()), process) << "it is the same as before";
}

TEST_F(Processes, tellWhatTheyPlayAndWhetherTheyDo) {
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  const auto process = recorder.waitForProcess(player.pid());
  const auto playback = [&] {
    recorder.processes();
    return recorder.captureHardware().playback(process);
  };
  EXPECT_TRUE(waitFor([&] { return playback() == capture::Playback{true, "music"}; }));
  ASSERT_TRUE(player.pause("music"));
  EXPECT_TRUE(waitFor([&] { return playback() == capture::Playback{false, "music"}; }));
  EXPECT_EQ(recorder.captureHardware().playback(process + 1), std::nullopt);
}

TEST_F(Processes, theyBearTheNameAndIdentifierThatTheyGiveThemselves) {
  Player named(server.socketPath(),
               {"application.name=Grammophon Müller", "application.id=org.example.Grammophon"});
  Player plain(server.socketPath(), {"application.name=plain"});
  ASSERT_TRUE(named.open("music", 1));
  ASSERT_TRUE(plain.open("call", 2));
  const auto idOfNamed = recorder.waitForProcess(named.pid());
  const auto idOfPlain = recorder.waitForProcess(plain.pid());

  EXPECT_EQ(nameOf(recorder, named.pid()), "Grammophon Müller");
  EXPECT_EQ(recorder.bundleIdOf(idOfNamed), "org.example.Grammophon");
  EXPECT_EQ(nameOf(recorder, plain.pid()), "plain");
  EXPECT_EQ(recorder.bundleIdOf(idOfPlain), "");
}

TEST_F(Processes, aProcessIsTheSameObjectInTheNextRunOfTheRecorder) {
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  const auto before = std::make_unique<Recorder>(server)->waitForProcess(player.pid());
  EXPECT_NE(before, 0U);
  EXPECT_EQ(recorder.waitForProcess(player.pid()), before);
}

TEST_F(Processes, aRestartedProgramIsAnotherObjectAndTheOldOneCannotBeTapped) {
  Player before(server.socketPath(), {"application.name=Radio"});
  ASSERT_TRUE(before.open("music", 1));
  const auto old = recorder.waitForProcess(before.pid());
  before.end(SIGKILL);
  Player after(server.socketPath(), {"application.name=Radio"});
  ASSERT_TRUE(after.open("music", 2));
  const auto renewed = recorder.waitForProcess(after.pid());

  EXPECT_NE(renewed, old);
  EXPECT_TRUE(recorder.captureHardware().hasQuit(old));
  EXPECT_FALSE(recorder.captureHardware().hasQuit(renewed));
  EXPECT_THAT(recorder.processes(), ElementsAre(renewed));
  EXPECT_EQ(recorder.startProcess(old), badObject);
  EXPECT_THAT(recorder.captureHardware().diagnosis().value_or(""), HasSubstr("Radio has quit"));
}

/// What the user is told of the process that is recorded.
class RecordedProcess : public Processes {
 protected:
  static constexpr int cyclesBetweenLooks = 10;

  void SetUp() override {
    Processes::SetUp();
    recorder.captureHardware().setNoticeTaker([this](const linuxos::Notice& notice) {
      const std::lock_guard lock(mutex_);
      told_.push_back(notice.matter + ": " + notice.summary + ": " + notice.body);
    });
  }
  void TearDown() override { recorder.captureHardware().setNoticeTaker({}); }

  std::vector<std::string> takeTold() {
    const std::lock_guard lock(mutex_);
    return std::exchange(told_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> told_;
};

TEST_F(RecordedProcess, theUserLearnsThatTheRecordedOneHasQuitAndThatItRunsAgain) {
  Player other(server.socketPath(), {"application.name=Other"});
  Player before(server.socketPath(), {"application.name=Radio"});
  ASSERT_TRUE(before.open("music", 1));
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(before.pid())), 0);
  ASSERT_TRUE(server.step(cyclesBetweenLooks, heard({"music"})));
  ASSERT_TRUE(before.close("music"));
  ASSERT_TRUE(server.step(cyclesBetweenLooks, {}));
  EXPECT_THAT(takeTold(), IsEmpty()) << "it may play again";

  before.end(SIGKILL);
  ASSERT_TRUE(server.step(cyclesBetweenLooks, {}));
  EXPECT_THAT(takeTold(), ElementsAre("source: Recording silence: Radio has quit. The recording "
                                      "goes on in silence: you can stop it."));
  ASSERT_TRUE(other.open("call", 2));
  ASSERT_TRUE(server.step(cyclesBetweenLooks, stereoLinks({"call"}, {"speakers"})));
  EXPECT_THAT(takeTold(), IsEmpty());

  Player after(server.socketPath(), {"application.name=Radio"});
  ASSERT_TRUE(after.open("music", 3));
  ASSERT_TRUE(server.step(2 * cyclesBetweenLooks, stereoLinks({"call", "music"}, {"speakers"})));
  EXPECT_THAT(takeTold(), ElementsAre("source: Still recording silence: Radio runs again, but not "
                                      "in this recording: stop it and choose Radio again."));
}

TEST_F(RecordedProcess, anotherOfTheNameThatPlayedAllAlongIsNotTakenForTheOneThatHasQuit) {
  Player recorded(server.socketPath(), {"application.name=Radio"});
  Player twin(server.socketPath(), {"application.name=Radio"});
  ASSERT_TRUE(recorded.open("music", 1));
  ASSERT_TRUE(twin.open("news", 2));
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(recorded.pid())), 0);
  auto links = heard({"music"});
  links.merge(stereoLinks({"news"}, {"speakers"}));
  ASSERT_TRUE(server.step(2, links));

  recorded.end(SIGKILL);
  ASSERT_TRUE(server.step(2 * cyclesBetweenLooks, stereoLinks({"news"}, {"speakers"})));
  EXPECT_THAT(takeTold(), ElementsAre(HasSubstr(": Recording silence: ")));
  ASSERT_TRUE(twin.open("weather", 3));
  ASSERT_TRUE(server.step(cyclesBetweenLooks, stereoLinks({"news", "weather"}, {"speakers"})));
  EXPECT_THAT(takeTold(), IsEmpty());

  Player after(server.socketPath(), {"application.name=Radio"});
  ASSERT_TRUE(after.open("music", 4));
  ASSERT_TRUE(
      server.step(2 * cyclesBetweenLooks, stereoLinks({"news", "weather", "music"}, {"speakers"})));
  EXPECT_THAT(takeTold(), ElementsAre(HasSubstr(": Still recording silence: ")));
}

TEST_F(Processes, anUnknownObjectCannotBeTappedOrRead) {
  constexpr CA::AudioObjectID unknown = 4'000'000'000;

  EXPECT_EQ(recorder.startProcess(unknown), badObject);
  EXPECT_THAT(recorder.captureHardware().diagnosis().value_or(""), HasSubstr("4000000000"));
  pid_t pid = 0;
  EXPECT_EQ(CA::readProperty(recorder.hardware(), unknown, CA::kAudioProcessPropertyPID, &pid),
            badObject);
}

TEST_F(Processes, whoPassesItselfOffAsAnotherIsListedAndRecordedAsItself) {
  Player bank(server.socketPath(), {"application.name=My Bank"});
  ASSERT_TRUE(bank.open("advice", 1));
  const auto process = recorder.waitForProcess(bank.pid());
  const std::vector<std::string> forged = {"client.api=pipewire-pulse",
                                           "application.process.id=" + std::to_string(bank.pid()),
                                           "application.process.binary=audrel-test-player",
                                           "pipewire.access.portal.app_id=org.example.Bank"};
  Player byItsConnection(server.socketPath(), forged);
  Player byItsStream(server.socketPath());
  ASSERT_TRUE(byItsConnection.open("music", 2));
  std::string properties;
  for (const std::string& property : forged) {
    properties += " " + property;
  }
  ASSERT_TRUE(byItsStream.open("music", "stamp:3 f32 2 48000" + properties));

  const auto second = recorder.waitForProcess(byItsConnection.pid());
  const auto third = recorder.waitForProcess(byItsStream.pid());
  EXPECT_THAT(recorder.processes(), UnorderedElementsAre(process, second, third));
  EXPECT_EQ(recorder.bundleIdOf(second), "");
  EXPECT_EQ(recorder.bundleIdOf(third), "");
  ASSERT_EQ(recorder.startProcess(process), 0);
  ASSERT_TRUE(server.step(
      10, {{"advice -> speakers", 2}, {"music -> speakers", 4}, {"advice -> audrel-tap", 2}}));
  ASSERT_EQ(recorder.stop(), 0);
  EXPECT_EQ(segmentsOf(recorder.samples().audio()), std::vector{stampedSegment(0, 10'240, {1, 0})});
}

TEST(Devices, theDefaultOutputFollowsTheServersChoice) {
  TestServer server({.sinks = {{"speakers"}, {"headphones"}}});
  ASSERT_TRUE(server.isRunning());
  Recorder recorder(server.socketPath());
  CA::AudioObjectID speakers = 0;
  CA::AudioObjectID headphones = 0;
  ASSERT_EQ(defaultDevice(recorder, &speakers), 0);
  EXPECT_EQ(deviceUID(recorder, speakers), "speakers");
  server.session().setDefaultSink("headphones");
  ASSERT_TRUE(
      waitFor([&] { return defaultDevice(recorder, &headphones) == 0 && headphones != speakers; }));
  EXPECT_EQ(deviceUID(recorder, headphones), "headphones");
}

TEST(Devices, withoutASinkThereIsNoDefaultOutputAndNoError) {
  TestServer server({.sinks = {}});
  ASSERT_TRUE(server.isRunning());
  Recorder recorder(server.socketPath());
  CA::AudioObjectID device = 42;
  EXPECT_EQ(defaultDevice(recorder, &device), 0);
  EXPECT_EQ(device, CA::kAudioObjectUnknown);
  EXPECT_THAT(recorder.captureHardware().diagnosis().value_or(""), HasSubstr("no output device"));
}

TEST(Devices, whoWatchesThemRunHoldsNobodyUp) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Recorder recorder(server.socketPath());
  std::vector<bool> answered;
  std::vector<std::future<bool>> waiting;
  recorder.captureHardware().setRunObserver([&](auto) {
    auto other = std::async(std::launch::async,
                            [&] { return recorder.captureHardware().diagnosis().has_value(); });
    answered.push_back(other.wait_for(std::chrono::seconds(10)) == std::future_status::ready);
    // Its end is waited for without the lock, if there is one.
    waiting.push_back(std::move(other));
  });
  ASSERT_EQ(recorder.startEverything(), 0);
  ASSERT_EQ(recorder.stop(), 0);
  EXPECT_THAT(answered, ElementsAre(true, true));
}

TEST(Devices, withoutAServerNothingRunsAndTheDiagnosisSaysWhy) {
  const support::TemporaryFolder folder;
  const std::string socket = (folder.path() / "pipewire-0").string();
  Recorder recorder(socket);
  CA::AudioObjectID device = 42;
  EXPECT_EQ(defaultDevice(recorder, &device), notRunning);
  EXPECT_EQ(recorder.startEverything(), notRunning);
  EXPECT_THAT(recorder.processes(), IsEmpty());
  const std::string diagnosis = recorder.captureHardware().diagnosis().value_or("");
  EXPECT_THAT(diagnosis, HasSubstr("PipeWire is not running"));
  EXPECT_THAT(diagnosis, HasSubstr(socket));
  EXPECT_THAT(diagnosis, HasSubstr("systemctl --user start pipewire"));
}

TEST(Devices, withoutAClientConfigurationTheDiagnosisNamesItsPackageUntilItIsThere) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  const support::TemporaryFolder empty;
  std::optional<fakes::ScopedVariable> lost(std::in_place, "PIPEWIRE_CONFIG_DIR",
                                            empty.path().c_str());
  Recorder recorder(server.socketPath());
  EXPECT_THAT(recorder.processes(), IsEmpty());
  EXPECT_EQ(recorder.startEverything(), notRunning);
  EXPECT_THAT(recorder.captureHardware().diagnosis().value_or(""),
              HasSubstr("install the package pipewire-bin."));
  lost.reset();
  EXPECT_EQ(recorder.startEverything(), 0);
  EXPECT_EQ(recorder.stop(), 0);
}

TEST(Devices, aClientConfigurationWithoutModulesMakesAStartFailWithAReason) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  const support::TemporaryFolder folder;
  for (const char* name : {"client-rt.conf", "client.conf"}) {
    std::ofstream(folder / name) << "context.spa-libs = { support.* = support/libspa-support }\n"
                                    "context.modules = [ "
                                    "{ name = libpipewire-module-protocol-native } ]\n";
  }
  const fakes::ScopedVariable poor("PIPEWIRE_CONFIG_DIR", folder.path().c_str());
  Recorder recorder(server.socketPath());
  EXPECT_NE(recorder.startEverything(), 0);
  EXPECT_NE(recorder.captureHardware().diagnosis().value_or(""), "");
}

TEST(Devices, aServerThatComesLaterIsFound) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  server.crash();
  Recorder recorder(server.socketPath());
  CA::AudioObjectID device = 0;
  EXPECT_EQ(defaultDevice(recorder, &device), notRunning);
  server.restart();
  ASSERT_TRUE(server.isRunning());
  EXPECT_EQ(defaultDevice(recorder, &device), 0);
  EXPECT_THAT(recorder.captureHardware().diagnosis().value_or(""), Not(HasSubstr("not running")));
}

}  // namespace
}  // namespace audrel::pwtest
