#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>

#include "LumoRTCLocal/media/ViewPainter.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

struct Tile {
  char name;
  YuvColor yuv;
  std::array<int, 3> bgr;
};
constexpr Tile kTiles[] = {
    {'R', {82, 90, 240}, {0, 0, 255}},     {'G', {145, 54, 34}, {0, 255, 0}},
    {'B', {41, 240, 110}, {255, 0, 0}},    {'W', {235, 128, 128}, {255, 255, 255}},
    {'Y', {210, 16, 146}, {0, 255, 255}},  {'C', {170, 166, 16}, {255, 255, 0}},
    {'M', {107, 202, 222}, {255, 0, 255}}, {'S', {126, 128, 128}, {128, 128, 128}},
    {'.', {16, 128, 128}, {0, 0, 0}},
};

/// 80 x 40 pixels: R G B W above Y C M S, each 20 x 20.
std::shared_ptr<LumoRTCI420Buffer> tiles() {
  auto picture = test::solid(80, 40, {});
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 80; ++x) {
      const YuvColor& color = kTiles[y / 20 * 4 + x / 20].yuv;
      picture->mutableDataY()[y * 80 + x] = color.y;
      picture->mutableDataU()[y / 2 * 40 + x / 2] = color.u;
      picture->mutableDataV()[y / 2 * 40 + x / 2] = color.v;
    }
  }
  return picture;
}

char nameAt(const Bitmap& bitmap, int x, int y) {
  const std::uint8_t* const pixel =
      bitmap.bgra.data() + static_cast<std::ptrdiff_t>(y * bitmap.width + x) * 4;
  if (pixel[3] != 255) return '?';
  for (const Tile& tile : kTiles) {
    const auto isNear = [&](std::size_t i) { return std::abs(pixel[i] - tile.bgr[i]) <= 2; };
    if (isNear(0) && isNear(1) && isNear(2)) return tile.name;
  }
  return '?';
}

/// What stands in the middle of each of 4 x 4 equal parts.
std::string look(const Bitmap& bitmap) {
  std::string text;
  for (int row = 0; row < 4; ++row) {
    if (row > 0) text += '/';
    for (int column = 0; column < 4; ++column) {
      text += nameAt(bitmap, (2 * column + 1) * bitmap.width / 8, (2 * row + 1) * bitmap.height / 8);
    }
  }
  return text;
}

TEST(ViewPainterTest, FillsTurnsAndMirrors) {
  struct Case {
    int width, height, rotation;
    std::int64_t fillMode;
    bool mirror;
    const char* look;
  };
  const Case cases[] = {
      {80, 80, 0, 0, false, "RGBW/RGBW/YCMS/YCMS"},   {80, 80, 0, 1, false, "GGBB/GGBB/CCMM/CCMM"},
      {80, 80, 0, 2, false, "..../RGBW/YCMS/...."},   {120, 40, 0, 2, false, ".GB./.GB./.CM./.CM."},
      {40, 20, 0, 0, true, "WBGR/WBGR/SMCY/SMCY"},    {80, 80, 90, 0, false, "YYRR/CCGG/MMBB/SSWW"},
      {80, 80, 180, 0, false, "SMCY/SMCY/WBGR/WBGR"}, {80, 80, 270, 0, false, "WWSS/BBMM/GGCC/RRYY"},
      {80, 80, 90, 2, false, ".YR./.CG./.MB./.SW."},  {20, 40, 270, 2, true, "SSWW/MMBB/CCGG/YYRR"},
      {81, 79, 270, 1, false, "BBMM/BBMM/GGCC/GGCC"},
  };
  Bitmap bitmap;
  for (const Case& c : cases) {
    bitmap.width = c.width;
    bitmap.height = c.height;
    paint(*tiles(), c.rotation, c.fillMode, c.mirror, bitmap);
    EXPECT_EQ(c.look, look(bitmap)) << c.width << "x" << c.height << " rotation " << c.rotation << " mode "
                                    << c.fillMode << (c.mirror ? " mirrored" : "");
  }
}

}  // namespace
}  // namespace lumo
