#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>

#include "engine/RecordingEngine.h"
#include "platform/Dispatch.h"
#include "tests/fakes/InputCycle.h"
#include "tests/fakes/World.h"

/// What an engine counts on from its writer queue, for the implementations of the queue's contract.
namespace audrel::contract {

/// Remembers the last queue, without a reference to it.
class NotingDispatch final : public dispatch::Dispatch {
 public:
  explicit NotingDispatch(dispatch::Dispatch& maker) : maker_(maker) {}

  dispatch::Queue& last() { return *last_; }

  std::shared_ptr<dispatch::Queue> makeQueue(const std::string& label,
                                             dispatch::QualityOfService qos) override {
    auto queue = maker_.makeQueue(label, qos);
    last_ = queue.get();
    return queue;
  }

 private:
  dispatch::Dispatch& maker_;
  dispatch::Queue* last_ = nullptr;
};

template <typename Implementation>
class EngineLifetimeContract : public testing::Test {
 protected:
  void record() {
    engine->start(RecordingSource::allSystemAudio(), RecordingFormat::wav, "/recordings/new.wav");
  }
  void cycle() { world.hardware.cycle(fakes::InputCycle({4096}).list()); }
  void letQueueRun() { implementation.letRun(queues.last()); }

  fakes::World world;
  Implementation implementation;
  NotingDispatch queues{implementation.dispatch()};
  std::shared_ptr<RecordingEngine> engine = RecordingEngine::make(world.platformWith(queues));
};

TYPED_TEST_SUITE_P(EngineLifetimeContract);

TYPED_TEST_P(EngineLifetimeContract, stopReturnsWhenEveryCycleIsWrittenAndTheFileIsClosed) {
  for (std::size_t round = 0; round < 50; ++round) {
    this->record();
    for (int i = 0; i < 20; ++i) {
      this->cycle();
    }
    this->engine->stop();
    ASSERT_EQ(this->world.audio.files[round]->writes.size(), 20U);
    ASSERT_FALSE(this->world.audio.files[round]->isOpen);
  }
}

TYPED_TEST_P(EngineLifetimeContract, theLastReferenceToTheEngineMayGoInsideAnItem) {
  this->record();
  const std::weak_ptr<RecordingEngine> weak = this->engine;
  std::promise<void> delivered;
  std::promise<void> closed;
  // The first write runs while its item holds the engine; afterwards nobody else does.
  this->world.audio.whenWriting = [this, isDelivered = delivered.get_future().share()] {
    isDelivered.wait();
    this->engine.reset();
  };
  this->world.audio.whenClosed = [&closed] { closed.set_value(); };
  for (int i = 0; i < 10; ++i) {
    this->cycle();
  }
  delivered.set_value();
  this->letQueueRun();
  ASSERT_EQ(closed.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(this->world.audio.files.front()->writes.size(), 1U) << "others outlived the engine";
}

REGISTER_TYPED_TEST_SUITE_P(EngineLifetimeContract,
                            stopReturnsWhenEveryCycleIsWrittenAndTheFileIsClosed,
                            theLastReferenceToTheEngineMayGoInsideAnItem);

}  // namespace audrel::contract
