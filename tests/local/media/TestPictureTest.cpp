#include <gtest/gtest.h>

#include <set>

#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using test::colorAt;

struct Size {
  std::int32_t width;
  std::int32_t height;
};

TEST(TestPictureTest, CanBeReadInEverySizeAndAfterScaling) {
  FramePool pool;
  for (const Size drawn : {Size{480, 640}, {144, 176}, {1280, 720}, {333, 251}, {64, 64}}) {
    for (const std::uint32_t number : {0U, 1234U, 0xFFFFFFFFU}) {
      TestPictureSource source(number);
      const auto picture = source.frameAt(100s, {drawn.width, drawn.height, 15});
      for (const Size size : {drawn, Size{144, 176}, {90, 160}, {1920, 1080}, {51, 47}}) {
        EXPECT_EQ((TestPictureReading{number, 1500}),
                  readTestPicture(*scaled(picture, size.width, size.height, pool)))
            << drawn.width << "x" << drawn.height << " to " << size.width << "x" << size.height;
      }
    }
  }
}

TEST(TestPictureTest, IsNotReadWhenMirroredOrTurned) {
  FramePool pool;
  for (std::uint32_t number = 0; number < 50; ++number) {
    TestPictureSource source(number);
    const auto picture = source.frameAt(std::chrono::seconds(number), {480, 640, 15});
    EXPECT_EQ(std::nullopt, readTestPicture(*mirrored(*picture, pool)));
    for (const int degrees : {90, 180, 270})
      EXPECT_EQ(std::nullopt, readTestPicture(*rotated(picture, degrees, pool)));
  }
}

TEST(TestPictureTest, DetectsEveryWrongBit) {
  TestPictureSource source(5);
  for (int row = 14; row < 19; ++row) {
    for (int column = 1; column < 19; ++column) {
      auto picture = std::const_pointer_cast<LumoRTCI420Buffer>(source.frameAt(1s, {200, 200, 15}));
      for (int y = row * 10; y < row * 10 + 10; ++y) {
        std::uint8_t* const cell = picture->mutableDataY() + y * picture->strideY() + column * 10;
        for (int x = 0; x < 10; ++x) cell[x] = static_cast<std::uint8_t>(251 - cell[x]);
      }
      EXPECT_EQ(std::nullopt, readTestPicture(*picture)) << "column " << column << ", row " << row;
    }
  }
}

TEST(TestPictureTest, NumbersFramesByTheNearestCaptureTime) {
  TestPictureSource source(1);
  for (const std::int32_t rate : {1, 7, 15, 24, 30, 60}) {
    for (std::uint32_t frame = 0; frame < 100; ++frame) {
      const Microseconds time(std::int64_t{frame} * 1'000'000 /
                              rate);  // rounded down, as a capture clock does
      EXPECT_EQ(frame, readTestPicture(*source.frameAt(time, {100, 100, rate}))->frameNumber) << rate;
    }
  }
}

TEST(TestPictureTest, ShowsItsColourAtTheRimAndMoves) {
  std::set<std::tuple<int, int, int>> colors;
  for (std::uint32_t number = 0; number < 12; ++number) {
    const auto picture = TestPictureSource(number).frameAt(500ms, {160, 120, 15});
    const YuvColor color = testPictureColor(number);
    colors.insert({color.y, color.u, color.v});
    for (const auto& [x, y] : {std::pair{0, 0}, {159, 119}, {5, 60}, {80, 4}, {154, 60}})
      EXPECT_EQ(color, colorAt(*picture, x, y)) << "source " << number << " at " << x << "," << y;
  }
  EXPECT_EQ(12u, colors.size());
  TestPictureSource source(2);
  for (const auto& [time, left] : {std::pair{0us, 8}, {66'667us, 10}, {1'000'000us, 38}}) {
    const auto picture = source.frameAt(time, {160, 120, 15});
    int x = 0;
    while (x < 160 && colorAt(*picture, x, 72).y != 235) ++x;
    EXPECT_EQ(left, x) << "the block's left edge";
  }
}

TEST(TestPictureTest, DrawsInTheSmallestSizes) {
  TestPictureSource source(0xFFFFFFFF);
  for (std::int32_t size = 0; size < 24 * 24; ++size) {
    const auto picture = source.frameAt(9999s, {size % 24 + 1, size / 24 + 1, 60});
    const YuvColor corner = colorAt(*picture, size % 24, size / 24);
    EXPECT_EQ(+testPictureColor(0xFFFFFFFF).y, +corner.y) << picture->width() << "x" << picture->height();
  }
}

}  // namespace
}  // namespace lumo
