// Disks that fail: for a moment, at any one write, for a while, or for good.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "platform/linux/files/M4aFrameWriter.h"
#include "platform/linux/files/WavFrameWriter.h"
#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"
#include "tests/support/TemporaryFolder.h"

namespace audrel::linuxos::test {
namespace {

enum class Kind { m4a, wav };

AV::Settings settingsFor(Kind kind, const Audio& audio) {
  return kind == Kind::m4a ? m4aSettings(audio) : wavSettings(audio);
}

/// A recording on a disk with a plan, and all that it reported.
struct Recording {
  Recording(Kind kind, const Audio& audio, FakeDisk::Plan plan,
            const std::function<void(FakeDisk&, std::size_t)>& beforeEach = {}) {
    disk->plan = std::move(plan);
    AudioFramework framework(log, disk->creator());
    NS::Error error;
    const auto file =
        framework.openForWriting("recording", settingsFor(kind, audio),
                                 AV::AudioCommonFormat::pcmFormatFloat32, true, &error);
    if (!file) {
      openError = error;
      return;
    }
    writeErrors = deliver(framework, *file, audio, [&](std::size_t frames) {
      if (beforeEach) {
        beforeEach(*disk, frames);
      }
    });
  }

  std::shared_ptr<FakeDisk> disk = std::make_shared<FakeDisk>();
  LogBook log;
  std::optional<NS::Error> openError;
  std::vector<NS::Error> writeErrors;
};

class WriteFailures : public testing::TestWithParam<Kind> {
 protected:
  /// How many of the recorded frames other programs play; those have to be the right ones.
  std::size_t playableFrames(const FakeDisk& disk, const Audio& audio) {
    const auto path = folder_ / "check";
    disk.save(path);
    std::size_t frames = 0;
    if (GetParam() == Kind::wav) {
      auto samples = readWav(path).samples;
      auto expected = asSixteenBit(audio.samples);
      expected.resize(std::min(expected.size(), samples.size()));
      EXPECT_EQ(samples, expected);
      frames = samples.size() / 2;
    } else {
      const auto decoded = decode(path);
      EXPECT_LT(errorRatio(audio, decoded), 0.1);
      frames = std::min(decoded.size() / 2, audio.frames());
    }
    return frames;
  }

  const Audio audio_ = noise(120'000);
  support::TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Files, WriteFailures, testing::Values(Kind::m4a, Kind::wav),
                         [](const auto& parameter) {
                           return parameter.param == Kind::m4a ? "m4a" : "wav";
                         });

TEST_P(WriteFailures, interruptedAndShortWritesChangeNothing) {
  const Recording undisturbed(GetParam(), audio_, {});
  const Recording disturbed(GetParam(), audio_, plans::interruptedAndShort(3000));
  EXPECT_TRUE(disturbed.writeErrors.empty());
  EXPECT_TRUE(disturbed.log.errors.empty());
  EXPECT_EQ(disturbed.disk->contents, undisturbed.disk->contents);
}

TEST_P(WriteFailures, anyOneFailedWriteIsReportedAndMadeUpFor) {
  const Recording undisturbed(GetParam(), audio_, {});
  const std::size_t writes = undisturbed.disk->writes;
  ASSERT_GE(writes, 8U);
  for (std::size_t number = 1; number <= writes; ++number) {
    for (const bool torn : {false, true}) {
      const Recording recording(
          GetParam(), audio_,
          torn ? plans::failPartWay(number, ENOSPC) : plans::failOnce(number, ENOSPC));
      SCOPED_TRACE(testing::Message() << "write " << number << (torn ? " torn" : ""));
      if (number == 1) {
        ASSERT_TRUE(recording.openError);
        EXPECT_EQ(recording.openError->code, ENOSPC);
        continue;
      }
      ASSERT_FALSE(recording.openError);
      for (const NS::Error& error : recording.writeErrors) {
        EXPECT_EQ(error.domain, NS::POSIXErrorDomain);
        EXPECT_EQ(error.code, ENOSPC);
      }
      EXPECT_LE(recording.writeErrors.size(), 1U);
      if (recording.disk->contents == undisturbed.disk->contents) {
        EXPECT_TRUE(recording.log.errors.empty());
      } else {
        EXPECT_GE(number, writes - 1) << "only the steps of finishing are not repeated";
        EXPECT_EQ(recording.log.errors.size(), 1U);
        EXPECT_EQ(playableFrames(*recording.disk, audio_), audio_.frames());
      }
    }
  }
}

TEST_P(WriteFailures, aDiskThatIsFullForAWhileLosesNothing) {
  const Recording undisturbed(GetParam(), audio_, {});
  const Recording recording(GetParam(), audio_, {}, [](FakeDisk& disk, std::size_t frames) {
    const bool full = frames > 30'000 && frames < 80'000;
    disk.plan = full ? plans::failFrom(1, ENOSPC) : FakeDisk::Plan();
  });
  EXPECT_EQ(recording.disk->contents, undisturbed.disk->contents);
  EXPECT_TRUE(recording.log.errors.empty());
  ASSERT_EQ(recording.writeErrors.size(), 2U) << "one for each block that failed";
  EXPECT_EQ(recording.writeErrors.front().code, ENOSPC);
  EXPECT_NE(recording.writeErrors.front().localizedDescription.find("kept in memory"),
            std::string::npos)
      << recording.writeErrors.front().localizedDescription;
}

TEST_P(WriteFailures, fromAnyWriteOnLeaveWhatWasWrittenBefore) {
  const std::size_t writes = Recording(GetParam(), audio_, {}).disk->writes;
  for (std::size_t number = 2; number <= writes; ++number) {
    SCOPED_TRACE(number);
    const Recording recording(GetParam(), audio_, plans::failFrom(number, EFBIG));
    ASSERT_EQ(recording.log.errors.size(), 1U);
    const std::string& line = recording.log.errors.front();
    EXPECT_NE(line.find("largest size"), std::string::npos) << line;

    const std::size_t playable = playableFrames(*recording.disk, audio_);
    const std::size_t blocks = GetParam() == Kind::wav ? (number - 2) / 2 : number - 2;
    const std::size_t framesPerBlock = GetParam() == Kind::wav ? 24'000 : 23 * 1024;
    EXPECT_GE(playable + 1024, std::min(blocks * framesPerBlock, audio_.frames()));
    EXPECT_EQ(playable < audio_.frames(), line.find("missing") != std::string::npos) << line;
  }
}

TEST_P(WriteFailures, aFailedCloseIsLogged) {
  Recording recording(GetParam(), audio_, {},
                      [](FakeDisk& disk, std::size_t) { disk.closeCode = EIO; });
  ASSERT_EQ(recording.log.errors.size(), 1U);
  EXPECT_NE(recording.log.errors.front().find("reports a fault"), std::string::npos);
  EXPECT_EQ(recording.log.category, "file");
  EXPECT_EQ(recording.disk->closes, 1);
}

TEST_P(WriteFailures, whatMemoryCannotHoldIsSilenceOfTheSameLength) {
  Audio audio = noise(480'000);
  constexpr std::size_t marked = 450'000;
  audio.samples[2 * marked] = 1;
  const auto disk = std::make_shared<FakeDisk>();
  BlockFile file(disk->open(), 40'000);  // M4A: two blocks, WAV: none
  std::unique_ptr<FrameWriter> writer;
  if (GetParam() == Kind::wav) {
    const WavFormat format = {48000, 2};
    WavWriter wav(std::move(file), format);
    ASSERT_EQ(wav.start(), 0);
    writer = std::make_unique<WavFrameWriter>(std::move(wav), format, "recording");
  } else {
    const AacEncoder::Settings settings = {48000, 2, 256'000};
    std::string problem;
    auto encoder = AacEncoder::open(settings, &problem);
    M4aWriter m4a(std::move(file), trackOf(*encoder, settings),
                  [settings] { return AacEncoder::silentPacket(settings); });
    ASSERT_EQ(m4a.start(), 0);
    writer =
        std::make_unique<M4aFrameWriter>(std::move(m4a), std::move(encoder), 2, 48000, "recording");
  }
  const SampleConverter converter(AV::AudioCommonFormat::pcmFormatFloat32, true, 2);
  bool lossWasTold = false;
  for (std::size_t frame = 0; frame < audio.frames(); frame += 1000) {
    const bool full = frame > 60'000 && frame < 400'000;
    disk->plan = full ? plans::failFrom(1, ENOSPC) : FakeDisk::Plan();
    CA::AudioBufferList list;
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {2, 8000, &audio.samples[frame * 2]};
    const auto error = writer->append(converter, list, 1000);
    EXPECT_TRUE(full || !error) << frame;
    lossWasTold =
        lossWasTold || (error && error->localizedDescription.find("lost") != std::string::npos);
  }
  EXPECT_EQ(writer->finish(), std::nullopt);
  EXPECT_TRUE(lossWasTold);

  const auto path = folder_ / "gap";
  disk->save(path);
  EXPECT_EQ(probe(path).duration, 480'000);
  const auto decoded = decode(path);
  ASSERT_GE(decoded.size(), 960'000U);
  const auto part = [&](std::size_t from, std::size_t to) {
    return std::span(decoded).subspan(2 * from, 2 * (to - from));
  };
  const auto gap = part(150'000, 370'000);
  EXPECT_EQ(std::ranges::count(gap, 0.0F), gap.size());
  const auto after = audio.from(430'000);
  EXPECT_EQ(lag({48000, 2, {after.begin(), after.end()}}, part(430'000, 480'000)), 0);
  EXPECT_LT(errorRatio({48000, 2, {after.begin(), after.end()}}, part(430'000, 480'000)), 0.1);
  EXPECT_LT(errorRatio(audio, part(0, 45'000)), 0.1);
}

TEST_P(WriteFailures, aFileThatCannotBeStartedIsRemoved) {
  LogBook log;
  const auto disk = std::make_shared<FakeDisk>();
  disk->plan = plans::failFrom(1, ENOSPC);
  const auto path = folder_ / "recording";
  AudioFramework framework(log, disk->creator());
  NS::Error error;
  EXPECT_FALSE(framework.openForWriting(path, settingsFor(GetParam(), audio_),
                                        AV::AudioCommonFormat::pcmFormatFloat32, true, &error));
  EXPECT_EQ(error.code, ENOSPC);
  EXPECT_NE(error.localizedDescription.find(folder_.path().string()), std::string::npos);
  EXPECT_TRUE(disk->isRemoved);
}

}  // namespace
}  // namespace audrel::linuxos::test
