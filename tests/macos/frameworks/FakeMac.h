#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// A Mac for tests: what stands behind the fake frameworks of this folder. The fields say what the
/// frameworks answer, and the journal what was asked of them.
namespace audrel::fakemac {

struct Failure {
  std::string domain;
  long code = 0;
  std::string description;
};

struct Process {
  std::uint32_t object = 0;
  std::int32_t pid = 0;
  std::string bundleID;
};

struct File {
  std::string path;
  bool isInterleaved = false;
  std::vector<std::uint32_t> writes;  ///< frames of each
  std::vector<std::byte> bytes;       ///< of all writes, buffer by buffer
  bool isOpen = true;
};

struct Alert {
  std::string message;
  std::string text;
  unsigned long style = 0;
  std::vector<std::string> buttons;
  long level = 0;  ///< of its window
};

class Mac {
 public:
  Mac() = default;
  ~Mac();
  Mac(const Mac&) = delete;
  Mac& operator=(const Mac&) = delete;

  /// Any thread, without order between threads: the thread sanitizer is to see what the program
  /// itself leaves without order.
  void note(const std::string& line);

  /// What was noted since the last call.
  std::vector<std::string> takeJournal();

  /// 0, unless the test has the call fail.
  std::int32_t statusOf(const std::string& call) const;

  /// By the function's name.
  std::map<std::string, std::int32_t> failing;

  /// Within a call, by the function's name: of `AudioDeviceStart` and `AudioDeviceStop`.
  std::map<std::string, std::function<void()>> happenings;

  /// Calls that succeed and give nothing: an id of 0.
  std::set<std::string> withoutResult;

  /// By selector and object: plain data that only fails there.
  std::map<std::uint32_t, std::int32_t> failingProperties;

  bool mayCapture = true;
  bool answersRequest = true;

  bool isInterleaved = true;
  std::uint32_t tapFormatID = 0x6C70636D;
  std::uint32_t defaultOutput = 51;
  std::vector<Process> processes;
  std::map<std::int32_t, std::string> applications;

  /// Calls of the audio framework that raise an exception, each with its reason, or none. By class
  /// and selector: "AVAudioFile.writeFromBuffer:error:".
  std::map<std::string, std::optional<std::string>> raising;

  bool hasMemoryForBuffers = true;
  std::optional<Failure> openFails;
  std::optional<Failure> writeFails;
  std::deque<File> files;

  /// Queues that are made while it is set run their items when they are waited for, and not before:
  /// the order in the journal is then the same each time.
  bool holdsQueues = false;

  /// Looks for files on this machine's disk, and writes recordings there.
  bool hasDisk = false;

  /// How many were made.
  std::uint32_t uuids = 0;
  std::uint32_t timers = 0;
  std::uint32_t menus = 0;
  std::uint32_t images = 0;

  std::string processName = "Audrel";
  std::map<std::string, std::string> defaults;  ///< of the process
  std::vector<std::string> downloads = {"/Users/test/Downloads"};
  std::set<std::string> existing;

  std::deque<long> answers;  ///< of alerts, in order; the first button's when empty
  std::vector<Alert> alerts;

  /// While an alert is up, before it is answered.
  std::function<void()> whileModal;

  bool hasStatusButton = true;

  /// While the application's event loop runs, which returns afterwards.
  std::function<void()> whileRunning;

  /// Before the application's end ends the process. Without it the journal goes to standard error.
  std::function<void()> whenTerminated;

 private:
  struct Line {
    std::string text;
    Line* previous;
  };
  std::atomic<Line*> last_ = nullptr;
};

/// The one that the frameworks talk to, of the `ScopedMac` that lives.
Mac& mac();

/// A fresh Mac for a test. Its end waits for the queues' threads.
class ScopedMac {
 public:
  ScopedMac();
  ~ScopedMac();
  ScopedMac(const ScopedMac&) = delete;
  ScopedMac& operator=(const ScopedMac&) = delete;
};

/// To the sources on the main queue that listen for it.
void deliverSignal(unsigned long number);

/// Lets the queues run, and returns when they have nothing left.
void runQueues();

/// Returns when no queue has a thread any more: each ends with its queue.
void waitForQueues();

}  // namespace audrel::fakemac
