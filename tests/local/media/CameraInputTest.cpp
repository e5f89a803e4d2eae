#include <gtest/gtest.h>

#include "LumoRTCLocal/media/CameraInput.h"
#include "tests/support/MediaFixtures.h"

namespace {

using namespace lumo;
using namespace std::chrono_literals;

TEST(CameraInputTest, ShowsTheFileAtItsOwnSpeedAndRepeatsIt) {
  const test::TempFolder folder;
  const auto camera = openCamera(writeClip(folder, "clip.mkv", {})).source;  // ten pictures in a second
  ASSERT_TRUE(camera);
  constexpr VideoFormat kFormat{64, 96, 15};
  const auto expectPicture = [&](Microseconds time, int number) {
    const auto picture = camera->frameAt(time, kFormat);
    ASSERT_EQ(std::pair(64, 96), std::pair(picture->width(), picture->height()));
    EXPECT_NEAR(test::clipColor(number).y, test::colorAt(*picture, 32, 48).y, 2) << time.count();
    EXPECT_EQ(16, test::colorAt(*picture, 32, 20).y) << "the bar above";
    EXPECT_EQ(16, test::colorAt(*picture, 32, 75).y) << "the bar below";
  };
  for (int tick = 0; tick < 45; ++tick) {  // fifteen a second, three times round
    const Microseconds time(tick * 1'000'000 / 15 + 1);
    expectPicture(time, static_cast<int>(time / 100ms % 10));
  }
  expectPicture(60s + 450ms, 4);  // after a pause
  expectPicture(0s, 0);           // a new capture
  EXPECT_EQ(camera->frameAt(110ms, kFormat), camera->frameAt(190ms, kFormat)) << "nothing is scaled twice";
}

}  // namespace
