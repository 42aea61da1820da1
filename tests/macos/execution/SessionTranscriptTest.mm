// The counterpart on macOS of docs/transcripts/app-session.txt: the same user, and the journal of
// frameworks of another make.

#include <functional>

#include "tests/fakes/Transcript.h"
#include "tests/macos/execution/MacProgramTest.h"
#include "tests/macos/execution/SessionStory.h"

namespace audrel::macos {
namespace {

class SessionTranscriptTest : public MacProgramTest {};

TEST_F(SessionTranscriptTest, isTheOneInTheTree) {
  SessionStory story({.run = [this](const std::function<void()>& happens) { run(happens); },
                      .setClock = [this](NS::Date time) { clock.date = time; }});
  const auto difference = fakes::differenceFromTranscript("macos-session", story.tell());
  EXPECT_EQ(difference, std::nullopt) << difference.value_or("");
}

}  // namespace
}  // namespace audrel::macos
