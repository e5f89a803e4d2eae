#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

class SubRoomTest : public EngineTest {
 protected:
  std::shared_ptr<fake::OtherRoom> sub = make<fake::OtherRoom>("r2");
};

TEST_F(SubRoomTest, TheHandshakePassesThroughAndReportsItsOutcome) {
  const std::string request = " roomId:r2,userId:u2,autoLayout:1,extra:hi";
  const std::string cancel = " roomId:r2,userId:u2,extra:no";
  const std::string response = " roomId:r2,userId:u2,agree:1,autoLayout:0,extra:ok";
  expect(kNotJoined, engine->requestJoinSubRoom("r2", "u2", true, "hi"),
         {"T requestJoinSubRoom" + request, kNoSetup});
  join();
  expect(0, engine->requestJoinSubRoom("r2", "u2", true, "hi"),
         {"T requestJoinSubRoom" + request, "-> requestJoinOtherRoom r2 u2 1 hi"});
  answer(4, "requestJoinSubRoom onJoinSubRoomRequested" + request, "r2 u2");
  expect(0, engine->cancelJoinSubRoomRequest("r2", "u2", "no"),
         {"T cancelJoinSubRoomRequest" + cancel, "-> cancelRequestJoinOtherRoom r2 u2 no"});
  answer(0, "cancelJoinSubRoomRequest onJoinSubRoomRequestCanceled" + cancel, "r2 u2");
  expect(0, engine->responseJoinSubRoomRequest("r2", "u2", true, false, "ok"),
         {"T responseJoinSubRoomRequest" + response, "-> responseJoinOtherRoom r2 u2 1 0 ok"});
  answer(4, "responseJoinSubRoomRequest onJoinSubRoomRequestResponded" + response, "r2 u2 1");
}

TEST_F(SubRoomTest, JoiningAnnouncesWhatTheSubRoomHoldsAndLeavingForgetsIt) {
  join();
  sub->users = {user("u2", {audio("u2")})};
  sdk->engine->nextOtherRoom.set(sub);
  expect(0, engine->joinSubRoom("r2"), {"T joinSubRoom roomId:r2", "-> joinOtherRoom r2"});
  const std::string replayed = "C joinRoom completion ";
  complete(0,
           {"C joinSubRoom completion code: 0", "-> r2.setDelegate engine", "host onSubRoomJoined r2 0 ok",
            "R joinSubRoom callback:onSubRoomBanded, code:0, roomId:r2", "host onSubRoomBanded r2",
            replayed + "remoteUser Joined: r2 userId: u2", "host onUserJoined r2 u2",
            replayed + "remoteUsers Published: r2 userId: u2 mediaType: 0", "host onRemotePublished r2 u2 0",
            replayed + "remoteUsers State Changed: r2 userId: u2 mediaType: 0 disabled: 0",
            "host onRemoteStateChanged r2 u2 0 0"});
  expect(0, engine->leaveSubRoom("r2", true),
         {"T leaveSubRoom roomId:r2,disband:1", "-> leaveOtherRoom r2 1"});
  answer(3, "leaveSubRoom onSubRoomLeft roomId:r2,disband:1", "r2");
  engine->leaveSubRoom("r2", false);
  complete(0, {"R leaveSubRoom callback:onSubRoomLeft, code:0, roomId:r2,disband:0",
               "host onSubRoomLeft r2 0 ok", "-> r2.setDelegate nil"});
  sdk->engine->nextOtherRoom.set(nullptr);
  engine->joinSubRoom("r3");
  complete(9, {"C joinSubRoom completion code: 9", "host onSubRoomJoined r3 9 sdk9"});
}

TEST_F(SubRoomTest, InvitationsAnswersAndDisbandingReachTheHost) {
  const auto events = sdk->engine->events();
  const std::string console = "C did";
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
      {"r1", "me", "r2", "me", true, ""},
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
                 std::string("-> leaveOtherRoom r2 0") + (joined ? "\n-> r2.setDelegate nil" : ""));
    answer(0, "leaveSubRoom onSubRoomLeft roomId:r2,disband:0", "r2");
  }
}

}  // namespace
}  // namespace lumo
