#include <gtest/gtest.h>

#include <tuple>

#include "LumoRTCLocal/media/MediaFileReader.h"
#include "tests/support/MediaFixtures.h"

namespace lumo {
namespace {

using namespace std::chrono_literals;

class MediaFileReaderTest : public testing::Test {
 protected:
  static std::unique_ptr<MediaFileReader> open(const std::string& path, MediaKind kind) {
    auto result = MediaFileReader::open(path, kind);
    EXPECT_EQ("", result.error);
    return std::move(result.reader);
  }

  const test::TempFolder folder_;
};

TEST_F(MediaFileReaderTest, SeeksToThePictureShown) {
  for (const char* const name : {"clip.mkv", "clip.mov"}) {
    const auto reader = open(writeClip(folder_, name, {.pictures = 20}), MediaKind::picture);
    for (const auto& [goal, number] : {std::pair{1234ms, 12}, {0ms, 0}, {300ms, 3}, {1h, 19}}) {
      ASSERT_TRUE(reader->seek(goal));
      const auto picture = reader->nextPicture();
      ASSERT_TRUE(picture) << name << goal.count();
      EXPECT_EQ(100ms * number, picture->timestamp);
      EXPECT_EQ(test::clipColor(number), test::colorAt(*picture->picture, 9, 9));
    }
    EXPECT_FALSE(reader->nextPicture());
  }
}

TEST_F(MediaFileReaderTest, ConvertsColoursOfTheFullRange) {
  const auto reader = open(writeClip(folder_, "clip.mjpeg", {.pictures = 1}), MediaKind::picture);
  const YuvColor color = test::colorAt(*reader->nextPicture()->picture, 9, 9);
  EXPECT_NEAR(16 + test::clipColor(0).y * 219 / 255, color.y, 3);
  EXPECT_NEAR(128 + (test::clipColor(0).v - 128) * 224 / 255, color.v, 3);
}

TEST_F(MediaFileReaderTest, TurnsPicturesUpright) {
  for (const auto& [rotation, width, height] : {std::tuple{90, 48, 64}, {180, 64, 48}, {270, 48, 64}}) {
    const auto path = writeClip(folder_, "turned.mov", {.pictures = 2, .rotation = rotation});
    const auto picture = open(path, MediaKind::picture)->nextPicture()->picture;
    EXPECT_EQ(std::pair(width, height), std::pair(picture->width(), picture->height())) << rotation;
  }
}

TEST_F(MediaFileReaderTest, SaysWhatIsWrongWithAFile) {
  const auto silent = writeClip(folder_, "silent.mov", {});
  const auto sound = writeClip(folder_, "sound.wav", {.pictures = 0, .toneHz = 300});
  const std::string whole = test::readFile(silent);
  const std::string notMedia = "is not a media file, or not a whole one";
  const std::tuple<std::string, MediaKind, std::string> cases[] = {
      {folder_.path("missing.mp4"), MediaKind::both, "cannot be opened: No such file or directory"},
      {folder_.write("empty.mp4", ""), MediaKind::both, notMedia},
      {folder_.write("cut.mov", whole.substr(0, whole.rfind("moov"))), MediaKind::picture, notMedia},
      {sound, MediaKind::picture, "has no picture"},
      {silent, MediaKind::sound, "has no sound"},
  };
  for (const auto& [path, kind, problem] : cases) {
    const auto result = MediaFileReader::open(path, kind);
    EXPECT_EQ(nullptr, result.reader) << path;
    EXPECT_EQ(path + " " + problem, result.error);
  }
}

TEST_F(MediaFileReaderTest, SurvivesDamageAnywhere) {
  for (const char* const name : {"clip.mov", "clip.mkv"}) {
    const std::string whole = test::readFile(writeClip(folder_, name, {.toneHz = 440}));
    for (std::size_t seed = 0; seed < 40; ++seed) {
      std::string damaged = whole;
      for (std::size_t i = seed; i < damaged.size(); i += 97 + seed * 53)
        damaged[i] = static_cast<char>(seed * i);
      const auto opened = MediaFileReader::open(folder_.write(name, damaged), MediaKind::both);
      EXPECT_NE(opened.error.empty(), opened.reader == nullptr);
      if (!opened.reader) continue;
      for (int count = 0; opened.reader->nextPicture(); ++count) ASSERT_LT(count, 10'000);
      for (int count = 0; opened.reader->nextSound(); ++count) ASSERT_LT(count, 10'000);
    }
  }
}

}  // namespace
}  // namespace lumo
