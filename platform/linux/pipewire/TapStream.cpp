#include "platform/linux/pipewire/TapStream.h"

#include <spa/param/audio/format-utils.h>
#include <spa/param/latency-utils.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace audrel::linuxos {

namespace {

constexpr std::uint32_t positions[tapChannels] = {
    SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FC, SPA_AUDIO_CHANNEL_LFE,
    SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR, SPA_AUDIO_CHANNEL_SL, SPA_AUDIO_CHANNEL_SR};

// The media class is our own: session managers leave a node alone that they do not know, and the
// links are ours to make. Without always-process the stream would pause with the application and
// the recording's time with it. There is no latency request, which would change everyone's quantum.
// And the latency of its ports is none of what a tapped program is told of its own sound: since
// 0.3.71 for the asking, before that by having one that changes no other.
pw_properties* streamProperties() {
  return pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture",
                           PW_KEY_MEDIA_ROLE, "Production", PW_KEY_MEDIA_CLASS, "Audrel/Tap",
                           PW_KEY_MEDIA_NAME, "Audrel Tap", PW_KEY_NODE_NAME, "audrel-tap",
                           PW_KEY_NODE_DESCRIPTION, "Audrel Tap", PW_KEY_APP_NAME, "Audrel",
                           PW_KEY_NODE_AUTOCONNECT, "false", PW_KEY_NODE_DONT_RECONNECT, "true",
                           PW_KEY_STREAM_DONT_REMIX, "true", PW_KEY_NODE_ALWAYS_PROCESS, "true",
                           "adapter.auto-port-config", "{ mode = dsp position = preserve }",
                           "port.ignore-latency", "true", nullptr);
}

}  // namespace

const pw_stream_events TapStream::streamEvents = {
    .version = PW_VERSION_STREAM_EVENTS,
    .state_changed =
        [](void* self, pw_stream_state, pw_stream_state state, const char* error) {
          static_cast<TapStream*>(self)->stateChanged(state, error);
        },
    .io_changed =
        [](void* self, std::uint32_t id, void* area, std::uint32_t) {
          if (id == SPA_IO_Position) {
            static_cast<TapStream*>(self)->position_.replace(static_cast<spa_io_position*>(area));
          }
        },
    .process = [](void* self) { static_cast<TapStream*>(self)->process(); },
};

TapStream::TapStream(Connection& connection, const CaptureTime& time, double rate,
                     TappedPortsOf tappedPortsOf, Timeline& timeline)
    : connection_(connection),
      time_(time),
      rate_(rate),
      tappedPortsOf_(std::move(tappedPortsOf)),
      timeline_(timeline),
      stream_(pw_stream_new(connection.core(), "Audrel Tap", streamProperties())),
      links_(connection.core(), LinkKind::passive, [this] { connection_.wake(); }) {
  pw_stream_add_listener(stream_.get(), streamHook_.get(), &streamEvents, this);
  connect();
}

TapStream::~TapStream() {
  endStream(stream_, streamHook_);
}

void TapStream::connect() {
  spa_audio_info_raw info{};
  info.format = SPA_AUDIO_FORMAT_F32P;
  info.rate = static_cast<std::uint32_t>(std::lround(rate_));
  info.channels = tapChannels;
  std::ranges::copy(positions, info.position);
  std::uint8_t memory[1024];
  spa_pod_builder builder{};
  spa_pod_builder_init(&builder, memory, sizeof memory);
  spa_latency_info noLatency{};
  spa_latency_info_combine_start(&noLatency, SPA_DIRECTION_INPUT);
  const spa_pod* params[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info),
                             spa_latency_build(&builder, SPA_PARAM_Latency, &noLatency)};
  const auto flags =
      static_cast<pw_stream_flags>(PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
  const int result =
      pw_stream_connect(stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY, flags, params, 2);
  if (result < 0) {
    failure_ = std::strerror(-result);  // NOLINT(concurrency-mt-unsafe): glibc's is safe
    connection_.noteChange();
  }
}

void TapStream::stateChanged(pw_stream_state state, const char* error) {
  if (isStreaming_ && state == PW_STREAM_STATE_PAUSED) {
    position_.noteStop();
  }
  isStreaming_ = state == PW_STREAM_STATE_STREAMING;
  if (state == PW_STREAM_STATE_ERROR) {
    failure_ = error != nullptr ? error : "unknown error";
  } else if (state == PW_STREAM_STATE_UNCONNECTED) {
    failure_ = "it was taken away";
  }
  connection_.wake();
  connection_.noteChange();
}

void TapStream::followGraph() {
  const std::uint32_t self = pw_stream_get_node_id(stream_.get());
  if (self == SPA_ID_INVALID) {
    return;
  }
  const Graph& graph = connection_.graph();
  const auto plan = planLinks(graph, self, tappedPortsOf_);
  tapsSurround_ = std::ranges::any_of(plan, [&](const PortPair& ports) {
    const std::string& channel = graph.ports.at(ports.input).channel;
    return channel != "FL" && channel != "FR";
  });
  links_.follow(plan);
}

bool TapStream::hasPorts() const {
  const std::uint32_t self = pw_stream_get_node_id(stream_.get());
  const auto count = std::ranges::count_if(connection_.graph().ports, [&](const auto& entry) {
    return entry.second.nodeId == self && entry.second.isInput && !entry.second.isMonitor;
  });
  return count == tapChannels;
}

bool TapStream::isReady() const {
  return isStreaming_ && hasPorts();
}

bool TapStream::isLinked() const {
  const Graph& graph = connection_.graph();
  return links_.isSettled([&](std::uint32_t outputPort) {
    const auto port = graph.ports.find(outputPort);
    const auto node =
        port == graph.ports.end() ? graph.nodes.end() : graph.nodes.find(port->second.nodeId);
    return node != graph.nodes.end() && node->second.isRunning;
  });
}

void TapStream::process() noexcept {
  pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get());
  if (buffer == nullptr) {
    return;
  }
  feed(*buffer);
  pw_stream_queue_buffer(stream_.get(), buffer);
}

void TapStream::feed(const pw_buffer& buffer) noexcept {
  const spa_buffer& data = *buffer.buffer;
  const auto cycle = position_.cycle(time_.now());
  if (data.n_datas != tapChannels || !cycle) {
    return;
  }
  TapAudio audio{.planes = {}, .frames = UINT32_MAX, .hasSurround = tapsSurround_};
  for (std::uint32_t channel = 0; channel < tapChannels; ++channel) {
    const spa_data& plane = data.datas[channel];
    if (plane.data == nullptr) {
      return;
    }
    const std::uint32_t offset = std::min(plane.chunk->offset, plane.maxsize);
    const std::uint32_t size = std::min(plane.chunk->size, plane.maxsize - offset);
    audio.planes[channel] =
        reinterpret_cast<const float*>(static_cast<const std::byte*>(plane.data) + offset);
    audio.frames = std::min(audio.frames, size / static_cast<std::uint32_t>(sizeof(float)));
  }
  timeline_.feedCycle(*cycle, audio);
}

}  // namespace audrel::linuxos
