#include "tests/platform/linux/pipewire/harness/SinkMonitor.h"

#include <spa/param/audio/format-utils.h>

#include <array>

namespace audrel::pwtest {

const pw_stream_events SinkMonitor::streamEvents = {
    .version = PW_VERSION_STREAM_EVENTS,
    .process = [](void* self) { static_cast<SinkMonitor*>(self)->process(); },
};

SinkMonitor::SinkMonitor(const std::string& socketPath) : client_(socketPath) {
  const Locked lock(client_.loop());
  stream_.reset(pw_stream_new(
      client_.core(), "test-monitor",
      pw_properties_new(PW_KEY_MEDIA_CLASS, mediaClass, PW_KEY_NODE_NAME, "test-monitor",
                        PW_KEY_NODE_AUTOCONNECT, "false", PW_KEY_NODE_ALWAYS_PROCESS, "true",
                        "adapter.auto-port-config", "{ mode = dsp position = preserve }",
                        nullptr)));
  pw_stream_add_listener(stream_.get(), &hook_, &streamEvents, this);
  spa_audio_info_raw info{};
  info.format = SPA_AUDIO_FORMAT_F32;
  info.rate = 48000;
  info.channels = 2;
  info.position[0] = SPA_AUDIO_CHANNEL_FL;
  info.position[1] = SPA_AUDIO_CHANNEL_FR;
  std::array<std::uint8_t, 1024> memory{};
  spa_pod_builder builder{};
  spa_pod_builder_init(&builder, memory.data(), memory.size());
  const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
  pw_stream_connect(
      stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY,
      static_cast<pw_stream_flags>(PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS), formats,
      1);
}

SinkMonitor::~SinkMonitor() {
  client_.stop();
}

void SinkMonitor::process() noexcept {
  pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get());
  if (buffer == nullptr) {
    return;
  }
  const spa_data& data = buffer->buffer->datas[0];
  const auto* bytes = static_cast<const std::byte*>(data.data) + data.chunk->offset;
  samples_.append(reinterpret_cast<const float*>(bytes), data.chunk->size / (2 * sizeof(float)));
  pw_stream_queue_buffer(stream_.get(), buffer);
}

}  // namespace audrel::pwtest
