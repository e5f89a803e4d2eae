#include <atomic>
#include <semaphore>
#include <thread>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

/// Counts what comes.
struct Counter {
  void add() { count.release(); }
  bool reaches(int more) {
    while (more > 0 && count.try_acquire_for(20s)) --more;
    return more == 0;
  }
  std::counting_semaphore<> count{0};
};

/// Stays in its first frame until it is let go.
struct StuckRenderer : LMRTCVideoRenderer {
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame& frame) override {
    newest = frame.timestampMs;
    frames.add();
    if (!isReleased) isReleased = released.reaches(1);
  }
  Counter frames, released;
  std::atomic<std::int64_t> newest{0};
  bool isReleased = false;
};

TEST(RealTimeTest, ACallGoesOnWhileOthersComeAndGoAndARendererIsStuck) {
  const auto local = LumoRTCLocal::install();
  const auto engine = LMRTCEngine::sharedInstance();
  engine->initWithConfig(LMRTCConfig());
  const auto anna = local->join("r", "anna").participant;
  ASSERT_EQ(0, anna->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo));
  Counter done, heard, seen, spoken;
  std::atomic<std::int64_t> newest{0};
  anna->onAudio([&](const std::string&, const lumo::AudioBlock&, lumo::Microseconds) { heard.add(); });
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame& frame) {
    newest = frame.timestampMs;
    seen.add();
  });
  local->setSpeaker([&](const lumo::AudioBlock&, lumo::Microseconds) { spoken.add(); });
  const auto stuck = std::make_shared<StuckRenderer>();
  engine->defaultVideoStream()->setVideoView(stuck);
  std::shared_ptr<LMRTCRoom> room;
  engine->joinRoom("r", {}, [&](std::int64_t, const auto& entered) {
    room = entered;
    done.add();
  });
  ASSERT_TRUE(done.reaches(1) && room && stuck->frames.reaches(1));
  const auto recorder = std::make_shared<EventRecorder>();
  recorder->room = room;
  room->setDelegate(recorder);

  std::thread others([&] {
    for (int i = 0; i < 50; ++i) {
      const auto bob = local->join("r", "bob").participant;
      bob->publishVideo();
      anna->mute(i % 2 == 0);
      local->setNetwork({}, i % 3 == 0 ? lumo::NetworkModel() : lumo::NetworkModel{1ms, 3ms, 0.1});
      bob->sendSei("x");
      bob->leave();
    }
  });
  const auto count = [&done](bool success, std::int64_t) { success ? done.add() : void(); };
  room->localUser()->publishStreams({engine->defaultAudioStream(), engine->defaultVideoStream()}, count);
  room->localUser()->subscribeStream(room->getRemoteUser("anna")->remoteStreams(), std::nullopt, count);
  for (std::int64_t i = 0; i < 4; ++i) engine->defaultAudioStream()->setIsMute(i % 2 == 0);
  others.join();
  EXPECT_TRUE(done.reaches(2) && heard.reaches(3) && seen.reaches(4) && spoken.reaches(3));

  const std::int64_t sent = newest;
  EXPECT_FALSE(stuck->frames.count.try_acquire());
  stuck->released.add();
  EXPECT_TRUE(stuck->frames.reaches(1));
  EXPECT_GE(stuck->newest, sent) << "the newest frame, not one that waited";
  engine->leaveRoom([&done](std::int64_t) { done.add(); });
  engine->unInit();
  EXPECT_TRUE(done.reaches(1)) << "answered, whether before or after the end";
  anna->onAudio({});
  anna->onVideo({});
  local->setSpeaker({});
}

}  // namespace
