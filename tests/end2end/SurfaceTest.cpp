#include <algorithm>
#include <cmath>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "tests/end2end/CallTest.h"

namespace lumo::test {
namespace {

class SurfaceTest : public CallTest {};

TEST_F(SurfaceTest, ATextureHearsOfSizesAndFrames) {
  const auto view = LMRTCIWFlutterView::create();
  const auto listener = std::make_shared<LMRTCIWFlutterViewDelegate>();
  listener->changeSize = recorded("size");
  listener->frameRendered = recorded("frame");
  listener->firstFrameRendered = recorded("first");
  view->setTextureViewDelegate(listener);
  engine->setLocalViewWithViewDelegate(view);
  EXPECT_EQ((Lines{"size 480 640", "frame", "first"}), told());
  engine->setCameraCaptureOrientation(3);
  advance(67ms);
  EXPECT_EQ((Lines{"frame"}), told()) << "announced as before it is turned";
  EXPECT_EQ(640u, view->pixelBufferRef()->width());
  view->resize();
  advance(67ms);
  EXPECT_EQ((Lines{"size 480 640", "frame", "first"}), told());
}

TEST_F(SurfaceTest, AQueueKeepsTheOldestOrUpToALimitTheNewest) {
  const auto anna = addPublishing("anna", Media::video);
  join();
  const auto view = LMRTCIWUnityView::create();
  engine->setRemoteViewWithViewDelegate(view, "anna");
  engine->subscribe("anna", kVideo);
  const auto take = [&] {
    std::vector<std::uint32_t> numbers;
    while (const auto frame = view->getCurrentFrame())
      numbers.push_back(readingOf(frame->yuvBuffer).frameNumber);
    return numbers;
  };
  advance(300ms);
  EXPECT_EQ((std::vector<std::uint32_t>{0, 1, 2, 3, 4}), take());
  view->setFrameLimit(3);
  advance(1s);
  EXPECT_EQ(12u, view->droppedFrames());
  EXPECT_EQ((std::vector<std::uint32_t>{17, 18, 19}), take());
}

// ---- any picture, turned any way, against the plainest code there is

struct Holder : LumoRTCVideoFrameBuffer {
  explicit Holder(Picture held) : picture(std::move(held)) {}
  Picture toI420() override { return picture; }
  const Picture picture;
};

/// A picture of noise whose rows are `padding` bytes longer than they need to be.
Picture noise(std::int32_t width, std::int32_t height, std::int32_t padding) {
  const std::int32_t strides[] = {width + padding, (width + 1) / 2 + padding};
  const std::int32_t sizes[] = {strides[0] * height, strides[1] * ((height + 1) / 2)};
  const auto memory =
      std::make_shared<std::vector<std::uint8_t>>(static_cast<std::size_t>(sizes[0] + 2 * sizes[1]));
  std::uint32_t state = 1;
  for (auto& byte : *memory) byte = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  std::uint8_t* const u = memory->data() + sizes[0];
  return LumoRTCI420Buffer::wrap(width, height, memory->data(), strides[0], u, strides[1], u + sizes[1],
                                 strides[1], memory);
}

/// The pixel of the upright picture, blue first, by the formula of BT.601 in the limited range.
std::array<int, 4> reference(const LumoRTCI420Buffer& picture, int rotation, int x, int y) {
  const auto sample = [&](const std::uint8_t* plane, int stride, int width, int height, int left, int top) {
    if (rotation == 90) return plane[(height - 1 - left) * stride + top];
    if (rotation == 180) return plane[(height - 1 - top) * stride + width - 1 - left];
    if (rotation == 270) return plane[left * stride + width - 1 - top];
    return plane[top * stride + left];
  };
  const auto chroma = [&](const std::uint8_t* plane, int stride) {
    return (sample(plane, stride, picture.chromaWidth(), picture.chromaHeight(), x / 2, y / 2) - 128) / 224.0;
  };
  const double luma =
      (sample(picture.dataY(), picture.strideY(), picture.width(), picture.height(), x, y) - 16) / 219.0;
  const double u = chroma(picture.dataU(), picture.strideU());
  const double v = chroma(picture.dataV(), picture.strideV());
  const auto level = [](double value) {
    return static_cast<int>(std::lround(255 * std::clamp(value, 0.0, 1.0)));
  };
  return {level(luma + 1.772 * u), level(luma - 0.344136 * u - 0.714136 * v), level(luma + 1.402 * v), 255};
}

/// The largest difference of one byte of a texture and the reference.
int worstByte(const LMRTCIWFlutterView& texture, const LumoRTCI420Buffer& source, int rotation) {
  const auto pixels = texture.pixelBufferRef();
  int worst = 0;
  for (std::size_t i = 0; i < pixels->width() * pixels->height(); ++i) {
    const auto expected = reference(source, rotation, static_cast<int>(i % pixels->width()),
                                    static_cast<int>(i / pixels->width()));
    for (std::size_t byte = 0; byte < 4; ++byte)
      worst = std::max(worst, std::abs(expected[byte] - pixels->baseAddress()[4 * i + byte]));
  }
  return worst;
}

TEST_F(SurfaceTest, AnySizeStrideAndRotationComesOutRight) {
  const std::pair<int, int> sizes[] = {{1, 1}, {33, 17}, {2, 131}, {161, 66}, {35, 1027}, {64, 48}};
  for (const auto& [width, height] : sizes) {
    for (const auto& [rotation, padding] :
         {std::pair(0, 0), {0, 13}, {90, 0}, {90, 13}, {180, 13}, {270, 0}, {270, 13}, {45, 0}}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height << " " << rotation << " " << padding);
      const auto source = noise(width, height, padding);
      const LMRTCVideoFrame frame{std::make_shared<LumoRTCVideoFrame>(), width, height, rotation, 0};
      frame.rtcVideoFrame->buffer = std::make_shared<Holder>(source);
      const bool swaps = rotation == 90 || rotation == 270;
      const auto texture = LMRTCIWFlutterView::create();
      texture->setSize(swaps ? height : width, swaps ? width : height);
      texture->renderFrame(frame);
      EXPECT_LE(worstByte(*texture, *source, rotation), 3);

      const auto queue = LMRTCIWUnityView::create();
      queue->renderFrame(frame);
      const auto queued = queue->getCurrentFrame();
      EXPECT_EQ(rotation, queued->rotation);
      EXPECT_EQ(std::pair(width, (width + 1) / 2), std::pair(queued->strideY(), queued->strideU()));
      EXPECT_EQ(padding == 0, queued->dataY() == source->dataY()) << "copied only where it has to be";
      for (int i = 0; i < width * height; ++i)
        ASSERT_EQ(colorAt(*source, i % width, i / width), colorAt(*queued->yuvBuffer, i % width, i / width));
    }
  }
}

TEST_F(SurfaceTest, UnityGetsSmallPicturesFilledUpAndTurnedWhenItAsks) {
  const auto queue = LMRTCIWUnityView::create();
  const LMRTCVideoFrame frame{std::make_shared<LumoRTCVideoFrame>(), 10, 8, 0, 0};
  frame.rtcVideoFrame->buffer = std::make_shared<Holder>(noise(4, 4, 0));
  queue->renderFrame(frame);
  const auto turned = queue->correctRotation(*queue->getCurrentFrame()->yuvBuffer, 90);
  EXPECT_EQ(std::pair(8, 10), std::pair(turned->width, turned->height));
  EXPECT_EQ((YuvColor{16, 128, 128}), colorAt(*turned->yuvBuffer, 0, 9)) << "black beyond its picture";
}

}  // namespace
}  // namespace lumo::test
