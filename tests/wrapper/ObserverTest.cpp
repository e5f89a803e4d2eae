#include "LumoRTCLibWrapper/engine/LMRTCIWMediaObservers.h"
#include "LumoRTCLibWrapper/model/LMRTCIWCustomStream.h"
#include "tests/support/EngineTest.h"

namespace lumo {
namespace {

class ObserverTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    sound->onAudioFrame = [this](const LMRTCIWAudioFrame& f) {
      trace->add(format("sound %@ %@ %@ %@ %@ %@",
                        {f.length, f.channels, f.sampleRate, f.bytesPerSample, f.samples, f.renderTimeMs}));
      EXPECT_EQ(bytes, f.bytes);
    };
    samples->onSampleBuffer = [this](const CMSampleBufferRef&) { return replacement; };
    pixels->onPixelBuffer = [this](const CVPixelBufferRef& buffer) {
      trace->add(buffer ? "picture" : "no picture");
    };
  }
  /// Hands a block to a hook and checks what the observer hears.
  void deliver(const LMRTCAudioDataCallback& hook, const std::vector<std::string>& lines) {
    ASSERT_TRUE(hook);
    hook({bytes, 1920, 2, 48000, 2, 480, 77});
    EXPECT_EQ(Trace::text(lines), trace->take());
  }
  void deliver(const std::shared_ptr<fake::VideoInput>& input, const std::vector<std::string>& lines) {
    ASSERT_TRUE(input->events());
    input->events()->willRenderCVPixelBufferRef(picture, input);
    EXPECT_EQ(Trace::text(lines), trace->take());
  }

  const std::uint8_t data[4] = {};
  const std::uint8_t* const bytes = data;
  const CVPixelBufferRef picture = CVPixelBuffer::createBGRA(1, 1, {});
  const CMSampleBufferRef captured = std::make_shared<CMSampleBuffer>(picture, 1);
  const CMSampleBufferRef replacement = std::make_shared<CMSampleBuffer>(picture, 2);
  std::shared_ptr<LMRTCIWAudioFrameDelegate> sound = std::make_shared<LMRTCIWAudioFrameDelegate>();
  std::shared_ptr<LMRTCIWSampleBufferVideoFrameDelegate> samples =
      std::make_shared<LMRTCIWSampleBufferVideoFrameDelegate>();
  std::shared_ptr<LMRTCIWPixelBufferVideoFrameDelegate> pixels =
      std::make_shared<LMRTCIWPixelBufferVideoFrameDelegate>();
};

const std::string kFull = "sound 1920 2 48000 2 480 77";
const std::string kMixed = "sound 1920 2 48000 2 480 0";

TEST_F(ObserverTest, TheMicrophoneAndTheMixesAreWatchedUntilTheObserverIsRemovedOrDies) {
  auto& mic = *sdk->engine->microphone;
  expect(0, engine->setLocalAudioCapturedDelegate(sound),
         {"T setLocalAudioCapturedDelegate delegate:1", "sdk me_mic.setRecordAudioDataCallback set"});
  expect(0, engine->setLocalAudioMixedDelegate(sound),
         {"T setLocalAudioMixedDelegate delegate:1", "sdk me_mic.setWillSendAudioBufferCallback set"});
  deliver(mic.recorded.get(), {kFull});
  deliver(mic.willSend.get(), {kMixed});
  expect(0, engine->setLocalAudioMixedDelegate(nullptr),
         {"T setLocalAudioMixedDelegate delegate:0", "sdk me_mic.setWillSendAudioBufferCallback nil"});
  EXPECT_FALSE(mic.willSend.get());

  expect(kNotJoined, engine->setRemoteAudioMixedDelegate(sound),
         {"T setRemoteAudioMixedDelegate delegate:1", "E: room is nil"});
  join();
  expect(0, engine->setRemoteAudioMixedDelegate(sound),
         {"T setRemoteAudioMixedDelegate delegate:1", "sdk r1.setReceivedAudioBufferCallback set"});
  deliver(room->received.get(), {kMixed});
  sound = nullptr;  // held weakly
  deliver(room->received.get(), {});
  deliver(mic.recorded.get(), {});

  engine->setRtcEngine(nullptr);
  expect(kDestroyed, engine->setLocalAudioCapturedDelegate(nullptr),
         {"T setLocalAudioCapturedDelegate delegate:0", kNoEngine});
  expect(kDestroyed, engine->setLocalAudioMixedDelegate(nullptr),
         {"T setLocalAudioMixedDelegate delegate:0", kNoEngine});
  expect(kDestroyed, engine->setLocalVideoProcessedDelegate(nullptr),
         {"T setLocalVideoProcessedDelegate delegate:0", kNoEngine});
}

TEST_F(ObserverTest, SentPicturesAreReplacedByWhatTheObserverReturns) {
  expect(0, engine->setLocalVideoProcessedDelegate(samples),
         {"T setLocalVideoProcessedDelegate delegate:1", "sdk me_cam.setVideoSendBufferCallback set"});
  const auto hook = sdk->engine->camera->willSend.get();
  EXPECT_EQ(replacement, hook(captured));
  samples->onSampleBuffer = nullptr;
  EXPECT_EQ(captured, hook(captured));

  const auto file = make<fake::FileOutput>("clip");
  expect(kNoStream, engine->setLocalCustomVideoProcessedDelegate(samples, "clip"),
         {"T setLocalCustomVideoProcessedDelegate tag:clip", "E: stream is nil"});
  engine->setCustomStreams({{"clip", std::make_shared<LMRTCIWCustomStream>(2, file)}});
  const auto other = std::make_shared<LMRTCIWSampleBufferVideoFrameDelegate>();
  other->onSampleBuffer = [](const CMSampleBufferRef&) { return nullptr; };
  expect(0, engine->setLocalCustomVideoProcessedDelegate(other, "clip"),
         {"T setLocalCustomVideoProcessedDelegate tag:clip", "sdk me_clip.setVideoSendBufferCallback set"});
  EXPECT_EQ(nullptr, file->willSend.get()(captured));
  engine->setLocalCustomVideoProcessedDelegate(nullptr, "clip");
  EXPECT_FALSE(file->willSend.get());
  EXPECT_TRUE(engine->localCustomVideoProcessedDelegates().empty());
  engine->destroy();
  EXPECT_EQ(captured, hook(captured));
}

TEST_F(ObserverTest, UsersOfTheMainRoomAreWatchedStreamByStream) {
  expect(kNotJoined, engine->setRemoteAudioReceivedDelegate(sound, "u1"),
         {"T setRemoteAudioReceivedDelegate userId:u1", kNoUser});
  const auto camera = make<fake::VideoInput>("u1", kLMRTCDefaultStreamTag, 1);
  const auto mic = make<fake::AudioInput>("u1");
  room->users = {user("u1", {stream("u1", "cam2", 0), mic, camera}), user("u2")};
  join();
  expect(kNobody, engine->setRemoteVideoProcessedDelegate(pixels, "u9"),
         {"T setRemoteVideoProcessedDelegate userId:u9", "E: user is nil"});
  expect(0, engine->setRemoteAudioReceivedDelegate(sound, "u2"),
         {"T setRemoteAudioReceivedDelegate userId:u2"});
  expect(0, engine->setRemoteVideoProcessedDelegate(pixels, "u2"),
         {"T setRemoteVideoProcessedDelegate userId:u2"});
  EXPECT_TRUE(engine->remoteAudioReceivedDelegates().empty() &&
              engine->remoteVideoProcessedDelegates().empty());

  expect(0, engine->setRemoteAudioReceivedDelegate(sound, "u1"),
         {"T setRemoteAudioReceivedDelegate userId:u1", "sdk u1_LumoCloudRTC.setAudioDataCallback set"});
  expect(0, engine->setRemoteVideoProcessedDelegate(pixels, "u1"),
         {"T setRemoteVideoProcessedDelegate userId:u1", "sdk u1_LumoCloudRTC.setDelegate engine"});
  const auto hook = mic->audioData.get();
  deliver(hook, {kFull});
  deliver(camera, {"picture"});
  expect(0, engine->setRemoteAudioReceivedDelegate(nullptr, "u1"),
         {"T setRemoteAudioReceivedDelegate userId:u1", "sdk u1_LumoCloudRTC.setAudioDataCallback nil"});
  deliver(hook, {});  // a block that was on its way
  expect(0, engine->setRemoteVideoProcessedDelegate(nullptr, "u1"),
         {"T setRemoteVideoProcessedDelegate userId:u1", "sdk u1_LumoCloudRTC.setDelegate nil"});
  EXPECT_EQ(nullptr, camera->events());
}

TEST_F(ObserverTest, CustomStreamsKeepTheObserverEvenWhenTheyAreNotThere) {
  const std::string video = "setRemoteCustomVideoProcessedDelegate";
  const std::string audio = "setRemoteCustomAudioReceivedDelegate";
  const std::string missing = "console LMRTCIWEngine setRemoteCustomVideoProcessedDelegate return: -16";
  expect(kNotJoined, engine->setRemoteCustomVideoProcessedDelegate(pixels, "u1", "cam2"),
         {"T " + video + " userId:u1,tag:cam2", kNoSetup});
  EXPECT_TRUE(engine->remoteCustomVideoProcessedDelegates().empty());
  const auto picture2 = make<fake::VideoInput>("u1", "cam2", 1, 1);
  const auto sound2 = make<fake::VideoInput>("u1", "cam2", 0, 1);
  room->users = {user("u1", {stream("u1", "mic2", 0), sound2, picture2})};
  join();
  expect(kNobody, engine->setRemoteCustomVideoProcessedDelegate(pixels, "u9", "cam2"),
         {"T " + video + " userId:u9,tag:cam2", "E: user is nil"});
  EXPECT_TRUE(engine->remoteCustomVideoProcessedDelegates().contains("u9@cam2"));
  expect(kNoStream, engine->setRemoteCustomAudioReceivedDelegate(sound, "u1", "mic2"),
         {"T " + audio + " userId:u1,tag:mic2", missing});
  EXPECT_TRUE(engine->remoteCustomAudioProcessedDelegates().contains("u1@mic2"));
  expect(kNoStream, engine->setRemoteCustomVideoProcessedDelegate(nullptr, "u1", "x"),
         {"T " + video + " userId:u1,tag:x", missing});

  expect(0, engine->setRemoteCustomVideoProcessedDelegate(pixels, "u1", "cam2"),
         {"T " + video + " userId:u1,tag:cam2", "sdk u1_cam2.setDelegate engine"});
  expect(0, engine->setRemoteCustomAudioReceivedDelegate(sound, "u1", "cam2"),
         {"T " + audio + " userId:u1,tag:cam2", "sdk u1_cam2.setAudioDataCallback set"});
  deliver(picture2, {"picture"});
  deliver(sound2->audioData.get(), {kFull});
  engine->destroy();
  trace->take();
  deliver(picture2, {});
}

}  // namespace
}  // namespace lumo
