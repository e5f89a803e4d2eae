#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using ConfigTest = EngineTest;
using PublishTest = EngineTest;
using SubscribeTest = EngineTest;

constexpr auto kNotJoined = LMRTCWrapperCodeLocalUserNotJoined;
constexpr auto kBadParameter = LMRTCWrapperCodeParameterError;
const std::string kNoRoom = " msg:room is nil or localUser is nil";
const std::string kNoRoomOrSetup = kNoRoom + " or iwRoomSetup is nil";

TEST_F(ConfigTest, ConfigsReachTheDefaultStreamsConvertedButUnchecked) {
  LMRTCIWAudioConfig audioConfig{.quality = 2, .scenario = 3, .recordingVolume = 250};
  EXPECT_EQ(0, engine->setAudioConfig(&audioConfig));
  EXPECT_TRACE("log 4 IW/RTC-setAudioConfig-T quality:2,scenario:3,recordingVolume:250",
               "sdk me_mic.setAudioQuality 2 0", "sdk me_mic.setRecordingVolume 250");

  LMRTCIWVideoConfig config{.minBitrate = 1, .maxBitrate = 2, .fps = 3, .resolution = 17, .mirror = true};
  EXPECT_EQ(0, engine->setVideoConfig(&config));
  EXPECT_TRACE("log 4 IW/RTC-setVideoConfig-T minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1",
               "log 4 IW/RTC-setVideoConfig-T minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1,tiny:0",
               "sdk me_cam.setVideoConfig 1-2 fps 3 size -1", "sdk me_cam.setIsEncoderMirror 1");
  EXPECT_EQ(0, engine->setVideoConfig(&config, true));
  EXPECT_TRACE("log 4 IW/RTC-setVideoConfig-T minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1,tiny:1",
               "sdk me_cam.setTinyVideoConfig 1-2 fps 3 size -1");

  engine->setRtcEngine(nullptr);
  EXPECT_EQ(0, engine->setAudioConfig(&audioConfig));
  EXPECT_EQ(0, engine->setVideoConfig(&config, true));
  EXPECT_EQ(std::string::npos, trace->take().find("sdk"));
}

TEST_F(ConfigTest, AnAbsentConfigIsRefusedAndTheVideoFormLogsUnderTheAudioName) {
  EXPECT_EQ(kBadParameter, engine->setAudioConfig(nullptr));
  EXPECT_TRACE("log 4 IW/RTC-setAudioConfig-T quality:0,scenario:0,recordingVolume:0",
               "log 2 IW/RTC-setAudioConfig-E msg:config is nil");
  EXPECT_EQ(kBadParameter, engine->setVideoConfig(nullptr));
  EXPECT_TRACE("log 4 IW/RTC-setVideoConfig-T minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0",
               "log 4 IW/RTC-setVideoConfig-T minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0,tiny:0",
               "log 2 IW/RTC-setAudioConfig-E msg:config is nil");
}

/// One publication per media type: what is prepared, what is sent.
struct PublishRow {
  std::int64_t type;
  std::vector<std::string> prepared;
  std::string ordinary;
  std::string live;
};

const std::string kCodec = "sdk me_mic.setAudioCodecType 111";
const std::string kTiny = "sdk me_cam.setEnableTinyStream 1";
const std::vector<PublishRow> kPublishRows = {
    {0, {kCodec}, "Streams (me_mic:a)", "LiveStream me_mic"},
    {1, {kTiny}, "Streams (me_cam:v)", "LiveStream me_cam"},
    {2, {kCodec, kTiny}, "Streams (me_mic:a, me_cam:v)", "DefaultLiveStreams"},
};

TEST_F(PublishTest, PublishAndUnpublishTakeTheWayOfTheRoleForEveryMediaType) {
  for (const std::int64_t role : {0, 1}) {
    join(role);
    for (const PublishRow& row : kPublishRows) {
      for (const std::int64_t code : {0, -5}) {
        const std::string type = std::to_string(row.type);
        const std::string what = role == 0 ? row.ordinary : row.live;
        const std::string status = code == 0 ? "log 4 IW/RTC-%-R callback:" : "log 2 IW/RTC-%-E callback:";
        const std::string values = ", code:" + std::to_string(code) + ", role:" + std::to_string(role) +
                                   (role == 0 ? "" : ",type:" + type);
        const std::string outcome = type + (code == 0 ? " 0 ok" : " -5 sdk-5");
        const auto result = [&](const std::string& method, const std::string& callback) {
          std::string line = status + callback + values;
          return line.replace(line.find('%'), 1, method);
        };
        SCOPED_TRACE("role " + std::to_string(role) + " type " + type);

        EXPECT_EQ(0, engine->publish(row.type));
        std::string expected = "log 4 IW/RTC-publish-T type:" + type + "\n";
        for (const auto& line : row.prepared) expected += line + "\n";
        EXPECT_EQ(expected + "sdk publish" + what + "\n", trace->take());
        sdk->complete(code);
        EXPECT_TRACE(result("publish", "onPublished"), "host onPublished " + outcome);

        EXPECT_EQ(0, engine->unpublish(row.type));
        EXPECT_TRACE("log 4 IW/RTC-unpublish-T type:" + type, "sdk unpublish" + what);
        sdk->complete(code);
        EXPECT_TRACE(result("unpublish", "onUnpublished"), "host onUnpublished " + outcome);
      }
    }
  }
}

TEST_F(PublishTest, UnsetCallbacksStillLeaveTheirResultLine) {
  listen({"onPublished", "onUnpublished"});
  for (const std::int64_t role : {0, 1}) {
    join(role);
    engine->publish(0);
    engine->unpublish(0);
    trace->take();
    sdk->complete();
    sdk->complete(-1);
    const std::string suffix = role == 0 ? "" : ",type:0";
    EXPECT_TRACE(
        "log 4 IW/RTC-publish-R callback:onPublished, code:0, role:" + std::to_string(role) + suffix,
        "log 2 IW/RTC-unpublish-E callback:onUnpublished, code:-1, role:" + std::to_string(role) + suffix);
  }
}

TEST_F(PublishTest, ALivePublicationReplacesTheLiveInfoEvenWhenItFails) {
  join(LMRTCIWRoleLiveBroadcaster);
  const auto info = std::make_shared<fake::LiveInfo>();
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
  EXPECT_TRACE("log 4 IW/RTC-publish-T type:2", "sdk me_mic.setAudioCodecType 0",
               "sdk me_cam.setEnableTinyStream 0", "sdk publishStreams (me_mic:a, me_cam:v)");
  // An absent setup reads as zero and false.
  setup->audioSetup->type = 111;
  setup->videoSetup->enableTinyStream = true;
  engine->setIwEngineSetup(nullptr);
  engine->publish(2);
  EXPECT_TRACE("log 4 IW/RTC-publish-T type:2", "sdk me_mic.setAudioCodecType 0",
               "sdk me_cam.setEnableTinyStream 0", "sdk publishStreams (me_mic:a, me_cam:v)");
}

TEST_F(PublishTest, ChecksComeInTheirOrder) {
  EXPECT_EQ(kNotJoined, engine->publish(3));
  EXPECT_EQ(kNotJoined, engine->unpublish(3));
  EXPECT_TRACE("log 4 IW/RTC-publish-T type:3", "log 2 IW/RTC-publish-E" + kNoRoomOrSetup,
               "log 4 IW/RTC-unpublish-T type:3", "log 2 IW/RTC-unpublish-E" + kNoRoom);

  join(LMRTCIWRoleLiveAudience);
  for (const std::int64_t type : {3, -1}) {
    const std::string text = std::to_string(type);
    EXPECT_EQ(kBadParameter, engine->publish(type));
    EXPECT_EQ(kBadParameter, engine->unpublish(type));
    EXPECT_TRACE("log 4 IW/RTC-publish-T type:" + text, "log 2 IW/RTC-publish-E msg:streamArray count is 0",
                 "log 4 IW/RTC-unpublish-T type:" + text,
                 "log 2 IW/RTC-unpublish-E msg:streamArray count is 0");
  }
  // The role is refused silently, after the streams have been prepared.
  EXPECT_EQ(kBadParameter, engine->publish(2));
  EXPECT_EQ(kBadParameter, engine->unpublish(2));
  EXPECT_TRACE("log 4 IW/RTC-publish-T type:2", kCodec, kTiny, "log 4 IW/RTC-unpublish-T type:2");

  // Only publishing needs the room setup.
  engine->setIwRoomSetup(nullptr);
  EXPECT_EQ(kNotJoined, engine->publish(0));
  EXPECT_EQ(0, engine->unpublish(0));
  EXPECT_TRACE("log 4 IW/RTC-publish-T type:0", "log 2 IW/RTC-publish-E" + kNoRoomOrSetup,
               "log 4 IW/RTC-unpublish-T type:0", "sdk unpublishStreams (me_mic:a)");
  room->me = nullptr;
  EXPECT_EQ(kNotJoined, engine->unpublish(0));
}

TEST_F(SubscribeTest, SubscribingSelectsOrdinaryStreamsOfTheUsersThatAreThere) {
  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1), video("u1")}), user("u2", {video("u2")})};
  const auto sub = std::make_shared<fake::OtherRoom>(sdk->context, "s1");
  sub->users = {user("u3", {audio("u3")})};
  join();
  engine->setSubs({{"s1", sub}});
  trace->take();

  struct Row {
    std::int64_t type;
    std::string streams;
  };
  const std::vector<Row> rows = {
      {0, "(u1_LumoCloudRTC:a, u3_LumoCloudRTC:a)"},
      {1, "(u2_LumoCloudRTC:v, u1_LumoCloudRTC:v)"},
      {2, "(u2_LumoCloudRTC:v, u1_LumoCloudRTC:a, u1_LumoCloudRTC:v, u3_LumoCloudRTC:a)"}};
  for (const Row& row : rows) {
    for (const bool tiny : {false, true}) {
      const std::string call = "userIdArray:(u2, gone, u1, u3),type:" + std::to_string(row.type);
      const std::string tinyCall = call + (tiny ? ",tiny:1" : ",tiny:0");
      const std::string lookUps =
          "log 4 IW/RTC-getRemoteUser-T userId:u2\nlog 4 IW/RTC-getRemoteUser-T userId:gone\n"
          "log 4 IW/RTC-getRemoteUser-T userId:u1\nlog 4 IW/RTC-getRemoteUser-T userId:u3";
      EXPECT_EQ(0, engine->subscribeWithUserIds({"u2", "gone", "u1", "u3"}, row.type, tiny));
      EXPECT_TRACE("log 4 IW/RTC-subscribeWithUserIds-T " + tinyCall, lookUps,
                   "sdk subscribeStream " + (tiny ? "nil tiny " + row.streams : row.streams + " tiny nil"));
      sdk->complete(-2);
      const std::string outcome = " " + std::to_string(row.type) + " -2 sdk-2";
      EXPECT_TRACE("log 2 IW/RTC-subscribeWithUserIds-E callback:onSubscribed, code:-2, " + tinyCall,
                   "host onSubscribed u2" + outcome, "host onSubscribed gone" + outcome,
                   "host onSubscribed u1" + outcome, "host onSubscribed u3" + outcome);

      EXPECT_EQ(0, engine->unsubscribeWithUserIds({"u2", "gone", "u1", "u3"}, row.type));
      EXPECT_TRACE("log 4 IW/RTC-unsubscribeWithUserIds-T " + call, lookUps,
                   "sdk unsubscribeStreams " + row.streams);
      sdk->complete();
      const std::string left = " " + std::to_string(row.type) + " 0 ok";
      EXPECT_TRACE("log 4 IW/RTC-unsubscribeWithUserIds-R callback:onUnsubscribed, code:0, " + call,
                   "host onUnsubscribed u2" + left, "host onUnsubscribed gone" + left,
                   "host onUnsubscribed u1" + left, "host onUnsubscribed u3" + left);
    }
  }
}

TEST_F(SubscribeTest, ForwardingFormsLogTheirOwnLineFirst) {
  room->users = {user("u1", {audio("u1")})};
  join();
  const std::string list = "log 4 IW/RTC-subscribeWithUserIds-T userIdArray:(u1),type:0,tiny:";
  const std::string lookUp = "log 4 IW/RTC-getRemoteUser-T userId:u1";
  const std::string send = "sdk subscribeStream (u1_LumoCloudRTC:a) tiny nil";
  EXPECT_EQ(0, engine->subscribe("u1", 0));
  EXPECT_TRACE("log 4 IW/RTC-subscribe-T userId:u1,type:0",
               "log 4 IW/RTC-subscribe-T userId:u1,type:0,tiny:0", list + "0", lookUp, send);
  EXPECT_EQ(0, engine->subscribe("u1", 0, true));
  EXPECT_TRACE("log 4 IW/RTC-subscribe-T userId:u1,type:0,tiny:1", list + "1", lookUp,
               "sdk subscribeStream nil tiny (u1_LumoCloudRTC:a)");
  EXPECT_EQ(0, engine->subscribeWithUserIds({"u1"}, 0));
  EXPECT_TRACE("log 4 IW/RTC-subscribeWithUserIds-T userIdArray:(u1),type:0", list + "0", lookUp, send);
  EXPECT_EQ(0, engine->unsubscribe("u1", 0));
  EXPECT_TRACE("log 4 IW/RTC-unsubscribe-T userId:u1,type:0",
               "log 4 IW/RTC-unsubscribeWithUserIds-T userIdArray:(u1),type:0", lookUp,
               "sdk unsubscribeStreams (u1_LumoCloudRTC:a)");
}

TEST_F(SubscribeTest, ChecksComeInTheirOrderWithTheirOwnTexts) {
  const std::string none = "-E msg:streams count is 0";
  EXPECT_EQ(kBadParameter, engine->subscribe(std::nullopt, 2));
  EXPECT_TRACE("log 4 IW/RTC-subscribe-T userId:(null),type:2",
               "log 4 IW/RTC-subscribe-T userId:(null),type:2,tiny:0",
               "log 2 IW/RTC-unpublish-E msg:userId is nil");
  EXPECT_EQ(kBadParameter, engine->unsubscribe(std::nullopt, 2));
  EXPECT_TRACE("log 4 IW/RTC-unsubscribe-T userId:(null),type:2",
               "log 2 IW/RTC-unsubscribe-E msg:userId is nil");

  EXPECT_EQ(kNotJoined, engine->subscribeWithUserIds({}, 2, false));
  EXPECT_EQ(kNotJoined, engine->unsubscribeWithUserIds({"u1"}, 2));
  EXPECT_EQ(kNotJoined, engine->subscribeLiveMix(2));
  EXPECT_EQ(kNotJoined, engine->unsubscribeLiveMix(2));
  EXPECT_TRACE("log 4 IW/RTC-subscribeWithUserIds-T userIdArray:(),type:2,tiny:0",
               "log 2 IW/RTC-subscribeWithUserIds-E" + kNoRoom,
               "log 4 IW/RTC-unsubscribeWithUserIds-T userIdArray:(u1),type:2",
               "log 2 IW/RTC-unsubscribeWithUserIds-E" + kNoRoom + " or userIdArray count is 0",
               "log 4 IW/RTC-subscribeLiveMix-T type:2", "log 4 IW/RTC-subscribeLiveMix-T type:2,tiny:0",
               "log 2 IW/RTC-subscribeLiveMix-E" + kNoRoom, "log 4 IW/RTC-unsubscribeLiveMix-T type:2",
               "log 2 IW/RTC-unsubscribeLiveMix-E" + kNoRoom);

  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1)})};
  join();
  EXPECT_EQ(kBadParameter, engine->subscribeWithUserIds({}, 2, false));
  EXPECT_EQ(kNotJoined, engine->unsubscribeWithUserIds({}, 2));
  EXPECT_TRACE("log 4 IW/RTC-subscribeWithUserIds-T userIdArray:(),type:2,tiny:0",
               "log 2 IW/RTC-subscribeWithUserIds" + none,
               "log 4 IW/RTC-unsubscribeWithUserIds-T userIdArray:(),type:2",
               "log 2 IW/RTC-unsubscribeWithUserIds-E" + kNoRoom + " or userIdArray count is 0");
  for (const std::int64_t type : {1, 5, -1}) {
    EXPECT_EQ(kBadParameter, engine->subscribeWithUserIds({"u1"}, type, false)) << type;
    EXPECT_EQ(kBadParameter, engine->unsubscribeWithUserIds({"u1"}, type)) << type;
    const std::string call = "-T userIdArray:(u1),type:" + std::to_string(type);
    const std::string lookUp = "log 4 IW/RTC-getRemoteUser-T userId:u1";
    EXPECT_TRACE("log 4 IW/RTC-subscribeWithUserIds" + call + ",tiny:0", lookUp,
                 "log 2 IW/RTC-subscribeWithUserIds" + none, "log 4 IW/RTC-unsubscribeWithUserIds" + call,
                 lookUp, "log 2 IW/RTC-unsubscribeWithUserIds" + none);
  }
}

TEST_F(SubscribeTest, UnsetCallbacksStillLeaveTheirResultLine) {
  listen({"onSubscribed", "onUnsubscribed", "onLiveMixSubscribed", "onLiveMixUnsubscribed"});
  room->users = {user("u1", {audio("u1")})};
  room->live = {stream("mix", "l", 0, 2)};
  join();
  engine->subscribe("u1", 0);
  engine->unsubscribe("u1", 0);
  engine->subscribeLiveMix(0);
  trace->take();
  for (int i = 0; i < 3; ++i) sdk->complete();
  EXPECT_TRACE(
      "log 4 IW/RTC-subscribeWithUserIds-R callback:onSubscribed, code:0, userIdArray:(u1),type:0,tiny:0",
      "log 4 IW/RTC-unsubscribeWithUserIds-R callback:onUnsubscribed, code:0, userIdArray:(u1),type:0",
      "log 4 IW/RTC-subscribeLiveMix-R callback:onLiveMixSubscribed, code:0, type:0,tiny:0");
}

TEST_F(SubscribeTest, TheLiveMixTakesEveryStreamUnlessOneMediaTypeIsNamed) {
  join(LMRTCIWRoleLiveAudience);
  EXPECT_EQ(kBadParameter, engine->subscribeLiveMix(0));
  EXPECT_EQ(kBadParameter, engine->unsubscribeLiveMix(0));
  EXPECT_TRACE("log 4 IW/RTC-subscribeLiveMix-T type:0", "log 4 IW/RTC-subscribeLiveMix-T type:0,tiny:0",
               "log 2 IW/RTC-subscribeLiveMix-E msg:streamArray count is 0",
               "log 4 IW/RTC-unsubscribeLiveMix-T type:0",
               "log 2 IW/RTC-unsubscribeLiveMix-E msg:streamArray count is 0");

  room->live = {stream("mix", "l", 0, 2), stream("mix", "l", 1, 2)};
  const std::vector<std::pair<std::int64_t, std::string>> rows = {
      {0, "(mix_l:a)"}, {1, "(mix_l:v)"}, {2, "(mix_l:a, mix_l:v)"}, {5, "(mix_l:a, mix_l:v)"}};
  for (const auto& [type, streams] : rows) {
    const std::string text = "type:" + std::to_string(type);
    EXPECT_EQ(0, engine->subscribeLiveMix(type, true));
    EXPECT_TRACE("log 4 IW/RTC-subscribeLiveMix-T " + text + ",tiny:1",
                 "sdk subscribeStream nil tiny " + streams);
    sdk->complete();
    EXPECT_TRACE("log 4 IW/RTC-subscribeLiveMix-R callback:onLiveMixSubscribed, code:0, " + text + ",tiny:1",
                 "host onLiveMixSubscribed " + std::to_string(type) + " 0 ok");
  }
  EXPECT_EQ(0, engine->subscribeLiveMix(1));
  EXPECT_TRACE("log 4 IW/RTC-subscribeLiveMix-T type:1", "log 4 IW/RTC-subscribeLiveMix-T type:1,tiny:0",
               "sdk subscribeStream (mix_l:v) tiny nil");
  sdk->complete();
  trace->take();

  EXPECT_EQ(0, engine->unsubscribeLiveMix(7));
  EXPECT_TRACE("log 4 IW/RTC-unsubscribeLiveMix-T type:7", "sdk unsubscribeStreams (mix_l:a, mix_l:v)");
  sdk->complete(-9);
  EXPECT_TRACE(
      "log 2 IW/RTC-unsubscribeLiveMix-E callback:onLiveMixUnsubscribed, code:-9, type:7,streamArray:(mix_l, "
      "mix_l)",
      "host onLiveMixUnsubscribed 7 -9 sdk-9");
}

}  // namespace
}  // namespace lumo
