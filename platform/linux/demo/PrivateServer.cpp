#include "platform/linux/demo/PrivateServer.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>
#include <thread>
#include <vector>

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 5s;

// The sink names its whole format: where a part is open, 1.x gives it a port without a channel.
std::string configuration() {
  return R"(context.properties = {
    core.daemon = true
    core.name = pipewire-0
    support.dbus = false
    link.max-buffers = 16
    default.clock.rate = 48000
    default.clock.allowed-rates = [ 48000 ]
    default.clock.quantum = 1024
    default.clock.min-quantum = 1024
    default.clock.max-quantum = 1024
}
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.* = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-rt
      args = { rtportal.enabled = false rtkit.enabled = false }
      flags = [ ifexists nofail ] }
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
]
context.objects = [
    { factory = metadata args = { metadata.name = default } }
    { factory = spa-node-factory
      args = { factory.name = support.node.driver node.name = Dummy-Driver
               node.group = pipewire.dummy priority.driver = 20000 } }
    { factory = adapter
      args = { factory.name = support.null-audio-sink node.name = )" +
         std::string(PrivateServer::sinkName) + R"(
               media.class = Audio/Sink object.linger = true
               audio.format = F32P audio.rate = 48000 audio.position = "FL,FR"
               adapter.auto-port-config = { mode = dsp monitor = true position = preserve } } }
]
)";
}

/// Empty when none can be made.
std::filesystem::path temporaryFolder() {
  std::error_code error;
  const auto place = std::filesystem::absolute(std::filesystem::temp_directory_path(error), error);
  std::string path = (place / "audrel-XXXXXX").string();
  return place.empty() || mkdtemp(path.data()) == nullptr ? "" : path;
}

/// Whether it could be written.
bool writeConfiguration(const std::filesystem::path& folder) {
  std::ofstream file(folder / "pipewire.conf");
  file << configuration();
  file.close();
  return file.good();
}

/// The environment of this process, with what names a server replaced.
std::vector<std::string> serverEnvironment(const std::filesystem::path& folder) {
  std::vector<std::string> variables = {"PIPEWIRE_CONFIG_DIR=" + folder.string(),
                                        "PIPEWIRE_RUNTIME_DIR=" + folder.string(),
                                        "XDG_RUNTIME_DIR=" + folder.string()};
  constexpr std::array replaced = {"PIPEWIRE_", "XDG_RUNTIME_DIR=", "DBUS_"};
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (std::ranges::none_of(replaced,
                             [&](const char* start) { return text.starts_with(start); })) {
      variables.push_back(text);
    }
  }
  return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

/// The child's side of the fork: only what is safe after one.
[[noreturn]] void become(char* const* arguments, char* const* environment, pid_t parent,
                         int failurePipe) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) {
    _exit(EXIT_FAILURE);
  }
  // Ctrl-C in a terminal is for the program, which ends the server when it has finished.
  setpgid(0, 0);
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  const int quiet = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(quiet, descriptor);
  }
  execvpe(arguments[0], arguments, environment);
  const int error = errno;
  [[maybe_unused]] const ssize_t written = write(failurePipe, &error, sizeof error);
  _exit(EXIT_FAILURE);
}

bool answers(const std::string& socketPath) {
  const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
  const int result = connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  close(client);
  return result == 0;
}

/// Leaves the child's end to be waited for.
bool hasEnded(pid_t child) {
  siginfo_t ended{};
  return waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         ended.si_pid == child;
}

}  // namespace

PrivateServer::PrivateServer(std::filesystem::path folder) : folder_(std::move(folder)) {}

PrivateServer::~PrivateServer() {
  if (pid_ > 0) {
    kill(pid_, SIGTERM);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  removeFolder();
}

void PrivateServer::removeFolder() {
  std::error_code error;
  std::filesystem::remove_all(folder_, error);
}

std::string PrivateServer::socketPath() const {
  return (folder_ / "pipewire-0").string();
}

std::unique_ptr<PrivateServer> PrivateServer::start(std::string* failure) {
  std::unique_ptr<PrivateServer> server(new PrivateServer(temporaryFolder()));
  if (server->folder_.empty() || !writeConfiguration(server->folder_)) {
    *failure =
        "The demo could not write its configuration to a temporary folder: free some space "
        "there, or set TMPDIR to a folder that can be written to.";
    return nullptr;
  }
  if (!server->launch(failure) || !server->waitUntilItAnswers(failure)) {
    return nullptr;
  }
  return server;
}

bool PrivateServer::launch(std::string* failure) {
  std::vector<std::string> argumentTexts = {"pipewire", "-c", "pipewire.conf"};
  std::vector<std::string> environmentTexts = serverEnvironment(folder_);
  const auto arguments = pointers(argumentTexts);
  const auto environment = pointers(environmentTexts);
  int failurePipe[2];
  if (pipe2(failurePipe, O_CLOEXEC) < 0) {
    *failure =
        "The demo could not start its audio server: " + std::generic_category().message(errno) +
        ".";
    return false;
  }
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    become(arguments.data(), environment.data(), parent, failurePipe[1]);
  }
  int error = pid_ < 0 ? errno : 0;
  close(failurePipe[1]);
  const bool failed = pid_ < 0 || read(failurePipe[0], &error, sizeof error) > 0;
  close(failurePipe[0]);
  if (failed) {
    *failure = "The demo could not start the program \"pipewire\" (" +
               std::generic_category().message(error) + "): install the package pipewire.";
  }
  return !failed;
}

bool PrivateServer::waitUntilItAnswers(std::string* failure) const {
  const auto deadline = std::chrono::steady_clock::now() + startTimeout;
  while (std::chrono::steady_clock::now() < deadline) {
    if (answers(socketPath())) {
      return true;
    }
    if (hasEnded(pid_)) {
      *failure =
          "The demo's audio server ended at once: run \"pipewire -v\" to see what it misses.";
      return false;
    }
    std::this_thread::sleep_for(2ms);
  }
  *failure = "The demo's audio server does not answer: the machine may be overloaded; try again.";
  return false;
}

}  // namespace audrel::linuxos
