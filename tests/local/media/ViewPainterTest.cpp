#include <gtest/gtest.h>

#include <tuple>

#include "LumoRTCLocal/media/ViewPainter.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace lumo;

/// 80 x 40 pixels: tiles of 20 x 20, 1 2 3 4 above 5 6 7 8, each brighter than the one before.
std::shared_ptr<LumoRTCI420Buffer> tiles() {
  auto picture = test::solid(80, 40, {});
  for (int i = 0; i < 80 * 40; ++i)
    picture->mutableDataY()[i] = static_cast<std::uint8_t>(16 + 27 * (1 + i / 1600 * 4 + i % 80 / 20));
  return picture;
}

/// The tiles in the middle of each of 4 x 4 equal parts, 0 for the black around them.
std::string look(const Bitmap& bitmap) {
  std::string text;
  for (int i = 0; i < 16; ++i) {
    const int x = (i % 4 * 2 + 1) * bitmap.width / 8, y = (i / 4 * 2 + 1) * bitmap.height / 8;
    text += std::to_string((bitmap.bgra[static_cast<std::size_t>(4 * (y * bitmap.width + x))] + 15) / 31);
    if (i % 4 == 3) text += '/';
  }
  return text;
}

TEST(ViewPainterTest, FillsTurnsAndMirrors) {
  const std::tuple<int, int, int, int, bool, const char*> cases[] = {
      {80, 80, 0, 0, false, "1234/1234/5678/5678/"},   {80, 80, 0, 1, false, "2233/2233/6677/6677/"},
      {80, 80, 0, 2, false, "0000/1234/5678/0000/"},   {120, 40, 0, 2, false, "0230/0230/0670/0670/"},
      {80, 80, 180, 0, false, "8765/8765/4321/4321/"}, {80, 80, 90, 2, false, "0510/0620/0730/0840/"},
      {20, 40, 270, 2, true, "8844/7733/6622/5511/"},  {81, 79, 270, 1, false, "3377/3377/2266/2266/"},
  };
  for (const auto& [width, height, rotation, fillMode, mirror, expected] : cases) {
    Bitmap bitmap{width, height, {}};
    paint(*tiles(), rotation, fillMode, mirror, bitmap);
    EXPECT_EQ(expected, look(bitmap)) << width << "x" << height << " turned by " << rotation;
  }
}

}  // namespace
