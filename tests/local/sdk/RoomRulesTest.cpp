#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using namespace lumo;
using Role = LumoRTCLocal::Role;

class RoomRulesTest : public LocalSdkTest {
 protected:
  std::int64_t publishLive(const std::shared_ptr<LMRTCOutputStream>& output) {
    return answerOf([&](auto done) { user()->publishLiveStream(output, plain(done)); });
  }
  std::int64_t publishLiveDefaults() {
    return answerOf([&](auto done) { user()->publishDefaultLiveStreams(plain(done)); });
  }
};

TEST_F(RoomRulesTest, Joining) {
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

TEST_F(RoomRulesTest, PublishingInANormalRoomAndLeavingIt) {
  ASSERT_EQ(0, join("r"));
  EXPECT_EQ(LocalCodeNoStreams, publish({}));
  EXPECT_EQ(LocalCodeUnknownStream, publish({nullptr}));
  EXPECT_EQ(LocalCodeAlreadyPublished, publish({camera(), camera()}));
  EXPECT_EQ(LocalCodeNotALiveRoom, publishLive(camera()));
  EXPECT_EQ(0, publish({microphone()}));
  EXPECT_EQ(LocalCodeNotPublished, unpublish({microphone(), camera()}));
  EXPECT_EQ((LMRTCLocalUser::OutputStreams{microphone()}), user()->streams()) << "a refusal changes nothing";
  EXPECT_EQ(0, leave());
  ASSERT_EQ(0, join("other"));
  EXPECT_EQ(0, publish({microphone()}));
}

TEST_F(RoomRulesTest, PublishingInALiveRoom) {
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  EXPECT_EQ(LocalCodeNotANormalRoom, publish({camera()}));
  EXPECT_EQ(0, publishLive(microphone()));
  EXPECT_EQ(LocalCodeAlreadyPublished, publishLiveDefaults());
  EXPECT_EQ(0, answerOf([&](auto done) { user()->unpublishLiveStream(microphone(), plain(done)); }));
  EXPECT_EQ(0, publishLiveDefaults());
  EXPECT_EQ(LocalCodeNotANormalRoom, unpublish({camera()}));
  EXPECT_EQ(0, answerOf([&](auto done) { user()->unpublishDefaultLiveStreams(plain(done)); }));
  EXPECT_EQ(0, leave());
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  EXPECT_EQ(LocalCodeAudienceMayNotPublish, publishLiveDefaults());
}

TEST_F(RoomRulesTest, Subscribing) {
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

TEST_F(RoomRulesTest, Participants) {
  EXPECT_EQ(LocalCodeEmptyUserId, local->join("r", "").code);
  const auto anna = add("anna");
  EXPECT_EQ(LocalCodeUserIdTaken, local->join("r", "anna").code);
  EXPECT_EQ(LocalCodeNotPublished, anna->sendSei("text"));
  EXPECT_EQ(LocalCodeNotPublished, anna->unpublishVideo());
  EXPECT_EQ(LocalCodeUserNotInRoom, anna->kick("nobody", 1));
  const auto viewer = local->join("live", "viewer", {.role = Role::audience}).participant;
  EXPECT_EQ(LocalCodeAudienceMayNotPublish, viewer->publishAudio());
  EXPECT_EQ(0, viewer->switchRole(Role::broadcaster));
  EXPECT_EQ(0, viewer->publishAudio());
  EXPECT_EQ(0, anna->leave());
  EXPECT_EQ(LocalCodeNotInRoom, anna->publishAudio());
  EXPECT_EQ(0, local->join("r", "anna", {.role = Role::broadcaster}).code) << "an empty room is gone";
}

}  // namespace
