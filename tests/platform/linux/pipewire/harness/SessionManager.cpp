#include "tests/platform/linux/pipewire/harness/SessionManager.h"

#include <spa/param/audio/format-utils.h>
#include <spa/param/audio/type-info.h>
#include <spa/param/param.h>
#include <spa/param/props.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "tests/platform/linux/pipewire/harness/SinkMonitor.h"

namespace audrel::pwtest {

namespace {

using namespace std::chrono_literals;

constexpr auto answerTimeout = 5s;

std::string text(const spa_dict* properties, const char* key) {
  const char* value = properties != nullptr ? spa_dict_lookup(properties, key) : nullptr;
  return value != nullptr ? value : "";
}

std::uint32_t number(const spa_dict* properties, const char* key) {
  return static_cast<std::uint32_t>(std::strtoul(text(properties, key).c_str(), nullptr, 10));
}

/// "FL" of "Spa:Enum:AudioChannel:FL".
std::string_view shortName(const spa_type_info& info) {
  const std::string_view name = info.name;
  return name.substr(name.rfind(':') + 1);
}

std::uint32_t channelNumber(std::string_view name) {
  const spa_type_info* info = spa_type_audio_channel;
  while (info->name != nullptr && name != shortName(*info)) {
    ++info;
  }
  return info->name != nullptr ? info->type : std::uint32_t{SPA_AUDIO_CHANNEL_UNKNOWN};
}

std::string channelName(std::uint32_t channel) {
  const spa_type_info* info = spa_type_audio_channel;
  while (info->name != nullptr && channel != info->type) {
    ++info;
  }
  return info->name != nullptr ? std::string(shortName(*info)) : "";
}

std::string floats(const spa_pod& pod) {
  std::ostringstream result;
  std::array<float, SPA_AUDIO_MAX_CHANNELS> values{};
  const auto count = spa_pod_copy_array(&pod, SPA_TYPE_Float, values.data(), values.size());
  for (std::uint32_t i = 0; i < count; ++i) {
    result << values[i] << " ";
  }
  return result.str();
}

/// How loud a node is, of its `Props`.
std::string loudness(const spa_pod& properties) {
  std::ostringstream result;
  const auto* object = reinterpret_cast<const spa_pod_object*>(&properties);
  const spa_pod_prop* item = nullptr;
  SPA_POD_OBJECT_FOREACH(object, item) {
    float volume = 0;
    bool isMuted = false;
    if (item->key == SPA_PROP_volume && spa_pod_get_float(&item->value, &volume) == 0) {
      result << "volume " << volume << " ";
    } else if (item->key == SPA_PROP_mute && spa_pod_get_bool(&item->value, &isMuted) == 0) {
      result << "mute " << isMuted << " ";
    } else if (item->key == SPA_PROP_channelVolumes || item->key == SPA_PROP_softVolumes) {
      result << "channels " << floats(item->value);
    }
  }
  return result.str();
}

}  // namespace

struct SessionManager::Node {
  SessionManager& manager;
  std::uint32_t id;
  std::string name;
  std::string mediaClass;
  std::string target;               ///< of `target.object`
  bool isKnown = false;             ///< whether the following is
  bool wantsLinks = false;          ///< asked to be connected
  std::vector<std::string> layout;  ///< of its own format
  std::vector<std::string> ports;   ///< it was given
  std::string volume;
  pw_proxy* proxy = nullptr;
  spa_hook hook{};

  Node(SessionManager& manager_, std::uint32_t id_) : manager(manager_), id(id_) {}
  ~Node() {
    if (proxy != nullptr) {
      spa_hook_remove(&hook);
      pw_proxy_destroy(proxy);
    }
  }
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  bool isPlayback() const { return mediaClass == "Stream/Output/Audio"; }
  bool isSink() const { return mediaClass == "Audio/Sink"; }
  bool isInput() const { return mediaClass == "Stream/Input/Audio" || isSink(); }
  bool isOutput() const { return isPlayback() || mediaClass == "Audio/Source"; }

  void info(const pw_node_info& info) {
    if ((info.change_mask & PW_NODE_CHANGE_MASK_PROPS) == 0) {
      return;
    }
    wantsLinks = text(info.props, PW_KEY_NODE_AUTOCONNECT) == "true";
    isKnown = true;
    target = text(info.props, PW_KEY_TARGET_OBJECT);
    manager.noteChange();
  }

  void param(std::uint32_t kind, const spa_pod* pod) {
    if (pod == nullptr) {
      return;
    }
    if (kind == SPA_PARAM_Props) {
      volume = loudness(*pod);
    } else if (kind == SPA_PARAM_EnumFormat && layout.empty()) {
      spa_pod* format = spa_pod_copy(pod);
      spa_pod_fixate(format);
      spa_audio_info_raw raw{};
      if (spa_format_audio_raw_parse(format, &raw) >= 0) {
        for (std::uint32_t i = 0; i < raw.channels; ++i) {
          layout.push_back(channelName(raw.position[i]));
        }
      }
      std::free(format);  // NOLINT: it was allocated in C
    }
    manager.noteChange();
  }
};

struct SessionManager::Link {
  SessionManager& manager;
  std::uint32_t outputPort;
  std::uint32_t inputPort;
  pw_link_state state = PW_LINK_STATE_INIT;
  pw_proxy* proxy;
  spa_hook hook{};

  Link(SessionManager& manager_, std::uint32_t id, const spa_dict* properties)
      : manager(manager_),
        outputPort(number(properties, PW_KEY_LINK_OUTPUT_PORT)),
        inputPort(number(properties, PW_KEY_LINK_INPUT_PORT)),
        proxy(static_cast<pw_proxy*>(
            pw_registry_bind(manager_.registry_, id, PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, 0))) {
    pw_link_add_listener(reinterpret_cast<pw_link*>(proxy), &hook, &linkEvents, this);
  }
  ~Link() {
    spa_hook_remove(&hook);
    pw_proxy_destroy(proxy);
  }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
};

const pw_link_events SessionManager::linkEvents = {
    .version = PW_VERSION_LINK_EVENTS,
    .info =
        [](void* data, const pw_link_info* info) {
          auto* link = static_cast<Link*>(data);
          link->state = info->state;
          link->manager.noteChange();
        },
};

const pw_registry_events SessionManager::registryEvents = {
    .version = PW_VERSION_REGISTRY_EVENTS,
    .global =
        [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
           const spa_dict* properties) {
          static_cast<SessionManager*>(self)->added(id, type, properties);
        },
    .global_remove = [](void* self,
                        std::uint32_t id) { static_cast<SessionManager*>(self)->removed(id); },
};

const pw_node_events SessionManager::nodeEvents = {
    .version = PW_VERSION_NODE_EVENTS,
    .info = [](void* node, const pw_node_info* info) { static_cast<Node*>(node)->info(*info); },
    .param = [](void* node, int, std::uint32_t kind, std::uint32_t, std::uint32_t,
                const spa_pod* pod) { static_cast<Node*>(node)->param(kind, pod); },
};

SessionManager::SessionManager(const std::string& socketPath, PortLayout layout)
    : client_(socketPath, {{PW_KEY_APP_NAME, "test-session-manager"}}), layout_(layout) {
  if (!client_.isConnected()) {
    return;
  }
  const Locked lock(client_.loop());
  settleEvent_ = pw_loop_add_event(
      pw_thread_loop_get_loop(client_.loop().get()),
      [](void* self, std::uint64_t) { static_cast<SessionManager*>(self)->settle(); }, this);
  registry_ = pw_core_get_registry(client_.core(), PW_VERSION_REGISTRY, 0);
  pw_registry_add_listener(registry_, &registryHook_, &registryEvents, this);
}

SessionManager::~SessionManager() {
  client_.stop();
  if (!client_.isConnected()) {
    return;
  }
  pw_loop_destroy_source(pw_thread_loop_get_loop(client_.loop().get()), settleEvent_);
  for (const auto& [ports, proxy] : ownLinks_) {
    pw_proxy_destroy(proxy);
  }
  nodes_.clear();
  links_.clear();
  for (pw_metadata* metadata : {defaults_, settings_}) {
    if (metadata != nullptr) {
      pw_proxy_destroy(reinterpret_cast<pw_proxy*>(metadata));
    }
  }
  spa_hook_remove(&registryHook_);
  pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
}

// What the server announces

void SessionManager::added(std::uint32_t id, const std::string& type, const spa_dict* properties) {
  if (type == PW_TYPE_INTERFACE_Node) {
    addNode(id, properties);
  } else if (type == PW_TYPE_INTERFACE_Port) {
    ports_[id] = {.node = number(properties, PW_KEY_NODE_ID),
                  .isInput = text(properties, PW_KEY_PORT_DIRECTION) == "in",
                  .isMonitor = text(properties, PW_KEY_PORT_MONITOR) == "true",
                  .channel = text(properties, PW_KEY_AUDIO_CHANNEL)};
  } else if (type == PW_TYPE_INTERFACE_Link) {
    links_[id] = std::make_unique<Link>(*this, id, properties);
  } else if (type == PW_TYPE_INTERFACE_Metadata) {
    addMetadata(id, properties);
  }
  noteChange();
}

void SessionManager::addNode(std::uint32_t id, const spa_dict* properties) {
  auto node = std::make_unique<Node>(*this, id);
  node->name = text(properties, PW_KEY_NODE_NAME);
  node->mediaClass = text(properties, PW_KEY_MEDIA_CLASS);
  if (node->isInput() || node->isOutput()) {
    node->proxy = static_cast<pw_proxy*>(
        pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0));
    auto* proxy = reinterpret_cast<pw_node*>(node->proxy);
    pw_node_add_listener(proxy, &node->hook, &nodeEvents, node.get());
    pw_node_enum_params(proxy, 0, SPA_PARAM_EnumFormat, 0, 1, nullptr);
  }
  nodes_[id] = std::move(node);
}

void SessionManager::addMetadata(std::uint32_t id, const spa_dict* properties) {
  const std::string name = text(properties, PW_KEY_METADATA_NAME);
  if (name == "default" || name == "settings") {
    auto* metadata = static_cast<pw_metadata*>(
        pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
    (name == "default" ? defaults_ : settings_) = metadata;
  }
}

void SessionManager::removed(std::uint32_t id) {
  nodes_.erase(id);
  links_.erase(id);
  if (ports_.erase(id) > 0) {
    std::vector<PortPair> broken;
    for (const auto& [ports, proxy] : ownLinks_) {
      if (ports.first == id || ports.second == id) {
        broken.push_back(ports);
      }
    }
    std::ranges::for_each(broken, [&](const PortPair& ports) { destroyLink(ports); });
  }
  noteChange();
}

void SessionManager::noteChange() {
  pw_thread_loop_signal(client_.loop().get(), false);
  pw_loop_signal_event(pw_thread_loop_get_loop(client_.loop().get()), settleEvent_);
}

// Ports and links

const SessionManager::Node* SessionManager::nodeNamed(const std::string& name) const {
  const auto found =
      std::ranges::find_if(nodes_, [&](const auto& entry) { return entry.second->name == name; });
  return found == nodes_.end() ? nullptr : found->second.get();
}

const SessionManager::Node* SessionManager::sinkFor(const Node& stream) const {
  if (const Node* target = stream.target.empty() ? nullptr : nodeNamed(stream.target)) {
    return target;
  }
  if (const Node* chosen = nodeNamed(defaultSink_)) {
    return chosen;
  }
  const auto any =
      std::ranges::find_if(nodes_, [](const auto& entry) { return entry.second->isSink(); });
  return any == nodes_.end() ? nullptr : any->second.get();
}

std::vector<std::string> SessionManager::inputChannels(std::uint32_t node) const {
  std::vector<std::string> channels;
  for (const auto& [id, port] : ports_) {
    if (port.node == node && port.isInput && !port.channel.empty()) {
      channels.push_back(port.channel);
    }
  }
  return channels;
}

void SessionManager::givePorts(Node& node) {
  if (!node.isKnown || node.layout.empty()) {
    return;
  }
  const Node* sink = sinkFor(node);
  const bool takesSinks = node.isPlayback() && layout_ == PortLayout::ofSink && sink != nullptr;
  const auto wanted = takesSinks ? inputChannels(sink->id) : node.layout;
  if (wanted.empty() || wanted == node.ports) {
    return;
  }
  node.ports = wanted;
  spa_audio_info_raw info{};
  info.format = SPA_AUDIO_FORMAT_F32P;
  info.rate = 48000;
  info.channels = static_cast<std::uint32_t>(wanted.size());
  std::ranges::transform(wanted, info.position, channelNumber);
  std::array<std::uint8_t, 1024> memory{};
  spa_pod_builder builder{};
  spa_pod_builder_init(&builder, memory.data(), memory.size());
  spa_pod* format = spa_format_audio_raw_build(&builder, SPA_PARAM_Format, &info);
  const void* config = spa_pod_builder_add_object(
      &builder, SPA_TYPE_OBJECT_ParamPortConfig, SPA_PARAM_PortConfig,
      SPA_PARAM_PORT_CONFIG_direction,
      SPA_POD_Id(node.isInput() ? SPA_DIRECTION_INPUT : SPA_DIRECTION_OUTPUT),
      SPA_PARAM_PORT_CONFIG_mode, SPA_POD_Id(SPA_PARAM_PORT_CONFIG_MODE_dsp),
      SPA_PARAM_PORT_CONFIG_monitor, SPA_POD_Bool(node.isSink()), SPA_PARAM_PORT_CONFIG_format,
      SPA_POD_Pod(format));
  pw_node_set_param(reinterpret_cast<pw_node*>(node.proxy), SPA_PARAM_PortConfig, 0,
                    static_cast<const spa_pod*>(config));
}

bool SessionManager::areToBeLinked(const Port& output, const Port& input) const {
  const auto from = nodes_.find(output.node);
  const auto to = nodes_.find(input.node);
  if (from == nodes_.end() || to == nodes_.end()) {
    return false;
  }
  if (to->second->mediaClass == SinkMonitor::mediaClass) {
    return output.isMonitor && input.channel == output.channel &&
           sinkFor(*to->second) == from->second.get();
  }
  if (to->second->mediaClass == "Stream/Input/Audio") {
    return to->second->wantsLinks && to->second->target == from->second->name &&
           !output.isMonitor && input.channel == output.channel;
  }
  return from->second->isPlayback() && from->second->wantsLinks &&
         sinkFor(*from->second) == to->second.get() &&
         (input.channel == output.channel || output.channel == "MONO");
}

std::set<SessionManager::PortPair> SessionManager::wantedLinks() const {
  std::set<PortPair> wanted;
  for (const auto& [outputId, output] : ports_) {
    for (const auto& [inputId, input] : ports_) {
      if (!output.isInput && input.isInput && areToBeLinked(output, input)) {
        wanted.insert({outputId, inputId});
      }
    }
  }
  return wanted;
}

void SessionManager::destroyLink(const PortPair& ports) {
  const auto found = ownLinks_.find(ports);
  pw_proxy_destroy(found->second);
  ownLinks_.erase(found);
}

void SessionManager::settle() {
  for (const auto& [id, node] : nodes_) {
    givePorts(*node);
  }
  const auto wanted = wantedLinks();
  std::vector<PortPair> unwanted;
  for (const auto& [ports, proxy] : ownLinks_) {
    if (!wanted.contains(ports)) {
      unwanted.push_back(ports);
    }
  }
  std::ranges::for_each(unwanted, [&](const PortPair& ports) { destroyLink(ports); });
  for (const PortPair& ports : wanted) {
    if (ownLinks_.contains(ports)) {
      continue;
    }
    const OwnedProperties properties(
        pw_properties_new(PW_KEY_LINK_OUTPUT_PORT, std::to_string(ports.first).c_str(),
                          PW_KEY_LINK_INPUT_PORT, std::to_string(ports.second).c_str(), nullptr));
    ownLinks_[ports] = static_cast<pw_proxy*>(
        pw_core_create_object(client_.core(), "link-factory", PW_TYPE_INTERFACE_Link,
                              PW_VERSION_LINK, &properties->dict, 0));
  }
}

// What tests ask and set

bool SessionManager::waitUntil(const std::function<bool()>& condition,
                               std::chrono::milliseconds timeout) {
  const Locked lock(client_.loop());
  timespec deadline{};
  pw_thread_loop_get_time(client_.loop().get(), &deadline, timeout / 1ns);
  while (!condition()) {
    if (pw_thread_loop_timed_wait_full(client_.loop().get(), &deadline) < 0) {
      return condition();
    }
  }
  return true;
}

void SessionManager::setDefaultSink(const std::string& nodeName) {
  waitUntil([&] { return defaults_ != nullptr && nodeNamed(nodeName) != nullptr; }, answerTimeout);
  const Locked lock(client_.loop());
  defaultSink_ = nodeName;
  pw_metadata_set_property(defaults_, PW_ID_CORE, "default.audio.sink", "Spa:String:JSON",
                           ("{ \"name\": \"" + nodeName + "\" }").c_str());
  noteChange();
}

void SessionManager::setClock(const std::string& key, std::uint32_t value, std::uint32_t subject) {
  waitUntil([&] { return settings_ != nullptr; }, answerTimeout);
  {
    const Locked lock(client_.loop());
    pw_metadata_set_property(settings_, subject, key.c_str(), nullptr,
                             std::to_string(value).c_str());
  }
  client_.roundTrip();
}

std::set<std::string> SessionManager::linksFrom(const std::string& nodeName,
                                                const std::string& ignored) {
  const Locked lock(client_.loop());
  std::set<std::string> result;
  for (const auto& [id, link] : links_) {
    const auto output = ports_.find(link->outputPort);
    const auto input = ports_.find(link->inputPort);
    if (output == ports_.end() || input == ports_.end() || !nodes_.contains(output->second.node) ||
        !nodes_.contains(input->second.node)) {
      continue;
    }
    const std::string& to = nodes_.at(input->second.node)->name;
    if (nodes_.at(output->second.node)->name == nodeName && to != ignored) {
      result.insert(output->second.channel + " -> " + to + ":" + input->second.channel);
    }
  }
  return result;
}

std::map<std::string, int> SessionManager::activeLinks() {
  const Locked lock(client_.loop());
  const auto nameOf = [this](std::uint32_t port) -> std::string {
    const auto found = ports_.find(port);
    const auto node = found == ports_.end() ? nodes_.end() : nodes_.find(found->second.node);
    return node == nodes_.end() ? "nobody" : node->second->name;
  };
  std::map<std::string, int> result;
  for (const auto& [id, link] : links_) {
    if (link->state == PW_LINK_STATE_ACTIVE) {
      ++result[nameOf(link->outputPort) + " -> " + nameOf(link->inputPort)];
    }
  }
  return result;
}

std::string SessionManager::volumeOf(const std::string& nodeName) {
  {
    const Locked lock(client_.loop());
    const Node* node = nodeNamed(nodeName);
    if (node == nullptr || node->proxy == nullptr) {
      return {};
    }
    nodes_.at(node->id)->volume.clear();
    pw_node_enum_params(reinterpret_cast<pw_node*>(node->proxy), 0, SPA_PARAM_Props, 0, 1, nullptr);
  }
  std::string volume;
  waitUntil(
      [&] {
        const Node* node = nodeNamed(nodeName);
        volume = node != nullptr ? node->volume : "";
        return !volume.empty();
      },
      answerTimeout);
  return volume;
}

bool SessionManager::hasNode(const std::string& nodeName) {
  const Locked lock(client_.loop());
  return nodeNamed(nodeName) != nullptr;
}

bool SessionManager::hasInputs(const std::string& nodeName) {
  const Locked lock(client_.loop());
  const Node* node = nodeNamed(nodeName);
  return node != nullptr && !inputChannels(node->id).empty();
}

void SessionManager::destroyNode(const std::string& nodeName) {
  const Locked lock(client_.loop());
  if (const Node* node = nodeNamed(nodeName)) {
    pw_registry_destroy(registry_, node->id);
  }
}

}  // namespace audrel::pwtest
