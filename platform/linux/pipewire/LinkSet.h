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
  LinkSet(pw_core* core, LinkKind kind);
  ~LinkSet();
  LinkSet(const LinkSet&) = delete;
  LinkSet& operator=(const LinkSet&) = delete;

  /// Makes what is missing of `plan` and removes what is not in it. A link that the server took
  /// away is made again by the next call.
  void follow(const std::set<PortPair>& plan);

  /// Whether the server has made (or refused) every link.
  bool isSettled() const;

 private:
  struct Link;
  static const pw_proxy_events proxyEvents;

  pw_core* core_;
  LinkKind kind_;
  std::map<PortPair, std::unique_ptr<Link>> links_;
};

}  // namespace audrel::linuxos
