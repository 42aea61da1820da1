#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "tests/platform/linux/pipewire/harness/Client.h"
#include "tests/platform/linux/pipewire/harness/Stamp.h"

struct spa_io_position;

namespace audrel::pwtest {

/// A tone at half of full scale, on all channels.
struct Tone {
  double frequency = 0;  ///< Hz
};

/// Stamped noise.
struct Stamped {
  std::uint32_t stream = 0;
};

enum class SampleFormat { int16, float32 };

/// One playback stream, which keeps account of when it played what.
class PlayerStream {
 public:
  struct Settings {
    std::string name;
    std::variant<Stamped, Tone> source;
    SampleFormat format = SampleFormat::float32;
    std::uint32_t channels = 2;  ///< 1, 2 or 6 (5.1)
    std::uint32_t rate = 48000;
    std::map<std::string, std::string> properties;
  };

  /// From `frame` of the stream, which played at `graphPosition`, it played without a break.
  struct Stretch {
    std::uint64_t graphPosition = 0;
    std::uint64_t frame = 0;
  };

  /// Starts to play as soon as somebody links it. Under the client's lock, as all here.
  PlayerStream(const Client& client, Settings settings);
  ~PlayerStream();
  PlayerStream(const PlayerStream&) = delete;
  PlayerStream& operator=(const PlayerStream&) = delete;

  void setPlaying(bool isPlaying);

  /// Any thread.
  std::uint64_t playedFrames() const { return frame_.load(); }
  std::uint32_t graphRate() const { return graphRate_.load(); }
  std::uint64_t longestQuantum() const { return longestQuantum_.load(); }
  std::uint64_t shortestQuantum() const { return shortestQuantum_.load(); }
  std::vector<Stretch> stretches() const;

 private:
  void connect();
  void process() noexcept;
  void account() noexcept;
  void render(void* memory, std::uint32_t frames) noexcept;
  float sample(std::uint64_t frame, std::uint32_t channel) const noexcept;

  static const pw_stream_events streamEvents;
  static constexpr std::size_t mostStretches = 256;

  Settings settings_;
  std::uint32_t frameBytes_;
  spa_hook hook_{};
  OwnedStream stream_;
  std::atomic<const spa_io_position*> position_ = nullptr;
  std::atomic<std::uint64_t> frame_ = 0;
  std::atomic<std::uint32_t> graphRate_ = 0;
  std::atomic<std::uint64_t> longestQuantum_ = 0;
  std::atomic<std::uint64_t> shortestQuantum_ = UINT64_MAX;
  std::uint64_t nextPosition_ = UINT64_MAX;
  std::array<Stretch, mostStretches> stretches_;
  std::atomic<std::size_t> stretchCount_ = 0;
};

}  // namespace audrel::pwtest
