#include <atomic>
#include <semaphore>
#include <thread>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "LumoRTCLocal/server/LocalCodes.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

using Lines = std::vector<std::string>;

using Invitation = LumoRTCLocal::Participant::Invitation;

/// The host is in room "r" with anna; ben and cleo are in room "s".
class LinkedRoomsTest : public CallTest, protected LineRecorder {
 protected:
  LinkedRoomsTest() {
    ben->onInvitation([this](const Invitation& invitation) {
      line(invitation.cancelled ? "ben lost" : "ben got", invitation.roomId, invitation.userId,
           invitation.extra);
    });
    recordHandshake();
    recordRooms();
    engine->setEngineDelegate(delegate);
    join();
    lines.clear();
  }
  ~LinkedRoomsTest() override { ben->onInvitation({}); }

  void recordHandshake() {
    delegate->onJoinSubRoomRequested = [this](auto& room, auto& user, auto code, auto& text) {
      EXPECT_EQ(text, LMRTCCodeDefine::codeDesc(code));
      line("requested", room, user, code);
    };
    delegate->onJoinSubRoomRequestCanceled = [this](auto& room, auto& user, auto code, auto&) {
      line("cancelled", room, user, code);
    };
    delegate->onJoinSubRoomRequestResponded = [this](auto& room, auto& user, bool agree, auto code, auto&) {
      line("responded", room, user, agree, code);
    };
    delegate->onJoinSubRoomRequestReceived = [this](auto&&... all) { line("got", all...); };
    delegate->onCancelJoinSubRoomRequestReceived = [this](auto&&... all) { line("lost", all...); };
    delegate->onJoinSubRoomRequestResponseReceived = [this](auto&&... all) { line("answer", all...); };
  }
  void recordRooms() {
    delegate->onSubRoomJoined = [this](auto& room, auto code, auto&) { line("joined", room, code); };
    delegate->onSubRoomLeft = [this](auto& room, auto code, auto&) { line("left", room, code); };
    delegate->onSubRoomBanded = [this](auto& room) { line("linked", room); };
    delegate->onSubRoomDisband = [this](auto&&... all) { line("disbanded", all...); };
    delegate->onUserJoined = [this](auto&&... all) { line("user", all...); };
    delegate->onUserLeft = [this](auto&&... all) { line("user gone", all...); };
    delegate->onUserOffline = [this](auto&&... all) { line("user offline", all...); };
    delegate->onRemotePublished = [this](auto&&... all) { line("published", all...); };
    delegate->onRemoteUnpublished = [this](auto&&... all) { line("unpublished", all...); };
    delegate->onRemoteStateChanged = [this](auto&&... all) { line("disabled", all...); };
    delegate->onRemoteFirstFrame = [this](auto&&... all) { line("first frame", all...); };
    delegate->onSubscribed = [this](auto& user, auto type, auto code, auto&) {
      line("subscribed", user, type, code);
    };
    delegate->onSeiReceived = [this](auto&&... all) { line("sei", all...); };
    delegate->onKicked = [this](auto& room, auto&) { line("kicked", room); };
  }

  /// What has been told since the last call.
  Lines told() {
    advance(0us);
    return std::exchange(lines, {});
  }
  ParticipantPtr addTo(const std::string& roomId, const std::string& userId) {
    const auto participant = local->join(roomId, userId).participant;
    advance(0us);
    return participant;
  }
  /// Links the two rooms and makes the host join the other one.
  void joinLinked() {
    EXPECT_EQ(0, ben->linkRoom("r"));
    EXPECT_EQ(0, engine->joinSubRoom("s"));
    EXPECT_EQ((Lines{"joined s 0", "linked s", "user s ben", "user s cleo"}), told());
  }
  std::int64_t codeOf(std::int64_t accepted) {
    EXPECT_EQ(0, accepted);
    const auto answers = told();
    EXPECT_EQ(1u, answers.size());
    return answers.empty() ? -1 : std::stoll(answers.back().substr(answers.back().rfind(' ')));
  }

  ParticipantPtr anna = add("anna");
  ParticipantPtr ben = addTo("s", "ben");
  ParticipantPtr cleo = addTo("s", "cleo");
};

TEST_F(LinkedRoomsTest, TheHostInvites) {
  engine->requestJoinSubRoom("s", "ben", false, "hi");
  EXPECT_EQ((Lines{"requested s ben 0", "ben got r me hi"}), told());
  engine->cancelJoinSubRoomRequest("s", "ben", "oh");
  EXPECT_EQ((Lines{"cancelled s ben 0", "ben lost r me oh"}), told());

  engine->requestJoinSubRoom("s", "ben", false, "again");
  told();
  EXPECT_EQ(0, ben->answer("r", "me", false, "no"));
  EXPECT_EQ((Lines{"answer s ben 0 no"}), told());

  engine->requestJoinSubRoom("s", "ben", false, "please");
  EXPECT_EQ(0, cleo->invite("r", "me", "me too"));
  EXPECT_EQ((Lines{"requested s ben 0", "got s cleo me too", "ben got r me please"}), told());
  EXPECT_EQ(0, ben->answer("r", "me", true, "yes"));
  EXPECT_EQ((Lines{"answer s ben 1 yes", "lost s cleo "}), told()) << "the link settles all invitations";
}

TEST_F(LinkedRoomsTest, TheHostIsInvited) {
  EXPECT_EQ(0, ben->invite("r", "me", "hi"));
  EXPECT_EQ(0, ben->cancelInvite("r", "me", "oh"));
  EXPECT_EQ((Lines{"got s ben hi", "lost s ben oh"}), told());
  EXPECT_EQ(0, ben->invite("r", "me"));
  engine->responseJoinSubRoomRequest("s", "ben", true, false, "yes");
  EXPECT_EQ((Lines{"got s ben ", "responded s ben 1 0"}), told());
}

TEST_F(LinkedRoomsTest, ThirdMembersHearOfTheOtherRoom) {
  EXPECT_EQ(0, ben->invite("r", "anna"));
  EXPECT_EQ(0, anna->answer("s", "ben", true));
  EXPECT_EQ((Lines{"linked s"}), told());

  engine->leaveRoom();
  join();
  EXPECT_EQ((Lines{"linked s", "user r anna"}), told()) << "who comes later is told too";
}

TEST_F(LinkedRoomsTest, AnInvitationEndsWithEitherEnd) {
  EXPECT_EQ(0, ben->invite("r", "me"));
  ben->leave();
  EXPECT_EQ((Lines{"got s ben ", "lost s ben "}), told());
  engine->requestJoinSubRoom("s", "cleo", false, "");
  EXPECT_EQ((Lines{"requested s cleo 0"}), told());
  cleo->goOffline();  // and with it the room
  EXPECT_EQ((Lines{"answer s cleo 0 "}), told());
}

TEST_F(LinkedRoomsTest, TheOtherRoomIsSeenAndHeard) {
  SoundMeter heard;
  local->setSpeaker([&heard](const AudioBlock& block, Microseconds) { heard.add(block); });
  ben->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  ben->linkRoom("r");
  engine->joinSubRoom("s");
  EXPECT_EQ((Lines{"joined s 0", "linked s", "user s ben", "published s ben 2", "disabled s ben 0 0",
                   "disabled s ben 1 0", "user s cleo"}),
            told());

  const auto view = LMRTCIWView::create();
  EXPECT_EQ(0, engine->subscribe("ben", kBoth));
  EXPECT_EQ(0, engine->setRemoteViewWithViewDelegate(view, "ben"));
  advance(100ms);
  EXPECT_EQ((Lines{"subscribed ben 2 0", "first frame s ben 1", "first frame s ben 0"}), told());
  const auto shown = std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView())->picture();
  ASSERT_TRUE(shown);
  EXPECT_EQ(ben->sourceNumber(), readTestPicture(*shown)->sourceNumber);
  heard = {};
  advance(100ms);
  EXPECT_EQ("10", heard.tenths(300 + 100 * ben->sourceNumber(), 0.2));

  ben->mute(true);
  ben->sendSei("words");
  advance(100ms);
  cleo->publishVideo();
  addTo("s", "dora")->goOffline();
  cleo->leave();
  EXPECT_EQ((Lines{"disabled s ben 0 1", "sei s ben words", "published s cleo 1", "disabled s cleo 1 0",
                   "user s dora", "user offline s dora", "unpublished s cleo 1", "user gone s cleo"}),
            told());

  engine->leaveSubRoom("s", false);
  EXPECT_EQ((Lines{"left s 0"}), told());
  EXPECT_NE(0, engine->subscribe("ben", kBoth)) << "nobody knows ben any more";
  engine->joinSubRoom("s");
  EXPECT_EQ("joined s 0", told().front()) << "the link has stayed";
  engine->removeRemoteView("ben");
}

TEST_F(LinkedRoomsTest, ALinkEndsForEverybody) {
  joinLinked();
  EXPECT_EQ(0, anna->unlinkRoom("s"));
  EXPECT_EQ((Lines{"disbanded s anna", "left s 0"}), told());
  EXPECT_EQ(LocalCodeNotLinked, ben->unlinkRoom("r"));

  joinLinked();
  cleo->leave();
  ben->leave();
  EXPECT_EQ((Lines{"user gone s cleo", "user gone s ben", "disbanded s ben", "left s 0"}), told());

  ben = addTo("s", "ben");
  cleo = addTo("s", "cleo");
  joinLinked();
  engine->leaveSubRoom("s", true);
  EXPECT_EQ((Lines{"left s 0"}), told());
  EXPECT_EQ(LocalCodeNotLinked, codeOf(engine->joinSubRoom("s")));
}

TEST_F(LinkedRoomsTest, TheOtherRoomIsLeftWithTheMainOne) {
  joinLinked();
  EXPECT_EQ(0, anna->kick("me", 1));
  advance(0us);
  lines.clear();
  ben->publishVideo();
  EXPECT_EQ((Lines{}), told());
  EXPECT_EQ(LocalCodeNotInRoom, codeOf(engine->leaveSubRoom("s", false)));
}

TEST_F(LinkedRoomsTest, Refusals) {
  const auto request = [this](const std::string& room, const std::string& user) {
    return codeOf(engine->requestJoinSubRoom(room, user, true, ""));
  };
  EXPECT_EQ(LocalCodeOwnRoom, request("r", "anna"));
  EXPECT_EQ(LocalCodeUnknownRoom, request("x", "ben"));
  EXPECT_EQ(LocalCodeUserNotInRoom, request("s", "anna"));
  EXPECT_EQ(LocalCodeNoInvitation, codeOf(engine->cancelJoinSubRoomRequest("s", "cleo", "")));
  EXPECT_EQ(LocalCodeNotLinked, codeOf(engine->joinSubRoom("s")));
  EXPECT_EQ(LocalCodeOtherRoomNotJoined, codeOf(engine->leaveSubRoom("s", true)));
  EXPECT_EQ(0, request("s", "cleo"));
  EXPECT_EQ(LocalCodeInvitationPending, request("s", "cleo"));
  EXPECT_EQ(0, cleo->answer("r", "me", true));
  EXPECT_EQ((Lines{"answer s cleo 1 "}), told());
  EXPECT_EQ(LocalCodeAlreadyLinked, request("s", "ben"));
  engine->joinSubRoom("s");
  told();
  EXPECT_EQ(LocalCodeOtherRoomJoined, codeOf(engine->joinSubRoom("s")));
}

/// Real time: links, and with them guests in the live mix, come and go on one thread while the host joins and
/// leaves on another.
TEST(LinkedRoomsInRealTimeTest, ComeAndGoOnAnyThread) {
  const auto local = LumoRTCLocal::install({.userId = "me"});
  const auto engine = LMRTCIWEngine::create(std::make_shared<LMRTCIWEngineSetup>());
  const auto delegate = std::make_shared<LMRTCIWEngineDelegate>();
  std::counting_semaphore<> seen(0), moved(0);
  delegate->onRoomJoined = [&](auto&&...) {
    engine->publish(kBoth);
    moved.release();
  };
  delegate->onRoomLeft = [&](auto&&...) { moved.release(); };
  delegate->onRemoteLiveMixPublished = [&](auto) { engine->subscribeLiveMix(kBoth); };
  delegate->onJoinSubRoomRequestReceived = [&](const std::string& room, const std::string& user, auto&&) {
    engine->responseJoinSubRoomRequest(room, user, true, true, "");
    engine->joinSubRoom(room);
  };
  delegate->onUserJoined = [](auto&&...) {};  // without it nobody is announced
  delegate->onRemotePublished = [&](auto&&, const std::string& user, auto type) {
    engine->subscribe(user, type);
  };
  delegate->onRemoteFirstFrame = [&](auto&&...) { seen.release(); };
  engine->setEngineDelegate(delegate);
  const auto setup = std::make_shared<LMRTCIWRoomSetup>();
  setup->role = LMRTCIWRoleLiveBroadcaster;
  const LumoRTCLocal::ParticipantOptions broadcaster{.role = LumoRTCLocal::Role::broadcaster};
  const auto ben = local->join("s", "ben", broadcaster).participant;
  EXPECT_EQ(0, ben->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo));
  std::atomic<bool> over = false;
  std::thread others([&] {
    while (!over) {
      const auto cleo = local->join("s", "cleo", broadcaster).participant;
      cleo->publishVideo();
      if (cleo->invite("r", "me") != 0) cleo->unlinkRoom("r");
      std::this_thread::yield();
      cleo->leave();
    }
  });
  for (int i = 0; i < 200; ++i) {
    engine->joinRoom("r", setup);
    EXPECT_TRUE(moved.try_acquire_for(20s));
    engine->leaveSubRoom("s", i % 2 == 0);
    engine->leaveRoom();
    EXPECT_TRUE(moved.try_acquire_for(20s));
  }
  over = true;
  others.join();
  while (seen.try_acquire()) continue;
  engine->joinRoom("r", setup);
  ASSERT_TRUE(moved.try_acquire_for(20s));
  EXPECT_EQ(0, ben->invite("r", "me"));
  EXPECT_TRUE(seen.try_acquire_for(20s));
  engine->destroy();
  local->uninstall();
}

}  // namespace
}  // namespace lumo::test
