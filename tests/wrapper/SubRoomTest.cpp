#include <functional>

#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

class SubRoomTest : public EngineTest {
 protected:
  std::shared_ptr<fake::OtherRoom> sub = make<fake::OtherRoom>("r2");
};

TEST_F(SubRoomTest, TheHandshakePassesThroughAndReportsItsOutcome) {
  using Engine = LMRTCIWEngine;
  struct Call {
    std::function<std::int64_t(Engine&)> call;
    std::string entry, sent, callback, values;
  };
  const std::vector<Call> calls = {
      {[](Engine& e) { return e.requestJoinSubRoom("r2", "u2", true, "hi"); },
       "requestJoinSubRoom roomId:r2,userId:u2,autoLayout:1,extra:hi", "requestJoinOtherRoom r2 u2 1 hi",
       " onJoinSubRoomRequested", "r2 u2"},
      {[](Engine& e) { return e.cancelJoinSubRoomRequest("r2", "u2", "no"); },
       "cancelJoinSubRoomRequest roomId:r2,userId:u2,extra:no", "cancelRequestJoinOtherRoom r2 u2 no",
       " onJoinSubRoomRequestCanceled", "r2 u2"},
      {[](Engine& e) { return e.responseJoinSubRoomRequest("r2", "u2", true, false, "ok"); },
       "responseJoinSubRoomRequest roomId:r2,userId:u2,agree:1,autoLayout:0,extra:ok",
       "responseJoinOtherRoom r2 u2 1 0 ok", " onJoinSubRoomRequestResponded", "r2 u2 1"},
  };
  refuse(kNotJoined, calls, kNoSetup);
  join();
  for (const auto& c : calls) {
    for (const std::int64_t code : {0, 4}) {
      expect(0, c.call(*engine), {"T " + c.entry, "sdk " + c.sent});
      answer(code, std::string(c.entry).insert(c.entry.find(' '), c.callback), c.values);
    }
  }
  engine->setIwRoomSetup(nullptr);
  refuse(kNotJoined, calls, kNoSetup);
}

TEST_F(SubRoomTest, JoiningAnnouncesWhatTheSubRoomHoldsAndLeavingForgetsIt) {
  join();
  sub->users = {user("u2", {audio("u2")})};
  sdk->engine->nextOtherRoom.set(sub);
  expect(0, engine->joinSubRoom("r2"), {"T joinSubRoom roomId:r2", "sdk joinOtherRoom r2"});
  const std::string replayed = "console LMRTCIWEngine joinRoom completion ";
  complete(
      0, {"console LMRTCIWEngine joinSubRoom completion code: 0", "sdk r2.setDelegate engine",
          "host onSubRoomJoined r2 0 ok", "R joinSubRoom callback:onSubRoomBanded, code:0, roomId:r2",
          "host onSubRoomBanded r2", replayed + "remoteUser Joined: r2 userId: u2", "host onUserJoined r2 u2",
          replayed + "remoteUsers Published: r2 userId: u2 mediaType: 0", "host onRemotePublished r2 u2 0",
          replayed + "remoteUsers State Changed: r2 userId: u2 mediaType: 0 disabled: 0",
          "host onRemoteStateChanged r2 u2 0 0"});
  EXPECT_TRUE(engine->getRemoteUser("u2"));
  trace->take();
  expect(0, engine->leaveSubRoom("r2", true),
         {"T leaveSubRoom roomId:r2,disband:1", "sdk leaveOtherRoom r2 1"});
  answer(3, "leaveSubRoom onSubRoomLeft roomId:r2,disband:1", "r2");
  EXPECT_TRUE(engine->subs().contains("r2"));
  engine->leaveSubRoom("r2", false);
  complete(0, {"R leaveSubRoom callback:onSubRoomLeft, code:0, roomId:r2,disband:0",
               "host onSubRoomLeft r2 0 ok", "sdk r2.setDelegate nil"});
  EXPECT_TRUE(engine->subs().empty());

  sdk->engine->nextOtherRoom.set(nullptr);
  engine->joinSubRoom("r3");
  complete(9, {"console LMRTCIWEngine joinSubRoom completion code: 9", "host onSubRoomJoined r3 9 sdk9"});
  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->joinSubRoom("r2"), {"T joinSubRoom roomId:r2", kNoEngine});
  expect(kDestroyed, engine->leaveSubRoom("r2", true), {"T leaveSubRoom roomId:r2,disband:1", kNoEngine});
}

TEST_F(SubRoomTest, InvitationsAnswersAndDisbandingReachTheHost) {
  const auto events = sdk->engine->events();
  const std::string console = "console LMRTCIWEngine did";
  events->didRequestJoinOtherRoom("r2", "u2", "x");
  EXPECT_TRACE(console + "RequestJoinOtherRoom: r2 inviterUserId: u2 extra: x",
               "L onJoinSubRoomRequestReceived inviterRoomId:r2,inviterUserId:u2,extra:x",
               "host onJoinSubRoomRequestReceived r2 u2 x");
  events->didCancelRequestOtherRoom("r2", "u2", "x");
  EXPECT_TRACE(console + "CancelRequestOtherRoom: r2 inviterUserId: u2 extra: x",
               "L onCancelJoinSubRoomRequestReceived inviterRoomId:r2,inviterUserId:u2,extra:x",
               "host onCancelJoinSubRoomRequestReceived r2 u2 x");
  struct Answer {
    std::string inviterRoom, inviter, inviteeRoom, invitee;
    bool agree;
    std::string outcome;
  };
  const std::string response =
      "\nL onJoinSubRoomRequestResponseReceived inviteeRoomId:r2,inviteeUserId:u2,agree:";
  const std::string heard = ",extra:x\nhost onJoinSubRoomRequestResponseReceived r2 u2 ";
  const std::string banded = "\nL onSubRoomBanded roomId:r2\nhost onSubRoomBanded r2";
  const std::vector<Answer> answers = {
      {"r1", "me", "r2", "u2", true,
       "\nE stream:didResponseJoinOtherRoom msg:room is nil or localUser is nil"},
      {"r1", "me", "r2", "u2", true, response + "1" + heard + "1 x"},
      {"r1", "u1", "r2", "u2", false, response + "0" + heard + "0 x"},
      {"r2", "u2", "r1", "me", true, ""},
      {"r1", "u1", "r2", "u2", true, banded},
      {"r2", "u2", "r1", "u1", true, banded}};
  for (const auto& a : answers) {
    events->didResponseJoinOtherRoom(a.inviterRoom, a.inviter, a.inviteeRoom, a.invitee, a.agree, "x");
    EXPECT_EQ(Trace::text({console +
                           format("CancelRequestOtherRoom: %@ inviterUserId: %@ inviteeRoomId: %@ "
                                  "inviteeUserId: %@ agree: %@ extra: x",
                                  {a.inviterRoom, a.inviter, a.inviteeRoom, a.invitee, a.agree}) +
                           a.outcome}),
              trace->take());
    if (!engine->room()) join();
  }
  engine->setSubs({{"r2", sub}});
  for (const bool joined : {true, false}) {
    events->didFinishOtherRoom("r2", "u2");
    EXPECT_TRACE(console + "FinishOtherRoom: r2 userId: u2", "host onSubRoomDisband r2 u2",
                 "T leaveSubRoom roomId:r2,disband:0",
                 std::string("sdk leaveOtherRoom r2 0") + (joined ? "\nsdk r2.setDelegate nil" : ""));
    answer(0, "leaveSubRoom onSubRoomLeft roomId:r2,disband:0", "r2");
  }
}

}  // namespace
}  // namespace lumo
