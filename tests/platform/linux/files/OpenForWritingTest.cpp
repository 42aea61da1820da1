// What opening a file refuses, and how it says so.

#include <cerrno>
#include <cmath>
#include <fstream>

#include "platform/linux/files/FileSettings.h"
#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/files/Recordings.h"

namespace audrel::linuxos::test {
namespace {

class OpenForWriting : public FileTest {
 protected:
  NS::Error refusal(const std::filesystem::path& path, const AV::Settings& settings,
                    AV::AudioCommonFormat format = AV::AudioCommonFormat::pcmFormatFloat32) {
    NS::Error error;
    EXPECT_FALSE(framework_.openForWriting(path, settings, format, true, &error));
    EXPECT_EQ(error.domain, NS::POSIXErrorDomain);
    return error;
  }

  NS::Error refusalOf(const char* key, AV::SettingValue value, AV::Settings settings) {
    settings[key] = value;
    const auto path = folder_ / "refused";
    const NS::Error error = refusal(path, settings);
    EXPECT_FALSE(std::filesystem::exists(path)) << "nothing may be left behind";
    return error;
  }

  void expectSaid(const NS::Error& error, const std::string& text) {
    EXPECT_NE(error.localizedDescription.find(text), std::string::npos)
        << error.localizedDescription;
  }

  AV::Settings wav_ = wavSettings(noise(1));
  AV::Settings m4a_ = m4aSettings(noise(1));
};

TEST_F(OpenForWriting, neverOverwrites) {
  const auto path = folder_ / "a.wav";
  std::ofstream(path) << "precious";
  const NS::Error error = refusal(path, wav_);
  EXPECT_EQ(error.code, EEXIST);
  expectSaid(error, "\"a.wav\" already exists in \"" + folder_.path().string() + '"');
  EXPECT_EQ(std::filesystem::file_size(path), 8U);
}

TEST_F(OpenForWriting, doesNotWriteThroughALink) {
  const auto target = folder_ / "target";
  std::filesystem::create_symlink(target, folder_ / "a.m4a");
  EXPECT_EQ(refusal(folder_ / "a.m4a", m4a_).code, EEXIST);
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(OpenForWriting, saysWhatIsWrongWithTheFolder) {
  std::ofstream(folder_ / "file") << "x";
  const NS::Error missing = refusal(folder_ / "missing/a.wav", wav_);
  EXPECT_EQ(missing.code, ENOENT);
  expectSaid(missing, "missing\" does not exist. Create it, or choose another folder.");
  const NS::Error file = refusal(folder_ / "file/a.wav", wav_);
  EXPECT_EQ(file.code, ENOTDIR);
  expectSaid(file, "file\" is not a folder. Move it away, or choose another folder.");
}

TEST_F(OpenForWriting, saysHowToUseAnotherFolderForDownloads) {
  const auto home = folder_ / "absent";
  const fakes::ScopedVariable variable("HOME", home.c_str());
  const fakes::ScopedVariable configuration("XDG_CONFIG_HOME", "");
  const NS::Error error = refusal(home / "Downloads/a.wav", wav_);
  EXPECT_EQ(error.localizedDescription,
            "The folder \"" + home.string() +
                "/Downloads\" does not exist. Create it, or use another one for downloads "
                "(\"xdg-user-dirs-update --set DOWNLOAD /the/folder\").");
}

TEST_F(OpenForWriting, saysWhyTheSystemLetsNothingBeCreated) {
  const auto refused = [this](int code) {
    AudioFramework framework(log_, [code](const std::filesystem::path&, int* result) {
      *result = code;
      return nullptr;
    });
    NS::Error error;
    EXPECT_FALSE(framework.openForWriting("/music/a.wav", wav_,
                                          AV::AudioCommonFormat::pcmFormatFloat32, true, &error));
    EXPECT_EQ(error.code, code);
    return error;
  };
  expectSaid(refused(EACCES), "You have no permission to create files in \"/music\"");
  expectSaid(refused(EROFS), "The disk that holds \"/music\" can only be read");
  expectSaid(refused(ENOSPC), "There is no space left on the disk that holds \"/music\"");
  expectSaid(refused(EDQUOT), "Your quota on the disk");
  expectSaid(refused(ENAMETOOLONG), "The name \"a.wav\" is too long");
  expectSaid(refused(EMFILE), "too many files are open");
  expectSaid(refused(EIO), "reports a fault");
  expectSaid(refused(ELOOP), "lead in a circle");
  expectSaid(refused(EBUSY), "\"a.wav\" in \"/music\" could not be written (");
}

TEST_F(OpenForWriting, refusesSettingsThatNoFileCanHave) {
  expectSaid(refusalOf(AV::AVFormatIDKey, CA::fourCharCode("alac"), wav_), "M4A (AAC) or WAV");
  expectSaid(refusalOf(AV::AVSampleRateKey, 0.0, wav_), "sample rate");
  expectSaid(refusalOf(AV::AVSampleRateKey, 44100.5, wav_), "sample rate");
  expectSaid(refusalOf(AV::AVSampleRateKey, std::nan(""), wav_), "sample rate");
  expectSaid(refusalOf(AV::AVNumberOfChannelsKey, std::int64_t{0}, m4a_), "channel");
  expectSaid(refusalOf(AV::AVLinearPCMBitDepthKey, std::int64_t{24}, wav_), "16-bit");
  expectSaid(refusalOf(AV::AVLinearPCMIsBigEndianKey, true, wav_), "little-endian");
  expectSaid(refusalOf(AV::AVLinearPCMIsFloatKey, true, wav_), "integer");
  expectSaid(refusalOf(AV::AVLinearPCMIsNonInterleaved, true, wav_), "WAV");
  expectSaid(refusalOf(AV::AVNumberOfChannelsKey, std::int64_t{40'000}, wav_), "40000 channels");
}

TEST_F(OpenForWriting, refusesWhatAacHasNotAndNamesTheWayOut) {
  expectSaid(refusalOf(AV::AVSampleRateKey, 192000.0, m4a_),
             "M4A has no sample rate of 192000 Hz. Record WAV instead.");
  expectSaid(refusalOf(AV::AVNumberOfChannelsKey, std::int64_t{7}, m4a_),
             "M4A cannot hold 7 channels. Record WAV instead.");
}

TEST_F(OpenForWriting, refusesAProcessingFormatThatIsNotCommon) {
  EXPECT_EQ(refusal(folder_ / "a.wav", wav_, AV::AudioCommonFormat::otherFormat).code, EINVAL);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "a.wav"));
}

TEST(FileSettings, areReadFromNumbersOfEveryType) {
  NS::Error error;
  const AV::Settings settings = {{AV::AVFormatIDKey, CA::kAudioFormatMPEG4AAC},
                                 {AV::AVSampleRateKey, std::int64_t{48000}},
                                 {AV::AVNumberOfChannelsKey, std::uint32_t{2}},
                                 {AV::AVEncoderBitRateKey, 256000.0}};
  EXPECT_EQ(readSettings(settings, &error),
            (FileSettings{FileSettings::Container::m4a, 48000, 2, 256'000}));
}

}  // namespace
}  // namespace audrel::linuxos::test
