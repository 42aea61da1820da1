#include "tests/platform/linux/pipewire/harness/Player.h"

#include <sys/wait.h>

#include <chrono>
#include <sstream>
#include <thread>
#include <utility>

namespace audrel::pwtest {

namespace {

using namespace std::chrono_literals;

constexpr auto answerTimeout = 10s;

}  // namespace

Player::Player(const std::string& socketPath, std::vector<std::string> properties) {
  std::vector<std::string> arguments = {AUDREL_TEST_PLAYER, socketPath};
  arguments.insert(arguments.end(), properties.begin(), properties.end());
  process_ = support::ChildProcess::start({.arguments = std::move(arguments), .environment = {}});
  isReady_ = process_ && process_->readLine(answerTimeout) == "ready";
}

std::string Player::ask(const std::string& command) {
  process_->writeLine(command);
  return process_->readLine(answerTimeout).value_or("");
}

bool Player::tell(const std::string& command) {
  return ask(command) == "ok";
}

bool Player::open(const std::string& name, std::uint32_t stampStream) {
  return open(name, "stamp:" + std::to_string(stampStream) + " f32 2 48000");
}

bool Player::open(const std::string& name, const std::string& description) {
  return tell("open " + name + " " + description);
}

Player::Report Player::report(const std::string& name) {
  std::istringstream words(ask("report " + name));
  Report report;
  words >> report.playedFrames >> report.graphRate >> report.shortestQuantum >>
      report.longestQuantum;
  Stretch stretch;
  while (words >> stretch.graphPosition >> stretch.frame) {
    report.stretches.push_back(stretch);
  }
  return report;
}

bool Player::waitForMore(const std::string& name, std::uint64_t frames) {
  const std::uint64_t wanted = report(name).playedFrames + frames;
  const auto deadline = std::chrono::steady_clock::now() + answerTimeout;
  while (report(name).playedFrames < wanted) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

void Player::hang() {
  kill(pid(), SIGSTOP);
  waitpid(pid(), nullptr, WUNTRACED);
}

}  // namespace audrel::pwtest
