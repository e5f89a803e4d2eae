#include <cmath>

#include "LumoRTCLibWrapper/platform/LumoRTCLib/LMRTCVideoFrame.h"
#include "LumoRTCLibWrapper/views/LMRTCIWFlutterView.h"
#include "LumoRTCLibWrapper/views/LMRTCIWUnityView.h"
#include "tests/end2end/CallTest.h"
#include "tests/support/MediaFixtures.h"

namespace lumo::test {
namespace {

class SurfaceTest : public CallTest {};

TEST_F(SurfaceTest, ATextureHearsOfSizesAndFrames) {
  auto view = LMRTCIWFlutterView::create();
  std::string told;
  const auto listener = std::make_shared<LMRTCIWFlutterViewDelegate>();
  listener->changeSize = [&](int width, int height) {
    told += std::to_string(width) + "x" + std::to_string(height) + " ";
  };
  listener->frameRendered = [&] { told += "frame "; };
  listener->firstFrameRendered = [&] { told += "first "; };
  view->setTextureViewDelegate(listener);
  const auto next = [&] {
    advance(100ms);
    told.clear();
    advance(66ms);
    const auto pixels = view->pixelBufferRef();
    return std::exchange(told, "") + std::to_string(pixels->width()) + "x" + std::to_string(pixels->height());
  };
  engine->setLocalViewWithViewDelegate(view);
  advance(0us);
  EXPECT_EQ("480x640 frame first ", told);
  EXPECT_EQ("frame 480x640", next());
  view->resize();
  EXPECT_EQ("480x640 frame first ", (advance(67ms), told));
  engine->setCameraCaptureOrientation(3);
  EXPECT_EQ("frame 640x480", next()) << "announced as before it is turned";

  view.reset();
  told.clear();
  advance(1s);
  EXPECT_EQ("", told);
}

TEST_F(SurfaceTest, AQueueKeepsTheOldestOrUpToALimitTheNewest) {
  const auto anna = addPublishing("anna", Media::video);
  join();
  auto view = LMRTCIWUnityView::create();
  engine->setRemoteViewWithViewDelegate(view, "anna");
  engine->subscribe("anna", kVideo);
  const auto take = [&] {
    std::vector<std::uint32_t> numbers;
    while (const auto frame = view->getCurrentFrame())
      numbers.push_back(readTestPicture(*frame->yuvBuffer).value_or(TestPictureReading{}).frameNumber);
    return numbers;
  };
  using Numbers = std::vector<std::uint32_t>;
  advance(2s);
  EXPECT_EQ(31u, view->getBufferLength());
  const auto all = take();
  for (std::uint32_t i = 0; i < all.size(); ++i) EXPECT_EQ(i, all[i]);
  view->setFrameLimit(3);
  advance(1s);
  EXPECT_EQ(12u, view->droppedFrames());
  EXPECT_EQ((Numbers{43, 44, 45}), take());
  EXPECT_EQ(nullptr, view->getCurrentFrame());
}

// ---- any picture, turned any way, against the plainest code there is

struct Holder : LumoRTCVideoFrameBuffer {
  explicit Holder(std::shared_ptr<const LumoRTCI420Buffer> held) : picture(std::move(held)) {}
  std::shared_ptr<const LumoRTCI420Buffer> toI420() override { return picture; }
  const std::shared_ptr<const LumoRTCI420Buffer> picture;
};

/// A picture of noise whose rows are `padding` bytes longer than they need to be.
std::shared_ptr<LumoRTCI420Buffer> noise(std::int32_t width, std::int32_t height, std::int32_t padding) {
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

/// One sample of a plane that is turned by itself; `x` and `y` are those of the turned plane.
int turned(const std::uint8_t* plane, int stride, int width, int height, int rotation, int x, int y) {
  switch (rotation) {
    case 90:
      return plane[(height - 1 - x) * stride + y];
    case 180:
      return plane[(height - 1 - y) * stride + width - 1 - x];
    case 270:
      return plane[x * stride + width - 1 - y];
    default:
      return plane[y * stride + x];
  }
}

/// The pixel of the upright picture by the formula of BT.601, limited range.
std::array<int, 4> reference(const LumoRTCI420Buffer& picture, int rotation, int x, int y) {
  const double luma =
      255.0 / 219 *
      (turned(picture.dataY(), picture.strideY(), picture.width(), picture.height(), rotation, x, y) - 16);
  const auto chroma = [&](const std::uint8_t* plane, int stride) {
    return 255.0 / 224 *
           (turned(plane, stride, picture.chromaWidth(), picture.chromaHeight(), rotation, x / 2, y / 2) -
            128);
  };
  const double u = chroma(picture.dataU(), picture.strideU());
  const double v = chroma(picture.dataV(), picture.strideV());
  const auto level = [](double value) {
    return static_cast<int>(std::lround(std::clamp(value, 0.0, 255.0)));
  };
  return {level(luma + 1.772 * u), level(luma - 0.344136 * u - 0.714136 * v), level(luma + 1.402 * v), 255};
}

TEST_F(SurfaceTest, AnySizeStrideAndRotationComesOutRight) {
  const std::pair<int, int> sizes[] = {{1, 1}, {33, 17}, {2, 131}, {161, 66}, {35, 1027}, {64, 48}};
  for (const auto& [width, height] : sizes) {
    for (const int rotation : {0, 90, 180, 270, 45}) {
      for (const int padding : {0, 13}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height << " " << rotation << " " << padding);
        const auto source = noise(width, height, padding);
        const LMRTCVideoFrame frame{std::make_shared<LumoRTCVideoFrame>(), width, height, rotation, 0};
        frame.rtcVideoFrame->buffer = std::make_shared<Holder>(source);
        const bool swaps = rotation == 90 || rotation == 270;
        const int upright[] = {swaps ? height : width, swaps ? width : height};
        const auto texture = LMRTCIWFlutterView::create();
        texture->setSize(upright[0], upright[1]);
        texture->renderFrame(frame);
        int worst = 0;
        for (int y = 0; y < upright[1]; ++y) {
          for (int x = 0; x < upright[0]; ++x) {
            const auto expected = reference(*source, rotation, x, y);
            const std::uint8_t* const pixel =
                texture->pixelBufferRef()->baseAddress() + (y * upright[0] + x) * 4;
            for (std::size_t i = 0; i < 4; ++i) worst = std::max(worst, std::abs(expected[i] - pixel[i]));
          }
        }
        EXPECT_LE(worst, 3);

        const auto queue = LMRTCIWUnityView::create();
        queue->renderFrame(frame);
        const auto queued = queue->getCurrentFrame();
        EXPECT_EQ(rotation, queued->rotation);
        EXPECT_EQ(width, queued->strideY());
        EXPECT_EQ((width + 1) / 2, queued->strideU());
        EXPECT_EQ(padding == 0, queued->dataY() == source->dataY()) << "copied only where it has to be";
        for (int i = 0; i < width * height; ++i) {
          ASSERT_EQ(colorAt(*source, i % width, i / width),
                    colorAt(*queued->yuvBuffer, i % width, i / width));
        }
      }
    }
  }
}

}  // namespace
}  // namespace lumo::test
