#include "tests/platform/linux/pipewire/harness/Pacer.h"

#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace audrel::pwtest {

const pw_stream_events Pacer::streamEvents = {
    .version = PW_VERSION_STREAM_EVENTS,
    .io_changed =
        [](void* self, std::uint32_t id, void* area, std::uint32_t) {
          if (id == SPA_IO_Position) {
            static_cast<Pacer*>(self)->position_ = static_cast<spa_io_position*>(area);
          }
        },
    .process = [](void* self) { static_cast<Pacer*>(self)->process(); },
};

Pacer::Pacer(const std::string& socketPath, double timesRealTime)
    : timesRealTime_(timesRealTime), client_(socketPath, {{PW_KEY_APP_NAME, "test-pacer"}}) {
  if (!client_.isConnected()) {
    return;
  }
  const Locked lock(client_.loop());
  stream_.reset(pw_stream_new(
      client_.core(), "test-pacer",
      pw_properties_new(PW_KEY_MEDIA_CLASS, "Test/Pacer", PW_KEY_NODE_NAME, "test-pacer",
                        PW_KEY_NODE_AUTOCONNECT, "false", PW_KEY_NODE_ALWAYS_PROCESS, "true",
                        "adapter.auto-port-config", "{ mode = dsp }", nullptr)));
  pw_stream_add_listener(stream_.get(), &hook_, &streamEvents, this);
  spa_audio_info_raw info{};
  info.format = SPA_AUDIO_FORMAT_F32P;
  info.rate = 48000;
  info.channels = 1;
  info.position[0] = SPA_AUDIO_CHANNEL_MONO;
  std::array<std::uint8_t, 1024> memory{};
  spa_pod_builder builder{};
  spa_pod_builder_init(&builder, memory.data(), memory.size());
  const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
  pw_stream_connect(
      stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY,
      static_cast<pw_stream_flags>(PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS), formats,
      1);
}

Pacer::~Pacer() {
  client_.stop();
}

void Pacer::process() noexcept {
  pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get());
  if (buffer != nullptr) {
    pw_stream_queue_buffer(stream_.get(), buffer);
  }
  const spa_io_position* position = position_;
  if (position == nullptr || position->clock.rate.denom == 0) {
    return;
  }
  const auto now =
      std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
  const double period = 1e9 * static_cast<double>(position->clock.duration) /
                        position->clock.rate.denom / timesRealTime_;
  // It makes up for no delay, so that the pace never exceeds what it is to be.
  due_ = std::max<std::int64_t>(due_ + static_cast<std::int64_t>(period), now);
  std::this_thread::sleep_for(std::chrono::nanoseconds(due_ - now));
}

}  // namespace audrel::pwtest
