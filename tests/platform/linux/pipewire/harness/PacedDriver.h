#pragma once

#include <pipewire/impl.h>
#include <spa/node/node.h>
#include <spa/node/utils.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace audrel::pwtest {

/// Drives the graph of a server in this process at a multiple of real time, and starts no cycle
/// before everyone has finished the last one: no cycle is ever lost, however busy the machine is.
/// (The server's own freewheeling driver goes on without a client that takes longer than a cycle
/// of real time.) Only a cycle that will never finish, since a node was taken out of the graph in
/// the middle of it, is given up after a while; whoever waited for that node has missed it.
class PacedDriver {
 public:
  /// Leads the nodes of `group`.
  PacedDriver(pw_context* context, const std::string& group, double timesRealTime);
  ~PacedDriver();
  PacedDriver(const PacedDriver&) = delete;
  PacedDriver& operator=(const PacedDriver&) = delete;

 private:
  int addListener(spa_hook* listener, const spa_node_events* events, void* data);
  int setCallbacks(const spa_node_callbacks* callbacks, void* data);
  int setIo(std::uint32_t id, void* area, std::size_t size);
  int sendCommand(const spa_command* command);
  int cycleFinished();
  void startCycle();
  void setTimer(std::int64_t due) const;

  static const spa_node_methods nodeMethods;

  double timesRealTime_;
  spa_loop* dataLoop_;
  spa_source timer_{};
  spa_node node_{};
  spa_hook_list listeners_{};
  spa_callbacks callbacks_{};
  std::atomic<spa_io_clock*> clock_ = nullptr;
  std::atomic<bool> isRunning_ = false;
  bool isStartingCycle_ = false;  ///< this and what follows: on the data thread
  bool isCycleOpen_ = false;      ///< started and not finished
  int cyclesToSettle_ = 0;
  std::int64_t due_ = 0;  ///< of the next cycle, monotonic nanoseconds
  pw_impl_node* graphNode_ = nullptr;
};

}  // namespace audrel::pwtest
