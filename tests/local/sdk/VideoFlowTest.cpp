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
using Picture = std::shared_ptr<const LumoRTCI420Buffer>;

/// What a renderer, or the sink of a participant, has been given.
struct FrameLog : LMRTCVideoRenderer {
  void setSize(double width, double height) override {
    sizes.push_back(std::to_string(static_cast<int>(width)) + "x" + std::to_string(static_cast<int>(height)));
  }
  void renderFrame(const LMRTCVideoFrame& frame) override {
    pictures.push_back(frame.rtcVideoFrame->buffer->toI420());
    times.push_back(frame.timestampMs);
  }
  LumoRTCLocal::Participant::VideoSink sink() {
    return [this](const std::string& tag, const LMRTCVideoFrame& frame) {
      EXPECT_EQ(kLMRTCDefaultStreamTag, tag);
      renderFrame(frame);
    };
  }
  std::string size() const {
    return pictures.empty()
               ? "none"
               : std::to_string(pictures.back()->width()) + "x" + std::to_string(pictures.back()->height());
  }
  std::optional<TestPictureReading> reading() const {
    return pictures.empty() ? std::nullopt : readTestPicture(*pictures.back());
  }
  void clear() {
    pictures.clear();
    times.clear();
  }

  std::vector<std::string> sizes;
  std::vector<Picture> pictures;
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
    log.clear();
    local->advance(1s);
    return log.pictures.size();
  }
};

TEST_F(VideoFlowTest, RemotePicturesReachSubscribersOnly) {
  const auto anna = addPublishing("anna", Media::video);
  const auto bob = addPublishing("bob", Media::video);
  ASSERT_EQ(0, join("r"));
  const auto annaView = std::make_shared<FrameLog>();
  const auto bobView = std::make_shared<FrameLog>();
  video("anna")->setVideoView(annaView);
  video("bob")->setVideoView(bobView);
  ASSERT_EQ(0, subscribe({stream("anna")}));

  EXPECT_EQ(15u, framesInASecond(*annaView));
  EXPECT_EQ((std::vector<std::string>{"480x640"}), annaView->sizes);
  ASSERT_TRUE(annaView->reading());
  EXPECT_EQ(anna->sourceNumber(), annaView->reading()->sourceNumber);
  EXPECT_EQ(testPictureColor(1).u, annaView->pictures.back()->dataU()[0]);
  EXPECT_TRUE(bobView->pictures.empty());

  ASSERT_EQ(0, subscribe({}, {stream("anna"), stream("bob")}));
  EXPECT_EQ(10u, framesInASecond(*annaView));
  EXPECT_EQ("180x240", annaView->size());
  EXPECT_EQ(1u, annaView->reading()->sourceNumber);
  EXPECT_EQ(2u, bobView->reading()->sourceNumber);

  ASSERT_EQ(0, unsubscribe({stream("anna")}));
  EXPECT_EQ(0u, framesInASecond(*annaView));
  EXPECT_EQ(0, bob->unpublishVideo());
  EXPECT_EQ(0u, framesInASecond(*bobView));
}

TEST_F(VideoFlowTest, WhatIsSwitchedOffSendsNothing) {
  const auto anna = addPublishing("anna", Media::video);
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  ASSERT_EQ(0, subscribe({stream("anna")}));
  FrameLog sent;
  anna->onVideo(sent.sink());
  const auto view = std::make_shared<FrameLog>();
  const auto preview = std::make_shared<FrameLog>();
  video("anna")->setVideoView(view);
  camera()->setVideoView(preview);

  EXPECT_EQ(15u, framesInASecond(*view));
  EXPECT_EQ(0, anna->disableVideo(true));
  EXPECT_EQ(0u, framesInASecond(*view));
  EXPECT_EQ(0, anna->disableVideo(false));
  EXPECT_EQ(15u, framesInASecond(*view));
  stream("anna")->setIsMute(true);
  EXPECT_EQ(0u, framesInASecond(*view));
  stream("anna")->setIsMute(false);
  video("anna")->setVideoView(nullptr);
  EXPECT_EQ(0u, framesInASecond(*view));

  EXPECT_EQ(15u, framesInASecond(sent));
  camera()->setIsMute(true);
  EXPECT_EQ(0u, framesInASecond(sent));
  EXPECT_EQ(15u, framesInASecond(*preview)) << "the preview goes on";
  camera()->setIsMute(false);
  EXPECT_EQ(15u, framesInASecond(sent));
  anna->onVideo({});
  EXPECT_EQ(0u, framesInASecond(sent));
  camera()->setVideoView(nullptr);
  EXPECT_EQ(0u, framesInASecond(*preview));
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
    EXPECT_EQ(0u, sent.reading().value_or(TestPictureReading{99, 0}).sourceNumber) << sizes[preset];
  }
  camera()->setVideoConfig(config(0, -1));
  constexpr std::size_t kRates[] = {10, 15, 24, 30};
  for (std::size_t fps = 0; fps < std::size(kRates); ++fps) {
    camera()->setVideoConfig(config(-1, static_cast<std::int64_t>(fps)));
    EXPECT_EQ(kRates[fps], framesInASecond(sent));
  }
  camera()->setVideoConfig(config(-1, -1));
  EXPECT_EQ(30u, framesInASecond(sent));
  EXPECT_EQ("144x176", sent.size());
}

TEST_F(VideoFlowTest, TheEncoderMirrorLeavesThePreviewAsItIs) {
  const auto anna = add("anna");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  FrameLog sent;
  anna->onVideo(sent.sink());
  const auto preview = std::make_shared<FrameLog>();
  camera()->setVideoView(preview);
  local->advance(1s);
  EXPECT_EQ(preview->pictures.back(), sent.pictures.back()) << "captured once and shared";
  EXPECT_TRUE(sent.reading());

  camera()->setIsEncoderMirror(true);
  local->advance(1s);
  EXPECT_TRUE(preview->reading());
  EXPECT_FALSE(sent.reading());
  FramePool pool;
  EXPECT_EQ(preview->reading(), readTestPicture(*mirrored(*sent.pictures.back(), pool)));
}

TEST_F(VideoFlowTest, TheSmallStream) {
  const auto anna = add("anna");
  const auto bob = add("bob");
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, publish({camera()}));
  FrameLog normal, tiny;
  anna->onVideo(normal.sink());
  bob->onVideo(tiny.sink(), true);

  EXPECT_EQ(10u, framesInASecond(tiny));
  EXPECT_EQ("180x240", tiny.size());
  EXPECT_TRUE(tiny.reading());
  EXPECT_EQ("480x640", normal.size());
  camera()->setTinyVideoConfig(config(0, 1));
  EXPECT_EQ(15u, framesInASecond(tiny));
  EXPECT_EQ("144x176", tiny.size());
  camera()->setEnableTinyStream(false);
  EXPECT_EQ(15u, framesInASecond(tiny));
  EXPECT_EQ(tiny.pictures.back(), normal.pictures.back());
}

TEST_F(VideoFlowTest, TimestampsAreCaptureTimes) {
  addPublishing("anna", Media::video);
  ASSERT_EQ(0, join("r"));
  local->advance(1s - local->now());
  ASSERT_EQ(0, subscribe({stream("anna")}));
  const auto view = std::make_shared<FrameLog>();
  video("anna")->setVideoView(view);
  local->advance(200ms);
  EXPECT_EQ((std::vector<std::int64_t>{1066, 1133, 1200}),
            (std::vector<std::int64_t>(view->times.end() - 3, view->times.end())));
}

TEST_F(VideoFlowTest, CustomStreamsAndCamerasOfParticipants) {
  LumoRTCLocal::ParticipantOptions options;
  options.sourceNumber = 7;
  options.video = {320, 240, 5};
  const auto anna = add("anna", options);
  ASSERT_EQ(0, anna->publishVideo());
  ASSERT_EQ(0, anna->publish("screen", Media::video, 8));
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, subscribe({stream("anna", 0), stream("anna", 1)}));
  const auto face = std::make_shared<FrameLog>();
  const auto screen = std::make_shared<FrameLog>();
  video("anna", 0)->setVideoView(face);
  video("anna", 1)->setVideoView(screen);
  EXPECT_EQ(5u, framesInASecond(*face));
  EXPECT_EQ("320x240", face->size());
  EXPECT_EQ(7u, face->reading()->sourceNumber);
  EXPECT_EQ(8u, screen->reading()->sourceNumber);

  options.camera = "no-such-file.mp4";
  const auto refused = local->join("r", "bob", options);
  EXPECT_EQ(LocalCodeCameraFailed, refused.code);
  EXPECT_NE(std::string::npos, refused.message.find("no-such-file.mp4"));
  EXPECT_EQ(nullptr, room->getRemoteUser("bob"));
  EXPECT_NE(std::string::npos, local->setCamera("no-such-file.mp4").value_or("").find("no-such-file.mp4"));
  EXPECT_FALSE(local->setCamera(""));
}

TEST_F(VideoFlowTest, TheViewPaintsTheNewestFrame) {
  LumoRTCLocal::ParticipantOptions options;
  options.video = {100, 200, 10};
  ASSERT_EQ(0, add("anna", options)->publishVideo());
  ASSERT_EQ(0, join("r"));
  ASSERT_EQ(0, subscribe({stream("anna")}));
  const auto view = std::dynamic_pointer_cast<LocalVideoView>(LMRTCVideoView::create({0, 0, 200, 200}));
  ASSERT_TRUE(view);
  video("anna")->setVideoView(view);
  const auto pixel = [&view](std::int32_t x, std::int32_t y) {
    const Bitmap shown = view->snapshot();
    const auto* const at = shown.bgra.data() + (y * shown.width + x) * 4;
    return std::vector<int>{at[0], at[1], at[2], at[3]};
  };
  const std::vector<int> black{0, 0, 0, 255};
  EXPECT_EQ(black, pixel(100, 100)) << "before the first frame";
  EXPECT_EQ(0u, view->frameCount());

  EXPECT_EQ(1u, (local->advance(150ms), view->frameCount()));
  const auto background = pixel(1, 1);
  EXPECT_NE(black, background) << "stretched";
  view->setFillMode(LMRTCVideoFillModeAspectFit);
  EXPECT_EQ(black, pixel(1, 1));
  EXPECT_EQ(background, pixel(52, 1));
  const Bitmap plain = view->snapshot();
  view->setIsPreviewMirror(true);
  EXPECT_NE(plain.bgra, view->snapshot().bgra);
  view->setFrame({0, 0, 30, 60});
  EXPECT_EQ(30 * 60 * 4, static_cast<int>(view->snapshot().bgra.size()));
  EXPECT_NE(black, pixel(0, 0)) << "fits exactly";
  view->setFrame({0, 0, -5, 60});
  EXPECT_TRUE(view->snapshot().bgra.empty());
}

}  // namespace
