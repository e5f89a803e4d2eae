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
  expect(kNotJoined, engine->setRemoteAudioMixedDelegate(sound),
         {"T setRemoteAudioMixedDelegate delegate:1", "E: room is nil"});
  join();
  expect(0, engine->setLocalAudioCapturedDelegate(sound),
         {"T setLocalAudioCapturedDelegate delegate:1", "-> me_mic.setRecordAudioDataCallback set"});
  expect(0, engine->setLocalAudioMixedDelegate(sound),
         {"T setLocalAudioMixedDelegate delegate:1", "-> me_mic.setWillSendAudioBufferCallback set"});
  expect(0, engine->setRemoteAudioMixedDelegate(sound),
         {"T setRemoteAudioMixedDelegate delegate:1", "-> r1.setReceivedAudioBufferCallback set"});
  deliver(mic.recorded.get(), {kFull});
  deliver(mic.willSend.get(), {kMixed});
  deliver(room->received.get(), {kMixed});
  expect(0, engine->setLocalAudioMixedDelegate(nullptr),
         {"T setLocalAudioMixedDelegate delegate:0", "-> me_mic.setWillSendAudioBufferCallback nil"});
  sound = nullptr;  // held weakly
  deliver(room->received.get(), {});
  deliver(mic.recorded.get(), {});
}

TEST_F(ObserverTest, SentPicturesAreReplacedByWhatTheObserverReturns) {
  expect(0, engine->setLocalVideoProcessedDelegate(samples),
         {"T setLocalVideoProcessedDelegate delegate:1", "-> me_cam.setVideoSendBufferCallback set"});
  const auto hook = sdk->engine->camera->willSend.get();
  EXPECT_EQ(replacement, hook(captured));
  samples->onSampleBuffer = nullptr;
  EXPECT_EQ(captured, hook(captured));

  const auto file = make<fake::FileOutput>("clip");
  engine->setCustomStreams({{"clip", std::make_shared<LMRTCIWCustomStream>(2, file)}});
  samples->onSampleBuffer = [](const CMSampleBufferRef&) { return nullptr; };
  expect(0, engine->setLocalCustomVideoProcessedDelegate(samples, "clip"),
         {"T setLocalCustomVideoProcessedDelegate tag:clip", "-> me_clip.setVideoSendBufferCallback set"});
  EXPECT_EQ(nullptr, file->willSend.get()(captured));
  engine->setLocalCustomVideoProcessedDelegate(nullptr, "clip");
  EXPECT_FALSE(file->willSend.get());
  engine->destroy();
  EXPECT_EQ(captured, hook(captured));
}

TEST_F(ObserverTest, UsersOfTheMainRoomAreWatchedStreamByStream) {
  const auto camera = make<fake::VideoInput>("u1", kLMRTCDefaultStreamTag, 1);
  const auto mic = make<fake::AudioInput>("u1");
  room->users = {user("u1", {stream("u1", "cam2", 0), mic, camera})};
  join();
  expect(kNobody, engine->setRemoteVideoProcessedDelegate(pixels, "u9"),
         {"T setRemoteVideoProcessedDelegate userId:u9", "E: user is nil"});
  expect(0, engine->setRemoteAudioReceivedDelegate(sound, "u1"),
         {"T setRemoteAudioReceivedDelegate userId:u1", "-> u1_LumoCloudRTC.setAudioDataCallback set"});
  expect(0, engine->setRemoteVideoProcessedDelegate(pixels, "u1"),
         {"T setRemoteVideoProcessedDelegate userId:u1", "-> u1_LumoCloudRTC.setDelegate engine"});
  const auto hook = mic->audioData.get();
  deliver(hook, {kFull});
  deliver(camera, {"picture"});
  expect(0, engine->setRemoteAudioReceivedDelegate(nullptr, "u1"),
         {"T setRemoteAudioReceivedDelegate userId:u1", "-> u1_LumoCloudRTC.setAudioDataCallback nil"});
  deliver(hook, {});  // a block that was on its way
  expect(0, engine->setRemoteVideoProcessedDelegate(nullptr, "u1"),
         {"T setRemoteVideoProcessedDelegate userId:u1", "-> u1_LumoCloudRTC.setDelegate nil"});
}

TEST_F(ObserverTest, CustomStreamsAreWatchedByUserAndTag) {
  const std::string video = "T setRemoteCustomVideoProcessedDelegate userId:u1,tag:";
  const std::string audio = "T setRemoteCustomAudioReceivedDelegate userId:u1,tag:";
  const auto picture2 = make<fake::VideoInput>("u1", "cam2", 1, 1);
  const auto sound2 = make<fake::VideoInput>("u1", "cam2", 0, 1);
  room->users = {user("u1", {stream("u1", "mic2", 0), sound2, picture2})};
  join();
  expect(kNoStream, engine->setRemoteCustomAudioReceivedDelegate(sound, "u1", "mic2"),
         {audio + "mic2", "C setRemoteCustomVideoProcessedDelegate return: -16"});
  expect(0, engine->setRemoteCustomVideoProcessedDelegate(pixels, "u1", "cam2"),
         {video + "cam2", "-> u1_cam2.setDelegate engine"});
  expect(0, engine->setRemoteCustomAudioReceivedDelegate(sound, "u1", "cam2"),
         {audio + "cam2", "-> u1_cam2.setAudioDataCallback set"});
  deliver(picture2, {"picture"});
  deliver(sound2->audioData.get(), {kFull});
}

}  // namespace
}  // namespace lumo
