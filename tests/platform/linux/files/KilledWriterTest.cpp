// What is left of a recording when its program is killed.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <random>

#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

enum class Kind { m4a, wav };

/// How a file ends: with a whole block, or perhaps in the middle of one.
enum class Ending { whole, torn };

class Kills : public testing::TestWithParam<Kind> {
 protected:
  AV::Settings settings(const Audio& audio) const {
    return GetParam() == Kind::m4a ? m4aSettings(audio) : wavSettings(audio);
  }

  std::string name() const { return GetParam() == Kind::m4a ? "killed.m4a" : "killed.wav"; }

  /// Checks that `path` plays all of `delivered` frames of `audio` but the last second, from the
  /// first frame on.
  void expectAllButASecond(const std::filesystem::path& path, const Audio& audio,
                           std::size_t delivered, Ending ending) {
    const std::size_t expected = delivered - std::min<std::size_t>(delivered, audio.sampleRate);
    std::size_t playable = 0;
    if (GetParam() == Kind::wav) {
      const auto samples = readWav(path).samples;
      auto original = asSixteenBit(audio.samples);
      ASSERT_LE(samples.size(), original.size());
      original.resize(samples.size());
      EXPECT_EQ(samples, original);
      playable = samples.size() / audio.channels;
    } else {
      const auto decoded = ending == Ending::torn ? decodeTorn(path) : decode(path);
      EXPECT_LT(errorRatio(audio, decoded), 0.1);
      if (decoded.size() > 20'000) {
        EXPECT_EQ(lag(audio, decoded), 0);
      }
      playable = decoded.size() / audio.channels;
    }
    EXPECT_GE(playable, expected);
  }

  support::TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Files, Kills, testing::Values(Kind::m4a, Kind::wav),
                         [](const auto& parameter) {
                           return parameter.param == Kind::m4a ? "m4a" : "wav";
                         });

TEST_P(Kills, betweenAnyTwoWritesOrInOneCostAtMostASecond) {
  const auto disk = std::make_shared<FakeDisk>();
  LogBook log;
  AudioFramework framework(log, disk->creator());
  const Audio audio = noise(100'000);
  auto file = openFile(framework, name(), settings(audio));
  EXPECT_TRUE(deliver(framework, *file, audio, [&](std::size_t frames) {
                disk->delivered = frames;
              }).empty());
  file.reset();

  ASSERT_GE(disk->journal.size(), 7U);
  for (std::size_t calls = 1; calls <= disk->journal.size(); ++calls) {
    const bool isLast = calls == disk->journal.size();
    const std::size_t delivered = isLast ? audio.frames() : disk->journal[calls].delivered;
    SCOPED_TRACE(testing::Message() << "after " << calls << " of " << disk->journal.size());
    disk->replay(calls, 0, folder_ / name());
    expectAllButASecond(folder_ / name(), audio, delivered, Ending::whole);

    // Only what lengthens the file can be caught half done; what is changed in place is a few
    // bytes of one page.
    const bool lengthens =
        !isLast && disk->journal[calls].offset > 0 && disk->journal[calls].bytes.size() > 16;
    if (lengthens) {
      for (const std::size_t part : {std::size_t{4}, disk->journal[calls].bytes.size() / 2}) {
        SCOPED_TRACE(testing::Message() << "and " << part << " bytes of the next");
        disk->replay(calls, part, folder_ / name());
        expectAllButASecond(folder_ / name(), audio, delivered, Ending::torn);
      }
    }
  }
}

TEST_P(Kills, writesInPlaceStayWithinOnePage) {
  const auto disk = std::make_shared<FakeDisk>();
  LogBook log;
  AudioFramework framework(log, disk->creator());
  const Audio audio = noise(100'000);
  auto file = openFile(framework, name(), settings(audio));
  deliver(framework, *file, audio);
  file.reset();
  std::uint64_t end = 0;
  std::size_t inPlace = 0;
  for (const FakeDisk::Call& call : disk->journal) {
    ASSERT_EQ(call.kind, FakeDisk::Call::Kind::write);
    if (call.offset < end) {
      EXPECT_LE(call.offset + call.bytes.size(), 512U);
      ++inPlace;
    } else {
      EXPECT_EQ(call.offset, end) << "no gaps";
    }
    end = std::max<std::uint64_t>(end, call.offset + call.bytes.size());
  }
  EXPECT_EQ(inPlace, GetParam() == Kind::m4a ? 1U : 5U);
}

TEST_P(Kills, bySignalAtRandomTimesCostAtMostASecond) {
  const Audio audio = noise(960'000);
  void* shared = mmap(nullptr, sizeof(std::atomic<std::size_t>), PROT_READ | PROT_WRITE,
                      MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(shared, MAP_FAILED);
  auto* delivered = new (shared) std::atomic<std::size_t>(0);
  std::minstd_rand random(GetParam() == Kind::m4a ? 1 : 2);
  for (int round = 0; round < 5; ++round) {
    const auto path = folder_ / (std::to_string(round) + name());
    *delivered = 0;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      LogBook log;
      AudioFramework framework(log);
      auto file = openFile(framework, path, settings(audio));
      deliver(framework, *file, audio, [&](std::size_t frames) {
        *delivered = frames;
        usleep(200);
      });
      file.reset();
      pause();
    }
    while (*delivered < 10'000) {
      usleep(1000);
    }
    usleep(static_cast<useconds_t>(random() % 150'000));
    ASSERT_EQ(kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    SCOPED_TRACE(testing::Message() << "after " << *delivered << " frames");
    expectAllButASecond(path, audio, *delivered, Ending::torn);
  }
  munmap(shared, sizeof(std::atomic<std::size_t>));
}

}  // namespace
}  // namespace audrel::linuxos::test
