#include "platform/linux/pipewire/GraphMirror.h"

#include <spa/param/audio/format-utils.h>
#include <spa/utils/json.h>

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace audrel::linuxos {

namespace {

// Frames per second that a graph can have. Whoever may write the settings may write anything.
constexpr std::uint32_t lowestRate = 8'000;
constexpr std::uint32_t highestRate = 768'000;

std::string text(const spa_dict* dict, const char* key) {
  const char* value = dict != nullptr ? spa_dict_lookup(dict, key) : nullptr;
  return value != nullptr ? value : "";
}

template <typename Number>
Number number(std::string_view digits, Number fallback) {
  Number value = fallback;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

Properties properties(const spa_dict* dict) {
  Properties copied;
  const spa_dict_item* item = nullptr;
  spa_dict_for_each(item, dict) {
    copied[item->key] = item->value != nullptr ? item->value : "";
  }
  return copied;
}

/// The node name in `{ "name": "..." }`.
std::string nameInJson(const char* value) {
  spa_json outer;
  spa_json object;
  spa_json_init(&outer, value, std::strlen(value));
  char key[64];
  if (spa_json_enter_object(&outer, &object) <= 0) {
    return {};
  }
  while (spa_json_get_string(&object, key, sizeof key) > 0) {
    char name[1024];
    if (std::string_view(key) == "name") {
      return spa_json_get_string(&object, name, sizeof name) > 0 ? name : "";
    }
    const char* skipped = nullptr;
    if (spa_json_next(&object, &skipped) <= 0) {
      break;
    }
  }
  return {};
}

/// A client of JACK has no media class, and that it is one is among its details.
bool isAudioNode(std::string_view mediaClass, const spa_dict* announced) {
  return mediaClass.starts_with("Audio/") || mediaClass == "Stream/Output/Audio" ||
         mediaClass == "Stream/Input/Audio" ||
         (mediaClass.empty() && text(announced, PW_KEY_MEDIA_TYPE) == "Audio");
}

/// Not one for MIDI or video.
bool isAudioPort(const spa_dict* announced) {
  const std::string format = text(announced, PW_KEY_FORMAT_DSP);
  return format.empty() || format == "32 bit float mono audio";
}

}  // namespace

/// A proxy and what listens to it. The hooks go before the proxy.
struct GraphMirror::Bound {
  GraphMirror& mirror;
  std::uint32_t id;
  ProxyHandle proxy;
  Hook hook;

  Bound(GraphMirror& mirror_, std::uint32_t id_, void* proxy_)
      : mirror(mirror_), id(id_), proxy(static_cast<pw_proxy*>(proxy_)) {}
  ~Bound() { hook.remove(); }
  Bound(const Bound&) = delete;
  Bound& operator=(const Bound&) = delete;
};

const pw_registry_events GraphMirror::registryEvents = {
    .version = PW_VERSION_REGISTRY_EVENTS,
    .global =
        [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
           const spa_dict* announced) {
          static_cast<GraphMirror*>(self)->added(id, type, announced);
        },
    .global_remove = [](void* self,
                        std::uint32_t id) { static_cast<GraphMirror*>(self)->removed(id); },
};

const pw_node_events GraphMirror::nodeEvents = {
    .version = PW_VERSION_NODE_EVENTS,
    .info =
        [](void* data, const pw_node_info* info) {
          auto* bound = static_cast<Bound*>(data);
          bound->mirror.nodeInfo(bound->id, info);
        },
    .param =
        [](void* data, int, std::uint32_t param, std::uint32_t, std::uint32_t, const spa_pod* pod) {
          auto* bound = static_cast<Bound*>(data);
          if (param == SPA_PARAM_Format && pod != nullptr) {
            bound->mirror.nodeFormat(bound->id, pod);
          }
        },
};

const pw_client_events GraphMirror::clientEvents = {
    .version = PW_VERSION_CLIENT_EVENTS,
    .info =
        [](void* data, const pw_client_info* info) {
          auto* bound = static_cast<Bound*>(data);
          bound->mirror.clientInfo(bound->id, info);
        },
    .permissions = nullptr,
};

// Whoever may write metadata may write it about any object. What is meant for all is about the
// core.
const pw_metadata_events GraphMirror::defaultsEvents = {
    .version = PW_VERSION_METADATA_EVENTS,
    .property =
        [](void* data, std::uint32_t subject, const char* key, const char*, const char* value) {
          if (subject == PW_ID_CORE && key != nullptr) {
            static_cast<Bound*>(data)->mirror.defaultChanged(key, value);
          }
          return 0;
        },
};

const pw_metadata_events GraphMirror::settingsEvents = {
    .version = PW_VERSION_METADATA_EVENTS,
    .property =
        [](void* data, std::uint32_t subject, const char* key, const char*, const char* value) {
          if (subject == PW_ID_CORE && key != nullptr) {
            static_cast<Bound*>(data)->mirror.settingChanged(key, value);
          }
          return 0;
        },
};

GraphMirror::GraphMirror(pw_core* core, std::function<void()> changed)
    : changed_(std::move(changed)), registry_(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0)) {
  pw_registry_add_listener(registry_, registryHook_.get(), &registryEvents, this);
}

GraphMirror::~GraphMirror() {
  registryHook_.remove();
  details_.clear();
  metadata_.clear();
  pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
}

void GraphMirror::followDetails(bool follow) {
  isFollowing_ = follow;
  if (!follow) {
    details_.clear();
    return;
  }
  for (const auto& [id, node] : graph_.nodes) {
    followNode(id);
  }
  for (const auto& [id, client] : graph_.clients) {
    followClient(id);
  }
}

void GraphMirror::added(std::uint32_t id, const char* type, const spa_dict* announced) {
  const std::string_view kind = type;
  if (kind == PW_TYPE_INTERFACE_Node) {
    addNode(id, announced);
  } else if (kind == PW_TYPE_INTERFACE_Port) {
    addPort(id, announced);
  } else if (kind == PW_TYPE_INTERFACE_Client) {
    graph_.clients[id] = {
        .serial = number(text(announced, PW_KEY_OBJECT_SERIAL), std::uint64_t{id}),
        .properties = properties(announced)};
    if (isFollowing_) {
      followClient(id);
    }
  } else if (kind == PW_TYPE_INTERFACE_Link) {
    graph_.links[id] = {
        .outputNodeId = number(text(announced, PW_KEY_LINK_OUTPUT_NODE), unknownGlobal),
        .outputPortId = number(text(announced, PW_KEY_LINK_OUTPUT_PORT), unknownGlobal),
        .inputNodeId = number(text(announced, PW_KEY_LINK_INPUT_NODE), unknownGlobal),
        .inputPortId = number(text(announced, PW_KEY_LINK_INPUT_PORT), unknownGlobal)};
  } else if (kind == PW_TYPE_INTERFACE_Metadata) {
    addMetadata(id, announced);
  } else if (kind == PW_TYPE_INTERFACE_Factory &&
             text(announced, PW_KEY_FACTORY_TYPE_NAME) == PW_TYPE_INTERFACE_Link) {
    graph_.linkFactoryId = id;
  } else {
    return;
  }
  changed_();
}

void GraphMirror::addNode(std::uint32_t id, const spa_dict* announced) {
  GraphNode node;
  node.mediaClass = text(announced, PW_KEY_MEDIA_CLASS);
  if (!isAudioNode(node.mediaClass, announced)) {
    return;
  }
  node.serial = number(text(announced, PW_KEY_OBJECT_SERIAL), std::uint64_t{id});
  node.clientId = number(text(announced, PW_KEY_CLIENT_ID), unknownGlobal);
  node.name = text(announced, PW_KEY_NODE_NAME);
  node.sessionPriority = number(text(announced, PW_KEY_PRIORITY_SESSION), 0);
  graph_.nodes[id] = std::move(node);
  if (isFollowing_) {
    followNode(id);
  }
}

void GraphMirror::addPort(std::uint32_t id, const spa_dict* announced) {
  if (!isAudioPort(announced)) {
    return;
  }
  graph_.ports[id] = {.nodeId = number(text(announced, PW_KEY_NODE_ID), unknownGlobal),
                      .isInput = text(announced, PW_KEY_PORT_DIRECTION) == "in",
                      .isMonitor = text(announced, PW_KEY_PORT_MONITOR) == "true",
                      .channel = text(announced, PW_KEY_AUDIO_CHANNEL),
                      .index = number(text(announced, PW_KEY_PORT_ID), 0U)};
}

void GraphMirror::addMetadata(std::uint32_t id, const spa_dict* announced) {
  const std::string name = text(announced, PW_KEY_METADATA_NAME);
  if (name != "default" && name != "settings") {
    return;
  }
  auto bound = std::make_unique<Bound>(
      *this, id,
      pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
  if (!bound->proxy) {
    return;  // a client configuration without the module for metadata
  }
  pw_metadata_add_listener(reinterpret_cast<pw_metadata*>(bound->proxy.get()), bound->hook.get(),
                           name == "default" ? &defaultsEvents : &settingsEvents, bound.get());
  metadata_[id] = std::move(bound);
}

void GraphMirror::removed(std::uint32_t id) {
  details_.erase(id);
  metadata_.erase(id);
  graph_.nodes.erase(id);
  graph_.ports.erase(id);
  graph_.clients.erase(id);
  graph_.links.erase(id);
  if (id == graph_.linkFactoryId) {
    graph_.linkFactoryId = unknownGlobal;
  }
  changed_();
}

void GraphMirror::followNode(std::uint32_t id) {
  if (details_.contains(id)) {
    return;
  }
  auto bound = std::make_unique<Bound>(
      *this, id, pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0));
  auto* node = reinterpret_cast<pw_node*>(bound->proxy.get());
  pw_node_add_listener(node, bound->hook.get(), &nodeEvents, bound.get());
  if (isPlaybackStream(graph_.nodes[id])) {
    std::uint32_t followed[] = {SPA_PARAM_Format};
    pw_node_subscribe_params(node, followed, 1);
  }
  details_[id] = std::move(bound);
}

void GraphMirror::followClient(std::uint32_t id) {
  if (details_.contains(id)) {
    return;
  }
  auto bound = std::make_unique<Bound>(
      *this, id, pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0));
  pw_client_add_listener(reinterpret_cast<pw_client*>(bound->proxy.get()), bound->hook.get(),
                         &clientEvents, bound.get());
  details_[id] = std::move(bound);
}

void GraphMirror::nodeInfo(std::uint32_t id, const pw_node_info* info) {
  GraphNode& node = graph_.nodes[id];
  node.isRunning = info->state == PW_NODE_STATE_RUNNING;
  if ((info->change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0 && info->props != nullptr) {
    node.properties = properties(info->props);
    node.isDetailed = true;
  }
  changed_();
}

void GraphMirror::nodeFormat(std::uint32_t id, const spa_pod* format) {
  spa_audio_info_raw raw{};
  std::uint32_t type = 0;
  std::uint32_t subtype = 0;
  if (spa_format_parse(format, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_audio ||
      subtype != SPA_MEDIA_SUBTYPE_raw || spa_format_audio_raw_parse(format, &raw) < 0) {
    return;
  }
  graph_.nodes[id].channels = raw.channels;
  changed_();
}

void GraphMirror::clientInfo(std::uint32_t id, const pw_client_info* info) {
  if (info->props == nullptr) {
    return;
  }
  GraphClient& client = graph_.clients[id];
  client.properties = properties(info->props);
  client.isDetailed = true;
  changed_();
}

void GraphMirror::defaultChanged(std::string_view key, const char* value) {
  if (key == "default.audio.sink") {
    graph_.configuredDefaultSink = value != nullptr ? nameInJson(value) : "";
    changed_();
  }
}

void GraphMirror::settingChanged(std::string_view key, const char* value) {
  const auto rate = number<std::uint32_t>(value != nullptr ? value : "", 0);
  const bool isPossible = lowestRate <= rate && rate <= highestRate;
  if (key == "clock.rate" && isPossible) {
    graph_.clockRate = rate;
  } else if (key == "clock.force-rate") {
    graph_.forcedRate = isPossible ? rate : 0;
  } else {
    return;
  }
  changed_();
}

}  // namespace audrel::linuxos
