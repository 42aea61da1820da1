// What is allocated, and what happens when nothing can be. A program of its own, since it replaces
// the allocation functions.

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace {

std::size_t allocations = 0;
bool memoryIsFull = false;

void* allocate(std::size_t size) noexcept {
  ++allocations;
  return memoryIsFull ? nullptr : std::malloc(size);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = allocate(size)) {
    return memory;
  }
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
// Inlined beside an allocation that is not, they look to g++ 14 like a mismatched free.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace audrel::linuxos::test {
namespace {

class Allocation : public FileTest {
 protected:
  std::unique_ptr<AV::PCMBuffer> makeBuffer(std::uint32_t frames) {
    return framework_.makePCMBuffer(format_, frames);
  }

  /// `count` writes of the same 480 frames.
  std::vector<NS::Error> writeOften(AV::AudioFile& file, int count, bool memoryIsFullMeanwhile) {
    const Audio audio = noise(480);
    const auto buffer = makeBuffer(480);
    buffer->setFrameLength(480);
    std::memcpy(buffer->mutableAudioBufferList()->mBuffers[0].mData, audio.samples.data(), 480 * 8);
    std::vector<NS::Error> errors;
    for (int i = 0; i < count; ++i) {
      memoryIsFull = memoryIsFullMeanwhile;
      auto error = file.write(*buffer);
      memoryIsFull = false;
      if (error) {
        errors.push_back(*error);
      }
    }
    return errors;
  }

  const std::shared_ptr<const AV::AudioFormat> format_ =
      framework_.makeFormat(floatDescription(48000, 2));
};

TEST_F(Allocation, aBufferIsOneAllocation) {
  const std::size_t before = allocations;
  const auto buffer = makeBuffer(512);
  EXPECT_EQ(allocations - before, 1U);
  ASSERT_TRUE(buffer);
}

TEST_F(Allocation, withoutMemoryThereIsNoBuffer) {
  memoryIsFull = true;
  const auto buffer = makeBuffer(512);
  memoryIsFull = false;
  EXPECT_FALSE(buffer);
}

TEST_F(Allocation, aWavIsWrittenWithoutAny) {
  {
    const auto file = openFile(framework_, folder_ / "a.wav", wavSettings(noise(1)));
    EXPECT_TRUE(writeOften(*file, 120, true).empty());
  }
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_EQ(readWav(folder_ / "a.wav").samples.size(), 120U * 480 * 2);
}

TEST_F(Allocation, anM4aAllocatesLittleOfItsOwn) {
  const auto file = openFile(framework_, folder_ / "a.m4a", m4aSettings(noise(1)));
  writeOften(*file, 100, false);
  const std::size_t before = allocations;
  writeOften(*file, 1000, false);
  EXPECT_LE(allocations - before, 20U) << "for ten seconds: a growing index and a few fixed ones";
}

TEST_F(Allocation, anM4aFragmentWithoutMemoryForItsIndexBecomesSilence) {
  {
    const auto file = openFile(framework_, folder_ / "a.m4a", m4aSettings(noise(1)));
    EXPECT_TRUE(writeOften(*file, 300, false).empty());
    const auto errors = writeOften(*file, 700, true);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.front().code, ENOMEM);
    EXPECT_TRUE(writeOften(*file, 300, false).empty());
  }
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_EQ(probe(folder_ / "a.m4a").duration, 1300 * 480);
}

}  // namespace
}  // namespace audrel::linuxos::test
