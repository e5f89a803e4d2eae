#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCCodeDefine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCLiveInfo.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using namespace lumo;
using Media = LumoRTCLocal::Media;
using Role = LumoRTCLocal::Role;

class RoomRulesTest : public LocalSdkTest {
 protected:
  void expectRefused(std::int64_t code, const std::string& text, std::int64_t answer) {
    EXPECT_EQ(code, answer) << text;
    EXPECT_EQ(text, LMRTCCodeDefine::codeDesc(answer));
  }
  std::int64_t publishLive(const std::shared_ptr<LMRTCOutputStream>& output) {
    return answerOf([&](auto done) { user()->publishLiveStream(output, live(done)); });
  }
  std::int64_t publishLiveDefaults() {
    return answerOf([&](auto done) { user()->publishDefaultLiveStreams(live(done)); });
  }
};

TEST_F(RoomRulesTest, Joining) {
  engine->unInit();
  expectRefused(LocalCodeNotInitialised, "The engine is not initialised", join("r"));
  engine->initWithConfig(LMRTCConfig());
  expectRefused(LocalCodeNotInRoom, "Not in a room", leave());
  expectRefused(LocalCodeEmptyRoomId, "The room id is empty", join(""));

  const auto impostor = add("me");
  expectRefused(LocalCodeUserIdTaken, "The user id is taken in this room", join("r"));
  expectRefused(LocalCodeRoomKindMismatch, "The room is of another kind",
                join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  LMRTCRoomConfig exclusive;
  exclusive.setJoinRoomType(LMRTCJoinRoomTypeExclusive);
  EXPECT_EQ(0, join("r", exclusive));
  EXPECT_EQ(LocalCodeNotInRoom, impostor->publishAudio());

  expectRefused(LocalCodeAlreadyInRoom, "Already in a room", join("other"));
  EXPECT_EQ(0, leave());
  EXPECT_EQ(0, join("other"));
}

TEST_F(RoomRulesTest, PublishingInANormalRoom) {
  ASSERT_EQ(0, join("r"));
  expectRefused(LocalCodeNoStreams, "No streams were given", publish({}));
  expectRefused(LocalCodeUnknownStream, "The stream is unknown", publish({nullptr}));
  expectRefused(LocalCodeAlreadyPublished, "The stream is published already", publish({camera(), camera()}));
  expectRefused(LocalCodeNotALiveRoom, "The room is not a live room", publishLive(camera()));
  EXPECT_EQ(0, publish({microphone()}));
  expectRefused(LocalCodeNotPublished, "The stream is not published", unpublish({microphone(), camera()}));
  EXPECT_EQ((LMRTCLocalUser::OutputStreams{microphone()}), user()->streams()) << "a refusal changes nothing";
}

TEST_F(RoomRulesTest, PublishingInALiveRoom) {
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeBroadcaster)));
  expectRefused(LocalCodeNotANormalRoom, "The room is not a normal room", publish({camera()}));
  EXPECT_EQ(0, publishLive(microphone()));
  EXPECT_EQ(LocalCodeAlreadyPublished, publishLiveDefaults());
  EXPECT_EQ(0, answerOf([&](auto done) { user()->unpublishLiveStream(microphone(), plain(done)); }));
  EXPECT_EQ(0, publishLiveDefaults());
  EXPECT_EQ(2u, user()->streams().size());
  EXPECT_EQ(LocalCodeNotANormalRoom, unpublish({camera()}));
  EXPECT_EQ(0, answerOf([&](auto done) { user()->unpublishDefaultLiveStreams(plain(done)); }));

  EXPECT_EQ(0, leave());
  ASSERT_EQ(0, join("r", liveConfig(LMRTCRoleTypeAudience)));
  expectRefused(LocalCodeAudienceMayNotPublish, "An audience member may not publish", publishLiveDefaults());
}

TEST_F(RoomRulesTest, Subscribing) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  const auto audio = stream("anna", 0);
  const auto picture = stream("anna", 1);
  EXPECT_EQ(LocalCodeNoStreams, subscribe({}));
  EXPECT_EQ(LocalCodeUnknownStream, subscribe({nullptr}));
  expectRefused(LocalCodeNotSubscribed, "The stream is not subscribed", unsubscribe({picture}));
  EXPECT_EQ(0, subscribe({audio}));
  EXPECT_EQ(0, anna->unpublishVideo());
  expectRefused(LocalCodeStreamGone, "The stream is no longer published", subscribe({picture}));
  EXPECT_EQ(LocalCodeStreamGone, unsubscribe({audio, picture}));
  EXPECT_EQ(0, unsubscribe({audio})) << "the refusal has left it subscribed";
}

TEST_F(RoomRulesTest, Participants) {
  EXPECT_EQ(LocalCodeEmptyUserId, local->join("r", "").code);
  const auto anna = add("anna");
  const auto taken = local->join("r", "anna");
  expectRefused(LocalCodeUserIdTaken, taken.message, taken.code);
  EXPECT_EQ(LocalCodeNotPublished, anna->sendSei("text"));
  EXPECT_EQ(LocalCodeNotPublished, anna->unpublish("tag", Media::video));
  expectRefused(LocalCodeUserNotInRoom, "The user is not in the room", anna->kick("nobody", 1));

  const auto viewer = local->join("live", "viewer", {.role = Role::audience}).participant;
  EXPECT_EQ(LocalCodeAudienceMayNotPublish, viewer->publishAudio());
  EXPECT_EQ(0, viewer->switchRole(Role::broadcaster));
  EXPECT_EQ(0, viewer->publishAudio());

  EXPECT_EQ(0, anna->leave());
  EXPECT_EQ(LocalCodeNotInRoom, anna->publishAudio());
  EXPECT_EQ(0, local->join("r", "anna", {.role = Role::broadcaster}).code) << "an empty room is gone";
}
}  // namespace
