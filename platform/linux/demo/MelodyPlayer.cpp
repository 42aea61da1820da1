#include "platform/linux/demo/MelodyPlayer.h"

#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <chrono>
#include <set>

namespace audrel::linuxos {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 3s;
constexpr std::uint32_t rate = 48000;
constexpr std::uint32_t frameBytes = 2 * sizeof(float);

/// From each of the stream's ports to the sink's port of the same channel.
std::set<PortPair> linksToSink(const Graph& graph, std::uint32_t self) {
  const GraphNode* sink = defaultSink(graph);
  std::set<PortPair> plan;
  for (const auto& [outputId, output] : graph.ports) {
    if (output.nodeId != self || output.isInput) {
      continue;
    }
    for (const auto& [inputId, input] : graph.ports) {
      const auto owner = graph.nodes.find(input.nodeId);
      if (owner != graph.nodes.end() && &owner->second == sink && input.isInput &&
          input.channel == output.channel) {
        plan.insert({outputId, inputId});
      }
    }
  }
  return plan;
}

}  // namespace

const pw_stream_events MelodyPlayer::streamEvents = {
    .version = PW_VERSION_STREAM_EVENTS,
    .state_changed =
        [](void* self, pw_stream_state, pw_stream_state, const char*) {
          pw_thread_loop_signal(static_cast<MelodyPlayer*>(self)->connection_.loop(), false);
        },
    .process = [](void* self) { static_cast<MelodyPlayer*>(self)->process(); },
};

std::unique_ptr<MelodyPlayer> MelodyPlayer::start(const std::string& socketPath) {
  std::unique_ptr<MelodyPlayer> player(new MelodyPlayer(socketPath));
  return player->play() ? std::move(player) : nullptr;
}

MelodyPlayer::MelodyPlayer(const std::string& socketPath) : melody_(rate) {
  connection_.useServer(socketPath);
}

MelodyPlayer::~MelodyPlayer() {
  const LoopLock lock(connection_.loop());
  connection_.setObserver(nullptr);
  serverLost();
}

bool MelodyPlayer::play() {
  const LoopLock lock(connection_.loop());
  if (!connection_.ensureConnected()) {
    return false;
  }
  connection_.setObserver(this);
  links_ = std::make_unique<LinkSet>(connection_.core(), LinkKind::active, [] {});
  stream_.reset(pw_stream_new(
      connection_.core(), "Melody",
      pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                        PW_KEY_MEDIA_ROLE, "Music", PW_KEY_APP_NAME, "Audrel Demo",
                        PW_KEY_NODE_NAME, "audrel-demo-melody", "adapter.auto-port-config",
                        "{ mode = dsp position = preserve }", nullptr)));
  pw_stream_add_listener(stream_.get(), streamHook_.get(), &streamEvents, this);
  spa_audio_info_raw info{};
  info.format = SPA_AUDIO_FORMAT_F32;
  info.rate = rate;
  info.channels = 2;
  info.position[0] = SPA_AUDIO_CHANNEL_FL;
  info.position[1] = SPA_AUDIO_CHANNEL_FR;
  std::uint8_t memory[1024];
  spa_pod_builder builder{};
  spa_pod_builder_init(&builder, memory, sizeof memory);
  const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
  const auto flags =
      static_cast<pw_stream_flags>(PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
  if (pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, formats, 1) < 0) {
    return false;
  }
  return connection_.waitUntil(
      [&] {
        graphChanged();
        return pw_stream_get_state(stream_.get(), nullptr) == PW_STREAM_STATE_STREAMING;
      },
      startTimeout);
}

void MelodyPlayer::graphChanged() {
  const std::uint32_t self = stream_ ? pw_stream_get_node_id(stream_.get()) : SPA_ID_INVALID;
  if (self != SPA_ID_INVALID) {
    links_->follow(linksToSink(connection_.graph(), self));
  }
}

void MelodyPlayer::serverLost() {
  if (stream_) {
    endStream(stream_, streamHook_);
  }
  links_.reset();
}

void MelodyPlayer::process() noexcept {
  pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get());
  if (buffer == nullptr) {
    return;
  }
  spa_data& data = buffer->buffer->datas[0];
  std::uint32_t frames = data.maxsize / frameBytes;
  if (buffer->requested > 0) {
    frames = std::min(frames, static_cast<std::uint32_t>(buffer->requested));
  }
  melody_.render(static_cast<float*>(data.data), frames);
  data.chunk->offset = 0;
  data.chunk->stride = frameBytes;
  data.chunk->size = frames * frameBytes;
  pw_stream_queue_buffer(stream_.get(), buffer);
}

}  // namespace audrel::linuxos
