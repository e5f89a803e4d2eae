#include "LumoRTCLibWrapper/model/LMRTCIWCustomLayout.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

class LiveTest : public EngineTest {
 protected:
  void goLive() {
    join(LMRTCIWRoleLiveBroadcaster);
    engine->setLiveInfo(info);
  }
  std::shared_ptr<fake::LiveInfo> info = make<fake::LiveInfo>();
};

TEST_F(LiveTest, EachMixOperationSendsItsOwnFieldsAndReportsThem) {
  goLive();
  expect(0, engine->setLiveMixLayoutMode(0), {"T setLiveMixLayoutMode mode:0", "-> setMixConfig layout:2"});
  answer(0, "setLiveMixLayoutMode onLiveMixLayoutModeSet mode:0");
  expect(0, engine->setLiveMixRenderMode(2), {"T setLiveMixRenderMode mode:2", "-> setMixConfig render:2"});
  answer(7, "setLiveMixRenderMode onLiveMixRenderModeSet mode:2");
  expect(0, engine->setLiveMixAudioBitrate(-5),
         {"T setLiveMixAudioBitrate bitrate:-5", "-> setMixConfig audio:-5"});
  answer(7, "setLiveMixAudioBitrate onLiveMixAudioBitrateSet bitrate:-5");

  const std::string bitrate = "setLiveMixVideoBitrate bitrate:800";
  expect(0, engine->setLiveMixVideoBitrate(800),
         {"T " + bitrate, "T " + bitrate + ",tiny:0", "-> setMixConfig normal:0,0,0,800"});
  answer(0, "setLiveMixVideoBitrate onLiveMixVideoBitrateSet bitrate:800,tiny:0", "0");
  expect(0, engine->setLiveMixVideoBitrate(800, true),
         {"T " + bitrate + ",tiny:1", "-> setMixConfig tiny:0,0,0,800"});
  answer(7, "setLiveMixVideoBitrate onLiveMixVideoBitrateSet bitrate:800,tiny:1", "1");
  const std::string size = "setLiveMixVideoResolution width:-1,height:9";
  expect(0, engine->setLiveMixVideoResolution(-1, 9),
         {"T " + size, "T " + size + ",tiny:0", "-> setMixConfig normal:0,-1,9,0"});
  answer(7, "setLiveMixVideoResolution onLiveMixVideoResolutionSet width:-1,height:9,tiny:0", "0");
  expect(
      0, engine->setLiveMixVideoFps(3),
      {"T setLiveMixVideoFps fps:3", "T setLiveMixVideoFps fps:3,tiny:0", "-> setMixConfig normal:30,0,0,0"});
  answer(0, "setLiveMixVideoFps onLiveMixVideoFpsSet fps:3", "0");
}

TEST_F(LiveTest, ColoursMayBeGivenInPartsAndAreRefusedBeyond24Bits) {
  const std::string color = "setLiveMixBackgroundColor";
  const std::string parts = "setLiveMixBackgroundColorWithRed:green:blue";
  const std::string bad = " LMRTCWrapperCodeParameterError";
  goLive();
  expect(0, engine->setLiveMixBackgroundColor(0xFFFFFF),
         {"T " + color + " color:16777215", "-> setMixConfig color:16777215"});
  answer(0, color + " onLiveMixBackgroundColorSet color:16777215");
  expect(0, engine->setLiveMixBackgroundColorWithRed(1, 2, 255),
         {"T " + parts + " red:1:green:2blue:255", "-> setMixConfig color:66303"});
  answer(7, parts + " onLiveMixBackgroundColorSet red:1:green:2blue:255");
  expect(kBadParameter, engine->setLiveMixBackgroundColor(0x1000000),
         {"T " + color + " color:16777216", "E: " + color + bad});
  expect(kBadParameter, engine->setLiveMixBackgroundColorWithRed(256, 0, 0),
         {"T " + parts + " red:256:green:0blue:0", "E: " + parts + bad});
}

TEST_F(LiveTest, LayoutsAndAudiosFindLocalStreamsFirstAndDropWhatIsNotThere) {
  room->me->published = {sdk->engine->microphone,
                         make<fake::FileOutput>("clip")};  // "me" falls back to a user
  room->users = {user("u1", {stream("u1", "cam2", 0), stream("u1", "cam2", 1), video("u1"), audio("u1")}),
                 user("me", {video("me")}), user("quiet")};
  goLive();
  using Layout = LMRTCIWCustomLayout;
  Layout placed(2, "u1", "cam2");
  placed.x = 1;
  placed.y = 2;
  placed.width = 3;
  placed.height = 4;
  expect(0,
         engine->setLiveMixCustomLayouts({Layout(1, "me", "clip"), Layout("me"), placed, Layout("u1"),
                                          Layout("gone"), Layout(1, "u1", std::nullopt)}),
         {"T setLiveMixCustomLayouts layoutArraylength:6", "T getRemoteUser userId:me",
          "T getRemoteUser userId:u1", "T getRemoteUser userId:u1", "T getRemoteUser userId:gone",
          "T getRemoteUser userId:u1",
          "-> setMixConfig layout:1 custom:1 me_clip[0,0 480x640] me_LumoCloudRTC[0,0 480x640] "
          "u1_cam2[1,2 3x4] u1_LumoCloudRTC[0,0 480x640]"});
  answer(0, "setLiveMixCustomLayouts onLiveMixCustomLayoutsSet layoutArraylength:6");
  expect(0, engine->setLiveMixCustomAudios({"me", "u1", "quiet"}),
         {"T setLiveMixCustomAudios userIdArrayLeggth3", "T getRemoteUser userId:u1",
          "T getRemoteUser userId:quiet", "-> setMixConfig custom:1 me_mic u1_cam2"});
  answer(7, "setLiveMixCustomAudios onLiveMixCustomAudiosSet userIdArrayLeggth3");
  expect(kBadParameter, engine->setLiveMixCustomLayouts({}),
         {"T setLiveMixCustomLayouts layoutArraylength:0", "E: layoutArray count is 0"});
  expect(kBadParameter, engine->setLiveMixCustomAudios({}),
         {"T setLiveMixCustomAudios userIdArrayLeggth0", "E: userIdArray count is 0"});
}

TEST_F(LiveTest, CdnAddressesAreAddedAndRemoved) {
  expect(kNotJoined, engine->addLiveCdn("a"), {"T addLiveCdn url:a", kNoUser});
  join(LMRTCIWRoleLiveBroadcaster);
  expect(kBadParameter, engine->removeLiveCdn("a"), {"T removeLiveCdn url:a", "E: liveInfo is nil"});
  engine->setLiveInfo(info);
  expect(0, engine->addLiveCdn("a"), {"T addLiveCdn url:a", "-> addPublishStreamUrl a"});
  expect(0, engine->removeLiveCdn("a"), {"T removeLiveCdn url:a", "-> removePublishStreamUrl a"});
  answer(4, "addLiveCdn onLiveCdnAdded url:a", "a");
  answer(0, "removeLiveCdn onLiveCdnRemoved url:a", "a");
}

TEST_F(LiveTest, TheInnerCdnSwitchReportsWhatTheServerConfirmed) {
  const std::string entry = "T enableLiveMixInnerCdnStream enable:";
  expect(kNotJoined, engine->enableLiveMixInnerCdnStream(true),
         {entry + "1", "E switchLivenableLiveMixInnerCdnStreameRole msg:room is nil or localUser is nil"});
  join(LMRTCIWRoleLiveBroadcaster);
  expect(kBadParameter, engine->enableLiveMixInnerCdnStream(true), {entry + "1", kNoEngine});
  engine->setLiveInfo(info);
  expect(0, engine->enableLiveMixInnerCdnStream(true), {entry + "1", "-> enableInnerCDN 1"});
  answer(0, "enableLiveMixInnerCdnStream onLiveMixInnerCdnStreamEnabled enable:1", "1");
  engine->enableLiveMixInnerCdnStream(false);
  complete(3, {"E enableLiveMixInnerCdnStream callback:onLiveMixInnerCdnStreamEnabled, code:3, enable:0",
               "host onLiveMixInnerCdnStreamEnabled 1 3 sdk3"});
}

TEST_F(LiveTest, TheInnerCdnStreamIsReceivedShownAndMuted) {
  const auto shown = view("v");
  const std::string set = "T setLiveMixInnerCdnStreamViewDelegate view:";
  const std::string mute = "T muteLiveMixInnerCdnStream mute:1";
  expect(kBadParameter, engine->setLiveMixInnerCdnStreamView(nullptr),
         {"T setLiveMixInnerCdnStreamView view:0", set + "0",
          "E unsubscribeLiveMixInnerCdnStream msg:view is nil"});
  join(LMRTCIWRoleLiveAudience);
  expect(0, engine->setLiveMixInnerCdnStreamViewDelegate(shown), {set + "1", "-> v.setInnerCdnView nil"});
  expect(kNoStream, engine->subscribeLiveMixInnerCdnStream(),
         {"T subscribeLiveMixInnerCdnStream", "E: streams count is 0"});
  expect(kNoStream, engine->muteLiveMixInnerCdnStream(true), {mute, "E: CDNStream is nil"});

  room->cdn = make<fake::CdnInput>("mix", "cdn", 1, 2);
  expect(0, engine->setLiveMixInnerCdnStreamViewDelegate(shown), {set + "1", "-> v.setInnerCdnView mix_cdn"});
  expect(0, engine->removeLiveMixInnerCdnStreamView(),
         {"T removeLiveMixInnerCdnStreamView", "-> v.removeInnerCdnView"});
  expect(0, engine->subscribeLiveMixInnerCdnStream(),
         {"T subscribeLiveMixInnerCdnStream", "-> subscribeStream (mix_cdn:v) tiny ()"});
  answer(0, "subscribeLiveMixInnerCdnStream onLiveMixInnerCdnStreamSubscribed");
  expect(0, engine->unsubscribeLiveMixInnerCdnStream(),
         {"T unsubscribeLiveMixInnerCdnStream", "-> unsubscribeStreams (mix_cdn:v)"});
  complete(2, {"C subscribeLiveMixInnerCdnStream completion code: 2",
               "host onLiveMixInnerCdnStreamUnsubscribed 2 sdk2"});
  expect(0, engine->muteLiveMixInnerCdnStream(true), {mute, "-> mix_cdn.setIsMute 1"});
}

TEST_F(LiveTest, SizeAndFrameRateOfTheInnerCdnStreamTravelTogether) {
  const std::string size = "setLocalLiveMixInnerCdnVideoResolution";
  const std::string rate = "setLocalLiveMixInnerCdnVideoFps";
  const std::string small = "T " + size + " width:360, height:640";
  const std::string sized = " callback:onLocalLiveMixInnerCdnVideoResolutionSet, code:";
  expect(kNotJoined, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {small, "E setLiveMixVideoResolution msg:room is nil or localUser is nil"});
  room->cdn = make<fake::CdnInput>("mix", "cdn", 1, 2);
  join(LMRTCIWRoleLiveAudience);
  expect(kBadParameter, engine->setLocalLiveMixInnerCdnVideoResolution(640, 360),
         {"T " + size + " width:640, height:360", "E: width and height is not support"});
  expect(0, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {small, "-> mix_cdn.setVideoConfig 9 -1"});
  answer(6, size + " onLocalLiveMixInnerCdnVideoResolutionSet");
  expect(0, engine->setLocalLiveMixInnerCdnVideoFps(2),
         {"T " + rate + " fps:2", "-> mix_cdn.setVideoConfig -1 2"});
  complete(0, {"R " + rate + sized + "0, ", "host onLocalLiveMixInnerCdnVideoFpsSet 0 ok"});
  expect(0, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {small, "-> mix_cdn.setVideoConfig 9 2"});
  answer(0, size + " onLocalLiveMixInnerCdnVideoResolutionSet");
  expect(0, engine->setLocalLiveMixInnerCdnVideoFps(7),
         {"T " + rate + " fps:7", "-> mix_cdn.setVideoConfig 9 -1"});
  complete(5, {"E " + rate + sized + "5, ", "host onLocalLiveMixInnerCdnVideoFpsSet 5 sdk5"});
  EXPECT_EQ(2, engine->innerCDNVideoFps());
}

TEST_F(LiveTest, RolesSwitchFailAndEndInAKick) {
  const std::string broadcaster = "S switchLiveRole msg:LMRTCIWRoleLiveBroadcaster ";
  const std::string audience = "S switchLiveRole msg:switchToAudienceOnSucceed ";
  expect(kNotJoined, engine->switchLiveRole(1), {"T switchLiveRole role:1", kNoSetup});
  join(LMRTCIWRoleMeetingMember);
  expect(-21, engine->switchLiveRole(1), {"T switchLiveRole role:1", "C switchLiveRole role return: -21"});

  join(LMRTCIWRoleLiveAudience);
  room->me->nextLiveInfo.set(info);
  expect(0, engine->switchLiveRole(1), {"T switchLiveRole role:1", "-> switchToBroadcaster 0"});
  complete(8, {broadcaster + "onFailed", "host onLiveRoleSwitched 2 8 sdk8"});
  engine->switchLiveRole(1);
  complete(0, {broadcaster + "onLiveRoleSwitched", "host onLiveRoleSwitched 1 0 ok"});
  room->live = {stream("mix", "a", 0, 2), stream("mix", "a", 1, 2)};
  expect(0, engine->switchLiveRole(2), {"T switchLiveRole role:2", "-> switchToAudienceOnSucceed"});
  complete(1, {audience + "onFailed", "host onLiveRoleSwitched 1 1 sdk1"});
  engine->switchLiveRole(2);
  complete(0, {"host onLiveRoleSwitched 2 0 ok", "host onRemoteLiveMixPublished 2"});

  engine->switchLiveRole(1);
  complete(fake::LocalUser::kKicked,
           {broadcaster + "onKicked", "host onKicked r1 switch to broadcaster error"});
  join(LMRTCIWRoleLiveBroadcaster);
  engine->switchLiveRole(2);
  complete(fake::LocalUser::kKicked, {audience + "onKicked", "host onKicked r1 switch to audience error"});
}

}  // namespace
}  // namespace lumo
