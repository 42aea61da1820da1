#include "platform/linux/pipewire/LinkSet.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/linux/pipewire/Handles.h"

namespace audrel::linuxos {

/// A link's proxy. The hook goes before the proxy.
struct LinkSet::Link {
  ProxyHandle proxy;
  const std::function<void()>& changed;
  pw_link_state state = PW_LINK_STATE_INIT;
  bool isGone = false;
  Hook proxyHook;
  Hook linkHook;

  Link(void* proxy_, const std::function<void()>& changed_)
      : proxy(static_cast<pw_proxy*>(proxy_)), changed(changed_) {}
  ~Link() {
    linkHook.remove();
    proxyHook.remove();
  }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  void setState(pw_link_state newState) {
    state = newState;
    changed();
  }

  void setGone() {
    isGone = true;
    changed();
  }
};

const pw_proxy_events LinkSet::proxyEvents = {
    .version = PW_VERSION_PROXY_EVENTS,
    .removed = [](void* data) { static_cast<Link*>(data)->setGone(); },
    .error = [](void* data, int, int, const char*) { static_cast<Link*>(data)->setGone(); },
};

const pw_link_events LinkSet::linkEvents = {
    .version = PW_VERSION_LINK_EVENTS,
    .info = [](void* data,
               const pw_link_info* info) { static_cast<Link*>(data)->setState(info->state); },
};

LinkSet::LinkSet(pw_core* core, LinkKind kind, std::function<void()> changed)
    : core_(core), kind_(kind), changed_(std::move(changed)) {}

LinkSet::~LinkSet() = default;

void LinkSet::follow(const std::set<PortPair>& plan) {
  std::erase_if(links_, [&](const auto& entry) {
    return entry.second->isGone || !plan.contains(entry.first);
  });
  for (const PortPair& ports : plan) {
    if (links_.contains(ports)) {
      continue;
    }
    const PropertiesHandle properties(pw_properties_new(
        PW_KEY_LINK_OUTPUT_PORT, std::to_string(ports.output).c_str(), PW_KEY_LINK_INPUT_PORT,
        std::to_string(ports.input).c_str(), PW_KEY_LINK_PASSIVE,
        kind_ == LinkKind::passive ? "true" : "false", nullptr));
    auto link =
        std::make_unique<Link>(pw_core_create_object(core_, "link-factory", PW_TYPE_INTERFACE_Link,
                                                     PW_VERSION_LINK, &properties->dict, 0),
                               changed_);
    pw_proxy_add_listener(link->proxy.get(), link->proxyHook.get(), &proxyEvents, link.get());
    pw_link_add_listener(reinterpret_cast<pw_link*>(link->proxy.get()), link->linkHook.get(),
                         &linkEvents, link.get());
    links_[ports] = std::move(link);
  }
}

bool LinkSet::isSettled(const std::function<bool(std::uint32_t outputPort)>& isPlaying) const {
  return std::ranges::all_of(links_, [&](const auto& entry) {
    const auto& [ports, link] = entry;
    return link->isGone || link->state == PW_LINK_STATE_ACTIVE ||
           (link->state == PW_LINK_STATE_PAUSED && !isPlaying(ports.output));
  });
}

}  // namespace audrel::linuxos
