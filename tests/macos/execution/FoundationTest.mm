#include "platform/macos/Foundation.h"

#include "platform/macos/CaptureAccess.h"
#include "platform/macos/Log.h"
#include "platform/macos/Text.h"
#include "platform/macos/Workspace.h"
#include "tests/macos/execution/MacTest.h"

namespace audrel::macos {
namespace {

class FoundationTest : public MacTest {};

TEST_F(FoundationTest, textsKeepEveryCharacter) {
  @autoreleasepool {
    EXPECT_EQ(utf8(nsString("")), "");
    EXPECT_EQ(utf8(nsString("Grüße, 世界 \U0001F3A7")), "Grüße, 世界 \U0001F3A7");
    EXPECT_EQ(utf8(nil), "");
    EXPECT_EQ(utf8(nsString(std::string_view("cut off", 3))), "cut");
  }
}

TEST_F(FoundationTest, bytesThatAreNoUtf8AreReadAsLatin1) {
  @autoreleasepool {
    EXPECT_EQ(utf8(nsString("caf\xE9")), "café");
  }
}

TEST_F(FoundationTest, pathsKeepTheirBytes) {
  @autoreleasepool {
    EXPECT_EQ(filePath(fileURL("/Users/test/a b/ü.wav")), "/Users/test/a b/ü.wav");
  }
}

TEST_F(FoundationTest, theDownloadsFolderIsTheFirstOfTheUsers) {
  FileManager files;
  mac().downloads.push_back("/Volumes/Other/Downloads");
  EXPECT_EQ(files.downloadsDirectory(), "/Users/test/Downloads");
  EXPECT_EQ(files.homeDirectoryForCurrentUser(), "/Users/test");
  mac().downloads.clear();
  EXPECT_EQ(files.downloadsDirectory(), std::nullopt);
}

TEST_F(FoundationTest, aNameIsTakenByAFileThatExists) {
  mac().existing.insert("/Users/test/ü.wav");
  FileManager files;
  EXPECT_TRUE(files.nameIsTaken("/Users/test/ü.wav"));
  EXPECT_FALSE(files.nameIsTaken("/Users/test/ü"));
}

TEST_F(FoundationTest, aTextThatIsNoURLIsNone) {
  URLParser parser;
  EXPECT_EQ(parser.urlWithString("x-apple.systempreferences:a?b"),
            NS::URL{"x-apple.systempreferences:a?b"});
  EXPECT_EQ(parser.urlWithString("scheme://["), std::nullopt);
}

TEST_F(FoundationTest, aTimerFiresUntilItIsInvalidatedAndThenFreesItsBlock) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> weak = held;
  auto timer = RunLoop().scheduleRepeatingTimer(1.0, [held = std::move(held)] { ++*held; });
  EXPECT_EQ(journal(), (Lines{"NSTimer every 1.000000 s -> timer 1"}));
  fireTimers();
  fireTimers();
  EXPECT_EQ(*weak.lock(), 2);
  timer->invalidate();
  EXPECT_EQ(scheduledTimers(), 0U);
  EXPECT_TRUE(weak.expired());
}

TEST_F(FoundationTest, anExceptionOfATimersBlockIsLoggedAndGoesNoFurther) {
  const auto timer =
      RunLoop().scheduleRepeatingTimer(1.0, [] { throw std::runtime_error("a reason"); });
  fireTimers();
  EXPECT_TRUE(contains(journal(), "log io.github.audrel.Audrel [platform] error: A timer's block "
                                  "failed: a reason"));
  timer->invalidate();
}

TEST_F(FoundationTest, anExceptionThatAFrameworkRaisesInATimersBlockIsLoggedWithItsReason) {
  std::optional<std::string> reason = "Invalid parameter not satisfying: title";
  const auto timer = RunLoop().scheduleRepeatingTimer(
      1.0, [&] { fakemac::raise("NSInternalInconsistencyException", reason); });
  fireTimers();
  reason.reset();
  fireTimers();
  const Lines lines = journal();
  const std::string beginning =
      "log io.github.audrel.Audrel [platform] error: A timer's block failed: ";
  EXPECT_TRUE(contains(lines, beginning + "Invalid parameter not satisfying: title"));
  EXPECT_TRUE(contains(lines, beginning + "exception without a reason"));
  timer->invalidate();
}

TEST_F(FoundationTest, linesOfTheLogArePublicAndHaveTheirLevel) {
  Log log;
  const auto logger = log.makeLogger("io.example", "engine");
  logger->info("100 %s %{private}s");
  logger->error(std::string_view("cut off", 3));
  EXPECT_EQ(journal(), (Lines{"os_log_create(\"io.example\", \"engine\")",
                              "log io.example [engine] info: 100 %s %{private}s",
                              "log io.example [engine] error: cut"}));
}

TEST_F(FoundationTest, anApplicationIsFoundByItsPidAndMayHaveNoName) {
  mac().applications = {{5, "Radio"}, {6, ""}};
  RunningApplications applications;
  EXPECT_EQ(applications.runningApplication(5), NS::RunningApplication{"Radio"});
  EXPECT_EQ(applications.runningApplication(6), NS::RunningApplication{std::nullopt});
  EXPECT_EQ(applications.runningApplication(7), std::nullopt);
}

TEST_F(FoundationTest, filesAreShownAndURLsOpened) {
  Workspace workspace;
  workspace.activateFileViewerSelecting({"/Users/test/a b.wav", "/Users/test/c.m4a"});
  EXPECT_TRUE(workspace.openURL({"x-apple:settings"}));
  EXPECT_FALSE(workspace.openURL({"scheme://["}));
  EXPECT_EQ(journal(), (Lines{"NSWorkspace.activateFileViewerSelectingURLs: /Users/test/a b.wav "
                              "/Users/test/c.m4a",
                              "NSWorkspace.openURL: x-apple:settings"}));
}

}  // namespace
}  // namespace audrel::macos
