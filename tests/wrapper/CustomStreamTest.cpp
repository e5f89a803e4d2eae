#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "LumoRTCLibWrapper/model/LMRTCIWVideoConfig.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

class CustomStreamTest : public EngineTest {
 protected:
  /// Joins, and creates the file stream "clip".
  void create(std::int64_t role = LMRTCIWRoleMeetingMember) {
    join(role);
    sdk->engine->nextFile.set(file);
    EXPECT_EQ(0, engine->createCustomStreamFromFile("f.mp4", "clip", true, false));
    trace->take();
  }
  std::shared_ptr<fake::FileOutput> file = make<fake::FileOutput>("clip");
};

TEST_F(CustomStreamTest, CreatingConfiguringAndMuting) {
  const LMRTCIWVideoConfig config{
      .minBitrate = 1, .maxBitrate = 2, .fps = 3, .resolution = 4, .mirror = true};
  const std::string make = "T createCustomStreamFromFile url:f.mp4,tag:clip,replace:1,playback:0";
  const std::string set =
      "T setCustomStreamVideoConfig minBitrate:1,maxBitrate:2,fps:3,resolution:4,mirror:1,tag:clip";
  const std::string mute = "T muteLocalCustomStream tag:clip,mute:1";
  expect(kNotJoined, engine->createCustomStreamFromFile("f.mp4", "clip", true, false), {make, kNoSetup});
  join();
  expect(LMRTCWrapperCodeCreateCustomStreamError,
         engine->createCustomStreamFromFile("f.mp4", "clip", true, false),
         {make, "-> createFileVideoOutputStream f.mp4 1 0 clip", "E: nativeStream is nil"});
  expect(kBadParameter, engine->setCustomStreamVideoConfig(nullptr, "clip"),
         {"T setCustomStreamVideoConfig minBitrate:0,maxBitrate:0,fps:0,resolution:0,mirror:0,tag:clip",
          "E: config is nil"});
  expect(kNoStream, engine->muteLocalCustomStream("clip", true), {mute, "E: stream is nil"});
  create();
  expect(0, engine->setCustomStreamVideoConfig(&config, "clip"),
         {set, "-> me_clip.setVideoConfig 1-2 fps 3 size 4"});
  expect(0, engine->muteLocalCustomStream("clip", true), {mute, "-> me_clip.setIsMute 1"});

  engine->setCustomStreams({{"clip", std::make_shared<LMRTCIWCustomStream>(1, file)}});
  expect(kNotSupported, engine->setCustomStreamVideoConfig(&config, "clip"), {set});
  EXPECT_EQ(kNotSupported, engine->setLocalCustomStreamViewWithViewDelegate(view("v"), "clip"));
  EXPECT_EQ(kNotSupported, engine->setLocalCustomVideoProcessedDelegate(nullptr, "clip"));
}

TEST_F(CustomStreamTest, LocalViewsAreKeptByTag) {
  const std::string set = "T setLocalCustomStreamViewWithViewDelegate view:";
  expect(kBadParameter, engine->setLocalCustomStreamView(nullptr, "clip"),
         {"T setLocalCustomStreamView view:0,tag:clip", set + "0,tag:clip", "E: view is nil"});
  create();
  expect(0, engine->setLocalCustomStreamViewWithViewDelegate(view("v"), "clip"),
         {set + "1,tag:clip", "-> v.setLocalView me_clip"});
  expect(0, engine->removeLocalCustomStreamView("clip"),
         {"T removeLocalCustomStreamView tag:clip", "E: view is nil", "-> v.removeLocalView"});
}

TEST_F(CustomStreamTest, PublishingReportsFailuresAtOnceAndSuccessWhenReadingStarts) {
  const std::string publish = "T publishCustomStream tag:clip";
  const std::string unpublish = "T unpublishCustomStream tag:clip";
  const std::string read = "C fileVideoOutputStreamDid";
  expect(kNotJoined, engine->publishCustomStream("clip"), {publish, kNoSetup});
  for (const std::int64_t role : {0, 1}) {
    create(role);
    const std::string way = role == 0 ? "publishStream me_clip" : "publishLiveStream me_clip";
    const std::string keys = " tag:clip,role:" + std::to_string(role);
    const auto info = make<fake::LiveInfo>();
    room->me->nextLiveInfo.set(info);
    expect(0, engine->publishCustomStream("clip"), {publish, "-> me_clip.setDelegate engine", "-> " + way});
    answer(5, "publishCustomStream onCustomStreamPublished" + keys, "clip");
    EXPECT_EQ(nullptr, engine->liveInfo());
    engine->publishCustomStream("clip");
    complete(0, {"R publishCustomStream callback:onCustomStreamPublished, code:0," + keys});
    EXPECT_EQ(role == 1 ? info : nullptr, engine->liveInfo());
    engine->setLiveInfo(nullptr);

    expect(0, engine->unpublishCustomStream("clip"), {unpublish, "-> me_clip.stop", "-> un" + way});
    complete(3, {"C unpublishCustomStream completion: 3",
                 "E unpublishCustomStream callback:onCustomStreamUnpublished, code:3," + keys,
                 "host onCustomStreamUnpublished clip 3 sdk3"});
    file->events()->fileVideoOutputStreamDidReadCompleted(file);
    EXPECT_TRACE(read + "ReadCompleted: clip", "-> me_clip.stop", "-> un" + way);
    complete(3, {"L onCustomStreamPublishFinished tag:clip", "host onCustomStreamPublishFinished clip"});
  }
  join(LMRTCIWRoleLiveAudience);
  expect(kBadParameter, engine->publishCustomStream("clip"), {publish});

  const auto events = file->events();
  events->fileVideoOutputStreamDidStartRead(file);
  EXPECT_TRACE(read + "StartRead: clip", "L onCustomStreamPublished tag:clip,code:0",
               "host onCustomStreamPublished clip 0 ok");
  events->fileVideoOutputStreamDidFailed(file);
  EXPECT_TRACE(read + "Failed: clip", "L onCustomStreamPublished tag:clip,code:-20",
               "host onCustomStreamPublished clip -20 Open File Error.");
  events->fileVideoOutputStreamDidReadCompleted(file);  // as audience the stream stays
  EXPECT_TRACE(read + "ReadCompleted: clip", "-> me_clip.stop");
  engine->setRoom(nullptr);
  events->fileVideoOutputStreamDidReadCompleted(file);
  EXPECT_TRACE(read + "ReadCompleted: clip", "-> me_clip.stop", read + "ReadCompleted room return: -13");
}

TEST_F(CustomStreamTest, RemoteStreamsAreSelectedByTagAndMediaType) {
  room->users = {user("u1", {stream("u1", "cam2", 0), stream("u1", "cam2", 1), stream("u1", "mic2", 0)})};
  join();
  const std::string select = "T getRemoteUser userId:u1\nT getCustomStreams user:u1,tag:";
  expect(kNobody, engine->muteRemoteCustomStream("u9", "cam2", 2, true),
         {"T muteRemoteCustomStream userId:u9,tag:cam2,type:2,mute:1", "T getRemoteUser userId:u9",
          "E muteRemoteCustomStream msg:user is nil"});
  expect(kNoStream, engine->subscribeCustomStream("u1", "mic2", 1, false),
         {"T subscribeCustomStream userId:u1,tag:mic2,type:1,tiny:0", select + "mic2,type:1",
          "E subscribeCustomStream msg:streams count < 1"});
  expect(0, engine->muteRemoteCustomStream("u1", "cam2", 1, true),
         {"T muteRemoteCustomStream userId:u1,tag:cam2,type:1,mute:1", select + "cam2,type:1",
          "-> u1_cam2.setIsMute 1"});
  const std::string keys = "userId:u1,tag:cam2,type:2";
  expect(0, engine->subscribeCustomStream("u1", "cam2", 2, true),
         {"T subscribeCustomStream " + keys + ",tiny:1", select + "cam2,type:2",
          "-> subscribeStream () tiny (u1_cam2:a, u1_cam2:v)"});
  answer(0, "subscribeCustomStream onCustomStreamSubscribed " + keys + ",tiny:1", "u1 cam2 2");
  expect(0, engine->unsubscribeCustomStream("u1", "cam2", 2),
         {"T unsubscribeCustomStream " + keys, select + "cam2,type:2",
          "-> unsubscribeStreams (u1_cam2:a, u1_cam2:v)"});
  answer(6, "unsubscribeCustomStream onCustomStreamUnsubscribed " + keys, "u1 cam2 2");
}

TEST_F(CustomStreamTest, RemoteViewsAreKeptByUserAndTag) {
  const std::string set = "setRemoteCustomStreamViewWithViewDelegate";
  const std::string entry = "T " + set + " view:1,userId:u1,tag:cam2\nT getRemoteUser userId:u1";
  expect(kNotJoined, engine->setRemoteCustomStreamView(nullptr, "u1", "cam2"),
         {"T setRemoteCustomStreamView view:0,userId:u1,tag:cam2", "T " + set + " view:0,userId:u1,tag:cam2",
          kNoSetup});
  join();
  const auto bind = [this] {
    return engine->setRemoteCustomStreamViewWithViewDelegate(view("v"), "u1", "cam2");
  };
  expect(kNobody, bind(), {entry, "E " + set + " msg:view is nil"});
  room->users = {user("u1", {stream("u1", "cam2", 0)})};
  expect(kNoStream, bind(), {entry, "C setRemoteCustomStreamView return: -16"});
  room->users = {user("u1", {stream("u1", "cam2", 0), stream("u1", "cam2", 1)})};
  expect(0, bind(), {entry, "-> v.setRemoteView u1_cam2"});
  EXPECT_TRUE(engine->remoteCustomViews().contains("u1@cam2"));
  expect(0, engine->removeRemoteCustomStreamView("u1", "cam2"),
         {"T removeRemoteCustomStreamView userId:u1,tag:cam2", "E: view is nil", "-> v.removeRemoteView"});
}

}  // namespace
}  // namespace lumo
