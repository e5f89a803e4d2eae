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

TEST_F(ReentryTest, AListenerThatReplacesItselfLivesUntilItsCallbackReturns) {
  room->users = {user("u1")};
  auto first = std::make_shared<LMRTCIWEngineDelegate>();
  const std::string text = "captured by the callback, long enough for the heap";
  first->onRoomJoined = [this, &first, text](std::int64_t, const std::string&) {
    first = nullptr;
    listen();
    trace->add(text);
  };
  engine->setEngineDelegate(first);
  replay();
  EXPECT_TRACE("console LMRTCIWEngine joinRoom completion code: 0", "sdk r1.setDelegate engine", text,
               "console LMRTCIWEngine joinRoom completion remoteUser Joined: r1 userId: u1",
               "host onUserJoined r1 u1");
}

TEST_F(ReentryTest, AViewMayCallBackIntoTheEngine) {
  class Unbinding : public RecordingView {
   public:
    Unbinding(std::shared_ptr<Trace> lines, LMRTCIWEngine& owner)
        : RecordingView(std::move(lines), "v"), owner_(owner) {}
    void setRemoteView(const std::shared_ptr<LMRTCVideoInputStream>&) override {
      owner_.removeRemoteView("u1");
    }

   private:
    LMRTCIWEngine& owner_;
  };
  room->users = {user("u1")};
  join();
  engine->setRemoteViewWithViewDelegate(std::make_shared<Unbinding>(trace, *engine), "u1");
  EXPECT_TRACE("T setRemoteViewWithViewDelegate userId:u1", "T getRemoteUser userId:u1",
               "T removeRemoteView userId:u1", "E removeRemoteView msg:view is nil",
               "view v removeRemoteView");
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

TEST_F(ReentryTest, OperationsEventsAndDestroyMayOverlap) {
  constexpr int kRounds = 200;
  const Inputs streams = {audio("u1"), video("u1")};
  room->users = {user("u1", streams)};
  join(LMRTCIWRoleLiveBroadcaster);
  const auto events = room->events();
  const auto shared = engine;
  const auto listener = host;

  std::vector<std::function<void(int)>> jobs = {
      [&](int) { events->didPublishStreams(streams); },
      [&](int) { sdk->complete(); },
      [&](int i) { shared->publish(i % 3); },
      [&](int) { shared->setRemoteViewWithViewDelegate(view("v"), "u1"); },
      [&](int) { shared->removeRemoteView("u1"); },
      [&](int i) { shared->joinRoom("r1", i % 2 ? std::make_shared<LMRTCIWRoomSetup>() : nullptr); },
      [&](int i) {
        shared->setEngineDelegate(i % 2 ? listener : std::make_shared<LMRTCIWEngineDelegate>(*listener));
      },
      [&](int i) {
        if (i == kRounds / 2) shared->destroy();
      },
  };
  std::vector<std::thread> threads;
  for (const auto& job : jobs) {
    threads.emplace_back([&job] {
      for (int i = 0; i < kRounds; ++i) job(i);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(nullptr, shared->rtcEngine());
  EXPECT_EQ(LMRTCWrapperCodeLocalUserNotJoined, shared->publish(0));
}

}  // namespace
}  // namespace lumo
