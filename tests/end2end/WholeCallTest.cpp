#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLibWrapper/platform/system/UIImage.h"
#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

using Trace = std::vector<std::string>;

/// One of each kind of observer; all of them count.
struct Observers {
  explicit Observers(std::atomic<std::size_t>& calls) {
    audio->onAudioFrame = [&calls](const LMRTCIWAudioFrame&) { ++calls; };
    sample->onSampleBuffer = [&calls](const CMSampleBufferRef& buffer) { return ++calls, buffer; };
    pixel->onPixelBuffer = [&calls](const CVPixelBufferRef&) { ++calls; };
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
  Trace trace;
  delegate->onSubscribed = [&](const auto& user, std::int64_t type, std::int64_t code, const auto&) {
    trace.push_back("subscribed " + user + " " + std::to_string(10 * type + code));
  };
  delegate->onRemoteFirstFrame = [&](const auto&, const auto& user, std::int64_t type) {
    trace.push_back("first " + user + " " + std::to_string(type));
  };
  const auto anna = addPublishing("anna", Media::audioAndVideo);
  const auto bob = add("bob");
  join();
  publish(kBoth);
  EXPECT_EQ(0, bob->publishVideo());
  advance(0us);

  const std::string users[] = {"me", "anna", "bob"};
  std::vector<std::shared_ptr<LMRTCIWView>> views;
  for (const auto& user : users) {
    views.push_back(LMRTCIWView::create({0, 0, 60, 80}));
    EXPECT_EQ(0,
              user == "me" ? engine->setLocalView(views.back()) : engine->setRemoteView(views.back(), user));
  }
  engine->subscribe("anna", kBoth);
  engine->subscribe("bob", kVideo, true);
  advance(66ms);
  std::ranges::sort(trace);
  EXPECT_EQ((Trace{"first anna 0", "first anna 1", "first bob 1", "subscribed anna 20", "subscribed bob 10"}),
            trace);
  advance(2s);
  for (std::uint32_t source = 0; source < views.size(); ++source) {
    const auto video = std::dynamic_pointer_cast<LocalVideoView>(views[source]->rtcVideoView());
    const auto reading = readTestPicture(*video->picture()).value_or(TestPictureReading{99, 0});
    EXPECT_EQ(source, reading.sourceNumber);
    EXPECT_NEAR(source == 2 ? 28 : 30, reading.frameNumber, 2);
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
  std::atomic<std::size_t> calls{0};
  const Observers observers(calls);
  observers.install(*engine, true);
  const auto second = [&] {
    for (int i = 0; i < 15; ++i) {
      local->advance(Microseconds(1000000 / 15));
      MainQueue::runPending();
      while (queue->getCurrentFrame()) {
      }
    }
  };
  second();
  second();
  calls = 0;
  const std::size_t before = allocationCount();
  second();
  EXPECT_EQ(15u, allocationCount() - before);
  EXPECT_NEAR(4 * 100 + 2 * 15, static_cast<double>(calls), 6);
}

TEST(RealTimeObserversTest, AreInstalledAndRemovedWhileMediaFlows) {
  LMFwLog::getInstance().setThreshold(LMFwLogLevelOff);
  Console::setSink({});
  std::counting_semaphore<> seen{0};
  std::counting_semaphore<> done{0};
  const auto local = LumoRTCLocal::install();
  const auto anna = local->join("r", "anna").participant;
  ASSERT_EQ(0, anna->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo));
  const auto engine = LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>());
  const auto delegate = std::make_shared<LMRTCIWEngineDelegate>();
  delegate->onRoomJoined = [&](auto, const auto&) { done.release(); };
  delegate->onPublished = [&](auto, auto, const auto&) { done.release(); };
  delegate->onSubscribed = [&](const auto&, auto, auto, const auto&) { done.release(); };
  engine->setEngineDelegate(delegate);
  ASSERT_EQ(0, engine->joinRoom("r", std::make_shared<LMRTCIWRoomSetup>()));
  ASSERT_TRUE(done.try_acquire_for(20s));
  engine->publish(kBoth);
  engine->subscribe("anna", kBoth);
  ASSERT_TRUE(done.try_acquire_for(20s) && done.try_acquire_for(20s));

  anna->onVideo([&](const std::string&, const LMRTCVideoFrame&) { seen.release(); });
  for (int round = 0; round < 10; ++round) {
    std::atomic<std::size_t> calls{0};
    std::counting_semaphore<> heard{0};
    const Observers observers(calls);
    observers.pixel->onPixelBuffer = [&](const CVPixelBufferRef&) { heard.release(); };
    auto view = LMRTCIWFlutterView::create();
    observers.install(*engine, true);
    engine->setRemoteViewWithViewDelegate(view, "anna");
    engine->setWatermark(whitePixel(), 0.1, 0.1, 0.3);
    engine->startEchoTest(1);
    ASSERT_TRUE(heard.try_acquire_for(20s));
    engine->removeWatermark();
    engine->stopEchoTest();
    observers.install(*engine, false);
    engine->setRemoteViewWithViewDelegate(nullptr, "anna");
    view.reset();
    while (seen.try_acquire()) {
    }
    // What still runs holds its observer.
    while (observers.audio.use_count() + observers.sample.use_count() + observers.pixel.use_count() > 3)
      std::this_thread::yield();
    const std::size_t before = calls;
    ASSERT_TRUE(seen.try_acquire_for(20s));
    EXPECT_EQ(before, calls) << "although pictures go on coming";
  }
  anna->onVideo({});
  engine->destroy();
  local->uninstall();
}

}  // namespace
}  // namespace lumo::test
