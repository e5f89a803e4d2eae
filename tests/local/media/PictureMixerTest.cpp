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
  struct Case {
    const char* what;
    std::int32_t rotation;
    bool showWhole;
    PixelRect place;
    std::vector<std::pair<std::int32_t, std::int32_t>> points;
    const char* colors;  ///< at the points: red, green or the background
  };
  const Case cases[] = {
      {"cropped to the middle third, which is green",
       0,
       false,
       {20, 20, 40, 40},
       {{22, 40}, {58, 40}, {18, 40}, {60, 40}, {40, 18}},
       "gg..."},
      {"whole: between background above and below",
       0,
       true,
       {20, 20, 60, 60},
       {{22, 50}, {38, 50}, {42, 50}, {78, 50}, {50, 36}, {50, 62}},
       "rrgg.."},
      {"turned by 90 degrees, so that red is on top",
       90,
       true,
       {10, 4, 32, 96},
       {{12, 10}, {40, 30}, {12, 40}, {40, 98}, {44, 50}},
       "rrgg."},
      {"standing out on the left and below",
       0,
       true,
       {-48, 84, 96, 32},
       {{0, 86}, {46, 99}, {48, 90}, {10, 82}},
       "gg.."},
      {"outside", 0, true, {200, -90, 60, 60}, {{99, 0}, {99, 99}}, ".."},
  };
  for (const Case& test : cases) {
    const MixTile tile{wide.get(), test.rotation, test.place};
    const auto mixed = mixer.mix({&tile, 1}, {100, 100, kBackground, test.showWhole});
    std::string colors;
    for (const auto& [x, y] : test.points) {
      const YuvColor color = colorAt(*mixed, x, y);
      colors += color == kRed ? 'r' : color == kGreen ? 'g' : color == kBackground ? '.' : '?';
    }
    EXPECT_EQ(test.colors, colors) << test.what;
  }
}

TEST(MixLayoutTest, PlacesCoverGridAndCornerWithoutOverlap) {
  std::vector<PixelRect> places;
  placeInGrid(3, 100, 60, places);
  EXPECT_EQ((std::vector<PixelRect>{{0, 0, 50, 30}, {50, 0, 50, 30}, {24, 30, 50, 30}}), places);
  placeInGrid(2, 60, 100, places);
  EXPECT_EQ((std::vector<PixelRect>{{0, 0, 60, 50}, {0, 50, 60, 50}}), places);
  placeSuspended(6, 480, 640, places);
  EXPECT_EQ((PixelRect{0, 0, 480, 640}), places[0]);
  EXPECT_EQ((PixelRect{364, 484, 106, 146}), places[1]);
  EXPECT_EQ((PixelRect{364, 484 - 3 * 156, 106, 146}), places[4]);
  EXPECT_EQ((PixelRect{248, 484, 106, 146}), places[5]);
}

}  // namespace
}  // namespace lumo
