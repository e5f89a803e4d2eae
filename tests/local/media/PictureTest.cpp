#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

#include "LumoRTCLocal/media/Picture.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using test::colorAt;
using test::solid;

constexpr YuvColor kBlack{16, 128, 128};
constexpr YuvColor kOrange{124, 60, 188};

/// Up to a unit, which the scaler's fixed-point averages may lose.
bool isAlmost(const YuvColor& color, const YuvColor& expected) {
  const auto isNear = [](int a, int b) { return std::abs(a - b) <= 1; };
  return isNear(color.y, expected.y) && isNear(color.u, expected.u) && isNear(color.v, expected.v);
}

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

struct Plane {
  const std::uint8_t* data;
  int stride, width, height;
};

std::array<Plane, 3> planesOf(const LumoRTCI420Buffer& p) {
  return {{{p.dataY(), p.strideY(), p.width(), p.height()},
           {p.dataU(), p.strideU(), p.chromaWidth(), p.chromaHeight()},
           {p.dataV(), p.strideV(), p.chromaWidth(), p.chromaHeight()}}};
}

void expectMoved(const LumoRTCI420Buffer& fromPicture, const LumoRTCI420Buffer& toPicture,
                 const Origin& origin) {
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const Plane from = planesOf(fromPicture)[plane];
    const Plane to = planesOf(toPicture)[plane];
    for (int i = 0; i < to.width * to.height; ++i) {
      const auto [x, y] = origin(i % to.width, i / to.width, from.width, from.height);
      ASSERT_EQ(from.data[y * from.stride + x], to.data[i / to.width * to.stride + i % to.width])
          << plane << " " << i;
    }
  }
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

TEST(PictureTest, ScalingAveragesAndKeepsColours) {
  FramePool pool;
  const std::shared_ptr<LumoRTCI420Buffer> stripes = solid(64, 64, kOrange);
  for (int i = 0; i < 64 * 64; ++i) stripes->mutableDataY()[i] = i % 2 ? 200 : 100;
  EXPECT_EQ(stripes, scaled(stripes, 64, 64, pool)) << "no copy where there is nothing to do";
  for (const int size : {32, 16}) {
    const auto smaller = scaled(stripes, size, size, pool);
    for (int i = 0; i < size; ++i)
      EXPECT_EQ((YuvColor{150, kOrange.u, kOrange.v}), colorAt(*smaller, i, size - 1 - i));
  }
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 7}, {13, 11}, {480, 640}}) {
    const auto picture = scaled(solid(37, 21, kOrange), width, height, pool);
    EXPECT_PRED2(isAlmost, colorAt(*picture, width - 1, height - 1), kOrange) << width << "x" << height;
  }
}

TEST(PictureTest, FitsPicturesBetweenBlackBars) {
  struct Case {
    int width, height, outerWidth, outerHeight;
    PixelRect inner;
  };
  const Case cases[] = {
      {90, 160, 640, 480, {184, 0, 270, 480}},
      {40, 40, 9, 5, {2, 0, 5, 5}},
      {4, 2, 7, 7, {0, 0, 7, 4}},
      {1, 1000, 50, 50, {24, 0, 1, 50}},
  };
  FramePool pool;
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
    PixelRect inner = aspectFit(c.width, c.height, c.outerWidth, c.outerHeight);
    inner.y = inner.y & ~1;
    EXPECT_EQ(c.inner, inner);
    pool.take(c.outerWidth, c.outerHeight)->mutableDataY()[0] = 99;  // what comes next is not black
    const auto picture = letterboxed(solid(c.width, c.height, kOrange), c.outerWidth, c.outerHeight, pool);
    for (int y = 0; y < c.outerHeight; ++y) {
      for (int x = 0; x < c.outerWidth; ++x) {
        const int outside = std::max(
            {inner.x - x, x - inner.x - inner.width + 1, inner.y - y, y - inner.y - inner.height + 1});
        const YuvColor color = colorAt(*picture, x, y);
        if (outside > 1) {
          ASSERT_EQ(kBlack, color) << x << "," << y;
        } else if (outside == 1) {  // at an odd edge a chroma sample lies on both sides
          ASSERT_EQ(kBlack.y, color.y) << x << "," << y;
        } else {
          ASSERT_PRED2(isAlmost, color, kOrange) << x << "," << y;
        }
      }
    }
  }
}

}  // namespace
}  // namespace lumo
