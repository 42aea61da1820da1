#pragma once

#include <pipewire/pipewire.h>

#include <functional>
#include <map>
#include <memory>
#include <set>

#include "platform/linux/pipewire/LinkPlan.h"

namespace audrel::linuxos {

enum class LinkKind {
  passive,  ///< does not make the linked nodes run
  active,
};

/// The links that this program has made. They go with the set, or with the program: the server
/// removes what a client leaves behind. On the connection's thread or under its lock.
class LinkSet {
 public:
  /// `changed` is called after a link's state has changed, on the connection's thread.
  LinkSet(pw_core* core, LinkKind kind, std::function<void()> changed);
  ~LinkSet();
  LinkSet(const LinkSet&) = delete;
  LinkSet& operator=(const LinkSet&) = delete;

  /// Makes what is missing of `plan` and removes what is not in it. A link that the server took
  /// away is made again by the next call.
  void follow(const std::set<PortPair>& plan);

  bool isEmpty() const { return links_.empty(); }

  /// Whether every link carries audio, waits for its stream to play again, or was refused.
  /// `isPlaying` tells whether the stream with that output port plays.
  bool isSettled(const std::function<bool(std::uint32_t outputPort)>& isPlaying) const;

 private:
  struct Link;
  static const pw_proxy_events proxyEvents;
  static const pw_link_events linkEvents;

  pw_core* core_;
  LinkKind kind_;
  std::function<void()> changed_;
  std::map<PortPair, std::unique_ptr<Link>> links_;
};

}  // namespace audrel::linuxos
