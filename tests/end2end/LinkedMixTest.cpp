#include <cmath>
#include <tuple>

#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

using Role = LumoRTCLocal::Role;

/// The host (source 0) broadcasts in room "r", ben (1) and cleo (2) in room "s"; all of them are shown in the
/// colours, and heard in the tones, of their sources.
class LinkedMixTest : public CallTest {
 protected:
  LinkedMixTest() {
    local->setSpeaker([this](const AudioBlock& block, Microseconds) { heard.add(block); });
    delegate->onRemoteLiveMixPublished = [this](auto) { engine->subscribeLiveMix(kBoth); };
    delegate->onRemoteLiveMixUnpublished = [this](auto) { ++mixesOver; };
    setup->role = LMRTCIWRoleLiveBroadcaster;
    engine->setEngineDelegate(delegate);
    EXPECT_EQ(0, engine->joinRoom("r", setup));
    advance(0us);
    goOnTheAir();
    EXPECT_EQ(0, engine->setLiveMixLayoutMode(3));
    ben->publish(kLMRTCDefaultStreamTag, Media::audioAndVideo);
  }
  ~LinkedMixTest() override { ben->onVideo({}); }

  void goOnTheAir() {
    publish(kBoth);
    EXPECT_EQ(0, engine->setLiveMixView(view));
  }
  ParticipantPtr broadcaster(const std::string& userId, std::uint32_t source) {
    return local->join("s", userId, {.role = Role::broadcaster, .sourceNumber = source}).participant;
  }
  void link(bool hostAsks = true) {
    EXPECT_EQ(0, engine->requestJoinSubRoom("s", "ben", hostAsks, ""));
    advance(0us);
    EXPECT_EQ(0, ben->answer("r", "me", true));
  }
  /// Which of the three the mix shows large or in a grid, and which it lets hear: such as "01 02".
  std::string mixed() {
    advance(300ms);
    heard = {};
    advance(100ms);
    const auto shown = std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView())->picture();
    if (!shown) return "nothing";
    std::string seen, sounds;
    for (std::uint32_t source = 0; source < 3; ++source) {
      const YuvColor color = testPictureColor(source);
      int points = 0;
      for (std::int32_t y = 4; y < shown->height(); y += 8) {
        for (const std::int32_t x : {100, 340}) {
          const YuvColor at = colorAt(*shown, x, y);
          points += std::abs(at.u - color.u) + std::abs(at.v - color.v) < 8;
        }
      }
      if (points > 15) seen += std::to_string(source);
      if (toneLevel(heard.samples, 300 + 100 * source) > 0.1) sounds += std::to_string(source);
    }
    return seen + " " + sounds;
  }

  const std::shared_ptr<LMRTCIWRoomSetup> setup = std::make_shared<LMRTCIWRoomSetup>();
  const std::shared_ptr<LMRTCIWView> view = LMRTCIWView::create();
  SoundMeter heard;
  int mixesOver = 0;
  ParticipantPtr ben = broadcaster("ben", 1);
  ParticipantPtr cleo = broadcaster("cleo", 2);
};

TEST_F(LinkedMixTest, EachEndDecidesForTheMixOfItsRoom) {
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
  EXPECT_EQ(0, ben->linkRoom("r"));
  EXPECT_EQ(0, local->join("r", "anna", {.role = Role::audience}).participant->linkRoom("s", true));
  EXPECT_EQ("01 01", mixed()) << "an agreement is changed later";
}

TEST_F(LinkedMixTest, WhatTheLinkedRoomPublishesComesAndGoes) {
  link();
  EXPECT_EQ(0, cleo->publishVideo());
  EXPECT_EQ("012 01", mixed());
  EXPECT_EQ(0, ben->sendSei("only for those who watch ben himself"));
  EXPECT_EQ(0, ben->disableVideo(true));
  EXPECT_EQ("02 01", mixed());
  EXPECT_EQ(0, ben->unpublishAudio());
  EXPECT_EQ("02 0", mixed());
  EXPECT_EQ(0, cleo->switchRole(Role::audience));
  EXPECT_EQ(0, ben->disableVideo(false));
  EXPECT_EQ("01 0", mixed());
  EXPECT_EQ(0, ben->leave());
  EXPECT_EQ("0 0", mixed());
  EXPECT_EQ(0, cleo->switchRole(Role::broadcaster));
  EXPECT_EQ(0, cleo->publish("clip", Media::audioAndVideo, 1));
  EXPECT_EQ("01 01", mixed()) << "the link outlasts those who have made it";
  EXPECT_EQ(0, cleo->leave());
  EXPECT_EQ("0 0", mixed());
  cleo = broadcaster("cleo", 2);
  EXPECT_EQ(0, cleo->publishAudio());
  EXPECT_EQ("0 0", mixed()) << "the link has ended with the room";
  EXPECT_EQ(0, mixesOver);
}

TEST_F(LinkedMixTest, GuestsNeitherKeepTheMixNorTakeTheLargePlace) {
  link();
  EXPECT_EQ("01 01", mixed());
  EXPECT_EQ(0, engine->setLiveMixLayoutMode(2));
  EXPECT_EQ("0 01", mixed()) << "ben small at the right";
  EXPECT_EQ(0, engine->unpublish(kVideo));
  EXPECT_EQ("1 01", mixed());
  publish(kVideo);
  EXPECT_EQ("0 01", mixed());
  EXPECT_EQ(0, engine->unpublish(kBoth));
  advance(100ms);
  EXPECT_EQ(1, mixesOver);
  EXPECT_EQ(100u, local->advance(1s)) << "nothing runs but the speaker's clock";
  goOnTheAir();
  EXPECT_EQ("0 01", mixed());
  EXPECT_EQ(0, engine->leaveRoom());
  advance(1s);
  EXPECT_EQ(0, ben->unpublishVideo());
}

TEST_F(LinkedMixTest, AVisitorReceivesTheHost) {
  int pictures = 0;
  ben->onVideo([&](const std::string&, const LMRTCVideoFrame&) { ++pictures; });
  const auto received = [&] {
    advance(1s);
    return std::exchange(pictures, 0) > 0;
  };
  EXPECT_NE(0, ben->visit("r"));
  link(false);
  EXPECT_EQ(0, ben->visit("r"));
  EXPECT_TRUE(received());
  ben->onVideo({});
  EXPECT_FALSE(received());
  ben->onVideo([&](const std::string&, const LMRTCVideoFrame&) { ++pictures; });
  EXPECT_TRUE(received());
  EXPECT_EQ(0, ben->endVisit("r"));
  EXPECT_FALSE(received());
  EXPECT_NE(0, ben->endVisit("r"));
  EXPECT_EQ(0, ben->visit("r"));
  EXPECT_TRUE(received());
  EXPECT_EQ(0, cleo->unlinkRoom("r"));
  EXPECT_FALSE(received());
}

}  // namespace
}  // namespace lumo::test
