#include "tests/cli/ChildProcess.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace audrel::cli {

namespace {

using namespace std::chrono_literals;

/// A file without a name.
int anonymousFile() {
  std::string name = (std::filesystem::temp_directory_path() / "audrel-test-XXXXXX").string();
  const int file = mkostemp(name.data(), O_CLOEXEC);
  unlink(name.c_str());
  return file;
}

void treatSignalsAsUsual() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
    std::signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void become(std::vector<char*>& arguments, const ChildEnvironment& environment,
                         int output, int errorOutput) {
  treatSignalsAsUsual();
  for (const auto& [name, value] : environment.set) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  if (environment.terminal >= 0) {
    setsid();
    ioctl(environment.terminal, TIOCSCTTY, 0);
    output = errorOutput = environment.terminal;
  }
  dup2(environment.terminal >= 0 ? environment.terminal : open("/dev/null", O_RDONLY),
       STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(errorOutput, STDERR_FILENO);
  for (const int descriptor : environment.closed) {
    close(descriptor);
  }
  execv(arguments[0], arguments.data());
  _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const ChildEnvironment& environment)
    : output_(anonymousFile()), errorOutput_(anonymousFile()) {
  auto words = arguments;
  std::vector<char*> pointers;
  for (auto& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  pid_ = fork();
  if (pid_ < 0) {
    throw std::runtime_error("fork failed");
  }
  if (pid_ == 0) {
    become(pointers, environment, output_, errorOutput_);
  }
}

ChildProcess::~ChildProcess() {
  if (!ended_) {
    signal(SIGKILL);
    wait();
  }
  close(output_);
  close(errorOutput_);
}

void ChildProcess::signal(int number) const {
  kill(pid_, number);
}

bool ChildProcess::waitForErrorOutput(const std::string& text, std::chrono::seconds timeout) const {
  const auto end = std::chrono::steady_clock::now() + timeout;
  while (errorOutput().find(text) == std::string::npos) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(5ms);
  }
  return true;
}

int ChildProcess::wait() {
  int status = 0;
  waitpid(pid_, &status, 0);
  ended_ = true;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string ChildProcess::contents(int file) {
  std::string all;
  std::array<char, 4096> part{};
  for (ssize_t size = 0;
       (size = pread(file, part.data(), part.size(), static_cast<off_t>(all.size()))) > 0;) {
    all.append(part.data(), static_cast<std::size_t>(size));
  }
  return all;
}

}  // namespace audrel::cli
