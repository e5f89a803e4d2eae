#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

const std::string kNoRoom = " msg:room is nil or localUser is nil or iwRoomSetup is nil";

class CustomStreamTest : public EngineTest {
 protected:
  /// Joins, and creates the file stream "clip".
  void create(std::int64_t role = LMRTCIWRoleMeetingMember) {
    join(role);
    sdk->engine->nextFile.set(file);
    EXPECT_EQ(0, engine->createCustomStreamFromFile("f.mp4", "clip", true, false));
    trace->take();
  }
  void TearDown() override {
    file = nullptr;
    sdk->engine->nextFile.set(nullptr);
    EngineTest::TearDown();
  }
  std::shared_ptr<fake::FileOutput> file = make<fake::FileOutput>("clip");
};

TEST_F(CustomStreamTest, CreatingConfiguringAndMuting) {
  const LMRTCIWVideoConfig config{
      .minBitrate = 1, .maxBitrate = 2, .fps = 3, .resolution = 4, .mirror = true};
  const std::string keys = "minBitrate:1,maxBitrate:2,fps:3,resolution:4,mirror:1,tag:clip";
  expect(kNotJoined, engine->createCustomStreamFromFile("f.mp4", "clip", true, false),
         {"T createCustomStreamFromFile url:f.mp4,tag:clip,replace:1,playback:0",
          "E createCustomStreamFromFile" + kNoRoom});
  expect(kNotJoined, engine->setCustomStreamVideoConfig(&config, "clip"),
         {"T setCustomStreamVideoConfig " + keys, "E setCustomStreamVideoConfig" + kNoRoom});
  expect(kNotJoined, engine->muteLocalCustomStream("clip", true),
         {"T muteLocalCustomStream tag:clip,mute:1", "E muteLocalCustomStream" + kNoRoom});
  join();
  expect(kBadParameter, engine->createCustomStreamFromFile(std::nullopt, "clip", true, false),
         {"T createCustomStreamFromFile url:(null),tag:clip,replace:1,playback:0",
          "E createCustomStreamFromFile msg:url is nil"});
  expect(LMRTCWrapperCodeCreateCustomStreamError,
         engine->createCustomStreamFromFile("f.mp4", "clip", true, false),
         {"T createCustomStreamFromFile url:f.mp4,tag:clip,replace:1,playback:0",
          "sdk createFileVideoOutputStream f.mp4 1 0 clip",
          "E createCustomStreamFromFile msg:nativeStream is nil"});
  expect(kBadParameter, engine->setCustomStreamVideoConfig(nullptr, "clip"),
         {"T setCustomStreamVideoConfig minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0,tag:clip",
          "E setCustomStreamVideoConfig msg:config is nil"});
  expect(kNoStream, engine->setCustomStreamVideoConfig(&config, "clip"),
         {"T setCustomStreamVideoConfig " + keys, "E setCustomStreamVideoConfig msg:stream is nil"});
  expect(kNoStream, engine->muteLocalCustomStream("clip", true),
         {"T muteLocalCustomStream tag:clip,mute:1", "E muteLocalCustomStream msg:stream is nil"});
  create();
  expect(0, engine->setCustomStreamVideoConfig(&config, "clip"),
         {"T setCustomStreamVideoConfig " + keys, "sdk me_clip.setVideoConfig 1-2 fps 3 size 4"});
  expect(0, engine->muteLocalCustomStream("clip", true),
         {"T muteLocalCustomStream tag:clip,mute:1", "sdk me_clip.setIsMute 1"});

  engine->setCustomStreams({{"clip", std::make_shared<LMRTCIWCustomStream>(1, file)}});
  expect(kNotSupported, engine->setCustomStreamVideoConfig(&config, "clip"),
         {"T setCustomStreamVideoConfig " + keys});
  expect(kNotSupported, engine->setLocalCustomStreamViewWithViewDelegate(view("v"), "clip"),
         {"T setLocalCustomStreamViewWithViewDelegate view:1,tag:clip"});
  expect(kNotSupported, engine->setLocalCustomVideoProcessedDelegate(nullptr, "clip"),
         {"T setLocalCustomVideoProcessedDelegate tag:clip"});
  engine->destroy();  // stops file streams only
  EXPECT_EQ(std::string::npos, trace->take().find("stop"));
}

TEST_F(CustomStreamTest, LocalViewsAreKeptByTag) {
  expect(kBadParameter, engine->setLocalCustomStreamView(nullptr, "clip"),
         {"T setLocalCustomStreamView view:0,tag:clip",
          "T setLocalCustomStreamViewWithViewDelegate view:0,tag:clip",
          "E setLocalCustomStreamViewWithViewDelegate msg:view is nil"});
  expect(kNoStream, engine->setLocalCustomStreamViewWithViewDelegate(view("v"), "clip"),
         {"T setLocalCustomStreamViewWithViewDelegate view:1,tag:clip",
          "E setLocalCustomStreamViewWithViewDelegate msg:stream is nil"});
  create();
  expect(0, engine->setLocalCustomStreamViewWithViewDelegate(view("v"), "clip"),
         {"T setLocalCustomStreamViewWithViewDelegate view:1,tag:clip", "view v setLocalView me_clip"});
  expect(0, engine->removeLocalCustomStreamView("clip"),
         {"T removeLocalCustomStreamView tag:clip", "E removeLocalCustomStreamView msg:view is nil",
          "view v removeLocalView"});
  EXPECT_TRUE(engine->localCustomViews().contains("clip"));
  expect(kBadParameter, engine->removeLocalCustomStreamView("other"),
         {"T removeLocalCustomStreamView tag:other"});
}

TEST_F(CustomStreamTest, PublishingReportsFailuresAtOnceAndSuccessWhenReadingStarts) {
  expect(kNotJoined, engine->publishCustomStream("clip"),
         {"T publishCustomStream tag:clip", "E publishCustomStream" + kNoRoom});
  expect(kNotJoined, engine->unpublishCustomStream("clip"),
         {"T unpublishCustomStream tag:clip", "E unpublishCustomStream" + kNoRoom});
  for (const std::int64_t role : {0, 1}) {
    create(role);
    const std::string way = role == 0 ? "publishStream me_clip" : "publishLiveStream me_clip";
    const std::string text = std::to_string(role);
    const auto info = make<fake::LiveInfo>();
    room->me->nextLiveInfo.set(info);
    expect(0, engine->publishCustomStream("clip"),
           {"T publishCustomStream tag:clip", "sdk me_clip.setDelegate engine", "sdk " + way});
    expect(true, sdk->complete(5),
           {"E publishCustomStream callback:onCustomStreamPublished, code:5, tag:clip,role:" + text,
            "host onCustomStreamPublished clip 5 sdk5"});
    EXPECT_EQ(nullptr, engine->liveInfo());
    engine->publishCustomStream("clip");
    trace->take();
    expect(true, sdk->complete(),
           {"R publishCustomStream callback:onCustomStreamPublished, code:0, tag:clip,role:" + text});
    EXPECT_EQ(role == 1 ? info : nullptr, engine->liveInfo());
    engine->setLiveInfo(nullptr);

    const std::string away = role == 0 ? "unpublishStream me_clip" : "unpublishLiveStream me_clip";
    expect(0, engine->unpublishCustomStream("clip"),
           {"T unpublishCustomStream tag:clip", "sdk me_clip.stop", "sdk " + away});
    expect(true, sdk->complete(3),
           {"console LMRTCIWEngine unpublishCustomStream completion: 3",
            "E unpublishCustomStream callback:onCustomStreamUnpublished, code:3, tag:clip,role:" + text,
            "host onCustomStreamUnpublished clip 3 sdk3"});

    file->events()->fileVideoOutputStreamDidReadCompleted(file);
    EXPECT_TRACE("console LMRTCIWEngine fileVideoOutputStreamDidReadCompleted: clip", "sdk me_clip.stop",
                 "sdk " + away);
    expect(true, sdk->complete(3),
           {"L onCustomStreamPublishFinished tag:clip", "host onCustomStreamPublishFinished clip"});
  }
  join(LMRTCIWRoleLiveAudience);
  expect(kBadParameter, engine->publishCustomStream("clip"), {"T publishCustomStream tag:clip"});
  expect(kBadParameter, engine->unpublishCustomStream("clip"), {"T unpublishCustomStream tag:clip"});
  expect(kNoStream, engine->publishCustomStream("other"),
         {"T publishCustomStream tag:other", "E publishCustomStream msg:stream is nil"});
  expect(kNoStream, engine->unpublishCustomStream("other"),
         {"T unpublishCustomStream tag:other", "E unpublishCustomStream msg:stream is nil"});

  const auto events = file->events();
  events->fileVideoOutputStreamDidStartRead(file);
  EXPECT_TRACE("console LMRTCIWEngine fileVideoOutputStreamDidStartRead: clip",
               "L onCustomStreamPublished tag:clip,code:0", "host onCustomStreamPublished clip 0 ok");
  events->fileVideoOutputStreamDidFailed(file);
  EXPECT_TRACE("console LMRTCIWEngine fileVideoOutputStreamDidFailed: clip",
               "L onCustomStreamPublished tag:clip,code:-20",
               "host onCustomStreamPublished clip -20 Open File Error.");
  events->fileVideoOutputStreamDidReadCompleted(file);  // as audience the stream stays
  EXPECT_TRACE("console LMRTCIWEngine fileVideoOutputStreamDidReadCompleted: clip", "sdk me_clip.stop");
  releaseRoom();
  events->fileVideoOutputStreamDidReadCompleted(file);
  EXPECT_TRACE("console LMRTCIWEngine fileVideoOutputStreamDidReadCompleted: clip", "sdk me_clip.stop",
               "console LMRTCIWEngine fileVideoOutputStreamDidReadCompleted room return: -13");
}

TEST_F(CustomStreamTest, RemoteStreamsAreSelectedByTagAndMediaType) {
  expect(kNotJoined, engine->subscribeCustomStream("u1", "cam2", 2, false),
         {"T subscribeCustomStream userId:u1,tag:cam2,type:2,tiny:0", "E subscribeCustomStream" + kNoRoom});
  room->users = {user("u1", {stream("u1", "cam2", 0), stream("u1", "cam2", 1), stream("u1", "mic2", 0)})};
  join();
  const auto selection = [](const std::string& user, const std::string& tag, int type) {
    return std::vector<std::string>{
        "T getRemoteUser userId:" + user,
        "T getCustomStreams user:" + user + ",tag:" + tag + ",type:" + std::to_string(type)};
  };
  const auto all = selection("u1", "cam2", 2);
  expect(LMRTCWrapperCodeRemoteUserNotJoined, engine->muteRemoteCustomStream("u9", "cam2", 2, true),
         {"T muteRemoteCustomStream userId:u9,tag:cam2,type:2,mute:1", "T getRemoteUser userId:u9",
          "E muteRemoteCustomStream msg:user is nil"});
  expect(kNoStream, engine->subscribeCustomStream("u1", "mic2", 1, false),
         {"T subscribeCustomStream userId:u1,tag:mic2,type:1,tiny:0", "T getRemoteUser userId:u1",
          "T getCustomStreams user:u1,tag:mic2,type:1", "E subscribeCustomStream msg:streams count < 1"});
  expect(kNoStream, engine->unsubscribeCustomStream("u1", "cam2", 3),
         {"T unsubscribeCustomStream userId:u1,tag:cam2,type:3", "T getRemoteUser userId:u1",
          "T getCustomStreams user:u1,tag:cam2,type:3", "E unsubscribeCustomStream msg:streams count < 1"});
  expect(0, engine->muteRemoteCustomStream("u1", "cam2", 1, true),
         {"T muteRemoteCustomStream userId:u1,tag:cam2,type:1,mute:1", "T getRemoteUser userId:u1",
          "T getCustomStreams user:u1,tag:cam2,type:1", "sdk u1_cam2.setIsMute 1"});

  expect(0, engine->subscribeCustomStream("u1", "cam2", 2, true),
         {"T subscribeCustomStream userId:u1,tag:cam2,type:2,tiny:1", all[0], all[1],
          "sdk subscribeStream () tiny (u1_cam2:a, u1_cam2:v)"});
  expect(
      true, sdk->complete(),
      {"R subscribeCustomStream callback:onCustomStreamSubscribed, code:0, userId:u1,tag:cam2,type:2,tiny:1",
       "host onCustomStreamSubscribed u1 cam2 2 0 ok"});
  expect(0, engine->unsubscribeCustomStream("u1", "cam2", 2),
         {"T unsubscribeCustomStream userId:u1,tag:cam2,type:2", all[0], all[1],
          "sdk unsubscribeStreams (u1_cam2:a, u1_cam2:v)"});
  expect(true, sdk->complete(6),
         {"E unsubscribeCustomStream callback:onCustomStreamUnsubscribed, code:6, userId:u1,tag:cam2,type:2",
          "host onCustomStreamUnsubscribed u1 cam2 2 6 sdk6"});
}

TEST_F(CustomStreamTest, RemoteViewsAreKeptByUserAndTag) {
  const std::string set = "setRemoteCustomStreamViewWithViewDelegate";
  const std::string keys = " view:1,userId:u1,tag:cam2";
  expect(kNotJoined, engine->setRemoteCustomStreamView(nullptr, "u1", "cam2"),
         {"T setRemoteCustomStreamView view:0,userId:u1,tag:cam2", "T " + set + " view:0,userId:u1,tag:cam2",
          "E " + set + kNoRoom});
  EXPECT_EQ(kNotJoined, engine->removeRemoteCustomStreamView("u1", "cam2"));
  join();
  trace->take();
  expect(kBadParameter, engine->setRemoteCustomStreamViewWithViewDelegate(nullptr, "u1", "cam2"),
         {"T " + set + " view:0,userId:u1,tag:cam2", "E " + set + " msg:view is nil"});
  expect(LMRTCWrapperCodeRemoteUserNotJoined,
         engine->setRemoteCustomStreamViewWithViewDelegate(view("v"), "u1", "cam2"),
         {"T " + set + keys, "T getRemoteUser userId:u1", "E " + set + " msg:view is nil"});
  room->users = {user("u1", {stream("u1", "cam2", 0)})};
  expect(kNoStream, engine->setRemoteCustomStreamViewWithViewDelegate(view("v"), "u1", "cam2"),
         {"T " + set + keys, "T getRemoteUser userId:u1",
          "console LMRTCIWEngine setRemoteCustomStreamView return: -16"});
  EXPECT_TRUE(engine->remoteCustomViews().empty());
  room->users = {user("u1", {stream("u1", "cam2", 0), stream("u1", "cam2", 1)})};
  expect(0, engine->setRemoteCustomStreamViewWithViewDelegate(view("v"), "u1", "cam2"),
         {"T " + set + keys, "T getRemoteUser userId:u1", "view v setRemoteView u1_cam2"});
  EXPECT_TRUE(engine->remoteCustomViews().contains("u1@cam2"));
  expect(0, engine->removeRemoteCustomStreamView("u1", "cam2"),
         {"T removeRemoteCustomStreamView userId:u1,tag:cam2",
          "E removeRemoteCustomStreamView msg:view is nil", "view v removeRemoteView"});
  expect(kBadParameter, engine->removeRemoteCustomStreamView("u1", "x"),
         {"T removeRemoteCustomStreamView userId:u1,tag:x"});
}

}  // namespace
}  // namespace lumo
