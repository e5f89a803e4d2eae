#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using namespace lumo;

class RoomTest : public LocalSdkTest {};

TEST_F(RoomTest, Joining) {
  engine->unInit();
  EXPECT_EQ(LocalCodeNotInitialised, join("r"));
  engine->initWithConfig(LMRTCConfig());
  EXPECT_EQ(LocalCodeNotInRoom, leave());
  EXPECT_EQ(LocalCodeEmptyRoomId, join(""));
  const auto impostor = add("me");
  EXPECT_EQ(LocalCodeUserIdTaken, join("r"));
  EXPECT_EQ("The user id is taken in this room", LMRTCCodeDefine::codeDesc(LocalCodeUserIdTaken));
  EXPECT_EQ(LocalCodeRoomKindMismatch, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  LMRTCRoomConfig exclusive;
  exclusive.setJoinRoomType(LMRTCJoinRoomTypeExclusive);
  EXPECT_EQ(0, join("r", exclusive));
  EXPECT_EQ(LocalCodeNotInRoom, impostor->publishAudio());
  EXPECT_EQ(LocalCodeAlreadyInRoom, join("other"));
}

TEST_F(RoomTest, PublishingInANormalRoomAndLeavingIt) {
  ASSERT_EQ(0, join("r"));
  EXPECT_EQ(LocalCodeNoStreams, publish({}));
  EXPECT_EQ(LocalCodeUnknownStream, publish({nullptr}));
  EXPECT_EQ(LocalCodeAlreadyPublished, publish({camera(), camera()}));
  EXPECT_EQ(LocalCodeNotALiveRoom, ask(&LocalUser::publishLiveStream, user(), camera()));
  EXPECT_EQ(0, publish({microphone()}));
  EXPECT_EQ(LocalCodeNotPublished, unpublish({microphone(), camera()}));
  EXPECT_EQ(Outputs{microphone()}, user()->streams()) << "a refusal changes nothing";
  EXPECT_EQ(0, leave());
  ASSERT_EQ(0, join("other"));
  EXPECT_EQ(0, publish({microphone()}));
}

TEST_F(RoomTest, PublishingInALiveRoom) {
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  EXPECT_EQ(LocalCodeNotANormalRoom, publish({camera()}));
  EXPECT_EQ(0, ask(&LocalUser::publishLiveStream, user(), microphone()));
  EXPECT_EQ(LocalCodeAlreadyPublished, ask(&LocalUser::publishDefaultLiveStreams, user()));
  EXPECT_EQ(0, ask(&LocalUser::unpublishLiveStream, user(), microphone()));
  EXPECT_EQ(0, ask(&LocalUser::publishDefaultLiveStreams, user()));
  EXPECT_EQ(LocalCodeNotANormalRoom, unpublish({camera()}));
  EXPECT_EQ(0, ask(&LocalUser::unpublishDefaultLiveStreams, user()));
  EXPECT_EQ(0, leave());
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(LocalCodeAudienceMayNotPublish, ask(&LocalUser::publishDefaultLiveStreams, user()));
}

TEST_F(RoomTest, Subscribing) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  const auto audio = stream("anna", 0), picture = stream("anna", 1);
  EXPECT_EQ(LocalCodeNoStreams, subscribe({}));
  EXPECT_EQ(LocalCodeUnknownStream, subscribe({nullptr}));
  EXPECT_EQ(LocalCodeNotSubscribed, unsubscribe({picture}));
  EXPECT_EQ(0, subscribe({audio}));
  EXPECT_EQ(0, anna->unpublishVideo());
  EXPECT_EQ(LocalCodeStreamGone, subscribe({picture}));
  EXPECT_EQ(LocalCodeStreamGone, unsubscribe({audio, picture}));
  EXPECT_EQ(0, unsubscribe({audio})) << "the refusal has left it subscribed";
}

TEST_F(RoomTest, Participants) {
  EXPECT_EQ(LocalCodeEmptyUserId, local->join("r", "").code);
  const auto anna = add("anna");
  EXPECT_EQ(LocalCodeUserIdTaken, local->join("r", "anna").code);
  EXPECT_EQ(LocalCodeCameraFailed, local->join("r", "bob", {.camera = "missing.mp4"}).code);
  EXPECT_EQ(LocalCodeUserNotInRoom, anna->kick("bob", 1));
  EXPECT_NE(std::nullopt, local->setCamera("missing.mp4"));
  EXPECT_EQ(LocalCodeNotPublished, anna->sendSei("text"));
  EXPECT_EQ(LocalCodeNotPublished, anna->unpublishVideo());
  for (const VideoFormat& format :
       {VideoFormat{0, 640, 15}, {480, -1, 15}, {16385, 640, 15}, {480, 640, 0}, {480, 640, 241}})
    EXPECT_EQ(LocalCodeVideoFormat, local->join("r", "bob", {.video = format}).code);
  EXPECT_EQ(0, local->join("other", "bob", {.video = {1, 16384, 240}}).code);
  const auto viewer = local->join("live", "viewer", {.role = LumoRTCLocal::Role::audience}).participant;
  EXPECT_EQ(LocalCodeAudienceMayNotPublish, viewer->publishAudio());
  EXPECT_EQ(0, viewer->switchRole(LumoRTCLocal::Role::broadcaster));
  EXPECT_EQ(0, viewer->publishAudio());
  EXPECT_EQ(0, anna->leave());
  EXPECT_EQ(LocalCodeNotInRoom, anna->publishAudio());
  EXPECT_EQ(0, local->join("r", "anna", {.role = LumoRTCLocal::Role::broadcaster}).code)
      << "the room is gone";
}

TEST_F(RoomTest, EventsComeInOrderWithAMirrorThatIsUpToDate) {
  ASSERT_EQ(0, join("r"));
  const auto anna = add("anna");
  EXPECT_EQ(0, anna->mute(true));
  EXPECT_EQ(0, anna->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo));
  EXPECT_EQ(0, anna->mute(false));
  EXPECT_EQ(0, anna->mute(false));
  EXPECT_EQ(0, anna->disableVideo(true));
  EXPECT_EQ(0, anna->unpublishAudio());
  EXPECT_TRUE(recorder->trace.empty()) << "told inside the call";
  EXPECT_TRUE(room->remoteUsers().empty()) << "the mirror changes with the event";
  local->advance(0us);
  EXPECT_EQ((Trace{"joined anna of 0", "published audio-off video anna of 2", "unmuted audio anna of 2",
                   "disabled video-off anna of 2", "unpublished audio anna of 1"}),
            takeTrace());
  EXPECT_EQ(0, anna->goOffline());
  local->advance(0us);
  EXPECT_EQ((Trace{"unpublished video-off anna of 0", "offline anna"}), takeTrace());
}

TEST_F(RoomTest, ARoomThatIsLeftTellsNothingMore) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({microphone(), camera()}));
  EXPECT_EQ(0, anna->kick("me", 3));
  EXPECT_EQ(0, anna->unpublishAudio());
  local->advance(0us);
  EXPECT_EQ((Trace{"kicked r 3 in"}), takeTrace()) << "the room is still in place, and silent afterwards";
  EXPECT_EQ(nullptr, user());
  EXPECT_EQ(LocalCodeNotInRoom, leave());
  ASSERT_EQ(0, join("r"));
  EXPECT_EQ(0, publish({microphone(), camera()})) << "nothing is published any more";
}

}  // namespace
