#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using LifecycleTest = EngineTest;

/// The lines of a first creation.
std::vector<std::string> created(const std::string& config) {
  return {"T create msg:LMRTCIWEngine create once", "T init msg:LMRTCIWEngine create init",
          "sdk setDelegate engine", config,
          "console LumoRTCLibWrapper commit: V1.0_20251222171809_master_ef94573"};
}

TEST_F(LifecycleTest, CreateInitialisesTheSdkFromTheFirstSetupOnly) {
  engine->destroy();
  trace->take();
  setup->mediaUrl = "wss://media";
  setup->reconnectable = true;
  setup->statsReportInterval = 7;
  setup->audioSetup->mixOtherAppsAudio = false;
  setup->enableVersionMatch = true;
  engine = LMRTCIWEngine::create(setup);
  expect(sdk->engine, std::dynamic_pointer_cast<fake::Engine>(engine->rtcEngine()),
         created("sdk setMediaServerUrl wss://media\n"
                 "sdk initWithConfig reconnect:1 srtp:0 report:7 mix:0 mismatch:1"));
  expect(engine, LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>()), {});
  expect(engine, LMRTCIWEngine::create(), {"T create"});
  EXPECT_EQ(setup, engine->iwEngineSetup());
}

TEST_F(LifecycleTest, AnAbsentSetupActsAsAllFalseAndZeroAndAFreshOneHasItsDefaults) {
  const auto recreate = [this](const auto&... with) {
    engine->destroy();
    trace->take();
    engine = LMRTCIWEngine::create(with...);
    return trace->take();
  };
  const std::string config = "sdk initWithConfig reconnect:0 srtp:0 ";
  EXPECT_EQ(Trace::text(created(config + "report:0 mix:0 mismatch:0")), recreate(nullptr));
  EXPECT_EQ(Trace::text({"T create"}) + Trace::text(created(config + "report:1 mix:1 mismatch:0")),
            recreate());
  setup->audioSetup = nullptr;
  setup->videoSetup = nullptr;
  EXPECT_EQ(Trace::text(created(config + "report:1 mix:0 mismatch:0")), recreate(setup));
}

TEST_F(LifecycleTest, DestroyEmptiesTheCachesAndKeepsTheListenerAndTheCdnFields) {
  join();
  const auto local = view("local");
  engine->setLocalViewWithViewDelegate(local);
  engine->setLiveInfo(make<fake::LiveInfo>());
  engine->setEffectSoundIdDict({{1, "file:///a"}});
  engine->setRemoteVideoViewDict({{"u1", local}});
  engine->setLocalCustomViews({{"t", local}});
  engine->setRemoteCustomViews({{"u1@t", local}});
  const auto custom = [this](std::int64_t type, const std::string& tag) {
    return std::make_shared<LMRTCIWCustomStream>(type, make<fake::FileOutput>(tag));
  };
  engine->setCustomStreams({{"file", custom(2, "file")}, {"other", custom(1, "other")}});
  engine->setSubs({{"s1", make<fake::OtherRoom>("s1")}});
  engine->setAudioMixPlayProgress(0.5);
  engine->setAudioMixingFileUrl("file:///b");
  engine->setSessionId("s");
  engine->setInnerCDNVideoResolution(3);
  trace->take();

  engine->destroy();
  EXPECT_TRACE("T destroy", "sdk me_file.stop", "sdk s1.setDelegate nil", "sdk unInit",
               "console LMRTCIWEngine destroy end");
  EXPECT_FALSE(engine->iwEngineSetup() || engine->room() || engine->liveInfo() || engine->iwRoomSetup() ||
               engine->iwLocalVideoView() || engine->rtcEngine());
  EXPECT_TRUE(engine->effectSoundIdDict().empty() && engine->remoteVideoViewDict().empty() &&
              engine->customStreams().empty() && engine->subs().empty() &&
              engine->localCustomViews().empty() && engine->remoteCustomViews().empty());
  EXPECT_EQ(0, engine->audioMixPlayProgress());
  EXPECT_FALSE(engine->audioMixingFileUrl() || engine->sessionId());
  EXPECT_EQ(host, engine->engineDelegate());
  EXPECT_EQ(3, engine->innerCDNVideoResolution());
}

TEST_F(LifecycleTest, ADestroyedEngineFindsNothingAndANewOneStandsBesideIt) {
  join();
  engine->destroy();
  const auto old = engine;
  engine = LMRTCIWEngine::create(setup);
  EXPECT_NE(old, engine);
  trace->take();
  expect(kNotJoined, old->publish(0), {"T publish type:0", kNoSetup});
  expect("", old->getSessionId(), {"T getSessionId", kNoSetup});
  expect(kBadParameter, old->setAudioConfig(nullptr),
         {"T setAudioConfig quality:0,scenario:0,recordingVolume:0", "E: config is nil"});
}

TEST_F(LifecycleTest, WeakPropertiesReadAsAbsentOnceTheirObjectIsGone) {
  join();
  engine->setLocalViewWithViewDelegate(view("gone at once"));
  EXPECT_EQ(nullptr, engine->iwLocalVideoView());
  releaseRoom();
  EXPECT_EQ(nullptr, engine->room());
  host = nullptr;
  EXPECT_EQ(nullptr, engine->engineDelegate());
}

TEST_F(LifecycleTest, TheLogThresholdKeepsLinesFromTheSink) {
  auto& log = LMFwLog::getInstance();
  log.setThreshold(LMFwLogLevelError);
  engine->joinRoom("r1", nullptr);
  EXPECT_TRACE("E joinRoom msg:setup is nil");
  log.setThreshold(LMFwLogLevelOff);
  engine->joinRoom("r1", nullptr);
  EXPECT_TRACE();
  log.setThreshold(LMFwLogLevelInfo);
}

}  // namespace
}  // namespace lumo
