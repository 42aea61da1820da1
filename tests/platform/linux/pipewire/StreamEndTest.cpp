// PipeWire's data thread may be anywhere in a stream that ends. Disconnecting waits for it; taking
// the listener out, which clears what that thread is about to call, does not.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pipewire/pipewire.h>

#include <map>
#include <string>
#include <vector>

#include "platform/linux/demo/MelodyPlayer.h"
#include "tests/platform/linux/pipewire/harness/Player.h"
#include "tests/platform/linux/pipewire/harness/Recorder.h"
#include "tests/platform/linux/pipewire/harness/TestServer.h"

namespace audrel::pwtest {
namespace {

using testing::ElementsAre;

std::vector<std::string> calls;
std::map<spa_hook*, void (*)(spa_hook*)> removals;  ///< as PipeWire has set them

template <typename Function>
Function* ofTheLibrary(Function* /*ours*/, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// In front of the library's own, for all that is linked into this program.
extern "C" {

void pw_stream_add_listener(pw_stream* stream, spa_hook* listener, const pw_stream_events* events,
                            void* data) {
  ofTheLibrary(pw_stream_add_listener, __func__)(stream, listener, events, data);
  if (listener->removed == nullptr) {
    return;  // not one that the data thread calls
  }
  removals[listener] = listener->removed;
  listener->removed = [](spa_hook* hook) {
    calls.emplace_back("listener removed");
    removals[hook](hook);
  };
}

int pw_stream_disconnect(pw_stream* stream) {
  const int result = ofTheLibrary(pw_stream_disconnect, __func__)(stream);
  calls.emplace_back("disconnected");
  return result;
}
}

namespace {

TEST(StreamEnd, ofATapComesBeforeItsListeners) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  Player player(server.socketPath());
  ASSERT_TRUE(player.open("music", 1));
  Recorder recorder(server);
  ASSERT_EQ(recorder.startProcess(recorder.waitForProcess(player.pid())), 0);
  ASSERT_TRUE(server.step(1, heard({"music"})));
  calls.clear();
  ASSERT_EQ(recorder.stop(), 0);
  EXPECT_THAT(calls, ElementsAre("disconnected", "listener removed"));
}

TEST(StreamEnd, ofTheDemosMelodyComesBeforeItsListeners) {
  TestServer server;
  ASSERT_TRUE(server.isRunning());
  auto melody = linuxos::MelodyPlayer::start(server.socketPath());
  ASSERT_NE(melody, nullptr);
  calls.clear();
  melody.reset();
  EXPECT_THAT(calls, ElementsAre("disconnected", "listener removed"));
}

}  // namespace
}  // namespace audrel::pwtest
