// Disks that fail: for a moment, at any one write, for a while, or for good; and the end of the
// program at any one write.

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <string>
#include <vector>

#include "platform/linux/files/M4aFrameWriter.h"
#include "platform/linux/files/SavingNotices.h"
#include "platform/linux/files/WavFrameWriter.h"
#include "tests/platform/linux/files/FakeDisk.h"
#include "tests/platform/linux/files/Recordings.h"
#include "tests/platform/linux/files/Tools.h"

namespace audrel::linuxos::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

std::string textOf(const Notice& notice) {
  return notice.summary + ": " + notice.body;
}

/// A recording on a disk with a plan, and all that it reported.
struct Recording {
  Recording(const AV::Settings& settings, const Audio& audio, FakeDisk::Plan plan,
            const std::function<void(FakeDisk&, std::size_t)>& beforeEach = {}) {
    disk->plan = std::move(plan);
    AudioFramework framework(log, disk->creator());
    framework.setNoticeTaker([this](const Notice& notice) { told.push_back(textOf(notice)); });
    NS::Error error;
    auto file = framework.openForWriting("/music/recording", settings,
                                         AV::AudioCommonFormat::pcmFormatFloat32, true, &error);
    if (!file) {
      openError = error;
      return;
    }
    writeErrors = deliver(framework, *file, audio, [&](std::size_t frames) {
      disk->delivered = frames;
      if (beforeEach) {
        beforeEach(*disk, frames);
      }
    });
    file.reset();
    loss = framework.loss();
  }

  std::shared_ptr<FakeDisk> disk = std::make_shared<FakeDisk>();
  support::KeptLog log;
  std::optional<NS::Error> openError;
  std::vector<NS::Error> writeErrors;
  std::vector<std::string> told;  ///< the user
  capture::FileLoss loss;
};

enum class Kind { m4a, wav };

/// How a file ends: with a whole block, or perhaps in the middle of one.
enum class Ending { whole, torn };

class WriteFailures : public FileTest, public testing::WithParamInterface<Kind> {
 protected:
  Recording record(FakeDisk::Plan plan,
                   const std::function<void(FakeDisk&, std::size_t)>& beforeEach = {}) const {
    const auto settings = GetParam() == Kind::m4a ? m4aSettings(audio_) : wavSettings(audio_);
    return {settings, audio_, std::move(plan), beforeEach};
  }

  /// How many of the recorded frames other programs play of `check_`, from the first one on. They
  /// have to be the right ones.
  std::size_t playableFrames(Ending ending) const {
    if (GetParam() == Kind::wav) {
      const auto samples = readWav(check_).samples;
      auto expected = asSixteenBit(audio_.samples);
      expected.resize(std::min(expected.size(), samples.size()));
      EXPECT_EQ(samples, expected);
      return samples.size() / audio_.channels;
    }
    const auto decoded = ending == Ending::torn ? decodeTorn(check_) : decode(check_);
    EXPECT_LT(errorRatio(audio_, decoded), 0.1);
    if (decoded.size() > 20'000) {
      EXPECT_EQ(lag(audio_, decoded), 0);
    }
    return std::min(decoded.size() / audio_.channels, audio_.frames());
  }

  std::size_t playableFrames(const FakeDisk& disk) const {
    disk.save(check_);
    return playableFrames(Ending::whole);
  }

  const Audio audio_ = noise(120'000);
  const std::filesystem::path check_ = folder_ / "check";
};

INSTANTIATE_TEST_SUITE_P(Files, WriteFailures, testing::Values(Kind::m4a, Kind::wav),
                         [](const auto& parameter) {
                           return parameter.param == Kind::m4a ? "m4a" : "wav";
                         });

TEST_P(WriteFailures, interruptedAndShortWritesChangeNothing) {
  const Recording undisturbed = record({});
  EXPECT_THAT(undisturbed.told, ElementsAre("Recording saved: recording, 00:02"));
  const Recording disturbed = record(plans::interruptedAndShort(3000));
  EXPECT_TRUE(disturbed.writeErrors.empty());
  EXPECT_TRUE(disturbed.log.lines().empty());
  EXPECT_EQ(disturbed.disk->contents, undisturbed.disk->contents);
}

TEST_P(WriteFailures, anyOneFailedWriteIsReportedAndMadeUpFor) {
  const Recording undisturbed = record({});
  const std::size_t writes = undisturbed.disk->writes;
  ASSERT_GE(writes, 8U);
  for (std::size_t number = 1; number <= writes; ++number) {
    for (const bool torn : {false, true}) {
      const Recording recording =
          record(torn ? plans::failPartWay(number, ENOSPC) : plans::failOnce(number, ENOSPC));
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
      EXPECT_EQ(recording.disk->contents, undisturbed.disk->contents);
      EXPECT_TRUE(recording.log.lines().empty());
    }
  }
}

TEST_P(WriteFailures, aDiskThatIsFullForAWhileLosesNothing) {
  const Recording undisturbed = record({});
  const Recording recording = record({}, [](FakeDisk& disk, std::size_t frames) {
    const bool full = frames > 30'000 && frames < 80'000;
    disk.plan = full ? plans::failFrom(1, ENOSPC) : FakeDisk::Plan();
  });
  EXPECT_EQ(recording.disk->contents, undisturbed.disk->contents);
  EXPECT_TRUE(recording.log.lines().empty());
  ASSERT_EQ(recording.writeErrors.size(), 2U) << "one for each block that failed";
  EXPECT_EQ(recording.writeErrors.front().code, ENOSPC);
  EXPECT_NE(recording.writeErrors.front().localizedDescription.find("kept in memory"),
            std::string::npos)
      << recording.writeErrors.front().localizedDescription;
  const std::string memory = GetParam() == Kind::wav ? "6 minutes" : "35 minutes";
  EXPECT_THAT(
      recording.told,
      ElementsAre("Recording cannot be saved: There is no space left on the disk that holds "
                  "\"/music\". Free some space. Nothing is lost yet: memory holds about " +
                      memory + ".",
                  "Recording is saved again: Writing \"recording\" works again.",
                  "Recording saved: recording, 00:02"));
}

TEST_P(WriteFailures, areToldTheUserOnceForEachCause) {
  const Recording recording = record({}, [](FakeDisk& disk, std::size_t frames) {
    disk.plan = plans::failFrom(1, frames < 60'000 ? ENOSPC : EIO);
  });
  EXPECT_THAT(recording.told,
              ElementsAre(HasSubstr("no space left"), HasSubstr("reports a fault"),
                          AllOf(HasSubstr("incomplete"), HasSubstr("reports a fault"))));
}

TEST_P(WriteFailures, fromAnyWriteOnLeaveWhatWasWrittenBefore) {
  const std::size_t writes = record({}).disk->writes;
  for (std::size_t number = 2; number <= writes; ++number) {
    SCOPED_TRACE(number);
    const Recording recording = record(plans::failFrom(number, EFBIG));
    ASSERT_EQ(recording.log.lines().size(), 1U);
    const std::string line = recording.log.lines().front();
    EXPECT_NE(line.find("largest size"), std::string::npos) << line;

    const std::size_t playable = playableFrames(*recording.disk);
    const std::size_t blocks = GetParam() == Kind::wav ? (number - 2) / 2 : number - 2;
    const std::size_t framesPerBlock = GetParam() == Kind::wav ? 24'000 : 23 * 1024;
    EXPECT_GE(playable + 1024, std::min(blocks * framesPerBlock, audio_.frames()));
    EXPECT_EQ(playable < audio_.frames(), line.find("missing") != std::string::npos) << line;
    EXPECT_EQ(playable < audio_.frames(), recording.loss.missing > 0);
    if (GetParam() == Kind::wav) {
      EXPECT_EQ(playable + recording.loss.missing, audio_.frames());
    }
    EXPECT_EQ(recording.loss.silenced, 0U);
    EXPECT_THAT(recording.loss.why, HasSubstr("has reached the largest size"));
    EXPECT_EQ(
        playable < audio_.frames(),
        !recording.told.empty() && recording.told.back().starts_with("Recording is incomplete"));
  }
}

TEST_P(WriteFailures, anyOneFailedFlushIsReportedAndMadeUpFor) {
  const Recording undisturbed = record({});
  ASSERT_GE(undisturbed.disk->flushes, 6U);
  for (std::size_t number = 1; number <= undisturbed.disk->flushes; ++number) {
    for (const int code : {EIO, ENOSPC, EINTR}) {
      SCOPED_TRACE(testing::Message() << "flush " << number << ", " << code);
      const Recording recording = record({}, [&](FakeDisk& disk, std::size_t) {
        disk.flushPlan = [=](std::size_t n) { return n == number ? code : 0; };
      });
      EXPECT_LE(recording.writeErrors.size(), code == EINTR ? 0U : 1U);
      for (const NS::Error& error : recording.writeErrors) {
        EXPECT_EQ(error.code, code);
      }
      EXPECT_TRUE(recording.log.lines().empty());
      EXPECT_EQ(recording.disk->contents, undisturbed.disk->contents);
      EXPECT_EQ(recording.disk->safe, undisturbed.disk->contents);
      EXPECT_EQ(recording.told.back(), "Recording saved: recording, 00:02");
    }
  }
}

TEST_P(WriteFailures, flushesThatFailForAWhileLoseNothing) {
  const Recording undisturbed = record({});
  const Recording recording = record({}, [](FakeDisk& disk, std::size_t frames) {
    const int code = frames > 30'000 && frames < 110'000 ? EIO : 0;
    disk.flushPlan = [=](std::size_t) { return code; };
  });
  EXPECT_EQ(recording.disk->safe, undisturbed.disk->contents);
  EXPECT_TRUE(recording.log.lines().empty());
  EXPECT_THAT(recording.told,
              ElementsAre(AllOf(HasSubstr("cannot be saved"), HasSubstr("reports a fault"),
                                HasSubstr("Nothing is lost yet")),
                          HasSubstr("is saved again"), HasSubstr("Recording saved")));
}

TEST_P(WriteFailures, flushesThatFailForGoodAreToldLikeWrites) {
  const std::size_t flushes = record({}).disk->flushes;
  for (std::size_t number = 1; number <= flushes; ++number) {
    SCOPED_TRACE(number);
    const Recording recording = record({}, [=](FakeDisk& disk, std::size_t) {
      disk.flushPlan = [=](std::size_t n) { return n >= number ? EIO : 0; };
    });
    ASSERT_EQ(recording.log.lines().size(), 1U);
    EXPECT_THAT(recording.log.lines().front(), HasSubstr("reports a fault"));
    EXPECT_THAT(recording.loss.why, HasSubstr("reports a fault"));
    EXPECT_THAT(recording.told.back(), HasSubstr("reports a fault"));
    EXPECT_EQ(recording.loss.silenced, 0U);
    if (recording.disk->safe.empty()) {
      EXPECT_EQ(recording.loss.missing, audio_.frames());
      continue;
    }
    recording.disk->contents = recording.disk->safe;
    EXPECT_GE(playableFrames(*recording.disk) + recording.loss.missing, audio_.frames());
  }
}

TEST_P(WriteFailures, aFileSystemWithoutFlushesIsLoggedAndFailsNothing) {
  const Recording undisturbed = record({});
  for (const int code : {EINVAL, ENOSYS, EOPNOTSUPP}) {
    const Recording recording = record({}, [=](FakeDisk& disk, std::size_t) {
      disk.flushPlan = [=](std::size_t) { return code; };
    });
    EXPECT_TRUE(recording.writeErrors.empty());
    EXPECT_EQ(recording.disk->contents, undisturbed.disk->contents);
    EXPECT_EQ(recording.told, undisturbed.told);
    EXPECT_TRUE(recording.loss.isNothing());
    EXPECT_THAT(
        recording.log.lines(),
        ElementsAre(AllOf(HasSubstr("The file system of \"/music\" does not flush files ("),
                          HasSubstr("a power failure may cost more of \"recording\" than its last "
                                    "seconds."))));
  }
}

TEST_P(WriteFailures, aFailedCloseIsLogged) {
  const Recording recording = record({}, [](FakeDisk& disk, std::size_t) { disk.closeCode = EIO; });
  ASSERT_EQ(recording.log.lines().size(), 1U);
  EXPECT_NE(recording.log.lines().front().find("reports a fault"), std::string::npos);
  EXPECT_EQ(recording.log.category, "file");
  EXPECT_EQ(recording.disk->closes, 1);
  EXPECT_THAT(recording.told,
              ElementsAre(AllOf(HasSubstr("Recording saved: recording, 00:02. The disk "),
                                HasSubstr("reports a fault"))));
}

TEST_P(WriteFailures, whatMemoryCannotHoldIsSilenceOfTheSameLength) {
  Audio audio = noise(480'000);
  constexpr std::size_t marked = 450'000;
  audio.samples[2 * marked] = 1;
  const auto disk = std::make_shared<FakeDisk>();
  std::vector<std::string> told;
  SavingNotices notices("/music/recording", 60,
                        [&](const Notice& notice) { told.push_back(textOf(notice)); });
  BlockFile file(
      disk->open(), 40'000,  // M4A: two blocks, WAV: none
      {.blockEnded = [&](const auto& failure) { notices.blockEnded(failure); }, .cannotFlush = {}});
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
  const FrameWriter::Ending ending = writer->finish();
  EXPECT_EQ(ending.problem, std::nullopt);
  EXPECT_EQ(ending.silenced, ending.missing);
  EXPECT_TRUE(lossWasTold);

  disk->save(check_);
  EXPECT_EQ(probe(check_).duration, 480'000);
  const auto decoded = decode(check_);
  ASSERT_GE(decoded.size(), 960'000U);
  const auto part = [&](std::size_t from, std::size_t to) {
    return std::span(decoded).subspan(2 * from, 2 * (to - from));
  };
  const auto gap = part(150'000, 370'000);
  EXPECT_EQ(std::ranges::count(gap, 0.0F), gap.size());
  const auto block = GetParam() == Kind::wav ? 24'000 : 23 * 1024;
  EXPECT_NEAR(static_cast<double>(ending.missing),
              static_cast<double>(std::ranges::count(part(60'000, 480'000), 0.0F)) / 2, block);
  notices.fileEnded(10, static_cast<double>(ending.missing) / 48000, "");
  if (GetParam() == Kind::m4a) {
    EXPECT_THAT(told.front(), HasSubstr("cannot be saved"));
    told.erase(told.begin());
  }
  EXPECT_THAT(told,
              ElementsAre("Audio is being lost: There is no space left on the disk that holds "
                          "\"/music\". Free some space. Until then the recording is silent.",
                          HasSubstr("is saved again"),
                          AllOf(HasSubstr("is incomplete: "),
                                HasSubstr(" s of \"recording\" are missing. There is no space"))));
  const auto after = audio.from(430'000);
  EXPECT_EQ(lag({48000, 2, {after.begin(), after.end()}}, part(430'000, 480'000)), 0);
  EXPECT_LT(errorRatio({48000, 2, {after.begin(), after.end()}}, part(430'000, 480'000)), 0.1);
  EXPECT_LT(errorRatio(audio, part(0, 45'000)), 0.1);
}

TEST_P(WriteFailures, aFileThatCannotBeStartedIsRemoved) {
  const Recording recording = record(plans::failFrom(1, ENOSPC));
  EXPECT_TRUE(recording.told.empty());
  ASSERT_TRUE(recording.openError);
  EXPECT_EQ(recording.openError->code, ENOSPC);
  EXPECT_NE(recording.openError->localizedDescription.find("\"/music\""), std::string::npos);
  EXPECT_TRUE(recording.disk->isRemoved);
}

/// What lengthens a file can be caught half done; what is changed in place is a few bytes of one
/// page.
bool lengthens(const FakeDisk::Call& call) {
  return call.offset > 0 && call.bytes.size() > 16;
}

TEST_P(WriteFailures, aKillBetweenAnyTwoWritesOrInOneCostsAtMostASecond) {
  const Recording recording = record({});
  const FakeDisk& disk = *recording.disk;
  const auto expectAllButASecond = [&](std::size_t calls, std::size_t part, Ending ending) {
    SCOPED_TRACE(testing::Message() << "after " << calls << " of " << disk.journal.size()
                                    << " writes and " << part << " bytes of the next");
    const std::size_t delivered =
        calls == disk.journal.size() ? audio_.frames() : disk.journal[calls].delivered;
    disk.replay(calls, part, check_);
    EXPECT_GE(playableFrames(ending) + audio_.sampleRate, delivered);
  };
  ASSERT_GE(disk.journal.size(), 7U);
  for (std::size_t calls = 1; calls <= disk.journal.size(); ++calls) {
    expectAllButASecond(calls, 0, Ending::whole);
    if (calls < disk.journal.size() && lengthens(disk.journal[calls])) {
      expectAllButASecond(calls, 4, Ending::torn);
      expectAllButASecond(calls, disk.journal[calls].bytes.size() / 2, Ending::torn);
    }
  }
}

TEST_P(WriteFailures, writesInPlaceStayWithinOnePage) {
  const Recording recording = record({});
  std::uint64_t end = 0;
  std::size_t inPlace = 0;
  for (const FakeDisk::Call& call : recording.disk->journal) {
    ASSERT_EQ(call.kind, FakeDisk::Call::Kind::write);
    if (call.offset < end) {
      EXPECT_LE(call.offset + call.bytes.size(), 512U);
      ++inPlace;
    } else {
      EXPECT_EQ(call.offset, end) << "no gaps";
    }
    end = std::max<std::uint64_t>(end, call.offset + call.bytes.size());
  }
  EXPECT_EQ(inPlace, GetParam() == Kind::m4a ? 1U : 6U);
}

/// What the user is told of a file.
class NoticesOfAFile : public testing::Test {
 protected:
  std::vector<Notice> told;
  SavingNotices notices{"/music/song.wav", 60,
                        [this](const Notice& notice) { told.push_back(notice); }};
};

TEST_F(NoticesOfAFile, haveTheFileOnceItHasEnded) {
  notices.fileEnded(5, 0, "");
  const Notice saved{.matter = "recording",
                     .summary = "Recording saved",
                     .body = "song.wav, 00:05",
                     .file = "/music/song.wav"};
  EXPECT_THAT(told, ElementsAre(saved));
}

TEST_F(NoticesOfAFile, haveItsLengthAsThePanelShowsIt) {
  for (const double length : {0.4, 307.9, 3599.9, 3600.0, 36'610.0}) {
    notices.fileEnded(length, 0, "");
  }
  std::vector<std::string> bodies;
  for (const Notice& notice : told) {
    bodies.push_back(notice.body);
  }
  EXPECT_THAT(bodies, ElementsAre("song.wav, 00:00", "song.wav, 05:07", "song.wav, 59:59",
                                  "song.wav, 1:00:00", "song.wav, 10:10:10"));
}

TEST_F(NoticesOfAFile, tellALossInsteadOfTheEnd) {
  notices.fileEnded(5, 0.5, "");
  const Notice loss{.matter = "disk",
                    .summary = "Recording is incomplete",
                    .body = "500 ms of \"song.wav\" are missing.",
                    .isLoss = true,
                    .file = "/music/song.wav"};
  EXPECT_THAT(told, ElementsAre(loss));
}

TEST_F(NoticesOfAFile, tellAProblemWithTheEnd) {
  notices.fileEnded(5, 0, "It has no index.");
  const Notice saved{.matter = "recording",
                     .summary = "Recording saved",
                     .body = "song.wav, 00:05. It has no index.",
                     .isLoss = true,
                     .file = "/music/song.wav"};
  EXPECT_THAT(told, ElementsAre(saved));
}

TEST_F(NoticesOfAFile, takeAFailureBackThatWasMadeUpForInTheEnd) {
  notices.blockEnded(BlockFile::Failure{.code = ENOSPC, .dropped = false});
  notices.fileEnded(5, 0, "");
  ASSERT_EQ(told.size(), 3U);
  EXPECT_EQ(told[1].summary, "Recording is saved again");
  EXPECT_EQ(told[1].matter, told[0].matter);
  EXPECT_EQ(told[2].summary, "Recording saved");
}

TEST_F(NoticesOfAFile, areNoneForARecordingThatNeverBegan) {
  notices.fileEnded(0, 0, "");
  EXPECT_TRUE(told.empty());
}

}  // namespace
}  // namespace audrel::linuxos::test
