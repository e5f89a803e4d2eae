#include <gtest/gtest.h>

#include <functional>

#include "LumoRTCLocal/media/Picture.h"

namespace lumo {
namespace {

/// A picture with padded rows in which no two samples of a plane are alike.
std::shared_ptr<LumoRTCI420Buffer> patterned(std::int32_t width, std::int32_t height) {
  const std::int32_t chromaHeight = (height + 1) / 2;
  const std::int32_t strideY = width + 3;
  const std::int32_t strideU = (width + 1) / 2 + 5;
  const std::int32_t strideV = (width + 1) / 2 + 7;
  const auto memory = std::make_shared<std::vector<std::uint8_t>>(
      static_cast<std::size_t>(strideY * height + (strideU + strideV) * chromaHeight));
  std::uint8_t value = 0;
  for (auto& sample : *memory) sample = value++;
  std::uint8_t* const y = memory->data();
  std::uint8_t* const u = y + strideY * height;
  return LumoRTCI420Buffer::wrap(width, height, y, strideY, u, strideU, u + strideU * chromaHeight, strideV,
                                 memory);
}

/// Where a sample of the result comes from, in a plane of the original of `width` x `height`.
using Origin = std::function<std::pair<int, int>(int x, int y, int width, int height)>;

void expectMoved(const LumoRTCI420Buffer& from, const LumoRTCI420Buffer& to, const Origin& origin) {
  const auto expectPlane = [&](const std::uint8_t* source, int sourceStride, int sourceWidth,
                               int sourceHeight, const std::uint8_t* sample, int stride, int width,
                               int height) {
    for (int i = 0; i < width * height; ++i) {
      const auto [x, y] = origin(i % width, i / width, sourceWidth, sourceHeight);
      ASSERT_EQ(source[y * sourceStride + x], sample[i / width * stride + i % width]) << i;
    }
  };
  expectPlane(from.dataY(), from.strideY(), from.width(), from.height(), to.dataY(), to.strideY(), to.width(),
              to.height());
  expectPlane(from.dataU(), from.strideU(), from.chromaWidth(), from.chromaHeight(), to.dataU(), to.strideU(),
              to.chromaWidth(), to.chromaHeight());
  expectPlane(from.dataV(), from.strideV(), from.chromaWidth(), from.chromaHeight(), to.dataV(), to.strideV(),
              to.chromaWidth(), to.chromaHeight());
}

TEST(PictureTest, MirrorsAndTurnsEverySampleInEverySize) {
  FramePool pool;
  for (const int width : {1, 2, 5, 16, 33, 100}) {
    for (const int height : {1, 2, 3, 17, 64}) {
      SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
      const auto picture = patterned(width, height);
      expectMoved(*picture, *mirrored(*picture, pool),
                  [](int x, int y, int w, int) { return std::pair(w - 1 - x, y); });
      const auto quarter = rotated(picture, 90, pool);
      ASSERT_EQ(std::pair(height, width), std::pair(quarter->width(), quarter->height()));
      expectMoved(*picture, *quarter, [](int x, int y, int, int h) { return std::pair(y, h - 1 - x); });
      expectMoved(*picture, *rotated(picture, 180, pool),
                  [](int x, int y, int w, int h) { return std::pair(w - 1 - x, h - 1 - y); });
      expectMoved(*picture, *rotated(picture, 270, pool),
                  [](int x, int y, int w, int) { return std::pair(w - 1 - y, x); });
    }
  }
}

TEST(PictureTest, FitsPicturesOfAnyShape) {
  EXPECT_EQ((PixelRect{184, 0, 270, 480}), aspectFit(90, 160, 640, 480));
  EXPECT_EQ((PixelRect{2, 0, 5, 5}), aspectFit(40, 40, 9, 5));
  EXPECT_EQ((PixelRect{24, 0, 1, 50}), aspectFit(1, 1000, 50, 50));
}

}  // namespace
}  // namespace lumo
