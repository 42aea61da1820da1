// A file is used by one thread at a time, but by several over its life.

#include <thread>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

using FileThreads = FileTest;

TEST_F(FileThreads, openingWritingAndClosingMayEachHaveTheirOwn) {
  const Audio audio = noise(60'000);
  for (const auto& [name, settings] :
       {std::pair("a.wav", wavSettings(audio)), std::pair("a.m4a", m4aSettings(audio))}) {
    auto file = openFile(framework_, folder_ / name, settings);
    for (int i = 0; i < 2; ++i) {
      std::thread([&] { EXPECT_TRUE(deliver(framework_, *file, audio).empty()); }).join();
    }
    std::thread([last = std::move(file)]() mutable { last.reset(); }).join();
    EXPECT_EQ(probe(folder_ / name).duration, 120'000);
  }
}

TEST_F(FileThreads, severalFilesMayBeWrittenAtOnce) {
  const Audio audio = noise(60'000);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&, i] {
      const auto file =
          openFile(framework_, folder_ / (std::to_string(i) + ".m4a"), m4aSettings(audio));
      EXPECT_TRUE(deliver(framework_, *file, audio).empty());
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(probe(folder_ / (std::to_string(i) + ".m4a")).duration, 60'000);
  }
}

}  // namespace
}  // namespace audrel::linuxos::test
