#include "tests/local/sdk/LocalSdkTest.h"

namespace {

class RoomEventsTest : public LocalSdkTest {};

TEST_F(RoomEventsTest, EventsComeInOrderWithAMirrorThatIsUpToDate) {
  ASSERT_EQ(0, join("r"));
  const auto anna = add("anna");
  EXPECT_EQ(0, anna->mute(true));
  EXPECT_EQ(0, anna->publish(kLMRTCDefaultStreamTag, LumoRTCLocal::Media::audioAndVideo));
  EXPECT_EQ(0, anna->mute(false));
  EXPECT_EQ(0, anna->mute(false));
  EXPECT_EQ(0, anna->disableVideo(true));
  EXPECT_EQ(0, anna->unpublishAudio());
  EXPECT_TRUE(trace.empty()) << "told inside the call";
  EXPECT_TRUE(room->remoteUsers().empty()) << "the mirror changes with the event";
  local->advance(0us);
  EXPECT_EQ((Trace{"joined anna (in the room)", "published anna_LumoCloudRTC:a-off anna_LumoCloudRTC:v of 2",
                   "unmuted anna_LumoCloudRTC:a of 2", "disabled anna_LumoCloudRTC:v-off of 2",
                   "unpublished anna_LumoCloudRTC:a of 1"}),
            takeTrace());
  EXPECT_EQ(0, anna->goOffline());
  local->advance(0us);
  EXPECT_EQ((Trace{"unpublished anna_LumoCloudRTC:v-off of 0", "offline anna"}), takeTrace());
}

TEST_F(RoomEventsTest, ARoomThatIsLeftTellsNothingMore) {
  const auto anna = addPublishing("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({microphone(), camera()}));
  EXPECT_EQ(0, anna->kick("me", 3));
  EXPECT_EQ(0, anna->unpublishAudio());
  local->advance(0us);
  EXPECT_EQ((Trace{"kicked r 3 in"}), takeTrace()) << "the room is still in place, and silent afterwards";
  EXPECT_EQ(nullptr, user());
  EXPECT_EQ(lumo::LocalCodeNotInRoom, leave());
  ASSERT_EQ(0, join("r"));
  EXPECT_EQ(0, publish({microphone(), camera()})) << "nothing is published any more";
}

}  // namespace
