#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <thread>
#include <vector>

#include "platform/Log.h"

/// What every platform's log keeps. An implementation is a type with
///   os::Log& log();
namespace audrel::contract {

template <typename Implementation>
class LogContract : public testing::Test {
 protected:
  Implementation implementation;
  os::Log& log = implementation.log();
};

TYPED_TEST_SUITE_P(LogContract);

TYPED_TEST_P(LogContract, aSubsystemAndCategoryHaveOneLogger) {
  EXPECT_EQ(this->log.makeLogger("org.example", "one"), this->log.makeLogger("org.example", "one"));
}

TYPED_TEST_P(LogContract, anotherSubsystemOrCategoryHasALoggerOfItsOwn) {
  const auto logger = this->log.makeLogger("org.example", "one");
  EXPECT_NE(this->log.makeLogger("org.example", "two"), logger);
  EXPECT_NE(this->log.makeLogger("org.example.other", "one"), logger);
}

TYPED_TEST_P(LogContract, threadsThatAskAtOnceGetTheSameLogger) {
  std::array<std::shared_ptr<os::Logger>, 4> loggers;
  std::vector<std::thread> threads;
  for (auto& logger : loggers) {
    threads.emplace_back([&] { logger = this->log.makeLogger("org.example", "one"); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_NE(loggers[0], nullptr);
  for (const auto& logger : loggers) {
    EXPECT_EQ(logger, loggers[0]);
  }
}

REGISTER_TYPED_TEST_SUITE_P(LogContract, aSubsystemAndCategoryHaveOneLogger,
                            anotherSubsystemOrCategoryHasALoggerOfItsOwn,
                            threadsThatAskAtOnceGetTheSameLogger);

}  // namespace audrel::contract
