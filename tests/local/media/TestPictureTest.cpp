#include <gtest/gtest.h>

#include "LumoRTCLocal/media/Picture.h"
#include "LumoRTCLocal/media/TestPicture.h"

namespace {

using namespace lumo;
using Sizes = std::vector<std::pair<std::int32_t, std::int32_t>>;

TEST(TestPictureTest, CanBeReadInEverySizeAndAfterScaling) {
  FramePool pool;
  for (const auto& [width, height] : Sizes{{480, 640}, {144, 176}, {1280, 720}, {333, 251}, {64, 64}}) {
    for (const std::uint32_t number : {0U, 1234U, 0xFFFFFFFFU}) {
      const auto picture = TestPictureSource(number).frameAt(std::chrono::seconds(100), {width, height, 15});
      for (const auto& [newWidth, newHeight] : Sizes{{width, height}, {144, 176}, {1920, 1080}, {51, 47}}) {
        EXPECT_EQ((TestPictureReading{number, 1500}),
                  readTestPicture(*scaled(picture, newWidth, newHeight, pool)))
            << width << "x" << height << " to " << newWidth << "x" << newHeight;
      }
    }
  }
}

}  // namespace
