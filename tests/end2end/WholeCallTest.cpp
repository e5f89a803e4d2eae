#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

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
    sample->onSampleBuffer = [this](const CMSampleBufferRef& buffer) {
      ++calls;
      return buffer;
    };
    pixel->onPixelBuffer = [this](const CVPixelBufferRef&) {
      ++calls;
      received.release();
    };
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
  std::counting_semaphore<> received{0};
  const std::shared_ptr<LMRTCIWAudioFrameDelegate> audio = std::make_shared<LMRTCIWAudioFrameDelegate>();
  const std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate> sample =
      std::make_shared<LMRTCIWSampleBufferVideoFrameDelegate>();
  const std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate> pixel =
      std::make_shared<LMRTCIWPixelBufferVideoFrameDelegate>();
};

std::shared_ptr<const UIImage> whitePixel() {
  return std::make_shared<UIImage>(UIImage{1, 1, {255, 255, 255, 128}});
}

class WholeCallTest : public CallTest {};

TEST_F(WholeCallTest, FromTheJoinToTheLastPicture) {
  delegate->onSubscribed = recorded("subscribed");
  delegate->onRemoteFirstFrame = recorded("first");
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  const auto bob = add("bob");
  join();
  publish(kBoth);
  EXPECT_EQ(0, bob->publishVideo());
  advance(0us);

  std::vector<std::shared_ptr<LMRTCIWView>> views(3);
  for (auto& view : views) view = LMRTCIWView::create({0, 0, 60, 80});
  EXPECT_EQ(0, engine->setLocalView(views[0]));
  EXPECT_EQ(0, engine->setRemoteView(views[1], "anna"));
  EXPECT_EQ(0, engine->setRemoteView(views[2], "bob"));
  engine->subscribe("anna", kBoth);
  engine->subscribe("bob", kVideo, true);
  advance(66ms);
  std::ranges::sort(lines);
  EXPECT_EQ((Lines{"first r anna 0", "first r anna 1", "first r bob 1", "subscribed anna 2 0 Success",
                   "subscribed bob 1 0 Success"}),
            lines);
  advance(2s);
  EXPECT_EQ("10", speaker.tenths(400));
  for (std::uint32_t source = 0; source < views.size(); ++source) {
    const auto video = nativeView(views[source]);
    EXPECT_EQ(source, readingOf(video->picture()).sourceNumber);
    EXPECT_NEAR(source == 2 ? 28 : 30, readingOf(video->picture()).frameNumber, 2);
    EXPECT_EQ(source == 2 ? 180 : 480, video->picture()->width());
    const Bitmap shown = video->snapshot();
    ASSERT_EQ(std::pair(60, 80), std::pair(shown.width, shown.height));
    const std::size_t strongest[] = {2, 1, 0};  // red, green and blue, in the order of the bytes
    for (const std::size_t byte : {0u, 1u, 2u})
      EXPECT_EQ(byte == strongest[source] ? 255 : 0, shown.bgra[byte] > 128 ? 255 : 0) << source;
  }
}

TEST_F(WholeCallTest, SurfacesAndObserversAllocateOnlyTheRecordsOfTheQueue) {
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  join();
  publish(kBoth);
  engine->subscribe("anna", kBoth);
  const auto texture = LMRTCIWFlutterView::create();
  const auto queue = LMRTCIWUnityView::create();
  engine->setLocalViewWithViewDelegate(texture);
  engine->setRemoteViewWithViewDelegate(queue, "anna");
  engine->setCameraCaptureOrientation(1);
  engine->setWatermark(whitePixel(), 0.1, 0.1, 0.3);
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

class RealTimeCallTest : public CallTest {
 protected:
  RealTimeCallTest() : CallTest({.userId = "me", .soundOutput = true}) {}
};

/// The host comes and goes, and installs and removes what it can, while other threads link rooms and steer
/// sound files.
TEST_F(RealTimeCallTest, WhatIsRemovedIsNotCalledAnyMoreWhateverOtherThreadsDo) {
  const TempFolder folder;
  const std::string tone = writeTones(folder, "a.mp3", {{500, 0.1}});
  std::counting_semaphore<> sent{0}, moved{0};
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
    auto view = LMRTCIWFlutterView::create();
    observers.install(*engine, true);
    engine->setRemoteViewWithViewDelegate(view, "anna");
    engine->setWatermark(whitePixel(), 0.1, 0.1, 0.3);
    engine->startEchoTest(1);
    ASSERT_TRUE(observers.received.try_acquire_for(20s));
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

}  // namespace
}  // namespace lumo::test
