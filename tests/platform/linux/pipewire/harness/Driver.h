#pragma once

#include <pipewire/impl.h>
#include <spa/node/node.h>
#include <spa/node/utils.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace audrel::pwtest {

/// The node that drives the graph of a server in this process. Its owner says when a cycle begins.
class Driver {
 public:
  struct Events {
    std::function<void()> started;   ///< the graph runs now, or does not; on the main thread
    std::function<void()> finished;  ///< everyone has finished the cycle; on the data thread
  };

  /// Leads the nodes of `group`.
  Driver(pw_context* context, const std::string& group, Events events);
  ~Driver();
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  spa_loop* dataLoop() const { return dataLoop_; }

  /// Whether the graph runs: when not, nobody waits for a cycle. Any thread.
  bool isRunning() const { return isRunning_; }

  /// Stamps the next cycle, which begins at `nsec` of the monotonic clock. How many nanoseconds
  /// long it is; 0 when there can be none. On the data thread, as the next.
  std::int64_t stampCycle(std::int64_t nsec);

  void startCycle();

 private:
  int addListener(spa_hook* listener, const spa_node_events* events, void* data);
  int setCallbacks(const spa_node_callbacks* callbacks, void* data);
  int setIo(std::uint32_t id, void* area, std::size_t size);
  int sendCommand(const spa_command* command);

  static const spa_node_methods nodeMethods;

  Events events_;
  spa_loop* dataLoop_;
  spa_node node_{};
  spa_hook_list listeners_{};
  spa_callbacks callbacks_{};
  std::atomic<spa_io_clock*> clock_ = nullptr;
  std::uint64_t lastDuration_ = 0;  ///< of the last cycle, in frames
  std::atomic<bool> isRunning_ = false;
  pw_impl_node* graphNode_ = nullptr;
};

}  // namespace audrel::pwtest
