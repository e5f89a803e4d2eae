#include "LumoRTCLibWrapper/model/LMRTCIWAudioConfig.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

using ConfigTest = EngineTest;
using PublishTest = EngineTest;
using SubscribeTest = EngineTest;

TEST_F(ConfigTest, ConfigsReachTheDefaultStreamsConvertedButUnchecked) {
  LMRTCIWAudioConfig audioConfig{.quality = 2, .scenario = 3, .recordingVolume = 250};
  expect(0, engine->setAudioConfig(&audioConfig),
         {"T setAudioConfig quality:2,scenario:3,recordingVolume:250", "-> me_mic.setAudioQuality 2 0",
          "-> me_mic.setRecordingVolume 250"});
  LMRTCIWVideoConfig config{.minBitrate = 1, .maxBitrate = 2, .fps = 3, .resolution = 17, .mirror = true};
  const std::string entry = "T setVideoConfig minBitrate:1,maxBitrate:2,fps:3,resolution:17,mirror:1";
  expect(0, engine->setVideoConfig(&config),
         {entry, entry + ",tiny:0", "-> me_cam.setVideoConfig 1-2 fps 3 size -1",
          "-> me_cam.setIsEncoderMirror 1"});
  expect(0, engine->setVideoConfig(&config, true),
         {entry + ",tiny:1", "-> me_cam.setTinyVideoConfig 1-2 fps 3 size -1"});
}

TEST_F(ConfigTest, AnAbsentConfigIsRefusedAndTheVideoFormLogsUnderTheAudioName) {
  expect(kBadParameter, engine->setAudioConfig(nullptr),
         {"T setAudioConfig quality:0,scenario:0,recordingVolume:0", "E: config is nil"});
  expect(kBadParameter, engine->setVideoConfig(nullptr, false),
         {"T setVideoConfig minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0,tiny:0",
          "E setAudioConfig msg:config is nil"});
}

const std::string kCodec = "-> me_mic.setAudioCodecType 111";
const std::string kTiny = "-> me_cam.setEnableTinyStream 1";

TEST_F(PublishTest, PublishAndUnpublishTakeTheWayOfTheRoleForEveryMediaType) {
  struct Row {
    std::string prepared, ordinary, live;
  };
  const std::vector<Row> types = {
      {kCodec, "Streams (me_mic:a)", "LiveStream me_mic"},
      {kTiny, "Streams (me_cam:v)", "LiveStream me_cam"},
      {kCodec + "\n" + kTiny, "Streams (me_mic:a, me_cam:v)", "DefaultLiveStreams"}};
  for (int i = 0; i < 12; ++i) {
    const int role = i % 2, type = i / 2 % 3, code = i < 6 ? 0 : -5;
    const auto& [prepared, ordinary, live] = types[static_cast<std::size_t>(type)];
    const std::string& way = role == 0 ? ordinary : live;
    const std::string call = format("type:%@", {type});
    const std::string keys = role == 0 ? "role:0" : "role:1," + call;
    join(role);
    expect(0, engine->publish(type), {"T publish " + call, prepared, "-> publish" + way});
    answer(code, "publish onPublished " + keys, std::to_string(type));
    expect(0, engine->unpublish(type), {"T unpublish " + call, "-> unpublish" + way});
    answer(code, "unpublish onUnpublished " + keys, std::to_string(type));
  }
}

TEST_F(PublishTest, PreparationReadsTheEngineSetupAtEachCallAndAnAbsentOneAsZero) {
  join();
  setup->audioSetup->type = 0;
  setup->videoSetup->enableTinyStream = false;
  for (int i = 0; i < 2; ++i) {
    expect(0, engine->publish(2),
           {"T publish type:2", "-> me_mic.setAudioCodecType 0", "-> me_cam.setEnableTinyStream 0",
            "-> publishStreams (me_mic:a, me_cam:v)"});
    *setup = LMRTCIWEngineSetup();
    engine->setIwEngineSetup(nullptr);
  }
}

TEST_F(PublishTest, TheRoleIsRefusedSilentlyAfterTheStreamsHaveBeenPrepared) {
  expect(kNotJoined, engine->publish(3), {"T publish type:3", kNoSetup});
  join(LMRTCIWRoleLiveAudience);
  expect(kBadParameter, engine->publish(3), {"T publish type:3", "E: streamArray count is 0"});
  expect(kBadParameter, engine->publish(2), {"T publish type:2", kCodec, kTiny});
  expect(kBadParameter, engine->unpublish(2), {"T unpublish type:2"});
}

TEST_F(SubscribeTest, SubscribingSelectsOrdinaryStreamsOfTheUsersThatAreThere) {
  room->users = {user("u1", {audio("u1"), stream("u1", "t", 1), video("u1")}), user("u2", {video("u2")})};
  const auto sub = make<fake::OtherRoom>("s1");
  sub->users = {user("u3", {audio("u3")})};
  join();
  engine->setSubs({{"s1", sub}});
  const std::vector<std::string> ids = {"u2", "gone", "u1", "u3"};
  const std::vector<std::string> wanted = {
      "(u1_LumoCloudRTC:a, u3_LumoCloudRTC:a)", "(u2_LumoCloudRTC:v, u1_LumoCloudRTC:v)",
      "(u2_LumoCloudRTC:v, u1_LumoCloudRTC:a, u1_LumoCloudRTC:v, u3_LumoCloudRTC:a)"};
  const auto perId = [&](std::string first, const std::string& before, const std::string& after) {
    for (const auto& id : ids) first += "\n" + before + id + after;
    return first;
  };
  for (int type = 0; type < 3; ++type) {
    const std::string& streams = wanted[static_cast<std::size_t>(type)];
    const std::string call = format("userIdArray:%@,type:%@", {ids, type});
    for (const bool tiny : {false, true}) {
      const std::string tinyCall = call + (tiny ? ",tiny:1" : ",tiny:0");
      expect(0, engine->subscribeWithUserIds(ids, type, tiny),
             {perId("T subscribeWithUserIds " + tinyCall, "T getRemoteUser userId:", ""),
              "-> subscribeStream " + (tiny ? "nil tiny " + streams : streams + " tiny nil")});
      complete(-2, {perId("E subscribeWithUserIds callback:onSubscribed, code:-2, " + tinyCall,
                          "host onSubscribed ", format(" %@ -2 sdk-2", {type}))});
    }
    expect(0, engine->unsubscribeWithUserIds(ids, type),
           {perId("T unsubscribeWithUserIds " + call, "T getRemoteUser userId:", ""),
            "-> unsubscribeStreams " + streams});
    complete(0, {perId("R unsubscribeWithUserIds callback:onUnsubscribed, code:0, " + call,
                       "host onUnsubscribed ", format(" %@ 0 ok", {type}))});
  }
}

TEST_F(SubscribeTest, ForwardingFormsLogTheirOwnLineFirst) {
  room->users = {user("u1", {audio("u1")})};
  join();
  const std::string list = "T subscribeWithUserIds userIdArray:(u1),type:0,tiny:";
  const std::string lookUp = "T getRemoteUser userId:u1";
  const std::string send = "-> subscribeStream (u1_LumoCloudRTC:a) tiny nil";
  expect(0, engine->subscribe("u1", 0),
         {"T subscribe userId:u1,type:0", "T subscribe userId:u1,type:0,tiny:0", list + "0", lookUp, send});
  expect(0, engine->subscribe("u1", 0, true),
         {"T subscribe userId:u1,type:0,tiny:1", list + "1", lookUp,
          "-> subscribeStream nil tiny (u1_LumoCloudRTC:a)"});
  expect(0, engine->subscribeWithUserIds({"u1"}, 0),
         {"T subscribeWithUserIds userIdArray:(u1),type:0", list + "0", lookUp, send});
  expect(0, engine->unsubscribe("u1", 0),
         {"T unsubscribe userId:u1,type:0", "T unsubscribeWithUserIds userIdArray:(u1),type:0", lookUp,
          "-> unsubscribeStreams (u1_LumoCloudRTC:a)"});
}

TEST_F(SubscribeTest, RefusalsHaveTheirOwnTexts) {
  expect(kBadParameter, engine->subscribe(std::nullopt, 2, false),
         {"T subscribe userId:(null),type:2,tiny:0", "E unpublish msg:userId is nil"});
  expect(kBadParameter, engine->unsubscribe(std::nullopt, 2),
         {"T unsubscribe userId:(null),type:2", "E: userId is nil"});
  expect(kNotJoined, engine->unsubscribeWithUserIds({"u1"}, 2),
         {"T unsubscribeWithUserIds userIdArray:(u1),type:2", kNoUser + " or userIdArray count is 0"});
  expect(kNotJoined, engine->subscribeLiveMix(2, false), {"T subscribeLiveMix type:2,tiny:0", kNoUser});
  join();
  expect(kBadParameter, engine->subscribeWithUserIds({}, 2, false),
         {"T subscribeWithUserIds userIdArray:(),type:2,tiny:0", "E: streams count is 0"});
  expect(kBadParameter, engine->unsubscribeLiveMix(0),
         {"T unsubscribeLiveMix type:0", "E: streamArray count is 0"});
}

TEST_F(SubscribeTest, TheLiveMixTakesEveryStreamUnlessOneMediaTypeIsNamed) {
  room->live = {stream("mix", "l", 0, 2), stream("mix", "l", 1, 2)};
  join(LMRTCIWRoleLiveAudience);
  const std::vector<std::pair<std::int64_t, std::string>> rows = {
      {0, "(mix_l:a)"}, {1, "(mix_l:v)"}, {2, "(mix_l:a, mix_l:v)"}, {5, "(mix_l:a, mix_l:v)"}};
  for (const auto& [type, streams] : rows) {
    const std::string call = "type:" + std::to_string(type);
    expect(0, engine->subscribeLiveMix(type, true),
           {"T subscribeLiveMix " + call + ",tiny:1", "-> subscribeStream nil tiny " + streams});
    answer(0, "subscribeLiveMix onLiveMixSubscribed " + call + ",tiny:1", std::to_string(type));
    expect(0, engine->subscribeLiveMix(type),
           {"T subscribeLiveMix " + call, "T subscribeLiveMix " + call + ",tiny:0",
            "-> subscribeStream " + streams + " tiny nil"});
    answer(3, "subscribeLiveMix onLiveMixSubscribed " + call + ",tiny:0", std::to_string(type));
  }
  expect(0, engine->unsubscribeLiveMix(7),
         {"T unsubscribeLiveMix type:7", "-> unsubscribeStreams (mix_l:a, mix_l:v)"});
  answer(-9, "unsubscribeLiveMix onLiveMixUnsubscribed type:7,streamArray:(mix_l, mix_l)", "7");
}

}  // namespace
}  // namespace lumo
