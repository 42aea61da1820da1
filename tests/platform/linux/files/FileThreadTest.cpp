// A file is used by one thread at a time, but by several over its life.

#include <gtest/gtest.h>

#include <thread>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

TEST(FileThreads, openingWritingAndClosingMayEachHaveTheirOwn) {
  const support::TemporaryFolder folder;
  LogBook log;
  AudioFramework framework(log);
  const Audio audio = noise(60'000);
  for (const auto& [name, settings] :
       {std::pair("a.wav", wavSettings(audio)), std::pair("a.m4a", m4aSettings(audio))}) {
    auto file = openFile(framework, folder / name, settings);
    for (int i = 0; i < 2; ++i) {
      std::thread([&] { EXPECT_TRUE(deliver(framework, *file, audio).empty()); }).join();
    }
    std::thread([last = std::move(file)]() mutable { last.reset(); }).join();
    EXPECT_EQ(probe(folder / name).duration, 120'000);
  }
}

TEST(FileThreads, buffersAreMadeOnOneAndFreedOnAnother) {
  LogBook log;
  AudioFramework framework(log);
  const auto format = framework.makeFormat(floatDescription(48000, 2));
  for (int i = 0; i < 100; ++i) {
    auto buffer = framework.makePCMBuffer(format, 512);
    std::thread([owned = std::move(buffer)]() mutable { owned.reset(); }).join();
  }
}

TEST(FileThreads, severalFilesMayBeWrittenAtOnce) {
  const support::TemporaryFolder folder;
  LogBook log;
  AudioFramework framework(log);
  const Audio audio = noise(60'000);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&, i] {
      const auto file =
          openFile(framework, folder / (std::to_string(i) + ".m4a"), m4aSettings(audio));
      EXPECT_TRUE(deliver(framework, *file, audio).empty());
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(probe(folder / (std::to_string(i) + ".m4a")).duration, 60'000);
  }
}

}  // namespace
}  // namespace audrel::linuxos::test
