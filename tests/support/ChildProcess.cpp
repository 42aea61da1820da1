#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace audrel::support {

namespace {

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  bool open() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) < 0) {
      return false;
    }
    readEnd = ends[0];
    writeEnd = ends[1];
    return true;
  }

  void close() const {
    for (const int end : {readEnd, writeEnd}) {
      if (end >= 0) {
        ::close(end);
      }
    }
  }
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& added) {
  std::vector<std::string> result;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!added.contains(text.substr(0, text.find('=')))) {
      result.push_back(text);
    }
  }
  for (const auto& [name, value] : added) {
    result.push_back(name + "=" + value);
  }
  return result;
}

void treatSignalsAsUsual() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
    std::signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

struct Descriptors {
  int input;
  int output;
  int errors;
};

/// The child's side: nothing here may allocate, since other threads may have held the heap's lock.
[[noreturn]] void become(char* const* arguments, char* const* environment, Descriptors standard,
                         const ChildProcess::Program& program, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);
  }
  treatSignalsAsUsual();
  if (program.terminal >= 0) {
    setsid();
    ioctl(program.terminal, TIOCSCTTY, 0);
    standard = {program.terminal, program.terminal, program.terminal};
  }
  dup2(standard.input, STDIN_FILENO);
  dup2(standard.output, STDOUT_FILENO);
  dup2(standard.errors, STDERR_FILENO);
  for (const int descriptor : program.closed) {
    close(descriptor);
  }
  execvpe(arguments[0], arguments, environment);
  _exit(EXIT_FAILURE);
}

/// Where a program's standard error goes: a file without a name, nowhere, or where this one's goes.
int errorsOf(const ChildProcess::Program& program) {
  if (program.keepsErrors) {
    return memfd_create("errors", MFD_CLOEXEC);
  }
  return program.showsErrors ? fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)
                             : open("/dev/null", O_WRONLY | O_CLOEXEC);
}

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(const Program& program) {
  std::vector<std::string> argumentTexts = program.arguments;
  std::vector<std::string> environmentTexts = environmentWith(program.environment);
  const auto arguments = pointers(argumentTexts);
  const auto environment = pointers(environmentTexts);
  Pipe input;
  Pipe output;
  if (!input.open() || !output.open()) {
    input.close();
    return nullptr;
  }
  const int errors = errorsOf(program);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid == 0) {
    become(arguments.data(), environment.data(), {input.readEnd, output.writeEnd, errors}, program,
           parent);
  }
  if (pid < 0) {
    input.close();
    output.close();
    close(errors);
    return nullptr;
  }
  close(input.readEnd);
  close(output.writeEnd);
  if (!program.keepsErrors) {
    close(errors);
  }
  return std::unique_ptr<ChildProcess>(
      new ChildProcess(pid, input.writeEnd, output.readEnd, program.keepsErrors ? errors : -1));
}

ChildProcess::~ChildProcess() {
  end(SIGKILL);
  for (const int descriptor : {input_, output_, errors_}) {
    close(descriptor);
  }
}

bool ChildProcess::isRunning() {
  if (!hasEnded_ && waitpid(pid_, nullptr, WNOHANG) == pid_) {
    hasEnded_ = true;
  }
  return !hasEnded_;
}

void ChildProcess::writeLine(const std::string& line) const {
  const std::string text = line + "\n";
  [[maybe_unused]] const ssize_t written = write(input_, text.data(), text.size());
}

bool ChildProcess::readBlock(std::chrono::milliseconds timeout) {
  pollfd waited{.fd = output_, .events = POLLIN, .revents = 0};
  std::array<char, 4096> block{};
  if (timeout.count() < 0 || poll(&waited, 1, static_cast<int>(timeout.count())) <= 0) {
    return false;
  }
  const ssize_t size = read(output_, block.data(), block.size());
  if (size > 0) {
    unread_.append(block.data(), static_cast<std::size_t>(size));
  }
  return size > 0;
}

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    if (const auto end = unread_.find('\n'); end != std::string::npos) {
      std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      return line;
    }
    if (!readBlock(std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now()))) {
      return std::nullopt;
    }
  }
}

std::string ChildProcess::output() {
  while (readBlock(std::chrono::milliseconds::zero())) {
  }
  return std::exchange(unread_, {});
}

std::string ChildProcess::errorOutput() const {
  std::string all;
  std::array<char, 4096> part{};
  for (ssize_t size = 0;
       (size = pread(errors_, part.data(), part.size(), static_cast<off_t>(all.size()))) > 0;) {
    all.append(part.data(), static_cast<std::size_t>(size));
  }
  return all;
}

void ChildProcess::signal(int number) const {
  kill(pid_, number);
}

void ChildProcess::end(int signal) {
  if (hasEnded_) {
    return;
  }
  kill(pid_, signal);
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  hasEnded_ = true;
}

int ChildProcess::waitForEnd() {
  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  hasEnded_ = true;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Outcome outcomeOf(ChildProcess::Program program) {
  program.keepsErrors = true;
  const auto child = ChildProcess::start(program);
  if (child == nullptr) {
    return {-1, "", "it cannot be started"};
  }
  const int status = child->waitForEnd();
  return {status, child->output(), child->errorOutput()};
}

}  // namespace audrel::support
