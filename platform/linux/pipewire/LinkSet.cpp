#include "platform/linux/pipewire/LinkSet.h"

#include <algorithm>
#include <string>

#include "platform/linux/pipewire/Handles.h"

namespace audrel::linuxos {

/// A link's proxy. The hook goes before the proxy.
struct LinkSet::Link {
  ProxyHandle proxy;
  bool isSettled = false;
  bool isGone = false;
  Hook hook;

  explicit Link(void* proxy_) : proxy(static_cast<pw_proxy*>(proxy_)) {}
  ~Link() { hook.remove(); }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
};

const pw_proxy_events LinkSet::proxyEvents = {
    .version = PW_VERSION_PROXY_EVENTS,
    .bound = [](void* data, std::uint32_t) { static_cast<Link*>(data)->isSettled = true; },
    .removed =
        [](void* data) {
          auto* link = static_cast<Link*>(data);
          link->isSettled = true;
          link->isGone = true;
        },
    .error =
        [](void* data, int, int, const char*) {
          auto* link = static_cast<Link*>(data);
          link->isSettled = true;
          link->isGone = true;
        },
};

LinkSet::LinkSet(pw_core* core, LinkKind kind) : core_(core), kind_(kind) {}

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
    auto link = std::make_unique<Link>(pw_core_create_object(
        core_, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties->dict, 0));
    pw_proxy_add_listener(link->proxy.get(), link->hook.get(), &proxyEvents, link.get());
    links_[ports] = std::move(link);
  }
}

bool LinkSet::isSettled() const {
  return std::ranges::all_of(links_, [](const auto& entry) { return entry.second->isSettled; });
}

}  // namespace audrel::linuxos
