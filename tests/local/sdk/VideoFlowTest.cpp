#include <functional>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoStreamConfig.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoView.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
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
  /// The number in the test picture, or -1.
  std::int64_t source() const {
    const auto reading = picture ? readTestPicture(*picture) : std::nullopt;
    return reading ? std::int64_t{reading->sourceNumber} : -1;
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
    EXPECT_EQ(0, sent.source()) << sizes[preset];
  }
  camera()->setVideoConfig(config(0, -1));
  constexpr std::size_t kRates[] = {10, 15, 24, 30};
  for (std::size_t fps = 0; fps < std::size(kRates); ++fps) {
    camera()->setVideoConfig(config(-1, static_cast<std::int64_t>(fps)));
    EXPECT_EQ(kRates[fps], framesInASecond(sent));
  }
  EXPECT_EQ("144x176", sent.size());
}

TEST_F(VideoFlowTest, TheSmallStreamAndTheMirrorOfTheEncoder) {
  const auto anna = add("anna");
  const auto bob = add("bob");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  FrameLog normal, tiny;
  anna->onVideo(normal.sink());
  bob->onVideo(tiny.sink(), true);
  const auto preview = std::make_shared<FrameLog>();
  camera()->setVideoView(preview);

  EXPECT_EQ(10u, framesInASecond(tiny));
  EXPECT_EQ("180x240", tiny.size());
  EXPECT_EQ(0, tiny.source());
  camera()->setTinyVideoConfig(config(0, 1));
  EXPECT_EQ(15u, framesInASecond(tiny));
  EXPECT_EQ("144x176", tiny.size());
  camera()->setEnableTinyStream(false);
  EXPECT_EQ(15u, framesInASecond(tiny));
  EXPECT_EQ(tiny.picture, normal.picture);
  EXPECT_EQ(preview->picture, normal.picture) << "captured once and shared";

  camera()->setIsEncoderMirror(true);
  local->advance(1s);
  EXPECT_EQ(0, preview->source());
  FramePool pool;
  normal.picture = mirrored(*normal.picture, pool);
  EXPECT_EQ(0, normal.source());
}

TEST_F(VideoFlowTest, CustomStreamsAndCamerasOfParticipants) {
  LumoRTCLocal::ParticipantOptions options{.sourceNumber = 7, .video = {320, 240, 5}};
  const auto anna = add("anna", options);
  ASSERT_EQ(0, anna->publishVideo());
  ASSERT_EQ(0, anna->publish("screen", Media::video, 8));
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, subscribe({stream("anna", 0), stream("anna", 1)}));
  const auto face = std::make_shared<FrameLog>();
  const auto screen = std::make_shared<FrameLog>();
  video("anna", 0)->setVideoView(face);
  video("anna", 1)->setVideoView(screen);
  local->advance(1s - local->now());
  face->times.clear();
  local->advance(1s);
  EXPECT_EQ((std::vector<std::int64_t>{1200, 1400, 1600, 1800, 2000}), face->times) << "of their capture";
  EXPECT_EQ("320x240", face->size());
  EXPECT_EQ(std::pair(7L, 8L), std::pair(face->source(), screen->source()));

  options.camera = "no-such-file.mp4";
  const auto refused = local->join("r", "bob", options);
  EXPECT_EQ(LocalCodeCameraFailed, refused.code);
  EXPECT_EQ(nullptr, room->getRemoteUser("bob"));
  for (const std::string& message : {refused.message, local->setCamera("no-such-file.mp4").value_or("")})
    EXPECT_NE(std::string::npos, message.find("no-such-file.mp4"));
  EXPECT_FALSE(local->setCamera(""));
}

TEST_F(VideoFlowTest, TheViewPaintsTheNewestFrame) {
  ASSERT_EQ(0, add("anna", {.video = {100, 200, 10}})->publishVideo());
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, subscribe({stream("anna")}));
  const auto view = std::dynamic_pointer_cast<LocalVideoView>(LMRTCVideoView::create({0, 0, 200, 200}));
  ASSERT_TRUE(view);
  video("anna")->setVideoView(view);
  const auto isBlack = [&view](std::int32_t x, std::int32_t y) {
    const Bitmap shown = view->snapshot();
    const auto* const at = shown.bgra.data() + (y * shown.width + x) * 4;
    return at[0] + at[1] + at[2] == 0;
  };
  EXPECT_TRUE(isBlack(100, 100)) << "before the first frame";
  local->advance(150ms);
  EXPECT_EQ(1u, view->frameCount());
  EXPECT_FALSE(isBlack(1, 1)) << "stretched";
  view->setFillMode(LMRTCVideoFillModeAspectFit);
  EXPECT_TRUE(isBlack(1, 1) && !isBlack(52, 1));
  const Bitmap plain = view->snapshot();
  view->setIsPreviewMirror(true);
  EXPECT_NE(plain.bgra, view->snapshot().bgra);
  view->setFrame({0, 0, 30, 60});
  EXPECT_EQ(std::pair(30, 60), std::pair(view->snapshot().width, view->snapshot().height));
  EXPECT_FALSE(isBlack(0, 0)) << "fits exactly";
  view->setFrame({0, 0, -5, 60});
  EXPECT_TRUE(view->snapshot().bgra.empty());
}

}  // namespace
