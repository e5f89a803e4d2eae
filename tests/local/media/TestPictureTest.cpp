#include <gtest/gtest.h>

#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/TestPicture.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

TEST(TestPictureTest, CanBeReadInEverySizeAndAfterScaling) {
  FramePool pool;
  for (const auto& [width, height] : {std::pair{480, 640}, {144, 176}, {1280, 720}, {333, 251}, {64, 64}}) {
    for (const std::uint32_t number : {0U, 1234U, 0xFFFFFFFFU}) {
      TestPictureSource source(number);
      const auto picture = source.frameAt(100s, {width, height, 15});
      for (const auto& [newWidth, newHeight] :
           {std::pair{width, height}, {144, 176}, {90, 160}, {1920, 1080}, {51, 47}}) {
        EXPECT_EQ((TestPictureReading{number, 1500}),
                  readTestPicture(*scaled(picture, newWidth, newHeight, pool)))
            << width << "x" << height << " to " << newWidth << "x" << newHeight;
      }
    }
  }
}

TEST(TestPictureTest, DrawsInTheSmallestSizes) {
  TestPictureSource source(0xFFFFFFFF);
  for (std::int32_t size = 0; size < 24 * 24; ++size) {
    const auto picture = source.frameAt(9999s, {size % 24 + 1, size / 24 + 1, 60});
    const YuvColor corner = test::colorAt(*picture, size % 24, size / 24);
    EXPECT_EQ(+testPictureColor(0xFFFFFFFF).y, +corner.y) << picture->width() << "x" << picture->height();
  }
}

}  // namespace
}  // namespace lumo
