#include <future>
#include <stdexcept>
#include <thread>

#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using LifecycleTest = EngineTest;

/// The lines of a first creation.
std::vector<std::string> created(const std::string& config) {
  return {"T create msg:LMRTCIWEngine create once", "T init msg:LMRTCIWEngine create init",
          "-> setDelegate engine", config,
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
         created("-> setMediaServerUrl wss://media\n"
                 "-> initWithConfig 1 0 7 0 1"));
  expect(engine, LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>()), {});
  expect(engine, LMRTCIWEngine::create(), {"T create"});
}

TEST_F(LifecycleTest, AnAbsentSetupActsAsAllFalseAndZeroAndAFreshOneHasItsDefaults) {
  engine->destroy();
  trace->take();
  engine = LMRTCIWEngine::create(nullptr);
  EXPECT_EQ(Trace::text(created("-> initWithConfig 0 0 0 0 0")), trace->take());
  engine->destroy();
  trace->take();
  engine = LMRTCIWEngine::create();
  EXPECT_EQ(Trace::text({"T create"}) + Trace::text(created("-> initWithConfig 0 0 1 1 0")), trace->take());
}

TEST_F(LifecycleTest, DestroyEmptiesTheCachesAndKeepsTheListenerAndTheCdnFields) {
  const auto custom = [this](std::int64_t type, const std::string& tag) {
    return std::make_shared<LMRTCIWCustomStream>(type, make<fake::FileOutput>(tag));
  };
  engine->setCustomStreams({{"file", custom(2, "file")}, {"other", custom(1, "other")}});
  engine->setSubs({{"s1", make<fake::OtherRoom>("s1")}});
  engine->setAudioMixPlayProgress(0.5);
  engine->setAudioMixingFileUrl("file:///b");
  engine->setSessionId("s");
  engine->setInnerCDNVideoResolution(3);
  engine->destroy();
  EXPECT_TRACE("T destroy", "-> me_file.stop", "-> s1.setDelegate nil", "-> unInit", "C destroy end");
  EXPECT_FALSE(engine->iwEngineSetup() || engine->rtcEngine() || engine->audioMixPlayProgress() > 0 ||
               engine->audioMixingFileUrl() || engine->sessionId());
  EXPECT_EQ(host, engine->engineDelegate());
  EXPECT_EQ(3, engine->innerCDNVideoResolution());
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

TEST_F(LifecycleTest, ALogSinkMayCallBackIntoTheEngine) {
  join();
  std::string session;
  LMFwLog::getInstance().setSink([&](const LMFwLogEntry& entry) {
    if (entry.tag == "IW/RTC-leaveRoom-T") session = engine->getSessionId();
  });
  engine->leaveRoom();
  LMFwLog::getInstance().setSink([](const LMFwLogEntry&) {});
  EXPECT_EQ("session of r1", session);
}

TEST(MainQueueTest, GoesOnAfterATaskThatThrows) {
  MainQueue::setOwnThread(false);
  MainQueue::async([] { throw std::runtime_error("from a host's task"); });
  std::promise<std::thread::id> thread;
  MainQueue::async([&thread] { thread.set_value(std::this_thread::get_id()); });
  EXPECT_THROW(MainQueue::runPending(), std::runtime_error);
  MainQueue::setOwnThread(true);
  EXPECT_NE(std::this_thread::get_id(), thread.get_future().get());
}

}  // namespace
}  // namespace lumo
