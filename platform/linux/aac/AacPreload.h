#pragma once

#include <future>

namespace audrel::linuxos {

/// Loads the module that encodes AAC on another thread, which ends with that, so that the next M4A
/// does not wait for it. Tells of no failure: the one that opens the file meets it again.
class AacPreload {
 public:
  /// Nothing when it began before, or when the system gives no more threads.
  void begin();

 private:
  std::future<void> loading_;  ///< waits for the thread when it goes
};

}  // namespace audrel::linuxos
