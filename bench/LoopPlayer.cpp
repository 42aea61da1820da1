// Plays one piece of audio round and round, sample-exactly: `loop_player FILE QUANTUM STREAMS
// RATE`, where FILE holds stereo frames, 16-bit signed, QUANTUM is the cycle length that it asks of
// the server, in frames, STREAMS how many streams each play the piece, and RATE their frames a
// second. It prints "ready", and then for each line that it reads the shortest and the longest
// cycle since the last: "1024 1024". It ends when its standard input does.

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/pipewire/Handles.h"

namespace audrel::bench {
namespace {

using linuxos::ContextHandle;
using linuxos::Hook;
using linuxos::LoopLock;
using linuxos::StreamHandle;
using linuxos::ThreadLoopHandle;

constexpr std::uint32_t frameBytes = 4;

/// The cycles of the graph. Any thread.
struct CycleLengths {
  std::atomic<std::uint64_t> shortest = UINT64_MAX;
  std::atomic<std::uint64_t> longest = 0;
};

/// One stream that plays the piece. Its functions are called with the loop locked.
class LoopStream {
 public:
  LoopStream(const std::vector<char>& audio, CycleLengths& cycles)
      : audio_(audio), cycles_(cycles) {}
  ~LoopStream() {
    if (stream_) {
      endStream(stream_, hook_);
    }
  }
  LoopStream(const LoopStream&) = delete;
  LoopStream& operator=(const LoopStream&) = delete;

  /// The first stream has the name that recorders are linked to.
  bool start(pw_core* core, std::uint32_t number, const std::string& latency, std::uint32_t rate) {
    const std::string name = number == 1 ? "loop-player" : "loop-player-" + std::to_string(number);
    stream_.reset(pw_stream_new(
        core, "Loop",
        pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                          PW_KEY_APP_NAME, "Loop player", PW_KEY_NODE_NAME, name.c_str(),
                          PW_KEY_NODE_LATENCY, latency.c_str(), nullptr)));
    pw_stream_add_listener(stream_.get(), hook_.get(), &events, this);
    return connect(rate);
  }

 private:
  bool connect(std::uint32_t rate) {
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_S16;
    info.rate = rate;
    info.channels = 2;
    info.position[0] = SPA_AUDIO_CHANNEL_FL;
    info.position[1] = SPA_AUDIO_CHANNEL_FR;
    std::array<std::uint8_t, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    const spa_pod* formats[] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
    return pw_stream_connect(
               stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY,
               static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT |
                                            PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS),
               formats, 1) == 0;
  }

  void process() noexcept {
    pw_buffer* buffer = pw_stream_dequeue_buffer(stream_.get());
    if (buffer == nullptr) {
      return;
    }
    if (const spa_io_position* position = position_) {
      cycles_.shortest = std::min<std::uint64_t>(cycles_.shortest, position->clock.duration);
      cycles_.longest = std::max<std::uint64_t>(cycles_.longest, position->clock.duration);
    }
    spa_data& data = buffer->buffer->datas[0];
    std::uint64_t frames = data.maxsize / frameBytes;
    if (buffer->requested > 0) {
      frames = std::min<std::uint64_t>(frames, buffer->requested);
    }
    copyNext(static_cast<char*>(data.data), frames * frameBytes);
    data.chunk->offset = 0;
    data.chunk->stride = frameBytes;
    data.chunk->size = static_cast<std::uint32_t>(frames * frameBytes);
    pw_stream_queue_buffer(stream_.get(), buffer);
  }

  void copyNext(char* out, std::size_t bytes) noexcept {
    while (bytes > 0) {
      const std::size_t part = std::min(bytes, audio_.size() - next_);
      out = std::copy_n(audio_.data() + next_, part, out);
      bytes -= part;
      next_ = (next_ + part) % audio_.size();
    }
  }

  static const pw_stream_events events;

  const std::vector<char>& audio_;
  CycleLengths& cycles_;
  std::size_t next_ = 0;
  std::atomic<const spa_io_position*> position_ = nullptr;
  StreamHandle stream_;
  Hook hook_;
};

const pw_stream_events LoopStream::events = {
    .version = PW_VERSION_STREAM_EVENTS,
    .io_changed =
        [](void* self, std::uint32_t id, void* area, std::uint32_t) {
          if (id == SPA_IO_Position) {
            static_cast<LoopStream*>(self)->position_ = static_cast<spa_io_position*>(area);
          }
        },
    .process = [](void* self) { static_cast<LoopStream*>(self)->process(); },
};

class LoopPlayer {
 public:
  explicit LoopPlayer(std::vector<char> audio)
      : audio_(std::move(audio)),
        loop_(pw_thread_loop_new("loop-player", nullptr)),
        context_(pw_context_new(pw_thread_loop_get_loop(loop_.get()),
                                pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr),
                                0)) {}

  ~LoopPlayer() { pw_thread_loop_stop(loop_.get()); }
  LoopPlayer(const LoopPlayer&) = delete;
  LoopPlayer& operator=(const LoopPlayer&) = delete;

  bool start(const std::string& quantum, std::uint32_t streams, std::uint32_t rate) {
    pw_thread_loop_start(loop_.get());
    const LoopLock lock(loop_.get());
    pw_core* core = pw_context_connect(context_.get(), nullptr, 0);
    if (core == nullptr) {
      return false;
    }
    const std::string latency = quantum + "/" + std::to_string(rate);
    for (std::uint32_t number = 1; number <= streams; ++number) {
      streams_.push_back(std::make_unique<LoopStream>(audio_, cycles_));
      if (!streams_.back()->start(core, number, latency, rate)) {
        return false;
      }
    }
    return true;
  }

  std::string cycleLengths() {
    return std::to_string(cycles_.shortest.exchange(UINT64_MAX)) + " " +
           std::to_string(cycles_.longest.exchange(0));
  }

 private:
  const std::vector<char> audio_;
  CycleLengths cycles_;
  ThreadLoopHandle loop_;
  ContextHandle context_;
  std::vector<std::unique_ptr<LoopStream>> streams_;
};

int run(const char* path, const char* quantum, std::uint32_t streams, std::uint32_t rate) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> audio{std::istreambuf_iterator<char>(file), {}};
  if (audio.empty() || audio.size() % frameBytes != 0) {
    std::cerr << "loop_player: " << path << " holds no whole frames of audio\n";
    return EXIT_FAILURE;
  }
  pw_init(nullptr, nullptr);
  LoopPlayer player(std::move(audio));
  if (!player.start(quantum, streams, rate)) {
    std::cerr << "loop_player: the audio server does not answer\n";
    return EXIT_FAILURE;
  }
  std::cout << "ready\n" << std::flush;
  for (std::string line; std::getline(std::cin, line);) {
    std::cout << player.cycleLengths() << "\n" << std::flush;
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace audrel::bench

int main(int count, char** arguments) {
  if (count != 5) {
    std::cerr << "usage: loop_player FILE QUANTUM STREAMS RATE\n";
    return 2;
  }
  const auto streams = static_cast<std::uint32_t>(std::strtoul(arguments[3], nullptr, 10));
  const auto rate = static_cast<std::uint32_t>(std::strtoul(arguments[4], nullptr, 10));
  return audrel::bench::run(arguments[1], arguments[2], streams, rate);
}
