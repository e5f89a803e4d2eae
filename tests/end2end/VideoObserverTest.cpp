#include <functional>
#include <optional>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCEngine.h"
#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCOutputStream.h"
#include "LumoRTCLibWrapper/views/LMRTCIWView.h"
#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/sdk/LocalVideoView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

using Picture = std::shared_ptr<const LumoRTCI420Buffer>;

constexpr YuvColor kPaint{110, 90, 170};

/// What a member gets of the local user's camera.
struct Receiver {
  LumoRTCLocal::Participant::VideoSink sink() {
    return [this](const std::string&, const LMRTCVideoFrame& frame) {
      picture = frame.rtcVideoFrame->buffer->toI420();
      rotation = frame.rotation;
      ++frames;
    };
  }
  std::optional<std::uint32_t> source() const {
    const auto reading = picture ? readTestPicture(*picture) : std::nullopt;
    return reading ? std::optional(reading->sourceNumber) : std::nullopt;
  }

  Picture picture;
  std::int32_t rotation = 0;
  int frames = 0;
};

/// The planes of a planar buffer as a picture.
Picture pictureIn(const CVPixelBufferRef& pixels) {
  const auto stride = [&](std::size_t plane) {
    return static_cast<std::int32_t>(pixels->bytesPerRow(plane));
  };
  return LumoRTCI420Buffer::wrap(static_cast<std::int32_t>(pixels->width()),
                                 static_cast<std::int32_t>(pixels->height()), pixels->baseAddress(0),
                                 stride(0), pixels->baseAddress(1), stride(1), pixels->baseAddress(2),
                                 stride(2), pixels);
}

CVPixelBufferRef painted(std::int32_t width, std::int32_t height) {
  return CVPixelBuffer::wrap(solid(width, height, kPaint));
}

CVPixelBufferRef paintedBgra(std::int32_t width, std::int32_t height) {
  auto pixels =
      CVPixelBuffer::createBGRA(static_cast<std::size_t>(width), static_cast<std::size_t>(height), {});
  toBgra(viewOf(*solid(width, height, kPaint)), pixels->baseAddress(),
         static_cast<std::int32_t>(pixels->bytesPerRow()));
  return pixels;
}

bool isNear(const YuvColor& a, const YuvColor& b) {
  return std::abs(a.y - b.y) <= 2 && std::abs(a.u - b.u) <= 2 && std::abs(a.v - b.v) <= 2;
}

/// One letter each for the left and the right edge: painted, as captured from that source, or anything else.
std::string edges(const Picture& picture) {
  std::string text;
  for (const std::int32_t x : {2, picture->width() - 3}) {
    const YuvColor color = colorAt(*picture, x, picture->height() / 2);
    text += isNear(color, kPaint) ? 'P' : isNear(color, testPictureColor(0)) ? 'C' : '?';
  }
  return text;
}

class VideoObserverTest : public CallTest {
 protected:
  void second(Receiver& receiver) {
    advance(100ms);  // past what a change sets off
    receiver.frames = 0;
    advance(1s);
  }
};

TEST_F(VideoObserverTest, WhatTheObserverReturnsIsWhatIsSent) {
  const auto anna = add("anna");
  const auto bob = add("bob");
  Receiver normal, tiny;
  anna->onVideo(normal.sink());
  bob->onVideo(tiny.sink(), true);
  join();
  publish(kVideo);
  const auto view = LMRTCIWView::create({0, 0, 480, 640});
  ASSERT_EQ(0, engine->setLocalView(view));
  const auto preview = std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView());

  const auto observer = std::make_shared<LMRTCIWSampleBufferVideoFrameDelegate>();
  CMSampleBufferRef seen;
  std::function<CMSampleBufferRef(const CMSampleBufferRef&)> answer;
  observer->onSampleBuffer = [&](const CMSampleBufferRef& buffer) {
    seen = buffer;
    return answer(buffer);
  };
  const auto wrap = [](const CVPixelBufferRef& pixels) {
    return std::make_shared<CMSampleBuffer>(CMSampleBuffer{pixels, 0});
  };
  const auto pixels = [wrap](const CVPixelBufferRef& image) {
    return [wrap, image](const auto&) { return wrap(image); };
  };
  struct Row {
    const char* what;
    std::function<CMSampleBufferRef(const CMSampleBufferRef&)> answer;
    std::string edges;  ///< empty: nothing is sent
  };
  const Row rows[] = {
      {"the same", [](const auto& buffer) { return buffer; }, "CC"},
      {"planar", pixels(painted(480, 640)), "PP"},
      {"BGRA", pixels(paintedBgra(480, 640)), "PP"},
      {"no pixels", pixels(nullptr), ""},
      {"another size", pixels(painted(482, 640)), ""},
  };
  ASSERT_EQ(0, engine->setLocalVideoProcessedDelegate(observer));
  for (const Row& row : rows) {
    answer = row.answer;
    const auto previewed = preview->frameCount();
    second(normal);
    EXPECT_EQ(row.edges.empty() ? 0 : 15, normal.frames) << row.what;
    EXPECT_LE(15u, preview->frameCount() - previewed) << row.what;
    EXPECT_EQ("CC", edges(preview->picture())) << row.what;
    if (row.edges.empty()) continue;
    EXPECT_EQ(row.edges, edges(normal.picture)) << row.what;
    EXPECT_EQ(row.edges, edges(tiny.picture)) << row.what;
    if (row.edges != "CC") continue;
    EXPECT_EQ(seen->imageBuffer->baseAddress(0), normal.picture->dataY()) << "a copy of " << row.what;
    EXPECT_EQ(preview->timestampMs(), seen->presentationTimeMs);
  }
}

TEST_F(VideoObserverTest, ReceivedPicturesAreSeenBeforeTheyAreRendered) {
  addPublishing("anna", Media::video);
  join();
  const auto view = LMRTCIWView::create();
  const auto rendered = [&] {
    return std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView())->picture();
  };
  CVPixelBufferRef pixels;
  int pictures = 0;
  const auto observer = std::make_shared<LMRTCIWPixelBufferVideoFrameDelegate>();
  observer->onPixelBuffer = [&](const CVPixelBufferRef& buffer) {
    pixels = buffer;
    ++pictures;
    EXPECT_FALSE(rendered() && rendered()->dataY() == buffer->baseAddress(0)) << "rendered already";
  };
  ASSERT_EQ(0, engine->setRemoteView(view, "anna"));
  ASSERT_EQ(0, engine->setRemoteVideoProcessedDelegate(observer, "anna"));
  const auto count = [&] {
    pictures = 0;
    advance(1s);
    return pictures;
  };
  EXPECT_EQ(0, count());
  engine->subscribe("anna", kVideo);
  advance(100ms);
  EXPECT_EQ(15, count());
  EXPECT_EQ(kCVPixelFormatType_420YpCbCr8Planar, pixels->pixelFormat());
  EXPECT_EQ(1u, readTestPicture(*pictureIn(pixels)).value_or(TestPictureReading{}).sourceNumber);
  EXPECT_EQ(rendered()->dataY(), pixels->baseAddress(0)) << "a copy";
  engine->muteRemoteStream("anna", kVideo, true);
  EXPECT_EQ(0, count());
  engine->muteRemoteStream("anna", kVideo, false);
  engine->setRemoteVideoProcessedDelegate(nullptr, "anna");
  EXPECT_EQ(0, count());
}

TEST_F(VideoObserverTest, TheCameraIsSwitchedTurnedAndPointed) {
  std::string told;
  delegate->onCameraEnabled = [&](bool enabled, std::int64_t, const auto&) {
    told += enabled ? "on " : "off ";
  };
  delegate->onCameraSwitched = [&](std::int64_t camera, std::int64_t, const auto&) {
    told += "camera " + std::to_string(camera) + " ";
  };
  const auto anna = add("anna");
  Receiver receiver;
  anna->onVideo(receiver.sink());
  join();
  publish(kVideo);
  const auto view = LMRTCIWView::create({0, 0, 64, 48});
  ASSERT_EQ(0, engine->setLocalView(view));
  const auto preview = std::dynamic_pointer_cast<LocalVideoView>(view->rtcVideoView());

  struct Row {
    const char* what;
    std::function<void()> act;
    std::string told;
    std::int64_t camera;
    int frames;
    std::uint32_t source;
  };
  const Row rows[] = {
      {"start", [] {}, "", 0, 15, 0},
      {"switch", [&] { engine->switchCamera(); }, "camera 1 ", 1, 15, LumoRTCLocal::kBackCameraSource},
      {"off", [&] { engine->enableCamera(false); }, "off ", 1, 0, LumoRTCLocal::kBackCameraSource},
      {"on", [&] { engine->enableCamera(true); }, "on ", 1, 15, LumoRTCLocal::kBackCameraSource},
      {"front", [&] { engine->enableCamera(true, 0); }, "on ", 0, 15, 0},
  };
  for (const Row& row : rows) {
    told.clear();
    row.act();
    const auto before = preview->frameCount();
    second(receiver);
    EXPECT_EQ(row.told, told) << row.what;
    EXPECT_EQ(row.camera, engine->whichCamera()) << row.what;
    EXPECT_EQ(row.frames, receiver.frames) << row.what;
    EXPECT_EQ(row.frames > 0, preview->frameCount() - before > 0) << row.what;
    EXPECT_EQ(row.source, receiver.source()) << row.what;
  }

  FramePool pool;
  const auto camera = LMRTCEngine::sharedInstance()->defaultVideoStream();
  std::vector<std::int32_t> rotations;
  for (const std::int64_t orientation : {1, 2, 3, 4, -1, 0}) {
    engine->setCameraCaptureOrientation(orientation);
    second(receiver);
    EXPECT_EQ(0u, receiver.source()) << "the pixels are not turned";
    rotations.push_back(receiver.rotation);
    camera->setIsEncoderMirror(true);
    second(receiver);
    const auto upright = mirrored(*rotated(receiver.picture, receiver.rotation, pool), pool);
    receiver.picture = rotated(upright, 360 - receiver.rotation, pool);
    EXPECT_EQ(0u, receiver.source()) << "mirrored as it looks upright, whichever way it is turned";
    camera->setIsEncoderMirror(false);
  }
  EXPECT_EQ((std::vector<std::int32_t>{90, 180, 270, 270, 270, 0}), rotations);

  EXPECT_TRUE(engine->isCameraFocusSupported() && engine->isCameraExposurePositionSupported());
  EXPECT_FALSE(local->cameraFocusPosition() || local->cameraExposurePosition());
  engine->setCameraFocusPositionInPreview({1, 2});
  engine->setCameraExposurePositionInPreview({3, 4});
  EXPECT_EQ((UIPoint{1, 2}), local->cameraFocusPosition());
  EXPECT_EQ((UIPoint{3, 4}), local->cameraExposurePosition());
}

}  // namespace
}  // namespace lumo::test
