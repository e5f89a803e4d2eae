#include <atomic>
#include <semaphore>
#include <thread>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/platform/system/UIImage.h"
#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/AllocationCount.h"

namespace lumo::test {
namespace {

/// One of each kind of observer; all of them count.
struct Observers {
  Observers() {
    audio->onAudioFrame = [this](const LMRTCIWAudioFrame&) { ++calls; };
    sample->onSampleBuffer = [this](const CMSampleBufferRef& buffer) { return ++calls, buffer; };
    pixel->onPixelBuffer = [this](const CVPixelBufferRef&) { ++calls; };
  }
  /// For the local user and for anna, or taken away.
  void install(LMRTCIWEngine& engine, bool on) const {
    EXPECT_EQ(0, engine.setLocalAudioCapturedDelegate(on ? audio : nullptr));
    EXPECT_EQ(0, engine.setLocalAudioMixedDelegate(on ? audio : nullptr));
    EXPECT_EQ(0, engine.setRemoteAudioMixedDelegate(on ? audio : nullptr));
    EXPECT_EQ(0, engine.setRemoteAudioReceivedDelegate(on ? audio : nullptr, "anna"));
    EXPECT_EQ(0, engine.setLocalVideoProcessedDelegate(on ? sample : nullptr));
    EXPECT_EQ(0, engine.setRemoteVideoProcessedDelegate(on ? pixel : nullptr, "anna"));
  }
  /// Whoever calls one at this moment holds it.
  bool areCalled() const { return audio.use_count() + sample.use_count() + pixel.use_count() > 3; }

  std::atomic<std::size_t> calls{0};
  const std::shared_ptr<LMRTCIWAudioFrameDelegate> audio = std::make_shared<LMRTCIWAudioFrameDelegate>();
  const std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate> sample =
      std::make_shared<LMRTCIWSampleBufferVideoFrameDelegate>();
  const std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate> pixel =
      std::make_shared<LMRTCIWPixelBufferVideoFrameDelegate>();
};

const auto kWhitePixel = std::make_shared<UIImage>(UIImage{1, 1, {255, 255, 255, 128}});

class LifecycleTest : public CallTest {};

TEST_F(LifecycleTest, TenThousandEnginesLeaveNothingBehind) {
  engine->destroy();
  engine.reset();
  const auto anna = addPublishing("anna", Media::video);
  const auto round = [this] {
    engine = LMRTCIWEngine::create();
    const auto view = LMRTCIWUnityView::create();
    join();
    ASSERT_TRUE(engine->room());
    engine->setRemoteViewWithViewDelegate(view, "anna");
    engine->publish(kBoth);
    engine->subscribe("anna", kBoth);
    engine->destroy();
    advance(0us);
  };
  for (int i = 0; i < 100; ++i) round();
  const std::size_t before = liveAllocationCount();
  for (int i = 0; i < 10000; ++i) round();
  EXPECT_EQ(before, liveAllocationCount());
}

TEST_F(LifecycleTest, SurfacesAndObserversAllocateOnlyTheRecordsOfTheQueue) {
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  join();
  publish(kBoth);
  engine->subscribe("anna", kBoth);
  const auto texture = LMRTCIWFlutterView::create();
  const auto queue = LMRTCIWUnityView::create();
  engine->setLocalViewWithViewDelegate(texture);
  engine->setRemoteViewWithViewDelegate(queue, "anna");
  engine->setCameraCaptureOrientation(1);
  engine->setWatermark(kWhitePixel, 0.1, 0.1, 0.3);
  local->setSpeaker({});
  Observers observers;
  observers.install(*engine, true);
  const auto second = [&] {
    for (int i = 0; i < 15; ++i) {
      advance(Microseconds(1000000 / 15));
      while (queue->getCurrentFrame()) continue;
    }
  };
  second();
  second();
  observers.calls = 0;
  const std::size_t before = allocationCount();
  second();
  EXPECT_EQ(15u, allocationCount() - before);
  EXPECT_NEAR(4 * 100 + 2 * 15, static_cast<double>(observers.calls), 6);
}

class RealTimeTest : public CallTest {
 protected:
  RealTimeTest() : CallTest({.userId = "me", .soundOutput = true}) {}
};

/// The host comes and goes, and installs and removes what it can, while other threads link rooms and steer
/// sound files.
TEST_F(RealTimeTest, WhatIsRemovedIsNotCalledAnyMoreWhateverOtherThreadsDo) {
  const TempFolder folder;
  const std::string tone = writeTones(folder, "a.mp3", {{500, 0.1}});
  std::counting_semaphore<> sent{0}, received{0}, moved{0};
  const LumoRTCLocal::ParticipantOptions broadcaster{.role = LumoRTCLocal::Role::broadcaster};
  const auto anna = local->join("r", "anna", broadcaster).participant;
  anna->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame&) { sent.release(); });
  delegate->onRoomJoined = [&](auto&&...) { moved.release(); };
  delegate->onRoomLeft = [&](auto&&...) { moved.release(); };
  delegate->onUserJoined = [](auto&&...) {};  // without it nobody is announced
  delegate->onRemotePublished = [&](auto&&, auto& user, auto type) { engine->subscribe(user, type); };
  delegate->onRemoteLiveMixPublished = [&](auto) { engine->subscribeLiveMix(kBoth); };
  delegate->onJoinSubRoomRequestReceived = [&](auto& room, auto& user, auto&&) {
    engine->responseJoinSubRoomRequest(room, user, true, true, "");
    engine->joinSubRoom(room);
  };
  for (const std::int64_t effect : {0, 1, 2, 3}) engine->createAudioEffect(tone, effect);

  std::jthread links([&](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const auto cleo = local->join("s", "cleo", broadcaster).participant;
      cleo->publishVideo();
      if (cleo->invite("r", "me") != 0) cleo->unlinkRoom("r");
      cleo->leave();
    }
  });
  std::jthread sounds([&](const std::stop_token& stop) {
    for (std::int64_t i = 0; !stop.stop_requested(); ++i) {
      engine->startAudioMixing(tone, i % 3, true, 0);
      engine->setAudioMixingPosition(0.05);
      engine->playAudioEffect(i % 4, 50, 1);
      engine->pauseAllAudioEffects();
      engine->resumeAudioEffect(i % 4);
      EXPECT_EQ(std::nullopt, local->recordSpeaker(folder.path("speaker.wav")));
    }
  });
  for (int round = 0; round < 10; ++round) {
    join(LMRTCIWRoleLiveBroadcaster);
    ASSERT_TRUE(moved.try_acquire_for(20s));
    publish(kBoth);
    Observers observers;
    observers.pixel->onPixelBuffer = [&](const CVPixelBufferRef&) { received.release(); };
    auto view = LMRTCIWFlutterView::create();
    observers.install(*engine, true);
    engine->setRemoteViewWithViewDelegate(view, "anna");
    engine->setWatermark(kWhitePixel, 0.1, 0.1, 0.3);
    engine->startEchoTest(1);
    ASSERT_TRUE(received.try_acquire_for(20s));
    engine->removeWatermark();
    engine->stopEchoTest();
    observers.install(*engine, false);
    engine->setRemoteViewWithViewDelegate(nullptr, "anna");
    view.reset();
    while (sent.try_acquire()) continue;
    while (observers.areCalled()) std::this_thread::yield();
    const std::size_t before = observers.calls;
    ASSERT_TRUE(sent.try_acquire_for(20s));
    EXPECT_EQ(before, observers.calls) << "although pictures go on coming";
    engine->leaveSubRoom("s", round % 2 == 0);
    engine->leaveRoom();
    ASSERT_TRUE(moved.try_acquire_for(20s));
  }
  links = {};
  sounds = {};
  anna->onVideo({});
}

/// Hands its first frame to a function.
struct FirstFrame : LMRTCVideoRenderer {
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame&) override {
    std::exchange(take, [] {})();
  }

  std::function<void()> take;
};

TEST_F(RealTimeTest, DestroyWaitsForTheFrameThatASurfaceIsTaking) {
  std::atomic<bool> begun = false, ended = false;
  std::thread destroyer;
  const auto renderer = std::make_shared<FirstFrame>();
  renderer->take = [&] {
    destroyer = std::thread([&] {
      engine->destroy();
      EXPECT_TRUE(ended);
    });
    while (engine->iwEngineSetup()) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    ended = true;
    begun = true;
    begun.notify_all();
  };
  LMRTCEngine::sharedInstance()->defaultVideoStream()->setVideoView(renderer);
  begun.wait(false);
  destroyer.join();
}

}  // namespace
}  // namespace lumo::test
