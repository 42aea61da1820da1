#include "cli/Signals.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <thread>

namespace audrel::cli {
namespace {

using namespace std::chrono_literals;
using Event = Signals::Event;

constexpr std::chrono::milliseconds atOnce{0};

void (*handlerOf(int signal))(int) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

TEST(Signals, withoutAnyTheWaitTimesOut) {
  Signals signals;
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(signals.wait(20ms), Event::timeout);
  EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
}

TEST(Signals, interruptTerminationAndHangUpAskToStop) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Signals signals;
    raise(signal);
    EXPECT_EQ(signals.wait(std::nullopt), Event::stop) << signal;
  }
}

TEST(Signals, theWishToStopStaysHoweverOftenItComes) {
  Signals signals;
  for (int i = 0; i < 100'000; ++i) {  // more than a pipe holds
    raise(SIGINT);
  }
  EXPECT_EQ(signals.wait(std::nullopt), Event::stop);
  EXPECT_EQ(signals.wait(std::nullopt), Event::stop);
  raise(SIGINT);
  EXPECT_EQ(signals.wait(atOnce), Event::stop);
}

TEST(Signals, aNewWindowSizeIsToldOnce) {
  Signals signals;
  raise(SIGWINCH);
  raise(SIGWINCH);
  EXPECT_EQ(signals.wait(std::nullopt), Event::resized);
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

TEST(Signals, anotherThreadEndsTheWait) {
  Signals signals;
  std::thread other([&signals] {
    std::this_thread::sleep_for(5ms);
    signals.wake();
  });
  EXPECT_EQ(signals.wait(std::nullopt), Event::woken);
  other.join();
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

TEST(Signals, aWakeThatCameBeforeTheWaitIsNotLost) {
  Signals signals;
  signals.wake();
  EXPECT_EQ(signals.wait(std::nullopt), Event::woken);
}

TEST(Signals, stopComesBeforeAllElse) {
  Signals signals;
  raise(SIGWINCH);
  signals.wake();
  raise(SIGTERM);
  EXPECT_EQ(signals.wait(std::nullopt), Event::stop);
}

TEST(Signals, aClosedPipeAndAFileSizeLimitAreIgnored) {
  Signals signals;
  EXPECT_EQ(handlerOf(SIGPIPE), SIG_IGN);
  EXPECT_EQ(handlerOf(SIGXFSZ), SIG_IGN);
  raise(SIGPIPE);
  raise(SIGXFSZ);
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

TEST(Signals, whatTheCallerIgnoresStaysIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  {
    Signals signals;
    raise(SIGHUP);
    EXPECT_EQ(signals.wait(atOnce), Event::timeout);
  }
  EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
  std::signal(SIGHUP, SIG_DFL);
}

TEST(Signals, allIsAsBeforeAfterwards) {
  {
    const Signals signals;
    EXPECT_NE(handlerOf(SIGINT), SIG_DFL);
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGPIPE, SIGXFSZ}) {
    EXPECT_EQ(handlerOf(signal), SIG_DFL) << signal;
  }
}

TEST(Signals, laterOnesStartAfresh) {
  {
    const Signals signals;
    raise(SIGINT);
  }
  Signals signals;
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

}  // namespace
}  // namespace audrel::cli
