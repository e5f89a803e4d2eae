#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLocal/media/Picture.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

/// An observer of sound that keeps it.
struct Ear : SoundMeter {
  Ear() {
    observer->onAudioFrame = [this](const LMRTCIWAudioFrame& frame) {
      EXPECT_EQ(std::pair(1920, 48000), std::pair(frame.length, frame.sampleRate));
      const auto* const begin = reinterpret_cast<const std::int16_t*>(frame.bytes);
      samples.insert(samples.end(), begin, begin + AudioBlock::kSamples);
    };
  }
  const std::shared_ptr<LMRTCIWAudioFrameDelegate> observer = std::make_shared<LMRTCIWAudioFrameDelegate>();
};

constexpr YuvColor kPaint{110, 90, 170};

/// A painted picture of the camera's height.
CVPixelBufferRef planar(std::int32_t width) { return CVPixelBuffer::wrap(solid(width, 640, kPaint)); }
CVPixelBufferRef bgra() {
  auto pixels = CVPixelBuffer::createBGRA(480, 640, {});
  toBgra(viewOf(*solid(480, 640, kPaint)), pixels->baseAddress(),
         static_cast<std::int32_t>(pixels->bytesPerRow()));
  return pixels;
}

std::string look(const Picture& picture) {
  const YuvColor edge = colorAt(*picture, picture->width() - 3, picture->height() / 2);
  return isNear(edge, kPaint, 2) ? "painted" : isNear(edge, testPictureColor(0), 2) ? "captured" : "odd";
}

class ObserverTest : public CallTest {
 protected:
  /// How loud each tone is in what each of them gets in the next 100 ms.
  std::string levels(const std::vector<double>& tones, const std::vector<SoundMeter*>& meters) {
    advance(0us);
    for (SoundMeter* const meter : meters) meter->samples.clear();
    advance(100ms);
    std::string text;
    for (const double tone : tones) {
      text += text.empty() ? "" : "| ";
      for (const SoundMeter* const meter : meters) text += meter->tenths(tone) + " ";
    }
    return text;
  }
  std::string inASecond(int& frames) {
    advance(100ms);  // past what a change sets off
    frames = 0;
    advance(1s);
    return std::to_string(frames);
  }

  ParticipantPtr anna = add("anna");
};

TEST_F(ObserverTest, TheMicrophoneIsHeardWhereItIsCapturedAndWhereItIsSent) {
  Ear captured, sent;
  SoundMeter member;
  anna->onAudio(member.sink());
  const auto setObservers = [&](bool on) {
    EXPECT_EQ(0, engine->setLocalAudioCapturedDelegate(on ? captured.observer : nullptr));
    EXPECT_EQ(0, engine->setLocalAudioMixedDelegate(on ? sent.observer : nullptr));
  };
  run(
      {
          {"observers", [&] { setObservers(true); }, "10 - - "},
          {"join", [&] { join(); }, "10 - - "},
          {"publish", [&] { publish(kAudio); }, "10 10 10 "},
          {"mute", [&] { engine->muteLocalStream(kAudio, true); }, "10 - - "},
          {"unmute", [&] { engine->muteLocalStream(kAudio, false); }, "10 10 10 "},
          {"off", [&] { engine->enableMicrophone(false); }, "- - - "},
          {"on", [&] { engine->enableMicrophone(true); }, "10 10 10 "},
          {"nobody subscribed", [&] { anna->onAudio({}); }, "10 10 - "},
          {"removed", [&] { setObservers(false); }, "- - - "},
      },
      [&] {
        return levels({300}, {&captured, &sent, &member});
      });
}

TEST_F(ObserverTest, ReceivedSoundIsHeardPerStreamAndMixed) {
  anna->publishAudio();
  add("bob")->publish("music", Media::audio);
  join();
  Ear voice, music, mix;
  const auto setObservers = [&](bool on) {
    EXPECT_EQ(0, engine->setRemoteAudioReceivedDelegate(on ? voice.observer : nullptr, "anna"));
    EXPECT_EQ(0, engine->setRemoteCustomAudioReceivedDelegate(on ? music.observer : nullptr, "bob", "music"));
    EXPECT_EQ(0, engine->setRemoteAudioMixedDelegate(on ? mix.observer : nullptr));
  };
  const std::string all = "10 0 10 10 | 0 10 10 10 ", musicOnly = "- 0 0 0 | - 10 10 10 ";
  run(
      {
          {"nothing subscribed", [&] { setObservers(true); }, "- - 0 0 | - - 0 0 "},
          {"anna", [&] { engine->subscribe("anna", kAudio); }, "10 - 10 10 | 0 - 0 0 "},
          {"music", [&] { engine->subscribeCustomStream("bob", "music", kAudio, false); }, all},
          {"mute anna", [&] { engine->muteRemoteStream("anna", kAudio, true); }, musicOnly},
          {"unmute anna", [&] { engine->muteRemoteStream("anna", kAudio, false); }, all},
          {"mute all", [&] { engine->muteAllRemoteAudioStreams(true); }, "- - 0 0 | - - 0 0 "},
          {"unmute all", [&] { engine->muteAllRemoteAudioStreams(false); }, all},
          {"speaker off", [&] { engine->enableSpeaker(false); }, "10 0 10 - | 0 10 10 - "},
          {"speaker on", [&] { engine->enableSpeaker(true); }, all},
          {"removed", [&] { setObservers(false); }, "- - - 10 | - - - 10 "},
          {"left", [&] { engine->leaveRoom(); }, "- - - - | - - - - "},
      },
      [&] {
        return levels({400, 500}, {&voice, &music, &mix, &speaker});
      });
}

TEST_F(ObserverTest, ThePictureThatTheObserverReturnsIsSent) {
  const auto bob = add("bob");
  Receiver normal, tiny;
  anna->onVideo(normal.sink());
  bob->onVideo(tiny.sink(), true);
  join();
  publish(kVideo);
  const auto view = LMRTCIWView::create();
  ASSERT_EQ(0, engine->setLocalView(view));
  const auto observer = std::make_shared<LMRTCIWSampleBufferVideoFrameDelegate>();
  const auto give = [&](const CVPixelBufferRef& pixels) {
    observer->onSampleBuffer = [pixels](const auto&) {
      return std::make_shared<CMSampleBuffer>(CMSampleBuffer{pixels, 0});
    };
  };
  const auto giveBack = [&] { observer->onSampleBuffer = [](const auto& buffer) { return buffer; }; };
  ASSERT_EQ(0, engine->setLocalVideoProcessedDelegate(observer));
  run(
      {
          {"the same", giveBack, "15 captured captured"},
          {"planar", [&] { give(planar(480)); }, "15 painted painted"},
          {"BGRA", [&] { give(bgra()); }, "15 painted painted"},
          {"no pixels", [&] { give(nullptr); }, "0 painted painted"},
          {"another size", [&] { give(planar(482)); }, "0 painted painted"},
          {"the same again", giveBack, "15 captured captured"},
      },
      [&] {
        const std::string frames = inASecond(normal.frames);
        EXPECT_EQ("captured", look(nativeView(view)->picture()));
        return frames + " " + look(normal.picture) + " " + look(tiny.picture);
      });
  EXPECT_EQ(nativeView(view)->picture()->dataY(), normal.picture->dataY()) << "a copy";
}

TEST_F(ObserverTest, ReceivedPicturesAreSeenBeforeTheyAreRendered) {
  anna->publishVideo();
  join();
  const auto view = LMRTCIWView::create();
  int pictures = 0;
  const auto observer = std::make_shared<LMRTCIWPixelBufferVideoFrameDelegate>();
  observer->onPixelBuffer = [&](const CVPixelBufferRef& pixels) {
    ++pictures;
    EXPECT_EQ(kCVPixelFormatType_420YpCbCr8Planar, pixels->pixelFormat());
    const auto rendered = nativeView(view)->picture();
    EXPECT_FALSE(rendered && rendered->dataY() == pixels->baseAddress(0)) << "rendered already";
  };
  ASSERT_EQ(0, engine->setRemoteView(view, "anna"));
  ASSERT_EQ(0, engine->setRemoteVideoProcessedDelegate(observer, "anna"));
  run(
      {
          {"nothing subscribed", [] {}, "0"},
          {"subscribed", [&] { engine->subscribe("anna", kVideo); }, "15"},
          {"muted", [&] { engine->muteRemoteStream("anna", kVideo, true); }, "0"},
          {"unmuted", [&] { engine->muteRemoteStream("anna", kVideo, false); }, "15"},
          {"removed", [&] { engine->setRemoteVideoProcessedDelegate(nullptr, "anna"); }, "0"},
      },
      [&] { return inASecond(pictures); });
}

TEST_F(ObserverTest, TheCameraIsSwitchedTurnedAndPointed) {
  delegate->onCameraEnabled = recorded("enabled");
  delegate->onCameraSwitched = recorded("camera");
  Receiver receiver;
  anna->onVideo(receiver.sink());
  join();
  publish(kVideo);
  run(
      {
          {"switch", [&] { engine->switchCamera(); }, "1 15 1000"},
          {"off", [&] { engine->enableCamera(false); }, "1 0 1000"},
          {"on", [&] { engine->enableCamera(true); }, "1 15 1000"},
          {"front", [&] { engine->enableCamera(true, 0); }, "0 15 0"},
      },
      [&] {
        const std::string frames = inASecond(receiver.frames);
        return std::to_string(engine->whichCamera()) + " " + frames + " " +
               std::to_string(readingOf(receiver.picture).sourceNumber);
      });
  EXPECT_EQ((Lines{"camera 1 0 ", "enabled 0 0 ", "enabled 1 0 ", "enabled 1 0 "}), told());

  FramePool pool;
  std::vector<std::int32_t> rotations;
  LMRTCEngine::sharedInstance()->defaultVideoStream()->setIsEncoderMirror(true);
  for (const std::int64_t orientation : {1, 2, 3, 4, -1, 0}) {
    engine->setCameraCaptureOrientation(orientation);
    advance(100ms);
    rotations.push_back(receiver.rotation);
    const auto upright = mirrored(*rotated(receiver.picture, receiver.rotation, pool), pool);
    EXPECT_EQ(0u, readingOf(rotated(upright, 360 - receiver.rotation, pool)).sourceNumber)
        << "mirrored as it looks upright, whichever way it is turned";
  }
  EXPECT_EQ((std::vector<std::int32_t>{90, 180, 270, 270, 270, 0}), rotations);

  engine->setCameraFocusPositionInPreview({1, 2});
  engine->setCameraExposurePositionInPreview({3, 4});
  EXPECT_EQ((UIPoint{1, 2}), local->cameraFocusPosition());
  EXPECT_EQ((UIPoint{3, 4}), local->cameraExposurePosition());
}

}  // namespace
}  // namespace lumo::test
