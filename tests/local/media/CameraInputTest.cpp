#include <gtest/gtest.h>

#include "LumoRTCLocal/media/CameraInput.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using test::colorAt;

TEST(CameraInputTest, ShowsTheFileAtItsOwnSpeedAndRepeatsIt) {
  const test::TempFolder folder;
  const auto camera =
      openCamera(writeClip(folder, "clip.mkv", {})).source;  // 64 x 48, ten pictures in a second
  ASSERT_TRUE(camera);
  constexpr VideoFormat kFormat{64, 96, 15};
  const auto expectPicture = [&](Microseconds time, int number) {
    const auto picture = camera->frameAt(time, kFormat);
    ASSERT_EQ(std::pair(64, 96), std::pair(picture->width(), picture->height()));
    EXPECT_EQ(test::clipColor(number), colorAt(*picture, 32, 48)) << time.count();
    EXPECT_EQ((YuvColor{16, 128, 128}), colorAt(*picture, 32, 20)) << "the bar above";
    EXPECT_EQ((YuvColor{16, 128, 128}), colorAt(*picture, 32, 75)) << "the bar below";
  };
  for (int tick = 0; tick < 45; ++tick) {  // fifteen a second, three times round
    const Microseconds time(tick * 1'000'000 / 15 + 1);
    expectPicture(time, static_cast<int>(time / 100ms % 10));
  }
  expectPicture(60s + 450ms, 4);  // after a pause
  expectPicture(0s, 0);           // a new capture
  EXPECT_EQ(camera->frameAt(110ms, kFormat), camera->frameAt(190ms, kFormat)) << "nothing is scaled twice";
  EXPECT_EQ(30, camera->frameAt(190ms, {20, 30, 15})->height());
}

}  // namespace
}  // namespace lumo
