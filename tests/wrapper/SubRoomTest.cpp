#include <functional>

#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

const std::string kNoRoom = " msg:room is nil or localUser is nil or iwRoomSetup is nil";

class SubRoomTest : public EngineTest {
 protected:
  void TearDown() override {
    sub = nullptr;
    sdk->engine->nextOtherRoom.set(nullptr);
    EngineTest::TearDown();
  }
  std::shared_ptr<fake::OtherRoom> sub = make<fake::OtherRoom>("r2");
};

TEST_F(SubRoomTest, TheHandshakePassesThroughAndReportsItsOutcome) {
  using Engine = LMRTCIWEngine;
  struct Call {
    std::function<std::int64_t(Engine&)> call;
    std::string method, keys, sent, callback, values;
  };
  const std::vector<Call> calls = {
      {[](Engine& e) { return e.requestJoinSubRoom("r2", "u2", true, "hi"); }, "requestJoinSubRoom",
       "roomId:r2,userId:u2,autoLayout:1,extra:hi", "requestJoinOtherRoom r2 u2 1 hi",
       "onJoinSubRoomRequested", "r2 u2"},
      {[](Engine& e) { return e.cancelJoinSubRoomRequest("r2", "u2", "no"); }, "cancelJoinSubRoomRequest",
       "roomId:r2,userId:u2,extra:no", "cancelRequestJoinOtherRoom r2 u2 no", "onJoinSubRoomRequestCanceled",
       "r2 u2"},
      {[](Engine& e) { return e.responseJoinSubRoomRequest("r2", "u2", true, false, "ok"); },
       "responseJoinSubRoomRequest", "roomId:r2,userId:u2,agree:1,autoLayout:0,extra:ok",
       "responseJoinOtherRoom r2 u2 1 0 ok", "onJoinSubRoomRequestResponded", "r2 u2 1"},
  };
  for (const auto& c : calls) {
    expect(LMRTCWrapperCodeLocalUserNotJoined, c.call(*engine),
           {"T " + c.method + " " + c.keys, "E " + c.method + kNoRoom});
  }
  join();
  for (const auto& c : calls) {
    for (const std::int64_t code : {0, 4}) {
      expect(0, c.call(*engine), {"T " + c.method + " " + c.keys, "sdk " + c.sent});
      expect(true, sdk->complete(code),
             {(code == 0 ? "R " : "E ") + c.method + " callback:" + c.callback +
                  ", code:" + std::to_string(code) + ", " + c.keys,
              "host " + c.callback + " " + c.values + (code == 0 ? " 0 ok" : " 4 sdk4")});
    }
  }
  engine->setIwRoomSetup(nullptr);
  EXPECT_EQ(LMRTCWrapperCodeLocalUserNotJoined, calls[0].call(*engine));
}

TEST_F(SubRoomTest, JoiningAnnouncesWhatTheSubRoomHoldsAndLeavingForgetsIt) {
  join();
  sub->users = {user("u2", {audio("u2")})};
  sdk->engine->nextOtherRoom.set(sub);
  expect(0, engine->joinSubRoom("r2"), {"T joinSubRoom roomId:r2", "sdk joinOtherRoom r2"});
  expect(true, sdk->complete(),
         {"console LMRTCIWEngine joinSubRoom completion code: 0", "sdk r2.setDelegate engine",
          "host onSubRoomJoined r2 0 ok", "R joinSubRoom callback:onSubRoomBanded, code:0, roomId:r2",
          "host onSubRoomBanded r2",
          "console LMRTCIWEngine joinRoom completion remoteUser Joined: r2 userId: u2",
          "host onUserJoined r2 u2",
          "console LMRTCIWEngine joinRoom completion remoteUsers Published: r2 userId: u2 mediaType: 0",
          "host onRemotePublished r2 u2 0",
          "console LMRTCIWEngine joinRoom completion remoteUsers State Changed: r2 userId: u2 mediaType: 0 "
          "disabled: 0",
          "host onRemoteStateChanged r2 u2 0 0"});
  EXPECT_TRUE(engine->getRemoteUser("u2"));
  trace->take();
  expect(0, engine->leaveSubRoom("r2", true),
         {"T leaveSubRoom roomId:r2,disband:1", "sdk leaveOtherRoom r2 1"});
  expect(
      true, sdk->complete(3),
      {"E leaveSubRoom callback:onSubRoomLeft, code:3, roomId:r2,disband:1", "host onSubRoomLeft r2 3 sdk3"});
  EXPECT_TRUE(engine->subs().contains("r2"));
  engine->leaveSubRoom("r2", false);
  trace->take();
  expect(true, sdk->complete(),
         {"R leaveSubRoom callback:onSubRoomLeft, code:0, roomId:r2,disband:0", "host onSubRoomLeft r2 0 ok",
          "sdk r2.setDelegate nil"});
  EXPECT_TRUE(engine->subs().empty());

  sdk->engine->nextOtherRoom.set(nullptr);
  engine->joinSubRoom("r3");
  trace->take();
  expect(true, sdk->complete(9),
         {"console LMRTCIWEngine joinSubRoom completion code: 9", "host onSubRoomJoined r3 9 sdk9"});
  engine->setRtcEngine(nullptr);
  expect(LMRTCWrapperCodeEngineDestroyed, engine->joinSubRoom("r2"),
         {"T joinSubRoom roomId:r2", "E joinSubRoom msg:rtcEngine is nil"});
  expect(LMRTCWrapperCodeEngineDestroyed, engine->leaveSubRoom("r2", true),
         {"T leaveSubRoom roomId:r2,disband:1", "E leaveSubRoom msg:rtcEngine is nil"});
}

TEST_F(SubRoomTest, InvitationsAnswersAndDisbandingReachTheHost) {
  const auto events = sdk->engine->events();
  events->didRequestJoinOtherRoom("r2", "u2", "x");
  EXPECT_TRACE("console LMRTCIWEngine didRequestJoinOtherRoom: r2 inviterUserId: u2 extra: x",
               "L onJoinSubRoomRequestReceived inviterRoomId:r2,inviterUserId:u2,extra:x",
               "host onJoinSubRoomRequestReceived r2 u2 x");
  events->didCancelRequestOtherRoom("r2", "u2", "x");
  EXPECT_TRACE("console LMRTCIWEngine didCancelRequestOtherRoom: r2 inviterUserId: u2 extra: x",
               "L onCancelJoinSubRoomRequestReceived inviterRoomId:r2,inviterUserId:u2,extra:x",
               "host onCancelJoinSubRoomRequestReceived r2 u2 x");
  const auto answer = [&](const std::string& inviterRoom, const std::string& inviter,
                          const std::string& inviteeRoom, const std::string& invitee, bool agree,
                          std::vector<std::string> lines) {
    SCOPED_TRACE(inviter + invitee);
    lines.insert(lines.begin(), "console LMRTCIWEngine didCancelRequestOtherRoom: " + inviterRoom +
                                    " inviterUserId: " + inviter + " inviteeRoomId: " + inviteeRoom +
                                    " inviteeUserId: " + invitee + " agree: " + (agree ? "1" : "0") +
                                    " extra: x");
    events->didResponseJoinOtherRoom(inviterRoom, inviter, inviteeRoom, invitee, agree, "x");
    EXPECT_EQ(Trace::text(lines), trace->take());
  };
  answer("r1", "me", "r2", "u2", true,
         {"E stream:didResponseJoinOtherRoom msg:room is nil or localUser is nil"});
  join();
  const auto response = [](const std::string& agree) {
    return std::vector<std::string>{
        "L onJoinSubRoomRequestResponseReceived inviteeRoomId:r2,inviteeUserId:u2,agree:" + agree +
            ",extra:x",
        "host onJoinSubRoomRequestResponseReceived r2 u2 " + agree + " x"};
  };
  answer("r1", "me", "r2", "u2", true, response("1"));
  answer("r1", "u1", "r2", "u2", false, response("0"));
  answer("r2", "u2", "r1", "me", true, {});
  answer("r1", "u1", "r2", "u2", true, {"L onSubRoomBanded roomId:r2", "host onSubRoomBanded r2"});
  answer("r2", "u2", "r1", "u1", true, {"L onSubRoomBanded roomId:r2", "host onSubRoomBanded r2"});

  engine->setSubs({{"r2", sub}});
  for (const bool joined : {true, false}) {
    events->didFinishOtherRoom("r2", "u2");
    std::vector<std::string> lines = {"console LMRTCIWEngine didFinishOtherRoom: r2 userId: u2",
                                      "host onSubRoomDisband r2 u2", "T leaveSubRoom roomId:r2,disband:0",
                                      "sdk leaveOtherRoom r2 0"};
    if (joined) lines.emplace_back("sdk r2.setDelegate nil");
    EXPECT_EQ(Trace::text(lines), trace->take());
    expect(
        true, sdk->complete(),
        {"R leaveSubRoom callback:onSubRoomLeft, code:0, roomId:r2,disband:0", "host onSubRoomLeft r2 0 ok"});
  }
}

}  // namespace
}  // namespace lumo
