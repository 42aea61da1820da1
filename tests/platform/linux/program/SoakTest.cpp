// A menu-bar program runs for weeks: what it does again and again leaves nothing behind.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <system_error>

#include "tests/platform/linux/pipewire/harness/SampleStore.h"
#include "tests/platform/linux/program/harness/Session.h"

namespace audrel::programtest {
namespace {

/// For what a library happens to keep once: less than the smallest block for each recording.
constexpr std::int64_t bytesToSpare = 4'096;

constexpr int menuRebuilds = 2'000;
constexpr int recordingsOfAKind = 100;

struct Footprint {
  std::int64_t liveBytes = 0;                 ///< that were allocated and not freed
  std::map<std::string, std::size_t> counts;  ///< of everything else that can be left behind
};

class Soak : public Session {
 protected:
  void SetUp() override {
    Session::SetUp();
#ifdef AUDREL_COUNTING_ALLOCATOR
    std::ofstream(liveBytesFile) << std::string(sizeof(std::int64_t), '\0');
    environment["LD_PRELOAD"] = AUDREL_COUNTING_ALLOCATOR;
    environment["AUDREL_LIVE_BYTES"] = liveBytesFile;
#endif
    startProgram();
  }

  void rebuildMenu(int times) {
    for (int i = 0; i < times; ++i) {
      ASSERT_EQ(panel->callMenu("AboutToShow", "(0,)").value, "(true,)");
      if (i % 100 == 0) {
        ASSERT_FALSE(panel->layout().children.empty());
      }
    }
  }

  void record(const std::string& format, int times) {
    choose(format);
    ASSERT_TRUE(waitForCheckmark(format, true));
    for (int i = 0; i < times; ++i) {
      startRecording();
      stopRecording();
    }
  }

  void recordInBothFormats(int times) {
    record("WAV (48 kHz / 16-bit)", times);
    record("M4A (AAC 256 kbps)", times);
  }

  Footprint footprint() {
    const std::filesystem::path process = "/proc/" + std::to_string(program->pid());
    Footprint result = {.liveBytes = liveBytes(), .counts = busCounts()};
    result.counts["descriptors"] = entries(process / "fd");
    result.counts["threads"] = entries(process / "task");
    result.counts["shared mappings"] = sharedMappings(process / "maps");
    return result;
  }

  /// That there is not more of anything than there was. What ends by itself may take a moment.
  void expectNoGrowth(const Footprint& before) {
    Footprint now;
    EXPECT_TRUE(panel->runUntil([&] {
      now = footprint();
      return now.liveBytes <= before.liveBytes + bytesToSpare &&
             std::ranges::all_of(now.counts, [&](const auto& entry) {
               return entry.second <= before.counts.at(entry.first);
             });
    })) << before.liveBytes
        << " bytes became " << now.liveBytes << "\n  " << testing::PrintToString(before.counts)
        << "\n  became " << testing::PrintToString(now.counts);
    RecordProperty("liveBytesBefore", std::to_string(before.liveBytes));
    RecordProperty("liveBytesAfter", std::to_string(now.liveBytes));
  }

 private:
  /// What the bus keeps for everyone on it.
  std::map<std::string, std::size_t> busCounts() {
    const std::string all = panel
                                ->callTo("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus.Debug.Stats", "GetStats", "")
                                .value;
    std::map<std::string, std::size_t> counts;
    for (const std::string name : {"ActiveConnections", "BusNames", "MatchRules"}) {
      const std::string intro = "'" + name + "': <uint32 ";
      const auto begin = all.find(intro);
      EXPECT_NE(begin, std::string::npos) << all;
      counts[name] = begin == std::string::npos ? 0 : std::stoul(all.substr(begin + intro.size()));
    }
    return counts;
  }

  /// 0 where nobody counts.
  std::int64_t liveBytes() const {
    std::int64_t bytes = 0;
#ifdef AUDREL_COUNTING_ALLOCATOR
    std::array<char, sizeof(bytes)> raw = {};
    EXPECT_TRUE(std::ifstream(liveBytesFile, std::ios::binary).read(raw.data(), raw.size()));
    bytes = std::bit_cast<std::int64_t>(raw);
    EXPECT_GT(bytes, 0) << AUDREL_COUNTING_ALLOCATOR << " does not count";
#endif
    return bytes;
  }

  static std::size_t sharedMappings(const std::filesystem::path& maps) {
    std::ifstream stream(maps);
    std::size_t count = 0;
    for (std::string line; std::getline(stream, line);) {
      count += line.find("/memfd:") == std::string::npos ? 0U : 1U;
    }
    return count;
  }

  static std::size_t entries(const std::filesystem::path& folder) {
    std::error_code error;
    const std::filesystem::directory_iterator first(folder, error);
    return static_cast<std::size_t>(std::distance(begin(first), end(first)));
  }

  const std::filesystem::path liveBytesFile = home.path() / "live-bytes";
};

TEST_F(Soak, rebuildsOfTheMenuLeaveNothingBehind) {
  rebuildMenu(menuRebuilds / 10);
  const Footprint before = footprint();
  rebuildMenu(menuRebuilds);
  expectNoGrowth(before);
}

TEST_F(Soak, recordingsLeaveNothingButTheirFilesBehind) {
  openMenu();
  choose("Web Radio");
  ASSERT_TRUE(waitForCheckmark("Web Radio", true));
  const int warmUp = recordingsOfAKind / 5;
  recordInBothFormats(warmUp);
  const Footprint before = footprint();
  recordInBothFormats(recordingsOfAKind);
  expectNoGrowth(before);

  const int all = 2 * (warmUp + recordingsOfAKind);
  EXPECT_EQ(recordings().size(), static_cast<std::size_t>(all));
  EXPECT_FALSE(server.session().hasNode("audrel-tap"));
  EXPECT_TRUE(pwtest::waitFor([this] { return server.session().linksFrom("music").size() == 2; }));
}

}  // namespace
}  // namespace audrel::programtest
