#include <functional>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoRenderer.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "tests/local/sdk/LocalSdkTest.h"

namespace {

using namespace lumo;
using Media = LumoRTCLocal::Media;

/// What a renderer, or the sink of a participant, has been given.
struct FrameLog : LMRTCVideoRenderer {
  void setSize(double, double) override {}
  void renderFrame(const LMRTCVideoFrame& frame) override {
    picture = frame.rtcVideoFrame->buffer->toI420();
    times.push_back(frame.timestampMs);
  }
  LumoRTCLocal::Participant::VideoSink sink() {
    return [this](const std::string&, const LMRTCVideoFrame& frame) { renderFrame(frame); };
  }
  std::string size() const {
    return picture ? std::to_string(picture->width()) + "x" + std::to_string(picture->height()) : "none";
  }
  std::shared_ptr<const LumoRTCI420Buffer> picture;
  std::vector<std::int64_t> times;
};

LMRTCVideoStreamConfig config(std::int64_t preset, std::int64_t fps) {
  LMRTCVideoStreamConfig config;
  config.setVideoSizePreset(preset);
  config.setVideoFps(fps);
  return config;
}

class VideoFlowTest : public LocalSdkTest {
 protected:
  /// The frames of the next second.
  std::size_t framesInASecond(FrameLog& log) {
    local->advance(101ms);  // past what a change sets off, and off the grid of captures
    log.times.clear();
    local->advance(1s);
    return log.times.size();
  }
};

TEST_F(VideoFlowTest, WhatIsSwitchedOffSendsNothing) {
  const auto anna = addPublishing("anna", Media::video);
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  const auto sent = std::make_shared<FrameLog>();
  const auto view = std::make_shared<FrameLog>();
  const auto preview = std::make_shared<FrameLog>();
  camera()->setVideoView(preview);
  const auto watch = [&](bool on) {
    anna->onVideo(on ? sent->sink() : LumoRTCLocal::Participant::VideoSink());
    video("anna")->setVideoView(on ? view : nullptr);
  };
  struct Step {
    const char* what;
    std::function<void()> act;
    std::size_t sent, shown;  ///< frames in a second
  };
  const Step steps[] = {
      {"nothing subscribed", [&] { watch(true); }, 15, 0},
      {"subscribed", [&] { subscribe({stream("anna")}); }, 15, 15},
      {"the small size", [&] { subscribe({}, {stream("anna")}); }, 15, 10},
      {"disabled", [&] { anna->disableVideo(true), camera()->setIsMute(true); }, 0, 0},
      {"enabled", [&] { anna->disableVideo(false), camera()->setIsMute(false); }, 15, 10},
      {"nobody watches", [&] { watch(false); }, 0, 0},
      {"watched again", [&] { watch(true); }, 15, 10},
      {"unsubscribed", [&] { unsubscribe({stream("anna")}); }, 15, 0},
  };
  for (const Step& step : steps) {
    step.act();
    EXPECT_EQ(step.shown, framesInASecond(*view)) << step.what;
    EXPECT_EQ(step.sent, framesInASecond(*sent)) << step.what;
    EXPECT_EQ(15u, framesInASecond(*preview)) << step.what;
  }
}

TEST_F(VideoFlowTest, SizePresetsAndFrameRates) {
  const auto anna = add("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  FrameLog sent;
  anna->onVideo(sent.sink());
  const char* const sizes[] = {"144x176", "180x180", "144x256", "180x240",  "180x320",  "240x240",
                               "240x320", "360x360", "360x480", "360x640",  "480x480",  "480x640",
                               "480x720", "480x848", "720x960", "720x1280", "1080x1920"};
  for (std::size_t preset = 0; preset < std::size(sizes); ++preset) {
    camera()->setVideoConfig(config(static_cast<std::int64_t>(preset), -1));
    local->advance(100ms);
    EXPECT_EQ(sizes[preset], sent.size());
  }
  camera()->setVideoConfig(config(0, -1));
  constexpr std::size_t kRates[] = {10, 15, 24, 30};
  for (std::size_t fps = 0; fps < std::size(kRates); ++fps) {
    camera()->setVideoConfig(config(-1, static_cast<std::int64_t>(fps)));
    EXPECT_EQ(kRates[fps], framesInASecond(sent));
  }
  EXPECT_EQ("144x176", sent.size());
}

TEST_F(VideoFlowTest, TheSmallStream) {
  const auto bob = add("bob");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  FrameLog tiny;
  bob->onVideo(tiny.sink(), true);
  EXPECT_EQ(10u, framesInASecond(tiny));
  EXPECT_EQ("180x240", tiny.size());
  camera()->setTinyVideoConfig(config(0, 1));
  EXPECT_EQ(15u, framesInASecond(tiny));
  EXPECT_EQ("144x176", tiny.size());
  camera()->setEnableTinyStream(false);
  local->advance(1s);
  EXPECT_EQ("480x640", tiny.size());
}

TEST_F(VideoFlowTest, ACameraThatCannotBeOpenedIsRefused) {
  ASSERT_EQ(0, join("r"));
  const auto refused = local->join("r", "bob", {.camera = "no-such-file.mp4"});
  EXPECT_EQ(LocalCodeCameraFailed, refused.code);
  EXPECT_EQ(nullptr, room->getRemoteUser("bob"));
  for (const std::string& message : {refused.message, local->setCamera("no-such-file.mp4").value_or("")})
    EXPECT_NE(std::string::npos, message.find("no-such-file.mp4"));
}
}  // namespace
