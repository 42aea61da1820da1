// The whole program, from its process entry's point of view, on a Mac of the tests' own: launched,
// its menu opened and clicked, its IO procedure fed, quit.

#include <chrono>
#include <csignal>
#include <functional>

#include "tests/macos/execution/MacProgramTest.h"

namespace audrel::macos {
namespace {

class ProgramTest : public MacProgramTest {};

TEST_F(ProgramTest, launchesWithItsItemInTheMenuBarAndAsksForThePermission) {
  run([] {
    EXPECT_EQ(menuBar(),
              "waveform.circle at 14 pt, weight 0, template, title \"\", image position 2, "
              "monospaced digits, 12 pt, weight 0");
    EXPECT_EQ(menu(), "Start Recording, key r, toggleRecording:, target\n"
                      "---\n"
                      "Record from\n"
                      "  All System Audio, selectAllSystemAudio:, target, on\n"
                      "  ---\n"
                      "  No audible apps, disabled\n"
                      "  ---\n"
                      "  Refresh List, refreshProcessList:, target\n"
                      "Format\n"
                      "  M4A (AAC 256 kbps), selectFormatM4A:, target, on\n"
                      "  WAV (48 kHz / 16-bit), selectFormatWAV:, target\n"
                      "---\n"
                      "Reveal Last Recording in Finder, revealLastRecording:, target, disabled\n"
                      "---\n"
                      "About Audrel…, showAbout:, target\n"
                      "Check for Updates…, checkForUpdates:, target\n"
                      "Quit Audrel, key q, quit:, target\n");
  });
  EXPECT_EQ(journal(),
            (Lines{"NSApplication.setActivationPolicy: 1",
                   "os_log_create(\"io.github.audrel.Audrel\", \"app\")",
                   "os_log_create(\"io.github.audrel.Audrel\", \"engine\")",
                   "dispatch_queue_create(io.github.audrel.Audrel.writer, qos 25, autorelease "
                   "frequency 0)",
                   "statusItemWithLength: -1", "NSApplication.run",
                   "NSApplication.setActivationPolicy: 1", "CGRequestScreenCaptureAccess() -> true",
                   "removeStatusItem:"}));
}

TEST_F(ProgramTest, listsTheProcessesOfCoreAudioWhenTheMenuOpens) {
  run([] {
    open();
    EXPECT_NE(menu().find("  game, selectProcess:, target\n"
                          "  Web Radio, selectProcess:, target\n"),
              std::string::npos);
  });
}

TEST_F(ProgramTest, recordsAProcessAsWavWithTheCallsOfCoreAudioInTheirOrder) {
  mac().holdsQueues = true;
  run([this] {
    open();
    choose("Web Radio");
    choose("WAV (48 kHz / 16-bit)");
    journal();
    choose("Start Recording");
    const Lines started = journal();
    const std::string path = mac().files.front().path;
    EXPECT_EQ(path.find("/Users/test/Downloads/audio-Web-Radio-2026-01-31-"), 0U) << path;
    EXPECT_EQ(
        started,
        (Lines{
            "CGPreflightScreenCaptureAccess() -> true", "CGPreflightScreenCaptureAccess() -> true",
            "AudioHardwareCreateProcessTap(stereo mixdown of [u32 70], muteBehavior = 0, name = "
            "\"Audrel Tap\") -> 0, tap 101",
            "AudioObjectGetPropertyData(101, tuid/glob/0, no qualifier, 8 bytes) -> 0, \"tap-101\"",
            "AudioObjectGetPropertyData(101, tfmt/glob/0, no qualifier, 40 bytes) -> 0, lpcm at "
            "48000 Hz, 2 channels, 8 bytes a frame",
            "AVAudioFormat(lpcm at 48000 Hz, 2 channels, 8 bytes a frame) -> format",
            "log io.github.audrel.Audrel [engine] info: Tap format — sampleRate=48000.000000, "
            "channels=2, interleaved=true, common=1",
            "NSUUID.UUIDString -> \"00000000-0000-4000-8000-00000000ABCD\"",
            "AudioObjectGetPropertyData(1, dOut/glob/0, no qualifier, 4 bytes) -> 0, device 51",
            "AudioObjectGetPropertyData(51, uid /glob/0, no qualifier, 8 bytes) -> 0, "
            "\"output-51\"",
            // Exactly these seven keys: no list of sub-devices.
            "AudioHardwareCreateAggregateDevice({master: \"output-51\", name: \"Audrel Tap\", "
            "private: Boolean true, stacked: Boolean false, tapautostart: Boolean true, taps: "
            "[{drift: Boolean true, uid: \"tap-101\"}], uid: "
            "\"00000000-0000-4000-8000-00000000ABCD\"}) -> 0, device 201",
            "AVAudioFile(forWriting \"" + path +
                "\", settings {key of AVFormatIDKey: u32 1819304813, key of "
                "AVLinearPCMBitDepthKey: "
                "integer 16, key of AVLinearPCMIsBigEndianKey: Boolean false, key of "
                "AVLinearPCMIsFloatKey: Boolean false, key of AVLinearPCMIsNonInterleaved: "
                "Boolean false, key of AVNumberOfChannelsKey: integer 2, key of AVSampleRateKey: "
                "double 48000.000000}, commonFormat 1, interleaved true) -> file",
            "AudioDeviceCreateIOProcID(201) -> 0, ioProc 1", "AudioDeviceStart(201, ioProc 1) -> 0",
            "log io.github.audrel.Audrel [engine] info: Recording started — source=Web Radio "
            "format=wav url=" +
                path.substr(path.rfind('/') + 1) +
                " fileSettings=[\"AVFormatIDKey\": 1819304813, \"AVLinearPCMBitDepthKey\": 16, "
                "\"AVLinearPCMIsBigEndianKey\": false, \"AVLinearPCMIsFloatKey\": false, "
                "\"AVLinearPCMIsNonInterleaved\": false, \"AVNumberOfChannelsKey\": 2, "
                "\"AVSampleRateKey\": 48000.0]",
            "NSUserDefaults lastRecordingPath = \"" + path + "\"",
            "NSTimer every 1.000000 s -> timer 1"}));
    EXPECT_EQ(menuBar().find("waveform.circle.fill at 14 pt, weight 0 in 17 x 15, filled red with "
                             "operation 5 in 17 x 15, title \" 00:00\""),
              0U)
        << menuBar();

    fakemac::deliver({counting(4096)});
    tick(std::chrono::seconds(7));
    EXPECT_NE(menuBar().find("title \" 00:07\""), std::string::npos);
    journal();
    @autoreleasepool {
      choose("Stop Recording");
      // Within the pool of the event: the file is whole when stop has returned.
      EXPECT_FALSE(mac().files.front().isOpen);
    }
    const std::string queue = "io.github.audrel.Audrel.writer";
    EXPECT_EQ(
        journal(),
        (Lines{
            "AudioDeviceStop(201, ioProc 1) -> 0", "AudioDeviceDestroyIOProcID(201, ioProc 1) -> 0",
            "dispatch_sync_f(" + queue + ") begins", queue + " runs item 1",
            "AVAudioFile.writeFromBuffer: 512 frames -> YES", "AVAudioFile closed: " + path,
            "dispatch_sync_f(" + queue + ") ends", "AudioHardwareDestroyAggregateDevice(201) -> 0",
            "AudioHardwareDestroyProcessTap(101) -> 0",
            "log io.github.audrel.Audrel [engine] info: Recording stopped — elapsed=7.0s "
            "underruns=0",
            "timer 1 invalidated"}));
    EXPECT_EQ(fakemac::hardwareObjects(), 0U);
    EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{512}));
    EXPECT_EQ(mac().files.front().bytes, counting(4096));
    choose("Reveal Last Recording in Finder");
    EXPECT_EQ(journal(), (Lines{"NSWorkspace.activateFileViewerSelectingURLs: " + path}));
  });
}

TEST_F(ProgramTest, aCycleThatComesAfterARecordingOrAfterTheProgramFindsNothingToDo) {
  std::function<std::int32_t()> cycle;
  run([&cycle] {
    choose("Start Recording");
    cycle = fakemac::cycleAtAnyTime();
    EXPECT_EQ(cycle(), 0);
    choose("Stop Recording");
    EXPECT_EQ(mac().files.front().writes, (std::vector<std::uint32_t>{1}));
    EXPECT_EQ(cycle(), 0);
    journal();
  });
  EXPECT_EQ(cycle(), 0);
  EXPECT_FALSE(contains(journal(), "AVAudioPCMBuffer(1 frames) -> buffer"));
}

TEST_F(ProgramTest, opensAnM4aFileWithTheSettingsOfAac) {
  run([] {
    choose("Start Recording");
    EXPECT_EQ(mac().files.front().settings,
              "{key of AVEncoderAudioQualityKey: integer 96, key of AVEncoderBitRateKey: integer "
              "256000, key of AVFormatIDKey: u32 1633772320, key of AVNumberOfChannelsKey: integer "
              "2, key of AVSampleRateKey: double 48000.000000}");
    choose("Stop Recording");
  });
}

struct Delivery {
  const char* what;
  std::vector<Bytes> buffers;
  std::uint32_t bytesWithoutData;
  std::vector<std::uint32_t> writes;  ///< frames
  Bytes written;
};

TEST_F(ProgramTest, takesBufferListsOfEveryShape) {
  Bytes cut = counting(16);
  const Delivery deliveries[] = {
      {"no buffer", {}, 0, {}, {}},
      {"less than a frame", {counting(6)}, 0, {}, {}},
      {"a frame and a half", {counting(12)}, 0, {1}, counting(8)},
      {"two frames", {counting(16)}, 0, {2}, counting(16)},
      {"without data", {Bytes()}, 16, {2}, Bytes(16)},
      {"more buffers than the file's format has", {counting(16), counting(16, 50)}, 0, {2}, cut},
  };
  for (const Delivery& delivery : deliveries) {
    SCOPED_TRACE(delivery.what);
    mac().files.clear();
    run([&] {
      choose("Start Recording");
      EXPECT_EQ(fakemac::deliver(delivery.buffers, delivery.bytesWithoutData), 0);
      choose("Stop Recording");
      EXPECT_EQ(mac().files.front().writes, delivery.writes);
      EXPECT_EQ(mac().files.front().bytes, delivery.written);
    });
  }
}

TEST_F(ProgramTest, takesChannelsInBuffersOfTheirOwnAlsoWhenTheyDifferInSize) {
  mac().isInterleaved = false;
  run([] {
    choose("Start Recording");
    fakemac::deliver({counting(8), counting(8, 100)});
    fakemac::deliver({counting(8), counting(400, 100)});
    fakemac::deliver({counting(8)});
    choose("Stop Recording");
    Bytes expected = counting(8);
    const auto append = [&expected](const Bytes& bytes) {
      expected.insert(expected.end(), bytes.begin(), bytes.end());
    };
    append(counting(8, 100));
    append(counting(8));
    append(counting(8, 100));
    append(counting(8));
    append(Bytes(8));
    EXPECT_FALSE(mac().files.front().isInterleaved);
    EXPECT_EQ(mac().files.front().bytes, expected);
  });
}

/// Of two cycles, the first goes wrong.
class SpoiltCycleTest : public ProgramTest {
 protected:
  void expectOneUnderrun(const std::function<void()>& spoil, const std::function<void()>& mend) {
    run([&] {
      choose("Start Recording");
      spoil();
      EXPECT_EQ(fakemac::deliver({counting(16)}), 0);
      mend();
      fakemac::deliver({counting(16)});
      journal();
      choose("Stop Recording");
      EXPECT_TRUE(contains(journal(), "log io.github.audrel.Audrel [engine] info: Recording "
                                      "stopped — elapsed=0.0s underruns=1"));
      EXPECT_EQ(mac().files.front().writes.size(), 1U);
    });
  }

  void expectOneFailedWrite(const std::function<void()>& spoil, const std::function<void()>& mend,
                            const std::string& reason) {
    mac().holdsQueues = true;
    run([&] {
      choose("Start Recording");
      spoil();
      fakemac::deliver({counting(16)});
      fakemac::runQueues();
      EXPECT_TRUE(contains(journal(), "log io.github.audrel.Audrel [engine] error: "
                                      "AVAudioFile.write failed: " +
                                          reason));
      mend();
      fakemac::deliver({counting(16)});
      choose("Stop Recording");
      EXPECT_EQ(mac().files.front().writes.size(), 1U);
      EXPECT_FALSE(mac().files.front().isOpen);
    });
  }

  static void raiseNothing() { mac().raising.clear(); }
};

TEST_F(SpoiltCycleTest, isCountedWhenThereIsNoMemory) {
  expectOneUnderrun([] { mac().hasMemoryForBuffers = false; },
                    [] { mac().hasMemoryForBuffers = true; });
}

TEST_F(SpoiltCycleTest, isCountedWhenTheFrameworkRaisesAnExceptionForItsBuffer) {
  expectOneUnderrun(
      [] { mac().raising["AVAudioPCMBuffer.initWithPCMFormat:frameCapacity:"] = "a reason"; },
      raiseNothing);
}

TEST_F(SpoiltCycleTest, isLoggedWhenItsWriteRaisesAnException) {
  expectOneFailedWrite(
      [] { mac().raising["AVAudioFile.writeFromBuffer:error:"] = "required condition is false"; },
      raiseNothing, "required condition is false");
}

TEST_F(SpoiltCycleTest, isLoggedWhenItsWriteFails) {
  expectOneFailedWrite(
      [] { mac().writeFails = {"NSOSStatusErrorDomain", -34, "The disk is full."}; },
      [] { mac().writeFails.reset(); }, "The disk is full.");
}

TEST_F(ProgramTest, offersTheSettingsWhenThePermissionIsRefused) {
  mac().mayCapture = false;
  mac().answersRequest = false;
  run([] {
    journal();
    choose("Start Recording");
    EXPECT_EQ(journal(), (Lines{"CGPreflightScreenCaptureAccess() -> false",
                                "CGRequestScreenCaptureAccess() -> false",
                                "NSAlert.runModal: Permission needed",
                                "NSWorkspace.openURL: "
                                "x-apple.systempreferences:com.apple.preference.security?Privacy_"
                                "ScreenCapture"}));
    EXPECT_EQ(mac().alerts.front().buttons, (Lines{"Open System Settings", "Cancel"}));
    mac().answers = {1001};
    choose("Start Recording");
    EXPECT_FALSE(contains(journal(), "NSWorkspace.openURL: "
                                     "x-apple.systempreferences:com.apple.preference.security?"
                                     "Privacy_ScreenCapture"));
  });
}

TEST_F(ProgramTest, warnsAfterAnHourByColour) {
  run([this] {
    choose("Start Recording");
    tick(std::chrono::seconds(3600));
    EXPECT_NE(menuBar().find("filled red"), std::string::npos);
    tick(std::chrono::seconds(1));
    EXPECT_NE(menuBar().find("filled orange"), std::string::npos);
    EXPECT_NE(menuBar().find("title \" 1:00:01\""), std::string::npos);
    choose("Stop Recording");
    EXPECT_EQ(menuBar().find("waveform.circle at 14 pt, weight 0, template, title \"\""), 0U);
  });
}

TEST_F(ProgramTest, saysInItsAboutWhetherItMayCapture) {
  mac().answers = {1000};
  run([] {
    choose("About Audrel…");
    EXPECT_EQ(mac().alerts.front().message, "Audrel 1.0.0");
    EXPECT_NE(mac().alerts.front().text.find("TCC permission: granted"), std::string::npos);
  });
}

TEST_F(ProgramTest, completesTheFileWhenItIsQuitInMidRecording) {
  mac().holdsQueues = true;
  EXPECT_EXIT(run([] {
                choose("Start Recording");
                fakemac::deliver({counting(16)});
                journal();
                choose("Quit Audrel");
              }),
              testing::ExitedWithCode(0),
              "NSApplication.terminate:\n"
              "log io.github.audrel.Audrel .app. info: Terminating — stopping in-flight "
              "recording\n"
              "AudioDeviceStop.201, ioProc 1. -> 0\n"
              "AudioDeviceDestroyIOProcID.201, ioProc 1. -> 0\n"
              "dispatch_sync_f.io.github.audrel.Audrel.writer. begins\n"
              "io.github.audrel.Audrel.writer runs item 1\n"
              "AVAudioFile.writeFromBuffer: 2 frames -> YES\n"
              "AVAudioFile closed: .*\n"
              "dispatch_sync_f.io.github.audrel.Audrel.writer. ends\n"
              "AudioHardwareDestroyAggregateDevice.201. -> 0\n"
              "AudioHardwareDestroyProcessTap.101. -> 0\n"
              "log io.github.audrel.Audrel .engine. info: Recording stopped");
}

// By itself the signal would end the process, and leave a file that nothing can play.
TEST_F(ProgramTest, completesTheFileWhenASignalEndsItInMidRecording) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    EXPECT_EXIT(run([number] {
                  choose("Start Recording");
                  fakemac::deliver({counting(16)});
                  std::raise(number);  // to the process itself, which it must not end
                  fakemac::deliverSignal(static_cast<unsigned long>(number));
                }),
                testing::ExitedWithCode(0),
                "NSApplication.terminate:\n(.*\n)*AVAudioFile closed: .*\n(.*\n)*.*Recording "
                "stopped");
  }
}

/// An alert of the program's, and how it comes up.
struct ShownAlert {
  const char* message;
  const char* command;  ///< of the menu
  std::function<void(fakemac::Mac&)> arrange;
};

/// Each alert is up, and the program is told to end.
class EndUnderAlertTest : public ProgramTest {
 protected:
  static const std::vector<ShownAlert>& alerts() {
    static const std::vector<ShownAlert> all = {
        {"Permission needed", "Start Recording",
         [](auto& mac) { mac.mayCapture = mac.answersRequest = false; }},
        {"Recording failed", "Start Recording",
         [](auto& mac) { mac.failing["AudioHardwareCreateProcessTap"] = -50; }},
        {"Audrel 1.0.0", "About Audrel…", [](auto&) {}},
    };
    return all;
  }

  void expectEnd(const std::function<void()>& beforeTheSignal, const std::string& journal) {
    for (const ShownAlert& alert : alerts()) {
      for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(alert.message + std::string(" and signal ") + std::to_string(number));
        EXPECT_EXIT(run([&] {
                      mac().whileModal = [&] {
                        beforeTheSignal();
                        fakemac::deliverSignal(static_cast<unsigned long>(number));
                      };
                      alert.arrange(mac());
                      choose(alert.command);
                    }),
                    testing::ExitedWithCode(0),
                    "NSAlert.runModal: " + std::string(alert.message) + "\n" + journal);
      }
    }
  }
};

// By its default AppKit refuses to end an application under an alert: whoever waits for the end
// then kills it.
TEST_F(EndUnderAlertTest, endsAtOnceWhileItIsIdle) {
  expectEnd([] {}, "NSApplication.terminate:\n$");
}

TEST_F(EndUnderAlertTest, completesARecordingThatWasStartedUnderTheAlert) {
  expectEnd(
      [] {
        mac().mayCapture = true;
        mac().failing.clear();
        choose("Start Recording");
        fakemac::deliver({counting(16)});
      },
      "(.*\n)*AudioDeviceStart.*\n(.*\n)*NSApplication.terminate:\n(.*\n)*AVAudioFile closed: "
      ".*\n(.*\n)*.*Recording stopped");
}

TEST_F(ProgramTest, keepsNothingThatListensForSignalsWhenItsEventLoopHasEnded) {
  run([] {});
  fakemac::deliverSignal(SIGTERM);
  EXPECT_EQ(objcruntime::liveObjectsOf("FakeSource"), 0U);
}

/// A call of start that fails, what the user is told, and what is left of Core Audio's objects.
struct Failing {
  std::string what;
  std::function<void(fakemac::Mac&)> arrange;
  std::string text;
  std::size_t left;
};

TEST_F(ProgramTest, tellsOfEachCallOfStartThatFailsAndStartsAgain) {
  const auto call = [](const std::string& name) {
    return [name](fakemac::Mac& mac) { mac.failing[name] = -50; };
  };
  const auto empty = [](const std::string& name) {
    return [name](fakemac::Mac& mac) { mac.withoutResult.insert(name); };
  };
  const auto property = [](std::uint32_t selector) {
    return [selector](fakemac::Mac& mac) { mac.failingProperties[selector] = -50; };
  };
  const std::string tap = "Could not create the audio tap (OSStatus ";
  const std::string device = "Could not create the aggregate capture device (OSStatus ";
  const std::string format = "Could not read the tap's stream format (OSStatus ";
  const std::string callback = "Could not install the audio callback (OSStatus ";
  const Failing all[] = {
      {"tap", call("AudioHardwareCreateProcessTap"), tap + "-50). Try restarting Audrel.", 0},
      {"tap id", empty("AudioHardwareCreateProcessTap"), tap + "0). Try restarting Audrel.", 0},
      {"tap UID", property('tuid'), tap + "-50). Try restarting Audrel.", 1},
      {"tap format", property('tfmt'), format + "-50).", 1},
      {"no format", [](auto& mac) { mac.tapFormatID = 0; }, format + "-1).", 1},
      {"format raises",
       [](auto& mac) { mac.raising["AVAudioFormat.initWithStreamDescription:"] = "a reason"; },
       format + "-1).", 1},
      {"output device", property('dOut'), device + "-50).", 1},
      {"no output device", [](auto& mac) { mac.defaultOutput = 0; }, device + "0).", 1},
      {"its UID", property('uid '), device + "-50).", 1},
      {"device", call("AudioHardwareCreateAggregateDevice"), device + "-50).", 1},
      {"device id", empty("AudioHardwareCreateAggregateDevice"), device + "0).", 1},
      {"file", [](auto& mac) { mac.openFails = {"domain", 1, "No room."}; },
       "Could not create the output file: No room.", 0},
      {"file raises",
       [](auto& mac) {
         mac.raising["AVAudioFile.initForWriting:settings:commonFormat:interleaved:error:"] =
             "required condition is false: a reason";
       },
       "Could not create the output file: required condition is false: a reason", 0},
      {"procedure", call("AudioDeviceCreateIOProcID"), callback + "-50).", 0},
      {"procedure id", empty("AudioDeviceCreateIOProcID"), callback + "0).", 0},
      {"start", call("AudioDeviceStart"), callback + "-50).", 0},
  };
  for (const Failing& failing : all) {
    SCOPED_TRACE(failing.what);
    fakemac::resetHardware();
    mac().files.clear();
    mac().alerts.clear();
    run([&] {
      failing.arrange(mac());
      choose("Start Recording");
      ASSERT_EQ(mac().alerts.size(), 1U);
      EXPECT_EQ(mac().alerts.front().message, "Recording failed");
      EXPECT_EQ(mac().alerts.front().text, failing.text);
      EXPECT_EQ(mac().alerts.front().style, 2U);
      EXPECT_EQ(fakemac::hardwareObjects(), failing.left);
      for (const auto& file : mac().files) {
        EXPECT_FALSE(file.isOpen);
      }
      mac().failing.clear();
      mac().withoutResult.clear();
      mac().failingProperties.clear();
      mac().openFails.reset();
      mac().raising.clear();
      mac().tapFormatID = 'lpcm';
      mac().defaultOutput = 51;
      choose("Start Recording");
      EXPECT_EQ(mac().alerts.size(), 1U);
      choose("Stop Recording");
      EXPECT_EQ(fakemac::hardwareObjects(), failing.left);
    });
  }
}

}  // namespace
}  // namespace audrel::macos
