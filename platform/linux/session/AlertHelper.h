#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/loop/GLibHandles.h"

namespace audrel::linuxos {

/// A run of the alert helper, which shows one alert in a process of its own. The alert goes with
/// this object, and with this process however that ends. Main thread.
class AlertHelper {
 public:
  /// `program` may be empty: there is none. `texts` are the alert's style, message, text and
  /// buttons; they go through a pipe, since every user of the machine can read arguments. `ended`
  /// gets the helper's exit status, nothing when a signal ended it, from the main loop. Null when
  /// it cannot be started, with the reason.
  static std::unique_ptr<AlertHelper> start(const std::filesystem::path& program,
                                            const std::vector<std::string>& texts,
                                            std::function<void(std::optional<int>)> ended,
                                            std::string* outFailure);
  ~AlertHelper();

  /// Brings the alert to the front.
  void present();

  AlertHelper(const AlertHelper&) = delete;
  AlertHelper& operator=(const AlertHelper&) = delete;

 private:
  using ProcessHandle = std::unique_ptr<GSubprocess, Releaser<g_object_unref>>;

  AlertHelper(ProcessHandle process, std::function<void(std::optional<int>)> ended);

  void send(const std::vector<std::string>& texts);

  static void onEnded(GObject* process, GAsyncResult* result, gpointer self) noexcept;

  CancellableHandle cancellable_;
  ProcessHandle process_;
  std::function<void(std::optional<int>)> ended_;
};

/// "audrel-alert" of the running program. Empty when it is not there.
std::filesystem::path alertHelperProgram();

}  // namespace audrel::linuxos
