// A menu-bar program runs for weeks: what it does again and again leaves nothing behind.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <system_error>

#include "tests/fakes/ScopedVariable.h"
#include "tests/platform/linux/pipewire/harness/SampleStore.h"
#include "tests/platform/linux/program/harness/Session.h"

namespace audrel::programtest {
namespace {

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define AUDREL_MEMORY_IS_SANITIZERS
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define AUDREL_MEMORY_IS_SANITIZERS
#endif
#ifdef AUDREL_MEMORY_IS_SANITIZERS
// Which keeps what was freed, and tells of leaks itself.
constexpr std::size_t spareOfMenus = std::numeric_limits<std::size_t>::max();
constexpr std::size_t spareOfRecordings = spareOfMenus;
#else
constexpr std::size_t spareOfMenus = 256UL * 1024;  // bytes
// PipeWire 0.3.65 keeps the converter's buffers of a stream that is destroyed: of each, a kilobyte
// or two was ever written to.
constexpr std::size_t spareOfRecordings = 512UL * 1024;  // bytes
#endif

constexpr int menuRebuilds = 2'000;
constexpr int recordingsOfAKind = 100;

struct Footprint {
  std::size_t privateDirtyBytes = 0;
  std::map<std::string, std::size_t> counts;  ///< of everything else that can be left behind
};

class Soak : public Session {
 protected:
  /// The allocator starts another arena whenever threads happen to meet, which no leak is.
  fakes::ScopedVariable oneArena{"MALLOC_ARENA_MAX", "1"};

  void SetUp() override {
    Session::SetUp();
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
    Footprint result = {.privateDirtyBytes = privateDirtyBytes(process / "smaps_rollup"),
                        .counts = busCounts()};
    result.counts["descriptors"] = entries(process / "fd");
    result.counts["threads"] = entries(process / "task");
    return result;
  }

  /// That there is not more of anything than there was, but for so many bytes. What ends by itself
  /// may take a moment.
  void expectNoGrowth(const Footprint& before, std::size_t bytesToSpare) {
    Footprint now;
    EXPECT_TRUE(panel->runUntil([&] {
      now = footprint();
      return std::ranges::all_of(now.counts, [&](const auto& entry) {
        return entry.second <= before.counts.at(entry.first);
      });
    })) << "from "
        << testing::PrintToString(before.counts) << "\n  to " << testing::PrintToString(now.counts);
    RecordProperty("privateDirtyBytesBefore", std::to_string(before.privateDirtyBytes));
    RecordProperty("privateDirtyBytesAfter", std::to_string(now.privateDirtyBytes));
    EXPECT_TRUE(now.privateDirtyBytes <= before.privateDirtyBytes ||
                now.privateDirtyBytes - before.privateDirtyBytes <= bytesToSpare)
        << before.privateDirtyBytes << " bytes became " << now.privateDirtyBytes;
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

  static std::size_t privateDirtyBytes(const std::filesystem::path& rollup) {
    std::ifstream stream(rollup);
    for (std::string line; std::getline(stream, line);) {
      std::istringstream words(line);
      std::string name;
      std::size_t kilobytes = 0;
      if (words >> name >> kilobytes && name == "Private_Dirty:") {
        return kilobytes * 1024;
      }
    }
    ADD_FAILURE() << rollup << " does not tell";
    return 0;
  }

  static std::size_t entries(const std::filesystem::path& folder) {
    std::error_code error;
    const std::filesystem::directory_iterator first(folder, error);
    return static_cast<std::size_t>(std::distance(begin(first), end(first)));
  }
};

TEST_F(Soak, rebuildsOfTheMenuLeaveNothingBehind) {
  rebuildMenu(menuRebuilds / 10);
  const Footprint before = footprint();
  rebuildMenu(menuRebuilds);
  expectNoGrowth(before, spareOfMenus);
}

TEST_F(Soak, recordingsLeaveNothingButTheirFilesBehind) {
  openMenu();
  choose("Web Radio");
  ASSERT_TRUE(waitForCheckmark("Web Radio", true));
  const int warmUp = recordingsOfAKind / 5;
  recordInBothFormats(warmUp);
  const Footprint before = footprint();
  recordInBothFormats(recordingsOfAKind);
  expectNoGrowth(before, spareOfRecordings);

  const int all = 2 * (warmUp + recordingsOfAKind);
  EXPECT_EQ(recordings().size(), static_cast<std::size_t>(all));
  EXPECT_FALSE(server.session().hasNode("audrel-tap"));
  EXPECT_TRUE(pwtest::waitFor([this] { return server.session().linksFrom("music").size() == 2; }));
}

}  // namespace
}  // namespace audrel::programtest
