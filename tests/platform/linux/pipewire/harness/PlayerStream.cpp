#include "tests/platform/linux/pipewire/harness/PlayerStream.h"

#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace audrel::pwtest {

namespace {

std::vector<std::uint32_t> layout(std::uint32_t channels) {
  switch (channels) {
    case 1:
      return {SPA_AUDIO_CHANNEL_MONO};
    case 2:
      return {SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR};
    default:
      return {SPA_AUDIO_CHANNEL_FL,  SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FC,
              SPA_AUDIO_CHANNEL_LFE, SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR};
  }
}

pw_properties* streamProperties(const PlayerStream::Settings& settings) {
  pw_properties* properties =
      pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                        PW_KEY_NODE_NAME, settings.name.c_str(), nullptr);
  for (const auto& [key, value] : settings.properties) {
    pw_properties_set(properties, key.c_str(), value.c_str());
  }
  return properties;
}

}  // namespace

const pw_stream_events PlayerStream::streamEvents = {
    .version = PW_VERSION_STREAM_EVENTS,
    .io_changed =
        [](void* self, std::uint32_t id, void* area, std::uint32_t) {
          if (id == SPA_IO_Position) {
            static_cast<PlayerStream*>(self)->position_ = static_cast<spa_io_position*>(area);
          }
        },
    .process = [](void* self) { static_cast<PlayerStream*>(self)->process(); },
};

PlayerStream::PlayerStream(const Client& client, Settings settings)
    : settings_(std::move(settings)),
      frameBytes_(settings_.channels * (settings_.format == SampleFormat::int16 ? 2 : 4)),
      stream_(pw_stream_new(client.core(), settings_.name.c_str(), streamProperties(settings_))) {
  pw_stream_add_listener(stream_.get(), &hook_, &streamEvents, this);
  connect();
}

PlayerStream::~PlayerStream() = default;

void PlayerStream::connect() {
  spa_audio_info_raw info{};
  info.format =
      settings_.format == SampleFormat::int16 ? SPA_AUDIO_FORMAT_S16 : SPA_AUDIO_FORMAT_F32;
  info.rate = settings_.rate;
  info.channels = settings_.channels;
  std::ranges::copy(layout(settings_.channels), info.position);
  std::array<std::uint8_t, 1024> memory{};
  spa_pod_builder builder{};
  spa_pod_builder_init(&builder, memory.data(), memory.size());
  const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
  pw_stream_connect(
      stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY,
      static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                   PW_STREAM_FLAG_RT_PROCESS),
      formats, 1);
}

void PlayerStream::setPlaying(bool isPlaying) {
  pw_stream_set_active(stream_.get(), isPlaying);
}

std::vector<PlayerStream::Stretch> PlayerStream::stretches() const {
  return {stretches_.begin(),
          stretches_.begin() + static_cast<std::ptrdiff_t>(stretchCount_.load())};
}

void PlayerStream::process() noexcept {
  pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get());
  if (buffer == nullptr) {
    return;
  }
  account();
  spa_data& data = buffer->buffer->datas[0];
  std::uint32_t frames = data.maxsize / frameBytes_;
  if (buffer->requested > 0) {
    frames = std::min(frames, static_cast<std::uint32_t>(buffer->requested));
  }
  render(data.data, frames);
  data.chunk->offset = 0;
  data.chunk->stride = static_cast<std::int32_t>(frameBytes_);
  data.chunk->size = frames * frameBytes_;
  pw_stream_queue_buffer(stream_.get(), buffer);
}

void PlayerStream::account() noexcept {
  const spa_io_position* position = position_;
  if (position == nullptr) {
    return;
  }
  const std::uint64_t start = position->clock.position;
  const std::uint64_t quantum = position->clock.duration;
  if (start != nextPosition_ && stretchCount_ < mostStretches) {
    stretches_[stretchCount_] = {.graphPosition = start, .frame = frame_};
    ++stretchCount_;
  }
  nextPosition_ = start + quantum;
  graphRate_ = position->clock.rate.denom;
  longestQuantum_ = std::max(longestQuantum_.load(), quantum);
  shortestQuantum_ = std::min(shortestQuantum_.load(), quantum);
}

float PlayerStream::sample(std::uint64_t frame, std::uint32_t channel) const noexcept {
  if (const auto* tone = std::get_if<Tone>(&settings_.source)) {
    const double cycles = tone->frequency * static_cast<double>(frame) / settings_.rate;
    return 0.5F *
           static_cast<float>(std::sin(2 * std::numbers::pi * (cycles - std::floor(cycles))));
  }
  return asFloat(stampedSample({std::get<Stamped>(settings_.source).stream, frame}, channel));
}

void PlayerStream::render(void* memory, std::uint32_t frames) noexcept {
  const std::uint64_t first = frame_;
  std::size_t index = 0;
  for (std::uint64_t frame = first; frame < first + frames; ++frame) {
    for (std::uint32_t channel = 0; channel < settings_.channels; ++channel, ++index) {
      const float value = sample(frame, channel);
      if (settings_.format == SampleFormat::int16) {
        static_cast<std::int16_t*>(memory)[index] =
            static_cast<std::int16_t>(std::lround(value * 32768.0F));
      } else {
        static_cast<float*>(memory)[index] = value;
      }
    }
  }
  frame_ = first + frames;
}

}  // namespace audrel::pwtest
