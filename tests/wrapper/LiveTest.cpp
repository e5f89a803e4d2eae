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
  void TearDown() override {
    info = nullptr;
    EngineTest::TearDown();
  }
  std::shared_ptr<fake::LiveInfo> info = make<fake::LiveInfo>();
};

/// An operation on the live mix: the method's tag, its keys, what reaches the SDK, the callback and what it
/// gets in front of the code. `resultKeys` is what the result line carries, where that differs.
struct MixCall {
  std::function<std::int64_t(LMRTCIWEngine&)> call;
  std::string method;
  std::string keys;
  std::string sent;
  std::string callback;
  std::string first = "";
  std::string resultKeys = "";
};

TEST_F(LiveTest, EachMixOperationSendsItsOwnFieldsAndReportsThem) {
  using Engine = LMRTCIWEngine;
  const std::vector<MixCall> calls = {
      {[](Engine& e) { return e.setLiveMixLayoutMode(0); }, "setLiveMixLayoutMode", "mode:0", " layout:2",
       "onLiveMixLayoutModeSet"},
      {[](Engine& e) { return e.setLiveMixRenderMode(2); }, "setLiveMixRenderMode", "mode:2", " render:2",
       "onLiveMixRenderModeSet"},
      {[](Engine& e) { return e.setLiveMixBackgroundColor(0xFFFFFF); }, "setLiveMixBackgroundColor",
       "color:16777215", " color:16777215", "onLiveMixBackgroundColorSet"},
      {[](Engine& e) { return e.setLiveMixBackgroundColorWithRed(1, 2, 255); },
       "setLiveMixBackgroundColorWithRed:green:blue", "red:1:green:2blue:255", " color:66303",
       "onLiveMixBackgroundColorSet"},
      {[](Engine& e) { return e.setLiveMixAudioBitrate(-5); }, "setLiveMixAudioBitrate", "bitrate:-5",
       " audio:-5", "onLiveMixAudioBitrateSet"},
      {[](Engine& e) { return e.setLiveMixVideoBitrate(800, true); }, "setLiveMixVideoBitrate",
       "bitrate:800,tiny:1", " tiny:0,0,0,800", "onLiveMixVideoBitrateSet", "1 "},
      {[](Engine& e) { return e.setLiveMixVideoResolution(-1, 9, false); }, "setLiveMixVideoResolution",
       "width:-1,height:9,tiny:0", " normal:0,-1,9,0", "onLiveMixVideoResolutionSet", "0 "},
      {[](Engine& e) { return e.setLiveMixVideoFps(3, true); }, "setLiveMixVideoFps", "fps:3,tiny:1",
       " tiny:30,0,0,0", "onLiveMixVideoFpsSet", "1 ", "fps:3"},
      {[](Engine& e) { return e.setLiveMixVideoFps(4, false); }, "setLiveMixVideoFps", "fps:4,tiny:0", "",
       "onLiveMixVideoFpsSet", "0 ", "fps:4"},
      {[](Engine& e) { return e.setLiveMixCustomAudios({"u9"}); }, "setLiveMixCustomAudios",
       "userIdArrayLeggth1", " custom:1 audios:0", "onLiveMixCustomAudiosSet"},
  };
  for (const auto& c : calls) {
    SCOPED_TRACE(c.method);
    const std::string entry = "T " + c.method + " " + c.keys;
    const auto refused = [&](const std::string& message) {
      EXPECT_EQ(Trace::text({entry, "E " + c.method + " msg:" + message}), trace->take());
    };
    releaseRoom();
    EXPECT_EQ(kNotJoined, c.call(*engine));
    refused("room is nil or localUser is nil");
    room = make<fake::Room>("r1");
    sdk->engine->nextRoom.set(room);
    join(LMRTCIWRoleLiveBroadcaster);
    EXPECT_EQ(kBadParameter, c.call(*engine));
    refused("liveInfo is nil");

    engine->setLiveInfo(info);
    for (const std::int64_t code : {0, 7}) {
      EXPECT_EQ(0, c.call(*engine));
      auto sent = trace->take();
      if (const auto lookup = sent.find("log 4 IW/RTC-getRemoteUser"); lookup != std::string::npos) {
        sent.erase(lookup, sent.find('\n', lookup) + 1 - lookup);
      }
      EXPECT_EQ(Trace::text({entry, "sdk setMixConfig" + c.sent}), sent);
      sdk->complete(code);
      const auto& keys = c.resultKeys.empty() ? c.keys : c.resultKeys;
      EXPECT_TRACE((code == 0 ? "R " : "E ") + c.method + " callback:" + c.callback +
                       ", code:" + std::to_string(code) + ", " + keys,
                   "host " + c.callback + " " + c.first + (code == 0 ? "0 ok" : "7 sdk7"));
    }
    engine->setLiveInfo(nullptr);
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
  expect(kBadParameter, engine->setLiveMixBackgroundColor(0x1000000),
         {"T setLiveMixBackgroundColor color:16777216",
          "E setLiveMixBackgroundColor msg:setLiveMixBackgroundColor LMRTCWrapperCodeParameterError"});
  expect(kBadParameter, engine->setLiveMixBackgroundColorWithRed(256, 0, 0),
         {"T setLiveMixBackgroundColorWithRed:green:blue red:256:green:0blue:0",
          "E setLiveMixBackgroundColorWithRed:green:blue msg:setLiveMixBackgroundColorWithRed:green:blue "
          "LMRTCWrapperCodeParameterError"});
  expect(kBadParameter, engine->setLiveMixCustomLayouts({}),
         {"T setLiveMixCustomLayouts layoutArraylength:0",
          "E setLiveMixCustomLayouts msg:layoutArray count is 0"});
  expect(
      kBadParameter, engine->setLiveMixCustomAudios({}),
      {"T setLiveMixCustomAudios userIdArrayLeggth0", "E setLiveMixCustomAudios msg:userIdArray count is 0"});
}

TEST_F(LiveTest, LayoutsAndAudiosFindLocalStreamsFirstAndDropWhatIsNotThere) {
  const auto file = make<fake::FileOutput>("clip");
  room->me->published = {sdk->engine->microphone, file};  // no camera: its layout falls back to remote users
  room->users = {user("u1", {stream("u1", "cam2", 0), stream("u1", "cam2", 1), video("u1"), audio("u1")}),
                 user("me", {video("me")}), user("quiet")};
  goLive();
  LMRTCIWCustomLayout placed(2, "u1", "cam2");
  placed.x = 1;
  placed.y = 2;
  placed.width = 3;
  placed.height = 4;
  expect(0,
         engine->setLiveMixCustomLayouts({LMRTCIWCustomLayout(1, "me", "clip"), LMRTCIWCustomLayout("me"),
                                          placed, LMRTCIWCustomLayout("u1"), LMRTCIWCustomLayout("gone"),
                                          LMRTCIWCustomLayout("quiet"),
                                          LMRTCIWCustomLayout(1, "u1", std::nullopt)}),
         {"T setLiveMixCustomLayouts layoutArraylength:7", "T getRemoteUser userId:me",
          "T getRemoteUser userId:u1", "T getRemoteUser userId:u1", "T getRemoteUser userId:gone",
          "T getRemoteUser userId:quiet", "T getRemoteUser userId:u1",
          "sdk setMixConfig layout:1 custom:1 layouts:4 me_clip[0,0 480x640] me_LumoCloudRTC[0,0 480x640] "
          "u1_cam2[1,2 3x4] u1_LumoCloudRTC[0,0 480x640]"});
  expect(true, sdk->complete(),
         {"R setLiveMixCustomLayouts callback:onLiveMixCustomLayoutsSet, code:0, layoutArraylength:7",
          "host onLiveMixCustomLayoutsSet 0 ok"});
  expect(0, engine->setLiveMixCustomAudios({"me", "u1", "quiet", "gone"}),
         {"T setLiveMixCustomAudios userIdArrayLeggth4", "T getRemoteUser userId:u1",
          "T getRemoteUser userId:quiet", "T getRemoteUser userId:gone",
          "sdk setMixConfig custom:1 audios:2 me_mic u1_cam2"});
}

TEST_F(LiveTest, CdnAddressesAreAddedAndRemoved) {
  EXPECT_EQ(kNotJoined, engine->addLiveCdn("rtmp://a"));
  join(LMRTCIWRoleLiveBroadcaster);
  expect(kBadParameter, engine->removeLiveCdn("rtmp://a"),
         {"T removeLiveCdn url:rtmp://a", "E removeLiveCdn msg:liveInfo is nil"});
  engine->setLiveInfo(info);
  expect(0, engine->addLiveCdn("rtmp://a"),
         {"T addLiveCdn url:rtmp://a", "sdk addPublishStreamUrl rtmp://a"});
  expect(0, engine->removeLiveCdn("rtmp://a"),
         {"T removeLiveCdn url:rtmp://a", "sdk removePublishStreamUrl rtmp://a"});
  expect(
      true, sdk->complete(4),
      {"E addLiveCdn callback:onLiveCdnAdded, code:4, url:rtmp://a", "host onLiveCdnAdded rtmp://a 4 sdk4"});
  expect(true, sdk->complete(),
         {"R removeLiveCdn callback:onLiveCdnRemoved, code:0, url:rtmp://a",
          "host onLiveCdnRemoved rtmp://a 0 ok"});
}

TEST_F(LiveTest, TheInnerCdnSwitchReportsWhatTheServerConfirmed) {
  expect(kNotJoined, engine->enableLiveMixInnerCdnStream(true),
         {"T enableLiveMixInnerCdnStream enable:1",
          "E switchLivenableLiveMixInnerCdnStreameRole msg:room is nil or localUser is nil"});
  join(LMRTCIWRoleLiveBroadcaster);
  expect(kBadParameter, engine->enableLiveMixInnerCdnStream(true),
         {"T enableLiveMixInnerCdnStream enable:1", "E enableLiveMixInnerCdnStream msg:rtcEngine is nil"});
  engine->setLiveInfo(info);
  expect(0, engine->enableLiveMixInnerCdnStream(true),
         {"T enableLiveMixInnerCdnStream enable:1", "sdk enableInnerCDN 1"});
  expect(true, sdk->complete(),
         {"R enableLiveMixInnerCdnStream callback:onLiveMixInnerCdnStreamEnabled, code:0, enable:1",
          "host onLiveMixInnerCdnStreamEnabled 1 0 ok"});
  engine->enableLiveMixInnerCdnStream(false);
  trace->take();
  expect(true, sdk->complete(3),
         {"E enableLiveMixInnerCdnStream callback:onLiveMixInnerCdnStreamEnabled, code:3, enable:0",
          "host onLiveMixInnerCdnStreamEnabled 1 3 sdk3"});
  listen({"onLiveMixInnerCdnStreamEnabled"});
  engine->enableLiveMixInnerCdnStream(false);
  trace->take();
  expect(true, sdk->complete(), {});
  EXPECT_TRUE(engine->innerCdnStateCache());
}

TEST_F(LiveTest, TheInnerCdnStreamIsReceivedShownAndMuted) {
  const auto shown = view("v");
  expect(kBadParameter, engine->setLiveMixInnerCdnStreamViewDelegate(nullptr),
         {"T setLiveMixInnerCdnStreamViewDelegate view:0",
          "E unsubscribeLiveMixInnerCdnStream msg:view is nil"});
  expect(0, engine->removeLiveMixInnerCdnStreamView(), {"T removeLiveMixInnerCdnStreamView"});
  expect(kNotJoined, engine->muteLiveMixInnerCdnStream(true),
         {"T muteLiveMixInnerCdnStream mute:1",
          "E muteLiveMixInnerCdnStream msg:room is nil or localUser is nil"});
  EXPECT_EQ(kNotJoined, engine->subscribeLiveMixInnerCdnStream());
  join(LMRTCIWRoleLiveAudience);
  expect(0, engine->setLiveMixInnerCdnStreamViewDelegate(shown),
         {"T setLiveMixInnerCdnStreamViewDelegate view:1", "view v setInnerCdnView nil"});
  for (const bool subscribe : {true, false}) {
    const std::string name =
        subscribe ? "subscribeLiveMixInnerCdnStream" : "unsubscribeLiveMixInnerCdnStream";
    expect(kNoStream,
           subscribe ? engine->subscribeLiveMixInnerCdnStream() : engine->unsubscribeLiveMixInnerCdnStream(),
           {"T " + name, "E " + name + " msg:streams count is 0"});
  }
  expect(kNoStream, engine->muteLiveMixInnerCdnStream(true),
         {"T muteLiveMixInnerCdnStream mute:1", "E muteLiveMixInnerCdnStream msg:CDNStream is nil"});

  room->cdn = make<fake::CdnInput>("mix", "cdn", 1, 2);
  expect(0, engine->setLiveMixInnerCdnStreamViewDelegate(shown),
         {"T setLiveMixInnerCdnStreamViewDelegate view:1", "view v setInnerCdnView mix_cdn"});
  expect(0, engine->removeLiveMixInnerCdnStreamView(),
         {"T removeLiveMixInnerCdnStreamView", "view v removeInnerCdnView"});
  EXPECT_EQ(shown, engine->iwLiveMixInnerCdnVideoView());
  expect(0, engine->subscribeLiveMixInnerCdnStream(),
         {"T subscribeLiveMixInnerCdnStream", "sdk subscribeStream (mix_cdn:v) tiny ()"});
  expect(true, sdk->complete(),
         {"R subscribeLiveMixInnerCdnStream callback:onLiveMixInnerCdnStreamSubscribed, code:0, ",
          "host onLiveMixInnerCdnStreamSubscribed 0 ok"});
  expect(0, engine->unsubscribeLiveMixInnerCdnStream(),
         {"T unsubscribeLiveMixInnerCdnStream", "sdk unsubscribeStreams (mix_cdn:v)"});
  expect(true, sdk->complete(2),
         {"console LMRTCIWEngine subscribeLiveMixInnerCdnStream completion code: 2",
          "host onLiveMixInnerCdnStreamUnsubscribed 2 sdk2"});
  expect(0, engine->muteLiveMixInnerCdnStream(true),
         {"T muteLiveMixInnerCdnStream mute:1", "sdk mix_cdn.setIsMute 1"});

  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->setLiveMixInnerCdnStreamViewDelegate(nullptr),
         {"T setLiveMixInnerCdnStreamViewDelegate view:0",
          "E setLiveMixInnerCdnStreamViewDelegate msg:rtcEngine is nil"});
}

TEST_F(LiveTest, SizeAndFrameRateOfTheInnerCdnStreamTravelTogether) {
  const std::string size = "setLocalLiveMixInnerCdnVideoResolution";
  const std::string rate = "setLocalLiveMixInnerCdnVideoFps";
  expect(kNotJoined, engine->setLocalLiveMixInnerCdnVideoResolution(1, 2),
         {"T " + size + " width:1, height:2",
          "E setLiveMixVideoResolution msg:room is nil or localUser is nil"});
  expect(kNotJoined, engine->setLocalLiveMixInnerCdnVideoFps(1),
         {"T " + rate + " fps:1", "E " + rate + " msg:room is nil or localUser is nil"});
  room->cdn = make<fake::CdnInput>("mix", "cdn", 1, 2);
  join(LMRTCIWRoleLiveAudience);
  expect(kBadParameter, engine->setLocalLiveMixInnerCdnVideoResolution(640, 360),
         {"T " + size + " width:640, height:360", "E " + size + " msg:width and height is not support"});
  const auto result = [](const std::string& method, const char* callback, std::int64_t code) {
    const std::string text = std::to_string(code);
    return std::vector<std::string>{
        (code == 0 ? "R " : "E ") + method +
            " callback:onLocalLiveMixInnerCdnVideoResolutionSet, code:" + text + ", ",
        "host " + std::string(callback) + " " + text + (code == 0 ? " ok" : " sdk" + text)};
  };
  expect(0, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {"T " + size + " width:360, height:640", "sdk mix_cdn.setVideoConfig 9 -1"});
  expect(true, sdk->complete(6), result(size, "onLocalLiveMixInnerCdnVideoResolutionSet", 6));
  expect(0, engine->setLocalLiveMixInnerCdnVideoFps(2),
         {"T " + rate + " fps:2", "sdk mix_cdn.setVideoConfig -1 2"});
  expect(true, sdk->complete(), result(rate, "onLocalLiveMixInnerCdnVideoFpsSet", 0));
  expect(0, engine->setLocalLiveMixInnerCdnVideoResolution(360, 640),
         {"T " + size + " width:360, height:640", "sdk mix_cdn.setVideoConfig 9 2"});
  expect(true, sdk->complete(), result(size, "onLocalLiveMixInnerCdnVideoResolutionSet", 0));
  expect(0, engine->setLocalLiveMixInnerCdnVideoFps(7),
         {"T " + rate + " fps:7", "sdk mix_cdn.setVideoConfig 9 -1"});
  expect(true, sdk->complete(), result(rate, "onLocalLiveMixInnerCdnVideoFpsSet", 0));
  EXPECT_EQ(-1, engine->innerCDNVideoFps());
}

TEST_F(LiveTest, RolesSwitchFailAndEndInAKick) {
  const std::string console = "console LMRTCIWEngine switchLiveRole role return: ";
  expect(kNotJoined, engine->switchLiveRole(1),
         {"T switchLiveRole role:1",
          "E switchLiveRole msg:room is nil or localUser is nil or iwRoomSetup is nil"});
  join(LMRTCIWRoleMeetingMember);
  expect(-21, engine->switchLiveRole(1), {"T switchLiveRole role:1", console + "-21"});
  join(LMRTCIWRoleLiveAudience);
  expect(-17, engine->switchLiveRole(2), {"T switchLiveRole role:2", console + "-17"});
  expect(-17, engine->switchLiveRole(3), {"T switchLiveRole role:3", console + "-17"});

  room->me->nextLiveInfo.set(info);
  expect(0, engine->switchLiveRole(1), {"T switchLiveRole role:1", "sdk switchToBroadcaster 0"});
  expect(true, sdk->complete(8),
         {"S switchLiveRole msg:LMRTCIWRoleLiveBroadcaster onFailed", "host onLiveRoleSwitched 2 8 sdk8"});
  EXPECT_EQ(nullptr, engine->liveInfo());
  engine->switchLiveRole(1);
  trace->take();
  expect(true, sdk->complete(),
         {"S switchLiveRole msg:LMRTCIWRoleLiveBroadcaster onLiveRoleSwitched",
          "host onLiveRoleSwitched 1 0 ok"});
  EXPECT_EQ(info, engine->liveInfo());

  room->live = {stream("mix", "a", 0, 2), stream("mix", "a", 1, 2)};
  expect(0, engine->switchLiveRole(2), {"T switchLiveRole role:2", "sdk switchToAudienceOnSucceed"});
  expect(true, sdk->complete(1),
         {"S switchLiveRole msg:switchToAudienceOnSucceed onFailed", "host onLiveRoleSwitched 1 1 sdk1"});
  engine->switchLiveRole(2);
  trace->take();
  expect(true, sdk->complete(), {"host onLiveRoleSwitched 2 0 ok", "host onRemoteLiveMixPublished 2"});
  EXPECT_EQ(nullptr, engine->liveInfo());

  listen({"onKicked", "onLiveRoleSwitched"});
  engine->switchLiveRole(1);
  trace->take();
  expect(true, sdk->complete(), {});
  EXPECT_EQ(1, engine->iwRoomSetup()->role);
  listen();
  engine->switchLiveRole(2);
  trace->take();
  expect(true, sdk->complete(fake::LocalUser::kKicked),
         {"S switchLiveRole msg:switchToAudienceOnSucceed onKicked",
          "host onKicked r1 switch to audience error"});
  EXPECT_EQ(nullptr, engine->liveInfo());
  EXPECT_EQ(kNotJoined, engine->switchLiveRole(1));
  join(LMRTCIWRoleLiveAudience);
  engine->switchLiveRole(1);
  trace->take();
  expect(true, sdk->complete(fake::LocalUser::kKicked),
         {"S switchLiveRole msg:LMRTCIWRoleLiveBroadcaster onKicked",
          "host onKicked r1 switch to broadcaster error"});
  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->switchLiveRole(1),
         {"T switchLiveRole role:1", "E switchLiveRole msg:rtcEngine is nil"});
}

}  // namespace
}  // namespace lumo
