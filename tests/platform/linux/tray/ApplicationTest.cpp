#include "platform/linux/tray/Application.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/loop/LoopSource.h"
#include "platform/linux/loop/RunLoop.h"

namespace audrel::linuxos {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class Delegate final : public NS::ApplicationDelegate {
 public:
  void applicationDidFinishLaunching() override {
    calls.emplace_back("launched");
    if (onLaunch) {
      onLaunch();
    }
  }
  void applicationWillTerminate() override {
    calls.emplace_back("will terminate");
    if (onTerminate) {
      onTerminate();
    }
  }

  std::vector<std::string> calls;
  std::function<void()> onLaunch;
  std::function<void()> onTerminate;
};

class ApplicationTest : public testing::Test {
 protected:
  ApplicationTest() { application.setDelegate(delegate); }

  Application application;
  std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>();
};

TEST_F(ApplicationTest, runTellsTheDelegateAndReturnsAfterTerminate) {
  LoopSource quit([this] { application.terminate(); });
  delegate->onLaunch = [&quit] { quit.callSoon(); };
  application.setActivationPolicy(NS::ActivationPolicy::accessory);
  application.run();
  EXPECT_THAT(delegate->calls, ElementsAre("launched", "will terminate"));
}

TEST_F(ApplicationTest, terminateWhileLaunchingNeverStartsTheLoop) {
  delegate->onLaunch = [this] { application.terminate(); };
  application.run();
  application.run();
  EXPECT_THAT(delegate->calls, ElementsAre("launched", "will terminate"));
}

TEST_F(ApplicationTest, onlyTheFirstTerminateTellsTheDelegate) {
  delegate->onTerminate = [this] { application.terminate(); };
  application.terminate();
  application.terminate();
  EXPECT_THAT(delegate->calls, ElementsAre("will terminate"));
}

TEST_F(ApplicationTest, aDelegateThatHasGoneIsNotCalled) {
  delegate.reset();
  LoopSource quit([this] { application.terminate(); });
  quit.callSoon();
  application.run();
  EXPECT_TRUE(application.isTerminating());
}

class SignalTest : public ApplicationTest, public testing::WithParamInterface<int> {};

TEST_P(SignalTest, endsTheApplicationThroughItsDelegate) {
  delegate->onLaunch = [] { std::raise(GetParam()); };
  // A user who asks again while the file is being closed must not lose it.
  delegate->onTerminate = [] { std::raise(GetParam()); };
  application.run();
  EXPECT_THAT(delegate->calls, ElementsAre("launched", "will terminate"));
}

TEST_P(SignalTest, thatComesWhileTheProgramStartsEndsItOnceItRuns) {
  std::raise(GetParam());
  application.run();
  EXPECT_THAT(delegate->calls, ElementsAre("launched", "will terminate"));
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

class ModalSessionTest : public ApplicationTest {
 protected:
  /// Runs `body` from the running application's loop, as a menu command runs.
  void runWith(std::function<void()> body) {
    LoopSource source(std::move(body));
    delegate->onLaunch = [&source] { source.callSoon(); };
    application.run();
  }
};

TEST_F(ModalSessionTest, timersGoOnUntilTheAnswerComes) {
  int ticks = 0;
  bool answered = false;
  runWith([&] {
    ModalSession session(application);
    const auto timer = RunLoop().scheduleRepeatingTimer(0.001, [&] {
      if (++ticks == 3) {
        session.finish();
      }
    });
    answered = session.wait();
    timer->invalidate();
    application.terminate();
  });
  EXPECT_EQ(ticks, 3);
  EXPECT_TRUE(answered);
}

TEST_F(ModalSessionTest, anAnswerBeforeTheWaitIsNotLost) {
  bool answered = false;
  runWith([&] {
    ModalSession session(application);
    session.finish();
    answered = session.wait();
    application.terminate();
  });
  EXPECT_TRUE(answered);
}

TEST_F(ModalSessionTest, aSignalEndsTheWaitAndThenTheApplication) {
  bool answered = true;
  bool unwound = false;
  runWith([&] {
    ModalSession session(application);
    LoopSource signal([] { std::raise(SIGTERM); });
    signal.callSoon();
    answered = session.wait();
    unwound = true;
  });
  EXPECT_FALSE(answered);
  EXPECT_TRUE(unwound);
  EXPECT_THAT(delegate->calls, ElementsAre("launched", "will terminate"));
}

TEST_F(ModalSessionTest, terminateEndsEveryWaitThatIsUp) {
  std::vector<std::string> order;
  runWith([&] {
    ModalSession outer(application);
    LoopSource second([&] {
      ModalSession inner(application);
      LoopSource quit([this] { application.terminate(); });
      quit.callSoon();
      order.emplace_back(inner.wait() ? "inner answered" : "inner aborted");
    });
    second.callSoon();
    order.emplace_back(outer.wait() ? "outer answered" : "outer aborted");
  });
  EXPECT_THAT(order, ElementsAre("inner aborted", "outer aborted"));
}

TEST_F(ModalSessionTest, aSessionOfATerminatingApplicationDoesNotWait) {
  bool answered = true;
  delegate->onTerminate = [&] {
    ModalSession session(application);
    answered = session.wait();
  };
  application.terminate();
  EXPECT_FALSE(answered);
}

TEST_F(ModalSessionTest, theObserverHearsOfBeginningAndEnd) {
  std::vector<bool> states;
  application.setModalObserver([&] { states.push_back(application.isModal()); });
  {
    const ModalSession session(application);
  }
  EXPECT_THAT(states, ElementsAre(true, false));
}

}  // namespace
}  // namespace audrel::linuxos
