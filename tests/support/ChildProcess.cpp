#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

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

/// The child's side: nothing here may allocate, since other threads may have held the heap's lock.
[[noreturn]] void become(char* const* arguments, char* const* environment, const Pipe& input,
                         const Pipe& output, bool showsErrors, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);
  }
  dup2(input.readEnd, STDIN_FILENO);
  dup2(output.writeEnd, STDOUT_FILENO);
  if (!showsErrors) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
  }
  execvpe(arguments[0], arguments, environment);
  _exit(EXIT_FAILURE);
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
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid == 0) {
    become(arguments.data(), environment.data(), input, output, program.showsErrors, parent);
  }
  if (pid < 0) {
    input.close();
    output.close();
    return nullptr;
  }
  close(input.readEnd);
  close(output.writeEnd);
  return std::unique_ptr<ChildProcess>(new ChildProcess(pid, input.writeEnd, output.readEnd));
}

ChildProcess::~ChildProcess() {
  end(SIGKILL);
  close(input_);
  close(output_);
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

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    if (const auto end = unread_.find('\n'); end != std::string::npos) {
      std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      return line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd waited{.fd = output_, .events = POLLIN, .revents = 0};
    if (left.count() <= 0 || poll(&waited, 1, static_cast<int>(left.count())) <= 0) {
      return std::nullopt;
    }
    std::array<char, 4096> block{};
    const ssize_t size = read(output_, block.data(), block.size());
    if (size <= 0) {
      return std::nullopt;
    }
    unread_.append(block.data(), static_cast<std::size_t>(size));
  }
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

}  // namespace audrel::support
