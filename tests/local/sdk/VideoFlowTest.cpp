#include <array>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using namespace lumo;

LMRTCVideoStreamConfig config(std::int64_t preset, std::int64_t fps) {
  LMRTCVideoStreamConfig config;
  config.setVideoSizePreset(preset);
  config.setVideoFps(fps);
  return config;
}

/// The local camera is sent to anna, and hers may be shown in the view.
class VideoFlowTest : public LocalSdkTest {
 protected:
  VideoFlowTest() {
    EXPECT_EQ(0, anna->publishVideo());
    EXPECT_EQ(0, join("r"));
    EXPECT_EQ(0, publish({camera()}));
  }

  LumoRTCLocal::Participant::VideoSink sink() {
    return [this](const std::string&, const LMRTCVideoFrame& frame) {
      ++sent;
      size = std::to_string(frame.width) + "x" + std::to_string(frame.height);
      EXPECT_EQ(0u, readTestPicture(*frame.rtcVideoFrame->buffer->toI420()).value().sourceNumber);
    };
  }
  /// The frames of the next second that anna gets, and those in the view and in the preview.
  std::string framesInASecond() {
    local->advance(101ms);  // past what a change sets off, and off the grid of captures
    const auto before = std::array{std::exchange(sent, 0), view->frameCount(), preview->frameCount()};
    local->advance(1s);
    return std::to_string(sent) + " " + std::to_string(view->frameCount() - before[1]) + " " +
           std::to_string(preview->frameCount() - before[2]);
  }

  ParticipantPtr anna = add("anna");
  std::uint64_t sent = 0;
  std::string size;
};

TEST_F(VideoFlowTest, WhatIsSwitchedOffSendsNothing) {
  camera()->setVideoView(preview);
  const auto watch = [&](bool on) {
    anna->onVideo(on ? sink() : LumoRTCLocal::Participant::VideoSink());
    show(stream("anna"), on ? view : nullptr);
  };
  const std::tuple<const char*, std::function<void()>, const char*> steps[] = {
      {"nothing subscribed", [&] { watch(true); }, "15 0 15"},
      {"subscribed", [&] { subscribe({stream("anna")}); }, "15 15 15"},
      {"the small size", [&] { subscribe({}, {stream("anna")}); }, "15 10 15"},
      {"disabled", [&] { anna->disableVideo(true), camera()->setIsMute(true); }, "0 0 15"},
      {"enabled", [&] { anna->disableVideo(false), camera()->setIsMute(false); }, "15 10 15"},
      {"nobody watches", [&] { watch(false); }, "0 0 15"},
      {"watched again", [&] { watch(true); }, "15 10 15"},
      {"unsubscribed", [&] { unsubscribe({stream("anna")}); }, "15 0 15"},
  };
  for (const auto& [what, act, frames] : steps) {
    act();
    EXPECT_EQ(frames, framesInASecond()) << what;
  }
}

TEST_F(VideoFlowTest, SizesAndFrameRatesOfBothStreams) {
  anna->onVideo(sink(), true);
  EXPECT_EQ("10 0 0", framesInASecond());
  EXPECT_EQ("180x240", size);
  camera()->setTinyVideoConfig(config(0, 1));
  EXPECT_EQ("15 0 0", framesInASecond());
  EXPECT_EQ("144x176", size);
  camera()->setEnableTinyStream(false);
  local->advance(1s);
  EXPECT_EQ("480x640", size) << "in place of the small stream";
  camera()->setVideoConfig(config(16, 3));
  EXPECT_EQ("30 0 0", framesInASecond());
  EXPECT_EQ("1080x1920", size);
}

}  // namespace
