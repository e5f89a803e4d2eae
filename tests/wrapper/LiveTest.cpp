#include <functional>

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

/// An operation on the live mix: its entry line, what reaches the SDK, what the callback gets in front of the
/// code, and the keys of the result line where they differ.
struct MixCall {
  std::function<std::int64_t(LMRTCIWEngine&)> call;
  std::string entry, sent, first = "", resultKeys = "";
};

TEST_F(LiveTest, EachMixOperationSendsItsOwnFieldsAndReportsThem) {
  using Engine = LMRTCIWEngine;
  const std::vector<MixCall> calls = {
      {[](Engine& e) { return e.setLiveMixLayoutMode(0); }, "setLiveMixLayoutMode mode:0", " layout:2"},
      {[](Engine& e) { return e.setLiveMixRenderMode(2); }, "setLiveMixRenderMode mode:2", " render:2"},
      {[](Engine& e) { return e.setLiveMixBackgroundColor(0xFFFFFF); },
       "setLiveMixBackgroundColor color:16777215", " color:16777215"},
      {[](Engine& e) { return e.setLiveMixBackgroundColorWithRed(1, 2, 255); },
       "setLiveMixBackgroundColorWithRed:green:blue red:1:green:2blue:255", " color:66303"},
      {[](Engine& e) { return e.setLiveMixAudioBitrate(-5); }, "setLiveMixAudioBitrate bitrate:-5",
       " audio:-5"},
      {[](Engine& e) { return e.setLiveMixVideoBitrate(800, true); },
       "setLiveMixVideoBitrate bitrate:800,tiny:1", " tiny:0,0,0,800", "1"},
      {[](Engine& e) { return e.setLiveMixVideoResolution(-1, 9, false); },
       "setLiveMixVideoResolution width:-1,height:9,tiny:0", " normal:0,-1,9,0", "0"},
      {[](Engine& e) { return e.setLiveMixVideoFps(3, true); }, "setLiveMixVideoFps fps:3,tiny:1",
       " tiny:30,0,0,0", "1", "fps:3"},
      {[](Engine& e) { return e.setLiveMixVideoFps(4, false); }, "setLiveMixVideoFps fps:4,tiny:0", "", "0",
       "fps:4"},
  };
  refuse(kNotJoined, calls, kNoUser);
  join(LMRTCIWRoleLiveBroadcaster);
  refuse(kBadParameter, calls, "E: liveInfo is nil");
  engine->setLiveInfo(info);
  for (const auto& c : calls) {
    const auto method = c.entry.substr(0, c.entry.find(' '));
    const auto callback = " on" + method.substr(3, method.find("WithRed") - 3) + "Set ";
    const auto keys = c.resultKeys.empty() ? c.entry.substr(method.size() + 1) : c.resultKeys;
    for (const std::int64_t code : {0, 7}) {
      expect(0, c.call(*engine), {"T " + c.entry, "sdk setMixConfig" + c.sent});
      answer(code, method + callback + keys, c.first);
    }
  }
}

TEST_F(LiveTest, ShortFormsMeanTheNormalStream) {
  goLive();
  expect(0, engine->setLiveMixVideoBitrate(5),
         {"T setLiveMixVideoBitrate bitrate:5", "T setLiveMixVideoBitrate bitrate:5,tiny:0",
          "sdk setMixConfig normal:0,0,0,5"});
  expect(0, engine->setLiveMixVideoResolution(1, 2),
         {"T setLiveMixVideoResolution width:1,height:2",
          "T setLiveMixVideoResolution width:1,height:2,tiny:0", "sdk setMixConfig normal:0,1,2,0"});
  expect(0, engine->setLiveMixVideoFps(0),
         {"T setLiveMixVideoFps fps:0", "T setLiveMixVideoFps fps:0,tiny:0",
          "sdk setMixConfig normal:10,0,0,0"});
}

TEST_F(LiveTest, RefusedColoursAndEmptyListsSendNothing) {
  goLive();
  const std::string color = "setLiveMixBackgroundColor";
  const std::string parts = "setLiveMixBackgroundColorWithRed:green:blue";
  const std::string bad = " LMRTCWrapperCodeParameterError";
  expect(kBadParameter, engine->setLiveMixBackgroundColor(0x1000000),
         {"T " + color + " color:16777216", "E: " + color + bad});
  expect(kBadParameter, engine->setLiveMixBackgroundColorWithRed(256, 0, 0),
         {"T " + parts + " red:256:green:0blue:0", "E: " + parts + bad});
  expect(kBadParameter, engine->setLiveMixCustomLayouts({}),
         {"T setLiveMixCustomLayouts layoutArraylength:0", "E: layoutArray count is 0"});
  expect(kBadParameter, engine->setLiveMixCustomAudios({}),
         {"T setLiveMixCustomAudios userIdArrayLeggth0", "E: userIdArray count is 0"});
  engine->setLiveInfo(nullptr);
  expect(kBadParameter, engine->setLiveMixCustomAudios({"u"}),
         {"T setLiveMixCustomAudios userIdArrayLeggth1", "E: liveInfo is nil"});
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
                                          Layout("gone"), Layout("quiet"), Layout(1, "u1", std::nullopt)}),
         {"T setLiveMixCustomLayouts layoutArraylength:7", "T getRemoteUser userId:me",
          "T getRemoteUser userId:u1", "T getRemoteUser userId:u1", "T getRemoteUser userId:gone",
          "T getRemoteUser userId:quiet", "T getRemoteUser userId:u1",
          "sdk setMixConfig layout:1 custom:1 layouts:4 me_clip[0,0 480x640] me_LumoCloudRTC[0,0 480x640] "
          "u1_cam2[1,2 3x4] u1_LumoCloudRTC[0,0 480x640]"});
  answer(0, "setLiveMixCustomLayouts onLiveMixCustomLayoutsSet layoutArraylength:7");
  expect(0, engine->setLiveMixCustomAudios({"me", "u1", "quiet", "gone"}),
         {"T setLiveMixCustomAudios userIdArrayLeggth4", "T getRemoteUser userId:u1",
          "T getRemoteUser userId:quiet", "T getRemoteUser userId:gone",
          "sdk setMixConfig custom:1 audios:2 me_mic u1_cam2"});
  answer(7, "setLiveMixCustomAudios onLiveMixCustomAudiosSet userIdArrayLeggth4");
}

TEST_F(LiveTest, CdnAddressesAreAddedAndRemoved) {
  expect(kNotJoined, engine->addLiveCdn("rtmp://a"), {"T addLiveCdn url:rtmp://a", kNoUser});
  join(LMRTCIWRoleLiveBroadcaster);
  expect(kBadParameter, engine->removeLiveCdn("a"), {"T removeLiveCdn url:a", "E: liveInfo is nil"});
  engine->setLiveInfo(info);
  expect(0, engine->addLiveCdn("a"), {"T addLiveCdn url:a", "sdk addPublishStreamUrl a"});
  expect(0, engine->removeLiveCdn("a"), {"T removeLiveCdn url:a", "sdk removePublishStreamUrl a"});
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
  expect(0, engine->enableLiveMixInnerCdnStream(true), {entry + "1", "sdk enableInnerCDN 1"});
  answer(0, "enableLiveMixInnerCdnStream onLiveMixInnerCdnStreamEnabled enable:1", "1");
  engine->enableLiveMixInnerCdnStream(false);
  complete(3, {"E enableLiveMixInnerCdnStream callback:onLiveMixInnerCdnStreamEnabled, code:3, enable:0",
               "host onLiveMixInnerCdnStreamEnabled 1 3 sdk3"});
  listen({"onLiveMixInnerCdnStreamEnabled"});
  engine->enableLiveMixInnerCdnStream(false);
  complete(0, {});
  EXPECT_TRUE(engine->innerCdnStateCache());
}

TEST_F(LiveTest, TheInnerCdnStreamIsReceivedShownAndMuted) {
  const auto shown = view("v");
  const std::string set = "T setLiveMixInnerCdnStreamViewDelegate view:";
  const std::string mute = "T muteLiveMixInnerCdnStream mute:1";
  expect(kBadParameter, engine->setLiveMixInnerCdnStreamViewDelegate(nullptr),
         {set + "0", "E unsubscribeLiveMixInnerCdnStream msg:view is nil"});
  expect(0, engine->removeLiveMixInnerCdnStreamView(), {"T removeLiveMixInnerCdnStreamView"});
  expect(kNotJoined, engine->muteLiveMixInnerCdnStream(true), {mute, kNoUser});
  EXPECT_EQ(kNotJoined, engine->subscribeLiveMixInnerCdnStream());
  join(LMRTCIWRoleLiveAudience);
  expect(0, engine->setLiveMixInnerCdnStreamViewDelegate(shown), {set + "1", "view v setInnerCdnView nil"});
  expect(kNoStream, engine->subscribeLiveMixInnerCdnStream(),
         {"T subscribeLiveMixInnerCdnStream", "E: streams count is 0"});
  expect(kNoStream, engine->unsubscribeLiveMixInnerCdnStream(),
         {"T unsubscribeLiveMixInnerCdnStream", "E: streams count is 0"});
  expect(kNoStream, engine->muteLiveMixInnerCdnStream(true), {mute, "E: CDNStream is nil"});

  room->cdn = make<fake::CdnInput>("mix", "cdn", 1, 2);
  expect(0, engine->setLiveMixInnerCdnStreamViewDelegate(shown),
         {set + "1", "view v setInnerCdnView mix_cdn"});
  expect(0, engine->removeLiveMixInnerCdnStreamView(),
         {"T removeLiveMixInnerCdnStreamView", "view v removeInnerCdnView"});
  EXPECT_EQ(shown, engine->iwLiveMixInnerCdnVideoView());
  expect(0, engine->subscribeLiveMixInnerCdnStream(),
         {"T subscribeLiveMixInnerCdnStream", "sdk subscribeStream (mix_cdn:v) tiny ()"});
  answer(0, "subscribeLiveMixInnerCdnStream onLiveMixInnerCdnStreamSubscribed");
  expect(0, engine->unsubscribeLiveMixInnerCdnStream(),
         {"T unsubscribeLiveMixInnerCdnStream", "sdk unsubscribeStreams (mix_cdn:v)"});
  complete(2, {"console LMRTCIWEngine subscribeLiveMixInnerCdnStream completion code: 2",
               "host onLiveMixInnerCdnStreamUnsubscribed 2 sdk2"});
  expect(0, engine->muteLiveMixInnerCdnStream(true), {mute, "sdk mix_cdn.setIsMute 1"});
  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->setLiveMixInnerCdnStreamViewDelegate(nullptr), {set + "0", kNoEngine});
}

TEST_F(LiveTest, SizeAndFrameRateOfTheInnerCdnStreamTravelTogether) {
  const std::string size = "setLocalLiveMixInnerCdnVideoResolution";
  const std::string rate = "setLocalLiveMixInnerCdnVideoFps";
  const std::string small = "T " + size + " width:360, height:640";
  expect(kNotJoined, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {small, "E setLiveMixVideoResolution msg:room is nil or localUser is nil"});
  expect(kNotJoined, engine->setLocalLiveMixInnerCdnVideoFps(1), {"T " + rate + " fps:1", kNoUser});
  room->cdn = make<fake::CdnInput>("mix", "cdn", 1, 2);
  join(LMRTCIWRoleLiveAudience);
  expect(kBadParameter, engine->setLocalLiveMixInnerCdnVideoResolution(640, 360),
         {"T " + size + " width:640, height:360", "E: width and height is not support"});
  const std::string sized = " callback:onLocalLiveMixInnerCdnVideoResolutionSet, code:";
  expect(0, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {small, "sdk mix_cdn.setVideoConfig 9 -1"});
  answer(6, size + " onLocalLiveMixInnerCdnVideoResolutionSet");
  expect(0, engine->setLocalLiveMixInnerCdnVideoFps(2),
         {"T " + rate + " fps:2", "sdk mix_cdn.setVideoConfig -1 2"});
  complete(0, {"R " + rate + sized + "0, ", "host onLocalLiveMixInnerCdnVideoFpsSet 0 ok"});
  expect(0, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {small, "sdk mix_cdn.setVideoConfig 9 2"});
  answer(0, size + " onLocalLiveMixInnerCdnVideoResolutionSet");
  expect(0, engine->setLocalLiveMixInnerCdnVideoFps(7),
         {"T " + rate + " fps:7", "sdk mix_cdn.setVideoConfig 9 -1"});
  complete(5, {"E " + rate + sized + "5, ", "host onLocalLiveMixInnerCdnVideoFpsSet 5 sdk5"});
  EXPECT_EQ(2, engine->innerCDNVideoFps());
}

TEST_F(LiveTest, RolesSwitchFailAndEndInAKick) {
  const std::string console = "console LMRTCIWEngine switchLiveRole role return: ";
  const std::string broadcaster = "S switchLiveRole msg:LMRTCIWRoleLiveBroadcaster ";
  const std::string audience = "S switchLiveRole msg:switchToAudienceOnSucceed ";
  expect(kNotJoined, engine->switchLiveRole(1), {"T switchLiveRole role:1", kNoSetup});
  join(LMRTCIWRoleMeetingMember);
  expect(-21, engine->switchLiveRole(1), {"T switchLiveRole role:1", console + "-21"});
  join(LMRTCIWRoleLiveAudience);
  expect(-17, engine->switchLiveRole(2), {"T switchLiveRole role:2", console + "-17"});
  expect(-17, engine->switchLiveRole(3), {"T switchLiveRole role:3", console + "-17"});

  room->me->nextLiveInfo.set(info);
  expect(0, engine->switchLiveRole(1), {"T switchLiveRole role:1", "sdk switchToBroadcaster 0"});
  complete(8, {broadcaster + "onFailed", "host onLiveRoleSwitched 2 8 sdk8"});
  EXPECT_EQ(nullptr, engine->liveInfo());
  engine->switchLiveRole(1);
  complete(0, {broadcaster + "onLiveRoleSwitched", "host onLiveRoleSwitched 1 0 ok"});
  EXPECT_EQ(info, engine->liveInfo());

  room->live = {stream("mix", "a", 0, 2), stream("mix", "a", 1, 2)};
  expect(0, engine->switchLiveRole(2), {"T switchLiveRole role:2", "sdk switchToAudienceOnSucceed"});
  complete(1, {audience + "onFailed", "host onLiveRoleSwitched 1 1 sdk1"});
  engine->switchLiveRole(2);
  complete(0, {"host onLiveRoleSwitched 2 0 ok", "host onRemoteLiveMixPublished 2"});
  EXPECT_EQ(nullptr, engine->liveInfo());

  listen({"onKicked", "onLiveRoleSwitched"});
  engine->switchLiveRole(1);
  complete(0, {});
  EXPECT_EQ(1, engine->iwRoomSetup()->role);
  listen();
  engine->switchLiveRole(2);
  complete(fake::LocalUser::kKicked, {audience + "onKicked", "host onKicked r1 switch to audience error"});
  EXPECT_EQ(nullptr, engine->liveInfo());
  EXPECT_EQ(kNotJoined, engine->switchLiveRole(1));
  join(LMRTCIWRoleLiveAudience);
  engine->switchLiveRole(1);
  complete(fake::LocalUser::kKicked,
           {broadcaster + "onKicked", "host onKicked r1 switch to broadcaster error"});
  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->switchLiveRole(1), {"T switchLiveRole role:1", kNoEngine});
}

}  // namespace
}  // namespace lumo
