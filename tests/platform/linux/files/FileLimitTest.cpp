// A real limit on a file's size. The recording runs in a child, since limits are the process's.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

void limitFileSize(rlim_t bytes) {
  const rlimit limit = {bytes, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

/// Records `audio` to `path` with a limit of 300 kB from the start, which goes away in the middle
/// if `lifted`. Exit code 0 when errors came exactly while the limit was in the way.
int recordWithLimit(const std::filesystem::path& path, const AV::Settings& settings,
                    const Audio& audio, bool lifted) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    limitFileSize(300'000);
    LogBook log;
    AudioFramework framework(log);
    auto file = openFile(framework, path, settings);
    const auto errors = deliver(framework, *file, audio, [&](std::size_t frames) {
      if (lifted && frames > audio.frames() / 2) {
        limitFileSize(RLIM_INFINITY);
      }
    });
    file.reset();
    const bool told = !errors.empty() && std::ranges::all_of(errors, [](const NS::Error& error) {
      return error.code == EFBIG && error.localizedDescription.find("ulimit") != std::string::npos;
    });
    const std::size_t logged = lifted ? 0 : 1;
    _exit(told && log.errors.size() == logged ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(FileSizeLimit, isAnErrorAndWhatFitsIsRight) {
  const support::TemporaryFolder folder;
  const Audio audio = noise(800'000);
  ASSERT_EQ(recordWithLimit(folder / "a.wav", wavSettings(audio), audio, false), 0);
  auto expected = asSixteenBit(audio.samples);
  expected.resize(3UL * 24'000 * 2);  // whole blocks
  EXPECT_EQ(readWav(folder / "a.wav").samples, expected);

  ASSERT_EQ(recordWithLimit(folder / "a.m4a", m4aSettings(audio), audio, false), 0);
  const auto decoded = decode(folder / "a.m4a");
  EXPECT_GT(decoded.size() / 2, 7UL * 48'000);
  EXPECT_LT(errorRatio(audio, decoded), 0.1);
}

TEST(FileSizeLimit, thatGoesAwayCostsNothing) {
  const support::TemporaryFolder folder;
  const Audio audio = noise(800'000);
  ASSERT_EQ(recordWithLimit(folder / "a.wav", wavSettings(audio), audio, true), 0);
  EXPECT_EQ(readWav(folder / "a.wav").samples, asSixteenBit(audio.samples));

  const Audio longer = noise(1'200'000);
  ASSERT_EQ(recordWithLimit(folder / "a.m4a", m4aSettings(longer), longer, true), 0);
  EXPECT_EQ(probe(folder / "a.m4a").duration, 1'200'000);
  EXPECT_LT(errorRatio(longer, decode(folder / "a.m4a")), 0.1);
}

}  // namespace
}  // namespace audrel::linuxos::test
