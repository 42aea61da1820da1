// The whole program, from its process entry's point of view, on a Mac of the tests' own: launched,
// its menu opened and clicked, its IO procedure fed, quit.

#include <csignal>
#include <functional>

#include "tests/macos/execution/MacProgramTest.h"

namespace audrel::macos {
namespace {

class ProgramTest : public MacProgramTest {};

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

}  // namespace
}  // namespace audrel::macos
