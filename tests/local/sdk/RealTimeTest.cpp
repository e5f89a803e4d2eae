#include <atomic>
#include <semaphore>
#include <thread>

#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

constexpr auto kPatience = 20s;

/// Counts what comes.
struct Counter {
  void add() { count.release(); }
  bool reaches(int more) {
    while (more > 0 && count.try_acquire_for(kPatience)) --more;
    return more == 0;
  }
  std::counting_semaphore<> count{0};
};

/// Stays in its first frame until it is let go.
struct BlockedRenderer : LMRTCVideoRenderer {
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

struct CountingRenderer : LMRTCVideoRenderer {
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame&) override { frames.add(); }
  Counter frames;
};

class RealTimeTest : public ::testing::Test {
 protected:
  RealTimeTest() { engine->initWithConfig(LMRTCConfig()); }
  ~RealTimeTest() override { engine->unInit(); }

  std::shared_ptr<LMRTCRoom> join() {
    std::shared_ptr<LMRTCRoom> room;
    Counter joined;
    engine->joinRoom("r", {}, [&](std::int64_t code, const auto& entered) {
      EXPECT_EQ(0, code);
      room = entered;
      joined.add();
    });
    EXPECT_TRUE(joined.reaches(1));
    return room;
  }
  static LMRTCLocalUser::Completion counting(Counter& done) {
    return [&done](bool success, std::int64_t) {
      EXPECT_TRUE(success);
      done.add();
    };
  }

  std::shared_ptr<LumoRTCLocal> local = LumoRTCLocal::install();
  std::shared_ptr<LMRTCEngine> engine = LMRTCEngine::sharedInstance();
};

TEST_F(RealTimeTest, ASlowRendererSkipsFrames) {
  const auto anna = local->join("r", "anna").participant;
  std::atomic<std::int64_t> newest{0};
  Counter sent;
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame& frame) {
    newest = frame.timestampMs;
    sent.add();
  });
  const auto slow = std::make_shared<BlockedRenderer>();
  engine->defaultVideoStream()->setVideoView(slow);
  ASSERT_TRUE(slow->frames.reaches(1));
  const auto room = join();
  Counter published;
  room->localUser()->publishStreams({engine->defaultVideoStream()}, counting(published));
  ASSERT_TRUE(sent.reaches(4));

  const std::int64_t seen = newest;
  EXPECT_FALSE(slow->frames.count.try_acquire());
  slow->released.add();
  ASSERT_TRUE(slow->frames.reaches(1));
  EXPECT_GE(slow->newest, seen) << "the newest frame, not one that waited";
  EXPECT_TRUE(published.reaches(1));
}

TEST_F(RealTimeTest, ACallWhileOthersComeAndGo) {
  const auto anna = local->join("r", "anna").participant;
  ASSERT_EQ(0, anna->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo));
  Counter heard, seen, spoken;
  anna->onAudio([&](const std::string&, const lumo::AudioBlock&, lumo::Microseconds) { heard.add(); });
  anna->onVideo([&](const std::string&, const LMRTCVideoFrame&) { seen.add(); });
  local->setSpeaker([&](const lumo::AudioBlock&, lumo::Microseconds) { spoken.add(); });
  const auto room = join();
  Trace trace;
  const auto recorder = std::make_shared<EventRecorder>(trace);
  recorder->room = room;
  room->setDelegate(recorder);

  std::thread others([this, &anna] {
    for (int i = 0; i < 50; ++i) {
      const auto bob = local->join("r", "bob").participant;
      bob->publishVideo();
      anna->mute(i % 2 == 0);
      local->setNetwork({}, i % 3 == 0 ? lumo::NetworkModel() : lumo::NetworkModel{1ms, 3ms, 0.1});
      bob->sendSei("x");
      bob->leave();
    }
  });
  Counter done;
  const auto view = std::make_shared<CountingRenderer>();
  const auto streams = room->getRemoteUser("anna")->remoteStreams();
  std::dynamic_pointer_cast<LMRTCVideoInputStream>(streams[1])->setVideoView(view);
  room->localUser()->publishStreams({engine->defaultAudioStream(), engine->defaultVideoStream()},
                                    counting(done));
  room->localUser()->subscribeStream(streams, std::nullopt, counting(done));
  EXPECT_TRUE(done.reaches(2));
  for (std::int64_t fps = 0; fps < 4; ++fps) {
    engine->defaultAudioStream()->setIsMute(fps % 2 == 0);
    engine->defaultVideoStream()->setIsEncoderMirror(fps % 2 == 0);
  }
  others.join();
  EXPECT_TRUE(view->frames.reaches(3));
  EXPECT_TRUE(heard.reaches(3));
  EXPECT_TRUE(seen.reaches(3));
  EXPECT_TRUE(spoken.reaches(3));

  Counter late;
  engine->leaveRoom([&](std::int64_t) { late.add(); });
  engine->unInit();
  EXPECT_TRUE(late.reaches(1)) << "answered, whether before or after the end";
  anna->onAudio({});
  anna->onVideo({});
  local->setSpeaker({});
}

}  // namespace
