#include <gtest/gtest.h>

#include "LumoRTCLocal/media/CameraInput.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;
using test::clipColor;
using test::colorAt;

constexpr VideoFormat kFormat{64, 96, 15};

class CameraInputTest : public testing::Test {
 protected:
  std::unique_ptr<VideoSource> open(const test::Clip& clip) {
    auto result = openCamera(writeClip(folder_, "clip.mkv", clip));
    EXPECT_EQ("", result.error);
    return std::move(result.source);
  }

  const test::TempFolder folder_;
};

TEST_F(CameraInputTest, ShowsTheFileAtItsOwnSpeedAndRepeatsIt) {
  const auto camera = open({});  // 64 x 48, ten pictures in a second
  const auto expectPicture = [&](Microseconds time, int number) {
    const auto picture = camera->frameAt(time, kFormat);
    ASSERT_EQ(std::pair(64, 96), std::pair(picture->width(), picture->height()));
    EXPECT_EQ(clipColor(number), colorAt(*picture, 32, 48)) << time.count();
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

TEST_F(CameraInputTest, JumpsWithinALongFileAndKeepsAStill) {
  const auto camera = open({.framesPerSecond = 1, .pictures = 20});
  for (const auto& [time, number] : {std::pair{15s, 15}, {16s, 16}, {3s, 3}, {19s, 19}, {25s, 5}, {20s, 0}}) {
    EXPECT_EQ(clipColor(number), colorAt(*camera->frameAt(time, kFormat), 32, 48)) << time.count();
  }
  const auto still = open({.pictures = 1});
  EXPECT_EQ(still->frameAt(0s, kFormat), still->frameAt(1h, kFormat));
}

TEST_F(CameraInputTest, SaysWhatIsWrong) {
  const std::pair<std::string, std::string> cases[] = {
      {writeClip(folder_, "sound.wav", {.pictures = 0, .toneHz = 300}), "has no picture"},
      {folder_.path("none.mp4"), "cannot be opened: No such file or directory"},
      {"/dev/null", "cannot be opened: Inappropriate ioctl for device"},
  };
  for (const auto& [path, problem] : cases) {
    const auto result = openCamera(path);
    EXPECT_EQ(nullptr, result.source);
    EXPECT_EQ(path + " " + problem, result.error);
  }
}

}  // namespace
}  // namespace lumo
