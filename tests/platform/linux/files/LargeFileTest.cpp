// Files beyond the sizes and times that 32 bits hold.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "platform/linux/aac/AacEncoder.h"
#include "platform/linux/files/M4aFrameWriter.h"
#include "platform/linux/files/M4aWriter.h"
#include "platform/linux/files/RawFile.h"
#include "platform/linux/files/Repair.h"
#include "platform/linux/files/WavWriter.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

constexpr std::uint64_t fourGiB = std::uint64_t{1} << 32U;

/// A real file in which runs of zeros become holes, so that a large one takes little time and
/// space.
class SparseFile final : public RawFile {
 public:
  static constexpr std::size_t pieceSize = 4096;

  explicit SparseFile(std::unique_ptr<RawFile> file) : file_(std::move(file)) {}

  ssize_t pwrite(const std::byte* data, std::size_t size, off_t offset) noexcept override {
    static constexpr std::array<std::byte, pieceSize> zeros{};
    for (std::size_t done = 0; done < size; done += pieceSize) {
      const std::size_t count = std::min(pieceSize, size - done);
      const off_t at = offset + static_cast<off_t>(done);
      if (std::memcmp(data + done, zeros.data(), count) != 0 &&
          file_->pwrite(data + done, count, at) != static_cast<ssize_t>(count)) {
        return -1;
      }
    }
    size_ = std::max(size_, offset + static_cast<off_t>(size));
    return file_->ftruncate(size_) == 0 ? static_cast<ssize_t>(size) : -1;
  }

  int ftruncate(off_t size) noexcept override {
    size_ = size;
    return file_->ftruncate(size);
  }

  int sync() noexcept override { return file_->sync(); }
  int syncFolder() noexcept override { return file_->syncFolder(); }
  bool isLocked() const noexcept override { return file_->isLocked(); }
  // However busy the disk is: the header is to count what was just written.
  std::chrono::milliseconds patience() const noexcept override { return std::chrono::hours(1); }
  void remove() noexcept override { file_->remove(); }
  int close() noexcept override { return file_->close(); }

 private:
  std::unique_ptr<RawFile> file_;
  off_t size_ = 0;
};

std::unique_ptr<RawFile> createSparse(const std::filesystem::path& path) {
  int code = 0;
  auto file = createExclusively(path, &code);
  if (!file) {
    throw std::runtime_error("no sparse file");
  }
  return std::make_unique<SparseFile>(std::move(file));
}

/// The frames of a WAV file by its header, and the samples that end it, by libsndfile.
std::pair<std::uint64_t, std::vector<std::int16_t>> endOfWav(const std::filesystem::path& path,
                                                             std::size_t frames) {
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (file == nullptr) {
    throw std::runtime_error(sf_strerror(nullptr));
  }
  std::vector<std::int16_t> samples(frames * static_cast<std::size_t>(info.channels));
  sf_seek(file, -static_cast<sf_count_t>(frames), SEEK_END);
  sf_readf_short(file, samples.data(), static_cast<sf_count_t>(frames));
  sf_close(file);
  return {static_cast<std::uint64_t>(info.frames), samples};
}

std::string firstFourBytes(const std::filesystem::path& path) {
  const ToolResult result = runTool({"head", "-c", "4", path.string()});
  return result.output;
}

TEST(LargeWav, isRightBeforeAtAndBeyondFourGiBWhileItGrows) {
  const support::TemporaryFolder folder;
  const auto path = folder / "large.wav";
  const WavFormat format = {48000, 2};
  WavWriter writer(BlockFile(createSparse(path)), format);
  ASSERT_EQ(writer.start(), 0);

  const std::vector<std::byte> silence(std::size_t{64} << 20U);
  const auto ending = asSixteenBit(noise(24'000).samples);
  std::uint64_t size = 0;
  while (size + 2 * silence.size() < fourGiB) {
    ASSERT_EQ(writer.append(silence), std::nullopt);
    size += silence.size();
  }
  for (int i = 0; i < 1500; ++i) {  // half a second each, across the border
    ASSERT_EQ(writer.append(std::as_bytes(std::span(ending))), std::nullopt);
    size += ending.size() * 2;
    const bool nearBorder = size > fourGiB - 200'000 && size < fourGiB + 200'000;
    if (i % 500 == 0 || nearBorder) {
      const auto [frames, samples] = endOfWav(path, 24'000);
      EXPECT_EQ(frames, size / 4);
      EXPECT_EQ(samples, ending);
      EXPECT_EQ(firstFourBytes(path), size + 72 < 0xFFFFFFFF ? "RIFF" : "RF64");
    }
  }
  ASSERT_GT(size, fourGiB);
  EXPECT_EQ(writer.finish({}), 0);

  EXPECT_EQ(endOfWav(path, 24'000), std::pair(size / 4, ending));
  EXPECT_EQ(probe(path).duration, size / 4);
  const double lastSecond = static_cast<double>(size) / 4 / 48000 - 0.5;
  EXPECT_EQ(asSixteenBit(decode(path, lastSecond)), ending);
}

TEST(LargeWav, isRepairedAcrossFourGiB) {
  const support::TemporaryFolder folder;
  const auto path = folder / "large.wav";
  {
    WavWriter writer(BlockFile(createSparse(path)), {48000, 2});
    ASSERT_EQ(writer.start(), 0);
    ASSERT_EQ(writer.append(std::vector<std::byte>(4800)), std::nullopt);
  }
  for (const std::uint64_t frames : {fourGiB / 4 - 100, fourGiB / 4, fourGiB}) {
    std::filesystem::resize_file(path, 80 + 4 * frames);
    ASSERT_EQ(repair(path, LockRule::needed).outcome, Repair::Outcome::repaired);
    EXPECT_EQ(endOfWav(path, 10).first, frames);
    EXPECT_EQ(firstFourBytes(path), frames < fourGiB / 4 ? "RIFF" : "RF64");
  }
}

TEST(LargeWav, turnsToRf64WhenItsSizeIsNoLongerBelowTheMarker) {
  const WavFormat format = {48000, 2};
  const auto kindOf = [&](std::uint64_t riffSize) {
    ByteWriter header;
    writeWavHeader(header, format, riffSize + 8 - wavHeaderSize(format));
    return std::string(reinterpret_cast<const char*>(header.bytes().data()), 4);
  };
  EXPECT_EQ(kindOf(0xFFFFFFFE), "RIFF");
  EXPECT_EQ(kindOf(0xFFFFFFFF), "RF64");
}

/// The packets of `audio`.
std::vector<std::vector<std::byte>> encode(AacEncoder& encoder, const Audio& audio) {
  std::vector<std::vector<std::byte>> packets;
  const auto take = [&] {
    int code = 0;
    while (const auto packet = encoder.nextPacket(&code)) {
      packets.emplace_back(packet->begin(), packet->end());
    }
  };
  for (std::size_t first = 0; first < audio.frames(); first += 1024) {
    const std::size_t count = std::min<std::size_t>(1024, audio.frames() - first);
    float** planes = encoder.input();
    for (std::size_t i = 0; i < count * audio.channels; ++i) {
      planes[i % audio.channels][i / audio.channels] = audio.samples[first * audio.channels + i];
    }
    encoder.send(count);
    take();
  }
  encoder.sendEnd();
  take();
  return packets;
}

class LargeM4a : public testing::Test {
 protected:
  LargeM4a() {
    std::string problem;
    encoder_ = AacEncoder::open(settings_, &problem);
    track_ = trackOf(*encoder_, settings_);
  }

  M4aWriter makeWriter() { return {BlockFile(createSparse(path_)), track_, {}}; }

  /// Writes more than 4 GiB, and noise at the end of it.
  void writeMuch(M4aWriter& writer) {
    ASSERT_EQ(writer.start(), 0);
    std::vector<std::byte> filler = AacEncoder::silentPacket(settings_);
    filler.resize(fillerSize);  // a decoder ignores what follows a packet's end
    for (std::size_t i = 0; i < fillers; ++i) {
      ASSERT_EQ(writer.add(filler), std::nullopt);
    }
    // After so much silence there is no padding in front of the ending's packets: their first one
    // belongs to the time before it.
    for (const auto& packet : encode(*encoder_, ending_)) {
      ASSERT_EQ(writer.add(packet), std::nullopt);
    }
    ASSERT_GT(std::filesystem::file_size(path_), fourGiB);
  }

  void expectEnding() const {
    const auto decoded = decode(path_, static_cast<double>(fillers) * 1024 / 48000);
    ASSERT_GT(decoded.size(), 20'000U);
    EXPECT_EQ(lag(ending_, decoded), 0);
    EXPECT_LT(errorRatio(ending_, decoded), 0.1);
  }

  static constexpr std::size_t fillerSize = 60'000;
  static constexpr std::size_t fillers = fourGiB / fillerSize + 100;
  const Audio ending_ = noise(93 * 1024);
  support::TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "large.m4a";
  AacEncoder::Settings settings_ = {48000, 2, 256'000};
  std::unique_ptr<AacEncoder> encoder_;
  mp4::Track track_;
};

TEST_F(LargeM4a, playsAndSeeksBeyondFourGiBFinishedOrNot) {
  M4aWriter writer = makeWriter();
  writeMuch(writer);
  expectEnding();

  const std::uint64_t frames = (fillers + 93) * 1024;
  const M4aWriter::Ending finished = writer.finish(frames);
  EXPECT_EQ(finished.code, 0);
  EXPECT_EQ(finished.frames, frames);
  EXPECT_EQ(probe(path_).duration, static_cast<std::int64_t>(frames));
  expectEnding();
}

TEST_F(LargeM4a, isRepairedBeyondFourGiB) {
  {
    M4aWriter writer = makeWriter();
    writeMuch(writer);
  }
  const auto expectRepaired = [&] {
    EXPECT_EQ(repair(path_, LockRule::needed).outcome, Repair::Outcome::repaired);
    const std::int64_t packets =
        std::lround(repair(path_, LockRule::needed).seconds * 48000 / 1024);
    EXPECT_EQ(probe(path_).duration, packets * 1024);
    EXPECT_GE(packets, fillers + 93 - 23) << "all but the fragment that was being collected";
    expectEnding();
  };
  expectRepaired();
  std::filesystem::resize_file(path_, std::filesystem::file_size(path_) - 100);
  expectRepaired();
  EXPECT_EQ(repair(path_, LockRule::needed).outcome, Repair::Outcome::whole);
}

TEST_F(LargeM4a, lastsLongerThan32BitsCount) {
  track_.framesPerPacket = 1U << 20U;  // so that a day needs few packets
  M4aWriter writer = makeWriter();
  ASSERT_EQ(writer.start(), 0);
  const std::vector<std::byte> silence = AacEncoder::silentPacket(settings_);
  const std::uint64_t frames = fourGiB + 5000;
  for (std::uint64_t decoded = 0; decoded < frames + 1024; decoded += track_.framesPerPacket) {
    ASSERT_EQ(writer.add(silence), std::nullopt);
  }
  EXPECT_EQ(writer.finish(frames).frames, frames);
  EXPECT_EQ(probe(path_).duration, static_cast<std::int64_t>(frames));
  const DemuxedSegment segment = demuxWithGStreamer(path_);
  EXPECT_EQ(segment.stopNanoseconds - segment.startNanoseconds, frames * 1'000'000 / 48);
}

}  // namespace
}  // namespace audrel::linuxos::test
