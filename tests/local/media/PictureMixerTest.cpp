#include <gtest/gtest.h>

#include "LumoRTCLocal/media/MixLayout.h"
#include "LumoRTCLocal/media/PictureMixer.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using test::colorAt;
using test::solid;

constexpr YuvColor kBackground{50, 60, 70};
constexpr YuvColor kRed{82, 90, 240};
constexpr YuvColor kGreen{145, 54, 34};

/// Red on the left third, green on the rest.
std::shared_ptr<LumoRTCI420Buffer> twoColors(std::int32_t width, std::int32_t height) {
  auto picture = solid(width, height, kGreen);
  drawScaled(viewOf(*solid(2, 2, kRed)), *picture, {0, 0, width / 3, height});
  return picture;
}

TEST(PictureMixerTest, PlacesCropsFitsTurnsAndCutsOff) {
  PictureMixer mixer;
  const auto wide = twoColors(96, 32);
  struct Point {
    std::int32_t x, y;
    YuvColor color;
  };
  struct Case {
    const char* what;
    std::int32_t rotation;
    bool showWhole;
    PixelRect place;
    std::vector<Point> points;
  };
  const Case cases[] = {
      {"cropped to the middle third, which is green",
       0,
       false,
       {20, 20, 40, 40},
       {{22, 40, kGreen},
        {58, 40, kGreen},
        {18, 40, kBackground},
        {60, 40, kBackground},
        {40, 18, kBackground}}},
      {"whole: between background above and below",
       0,
       true,
       {20, 20, 60, 60},
       {{22, 50, kRed},
        {38, 50, kRed},
        {42, 50, kGreen},
        {78, 50, kGreen},
        {50, 36, kBackground},
        {50, 62, kBackground}}},
      {"turned by 90 degrees, so that red is on top",
       90,
       true,
       {10, 4, 32, 96},
       {{12, 10, kRed}, {40, 30, kRed}, {12, 40, kGreen}, {40, 98, kGreen}, {44, 50, kBackground}}},
      {"standing out on the left and below",
       0,
       true,
       {-48, 84, 96, 32},
       {{0, 86, kGreen}, {46, 99, kGreen}, {48, 90, kBackground}, {10, 82, kBackground}}},
      {"outside", 0, true, {200, -90, 60, 60}, {{99, 0, kBackground}, {99, 99, kBackground}}},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    const MixTile tile{wide.get(), test.rotation, test.place};
    const auto mixed = mixer.mix({&tile, 1}, {100, 100, kBackground, test.showWhole});
    for (const Point& point : test.points)
      EXPECT_EQ(point.color, colorAt(*mixed, point.x, point.y)) << point.x << "," << point.y;
  }
}

TEST(MixLayoutTest, PlacesCoverGridAndCornerWithoutOverlap) {
  std::vector<PixelRect> places;
  placeInGrid(3, 100, 60, places);
  EXPECT_EQ((std::vector<PixelRect>{{0, 0, 50, 30}, {50, 0, 50, 30}, {24, 30, 50, 30}}), places);
  placeInGrid(2, 60, 100, places);
  EXPECT_EQ((std::vector<PixelRect>{{0, 0, 60, 50}, {0, 50, 60, 50}}), places);
  for (const std::size_t count : {1u, 4u, 9u, 16u}) {
    placeInGrid(count, 1280, 720, places);
    std::int64_t area = 0;
    for (const PixelRect& place : places) area += std::int64_t{place.width} * place.height;
    EXPECT_EQ(1280 * 720, area) << count;
  }
  placeSuspended(6, 480, 640, places);
  EXPECT_EQ((PixelRect{0, 0, 480, 640}), places[0]);
  EXPECT_EQ((PixelRect{364, 484, 106, 146}), places[1]);
  EXPECT_EQ((PixelRect{364, 484 - 3 * 156, 106, 146}), places[4]);
  EXPECT_EQ((PixelRect{248, 484, 106, 146}), places[5]);
}

TEST(YuvColorTest, ConvertsAsTelevisionDoes) {
  EXPECT_EQ((YuvColor{16, 128, 128}), yuvOf(0, 0, 0));
  EXPECT_EQ((YuvColor{235, 128, 128}), yuvOf(255, 255, 255));
  EXPECT_EQ((YuvColor{81, 90, 240}), yuvOf(255, 0, 0));
  EXPECT_EQ((YuvColor{41, 240, 110}), yuvOf(0, 0, 255));
}

}  // namespace
}  // namespace lumo
