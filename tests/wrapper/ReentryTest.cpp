#include <thread>

#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using ReentryTest = EngineTest;

TEST_F(ReentryTest, AJoinCallbackMayDestroyTheEngine) {
  room->users = {user("u1", {audio("u1")}), user("u2")};
  const auto listener = std::make_shared<LMRTCIWEngineDelegate>(*host);
  listener->onUserJoined = [this](const std::string&, const std::string& userId) {
    trace->add("host destroys at " + userId);
    std::exchange(engine, nullptr)->destroy();
  };
  engine->setEngineDelegate(listener);
  const std::weak_ptr<LMRTCIWEngine> weak = engine;
  replay();
  const std::string text = trace->take();
  EXPECT_NE(std::string::npos, text.find("host destroys at u1\nlog 4 IW/RTC-destroy-T\nsdk unInit\n"))
      << text;
  EXPECT_TRUE(weak.expired());
}

TEST_F(ReentryTest, ALogSinkMayCallBackIntoTheEngine) {
  std::string session = "none";
  LMFwLog::getInstance().setSink([&](const LMFwLogEntry& entry) {
    if (entry.tag == "IW/RTC-leaveRoom-T") session = engine->getSessionId();
  });
  join();
  engine->leaveRoom();
  EXPECT_EQ("session of r1", session);
  LMFwLog::getInstance().setSink([](const LMFwLogEntry&) {});
}

TEST_F(ReentryTest, CompletionsAfterDestroyFindNothingAndAreSilent) {
  const auto info = make<fake::LiveInfo>();
  room->me->nextLiveInfo.set(info);
  join(LMRTCIWRoleLiveBroadcaster);
  engine->publish(0);
  engine->joinRoom("r1", std::make_shared<LMRTCIWRoomSetup>());
  engine->leaveRoom();
  engine->setInnerCDNVideoFps(2);
  const auto kept = engine;
  engine->destroy();
  trace->take();

  complete(0, {"R publish callback:onPublished, code:0, role:1,type:0"});
  EXPECT_EQ(nullptr, kept->liveInfo());
  complete(-1, {"console LMRTCIWEngine joinRoom completion code: -1"});
  complete(0, {"console LMRTCIWEngine leaveRoom code: 0"});
  EXPECT_EQ(-1, kept->innerCDNVideoFps());
}

TEST_F(ReentryTest, CallbacksWithoutAListenerAreSkipped) {
  room->users = {user("u1", {audio("u1")})};
  host = nullptr;
  replay();
  EXPECT_TRACE("console LMRTCIWEngine joinRoom completion code: 0", "sdk r1.setDelegate engine");
}

TEST_F(ReentryTest, ConcurrentFirstCreatesMakeOneEngine) {
  engine->destroy();
  engine = nullptr;
  trace->take();
  std::vector<std::shared_ptr<LMRTCIWEngine>> made(4);
  std::vector<std::thread> threads;
  for (auto& slot : made) threads.emplace_back([&slot, this] { slot = LMRTCIWEngine::create(setup); });
  for (auto& thread : threads) thread.join();
  for (const auto& one : made) EXPECT_EQ(made.front(), one);
  EXPECT_TRACE("T create msg:LMRTCIWEngine create once", "T init msg:LMRTCIWEngine create init",
               "sdk setDelegate engine", "sdk initWithConfig reconnect:0 srtp:0 report:1 mix:1 mismatch:0",
               "console LumoRTCLibWrapper commit: V1.0_20251222171809_master_ef94573");
  engine = made.front();
}

}  // namespace
}  // namespace lumo
