// What one IO cycle costs on the IO thread, beside the least that it could cost: one allocation,
// one copy, one submission to the same queue.

#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/SilentPlatform.h"
#include "engine/RecordingEngine.h"

namespace audrel::bench {
namespace {

constexpr std::size_t channels = 2;
constexpr double rate = 48000;

struct Cycle {
  explicit Cycle(std::size_t frames) : samples(frames * channels, 0.25F) {
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {.mNumberChannels = channels,
                        .mDataByteSize = static_cast<std::uint32_t>(byteSize()),
                        .mData = samples.data()};
  }
  std::size_t byteSize() const { return samples.size() * sizeof(float); }

  std::vector<float> samples;
  CA::AudioBufferList list;
};

/// How much of the time that a cycle has is spent.
void countPeriod(benchmark::State& state) {
  const double period = static_cast<double>(state.range(0)) / rate;
  state.counters["of_period"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * period,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void handleIOProc(benchmark::State& state) {
  SilentPlatform platform;
  const auto engine = RecordingEngine::make(platform.interfaces());
  engine->start(RecordingSource::allSystemAudio(), RecordingFormat::wav, "benchmark.wav");
  const Cycle cycle(static_cast<std::size_t>(state.range(0)));
  for ([[maybe_unused]] auto iteration : state) {
    engine->handleIOProc(&cycle.list);
  }
  countPeriod(state);
  engine->stop();
}

/// The floor's buffer: its queue item lives in the same allocation, as the engine's does.
struct Block {
  dispatch::WorkItem item;
  std::array<std::byte, 1> samples;

  static void operator delete(void* memory) noexcept { ::operator delete(memory); }
};

void allocateCopyEnqueue(benchmark::State& state) {
  SilentPlatform platform;
  const auto queue = platform.interfaces().dispatch.makeQueue("floor", {});
  const Cycle cycle(static_cast<std::size_t>(state.range(0)));
  for ([[maybe_unused]] auto iteration : state) {
    void* memory = ::operator new(sizeof(Block) + cycle.byteSize());
    std::unique_ptr<Block> block(new (memory) Block);
    std::memcpy(static_cast<std::byte*>(memory) + sizeof(Block), cycle.samples.data(),
                cycle.byteSize());
    dispatch::WorkItem& item = block->item;
    item.assign([block = std::move(block)] { benchmark::DoNotOptimize(block.get()); });
    queue->async(item);
  }
  countPeriod(state);
  queue->sync([] {});
}

// Few iterations: the queue's backlog is memory.
constexpr int iterations = 20000;

BENCHMARK(handleIOProc)->Arg(512)->Arg(1024)->Iterations(iterations)->Repetitions(5);
BENCHMARK(allocateCopyEnqueue)->Arg(512)->Arg(1024)->Iterations(iterations)->Repetitions(5);

}  // namespace
}  // namespace audrel::bench

BENCHMARK_MAIN();
