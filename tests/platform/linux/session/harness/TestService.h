#pragma once

#include <gio/gio.h>

#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace audrel::sessiontest {

/// A program on a bus that tells how it is called. Calls are answered on a thread of the bus
/// library's, so that whoever calls may block this one.
class TestService {
 public:
  /// By the member that is called, or by interface, "." and member: a tuple in GVariant's text
  /// form, "!" and the name of an error,
  /// "-" for no answer at all, "fd" for a descriptor, or "count" for a number, 1 more each time.
  /// Other members do not exist.
  using Answers = std::map<std::string, std::string>;

  /// Owns `name` on the bus, and has objects at those paths. Throws `std::runtime_error` when it
  /// cannot.
  TestService(const std::string& busAddress, const std::string& name,
              const std::vector<std::string>& paths, Answers answers);
  ~TestService();
  TestService(const TestService&) = delete;
  TestService& operator=(const TestService&) = delete;

  /// The next call, as "Member (arguments)", or "released" once every copy of a descriptor is
  /// closed; nothing when none comes. The main loop of this thread runs meanwhile.
  std::optional<std::string> nextCall(std::chrono::milliseconds timeout = std::chrono::seconds(10));

  /// What it was called with and has not been asked for yet, within a moment.
  std::vector<std::string> furtherCalls();

  /// `arguments` is consumed if floating; null for none.
  void emitSignal(const std::string& path, const std::string& interface, const std::string& signal,
                  GVariant* arguments);

 private:
  static GDBusMessage* onMessage(GDBusConnection* connection, GDBusMessage* message,
                                 gboolean incoming, gpointer self);
  std::string answerFor(GDBusMessage* call) const;
  GDBusMessage* replyTo(GDBusMessage* call, const std::string& answer);
  GDBusMessage* answerWithDescriptor(GDBusMessage* call);
  std::optional<std::string> takeCall();

  const std::vector<std::string> paths_;
  const Answers answers_;
  GDBusConnection* connection_;
  guint filter_ = 0;
  std::mutex mutex_;
  std::deque<std::string> calls_;
  std::vector<int> givenOut_;  ///< of descriptors, the ends that stayed
  guint32 count_ = 0;          ///< of the answers that are numbers
};

}  // namespace audrel::sessiontest
