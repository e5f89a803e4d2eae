#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using ConfigTest = EngineTest;
using PublishTest = EngineTest;
using SubscribeTest = EngineTest;

const std::string kNoRoom = " msg:room is nil or localUser is nil";
const std::string kNoRoomOrSetup = kNoRoom + " or iwRoomSetup is nil";

TEST_F(ConfigTest, ConfigsReachTheDefaultStreamsConvertedButUnchecked) {
  LMRTCIWAudioConfig audioConfig{.quality = 2, .scenario = 3, .recordingVolume = 250};
  expect(0, engine->setAudioConfig(&audioConfig),
         {"T setAudioConfig quality:2,scenario:3,recordingVolume:250", "sdk me_mic.setAudioQuality 2 0",
          "sdk me_mic.setRecordingVolume 250"});

  LMRTCIWVideoConfig config{.minBitrate = 1, .maxBitrate = 2, .fps = 3, .resolution = 17, .mirror = true};
  expect(0, engine->setVideoConfig(&config),
         {"T setVideoConfig minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1",
          "T setVideoConfig minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1,tiny:0",
          "sdk me_cam.setVideoConfig 1-2 fps 3 size -1", "sdk me_cam.setIsEncoderMirror 1"});
  expect(0, engine->setVideoConfig(&config, true),
         {"T setVideoConfig minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1,tiny:1",
          "sdk me_cam.setTinyVideoConfig 1-2 fps 3 size -1"});

  engine->setRtcEngine(nullptr);
  EXPECT_EQ(0, engine->setAudioConfig(&audioConfig));
  EXPECT_EQ(0, engine->setVideoConfig(&config, true));
  EXPECT_EQ(std::string::npos, trace->take().find("sdk"));
}

TEST_F(ConfigTest, AnAbsentConfigIsRefusedAndTheVideoFormLogsUnderTheAudioName) {
  expect(kBadParameter, engine->setAudioConfig(nullptr),
         {"T setAudioConfig quality:0,scenario:0,recordingVolume:0", "E setAudioConfig msg:config is nil"});
  expect(kBadParameter, engine->setVideoConfig(nullptr),
         {"T setVideoConfig minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0",
          "T setVideoConfig minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0,tiny:0",
          "E setAudioConfig msg:config is nil"});
}

const std::string kCodec = "sdk me_mic.setAudioCodecType 111";
const std::string kTiny = "sdk me_cam.setEnableTinyStream 1";

TEST_F(PublishTest, PublishAndUnpublishTakeTheWayOfTheRoleForEveryMediaType) {
  const std::vector<std::vector<std::string>> prepared = {{kCodec}, {kTiny}, {kCodec, kTiny}};
  const std::vector<std::vector<std::string>> what = {
      {"Streams (me_mic:a)", "Streams (me_cam:v)", "Streams (me_mic:a, me_cam:v)"},
      {"LiveStream me_mic", "LiveStream me_cam", "DefaultLiveStreams"}};
  for (std::size_t i = 0; i < 12; ++i) {
    const std::size_t role = i % 2;
    const std::size_t type = i / 2 % 3;
    const std::int64_t code = i < 6 ? 0 : -5;
    const std::string call = format("type:%@", {type});
    const std::string values = format(", code:%@, role:%@", {code, role}) + (role == 0 ? "" : "," + call);
    const std::string status = code == 0 ? "R " : "E ";
    const std::string outcome = std::to_string(type) + (code == 0 ? " 0 ok" : " -5 sdk-5");
    SCOPED_TRACE(values + call);
    join(static_cast<std::int64_t>(role));

    EXPECT_EQ(0, engine->publish(static_cast<std::int64_t>(type)));
    std::vector<std::string> lines = {"T publish " + call, "sdk publish" + what[role][type]};
    lines.insert(lines.begin() + 1, prepared[type].begin(), prepared[type].end());
    EXPECT_EQ(Trace::text(lines), trace->take());
    expect(true, sdk->complete(code),
           {status + "publish callback:onPublished" + values, "host onPublished " + outcome});

    expect(0, engine->unpublish(static_cast<std::int64_t>(type)),
           {"T unpublish " + call, "sdk unpublish" + what[role][type]});
    expect(true, sdk->complete(code),
           {status + "unpublish callback:onUnpublished" + values, "host onUnpublished " + outcome});
  }
}

TEST_F(PublishTest, ALivePublicationReplacesTheLiveInfoEvenWhenItFails) {
  join(LMRTCIWRoleLiveBroadcaster);
  const auto info = make<fake::LiveInfo>();
  room->me->nextLiveInfo.set(info);
  engine->publish(2);
  sdk->complete();
  EXPECT_EQ(info, engine->liveInfo());
  engine->unpublish(2);
  sdk->complete();
  EXPECT_EQ(info, engine->liveInfo());
  room->me->nextLiveInfo.set(nullptr);
  engine->publish(1);
  sdk->complete(-3);
  EXPECT_EQ(nullptr, engine->liveInfo());
}

TEST_F(PublishTest, PreparationReadsTheEngineSetupAtEachCall) {
  join();
  setup->audioSetup->type = 0;
  setup->videoSetup->enableTinyStream = false;
  engine->publish(2);
  EXPECT_TRACE("T publish type:2", "sdk me_mic.setAudioCodecType 0", "sdk me_cam.setEnableTinyStream 0",
               "sdk publishStreams (me_mic:a, me_cam:v)");
  // An absent setup reads as zero and false.
  setup->audioSetup->type = 111;
  setup->videoSetup->enableTinyStream = true;
  engine->setIwEngineSetup(nullptr);
  engine->publish(2);
  EXPECT_TRACE("T publish type:2", "sdk me_mic.setAudioCodecType 0", "sdk me_cam.setEnableTinyStream 0",
               "sdk publishStreams (me_mic:a, me_cam:v)");
}

TEST_F(PublishTest, ChecksComeInTheirOrder) {
  EXPECT_EQ(kNotJoined, engine->publish(3));
  expect(kNotJoined, engine->unpublish(3),
         {"T publish type:3", "E publish" + kNoRoomOrSetup, "T unpublish type:3", "E unpublish" + kNoRoom});

  join(LMRTCIWRoleLiveAudience);
  for (const std::int64_t type : {3, -1}) {
    const std::string text = std::to_string(type);
    EXPECT_EQ(kBadParameter, engine->publish(type));
    expect(kBadParameter, engine->unpublish(type),
           {"T publish type:" + text, "E publish msg:streamArray count is 0", "T unpublish type:" + text,
            "E unpublish msg:streamArray count is 0"});
  }
  // The role is refused silently, after the streams have been prepared.
  EXPECT_EQ(kBadParameter, engine->publish(2));
  expect(kBadParameter, engine->unpublish(2), {"T publish type:2", kCodec, kTiny, "T unpublish type:2"});

  // Only publishing needs the room setup.
  engine->setIwRoomSetup(nullptr);
  EXPECT_EQ(kNotJoined, engine->publish(0));
  expect(0, engine->unpublish(0),
         {"T publish type:0", "E publish" + kNoRoomOrSetup, "T unpublish type:0",
          "sdk unpublishStreams (me_mic:a)"});
  room->me = nullptr;
  EXPECT_EQ(kNotJoined, engine->unpublish(0));
}

TEST_F(SubscribeTest, SubscribingSelectsOrdinaryStreamsOfTheUsersThatAreThere) {
  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1), video("u1")}), user("u2", {video("u2")})};
  const auto sub = make<fake::OtherRoom>("s1");
  sub->users = {user("u3", {audio("u3")})};
  join();
  engine->setSubs({{"s1", sub}});
  trace->take();

  const std::vector<std::string> ids = {"u2", "gone", "u1", "u3"};
  const std::vector<std::string> wanted = {
      "(u1_LumoCloudRTC:a, u3_LumoCloudRTC:a)", "(u2_LumoCloudRTC:v, u1_LumoCloudRTC:v)",
      "(u2_LumoCloudRTC:v, u1_LumoCloudRTC:a, u1_LumoCloudRTC:v, u3_LumoCloudRTC:a)"};
  const auto perId = [&](const std::string& first, const std::string& before, const std::string& after) {
    std::vector<std::string> lines = {first};
    for (const auto& id : ids) lines.push_back(before + id + after);
    return lines;
  };
  for (std::int64_t type = 0; type < 3; ++type) {
    const std::string streams = wanted[static_cast<std::size_t>(type)];
    const std::string call = format("userIdArray:%@,type:%@", {ids, type});
    for (const bool tiny : {false, true}) {
      const std::string tinyCall = call + (tiny ? ",tiny:1" : ",tiny:0");
      EXPECT_EQ(0, engine->subscribeWithUserIds(ids, type, tiny));
      auto lines = perId("T subscribeWithUserIds " + tinyCall, "T getRemoteUser userId:", "");
      lines.push_back("sdk subscribeStream " + (tiny ? "nil tiny " + streams : streams + " tiny nil"));
      EXPECT_EQ(Trace::text(lines), trace->take());
      sdk->complete(-2);
      EXPECT_EQ(Trace::text(perId("E subscribeWithUserIds callback:onSubscribed, code:-2, " + tinyCall,
                                  "host onSubscribed ", format(" %@ -2 sdk-2", {type}))),
                trace->take());
    }
    EXPECT_EQ(0, engine->unsubscribeWithUserIds(ids, type));
    auto lines = perId("T unsubscribeWithUserIds " + call, "T getRemoteUser userId:", "");
    lines.push_back("sdk unsubscribeStreams " + streams);
    EXPECT_EQ(Trace::text(lines), trace->take());
    sdk->complete();
    EXPECT_EQ(Trace::text(perId("R unsubscribeWithUserIds callback:onUnsubscribed, code:0, " + call,
                                "host onUnsubscribed ", format(" %@ 0 ok", {type}))),
              trace->take());
  }
}

TEST_F(SubscribeTest, ForwardingFormsLogTheirOwnLineFirst) {
  room->users = {user("u1", {audio("u1")})};
  join();
  const std::string list = "T subscribeWithUserIds userIdArray:(u1),type:0,tiny:";
  const std::string lookUp = "T getRemoteUser userId:u1";
  const std::string send = "sdk subscribeStream (u1_LumoCloudRTC:a) tiny nil";
  expect(0, engine->subscribe("u1", 0),
         {"T subscribe userId:u1,type:0", "T subscribe userId:u1,type:0,tiny:0", list + "0", lookUp, send});
  expect(0, engine->subscribe("u1", 0, true),
         {"T subscribe userId:u1,type:0,tiny:1", list + "1", lookUp,
          "sdk subscribeStream nil tiny (u1_LumoCloudRTC:a)"});
  expect(0, engine->subscribeWithUserIds({"u1"}, 0),
         {"T subscribeWithUserIds userIdArray:(u1),type:0", list + "0", lookUp, send});
  expect(0, engine->unsubscribe("u1", 0),
         {"T unsubscribe userId:u1,type:0", "T unsubscribeWithUserIds userIdArray:(u1),type:0", lookUp,
          "sdk unsubscribeStreams (u1_LumoCloudRTC:a)"});
}

TEST_F(SubscribeTest, ChecksComeInTheirOrderWithTheirOwnTexts) {
  const std::string none = "-E msg:streams count is 0";
  expect(kBadParameter, engine->subscribe(std::nullopt, 2),
         {"T subscribe userId:(null),type:2", "T subscribe userId:(null),type:2,tiny:0",
          "E unpublish msg:userId is nil"});
  expect(kBadParameter, engine->unsubscribe(std::nullopt, 2),
         {"T unsubscribe userId:(null),type:2", "E unsubscribe msg:userId is nil"});

  EXPECT_EQ(kNotJoined, engine->subscribeWithUserIds({}, 2, false));
  EXPECT_EQ(kNotJoined, engine->unsubscribeWithUserIds({"u1"}, 2));
  EXPECT_EQ(kNotJoined, engine->subscribeLiveMix(2));
  expect(kNotJoined, engine->unsubscribeLiveMix(2),
         {"T subscribeWithUserIds userIdArray:(),type:2,tiny:0", "E subscribeWithUserIds" + kNoRoom,
          "T unsubscribeWithUserIds userIdArray:(u1),type:2",
          "E unsubscribeWithUserIds" + kNoRoom + " or userIdArray count is 0", "T subscribeLiveMix type:2",
          "T subscribeLiveMix type:2,tiny:0", "E subscribeLiveMix" + kNoRoom, "T unsubscribeLiveMix type:2",
          "E unsubscribeLiveMix" + kNoRoom});

  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1)})};
  join();
  EXPECT_EQ(kBadParameter, engine->subscribeWithUserIds({}, 2, false));
  expect(kNotJoined, engine->unsubscribeWithUserIds({}, 2),
         {"T subscribeWithUserIds userIdArray:(),type:2,tiny:0", "log 2 IW/RTC-subscribeWithUserIds" + none,
          "T unsubscribeWithUserIds userIdArray:(),type:2",
          "E unsubscribeWithUserIds" + kNoRoom + " or userIdArray count is 0"});
  for (const std::int64_t type : {1, 5, -1}) {
    EXPECT_EQ(kBadParameter, engine->subscribeWithUserIds({"u1"}, type, false)) << type;
    EXPECT_EQ(kBadParameter, engine->unsubscribeWithUserIds({"u1"}, type)) << type;
    const std::string call = "-T userIdArray:(u1),type:" + std::to_string(type);
    const std::string lookUp = "T getRemoteUser userId:u1";
    EXPECT_TRACE("log 4 IW/RTC-subscribeWithUserIds" + call + ",tiny:0", lookUp,
                 "log 2 IW/RTC-subscribeWithUserIds" + none, "log 4 IW/RTC-unsubscribeWithUserIds" + call,
                 lookUp, "log 2 IW/RTC-unsubscribeWithUserIds" + none);
  }
}

TEST_F(SubscribeTest, UnsetCallbacksStillLeaveTheirResultLine) {
  room->users = {user("u1", {audio("u1")})};
  room->live = {stream("mix", "l", 0, 2)};
  const auto deaf = std::make_shared<LMRTCIWEngineDelegate>();
  engine->setEngineDelegate(deaf);
  for (const std::int64_t role : {0, 1}) {
    join(role);
    engine->publish(0);
    engine->unpublish(0);
    engine->subscribe("u1", 0);
    engine->unsubscribe("u1", 0);
    engine->subscribeLiveMix(0);
    trace->take();
    for (int i = 0; i < 5; ++i) sdk->complete();
    const std::string as = ", code:0, role:" + std::to_string(role) + (role == 0 ? "" : ",type:0");
    EXPECT_TRACE("R publish callback:onPublished" + as, "R unpublish callback:onUnpublished" + as,
                 "R subscribeWithUserIds callback:onSubscribed, code:0, userIdArray:(u1),type:0,tiny:0",
                 "R unsubscribeWithUserIds callback:onUnsubscribed, code:0, userIdArray:(u1),type:0",
                 "R subscribeLiveMix callback:onLiveMixSubscribed, code:0, type:0,tiny:0");
  }
}

TEST_F(SubscribeTest, TheLiveMixTakesEveryStreamUnlessOneMediaTypeIsNamed) {
  join(LMRTCIWRoleLiveAudience);
  EXPECT_EQ(kBadParameter, engine->subscribeLiveMix(0));
  expect(kBadParameter, engine->unsubscribeLiveMix(0),
         {"T subscribeLiveMix type:0", "T subscribeLiveMix type:0,tiny:0",
          "E subscribeLiveMix msg:streamArray count is 0", "T unsubscribeLiveMix type:0",
          "E unsubscribeLiveMix msg:streamArray count is 0"});

  room->live = {stream("mix", "l", 0, 2), stream("mix", "l", 1, 2)};
  const std::vector<std::pair<std::int64_t, std::string>> rows = {
      {0, "(mix_l:a)"}, {1, "(mix_l:v)"}, {2, "(mix_l:a, mix_l:v)"}, {5, "(mix_l:a, mix_l:v)"}};
  for (const auto& [type, streams] : rows) {
    const std::string text = "type:" + std::to_string(type);
    expect(0, engine->subscribeLiveMix(type, true),
           {"T subscribeLiveMix " + text + ",tiny:1", "sdk subscribeStream nil tiny " + streams});
    expect(true, sdk->complete(),
           {"R subscribeLiveMix callback:onLiveMixSubscribed, code:0, " + text + ",tiny:1",
            "host onLiveMixSubscribed " + std::to_string(type) + " 0 ok"});
  }
  expect(0, engine->subscribeLiveMix(1),
         {"T subscribeLiveMix type:1", "T subscribeLiveMix type:1,tiny:0",
          "sdk subscribeStream (mix_l:v) tiny nil"});
  sdk->complete();
  trace->take();

  expect(0, engine->unsubscribeLiveMix(7),
         {"T unsubscribeLiveMix type:7", "sdk unsubscribeStreams (mix_l:a, mix_l:v)"});
  expect(true, sdk->complete(-9),
         {"E unsubscribeLiveMix callback:onLiveMixUnsubscribed, code:-9, type:7,streamArray:(mix_l, "
          "mix_l)",
          "host onLiveMixUnsubscribed 7 -9 sdk-9"});
}

}  // namespace
}  // namespace lumo
