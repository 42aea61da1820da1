#include "platform/linux/session/AlertHelper.h"

#include <csignal>
#include <utility>

#include "platform/linux/system/ProgramFolder.h"

namespace audrel::linuxos {

namespace {

/// As the helper reads them (see its Main.cpp).
std::string inputOf(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) {
    all.append(text.c_str()).push_back('\0');
  }
  return std::to_string(all.size()) + "\n" + all;
}

void onSent(GObject* pipe, GAsyncResult* result, gpointer input) noexcept {
  const std::unique_ptr<std::string> sent(static_cast<std::string*>(input));
  // A helper that takes no input has failed, which its end tells.
  g_output_stream_write_all_finish(G_OUTPUT_STREAM(pipe), result, nullptr, nullptr);
}

}  // namespace

std::unique_ptr<AlertHelper> AlertHelper::start(const std::filesystem::path& program,
                                                const std::vector<std::string>& texts,
                                                std::function<void(std::optional<int>)> ended,
                                                std::string* outFailure) {
  if (program.empty()) {
    *outFailure = "audrel-alert is not installed";
    return nullptr;
  }
  GError* failure = nullptr;
  // The pipe also tells the helper when this process ends.
  ProcessHandle process(
      g_subprocess_new(G_SUBPROCESS_FLAGS_STDIN_PIPE, &failure, program.c_str(), nullptr));
  const ErrorHandle error(failure);
  if (process == nullptr) {
    *outFailure = messageOf(error);
    return nullptr;
  }
  std::unique_ptr<AlertHelper> helper(new AlertHelper(std::move(process), std::move(ended)));
  helper->send(texts);
  return helper;
}

AlertHelper::AlertHelper(ProcessHandle process, std::function<void(std::optional<int>)> ended)
    : cancellable_(g_cancellable_new()), process_(std::move(process)), ended_(std::move(ended)) {
  g_subprocess_wait_async(process_.get(), cancellable_.get(), onEnded, this);
}

void AlertHelper::send(const std::vector<std::string>& texts) {
  auto input = std::make_unique<std::string>(inputOf(texts));
  const std::string& sent = *input;
  g_output_stream_write_all_async(g_subprocess_get_stdin_pipe(process_.get()), sent.data(),
                                  sent.size(), G_PRIORITY_DEFAULT, cancellable_.get(), onSent,
                                  input.release());
}

void AlertHelper::present() {
  GOutputStream* pipe = g_subprocess_get_stdin_pipe(process_.get());
  // While the texts are on their way the window has yet to come, and comes in front.
  if (g_output_stream_has_pending(pipe) == FALSE) {
    g_pollable_output_stream_write_nonblocking(G_POLLABLE_OUTPUT_STREAM(pipe), "\n", 1, nullptr,
                                               nullptr);
  }
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
  return partOfProgram("audrel-alert", AUDREL_LIBEXEC_FROM_PROGRAM);
}

}  // namespace audrel::linuxos
