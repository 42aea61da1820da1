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
  struct sigaction action{};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

/// Whoever started the tests may ignore signals, as a shell does for what it runs in the
/// background.
class SignalsTest : public testing::Test {
 protected:
  SignalsTest() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
      signal(number, SIG_DFL);
    }
  }
};

TEST_F(SignalsTest, withoutAnyTheWaitTimesOut) {
  Signals signals;
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(signals.wait(20ms), Event::timeout);
  EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
}

TEST_F(SignalsTest, interruptTerminationAndHangUpAskToStop) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Signals signals;
    raise(signal);
    EXPECT_EQ(signals.wait(std::nullopt), Event::stop) << signal;
  }
}

TEST_F(SignalsTest, theWishToStopStaysHoweverOftenItComes) {
  Signals signals;
  for (int i = 0; i < 100'000; ++i) {  // more than a pipe holds
    raise(SIGINT);
  }
  EXPECT_EQ(signals.wait(std::nullopt), Event::stop);
  EXPECT_EQ(signals.wait(std::nullopt), Event::stop);
  raise(SIGINT);
  EXPECT_EQ(signals.wait(atOnce), Event::stop);
}

TEST_F(SignalsTest, aNewWindowSizeIsToldOnce) {
  Signals signals;
  raise(SIGWINCH);
  raise(SIGWINCH);
  EXPECT_EQ(signals.wait(std::nullopt), Event::resized);
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

TEST_F(SignalsTest, goingOnAfterAStopIsRememberedAndMayHaveChangedTheWindow) {
  Signals signals;
  EXPECT_FALSE(signals.wasStopped());
  raise(SIGCONT);
  EXPECT_EQ(signals.wait(std::nullopt), Event::resized);
  EXPECT_TRUE(signals.wasStopped());
}

TEST_F(SignalsTest, anotherThreadEndsTheWait) {
  Signals signals;
  std::thread other([&signals] {
    std::this_thread::sleep_for(5ms);
    signals.wake();
  });
  EXPECT_EQ(signals.wait(std::nullopt), Event::woken);
  other.join();
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

TEST_F(SignalsTest, aWakeThatCameBeforeTheWaitIsNotLost) {
  Signals signals;
  signals.wake();
  EXPECT_EQ(signals.wait(std::nullopt), Event::woken);
}

TEST_F(SignalsTest, stopComesBeforeAllElse) {
  Signals signals;
  raise(SIGWINCH);
  signals.wake();
  raise(SIGTERM);
  EXPECT_EQ(signals.wait(std::nullopt), Event::stop);
}

TEST_F(SignalsTest, aClosedPipeAndAFileSizeLimitAreIgnored) {
  Signals signals;
  EXPECT_EQ(handlerOf(SIGPIPE), SIG_IGN);
  EXPECT_EQ(handlerOf(SIGXFSZ), SIG_IGN);
  raise(SIGPIPE);
  raise(SIGXFSZ);
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

TEST_F(SignalsTest, whatTheCallerIgnoresStaysIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  {
    Signals signals;
    raise(SIGHUP);
    EXPECT_EQ(signals.wait(atOnce), Event::timeout);
  }
  EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
  std::signal(SIGHUP, SIG_DFL);
}

TEST_F(SignalsTest, allIsAsBeforeAfterwards) {
  {
    const Signals signals;
    EXPECT_NE(handlerOf(SIGINT), SIG_DFL);
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGCONT, SIGPIPE, SIGXFSZ}) {
    EXPECT_EQ(handlerOf(signal), SIG_DFL) << signal;
  }
}

TEST_F(SignalsTest, laterOnesStartAfresh) {
  {
    const Signals signals;
    raise(SIGINT);
    raise(SIGCONT);
  }
  Signals signals;
  EXPECT_FALSE(signals.wasStopped());
  EXPECT_EQ(signals.wait(atOnce), Event::timeout);
}

}  // namespace
}  // namespace audrel::cli
