#include "platform/linux/system/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/system/JournalLogger.h"
#include "platform/linux/system/StandardErrorLog.h"

namespace audrel::linuxos {
namespace {

using os::LogLevel;
using testing::ElementsAre;

std::vector<std::vector<std::string>>& entries() {
  static std::vector<std::vector<std::string>> all;
  return all;
}

void recordEntry(std::span<const iovec> fields) {
  std::vector<std::string> entry;
  for (const auto& field : fields) {
    entry.emplace_back(static_cast<const char*>(field.iov_base), field.iov_len);
  }
  entries().push_back(std::move(entry));
}

TEST(JournalLogger, sendsOneEntryALineWithItsFields) {
  entries().clear();
  JournalLogger logger("io.example.App", "engine", recordEntry);
  logger.info("Recording started");
  logger.error("two\nlines = 5");
  ASSERT_EQ(entries().size(), 2U);
  EXPECT_THAT(entries()[0],
              ElementsAre("MESSAGE=Recording started", "PRIORITY=6", "SUBSYSTEM=io.example.App",
                          "CATEGORY=engine", "SYSLOG_IDENTIFIER=linux_system_test"));
  EXPECT_THAT(entries()[1],
              ElementsAre("MESSAGE=two\nlines = 5", "PRIORITY=3", "SUBSYSTEM=io.example.App",
                          "CATEGORY=engine", "SYSLOG_IDENTIFIER=linux_system_test"));
}

/// What `write` has such a log put on its descriptor.
std::string written(LogLevel minimum,
                    const std::function<void(std::shared_ptr<StandardErrorLog>)>& write) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  write(std::make_shared<StandardErrorLog>(ends[1], minimum));
  close(ends[1]);
  std::string text;
  std::array<char, 4096> part{};
  for (ssize_t size = 0; (size = read(ends[0], part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(size));
  }
  close(ends[0]);
  return text;
}

TEST(StandardErrorLog, saysCategoryLevelAndTextOfWhatIsNotBelowItsMinimum) {
  const auto write = [](const std::shared_ptr<StandardErrorLog>& log) {
    log->makeLogger("engine")->info("Recording started");
    log->makeLogger("discovery")->error("failed: -50");
  };
  EXPECT_EQ(written(LogLevel::info, write),
            "[engine] info: Recording started\n[discovery] error: failed: -50\n");
  EXPECT_EQ(written(LogLevel::error, write), "[discovery] error: failed: -50\n");
}

TEST(StandardErrorLog, countsALineThatComesAgain) {
  EXPECT_EQ(written(LogLevel::info,
                    [](const std::shared_ptr<StandardErrorLog>& log) {
                      const auto logger = log->makeLogger("engine");
                      for (int i = 0; i < 3; ++i) {
                        logger->error("disk full");
                      }
                      logger->info("Recording stopped");
                      logger->error("disk full");
                      logger->error("disk full");
                    }),
            "[engine] error: disk full\n(the last line came 2 more times)\n"
            "[engine] info: Recording stopped\n"
            "[engine] error: disk full\n(the last line came 1 more times)\n");
}

TEST(StandardErrorLog, leavesOutWhatOthersTell) {
  EXPECT_EQ(written(LogLevel::error,
                    [](const std::shared_ptr<StandardErrorLog>& log) {
                      const auto engine = log->makeLogger("engine");
                      log->leaveOut({"engine", "file"});
                      engine->error("It failed.");
                      log->makeLogger("file")->error("It failed.");
                      log->makeLogger("capture")->error("Audio server lost");
                    }),
            "[capture] error: Audio server lost\n");
}

TEST(StandardErrorLog, showsNamesAsTheTerminalDoes) {
  EXPECT_EQ(written(LogLevel::info,
                    [](const std::shared_ptr<StandardErrorLog>& log) {
                      log->makeLogger("engine")->info("a\x1b[31mb\nc\x7f \u009b \xff \u202egpj é");
                    }),
            "[engine] info: a\\x1b[31mb\\x0ac\\x7f \\x9b \\xff \\u202egpj é\n");
}

TEST(StandardErrorLog, itsLoggersMayOutliveItAndShareItBetweenThreads) {
  const auto text = written(LogLevel::info, [](std::shared_ptr<StandardErrorLog> log) {
    const std::vector<std::shared_ptr<os::Logger>> loggers = {log->makeLogger("one"),
                                                              log->makeLogger("two")};
    log.reset();
    std::vector<std::thread> threads;
    threads.reserve(loggers.size());
    for (const auto& logger : loggers) {
      threads.emplace_back([logger] {
        for (int i = 0; i < 100; ++i) {
          logger->info(std::to_string(i));
        }
      });
    }
    for (auto& thread : threads) {
      thread.join();
    }
  });
  EXPECT_EQ(std::ranges::count(text, '\n'), 200);
}

TEST(Log, makesALoggerThatTakesLines) {
  testing::internal::CaptureStderr();
  Log(LogLevel::error).makeLogger("io.example.App", "engine")->error("kept");
  const auto text = testing::internal::GetCapturedStderr();
  if (access("/run/systemd/journal/socket", W_OK) == 0) {
    EXPECT_EQ(text, "");
  } else {
    EXPECT_EQ(text, "[engine] error: kept\n");
  }
}

}  // namespace
}  // namespace audrel::linuxos
