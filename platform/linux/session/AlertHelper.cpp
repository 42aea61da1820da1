#include "platform/linux/session/AlertHelper.h"

#include <unistd.h>

#include <csignal>
#include <system_error>
#include <utility>

namespace audrel::linuxos {

std::unique_ptr<AlertHelper> AlertHelper::start(const std::filesystem::path& program,
                                                const std::vector<std::string>& arguments,
                                                std::function<void(std::optional<int>)> ended,
                                                std::string* outFailure) {
  if (program.empty()) {
    *outFailure = "audrel-alert is not installed";
    return nullptr;
  }
  std::vector<const char*> pointers = {program.c_str()};
  for (const std::string& argument : arguments) {
    pointers.push_back(argument.c_str());
  }
  pointers.push_back(nullptr);
  GError* failure = nullptr;
  // The pipe tells the helper when this process ends.
  ProcessHandle process(
      g_subprocess_newv(pointers.data(), G_SUBPROCESS_FLAGS_STDIN_PIPE, &failure));
  const ErrorHandle error(failure);
  if (process == nullptr) {
    *outFailure = messageOf(error);
    return nullptr;
  }
  return std::unique_ptr<AlertHelper>(new AlertHelper(std::move(process), std::move(ended)));
}

AlertHelper::AlertHelper(ProcessHandle process, std::function<void(std::optional<int>)> ended)
    : cancellable_(g_cancellable_new()), process_(std::move(process)), ended_(std::move(ended)) {
  g_subprocess_wait_async(process_.get(), cancellable_.get(), onEnded, this);
}

AlertHelper::~AlertHelper() {
  g_cancellable_cancel(cancellable_.get());
  g_subprocess_send_signal(process_.get(), SIGTERM);  // nothing if it has ended
}

void AlertHelper::onEnded(GObject* process, GAsyncResult* result, gpointer self) noexcept {
  auto* subprocess = G_SUBPROCESS(process);
  if (g_subprocess_wait_finish(subprocess, result, nullptr) == FALSE) {
    return;  // the object has gone
  }
  const bool isExit = g_subprocess_get_if_exited(subprocess) == TRUE;
  static_cast<AlertHelper*>(self)->ended_(
      isExit ? std::optional(g_subprocess_get_exit_status(subprocess)) : std::nullopt);
}

std::filesystem::path alertHelperProgram() {
  std::error_code error;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  if (error) {
    return {};
  }
  for (const char* place : {".", AUDREL_LIBEXEC_FROM_PROGRAM}) {
    auto program = (folder / place / "audrel-alert").lexically_normal();
    if (access(program.c_str(), X_OK) == 0) {
      return program;
    }
  }
  return {};
}

}  // namespace audrel::linuxos
