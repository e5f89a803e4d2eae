#include <tuple>

#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

using Role = LumoRTCLocal::Role;
using Invitation = LumoRTCLocal::Participant::Invitation;

/// The host (source 0) and anna are in the live room "r", ben (1) and cleo (2) in the live room "s"; all of
/// them are shown in the colours, and heard in the tones, of their sources.
class LinkedRoomsTest : public CallTest {
 protected:
  LinkedRoomsTest() {
    ben->onInvitation([this](const Invitation& invitation) {
      line(invitation.cancelled ? "ben lost" : "ben got", invitation.roomId, invitation.userId,
           invitation.extra);
    });
    delegate->onJoinSubRoomRequested = recorded("requested");
    delegate->onJoinSubRoomRequestCanceled = recorded("cancelled");
    delegate->onJoinSubRoomRequestResponded = recorded("responded");
    delegate->onJoinSubRoomRequestReceived = recorded("got");
    delegate->onCancelJoinSubRoomRequestReceived = recorded("lost");
    delegate->onJoinSubRoomRequestResponseReceived = recorded("answer");
    delegate->onSubRoomJoined = recorded("joined");
    delegate->onSubRoomLeft = recorded("left");
    delegate->onSubRoomBanded = recorded("linked");
    delegate->onSubRoomDisband = recorded("disbanded");
    delegate->onUserJoined = recorded("user");
    delegate->onUserLeft = recorded("gone");
    delegate->onRemotePublished = recorded("published");
    delegate->onRemoteUnpublished = recorded("unpublished");
    delegate->onRemoteStateChanged = recorded("disabled");
    delegate->onSeiReceived = recorded("sei");
    delegate->onRemoteLiveMixUnpublished = recorded("mix over");
    join(LMRTCIWRoleLiveBroadcaster);
    lines.clear();
  }

  ParticipantPtr broadcaster(const std::string& userId, std::uint32_t source) {
    return local->join("s", userId, {.role = Role::broadcaster, .sourceNumber = source}).participant;
  }
  /// Makes the host join the other room.
  void joinLinked() {
    EXPECT_EQ(0, ben->linkRoom("r"));
    EXPECT_EQ(0, engine->joinSubRoom("s"));
    EXPECT_EQ((Lines{"joined s 0 Success", "linked s", "user s ben", "user s cleo"}), told());
  }
  void goOnTheAir() {
    publish(kBoth);
    EXPECT_EQ(0, engine->subscribeLiveMix(kBoth));
    EXPECT_EQ(0, engine->setLiveMixView(view));
  }
  /// Which of the three the mix shows large or in a grid, and which it lets hear: such as "01 02".
  std::string mixed() {
    advance(300ms);
    speaker = {};
    advance(100ms);
    const auto shown = nativeView(view)->picture();
    if (!shown) return "nothing";
    std::string seen, heard;
    for (std::uint32_t source = 0; source < 3; ++source) {
      int points = 0;
      for (std::int32_t y = 4; y < shown->height(); y += 8) {
        for (const std::int32_t x : {100, 340})
          points += isNear(colorAt(*shown, x, y), testPictureColor(source), 8);
      }
      if (points > 15) seen += std::to_string(source);
      if (toneLevel(speaker.samples, 300 + 100 * source) > 0.1) heard += std::to_string(source);
    }
    return seen + " " + heard;
  }

  const std::shared_ptr<LMRTCIWView> view = LMRTCIWView::create();
  ParticipantPtr anna = local->join("r", "anna", {.role = Role::audience}).participant;
  ParticipantPtr ben = broadcaster("ben", 1);
  ParticipantPtr cleo = broadcaster("cleo", 2);
};

TEST_F(LinkedRoomsTest, InvitationsAreAnsweredTakenBackOrSettledByTheLink) {
  engine->requestJoinSubRoom("s", "ben", false, "hi");
  EXPECT_EQ((Lines{"requested s ben 0 Success", "ben got r me hi"}), told());
  engine->cancelJoinSubRoomRequest("s", "ben", "oh");
  EXPECT_EQ((Lines{"cancelled s ben 0 Success", "ben lost r me oh"}), told());
  EXPECT_EQ(0, ben->invite("r", "me", "hi"));
  EXPECT_EQ(0, ben->cancelInvite("r", "me", "oh"));
  EXPECT_EQ(0, ben->invite("r", "me"));
  engine->responseJoinSubRoomRequest("s", "ben", false, false, "no");
  EXPECT_EQ((Lines{"got s ben hi", "lost s ben oh", "got s ben ", "responded s ben 0 0 Success"}), told());

  engine->requestJoinSubRoom("s", "ben", false, "");
  EXPECT_EQ(0, cleo->invite("r", "me", "me too"));
  told();
  EXPECT_EQ(0, ben->answer("r", "me", true, "yes"));
  EXPECT_EQ((Lines{"answer s ben 1 yes", "lost s cleo "}), told());
  EXPECT_EQ(0, ben->unlinkRoom("r"));
  engine->requestJoinSubRoom("s", "cleo", false, "");
  told();
  cleo->goOffline();
  EXPECT_EQ((Lines{"answer s cleo 0 "}), told()) << "it ends with either end";
}

TEST_F(LinkedRoomsTest, WhatIsNotPossibleIsRefused) {
  const auto expectRefused = [this](LocalCode code, std::int64_t accepted) {
    EXPECT_EQ(0, accepted);
    const std::string all = ::testing::PrintToString(told());
    EXPECT_NE(std::string::npos, all.find(" " + std::to_string(code) + " ")) << code << " in " << all;
  };
  expectRefused(LocalCodeOwnRoom, engine->requestJoinSubRoom("r", "anna", true, ""));
  expectRefused(LocalCodeUnknownRoom, engine->requestJoinSubRoom("x", "ben", true, ""));
  expectRefused(LocalCodeNoInvitation, engine->cancelJoinSubRoomRequest("s", "cleo", ""));
  expectRefused(LocalCodeNotLinked, engine->joinSubRoom("s"));
  expectRefused(LocalCodeOtherRoomNotJoined, engine->leaveSubRoom("s", true));
  joinLinked();
  expectRefused(LocalCodeAlreadyLinked, engine->requestJoinSubRoom("s", "ben", true, ""));
  expectRefused(LocalCodeOtherRoomJoined, engine->joinSubRoom("s"));
}

TEST_F(LinkedRoomsTest, TheOtherRoomIsSeenAndHeardAsLongAsTheLinkLasts) {
  Receiver visitor;
  ben->onVideo(visitor.sink());
  publish(kVideo);
  EXPECT_EQ(LocalCodeNotLinked, ben->visit("r"));
  EXPECT_EQ(0, ben->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo));
  EXPECT_EQ(0, ben->linkRoom("r"));
  EXPECT_EQ(0, ben->visit("r"));
  engine->joinSubRoom("s");
  EXPECT_EQ((Lines{"joined s 0 Success", "linked s", "user s ben", "published s ben 2", "disabled s ben 0 0",
                   "disabled s ben 1 0", "user s cleo"}),
            told());
  EXPECT_EQ(0, engine->subscribe("ben", kBoth));
  EXPECT_EQ(0, engine->setRemoteViewWithViewDelegate(view, "ben"));
  advance(100ms);
  EXPECT_EQ(1u, readingOf(nativeView(view)->picture()).sourceNumber);
  speaker = {};
  advance(100ms);
  EXPECT_EQ("10", speaker.tenths(400));
  EXPECT_LT(0, visitor.frames) << "those in the other room may visit as well";

  ben->mute(true);
  ben->sendSei("words");
  advance(100ms);
  cleo->publishVideo();
  cleo->leave();
  EXPECT_EQ((Lines{"disabled s ben 0 1", "sei s ben words", "published s cleo 1", "disabled s cleo 1 0",
                   "unpublished s cleo 1", "gone s cleo"}),
            told());
  engine->leaveSubRoom("s", true);
  EXPECT_EQ((Lines{"left s 0 Success"}), told());
  EXPECT_NE(0, engine->subscribe("ben", kBoth)) << "nobody knows ben any more";
  visitor.frames = 0;
  advance(100ms);
  EXPECT_EQ(0, visitor.frames);

  ben->unpublish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  cleo = broadcaster("cleo", 2);
  joinLinked();
  cleo->leave();
  ben->leave();
  EXPECT_EQ((Lines{"gone s cleo", "gone s ben", "disbanded s ben", "left s 0 Success"}), told());
}

TEST_F(LinkedRoomsTest, EachEndDecidesForTheMixOfItsRoom) {
  goOnTheAir();
  EXPECT_EQ(0, engine->setLiveMixLayoutMode(3));
  ben->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  for (const auto& [hostInvites, hostAsks, benAsks] :
       {std::tuple(true, true, false), {true, false, true}, {false, true, false}, {false, false, true}}) {
    if (hostInvites) engine->requestJoinSubRoom("s", "ben", hostAsks, "");
    if (!hostInvites) ben->invite("r", "me", "", benAsks);
    advance(0us);
    if (hostInvites) ben->answer("r", "me", true, "", benAsks);
    if (!hostInvites) engine->responseJoinSubRoomRequest("s", "ben", true, hostAsks, "");
    EXPECT_EQ(hostAsks ? "01 01" : "0 0", mixed());
    EXPECT_EQ(0, cleo->unlinkRoom("r"));
    EXPECT_EQ("0 0", mixed());
  }
}

TEST_F(LinkedRoomsTest, TheMixFollowsWhatTheLinkedRoomPublishes) {
  goOnTheAir();
  EXPECT_EQ(0, anna->linkRoom("s", true));
  run(
      {
          {"ben", [&] { ben->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo); }, "0 01"},
          {"in a grid", [&] { engine->setLiveMixLayoutMode(3); }, "01 01"},
          {"cleo's camera", [&] { cleo->publishVideo(); }, "012 01"},
          {"ben's camera is off", [&] { ben->disableVideo(true); }, "02 01"},
          {"cleo only listens", [&] { cleo->switchRole(Role::audience); }, "0 01"},
          {"ben has left", [&] { ben->leave(); }, "0 0"},
          {"so has cleo", [&] { cleo->leave(); }, "0 0"},
          {"cleo is back", [&] { cleo = broadcaster("cleo", 2); }, "0 0"},
          {"an empty room has ended the link", [&] { cleo->publishVideo(); }, "0 0"},
          {"another link", [&] { anna->linkRoom("s", true); }, "02 0"},
          {"without the own camera", [&] { engine->unpublish(kVideo); }, "2 0"},
      },
      [this] { return mixed(); });
  told();
  EXPECT_EQ(0, engine->unpublish(kAudio));
  advance(100ms);
  EXPECT_EQ((Lines{"mix over 2"}), told()) << "guests do not keep it";
  EXPECT_EQ(100u, local->advance(1s)) << "nothing runs but the speaker's clock";
}

}  // namespace
}  // namespace lumo::test
